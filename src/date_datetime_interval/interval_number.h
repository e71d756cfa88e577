// Intervals scaled by a number and converted to and from numbers
// (interval_number.cpp). A number counts years for a year-month interval and
// days for a day-second interval.
//
// Scaling goes through the numeric runtime: the interval becomes a runtime
// interval value by way of its text (years to months under qualifier 1538,
// days to 1/100000 second under 3407), the runtime multiplies or divides it
// by the number's double, and the result comes back through text. Numbers
// reach a double through the runtime's decimal value.
#ifndef QWZ_DDI_INTERVAL_NUMBER_H
#define QWZ_DDI_INTERVAL_NUMBER_H

#include "handles/handles.h"
#include "runtime/runtime.h"

inline constexpr sb4 QWZ_DIVISOR_ZERO = 800157;
inline constexpr const char kDivisorZeroText[] = "divisor is equal to zero.";
// The two conversions are recorded as they stand, unfilled.
inline constexpr sb4 QWZ_INTERVAL_KIND_MISMATCH = 800158;
inline constexpr const char kIntervalKindMismatchText[] =
    "inconsistent datatypes: expected %s got %s.";

// Size of the buffer a runtime message is fetched into.
inline constexpr int QWZ_RUNTIME_MESSAGE_SIZE = 1024;

extern "C" {

// The interval as a runtime value: its slots' magnitudes written as
// "YYYY-MM" or "DD HH:MM:SS.FFFFF" (minimum widths; larger magnitudes write
// more digits), led by '-' unless every slot is >= 0, and read with incvasc.
// Returns incvasc's status (QWZ_RT_BAD_QUALIFIER for a descriptor of neither
// kind); nothing is checked beforehand.
QWZ_INTERNAL sword qwz_interval_2_intrvl_t(const QWZInterval *interval, intrvl_t *value);

// The runtime value written with intoasc and read back with sscanf into the
// slots of the destination's kind (every read field negated when the value
// is negative); other slots untouched. intoasc's failure is returned as is.
QWZ_INTERNAL sword qwz_intrvl_t_2_interval(const intrvl_t *value, QWZInterval *interval);

// The number as a double: 0; the number-decimal bridge's failure, with no
// diagnostic; or dectodbl's failure, with the runtime's message recorded.
QWZ_INTERNAL sword qwz_number_2_double(QWZError *errhp, const QWZNumber *number, double *out);

// result = interval / number (divide 1) or interval x number (divide 0), by
// the runtime, under the interval's qualifier. A zero divisor is refused
// ("divisor is equal to zero.", 800157, -1) before the runtime is called;
// the runtime's own failures come back as its error numbers, unrecorded.
QWZ_INTERNAL sword qwz_interval_divide_or_multiply(QWZError *errhp, const QWZInterval *interval,
                                                   const QWZNumber *number, QWZInterval *result,
                                                   int divide);

// The interval's fields from a number of years (kind 62) or days (any other
// kind), then QWZIntervalCheck: an invalid result records "interval is
// invalid" with parameter 3 and returns -1, leaving the computed fields in
// the descriptor. A whole part beyond the 32-bit leading field records the
// same error and writes nothing.
QWZ_INTERNAL sword qwz_interval_from_number(void *hndl, QWZError *errhp, QWZInterval *interval,
                                            const QWZNumber *number);

// The interval as a number of years or days. The interval is not checked.
QWZ_INTERNAL sword qwz_interval_to_number(void *hndl, QWZError *errhp,
                                          const QWZInterval *interval, QWZNumber *number);

}  // extern "C"

namespace qwz {

// Records a runtime failure the way every caller of the runtime does: its
// message (fetched into a zero-filled buffer) and its number; returns the
// number.
sword runtime_error(QWZError *errhp, sb4 status);

}  // namespace qwz

#endif  // QWZ_DDI_INTERVAL_NUMBER_H
