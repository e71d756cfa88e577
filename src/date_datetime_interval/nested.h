// Public calls made from inside another public call: QWZDateTimeCheck,
// QWZIntervalCheck, QWZDateTimeAssign and QWZIntervalSetDaySecond.
//
// Each public function's checks and work live here once, as a `*_work`
// routine that returns an Outcome; the public function runs it inside
// run_frame. A caller that needs one of them inside its own call uses the
// `nested_*` form: with tracing on it makes the real public call (so the
// nested entry and exit records are written exactly as before); with tracing
// off it runs the same work inside run_untraced, which validates the error
// handle and clears its diagnostic just as the frame does, so every status,
// diagnostic and value comes out the same without the cost of the call.
#ifndef QWZ_DDI_NESTED_H
#define QWZ_DDI_NESTED_H

#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/interval.h"
#include "errors/errors.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

namespace qwz {

// The frame of a public call made with tracing off: the error handle's test
// and the clearing of its diagnostic, then the work.
template <class Body>
inline sword run_untraced(QWZError *errhp, Body &&body) noexcept {
  const sword v = qwz_handle_check(errhp, QWZ_HTYPE_ERROR);
  if (v != 0) [[unlikely]] return v;
  clear_diagnostic(errhp);
  return body().status;
}

// An interval descriptor of exactly this kind, else "Invalid handle." and the
// validator's result.
inline sword check_interval_kind(QWZError *errhp, const QWZInterval *iv, ub4 kind) {
  const sword r = qwz_handle_check(iv, kind);
  if (r != 0) [[unlikely]] _QWZSetFrontEndErrorHandle(errhp, kInvalidHandleText, kInvalidHandleNumber);
  return r;
}

// ---- QWZDateTimeCheck ----------------------------------------------------------
inline Outcome datetime_check_work(void *hndl, QWZError *errhp, const QWZDateTime *date,
                                   ub4 *valid) {
  if (const sword r = check_context(errhp, hndl)) return refuse(r);
  if (const sword r = check_datetime_param(errhp, date, 3)) return refuse(r);
  if (!valid) return datetime_error(errhp, KIND_NULL_PARAM, 2, 4);
  // An invalid value is reported through the flags only.
  *valid = datetime_flags(date);
  return done(0);
}
inline sword nested_datetime_check(void *hndl, QWZError *errhp, const QWZDateTime *date,
                                   ub4 *valid) {
  if (qwz_trace_flag) [[unlikely]] return QWZDateTimeCheck(hndl, errhp, date, valid);
  return run_untraced(errhp, [&] { return datetime_check_work(hndl, errhp, date, valid); });
}

// The same check for a caller that has already, in its own call, passed the
// error handle, the context handle and this descriptor through the same
// tests, and has written no diagnostic since its frame cleared it. With
// tracing off those tests would pass again and the clearing would find
// nothing to clear, so the check comes down to the flags; with tracing on
// it is the real call, for its records.
inline sword nested_datetime_check_checked(void *hndl, QWZError *errhp, const QWZDateTime *date,
                                           ub4 *valid) {
  if (qwz_trace_flag) [[unlikely]] return QWZDateTimeCheck(hndl, errhp, date, valid);
  *valid = datetime_flags(date);
  return 0;
}

// ---- QWZDateTimeAssign ---------------------------------------------------------
inline Outcome datetime_assign_work(void *hndl, QWZError *errhp, const QWZDateTime *from,
                                    QWZDateTime *to) {
  if (const sword r = check_context(errhp, hndl)) return refuse(r);
  // Either descriptor failing prints parameter 4.
  if (const sword r = check_datetime_param(errhp, from, 4, 2)) return refuse(r);
  if (const sword r = check_datetime_param(errhp, to, 4, 2)) return refuse(r);
  if (from->hdr.type != to->hdr.type) return datetime_error(errhp, KIND_TYPE_DIFF, 3, 4);
  ub4 flags = 0;
  if (const sword r = nested_datetime_check(hndl, errhp, from, &flags)) return refuse(r);
  if (flags != 0) return datetime_error(errhp, KIND_INVALID_VALUE, DETAIL_DATE_FORMAT, 3);
  to->year = from->year;
  to->month = from->month;
  to->day = from->day;
  to->hour = from->hour;
  to->minute = from->minute;
  to->second = from->second;
  to->fraction = from->fraction;
  to->tz_hour = from->tz_hour;
  to->tz_minute = from->tz_minute;
  return done(0);
}
inline sword nested_datetime_assign(void *hndl, QWZError *errhp, const QWZDateTime *from,
                                    QWZDateTime *to) {
  if (qwz_trace_flag) [[unlikely]] return QWZDateTimeAssign(hndl, errhp, from, to);
  return run_untraced(errhp, [&] { return datetime_assign_work(hndl, errhp, from, to); });
}

// ---- QWZIntervalCheck ----------------------------------------------------------
inline Outcome interval_check_work(void *hndl, QWZError *errhp, const QWZInterval *interval,
                                   ub4 *valid) {
  if (const sword r = check_context(errhp, hndl)) return refuse(r);
  if (const sword r = check_interval(errhp, interval)) return refuse(r);
  if (!valid) return interval_error(errhp, KIND_NULL_PARAM, 2, 4);
  // An invalid value is reported through the flags only.
  *valid = 0;
  *valid |= interval_flags(interval);
  return done(0);
}
inline sword nested_interval_check(void *hndl, QWZError *errhp, const QWZInterval *interval,
                                   ub4 *valid) {
  if (qwz_trace_flag) [[unlikely]] return QWZIntervalCheck(hndl, errhp, interval, valid);
  return run_untraced(errhp, [&] { return interval_check_work(hndl, errhp, interval, valid); });
}

// ---- QWZIntervalSetDaySecond ---------------------------------------------------
inline Outcome interval_set_day_second_work(void *hndl, QWZError *errhp, sb4 dy, sb4 hr, sb4 mm,
                                            sb4 ss, sb4 fsec, QWZInterval *result) {
  if (const sword r = check_context(errhp, hndl)) return refuse(r);
  if (const sword r = check_interval_kind(errhp, result, INTERVAL_KIND_DS)) return refuse(r);
  result->slot[QWZ_IV_DAY] = dy;
  result->slot[QWZ_IV_HOUR] = hr;
  result->slot[QWZ_IV_MINUTE] = mm;
  result->slot[QWZ_IV_SECOND] = ss;
  result->slot[QWZ_IV_FRACTION] = fsec;
  return done(0);
}
inline sword nested_interval_set_day_second(void *hndl, QWZError *errhp, sb4 dy, sb4 hr, sb4 mm,
                                            sb4 ss, sb4 fsec, QWZInterval *result) {
  if (qwz_trace_flag) [[unlikely]]
    return QWZIntervalSetDaySecond(hndl, errhp, dy, hr, mm, ss, fsec, result);
  return run_untraced(errhp, [&] {
    return interval_set_day_second_work(hndl, errhp, dy, hr, mm, ss, fsec, result);
  });
}

// ---- temporaries on the stack ----------------------------------------------------
// A datetime or interval descriptor on the caller's stack, for the length of
// one call: its header carries the live marker, the type and the owning
// environment, so the nested checks accept it exactly as they accept a
// descriptor from the pool, and its value fields start at 0 as an allocated
// descriptor's do. It is on no environment's list, and it is marked dead
// again when it goes out of scope.
template <class T>
struct ScopedDescriptor {
  T d{};
  ScopedDescriptor(QWZEnv *env, ub2 type) {
    d.hdr.live = QWZ_LIVE_MARK;
    d.hdr.type = type;
    d.hdr.env = env;
  }
  ~ScopedDescriptor() { *static_cast<volatile ub4 *>(&d.hdr.live) = QWZ_DEAD_MARK; }
  ScopedDescriptor(const ScopedDescriptor &) = delete;
  ScopedDescriptor &operator=(const ScopedDescriptor &) = delete;
  T *get() { return &d; }
};

}  // namespace qwz

#endif  // QWZ_DDI_NESTED_H
