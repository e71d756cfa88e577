// Black-box tests of the trace records of the date family, compared as text
// through the trace hook: one record on entry and one on exit, the "(null)"
// substitutions, the lists that leave the error handle out, and the frame's
// handling of the hook's results.
#include "date_conf.h"

#include <cstdlib>
#include <functional>
#include <vector>

using namespace dconf;
using qwz_test::kUtc;
using qwz_test::TraceCapture;
using qwz_test::ZoneGuard;

namespace {

constexpr char kP[] = "     \t";  // between a type word and its conversion

std::string line(const char *type, const std::string &value) {
  return std::string("\n\t") + type + kP + value;
}

// The pointer a "0x%012lX" line printed, read back.
const void *printed_pointer(const std::string &text) {
  return reinterpret_cast<const void *>(std::strtoul(text.c_str(), nullptr, 16));
}

class DateTrace : public DateConf {
 protected:
  // Expects exactly an entry and an exit record of `api` with these texts.
  void expect_pair(ub4 api, const std::string &text, sword exit_status) {
    auto &r = cap_.records();
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r[0].direction, 1u);
    EXPECT_EQ(r[0].status, 0);
    EXPECT_EQ(r[0].api_id, api);
    EXPECT_EQ(r[0].errhp, static_cast<void *>(err_));
    EXPECT_EQ(r[0].text, text);
    EXPECT_EQ(r[1].direction, 0u);
    EXPECT_EQ(r[1].status, exit_status);
    EXPECT_EQ(r[1].api_id, api);
    EXPECT_EQ(r[1].errhp, static_cast<void *>(err_));
    EXPECT_EQ(r[1].text, text);
  }
  void expect_entry_only(ub4 api, const std::string &text) {
    auto &r = cap_.records();
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r[0].direction, 1u);
    EXPECT_EQ(r[0].status, 0);
    EXPECT_EQ(r[0].api_id, api);
    EXPECT_EQ(r[0].text, text);
  }
  TraceCapture cap_;
};

TEST_F(DateTrace, AddDays) {
  ZoneGuard z(kUtc);
  const QWZDate d = D(2024, 1, 1);
  QWZDate out;
  ASSERT_EQ(QWZDateAddDays(err_, &d, -5, &out), QWZ_SUCCESS);
  // Row 128, byte for byte.
  expect_pair(128,
              "<QWZDateAddDays>\n\tQWZError*     \t" + hex12(err_) +
                  "\n\tconst QWZDate*     \t" + hex12(&d) + "\n\tsb4     \t-5\n\tQWZDate*     \t" +
                  hex12(&out),
              0);
}

TEST_F(DateTrace, AddMonths) {
  ZoneGuard z(kUtc);
  const QWZDate d = D(2024, 1, 31);
  QWZDate out;
  ASSERT_EQ(QWZDateAddMonths(err_, &d, -2147483647 - 1, &out), QWZ_SUCCESS);
  expect_pair(129,
              "<QWZDateAddMonths>" + line("QWZError*", hex12(err_)) +
                  line("const QWZDate*", hex12(&d)) + line("sb4", "-2147483648") +
                  line("QWZDate*", hex12(&out)),
              0);
}

TEST_F(DateTrace, Assign) {
  const QWZDate d = D(2024, 1, 31);
  QWZDate out;
  ASSERT_EQ(QWZDateAssign(err_, &d, &out), QWZ_SUCCESS);
  expect_pair(130,
              "<QWZDateAssign>" + line("QWZError*", hex12(err_)) +
                  line("const QWZDate*", hex12(&d)) + line("QWZDate*", hex12(&out)),
              0);
}

TEST_F(DateTrace, CheckPassesTheFlagsPointerAsItIs) {
  const QWZDate bad = D(2024, 2, 30);
  uword valid = 0;
  ASSERT_EQ(QWZDateCheck(err_, &bad, &valid), QWZ_SUCCESS);
  expect_pair(131,
              "<QWZDateCheck>" + line("QWZError*", hex12(err_)) +
                  line("const QWZDate*", hex12(&bad)) + line("uword*", hex12(&valid)),
              0);
  cap_.records().clear();
  ASSERT_EQ(QWZDateCheck(err_, &bad, nullptr), QWZ_ERROR);
  expect_entry_only(131, "<QWZDateCheck>" + line("QWZError*", hex12(err_)) +
                             line("const QWZDate*", hex12(&bad)) +
                             line("uword*", hex12(nullptr)));
}

