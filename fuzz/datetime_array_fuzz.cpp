// Packed arrays of every class (184..188) with every fsprec into every
// descriptor type, and QWZDateTimeToArray back: an accepted array gives a
// value that passes the check; its date and time written back as an array
// read again as class 187 give the same fields.
#include "fuzz_common.h"

using namespace qwz_fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  QWZError *err = handles().err;
  const uint8_t flags = in.ConsumeIntegral<uint8_t>();
  const ub4 type = DATETIME_KIND_DATE + in.ConsumeIntegralInRange<ub4>(0, 5);
  const ub1 cls = flags & 2 ? in.ConsumeIntegral<ub1>()
                            : static_cast<ub1>(in.ConsumeIntegralInRange<int>(183, 189));
  const ub1 fsprec = in.ConsumeIntegral<ub1>();
  void *ctx = context(flags & 4);
  Tracing tracing(flags & 1);
  // The class's own length, read from a heap block of exactly that size.
  static const size_t kLength[] = {4, 7, 9, 11, 13};
  const size_t need = cls >= 184 && cls <= 188 ? kLength[cls - 184] : 1;
  std::vector<ub1> bytes = in.ConsumeBytes<ub1>(need);
  bytes.resize(need);
  ub1 *array = new ub1[need];
  std::memcpy(array, bytes.data(), need);
  ub4 len = static_cast<ub4>(need);

  QWZDateTime *dt = alloc_descriptor<QWZDateTime>(type);
  QWZDateTime *again = alloc_descriptor<QWZDateTime>(DATETIME_KIND_TIMESTAMP);
  QWZInterval *reftz = alloc_descriptor<QWZInterval>(INTERVAL_KIND_DS);
  if (QWZDateTimeFromArray(ctx, err, array, &len, cls, dt, reftz, fsprec) == QWZ_SUCCESS) {
    ub4 valid = 1;
    FUZZ_CHECK(QWZDateTimeCheck(ctx, err, dt, &valid) == QWZ_SUCCESS && valid == 0,
               "class %u type %u -> %s flags %#x", cls, type, datetime_str(dt).c_str(), valid);
    ub1 out[8];
    ub4 outlen = 99;
    FUZZ_CHECK(
        QWZDateTimeToArray(ctx, err, dt, reftz, out, &outlen, fsprec) == QWZ_SUCCESS && outlen <= 7,
        "%s length %u", datetime_str(dt).c_str(), outlen);
    if (outlen == 7 && dt->month != 0) {
      ub1 padded[11] = {};
      std::memcpy(padded, out, 7);
      ub4 plen = 11;
      if (QWZDateTimeFromArray(ctx, err, padded, &plen, DATETIME_CLASS_TIMESTAMP, again, reftz,
                               9) == QWZ_SUCCESS)
        FUZZ_CHECK(again->year == dt->year && again->month == dt->month && again->day == dt->day &&
                       // A date's check leaves its time fields alone, and
                       // each is written truncated to a byte.
                       (type == DATETIME_KIND_DATE ||
                        (again->hour == (dt->hour & 0xFF) && again->minute == (dt->minute & 0xFF) &&
                         again->second == (dt->second & 0xFF))),
                   "%s -> %s", datetime_str(dt).c_str(), datetime_str(again).c_str());
    }
  }
  delete[] array;
  QWZDescriptorFree(dt, type);
  QWZDescriptorFree(again, DATETIME_KIND_TIMESTAMP);
  QWZDescriptorFree(reftz, INTERVAL_KIND_DS);
  return 0;
}
