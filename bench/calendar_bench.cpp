// The calendar operations through the public frame, beside the bare C library
// pair (mktime + localtime_r) and std::chrono civil arithmetic doing the same
// work, in five zone settings: UTC, Central Europe in winter, in summer and
// after 2037, and TZ unset (the system zone). Every row reports how many
// conversions its loop handed to the C library ("handovers"; 0 is the aim).
// The last rows run two threads on distinct handles.
#include <qwz/qwz.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "handles/handles.h"
#include "zone/zone.h"

namespace {

struct Setting {
  const char *tz;  // nullptr: unset
  QWZDate date;
};

const Setting kSettings[] = {
    {"UTC0", {2024, 3, 15, 10, 30, 0}},
    {"Europe/Berlin", {2024, 1, 15, 10, 30, 0}},
    {"Europe/Berlin", {2024, 7, 15, 10, 30, 0}},
    {"Europe/Berlin", {2061, 7, 15, 10, 30, 0}},
    {nullptr, {2024, 7, 15, 10, 30, 0}},
};

void set_zone(const benchmark::State &state) {
  const Setting &s = kSettings[state.range(0)];
  if (s.tz) setenv("TZ", s.tz, 1);
  else unsetenv("TZ");
  tzset();
}

const char *label(std::int64_t i) {
  static const char *names[] = {"UTC0", "Berlin-winter", "Berlin-summer", "Berlin-2061",
                                "TZ-unset"};
  return names[i];
}

struct Fixture {
  QWZEnv *env = nullptr;
  QWZError *err = nullptr;
  QWZDateTime *a = nullptr, *b = nullptr, *out = nullptr;
  QWZInterval *ds = nullptr;
  QWZDate date;
  std::uint64_t handovers_at_start;
  explicit Fixture(const benchmark::State &state) : date(kSettings[state.range(0)].date) {
    QWZEnvCreate(&env, 0);
    QWZHandleAlloc(env, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&a), DATETIME_KIND_TIMESTAMP_TZ);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&b), DATETIME_KIND_TIMESTAMP_TZ);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&out), DATETIME_KIND_TIMESTAMP_TZ);
    QWZDescriptorAlloc(env, reinterpret_cast<void **>(&ds), INTERVAL_KIND_DS);
    QWZDateTimeConstruct(env, err, a, date.year, static_cast<ub1>(date.month),
                         static_cast<ub1>(date.day), 10, 30, 0, 0, nullptr, 0);
    QWZDateTimeConstruct(env, err, b, date.year, static_cast<ub1>(date.month), 2, 3, 4, 5, 0,
                         nullptr, 0);
    a->tz_hour = 2;
    b->tz_hour = -5;
    QWZIntervalSetDaySecond(env, err, 3, 4, 5, 6, 7, ds);
    handovers_at_start = qwz::zone::handovers();
  }
  void finish(benchmark::State &state) {
    state.counters["handovers"] =
        static_cast<double>(qwz::zone::handovers() - handovers_at_start);
    state.SetLabel(label(state.range(0)));
    state.SetItemsProcessed(state.iterations());
  }
  ~Fixture() { QWZHandleFree(env, QWZ_HTYPE_ENV); }
};

void BM_QWZDateAddDays(benchmark::State &state) {
  Fixture f(state);
  QWZDate r{};
  for (auto _ : state) {
    QWZDateAddDays(f.err, &f.date, 40, &r);
    benchmark::DoNotOptimize(r);
  }
  f.finish(state);
}

void BM_QWZDateAddMonths(benchmark::State &state) {
  Fixture f(state);
  QWZDate r{};
  for (auto _ : state) {
    QWZDateAddMonths(f.err, &f.date, 5, &r);
    benchmark::DoNotOptimize(r);
  }
  f.finish(state);
}

void BM_QWZDateDaysBetween(benchmark::State &state) {
  Fixture f(state);
  QWZDate other = f.date;
  other.day = 2;
  sb4 r = 0;
  for (auto _ : state) {
    QWZDateDaysBetween(f.err, &f.date, &other, &r);
    benchmark::DoNotOptimize(r);
  }
  f.finish(state);
}

