// Call tracing: the switch, the entry point every public call goes through,
// and the table of record formats indexed by API id.
#ifndef QWZ_TRACE_TRACE_H
#define QWZ_TRACE_TRACE_H

#include "handles/handles.h"

#include <string>

inline constexpr int QWZ_TRACE_ROWS = 186;
inline constexpr int QWZ_TRACE_ROW_BYTES = 350;

// Row `api_id` is the format of that API's trace record: "<Name>\n" and one
// line per traced argument ("\t<type>     \t<conversion>"), NUL-filled to 350.
QWZ_INTERNAL extern const char (&api_trace_fmt)[QWZ_TRACE_ROWS][QWZ_TRACE_ROW_BYTES];

extern "C" {

// Formats row `api_id` with the traced arguments (one machine word each, one
// per conversion of the row) and hands it to the hook, returning the hook's
// result; without a hook writes a timestamped record to the trace file (or
// stderr) and returns 0.
QWZ_INTERNAL sword qwz_trace(void *errhp, sword status, ub4 direction, ub4 api_id, ...);

}  // extern "C"

// The text qwz_trace builds for a row and its argument words (for tests and
// the default sink).
QWZ_INTERNAL std::string qwz_trace_format_row(ub4 api_id, const unsigned long *words,
                                              std::size_t nwords);

#endif  // QWZ_TRACE_TRACE_H
