// Datetime descriptors: construction, the field getters, the current
// timestamp, and the two routines that fill a descriptor from the clock and
// from the process's time zone.
#ifndef QWZ_DDI_DATETIME_H
#define QWZ_DDI_DATETIME_H

#include "handles/handles.h"

extern "C" {

// Sets year, month and day to today's local date (time(), localtime_r).
// Nothing else is touched; a NULL descriptor is ignored.
QWZ_INTERNAL void qwz_setup_locate_date(QWZDateTime *datetime);

// Sets tz_hour and tz_minute to the process's standard-time offset from UTC
// (tzset(), then minus `timezone`), truncating so that the minutes carry the
// offset's sign: UTC-03:30 gives -3 and -30. Summer time is never applied.
// A NULL descriptor is ignored.
QWZ_INTERNAL void qwz_setup_local_timezone(QWZDateTime *datetime);

}  // extern "C"

#endif  // QWZ_DDI_DATETIME_H
