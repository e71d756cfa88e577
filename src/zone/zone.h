// The process's local time zone, read from the TZ variable at every call and
// converted without the C library's global lock: the same answers as its
// mktime (for a daylight-saving flag of 0) and localtime_r, from an immutable
// table of transitions plus the trailing rule, cached per zone setting.
//
// Whatever the engine cannot show to give the C library's answer (an unusual
// setting, a zone file it does not accept, a field set whose answer depends
// on the C library's hidden state, years outside the range it covers) is
// handed to mktime/localtime_r unchanged and counted.
#ifndef QWZ_ZONE_ZONE_H
#define QWZ_ZONE_ZONE_H

#include <cstdint>
#include <ctime>

namespace qwz::zone {

// mktime(tmv) for a daylight flag of 0 or above (a negative flag is handed
// over): the fields are normalised in place and the instant returned; -1
// with *tmv untouched when the C library fails.
time_t to_seconds(struct tm *tmv);

// to_seconds on a copy of *tmv: the instant alone, without the work of
// normalising the fields.
time_t seconds_of(const struct tm *tmv);

// localtime_r(&seconds, out) after the zone setting is read; false (and *out
// unspecified) when the C library would return NULL.
bool to_local(time_t seconds, struct tm *out);

// The zone's standard offset in seconds east of UTC, as minus the C
// library's `timezone` gives it after tzset().
long standard_offset();

// Holds the setting read by the first conversion made while it lives for
// every later conversion on this thread until destruction, as the C
// library's localtime_r keeps the setting its mktime read: one reading of TZ
// per calendar routine, and none for a routine that converts nothing. Nests.
class Pin {
 public:
  Pin();
  ~Pin();
  Pin(const Pin &) = delete;
  Pin &operator=(const Pin &) = delete;
};

// How many conversions went to the C library so far (all threads).
std::uint64_t handovers();

// Whether the current setting is served by the engine at all (false: every
// call is handed over). For tests.
bool engine_active();

}  // namespace qwz::zone

#endif  // QWZ_ZONE_ZONE_H
