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

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

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
// A traced argument given as std::cref(x) is read at each trace call, so the
// exit record shows the value the body left in x (a clamped argument).
template <class T>
inline unsigned long trace_word(std::reference_wrapper<T> r) {
  return trace_word(r.get());
}

// The most conversions any row of the trace table has.
inline constexpr std::size_t kTraceWords = 12;

// qwz_trace takes one word per conversion of the row. A function whose trace
// leaves an argument out passes fewer words than its row has conversions;
// the words are therefore always handed over padded with zeros to
// kTraceWords, so a conversion with no argument of its own prints 0 instead
// of reading past the end of the variadic list.
template <std::size_t... I>
inline sword trace_words(QWZError *errhp, sword status, ub4 direction, ub4 api_id,
                         const unsigned long (&w)[kTraceWords], std::index_sequence<I...>) {
  return qwz_trace(errhp, status, direction, api_id, w[I]...);
}

template <class... Traced>
inline sword trace_call(QWZError *errhp, sword status, ub4 direction, ub4 api_id,
                        Traced... traced) {
  static_assert(sizeof...(Traced) <= kTraceWords, "more traced arguments than any row has");
  const unsigned long w[kTraceWords] = {trace_word(traced)...};
  return trace_words(errhp, status, direction, api_id, w, std::make_index_sequence<kTraceWords>{});
}

// The trace calls sit out of line, behind a branch on qwz_trace_flag that is
// predicted "off": with tracing off the frame costs the two flag reads, the
// inline test of the error handle and the test for a diagnostic to clear.
template <class... Traced>
[[gnu::noinline, gnu::cold]] sword trace_cold(QWZError *errhp, sword status, ub4 direction,
                                              ub4 api_id, Traced... traced) noexcept {
  return trace_call(errhp, status, direction, api_id, traced...);
}

// clear_err_msg, skipped when the error handle holds no diagnostic (then
// there is nothing for it to change).
inline void clear_diagnostic(QWZError *errhp) {
  if (errhp->number != 0 || errhp->message[0] != '\0' || errhp->state[0] != '\0')
    clear_err_msg(errhp);
}

template <class Body, class... Traced>
inline sword run_frame(ub4 api_id, QWZError *errhp, Body &&body, Traced... traced) noexcept {
  if (qwz_trace_flag) [[unlikely]] {
    const sword t = trace_cold(errhp, 0, 1, api_id, traced...);
    if (t != 0) return t;
  }
  const sword v = qwz_handle_check(errhp, QWZ_HTYPE_ERROR);
  if (v != 0) [[unlikely]] return v;
  clear_diagnostic(errhp);
  const Outcome out = body();
  if (!out.reached_work) return out.status;
  if (qwz_trace_flag) [[unlikely]] {
    const sword t = trace_cold(errhp, out.status, 0, api_id, traced...);
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
  if (qwz_handle_check(hndl, QWZ_HTYPE_ENV) == 0) [[likely]] return 0;
  const sword r = qwz_handle_check(hndl, QWZ_HTYPE_SESSION);
  if (r != 0) _QWZSetFrontEndErrorHandle(errhp, kInvalidHandleText, kInvalidHandleNumber);
  return r;
}

// Descriptor checks: 0, or the validator's result after "Invalid handle.".
inline sword check_datetime(QWZError *errhp, const void *d) {
  const sword r = qwz_datetime_handle_check(d);
  if (r != 0) [[unlikely]] _QWZSetFrontEndErrorHandle(errhp, kInvalidHandleText, kInvalidHandleNumber);
  return r;
}
// A datetime descriptor that several functions refuse through the datetime
// setter's NULL-parameter message (printed with param_no) rather than with
// "Invalid handle.": 0, or the validator's result. Detail 8 is the one those
// functions pass; QWZDateTimeAssign passes 2.
inline constexpr sb4 kDatetimeParamDetail = 8;
inline sword check_datetime_param(QWZError *errhp, const void *d, ub2 param_no,
                                  sb4 detail = kDatetimeParamDetail) {
  const sword r = qwz_datetime_handle_check(d);
  if (r != 0) [[unlikely]] _QWZSetDateTimeErrorMsg(ERRSRC_DRIVER, KIND_NULL_PARAM, detail, param_no, errhp, "");
  return r;
}
inline sword check_interval(QWZError *errhp, const void *d) {
  const sword r = qwz_interval_handle_check(d);
  if (r != 0) [[unlikely]] _QWZSetFrontEndErrorHandle(errhp, kInvalidHandleText, kInvalidHandleNumber);
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
