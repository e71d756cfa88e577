// The trace records of every date function, compared as whole texts through
// the hook: the traced arguments in their order, the "(null)" substitutions,
// the short argument lists of QWZDateCompare and QWZDateDaysBetween (the
// error handle left out, so every value sits one line up and the last line
// has no argument of its own and prints 0), and QWZDateCheck's flags pointer
// passed as it is.
#include "support/calendar_reference.h"
#include "support/test_support.h"

#include <climits>
#include <memory>
#include <string>

using namespace qwz_test;

namespace {

QWZDate D(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return QWZDate{static_cast<sb2>(y), static_cast<ub2>(mo), static_cast<ub2>(d),
                 static_cast<ub2>(h), static_cast<ub2>(mi), static_cast<ub2>(s)};
}

const std::string kZero = "0x000000000000";
// Where a substituted pointer points: the literal "(null)".
std::string kNullPtr() { return hex12(qwz::kNullText); }

std::string line(const char *type, const std::string &value) {
  return std::string("\n\t") + type + "     \t" + value;
}

class DateTrace : public HandleFixture {
 protected:
  void SetUp() override {
    HandleFixture::SetUp();
    zone_ = std::make_unique<ZoneGuard>(kUtc);
  }
  void TearDown() override {
    zone_.reset();
    HandleFixture::TearDown();
  }
  // Expects one entry and, when `exit`, one exit record, both with `text`.
  void expect_records(TraceCapture &cap, ub4 api_id, const std::string &text, bool exit,
                      sword exit_status = 0) {
    auto &r = cap.records();
    ASSERT_EQ(r.size(), exit ? 2u : 1u);
    EXPECT_EQ(r[0].api_id, api_id);
    EXPECT_EQ(r[0].direction, 1u);
    EXPECT_EQ(r[0].status, 0);
    EXPECT_EQ(r[0].errhp, err_);
    EXPECT_EQ(r[0].text, text);
    if (exit) {
      EXPECT_EQ(r[1].api_id, api_id);
      EXPECT_EQ(r[1].direction, 0u);
      EXPECT_EQ(r[1].status, exit_status);
      EXPECT_EQ(r[1].errhp, err_);
      EXPECT_EQ(r[1].text, text);
    }
    r.clear();
  }
  std::unique_ptr<ZoneGuard> zone_;
};

}  // namespace

TEST_F(DateTrace, AddDays) {
  TraceCapture cap;
  const QWZDate d = D(2024, 1, 31);
  QWZDate r{};
  for (sb4 days : {0, 1, -5, INT_MAX, INT_MIN}) {
    ASSERT_EQ(QWZDateAddDays(err_, &d, days, &r), QWZ_SUCCESS);
    expect_records(cap, 128,
                   "<QWZDateAddDays>" + line("QWZError*", hex12(err_)) +
                       line("const QWZDate*", hex12(&d)) + line("sb4", std::to_string(days)) +
                       line("QWZDate*", hex12(&r)),
                   true);
  }
  // NULL pointers are passed as they are; the failed call has no exit record.
  ASSERT_EQ(QWZDateAddDays(err_, &d, 2, nullptr), QWZ_ERROR);
  expect_records(cap, 128,
                 "<QWZDateAddDays>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("sb4", "2") +
                     line("QWZDate*", kZero),
                 false);
}

TEST_F(DateTrace, AddMonths) {
  TraceCapture cap;
  const QWZDate d = D(2024, 1, 31);
  QWZDate r{};
  ASSERT_EQ(QWZDateAddMonths(err_, &d, -13, &r), QWZ_SUCCESS);
  expect_records(cap, 129,
                 "<QWZDateAddMonths>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("sb4", "-13") +
                     line("QWZDate*", hex12(&r)),
                 true);
  ASSERT_EQ(QWZDateAddMonths(err_, nullptr, 1, &r), QWZ_ERROR);
  expect_records(cap, 129,
                 "<QWZDateAddMonths>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", kZero) + line("sb4", "1") +
                     line("QWZDate*", hex12(&r)),
                 false);
}

TEST_F(DateTrace, Assign) {
  TraceCapture cap;
  const QWZDate d = D(2024, 1, 31);
  QWZDate r{};
  ASSERT_EQ(QWZDateAssign(err_, &d, &r), QWZ_SUCCESS);
  expect_records(cap, 130,
                 "<QWZDateAssign>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("QWZDate*", hex12(&r)),
                 true);
  ASSERT_EQ(QWZDateAssign(err_, &d, nullptr), QWZ_ERROR);
  expect_records(cap, 130,
                 "<QWZDateAssign>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("QWZDate*", kZero),
                 false);
}

