/* A client that includes only the public header. */
#include <qwz/qwz.h>

#include <stdio.h>

int main(void) {
  QWZEnv *env;
  QWZError *err;
  QWZDate d = {2024, 2, 10, 13, 14, 15}, last;
  if (QWZEnvCreate(&env, 0) != QWZ_SUCCESS) return 1;
  if (QWZHandleAlloc(env, (void **)&err, QWZ_HTYPE_ERROR) != QWZ_SUCCESS) return 2;
  if (QWZDateLastDay(err, &d, &last) != QWZ_SUCCESS || last.day != 29) return 3;
  QWZHandleFree(env, QWZ_HTYPE_ENV);
  printf("client ok\n");
  return 0;
}
