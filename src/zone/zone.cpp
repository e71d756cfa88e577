// The zone setting of the moment and the entry points. Each setting read
// from TZ becomes an immutable snapshot, kept for the life of the process
// and published through one atomic pointer: a call compares the TZ text with
// the published snapshot's key and, when they agree, converts without a
// lock. With TZ unset the system zone file is looked at again at most once a
// second.
#include "zone/zone.h"

#include "zone/zone_model.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <sys/auxv.h>
#include <sys/stat.h>

namespace qwz::zone {

namespace {

constexpr const char *kSystemZone = "/etc/localtime";
constexpr const char *kZoneDir = "/usr/share/zoneinfo/";

struct Snapshot {
  bool unset = false;     // TZ not in the environment
  std::string key;        // the TZ text otherwise
  bool engine = false;    // false: every call goes to the C library
  Zone zone;
  // TZ unset: the system file as last seen.
  bool present = false;
  dev_t dev = 0;
  ino_t ino = 0;
  time_t mtime = 0;
  std::atomic<bool> stale{false};
  mutable std::atomic<std::int64_t> checked_ms{0};
};

std::atomic<const Snapshot *> g_current{nullptr};
std::atomic<std::uint64_t> g_handovers{0};
std::mutex g_mutex;
std::vector<std::unique_ptr<Snapshot>> &store() {
  static auto *s = new std::vector<std::unique_ptr<Snapshot>>();  // lives to the end
  return *s;
}

std::int64_t coarse_ms() {
  struct timespec ts;
  clock_gettime(CLOCK_MONOTONIC_COARSE, &ts);
  return static_cast<std::int64_t>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

void count_handover() { g_handovers.fetch_add(1, std::memory_order_relaxed); }

void make_utc(Snapshot *s) {
  s->engine = true;
  s->zone = Zone{};
  finish_zone(&s->zone);
}

void use_file_zone(Snapshot *s, Zone &&z) {
  s->engine = true;
  s->zone = std::move(z);
  finish_zone(&s->zone);
}

void build(Snapshot *s, const char *tz) {
  s->engine = false;
  if (getauxval(AT_SECURE) != 0) return;  // the C library restricts file names then
  if (tz == nullptr) {
    s->unset = true;
    struct stat st;
    s->present = ::stat(kSystemZone, &st) == 0;
    if (s->present) {
      s->dev = st.st_dev;
      s->ino = st.st_ino;
      s->mtime = st.st_mtime;
    }
    s->checked_ms.store(coarse_ms(), std::memory_order_relaxed);
    Zone z;
    switch (load_file(kSystemZone, &z)) {
      case FileResult::Ok: use_file_zone(s, std::move(z)); break;
      case FileResult::Missing: make_utc(s); break;  // no system zone: UTC
      case FileResult::Refused: break;
    }
    return;
  }
  s->key = tz;
  // Empty means UTC through the zone file of that name; a leading colon is
  // dropped; then a file is tried before the text is read as a rule.
  const bool empty = *tz == '\0';
  const char *name = empty ? "Universal" : tz;
  if (*name == ':') ++name;
  if (*name == '\0') {
    make_utc(s);
    return;
  }
  std::string path;
  if (*name == '/') {
    path = name;
  } else {
    const char *dir = std::getenv("TZDIR");
    if (dir != nullptr && *dir != '\0') return;
    path = std::string(kZoneDir) + name;
  }
  Zone z;
  switch (load_file(path, &z)) {
    case FileResult::Ok: use_file_zone(s, std::move(z)); return;
    case FileResult::Refused: return;
    case FileResult::Missing: break;
  }
  if (empty || std::strcmp(name, kSystemZone) == 0) {
    make_utc(s);
    return;
  }
  PosixRule rule;
  if (!parse_posix(name, &rule)) return;
  z = Zone{};
  z.rule_everywhere = true;
  z.rule = rule;
  use_file_zone(s, std::move(z));
}

// strcmp(a, b) == 0 for the short texts TZ holds, without the library
// call's set-up for long strings (a quarter of a UTC conversion otherwise).
inline bool same_text(const char *a, const char *b) {
  for (;; ++a, ++b) {
    if (*a != *b) return false;
    if (*a == '\0') return true;
  }
}

bool same_key(const Snapshot *s, const char *tz) {
  if (tz == nullptr) return s->unset;
  return !s->unset && same_text(tz, s->key.c_str());
}

bool same_system_file(const Snapshot *s) {
  struct stat st;
  const bool present = ::stat(kSystemZone, &st) == 0;
  if (present != s->present) return false;
  return !present || (st.st_dev == s->dev && st.st_ino == s->ino && st.st_mtime == s->mtime);
}

const Snapshot *slow_current(const char *tz) {
  std::lock_guard<std::mutex> lock(g_mutex);
  auto &all = store();
  for (auto it = all.rbegin(); it != all.rend(); ++it) {
    const Snapshot *s = it->get();
    if (same_key(s, tz) && !s->stale.load(std::memory_order_relaxed)) {
      if (tz == nullptr && !same_system_file(s)) {
        it->get()->stale.store(true, std::memory_order_relaxed);
        break;
      }
      g_current.store(s, std::memory_order_release);
      return s;
    }
  }
  auto fresh = std::make_unique<Snapshot>();
  build(fresh.get(), tz);
  const Snapshot *s = fresh.get();
  all.push_back(std::move(fresh));
  g_current.store(s, std::memory_order_release);
  return s;
}

thread_local const Snapshot *t_pinned = nullptr;

const Snapshot *read_setting() {
  const char *tz = std::getenv("TZ");
  const Snapshot *s = g_current.load(std::memory_order_acquire);
  if (s != nullptr && same_key(s, tz) && !s->stale.load(std::memory_order_relaxed)) {
    if (tz != nullptr) return s;
    const std::int64_t now = coarse_ms();
    if (now - s->checked_ms.load(std::memory_order_relaxed) < 1000) return s;
    if (same_system_file(s)) {
      s->checked_ms.store(now, std::memory_order_relaxed);
      return s;
    }
    const_cast<Snapshot *>(s)->stale.store(true, std::memory_order_relaxed);
  }
  return slow_current(tz);
}

// Pins open on this thread; the setting is read at the first conversion
// inside them and held until the outermost one closes.
thread_local unsigned t_pins = 0;

const Snapshot *current() {
  const Snapshot *p = t_pinned;
  if (p != nullptr) return p;
  p = read_setting();
  if (t_pins != 0) t_pinned = p;
  return p;
}

bool library_local(time_t seconds, struct tm *out) {
  count_handover();
  tzset();  // localtime_r need not read the setting itself
  return localtime_r(&seconds, out) != nullptr;
}

}  // namespace

Pin::Pin() { ++t_pins; }

Pin::~Pin() {
  if (--t_pins == 0) t_pinned = nullptr;
}

time_t to_seconds(struct tm *tmv) {
  const Snapshot *s = current();
  std::int64_t t;
  if (s->engine && emulate_mktime(s->zone, tmv, &t) == 1) return static_cast<time_t>(t);
  count_handover();
  return mktime(tmv);
}

time_t seconds_of(const struct tm *tmv) {
  const Snapshot *s = current();
  std::int64_t t;
  struct tm copy = *tmv;
  if (s->engine && emulate_mktime(s->zone, &copy, &t, false) == 1) return static_cast<time_t>(t);
  count_handover();
  return mktime(&copy);
}

bool to_local(time_t seconds, struct tm *out) {
  const Snapshot *s = current();
  // About +-35 million years either way: well inside the calendar helpers.
  constexpr std::int64_t kFar = std::int64_t{1} << 50;
  if (s->engine && seconds > -kFar && seconds < kFar) {
    const Span sp = s->zone.lookup(seconds);
    if (fill_tm(seconds, sp.off, sp.dst, out)) return true;
  }
  return library_local(seconds, out);
}

long standard_offset() {
  const Snapshot *s = current();
  if (s->engine && !s->zone.std_ambiguous) return s->zone.std_off;
  count_handover();
  tzset();
  return -timezone;
}

std::uint64_t handovers() { return g_handovers.load(std::memory_order_relaxed); }

bool engine_active() { return read_setting()->engine; }

}  // namespace qwz::zone
