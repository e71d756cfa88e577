// The compiled shortcuts of the text conversions against the general path.
//
// Reading: once a text has been parsed under a format, texts of the same
// shape are read straight to numbers. Every reading of date_from_text,
// datetime_from_text and append_timezone_from_text must give exactly what
// the token-list parser's record gives, read field by field.
//
// Writing: a value whose fields print at their usual widths is written
// through a template. date_to_text and datetime_to_text must give exactly
// the general formatter's text, status and error code, for values inside
// and outside those widths and for every buffer size around the length.
#include "text_test_util.h"

#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/format_model.h"
#include "date_datetime_interval/text_in.h"
#include "date_datetime_interval/text_out.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using text_test::U;

constexpr char kUtc[] = "UTC0";
constexpr char kCet[] = "CET-1CEST,M3.5.0,M10.5.0/3";

const char *const kFormats[] = {
    "YYYY-MM-DD HH24:MI:SS",       "SYYYY/MM/DD HH12.MI.SS,FF5 TZH:TZM",
    "DD.MM.YYYY",                  "YYYYMMDDHH24MISS",
    "FF3",                         "TZH:TZM",
    "HH HH24 MI",                  "YYYY-MM-DD HH24:MI:SS.FF3",
    "YYYY-MM-DD HH24:MI:SS.FF1",   "MM/DD HH24:MI",
    "DD HH:MI:SS TZH",             "YYYY-MM-DD/HH24:MI:SS.FF5TZH:TZM",
    "SS.FF5",                      "DD-MM-YYYY HH24:MI:SS.FF2 TZM",
};

const char *const kShapes[] = {
    // Usual texts, one per format above.
    "2024-05-17 10:20:30", "-0044/03/15 23.59.59,12345 +05:30", "17.05.2024", "20240517102030",
    "123", "-05:30", "10 11 12", "2024-05-17 10:20:30.123", "2024-05-17 10:20:30.1",
    "05/17 10:20", "17 10:20:30 -03", "2024-05-17/10:20:30.12345+01:00", "30.12345",
    "17-05-2024 10:20:30.12 45",
    // Blanks, signs, short and long digit runs, letters and nothing at all.
    " 1-2-3 ", "2024/5/7 1:2:3", "12 34 ab", "1-2", "--12--", "12345678901234567890", "  x", "",
    "1 2", "99-99-9999 99:99:99.99 -9",
};

std::string with_digits(std::mt19937 &rng, std::string t) {
  for (char &c : t)
    if (c >= '0' && c <= '9') c = static_cast<char>('0' + rng() % 10);
  return t;
}

std::string random_text(std::mt19937 &rng, int i) {
  if (i % 4 == 3) {
    static const char alphabet[] = "0123456789-- //.:+xT\x80";
    std::string t(rng() % 30, ' ');
    for (char &c : t) c = alphabet[rng() % (sizeof alphabet - 1)];
    return t;
  }
  return with_digits(rng, kShapes[rng() % (sizeof kShapes / sizeof kShapes[0])]);
}

// What the general path reads: the parser on the trimmed text, its record
// read as numbers.
struct Reference {
  int matched;
  qwz::FieldValues values;
};
Reference reference(const std::string &text, const qwz_token *list) {
  std::size_t b = 0, e = text.size();
  while (b < e && text[b] == ' ') ++b;
  while (e > b && text[e - 1] == ' ') --e;
  const std::string trimmed = text.substr(b, e - b);
  datetime_fields f;
  std::memset(&f, 0, sizeof f);
  Reference r{char_to_datetime(trimmed.c_str(), list, &f), {}};
  qwz::values_from_fields(f, r.values);
  return r;
}

