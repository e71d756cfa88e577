// QWZDateTimeFromArray and QWZDateTimeToArray, and the decoder behind the
// first: the five packed layouts described in datetime_array.h.
#include "date_datetime_interval/datetime_array.h"
#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/nested.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

using qwz::datetime_error;
using qwz::done;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_DATETIME_TO_ARRAY = 178;
constexpr ub4 API_DATETIME_FROM_ARRAY = 180;

constexpr sb4 kOutputDetail = 2;      // detail of a NULL output pointer

constexpr char kClassInvalid[] = "the datetime class is invalid.";
constexpr sb4 kClassInvalidNumber = 800156;

// Where each group of fields sits in a class's layout; -1 when absent.
struct Layout {
  ub1 klass;
  int date;      // century, year of century, month, day
  int time;      // hour, minute, second
  int fraction;  // four bytes, big-endian nanoseconds
  int zone;      // zone hour, zone minute
  ub4 length;
};

constexpr Layout kLayouts[] = {
    {DATETIME_CLASS_DATE, 0, -1, -1, -1, 4},
    {DATETIME_CLASS_TIME, -1, 0, 3, -1, 7},
    {DATETIME_CLASS_TIME_TZ, -1, 0, 3, 7, 9},
    {DATETIME_CLASS_TIMESTAMP, 0, 4, 7, -1, 11},
    {DATETIME_CLASS_TIMESTAMP_TZ, 0, 4, 7, 11, 13},
};

const Layout *find_layout(ub1 klass) {
  for (const Layout &l : kLayouts)
    if (l.klass == klass) return &l;
  return nullptr;
}

// The fraction rounded to `fsprec` decimal digits, in nanoseconds:
// 10^(9-p) * round(10^p * ns * 1e-9), truncated. The product is formed in
// 64 bits (it can exceed 32 bits: 4294967295 ns at one digit gives
// 4300000000) and stored modulo 2^32, as a 32-bit truncation would.
ub4 rounded_fraction(ub4 ns, ub1 fsprec) {
  const double scaled = std::round(std::pow(10.0, fsprec) * static_cast<double>(ns) * 1e-9);
  const double value = std::pow(10.0, 9 - static_cast<int>(fsprec)) * scaled;
  // 0 <= value < 2^33 for every ns and fsprec.
  return static_cast<ub4>(static_cast<std::uint64_t>(value));
}

}  // namespace

namespace qwz {

ub4 datetime_array_length(ub1 klass) {
  const Layout *l = find_layout(klass);
  return l ? l->length : 0;
}

}  // namespace qwz

