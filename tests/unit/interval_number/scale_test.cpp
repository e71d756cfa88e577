// QWZIntervalMultiply and QWZIntervalDivide (and the worker they share): the
// products and quotients, the checks in order, runtime failures returned as
// their own numbers with no diagnostic, and the trace.
#include "unit/interval_number/number_fixture.h"

#include <cfloat>
#include <climits>

using namespace qwz_test;

namespace {

struct ScaleCase {
  ub4 kind;
  Slots in;
  double factor;
  Slots out;
};

struct ScaleFail {
  ub4 kind;
  Slots in;
  double factor;
  sword status;
};

constexpr ub4 YM = INTERVAL_KIND_YM;
constexpr ub4 DS = INTERVAL_KIND_DS;

// A year-month result also keeps slots 3..5 (markers from the fixture).
Slots ym_out(sb4 y, sb4 m) { return {y, m, 333, 444, 555}; }

}  // namespace

class ScaleTest : public NumberIntervalFixture {
 protected:
  using Fn = sword (*)(void *, QWZError *, QWZInterval *, QWZNumber *, QWZInterval *);
  void run_ok(Fn fn, const ScaleCase &c) {
    QWZInterval *in = of_kind(c.kind, c.in);
    QWZInterval *out = c.kind == YM ? ym(-5, -5) : ds(-5, -5, -5, -5, -5);
    QWZNumber n = num(c.factor);
    dirty();
    ASSERT_EQ(fn(env_, err_, in, &n, out), QWZ_SUCCESS) << c.in[0] << " " << c.factor;
    EXPECT_EQ(slots_of(out), c.out) << c.in[0] << " " << c.in[1] << " by " << c.factor;
    EXPECT_EQ(slots_of(in), c.in);
    expect_clear();
  }
  void run_fail(Fn fn, const ScaleFail &c) {
    QWZInterval *in = of_kind(c.kind, c.in);
    QWZInterval *out = c.kind == YM ? ym(-5, -5) : ds(-5, -5, -5, -5, -5);
    const Slots before = slots_of(out);
    QWZNumber n = num(c.factor);
    dirty();
    EXPECT_EQ(fn(env_, err_, in, &n, out), c.status) << c.in[0] << " " << c.factor;
    EXPECT_EQ(slots_of(out), before);
    expect_clear();  // a runtime failure leaves no diagnostic
  }
};

using QWZIntervalMultiply_ = ScaleTest;
using QWZIntervalDivide_ = ScaleTest;

