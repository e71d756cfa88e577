// Builders shared by the datetime-arithmetic tests: descriptors with their
// value fields written directly.
#ifndef QWZ_TESTS_DATETIME_ARITH_SUPPORT_H
#define QWZ_TESTS_DATETIME_ARITH_SUPPORT_H

#include "support/test_support.h"

namespace qwz_test {

struct Fields {
  sb2 year;
  ub2 month, day, hour, minute, second;
  ub4 fraction;
  sb1 tz_hour, tz_minute;
};

inline Fields fields_of(const QWZDateTime *d) {
  return {d->year, d->month, d->day, d->hour, d->minute, d->second, d->fraction, d->tz_hour,
          d->tz_minute};
}

inline bool operator==(const Fields &a, const Fields &b) {
  return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
         a.minute == b.minute && a.second == b.second && a.fraction == b.fraction &&
         a.tz_hour == b.tz_hour && a.tz_minute == b.tz_minute;
}

inline std::ostream &operator<<(std::ostream &os, const Fields &f) {
  return os << f.year << "-" << f.month << "-" << f.day << " " << f.hour << ":" << f.minute << ":"
            << f.second << "." << f.fraction << " " << int(f.tz_hour) << ":" << int(f.tz_minute);
}

class ArithFixture : public HandleFixture {
 protected:
  QWZDateTime *dt(ub4 type, Fields f) {
    QWZDateTime *d = new_datetime(type);
    set(d, f);
    return d;
  }
  static void set(QWZDateTime *d, Fields f) {
    d->year = f.year;
    d->month = f.month;
    d->day = f.day;
    d->hour = f.hour;
    d->minute = f.minute;
    d->second = f.second;
    d->fraction = f.fraction;
    d->tz_hour = f.tz_hour;
    d->tz_minute = f.tz_minute;
  }
  QWZInterval *ym(sb4 y, sb4 m) {
    QWZInterval *i = new_interval(INTERVAL_KIND_YM);
    i->slot[QWZ_IV_YEAR] = y;
    i->slot[QWZ_IV_MONTH] = m;
    return i;
  }
  QWZInterval *ds(sb4 d, sb4 h, sb4 mi, sb4 s, sb4 f) {
    QWZInterval *i = new_interval(INTERVAL_KIND_DS);
    i->slot[QWZ_IV_DAY] = d;
    i->slot[QWZ_IV_HOUR] = h;
    i->slot[QWZ_IV_MINUTE] = mi;
    i->slot[QWZ_IV_SECOND] = s;
    i->slot[QWZ_IV_FRACTION] = f;
    return i;
  }
  // A freed descriptor of the given type.
  void *freed(ub4 type) {
    void *d = nullptr;
    EXPECT_EQ(QWZDescriptorAlloc(env_, &d, type), QWZ_SUCCESS);
    EXPECT_EQ(QWZDescriptorFree(d, type), QWZ_SUCCESS);
    return d;
  }
  void expect_invalid_handle() { expect_diag(800001, "", "Invalid handle."); }
};

inline constexpr const char kDateFormat22007[] =
    "ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n";

}  // namespace qwz_test

#endif
