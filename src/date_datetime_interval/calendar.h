// Calendar arithmetic on QWZDate records, and the one bridge to the C
// library's local-time conversion that the module's date arithmetic uses.
#ifndef QWZ_DDI_CALENDAR_H
#define QWZ_DDI_CALENDAR_H

#include "handles/handles.h"
#include "zone/zone.h"

#include <qwz/qwz.h>

#include <ctime>

extern "C" {

// 29 for a leap year (Gregorian rule on the signed 16-bit year, for every
// year: -4, -400 and 0 are leap years, -100 is not), else 28.
QWZ_INTERNAL ub2 month2_of_day(sb2 year);
// Length of the date's month (1..12; not checked) in the date's year.
QWZ_INTERNAL ub2 month_of_day(const QWZDate *date);

// The routines below take the error handle only to keep one shape; none
// reads it. All return 0 and write their outputs through the pointers.
QWZ_INTERNAL sword date_check(QWZError *errhp, const QWZDate *date, uword *flags);
QWZ_INTERNAL sword date_add_days(QWZError *errhp, const QWZDate *date, sb4 days, QWZDate *result);
QWZ_INTERNAL sword date_add_months(QWZError *errhp, const QWZDate *date, sb4 months,
                                   QWZDate *result);
QWZ_INTERNAL sword date_compare(QWZError *errhp, const QWZDate *date1, const QWZDate *date2,
                                sword *result);
QWZ_INTERNAL sword date_days_between(QWZError *errhp, const QWZDate *date1, const QWZDate *date2,
                                     sb4 *result);
QWZ_INTERNAL sword date_last_day(QWZError *errhp, const QWZDate *date, QWZDate *result);
QWZ_INTERNAL sword date_next_day(QWZError *errhp, const QWZDate *date, ub4 weekday,
                                 QWZDate *result);
// Folds `text` to lower case in place over min(*length, strlen(text)) bytes
// (at most 128), storing that count in *length; 0 when all were ASCII
// letters, -1 otherwise (the folding happens either way).
QWZ_INTERNAL sword lower_string(ub1 *text, ub4 *length);

}  // extern "C"

namespace qwz {

// date_check's flags, inline for the public functions that only need to
// know whether a date is valid (a call costs as much as the test).
inline uword date_flags(const QWZDate &d) {
  uword f = 0;
  if (d.year < -4712 || d.year > 9999) f = DATE_INVALID_YEAR;
  if (d.year == 0) f = DATE_YEAR_ZERO;
  if (d.month == 0 || d.month > 12) f += DATE_INVALID_MONTH;
  else if (d.day == 0 || d.day > qwz_last_day_of_month(d.year, d.month)) f += DATE_INVALID_DAY;
  if (d.hour > 23) f += DATE_INVALID_HOUR;
  if (d.minute > 59) f += DATE_INVALID_MINUTE;
  if (d.second > 59) f += DATE_INVALID_SECOND;
  return f;
}

// ---- the local-time bridge ---------------------------------------------------
// Fields go in through mktime with the daylight-saving flag forced to 0 (read
// as standard time) and come back through localtime_r (the zone's actual clock
// time at that instant). In a zone with summer time a result that lands in
// summer therefore shows one hour more than plain field arithmetic gives;
// in UTC and zones without summer time the arithmetic is exact.
// Both directions go through the zone unit (zone/zone.h), which gives the C
// library's exact answers and falls back to it where it cannot be sure.
// One reading of the zone setting for every conversion in its scope, as the
// C library's localtime_r keeps the setting its mktime read.
using LocalTimeScope = zone::Pin;
struct tm date_to_tm(const QWZDate *date);
time_t tm_to_seconds(struct tm *tmv);                 // mktime, normalising *tmv
void seconds_to_tm(time_t seconds, struct tm *out);   // localtime_r
void tm_to_date(const struct tm *tmv, QWZDate *date); // fields truncated to 16 bits
// mktime's instant for the date's fields (the fields themselves are not
// needed back, so they are not normalised).
inline time_t date_to_seconds(const QWZDate *date) {
  const struct tm t = date_to_tm(date);
  return zone::seconds_of(&t);
}
void seconds_to_date(time_t seconds, QWZDate *date);
// The current local time, for functions that need the clock.
void local_now(struct tm *out);
// localtime_r's answer; false where it would return NULL.
bool local_time(time_t seconds, struct tm *out);
// The zone's standard offset in seconds east of UTC (minus `timezone` after
// tzset()); summer time never enters it.
long local_standard_offset();

}  // namespace qwz

#endif  // QWZ_DDI_CALENDAR_H
