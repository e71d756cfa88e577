// qwz_interval_2_intrvl_t, qwz_intrvl_t_2_interval and qwz_number_2_double:
// descriptors to and from runtime values, numbers to doubles.
#include "unit/interval_number/number_fixture.h"

#include <climits>
#include <string>

using namespace qwz_test;

namespace {

std::string text_of(const intrvl_t &v) {
  char buf[QWZ_RT_TEXT_SIZE] = {};
  EXPECT_EQ(intoasc(&v, buf), 0);
  return buf;
}

struct ToValueCase {
  ub4 kind;
  Slots slots;
  sword status;
  const char *text;  // intoasc's text of the value, when status is 0
};

}  // namespace

using qwz_interval_2_intrvl_t_ = NumberIntervalFixture;
using qwz_intrvl_t_2_interval_ = NumberIntervalFixture;
using qwz_number_2_double_ = NumberIntervalFixture;

TEST_F(qwz_interval_2_intrvl_t_, WritesTheSlotsAsText) {
  const ToValueCase cases[] = {
      {INTERVAL_KIND_YM, {1, 6, 333, 444, 555}, 0, "0001-06"},
      {INTERVAL_KIND_YM, {-1, -6, 0, 0, 0}, 0, "-0001-06"},
      {INTERVAL_KIND_YM, {0, 0, -7, -7, -7}, 0, "0000-00"},  // other slots not read
      {INTERVAL_KIND_YM, {0, -1, 0, 0, 0}, 0, "-0000-01"},
      // mixed signs: the magnitudes, led by '-'
      {INTERVAL_KIND_YM, {1, -3, 0, 0, 0}, 0, "-0001-03"},
      {INTERVAL_KIND_YM, {-1, 3, 0, 0, 0}, 0, "-0001-03"},
      {INTERVAL_KIND_YM, {9999, 11, 0, 0, 0}, 0, "9999-11"},
      {INTERVAL_KIND_YM, {-9999, -11, 0, 0, 0}, 0, "-9999-11"},
      {INTERVAL_KIND_YM, {10000, 0, 0, 0, 0}, QWZ_RT_INTERVAL_OVERFLOW, nullptr},
      {INTERVAL_KIND_YM, {INT_MAX, 0, 0, 0, 0}, QWZ_RT_INTERVAL_OVERFLOW, nullptr},
      {INTERVAL_KIND_YM, {INT_MIN, 0, 0, 0, 0}, QWZ_RT_INTERVAL_OVERFLOW, nullptr},
      {INTERVAL_KIND_YM, {0, 12, 0, 0, 0}, QWZ_RT_FIELD_RANGE, nullptr},
      {INTERVAL_KIND_YM, {0, INT_MIN, 0, 0, 0}, QWZ_RT_FIELD_RANGE, nullptr},
      {INTERVAL_KIND_YM, {0, INT_MAX, 0, 0, 0}, QWZ_RT_FIELD_RANGE, nullptr},
      {INTERVAL_KIND_DS, {1, 12, 0, 0, 0}, 0, "01 12:00:00.00000"},
      {INTERVAL_KIND_DS, {-1, -12, 0, 0, 0}, 0, "-01 12:00:00.00000"},
      {INTERVAL_KIND_DS, {0, 0, 0, 0, 1}, 0, "00 00:00:00.00001"},
      {INTERVAL_KIND_DS, {0, 0, 0, 0, -1}, 0, "-00 00:00:00.00001"},
      {INTERVAL_KIND_DS, {99, 23, 59, 59, 99999}, 0, "99 23:59:59.99999"},
      {INTERVAL_KIND_DS, {-99, -23, -59, -59, -99999}, 0, "-99 23:59:59.99999"},
      {INTERVAL_KIND_DS, {100, 0, 0, 0, 0}, QWZ_RT_INTERVAL_OVERFLOW, nullptr},
      {INTERVAL_KIND_DS, {150, 0, 0, 0, 0}, QWZ_RT_INTERVAL_OVERFLOW, nullptr},
      {INTERVAL_KIND_DS, {INT_MIN, 0, 0, 0, 0}, QWZ_RT_INTERVAL_OVERFLOW, nullptr},
      {INTERVAL_KIND_DS, {0, 24, 0, 0, 0}, QWZ_RT_FIELD_RANGE, nullptr},
      {INTERVAL_KIND_DS, {0, 0, 60, 0, 0}, QWZ_RT_FIELD_RANGE, nullptr},
      {INTERVAL_KIND_DS, {0, 0, 0, -60, 0}, QWZ_RT_FIELD_RANGE, nullptr},
      {INTERVAL_KIND_DS, {0, 0, 0, 0, 100000}, QWZ_RT_FIELD_RANGE, nullptr},
      {INTERVAL_KIND_DS, {0, 0, 0, 0, 123456}, QWZ_RT_FIELD_RANGE, nullptr},
      {INTERVAL_KIND_DS, {0, INT_MIN, INT_MIN, INT_MIN, INT_MIN}, QWZ_RT_FIELD_RANGE, nullptr},
      {INTERVAL_KIND_DS, {INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX}, QWZ_RT_INTERVAL_OVERFLOW,
       nullptr},
  };
  for (const ToValueCase &c : cases) {
    QWZInterval *iv = of_kind(c.kind, c.slots);
    intrvl_t v{};
    ASSERT_EQ(qwz_interval_2_intrvl_t(iv, &v), c.status) << c.slots[0] << " " << c.slots[1];
    EXPECT_EQ(v.qualifier, c.kind == INTERVAL_KIND_YM ? 1538 : 3407);
    if (c.status == 0) {
      EXPECT_EQ(text_of(v), c.text);
      EXPECT_EQ(v.value.sign, c.text[0] == '-' ? 0 : 1);
    }
    EXPECT_EQ(slots_of(iv), c.slots);
  }
  expect_clear();
}

