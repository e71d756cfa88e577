// Datetime text and format models, both ways, for every descriptor type
// (65..70): a text read under a model gives a value that passes the check,
// writes back under the same model and reads back to the same fields; any
// constructed value written under any model stays inside the result buffer.
#include "fuzz_common.h"

using namespace qwz_fuzz;

namespace {

bool same_value(const QWZDateTime *a, const QWZDateTime *b) {
  return a->year == b->year && a->month == b->month && a->day == b->day &&
         a->hour == b->hour && a->minute == b->minute && a->second == b->second &&
         a->fraction == b->fraction && a->tz_hour == b->tz_hour && a->tz_minute == b->tz_minute;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  QWZError *err = handles().err;
  const uint8_t flags = in.ConsumeIntegral<uint8_t>();
  const ub4 type = DATETIME_KIND_DATE + in.ConsumeIntegralInRange<ub4>(0, 5);
  const ub1 fsprec = in.ConsumeIntegral<ub1>();
  void *ctx = context(flags & 4);
  Tracing tracing(flags & 1);
  const std::string fmt = take_text(in, 255);
  const ub1 flen = static_cast<ub1>(fmt.size());
  QWZDateTime *dt = alloc_descriptor<QWZDateTime>(type);
  QWZDateTime *back = alloc_descriptor<QWZDateTime>(type);

  if (flags & 2) {
    // A constructed value (any fields, any zone text), any model.
    const sb2 year = in.ConsumeIntegral<sb2>();
    const ub1 month = in.ConsumeIntegral<ub1>(), day = in.ConsumeIntegral<ub1>();
    const ub1 hour = in.ConsumeIntegral<ub1>(), min = in.ConsumeIntegral<ub1>();
    const ub1 sec = in.ConsumeIntegral<ub1>();
    const ub4 fsec = in.ConsumeIntegral<ub4>();
    std::string zone = take_text(in, 40);
    if (QWZDateTimeConstruct(ctx, err, dt, year, month, day, hour, min, sec, fsec, MT(zone),
                             zone.size()) == QWZ_SUCCESS) {
      QWZtext buf[512];
      std::memset(buf, 0x7f, sizeof buf);
      ub4 cap = in.ConsumeIntegralInRange<ub4>(0, 300);
      if (QWZDateTimeToText(ctx, err, dt, T(fmt), flen, fsprec, nullptr, 0, &cap, buf) ==
          QWZ_SUCCESS) {
        const size_t n = strnlen(reinterpret_cast<char *>(buf), sizeof buf);
        FUZZ_CHECK(n <= 255 && n <= cap, "length %zu capacity %u", n, cap);
      }
    }
  } else {
    std::string text = take_text(in, 300);
    if (QWZDateTimeFromText(ctx, err, MT(text), text.size(), const_cast<QWZText *>(T(fmt)),
                            flen, nullptr, 0, dt) == QWZ_SUCCESS) {
      ub4 valid = 1;
      FUZZ_CHECK(QWZDateTimeCheck(ctx, err, dt, &valid) == QWZ_SUCCESS && valid == 0,
                 "type %u '%s' '%s' -> %s flags %#x", type, text.c_str(), fmt.c_str(),
                 datetime_str(dt).c_str(), valid);
      QWZtext buf[512] = {};
      ub4 cap = 256;
      const sword rc = QWZDateTimeToText(ctx, err, dt, T(fmt), flen, fsprec, nullptr, 0, &cap, buf);
      FUZZ_CHECK(rc == QWZ_SUCCESS, "type %u '%s' '%s' -> %s does not write back: %s", type,
                 text.c_str(), fmt.c_str(), datetime_str(dt).c_str(), last_diag().c_str());
      std::string out(reinterpret_cast<char *>(buf));
      const sword rc2 = QWZDateTimeFromText(ctx, err, MT(out), out.size(),
                                            const_cast<QWZText *>(T(fmt)), flen, nullptr, 0, back);
      FUZZ_CHECK(rc2 == QWZ_SUCCESS, "type %u '%s' '%s' -> %s -> '%s' does not read back: %s", type,
                 text.c_str(), fmt.c_str(), datetime_str(dt).c_str(), out.c_str(),
                 last_diag().c_str());
      FUZZ_CHECK(same_value(dt, back), "type %u '%s' '%s' -> %s -> '%s' -> %s", type,
                 text.c_str(), fmt.c_str(), datetime_str(dt).c_str(), out.c_str(),
                 datetime_str(back).c_str());
    }
  }
  QWZDescriptorFree(dt, type);
  QWZDescriptorFree(back, type);
  return 0;
}
