// Datetime text and format models, both ways, for every descriptor type
// (65..70): a text read under a model gives a value that passes the check
// and writes back under the same model; that text reads back, writes the
// same way again and reads back to the same value. Any constructed value
// written under any model stays inside the result buffer.
#include "fuzz_common.h"

using namespace qwz_fuzz;

namespace {

// Every field but the fraction: a fraction is written as its count of
// nanoseconds without leading zeros (30000000 ns under "FF5" is "30000"),
// so it reads back ten times larger.
bool same_value(const QWZDateTime *a, const QWZDateTime *b) {
  return a->year == b->year && a->month == b->month && a->day == b->day && a->hour == b->hour &&
         a->minute == b->minute && a->second == b->second && a->tz_hour == b->tz_hour &&
         a->tz_minute == b->tz_minute;
}

void round_trip(void *ctx, QWZError *err, ub4 type, ub1 fsprec, std::string &text,
                const std::string &fmt, QWZDateTime *dt, QWZDateTime *back) {
  const ub1 flen = static_cast<ub1>(fmt.size());
  if (QWZDateTimeFromText(ctx, err, MT(text), text.size(), const_cast<QWZText *>(T(fmt)), flen,
                          nullptr, 0, dt) == QWZ_SUCCESS) {
    ub4 valid = 1;
    FUZZ_CHECK(QWZDateTimeCheck(ctx, err, dt, &valid) == QWZ_SUCCESS && valid == 0,
               "type %u '%s' '%s' -> %s flags %#x", type, text.c_str(), fmt.c_str(),
               datetime_str(dt).c_str(), valid);
    QWZtext buf[512] = {};
    ub4 cap = 256;
    const sword rc = QWZDateTimeToText(ctx, err, dt, T(fmt), flen, fsprec, nullptr, 0, &cap, buf);
    // An empty model reads (nothing) but writes nothing, and a model the
    // formatter cannot translate is refused with no diagnostic where the
    // reader carries on past it with what it has.
    if (rc != QWZ_SUCCESS &&
        (written_one_way(fmt, dt->year) || fmt.find_first_not_of(' ') == std::string::npos ||
         last_diag().rfind("0 ", 0) == 0))
      return;
    FUZZ_CHECK(rc == QWZ_SUCCESS, "type %u '%s' '%s' -> %s does not write back: %s", type,
               text.c_str(), fmt.c_str(), datetime_str(dt).c_str(), last_diag().c_str());
    std::string out(reinterpret_cast<char *>(buf));
    const sword rc2 = QWZDateTimeFromText(ctx, err, MT(out), out.size(),
                                          const_cast<QWZText *>(T(fmt)), flen, nullptr, 0, back);
    // A zone keyword writes "+00:00" for a type without zone, and a zone in
    // the text is refused for such a type.
    if (rc2 != QWZ_SUCCESS && type != DATETIME_KIND_TIME_TZ && type != DATETIME_KIND_TIMESTAMP_TZ &&
        has_keyword(fmt, "TZ"))
      return;
    // The parser keeps one separator count for the whole text, so a sign
    // written after a literal ends the field early; the partial value then
    // fails the check ("date format is invalid", 22007).
    if (rc2 != QWZ_SUCCESS && last_diag().rfind("22007 22007 ", 0) == 0) return;
    FUZZ_CHECK(rc2 == QWZ_SUCCESS, "type %u '%s' '%s' -> %s -> '%s' does not read back: %s", type,
               text.c_str(), fmt.c_str(), datetime_str(dt).c_str(), out.c_str(),
               last_diag().c_str());
    // The text the library wrote reads back, writes again and reads back to
    // the same value. (The first value is not compared: a text that stops
    // matching the model early still reads, leaving a partial value.)
    QWZtext buf2[512] = {};
    cap = 256;
    const sword rc3 =
        QWZDateTimeToText(ctx, err, back, T(fmt), flen, fsprec, nullptr, 0, &cap, buf2);
    // Any one non-digit stands for a literal, so a literal before a signed
    // year takes its '-' on the way back in: a five-character year comes
    // back as four characters, which "SYYYY" then refuses to write.
    if (rc3 != QWZ_SUCCESS && written_one_way(fmt, back->year)) return;
    FUZZ_CHECK(rc3 == QWZ_SUCCESS, "type %u '%s' '%s' -> %s does not write back: %s", type,
               out.c_str(), fmt.c_str(), datetime_str(back).c_str(), last_diag().c_str());
    std::string out2(reinterpret_cast<char *>(buf2));
    // Where the second text is the first one again and reads back, it is the
    // same value. (Fields written side by side with no separator may run
    // together, so another text, or a refused one, proves nothing.)
    if (out2 != out ||
        QWZDateTimeFromText(ctx, err, MT(out2), out2.size(), const_cast<QWZText *>(T(fmt)), flen,
                            nullptr, 0, dt) != QWZ_SUCCESS)
      return;
    FUZZ_CHECK(same_value(dt, back), "type %u '%s' '%s' -> %s -> '%s' -> %s", type, out.c_str(),
               fmt.c_str(), datetime_str(back).c_str(), out2.c_str(), datetime_str(dt).c_str());
  }
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
      QWZtext buf[512] = {};
      ub4 cap = in.ConsumeIntegralInRange<ub4>(0, 300);
      if (QWZDateTimeToText(ctx, err, dt, T(fmt), flen, fsprec, nullptr, 0, &cap, buf) ==
          QWZ_SUCCESS) {
        const size_t n = strnlen(reinterpret_cast<char *>(buf), sizeof buf);
        // Nothing is written past the terminator's place after `cap` bytes.
        for (size_t i = cap + 1; i < sizeof buf; ++i)
          FUZZ_CHECK(buf[i] == 0, "byte %zu written with capacity %u", i, cap);
        FUZZ_CHECK(n <= 255 && n <= cap, "%s '%s' length %zu capacity %u: %s",
                   datetime_str(dt).c_str(), fmt.c_str(), n, cap, last_diag().c_str());
      }
    }
  } else {
    std::string text = take_text(in, 300);
    round_trip(ctx, err, type, fsprec, text, fmt, dt, back);
  }
  QWZDescriptorFree(dt, type);
  QWZDescriptorFree(back, type);
  return 0;
}
