// A small fixed-width unsigned integer for the runtime's exact arithmetic on
// doubles. A finite double is m x 2^e exactly (m < 2^53, -1074 <= e <= 971),
// so the exact product or quotient of a count and a double is a ratio of two
// integers below 2^1120; 18 limbs of 64 bits (1152 bits) hold every value the
// interval scaling builds. Every operation reports a carry out of the top
// limb instead of dropping it, so a mistake in the sizing shows up as an
// error rather than a wrong result.
#ifndef QWZ_RUNTIME_BIGINT_H
#define QWZ_RUNTIME_BIGINT_H

#include <cstdint>

namespace qwz::rt {

class BigUint {
 public:
  static constexpr int kLimbs = 18;
  static constexpr int kBits = kLimbs * 64;

  constexpr BigUint() = default;
  constexpr explicit BigUint(std::uint64_t v) { limb_[0] = v; }

  constexpr bool is_zero() const {
    for (std::uint64_t l : limb_)
      if (l) return false;
    return true;
  }

  // Number of significant bits (0 for zero).
  constexpr int bit_length() const {
    for (int i = kLimbs - 1; i >= 0; --i)
      if (limb_[i]) return i * 64 + (64 - __builtin_clzll(limb_[i]));
    return 0;
  }

  constexpr bool bit(int n) const {
    if (n < 0 || n >= kBits) return false;
    return (limb_[n / 64] >> (n % 64)) & 1u;
  }

  // The low 64 bits.
  constexpr std::uint64_t low64() const { return limb_[0]; }

  // *this <<= n; false (and *this unchanged) when a set bit would be lost.
  constexpr bool shift_left(int n) {
    if (n < 0) return false;
    if (n == 0 || is_zero()) return true;
    if (bit_length() + n > kBits) return false;
    const int words = n / 64, bits = n % 64;
    for (int i = kLimbs - 1; i >= 0; --i) {
      const int src = i - words;
      std::uint64_t v = 0;
      if (src >= 0) {
        v = limb_[src] << bits;
        if (bits && src - 1 >= 0) v |= limb_[src - 1] >> (64 - bits);
      }
      limb_[i] = v;
    }
    return true;
  }

  // *this *= f; false (and *this unchanged) on a carry out of the top limb.
  constexpr bool multiply(std::uint64_t f) {
    BigUint r;
    unsigned __int128 carry = 0;
    for (int i = 0; i < kLimbs; ++i) {
      const unsigned __int128 p = static_cast<unsigned __int128>(limb_[i]) * f + carry;
      r.limb_[i] = static_cast<std::uint64_t>(p);
      carry = p >> 64;
    }
    if (carry) return false;
    *this = r;
    return true;
  }

  // *this -= o, for o <= *this.
  constexpr void subtract(const BigUint &o) {
    std::uint64_t borrow = 0;
    for (int i = 0; i < kLimbs; ++i) {
      const std::uint64_t a = limb_[i], b = o.limb_[i];
      const std::uint64_t d = a - b - borrow;
      borrow = (a < b || (a == b && borrow)) ? 1u : 0u;
      limb_[i] = d;
    }
  }

  friend constexpr int compare(const BigUint &a, const BigUint &b) {
    for (int i = kLimbs - 1; i >= 0; --i) {
      if (a.limb_[i] != b.limb_[i]) return a.limb_[i] < b.limb_[i] ? -1 : 1;
    }
    return 0;
  }

 private:
  std::uint64_t limb_[kLimbs] = {};
};

// -1, 0 or 1 as a is less than, equal to or greater than b.
constexpr int compare(const BigUint &a, const BigUint &b);

// Outcome of rounded_quotient.
enum class Quotient { Ok, Overflow, Unrepresentable };

// q = n / d rounded half away from zero (both non-negative, d > 0), provided
// q <= limit (limit < 2^62). Overflow when the rounded quotient exceeds
// limit; Unrepresentable when an intermediate value does not fit (never for
// the sizes the interval scaling uses).
constexpr Quotient rounded_quotient(BigUint n, const BigUint &d, std::uint64_t limit,
                                    std::uint64_t *q) {
  if (d.is_zero()) return Quotient::Unrepresentable;
  // The rounded quotient exceeds limit exactly when 2n >= (2 limit + 1) d.
  BigUint twice_n = n;
  if (!twice_n.shift_left(1)) return Quotient::Unrepresentable;
  BigUint bound = d;
  if (!bound.multiply(2 * limit + 1)) return Quotient::Unrepresentable;
  if (compare(twice_n, bound) >= 0) return Quotient::Overflow;
  // Now n / d < limit + 1/2 < 2^62: 63 quotient bits by shift and subtract.
  std::uint64_t r = 0;
  for (int i = 62; i >= 0; --i) {
    BigUint t = d;
    if (!t.shift_left(i)) continue;  // d x 2^i does not fit, so exceeds n
    if (compare(n, t) >= 0) {
      n.subtract(t);
      r |= std::uint64_t{1} << i;
    }
  }
  // n is now the remainder: round up when 2 x remainder >= d.
  BigUint twice_rem = n;
  if (!twice_rem.shift_left(1)) return Quotient::Unrepresentable;
  if (compare(twice_rem, d) >= 0) ++r;
  *q = r;
  return Quotient::Ok;
}

}  // namespace qwz::rt

#endif  // QWZ_RUNTIME_BIGINT_H
