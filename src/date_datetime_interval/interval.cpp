// Interval descriptors: the normaliser, setting and reading fields, the
// validity check and the checked copy, comparison, addition and subtraction.
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/interval.h"
#include "date_datetime_interval/nested.h"
#include "errors/errors.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

namespace {

using qwz::done;
using qwz::front_end_error;
using qwz::interval_error;
using qwz::interval_invalid;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_INTERVAL_SET_YEAR_MONTH = 150;
constexpr ub4 API_INTERVAL_SET_DAY_SECOND = 151;
constexpr ub4 API_INTERVAL_GET_YEAR_MONTH = 152;
constexpr ub4 API_INTERVAL_GET_DAY_SECOND = 153;
constexpr ub4 API_INTERVAL_CHECK = 154;
constexpr ub4 API_INTERVAL_ASSIGN = 155;
constexpr ub4 API_INTERVAL_COMPARE = 156;
constexpr ub4 API_INTERVAL_SUBTRACT = 158;
constexpr ub4 API_INTERVAL_ADD = 159;

// Detail values that say which NULL check fired.
constexpr sb4 kResultPtr = 3;
constexpr sb4 kResultDescriptor = 24;
// Detail passed with the interval-is-invalid, type-invalid and type-diff
// diagnostics.
constexpr sb4 kInvalidDetail = 25;
constexpr sb4 kTypeDiffDetail = 3;

constexpr sb4 kValueAddressNumber = 800036;
constexpr const char kValueAddressText[] = "the value address could not be null.";

// A field's accepted magnitude per flag; the leading field has none.
struct FieldLimit {
  ub2 kind;
  int slot;
  sb4 limit;  // valid when -limit <= value <= limit
  ub4 flag;
};

constexpr FieldLimit kFieldLimits[] = {
    {INTERVAL_KIND_YM, QWZ_IV_MONTH, 11, INTERVAL_INVALID_MONTH},
    {INTERVAL_KIND_DS, QWZ_IV_HOUR, 23, INTERVAL_INVALID_HOUR},
    {INTERVAL_KIND_DS, QWZ_IV_MINUTE, 59, INTERVAL_INVALID_MINUTE},
    {INTERVAL_KIND_DS, QWZ_IV_SECOND, 59, INTERVAL_INVALID_SECOND},
    {INTERVAL_KIND_DS, QWZ_IV_FRACTION, QWZ_FRACTION_PER_SECOND - 1, INTERVAL_INVALID_FRACTION},
};

// The checks QWZIntervalAdd and QWZIntervalSubtract share, in their order:
// done(0) when all pass, else the refusal.
Outcome check_sum_operands(void *hndl, QWZError *errhp, const QWZInterval *a,
                           const QWZInterval *b, const QWZInterval *result) {
  if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
  if (const sword r = qwz::check_interval(errhp, a)) return refuse(r);
  if (const sword r = qwz::check_interval(errhp, b)) return refuse(r);
  if (const sword r = qwz::check_interval(errhp, result)) return refuse(r);
  // Already refused by the validator above; kept in this place all the same.
  if (!result) return interval_error(errhp, KIND_NULL_PARAM, kResultDescriptor, 5);
  if (interval_invalid(hndl, errhp, a))
    return interval_error(errhp, KIND_INTERVAL_INVALID, kInvalidDetail, 3);
  if (interval_invalid(hndl, errhp, b))
    return interval_error(errhp, KIND_INTERVAL_INVALID, kInvalidDetail, 4);
  if (a->hdr.type != b->hdr.type) return interval_error(errhp, KIND_TYPE_DIFF, kTypeDiffDetail, 4);
  if (result->hdr.type != a->hdr.type)
    return interval_error(errhp, KIND_TYPE_INVALID, kInvalidDetail, 3);
  return done(0);
}

// The work of QWZIntervalAdd and QWZIntervalSubtract: a failed sum returns
// its status without the exit trace.
Outcome sum(const QWZInterval *a, const QWZInterval *b, QWZInterval *result, QWZError *errhp) {
  const sword r = qwz_interval_add(a, b, result, errhp);
  return r != 0 ? refuse(r) : done(0);
}

}  // namespace

