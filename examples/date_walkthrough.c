/* date_walkthrough: a tour of the date family, printing each call and what
 * it gave back, failures included (read through QWZErrorGet). */
#include <qwz/qwz.h>

#include <stdio.h>
#include <string.h>

static void show_date(const char *label, const QWZDate *d) {
  printf("  %-28s %04d-%02u-%02u %02u:%02u:%02u\n", label, d->year, d->month, d->day, d->hour,
         d->minute, d->second);
}

static void show_error(QWZError *err, sword status) {
  QWZText state[8] = {0}, msg[512] = {0};
  sb4 number = 0;
  QWZErrorGet(err, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR);
  printf("  -> status %d, error %d, state %s, message %s", status, number, (char *)state,
         (char *)msg);
}

int main(void) {
  QWZEnv *env;
  QWZError *err;
  QWZDate start = {2024, 1, 31, 10, 30, 0}, r, now;
  uword flags = 0;
  sword cmp = 0;
  sb4 days = 0;
  sword status;

  if (QWZEnvCreate(&env, 0) != QWZ_SUCCESS ||
      QWZHandleAlloc(env, (void **)&err, QWZ_HTYPE_ERROR) != QWZ_SUCCESS) {
    fprintf(stderr, "cannot create the environment\n");
    return 1;
  }
  show_date("start", &start);

  QWZDateAddDays(err, &start, 30, &r);
  show_date("QWZDateAddDays +30", &r);
  QWZDateAddMonths(err, &start, 1, &r);
  show_date("QWZDateAddMonths +1", &r);
  QWZDateAddMonths(err, &start, -13, &r);
  show_date("QWZDateAddMonths -13", &r);
  QWZDateLastDay(err, &r, &r);
  show_date("QWZDateLastDay of that", &r);
  QWZDateNextDay(err, &start, (const QWZtext *)"Friday", 6, &r);
  show_date("QWZDateNextDay Friday", &r);

  QWZDateCompare(err, &start, &r, &cmp);
  printf("  %-28s %d\n", "QWZDateCompare start, next", cmp);
  QWZDateDaysBetween(err, &r, &start, &days);
  printf("  %-28s %d\n", "QWZDateDaysBetween", days);

  {
    QWZDate bad = {2023, 2, 30, 0, 0, 0};
    QWZDateCheck(err, &bad, &flags);
    printf("  %-28s flags 0x%x\n", "QWZDateCheck 2023-02-30", flags);
    status = QWZDateAddDays(err, &bad, 1, &r);
    printf("  QWZDateAddDays on 2023-02-30\n");
    show_error(err, status);
  }
  status = QWZDateNextDay(err, &start, (const QWZtext *)"mon", 3, &r);
  printf("  QWZDateNextDay \"mon\"\n");
  show_error(err, status);

  QWZDateSysDate(err, &now);
  show_date("QWZDateSysDate", &now);

  QWZHandleFree(env, QWZ_HTYPE_ENV);
  return 0;
}