// The error handle is not among the traced arguments of QWZDateCompare and
// QWZDateDaysBetween: the first date fills the error handle's line.
TEST_F(DateTrace, CompareAndDaysBetweenLeaveTheErrorHandleOut) {
  const QWZDate a = D(2024, 1, 2), b = D(2024, 1, 1);
  sword r = 0;
  sb4 n = 0;
  struct Call {
    ub4 api;
    const char *name;
    const char *last_type;
    std::function<sword(bool)> run;  // argument: pass a NULL result
    const void *result;
  };
  const Call calls[] = {
      {132, "QWZDateCompare", "sword",
       [&](bool null) { return QWZDateCompare(err_, &a, &b, null ? nullptr : &r); }, &r},
      {133, "QWZDateDaysBetween", "sb4",
       [&](bool null) { return QWZDateDaysBetween(err_, &a, &b, null ? nullptr : &n); }, &n},
  };
  for (const Call &c : calls) {
    SCOPED_TRACE(c.name);
    cap_.records().clear();
    ASSERT_EQ(c.run(false), QWZ_SUCCESS);
    auto &rec = cap_.records();
    ASSERT_EQ(rec.size(), 2u);
    const std::string head = std::string("<") + c.name + ">" + line("QWZError*", hex12(&a)) +
                             line("const QWZDate*", hex12(&b)) +
                             line("const QWZDate*", hex12(c.result)) + "\n\t" + c.last_type +
                             kP + "0x";
    for (const TraceRecord &t : rec) {
      EXPECT_EQ(t.api_id, c.api);
      EXPECT_EQ(t.errhp, static_cast<void *>(err_));
      ASSERT_EQ(t.text.substr(0, head.size()), head);
      EXPECT_EQ(t.text.size(), head.size() + 12);  // the fourth conversion still prints
    }
    EXPECT_EQ(rec[0].direction, 1u);
    EXPECT_EQ(rec[1].direction, 0u);

    // A NULL result is shown as a pointer to the text "(null)"; the call
    // then fails its NULL check and writes no exit record.
    cap_.records().clear();
    ASSERT_EQ(c.run(true), QWZ_ERROR);
    ASSERT_EQ(rec.size(), 1u);
    const std::string prefix = std::string("<") + c.name + ">" + line("QWZError*", hex12(&a)) +
                               line("const QWZDate*", hex12(&b)) + "\n\tconst QWZDate*" + kP;
    ASSERT_EQ(rec[0].text.substr(0, prefix.size()), prefix);
    const std::string shown = rec[0].text.substr(prefix.size(), 14);
    EXPECT_NE(shown, hex12(nullptr));
    const char *text = static_cast<const char *>(printed_pointer(shown));
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "(null)");
  }
}

TEST_F(DateTrace, LastDay) {
  const QWZDate d = D(2024, 2, 3);
  QWZDate out;
  ASSERT_EQ(QWZDateLastDay(err_, &d, &out), QWZ_SUCCESS);
  expect_pair(135,
              "<QWZDateLastDay>" + line("QWZError*", hex12(err_)) +
                  line("const QWZDate*", hex12(&d)) + line("QWZDate*", hex12(&out)),
              0);
}

TEST_F(DateTrace, NextDay) {
  ZoneGuard z(kUtc);
  const QWZDate d = D(2024, 1, 1);
  QWZDate out;
  ASSERT_EQ(QWZDateNextDay(err_, &d, W("FRIDAY"), 6, &out), QWZ_SUCCESS);
  // Row 136, byte for byte.
  expect_pair(136,
              "<QWZDateNextDay>\n\tQWZError*     \t" + hex12(err_) +
                  "\n\tconst QWZDate*     \t" + hex12(&d) +
                  "\n\tconst QWZtext*     \tFRIDAY\n\tub4     \t6\n\tQWZDate*     \t" +
                  hex12(&out),
              0);
  cap_.records().clear();
  ASSERT_EQ(QWZDateNextDay(err_, &d, nullptr, 4294967295u, &out), QWZ_ERROR);
  expect_entry_only(136, "<QWZDateNextDay>" + line("QWZError*", hex12(err_)) +
                             line("const QWZDate*", hex12(&d)) + line("const QWZtext*", "(null)") +
                             line("ub4", "4294967295") + line("QWZDate*", hex12(&out)));
}

