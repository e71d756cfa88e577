// Helpers of the black-box date family tests: records built field by field,
// the diagnostic texts as a client sees them, and a fixture whose error
// handle is read back through QWZErrorGet.
#ifndef QWZ_TESTS_CONFORMANCE_DATE_CONF_H
#define QWZ_TESTS_CONFORMANCE_DATE_CONF_H

#include "support/test_support.h"

#include <cstring>
#include <ctime>
#include <ostream>
#include <string>

namespace dconf {

using qwz_test::Diag;
using qwz_test::hex12;
using qwz_test::TraceRecord;

inline QWZDate D(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  QWZDate r;
  r.year = static_cast<sb2>(y);
  r.month = static_cast<ub2>(mo);
  r.day = static_cast<ub2>(d);
  r.hour = static_cast<ub2>(h);
  r.minute = static_cast<ub2>(mi);
  r.second = static_cast<ub2>(s);
  return r;
}

inline bool same(const QWZDate &a, const QWZDate &b) {
  return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
         a.minute == b.minute && a.second == b.second;
}

inline std::string show(const QWZDate &d) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%d-%02u-%02u %02u:%02u:%02u", d.year, d.month, d.day, d.hour,
                d.minute, d.second);
  return buf;
}

// A record no date function may write: every field holds a marker value.
inline QWZDate marker() { return D(-7777, 0xABCD, 0xBCDE, 0xCDEF, 0xDEF0, 0xEF01); }

inline const QWZtext *W(const char *s) { return reinterpret_cast<const QWZtext *>(s); }

inline std::string null_param(int n) {
  return "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n) + " is NULL\n";
}
inline constexpr char kDateInvalid[] = "ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n";
inline constexpr char kWeekFormat[] = "ERROR: [QWZ-1846][QWZ Driver].week format is invalid\n";

// The record a plain field-by-field calculation gives for `seconds` since
// the epoch read in UTC (gmtime_r), for comparison with results in UTC.
inline QWZDate utc_record(long long seconds) {
  const time_t t = static_cast<time_t>(seconds);
  struct tm b;
  gmtime_r(&t, &b);
  return D(b.tm_year + 1900, b.tm_mon + 1, b.tm_mday, b.tm_hour, b.tm_min, b.tm_sec);
}
inline long long utc_seconds(const QWZDate &d) {
  struct tm b;
  std::memset(&b, 0, sizeof b);
  b.tm_year = d.year - 1900;
  b.tm_mon = d.month - 1;
  b.tm_mday = d.day;
  b.tm_hour = d.hour;
  b.tm_min = d.minute;
  b.tm_sec = d.second;
  return static_cast<long long>(timegm(&b));
}

class DateConf : public qwz_test::HandleFixture {
 protected:
  // A diagnostic that a later successful call must clear.
  void leave_a_diagnostic() {
    QWZDate out = marker();
    ASSERT_EQ(QWZDateAddDays(err_, nullptr, 1, &out), QWZ_ERROR);
    ASSERT_EQ(diag().number, 21560);
  }
  void expect_null_param(int n) { expect_diag(21560, "21560", null_param(n)); }
  void expect_date_invalid() { expect_diag(11104, "22007", kDateInvalid); }
  void expect_week_format() { expect_diag(1846, "1846", kWeekFormat); }
};

}  // namespace dconf

inline std::ostream &operator<<(std::ostream &os, const QWZDate &d) {
  return os << dconf::show(d);
}
inline bool operator==(const QWZDate &a, const QWZDate &b) { return dconf::same(a, b); }

#endif  // QWZ_TESTS_CONFORMANCE_DATE_CONF_H
