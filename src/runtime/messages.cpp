// The runtime's message table: one short English text per error number.
#include "runtime/runtime.h"

#include <cstdio>

namespace {

struct Message {
  sb4 number;
  const char *text;
};

constexpr Message kMessages[] = {
    {QWZ_RT_NULL_ARGUMENT, "A null pointer was passed to the numeric runtime."},
    {QWZ_RT_BAD_QUALIFIER, "The interval qualifier is not supported."},
    {QWZ_RT_BAD_SYNTAX, "The interval text does not match its qualifier."},
    {QWZ_RT_FIELD_RANGE, "An interval field is out of range."},
    {QWZ_RT_QUALIFIER_MISMATCH, "The interval qualifiers are not compatible."},
    {QWZ_RT_INTERVAL_OVERFLOW,
     "The interval value overflows its qualifier: the leading field has too many digits."},
    {QWZ_RT_NOT_FINITE, "The value is not a finite number."},
    {QWZ_RT_DIVIDE_BY_ZERO, "Division by zero."},
    {QWZ_RT_DECIMAL_OVERFLOW, "The decimal value is too large for a real number."},
    {QWZ_RT_DECIMAL_UNDERFLOW, "The decimal value is too small for a real number."},
    {QWZ_RT_BAD_DECIMAL, "The decimal value is malformed."},
};

}  // namespace

extern "C" {

sb4 rgetmsg(sb4 number, char *buffer, sb4 size) {
  if (buffer == nullptr || size <= 0) return -1;
  const auto room = static_cast<std::size_t>(size);
  for (const Message &m : kMessages)
    if (m.number == number) {
      std::snprintf(buffer, room, "%s", m.text);
      return 0;
    }
  std::snprintf(buffer, room, "Unknown numeric runtime error %d.", static_cast<int>(number));
  return 0;
}

}  // extern "C"
