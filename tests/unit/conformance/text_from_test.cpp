// QWZDateFromText and QWZDateTimeFromText, black box: the checks in order,
// the parser's rules (letter scan, one separator count, widths, required
// fields, signs, literals), the defaults from the local clock, fractions,
// zones, partial records of datetimes, and bad input.
#include "text_conf_util.h"

#include <cstdint>
#include <string>
#include <vector>

using namespace text_conf;

namespace {

using qwz_test::kCet;
using qwz_test::kEst;
using qwz_test::kUtc;
using qwz_test::ZoneGuard;

const QWZDate kSentinel = make_date(1111, 11, 11, 11, 11, 11);

bool tm_valid(const QWZDate &d) {
  return text_model::date_flags({d.year, d.month, d.day, d.hour, d.minute, d.second}) == 0;
}

class DateFromTextConf : public TextFixture {};

struct DateCase {
  const char *format;
  const char *text;
  QWZDate want;
};

TEST_F(DateFromTextConf, ReadsFieldsUnderFormats) {
  ZoneGuard z(kUtc);
  const DateCase cases[] = {
      {"YYYY-MM-DD", "2024-05-17", make_date(2024, 5, 17)},
      {"DD.MM.YYYY HH24:MI:SS", "17.05.2024 13:45:10", make_date(2024, 5, 17, 13, 45, 10)},
      {"DD.MM.YYYY HH:MI:SS", "17.05.2024 13:45:10", make_date(2024, 5, 17, 13, 45, 10)},
      {"DD.MM.YYYY HH12:MI:SS", "17.05.2024 13:45:10", make_date(2024, 5, 17, 13, 45, 10)},
      {"yyyy-mm-dd", "2024-05-17", make_date(2024, 5, 17)},
      {"Yyyy-Mm-Dd hH24:mI:sS", "2024-05-17 01:02:03", make_date(2024, 5, 17, 1, 2, 3)},
      {"HH24:MI YYYY-MM-DD", "13:45 2024-05-17", make_date(2024, 5, 17, 13, 45, 0)},
      {"YYYYMMDD", "20240517", make_date(2024, 5, 17)},
      {"YYYYMMDDHH24MISS", "20240517134510", make_date(2024, 5, 17, 13, 45, 10)},
      // Any one non-digit stands for any literal.
      {"YYYY-MM-DD", "2024/05/17", make_date(2024, 5, 17)},
      {"YYYY-MM-DD", "2024.05.17", make_date(2024, 5, 17)},
      {"YYYY/MM/DD", "2024-05-17", make_date(2024, 5, 17)},
      // Trailing text is ignored.
      {"YYYY-MM-DD", "2024-05-17 10:00", make_date(2024, 5, 17)},
      {"YYYY-MM-DD", "2024-05-17 10:00 x", make_date(2024, 5, 17)},
      {"YYYY-MM-DD", "2024-05-17  xyz", make_date(2024, 5, 17)},
      {"YYYY-MM-DD", "2024-05-17\xC3\xA9", make_date(2024, 5, 17)},
      {"SYYYY-MM-DD", "-0044-03-15", make_date(-44, 3, 15)},
      {"SYYYY-MM-DD", "2024-05-17", make_date(2024, 5, 17)},
      {"SYYYY-MM-DD", "-4712-01-01", make_date(-4712, 1, 1)},
      // Fewer digits than the width are fine outside fractions; but a '-'
      // that is the text's first non-digit joins a field that is not full
      // ("24-5" here), so the day is never reached.
      {"YYYY-MM-DD", "24-5-7", kSentinel},
      {"YYYY/MM/DD", "24/5/7", kSentinel},  // the year steps over '/': "245"
      {"YYYY-MM-DD", "0024-5-7", make_date(24, 5, 7)},
      {"YYYY-MM-DD HH24:MI:SS", "2024-5-7 1:2:3", make_date(2024, 5, 7, 1, 2, 3)},
      // More digits than the width: the field ends at its width.
      {"YYYY-MM-DD", "20245-05-17", make_date(2024, 5, 5)},
      {"YYYY-MM-DD", "2024-055-17", make_date(2024, 5, 5)},
      // The first non-digit of the text is the only one a field may step
      // over; a '-' there is kept as the field's sign.
      {"YYYY-MM-DD", "-2024-05-17", make_date(-202, 4, 5)},
      {"DD-MM-YYYY", "-7-05-2024", make_date(2024, 5, static_cast<ub2>(-7))},
      {"YYYY-MM-DD", "x", kSentinel},
      // A blank ends a field once it has digits; blanks before digits are skipped.
      {"YYYY-MM-DD", "2024 -  05 - 17", make_date(2024, 5, 17)},
      {"YYYY MM DD", "   2024   05   17", make_date(2024, 5, 17)},
      // A later keyword for the same field wins.
      {"HH HH24", "10 13", make_date(0, 0, 0, 13, 0, 0)},
      // The fraction and the zone of a date text are dropped.
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 10:20:30.123", make_date(2024, 5, 17, 10, 20, 30)},
      {"YYYY-MM-DD TZH:TZM", "2024-05-17 -05:30", make_date(2024, 5, 17)},
      // Blanks around text and format are trimmed (tabs are not blanks).
      {"  YYYY-MM-DD  ", "  2024-05-17  ", make_date(2024, 5, 17)},
      {"YYYY-MM-DD", "\t2024-05-17", make_date(2024, 5, 17)},
      {"\tYYYY-MM-DD", "2024-05-17", make_date(2024, 5, 17)},
  };
  const Clock clock = clock_now();
  for (const DateCase &c : cases) {
    SCOPED_TRACE(std::string(c.format) + " <- '" + c.text + "'");
    QWZDate d = kSentinel;
    const sword rc = date_from(c.text, c.format, &d);
    QWZDate want = c.want;
    if (same(want, kSentinel)) {
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag_seen(), none());
      EXPECT_TRUE(same(d, kSentinel)) << show(d);
      continue;
    }
    if (want.year == 0 && want.month == 0) {  // date taken from the clock
      want.year = static_cast<sb2>(clock.year);
      want.month = static_cast<ub2>(clock.month);
      want.day = 1;
    }
    const bool valid = tm_valid(want);
    EXPECT_EQ(rc, valid ? QWZ_SUCCESS : QWZ_ERROR);
    EXPECT_EQ(diag_seen(), valid ? none() : date_format());
    EXPECT_TRUE(same(d, want)) << show(d) << " want " << show(want);
  }
}


