// Text to date and datetime: the format-driven parser, the shared entry that
// trims, translates and checks before parsing, the converters, and the
// public QWZDateFromText and QWZDateTimeFromText.
//
// Lengths: no byte past a given length is read. Where a length is taken
// from the text itself it is taken with strnlen over the given length, and
// trimming works inside that window; a text longer than 255 characters after
// trimming is cut at 255 (text after the last token is ignored anyway).
#include "date_datetime_interval/internal.h"

#include <cstdint>
#include <cstring>
#include <ctime>

namespace {

using qwz::date_error;
using qwz::datetime_error;
using qwz::done;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_DATE_FROM_TEXT = 134;
constexpr ub4 API_DATETIME_FROM_TEXT = 179;

constexpr sb4 kDateInputPtr = 1;     // detail of the date family's NULL checks
constexpr sb4 kDateTimeInputPtr = 8; // detail of the datetime family's NULL checks

constexpr sb4 kDateFormatNotRecognized = 800153;
constexpr const char kDateFormatNotRecognizedText[] = "date format not recognized.";
constexpr sb4 kStringTooLong = 800155;
constexpr const char kStringTooLongText[] = "string is too long for internal buffer.";

bool is_digit(unsigned char c) { return c >= '0' && c <= '9'; }
bool is_letter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Stores the first `n` characters of the collector into a slot.
template <std::size_t N>
void store(char (&slot)[N], const char *collector, std::size_t len, std::size_t n) {
  std::memset(slot, 0, N);
  std::size_t k = len < n ? len : n;
  if (k > N - 1) k = N - 1;
  std::memcpy(slot, collector, k);
}

template <std::size_t N>
void set_text(char (&slot)[N], const char *text) {
  std::memset(slot, 0, N);
  std::memcpy(slot, text, strnlen(text, N - 1));
}

// The current local time, read only when the year or the month is missing.
bool local_time_now(struct tm *out) {
  tzset();
  const time_t now = time(nullptr);
  return localtime_r(&now, out) != nullptr;
}

// The parser over any token sequence (the caller's list or a TokenArray).
template <class Tokens>
bool parse_fields(const char *text, std::size_t n, const Tokens &tokens, datetime_fields &f,
                  bool calendar_defaults) {
  const auto *t = reinterpret_cast<const unsigned char *>(text);

  // Letters may only stand in trailing text after exactly two blanks; no
  // usable keyword reads letters.
  unsigned blanks = 0;
  for (std::size_t i = 0; i < n; ++i) {
    if (t[i] == ' ') {
      if (blanks < 3) ++blanks;
    } else if (is_letter(t[i]) && blanks != 2) {
      return false;
    }
  }

  std::size_t cur = 0;
  // One separator count for the whole text: the first non-digit a field
  // meets is taken (a '-' as the field's sign); later ones end fields.
  bool separated = false;
  for (const qwz_token &tok : tokens) {
    if (!tok.keyword) {
      // Any one non-digit stands for any literal.
      while (cur < n && t[cur] == ' ') ++cur;
      if (cur < n && !is_digit(t[cur])) ++cur;
      continue;
    }
    const qwz_keyword &kw = *tok.keyword;
    char col[25] = {};
    std::size_t len = 0;
    const std::size_t full = kw.width < sizeof col - 1 ? kw.width : sizeof col - 1;
    while (cur < n) {
      const unsigned char c = t[cur];
      if (is_digit(c)) {
        if (len >= full) break;
        col[len++] = static_cast<char>(c);
        ++cur;
        continue;
      }
      if (c == ' ' && len == 0) {
        ++cur;
        continue;
      }
      if (separated) {
        if (len > 0) break;
        return false;
      }
      if (c == '-') {
        if (len >= full) break;
        col[len++] = '-';
      }
      separated = true;
      ++cur;
    }
    if (kw.required == 1 && len == 0) return false;

    switch (kw.id) {
      case qwz::KW_DD: store(f.day, col, len, 2); break;
      case qwz::KW_HH:
      case qwz::KW_HH12:
      case qwz::KW_HH24: store(f.hour, col, len, 2); break;
      case qwz::KW_MI: store(f.minute, col, len, 2); break;
      case qwz::KW_MM: store(f.month, col, len, 2); break;
      case qwz::KW_SS: store(f.second, col, len, 2); break;
      case qwz::KW_TZH:
        store(f.tz_hour, col, len, 3);
        f.tz_given = 1;
        break;
      case qwz::KW_TZM:
        store(f.tz_minute, col, len, 2);
        f.tz_given = 1;
        break;
      case qwz::KW_YYYY:
      case qwz::KW_SYYYY: store(f.year, col, len, kw.width); break;
      default:
        if (qwz::is_fraction_keyword(kw.id)) {
          // Exactly `width` digits, then one '0': FF3 with 123 stores "1230".
          if (len < kw.width) return false;
          store(f.fraction, col, len, kw.width);
          f.fraction[kw.width] = '0';
        }
        break;
    }
  }

  if (f.year[0] == '\0' || f.month[0] == '\0') {
    if (calendar_defaults) {
      struct tm now;
      if (!local_time_now(&now)) return false;
      if (f.year[0] == '\0') qwz::decimal_text(now.tm_year + 1900L, 0, f.year, sizeof f.year);
      if (f.month[0] == '\0') qwz::decimal_text(now.tm_mon + 1L, 0, f.month, sizeof f.month);
    }
  }
  if (f.day[0] == '\0') set_text(f.day, "01");
  if (f.hour[0] == '\0') set_text(f.hour, "00");
  if (f.minute[0] == '\0') set_text(f.minute, "00");
  if (f.second[0] == '\0') set_text(f.second, "00");
  if (f.fraction[0] == '\0') set_text(f.fraction, "000000");
  if (f.tz_hour[0] == '\0') set_text(f.tz_hour, "+00");
  if (f.tz_minute[0] == '\0') set_text(f.tz_minute, "00");
  return true;
}

template <std::size_t N>
long slot_value(const char (&slot)[N]) {
  return qwz::decimal_value(slot, N);
}

void fields_to_date(const datetime_fields &f, QWZDate *date) {
  date->year = static_cast<sb2>(slot_value(f.year));
  date->month = static_cast<ub2>(slot_value(f.month));
  date->day = static_cast<ub2>(slot_value(f.day));
  date->hour = static_cast<ub2>(slot_value(f.hour));
  date->minute = static_cast<ub2>(slot_value(f.minute));
  date->second = static_cast<ub2>(slot_value(f.second));
}

// Nanoseconds from the fraction text: value times 10^(9 - characters). The
// parser's trailing '0' cancels out ("1230" is 123000000). Exact in 64-bit
// integers for every text the slot can hold; wraps to 32 bits like the
// field does.
ub4 fraction_nanoseconds(const datetime_fields &f) {
  static constexpr std::int64_t kPow10[10] = {1,      10,      100,      1000,      10000,
                                              100000, 1000000, 10000000, 100000000, 1000000000};
  const std::size_t n = strnlen(f.fraction, sizeof f.fraction);
  const std::int64_t v = slot_value(f.fraction);
  return static_cast<ub4>(v * kPow10[9 - (n > 9 ? 9 : n)]);
}

void report_format_fault(QWZError *errhp) {
  // The date family's setter, for datetimes too.
  _QWZSetDateErrorMsg(ERRSRC_DRIVER, KIND_FORMAT_STRING, DETAIL_NONE, PARAM_NONE, errhp, "");
}

std::size_t text_length_of(const QWZText *text, std::size_t given) {
  return strnlen(reinterpret_cast<const char *>(text), given);
}

}  // namespace

