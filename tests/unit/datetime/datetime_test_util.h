// Helpers shared by the datetime descriptor tests: a plain copy of a
// descriptor's value fields, the diagnostics these functions write, the
// handles that must be refused, and expected trace records.
#ifndef QWZ_TESTS_DATETIME_TEST_UTIL_H
#define QWZ_TESTS_DATETIME_TEST_UTIL_H

#include "support/test_support.h"

#include <cstdio>
#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace qwz_test {

inline constexpr ub2 kAllDatetimeTypes[] = {65, 66, 67, 68, 69, 70};

// The value fields of a datetime descriptor.
struct Value {
  sb2 year = 0;
  ub2 month = 0, day = 0, hour = 0, minute = 0, second = 0;
  ub4 fraction = 0;
  sb1 tz_hour = 0, tz_minute = 0;
  bool operator==(const Value &) const = default;
};

inline void PrintTo(const Value &v, std::ostream *os) {
  char buf[128];
  std::snprintf(buf, sizeof buf, "{%d-%u-%u %u:%u:%u .%u tz %d:%d}", v.year, v.month, v.day,
                v.hour, v.minute, v.second, v.fraction, v.tz_hour, v.tz_minute);
  *os << buf;
}

inline Value read_value(const QWZDateTime *d) {
  return {d->year, d->month, d->day, d->hour, d->minute, d->second, d->fraction, d->tz_hour,
          d->tz_minute};
}

inline void write_value(QWZDateTime *d, const Value &v) {
  d->year = v.year;
  d->month = v.month;
  d->day = v.day;
  d->hour = v.hour;
  d->minute = v.minute;
  d->second = v.second;
  d->fraction = v.fraction;
  d->tz_hour = v.tz_hour;
  d->tz_minute = v.tz_minute;
}

// Diagnostic texts, as the caller reads them back.
inline constexpr char kInvalidHandle[] = "Invalid handle.";
inline std::string null_param_text(int n) {
  return "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n) + " is NULL\n";
}
inline constexpr char kDateFormatInvalid[] = "ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n";
inline constexpr char kTypeDiff[] = "ERROR: [QWZ-21405][QWZ Driver].type is diff\n";

// A handle or descriptor that a validator must refuse.
struct BadHandle {
  std::string label;
  void *ptr;
};

class DatetimeFixture : public HandleFixture {
 protected:
  void expect_invalid_handle() { expect_diag(800001, "", kInvalidHandle); }
  void expect_null_param(int n) { expect_diag(21560, "21560", null_param_text(n)); }
  void expect_date_format_invalid() { expect_diag(22007, "22007", kDateFormatInvalid); }

  // A datetime descriptor allocated and freed again. No descriptor may be
  // allocated between this and its use, or the slot could come back to life.
  void *freed_datetime() {
    void *d = nullptr;
    EXPECT_EQ(QWZDescriptorAlloc(env_, &d, DATETIME_KIND_TIMESTAMP), QWZ_SUCCESS);
    EXPECT_EQ(QWZDescriptorFree(d, DATETIME_KIND_TIMESTAMP), QWZ_SUCCESS);
    return d;
  }

  // Everything that is not a live datetime descriptor.
  std::vector<BadHandle> bad_datetimes() {
    std::vector<BadHandle> v;
    v.push_back({"null", nullptr});
    v.push_back({"interval ym", new_interval(INTERVAL_KIND_YM)});
    v.push_back({"interval ds", new_interval(INTERVAL_KIND_DS)});
    v.push_back({"error handle", err_});
    v.push_back({"environment", env_});
    v.push_back({"session", session_});
    v.push_back({"plain memory", zeros_});
    v.push_back({"freed datetime", freed_datetime()});
    return v;
  }

