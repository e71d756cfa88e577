/*
 * qwz.h - the public interface of the qwz client library: calendar dates,
 * datetimes and intervals, with the handles, descriptors, diagnostics,
 * tracing and numbers they need.
 *
 * Plain C (C99 and C++). Every function returns a status (sword):
 *   QWZ_SUCCESS (0)    the call did its work;
 *   QWZ_ERROR (-1)     it failed and left one diagnostic in the error handle,
 *                      read back with QWZErrorGet;
 *   anything else      passed through from the trace hook or from a handle
 *                      validator (QWZ_INVALID_HANDLE) unchanged; a few
 *                      interval functions return a numeric runtime error.
 *
 * Example:
 *   QWZEnv *env; QWZError *err;
 *   QWZEnvCreate(&env, 0);
 *   QWZHandleAlloc(env, (void **)&err, QWZ_HTYPE_ERROR);
 *   QWZDate d = {2024, 1, 31, 0, 0, 0}, r;
 *   if (QWZDateAddMonths(err, &d, 1, &r) == QWZ_SUCCESS) ...  // 2024-02-29
 */
#ifndef QWZ_QWZ_H
#define QWZ_QWZ_H

#include <stddef.h>

#if defined(QWZ_BUILDING_LIBRARY)
#define QWZ_API __attribute__((visibility("default")))
#else
#define QWZ_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- scalar types -------------------------------------------------------- */
typedef unsigned char ub1;
typedef signed char sb1;
typedef unsigned short ub2;
typedef signed short sb2;
typedef unsigned int ub4;
typedef signed int sb4;
typedef unsigned int uword;
typedef signed int sword;
typedef int boolean;
typedef void dvoid;
typedef unsigned char QWZText;
typedef unsigned char QWZtext;

/* ---- status codes -------------------------------------------------------- */
#define QWZ_SUCCESS 0
#define QWZ_ERROR (-1)
#define QWZ_INVALID_HANDLE (-2) /* what every handle validator returns on failure */
#define QWZ_NO_DATA 100

/* ---- handle and descriptor type codes ------------------------------------ */
#define QWZ_HTYPE_ENV 1
#define QWZ_HTYPE_ERROR 2
#define QWZ_HTYPE_SESSION 9

#define INTERVAL_KIND_YM 62
#define INTERVAL_KIND_DS 63
#define DATETIME_KIND_DATE 65
#define DATETIME_KIND_TIME 66
#define DATETIME_KIND_TIME_TZ 67
#define DATETIME_KIND_TIMESTAMP 68
#define DATETIME_KIND_TIMESTAMP_TZ 69
#define DATETIME_KIND_TIMESTAMP_LTZ 70

/* ---- validity flags (QWZDateCheck, QWZDateTimeCheck) --------------------- */
#define DATE_INVALID_DAY 0x1u
#define DATE_INVALID_MONTH 0x4u
#define DATE_INVALID_YEAR 0x10u
#define DATE_INVALID_HOUR 0x40u
#define DATE_INVALID_MINUTE 0x100u
#define DATE_INVALID_SECOND 0x400u
#define DATE_YEAR_ZERO 0x2000u
/* QWZDateTimeCheck also reports the zone of types 67 and 69: */
#define DATETIME_INVALID_TZ_HOUR 0x10000u   /* tz_hour above 14 or below -12 */
#define DATETIME_INVALID_TZ_MINUTE 0x40000u /* tz_minute above 59 or below -59 */

/* ---- validity flags (QWZIntervalCheck); the leading field is never checked */
#define INTERVAL_INVALID_MONTH 0x4u      /* month outside -11..11 */
#define INTERVAL_INVALID_HOUR 0x40u      /* hour outside -23..23 */
#define INTERVAL_INVALID_MINUTE 0x100u   /* minute outside -59..59 */
#define INTERVAL_INVALID_SECOND 0x400u   /* second outside -59..59 */
#define INTERVAL_INVALID_FRACTION 0x1000u /* fraction outside -99999..99999 */