TEST_F(QWZIntervalMultiply_, Products) {
  const ScaleCase cases[] = {
      {YM, {1, 6, 0, 0, 0}, 2.0, ym_out(3, 0)},
      {YM, {1, 0, 0, 0, 0}, 1.5, ym_out(1, 6)},
      {YM, {-1, -6, 0, 0, 0}, 2.0, ym_out(-3, 0)},
      {YM, {1, 6, 0, 0, 0}, -2.0, ym_out(-3, 0)},
      {YM, {0, 1, 0, 0, 0}, 0.5, ym_out(0, 1)},     // half a month rounds away from zero
      {YM, {0, -1, 0, 0, 0}, 0.5, ym_out(0, -1)},
      {YM, {0, 3, 0, 0, 0}, 0.5, ym_out(0, 2)},
      {YM, {0, -3, 0, 0, 0}, 0.5, ym_out(0, -2)},
      {YM, {0, 3, 0, 0, 0}, 1.0 / 6.0, ym_out(0, 0)},  // just under half a month
      {YM, {2, 0, 0, 0, 0}, 0.1, ym_out(0, 2)},        // 2.4000000000000001 months
      {YM, {9999, 11, 0, 0, 0}, 1.0, ym_out(9999, 11)},
      {YM, {9999, 11, 0, 0, 0}, -1.0, ym_out(-9999, -11)},
      {YM, {1, -3, 0, 0, 0}, 1.0, ym_out(-1, -3)},  // mixed signs read as one negative value
      {YM, {9999, 11, 0, 0, 0}, 0.0, ym_out(0, 0)},
      {YM, {9999, 11, 0, 0, 0}, -0.0, ym_out(0, 0)},
      {YM, {9999, 11, 0, 0, 0}, kDenormMin, ym_out(0, 0)},
      {YM, {0, 0, 0, 0, 0}, 1e308, ym_out(0, 0)},
      {DS, {1, 0, 0, 0, 0}, 1.5, {1, 12, 0, 0, 0}},
      {DS, {-1, -12, 0, 0, 0}, 2.0, {-3, 0, 0, 0, 0}},
      {DS, {0, 0, 0, 1, 0}, 0.5, {0, 0, 0, 0, 50000}},
      {DS, {0, 0, 0, 0, 1}, 0.5, {0, 0, 0, 0, 1}},
      {DS, {0, 0, 0, 0, -1}, 0.5, {0, 0, 0, 0, -1}},
      {DS, {0, 0, 0, 0, 3}, 0.5, {0, 0, 0, 0, 2}},
      {DS, {49, 23, 59, 59, 99999}, 2.0, {99, 23, 59, 59, 99998}},
      {DS, {99, 23, 59, 59, 99999}, 1.0, {99, 23, 59, 59, 99999}},
      {DS, {-99, -23, -59, -59, -99999}, -1.0, {99, 23, 59, 59, 99999}},
      {DS, {1, 0, 0, 0, 0}, 0.1, {0, 2, 24, 0, 0}},
      {DS, {99, 23, 59, 59, 99999}, -0.0, {0, 0, 0, 0, 0}},
  };
  for (const ScaleCase &c : cases) run_ok(QWZIntervalMultiply, c);
}

TEST_F(QWZIntervalDivide_, Quotients) {
  const ScaleCase cases[] = {
      {YM, {3, 0, 0, 0, 0}, 2.0, ym_out(1, 6)},
      {YM, {0, 1, 0, 0, 0}, 2.0, ym_out(0, 1)},
      {YM, {0, -1, 0, 0, 0}, 2.0, ym_out(0, -1)},
      {YM, {0, 1, 0, 0, 0}, 3.0, ym_out(0, 0)},
      {YM, {1, 0, 0, 0, 0}, -4.0, ym_out(0, -3)},
      {YM, {1, 0, 0, 0, 0}, 0.5, ym_out(2, 0)},
      {YM, {9999, 11, 0, 0, 0}, 1e308, ym_out(0, 0)},
      {YM, {9999, 11, 0, 0, 0}, -DBL_MAX, ym_out(0, 0)},
      {DS, {1, 0, 0, 0, 0}, 3.0, {0, 8, 0, 0, 0}},
      {DS, {1, 0, 0, 0, 0}, 7.0, {0, 3, 25, 42, 85714}},
      {DS, {-1, 0, 0, 0, 0}, 7.0, {0, -3, -25, -42, -85714}},
      {DS, {0, 0, 0, 0, 1}, 2.0, {0, 0, 0, 0, 1}},
      {DS, {49, 23, 59, 59, 99999}, 0.5, {99, 23, 59, 59, 99998}},
      {DS, {99, 23, 59, 59, 99999}, 1e308, {0, 0, 0, 0, 0}},
  };
  for (const ScaleCase &c : cases) run_ok(QWZIntervalDivide, c);
}

