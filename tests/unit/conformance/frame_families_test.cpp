// Black-box tests of the call frame across the families: date, datetime,
// interval, text and number functions. For a sample of each family:
//   - a non-zero entry trace result comes back at once, nothing validated;
//   - an invalid error handle gives the validator's value, nothing written;
//   - a context handle that is neither an environment nor a session gives
//     "Invalid handle." / 800001 and the validator's value;
//   - a NULL parameter gives its diagnostic and no exit record;
//   - a successful call leaves the error handle cleared;
//   - a non-zero exit trace result is returned in place of the status.
#include "support/test_support.h"

#include <cstring>
#include <functional>
#include <string>
#include <vector>

using qwz_test::TraceCapture;
using qwz_test::TraceRecord;

namespace {

std::string null_param(int n) {
  return "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n) + " is NULL\n";
}

QWZText *T(const char *s) { return reinterpret_cast<QWZText *>(const_cast<char *>(s)); }
ub1 len1(const char *s) { return static_cast<ub1>(std::strlen(s)); }

// What a call with one NULL (or otherwise refused) parameter must leave.
struct Refusal {
  sword status;
  sb4 number;
  std::string state;
  std::string message;
};

struct Call {
  const char *name;
  ub4 api;
  bool has_context;  // the datetime and interval families take a context handle
  std::function<sword(void *hndl, QWZError *err)> ok;
  std::function<sword(void *hndl, QWZError *err)> refused;  // may be empty
  Refusal refusal;
};

class FrameFamilies : public qwz_test::HandleFixture {
 protected:
  void SetUp() override {
    HandleFixture::SetUp();
    ts_a_ = timestamp(DATETIME_KIND_TIMESTAMP, 2024, 5, 6, 7, 8, 9);
    ts_b_ = timestamp(DATETIME_KIND_TIMESTAMP, 2023, 1, 2, 3, 4, 5);
    ts_c_ = new_datetime(DATETIME_KIND_TIMESTAMP);
    tz_a_ = timestamp(DATETIME_KIND_TIMESTAMP_TZ, 2024, 5, 6, 7, 8, 9);
    tz_b_ = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
    tz_c_ = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
    sys_ = new_datetime(DATETIME_KIND_DATE);
    ym_a_ = new_interval(INTERVAL_KIND_YM);
    ym_b_ = new_interval(INTERVAL_KIND_YM);
    ym_out_ = new_interval(INTERVAL_KIND_YM);
    ds_a_ = new_interval(INTERVAL_KIND_DS);
    ds_out_ = new_interval(INTERVAL_KIND_DS);
    ASSERT_EQ(QWZIntervalSetYearMonth(env_, err_, 1, 2, ym_a_), QWZ_SUCCESS);
    ASSERT_EQ(QWZIntervalSetYearMonth(env_, err_, 0, 5, ym_b_), QWZ_SUCCESS);
    ASSERT_EQ(QWZIntervalSetDaySecond(env_, err_, 1, 2, 3, 4, 500, ds_a_), QWZ_SUCCESS);
    const double two = 2.0;
    ASSERT_EQ(QWZNumberFromReal(err_, &two, sizeof two, &two_), QWZ_SUCCESS);
    ASSERT_EQ(QWZEnvCreate(&dead_env_, 0), QWZ_SUCCESS);
    ASSERT_EQ(QWZHandleFree(dead_env_, QWZ_HTYPE_ENV), QWZ_SUCCESS);
    ASSERT_EQ(QWZHandleAlloc(env_, reinterpret_cast<void **>(&dead_err_), QWZ_HTYPE_ERROR),
              QWZ_SUCCESS);
    ASSERT_EQ(QWZHandleFree(dead_err_, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  }

  QWZDateTime *timestamp(ub4 type, int y, int mo, int d, int h, int mi, int s) {
    QWZDateTime *dt = new_datetime(type);
    EXPECT_EQ(QWZDateTimeConstruct(env_, err_, dt, static_cast<sb2>(y), static_cast<ub1>(mo),
                                   static_cast<ub1>(d), static_cast<ub1>(h), static_cast<ub1>(mi),
                                   static_cast<ub1>(s), 0, T("+02:00"), 6),
              QWZ_SUCCESS);
    return dt;
  }

  // A diagnostic a later call must either keep or clear.
  void leave_a_diagnostic() {
    QWZDate d = {2024, 1, 1, 0, 0, 0};
    ASSERT_EQ(QWZDateAddDays(err_, &d, 1, nullptr), QWZ_ERROR);
  }
  void expect_left_diagnostic() { expect_diag(21560, "21560", null_param(4)); }

  std::vector<Call> calls();

  QWZDateTime *ts_a_ = nullptr, *ts_b_ = nullptr, *ts_c_ = nullptr;
  QWZDateTime *tz_a_ = nullptr, *tz_b_ = nullptr, *tz_c_ = nullptr, *sys_ = nullptr;
  QWZInterval *ym_a_ = nullptr, *ym_b_ = nullptr, *ym_out_ = nullptr;
  QWZInterval *ds_a_ = nullptr, *ds_out_ = nullptr;
  QWZNumber two_{}, num_out_{};
  QWZEnv *dead_env_ = nullptr;
  QWZError *dead_err_ = nullptr;
  QWZDate date_out_{};
  ub4 flags_ = 0;
  sword cmp_ = 0;
  sb2 year_ = 0;
  ub1 b1_ = 0, b2_ = 0, b3_ = 0;
  ub4 fsec_ = 0;
  sb1 tzh_ = 0, tzm_ = 0;
  sb4 s1_ = 0, s2_ = 0, s3_ = 0, s4_ = 0, s5_ = 0;
  ub1 array_[32] = {};
  ub4 array_len_ = 0;
  QWZtext text_[128] = {};
  ub4 text_size_ = 0;
  size_t text_len_ = 0;
};

const Refusal kInvalidHandle{QWZ_INVALID_HANDLE, 800001, "", "Invalid handle."};
Refusal setter_null(int n) { return {QWZ_ERROR, 21560, "21560", null_param(n)}; }
Refusal front_end(sb4 number, const char *message) { return {QWZ_ERROR, number, "", message}; }

std::vector<Call> FrameFamilies::calls() {
  const QWZDate in = {2024, 2, 29, 10, 0, 0};
  std::vector<Call> c;
  // ---- date family (no context handle) ----
  c.push_back({"QWZDateAddMonths", 129, false,
               [this, in](void *, QWZError *e) { return QWZDateAddMonths(e, &in, 1, &date_out_); },
               [](void *, QWZError *e) {
                 QWZDate out;
                 return QWZDateAddMonths(e, nullptr, 1, &out);
               },
               setter_null(2)});
  c.push_back({"QWZDateCompare", 132, false,
               [this, in](void *, QWZError *e) { return QWZDateCompare(e, &in, &in, &cmp_); },
               [in](void *, QWZError *e) { return QWZDateCompare(e, &in, &in, nullptr); },
               setter_null(4)});
  c.push_back({"QWZDateNextDay", 136, false,
               [this, in](void *, QWZError *e) {
                 return QWZDateNextDay(e, &in, T("Friday"), 6, &date_out_);
               },
               [in](void *, QWZError *e) { return QWZDateNextDay(e, &in, T("Friday"), 6, nullptr); },
               setter_null(5)});
  // ---- datetime family ----
  c.push_back({"QWZDateTimeCheck", 147, true,
               [this](void *h, QWZError *e) { return QWZDateTimeCheck(h, e, ts_a_, &flags_); },
               [this](void *h, QWZError *e) { return QWZDateTimeCheck(h, e, ts_a_, nullptr); },
               setter_null(4)});
  c.push_back({"QWZDateTimeAssign", 146, true,
               [this](void *h, QWZError *e) { return QWZDateTimeAssign(h, e, ts_a_, ts_c_); },
               [this](void *h, QWZError *e) { return QWZDateTimeAssign(h, e, nullptr, ts_c_); },
               {QWZ_INVALID_HANDLE, 21560, "21560", null_param(4)}});
  c.push_back({"QWZDateTimeCompare", 148, true,
               [this](void *h, QWZError *e) { return QWZDateTimeCompare(h, e, ts_a_, ts_b_, &cmp_); },
               [this](void *h, QWZError *e) { return QWZDateTimeCompare(h, e, ts_a_, ts_b_, nullptr); },
               setter_null(5)});
  c.push_back({"QWZDateTimeConstruct", 142, true,
               [this](void *h, QWZError *e) {
                 return QWZDateTimeConstruct(h, e, ts_c_, 2020, 2, 29, 1, 2, 3, 4, nullptr, 0);
               },
               [](void *h, QWZError *e) {
                 return QWZDateTimeConstruct(h, e, nullptr, 2020, 2, 29, 1, 2, 3, 4, nullptr, 0);
               },
               kInvalidHandle});
  c.push_back({"QWZDateTimeGetDate", 143, true,
               [this](void *h, QWZError *e) { return QWZDateTimeGetDate(h, e, ts_a_, &year_, &b1_, &b2_); },
               [this](void *h, QWZError *e) { return QWZDateTimeGetDate(h, e, ts_a_, &year_, &b1_, nullptr); },
               front_end(800058, "the year or month or day could not be null.")});
  c.push_back({"QWZDateTimeGetTime", 144, true,
               [this](void *h, QWZError *e) {
                 return QWZDateTimeGetTime(h, e, ts_a_, &b1_, &b2_, &b3_, &fsec_);
               },
               [this](void *h, QWZError *e) {
                 return QWZDateTimeGetTime(h, e, ts_a_, &b1_, &b2_, &b3_, nullptr);
               },
               front_end(800059, "the hour or minute or second or fraction could not be null.")});
  c.push_back({"QWZDateTimeGetTimeZoneOffset", 145, true,
               [this](void *h, QWZError *e) { return QWZDateTimeGetTimeZoneOffset(h, e, tz_a_, &tzh_, &tzm_); },
               [this](void *h, QWZError *e) { return QWZDateTimeGetTimeZoneOffset(h, e, tz_a_, nullptr, &tzm_); },
               front_end(800084, "the hour or minute could not be null.")});
  c.push_back({"QWZDateTimeSysTimeStamp", 175, true,
               [this](void *h, QWZError *e) { return QWZDateTimeSysTimeStamp(h, e, sys_); },
               [](void *h, QWZError *e) { return QWZDateTimeSysTimeStamp(h, e, nullptr); },
               kInvalidHandle});
  c.push_back({"QWZDateTimeConvert", 177, true,
               [this](void *h, QWZError *e) { return QWZDateTimeConvert(h, e, ts_a_, tz_b_); },
               [this](void *h, QWZError *e) { return QWZDateTimeConvert(h, e, ts_a_, nullptr); },
               kInvalidHandle});
  c.push_back({"QWZDateTimeIntervalAdd", 139, true,
               [this](void *h, QWZError *e) { return QWZDateTimeIntervalAdd(h, e, tz_a_, ds_a_, tz_c_); },
               [this](void *h, QWZError *e) { return QWZDateTimeIntervalAdd(h, e, tz_a_, nullptr, tz_c_); },
               kInvalidHandle});
  c.push_back({"QWZDateTimeSubtract", 141, true,
               [this](void *h, QWZError *e) { return QWZDateTimeSubtract(h, e, ts_a_, ts_b_, ds_out_); },
               [this](void *h, QWZError *e) { return QWZDateTimeSubtract(h, e, ts_a_, ts_b_, nullptr); },
               kInvalidHandle});
  c.push_back({"QWZDateTimeToArray", 178, true,
               [this](void *h, QWZError *e) {
                 return QWZDateTimeToArray(h, e, ts_a_, nullptr, array_, &array_len_, 0);
               },
               [this](void *h, QWZError *e) {
                 return QWZDateTimeToArray(h, e, ts_a_, nullptr, array_, nullptr, 0);
               },
               setter_null(9)});
  c.push_back({"QWZDateTimeFromArray", 180, true,
               [this](void *h, QWZError *e) {
                 ub1 a[11] = {120, 124, 5, 6, 8, 9, 10, 0, 0, 0, 0};
                 ub4 n = sizeof a;
                 return QWZDateTimeFromArray(h, e, a, &n, 187, ts_c_, ds_a_, 0);
               },
               [this](void *h, QWZError *e) {
                 ub4 n = 11;
                 return QWZDateTimeFromArray(h, e, nullptr, &n, 187, ts_c_, ds_a_, 0);
               },
               setter_null(4)});
  c.push_back({"QWZDateTimeIntervalSub", 140, true,
               [this](void *h, QWZError *e) { return QWZDateTimeIntervalSub(h, e, tz_a_, ds_a_, tz_c_); },
               [this](void *h, QWZError *e) { return QWZDateTimeIntervalSub(h, e, tz_a_, ds_a_, nullptr); },
               kInvalidHandle});
  c.push_back({"QWZDateTimeGetTimeZoneName", 176, true,
               [this](void *h, QWZError *e) {
                 ub4 n = sizeof text_;
                 return QWZDateTimeGetTimeZoneName(h, e, tz_a_, text_, &n);
               },
               [this](void *h, QWZError *e) {
                 return QWZDateTimeGetTimeZoneName(h, e, tz_a_, text_, nullptr);
               },
               front_end(800027, "The buffer is null.")});
  // ---- interval family ----
  c.push_back({"QWZIntervalSetDaySecond", 151, true,
               [this](void *h, QWZError *e) { return QWZIntervalSetDaySecond(h, e, 1, 2, 3, 4, 5, ds_out_); },
               [](void *h, QWZError *e) { return QWZIntervalSetDaySecond(h, e, 1, 2, 3, 4, 5, nullptr); },
               kInvalidHandle});
  c.push_back({"QWZIntervalGetYearMonth", 152, true,
               [this](void *h, QWZError *e) { return QWZIntervalGetYearMonth(h, e, &s1_, &s2_, ym_a_); },
               [this](void *h, QWZError *e) { return QWZIntervalGetYearMonth(h, e, nullptr, &s2_, ym_a_); },
               front_end(800036, "the value address could not be null.")});
  c.push_back({"QWZIntervalCompare", 156, true,
               [this](void *h, QWZError *e) { return QWZIntervalCompare(h, e, ym_a_, ym_b_, &cmp_); },
               // A NULL result is reported, yet the call answers 0.
               [this](void *h, QWZError *e) { return QWZIntervalCompare(h, e, ym_a_, ym_b_, nullptr); },
               {0, 21560, "21560", null_param(5)}});
  c.push_back({"QWZIntervalSetYearMonth", 150, true,
               [this](void *h, QWZError *e) { return QWZIntervalSetYearMonth(h, e, 3, 4, ym_out_); },
               [this](void *h, QWZError *e) { return QWZIntervalSetYearMonth(h, e, 3, 4, ds_out_); },
               kInvalidHandle});
  c.push_back({"QWZIntervalGetDaySecond", 153, true,
               [this](void *h, QWZError *e) {
                 return QWZIntervalGetDaySecond(h, e, &s1_, &s2_, &s3_, &s4_, &s5_, ds_a_);
               },
               [this](void *h, QWZError *e) {
                 return QWZIntervalGetDaySecond(h, e, &s1_, &s2_, &s3_, &s4_, nullptr, ds_a_);
               },
               front_end(800036, "the value address could not be null.")});
  c.push_back({"QWZIntervalCheck", 154, true,
               [this](void *h, QWZError *e) { return QWZIntervalCheck(h, e, ds_a_, &flags_); },
               [this](void *h, QWZError *e) { return QWZIntervalCheck(h, e, ds_a_, nullptr); },
               setter_null(4)});
  c.push_back({"QWZIntervalAssign", 155, true,
               [this](void *h, QWZError *e) { return QWZIntervalAssign(h, e, ym_a_, ym_out_); },
               [this](void *h, QWZError *e) { return QWZIntervalAssign(h, e, ym_a_, nullptr); },
               kInvalidHandle});
  c.push_back({"QWZIntervalAdd", 159, true,
               [this](void *h, QWZError *e) { return QWZIntervalAdd(h, e, ym_a_, ym_b_, ym_out_); },
               [this](void *h, QWZError *e) { return QWZIntervalAdd(h, e, ym_a_, ym_b_, nullptr); },
               kInvalidHandle});
  c.push_back({"QWZIntervalSubtract", 158, true,
               [this](void *h, QWZError *e) { return QWZIntervalSubtract(h, e, ym_a_, ym_b_, ym_out_); },
               [this](void *h, QWZError *e) { return QWZIntervalSubtract(h, e, ym_a_, nullptr, ym_out_); },
               kInvalidHandle});
  // ---- text conversions ----
  c.push_back({"QWZDateFromText", 134, false,
               [this](void *, QWZError *e) {
                 return QWZDateFromText(e, T("2024-02-29"), 10, T("YYYY-MM-DD"), 10, nullptr, 0,
                                        &date_out_);
               },
               [](void *, QWZError *e) {
                 return QWZDateFromText(e, T("2024-02-29"), 10, T("YYYY-MM-DD"), 10, nullptr, 0,
                                        nullptr);
               },
               setter_null(8)});
  c.push_back({"QWZDateToText", 138, false,
               [this, in](void *, QWZError *e) {
                 text_[0] = 0;
                 text_size_ = sizeof text_;
                 return QWZDateToText(e, &in, T("YYYY-MM-DD"), 10, nullptr, 0, &text_size_, text_);
               },
               [this, in](void *, QWZError *e) {
                 return QWZDateToText(e, &in, T("YYYY-MM-DD"), 10, nullptr, 0, nullptr, text_);
               },
               setter_null(7)});
  c.push_back({"QWZDateTimeToText", 149, true,
               [this](void *h, QWZError *e) {
                 text_[0] = 0;
                 text_size_ = sizeof text_;
                 const char *f = "YYYY-MM-DD HH24:MI:SS";
                 return QWZDateTimeToText(h, e, ts_a_, T(f), len1(f), 0, nullptr, 0, &text_size_,
                                          text_);
               },
               [this](void *h, QWZError *e) {
                 return QWZDateTimeToText(h, e, ts_a_, nullptr, 0, 0, nullptr, 0, &text_size_,
                                          text_);
               },
               setter_null(4)});
  c.push_back({"QWZDateTimeFromText", 179, true,
               [this](void *h, QWZError *e) {
                 const char *s = "2024-02-29 01:02:03";
                 const char *f = "YYYY-MM-DD HH24:MI:SS";
                 return QWZDateTimeFromText(h, e, T(s), std::strlen(s), T(f), len1(f), nullptr, 0,
                                            ts_c_);
               },
               [this](void *h, QWZError *e) {
                 const char *f = "YYYY-MM-DD HH24:MI:SS";
                 return QWZDateTimeFromText(h, e, nullptr, 5, T(f), len1(f), nullptr, 0, ts_c_);
               },
               setter_null(4)});
  c.push_back({"QWZIntervalToText", 157, true,
               [this](void *h, QWZError *e) {
                 text_[0] = 0;
                 return QWZIntervalToText(h, e, ds_a_, 2, 5, text_, sizeof text_, &text_len_);
               },
               [this](void *h, QWZError *e) {
                 text_[0] = 0;
                 return QWZIntervalToText(h, e, ds_a_, 2, 5, nullptr, sizeof text_, &text_len_);
               },
               setter_null(6)});
  c.push_back({"QWZIntervalFromText", 160, true,
               [this](void *h, QWZError *e) {
                 const char *s = "+02-03";
                 return QWZIntervalFromText(h, e, T(s), std::strlen(s), ym_out_);
               },
               {},
               {}});
  // ---- numbers ----
  c.push_back({"QWZNumberToReal", 108, false,
               [this](void *, QWZError *e) {
                 double d = 0;
                 return QWZNumberToReal(e, &two_, sizeof d, &d);
               },
               [this](void *, QWZError *e) { return QWZNumberToReal(e, &two_, sizeof(double), nullptr); },
               front_end(800201, "the real number could not be null.")});
  c.push_back({"QWZNumberFromReal", 109, false,
               [this](void *, QWZError *e) {
                 const double d = 0.25;
                 return QWZNumberFromReal(e, &d, sizeof d, &num_out_);
               },
               [this](void *, QWZError *e) { return QWZNumberFromReal(e, nullptr, sizeof(double), &num_out_); },
               front_end(800201, "the real number could not be null.")});
  c.push_back({"QWZIntervalMultiply", 182, true,
               [this](void *h, QWZError *e) { return QWZIntervalMultiply(h, e, ym_a_, &two_, ym_out_); },
               [this](void *h, QWZError *e) { return QWZIntervalMultiply(h, e, ym_a_, nullptr, ym_out_); },
               front_end(800085, "the number could not be null.")});
  c.push_back({"QWZIntervalDivide", 181, true,
               [this](void *h, QWZError *e) { return QWZIntervalDivide(h, e, ds_a_, &two_, ds_out_); },
               [this](void *h, QWZError *e) { return QWZIntervalDivide(h, e, ds_a_, nullptr, ds_out_); },
               front_end(800085, "the number could not be null.")});
  c.push_back({"QWZIntervalFromNumber", 183, true,
               [this](void *h, QWZError *e) { return QWZIntervalFromNumber(h, e, ym_out_, &two_); },
               [this](void *h, QWZError *e) { return QWZIntervalFromNumber(h, e, ym_out_, nullptr); },
               front_end(800085, "the number could not be null.")});
  c.push_back({"QWZIntervalToNumber", 184, true,
               [this](void *h, QWZError *e) { return QWZIntervalToNumber(h, e, ds_a_, &num_out_); },
               [this](void *h, QWZError *e) { return QWZIntervalToNumber(h, e, ds_a_, nullptr); },
               front_end(800085, "the number could not be null.")});
  return c;
}

TEST_F(FrameFamilies, EntryTraceResultIsReturnedAtOnce) {
  for (const Call &c : calls()) {
    SCOPED_TRACE(c.name);
    leave_a_diagnostic();
    TraceCapture cap;
    cap.set_results(7, 0);
    EXPECT_EQ(c.ok(env_, err_), 7);
    EXPECT_EQ(c.ok(nullptr, nullptr), 7);
    EXPECT_EQ(c.ok(err_, dead_err_), 7);
    if (c.refused) {
      EXPECT_EQ(c.refused(env_, err_), 7);
    }
    for (const TraceRecord &t : cap.records()) {
      EXPECT_EQ(t.direction, 1u);
      EXPECT_EQ(t.api_id, c.api);
    }
    EXPECT_EQ(cap.records().size(), c.refused ? 4u : 3u);
    expect_left_diagnostic();  // the error handle is not touched
  }
}

TEST_F(FrameFamilies, InvalidErrorHandleReturnsTheValidatorsValue) {
  QWZError *session_as_err = reinterpret_cast<QWZError *>(session_);
  QWZError *descriptor_as_err = reinterpret_cast<QWZError *>(ts_a_);
  for (const Call &c : calls()) {
    SCOPED_TRACE(c.name);
    for (QWZError *bad : {static_cast<QWZError *>(nullptr), dead_err_, session_as_err,
                          descriptor_as_err}) {
      TraceCapture cap;
      EXPECT_EQ(c.ok(env_, bad), QWZ_INVALID_HANDLE);
      if (c.refused) {
        EXPECT_EQ(c.refused(env_, bad), QWZ_INVALID_HANDLE);
      }
      for (const TraceRecord &t : cap.records()) EXPECT_EQ(t.direction, 1u);
      EXPECT_EQ(cap.records().size(), c.refused ? 2u : 1u);
    }
  }
}

TEST_F(FrameFamilies, ContextHandleIsAnEnvironmentOrASession) {
  for (const Call &c : calls()) {
    if (!c.has_context) continue;
    SCOPED_TRACE(c.name);
    for (void *bad : {static_cast<void *>(nullptr), static_cast<void *>(err_),
                      static_cast<void *>(dead_env_), static_cast<void *>(ts_a_),
                      static_cast<void *>(ym_a_)}) {
      TraceCapture cap;
      EXPECT_EQ(c.ok(bad, err_), QWZ_INVALID_HANDLE);
      expect_diag(800001, "", "Invalid handle.");
      ASSERT_EQ(cap.records().size(), 1u);  // no exit record
      EXPECT_EQ(cap.records()[0].direction, 1u);
    }
    for (void *good : {static_cast<void *>(env_), static_cast<void *>(session_)}) {
      leave_a_diagnostic();
      EXPECT_EQ(c.ok(good, err_), QWZ_SUCCESS);
      expect_clear();
    }
  }
}

TEST_F(FrameFamilies, RefusedParameterGivesItsDiagnosticAndNoExitRecord) {
  for (const Call &c : calls()) {
    if (!c.refused) continue;
    SCOPED_TRACE(c.name);
    TraceCapture cap;
    EXPECT_EQ(c.refused(session_, err_), c.refusal.status);
    expect_diag(c.refusal.number, c.refusal.state, c.refusal.message);
    ASSERT_EQ(cap.records().size(), 1u);
    EXPECT_EQ(cap.records()[0].direction, 1u);
    EXPECT_EQ(cap.records()[0].api_id, c.api);
  }
}

TEST_F(FrameFamilies, SuccessLeavesTheErrorHandleCleared) {
  for (const Call &c : calls()) {
    SCOPED_TRACE(c.name);
    leave_a_diagnostic();
    TraceCapture cap;
    ASSERT_EQ(c.ok(session_, err_), QWZ_SUCCESS);
    expect_clear();
    auto &r = cap.records();
    ASSERT_GE(r.size(), 2u);
    EXPECT_EQ(r.front().direction, 1u);
    EXPECT_EQ(r.front().api_id, c.api);
    EXPECT_EQ(r.front().status, 0);
    EXPECT_EQ(r.back().direction, 0u);
    EXPECT_EQ(r.back().api_id, c.api);
    EXPECT_EQ(r.back().status, 0);
    EXPECT_EQ(r.front().errhp, static_cast<void *>(err_));
    EXPECT_EQ(r.back().errhp, static_cast<void *>(err_));
  }
}

// The hook answers 9 to the exit record of the call under test only, so that
// the checks nested in some calls are not disturbed.
ub4 g_exit_api = 0;
int g_exit_records = 0;
sword exit_only_hook(void *, sword, ub4 direction, ub4 api_id, const char *) {
  if (direction != 0 || api_id != g_exit_api) return 0;
  ++g_exit_records;
  return 9;
}

TEST_F(FrameFamilies, ExitTraceResultIsReturned) {
  for (const Call &c : calls()) {
    SCOPED_TRACE(c.name);
    g_exit_api = c.api;
    g_exit_records = 0;
    QWZTraceSetHook(exit_only_hook);
    qwz_trace_flag = 1;
    leave_a_diagnostic();
    const sword rc = c.ok(env_, err_);
    qwz_trace_flag = 0;
    QWZTraceSetHook(nullptr);
    EXPECT_EQ(rc, 9);
    EXPECT_EQ(g_exit_records, 1);
    expect_clear();  // the work was done
  }
}

TEST_F(FrameFamilies, TracingOffNeverCallsTheHook) {
  TraceCapture cap;
  cap.set_results(7, 9);
  qwz_trace_flag = 0;
  for (const Call &c : calls()) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.ok(env_, err_), QWZ_SUCCESS);
    EXPECT_EQ(c.ok(env_, nullptr), QWZ_INVALID_HANDLE);
  }
  EXPECT_TRUE(cap.records().empty());
}

}  // namespace

