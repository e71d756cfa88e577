// The calendar routines behind the date functions, called directly: month
// lengths, the validity flags, and the arithmetic through local time in UTC,
// Central Europe and US Eastern. Expected values are either worked out by hand
// from the zones' rules or computed by the independent model in
// support/calendar_reference.h.
#include "support/calendar_reference.h"
#include "support/test_support.h"

#include <climits>
#include <cstring>
#include <random>

using namespace qwz_test;
namespace ref = qwz_ref;

namespace {

QWZDate D(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return QWZDate{static_cast<sb2>(y), static_cast<ub2>(mo), static_cast<ub2>(d),
                 static_cast<ub2>(h), static_cast<ub2>(mi), static_cast<ub2>(s)};
}

uword flags_of(const QWZDate &d) {
  uword f = 0xDEADBEEFu;  // overwritten whatever it held
  EXPECT_EQ(date_check(nullptr, &d, &f), 0);
  return f;
}

QWZDate add_days(const QWZDate &d, sb4 days) {
  QWZDate r{};
  EXPECT_EQ(date_add_days(nullptr, &d, days, &r), 0);
  return r;
}

QWZDate add_months(const QWZDate &d, sb4 months) {
  QWZDate r{};
  EXPECT_EQ(date_add_months(nullptr, &d, months, &r), 0);
  return r;
}

sword compare(const QWZDate &a, const QWZDate &b) {
  sword r = 99;
  EXPECT_EQ(date_compare(nullptr, &a, &b, &r), 0);
  return r;
}

sb4 days_between(const QWZDate &a, const QWZDate &b) {
  sb4 r = 99;
  EXPECT_EQ(date_days_between(nullptr, &a, &b, &r), 0);
  return r;
}

QWZDate next_day(const QWZDate &d, ub4 weekday) {
  QWZDate r{};
  EXPECT_EQ(date_next_day(nullptr, &d, weekday, &r), 0);
  return r;
}

// Random valid dates with a fixed seed, years in [y0, y1].
struct DateGen {
  std::mt19937 rng;
  int y0, y1;
  DateGen(unsigned seed, int from, int to) : rng(seed), y0(from), y1(to) {}
  int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }
  QWZDate next() {
    int y;
    do y = pick(y0, y1);
    while (y == 0);
    const int m = pick(1, 12);
    return D(y, m, pick(1, ref::month_length(y, m)), pick(0, 23), pick(0, 59), pick(0, 59));
  }
};

}  // namespace

// ---- month lengths -----------------------------------------------------------

TEST(Month2OfDay, GregorianRuleOnTheSignedYear) {
  struct Case {
    int year;
    ub2 days;
  } cases[] = {{2024, 29}, {2023, 28}, {1900, 28}, {2000, 29}, {1600, 29}, {1700, 28},
               {4, 29},    {1, 28},    {0, 29},    {-1, 28},   {-4, 29},   {-100, 28},
               {-400, 29}, {-4712, 29}, {-4713, 28}, {9996, 29}, {9999, 28}, {-32768, 29},
               {32767, 28}};
  for (const Case &c : cases)
    EXPECT_EQ(month2_of_day(static_cast<sb2>(c.year)), c.days) << "year " << c.year;
}

TEST(Month2OfDay, AgreesWithTheRuleForEveryValidYear) {
  for (int y = -4712; y <= 9999; ++y) {
    const bool leap = y % 4 == 0 && (y % 100 != 0 || y % 400 == 0);
    ASSERT_EQ(month2_of_day(static_cast<sb2>(y)), leap ? 29 : 28) << y;
  }
}

TEST(MonthOfDay, LengthsOfEveryMonth) {
  const ub2 common[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int m = 1; m <= 12; ++m) {
    const QWZDate a = D(2023, m, 1), b = D(2024, m, 1), c = D(-100, m, 1);
    EXPECT_EQ(month_of_day(&a), common[m]) << m;
    EXPECT_EQ(month_of_day(&b), m == 2 ? 29 : common[m]) << m;
    EXPECT_EQ(month_of_day(&c), common[m]) << m;
  }
  // Not a month: nothing is read past the table.
  for (int m : {0, 13, 65535}) {
    const QWZDate d = D(2024, m, 1);
    EXPECT_EQ(month_of_day(&d), 0) << m;
  }
}

// ---- date_check ----------------------------------------------------------------

