// Hostile input for the number and interval-number functions: NaN,
// infinities, denormals, huge values and negative zero as factors and
// numbers; NULL in every pointer; slots at INT32_MIN and INT32_MAX. Meant to
// run under the sanitizer build as well.
#include "unit/interval_number/number_fixture.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <vector>

using namespace qwz_test;

namespace {

constexpr ub4 YM = INTERVAL_KIND_YM;
constexpr ub4 DS = INTERVAL_KIND_DS;

enum class Expect { Zero, Overflow, DivZero, BadNumber, Invalid };

// What a factor does to an interval that converts fine.
struct FactorRow {
  double factor;
  bool finite;         // QWZNumberFromReal accepts it
  Expect mul_of_max;   // multiply 9999-11 or 99 23:59:59.99999
  Expect div_of_max;
  Expect div_of_zero;  // divide a zero interval
  Expect from_number;  // QWZIntervalFromNumber of the factor itself
};

const FactorRow kFactors[] = {
    {kNaN, false, Expect::BadNumber, Expect::BadNumber, Expect::BadNumber, Expect::BadNumber},
    {kInf, false, Expect::BadNumber, Expect::BadNumber, Expect::BadNumber, Expect::BadNumber},
    {-kInf, false, Expect::BadNumber, Expect::BadNumber, Expect::BadNumber, Expect::BadNumber},
    {kDenormMin, true, Expect::Zero, Expect::Overflow, Expect::Zero, Expect::Zero},
    {-kDenormMin, true, Expect::Zero, Expect::Overflow, Expect::Zero, Expect::Zero},
    {DBL_MIN, true, Expect::Zero, Expect::Overflow, Expect::Zero, Expect::Zero},
    {DBL_MIN / 3, true, Expect::Zero, Expect::Overflow, Expect::Zero, Expect::Zero},
    {1e308, true, Expect::Overflow, Expect::Zero, Expect::Zero, Expect::Invalid},
    {-1e308, true, Expect::Overflow, Expect::Zero, Expect::Zero, Expect::Invalid},
    {DBL_MAX, true, Expect::Overflow, Expect::Zero, Expect::Zero, Expect::Invalid},
    {-0.0, true, Expect::Zero, Expect::DivZero, Expect::DivZero, Expect::Zero},
    {0.0, true, Expect::Zero, Expect::DivZero, Expect::DivZero, Expect::Zero},
};

}  // namespace

class BadInput : public NumberIntervalFixture {
 protected:
  // The number for a factor; a refused real leaves a fresh (invalid) number.
  QWZNumber factor_number(const FactorRow &row) {
    QWZNumber n = not_a_number();
    const sword rc = QWZNumberFromReal(err_, &row.factor, sizeof row.factor, &n);
    if (row.finite) {
      EXPECT_EQ(rc, QWZ_SUCCESS) << row.factor;
    } else {
      EXPECT_EQ(rc, QWZ_ERROR) << row.factor;
      expect_diag(800203, "", "the real number is not finite.");
      EXPECT_TRUE(same_number(n, not_a_number()));
    }
    return n;
  }

  void expect_outcome(sword rc, Expect e, QWZInterval *out, const Slots &before,
                      const Slots &zero) {
    switch (e) {
      case Expect::Zero:
        EXPECT_EQ(rc, QWZ_SUCCESS);
        EXPECT_EQ(slots_of(out), zero);
        expect_clear();
        break;
      case Expect::Overflow:
        EXPECT_EQ(rc, QWZ_RT_INTERVAL_OVERFLOW);
        EXPECT_EQ(slots_of(out), before);
        expect_clear();
        break;
      case Expect::DivZero:
        EXPECT_EQ(rc, QWZ_ERROR);
        EXPECT_EQ(slots_of(out), before);
        expect_divisor_zero();
        break;
      case Expect::BadNumber:
        EXPECT_EQ(rc, QWZ_RT_BAD_DECIMAL);
        EXPECT_EQ(slots_of(out), before);
        expect_clear();
        break;
      case Expect::Invalid:
        EXPECT_EQ(rc, QWZ_ERROR);
        EXPECT_EQ(slots_of(out), before);
        expect_interval_invalid(3);
        break;
    }
  }
};

TEST_F(BadInput, FactorsAndNumbers) {
  for (const FactorRow &row : kFactors) {
    QWZNumber n = factor_number(row);
    for (ub4 kind : {YM, DS}) {
      SCOPED_TRACE(testing::Message() << row.factor << " kind " << kind);
      const Slots max = kind == YM ? Slots{9999, 11, 0, 0, 0} : Slots{99, 23, 59, 59, 99999};
      const Slots zero = kind == YM ? Slots{0, 0, 333, 444, 555} : Slots{0, 0, 0, 0, 0};
      const Slots marks = kind == YM ? Slots{-7, -7, 333, 444, 555} : Slots{-7, -7, -7, -7, -7};
      auto target = [&] { return of_kind(kind, marks); };

      QWZInterval *out = target();
      expect_outcome(QWZIntervalMultiply(env_, err_, of_kind(kind, max), &n, out), row.mul_of_max,
                     out, marks, zero);
      out = target();
      expect_outcome(QWZIntervalDivide(env_, err_, of_kind(kind, max), &n, out), row.div_of_max,
                     out, marks, zero);
      out = target();
      expect_outcome(QWZIntervalDivide(env_, err_, of_kind(kind, {0, 0, 0, 0, 0}), &n, out),
                     row.div_of_zero, out, marks, zero);
      // Multiplying a zero interval by any number the runtime can read is zero.
      out = target();
      expect_outcome(QWZIntervalMultiply(env_, err_, of_kind(kind, {0, 0, 0, 0, 0}), &n, out),
                     row.finite ? Expect::Zero : Expect::BadNumber, out, marks, zero);
      out = target();
      expect_outcome(QWZIntervalFromNumber(env_, err_, out, &n), row.from_number, out, marks,
                     zero);
    }
  }
}

