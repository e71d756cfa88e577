// Datetime arithmetic with intervals.
//
// The two routines deliberately use different fraction units: addition
// carries and borrows at 1,000,000,000 per second, subtraction at 100,000
// per second (the unit of QWZDateTimeSysTimeStamp). Year-month intervals move
// the fields directly (no end-of-month clamping); day-second intervals go
// through local time (calendar.h), with its summer-time asymmetry.
#include "date_datetime_interval/calendar.h"
#include "date_datetime_interval/datetime_arith.h"
#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/interval.h"
#include "date_datetime_interval/nested.h"
#include "errors/errors.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

#include <cstdint>

namespace {

using qwz::done;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_DATETIME_INTERVAL_ADD = 139;
constexpr ub4 API_DATETIME_INTERVAL_SUB = 140;
constexpr ub4 API_DATETIME_SUBTRACT = 141;

constexpr std::int64_t kAddFractionPerSecond = 1000000000;
constexpr std::int64_t kSubFractionPerSecond = 100000;

constexpr const char kInconsistentTypes[] = "inconsistent datatypes: expected %s got %s.";
constexpr sb4 kInconsistentTypesNumber = 800130;
constexpr const char kNotComparable[] = "the intervals or datetimes are not mutually comparable.";
constexpr sb4 kNotComparableNumber = 800129;

// Result flags the add routine lets through: none, year zero alone, 0x800.
bool add_flags_accepted(ub4 flags) { return flags == 0 || flags == DATE_YEAR_ZERO || flags == 0x800u; }

// 32-bit negation that wraps INT32_MIN onto itself instead of overflowing.
sb4 negate32(sb4 v) { return static_cast<sb4>(0u - static_cast<ub4>(v)); }

void negate_interval(QWZInterval *inter) {
  if (inter->hdr.type == INTERVAL_KIND_YM) {
    inter->slot[QWZ_IV_YEAR] = negate32(inter->slot[QWZ_IV_YEAR]);
    inter->slot[QWZ_IV_MONTH] = negate32(inter->slot[QWZ_IV_MONTH]);
  } else if (inter->hdr.type == INTERVAL_KIND_DS) {
    for (sb4 &s : inter->slot) s = negate32(s);
  }
}

void add_year_month(const QWZDateTime *dt, const QWZInterval *inter, QWZDateTime *result,
                    sb4 is_add) {
  const std::int64_t im = inter->slot[QWZ_IV_MONTH];
  const std::int64_t y = static_cast<std::int64_t>(inter->slot[QWZ_IV_YEAR]) + dt->year;
  const std::int64_t m = dt->month + im;
  if (m <= 12) {
    result->year = static_cast<sb2>(y);
    result->month = static_cast<ub2>(m);
  } else if (m == 24) {
    result->year = static_cast<sb2>(y + 1);
    result->month = 12;
  } else {
    result->year = static_cast<sb2>(y + m / 12);
    result->month = static_cast<ub2>(m % 12);
  }
  // A year is borrowed only when the months subtracted exceed the source's
  // month (March minus 3 months leaves month 0 and fails the check). The
  // source's month is read after the result is written, so with the result
  // as the source the test sees the month just stored.
  if (is_add == 0 && dt->month < (im < 0 ? -im : im)) {
    result->year = static_cast<sb2>(y - 1);
    result->month = static_cast<ub2>(m + 12);
  }
  result->day = dt->day;
  result->hour = dt->hour;
  result->minute = dt->minute;
  result->second = dt->second;
}

void add_day_second(const QWZDateTime *dt, const QWZInterval *inter, QWZDateTime *result) {
  const QWZDate source = qwz::datetime_date(dt);
  const std::int64_t delta = static_cast<std::int64_t>(inter->slot[QWZ_IV_DAY]) * 86400 +
                             static_cast<std::int64_t>(inter->slot[QWZ_IV_HOUR]) * 3600 +
                             static_cast<std::int64_t>(inter->slot[QWZ_IV_MINUTE]) * 60 +
                             inter->slot[QWZ_IV_SECOND];
  QWZDate moved;
  const qwz::LocalTimeScope scope;
  qwz::seconds_to_date(static_cast<time_t>(qwz::date_to_seconds(&source) + delta), &moved);
  qwz::set_datetime_date(result, moved);
}

std::int64_t month_total(const QWZDateTime *d) {
  return static_cast<std::int64_t>(d->year) * 12 + d->month;
}
std::int64_t second_total(const QWZDateTime *d) {
  return static_cast<std::int64_t>(d->day) * 86400 + d->hour * 3600 + d->minute * 60 + d->second;
}

// The checks shared by QWZDateTimeIntervalAdd and QWZDateTimeIntervalSub.
sword check_operands(QWZError *errhp, void *hndl, QWZDateTime *datetime, QWZInterval *inter,
                     QWZDateTime *out) {
  if (const sword r = qwz::check_context(errhp, hndl)) return r;
  if (const sword r = qwz::check_datetime(errhp, datetime)) return r;
  if (const sword r = qwz::check_interval(errhp, inter)) return r;
  if (const sword r = qwz::check_datetime(errhp, out)) return r;
  // Only timestamps with a zone take part in interval arithmetic.
  if (datetime->hdr.type != DATETIME_KIND_TIMESTAMP_TZ) {
    _QWZSetFrontEndErrorHandle(errhp, kInconsistentTypes, kInconsistentTypesNumber);
    return QWZ_ERROR;
  }
  return 0;
}

// The two steps of the move to UTC, on descriptors that already exist:
// copy := datetime through QWZDateTimeAssign, then copy := datetime plus the
// day-second interval of minus its offset (set through
// QWZIntervalSetDaySecond into `shift`), with the copy's zone set to 0.
sword utc_copy(QWZEnv *env, QWZError *errhp, QWZDateTime *datetime, QWZDateTime *copy) {
  return qwz::nested_datetime_assign(env, errhp, datetime, copy);
}
sword utc_shift(QWZEnv *env, QWZError *errhp, QWZDateTime *datetime, QWZDateTime *copy,
                QWZInterval *shift) {
  copy->tz_hour = 0;
  copy->tz_minute = 0;
  sword r = qwz::nested_interval_set_day_second(env, errhp, 0, -datetime->tz_hour,
                                                -datetime->tz_minute, 0, 0, shift);
  if (r == 0) r = qwz_datetime_add_interval(env, errhp, datetime, shift, copy, 1);
  return r;
}

}  // namespace