TEST(DateCheck, Flags) {
  struct Case {
    QWZDate d;
    uword flags;
  } cases[] = {
      {D(2024, 5, 17, 12, 30, 45), 0},
      {D(1, 1, 1, 0, 0, 0), 0},
      {D(-4712, 1, 1), 0},
      {D(9999, 12, 31, 23, 59, 59), 0},
      {D(0, 1, 1), 0x2000},
      {D(10000, 1, 1), 0x10},
      {D(-4713, 12, 31), 0x10},
      {D(-32768, 1, 1), 0x10},
      {D(32767, 1, 1), 0x10},
      {D(2024, 13, 1), 0x4},
      {D(2024, 13, 0), 0x4},    // the day is not examined with a bad month
      {D(2024, 13, 99), 0x4},
      {D(2024, 0, 15), 0x4},
      {D(2024, 65535, 65535), 0x4},
      {D(2023, 2, 29), 0x1},
      {D(2024, 2, 29), 0},
      {D(2024, 2, 30), 0x1},
      {D(1900, 2, 29), 0x1},
      {D(2000, 2, 29), 0},
      {D(-4, 2, 29), 0},
      {D(-100, 2, 29), 0x1},
      {D(2024, 1, 0), 0x1},
      {D(2024, 1, 32), 0x1},
      {D(2024, 4, 31), 0x1},
      {D(2024, 12, 31), 0},
      {D(2024, 6, 65535), 0x1},
      {D(2024, 1, 1, 24, 60, 60), 0x540},
      {D(2024, 1, 1, 24, 0, 0), 0x40},
      {D(2024, 1, 1, 0, 60, 0), 0x100},
      {D(2024, 1, 1, 0, 0, 60), 0x400},
      {D(2024, 1, 1, 65535, 65535, 65535), 0x540},
      {D(0, 13, 1, 24, 60, 60), 0x2000 + 0x4 + 0x540},
      {D(0, 2, 30), 0x2000 + 0x1},  // year 0 is a leap year for February
      {D(0, 2, 29), 0x2000},
      {D(10000, 0, 0, 99, 0, 0), 0x10 + 0x4 + 0x40},
      {D(-5000, 4, 31, 0, 0, 61), 0x10 + 0x1 + 0x400},
  };
  for (const Case &c : cases)
    EXPECT_EQ(flags_of(c.d), c.flags) << ref::to_string(c.d);
}

TEST(DateCheck, EveryDayOfFourHundredYears) {
  for (int y = 1600; y < 2000; ++y)
    for (int m = 1; m <= 12; ++m)
      for (int d = 0; d <= 32; ++d) {
        const bool ok = d >= 1 && d <= ref::month_length(y, m);
        ASSERT_EQ(flags_of(D(y, m, d)), ok ? 0u : 0x1u) << y << '-' << m << '-' << d;
      }
}

TEST(DateCheck, ReturnsZeroAndReadsNoHandle) {
  const QWZDate d = D(2023, 2, 30);
  uword f = 0;
  EXPECT_EQ(date_check(reinterpret_cast<QWZError *>(0x10), &d, &f), 0);
  EXPECT_EQ(f, 0x1u);
}

// ---- date_add_days -------------------------------------------------------------

TEST(DateAddDays, Utc) {
  ZoneGuard z(kUtc);
  struct Case {
    QWZDate from;
    sb4 days;
    QWZDate to;
  } cases[] = {
      {D(2024, 12, 31, 23, 59, 59), 1, D(2025, 1, 1, 23, 59, 59)},
      {D(2024, 2, 28, 10, 0, 0), 1, D(2024, 2, 29, 10, 0, 0)},
      {D(2023, 2, 28, 10, 0, 0), 1, D(2023, 3, 1, 10, 0, 0)},
      {D(2024, 3, 1, 0, 0, 0), -1, D(2024, 2, 29, 0, 0, 0)},
      {D(2024, 5, 17, 8, 9, 10), 0, D(2024, 5, 17, 8, 9, 10)},
      {D(2024, 1, 1), 366, D(2025, 1, 1)},
      {D(1970, 1, 1), -1, D(1969, 12, 31)},
      {D(2000, 1, 1), 24855, D(2068, 1, 19)},     // the largest count that does not wrap
      {D(2000, 1, 1), -24855, D(1931, 12, 14)},
      {D(1, 1, 1), -1, D(0, 12, 31)},             // the library's year 0
      {D(-4712, 1, 1), 1, D(-4712, 1, 2)},
      {D(9999, 12, 31, 12, 0, 0), 1, D(10000, 1, 1, 12, 0, 0)},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(add_days(c.from, c.days), c.to) << ref::to_string(c.from) << " + " << c.days;
    EXPECT_EQ(add_days(c.from, c.days), ref::add_days(ref::kUtcZone, c.from, c.days));
  }
}

