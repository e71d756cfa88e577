// QWZIntervalMultiply, QWZIntervalDivide, QWZIntervalFromNumber and
// QWZIntervalToNumber, with the conversions between a descriptor and the
// numeric runtime's interval value that the scaling goes through.
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/interval.h"
#include "date_datetime_interval/interval_number.h"
#include "errors/errors.h"
#include "handles/handles.h"
#include "number/number.h"
#include "runtime/runtime.h"

#include <qwz/qwz.h>

#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

using qwz::done;
using qwz::front_end_error;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_INTERVAL_DIVIDE = 181;
constexpr ub4 API_INTERVAL_MULTIPLY = 182;
constexpr ub4 API_INTERVAL_FROM_NUMBER = 183;
constexpr ub4 API_INTERVAL_TO_NUMBER = 184;

// Detail passed with the interval-is-invalid diagnostic.
constexpr sb4 kInvalidDetail = 25;

// Text buffers for the runtime: room for five ten-digit magnitudes, the
// separators, a sign and the NUL.
constexpr std::size_t kValueText = 64;
static_assert(kValueText >= static_cast<std::size_t>(QWZ_RT_TEXT_SIZE));

// How each kind is exchanged with the runtime.
struct KindShape {
  ub2 type;
  sb2 qualifier;
  int leading_width;  // minimum digits of the leading field
  int slots;
};
constexpr KindShape kShapes[] = {
    {INTERVAL_KIND_YM, QWZ_QUAL_YEAR_MONTH, 4, 2},
    {INTERVAL_KIND_DS, QWZ_QUAL_DAY_FRACTION, 2, 5},
};

const KindShape *shape_of(ub2 type) {
  for (const KindShape &s : kShapes)
    if (s.type == type) return &s;
  return nullptr;
}

// The whole part of a number as a leading field, when it fits in 32 bits.
bool leading_field(double whole, sb4 *out) {
  if (!(whole >= -2147483648.0 && whole <= 2147483647.0)) return false;
  *out = static_cast<sb4>(whole);
  return true;
}

sword interval_invalid_error(QWZError *errhp) {
  _QWZSetIntervalErrorMsg(ERRSRC_DRIVER, KIND_INTERVAL_INVALID, kInvalidDetail, 3, errhp, "");
  return QWZ_ERROR;
}

// QWZIntervalDivide and QWZIntervalMultiply: the same checks, then the work.
Outcome scale(void *hndl, QWZError *errhp, QWZInterval *operand, QWZNumber *number,
              QWZInterval *result, int divide) {
  if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
  if (const sword r = qwz::check_interval(errhp, operand)) return refuse(r);
  if (!number) return front_end_error(errhp, kNumberNullText, QWZ_NUMBER_NULL);
  if (const sword r = qwz::check_interval(errhp, result)) return refuse(r);
  if (operand->hdr.type != result->hdr.type)
    return front_end_error(errhp, kIntervalKindMismatchText, QWZ_INTERVAL_KIND_MISMATCH);
  // The exit trace follows only a call that succeeded.
  const sword r = qwz_interval_divide_or_multiply(errhp, operand, number, result, divide);
  return r == 0 ? done(0) : refuse(r);
}

// QWZIntervalFromNumber and QWZIntervalToNumber: the same checks, then the work.
template <class Work>
Outcome convert(void *hndl, QWZError *errhp, QWZInterval *interval, QWZNumber *number,
                Work work) {
  if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
  if (const sword r = qwz::check_interval(errhp, interval)) return refuse(r);
  if (!number) return front_end_error(errhp, kNumberNullText, QWZ_NUMBER_NULL);
  const sword r = work(hndl, errhp, interval, number);
  return r == 0 ? done(0) : refuse(r);
}

}  // namespace

namespace qwz {

sword runtime_error(QWZError *errhp, sb4 status) {
  char text[QWZ_RUNTIME_MESSAGE_SIZE];
  std::memset(text, 0, sizeof text);
  rgetmsg(status, text, QWZ_RUNTIME_MESSAGE_SIZE);
  _QWZSetFrontEndErrorHandle(errhp, text, status);
  return status;
}

}  // namespace qwz

