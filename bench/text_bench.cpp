// Text conversions through the public frame, beside the C library's
// strptime / strftime of the same shape, in UTC:
//   dates      'YYYY-MM-DD HH24:MI:SS'      vs "%Y-%m-%d %H:%M:%S"
//   datetimes  'YYYY-MM-DD HH24:MI:SS.FF3'  vs the same plus three digits
// and beside the PostgreSQL client library's timestamp text functions on the
// same values (peer.h; those rows are skipped when it is not installed).
// Each benchmark checks its result once before timing and reports, per
// call, the heap allocations and clock reads it made (both should be 0 for
// the library's rows).
#include <qwz/qwz.h>

#include <benchmark/benchmark.h>

#include "counters.h"
#include "peer.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

using qwz_bench::Counted;

const QWZtext *U(const char *s) { return reinterpret_cast<const QWZtext *>(s); }

constexpr char kDateText[] = "2024-05-17 10:20:30";
constexpr char kDateFormat[] = "YYYY-MM-DD HH24:MI:SS";
constexpr char kTsText[] = "2024-05-17 10:20:30.123";
constexpr char kTsFormat[] = "YYYY-MM-DD HH24:MI:SS.FF3";
constexpr char kCFormat[] = "%Y-%m-%d %H:%M:%S";

void BM_QWZDateFromText(benchmark::State &state) {
  Handles h;
  QWZDate d{};
  if (QWZDateFromText(h.err, U(kDateText), 19, U(kDateFormat), 21, nullptr, 0, &d) != 0 ||
      d.year != 2024 || d.month != 5 || d.day != 17 || d.hour != 10 || d.minute != 20 ||
      d.second != 30)
    state.SkipWithError("wrong result");
  Counted c(state);
  for (auto _ : state) {
    QWZDateFromText(h.err, U(kDateText), 19, U(kDateFormat), 21, nullptr, 0, &d);
    benchmark::DoNotOptimize(d);
  }
}
BENCHMARK(BM_QWZDateFromText);

void BM_Strptime(benchmark::State &state) {
  Handles h;
  struct tm t {};
  if (!strptime(kDateText, kCFormat, &t) || t.tm_year != 124 || t.tm_sec != 30)
    state.SkipWithError("wrong result");
  Counted c(state);
  for (auto _ : state) {
    struct tm out {};
    benchmark::DoNotOptimize(strptime(kDateText, kCFormat, &out));
    benchmark::DoNotOptimize(out);
  }
}
BENCHMARK(BM_Strptime);

