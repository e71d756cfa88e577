// Properties over many generated intervals, from a fixed seed:
//   (a + b) - b has a's value, and a's fields when a is in normal form;
//   Compare orders same-signed valid intervals as their totals;
//   ToText at full precision reads back through FromText to the same fields.
#include "interval_fixture.h"

#include <cstdint>
#include <random>

using namespace qwz_test;

namespace {

constexpr std::uint64_t kSeed = 0x51575A2024ull;
constexpr int kRounds = 20000;

// Uniform enough for tests, and the same on every standard library.
class Gen {
 public:
  explicit Gen(std::uint64_t seed) : rng_(seed) {}
  // An integer in [lo, hi].
  std::int64_t in(std::int64_t lo, std::int64_t hi) {
    const std::uint64_t span = static_cast<std::uint64_t>(hi - lo) + 1;
    return lo + static_cast<std::int64_t>(rng_() % span);
  }
  bool coin() { return rng_() & 1; }

 private:
  std::mt19937_64 rng_;
};

// Largest leading-field magnitude that keeps sums away from 32-bit narrowing.
constexpr std::int64_t kLead = 100000000;

// Value in the finest unit: months, or 1/100000 seconds.
std::int64_t value_of(const QWZInterval *iv) {
  if (iv->hdr.type == INTERVAL_KIND_YM) return qwz::interval_total_months(iv);
  return qwz::interval_total_seconds(iv) * QWZ_FRACTION_PER_SECOND + iv->slot[QWZ_IV_FRACTION];
}

int sign_of(std::int64_t v) { return v > 0 ? 1 : v < 0 ? -1 : 0; }

}  // namespace

class IntervalProperties : public IntervalFixture {
 protected:
  // Any interval the check accepts (fields of either sign).
  void fill_valid(Gen &g, QWZInterval *iv) {
    if (iv->hdr.type == INTERVAL_KIND_YM) {
      iv->slot[0] = static_cast<sb4>(g.in(-kLead, kLead));
      iv->slot[1] = static_cast<sb4>(g.in(-11, 11));
      return;
    }
    iv->slot[0] = static_cast<sb4>(g.in(-kLead, kLead));
    iv->slot[1] = static_cast<sb4>(g.in(-23, 23));
    iv->slot[2] = static_cast<sb4>(g.in(-59, 59));
    iv->slot[3] = static_cast<sb4>(g.in(-59, 59));
    iv->slot[4] = static_cast<sb4>(g.in(-99999, 99999));
  }
  // A valid interval whose fields share one sign; small values are common,
  // so ties on the leading fields are exercised too.
  void fill_same_signed(Gen &g, QWZInterval *iv, std::int64_t lead) {
    const bool negative = g.coin();
    const int n = qwz::interval_slot_count(iv->hdr.type);
    const std::int64_t limits[5] = {lead, iv->hdr.type == INTERVAL_KIND_YM ? 11 : 23, 59, 59,
                                    99999};
    for (int i = 0; i < n; ++i) {
      const std::int64_t hi = g.coin() ? std::min<std::int64_t>(limits[i], 2) : limits[i];
      const std::int64_t v = g.in(0, hi);
      iv->slot[i] = static_cast<sb4>(negative ? -v : v);
    }
  }
  // The normal form of a value: what the normaliser makes of it.
  void fill_normal(Gen &g, QWZInterval *iv) {
    if (iv->hdr.type == INTERVAL_KIND_YM) {
      qwz_month_or_second_to_internal(g.in(-kLead * 12, kLead * 12), 0, 0, iv);
      return;
    }
    const std::int64_t v = g.in(-kLead * 86400 * 100000, kLead * 86400 * 100000);
    qwz_month_or_second_to_internal(0, v / 100000, static_cast<sb4>(v % 100000), iv);
  }
};

TEST_F(IntervalProperties, AddThenSubtractReturnsTheOriginal) {
  Gen g(kSeed);
  for (ub4 kind : {INTERVAL_KIND_YM, INTERVAL_KIND_DS}) {
    QWZInterval *a = new_interval(kind), *b = new_interval(kind), *s = new_interval(kind),
                *back = new_interval(kind);
    for (int i = 0; i < kRounds; ++i) {
      const bool normal = i % 2 == 0;
      if (normal) fill_normal(g, a);
      else fill_valid(g, a);
      fill_valid(g, b);
      ASSERT_EQ(QWZIntervalAdd(env_, err_, a, b, s), 0);
      ASSERT_EQ(value_of(s), value_of(a) + value_of(b));
      ASSERT_EQ(QWZIntervalSubtract(env_, err_, s, b, back), 0)
          << ::testing::PrintToString(slots_of(s));
      ASSERT_EQ(value_of(back), value_of(a));
      // A sum is always in normal form, hence valid.
      ub4 flags = 1;
      ASSERT_EQ(QWZIntervalCheck(env_, err_, s, &flags), 0);
      ASSERT_EQ(flags, 0u);
      if (normal) {
        const int n = qwz::interval_slot_count(kind);
        for (int k = 0; k < n; ++k)
          ASSERT_EQ(back->slot[k], a->slot[k])
              << ::testing::PrintToString(slots_of(a)) << " + "
              << ::testing::PrintToString(slots_of(b));
      }
    }
  }
}

