// Date text and format models, both ways: a text read under a model must
// be a valid date and write back under the same model to a text that reads
// as the same date (except where the model is one-way by design: "SYYYY"
// with a year of four characters, fraction and zone keywords, anything
// after "SS"); any date written
// under any model stays inside the 255-character result.
#include "fuzz_common.h"

using namespace qwz_fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  QWZError *err = handles().err;
  const uint8_t flags = in.ConsumeIntegral<uint8_t>();
  Tracing tracing(flags & 1);
  const std::string fmt = take_text(in, 255);
  const ub1 flen = static_cast<ub1>(fmt.size());

  if (flags & 2) {
    // Any fields, any model.
    QWZDate d{};
    d.year = in.ConsumeIntegral<sb2>();
    d.month = in.ConsumeIntegral<ub2>();
    d.day = in.ConsumeIntegral<ub2>();
    d.hour = in.ConsumeIntegral<ub2>();
    d.minute = in.ConsumeIntegral<ub2>();
    d.second = in.ConsumeIntegral<ub2>();
    QWZtext buf[512] = {};
    ub4 cap = in.ConsumeIntegralInRange<ub4>(0, 300);
    const sword rc = QWZDateToText(err, &d, T(fmt), flen, nullptr, 0, &cap, buf);
    if (rc == QWZ_SUCCESS) {
      uword valid = 1;
      FUZZ_CHECK(QWZDateCheck(err, &d, &valid) == QWZ_SUCCESS && valid == 0, "%s",
                 date_str(d).c_str());
      const size_t n = strnlen(reinterpret_cast<char *>(buf), sizeof buf);
      // Nothing is written past the terminator's place after `cap` bytes.
      for (size_t i = cap + 1; i < sizeof buf; ++i)
        FUZZ_CHECK(buf[i] == 0, "byte %zu written with capacity %u", i, cap);
      FUZZ_CHECK(n <= 255 && n <= cap, "length %zu capacity %u", n, cap);
    }
    return 0;
  }

  const std::string text = take_text(in, 300);
  QWZDate d{};
  if (QWZDateFromText(err, T(text), static_cast<ub4>(text.size()), T(fmt), flen, nullptr, 0, &d) !=
      QWZ_SUCCESS)
    return 0;
  uword valid = 1;
  FUZZ_CHECK(QWZDateCheck(err, &d, &valid) == QWZ_SUCCESS && valid == 0, "'%s' '%s' -> %s",
             text.c_str(), fmt.c_str(), date_str(d).c_str());
  if (date_one_way(fmt)) return 0;
  QWZtext buf[512] = {};
  ub4 cap = 256;
  const sword rc = QWZDateToText(err, &d, T(fmt), flen, nullptr, 0, &cap, buf);
  if (rc != QWZ_SUCCESS && written_one_way(fmt, d.year)) return 0;
  FUZZ_CHECK(rc == QWZ_SUCCESS, "'%s' '%s' -> %s does not write back: %s", text.c_str(),
             fmt.c_str(), date_str(d).c_str(), last_diag().c_str());
  // A negative year's '-' is a non-digit: a literal before it takes it on
  // the way back in ("-007" reads as 7), and once it is gone the next
  // non-digit is the field's one separator, so the digits after it join the
  // year ("-004" then "06" reads as 40) or the text stops matching. Only
  // texts of non-negative years are read back.
  if (d.year < 0) return 0;
  const std::string out(reinterpret_cast<char *>(buf));
  QWZDate back{};
  const sword rc2 =
      QWZDateFromText(err, T(out), static_cast<ub4>(out.size()), T(fmt), flen, nullptr, 0, &back);
  FUZZ_CHECK(rc2 == QWZ_SUCCESS, "'%s' '%s' -> %s -> '%s' does not read back: %s", text.c_str(),
             fmt.c_str(), date_str(d).c_str(), out.c_str(), last_diag().c_str());
  sword cmp = 2;
  FUZZ_CHECK(QWZDateCompare(err, &d, &back, &cmp) == QWZ_SUCCESS && cmp == 0,
             "'%s' '%s' -> %s -> '%s' -> %s", text.c_str(), fmt.c_str(), date_str(d).c_str(),
             out.c_str(), date_str(back).c_str());
  return 0;
}
