// The calls that make public calls inside their own (zoned QWZDateTimeCompare
// and QWZDateTimeSubtract, QWZDateTimeIntervalAdd, the assigns and interval
// sums) take a shorter road with tracing off. Generated inputs are replayed
// through both roads, tracing off and tracing on with a hook that discards
// every record, and everything a caller can see must agree: status, the
// diagnostic's number, state and message, every output value, and the
// number of live descriptors.
#include "arith_support.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qwz_test {
namespace {

sword discard(void *, sword, ub4, ub4, const char *) { return 0; }

// Small deterministic generator for the inputs.
struct Lcg {
  std::uint64_t s;
  std::uint32_t next() {
    s = s * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<std::uint32_t>(s >> 33);
  }
  int in(int lo, int hi) { return lo + static_cast<int>(next() % static_cast<std::uint32_t>(hi - lo + 1)); }
};

// Everything a caller sees after one call.
struct Seen {
  sword status;
  Diag diag;
  std::vector<long> values;
  long live;
  bool operator==(const Seen &o) const {
    return status == o.status && diag.rc == o.diag.rc && diag.number == o.diag.number &&
           diag.state == o.diag.state && diag.message == o.diag.message && values == o.values &&
           live == o.live;
  }
};
std::ostream &operator<<(std::ostream &os, const Seen &s) {
  os << "status " << s.status << ", diag " << s.diag.number << " '" << s.diag.state << "' '"
     << s.diag.message << "', live " << s.live << ", values";
  for (long v : s.values) os << " " << v;
  return os;
}

void push(std::vector<long> &v, const QWZDateTime *d) {
  const Fields f = fields_of(d);
  for (long x : {long(f.year), long(f.month), long(f.day), long(f.hour), long(f.minute),
                 long(f.second), long(f.fraction), long(f.tz_hour), long(f.tz_minute)})
    v.push_back(x);
}
void push(std::vector<long> &v, const QWZInterval *i) {
  for (sb4 s : i->slot) v.push_back(s);
}

class NestedPathsTest : public ArithFixture, public ::testing::WithParamInterface<const char *> {
 protected:
  void TearDown() override {
    qwz_trace_flag = 0;
    QWZTraceSetHook(nullptr);
    ArithFixture::TearDown();
  }

  // Values near the calendar's ends and ordinary ones, zone offsets inside
  // and outside the accepted range, so that moves to UTC fail as well.
  Fields random_fields(Lcg &g) {
    Fields f{};
    switch (g.in(0, 5)) {
      case 0: f.year = static_cast<sb2>(g.in(9998, 9999)); break;
      case 1: f.year = static_cast<sb2>(g.in(-4712, -4711)); break;
      case 2: f.year = static_cast<sb2>(g.in(-1, 1)); break;
      default: f.year = static_cast<sb2>(g.in(1900, 2100)); break;
    }
    f.month = static_cast<ub2>(g.in(0, 5) == 0 ? g.in(0, 13) : (g.in(0, 1) ? 12 : g.in(1, 12)));
    f.day = static_cast<ub2>(g.in(0, 5) == 0 ? g.in(0, 32) : (g.in(0, 1) ? 31 : g.in(1, 28)));
    f.hour = static_cast<ub2>(g.in(0, 9) == 0 ? 24 : (g.in(0, 1) ? 23 : g.in(0, 23)));
    f.minute = static_cast<ub2>(g.in(0, 59));
    f.second = static_cast<ub2>(g.in(0, 9) == 0 ? 60 : g.in(0, 59));
    f.fraction = static_cast<ub4>(g.in(0, 3) == 0 ? 0 : g.in(0, 999999999));
    f.tz_hour = static_cast<sb1>(g.in(0, 9) == 0 ? g.in(-20, 20) : g.in(-12, 14));
    f.tz_minute = static_cast<sb1>(g.in(0, 9) == 0 ? g.in(-70, 70) : g.in(0, 3) * 15);
    return f;
  }
  void random_interval(Lcg &g, QWZInterval *i) {
    const int big = g.in(0, 5) == 0 ? 1000000 : 40;
    for (int k = 0; k < 5; ++k) i->slot[k] = g.in(-big, big);
    if (i->hdr.type == INTERVAL_KIND_YM) i->slot[2] = i->slot[3] = i->slot[4] = 0;
    else i->slot[QWZ_IV_FRACTION] = g.in(-99999, 99999);
  }