// Texts the parser refuses: no diagnostic, the date untouched, -1.
TEST_F(DateFromTextConf, UnmatchedTextsFailWithoutDiagnostic) {
  ZoneGuard z(kUtc);
  const char *const cases[][2] = {
      {"YYYY-MM-DD", "2024-05-17x"},       // a letter before two blanks
      {"YYYY-MM-DD", "x2024-05-17"},
      {"YYYY-MM-DD", "2024-05-17 x"},      // one blank only
      {"YYYY-MM-DD", "2024-05-17 1 2 x"},  // three blanks
      {"YYYY-MM-DD", "2024-05-17 a  b"},   // the first letter after one blank
      {"YYYY-MM-DD", "2024-05"},           // the day is required
      {"YYYY-MM-DD", "2024"},
      {"YYYY-MM-DD", "-05-17"},            // year: '-' then a second separator
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 10:20:30.5"},  // fewer fraction digits
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 10:20:30"},    // no fraction at all
      {"SS.FF1", "10."},
      {"YYYY-MM-DD HH24:MI", "2024-05-17 10::20"},  // a separator where a field starts
      {"YYYY-MM-DD", "   "},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(std::string(c[0]) + " <- '" + c[1] + "'");
    QWZDate d = kSentinel;
    EXPECT_EQ(date_from(c[1], c[0], &d), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), none());
    EXPECT_TRUE(same(d, kSentinel)) << show(d);
  }
}

TEST_F(DateFromTextConf, LetterScanCountsBlanksBeforeEachLetter) {
  ZoneGuard z(kUtc);
  QWZDate d = kSentinel;
  EXPECT_EQ(date_from("2024-05-17  ab", "YYYY-MM-DD", &d), QWZ_SUCCESS);
  EXPECT_TRUE(same(d, make_date(2024, 5, 17)));
  d = kSentinel;
  EXPECT_EQ(date_from("2024-05-17  ab c", "YYYY-MM-DD", &d), QWZ_ERROR);
  EXPECT_TRUE(same(d, kSentinel));
  d = kSentinel;
  EXPECT_EQ(date_from("2024-05-17 10:00 TZ", "YYYY-MM-DD HH24:MI", &d), QWZ_SUCCESS);
  EXPECT_TRUE(same(d, make_date(2024, 5, 17, 10, 0, 0)));
}

