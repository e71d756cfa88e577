// qwz_number_2_decimal and qwz_decimal_2_number: the bridge between the
// interface's number and the runtime's decimal value.
#include "support/test_support.h"

#include <cstring>
#include <string>

namespace {

decimal_t make(sb2 sign, const char *digits, sb2 exponent) {
  decimal_t d{};
  d.sign = sign;
  d.exponent = exponent;
  d.ndigits = static_cast<sb2>(std::strlen(digits));
  for (int i = 0; i < d.ndigits; ++i) d.digits[i] = static_cast<ub1>(digits[i] - '0');
  return d;
}

std::string show(const decimal_t &d) {
  std::string s = d.sign == QWZ_DEC_NEGATIVE ? "-0." : "0.";
  for (int i = 0; i < d.ndigits; ++i) s += static_cast<char>('0' + d.digits[i]);
  return s + "e" + std::to_string(d.exponent);
}

}  // namespace

TEST(qwz_decimal_2_number, NormalisesAndRoundTrips) {
  const struct {
    decimal_t in;
    const char *back;
  } cases[] = {
      {make(1, "15", 1), "0.15e1"},
      {make(0, "15", 1), "-0.15e1"},
      {make(1, "0015000", 3), "0.15e1"},
      {make(1, "", 0), "0.e0"},
      {make(0, "", 0), "-0.e0"},
      {make(1, "000", 500), "0.e0"},
      {make(1, "1234567890123456789012345678901234", -32768),
       "0.1234567890123456789012345678901234e-32768"},
      {make(0, "9", 32767), "-0.9e32767"},
      {make(1, "09", -32767), "0.9e-32768"},
  };
  for (const auto &c : cases) {
    QWZNumber n;
    std::memset(&n, 0xAA, sizeof n);
    ASSERT_EQ(qwz_decimal_2_number(&c.in, &n), 0) << show(c.in);
    decimal_t d;
    std::memset(&d, 0xBB, sizeof d);
    ASSERT_EQ(qwz_number_2_decimal(&n, &d), 0) << show(c.in);
    EXPECT_EQ(show(d), c.back);
    for (int i = d.ndigits; i < QWZ_DEC_MAX_DIGITS; ++i) EXPECT_EQ(d.digits[i], 0);
  }
}

TEST(qwz_decimal_2_number, Refusals) {
  QWZNumber n;
  std::memset(&n, 0xAA, sizeof n);
  const QWZNumber before = n;
  decimal_t d = make(1, "09", -32768);  // 0.9e-32769 leaves the exponent's range
  EXPECT_EQ(qwz_decimal_2_number(&d, &n), QWZ_RT_BAD_DECIMAL);
  d = make(2, "1", 1);
  EXPECT_EQ(qwz_decimal_2_number(&d, &n), QWZ_RT_BAD_DECIMAL);
  d = make(1, "1", 1);
  d.digits[0] = 11;
  EXPECT_EQ(qwz_decimal_2_number(&d, &n), QWZ_RT_BAD_DECIMAL);
  d.ndigits = 35;
  EXPECT_EQ(qwz_decimal_2_number(&d, &n), QWZ_RT_BAD_DECIMAL);
  EXPECT_EQ(std::memcmp(&n, &before, sizeof n), 0);
  EXPECT_EQ(qwz_decimal_2_number(nullptr, &n), QWZ_RT_NULL_ARGUMENT);
  d = make(1, "1", 1);
  EXPECT_EQ(qwz_decimal_2_number(&d, nullptr), QWZ_RT_NULL_ARGUMENT);
}

TEST(qwz_number_2_decimal, Refusals) {
  decimal_t d = make(1, "7", 1);
  const QWZNumber zero_bytes{};
  EXPECT_EQ(qwz_number_2_decimal(&zero_bytes, &d), QWZ_RT_BAD_DECIMAL);
  EXPECT_EQ(show(d), "0.7e1");
  EXPECT_EQ(qwz_number_2_decimal(nullptr, &d), QWZ_RT_NULL_ARGUMENT);
  QWZNumber n{};
  decimal_t one = make(1, "1", 1);
  ASSERT_EQ(qwz_decimal_2_number(&one, &n), 0);
  EXPECT_EQ(qwz_number_2_decimal(&n, nullptr), QWZ_RT_NULL_ARGUMENT);
}
