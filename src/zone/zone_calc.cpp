// Conversions on a zone description: the offset in force at an instant, the
// broken-down local time, and the search that turns local fields read as
// standard time into an instant, step for step as the C library's mktime
// makes it (the library's search as this system ships it, with the
// one-hour fallback when no standard time lies near).
#include "zone/zone_model.h"

#include <algorithm>
#include <cstdint>
#include <ctime>

namespace qwz::zone {

namespace {

constexpr std::int64_t kDay = 86400;

// Days before each month (0-based), common and leap years.
constexpr int kCum[2][13] = {
    {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366}};

constexpr std::int64_t floor_div(std::int64_t a, std::int64_t b) {
  std::int64_t q = a / b;
  if ((a % b != 0) && ((a < 0) != (b < 0))) --q;
  return q;
}

// Days from 1970-01-01 to 1 January of `y`, for constants.
constexpr std::int64_t days_of_new_year(std::int64_t y) {
  const std::int64_t p = y - 1;  // years before y, counted from year 0
  return 365 * p + floor_div(p, 4) - floor_div(p, 100) + floor_div(p, 400) + 366 - 719528;
}
static_assert(days_of_new_year(1970) == 0 && days_of_new_year(2000) == 10957 &&
              days_of_new_year(1) == -719162 && days_of_new_year(0) == -719528);

// The probe grid the C library walks, in both directions, when the instant
// it found shows daylight time and standard time was asked for: steps of a
// week less an hour, while the step stays below 229,222,804 seconds: 381 of
// them.
constexpr std::int64_t kStride = 601200;
constexpr std::int64_t kMaxSteps = 381;

// Finds the nearest probe showing the wanted daylight flag and gives the
// instant the fields denote under that probe's offset; with none, the
// instant found moved by one hour towards the wanted flag. `at` is the span
// holding `t` (its flag is not the wanted one): the probes inside it are
// known to fail and are skipped.
void flag_probe(const Zone &z, bool want, std::int64_t fields, std::int64_t t, const Span &at,
                std::int64_t *out) {
  std::int64_t kb = 0, off_b = 0;
  if (at.lo != kNegInf) {
    for (std::int64_t k = (t - at.lo) / kStride + 1; k <= kMaxSteps;) {
      const Span s = z.lookup(t - k * kStride);
      if (s.dst == want) {
        kb = k;
        off_b = s.off;
        break;
      }
      if (s.lo == kNegInf) break;
      k = std::max(k + 1, (t - s.lo) / kStride + 1);
    }
  }
  // Forward wins only with strictly fewer steps: backward is tried first.
  const std::int64_t limit = kb ? kb - 1 : kMaxSteps;
  if (at.hi != kPosInf) {
    for (std::int64_t k = (at.hi - t + kStride - 1) / kStride; k <= limit;) {
      const Span s = z.lookup(t + k * kStride);
      if (s.dst == want) {
        *out = fields - s.off;
        return;
      }
      if (s.hi == kPosInf) break;
      k = std::max(k + 1, (s.hi - t + kStride - 1) / kStride);
    }
  }
  *out = kb ? fields - off_b : t + (want ? -3600 : 3600);
}

constexpr std::int64_t kUnknown = kNegInf;  // a first probe that no later probe repeats

// One run of the C library's search from a given first probe: either the
// instant `t0` (real) or an instant that repeats no later probe and shows
// offset `first_off`. True with the instant found.
bool search(const Zone &z, bool want, std::int64_t fields, bool real, std::int64_t t0,
            std::int64_t first_off, std::int64_t *out) {
  std::int64_t t = real ? t0 : kUnknown, t1 = t, t2 = t;
  int remaining = 6;
  bool dst = false;
  Span s{};
  for (;;) {
    std::int64_t off;
    if (t == kUnknown) {
      off = first_off;
      dst = false;
    } else {
      s = z.lookup(t);
      off = s.off;
      dst = s.dst;
    }
    const std::int64_t target = fields - off;
    if (t != kUnknown && target == t) break;
    // Oscillating across a gap: keep the side whose flag differs.
    if (t == t1 && t != t2 && dst != want) {
      *out = t;
      return true;
    }
    if (--remaining == 0) return false;
    t1 = t2;
    t2 = t;
    t = target;
  }
  if (dst != want) flag_probe(z, want, fields, t, s, out);  // s holds t
  else *out = t;
  return true;
}

}  // namespace

bool leap(std::int64_t y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); }


