// Text to date and datetime: the format-driven parser, the shared entry that
// trims, translates and checks before parsing, the converters, and the
// public QWZDateFromText and QWZDateTimeFromText.
//
// Lengths: no byte past a given length is read. Where a length is taken
// from the text itself it is taken with strnlen over the given length, and
// trimming works inside that window; a text longer than 255 characters after
// trimming is cut at 255 (text after the last token is ignored anyway).
#include "date_datetime_interval/internal.h"

#include <cstddef>
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

constexpr sb4 kDateFormatNotRecognized = 800153;
constexpr const char kDateFormatNotRecognizedText[] = "date format not recognized.";
constexpr sb4 kStringTooLong = 800155;
constexpr const char kStringTooLongText[] = "string is too long for internal buffer.";

constexpr bool is_digit(unsigned char c) { return c >= '0' && c <= '9'; }
constexpr bool is_letter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Stores the collector (its characters in the low bytes of a word, zero
// above) into a slot of 3 to 7 bytes, ending with a NUL: two overlapping
// moves of the register, no byte loop and no reload of bytes just stored.
inline void store_slot(char *slot, std::uint64_t col, std::size_t size) {
  col &= (std::uint64_t{1} << (8 * (size - 1))) - 1;  // keep size - 1 characters
  if (size >= 4) {
    const auto lo = static_cast<std::uint32_t>(col);
    const auto hi = static_cast<std::uint32_t>(col >> (8 * (size - 4)));
    std::memcpy(slot, &lo, 4);
    std::memcpy(slot + size - 4, &hi, 4);
  } else {
    const auto lo = static_cast<std::uint16_t>(col);
    const auto hi = static_cast<std::uint16_t>(col >> (8 * (size - 2)));
    std::memcpy(slot, &lo, 2);
    std::memcpy(slot + size - 2, &hi, 2);
  }
}

// A default for an empty slot (the text and its NUL fit the slot).
template <std::size_t N, std::size_t M>
void set_default(char (&slot)[N], const char (&text)[M]) {
  static_assert(M <= N);
  if (slot[0] == '\0') std::memcpy(slot, text, M);
}

// Whether t[0, n) holds an ASCII letter, eight bytes at a time: a byte is a
// letter when, with bit 0x20 set, it lies strictly between 0x60 and 0x7B
// (bytes of 0x80 and above never count).
bool has_letter(const unsigned char *t, std::size_t n) {
  constexpr std::uint64_t ones = ~std::uint64_t{0} / 255;  // 0x0101...01
  constexpr std::uint64_t low7 = ones * 127, high = ones * 128;
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    std::uint64_t w;
    std::memcpy(&w, t + i, 8);
    const std::uint64_t x = w | (ones * 0x20);
    const std::uint64_t in_range =
        (ones * (127 + 0x7B) - (x & low7)) & ~x & ((x & low7) + ones * (127 - 0x60)) & high;
    if (in_range) return true;
  }
  for (; i < n; ++i)
    if (is_letter(t[i])) return true;
  return false;
}

// The current local time, read only when the year or the month is missing.
bool local_time_now(struct tm *out) {
  tzset();
  const time_t now = time(nullptr);
  return localtime_r(&now, out) != nullptr;
}

// Parsing without recording.
struct NoRecord {
  static constexpr bool on = false;
  void field(const ub1 *, std::size_t, const qwz::FormatToken &) {}
};

// Records the stores of a parse into a plan (texts of at most kPlanMaxText
// characters, so positions fit a byte).
struct PlanRecorder {
  static constexpr bool on = true;
  qwz::ParsePlan plan{};
  bool complete = true;
  void field(const ub1 *pos, std::size_t count, const qwz::FormatToken &tok) {
    if (plan.stores == qwz::kPlanMaxStores) {
      complete = false;
      return;
    }
    qwz::PlanStore &s = plan.store[plan.stores++];
    s.offset = tok.offset;
    s.size = tok.size;
    s.kind = tok.kind;
    s.count = static_cast<ub1>(count);
    std::memcpy(s.pos, pos, count);
    s.run = 1;
    for (std::size_t k = 1; k < count; ++k)
      if (pos[k] != pos[0] + k) s.run = 0;
  }
};