TEST_F(QWZIntervalMultiply_, RuntimeFailuresAreReturnedAsTheyAre) {
  const ScaleFail cases[] = {
      // a 150-day interval does not fit the runtime's two-digit day field
      {DS, {150, 0, 0, 0, 0}, 1.0, QWZ_RT_INTERVAL_OVERFLOW},
      {DS, {150, 0, 0, 0, 0}, 0.5, QWZ_RT_INTERVAL_OVERFLOW},
      {DS, {50, 0, 0, 0, 0}, 2.0, QWZ_RT_INTERVAL_OVERFLOW},
      {DS, {1, 0, 0, 0, 0}, 100.0, QWZ_RT_INTERVAL_OVERFLOW},
      {YM, {9999, 11, 0, 0, 0}, 2.0, QWZ_RT_INTERVAL_OVERFLOW},
      {YM, {10000, 0, 0, 0, 0}, 1.0, QWZ_RT_INTERVAL_OVERFLOW},
      {YM, {0, 1, 0, 0, 0}, 1e308, QWZ_RT_INTERVAL_OVERFLOW},
      {YM, {0, -1, 0, 0, 0}, DBL_MAX, QWZ_RT_INTERVAL_OVERFLOW},
      {YM, {INT_MAX, 0, 0, 0, 0}, 1.0, QWZ_RT_INTERVAL_OVERFLOW},
      {YM, {INT_MIN, 0, 0, 0, 0}, 0.0, QWZ_RT_INTERVAL_OVERFLOW},
      {DS, {INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN}, 1.0, QWZ_RT_INTERVAL_OVERFLOW},
      // the operand is not checked first: the runtime refuses its fields
      {YM, {1, 12, 0, 0, 0}, 1.0, QWZ_RT_FIELD_RANGE},
      {YM, {0, INT_MIN, 0, 0, 0}, 1.0, QWZ_RT_FIELD_RANGE},
      {DS, {0, 24, 0, 0, 0}, 1.0, QWZ_RT_FIELD_RANGE},
      {DS, {0, 0, 0, 0, 100000}, 1.0, QWZ_RT_FIELD_RANGE},
      {DS, {0, INT_MAX, 0, 0, 0}, 1.0, QWZ_RT_FIELD_RANGE},
  };
  for (const ScaleFail &c : cases) run_fail(QWZIntervalMultiply, c);
}

TEST_F(QWZIntervalDivide_, RuntimeFailuresAreReturnedAsTheyAre) {
  const ScaleFail cases[] = {
      {YM, {0, 1, 0, 0, 0}, kDenormMin, QWZ_RT_INTERVAL_OVERFLOW},
      {YM, {0, 1, 0, 0, 0}, -DBL_MIN, QWZ_RT_INTERVAL_OVERFLOW},
      {DS, {50, 0, 0, 0, 0}, 0.5, QWZ_RT_INTERVAL_OVERFLOW},
      {DS, {150, 0, 0, 0, 0}, 2.0, QWZ_RT_INTERVAL_OVERFLOW},
      // converting the operand comes before the zero test
      {DS, {150, 0, 0, 0, 0}, 0.0, QWZ_RT_INTERVAL_OVERFLOW},
      {YM, {0, 12, 0, 0, 0}, 0.0, QWZ_RT_FIELD_RANGE},
  };
  for (const ScaleFail &c : cases) run_fail(QWZIntervalDivide, c);
}

TEST_F(QWZIntervalDivide_, ZeroIsRefusedBeforeTheRuntime) {
  // Had the runtime been asked, its own division-by-zero number would come
  // back without a diagnostic.
  for (double zero : {0.0, -0.0}) {
    for (ub4 kind : {YM, DS}) {
      QWZInterval *in = kind == YM ? ym(1, 6) : ds(1, 2, 3, 4, 5);
      QWZInterval *out = kind == YM ? ym(-5, -5) : ds(-5, -5, -5, -5, -5);
      const Slots before = slots_of(out);
      QWZNumber n = num(zero);
      EXPECT_EQ(QWZIntervalDivide(env_, err_, in, &n, out), QWZ_ERROR);
      expect_divisor_zero();
      EXPECT_EQ(slots_of(out), before);
    }
  }
  // The worker on its own does the same.
  QWZInterval *in = ym(1, 6);
  QWZInterval *out = ym(-5, -5);
  QWZNumber n = num(0.0);
  clear_err_msg(err_);
  EXPECT_EQ(qwz_interval_divide_or_multiply(err_, in, &n, out, 1), QWZ_ERROR);
  expect_divisor_zero();
  clear_err_msg(err_);
  EXPECT_EQ(qwz_interval_divide_or_multiply(err_, in, &n, out, 0), 0);  // x 0 is fine
  EXPECT_EQ(slots_of(out), ym_out(0, 0));
  expect_clear();
}

