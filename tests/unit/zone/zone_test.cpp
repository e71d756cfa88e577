// The zone unit on its own: which settings the engine serves and which go to
// the C library, a change of TZ taking effect at the next call, standard
// offsets, a few worked conversions, and lock-free use from two threads.
#include "zone/zone.h"
#include "zone/zone_model.h"

#include "support/calendar_reference.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

void set_tz(const char *tz) {
  if (tz) setenv("TZ", tz, 1);
  else unsetenv("TZ");
  tzset();
}

struct tm fields(int y, int mo, int d, int h, int mi, int s) {
  struct tm t;
  std::memset(&t, 0, sizeof t);
  t.tm_year = y - 1900;
  t.tm_mon = mo - 1;
  t.tm_mday = d;
  t.tm_hour = h;
  t.tm_min = mi;
  t.tm_sec = s;
  return t;
}

TEST(Zone, SettingsServedOrHandedOver) {
  struct Row {
    const char *tz;
    bool engine;
  } rows[] = {
      {"UTC0", true},
      {"", true},
      {":", true},
      {"Europe/Berlin", true},
      {":Europe/Berlin", true},
      {"/usr/share/zoneinfo/America/New_York", true},
      {"CET-1CEST,M3.5.0,M10.5.0/3", true},
      {"<+0545>-5:45", true},
      {"EST5EDT,J60/2,J300/2", true},
      {"right/Europe/Berlin", false},  // leap seconds
      {"Foo", false},                  // unparsable
      {"EST5EDT,", false},             // no rule: the default rule file decides
      {"EST+-5", false},
      {"Europe", false},               // a directory
      {nullptr, true},
  };
  for (const Row &r : rows) {
    set_tz(r.tz);
    EXPECT_EQ(qwz::zone::engine_active(), r.engine) << (r.tz ? r.tz : "(unset)");
  }
  set_tz("UTC0");
}

TEST(Zone, ChangeOfSettingTakesEffectAtOnce) {
  struct tm t = fields(2024, 7, 1, 12, 0, 0);
  set_tz("UTC0");
  struct tm a = t;
  EXPECT_EQ(qwz::zone::to_seconds(&a), 1719835200);
  setenv("TZ", "Europe/Berlin", 1);  // no tzset: the next call reads TZ itself
  a = t;
  EXPECT_EQ(qwz::zone::to_seconds(&a), 1719835200 - 3600);  // read as standard time
  EXPECT_EQ(a.tm_hour, 13);                                 // shown in summer time
  EXPECT_EQ(a.tm_isdst, 1);
  EXPECT_EQ(a.tm_gmtoff, 7200);
  unsetenv("TZ");
  a = t;
  struct tm b = t;
  EXPECT_EQ(qwz::zone::to_seconds(&a), mktime(&b));
  set_tz("UTC0");
}