TEST(DateAddDays, TheDayProductWrapsAtThirtyTwoBits) {
  ZoneGuard z(kUtc);
  const QWZDate start = D(2000, 1, 1, 0, 0, 0);
  // 24856 * 86400 = 2147558400 wraps to -2147408896 seconds: 24854 days and
  // 6:28:16 back, i.e. 17:31:44 on 14 December 1931.
  const QWZDate wrapped = add_days(start, 24856);
  EXPECT_EQ(wrapped, D(1931, 12, 14, 17, 31, 44));
  EXPECT_EQ(compare(wrapped, start), -1);  // lands in the past
  const std::int64_t base = ref::days_from_civil(2000, 1, 1) * 86400;
  EXPECT_EQ(wrapped, ref::local_date(ref::kUtcZone, base - 2147408896LL));
  // And the other way: -24856 days lands in the future.
  const QWZDate forward = add_days(start, -24856);
  EXPECT_EQ(forward, D(2068, 1, 18, 6, 28, 16));
  EXPECT_EQ(compare(forward, start), 1);
  // The extremes of the count.
  for (sb4 days : {INT_MAX, INT_MIN, INT_MAX - 1, INT_MIN + 1, 49711, 49710, -49711, 100000})
    EXPECT_EQ(add_days(start, days), ref::add_days(ref::kUtcZone, start, days)) << days;
  // 49711 days is 4295030400 seconds, which wraps to 63104 seconds after
  // the start.
  EXPECT_EQ(add_days(start, 49711), D(2000, 1, 1, 17, 31, 44));
}

TEST(DateAddDays, SameRecordAsSourceAndResult) {
  ZoneGuard z(kUtc);
  QWZDate d = D(2024, 2, 28, 22, 0, 0);
  EXPECT_EQ(date_add_days(nullptr, &d, 2, &d), 0);
  EXPECT_EQ(d, D(2024, 3, 1, 22, 0, 0));
}

// Central Europe, 2024: summer time from 31 March 01:00 UTC to 27 October
// 01:00 UTC. Fields are always read as standard time (+1); a result whose
// instant falls in summer time shows the summer clock (+2).
TEST(DateAddDays, SummerTimeAsymmetryCentralEurope) {
  ZoneGuard z(kCet);
  struct Case {
    QWZDate from;
    sb4 days;
    QWZDate to;
  } cases[] = {
      {D(2024, 1, 15, 10, 0, 0), 0, D(2024, 1, 15, 10, 0, 0)},      // winter stays exact
      {D(2024, 1, 15, 10, 0, 0), 1, D(2024, 1, 16, 10, 0, 0)},
      {D(2024, 1, 15, 10, 0, 0), 170, D(2024, 7, 3, 11, 0, 0)},     // winter to summer: +1h
      {D(2024, 7, 1, 10, 0, 0), 0, D(2024, 7, 1, 11, 0, 0)},        // summer source, +0 days
      {D(2024, 7, 1, 10, 0, 0), 1, D(2024, 7, 2, 11, 0, 0)},
      {D(2024, 7, 1, 10, 0, 0), 180, D(2024, 12, 28, 10, 0, 0)},    // summer to winter: exact
      {D(2024, 7, 1, 23, 30, 0), 0, D(2024, 7, 2, 0, 30, 0)},       // after 23:00: next day
      {D(2024, 12, 31, 23, 30, 0), 182, D(2025, 7, 2, 0, 30, 0)},
      {D(2024, 3, 30, 12, 0, 0), 1, D(2024, 3, 31, 13, 0, 0)},
      {D(2024, 3, 31, 1, 59, 59), 0, D(2024, 3, 31, 1, 59, 59)},    // 00:59:59 UTC: winter
      {D(2024, 3, 31, 2, 0, 0), 0, D(2024, 3, 31, 3, 0, 0)},        // 01:00 UTC: summer
      {D(2024, 10, 27, 1, 59, 59), 0, D(2024, 10, 27, 2, 59, 59)},  // 00:59:59 UTC: summer
      {D(2024, 10, 27, 2, 0, 0), 0, D(2024, 10, 27, 2, 0, 0)},      // 01:00 UTC: winter
      {D(2024, 10, 26, 12, 0, 0), 1, D(2024, 10, 27, 12, 0, 0)},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(add_days(c.from, c.days), c.to) << ref::to_string(c.from) << " + " << c.days;
    EXPECT_EQ(add_days(c.from, c.days), ref::add_days(ref::kCetZone, c.from, c.days));
  }
}

