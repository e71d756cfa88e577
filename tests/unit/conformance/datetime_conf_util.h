// Helpers of the black-box datetime descriptor tests. Everything here goes
// through the public functions only: values are put into a descriptor with
// QWZDateTimeFromArray (which leaves the decoded value in place even when it
// fails the check) or QWZDateTimeConstruct, and read back with the getters
// and QWZDateTimeToArray.
#ifndef QWZ_TESTS_CONFORMANCE_DATETIME_CONF_UTIL_H
#define QWZ_TESTS_CONFORMANCE_DATETIME_CONF_UTIL_H

#include "support/test_support.h"

#include <array>
#include <cstdio>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace conf {

using qwz_test::Diag;
using qwz_test::hex12;
using qwz_test::TraceRecord;

inline QWZText *T(const char *s) { return reinterpret_cast<QWZText *>(const_cast<char *>(s)); }

inline constexpr ub1 kClassDate = 184;
inline constexpr ub1 kClassTime = 185;
inline constexpr ub1 kClassTimeTz = 186;
inline constexpr ub1 kClassTimestamp = 187;
inline constexpr ub1 kClassTimestampTz = 188;

inline constexpr ub4 kTzHourFlag = 0x10000u;
inline constexpr ub4 kTzMinuteFlag = 0x40000u;

// Diagnostic texts.
inline constexpr char kInvalidHandle[] = "Invalid handle.";
inline constexpr sb4 kInvalidHandleNo = 800001;
inline std::string null_param(int n) {
  return "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n) + " is NULL\n";
}
inline constexpr char kDateFormatInvalid[] = "ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n";
inline constexpr char kTypeDiff[] = "ERROR: [QWZ-21405][QWZ Driver].type is diff\n";

// A value as a caller thinks of it.
struct V {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  unsigned fraction = 0;
  int tz_hour = 0, tz_minute = 0;
};

// The bytes of a class's layout for v. The zoned layouts carry UTC hour and
// minute, which the reader moves by the zone (no carry), so the hour byte is
// hour - tz_hour + 1 and the minute byte minute - tz_minute + 1. The caller
// keeps every byte within 0..255 (representable()).
inline std::vector<ub1> encode(ub1 klass, const V &v) {
  std::vector<ub1> b;
  auto date = [&] {
    b.push_back(static_cast<ub1>(v.year / 100 + 100));
    b.push_back(static_cast<ub1>(v.year % 100 + 100));
    b.push_back(static_cast<ub1>(v.month));
    b.push_back(static_cast<ub1>(v.day));
  };
  const bool zoned = klass == kClassTimeTz || klass == kClassTimestampTz;
  auto time = [&] {
    b.push_back(static_cast<ub1>(v.hour - (zoned ? v.tz_hour : 0) + 1));
    b.push_back(static_cast<ub1>(v.minute - (zoned ? v.tz_minute : 0) + 1));
    b.push_back(static_cast<ub1>(v.second + 1));
    b.push_back(static_cast<ub1>(v.fraction >> 24));
    b.push_back(static_cast<ub1>(v.fraction >> 16));
    b.push_back(static_cast<ub1>(v.fraction >> 8));
    b.push_back(static_cast<ub1>(v.fraction));
  };
  auto zone = [&] {
    b.push_back(static_cast<ub1>(v.tz_hour + 20));
    b.push_back(static_cast<ub1>(v.tz_minute + 60));
  };
  switch (klass) {
    case kClassDate: date(); break;
    case kClassTime: time(); break;
    case kClassTimeTz: time(); zone(); break;
    case kClassTimestamp: date(); time(); break;
    case kClassTimestampTz: date(); time(); zone(); break;
    default: break;
  }
  return b;
}

