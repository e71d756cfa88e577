// QWZNumber from and to a binary floating value (float, double or long
// double, chosen by the caller's length), and the bridge between a number and
// the runtime's decimal value. A real value becomes its shortest decimal form
// that reads back as the same value, so every finite value of the caller's
// type survives the round trip unchanged.
#include "number/number.h"

#include "date_datetime_interval/frame.h"

#include <cstring>
#include <type_traits>

namespace {

using qwz::done;
using qwz::front_end_error;
using qwz::Outcome;

constexpr ub4 API_NUMBER_TO_REAL = 108;
constexpr ub4 API_NUMBER_FROM_REAL = 109;

constexpr ub1 kTag = 0x4E;
constexpr ub1 kNegative = 0x01;
constexpr int kTagByte = 0, kFlagsByte = 1, kCountByte = 2, kExponentByte = 3, kDigitsByte = 5;
static_assert(kDigitsByte + (QWZ_NUMBER_MAX_DIGITS + 1) / 2 == sizeof(QWZNumber));

ub1 digit_at(const QWZNumber &n, int i) {
  const ub1 b = n.qwz_number_part[kDigitsByte + i / 2];
  return static_cast<ub1>(i % 2 == 0 ? b >> 4 : b & 0x0F);
}

// A runtime conversion failure as the number functions report it.
Outcome conversion_error(QWZError *errhp, sb4 status) {
  switch (status) {
    case QWZ_RT_NOT_FINITE:
      return front_end_error(errhp, kRealNotFiniteText, QWZ_REAL_NOT_FINITE);
    case QWZ_RT_DECIMAL_OVERFLOW:
    case QWZ_RT_DECIMAL_UNDERFLOW:
      return front_end_error(errhp, kNumberRangeText, QWZ_NUMBER_RANGE);
    default:
      return front_end_error(errhp, kNumberInvalidText, QWZ_NUMBER_INVALID);
  }
}

enum class Real { Float, Double, LongDouble, Unsupported };

Real real_of_length(uword length) {
  // double first, so that a platform whose long double is a double reads
  // that length as a double.
  if (length == sizeof(double)) return Real::Double;
  if (length == sizeof(float)) return Real::Float;
  if (length == sizeof(long double)) return Real::LongDouble;
  return Real::Unsupported;
}

template <class T>
sb4 real_to_decimal(const void *rnum, decimal_t *dec) {
  T v;
  std::memcpy(&v, rnum, sizeof v);  // the caller's value need not be aligned
  if constexpr (std::is_same_v<T, double>) return deccvdbl(v, dec);
  else return qwz::rt::decimal_from_real(v, dec);
}

template <class T>
sb4 decimal_to_real(const decimal_t *dec, void *rsl) {
  T v{};
  sb4 rc = 0;
  if constexpr (std::is_same_v<T, double>) rc = dectodbl(dec, &v);
  else rc = qwz::rt::decimal_to_real(dec, &v);
  if (rc == 0) std::memcpy(rsl, &v, sizeof v);
  return rc;
}

}  // namespace

