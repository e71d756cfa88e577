// QWZDateTimeCheck and QWZDateTimeAssign: the validity flags of a datetime
// descriptor by its type, and the checked copy between descriptors of one type.
#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/nested.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

namespace {

using qwz::datetime_error;
using qwz::done;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_DATETIME_ASSIGN = 146;
constexpr ub4 API_DATETIME_CHECK = 147;

bool has_date(ub2 t) {
  return t == DATETIME_KIND_DATE || t == DATETIME_KIND_TIMESTAMP || t == DATETIME_KIND_TIMESTAMP_TZ;
}
bool has_time(ub2 t) { return t >= DATETIME_KIND_TIME && t <= DATETIME_KIND_TIMESTAMP_TZ; }

}  // namespace

namespace qwz {

ub4 datetime_flags(const QWZDateTime *dt) {
  const ub2 t = dt->hdr.type;
  ub4 f = 0;
  if (has_date(t)) {
    if (dt->year < -4712 || dt->year > 9999) f |= DATE_INVALID_YEAR;
    if (dt->year == 0) f |= DATE_YEAR_ZERO;
    if (dt->month == 0 || dt->month > 12) f |= DATE_INVALID_MONTH;
    else if (dt->day == 0 || dt->day > qwz_get_last_day_of_month(dt)) f |= DATE_INVALID_DAY;
  }
  if (has_time(t)) {
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

}  // namespace qwz

extern "C" {

QWZ_API sword QWZDateTimeCheck(void *hndl, QWZError *errhp, const QWZDateTime *date, ub4 *valid) {
  return qwz::run_frame(
      API_DATETIME_CHECK, errhp,
      [&] { return qwz::datetime_check_work(hndl, errhp, date, valid); },
      hndl, errhp, date, valid);
}

QWZ_API sword QWZDateTimeAssign(void *hndl, QWZError *errhp, const QWZDateTime *from,
                                QWZDateTime *to) {
  return qwz::run_frame(
      API_DATETIME_ASSIGN, errhp,
      [&] { return qwz::datetime_assign_work(hndl, errhp, from, to); },
      hndl, errhp, from, to);
}

}  // extern "C"