namespace qwz {

bool text_to_fields(const QWZText *text, std::size_t text_length, const QWZText *format,
                    std::size_t format_length, datetime_fields &fields, sb4 &error_code,
                    bool calendar_defaults) {
  if (!text || !format) return false;
  const char *fmt = reinterpret_cast<const char *>(format);
  const std::size_t fmt_window = strnlen(fmt, format_length);
  if (fmt_window > kMaxFormatLength) return false;
  char fmt_buf[kWorkBufferSize];
  const std::size_t fmt_len = trim_into(fmt, fmt_window, fmt_buf, sizeof fmt_buf);
  TokenArray tokens;
  if (translate_format(fmt_buf, fmt_len, tokens) == 0) return false;
  if (validate_tokens(tokens.span()) != FormatFault::none) {
    error_code = kFormatFaultCode;
    return false;
  }
  const char *txt = reinterpret_cast<const char *>(text);
  char text_buf[kWorkBufferSize];
  const std::size_t text_len =
      trim_into(txt, strnlen(txt, text_length), text_buf, sizeof text_buf);
  datetime_fields f;
  std::memset(&f, 0, sizeof f);
  const bool ok = parse_fields(text_buf, text_len, tokens.span(), f, calendar_defaults);
  fields = f;
  return ok;
}

}  // namespace qwz

