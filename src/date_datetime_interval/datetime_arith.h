// Datetimes with intervals: adding and subtracting an interval, the interval
// between two datetimes, and moving a zoned value to UTC.
#ifndef QWZ_DDI_DATETIME_ARITH_H
#define QWZ_DDI_DATETIME_ARITH_H

#include "handles/handles.h"

extern "C" {

// Writes datetime + inter into result's fields (never its type or zone).
// is_add 0: the caller has already negated the interval. Returns 0, -1 for a
// NULL argument (no diagnostic) or for a result that fails its check
// (diagnostic written), or the nested QWZDateTimeCheck's non-zero status.
QWZ_INTERNAL sword qwz_datetime_add_interval(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                             QWZInterval *inter, QWZDateTime *result,
                                             sb4 is_add);
// Writes date1 - date2 into inter in the form of inter's own kind.
QWZ_INTERNAL sword qwz_datetime_sub(void *hndl, QWZError *errhp, QWZDateTime *date1,
                                    QWZDateTime *date2, QWZInterval *inter);
// A new descriptor of the same type holding datetime's wall-clock value minus
// its zone offset, or NULL. The caller frees it with _QWZDateTimeDescriptorFree.
QWZ_INTERNAL QWZDateTime *qwz_datetime_2_utc(QWZError *errhp, QWZDateTime *datetime);

}  // extern "C"

namespace qwz {

// qwz_datetime_2_utc into descriptors that exist already: `utc` of
// datetime's type with value fields 0, `shift` a day-second interval used as
// scratch. True when the value was moved; false after the failing step left
// its diagnostic.
bool datetime_to_utc_in(QWZError *errhp, QWZDateTime *datetime, QWZDateTime *utc,
                        QWZInterval *shift);

// Moves date1 and date2 to UTC, in that order, and returns use(context, u1,
// u2), where a move that failed gives NULL. With tracing on the copies are
// descriptors from qwz_datetime_2_utc, freed afterwards, so that the nested
// public calls and their trace records are those of the descriptor path;
// with tracing off they live on the stack and nothing is allocated.
sword with_utc_pair(QWZError *errhp, QWZDateTime *date1, QWZDateTime *date2,
                    sword (*use)(void *context, QWZDateTime *u1, QWZDateTime *u2),
                    void *context);

}  // namespace qwz

#endif  // QWZ_DDI_DATETIME_ARITH_H
