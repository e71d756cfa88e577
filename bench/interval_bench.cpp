// Interval sums and text conversion through the public frame, for both kinds,
// and the PostgreSQL client library's interval text functions on the same
// values (peer.h; skipped when it is not installed).
// Descriptors and buffers are set up once; the timed loops allocate nothing.
#include <qwz/qwz.h>

#include <benchmark/benchmark.h>

#include "counters.h"
#include "peer.h"

#include <cstring>

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

// The same intervals as the peer writes them and reads them back: 12 years 7
// months, and 12 days 07:30:59.75.
void BM_PeerIntervalFromAsc(benchmark::State &state, const char *text) {
  if (!qwz_bench::peer_ready(state)) return;
  const auto &pg = qwz_bench::peer();
  char copy[64];
  std::strcpy(copy, text);
  qwz_bench::PeerInterval *iv = pg.interval_from_asc(copy, nullptr);
  if (!iv) state.SkipWithError("peer failed");
  else pg.interval_free(iv);
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    qwz_bench::PeerInterval *r = pg.interval_from_asc(copy, nullptr);
    benchmark::DoNotOptimize(r);
    pg.interval_free(r);
  }
}
BENCHMARK_CAPTURE(BM_PeerIntervalFromAsc, year_month, "-12 years -7 mons");
BENCHMARK_CAPTURE(BM_PeerIntervalFromAsc, day_second, "-12 days -07:30:59.75");

void BM_PeerIntervalToAsc(benchmark::State &state, qwz_bench::PeerInterval value) {
  if (!qwz_bench::peer_ready(state)) return;
  const auto &pg = qwz_bench::peer();
  qwz_bench::Counted c(state);
  for (auto _ : state) {
    char *out = pg.interval_to_asc(&value);
    benchmark::DoNotOptimize(out);
    pg.char_free(out);
  }
}
BENCHMARK_CAPTURE(BM_PeerIntervalToAsc, year_month, qwz_bench::PeerInterval{0, 12 * 12 + 7});
BENCHMARK_CAPTURE(BM_PeerIntervalToAsc, day_second,
                  qwz_bench::PeerInterval{(12LL * 86400 + 7 * 3600 + 30 * 60 + 59) * 1000000 +
                                              750000,
                                          0});

}  // namespace

BENCHMARK_MAIN();