void civil_from_days(std::int64_t z, std::int64_t *y, int *m, int *d) {
  z += 719468;
  std::int64_t era, doe;
  const std::int64_t zs = z + kShiftEras * 146097;
  if (zs >= 0 && zs < 4000000000) {
    const std::uint32_t u = static_cast<std::uint32_t>(zs);
    era = static_cast<std::int64_t>(u / 146097) - kShiftEras;
    doe = u % 146097;
  } else {
    era = floor_div(z, 146097);
    doe = z - era * 146097;
  }
  const std::uint32_t e = static_cast<std::uint32_t>(doe);
  const std::uint32_t yoe = (e - e / 1460 + e / 36524 - e / 146096) / 365;
  const std::uint32_t doy = e - (365 * yoe + yoe / 4 - yoe / 100);
  const std::uint32_t mp = (5 * doy + 2) / 153;
  *d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  *m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  *y = static_cast<std::int64_t>(yoe) + era * 400 + (*m <= 2);
}

// The C library places a rule's change relative to 1 January 1970 for every
// year up to 1970 (and to 1 January of the year after that), with the
// weekday arithmetic of the year itself; kept as is.
std::int64_t rule_change(const ChangeRule &r, int year, long offset) {
  std::int64_t t = 0;
  if (year > 1970) {
    const std::int64_t y = year;
    t = ((y - 1970) * 365 + ((y - 1) / 4 - 1970 / 4) - ((y - 1) / 100 - 1970 / 100) +
         ((y - 1) / 400 - 1970 / 400)) *
        kDay;
  }
  const int lp = leap(year) ? 1 : 0;
  switch (r.kind) {
    case 1:
      t += static_cast<std::int64_t>(r.d - 1) * kDay;
      if (r.d >= 60 && lp) t += kDay;
      break;
    case 0:
      t += static_cast<std::int64_t>(r.d) * kDay;
      break;
    default: {
      t += static_cast<std::int64_t>(kCum[lp][r.m - 1]) * kDay;
      const int m1 = (r.m + 9) % 12 + 1;
      const int yy0 = r.m <= 2 ? year - 1 : year;
      const int yy1 = yy0 / 100;
      const int yy2 = yy0 % 100;
      int dow = ((26 * m1 - 2) / 10 + 1 + yy2 + yy2 / 4 + yy1 / 4 - 2 * yy1) % 7;
      if (dow < 0) dow += 7;
      int d = r.d - dow;
      if (d < 0) d += 7;
      const int len = kCum[lp][r.m] - kCum[lp][r.m - 1];
      for (int i = 1; i < r.n; ++i) {
        if (d + 7 >= len) break;
        d += 7;
      }
      t += static_cast<std::int64_t>(d) * kDay;
      break;
    }
  }
  return t - offset + r.secs;
}

namespace {

// The rule's verdict at `t` within the UTC year [lo, hi) whose change
// instants are c0 (into summer time) and c1 (out of it).
inline Span span_in_year(const PosixRule &r, std::int64_t t, std::int64_t c0, std::int64_t c1,
                         std::int64_t lo, std::int64_t hi) {
  const bool dst = c0 > c1 ? (t < c1 || t >= c0) : (t >= c0 && t < c1);
  // Constant within the UTC year between the two change instants.
  if (c0 <= t) lo = std::max(lo, c0);
  else hi = std::min(hi, c0);
  if (c1 <= t) lo = std::max(lo, c1);
  else hi = std::min(hi, c1);
  return Span{dst ? r.dst_off : r.std_off, dst, lo, hi};
}

// The years whose change instants are kept with the zone: the range most
// values fall in, at 24 bytes a year.
constexpr std::int64_t kRuleFirstYear = 1800;
constexpr std::int64_t kRuleLastYear = 2500;
// Seconds in an average Gregorian year: a first guess of the year index.
constexpr std::int64_t kAverageYear = 31556952;

}  // namespace

Span rule_lookup(const PosixRule &r, std::int64_t t) {
  if (!r.has_dst) return Span{r.std_off, false, kNegInf, kPosInf};
  std::int64_t y;
  int m, d;
  const std::int64_t days = floor_div(t, kDay);
  civil_from_days(days, &y, &m, &d);
  const int year = static_cast<int>(y);
  const std::int64_t c0 = rule_change(r.start, year, r.std_off);
  const std::int64_t c1 = rule_change(r.end, year, r.dst_off);
  return span_in_year(r, t, c0, c1, days_from_civil(y, 1, 1) * kDay,
                      days_from_civil(y + 1, 1, 1) * kDay);
}

