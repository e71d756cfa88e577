// A plain, character-by-character model of the text conversions, written to
// be read rather than to be fast: the keyword table, translation (longest
// keyword first, case-blind), the three format rules, the parser with its
// letter scan, shared separator count, widths, required fields and
// defaults, the field-text record, and the formatter. The black-box tests
// compare the library's public functions with it over generated inputs.
//
// Texts handed to the model are whole strings: the tests give lengths that
// cover the text (or cut it where no leading blank is involved).
#ifndef QWZ_TESTS_CONFORMANCE_TEXT_MODEL_H
#define QWZ_TESTS_CONFORMANCE_TEXT_MODEL_H

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace text_model {

struct Keyword {
  const char *text;
  int supported;
  int width;
  int required;
};

// The 61 rows in table order; the index is the keyword id.
inline const Keyword kKeywords[61] = {
    {"AD", 0, 0, 0},    {"A.D.", 0, 0, 0},  {"AM", 0, 0, 0},    {"A.M.", 0, 0, 0},
    {"BC", 0, 0, 0},    {"B.C.", 0, 0, 0},  {"CC", 0, 0, 0},    {"SCC", 0, 0, 0},
    {"D", 0, 0, 0},     {"DAY", 0, 0, 0},   {"DD", 1, 2, 1},    {"DDD", 0, 0, 0},
    {"DL", 0, 0, 0},    {"DS", 0, 0, 0},    {"DY", 0, 0, 0},    {"E", 0, 0, 0},
    {"EE", 0, 0, 0},    {"FF1", 1, 1, 0},   {"FF2", 1, 2, 0},   {"FF3", 1, 3, 0},
    {"FF4", 1, 4, 0},   {"FF5", 1, 5, 0},   {"FM", 0, 0, 0},    {"FX", 0, 0, 0},
    {"HH", 1, 2, 0},    {"HH12", 1, 2, 0},  {"HH24", 1, 2, 0},  {"IW", 0, 0, 0},
    {"IYY", 0, 0, 0},   {"IY", 0, 0, 0},    {"I", 0, 0, 0},     {"IYYY", 0, 0, 0},
    {"J", 0, 0, 0},     {"MI", 1, 2, 0},    {"MM", 1, 2, 1},    {"MON", 0, 0, 0},
    {"MONTH", 0, 0, 0}, {"PM", 0, 0, 0},    {"P.M.", 0, 0, 0},  {"Q", 0, 0, 0},
    {"RM", 0, 0, 0},    {"RR", 0, 0, 0},    {"RRRR", 0, 0, 0},  {"SS", 1, 2, 0},
    {"SSSSS", 0, 0, 0}, {"TS", 0, 0, 0},    {"TZD", 0, 0, 0},   {"TZH", 1, 3, 0},
    {"TZM", 1, 2, 0},   {"TZR", 0, 0, 0},   {"WW", 0, 0, 0},    {"W", 0, 0, 0},
    {"X", 0, 0, 0},     {"Y,YYY", 0, 0, 0}, {"YEAR", 0, 0, 0},  {"SYEAR", 0, 0, 0},
    {"YYYY", 1, 4, 1},  {"SYYYY", 1, 5, 0}, {"YYY", 0, 0, 0},   {"YY", 0, 0, 0},
    {"Y", 0, 0, 0}};

enum Id {
  kDD = 10, kFF1 = 17, kFF5 = 21, kHH = 24, kHH12 = 25, kHH24 = 26, kMI = 33, kMM = 34,
  kSS = 43, kTZH = 47, kTZM = 48, kYYYY = 56, kSYYYY = 57
};

struct Token {
  int id;   // -1 for a literal
  char ch;  // a literal's character
};

inline char upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c; }
inline bool is_digit(char c) { return c >= '0' && c <= '9'; }
inline bool is_letter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

inline int lookup(const std::string &candidate) {
  std::string up;
  for (char c : candidate) up += upper(c);
  for (int i = 0; i < 61; ++i)
    if (up == kKeywords[i].text) return i;
  return -1;
}

