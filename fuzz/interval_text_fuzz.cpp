// Interval text of both kinds and QWZIntervalToText back: an accepted text
// that passes the check writes back at full precision; when every field has
// one sign the written text reads back to the same fields. Any slot values
// written at any precision stay inside the longest text.
#include "fuzz_common.h"

using namespace qwz_fuzz;

namespace {

bool one_sign(const QWZInterval *iv) {
  bool pos = true, neg = true;
  for (sb4 v : iv->slot) {
    pos = pos && v >= 0;
    neg = neg && v <= 0;
  }
  return pos || neg;
}

std::string slots(const QWZInterval *iv) {
  char b[96];
  std::snprintf(b, sizeof b, "[%d %d %d %d %d]", iv->slot[0], iv->slot[1], iv->slot[2], iv->slot[3],
                iv->slot[4]);
  return b;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  QWZError *err = handles().err;
  const uint8_t flags = in.ConsumeIntegral<uint8_t>();
  const ub4 kind = flags & 8 ? INTERVAL_KIND_DS : INTERVAL_KIND_YM;
  void *ctx = context(flags & 4);
  Tracing tracing(flags & 1);
  QWZInterval *iv = alloc_descriptor<QWZInterval>(kind);
  QWZInterval *back = alloc_descriptor<QWZInterval>(kind);
  // Longest text: sign, 10 leading digits, separators, 5 fraction digits.
  QWZtext buf[64] = {};

  if (flags & 2) {
    for (sb4 &v : iv->slot) v = in.ConsumeIntegral<sb4>();
    if (kind == INTERVAL_KIND_YM) iv->slot[2] = iv->slot[3] = iv->slot[4] = 0;
    const ub1 lfprec = in.ConsumeIntegral<ub1>(), fsprec = in.ConsumeIntegral<ub1>();
    size_t len = 12345;
    if (QWZIntervalToText(ctx, err, iv, lfprec, fsprec, buf, sizeof buf, &len) == QWZ_SUCCESS) {
      ub4 valid = 1;
      FUZZ_CHECK(QWZIntervalCheck(ctx, err, iv, &valid) == QWZ_SUCCESS && valid == 0, "%s",
                 slots(iv).c_str());
      FUZZ_CHECK(len == std::strlen(reinterpret_cast<char *>(buf)) && len < sizeof buf,
                 "%s length %zu", slots(iv).c_str(), len);
    }
  } else {
    const std::string text = take_text(in, 200);
    if (QWZIntervalFromText(ctx, err, T(text), text.size(), iv) == QWZ_SUCCESS) {
      ub4 valid = 1;
      if (QWZIntervalCheck(ctx, err, iv, &valid) == QWZ_SUCCESS && valid == 0) {
        size_t len = 0;
        const sword rc = QWZIntervalToText(ctx, err, iv, 9, 5, buf, sizeof buf, &len);
        FUZZ_CHECK(rc == QWZ_SUCCESS, "'%s' -> %s does not write back", text.c_str(),
                   slots(iv).c_str());
        const std::string out(reinterpret_cast<char *>(buf));
        FUZZ_CHECK(QWZIntervalFromText(ctx, err, T(out), out.size(), back) == QWZ_SUCCESS,
                   "'%s' -> %s -> '%s' does not read back", text.c_str(), slots(iv).c_str(),
                   out.c_str());
        if (one_sign(iv))
          FUZZ_CHECK(std::memcmp(iv->slot, back->slot, sizeof iv->slot) == 0,
                     "'%s' -> %s -> '%s' -> %s", text.c_str(), slots(iv).c_str(), out.c_str(),
                     slots(back).c_str());
      }
    }
  }
  QWZDescriptorFree(iv, kind);
  QWZDescriptorFree(back, kind);
  return 0;
}