namespace {

// Parameter checks in argument order, one fault at a time and with two
// faults at once (the earlier parameter wins).
TEST_F(FrameFamilies, ParameterChecksInOrder) {
  const QWZDate in = {2024, 2, 29, 10, 0, 0};
  QWZDate out{};
  QWZtext buf[64] = {};
  ub4 size = sizeof buf;
  size_t len = 0;
  const char *dfmt = "YYYY-MM-DD";
  const char *tfmt = "YYYY-MM-DD HH24:MI:SS";
  const char *text = "2024-02-29 01:02:03";
  ub4 valid = 0;
  sword cmp = 0;
  struct Case {
    const char *what;
    std::function<sword()> run;
    Refusal expected;
  };
  const Case cases[] = {
      // QWZDateToText: date 2, format 3, buffer_size 7, buffer 8.
      {"DateToText date", [&] { return QWZDateToText(err_, nullptr, T(dfmt), 10, nullptr, 0, &size, buf); }, setter_null(2)},
      {"DateToText format", [&] { return QWZDateToText(err_, &in, nullptr, 10, nullptr, 0, &size, buf); }, setter_null(3)},
      {"DateToText size", [&] { return QWZDateToText(err_, &in, T(dfmt), 10, nullptr, 0, nullptr, buf); }, setter_null(7)},
      {"DateToText buffer", [&] { return QWZDateToText(err_, &in, T(dfmt), 10, nullptr, 0, &size, nullptr); }, setter_null(8)},
      {"DateToText all", [&] { return QWZDateToText(err_, nullptr, nullptr, 10, nullptr, 0, nullptr, nullptr); }, setter_null(2)},
      {"DateToText size+buffer", [&] { return QWZDateToText(err_, &in, T(dfmt), 10, nullptr, 0, nullptr, nullptr); }, setter_null(7)},
      // QWZDateFromText: text 2, then date 8, then format 4.
      {"DateFromText text", [&] { return QWZDateFromText(err_, nullptr, 10, T(dfmt), 10, nullptr, 0, &out); }, setter_null(2)},
      {"DateFromText date", [&] { return QWZDateFromText(err_, T("2024-02-29"), 10, T(dfmt), 10, nullptr, 0, nullptr); }, setter_null(8)},
      {"DateFromText format", [&] { return QWZDateFromText(err_, T("2024-02-29"), 10, nullptr, 10, nullptr, 0, &out); }, setter_null(4)},
      {"DateFromText date+format", [&] { return QWZDateFromText(err_, T("2024-02-29"), 10, nullptr, 10, nullptr, 0, nullptr); }, setter_null(8)},
      // QWZDateTimeToText: descriptor 3 (validator's value), format 4, size 9, buffer 10.
      {"DateTimeToText descriptor", [&] { return QWZDateTimeToText(env_, err_, nullptr, nullptr, 0, 0, nullptr, 0, nullptr, nullptr); },
       {QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)}},
      {"DateTimeToText format", [&] { return QWZDateTimeToText(env_, err_, ts_a_, nullptr, 0, 0, nullptr, 0, nullptr, nullptr); }, setter_null(4)},
      {"DateTimeToText size", [&] { return QWZDateTimeToText(env_, err_, ts_a_, T(tfmt), len1(tfmt), 0, nullptr, 0, nullptr, nullptr); }, setter_null(9)},
      {"DateTimeToText buffer", [&] { return QWZDateTimeToText(env_, err_, ts_a_, T(tfmt), len1(tfmt), 0, nullptr, 0, &size, nullptr); }, setter_null(10)},
      {"DateTimeToText context first", [&] { return QWZDateTimeToText(nullptr, err_, nullptr, nullptr, 0, 0, nullptr, 0, nullptr, nullptr); }, kInvalidHandle},
      // QWZDateTimeFromText: descriptor 3, text 4, format 4.
      {"DateTimeFromText descriptor", [&] { return QWZDateTimeFromText(env_, err_, nullptr, 0, nullptr, 0, nullptr, 0, nullptr); },
       {QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)}},
      {"DateTimeFromText text", [&] { return QWZDateTimeFromText(env_, err_, nullptr, 5, T(tfmt), len1(tfmt), nullptr, 0, ts_c_); }, setter_null(4)},
      {"DateTimeFromText format", [&] { return QWZDateTimeFromText(env_, err_, T(text), std::strlen(text), nullptr, 0, nullptr, 0, ts_c_); }, setter_null(4)},
      // QWZIntervalToText: buffer 6, resultlen 8.
      {"IntervalToText buffer", [&] { return QWZIntervalToText(env_, err_, ds_a_, 2, 5, nullptr, sizeof buf, nullptr); }, setter_null(6)},
      {"IntervalToText resultlen", [&] { buf[0] = 0; return QWZIntervalToText(env_, err_, ds_a_, 2, 5, buf, sizeof buf, nullptr); }, setter_null(8)},
      {"IntervalToText descriptor", [&] { return QWZIntervalToText(env_, err_, nullptr, 2, 5, nullptr, sizeof buf, &len); }, kInvalidHandle},
      // Datetime descriptors reported through the datetime setter.
      {"DateTimeCheck descriptor", [&] { return QWZDateTimeCheck(env_, err_, nullptr, nullptr); },
       {QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)}},
      {"DateTimeCheck valid", [&] { return QWZDateTimeCheck(env_, err_, ts_a_, nullptr); }, setter_null(4)},
      {"DateTimeCompare date1", [&] { return QWZDateTimeCompare(env_, err_, reinterpret_cast<QWZDateTime *>(ym_a_), nullptr, nullptr); },
       {QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)}},
      {"DateTimeCompare date2", [&] { return QWZDateTimeCompare(env_, err_, ts_a_, reinterpret_cast<QWZDateTime *>(ym_a_), nullptr); },
       {QWZ_INVALID_HANDLE, 21560, "21560", null_param(4)}},
      {"DateTimeToArray descriptor", [&] { return QWZDateTimeToArray(env_, err_, nullptr, nullptr, nullptr, nullptr, 0); },
       {QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)}},
      {"DateTimeToArray outarray", [&] { return QWZDateTimeToArray(env_, err_, ts_a_, nullptr, nullptr, nullptr, 0); }, setter_null(5)},
      {"IntervalCheck valid", [&] { return QWZIntervalCheck(env_, err_, ym_a_, nullptr); }, setter_null(4)},
      {"IntervalCheck descriptor", [&] { return QWZIntervalCheck(env_, err_, reinterpret_cast<QWZInterval *>(ts_a_), &valid); }, kInvalidHandle},
      {"IntervalCompare descriptor", [&] { return QWZIntervalCompare(env_, err_, ym_a_, nullptr, &cmp); }, kInvalidHandle},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    leave_a_diagnostic();
    TraceCapture cap;
    EXPECT_EQ(c.run(), c.expected.status);
    expect_diag(c.expected.number, c.expected.state, c.expected.message);
    ASSERT_EQ(cap.records().size(), 1u);
    EXPECT_EQ(cap.records()[0].direction, 1u);
  }
  EXPECT_EQ(buf[0], 0);
  EXPECT_EQ(cmp, 0);
  EXPECT_EQ(valid, 0u);
}

}  // namespace
