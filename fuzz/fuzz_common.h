// Shared pieces of the fuzz targets: one environment, error and session
// handle for the whole run, a trace hook that formats and discards every
// record, and the check macro that stops the run when an invariant fails.
#ifndef QWZ_FUZZ_COMMON_H
#define QWZ_FUZZ_COMMON_H

#include <fuzzer/FuzzedDataProvider.h>
#include <qwz/qwz.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "handles/handles.h"

namespace qwz_fuzz {

struct Handles {
  QWZEnv *env = nullptr;
  QWZError *err = nullptr;
  QWZSession *session = nullptr;
};

// The record is read to its end, so a record built from an unterminated
// text is caught by AddressSanitizer here.
inline sword discard_record(void *, sword, ub4, ub4, const char *record) {
  volatile size_t n = std::strlen(record);
  (void)n;
  return 0;
}

inline Handles &handles() {
  static Handles h = [] {
    Handles made;
    if (QWZEnvCreate(&made.env, 0) != QWZ_SUCCESS ||
        QWZHandleAlloc(made.env, reinterpret_cast<void **>(&made.err), QWZ_HTYPE_ERROR) !=
            QWZ_SUCCESS ||
        QWZHandleAlloc(made.env, reinterpret_cast<void **>(&made.session), QWZ_HTYPE_SESSION) !=
            QWZ_SUCCESS) {
      std::fprintf(stderr, "cannot create the handles\n");
      std::abort();
    }
    QWZTraceSetHook(discard_record);
    return made;
  }();
  return h;
}

// Tracing on for one input when asked, off again afterwards.
class Tracing {
 public:
  explicit Tracing(bool on) { qwz_trace_flag = on ? 1 : 0; }
  ~Tracing() { qwz_trace_flag = 0; }
  Tracing(const Tracing &) = delete;
  Tracing &operator=(const Tracing &) = delete;
};

// The context handle of the datetime and interval calls: environment or session.
inline void *context(bool session) {
  return session ? static_cast<void *>(handles().session) : static_cast<void *>(handles().env);
}

template <class T>
T *alloc_descriptor(ub4 type) {
  void *d = nullptr;
  if (QWZDescriptorAlloc(handles().env, &d, type) != QWZ_SUCCESS) {
    std::fprintf(stderr, "cannot allocate a descriptor of type %u\n", type);
    std::abort();
  }
  return static_cast<T *>(d);
}

// A terminated copy of the provider's next bytes, cut at the first NUL.
inline std::string take_text(FuzzedDataProvider &in, size_t max_len) {
  std::string s = in.ConsumeRandomLengthString(max_len);
  return std::string(s.c_str());
}

inline const QWZText *T(const std::string &s) {
  return reinterpret_cast<const QWZText *>(s.c_str());
}
inline QWZText *MT(std::string &s) { return reinterpret_cast<QWZText *>(s.data()); }

inline std::string date_str(const QWZDate &d) {
  char b[96];
  std::snprintf(b, sizeof b, "%d-%u-%u %u:%u:%u", d.year, d.month, d.day, d.hour, d.minute,
                d.second);
  return b;
}

inline std::string datetime_str(const QWZDateTime *d) {
  char b[160];
  std::snprintf(b, sizeof b, "%d-%u-%u %u:%u:%u.%u %+d:%d", d->year, d->month, d->day, d->hour,
                d->minute, d->second, d->fraction, d->tz_hour, d->tz_minute);
  return b;
}

// The diagnostic left in the shared error handle, for failure reports.
inline std::string last_diag() {
  QWZText state[16] = {};
  QWZText msg[1024] = {};
  sb4 number = 0;
  QWZErrorGet(handles().err, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR);
  return std::to_string(number) + " " + reinterpret_cast<char *>(state) + " " +
         reinterpret_cast<char *>(msg);
}

// Whether the model holds a keyword, in any case.
inline bool has_keyword(const std::string &fmt, const char *kw) {
  std::string up(fmt);
  for (char &c : up) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return up.find(kw) != std::string::npos;
}

// Values that read under a model but are not written under it, by the
// format table's design: "SYYYY" writes only years whose "%04d" text has
// five characters (below -999 or above 9999), "YYYY" only those of four.
// (Time types do not check their date fields, so any 16-bit year occurs.)
inline bool written_one_way(const std::string &fmt, int year) {
  const int n = std::snprintf(nullptr, 0, "%04d", year);
  if (has_keyword(fmt, "SYYYY")) return n != 5;
  return has_keyword(fmt, "YYYY") && n != 4;
}

// Dates are written only up to the seconds: a model with more after "SS"
// writes a text that the same model does not read.
inline bool stops_after_seconds(const std::string &fmt) {
  std::string up(fmt);
  for (char &c : up) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  const size_t at = up.find("SS");
  return at != std::string::npos && up.find_first_not_of(' ', at + 2) != std::string::npos;
}

// A model that a date cannot write back in full: nothing but blanks (the
// formatter needs at least one token), keywords for parts a date does not
// have (fraction, zone), or anything after the seconds.
inline bool date_one_way(const std::string &fmt) {
  return fmt.find_first_not_of(' ') == std::string::npos || has_keyword(fmt, "FF") ||
         has_keyword(fmt, "TZ") || stops_after_seconds(fmt);
}

inline bool zone_is_utc() {
  const char *tz = std::getenv("TZ");
  return tz != nullptr && (std::strcmp(tz, "UTC0") == 0 || std::strcmp(tz, "UTC") == 0);
}

}  // namespace qwz_fuzz

#define FUZZ_CHECK(cond, ...)                                                             \
  do {                                                                                    \
    if (!(cond)) {                                                                        \
      std::fprintf(stderr, "invariant failed at %s:%d: %s\n", __FILE__, __LINE__, #cond); \
      std::fprintf(stderr, __VA_ARGS__);                                                  \
      std::fprintf(stderr, "\n");                                                         \
      std::abort();                                                                       \
    }                                                                                     \
  } while (0)

#endif  // QWZ_FUZZ_COMMON_H
