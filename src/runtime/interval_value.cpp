// Interval values: reading and writing their text under a qualifier, and
// scaling them by a double. An interval value holds a whole number of its
// qualifier's last unit (months, or 1/100000 second); the scaling works on
// that count with the double's exact binary value (m x 2^e) through BigUint,
// so the only rounding is the final one, half away from zero.
#include "runtime/bigint.h"
#include "runtime/runtime.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace {

using qwz::rt::BigUint;
using std::uint64_t;

enum class Kind { YearMonth, DayFraction };

// One served qualifier: its shape and the size of its units.
struct Qualifier {
  sb2 code;
  Kind kind;
  int leading_digits;      // significant digits the leading field may have
  uint64_t leading_unit;   // last units in one leading unit
  uint64_t max_count;      // largest count: 9..9 leading units and every other field full
};

constexpr uint64_t kDayUnits = 86400ull * 100000ull;  // 1/100000 s in a day
constexpr Qualifier kQualifiers[] = {
    {QWZ_QUAL_YEAR_MONTH, Kind::YearMonth, 4, 12, 9999ull * 12 + 11},
    {QWZ_QUAL_DAY_FRACTION, Kind::DayFraction, 2, kDayUnits, 99ull * kDayUnits + kDayUnits - 1},
};

const Qualifier *find_qualifier(sb2 code) {
  for (const Qualifier &q : kQualifiers)
    if (q.code == code) return &q;
  return nullptr;
}

// ---- count <-> decimal ------------------------------------------------------------

void count_to_decimal(uint64_t count, bool negative, decimal_t *dec) {
  decimal_t out{};
  out.sign = (negative && count != 0) ? QWZ_DEC_NEGATIVE : QWZ_DEC_POSITIVE;
  ub1 rev[20];
  int n = 0;
  for (uint64_t c = count; c != 0; c /= 10) rev[n++] = static_cast<ub1>(c % 10);
  out.exponent = static_cast<sb2>(n);
  for (int i = 0; i < n; ++i) out.digits[i] = rev[n - 1 - i];
  out.ndigits = static_cast<sb2>(n);
  while (out.ndigits > 0 && out.digits[out.ndigits - 1] == 0) --out.ndigits;
  *dec = out;
}

// The count a value holds, for a value of qualifier q: QWZ_RT_BAD_DECIMAL for
// a malformed or fractional decimal, QWZ_RT_INTERVAL_OVERFLOW beyond q.
sb4 decimal_to_count(const decimal_t &dec, const Qualifier &q, uint64_t *count, bool *negative) {
  if (!qwz::rt::decimal_well_formed(&dec)) return QWZ_RT_BAD_DECIMAL;
  // Digits past the units position must be zero.
  for (int i = 0; i < dec.ndigits; ++i)
    if (i >= dec.exponent && dec.digits[i] != 0) return QWZ_RT_BAD_DECIMAL;
  uint64_t c = 0;
  for (int pos = 0; pos < dec.exponent; ++pos) {
    const uint64_t d = pos < dec.ndigits ? dec.digits[pos] : 0;
    c = c * 10 + d;  // c <= max_count < 2^40 before this step: no wrap
    if (c > q.max_count) return QWZ_RT_INTERVAL_OVERFLOW;
  }
  *count = c;
  *negative = dec.sign == QWZ_DEC_NEGATIVE && c != 0;
  return 0;
}

// ---- text ------------------------------------------------------------------------

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// A run of digits: its value (saturated), significant digit count and length.
struct Field {
  uint64_t value = 0;
  int significant = 0;
  int length = 0;
};

bool read_field(const char *&p, Field *f) {
  Field out;
  for (; is_digit(*p); ++p) {
    ++out.length;
    const int d = *p - '0';
    if (out.significant == 0 && d == 0) continue;
    ++out.significant;
    if (out.significant <= 18) out.value = out.value * 10 + static_cast<uint64_t>(d);
  }
  *f = out;
  return out.length > 0;
}

bool expect(const char *&p, char c) {
  if (*p != c) return false;
  ++p;
  return true;
}

void skip_blanks(const char *&p) {
  while (*p == ' ') ++p;
}

// A non-leading field within 0..max.
bool in_range(const Field &f, uint64_t max) { return f.significant <= 18 && f.value <= max; }

sb4 parse_text(const char *text, const Qualifier &q, uint64_t *count, bool *negative) {
  const char *p = text;
  skip_blanks(p);
  const bool neg = expect(p, '-');
  Field lead, f[4];
  if (!read_field(p, &lead)) return QWZ_RT_BAD_SYNTAX;
  if (q.kind == Kind::YearMonth) {
    if (!expect(p, '-') || !read_field(p, &f[0])) return QWZ_RT_BAD_SYNTAX;
  } else {
    if (!expect(p, ' ')) return QWZ_RT_BAD_SYNTAX;
    skip_blanks(p);
    if (!read_field(p, &f[0]) || !expect(p, ':') || !read_field(p, &f[1]) || !expect(p, ':') ||
        !read_field(p, &f[2]) || !expect(p, '.') || !read_field(p, &f[3]))
      return QWZ_RT_BAD_SYNTAX;
  }
  skip_blanks(p);
  if (*p != '\0') return QWZ_RT_BAD_SYNTAX;

  if (lead.significant > q.leading_digits) return QWZ_RT_INTERVAL_OVERFLOW;
  uint64_t c = 0;
  if (q.kind == Kind::YearMonth) {
    if (!in_range(f[0], 11)) return QWZ_RT_FIELD_RANGE;
    c = lead.value * 12 + f[0].value;
  } else {
    if (!in_range(f[0], 23) || !in_range(f[1], 59) || !in_range(f[2], 59))
      return QWZ_RT_FIELD_RANGE;
    if (f[3].length > 5) return QWZ_RT_FIELD_RANGE;
    // The fraction digits are read as a decimal fraction: ".5" is 50000.
    uint64_t frac = f[3].value;
    for (int i = f[3].length; i < 5; ++i) frac *= 10;
    c = lead.value * kDayUnits + ((f[0].value * 60 + f[1].value) * 60 + f[2].value) * 100000 + frac;
  }
  *count = c;
  *negative = neg && c != 0;
  return 0;
}

