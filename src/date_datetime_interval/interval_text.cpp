// QWZIntervalToText and QWZIntervalFromText, with the two scanners that
// take a text apart into digit groups and the writer of both shapes.
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/interval.h"
#include "date_datetime_interval/interval_text.h"
#include "errors/errors.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

using qwz::done;
using qwz::interval_error;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_INTERVAL_TO_TEXT = 157;
constexpr ub4 API_INTERVAL_FROM_TEXT = 160;

// Detail of the NULL checks on the output buffer and length; detail of the
// interval-is-invalid diagnostic.
constexpr sb4 kOutputPtr = 24;
constexpr sb4 kInvalidDetail = 25;

struct TextStatusMessage {
  sb4 status;
  const char *message;
};

constexpr TextStatusMessage kTextMessages[] = {
    {QWZ_IVTEXT_LITERAL_INVALID, "the literal string is invalid."},
    {QWZ_IVTEXT_DAY_RANGE, "the day is out of range(0 to 999999999)."},
    {QWZ_IVTEXT_HOUR_RANGE, "the hour is out of range(0 to 23)."},
    {QWZ_IVTEXT_MINUTE_RANGE, "the minute is out of range(0 to 59)."},
    {QWZ_IVTEXT_SECOND_RANGE, "the second is out of range(0 to 59)."},
    {QWZ_IVTEXT_FRACTION_RANGE, "the fraction is out of range(0 to 999999)."},
    {QWZ_IVTEXT_YEAR_RANGE, "the year is out of range(0 to 9999)."},
    {QWZ_IVTEXT_MONTH_RANGE, "the month is out of range (0 to 11)."},
};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// ---- reading ---------------------------------------------------------------

// A value no range test accepts: what a group too large for 32 bits reads as.
constexpr std::int64_t kTooLarge = std::int64_t{INT32_MAX} + 1;

// The value of a digit group (digits only). A group that filled its whole
// buffer may have been cut there, so it counts as too large, like any group
// whose value passes 32 bits.
std::int64_t group_value(const char *digits) {
  std::int64_t v = 0;
  std::size_t n = 0;
  for (; n < QWZ_INTERVAL_DIGITS_SIZE && digits[n] != '\0'; ++n) {
    v = v * 10 + (digits[n] - '0');
    if (v > INT32_MAX) return kTooLarge;
  }
  return n >= QWZ_INTERVAL_DIGITS_SIZE - 1 ? kTooLarge : v;
}

// Copies one group at *p into its buffer; the group has its digits after.
void take_group(const char **p, char *group, bool &has_digits) {
  char *d = group;
  copydigit(p, &d, group + QWZ_INTERVAL_DIGITS_SIZE);
  *d = '\0';  // copydigit always leaves the buffer's last byte free
  has_digits = true;
}

// Range tests of the fields, in the order they are made: the field's digit
// group, its largest accepted value (the smallest is 0), the status when
// it is out of range.
struct FieldRange {
  int group;
  std::int64_t max;
  sb4 status;
};

enum YmGroup { kYear, kMonth, kYmGroups };
enum DsGroup { kDay, kHour, kMinute, kSecond, kFraction, kDsGroups };

// No lower bound is tested for the year (its digits cannot make it negative).
constexpr FieldRange kYmRanges[] = {
    {kYear, 9999, QWZ_IVTEXT_YEAR_RANGE},
    {kMonth, 11, QWZ_IVTEXT_MONTH_RANGE},
};
constexpr FieldRange kDsRanges[] = {
    {kDay, 999999999, QWZ_IVTEXT_DAY_RANGE},
    {kHour, 23, QWZ_IVTEXT_HOUR_RANGE},
    {kMinute, 59, QWZ_IVTEXT_MINUTE_RANGE},
    {kSecond, 59, QWZ_IVTEXT_SECOND_RANGE},
    {kFraction, 999999, QWZ_IVTEXT_FRACTION_RANGE},  // only when digits were given
};

