// Helpers of the black-box text conversion tests: the public calls with
// std::string arguments, the diagnostics they write, the clock's year and
// month, and a datetime read back through the public getters.
#ifndef QWZ_TESTS_CONFORMANCE_TEXT_CONF_UTIL_H
#define QWZ_TESTS_CONFORMANCE_TEXT_CONF_UTIL_H

#include "datetime_conf_util.h"
#include "text_model.h"

#include <cstring>
#include <ctime>
#include <ostream>
#include <string>

namespace text_conf {

using conf::T;
using qwz_test::Diag;

inline const QWZtext *C(const std::string &s) {
  return reinterpret_cast<const QWZtext *>(s.c_str());
}
inline QWZText *W(const std::string &s) {
  return reinterpret_cast<QWZText *>(const_cast<char *>(s.c_str()));
}

inline constexpr char kFormatString[] = "ERROR: [QWZ-11104][QWZ Driver].format string is invalid\n";
inline constexpr char kDateFormat[] = "ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n";
inline constexpr char kFormatOrDate[] =
    "ERROR: [QWZ-11104][QWZ Driver]. format or date string is invalid\n";
inline constexpr char kBufTooSmall[] = "ERROR: [QWZ-11104][QWZ Driver]. buf is too small \n";
inline constexpr char kDateTimeDateFormat[] =
    "ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n";
inline constexpr char kNotRecognized[] = "date format not recognized.";
inline constexpr char kTooLong[] = "string is too long for internal buffer.";

// The local clock's year and month (month 1..12).
struct Clock {
  int year = 0;
  int month = 0;
  bool operator==(const Clock &) const = default;
};
inline Clock clock_now() {
  tzset();
  const time_t now = time(nullptr);
  struct tm t;
  localtime_r(&now, &t);
  return {t.tm_year + 1900, t.tm_mon + 1};
}

// What a caller sees of a diagnostic, compared whole.
struct Seen {
  sb4 number = 0;
  std::string state;
  std::string message;
  bool operator==(const Seen &) const = default;
};
inline std::ostream &operator<<(std::ostream &os, const Seen &s) {
  return os << s.number << " [" << s.state << "] \"" << s.message << "\"";
}
inline Seen seen(QWZError *err) {
  const Diag d = qwz_test::read_diag(err);
  return {d.number, d.state, d.message};
}
inline Seen none() { return {0, "", ""}; }
inline Seen date_setter(sb4 number, const char *state, const std::string &message) {
  return {number, state, message};
}
inline Seen format_string() { return {11104, "22007", kFormatString}; }
inline Seen date_format() { return {11104, "22007", kDateFormat}; }
inline Seen format_or_date() { return {11104, "22007", kFormatOrDate}; }
inline Seen buf_too_small() { return {11104, "01877", kBufTooSmall}; }
inline Seen datetime_date_format() { return {22007, "22007", kDateTimeDateFormat}; }
inline Seen null_param(int n) { return {21560, "21560", conf::null_param(n)}; }

inline QWZDate make_date(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  QWZDate x;
  x.year = static_cast<sb2>(y);
  x.month = static_cast<ub2>(mo);
  x.day = static_cast<ub2>(d);
  x.hour = static_cast<ub2>(h);
  x.minute = static_cast<ub2>(mi);
  x.second = static_cast<ub2>(s);
  return x;
}
inline bool same(const QWZDate &a, const QWZDate &b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}
inline std::string show(const QWZDate &d) {
  return std::to_string(d.year) + "-" + std::to_string(d.month) + "-" + std::to_string(d.day) +
         " " + std::to_string(d.hour) + ":" + std::to_string(d.minute) + ":" +
         std::to_string(d.second);
}

// A datetime as the getters report it.
struct Read {
  sword date_rc = 0;
  sb2 year = 0;
  ub1 month = 0, day = 0;
  sword time_rc = 0;
  ub1 hour = 0, minute = 0, second = 0;
  ub4 fraction = 0;
  sword tz_rc = 0;
  sb1 tz_hour = 0, tz_minute = 0;
  bool operator==(const Read &) const = default;
};
inline std::ostream &operator<<(std::ostream &os, const Read &r) {
  return os << "date " << r.date_rc << ":" << r.year << "-" << int(r.month) << "-" << int(r.day)
            << " time " << r.time_rc << ":" << int(r.hour) << ":" << int(r.minute) << ":"
            << int(r.second) << "." << r.fraction << " tz " << r.tz_rc << ":" << int(r.tz_hour)
            << ":" << int(r.tz_minute);
}

// What the getters would report for these field values in a descriptor of
// `type` (68 or 69): a date of three zero fields is "not a date".
inline Read expected_read(int type, const text_model::DateValue &d, ub4 fraction, int tz_hour,
                          int tz_minute) {
  Read r;
  if (d.year == 0 && d.month == 0 && d.day == 0) {
    r.date_rc = QWZ_ERROR;
  } else {
    r.year = d.year;
    r.month = static_cast<ub1>(d.month);
    r.day = static_cast<ub1>(d.day);
  }
  r.hour = static_cast<ub1>(d.hour);
  r.minute = static_cast<ub1>(d.minute);
  r.second = static_cast<ub1>(d.second);
  r.fraction = fraction;
  if (type == 69) {
    r.tz_hour = static_cast<sb1>(tz_hour);
    r.tz_minute = static_cast<sb1>(tz_minute);
  } else {
    r.tz_rc = QWZ_ERROR;
  }
  return r;
}

class TextFixture : public conf::Fixture {
 protected:
  Read read(QWZDateTime *d) {
    Read r;
    QWZError *e = scratch_err();
    r.date_rc = QWZDateTimeGetDate(env_, e, d, &r.year, &r.month, &r.day);
    r.time_rc = QWZDateTimeGetTime(env_, e, d, &r.hour, &r.minute, &r.second, &r.fraction);
    r.tz_rc = QWZDateTimeGetTimeZoneOffset(env_, e, d, &r.tz_hour, &r.tz_minute);
    return r;
  }
  // An error handle of its own for reading back, so the call's diagnostic
  // stays in err_.
  QWZError *scratch_err() {
    if (!scratch_) {
      void *e = nullptr;
      EXPECT_EQ(QWZHandleAlloc(env_, &e, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
      scratch_ = static_cast<QWZError *>(e);
    }
    return scratch_;
  }
  void TearDown() override {
    if (scratch_) QWZHandleFree(scratch_, QWZ_HTYPE_ERROR);
    conf::Fixture::TearDown();
  }

  // A datetime holding a value, through the constructor.
  QWZDateTime *datetime_of(ub2 type, int y, int mo, int d, int h, int mi, int s, ub4 ns,
                           const char *tz = nullptr) {
    QWZDateTime *x = new_datetime(type);
    const sword rc = QWZDateTimeConstruct(env_, err_, x, static_cast<sb2>(y), static_cast<ub1>(mo),
                                          static_cast<ub1>(d), static_cast<ub1>(h),
                                          static_cast<ub1>(mi), static_cast<ub1>(s), ns,
                                          tz ? T(tz) : nullptr, tz ? std::strlen(tz) : 0);
    EXPECT_EQ(rc, QWZ_SUCCESS) << type << " " << y << "-" << mo << "-" << d;
    return x;
  }

  sword date_from(const std::string &text, const std::string &fmt, QWZDate *out) {
    return QWZDateFromText(err_, C(text), static_cast<ub4>(text.size()), C(fmt),
                           static_cast<ub1>(fmt.size()), nullptr, 0, out);
  }
  sword datetime_from(const std::string &text, const std::string &fmt, QWZDateTime *out) {
    return QWZDateTimeFromText(env_, err_, W(text), text.size(), W(fmt),
                               static_cast<ub1>(fmt.size()), nullptr, 0, out);
  }
  sword date_to(const QWZDate &d, const std::string &fmt, std::string &out, ub4 cap = 200) {
    char buf[512];
    std::memset(buf, 0, sizeof buf);
    ub4 size = cap;
    const sword rc = QWZDateToText(err_, &d, C(fmt), static_cast<ub1>(fmt.size()), nullptr, 0,
                                   &size, reinterpret_cast<QWZtext *>(buf));
    out = buf;
    return rc;
  }
  sword datetime_to(const QWZDateTime *d, const std::string &fmt, std::string &out,
                    ub4 cap = 200) {
    char buf[512];
    std::memset(buf, 0, sizeof buf);
    ub4 size = cap;
    const sword rc = QWZDateTimeToText(env_, err_, d, C(fmt), static_cast<ub1>(fmt.size()), 0,
                                       nullptr, 0, &size, reinterpret_cast<QWZtext *>(buf));
    out = buf;
    return rc;
  }
  Seen diag_seen() { return seen(err_); }

  QWZError *scratch_ = nullptr;
};

}  // namespace text_conf

#endif  // QWZ_TESTS_CONFORMANCE_TEXT_CONF_UTIL_H
