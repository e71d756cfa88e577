// Counting heap allocations and clock reads made by a benchmark program.
// Included by exactly one source file per benchmark executable: it defines
// malloc, calloc, realloc, free and time for the whole program, forwarding to
// the C library's own entry points.
//
// Counted(state) snapshots the counters around a timed loop and reports, per
// call, the allocations ("allocs/call") and clock reads ("clock/call") made
// inside it; both should be 0 on every row.
#ifndef QWZ_BENCH_COUNTERS_H
#define QWZ_BENCH_COUNTERS_H

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstddef>
#include <ctime>

extern "C" void *__libc_malloc(size_t);
extern "C" void *__libc_calloc(size_t, size_t);
extern "C" void *__libc_realloc(void *, size_t);
extern "C" void __libc_free(void *);

namespace qwz_bench {
inline std::atomic<long> g_allocs{0};
inline std::atomic<long> g_clock_reads{0};
}  // namespace qwz_bench

extern "C" void *malloc(size_t n) {
  qwz_bench::g_allocs.fetch_add(1, std::memory_order_relaxed);
  return __libc_malloc(n);
}
extern "C" void *calloc(size_t n, size_t m) {
  qwz_bench::g_allocs.fetch_add(1, std::memory_order_relaxed);
  return __libc_calloc(n, m);
}
extern "C" void *realloc(void *p, size_t n) {
  qwz_bench::g_allocs.fetch_add(1, std::memory_order_relaxed);
  return __libc_realloc(p, n);
}
extern "C" void free(void *p) { __libc_free(p); }
extern "C" time_t time(time_t *t) {
  qwz_bench::g_clock_reads.fetch_add(1, std::memory_order_relaxed);
  struct timespec ts;
  clock_gettime(CLOCK_REALTIME, &ts);
  if (t) *t = ts.tv_sec;
  return ts.tv_sec;
}

namespace qwz_bench {

// Snapshots the counters around the timed loop.
struct Counted {
  benchmark::State &state;
  long allocs0 = g_allocs.load(), clock0 = g_clock_reads.load();
  explicit Counted(benchmark::State &s) : state(s) {}
  ~Counted() {
    const double n = static_cast<double>(state.iterations());
    state.counters["allocs/call"] = static_cast<double>(g_allocs.load() - allocs0) / n;
    state.counters["clock/call"] = static_cast<double>(g_clock_reads.load() - clock0) / n;
  }
};

}  // namespace qwz_bench

#endif  // QWZ_BENCH_COUNTERS_H