// US Eastern, 2024: summer time from 10 March 07:00 UTC to 3 November
// 06:00 UTC; standard -5, summer -4.
TEST(DateAddDays, SummerTimeAsymmetryUsEastern) {
  ZoneGuard z(kEst);
  struct Case {
    QWZDate from;
    sb4 days;
    QWZDate to;
  } cases[] = {
      {D(2024, 7, 4, 12, 0, 0), 0, D(2024, 7, 4, 13, 0, 0)},
      {D(2024, 7, 4, 23, 15, 0), 0, D(2024, 7, 5, 0, 15, 0)},
      {D(2024, 2, 1, 9, 0, 0), 60, D(2024, 4, 1, 10, 0, 0)},
      {D(2024, 7, 4, 9, 0, 0), 150, D(2024, 12, 1, 9, 0, 0)},
      {D(2024, 3, 10, 1, 59, 59), 0, D(2024, 3, 10, 1, 59, 59)},
      {D(2024, 3, 10, 2, 0, 0), 0, D(2024, 3, 10, 3, 0, 0)},
      {D(2024, 11, 3, 0, 59, 59), 0, D(2024, 11, 3, 1, 59, 59)},   // 05:59:59 UTC: summer
      {D(2024, 11, 3, 1, 0, 0), 0, D(2024, 11, 3, 1, 0, 0)},       // 06:00 UTC: winter
  };
  for (const Case &c : cases) {
    EXPECT_EQ(add_days(c.from, c.days), c.to) << ref::to_string(c.from) << " + " << c.days;
    EXPECT_EQ(add_days(c.from, c.days), ref::add_days(ref::kEstZone, c.from, c.days));
  }
}

TEST(DateAddDays, AgreesWithTheModelOnGeneratedDates) {
  struct Setup {
    const char *tz;
    const ref::Zone *zone;
    int y0, y1;
  } setups[] = {{kUtc, &ref::kUtcZone, -4712, 9999},
                {kCet, &ref::kCetZone, 1971, 2199},
                {kEst, &ref::kEstZone, 1971, 2199}};
  for (const Setup &s : setups) {
    ZoneGuard z(s.tz);
    DateGen gen(20240517u, s.y0, s.y1);
    for (int i = 0; i < 3000; ++i) {
      const QWZDate d = gen.next();
      const sb4 days = gen.pick(-20000, 20000);
      ASSERT_EQ(add_days(d, days), ref::add_days(*s.zone, d, days))
          << s.tz << ' ' << ref::to_string(d) << " + " << days;
    }
  }
}

// ---- date_add_months -----------------------------------------------------------

