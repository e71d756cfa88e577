// A peer for the text benchmarks: PostgreSQL's client-side date and interval
// library (Debian's runtime package libpgtypes3), loaded at run time so that
// the benchmarks build and run without it; its rows are skipped when it is
// missing. The few functions used are declared here by hand from the
// library's public documentation: a timestamp is a 64-bit count of
// microseconds, an interval a microsecond count plus a month count, and the
// texts it returns are released with PGTYPESchar_free.
#ifndef QWZ_BENCH_PEER_H
#define QWZ_BENCH_PEER_H

#include <benchmark/benchmark.h>

#include <cstdint>

#include <dlfcn.h>

namespace qwz_bench {

struct PeerInterval {
  std::int64_t time;  // microseconds
  long month;
};

struct Peer {
  using TimestampFromAsc = std::int64_t (*)(char *, char **);
  using TimestampToAsc = char *(*)(std::int64_t);
  using IntervalFromAsc = PeerInterval *(*)(char *, char **);
  using IntervalToAsc = char *(*)(PeerInterval *);
  using IntervalFree = void (*)(PeerInterval *);
  using CharFree = void (*)(char *);

  TimestampFromAsc timestamp_from_asc = nullptr;
  TimestampToAsc timestamp_to_asc = nullptr;
  IntervalFromAsc interval_from_asc = nullptr;
  IntervalToAsc interval_to_asc = nullptr;
  IntervalFree interval_free = nullptr;
  CharFree char_free = nullptr;
  bool loaded = false;

  Peer() {
    void *lib = dlopen("libpgtypes.so.3", RTLD_NOW | RTLD_LOCAL);
    if (!lib) return;
    timestamp_from_asc = reinterpret_cast<TimestampFromAsc>(dlsym(lib, "PGTYPEStimestamp_from_asc"));
    timestamp_to_asc = reinterpret_cast<TimestampToAsc>(dlsym(lib, "PGTYPEStimestamp_to_asc"));
    interval_from_asc = reinterpret_cast<IntervalFromAsc>(dlsym(lib, "PGTYPESinterval_from_asc"));
    interval_to_asc = reinterpret_cast<IntervalToAsc>(dlsym(lib, "PGTYPESinterval_to_asc"));
    interval_free = reinterpret_cast<IntervalFree>(dlsym(lib, "PGTYPESinterval_free"));
    char_free = reinterpret_cast<CharFree>(dlsym(lib, "PGTYPESchar_free"));
    loaded = timestamp_from_asc && timestamp_to_asc && interval_from_asc && interval_to_asc &&
             interval_free && char_free;
  }
};

inline const Peer &peer() {
  static const Peer p;
  return p;
}

// Skips the row when the peer is not installed; true when it may run.
inline bool peer_ready(benchmark::State &state) {
  if (peer().loaded) return true;
  state.SkipWithError("libpgtypes.so.3 not installed (apt-get install libpgtypes3)");
  return false;
}

}  // namespace qwz_bench

#endif  // QWZ_BENCH_PEER_H