  // Runs `call` once with tracing off and once with tracing on (records
  // discarded), from the same inputs and the same stale diagnostic, and
  // expects the two to be seen alike.
  template <class Reset, class Call>
  void both_ways(int round, Reset reset, Call call) {
    Seen seen[2];
    for (int traced = 0; traced < 2; ++traced) {
      reset();
      if (round % 3 == 0) _QWZSetFrontEndErrorHandle(err_, "stale", 1);
      QWZTraceSetHook(traced ? discard : nullptr);
      qwz_trace_flag = traced;
      std::vector<long> values;
      const sword status = call(values);
      qwz_trace_flag = 0;
      QWZTraceSetHook(nullptr);
      seen[traced] = Seen{status, read_diag(err_), values, qwz_live_descriptor_count()};
    }
    EXPECT_EQ(seen[0], seen[1]) << "round " << round;
  }
};

TEST_P(NestedPathsTest, ZonedCompareAndSubtractAgreeWithAndWithoutTracing) {
  ZoneGuard zone(GetParam());
  Lcg g{0x5eed};
  const ub4 types[] = {DATETIME_KIND_TIMESTAMP_TZ, DATETIME_KIND_TIMESTAMP_TZ,
                       DATETIME_KIND_TIME_TZ, DATETIME_KIND_TIMESTAMP, DATETIME_KIND_DATE};
  for (int round = 0; round < 600; ++round) {
    const ub4 t1 = types[g.in(0, 4)];
    const ub4 t2 = g.in(0, 7) == 0 ? types[g.in(0, 4)] : t1;
    const Fields f1 = random_fields(g), f2 = random_fields(g);
    QWZDateTime *a = dt(t1, f1), *b = dt(t2, f2);
    QWZInterval *iv = new_interval(g.in(0, 1) ? INTERVAL_KIND_DS : INTERVAL_KIND_YM);
    both_ways(
        round, [&] { set(a, f1); set(b, f2); for (sb4 &s : iv->slot) s = 7; },
        [&](std::vector<long> &v) {
          sword r = 99;
          const sword status = QWZDateTimeCompare(env_, err_, a, b, &r);
          v.push_back(r);
          push(v, a);
          push(v, b);
          return status;
        });
    both_ways(
        round, [&] { set(a, f1); set(b, f2); for (sb4 &s : iv->slot) s = 7; },
        [&](std::vector<long> &v) {
          const sword status = QWZDateTimeSubtract(env_, err_, a, b, iv);
          push(v, iv);
          push(v, a);
          push(v, b);
          return status;
        });
  }
}

TEST_P(NestedPathsTest, AddsAssignsAndChecksAgreeWithAndWithoutTracing) {
  ZoneGuard zone(GetParam());
  Lcg g{0xfeed};
  for (int round = 0; round < 600; ++round) {
    const ub4 t = g.in(0, 3) ? DATETIME_KIND_TIMESTAMP_TZ : DATETIME_KIND_TIMESTAMP;
    const Fields f1 = random_fields(g), f2 = random_fields(g);
    QWZDateTime *a = dt(t, f1), *out = dt(g.in(0, 9) ? t : DATETIME_KIND_DATE, f2);
    const ub4 kind = g.in(0, 1) ? INTERVAL_KIND_DS : INTERVAL_KIND_YM;
    QWZInterval *i1 = new_interval(kind), *i2 = new_interval(g.in(0, 9) ? kind : 125 - kind);
    QWZInterval *ir = new_interval(kind);
    random_interval(g, i1);
    random_interval(g, i2);
    sb4 s1[5], s2[5];
    for (int k = 0; k < 5; ++k) { s1[k] = i1->slot[k]; s2[k] = i2->slot[k]; }
    auto reset = [&] {
      set(a, f1);
      set(out, f2);
      for (int k = 0; k < 5; ++k) { i1->slot[k] = s1[k]; i2->slot[k] = s2[k]; ir->slot[k] = 3; }
    };
    auto values = [&](std::vector<long> &v) {
      push(v, a);
      push(v, out);
      push(v, i1);
      push(v, i2);
      push(v, ir);
    };
    both_ways(round, reset, [&](std::vector<long> &v) {
      const sword s = QWZDateTimeIntervalAdd(env_, err_, a, i1, out);
      values(v);
      return s;
    });
    both_ways(round, reset, [&](std::vector<long> &v) {
      const sword s = QWZDateTimeIntervalSub(env_, err_, a, i1, out);
      values(v);
      return s;
    });
    both_ways(round, reset, [&](std::vector<long> &v) {
      const sword s = QWZDateTimeAssign(env_, err_, a, out);
      values(v);
      return s;
    });
    both_ways(round, reset, [&](std::vector<long> &v) {
      const sword s = QWZIntervalAssign(env_, err_, i1, i2);
      values(v);
      return s;
    });
    both_ways(round, reset, [&](std::vector<long> &v) {
      const sword s = QWZIntervalAdd(env_, err_, i1, i2, ir);
      values(v);
      return s;
    });
    both_ways(round, reset, [&](std::vector<long> &v) {
      const sword s = QWZIntervalSubtract(env_, err_, i1, i2, ir);
      values(v);
      return s;
    });
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, NestedPathsTest, ::testing::Values(kUtc, kCet),
                         [](const auto &info) {
                           return std::string(info.param == kUtc ? "Utc" : "Cet");
                         });

}  // namespace
}  // namespace qwz_test