// Converts the groups, tests them in table order, and on success stores them
// (negated when the text had a '-' sign) into the first slots of result.
template <std::size_t N>
sb4 store_groups(const char (&digits)[N][QWZ_INTERVAL_DIGITS_SIZE], const FieldRange (&ranges)[N],
                 bool negative, QWZInterval *result) {
  std::int64_t values[N];
  for (std::size_t i = 0; i < N; ++i) {
    const FieldRange &r = ranges[i];
    values[r.group] = group_value(digits[r.group]);
    // An absent fraction reads as 0 and passes.
    if (values[r.group] < 0 || values[r.group] > r.max) return r.status;
  }
  // Every value is now within 0..999999999, so the negation is exact.
  for (std::size_t i = 0; i < N; ++i)
    result->slot[i] = static_cast<sb4>(negative ? -values[i] : values[i]);
  return 0;
}

// ---- writing ---------------------------------------------------------------

unsigned decimal_digits(ub4 v) {
  unsigned n = 1;
  while (v >= 10) {
    v /= 10;
    ++n;
  }
  return n;
}

constexpr ub4 kPowersOfTen[10] = {1,      10,      100,      1000,      10000,
                                  100000, 1000000, 10000000, 100000000, 1000000000};

// The fraction as printed: its leading fsprec digits when it has at least
// that many, else its own value; as a magnitude (the sign goes in front).
ub4 printed_fraction(sb4 fraction, ub1 fsprec) {
  const ub4 mag = qwz::magnitude(fraction);
  const unsigned n = decimal_digits(mag);
  if (fsprec > n) return mag;
  return mag / kPowersOfTen[n - fsprec];  // truncates toward zero
}

// Writes v in decimal with at least `width` digits (zeros in front);
// returns the end.
char *put_unsigned(char *p, ub4 v, int width) {
  char digits[10];
  int n = 0;
  do {
    digits[n++] = static_cast<char>('0' + v % 10);
    v /= 10;
  } while (v != 0);
  for (int i = n; i < width; ++i) *p++ = '0';
  while (n > 0) *p++ = digits[--n];
  return p;
}

// Two digits for the values 0..99, else all of its digits.
char *put_two(char *p, ub4 v) {
  if (v < 100) {
    p[0] = static_cast<char>('0' + v / 10);
    p[1] = static_cast<char>('0' + v % 10);
    return p + 2;
  }
  return put_unsigned(p, v, 2);
}

// Formats into out (at most 545 bytes, at widths up to 255); returns the length, or 0 for a kind
// that has no text. Shapes: "<sign><leading>-<MM>" and
// "<sign><leading> <HH>:<MI>:<SS>[.<fraction>]", the leading field zero-filled
// to lfprec digits and the fraction to fsprec.
int format_interval(const QWZInterval *iv, ub1 lfprec, ub1 fsprec, char *out) {
  const sb4 *s = iv->slot;
  const int lf = lfprec;
  // Magnitudes print as unsigned numbers, so the most negative value needs
  // no negation and prints its ten digits.
  auto mag = [s](int slot) { return qwz::magnitude(s[slot]); };
  char *p = out;
  if (iv->hdr.type == INTERVAL_KIND_YM) {
    const bool positive = s[QWZ_IV_YEAR] >= 0 && s[QWZ_IV_MONTH] >= 0;
    *p++ = positive ? '+' : '-';
    p = put_unsigned(p, mag(QWZ_IV_YEAR), lf);
    *p++ = '-';
    p = put_two(p, mag(QWZ_IV_MONTH));
    return static_cast<int>(p - out);
  }
  if (iv->hdr.type != INTERVAL_KIND_DS) return 0;
  bool positive = true;
  if (fsprec == 0) {
    // '+' only when every field, the unprinted fraction too, is above zero.
    for (int i = QWZ_IV_DAY; i <= QWZ_IV_FRACTION; ++i) positive = positive && s[i] > 0;
  } else {
    for (int i = QWZ_IV_DAY; i <= QWZ_IV_FRACTION; ++i) positive = positive && s[i] >= 0;
  }
  *p++ = positive ? '+' : '-';
  p = put_unsigned(p, mag(QWZ_IV_DAY), lf);
  *p++ = ' ';
  p = put_two(p, mag(QWZ_IV_HOUR));
  *p++ = ':';
  p = put_two(p, mag(QWZ_IV_MINUTE));
  *p++ = ':';
  p = put_two(p, mag(QWZ_IV_SECOND));
  if (fsprec != 0) {
    *p++ = '.';
    p = put_unsigned(p, printed_fraction(s[QWZ_IV_FRACTION], fsprec), fsprec);
  }
  return static_cast<int>(p - out);
}

}  // namespace

