// Client-side helpers for the datetime arithmetic, convert and compare
// tests: values go in through the constructor and the interval setters and
// come back through the public getters only, as a client program sees them.
#ifndef QWZ_TESTS_CONFORMANCE_DATETIME_ARITH_CONF_H
#define QWZ_TESTS_CONFORMANCE_DATETIME_ARITH_CONF_H

#include "support/test_support.h"

#include <cstring>
#include <ctime>
#include <ostream>
#include <string>
#include <vector>

namespace qwz_conf {

using namespace qwz_test;

// A datetime as the getters report it. Fields a getter refuses for the type
// stay at their marker values (date of a time, time of a date, zone of an
// unzoned type).
struct Seen {
  sb2 year = -32768;
  int month = -1, day = -1, hour = -1, minute = -1, second = -1;
  long long fraction = -1;
  int tz_hour = -100, tz_minute = -100;
};

inline bool operator==(const Seen &a, const Seen &b) {
  return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
         a.minute == b.minute && a.second == b.second && a.fraction == b.fraction &&
         a.tz_hour == b.tz_hour && a.tz_minute == b.tz_minute;
}
inline std::ostream &operator<<(std::ostream &os, const Seen &s) {
  return os << s.year << "-" << s.month << "-" << s.day << " " << s.hour << ":" << s.minute << ":"
            << s.second << "." << s.fraction << " tz " << s.tz_hour << ":" << s.tz_minute;
}

// What the getters give for a timestamp with (tz) or without zone.
inline Seen stamp(sb2 y, int mo, int d, int h, int mi, int s, long long f, int tzh = -100,
                  int tzm = -100) {
  Seen v;
  v.year = y; v.month = mo; v.day = d; v.hour = h; v.minute = mi; v.second = s;
  v.fraction = f; v.tz_hour = tzh; v.tz_minute = tzm;
  return v;
}

struct DsValue {
  sb4 day, hour, minute, second, fraction;
};
inline bool operator==(const DsValue &a, const DsValue &b) {
  return a.day == b.day && a.hour == b.hour && a.minute == b.minute && a.second == b.second &&
         a.fraction == b.fraction;
}
inline std::ostream &operator<<(std::ostream &os, const DsValue &v) {
  return os << v.day << " " << v.hour << ":" << v.minute << ":" << v.second << "." << v.fraction;
}
struct YmValue {
  sb4 year, month;
};
inline bool operator==(const YmValue &a, const YmValue &b) {
  return a.year == b.year && a.month == b.month;
}
inline std::ostream &operator<<(std::ostream &os, const YmValue &v) {
  return os << v.year << "-" << v.month;
}

inline const char *const kDateFormatInvalid =
    "ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n";
inline const char *const kTypeIsDiff = "ERROR: [QWZ-21405][QWZ Driver].type is diff\n";
inline const char *const kInconsistent = "inconsistent datatypes: expected %s got %s.";
inline const char *const kNotComparableDot =
    "the intervals or datetimes are not mutually comparable.";
inline const char *const kNotComparableNoDot =
    "the intervals or datetimes are not mutually comparable";

inline std::string null_param(int n) {
  return "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n) + " is NULL\n";
}

class ConfFixture : public HandleFixture {
 protected:
  // A descriptor of `type` filled through the constructor; tz as text
  // ("+02:00") or NULL for the process's standard offset.
  QWZDateTime *make(ub4 type, sb2 y, ub1 mo, ub1 d, ub1 h = 0, ub1 mi = 0, ub1 s = 0,
                    ub4 fsec = 0, const char *tz = "+00:00") {
    QWZDateTime *dt = new_datetime(type);
    construct(dt, y, mo, d, h, mi, s, fsec, tz);
    return dt;
  }
  void construct(QWZDateTime *dt, sb2 y, ub1 mo, ub1 d, ub1 h, ub1 mi, ub1 s, ub4 fsec,
                 const char *tz) {
    QWZText buf[16] = {};
    QWZText *p = nullptr;
    size_t n = 0;
    if (tz) {
      n = std::strlen(tz);
      std::memcpy(buf, tz, n);
      p = buf;
    }
    EXPECT_EQ(QWZDateTimeConstruct(env_, err_, dt, y, mo, d, h, mi, s, fsec, p, n), QWZ_SUCCESS)
        << "constructing " << y << "-" << int(mo) << "-" << int(d);
  }
  QWZInterval *ym(sb4 y, sb4 m) {
    QWZInterval *iv = new_interval(INTERVAL_KIND_YM);
    EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, y, m, iv), QWZ_SUCCESS);
    return iv;
  }
  QWZInterval *ds(sb4 d, sb4 h, sb4 mi, sb4 s, sb4 f) {
    QWZInterval *iv = new_interval(INTERVAL_KIND_DS);
    EXPECT_EQ(QWZIntervalSetDaySecond(env_, err_, d, h, mi, s, f, iv), QWZ_SUCCESS);
    return iv;
  }
  YmValue get_ym(const QWZInterval *iv) {
    YmValue v{-7, -7};
    EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, &v.year, &v.month, iv), QWZ_SUCCESS);
    return v;
  }
  DsValue get_ds(const QWZInterval *iv) {
    DsValue v{-7, -7, -7, -7, -7};
    EXPECT_EQ(
        QWZIntervalGetDaySecond(env_, err_, &v.day, &v.hour, &v.minute, &v.second, &v.fraction, iv),
        QWZ_SUCCESS);
    return v;
  }
  // Reads through the getters; uses its own error handle so that the
  // diagnostic under test is not cleared.
  Seen seen(QWZDateTime *dt) {
    ensure_reader();
    Seen v;
    sb2 y = 0;
    ub1 mo = 0, d = 0, h = 0, mi = 0, s = 0;
    ub4 f = 0;
    sb1 th = 0, tm = 0;
    if (QWZDateTimeGetDate(env_, reader_, dt, &y, &mo, &d) == QWZ_SUCCESS) {
      v.year = y; v.month = mo; v.day = d;
    }
    if (QWZDateTimeGetTime(env_, reader_, dt, &h, &mi, &s, &f) == QWZ_SUCCESS) {
      v.hour = h; v.minute = mi; v.second = s; v.fraction = f;
    }
    if (QWZDateTimeGetTimeZoneOffset(env_, reader_, dt, &th, &tm) == QWZ_SUCCESS) {
      v.tz_hour = th; v.tz_minute = tm;
    }
    return v;
  }
  ub4 flags_of(const QWZDateTime *dt) {
    ensure_reader();
    ub4 f = 0xDEAD;
    EXPECT_EQ(QWZDateTimeCheck(env_, reader_, dt, &f), QWZ_SUCCESS);
    return f;
  }
  void *freed(ub4 type) {
    void *d = nullptr;
    EXPECT_EQ(QWZDescriptorAlloc(env_, &d, type), QWZ_SUCCESS);
    EXPECT_EQ(QWZDescriptorFree(d, type), QWZ_SUCCESS);
    return d;
  }
  void expect_invalid_handle() { expect_diag(800001, "", "Invalid handle."); }
  void expect_front_end(sb4 number, const std::string &message) {
    expect_diag(number, "", message);
  }

  void ensure_reader() {
    if (reader_) return;
    EXPECT_EQ(QWZHandleAlloc(env_, reinterpret_cast<void **>(&reader_), QWZ_HTYPE_ERROR),
              QWZ_SUCCESS);
  }

  QWZError *reader_ = nullptr;
};

