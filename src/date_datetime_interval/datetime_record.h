// The datetime descriptor's value fields (see QWZDateTime in handles.h) and
// the two public routines every datetime operation leans on:
// QWZDateTimeCheck and QWZDateTimeAssign (datetime_record.cpp).
#ifndef QWZ_DDI_DATETIME_RECORD_H
#define QWZ_DDI_DATETIME_RECORD_H

#include "handles/handles.h"

#include <qwz/qwz.h>

namespace qwz {

// True for the types that carry a zone offset (67 and 69).
inline bool datetime_has_zone(ub2 type) {
  return type == DATETIME_KIND_TIME_TZ || type == DATETIME_KIND_TIMESTAMP_TZ;
}
// The types with calendar fields (65, 68, 69) and with time fields (66..69).
inline bool datetime_has_date(ub2 type) {
  return type == DATETIME_KIND_DATE || type == DATETIME_KIND_TIMESTAMP ||
         type == DATETIME_KIND_TIMESTAMP_TZ;
}
inline bool datetime_has_time(ub2 type) {
  return type >= DATETIME_KIND_TIME && type <= DATETIME_KIND_TIMESTAMP_TZ;
}

// The validity flags of a datetime by its type (ORed; fraction never
// examined; type 70 and unknown types always 0). Inline: every datetime
// operation checks its operands and results, often several times a call.
inline ub4 datetime_flags(const QWZDateTime *dt) {
  const ub2 t = dt->hdr.type;
  ub4 f = 0;
  if (datetime_has_date(t)) {
    if (dt->year < -4712 || dt->year > 9999) f |= DATE_INVALID_YEAR;
    if (dt->year == 0) f |= DATE_YEAR_ZERO;
    if (dt->month == 0 || dt->month > 12) f |= DATE_INVALID_MONTH;
    else if (dt->day == 0 || dt->day > qwz_last_day_of_month(dt->year, dt->month))
      f |= DATE_INVALID_DAY;
  }
  if (datetime_has_time(t)) {
    if (dt->hour > 23) f |= DATE_INVALID_HOUR;
    if (dt->minute > 59) f |= DATE_INVALID_MINUTE;
    if (dt->second > 59) f |= DATE_INVALID_SECOND;
  }
  if (datetime_has_zone(t)) {
    if (dt->tz_hour > 14 || dt->tz_hour < -12) f |= DATETIME_INVALID_TZ_HOUR;
    if (dt->tz_minute > 59 || dt->tz_minute < -59) f |= DATETIME_INVALID_TZ_MINUTE;
  }
  return f;
}

// The six calendar fields as a QWZDate, and back.
inline QWZDate datetime_date(const QWZDateTime *dt) {
  return QWZDate{dt->year, dt->month, dt->day, dt->hour, dt->minute, dt->second};
}
inline void set_datetime_date(QWZDateTime *dt, const QWZDate &d) {
  dt->year = d.year;
  dt->month = d.month;
  dt->day = d.day;
  dt->hour = d.hour;
  dt->minute = d.minute;
  dt->second = d.second;
}

}  // namespace qwz

#endif  // QWZ_DDI_DATETIME_RECORD_H