TEST(DateAddMonths, DayRules) {
  ZoneGuard z(kUtc);
  struct Case {
    QWZDate from;
    sb4 months;
    QWZDate to;
  } cases[] = {
      {D(2024, 2, 29), 12, D(2025, 2, 28)},
      {D(2024, 1, 31), 1, D(2024, 2, 29)},
      {D(2023, 4, 30), 1, D(2023, 5, 31)},    // last day maps to last day
      {D(2023, 1, 30), 1, D(2023, 2, 28)},    // day missing in the target: clamped
      {D(2023, 1, 29), 1, D(2023, 2, 28)},
      {D(2023, 1, 28), 1, D(2023, 2, 28)},
      {D(2023, 1, 27), 1, D(2023, 2, 27)},
      {D(2023, 1, 30), 2, D(2023, 3, 30)},
      {D(2023, 2, 28), 1, D(2023, 3, 31)},    // Feb 28 of a common year is its last day
      {D(2024, 2, 28), 1, D(2024, 3, 28)},    // ... of a leap year it is not
      {D(2023, 6, 15, 13, 14, 15), 0, D(2023, 6, 15, 13, 14, 15)},
      {D(2023, 1, 15), 13, D(2024, 2, 15)},   // 13 months on from January
      {D(2023, 12, 5), 1, D(2024, 1, 5)},
      {D(2024, 3, 31), -1, D(2024, 2, 29)},
      {D(2024, 3, 15), -13, D(2023, 2, 15)},
      {D(2024, 1, 10), -1, D(2023, 12, 10)},
      {D(2024, 1, 10), -12, D(2023, 1, 10)},
      {D(2024, 1, 10), -25, D(2021, 12, 10)},
      {D(2000, 2, 29), 1200, D(2100, 2, 28)},
      {D(1, 1, 1), -1, D(0, 12, 1)},
      {D(9999, 12, 31, 23, 59, 59), 1, D(10000, 1, 31, 23, 59, 59)},
      // Records date_check would reject are not guarded: a day above 31 is kept,
      {D(2023, 1, 40), 1, D(2023, 2, 40)},
      // one that does not exist in its own month is clamped when it must be.
      {D(2023, 4, 31), 1, D(2023, 5, 31)},
      {D(2023, 4, 31), 2, D(2023, 6, 30)},
      // Months outside 1..12 are carried into the year like any other count.
      {D(2023, 13, 15), 1, D(2024, 2, 15)},
      {D(2023, 0, 15), 1, D(2023, 1, 15)},
      {D(2023, 65535, 31), 0, ref::add_months(ref::kUtcZone, D(2023, 65535, 31), 0)},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(add_months(c.from, c.months), c.to) << ref::to_string(c.from) << " + " << c.months;
    EXPECT_EQ(add_months(c.from, c.months), ref::add_months(ref::kUtcZone, c.from, c.months));
  }
}

TEST(DateAddMonths, SameRecordGivesDayOne) {
  ZoneGuard z(kUtc);
  struct Case {
    QWZDate d;
    sb4 months;
    QWZDate to;
  } cases[] = {
      {D(2024, 1, 31, 10, 30, 0), 1, D(2024, 2, 1, 10, 30, 0)},
      {D(2024, 5, 17), 0, D(2024, 5, 1)},
      {D(2023, 4, 30), 1, D(2023, 5, 1)},
      {D(2024, 2, 29), 12, D(2025, 2, 1)},
      {D(2024, 3, 15), -14, D(2023, 1, 1)},
  };
  for (Case c : cases) {
    QWZDate d = c.d;
    ASSERT_EQ(date_add_months(nullptr, &d, c.months, &d), 0);
    EXPECT_EQ(d, c.to) << ref::to_string(c.d);
    EXPECT_EQ(d, ref::add_months(ref::kUtcZone, c.d, c.months, true));
  }
}

TEST(DateAddMonths, SummerTime) {
  ZoneGuard z(kCet);
  // 1 July 23:30 read as standard time is 00:30 on the 2nd in summer; the day
  // rule then sets the day from the source's 15.
  EXPECT_EQ(add_months(D(2024, 1, 15, 23, 30, 0), 6), D(2024, 7, 15, 0, 30, 0));
  EXPECT_EQ(add_months(D(2024, 1, 15, 10, 0, 0), 6), D(2024, 7, 15, 11, 0, 0));
  EXPECT_EQ(add_months(D(2024, 7, 15, 10, 0, 0), 6), D(2025, 1, 15, 10, 0, 0));
  EXPECT_EQ(add_months(D(2024, 7, 31, 10, 0, 0), 2), D(2024, 9, 30, 11, 0, 0));
  // The last day maps to the last day, at the summer clock's time.
  EXPECT_EQ(add_months(D(2024, 3, 31, 23, 30, 0), 3), D(2024, 6, 30, 0, 30, 0));
  ZoneGuard e(kEst);
  EXPECT_EQ(add_months(D(2024, 1, 31, 23, 0, 0), 5), D(2024, 6, 30, 0, 0, 0));
  // 1 November is still in summer time; the day rule then picks the 30th.
  EXPECT_EQ(add_months(D(2024, 6, 30, 8, 0, 0), 5), D(2024, 11, 30, 9, 0, 0));
  EXPECT_EQ(add_months(D(2024, 6, 30, 8, 0, 0), 6), D(2024, 12, 31, 8, 0, 0));
}