// Translation of a format of at most 127 characters.
inline std::vector<Token> translate(const std::string &f) {
  std::vector<Token> out;
  std::size_t i = 0;
  const std::size_t n = f.size();
  while (i < n) {
    int found = -1;
    std::size_t len = n - i;
    for (; len >= 1; --len) {
      found = lookup(f.substr(i, len));
      if (found >= 0) break;
    }
    if (found >= 0) {
      out.push_back({found, 0});
      i += len;
    } else {
      out.push_back({-1, f[i]});
      i += 1;
    }
  }
  return out;
}

enum class Fault { none, literal, unsupported, duplicate };

inline bool is_fraction(int id) { return id >= kFF1 && id <= kFF5; }

inline Fault validate(const std::vector<Token> &toks) {
  for (const Token &t : toks) {
    if (t.id < 0) {
      if (is_digit(t.ch) || is_letter(t.ch)) return Fault::literal;
      continue;
    }
    if (kKeywords[t.id].supported != 1) return Fault::unsupported;
    int count = 0;
    for (const Token &u : toks)
      if (u.id >= 0 && (u.id == t.id || (is_fraction(t.id) && is_fraction(u.id)))) ++count;
    if (count > 1) return Fault::duplicate;
  }
  return Fault::none;
}

struct Fields {
  std::string year, month, day, hour, minute, second, fraction, tz_hour, tz_minute;
  bool tz_given = false;
};

// The parser with its defaults; `fields` holds what was read either way.
inline bool parse(const std::string &text, const std::vector<Token> &toks, Fields &f,
                  int clock_year, int clock_month) {
  std::size_t blanks = 0;
  for (char c : text) {
    if (c == ' ') ++blanks;
    if (is_letter(c) && blanks != 2) return false;
  }
  const std::size_t n = text.size();
  std::size_t cur = 0;
  int separators = 0;
  for (const Token &t : toks) {
    if (t.id < 0) {
      while (cur < n && text[cur] == ' ') ++cur;
      if (cur < n && !is_digit(text[cur])) ++cur;
      continue;
    }
    const std::size_t width = static_cast<std::size_t>(kKeywords[t.id].width);
    std::string col;
    while (cur < n) {
      const char c = text[cur];
      if (is_digit(c)) {
        if (col.size() >= width) break;
        col += c;
        ++cur;
      } else if (c == ' ' && col.empty()) {
        ++cur;
      } else if (separators != 0) {
        if (!col.empty()) break;
        return false;
      } else {
        if (c == '-') {
          if (col.size() >= width) break;
          col += '-';
        }
        separators = 1;
        ++cur;
      }
    }
    if (kKeywords[t.id].required == 1 && col.empty()) return false;
    switch (t.id) {
      case kDD: f.day = col.substr(0, 2); break;
      case kHH: case kHH12: case kHH24: f.hour = col.substr(0, 2); break;
      case kMI: f.minute = col.substr(0, 2); break;
      case kMM: f.month = col.substr(0, 2); break;
      case kSS: f.second = col.substr(0, 2); break;
      case kTZH: f.tz_hour = col.substr(0, 3); f.tz_given = true; break;
      case kTZM: f.tz_minute = col.substr(0, 2); f.tz_given = true; break;
      case kYYYY: case kSYYYY: f.year = col.substr(0, width); break;
      default:
        if (is_fraction(t.id)) {
          if (col.size() < width) return false;
          f.fraction = col.substr(0, width) + "0";
        }
        break;
    }
  }
  if (f.year.empty() || f.month.empty()) {
    if (f.year.empty()) f.year = std::to_string(clock_year);
    if (f.month.empty()) f.month = std::to_string(clock_month);
  }
  if (f.day.empty()) f.day = "01";
  if (f.hour.empty()) f.hour = "00";
  if (f.minute.empty()) f.minute = "00";
  if (f.second.empty()) f.second = "00";
  if (f.fraction.empty()) f.fraction = "000000";
  if (f.tz_hour.empty()) f.tz_hour = "+00";
  if (f.tz_minute.empty()) f.tz_minute = "00";
  return true;
}

