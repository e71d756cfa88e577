// The public date family (QWZDate*), apart from the text conversions: each
// runs the frame with its error handle as the first traced argument, checks
// its pointers and input dates, and leaves the calendar work to calendar.cpp.
#include "date_datetime_interval/calendar.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/frame.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

#include <cstring>

namespace {

using qwz::date_error;
using qwz::done;
using qwz::Outcome;

constexpr ub4 API_DATE_ADD_DAYS = 128;
constexpr ub4 API_DATE_ADD_MONTHS = 129;
constexpr ub4 API_DATE_ASSIGN = 130;
constexpr ub4 API_DATE_CHECK = 131;
constexpr ub4 API_DATE_COMPARE = 132;
constexpr ub4 API_DATE_DAYS_BETWEEN = 133;
constexpr ub4 API_DATE_LAST_DAY = 135;
constexpr ub4 API_DATE_NEXT_DAY = 136;
constexpr ub4 API_DATE_SYS_DATE = 137;
constexpr ub4 API_DATE_ZONE_TO_ZONE = 185;

// Detail values that say which NULL check fired.
constexpr sb4 kInputPtr = 1;
constexpr sb4 kFlagsPtr = 2;
constexpr sb4 kResultPtr = 3;

bool date_invalid(QWZError *, const QWZDate *date) { return qwz::date_flags(*date) != 0; }

Outcome invalid_date(QWZError *errhp) {
  return date_error(errhp, KIND_DATE_FORMAT, DETAIL_NONE, PARAM_NONE);
}

Outcome week_format(QWZError *errhp) {
  return date_error(errhp, KIND_NULL_PARAM, DETAIL_WEEK_FORMAT, 3);
}

constexpr const char *kWeekdays[7] = {"sunday",   "monday", "tuesday", "wednesday",
                                      "thursday", "friday", "saturday"};
constexpr ub4 kLongestWeekday = 9;  // "wednesday"

// The first `length` bytes of the name (its NUL included when the length
// reaches it) against the folded text. The name has no bytes past its NUL, so
// a longer length never matches: "monday" followed by a NUL matches with
// length 7, never with 8 or more, whatever follows in the caller's text.
bool weekday_matches(const char *name, const ub1 *folded, ub4 length) {
  // Byte by byte up to the name's NUL: lengths are at most 10 here, too
  // short for a library call to pay.
  for (ub4 i = 0; i < length; ++i) {
    if (static_cast<ub1>(name[i]) != folded[i]) return false;
    if (name[i] == '\0') return i + 1 == length;
  }
  return true;
}

// QWZDateCompare and QWZDateDaysBetween: same checks, both inputs examined.
template <class Out, class Work>
sword compare_like(ub4 api_id, QWZError *errhp, const QWZDate *date1, const QWZDate *date2,
                   Out *out, Work work) {
  return qwz::run_frame(
      api_id, errhp,
      [&]() -> Outcome {
        if (!date1) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 2);
        if (!date2) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 3);
        if (!out) return date_error(errhp, KIND_NULL_PARAM, kResultPtr, 4);
        const bool bad1 = date_invalid(errhp, date1);
        const bool bad2 = date_invalid(errhp, date2);
        if (bad1 || bad2) return invalid_date(errhp);
        return done(work(errhp, date1, date2, out));
      },
      // The error handle is deliberately not among these traced arguments.
      date1, date2, qwz::or_null_text(out));
}

}  // namespace

extern "C" {

QWZ_API sword QWZDateAddDays(QWZError *errhp, const QWZDate *date, sb4 days, QWZDate *result) {
  return qwz::run_frame(
      API_DATE_ADD_DAYS, errhp,
      [&]() -> Outcome {
        if (!date) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 2);
        if (!result) return date_error(errhp, KIND_NULL_PARAM, kResultPtr, 4);
        if (date_invalid(errhp, date)) return invalid_date(errhp);
        return done(date_add_days(errhp, date, days, result));
      },
      errhp, date, days, result);
}

QWZ_API sword QWZDateAddMonths(QWZError *errhp, const QWZDate *date, sb4 months,
                               QWZDate *result) {
  return qwz::run_frame(
      API_DATE_ADD_MONTHS, errhp,
      [&]() -> Outcome {
        if (!date) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 2);
        if (!result) return date_error(errhp, KIND_NULL_PARAM, kResultPtr, 4);
        if (date_invalid(errhp, date)) return invalid_date(errhp);
        return done(date_add_months(errhp, date, months, result));
      },
      errhp, date, months, result);
}

