// incvasc and intoasc: interval values read from and written as text under
// the two served qualifiers, and every failure with its own number.
#include "runtime/runtime.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

constexpr sb2 kYM = 1538;
constexpr sb2 kDS = 3407;

// The value's count and sign as "[-]digits" (digits of the whole count).
std::string count_of(const intrvl_t &v) {
  std::string s = v.value.sign == QWZ_DEC_NEGATIVE ? "-" : "";
  if (v.value.ndigits == 0) return s + "0";
  for (int pos = 0; pos < v.value.exponent; ++pos)
    s += static_cast<char>('0' + (pos < v.value.ndigits ? v.value.digits[pos] : 0));
  return s;
}

std::string text_of(const intrvl_t &v) {
  char buf[QWZ_RT_TEXT_SIZE];
  std::memset(buf, 'x', sizeof buf);
  EXPECT_EQ(intoasc(&v, buf), 0);
  return buf;
}

struct TextCase {
  sb2 qualifier;
  const char *text;
  const char *count;   // whole last units, signed
  const char *written; // intoasc's text of the value read
};

}  // namespace

TEST(incvasc, ReadsBothQualifiers) {
  const TextCase cases[] = {
      {kYM, "0001-06", "18", "0001-06"},
      {kYM, "-0001-06", "-18", "-0001-06"},
      {kYM, "   -0001-06", "-18", "-0001-06"},
      {kYM, "0000-00", "0", "0000-00"},
      {kYM, "-0000-00", "0", "0000-00"},  // a zero is never negative
      {kYM, "9999-11", "119999", "9999-11"},
      {kYM, "-9999-11", "-119999", "-9999-11"},
      {kYM, "0000-11", "11", "0000-11"},
      {kYM, "00009999-00", "119988", "9999-00"},  // leading zeros are not digits that count
      {kYM, "1-1", "13", "0001-01"},
      {kYM, "0001-06  ", "18", "0001-06"},
      {kDS, "01 12:00:00.00000", "12960000000", "01 12:00:00.00000"},
      {kDS, "-01 12:00:00.00000", "-12960000000", "-01 12:00:00.00000"},
      {kDS, "00 00:00:00.00001", "1", "00 00:00:00.00001"},
      {kDS, "-00 00:00:00.00001", "-1", "-00 00:00:00.00001"},
      {kDS, "00 00:00:00.00000", "0", "00 00:00:00.00000"},
      {kDS, "99 23:59:59.99999", "863999999999", "99 23:59:59.99999"},
      {kDS, "-99 23:59:59.99999", "-863999999999", "-99 23:59:59.99999"},
      {kDS, "00 00:00:00.5", "50000", "00 00:00:00.50000"},  // a decimal fraction
      {kDS, "00 00:00:00.050", "5000", "00 00:00:00.05000"},
      {kDS, " 5  1:2:3.4 ", "43572340000", "05 01:02:03.40000"},
      {kDS, "00 23:59:59.99999", "8639999999", "00 23:59:59.99999"},
  };
  for (const TextCase &c : cases) {
    intrvl_t v{};
    v.qualifier = c.qualifier;
    ASSERT_EQ(incvasc(c.text, &v), 0) << c.text;
    EXPECT_EQ(v.qualifier, c.qualifier);
    EXPECT_EQ(count_of(v), c.count) << c.text;
    EXPECT_EQ(text_of(v), c.written) << c.text;
  }
}

TEST(incvasc, SignIsZeroForNegative) {
  intrvl_t v{};
  v.qualifier = kYM;
  ASSERT_EQ(incvasc("-0002-03", &v), 0);
  EXPECT_EQ(v.value.sign, 0);
  ASSERT_EQ(incvasc("0002-03", &v), 0);
  EXPECT_EQ(v.value.sign, 1);
}

struct FailCase {
  sb2 qualifier;
  const char *text;
  sb4 number;
};

TEST(incvasc, RefusesWithNumberOfItsOwn) {
  const FailCase cases[] = {
      // leading field beyond the qualifier's digits
      {kYM, "10000-00", QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "-10000-00", QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "2147483648-00", QWZ_RT_INTERVAL_OVERFLOW},
      {kYM, "99999999999999999999999999-00", QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "100 00:00:00.00000", QWZ_RT_INTERVAL_OVERFLOW},
      {kDS, "150 00:00:00.00000", QWZ_RT_INTERVAL_OVERFLOW},
      // non-leading fields out of range
      {kYM, "0001-12", QWZ_RT_FIELD_RANGE},
      {kYM, "0001-99999999999999999999999", QWZ_RT_FIELD_RANGE},
      {kDS, "01 24:00:00.00000", QWZ_RT_FIELD_RANGE},
      {kDS, "01 00:60:00.00000", QWZ_RT_FIELD_RANGE},
      {kDS, "01 00:00:60.00000", QWZ_RT_FIELD_RANGE},
      {kDS, "01 2147483648:00:00.00000", QWZ_RT_FIELD_RANGE},
      // the fraction has five digits at most: a sixth is out of range
      {kDS, "01 00:00:00.100000", QWZ_RT_FIELD_RANGE},
      {kDS, "01 00:00:00.000000", QWZ_RT_FIELD_RANGE},
      // malformed texts
      {kYM, "", QWZ_RT_BAD_SYNTAX},
      {kYM, "   ", QWZ_RT_BAD_SYNTAX},
      {kYM, "-", QWZ_RT_BAD_SYNTAX},
      {kYM, "0001", QWZ_RT_BAD_SYNTAX},
      {kYM, "0001-", QWZ_RT_BAD_SYNTAX},
      {kYM, "0001-06x", QWZ_RT_BAD_SYNTAX},
      {kYM, "+0001-06", QWZ_RT_BAD_SYNTAX},
      {kYM, "--0001-06", QWZ_RT_BAD_SYNTAX},
      {kYM, "0001--06", QWZ_RT_BAD_SYNTAX},
      {kYM, "0001 06", QWZ_RT_BAD_SYNTAX},
      {kYM, "10000-1x", QWZ_RT_BAD_SYNTAX},  // the shape is checked before the fields
      {kDS, "01 12:00:00", QWZ_RT_BAD_SYNTAX},
      {kDS, "01 12:00:00.", QWZ_RT_BAD_SYNTAX},
      {kDS, "01:12:00:00.00000", QWZ_RT_BAD_SYNTAX},
      {kDS, "0001-06", QWZ_RT_BAD_SYNTAX},
      {kDS, "01 12:00:-1.00000", QWZ_RT_BAD_SYNTAX},
      {kDS, "\t01 12:00:00.00000", QWZ_RT_BAD_SYNTAX},
  };
  for (const FailCase &c : cases) {
    intrvl_t v{};
    v.qualifier = c.qualifier;
    v.value.exponent = 77;  // untouched on failure
    EXPECT_EQ(incvasc(c.text, &v), c.number) << c.text;
    EXPECT_EQ(v.value.exponent, 77) << c.text;
  }
}