void BM_QWZDateNextDay(benchmark::State &state) {
  Fixture f(state);
  QWZDate r{};
  for (auto _ : state) {
    QWZDateNextDay(f.err, &f.date, reinterpret_cast<const QWZtext *>("friday"), 6, &r);
    benchmark::DoNotOptimize(r);
  }
  f.finish(state);
}

void BM_QWZDateTimeIntervalAdd(benchmark::State &state) {
  Fixture f(state);
  for (auto _ : state) benchmark::DoNotOptimize(QWZDateTimeIntervalAdd(f.env, f.err, f.a, f.ds, f.out));
  f.finish(state);
}

void BM_QWZDateTimeSubtract(benchmark::State &state) {
  Fixture f(state);
  for (auto _ : state) benchmark::DoNotOptimize(QWZDateTimeSubtract(f.env, f.err, f.a, f.b, f.ds));
  f.finish(state);
}

void BM_QWZDateTimeCompare(benchmark::State &state) {
  Fixture f(state);
  sword r = 0;
  for (auto _ : state) benchmark::DoNotOptimize(QWZDateTimeCompare(f.env, f.err, f.a, f.b, &r));
  f.finish(state);
}

// The C library pair doing one add-days move: fields to seconds and back.
void BM_MktimeLocaltime(benchmark::State &state) {
  Fixture f(state);
  for (auto _ : state) {
    struct tm t;
    std::memset(&t, 0, sizeof t);
    t.tm_year = f.date.year - 1900;
    t.tm_mon = f.date.month - 1;
    t.tm_mday = f.date.day;
    t.tm_hour = f.date.hour;
    t.tm_min = f.date.minute;
    const time_t s = mktime(&t) + 40 * 86400;
    struct tm out;
    localtime_r(&s, &out);
    benchmark::DoNotOptimize(out);
  }
  f.finish(state);
}

// The same move as civil arithmetic with std::chrono (no zone at all).
void BM_ChronoCivil(benchmark::State &state) {
  Fixture f(state);
  using namespace std::chrono;
  for (auto _ : state) {
    const year_month_day ymd{year{f.date.year}, month{f.date.month}, day{f.date.day}};
    const sys_seconds s = sys_days{ymd} + hours{f.date.hour} + minutes{f.date.minute} +
                          seconds{f.date.second} + days{40};
    const sys_days d = floor<days>(s);
    const year_month_day back{d};
    const hh_mm_ss<seconds> hms{s - d};
    QWZDate r{static_cast<sb2>(static_cast<int>(back.year())),
              static_cast<ub2>(static_cast<unsigned>(back.month())),
              static_cast<ub2>(static_cast<unsigned>(back.day())),
              static_cast<ub2>(hms.hours().count()), static_cast<ub2>(hms.minutes().count()),
              static_cast<ub2>(hms.seconds().count())};
    benchmark::DoNotOptimize(r);
  }
  f.finish(state);
}

void settings(benchmark::internal::Benchmark *b) {
  b->Setup(set_zone)->DenseRange(0, 4);
}

BENCHMARK(BM_MktimeLocaltime)->Apply(settings);
BENCHMARK(BM_ChronoCivil)->Apply(settings);
BENCHMARK(BM_QWZDateAddDays)->Apply(settings);
BENCHMARK(BM_QWZDateAddMonths)->Apply(settings);
BENCHMARK(BM_QWZDateDaysBetween)->Apply(settings);
BENCHMARK(BM_QWZDateNextDay)->Apply(settings);
BENCHMARK(BM_QWZDateTimeIntervalAdd)->Apply(settings);
BENCHMARK(BM_QWZDateTimeSubtract)->Apply(settings);
BENCHMARK(BM_QWZDateTimeCompare)->Apply(settings);
// Two threads on distinct handles against one, by throughput.
BENCHMARK(BM_QWZDateAddDays)->Setup(set_zone)->Arg(2)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
