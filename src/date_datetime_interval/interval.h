// Interval descriptors (see QWZInterval in handles.h): the validity flags,
// the normal form every interval sum goes through, and the public set, get,
// check, assign, compare, add and subtract routines (interval.cpp).
//
// Normal form: a year-month interval is its total of months (year * 12 +
// month), a day-second interval its total of seconds (day * 86400 + hour *
// 3600 + minute * 60 + second) with the fraction (1/100000 s) beside it.
// Totals are signed 64-bit; they cannot overflow from 32-bit fields.
#ifndef QWZ_DDI_INTERVAL_H
#define QWZ_DDI_INTERVAL_H

#include "handles/handles.h"

#include <cstdint>

// Flags of QWZIntervalCheck (0 means valid): INTERVAL_INVALID_* in qwz.h.

// Units of the normal form.
inline constexpr std::int64_t QWZ_MONTHS_PER_YEAR = 12;
inline constexpr std::int64_t QWZ_SECONDS_PER_DAY = 86400;
inline constexpr std::int64_t QWZ_SECONDS_PER_HOUR = 3600;
inline constexpr std::int64_t QWZ_SECONDS_PER_MINUTE = 60;
inline constexpr sb4 QWZ_FRACTION_PER_SECOND = 100000;

extern "C" {

// Writes the totals back into the fields of `dest` by its kind: months into
// year/month (kind 62), seconds and fraction into day..fraction (kind 63);
// any other kind is left alone. Division truncates toward zero, so a negative
// total gives fields that are all zero or negative; each field is narrowed to
// 32 bits by plain two's-complement truncation, with no range test.
// -1 for a NULL destination, else 0.
QWZ_INTERNAL sword qwz_month_or_second_to_internal(std::int64_t months, std::int64_t seconds,
                                                   sb4 fraction, QWZInterval *dest);

// a + b into result, by a's kind (result must already be of that kind; the
// kind is never changed). result may be a or b: both operands are read in
// full before anything is written. -1 without a diagnostic for any NULL
// pointer; the normaliser's failure after a "fun err" diagnostic; else 0.
QWZ_INTERNAL sword qwz_interval_add(const QWZInterval *a, const QWZInterval *b,
                                    QWZInterval *result, QWZError *errhp);

}  // extern "C"

namespace qwz {

// QWZIntervalCheck through the public entry (a nested, traced call that
// clears and may write errhp): true when the call fails or raises any flag.
bool interval_invalid(void *hndl, QWZError *errhp, const QWZInterval *iv);

// The ORed QWZIntervalCheck flags of a descriptor (0 for an unknown kind).
ub4 interval_flags(const QWZInterval *iv);

// Normal-form totals of the value slots.
inline std::int64_t interval_total_months(const QWZInterval *iv) {
  return std::int64_t{iv->slot[QWZ_IV_YEAR]} * QWZ_MONTHS_PER_YEAR + iv->slot[QWZ_IV_MONTH];
}
inline std::int64_t interval_total_seconds(const QWZInterval *iv) {
  return std::int64_t{iv->slot[QWZ_IV_DAY]} * QWZ_SECONDS_PER_DAY +
         std::int64_t{iv->slot[QWZ_IV_HOUR]} * QWZ_SECONDS_PER_HOUR +
         std::int64_t{iv->slot[QWZ_IV_MINUTE]} * QWZ_SECONDS_PER_MINUTE +
         iv->slot[QWZ_IV_SECOND];
}

// Number of value slots a kind uses: 2 for year-month, 5 for day-second,
// 0 for anything else.
inline int interval_slot_count(ub2 type) {
  return type == INTERVAL_KIND_YM ? 2 : type == INTERVAL_KIND_DS ? 5 : 0;
}

// Two's-complement 32-bit negation and sum, defined for every input: the
// most negative value negates to itself, and sums wrap.
inline sb4 wrap_negate(sb4 v) { return static_cast<sb4>(0u - static_cast<ub4>(v)); }
inline sb4 wrap_add(sb4 a, sb4 b) {
  return static_cast<sb4>(static_cast<ub4>(a) + static_cast<ub4>(b));
}
// |v| as an unsigned number (2147483648 for the most negative value).
inline ub4 magnitude(sb4 v) { return v < 0 ? 0u - static_cast<ub4>(v) : static_cast<ub4>(v); }

}  // namespace qwz

#endif  // QWZ_DDI_INTERVAL_H