TEST(incvasc, RefusesOtherQualifiers) {
  for (sb2 q : {sb2{0}, sb2{1537}, sb2{1539}, sb2{3406}, sb2{3408}, sb2{-1538}, sb2{0x0D4E}}) {
    intrvl_t v{};
    v.qualifier = q;
    EXPECT_EQ(incvasc("0001-06", &v), QWZ_RT_BAD_QUALIFIER) << q;
    EXPECT_EQ(incvasc("01 00:00:00.00000", &v), QWZ_RT_BAD_QUALIFIER) << q;
  }
}

TEST(incvasc, RefusesNullArguments) {
  intrvl_t v{};
  v.qualifier = kYM;
  EXPECT_EQ(incvasc(nullptr, &v), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(incvasc("0001-06", nullptr), QWZ_RT_NULL_ARGUMENT);
}

TEST(intoasc, RefusesBadValues) {
  char buf[QWZ_RT_TEXT_SIZE] = "unchanged";
  intrvl_t v{};
  v.qualifier = kYM;
  v.value.sign = 1;
  EXPECT_EQ(intoasc(nullptr, buf), QWZ_RT_NULL_ARGUMENT);
  EXPECT_EQ(intoasc(&v, nullptr), QWZ_RT_NULL_ARGUMENT);

  intrvl_t bad_q = v;
  bad_q.qualifier = 1234;
  EXPECT_EQ(intoasc(&bad_q, buf), QWZ_RT_BAD_QUALIFIER);

  // 120000 months: one beyond 9999-11.
  intrvl_t big = v;
  big.value.exponent = 6;
  big.value.ndigits = 2;
  big.value.digits[0] = 1;
  big.value.digits[1] = 2;
  EXPECT_EQ(intoasc(&big, buf), QWZ_RT_INTERVAL_OVERFLOW);
  // 8.64e11 units: one beyond 99 23:59:59.99999.
  intrvl_t big_ds = big;
  big_ds.qualifier = kDS;
  big_ds.value.exponent = 12;
  big_ds.value.ndigits = 3;
  big_ds.value.digits[0] = 8;
  big_ds.value.digits[1] = 6;
  big_ds.value.digits[2] = 4;
  EXPECT_EQ(intoasc(&big_ds, buf), QWZ_RT_INTERVAL_OVERFLOW);
  big_ds.value.exponent = 32767;
  EXPECT_EQ(intoasc(&big_ds, buf), QWZ_RT_INTERVAL_OVERFLOW);

  // 1.5 months is not a whole count.
  intrvl_t frac = v;
  frac.value.exponent = 1;
  frac.value.ndigits = 2;
  frac.value.digits[0] = 1;
  frac.value.digits[1] = 5;
  EXPECT_EQ(intoasc(&frac, buf), QWZ_RT_BAD_DECIMAL);

  intrvl_t bad_digit = v;
  bad_digit.value.exponent = 1;
  bad_digit.value.ndigits = 1;
  bad_digit.value.digits[0] = 10;
  EXPECT_EQ(intoasc(&bad_digit, buf), QWZ_RT_BAD_DECIMAL);

  intrvl_t bad_sign = v;
  bad_sign.value.sign = 2;
  EXPECT_EQ(intoasc(&bad_sign, buf), QWZ_RT_BAD_DECIMAL);

  intrvl_t bad_len = v;
  bad_len.value.ndigits = QWZ_DEC_MAX_DIGITS + 1;
  EXPECT_EQ(intoasc(&bad_len, buf), QWZ_RT_BAD_DECIMAL);
  bad_len.value.ndigits = -1;
  EXPECT_EQ(intoasc(&bad_len, buf), QWZ_RT_BAD_DECIMAL);
  EXPECT_STREQ(buf, "unchanged");
}

TEST(intoasc, AcceptsUnnormalisedWholeCounts) {
  // 0.0180 x 10^3 with a leading and a trailing zero digit: 18 months.
  intrvl_t v{};
  v.qualifier = kYM;
  v.value.sign = 0;
  v.value.exponent = 3;
  v.value.ndigits = 4;
  v.value.digits[0] = 0;
  v.value.digits[1] = 1;
  v.value.digits[2] = 8;
  v.value.digits[3] = 0;
  EXPECT_EQ(text_of(v), "-0001-06");
  // A negative zero writes no sign.
  intrvl_t z{};
  z.qualifier = kDS;
  z.value.sign = 0;
  EXPECT_EQ(text_of(z), "00 00:00:00.00000");
}