namespace qwz {

bool interval_invalid(void *hndl, QWZError *errhp, const QWZInterval *iv) {
  ub4 flags = 0;
  return nested_interval_check(hndl, errhp, iv, &flags) != 0 || flags != 0;
}

ub4 interval_flags(const QWZInterval *iv) {
  ub4 flags = 0;
  for (const FieldLimit &f : kFieldLimits) {
    if (f.kind != iv->hdr.type) continue;
    const sb4 v = iv->slot[f.slot];
    if (v < -f.limit || v > f.limit) flags |= f.flag;
  }
  return flags;
}

}  // namespace qwz

extern "C" {

sword qwz_month_or_second_to_internal(std::int64_t months, std::int64_t seconds, sb4 fraction,
                                      QWZInterval *dest) {
  if (dest == nullptr) return -1;
  // Narrowing int64 -> int32 keeps the low 32 bits (two's complement).
  if (dest->hdr.type == INTERVAL_KIND_YM) {
    dest->slot[QWZ_IV_YEAR] = static_cast<sb4>(months / QWZ_MONTHS_PER_YEAR);
    dest->slot[QWZ_IV_MONTH] = static_cast<sb4>(months % QWZ_MONTHS_PER_YEAR);
  } else if (dest->hdr.type == INTERVAL_KIND_DS) {
    const std::int64_t in_day = seconds % QWZ_SECONDS_PER_DAY;
    const std::int64_t in_hour = in_day % QWZ_SECONDS_PER_HOUR;
    dest->slot[QWZ_IV_DAY] = static_cast<sb4>(seconds / QWZ_SECONDS_PER_DAY);
    dest->slot[QWZ_IV_HOUR] = static_cast<sb4>(in_day / QWZ_SECONDS_PER_HOUR);
    dest->slot[QWZ_IV_MINUTE] = static_cast<sb4>(in_hour / QWZ_SECONDS_PER_MINUTE);
    dest->slot[QWZ_IV_SECOND] = static_cast<sb4>(in_hour % QWZ_SECONDS_PER_MINUTE);
    dest->slot[QWZ_IV_FRACTION] = fraction;
  }
  return 0;
}

sword qwz_interval_add(const QWZInterval *a, const QWZInterval *b, QWZInterval *result,
                       QWZError *errhp) {
  if (!a || !b || !result || !errhp) return -1;
  // Both operands are read completely before the normaliser writes, so the
  // result may be either of them.
  if (a->hdr.type == INTERVAL_KIND_YM) {
    const std::int64_t months = qwz::interval_total_months(b) + qwz::interval_total_months(a);
    const sword r = qwz_month_or_second_to_internal(months, 0, 0, result);
    if (r != 0) interval_error(errhp, KIND_GET_FIELDS, DETAIL_YEAR_MONTH, 2);
    return r;
  }
  if (a->hdr.type == INTERVAL_KIND_DS) {
    std::int64_t total = qwz::interval_total_seconds(a) + qwz::interval_total_seconds(b);
    // A 32-bit sum as the fields are; it wraps rather than overflows.
    sb4 frac = qwz::wrap_add(a->slot[QWZ_IV_FRACTION], b->slot[QWZ_IV_FRACTION]);
    // Whole seconds out of the fraction; both keep the fraction's sign.
    if (frac > QWZ_FRACTION_PER_SECOND - 1 || frac < -(QWZ_FRACTION_PER_SECOND - 1)) {
      total += frac / QWZ_FRACTION_PER_SECOND;
      frac %= QWZ_FRACTION_PER_SECOND;
    }
    // Give the fraction the sign of the seconds (a zero total keeps it as is).
    if (total > 0 && frac < 0) {
      total -= 1;
      frac += QWZ_FRACTION_PER_SECOND;
    } else if (total < 0 && frac > 0) {
      total += 1;
      frac -= QWZ_FRACTION_PER_SECOND;
    }
    const sword r = qwz_month_or_second_to_internal(0, total, frac, result);
    if (r != 0) interval_error(errhp, KIND_GET_FIELDS, DETAIL_DAY_SECOND, 2);
    return r;
  }
  return 0;
}

QWZ_API sword QWZIntervalSetYearMonth(void *hndl, QWZError *errhp, sb4 yr, sb4 mnth,
                                      QWZInterval *result) {
  return qwz::run_frame(
      API_INTERVAL_SET_YEAR_MONTH, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_interval_kind(errhp, result, INTERVAL_KIND_YM)) return refuse(r);
        // Stored as given: 13 months stays 13 months.
        result->slot[QWZ_IV_YEAR] = yr;
        result->slot[QWZ_IV_MONTH] = mnth;
        return done(0);
      },
      hndl, errhp, yr, mnth, result);
}