// The six calendar fields of a QWZDate or a QWZDateTime against the values,
// cut to the fields' widths as the converters cut them.
template <class Value>
void expect_calendar_fields(const Value &v, const qwz::FieldValues &want) {
  EXPECT_EQ(v.year, static_cast<sb2>(want.year));
  EXPECT_EQ(v.month, static_cast<ub2>(want.month));
  EXPECT_EQ(v.day, static_cast<ub2>(want.day));
  EXPECT_EQ(v.hour, static_cast<ub2>(want.hour));
  EXPECT_EQ(v.minute, static_cast<ub2>(want.minute));
  EXPECT_EQ(v.second, static_cast<ub2>(want.second));
}

// A text read as a date and as a datetime with a zone gives what the
// parser's record gives (descriptors filled with 0x5A first).
void expect_read_as_parser(const std::string &text, const char *format, std::size_t flen,
                           const Reference &want) {
  QWZDate d;
  std::memset(&d, 0x5A, sizeof d);
  const sword r = date_from_text(nullptr, U(text.c_str()), text.size(), U(format), flen, &d);
  ASSERT_EQ(r, want.matched ? 1 : -1);
  if (want.matched) expect_calendar_fields(d, want.values);

  QWZDateTime dt;
  std::memset(&dt, 0x5A, sizeof dt);
  dt.hdr.type = DATETIME_KIND_TIMESTAMP_TZ;
  const sword s = datetime_from_text(nullptr, U(text.c_str()), text.size(), U(format), flen, &dt);
  ASSERT_EQ(s, want.matched ? 1 : 0);
  expect_calendar_fields(dt, want.values);
  EXPECT_EQ(dt.fraction, want.values.fraction_ns);
  EXPECT_EQ(dt.tz_hour, static_cast<sb1>(want.values.tz_hour));
  EXPECT_EQ(dt.tz_minute, static_cast<sb1>(want.values.tz_minute));
}

class TextPlanReadTest : public ::testing::TestWithParam<const char *> {
 protected:
  void SetUp() override {
    setenv("TZ", GetParam(), 1);
    tzset();
  }
};

TEST_P(TextPlanReadTest, DatesDatetimesAndZonesReadAsTheParserReadsThem) {
  std::mt19937 rng(2024);
  int direct = 0;
  for (const char *format : kFormats) {
    qwz_token *list = qwz_translate_format(format);
    ASSERT_NE(list, nullptr) << format;
    const std::size_t flen = std::strlen(format);
    for (int i = 0; i < 600; ++i) {
      const std::string text = random_text(rng, i);
      const Reference want = reference(text, list);
      SCOPED_TRACE(std::string(format) + " / '" + text + "'");

      // Read twice: the first reading of a shape records it, the second
      // replays it.
      for (int pass = 0; pass < 2; ++pass) {
        expect_read_as_parser(text, format, flen, want);
        if (HasFatalFailure()) return;

        // A descriptor without a zone refuses a text that gave one.
        QWZDateTime plain;
        std::memset(&plain, 0, sizeof plain);
        plain.hdr.type = DATETIME_KIND_TIMESTAMP;
        const sword p =
            datetime_from_text(nullptr, U(text.c_str()), text.size(), U(format), flen, &plain);
        EXPECT_EQ(p, want.values.tz_given ? -1 : (want.matched ? 1 : 0));

        QWZDateTime zone;
        std::memset(&zone, 0x5A, sizeof zone);
        const sword z = append_timezone_from_text(nullptr, U(text.c_str()), text.size(),
                                                  U(format), flen, &zone);
        ASSERT_EQ(z, want.matched ? 0 : -1);
        if (want.matched) {
          EXPECT_EQ(zone.tz_hour, static_cast<sb1>(want.values.tz_hour));
          const long minute =
              want.values.tz_hour_negative ? -want.values.tz_minute : want.values.tz_minute;
          EXPECT_EQ(zone.tz_minute, static_cast<sb1>(minute));
          EXPECT_EQ(zone.year, static_cast<sb2>(0x5A5A));  // left alone
        }
        if (pass == 1 && want.matched) ++direct;
      }
    }
    qwz_free_token_list(list);
  }
  EXPECT_GT(direct, 2000);
}

