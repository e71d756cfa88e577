// Datetime arithmetic with intervals through the public frame, beside the
// bare mktime + localtime_r pair that the day-second path rests on (UTC).
#include <qwz/qwz.h>

#include <benchmark/benchmark.h>

#include "counters.h"

#include <cstdlib>
#include <ctime>

#include "handles/handles.h"

namespace {

struct Fixture {
  QWZEnv *env = nullptr;
  QWZError *err = nullptr;
  QWZDateTime *a = nullptr, *b = nullptr, *out = nullptr;
  QWZInterval *ym = nullptr, *ds = nullptr;
  Fixture() {
    setenv("TZ", "UTC0", 1);
    tzset();
    QWZEnvCreate(&env, 0);
    QWZHandleAlloc(env, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&a), DATETIME_KIND_TIMESTAMP_TZ);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&b), DATETIME_KIND_TIMESTAMP_TZ);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&out), DATETIME_KIND_TIMESTAMP_TZ);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&ym), INTERVAL_KIND_YM);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&ds), INTERVAL_KIND_DS);
    QWZDateTimeConstruct(env, err, a, 2024, 3, 15, 10, 30, 0, 0, nullptr, 0);
    QWZDateTimeConstruct(env, err, b, 2024, 1, 2, 3, 4, 5, 0, nullptr, 0);
    a->tz_hour = 2;
    b->tz_hour = -5;
    QWZIntervalSetYearMonth(env, err, 1, 2, ym);
    QWZIntervalSetDaySecond(env, err, 3, 4, 5, 6, 7, ds);
  }
  ~Fixture() { QWZHandleFree(env, QWZ_HTYPE_ENV); }
};

void BM_IntervalAddYearMonth(benchmark::State &state) {
  Fixture f;
  qwz_bench::Counted c(state);
  for (auto _ : state) benchmark::DoNotOptimize(QWZDateTimeIntervalAdd(f.env, f.err, f.a, f.ym, f.out));
}
BENCHMARK(BM_IntervalAddYearMonth);

void BM_IntervalAddDaySecond(benchmark::State &state) {
  Fixture f;
  qwz_bench::Counted c(state);
  for (auto _ : state) benchmark::DoNotOptimize(QWZDateTimeIntervalAdd(f.env, f.err, f.a, f.ds, f.out));
}
BENCHMARK(BM_IntervalAddDaySecond);

void BM_SubtractZoned(benchmark::State &state) {
  Fixture f;
  qwz_bench::Counted c(state);
  for (auto _ : state) benchmark::DoNotOptimize(QWZDateTimeSubtract(f.env, f.err, f.a, f.b, f.ds));
}
BENCHMARK(BM_SubtractZoned);

void BM_CompareZoned(benchmark::State &state) {
  Fixture f;
  sword r = 0;
  qwz_bench::Counted c(state);
  for (auto _ : state) benchmark::DoNotOptimize(QWZDateTimeCompare(f.env, f.err, f.a, f.b, &r));
}
BENCHMARK(BM_CompareZoned);

void BM_MktimeLocaltimePair(benchmark::State &state) {
  Fixture f;
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    struct tm t {};
    t.tm_year = 124; t.tm_mon = 2; t.tm_mday = 15; t.tm_hour = 10; t.tm_min = 30;
    time_t s = mktime(&t) + 3 * 86400 + 4 * 3600 + 5 * 60 + 6;
    struct tm o;
    localtime_r(&s, &o);
    benchmark::DoNotOptimize(o);
  }
}
BENCHMARK(BM_MktimeLocaltimePair);

}  // namespace

BENCHMARK_MAIN();