extern "C" {

int char_to_datetime(const char *text, const qwz_token *tokens, datetime_fields *fields) {
  if (!text || !fields) return 0;
  return parse_fields(text, std::strlen(text), qwz::TokenList(tokens), *fields, true) ? 1 : 0;
}

int qwz_char_to_datetime(const QWZText *text, std::size_t text_length, const QWZText *format,
                         std::size_t format_length, datetime_fields *fields, sword,
                         sb4 *error_code) {
  // The record is written whenever parsing ran, matched or not.
  datetime_fields scratch;
  sb4 code = error_code ? *error_code : 0;
  const bool ok = qwz::text_to_fields(text, text_length, format, format_length,
                                      fields ? *fields : scratch, code, true);
  if (error_code) *error_code = code;
  return ok ? 1 : 0;
}

sword date_from_text(QWZError *errhp, const QWZText *text, std::size_t text_length,
                     const QWZText *format, std::size_t format_length, QWZDate *date) {
  datetime_fields f;
  sb4 code = 0;
  if (!qwz::text_to_fields(text, text_length, format, format_length, f, code, true)) {
    if (code == qwz::kFormatFaultCode) report_format_fault(errhp);
    return -1;
  }
  fields_to_date(f, date);
  return 1;
}

sword datetime_from_text(QWZError *errhp, const QWZText *text, std::size_t text_length,
                         const QWZText *format, std::size_t format_length,
                         QWZDateTime *datetime) {
  datetime_fields f;
  std::memset(&f, 0, sizeof f);
  sb4 code = 0;
  const bool ok = qwz::text_to_fields(text, text_length, format, format_length, f, code, true);
  if (!ok && code == qwz::kFormatFaultCode) {
    report_format_fault(errhp);
    return -1;
  }
  // A text that did not match still goes on, with the fields as read; the
  // caller's validity check then judges the value.
  if (f.tz_given == 1 && !qwz::datetime_has_zone(datetime->hdr.type)) {
    _QWZSetFrontEndErrorHandle(errhp, kDateFormatNotRecognizedText, kDateFormatNotRecognized);
    return -1;
  }
  QWZDate d;
  fields_to_date(f, &d);
  qwz::set_datetime_date(datetime, d);
  datetime->fraction = fraction_nanoseconds(f);
  // The minute keeps its own sign here, even under a negative zone hour.
  datetime->tz_hour = static_cast<sb1>(slot_value(f.tz_hour));
  datetime->tz_minute = static_cast<sb1>(slot_value(f.tz_minute));
  return ok ? 1 : 0;
}

sword append_timezone_from_text(QWZError *errhp, const QWZText *text, std::size_t text_length,
                                const QWZText *format, std::size_t format_length,
                                QWZDateTime *datetime) {
  datetime_fields f;
  sb4 code = 0;
  // Only the zone is read, so a missing year or month needs no clock.
  if (!qwz::text_to_fields(text, text_length, format, format_length, f, code, false)) {
    if (code == qwz::kFormatFaultCode) report_format_fault(errhp);
    return -1;
  }
  const long hour = slot_value(f.tz_hour);
  const long minute = slot_value(f.tz_minute);
  datetime->tz_hour = static_cast<sb1>(hour);
  // The minute takes the zone hour's sign.
  datetime->tz_minute = static_cast<sb1>(f.tz_hour[0] == '-' ? -minute : minute);
  return 0;
}

QWZ_API sword QWZDateFromText(QWZError *errhp, const QWZtext *date_str, ub4 d_str_length,
                              const QWZtext *fmt, ub1 fmt_length, const QWZtext *lang_name,
                              ub4 lang_length, QWZDate *date) {
  const qwz::TracedText text_arg(date_str, d_str_length);
  const qwz::TracedText fmt_arg(fmt, fmt_length);
  const qwz::TracedText lang_arg(lang_name, lang_length);
  return qwz::run_frame(
      API_DATE_FROM_TEXT, errhp,
      [&]() -> Outcome {
        if (!date_str) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 2);
        if (!date) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 8);
        if (!fmt) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 4);
        if (fmt_length == 0) return date_error(errhp, KIND_FORMAT_STRING, DETAIL_NONE, PARAM_NONE);
        if (d_str_length == 0) return date_error(errhp, KIND_DATE_FORMAT, DETAIL_NONE, PARAM_NONE);
        const std::size_t text_len = text_length_of(date_str, d_str_length);
        const std::size_t fmt_len = text_length_of(fmt, fmt_length);
        if (date_from_text(errhp, date_str, text_len, fmt, fmt_len, date) == -1)
          return done(QWZ_ERROR);
        uword flags = 0;
        const sword status = date_check(errhp, date, &flags);
        if (flags != 0)
          return done(date_error(errhp, KIND_DATE_FORMAT, DETAIL_NONE, PARAM_NONE).status);
        return done(status);
      },
      errhp, text_arg.arg(), d_str_length, fmt_arg.arg(), fmt_length, lang_arg.arg(), lang_length,
      date);
}