// Every way the environment can change between two calls is seen at the
// next call: setenv and putenv replacing the variable, a putenv buffer
// rewritten in place, other variables added or removed before it, TZ
// removed and added again at the end, and the whole environment replaced.
TEST(Zone, EveryChangeOfTheEnvironmentIsSeen) {
  struct tm t = fields(2024, 7, 1, 12, 0, 0);
  auto seconds = [&] {
    struct tm a = t;
    return static_cast<std::int64_t>(qwz::zone::to_seconds(&a));
  };
  constexpr std::int64_t kUtc = 1719835200;
  set_tz("UTC0");
  EXPECT_EQ(seconds(), kUtc);
  setenv("TZ", "<+03>-3", 1);
  EXPECT_EQ(seconds(), kUtc - 3 * 3600);
  // A putenv buffer is the environment's own entry: rewriting it in place
  // changes the setting.
  static char buffer[] = "TZ=<+04>-4";
  putenv(buffer);
  EXPECT_EQ(seconds(), kUtc - 4 * 3600);
  buffer[5] = '5';
  buffer[9] = '5';  // "TZ=<+05>-5"
  EXPECT_EQ(seconds(), kUtc - 5 * 3600);
  buffer[0] = 'X';  // no longer TZ at all: unset
  {
    struct tm a = t, b = t;
    EXPECT_EQ(qwz::zone::to_seconds(&a), mktime(&b));
  }
  buffer[0] = 'T';
  EXPECT_EQ(seconds(), kUtc - 5 * 3600);
  // Variables added after it and removed before it.
  setenv("QWZ_ZONE_TEST_A", "1", 1);
  setenv("QWZ_ZONE_TEST_B", "2", 1);
  EXPECT_EQ(seconds(), kUtc - 5 * 3600);
  setenv("TZ", "<+06>-6", 1);
  setenv("QWZ_ZONE_TEST_C", "3", 1);
  EXPECT_EQ(seconds(), kUtc - 6 * 3600);
  unsetenv("QWZ_ZONE_TEST_A");
  EXPECT_EQ(seconds(), kUtc - 6 * 3600);
  unsetenv("TZ");
  {
    struct tm a = t, b = t;
    EXPECT_EQ(qwz::zone::to_seconds(&a), mktime(&b));
  }
  setenv("TZ", "<+07>-7", 1);  // back, now at the end
  EXPECT_EQ(seconds(), kUtc - 7 * 3600);
  unsetenv("QWZ_ZONE_TEST_B");
  unsetenv("QWZ_ZONE_TEST_C");
  EXPECT_EQ(seconds(), kUtc - 7 * 3600);
  // A whole new environment, with TZ at another place.
  char **saved = environ;
  char entry_a[] = "QWZ_ZONE_TEST_D=4";
  char entry_tz[] = "TZ=<+08>-8";
  char *fresh[] = {entry_a, entry_tz, nullptr};
  environ = fresh;
  EXPECT_EQ(seconds(), kUtc - 8 * 3600);
  char *empty[] = {nullptr};
  environ = empty;
  {
    struct tm a = t, b = t;
    EXPECT_EQ(qwz::zone::to_seconds(&a), mktime(&b));
  }
  environ = saved;
  set_tz("UTC0");
  EXPECT_EQ(seconds(), kUtc);
}

// The broken-down fields of every day from before year -10000 to after
// year 20000, at a few offsets and times of day, against the textbook
// conversion; days outside the accepted years are refused.
TEST(Zone, FieldsOfEveryDayAgreeWithTheTextbookConversion) {
  const std::int64_t first = qwz_ref::days_from_civil(-10001, 12, 25);
  const std::int64_t last = qwz_ref::days_from_civil(20001, 1, 5);
  const std::int64_t offsets[] = {0, 3600, -18000, 50400};
  // Under valgrind (tools/run-tests.sh sets QWZ_ZONE_SAMPLES) every 97th day.
  const std::int64_t stride = std::getenv("QWZ_ZONE_SAMPLES") ? 97 : 1;
  std::int64_t checked = 0;
  for (std::int64_t day = first; day <= last; day += stride) {
    const std::int64_t off = offsets[day & 3];
    const std::int64_t second_of_day = ((day * 7919) % 86400 + 86400) % 86400;
    const std::int64_t t = day * 86400 + second_of_day - off;
    struct tm got;
    std::memset(&got, 0, sizeof got);
    const bool ok = qwz::zone::fill_tm(t, off, (day & 1) != 0, &got);
    const qwz_ref::Civil c = qwz_ref::civil_from_days(day);
    const bool in_range = c.y >= -10000 && c.y <= 20000;
    ASSERT_EQ(ok, in_range) << day;
    if (!ok) continue;
    ++checked;
    ASSERT_EQ(got.tm_year, c.y - 1900) << day;
    ASSERT_EQ(got.tm_mon, c.m - 1) << day;
    ASSERT_EQ(got.tm_mday, c.d) << day;
    ASSERT_EQ(got.tm_yday, day - qwz_ref::days_from_civil(c.y, 1, 1)) << day;
    ASSERT_EQ(got.tm_wday, qwz_ref::weekday_of_days(day)) << day;
    ASSERT_EQ(got.tm_hour * 3600 + got.tm_min * 60 + got.tm_sec, second_of_day) << day;
    ASSERT_EQ(got.tm_gmtoff, off) << day;
    ASSERT_EQ(got.tm_isdst, (day & 1) != 0 ? 1 : 0) << day;
  }
  EXPECT_GT(checked, 10000000 / stride);
}