extern "C" {

sword qwz_datetime_from_array(const ub1 *in, ub1 type, QWZDateTime *dt, ub1 fsprec) {
  dt->year = 0;
  dt->month = dt->day = dt->hour = dt->minute = dt->second = 0;
  dt->fraction = 0;
  dt->tz_hour = dt->tz_minute = 0;
  const Layout *l = find_layout(type);
  if (!l) return 0;
  if (l->date >= 0) {
    const ub1 *p = in + l->date;
    dt->year = static_cast<sb2>(p[0] * 100 + p[1] - 10100);
    dt->month = p[2];
    dt->day = p[3];
  }
  if (l->time >= 0) {
    const ub1 *p = in + l->time;
    // Values below 1 wrap in the unsigned fields and fail the check.
    dt->hour = static_cast<ub2>(p[0] - 1);
    dt->minute = static_cast<ub2>(p[1] - 1);
    dt->second = static_cast<ub2>(p[2] - 1);
    if (l->zone >= 0) {
      const ub1 *z = in + l->zone;
      dt->tz_hour = static_cast<sb1>(z[0] - 20);
      dt->tz_minute = static_cast<sb1>(z[1] - 60);
      // UTC hour and minute moved into the zone, with no carry: a result
      // outside 0..23 / 0..59 is left for the caller's check.
      dt->hour = static_cast<ub2>(p[0] + dt->tz_hour - 1);
      dt->minute = static_cast<ub2>(p[1] + dt->tz_minute - 1);
    }
  }
  if (l->fraction >= 0) {
    const ub1 *f = in + l->fraction;
    const ub4 ns = (static_cast<ub4>(f[0]) << 24) | (static_cast<ub4>(f[1]) << 16) |
                   (static_cast<ub4>(f[2]) << 8) | static_cast<ub4>(f[3]);
    dt->fraction = rounded_fraction(ns, fsprec);
  }
  return 0;
}

// `len` is neither checked nor read: the class alone fixes how many bytes
// are read. `reftz` must be a live interval descriptor, though its value is
// never used.
QWZ_API sword QWZDateTimeFromArray(void *hndl, QWZError *errhp, ub1 *inarray, ub4 *len, ub1 type,
                                   QWZDateTime *datetime, QWZInterval *reftz, ub1 fsprec) {
  return qwz::run_frame(
      API_DATETIME_FROM_ARRAY, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_datetime_param(errhp, datetime, 3)) return refuse(r);
        if (const sword r = qwz::check_interval(errhp, reftz)) return refuse(r);
        if (!inarray) return datetime_error(errhp, KIND_NULL_PARAM, qwz::kDatetimeParamDetail, 4);
        if (!find_layout(type)) return qwz::front_end_error(errhp, kClassInvalid, kClassInvalidNumber);
        qwz_datetime_from_array(inarray, type, datetime, fsprec);
        // Checked by the descriptor's own type; an invalid value stays written.
        ub4 flags = 0;
        const sword status = qwz::nested_datetime_check(hndl, errhp, datetime, &flags);
        if (flags != 0) return datetime_error(errhp, KIND_INVALID_VALUE, DETAIL_DATE_FORMAT, 3);
        return done(status);
      },
      hndl, errhp, qwz::or_null_text(inarray), qwz::or_null_text(len), type, datetime, reftz,
      fsprec);
}

// Writes century, year of century, month, day, hour + 1, minute + 1,
// second + 1 and a terminating 0 (each value cut to a byte): always eight
// bytes, no fraction, no zone. The caller's array must hold eight bytes.
// *len is the length of those bytes read as a NUL-terminated string, so a
// zero byte ends it early (month 0 of a time-only descriptor gives 2). It is
// measured on the eight bytes built here, never on the caller's array, so
// nothing beyond what was written is read. `reftz` is not validated or
// read; `fsprec` is only traced.
QWZ_API sword QWZDateTimeToArray(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                 QWZInterval *reftz, ub1 *outarray, ub4 *len, ub1 fsprec) {
  return qwz::run_frame(
      API_DATETIME_TO_ARRAY, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_datetime_param(errhp, datetime, 3)) return refuse(r);
        if (!outarray) return datetime_error(errhp, KIND_NULL_PARAM, kOutputDetail, 5);
        if (!len) return datetime_error(errhp, KIND_NULL_PARAM, kOutputDetail, 9);
        const int year = datetime->year;
        const ub1 bytes[QWZ_DATETIME_ARRAY_OUT_BYTES] = {
            static_cast<ub1>(year / 100 + 100),
            static_cast<ub1>(year % 100 + 100),
            static_cast<ub1>(datetime->month),
            static_cast<ub1>(datetime->day),
            static_cast<ub1>(datetime->hour + 1),
            static_cast<ub1>(datetime->minute + 1),
            static_cast<ub1>(datetime->second + 1),
            0,
        };
        std::memcpy(outarray, bytes, sizeof bytes);
        *len = static_cast<ub4>(strnlen(reinterpret_cast<const char *>(bytes), sizeof bytes));
        return done(0);
      },
      hndl, errhp, datetime, reftz, qwz::or_null_text(outarray), qwz::or_null_text(len), fsprec);
}

}  // extern "C"
