// The immutable description of one zone setting and the conversions on it.
#ifndef QWZ_ZONE_ZONE_MODEL_H
#define QWZ_ZONE_ZONE_MODEL_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

namespace qwz::zone {

constexpr std::int64_t kNegInf = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kPosInf = std::numeric_limits<std::int64_t>::max();

// Years the engine converts; anything outside goes to the C library.
constexpr std::int64_t kMinYear = -10000;
constexpr std::int64_t kMaxYear = 20000;

// One change date of a POSIX rule string: Jn (kind 1), n (kind 0) or
// Mm.w.d (kind 2), with its time of day in seconds (may be negative or
// beyond a day).
struct ChangeRule {
  int kind = 0;
  int m = 0, n = 0, d = 0;
  int secs = 0;
};

// A POSIX rule string: standard and daylight offsets in seconds east of UTC.
// Without daylight time both change rules stay zero, so the two change
// instants coincide and daylight time never applies.
struct PosixRule {
  long std_off = 0;
  long dst_off = 0;
  bool has_dst = false;
  ChangeRule start, end;
};

struct LocalType {
  std::int32_t off = 0;
  bool dst = false;
};

// The offset in force at an instant and an interval around it, [lo, hi),
// over which it is known not to change (it may in fact last longer).
struct Span {
  std::int64_t off;
  bool dst;
  std::int64_t lo, hi;
};

// One UTC year of a POSIX rule with summer time: where the year starts and
// the rule's two change instants as the C library places them for it.
struct RuleYear {
  std::int64_t start;
  std::int64_t c0, c1;
};

struct Zone {
  // Rule everywhere (a TZ rule string), or a table of transitions with the
  // type before the first and, past the last, the footer rule if present.
  bool rule_everywhere = false;
  PosixRule rule;
  bool has_footer = false;
  std::vector<std::int64_t> trans;
  std::vector<LocalType> trans_type;  // type in force from trans[i]
  LocalType before;
  std::vector<std::int64_t> offsets;  // every offset the zone can show
  std::int64_t max_abs_off = 0;
  // Standard offset the C library reports; valid unless std_ambiguous.
  long std_off = 0;
  bool std_ambiguous = false;
  // The rule's change instants, worked out once for the years most
  // conversions fall in (rule_years.back() only marks where the last year
  // ends); years outside are worked out at each lookup.
  std::vector<RuleYear> rule_years;

  Span lookup(std::int64_t t) const;
  Span rule_span(std::int64_t t) const;
};

inline Span Zone::lookup(std::int64_t t) const {
  if (rule_everywhere) return rule_span(t);
  if (trans.empty() || t < trans.front())
    return Span{before.off, before.dst, kNegInf, trans.empty() ? kPosInf : trans.front()};
  if (t >= trans.back()) {
    if (has_footer) {
      Span s = rule_span(t);
      s.lo = std::max(s.lo, trans.back());
      return s;
    }
    return Span{trans_type.back().off, trans_type.back().dst, trans.back(), kPosInf};
  }
  const std::size_t i =
      static_cast<std::size_t>(std::upper_bound(trans.begin(), trans.end(), t) - trans.begin()) - 1;
  return Span{trans_type[i].off, trans_type[i].dst, trans[i], trans[i + 1]};
}

// The instant of a POSIX change rule in a given year (UTC year of the
// instant being converted), with the offset that the rule's time is in.
std::int64_t rule_change(const ChangeRule &r, int year, long offset);
Span rule_lookup(const PosixRule &r, std::int64_t t);
// The years [first, last] of rule_years for a zone (empty without a rule
// with summer time).
void fill_rule_years(Zone *z);

// Proleptic Gregorian calendar helpers.
// Both conversions shift the calendar by 30 eras of 400 years so that the
// usual range works on unsigned 32-bit values (divisions by constants become
// multiplications); anything further out takes the signed 64-bit route.
constexpr std::int64_t kShiftEras = 30;

// Days from 1970-01-01 to the civil date (any day count of the month).
inline std::int64_t days_from_civil(std::int64_t y, int m, int d) {
  y -= m <= 2;
  const std::uint32_t mp = static_cast<std::uint32_t>(m + 9) % 12;
  const std::uint32_t doy = (153 * mp + 2) / 5 + static_cast<std::uint32_t>(d) - 1;
  const std::int64_t ys = y + kShiftEras * 400;
  if (ys >= 0 && ys < 4000000) [[likely]] {
    const std::uint32_t u = static_cast<std::uint32_t>(ys);
    const std::uint32_t era = u / 400, yoe = u % 400;
    const std::uint32_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return static_cast<std::int64_t>(era) * 146097 + doe - 719468 - kShiftEras * 146097;
  }
  std::int64_t era = y / 400;
  if (y % 400 != 0 && y < 0) --era;  // rounded down
  const std::int64_t yoe = y - era * 400;
  const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}
void civil_from_days(std::int64_t days, std::int64_t *y, int *m, int *d);
bool leap(std::int64_t y);

// Fills the broken-down local time of `t` shown with offset `off`; false
// when the year falls outside the engine's range.
bool fill_tm(std::int64_t t, std::int64_t off, bool dst, struct tm *out);

// The mktime search for a daylight flag of 0 or 1. Returns 1 with *result and the
// normalised *tmv, 0 to hand over.
int emulate_mktime(const Zone &z, struct tm *tmv, std::int64_t *result, bool normalise = true);

// Parsing: a POSIX rule string accepted only when it is certain how the C
// library reads it; a zone file in the binary format, version 2 or later,
// without leap seconds. Both return false to hand over.
bool parse_posix(const char *text, PosixRule *out);
enum class FileResult { Ok, Missing, Refused };
FileResult load_file(const std::string &path, Zone *out);
void finish_zone(Zone *z);

}  // namespace qwz::zone

#endif  // QWZ_ZONE_ZONE_MODEL_H