TEST_F(DateTrace, CheckPassesItsFlagsPointerAsItIs) {
  TraceCapture cap;
  const QWZDate d = D(2023, 2, 30);
  uword valid = 0;
  ASSERT_EQ(QWZDateCheck(err_, &d, &valid), QWZ_SUCCESS);
  expect_records(cap, 131,
                 "<QWZDateCheck>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("uword*", hex12(&valid)),
                 true);
  ASSERT_EQ(QWZDateCheck(err_, &d, nullptr), QWZ_ERROR);
  expect_records(cap, 131,
                 "<QWZDateCheck>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("uword*", kZero),
                 false);
}

TEST_F(DateTrace, CompareLeavesTheErrorHandleOut) {
  TraceCapture cap;
  const QWZDate a = D(2024, 1, 31), b = D(2024, 2, 1);
  sword r = 0;
  ASSERT_EQ(QWZDateCompare(err_, &a, &b, &r), QWZ_SUCCESS);
  expect_records(cap, 132,
                 "<QWZDateCompare>" + line("QWZError*", hex12(&a)) +
                     line("const QWZDate*", hex12(&b)) + line("const QWZDate*", hex12(&r)) +
                     line("sword", kZero),
                 true);
  // A NULL result is shown through the "(null)" literal.
  ASSERT_EQ(QWZDateCompare(err_, &a, &b, nullptr), QWZ_ERROR);
  expect_records(cap, 132,
                 "<QWZDateCompare>" + line("QWZError*", hex12(&a)) +
                     line("const QWZDate*", hex12(&b)) + line("const QWZDate*", kNullPtr()) +
                     line("sword", kZero),
                 false);
  // NULL dates are passed as they are.
  ASSERT_EQ(QWZDateCompare(err_, nullptr, nullptr, &r), QWZ_ERROR);
  expect_records(cap, 132,
                 "<QWZDateCompare>" + line("QWZError*", kZero) + line("const QWZDate*", kZero) +
                     line("const QWZDate*", hex12(&r)) + line("sword", kZero),
                 false);
}

TEST_F(DateTrace, DaysBetweenLeavesTheErrorHandleOut) {
  TraceCapture cap;
  const QWZDate a = D(2024, 1, 31), b = D(2024, 2, 1);
  sb4 n = 0;
  ASSERT_EQ(QWZDateDaysBetween(err_, &a, &b, &n), QWZ_SUCCESS);
  EXPECT_EQ(n, -1);
  expect_records(cap, 133,
                 "<QWZDateDaysBetween>" + line("QWZError*", hex12(&a)) +
                     line("const QWZDate*", hex12(&b)) + line("const QWZDate*", hex12(&n)) +
                     line("sb4", kZero),
                 true);
  ASSERT_EQ(QWZDateDaysBetween(err_, &a, &b, nullptr), QWZ_ERROR);
  expect_records(cap, 133,
                 "<QWZDateDaysBetween>" + line("QWZError*", hex12(&a)) +
                     line("const QWZDate*", hex12(&b)) + line("const QWZDate*", kNullPtr()) +
                     line("sb4", kZero),
                 false);
}

TEST_F(DateTrace, LastDay) {
  TraceCapture cap;
  const QWZDate d = D(2024, 2, 10);
  QWZDate r{};
  ASSERT_EQ(QWZDateLastDay(err_, &d, &r), QWZ_SUCCESS);
  expect_records(cap, 135,
                 "<QWZDateLastDay>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("QWZDate*", hex12(&r)),
                 true);
}

TEST_F(DateTrace, NextDay) {
  TraceCapture cap;
  const QWZDate d = D(2024, 1, 3);
  QWZDate r{};
  const QWZtext name[] = "SATURDAY";
  ASSERT_EQ(QWZDateNextDay(err_, &d, name, 8, &r), QWZ_SUCCESS);
  expect_records(cap, 136,
                 "<QWZDateNextDay>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("const QWZtext*", "SATURDAY") +
                     line("ub4", "8") + line("QWZDate*", hex12(&r)),
                 true);
  // A NULL name prints "(null)"; a NULL result is passed as it is.
  ASSERT_EQ(QWZDateNextDay(err_, &d, nullptr, 4294967295u, &r), QWZ_ERROR);
  expect_records(cap, 136,
                 "<QWZDateNextDay>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("const QWZtext*", "(null)") +
                     line("ub4", "4294967295") + line("QWZDate*", hex12(&r)),
                 false);
  ASSERT_EQ(QWZDateNextDay(err_, &d, name, 6, nullptr), QWZ_ERROR);
  expect_records(cap, 136,
                 "<QWZDateNextDay>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("const QWZtext*", "SATURDAY") +
                     line("ub4", "6") + line("QWZDate*", kZero),
                 false);
  // A name that matches no weekday: entry only.
  const QWZtext bad[] = "Caturday";
  ASSERT_EQ(QWZDateNextDay(err_, &d, bad, 8, &r), QWZ_ERROR);
  expect_records(cap, 136,
                 "<QWZDateNextDay>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("const QWZtext*", "Caturday") +
                     line("ub4", "8") + line("QWZDate*", hex12(&r)),
                 false);
}

