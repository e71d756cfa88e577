// invmuldbl and invdivdbl: exact scaling by the double's binary value,
// rounding half away from zero, at the edges of both qualifiers; refusals;
// and multiply-then-divide returning the original within one unit.
#include "runtime/runtime.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace {

constexpr sb2 kYM = 1538;
constexpr sb2 kDS = 3407;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kDenormMin = std::numeric_limits<double>::denorm_min();

intrvl_t value_of(sb2 qualifier, const char *text) {
  intrvl_t v{};
  v.qualifier = qualifier;
  EXPECT_EQ(incvasc(text, &v), 0) << text;
  return v;
}

std::string text_of(const intrvl_t &v) {
  char buf[QWZ_RT_TEXT_SIZE] = {};
  EXPECT_EQ(intoasc(&v, buf), 0);
  return buf;
}

// A value holding `count` last units (signed), built through its text.
intrvl_t value_of_count(sb2 qualifier, int64_t count) {
  const bool neg = count < 0;
  const uint64_t c = neg ? static_cast<uint64_t>(-count) : static_cast<uint64_t>(count);
  char text[64];
  if (qualifier == kYM) {
    std::snprintf(text, sizeof text, "%s%04llu-%02llu", neg ? "-" : "",
                  static_cast<unsigned long long>(c / 12), static_cast<unsigned long long>(c % 12));
  } else {
    const uint64_t s = c / 100000;
    std::snprintf(text, sizeof text, "%s%02llu %02llu:%02llu:%02llu.%05llu", neg ? "-" : "",
                  static_cast<unsigned long long>(s / 86400),
                  static_cast<unsigned long long>(s % 86400 / 3600),
                  static_cast<unsigned long long>(s % 3600 / 60),
                  static_cast<unsigned long long>(s % 60),
                  static_cast<unsigned long long>(c % 100000));
  }
  return value_of(qualifier, text);
}

// The signed count a value holds.
int64_t count_of(const intrvl_t &v) {
  int64_t c = 0;
  for (int pos = 0; pos < v.value.exponent; ++pos)
    c = c * 10 + (pos < v.value.ndigits ? v.value.digits[pos] : 0);
  return v.value.sign == QWZ_DEC_NEGATIVE ? -c : c;
}

struct ScaleCase {
  sb2 qualifier;
  const char *text;
  double factor;
  const char *expect;  // intoasc text of the result
};

void run_cases(const ScaleCase *begin, const ScaleCase *end, bool divide) {
  for (const ScaleCase *c = begin; c != end; ++c) {
    const intrvl_t a = value_of(c->qualifier, c->text);
    intrvl_t r{};
    r.qualifier = c->qualifier;
    const sb4 rc = divide ? invdivdbl(&a, c->factor, &r) : invmuldbl(&a, c->factor, &r);
    ASSERT_EQ(rc, 0) << c->text << (divide ? " / " : " * ") << c->factor;
    EXPECT_EQ(r.qualifier, c->qualifier);
    EXPECT_EQ(text_of(r), c->expect) << c->text << (divide ? " / " : " * ") << c->factor;
  }
}

}  // namespace