inline std::string trim(const std::string &s) {
  std::size_t b = 0, e = s.size();
  while (b < e && s[b] == ' ') ++b;
  while (e > b && s[e - 1] == ' ') --e;
  return s.substr(b, e - b);
}

// The shared entry: 1 parsed, 0 failed; code 5 for a format at fault;
// `ran` tells whether the parser ran (the record is then meaningful).
struct EntryResult {
  bool ok = false;
  int code = 0;
  bool ran = false;
  Fields fields;
};
inline EntryResult entry(const std::string &text, std::size_t text_length,
                         const std::string &format, std::size_t format_length, int clock_year,
                         int clock_month) {
  EntryResult r;
  std::string t = trim(text), f = trim(format);
  if (t.size() > text_length) t.resize(text_length);
  if (f.size() > format_length) f.resize(format_length);
  if (format.size() > 127 || f.empty()) return r;
  const std::vector<Token> toks = translate(f);
  if (validate(toks) != Fault::none) {
    r.code = 5;
    return r;
  }
  r.ran = true;
  r.ok = parse(t, toks, r.fields, clock_year, clock_month);
  return r;
}

// The six calendar values of a date (atoi of each slot, cut to 16 bits).
struct DateValue {
  int16_t year = 0;
  uint16_t month = 0, day = 0, hour = 0, minute = 0, second = 0;
  bool operator==(const DateValue &) const = default;
};
inline DateValue date_value(const Fields &f) {
  return {static_cast<int16_t>(std::atoi(f.year.c_str())),
          static_cast<uint16_t>(std::atoi(f.month.c_str())),
          static_cast<uint16_t>(std::atoi(f.day.c_str())),
          static_cast<uint16_t>(std::atoi(f.hour.c_str())),
          static_cast<uint16_t>(std::atoi(f.minute.c_str())),
          static_cast<uint16_t>(std::atoi(f.second.c_str()))};
}
inline uint32_t fraction_value(const Fields &f) {
  const double v = std::atoi(f.fraction.c_str()) *
                   std::pow(10.0, 9 - static_cast<int>(f.fraction.size()));
  return static_cast<uint32_t>(static_cast<int64_t>(v));
}

inline int month_length(int16_t year, unsigned month) {
  static const int len[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month == 2) {
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return leap ? 29 : 28;
  }
  return len[month];
}

// The date check (the year bits assigned) and the datetime check (ORed, by type).
inline unsigned date_flags(const DateValue &d) {
  unsigned fl = 0;
  if (d.year < -4712 || d.year > 9999) fl = 0x10;
  if (d.year == 0) fl = 0x2000;
  if (d.month == 0 || d.month > 12) fl |= 0x4;
  else if (d.day == 0 || d.day > month_length(d.year, d.month)) fl |= 0x1;
  if (d.hour > 23) fl |= 0x40;
  if (d.minute > 59) fl |= 0x100;
  if (d.second > 59) fl |= 0x400;
  return fl;
}
inline unsigned datetime_flags(int type, const DateValue &d, int tz_hour, int tz_minute) {
  unsigned fl = 0;
  const bool date = type == 65 || type == 68 || type == 69;
  const bool time = type >= 66 && type <= 69;
  const bool zone = type == 67 || type == 69;
  if (date) {
    if (d.year < -4712 || d.year > 9999) fl |= 0x10;
    if (d.year == 0) fl |= 0x2000;
    if (d.month == 0 || d.month > 12) fl |= 0x4;
    else if (d.day == 0 || d.day > month_length(d.year, d.month)) fl |= 0x1;
  }
  if (time) {
    if (d.hour > 23) fl |= 0x40;
    if (d.minute > 59) fl |= 0x100;
    if (d.second > 59) fl |= 0x400;
  }
  if (zone) {
    if (tz_hour > 14 || tz_hour < -12) fl |= 0x10000;
    if (tz_minute > 59 || tz_minute < -59) fl |= 0x40000;
  }
  return fl;
}

