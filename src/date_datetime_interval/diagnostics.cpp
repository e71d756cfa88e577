// The family error setters. Each is a table of rows tested one after another
// as independent tests (not a chain): every matching row writes its state and
// number, and its message when it has one. The texts are the system's own,
// byte for byte, including codes that differ from the stored numbers.
#include "date_datetime_interval/diagnostics.h"

#include <cstdio>
#include <cstring>

namespace {

enum class Match { Any, In, NotIn };

struct SetterRow {
  sb4 kind;
  Match match;
  sb4 details[3];       // for In / NotIn; unused entries repeat a listed value
  const char *message;  // nullptr: the message text is left as it is
  const char *state;
  sb4 number;
};

constexpr const char kNullParam[] = "ERROR: [QWZ-21560][QWZ Driver].parameter %d is NULL\n";
constexpr const char kBufTooSmall[] = "ERROR: [QWZ-11104][QWZ Driver]. buf is too small \n";
constexpr const char kTypeDiff[] = "ERROR: [QWZ-21405][QWZ Driver].type is diff\n";

constexpr SetterRow kDateRows[] = {
    {0, Match::In, {1, 2, 3}, kNullParam, "21560", 21560},
    {0, Match::NotIn, {1, 2, 3}, nullptr, "21560", 21560},
    {0, Match::In, {10, 10, 10}, "ERROR: [QWZ-1846][QWZ Driver].week format is invalid\n", "1846", 1846},
    {4, Match::Any, {}, "ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n", "22007", 11104},
    {5, Match::Any, {}, "ERROR: [QWZ-11104][QWZ Driver].format string is invalid\n", "22007", 11104},
    {6, Match::Any, {}, "ERROR: [QWZ-11104][QWZ Driver]. format or date string is invalid\n", "22007", 11104},
    {9, Match::Any, {}, kBufTooSmall, "01877", 11104},
};

constexpr SetterRow kDateTimeRows[] = {
    {0, Match::In, {8, 2, 3}, kNullParam, "21560", 21560},
    {0, Match::NotIn, {8, 2, 3}, nullptr, "21560", 21560},
    {7, Match::In, {17, 17, 17}, "ERROR: [QWZ-22007][QWZ Driver].parameter %d is INVALID\n", "22007", 22007},
    {7, Match::In, {18, 18, 18}, "ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n", "22007", 22007},
    {7, Match::NotIn, {17, 18, 18}, nullptr, "22007", 22007},
    {20, Match::Any, {}, kTypeDiff, "22008", 11105},
};

constexpr SetterRow kIntervalRows[] = {
    {0, Match::In, {24, 2, 3}, kNullParam, "21560", 21560},
    {0, Match::NotIn, {24, 2, 3}, nullptr, "21560", 21560},
    {0, Match::In, {10, 10, 10}, "ERROR: [QWZ-1846][QWZ Driver].week format is invalid %d \n", "1846", 1846},
    {25, Match::Any, {}, "ERROR: [QWZ-11104][QWZ Driver].interval is invalid %d \n", "22007", 11104},
    {5, Match::Any, {}, "ERROR: [QWZ-11104][QWZ Driver].format string is invalid %d \n", "22007", 11104},
    {19, Match::Any, {}, "ERROR: [QWZ-11105][QWZ Driver].type is invalid \n", "22008", 11105},
    {20, Match::Any, {}, kTypeDiff, "22008", 11105},
    {21, Match::In, {22, 22, 22}, "ERROR: [QWZ-11107][QWZ Driver] get year-month fun err\n", "22009", 11106},
    {21, Match::In, {23, 23, 23}, "ERROR: [QWZ-11108][QWZ Driver] get day-second fun err\n", "22010", 11107},
    {9, Match::Any, {}, kBufTooSmall, "01877", 11104},
};

bool matches(const SetterRow &row, sb4 kind, sb4 detail) {
  if (row.kind != kind) return false;
  const bool listed = row.details[0] == detail || row.details[1] == detail || row.details[2] == detail;
  switch (row.match) {
    case Match::Any: return true;
    case Match::In: return listed;
    case Match::NotIn: return !listed;
  }
  return false;
}

template <std::size_t N>
sword apply(const SetterRow (&rows)[N], sb2 source, sb4 kind, sb4 detail, ub2 param_no,
            QWZError *errhp) {
  if (source != ERRSRC_DRIVER || errhp == nullptr) return 0;
  for (const SetterRow &row : rows) {
    if (!matches(row, kind, detail)) continue;
    if (row.message)
      std::snprintf(errhp->message, sizeof errhp->message, row.message, static_cast<int>(param_no));
    std::memcpy(errhp->state, row.state, std::strlen(row.state) + 1);
    errhp->number = row.number;
  }
  return 0;
}

}  // namespace

extern "C" {

sword _QWZSetDateErrorMsg(sb2 error_source, sb4 error_kind, sb4 error_detail, ub2 param_no,
                          QWZError *errhp, const char *) {
  return apply(kDateRows, error_source, error_kind, error_detail, param_no, errhp);
}

sword _QWZSetDateTimeErrorMsg(sb2 error_source, sb4 error_kind, sb4 error_detail, ub2 param_no,
                              QWZError *errhp, const char *) {
  return apply(kDateTimeRows, error_source, error_kind, error_detail, param_no, errhp);
}

sword _QWZSetIntervalErrorMsg(sb2 error_source, sb4 error_kind, sb4 error_detail, ub2 param_no,
                              QWZError *errhp, const char *) {
  return apply(kIntervalRows, error_source, error_kind, error_detail, param_no, errhp);
}

}  // extern "C"
