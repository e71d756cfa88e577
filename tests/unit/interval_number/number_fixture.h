// Shared pieces of the interval-number tests: numbers made from reals, their
// values read back, and the diagnostics these functions write.
#ifndef QWZ_TESTS_INTERVAL_NUMBER_FIXTURE_H
#define QWZ_TESTS_INTERVAL_NUMBER_FIXTURE_H

#include "unit/interval/interval_fixture.h"

#include <cstring>
#include <limits>
#include <string>

namespace qwz_test {

inline constexpr const char kNumberNullText[] = "the number could not be null.";
inline constexpr const char kDivisorZeroText[] = "divisor is equal to zero.";
inline constexpr const char kKindMismatchText[] = "inconsistent datatypes: expected %s got %s.";
inline constexpr const char kDecimalTooLargeText[] =
    "The decimal value is too large for a real number.";
inline constexpr const char kDecimalTooSmallText[] =
    "The decimal value is too small for a real number.";

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kDenormMin = std::numeric_limits<double>::denorm_min();

class NumberIntervalFixture : public IntervalFixture {
 protected:
  // A number holding v (read through the public conversion).
  QWZNumber num(double v) {
    QWZNumber n{};
    EXPECT_EQ(QWZNumberFromReal(err_, &v, sizeof v, &n), QWZ_SUCCESS) << v;
    return n;
  }
  QWZNumber num_ld(long double v) {
    QWZNumber n{};
    EXPECT_EQ(QWZNumberFromReal(err_, &v, sizeof v, &n), QWZ_SUCCESS);
    return n;
  }
  double value_of(const QWZNumber &n) {
    double v = -999.0;
    EXPECT_EQ(QWZNumberToReal(err_, &n, sizeof v, &v), QWZ_SUCCESS);
    return v;
  }
  // Bytes that are not a number (a fresh, zero-filled QWZNumber).
  static QWZNumber not_a_number() { return QWZNumber{}; }

  void expect_number_null() { expect_diag(800085, "", kNumberNullText); }
  void expect_divisor_zero() { expect_diag(800157, "", kDivisorZeroText); }
  void expect_kind_mismatch() { expect_diag(800158, "", kKindMismatchText); }
};

inline bool same_number(const QWZNumber &a, const QWZNumber &b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace qwz_test

#endif  // QWZ_TESTS_INTERVAL_NUMBER_FIXTURE_H
