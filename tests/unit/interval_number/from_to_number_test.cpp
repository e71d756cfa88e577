// QWZIntervalFromNumber and QWZIntervalToNumber: numbers of years or days to
// interval fields and back, with the check after the conversion, the checks
// in order and the trace (with the nested QWZIntervalCheck).
#include "unit/interval_number/number_fixture.h"

#include <cfloat>
#include <climits>

using namespace qwz_test;

namespace {

constexpr ub4 YM = INTERVAL_KIND_YM;
constexpr ub4 DS = INTERVAL_KIND_DS;

struct FromCase {
  ub4 kind;
  double number;
  Slots out;
};

Slots ym_out(sb4 y, sb4 m) { return {y, m, 333, 444, 555}; }

}  // namespace

using QWZIntervalFromNumber_ = NumberIntervalFixture;
using QWZIntervalToNumber_ = NumberIntervalFixture;

TEST_F(QWZIntervalFromNumber_, YearsAndDays) {
  const FromCase cases[] = {
      {YM, 1.5, ym_out(1, 6)},
      {YM, 1.99, ym_out(2, 0)},  // round(11.88) = 12 carries into the year
      {YM, -1.5, ym_out(-1, -6)},
      {YM, 2.0, ym_out(2, 0)},
      {YM, 0.0, ym_out(0, 0)},
      {YM, -0.0, ym_out(0, 0)},
      {YM, 0.25, ym_out(0, 3)},
      {YM, kDenormMin, ym_out(0, 0)},
      {YM, 2147483647.0, ym_out(INT_MAX, 0)},  // the leading field is never checked
      {YM, -2147483648.0, ym_out(INT_MIN, 0)},
      {YM, -2147483648.5, ym_out(INT_MIN, -6)},
      {DS, 1.5, {1, 12, 0, 0, 0}},
      {DS, 0.5, {0, 12, 0, 0, 0}},
      {DS, -1.5, {-1, -12, 0, 0, 0}},
      {DS, 2.25, {2, 6, 0, 0, 0}},
      {DS, 0.1, {0, 2, 24, 0, 0}},
      {DS, 1.0 / 24.0, {0, 1, 0, 0, 0}},
      {DS, 1.0 / 1440.0, {0, 0, 1, 0, 0}},
      {DS, 0.5 / 86400.0, {0, 0, 0, 0, 50000}},
      {DS, 1.0 / 86400.0, {0, 0, 0, 1, 0}},
      {DS, -1.0 / 86400.0, {0, 0, 0, -1, 0}},
      {DS, -0.0, {0, 0, 0, 0, 0}},
      {DS, kDenormMin, {0, 0, 0, 0, 0}},
      {DS, 2147483647.5, {INT_MAX, 12, 0, 0, 0}},
  };
  for (const FromCase &c : cases) {
    QWZInterval *iv = c.kind == YM ? ym(-7, -7) : ds(-7, -7, -7, -7, -7);
    QWZNumber n = num(c.number);
    dirty();
    ASSERT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), QWZ_SUCCESS) << c.number;
    EXPECT_EQ(slots_of(iv), c.out) << c.number;
    expect_clear();
  }
}

TEST_F(QWZIntervalFromNumber_, InvalidResultsStayInTheDescriptor) {
  const FromCase cases[] = {
      // only the upward carry exists: -1.99 years leaves month -12
      {YM, -1.99, ym_out(-1, -12)},
      {YM, -0.99, ym_out(0, -12)},
      // the last second rounds to 100000 fractions, with no carry
      {DS, 0.99999999999, {0, 23, 59, 59, 100000}},
  };
  for (const FromCase &c : cases) {
    QWZInterval *iv = c.kind == YM ? ym(-7, -7) : ds(-7, -7, -7, -7, -7);
    QWZNumber n = num(c.number);
    EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), QWZ_ERROR) << c.number;
    expect_interval_invalid(3);
    EXPECT_EQ(slots_of(iv), c.out) << c.number;
  }
}

TEST_F(QWZIntervalFromNumber_, WholePartsBeyondTheLeadingField) {
  // Nothing is written when the whole part does not fit a 32-bit field.
  const double numbers[] = {2147483648.0, -2147483649.0, 1e308, -1e308, DBL_MAX, 1e10};
  for (double v : numbers) {
    for (ub4 kind : {YM, DS}) {
      QWZInterval *iv = kind == YM ? ym(-7, -7) : ds(-7, -7, -7, -7, -7);
      const Slots before = slots_of(iv);
      QWZNumber n = num(v);
      EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), QWZ_ERROR) << v;
      expect_interval_invalid(3);
      EXPECT_EQ(slots_of(iv), before);
    }
  }
  // 2147483647.99 years carries one year past the field.
  QWZInterval *iv = ym(-7, -7);
  QWZNumber n = num(2147483647.99);
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(slots_of(iv), ym_out(-7, -7));
}