  // Everything that is not a live interval descriptor.
  std::vector<BadHandle> bad_intervals() {
    std::vector<BadHandle> v;
    v.push_back({"null", nullptr});
    v.push_back({"datetime", new_datetime(DATETIME_KIND_TIMESTAMP)});
    v.push_back({"error handle", err_});
    v.push_back({"environment", env_});
    v.push_back({"plain memory", zeros_});
    void *d = nullptr;
    EXPECT_EQ(QWZDescriptorAlloc(env_, &d, INTERVAL_KIND_DS), QWZ_SUCCESS);
    EXPECT_EQ(QWZDescriptorFree(d, INTERVAL_KIND_DS), QWZ_SUCCESS);
    v.push_back({"freed interval", d});
    return v;
  }

  // Everything that is neither an environment nor a session.
  std::vector<BadHandle> bad_contexts() {
    std::vector<BadHandle> v;
    v.push_back({"null", nullptr});
    v.push_back({"error handle", err_});
    v.push_back({"datetime", new_datetime(DATETIME_KIND_TIMESTAMP)});
    v.push_back({"interval", new_interval(INTERVAL_KIND_DS)});
    v.push_back({"plain memory", zeros_});
    void *s = nullptr;
    EXPECT_EQ(QWZHandleAlloc(env_, &s, QWZ_HTYPE_SESSION), QWZ_SUCCESS);
    EXPECT_EQ(QWZHandleFree(s, QWZ_HTYPE_SESSION), QWZ_SUCCESS);
    v.push_back({"freed session", s});
    return v;
  }

  // Both accepted kinds of context handle.
  std::vector<BadHandle> good_contexts() { return {{"environment", env_}, {"session", session_}}; }

  // Error handles that are not one: the call returns the validator's value
  // and writes nothing anywhere.
  std::vector<BadHandle> bad_error_handles() {
    std::vector<BadHandle> v;
    v.push_back({"null", nullptr});
    v.push_back({"environment", env_});
    v.push_back({"session", session_});
    v.push_back({"datetime", new_datetime(DATETIME_KIND_TIMESTAMP)});
    v.push_back({"plain memory", zeros_});
    return v;
  }

  alignas(16) unsigned char zeros_[256] = {};
};

// One expected trace record: "<Name>" and a "\t<type>     \t<value>" line
// per traced argument.
inline std::string trace_record(const std::string &name,
                                const std::vector<std::pair<std::string, std::string>> &args) {
  std::string out = "<" + name + ">\n";
  for (std::size_t i = 0; i < args.size(); ++i) {
    out += "\t" + args[i].first + "     \t" + args[i].second;
    if (i + 1 < args.size()) out += "\n";
  }
  return out;
}

inline std::string dec(long v) { return std::to_string(v); }

// The (api id, direction) sequence of the captured records.
inline std::vector<std::pair<ub4, ub4>> trace_shape(const std::vector<TraceRecord> &r) {
  std::vector<std::pair<ub4, ub4>> out;
  for (const TraceRecord &t : r) out.emplace_back(t.api_id, t.direction);
  return out;
}

// A hook that fails one direction of one API id with `result`, and records
// every call like TraceCapture does.
class SelectiveTrace {
 public:
  SelectiveTrace(ub4 api_id, ub4 direction, sword result) {
    state() = {api_id, direction, result, {}};
    QWZTraceSetHook(&SelectiveTrace::hook);
    qwz_trace_flag = 1;
  }
  ~SelectiveTrace() {
    qwz_trace_flag = 0;
    QWZTraceSetHook(nullptr);
  }
  SelectiveTrace(const SelectiveTrace &) = delete;
  SelectiveTrace &operator=(const SelectiveTrace &) = delete;
  std::vector<std::pair<ub4, ub4>> shape() const { return trace_shape(state().records); }

 private:
  struct State {
    ub4 api_id;
    ub4 direction;
    sword result;
    std::vector<TraceRecord> records;
  };
  static State &state() {
    static State s;
    return s;
  }
  static sword hook(void *errhp, sword status, ub4 direction, ub4 api_id, const char *record) {
    state().records.push_back({status, direction, api_id, record, errhp});
    return (api_id == state().api_id && direction == state().direction) ? state().result : 0;
  }
};

}  // namespace qwz_test

#endif  // QWZ_TESTS_DATETIME_TEST_UTIL_H