QWZ_API sword QWZIntervalSetDaySecond(void *hndl, QWZError *errhp, sb4 dy, sb4 hr, sb4 mm,
                                      sb4 ss, sb4 fsec, QWZInterval *result) {
  return qwz::run_frame(
      API_INTERVAL_SET_DAY_SECOND, errhp,
      [&] {
        return qwz::interval_set_day_second_work(hndl, errhp, dy, hr, mm, ss, fsec, result);
      },
      hndl, errhp, dy, hr, mm, ss, fsec, result);
}

QWZ_API sword QWZIntervalGetYearMonth(void *hndl, QWZError *errhp, sb4 *yr, sb4 *mnth,
                                      const QWZInterval *interval) {
  return qwz::run_frame(
      API_INTERVAL_GET_YEAR_MONTH, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_interval_kind(errhp, interval, INTERVAL_KIND_YM)) return refuse(r);
        if (!yr || !mnth) return front_end_error(errhp, kValueAddressText, kValueAddressNumber);
        *yr = interval->slot[QWZ_IV_YEAR];
        *mnth = interval->slot[QWZ_IV_MONTH];
        return done(0);
      },
      // The interval is deliberately left out of this function's trace,
      // although its record has a line for it.
      hndl, errhp, qwz::or_null_text(yr), qwz::or_null_text(mnth));
}

QWZ_API sword QWZIntervalGetDaySecond(void *hndl, QWZError *errhp, sb4 *dy, sb4 *hr, sb4 *mm,
                                      sb4 *ss, sb4 *fsec, const QWZInterval *interval) {
  return qwz::run_frame(
      API_INTERVAL_GET_DAY_SECOND, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_interval_kind(errhp, interval, INTERVAL_KIND_DS)) return refuse(r);
        if (!dy || !hr || !mm || !ss || !fsec)
          return front_end_error(errhp, kValueAddressText, kValueAddressNumber);
        *dy = interval->slot[QWZ_IV_DAY];
        *hr = interval->slot[QWZ_IV_HOUR];
        *mm = interval->slot[QWZ_IV_MINUTE];
        *ss = interval->slot[QWZ_IV_SECOND];
        *fsec = interval->slot[QWZ_IV_FRACTION];
        return done(0);
      },
      hndl, errhp, qwz::or_null_text(dy), qwz::or_null_text(hr), qwz::or_null_text(mm),
      qwz::or_null_text(ss), qwz::or_null_text(fsec), interval);
}

QWZ_API sword QWZIntervalCheck(void *hndl, QWZError *errhp, const QWZInterval *interval,
                               ub4 *valid) {
  return qwz::run_frame(
      API_INTERVAL_CHECK, errhp,
      [&] { return qwz::interval_check_work(hndl, errhp, interval, valid); },
      hndl, errhp, interval, qwz::or_null_text(valid));
}

