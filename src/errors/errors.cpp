// The error handle's one diagnostic: message text, signed error number and a
// five-character state. Writers store into it; QWZErrorGet copies it out.
#include "errors/errors.h"

#include <cstring>

namespace {

// Copies at most `cap - 1` bytes of `src` and a NUL.
void copy_cut(char *dst, std::size_t cap, const char *src) {
  std::size_t n = strnlen(src, cap - 1);
  std::memcpy(dst, src, n);
  dst[n] = '\0';
}

}  // namespace

extern "C" {

void clear_err_msg(QWZError *errhp) {
  errhp->message[0] = '\0';
  errhp->number = 0;
  errhp->state[0] = '\0';
}

void _QWZSetFrontEndErrorHandle(QWZError *errhp, const char *message, sb4 error_number) {
  if (errhp == nullptr) return;
  copy_cut(errhp->message, sizeof errhp->message, message ? message : "");
  errhp->number = error_number;
}

QWZ_API sword QWZErrorGet(void *hndlp, ub4 recordno, QWZText *sqlstate, sb4 *errcodep,
                          QWZText *bufp, ub4 bufsiz, ub4 type) {
  if (type != QWZ_HTYPE_ERROR || qwz_validate_handle(hndlp, QWZ_HTYPE_ERROR) != 0)
    return QWZ_INVALID_HANDLE;
  if (recordno != 1) return QWZ_ERROR;
  const auto *err = static_cast<const QWZError *>(hndlp);
  const bool empty = err->number == 0 && err->message[0] == '\0' && err->state[0] == '\0';
  if (sqlstate) copy_cut(reinterpret_cast<char *>(sqlstate), sizeof err->state, err->state);
  if (errcodep) *errcodep = err->number;
  if (bufp && bufsiz > 0) copy_cut(reinterpret_cast<char *>(bufp), bufsiz, err->message);
  return empty ? QWZ_NO_DATA : QWZ_SUCCESS;
}

}  // extern "C"
