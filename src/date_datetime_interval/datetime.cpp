// Datetime descriptors: QWZDateTimeConstruct, the getters of date, time and
// zone, QWZDateTimeSysTimeStamp, and the clock and zone helpers they share.
#include "date_datetime_interval/calendar.h"
#include "date_datetime_interval/datetime.h"
#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/format_model.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/nested.h"
#include "date_datetime_interval/text_in.h"
#include "errors/errors.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/time.h>

namespace {

using qwz::done;
using qwz::front_end_error;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_DATETIME_CONSTRUCT = 142;
constexpr ub4 API_DATETIME_GET_DATE = 143;
constexpr ub4 API_DATETIME_GET_TIME = 144;
constexpr ub4 API_DATETIME_GET_TZ_OFFSET = 145;
constexpr ub4 API_DATETIME_SYS_TIMESTAMP = 175;
constexpr ub4 API_DATETIME_GET_TZ_NAME = 176;

// The model the constructor reads its zone text with.
constexpr char kZoneFormat[] = "TZH:TZM";
constexpr std::size_t kZoneFormatLength = sizeof kZoneFormat - 1;

struct FrontEndMessage {
  const char *text;
  sb4 number;
};
constexpr FrontEndMessage kBufferNull{"The buffer is null.", 800027};
constexpr FrontEndMessage kNotADate{"not a date.", 800057};
constexpr FrontEndMessage kDateOutputNull{"the year or month or day could not be null.", 800058};
constexpr FrontEndMessage kTimeOutputNull{
    "the hour or minute or second or fraction could not be null.", 800059};
constexpr FrontEndMessage kFieldNotFound{"specified field not found in datetime or interval.",
                                         800060};
constexpr FrontEndMessage kNoTimeZone{"datetime does not contain a time zone.", 800083};
constexpr FrontEndMessage kZoneOutputNull{"the hour or minute could not be null.", 800084};

Outcome fail(QWZError *errhp, const FrontEndMessage &m) {
  return front_end_error(errhp, m.text, m.number);
}

// Context handle, then the descriptor: 0, or the validator's result after
// "Invalid handle.".
sword check_handles(QWZError *errhp, const void *hndl, const QWZDateTime *datetime) {
  if (const sword r = qwz::check_context(errhp, hndl)) return r;
  return qwz::check_datetime(errhp, datetime);
}

// The value a failed construction puts back: month to second keep only
// their low bytes.
struct SavedValue {
  sb2 year;
  ub1 month, day, hour, minute, second;
  ub4 fraction;
  sb1 tz_hour, tz_minute;
};

SavedValue save_value(const QWZDateTime *dt) {
  return {dt->year,
          static_cast<ub1>(dt->month),
          static_cast<ub1>(dt->day),
          static_cast<ub1>(dt->hour),
          static_cast<ub1>(dt->minute),
          static_cast<ub1>(dt->second),
          dt->fraction,
          dt->tz_hour,
          dt->tz_minute};
}

void restore_value(QWZDateTime *dt, const SavedValue &s) {
  dt->year = s.year;
  dt->month = s.month;
  dt->day = s.day;
  dt->hour = s.hour;
  dt->minute = s.minute;
  dt->second = s.second;
  dt->fraction = s.fraction;
  dt->tz_hour = s.tz_hour;
  dt->tz_minute = s.tz_minute;
}

void set_fields(QWZDateTime *dt, sb2 year, ub1 month, ub1 day, ub1 hour, ub1 min, ub1 sec,
                ub4 fsec) {
  dt->year = year;
  dt->month = month;
  dt->day = day;
  dt->hour = hour;
  dt->minute = min;
  dt->second = sec;
  dt->fraction = fsec;
  dt->tz_hour = 0;
  dt->tz_minute = 0;
}

bool has_date_fields(ub2 type) {
  return type != DATETIME_KIND_TIME && type != DATETIME_KIND_TIME_TZ;
}

// Types reported as carrying no zone; any other code passes.
bool zoneless(ub2 type) {
  return type == DATETIME_KIND_DATE || type == DATETIME_KIND_TIME ||
         type == DATETIME_KIND_TIMESTAMP || type == DATETIME_KIND_TIMESTAMP_LTZ;
}

}  // namespace

