// QWZNumber: the interface's numeric value, and its bridge to the numeric
// runtime's decimal value.
//
// Inside the 22 bytes (private to this unit; callers only copy them):
//   [0]      format tag 0x4E
//   [1]      flags: bit 0 set for a negative value (a negative zero included)
//   [2]      count of significant digits, 0..34 (0 for zero)
//   [3..4]   decimal exponent, signed 16-bit, low byte first
//   [5..21]  the digits, two per byte, high nibble first, unused nibbles 0
// value = -1^negative x 0.d1 d2 ... dn x 10^exponent. The form is canonical:
// the first and last digits are not 0 and a zero has exponent 0, so two
// numbers are equal exactly when their bytes are.
#ifndef QWZ_NUMBER_NUMBER_H
#define QWZ_NUMBER_NUMBER_H

#include "handles/handles.h"
#include "runtime/runtime.h"

inline constexpr int QWZ_NUMBER_MAX_DIGITS = 34;
static_assert(sizeof(QWZNumber) == 22);
static_assert(QWZ_NUMBER_MAX_DIGITS >= QWZ_DEC_MAX_DIGITS);

// Diagnostics of the number functions, written with _QWZSetFrontEndErrorHandle.
inline constexpr sb4 QWZ_NUMBER_NULL = 800085;
inline constexpr const char kNumberNullText[] = "the number could not be null.";
inline constexpr sb4 QWZ_REAL_NULL = 800201;
inline constexpr const char kRealNullText[] = "the real number could not be null.";
inline constexpr sb4 QWZ_REAL_LENGTH = 800202;
inline constexpr const char kRealLengthText[] = "the real number length is not supported.";
inline constexpr sb4 QWZ_REAL_NOT_FINITE = 800203;
inline constexpr const char kRealNotFiniteText[] = "the real number is not finite.";
inline constexpr sb4 QWZ_NUMBER_INVALID = 800204;
inline constexpr const char kNumberInvalidText[] = "the number is invalid.";
inline constexpr sb4 QWZ_NUMBER_RANGE = 800205;
inline constexpr const char kNumberRangeText[] = "the number is out of the range of the real type.";

extern "C" {

// The number as a runtime decimal: 0, QWZ_RT_NULL_ARGUMENT for a NULL
// pointer, or QWZ_RT_BAD_DECIMAL for bytes that are not a number in the
// canonical form above (*dec untouched then).
QWZ_INTERNAL sword qwz_number_2_decimal(const QWZNumber *number, decimal_t *dec);

// The decimal as a number (leading and trailing zero digits dropped): 0,
// QWZ_RT_NULL_ARGUMENT, or QWZ_RT_BAD_DECIMAL for a malformed decimal or one
// whose exponent leaves the 16-bit range once normalised (*number untouched).
QWZ_INTERNAL sword qwz_decimal_2_number(const decimal_t *dec, QWZNumber *number);

}  // extern "C"

#endif  // QWZ_NUMBER_NUMBER_H