namespace qwz {

const char *interval_text_message(sb4 status) {
  for (const TextStatusMessage &m : kTextMessages)
    if (m.status == status) return m.message;
  return nullptr;
}

}  // namespace qwz

extern "C" {

sword copydigit(const char **src, char **dst, const char *dst_end) {
  if (!src || !dst || !*src || !*dst || !dst_end) return 1;
  const char *s = *src;
  char *d = *dst;
  for (; is_digit(*s); ++s)
    if (d + 1 < dst_end) *d++ = *s;  // the buffer's last byte stays NUL
  *src = s;
  *dst = d;
  return 0;
}

sword parse_input_with_ym_format(const char *text, char *yeardigits, char *monthdigits,
                                 sword *negative) {
  if (!text || !yeardigits || !monthdigits || !negative) return 1;
  char *const groups[kYmGroups] = {yeardigits, monthdigits};
  bool has[kYmGroups] = {};
  char sign = 0;
  bool seen_digit = false, seen_separator = false, error = false;
  const char *p = text;
  while (*p != '\0' && !error) {
    const char c = *p;
    if (c == ' ') {
      ++p;
    } else if (c == '+') {
      // A sign only in front of everything.
      if (sign != 0 || seen_digit) error = true;
      else sign = '+';
      ++p;
    } else if (c == '-') {
      // Before the digits the sign, after them the separator; once each.
      if (!seen_digit) {
        if (sign != 0) error = true;
        else sign = '-';
      } else if (!seen_separator) {
        seen_separator = true;
      } else {
        error = true;
      }
      ++p;
    } else if (is_digit(c)) {
      const int g = seen_separator ? kMonth : kYear;
      if (has[g]) {
        error = true;  // a second run for one group ("1 2-3")
      } else {
        take_group(&p, groups[g], has[g]);
        seen_digit = true;
      }
    } else {
      error = true;
    }
  }
  *negative = sign == '-' ? 1 : 0;
  return (!error && has[kYear] && seen_separator && has[kMonth]) ? 0 : 1;
}

sword parse_input_with_ds_format(const char *text, char *daydigits, char *hourdigits,
                                 char *minutedigits, char *seconddigits, char *fractiondigits,
                                 sword *negative) {
  if (!text || !daydigits || !hourdigits || !minutedigits || !seconddigits || !fractiondigits ||
      !negative)
    return 1;
  char *const groups[kDsGroups] = {daydigits, hourdigits, minutedigits, seconddigits,
                                   fractiondigits};
  bool has[kDsGroups] = {};
  char sign = 0;
  bool gap = false, point = false, error = false;
  int colons = 0;
  const char *p = text;
  while (*p != '\0' && !error) {
    const unsigned char c = static_cast<unsigned char>(*p);
    if (c < ' ' || c > ':') {
      error = true;  // only blank .. ':' can belong to the shape
    } else if (c == ' ') {
      if (has[kDay] && !gap) gap = true;  // the day/hour gap
      ++p;
    } else if (c == '+' || c == '-') {
      if (has[kDay] || sign != 0 || gap || colons != 0 || point) error = true;
      else sign = static_cast<char>(c);
      ++p;
    } else if (c == ':') {
      if (colons == 0 && has[kHour]) colons = 1;
      else if (colons == 1 && has[kMinute]) colons = 2;
      else error = true;
      ++p;
    } else if (c == '.') {
      if (!point && has[kSecond]) point = true;
      else error = true;
      ++p;
    } else if (is_digit(static_cast<char>(c))) {
      const bool complete = has[kDay] && has[kHour] && has[kMinute] && has[kSecond] &&
                            (!point || has[kFraction]);
      // The group this run belongs to by its position, if any.
      int g = -1;
      if (!has[kDay]) g = kDay;
      else if (point) g = kFraction;
      else if (gap && colons == 0) g = kHour;
      else if (colons == 1) g = kMinute;
      else if (colons == 2) g = kSecond;
      if (complete || g < 0 || has[g]) error = true;
      else take_group(&p, groups[g], has[g]);
    } else {
      error = true;  // ',', '/' and the like
    }
  }
  *negative = sign == '-' ? 1 : 0;
  const bool accepted = !error && has[kDay] && gap && has[kHour] && colons == 2 &&
                        has[kMinute] && has[kSecond] && (!point || has[kFraction]);
  return accepted ? 0 : 1;
}

}  // extern "C"