// Whether every byte of encode(klass, v) is the exact value it stands for.
inline bool representable(ub1 klass, const V &v) {
  auto in = [](int x) { return x >= 0 && x <= 255; };
  const bool zoned = klass == kClassTimeTz || klass == kClassTimestampTz;
  return in(v.year / 100 + 100) && in(v.year % 100 + 100) && in(v.month) && in(v.day) &&
         in(v.hour - (zoned ? v.tz_hour : 0) + 1) && in(v.minute - (zoned ? v.tz_minute : 0) + 1) &&
         in(v.second + 1) && in(v.tz_hour + 20) && in(v.tz_minute + 60);
}

// What the public getters and QWZDateTimeToArray report about a descriptor.
struct Seen {
  sword date_rc = 0;
  sb2 year = 0;
  ub1 month = 0, day = 0;
  sword time_rc = 0;
  ub1 hour = 0, minute = 0, second = 0;
  ub4 fraction = 0;
  sword tz_rc = 0;
  sb1 tz_hour = 0, tz_minute = 0;
  std::array<ub1, 8> bytes{};
  ub4 bytes_len = 0;
};

inline std::string show(const std::vector<ub1> &b) {
  std::string s;
  for (ub1 x : b) s += std::to_string(x) + " ";
  return s;
}

class Fixture : public qwz_test::HandleFixture {
 protected:
  Diag diag() { return qwz_test::read_diag(err_); }
  // Front-end diagnostics: number and message (their state belongs to the
  // error-handle unit).
  void expect_front(sb4 number, const std::string &message) {
    const Diag d = diag();
    EXPECT_EQ(d.rc, QWZ_SUCCESS);
    EXPECT_EQ(d.number, number);
    EXPECT_EQ(d.message, message);
  }
  void expect_invalid_handle() { expect_front(kInvalidHandleNo, kInvalidHandle); }
  void expect_null_param(int n) { expect_diag(21560, "21560", null_param(n)); }
  void expect_date_format_invalid() { expect_diag(22007, "22007", kDateFormatInvalid); }

  QWZInterval *reftz() {
    if (!reftz_) reftz_ = new_interval(INTERVAL_KIND_DS);
    return reftz_;
  }

  // Puts v into d through the array reader; returns its status (-1 when v
  // fails the check of d's type; the value is in d either way).
  sword put(QWZDateTime *d, const V &v, ub1 klass = kClassTimestampTz) {
    EXPECT_TRUE(representable(klass, v)) << "value not representable in class " << int(klass);
    std::vector<ub1> b = encode(klass, v);
    return QWZDateTimeFromArray(env_, err_, b.data(), nullptr, klass, d, reftz(), 9);
  }

