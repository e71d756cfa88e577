// Interval sums and text conversion through the public frame, for both kinds.
// Descriptors and buffers are set up once; the timed loops allocate nothing.
#include <qwz/qwz.h>

#include <benchmark/benchmark.h>

#include "counters.h"

namespace {

struct Handles {
  QWZEnv *env = nullptr;
  QWZError *err = nullptr;
  QWZInterval *a = nullptr, *b = nullptr, *r = nullptr;
  explicit Handles(ub4 kind) {
    QWZEnvCreate(&env, 0);
    QWZHandleAlloc(env, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&a), kind);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&b), kind);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&r), kind);
    if (kind == INTERVAL_KIND_YM) {
      QWZIntervalSetYearMonth(env, err, 12, 7, a);
      QWZIntervalSetYearMonth(env, err, -3, -9, b);
    } else {
      QWZIntervalSetDaySecond(env, err, 12, 7, 30, 59, 75000, a);
      QWZIntervalSetDaySecond(env, err, -3, -9, -45, -1, -50000, b);
    }
  }
  ~Handles() { QWZHandleFree(env, QWZ_HTYPE_ENV); }
};

void BM_QWZIntervalAdd(benchmark::State &state) {
  Handles h(static_cast<ub4>(state.range(0)));
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    sword rc = QWZIntervalAdd(h.env, h.err, h.a, h.b, h.r);
    benchmark::DoNotOptimize(rc);
  }
}
BENCHMARK(BM_QWZIntervalAdd)->Arg(INTERVAL_KIND_YM)->Arg(INTERVAL_KIND_DS);

void BM_QWZIntervalSubtract(benchmark::State &state) {
  Handles h(static_cast<ub4>(state.range(0)));
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    sword rc = QWZIntervalSubtract(h.env, h.err, h.a, h.b, h.r);
    benchmark::DoNotOptimize(rc);
  }
}
BENCHMARK(BM_QWZIntervalSubtract)->Arg(INTERVAL_KIND_YM)->Arg(INTERVAL_KIND_DS);

// The frame, the nested check of the source and the copy.
void BM_QWZIntervalAssign(benchmark::State &state) {
  Handles h(static_cast<ub4>(state.range(0)));
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    sword rc = QWZIntervalAssign(h.env, h.err, h.a, h.r);
    benchmark::DoNotOptimize(rc);
  }
}
BENCHMARK(BM_QWZIntervalAssign)->Arg(INTERVAL_KIND_YM)->Arg(INTERVAL_KIND_DS);

void BM_QWZIntervalToText(benchmark::State &state) {
  Handles h(static_cast<ub4>(state.range(0)));
  QWZtext buf[32];
  size_t len = 0;
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    buf[0] = 0;
    sword rc = QWZIntervalToText(h.env, h.err, h.a, 9, 5, buf, sizeof buf, &len);
    benchmark::DoNotOptimize(rc);
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_QWZIntervalToText)->Arg(INTERVAL_KIND_YM)->Arg(INTERVAL_KIND_DS);

void BM_QWZIntervalFromText(benchmark::State &state) {
  const ub4 kind = static_cast<ub4>(state.range(0));
  Handles h(kind);
  const char *text = kind == INTERVAL_KIND_YM ? "-0012-07" : "-12 07:30:59.75000";
  size_t n = 0;
  while (text[n]) ++n;
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    sword rc = QWZIntervalFromText(h.env, h.err, reinterpret_cast<const QWZText *>(text), n, h.r);
    benchmark::DoNotOptimize(rc);
  }
}
BENCHMARK(BM_QWZIntervalFromText)->Arg(INTERVAL_KIND_YM)->Arg(INTERVAL_KIND_DS);

}  // namespace

BENCHMARK_MAIN();
