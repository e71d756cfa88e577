// deccvdbl and dectodbl (and the float and long double conversions beside
// them): shortest decimal forms, exact round trips, range refusals.
#include "runtime/runtime.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// "[-]0.<digits>e<exponent>" for a decimal.
std::string show(const decimal_t &d) {
  std::string s = d.sign == QWZ_DEC_NEGATIVE ? "-0." : "0.";
  for (int i = 0; i < d.ndigits; ++i) s += static_cast<char>('0' + d.digits[i]);
  return s + "e" + std::to_string(d.exponent);
}

decimal_t make(sb2 sign, const char *digits, sb2 exponent) {
  decimal_t d{};
  d.sign = sign;
  d.exponent = exponent;
  d.ndigits = static_cast<sb2>(std::strlen(digits));
  for (int i = 0; i < d.ndigits; ++i) d.digits[i] = static_cast<ub1>(digits[i] - '0');
  return d;
}

}  // namespace

TEST(deccvdbl, ShortestDecimalForm) {
  const struct {
    double value;
    const char *shown;
  } cases[] = {
      {0.0, "0.e0"},
      {-0.0, "-0.e0"},
      {1.0, "0.1e1"},
      {-1.0, "-0.1e1"},
      {0.1, "0.1e0"},
      {1.5, "0.15e1"},
      {-2.5e-300, "-0.25e-299"},
      {1e308, "0.1e309"},
      {123456789012345678.0, "0.12345678901234568e18"},
      {DBL_MAX, "0.17976931348623157e309"},
      {-DBL_MAX, "-0.17976931348623157e309"},
      {DBL_MIN, "0.22250738585072014e-307"},
      {std::numeric_limits<double>::denorm_min(), "0.5e-323"},
      {1.0 / 3.0, "0.3333333333333333e0"},
      {0.5 / 86400.0, "0.5787037037037037e-5"},
  };
  for (const auto &c : cases) {
    decimal_t d;
    std::memset(&d, 0xAB, sizeof d);
    ASSERT_EQ(deccvdbl(c.value, &d), 0) << c.shown;
    EXPECT_EQ(show(d), c.shown);
    for (int i = d.ndigits; i < QWZ_DEC_MAX_DIGITS; ++i) EXPECT_EQ(d.digits[i], 0);
  }
}

TEST(deccvdbl, RefusesNonFiniteAndNull) {
  decimal_t d = make(1, "7", 1);
  EXPECT_EQ(deccvdbl(kNaN, &d), QWZ_RT_NOT_FINITE);
  EXPECT_EQ(deccvdbl(-kNaN, &d), QWZ_RT_NOT_FINITE);
  EXPECT_EQ(deccvdbl(kInf, &d), QWZ_RT_NOT_FINITE);
  EXPECT_EQ(deccvdbl(-kInf, &d), QWZ_RT_NOT_FINITE);
  EXPECT_EQ(show(d), "0.7e1");
  EXPECT_EQ(deccvdbl(1.0, nullptr), QWZ_RT_NULL_ARGUMENT);
}

TEST(dectodbl, ReadsDecimals) {
  const struct {
    decimal_t dec;
    double value;
  } cases[] = {
      {make(1, "", 0), 0.0},
      {make(1, "15", 1), 1.5},
      {make(0, "15", 1), -1.5},
      {make(1, "0015000", 3), 1.5},       // leading and trailing zero digits
      {make(1, "000", 32767), 0.0},       // a zero with any exponent
      {make(1, "9007199254740993", 16), 9007199254740992.0},  // tie to even
      {make(1, "9007199254740995", 16), 9007199254740996.0},
      {make(1, "17976931348623158", 309), DBL_MAX},
      {make(1, "24703282292062328", -323), std::numeric_limits<double>::denorm_min()},
      {make(1, "1", -307), 1e-308},
      {make(1, "1234567890123456789012345678901234", 1), 1.234567890123456789},
  };
  for (const auto &c : cases) {
    double v = 99.0;
    ASSERT_EQ(dectodbl(&c.dec, &v), 0) << show(c.dec);
    EXPECT_EQ(std::bit_cast<uint64_t>(v), std::bit_cast<uint64_t>(c.value)) << show(c.dec);
  }
  double v = 1.0;
  const decimal_t neg_zero = make(0, "", 0);
  ASSERT_EQ(dectodbl(&neg_zero, &v), 0);
  EXPECT_TRUE(std::signbit(v));
  EXPECT_EQ(v, 0.0);
}