namespace qwz {

bool datetime_to_utc_in(QWZError *errhp, QWZDateTime *datetime, QWZDateTime *utc,
                        QWZInterval *shift) {
  QWZEnv *env = qwz_handle_env(datetime);
  if (utc_copy(env, errhp, datetime, utc) != 0) return false;
  return utc_shift(env, errhp, datetime, utc, shift) == 0;
}

sword with_utc_pair(QWZError *errhp, QWZDateTime *date1, QWZDateTime *date2,
                    sword (*use)(void *context, QWZDateTime *u1, QWZDateTime *u2),
                    void *context) {
  // Both moves read the zone setting once, as one calendar routine.
  const qwz::LocalTimeScope scope;
  if (qwz_trace_flag) [[unlikely]] {
    // The nested public calls are traced: the copies are real descriptors.
    QWZDateTime *u1 = qwz_datetime_2_utc(errhp, date1);
    QWZDateTime *u2 = qwz_datetime_2_utc(errhp, date2);
    const sword status = use(context, u1, u2);
    if (u1) _QWZDateTimeDescriptorFree(u1);
    if (u2) _QWZDateTimeDescriptorFree(u2);
    return status;
  }
  QWZEnv *env1 = qwz_handle_env(date1);
  QWZEnv *env2 = qwz_handle_env(date2);
  ScopedDescriptor<QWZDateTime> u1(env1, date1->hdr.type), u2(env2, date2->hdr.type);
  ScopedDescriptor<QWZInterval> s1(env1, INTERVAL_KIND_DS), s2(env2, INTERVAL_KIND_DS);
  const bool ok1 = datetime_to_utc_in(errhp, date1, u1.get(), s1.get());
  const bool ok2 = datetime_to_utc_in(errhp, date2, u2.get(), s2.get());
  return use(context, ok1 ? u1.get() : nullptr, ok2 ? u2.get() : nullptr);
}

}  // namespace qwz