// Dates read as whole lanes of two digits (two-digit fields, a year of two
// or four digits, fields left to their defaults), beside near misses that
// are read field by field (runs of one or three digits, a sign, blanks):
// every text twice, as the parser's record reads it.
TEST_P(TextPlanReadTest, LaneShapedDatesReadAsTheParserReadsThem) {
  const char *const formats[] = {
      "YYYY-MM-DD HH24", "DD/MM/YYYY HH24", "YYYY", "MM/YYYY",
      "YYYY-MM-DD", "HH24:MI:SS DD.MM.YYYY",     "YYYYMMDD",
      "DD MM YYYY HH24 MI SS.FF3 TZH:TZM",       "MI:SS YYYY-MM",
  };
  const char *const shapes[] = {
      "24-05-17", "17/05/24 10", "2024", "05/2024", "2024-05-17", "10:20:30 17.05.2024",
      "20240517", "17 05 2024 10 20 30.123 +01:00", "20:30 2024-05", "4-5-17", "2024-5-17",
      "024-05-17", "-2024-05-17", "24-05-1", " 2024 ", "99/99/99 99", "2024-05-17 ",
  };
  std::mt19937 rng(77);
  int lanes = 0;
  for (const char *format : formats) {
    qwz_token *list = qwz_translate_format(format);
    ASSERT_NE(list, nullptr) << format;
    const std::size_t flen = std::strlen(format);
    for (int i = 0; i < 400; ++i) {
      const std::string text = with_digits(rng, shapes[rng() % (sizeof shapes / sizeof *shapes)]);
      const Reference want = reference(text, list);
      SCOPED_TRACE(std::string(format) + " / '" + text + "'");
      for (int pass = 0; pass < 2; ++pass) {
        SCOPED_TRACE(pass);
        expect_read_as_parser(text, format, flen, want);
        if (HasFatalFailure()) return;
        if (pass == 1 && want.matched) ++lanes;
      }
    }
    qwz_free_token_list(list);
  }
  EXPECT_GT(lanes, 1000);
}

INSTANTIATE_TEST_SUITE_P(Zones, TextPlanReadTest, ::testing::Values(kUtc, kCet),
                         [](const auto &info) { return info.index == 0 ? "Utc" : "Cet"; });

// A year or a month left out comes from the clock, on every reading.
TEST(TextPlanRead, MissingYearAndMonthComeFromTheClockOnEveryReading) {
  setenv("TZ", kUtc, 1);
  tzset();
  for (int i = 0; i < 3; ++i) {
    const text_test::YearMonth before = text_test::local_year_month();
    QWZDate d{};
    ASSERT_EQ(date_from_text(nullptr, U("17 10:20"), 8, U("DD HH24:MI"), 10, &d), 1);
    const text_test::YearMonth after = text_test::local_year_month();
    const text_test::YearMonth got{d.year, d.month};
    EXPECT_TRUE(got == before || got == after);
    EXPECT_EQ(d.day, 17);
    EXPECT_EQ(d.hour, 10);
    EXPECT_EQ(d.minute, 20);
  }
  // The zone alone needs no clock: year and month stay as the text left them.
  QWZDateTime zone{};
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(append_timezone_from_text(nullptr, U("-05:30"), 6, U("TZH:TZM"), 7, &zone), 0);
    EXPECT_EQ(zone.tz_hour, -5);
    EXPECT_EQ(zone.tz_minute, -30);
  }
}