TEST(DateAddMonths, AgreesWithTheModelOnGeneratedDates) {
  struct Setup {
    const char *tz;
    const ref::Zone *zone;
    int y0, y1;
  } setups[] = {{kUtc, &ref::kUtcZone, -4700, 9990},
                {kCet, &ref::kCetZone, 1971, 2190},
                {kEst, &ref::kEstZone, 1971, 2190}};
  for (const Setup &s : setups) {
    ZoneGuard z(s.tz);
    DateGen gen(7u, s.y0, s.y1);
    for (int i = 0; i < 3000; ++i) {
      const QWZDate d = gen.next();
      const sb4 months = gen.pick(-100, 100);
      ASSERT_EQ(add_months(d, months), ref::add_months(*s.zone, d, months))
          << s.tz << ' ' << ref::to_string(d) << " + " << months;
    }
  }
}

TEST(DateAddMonths, ExtremeCountsDoNotOverflow) {
  ZoneGuard z(kUtc);
  const QWZDate d = D(2024, 5, 17, 1, 2, 3);
  for (sb4 months : {INT_MAX, INT_MIN, INT_MAX - 11, INT_MIN + 11}) {
    QWZDate r = add_months(d, months);
    EXPECT_EQ(r, ref::add_months(ref::kUtcZone, d, months)) << months;
  }
}

// ---- date_compare ----------------------------------------------------------------

TEST(DateCompare, AllSixFieldsTakePart) {
  ZoneGuard z(kUtc);
  const QWZDate base = D(2024, 5, 17, 12, 30, 30);
  EXPECT_EQ(compare(base, base), 0);
  const QWZDate later[] = {D(2025, 5, 17, 12, 30, 30), D(2024, 6, 17, 12, 30, 30),
                           D(2024, 5, 18, 12, 30, 30), D(2024, 5, 17, 13, 30, 30),
                           D(2024, 5, 17, 12, 31, 30), D(2024, 5, 17, 12, 30, 31)};
  for (const QWZDate &l : later) {
    EXPECT_EQ(compare(l, base), 1) << ref::to_string(l);
    EXPECT_EQ(compare(base, l), -1) << ref::to_string(l);
  }
  EXPECT_EQ(compare(D(-4712, 1, 1), D(9999, 12, 31)), -1);
  EXPECT_EQ(compare(D(9999, 12, 31), D(-4712, 1, 1)), 1);
  EXPECT_EQ(compare(D(1969, 12, 31, 23, 59, 59), D(1970, 1, 1)), -1);
}

TEST(DateCompare, FieldsAreReadAsStandardTime) {
  ZoneGuard z(kCet);
  // Both read with the same offset: summer and winter order plainly.
  EXPECT_EQ(compare(D(2024, 7, 1, 0, 0, 0), D(2024, 1, 1, 0, 0, 0)), 1);
  EXPECT_EQ(compare(D(2024, 3, 31, 2, 30, 0), D(2024, 3, 31, 3, 15, 0)), -1);
  EXPECT_EQ(compare(D(2024, 10, 27, 2, 30, 0), D(2024, 10, 27, 2, 30, 0)), 0);
  DateGen gen(99u, 1971, 2199);
  for (int i = 0; i < 2000; ++i) {
    const QWZDate a = gen.next();
    QWZDate b = gen.pick(0, 1) ? a : gen.next();
    if (gen.pick(0, 2) == 0) b.second = static_cast<ub2>((b.second + 1) % 60);
    ASSERT_EQ(compare(a, b), ref::compare(ref::kCetZone, a, b));
  }
}

// ---- date_days_between -----------------------------------------------------------

TEST(DateDaysBetween, TimeFieldsAreIgnored) {
  ZoneGuard z(kUtc);
  EXPECT_EQ(days_between(D(2024, 3, 1, 10, 0, 0), D(2024, 2, 28, 23, 59, 0)), 2);
  EXPECT_EQ(days_between(D(2024, 2, 28, 23, 59, 0), D(2024, 3, 1, 10, 0, 0)), -2);
  EXPECT_EQ(days_between(D(2024, 3, 1, 0, 0, 0), D(2024, 3, 1, 23, 59, 59)), 0);
  EXPECT_EQ(days_between(D(2024, 3, 1, 23, 59, 59), D(2024, 3, 1, 0, 0, 0)), 0);
  EXPECT_EQ(days_between(D(2025, 1, 1), D(2024, 1, 1)), 366);
  EXPECT_EQ(days_between(D(2024, 1, 1), D(2023, 1, 1)), 365);
  const std::int64_t span = ref::days_from_civil(9999, 12, 31) - ref::days_from_civil(-4712, 1, 1);
  EXPECT_EQ(days_between(D(9999, 12, 31), D(-4712, 1, 1)), span);
  EXPECT_EQ(days_between(D(-4712, 1, 1), D(9999, 12, 31)), -span);
}