// ---- scaling -----------------------------------------------------------------------

enum class Op { Multiply, Divide };

sb4 scale(const intrvl_t *value, double factor, intrvl_t *result, Op op) {
  if (value == nullptr || result == nullptr) return QWZ_RT_NULL_ARGUMENT;
  const Qualifier *in = find_qualifier(value->qualifier);
  const Qualifier *out = find_qualifier(result->qualifier);
  if (in == nullptr || out == nullptr) return QWZ_RT_BAD_QUALIFIER;
  // Both qualifiers of a class share their last unit, so the count carries over.
  if (in->kind != out->kind) return QWZ_RT_QUALIFIER_MISMATCH;
  uint64_t a = 0;
  bool a_negative = false;
  if (const sb4 rc = decimal_to_count(value->value, *in, &a, &a_negative)) return rc;
  if (!std::isfinite(factor)) return QWZ_RT_NOT_FINITE;
  if (op == Op::Divide && factor == 0.0) return QWZ_RT_DIVIDE_BY_ZERO;

  // factor = (-1)^s x m x 2^e exactly.
  const uint64_t bits = std::bit_cast<uint64_t>(factor);
  const bool f_negative = (bits >> 63) != 0;
  const int biased = static_cast<int>((bits >> 52) & 0x7FF);
  uint64_t m = bits & ((uint64_t{1} << 52) - 1);
  int e = -1074;
  if (biased != 0) {
    m |= uint64_t{1} << 52;
    e = biased - 1075;
  }

  // result = n / d with n and d whole numbers.
  BigUint n(a), d(1);
  bool fits = true;
  if (op == Op::Multiply) {
    fits = n.multiply(m);
    if (e >= 0) fits = fits && n.shift_left(e);
    else fits = fits && d.shift_left(-e);
  } else {
    fits = d.multiply(m);
    if (e >= 0) fits = fits && d.shift_left(e);
    else fits = fits && n.shift_left(-e);
  }
  if (!fits) return QWZ_RT_INTERVAL_OVERFLOW;  // beyond any sizing BigUint is meant for
  uint64_t r = 0;
  switch (qwz::rt::rounded_quotient(n, d, out->max_count, &r)) {
    case qwz::rt::Quotient::Ok:
      break;
    case qwz::rt::Quotient::Overflow:
    case qwz::rt::Quotient::Unrepresentable:
      return QWZ_RT_INTERVAL_OVERFLOW;
  }
  intrvl_t res = *result;
  count_to_decimal(r, a_negative != f_negative, &res.value);
  *result = res;
  return 0;
}

}  // namespace

extern "C" {

sb4 incvasc(const char *text, intrvl_t *value) {
  if (text == nullptr || value == nullptr) return QWZ_RT_NULL_ARGUMENT;
  const Qualifier *q = find_qualifier(value->qualifier);
  if (q == nullptr) return QWZ_RT_BAD_QUALIFIER;
  uint64_t count = 0;
  bool negative = false;
  if (const sb4 rc = parse_text(text, *q, &count, &negative)) return rc;
  count_to_decimal(count, negative, &value->value);
  return 0;
}

sb4 intoasc(const intrvl_t *value, char *text) {
  if (value == nullptr || text == nullptr) return QWZ_RT_NULL_ARGUMENT;
  const Qualifier *q = find_qualifier(value->qualifier);
  if (q == nullptr) return QWZ_RT_BAD_QUALIFIER;
  uint64_t c = 0;
  bool negative = false;
  if (const sb4 rc = decimal_to_count(value->value, *q, &c, &negative)) return rc;
  const char *sign = negative ? "-" : "";
  const auto lead = static_cast<unsigned long long>(c / q->leading_unit);
  const uint64_t rest = c % q->leading_unit;
  if (q->kind == Kind::YearMonth) {
    std::snprintf(text, QWZ_RT_TEXT_SIZE, "%s%0*llu-%02llu", sign, q->leading_digits, lead,
                  static_cast<unsigned long long>(rest));
  } else {
    const uint64_t secs = rest / 100000;
    std::snprintf(text, QWZ_RT_TEXT_SIZE, "%s%0*llu %02llu:%02llu:%02llu.%05llu", sign,
                  q->leading_digits, lead, static_cast<unsigned long long>(secs / 3600),
                  static_cast<unsigned long long>(secs / 60 % 60),
                  static_cast<unsigned long long>(secs % 60),
                  static_cast<unsigned long long>(rest % 100000));
  }
  return 0;
}

sb4 invmuldbl(const intrvl_t *value, double factor, intrvl_t *result) {
  return scale(value, factor, result, Op::Multiply);
}

sb4 invdivdbl(const intrvl_t *value, double divisor, intrvl_t *result) {
  return scale(value, divisor, result, Op::Divide);
}

}  // extern "C"