TEST_F(DateTrace, SysDate) {
  QWZDate out;
  ASSERT_EQ(QWZDateSysDate(err_, &out), QWZ_SUCCESS);
  expect_pair(137, "<QWZDateSysDate>" + line("QWZError*", hex12(err_)) + line("QWZDate*", hex12(&out)),
              0);
}

TEST_F(DateTrace, ZoneToZone) {
  QWZDate a = D(2024, 1, 1), b = D(2024, 1, 2);
  QWZText z1[] = "+01:00", z2[] = "Europe";
  ASSERT_EQ(QWZDateZoneToZone(err_, &a, z1, 6, z2, 7, &b), QWZ_SUCCESS);
  expect_pair(185,
              "<QWZDateZoneToZone>" + line("QWZError*", hex12(err_)) + line("QWZDate*", hex12(&a)) +
                  line("QWZText*", "+01:00") + line("ub4", "6") + line("QWZText*", "Europe") +
                  line("ub4", "7") + line("QWZDate*", hex12(&b)),
              0);
  cap_.records().clear();
  ASSERT_EQ(QWZDateZoneToZone(err_, &a, nullptr, 1, nullptr, 2, &b), QWZ_ERROR);
  expect_entry_only(185, "<QWZDateZoneToZone>" + line("QWZError*", hex12(err_)) +
                             line("QWZDate*", hex12(&a)) + line("QWZText*", "(null)") +
                             line("ub4", "1") + line("QWZText*", "(null)") + line("ub4", "2") +
                             line("QWZDate*", hex12(&b)));
}

// Text arguments are handed to the trace as the pointers they are and print
// as "%s" up to their NUL, whatever length goes with them.
TEST_F(DateTrace, TextsAreTracedAsTheyAre) {
  ZoneGuard z(kUtc);
  const QWZDate d = D(2024, 1, 1);
  QWZDate out;
  ASSERT_EQ(QWZDateNextDay(err_, &d, W("Wednesday"), 6, &out), QWZ_SUCCESS);
  EXPECT_EQ(out, D(2024, 1, 3));
  expect_pair(136, "<QWZDateNextDay>" + line("QWZError*", hex12(err_)) +
                       line("const QWZDate*", hex12(&d)) + line("const QWZtext*", "Wednesday") +
                       line("ub4", "6") + line("QWZDate*", hex12(&out)),
              0);
  cap_.records().clear();
  QWZDate a = D(2024, 1, 1), b = D(2024, 1, 2);
  QWZText z1[] = "UTC", z2[] = "Europe/Paris";
  ASSERT_EQ(QWZDateZoneToZone(err_, &a, z1, 0, z2, 3, &b), QWZ_SUCCESS);
  expect_pair(185, "<QWZDateZoneToZone>" + line("QWZError*", hex12(err_)) +
                       line("QWZDate*", hex12(&a)) + line("QWZText*", "UTC") + line("ub4", "0") +
                       line("QWZText*", "Europe/Paris") + line("ub4", "3") +
                       line("QWZDate*", hex12(&b)),
              0);
}

// Every date function, run through the frame's rules.
struct DateCall {
  const char *name;
  ub4 api;
  // Runs the call on `err` with valid arguments writing into `out` (a record
  // or a word, as the function has).
  std::function<sword(QWZError *err, QWZDate *out)> ok;
  // Runs it with its first pointer parameter NULL; the parameter's number.
  std::function<sword(QWZError *err, QWZDate *out)> null_first;
  int null_param_no;
  bool writes_out;
};

const QWZDate kIn = D(2024, 1, 1, 10);
uword g_flags;
sword g_cmp;
sb4 g_days;

