// The module's internal routines, for the library's other units and for the
// tests, together with the supporting units' declarations the module calls.
#ifndef QWZ_DDI_INTERNAL_H
#define QWZ_DDI_INTERNAL_H

#include "date_datetime_interval/calendar.h"
#include "date_datetime_interval/datetime.h"
#include "date_datetime_interval/datetime_arith.h"
#include "date_datetime_interval/datetime_array.h"
#include "date_datetime_interval/datetime_compare.h"
#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/format_model.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/interval.h"
#include "date_datetime_interval/interval_number.h"
#include "date_datetime_interval/interval_text.h"
#include "date_datetime_interval/text_in.h"
#include "date_datetime_interval/text_out.h"
#include "errors/errors.h"
#include "handles/handles.h"
#include "number/number.h"
#include "runtime/runtime.h"
#include "trace/trace.h"

#endif  // QWZ_DDI_INTERNAL_H
