// Black-box tests of the public date functions: results, check order,
// parameter numbers, diagnostics read back through QWZErrorGet, and outputs
// left alone on every failure.
#include "date_conf.h"

#include <cstdint>
#include <vector>

using namespace dconf;
using qwz_test::kCet;
using qwz_test::kUtc;
using qwz_test::ZoneGuard;

namespace {

// Invalid records and the flags QWZDateCheck reports for them.
struct FlagCase {
  QWZDate date;
  uword flags;
};
const std::vector<FlagCase> &flag_cases() {
  static const std::vector<FlagCase> cases = {
      {D(2024, 1, 1), 0},
      {D(0, 1, 1), 0x2000},
      {D(10000, 1, 1), 0x10},
      {D(-4713, 1, 1), 0x10},
      {D(-4712, 1, 1), 0},
      {D(9999, 12, 31, 23, 59, 59), 0},
      {D(-32768, 1, 1), 0x10},
      {D(2024, 13, 1), 0x4},
      {D(2024, 13, 99), 0x4},
      {D(2024, 0, 0), 0x4},
      {D(2024, 65535, 1), 0x4},
      {D(2023, 2, 29), 0x1},
      {D(2023, 2, 30), 0x1},
      {D(1900, 2, 29), 0x1},
      {D(2000, 2, 29), 0},
      {D(2024, 2, 29), 0},
      {D(-4, 2, 29), 0},
      {D(-400, 2, 29), 0},
      {D(-100, 2, 29), 0x1},
      {D(2024, 4, 31), 0x1},
      {D(2024, 1, 0), 0x1},
      {D(2024, 1, 32), 0x1},
      {D(2024, 1, 1, 24, 60, 60), 0x540},
      {D(2024, 1, 1, 24), 0x40},
      {D(2024, 1, 1, 0, 60), 0x100},
      {D(2024, 1, 1, 0, 0, 60), 0x400},
      {D(2024, 1, 1, 23, 59, 59), 0},
      {D(0, 13, 40, 24, 0, 0), 0x2044},
      {D(10000, 2, 30, 0, 0, 61), 0x411},
      {D(0, 2, 29), 0x2000},  // year 0 counts as a leap year for the day
      {D(0, 2, 30), 0x2001},
      {D(10000, 0, 0, 65535, 65535, 65535), 0x554},
  };
  return cases;
}

class DateFunctions : public DateConf {};

// ---- QWZDateCheck --------------------------------------------------------

TEST_F(DateFunctions, CheckWritesTheFlagsAndReturnsZero) {
  for (const FlagCase &c : flag_cases()) {
    SCOPED_TRACE(show(c.date));
    leave_a_diagnostic();
    uword valid = 0xDEADBEEF;
    const QWZDate copy = c.date;
    EXPECT_EQ(QWZDateCheck(err_, &c.date, &valid), QWZ_SUCCESS);
    EXPECT_EQ(valid, c.flags);
    EXPECT_EQ(c.date, copy);
    expect_clear();  // no diagnostic even for an invalid date
  }
}

TEST_F(DateFunctions, CheckNullParameters) {
  const QWZDate d = D(2023, 2, 30);
  uword valid = 77;
  EXPECT_EQ(QWZDateCheck(err_, &d, nullptr), QWZ_ERROR);
  expect_null_param(3);
  EXPECT_EQ(QWZDateCheck(err_, nullptr, &valid), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(valid, 77u);
  EXPECT_EQ(QWZDateCheck(err_, nullptr, nullptr), QWZ_ERROR);
  expect_null_param(2);
}

// ---- invalid input dates: every function that checks its input ----------

TEST_F(DateFunctions, EveryInvalidDateIsRefusedAndNothingIsWritten) {
  ZoneGuard z(kUtc);
  const QWZDate good = D(2024, 5, 6, 7, 8, 9);
  for (const FlagCase &c : flag_cases()) {
    if (c.flags == 0) continue;
    SCOPED_TRACE(show(c.date));
    QWZDate out = marker();
    sword cmp = 55;
    sb4 days = 55;

    EXPECT_EQ(QWZDateAddDays(err_, &c.date, 1, &out), QWZ_ERROR);
    expect_date_invalid();
    EXPECT_EQ(QWZDateAddMonths(err_, &c.date, 1, &out), QWZ_ERROR);
    expect_date_invalid();
    EXPECT_EQ(QWZDateAssign(err_, &c.date, &out), QWZ_ERROR);
    expect_date_invalid();
    EXPECT_EQ(QWZDateLastDay(err_, &c.date, &out), QWZ_ERROR);
    expect_date_invalid();
    EXPECT_EQ(QWZDateNextDay(err_, &c.date, W("monday"), 6, &out), QWZ_ERROR);
    expect_date_invalid();
    EXPECT_EQ(out, marker());

    EXPECT_EQ(QWZDateCompare(err_, &c.date, &good, &cmp), QWZ_ERROR);
    expect_date_invalid();
    EXPECT_EQ(QWZDateCompare(err_, &good, &c.date, &cmp), QWZ_ERROR);
    expect_date_invalid();
    EXPECT_EQ(QWZDateDaysBetween(err_, &c.date, &good, &days), QWZ_ERROR);
    expect_date_invalid();
    EXPECT_EQ(QWZDateDaysBetween(err_, &good, &c.date, &days), QWZ_ERROR);
    expect_date_invalid();
    EXPECT_EQ(cmp, 55);
    EXPECT_EQ(days, 55);
  }
}

// ---- QWZDateAddDays --------------------------------------------------------

TEST_F(DateFunctions, AddDaysInUtcIsPlainArithmetic) {
  ZoneGuard z(kUtc);
  struct Case {
    QWZDate date;
    sb4 days;
  };
  const Case cases[] = {
      {D(2024, 12, 31, 23, 59, 59), 1},   {D(2024, 2, 28, 12), 1},
      {D(2023, 2, 28, 12), 1},            {D(2024, 3, 1), -1},
      {D(2000, 1, 1, 1, 2, 3), 366},      {D(1970, 1, 1), -1},
      {D(1900, 3, 1), -1},                {D(1, 1, 1), 0},
      {D(2024, 7, 1, 10), 0},             {D(9999, 12, 31, 23, 59, 59), -20000},
      {D(2024, 1, 1), 24855},             {D(2024, 1, 1), -24855},
      {D(1600, 2, 29, 6, 30), 20000},     {D(2024, 6, 15, 5, 4, 3), -24000},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(show(c.date) + " + " + std::to_string(c.days));
    QWZDate out = marker();
    leave_a_diagnostic();
    ASSERT_EQ(QWZDateAddDays(err_, &c.date, c.days, &out), QWZ_SUCCESS);
    EXPECT_EQ(out, utc_record(utc_seconds(c.date) + static_cast<long long>(c.days) * 86400));
    expect_clear();
  }
  const QWZDate nye = D(2024, 12, 31, 23, 59, 59);
  QWZDate out;
  ASSERT_EQ(QWZDateAddDays(err_, &nye, 1, &out), QWZ_SUCCESS);
  EXPECT_EQ(out, D(2025, 1, 1, 23, 59, 59));
}

// days * 86400 is formed in 32 bits: beyond 24855 days either way it wraps.
TEST_F(DateFunctions, AddDaysWrapsTheDayProductAtThirtyTwoBits) {
  ZoneGuard z(kUtc);
  const QWZDate start = D(2024, 1, 1, 12);
  for (sb4 days : {24856, -24856, 30000, -30000, 100000, 2147483647, -2147483647 - 1}) {
    SCOPED_TRACE(days);
    const std::int32_t wrapped =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(days) * 86400u);
    QWZDate out = marker();
    ASSERT_EQ(QWZDateAddDays(err_, &start, days, &out), QWZ_SUCCESS);
    EXPECT_EQ(out, utc_record(utc_seconds(start) + wrapped));
  }
  QWZDate out;
  ASSERT_EQ(QWZDateAddDays(err_, &start, 24856, &out), QWZ_SUCCESS);
  sword cmp = 0;
  ASSERT_EQ(QWZDateCompare(err_, &out, &start, &cmp), QWZ_SUCCESS);
  EXPECT_EQ(cmp, -1);  // lands in the past
}

// Fields go in as standard time and come out as the zone's clock time: a
// result in summer time shows one hour more, whatever the source's season.
TEST_F(DateFunctions, AddDaysSummerTimeAsymmetry) {
  ZoneGuard z(kCet);
  struct Case {
    QWZDate date;
    sb4 days;
    QWZDate expected;
  };
  const Case cases[] = {
      {D(2024, 7, 1, 10), 0, D(2024, 7, 1, 11)},
      {D(2024, 1, 15, 10), 0, D(2024, 1, 15, 10)},
      {D(2024, 1, 15, 10), 180, D(2024, 7, 13, 11)},
      {D(2024, 7, 1, 10), 180, D(2024, 12, 28, 10)},
      {D(2024, 7, 1, 23, 30), 0, D(2024, 7, 2, 0, 30)},
      {D(2024, 3, 30, 12), 1, D(2024, 3, 31, 13)},
      {D(2024, 10, 26, 12), 1, D(2024, 10, 27, 12)},
      {D(2024, 6, 30, 23, 59, 59), 1, D(2024, 7, 2, 0, 59, 59)},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(show(c.date) + " + " + std::to_string(c.days));
    QWZDate out = marker();
    ASSERT_EQ(QWZDateAddDays(err_, &c.date, c.days, &out), QWZ_SUCCESS);
    EXPECT_EQ(out, c.expected);
  }
}

TEST_F(DateFunctions, AddDaysSameRecordAsSourceAndResult) {
  ZoneGuard z(kUtc);
  QWZDate d = D(2024, 2, 28, 8, 9, 10);
  ASSERT_EQ(QWZDateAddDays(err_, &d, 2, &d), QWZ_SUCCESS);
  EXPECT_EQ(d, D(2024, 3, 1, 8, 9, 10));
}

TEST_F(DateFunctions, AddDaysAndAddMonthsNullParameters) {
  const QWZDate d = D(2024, 1, 1);
  const QWZDate bad = D(2024, 13, 1);
  QWZDate out = marker();
  using Fn = sword (*)(QWZError *, const QWZDate *, sb4, QWZDate *);
  for (Fn fn : {Fn(QWZDateAddDays), Fn(QWZDateAddMonths)}) {
    EXPECT_EQ(fn(err_, nullptr, 1, &out), QWZ_ERROR);
    expect_null_param(2);
    EXPECT_EQ(fn(err_, &d, 1, nullptr), QWZ_ERROR);
    expect_null_param(4);
    EXPECT_EQ(fn(err_, nullptr, 1, nullptr), QWZ_ERROR);
    expect_null_param(2);
    EXPECT_EQ(fn(err_, &bad, 1, nullptr), QWZ_ERROR);  // NULL before validity
    expect_null_param(4);
    EXPECT_EQ(out, marker());
  }
}

// ---- QWZDateAddMonths ------------------------------------------------------

TEST_F(DateFunctions, AddMonthsDayRules) {
  ZoneGuard z(kUtc);
  struct Case {
    QWZDate date;
    sb4 months;
    QWZDate expected;
  };
  const Case cases[] = {
      {D(2024, 2, 29), 12, D(2025, 2, 28)},
      {D(2024, 1, 31), 1, D(2024, 2, 29)},
      {D(2023, 4, 30), 1, D(2023, 5, 31)},
      {D(2023, 1, 30), 1, D(2023, 2, 28)},
      {D(2023, 1, 28), 1, D(2023, 2, 28)},
      {D(2023, 1, 27, 1, 2, 3), 1, D(2023, 2, 27, 1, 2, 3)},
      {D(2023, 2, 28), 1, D(2023, 3, 31)},
      {D(2024, 2, 28), 1, D(2024, 3, 28)},
      {D(2024, 1, 15, 23, 59, 59), 13, D(2025, 2, 15, 23, 59, 59)},
      {D(2024, 3, 31), -1, D(2024, 2, 29)},
      {D(2024, 1, 10), -1, D(2023, 12, 10)},
      {D(2024, 1, 10), -12, D(2023, 1, 10)},
      {D(2024, 1, 10), -13, D(2022, 12, 10)},
      {D(2024, 5, 31), 0, D(2024, 5, 31)},
      {D(2024, 6, 30), 1, D(2024, 7, 31)},
      {D(2024, 7, 30), 1, D(2024, 8, 30)},
      {D(2024, 8, 31), 1, D(2024, 9, 30)},
      {D(2000, 2, 29), 1200, D(2100, 2, 28)},
      {D(2024, 12, 31), 2, D(2025, 2, 28)},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(show(c.date) + " + " + std::to_string(c.months) + " months");
    QWZDate out = marker();
    leave_a_diagnostic();
    ASSERT_EQ(QWZDateAddMonths(err_, &c.date, c.months, &out), QWZ_SUCCESS);
    EXPECT_EQ(out, c.expected);
    expect_clear();
  }
}

// The source is read after the result is written.
TEST_F(DateFunctions, AddMonthsSameRecordGivesDayOne) {
  ZoneGuard z(kUtc);
  struct Case {
    QWZDate date;
    sb4 months;
    QWZDate expected;
  };
  const Case cases[] = {
      {D(2024, 1, 15, 10, 11, 12), 1, D(2024, 2, 1, 10, 11, 12)},
      {D(2024, 1, 31), 1, D(2024, 2, 1)},
      {D(2024, 3, 20), -14, D(2023, 1, 1)},
  };
  for (const Case &c : cases) {
    QWZDate d = c.date;
    ASSERT_EQ(QWZDateAddMonths(err_, &d, c.months, &d), QWZ_SUCCESS);
    EXPECT_EQ(d, c.expected);
  }
}

TEST_F(DateFunctions, AddMonthsSummerTime) {
  ZoneGuard z(kCet);
  struct Case {
    QWZDate date;
    sb4 months;
    QWZDate expected;
  };
  const Case cases[] = {
      {D(2024, 6, 15, 10), 1, D(2024, 7, 15, 11)},
      {D(2024, 7, 15, 10), 0, D(2024, 7, 15, 11)},
      {D(2024, 7, 15, 10), 6, D(2025, 1, 15, 10)},
      {D(2024, 1, 15, 10), 0, D(2024, 1, 15, 10)},
      {D(2024, 6, 15, 23, 30), 1, D(2024, 7, 15, 0, 30)},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(show(c.date) + " + " + std::to_string(c.months) + " months");
    QWZDate out = marker();
    ASSERT_EQ(QWZDateAddMonths(err_, &c.date, c.months, &out), QWZ_SUCCESS);
    EXPECT_EQ(out, c.expected);
  }
}

// ---- QWZDateAssign ---------------------------------------------------------

TEST_F(DateFunctions, AssignCopiesTheWholeRecord) {
  const QWZDate from = D(-4712, 12, 31, 23, 59, 59);
  QWZDate to = marker();
  leave_a_diagnostic();
  ASSERT_EQ(QWZDateAssign(err_, &from, &to), QWZ_SUCCESS);
  EXPECT_EQ(to, from);
  expect_clear();
  QWZDate self = D(2024, 2, 29, 1, 2, 3);
  ASSERT_EQ(QWZDateAssign(err_, &self, &self), QWZ_SUCCESS);
  EXPECT_EQ(self, D(2024, 2, 29, 1, 2, 3));
}

TEST_F(DateFunctions, AssignNullParameters) {
  const QWZDate d = D(2024, 1, 1);
  const QWZDate bad = D(0, 1, 1);
  QWZDate to = marker();
  EXPECT_EQ(QWZDateAssign(err_, nullptr, &to), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(QWZDateAssign(err_, &d, nullptr), QWZ_ERROR);
  expect_null_param(3);
  EXPECT_EQ(QWZDateAssign(err_, nullptr, nullptr), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(QWZDateAssign(err_, &bad, nullptr), QWZ_ERROR);
  expect_null_param(3);
  EXPECT_EQ(to, marker());
}

// ---- QWZDateCompare and QWZDateDaysBetween -------------------------------

TEST_F(DateFunctions, CompareUsesAllSixFields) {
  ZoneGuard z(kUtc);
  struct Case {
    QWZDate a, b;
    sword expected;
  };
  const Case cases[] = {
      {D(2024, 1, 1), D(2024, 1, 1), 0},
      {D(2024, 1, 1, 0, 0, 1), D(2024, 1, 1), 1},
      {D(2024, 1, 1), D(2024, 1, 1, 0, 0, 1), -1},
      {D(2024, 1, 1, 0, 1), D(2024, 1, 1, 0, 0, 59), 1},
      {D(2024, 1, 1, 1), D(2024, 1, 1, 0, 59, 59), 1},
      {D(2024, 1, 2), D(2024, 1, 1, 23, 59, 59), 1},
      {D(2023, 12, 31, 23, 59, 59), D(2024, 1, 1), -1},
      {D(-4712, 1, 1), D(9999, 12, 31), -1},
      {D(9999, 12, 31), D(-4712, 1, 1), 1},
      {D(-1, 12, 31), D(1, 1, 1), -1},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(show(c.a) + " vs " + show(c.b));
    sword r = 99;
    leave_a_diagnostic();
    ASSERT_EQ(QWZDateCompare(err_, &c.a, &c.b, &r), QWZ_SUCCESS);
    EXPECT_EQ(r, c.expected);
    expect_clear();
  }
}

// Both records are read as standard time: in a summer-time zone an hour
// apart is still an hour apart, even across the autumn change.
TEST_F(DateFunctions, CompareInASummerTimeZone) {
  ZoneGuard z(kCet);
  const QWZDate a = D(2024, 10, 27, 2, 30);
  const QWZDate b = D(2024, 10, 27, 2, 15);
  sword r = 99;
  ASSERT_EQ(QWZDateCompare(err_, &a, &b, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, 1);
  const QWZDate c = D(2024, 3, 31, 2, 30);  // a clock time the spring change skips
  const QWZDate d = D(2024, 3, 31, 3, 0);
  ASSERT_EQ(QWZDateCompare(err_, &c, &d, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, -1);
}

TEST_F(DateFunctions, DaysBetweenIgnoresTheTimeOfDay) {
  struct Case {
    const char *zone;
    QWZDate a, b;
    sb4 expected;
  };
  const Case cases[] = {
      {kUtc, D(2024, 3, 1, 10), D(2024, 2, 28, 23, 59), 2},
      {kUtc, D(2024, 2, 28, 23, 59), D(2024, 3, 1, 10), -2},
      {kUtc, D(2024, 3, 1, 23, 59, 59), D(2024, 3, 1), 0},
      {kUtc, D(2024, 3, 1), D(2024, 3, 1, 23, 59, 59), 0},
      {kUtc, D(2025, 1, 1), D(2024, 1, 1), 366},
      {kUtc, D(2024, 1, 1), D(2023, 1, 1), 365},
      {kUtc, D(9999, 12, 31), D(1, 1, 1), 3652058},
      {kCet, D(2024, 4, 1, 1), D(2024, 3, 30, 23), 2},
      {kCet, D(2024, 10, 28), D(2024, 10, 26, 23, 59), 2},
  };
  for (const Case &c : cases) {
    ZoneGuard z(c.zone);
    SCOPED_TRACE(std::string(c.zone) + " " + show(c.a) + " - " + show(c.b));
    sb4 n = 12345;
    leave_a_diagnostic();
    ASSERT_EQ(QWZDateDaysBetween(err_, &c.a, &c.b, &n), QWZ_SUCCESS);
    EXPECT_EQ(n, c.expected);
    expect_clear();
  }
}

TEST_F(DateFunctions, CompareAndDaysBetweenCheckOrder) {
  const QWZDate d = D(2024, 1, 1);
  const QWZDate bad = D(2024, 2, 30);
  sword r = 55;
  sb4 n = 55;
  // NULL checks in argument order, before either date is examined.
  EXPECT_EQ(QWZDateCompare(err_, nullptr, &d, &r), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(QWZDateCompare(err_, &d, nullptr, &r), QWZ_ERROR);
  expect_null_param(3);
  EXPECT_EQ(QWZDateCompare(err_, &d, &d, nullptr), QWZ_ERROR);
  expect_null_param(4);
  EXPECT_EQ(QWZDateCompare(err_, nullptr, nullptr, nullptr), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(QWZDateCompare(err_, &bad, nullptr, &r), QWZ_ERROR);
  expect_null_param(3);
  EXPECT_EQ(QWZDateCompare(err_, &bad, &bad, nullptr), QWZ_ERROR);
  expect_null_param(4);
  EXPECT_EQ(QWZDateDaysBetween(err_, nullptr, &d, &n), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(QWZDateDaysBetween(err_, &d, nullptr, &n), QWZ_ERROR);
  expect_null_param(3);
  EXPECT_EQ(QWZDateDaysBetween(err_, &d, &d, nullptr), QWZ_ERROR);
  expect_null_param(4);
  EXPECT_EQ(QWZDateDaysBetween(err_, &bad, &bad, nullptr), QWZ_ERROR);
  expect_null_param(4);
  // An invalid second date fails even when the first is valid.
  EXPECT_EQ(QWZDateCompare(err_, &d, &bad, &r), QWZ_ERROR);
  expect_date_invalid();
  EXPECT_EQ(QWZDateDaysBetween(err_, &d, &bad, &n), QWZ_ERROR);
  expect_date_invalid();
  EXPECT_EQ(r, 55);
  EXPECT_EQ(n, 55);
}

// ---- QWZDateLastDay --------------------------------------------------------

TEST_F(DateFunctions, LastDayKeepsEverythingButTheDay) {
  struct Case {
    QWZDate date, expected;
  };
  const Case cases[] = {
      {D(2024, 2, 10, 13, 14, 15), D(2024, 2, 29, 13, 14, 15)},
      {D(2023, 2, 1), D(2023, 2, 28)},
      {D(1900, 2, 28), D(1900, 2, 28)},
      {D(2000, 2, 1, 23, 59, 59), D(2000, 2, 29, 23, 59, 59)},
      {D(-100, 2, 1), D(-100, 2, 28)},
      {D(-400, 2, 1), D(-400, 2, 29)},
      {D(2024, 1, 31), D(2024, 1, 31)},
      {D(2024, 3, 1), D(2024, 3, 31)},
      {D(2024, 4, 1), D(2024, 4, 30)},
      {D(2024, 5, 1), D(2024, 5, 31)},
      {D(2024, 6, 1), D(2024, 6, 30)},
      {D(2024, 7, 1), D(2024, 7, 31)},
      {D(2024, 8, 1), D(2024, 8, 31)},
      {D(2024, 9, 1), D(2024, 9, 30)},
      {D(2024, 10, 1), D(2024, 10, 31)},
      {D(2024, 11, 1), D(2024, 11, 30)},
      {D(2024, 12, 1), D(2024, 12, 31)},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(show(c.date));
    QWZDate out = marker();
    leave_a_diagnostic();
    ASSERT_EQ(QWZDateLastDay(err_, &c.date, &out), QWZ_SUCCESS);
    EXPECT_EQ(out, c.expected);
    expect_clear();
  }
  QWZDate self = D(2024, 2, 3, 4, 5, 6);
  ASSERT_EQ(QWZDateLastDay(err_, &self, &self), QWZ_SUCCESS);
  EXPECT_EQ(self, D(2024, 2, 29, 4, 5, 6));
}

TEST_F(DateFunctions, LastDayNullParameters) {
  const QWZDate d = D(2024, 1, 1);
  const QWZDate bad = D(2024, 1, 1, 24);
  QWZDate out = marker();
  EXPECT_EQ(QWZDateLastDay(err_, nullptr, &out), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(QWZDateLastDay(err_, &d, nullptr), QWZ_ERROR);
  expect_null_param(3);
  EXPECT_EQ(QWZDateLastDay(err_, &bad, nullptr), QWZ_ERROR);
  expect_null_param(3);
  EXPECT_EQ(out, marker());
}

// ---- QWZDateNextDay --------------------------------------------------------

TEST_F(DateFunctions, NextDayExamples) {
  ZoneGuard z(kUtc);
  const QWZDate monday = D(2024, 1, 1, 10);
  QWZDate out = marker();
  leave_a_diagnostic();
  ASSERT_EQ(QWZDateNextDay(err_, &monday, W("Monday"), 6, &out), QWZ_SUCCESS);
  EXPECT_EQ(out, D(2024, 1, 8, 10));
  expect_clear();
  const QWZDate sunday = D(2024, 1, 7, 23, 59, 59);
  ASSERT_EQ(QWZDateNextDay(err_, &sunday, W("sunday"), 6, &out), QWZ_SUCCESS);
  EXPECT_EQ(out, D(2024, 1, 14, 23, 59, 59));
  ASSERT_EQ(QWZDateNextDay(err_, &sunday, W("monday"), 6, &out), QWZ_SUCCESS);
  EXPECT_EQ(out, D(2024, 1, 8, 23, 59, 59));
  ASSERT_EQ(QWZDateNextDay(err_, &sunday, W("saturday"), 8, &out), QWZ_SUCCESS);
  EXPECT_EQ(out, D(2024, 1, 13, 23, 59, 59));
  const QWZDate newyear_eve = D(2024, 12, 31, 1, 2, 3);  // a Tuesday
  ASSERT_EQ(QWZDateNextDay(err_, &newyear_eve, W("THURSDAY"), 8, &out), QWZ_SUCCESS);
  EXPECT_EQ(out, D(2025, 1, 2, 1, 2, 3));
}

TEST_F(DateFunctions, NextDayOfEveryWeekdayFromEveryWeekday) {
  ZoneGuard z(kUtc);
  const char *names[7] = {"sunday", "monday", "tuesday", "wednesday",
                          "thursday", "friday", "saturday"};
  // 2024-01-07 is a Sunday.
  for (int from = 0; from < 7; ++from) {
    const QWZDate start = D(2024, 1, 7 + from, 6, 7, 8);
    for (int to = 0; to < 7; ++to) {
      SCOPED_TRACE(std::string(names[from]) + " -> " + names[to]);
      const int step = to > from ? to - from : to - from + 7;
      QWZDate out = marker();
      ASSERT_EQ(QWZDateNextDay(err_, &start, W(names[to]),
                               static_cast<ub4>(std::strlen(names[to])), &out),
                QWZ_SUCCESS);
      EXPECT_EQ(out, D(2024, 1, 7 + from + step, 6, 7, 8));
    }
  }
}

// The weekday is that of the instant the fields denote read as standard
// time; in summer that instant's local clock can be on the next day.
TEST_F(DateFunctions, NextDaySummerTime) {
  ZoneGuard z(kCet);
  struct Case {
    QWZDate date;
    const char *name;
    QWZDate expected;
  };
  const Case cases[] = {
      {D(2024, 7, 7, 23, 30), "monday", D(2024, 7, 15, 0, 30)},
      {D(2024, 7, 7, 10), "monday", D(2024, 7, 8, 11)},
      {D(2024, 1, 7, 23, 30), "monday", D(2024, 1, 8, 23, 30)},
      {D(2024, 3, 30, 12), "sunday", D(2024, 3, 31, 13)},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(show(c.date) + " " + c.name);
    QWZDate out = marker();
    ASSERT_EQ(QWZDateNextDay(err_, &c.date, W(c.name), static_cast<ub4>(std::strlen(c.name)),
                             &out),
              QWZ_SUCCESS);
    EXPECT_EQ(out, c.expected);
  }
}

// Names: case-insensitive, any prefix of at least six letters, the full name
// with or without its NUL, nothing longer, letters only.
TEST_F(DateFunctions, NextDayNames) {
  ZoneGuard z(kUtc);
  const QWZDate monday = D(2024, 1, 1, 10);  // Monday
  struct Case {
    const char *text;
    ub4 length;
    int weekday;  // -1: week format
  };
  const Case cases[] = {
      {"sunday", 6, 0},       {"SUNDAY", 6, 0},        {"Monday", 6, 1},
      {"tuesda", 6, 2},       {"TUESDAY", 7, 2},       {"wednes", 6, 3},
      {"Wednesd", 7, 3},      {"wednesday", 9, 3},     {"THURSD", 6, 4},
      {"thursday", 8, 4},     {"friday", 6, 5},        {"FrIdAy", 6, 5},
      {"Saturd", 6, 6},       {"saturday", 8, 6},      {"monday\0", 7, 1},
      {"saturday\0", 9, 6},   {"mondayXYZ", 6, 1},     {"wednesday!", 9, 3},
      {"mon", 3, -1},         {"monda", 5, -1},        {"", 0, -1},
      {"monday ", 7, -1},     {"mondays", 7, -1},      {"monday1", 7, -1},
      {"mon-day", 7, -1},     {"mon day", 7, -1},      {"sundae", 6, -1},
      {"thursdays", 9, -1},   {"wednesdays", 10, -1},  {"123456", 6, -1},
      {"satur\0day", 9, -1},  {"\xC4monday", 7, -1},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(std::string(c.text) + " / " + std::to_string(c.length));
    char text[64] = {};
    std::memcpy(text, c.text, c.length);
    char copy[64];
    std::memcpy(copy, text, sizeof text);
    QWZDate out = marker();
    leave_a_diagnostic();
    const sword rc = QWZDateNextDay(err_, &monday, W(text), c.length, &out);
    EXPECT_EQ(std::memcmp(text, copy, sizeof text), 0);  // the caller's text is untouched
    if (c.weekday < 0) {
      EXPECT_EQ(rc, QWZ_ERROR);
      expect_week_format();
      EXPECT_EQ(out, marker());
    } else {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      const int step = c.weekday > 1 ? c.weekday - 1 : c.weekday - 1 + 7;
      EXPECT_EQ(out, D(2024, 1, 1 + step, 10));
      expect_clear();
    }
  }
}

TEST_F(DateFunctions, NextDayCheckOrder) {
  const QWZDate d = D(2024, 1, 1);
  const QWZDate bad = D(2024, 1, 1, 0, 60);
  QWZDate out = marker();
  EXPECT_EQ(QWZDateNextDay(err_, nullptr, W("monday"), 6, &out), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(QWZDateNextDay(err_, nullptr, nullptr, 0, nullptr), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(QWZDateNextDay(err_, &d, nullptr, 6, &out), QWZ_ERROR);
  expect_null_param(3);
  EXPECT_EQ(QWZDateNextDay(err_, &bad, nullptr, 0, nullptr), QWZ_ERROR);
  expect_null_param(3);
  // The length check comes before the NULL result and the date's validity.
  EXPECT_EQ(QWZDateNextDay(err_, &d, W("mon"), 3, nullptr), QWZ_ERROR);
  expect_week_format();
  EXPECT_EQ(QWZDateNextDay(err_, &bad, W("monday"), 5, &out), QWZ_ERROR);
  expect_week_format();
  EXPECT_EQ(QWZDateNextDay(err_, &d, W("monday"), 6, nullptr), QWZ_ERROR);
  expect_null_param(5);
  EXPECT_EQ(QWZDateNextDay(err_, &bad, W("monday"), 6, nullptr), QWZ_ERROR);
  expect_null_param(5);
  // The date is checked before the name.
  EXPECT_EQ(QWZDateNextDay(err_, &bad, W("nonsense"), 8, &out), QWZ_ERROR);
  expect_date_invalid();
  EXPECT_EQ(QWZDateNextDay(err_, &bad, W("12345678"), 8, &out), QWZ_ERROR);
  expect_date_invalid();
  EXPECT_EQ(out, marker());
}

TEST_F(DateFunctions, NextDayLengthsOfTheContractsEdge) {
  const QWZDate d = D(2024, 1, 1);
  char text[512];
  std::memset(text, 'a', sizeof text);
  text[sizeof text - 1] = '\0';
  std::memcpy(text, "monday", 6);
  for (ub4 length : {0u, 1u, 5u, 127u, 128u, 129u, 200u, 511u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(length);
    QWZDate out = marker();
    EXPECT_EQ(QWZDateNextDay(err_, &d, W(text), length, &out), QWZ_ERROR);
    expect_week_format();
    EXPECT_EQ(out, marker());
  }
}

// ---- QWZDateSysDate --------------------------------------------------------

TEST_F(DateFunctions, SysDateIsTheLocalClock) {
  for (const char *zone : {kUtc, kCet, qwz_test::kEst}) {
    ZoneGuard z(zone);
    SCOPED_TRACE(zone);
    bool matched = false;
    for (int attempt = 0; attempt < 5 && !matched; ++attempt) {
      const time_t before = time(nullptr);
      QWZDate out = marker();
      leave_a_diagnostic();
      ASSERT_EQ(QWZDateSysDate(err_, &out), QWZ_SUCCESS);
      expect_clear();
      const time_t after = time(nullptr);
      if (before != after) continue;
      struct tm b;
      localtime_r(&before, &b);
      EXPECT_EQ(out, D(b.tm_year + 1900, b.tm_mon + 1, b.tm_mday, b.tm_hour, b.tm_min, b.tm_sec));
      matched = true;
    }
    EXPECT_TRUE(matched);
  }
}

TEST_F(DateFunctions, SysDateNullResult) {
  EXPECT_EQ(QWZDateSysDate(err_, nullptr), QWZ_ERROR);
  expect_null_param(2);
}

// ---- QWZDateZoneToZone -----------------------------------------------------

TEST_F(DateFunctions, ZoneToZoneOnlyValidates) {
  QWZDate d1 = D(2024, 7, 1, 10);
  QWZDate d2 = marker();
  QWZText z1[] = "+02:00", z2[] = "-05:00";
  leave_a_diagnostic();
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, z1, 6, z2, 6, &d2), QWZ_SUCCESS);
  EXPECT_EQ(d2, marker());
  EXPECT_EQ(d1, D(2024, 7, 1, 10));
  expect_clear();
  // Nothing about the values is examined.
  QWZDate bad = D(0, 13, 40, 99, 99, 99);
  EXPECT_EQ(QWZDateZoneToZone(err_, &bad, z1, 0, z2, 0xFFFFFFFFu, &bad), QWZ_SUCCESS);
  expect_clear();
}

TEST_F(DateFunctions, ZoneToZoneFixedParameterNumbers) {
  QWZDate d1 = D(2024, 7, 1, 10), d2 = marker();
  QWZText z[] = "UTC";
  EXPECT_EQ(QWZDateZoneToZone(err_, nullptr, z, 3, z, 3, &d2), QWZ_ERROR);
  expect_null_param(8);
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, z, 3, z, 3, nullptr), QWZ_ERROR);
  expect_null_param(8);
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, nullptr, 3, z, 3, &d2), QWZ_ERROR);
  expect_null_param(2);
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, z, 3, nullptr, 3, &d2), QWZ_ERROR);
  expect_null_param(2);
  // The dates are looked at before the zone texts.
  EXPECT_EQ(QWZDateZoneToZone(err_, nullptr, nullptr, 0, nullptr, 0, nullptr), QWZ_ERROR);
  expect_null_param(8);
  EXPECT_EQ(d2, marker());
}

}  // namespace