// The parser over any token sequence (the caller's list or a compiled
// format): the letter scan and the walk over the tokens, storing the fields.
template <class Tokens, class Recorder>
bool read_fields(const char *text, std::size_t n, const Tokens &tokens, datetime_fields &f,
                 Recorder &rec) {
  const auto *t = reinterpret_cast<const unsigned char *>(text);

  // Letters may only stand in trailing text after exactly two blanks; no
  // usable keyword reads letters.
  if (has_letter(t, n)) {
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < n; ++i) {
      blanks += t[i] == ' ';
      if (is_letter(t[i]) && blanks != 2) return false;
    }
  }

  std::size_t cur = 0;
  // One separator count for the whole text: the first non-digit a field
  // meets is taken (a '-' as the field's sign); later ones end fields.
  bool separated = false;
  for (const auto &any : tokens) {
    const qwz::FormatToken &tok = qwz::format_token(any);
    if (tok.kind == qwz::FieldKind::literal) {
      // Any one non-digit stands for any literal.
      while (cur < n && t[cur] == ' ') ++cur;
      if (cur < n && !is_digit(t[cur])) ++cur;
      continue;
    }
    // The collector holds at most the width (5 for a usable keyword), one
    // character per byte from the low end of a word.
    std::uint64_t col = 0;
    std::size_t len = 0;
    ub1 pos[8];
    const std::size_t full = tok.width < 7 ? tok.width : 7;
    auto collect = [&](std::size_t at) {
      if constexpr (Recorder::on) pos[len] = static_cast<ub1>(at);
      col |= std::uint64_t{t[at]} << (8 * len++);
    };
    while (cur < n) {
      const unsigned char c = t[cur];
      if (is_digit(c)) {
        if (len >= full) break;
        // A run of digits, up to the width.
        do collect(cur++);
        while (len < full && cur < n && is_digit(t[cur]));
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
        collect(cur);
      }
      separated = true;
      ++cur;
    }
    if (tok.required && len == 0) return false;
    if (tok.kind == qwz::FieldKind::ignored) continue;
    // Fractions need all their digits: FF3 with 123 stores "1230".
    if (tok.kind == qwz::FieldKind::fraction) {
      if (len < tok.width) return false;
      col |= std::uint64_t{'0'} << (8 * len);
    }
    rec.field(pos, len, tok);
    // A later token for the same slot overwrites the earlier one.
    store_slot(reinterpret_cast<char *>(&f) + tok.offset, col, tok.size);
    if (tok.kind == qwz::FieldKind::zone) f.tz_given = 1;
  }
  return true;
}

// Eight bytes of the text from position i as a word, zero past its end;
// never reads past the text.
inline std::uint64_t text_word(const unsigned char *t, std::size_t n, std::size_t i) {
  std::uint64_t x = 0;
  if (i + 8 <= n) {
    std::memcpy(&x, t + i, 8);
  } else {
    for (std::size_t k = 0; i + k < n; ++k) x |= std::uint64_t{t[i + k]} << (8 * k);
  }
  return x;
}

// The text with every digit read as '0', eight bytes at a time.
void text_shape(const unsigned char *t, std::size_t n, std::uint64_t *shape) {
  constexpr std::uint64_t ones = ~std::uint64_t{0} / 255, low7 = ones * 127, high = ones * 128;
  for (std::size_t w = 0; w * 8 < n; ++w) {
    const std::uint64_t x = text_word(t, n, 8 * w);
    // High bit of each byte strictly between '/' and ':' (bytes of 0x80 and
    // above excluded), that is of each digit; then clear the digits' low
    // nibbles, turning them all into '0'.
    const std::uint64_t digit =
        (ones * (127 + ':') - (x & low7)) & ~x & ((x & low7) + ones * (127 - '/')) & high;
    shape[w] = x & ~((digit >> 7) * 0x0F);
  }
}