namespace {

// Reads a run of 1 to `most` digits at *p into v; false when the run is
// empty or longer. Stops at the first non-digit, so never passes a NUL.
inline bool short_run(const char *&p, std::size_t most, std::int64_t &v) {
  std::size_t n = 0;
  v = 0;
  for (; is_digit(*p); ++p, ++n) {
    if (n == most) return false;
    v = v * 10 + (*p - '0');
  }
  return n > 0;
}

inline bool two_digits_then(const char *&p, char next, std::int64_t &v) {
  if (!is_digit(p[0]) || !is_digit(p[1]) || p[2] != next) return false;
  v = (p[0] - '0') * 10 + (p[1] - '0');
  p += 3;
  return true;
}

// The usual day-second text, "[+|-]D HH:MI:SS[.F]" with no blank but the one
// between day and hour, at most nine digits for the day and the fraction
// and exactly two for the others: read in one pass. Such a text has the
// same groups under the general reader, which takes every other text.
bool read_plain_ds(const char *s, std::int64_t (&v)[kDsGroups], bool &negative) {
  const char *p = s;
  negative = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  if (!short_run(p, 9, v[kDay]) || *p++ != ' ') return false;
  if (!two_digits_then(p, ':', v[kHour]) || !two_digits_then(p, ':', v[kMinute])) return false;
  if (!is_digit(p[0]) || !is_digit(p[1])) return false;
  v[kSecond] = (p[0] - '0') * 10 + (p[1] - '0');
  p += 2;
  v[kFraction] = 0;
  if (*p == '.') {
    ++p;
    if (!short_run(p, 9, v[kFraction])) return false;
  }
  return *p == '\0';
}

// The usual year-month text, "[+|-]Y-M" with no blank and at most nine
// digits in each group.
bool read_plain_ym(const char *s, std::int64_t (&v)[kYmGroups], bool &negative) {
  const char *p = s;
  negative = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  if (!short_run(p, 9, v[kYear]) || *p++ != '-') return false;
  return short_run(p, 9, v[kMonth]) && *p == '\0';
}

// store_groups for values already read: the same tests in the same order.
template <std::size_t N>
sb4 store_values(const std::int64_t (&values)[N], const FieldRange (&ranges)[N], bool negative,
                 QWZInterval *result) {
  for (const FieldRange &r : ranges)
    if (values[r.group] < 0 || values[r.group] > r.max) return r.status;
  for (std::size_t i = 0; i < N; ++i)
    result->slot[i] = static_cast<sb4>(negative ? -values[i] : values[i]);
  return 0;
}

}  // namespace