TEST_F(qwz_interval_2_intrvl_t_, OtherKindsAndNull) {
  QWZInterval other{};
  other.hdr.type = DATETIME_KIND_DATE;
  intrvl_t v{};
  EXPECT_EQ(qwz_interval_2_intrvl_t(&other, &v), QWZ_RT_BAD_QUALIFIER);
  EXPECT_EQ(qwz_interval_2_intrvl_t(nullptr, &v), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(qwz_interval_2_intrvl_t(ym(1, 0), nullptr), QWZ_RT_NULL_ARGUMENT);
}

TEST_F(qwz_intrvl_t_2_interval_, ReadsTheValueIntoTheDestinationsKind) {
  intrvl_t v{};
  v.qualifier = 1538;
  ASSERT_EQ(incvasc("-0001-06", &v), 0);
  QWZInterval *y = ym(7, 7);
  ASSERT_EQ(qwz_intrvl_t_2_interval(&v, y), 0);
  EXPECT_EQ(slots_of(y), (Slots{-1, -6, 333, 444, 555}));

  v.qualifier = 3407;
  ASSERT_EQ(incvasc("-01 02:03:04.00005", &v), 0);
  QWZInterval *d = ds(9, 9, 9, 9, 9);
  ASSERT_EQ(qwz_intrvl_t_2_interval(&v, d), 0);
  EXPECT_EQ(slots_of(d), (Slots{-1, -2, -3, -4, -5}));

  ASSERT_EQ(incvasc("99 23:59:59.99999", &v), 0);
  ASSERT_EQ(qwz_intrvl_t_2_interval(&v, d), 0);
  EXPECT_EQ(slots_of(d), (Slots{99, 23, 59, 59, 99999}));

  // A destination of neither kind is left alone.
  QWZInterval other{};
  other.hdr.type = DATETIME_KIND_DATE;
  other.slot[0] = 5;
  EXPECT_EQ(qwz_intrvl_t_2_interval(&v, &other), 0);
  EXPECT_EQ(other.slot[0], 5);
}

TEST_F(qwz_intrvl_t_2_interval_, IntoascFailuresComeBackAsTheyAre) {
  QWZInterval *y = ym(7, 7);
  intrvl_t bad{};
  bad.qualifier = 1234;
  bad.value.sign = 1;
  EXPECT_EQ(qwz_intrvl_t_2_interval(&bad, y), QWZ_RT_BAD_QUALIFIER);
  bad.qualifier = 1538;
  bad.value.exponent = 7;
  bad.value.ndigits = 1;
  bad.value.digits[0] = 9;  // 9,000,000 months
  EXPECT_EQ(qwz_intrvl_t_2_interval(&bad, y), QWZ_RT_INTERVAL_OVERFLOW);
  EXPECT_EQ(slots_of(y), (Slots{7, 7, 333, 444, 555}));
  EXPECT_EQ(qwz_intrvl_t_2_interval(nullptr, y), QWZ_RT_NULL_ARGUMENT);
  intrvl_t ok{};
  ok.qualifier = 1538;
  ok.value.sign = 1;
  EXPECT_EQ(qwz_intrvl_t_2_interval(&ok, nullptr), QWZ_RT_NULL_ARGUMENT);
  expect_clear();
}

TEST_F(qwz_number_2_double_, ConvertsAndRecordsOnlyRuntimeFailures) {
  double d = 0;
  const QWZNumber n = num(1.5);
  ASSERT_EQ(qwz_number_2_double(err_, &n, &d), 0);
  EXPECT_EQ(d, 1.5);
  expect_clear();

  // The bridge's failure: no diagnostic.
  d = 42;
  const QWZNumber garbage = not_a_number();
  EXPECT_EQ(qwz_number_2_double(err_, &garbage, &d), QWZ_RT_BAD_DECIMAL);
  EXPECT_EQ(d, 42.0);
  expect_clear();
  EXPECT_EQ(qwz_number_2_double(err_, nullptr, &d), QWZ_RT_NULL_ARGUMENT);
  expect_clear();

  // dectodbl's failure: the runtime's message and number.
  const QWZNumber huge = num_ld(1e4000L);
  EXPECT_EQ(qwz_number_2_double(err_, &huge, &d), QWZ_RT_DECIMAL_OVERFLOW);
  expect_diag(QWZ_RT_DECIMAL_OVERFLOW, "", kDecimalTooLargeText);
  const QWZNumber tiny = num_ld(-1e-4000L);
  clear_err_msg(err_);
  EXPECT_EQ(qwz_number_2_double(err_, &tiny, &d), QWZ_RT_DECIMAL_UNDERFLOW);
  expect_diag(QWZ_RT_DECIMAL_UNDERFLOW, "", kDecimalTooSmallText);
  EXPECT_EQ(d, 42.0);
}

TEST(runtime_error, FetchesTheRuntimesMessage) {
  QWZEnv *env = nullptr;
  QWZError *err = nullptr;
  ASSERT_EQ(QWZEnvCreate(&env, 0), 0);
  ASSERT_EQ(QWZHandleAlloc(env, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR), 0);
  EXPECT_EQ(qwz::runtime_error(err, QWZ_RT_NOT_FINITE), QWZ_RT_NOT_FINITE);
  Diag d = read_diag(err);
  EXPECT_EQ(d.number, QWZ_RT_NOT_FINITE);
  EXPECT_EQ(d.message, "The value is not a finite number.");
  EXPECT_EQ(d.state, "");
  EXPECT_EQ(qwz::runtime_error(err, -77), -77);
  d = read_diag(err);
  EXPECT_EQ(d.number, -77);
  EXPECT_EQ(d.message, "Unknown numeric runtime error -77.");
  QWZHandleFree(env, QWZ_HTYPE_ENV);
}
