// Converting a datetime between classes, and ordering two datetimes.
#ifndef QWZ_DDI_DATETIME_COMPARE_H
#define QWZ_DDI_DATETIME_COMPARE_H

#include "handles/handles.h"

extern "C" {

// Writes -1, 0 or 1 into *result by the fields date1's type carries (a
// date's day, a time's fraction; type 70 and unknown types always 0).
// Returns 0, or -1 when a pointer is NULL. No diagnostic.
QWZ_INTERNAL sword qwz_datetime_compare(const QWZDateTime *date1, const QWZDateTime *date2,
                                        sword *result);

}  // extern "C"

#endif  // QWZ_DDI_DATETIME_COMPARE_H
