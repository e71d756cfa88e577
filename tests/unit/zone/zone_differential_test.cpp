// The calendar bridge against the C library in the same process: for zone
// files, rule strings, TZ unset and TZ empty, generated field sets through
// mktime (daylight flag 0, and 1 as a second call on normalised fields
// sees it) and instants through localtime_r must give the
// same instant, the same fields, weekday, day of year, daylight flag and
// offset, and the same standard offset. Every zone file under
// /usr/share/zoneinfo is found at run time; by default a sample of them runs
// with 10,000 field sets each, and QWZ_ZONE_FULL=1 runs every zone file with
// 100,000 each.
#include "date_datetime_interval/calendar.h"
#include "zone/zone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

const char kZoneDir[] = "/usr/share/zoneinfo";

void set_tz(const char *tz) {
  if (tz) setenv("TZ", tz, 1);
  else unsetenv("TZ");
  tzset();
}

bool full_run() {
  const char *v = std::getenv("QWZ_ZONE_FULL");
  return v != nullptr && *v != '\0' && *v != '0';
}

// QWZ_ZONE_SAMPLES=N sets the number of generated field sets per zone (a
// short run under valgrind); the transition instants are always all tried.
long samples_or(long n) {
  const char *v = std::getenv("QWZ_ZONE_SAMPLES");
  return v != nullptr && *v != '\0' ? std::atol(v) : n;
}

std::vector<std::string> all_zone_files() {
  std::vector<std::string> out;
  namespace fs = std::filesystem;
  std::error_code ec;
  for (auto it = fs::recursive_directory_iterator(kZoneDir, ec);
       !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
    if (!it->is_regular_file(ec)) continue;
    std::ifstream f(it->path(), std::ios::binary);
    char magic[4] = {};
    if (!f.read(magic, 4) || std::memcmp(magic, "TZif", 4) != 0) continue;
    out.push_back(fs::relative(it->path(), kZoneDir).string());
  }
  std::sort(out.begin(), out.end());
  return out;
}

std::string describe(const struct tm &t) {
  char buf[160];
  std::snprintf(buf, sizeof buf, "%d-%d-%d %d:%d:%d wday %d yday %d dst %d off %ld",
                t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec,
                t.tm_wday, t.tm_yday, t.tm_isdst, static_cast<long>(t.tm_gmtoff));
  return buf;
}

bool same_tm(const struct tm &a, const struct tm &b) {
  return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon && a.tm_mday == b.tm_mday &&
         a.tm_hour == b.tm_hour && a.tm_min == b.tm_min && a.tm_sec == b.tm_sec &&
         a.tm_wday == b.tm_wday && a.tm_yday == b.tm_yday && a.tm_isdst == b.tm_isdst &&
         a.tm_gmtoff == b.tm_gmtoff;
}

struct Checker {
  std::string zone;
  long failures = 0;

  void fail(const std::string &what) {
    if (++failures <= 5) ADD_FAILURE() << "TZ=" << zone << ": " << what;
  }

  // mktime with the caller's daylight flag (0 or 1) on both sides.
  void fields(const struct tm &in) {
    struct tm a = in, b = in;
    const time_t ra = mktime(&a);
    const time_t rb = qwz::tm_to_seconds(&b);
    if (ra != rb || (ra != -1 && !same_tm(a, b)))
      fail("mktime of " + describe(in) + ": library " + std::to_string(ra) + " " + describe(a) +
           ", bridge " + std::to_string(rb) + " " + describe(b));
    // The instant alone, without the fields normalised.
    const time_t rc = qwz::zone::seconds_of(&in);
    if (rc != ra)
      fail("instant of " + describe(in) + ": library " + std::to_string(ra) + ", bridge " +
           std::to_string(rc));
    if (ra != -1) instant(ra + 1);
  }

  void instant(time_t t) {
    struct tm a, b;
    std::memset(&a, 0, sizeof a);
    std::memset(&b, 0, sizeof b);
    const bool oka = localtime_r(&t, &a) != nullptr;
    const bool okb = qwz::local_time(t, &b);
    if (oka != okb || (oka && !same_tm(a, b)))
      fail("localtime of " + std::to_string(t) + ": library " + describe(a) + ", bridge " +
           describe(b));
  }

