// How the text functions read their texts and formats: up to the NUL, then
// trimmed of blanks, then cut at the given length; a format over 127
// characters is refused whatever length it is given with; and ToText copies
// the terminator even when the text fills the stated capacity exactly.
#include "text_test_util.h"

#include <cstring>
#include <string>

using namespace qwz_test;
using namespace text_test;

namespace {

class TextReading : public HandleFixture {
 protected:
  ZoneGuard zone_{kUtc};
};

// ---- text to date ----------------------------------------------------------

struct FromCase {
  const char *text;
  ub4 text_length;
  const char *format;
  ub1 format_length;
  sword status;
  QWZDate expected;  // when status is 0
};

// A text that does not match its format fails without a diagnostic.
TEST_F(TextReading, DateFromTextTrimsThenCutsTextAndFormat) {
  const FromCase cases[] = {
      // Leading blanks do not count against the length.
      {"  2024-05-17", 10, "YYYY-MM-DD", 10, 0, {2024, 5, 17, 0, 0, 0}},
      {"  2024-05-17", 12, "YYYY-MM-DD", 10, 0, {2024, 5, 17, 0, 0, 0}},
      {"  2024-05-17", 200, "YYYY-MM-DD", 10, 0, {2024, 5, 17, 0, 0, 0}},
      // Trailing blanks are gone before the cut.
      {"2024-05-17   ", 10, "YYYY-MM-DD", 10, 0, {2024, 5, 17, 0, 0, 0}},
      {"  2024-05-17  ", 9, "YYYY-MM-DD", 10, 0, {2024, 5, 1, 0, 0, 0}},
      // Shorter than the trimmed text: the day, then the month, are cut away.
      {"  2024-05-17  ", 8, "YYYY-MM-DD", 10, -1, {}},
      {"  2024-05-17  ", 5, "YYYY-MM-DD", 10, -1, {}},
      // Blanks inside stay and end fields like any separator.
      {"  2024 05 17", 10, "YYYY-MM-DD", 10, 0, {2024, 5, 17, 0, 0, 0}},
      {"  2024 05 17", 7, "YYYY-MM-DD", 10, -1, {}},
      {" 2024-05-17 10:20:30 ", 19, "YYYY-MM-DD HH24:MI:SS", 21, 0, {2024, 5, 17, 10, 20, 30}},
      {" 2024-05-17 10:20:30 ", 16, "YYYY-MM-DD HH24:MI:SS", 21, 0, {2024, 5, 17, 10, 20, 0}},
      // The format likewise: leading blanks skipped, then cut.
      {"2024-05-17", 10, "  YYYY-MM-DD", 10, 0, {2024, 5, 17, 0, 0, 0}},
      {"2024-05-17", 10, "  YYYY-MM-DD", 7, 0, {2024, 5, 1, 0, 0, 0}},
      {"2024-05-17", 10, "YYYY-MM-DD  ", 12, 0, {2024, 5, 17, 0, 0, 0}},
      {"2024-05-17", 10, "  YYYY-MM-DD  ", 255, 0, {2024, 5, 17, 0, 0, 0}},
      {"2024-05-17 10:20:30", 19, "  YYYY-MM-DD HH24:MI:SS", 13, 0, {2024, 5, 17, 10, 0, 0}},
  };
  for (const FromCase &c : cases) {
    SCOPED_TRACE(std::string("'") + c.text + "' " + std::to_string(c.text_length) + " '" +
                 c.format + "' " + std::to_string(c.format_length));
    QWZDate d{1, 1, 1, 1, 1, 1};
    EXPECT_EQ(QWZDateFromText(err_, U(c.text), c.text_length, U(c.format), c.format_length,
                              nullptr, 0, &d),
              c.status);
    if (c.status == 0) {
      EXPECT_EQ(d, c.expected);
    }
    expect_clear();
  }
}

// "YYYY-MM-DD" followed by slashes up to n characters.
std::string long_format(std::size_t n) { return "YYYY-MM-DD" + std::string(n - 10, '/'); }

TEST_F(TextReading, FormatLimitHoldsForTheWholeUntrimmedFormat) {
  for (std::size_t n : {127u, 128u, 200u}) {
    SCOPED_TRACE(n);
    const std::string fmt = long_format(n);
    QWZDate d{1, 1, 1, 1, 1, 1};
    const sword r = QWZDateFromText(err_, U("2024-05-17"), 10, U(fmt.c_str()), 10, nullptr, 0, &d);
    if (n <= 127) {
      EXPECT_EQ(r, 0);
      EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0}));
    } else {
      // Refused before translation, without a diagnostic; the date is untouched.
      EXPECT_EQ(r, -1);
      EXPECT_EQ(d, (QWZDate{1, 1, 1, 1, 1, 1}));
    }
    expect_clear();
  }
  // Blanks count too: four characters of format behind 124 blanks.
  const std::string padded = std::string(124, ' ') + "YYYY";
  QWZDate d{};
  EXPECT_EQ(QWZDateFromText(err_, U("2024"), 4, U(padded.c_str()), 4, nullptr, 0, &d), -1);
  expect_clear();
}

