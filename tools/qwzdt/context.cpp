// The process-wide handles, the reusable descriptors, diagnostics, options
// and the environment switches (--tz, --trace) of qwzdt.
#include "qwzdt.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

namespace qwzdt {

Context::Context() {
  if (QWZEnvCreate(&env_, 0) != QWZ_SUCCESS ||
      QWZHandleAlloc(env_, reinterpret_cast<void **>(&err_), QWZ_HTYPE_ERROR) != QWZ_SUCCESS) {
    std::fputs("qwzdt: cannot create the environment\n", stderr);
    std::exit(1);
  }
}

Context::~Context() {
  // Freeing the environment frees the error handle and every descriptor.
  if (env_ != nullptr) QWZHandleFree(env_, QWZ_HTYPE_ENV);
}

QWZDateTime *Context::datetime(ub4 type, int slot) {
  QWZDateTime *&d = dt_[type - DATETIME_KIND_DATE][slot];
  if (d == nullptr &&
      QWZDescriptorAlloc(env_, reinterpret_cast<void **>(&d), type) != QWZ_SUCCESS) {
    std::fputs("qwzdt: cannot allocate a datetime descriptor\n", stderr);
    std::exit(1);
  }
  return d;
}

QWZInterval *Context::interval(ub4 kind, int slot) {
  QWZInterval *&d = iv_[kind - INTERVAL_KIND_YM][slot];
  if (d == nullptr &&
      QWZDescriptorAlloc(env_, reinterpret_cast<void **>(&d), kind) != QWZ_SUCCESS) {
    std::fputs("qwzdt: cannot allocate an interval descriptor\n", stderr);
    std::exit(1);
  }
  return d;
}

void Context::diagnostic(sword status, const char *what, std::string &out) const {
  QWZText state[8] = {};
  sb4 code = 0;
  QWZText msg[1024] = {};
  sword got = QWZErrorGet(err_, 1, state, &code, msg, sizeof msg, QWZ_HTYPE_ERROR);
  char head[64];
  if (got != QWZ_SUCCESS) {
    // No diagnostic was left: a status passed through as it is (a runtime
    // error number, or a failure the library reports by its status alone).
    std::snprintf(head, sizeof head, "qwzdt: %d : ", static_cast<int>(status));
    out += head;
    out += what;
    out += " returned ";
    out += std::to_string(status);
    out += " without a diagnostic";
    return;
  }
  std::snprintf(head, sizeof head, "qwzdt: %d %s: ", static_cast<int>(code),
                reinterpret_cast<const char *>(state));
  out += head;
  std::string_view m(reinterpret_cast<const char *>(msg));
  if (!m.empty() && m.back() == '\n') m.remove_suffix(1);
  out += m;
}

namespace {

bool is_option(std::string_view w) { return w.size() > 2 && w.substr(0, 2) == "--"; }

}  // namespace

bool take_options(const Args &words, Options &opt, Args &positional, std::string &err_out) {
  bool options_done = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    std::string_view w = words[i];
    if (options_done || !is_option(w)) {
      if (w == "--" && !options_done) {
        options_done = true;
        continue;
      }
      positional.push_back(w);
      continue;
    }
    std::string_view name = w.substr(2);
    std::string_view value;
    bool has_value = false;
    if (auto eq = name.find('='); eq != std::string_view::npos) {
      value = name.substr(eq + 1);
      name = name.substr(0, eq);
      has_value = true;
    }
    auto need_value = [&]() -> bool {
      if (has_value) return true;
      if (i + 1 >= words.size()) {
        err_out = "qwzdt: option --" + std::string(name) + " needs a value";
        return false;
      }
      value = words[++i];
      return true;
    };
    if (name == "help") {
      opt.help = true;
    } else if (name == "version") {
      opt.version = true;
    } else if (name == "trace") {
      opt.trace = true;
    } else if (name == "format") {
      if (!need_value()) return false;
      opt.format = std::string(value);
    } else if (name == "tz") {
      if (!need_value()) return false;
      opt.tz = std::string(value);
    } else if (name == "type") {
      if (!need_value()) return false;
      opt.type = std::string(value);
    } else if (name == "lfprec" || name == "fsprec") {
      if (!need_value()) return false;
      int v = 0;
      for (char c : value) {
        if (c < '0' || c > '9' || v > 1000) {
          err_out = "qwzdt: option --" + std::string(name) + " takes a number";
          return false;
        }
        v = v * 10 + (c - '0');
      }
      if (value.empty()) {
        err_out = "qwzdt: option --" + std::string(name) + " takes a number";
        return false;
      }
      (name == "lfprec" ? opt.lfprec : opt.fsprec) = v;
    } else {
      err_out = "qwzdt: unknown option --" + std::string(name);
      return false;
    }
  }
  return true;
}

namespace {

sword print_trace(void *, sword, ub4, ub4, const char *record) {
  std::fputs(record, stderr);
  std::fputc('\n', stderr);
  return 0;
}

}  // namespace

void apply_environment(const Options &opt) {
  // The zone the process started with, put back when a batch line that
  // named its own zone is done.
  static const char *start = std::getenv("TZ");
  static const std::string start_tz = start != nullptr ? start : "";
  static const bool start_had_tz = start != nullptr;
  static std::string current_tz;
  static bool tz_set = false;
  static bool tracing = false;
  if (!opt.tz.empty() && (!tz_set || current_tz != opt.tz)) {
    setenv("TZ", opt.tz.c_str(), 1);
    tzset();
    current_tz = opt.tz;
    tz_set = true;
  } else if (opt.tz.empty() && tz_set) {
    if (start_had_tz)
      setenv("TZ", start_tz.c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
    tz_set = false;
  }
  if (opt.trace != tracing) {
    QWZTraceSetHook(opt.trace ? print_trace : nullptr);
    qwz_trace_flag = opt.trace ? 1 : 0;
    tracing = opt.trace;
  }
}

}  // namespace qwzdt
