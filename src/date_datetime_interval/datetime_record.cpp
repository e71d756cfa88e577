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

}  // namespace

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
