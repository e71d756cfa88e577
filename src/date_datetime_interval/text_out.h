// Writing dates and datetimes as text under a format model: the formatter,
// the shared entry that guards it, the converters (from a QWZDate, from a
// QWZDateTime and from the 11-byte packed timestamp).
#ifndef QWZ_DDI_TEXT_OUT_H
#define QWZ_DDI_TEXT_OUT_H

#include "date_datetime_interval/format_model.h"
#include "date_datetime_interval/text_in.h"
#include "handles/handles.h"

#include <cstddef>

extern "C" {

// The formatter: walks `tokens` over `fields` into `result` (256 bytes,
// NUL-terminated). With stop_after_seconds set nothing after the first "SS"
// is written. 1 on success, 0 on failure (empty result, a year whose text is
// not exactly as wide as its keyword, a literal letter or digit); `reserved`
// is ignored.
QWZ_INTERNAL int datetime_to_char(char *result, sword reserved, const qwz_token *tokens,
                                  const datetime_fields *fields, int stop_after_seconds);

// Trims, translates and checks the format (at most format_length bytes
// read), formats, and copies the text into `buffer` when *buffer_size is at
// least its length. The terminator is written only when it fits within
// *buffer_size too, so no byte past the stated capacity is ever written.
// Error codes: 5 unsupported keyword, 9 buffer too small; other failures
// leave *error_code alone. `precision` is ignored. 1 on success, 0 on
// failure; on failure `buffer` is untouched.
QWZ_INTERNAL int qwz_datetime_to_char(const datetime_fields *fields, const QWZtext *format,
                                      std::size_t format_length, ub1 precision, QWZtext *buffer,
                                      const ub4 *buffer_size, sb4 *error_code,
                                      int stop_after_seconds);

// The converters: 0 on success, -1 on failure. A date stops after its
// seconds; the other two do not.
QWZ_INTERNAL sword date_to_text(const QWZDate *date, const QWZtext *format,
                                std::size_t format_length, ub1 precision,
                                const ub4 *buffer_size, QWZtext *buffer, sb4 *error_code);
QWZ_INTERNAL sword datetime_to_text(const QWZDateTime *datetime, const QWZtext *format,
                                    std::size_t format_length, ub1 precision,
                                    const ub4 *buffer_size, QWZtext *buffer, sb4 *error_code);
// Packed timestamp: century + 100, year of century + 100, month, day,
// hour + 1, minute + 1, second + 1, nanoseconds (4 bytes, big-endian).
QWZ_INTERNAL sword datetime180_to_text(const ub1 *packed, const QWZtext *format,
                                       std::size_t format_length, ub1 precision,
                                       const ub4 *buffer_size, QWZtext *buffer,
                                       sb4 *error_code);

}  // extern "C"

namespace qwz {

// The field texts of a value, as the formatter reads them.
void date_to_fields(const QWZDate &date, datetime_fields &fields);
void datetime_to_fields(const QWZDateTime &datetime, datetime_fields &fields);
void packed_to_fields(const ub1 *packed, datetime_fields &fields);

}  // namespace qwz

#endif  // QWZ_DDI_TEXT_OUT_H
