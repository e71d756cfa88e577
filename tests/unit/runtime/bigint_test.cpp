// The fixed-width integer behind the runtime's exact scaling, and the rounded
// quotient built on it.
#include "runtime/bigint.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

using qwz::rt::BigUint;
using qwz::rt::compare;
using qwz::rt::Quotient;
using qwz::rt::rounded_quotient;

namespace {

BigUint pow2(int n) {
  BigUint b(1);
  EXPECT_TRUE(b.shift_left(n));
  return b;
}

}  // namespace

TEST(BigUint, BitLengthAndBits) {
  EXPECT_EQ(BigUint().bit_length(), 0);
  EXPECT_TRUE(BigUint().is_zero());
  EXPECT_EQ(BigUint(1).bit_length(), 1);
  EXPECT_EQ(BigUint(~std::uint64_t{0}).bit_length(), 64);
  EXPECT_EQ(pow2(64).bit_length(), 65);
  EXPECT_EQ(pow2(BigUint::kBits - 1).bit_length(), BigUint::kBits);
  const BigUint b = pow2(700);
  EXPECT_TRUE(b.bit(700));
  EXPECT_FALSE(b.bit(699));
  EXPECT_FALSE(b.bit(-1));
  EXPECT_FALSE(b.bit(BigUint::kBits));
}

TEST(BigUint, ShiftLeftAcrossLimbs) {
  BigUint b(0x8000000000000001ull);
  ASSERT_TRUE(b.shift_left(1));
  EXPECT_EQ(b.low64(), 2u);
  EXPECT_TRUE(b.bit(64));
  EXPECT_EQ(b.bit_length(), 65);
  ASSERT_TRUE(b.shift_left(128));
  EXPECT_TRUE(b.bit(129));
  EXPECT_TRUE(b.bit(192));
  EXPECT_EQ(b.bit_length(), 193);
  EXPECT_EQ(b.low64(), 0u);
}

TEST(BigUint, ShiftLeftRefusesToLoseBits) {
  BigUint b = pow2(BigUint::kBits - 1);
  const BigUint before = b;
  EXPECT_FALSE(b.shift_left(1));
  EXPECT_EQ(compare(b, before), 0);
  EXPECT_FALSE(b.shift_left(-1));
  BigUint zero;
  EXPECT_TRUE(zero.shift_left(5000));
  EXPECT_TRUE(zero.is_zero());
}

TEST(BigUint, MultiplyCarriesAndRefusesOverflow) {
  BigUint b(~std::uint64_t{0});
  ASSERT_TRUE(b.multiply(~std::uint64_t{0}));
  // (2^64 - 1)^2 = 2^128 - 2^65 + 1
  EXPECT_EQ(b.low64(), 1u);
  EXPECT_EQ(b.bit_length(), 128);
  BigUint top = pow2(BigUint::kBits - 2);
  const BigUint before = top;
  EXPECT_FALSE(top.multiply(4));
  EXPECT_EQ(compare(top, before), 0);
  EXPECT_TRUE(top.multiply(1));
  EXPECT_TRUE(top.multiply(0));
  EXPECT_TRUE(top.is_zero());
}

TEST(BigUint, SubtractBorrowsAcrossLimbs) {
  BigUint a = pow2(300);
  a.subtract(BigUint(1));
  EXPECT_EQ(a.bit_length(), 300);
  EXPECT_EQ(a.low64(), ~std::uint64_t{0});
  a.subtract(a);
  EXPECT_TRUE(a.is_zero());
}

TEST(BigUint, CompareOrdersByValue) {
  EXPECT_EQ(compare(pow2(65), pow2(64)), 1);
  EXPECT_EQ(compare(pow2(64), pow2(65)), -1);
  EXPECT_EQ(compare(BigUint(7), BigUint(7)), 0);
  EXPECT_EQ(compare(BigUint(), BigUint(1)), -1);
}

struct QuotientCase {
  std::uint64_t n, d, limit;
  Quotient outcome;
  std::uint64_t q;
};

TEST(RoundedQuotient, RoundsHalfAwayFromZero) {
  const QuotientCase cases[] = {
      {0, 5, 100, Quotient::Ok, 0},   {1, 2, 100, Quotient::Ok, 1},  // 0.5 -> 1
      {1, 3, 100, Quotient::Ok, 0},   {2, 3, 100, Quotient::Ok, 1},
      {5, 2, 100, Quotient::Ok, 3},   {7, 2, 100, Quotient::Ok, 4},
      {99, 1, 100, Quotient::Ok, 99}, {100, 1, 100, Quotient::Ok, 100},
      {201, 2, 100, Quotient::Overflow, 0},  // 100.5 rounds to 101
      {200, 2, 100, Quotient::Ok, 100},      {2009, 20, 100, Quotient::Ok, 100},  // 100.45
      {1, 0, 100, Quotient::Unrepresentable, 0},
  };
  for (const QuotientCase &c : cases) {
    std::uint64_t q = 12345;
    EXPECT_EQ(rounded_quotient(BigUint(c.n), BigUint(c.d), c.limit, &q), c.outcome)
        << c.n << "/" << c.d;
    if (c.outcome == Quotient::Ok) EXPECT_EQ(q, c.q) << c.n << "/" << c.d;
    else EXPECT_EQ(q, 12345u);
  }
}

TEST(RoundedQuotient, HugeOperands) {
  // (3 x 2^1000 + 2^999) / 2^1000 = 3.5 -> 4; one less -> 3.
  BigUint n = pow2(1000);
  ASSERT_TRUE(n.multiply(7));
  BigUint d = pow2(1001);
  std::uint64_t q = 0;
  ASSERT_EQ(rounded_quotient(n, d, 1000, &q), Quotient::Ok);
  EXPECT_EQ(q, 4u);
  n.subtract(BigUint(1));
  ASSERT_EQ(rounded_quotient(n, d, 1000, &q), Quotient::Ok);
  EXPECT_EQ(q, 3u);
  // 2^1100 / 1 is far beyond any limit.
  EXPECT_EQ(rounded_quotient(pow2(1100), BigUint(1), 1000, &q), Quotient::Overflow);
  // 1 / 2^1100 rounds to 0.
  ASSERT_EQ(rounded_quotient(BigUint(1), pow2(1100), 1000, &q), Quotient::Ok);
  EXPECT_EQ(q, 0u);
}

TEST(RoundedQuotient, MatchesIntegerArithmetic) {
  std::mt19937_64 rng(20240611);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t d = rng() % 1000000 + 1;
    const std::uint64_t n = rng() % (std::uint64_t{1} << 50);
    const std::uint64_t expect = n / d + ((n % d) * 2 >= d ? 1 : 0);
    std::uint64_t q = 0;
    ASSERT_EQ(rounded_quotient(BigUint(n), BigUint(d), std::uint64_t{1} << 61, &q), Quotient::Ok);
    ASSERT_EQ(q, expect) << n << "/" << d;
  }
}