// Formats of one length that differ only in their bytes, more of them than
// the per-thread cache holds, used in turns: every conversion must use the
// format it was given, whether the format is the last one used, one still
// in the cache, or one whose entry another format has taken meanwhile.
TEST(TextPlanFormats, FormatsOfOneLengthTakingTurnsEachReadAndWriteTheirOwnWay) {
  setenv("TZ", kUtc, 1);
  tzset();
  struct Case {
    const char *format;
    const char *text;
  };
  const Case cases[] = {
      {"DD.MM.YYYY", "17.05.2024"}, {"MM.DD.YYYY", "05.17.2024"}, {"YYYY.MM.DD", "2024.05.17"},
      {"YYYY.DD.MM", "2024.17.05"}, {"DD.YYYY.MM", "17.2024.05"}, {"MM.YYYY.DD", "05.2024.17"},
  };
  const QWZDate want{2024, 5, 17, 0, 0, 0};
  // In order, then every other one, then backwards, twice each.
  const int order[] = {0, 1, 2, 3, 4, 5, 0, 2, 4, 1, 3, 5, 5, 4, 3, 2, 1, 0, 0, 0, 3, 3};
  for (int round = 0; round < 2; ++round) {
    for (const int i : order) {
      const Case &c = cases[i];
      SCOPED_TRACE(c.format);
      QWZDate got{};
      ASSERT_EQ(date_from_text(nullptr, U(c.text), 10, U(c.format), 10, &got), 1);
      EXPECT_EQ(got, want);
      QWZtext out[16] = {};
      ub4 size = sizeof out - 1;
      sb4 code = 0;
      ASSERT_EQ(date_to_text(&want, U(c.format), 10, 0, &size, out, &code), 0);
      EXPECT_STREQ(reinterpret_cast<const char *>(out), c.text);
    }
  }
}

// Reads and writes under more formats than the per-thread cache holds, of
// several lengths, in a shuffled order: each answer is its own format's,
// whichever two formats were asked last and whichever cache entries were
// refilled in between.
TEST(TextPlanFormats, ManyFormatsTakingTurnsEachReadAndWriteTheirOwnWay) {
  setenv("TZ", kUtc, 1);
  tzset();
  struct Case {
    const char *format;
    const char *text;
    QWZDate read;
  };
  const Case cases[] = {
      {"YYYY-MM-DD", "2024-05-17", {2024, 5, 17, 0, 0, 0}},
      {"DD.MM.YYYY HH24:MI", "17.05.2024 10:20", {2024, 5, 17, 10, 20, 0}},
      {"YYYY/MM/DD HH24:MI:SS", "2024/05/17 10:20:30", {2024, 5, 17, 10, 20, 30}},
      {"MM-DD-YYYY", "05-17-2024", {2024, 5, 17, 0, 0, 0}},
      {"MI:HH24 DD.MM.YYYY", "20:10 17.05.2024", {2024, 5, 17, 10, 20, 0}},
      {"DD/MM/YYYY", "17/05/2024", {2024, 5, 17, 0, 0, 0}},
      {"YYYYMMDDHH24MISS", "20240517102030", {2024, 5, 17, 10, 20, 30}},
  };
  const QWZDate value{2024, 5, 17, 10, 20, 30};
  std::mt19937 rng(5);
  for (int step = 0; step < 600; ++step) {
    const Case &c = cases[rng() % (sizeof cases / sizeof *cases)];
    SCOPED_TRACE(std::string(c.format) + " step " + std::to_string(step));
    const std::size_t flen = std::strlen(c.format);
    if (rng() % 2) {
      QWZDate got;
      std::memset(&got, 0x5A, sizeof got);
      ASSERT_EQ(date_from_text(nullptr, U(c.text), std::strlen(c.text), U(c.format), flen, &got),
                1);
      EXPECT_EQ(got, c.read);
    } else {
      QWZtext out[32];
      std::memset(out, '#', sizeof out);
      ub4 size = sizeof out - 1;
      sb4 code = 0;
      ASSERT_EQ(date_to_text(&value, U(c.format), flen, 0, &size, out, &code), 0);
      EXPECT_STREQ(reinterpret_cast<const char *>(out), c.text);
    }
  }
}

// ---- writing ------------------------------------------------------------

const char *const kWriteFormats[] = {
    "YYYY-MM-DD HH24:MI:SS",  "YYYY-MM-DD HH24:MI:SS.FF3", "DD.MM.YYYY",
    "YYYYMMDDHH24MISS",       "FF1 FF2",                   "FF5",
    "TZH:TZM",                "SS FF3 TZH",                "HH HH12 HH24 MI",
    "SYYYY-MM-DD",            "YYYY-MM-DD HH24:MI:SS.FF5 TZH:TZM",
    "MM/DD/YYYY SS.FF4 TZM",  "FF3/SS/FF2",                "-",
};