TEST(DateDaysBetween, WholeDaysAcrossSummerTime) {
  // Both dates are read as standard time, so the seconds between them are a
  // whole number of days: a summer date against a winter one is 182 days,
  // not the 181.96 that reading the summer date as summer time would give
  // (which truncation would turn into 181).
  ZoneGuard z(kCet);
  EXPECT_EQ(days_between(D(2024, 7, 1, 12, 0, 0), D(2024, 1, 1, 0, 0, 0)), 182);
  EXPECT_EQ(days_between(D(2024, 1, 1, 0, 0, 0), D(2024, 7, 1, 12, 0, 0)), -182);
  EXPECT_EQ(days_between(D(2024, 4, 1), D(2024, 3, 31)), 1);
  EXPECT_EQ(days_between(D(2024, 10, 28), D(2024, 10, 27)), 1);
  ZoneGuard e(kEst);
  EXPECT_EQ(days_between(D(2024, 3, 11), D(2024, 3, 10)), 1);
  EXPECT_EQ(days_between(D(2024, 3, 10), D(2024, 3, 11)), -1);
  DateGen gen(5u, 1971, 2199);
  for (int i = 0; i < 2000; ++i) {
    const QWZDate a = gen.next(), b = gen.next();
    ASSERT_EQ(days_between(a, b), ref::days_between(ref::kEstZone, a, b));
  }
}

// ---- date_last_day ---------------------------------------------------------------

TEST(DateLastDay, KeepsEverythingButTheDay) {
  const ub2 common[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int y : {2023, 2024, 1900, 2000, -4712, 9999}) {
    for (int m = 1; m <= 12; ++m) {
      const QWZDate d = D(y, m, 10, 13, 14, 15);
      QWZDate r{};
      ASSERT_EQ(date_last_day(nullptr, &d, &r), 0);
      const ub2 expected = (m == 2 && ref::is_leap(y)) ? 29 : common[m];
      EXPECT_EQ(r, D(y, m, expected, 13, 14, 15)) << y << '-' << m;
    }
  }
  QWZDate same = D(2024, 2, 10, 13, 14, 15);
  ASSERT_EQ(date_last_day(nullptr, &same, &same), 0);
  EXPECT_EQ(same, D(2024, 2, 29, 13, 14, 15));
}

// ---- date_next_day ---------------------------------------------------------------

TEST(DateNextDay, EveryWeekdayFromEveryWeekday) {
  ZoneGuard z(kUtc);
  // 2024-01-07 is a Sunday; 7..13 January cover the week.
  for (int from = 0; from < 7; ++from) {
    const QWZDate start = D(2024, 1, 7 + from, 9, 45, 30);
    for (ub4 to = 0; to < 7; ++to) {
      int step = (static_cast<int>(to) - from + 7) % 7;
      if (step == 0) step = 7;  // the same weekday moves a full week on
      const ref::Civil c = ref::civil_from_days(ref::days_from_civil(2024, 1, 7 + from) + step);
      EXPECT_EQ(next_day(start, to), D(static_cast<int>(c.y), c.m, c.d, 9, 45, 30))
          << "from " << from << " to " << to;
    }
  }
}

TEST(DateNextDay, Examples) {
  ZoneGuard z(kUtc);
  EXPECT_EQ(next_day(D(2024, 1, 1, 10, 0, 0), 1), D(2024, 1, 8, 10, 0, 0));  // Monday -> Monday
  EXPECT_EQ(next_day(D(2024, 1, 7), 0), D(2024, 1, 14));                      // Sunday -> Sunday
  EXPECT_EQ(next_day(D(2024, 2, 27), 4), D(2024, 2, 29));                     // Tue -> Thu (leap)
  EXPECT_EQ(next_day(D(2024, 12, 31, 23, 59, 59), 3), D(2025, 1, 1, 23, 59, 59));
  EXPECT_EQ(next_day(D(-4712, 1, 1), 0), ref::next_day(ref::kUtcZone, D(-4712, 1, 1), 0));
}

