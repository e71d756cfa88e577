// rgetmsg: the text of each runtime error number, a message naming any other
// number, and cutting to the buffer's size.
#include "runtime/runtime.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

std::string message(sb4 number) {
  char buf[1024];
  std::memset(buf, 'x', sizeof buf);
  EXPECT_EQ(rgetmsg(number, buf, sizeof buf), 0);
  return buf;
}

}  // namespace

TEST(rgetmsg, EveryRuntimeNumber) {
  const struct {
    sb4 number;
    const char *text;
  } cases[] = {
      {-3101, "A null pointer was passed to the numeric runtime."},
      {-3102, "The interval qualifier is not supported."},
      {-3103, "The interval text does not match its qualifier."},
      {-3104, "The interval value overflows its qualifier: the leading field has too many digits."},
      {-3105, "An interval field is out of range."},
      {-3106, "The interval qualifiers are not compatible."},
      {-3107, "The value is not a finite number."},
      {-3108, "Division by zero."},
      {-3109, "The decimal value is too large for a real number."},
      {-3110, "The decimal value is too small for a real number."},
      {-3111, "The decimal value is malformed."},
  };
  const sb4 names[] = {QWZ_RT_NULL_ARGUMENT,      QWZ_RT_BAD_QUALIFIER,    QWZ_RT_BAD_SYNTAX,
                       QWZ_RT_INTERVAL_OVERFLOW,  QWZ_RT_FIELD_RANGE,      QWZ_RT_QUALIFIER_MISMATCH,
                       QWZ_RT_NOT_FINITE,         QWZ_RT_DIVIDE_BY_ZERO,   QWZ_RT_DECIMAL_OVERFLOW,
                       QWZ_RT_DECIMAL_UNDERFLOW,  QWZ_RT_BAD_DECIMAL};
  ASSERT_EQ(std::size(names), std::size(cases));
  for (size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(names[i], cases[i].number);
    EXPECT_EQ(message(cases[i].number), cases[i].text);
  }
}

TEST(rgetmsg, OtherNumbersAreNamed) {
  EXPECT_EQ(message(0), "Unknown numeric runtime error 0.");
  EXPECT_EQ(message(-1), "Unknown numeric runtime error -1.");
  EXPECT_EQ(message(-3100), "Unknown numeric runtime error -3100.");
  EXPECT_EQ(message(-3112), "Unknown numeric runtime error -3112.");
  EXPECT_EQ(message(800157), "Unknown numeric runtime error 800157.");
  EXPECT_EQ(message(-2147483647 - 1), "Unknown numeric runtime error -2147483648.");
}

TEST(rgetmsg, CutsToSize) {
  char buf[16];
  std::memset(buf, 'x', sizeof buf);
  ASSERT_EQ(rgetmsg(QWZ_RT_DIVIDE_BY_ZERO, buf, 9), 0);
  EXPECT_STREQ(buf, "Division");
  EXPECT_EQ(buf[9], 'x');
  std::memset(buf, 'x', sizeof buf);
  ASSERT_EQ(rgetmsg(QWZ_RT_DIVIDE_BY_ZERO, buf, 1), 0);
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(buf[1], 'x');
  ASSERT_EQ(rgetmsg(-7, buf, 12), 0);
  EXPECT_STREQ(buf, "Unknown num");
  std::memset(buf, 'x', sizeof buf);
  EXPECT_EQ(rgetmsg(QWZ_RT_DIVIDE_BY_ZERO, buf, 0), -1);
  EXPECT_EQ(rgetmsg(QWZ_RT_DIVIDE_BY_ZERO, buf, -5), -1);
  EXPECT_EQ(buf[0], 'x');
  EXPECT_EQ(rgetmsg(QWZ_RT_DIVIDE_BY_ZERO, nullptr, 1024), -1);
}
