/**
 * @file qwz.h
 * @brief The public interface of the qwz client library: calendar dates,
 *        datetimes and intervals, with the handles, descriptors,
 *        diagnostics, tracing and numbers they need.
 *
 * Plain C (C99 and C++). Every function returns a status (::sword):
 * - ::QWZ_SUCCESS (0): the call did its work;
 * - ::QWZ_ERROR (-1): it failed and left one diagnostic in the error handle
 *   (a number, a state and a message), read back with QWZErrorGet();
 * - anything else: passed through unchanged from the trace hook
 *   (QWZTraceSetHook()) or from a handle validator (::QWZ_INVALID_HANDLE);
 *   a few interval functions return a numeric runtime error number.
 *
 * Diagnostics common to many functions (number, state, message):
 * - 21560, "21560", "ERROR: [QWZ-21560][QWZ Driver].parameter N is NULL\n"
 *   for a NULL pointer argument, N being the argument's position counted
 *   from 1 (the numbers given per function are part of the contract);
 * - 11104, "22007", "ERROR: [QWZ-11104][QWZ Driver].date format is
 *   invalid\n" for an invalid QWZDate; 22007, "22007", "ERROR:
 *   [QWZ-22007][QWZ Driver].date format is invalid\n" for an invalid
 *   datetime;
 * - 11104, "22007", "ERROR: [QWZ-11104][QWZ Driver].interval is invalid 3 \n"
 *   for an interval that fails QWZIntervalCheck();
 * - 11105, "22008", "ERROR: [QWZ-21405][QWZ Driver].type is diff\n" when two
 *   values are of different types;
 * - 800001, "", "Invalid handle." for a bad context handle or descriptor
 *   (the validator's value is returned).
 * The diagnostics numbered from 800001 have an empty state and no line end.
 *
 * Texts and format models given to QWZDateFromText(), QWZDateTimeFromText(),
 * QWZDateToText(), QWZDateTimeToText() and the zone text of
 * QWZDateTimeConstruct() must be NUL-terminated: they are read up to the
 * NUL, trimmed of leading and trailing blanks, then cut at the length given.
 *
 * Calendar arithmetic goes through the process's local time zone (TZ):
 * fields go in as standard time and come out as the zone's clock time, so a
 * result that lands in summer time shows one hour more. In UTC it is exact.
 *
 * @code
 *   QWZEnv *env; QWZError *err;
 *   QWZEnvCreate(&env, 0);
 *   QWZHandleAlloc(env, (void **)&err, QWZ_HTYPE_ERROR);
 *   QWZDate d = {2024, 1, 31, 0, 0, 0}, r;
 *   if (QWZDateAddMonths(err, &d, 1, &r) == QWZ_SUCCESS) ...  // 2024-02-29
 *   QWZHandleFree(env, QWZ_HTYPE_ENV);
 * @endcode
 */
#ifndef QWZ_QWZ_H
#define QWZ_QWZ_H

#include <stddef.h>

/** @cond QWZ_INTERNAL */
#if defined(QWZ_BUILDING_LIBRARY)
#define QWZ_API __attribute__((visibility("default")))
#else
#define QWZ_API
#endif

