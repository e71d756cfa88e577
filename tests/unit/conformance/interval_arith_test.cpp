// Interval comparison, addition and subtraction through the public
// interface: results, the order of the checks, trace records, and
// properties over generated values.
#include "interval_conformance.h"

#include <climits>
#include <cstdint>
#include <random>

using namespace qwz_conf;

namespace {

// The value of a day-second interval in 1/100000 second.
std::int64_t ds_value(const Fields &f) {
  return ((std::int64_t{f[0]} * 86400 + std::int64_t{f[1]} * 3600 + std::int64_t{f[2]} * 60 +
           f[3]) *
          100000) +
         f[4];
}

int sign_of(std::int64_t v) { return v > 0 ? 1 : v < 0 ? -1 : 0; }

}  // namespace

class QWZIntervalCompareOrder : public IntervalConformance {
 protected:
  sword compare(const QWZInterval *a, const QWZInterval *b) {
    sword r = 77;
    EXPECT_EQ(QWZIntervalCompare(env_, err_, a, b, &r), QWZ_SUCCESS);
    return r;
  }
};

TEST_F(QWZIntervalCompareOrder, FieldByFieldInSlotOrder) {
  const struct {
    YearMonth a, b;
    sword r;
  } ym_cases[] = {
      {{1, 2}, {1, 2}, 0},   {{1, 2}, {1, 3}, -1},    {{2, 0}, {1, 11}, 1},
      {{1, -11}, {0, 1}, 1},  // same span, no normalisation
      {{-1, -2}, {-1, -1}, -1}, {{0, 0}, {-0, 0}, 0}, {{INT32_MIN, 0}, {INT32_MAX, 0}, -1},
  };
  for (const auto &c : ym_cases) {
    leave_diag();
    EXPECT_EQ(compare(ym(c.a.first, c.a.second), ym(c.b.first, c.b.second)), c.r);
    expect_clear();
  }
  const struct {
    Fields a, b;
    sword r;
  } ds_cases[] = {
      {{1, 2, 3, 4, 5}, {1, 2, 3, 4, 5}, 0},
      {{0, 0, 0, 0, 1}, {0, 0, 0, 0, 0}, 1},
      {{0, 0, 0, 0, 0}, {0, 0, 0, 0, 1}, -1},
      {{1, 0, 0, 0, 0}, {0, 23, 59, 59, 99999}, 1},
      {{0, 1, -59, 0, 0}, {0, 0, 59, 0, 0}, 1},  // no normalisation
      {{0, 0, 0, 1, 0}, {0, 0, 0, 0, 99999}, 1},
      {{-1, 0, 0, 0, 0}, {0, -23, 0, 0, 0}, -1},
      {{0, 0, 1, 0, 0}, {0, 0, 0, 59, 0}, 1},
      {{0, 0, 0, 0, -1}, {0, 0, 0, 0, 0}, -1},
      {{INT32_MIN, 0, 0, 0, 0}, {INT32_MAX, 0, 0, 0, 0}, -1},
  };
  for (const auto &c : ds_cases) {
    leave_diag();
    EXPECT_EQ(compare(ds(c.a), ds(c.b)), c.r);
    expect_clear();
  }
}