QWZ_API sword QWZIntervalAssign(void *hndl, QWZError *errhp, const QWZInterval *ininter,
                                QWZInterval *outinter) {
  return qwz::run_frame(
      API_INTERVAL_ASSIGN, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_interval(errhp, ininter)) return refuse(r);
        if (const sword r = qwz::check_interval(errhp, outinter)) return refuse(r);
        // The inner check's own diagnostic, if any, is replaced by ours.
        if (interval_invalid(hndl, errhp, ininter))
          return interval_error(errhp, KIND_INTERVAL_INVALID, kInvalidDetail, 3);
        if (ininter->hdr.type != outinter->hdr.type)
          return interval_error(errhp, KIND_TYPE_DIFF, kTypeDiffDetail, 4);
        const int n = qwz::interval_slot_count(ininter->hdr.type);
        for (int i = 0; i < n; ++i) outinter->slot[i] = ininter->slot[i];
        return done(0);
      },
      hndl, errhp, ininter, outinter);
}

QWZ_API sword QWZIntervalCompare(void *hndl, QWZError *errhp, const QWZInterval *inter1,
                                 const QWZInterval *inter2, sword *result) {
  return qwz::run_frame(
      API_INTERVAL_COMPARE, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_interval(errhp, inter1)) return refuse(r);
        if (const sword r = qwz::check_interval(errhp, inter2)) return refuse(r);
        // A NULL result is reported, yet the call answers 0.
        if (!result) {
          interval_error(errhp, KIND_NULL_PARAM, kResultPtr, 5);
          return refuse(0);
        }
        // Either operand failing the check prints parameter 3.
        if (interval_invalid(hndl, errhp, inter1) || interval_invalid(hndl, errhp, inter2))
          return interval_error(errhp, KIND_INTERVAL_INVALID, kInvalidDetail, 3);
        if (inter1->hdr.type != inter2->hdr.type)
          return interval_error(errhp, KIND_TYPE_DIFF, kTypeDiffDetail, 4);
        // Field by field in slot order, with no normalisation first.
        *result = 0;
        const int n = qwz::interval_slot_count(inter1->hdr.type);
        for (int i = 0; i < n; ++i) {
          if (inter1->slot[i] == inter2->slot[i]) continue;
          *result = inter1->slot[i] > inter2->slot[i] ? 1 : -1;
          break;
        }
        return done(0);
      },
      // Only the getters and the check trace a NULL output as "(null)"; the
      // result pointer here is traced as it is.
      hndl, errhp, inter1, inter2, result);
}

QWZ_API sword QWZIntervalAdd(void *hndl, QWZError *errhp, QWZInterval *addend1,
                             QWZInterval *addend2, QWZInterval *result) {
  return qwz::run_frame(
      API_INTERVAL_ADD, errhp,
      [&]() -> Outcome {
        const Outcome checked = check_sum_operands(hndl, errhp, addend1, addend2, result);
        if (!checked.reached_work) return checked;
        return sum(addend1, addend2, result, errhp);
      },
      hndl, errhp, addend1, addend2, result);
}

QWZ_API sword QWZIntervalSubtract(void *hndl, QWZError *errhp, QWZInterval *minuend,
                                  QWZInterval *subtrahend, QWZInterval *result) {
  return qwz::run_frame(
      API_INTERVAL_SUBTRACT, errhp,
      [&]() -> Outcome {
        const Outcome checked = check_sum_operands(hndl, errhp, minuend, subtrahend, result);
        if (!checked.reached_work) return checked;
        // minuend + (-subtrahend). The negated copy lives on the stack; only
        // its kind and value slots are read. It is complete before the sum
        // writes, so result may be the subtrahend.
        QWZInterval negated{};
        negated.hdr.type = subtrahend->hdr.type;
        const int n = qwz::interval_slot_count(subtrahend->hdr.type);
        for (int i = 0; i < n; ++i) negated.slot[i] = qwz::wrap_negate(subtrahend->slot[i]);
        return sum(minuend, &negated, result, errhp);
      },
      hndl, errhp, minuend, subtrahend, result);
}

}  // extern "C"
