// The public date functions: results, the diagnostics of every check in its
// order with its parameter number, outputs left alone on failure, and the
// weekday names of QWZDateNextDay.
#include "support/calendar_reference.h"
#include "support/test_support.h"

#include <climits>
#include <cstring>
#include <ctime>
#include <string>

using namespace qwz_test;
namespace ref = qwz_ref;

namespace {

QWZDate D(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return QWZDate{static_cast<sb2>(y), static_cast<ub2>(mo), static_cast<ub2>(d),
                 static_cast<ub2>(h), static_cast<ub2>(mi), static_cast<ub2>(s)};
}

// A record no function may write on a failure path.
const QWZDate kSentinel = D(1234, 5, 6, 7, 8, 9);
const QWZDate kInvalid = D(2023, 2, 30);

std::string null_message(int param) {
  return "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(param) + " is NULL\n";
}
const char kDateFormat[] = "ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n";
const char kWeekFormat[] = "ERROR: [QWZ-1846][QWZ Driver].week format is invalid\n";

const QWZtext *T(const char *s) { return reinterpret_cast<const QWZtext *>(s); }

class DateFunctions : public HandleFixture {
 protected:
  void expect_null(int param) { expect_diag(21560, "21560", null_message(param)); }
  void expect_date_format() { expect_diag(11104, "22007", kDateFormat); }
  void expect_week_format() { expect_diag(1846, "1846", kWeekFormat); }
  // Leaves a diagnostic in the handle, so that a later success shows it cleared.
  void dirty() {
    ASSERT_EQ(QWZDateAddDays(err_, nullptr, 1, nullptr), QWZ_ERROR);
    ASSERT_EQ(diag().rc, QWZ_SUCCESS);
  }
  sword next_day(const QWZDate &d, const void *text, ub4 length, QWZDate *out) {
    return QWZDateNextDay(err_, &d, static_cast<const QWZtext *>(text), length, out);
  }
};

}  // namespace

// ---- QWZDateAddDays ----------------------------------------------------------------