TEST_F(TextReading, DateTimeFromTextTrimsThenCuts) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  std::string text = "  2024-05-17 10:20:30.123 -05:30";
  std::string fmt = " YYYY-MM-DD HH24:MI:SS.FF3 TZH:TZM";
  ASSERT_EQ(QWZDateTimeFromText(session_, err_, M(text), 23, M(fmt), 26, nullptr, 0, dt), 0);
  EXPECT_EQ(dt->year, 2024);
  EXPECT_EQ(dt->second, 30);
  EXPECT_EQ(dt->fraction, 123000000u);
  EXPECT_EQ(dt->tz_hour, 0);  // the zone lies past both cuts
  EXPECT_EQ(dt->tz_minute, 0);
  expect_clear();

  // The whole text and format, read with lengths far past them.
  ASSERT_EQ(QWZDateTimeFromText(session_, err_, M(text), 4096, M(fmt), 255, nullptr, 0, dt), 0);
  EXPECT_EQ(dt->tz_hour, 5);  // the literal before TZH takes the '-'
  EXPECT_EQ(dt->tz_minute, 30);
  expect_clear();

  // A format over 127 characters given with a short length: the text does
  // not match, and the unfilled value then fails the validity check.
  std::string too_long = long_format(200);
  QWZDateTime *plain = new_datetime(DATETIME_KIND_TIMESTAMP);
  EXPECT_EQ(QWZDateTimeFromText(session_, err_, M(text), 200, M(too_long), 10, nullptr, 0, plain),
            -1);
  expect_diag(22007, "22007", kDateTimeInvalid);
}

// ---- date and datetime to text ---------------------------------------------

// A format, the length it is given with, and the text it writes.
struct ToTextCase {
  const char *format;
  ub1 length;
  const char *text;
};

TEST_F(TextReading, DateToTextTrimsThenCutsTheFormat) {
  const QWZDate d{2024, 5, 17, 10, 20, 30};
  const ToTextCase cases[] = {
      {"  YYYY-MM-DD", 4, "2024"},
      {"  YYYY-MM-DD", 10, "2024-05-17"},
      {"  YYYY-MM-DD", 12, "2024-05-17"},
      {"YYYY-MM-DD   ", 13, "2024-05-17"},
      {"  DD.MM.YYYY  ", 5, "17.05"},
      {" YYYY-MM-DD HH24:MI:SS ", 16, "2024-05-17 10:"},
      {" YYYY-MM-DD HH24:MI:SS ", 255, "2024-05-17 10:20:30"},
  };
  for (const ToTextCase &c : cases) {
    SCOPED_TRACE(std::string("'") + c.format + "' " + std::to_string(c.length));
    QWZtext buf[64];
    std::memset(buf, '#', sizeof buf);
    ub4 size = sizeof buf - 1;
    ASSERT_EQ(QWZDateToText(err_, &d, U(c.format), c.length, nullptr, 0, &size, buf), 0);
    EXPECT_STREQ(reinterpret_cast<char *>(buf), c.text);
    EXPECT_EQ(size, sizeof buf - 1);  // not updated
    expect_clear();
  }
}

TEST_F(TextReading, DateTimeToTextTrimsThenCutsTheFormat) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  ASSERT_EQ(QWZDateTimeConstruct(session_, err_, dt, 2024, 5, 17, 10, 20, 30, 123456789,
                                 M("-05:30"), 6),
            0);
  const ToTextCase cases[] = {
      {"  YYYY-MM-DD", 4, "2024"},
      {"  HH24:MI:SS.FF3 TZH:TZM  ", 22, "10:20:30.123 -05:30"},
      {"  HH24:MI:SS.FF3 TZH:TZM  ", 14, "10:20:30.123"},
      {"  HH24:MI:SS.FF3 TZH:TZM  ", 255, "10:20:30.123 -05:30"},
  };
  for (const ToTextCase &c : cases) {
    SCOPED_TRACE(std::string("'") + c.format + "' " + std::to_string(c.length));
    QWZtext buf[64];
    ub4 size = sizeof buf - 1;
    ASSERT_EQ(QWZDateTimeToText(session_, err_, dt, U(c.format), c.length, 0, nullptr, 0, &size,
                                buf),
              0);
    EXPECT_STREQ(reinterpret_cast<char *>(buf), c.text);
    expect_clear();
  }
}