TEST_F(BadInput, ExtremeSlotsFailInTheRuntimeBeforeTheNumberIsRead) {
  const QWZNumber garbage = not_a_number();
  const QWZNumber one = num(1.0);
  const std::vector<std::pair<ub4, Slots>> extremes = {
      {YM, {INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN}},
      {YM, {INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX}},
      {YM, {INT_MIN, 0, 0, 0, 0}},
      {DS, {INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN}},
      {DS, {INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX}},
      {DS, {0, 0, 0, 0, INT_MIN}},
  };
  for (const auto &[kind, slots] : extremes) {
    for (const QWZNumber &n0 : {garbage, one}) {
      QWZNumber n = n0;
      QWZInterval *in = of_kind(kind, slots);
      QWZInterval *out = of_kind(kind, {1, 2, 3, 4, 5});
      const sword expect =
          slots[0] == 0 ? QWZ_RT_FIELD_RANGE : QWZ_RT_INTERVAL_OVERFLOW;  // leading field first
      EXPECT_EQ(QWZIntervalMultiply(env_, err_, in, &n, out), expect);
      EXPECT_EQ(QWZIntervalDivide(env_, err_, in, &n, out), expect);
      expect_clear();
      EXPECT_EQ(slots_of(out), (Slots{1, 2, 3, 4, 5}));
      EXPECT_EQ(slots_of(in), slots);
      // ToNumber does not check the interval: any slots give a finite number.
      QWZNumber r{};
      ASSERT_EQ(QWZIntervalToNumber(env_, err_, in, &r), QWZ_SUCCESS);
      EXPECT_TRUE(std::isfinite(value_of(r)));
    }
  }
}

TEST_F(BadInput, NullEverywhere) {
  QWZInterval *y = ym(1, 0);
  QWZNumber n = num(2.0);
  double d = 1.0;
  // The number functions.
  EXPECT_EQ(QWZNumberFromReal(nullptr, nullptr, 0, nullptr), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZNumberToReal(nullptr, nullptr, 0, nullptr), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZNumberFromReal(err_, nullptr, 0, nullptr), QWZ_ERROR);
  expect_diag(800201, "", "the real number could not be null.");
  EXPECT_EQ(QWZNumberToReal(err_, nullptr, 0, nullptr), QWZ_ERROR);
  expect_number_null();
  EXPECT_EQ(QWZNumberFromReal(err_, &d, sizeof d, nullptr), QWZ_ERROR);
  expect_number_null();
  EXPECT_EQ(QWZNumberToReal(err_, &n, sizeof d, nullptr), QWZ_ERROR);
  expect_diag(800201, "", "the real number could not be null.");
  // The interval functions, every pointer NULL.
  EXPECT_EQ(QWZIntervalMultiply(nullptr, nullptr, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZIntervalDivide(nullptr, nullptr, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZIntervalFromNumber(nullptr, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZIntervalToNumber(nullptr, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZIntervalMultiply(nullptr, err_, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZIntervalDivide(env_, err_, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZIntervalDivide(env_, err_, y, nullptr, nullptr), QWZ_ERROR);
  expect_number_null();
  EXPECT_EQ(QWZIntervalMultiply(env_, err_, y, &n, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, nullptr, &n), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZIntervalToNumber(env_, err_, y, nullptr), QWZ_ERROR);
  expect_number_null();
  // The internal routines.
  double out = 5;
  EXPECT_EQ(qwz_number_2_double(err_, nullptr, &out), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(qwz_interval_2_intrvl_t(nullptr, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(qwz_intrvl_t_2_interval(nullptr, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(qwz_number_2_decimal(nullptr, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(qwz_decimal_2_number(nullptr, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(incvasc(nullptr, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(intoasc(nullptr, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(invmuldbl(nullptr, kNaN, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(invdivdbl(nullptr, 0.0, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(deccvdbl(kNaN, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(dectodbl(nullptr, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(rgetmsg(0, nullptr, 0), -1);
  EXPECT_EQ(out, 5.0);
  EXPECT_EQ(slots_of(y), (Slots{1, 0, 333, 444, 555}));
}

TEST_F(BadInput, NullsInTheTrace) {
  TraceCapture trace;
  EXPECT_EQ(QWZIntervalMultiply(nullptr, err_, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  ASSERT_EQ(trace.records().size(), 1u);
  EXPECT_EQ(trace.records()[0].text,
            "<QWZIntervalMultiply>\n\tvoid*     \t0x000000000000\n\tQWZError*     \t" +
                hex12(err_) +
                "\n\tQWZInterval*     \t0x000000000000\n\tQWZNumber*     \t0x000000000000"
                "\n\tQWZInterval*     \t0x000000000000");
  trace.records().clear();
  EXPECT_EQ(QWZNumberFromReal(nullptr, nullptr, 0xFFFFFFFFu, nullptr), QWZ_INVALID_HANDLE);
  ASSERT_EQ(trace.records().size(), 1u);
  EXPECT_EQ(trace.records()[0].text,
            "<QWZNumberFromReal>\n\tQWZError*     \t0x000000000000\n\tconst void*     "
            "\t0x000000000000\n\tuword     \t4294967295\n\tQWZNumber*     \t0x000000000000");
}