TEST_F(DateFunctions, AddDays) {
  ZoneGuard z(kUtc);
  dirty();
  const QWZDate d = D(2024, 12, 31, 23, 59, 59);
  QWZDate r = kSentinel;
  EXPECT_EQ(QWZDateAddDays(err_, &d, 1, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, D(2025, 1, 1, 23, 59, 59));
  expect_clear();
  EXPECT_EQ(QWZDateAddDays(err_, &d, -366, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, D(2023, 12, 31, 23, 59, 59));
  QWZDate same = d;
  EXPECT_EQ(QWZDateAddDays(err_, &same, 1, &same), QWZ_SUCCESS);
  EXPECT_EQ(same, D(2025, 1, 1, 23, 59, 59));
  EXPECT_EQ(QWZDateAddDays(err_, &d, 24856, &r), QWZ_SUCCESS);  // the wrap is kept
  EXPECT_EQ(r, ref::add_days(ref::kUtcZone, d, 24856));
  EXPECT_LT(r.year, 2000);
}

TEST_F(DateFunctions, AddDaysSummerTime) {
  ZoneGuard z(kCet);
  const QWZDate d = D(2024, 7, 1, 10, 0, 0);
  QWZDate r{};
  EXPECT_EQ(QWZDateAddDays(err_, &d, 0, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, D(2024, 7, 1, 11, 0, 0));
  EXPECT_EQ(QWZDateAddDays(err_, &d, 180, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, D(2024, 12, 28, 10, 0, 0));
}

TEST_F(DateFunctions, AddDaysFailures) {
  QWZDate r = kSentinel;
  const QWZDate d = D(2024, 1, 1);
  EXPECT_EQ(QWZDateAddDays(err_, nullptr, 1, &r), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateAddDays(err_, &d, 1, nullptr), QWZ_ERROR);
  expect_null(4);
  EXPECT_EQ(QWZDateAddDays(err_, nullptr, 1, nullptr), QWZ_ERROR);  // the date is checked first
  expect_null(2);
  EXPECT_EQ(QWZDateAddDays(err_, &kInvalid, 1, nullptr), QWZ_ERROR);  // NULL before the value
  expect_null(4);
  EXPECT_EQ(QWZDateAddDays(err_, &kInvalid, 1, &r), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(r, kSentinel);
}

// ---- QWZDateAddMonths ----------------------------------------------------------

TEST_F(DateFunctions, AddMonths) {
  ZoneGuard z(kUtc);
  dirty();
  struct Case {
    QWZDate from;
    sb4 months;
    QWZDate to;
  } cases[] = {
      {D(2024, 2, 29, 1, 2, 3), 12, D(2025, 2, 28, 1, 2, 3)},
      {D(2024, 1, 31), 1, D(2024, 2, 29)},
      {D(2023, 4, 30), 1, D(2023, 5, 31)},
      {D(2023, 1, 30), 1, D(2023, 2, 28)},
      {D(2023, 1, 15), 13, D(2024, 2, 15)},
      {D(2023, 1, 15), -13, D(2021, 12, 15)},
  };
  for (const Case &c : cases) {
    QWZDate r = kSentinel;
    EXPECT_EQ(QWZDateAddMonths(err_, &c.from, c.months, &r), QWZ_SUCCESS);
    EXPECT_EQ(r, c.to) << ref::to_string(c.from) << " + " << c.months;
    expect_clear();
  }
  QWZDate same = D(2024, 1, 31, 10, 30, 0);
  EXPECT_EQ(QWZDateAddMonths(err_, &same, 1, &same), QWZ_SUCCESS);
  EXPECT_EQ(same, D(2024, 2, 1, 10, 30, 0));  // same record: day 1
}

TEST_F(DateFunctions, AddMonthsFailures) {
  QWZDate r = kSentinel;
  const QWZDate d = D(2024, 1, 1);
  EXPECT_EQ(QWZDateAddMonths(err_, nullptr, 1, &r), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateAddMonths(err_, &d, 1, nullptr), QWZ_ERROR);
  expect_null(4);
  EXPECT_EQ(QWZDateAddMonths(err_, &kInvalid, 1, nullptr), QWZ_ERROR);
  expect_null(4);
  const QWZDate bad_year = D(0, 1, 1);
  EXPECT_EQ(QWZDateAddMonths(err_, &bad_year, 1, &r), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(r, kSentinel);
}

// ---- QWZDateAssign -------------------------------------------------------------

TEST_F(DateFunctions, Assign) {
  dirty();
  const QWZDate from = D(-4712, 1, 1, 23, 59, 59);
  QWZDate to = kSentinel;
  EXPECT_EQ(QWZDateAssign(err_, &from, &to), QWZ_SUCCESS);
  EXPECT_EQ(to, from);
  expect_clear();
  QWZDate same = D(2024, 5, 17, 1, 2, 3);
  EXPECT_EQ(QWZDateAssign(err_, &same, &same), QWZ_SUCCESS);
  EXPECT_EQ(same, D(2024, 5, 17, 1, 2, 3));
}

TEST_F(DateFunctions, AssignFailures) {
  QWZDate to = kSentinel;
  const QWZDate d = D(2024, 1, 1);
  EXPECT_EQ(QWZDateAssign(err_, nullptr, &to), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateAssign(err_, &d, nullptr), QWZ_ERROR);
  expect_null(3);
  EXPECT_EQ(QWZDateAssign(err_, &kInvalid, nullptr), QWZ_ERROR);
  expect_null(3);
  const QWZDate bad = D(2024, 1, 1, 24, 0, 0);
  EXPECT_EQ(QWZDateAssign(err_, &bad, &to), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(to, kSentinel);
}

// ---- QWZDateCheck --------------------------------------------------------------

TEST_F(DateFunctions, CheckReportsOnlyThroughTheFlags) {
  dirty();
  struct Case {
    QWZDate d;
    uword flags;
  } cases[] = {{D(2023, 2, 30), 0x1},       {D(2024, 2, 29), 0},      {D(0, 1, 1), 0x2000},
               {D(10000, 1, 1), 0x10},      {D(2024, 13, 40), 0x4},   {D(1900, 2, 29), 0x1},
               {D(2000, 2, 29), 0},         {D(2024, 1, 1, 24, 60, 60), 0x540}};
  for (const Case &c : cases) {
    uword valid = 0xFFFFu;
    EXPECT_EQ(QWZDateCheck(err_, &c.d, &valid), QWZ_SUCCESS);
    EXPECT_EQ(valid, c.flags) << ref::to_string(c.d);
    expect_clear();  // no diagnostic for an invalid date
  }
}

TEST_F(DateFunctions, CheckFailures) {
  uword valid = 0xABCDu;
  const QWZDate d = D(2023, 2, 30);
  EXPECT_EQ(QWZDateCheck(err_, &d, nullptr), QWZ_ERROR);
  expect_null(3);
  EXPECT_EQ(QWZDateCheck(err_, nullptr, &valid), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateCheck(err_, nullptr, nullptr), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(valid, 0xABCDu);
}

// ---- QWZDateCompare ------------------------------------------------------------

TEST_F(DateFunctions, Compare) {
  ZoneGuard z(kUtc);
  dirty();
  const QWZDate a = D(2024, 5, 17, 12, 0, 0), b = D(2024, 5, 17, 12, 0, 1);
  sword r = 99;
  EXPECT_EQ(QWZDateCompare(err_, &a, &b, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, -1);
  expect_clear();
  EXPECT_EQ(QWZDateCompare(err_, &b, &a, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, 1);
  EXPECT_EQ(QWZDateCompare(err_, &a, &a, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, 0);
}

TEST_F(DateFunctions, CompareFailures) {
  const QWZDate good = D(2024, 1, 1);
  sword r = 42;
  EXPECT_EQ(QWZDateCompare(err_, nullptr, &good, &r), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateCompare(err_, &good, nullptr, &r), QWZ_ERROR);
  expect_null(3);
  EXPECT_EQ(QWZDateCompare(err_, &good, &good, nullptr), QWZ_ERROR);
  expect_null(4);
  EXPECT_EQ(QWZDateCompare(err_, nullptr, nullptr, nullptr), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateCompare(err_, &kInvalid, &kInvalid, nullptr), QWZ_ERROR);
  expect_null(4);
  EXPECT_EQ(QWZDateCompare(err_, &good, &kInvalid, &r), QWZ_ERROR);  // second date invalid
  expect_date_format();
  EXPECT_EQ(QWZDateCompare(err_, &kInvalid, &good, &r), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(QWZDateCompare(err_, &kInvalid, &kInvalid, &r), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(r, 42);
}

// ---- QWZDateDaysBetween --------------------------------------------------------

TEST_F(DateFunctions, DaysBetween) {
  ZoneGuard z(kUtc);
  dirty();
  const QWZDate a = D(2024, 3, 1, 10, 0, 0), b = D(2024, 2, 28, 23, 59, 0);
  sb4 n = 99;
  EXPECT_EQ(QWZDateDaysBetween(err_, &a, &b, &n), QWZ_SUCCESS);
  EXPECT_EQ(n, 2);
  expect_clear();
  EXPECT_EQ(QWZDateDaysBetween(err_, &b, &a, &n), QWZ_SUCCESS);
  EXPECT_EQ(n, -2);
  ZoneGuard c(kCet);
  const QWZDate summer = D(2024, 7, 1, 12, 0, 0), winter = D(2024, 1, 1, 0, 0, 0);
  EXPECT_EQ(QWZDateDaysBetween(err_, &summer, &winter, &n), QWZ_SUCCESS);
  EXPECT_EQ(n, 182);
}

TEST_F(DateFunctions, DaysBetweenFailures) {
  const QWZDate good = D(2024, 1, 1);
  sb4 n = 42;
  EXPECT_EQ(QWZDateDaysBetween(err_, nullptr, &good, &n), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateDaysBetween(err_, &good, nullptr, &n), QWZ_ERROR);
  expect_null(3);
  EXPECT_EQ(QWZDateDaysBetween(err_, &good, &good, nullptr), QWZ_ERROR);
  expect_null(4);
  EXPECT_EQ(QWZDateDaysBetween(err_, &good, &kInvalid, &n), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(QWZDateDaysBetween(err_, &kInvalid, &good, &n), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(n, 42);
}

// ---- QWZDateLastDay ------------------------------------------------------------

TEST_F(DateFunctions, LastDay) {
  dirty();
  const QWZDate d = D(2024, 2, 10, 13, 14, 15);
  QWZDate r = kSentinel;
  EXPECT_EQ(QWZDateLastDay(err_, &d, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, D(2024, 2, 29, 13, 14, 15));
  expect_clear();
  const QWZDate april = D(2023, 4, 1);
  EXPECT_EQ(QWZDateLastDay(err_, &april, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, D(2023, 4, 30));
}

TEST_F(DateFunctions, LastDayFailures) {
  QWZDate r = kSentinel;
  const QWZDate d = D(2024, 1, 1);
  EXPECT_EQ(QWZDateLastDay(err_, nullptr, &r), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateLastDay(err_, &d, nullptr), QWZ_ERROR);
  expect_null(3);
  EXPECT_EQ(QWZDateLastDay(err_, &kInvalid, &r), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(r, kSentinel);
}

// ---- QWZDateNextDay ------------------------------------------------------------

TEST_F(DateFunctions, NextDayExamples) {
  ZoneGuard z(kUtc);
  dirty();
  const QWZDate monday = D(2024, 1, 1, 10, 0, 0);
  QWZDate r = kSentinel;
  EXPECT_EQ(next_day(monday, "Monday", 6, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, D(2024, 1, 8, 10, 0, 0));
  expect_clear();
  r = kSentinel;
  EXPECT_EQ(next_day(monday, "mon", 3, &r), QWZ_ERROR);
  expect_week_format();
  EXPECT_EQ(next_day(monday, "monday ", 7, &r), QWZ_ERROR);  // the blank is not a letter
  expect_week_format();
  EXPECT_EQ(r, kSentinel);
}

TEST_F(DateFunctions, NextDayOfEveryWeekdayFromEveryWeekday) {
  ZoneGuard z(kUtc);
  const char *names[7] = {"sunday", "monday", "tuesday", "wednesday",
                          "thursday", "friday", "saturday"};
  for (int from = 0; from < 7; ++from) {
    const QWZDate start = D(2024, 1, 7 + from, 18, 5, 0);  // 2024-01-07 is a Sunday
    for (int to = 0; to < 7; ++to) {
      QWZDate r{};
      ASSERT_EQ(next_day(start, names[to], static_cast<ub4>(std::strlen(names[to])), &r),
                QWZ_SUCCESS);
      const int step = to > from ? to - from : to - from + 7;
      const ref::Civil c = ref::civil_from_days(ref::days_from_civil(2024, 1, 7 + from) + step);
      EXPECT_EQ(r, D(static_cast<int>(c.y), c.m, c.d, 18, 5, 0)) << from << " -> " << names[to];
    }
  }
}

TEST_F(DateFunctions, NextDaySummerTime) {
  ZoneGuard z(kCet);
  QWZDate r{};
  // Saturday 23:30 read as standard time is already Sunday 00:30 in summer.
  EXPECT_EQ(next_day(D(2024, 7, 6, 23, 30, 0), "MONDAY", 6, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, D(2024, 7, 8, 0, 30, 0));
}

// Case-insensitive; any prefix of at least six letters; the full name, with
// its NUL when the length reaches it; never a text longer than the name.
TEST_F(DateFunctions, NextDayNames) {
  ZoneGuard z(kUtc);
  const QWZDate wednesday = D(2024, 1, 3, 12, 0, 0);
  struct Case {
    const char *text;
    ub4 length;
    int weekday;  // -1: the week-format diagnostic
  } cases[] = {
      {"sunday", 6, 0},       {"SUNDAY", 6, 0},       {"SuNdAy", 6, 0},
      {"monday", 6, 1},       {"tuesda", 6, 2},       {"TUESDAY", 7, 2},
      {"wednes", 6, 3},       {"WEDNESD", 7, 3},      {"Wednesda", 8, 3},
      {"wednesday", 9, 3},    {"thursd", 6, 4},       {"THURSD", 6, 4},
      {"Thursday", 8, 4},     {"friday", 6, 5},       {"FRIDAY", 6, 5},
      {"saturd", 6, 6},       {"Saturd", 6, 6},       {"SATURDAY", 8, 6},
      {"monday", 7, 1},       // the literal's NUL is compared and matches
      {"saturday", 9, 6},
      {"mondayx", 6, 1},      // only day_length bytes take part
      {"Saturdays", 8, 6},
      {"wednesdayX", 9, 3},
      {"mondays", 7, -1},     // longer than the name
      {"saturdays", 9, -1},
      {"wednesdays", 10, -1},
      {"sundae", 6, -1},
      {"munday", 6, -1},
      {"", 6, -1},
      {"mo nday", 7, -1},     // a non-letter, wherever it stands
      {"monday1", 7, -1},
      {"1monday", 7, -1},
      {"mond@y", 6, -1},
      {"m\xF6nday", 6, -1},
      {"mon-da", 6, -1},
      {"satur\xC4", 6, -1},
  };
  for (const Case &c : cases) {
    ub1 text[32] = {};
    std::memcpy(text, c.text, std::strlen(c.text));
    ub1 copy[32];
    std::memcpy(copy, text, sizeof text);
    QWZDate r = kSentinel;
    const sword rc = next_day(wednesday, text, c.length, &r);
    SCOPED_TRACE(std::string(c.text) + " / " + std::to_string(c.length));
    EXPECT_EQ(0, std::memcmp(text, copy, sizeof text));  // the caller's text is not touched
    if (c.weekday < 0) {
      EXPECT_EQ(rc, QWZ_ERROR);
      expect_week_format();
      EXPECT_EQ(r, kSentinel);
    } else {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_EQ(r, ref::next_day(ref::kUtcZone, wednesday, c.weekday));
      expect_clear();
    }
  }
}

// Bytes from the first NUL on: the letters check stops there, and the
// comparison takes exactly day_length bytes of the name.
TEST_F(DateFunctions, NextDayEmbeddedNul) {
  ZoneGuard z(kUtc);
  const QWZDate d = D(2024, 1, 3);
  QWZDate r{};
  struct Case {
    const char *bytes;
    ub4 length;
    int weekday;
  } cases[] = {
      {"monday\0", 7, 1},        // the name and its NUL
      {"FRIDAY\0", 7, 5},
      {"monday\0\0", 8, -1},     // one byte past the name's end
      {"monday\0" "1", 8, -1},   // a non-letter after the NUL is not scanned
      {"mon\0day", 7, -1},
      {"\0monday", 7, -1},
      {"wednes\0", 7, -1},       // the name continues where the text stops
      {"wednesday\0", 10, 3},
      {"wednesday\0zz", 12, -1},
  };
  for (const Case &c : cases) {
    ub1 text[16] = {};
    std::memcpy(text, c.bytes, c.length);
    const sword rc = next_day(d, text, c.length, &r);
    SCOPED_TRACE(std::to_string(c.length));
    if (c.weekday < 0) {
      EXPECT_EQ(rc, QWZ_ERROR);
      expect_week_format();
    } else {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_EQ(r, ref::next_day(ref::kUtcZone, d, c.weekday));
    }
  }
}

TEST_F(DateFunctions, NextDayLengths) {
  ZoneGuard z(kUtc);
  const QWZDate d = D(2024, 1, 3);
  // A text long enough for every length read.
  static ub1 text[256];
  std::memset(text, 0, sizeof text);
  std::memcpy(text, "Friday", 6);
  QWZDate r = kSentinel;
  for (ub4 len : {0u, 1u, 5u}) {
    EXPECT_EQ(next_day(d, text, len, &r), QWZ_ERROR) << len;
    expect_week_format();
  }
  EXPECT_EQ(next_day(d, text, 6, &r), QWZ_SUCCESS);
  EXPECT_EQ(r, D(2024, 1, 5));
  EXPECT_EQ(next_day(d, text, 7, &r), QWZ_SUCCESS);  // "friday" and its NUL
  r = kSentinel;
  for (ub4 len : {8u, 127u, 128u, 200u, UINT32_MAX}) {
    EXPECT_EQ(next_day(d, text, len, &r), QWZ_ERROR) << len;
    expect_week_format();
  }
  // 127 letters: all letters, no name matches.
  std::memset(text, 'A', 127);
  EXPECT_EQ(next_day(d, text, 127, &r), QWZ_ERROR);
  expect_week_format();
  std::memset(text, 'a', 200);
  EXPECT_EQ(next_day(d, text, 200, &r), QWZ_ERROR);
  expect_week_format();
  EXPECT_EQ(r, kSentinel);
}

TEST_F(DateFunctions, NextDayCheckOrder) {
  const QWZDate d = D(2024, 1, 3);
  QWZDate r = kSentinel;
  EXPECT_EQ(QWZDateNextDay(err_, nullptr, T("monday"), 6, &r), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateNextDay(err_, nullptr, nullptr, 0, nullptr), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateNextDay(err_, &d, nullptr, 6, &r), QWZ_ERROR);
  expect_null(3);
  EXPECT_EQ(QWZDateNextDay(err_, &d, nullptr, 3, nullptr), QWZ_ERROR);
  expect_null(3);
  // The length is checked before the result pointer.
  EXPECT_EQ(QWZDateNextDay(err_, &d, T("mon"), 3, nullptr), QWZ_ERROR);
  expect_week_format();
  EXPECT_EQ(QWZDateNextDay(err_, &d, T("monday"), 6, nullptr), QWZ_ERROR);
  expect_null(5);
  EXPECT_EQ(QWZDateNextDay(err_, &d, T("xxxxxx"), 6, nullptr), QWZ_ERROR);
  expect_null(5);
  // The date before the name.
  EXPECT_EQ(QWZDateNextDay(err_, &kInvalid, T("xxxxxx"), 6, &r), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(QWZDateNextDay(err_, &kInvalid, T("a b"), 3, &r), QWZ_ERROR);
  expect_week_format();
  EXPECT_EQ(QWZDateNextDay(err_, &kInvalid, T("monday"), 200, &r), QWZ_ERROR);
  expect_date_format();
  EXPECT_EQ(r, kSentinel);
}

// ---- QWZDateSysDate ------------------------------------------------------------

TEST_F(DateFunctions, SysDateFollowsTheClock) {
  for (const char *tz : {kUtc, kCet, kEst}) {
    ZoneGuard z(tz);
    const ref::Zone &zone =
        tz == kUtc ? ref::kUtcZone : (tz == kCet ? ref::kCetZone : ref::kEstZone);
    dirty();
    const time_t before = time(nullptr);
    QWZDate now = kSentinel;
    ASSERT_EQ(QWZDateSysDate(err_, &now), QWZ_SUCCESS);
    const time_t after = time(nullptr);
    expect_clear();
    uword flags = 0xFFu;
    EXPECT_EQ(date_check(nullptr, &now, &flags), 0);
    EXPECT_EQ(flags, 0u);
    // The record is the zone's clock at some second between the two readings.
    bool seen = false;
    for (time_t t = before; t <= after; ++t) seen = seen || now == ref::local_date(zone, t);
    EXPECT_TRUE(seen) << tz << ' ' << ref::to_string(now);
    // And it agrees with the C library's own view of the same clock.
    struct tm lt;
    localtime_r(&after, &lt);
    const std::int64_t mine =
        ref::days_from_civil(lt.tm_year + 1900, lt.tm_mon + 1, lt.tm_mday) * 86400 +
        lt.tm_hour * 3600 + lt.tm_min * 60 + lt.tm_sec;
    const std::int64_t theirs =
        ref::days_from_civil(now.year, now.month, now.day) * 86400 + now.hour * 3600 +
        now.minute * 60 + now.second;
    EXPECT_LE(mine - theirs, 2);
    EXPECT_GE(mine - theirs, 0);
  }
}

TEST_F(DateFunctions, SysDateNullResult) {
  EXPECT_EQ(QWZDateSysDate(err_, nullptr), QWZ_ERROR);
  expect_null(2);
}

// ---- QWZDateZoneToZone ---------------------------------------------------------

TEST_F(DateFunctions, ZoneToZoneOnlyValidates) {
  dirty();
  QWZDate d1 = D(2024, 5, 17, 1, 2, 3), d2 = kSentinel;
  QWZText z1[] = "UTC", z2[] = "CET";
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, z1, 3, z2, 3, &d2), QWZ_SUCCESS);
  EXPECT_EQ(d2, kSentinel);
  EXPECT_EQ(d1, D(2024, 5, 17, 1, 2, 3));
  expect_clear();
  // Not even the input date is examined.
  QWZDate bad = kInvalid;
  EXPECT_EQ(QWZDateZoneToZone(err_, &bad, z1, 0, z2, 9999, &d2), QWZ_SUCCESS);
  EXPECT_EQ(d2, kSentinel);
}

TEST_F(DateFunctions, ZoneToZoneParameterNumbers) {
  QWZDate d1 = D(2024, 5, 17), d2 = kSentinel;
  QWZText z1[] = "UTC", z2[] = "CET";
  EXPECT_EQ(QWZDateZoneToZone(err_, nullptr, z1, 3, z2, 3, &d2), QWZ_ERROR);
  expect_null(8);
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, z1, 3, z2, 3, nullptr), QWZ_ERROR);
  expect_null(8);
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, nullptr, 3, z2, 3, &d2), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, z1, 3, nullptr, 3, &d2), QWZ_ERROR);
  expect_null(2);
  EXPECT_EQ(QWZDateZoneToZone(err_, nullptr, nullptr, 3, nullptr, 3, nullptr), QWZ_ERROR);
  expect_null(8);  // the dates are checked before the zones
  EXPECT_EQ(d2, kSentinel);
}