std::vector<DateCall> date_calls() {
  return {
      {"AddDays", 128, [](QWZError *e, QWZDate *o) { return QWZDateAddDays(e, &kIn, 3, o); },
       [](QWZError *e, QWZDate *o) { return QWZDateAddDays(e, nullptr, 3, o); }, 2, true},
      {"AddMonths", 129, [](QWZError *e, QWZDate *o) { return QWZDateAddMonths(e, &kIn, 3, o); },
       [](QWZError *e, QWZDate *o) { return QWZDateAddMonths(e, nullptr, 3, o); }, 2, true},
      {"Assign", 130, [](QWZError *e, QWZDate *o) { return QWZDateAssign(e, &kIn, o); },
       [](QWZError *e, QWZDate *o) { return QWZDateAssign(e, nullptr, o); }, 2, true},
      {"Check", 131, [](QWZError *e, QWZDate *) { return QWZDateCheck(e, &kIn, &g_flags); },
       [](QWZError *e, QWZDate *) { return QWZDateCheck(e, &kIn, nullptr); }, 3, false},
      {"Compare", 132, [](QWZError *e, QWZDate *) { return QWZDateCompare(e, &kIn, &kIn, &g_cmp); },
       [](QWZError *e, QWZDate *) { return QWZDateCompare(e, nullptr, &kIn, &g_cmp); }, 2, false},
      {"DaysBetween", 133,
       [](QWZError *e, QWZDate *) { return QWZDateDaysBetween(e, &kIn, &kIn, &g_days); },
       [](QWZError *e, QWZDate *) { return QWZDateDaysBetween(e, &kIn, nullptr, &g_days); }, 3,
       false},
      {"LastDay", 135, [](QWZError *e, QWZDate *o) { return QWZDateLastDay(e, &kIn, o); },
       [](QWZError *e, QWZDate *) { return QWZDateLastDay(e, &kIn, nullptr); },
       3, true},
      {"NextDay", 136,
       [](QWZError *e, QWZDate *o) { return QWZDateNextDay(e, &kIn, W("monday"), 6, o); },
       [](QWZError *e, QWZDate *) { return QWZDateNextDay(e, &kIn, W("monday"), 6, nullptr); },
       5, true},
      {"SysDate", 137, [](QWZError *e, QWZDate *o) { return QWZDateSysDate(e, o); },
       [](QWZError *e, QWZDate *) { return QWZDateSysDate(e, nullptr); }, 2, true},
      {"ZoneToZone", 185,
       [](QWZError *e, QWZDate *o) {
         QWZDate in = kIn;
         QWZText z[] = "UTC";
         return QWZDateZoneToZone(e, &in, z, 3, z, 3, o);
       },
       [](QWZError *e, QWZDate *o) {
         QWZDate in = kIn;
         return QWZDateZoneToZone(e, &in, nullptr, 3, nullptr, 3, o);
       },
       2, false},
  };
}

TEST_F(DateTrace, EntryResultIsReturnedAtOnce) {
  ZoneGuard z(kUtc);
  for (const DateCall &c : date_calls()) {
    SCOPED_TRACE(c.name);
    leave_a_diagnostic();
    cap_.records().clear();
    cap_.set_results(7, 0);
    QWZDate out = marker();
    g_flags = 5;
    g_cmp = 5;
    g_days = 5;
    EXPECT_EQ(c.ok(err_, &out), 7);
    EXPECT_EQ(c.null_first(err_, &out), 7);
    // Not even the error handle is validated.
    EXPECT_EQ(c.ok(nullptr, &out), 7);
    cap_.set_results(0, 0);
    EXPECT_EQ(out, marker());
    EXPECT_EQ(g_flags, 5u);
    EXPECT_EQ(g_cmp, 5);
    EXPECT_EQ(g_days, 5);
    expect_null_param(2);  // the earlier diagnostic is still there
    ASSERT_EQ(cap_.records().size(), 3u);
    for (const TraceRecord &t : cap_.records()) EXPECT_EQ(t.direction, 1u);
  }
}

