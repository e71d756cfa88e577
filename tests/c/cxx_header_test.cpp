// The public header also compiles as C++ with warnings as errors.
#include <qwz/qwz.h>

int main() {
  QWZEnv *env = nullptr;
  if (QWZEnvCreate(&env, 0) != QWZ_SUCCESS) return 1;
  return QWZHandleFree(env, QWZ_HTYPE_ENV) == QWZ_SUCCESS ? 0 : 2;
}