  // The instant and both neighbours, and its local fields read back through
  // mktime, also an hour either side.
  void around(time_t t) {
    for (time_t d = -1; d <= 1; ++d) {
      instant(t + d);
      struct tm lt;
      if (localtime_r(&t, &lt) == nullptr) continue;
      lt.tm_sec += static_cast<int>(d);
      fields(lt);  // the flag localtime_r gave, as a second mktime sees it
      lt.tm_isdst = 0;
      fields(lt);
      lt.tm_hour += 1;
      fields(lt);
      lt.tm_hour -= 2;
      fields(lt);
    }
  }
};

struct tm random_fields(std::mt19937_64 &rng, bool wide_years) {
  auto pick = [&](int lo, int hi) {
    return static_cast<int>(std::uniform_int_distribution<int>(lo, hi)(rng));
  };
  struct tm t;
  std::memset(&t, 0, sizeof t);
  const bool wide = wide_years && pick(0, 9) < 3;
  const int year = wide ? pick(-4712, 9999) : pick(1900, 2100);
  t.tm_year = year - 1900;
  t.tm_mon = pick(0, 11);
  t.tm_mday = pick(0, 32);
  t.tm_hour = pick(0, 24);
  t.tm_min = pick(0, 9) == 0 ? pick(-90, 150) : pick(0, 59);
  t.tm_sec = pick(0, 9) == 0 ? pick(-90, 150) : pick(0, 59);
  return t;
}

// The instants where the offset or the daylight flag changes between 1900
// and 2100, found through the C library: weekly steps, then bisection.
std::vector<time_t> library_changes() {
  std::vector<time_t> out;
  auto key = [](time_t t) {
    struct tm lt;
    localtime_r(&t, &lt);
    return lt.tm_gmtoff * 2 + lt.tm_isdst;
  };
  const time_t from = -2208988800;  // 1900-01-01 UTC
  const time_t to = 4102444800;     // 2100-01-01 UTC
  const time_t step = 7 * 86400;
  long k0 = key(from);
  for (time_t t = from; t < to; t += step) {
    const long k1 = key(t + step);
    if (k1 == k0) continue;
    time_t lo = t, hi = t + step;  // key(lo) == k0, key(hi) != k0
    while (hi - lo > 1) {
      const time_t mid = lo + (hi - lo) / 2;
      (key(mid) == k0 ? lo : hi) = mid;
    }
    out.push_back(hi);
    k0 = k1;
  }
  return out;
}

void run_zone(const char *tz, long samples, std::uint64_t seed, bool wide_years = true) {
  set_tz(tz);
  Checker c{tz ? tz : "(unset)"};
  const long std_library = -timezone;  // fresh after the change of TZ
  const long std_bridge = qwz::local_standard_offset();
  if (std_library != std_bridge)
    c.fail("standard offset: library " + std::to_string(std_library) + ", bridge " +
           std::to_string(std_bridge));
  std::mt19937_64 rng(seed);
  const std::uint64_t before = qwz::zone::handovers();
  for (long i = 0; i < samples; ++i) {
    struct tm t = random_fields(rng, wide_years);
    c.fields(t);
    if (i % 8 == 0) {
      t.tm_isdst = 1;
      c.fields(t);
    }
  }
  for (const time_t t : library_changes()) c.around(t);
  EXPECT_EQ(c.failures, 0) << "TZ=" << c.zone;
  if (std::getenv("QWZ_ZONE_VERBOSE"))
    std::printf("%-40s hand-overs %llu\n", c.zone.c_str(),
                static_cast<unsigned long long>(qwz::zone::handovers() - before));
}

class ZoneFiles : public ::testing::Test {};