TEST(Zone, StandardOffsets) {
  struct Row {
    const char *tz;
    long off;
  } rows[] = {
      {"UTC0", 0},         {"Europe/Berlin", 3600},     {"America/New_York", -18000},
      {"Asia/Kolkata", 19800}, {"Asia/Kathmandu", 20700}, {"IST-1GMT0,M10.5.0,M3.5.0/1", 3600},
      {"<-0330>3:30", -12600}, {"Australia/Adelaide", 34200},
  };
  for (const Row &r : rows) {
    set_tz(r.tz);
    EXPECT_EQ(qwz::zone::standard_offset(), r.off) << r.tz;
    EXPECT_EQ(qwz::zone::standard_offset(), -timezone) << r.tz;
  }
  set_tz("UTC0");
}

TEST(Zone, WorkedConversions) {
  struct Row {
    const char *tz;
    struct tm in;
    time_t seconds;
    int hour, isdst;
  } rows[] = {
      // Spring gap in Berlin: 02:30 does not exist; read as standard time.
      {"Europe/Berlin", fields(2024, 3, 31, 2, 30, 0), 1711848600, 3, 1},
      // Autumn overlap: standard time is the second 02:30.
      {"Europe/Berlin", fields(2024, 10, 27, 2, 30, 0), 1729992600, 2, 0},
      // Past the last transition of the file: the footer rule.
      {"Europe/Berlin", fields(2061, 7, 15, 10, 30, 0), 2888645400, 11, 1},
      // Out-of-range seconds and minutes are carried.
      {"UTC0", fields(2024, 12, 31, 23, 59, 61), 1735689601, 0, 0},
      {"UTC0", fields(2024, 1, 1, 0, -1, 0), 1704067140, 23, 0},
      // A day of 0 is the last day of the month before.
      {"UTC0", fields(2024, 3, 0, 0, 0, 0), 1709164800, 0, 0},
  };
  for (const Row &r : rows) {
    set_tz(r.tz);
    struct tm a = r.in;
    EXPECT_EQ(qwz::zone::to_seconds(&a), r.seconds) << r.tz;
    EXPECT_EQ(a.tm_hour, r.hour) << r.tz;
    EXPECT_EQ(a.tm_isdst, r.isdst) << r.tz;
    struct tm b = r.in;
    EXPECT_EQ(mktime(&b), r.seconds) << r.tz;
  }
  set_tz("UTC0");
}

TEST(Zone, TwoThreadsAgreeWithoutHandOver) {
  set_tz("Europe/Berlin");
  (void)qwz::zone::engine_active();  // publish the setting first
  const std::uint64_t before = qwz::zone::handovers();
  std::vector<time_t> results[2];
  auto work = [&](int k) {
    for (int i = 0; i < 20000; ++i) {
      struct tm t = fields(1990 + i % 60, 1 + i % 12, 1 + i % 28, i % 24, 0, 0);
      const time_t s = qwz::zone::to_seconds(&t);
      struct tm back;
      ASSERT_TRUE(qwz::zone::to_local(s + 86400 * 40, &back));
      results[k].push_back(s + back.tm_hour);
    }
  };
  std::thread a(work, 0), b(work, 1);
  a.join();
  b.join();
  EXPECT_EQ(results[0], results[1]);
  EXPECT_EQ(qwz::zone::handovers() - before, 0u);
  set_tz("UTC0");
}