TEST_F(TextReading, ToTextRefusesFormatsOver127CharactersWhateverTheLength) {
  const QWZDate d{2024, 5, 17, 10, 20, 30};
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  ASSERT_EQ(QWZDateTimeConstruct(session_, err_, dt, 2024, 5, 17, 10, 20, 30, 0, nullptr, 0), 0);
  for (std::size_t n : {127u, 128u, 200u}) {
    SCOPED_TRACE(n);
    const std::string fmt = long_format(n);
    QWZtext buf[64];
    std::memset(buf, '#', sizeof buf);
    ub4 size = sizeof buf - 1;
    const sword r = QWZDateToText(err_, &d, U(fmt.c_str()), 4, nullptr, 0, &size, buf);
    if (n <= 127) {
      EXPECT_EQ(r, 0);
      EXPECT_STREQ(reinterpret_cast<char *>(buf), "2024");
      expect_clear();
    } else {
      EXPECT_EQ(r, -1);
      expect_diag(11104, "22007", kFormatOrDate);
      EXPECT_EQ(buf[0], '#');  // untouched
    }
    std::memset(buf, '#', sizeof buf);
    const sword r2 =
        QWZDateTimeToText(session_, err_, dt, U(fmt.c_str()), 4, 0, nullptr, 0, &size, buf);
    if (n <= 127) {
      EXPECT_EQ(r2, 0);
      EXPECT_STREQ(reinterpret_cast<char *>(buf), "2024");
    } else {
      EXPECT_EQ(r2, -1);  // no diagnostic for a datetime
      EXPECT_EQ(buf[0], '#');
    }
    expect_clear();
  }
}

// The terminator lands one byte past a capacity equal to the text's length.
TEST_F(TextReading, ToTextWritesTheTerminatorPastAnExactCapacity) {
  const QWZDate d{2024, 5, 17, 10, 20, 30};
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  ASSERT_EQ(QWZDateTimeConstruct(session_, err_, dt, 2024, 5, 17, 10, 20, 30, 0, nullptr, 0), 0);
  for (int datetime = 0; datetime < 2; ++datetime) {
    SCOPED_TRACE(datetime ? "datetime" : "date");
    auto call = [&](ub4 *size, QWZtext *buf) {
      return datetime ? QWZDateTimeToText(session_, err_, dt, U("YYYY-MM-DD"), 10, 0, nullptr, 0,
                                          size, buf)
                      : QWZDateToText(err_, &d, U("YYYY-MM-DD"), 10, nullptr, 0, size, buf);
    };
    QWZtext buf[16];
    std::memset(buf, '#', sizeof buf);
    ub4 size = 10;
    ASSERT_EQ(call(&size, buf), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(buf), 10), "2024-05-17");
    EXPECT_EQ(buf[10], '\0');
    EXPECT_EQ(buf[11], '#');
    EXPECT_EQ(size, 10u);
    expect_clear();

    std::memset(buf, '#', sizeof buf);
    size = 9;
    EXPECT_EQ(call(&size, buf), -1);
    expect_diag(11104, "01877", kBufTooSmall);
    EXPECT_EQ(buf[0], '#');
  }
}

// ---- the zone text of the constructor --------------------------------------

TEST_F(TextReading, ConstructReadsTheZoneTextTrimmedThenCut) {
  struct Case {
    const char *zone;
    size_t length;
    sb1 hour;
    sb1 minute;
  } cases[] = {
      {"  -05:30", 3, -5, 0},    {"  -05:30", 6, -5, -30}, {"  -05:30", 8, -5, -30},
      {"  -05:30", 4096, -5, -30}, {"-05:30   ", 6, -5, -30}, {"  +05:30  ", 3, 5, 0},
      {"  +05:30  ", 5, 5, 3},   {" +09:15 ", 1, 0, 0},
  };
  for (ub4 type : {DATETIME_KIND_TIMESTAMP_TZ, DATETIME_KIND_TIME_TZ}) {
    for (const auto &c : cases) {
      SCOPED_TRACE(std::string("type ") + std::to_string(type) + " '" + c.zone + "' " +
                   std::to_string(c.length));
      QWZDateTime *dt = new_datetime(type);
      ASSERT_EQ(QWZDateTimeConstruct(session_, err_, dt, 2024, 5, 17, 10, 20, 30, 0, M(c.zone),
                                     c.length),
                0);
      EXPECT_EQ(dt->tz_hour, c.hour);
      EXPECT_EQ(dt->tz_minute, c.minute);
      expect_clear();
    }
  }
}

// The internal entry reads the same way.
TEST_F(TextReading, SharedEntryTrimsThenCuts) {
  datetime_fields f;
  sb4 code = 0;
  ASSERT_EQ(qwz_char_to_datetime(U("   2024-05-17 10:20  "), 13, U(" YYYY-MM-DD HH24:MI "), 16, &f,
                                 0, &code),
            1);
  EXPECT_STREQ(f.year, "2024");
  EXPECT_STREQ(f.day, "17");
  EXPECT_STREQ(f.hour, "10");
  EXPECT_STREQ(f.minute, "00");  // "10:20" lies past the text's cut at 13
  EXPECT_EQ(code, 0);

  const std::string fmt = long_format(128);
  code = 0;
  EXPECT_EQ(qwz_char_to_datetime(U("2024-05-17"), 10, U(fmt.c_str()), 10, &f, 0, &code), 0);
  EXPECT_EQ(code, 0);
}

}  // namespace
