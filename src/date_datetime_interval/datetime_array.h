// The packed byte-array form of datetime values (raw column data):
// QWZDateTimeFromArray reads one of five layouts chosen by a class code,
// QWZDateTimeToArray writes the fixed eight-byte date-and-time form.
//
// Layouts, byte offsets (every byte unsigned):
//   184 date              0 century, 1 year of century, 2 month, 3 day
//   185 time              0 hour, 1 minute, 2 second, 3..6 fraction
//   186 time with zone    as 185, 7 zone hour, 8 zone minute
//   187 timestamp         as 184, 4 hour, 5 minute, 6 second, 7..10 fraction
//   188 timestamp w/ zone as 187, 11 zone hour, 12 zone minute
// century = year / 100 + 100, year of century = year % 100 + 100 (both
// truncating), hour/minute/second + 1, fraction in nanoseconds big-endian,
// zone hour + 20, zone minute + 60. In the zoned layouts the hour and minute
// bytes hold UTC time; the reader adds the zone to them without carry.
#ifndef QWZ_DDI_DATETIME_ARRAY_H
#define QWZ_DDI_DATETIME_ARRAY_H

#include "handles/handles.h"

// The class codes (DATETIME_CLASS_DATE 184 .. DATETIME_CLASS_TIMESTAMP_TZ 188)
// are in qwz.h.

// Bytes QWZDateTimeToArray writes: seven value bytes and a terminating 0.
inline constexpr ub4 QWZ_DATETIME_ARRAY_OUT_BYTES = 8;

namespace qwz {

// Number of bytes the layout of `klass` occupies; 0 for an unknown class.
ub4 datetime_array_length(ub1 klass);

}  // namespace qwz

extern "C" {

// Decodes `inarray` by class `type` into the value fields of `datetime`
// (its type code is left alone). Every value field is zeroed first; an
// unknown class leaves it all zero. Reads exactly the bytes of the class's
// layout. The fraction is rounded to `fsprec` decimal digits and stored in
// nanoseconds. Always returns 0.
QWZ_INTERNAL sword qwz_datetime_from_array(const ub1 *inarray, ub1 type, QWZDateTime *datetime,
                                           ub1 fsprec);

}  // extern "C"

#endif  // QWZ_DDI_DATETIME_ARRAY_H