// ---- value to text ---------------------------------------------------------

inline std::string printf_text(const char *fmt, long v) {
  char b[64];
  std::snprintf(b, sizeof b, fmt, v);
  return b;
}

inline Fields fields_of_date(const DateValue &d) {
  Fields f;
  f.year = printf_text("%04ld", d.year);
  f.month = printf_text("%02ld", d.month);
  f.day = printf_text("%02ld", d.day);
  f.hour = printf_text("%02ld", d.hour);
  f.minute = printf_text("%02ld", d.minute);
  f.second = printf_text("%02ld", d.second);
  return f;
}
inline Fields fields_of_datetime(const DateValue &d, uint32_t fraction, int tz_hour,
                                 int tz_minute) {
  Fields f = fields_of_date(d);
  f.fraction = printf_text("%ld", static_cast<long>(fraction));
  f.tz_hour = std::string(1, tz_hour < 0 ? '-' : '+') + printf_text("%02ld", std::abs(tz_hour));
  f.tz_minute = printf_text("%02ld", std::abs(tz_minute));
  return f;
}

// The formatter over a checked token list. Slots are whole texts here; the
// formatter only ever reads their first characters.
inline bool format_tokens(const std::vector<Token> &toks, const Fields &f, bool stop_after_seconds,
                   std::string &out) {
  out.clear();
  for (const Token &t : toks) {
    std::string piece;
    if (t.id < 0) {
      if (is_digit(t.ch) || is_letter(t.ch)) return false;
      piece = std::string(1, t.ch);
    } else {
      const std::size_t w = static_cast<std::size_t>(kKeywords[t.id].width);
      switch (t.id) {
        case kDD: piece = f.day.substr(0, 2); break;
        case kHH: case kHH12: case kHH24: piece = f.hour.substr(0, 2); break;
        case kMI: piece = f.minute.substr(0, 2); break;
        case kMM: piece = f.month.substr(0, 2); break;
        case kSS: piece = f.second.substr(0, 2); break;
        case kTZH: piece = f.tz_hour.substr(0, 3); break;
        case kTZM: piece = f.tz_minute.substr(0, 2); break;
        case kYYYY: case kSYYYY:
          if (f.year.size() != w) return false;
          piece = f.year;
          break;
        default:
          if (is_fraction(t.id)) {
            if (f.fraction.size() < w) {
              char b[16];
              std::snprintf(b, sizeof b, "%0*d", static_cast<int>(w),
                            std::atoi(f.fraction.c_str()));
              piece = b;
            } else {
              piece = f.fraction.substr(0, w);
            }
          }
          break;
      }
    }
    out += piece;
    if (t.id == kSS && stop_after_seconds) break;
  }
  return !out.empty();
}

// The shared entry of the formatter: 1 with the text, or 0 with a code (5
// unsupported keyword, 9 buffer too small, else untouched = 0).
struct OutResult {
  bool ok = false;
  int code = 0;
  std::string text;
};
inline OutResult to_text(const Fields &fields, const std::string &format,
                         std::size_t format_length, std::size_t capacity,
                         bool stop_after_seconds) {
  OutResult r;
  if (format.size() > 127) return r;
  std::string f = trim(format);
  if (f.size() > format_length) f.resize(format_length);
  if (f.empty()) return r;
  const std::vector<Token> toks = translate(f);
  const Fault fault = validate(toks);
  if (fault == Fault::unsupported) r.code = 5;
  if (fault != Fault::none) return r;
  std::string text;
  if (!format_tokens(toks, fields, stop_after_seconds, text)) return r;
  if (capacity < text.size()) {
    r.code = 9;
    return r;
  }
  r.ok = true;
  r.text = text;
  return r;
}

}  // namespace text_model

#endif  // QWZ_TESTS_CONFORMANCE_TEXT_MODEL_H
