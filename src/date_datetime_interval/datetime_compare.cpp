// QWZDateTimeConvert (a change of representation that never shifts a value
// between zones) and QWZDateTimeCompare (zoned values ordered by their UTC
// instant, through copies that are always freed).
#include "date_datetime_interval/datetime.h"
#include "date_datetime_interval/datetime_arith.h"
#include "date_datetime_interval/datetime_compare.h"
#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/nested.h"
#include "errors/errors.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

namespace {

using qwz::done;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_DATETIME_COMPARE = 148;
constexpr ub4 API_DATETIME_CONVERT = 177;

constexpr const char kNotComparable[] = "the intervals or datetimes are not mutually comparable";
constexpr sb4 kNotComparableNumber = 800160;

enum class Shape { Date, Time, Stamp, None };

Shape shape_of(ub2 type) {
  switch (type) {
    case DATETIME_KIND_DATE: return Shape::Date;
    case DATETIME_KIND_TIME:
    case DATETIME_KIND_TIME_TZ: return Shape::Time;
    case DATETIME_KIND_TIMESTAMP:
    case DATETIME_KIND_TIMESTAMP_TZ: return Shape::Stamp;
    default: return Shape::None;
  }
}

// The (source, target) pairs a conversion accepts; type 70 takes part in none.
bool convertible(Shape from, Shape to) {
  if (from == Shape::None || to == Shape::None) return false;
  return !(from == Shape::Date && to == Shape::Time) && !(from == Shape::Time && to == Shape::Date);
}

int order(long a, long b) { return a > b ? 1 : (a < b ? -1 : 0); }

// Builds the converted value in a scratch record first, so that a
// conversion onto the source descriptor itself reads only the source.
void convert(const QWZDateTime *in, QWZDateTime *out) {
  const Shape from = shape_of(in->hdr.type);
  const Shape to = shape_of(out->hdr.type);
  QWZDateTime v{};
  v.hdr.type = out->hdr.type;
  if (to != Shape::Time) {
    if (from == Shape::Time) {
      qwz_setup_locate_date(&v);
    } else {
      v.year = in->year;
      v.month = in->month;
      v.day = in->day;
    }
  }
  if (to != Shape::Date && from != Shape::Date) {
    v.hour = in->hour;
    v.minute = in->minute;
    v.second = in->second;
    v.fraction = in->fraction;
  }
  if (qwz::datetime_has_zone(out->hdr.type)) {
    if (qwz::datetime_has_zone(in->hdr.type)) {
      v.tz_hour = in->tz_hour;
      v.tz_minute = in->tz_minute;
    } else {
      qwz_setup_local_timezone(&v);
    }
  }
  out->year = v.year;
  out->month = v.month;
  out->day = v.day;
  out->hour = v.hour;
  out->minute = v.minute;
  out->second = v.second;
  out->fraction = v.fraction;
  out->tz_hour = v.tz_hour;
  out->tz_minute = v.tz_minute;
}

}  // namespace

extern "C" {

sword qwz_datetime_compare(const QWZDateTime *date1, const QWZDateTime *date2, sword *result) {
  if (!date1 || !date2 || !result) return QWZ_ERROR;
  const ub2 t = date1->hdr.type;
  if (t == DATETIME_KIND_DATE || t == DATETIME_KIND_TIMESTAMP || t == DATETIME_KIND_TIMESTAMP_TZ) {
    const int by_date = order(date1->year, date2->year) ? order(date1->year, date2->year)
                        : order(date1->month, date2->month) ? order(date1->month, date2->month)
                                                             : order(date1->day, date2->day);
    if (by_date != 0) {
      *result = by_date;
      return 0;
    }
  }
  if (t < DATETIME_KIND_TIME || t > DATETIME_KIND_TIMESTAMP_TZ) {
    *result = 0;
    return 0;
  }
  const long a[4] = {date1->hour, date1->minute, date1->second, static_cast<long>(date1->fraction)};
  const long b[4] = {date2->hour, date2->minute, date2->second, static_cast<long>(date2->fraction)};
  int r = 0;
  for (int i = 0; i < 4 && r == 0; ++i) r = order(a[i], b[i]);
  *result = r;
  return 0;
}

QWZ_API sword QWZDateTimeConvert(void *hndl, QWZError *errhp, QWZDateTime *indate,
                                 QWZDateTime *outdate) {
  return qwz::run_frame(
      API_DATETIME_CONVERT, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_datetime(errhp, indate)) return refuse(r);
        if (const sword r = qwz::check_datetime(errhp, outdate)) return refuse(r);
        if (!convertible(shape_of(indate->hdr.type), shape_of(outdate->hdr.type))) {
          // This refusal still reaches the exit trace.
          _QWZSetFrontEndErrorHandle(errhp, kNotComparable, kNotComparableNumber);
          return done(QWZ_ERROR);
        }
        convert(indate, outdate);
        return done(0);
      },
      hndl, errhp, indate, outdate);
}

QWZ_API sword QWZDateTimeCompare(void *hndl, QWZError *errhp, const QWZDateTime *date1,
                                 const QWZDateTime *date2, sword *result) {
  return qwz::run_frame(
      API_DATETIME_COMPARE, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_datetime_param(errhp, date1, 3)) return refuse(r);
        if (const sword r = qwz::check_datetime_param(errhp, date2, 4)) return refuse(r);
        if (!result) return qwz::datetime_error(errhp, KIND_NULL_PARAM, 3, 5);
        const QWZDateTime *operands[2] = {date1, date2};
        for (ub2 i = 0; i < 2; ++i) {
          ub4 flags = 0;
          if (const sword r = qwz::nested_datetime_check(hndl, errhp, operands[i], &flags)) return refuse(r);
          if (flags != 0)
            return qwz::datetime_error(errhp, KIND_INVALID_VALUE, DETAIL_DATE_FORMAT,
                                       static_cast<ub2>(3 + i));
        }
        if (date1->hdr.type != date2->hdr.type)
          return qwz::datetime_error(errhp, KIND_TYPE_DIFF, 3, 4);
        if (!qwz::datetime_has_zone(date1->hdr.type))
          return done(qwz_datetime_compare(date1, date2, result));
        // Zoned values: compared by their UTC instant; this path has no exit trace.
        return refuse(qwz::with_utc_pair(
            errhp, const_cast<QWZDateTime *>(date1), const_cast<QWZDateTime *>(date2),
            [](void *r, QWZDateTime *u1, QWZDateTime *u2) {
              return qwz_datetime_compare(u1, u2, static_cast<sword *>(r));
            },
            result));
      },
      hndl, errhp, date1, date2, qwz::or_null_text(result));
}

}  // extern "C"