// Values that parse but fail the date check: the date is written, then the
// check's diagnostic.
TEST_F(DateFromTextConf, InvalidValuesAreWrittenAndReported) {
  ZoneGuard z(kUtc);
  const DateCase cases[] = {
      {"YYYY-MM-DD", "2023-02-29", make_date(2023, 2, 29)},
      {"YYYY-MM-DD", "0000-01-01", make_date(0, 1, 1)},
      {"YYYY-MM-DD", "2024-13-01", make_date(2024, 13, 1)},
      {"YYYY-MM-DD", "2024-00-01", make_date(2024, 0, 1)},
      {"YYYY-MM-DD", "2024-05-00", make_date(2024, 5, 0)},
      {"YYYY-MM-DD HH24:MI:SS", "2024-05-17 24:60:60", make_date(2024, 5, 17, 24, 60, 60)},
      {"SYYYY-MM-DD", "-4713-01-01", make_date(-4713, 1, 1)},
      {"SYYYY-MM-DD", "99999-01-01", make_date(static_cast<int16_t>(99999), 1, 1)},
      // A '-' alone is a year; the sign of a month makes it 65535.
      {"YYYY-MM-DD", "--2024", make_date(0, 20, 24)},
      {"MM-DD YYYY", "-17 2024", make_date(2024, static_cast<ub2>(-1), 7)},
  };
  for (const DateCase &c : cases) {
    SCOPED_TRACE(std::string(c.format) + " <- '" + c.text + "'");
    QWZDate d = kSentinel;
    EXPECT_EQ(date_from(c.text, c.format, &d), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), date_format());
    EXPECT_TRUE(same(d, c.want)) << show(d);
  }
}

// Defaults: a missing year or month comes from the local clock (year as it
// is, month 1..12), the day is 1, the time 00:00:00.
TEST_F(DateFromTextConf, MissingYearOrMonthComesFromTheClock) {
  for (const char *zone : {kUtc, kCet, kEst}) {
    ZoneGuard z(zone);
    for (int attempt = 0; attempt < 3; ++attempt) {
      const Clock before = clock_now();
      QWZDate a = kSentinel, b = kSentinel, c = kSentinel, e = kSentinel;
      const sword ra = date_from("05-17", "MM-DD", &a);
      const sword rb = date_from("2024", "YYYY", &b);
      const sword rc = date_from("17", "DD", &c);
      const sword re = date_from("10:20:30", "HH24:MI:SS", &e);
      if (!(clock_now() == before)) continue;
      EXPECT_EQ(ra, QWZ_SUCCESS);
      EXPECT_TRUE(same(a, make_date(before.year, 5, 17))) << show(a);
      EXPECT_EQ(rb, QWZ_SUCCESS);
      EXPECT_TRUE(same(b, make_date(2024, before.month, 1))) << show(b);
      // Day 17 exists in every month.
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_TRUE(same(c, make_date(before.year, before.month, 17))) << show(c);
      EXPECT_EQ(re, QWZ_SUCCESS);
      EXPECT_TRUE(same(e, make_date(before.year, before.month, 1, 10, 20, 30))) << show(e);
      break;
    }
  }
}

// The checks in order: text, date, format (NULL), format length 0, text
// length 0.
TEST_F(DateFromTextConf, ChecksInOrder) {
  QWZDate d = kSentinel;
  const QWZtext *text = C(std::string("2024-05-17"));
  const std::string fmt = "YYYY-MM-DD";
  struct Case {
    const QWZtext *text;
    ub4 text_length;
    const QWZtext *format;
    ub1 format_length;
    QWZDate *date;
    Seen want;
  };
  static const char kText[] = "2024-05-17";
  text = reinterpret_cast<const QWZtext *>(kText);
  const Case cases[] = {
      {nullptr, 10, C(fmt), 10, &d, null_param(2)},
      {nullptr, 0, nullptr, 0, nullptr, null_param(2)},
      {text, 10, C(fmt), 10, nullptr, null_param(8)},
      {text, 0, nullptr, 0, nullptr, null_param(8)},
      {text, 10, nullptr, 10, &d, null_param(4)},
      {text, 0, nullptr, 0, &d, null_param(4)},
      {text, 10, C(fmt), 0, &d, format_string()},
      {text, 0, C(fmt), 0, &d, format_string()},
      {text, 0, C(fmt), 10, &d, date_format()},
  };
  for (const Case &c : cases) {
    d = kSentinel;
    EXPECT_EQ(QWZDateFromText(err_, c.text, c.text_length, c.format, c.format_length, nullptr, 0,
                              c.date),
              QWZ_ERROR);
    EXPECT_EQ(diag_seen(), c.want);
    EXPECT_TRUE(same(d, kSentinel));
  }
  // A previous diagnostic is cleared by a successful call.
  EXPECT_EQ(QWZDateFromText(err_, text, 10, C(fmt), 10, nullptr, 0, &d), QWZ_SUCCESS);
  expect_clear();
  // The language is never looked at.
  EXPECT_EQ(QWZDateFromText(err_, text, 10, C(fmt), 10, C(std::string("no such")), 99, &d),
            QWZ_SUCCESS);
  for (QWZError *bad : {static_cast<QWZError *>(nullptr), reinterpret_cast<QWZError *>(env_)})
    EXPECT_EQ(QWZDateFromText(bad, text, 10, C(fmt), 10, nullptr, 0, &d), QWZ_INVALID_HANDLE);
}