TEST(invmuldbl, YearMonthProductsAndTies) {
  const ScaleCase cases[] = {
      {kYM, "0001-00", 1.5, "0001-06"},
      {kYM, "0001-00", -1.5, "-0001-06"},
      {kYM, "-0001-00", 1.5, "-0001-06"},
      {kYM, "-0001-00", -1.5, "0001-06"},
      // ties go away from zero, both ways
      {kYM, "0000-01", 0.5, "0000-01"},
      {kYM, "-0000-01", 0.5, "-0000-01"},
      {kYM, "0000-03", 0.5, "0000-02"},
      {kYM, "0000-03", -0.5, "-0000-02"},
      {kYM, "-0000-03", -0.5, "0000-02"},
      {kYM, "0000-05", 0.5, "0000-03"},
      // the nearest doubles on either side of a tie
      {kYM, "0000-03", 0.49999999999999994, "0000-01"},
      {kYM, "0000-03", 0.50000000000000011, "0000-02"},
      {kYM, "-0000-03", 0.49999999999999994, "-0000-01"},
      {kYM, "-0000-03", 0.50000000000000011, "-0000-02"},
      // 1/6 as a double is a little below 1/6: three months make just under
      // half a month, which a product rounded to double would make exactly 1/2
      {kYM, "0000-03", 1.0 / 6.0, "0000-00"},
      {kYM, "-0000-03", 1.0 / 6.0, "0000-00"},
      {kYM, "0000-01", 0.1, "0000-00"},
      {kYM, "0001-00", 0.1, "0000-01"},  // 1.2000000000000000666 months
      // edges of the qualifier
      {kYM, "9999-11", 1.0, "9999-11"},
      {kYM, "9999-11", -1.0, "-9999-11"},
      {kYM, "-9999-11", 1.0, "-9999-11"},
      {kYM, "0000-01", 119999.0, "9999-11"},
      {kYM, "0000-01", 119999.49999999999, "9999-11"},
      {kYM, "-0000-01", 119999.49999999999, "-9999-11"},
      {kYM, "9999-11", 1.0 + DBL_EPSILON, "9999-11"},
      {kYM, "0000-00", 1e308, "0000-00"},
      {kYM, "0000-00", DBL_MAX, "0000-00"},
      {kYM, "9999-11", kDenormMin, "0000-00"},
      {kYM, "9999-11", DBL_MIN, "0000-00"},
      {kYM, "9999-11", 0.0, "0000-00"},
      {kYM, "9999-11", -0.0, "0000-00"},
      {kYM, "-9999-11", 0.0, "0000-00"},
      {kYM, "9999-11", 1.0 / 239998.0, "0000-00"},  // just under 1/2
      {kYM, "9999-11", 4.1666319e-6, "0000-00"},
      {kYM, "0000-00", -1.0, "0000-00"},
  };
  run_cases(std::begin(cases), std::end(cases), false);
}

TEST(invmuldbl, DayFractionProductsAndTies) {
  const ScaleCase cases[] = {
      {kDS, "01 00:00:00.00000", 1.5, "01 12:00:00.00000"},
      {kDS, "-01 00:00:00.00000", 1.5, "-01 12:00:00.00000"},
      {kDS, "01 00:00:00.00000", 0.1, "00 02:24:00.00000"},
      {kDS, "00 00:00:00.00001", 0.5, "00 00:00:00.00001"},
      {kDS, "-00 00:00:00.00001", 0.5, "-00 00:00:00.00001"},
      {kDS, "00 00:00:00.00001", -0.5, "-00 00:00:00.00001"},
      {kDS, "00 00:00:00.00001", 0.49999999999999994, "00 00:00:00.00000"},
      {kDS, "00 00:00:00.00003", 0.5, "00 00:00:00.00002"},
      {kDS, "-00 00:00:00.00003", 0.5, "-00 00:00:00.00002"},
      {kDS, "00 00:00:00.00003", 1.0 / 6.0, "00 00:00:00.00000"},
      {kDS, "99 23:59:59.99999", 1.0, "99 23:59:59.99999"},
      {kDS, "99 23:59:59.99999", -1.0, "-99 23:59:59.99999"},
      {kDS, "-99 23:59:59.99999", -1.0, "99 23:59:59.99999"},
      {kDS, "00 00:00:00.00001", 863999999999.0, "99 23:59:59.99999"},
      {kDS, "00 00:00:00.00001", 863999999999.49988, "99 23:59:59.99999"},
      {kDS, "49 23:59:59.99999", 2.0, "99 23:59:59.99998"},
      {kDS, "99 23:59:59.99999", kDenormMin, "00 00:00:00.00000"},
      {kDS, "99 23:59:59.99999", 0.0, "00 00:00:00.00000"},
      {kDS, "99 23:59:59.99999", -0.0, "00 00:00:00.00000"},
      {kDS, "00 00:00:00.00000", 1e308, "00 00:00:00.00000"},
      {kDS, "00 00:00:01.00000", 1e-5, "00 00:00:00.00001"},
      {kDS, "00 00:00:01.00000", 0.5e-5, "00 00:00:00.00001"},  // 0.5000000000000000409
  };
  run_cases(std::begin(cases), std::end(cases), false);
}

