// Date validity and calendar arithmetic on QWZDate. Everything but the
// validity check goes through seconds of the process's local time zone, so
// results follow the C library's view of that zone (see the bridge below).
#include "date_datetime_interval/calendar.h"

#include "zone/zone.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr ub2 kMonthDays[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// days * 86400 as the 32-bit signed product (it wraps beyond 24855 days
// either way), computed without signed overflow and then widened.
time_t day_product(sb4 days) {
  return static_cast<time_t>(static_cast<sb4>(static_cast<ub4>(days) * 86400u));
}

}  // namespace

namespace qwz {

struct tm date_to_tm(const QWZDate *date) {
  struct tm t;
  std::memset(&t, 0, sizeof t);
  t.tm_year = date->year - 1900;
  t.tm_mon = date->month - 1;
  t.tm_mday = date->day;
  t.tm_hour = date->hour;
  t.tm_min = date->minute;
  t.tm_sec = date->second;
  t.tm_isdst = 0;
  return t;
}

time_t tm_to_seconds(struct tm *tmv) { return zone::to_seconds(tmv); }

void seconds_to_tm(time_t seconds, struct tm *out) {
  if (!zone::to_local(seconds, out)) std::memset(out, 0, sizeof *out);
}

bool local_time(time_t seconds, struct tm *out) { return zone::to_local(seconds, out); }

long local_standard_offset() { return zone::standard_offset(); }

void tm_to_date(const struct tm *t, QWZDate *date) {
  date->year = static_cast<sb2>(static_cast<ub2>(t->tm_year + 1900));
  date->month = static_cast<ub2>(t->tm_mon + 1);
  date->day = static_cast<ub2>(t->tm_mday);
  date->hour = static_cast<ub2>(t->tm_hour);
  date->minute = static_cast<ub2>(t->tm_min);
  date->second = static_cast<ub2>(t->tm_sec);
}

void seconds_to_date(time_t seconds, QWZDate *date) {
  struct tm t;
  seconds_to_tm(seconds, &t);
  tm_to_date(&t, date);
}

void local_now(struct tm *out) { seconds_to_tm(time(nullptr), out); }

}  // namespace qwz

extern "C" {

ub2 month2_of_day(sb2 year) {
  const int y = year;
  return (y % 4 == 0 && (y % 100 != 0 || y % 400 == 0)) ? 29 : 28;
}

ub2 month_of_day(const QWZDate *date) {
  // Callers pass months 1..12; anything else reads as 0 rather than past the table.
  if (date->month > 12) return 0;
  return date->month == 2 ? month2_of_day(date->year) : kMonthDays[date->month];
}

sword date_check(QWZError *, const QWZDate *date, uword *flags) {
  *flags = qwz::date_flags(*date);
  return 0;
}

sword date_add_days(QWZError *, const QWZDate *date, sb4 days, QWZDate *result) {
  const qwz::LocalTimeScope scope;
  const time_t s = qwz::date_to_seconds(date) + day_product(days);
  qwz::seconds_to_date(s, result);
  return 0;
}

sword date_add_months(QWZError *, const QWZDate *date, sb4 months, QWZDate *result) {
  const qwz::LocalTimeScope scope;
  // mktime would carry month overflow into the year; carrying it here first
  // keeps tm_mon within int for any sb4 count.
  struct tm t = qwz::date_to_tm(date);
  const std::int64_t m = static_cast<std::int64_t>(date->month) - 1 + months;
  std::int64_t years = m / 12, mon = m % 12;
  if (mon < 0) { mon += 12; --years; }
  t.tm_year += static_cast<int>(years);
  t.tm_mon = static_cast<int>(mon);
  t.tm_mday = 1;
  qwz::seconds_to_date(qwz::tm_to_seconds(&t), result);
  // The source is read only now, after the result is written: with the same
  // record as source and result the day rule sees day 1.
  const ub2 d = date->day;
  const ub2 src_last = month_of_day(date);
  const ub2 dst_last = month_of_day(result);
  if (d == src_last) result->day = dst_last;
  else if (d < dst_last) result->day = d;
  else if (d > 31) result->day = d;
  else result->day = dst_last;
  return 0;
}

sword date_compare(QWZError *, const QWZDate *date1, const QWZDate *date2, sword *result) {
  const qwz::LocalTimeScope scope;
  const std::int64_t a = qwz::date_to_seconds(date1);
  const std::int64_t b = qwz::date_to_seconds(date2);
  *result = a > b ? 1 : (a == b ? 0 : -1);
  return 0;
}

sword date_days_between(QWZError *, const QWZDate *date1, const QWZDate *date2, sb4 *result) {
  const qwz::LocalTimeScope scope;
  QWZDate a = *date1, b = *date2;
  a.hour = a.minute = a.second = 0;
  b.hour = b.minute = b.second = 0;
  const std::int64_t diff =
      static_cast<std::int64_t>(qwz::date_to_seconds(&a)) - qwz::date_to_seconds(&b);
  *result = static_cast<sb4>(diff / 86400);
  return 0;
}

sword date_last_day(QWZError *, const QWZDate *date, QWZDate *result) {
  QWZDate copy = *date;
  copy.day = month_of_day(&copy);
  *result = copy;
  return 0;
}

sword date_next_day(QWZError *, const QWZDate *date, ub4 weekday, QWZDate *result) {
  const qwz::LocalTimeScope scope;
  struct tm t = qwz::date_to_tm(date);
  // mktime leaves in *tm the local time of the instant it returns, so the
  // weekday is there already; only -1 (which may mean failure, with *tm
  // untouched) needs the conversion back.
  const time_t first = qwz::tm_to_seconds(&t);
  int w = t.tm_wday;
  if (first == -1) {
    struct tm now;
    qwz::seconds_to_tm(first, &now);
    w = now.tm_wday;
  }
  const sb4 step = static_cast<sb4>(weekday) - w + (w < static_cast<int>(weekday) ? 0 : 7);
  // mktime again on the structure it normalised the first time.
  const time_t s = qwz::tm_to_seconds(&t) + day_product(step);
  qwz::seconds_to_date(s, result);
  return 0;
}

sword lower_string(ub1 *text, ub4 *length) {
  // At most the 128 bytes of the work buffer the contract allows; folding
  // in place gives the same bytes as folding a copy and copying it back.
  constexpr ub4 kWorkBuffer = 128;
  ub4 n = static_cast<ub4>(strnlen(reinterpret_cast<const char *>(text), *length));
  if (n > kWorkBuffer) n = kWorkBuffer;
  *length = n;
  sword result = 0;
  for (ub4 i = 0; i < n; ++i) {
    const ub1 c = text[i];
    const bool upper = c >= 'A' && c <= 'Z';
    if (!upper && !(c >= 'a' && c <= 'z')) result = -1;
    if (upper) text[i] = static_cast<ub1>(c - 'A' + 'a');
  }
  return result;
}

}  // extern "C"