  Seen see(QWZDateTime *d) {
    Seen s;
    s.date_rc = QWZDateTimeGetDate(env_, err_, d, &s.year, &s.month, &s.day);
    s.time_rc = QWZDateTimeGetTime(env_, err_, d, &s.hour, &s.minute, &s.second, &s.fraction);
    s.tz_rc = QWZDateTimeGetTimeZoneOffset(env_, err_, d, &s.tz_hour, &s.tz_minute);
    EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, s.bytes.data(), &s.bytes_len, 0),
              QWZ_SUCCESS);
    return s;
  }

  // The eight bytes QWZDateTimeToArray writes for d.
  std::array<ub1, 8> bytes_of(QWZDateTime *d) {
    std::array<ub1, 8> b{};
    ub4 len = 0;
    EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, b.data(), &len, 0), QWZ_SUCCESS);
    return b;
  }

  ub4 check(QWZDateTime *d) {
    ub4 flags = 0xDEADBEEF;
    EXPECT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), QWZ_SUCCESS);
    return flags;
  }

  // A descriptor allocated and freed again (nothing allocated in between
  // before its use).
  QWZDateTime *freed_datetime() {
    void *d = nullptr;
    EXPECT_EQ(QWZDescriptorAlloc(env_, &d, DATETIME_KIND_TIMESTAMP), QWZ_SUCCESS);
    EXPECT_EQ(QWZDescriptorFree(d, DATETIME_KIND_TIMESTAMP), QWZ_SUCCESS);
    return static_cast<QWZDateTime *>(d);
  }

  // Things that are not a live datetime descriptor.
  std::vector<std::pair<std::string, QWZDateTime *>> bad_datetimes() {
    std::vector<std::pair<std::string, QWZDateTime *>> v;
    v.emplace_back("null", nullptr);
    v.emplace_back("interval", reinterpret_cast<QWZDateTime *>(new_interval(INTERVAL_KIND_YM)));
    v.emplace_back("error handle", reinterpret_cast<QWZDateTime *>(err_));
    v.emplace_back("environment", reinterpret_cast<QWZDateTime *>(env_));
    v.emplace_back("freed", freed_datetime());
    return v;
  }

  // Things that are neither an environment nor a session.
  std::vector<std::pair<std::string, void *>> bad_contexts() {
    std::vector<std::pair<std::string, void *>> v;
    v.emplace_back("null", nullptr);
    v.emplace_back("error handle", err_);
    v.emplace_back("datetime", new_datetime(DATETIME_KIND_DATE));
    v.emplace_back("interval", new_interval(INTERVAL_KIND_DS));
    return v;
  }

  std::vector<std::pair<std::string, QWZError *>> bad_error_handles() {
    std::vector<std::pair<std::string, QWZError *>> v;
    v.emplace_back("null", nullptr);
    v.emplace_back("environment", reinterpret_cast<QWZError *>(env_));
    v.emplace_back("session", reinterpret_cast<QWZError *>(session_));
    v.emplace_back("datetime", reinterpret_cast<QWZError *>(new_datetime(DATETIME_KIND_DATE)));
    return v;
  }

  // Leaves a known diagnostic in the error handle.
  void leave_diag() {
    ASSERT_EQ(QWZDateTimeCheck(env_, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  }
  void expect_left_diag() { expect_null_param(3); }

  QWZInterval *reftz_ = nullptr;
};

// One expected trace record: "<Name>\n" and "\t<type>     \t<value>" lines.
inline std::string rec(const std::string &name,
                       const std::vector<std::pair<std::string, std::string>> &args) {
  std::string out = "<" + name + ">\n";
  for (std::size_t i = 0; i < args.size(); ++i) {
    out += "\t" + args[i].first + "     \t" + args[i].second;
    if (i + 1 < args.size()) out += "\n";
  }
  return out;
}

inline std::vector<std::pair<ub4, ub4>> shape(const std::vector<TraceRecord> &r) {
  std::vector<std::pair<ub4, ub4>> out;
  for (const TraceRecord &t : r) out.emplace_back(t.api_id, t.direction);
  return out;
}

using Shape = std::vector<std::pair<ub4, ub4>>;

// A hook that returns `result` for one (api id, direction) and 0 otherwise,
// recording every call.
class PickyTrace {
 public:
  PickyTrace(ub4 api_id, ub4 direction, sword result) {
    st() = {api_id, direction, result, {}};
    QWZTraceSetHook(&PickyTrace::hook);
    qwz_trace_flag = 1;
  }
  ~PickyTrace() {
    qwz_trace_flag = 0;
    QWZTraceSetHook(nullptr);
  }
  PickyTrace(const PickyTrace &) = delete;
  PickyTrace &operator=(const PickyTrace &) = delete;
  Shape got() const { return shape(st().records); }
  const std::vector<TraceRecord> &records() const { return st().records; }

 private:
  struct State {
    ub4 api_id, direction;
    sword result;
    std::vector<TraceRecord> records;
  };
  static State &st() {
    static State s;
    return s;
  }
  static sword hook(void *errhp, sword status, ub4 direction, ub4 api_id, const char *record) {
    st().records.push_back({status, direction, api_id, record, errhp});
    return (api_id == st().api_id && direction == st().direction) ? st().result : 0;
  }
};

}  // namespace conf

#endif  // QWZ_TESTS_CONFORMANCE_DATETIME_CONF_UTIL_H