TEST(invdivdbl, QuotientsAndTies) {
  const ScaleCase cases[] = {
      {kYM, "0000-01", 2.0, "0000-01"},   // 0.5 -> 1
      {kYM, "-0000-01", 2.0, "-0000-01"},
      {kYM, "0000-01", -2.0, "-0000-01"},
      {kYM, "0000-01", 3.0, "0000-00"},
      {kYM, "0000-02", 3.0, "0000-01"},
      {kYM, "0000-05", 10.0, "0000-01"},
      {kYM, "0000-05", 10.000000000000002, "0000-00"},
      {kYM, "-0000-05", 10.000000000000002, "0000-00"},
      {kYM, "0000-05", 9.9999999999999982, "0000-01"},
      {kYM, "0001-00", 0.5, "0002-00"},
      {kYM, "0001-00", -4.0, "-0000-03"},
      {kYM, "9999-11", 1.0, "9999-11"},
      {kYM, "-9999-11", -1.0, "9999-11"},
      {kYM, "9999-11", 1e308, "0000-00"},
      {kYM, "9999-11", DBL_MAX, "0000-00"},
      {kYM, "9999-11", -1e308, "0000-00"},
      {kYM, "9999-11", 239998.0, "0000-01"},   // exactly 1/2 month: away from zero
      {kYM, "-9999-11", 239998.0, "-0000-01"},
      {kYM, "9999-11", 239998.00000000003, "0000-00"},
      {kYM, "0000-00", kDenormMin, "0000-00"},
      {kDS, "01 00:00:00.00000", 3.0, "00 08:00:00.00000"},
      {kDS, "01 00:00:00.00000", 7.0, "00 03:25:42.85714"},
      {kDS, "-01 00:00:00.00000", 7.0, "-00 03:25:42.85714"},
      {kDS, "00 00:00:00.00001", 2.0, "00 00:00:00.00001"},
      {kDS, "00 00:00:00.00001", 2.0000000000000004, "00 00:00:00.00000"},
      {kDS, "99 23:59:59.99999", 1.0, "99 23:59:59.99999"},
      {kDS, "99 23:59:59.99999", 1e308, "00 00:00:00.00000"},
      {kDS, "49 23:59:59.99999", 0.5, "99 23:59:59.99998"},
      {kDS, "00 00:00:00.00001", 1.0 / 863999999999.0, "99 23:59:59.99999"},
  };
  run_cases(std::begin(cases), std::end(cases), true);
}

TEST(invmuldbl, ZeroResultIsPositive) {
  const intrvl_t a = value_of(kYM, "-0001-00");
  intrvl_t r{};
  r.qualifier = kYM;
  ASSERT_EQ(invmuldbl(&a, 0.0, &r), 0);
  EXPECT_EQ(r.value.sign, QWZ_DEC_POSITIVE);
  ASSERT_EQ(invmuldbl(&a, -0.0, &r), 0);
  EXPECT_EQ(r.value.sign, QWZ_DEC_POSITIVE);
  ASSERT_EQ(invmuldbl(&a, 2.0, &r), 0);
  EXPECT_EQ(r.value.sign, QWZ_DEC_NEGATIVE);
}

struct ScaleFail {
  sb2 qualifier;
  const char *text;
  double factor;
  sb4 number;
};

TEST(invmuldbl, Refusals) {
  const ScaleFail cases[] = {
      {kYM, "9999-11", 1.00001, QWZ_RT_INTERVAL_OVERFLOW},  // 120000.19999
      {kYM, "0000-01", 120000.0, QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "0000-01", 119999.5, QWZ_RT_INTERVAL_OVERFLOW},  // rounds to 120000
      {kYM, "-0000-01", 119999.5, QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "0000-01", 1e308, QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "-0000-01", DBL_MAX, QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "0000-01", -DBL_MAX, QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "50 00:00:00.00000", 2.0, QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "01 00:00:00.00000", 100.0, QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "01 00:00:00.00000", 99.99999999999, QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "00 00:00:00.00001", 863999999999.5, QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "00 00:00:00.00001", 1e308, QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "0001-00", kNaN, QWZ_RT_NOT_FINITE},
      {kYM, "0000-00", kNaN, QWZ_RT_NOT_FINITE},
      {kYM, "0001-00", kInf, QWZ_RT_NOT_FINITE},
      {kDS, "01 00:00:00.00000", -kInf, QWZ_RT_NOT_FINITE},
      {kDS, "00 00:00:00.00000", kInf, QWZ_RT_NOT_FINITE},
  };
  for (const ScaleFail &c : cases) {
    const intrvl_t a = value_of(c.qualifier, c.text);
    intrvl_t r{};
    r.qualifier = c.qualifier;
    r.value.exponent = 55;
    EXPECT_EQ(invmuldbl(&a, c.factor, &r), c.number) << c.text << " * " << c.factor;
    EXPECT_EQ(r.value.exponent, 55);
  }
}

