// The call frame every public function of the module runs in:
//   entry trace -> error handle (type 2) -> clear diagnostic -> the body's
//   checks and work -> exit trace (only when the body reached its work).
// The body returns an Outcome: refuse(status) for a failed check (no exit
// trace), done(status) for a call that did its work. Traced arguments are
// given once and widened to machine words for both trace calls; a function
// whose trace leaves an argument out simply passes fewer.
#ifndef QWZ_DDI_FRAME_H
#define QWZ_DDI_FRAME_H

#include "date_datetime_interval/diagnostics.h"
#include "errors/errors.h"
#include "handles/handles.h"
#include "trace/trace.h"

#include <type_traits>

namespace qwz {

struct Outcome {
  sword status;
  bool reached_work;
};
inline constexpr Outcome refuse(sword status) { return {status, false}; }
inline constexpr Outcome done(sword status) { return {status, true}; }

inline constexpr const char kNullText[] = "(null)";

// A traced pointer that prints as "(null)" when it is NULL.
inline const void *or_null_text(const void *p) { return p ? p : kNullText; }

template <class T>
inline unsigned long trace_word(T v) {
  if constexpr (std::is_pointer_v<T>)
    return reinterpret_cast<unsigned long>(v);
  else if constexpr (std::is_signed_v<T>)
    return static_cast<unsigned long>(static_cast<long>(v));
  else
    return static_cast<unsigned long>(v);
}

// One zero word follows the traced arguments: a function whose trace leaves
// an argument out then shows it as 0 in its record, instead of the trace unit
// reading past the arguments it was given.
template <class Body, class... Traced>
inline sword run_frame(ub4 api_id, QWZError *errhp, Body &&body, Traced... traced) noexcept {
  if (qwz_trace_flag) {
    const sword t = qwz_trace(errhp, 0, 1, api_id, trace_word(traced)..., 0UL);
    if (t != 0) return t;
  }
  const sword v = qwz_validate_handle(errhp, QWZ_HTYPE_ERROR);
  if (v != 0) return v;
  clear_err_msg(errhp);
  const Outcome out = body();
  if (!out.reached_work) return out.status;
  if (qwz_trace_flag) {
    const sword t = qwz_trace(errhp, out.status, 0, api_id, trace_word(traced)..., 0UL);
    if (t != 0) return t;
  }
  return out.status;
}

inline constexpr sb4 kInvalidHandleNumber = 800001;
inline constexpr const char kInvalidHandleText[] = "Invalid handle.";

// Context handle of the datetime and interval families: an environment
// (type 1), else a session (type 9). Returns 0, or the type-9 validator's
// result after writing "Invalid handle.".
inline sword check_context(QWZError *errhp, const void *hndl) {
  if (qwz_validate_handle(hndl, QWZ_HTYPE_ENV) == 0) return 0;
  const sword r = qwz_validate_handle(hndl, QWZ_HTYPE_SESSION);
  if (r != 0) _QWZSetFrontEndErrorHandle(errhp, kInvalidHandleText, kInvalidHandleNumber);
  return r;
}

// Descriptor checks: 0, or the validator's result after "Invalid handle.".
inline sword check_datetime(QWZError *errhp, const void *d) {
  const sword r = qwz_validate_datetime_handle(d);
  if (r != 0) _QWZSetFrontEndErrorHandle(errhp, kInvalidHandleText, kInvalidHandleNumber);
  return r;
}
inline sword check_interval(QWZError *errhp, const void *d) {
  const sword r = qwz_validate_interval_handle(d);
  if (r != 0) _QWZSetFrontEndErrorHandle(errhp, kInvalidHandleText, kInvalidHandleNumber);
  return r;
}

// Family failures: write the setter's diagnostic, refuse with -1.
inline Outcome date_error(QWZError *errhp, sb4 kind, sb4 detail, ub2 param_no) {
  _QWZSetDateErrorMsg(ERRSRC_DRIVER, kind, detail, param_no, errhp, "");
  return refuse(QWZ_ERROR);
}
inline Outcome datetime_error(QWZError *errhp, sb4 kind, sb4 detail, ub2 param_no) {
  _QWZSetDateTimeErrorMsg(ERRSRC_DRIVER, kind, detail, param_no, errhp, "");
  return refuse(QWZ_ERROR);
}
inline Outcome interval_error(QWZError *errhp, sb4 kind, sb4 detail, ub2 param_no) {
  _QWZSetIntervalErrorMsg(ERRSRC_DRIVER, kind, detail, param_no, errhp, "");
  return refuse(QWZ_ERROR);
}
inline Outcome front_end_error(QWZError *errhp, const char *message, sb4 number) {
  _QWZSetFrontEndErrorHandle(errhp, message, number);
  return refuse(QWZ_ERROR);
}

}  // namespace qwz

#endif  // QWZ_DDI_FRAME_H