QWZ_API sword QWZDateAssign(QWZError *errhp, const QWZDate *from, QWZDate *to) {
  return qwz::run_frame(
      API_DATE_ASSIGN, errhp,
      [&]() -> Outcome {
        if (!from) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 2);
        if (!to) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 3);
        if (date_invalid(errhp, from)) return invalid_date(errhp);
        *to = *from;
        return done(0);
      },
      errhp, from, to);
}

QWZ_API sword QWZDateCheck(QWZError *errhp, const QWZDate *date, uword *valid) {
  return qwz::run_frame(
      API_DATE_CHECK, errhp,
      [&]() -> Outcome {
        if (!date) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 2);
        if (!valid) return date_error(errhp, KIND_NULL_PARAM, kFlagsPtr, 3);
        // The verdict is only in *valid: an invalid date is not an error here.
        return done(date_check(errhp, date, valid));
      },
      errhp, date, valid);
}


QWZ_API sword QWZDateCompare(QWZError *errhp, const QWZDate *date1, const QWZDate *date2,
                             sword *result) {
  return compare_like(API_DATE_COMPARE, errhp, date1, date2, result, date_compare);
}

QWZ_API sword QWZDateDaysBetween(QWZError *errhp, const QWZDate *date1, const QWZDate *date2,
                                 sb4 *num_days) {
  return compare_like(API_DATE_DAYS_BETWEEN, errhp, date1, date2, num_days, date_days_between);
}

QWZ_API sword QWZDateLastDay(QWZError *errhp, const QWZDate *date, QWZDate *last_day) {
  return qwz::run_frame(
      API_DATE_LAST_DAY, errhp,
      [&]() -> Outcome {
        if (!date) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 2);
        if (!last_day) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 3);
        if (date_invalid(errhp, date)) return invalid_date(errhp);
        return done(date_last_day(errhp, date, last_day));
      },
      errhp, date, last_day);
}

QWZ_API sword QWZDateNextDay(QWZError *errhp, const QWZDate *date, const QWZtext *day_p,
                             ub4 day_length, QWZDate *next_day) {
  return qwz::run_frame(
      API_DATE_NEXT_DAY, errhp,
      [&]() -> Outcome {
        if (!date) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 2);
        if (!day_p) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 3);
        if (day_length <= 5) return week_format(errhp);
        if (!next_day) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 5);
        if (date_invalid(errhp, date)) return invalid_date(errhp);
        // No weekday name with its NUL is longer than 10 bytes, so a longer
        // length can never match: whatever the text holds, the answer is the
        // format error.
        if (day_length > kLongestWeekday + 1) return week_format(errhp);
        // A copy of the text up to its first NUL (bytes after it never take
        // part, so none is read), folded to lower case: anything but ASCII
        // letters there is a format error.
        ub1 buf[16] = {};
        for (ub4 i = 0; i < day_length && day_p[i] != 0; ++i) buf[i] = day_p[i];
        ub4 folded = day_length;
        if (lower_string(buf, &folded) != 0) return week_format(errhp);
        for (ub4 i = 0; i < 7; ++i)
          if (weekday_matches(kWeekdays[i], buf, day_length))
            return done(date_next_day(errhp, date, i, next_day));
        return week_format(errhp);
      },
      errhp, date, qwz::or_null_text(day_p), day_length, next_day);
}

QWZ_API sword QWZDateSysDate(QWZError *errhp, QWZDate *sys_date) {
  return qwz::run_frame(
      API_DATE_SYS_DATE, errhp,
      [&]() -> Outcome {
        if (!sys_date) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 2);
        struct tm now;
        qwz::local_now(&now);
        qwz::tm_to_date(&now, sys_date);
        return done(0);
      },
      errhp, sys_date);
}

// Validates its arguments and nothing more: no conversion, date2 untouched.
// The NULL messages print the fixed numbers 8 and 2.
QWZ_API sword QWZDateZoneToZone(QWZError *errhp, QWZDate *date1, QWZText *zon1, ub4 zon1_length,
                                QWZText *zon2, ub4 zon2_length, QWZDate *date2) {
  return qwz::run_frame(
      API_DATE_ZONE_TO_ZONE, errhp,
      [&]() -> Outcome {
        if (!date1 || !date2) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 8);
        if (!zon1 || !zon2) return date_error(errhp, KIND_NULL_PARAM, kInputPtr, 2);
        return done(0);
      },
      errhp, date1, qwz::or_null_text(zon1), zon1_length, qwz::or_null_text(zon2), zon2_length,
      date2);
}

}  // extern "C"