TEST_F(QWZIntervalMultiply_, ResultMayBeTheOperand) {
  QWZInterval *iv = ym(1, 6);
  QWZNumber n = num(2.0);
  ASSERT_EQ(QWZIntervalMultiply(env_, err_, iv, &n, iv), QWZ_SUCCESS);
  EXPECT_EQ(slots_of(iv), ym_out(3, 0));
  ASSERT_EQ(QWZIntervalDivide(session_, err_, iv, &n, iv), QWZ_SUCCESS);
  EXPECT_EQ(slots_of(iv), ym_out(1, 6));
}

TEST_F(QWZIntervalMultiply_, NumbersTheRuntimeCannotRead) {
  QWZInterval *in = ds(1, 0, 0, 0, 0);
  QWZInterval *out = ds(-5, -5, -5, -5, -5);
  // Bytes that are not a number: the bridge's status, no diagnostic.
  QWZNumber garbage = not_a_number();
  EXPECT_EQ(QWZIntervalMultiply(env_, err_, in, &garbage, out), QWZ_RT_BAD_DECIMAL);
  expect_clear();
  EXPECT_EQ(QWZIntervalDivide(env_, err_, in, &garbage, out), QWZ_RT_BAD_DECIMAL);
  expect_clear();
  // A number beyond a double: dectodbl's failure, recorded with its message.
  QWZNumber huge = num_ld(1e4000L);
  EXPECT_EQ(QWZIntervalMultiply(env_, err_, in, &huge, out), QWZ_RT_DECIMAL_OVERFLOW);
  expect_diag(QWZ_RT_DECIMAL_OVERFLOW, "", kDecimalTooLargeText);
  QWZNumber tiny = num_ld(1e-4000L);
  EXPECT_EQ(QWZIntervalDivide(env_, err_, in, &tiny, out), QWZ_RT_DECIMAL_UNDERFLOW);
  expect_diag(QWZ_RT_DECIMAL_UNDERFLOW, "", kDecimalTooSmallText);
  EXPECT_EQ(slots_of(out), (Slots{-5, -5, -5, -5, -5}));
}

TEST_F(QWZIntervalMultiply_, KindMismatchKeepsTheConversionsUnfilled) {
  QWZNumber n = num(2.0);
  QWZInterval *y = ym(1, 0);
  QWZInterval *d = ds(1, 0, 0, 0, 0);
  EXPECT_EQ(QWZIntervalMultiply(env_, err_, y, &n, d), QWZ_ERROR);
  expect_kind_mismatch();
  EXPECT_EQ(QWZIntervalDivide(env_, err_, y, &n, d), QWZ_ERROR);
  expect_kind_mismatch();
  EXPECT_EQ(QWZIntervalDivide(env_, err_, d, &n, y), QWZ_ERROR);
  expect_kind_mismatch();
  EXPECT_EQ(slots_of(d), (Slots{1, 0, 0, 0, 0}));
  EXPECT_EQ(slots_of(y), ym_out(1, 0));
  // Even a zero divisor is not looked at before the kinds.
  QWZNumber zero = num(0.0);
  EXPECT_EQ(QWZIntervalDivide(env_, err_, y, &zero, d), QWZ_ERROR);
  expect_kind_mismatch();
}

