/* Wraps each C example of README.md into a program: the example's lines are
 * the body of main(), with an environment `env` and an error handle `err`
 * ready, and these helpers print what the example shows. */
#include <qwz/qwz.h>

#include <stdio.h>
#include <string.h>

static void show_date(const QWZDate *d) {
  printf("%04d-%02u-%02u %02u:%02u:%02u\n", d->year, d->month, d->day, d->hour, d->minute,
         d->second);
}

static void show_text(const QWZtext *t) { printf("%s\n", (const char *)t); }

static void show_int(long v) { printf("%ld\n", v); }

static void show_datetime(QWZEnv *env, QWZError *err, QWZDateTime *dt) {
  sb2 y = 0; ub1 mo = 0, d = 0, h = 0, mi = 0, s = 0; ub4 f = 0; sb1 th = 0, tm = 0;
  QWZDateTimeGetDate(env, err, dt, &y, &mo, &d);
  QWZDateTimeGetTime(env, err, dt, &h, &mi, &s, &f);
  if (QWZDateTimeGetTimeZoneOffset(env, err, dt, &th, &tm) == QWZ_SUCCESS)
    printf("%04d-%02u-%02u %02u:%02u:%02u fraction %u zone %d:%02d\n", y, mo, d, h, mi, s, f,
           th, tm < 0 ? -tm : tm);
  else
    printf("%04d-%02u-%02u %02u:%02u:%02u fraction %u\n", y, mo, d, h, mi, s, f);
}

static void show_interval(QWZEnv *env, QWZError *err, QWZInterval *iv) {
  QWZtext buf[64] = "";
  size_t len = 0;
  QWZIntervalToText(env, err, iv, 2, 5, buf, sizeof buf, &len);
  printf("%s\n", (const char *)buf);
}

static void show_diagnostic(QWZError *err) {
  QWZText state[6]; sb4 code = 0; QWZText msg[512];
  QWZErrorGet(err, 1, state, &code, msg, sizeof msg, QWZ_HTYPE_ERROR);
  size_t n = strlen((const char *)msg);
  if (n > 0 && msg[n - 1] == '\n') msg[n - 1] = '\0';
  printf("%d \"%s\" \"%s\"\n", code, (const char *)state, (const char *)msg);
}