void fill_rule_years(Zone *z) {
  z->rule_years.clear();
  if (!(z->rule_everywhere || z->has_footer) || !z->rule.has_dst) return;
  std::int64_t first = kRuleFirstYear;
  if (!z->rule_everywhere && !z->trans.empty()) {
    // Only instants past the last transition read the footer rule.
    std::int64_t y;
    int m, d;
    civil_from_days(floor_div(z->trans.back(), kDay), &y, &m, &d);
    first = std::max(first, y);
  }
  if (first > kRuleLastYear) return;
  const PosixRule &r = z->rule;
  z->rule_years.reserve(static_cast<std::size_t>(kRuleLastYear - first + 2));
  for (std::int64_t y = first; y <= kRuleLastYear + 1; ++y) {
    const int year = static_cast<int>(y);
    z->rule_years.push_back(RuleYear{days_from_civil(y, 1, 1) * kDay,
                                     rule_change(r.start, year, r.std_off),
                                     rule_change(r.end, year, r.dst_off)});
  }
}

Span Zone::rule_span(std::int64_t t) const {
  const std::size_t n = rule_years.size();
  if (n >= 2 && t >= rule_years.front().start && t < rule_years.back().start) {
    std::size_t i = static_cast<std::size_t>((t - rule_years.front().start) / kAverageYear);
    if (i > n - 2) i = n - 2;
    while (t < rule_years[i].start) --i;
    while (t >= rule_years[i + 1].start) ++i;
    const RuleYear &y = rule_years[i];
    return span_in_year(rule, t, y.c0, y.c1, y.start, rule_years[i + 1].start);
  }
  return rule_lookup(rule, t);
}

namespace {

// Days from 0000-03-01 of the proleptic calendar, moved on by kShiftEras
// eras so that every year fill_tm accepts counts from zero.
constexpr std::int64_t kShiftedEpoch = 719468 + kShiftEras * 146097;

struct Civil {
  std::int64_t year;
  int month, day, yday, wday;
};

// The date of day `n` counted from the shifted epoch (n < 2^30), by
// multiplications and shifts only: four short dependent steps instead of
// a chain of divisions by non-powers of two. Centuries first (146097 days
// per 400 years), then the year within the century (the multiplier
// 2939745 / 2^32 stands for 4 / 1461 with the remainder kept in the low
// half), then month and day within the year counted from March
// (2141 / 2^16 stands for 5 / 153).
inline Civil civil_from_shifted(std::uint32_t n) {
  const std::uint32_t n1 = 4 * n + 3;
  const std::uint32_t century = n1 / 146097;
  const std::uint32_t n2 = (n1 % 146097) | 3;
  const std::uint64_t p2 = std::uint64_t{2939745} * n2;
  const std::uint32_t year_of_century = static_cast<std::uint32_t>(p2 >> 32);
  const std::uint32_t day_of_year = static_cast<std::uint32_t>(p2) / 2939745 / 4;  // from March
  const std::uint32_t n3 = 2141 * day_of_year + 197913;
  const std::uint32_t month_from_march = n3 >> 16;
  const std::uint32_t day = (n3 & 0xFFFF) / 2141;
  const bool january_or_february = day_of_year >= 306;
  Civil c;
  c.year = static_cast<std::int64_t>(100 * century + year_of_century + january_or_february) -
           kShiftEras * 400;
  c.month = static_cast<int>(january_or_february ? month_from_march - 12 : month_from_march);
  c.day = static_cast<int>(day + 1);
  // March to December belong to the shifted year 100 * century +
  // year_of_century, a multiple of 400 years from the real one.
  const bool leap_year =
      year_of_century % 4 == 0 && (year_of_century != 0 || century % 4 == 0);
  c.yday = static_cast<int>(january_or_february ? day_of_year - 306
                                                : day_of_year + 59 + (leap_year ? 1 : 0));
  // The shifted epoch is one day past a multiple of seven from a Thursday.
  c.wday = static_cast<int>((n + 3) % 7);
  return c;
}

}  // namespace