/* ---- packed datetime array classes (QWZDateTimeFromArray's type) --------- */
#define DATETIME_CLASS_DATE 184
#define DATETIME_CLASS_TIME 185
#define DATETIME_CLASS_TIME_TZ 186
#define DATETIME_CLASS_TIMESTAMP 187
#define DATETIME_CLASS_TIMESTAMP_TZ 188

/* ---- values ----------------------------------------------------------------
 * QWZDate: a caller-owned calendar date with a time of day to the second;
 * six consecutive 16-bit fields, no zone, no fraction. */
typedef struct QWZDate {
  sb2 year; /* -4712..9999, not 0 */
  ub2 month;
  ub2 day;
  ub2 hour;
  ub2 minute;
  ub2 second;
} QWZDate;

typedef struct QWZEnv QWZEnv;
typedef struct QWZError QWZError;
typedef struct QWZSession QWZSession;
typedef struct QWZDateTime QWZDateTime; /* descriptor, types 65..70 */
typedef struct QWZInterval QWZInterval; /* descriptor, kinds 62 and 63 */

/* The interface's numeric value: 22 bytes whose inside is private. */
typedef struct QWZNumber {
  ub1 qwz_number_part[22];
} QWZNumber;

/* ---- environments, handles, descriptors, diagnostics --------------------- */

/* Creates an environment (mode 0). QWZ_ERROR for a NULL envhpp or another mode. */
QWZ_API sword QWZEnvCreate(QWZEnv **envhpp, ub4 mode);
/* Allocates an error handle (type 2) or a session handle (type 9) owned by the
 * environment parenth. QWZ_INVALID_HANDLE for a bad parent, QWZ_ERROR for a
 * NULL hndlpp or another type. */
QWZ_API sword QWZHandleAlloc(const void *parenth, void **hndlpp, ub4 type);
/* Frees a handle of that type; freeing an environment frees all it owns. */
QWZ_API sword QWZHandleFree(void *hndlp, ub4 type);
/* Allocates a descriptor of type 62, 63 or 65..70 (value fields 0) owned by
 * the environment parenth, or by the environment of the session parenth. */
QWZ_API sword QWZDescriptorAlloc(const void *parenth, void **descpp, ub4 type);
QWZ_API sword QWZDescriptorFree(void *descp, ub4 type);
/* recordno 1, type QWZ_HTYPE_ERROR: copies the diagnostic's state (5
 * characters + NUL, or 4 + NUL), its number, and its message cut to
 * bufsiz-1 bytes and NUL-terminated. QWZ_SUCCESS, or QWZ_NO_DATA when the
 * handle holds no diagnostic (number 0, empty message, empty state). */
QWZ_API sword QWZErrorGet(void *hndlp, ub4 recordno, QWZText *sqlstate, sb4 *errcodep,
                          QWZText *bufp, ub4 bufsiz, ub4 type);

/* ---- tracing ---------------------------------------------------------------
 * qwz_trace_flag is 0 at load unless the environment variable QWZ_TRACE holds
 * a non-zero number. With tracing on, every public call of the date,
 * datetime and interval families writes one record on entry (direction 1)
 * and one on exit (direction 0). A hook receives the formatted record and
 * its result is returned by the call when non-zero; without a hook records
 * go to the file named by QWZ_TRACE_FILE, else to stderr. */
QWZ_API extern int qwz_trace_flag;
typedef sword (*QWZTraceHook)(void *errhp, sword status, ub4 direction, ub4 api_id,
                              const char *record);
QWZ_API void QWZTraceSetHook(QWZTraceHook hook); /* NULL restores the default sink */