TEST_F(QWZIntervalMultiply_, ChecksInOrder) {
  QWZNumber n = num(2.0);
  QWZInterval *y = ym(1, 0);
  QWZInterval *y2 = ym(0, 0);
  QWZInterval *freed = freed_interval(YM);
  for (auto fn : {QWZIntervalMultiply, QWZIntervalDivide}) {
    // context handle
    EXPECT_EQ(fn(nullptr, err_, y, &n, y2), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(fn(err_, err_, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    // operand, before the number
    EXPECT_EQ(fn(env_, err_, nullptr, nullptr, y2), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(fn(env_, err_, freed, &n, y2), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    // number, before the result
    EXPECT_EQ(fn(env_, err_, y, nullptr, nullptr), QWZ_ERROR);
    expect_number_null();
    // result
    EXPECT_EQ(fn(env_, err_, y, &n, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(fn(env_, err_, y, &n, freed), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(fn(env_, err_, y, &n, reinterpret_cast<QWZInterval *>(session_)),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    // error handle: nothing is written anywhere
    EXPECT_EQ(fn(env_, nullptr, y, &n, y2), QWZ_INVALID_HANDLE);
    EXPECT_EQ(fn(env_, reinterpret_cast<QWZError *>(env_), nullptr, nullptr, nullptr),
              QWZ_INVALID_HANDLE);
    EXPECT_EQ(slots_of(y2), ym_out(0, 0));
  }
}

namespace {

std::string scale_record(const char *name, const void *h, const void *e, const void *in,
                         const void *n, const void *out) {
  return std::string("<") + name + ">\n\tvoid*     \t" + hex12(h) + "\n\tQWZError*     \t" +
         hex12(e) + "\n\tQWZInterval*     \t" + hex12(in) + "\n\tQWZNumber*     \t" + hex12(n) +
         "\n\tQWZInterval*     \t" + hex12(out);
}

}  // namespace

TEST_F(QWZIntervalMultiply_, TraceRecords) {
  QWZInterval *in = ym(1, 6);
  QWZInterval *out = ym(0, 0);
  QWZNumber two = num(2.0);
  QWZNumber zero = num(0.0);
  TraceCapture trace;
  ASSERT_EQ(QWZIntervalMultiply(env_, err_, in, &two, out), QWZ_SUCCESS);
  const std::string mul = scale_record("QWZIntervalMultiply", env_, err_, in, &two, out);
  ASSERT_EQ(trace.records().size(), 2u);
  EXPECT_EQ(trace.records()[0].api_id, 182u);
  EXPECT_EQ(trace.records()[0].direction, 1u);
  EXPECT_EQ(trace.records()[0].text, mul);
  EXPECT_EQ(trace.records()[1].api_id, 182u);
  EXPECT_EQ(trace.records()[1].direction, 0u);
  EXPECT_EQ(trace.records()[1].status, 0);
  EXPECT_EQ(trace.records()[1].text, mul);

  trace.records().clear();
  ASSERT_EQ(QWZIntervalDivide(env_, err_, out, &two, in), QWZ_SUCCESS);
  ASSERT_EQ(trace.records().size(), 2u);
  EXPECT_EQ(trace.records()[0].api_id, 181u);
  EXPECT_EQ(trace.records()[1].text, scale_record("QWZIntervalDivide", env_, err_, out, &two, in));

  // No exit record for a refused division, a runtime failure or a failed check.
  trace.records().clear();
  EXPECT_EQ(QWZIntervalDivide(env_, err_, in, &zero, out), QWZ_ERROR);
  ASSERT_EQ(trace.records().size(), 1u);
  EXPECT_EQ(trace.records()[0].direction, 1u);
  QWZInterval *big = ds(150, 0, 0, 0, 0);
  QWZInterval *big_out = ds(0, 0, 0, 0, 0);
  trace.records().clear();
  EXPECT_EQ(QWZIntervalMultiply(env_, err_, big, &two, big_out), QWZ_RT_INTERVAL_OVERFLOW);
  ASSERT_EQ(trace.records().size(), 1u);
  trace.records().clear();
  EXPECT_EQ(QWZIntervalMultiply(env_, err_, in, nullptr, out), QWZ_ERROR);
  ASSERT_EQ(trace.records().size(), 1u);
  EXPECT_EQ(trace.records()[0].text,
            scale_record("QWZIntervalMultiply", env_, err_, in, nullptr, out));

  // The hook's answers.
  trace.set_results(7, 0);
  dirty();
  EXPECT_EQ(QWZIntervalMultiply(env_, err_, in, &two, out), 7);
  EXPECT_EQ(diag().message, "stale");
  trace.set_results(0, 9);
  EXPECT_EQ(QWZIntervalMultiply(env_, err_, in, &two, out), 9);
  EXPECT_EQ(slots_of(out), ym_out(3, 0));
}