TEST_F(QWZIntervalCompareOrder, NullResultAnswersZeroWithTheErrorRecorded) {
  EXPECT_EQ(QWZIntervalCompare(env_, err_, ym(1, 2), ym(1, 2), nullptr), QWZ_SUCCESS);
  expect_null_param(5);
  // Before the value checks.
  EXPECT_EQ(QWZIntervalCompare(env_, err_, ym(0, 12), ds(0, 24, 0, 0, 0), nullptr), QWZ_SUCCESS);
  expect_null_param(5);
  // After the handle checks.
  EXPECT_EQ(QWZIntervalCompare(env_, err_, nullptr, ym(1, 2), nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}

TEST_F(QWZIntervalCompareOrder, CheckOrder) {
  sword r = 77;
  // Either operand failing the check names parameter 3.
  EXPECT_EQ(QWZIntervalCompare(env_, err_, ym(0, 12), ym(1, 2), &r), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(QWZIntervalCompare(env_, err_, ym(1, 2), ym(0, -12), &r), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(QWZIntervalCompare(env_, err_, ds(1, 2, 3, 4, 5), ds(0, 0, 0, 0, 100000), &r),
            QWZ_ERROR);
  expect_interval_invalid(3);
  // Kinds differ.
  EXPECT_EQ(QWZIntervalCompare(env_, err_, ym(1, 2), ds(1, 2, 3, 4, 5), &r), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(QWZIntervalCompare(env_, err_, ds(1, 2, 3, 4, 5), ym(1, 2), &r), QWZ_ERROR);
  expect_type_diff();
  // An invalid operand wins over different kinds.
  EXPECT_EQ(QWZIntervalCompare(env_, err_, ym(1, 2), ds(0, 0, 60, 0, 0), &r), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(r, 77);
  for (const QWZInterval *bad : bad_descriptors()) {
    EXPECT_EQ(QWZIntervalCompare(env_, err_, bad, ym(0, 12), nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(QWZIntervalCompare(env_, err_, ym(0, 12), bad, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  for (void *h : bad_contexts()) {
    EXPECT_EQ(QWZIntervalCompare(h, err_, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(r, 77);
}

class QWZIntervalSum : public IntervalConformance {
 protected:
  YearMonth add_ym(YearMonth a, YearMonth b) {
    QWZInterval *r = ym(99, 99);
    leave_diag();
    EXPECT_EQ(QWZIntervalAdd(env_, err_, ym(a.first, a.second), ym(b.first, b.second), r),
              QWZ_SUCCESS);
    expect_clear();
    return get_ym(r);
  }
  YearMonth sub_ym(YearMonth a, YearMonth b) {
    QWZInterval *r = ym(99, 99);
    leave_diag();
    EXPECT_EQ(QWZIntervalSubtract(env_, err_, ym(a.first, a.second), ym(b.first, b.second), r),
              QWZ_SUCCESS);
    expect_clear();
    return get_ym(r);
  }
  Fields add_ds(const Fields &a, const Fields &b) {
    QWZInterval *r = ds(99, 99, 99, 99, 99);
    leave_diag();
    EXPECT_EQ(QWZIntervalAdd(session_, err_, ds(a), ds(b), r), QWZ_SUCCESS);
    expect_clear();
    return get_ds(r);
  }
  Fields sub_ds(const Fields &a, const Fields &b) {
    QWZInterval *r = ds(99, 99, 99, 99, 99);
    leave_diag();
    EXPECT_EQ(QWZIntervalSubtract(session_, err_, ds(a), ds(b), r), QWZ_SUCCESS);
    expect_clear();
    return get_ds(r);
  }
};

TEST_F(QWZIntervalSum, YearMonth) {
  EXPECT_EQ(add_ym({1, 11}, {0, 1}), YearMonth(2, 0));
  EXPECT_EQ(add_ym({0, -11}, {0, -2}), YearMonth(-1, -1));
  EXPECT_EQ(sub_ym({0, 6}, {1, 0}), YearMonth(0, -6));
  EXPECT_EQ(add_ym({0, 0}, {0, -11}), YearMonth(0, -11));
  EXPECT_EQ(add_ym({1, -11}, {0, 0}), YearMonth(0, 1));
  EXPECT_EQ(add_ym({0, 0}, {-1, -2}), YearMonth(-1, -2));
  EXPECT_EQ(sub_ym({-1, -2}, {-1, -2}), YearMonth(0, 0));
  EXPECT_EQ(sub_ym({5, 3}, {-2, -11}), YearMonth(8, 2));
  // The leading field is never checked, so it carries without limit and is
  // narrowed to 32 bits.
  EXPECT_EQ(add_ym({INT32_MAX, 11}, {0, 1}), YearMonth(INT32_MIN, 0));
  EXPECT_EQ(add_ym({INT32_MAX, 11}, {INT32_MAX, 11}), YearMonth(-1, 10));
  EXPECT_EQ(add_ym({INT32_MIN, -11}, {INT32_MIN, -11}), YearMonth(-1, -10));
  // Negating the most negative year leaves it as it is.
  EXPECT_EQ(sub_ym({0, 0}, {INT32_MIN, 0}), YearMonth(INT32_MIN, 0));
  EXPECT_EQ(sub_ym({0, 1}, {INT32_MIN, 0}), YearMonth(INT32_MIN + 1, -11));
}

TEST_F(QWZIntervalSum, DaySecond) {
  // Borrow across every field.
  EXPECT_EQ(sub_ds({1, 0, 0, 0, 0}, {0, 0, 0, 0, 10000}), (Fields{0, 23, 59, 59, 90000}));
  // Fraction carries: 150000 is one second and 50000; 99999 stays.
  EXPECT_EQ(add_ds({0, 0, 0, 0, 75000}, {0, 0, 0, 0, 75000}), (Fields{0, 0, 0, 1, 50000}));
  EXPECT_EQ(add_ds({0, 0, 0, 0, 50000}, {0, 0, 0, 0, 49999}), (Fields{0, 0, 0, 0, 99999}));
  EXPECT_EQ(add_ds({0, 0, 0, 0, 50000}, {0, 0, 0, 0, 50000}), (Fields{0, 0, 0, 1, 0}));
  EXPECT_EQ(add_ds({0, 0, 0, 0, -75000}, {0, 0, 0, 0, -75000}), (Fields{0, 0, 0, -1, -50000}));
  // Worked example: 1 second minus half a second.
  EXPECT_EQ(sub_ds({0, 0, 0, 1, 0}, {0, 0, 0, 0, 50000}), (Fields{0, 0, 0, 0, 50000}));
  // A zero total keeps a negative fraction.
  EXPECT_EQ(sub_ds({0, 0, 0, 0, 0}, {0, 0, 0, 0, 50000}), (Fields{0, 0, 0, 0, -50000}));
  // A negative total takes the fraction's sign.
  EXPECT_EQ(add_ds({0, 0, 0, -1, 0}, {0, 0, 0, 0, 50000}), (Fields{0, 0, 0, 0, -50000}));
  EXPECT_EQ(add_ds({0, 0, 0, -2, 0}, {0, 0, 0, 0, 50000}), (Fields{0, 0, 0, -1, -50000}));
  EXPECT_EQ(add_ds({0, 0, 0, 2, 0}, {0, 0, 0, 0, -50000}), (Fields{0, 0, 0, 1, 50000}));
  // Totals back to fields, truncating toward zero.
  EXPECT_EQ(sub_ds({0, 0, 0, 0, 0}, {0, 0, 0, 1, 0}), (Fields{0, 0, 0, -1, 0}));
  EXPECT_EQ(add_ds({0, 23, 59, 59, 0}, {0, 1, 1, 2, 0}), (Fields{1, 1, 1, 1, 0}));
  EXPECT_EQ(add_ds({-1, -2, -3, -4, -5}, {0, 0, 0, 0, 0}), (Fields{-1, -2, -3, -4, -5}));
  EXPECT_EQ(add_ds({1, -23, 0, 0, 0}, {0, 0, 0, 0, 0}), (Fields{0, 1, 0, 0, 0}));
  EXPECT_EQ(sub_ds({1, 2, 3, 4, 5}, {2, 2, 3, 4, 5}), (Fields{-1, 0, 0, 0, 0}));
  EXPECT_EQ(add_ds({5, 20, 50, 50, 60000}, {3, 10, 20, 20, 60000}),
            (Fields{9, 7, 11, 11, 20000}));
  // Days grow past nine digits and are narrowed to 32 bits.
  EXPECT_EQ(add_ds({INT32_MAX, 0, 0, 0, 0}, {INT32_MAX, 0, 0, 0, 0}), (Fields{-2, 0, 0, 0, 0}));
  EXPECT_EQ(add_ds({INT32_MAX, 23, 59, 59, 99999}, {0, 0, 0, 0, 1}),
            (Fields{INT32_MIN, 0, 0, 0, 0}));
  EXPECT_EQ(sub_ds({0, 0, 0, 0, 0}, {INT32_MIN, 0, 0, 0, 0}), (Fields{INT32_MIN, 0, 0, 0, 0}));
}

TEST_F(QWZIntervalSum, ResultMayBeAnOperand) {
  QWZInterval *a = ds(1, 0, 0, 0, 0);
  QWZInterval *b = ds(0, 0, 0, 0, 10000);
  ASSERT_EQ(QWZIntervalSubtract(env_, err_, a, b, b), QWZ_SUCCESS);
  EXPECT_EQ(get_ds(b), (Fields{0, 23, 59, 59, 90000}));
  ASSERT_EQ(QWZIntervalAdd(env_, err_, a, b, a), QWZ_SUCCESS);
  EXPECT_EQ(get_ds(a), (Fields{1, 23, 59, 59, 90000}));
  ASSERT_EQ(QWZIntervalSubtract(env_, err_, a, a, a), QWZ_SUCCESS);
  EXPECT_EQ(get_ds(a), (Fields{0, 0, 0, 0, 0}));
  QWZInterval *y = ym(1, 11);
  ASSERT_EQ(QWZIntervalAdd(env_, err_, y, y, y), QWZ_SUCCESS);
  EXPECT_EQ(get_ym(y), YearMonth(3, 10));
  QWZInterval *z = ym(0, 6);
  ASSERT_EQ(QWZIntervalSubtract(env_, err_, z, ym(1, 0), z), QWZ_SUCCESS);
  EXPECT_EQ(get_ym(z), YearMonth(0, -6));
}

// The same checks, in the same order, for both functions.
class QWZIntervalSumChecks : public IntervalConformance,
                             public ::testing::WithParamInterface<bool> {
 protected:
  sword run(void *h, QWZInterval *a, QWZInterval *b, QWZInterval *r) {
    return GetParam() ? QWZIntervalAdd(h, err_, a, b, r) : QWZIntervalSubtract(h, err_, a, b, r);
  }
};

TEST_P(QWZIntervalSumChecks, Order) {
  QWZInterval *r = ym(42, 4);
  QWZInterval *rd = ds(42, 4, 4, 4, 4);
  // First operand invalid: 3; second: 4; both: 3.
  EXPECT_EQ(run(env_, ym(0, 12), ym(1, 2), r), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(run(env_, ym(1, 2), ym(0, -12), r), QWZ_ERROR);
  expect_interval_invalid(4);
  EXPECT_EQ(run(env_, ds(0, 24, 0, 0, 0), ds(0, 0, 0, 0, 100000), rd), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(run(env_, ds(1, 2, 3, 4, 5), ds(0, 24, 0, 0, 0), rd), QWZ_ERROR);
  expect_interval_invalid(4);
  // Operands of different kinds.
  EXPECT_EQ(run(env_, ym(1, 2), ds(1, 2, 3, 4, 5), r), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(run(env_, ds(1, 2, 3, 4, 5), ym(1, 2), rd), QWZ_ERROR);
  expect_type_diff();
  // An invalid second operand wins over different kinds.
  EXPECT_EQ(run(env_, ym(1, 2), ds(0, 0, 60, 0, 0), r), QWZ_ERROR);
  expect_interval_invalid(4);
  // A result of the other kind.
  EXPECT_EQ(run(env_, ym(1, 2), ym(1, 2), rd), QWZ_ERROR);
  expect_type_invalid();
  EXPECT_EQ(run(env_, ds(1, 2, 3, 4, 5), ds(1, 2, 3, 4, 5), r), QWZ_ERROR);
  expect_type_invalid();
  // Different kinds win over the result's kind.
  EXPECT_EQ(run(env_, ds(1, 2, 3, 4, 5), ym(1, 2), r), QWZ_ERROR);
  expect_type_diff();
  // Invalid values are not looked at before every handle passed.
  for (const QWZInterval *bad : bad_descriptors()) {
    QWZInterval *w = const_cast<QWZInterval *>(bad);
    EXPECT_EQ(run(env_, w, ym(0, 12), r), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(run(env_, ym(0, 12), w, r), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(run(env_, ym(0, 12), ym(0, 12), w), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  for (void *h : bad_contexts()) {
    EXPECT_EQ(run(h, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  // Failures leave the result alone.
  EXPECT_EQ(get_ym(r), YearMonth(42, 4));
  EXPECT_EQ(get_ds(rd), (Fields{42, 4, 4, 4, 4}));
}

INSTANTIATE_TEST_SUITE_P(AddAndSubtract, QWZIntervalSumChecks, ::testing::Bool());

class IntervalArithTrace : public TracedConformance {};

TEST_F(IntervalArithTrace, AddAndSubtractNestTwoChecks) {
  QWZInterval *a = ym(1, 2);
  QWZInterval *b = ym(3, 4);
  QWZInterval *r = ym(0, 0);
  const struct {
    ub4 api;
    const char *name;
  } fns[] = {{159, "QWZIntervalAdd"}, {158, "QWZIntervalSubtract"}};
  for (const auto &f : fns) {
    recs().clear();
    const sword st = f.api == 159 ? QWZIntervalAdd(env_, err_, a, b, r)
                                  : QWZIntervalSubtract(env_, err_, a, b, r);
    ASSERT_EQ(st, 0);
    const std::string t = record(f.name, {{"void*", hex12(env_)},
                                          {"QWZError*", hex12(err_)},
                                          {"QWZInterval*", hex12(a)},
                                          {"QWZInterval*", hex12(b)},
                                          {"QWZInterval*", hex12(r)}});
    EXPECT_EQ(ids(), (std::vector<ub4>{f.api * 10 + 1, 1541, 1540, 1541, 1540, f.api * 10}));
    expect_rec(0, f.api, 1, 0, t);
    expect_rec(5, f.api, 0, 0, t);
    EXPECT_EQ(line_value(recs()[1].text, 2), hex12(a));
    EXPECT_EQ(line_value(recs()[3].text, 2), hex12(b));
  }
  EXPECT_EQ(get_ym(r), YearMonth(-2, -2));
  // A refusal after the checks: no exit record of its own.
  recs().clear();
  QWZInterval *rd = ds(0, 0, 0, 0, 0);
  recs().clear();
  EXPECT_EQ(QWZIntervalAdd(env_, err_, a, b, rd), QWZ_ERROR);
  EXPECT_EQ(ids(), (std::vector<ub4>{1591, 1541, 1540, 1541, 1540}));
}

TEST_F(IntervalArithTrace, NestedCheckExitResultFailsTheOperand) {
  QWZInterval *a = ym(1, 2);
  QWZInterval *r = ym(7, 7);
  cap_.set_results(0, 9);
  EXPECT_EQ(QWZIntervalAdd(env_, err_, a, a, r), QWZ_ERROR);
  expect_interval_invalid(3);
  sword cmp = 55;
  EXPECT_EQ(QWZIntervalCompare(env_, err_, a, a, &cmp), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(cmp, 55);
  cap_.set_results(0, 0);
  EXPECT_EQ(get_ym(r), YearMonth(7, 7));
}

TEST_F(IntervalArithTrace, CompareRecords) {
  QWZInterval *a = ds(1, 2, 3, 4, 5);
  QWZInterval *b = ds(1, 2, 3, 4, 6);
  sword res = 0;
  recs().clear();
  ASSERT_EQ(QWZIntervalCompare(session_, err_, a, b, &res), 0);
  EXPECT_EQ(res, -1);
  const std::string t = record("QWZIntervalCompare", {{"void*", hex12(session_)},
                                                      {"QWZError*", hex12(err_)},
                                                      {"const QWZInterval*", hex12(a)},
                                                      {"const QWZInterval*", hex12(b)},
                                                      {"sword*", hex12(&res)}});
  EXPECT_EQ(ids(), (std::vector<ub4>{1561, 1541, 1540, 1541, 1540, 1560}));
  expect_rec(0, 156, 1, 0, t);
  expect_rec(5, 156, 0, 0, t);
  // A NULL result is passed to the trace as it is and the call, which
  // answers 0, writes no exit record.
  recs().clear();
  EXPECT_EQ(QWZIntervalCompare(session_, err_, a, b, nullptr), 0);
  ASSERT_EQ(recs().size(), 1u);
  expect_rec(0, 156, 1, 0,
             record("QWZIntervalCompare", {{"void*", hex12(session_)},
                                           {"QWZError*", hex12(err_)},
                                           {"const QWZInterval*", hex12(a)},
                                           {"const QWZInterval*", hex12(b)},
                                           {"sword*", hexv(0)}}));
}

class IntervalArithProperty : public IntervalConformance {
 protected:
  std::mt19937 rng_{20240613u};
  sb4 pick(sb4 lo, sb4 hi) { return std::uniform_int_distribution<sb4>(lo, hi)(rng_); }
  // A valid interval whose non-zero fields share one sign.
  Fields same_signed_ds() {
    const sb4 s = pick(0, 1) ? 1 : -1;
    return {s * pick(0, 999999), s * pick(0, 23), s * pick(0, 59), s * pick(0, 59),
            s * pick(0, 99999)};
  }
  // Any valid interval: each field of either sign.
  Fields any_valid_ds() {
    return {pick(-999999, 999999), pick(-23, 23), pick(-59, 59), pick(-59, 59),
            pick(-99999, 99999)};
  }
};

TEST_F(IntervalArithProperty, AddThenSubtractGivesTheOriginal) {
  for (int i = 0; i < 400; ++i) {
    const Fields a = same_signed_ds();
    const Fields b = any_valid_ds();
    QWZInterval *ia = ds(a), *ib = ds(b), *r = ds(0, 0, 0, 0, 0);
    ASSERT_EQ(QWZIntervalAdd(env_, err_, ia, ib, r), 0);
    EXPECT_EQ(ds_value(get_ds(r)), ds_value(a) + ds_value(b));
    EXPECT_EQ(flags(r), 0u);
    ASSERT_EQ(QWZIntervalSubtract(env_, err_, r, ib, r), 0);
    EXPECT_EQ(get_ds(r), a);
    QWZDescriptorFree(ia, kDS);
    QWZDescriptorFree(ib, kDS);
    QWZDescriptorFree(r, kDS);
  }
  for (int i = 0; i < 400; ++i) {
    const sb4 s = pick(0, 1) ? 1 : -1;
    const YearMonth a{s * pick(0, 100000), s * pick(0, 11)};
    const YearMonth b{pick(-100000, 100000), pick(-11, 11)};
    QWZInterval *ia = ym(a.first, a.second), *ib = ym(b.first, b.second), *r = ym(0, 0);
    ASSERT_EQ(QWZIntervalAdd(env_, err_, ia, ib, r), 0);
    ASSERT_EQ(QWZIntervalSubtract(env_, err_, r, ib, r), 0);
    EXPECT_EQ(get_ym(r), a);
    QWZDescriptorFree(ia, kYM);
    QWZDescriptorFree(ib, kYM);
    QWZDescriptorFree(r, kYM);
  }
}

TEST_F(IntervalArithProperty, CompareFollowsTheTotalsOfSameSignedIntervals) {
  for (int i = 0; i < 400; ++i) {
    const Fields a = same_signed_ds();
    // Half the time a near neighbour, so that late fields decide.
    Fields b = same_signed_ds();
    if (i % 2) {
      b = a;
      b[pick(0, 4)] = 0;
    }
    QWZInterval *ia = ds(a), *ib = ds(b);
    sword r = 9;
    ASSERT_EQ(QWZIntervalCompare(env_, err_, ia, ib, &r), 0);
    EXPECT_EQ(r, sign_of(ds_value(a) - ds_value(b)));
    QWZDescriptorFree(ia, kDS);
    QWZDescriptorFree(ib, kDS);
  }
  for (int i = 0; i < 400; ++i) {
    const sb4 s1 = pick(0, 1) ? 1 : -1, s2 = pick(0, 1) ? 1 : -1;
    const YearMonth a{s1 * pick(0, 50), s1 * pick(0, 11)};
    const YearMonth b{s2 * pick(0, 50), s2 * pick(0, 11)};
    QWZInterval *ia = ym(a.first, a.second), *ib = ym(b.first, b.second);
    sword r = 9;
    ASSERT_EQ(QWZIntervalCompare(env_, err_, ia, ib, &r), 0);
    const std::int64_t ta = std::int64_t{a.first} * 12 + a.second;
    const std::int64_t tb = std::int64_t{b.first} * 12 + b.second;
    EXPECT_EQ(r, sign_of(ta - tb));
    QWZDescriptorFree(ia, kYM);
    QWZDescriptorFree(ib, kYM);
  }
}