/* ---- numbers ---------------------------------------------------------------
 * A real of the caller's type (rnum_length / rsl_length: sizeof(float),
 * sizeof(double) or sizeof(long double)) becomes the shortest decimal that
 * reads back as the same value, so every finite value, negative zero
 * included, round-trips exactly through a QWZNumber of its own type. A
 * number read as another type is rounded to the nearest value of that type.
 * Failures return QWZ_ERROR with one diagnostic (state empty), checked in
 * this order:
 *   800201 "the real number could not be null."        rnum / rsl is NULL
 *   800085 "the number could not be null."             number is NULL
 *   800202 "the real number length is not supported."  another length
 *   800203 "the real number is not finite."            NaN or an infinity
 *   800204 "the number is invalid."                    bytes not made by
 *                                                      QWZNumberFromReal
 *   800205 "the number is out of the range of the real type."
 *                                                      too large, or non-zero
 *                                                      but below the type's
 *                                                      smallest value
 * (QWZNumberFromReal checks rnum before number, QWZNumberToReal number
 * before rsl.) */
QWZ_API sword QWZNumberFromReal(QWZError *errhp, const void *rnum, uword rnum_length,
                                QWZNumber *number);
QWZ_API sword QWZNumberToReal(QWZError *errhp, const QWZNumber *number, uword rsl_length,
                              void *rsl);

/* ---- how the text functions read texts and write buffers -----------------
 * QWZDateFromText, QWZDateTimeFromText, QWZDateToText, QWZDateTimeToText and
 * the zone text of QWZDateTimeConstruct read each text and format UP TO ITS
 * NUL TERMINATOR, whatever length is given: the text is trimmed of leading
 * and trailing blanks (' ' only), then cut at the given length (and at 255
 * characters). Texts and formats must therefore be NUL-terminated, and the
 * length counts from the first non-blank character:
 *   ("  2024-05-17", 10) under ("YYYY-MM-DD", 10) reads 2024-05-17;
 *   the format ("  YYYY-MM-DD", 4) writes "2024";
 *   the zone text ("  -05:30", 3) reads -5 hours 0 minutes.
 * A format longer than 127 characters is refused whatever its given length.
 * QWZDateToText and QWZDateTimeToText accept *buf_size equal to the text's
 * length and then copy the text WITH its terminator: the buffer must have
 * room for *buf_size + 1 bytes. *buf_size is not updated. */

/* ---- the date family ------------------------------------------------------
 * Every date function validates its error handle, reports a NULL pointer as
 * "parameter N is NULL" (21560) and an invalid input date as "date format is
 * invalid" (11104, state 22007). */

/* *result = *date moved by days whole days (through local time). */
QWZ_API sword QWZDateAddDays(QWZError *errhp, const QWZDate *date, sb4 days, QWZDate *result);
/* *result = *date moved by months; a month's last day maps to the last day. */
QWZ_API sword QWZDateAddMonths(QWZError *errhp, const QWZDate *date, sb4 months,
                               QWZDate *result);
QWZ_API sword QWZDateAssign(QWZError *errhp, const QWZDate *from, QWZDate *to);
/* *valid = validity flags; returns 0 whether or not the date is valid. */
QWZ_API sword QWZDateCheck(QWZError *errhp, const QWZDate *date, uword *valid);
/* *result = 1, 0 or -1 as date1 is later than, equal to or earlier than date2. */
QWZ_API sword QWZDateCompare(QWZError *errhp, const QWZDate *date1, const QWZDate *date2,
                             sword *result);
/* *num_days = whole days from date2 to date1, times of day ignored. */
QWZ_API sword QWZDateDaysBetween(QWZError *errhp, const QWZDate *date1, const QWZDate *date2,
                                 sb4 *num_days);
/* Reads *date from date_str under the format model fmt (both NUL-terminated,
 * trimmed, then cut at d_str_length and fmt_length: see above). */
QWZ_API sword QWZDateFromText(QWZError *errhp, const QWZtext *date_str, ub4 d_str_length,
                              const QWZtext *fmt, ub1 fmt_length, const QWZtext *lang_name,
                              ub4 lang_length, QWZDate *date);