extern "C" {

sword qwz_interval_2_intrvl_t(const QWZInterval *interval, intrvl_t *value) {
  if (interval == nullptr || value == nullptr) return QWZ_RT_NULL_ARGUMENT;
  char text[kValueText] = {};
  const KindShape *shape = shape_of(interval->hdr.type);
  // A descriptor of neither kind has no qualifier: the runtime refuses it.
  value->qualifier = shape ? shape->qualifier : 0;
  if (shape) {
    bool positive = true;
    ub4 m[5] = {};
    for (int i = 0; i < shape->slots; ++i) {
      positive = positive && interval->slot[i] >= 0;
      m[i] = qwz::magnitude(interval->slot[i]);
    }
    char *p = text;
    if (!positive) *p++ = '-';
    const std::size_t room = sizeof text - static_cast<std::size_t>(p - text);
    if (shape->type == INTERVAL_KIND_YM)
      std::snprintf(p, room, "%0*u-%02u", shape->leading_width, m[QWZ_IV_YEAR], m[QWZ_IV_MONTH]);
    else
      std::snprintf(p, room, "%0*u %02u:%02u:%02u.%05u", shape->leading_width, m[QWZ_IV_DAY],
                    m[QWZ_IV_HOUR], m[QWZ_IV_MINUTE], m[QWZ_IV_SECOND], m[QWZ_IV_FRACTION]);
    const sword r = incvasc(text, value);
    if (r == 0 && !positive) value->value.sign = QWZ_DEC_NEGATIVE;
    return r;
  }
  return incvasc(text, value);
}

sword qwz_intrvl_t_2_interval(const intrvl_t *value, QWZInterval *interval) {
  char text[kValueText];
  std::memset(text, 0, sizeof text);
  if (const sb4 r = intoasc(value, text)) return r;
  if (interval == nullptr) return QWZ_RT_NULL_ARGUMENT;
  const char *p = text;
  while (*p == ' ') ++p;
  if (*p == '-') ++p;
  // intoasc writes only fields within its qualifier, so every %d fits.
  int f[5] = {};
  int n = 0;
  if (interval->hdr.type == INTERVAL_KIND_YM) {
    std::sscanf(p, "%d-%d", &f[0], &f[1]);
    n = 2;
  } else if (interval->hdr.type == INTERVAL_KIND_DS) {
    std::sscanf(p, "%d %d:%d:%d.%d", &f[0], &f[1], &f[2], &f[3], &f[4]);
    n = 5;
  }
  const bool negative = value->value.sign == QWZ_DEC_NEGATIVE;
  for (int i = 0; i < n; ++i) interval->slot[i] = negative ? -f[i] : f[i];
  return 0;
}

sword qwz_number_2_double(QWZError *errhp, const QWZNumber *number, double *out) {
  decimal_t dec{};
  if (const sword r = qwz_number_2_decimal(number, &dec)) return r;
  if (const sb4 r = dectodbl(&dec, out)) return qwz::runtime_error(errhp, r);
  return 0;
}

sword qwz_interval_divide_or_multiply(QWZError *errhp, const QWZInterval *interval,
                                      const QWZNumber *number, QWZInterval *result, int divide) {
  intrvl_t a{};
  if (const sword r = qwz_interval_2_intrvl_t(interval, &a)) return r;
  double d = 0;
  if (const sword r = qwz_number_2_double(errhp, number, &d)) return r;
  intrvl_t res{};
  res.qualifier =
      interval->hdr.type == INTERVAL_KIND_YM ? QWZ_QUAL_YEAR_MONTH : QWZ_QUAL_DAY_FRACTION;
  sword r = 0;
  if (divide) {
    if (d == 0.0) {
      _QWZSetFrontEndErrorHandle(errhp, kDivisorZeroText, QWZ_DIVISOR_ZERO);
      return QWZ_ERROR;
    }
    r = invdivdbl(&a, d, &res);
  } else {
    r = invmuldbl(&a, d, &res);
  }
  if (r == 0) r = qwz_intrvl_t_2_interval(&res, result);
  return r;
}

sword qwz_interval_from_number(void *hndl, QWZError *errhp, QWZInterval *interval,
                               const QWZNumber *number) {
  double d = 0;
  if (const sword r = qwz_number_2_double(errhp, number, &d)) return r;
  double whole = 0;
  const double f = std::modf(d, &whole);  // both parts carry d's sign
  sb4 lead = 0;
  if (!leading_field(whole, &lead)) return interval_invalid_error(errhp);
  if (interval->hdr.type == INTERVAL_KIND_YM) {
    // Only an upward carry: -1.99 years leaves month at -12.
    auto month = static_cast<sb4>(std::round(12.0 * f));
    if (month > 11) {
      month = 0;
      if (!leading_field(1.0 + whole, &lead)) return interval_invalid_error(errhp);
    }
    interval->slot[QWZ_IV_YEAR] = lead;
    interval->slot[QWZ_IV_MONTH] = month;
  } else {
    double hours = 0, minutes = 0, seconds = 0;
    const double h_rest = std::modf(24.0 * f, &hours);
    const double m_rest = std::modf(60.0 * h_rest, &minutes);
    const double s_rest = std::modf(60.0 * m_rest, &seconds);
    double fraction = 0;
    std::modf(std::round(100000.0 * s_rest), &fraction);
    // No carry: a fraction that rounds to 100000 fails the check below.
    interval->slot[QWZ_IV_DAY] = lead;
    interval->slot[QWZ_IV_HOUR] = static_cast<sb4>(hours);
    interval->slot[QWZ_IV_MINUTE] = static_cast<sb4>(minutes);
    interval->slot[QWZ_IV_SECOND] = static_cast<sb4>(seconds);
    interval->slot[QWZ_IV_FRACTION] = static_cast<sb4>(fraction);
  }
  if (qwz::interval_invalid(hndl, errhp, interval)) return interval_invalid_error(errhp);
  return 0;
}

sword qwz_interval_to_number(void *, QWZError *errhp, const QWZInterval *interval,
                             QWZNumber *number) {
  const sb4 *s = interval->slot;
  double v = 0;
  if (interval->hdr.type == INTERVAL_KIND_YM) {
    v = s[QWZ_IV_YEAR] + s[QWZ_IV_MONTH] / 12.0;
  } else {
    v = s[QWZ_IV_DAY] +
        (((s[QWZ_IV_FRACTION] / 100000.0 + s[QWZ_IV_SECOND]) / 60.0 + s[QWZ_IV_MINUTE]) / 60.0 +
         s[QWZ_IV_HOUR]) /
            24.0;
  }
  decimal_t dec{};
  if (const sb4 r = deccvdbl(v, &dec)) return qwz::runtime_error(errhp, r);
  return qwz_decimal_2_number(&dec, number);
}

QWZ_API sword QWZIntervalDivide(void *hndl, QWZError *errhp, QWZInterval *dividend,
                                QWZNumber *divisor, QWZInterval *result) {
  return qwz::run_frame(
      API_INTERVAL_DIVIDE, errhp,
      [&]() -> Outcome { return scale(hndl, errhp, dividend, divisor, result, 1); }, hndl, errhp,
      dividend, divisor, result);
}

QWZ_API sword QWZIntervalMultiply(void *hndl, QWZError *errhp, QWZInterval *inter,
                                  QWZNumber *nfactor, QWZInterval *result) {
  return qwz::run_frame(
      API_INTERVAL_MULTIPLY, errhp,
      [&]() -> Outcome { return scale(hndl, errhp, inter, nfactor, result, 0); }, hndl, errhp,
      inter, nfactor, result);
}

QWZ_API sword QWZIntervalFromNumber(void *hndl, QWZError *errhp, QWZInterval *interval,
                                    QWZNumber *number) {
  return qwz::run_frame(
      API_INTERVAL_FROM_NUMBER, errhp,
      [&]() -> Outcome { return convert(hndl, errhp, interval, number, qwz_interval_from_number); },
      hndl, errhp, interval, number);
}

QWZ_API sword QWZIntervalToNumber(void *hndl, QWZError *errhp, QWZInterval *interval,
                                  QWZNumber *number) {
  return qwz::run_frame(
      API_INTERVAL_TO_NUMBER, errhp,
      [&]() -> Outcome { return convert(hndl, errhp, interval, number, qwz_interval_to_number); },
      hndl, errhp, interval, number);
}

}  // extern "C"
