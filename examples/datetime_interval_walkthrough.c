/* datetime_interval_walkthrough: datetimes with zones, intervals, text and
 * arithmetic between them, printing each call and what it gave back. */
#include <qwz/qwz.h>

#include <stdio.h>
#include <string.h>

static QWZEnv *env;
static QWZError *err;

static void show_status(const char *what, sword status) {
  QWZText state[8] = {0}, msg[512] = {0};
  sb4 number = 0;
  if (status == QWZ_SUCCESS) {
    printf("  %-34s ok\n", what);
    return;
  }
  QWZErrorGet(err, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR);
  printf("  %-34s status %d, error %d, state \"%s\", %s%s", what, status, number, (char *)state,
         (char *)msg, msg[0] && msg[strlen((char *)msg) - 1] == '\n' ? "" : "\n");
}

static void show_datetime(const char *label, QWZDateTime *dt) {
  QWZtext buf[80];
  ub4 size = sizeof buf;
  const char *fmt = "YYYY-MM-DD HH24:MI:SS.FF3 TZH:TZM";
  if (QWZDateTimeToText(env, err, dt, (const QWZtext *)fmt, (ub1)strlen(fmt), 3, NULL, 0, &size,
                        buf) == QWZ_SUCCESS)
    printf("  %-34s %s\n", label, (char *)buf);
  else
    show_status(label, QWZ_ERROR);
}

static void show_interval(const char *label, QWZInterval *iv) {
  QWZtext buf[64];
  size_t len = 0;
  if (QWZIntervalToText(env, err, iv, 9, 5, buf, sizeof buf, &len) == QWZ_SUCCESS)
    printf("  %-34s %s\n", label, (char *)buf);
  else
    show_status(label, QWZ_ERROR);
}

int main(void) {
  QWZDateTime *a, *b, *sum;
  QWZInterval *ds, *ym, *diff;
  sword cmp = 0;

  if (QWZEnvCreate(&env, 0) != QWZ_SUCCESS ||
      QWZHandleAlloc(env, (void **)&err, QWZ_HTYPE_ERROR) != QWZ_SUCCESS) {
    fprintf(stderr, "cannot create the environment\n");
    return 1;
  }
  QWZDescriptorAlloc(env, (void **)&a, DATETIME_KIND_TIMESTAMP_TZ);
  QWZDescriptorAlloc(env, (void **)&b, DATETIME_KIND_TIMESTAMP_TZ);
  QWZDescriptorAlloc(env, (void **)&sum, DATETIME_KIND_TIMESTAMP_TZ);
  QWZDescriptorAlloc(env, (void **)&ds, INTERVAL_KIND_DS);
  QWZDescriptorAlloc(env, (void **)&ym, INTERVAL_KIND_YM);
  QWZDescriptorAlloc(env, (void **)&diff, INTERVAL_KIND_DS);

  show_status("QWZDateTimeConstruct +02:00",
              QWZDateTimeConstruct(env, err, a, 2024, 3, 15, 10, 30, 0, 0,
                                   (QWZText *)"+02:00", 6));
  show_datetime("a", a);
  show_status("QWZDateTimeFromText +05:00",
              QWZDateTimeFromText(env, err, (QWZText *)"2024-03-15 13:30:00 +05:00", 26,
                                  (QWZText *)"YYYY-MM-DD HH24:MI:SS TZH:TZM", 29, NULL, 0, b));
  show_datetime("b", b);
  QWZDateTimeCompare(env, err, a, b, &cmp);
  printf("  %-34s %d (compared in UTC)\n", "QWZDateTimeCompare a, b", cmp);

  show_status("QWZIntervalFromText \"1 02:03:04\"",
              QWZIntervalFromText(env, err, (const QWZText *)"1 02:03:04", 10, ds));
  show_interval("interval", ds);
  show_status("QWZDateTimeIntervalAdd", QWZDateTimeIntervalAdd(env, err, a, ds, sum));
  show_datetime("a + interval", sum);
  QWZIntervalSetYearMonth(env, err, 0, 1, ym);
  show_status("QWZDateTimeIntervalAdd 1 month", QWZDateTimeIntervalAdd(env, err, a, ym, sum));
  show_datetime("a + 1 month", sum);
  show_status("QWZDateTimeSubtract sum - b", QWZDateTimeSubtract(env, err, sum, b, diff));
  show_interval("difference", diff);

  /* Failures, each with its diagnostic. */
  show_status("QWZDateTimeConstruct Feb 30",
              QWZDateTimeConstruct(env, err, a, 2023, 2, 30, 0, 0, 0, 0, (QWZText *)"+00:00", 6));
  show_status("QWZIntervalFromText \"1 25:00:00\"",
              QWZIntervalFromText(env, err, (const QWZText *)"1 25:00:00", 10, ds));
  show_status("QWZIntervalAdd ds + ym", QWZIntervalAdd(env, err, ds, ym, diff));

  QWZHandleFree(env, QWZ_HTYPE_ENV);
  return 0;
}