QWZ_API sword QWZDateLastDay(QWZError *errhp, const QWZDate *date, QWZDate *last_day);
/* First date after *date on the named weekday (a name or a prefix of at least
 * six letters, any case); "week format is invalid" (1846) otherwise. */
QWZ_API sword QWZDateNextDay(QWZError *errhp, const QWZDate *date, const QWZtext *day_p,
                             ub4 day_length, QWZDate *next_day);
QWZ_API sword QWZDateSysDate(QWZError *errhp, QWZDate *sys_date);
/* Writes *date as text under fmt (NUL-terminated, trimmed, cut at
 * fmt_length) into buf, with its terminator: buf needs *buf_size + 1 bytes
 * when the text fills *buf_size exactly. */
QWZ_API sword QWZDateToText(QWZError *errhp, const QWZDate *date, const QWZtext *fmt,
                            ub1 fmt_length, const QWZtext *lang_name, ub4 lang_length,
                            ub4 *buf_size, QWZtext *buf);
/* Only validates its arguments. */
QWZ_API sword QWZDateZoneToZone(QWZError *errhp, QWZDate *date1, QWZText *zon1, ub4 zon1_length,
                                QWZText *zon2, ub4 zon2_length, QWZDate *date2);

/* ---- the datetime family --------------------------------------------------
 * hndl is an environment or a session handle. */
QWZ_API sword QWZDateTimeAssign(void *hndl, QWZError *errhp, const QWZDateTime *from,
                                QWZDateTime *to);
QWZ_API sword QWZDateTimeCheck(void *hndl, QWZError *errhp, const QWZDateTime *date,
                               ub4 *valid);
QWZ_API sword QWZDateTimeCompare(void *hndl, QWZError *errhp, const QWZDateTime *date1,
                                 const QWZDateTime *date2, sword *result);
/* timezone, when not NULL, is read as "TZH:TZM" up to its NUL, trimmed, then
 * cut at timezone_length (see above); NULL takes the process's standard
 * offset. */
QWZ_API sword QWZDateTimeConstruct(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                   sb2 year, ub1 month, ub1 day, ub1 hour, ub1 min, ub1 sec,
                                   ub4 fsec, QWZText *timezone, size_t timezone_length);
QWZ_API sword QWZDateTimeConvert(void *hndl, QWZError *errhp, QWZDateTime *indate,
                                 QWZDateTime *outdate);
QWZ_API sword QWZDateTimeFromArray(void *hndl, QWZError *errhp, ub1 *inarray, ub4 *len,
                                   ub1 type, QWZDateTime *datetime, QWZInterval *reftz,
                                   ub1 fsprec);
/* Reads *datetime from date_str under fmt (both NUL-terminated, trimmed, cut
 * at dstr_length and fmt_length). */
QWZ_API sword QWZDateTimeFromText(void *hndl, QWZError *errhp, QWZText *date_str,
                                  size_t dstr_length, QWZText *fmt, ub1 fmt_length,
                                  QWZText *lang_name, size_t lang_length,
                                  QWZDateTime *datetime);
QWZ_API sword QWZDateTimeGetDate(void *hndl, QWZError *errhp, const QWZDateTime *datetime,
                                 sb2 *year, ub1 *month, ub1 *day);
QWZ_API sword QWZDateTimeGetTime(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                 ub1 *hour, ub1 *min, ub1 *sec, ub4 *fsec);
QWZ_API sword QWZDateTimeGetTimeZoneName(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                         ub1 *buf, ub4 *buflen);
QWZ_API sword QWZDateTimeGetTimeZoneOffset(void *hndl, QWZError *errhp,
                                           const QWZDateTime *datetime, sb1 *hour, sb1 *min);