TEST(ZoneDifferential, ZoneFilesAgree) {
  const std::vector<std::string> all = all_zone_files();
  ASSERT_GT(all.size(), 300u) << "tzdata is not installed";
  const bool full = full_run();
  std::vector<std::string> chosen;
  if (full) {
    chosen = all;
  } else {
    // Every n-th file for a spread of 100 (the leap-second copies under
    // right/, all handed over, only a few), plus named ones.
    std::vector<std::string> plain, leap;
    for (const std::string &z : all) (z.rfind("right/", 0) == 0 ? leap : plain).push_back(z);
    const std::size_t n = plain.size() / 100;
    for (std::size_t i = 0; i < plain.size() && chosen.size() < 100; i += n)
      chosen.push_back(plain[i]);
    for (std::size_t i = 0; i < leap.size(); i += leap.size() / 3) chosen.push_back(leap[i]);
    for (const char *z : {"Europe/Berlin", "America/New_York", "Europe/Dublin",
                          "Australia/Lord_Howe", "Asia/Kathmandu", "Africa/Casablanca",
                          "America/Sao_Paulo", "Pacific/Chatham", "Antarctica/Troll",
                          "right/Europe/Paris", "EST5EDT"})
      chosen.push_back(z);
  }
  const long samples = samples_or(full ? 100000 : 10000);
  std::uint64_t seed = 1;
  for (const std::string &z : chosen) run_zone(z.c_str(), samples, seed++);
  set_tz("UTC0");
}

TEST(ZoneDifferential, RuleStringsAgree) {
  const char *rules[] = {
      "EST5EDT",
      "UTC0",
      "CET-1CEST,M3.5.0,M10.5.0/3",
      "EST5EDT,M3.2.0,M11.1.0",
      "AEST-10AEDT,M10.1.0,M4.1.0/3",          // southern hemisphere
      "<-03>3<-02>,M10.1.0/0,M2.3.0/0",        // southern, midnight changes
      "IST-1GMT0,M10.5.0,M3.5.0/1",            // negative summer time
      "<-02>2<-01>,M3.5.0/-1,M10.5.0/0",       // change before midnight
      "IST-2IDT,M3.4.4/26,M10.5.0",            // change after 24 hours
      "XXX3YYY,M3.2.0/-25,M10.1.0/49:30:15",   // far outside the day
      "ACST-9:30ACDT,M10.1.0,M4.1.0/3",        // half-hour offset
      "<+0545>-5:45",                          // 45-minute offset, no summer
      "<+1245>-12:45<+1345>,M9.5.0/2:45,M4.1.0/3:45",
      "NST3:30NDT,M3.2.0/0:01,M11.1.0/0:01",
      "EST5EDT,J60/2,J300/2",
      "EST5EDT,59/2,300/2",
      "AAA-14BBB-15,M1.1.0,M12.5.6",
      "<+00>0<+02>-2,M3.5.0/1,M10.5.0/3",
      "WET0WEST,M3.5.0/1,M10.5.0",
      "Foo",                                   // unparsable
      "EST5EDT,",                              // no rule: another file decides
      "!!",
      ":Europe/Berlin",
      "/usr/share/zoneinfo/Asia/Kolkata",
      "",
  };
  std::uint64_t seed = 1000;
  for (const char *r : rules) run_zone(r, samples_or(10000), seed++);
  set_tz("UTC0");
}

TEST(ZoneDifferential, UnsetAgrees) {
  run_zone(nullptr, samples_or(10000), 77);
  set_tz("UTC0");
}

// Common settings over 1900..2100 never need the C library.
TEST(ZoneDifferential, CommonZonesNeedNoHandOver) {
  for (const char *tz : {"UTC0", "Europe/Berlin", "America/New_York",
                         "CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0", "", static_cast<const char *>(nullptr)}) {
    set_tz(tz);
    std::mt19937_64 rng(5);
    const std::uint64_t before = qwz::zone::handovers();
    for (int i = 0; i < 20000; ++i) {
      struct tm t = random_fields(rng, false);
      t.tm_mday = std::min(std::max(t.tm_mday, 1), 28);
      t.tm_hour %= 24;
      t.tm_min = ((t.tm_min % 60) + 60) % 60;
      t.tm_sec = ((t.tm_sec % 60) + 60) % 60;
      const time_t s = qwz::tm_to_seconds(&t);
      struct tm back;
      qwz::seconds_to_tm(s, &back);
    }
    (void)qwz::local_standard_offset();
    EXPECT_EQ(qwz::zone::handovers() - before, 0u) << "TZ=" << (tz ? tz : "(unset)");
  }
  set_tz("UTC0");
}

}  // namespace
