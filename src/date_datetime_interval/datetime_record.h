// The datetime descriptor's value fields (see QWZDateTime in handles.h) and
// the two public routines every datetime operation leans on:
// QWZDateTimeCheck and QWZDateTimeAssign (datetime_record.cpp).
#ifndef QWZ_DDI_DATETIME_RECORD_H
#define QWZ_DDI_DATETIME_RECORD_H

#include "handles/handles.h"

// The zone flags of QWZDateTimeCheck (DATETIME_INVALID_TZ_*) are in qwz.h.

namespace qwz {

// The validity flags of a datetime by its type (ORed; fraction never
// examined; type 70 and unknown types always 0).
ub4 datetime_flags(const QWZDateTime *dt);

// True for the types that carry a zone offset (67 and 69).
inline bool datetime_has_zone(ub2 type) {
  return type == DATETIME_KIND_TIME_TZ || type == DATETIME_KIND_TIMESTAMP_TZ;
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