TEST_F(DateTrace, SysDate) {
  TraceCapture cap;
  QWZDate r{};
  ASSERT_EQ(QWZDateSysDate(err_, &r), QWZ_SUCCESS);
  expect_records(cap, 137,
                 "<QWZDateSysDate>" + line("QWZError*", hex12(err_)) + line("QWZDate*", hex12(&r)),
                 true);
  ASSERT_EQ(QWZDateSysDate(err_, nullptr), QWZ_ERROR);
  expect_records(cap, 137,
                 "<QWZDateSysDate>" + line("QWZError*", hex12(err_)) + line("QWZDate*", kZero),
                 false);
}

TEST_F(DateTrace, ZoneToZone) {
  TraceCapture cap;
  QWZDate a = D(2024, 1, 3), b{};
  QWZText z1[] = "Europe/Paris", z2[] = "UTC";
  ASSERT_EQ(QWZDateZoneToZone(err_, &a, z1, 12, z2, 3, &b), QWZ_SUCCESS);
  expect_records(cap, 185,
                 "<QWZDateZoneToZone>" + line("QWZError*", hex12(err_)) +
                     line("QWZDate*", hex12(&a)) + line("QWZText*", "Europe/Paris") +
                     line("ub4", "12") + line("QWZText*", "UTC") + line("ub4", "3") +
                     line("QWZDate*", hex12(&b)),
                 true);
  ASSERT_EQ(QWZDateZoneToZone(err_, &a, nullptr, 0, nullptr, 4000000000u, &b), QWZ_ERROR);
  expect_records(cap, 185,
                 "<QWZDateZoneToZone>" + line("QWZError*", hex12(err_)) +
                     line("QWZDate*", hex12(&a)) + line("QWZText*", "(null)") +
                     line("ub4", "0") + line("QWZText*", "(null)") + line("ub4", "4000000000") +
                     line("QWZDate*", hex12(&b)),
                 false);
  ASSERT_EQ(QWZDateZoneToZone(err_, nullptr, z1, 1, nullptr, 2, nullptr), QWZ_ERROR);
  expect_records(cap, 185,
                 "<QWZDateZoneToZone>" + line("QWZError*", hex12(err_)) +
                     line("QWZDate*", kZero) + line("QWZText*", "Europe/Paris") +
                     line("ub4", "1") + line("QWZText*", "(null)") + line("ub4", "2") +
                     line("QWZDate*", kZero),
                 false);
}

// The exit record carries the status of the work, and the exit trace's own
// non-zero answer replaces it.
TEST_F(DateTrace, ExitStatusAndAnswer) {
  TraceCapture cap;
  cap.set_results(0, -77);
  const QWZDate d = D(2024, 1, 31);
  QWZDate r{};
  EXPECT_EQ(QWZDateLastDay(err_, &d, &r), -77);
  EXPECT_EQ(r, (QWZDate{2024, 1, 31, 0, 0, 0}));
  expect_records(cap, 135,
                 "<QWZDateLastDay>" + line("QWZError*", hex12(err_)) +
                     line("const QWZDate*", hex12(&d)) + line("QWZDate*", hex12(&r)),
                 true, 0);
}

// An invalid error handle still has its entry record, with the handle the
// caller gave.
TEST_F(DateTrace, InvalidHandleEntryRecord) {
  TraceCapture cap;
  const QWZDate d = D(2024, 1, 31);
  QWZDate r{};
  EXPECT_EQ(QWZDateAssign(nullptr, &d, &r), QWZ_INVALID_HANDLE);
  ASSERT_EQ(cap.records().size(), 1u);
  EXPECT_EQ(cap.records()[0].errhp, nullptr);
  EXPECT_EQ(cap.records()[0].text, "<QWZDateAssign>" + line("QWZError*", kZero) +
                                       line("const QWZDate*", hex12(&d)) +
                                       line("QWZDate*", hex12(&r)));
}
