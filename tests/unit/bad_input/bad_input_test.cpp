// The bad-input matrix: every public function called with NULL in each
// pointer position, with freed handles and descriptors, with descriptors of
// the wrong kind, and every text argument with the lengths 0, 1, 127, 128,
// 255, 256, 4096 and its type's largest value (where the type holds them)
// and with texts of every byte value. Each row names the exact status and
// the diagnostic left in the error handle. A second test fails when the
// shared library exports a function that no row calls.
#include "support/test_support.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

using namespace qwz_test;

namespace {

// What a row expects: the status, and either the diagnostic or none.
struct Want {
  sword rc;
  sb4 number = 0;  // 0: the handle holds no diagnostic
  std::string state;
  std::string message;
  bool read_diag = true;  // false where there is no valid error handle to read
};

Want status_only(sword rc) { return {rc, 0, "", "", false}; }
Want none(sword rc) { return {rc, 0, "", ""}; }
Want null_param(int n, sword rc = QWZ_ERROR) {
  return {rc, 21560, "21560",
          "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n) + " is NULL\n"};
}
Want front(sword rc, sb4 number, const std::string &message) { return {rc, number, "", message}; }
Want invalid_handle() { return front(QWZ_INVALID_HANDLE, 800001, "Invalid handle."); }
const Want kDateFormat{QWZ_ERROR, 11104, "22007",
                       "ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n"};
const Want kFormatString{QWZ_ERROR, 11104, "22007",
                         "ERROR: [QWZ-11104][QWZ Driver].format string is invalid\n"};
const Want kWeekFormat{QWZ_ERROR, 1846, "1846",
                       "ERROR: [QWZ-1846][QWZ Driver].week format is invalid\n"};
const Want kDateTimeInvalid{QWZ_ERROR, 22007, "22007",
                            "ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n"};
const Want kLiteral = front(QWZ_ERROR, 800072, "the literal string is invalid.");

struct Row {
  std::string function;  // the exported name the row calls
  std::string label;
  std::function<sword()> call;
  Want want;
};

QWZText *T(const std::string &s) {
  return reinterpret_cast<QWZText *>(const_cast<char *>(s.c_str()));
}

constexpr size_t kLengths[] = {0, 1, 127, 128, 255, 256, 4096};

// A terminated text of `len` characters: `base` followed by blanks.
std::string padded(const std::string &base, size_t len) {
  std::string s = base.substr(0, len);
  s.resize(len, ' ');
  return s;
}

class BadInput : public HandleFixture {
 protected:
  void SetUp() override {
    HandleFixture::SetUp();
    for (ub4 t = DATETIME_KIND_DATE; t <= DATETIME_KIND_TIMESTAMP_LTZ; ++t) dt_[t - 65] = new_datetime(t);
    ym_ = new_interval(INTERVAL_KIND_YM);
    ds_ = new_interval(INTERVAL_KIND_DS);
    ds2_ = new_interval(INTERVAL_KIND_DS);
    ts_ = dt_[DATETIME_KIND_TIMESTAMP_TZ - 65];
    ts2_ = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
    ASSERT_EQ(QWZDateTimeConstruct(env_, err_, ts_, 2024, 5, 17, 10, 30, 0, 0, T("+02:00"), 6), 0);
    ASSERT_EQ(QWZDateTimeConstruct(env_, err_, ts2_, 2024, 5, 18, 10, 30, 0, 0, T("+02:00"), 6), 0);
    // Freed descriptors and a freed error handle: their storage stays with
    // the environment, marked dead.
    void *p = nullptr;
    ASSERT_EQ(QWZDescriptorAlloc(env_, &p, DATETIME_KIND_TIMESTAMP_TZ), 0);
    freed_dt_ = static_cast<QWZDateTime *>(p);
    ASSERT_EQ(QWZDescriptorFree(p, DATETIME_KIND_TIMESTAMP_TZ), 0);
    ASSERT_EQ(QWZDescriptorAlloc(env_, &p, INTERVAL_KIND_DS), 0);
    freed_iv_ = static_cast<QWZInterval *>(p);
    ASSERT_EQ(QWZDescriptorFree(p, INTERVAL_KIND_DS), 0);
    ASSERT_EQ(QWZHandleAlloc(env_, &p, QWZ_HTYPE_ERROR), 0);
    freed_err_ = static_cast<QWZError *>(p);
    ASSERT_EQ(QWZHandleFree(p, QWZ_HTYPE_ERROR), 0);
    const double one = 1.5;
    ASSERT_EQ(QWZNumberFromReal(err_, &one, sizeof one, &num_), 0);
  }

  void run(const std::vector<Row> &rows) {
    for (const Row &r : rows) {
      SCOPED_TRACE(r.function + ": " + r.label);
      // A diagnostic left by an earlier row must be cleared by the call.
      QWZDate bad{2024, 2, 30, 0, 0, 0}, out{};
      QWZDateAddDays(err_, &bad, 1, &out);
      const sword rc = r.call();
      EXPECT_EQ(rc, r.want.rc);
      if (!r.want.read_diag) continue;
      const Diag d = diag();
      EXPECT_EQ(d.rc, r.want.number == 0 ? QWZ_NO_DATA : QWZ_SUCCESS);
      EXPECT_EQ(d.number, r.want.number);
      EXPECT_EQ(d.state, r.want.state);
      EXPECT_EQ(d.message, r.want.message);
    }
  }

  QWZDateTime *dt_[6] = {};
  QWZDateTime *ts_ = nullptr, *ts2_ = nullptr, *freed_dt_ = nullptr;
  QWZInterval *ym_ = nullptr, *ds_ = nullptr, *ds2_ = nullptr, *freed_iv_ = nullptr;
  QWZError *freed_err_ = nullptr;
  QWZNumber num_{};
};

// ---- the frame: error handle and context handle, for every family --------

TEST_F(BadInput, ErrorAndContextHandles) {
  QWZDate d{2024, 5, 17, 0, 0, 0}, r{};
  uword v = 0;
  ub4 v4 = 0;
  sword c = 0;
  sb4 n = 0;
  QWZtext buf[300];
  ub4 cap = sizeof buf - 1;
  size_t len = 0;
  sb2 y = 0;
  ub1 b1 = 0, b2 = 0, b3 = 0;
  ub4 f4 = 0;
  sb1 s1 = 0, s2 = 0;
  sb4 i1 = 0, i2 = 0, i3 = 0, i4 = 0, i5 = 0;
  ub1 arr[16] = {120, 124, 5, 17};
  ub4 alen = 4;
  QWZNumber out{};
  const std::string fmt = "YYYY-MM-DD", text = "2024-05-17", zone = "+02:00", fri = "friday";
  // Every function of the three families with a NULL, a freed and a
  // wrong-typed error handle: the validator's status, nothing written.
  struct ErrCall {
    const char *function;
    std::function<sword(QWZError *)> call;
  };
  const std::vector<ErrCall> calls = {
      {"QWZDateAddDays", [&](QWZError *e) { return QWZDateAddDays(e, &d, 1, &r); }},
      {"QWZDateAddMonths", [&](QWZError *e) { return QWZDateAddMonths(e, &d, 1, &r); }},
      {"QWZDateAssign", [&](QWZError *e) { return QWZDateAssign(e, &d, &r); }},
      {"QWZDateCheck", [&](QWZError *e) { return QWZDateCheck(e, &d, &v); }},
      {"QWZDateCompare", [&](QWZError *e) { return QWZDateCompare(e, &d, &d, &c); }},
      {"QWZDateDaysBetween", [&](QWZError *e) { return QWZDateDaysBetween(e, &d, &d, &n); }},
      {"QWZDateFromText",
       [&](QWZError *e) { return QWZDateFromText(e, T(text), 10, T(fmt), 10, nullptr, 0, &r); }},
      {"QWZDateLastDay", [&](QWZError *e) { return QWZDateLastDay(e, &d, &r); }},
      {"QWZDateNextDay", [&](QWZError *e) { return QWZDateNextDay(e, &d, T(fri), 6, &r); }},
      {"QWZDateSysDate", [&](QWZError *e) { return QWZDateSysDate(e, &r); }},
      {"QWZDateToText",
       [&](QWZError *e) { return QWZDateToText(e, &d, T(fmt), 10, nullptr, 0, &cap, buf); }},
      {"QWZDateZoneToZone",
       [&](QWZError *e) { return QWZDateZoneToZone(e, &d, T(zone), 6, T(zone), 6, &r); }},
      {"QWZDateTimeAssign", [&](QWZError *e) { return QWZDateTimeAssign(env_, e, ts_, ts2_); }},
      {"QWZDateTimeCheck", [&](QWZError *e) { return QWZDateTimeCheck(env_, e, ts_, &v4); }},
      {"QWZDateTimeCompare",
       [&](QWZError *e) { return QWZDateTimeCompare(env_, e, ts_, ts2_, &c); }},
      {"QWZDateTimeConstruct",
       [&](QWZError *e) {
         return QWZDateTimeConstruct(env_, e, ts2_, 2024, 5, 18, 10, 30, 0, 0, T(zone), 6);
       }},
      {"QWZDateTimeConvert", [&](QWZError *e) { return QWZDateTimeConvert(env_, e, ts_, ts2_); }},
      {"QWZDateTimeFromArray",
       [&](QWZError *e) {
         return QWZDateTimeFromArray(env_, e, arr, &alen, DATETIME_CLASS_DATE,
                                     dt_[0], ds_, 0);
       }},
      {"QWZDateTimeFromText",
       [&](QWZError *e) {
         return QWZDateTimeFromText(env_, e, T(text), 10, T(fmt), 10, nullptr, 0, dt_[0]);
       }},
      {"QWZDateTimeGetDate",
       [&](QWZError *e) { return QWZDateTimeGetDate(env_, e, ts_, &y, &b1, &b2); }},
      {"QWZDateTimeGetTime",
       [&](QWZError *e) { return QWZDateTimeGetTime(env_, e, ts_, &b1, &b2, &b3, &f4); }},
      {"QWZDateTimeGetTimeZoneName",
       [&](QWZError *e) {
         ub4 l = 16;
         return QWZDateTimeGetTimeZoneName(env_, e, ts_, arr, &l);
       }},
      {"QWZDateTimeGetTimeZoneOffset",
       [&](QWZError *e) { return QWZDateTimeGetTimeZoneOffset(env_, e, ts_, &s1, &s2); }},
      {"QWZDateTimeIntervalAdd",
       [&](QWZError *e) { return QWZDateTimeIntervalAdd(env_, e, ts_, ds_, ts2_); }},
      {"QWZDateTimeIntervalSub",
       [&](QWZError *e) { return QWZDateTimeIntervalSub(env_, e, ts_, ds_, ts2_); }},
      {"QWZDateTimeSubtract",
       [&](QWZError *e) { return QWZDateTimeSubtract(env_, e, ts_, ts2_, ds_); }},
      {"QWZDateTimeSysTimeStamp",
       [&](QWZError *e) { return QWZDateTimeSysTimeStamp(env_, e, ts2_); }},
      {"QWZDateTimeToArray",
       [&](QWZError *e) { return QWZDateTimeToArray(env_, e, ts_, ds_, arr, &alen, 0); }},
      {"QWZDateTimeToText",
       [&](QWZError *e) {
         return QWZDateTimeToText(env_, e, ts_, T(fmt), 10, 0, nullptr, 0, &cap, buf);
       }},
      {"QWZIntervalAdd", [&](QWZError *e) { return QWZIntervalAdd(env_, e, ds_, ds_, ds2_); }},
      {"QWZIntervalAssign", [&](QWZError *e) { return QWZIntervalAssign(env_, e, ds_, ds2_); }},
      {"QWZIntervalCheck", [&](QWZError *e) { return QWZIntervalCheck(env_, e, ds_, &v4); }},
      {"QWZIntervalCompare",
       [&](QWZError *e) { return QWZIntervalCompare(env_, e, ds_, ds2_, &c); }},
      {"QWZIntervalDivide",
       [&](QWZError *e) { return QWZIntervalDivide(env_, e, ds_, &num_, ds2_); }},
      {"QWZIntervalFromNumber",
       [&](QWZError *e) { return QWZIntervalFromNumber(env_, e, ds2_, &num_); }},
      {"QWZIntervalFromText",
       [&](QWZError *e) { return QWZIntervalFromText(env_, e, T("1 02:03:04"), 10, ds2_); }},
      {"QWZIntervalGetDaySecond",
       [&](QWZError *e) {
         return QWZIntervalGetDaySecond(env_, e, &i1, &i2, &i3, &i4, &i5, ds_);
       }},
      {"QWZIntervalGetYearMonth",
       [&](QWZError *e) { return QWZIntervalGetYearMonth(env_, e, &i1, &i2, ym_); }},
      {"QWZIntervalMultiply",
       [&](QWZError *e) { return QWZIntervalMultiply(env_, e, ds_, &num_, ds2_); }},
      {"QWZIntervalSetDaySecond",
       [&](QWZError *e) { return QWZIntervalSetDaySecond(env_, e, 1, 2, 3, 4, 5, ds2_); }},
      {"QWZIntervalSetYearMonth",
       [&](QWZError *e) { return QWZIntervalSetYearMonth(env_, e, 1, 2, ym_); }},
      {"QWZIntervalSubtract",
       [&](QWZError *e) { return QWZIntervalSubtract(env_, e, ds_, ds_, ds2_); }},
      {"QWZIntervalToNumber", [&](QWZError *e) { return QWZIntervalToNumber(env_, e, ds_, &out); }},
      {"QWZIntervalToText",
       [&](QWZError *e) {
         QWZtext ib[64] = {};
         return QWZIntervalToText(env_, e, ds_, 2, 2, ib, sizeof ib, &len);
       }},
  };
  std::vector<Row> rows;
  for (const ErrCall &c : calls) {
    rows.push_back({c.function, "NULL error handle", [&c] { return c.call(nullptr); },
                    status_only(QWZ_INVALID_HANDLE)});
    rows.push_back({c.function, "freed error handle",
                    [&c, this] { return c.call(freed_err_); }, status_only(QWZ_INVALID_HANDLE)});
    rows.push_back({c.function, "environment as error handle",
                    [&c, this] { return c.call(reinterpret_cast<QWZError *>(env_)); },
                    status_only(QWZ_INVALID_HANDLE)});
    rows.push_back({c.function, "valid error handle", [&c, this] { return c.call(err_); },
                    none(QWZ_SUCCESS)});
  }
  run(rows);
}

// ---- context handles of the datetime and interval families ----------------

TEST_F(BadInput, ContextHandles) {
  ub4 v4 = 0;
  sword c = 0;
  // NULL, freed error handle and error handle as context: "Invalid handle."
  // with the second validator's status; the session handle is accepted.
  struct CtxCall {
    const char *function;
    std::function<sword(void *)> call;
  };
  const std::vector<CtxCall> calls = {
      {"QWZDateTimeCheck", [&](void *h) { return QWZDateTimeCheck(h, err_, ts_, &v4); }},
      {"QWZDateTimeCompare", [&](void *h) { return QWZDateTimeCompare(h, err_, ts_, ts2_, &c); }},
      {"QWZDateTimeSysTimeStamp", [&](void *h) { return QWZDateTimeSysTimeStamp(h, err_, ts2_); }},
      {"QWZIntervalCheck", [&](void *h) { return QWZIntervalCheck(h, err_, ds_, &v4); }},
      {"QWZIntervalAdd", [&](void *h) { return QWZIntervalAdd(h, err_, ds_, ds_, ds2_); }},
      {"QWZIntervalSetYearMonth",
       [&](void *h) { return QWZIntervalSetYearMonth(h, err_, 1, 2, ym_); }},
  };
  std::vector<Row> rows;
  for (const CtxCall &k : calls) {
    rows.push_back({k.function, "NULL context", [&k] { return k.call(nullptr); }, invalid_handle()});
    rows.push_back({k.function, "error handle as context", [&k, this] { return k.call(err_); },
                    invalid_handle()});
    rows.push_back({k.function, "freed handle as context",
                    [&k, this] { return k.call(freed_err_); }, invalid_handle()});
    rows.push_back({k.function, "descriptor as context", [&k, this] { return k.call(ds_); },
                    invalid_handle()});
    rows.push_back({k.function, "session as context", [&k, this] { return k.call(session_); },
                    none(QWZ_SUCCESS)});
  }
  run(rows);
}

// ---- NULL in each pointer position ----------------------------------------

TEST_F(BadInput, NullPointers) {
  QWZDate d{2024, 5, 17, 0, 0, 0}, r{};
  uword v = 0;
  ub4 v4 = 0;
  sword c = 0;
  sb4 n = 0;
  QWZtext buf[300];
  ub4 cap = sizeof buf - 1;
  size_t len = 0;
  sb2 y = 0;
  ub1 b1 = 0, b2 = 0, b3 = 0;
  ub4 f4 = 0;
  sb1 s1 = 0, s2 = 0;
  sb4 i1 = 0;
  ub1 arr[16] = {120, 124, 5, 17};
  ub4 alen = 4, nlen = 16;
  QWZNumber out{};
  double real = 0;
  const std::string fmt = "YYYY-MM-DD", text = "2024-05-17", zone = "+02:00", fri = "friday";
  QWZText *F = T(fmt), *X = T(text), *Z = T(zone), *W = T(fri);
  const Want dnull = front(QWZ_ERROR, 800058, "the year or month or day could not be null.");
  const Want tnull =
      front(QWZ_ERROR, 800059, "the hour or minute or second or fraction could not be null.");
  const Want znull = front(QWZ_ERROR, 800084, "the hour or minute could not be null.");
  const Want bnull = front(QWZ_ERROR, 800027, "The buffer is null.");
  const Want vnull = front(QWZ_ERROR, 800036, "the value address could not be null.");
  const Want nnull = front(QWZ_ERROR, 800085, "the number could not be null.");
  const Want rnull = front(QWZ_ERROR, 800201, "the real number could not be null.");
  std::vector<Row> rows = {
      // Dates: the parameter's position, -1.
      {"QWZDateAddDays", "date", [&] { return QWZDateAddDays(err_, nullptr, 1, &r); }, null_param(2)},
      {"QWZDateAddDays", "result", [&] { return QWZDateAddDays(err_, &d, 1, nullptr); }, null_param(4)},
      {"QWZDateAddMonths", "date", [&] { return QWZDateAddMonths(err_, nullptr, 1, &r); }, null_param(2)},
      {"QWZDateAddMonths", "result", [&] { return QWZDateAddMonths(err_, &d, 1, nullptr); }, null_param(4)},
      {"QWZDateAssign", "from", [&] { return QWZDateAssign(err_, nullptr, &r); }, null_param(2)},
      {"QWZDateAssign", "to", [&] { return QWZDateAssign(err_, &d, nullptr); }, null_param(3)},
      {"QWZDateCheck", "date", [&] { return QWZDateCheck(err_, nullptr, &v); }, null_param(2)},
      {"QWZDateCheck", "valid", [&] { return QWZDateCheck(err_, &d, nullptr); }, null_param(3)},
      {"QWZDateCompare", "date1", [&] { return QWZDateCompare(err_, nullptr, &d, &c); }, null_param(2)},
      {"QWZDateCompare", "date2", [&] { return QWZDateCompare(err_, &d, nullptr, &c); }, null_param(3)},
      {"QWZDateCompare", "result", [&] { return QWZDateCompare(err_, &d, &d, nullptr); }, null_param(4)},
      {"QWZDateDaysBetween", "date1", [&] { return QWZDateDaysBetween(err_, nullptr, &d, &n); }, null_param(2)},
      {"QWZDateDaysBetween", "date2", [&] { return QWZDateDaysBetween(err_, &d, nullptr, &n); }, null_param(3)},
      {"QWZDateDaysBetween", "num_days", [&] { return QWZDateDaysBetween(err_, &d, &d, nullptr); }, null_param(4)},
      {"QWZDateFromText", "text", [&] { return QWZDateFromText(err_, nullptr, 10, F, 10, nullptr, 0, &r); }, null_param(2)},
      {"QWZDateFromText", "format", [&] { return QWZDateFromText(err_, X, 10, nullptr, 10, nullptr, 0, &r); }, null_param(4)},
      {"QWZDateFromText", "date", [&] { return QWZDateFromText(err_, X, 10, F, 10, nullptr, 0, nullptr); }, null_param(8)},
      {"QWZDateFromText", "all", [&] { return QWZDateFromText(err_, nullptr, 10, nullptr, 10, nullptr, 0, nullptr); }, null_param(2)},
      {"QWZDateLastDay", "date", [&] { return QWZDateLastDay(err_, nullptr, &r); }, null_param(2)},
      {"QWZDateLastDay", "last_day", [&] { return QWZDateLastDay(err_, &d, nullptr); }, null_param(3)},
      {"QWZDateNextDay", "date", [&] { return QWZDateNextDay(err_, nullptr, W, 6, &r); }, null_param(2)},
      {"QWZDateNextDay", "day", [&] { return QWZDateNextDay(err_, &d, nullptr, 6, &r); }, null_param(3)},
      {"QWZDateNextDay", "next_day", [&] { return QWZDateNextDay(err_, &d, W, 6, nullptr); }, null_param(5)},
      {"QWZDateNextDay", "next_day, short day", [&] { return QWZDateNextDay(err_, &d, W, 5, nullptr); }, kWeekFormat},
      {"QWZDateSysDate", "sys_date", [&] { return QWZDateSysDate(err_, nullptr); }, null_param(2)},
      {"QWZDateToText", "date", [&] { return QWZDateToText(err_, nullptr, F, 10, nullptr, 0, &cap, buf); }, null_param(2)},
      {"QWZDateToText", "format", [&] { return QWZDateToText(err_, &d, nullptr, 10, nullptr, 0, &cap, buf); }, null_param(3)},
      {"QWZDateToText", "buf_size", [&] { return QWZDateToText(err_, &d, F, 10, nullptr, 0, nullptr, buf); }, null_param(7)},
      {"QWZDateToText", "buf", [&] { return QWZDateToText(err_, &d, F, 10, nullptr, 0, &cap, nullptr); }, null_param(8)},
      {"QWZDateZoneToZone", "date1", [&] { return QWZDateZoneToZone(err_, nullptr, Z, 6, Z, 6, &r); }, null_param(8)},
      {"QWZDateZoneToZone", "date2", [&] { return QWZDateZoneToZone(err_, &d, Z, 6, Z, 6, nullptr); }, null_param(8)},
      {"QWZDateZoneToZone", "zon1", [&] { return QWZDateZoneToZone(err_, &d, nullptr, 6, Z, 6, &r); }, null_param(2)},
      {"QWZDateZoneToZone", "zon2", [&] { return QWZDateZoneToZone(err_, &d, Z, 6, nullptr, 6, &r); }, null_param(2)},
      // Datetimes: a NULL descriptor fails its validator.
      {"QWZDateTimeAssign", "from", [&] { return QWZDateTimeAssign(env_, err_, nullptr, ts2_); }, null_param(4, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeAssign", "to", [&] { return QWZDateTimeAssign(env_, err_, ts_, nullptr); }, null_param(4, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeCheck", "date", [&] { return QWZDateTimeCheck(env_, err_, nullptr, &v4); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeCheck", "valid", [&] { return QWZDateTimeCheck(env_, err_, ts_, nullptr); }, null_param(4)},
      {"QWZDateTimeCompare", "date1", [&] { return QWZDateTimeCompare(env_, err_, nullptr, ts2_, &c); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeCompare", "date2", [&] { return QWZDateTimeCompare(env_, err_, ts_, nullptr, &c); }, null_param(4, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeCompare", "result", [&] { return QWZDateTimeCompare(env_, err_, ts_, ts2_, nullptr); }, null_param(5)},
      {"QWZDateTimeConstruct", "datetime", [&] { return QWZDateTimeConstruct(env_, err_, nullptr, 2024, 5, 17, 0, 0, 0, 0, Z, 6); }, invalid_handle()},
      {"QWZDateTimeConstruct", "timezone", [&] { return QWZDateTimeConstruct(env_, err_, ts2_, 2024, 5, 17, 0, 0, 0, 0, nullptr, 6); }, none(QWZ_SUCCESS)},
      {"QWZDateTimeConvert", "indate", [&] { return QWZDateTimeConvert(env_, err_, nullptr, ts2_); }, invalid_handle()},
      {"QWZDateTimeConvert", "outdate", [&] { return QWZDateTimeConvert(env_, err_, ts_, nullptr); }, invalid_handle()},
      {"QWZDateTimeFromArray", "inarray", [&] { return QWZDateTimeFromArray(env_, err_, nullptr, &alen, DATETIME_CLASS_DATE, dt_[0], ds_, 0); }, null_param(4)},
      {"QWZDateTimeFromArray", "len", [&] { return QWZDateTimeFromArray(env_, err_, arr, nullptr, DATETIME_CLASS_DATE, dt_[0], ds_, 0); }, none(QWZ_SUCCESS)},
      {"QWZDateTimeFromArray", "datetime", [&] { return QWZDateTimeFromArray(env_, err_, arr, &alen, DATETIME_CLASS_DATE, nullptr, ds_, 0); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeFromArray", "reftz", [&] { return QWZDateTimeFromArray(env_, err_, arr, &alen, DATETIME_CLASS_DATE, dt_[0], nullptr, 0); }, invalid_handle()},
      {"QWZDateTimeFromText", "text", [&] { return QWZDateTimeFromText(env_, err_, nullptr, 10, F, 10, nullptr, 0, dt_[0]); }, null_param(4)},
      {"QWZDateTimeFromText", "format", [&] { return QWZDateTimeFromText(env_, err_, X, 10, nullptr, 10, nullptr, 0, dt_[0]); }, null_param(4)},
      {"QWZDateTimeFromText", "datetime", [&] { return QWZDateTimeFromText(env_, err_, X, 10, F, 10, nullptr, 0, nullptr); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeGetDate", "datetime", [&] { return QWZDateTimeGetDate(env_, err_, nullptr, &y, &b1, &b2); }, invalid_handle()},
      {"QWZDateTimeGetDate", "year", [&] { return QWZDateTimeGetDate(env_, err_, ts_, nullptr, &b1, &b2); }, dnull},
      {"QWZDateTimeGetDate", "month", [&] { return QWZDateTimeGetDate(env_, err_, ts_, &y, nullptr, &b2); }, dnull},
      {"QWZDateTimeGetDate", "day", [&] { return QWZDateTimeGetDate(env_, err_, ts_, &y, &b1, nullptr); }, dnull},
      {"QWZDateTimeGetTime", "datetime", [&] { return QWZDateTimeGetTime(env_, err_, nullptr, &b1, &b2, &b3, &f4); }, invalid_handle()},
      {"QWZDateTimeGetTime", "hour", [&] { return QWZDateTimeGetTime(env_, err_, ts_, nullptr, &b2, &b3, &f4); }, tnull},
      {"QWZDateTimeGetTime", "min", [&] { return QWZDateTimeGetTime(env_, err_, ts_, &b1, nullptr, &b3, &f4); }, tnull},
      {"QWZDateTimeGetTime", "sec", [&] { return QWZDateTimeGetTime(env_, err_, ts_, &b1, &b2, nullptr, &f4); }, tnull},
      {"QWZDateTimeGetTime", "fsec", [&] { return QWZDateTimeGetTime(env_, err_, ts_, &b1, &b2, &b3, nullptr); }, tnull},
      {"QWZDateTimeGetTimeZoneName", "datetime", [&] { return QWZDateTimeGetTimeZoneName(env_, err_, nullptr, arr, &nlen); }, invalid_handle()},
      {"QWZDateTimeGetTimeZoneName", "buf", [&] { return QWZDateTimeGetTimeZoneName(env_, err_, ts_, nullptr, &nlen); }, bnull},
      {"QWZDateTimeGetTimeZoneName", "buflen", [&] { return QWZDateTimeGetTimeZoneName(env_, err_, ts_, arr, nullptr); }, bnull},
      {"QWZDateTimeGetTimeZoneOffset", "datetime", [&] { return QWZDateTimeGetTimeZoneOffset(env_, err_, nullptr, &s1, &s2); }, invalid_handle()},
      {"QWZDateTimeGetTimeZoneOffset", "hour", [&] { return QWZDateTimeGetTimeZoneOffset(env_, err_, ts_, nullptr, &s2); }, znull},
      {"QWZDateTimeGetTimeZoneOffset", "min", [&] { return QWZDateTimeGetTimeZoneOffset(env_, err_, ts_, &s1, nullptr); }, znull},
      {"QWZDateTimeIntervalAdd", "datetime", [&] { return QWZDateTimeIntervalAdd(env_, err_, nullptr, ds_, ts2_); }, invalid_handle()},
      {"QWZDateTimeIntervalAdd", "inter", [&] { return QWZDateTimeIntervalAdd(env_, err_, ts_, nullptr, ts2_); }, invalid_handle()},
      {"QWZDateTimeIntervalAdd", "outdatetime", [&] { return QWZDateTimeIntervalAdd(env_, err_, ts_, ds_, nullptr); }, invalid_handle()},
      {"QWZDateTimeIntervalSub", "datetime", [&] { return QWZDateTimeIntervalSub(env_, err_, nullptr, ds_, ts2_); }, invalid_handle()},
      {"QWZDateTimeIntervalSub", "inter", [&] { return QWZDateTimeIntervalSub(env_, err_, ts_, nullptr, ts2_); }, invalid_handle()},
      {"QWZDateTimeIntervalSub", "outdatetime", [&] { return QWZDateTimeIntervalSub(env_, err_, ts_, ds_, nullptr); }, invalid_handle()},
      {"QWZDateTimeSubtract", "indate1", [&] { return QWZDateTimeSubtract(env_, err_, nullptr, ts2_, ds_); }, invalid_handle()},
      {"QWZDateTimeSubtract", "indate2", [&] { return QWZDateTimeSubtract(env_, err_, ts_, nullptr, ds_); }, invalid_handle()},
      {"QWZDateTimeSubtract", "inter", [&] { return QWZDateTimeSubtract(env_, err_, ts_, ts2_, nullptr); }, invalid_handle()},
      {"QWZDateTimeSysTimeStamp", "sys_date", [&] { return QWZDateTimeSysTimeStamp(env_, err_, nullptr); }, invalid_handle()},
      {"QWZDateTimeToArray", "datetime", [&] { return QWZDateTimeToArray(env_, err_, nullptr, ds_, arr, &alen, 0); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeToArray", "reftz", [&] { return QWZDateTimeToArray(env_, err_, ts_, nullptr, arr, &alen, 0); }, none(QWZ_SUCCESS)},
      {"QWZDateTimeToArray", "outarray", [&] { return QWZDateTimeToArray(env_, err_, ts_, ds_, nullptr, &alen, 0); }, null_param(5)},
      {"QWZDateTimeToArray", "len", [&] { return QWZDateTimeToArray(env_, err_, ts_, ds_, arr, nullptr, 0); }, null_param(9)},
      {"QWZDateTimeToText", "date", [&] { return QWZDateTimeToText(env_, err_, nullptr, F, 10, 0, nullptr, 0, &cap, buf); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeToText", "format", [&] { return QWZDateTimeToText(env_, err_, ts_, nullptr, 10, 0, nullptr, 0, &cap, buf); }, null_param(4)},
      {"QWZDateTimeToText", "buf_size", [&] { return QWZDateTimeToText(env_, err_, ts_, F, 10, 0, nullptr, 0, nullptr, buf); }, null_param(9)},
      {"QWZDateTimeToText", "buf", [&] { return QWZDateTimeToText(env_, err_, ts_, F, 10, 0, nullptr, 0, &cap, nullptr); }, null_param(10)},
      // Intervals: a NULL descriptor fails its validator.
      {"QWZIntervalAdd", "addend1", [&] { return QWZIntervalAdd(env_, err_, nullptr, ds_, ds2_); }, invalid_handle()},
      {"QWZIntervalAdd", "addend2", [&] { return QWZIntervalAdd(env_, err_, ds_, nullptr, ds2_); }, invalid_handle()},
      {"QWZIntervalAdd", "result", [&] { return QWZIntervalAdd(env_, err_, ds_, ds_, nullptr); }, invalid_handle()},
      {"QWZIntervalAssign", "ininter", [&] { return QWZIntervalAssign(env_, err_, nullptr, ds2_); }, invalid_handle()},
      {"QWZIntervalAssign", "outinter", [&] { return QWZIntervalAssign(env_, err_, ds_, nullptr); }, invalid_handle()},
      {"QWZIntervalCheck", "interval", [&] { return QWZIntervalCheck(env_, err_, nullptr, &v4); }, invalid_handle()},
      {"QWZIntervalCheck", "valid", [&] { return QWZIntervalCheck(env_, err_, ds_, nullptr); }, null_param(4)},
      {"QWZIntervalCompare", "inter1", [&] { return QWZIntervalCompare(env_, err_, nullptr, ds2_, &c); }, invalid_handle()},
      {"QWZIntervalCompare", "inter2", [&] { return QWZIntervalCompare(env_, err_, ds_, nullptr, &c); }, invalid_handle()},
      // Kept as the interface has it: success with the diagnostic filled.
      {"QWZIntervalCompare", "result", [&] { return QWZIntervalCompare(env_, err_, ds_, ds2_, nullptr); }, null_param(5, QWZ_SUCCESS)},
      {"QWZIntervalDivide", "dividend", [&] { return QWZIntervalDivide(env_, err_, nullptr, &num_, ds2_); }, invalid_handle()},
      {"QWZIntervalDivide", "divisor", [&] { return QWZIntervalDivide(env_, err_, ds_, nullptr, ds2_); }, nnull},
      {"QWZIntervalDivide", "result", [&] { return QWZIntervalDivide(env_, err_, ds_, &num_, nullptr); }, invalid_handle()},
      {"QWZIntervalFromNumber", "interval", [&] { return QWZIntervalFromNumber(env_, err_, nullptr, &num_); }, invalid_handle()},
      {"QWZIntervalFromNumber", "number", [&] { return QWZIntervalFromNumber(env_, err_, ds2_, nullptr); }, nnull},
      // A NULL text returns -1 at once, with no diagnostic.
      {"QWZIntervalFromText", "inpstring", [&] { return QWZIntervalFromText(env_, err_, nullptr, 10, ds2_); }, none(QWZ_ERROR)},
      {"QWZIntervalFromText", "result", [&] { return QWZIntervalFromText(env_, err_, T("1 02:03:04"), 10, nullptr); }, invalid_handle()},
      {"QWZIntervalGetDaySecond", "interval", [&] { return QWZIntervalGetDaySecond(env_, err_, &i1, &i1, &i1, &i1, &i1, nullptr); }, invalid_handle()},
      {"QWZIntervalGetDaySecond", "dy", [&] { return QWZIntervalGetDaySecond(env_, err_, nullptr, &i1, &i1, &i1, &i1, ds_); }, vnull},
      {"QWZIntervalGetDaySecond", "hr", [&] { return QWZIntervalGetDaySecond(env_, err_, &i1, nullptr, &i1, &i1, &i1, ds_); }, vnull},
      {"QWZIntervalGetDaySecond", "mm", [&] { return QWZIntervalGetDaySecond(env_, err_, &i1, &i1, nullptr, &i1, &i1, ds_); }, vnull},
      {"QWZIntervalGetDaySecond", "ss", [&] { return QWZIntervalGetDaySecond(env_, err_, &i1, &i1, &i1, nullptr, &i1, ds_); }, vnull},
      {"QWZIntervalGetDaySecond", "fsec", [&] { return QWZIntervalGetDaySecond(env_, err_, &i1, &i1, &i1, &i1, nullptr, ds_); }, vnull},
      {"QWZIntervalGetYearMonth", "interval", [&] { return QWZIntervalGetYearMonth(env_, err_, &i1, &i1, nullptr); }, invalid_handle()},
      {"QWZIntervalGetYearMonth", "yr", [&] { return QWZIntervalGetYearMonth(env_, err_, nullptr, &i1, ym_); }, vnull},
      {"QWZIntervalGetYearMonth", "mnth", [&] { return QWZIntervalGetYearMonth(env_, err_, &i1, nullptr, ym_); }, vnull},
      {"QWZIntervalMultiply", "inter", [&] { return QWZIntervalMultiply(env_, err_, nullptr, &num_, ds2_); }, invalid_handle()},
      {"QWZIntervalMultiply", "nfactor", [&] { return QWZIntervalMultiply(env_, err_, ds_, nullptr, ds2_); }, nnull},
      {"QWZIntervalMultiply", "result", [&] { return QWZIntervalMultiply(env_, err_, ds_, &num_, nullptr); }, invalid_handle()},
      {"QWZIntervalSetDaySecond", "result", [&] { return QWZIntervalSetDaySecond(env_, err_, 1, 2, 3, 4, 5, nullptr); }, invalid_handle()},
      {"QWZIntervalSetYearMonth", "result", [&] { return QWZIntervalSetYearMonth(env_, err_, 1, 2, nullptr); }, invalid_handle()},
      {"QWZIntervalSubtract", "minuend", [&] { return QWZIntervalSubtract(env_, err_, nullptr, ds_, ds2_); }, invalid_handle()},
      {"QWZIntervalSubtract", "subtrahend", [&] { return QWZIntervalSubtract(env_, err_, ds_, nullptr, ds2_); }, invalid_handle()},
      {"QWZIntervalSubtract", "result", [&] { return QWZIntervalSubtract(env_, err_, ds_, ds_, nullptr); }, invalid_handle()},
      {"QWZIntervalToNumber", "interval", [&] { return QWZIntervalToNumber(env_, err_, nullptr, &out); }, invalid_handle()},
      {"QWZIntervalToNumber", "number", [&] { return QWZIntervalToNumber(env_, err_, ds_, nullptr); }, nnull},
      {"QWZIntervalToText", "interval", [&] { QWZtext ib[64] = {}; return QWZIntervalToText(env_, err_, nullptr, 2, 2, ib, sizeof ib, &len); }, invalid_handle()},
      {"QWZIntervalToText", "buffer", [&] { return QWZIntervalToText(env_, err_, ds_, 2, 2, nullptr, 64, &len); }, null_param(6)},
      {"QWZIntervalToText", "resultlen", [&] { QWZtext ib[64] = {}; return QWZIntervalToText(env_, err_, ds_, 2, 2, ib, sizeof ib, nullptr); }, null_param(8)},
      // Numbers.
      {"QWZNumberFromReal", "rnum", [&] { return QWZNumberFromReal(err_, nullptr, sizeof real, &out); }, rnull},
      {"QWZNumberFromReal", "number", [&] { return QWZNumberFromReal(err_, &real, sizeof real, nullptr); }, nnull},
      {"QWZNumberFromReal", "both", [&] { return QWZNumberFromReal(err_, nullptr, sizeof real, nullptr); }, rnull},
      {"QWZNumberToReal", "number", [&] { return QWZNumberToReal(err_, nullptr, sizeof real, &real); }, nnull},
      {"QWZNumberToReal", "rsl", [&] { return QWZNumberToReal(err_, &num_, sizeof real, nullptr); }, rnull},
      {"QWZNumberToReal", "both", [&] { return QWZNumberToReal(err_, nullptr, sizeof real, nullptr); }, nnull},
      {"QWZNumberFromReal", "NULL error handle", [&] { return QWZNumberFromReal(nullptr, &real, sizeof real, &out); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZNumberToReal", "NULL error handle", [&] { return QWZNumberToReal(nullptr, &num_, sizeof real, &real); }, status_only(QWZ_INVALID_HANDLE)},
  };
  run(rows);
}

// ---- handles, descriptors, diagnostics and the trace hook -----------------

TEST_F(BadInput, HandlesAndDiagnostics) {
  void *p = nullptr;
  QWZEnv *e = nullptr;
  QWZText state[8], msg[64];
  sb4 code = 0;
  std::vector<Row> rows = {
      {"QWZEnvCreate", "envhpp", [&] { return QWZEnvCreate(nullptr, 0); }, status_only(QWZ_ERROR)},
      {"QWZEnvCreate", "mode 1", [&] { return QWZEnvCreate(&e, 1); }, status_only(QWZ_ERROR)},
      {"QWZHandleAlloc", "parent NULL", [&] { return QWZHandleAlloc(nullptr, &p, QWZ_HTYPE_ERROR); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZHandleAlloc", "parent freed", [&] { return QWZHandleAlloc(freed_err_, &p, QWZ_HTYPE_ERROR); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZHandleAlloc", "parent a descriptor", [&] { return QWZHandleAlloc(ds_, &p, QWZ_HTYPE_ERROR); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZHandleAlloc", "hndlpp", [&] { return QWZHandleAlloc(env_, nullptr, QWZ_HTYPE_ERROR); }, status_only(QWZ_ERROR)},
      {"QWZHandleAlloc", "type 62", [&] { return QWZHandleAlloc(env_, &p, INTERVAL_KIND_YM); }, status_only(QWZ_ERROR)},
      {"QWZHandleFree", "NULL", [&] { return QWZHandleFree(nullptr, QWZ_HTYPE_ERROR); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZHandleFree", "freed", [&] { return QWZHandleFree(freed_err_, QWZ_HTYPE_ERROR); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZHandleFree", "wrong type", [&] { return QWZHandleFree(err_, QWZ_HTYPE_SESSION); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZDescriptorAlloc", "parent NULL", [&] { return QWZDescriptorAlloc(nullptr, &p, INTERVAL_KIND_DS); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZDescriptorAlloc", "parent an error handle", [&] { return QWZDescriptorAlloc(err_, &p, INTERVAL_KIND_DS); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZDescriptorAlloc", "descpp", [&] { return QWZDescriptorAlloc(env_, nullptr, INTERVAL_KIND_DS); }, status_only(QWZ_ERROR)},
      {"QWZDescriptorAlloc", "type 64", [&] { return QWZDescriptorAlloc(env_, &p, 64); }, status_only(QWZ_ERROR)},
      {"QWZDescriptorAlloc", "type 71", [&] { return QWZDescriptorAlloc(env_, &p, 71); }, status_only(QWZ_ERROR)},
      {"QWZDescriptorFree", "NULL", [&] { return QWZDescriptorFree(nullptr, INTERVAL_KIND_DS); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZDescriptorFree", "freed", [&] { return QWZDescriptorFree(freed_iv_, INTERVAL_KIND_DS); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZDescriptorFree", "wrong kind", [&] { return QWZDescriptorFree(ds_, INTERVAL_KIND_YM); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZDescriptorFree", "datetime as interval", [&] { return QWZDescriptorFree(ts_, INTERVAL_KIND_DS); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZErrorGet", "NULL handle", [&] { return QWZErrorGet(nullptr, 1, state, &code, msg, sizeof msg, QWZ_HTYPE_ERROR); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZErrorGet", "freed handle", [&] { return QWZErrorGet(freed_err_, 1, state, &code, msg, sizeof msg, QWZ_HTYPE_ERROR); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZErrorGet", "environment", [&] { return QWZErrorGet(env_, 1, state, &code, msg, sizeof msg, QWZ_HTYPE_ERROR); }, status_only(QWZ_INVALID_HANDLE)},
      {"QWZTraceSetHook", "NULL restores the default sink", [&] { QWZTraceSetHook(nullptr); return QWZ_SUCCESS; }, status_only(QWZ_SUCCESS)},
  };
  run(rows);
}

// ---- freed descriptors and descriptors of the wrong kind -------------------

TEST_F(BadInput, FreedAndWrongKindDescriptors) {
  ub4 v4 = 0;
  sword c = 0;
  sb2 y = 0;
  ub1 b1 = 0, b2 = 0, b3 = 0;
  ub4 f4 = 0, alen = 4, nlen = 16, cap = 64;
  sb1 s1 = 0, s2 = 0;
  sb4 i1 = 0;
  size_t len = 0;
  ub1 arr[16] = {120, 124, 5, 17};
  QWZtext buf[300];
  QWZNumber out{};
  QWZText *F = T("YYYY-MM-DD"), *X = T("2024-05-17"), *Z = T("+02:00");
  // Each call takes the bad descriptor in one position; `datetime` says
  // whether that position takes a datetime (else an interval).
  struct DescCall {
    const char *function;
    const char *position;
    bool datetime;
    std::function<sword(void *)> call;
    Want want;
  };
  auto D = [](void *p) { return static_cast<QWZDateTime *>(p); };
  auto I = [](void *p) { return static_cast<QWZInterval *>(p); };
  const Want ih = invalid_handle();
  const std::vector<DescCall> calls = {
      {"QWZDateTimeAssign", "from", true, [&](void *p) { return QWZDateTimeAssign(env_, err_, D(p), ts2_); }, null_param(4, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeAssign", "to", true, [&](void *p) { return QWZDateTimeAssign(env_, err_, ts_, D(p)); }, null_param(4, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeCheck", "date", true, [&](void *p) { return QWZDateTimeCheck(env_, err_, D(p), &v4); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeCompare", "date1", true, [&](void *p) { return QWZDateTimeCompare(env_, err_, D(p), ts2_, &c); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeCompare", "date2", true, [&](void *p) { return QWZDateTimeCompare(env_, err_, ts_, D(p), &c); }, null_param(4, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeConstruct", "datetime", true, [&](void *p) { return QWZDateTimeConstruct(env_, err_, D(p), 2024, 5, 17, 0, 0, 0, 0, Z, 6); }, ih},
      {"QWZDateTimeConvert", "indate", true, [&](void *p) { return QWZDateTimeConvert(env_, err_, D(p), ts2_); }, ih},
      {"QWZDateTimeConvert", "outdate", true, [&](void *p) { return QWZDateTimeConvert(env_, err_, ts_, D(p)); }, ih},
      {"QWZDateTimeFromArray", "datetime", true, [&](void *p) { return QWZDateTimeFromArray(env_, err_, arr, &alen, DATETIME_CLASS_DATE, D(p), ds_, 0); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeFromArray", "reftz", false, [&](void *p) { return QWZDateTimeFromArray(env_, err_, arr, &alen, DATETIME_CLASS_DATE, dt_[0], I(p), 0); }, ih},
      {"QWZDateTimeFromText", "datetime", true, [&](void *p) { return QWZDateTimeFromText(env_, err_, X, 10, F, 10, nullptr, 0, D(p)); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeGetDate", "datetime", true, [&](void *p) { return QWZDateTimeGetDate(env_, err_, D(p), &y, &b1, &b2); }, ih},
      {"QWZDateTimeGetTime", "datetime", true, [&](void *p) { return QWZDateTimeGetTime(env_, err_, D(p), &b1, &b2, &b3, &f4); }, ih},
      {"QWZDateTimeGetTimeZoneName", "datetime", true, [&](void *p) { return QWZDateTimeGetTimeZoneName(env_, err_, D(p), arr, &nlen); }, ih},
      {"QWZDateTimeGetTimeZoneOffset", "datetime", true, [&](void *p) { return QWZDateTimeGetTimeZoneOffset(env_, err_, D(p), &s1, &s2); }, ih},
      {"QWZDateTimeIntervalAdd", "datetime", true, [&](void *p) { return QWZDateTimeIntervalAdd(env_, err_, D(p), ds_, ts2_); }, ih},
      {"QWZDateTimeIntervalAdd", "inter", false, [&](void *p) { return QWZDateTimeIntervalAdd(env_, err_, ts_, I(p), ts2_); }, ih},
      {"QWZDateTimeIntervalAdd", "outdatetime", true, [&](void *p) { return QWZDateTimeIntervalAdd(env_, err_, ts_, ds_, D(p)); }, ih},
      {"QWZDateTimeIntervalSub", "datetime", true, [&](void *p) { return QWZDateTimeIntervalSub(env_, err_, D(p), ds_, ts2_); }, ih},
      {"QWZDateTimeIntervalSub", "inter", false, [&](void *p) { return QWZDateTimeIntervalSub(env_, err_, ts_, I(p), ts2_); }, ih},
      {"QWZDateTimeIntervalSub", "outdatetime", true, [&](void *p) { return QWZDateTimeIntervalSub(env_, err_, ts_, ds_, D(p)); }, ih},
      {"QWZDateTimeSubtract", "indate1", true, [&](void *p) { return QWZDateTimeSubtract(env_, err_, D(p), ts2_, ds_); }, ih},
      {"QWZDateTimeSubtract", "indate2", true, [&](void *p) { return QWZDateTimeSubtract(env_, err_, ts_, D(p), ds_); }, ih},
      {"QWZDateTimeSubtract", "inter", false, [&](void *p) { return QWZDateTimeSubtract(env_, err_, ts_, ts2_, I(p)); }, ih},
      {"QWZDateTimeSysTimeStamp", "sys_date", true, [&](void *p) { return QWZDateTimeSysTimeStamp(env_, err_, D(p)); }, ih},
      {"QWZDateTimeToArray", "datetime", true, [&](void *p) { return QWZDateTimeToArray(env_, err_, D(p), ds_, arr, &alen, 0); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZDateTimeToText", "date", true, [&](void *p) { return QWZDateTimeToText(env_, err_, D(p), F, 10, 0, nullptr, 0, &cap, buf); }, null_param(3, QWZ_INVALID_HANDLE)},
      {"QWZIntervalAdd", "addend1", false, [&](void *p) { return QWZIntervalAdd(env_, err_, I(p), ds_, ds2_); }, ih},
      {"QWZIntervalAdd", "addend2", false, [&](void *p) { return QWZIntervalAdd(env_, err_, ds_, I(p), ds2_); }, ih},
      {"QWZIntervalAdd", "result", false, [&](void *p) { return QWZIntervalAdd(env_, err_, ds_, ds_, I(p)); }, ih},
      {"QWZIntervalAssign", "ininter", false, [&](void *p) { return QWZIntervalAssign(env_, err_, I(p), ds2_); }, ih},
      {"QWZIntervalAssign", "outinter", false, [&](void *p) { return QWZIntervalAssign(env_, err_, ds_, I(p)); }, ih},
      {"QWZIntervalCheck", "interval", false, [&](void *p) { return QWZIntervalCheck(env_, err_, I(p), &v4); }, ih},
      {"QWZIntervalCompare", "inter1", false, [&](void *p) { return QWZIntervalCompare(env_, err_, I(p), ds2_, &c); }, ih},
      {"QWZIntervalCompare", "inter2", false, [&](void *p) { return QWZIntervalCompare(env_, err_, ds_, I(p), &c); }, ih},
      {"QWZIntervalDivide", "dividend", false, [&](void *p) { return QWZIntervalDivide(env_, err_, I(p), &num_, ds2_); }, ih},
      {"QWZIntervalDivide", "result", false, [&](void *p) { return QWZIntervalDivide(env_, err_, ds_, &num_, I(p)); }, ih},
      {"QWZIntervalFromNumber", "interval", false, [&](void *p) { return QWZIntervalFromNumber(env_, err_, I(p), &num_); }, ih},
      {"QWZIntervalFromText", "result", false, [&](void *p) { return QWZIntervalFromText(env_, err_, T("1 02:03:04"), 10, I(p)); }, ih},
      {"QWZIntervalGetDaySecond", "interval", false, [&](void *p) { return QWZIntervalGetDaySecond(env_, err_, &i1, &i1, &i1, &i1, &i1, I(p)); }, ih},
      {"QWZIntervalGetYearMonth", "interval", false, [&](void *p) { return QWZIntervalGetYearMonth(env_, err_, &i1, &i1, I(p)); }, ih},
      {"QWZIntervalMultiply", "inter", false, [&](void *p) { return QWZIntervalMultiply(env_, err_, I(p), &num_, ds2_); }, ih},
      {"QWZIntervalMultiply", "result", false, [&](void *p) { return QWZIntervalMultiply(env_, err_, ds_, &num_, I(p)); }, ih},
      {"QWZIntervalSetDaySecond", "result", false, [&](void *p) { return QWZIntervalSetDaySecond(env_, err_, 1, 2, 3, 4, 5, I(p)); }, ih},
      {"QWZIntervalSetYearMonth", "result", false, [&](void *p) { return QWZIntervalSetYearMonth(env_, err_, 1, 2, I(p)); }, ih},
      {"QWZIntervalSubtract", "minuend", false, [&](void *p) { return QWZIntervalSubtract(env_, err_, I(p), ds_, ds2_); }, ih},
      {"QWZIntervalSubtract", "subtrahend", false, [&](void *p) { return QWZIntervalSubtract(env_, err_, ds_, I(p), ds2_); }, ih},
      {"QWZIntervalSubtract", "result", false, [&](void *p) { return QWZIntervalSubtract(env_, err_, ds_, ds_, I(p)); }, ih},
      {"QWZIntervalToNumber", "interval", false, [&](void *p) { return QWZIntervalToNumber(env_, err_, I(p), &out); }, ih},
      {"QWZIntervalToText", "interval", false, [&](void *p) { QWZtext ib[64] = {}; return QWZIntervalToText(env_, err_, I(p), 2, 2, ib, sizeof ib, &len); }, ih},
  };
  std::vector<Row> rows;
  for (const DescCall &k : calls) {
    const std::string where = std::string(k.position) + ": ";
    void *freed = k.datetime ? static_cast<void *>(freed_dt_) : static_cast<void *>(freed_iv_);
    void *other = k.datetime ? static_cast<void *>(ds_) : static_cast<void *>(ts_);
    rows.push_back({k.function, where + "freed", [&k, freed] { return k.call(freed); }, k.want});
    rows.push_back({k.function, where + "other family", [&k, other] { return k.call(other); }, k.want});
    rows.push_back({k.function, where + "error handle", [&k, this] { return k.call(err_); }, k.want});
  }
  // The Set and Get functions also refuse the other interval kind.
  rows.push_back({"QWZIntervalSetYearMonth", "day-second", [&] { return QWZIntervalSetYearMonth(env_, err_, 1, 2, ds2_); }, ih});
  rows.push_back({"QWZIntervalSetDaySecond", "year-month", [&] { return QWZIntervalSetDaySecond(env_, err_, 1, 2, 3, 4, 5, ym_); }, ih});
  rows.push_back({"QWZIntervalGetYearMonth", "day-second", [&] { return QWZIntervalGetYearMonth(env_, err_, &i1, &i1, ds_); }, ih});
  rows.push_back({"QWZIntervalGetDaySecond", "year-month", [&] { return QWZIntervalGetDaySecond(env_, err_, &i1, &i1, &i1, &i1, &i1, ym_); }, ih});
  // Wrong datetime types where a function wants one.
  rows.push_back({"QWZDateTimeIntervalAdd", "timestamp without zone", [&] { return QWZDateTimeIntervalAdd(env_, err_, dt_[3], ds_, ts2_); }, front(QWZ_ERROR, 800130, "inconsistent datatypes: expected %s got %s.")});
  rows.push_back({"QWZDateTimeIntervalSub", "date", [&] { return QWZDateTimeIntervalSub(env_, err_, dt_[0], ds_, ts2_); }, front(QWZ_ERROR, 800130, "inconsistent datatypes: expected %s got %s.")});
  rows.push_back({"QWZDateTimeSubtract", "types differ", [&] { return QWZDateTimeSubtract(env_, err_, ts_, dt_[3], ds_); }, front(QWZ_ERROR, 800129, "the intervals or datetimes are not mutually comparable.")});
  rows.push_back({"QWZIntervalMultiply", "kinds differ", [&] { return QWZIntervalMultiply(env_, err_, ds_, &num_, ym_); }, front(QWZ_ERROR, 800158, "inconsistent datatypes: expected %s got %s.")});
  rows.push_back({"QWZDateTimeGetTimeZoneOffset", "no zone", [&] { return QWZDateTimeGetTimeZoneOffset(env_, err_, dt_[3], &s1, &s2); }, front(QWZ_ERROR, 800083, "datetime does not contain a time zone.")});
  rows.push_back({"QWZDateTimeGetTime", "date", [&] { QWZDateTimeConstruct(env_, err_, dt_[0], 2024, 5, 17, 0, 0, 0, 0, nullptr, 0); return QWZDateTimeGetTime(env_, err_, dt_[0], &b1, &b2, &b3, &f4); }, front(QWZ_ERROR, 800060, "specified field not found in datetime or interval.")});
  rows.push_back({"QWZDateTimeFromArray", "class 189", [&] { return QWZDateTimeFromArray(env_, err_, arr, &alen, 189, dt_[0], ds_, 0); }, front(QWZ_ERROR, 800156, "the datetime class is invalid.")});
  run(rows);
}

// ---- text lengths and bytes -----------------------------------------------

// One text argument of one function: the call with a text and its length,
// and the expected outcome by length and by the text's byte.
struct TextArg {
  const char *function;
  const char *argument;
  const char *base;  // the text the lengths pad with blanks
  uint64_t largest;  // the largest value of the length's type
  std::function<sword(const std::string &, uint64_t)> call;
  std::function<Want(size_t)> by_length;
  std::function<Want(unsigned char)> by_byte;
};

bool keyword_letter(unsigned char b) {
  return std::strchr("DEIJQWXYdeijqwxy", b) != nullptr && b != 0;
}
bool alnum(unsigned char b) {
  return (b >= '0' && b <= '9') || (b >= 'A' && b <= 'Z') || (b >= 'a' && b <= 'z');
}

TEST_F(BadInput, TextLengthsAndBytes) {
  ZoneGuard zone(kUtc);
  QWZDate d{2024, 5, 17, 0, 0, 0}, r{};
  QWZtext buf[300];
  const Want ok = none(QWZ_SUCCESS), silent = none(QWZ_ERROR);
  const Want format_or_date{QWZ_ERROR, 11104, "22007",
                            "ERROR: [QWZ-11104][QWZ Driver]. format or date string is invalid\n"};
  const Want too_long = front(QWZ_ERROR, 800155, "string is too long for internal buffer.");
  const std::vector<TextArg> args = {
      {"QWZDateFromText", "text", "", std::numeric_limits<ub4>::max(),
       [&](const std::string &t, uint64_t n) {
         return QWZDateFromText(err_, T(t), static_cast<ub4>(n), T("YYYY-MM-DD"), 10, nullptr, 0, &r);
       },
       // Blanks only: nothing is left after trimming, so the year is missing.
       [&](size_t n) { return n == 0 ? kDateFormat : silent; },
       // One byte never makes a date under YYYY-MM-DD.
       [&](unsigned char) { return silent; }},
      {"QWZDateFromText", "format", "YYYY-MM-DD", std::numeric_limits<ub1>::max(),
       [&](const std::string &f, uint64_t n) {
         return QWZDateFromText(err_, T("2024-05-17"), 10, T(f), static_cast<ub1>(n), nullptr, 0, &r);
       },
       // 0: refused; "Y": an unsupported keyword; over 127 characters: too long.
       [&](size_t n) { return n == 0 ? kFormatString : n == 1 ? kFormatString : n <= 127 ? ok : silent; },
       [&](unsigned char b) {
         if (b == 0 || b == ' ') return silent;  // no token at all
         if (alnum(b)) return kFormatString;
         return ok;  // one literal; year and month from the clock
       }},
      {"QWZDateFromText", "language", "AMERICAN", std::numeric_limits<ub4>::max(),
       [&](const std::string &l, uint64_t n) {
         return QWZDateFromText(err_, T("2024-05-17"), 10, T("YYYY-MM-DD"), 10, T(l), static_cast<ub4>(n), &r);
       },
       [&](size_t) { return ok; }, [&](unsigned char) { return ok; }},
      {"QWZDateToText", "format", "YYYY-MM-DD", std::numeric_limits<ub1>::max(),
       [&](const std::string &f, uint64_t n) {
         ub4 cap = 256;
         return QWZDateToText(err_, &d, T(f), static_cast<ub1>(n), nullptr, 0, &cap, buf);
       },
       [&](size_t n) { return n == 0 ? format_or_date : n == 1 ? kFormatString : n <= 127 ? ok : format_or_date; },
       [&](unsigned char b) {
         if (b == 0 || b == ' ') return format_or_date;
         if (keyword_letter(b)) return kFormatString;
         if (alnum(b)) return format_or_date;
         return ok;
       }},
      {"QWZDateToText", "language", "AMERICAN", std::numeric_limits<ub4>::max(),
       [&](const std::string &l, uint64_t n) {
         ub4 cap = 256;
         return QWZDateToText(err_, &d, T("YYYY-MM-DD"), 10, T(l), static_cast<ub4>(n), &cap, buf);
       },
       [&](size_t) { return ok; }, [&](unsigned char) { return ok; }},
      {"QWZDateNextDay", "day", "friday", std::numeric_limits<ub4>::max(),
       [&](const std::string &t, uint64_t n) { return QWZDateNextDay(err_, &d, T(t), static_cast<ub4>(n), &r); },
       // Five characters or fewer, or blanks after the name: no weekday.
       [&](size_t) { return kWeekFormat; }, [&](unsigned char) { return kWeekFormat; }},
      {"QWZDateZoneToZone", "zon1", "+02:00", std::numeric_limits<ub4>::max(),
       [&](const std::string &z, uint64_t n) {
         return QWZDateZoneToZone(err_, &d, T(z), static_cast<ub4>(n), T("+02:00"), 6, &r);
       },
       [&](size_t) { return ok; }, [&](unsigned char) { return ok; }},
      {"QWZDateZoneToZone", "zon2", "+02:00", std::numeric_limits<ub4>::max(),
       [&](const std::string &z, uint64_t n) {
         return QWZDateZoneToZone(err_, &d, T("+02:00"), 6, T(z), static_cast<ub4>(n), &r);
       },
       [&](size_t) { return ok; }, [&](unsigned char) { return ok; }},
      {"QWZDateTimeFromText", "text", "", std::numeric_limits<size_t>::max(),
       [&](const std::string &t, uint64_t n) {
         return QWZDateTimeFromText(env_, err_, T(t), static_cast<size_t>(n), T("YYYY-MM-DD"), 10, nullptr, 0, dt_[3]);
       },
       // The parse stops at once and the partial value (no month) fails the check.
       [&](size_t n) { return n == std::numeric_limits<size_t>::max() ? too_long : kDateTimeInvalid; },
       [&](unsigned char) { return kDateTimeInvalid; }},
      {"QWZDateTimeFromText", "format", "YYYY-MM-DD", std::numeric_limits<ub1>::max(),
       [&](const std::string &f, uint64_t n) {
         return QWZDateTimeFromText(env_, err_, T("2024-05-17"), 10, T(f), static_cast<ub1>(n), nullptr, 0, dt_[3]);
       },
       // An empty or too long model leaves the cleared value, which fails the
       // check; "Y" is an unsupported keyword.
       [&](size_t n) { return n == 1 ? kFormatString : n >= 1 && n <= 127 ? ok : kDateTimeInvalid; },
       [&](unsigned char b) {
         if (b == 0 || b == ' ') return kDateTimeInvalid;
         if (alnum(b)) return kFormatString;
         return ok;  // one literal; the date from the clock
       }},
      {"QWZDateTimeToText", "format", "YYYY-MM-DD", std::numeric_limits<ub1>::max(),
       [&](const std::string &f, uint64_t n) {
         ub4 cap = 256;
         return QWZDateTimeToText(env_, err_, ts_, T(f), static_cast<ub1>(n), 0, nullptr, 0, &cap, buf);
       },
       // Failures other than an unsupported keyword record nothing here.
       [&](size_t n) { return n == 1 ? kFormatString : n >= 1 && n <= 127 ? ok : silent; },
       [&](unsigned char b) {
         if (b == 0 || b == ' ') return silent;
         if (keyword_letter(b)) return kFormatString;
         if (alnum(b)) return silent;
         return ok;
       }},
      {"QWZDateTimeConstruct", "timezone", "+05:30", std::numeric_limits<size_t>::max(),
       [&](const std::string &z, uint64_t n) {
         return QWZDateTimeConstruct(env_, err_, ts2_, 2024, 5, 17, 10, 0, 0, 0, T(z), static_cast<size_t>(n));
       },
       // Whatever part of "+05:30" is left reads as a zone.
       [&](size_t) { return ok; },
       // A letter fails the parse, which records nothing; anything else is
       // an hour of one digit or none.
       [&](unsigned char b) {
         const bool letter = (b >= 'A' && b <= 'Z') || (b >= 'a' && b <= 'z');
         return letter ? silent : ok;
       }},
      {"QWZDateTimeFromText", "language", "AMERICAN", std::numeric_limits<size_t>::max(),
       [&](const std::string &l, uint64_t n) {
         return QWZDateTimeFromText(env_, err_, T("2024-05-17"), 10, T("YYYY-MM-DD"), 10, T(l), static_cast<size_t>(n), dt_[3]);
       },
       [&](size_t) { return ok; }, [&](unsigned char) { return ok; }},
      {"QWZDateTimeToText", "language", "AMERICAN", std::numeric_limits<size_t>::max(),
       [&](const std::string &l, uint64_t n) {
         ub4 cap = 256;
         return QWZDateTimeToText(env_, err_, ts_, T("YYYY-MM-DD"), 10, 0, T(l), static_cast<size_t>(n), &cap, buf);
       },
       [&](size_t) { return ok; }, [&](unsigned char) { return ok; }},
      {"QWZIntervalFromText", "inpstring", "", std::numeric_limits<size_t>::max(),
       [&](const std::string &t, uint64_t n) { return QWZIntervalFromText(env_, err_, T(t), static_cast<size_t>(n), ym_); },
       // Up to 127: no year digits; 128 and more: refused silently.
       [&](size_t n) { return n <= 127 ? kLiteral : silent; },
       [&](unsigned char) { return kLiteral; }},
  };
  std::vector<Row> rows;
  for (const TextArg &a : args) {
    const std::string name = std::string(a.argument) + " ";
    for (size_t n : kLengths) {
      if (n > a.largest) continue;  // not a value of the length's type
      rows.push_back({a.function, name + "length " + std::to_string(n),
                      [&a, n] { return a.call(padded(a.base, n), n); }, a.by_length(n)});
    }
    rows.push_back({a.function, name + "largest length",
                    [&a] { return a.call(padded(a.base, 4096), a.largest); },
                    a.by_length(static_cast<size_t>(a.largest))});
    for (int b = 0; b < 256; ++b) {
      const unsigned char byte = static_cast<unsigned char>(b);
      rows.push_back({a.function, name + "byte " + std::to_string(b),
                      [&a, byte] { return a.call(std::string(byte ? 1 : 0, static_cast<char>(byte)), 1); },
                      a.by_byte(byte)});
    }
  }
  run(rows);
}

// ---- every exported function is in the matrix -----------------------------

std::set<std::string> exported_functions() {
  std::set<std::string> names;
  const std::string cmd = std::string("nm -D --defined-only '") + QWZ_SHARED_LIBRARY + "'";
  FILE *p = popen(cmd.c_str(), "r");
  if (p == nullptr) return names;
  char line[512];
  while (std::fgets(line, sizeof line, p)) {
    char addr[64], kind[8], name[400];
    if (std::sscanf(line, "%63s %7s %399s", addr, kind, name) == 3 && kind[0] == 'T' &&
        std::strncmp(name, "QWZ", 3) == 0)
      names.insert(name);
  }
  pclose(p);
  return names;
}

// The functions the rows name: the quoted QWZ names of this file, which
// are the rows' first fields (each test runs in a process of its own, so
// the rows' names are read from the source rather than collected at run
// time).
std::set<std::string> functions_in_matrix() {
  std::set<std::string> names;
  FILE *f = std::fopen(QWZ_MATRIX_SOURCE, "r");
  if (f == nullptr) return names;
  std::string text;
  char chunk[4096];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0) text.append(chunk, n);
  std::fclose(f);
  for (size_t at = text.find("{\"QWZ"); at != std::string::npos; at = text.find("{\"QWZ", at + 1)) {
    const size_t end = text.find('"', at + 2);
    names.insert(text.substr(at + 2, end - at - 2));
  }
  return names;
}

TEST(BadInputCoverage, EveryExportedFunctionIsInTheMatrix) {
  const std::set<std::string> exported = exported_functions();
  ASSERT_GT(exported.size(), 50u) << "cannot read the symbols of " << QWZ_SHARED_LIBRARY;
  const std::set<std::string> in_matrix = functions_in_matrix();
  ASSERT_GT(in_matrix.size(), 50u) << "cannot read " << QWZ_MATRIX_SOURCE;
  for (const std::string &name : exported)
    EXPECT_TRUE(in_matrix.count(name)) << name << " is exported but has no row";
  for (const std::string &name : in_matrix)
    EXPECT_TRUE(exported.count(name)) << name << " has rows but is not exported";
}

}  // namespace