extern "C" {

sword qwz_number_2_decimal(const QWZNumber *number, decimal_t *dec) {
  if (number == nullptr || dec == nullptr) return QWZ_RT_NULL_ARGUMENT;
  const ub1 *b = number->qwz_number_part;
  const int count = b[kCountByte];
  const auto exponent = static_cast<sb2>(static_cast<ub2>(b[kExponentByte] | b[kExponentByte + 1] << 8));
  if (b[kTagByte] != kTag || (b[kFlagsByte] & ~kNegative) != 0 || count > QWZ_NUMBER_MAX_DIGITS ||
      count > QWZ_DEC_MAX_DIGITS)
    return QWZ_RT_BAD_DECIMAL;
  if (count == 0 && exponent != 0) return QWZ_RT_BAD_DECIMAL;
  decimal_t out{};
  for (int i = 0; i < QWZ_NUMBER_MAX_DIGITS; ++i) {
    const ub1 d = digit_at(*number, i);
    if (i >= count) {
      if (d != 0) return QWZ_RT_BAD_DECIMAL;  // unused nibbles stay 0
      continue;
    }
    if (d > 9) return QWZ_RT_BAD_DECIMAL;
    out.digits[i] = d;
  }
  if (count > 0 && (out.digits[0] == 0 || out.digits[count - 1] == 0)) return QWZ_RT_BAD_DECIMAL;
  out.sign = (b[kFlagsByte] & kNegative) ? QWZ_DEC_NEGATIVE : QWZ_DEC_POSITIVE;
  out.ndigits = static_cast<sb2>(count);
  out.exponent = exponent;
  *dec = out;
  return 0;
}

sword qwz_decimal_2_number(const decimal_t *dec, QWZNumber *number) {
  if (dec == nullptr || number == nullptr) return QWZ_RT_NULL_ARGUMENT;
  if (!qwz::rt::decimal_well_formed(dec)) return QWZ_RT_BAD_DECIMAL;
  int first = 0, last = dec->ndigits;
  while (first < last && dec->digits[first] == 0) ++first;
  while (last > first && dec->digits[last - 1] == 0) --last;
  const int count = last - first;
  // Dropping leading zeros lowers the exponent.
  const int exponent = count == 0 ? 0 : dec->exponent - first;
  if (exponent < -32768 || exponent > 32767 || count > QWZ_NUMBER_MAX_DIGITS)
    return QWZ_RT_BAD_DECIMAL;
  QWZNumber out{};
  ub1 *b = out.qwz_number_part;
  b[kTagByte] = kTag;
  b[kFlagsByte] = dec->sign == QWZ_DEC_NEGATIVE ? kNegative : 0;
  b[kCountByte] = static_cast<ub1>(count);
  const auto e = static_cast<ub2>(static_cast<sb2>(exponent));
  b[kExponentByte] = static_cast<ub1>(e & 0xFF);
  b[kExponentByte + 1] = static_cast<ub1>(e >> 8);
  for (int i = 0; i < count; ++i) {
    const ub1 d = dec->digits[first + i];
    b[kDigitsByte + i / 2] |= static_cast<ub1>(i % 2 == 0 ? d << 4 : d);
  }
  *number = out;
  return 0;
}

QWZ_API sword QWZNumberFromReal(QWZError *errhp, const void *rnum, uword rnum_length,
                                QWZNumber *number) {
  return qwz::run_frame(
      API_NUMBER_FROM_REAL, errhp,
      [&]() -> Outcome {
        if (!rnum) return front_end_error(errhp, kRealNullText, QWZ_REAL_NULL);
        if (!number) return front_end_error(errhp, kNumberNullText, QWZ_NUMBER_NULL);
        decimal_t dec{};
        sb4 rc = 0;
        switch (real_of_length(rnum_length)) {
          case Real::Float: rc = real_to_decimal<float>(rnum, &dec); break;
          case Real::Double: rc = real_to_decimal<double>(rnum, &dec); break;
          case Real::LongDouble: rc = real_to_decimal<long double>(rnum, &dec); break;
          case Real::Unsupported:
            return front_end_error(errhp, kRealLengthText, QWZ_REAL_LENGTH);
        }
        if (rc == 0) rc = qwz_decimal_2_number(&dec, number);
        if (rc != 0) return conversion_error(errhp, rc);
        return done(0);
      },
      errhp, rnum, rnum_length, number);
}

QWZ_API sword QWZNumberToReal(QWZError *errhp, const QWZNumber *number, uword rsl_length,
                              void *rsl) {
  return qwz::run_frame(
      API_NUMBER_TO_REAL, errhp,
      [&]() -> Outcome {
        if (!number) return front_end_error(errhp, kNumberNullText, QWZ_NUMBER_NULL);
        if (!rsl) return front_end_error(errhp, kRealNullText, QWZ_REAL_NULL);
        const Real real = real_of_length(rsl_length);
        if (real == Real::Unsupported)
          return front_end_error(errhp, kRealLengthText, QWZ_REAL_LENGTH);
        decimal_t dec{};
        sb4 rc = qwz_number_2_decimal(number, &dec);
        if (rc == 0) {
          switch (real) {
            case Real::Float: rc = decimal_to_real<float>(&dec, rsl); break;
            case Real::Double: rc = decimal_to_real<double>(&dec, rsl); break;
            case Real::LongDouble: rc = decimal_to_real<long double>(&dec, rsl); break;
            case Real::Unsupported: break;
          }
        }
        if (rc != 0) return conversion_error(errhp, rc);
        return done(0);
      },
      errhp, number, rsl_length, rsl);
}

}  // extern "C"