TEST_F(IntervalProperties, AddIsCommutativeAndSubtractAntisymmetric) {
  Gen g(kSeed + 1);
  for (ub4 kind : {INTERVAL_KIND_YM, INTERVAL_KIND_DS}) {
    QWZInterval *a = new_interval(kind), *b = new_interval(kind), *ab = new_interval(kind),
                *ba = new_interval(kind);
    for (int i = 0; i < kRounds; ++i) {
      fill_valid(g, a);
      fill_valid(g, b);
      ASSERT_EQ(QWZIntervalAdd(env_, err_, a, b, ab), 0);
      ASSERT_EQ(QWZIntervalAdd(env_, err_, b, a, ba), 0);
      ASSERT_EQ(slots_of(ab), slots_of(ba));
      ASSERT_EQ(QWZIntervalSubtract(env_, err_, a, b, ab), 0);
      ASSERT_EQ(QWZIntervalSubtract(env_, err_, b, a, ba), 0);
      ASSERT_EQ(value_of(ab), -value_of(ba));
    }
  }
}

TEST_F(IntervalProperties, CompareFollowsTheTotalsOfSameSignedIntervals) {
  Gen g(kSeed + 2);
  for (ub4 kind : {INTERVAL_KIND_YM, INTERVAL_KIND_DS}) {
    QWZInterval *a = new_interval(kind), *b = new_interval(kind);
    for (int i = 0; i < kRounds; ++i) {
      const std::int64_t lead = i % 3 == 0 ? 2 : kLead;
      fill_same_signed(g, a, lead);
      if (i % 5 == 0) {
        for (int k = 0; k < 5; ++k) b->slot[k] = a->slot[k];
      } else {
        fill_same_signed(g, b, lead);
      }
      sword r = 42;
      ASSERT_EQ(QWZIntervalCompare(env_, err_, a, b, &r), 0);
      ASSERT_EQ(r, sign_of(value_of(a) - value_of(b)))
          << ::testing::PrintToString(slots_of(a)) << " vs "
          << ::testing::PrintToString(slots_of(b));
    }
  }
}

TEST_F(IntervalProperties, FullPrecisionTextReadsBack) {
  Gen g(kSeed + 3);
  for (ub4 kind : {INTERVAL_KIND_YM, INTERVAL_KIND_DS}) {
    QWZInterval *a = new_interval(kind), *back = new_interval(kind);
    int read_back = 0, out_of_range = 0;
    for (int i = 0; i < kRounds; ++i) {
      // Leading fields around and beyond what the reader accepts.
      const std::int64_t lead = kind == INTERVAL_KIND_YM ? (i % 2 ? 9999 : 20000)
                                                         : (i % 2 ? 999999999 : 2147483647);
      fill_same_signed(g, a, lead);
      QWZtext buf[QWZ_INTERVAL_DS_TEXT_MAX + 1] = {};
      size_t len = 0;
      ASSERT_EQ(QWZIntervalToText(env_, err_, a, 9, 5, buf, sizeof buf, &len), 0);
      for (int k = 0; k < 5; ++k) back->slot[k] = 7;
      const sword rc = QWZIntervalFromText(env_, err_, buf, len, back);
      const std::int64_t limit = kind == INTERVAL_KIND_YM ? 9999 : 999999999;
      const std::int64_t lead_mag = a->slot[0] < 0 ? -std::int64_t{a->slot[0]} : a->slot[0];
      if (lead_mag <= limit) {
        ASSERT_EQ(rc, 0) << buf;
        const int n = qwz::interval_slot_count(kind);
        for (int k = 0; k < n; ++k) ASSERT_EQ(back->slot[k], a->slot[k]) << buf;
        ++read_back;
      } else {
        ASSERT_EQ(rc, QWZ_ERROR) << buf;
        EXPECT_EQ(diag().number, kind == INTERVAL_KIND_YM ? 800081 : 800074);
        ++out_of_range;
      }
    }
    EXPECT_GT(read_back, kRounds / 3);
    EXPECT_GT(out_of_range, kRounds / 10);
  }
}