// Today's local date, read the way a client would.
inline void local_today(sb2 *y, int *m, int *d) {
  tzset();
  const time_t now = time(nullptr);
  struct tm t;
  localtime_r(&now, &t);
  *y = static_cast<sb2>(t.tm_year + 1900);
  *m = t.tm_mon + 1;
  *d = t.tm_mday;
}

// A trace hook that records (api id, direction, status, record) and answers
// `answer` for one chosen (api id, direction) and 0 for every other call.
struct HookPlan {
  ub4 api_id = 0;
  ub4 direction = 0;
  sword answer = 0;
  int skip = 0;  // matching calls to let through before answering
};
struct HookRecord {
  ub4 api_id;
  ub4 direction;
  sword status;
  std::string text;
};
inline HookPlan g_plan;
inline std::vector<HookRecord> g_seen;
inline sword plan_hook(void *, sword status, ub4 direction, ub4 api_id, const char *record) {
  g_seen.push_back({api_id, direction, status, record ? record : ""});
  if (api_id == g_plan.api_id && direction == g_plan.direction) {
    if (g_plan.skip > 0) {
      --g_plan.skip;
      return 0;
    }
    return g_plan.answer;
  }
  return 0;
}
class PlannedTrace {
 public:
  explicit PlannedTrace(HookPlan plan = {}) {
    g_plan = plan;
    g_seen.clear();
    QWZTraceSetHook(plan_hook);
    qwz_trace_flag = 1;
  }
  ~PlannedTrace() {
    qwz_trace_flag = 0;
    QWZTraceSetHook(nullptr);
    g_seen.clear();
    g_plan = {};
  }
  PlannedTrace(const PlannedTrace &) = delete;
  PlannedTrace &operator=(const PlannedTrace &) = delete;
  std::vector<HookRecord> &records() { return g_seen; }
  // (api id, direction) pairs in call order.
  std::vector<std::pair<ub4, ub4>> sequence() const {
    std::vector<std::pair<ub4, ub4>> s;
    for (const HookRecord &r : g_seen) s.emplace_back(r.api_id, r.direction);
    return s;
  }
};

inline std::string line(const std::string &type, const std::string &value) {
  return "\n\t" + type + "     \t" + value;
}

}  // namespace qwz_conf

#endif