bool fill_tm(std::int64_t t, std::int64_t off, bool dst, struct tm *out) {
  const std::int64_t local = t + off;
  const std::int64_t days = floor_div(local, kDay);
  const std::int64_t secs = local - days * kDay;
  const std::int64_t shifted = days + kShiftedEpoch;
  Civil c;
  if (shifted >= 0 && shifted < (std::int64_t{1} << 30)) {
    c = civil_from_shifted(static_cast<std::uint32_t>(shifted));
  } else {
    civil_from_days(days, &c.year, &c.month, &c.day);
    std::int64_t wd = (days + 4) % 7;
    if (wd < 0) wd += 7;
    c.wday = static_cast<int>(wd);
    c.yday = static_cast<int>(days - days_from_civil(c.year, 1, 1));
  }
  const std::int64_t y = c.year;
  if (y < kMinYear || y > kMaxYear) return false;
  out->tm_year = static_cast<int>(y - 1900);
  out->tm_mon = c.month - 1;
  out->tm_mday = c.day;
  const std::uint32_t day_secs = static_cast<std::uint32_t>(secs);  // 0..86399
  out->tm_hour = static_cast<int>(day_secs / 3600);
  out->tm_min = static_cast<int>(day_secs / 60 % 60);
  out->tm_sec = static_cast<int>(day_secs % 60);
  out->tm_wday = c.wday;
  out->tm_yday = c.yday;
  out->tm_isdst = dst ? 1 : 0;
  out->tm_gmtoff = static_cast<long>(off);
  out->tm_zone = "";
  return true;
}

int emulate_mktime(const Zone &z, struct tm *tmv, std::int64_t *result, bool normalise) {
  if (tmv->tm_isdst < 0) return 0;
  const bool want = tmv->tm_isdst > 0;
  const int sec_requested = tmv->tm_sec;
  const int mon = tmv->tm_mon;
  const int mon_rem = mon % 12;
  const int neg = mon_rem < 0;
  const std::int64_t year =
      static_cast<std::int64_t>(tmv->tm_year) + 1900 + (mon / 12 - neg);
  if (year < kMinYear + 1 || year > kMaxYear - 1) return 0;
  const int sec = std::clamp(sec_requested, 0, 59);
  const std::int64_t day = days_from_civil(year, mon_rem + 12 * neg + 1, 1) +
                           static_cast<std::int64_t>(tmv->tm_mday) - 1;
  const std::int64_t fields = day * kDay +
                              static_cast<std::int64_t>(tmv->tm_hour) * 3600 +
                              static_cast<std::int64_t>(tmv->tm_min) * 60 + sec;
  // Field overflow into other years is fine, far outside the range is not.
  constexpr std::int64_t lo_limit = days_of_new_year(kMinYear + 2) * kDay;
  constexpr std::int64_t hi_limit = days_of_new_year(kMaxYear - 2) * kDay;
  if (fields < lo_limit || fields > hi_limit) return 0;

  std::int64_t t;
  const std::int64_t w = z.max_abs_off + 1;
  const Span s = z.lookup(fields);
  if (s.lo <= fields - w && fields + w < s.hi) {
    // One offset around the fields: every first guess settles on it, and
    // the instant it gives lies within w of the fields, inside `s`.
    t = fields - s.off;
    if (s.dst != want) flag_probe(z, want, fields, t, s, &t);
  } else {
    // Near a change the answer may depend on the previous call's offset,
    // which the C library keeps to itself: accept only a unanimous answer.
    bool have = false;
    for (const std::int64_t o : z.offsets) {
      for (const bool real : {true, false}) {
        std::int64_t r;
        if (!search(z, want, fields, real, fields - o, o, &r)) return 0;
        if (have && r != t) return 0;
        t = r;
        have = true;
      }
    }
    if (!have) return 0;
  }
  t += sec_requested - sec;
  // The spans lookup gives never overlap: one that holds t is t's span.
  const Span f = s.lo <= t && t < s.hi ? s : z.lookup(t);
  if (!normalise) {
    // Only the instant is wanted: the same verdict fill_tm would give, from
    // the local day alone.
    constexpr std::int64_t first_day = days_of_new_year(kMinYear);
    constexpr std::int64_t last_day = days_of_new_year(kMaxYear + 1) - 1;
    const std::int64_t local_day = floor_div(t + f.off, kDay);
    if (local_day < first_day || local_day > last_day) return 0;
    *result = t;
    return 1;
  }
  struct tm out = *tmv;
  if (!fill_tm(t, f.off, f.dst, &out)) return 0;
  *tmv = out;
  *result = t;
  return 1;
}

}  // namespace qwz::zone
