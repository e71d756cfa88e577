// Reading dates and datetimes from text under a format model: the field-text
// record, the parser, the shared entry and the three converters (to a
// QWZDate, to a QWZDateTime, and zone only, for descriptor construction).
#ifndef QWZ_DDI_TEXT_IN_H
#define QWZ_DDI_TEXT_IN_H

#include "date_datetime_interval/format_model.h"
#include "handles/handles.h"

#include <cstddef>

extern "C" {

// datetime_fields, the field-text record the parser fills from text and the
// formatter (text_out) fills from a value, is declared in format_model.h.

// The parser: reads the NUL-terminated `text` token by token into `fields`
// (cleared by the caller) and applies the defaults. 1 on success, 0 on
// failure.
QWZ_INTERNAL int char_to_datetime(const char *text, const qwz_token *tokens,
                                  datetime_fields *fields);

// Trims, translates and checks the format, then parses. At most text_length
// bytes of `text` and format_length bytes of `format` are read (less when a
// NUL comes first). Sets *error_code to 5 when the format is at fault.
// `fields` receives the record whenever parsing ran. 1 on success, 0 on
// failure; `reserved` is ignored.
QWZ_INTERNAL int qwz_char_to_datetime(const QWZText *text, std::size_t text_length,
                                      const QWZText *format, std::size_t format_length,
                                      datetime_fields *fields, sword reserved, sb4 *error_code);

// To a QWZDate: 1 on success, -1 on failure (a format at fault is reported).
QWZ_INTERNAL sword date_from_text(QWZError *errhp, const QWZText *text, std::size_t text_length,
                                  const QWZText *format, std::size_t format_length,
                                  QWZDate *date);

// To a QWZDateTime: 1 on success; 0 when the text did not match (the fields
// are written from what was read); -1 on a reported failure (format at
// fault, or a zone for a descriptor without one: 800153).
QWZ_INTERNAL sword datetime_from_text(QWZError *errhp, const QWZText *text,
                                      std::size_t text_length, const QWZText *format,
                                      std::size_t format_length, QWZDateTime *datetime);

// Zone only: on success writes tz_hour and tz_minute (the minute negated
// when the zone hour text starts with '-') and returns 0; every other field
// is left alone. -1 on failure (a format at fault is reported). Descriptor
// construction calls it with the format "TZH:TZM" (length 7).
QWZ_INTERNAL sword append_timezone_from_text(QWZError *errhp, const QWZText *text,
                                             std::size_t text_length, const QWZText *format,
                                             std::size_t format_length, QWZDateTime *datetime);

}  // extern "C"

namespace qwz {

// The numbers a parsed record stands for, as the converters read them.
struct FieldValues {
  long year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  ub4 fraction_ns = 0;  // the fraction's text as nanoseconds, wrapped to 32 bits
  long tz_hour = 0, tz_minute = 0;
  bool tz_given = false;
  bool tz_hour_negative = false;  // the zone hour's text starts with '-'
};

// The numbers of a record: each field's text read as a decimal number.
void values_from_fields(const datetime_fields &fields, FieldValues &values);

// As text_to_fields, but giving the record's numbers. Texts of a shape
// already read under the same format are read straight to numbers, without
// the record. `values` is written whenever parsing ran, matched or not.
bool text_to_values(const QWZText *text, std::size_t text_length, const QWZText *format,
                    std::size_t format_length, FieldValues &values, sb4 &error_code,
                    bool calendar_defaults);

// As text_to_values, for a date: year to second, each cut to the date's
// 16-bit field. `date` is written only when the text matched.
bool text_to_date(const QWZText *text, std::size_t text_length, const QWZText *format,
                  std::size_t format_length, QWZDate &date, sb4 &error_code);

// A datetime's reading through a recorded plan only, straight into the
// descriptor: 1 when the text had a usable plan (the fields written, as
// datetime_from_text writes them), -1 when such a text gives a zone and the
// descriptor has none (nothing written), 0 when there was no plan (nothing
// written: the caller reads the text the general way).
int datetime_through_plan(const QWZText *text, std::size_t text_length, const QWZText *format,
                          std::size_t format_length, QWZDateTime &datetime);

// The shared entry behind the converters. With calendar_defaults false a
// missing year or month is left empty instead of being taken from the
// clock (for callers that read neither).
bool text_to_fields(const QWZText *text, std::size_t text_length, const QWZText *format,
                    std::size_t format_length, datetime_fields &fields, sb4 &error_code,
                    bool calendar_defaults);

}  // namespace qwz

#endif  // QWZ_DDI_TEXT_IN_H