// The stores of a recorded parse, on a text of the same classes.
void replay(const qwz::ParsePlan &plan, const unsigned char *t, std::size_t n,
            datetime_fields &f) {
  for (std::size_t i = 0; i < plan.stores; ++i) {
    const qwz::PlanStore &s = plan.store[i];
    std::uint64_t col = 0;
    if (s.run) {
      // Side by side: one word, cut to the characters collected.
      if (s.count > 0)
        col = text_word(t, n, s.pos[0]) & ((std::uint64_t{1} << (8 * s.count)) - 1);
    } else {
      for (std::size_t k = 0; k < s.count; ++k) col |= std::uint64_t{t[s.pos[k]]} << (8 * k);
    }
    if (s.kind == qwz::FieldKind::fraction) col |= std::uint64_t{'0'} << (8 * s.count);
    store_slot(reinterpret_cast<char *>(&f) + s.offset, col, s.size);
    if (s.kind == qwz::FieldKind::zone) f.tz_given = 1;
  }
}

// Fills what the text left empty: year and month from the local clock
// (only when one of them is missing), the rest with fixed texts.
bool apply_defaults(datetime_fields &f, bool calendar_defaults) {
  if (f.year[0] == '\0' || f.month[0] == '\0') {
    if (calendar_defaults) {
      struct tm now;
      if (!local_time_now(&now)) return false;
      if (f.year[0] == '\0') qwz::decimal_text(now.tm_year + 1900L, 0, f.year, sizeof f.year);
      if (f.month[0] == '\0') qwz::decimal_text(now.tm_mon + 1L, 0, f.month, sizeof f.month);
    }
  }
  set_default(f.day, "01");
  set_default(f.hour, "00");
  set_default(f.minute, "00");
  set_default(f.second, "00");
  set_default(f.fraction, "000000");
  set_default(f.tz_hour, "+00");
  set_default(f.tz_minute, "00");
  return true;
}

template <class Tokens>
bool parse_fields(const char *text, std::size_t n, const Tokens &tokens, datetime_fields &f,
                  bool calendar_defaults) {
  NoRecord none;
  return read_fields(text, n, tokens, f, none) && apply_defaults(f, calendar_defaults);
}

// Parses under a compiled format, through one of its plans when the text
// has the shape of one, else the parser (recording a plan when it succeeds).
bool parse_compiled(const char *text, std::size_t n, const qwz::CompiledFormat &format,
                    datetime_fields &f, bool calendar_defaults) {
  if (n > qwz::kPlanMaxText) return parse_fields(text, n, format.span(), f, calendar_defaults);
  const auto *t = reinterpret_cast<const unsigned char *>(text);
  std::uint64_t shape[qwz::kPlanMaxText / 8] = {};
  text_shape(t, n, shape);
  const std::size_t words = (n + 7) / 8;
  for (const qwz::ParsePlan &plan : format.plan) {
    if (!plan.valid || plan.length != n) continue;
    bool same = true;
    for (std::size_t w = 0; w < words; ++w) same &= plan.shape[w] == shape[w];
    if (same) {
      replay(plan, t, n, f);
      return apply_defaults(f, calendar_defaults);
    }
  }
  PlanRecorder rec;
  if (!read_fields(text, n, format.span(), f, rec)) return false;
  if (rec.complete) {
    qwz::ParsePlan &slot = format.plan[format.next_plan];
    format.next_plan = static_cast<ub1>((format.next_plan + 1) % 2);
    slot = rec.plan;
    slot.length = static_cast<ub1>(n);
    std::memcpy(slot.shape, shape, sizeof shape);
    slot.valid = 1;
  }
  return apply_defaults(f, calendar_defaults);
}

template <std::size_t N>
long slot_value(const char (&slot)[N]) {
  const auto digit = [&](std::size_t i) { return is_digit(static_cast<unsigned char>(slot[i])); };
  // Two digits and the end (four for a year) are by far the most common.
  if (digit(0) && digit(1)) {
    if (slot[2] == '\0') return (slot[0] - '0') * 10 + (slot[1] - '0');
    if constexpr (N >= 5)
      if (digit(2) && digit(3) && slot[4] == '\0')
        return ((slot[0] - '0') * 10 + (slot[1] - '0')) * 100 + (slot[2] - '0') * 10 +
               (slot[3] - '0');
  }
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
  return window_to_fields(text, text_length_of(text, text_length), format,
                          text_length_of(format, format_length), fields, error_code,
                          calendar_defaults);
}

