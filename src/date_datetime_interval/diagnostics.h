// The three family error setters and the selector values they take.
#ifndef QWZ_DDI_DIAGNOSTICS_H
#define QWZ_DDI_DIAGNOSTICS_H

#include "handles/handles.h"

// error_source: the only source the setters act on.
inline constexpr sb2 ERRSRC_DRIVER = 2;

// error_kind
inline constexpr sb4 KIND_NULL_PARAM = 0;
inline constexpr sb4 KIND_DATE_FORMAT = 4;
inline constexpr sb4 KIND_FORMAT_STRING = 5;
inline constexpr sb4 KIND_FORMAT_OR_DATE = 6;
inline constexpr sb4 KIND_INVALID_VALUE = 7;
inline constexpr sb4 KIND_BUF_TOO_SMALL = 9;
inline constexpr sb4 KIND_TYPE_INVALID = 19;
inline constexpr sb4 KIND_TYPE_DIFF = 20;
inline constexpr sb4 KIND_GET_FIELDS = 21;
inline constexpr sb4 KIND_INTERVAL_INVALID = 25;

// error_detail
inline constexpr sb4 DETAIL_NONE = -1;
inline constexpr sb4 DETAIL_WEEK_FORMAT = 10;
inline constexpr sb4 DETAIL_PARAM_INVALID = 17;
inline constexpr sb4 DETAIL_DATE_FORMAT = 18;
inline constexpr sb4 DETAIL_YEAR_MONTH = 22;
inline constexpr sb4 DETAIL_DAY_SECOND = 23;

// param_no where no parameter applies.
inline constexpr ub2 PARAM_NONE = 65535;

extern "C" {

// Each setter picks its message, state and number by (error_kind,
// error_detail), formats param_no into "%d", and writes them into errhp.
// error_source other than 2 does nothing. The sixth argument is not read.
// All return 0.
QWZ_INTERNAL sword _QWZSetDateErrorMsg(sb2 error_source, sb4 error_kind, sb4 error_detail,
                                       ub2 param_no, QWZError *errhp, const char *unused);
QWZ_INTERNAL sword _QWZSetDateTimeErrorMsg(sb2 error_source, sb4 error_kind, sb4 error_detail,
                                           ub2 param_no, QWZError *errhp, const char *unused);
QWZ_INTERNAL sword _QWZSetIntervalErrorMsg(sb2 error_source, sb4 error_kind, sb4 error_detail,
                                           ub2 param_no, QWZError *errhp, const char *unused);

}  // extern "C"

#endif  // QWZ_DDI_DIAGNOSTICS_H
