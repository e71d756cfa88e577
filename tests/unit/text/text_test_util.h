// Small helpers shared by the text conversion tests.
#ifndef QWZ_TESTS_TEXT_UTIL_H
#define QWZ_TESTS_TEXT_UTIL_H

#include "support/test_support.h"

#include <cstring>
#include <ctime>
#include <ostream>
#include <string>

// QWZDate lives in the global namespace; so do its test operators.
inline bool operator==(const QWZDate &a, const QWZDate &b) {
  return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
         a.minute == b.minute && a.second == b.second;
}
inline std::ostream &operator<<(std::ostream &os, const QWZDate &d) {
  return os << d.year << "-" << d.month << "-" << d.day << " " << d.hour << ":" << d.minute << ":"
            << d.second;
}

namespace text_test {

inline const QWZText *U(const char *s) { return reinterpret_cast<const QWZText *>(s); }
inline QWZText *M(const char *s) { return const_cast<QWZText *>(U(s)); }
inline QWZText *M(std::string &s) { return reinterpret_cast<QWZText *>(s.data()); }

// The year and month of the local clock now (1-based month), read twice so
// that a call made between the two reads sees one of them.
struct YearMonth {
  int year;
  int month;
  bool operator==(const YearMonth &o) const { return year == o.year && month == o.month; }
};
inline YearMonth local_year_month() {
  tzset();
  const time_t now = time(nullptr);
  struct tm t;
  localtime_r(&now, &t);
  return {t.tm_year + 1900, t.tm_mon + 1};
}

// Diagnostic texts of the text functions.
inline constexpr char kFormatString[] = "ERROR: [QWZ-11104][QWZ Driver].format string is invalid\n";
inline constexpr char kDateFormat[] = "ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n";
inline constexpr char kFormatOrDate[] =
    "ERROR: [QWZ-11104][QWZ Driver]. format or date string is invalid\n";
inline constexpr char kBufTooSmall[] = "ERROR: [QWZ-11104][QWZ Driver]. buf is too small \n";
inline constexpr char kDateTimeInvalid[] = "ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n";
inline std::string null_param(int n) {
  return "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n) + " is NULL\n";
}

// The 45 keywords the conversions refuse.
inline const char *const kRejected[45] = {
    "AD",  "A.D.", "AM",  "A.M.", "BC",    "B.C.", "CC",   "SCC",  "D",     "DAY",  "DDD", "DL",
    "DS",  "DY",   "E",   "EE",   "FM",    "FX",   "IW",   "IYY",  "IY",    "I",    "IYYY", "J",
    "MON", "MONTH", "PM", "P.M.", "Q",     "RM",   "RR",   "RRRR", "SSSSS", "TS",   "TZD", "TZR",
    "WW",  "W",    "X",   "Y,YYY", "YEAR", "SYEAR", "YYY", "YY",   "Y"};

}  // namespace text_test

#endif  // QWZ_TESTS_TEXT_UTIL_H
