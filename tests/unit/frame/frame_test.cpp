// The call frame, through every public date function: the entry trace's
// result returned at once, the error handle validated before anything else,
// NULL parameters reported with their numbers and no exit trace, a success
// leaving the handle cleared, the exit trace's result returned, and tracing
// switched off never reaching the hook.
#include "support/test_support.h"

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace qwz_test;

namespace {

QWZDate D(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return QWZDate{static_cast<sb2>(y), static_cast<ub2>(mo), static_cast<ub2>(d),
                 static_cast<ub2>(h), static_cast<ub2>(mi), static_cast<ub2>(s)};
}

bool same(const QWZDate &a, const QWZDate &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

const QWZDate kSentinel = D(1234, 5, 6, 7, 8, 9);

// Inputs and outputs of one call; outputs start as sentinels.
struct Args {
  QWZDate in1 = D(2024, 1, 3, 10, 0, 0);
  QWZDate in2 = D(2024, 1, 1, 8, 0, 0);
  QWZDate out = kSentinel;
  uword flags = 0xABCDu;
  sword cmp = 77;
  sb4 days = 77;
  QWZtext name[8] = "Friday";
  QWZText zone1[4] = "UTC";
  QWZText zone2[4] = "CET";
  bool untouched() const {
    return same(out, kSentinel) && flags == 0xABCDu && cmp == 77 && days == 77;
  }
};

using Call = std::function<sword(QWZError *, Args &)>;

struct NullCase {
  Call call;
  int param;
};

struct Function {
  const char *name;
  ub4 api_id;
  Call call;                 // valid arguments
  bool writes_output;        // whether a success writes an output
  std::vector<NullCase> nulls;
};

std::vector<Function> functions() {
  return {
      {"QWZDateAddDays", 128,
       [](QWZError *e, Args &a) { return QWZDateAddDays(e, &a.in1, 5, &a.out); }, true,
       {{[](QWZError *e, Args &a) { return QWZDateAddDays(e, nullptr, 5, &a.out); }, 2},
        {[](QWZError *e, Args &a) { return QWZDateAddDays(e, &a.in1, 5, nullptr); }, 4}}},
      {"QWZDateAddMonths", 129,
       [](QWZError *e, Args &a) { return QWZDateAddMonths(e, &a.in1, -3, &a.out); }, true,
       {{[](QWZError *e, Args &a) { return QWZDateAddMonths(e, nullptr, 1, &a.out); }, 2},
        {[](QWZError *e, Args &a) { return QWZDateAddMonths(e, &a.in1, 1, nullptr); }, 4}}},
      {"QWZDateAssign", 130,
       [](QWZError *e, Args &a) { return QWZDateAssign(e, &a.in1, &a.out); }, true,
       {{[](QWZError *e, Args &a) { return QWZDateAssign(e, nullptr, &a.out); }, 2},
        {[](QWZError *e, Args &a) { return QWZDateAssign(e, &a.in1, nullptr); }, 3}}},
      {"QWZDateCheck", 131,
       [](QWZError *e, Args &a) { return QWZDateCheck(e, &a.in1, &a.flags); }, true,
       {{[](QWZError *e, Args &a) { return QWZDateCheck(e, nullptr, &a.flags); }, 2},
        {[](QWZError *e, Args &a) { return QWZDateCheck(e, &a.in1, nullptr); }, 3}}},
      {"QWZDateCompare", 132,
       [](QWZError *e, Args &a) { return QWZDateCompare(e, &a.in1, &a.in2, &a.cmp); }, true,
       {{[](QWZError *e, Args &a) { return QWZDateCompare(e, nullptr, &a.in2, &a.cmp); }, 2},
        {[](QWZError *e, Args &a) { return QWZDateCompare(e, &a.in1, nullptr, &a.cmp); }, 3},
        {[](QWZError *e, Args &a) { return QWZDateCompare(e, &a.in1, &a.in2, nullptr); }, 4}}},
      {"QWZDateDaysBetween", 133,
       [](QWZError *e, Args &a) { return QWZDateDaysBetween(e, &a.in1, &a.in2, &a.days); }, true,
       {{[](QWZError *e, Args &a) { return QWZDateDaysBetween(e, nullptr, &a.in2, &a.days); }, 2},
        {[](QWZError *e, Args &a) { return QWZDateDaysBetween(e, &a.in1, nullptr, &a.days); }, 3},
        {[](QWZError *e, Args &a) { return QWZDateDaysBetween(e, &a.in1, &a.in2, nullptr); },
         4}}},
      {"QWZDateLastDay", 135,
       [](QWZError *e, Args &a) { return QWZDateLastDay(e, &a.in1, &a.out); }, true,
       {{[](QWZError *e, Args &a) { return QWZDateLastDay(e, nullptr, &a.out); }, 2},
        {[](QWZError *e, Args &a) { return QWZDateLastDay(e, &a.in1, nullptr); }, 3}}},
      {"QWZDateNextDay", 136,
       [](QWZError *e, Args &a) { return QWZDateNextDay(e, &a.in1, a.name, 6, &a.out); }, true,
       {{[](QWZError *e, Args &a) { return QWZDateNextDay(e, nullptr, a.name, 6, &a.out); }, 2},
        {[](QWZError *e, Args &a) { return QWZDateNextDay(e, &a.in1, nullptr, 6, &a.out); }, 3},
        {[](QWZError *e, Args &a) { return QWZDateNextDay(e, &a.in1, a.name, 6, nullptr); }, 5}}},
      {"QWZDateSysDate", 137, [](QWZError *e, Args &a) { return QWZDateSysDate(e, &a.out); },
       true, {{[](QWZError *e, Args &) { return QWZDateSysDate(e, nullptr); }, 2}}},
      {"QWZDateZoneToZone", 185,
       [](QWZError *e, Args &a) {
         return QWZDateZoneToZone(e, &a.in1, a.zone1, 3, a.zone2, 3, &a.out);
       },
       false,
       {{[](QWZError *e, Args &a) {
           return QWZDateZoneToZone(e, nullptr, a.zone1, 3, a.zone2, 3, &a.out);
         },
         8},
        {[](QWZError *e, Args &a) {
           return QWZDateZoneToZone(e, &a.in1, a.zone1, 3, a.zone2, 3, nullptr);
         },
         8},
        {[](QWZError *e, Args &a) {
           return QWZDateZoneToZone(e, &a.in1, nullptr, 3, a.zone2, 3, &a.out);
         },
         2},
        {[](QWZError *e, Args &a) {
           return QWZDateZoneToZone(e, &a.in1, a.zone1, 3, nullptr, 3, &a.out);
         },
         2}}},
  };
}

class Frame : public HandleFixture {
 protected:
  void SetUp() override {
    HandleFixture::SetUp();
    z_ = std::make_unique<ZoneGuard>(kUtc);
  }
  void TearDown() override {
    z_.reset();
    HandleFixture::TearDown();
  }
  // A diagnostic that only the frame's clearing step could remove.
  void dirty() { _QWZSetFrontEndErrorHandle(err_, "left over", 424242); }
  void expect_dirty() {
    const Diag d = diag();
    EXPECT_EQ(d.rc, QWZ_SUCCESS);
    EXPECT_EQ(d.number, 424242);
    EXPECT_EQ(d.message, "left over");
  }
  std::unique_ptr<ZoneGuard> z_;
};

// Counts hook calls; its results are set per test.
int g_calls = 0;
int g_flag_after_entry = 1;
sword counting_hook(void *, sword, ub4 direction, ub4, const char *) {
  ++g_calls;
  if (direction == 1) qwz_trace_flag = g_flag_after_entry;
  return 0;
}

}  // namespace

TEST_F(Frame, SuccessLeavesTheHandleCleared) {
  for (const Function &f : functions()) {
    SCOPED_TRACE(f.name);
    Args a;
    dirty();
    EXPECT_EQ(f.call(err_, a), QWZ_SUCCESS);
    expect_clear();
    EXPECT_EQ(a.untouched(), !f.writes_output);
  }
}

TEST_F(Frame, EntryTraceResultIsReturnedAtOnce) {
  TraceCapture cap;
  cap.set_results(7, 0);
  for (const Function &f : functions()) {
    SCOPED_TRACE(f.name);
    cap.records().clear();
    Args a;
    dirty();
    EXPECT_EQ(f.call(err_, a), 7);
    EXPECT_TRUE(a.untouched());
    expect_dirty();  // not even cleared
    ASSERT_EQ(cap.records().size(), 1u);
    EXPECT_EQ(cap.records()[0].direction, 1u);
    EXPECT_EQ(cap.records()[0].api_id, f.api_id);
    EXPECT_EQ(cap.records()[0].status, 0);
    // Nothing is validated: neither the error handle nor the parameters.
    cap.records().clear();
    EXPECT_EQ(f.call(nullptr, a), 7);
    for (const NullCase &n : f.nulls) EXPECT_EQ(n.call(err_, a), 7);
    EXPECT_TRUE(a.untouched());
    expect_dirty();
    EXPECT_EQ(cap.records().size(), 1u + f.nulls.size());
    for (const TraceRecord &r : cap.records()) EXPECT_EQ(r.direction, 1u);
  }
}

TEST_F(Frame, OtherEntryResultsArePassedThrough) {
  TraceCapture cap;
  for (sword v : {-1, -2, 1, 100, 2147483647}) {
    cap.set_results(v, 0);
    for (const Function &f : functions()) {
      Args a;
      EXPECT_EQ(f.call(err_, a), v) << f.name;
      EXPECT_TRUE(a.untouched()) << f.name;
    }
  }
}

TEST_F(Frame, InvalidErrorHandleReturnsTheValidatorsValue) {
  QWZError *freed = nullptr;
  ASSERT_EQ(QWZHandleAlloc(env_, reinterpret_cast<void **>(&freed), QWZ_HTYPE_ERROR), 0);
  ASSERT_EQ(QWZHandleFree(freed, QWZ_HTYPE_ERROR), 0);
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  QWZInterval *iv = new_interval(INTERVAL_KIND_DS);
  alignas(16) unsigned char garbage[4096];
  std::memset(garbage, 0x5A, sizeof garbage);
  struct Bad {
    const char *what;
    void *handle;
  } bads[] = {{"NULL", nullptr},
              {"freed", freed},
              {"environment", env_},
              {"session", session_},
              {"datetime", dt},
              {"interval", iv},
              {"not a handle", garbage},
              {"misaligned", garbage + 1}};
  for (const Bad &b : bads)
    for (const Function &f : functions()) {
      SCOPED_TRACE(std::string(f.name) + " with " + b.what);
      Args a;
      dirty();
      EXPECT_EQ(f.call(static_cast<QWZError *>(b.handle), a), QWZ_INVALID_HANDLE);
      EXPECT_TRUE(a.untouched());
      expect_dirty();  // the valid handle is not involved
      // Also before the NULL checks.
      for (const NullCase &n : f.nulls)
        EXPECT_EQ(n.call(static_cast<QWZError *>(b.handle), a), QWZ_INVALID_HANDLE);
    }
  for (unsigned char c : garbage) ASSERT_EQ(c, 0x5A);  // nothing written into it
}

TEST_F(Frame, InvalidErrorHandleWithTracingWritesOnlyTheEntry) {
  TraceCapture cap;
  for (const Function &f : functions()) {
    cap.records().clear();
    Args a;
    EXPECT_EQ(f.call(nullptr, a), QWZ_INVALID_HANDLE) << f.name;
    ASSERT_EQ(cap.records().size(), 1u) << f.name;
    EXPECT_EQ(cap.records()[0].direction, 1u);
  }
}

TEST_F(Frame, NullParametersGiveTheirNumbersAndNoExitTrace) {
  TraceCapture cap;
  for (const Function &f : functions())
    for (const NullCase &n : f.nulls) {
      SCOPED_TRACE(std::string(f.name) + " parameter " + std::to_string(n.param));
      cap.records().clear();
      Args a;
      EXPECT_EQ(n.call(err_, a), QWZ_ERROR);
      EXPECT_TRUE(a.untouched());
      expect_diag(21560, "21560",
                  "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n.param) +
                      " is NULL\n");
      ASSERT_EQ(cap.records().size(), 1u);
      EXPECT_EQ(cap.records()[0].direction, 1u);
      EXPECT_EQ(cap.records()[0].api_id, f.api_id);
    }
}

TEST_F(Frame, InvalidDateGivesNoExitTrace) {
  TraceCapture cap;
  for (const Function &f : functions()) {
    if (f.api_id == 131 || f.api_id == 137 || f.api_id == 185) continue;  // no value check
    SCOPED_TRACE(f.name);
    cap.records().clear();
    Args a;
    a.in1 = D(2023, 2, 30);
    EXPECT_EQ(f.call(err_, a), QWZ_ERROR);
    EXPECT_TRUE(a.untouched());
    expect_diag(11104, "22007", "ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n");
    EXPECT_EQ(cap.records().size(), 1u);
  }
}

TEST_F(Frame, ExitTraceResultIsReturned) {
  TraceCapture cap;
  cap.set_results(0, 9);
  for (const Function &f : functions()) {
    SCOPED_TRACE(f.name);
    cap.records().clear();
    Args a;
    dirty();
    EXPECT_EQ(f.call(err_, a), 9);
    EXPECT_EQ(a.untouched(), !f.writes_output);  // the work was done
    expect_clear();
    ASSERT_EQ(cap.records().size(), 2u);
    EXPECT_EQ(cap.records()[1].direction, 0u);
    EXPECT_EQ(cap.records()[1].status, 0);
    EXPECT_EQ(cap.records()[0].text, cap.records()[1].text);  // the same arguments
  }
}

TEST_F(Frame, SuccessWithTracingWritesEntryAndExit) {
  TraceCapture cap;
  for (const Function &f : functions()) {
    SCOPED_TRACE(f.name);
    cap.records().clear();
    Args a;
    EXPECT_EQ(f.call(err_, a), QWZ_SUCCESS);
    ASSERT_EQ(cap.records().size(), 2u);
    for (const TraceRecord &r : cap.records()) {
      EXPECT_EQ(r.api_id, f.api_id);
      EXPECT_EQ(r.errhp, err_);  // the error handle goes first to the trace call
      EXPECT_EQ(r.status, 0);
    }
    EXPECT_EQ(cap.records()[0].direction, 1u);
    EXPECT_EQ(cap.records()[1].direction, 0u);
  }
}

TEST_F(Frame, TracingOffNeverCallsTheHook) {
  QWZTraceSetHook(counting_hook);
  qwz_trace_flag = 0;
  g_calls = 0;
  for (const Function &f : functions()) {
    Args a;
    EXPECT_EQ(f.call(err_, a), QWZ_SUCCESS) << f.name;
    EXPECT_EQ(f.call(nullptr, a), QWZ_INVALID_HANDLE) << f.name;
    for (const NullCase &n : f.nulls) EXPECT_EQ(n.call(err_, a), QWZ_ERROR) << f.name;
  }
  EXPECT_EQ(g_calls, 0);
  QWZTraceSetHook(nullptr);
}

// The switch is read once before the entry trace and again before the exit
// trace: turning it off in between drops only the exit record.
TEST_F(Frame, TheFlagIsReadTwice) {
  QWZTraceSetHook(counting_hook);
  for (const Function &f : functions()) {
    SCOPED_TRACE(f.name);
    qwz_trace_flag = 1;
    g_flag_after_entry = 0;
    g_calls = 0;
    Args a;
    EXPECT_EQ(f.call(err_, a), QWZ_SUCCESS);
    EXPECT_EQ(g_calls, 1);
    EXPECT_EQ(qwz_trace_flag, 0);
    EXPECT_EQ(a.untouched(), !f.writes_output);
    qwz_trace_flag = 1;
    g_flag_after_entry = 1;
    g_calls = 0;
    EXPECT_EQ(f.call(err_, a), QWZ_SUCCESS);
    EXPECT_EQ(g_calls, 2);
  }
  qwz_trace_flag = 0;
  g_flag_after_entry = 1;
  QWZTraceSetHook(nullptr);
}

// The status handed to the exit trace is the work's result.
TEST_F(Frame, ExitTraceCarriesTheStatus) {
  TraceCapture cap;
  Args a;
  a.in1 = D(2023, 2, 30);  // QWZDateCheck: an invalid date is still a success
  EXPECT_EQ(QWZDateCheck(err_, &a.in1, &a.flags), QWZ_SUCCESS);
  EXPECT_EQ(a.flags, 0x1u);
  ASSERT_EQ(cap.records().size(), 2u);
  EXPECT_EQ(cap.records()[0].status, 0);
  EXPECT_EQ(cap.records()[1].status, 0);
}