TEST_F(QWZIntervalFromNumber_, NumbersTheRuntimeCannotRead) {
  QWZInterval *iv = ds(-7, -7, -7, -7, -7);
  QWZNumber garbage = not_a_number();
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &garbage), QWZ_RT_BAD_DECIMAL);
  expect_clear();
  QWZNumber huge = num_ld(-1e4000L);
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &huge), QWZ_RT_DECIMAL_OVERFLOW);
  expect_diag(QWZ_RT_DECIMAL_OVERFLOW, "", kDecimalTooLargeText);
  EXPECT_EQ(slots_of(iv), (Slots{-7, -7, -7, -7, -7}));
}

struct ToCase {
  ub4 kind;
  Slots in;
  double number;
};

TEST_F(QWZIntervalToNumber_, YearsAndDays) {
  const ToCase cases[] = {
      {YM, {1, 6, 0, 0, 0}, 1.5},
      {YM, {-1, -6, 0, 0, 0}, -1.5},
      {YM, {0, 0, 0, 0, 0}, 0.0},
      {YM, {1, 12, 0, 0, 0}, 2.0},  // not checked first
      {YM, {0, 1, 0, 0, 0}, 1 / 12.0},
      {YM, {INT_MAX, INT_MAX, 0, 0, 0}, INT_MAX + INT_MAX / 12.0},
      {YM, {INT_MIN, INT_MIN, 0, 0, 0}, INT_MIN + INT_MIN / 12.0},
      {DS, {0, 12, 0, 0, 0}, 0.5},
      {DS, {1, 12, 0, 0, 0}, 1.5},
      {DS, {-1, -12, 0, 0, 0}, -1.5},
      {DS, {0, 0, 0, 0, 50000}, ((0.5 / 60.0) / 60.0) / 24.0},
      {DS, {0, 23, 59, 59, 99999},
       (((99999 / 100000.0 + 59) / 60.0 + 59) / 60.0 + 23) / 24.0},
      {DS, {INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN},
       INT_MIN + (((INT_MIN / 100000.0 + INT_MIN) / 60.0 + INT_MIN) / 60.0 + INT_MIN) / 24.0},
      {DS, {INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX},
       INT_MAX + (((INT_MAX / 100000.0 + INT_MAX) / 60.0 + INT_MAX) / 60.0 + INT_MAX) / 24.0},
  };
  for (const ToCase &c : cases) {
    QWZInterval *iv = of_kind(c.kind, c.in);
    QWZNumber n{};
    dirty();
    ASSERT_EQ(QWZIntervalToNumber(env_, err_, iv, &n), QWZ_SUCCESS);
    expect_clear();
    EXPECT_TRUE(same_number(n, num(c.number))) << c.number;
    EXPECT_EQ(value_of(n), c.number);
    EXPECT_EQ(slots_of(iv), c.in);
  }
  // Half a second is half of 1/86400 of a day, to the last bit or so.
  QWZInterval *half = ds(0, 0, 0, 0, 50000);
  QWZNumber n{};
  ASSERT_EQ(QWZIntervalToNumber(env_, err_, half, &n), QWZ_SUCCESS);
  EXPECT_DOUBLE_EQ(value_of(n), 0.5 / 86400.0);
}

TEST_F(QWZIntervalToNumber_, FromNumberOfToNumberGivesTheIntervalBack) {
  const ToCase cases[] = {
      {YM, {1, 6, 0, 0, 0}, 0},         {YM, {-12, -11, 0, 0, 0}, 0},
      {DS, {0, 12, 0, 0, 0}, 0},        {DS, {3, 4, 5, 6, 0}, 0},
      {DS, {-3, -4, -5, -6, -70000}, 0}, {DS, {99, 23, 59, 59, 50000}, 0},
  };
  for (const ToCase &c : cases) {
    QWZInterval *iv = of_kind(c.kind, c.in);
    QWZNumber n{};
    ASSERT_EQ(QWZIntervalToNumber(env_, err_, iv, &n), QWZ_SUCCESS);
    QWZInterval *back = of_kind(c.kind, {0, 0, 0, 0, 0});
    ASSERT_EQ(QWZIntervalFromNumber(env_, err_, back, &n), QWZ_SUCCESS);
    EXPECT_EQ(slots_of(back), c.in) << c.in[0];
  }
}