// Instants in years the footer rule (or a rule string) decides, through many
// years on both hemispheres and across the edges of the years whose change
// instants the engine keeps with the zone: every change instant and its
// neighbours, both sides of each new year, and local fields read as
// standard time around them, against mktime and localtime_r in this
// process.
struct RuleYearsCase {
  const char *name;
  const char *tz;
  int first_year, last_year;
};

class RuleYearsAgree : public ::testing::TestWithParam<RuleYearsCase> {};

std::int64_t utc_year_start(int year) {
  return qwz_ref::days_from_civil(year, 1, 1) * 86400;
}

TEST_P(RuleYearsAgree, WithTheCLibrary) {
  const RuleYearsCase c = GetParam();
  set_tz(c.tz);
  long failures = 0;
  auto fail = [&](const std::string &what) {
    if (++failures <= 5) ADD_FAILURE() << "TZ=" << c.tz << ": " << what;
  };
  auto same = [](const struct tm &a, const struct tm &b) {
    return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon && a.tm_mday == b.tm_mday &&
           a.tm_hour == b.tm_hour && a.tm_min == b.tm_min && a.tm_sec == b.tm_sec &&
           a.tm_wday == b.tm_wday && a.tm_yday == b.tm_yday && a.tm_isdst == b.tm_isdst &&
           a.tm_gmtoff == b.tm_gmtoff;
  };
  auto instant = [&](time_t t) {
    struct tm a, b;
    std::memset(&a, 0, sizeof a);
    std::memset(&b, 0, sizeof b);
    const bool oka = localtime_r(&t, &a) != nullptr;
    const bool okb = qwz::zone::to_local(t, &b);
    if (oka != okb || (oka && !same(a, b))) fail("localtime of " + std::to_string(t));
  };
  auto read = [&](const struct tm &in) {
    struct tm a = in, b = in;
    const time_t ra = mktime(&a);
    const time_t rb = qwz::zone::to_seconds(&b);
    if (ra != rb || (ra != -1 && !same(a, b)))
      fail("mktime of " + std::to_string(in.tm_year + 1900) + "-" + std::to_string(in.tm_mon + 1) +
           "-" + std::to_string(in.tm_mday) + " " + std::to_string(in.tm_hour) + ":" +
           std::to_string(in.tm_min) + ":" + std::to_string(in.tm_sec) + " dst " +
           std::to_string(in.tm_isdst) + ": library " + std::to_string(ra) + ", engine " +
           std::to_string(rb));
    if (qwz::zone::seconds_of(&in) != ra) fail("instant of fields, library " + std::to_string(ra));
  };
  auto around = [&](time_t t) {
    for (time_t d = -1; d <= 1; ++d) {
      instant(t + d);
      struct tm lt;
      const time_t u = t + d;
      if (localtime_r(&u, &lt) == nullptr) continue;
      read(lt);  // the flag localtime_r gave
      lt.tm_isdst = 0;
      read(lt);
      lt.tm_hour += 1;
      read(lt);
      lt.tm_hour -= 2;
      read(lt);
    }
  };
  auto key = [](time_t t) {
    struct tm lt;
    localtime_r(&t, &lt);
    return lt.tm_gmtoff * 2 + lt.tm_isdst;
  };
  const std::uint64_t before = qwz::zone::handovers();
  // Thirteen-day steps, then bisection to the change instant.
  const time_t from = utc_year_start(c.first_year);
  const time_t to = utc_year_start(c.last_year + 1);
  const time_t step = 13 * 86400;
  long changes = 0;
  long k0 = key(from);
  for (time_t t = from; t < to; t += step) {
    const long k1 = key(t + step);
    if (k1 == k0) continue;
    time_t lo = t, hi = t + step;
    while (hi - lo > 1) {
      const time_t mid = lo + (hi - lo) / 2;
      (key(mid) == k0 ? lo : hi) = mid;
    }
    around(hi);
    ++changes;
    k0 = k1;
  }
  for (int y = c.first_year; y <= c.last_year + 1; ++y) {
    around(utc_year_start(y));
    // Local new year and mid-year, read as standard time.
    read(fields(y, 1, 1, 0, 0, 0));
    read(fields(y, 7, 15, 10, 30, 0));
    read(fields(y, 12, 31, 23, 59, 59));
  }
  EXPECT_EQ(failures, 0) << "TZ=" << c.tz;
  // Two changes a year in each of these settings from 1970 on (the C
  // library places a rule's changes of earlier years in 1970).
  EXPECT_GE(changes, static_cast<long>(c.last_year - c.first_year)) << "TZ=" << c.tz;
  if (std::getenv("QWZ_ZONE_VERBOSE"))
    std::printf("%-40s hand-overs %llu\n", c.tz,
                static_cast<unsigned long long>(qwz::zone::handovers() - before));
  set_tz("UTC0");
}