// Format faults are reported by the date setter as "format string is
// invalid", whichever rule failed.
TEST_F(DateFromTextConf, FormatFaults) {
  for (const char *fmt : {"DD-MON-YYYY", "YYYY-MM-DDT", "DD/MM/YYYY T", "FF3 FF5", "DD DD",
                          "YYYY-MM-DD 1", "HH24:MI:SS.FF", "Month", "month", "MONTH", "yy-mm-dd",
                          "YYYY-MM-DD HH24:MI:SS AM", "SSSSS", "DDD", "FF1FF2", "MM MM"}) {
    SCOPED_TRACE(fmt);
    QWZDate d = kSentinel;
    EXPECT_EQ(date_from("2024-05-17", fmt, &d), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), format_string());
    EXPECT_TRUE(same(d, kSentinel));
  }
}

// Formats that translate to nothing, or are too long, fail without a
// diagnostic.
TEST_F(DateFromTextConf, FormatLengthLimits) {
  ZoneGuard z(kUtc);
  const std::string f127 = "YYYY-MM-DD" + std::string(117, '-');
  const std::string f128 = "YYYY-MM-DD" + std::string(118, '-');
  QWZDate d = kSentinel;
  EXPECT_EQ(date_from("2024-05-17", f127, &d), QWZ_SUCCESS);
  EXPECT_TRUE(same(d, make_date(2024, 5, 17)));
  d = kSentinel;
  EXPECT_EQ(date_from("2024-05-17", f128, &d), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), none());
  EXPECT_TRUE(same(d, kSentinel));
  // Blanks count towards the limit before they are trimmed.
  d = kSentinel;
  EXPECT_EQ(date_from("2024-05-17", "YYYY-MM-DD" + std::string(118, ' '), &d), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), none());
  d = kSentinel;
  EXPECT_EQ(date_from("2024-05-17", "YYYY-MM-DD" + std::string(117, ' '), &d), QWZ_SUCCESS);
  // An all-blank format translates to nothing.
  d = kSentinel;
  EXPECT_EQ(date_from("2024-05-17", "    ", &d), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), none());
  EXPECT_TRUE(same(d, kSentinel));
  // 255 characters.
  const std::string f255 = "YYYY-MM-DD" + std::string(245, '-');
  d = kSentinel;
  EXPECT_EQ(date_from("2024-05-17", f255, &d), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), none());
}

// Lengths: the text and the format are read up to their given lengths or
// their NUL, whichever comes first.
TEST_F(DateFromTextConf, GivenLengths) {
  ZoneGuard z(kUtc);
  static const char kText[] = "2024-05-17 10:20:30";
  static const char kFmt[] = "YYYY-MM-DD HH24:MI:SS";
  const auto *text = reinterpret_cast<const QWZtext *>(kText);
  const auto *fmt = reinterpret_cast<const QWZtext *>(kFmt);
  struct Case {
    ub4 text_length;
    ub1 format_length;
    QWZDate want;
  };
  const Case cases[] = {
      {19, 21, make_date(2024, 5, 17, 10, 20, 30)},
      {200, 200, make_date(2024, 5, 17, 10, 20, 30)},
      {0xFFFFFFFFu, 255, make_date(2024, 5, 17, 10, 20, 30)},
      {10, 21, make_date(2024, 5, 17)},
      {13, 21, make_date(2024, 5, 17, 10, 0, 0)},
      {19, 10, make_date(2024, 5, 17)},
      {19, 16, make_date(2024, 5, 17, 10, 0, 0)},
      {19, 18, make_date(2024, 5, 17, 10, 20, 0)},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(std::to_string(c.text_length) + " " + std::to_string(c.format_length));
    QWZDate d = kSentinel;
    EXPECT_EQ(QWZDateFromText(err_, text, c.text_length, fmt, c.format_length, nullptr, 0, &d),
              QWZ_SUCCESS);
    EXPECT_TRUE(same(d, c.want)) << show(d);
  }
  // An embedded NUL ends the text.
  static const char kNul[] = "2024-05-17\0 10:20:30";
  QWZDate d = kSentinel;
  EXPECT_EQ(QWZDateFromText(err_, reinterpret_cast<const QWZtext *>(kNul), sizeof kNul - 1, fmt,
                            21, nullptr, 0, &d),
            QWZ_SUCCESS);
  EXPECT_TRUE(same(d, make_date(2024, 5, 17)));
}