TEST_F(QWZIntervalFromNumber_, ChecksInOrder) {
  QWZNumber n = num(1.5);
  QWZInterval *iv = ym(0, 0);
  QWZInterval *freed = freed_interval(DS);
  for (auto fn : {QWZIntervalFromNumber, QWZIntervalToNumber}) {
    EXPECT_EQ(fn(nullptr, err_, iv, &n), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(fn(iv, err_, iv, &n), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(fn(env_, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(fn(env_, err_, freed, &n), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(fn(env_, err_, reinterpret_cast<QWZInterval *>(err_), &n), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(fn(session_, err_, iv, nullptr), QWZ_ERROR);
    expect_number_null();
    EXPECT_EQ(fn(env_, nullptr, iv, &n), QWZ_INVALID_HANDLE);
    EXPECT_EQ(fn(env_, reinterpret_cast<QWZError *>(session_), nullptr, nullptr),
              QWZ_INVALID_HANDLE);
  }
  EXPECT_EQ(slots_of(iv), ym_out(0, 0));
}

namespace {

std::string number_record(const char *name, const void *h, const void *e, const void *iv,
                          const void *n) {
  return std::string("<") + name + ">\n\tvoid*     \t" + hex12(h) + "\n\tQWZError*     \t" +
         hex12(e) + "\n\tQWZInterval*     \t" + hex12(iv) + "\n\tQWZNumber*     \t" + hex12(n);
}

}  // namespace

TEST_F(QWZIntervalFromNumber_, TraceRecordsWithTheNestedCheck) {
  QWZInterval *iv = ym(0, 0);
  QWZNumber good = num(1.5);
  QWZNumber bad = num(-1.99);
  TraceCapture trace;
  ASSERT_EQ(QWZIntervalFromNumber(env_, err_, iv, &good), QWZ_SUCCESS);
  auto &r = trace.records();
  ASSERT_EQ(r.size(), 4u);
  EXPECT_EQ(r[0].api_id, 183u);
  EXPECT_EQ(r[0].direction, 1u);
  EXPECT_EQ(r[0].text, number_record("QWZIntervalFromNumber", env_, err_, iv, &good));
  EXPECT_EQ(r[1].api_id, 154u);
  EXPECT_EQ(r[1].direction, 1u);
  EXPECT_EQ(r[2].api_id, 154u);
  EXPECT_EQ(r[2].direction, 0u);
  EXPECT_EQ(r[3].api_id, 183u);
  EXPECT_EQ(r[3].direction, 0u);
  EXPECT_EQ(r[3].status, 0);
  EXPECT_EQ(r[3].text, r[0].text);

  // An invalid result: the check runs and exits, the call does not.
  r.clear();
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &bad), QWZ_ERROR);
  ASSERT_EQ(r.size(), 3u);
  EXPECT_EQ(r[0].api_id, 183u);
  EXPECT_EQ(r[1].api_id, 154u);
  EXPECT_EQ(r[2].api_id, 154u);
  EXPECT_EQ(r[2].direction, 0u);

  r.clear();
  QWZNumber out{};
  ASSERT_EQ(QWZIntervalToNumber(env_, err_, iv, &out), QWZ_SUCCESS);
  ASSERT_EQ(r.size(), 2u);
  EXPECT_EQ(r[0].api_id, 184u);
  EXPECT_EQ(r[0].text, number_record("QWZIntervalToNumber", env_, err_, iv, &out));
  EXPECT_EQ(r[1].direction, 0u);
  EXPECT_EQ(r[1].text, r[0].text);

  r.clear();
  EXPECT_EQ(QWZIntervalToNumber(env_, err_, iv, nullptr), QWZ_ERROR);
  ASSERT_EQ(r.size(), 1u);
  EXPECT_EQ(r[0].text, number_record("QWZIntervalToNumber", env_, err_, iv, nullptr));

  // A nested check refused by the hook's exit answer fails the conversion.
  r.clear();
  trace.set_results(0, 6);
  QWZInterval *fresh = ym(0, 0);
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, fresh, &good), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(slots_of(fresh), ym_out(1, 6));
}