QWZ_API sword QWZDateTimeIntervalAdd(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                     QWZInterval *inter, QWZDateTime *outdatetime);
QWZ_API sword QWZDateTimeIntervalSub(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                     QWZInterval *inter, QWZDateTime *outdatetime);
QWZ_API sword QWZDateTimeSubtract(void *hndl, QWZError *errhp, QWZDateTime *indate1,
                                  QWZDateTime *indate2, QWZInterval *inter);
QWZ_API sword QWZDateTimeSysTimeStamp(void *hndl, QWZError *errhp, QWZDateTime *sys_date);
QWZ_API sword QWZDateTimeToArray(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                 QWZInterval *reftz, ub1 *outarray, ub4 *len, ub1 fsprec);
/* Writes *date as text under fmt (NUL-terminated, trimmed, cut at
 * fmt_length) into buf, with its terminator: buf needs *buf_size + 1 bytes
 * when the text fills *buf_size exactly. */
QWZ_API sword QWZDateTimeToText(void *hndl, QWZError *errhp, const QWZDateTime *date,
                                const QWZtext *fmt, ub1 fmt_length, ub1 fsprec,
                                const QWZtext *lang_name, size_t lang_length, ub4 *buf_size,
                                QWZtext *buf);

/* ---- the interval family ------------------------------------------------- */
QWZ_API sword QWZIntervalAdd(void *hndl, QWZError *errhp, QWZInterval *addend1,
                             QWZInterval *addend2, QWZInterval *result);
QWZ_API sword QWZIntervalAssign(void *hndl, QWZError *errhp, const QWZInterval *ininter,
                                QWZInterval *outinter);
QWZ_API sword QWZIntervalCheck(void *hndl, QWZError *errhp, const QWZInterval *interval,
                               ub4 *valid);
QWZ_API sword QWZIntervalCompare(void *hndl, QWZError *errhp, const QWZInterval *inter1,
                                 const QWZInterval *inter2, sword *result);
QWZ_API sword QWZIntervalDivide(void *hndl, QWZError *errhp, QWZInterval *dividend,
                                QWZNumber *divisor, QWZInterval *result);
QWZ_API sword QWZIntervalFromNumber(void *hndl, QWZError *errhp, QWZInterval *interval,
                                    QWZNumber *number);
QWZ_API sword QWZIntervalFromText(void *hndl, QWZError *errhp, const QWZText *inpstring,
                                  size_t str_len, QWZInterval *result);
QWZ_API sword QWZIntervalGetDaySecond(void *hndl, QWZError *errhp, sb4 *dy, sb4 *hr, sb4 *mm,
                                      sb4 *ss, sb4 *fsec, const QWZInterval *interval);
QWZ_API sword QWZIntervalGetYearMonth(void *hndl, QWZError *errhp, sb4 *yr, sb4 *mnth,
                                      const QWZInterval *interval);
QWZ_API sword QWZIntervalMultiply(void *hndl, QWZError *errhp, QWZInterval *inter,
                                  QWZNumber *nfactor, QWZInterval *result);
QWZ_API sword QWZIntervalSetDaySecond(void *hndl, QWZError *errhp, sb4 dy, sb4 hr, sb4 mm,
                                      sb4 ss, sb4 fsec, QWZInterval *result);
QWZ_API sword QWZIntervalSetYearMonth(void *hndl, QWZError *errhp, sb4 yr, sb4 mnth,
                                      QWZInterval *result);
QWZ_API sword QWZIntervalSubtract(void *hndl, QWZError *errhp, QWZInterval *minuend,
                                  QWZInterval *subtrahend, QWZInterval *result);
QWZ_API sword QWZIntervalToNumber(void *hndl, QWZError *errhp, QWZInterval *interval,
                                  QWZNumber *number);
QWZ_API sword QWZIntervalToText(void *hndl, QWZError *errhp, const QWZInterval *interval,
                                ub1 lfprec, ub1 fsprec, QWZtext *buffer, size_t buflen,
                                size_t *resultlen);

#ifdef __cplusplus
}
#endif

#endif /* QWZ_QWZ_H */