TEST(invdivdbl, Refusals) {
  const ScaleFail cases[] = {
      {kYM, "0001-00", 0.0, QWZ_RT_DIVIDE_BY_ZERO},
      {kYM, "0001-00", -0.0, QWZ_RT_DIVIDE_BY_ZERO},
      {kYM, "0000-00", 0.0, QWZ_RT_DIVIDE_BY_ZERO},
      {kYM, "0000-01", kDenormMin, QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "0000-01", DBL_MIN, QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "0000-01", 1.0 / 120000.0, QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "9999-11", 0.99999, QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "50 00:00:00.00000", 0.5, QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "-99 23:59:59.99999", -kDenormMin, QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "01 00:00:00.00000", kNaN, QWZ_RT_NOT_FINITE},
      {kDS, "01 00:00:00.00000", kInf, QWZ_RT_NOT_FINITE},
      {kYM, "0001-00", -kInf, QWZ_RT_NOT_FINITE},
  };
  for (const ScaleFail &c : cases) {
    const intrvl_t a = value_of(c.qualifier, c.text);
    intrvl_t r{};
    r.qualifier = c.qualifier;
    r.value.exponent = 55;
    EXPECT_EQ(invdivdbl(&a, c.factor, &r), c.number) << c.text << " / " << c.factor;
    EXPECT_EQ(r.value.exponent, 55);
  }
}

