// Interval descriptors: the normaliser, setting and reading fields, the
// validity check and the checked copy, comparison, addition and subtraction.
#include "date_datetime_interval/internal.h"

namespace {

using qwz::done;
using qwz::front_end_error;
using qwz::interval_error;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_INTERVAL_SET_YEAR_MONTH = 150;
constexpr ub4 API_INTERVAL_SET_DAY_SECOND = 151;
constexpr ub4 API_INTERVAL_GET_YEAR_MONTH = 152;
constexpr ub4 API_INTERVAL_GET_DAY_SECOND = 153;
constexpr ub4 API_INTERVAL_CHECK = 154;
constexpr ub4 API_INTERVAL_ASSIGN = 155;

// Detail values that say which NULL check fired.
constexpr sb4 kFlagsPtr = 2;
// Detail passed with the interval-is-invalid and type-diff diagnostics.
constexpr sb4 kInvalidDetail = 25;
constexpr sb4 kTypeDiffDetail = 3;

constexpr sb4 kValueAddressNumber = 800036;
constexpr const char kValueAddressText[] = "the value address could not be null.";

// A descriptor of exactly this kind, else "Invalid handle." and the
// validator's result.
sword check_kind(QWZError *errhp, const QWZInterval *iv, ub4 kind) {
  const sword r = qwz_validate_handle(iv, kind);
  if (r != 0) _QWZSetFrontEndErrorHandle(errhp, qwz::kInvalidHandleText, qwz::kInvalidHandleNumber);
  return r;
}

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

}  // namespace

namespace qwz {

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

QWZ_API sword QWZIntervalSetYearMonth(void *hndl, QWZError *errhp, sb4 yr, sb4 mnth,
                                      QWZInterval *result) {
  return qwz::run_frame(
      API_INTERVAL_SET_YEAR_MONTH, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = check_kind(errhp, result, INTERVAL_KIND_YM)) return refuse(r);
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
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = check_kind(errhp, result, INTERVAL_KIND_DS)) return refuse(r);
        result->slot[QWZ_IV_DAY] = dy;
        result->slot[QWZ_IV_HOUR] = hr;
        result->slot[QWZ_IV_MINUTE] = mm;
        result->slot[QWZ_IV_SECOND] = ss;
        result->slot[QWZ_IV_FRACTION] = fsec;
        return done(0);
      },
      hndl, errhp, dy, hr, mm, ss, fsec, result);
}

QWZ_API sword QWZIntervalGetYearMonth(void *hndl, QWZError *errhp, sb4 *yr, sb4 *mnth,
                                      const QWZInterval *interval) {
  return qwz::run_frame(
      API_INTERVAL_GET_YEAR_MONTH, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = check_kind(errhp, interval, INTERVAL_KIND_YM)) return refuse(r);
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
        if (const sword r = check_kind(errhp, interval, INTERVAL_KIND_DS)) return refuse(r);
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
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_interval(errhp, interval)) return refuse(r);
        if (!valid) return interval_error(errhp, KIND_NULL_PARAM, kFlagsPtr, 4);
        // An invalid value is reported through the flags only.
        *valid = 0;
        *valid |= qwz::interval_flags(interval);
        return done(0);
      },
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
        ub4 flags = 0;
        if (QWZIntervalCheck(hndl, errhp, ininter, &flags) != 0 || flags != 0)
          return interval_error(errhp, KIND_INTERVAL_INVALID, kInvalidDetail, 3);
        if (ininter->hdr.type != outinter->hdr.type)
          return interval_error(errhp, KIND_TYPE_DIFF, kTypeDiffDetail, 4);
        const int n = qwz::interval_slot_count(ininter->hdr.type);
        for (int i = 0; i < n; ++i) outinter->slot[i] = ininter->slot[i];
        return done(0);
      },
      hndl, errhp, ininter, outinter);
}

}  // extern "C"