// Texts and formats of many sizes, in buffers of exactly their characters
// and their NUL (they are read up to it).
TEST_F(DateFromTextConf, InputsOfManySizes) {
  ZoneGuard z(kUtc);
  for (std::size_t n : {1u, 10u, 64u, 65u, 127u, 128u, 255u, 256u, 4096u}) {
    std::vector<char> text(n + 1, '7');
    text[n] = '\0';
    const char head[] = "2024-05-17";
    std::memcpy(text.data(), head, std::min(n, sizeof head - 1));
    const std::size_t fmt_n = std::min<std::size_t>(n, 255);
    std::vector<char> fmt(fmt_n + 1, '-');
    fmt[fmt_n] = '\0';
    const char fhead[] = "YYYY-MM-DD";
    std::memcpy(fmt.data(), fhead, std::min(fmt_n, sizeof fhead - 1));
    QWZDate d = kSentinel;
    const sword rc =
        QWZDateFromText(err_, reinterpret_cast<const QWZtext *>(text.data()),
                        static_cast<ub4>(n), reinterpret_cast<const QWZtext *>(fmt.data()),
                        static_cast<ub1>(fmt_n), nullptr, 0, &d);
    if (n >= 10 && fmt_n <= 127) {
      EXPECT_EQ(rc, QWZ_SUCCESS) << n;
      EXPECT_TRUE(same(d, make_date(2024, 5, 17))) << n << " " << show(d);
    } else {
      EXPECT_EQ(rc, QWZ_ERROR) << n;
    }
  }
  // Every byte value as a text of one character and after a date.
  for (int b = 1; b < 256; ++b) {
    const char one[2] = {static_cast<char>(b), '\0'};
    QWZDate d = kSentinel;
    EXPECT_EQ(QWZDateFromText(err_, reinterpret_cast<const QWZtext *>(one), 1,
                              C(std::string("DD")), 2, nullptr, 0, &d),
              b >= '1' && b <= '9' ? QWZ_SUCCESS : QWZ_ERROR)
        << b;
    char text[12] = {};
    std::memcpy(text, "2024-05-17", 10);
    text[10] = static_cast<char>(b);
    d = kSentinel;
    const bool letter = (b >= 'A' && b <= 'Z') || (b >= 'a' && b <= 'z');
    EXPECT_EQ(QWZDateFromText(err_, reinterpret_cast<const QWZtext *>(text), 11,
                              C(std::string("YYYY-MM-DD")), 10, nullptr, 0, &d),
              letter ? QWZ_ERROR : QWZ_SUCCESS)
        << b;
  }
}

// ---- QWZDateTimeFromText ---------------------------------------------------

class DateTimeFromTextConf : public TextFixture {
 protected:
  sword from(QWZDateTime *d, const std::string &text, const std::string &fmt) {
    return datetime_from(text, fmt, d);
  }
};

Read R(int type, int y, int mo, int d, int h, int mi, int s, ub4 ns, int tzh = 0, int tzm = 0) {
  return expected_read(type,
                       {static_cast<int16_t>(y), static_cast<uint16_t>(mo),
                        static_cast<uint16_t>(d), static_cast<uint16_t>(h),
                        static_cast<uint16_t>(mi), static_cast<uint16_t>(s)},
                       ns, tzh, tzm);
}