bool window_to_fields(const QWZText *text, std::size_t text_window, const QWZText *format,
                      std::size_t fmt_window, datetime_fields &fields, sb4 &error_code,
                      bool calendar_defaults) {
  const char *fmt = reinterpret_cast<const char *>(format);
  if (fmt_window > kMaxFormatLength) return false;
  // Both are trimmed where they stand: the work buffers would only hold
  // copies of these windows.
  std::size_t fmt_begin = 0;
  const std::size_t fmt_len = trim_window(fmt, fmt_window, kWorkBufferSize, &fmt_begin);
  const CompiledFormat *tokens = compile_format(fmt + fmt_begin, fmt_len);
  if (!tokens) return false;
  if (tokens->fault != FormatFault::none) {
    error_code = kFormatFaultCode;
    return false;
  }
  const char *txt = reinterpret_cast<const char *>(text);
  std::size_t text_begin = 0;
  const std::size_t text_len = trim_window(txt, text_window, kWorkBufferSize, &text_begin);
  // The record is cleared and filled in place: it holds what was read
  // whether or not the text matched.
  std::memset(&fields, 0, sizeof fields);
  return parse_compiled(txt + text_begin, text_len, *tokens, fields, calendar_defaults);
}

sword date_from_window(QWZError *errhp, const QWZText *text, std::size_t text_window,
                       const QWZText *format, std::size_t fmt_window, QWZDate *date) {
  datetime_fields f;
  sb4 code = 0;
  if (!window_to_fields(text, text_window, format, fmt_window, f, code, true)) {
    if (code == kFormatFaultCode) report_format_fault(errhp);
    return -1;
  }
  fields_to_date(f, date);
  return 1;
}

sword datetime_from_window(QWZError *errhp, const QWZText *text, std::size_t text_window,
                           const QWZText *format, std::size_t fmt_window, QWZDateTime *datetime) {
  datetime_fields f;
  std::memset(&f, 0, sizeof f);
  sb4 code = 0;
  const bool ok = text && format &&
                  window_to_fields(text, text_window, format, fmt_window, f, code, true);
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
  if (!text || !format || !date) return -1;
  return qwz::date_from_window(errhp, text, text_length_of(text, text_length), format,
                               text_length_of(format, format_length), date);
}

sword datetime_from_text(QWZError *errhp, const QWZText *text, std::size_t text_length,
                         const QWZText *format, std::size_t format_length,
                         QWZDateTime *datetime) {
  if (!datetime) return -1;
  const std::size_t text_window = text ? text_length_of(text, text_length) : 0;
  const std::size_t fmt_window = format ? text_length_of(format, format_length) : 0;
  return qwz::datetime_from_window(errhp, text, text_window, format, fmt_window, datetime);
}

sword append_timezone_from_text(QWZError *errhp, const QWZText *text, std::size_t text_length,
                                const QWZText *format, std::size_t format_length,
                                QWZDateTime *datetime) {
  if (!datetime) return -1;
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
        if (qwz::date_from_window(errhp, date_str, text_len, fmt, fmt_len, date) == -1)
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
        if (const sword r = qwz::check_datetime_param(errhp, datetime, 3)) return refuse(r);
        if (!date_str) return datetime_error(errhp, KIND_NULL_PARAM, qwz::kDatetimeParamDetail, 4);
        // The format's NULL message prints 4 as well.
        if (!fmt) return datetime_error(errhp, KIND_NULL_PARAM, qwz::kDatetimeParamDetail, 4);
        if (dstr_length == SIZE_MAX)
          return qwz::front_end_error(errhp, kStringTooLongText, kStringTooLong);
        const std::size_t text_len = text_length_of(date_str, dstr_length);
        const std::size_t fmt_len = text_length_of(fmt, fmt_length);
        if (qwz::datetime_from_window(errhp, date_str, text_len, fmt, fmt_len, datetime) == -1)
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
