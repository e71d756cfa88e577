// Decimal values from and to binary floating values. A value goes out as its
// shortest decimal form that reads back as the same value (std::to_chars) and
// comes back as the nearest value of the type (std::from_chars); both are
// exact, locale-free and allocation-free, so every finite value survives the
// round trip unchanged.
#include "runtime/runtime.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <system_error>

namespace qwz::rt {

bool decimal_well_formed(const decimal_t *dec) {
  if (dec->sign != QWZ_DEC_NEGATIVE && dec->sign != QWZ_DEC_POSITIVE) return false;
  if (dec->ndigits < 0 || dec->ndigits > QWZ_DEC_MAX_DIGITS) return false;
  for (int i = 0; i < dec->ndigits; ++i)
    if (dec->digits[i] > 9) return false;
  return true;
}

namespace {

// Room for the scientific form of any long double ("-d.<up to 20 digits>e-4951").
constexpr int kTextRoom = 64;

template <class T>
sb4 from_real(T value, decimal_t *dec) {
  if (dec == nullptr) return QWZ_RT_NULL_ARGUMENT;
  if (!std::isfinite(value)) return QWZ_RT_NOT_FINITE;
  char text[kTextRoom];
  const auto res = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific);
  if (res.ec != std::errc()) return QWZ_RT_BAD_DECIMAL;  // cannot happen: the room suffices
  const char *p = text;
  const char *end = res.ptr;
  decimal_t out{};
  out.sign = QWZ_DEC_POSITIVE;
  if (p < end && *p == '-') {
    out.sign = QWZ_DEC_NEGATIVE;
    ++p;
  }
  // Mantissa "d[.ddd]": at most 21 significant digits for any type here.
  for (; p < end && *p != 'e'; ++p) {
    if (*p == '.') continue;
    if (out.ndigits >= QWZ_DEC_MAX_DIGITS) return QWZ_RT_BAD_DECIMAL;
    out.digits[out.ndigits++] = static_cast<ub1>(*p - '0');
  }
  int exp10 = 0;
  if (p < end && *p == 'e') {
    ++p;
    if (std::from_chars(p[0] == '+' ? p + 1 : p, end, exp10).ec != std::errc())
      return QWZ_RT_BAD_DECIMAL;
  }
  while (out.ndigits > 0 && out.digits[out.ndigits - 1] == 0) --out.ndigits;
  // d.ddd x 10^exp10 is 0.dddd x 10^(exp10 + 1).
  out.exponent = out.ndigits == 0 ? 0 : static_cast<sb2>(exp10 + 1);
  *dec = out;
  return 0;
}

// Out of range one way or the other: the magnitude's order tells which.
sb4 range_error(const decimal_t *dec) {
  int lead = 0;
  while (lead < dec->ndigits && dec->digits[lead] == 0) ++lead;
  return dec->exponent - lead > 0 ? QWZ_RT_DECIMAL_OVERFLOW : QWZ_RT_DECIMAL_UNDERFLOW;
}

bool has_nonzero_digit(const decimal_t *dec) {
  for (int i = 0; i < dec->ndigits; ++i)
    if (dec->digits[i] != 0) return true;
  return false;
}

// Room for "-" 34 digits "e" and a five-digit exponent with its sign.
constexpr int kDecimalText = 48;

// "[-]0.<digits>e<exponent>", for std::from_chars.
char *fraction_text(const decimal_t *dec, char *p, char *end) {
  if (dec->sign == QWZ_DEC_NEGATIVE) *p++ = '-';
  *p++ = '0';
  *p++ = '.';
  for (int i = 0; i < dec->ndigits; ++i) *p++ = static_cast<char>('0' + dec->digits[i]);
  if (dec->ndigits == 0) *p++ = '0';
  *p++ = 'e';
  return std::to_chars(p, end, static_cast<int>(dec->exponent)).ptr;
}

template <class T>
sb4 to_real(const decimal_t *dec, T *value) {
  if (dec == nullptr || value == nullptr) return QWZ_RT_NULL_ARGUMENT;
  if (!decimal_well_formed(dec)) return QWZ_RT_BAD_DECIMAL;
  char text[kDecimalText];
  T out{};
  if constexpr (std::is_same_v<T, long double>) {
    // The library's from_chars refuses long double subnormals; strtold reads
    // them (correctly rounded) from "[-]<digits>e<exponent>", a text with no
    // decimal point and therefore the same in every locale.
    char *p = text;
    if (dec->sign == QWZ_DEC_NEGATIVE) *p++ = '-';
    for (int i = 0; i < dec->ndigits; ++i) *p++ = static_cast<char>('0' + dec->digits[i]);
    if (dec->ndigits == 0) *p++ = '0';
    *p++ = 'e';
    p = std::to_chars(p, text + sizeof text - 1, dec->exponent - dec->ndigits).ptr;
    *p = '\0';
    char *stop = nullptr;
    out = std::strtold(text, &stop);
    if (stop != p) return QWZ_RT_BAD_DECIMAL;
  } else {
    char *p = fraction_text(dec, text, text + sizeof text);
    const auto res = std::from_chars(text, p, out, std::chars_format::scientific);
    if (res.ec == std::errc::result_out_of_range) return range_error(dec);
    if (res.ec != std::errc() || res.ptr != p) return QWZ_RT_BAD_DECIMAL;
  }
  if (std::isinf(out)) return QWZ_RT_DECIMAL_OVERFLOW;
  if (out == 0 && has_nonzero_digit(dec)) return QWZ_RT_DECIMAL_UNDERFLOW;
  *value = out;
  return 0;
}

}  // namespace

sb4 decimal_from_real(float value, decimal_t *dec) { return from_real(value, dec); }
sb4 decimal_from_real(double value, decimal_t *dec) { return from_real(value, dec); }
sb4 decimal_from_real(long double value, decimal_t *dec) { return from_real(value, dec); }
sb4 decimal_to_real(const decimal_t *dec, float *value) { return to_real(dec, value); }
sb4 decimal_to_real(const decimal_t *dec, double *value) { return to_real(dec, value); }
sb4 decimal_to_real(const decimal_t *dec, long double *value) { return to_real(dec, value); }

}  // namespace qwz::rt

extern "C" {

sb4 deccvdbl(double value, decimal_t *dec) { return qwz::rt::decimal_from_real(value, dec); }

sb4 dectodbl(const decimal_t *dec, double *value) { return qwz::rt::decimal_to_real(dec, value); }

}  // extern "C"
