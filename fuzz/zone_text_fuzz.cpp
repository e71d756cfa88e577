// Zone texts through the constructor, for every descriptor type: an
// accepted construction leaves a value that passes the check, and the
// offset read back is the one stored.
#include "fuzz_common.h"

using namespace qwz_fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  QWZError *err = handles().err;
  const uint8_t flags = in.ConsumeIntegral<uint8_t>();
  const ub4 type = DATETIME_KIND_DATE + in.ConsumeIntegralInRange<ub4>(0, 5);
  void *ctx = context(flags & 4);
  Tracing tracing(flags & 1);
  sb2 year = 2024;
  ub1 month = 5, day = 17, hour = 10, min = 30, sec = 0;
  ub4 fsec = 0;
  if (flags & 2) {
    year = in.ConsumeIntegral<sb2>();
    month = in.ConsumeIntegral<ub1>();
    day = in.ConsumeIntegral<ub1>();
    hour = in.ConsumeIntegral<ub1>();
    min = in.ConsumeIntegral<ub1>();
    sec = in.ConsumeIntegral<ub1>();
    fsec = in.ConsumeIntegral<ub4>();
  }
  std::string zone = take_text(in, 400);
  // Either the text's own length or a shorter one: both read the same
  // way whether the length or the terminator ends the text.
  size_t zlen = zone.size();
  if ((flags & 8) && zlen > 0) zlen = in.ConsumeIntegralInRange<size_t>(0, zlen);
  QWZDateTime *dt = alloc_descriptor<QWZDateTime>(type);
  const sword rc = QWZDateTimeConstruct(ctx, err, dt, year, month, day, hour, min, sec, fsec,
                                        flags & 16 ? nullptr : MT(zone), zlen);
  if (rc == QWZ_SUCCESS) {
    ub4 valid = 1;
    FUZZ_CHECK(QWZDateTimeCheck(ctx, err, dt, &valid) == QWZ_SUCCESS && valid == 0,
               "type %u zone '%s' (%zu) -> %s flags %#x", type, zone.c_str(), zlen,
               datetime_str(dt).c_str(), valid);
    if (type == DATETIME_KIND_TIME_TZ || type == DATETIME_KIND_TIMESTAMP_TZ) {
      sb1 h = 99, m = 99;
      FUZZ_CHECK(QWZDateTimeGetTimeZoneOffset(ctx, err, dt, &h, &m) == QWZ_SUCCESS &&
                     h == dt->tz_hour && m == dt->tz_minute,
                 "zone '%s' -> %s", zone.c_str(), datetime_str(dt).c_str());
      ub1 name[64];
      ub4 nlen = in.ConsumeIntegralInRange<ub4>(0, 63);
      if (QWZDateTimeGetTimeZoneName(ctx, err, dt, name, &nlen) == QWZ_SUCCESS)
        FUZZ_CHECK(nlen < 64, "name length %u", nlen);
    }
  }
  QWZDescriptorFree(dt, type);
  return 0;
}