TEST(dectodbl, Refusals) {
  const struct {
    decimal_t dec;
    sb4 number;
  } cases[] = {
      {make(1, "17976931348623159", 309), QWZ_RT_DECIMAL_OVERFLOW},
      {make(0, "2", 309), QWZ_RT_DECIMAL_OVERFLOW},
      {make(1, "1", 32767), QWZ_RT_DECIMAL_OVERFLOW},
      {make(1, "0001", 313), QWZ_RT_DECIMAL_OVERFLOW},  // 1e309 behind leading zeros
      {make(1, "24703282292062327", -323), QWZ_RT_DECIMAL_UNDERFLOW},
      {make(0, "1", -400), QWZ_RT_DECIMAL_UNDERFLOW},
      {make(1, "9", -32768), QWZ_RT_DECIMAL_UNDERFLOW},
      {make(1, "0001", -321), QWZ_RT_DECIMAL_UNDERFLOW},  // 1e-325 behind leading zeros
  };
  for (const auto &c : cases) {
    double v = 42.0;
    EXPECT_EQ(dectodbl(&c.dec, &v), c.number) << show(c.dec);
    EXPECT_EQ(v, 42.0);
  }
  double v = 0;

  decimal_t bad = make(2, "1", 1);
  EXPECT_EQ(dectodbl(&bad, &v), QWZ_RT_BAD_DECIMAL);
  bad = make(1, "1", 1);
  bad.ndigits = QWZ_DEC_MAX_DIGITS + 1;
  EXPECT_EQ(dectodbl(&bad, &v), QWZ_RT_BAD_DECIMAL);
  bad.ndigits = -1;
  EXPECT_EQ(dectodbl(&bad, &v), QWZ_RT_BAD_DECIMAL);
  bad = make(1, "19", 1);
  bad.digits[1] = 10;
  EXPECT_EQ(dectodbl(&bad, &v), QWZ_RT_BAD_DECIMAL);
  decimal_t garbage;
  std::memset(&garbage, 0xFF, sizeof garbage);
  EXPECT_EQ(dectodbl(&garbage, &v), QWZ_RT_BAD_DECIMAL);
  const decimal_t ok = make(1, "1", 1);
  EXPECT_EQ(dectodbl(nullptr, &v), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(dectodbl(&ok, nullptr), QWZ_RT_NULL_ARGUMENT);
}

// Every finite double comes back bit for bit: random bit patterns over the
// whole range, and the boundaries.
TEST(deccvdbl, RoundTripsEveryFiniteDouble) {
  std::mt19937_64 rng(5551212);
  auto check = [](double x) {
    decimal_t d;
    ASSERT_EQ(deccvdbl(x, &d), 0) << x;
    double back = 0;
    ASSERT_EQ(dectodbl(&d, &back), 0) << x;
    ASSERT_EQ(std::bit_cast<uint64_t>(back), std::bit_cast<uint64_t>(x)) << x;
  };
  int n = 0;
  while (n < 200000) {
    const double x = std::bit_cast<double>(rng());
    if (!std::isfinite(x)) continue;
    check(x);
    ++n;
  }
  for (double x : {0.0, -0.0, DBL_MIN, -DBL_MIN, DBL_MAX, -DBL_MAX, DBL_EPSILON, 1e308, 1e-308,
                   std::numeric_limits<double>::denorm_min(), std::nextafter(DBL_MIN, 0.0),
                   std::nextafter(1.0, 2.0), std::nextafter(1.0, 0.0), 0.1, 1.0 / 3.0})
    check(x);
  for (int e = -1074; e <= 1023; ++e) check(std::ldexp(1.0, e));
}

TEST(DecimalFromReal, FloatAndLongDouble) {
  decimal_t d;
  ASSERT_EQ(qwz::rt::decimal_from_real(0.1f, &d), 0);
  EXPECT_EQ(show(d), "0.1e0");
  ASSERT_EQ(qwz::rt::decimal_from_real(FLT_MAX, &d), 0);
  EXPECT_EQ(show(d), "0.34028235e39");
  ASSERT_EQ(qwz::rt::decimal_from_real(1.0L / 3.0L, &d), 0);
  EXPECT_EQ(show(d), "0.33333333333333333334e0");
  ASSERT_EQ(qwz::rt::decimal_from_real(LDBL_MAX, &d), 0);
  EXPECT_EQ(d.exponent, 4933);
  EXPECT_EQ(qwz::rt::decimal_from_real(std::numeric_limits<float>::quiet_NaN(), &d),
            QWZ_RT_NOT_FINITE);
  EXPECT_EQ(qwz::rt::decimal_from_real(-std::numeric_limits<long double>::infinity(), &d),
            QWZ_RT_NOT_FINITE);

  float f = 0;
  ASSERT_EQ(qwz::rt::decimal_to_real(&d, &f), QWZ_RT_DECIMAL_OVERFLOW);
  long double ld = 0;
  ASSERT_EQ(qwz::rt::decimal_to_real(&d, &ld), 0);
  EXPECT_EQ(ld, LDBL_MAX);
  const decimal_t tiny = make(1, "1", -50);
  EXPECT_EQ(qwz::rt::decimal_to_real(&tiny, &f), QWZ_RT_DECIMAL_UNDERFLOW);
  ASSERT_EQ(qwz::rt::decimal_to_real(&tiny, &ld), 0);
  EXPECT_EQ(ld, 1e-51L);

  // Long double subnormals, down to the smallest.
  for (long double x : {std::numeric_limits<long double>::denorm_min(), LDBL_MIN / 3.0L,
                        -LDBL_MIN / 1024.0L}) {
    ASSERT_EQ(qwz::rt::decimal_from_real(x, &d), 0);
    long double back = 0;
    ASSERT_EQ(qwz::rt::decimal_to_real(&d, &back), 0);
    EXPECT_EQ(back, x);
  }
  const decimal_t below = make(1, "1", -4951);  // 1e-4952: below half the smallest subnormal
  EXPECT_EQ(qwz::rt::decimal_to_real(&below, &ld), QWZ_RT_DECIMAL_UNDERFLOW);
  const decimal_t above = make(0, "12", 4933);  // -1.2e4932
  EXPECT_EQ(qwz::rt::decimal_to_real(&above, &ld), QWZ_RT_DECIMAL_OVERFLOW);

  std::mt19937_64 rng(42);
  for (int i = 0; i < 50000; ++i) {
    const float x = std::bit_cast<float>(static_cast<uint32_t>(rng()));
    if (!std::isfinite(x)) continue;
    ASSERT_EQ(qwz::rt::decimal_from_real(x, &d), 0);
    float back = 0;
    ASSERT_EQ(qwz::rt::decimal_to_real(&d, &back), 0) << x;
    ASSERT_EQ(std::bit_cast<uint32_t>(back), std::bit_cast<uint32_t>(x));
  }
  for (int i = 0; i < 50000; ++i) {
    const long double x = std::ldexp(static_cast<long double>(rng()) + 1.0L,
                                     static_cast<int>(rng() % 32700) - 16400);
    ASSERT_EQ(qwz::rt::decimal_from_real(x, &d), 0);
    long double back = 0;
    ASSERT_EQ(qwz::rt::decimal_to_real(&d, &back), 0);
    ASSERT_EQ(back, x);
  }
}