QWZ_API sword QWZDateTimeFromText(void *hndl, QWZError *errhp, QWZText *date_str,
                                  size_t dstr_length, QWZText *fmt, ub1 fmt_length,
                                  QWZText *lang_name, size_t lang_length,
                                  QWZDateTime *datetime) {
  const qwz::TracedText text_arg(date_str, dstr_length);
  const qwz::TracedText fmt_arg(fmt, fmt_length);
  const qwz::TracedText lang_arg(lang_name, lang_length);
  return qwz::run_frame(
      API_DATETIME_FROM_TEXT, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz_validate_datetime_handle(datetime)) {
          datetime_error(errhp, KIND_NULL_PARAM, kDateTimeInputPtr, 3);
          return refuse(r);
        }
        if (!date_str) return datetime_error(errhp, KIND_NULL_PARAM, kDateTimeInputPtr, 4);
        // The format's NULL message prints 4 as well.
        if (!fmt) return datetime_error(errhp, KIND_NULL_PARAM, kDateTimeInputPtr, 4);
        if (dstr_length == SIZE_MAX)
          return qwz::front_end_error(errhp, kStringTooLongText, kStringTooLong);
        const std::size_t text_len = text_length_of(date_str, dstr_length);
        const std::size_t fmt_len = text_length_of(fmt, fmt_length);
        if (datetime_from_text(errhp, date_str, text_len, fmt, fmt_len, datetime) == -1)
          return done(QWZ_ERROR);
        ub4 valid = 0;
        const sword status = QWZDateTimeCheck(hndl, errhp, datetime, &valid);
        if (valid != 0)
          return done(
              datetime_error(errhp, KIND_INVALID_VALUE, DETAIL_DATE_FORMAT, 3).status);
        return done(status);
      },
      hndl, errhp, text_arg.arg(), dstr_length, fmt_arg.arg(), fmt_length, lang_arg.arg(),
      lang_length, datetime);
}

}  // extern "C"