void BM_QWZDateToText(benchmark::State &state) {
  Handles h;
  const QWZDate d{2024, 5, 17, 10, 20, 30};
  QWZtext buf[64] = {};
  ub4 size = 63;
  if (QWZDateToText(h.err, &d, U(kDateFormat), 21, nullptr, 0, &size, buf) != 0 ||
      std::strcmp(reinterpret_cast<char *>(buf), kDateText) != 0)
    state.SkipWithError("wrong result");
  Counted c(state);
  for (auto _ : state) {
    QWZDateToText(h.err, &d, U(kDateFormat), 21, nullptr, 0, &size, buf);
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_QWZDateToText);

void BM_Strftime(benchmark::State &state) {
  Handles h;
  struct tm t {};
  t.tm_year = 124; t.tm_mon = 4; t.tm_mday = 17; t.tm_hour = 10; t.tm_min = 20; t.tm_sec = 30;
  char buf[64];
  if (strftime(buf, sizeof buf, kCFormat, &t) != 19 || std::strcmp(buf, kDateText) != 0)
    state.SkipWithError("wrong result");
  Counted c(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(strftime(buf, sizeof buf, kCFormat, &t));
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_Strftime);

void BM_QWZDateTimeFromText(benchmark::State &state) {
  Handles h;
  void *p = nullptr;
  QWZDescriptorAlloc(h.env, &p, DATETIME_KIND_TIMESTAMP);
  auto *dt = static_cast<QWZDateTime *>(p);
  QWZText *text = const_cast<QWZText *>(U(kTsText));
  QWZText *fmt = const_cast<QWZText *>(U(kTsFormat));
  // Checked by writing it back with a format that shows every digit read.
  QWZtext back[64] = {};
  ub4 size = 63;
  if (QWZDateTimeFromText(h.env, h.err, text, 23, fmt, 25, nullptr, 0, dt) != 0 ||
      QWZDateTimeToText(h.env, h.err, dt, U("YYYY-MM-DD HH24:MI:SS.FF5"), 25, 0, nullptr, 0,
                        &size, back) != 0 ||
      std::strcmp(reinterpret_cast<char *>(back), "2024-05-17 10:20:30.12300") != 0)
    state.SkipWithError("wrong result");
  Counted c(state);
  for (auto _ : state) {
    QWZDateTimeFromText(h.env, h.err, text, 23, fmt, 25, nullptr, 0, dt);
    benchmark::DoNotOptimize(dt);
  }
}
BENCHMARK(BM_QWZDateTimeFromText);

void BM_StrptimeFraction(benchmark::State &state) {
  Handles h;
  Counted c(state);
  for (auto _ : state) {
    struct tm out {};
    const char *rest = strptime(kTsText, kCFormat, &out);
    long ns = 0;
    if (rest && rest[0] == '.')
      ns = ((rest[1] - '0') * 100 + (rest[2] - '0') * 10 + (rest[3] - '0')) * 1000000L;
    benchmark::DoNotOptimize(out);
    benchmark::DoNotOptimize(ns);
  }
}
BENCHMARK(BM_StrptimeFraction);

void BM_QWZDateTimeToText(benchmark::State &state) {
  Handles h;
  void *p = nullptr;
  QWZDescriptorAlloc(h.env, &p, DATETIME_KIND_TIMESTAMP);
  auto *dt = static_cast<QWZDateTime *>(p);
  QWZDateTimeFromText(h.env, h.err, const_cast<QWZText *>(U(kTsText)), 23,
                      const_cast<QWZText *>(U(kTsFormat)), 25, nullptr, 0, dt);
  QWZtext buf[64] = {};
  ub4 size = 63;
  if (QWZDateTimeToText(h.env, h.err, dt, U(kTsFormat), 25, 3, nullptr, 0, &size, buf) != 0 ||
      std::strcmp(reinterpret_cast<char *>(buf), kTsText) != 0)
    state.SkipWithError("wrong result");
  Counted c(state);
  for (auto _ : state) {
    QWZDateTimeToText(h.env, h.err, dt, U(kTsFormat), 25, 3, nullptr, 0, &size, buf);
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_QWZDateTimeToText);

void BM_StrftimeFraction(benchmark::State &state) {
  Handles h;
  struct tm t {};
  t.tm_year = 124; t.tm_mon = 4; t.tm_mday = 17; t.tm_hour = 10; t.tm_min = 20; t.tm_sec = 30;
  const long ns = 123000000;
  char buf[64];
  Counted c(state);
  for (auto _ : state) {
    size_t n = strftime(buf, sizeof buf, kCFormat, &t);
    const long ms = ns / 1000000;
    buf[n++] = '.';
    buf[n++] = static_cast<char>('0' + ms / 100);
    buf[n++] = static_cast<char>('0' + ms / 10 % 10);
    buf[n++] = static_cast<char>('0' + ms % 10);
    buf[n] = '\0';
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_StrftimeFraction);

// The peer reads and writes the same timestamps (its texts come back in
// allocated memory, which it frees).
void BM_PeerTimestampFromAsc(benchmark::State &state, const char *text) {
  if (!qwz_bench::peer_ready(state)) return;
  const auto &pg = qwz_bench::peer();
  char copy[64];
  std::strcpy(copy, text);
  if (pg.timestamp_from_asc(copy, nullptr) == 0) state.SkipWithError("peer failed");
  Counted c(state);
  for (auto _ : state) {
    std::int64_t ts = pg.timestamp_from_asc(copy, nullptr);
    benchmark::DoNotOptimize(ts);
  }
}
BENCHMARK_CAPTURE(BM_PeerTimestampFromAsc, seconds, kDateText);
BENCHMARK_CAPTURE(BM_PeerTimestampFromAsc, fraction, kTsText);

void BM_PeerTimestampToAsc(benchmark::State &state, const char *text) {
  if (!qwz_bench::peer_ready(state)) return;
  const auto &pg = qwz_bench::peer();
  char copy[64];
  std::strcpy(copy, text);
  const std::int64_t ts = pg.timestamp_from_asc(copy, nullptr);
  char *back = pg.timestamp_to_asc(ts);
  if (!back || std::strcmp(back, text) != 0) state.SkipWithError("peer wrote another text");
  if (back) pg.char_free(back);
  Counted c(state);
  for (auto _ : state) {
    char *out = pg.timestamp_to_asc(ts);
    benchmark::DoNotOptimize(out);
    pg.char_free(out);
  }
}
BENCHMARK_CAPTURE(BM_PeerTimestampToAsc, seconds, kDateText);
BENCHMARK_CAPTURE(BM_PeerTimestampToAsc, fraction, kTsText);

}  // namespace

BENCHMARK_MAIN();
