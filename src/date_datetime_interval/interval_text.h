// Intervals as text and back (interval_text.cpp).
//
//   year-month:  sign, years, '-', two-digit months            "+01-02"
//   day-second:  sign, days, ' ', hh:mm:ss, optionally '.' and a fraction
//                                                               "-3 04:05:06.789"
// The descriptor's own kind chooses the shape written or expected.
#ifndef QWZ_DDI_INTERVAL_TEXT_H
#define QWZ_DDI_INTERVAL_TEXT_H

#include "handles/handles.h"

#include <cstddef>

// Precisions QWZIntervalToText clamps to: leading field, fraction.
inline constexpr ub1 QWZ_INTERVAL_MAX_LFPREC = 9;
inline constexpr ub1 QWZ_INTERVAL_MAX_FSPREC = 5;

// Longest text QWZIntervalToText writes for a value QWZIntervalCheck accepts
// (sign and ten leading digits; five fraction digits), without the NUL.
inline constexpr std::size_t QWZ_INTERVAL_YM_TEXT_MAX = 14;  // "-2147483648-11"
inline constexpr std::size_t QWZ_INTERVAL_DS_TEXT_MAX = 26;  // "-2147483648 23:59:59.99999"

// Longest text QWZIntervalFromText reads; longer ones are refused silently.
inline constexpr std::size_t QWZ_INTERVAL_TEXT_LIMIT = 127;

// Every digit group is copied into a zero-filled buffer of this many bytes.
// A group never writes its last byte, so the buffer stays NUL-terminated;
// digits past that are skipped.
inline constexpr std::size_t QWZ_INTERVAL_DIGITS_SIZE = 128;

// Status numbers of interval_from_text; each has one message.
inline constexpr sb4 QWZ_IVTEXT_LITERAL_INVALID = 800072;
inline constexpr sb4 QWZ_IVTEXT_DAY_RANGE = 800074;
inline constexpr sb4 QWZ_IVTEXT_HOUR_RANGE = 800075;
inline constexpr sb4 QWZ_IVTEXT_MINUTE_RANGE = 800077;
inline constexpr sb4 QWZ_IVTEXT_SECOND_RANGE = 800078;
inline constexpr sb4 QWZ_IVTEXT_FRACTION_RANGE = 800080;
inline constexpr sb4 QWZ_IVTEXT_YEAR_RANGE = 800081;
inline constexpr sb4 QWZ_IVTEXT_MONTH_RANGE = 800082;

// interval_to_text's code when the buffer test fails.
inline constexpr sb4 QWZ_IVTEXT_BUF_TOO_SMALL = 9;

extern "C" {

// Writes the interval's text into buf and its length into *resultlen. The
// buffer test is strlen(buf) < buf_size: it measures what the caller's
// buffer already holds, not the text to come; on failure *code = 9 and -1.
// The text is then written whole, with its NUL, whatever buf_size says.
// -1 without touching code for a NULL pointer; 0, with nothing written, for
// a descriptor of neither kind; else 0.
QWZ_INTERNAL sword interval_to_text(const QWZInterval *interval, ub1 lfprec, ub1 fsprec,
                                    QWZtext *buf, std::size_t buf_size, std::size_t *resultlen,
                                    sb4 *code);

// Parses text (read up to its NUL; length is not used) by result's kind and
// stores the fields, only when every test passes. 0, one of the status
// numbers above, -1 for a NULL text or result; 0 with nothing written for a
// descriptor of neither kind.
QWZ_INTERNAL sb4 interval_from_text(const QWZText *text, std::size_t length,
                                    QWZInterval *result);

// The scanners: each digit group goes to its own zero-filled buffer of
// QWZ_INTERVAL_DIGITS_SIZE bytes; *negative is 1 after a '-' sign, else 0.
// 0 for an accepted shape, 1 otherwise (and for any NULL argument).
QWZ_INTERNAL sword parse_input_with_ym_format(const char *text, char *yeardigits,
                                              char *monthdigits, sword *negative);
QWZ_INTERNAL sword parse_input_with_ds_format(const char *text, char *daydigits,
                                              char *hourdigits, char *minutedigits,
                                              char *seconddigits, char *fractiondigits,
                                              sword *negative);

// Copies the run of '0'-'9' at *src to *dst, advancing both, up to the first
// non-digit or NUL. Writes no terminator and never the byte before dst_end
// (one past the buffer): digits that do not fit are passed over, not copied.
// 1 when a cursor, what it points to, or dst_end is NULL; else 0.
QWZ_INTERNAL sword copydigit(const char **src, char **dst, const char *dst_end);

}  // extern "C"

namespace qwz {

// The message of an interval_from_text status number; nullptr for others.
const char *interval_text_message(sb4 status);

}  // namespace qwz

#endif  // QWZ_DDI_INTERVAL_TEXT_H