std::string general_text(const datetime_fields &f, const char *format, ub4 size, bool date,
                         int &ok, sb4 &code) {
  std::vector<char> out(size + 2, '#');
  code = 0;
  ok = qwz_datetime_to_char(&f, U(format), std::strlen(format), 0,
                            reinterpret_cast<QWZtext *>(out.data()), &size, &code, date ? 1 : 0);
  return std::string(out.data(), out.size());
}

TEST(TextPlanWrite, DatesAndDatetimesWriteAsTheGeneralFormatterWrites) {
  setenv("TZ", kUtc, 1);
  tzset();
  std::mt19937 rng(99);
  auto pick = [&](std::initializer_list<long> v) { return *(v.begin() + rng() % v.size()); };
  int fast = 0;
  for (const char *format : kWriteFormats) {
    SCOPED_TRACE(format);
    for (int i = 0; i < 500; ++i) {
      QWZDateTime dt;
      std::memset(&dt, 0, sizeof dt);
      dt.hdr.type = DATETIME_KIND_TIMESTAMP_TZ;
      dt.year = static_cast<sb2>(i % 5 == 0 ? pick({-4712, -1, 0, 10000, 32767, -32768})
                                            : static_cast<long>(rng() % 10000));
      dt.month = static_cast<ub2>(i % 7 == 0 ? pick({0, 99, 100, 65535}) : 1 + rng() % 12);
      dt.day = static_cast<ub2>(i % 11 == 0 ? pick({0, 99, 100, 1000}) : 1 + rng() % 31);
      dt.hour = static_cast<ub2>(rng() % 24);
      dt.minute = static_cast<ub2>(i % 13 == 0 ? 100 : rng() % 60);
      dt.second = static_cast<ub2>(rng() % 60);
      dt.fraction = static_cast<ub4>(
          pick({0, 5, 12, 123, 12345, 999999, 1000000, 123456789, 999999999, 4294967295L}));
      dt.tz_hour = static_cast<sb1>(i % 3 == 0 ? pick({-128, -100, -99, 0, 99, 100, 127})
                                               : static_cast<long>(rng() % 29) - 14);
      dt.tz_minute = static_cast<sb1>(i % 5 == 1 ? pick({-128, -60, 0, 59, 127})
                                                 : static_cast<long>(rng() % 60));
      const QWZDate d = qwz::datetime_date(&dt);
      datetime_fields fd, fdt;
      qwz::date_to_fields(d, fd);
      qwz::datetime_to_fields(dt, fdt);
      // Buffer sizes around the text's length, and a roomy one.
      int ok = 0;
      sb4 code = 0;
      const std::string roomy = general_text(fdt, format, 200, false, ok, code);
      const std::size_t len = ok ? std::strlen(roomy.c_str()) : 20;
      for (const ub4 size : {static_cast<ub4>(len > 0 ? len - 1 : 0), static_cast<ub4>(len),
                             static_cast<ub4>(len + 1), 200u}) {
        for (const bool date : {true, false}) {
          const datetime_fields &f = date ? fd : fdt;
          int want_ok = 0;
          sb4 want_code = 0;
          const std::string want = general_text(f, format, size, date, want_ok, want_code);
          std::vector<char> out(size + 2, '#');
          ub4 got_size = size;
          sb4 got_code = 0;
          const sword r =
              date ? date_to_text(&d, U(format), std::strlen(format), 0, &got_size,
                                  reinterpret_cast<QWZtext *>(out.data()), &got_code)
                   : datetime_to_text(&dt, U(format), std::strlen(format), 0, &got_size,
                                      reinterpret_cast<QWZtext *>(out.data()), &got_code);
          ASSERT_EQ(r, want_ok ? 0 : -1) << "size " << size << " date " << date << " i " << i;
          EXPECT_EQ(got_code, want_code) << "size " << size << " date " << date;
          EXPECT_EQ(std::string(out.data(), out.size()), want)
              << "size " << size << " date " << date << " i " << i;
          fast += r == 0;
        }
      }
    }
  }
  EXPECT_GT(fast, 10000);
}