TEST_F(DateTimeFromTextConf, ReadsTimestamps) {
  ZoneGuard z(kUtc);
  struct Case {
    int type;
    const char *format;
    const char *text;
    Read want;
  };
  const Case cases[] = {
      {68, "YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 10:20:30.500",
       R(68, 2024, 5, 17, 10, 20, 30, 500000000)},
      {68, "YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 10:20:30.123456",
       R(68, 2024, 5, 17, 10, 20, 30, 123000000)},
      {68, "SS.FF1", "30.5", R(68, 0, 0, 0, 0, 0, 30, 500000000)},
      {68, "SS.FF2", "30.05", R(68, 0, 0, 0, 0, 0, 30, 50000000)},
      {68, "SS.FF4", "30.0001", R(68, 0, 0, 0, 0, 0, 30, 100000)},
      {68, "SS.FF5", "30.12345", R(68, 0, 0, 0, 0, 0, 30, 123450000)},
      {68, "FF5", "00001", R(68, 0, 0, 0, 0, 0, 0, 10000)},
      {69, "YYYY-MM-DD HH24:MI:SS TZH:TZM", "2024-05-17 10:20:30 +05:30",
       R(69, 2024, 5, 17, 10, 20, 30, 0, 5, 30)},
      // The literal blank before the zone takes the '-': the zone reads +05:30.
      {69, "YYYY-MM-DD HH24:MI:SS TZH:TZM", "2024-05-17 10:20:30 -05:30",
       R(69, 2024, 5, 17, 10, 20, 30, 0, 5, 30)},
      // A '-' that is the text's first separator is the zone hour's sign;
      // the minute keeps its own sign.
      {69, "TZH:TZM", "-05:30", R(69, 0, 0, 1, 0, 0, 0, 0, -5, 30)},
      {69, "TZH:TZM YYYY-MM-DD", "-05:30 2024-05-17", R(69, 2024, 5, 17, 0, 0, 0, 0, -5, 30)},
      {69, "TZH", "-12", R(69, 0, 0, 1, 0, 0, 0, 0, -12, 0)},
      {69, "TZH:TZM", "+14:00", R(69, 0, 0, 1, 0, 0, 0, 0, 14, 0)},
      {69, "YYYY-MM-DD", "2024-05-17", R(69, 2024, 5, 17, 0, 0, 0, 0, 0, 0)},
      {68, "SYYYY-MM-DD HH:MI", "-0044-03-15 12:00", R(68, -44, 3, 15, 12, 0, 0, 0)},
  };
  const Clock clock = clock_now();
  for (const Case &c : cases) {
    SCOPED_TRACE(std::to_string(c.type) + " " + c.format + " <- '" + c.text + "'");
    QWZDateTime *d = new_datetime(static_cast<ub4>(c.type));
    EXPECT_EQ(from(d, c.text, c.format), QWZ_SUCCESS);
    expect_clear();
    Read want = c.want;
    if (want.date_rc == QWZ_ERROR || (want.year == 0 && want.month == 0)) {
      want.date_rc = QWZ_SUCCESS;
      want.year = static_cast<sb2>(clock.year);
      want.month = static_cast<ub1>(clock.month);
      if (want.day == 0) want.day = 1;
    }
    EXPECT_EQ(read(d), want);
  }
}

// A text that does not match still fills the descriptor with what was read
// (no defaults), and the check then decides.
TEST_F(DateTimeFromTextConf, PartialRecords) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = new_datetime(68);
  // Too few fraction digits: everything before the fraction stands, and it
  // is a valid timestamp.
  EXPECT_EQ(from(d, "2024-05-17 10:20:30.5", "YYYY-MM-DD HH24:MI:SS.FF3"), QWZ_SUCCESS);
  expect_clear();
  EXPECT_EQ(read(d), R(68, 2024, 5, 17, 10, 20, 30, 0));
  // A missing day: day 0 fails the check.
  EXPECT_EQ(from(d, "2024-05", "YYYY-MM-DD"), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), datetime_date_format());
  EXPECT_EQ(read(d), R(68, 2024, 5, 0, 0, 0, 0, 0));
  // The letter scan fails before anything is read: all zero.
  EXPECT_EQ(from(d, "2024-05-17x", "YYYY-MM-DD"), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), datetime_date_format());
  EXPECT_EQ(read(d), R(68, 0, 0, 0, 0, 0, 0, 0));
  // A zone keyword whose field fails leaves no zone behind.
  QWZDateTime *z69 = new_datetime(69);
  EXPECT_EQ(from(z69, "2024-05-17 10:20:30-05:30", "YYYY-MM-DD HH24:MI:SSTZH:TZM"), QWZ_SUCCESS);
  EXPECT_EQ(read(z69), R(69, 2024, 5, 17, 10, 20, 30, 0, 0, 0));
  // Untranslatable formats leave an all-zero value, which fails the check.
  for (const std::string &fmt : {std::string("   "), std::string(128, '-')}) {
    EXPECT_EQ(from(d, "2024-05-17", fmt), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), datetime_date_format());
    EXPECT_EQ(read(d), R(68, 0, 0, 0, 0, 0, 0, 0));
  }
  // A zone keyword read before the failure marks the zone as given.
  EXPECT_EQ(from(d, "+05:30 2024-05", "TZH:TZM YYYY-MM-DD"), QWZ_ERROR);
  expect_front(800153, kNotRecognized);
}

// Format faults: the date setter's "format string is invalid"; nothing written.
TEST_F(DateTimeFromTextConf, FormatFaultsUseTheDateSetter) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = datetime_of(68, 2000, 1, 2, 3, 4, 5, 6);
  for (const char *fmt : {"DD-MON-YYYY", "YYYY-MM-DDT", "FF3 FF5", "DD DD", "FF1.FF1", "D"}) {
    SCOPED_TRACE(fmt);
    EXPECT_EQ(from(d, "2024-05-17", fmt), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), format_string());
    EXPECT_EQ(read(d), R(68, 2000, 1, 2, 3, 4, 5, 6));
  }
}

