// The numeric runtime: a decimal value type, an interval value type under a
// qualifier, and the seven operations the interval functions build on
// (interval from and to text, interval times and divided by a double,
// decimal from and to a double, and the message of an error number).
//
// Internal to the library: nothing here is exported from the shared object.
// All operations return 0 or one of the negative QWZ_RT_* error numbers
// below, never allocate, and never read or write outside the values and
// buffers they are given.
#ifndef QWZ_RUNTIME_RUNTIME_H
#define QWZ_RUNTIME_RUNTIME_H

#include <qwz/qwz.h>

#ifndef QWZ_INTERNAL
#define QWZ_INTERNAL __attribute__((visibility("hidden")))
#endif

// ---- the decimal value ---------------------------------------------------------
// value = (-1 if sign == 0) x 0.d1 d2 ... dn x 10^exponent, one decimal digit
// (0..9) per byte, most significant first. ndigits 0 is zero; a zero may carry
// sign 0 (it then stands for a negative zero). Values the runtime produces are
// normalised (no leading or trailing zero digits, exponent 0 for zero); values
// it reads may carry leading or trailing zeros.
inline constexpr int QWZ_DEC_MAX_DIGITS = 34;
inline constexpr sb2 QWZ_DEC_NEGATIVE = 0;
inline constexpr sb2 QWZ_DEC_POSITIVE = 1;

typedef struct decimal_t {
  sb2 exponent;
  sb2 sign;     // QWZ_DEC_NEGATIVE (0) or QWZ_DEC_POSITIVE (1)
  sb2 ndigits;  // 0..QWZ_DEC_MAX_DIGITS
  ub1 digits[QWZ_DEC_MAX_DIGITS];
} decimal_t;

// ---- the interval value --------------------------------------------------------
// qualifier = total digits x 256 + first unit x 16 + last unit, with the unit
// codes below. The decimal holds the interval as a whole number of the
// qualifier's last unit (months, or 1/100000 second), its sign 0 when the
// interval is negative. A zero interval is always positive.
inline constexpr int QWZ_TU_YEAR = 0;
inline constexpr int QWZ_TU_MONTH = 2;
inline constexpr int QWZ_TU_DAY = 4;
inline constexpr int QWZ_TU_HOUR = 6;
inline constexpr int QWZ_TU_MINUTE = 8;
inline constexpr int QWZ_TU_SECOND = 10;
inline constexpr int QWZ_TU_F5 = 15;  // five fraction digits

constexpr sb2 qwz_interval_qualifier(int total_digits, int first, int last) {
  return static_cast<sb2>(total_digits * 256 + first * 16 + last);
}
// The two qualifiers served: years (4 digits) to months, and days (2 digits)
// to 1/100000 second.
inline constexpr sb2 QWZ_QUAL_YEAR_MONTH = qwz_interval_qualifier(6, QWZ_TU_YEAR, QWZ_TU_MONTH);
inline constexpr sb2 QWZ_QUAL_DAY_FRACTION = qwz_interval_qualifier(13, QWZ_TU_DAY, QWZ_TU_F5);
static_assert(QWZ_QUAL_YEAR_MONTH == 1538 && QWZ_QUAL_DAY_FRACTION == 3407);

typedef struct intrvl_t {
  sb2 qualifier;
  decimal_t value;
} intrvl_t;

// Room intoasc needs at most (sign, fields, separators and NUL).
inline constexpr int QWZ_RT_TEXT_SIZE = 32;

// ---- error numbers ---------------------------------------------------------------
// A leading field with more digits than the qualifier allows is an overflow,
// whether it is read from text or comes out of a product or quotient.
inline constexpr sb4 QWZ_RT_NULL_ARGUMENT = -3101;
inline constexpr sb4 QWZ_RT_BAD_QUALIFIER = -3102;
inline constexpr sb4 QWZ_RT_BAD_SYNTAX = -3103;
inline constexpr sb4 QWZ_RT_INTERVAL_OVERFLOW = -3104;
inline constexpr sb4 QWZ_RT_FIELD_RANGE = -3105;
inline constexpr sb4 QWZ_RT_QUALIFIER_MISMATCH = -3106;
inline constexpr sb4 QWZ_RT_NOT_FINITE = -3107;
inline constexpr sb4 QWZ_RT_DIVIDE_BY_ZERO = -3108;
inline constexpr sb4 QWZ_RT_DECIMAL_OVERFLOW = -3109;
inline constexpr sb4 QWZ_RT_DECIMAL_UNDERFLOW = -3110;
inline constexpr sb4 QWZ_RT_BAD_DECIMAL = -3111;

