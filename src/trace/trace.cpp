// qwz_trace: formats a trace record from its row of api_trace_fmt and the
// traced argument words, then hands it to the hook or writes it out.
//
// Every traced argument arrives widened to one machine word; each conversion
// of the row takes the next word and narrows it to the conversion's own type
// before printing, so "%d" of a negative sb4 prints the same as the call saw.
#include "trace/trace.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <pthread.h>
#include <sys/time.h>

namespace {

int flag_from_environment() {
  const char *v = std::getenv("QWZ_TRACE");
  return (v && std::strtol(v, nullptr, 10) != 0) ? 1 : 0;
}

std::atomic<QWZTraceHook> g_hook{nullptr};
std::mutex g_sink_lock;

// Counts the conversions of a row; each consumes one argument word.
std::size_t count_conversions(const char *row) {
  std::size_t n = 0;
  for (const char *p = row; *p; ++p)
    if (*p == '%') {
      if (p[1] == '%') { ++p; continue; }
      ++n;
    }
  return n;
}

void default_sink(sword status, ub4 direction, const std::string &record) {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  struct tm tmv;
  localtime_r(&tv.tv_sec, &tmv);
  char stamp[64];
  std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &tmv);
  std::lock_guard<std::mutex> g(g_sink_lock);
  const char *path = std::getenv("QWZ_TRACE_FILE");
  FILE *out = (path && *path) ? std::fopen(path, "a") : nullptr;
  FILE *f = out ? out : stderr;
  std::fprintf(f, "%s.%06ld [%lu] %s status=%d\n%s\n", stamp, static_cast<long>(tv.tv_usec),
               static_cast<unsigned long>(pthread_self()), direction ? "ENTRY" : "EXIT", status,
               record.c_str());
  if (out) std::fclose(out);
}

}  // namespace

extern "C" {
QWZ_API int qwz_trace_flag = flag_from_environment();

QWZ_API void QWZTraceSetHook(QWZTraceHook hook) { g_hook.store(hook, std::memory_order_release); }

sword qwz_trace(void *errhp, sword status, ub4 direction, ub4 api_id, ...) {
  if (api_id >= static_cast<ub4>(QWZ_TRACE_ROWS)) api_id = 0;
  const std::size_t n = count_conversions(api_trace_fmt[api_id]);
  unsigned long words[32] = {};
  va_list ap;
  va_start(ap, api_id);
  for (std::size_t i = 0; i < n && i < 32; ++i) words[i] = va_arg(ap, unsigned long);
  va_end(ap);
  std::string record = qwz_trace_format_row(api_id, words, n < 32 ? n : 32);
  if (QWZTraceHook hook = g_hook.load(std::memory_order_acquire))
    return hook(errhp, status, direction, api_id, record.c_str());
  default_sink(status, direction, record);
  return 0;
}
}  // extern "C"

std::string qwz_trace_format_row(ub4 api_id, const unsigned long *words, std::size_t nwords) {
  std::string out;
  if (api_id >= static_cast<ub4>(QWZ_TRACE_ROWS)) return out;
  const char *p = api_trace_fmt[api_id];
  std::size_t next = 0;
  while (*p) {
    if (*p != '%') { out.push_back(*p++); continue; }
    if (p[1] == '%') { out.push_back('%'); p += 2; continue; }
    // One conversion: flags, width, length modifiers and the letter.
    char directive[16];
    std::size_t k = 0;
    directive[k++] = *p++;
    while (*p && std::strchr("0123456789-+ #.lhz", *p) && k < sizeof directive - 2) directive[k++] = *p++;
    const char conv = *p ? *p++ : 'd';
    directive[k++] = conv;
    directive[k] = '\0';
    const unsigned long w = next < nwords ? words[next] : 0;
    ++next;
    char buf[64];
    const bool is_long = std::strchr(directive, 'l') != nullptr;
    const bool is_size = std::strchr(directive, 'z') != nullptr;
    switch (conv) {
      case 's': {
        const char *s = reinterpret_cast<const char *>(w);
        out += s ? s : "(null)";
        continue;
      }
      case 'd': case 'i':
        if (is_long) std::snprintf(buf, sizeof buf, directive, static_cast<long>(w));
        else if (is_size) std::snprintf(buf, sizeof buf, directive, static_cast<long>(w));
        else std::snprintf(buf, sizeof buf, directive, static_cast<int>(w));
        break;
      default:  // u, x, X, o
        if (is_long) std::snprintf(buf, sizeof buf, directive, w);
        else if (is_size) std::snprintf(buf, sizeof buf, directive, static_cast<std::size_t>(w));
        else std::snprintf(buf, sizeof buf, directive, static_cast<unsigned>(w));
        break;
    }
    out += buf;
  }
  return out;
}