TEST_F(DateTrace, InvalidErrorHandleReturnsTheValidatorsValue) {
  ZoneGuard z(kUtc);
  QWZError *freed = nullptr;
  ASSERT_EQ(QWZHandleAlloc(env_, reinterpret_cast<void **>(&freed), QWZ_HTYPE_ERROR),
            QWZ_SUCCESS);
  ASSERT_EQ(QWZHandleFree(freed, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  QWZError *wrong_kind = reinterpret_cast<QWZError *>(session_);
  QWZError *env_as_err = reinterpret_cast<QWZError *>(env_);
  for (const DateCall &c : date_calls()) {
    SCOPED_TRACE(c.name);
    for (QWZError *bad : {static_cast<QWZError *>(nullptr), freed, wrong_kind, env_as_err}) {
      cap_.records().clear();
      QWZDate out = marker();
      g_flags = 5;
      g_cmp = 5;
      g_days = 5;
      EXPECT_EQ(c.ok(bad, &out), QWZ_INVALID_HANDLE);
      EXPECT_EQ(c.null_first(bad, &out), QWZ_INVALID_HANDLE);
      EXPECT_EQ(out, marker());
      EXPECT_EQ(g_flags, 5u);
      EXPECT_EQ(g_cmp, 5);
      EXPECT_EQ(g_days, 5);
      ASSERT_EQ(cap_.records().size(), 2u);  // two entry records, no exit
      for (const TraceRecord &t : cap_.records()) EXPECT_EQ(t.direction, 1u);
    }
  }
}

TEST_F(DateTrace, NullParameterGivesItsNumberAndNoExitRecord) {
  for (const DateCall &c : date_calls()) {
    SCOPED_TRACE(c.name);
    cap_.records().clear();
    QWZDate out = marker();
    EXPECT_EQ(c.null_first(err_, &out), QWZ_ERROR);
    expect_null_param(c.null_param_no);
    EXPECT_EQ(out, marker());
    ASSERT_EQ(cap_.records().size(), 1u);
    EXPECT_EQ(cap_.records()[0].direction, 1u);
    EXPECT_EQ(cap_.records()[0].api_id, c.api);
  }
}

TEST_F(DateTrace, SuccessClearsAndExitResultIsReturned) {
  ZoneGuard z(kUtc);
  for (const DateCall &c : date_calls()) {
    SCOPED_TRACE(c.name);
    leave_a_diagnostic();
    cap_.records().clear();
    QWZDate out = marker();
    ASSERT_EQ(c.ok(err_, &out), QWZ_SUCCESS);
    expect_clear();
    ASSERT_EQ(cap_.records().size(), 2u);
    EXPECT_EQ(cap_.records()[1].direction, 0u);
    EXPECT_EQ(cap_.records()[1].status, 0);
    EXPECT_EQ(cap_.records()[1].api_id, c.api);

    // The exit record's result replaces the status; the work is done.
    leave_a_diagnostic();
    cap_.set_results(0, 9);
    out = marker();
    EXPECT_EQ(c.ok(err_, &out), 9);
    cap_.set_results(0, 0);
    if (c.writes_out) EXPECT_FALSE(out == marker());
    else EXPECT_EQ(out, marker());
    expect_clear();
  }
}

TEST_F(DateTrace, InvalidDateGivesNoExitRecord) {
  const QWZDate bad = D(2024, 2, 30);
  QWZDate out = marker();
  ASSERT_EQ(QWZDateAddDays(err_, &bad, 1, &out), QWZ_ERROR);
  expect_date_invalid();
  ASSERT_EQ(cap_.records().size(), 1u);
  EXPECT_EQ(cap_.records()[0].direction, 1u);
}

TEST_F(DateTrace, TracingOffNeverCallsTheHook) {
  qwz_trace_flag = 0;
  const QWZDate d = D(2024, 1, 1);
  QWZDate out;
  cap_.set_results(7, 9);
  EXPECT_EQ(QWZDateAddDays(err_, &d, 1, &out), QWZ_SUCCESS);
  EXPECT_EQ(QWZDateAddDays(nullptr, &d, 1, &out), QWZ_INVALID_HANDLE);
  EXPECT_TRUE(cap_.records().empty());
}

}  // namespace