// Templates long enough to be written a block at a time, with fractions of
// every width, zone fields in any order, and two fractions or two zone
// hours (which leave those fields to the field-by-field writer).
TEST(TextPlanWrite, LongTemplatesWriteAsTheGeneralFormatterWrites) {
  setenv("TZ", kUtc, 1);
  tzset();
  const char *const formats[] = {
      "YYYY-MM-DD HH24:MI:SS.FF1",         "YYYY-MM-DD HH24:MI:SS.FF2",
      "YYYY-MM-DD HH24:MI:SS.FF4 TZH",     "TZH:TZM YYYY-MM-DD HH24:MI:SS.FF5",
      "FF3 DD.MM.YYYY HH24:MI:SS",         "YYYY-MM-DD HH24:MI:SS.FF3 FF2",
      "TZH DD.MM.YYYY HH24:MI TZH:TZM",    "SS.FF5 SS.FF1 MI:HH24 DD/MM/YYYY",
      "YYYYMMDDHH24MISSFF3TZHTZM",         "MM/DD/YYYY HH12:MI:SS.FF3 TZM:TZH",
      "YYYY-MM-DD HH24:MI:SS.FF5 TZH:TZM YYYY-MM-DD HH24:MI:SS.FF5 TZH:TZM",
  };
  std::mt19937 rng(7);
  int fast = 0;
  for (const char *format : formats) {
    SCOPED_TRACE(format);
    for (int i = 0; i < 400; ++i) {
      QWZDateTime dt;
      std::memset(&dt, 0, sizeof dt);
      dt.hdr.type = DATETIME_KIND_TIMESTAMP_TZ;
      dt.year = static_cast<sb2>(i % 9 == 0 ? 10000 : static_cast<long>(rng() % 10000));
      dt.month = static_cast<ub2>(1 + rng() % 12);
      dt.day = static_cast<ub2>(i % 10 == 0 ? 99 : 1 + rng() % 31);
      dt.hour = static_cast<ub2>(rng() % 24);
      dt.minute = static_cast<ub2>(rng() % 60);
      dt.second = static_cast<ub2>(rng() % 60);
      const ub4 fractions[] = {0, 7, 45, 120, 4500, 99999, 100000, 987654321, 4294967295u};
      dt.fraction = i % 2 ? fractions[rng() % 9] : static_cast<ub4>(rng());
      dt.tz_hour = static_cast<sb1>(static_cast<long>(rng() % 29) - 14);
      dt.tz_minute = static_cast<sb1>(static_cast<long>(rng() % 119) - 59);
      datetime_fields f;
      qwz::datetime_to_fields(dt, f);
      int ok = 0;
      sb4 code = 0;
      const std::string roomy = general_text(f, format, 200, false, ok, code);
      const std::size_t len = ok ? std::strlen(roomy.c_str()) : 20;
      for (const ub4 size : {static_cast<ub4>(len - 1), static_cast<ub4>(len), 200u}) {
        int want_ok = 0;
        sb4 want_code = 0;
        const std::string want = general_text(f, format, size, false, want_ok, want_code);
        std::vector<char> out(size + 2, '#');
        ub4 got_size = size;
        sb4 got_code = 0;
        const sword r = datetime_to_text(&dt, U(format), std::strlen(format), 0, &got_size,
                                         reinterpret_cast<QWZtext *>(out.data()), &got_code);
        ASSERT_EQ(r, want_ok ? 0 : -1) << "size " << size << " i " << i;
        EXPECT_EQ(got_code, want_code) << "size " << size;
        EXPECT_EQ(std::string(out.data(), out.size()), want) << "size " << size << " i " << i;
        fast += r == 0;
      }
    }
  }
  EXPECT_GT(fast, 4000);
}

}  // namespace
