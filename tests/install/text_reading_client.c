/* A client of the installed header only: texts and formats are read up to
 * their NUL, trimmed, then cut at the given length; a format over 127
 * characters is refused whatever its given length; and ToText copies the
 * terminator when the text fills the stated capacity exactly. */
#include <qwz/qwz.h>

#include <stdio.h>
#include <string.h>

static int failures = 0;
#define CHECK(cond)                                          \
  do {                                                       \
    if (!(cond)) {                                           \
      fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #cond); \
      ++failures;                                            \
    }                                                        \
  } while (0)

static const QWZtext *T(const char *s) { return (const QWZtext *)s; }

int main(void) {
  QWZEnv *env;
  QWZError *err;
  QWZDateTime *ts, *plain;
  QWZDate d = {0, 0, 0, 0, 0, 0};
  const QWZDate may17 = {2024, 5, 17, 10, 20, 30};
  QWZtext buf[32];
  ub4 size;
  char long_format[201];

  if (QWZEnvCreate(&env, 0) != QWZ_SUCCESS) return 2;
  if (QWZHandleAlloc(env, (void **)&err, QWZ_HTYPE_ERROR) != QWZ_SUCCESS) return 2;
  if (QWZDescriptorAlloc(env, (void **)&ts, DATETIME_KIND_TIMESTAMP_TZ) != QWZ_SUCCESS) return 2;
  if (QWZDescriptorAlloc(env, (void **)&plain, DATETIME_KIND_TIMESTAMP) != QWZ_SUCCESS) return 2;

  /* Leading blanks do not count against the text's length. */
  CHECK(QWZDateFromText(err, T("  2024-05-17"), 10, T("YYYY-MM-DD"), 10, NULL, 0, &d) == 0);
  CHECK(d.year == 2024 && d.month == 5 && d.day == 17);

  /* The format is trimmed, then cut at its length. */
  size = sizeof buf - 1;
  CHECK(QWZDateToText(err, &may17, T("  YYYY-MM-DD"), 4, NULL, 0, &size, buf) == 0);
  CHECK(strcmp((const char *)buf, "2024") == 0);
  CHECK(QWZDateTimeConstruct(env, err, plain, 2024, 5, 17, 10, 20, 30, 0, NULL, 0) == 0);
  size = sizeof buf - 1;
  CHECK(QWZDateTimeToText(env, err, plain, T("  YYYY-MM-DD"), 4, 0, NULL, 0, &size, buf) == 0);
  CHECK(strcmp((const char *)buf, "2024") == 0);

  /* The zone text likewise: "-05" of "  -05:30". */
  CHECK(QWZDateTimeConstruct(env, err, ts, 2024, 5, 17, 10, 20, 30, 0, (QWZText *)"  -05:30",
                             3) == 0);
  {
    sb1 h = 9, m = 9;
    CHECK(QWZDateTimeGetTimeZoneOffset(env, err, ts, &h, &m) == 0);
    CHECK(h == -5 && m == 0);
  }

  /* 200 characters of format given with length 4: refused. */
  memset(long_format, '/', 200);
  memcpy(long_format, "YYYY", 4);
  long_format[200] = '\0';
  size = sizeof buf - 1;
  CHECK(QWZDateToText(err, &may17, T(long_format), 4, NULL, 0, &size, buf) == QWZ_ERROR);
  CHECK(QWZDateFromText(err, T("2024"), 4, T(long_format), 4, NULL, 0, &d) == QWZ_ERROR);

  /* Capacity equal to the length: the text and its terminator. */
  memset(buf, '#', sizeof buf);
  size = 10;
  CHECK(QWZDateToText(err, &may17, T("YYYY-MM-DD"), 10, NULL, 0, &size, buf) == 0);
  CHECK(memcmp(buf, "2024-05-17", 11) == 0 && buf[11] == '#');
  memset(buf, '#', sizeof buf);
  size = 10;
  CHECK(QWZDateTimeToText(env, err, plain, T("YYYY-MM-DD"), 10, 0, NULL, 0, &size, buf) == 0);
  CHECK(memcmp(buf, "2024-05-17", 11) == 0 && buf[11] == '#');

  QWZHandleFree(env, QWZ_HTYPE_ENV);
  if (failures) return 1;
  printf("text reading client ok\n");
  return 0;
}
