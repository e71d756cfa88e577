// Datetime and interval arithmetic, Subtract, Compare and Convert on
// arbitrary field values of every type pair. A result the add checked
// passes that check; a difference passes the interval check; comparison is
// antisymmetric; the operands of an accepted comparison pass the check.
#include "fuzz_common.h"

using namespace qwz_fuzz;

namespace {

void fill(FuzzedDataProvider &in, QWZDateTime *d, bool plausible) {
  if (plausible) {
    d->year = static_cast<sb2>(in.ConsumeIntegralInRange<int>(-4713, 10000));
    d->month = in.ConsumeIntegralInRange<ub2>(0, 13);
    d->day = in.ConsumeIntegralInRange<ub2>(0, 32);
    d->hour = in.ConsumeIntegralInRange<ub2>(0, 24);
    d->minute = in.ConsumeIntegralInRange<ub2>(0, 60);
    d->second = in.ConsumeIntegralInRange<ub2>(0, 60);
    d->fraction = in.ConsumeIntegralInRange<ub4>(0, 1000000000);
    d->tz_hour = in.ConsumeIntegralInRange<sb1>(-13, 15);
    d->tz_minute = in.ConsumeIntegralInRange<sb1>(-60, 60);
  } else {
    d->year = in.ConsumeIntegral<sb2>();
    d->month = in.ConsumeIntegral<ub2>();
    d->day = in.ConsumeIntegral<ub2>();
    d->hour = in.ConsumeIntegral<ub2>();
    d->minute = in.ConsumeIntegral<ub2>();
    d->second = in.ConsumeIntegral<ub2>();
    d->fraction = in.ConsumeIntegral<ub4>();
    d->tz_hour = in.ConsumeIntegral<sb1>();
    d->tz_minute = in.ConsumeIntegral<sb1>();
  }
}

ub4 check_flags(void *ctx, QWZError *err, const QWZDateTime *d) {
  ub4 flags = 0xffffffffu;
  QWZDateTimeCheck(ctx, err, d, &flags);
  return flags;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  QWZError *err = handles().err;
  const uint8_t flags = in.ConsumeIntegral<uint8_t>();
  void *ctx = context(flags & 4);
  Tracing tracing(flags & 1);
  const ub4 t1 = flags & 8 ? DATETIME_KIND_TIMESTAMP_TZ
                           : DATETIME_KIND_DATE + in.ConsumeIntegralInRange<ub4>(0, 5);
  const ub4 t2 = flags & 16 ? t1 : DATETIME_KIND_DATE + in.ConsumeIntegralInRange<ub4>(0, 5);
  const ub4 kind = flags & 32 ? INTERVAL_KIND_DS : INTERVAL_KIND_YM;
  QWZDateTime *a = alloc_descriptor<QWZDateTime>(t1);
  QWZDateTime *b = alloc_descriptor<QWZDateTime>(t2);
  QWZDateTime *out = alloc_descriptor<QWZDateTime>(t1);
  QWZInterval *iv = alloc_descriptor<QWZInterval>(kind);
  fill(in, a, flags & 2);
  fill(in, b, flags & 2);
  for (sb4 &v : iv->slot)
    v = flags & 64 ? in.ConsumeIntegralInRange<sb4>(-100000, 100000) : in.ConsumeIntegral<sb4>();

  if (QWZDateTimeIntervalAdd(ctx, err, a, iv, out) == QWZ_SUCCESS) {
    const ub4 f = check_flags(ctx, err, out);
    FUZZ_CHECK(f == 0 || f == 0x2000 || f == 0x800, "%s + interval -> %s flags %#x",
               datetime_str(a).c_str(), datetime_str(out).c_str(), f);
  }
  if (QWZDateTimeIntervalSub(ctx, err, a, iv, out) == QWZ_SUCCESS) {
    const ub4 f = check_flags(ctx, err, out);
    FUZZ_CHECK(f == 0 || f == 0x2000 || f == 0x800, "%s - interval -> %s flags %#x",
               datetime_str(a).c_str(), datetime_str(out).c_str(), f);
  }
  if (QWZDateTimeSubtract(ctx, err, a, b, iv) == QWZ_SUCCESS) {
    ub4 f = 1;
    FUZZ_CHECK(QWZIntervalCheck(ctx, err, iv, &f) == QWZ_SUCCESS && f == 0,
               "%s - %s gives an interval with flags %#x", datetime_str(a).c_str(),
               datetime_str(b).c_str(), f);
  }
  sword c1 = 9, c2 = 9;
  if (QWZDateTimeCompare(ctx, err, a, b, &c1) == QWZ_SUCCESS) {
    FUZZ_CHECK(check_flags(ctx, err, a) == 0 && check_flags(ctx, err, b) == 0,
               "Compare accepted %s %s", datetime_str(a).c_str(), datetime_str(b).c_str());
    FUZZ_CHECK(QWZDateTimeCompare(ctx, err, b, a, &c2) == QWZ_SUCCESS && c1 == -c2,
               "type %u: %s %s compare %d and %d", t1, datetime_str(a).c_str(),
               datetime_str(b).c_str(), c1, c2);
  }
  QWZDateTimeConvert(ctx, err, a, b);
  QWZDateTimeAssign(ctx, err, a, out);
  QWZDescriptorFree(a, t1);
  QWZDescriptorFree(b, t2);
  QWZDescriptorFree(out, t1);
  QWZDescriptorFree(iv, kind);
  return 0;
}