extern "C" {

sword qwz_datetime_add_interval(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                QWZInterval *inter, QWZDateTime *result, sb4 is_add) {
  if (!datetime || !inter || !result || !errhp) return QWZ_ERROR;
  const ub4 source_fraction = datetime->fraction;
  if (inter->hdr.type == INTERVAL_KIND_YM) add_year_month(datetime, inter, result, is_add);
  else add_day_second(datetime, inter, result);
  const std::int64_t f = static_cast<std::int64_t>(source_fraction) + inter->slot[QWZ_IV_FRACTION];
  if (is_add == 0 && f < 0) {
    result->second = static_cast<ub2>(result->second - 1);  // a second of 0 wraps and fails
    result->fraction = static_cast<ub4>(f + kAddFractionPerSecond);
  } else {
    result->fraction = static_cast<ub4>(f);  // never carried into the seconds
  }
  ub4 flags = 0;
  if (const sword r = qwz::nested_datetime_check(hndl, errhp, result, &flags)) return r;
  if (!add_flags_accepted(flags)) {
    _QWZSetDateTimeErrorMsg(ERRSRC_DRIVER, KIND_INVALID_VALUE, DETAIL_DATE_FORMAT, 4, errhp, "");
    return QWZ_ERROR;
  }
  return 0;
}

sword qwz_datetime_sub(void *hndl, QWZError *errhp, QWZDateTime *date1, QWZDateTime *date2,
                       QWZInterval *inter) {
  if (!date1 || !date2 || !inter || !errhp) return QWZ_ERROR;
  const std::int64_t md = month_total(date1) - month_total(date2);
  std::int64_t sd = second_total(date1) - second_total(date2);
  std::int64_t fd = static_cast<sb4>(date1->fraction - date2->fraction);
  if (fd > 99999 || fd < -99999) {
    sd += fd / kSubFractionPerSecond;
    fd %= kSubFractionPerSecond;
  }
  if (sd > 0 && fd < 0) {
    sd -= 1;
    fd += kSubFractionPerSecond;
  } else if (sd < 0 && fd >= 1) {
    sd += 1;
    fd -= kSubFractionPerSecond;
  }
  if (inter->hdr.type == INTERVAL_KIND_YM) {
    inter->slot[QWZ_IV_YEAR] = static_cast<sb4>(md / 12);
    inter->slot[QWZ_IV_MONTH] = static_cast<sb4>(md % 12);
  } else if (inter->hdr.type == INTERVAL_KIND_DS) {
    // Every month of difference counts as 31 days.
    const std::int64_t rem = sd % 86400;
    inter->slot[QWZ_IV_DAY] = static_cast<sb4>(sd / 86400 + md * 31);
    inter->slot[QWZ_IV_HOUR] = static_cast<sb4>(rem / 3600);
    inter->slot[QWZ_IV_MINUTE] = static_cast<sb4>((rem % 3600) / 60);
    inter->slot[QWZ_IV_SECOND] = static_cast<sb4>(rem % 60);
    inter->slot[QWZ_IV_FRACTION] = static_cast<sb4>(fd);
  }
  ub4 flags = 0;
  const sword r = qwz::nested_interval_check(hndl, errhp, inter, &flags);
  if (r != 0 || flags != 0) {
    _QWZSetIntervalErrorMsg(ERRSRC_DRIVER, KIND_INTERVAL_INVALID, KIND_INTERVAL_INVALID, 3, errhp, "");
    return QWZ_ERROR;
  }
  return 0;
}

QWZDateTime *qwz_datetime_2_utc(QWZError *errhp, QWZDateTime *datetime) {
  if (!errhp || !datetime) return nullptr;
  QWZEnv *env = qwz_handle_env(datetime);
  QWZDateTime *copy = qwz_datetime_descriptor_alloc(env, datetime->hdr.type);
  if (!copy) return nullptr;
  if (utc_copy(env, errhp, datetime, copy) != 0) {
    _QWZDateTimeDescriptorFree(copy);
    return nullptr;
  }
  QWZInterval *shift = _QWZIntervalDescriptorAlloc(env, INTERVAL_KIND_DS);
  if (!shift) {
    _QWZDateTimeDescriptorFree(copy);
    return nullptr;
  }
  const sword r = utc_shift(env, errhp, datetime, copy, shift);
  _QWZIntervalDescriptorFree(shift);
  if (r != 0) {
    _QWZDateTimeDescriptorFree(copy);
    return nullptr;
  }
  return copy;
}

QWZ_API sword QWZDateTimeIntervalAdd(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                     QWZInterval *inter, QWZDateTime *outdatetime) {
  return qwz::run_frame(
      API_DATETIME_INTERVAL_ADD, errhp,
      [&]() -> Outcome {
        if (const sword r = check_operands(errhp, hndl, datetime, inter, outdatetime))
          return refuse(r);
        return done(qwz_datetime_add_interval(hndl, errhp, datetime, inter, outdatetime, 1));
      },
      hndl, errhp, datetime, inter, outdatetime);
}

QWZ_API sword QWZDateTimeIntervalSub(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                     QWZInterval *inter, QWZDateTime *outdatetime) {
  return qwz::run_frame(
      API_DATETIME_INTERVAL_SUB, errhp,
      [&]() -> Outcome {
        if (const sword r = check_operands(errhp, hndl, datetime, inter, outdatetime))
          return refuse(r);
        // The caller's interval is negated in place and left so.
        negate_interval(inter);
        return done(qwz_datetime_add_interval(hndl, errhp, datetime, inter, outdatetime, 0));
      },
      hndl, errhp, datetime, inter, outdatetime);
}

QWZ_API sword QWZDateTimeSubtract(void *hndl, QWZError *errhp, QWZDateTime *indate1,
                                  QWZDateTime *indate2, QWZInterval *inter) {
  return qwz::run_frame(
      API_DATETIME_SUBTRACT, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_datetime(errhp, indate1)) return refuse(r);
        if (const sword r = qwz::check_datetime(errhp, indate2)) return refuse(r);
        if (const sword r = qwz::check_interval(errhp, inter)) return refuse(r);
        if (indate1->hdr.type != indate2->hdr.type)
          return qwz::front_end_error(errhp, kNotComparable, kNotComparableNumber);
        if (!qwz::datetime_has_zone(indate1->hdr.type))
          return done(qwz_datetime_sub(hndl, errhp, indate1, indate2, inter));
        struct Args {
          void *hndl;
          QWZError *errhp;
          QWZInterval *inter;
        } args{hndl, errhp, inter};
        return done(qwz::with_utc_pair(
            errhp, indate1, indate2,
            [](void *c, QWZDateTime *u1, QWZDateTime *u2) {
              const Args *a = static_cast<const Args *>(c);
              return qwz_datetime_sub(a->hndl, a->errhp, u1, u2, a->inter);
            },
            &args));
      },
      hndl, errhp, indate1, indate2, inter);
}

}  // extern "C"