// A zone in the format for a descriptor that keeps none: 800153, nothing
// written. Types 67 and 69 take it.
TEST_F(DateTimeFromTextConf, ZoneNeedsAZonedType) {
  ZoneGuard z(kUtc);
  for (ub4 type : {65u, 66u, 68u, 70u}) {
    SCOPED_TRACE(type);
    QWZDateTime *d = new_datetime(type);
    for (const char *fmt : {"YYYY-MM-DD HH24:MI TZH:TZM", "YYYY-MM-DD TZH", "YYYY-MM-DD TZM"}) {
      EXPECT_EQ(from(d, "2024-05-17 10:20 +01:00", fmt), QWZ_ERROR);
      expect_front(800153, kNotRecognized);
    }
    // Even an empty zone field marks the zone as given.
    EXPECT_EQ(from(d, "2024-05-17", "YYYY-MM-DD TZH"), QWZ_ERROR);
    expect_front(800153, kNotRecognized);
  }
  QWZDateTime *t = new_datetime(67);
  EXPECT_EQ(from(t, "10:20:30 +01:30", "HH24:MI:SS TZH:TZM"), QWZ_SUCCESS);
  Read r = read(t);
  EXPECT_EQ(r.hour, 10);
  EXPECT_EQ(r.minute, 20);
  EXPECT_EQ(r.second, 30);
  EXPECT_EQ(r.tz_hour, 1);
  EXPECT_EQ(r.tz_minute, 30);
}

// The zone text of the constructor takes the hour's sign for the minute;
// the text parser keeps the minute's own.
TEST_F(DateTimeFromTextConf, ZoneSignDiffersFromTheConstructor) {
  ZoneGuard z(kUtc);
  QWZDateTime *c = datetime_of(69, 2024, 5, 17, 10, 20, 30, 0, "-05:30");
  EXPECT_EQ(read(c).tz_hour, -5);
  EXPECT_EQ(read(c).tz_minute, -30);
  QWZDateTime *t = new_datetime(69);
  EXPECT_EQ(from(t, "-05:30 2024-05-17 10:20:30", "TZH:TZM YYYY-MM-DD HH24:MI:SS"), QWZ_SUCCESS);
  EXPECT_EQ(read(t).tz_hour, -5);
  EXPECT_EQ(read(t).tz_minute, 30);
}