extern "C" {

sb4 interval_from_text(const QWZText *text, std::size_t /*length: read to the NUL*/,
                       QWZInterval *result) {
  if (!text || !result) return -1;
  const char *s = reinterpret_cast<const char *>(text);
  sword negative = 0;
  bool plain_negative = false;
  if (result->hdr.type == INTERVAL_KIND_YM) {
    std::int64_t values[kYmGroups];
    if (read_plain_ym(s, values, plain_negative))
      return store_values(values, kYmRanges, plain_negative, result);
    // Each buffer is only read up to its NUL, and a group is copied at most
    // once (and terminated): a leading NUL is all an absent group needs.
    char digits[kYmGroups][QWZ_INTERVAL_DIGITS_SIZE];
    for (auto &g : digits) g[0] = '\0';
    if (parse_input_with_ym_format(s, digits[kYear], digits[kMonth], &negative) != 0)
      return QWZ_IVTEXT_LITERAL_INVALID;
    return store_groups(digits, kYmRanges, negative != 0, result);
  }
  if (result->hdr.type == INTERVAL_KIND_DS) {
    std::int64_t values[kDsGroups];
    if (read_plain_ds(s, values, plain_negative))
      return store_values(values, kDsRanges, plain_negative, result);
    char digits[kDsGroups][QWZ_INTERVAL_DIGITS_SIZE];
    for (auto &g : digits) g[0] = '\0';
    if (parse_input_with_ds_format(s, digits[kDay], digits[kHour], digits[kMinute],
                                   digits[kSecond], digits[kFraction], &negative) != 0)
      return QWZ_IVTEXT_LITERAL_INVALID;
    return store_groups(digits, kDsRanges, negative != 0, result);
  }
  return 0;
}

sword interval_to_text(const QWZInterval *interval, ub1 lfprec, ub1 fsprec, QWZtext *buf,
                       std::size_t buf_size, std::size_t *resultlen, sb4 *code) {
  if (!interval || !buf || !resultlen || !code) return -1;
  char *out = reinterpret_cast<char *>(buf);
  // What the buffer already holds must be shorter than its size.
  if (std::strlen(out) >= buf_size) {
    *code = QWZ_IVTEXT_BUF_TOO_SMALL;
    return -1;
  }
  if (interval->hdr.type != INTERVAL_KIND_YM && interval->hdr.type != INTERVAL_KIND_DS) return 0;
  // The text is written whole: buf_size bounds only what the buffer held
  // before, so the caller's buffer must have room for the longest text
  // (QWZ_INTERVAL_DS_TEXT_MAX + 1 bytes at the clamped precisions).
  // The writer puts no NUL inside the text, so its length is the result's.
  const int n = format_interval(interval, lfprec, fsprec, out);
  const std::size_t len = static_cast<std::size_t>(n > 0 ? n : 0);
  out[len] = '\0';
  *resultlen = len;
  return 0;
}

QWZ_API sword QWZIntervalToText(void *hndl, QWZError *errhp, const QWZInterval *interval,
                                ub1 lfprec, ub1 fsprec, QWZtext *buffer, size_t buflen,
                                size_t *resultlen) {
  return qwz::run_frame(
      API_INTERVAL_TO_TEXT, errhp,
      [&]() -> Outcome {
        // Clamped first; the exit record shows the clamped values.
        lfprec = std::min(lfprec, QWZ_INTERVAL_MAX_LFPREC);
        fsprec = std::min(fsprec, QWZ_INTERVAL_MAX_FSPREC);
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_interval(errhp, interval)) return refuse(r);
        if (!buffer) return interval_error(errhp, KIND_NULL_PARAM, kOutputPtr, 6);
        if (!resultlen) return interval_error(errhp, KIND_NULL_PARAM, kOutputPtr, 8);
        if (qwz::interval_invalid(hndl, errhp, interval))
          return interval_error(errhp, KIND_INTERVAL_INVALID, kInvalidDetail, 3);
        sb4 code = 0;
        if (interval_to_text(interval, lfprec, fsprec, buffer, buflen, resultlen, &code) != 0 &&
            code == QWZ_IVTEXT_BUF_TOO_SMALL)
          return interval_error(errhp, KIND_BUF_TOO_SMALL, DETAIL_NONE, PARAM_NONE);
        return done(0);
      },
      hndl, errhp, interval, std::cref(lfprec), std::cref(fsprec), buffer, buflen, resultlen);
}

QWZ_API sword QWZIntervalFromText(void *hndl, QWZError *errhp, const QWZText *inpstring,
                                  size_t str_len, QWZInterval *result) {
  return qwz::run_frame(
      API_INTERVAL_FROM_TEXT, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        // Refused silently: no diagnostic, no exit record.
        if (!inpstring || str_len > QWZ_INTERVAL_TEXT_LIMIT) return refuse(QWZ_ERROR);
        if (const sword r = qwz::check_interval(errhp, result)) return refuse(r);
        const sb4 status = interval_from_text(inpstring, str_len, result);
        if (const char *message = qwz::interval_text_message(status)) {
          _QWZSetFrontEndErrorHandle(errhp, message, status);
          return done(QWZ_ERROR);  // traced on exit like a success
        }
        return done(status);
      },
      hndl, errhp, qwz::or_null_text(inpstring), str_len, result);
}

}  // extern "C"
