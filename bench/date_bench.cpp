// Date arithmetic through the public frame, beside the bare C library pair
// it rests on (mktime + localtime_r), in UTC.
#include <qwz/qwz.h>

#include <benchmark/benchmark.h>

#include "counters.h"

#include <cstdlib>
#include <ctime>

namespace {

struct Handles {
  QWZEnv *env = nullptr;
  QWZError *err = nullptr;
  Handles() {
    setenv("TZ", "UTC0", 1);
    tzset();
    QWZEnvCreate(&env, 0);
    QWZHandleAlloc(env, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR);
  }
  ~Handles() { QWZHandleFree(env, QWZ_HTYPE_ENV); }
};

void BM_QWZDateAddDays(benchmark::State &state) {
  Handles h;
  QWZDate d{2024, 3, 15, 10, 30, 0}, r{};
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    QWZDateAddDays(h.err, &d, 40, &r);
    benchmark::DoNotOptimize(r);
  }
}
BENCHMARK(BM_QWZDateAddDays);

// The frame around a 12-byte copy (and the check of the source date).
void BM_QWZDateAssign(benchmark::State &state) {
  Handles h;
  QWZDate d{2024, 3, 15, 10, 30, 0}, r{};
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(QWZDateAssign(h.err, &d, &r));
    benchmark::DoNotOptimize(r);
  }
}
BENCHMARK(BM_QWZDateAssign);

// The copy alone, for scale.
void BM_DateCopy(benchmark::State &state) {
  QWZDate d{2024, 3, 15, 10, 30, 0}, r{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(d);
    r = d;
    benchmark::DoNotOptimize(r);
  }
}
BENCHMARK(BM_DateCopy);

void BM_QWZDateCompare(benchmark::State &state) {
  Handles h;
  QWZDate a{2024, 3, 15, 10, 30, 0}, b{2024, 3, 16, 10, 30, 0};
  sword r = 0;
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    QWZDateCompare(h.err, &a, &b, &r);
    benchmark::DoNotOptimize(r);
  }
}
BENCHMARK(BM_QWZDateCompare);

void BM_MktimeLocaltime(benchmark::State &state) {
  Handles h;
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    struct tm t {};
    t.tm_year = 124; t.tm_mon = 2; t.tm_mday = 15; t.tm_hour = 10; t.tm_min = 30;
    time_t s = mktime(&t) + 40 * 86400;
    struct tm out;
    localtime_r(&s, &out);
    benchmark::DoNotOptimize(out);
  }
}
BENCHMARK(BM_MktimeLocaltime);

}  // namespace

BENCHMARK_MAIN();