// Descriptors of the other types take every field the text gives; the
// check looks only at the type's own fields.
TEST_F(DateTimeFromTextConf, OtherTypes) {
  ZoneGuard z(kUtc);
  const Clock clock = clock_now();
  // A time: the date comes from the clock, unseen by the getters but
  // written, as the text conversion shows.
  QWZDateTime *t = new_datetime(66);
  EXPECT_EQ(from(t, "10:20:30", "HH24:MI:SS"), QWZ_SUCCESS);
  std::string out;
  EXPECT_EQ(datetime_to(t, "YYYY-MM-DD HH24:MI:SS", out), QWZ_SUCCESS);
  char want[64];
  std::snprintf(want, sizeof want, "%04d-%02d-01 10:20:30", clock.year, clock.month);
  EXPECT_EQ(out, want);
  // A date: its time fields are not checked.
  QWZDateTime *d = new_datetime(65);
  EXPECT_EQ(from(d, "2024-05-17 99:99:99", "YYYY-MM-DD HH24:MI:SS"), QWZ_SUCCESS);
  EXPECT_EQ(datetime_to(d, "HH24:MI:SS", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "99:99:99");
  // A time: its date is not checked.
  EXPECT_EQ(from(t, "0000-13-45 10:20:30", "YYYY-MM-DD HH24:MI:SS"), QWZ_SUCCESS);
  EXPECT_EQ(datetime_to(t, "YYYY-MM-DD", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "0000-13-45");
  // A local-time timestamp is not checked at all.
  QWZDateTime *l = new_datetime(70);
  EXPECT_EQ(from(l, "0000-99-99 99:99:99", "YYYY-MM-DD HH24:MI:SS"), QWZ_SUCCESS);
  EXPECT_EQ(datetime_to(l, "YYYY-MM-DD HH24:MI:SS", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "0000-99-99 99:99:99");
  // A zoned time with bad zone values fails.
  QWZDateTime *tz = new_datetime(67);
  EXPECT_EQ(from(tz, "10:20:30 +15:00", "HH24:MI:SS TZH:TZM"), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), datetime_date_format());
}

TEST_F(DateTimeFromTextConf, ChecksInOrder) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = datetime_of(68, 2000, 1, 2, 3, 4, 5, 6);
  QWZText *text = W(std::string("2024-05-17"));
  static char kText[] = "2024-05-17";
  static char kFmt[] = "YYYY-MM-DD";
  text = reinterpret_cast<QWZText *>(kText);
  QWZText *fmt = reinterpret_cast<QWZText *>(kFmt);
  // The context handle first.
  for (auto &[name, h] : bad_contexts()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(QWZDateTimeFromText(h, err_, nullptr, SIZE_MAX, nullptr, 0, nullptr, 0, nullptr),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  // Then the descriptor, reported as parameter 3 being NULL.
  for (auto &[name, bad] : bad_datetimes()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(QWZDateTimeFromText(env_, err_, nullptr, SIZE_MAX, nullptr, 0, nullptr, 0, bad),
              QWZ_INVALID_HANDLE);
    expect_null_param(3);
  }
  // Text and format both report parameter 4.
  EXPECT_EQ(QWZDateTimeFromText(session_, err_, nullptr, SIZE_MAX, nullptr, 0, nullptr, 0, d),
            QWZ_ERROR);
  expect_null_param(4);
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, SIZE_MAX, nullptr, 10, nullptr, 0, d), QWZ_ERROR);
  expect_null_param(4);
  // Then the largest length.
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, SIZE_MAX, fmt, 10, nullptr, 0, d), QWZ_ERROR);
  expect_front(800155, kTooLong);
  EXPECT_EQ(read(d), R(68, 2000, 1, 2, 3, 4, 5, 6));
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, SIZE_MAX - 1, fmt, 10, nullptr, 0, d),
            QWZ_SUCCESS);
  EXPECT_EQ(read(d), R(68, 2024, 5, 17, 0, 0, 0, 0));
  // No length checks: zero lengths parse nothing, and the empty value fails
  // the check.
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, 0, fmt, 10, nullptr, 0, d), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), datetime_date_format());
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, 10, fmt, 0, nullptr, 0, d), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), datetime_date_format());
  // Invalid error handles: their validator's value, nothing written.
  QWZDateTime *e = datetime_of(68, 2000, 1, 2, 3, 4, 5, 6);
  for (auto &[name, bad] : bad_error_handles()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(QWZDateTimeFromText(env_, bad, text, 10, fmt, 10, nullptr, 0, e),
              QWZ_INVALID_HANDLE);
  }
  EXPECT_EQ(read(e), R(68, 2000, 1, 2, 3, 4, 5, 6));
}

TEST_F(DateTimeFromTextConf, GivenLengthsAndBadInput) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = new_datetime(68);
  static char kText[] = "2024-05-17 10:20:30.123";
  static char kFmt[] = "YYYY-MM-DD HH24:MI:SS.FF3";
  auto *text = reinterpret_cast<QWZText *>(kText);
  auto *fmt = reinterpret_cast<QWZText *>(kFmt);
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, 19, fmt, 25, nullptr, 0, d), QWZ_SUCCESS);
  EXPECT_EQ(read(d), R(68, 2024, 5, 17, 10, 20, 30, 0));
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, 1000, fmt, 21, nullptr, 0, d), QWZ_SUCCESS);
  EXPECT_EQ(read(d), R(68, 2024, 5, 17, 10, 20, 30, 0));
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, 1000, fmt, 19, nullptr, 0, d), QWZ_SUCCESS);
  EXPECT_EQ(read(d), R(68, 2024, 5, 17, 10, 20, 0, 0));
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, 1000, fmt, 255, nullptr, 0, d), QWZ_SUCCESS);
  EXPECT_EQ(read(d), R(68, 2024, 5, 17, 10, 20, 30, 123000000));
  // Buffers of many sizes, each exactly its characters and its NUL, never
  // crash.
  for (std::size_t n : {1u, 63u, 64u, 65u, 127u, 128u, 255u, 256u, 4096u}) {
    std::vector<char> t(n + 1, '1');
    t[n] = '\0';
    const std::size_t fn = std::min<std::size_t>(n, 255);
    std::vector<char> f(fn + 1, 'Y');
    f[fn] = '\0';
    QWZDateTimeFromText(env_, err_, reinterpret_cast<QWZText *>(t.data()), n,
                        reinterpret_cast<QWZText *>(f.data()), static_cast<ub1>(fn), nullptr,
                        0, d);
    std::vector<char> p(n + 1, '.');
    p[n] = '\0';
    QWZDateTimeFromText(env_, err_, reinterpret_cast<QWZText *>(p.data()), n,
                        reinterpret_cast<QWZText *>(kFmt), 25, nullptr, 0, d);
  }
}

}  // namespace