TEST(DateNextDay, SummerTime) {
  ZoneGuard z(kCet);
  // Saturday 6 July 2024 23:30 read as standard time is Sunday 00:30 on the
  // summer clock: the weekday is Sunday, so the next Monday is one day on,
  // at the summer clock's 00:30.
  EXPECT_EQ(next_day(D(2024, 7, 6, 23, 30, 0), 1), D(2024, 7, 8, 0, 30, 0));
  EXPECT_EQ(next_day(D(2024, 7, 6, 23, 30, 0), 0), D(2024, 7, 14, 0, 30, 0));
  EXPECT_EQ(next_day(D(2024, 7, 6, 10, 0, 0), 1), D(2024, 7, 8, 11, 0, 0));
  EXPECT_EQ(next_day(D(2024, 1, 6, 23, 30, 0), 1), D(2024, 1, 8, 23, 30, 0));
  // Saturday 30 March, winter, to the Monday after the change: summer clock.
  EXPECT_EQ(next_day(D(2024, 3, 30, 10, 0, 0), 1), D(2024, 4, 1, 11, 0, 0));
  EXPECT_EQ(next_day(D(2024, 10, 26, 10, 0, 0), 1), D(2024, 10, 28, 10, 0, 0));
  ZoneGuard e(kEst);
  DateGen gen(11u, 1971, 2199);
  for (int i = 0; i < 2000; ++i) {
    const QWZDate d = gen.next();
    const ub4 w = static_cast<ub4>(gen.pick(0, 6));
    ASSERT_EQ(next_day(d, w), ref::next_day(ref::kEstZone, d, static_cast<int>(w)))
        << ref::to_string(d) << " -> " << w;
  }
}

// ---- lower_string ----------------------------------------------------------------

TEST(LowerString, FoldsLettersAndReportsOthers) {
  struct Case {
    const char *in;
    ub4 in_len;   // bytes of `in` given (may include an embedded NUL)
    ub4 length;   // the length argument
    sword result;
    ub4 out_length;
    const char *out;  // the whole buffer after the call
  } cases[] = {
      {"MonDay", 6, 6, 0, 6, "monday"},
      {"monday", 6, 6, 0, 6, "monday"},
      {"ABCDEF", 6, 3, 0, 3, "abcDEF"},        // only *length bytes
      {"ABC", 3, 10, 0, 3, "abc"},             // cut at the string's end
      {"Mon day", 7, 7, -1, 7, "mon day"},     // folded even when not all letters
      {"1ABC", 4, 4, -1, 4, "1abc"},           // the scan goes on past a failure
      {"AB\0CD", 5, 5, 0, 2, "ab\0CD"},        // stops at the first NUL
      {"A@Z[a`z{", 8, 8, -1, 8, "a@z[a`z{"},   // the neighbours of the letter ranges
      {"", 0, 5, 0, 0, ""},
      {"XYZ", 3, 0, 0, 0, "XYZ"},
      {"ZZ\xC4Z", 4, 4, -1, 4, "zz\xC4z"},     // a byte above 127 is not a letter
  };
  for (const Case &c : cases) {
    ub1 buf[32] = {};
    std::memcpy(buf, c.in, c.in_len);
    ub4 len = c.length;
    EXPECT_EQ(lower_string(buf, &len), c.result) << c.in;
    EXPECT_EQ(len, c.out_length) << c.in;
    EXPECT_EQ(0, std::memcmp(buf, c.out, c.in_len)) << c.in;
  }
}

TEST(LowerString, AllAsciiBytes) {
  for (int b = 1; b < 256; ++b) {
    ub1 buf[2] = {static_cast<ub1>(b), 0};
    ub4 len = 1;
    const bool upper = b >= 'A' && b <= 'Z', lower = b >= 'a' && b <= 'z';
    EXPECT_EQ(lower_string(buf, &len), (upper || lower) ? 0 : -1) << b;
    EXPECT_EQ(buf[0], upper ? b + 32 : b) << b;
  }
}

TEST(LowerString, FullWorkBuffer) {
  ub1 buf[129];
  std::memset(buf, 'Q', 128);
  buf[128] = 0;
  ub4 len = 128;
  EXPECT_EQ(lower_string(buf, &len), 0);
  EXPECT_EQ(len, 128u);
  for (int i = 0; i < 128; ++i) ASSERT_EQ(buf[i], 'q');
}