INSTANTIATE_TEST_SUITE_P(
    Zone, RuleYearsAgree,
    ::testing::Values(RuleYearsCase{"Berlin", "Europe/Berlin", 2030, 2510},
                      RuleYearsCase{"NewYork", "America/New_York", 2030, 2510},
                      RuleYearsCase{"Sydney", "Australia/Sydney", 2030, 2510},
                      RuleYearsCase{"Santiago", "America/Santiago", 2030, 2510},
                      RuleYearsCase{"Dublin", "Europe/Dublin", 2030, 2510},
                      RuleYearsCase{"Nuuk", "America/Nuuk", 2030, 2510},
                      RuleYearsCase{"RuleNorth", "CET-1CEST,M3.5.0,M10.5.0/3", 1790, 2510},
                      RuleYearsCase{"RuleSouth", "AEST-10AEDT,M10.1.0,M4.1.0/3", 1790, 2510},
                      RuleYearsCase{"RuleNegativeSummer", "IST-1GMT0,M10.5.0,M3.5.0/1", 1960, 2060},
                      RuleYearsCase{"RuleFarTimes", "XXX3YYY,M3.2.0/-25,M10.1.0/49:30:15", 1960, 2060}),
    [](const ::testing::TestParamInfo<RuleYearsCase> &info) { return std::string(info.param.name); });

// A change of TZ between two calls is seen at the next call in the years the
// footer rule decides, whichever settings alternate.
TEST(Zone, ChangesOfSettingInRuleYearsAreSeen) {
  const char *settings[] = {"Europe/Berlin", "Australia/Sydney", "CET-1CEST,M3.5.0,M10.5.0/3",
                            "America/New_York", "UTC0"};
  set_tz("UTC0");
  for (int i = 0; i < 200; ++i) {
    const char *tz = settings[i % 5];
    setenv("TZ", tz, 1);  // no tzset: each side reads TZ itself
    struct tm in = fields(2040 + i, 1 + i % 12, 1 + i % 28, i % 24, 17, 5);
    struct tm a = in, b = in;
    const time_t ra = mktime(&a);
    ASSERT_EQ(qwz::zone::to_seconds(&b), ra) << tz << " " << i;
    ASSERT_EQ(b.tm_hour, a.tm_hour) << tz << " " << i;
    ASSERT_EQ(b.tm_isdst, a.tm_isdst) << tz << " " << i;
    ASSERT_EQ(b.tm_gmtoff, a.tm_gmtoff) << tz << " " << i;
    const time_t later = ra + 86400 * 100;
    struct tm la, lb;
    ASSERT_NE(localtime_r(&later, &la), nullptr);
    ASSERT_TRUE(qwz::zone::to_local(later, &lb));
    ASSERT_EQ(lb.tm_hour, la.tm_hour) << tz << " " << i;
    ASSERT_EQ(lb.tm_gmtoff, la.tm_gmtoff) << tz << " " << i;
  }
  set_tz("UTC0");
}

}  // namespace
