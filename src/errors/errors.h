// The error handle's diagnostic: clearing it, the library's general writer,
// and reading it back (QWZErrorGet, in errors.cpp).
#ifndef QWZ_ERRORS_ERRORS_H
#define QWZ_ERRORS_ERRORS_H

#include "handles/handles.h"

extern "C" {

// Empties the diagnostic: no message, number 0, no state.
QWZ_INTERNAL void clear_err_msg(QWZError *errhp);

// Stores `message` (as given, cut to the handle's buffer) and `error_number`;
// the state is left as it was. Does nothing for a NULL handle.
QWZ_INTERNAL void _QWZSetFrontEndErrorHandle(QWZError *errhp, const char *message,
                                             sb4 error_number);

}  // extern "C"

#endif  // QWZ_ERRORS_ERRORS_H