extern "C" {

void qwz_setup_locate_date(QWZDateTime *datetime) {
  if (!datetime) return;
  struct tm now;
  qwz::local_now(&now);
  datetime->year = static_cast<sb2>(static_cast<ub2>(now.tm_year + 1900));
  datetime->month = static_cast<ub2>(now.tm_mon + 1);
  datetime->day = static_cast<ub2>(now.tm_mday);
}

void qwz_setup_local_timezone(QWZDateTime *datetime) {
  if (!datetime) return;
  // Seconds east of UTC in standard time (minus the C library's `timezone`).
  const sb4 off = static_cast<sb4>(qwz::local_standard_offset());
  const sb4 hours = off / 3600;
  datetime->tz_hour = static_cast<sb1>(hours);
  datetime->tz_minute = static_cast<sb1>((off - hours * 3600) / 60);
}

// Fills the fields the descriptor's type defines and zeroes the others; the
// type itself never changes. A value that fails the check is replaced by the
// previous one (month to second from their low bytes). A type-70 descriptor
// is not written at all: the check of its (unexamined) value passes.
QWZ_API sword QWZDateTimeConstruct(void *hndl, QWZError *errhp, QWZDateTime *datetime, sb2 year,
                                   ub1 month, ub1 day, ub1 hour, ub1 min, ub1 sec, ub4 fsec,
                                   QWZText *tz, size_t tz_length) {
  // Traced as at most tz_length bytes of the text, "(null)" for NULL.
  const qwz::TracedText tz_arg(tz, tz_length);
  return qwz::run_frame(
      API_DATETIME_CONSTRUCT, errhp,
      [&]() -> Outcome {
        if (const sword r = check_handles(errhp, hndl, datetime)) return refuse(r);
        const SavedValue saved = save_value(datetime);
        bool zone_step = false;
        switch (datetime->hdr.type) {
          case DATETIME_KIND_DATE:
            set_fields(datetime, year, month, day, 0, 0, 0, 0);
            break;
          case DATETIME_KIND_TIME:
          case DATETIME_KIND_TIME_TZ:
            set_fields(datetime, 0, 0, 0, hour, min, sec, fsec);
            zone_step = datetime->hdr.type == DATETIME_KIND_TIME_TZ;
            break;
          case DATETIME_KIND_TIMESTAMP:
          case DATETIME_KIND_TIMESTAMP_TZ:
            set_fields(datetime, year, month, day, hour, min, sec, fsec);
            zone_step = datetime->hdr.type == DATETIME_KIND_TIMESTAMP_TZ;
            break;
          default:  // 70: a local-zone timestamp is not filled here
            break;
        }
        if (zone_step) {
          if (tz) {
            // A rejected zone text is returned as it is: the new fields
            // stay written, nothing is put back.
            if (const sword r = append_timezone_from_text(
                    errhp, tz, tz_length, reinterpret_cast<const QWZText *>(kZoneFormat),
                    kZoneFormatLength, datetime))
              return refuse(r);
          } else {
            qwz_setup_local_timezone(datetime);
          }
        }
        ub4 flags = 0;
        if (const sword r = qwz::nested_datetime_check(hndl, errhp, datetime, &flags)) return refuse(r);
        if (flags != 0) {
          restore_value(datetime, saved);
          return qwz::datetime_error(errhp, KIND_INVALID_VALUE, DETAIL_DATE_FORMAT, 3);
        }
        return done(0);
      },
      hndl, errhp, datetime, year, month, day, hour, min, sec, fsec,
      tz_arg.arg(), tz_length);
}

QWZ_API sword QWZDateTimeGetDate(void *hndl, QWZError *errhp, const QWZDateTime *datetime,
                                 sb2 *year, ub1 *month, ub1 *day) {
  return qwz::run_frame(
      API_DATETIME_GET_DATE, errhp,
      [&]() -> Outcome {
        if (const sword r = check_handles(errhp, hndl, datetime)) return refuse(r);
        if (!year || !month || !day) return fail(errhp, kDateOutputNull);
        if (!has_date_fields(datetime->hdr.type)) {
          *year = 0;
          *month = 0;
          *day = 0;
          return done(0);
        }
        if (datetime->year == 0 && datetime->month == 0 && datetime->day == 0)
          return fail(errhp, kNotADate);
        *year = datetime->year;
        *month = static_cast<ub1>(datetime->month);
        *day = static_cast<ub1>(datetime->day);
        return done(0);
      },
      hndl, errhp, datetime, qwz::or_null_text(year), qwz::or_null_text(month),
      qwz::or_null_text(day));
}

// Types 66 and 67 report a fraction of 0 although the constructor stores
// one for them.
QWZ_API sword QWZDateTimeGetTime(void *hndl, QWZError *errhp, QWZDateTime *datetime, ub1 *hour,
                                 ub1 *min, ub1 *sec, ub4 *fsec) {
  return qwz::run_frame(
      API_DATETIME_GET_TIME, errhp,
      [&]() -> Outcome {
        if (const sword r = check_handles(errhp, hndl, datetime)) return refuse(r);
        if (!hour || !min || !sec || !fsec) return fail(errhp, kTimeOutputNull);
        const ub2 type = datetime->hdr.type;
        if (type == DATETIME_KIND_DATE) return fail(errhp, kFieldNotFound);
        *hour = static_cast<ub1>(datetime->hour);
        *min = static_cast<ub1>(datetime->minute);
        *sec = static_cast<ub1>(datetime->second);
        *fsec = has_date_fields(type) ? datetime->fraction : 0;
        return done(0);
      },
      hndl, errhp, datetime, qwz::or_null_text(hour), qwz::or_null_text(min),
      qwz::or_null_text(sec), qwz::or_null_text(fsec));
}

QWZ_API sword QWZDateTimeGetTimeZoneOffset(void *hndl, QWZError *errhp,
                                           const QWZDateTime *datetime, sb1 *hour, sb1 *min) {
  return qwz::run_frame(
      API_DATETIME_GET_TZ_OFFSET, errhp,
      [&]() -> Outcome {
        if (const sword r = check_handles(errhp, hndl, datetime)) return refuse(r);
        if (!hour || !min) return fail(errhp, kZoneOutputNull);
        if (zoneless(datetime->hdr.type)) return fail(errhp, kNoTimeZone);
        *hour = datetime->tz_hour;
        *min = datetime->tz_minute;
        return done(0);
      },
      hndl, errhp, datetime, qwz::or_null_text(hour), qwz::or_null_text(min));
}

// Writes "+HH:MM" / "-HH:MM" and its NUL into buf, the text's length into
// *buflen. The sign comes from the hours alone (0 hours -30 minutes prints
// +00:30). A length below 7 is refused with the NULL-buffer message. An
// out-of-range offset (possible after a failed conversion left it in the
// descriptor) can print longer than six characters; a text that would not
// fit *buflen is refused the same way rather than written past the buffer.
QWZ_API sword QWZDateTimeGetTimeZoneName(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                         ub1 *buf, ub4 *buflen) {
  return qwz::run_frame(
      API_DATETIME_GET_TZ_NAME, errhp,
      [&]() -> Outcome {
        if (const sword r = check_handles(errhp, hndl, datetime)) return refuse(r);
        if (!buf || !buflen) return fail(errhp, kBufferNull);
        if (*buflen < 7) return fail(errhp, kBufferNull);
        if (zoneless(datetime->hdr.type)) return fail(errhp, kNoTimeZone);
        const int h = datetime->tz_hour;
        const int m = datetime->tz_minute;
        char text[16];
        const int n = std::snprintf(text, sizeof text, "%c%02d:%02d", h < 0 ? '-' : '+',
                                    std::abs(h), std::abs(m));
        if (n < 0 || static_cast<ub4>(n) >= *buflen) return fail(errhp, kBufferNull);
        std::memcpy(buf, text, static_cast<size_t>(n) + 1);
        *buflen = static_cast<ub4>(n);
        return done(0);
      },
      hndl, errhp, datetime, qwz::or_null_text(buf), qwz::or_null_text(buflen));
}

// The current local wall-clock time (summer time applied) with the zone's
// standard offset; the fraction counts units of ten microseconds. The
// descriptor always comes out as type 69.
QWZ_API sword QWZDateTimeSysTimeStamp(void *hndl, QWZError *errhp, QWZDateTime *sys_date) {
  return qwz::run_frame(
      API_DATETIME_SYS_TIMESTAMP, errhp,
      [&]() -> Outcome {
        if (const sword r = check_handles(errhp, hndl, sys_date)) return refuse(r);
        sys_date->hdr.type = DATETIME_KIND_TIMESTAMP_TZ;
        struct timeval tv;
        if (const int r = gettimeofday(&tv, nullptr)) return refuse(r);
        struct tm now;
        qwz::seconds_to_tm(static_cast<time_t>(tv.tv_sec), &now);
        sys_date->year = static_cast<sb2>(static_cast<ub2>(now.tm_year + 1900));
        sys_date->month = static_cast<ub2>(now.tm_mon + 1);
        sys_date->day = static_cast<ub2>(now.tm_mday);
        sys_date->hour = static_cast<ub2>(now.tm_hour);
        sys_date->minute = static_cast<ub2>(now.tm_min);
        sys_date->second = static_cast<ub2>(now.tm_sec);
        sys_date->fraction = static_cast<ub4>(tv.tv_usec / 10);
        qwz_setup_local_timezone(sys_date);
        return done(0);
      },
      hndl, errhp, sys_date);
}

}  // extern "C"
