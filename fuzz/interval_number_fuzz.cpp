// Numbers into intervals: QWZNumberFromReal of arbitrary reals of every
// length, the number read back as the same real, then QWZIntervalFromNumber,
// QWZIntervalToNumber, QWZIntervalMultiply and QWZIntervalDivide with any
// slot values. An interval made from a number passes the check applied.
#include <cmath>

#include "fuzz_common.h"

using namespace qwz_fuzz;

namespace {

template <class Real>
bool make_number(FuzzedDataProvider &in, QWZError *err, QWZNumber *num, uword length) {
  Real r{};
  std::vector<uint8_t> bytes = in.ConsumeBytes<uint8_t>(length);
  bytes.resize(length);
  std::memcpy(&r, bytes.data(), length);
  if (QWZNumberFromReal(err, &r, length, num) != QWZ_SUCCESS) {
    FUZZ_CHECK(!std::isfinite(static_cast<long double>(r)) || length == 16,
               "finite real of length %u refused", length);
    return false;
  }
  Real back{};
  FUZZ_CHECK(QWZNumberToReal(err, num, length, &back) == QWZ_SUCCESS, "no real back");
  // Bits beyond the value (long double padding) are not compared.
  FUZZ_CHECK(back == r && std::signbit(back) == std::signbit(r), "real changed: %Lg -> %Lg",
             static_cast<long double>(r), static_cast<long double>(back));
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  QWZError *err = handles().err;
  const uint8_t flags = in.ConsumeIntegral<uint8_t>();
  const ub4 kind = flags & 8 ? INTERVAL_KIND_DS : INTERVAL_KIND_YM;
  const ub4 rkind =
      flags & 64 ? (kind == INTERVAL_KIND_DS ? INTERVAL_KIND_YM : INTERVAL_KIND_DS) : kind;
  void *ctx = context(flags & 4);
  Tracing tracing(flags & 1);

  QWZNumber num;
  if (flags & 16) {
    // Bytes not made by QWZNumberFromReal.
    std::vector<uint8_t> raw = in.ConsumeBytes<uint8_t>(sizeof num);
    raw.resize(sizeof num);
    std::memcpy(&num, raw.data(), sizeof num);
  } else {
    bool ok = false;
    switch ((flags >> 5) & 1 ? 2 : in.ConsumeIntegralInRange<int>(0, 2)) {
      case 0:
        ok = make_number<float>(in, err, &num, sizeof(float));
        break;
      case 1:
        ok = make_number<long double>(in, err, &num, sizeof(long double));
        break;
      default:
        ok = make_number<double>(in, err, &num, sizeof(double));
        break;
    }
    if (!ok) return 0;
  }

  QWZInterval *iv = alloc_descriptor<QWZInterval>(kind);
  QWZInterval *res = alloc_descriptor<QWZInterval>(rkind);
  if (QWZIntervalFromNumber(ctx, err, iv, &num) == QWZ_SUCCESS) {
    ub4 valid = 1;
    FUZZ_CHECK(QWZIntervalCheck(ctx, err, iv, &valid) == QWZ_SUCCESS && valid == 0,
               "[%d %d %d %d %d] flags %#x", iv->slot[0], iv->slot[1], iv->slot[2], iv->slot[3],
               iv->slot[4], valid);
    QWZNumber out;
    if (QWZIntervalToNumber(ctx, err, iv, &out) == QWZ_SUCCESS) {
      double d = 0;
      QWZNumberToReal(err, &out, sizeof d, &d);
    }
  }
  for (sb4 &v : iv->slot) v = in.ConsumeIntegral<sb4>();
  QWZIntervalMultiply(ctx, err, iv, &num, res);
  QWZIntervalDivide(ctx, err, iv, &num, res);
  QWZNumber out;
  if (QWZIntervalToNumber(ctx, err, iv, &out) == QWZ_SUCCESS) {
    long double d = 0;
    QWZNumberToReal(err, &out, sizeof d, &d);
  }
  QWZDescriptorFree(iv, kind);
  QWZDescriptorFree(res, rkind);
  return 0;
}
