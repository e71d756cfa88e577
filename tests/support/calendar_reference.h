// An independent model of local civil time for the calendar tests: proleptic
// Gregorian day numbers, and the three zones the tests pin (UTC, Central
// Europe, US Eastern) with their summer-time rules written out by hand, so
// that expected results never come from the C library the code under test
// goes through.
#ifndef QWZ_TESTS_CALENDAR_REFERENCE_H
#define QWZ_TESTS_CALENDAR_REFERENCE_H

#include <qwz/qwz.h>

#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>

// QWZDate is a plain C record: equality and printing for the assertions.
inline bool operator==(const QWZDate &a, const QWZDate &b) {
  return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
         a.minute == b.minute && a.second == b.second;
}
inline void PrintTo(const QWZDate &d, std::ostream *os) {
  *os << d.year << '-' << d.month << '-' << d.day << ' ' << d.hour << ':' << d.minute << ':'
      << d.second;
}

namespace qwz_ref {

// Days since 1970-01-01 of a proleptic Gregorian date (astronomical years:
// year 0 exists and -1 precedes it).
inline std::int64_t days_from_civil(std::int64_t y, std::int64_t m, std::int64_t d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const std::int64_t yoe = y - era * 400;
  const std::int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

struct Civil {
  std::int64_t y;
  int m, d;
};
inline Civil civil_from_days(std::int64_t z) {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const std::int64_t doe = z - era * 146097;
  const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const std::int64_t mp = (5 * doy + 2) / 153;
  const int d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  const int m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  return {yoe + era * 400 + (m <= 2), m, d};
}

// Weekday of a day number, 0 for Sunday.
inline int weekday_of_days(std::int64_t z) { return static_cast<int>(((z % 7) + 11) % 7); }

inline bool is_leap(std::int64_t y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); }
inline int month_length(std::int64_t y, int m) {
  static const int kLen[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (m < 0 || m > 12) return 0;
  return m == 2 && is_leap(y) ? 29 : kLen[m];
}

// A zone with a fixed standard offset and, optionally, a yearly summer time
// that starts on the n-th (5: last) given weekday of a month at a local
// standard-time hour and ends likewise at a local summer-time hour.
struct Rule {
  int month, week, wday, hour;
};
struct Zone {
  long std_east;  // seconds east of UTC in standard time
  bool summer;
  long dst_east;
  Rule start, end;
};

inline const Zone kUtcZone{0, false, 0, {}, {}};
inline const Zone kCetZone{3600, true, 7200, {3, 5, 0, 2}, {10, 5, 0, 3}};
inline const Zone kEstZone{-18000, true, -14400, {3, 2, 0, 2}, {11, 1, 0, 2}};

// Day number of the rule's day in year y.
inline std::int64_t rule_day(std::int64_t y, const Rule &r) {
  if (r.week == 5) {
    const std::int64_t last = days_from_civil(y, r.month, month_length(y, r.month));
    return last - ((weekday_of_days(last) - r.wday + 7) % 7);
  }
  const std::int64_t first = days_from_civil(y, r.month, 1);
  return first + ((r.wday - weekday_of_days(first) + 7) % 7) + 7 * (r.week - 1);
}

// Whether the zone keeps summer time at UTC second t. The C library applies
// a rule string to the years from 1970 on only: earlier instants are always
// standard time.
inline bool in_summer(const Zone &z, std::int64_t t) {
  if (!z.summer) return false;
  std::int64_t days = t + z.std_east;
  days = (days >= 0 ? days : days - 86399) / 86400;
  const std::int64_t y = civil_from_days(days).y;
  if (y < 1970) return false;
  const std::int64_t start = rule_day(y, z.start) * 86400 + z.start.hour * 3600 - z.std_east;
  const std::int64_t end = rule_day(y, z.end) * 86400 + z.end.hour * 3600 - z.dst_east;
  return t >= start && t < end;
}

// Fields read as standard time (the daylight-saving flag forced to 0), in
// seconds since the epoch. Fields may lie outside their ranges.
inline std::int64_t std_seconds(const Zone &z, std::int64_t y, std::int64_t m, std::int64_t d,
                                std::int64_t hh, std::int64_t mi, std::int64_t ss) {
  // Carry months into years first, as the C library does.
  std::int64_t m0 = m - 1;
  y += (m0 >= 0 ? m0 : m0 - 11) / 12;
  m0 = ((m0 % 12) + 12) % 12;
  return (days_from_civil(y, m0 + 1, 1) + d - 1) * 86400 + hh * 3600 + mi * 60 + ss - z.std_east;
}
inline std::int64_t std_seconds(const Zone &z, const QWZDate &d) {
  return std_seconds(z, d.year, d.month, d.day, d.hour, d.minute, d.second);
}

// The zone's clock at UTC second t, as a QWZDate (fields truncated to 16 bits).
inline QWZDate local_date(const Zone &z, std::int64_t t) {
  const std::int64_t local = t + (in_summer(z, t) ? z.dst_east : z.std_east);
  std::int64_t days = (local >= 0 ? local : local - 86399) / 86400;
  const std::int64_t sod = local - days * 86400;
  const Civil c = civil_from_days(days);
  QWZDate r;
  r.year = static_cast<sb2>(static_cast<ub2>(c.y));
  r.month = static_cast<ub2>(c.m);
  r.day = static_cast<ub2>(c.d);
  r.hour = static_cast<ub2>(sod / 3600);
  r.minute = static_cast<ub2>(sod / 60 % 60);
  r.second = static_cast<ub2>(sod % 60);
  return r;
}
inline int local_weekday(const Zone &z, std::int64_t t) {
  const std::int64_t local = t + (in_summer(z, t) ? z.dst_east : z.std_east);
  const std::int64_t days = (local >= 0 ? local : local - 86399) / 86400;
  return weekday_of_days(days);
}

// days * 86400 formed as a signed 32-bit product (wrapping), then widened.
inline std::int64_t day_product32(std::int64_t days) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(days) * 86400u);
}