TEST(invmuldbl, QualifierAndValueChecksComeFirst) {
  const intrvl_t ym = value_of(kYM, "0001-00");
  const intrvl_t ds = value_of(kDS, "01 00:00:00.00000");
  intrvl_t r{};
  r.qualifier = kDS;
  EXPECT_EQ(invmuldbl(&ym, 2.0, &r), QWZ_RT_QUALIFIER_MISMATCH);
  EXPECT_EQ(invdivdbl(&ym, 2.0, &r), QWZ_RT_QUALIFIER_MISMATCH);
  EXPECT_EQ(invmuldbl(&ym, kNaN, &r), QWZ_RT_QUALIFIER_MISMATCH);
  r.qualifier = kYM;
  EXPECT_EQ(invmuldbl(&ds, 2.0, &r), QWZ_RT_QUALIFIER_MISMATCH);
  r.qualifier = 1234;
  EXPECT_EQ(invmuldbl(&ym, 2.0, &r), QWZ_RT_BAD_QUALIFIER);
  EXPECT_EQ(invdivdbl(&ym, 0.0, &r), QWZ_RT_BAD_QUALIFIER);
  intrvl_t bad = ym;
  bad.qualifier = 0;
  r.qualifier = kYM;
  EXPECT_EQ(invmuldbl(&bad, 2.0, &r), QWZ_RT_BAD_QUALIFIER);
  EXPECT_EQ(invmuldbl(nullptr, 2.0, &r), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(invmuldbl(&ym, 2.0, nullptr), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(invdivdbl(nullptr, 2.0, &r), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(invdivdbl(&ym, 2.0, nullptr), QWZ_RT_NULL_ARGUMENT);
  // A value beyond its own qualifier, or not a whole count.
  intrvl_t over = ym;
  over.value.exponent = 7;
  EXPECT_EQ(invmuldbl(&over, 0.0, &r), QWZ_RT_INTERVAL_OVERFLOW);
  EXPECT_EQ(invdivdbl(&over, 1e308, &r), QWZ_RT_INTERVAL_OVERFLOW);
  intrvl_t frac = ym;
  frac.value.exponent = 1;  // 1.2 months
  EXPECT_EQ(invmuldbl(&frac, 1.0, &r), QWZ_RT_BAD_DECIMAL);
  intrvl_t garbage = ym;
  std::memset(&garbage.value, 0xEE, sizeof garbage.value);
  EXPECT_EQ(invmuldbl(&garbage, 1.0, &r), QWZ_RT_BAD_DECIMAL);
  EXPECT_EQ(invdivdbl(&garbage, kNaN, &r), QWZ_RT_BAD_DECIMAL);
}

// An independent reference with 128-bit integers, for factors whose exact
// product or quotient fits in them.
TEST(invmuldbl, AgreesWithInt128Reference) {
  std::mt19937_64 rng(77001);
  for (int i = 0; i < 20000; ++i) {
    const bool ds = rng() & 1;
    const sb2 q = ds ? kDS : kYM;
    const int64_t max = ds ? 863999999999 : 119999;
    const int64_t count = static_cast<int64_t>(rng() % static_cast<uint64_t>(max + 1)) *
                          ((rng() & 1) ? -1 : 1);
    // factor = k / 2^j, |k| < 2^53, 0 <= j < 70
    const int64_t k = static_cast<int64_t>(rng() % (uint64_t{1} << 53)) * ((rng() & 1) ? -1 : 1);
    const int j = static_cast<int>(rng() % 70);
    const double factor = std::ldexp(static_cast<double>(k), -j);
    const __int128 p = static_cast<__int128>(count) * k;
    const unsigned __int128 mag = static_cast<unsigned __int128>(p < 0 ? -p : p);
    unsigned __int128 r = mag >> j;
    if (j > 0 && ((mag >> (j - 1)) & 1)) ++r;
    const intrvl_t a = value_of_count(q, count);
    intrvl_t out{};
    out.qualifier = q;
    const sb4 rc = invmuldbl(&a, factor, &out);
    if (r > static_cast<unsigned __int128>(max)) {
      ASSERT_EQ(rc, QWZ_RT_INTERVAL_OVERFLOW) << count << " * " << factor;
    } else {
      ASSERT_EQ(rc, 0) << count << " * " << factor;
      const int64_t expect = p < 0 ? -static_cast<int64_t>(r) : static_cast<int64_t>(r);
      ASSERT_EQ(count_of(out), expect) << count << " * " << factor;
    }
  }
}

TEST(invdivdbl, AgreesWithInt128Reference) {
  std::mt19937_64 rng(77002);
  for (int i = 0; i < 20000; ++i) {
    const bool ds = rng() & 1;
    const sb2 q = ds ? kDS : kYM;
    const int64_t max = ds ? 863999999999 : 119999;
    const int64_t count = static_cast<int64_t>(rng() % static_cast<uint64_t>(max + 1)) *
                          ((rng() & 1) ? -1 : 1);
    // divisor = k / 2^j, 0 < k < 2^53, 0 <= j < 40: quotient = count x 2^j / k
    const int64_t k = static_cast<int64_t>(rng() % (uint64_t{1} << 53)) + 1;
    const int j = static_cast<int>(rng() % 40);
    const bool neg_divisor = rng() & 1;
    const double divisor = std::ldexp(static_cast<double>(neg_divisor ? -k : k), -j);
    const unsigned __int128 num =
        static_cast<unsigned __int128>(count < 0 ? -count : count) << j;
    unsigned __int128 r = num / static_cast<unsigned __int128>(k);
    if ((num % static_cast<unsigned __int128>(k)) * 2 >= static_cast<unsigned __int128>(k)) ++r;
    const intrvl_t a = value_of_count(q, count);
    intrvl_t out{};
    out.qualifier = q;
    const sb4 rc = invdivdbl(&a, divisor, &out);
    if (r > static_cast<unsigned __int128>(max)) {
      ASSERT_EQ(rc, QWZ_RT_INTERVAL_OVERFLOW) << count << " / " << divisor;
    } else {
      ASSERT_EQ(rc, 0) << count << " / " << divisor;
      const bool neg = (count < 0) != neg_divisor;
      const int64_t expect = neg ? -static_cast<int64_t>(r) : static_cast<int64_t>(r);
      ASSERT_EQ(count_of(out), expect) << count << " / " << divisor;
    }
  }
}

// Multiplying by a factor of magnitude at least 1 and dividing by it again
// gives back the original within one unit of the last field.
TEST(invmuldbl, MultiplyThenDivideReturnsTheOriginal) {
  std::mt19937_64 rng(20240607);
  std::uniform_real_distribution<double> log_factor(0.0, 6.0);
  int checked = 0;
  for (int i = 0; i < 40000; ++i) {
    const bool ds = rng() & 1;
    const sb2 q = ds ? kDS : kYM;
    const double max = ds ? 863999999999.0 : 119999.0;
    double factor = std::pow(10.0, log_factor(rng));
    if (rng() & 1) factor = -factor;
    const auto bound = static_cast<uint64_t>(max / std::fabs(factor));
    const int64_t count =
        static_cast<int64_t>(rng() % (bound + 1)) * ((rng() & 1) ? -1 : 1);
    const intrvl_t a = value_of_count(q, count);
    intrvl_t product{}, back{};
    product.qualifier = back.qualifier = q;
    ASSERT_EQ(invmuldbl(&a, factor, &product), 0) << count << " * " << factor;
    ASSERT_EQ(invdivdbl(&product, factor, &back), 0) << count << " * / " << factor;
    const int64_t diff = count_of(back) - count;
    ASSERT_LE(diff < 0 ? -diff : diff, 1) << count << " * / " << factor;
    ++checked;
  }
  EXPECT_EQ(checked, 40000);
}