extern "C" {

// Reads `text` under value->qualifier (which the caller sets): leading blanks,
// an optional '-', then
//   year-month    Y...Y-M...M              (years at most 4 significant digits,
//                                           months 0..11)
//   day-fraction  D...D HH:MM:SS.FFFFF     (days at most 2 significant digits,
//                                           hours 0..23, minutes and seconds
//                                           0..59, 1 to 5 fraction digits read
//                                           as a decimal fraction)
// and optional trailing blanks. The whole shape is checked first
// (QWZ_RT_BAD_SYNTAX), then the leading field (QWZ_RT_INTERVAL_OVERFLOW), then
// the others in order (QWZ_RT_FIELD_RANGE, a sixth fraction digit included).
// On failure *value is left as it was.
QWZ_INTERNAL sb4 incvasc(const char *text, intrvl_t *value);

// Writes the value as "[-]YYYY-MM" or "[-]DD HH:MM:SS.FFFFF" into `text`,
// which must hold QWZ_RT_TEXT_SIZE bytes.
QWZ_INTERNAL sb4 intoasc(const intrvl_t *value, char *text);

// *result = value x factor (invmuldbl) or value / factor (invdivdbl) in the
// result qualifier's last unit, computed exactly from the double's binary
// value and rounded half away from zero. result->qualifier is set by the
// caller and must be of the same class (year-month or day-second) as the
// value's. NaN and infinities are refused, and so is a zero divisor; a result
// beyond the qualifier's leading digits is QWZ_RT_INTERVAL_OVERFLOW. On
// failure *result is left as it was.
QWZ_INTERNAL sb4 invmuldbl(const intrvl_t *value, double factor, intrvl_t *result);
QWZ_INTERNAL sb4 invdivdbl(const intrvl_t *value, double divisor, intrvl_t *result);

// The double's shortest decimal form that reads back as the same double
// (negative zero kept); NaN and infinities are QWZ_RT_NOT_FINITE.
QWZ_INTERNAL sb4 deccvdbl(double value, decimal_t *dec);
// The double nearest the decimal (ties to even). A decimal beyond the double's
// range is QWZ_RT_DECIMAL_OVERFLOW; a non-zero one that would read as zero is
// QWZ_RT_DECIMAL_UNDERFLOW; a malformed one QWZ_RT_BAD_DECIMAL.
QWZ_INTERNAL sb4 dectodbl(const decimal_t *dec, double *value);

// Writes the English message of `number` into buffer (NUL-terminated, cut to
// size bytes); a number the runtime does not know gets a message naming it.
// Returns 0, or -1 when buffer is NULL or size is not positive (nothing is
// written then).
QWZ_INTERNAL sb4 rgetmsg(sb4 number, char *buffer, sb4 size);

}  // extern "C"

namespace qwz::rt {

// The same conversions for the other binary floating types (the double
// overloads are deccvdbl and dectodbl).
sb4 decimal_from_real(float value, decimal_t *dec);
sb4 decimal_from_real(double value, decimal_t *dec);
sb4 decimal_from_real(long double value, decimal_t *dec);
sb4 decimal_to_real(const decimal_t *dec, float *value);
sb4 decimal_to_real(const decimal_t *dec, double *value);
sb4 decimal_to_real(const decimal_t *dec, long double *value);

// True when the decimal is well formed (sign 0 or 1, ndigits in range, every
// digit 0..9).
bool decimal_well_formed(const decimal_t *dec);

}  // namespace qwz::rt

#endif  // QWZ_RUNTIME_RUNTIME_H
