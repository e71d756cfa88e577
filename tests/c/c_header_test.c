/* Compiled as strict C99 with warnings as errors: the public header is C. */
#include <qwz/qwz.h>

#include <stdio.h>
#include <string.h>

int main(void) {
  QWZEnv *env = NULL;
  QWZError *err = NULL;
  QWZDate d = {2024, 1, 31, 0, 0, 0};
  QWZDate r;
  QWZText state[8], msg[256];
  sb4 number = 0;
  if (QWZEnvCreate(&env, 0) != QWZ_SUCCESS) return 1;
  if (QWZHandleAlloc(env, (void **)&err, QWZ_HTYPE_ERROR) != QWZ_SUCCESS) return 2;
  if (QWZDateAddMonths(err, &d, 1, &r) != QWZ_SUCCESS) return 3;
  if (r.year != 2024 || r.month != 2 || r.day != 29) return 4;
  if (QWZDateAddDays(err, &d, 1, NULL) != QWZ_ERROR) return 5;
  if (QWZErrorGet(err, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR) != QWZ_SUCCESS) return 6;
  if (number != 21560 || strcmp((char *)state, "21560") != 0) return 7;
  if (strcmp((char *)msg, "ERROR: [QWZ-21560][QWZ Driver].parameter 4 is NULL\n") != 0) return 8;
  if (QWZHandleFree(env, QWZ_HTYPE_ENV) != QWZ_SUCCESS) return 9;
  puts("ok");
  return 0;
}