#ifdef __cplusplus
extern "C" {
#endif
/** @endcond */

/* ---- scalar types -------------------------------------------------------- */
typedef unsigned char ub1;   /**< unsigned 8 bits */
typedef signed char sb1;     /**< signed 8 bits */
typedef unsigned short ub2;  /**< unsigned 16 bits */
typedef signed short sb2;    /**< signed 16 bits */
typedef unsigned int ub4;    /**< unsigned 32 bits */
typedef signed int sb4;      /**< signed 32 bits */
typedef unsigned int uword;  /**< unsigned machine word */
typedef signed int sword;    /**< signed machine word: the status of every call */
typedef int boolean;         /**< a truth value */
typedef void dvoid;          /**< untyped */
typedef unsigned char QWZText; /**< a byte of text */
typedef unsigned char QWZtext; /**< a byte of text (the other spelling) */

/* ---- status codes -------------------------------------------------------- */
#define QWZ_SUCCESS 0 /**< the call did its work */
#define QWZ_ERROR (-1) /**< failed; one diagnostic is in the error handle */
#define QWZ_INVALID_HANDLE (-2) /**< what every handle validator returns on failure */
#define QWZ_NO_DATA 100 /**< QWZErrorGet(): the handle holds no diagnostic */

/* ---- handle and descriptor type codes ------------------------------------ */
#define QWZ_HTYPE_ENV 1 /**< environment */
#define QWZ_HTYPE_ERROR 2 /**< error handle */
#define QWZ_HTYPE_SESSION 9 /**< session handle */

#define INTERVAL_KIND_YM 62 /**< interval, year to month */
#define INTERVAL_KIND_DS 63 /**< interval, day to second (fraction in 1/100000 s) */
#define DATETIME_KIND_DATE 65 /**< date */
#define DATETIME_KIND_TIME 66 /**< time of day with fraction */
#define DATETIME_KIND_TIME_TZ 67 /**< time of day with fraction and zone */
#define DATETIME_KIND_TIMESTAMP 68 /**< date and time with fraction */
#define DATETIME_KIND_TIMESTAMP_TZ 69 /**< date and time with fraction and zone */
#define DATETIME_KIND_TIMESTAMP_LTZ 70 /**< timestamp in the local zone (no zone stored) */

/* ---- validity flags (QWZDateCheck, QWZDateTimeCheck) --------------------- */
#define DATE_INVALID_DAY 0x1u /**< day 0 or past the month's end (month valid) */
#define DATE_INVALID_MONTH 0x4u /**< month 0 or above 12 */
#define DATE_INVALID_YEAR 0x10u /**< year below -4712 or above 9999 */
#define DATE_INVALID_HOUR 0x40u /**< hour above 23 */
#define DATE_INVALID_MINUTE 0x100u /**< minute above 59 */
#define DATE_INVALID_SECOND 0x400u /**< second above 59 */
#define DATE_YEAR_ZERO 0x2000u /**< year 0 */
/* QWZDateTimeCheck also reports the zone of types 67 and 69: */
#define DATETIME_INVALID_TZ_HOUR 0x10000u   /**< tz_hour above 14 or below -12 */
#define DATETIME_INVALID_TZ_MINUTE 0x40000u /**< tz_minute above 59 or below -59 */

/* ---- validity flags (QWZIntervalCheck); the leading field is never checked */
#define INTERVAL_INVALID_MONTH 0x4u      /**< month outside -11..11 */
#define INTERVAL_INVALID_HOUR 0x40u      /**< hour outside -23..23 */
#define INTERVAL_INVALID_MINUTE 0x100u   /**< minute outside -59..59 */
#define INTERVAL_INVALID_SECOND 0x400u   /**< second outside -59..59 */
#define INTERVAL_INVALID_FRACTION 0x1000u /**< fraction outside -99999..99999 */

/* ---- packed datetime array classes (QWZDateTimeFromArray's type) --------- */
#define DATETIME_CLASS_DATE 184 /**< 4 bytes: date */
#define DATETIME_CLASS_TIME 185 /**< 7 bytes: time and fraction */
#define DATETIME_CLASS_TIME_TZ 186 /**< 9 bytes: time, fraction and zone */
#define DATETIME_CLASS_TIMESTAMP 187 /**< 11 bytes: date, time and fraction */
#define DATETIME_CLASS_TIMESTAMP_TZ 188 /**< 13 bytes: date, time, fraction and zone */

/* ---- values ---------------------------------------------------------------- */
/**
 * @brief A caller-owned calendar date with a time of day to the second; six
 *        consecutive 16-bit fields, no zone, no fraction.
 */
typedef struct QWZDate {
  sb2 year; /**< -4712..9999, not 0 */
  ub2 month; /**< 1..12 */
  ub2 day; /**< 1..the month's length */
  ub2 hour; /**< 0..23 */
  ub2 minute; /**< 0..59 */
  ub2 second; /**< 0..59 */
} QWZDate;

typedef struct QWZEnv QWZEnv; /**< environment (opaque) */
typedef struct QWZError QWZError; /**< error handle (opaque) */
typedef struct QWZSession QWZSession; /**< session handle (opaque) */
typedef struct QWZDateTime QWZDateTime; /**< datetime descriptor, types 65..70 (opaque) */
typedef struct QWZInterval QWZInterval; /**< interval descriptor, kinds 62 and 63 (opaque) */

/** @brief The interface's numeric value: 22 bytes whose inside is private. */
typedef struct QWZNumber {
  ub1 qwz_number_part[22]; /**< private */
} QWZNumber;

/* ---- environments, handles, descriptors, diagnostics --------------------- */

/**
 * @brief Creates an environment, the owner of error handles, sessions and
 *        descriptors.
 * @param[out] envhpp receives the new environment.
 * @param[in]  mode   must be 0.
 * @retval QWZ_SUCCESS the environment was created.
 * @retval QWZ_ERROR   @p envhpp is NULL, @p mode is not 0, or no memory
 *                     (there is no error handle yet, so no diagnostic).
 * @code
 *   QWZEnv *env;
 *   QWZEnvCreate(&env, 0);                 // QWZ_SUCCESS
 *   QWZEnvCreate(&env, 1);                 // QWZ_ERROR
 * @endcode
 */
QWZ_API sword QWZEnvCreate(QWZEnv **envhpp, ub4 mode);
/**
 * @brief Allocates an error handle or a session handle owned by an
 *        environment.
 * @param[in]  parenth the owning environment.
 * @param[out] hndlpp  receives the new handle.
 * @param[in]  type    ::QWZ_HTYPE_ERROR (2) or ::QWZ_HTYPE_SESSION (9).
 * @retval QWZ_SUCCESS        the handle was allocated.
 * @retval QWZ_INVALID_HANDLE @p parenth is not a live environment.
 * @retval QWZ_ERROR          @p hndlpp is NULL, another @p type, or no memory.
 * @code
 *   QWZError *err;
 *   QWZHandleAlloc(env, (void **)&err, QWZ_HTYPE_ERROR);   // QWZ_SUCCESS
 * @endcode
 */
QWZ_API sword QWZHandleAlloc(const void *parenth, void **hndlpp, ub4 type);
/**
 * @brief Frees a handle; freeing an environment frees every handle and
 *        descriptor it owns.
 * @param[in] hndlp the handle.
 * @param[in] type  its type: ::QWZ_HTYPE_ENV, ::QWZ_HTYPE_ERROR or
 *                  ::QWZ_HTYPE_SESSION.
 * @retval QWZ_SUCCESS        the handle was freed.
 * @retval QWZ_INVALID_HANDLE @p hndlp is not a live handle of that type.
 * @code
 *   QWZHandleFree(env, QWZ_HTYPE_ENV);     // QWZ_SUCCESS; err is gone too
 * @endcode
 */
QWZ_API sword QWZHandleFree(void *hndlp, ub4 type);
/**
 * @brief Allocates a datetime or interval descriptor (all value fields 0).
 * @param[in]  parenth an environment, or a session (its environment then
 *                     owns the descriptor).
 * @param[out] descpp  receives the descriptor.
 * @param[in]  type    ::INTERVAL_KIND_YM (62), ::INTERVAL_KIND_DS (63) or
 *                     ::DATETIME_KIND_DATE (65) to
 *                     ::DATETIME_KIND_TIMESTAMP_LTZ (70). The type is fixed
 *                     for the descriptor's life (only
 *                     QWZDateTimeSysTimeStamp() changes it, to 69).
 * @retval QWZ_SUCCESS        the descriptor was allocated.
 * @retval QWZ_INVALID_HANDLE @p parenth is neither an environment nor a
 *                            session.
 * @retval QWZ_ERROR          @p descpp is NULL, another @p type, or no memory.
 * @code
 *   QWZDateTime *ts;
 *   QWZDescriptorAlloc(env, (void **)&ts, DATETIME_KIND_TIMESTAMP_TZ);  // QWZ_SUCCESS
 * @endcode
 */
QWZ_API sword QWZDescriptorAlloc(const void *parenth, void **descpp, ub4 type);
/**
 * @brief Frees a descriptor.
 * @param[in] descp the descriptor.
 * @param[in] type  the type it was allocated with.
 * @retval QWZ_SUCCESS        the descriptor was freed.
 * @retval QWZ_INVALID_HANDLE @p descp is not a live descriptor of @p type.
 */
QWZ_API sword QWZDescriptorFree(void *descp, ub4 type);
/**
 * @brief Reads the diagnostic that the last failed call left in an error
 *        handle.
 * @param[in]  hndlp     the error handle.
 * @param[in]  recordno  1 (there is one diagnostic at most).
 * @param[out] sqlstate  receives the state: 5 characters and a NUL (4 for
 *                       the week-format diagnostic; empty for the 800000
 *                       numbers); may be NULL.
 * @param[out] errcodep  receives the number; may be NULL.
 * @param[out] bufp      receives the message cut to @p bufsiz - 1 bytes and
 *                       NUL-terminated; may be NULL.
 * @param[in]  bufsiz    the size of @p bufp.
 * @param[in]  type      ::QWZ_HTYPE_ERROR.
 * @retval QWZ_SUCCESS        a diagnostic was copied.
 * @retval QWZ_NO_DATA        the handle holds no diagnostic (number 0, empty
 *                            message and state are copied).
 * @retval QWZ_ERROR          @p recordno is not 1.
 * @retval QWZ_INVALID_HANDLE not an error handle, or another @p type.
 *
 * Messages of the family error setters end with "\n"; those with numbers
 * from 800001 up do not. Every public call of the three families clears
 * the handle first, so a successful call leaves QWZ_NO_DATA behind.
 * @code
 *   QWZText state[6]; sb4 code; QWZText msg[512];
 *   QWZDateAddDays(err, &d, 1, NULL);      // QWZ_ERROR
 *   QWZErrorGet(err, 1, state, &code, msg, sizeof msg, QWZ_HTYPE_ERROR);
 *   // code 21560, state "21560",
 *   // msg "ERROR: [QWZ-21560][QWZ Driver].parameter 4 is NULL\n"
 * @endcode
 */
QWZ_API sword QWZErrorGet(void *hndlp, ub4 recordno, QWZText *sqlstate, sb4 *errcodep,
                          QWZText *bufp, ub4 bufsiz, ub4 type);

/* ---- tracing ---------------------------------------------------------------
 * qwz_trace_flag is 0 at load unless the environment variable QWZ_TRACE holds
 * a non-zero number. With tracing on, every public call of the date,
 * datetime and interval families writes one record on entry (direction 1)
 * and one on exit (direction 0). A hook receives the formatted record and
 * its result is returned by the call when non-zero; without a hook records
 * go to the file named by QWZ_TRACE_FILE, else to stderr. */
/** Tracing switch: 0 at load unless QWZ_TRACE holds a non-zero number; a
 *  program may set it at any time (read without synchronisation). */
QWZ_API extern int qwz_trace_flag;
/** A trace hook: receives the error handle, the status (0 on entry), the
 *  direction (1 entry, 0 exit), the API id and the formatted record; a
 *  non-zero result is returned by the traced call. */
typedef sword (*QWZTraceHook)(void *errhp, sword status, ub4 direction, ub4 api_id,
                              const char *record);
/**
 * @brief Installs the function that receives every trace record.
 * @param[in] hook the hook, or NULL to send records to the default sink
 *                 again (the file named by QWZ_TRACE_FILE, else stderr).
 *
 * The hook gets the error handle, the status (0 on entry), the direction
 * (1 entry, 0 exit), the call's API id and the formatted record: the
 * function's name in angle brackets, then one line per traced argument
 * ("\t<type>     \t<value>"). A non-zero result of the hook is returned by
 * the traced call instead of its own (on entry the call then does nothing).
 * Records are produced only while ::qwz_trace_flag is non-zero.
 * @code
 *   static sword show(void *e, sword st, ub4 dir, ub4 id, const char *rec)
 *   { fprintf(stderr, "%s\n", rec); return 0; }
 *   QWZTraceSetHook(show); qwz_trace_flag = 1;
 *   QWZDateLastDay(err, &d, &r);   // two records, both beginning "<QWZDateLastDay>\n"
 * @endcode
 */
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
/**
 * @brief Converts a float, double or long double into a ::QWZNumber.
 * @param[in]  errhp       the error handle.
 * @param[in]  rnum        the real value.
 * @param[in]  rnum_length sizeof the real's type.
 * @param[out] number      receives the number.
 * @retval QWZ_SUCCESS the number was written.
 * @retval QWZ_ERROR   800201, 800085, 800202 or 800203 as listed above.
 * @code
 *   double x = 1.5; QWZNumber n;
 *   QWZNumberFromReal(err, &x, sizeof x, &n);   // QWZ_SUCCESS
 *   x = 1.0 / 0.0;
 *   QWZNumberFromReal(err, &x, sizeof x, &n);   // QWZ_ERROR, 800203
 *                                               // "the real number is not finite."
 * @endcode
 */
QWZ_API sword QWZNumberFromReal(QWZError *errhp, const void *rnum, uword rnum_length,
                                QWZNumber *number);
/**
 * @brief Converts a ::QWZNumber into a float, double or long double.
 * @param[in]  errhp      the error handle.
 * @param[in]  number     the number.
 * @param[in]  rsl_length sizeof the real's type.
 * @param[out] rsl        receives the value.
 * @retval QWZ_SUCCESS the value was written.
 * @retval QWZ_ERROR   800085, 800201, 800202, 800204 or 800205 as listed
 *                     above.
 * @code
 *   double y;
 *   QWZNumberToReal(err, &n, sizeof y, &y);     // QWZ_SUCCESS, y == 1.5
 * @endcode
 */
QWZ_API sword QWZNumberToReal(QWZError *errhp, const QWZNumber *number, uword rsl_length,
                              void *rsl);

/* ---- the date family ------------------------------------------------------
 * Every date function validates its error handle, reports a NULL pointer as
 * "parameter N is NULL" (21560) and an invalid input date as "date format is
 * invalid" (11104, state 22007). */

/**
 * @brief Moves a date by whole days.
 * @param[in]  errhp  the error handle.
 * @param[in]  date   the date (checked).
 * @param[in]  days   the days to add, negative to go back.
 * @param[out] result receives the moved date (may be @p date itself).
 * @retval QWZ_SUCCESS the result was written.
 * @retval QWZ_ERROR   @p date NULL (parameter 2) or @p result NULL
 *                     (parameter 4): 21560; @p date invalid: 11104.
 *
 * Quirks: the date goes through mktime() as standard time and comes back
 * through localtime(), so in a zone with summer time a result in summer
 * shows one hour more (and 23:30 may become 00:30 of the next day); in UTC
 * the arithmetic is exact. days * 86400 is formed in 32 bits, so more than
 * 24855 days either way wrap.
 * @code
 *   QWZDate d = {2024, 2, 28, 0, 0, 0}, r;
 *   QWZDateAddDays(err, &d, 1, &r);        // 2024-02-29 00:00:00
 *   QWZDate e = {2024, 12, 31, 23, 59, 59};
 *   QWZDateAddDays(err, &e, 1, &r);        // 2025-01-01 23:59:59 (TZ=UTC)
 *   QWZDate s = {2024, 3, 30, 12, 0, 0};   // TZ=CET-1CEST,M3.5.0,M10.5.0/3
 *   QWZDateAddDays(err, &s, 1, &r);        // 2024-03-31 13:00:00
 * @endcode
 */
QWZ_API sword QWZDateAddDays(QWZError *errhp, const QWZDate *date, sb4 days, QWZDate *result);
/**
 * @brief Moves a date by calendar months.
 * @param[in]  errhp  the error handle.
 * @param[in]  date   the date (checked).
 * @param[in]  months the months to add, negative to go back.
 * @param[out] result receives the moved date.
 * @retval QWZ_SUCCESS the result was written.
 * @retval QWZ_ERROR   @p date NULL (parameter 2), @p result NULL
 *                     (parameter 4): 21560; @p date invalid: 11104.
 *
 * The last day of a month maps to the last day of the target month; a day
 * that the target month lacks becomes its last day. Quirks: the time
 * fields take the local-time round trip of QWZDateAddDays(); the source is
 * read after the result is written, so passing the same record as @p date
 * and @p result gives day 1 of the target month.
 * @code
 *   QWZDate d = {2024, 1, 31, 10, 30, 0}, r;
 *   QWZDateAddMonths(err, &d, 1, &r);      // 2024-02-29 10:30:00
 *   QWZDate e = {2023, 4, 30, 0, 0, 0};
 *   QWZDateAddMonths(err, &e, 1, &r);      // 2023-05-31 (last day to last day)
 *   QWZDate f = {2024, 2, 29, 0, 0, 0};
 *   QWZDateAddMonths(err, &f, 12, &r);     // 2025-02-28
 * @endcode
 */
QWZ_API sword QWZDateAddMonths(QWZError *errhp, const QWZDate *date, sb4 months,
                               QWZDate *result);
/**
 * @brief Copies a valid date.
 * @param[in]  errhp the error handle.
 * @param[in]  from  the date (checked).
 * @param[out] to    receives the copy (may be @p from).
 * @retval QWZ_SUCCESS copied.
 * @retval QWZ_ERROR   @p from NULL (parameter 2) or @p to NULL
 *                     (parameter 3): 21560; @p from invalid: 11104.
 */
QWZ_API sword QWZDateAssign(QWZError *errhp, const QWZDate *from, QWZDate *to);
/**
 * @brief Reports what is wrong with a date, as validity flags.
 * @param[in]  errhp the error handle.
 * @param[in]  date  the date.
 * @param[out] valid receives 0 or an OR of ::DATE_INVALID_DAY,
 *                   ::DATE_INVALID_MONTH, ::DATE_INVALID_YEAR,
 *                   ::DATE_INVALID_HOUR, ::DATE_INVALID_MINUTE,
 *                   ::DATE_INVALID_SECOND, ::DATE_YEAR_ZERO.
 * @retval QWZ_SUCCESS whether or not the date is valid (no diagnostic for an
 *                     invalid date).
 * @retval QWZ_ERROR   @p date NULL (parameter 2) or @p valid NULL
 *                     (parameter 3): 21560.
 *
 * Year below -4712 or above 9999 gives 0x10 and year 0 gives 0x2000 (these
 * two replace rather than add); the day is examined only when the month is
 * valid; leap years follow the Gregorian rule for every year.
 * @code
 *   QWZDate d = {2023, 2, 30, 0, 0, 0}; uword v;
 *   QWZDateCheck(err, &d, &v);             // QWZ_SUCCESS, v == 0x1
 *   QWZDate h = {2024, 1, 1, 24, 60, 60};
 *   QWZDateCheck(err, &h, &v);             // v == 0x540
 * @endcode
 */
QWZ_API sword QWZDateCheck(QWZError *errhp, const QWZDate *date, uword *valid);
/**
 * @brief Orders two dates (all six fields).
 * @param[in]  errhp  the error handle.
 * @param[in]  date1  the first date (checked).
 * @param[in]  date2  the second date (checked).
 * @param[out] result receives 1, 0 or -1 as @p date1 is later than, equal
 *                    to or earlier than @p date2.
 * @retval QWZ_SUCCESS compared.
 * @retval QWZ_ERROR   @p date1 NULL (parameter 2), @p date2 NULL
 *                     (parameter 3), @p result NULL (parameter 4): 21560;
 *                     either date invalid: 11104.
 * @code
 *   QWZDate a = {2024, 5, 17, 0, 0, 0}, b = {2024, 5, 16, 0, 0, 0}; sword c;
 *   QWZDateCompare(err, &a, &b, &c);       // c == 1
 * @endcode
 */
QWZ_API sword QWZDateCompare(QWZError *errhp, const QWZDate *date1, const QWZDate *date2,
                             sword *result);
/**
 * @brief Counts whole days from one date to another; times of day are
 *        ignored.
 * @param[in]  errhp    the error handle.
 * @param[in]  date1    the later date for a positive count (checked).
 * @param[in]  date2    the earlier date (checked).
 * @param[out] num_days receives the days from @p date2 to @p date1.
 * @retval QWZ_SUCCESS counted.
 * @retval QWZ_ERROR   as QWZDateCompare(), with @p num_days as parameter 4.
 * @code
 *   QWZDate a = {2024, 3, 1, 10, 0, 0}, b = {2024, 2, 28, 23, 59, 0}; sb4 n;
 *   QWZDateDaysBetween(err, &a, &b, &n);   // n == 2
 * @endcode
 */
QWZ_API sword QWZDateDaysBetween(QWZError *errhp, const QWZDate *date1, const QWZDate *date2,
                                 sb4 *num_days);
/**
 * @brief Reads a date from text under a format model.
 * @param[in]  errhp        the error handle.
 * @param[in]  date_str     the text, NUL-terminated.
 * @param[in]  d_str_length how many characters of the text to read (not 0).
 * @param[in]  fmt          the format model, NUL-terminated.
 * @param[in]  fmt_length   how many characters of the model to use (not 0).
 * @param[in]  lang_name    only traced (may be NULL).
 * @param[in]  lang_length  only traced.
 * @param[out] date         receives the date.
 * @retval QWZ_SUCCESS the date was read and is valid.
 * @retval QWZ_ERROR   @p date_str NULL (parameter 2), @p date NULL
 *                     (parameter 8), @p fmt NULL (parameter 4): 21560;
 *                     @p fmt_length 0 or a refused model: 11104 "format
 *                     string is invalid"; @p d_str_length 0, text not
 *                     matching, or an invalid date: 11104 "date format is
 *                     invalid".
 *
 * Texts: the text and the model are read up to their NUL, trimmed of
 * leading and trailing blanks, then cut at the given length; a model longer
 * than 127 characters before trimming is refused whatever the length. So
 * "  2024-05-17" with length 10 reads 2024-05-17.
 *
 * Reading: each field takes up to its width of digits; any one non-digit
 * character of the text stands for any literal of the model
 * ('YYYY-MM-DD' also reads '2024/05/17'); text after the last token is
 * ignored. A missing year or month takes the current local one; day
 * defaults to 1, time fields to 0. Refused models: a letter or digit as a
 * literal, a keyword not among YYYY SYYYY MM DD HH HH12 HH24 MI SS FF1-FF5
 * TZH TZM, a keyword twice, two fraction keywords. There is no default
 * model.
 * @code
 *   QWZDate d;
 *   QWZDateFromText(err, (const QWZtext *)"17.05.2024", 10,
 *                   (const QWZtext *)"DD.MM.YYYY", 10, NULL, 0, &d);
 *                                          // 2024-05-17 00:00:00
 *   QWZDateFromText(err, (const QWZtext *)"31.02.2024", 10,
 *                   (const QWZtext *)"DD.MM.YYYY", 10, NULL, 0, &d);
 *                                          // QWZ_ERROR, 11104 "date format is invalid"
 * @endcode
 */
QWZ_API sword QWZDateFromText(QWZError *errhp, const QWZtext *date_str, ub4 d_str_length,
                              const QWZtext *fmt, ub1 fmt_length, const QWZtext *lang_name,
                              ub4 lang_length, QWZDate *date);
/**
 * @brief The last day of a date's month, time of day kept.
 * @param[in]  errhp    the error handle.
 * @param[in]  date     the date (checked).
 * @param[out] last_day receives the date with the month's last day.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   @p date NULL (parameter 2) or @p last_day NULL
 *                     (parameter 3): 21560; @p date invalid: 11104.
 * @code
 *   QWZDate d = {2024, 2, 10, 13, 14, 15}, r;
 *   QWZDateLastDay(err, &d, &r);           // 2024-02-29 13:14:15
 * @endcode
 */
QWZ_API sword QWZDateLastDay(QWZError *errhp, const QWZDate *date, QWZDate *last_day);
/**
 * @brief The first date after a date that falls on a given weekday, with
 *        the same time of day.
 * @param[in]  errhp      the error handle.
 * @param[in]  date       the date (checked).
 * @param[in]  day_p      the weekday in English: the full name or a prefix
 *                        of at least six letters, any case.
 * @param[in]  day_length its length (6 to 128).
 * @param[out] next_day   receives the date.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   @p date NULL (parameter 2), @p day_p NULL
 *                     (parameter 3), @p next_day NULL (parameter 5): 21560;
 *                     @p day_length 5 or less (checked before @p next_day),
 *                     a non-letter, or no weekday matched: 1846, state
 *                     "1846", "ERROR: [QWZ-1846][QWZ Driver].week format is
 *                     invalid\n"; @p date invalid: 11104.
 *
 * The same weekday moves a full week on. The step goes through local time
 * like QWZDateAddDays().
 * @code
 *   QWZDate d = {2024, 1, 1, 10, 0, 0}, r;     // a Monday
 *   QWZDateNextDay(err, &d, (const QWZtext *)"Monday", 6, &r);
 *                                              // 2024-01-08 10:00:00
 *   QWZDateNextDay(err, &d, (const QWZtext *)"mon", 3, &r);
 *                                              // QWZ_ERROR, 1846
 * @endcode
 */
QWZ_API sword QWZDateNextDay(QWZError *errhp, const QWZDate *date, const QWZtext *day_p,
                             ub4 day_length, QWZDate *next_day);
/**
 * @brief The current local date and time, to the second.
 * @param[in]  errhp    the error handle.
 * @param[out] sys_date receives the date.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   @p sys_date NULL (parameter 2): 21560.
 */
QWZ_API sword QWZDateSysDate(QWZError *errhp, QWZDate *sys_date);
/**
 * @brief Writes a date as text under a format model.
 * @param[in]     errhp       the error handle.
 * @param[in]     date        the date (checked).
 * @param[in]     fmt         the format model, NUL-terminated.
 * @param[in]     fmt_length  how many characters of the model to use.
 * @param[in]     lang_name   only traced (may be NULL).
 * @param[in]     lang_length only traced.
 * @param[in]     buf_size    the capacity of @p buf; read, not updated.
 * @param[out]    buf         receives the text and its NUL.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   @p date NULL (parameter 2), @p fmt NULL (3),
 *                     @p buf_size NULL (7), @p buf NULL (8): 21560;
 *                     @p date invalid: 11104 "date format is invalid"; an
 *                     unsupported keyword: 11104 "format string is
 *                     invalid"; text longer than *@p buf_size: 11104, state
 *                     "01877", "ERROR: [QWZ-11104][QWZ Driver]. buf is too
 *                     small \n"; a literal letter or digit, a repeated
 *                     keyword, an empty or too long model: 11104 "ERROR:
 *                     [QWZ-11104][QWZ Driver]. format or date string is
 *                     invalid\n".
 *
 * Texts: the model is read up to its NUL, trimmed of leading and trailing
 * blanks, then cut at @p fmt_length; a model longer than 127 characters
 * before trimming is refused. The text is copied with its terminator: a
 * capacity equal to the text's length is accepted, so @p buf must hold one
 * byte more than *@p buf_size. On failure @p buf is untouched.
 *
 * Quirks: everything after the first SS is dropped; HH and HH12 print the
 * 24-hour hour; fraction keywords print zeros and TZH/TZM nothing (a date
 * has neither); YYYY needs a year of four characters ("%04d": -999 to 9999)
 * and SYYYY one of five.
 * @code
 *   QWZDate d = {2024, 5, 17, 10, 20, 30};
 *   QWZtext buf[32]; ub4 size = sizeof buf - 1;
 *   QWZDateToText(err, &d, (const QWZtext *)"DD.MM.YYYY", 10, NULL, 0, &size, buf);
 *                                          // "17.05.2024"
 *   QWZDateToText(err, &d, (const QWZtext *)"HH24:MI:SS YYYY", 15, NULL, 0, &size, buf);
 *                                          // "10:20:30"
 * @endcode
 */
QWZ_API sword QWZDateToText(QWZError *errhp, const QWZDate *date, const QWZtext *fmt,
                            ub1 fmt_length, const QWZtext *lang_name, ub4 lang_length,
                            ub4 *buf_size, QWZtext *buf);
/**
 * @brief Validates its arguments only: no conversion is done and @p date2
 *        is not written.
 * @param[in]  errhp       the error handle.
 * @param[in]  date1       a date.
 * @param[in]  zon1        a zone text.
 * @param[in]  zon1_length its length.
 * @param[in]  zon2        a zone text.
 * @param[in]  zon2_length its length.
 * @param[out] date2       left as it is.
 * @retval QWZ_SUCCESS every pointer is set.
 * @retval QWZ_ERROR   @p date1 or @p date2 NULL: 21560 printed with
 *                     parameter 8; @p zon1 or @p zon2 NULL: printed with 2.
 */
QWZ_API sword QWZDateZoneToZone(QWZError *errhp, QWZDate *date1, QWZText *zon1, ub4 zon1_length,
                                QWZText *zon2, ub4 zon2_length, QWZDate *date2);

/* ---- the datetime family --------------------------------------------------
 * hndl is an environment or a session handle. */
/**
 * @brief Copies a valid datetime into a descriptor of the same type
 *        (fields, fraction and zone).
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  from  the source (checked).
 * @param[out] to    the target.
 * @retval QWZ_SUCCESS copied.
 * @retval QWZ_ERROR   types differ: 11105, state "22008", "ERROR:
 *                     [QWZ-21405][QWZ Driver].type is diff\n"; @p from
 *                     invalid: 22007 "date format is invalid".
 * @retval other       a bad handle or descriptor: the validator's value
 *                     (bad @p hndl: 800001 "Invalid handle."; bad @p from
 *                     or @p to: 21560 printed with parameter 4).
 */
QWZ_API sword QWZDateTimeAssign(void *hndl, QWZError *errhp, const QWZDateTime *from,
                                QWZDateTime *to);
/**
 * @brief Reports what is wrong with a datetime, as validity flags.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  date  the datetime.
 * @param[out] valid receives 0 or an OR of the DATE_INVALID_* flags, and
 *                   for types 67 and 69 ::DATETIME_INVALID_TZ_HOUR and
 *                   ::DATETIME_INVALID_TZ_MINUTE.
 * @retval QWZ_SUCCESS whether or not the value is valid.
 * @retval QWZ_ERROR   @p valid NULL: 21560 (parameter 4).
 * @retval other       bad @p hndl (800001) or @p date (21560, parameter 3):
 *                     the validator's value.
 *
 * Date fields are examined for types 65, 68 and 69, time fields for 66 to
 * 69, the zone for 67 and 69 (hour -12 to 14, minute -59 to 59); the
 * fraction never; a type-70 value always gives 0.
 */
QWZ_API sword QWZDateTimeCheck(void *hndl, QWZError *errhp, const QWZDateTime *date,
                               ub4 *valid);
/**
 * @brief Orders two datetimes of the same type.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  date1  the first datetime (checked).
 * @param[in]  date2  the second datetime (checked).
 * @param[out] result receives 1, 0 or -1.
 * @retval QWZ_SUCCESS compared.
 * @retval QWZ_ERROR   @p result NULL: 21560 (parameter 5); an invalid value:
 *                     22007 (parameter 3 or 4); types differ: 11105 "type
 *                     is diff".
 * @retval other       bad handle or descriptor: the validator's value.
 *
 * Dates (65) compare year, month, day; times compare hour, minute, second,
 * fraction; timestamps both. Types 67 and 69 compare after both are moved
 * to UTC (for 67 the clock time alone counts). A type-70 value always
 * compares equal.
 * @code
 *   // 2024-03-15 10:00 +02:00 against 2024-03-15 09:00 +01:00 (type 69)
 *   QWZDateTimeCompare(env, err, a, b, &c);   // c == 0, the same instant
 * @endcode
 */
QWZ_API sword QWZDateTimeCompare(void *hndl, QWZError *errhp, const QWZDateTime *date1,
                                 const QWZDateTime *date2, sword *result);
/**
 * @brief Sets a datetime descriptor from fields and an optional zone text.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[out] datetime the descriptor; its type decides the fields written.
 * @param[in]  year     year (types 65, 68, 69).
 * @param[in]  month    month.
 * @param[in]  day      day.
 * @param[in]  hour     hour (types 66 to 69).
 * @param[in]  min      minute.
 * @param[in]  sec      second.
 * @param[in]  fsec     fraction, stored as given (types 66 to 69).
 * @param[in]  timezone the zone for types 67 and 69 as "[+|-]HH:MM",
 *                      NUL-terminated; NULL takes the process's standard
 *                      offset (summer time never applied).
 * @param[in]  timezone_length how many characters of the zone text to use.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   the value fails QWZDateTimeCheck(): 22007, state
 *                     "22007", "ERROR: [QWZ-22007][QWZ Driver].date format
 *                     is invalid\n", and the previous value is restored; a
 *                     zone text that does not read as "[+|-]HH[:MM]" (for
 *                     example "ab"): -1 with no diagnostic, the new fields
 *                     staying written.
 * @retval other       bad handle or descriptor: the validator's value.
 *
 * Fields the type does not carry are set to 0. The zone text is read with
 * the model "TZH:TZM": read up to its NUL, trimmed of blanks, cut at
 * @p timezone_length; a leading '-' makes hours and minutes negative.
 * A type-70 descriptor is never written (status 0).
 * @code
 *   QWZDateTimeConstruct(env, err, ts, 2024, 3, 15, 10, 30, 0, 0,
 *                        (QWZText *)"-05:30", 6);   // 2024-03-15 10:30:00 -05:30
 *   QWZDateTimeConstruct(env, err, ts, 2024, 13, 1, 0, 0, 0, 0, NULL, 0);
 *                                                   // QWZ_ERROR, 22007
 * @endcode
 */
QWZ_API sword QWZDateTimeConstruct(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                   sb2 year, ub1 month, ub1 day, ub1 hour, ub1 min, ub1 sec,
                                   ub4 fsec, QWZText *timezone, size_t timezone_length);
/**
 * @brief Converts a datetime into the type of another descriptor, without
 *        moving it between zones.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  indate  the source.
 * @param[out] outdate the target; keeps its type.
 * @retval QWZ_SUCCESS converted.
 * @retval QWZ_ERROR   an impossible pair (a date to a time or to 70, a time
 *                     to a date or to 70, a timestamp to 70, any type-70
 *                     source): 800160 "the intervals or datetimes are not
 *                     mutually comparable" (no final full stop).
 * @retval other       bad handle or descriptor: 800001, the validator's value.
 *
 * A zoned target gets the source's zone when the source has one, else the
 * process's standard offset; a time made into a timestamp gets today's
 * local date. The source is not checked.
 */
QWZ_API sword QWZDateTimeConvert(void *hndl, QWZError *errhp, QWZDateTime *indate,
                                 QWZDateTime *outdate);
/**
 * @brief Reads a packed column value into a datetime descriptor.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  inarray  the bytes (layout by @p type, see below).
 * @param[in]  len      not read.
 * @param[in]  type     the class: ::DATETIME_CLASS_DATE (4 bytes: century +
 *                      100, year of century + 100, month, day),
 *                      ::DATETIME_CLASS_TIME (7: hour + 1, minute + 1,
 *                      second + 1, 4 bytes of nanoseconds, big-endian),
 *                      ::DATETIME_CLASS_TIME_TZ (9: as 185, then zone hour +
 *                      20, zone minute + 60), ::DATETIME_CLASS_TIMESTAMP (11:
 *                      date then time) or ::DATETIME_CLASS_TIMESTAMP_TZ (13).
 * @param[out] datetime the descriptor (its type is kept and checked against).
 * @param[in]  reftz    any valid interval descriptor (validated, not read).
 * @param[in]  fsprec   fraction digits kept (rounded; stored in nanoseconds).
 * @retval QWZ_SUCCESS read.
 * @retval QWZ_ERROR   @p inarray NULL: 21560 (parameter 4); another class:
 *                     800156 "the datetime class is invalid."; the value is
 *                     invalid for the descriptor's type: 22007.
 * @retval other       bad @p hndl or @p reftz: 800001; bad @p datetime:
 *                     21560 (parameter 3); the validator's value.
 *
 * Zoned classes hold the UTC time: the zone is added to hour and minute
 * with no carry. Class 184 bytes {120, 124, 2, 29} give 2024-02-29.
 */
QWZ_API sword QWZDateTimeFromArray(void *hndl, QWZError *errhp, ub1 *inarray, ub4 *len,
                                   ub1 type, QWZDateTime *datetime, QWZInterval *reftz,
                                   ub1 fsprec);
/**
 * @brief Reads a datetime from text under a format model.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  date_str     the text, NUL-terminated.
 * @param[in]  dstr_length  how many characters of the text to read.
 * @param[in]  fmt          the format model, NUL-terminated.
 * @param[in]  fmt_length   how many characters of the model to use.
 * @param[in]  lang_name    only traced (may be NULL).
 * @param[in]  lang_length  only traced.
 * @param[out] datetime     receives the value; its type is kept.
 * @retval QWZ_SUCCESS read and valid.
 * @retval QWZ_ERROR   @p date_str or @p fmt NULL: 21560 (both printed with
 *                     parameter 4); @p dstr_length SIZE_MAX: 800155 "string
 *                     is too long for internal buffer."; an unsupported
 *                     keyword or other refused model: 11104 "format string
 *                     is invalid"; TZH/TZM in the model for a type other
 *                     than 67 and 69: 800153 "date format not recognized.";
 *                     a value that is invalid (also a text that did not
 *                     match: the defaults are then not applied): 22007
 *                     "date format is invalid".
 * @retval other       bad @p hndl (800001) or @p datetime (21560, parameter
 *                     3): the validator's value.
 *
 * Texts are read as for QWZDateFromText() (NUL-terminated, trimmed, cut at
 * the length; models over 127 characters refused). FF1-FF5 read exactly
 * that many digits and store nanoseconds. Quirk: while no separator has
 * been passed a '-' counts as a sign, and a literal consumes any
 * non-digit, so in "12:00:00 -05:00" under "HH24:MI:SS TZH:TZM" the blank
 * literal takes the '-' and the zone is +05:00; QWZDateTimeConstruct()'s
 * zone text keeps the sign. The zone minute is not negated here.
 * @code
 *   QWZDateTimeFromText(env, err, (QWZText *)"2024-05-17 10:20:30 +05:30", 26,
 *                       (QWZText *)"YYYY-MM-DD HH24:MI:SS TZH:TZM", 29,
 *                       NULL, 0, ts);      // type 69: 2024-05-17 10:20:30 +05:30
 * @endcode
 */
QWZ_API sword QWZDateTimeFromText(void *hndl, QWZError *errhp, QWZText *date_str,
                                  size_t dstr_length, QWZText *fmt, ub1 fmt_length,
                                  QWZText *lang_name, size_t lang_length,
                                  QWZDateTime *datetime);
/**
 * @brief Reads the date fields of a datetime.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  datetime the descriptor.
 * @param[out] year     receives the year.
 * @param[out] month    receives the month.
 * @param[out] day      receives the day.
 * @retval QWZ_SUCCESS read (0, 0, 0 for types 66 and 67).
 * @retval QWZ_ERROR   an output NULL: 800058 "the year or month or day could
 *                     not be null."; all three date fields 0 (other types):
 *                     800057 "not a date.".
 * @retval other       bad handle or descriptor: 800001.
 */
QWZ_API sword QWZDateTimeGetDate(void *hndl, QWZError *errhp, const QWZDateTime *datetime,
                                 sb2 *year, ub1 *month, ub1 *day);
/**
 * @brief Reads the time fields of a datetime.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  datetime the descriptor.
 * @param[out] hour     receives the hour.
 * @param[out] min      receives the minute.
 * @param[out] sec      receives the second.
 * @param[out] fsec     receives the fraction (0 for types 66 and 67, even
 *                      when one was stored).
 * @retval QWZ_SUCCESS read.
 * @retval QWZ_ERROR   an output NULL: 800059 "the hour or minute or second
 *                     or fraction could not be null."; type 65: 800060
 *                     "specified field not found in datetime or interval.".
 * @retval other       bad handle or descriptor: 800001.
 */
QWZ_API sword QWZDateTimeGetTime(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                 ub1 *hour, ub1 *min, ub1 *sec, ub4 *fsec);
/**
 * @brief Writes a datetime's zone offset as "+HH:MM".
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]     datetime the descriptor (type 67 or 69).
 * @param[out]    buf      receives the text and its NUL.
 * @param[in,out] buflen   in: the capacity (at least 7); out: the text's
 *                         length (6).
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   @p buf or @p buflen NULL, or a capacity below 7:
 *                     800027 "The buffer is null."; types 65, 66, 68, 70:
 *                     800083 "datetime does not contain a time zone.".
 * @retval other       bad handle or descriptor: 800001.
 *
 * The sign comes from the hours alone: 0 hours -30 minutes prints +00:30.
 * @code
 *   // a type-69 value constructed with "-03:30"
 *   ub1 z[8]; ub4 zl = sizeof z;
 *   QWZDateTimeGetTimeZoneName(env, err, ts, z, &zl);   // "-03:30", zl == 6
 * @endcode
 */
QWZ_API sword QWZDateTimeGetTimeZoneName(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                         ub1 *buf, ub4 *buflen);
/**
 * @brief Reads a datetime's zone offset.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  datetime the descriptor (type 67 or 69).
 * @param[out] hour     receives the hours (signed).
 * @param[out] min      receives the minutes (same sign as the hours when
 *                      made by this library).
 * @retval QWZ_SUCCESS read.
 * @retval QWZ_ERROR   an output NULL: 800084 "the hour or minute could not
 *                     be null."; types 65, 66, 68, 70: 800083 "datetime does
 *                     not contain a time zone.".
 * @retval other       bad handle or descriptor: 800001.
 */
QWZ_API sword QWZDateTimeGetTimeZoneOffset(void *hndl, QWZError *errhp,
                                           const QWZDateTime *datetime, sb1 *hour, sb1 *min);
/**
 * @brief Adds an interval to a timestamp with zone.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  datetime    the timestamp (type 69).
 * @param[in]  inter       the interval, either kind.
 * @param[out] outdatetime receives the clock fields of the result.
 * @retval QWZ_SUCCESS added.
 * @retval QWZ_ERROR   @p datetime not of type 69: 800130 "inconsistent
 *                     datatypes: expected %s got %s." (stored unexpanded);
 *                     a result that fails the check (31 January plus one
 *                     month, a day-second step onto an invalid field):
 *                     22007 "date format is invalid" (parameter 4); the
 *                     result may hold the invalid value.
 * @retval other       bad handle or descriptor: 800001, the validator's value.
 *
 * Year-month intervals change year and month only (no end-of-month
 * clamping). Day-second intervals go through mktime() as standard time and
 * localtime(), like QWZDateAddDays(). The fraction is added as it is
 * (datetime nanoseconds plus interval units of 1/100000 s), with no carry.
 * The zone fields of @p outdatetime are not written: a fresh result has
 * offset 0, and @p datetime itself as the result keeps its zone.
 * @code
 *   // ts: 2024-03-15 10:30:00 +02:00, iv: day-second "1 02:03:04"
 *   QWZDateTimeIntervalAdd(env, err, ts, iv, ts);  // 2024-03-16 12:33:04 +02:00 (TZ=UTC)
 * @endcode
 */
QWZ_API sword QWZDateTimeIntervalAdd(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                     QWZInterval *inter, QWZDateTime *outdatetime);
/**
 * @brief Subtracts an interval from a timestamp with zone.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]     datetime    the timestamp (type 69).
 * @param[in,out] inter       the interval; left negated afterwards.
 * @param[out]    outdatetime receives the clock fields of the result.
 * @retval QWZ_SUCCESS subtracted.
 * @retval QWZ_ERROR   @p datetime not of type 69: 800130 "inconsistent
 *                     datatypes: expected %s got %s." (stored unexpanded);
 *                     a result that fails the check (31 January plus one
 *                     month, a day-second step onto an invalid field):
 *                     22007 "date format is invalid" (parameter 4); the
 *                     result may hold the invalid value.
 * @retval other       bad handle or descriptor: 800001, the validator's value.
 *
 * Year-month intervals change year and month only (no end-of-month
 * clamping). Day-second intervals go through mktime() as standard time and
 * localtime(), like QWZDateAddDays(). The fraction is added as it is
 * (datetime nanoseconds plus interval units of 1/100000 s), with no carry.
 * The zone fields of @p outdatetime are not written: a fresh result has
 * offset 0, and @p datetime itself as the result keeps its zone.
 * Further quirks: a month that reaches 0 fails (March minus 3 months);
 * a negative fraction borrows one second. With @p datetime itself as
 * @p outdatetime the month test reads the month already written, so March
 * minus 3 months then gives December of the year before.
 */
QWZ_API sword QWZDateTimeIntervalSub(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                     QWZInterval *inter, QWZDateTime *outdatetime);
/**
 * @brief The interval from one datetime to another of the same type.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  indate1 the later value for a positive result.
 * @param[in]  indate2 the earlier value.
 * @param[out] inter   receives @p indate1 minus @p indate2 in its own kind.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   types differ: 800129 "the intervals or datetimes are
 *                     not mutually comparable."; a result that fails
 *                     QWZIntervalCheck(): 11104 "interval is invalid 3 ".
 * @retval other       bad handle or descriptor: 800001.
 *
 * Types 67 and 69 are moved to UTC first. Year-month results count months
 * of year and month; day-second results count the days of the month, the
 * time, and 31 days per month of difference. Fractions are in units of
 * 1/100000 s.
 * @code
 *   // 2024-03-30 12:00:00 minus 2024-03-29 10:30:15 (type 68), day-second:
 *   QWZDateTimeSubtract(env, err, a, b, iv);   // 1 01:29:45
 * @endcode
 */
QWZ_API sword QWZDateTimeSubtract(void *hndl, QWZError *errhp, QWZDateTime *indate1,
                                  QWZDateTime *indate2, QWZInterval *inter);
/**
 * @brief The current local timestamp with zone; the descriptor becomes type
 *        69 whatever it was.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[out] sys_date receives the value.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   gettimeofday() failed (no diagnostic).
 * @retval other       bad handle or descriptor: 800001.
 *
 * Quirks: the fraction is in units of 10 microseconds (at most 99999); the
 * clock fields show summer time while the zone is the standard offset.
 */
QWZ_API sword QWZDateTimeSysTimeStamp(void *hndl, QWZError *errhp, QWZDateTime *sys_date);
/**
 * @brief Writes a datetime's date and time as 8 packed bytes.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  datetime the descriptor.
 * @param[in]  reftz    not read.
 * @param[out] outarray receives century + 100, year of century + 100,
 *                      month, day, hour + 1, minute + 1, second + 1 and 0
 *                      (at least 8 bytes; no fraction, no zone).
 * @param[out] len      receives the length up to the first zero byte (7,
 *                      or 2 for a time-only value).
 * @param[in]  fsprec   only traced.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   @p outarray NULL: 21560 (parameter 5); @p len NULL:
 *                     21560 (parameter 9).
 * @retval other       bad @p hndl (800001) or @p datetime (21560, parameter 3).
 * @code
 *   // 2024-02-29 10:20:30 gives {120, 124, 2, 29, 11, 21, 31, 0}, len 7
 * @endcode
 */
QWZ_API sword QWZDateTimeToArray(void *hndl, QWZError *errhp, QWZDateTime *datetime,
                                 QWZInterval *reftz, ub1 *outarray, ub4 *len, ub1 fsprec);
/**
 * @brief Writes a datetime as text under a format model.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  date        the datetime (checked).
 * @param[in]  fmt         the format model, NUL-terminated.
 * @param[in]  fmt_length  how many characters of the model to use.
 * @param[in]  fsprec      ignored (the fraction digits come from FF1-FF5).
 * @param[in]  lang_name   only traced (may be NULL).
 * @param[in]  lang_length only traced.
 * @param[in]  buf_size    the capacity of @p buf; read, not updated.
 * @param[out] buf         receives the text and its NUL.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   @p fmt NULL (parameter 4), @p buf_size NULL (9),
 *                     @p buf NULL (10): 21560; the value invalid: 22007;
 *                     an unsupported keyword: 11104 "format string is
 *                     invalid"; text longer than *@p buf_size: 11104
 *                     "buf is too small", state "01877"; a literal letter
 *                     or digit, a repeated keyword, an empty or too long
 *                     model, a year of the wrong width: no diagnostic.
 * @retval other       bad @p hndl (800001) or @p date (21560, parameter 3).
 *
 * Texts: as QWZDateToText() (model read up to its NUL, trimmed, cut at
 * @p fmt_length; text copied with its terminator, so @p buf must hold one
 * byte more than *@p buf_size). Fractions print the first digits of the
 * nanosecond count written without leading zeros: 123000000 gives "123"
 * under FF3, 5000000 gives "500", 0 gives "000". TZH prints the sign and
 * hours ("-05"), TZM the minutes.
 * @code
 *   // 2024-05-17 10:20:30.123000000 -05:30 (type 69)
 *   QWZtext b[64]; ub4 n = sizeof b - 1;
 *   QWZDateTimeToText(env, err, ts, (const QWZtext *)"DD.MM.YYYY HH24:MI:SS.FF3 TZH:TZM",
 *                     33, 0, NULL, 0, &n, b);   // "17.05.2024 10:20:30.123 -05:30"
 * @endcode
 */
QWZ_API sword QWZDateTimeToText(void *hndl, QWZError *errhp, const QWZDateTime *date,
                                const QWZtext *fmt, ub1 fmt_length, ub1 fsprec,
                                const QWZtext *lang_name, size_t lang_length, ub4 *buf_size,
                                QWZtext *buf);

/* ---- the interval family ------------------------------------------------- */
/**
 * @brief Adds two intervals of the same kind.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  addend1 the first interval (checked).
 * @param[in]  addend2 the second interval (checked).
 * @param[out] result  receives the normalised sum; same kind as @p addend1
 *                     (may be an operand).
 * @retval QWZ_SUCCESS added.
 * @retval QWZ_ERROR   an operand invalid: 11104 "interval is invalid 3 " or
 *                     "... 4 "; kinds differ: 11105 "type is diff"; result
 *                     of another kind: 11105 "ERROR: [QWZ-11105][QWZ
 *                     Driver].type is invalid \n".
 * @retval other       bad handle or descriptor: 800001.
 *
 * Fractions carry at 100000; no overflow check.
 * @code
 *   // "+01-11" + "+00-01"
 *   QWZIntervalAdd(env, err, a, b, r);     // +02-00
 * @endcode
 */
QWZ_API sword QWZIntervalAdd(void *hndl, QWZError *errhp, QWZInterval *addend1,
                             QWZInterval *addend2, QWZInterval *result);
/**
 * @brief Copies a valid interval into a descriptor of the same kind.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  ininter  the source (checked).
 * @param[out] outinter the target.
 * @retval QWZ_SUCCESS copied.
 * @retval QWZ_ERROR   source invalid: 11104 "interval is invalid 3 ";
 *                     kinds differ: 11105 "type is diff".
 * @retval other       bad handle or descriptor: 800001.
 */
QWZ_API sword QWZIntervalAssign(void *hndl, QWZError *errhp, const QWZInterval *ininter,
                                QWZInterval *outinter);
/**
 * @brief Reports what is wrong with an interval, as validity flags.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  interval the interval.
 * @param[out] valid    receives 0 or an OR of ::INTERVAL_INVALID_MONTH,
 *                      ::INTERVAL_INVALID_HOUR, ::INTERVAL_INVALID_MINUTE,
 *                      ::INTERVAL_INVALID_SECOND, ::INTERVAL_INVALID_FRACTION.
 * @retval QWZ_SUCCESS whether or not the interval is valid.
 * @retval QWZ_ERROR   @p valid NULL: 21560 (parameter 4).
 * @retval other       bad handle or descriptor: 800001.
 *
 * The leading field (year or day) is never checked; mixed signs are not
 * flagged. Hour 24, minute 60, second -60 and fraction 100000 give 0x1540.
 */
QWZ_API sword QWZIntervalCheck(void *hndl, QWZError *errhp, const QWZInterval *interval,
                               ub4 *valid);
/**
 * @brief Orders two intervals of the same kind, field by field.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  inter1 the first interval (checked).
 * @param[in]  inter2 the second interval (checked).
 * @param[out] result receives 1, 0 or -1.
 * @retval QWZ_SUCCESS compared; also when @p result is NULL, which leaves
 *                     21560 (parameter 5) in the error handle.
 * @retval QWZ_ERROR   an operand invalid: 11104 "interval is invalid 3 "
 *                     (3 for either); kinds differ: 11105 "type is diff".
 * @retval other       bad handle or descriptor: 800001.
 *
 * No normalisation: year 1 month -11 compares greater than month 1.
 */
QWZ_API sword QWZIntervalCompare(void *hndl, QWZError *errhp, const QWZInterval *inter1,
                                 const QWZInterval *inter2, sword *result);
/**
 * @brief Divides an interval by a number.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  dividend the interval.
 * @param[in]  divisor  the number.
 * @param[out] result   receives the quotient; same kind as @p dividend.
 * @retval QWZ_SUCCESS divided.
 * @retval QWZ_ERROR   @p divisor NULL: 800085 "the number could not be
 *                     null."; kinds differ: 800158 "inconsistent datatypes:
 *                     expected %s got %s."; divisor 0: 800157 "divisor is
 *                     equal to zero.".
 * @retval other       bad handle or descriptor: 800001; a numeric runtime
 *                     error number, with no diagnostic (for example a
 *                     leading field too wide for the runtime's qualifier).
 * @code
 *   // "3 00:00:00" / 2
 *   QWZIntervalDivide(env, err, a, &two, r);   // +01 12:00:00.00000
 * @endcode
 */
QWZ_API sword QWZIntervalDivide(void *hndl, QWZError *errhp, QWZInterval *dividend,
                                QWZNumber *divisor, QWZInterval *result);
/**
 * @brief Sets an interval from a number of years (year-month) or days
 *        (day-second).
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[out] interval the interval; its kind decides the unit.
 * @param[in]  number   the number.
 * @retval QWZ_SUCCESS set.
 * @retval QWZ_ERROR   @p number NULL: 800085; the result fails
 *                     QWZIntervalCheck(): 11104 "interval is invalid 3 "
 *                     (the fields stay written).
 * @retval other       bad handle or descriptor: 800001; a numeric runtime
 *                     error number.
 *
 * Months are rounded (1.99 years gives 2-0); the day's rest is split into
 * hours, minutes, seconds and rounded 1/100000 s.
 * @code
 *   // 1.5 into a year-month interval: +01-06; into a day-second one:
 *   // +01 12:00:00.00000
 * @endcode
 */
QWZ_API sword QWZIntervalFromNumber(void *hndl, QWZError *errhp, QWZInterval *interval,
                                    QWZNumber *number);
/**
 * @brief Reads an interval from its text: "[+|-]Y-M" for year-month,
 *        "[+|-]D H:M:S[.F]" for day-second.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  inpstring the text, read up to its NUL (blanks allowed
 *                       anywhere).
 * @param[in]  str_len   must be below 128; otherwise not used.
 * @param[out] result    receives the fields, by its kind.
 * @retval QWZ_SUCCESS read.
 * @retval QWZ_ERROR   a text that does not have the shape: 800072 "the
 *                     literal string is invalid."; out of range: 800081
 *                     year (0 to 9999), 800082 month (0 to 11), 800074 day,
 *                     800075 hour, 800077 minute, 800078 second, 800080
 *                     fraction (0 to 999999); NULL text or @p str_len 128
 *                     or more: no diagnostic.
 * @retval other       bad handle or descriptor: 800001.
 *
 * The fraction digits are stored as written, in units of 1/100000 s: ".5"
 * stores 5, ".50000" stores 50000. A negative sign negates every field.
 * @code
 *   QWZIntervalFromText(env, err, (const QWZText *)"-1-6", 4, ym);
 *                                  // year -1, month -6
 *   QWZIntervalFromText(env, err, (const QWZText *)"1 24:00:00", 10, ds);
 *                                  // QWZ_ERROR, 800075
 * @endcode
 */
QWZ_API sword QWZIntervalFromText(void *hndl, QWZError *errhp, const QWZText *inpstring,
                                  size_t str_len, QWZInterval *result);
/**
 * @brief Reads the fields of a day-second interval.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[out] dy       receives the days.
 * @param[out] hr       receives the hours.
 * @param[out] mm       receives the minutes.
 * @param[out] ss       receives the seconds.
 * @param[out] fsec     receives the fraction (1/100000 s).
 * @param[in]  interval the interval (kind 63).
 * @retval QWZ_SUCCESS read.
 * @retval QWZ_ERROR   an output NULL: 800036 "the value address could not
 *                     be null.".
 * @retval other       bad handle, or not a day-second interval: 800001.
 */
QWZ_API sword QWZIntervalGetDaySecond(void *hndl, QWZError *errhp, sb4 *dy, sb4 *hr, sb4 *mm,
                                      sb4 *ss, sb4 *fsec, const QWZInterval *interval);
/**
 * @brief Reads the fields of a year-month interval.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[out] yr       receives the years.
 * @param[out] mnth     receives the months.
 * @param[in]  interval the interval (kind 62).
 * @retval QWZ_SUCCESS read.
 * @retval QWZ_ERROR   an output NULL: 800036.
 * @retval other       bad handle, or not a year-month interval: 800001.
 */
QWZ_API sword QWZIntervalGetYearMonth(void *hndl, QWZError *errhp, sb4 *yr, sb4 *mnth,
                                      const QWZInterval *interval);
/**
 * @brief Multiplies an interval by a number.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  inter   the interval.
 * @param[in]  nfactor the number.
 * @param[out] result  receives the product; same kind as @p inter.
 * @retval QWZ_SUCCESS multiplied.
 * @retval QWZ_ERROR   @p nfactor NULL: 800085; kinds differ: 800158.
 * @retval other       bad handle or descriptor: 800001; a numeric runtime
 *                     error number, with no diagnostic.
 * @code
 *   // "1 12:00:00" * 2
 *   QWZIntervalMultiply(env, err, a, &two, r);   // +03 00:00:00.00000
 * @endcode
 */
QWZ_API sword QWZIntervalMultiply(void *hndl, QWZError *errhp, QWZInterval *inter,
                                  QWZNumber *nfactor, QWZInterval *result);
/**
 * @brief Sets the fields of a day-second interval as given (no range check,
 *        no normalisation).
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  dy     days.
 * @param[in]  hr     hours.
 * @param[in]  mm     minutes.
 * @param[in]  ss     seconds.
 * @param[in]  fsec   fraction in 1/100000 s.
 * @param[out] result the interval (kind 63).
 * @retval QWZ_SUCCESS set.
 * @retval other       bad handle, or not a day-second interval: 800001.
 */
QWZ_API sword QWZIntervalSetDaySecond(void *hndl, QWZError *errhp, sb4 dy, sb4 hr, sb4 mm,
                                      sb4 ss, sb4 fsec, QWZInterval *result);
/**
 * @brief Sets the fields of a year-month interval as given (13 months stay
 *        13; QWZIntervalCheck() flags them).
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  yr     years.
 * @param[in]  mnth   months.
 * @param[out] result the interval (kind 62).
 * @retval QWZ_SUCCESS set.
 * @retval other       bad handle, or not a year-month interval: 800001.
 */
QWZ_API sword QWZIntervalSetYearMonth(void *hndl, QWZError *errhp, sb4 yr, sb4 mnth,
                                      QWZInterval *result);
/**
 * @brief Subtracts an interval from another of the same kind.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  minuend    the first interval (checked).
 * @param[in]  subtrahend the second interval (checked).
 * @param[out] result     receives the normalised difference.
 * @retval QWZ_SUCCESS subtracted.
 * @retval QWZ_ERROR   as QWZIntervalAdd().
 * @retval other       bad handle or descriptor: 800001.
 * @code
 *   // "0 00:00:01" - "0 00:00:00.50000"
 *   QWZIntervalSubtract(env, err, a, b, r);   // +00 00:00:00.50000
 * @endcode
 */
QWZ_API sword QWZIntervalSubtract(void *hndl, QWZError *errhp, QWZInterval *minuend,
                                  QWZInterval *subtrahend, QWZInterval *result);
/**
 * @brief An interval as a number of years (year-month) or days
 *        (day-second).
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  interval the interval (not checked).
 * @param[out] number   receives the number.
 * @retval QWZ_SUCCESS converted.
 * @retval QWZ_ERROR   @p number NULL: 800085.
 * @retval other       bad handle or descriptor: 800001; a numeric runtime
 *                     error number (recorded with the runtime's message).
 * @code
 *   // "+01-06" gives 1.5; "0 12:00:00" gives 0.5
 * @endcode
 */
QWZ_API sword QWZIntervalToNumber(void *hndl, QWZError *errhp, QWZInterval *interval,
                                  QWZNumber *number);
/**
 * @brief Writes an interval as text.
 * @param[in]  hndl  an environment or a session handle.
 * @param[in]  errhp the error handle.
 * @param[in]  interval  the interval (checked).
 * @param[in]  lfprec    leading-field digits (at most 9; a minimum width).
 * @param[in]  fsprec    fraction digits (at most 5; 0 for none).
 * @param[out] buffer    receives the text and its NUL; must hold a
 *                       NUL-terminated string (for instance empty) on entry.
 * @param[in]  buflen    its size.
 * @param[out] resultlen receives the text's length.
 * @retval QWZ_SUCCESS written.
 * @retval QWZ_ERROR   @p buffer NULL (parameter 6), @p resultlen NULL (8):
 *                     21560; an invalid interval: 11104 "interval is
 *                     invalid 3 "; the string already in @p buffer is not
 *                     shorter than @p buflen: 11104 "buf is too small",
 *                     state "01877".
 * @retval other       bad handle or descriptor: 800001.
 *
 * Shapes: "+YY-MM" / "-YY-MM"; "+DD HH:MM:SS[.F]". Quirks: the buffer test
 * measures what the buffer already holds, and the text is then written
 * without bound (the longest is 31 characters with its NUL). With
 * @p fsprec 0 the sign is '+' only when all five fields are above 0
 * ("1 02:03:04" prints -01 02:03:04); with @p fsprec above 0 when all are
 * 0 or more. The fraction prints its leading digits.
 * @code
 *   // year 1, month 2, lfprec 2: "+01-02"
 *   // 1 02:03:04 fraction 12345, lfprec 1, fsprec 3: "+1 02:03:04.123"
 * @endcode
 */
QWZ_API sword QWZIntervalToText(void *hndl, QWZError *errhp, const QWZInterval *interval,
                                ub1 lfprec, ub1 fsprec, QWZtext *buffer, size_t buflen,
                                size_t *resultlen);

/** @cond QWZ_INTERNAL */
#ifdef __cplusplus
}
#endif
/** @endcond */

#endif /* QWZ_QWZ_H */