// ---- the expected results of the calendar routines -----------------------
inline QWZDate add_days(const Zone &z, const QWZDate &d, std::int32_t days) {
  return local_date(z, std_seconds(z, d) + day_product32(days));
}

// Month arithmetic; `same_record` models source and result being one record
// (the source is read again only after the result was written).
inline QWZDate add_months(const Zone &z, const QWZDate &src, std::int32_t months,
                          bool same_record = false) {
  const std::int64_t t = std_seconds(z, src.year, static_cast<std::int64_t>(src.month) + months,
                                     1, src.hour, src.minute, src.second);
  QWZDate r = local_date(z, t);
  const QWZDate after = same_record ? r : src;
  const int d = after.day;
  const int src_last = month_length(after.year, after.month);
  const int dst_last = month_length(r.year, r.month);
  if (d == src_last) r.day = static_cast<ub2>(dst_last);
  else if (d < dst_last) r.day = static_cast<ub2>(d);
  else if (d > 31) r.day = static_cast<ub2>(d);
  else r.day = static_cast<ub2>(dst_last);
  return r;
}

inline int compare(const Zone &z, const QWZDate &a, const QWZDate &b) {
  const std::int64_t x = std_seconds(z, a), y = std_seconds(z, b);
  return x > y ? 1 : (x == y ? 0 : -1);
}

inline std::int32_t days_between(const Zone &z, const QWZDate &a, const QWZDate &b) {
  const std::int64_t x = std_seconds(z, a.year, a.month, a.day, 0, 0, 0);
  const std::int64_t y = std_seconds(z, b.year, b.month, b.day, 0, 0, 0);
  return static_cast<std::int32_t>((x - y) / 86400);
}

inline QWZDate next_day(const Zone &z, const QWZDate &d, int weekday) {
  const std::int64_t t = std_seconds(z, d);
  const int w = local_weekday(z, t);
  const int step = w < weekday ? weekday - w : weekday - w + 7;
  return local_date(z, t + day_product32(step));
}

inline std::string to_string(const QWZDate &d) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%d-%02u-%02u %02u:%02u:%02u", d.year, d.month, d.day, d.hour,
                d.minute, d.second);
  return buf;
}

}  // namespace qwz_ref

#endif  // QWZ_TESTS_CALENDAR_REFERENCE_H
