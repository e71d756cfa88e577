// Text to date and datetime: the parser and its field record, the shared
// entry, the converters and QWZDateFromText / QWZDateTimeFromText.
#include "text_test_util.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

using namespace qwz_test;
using namespace text_test;

namespace {

// ---- the field record --------------------------------------------------------

struct Fields {
  std::string year, month, day, hour, minute, second, fraction, tz_hour, tz_minute;
  int tz_given;
  bool operator==(const Fields &o) const {
    return year == o.year && month == o.month && day == o.day && hour == o.hour &&
           minute == o.minute && second == o.second && fraction == o.fraction &&
           tz_hour == o.tz_hour && tz_minute == o.tz_minute && tz_given == o.tz_given;
  }
};
std::ostream &operator<<(std::ostream &os, const Fields &f) {
  return os << "[" << f.year << "|" << f.month << "|" << f.day << "|" << f.hour << "|" << f.minute
            << "|" << f.second << "|" << f.fraction << "|" << f.tz_hour << "|" << f.tz_minute
            << "|" << f.tz_given << "]";
}
template <std::size_t N>
std::string slot(const char (&s)[N]) {
  return std::string(s, strnlen(s, N));
}
Fields fields_of(const datetime_fields &f) {
  return {slot(f.year),   slot(f.month),    slot(f.day),     slot(f.hour),      slot(f.minute),
          slot(f.second), slot(f.fraction), slot(f.tz_hour), slot(f.tz_minute), f.tz_given};
}

TEST(DatetimeFields, SlotsInOrderThirtySixBytes) {
  EXPECT_EQ(sizeof(datetime_fields), 36u);
  EXPECT_EQ(offsetof(datetime_fields, year), 0u);
  EXPECT_EQ(offsetof(datetime_fields, month), 6u);
  EXPECT_EQ(offsetof(datetime_fields, day), 9u);
  EXPECT_EQ(offsetof(datetime_fields, hour), 12u);
  EXPECT_EQ(offsetof(datetime_fields, minute), 15u);
  EXPECT_EQ(offsetof(datetime_fields, second), 18u);
  EXPECT_EQ(offsetof(datetime_fields, fraction), 21u);
  EXPECT_EQ(offsetof(datetime_fields, tz_hour), 28u);
  EXPECT_EQ(offsetof(datetime_fields, tz_minute), 32u);
  EXPECT_EQ(offsetof(datetime_fields, tz_given), 35u);
}

struct ParseCase {
  const char *format;
  const char *text;
  int result;
  Fields fields;
};

class QwzCharToDatetime : public ::testing::Test {
 protected:
  ZoneGuard zone_{kUtc};
};

TEST_F(QwzCharToDatetime, FieldRecordAfterParsing) {
  const ParseCase cases[] = {
      {"YYYY-MM-DD", "2024-05-17", 1,
       {"2024", "05", "17", "00", "00", "00", "000000", "+00", "00", 0}},
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 13:45:10.123", 1,
       {"2024", "05", "17", "13", "45", "10", "1230", "+00", "00", 0}},
      {"SYYYY-MM-DD", "-0044-03-15", 1,
       {"-0044", "03", "15", "00", "00", "00", "000000", "+00", "00", 0}},
      {"YYYY-MM-DD TZH:TZM", "2024-05-17 +05:30", 1,
       {"2024", "05", "17", "00", "00", "00", "000000", "05", "30", 1}},
      {"TZH:TZM", "-05:30", 1, {"", "", "01", "00", "00", "00", "000000", "-05", "30", 1}},
      {"FF1", "9", 1, {"", "", "01", "00", "00", "00", "90", "+00", "00", 0}},
      {"FF5", "12345", 1, {"", "", "01", "00", "00", "00", "123450", "+00", "00", 0}},
      // The text did not match: the record as the parser left it.
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 13:45:10.5", 0,
       {"2024", "05", "17", "13", "45", "10", "", "", "", 0}},
      {"YYYY-MM-DD", "2024-05", 0, {"2024", "05", "", "", "", "", "", "", "", 0}},
      {"YYYY-MM-DD", "2024-05-17x", 0, {"", "", "", "", "", "", "", "", "", 0}},
  };
  for (const ParseCase &c : cases) {
    datetime_fields f;
    std::memset(&f, 0x55, sizeof f);
    sb4 code = 0;
    const int r = qwz_char_to_datetime(U(c.text), std::strlen(c.text), U(c.format),
                                       std::strlen(c.format), &f, 0, &code);
    EXPECT_EQ(r, c.result) << c.format << " / " << c.text;
    EXPECT_EQ(code, 0);
    Fields expected = c.fields;
    if (std::string(c.format) == "TZH:TZM" || c.format[0] == 'F') {
      // A missing year or month comes from the clock.
      const YearMonth now = local_year_month();
      expected.year = std::to_string(now.year);
      expected.month = std::to_string(now.month);
    }
    EXPECT_EQ(fields_of(f), expected) << c.format << " / " << c.text;
  }
}

TEST_F(QwzCharToDatetime, ErrorCodeFiveOnlyWhenTheFormatIsAtFault) {
  struct Case {
    const char *format;
    sb4 code;
  } cases[] = {
      {"DD-MON-YYYY", 5}, {"YYYY-MM-DDT", 5}, {"DD DD", 5}, {"FF3 FF5", 5}, {"YYYY-MM-DD X", 5},
      // Too long, or nothing to translate: the code is left alone.
      {"", 77}, {"    ", 77},
  };
  for (const Case &c : cases) {
    datetime_fields f;
    std::memset(&f, 0x55, sizeof f);
    sb4 code = 77;
    EXPECT_EQ(qwz_char_to_datetime(U("2024-05-17"), 10, U(c.format), std::strlen(c.format), &f, 0,
                                   &code),
              0)
        << c.format;
    EXPECT_EQ(code, c.code) << c.format;
    // Parsing never ran: the caller's record is untouched.
    EXPECT_EQ(reinterpret_cast<const unsigned char *>(&f)[0], 0x55);
  }
  const std::string too_long = "YYYY-MM-DD" + std::string(118, ' ');
  sb4 code = 77;
  datetime_fields f{};
  EXPECT_EQ(qwz_char_to_datetime(U("2024-05-17"), 10, U(too_long.c_str()), too_long.size(), &f, 0,
                                 &code),
            0);
  EXPECT_EQ(code, 77);
  // 127 characters, trailing blanks included, are accepted.
  const std::string longest = "YYYY-MM-DD" + std::string(117, ' ');
  EXPECT_EQ(qwz_char_to_datetime(U("2024-05-17"), 10, U(longest.c_str()), longest.size(), &f, 0,
                                 &code),
            1);
}

TEST_F(QwzCharToDatetime, LengthsCutTheTextAndTheFormat) {
  datetime_fields f{};
  sb4 code = 0;
  // The format is cut at its length: "YYYY-MM" of "YYYY-MM-DD".
  ASSERT_EQ(qwz_char_to_datetime(U("2024-05-17"), 10, U("YYYY-MM-DD"), 7, &f, 0, &code), 1);
  EXPECT_EQ(slot(f.day), "01");
  // The text is cut at its length: "2024-05-1".
  ASSERT_EQ(qwz_char_to_datetime(U("2024-05-17"), 9, U("YYYY-MM-DD"), 10, &f, 0, &code), 1);
  EXPECT_EQ(slot(f.day), "1");
}

TEST(CharToDatetime, LetterScanSeesEveryByteInEveryPosition) {
  ZoneGuard z(kUtc);
  // "12" then 22 fillers with one byte replaced: only a letter fails it
  // (no blanks precede it).
  for (int filler : {int{'/'}, 0x80, 0xFF, int{'@'}, int{'['}, int{'`'}, int{'{'}}) {
    for (std::size_t pos = 2; pos < 24; ++pos) {
      for (int v = 0; v < 256; ++v) {
        std::string text = "12" + std::string(22, static_cast<char>(filler));
        text[pos] = static_cast<char>(v);
        datetime_fields f{};
        sb4 code = 0;
        const bool letter = (v >= 'A' && v <= 'Z') || (v >= 'a' && v <= 'z');
        ASSERT_EQ(qwz_char_to_datetime(U(text.c_str()), text.size(), U("HH24"), 4, &f, 0, &code),
                  letter ? 0 : 1)
            << filler << " " << pos << " " << v;
      }
    }
  }
}

// Texts of one shape are read by replaying the first one's parse; whatever
// the path, the record must be the parser's own.
TEST(QwzCharToDatetimeReplay, SameRecordAsTheParserForEveryText) {
  ZoneGuard z(kUtc);
  std::mt19937 rng(77);
  const char *formats[] = {"YYYY-MM-DD HH24:MI:SS", "SYYYY/MM/DD HH12.MI.SS,FF5 TZH:TZM",
                           "DD.MM.YYYY",           "YYYYMMDDHH24MISS",
                           "FF3",                  "TZH:TZM",
                           "HH HH24 MI",           "YYYY-MM-DD HH24:MI:SS.FF3"};
  const char *shapes[] = {"2024-05-17 10:20:30", "-0044/03/15 23.59.59,12345 +05:30",
                          "17.05.2024",          "20240517102030",
                          "123",                 "-05:30",
                          "10 11 12",            "2024-05-17 10:20:30.123",
                          " 1-2-3 ",             "2024/5/7 1:2:3",
                          "12 34 ab",            "1-2",
                          "--12--",              "12345678901234567890",
                          "  x",                  ""};
  const char alphabet[] = "0123456789-- //.:+xZ\x80";
  auto same_classes = [&](std::string t) {
    for (char &c : t)
      if (c >= '0' && c <= '9') c = static_cast<char>('0' + rng() % 10);
    return t;
  };
  int replays = 0;
  for (const char *format : formats) {
    qwz_token *list = qwz_translate_format(format);
    ASSERT_NE(list, nullptr);
    for (int i = 0; i < 400; ++i) {
      std::string text;
      if (i % 3 == 2) {
        text.resize(rng() % 40);
        for (char &c : text) c = alphabet[rng() % (sizeof alphabet - 1)];
      } else {
        text = same_classes(shapes[rng() % (sizeof shapes / sizeof shapes[0])]);
      }
      datetime_fields got, want;
      std::memset(&got, 0x11, sizeof got);
      std::memset(&want, 0, sizeof want);
      sb4 code = 0;
      const int r = qwz_char_to_datetime(U(text.c_str()), text.size(), U(format),
                                         std::strlen(format), &got, 0, &code);
      // The parser alone, on the same trimmed text.
      std::size_t b = 0, e = text.size();
      while (b < e && text[b] == ' ') ++b;
      while (e > b && text[e - 1] == ' ') --e;
      const std::string trimmed = text.substr(b, e - b);
      const int expected = char_to_datetime(trimmed.c_str(), list, &want);
      ASSERT_EQ(r, expected) << format << " / '" << text << "'";
      ASSERT_EQ(std::memcmp(&got, &want, sizeof got), 0)
          << format << " / '" << text << "' " << fields_of(got) << " vs " << fields_of(want);
      replays += r;
    }
    qwz_free_token_list(list);
  }
  EXPECT_GT(replays, 1000);
}

TEST(CharToDatetime, ParsesAGivenTokenList) {
  ZoneGuard z(kUtc);
  qwz_token *tokens = qwz_translate_format("DD.MM.YYYY HH12:MI");
  ASSERT_NE(tokens, nullptr);
  datetime_fields f{};
  EXPECT_EQ(char_to_datetime("17.05.2024 23:59", tokens, &f), 1);
  EXPECT_EQ(fields_of(f), (Fields{"2024", "05", "17", "23", "59", "00", "000000", "+00", "00", 0}));
  datetime_fields g{};
  EXPECT_EQ(char_to_datetime("17.05.2024 x", tokens, &g), 0);
  qwz_free_token_list(tokens);
}

// ---- QWZDateFromText ---------------------------------------------------------

class QWZDateFromTextTest : public HandleFixture {
 protected:
  sword parse(const char *text, const char *format, QWZDate *d) {
    return QWZDateFromText(err_, U(text), static_cast<ub4>(std::strlen(text)), U(format),
                           static_cast<ub1>(std::strlen(format)), U("AMERICAN"), 8, d);
  }
  ZoneGuard zone_{kUtc};
};

struct DateCase {
  const char *format;
  const char *text;
  QWZDate expected;
};

TEST_F(QWZDateFromTextTest, Examples) {
  const DateCase cases[] = {
      {"YYYY-MM-DD", "2024-05-17", {2024, 5, 17, 0, 0, 0}},
      {"DD.MM.YYYY HH24:MI:SS", "17.05.2024 13:45:10", {2024, 5, 17, 13, 45, 10}},
      {"DD.MM.YYYY HH:MI:SS", "17.05.2024 13:45:10", {2024, 5, 17, 13, 45, 10}},
      {"DD.MM.YYYY HH12:MI:SS", "17.05.2024 13:45:10", {2024, 5, 17, 13, 45, 10}},
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 13:45:10.500", {2024, 5, 17, 13, 45, 10}},
      {"YYYY-MM-DD", "2024-05-17 10:00", {2024, 5, 17, 0, 0, 0}},
      {"YYYY-MM-DD", "2024-05-17 10:00 x", {2024, 5, 17, 0, 0, 0}},
      {"SYYYY-MM-DD", "-0044-03-15", {-44, 3, 15, 0, 0, 0}},
      {"YYYY-MM-DD", "2024/05/17", {2024, 5, 17, 0, 0, 0}},
      {"YYYYMMDD", "20240517", {2024, 5, 17, 0, 0, 0}},
      {"yyyy-mm-dd hh24:mi:ss", "2024-05-17 01:02:03", {2024, 5, 17, 1, 2, 3}},
      {"  YYYY-MM-DD  ", "   2024-05-17   ", {2024, 5, 17, 0, 0, 0}},
      {"YYYY-MM-DD", "2024-5-7", {2024, 5, 7, 0, 0, 0}},
      {"YYYY MM DD", "2024 05 17", {2024, 5, 17, 0, 0, 0}},
      {"YYYY-MM-DD HH HH24", "2024-05-17 10 11", {2024, 5, 17, 11, 0, 0}},
      {"YYYY-MM-DD HH24 HH", "2024-05-17 10 11", {2024, 5, 17, 11, 0, 0}},
      {"YYYY-MM-DD HH24:MI:SS", "2024-05-17 23:59:59", {2024, 5, 17, 23, 59, 59}},
      {"YYYY-MM-DD", "9999-12-31", {9999, 12, 31, 0, 0, 0}},
      {"SYYYY-MM-DD", "-4712-01-01", {-4712, 1, 1, 0, 0, 0}},
      {"YYYY-MM-DD", "2024-02-29", {2024, 2, 29, 0, 0, 0}},
      // Digits beyond a field's width are left for the next token.
      {"YYYYMMDDHH24MISS", "20240517134510", {2024, 5, 17, 13, 45, 10}},
  };
  for (const DateCase &c : cases) {
    QWZDate d{1, 1, 1, 1, 1, 1};
    EXPECT_EQ(parse(c.text, c.format, &d), 0) << c.format << " / " << c.text;
    EXPECT_EQ(d, c.expected) << c.format << " / " << c.text;
    expect_clear();
  }
}

struct FailureCase {
  const char *format;
  const char *text;
  sb4 number;             // 0: no diagnostic
  const char *message;
};

TEST_F(QWZDateFromTextTest, ConversionFailures) {
  const FailureCase cases[] = {
      // The format is at fault.
      {"DD-MON-YYYY", "17-MAY-2024", 11104, kFormatString},
      {"YYYY-MM-DDT", "2024-05-17T", 11104, kFormatString},
      {"YYYY-MM-DD 1", "2024-05-17 1", 11104, kFormatString},
      {"DD DD", "17 17", 11104, kFormatString},
      {"FF3 FF5", "123 12345", 11104, kFormatString},
      {"DY YYYY", "x 2024", 11104, kFormatString},
      // Nothing to translate, or a text that does not match: no diagnostic.
      {"   ", "2024-05-17", 0, ""},
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 13:45:10.5", 0, ""},
      {"YYYY-MM-DD", "2024-05", 0, ""},
      {"YYYY-MM-DD", "2024-05-17x", 0, ""},
      {"YYYY-MM-DD", "x2024-05-17", 0, ""},
      {"YYYY-MM-DD", "2024-05-17 x", 0, ""},
      {"YYYY-MM-DD", "2024-05-17 10:00 x y", 0, ""},
      {"YYYY-MM-DD", "    ", 0, ""},
      // Parsed, then refused by the validity check.
      {"YYYY-MM-DD", "2024-02-30", 11104, kDateFormat},
      {"YYYY-MM-DD", "2024-13-01", 11104, kDateFormat},
      {"YYYY-MM-DD", "0000-01-01", 11104, kDateFormat},
      {"SYYYY-MM-DD", "-4713-01-01", 11104, kDateFormat},
      {"YYYY-MM-DD HH24:MI:SS", "2024-05-17 24:00:00", 11104, kDateFormat},
      {"YYYY-MM-DD HH24:MI:SS", "2024-05-17 23:60:00", 11104, kDateFormat},
      {"YYYY-MM-DD HH24:MI:SS", "2024-05-17 23:59:60", 11104, kDateFormat},
      // The day takes the first separator and runs on: day 12, month 20, year 24.
      {"DD/MM/YYYY", "1/2/2024", 11104, kDateFormat},
      // The month takes the second '-' as its sign: month "-0", day 5.
      {"YYYY-MM-DD", "2024--05-17", 11104, kDateFormat},
  };
  for (const FailureCase &c : cases) {
    QWZDate d{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(parse(c.text, c.format, &d), -1) << c.format << " / " << c.text;
    if (c.number == 0) {
      expect_clear();
      EXPECT_EQ(d, (QWZDate{1, 2, 3, 4, 5, 6}));
    } else {
      expect_diag(c.number, "22007", c.message);
    }
  }
}

TEST_F(QWZDateFromTextTest, ChecksInOrder) {
  QWZDate d{1, 2, 3, 4, 5, 6};
  const QWZText *text = U("2024-05-17");
  const QWZText *fmt = U("YYYY-MM-DD");
  struct Case {
    const QWZText *text;
    ub4 text_length;
    const QWZText *fmt;
    ub1 fmt_length;
    QWZDate *date;
    sb4 number;
    std::string state, message;
  } cases[] = {
      {nullptr, 10, fmt, 10, &d, 21560, "21560", null_param(2)},
      {nullptr, 0, nullptr, 0, nullptr, 21560, "21560", null_param(2)},
      {text, 10, fmt, 10, nullptr, 21560, "21560", null_param(8)},
      {text, 0, nullptr, 0, nullptr, 21560, "21560", null_param(8)},
      {text, 10, nullptr, 10, &d, 21560, "21560", null_param(4)},
      {text, 0, nullptr, 0, &d, 21560, "21560", null_param(4)},
      {text, 10, fmt, 0, &d, 11104, "22007", kFormatString},
      {text, 0, fmt, 0, &d, 11104, "22007", kFormatString},
      {text, 0, fmt, 10, &d, 11104, "22007", kDateFormat},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(QWZDateFromText(err_, c.text, c.text_length, c.fmt, c.fmt_length, nullptr, 0, c.date),
              -1);
    expect_diag(c.number, c.state, c.message);
  }
  EXPECT_EQ(d, (QWZDate{1, 2, 3, 4, 5, 6}));
  // An invalid error handle: the validator's value, nothing written.
  EXPECT_EQ(QWZDateFromText(nullptr, text, 10, fmt, 10, nullptr, 0, &d), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDateFromText(reinterpret_cast<QWZError *>(session_), text, 10, fmt, 10, nullptr, 0,
                            &d),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(d, (QWZDate{1, 2, 3, 4, 5, 6}));
}

TEST_F(QWZDateFromTextTest, LengthsLargerThanTheTextsAreLowered) {
  QWZDate d{};
  ASSERT_EQ(QWZDateFromText(err_, U("2024-05-17"), 4000, U("YYYY-MM-DD"), 200, nullptr, 0, &d), 0);
  EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0}));
  // Shorter lengths cut: the format "YYYY-MM" and the text "2024-05-1".
  ASSERT_EQ(QWZDateFromText(err_, U("2024-05-17"), 9, U("YYYY-MM-DD"), 10, nullptr, 0, &d), 0);
  EXPECT_EQ(d, (QWZDate{2024, 5, 1, 0, 0, 0}));
  ASSERT_EQ(QWZDateFromText(err_, U("2024-05-17"), 10, U("YYYY-MM-DD"), 7, nullptr, 0, &d), 0);
  EXPECT_EQ(d, (QWZDate{2024, 5, 1, 0, 0, 0}));
}

TEST_F(QWZDateFromTextTest, MissingYearOrMonthComesFromTheLocalClock) {
  for (const char *zone : {kUtc, kCet, kEst}) {
    ZoneGuard z(zone);
    struct Case {
      const char *format, *text;
      int day, hour, minute;
      bool year_given;
      int year, month;
    } cases[] = {
        {"MM-DD", "05-17", 17, 0, 0, false, 0, 5},
        {"YYYY", "2024", 1, 0, 0, true, 2024, 0},
        {"DD", "09", 9, 0, 0, false, 0, 0},
        {"HH24:MI", "10:20", 1, 10, 20, false, 0, 0},
        {"MM", "12", 1, 0, 0, false, 0, 12},
    };
    for (const Case &c : cases) {
      QWZDate d{};
      YearMonth before, after;
      do {
        before = local_year_month();
        ASSERT_EQ(parse(c.text, c.format, &d), 0) << c.format;
        after = local_year_month();
      } while (!(before == after));
      EXPECT_EQ(d.year, c.year_given ? c.year : before.year) << c.format;
      EXPECT_EQ(d.month, c.month ? c.month : before.month) << c.format;
      EXPECT_EQ(d.day, c.day);
      EXPECT_EQ(d.hour, c.hour);
      EXPECT_EQ(d.minute, c.minute);
      EXPECT_EQ(d.second, 0);
    }
  }
}

// Every usable keyword alone, after a prefix and before a suffix.
struct KeywordCase {
  const char *keyword;
  const char *value;
  void (*apply)(QWZDate &);
};

TEST_F(QWZDateFromTextTest, EveryUsableKeyword) {
  const KeywordCase cases[] = {
      {"DD", "17", [](QWZDate &d) { d.day = 17; }},
      {"FF1", "1", [](QWZDate &) {}},
      {"FF2", "12", [](QWZDate &) {}},
      {"FF3", "123", [](QWZDate &) {}},
      {"FF4", "1234", [](QWZDate &) {}},
      {"FF5", "12345", [](QWZDate &) {}},
      {"HH", "13", [](QWZDate &d) { d.hour = 13; }},
      {"HH12", "14", [](QWZDate &d) { d.hour = 14; }},
      {"HH24", "23", [](QWZDate &d) { d.hour = 23; }},
      {"MI", "45", [](QWZDate &d) { d.minute = 45; }},
      {"MM", "11", [](QWZDate &d) { d.month = 11; }},
      {"SS", "59", [](QWZDate &d) { d.second = 59; }},
      {"TZH", "+05", [](QWZDate &) {}},
      {"TZM", "30", [](QWZDate &) {}},
      {"YYYY", "1999", [](QWZDate &d) { d.year = 1999; }},
      {"SYYYY", "-0500", [](QWZDate &d) { d.year = -500; }},
  };
  for (const KeywordCase &c : cases) {
    for (int shape = 0; shape < 3; ++shape) {
      const std::string kw = c.keyword, v = c.value;
      const std::string format = shape == 0 ? kw : shape == 1 ? "/" + kw : kw + "/";
      const std::string text = shape == 0 ? v : shape == 1 ? "/" + v : v + "/";
      QWZDate d{};
      YearMonth now;
      do {
        now = local_year_month();
        ASSERT_EQ(parse(text.c_str(), format.c_str(), &d), 0) << format << " / " << text;
      } while (!(now == local_year_month()));
      QWZDate expected{static_cast<sb2>(now.year), static_cast<ub2>(now.month), 1, 0, 0, 0};
      c.apply(expected);
      EXPECT_EQ(d, expected) << format << " / " << text;
    }
  }
}

TEST_F(QWZDateFromTextTest, EveryRejectedKeyword) {
  for (const char *kw : kRejected) {
    for (const std::string &format : {std::string(kw), "YYYY-MM-DD " + std::string(kw),
                                      std::string(kw) + " YYYY-MM-DD"}) {
      QWZDate d{};
      EXPECT_EQ(parse("2024-05-17", format.c_str(), &d), -1) << format;
      expect_diag(11104, "22007", kFormatString);
    }
  }
}

TEST_F(QWZDateFromTextTest, FormatLengthLimit) {
  QWZDate d{};
  const std::string f127 = "YYYY-MM-DD" + std::string(117, '/');
  const std::string f128 = f127 + "/";
  EXPECT_EQ(parse("2024-05-17", f127.c_str(), &d), 0);
  EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0}));
  QWZDate e{7, 7, 7, 7, 7, 7};
  EXPECT_EQ(parse("2024-05-17", f128.c_str(), &e), -1);
  expect_clear();
  EXPECT_EQ(e, (QWZDate{7, 7, 7, 7, 7, 7}));
}

// ---- QWZDateTimeFromText ----------------------------------------------------

class QWZDateTimeFromTextTest : public HandleFixture {
 protected:
  sword parse(QWZDateTime *dt, const char *text, const char *format) {
    return QWZDateTimeFromText(env_, err_, M(text), std::strlen(text), M(format),
                               static_cast<ub1>(std::strlen(format)), nullptr, 0, dt);
  }
  ZoneGuard zone_{kUtc};
};

struct DateTimeValue {
  sb2 year;
  ub2 month, day, hour, minute, second;
  ub4 fraction;
  sb1 tz_hour, tz_minute;
};
DateTimeValue value_of(const QWZDateTime *d) {
  return {d->year, d->month, d->day, d->hour, d->minute, d->second, d->fraction, d->tz_hour,
          d->tz_minute};
}
bool operator==(const DateTimeValue &a, const DateTimeValue &b) {
  return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
         a.minute == b.minute && a.second == b.second && a.fraction == b.fraction &&
         a.tz_hour == b.tz_hour && a.tz_minute == b.tz_minute;
}
std::ostream &operator<<(std::ostream &os, const DateTimeValue &v) {
  return os << v.year << "-" << v.month << "-" << v.day << " " << v.hour << ":" << v.minute << ":"
            << v.second << "." << v.fraction << " " << int(v.tz_hour) << ":" << int(v.tz_minute);
}

TEST_F(QWZDateTimeFromTextTest, FractionRules) {
  struct Case {
    const char *format, *text;
    ub4 fraction;
  } cases[] = {
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 13:45:10.500", 500000000},
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 13:45:10.123", 123000000},
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 13:45:10.1234", 123000000},
      {"YYYY-MM-DD HH24:MI:SS.FF1", "2024-05-17 13:45:10.9", 900000000},
      {"YYYY-MM-DD HH24:MI:SS.FF2", "2024-05-17 13:45:10.05", 50000000},
      {"YYYY-MM-DD HH24:MI:SS.FF4", "2024-05-17 13:45:10.0001", 100000},
      {"YYYY-MM-DD HH24:MI:SS.FF5", "2024-05-17 13:45:10.99999", 999990000},
      {"YYYY-MM-DD HH24:MI:SS", "2024-05-17 13:45:10", 0},
      // Fewer digits than the width: the text does not match, the fields read
      // so far are kept and the fraction is 0.
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 13:45:10.5", 0},
  };
  for (const Case &c : cases) {
    QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
    dt->fraction = 42;
    EXPECT_EQ(parse(dt, c.text, c.format), 0) << c.text;
    EXPECT_EQ(value_of(dt), (DateTimeValue{2024, 5, 17, 13, 45, 10, c.fraction, 0, 0})) << c.text;
    expect_clear();
  }
}

TEST_F(QWZDateTimeFromTextTest, ZoneKeepsTheMinutesOwnSign) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  YearMonth now;
  do {
    now = local_year_month();
    ASSERT_EQ(parse(dt, "-05:30", "TZH:TZM"), 0);
  } while (!(now == local_year_month()));
  EXPECT_EQ(value_of(dt), (DateTimeValue{static_cast<sb2>(now.year), static_cast<ub2>(now.month),
                                         1, 0, 0, 0, 0, -5, 30}));
  // The zone-only reader gives the minute the hour's sign.
  QWZDateTime *z = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  ASSERT_EQ(append_timezone_from_text(err_, U("-05:30"), 6, U("TZH:TZM"), 7, z), 0);
  EXPECT_EQ(z->tz_hour, -5);
  EXPECT_EQ(z->tz_minute, -30);
  // In a whole timestamp the literal blank before TZH skips the blank and
  // then takes the '-' as its one non-digit, so the sign is lost.
  QWZDateTime *t = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  ASSERT_EQ(parse(t, "2024-05-17 10:20:30 -05:30", "YYYY-MM-DD HH24:MI:SS TZH:TZM"), 0);
  EXPECT_EQ(value_of(t), (DateTimeValue{2024, 5, 17, 10, 20, 30, 0, 5, 30}));
  // Without that literal the separator count is already spent (by the blank
  // after the day), so the '-' ends an empty zone hour: no match, and the
  // fields read before it stand.
  ASSERT_EQ(parse(t, "2024-05-17 10:20:30-05:30", "YYYY-MM-DD HH24:MI:SSTZH:TZM"), 0);
  EXPECT_EQ(value_of(t), (DateTimeValue{2024, 5, 17, 10, 20, 30, 0, 0, 0}));
  ASSERT_EQ(parse(t, "2024-05-17 10:20:30 +05:30", "YYYY-MM-DD HH24:MI:SS TZH:TZM"), 0);
  EXPECT_EQ(value_of(t), (DateTimeValue{2024, 5, 17, 10, 20, 30, 0, 5, 30}));
  expect_clear();
}

TEST_F(QWZDateTimeFromTextTest, ZoneOnlyForTypesWithAZone) {
  for (ub4 type = DATETIME_KIND_DATE; type <= DATETIME_KIND_TIMESTAMP_LTZ; ++type) {
    QWZDateTime *dt = new_datetime(type);
    for (const char *format : {"YYYY-MM-DD HH24:MI:SS TZH:TZM", "YYYY-MM-DD HH24:MI:SS TZH",
                               "YYYY-MM-DD HH24:MI:SS TZM"}) {
      const sword r = parse(dt, "2024-05-17 10:20:30 +05:30", format);
      if (type == DATETIME_KIND_TIME_TZ || type == DATETIME_KIND_TIMESTAMP_TZ) {
        EXPECT_EQ(r, 0) << type << " " << format;
        expect_clear();
      } else {
        EXPECT_EQ(r, -1) << type << " " << format;
        expect_diag(800153, "", "date format not recognized.");
        EXPECT_EQ(value_of(dt), (DateTimeValue{0, 0, 0, 0, 0, 0, 0, 0, 0}));
      }
    }
  }
}

TEST_F(QWZDateTimeFromTextTest, TypesTakeTheFieldsTheirCheckAccepts) {
  struct Case {
    ub4 type;
    const char *format, *text;
    sword result;
    DateTimeValue value;
  } cases[] = {
      {DATETIME_KIND_DATE, "YYYY-MM-DD", "2024-05-17", 0, {2024, 5, 17, 0, 0, 0, 0, 0, 0}},
      {DATETIME_KIND_TIMESTAMP, "YYYY-MM-DD HH24:MI:SS.FF5", "2024-05-17 01:02:03.12345", 0,
       {2024, 5, 17, 1, 2, 3, 123450000, 0, 0}},
      {DATETIME_KIND_TIMESTAMP_LTZ, "YYYY-MM-DD HH24:MI:SS", "2024-05-17 01:02:03", 0,
       {2024, 5, 17, 1, 2, 3, 0, 0, 0}},
      {DATETIME_KIND_TIMESTAMP_TZ, "SYYYY-MM-DD HH24:MI:SS.FF1 TZH:TZM",
       "-0044-03-15 12:00:00.5 +14:00", 0, {-44, 3, 15, 12, 0, 0, 500000000, 14, 0}},
      // A time descriptor takes the date the parser gives but its check
      // ignores it.
      {DATETIME_KIND_TIME, "HH24:MI:SS", "13:45:10", 0, {0, 0, 1, 13, 45, 10, 0, 0, 0}},
      {DATETIME_KIND_TIME_TZ, "HH24:MI:SS TZH:TZM", "13:45:10 +02:00", 0,
       {0, 0, 1, 13, 45, 10, 0, 2, 0}},
  };
  for (const Case &c : cases) {
    QWZDateTime *dt = new_datetime(c.type);
    YearMonth now;
    do {
      now = local_year_month();
      EXPECT_EQ(parse(dt, c.text, c.format), c.result) << c.text;
    } while (!(now == local_year_month()));
    DateTimeValue expected = c.value;
    if (expected.year == 0) {
      expected.year = static_cast<sb2>(now.year);
      expected.month = static_cast<ub2>(now.month);
    }
    EXPECT_EQ(value_of(dt), expected) << c.text;
    expect_clear();
  }
}

TEST_F(QWZDateTimeFromTextTest, PartialRecordsAreJudgedByTheValidityCheck) {
  // Text that does not match: the parser's partial record is written and the
  // check decides. A time whose parse stopped early is still a valid time.
  QWZDateTime *time = new_datetime(DATETIME_KIND_TIME);
  time->second = 9;
  EXPECT_EQ(parse(time, "10:20", "HH24:MI:SS.FF3"), 0);
  EXPECT_EQ(value_of(time), (DateTimeValue{0, 0, 0, 10, 20, 0, 0, 0, 0}));
  expect_clear();
  // A timestamp missing its day is not.
  QWZDateTime *ts = new_datetime(DATETIME_KIND_TIMESTAMP);
  EXPECT_EQ(parse(ts, "2024-05", "YYYY-MM-DD"), -1);
  expect_diag(22007, "22007", kDateTimeInvalid);
  EXPECT_EQ(value_of(ts), (DateTimeValue{2024, 5, 0, 0, 0, 0, 0, 0, 0}));
  // A format that cannot be translated writes an all-zero record.
  QWZDateTime *t2 = new_datetime(DATETIME_KIND_TIME);
  t2->hour = 5;
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, M("10:20"), 5, M("HH24:MI"), 0, nullptr, 0, t2), 0);
  EXPECT_EQ(value_of(t2), (DateTimeValue{0, 0, 0, 0, 0, 0, 0, 0, 0}));
  expect_clear();
  const std::string f128 = "YYYY-MM-DD" + std::string(118, '/');
  QWZDateTime *t3 = new_datetime(DATETIME_KIND_TIMESTAMP);
  EXPECT_EQ(parse(t3, "2024-05-17", f128.c_str()), -1);
  expect_diag(22007, "22007", kDateTimeInvalid);
  // Parsed but invalid.
  QWZDateTime *t4 = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  EXPECT_EQ(parse(t4, "2024-05-17 +15:00", "YYYY-MM-DD TZH:TZM"), -1);
  expect_diag(22007, "22007", kDateTimeInvalid);
  EXPECT_EQ(value_of(t4), (DateTimeValue{2024, 5, 17, 0, 0, 0, 0, 15, 0}));
}

TEST_F(QWZDateTimeFromTextTest, FormatAtFaultUsesTheDateSetter) {
  for (const char *kw : kRejected) {
    QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
    const std::string format = "YYYY-MM-DD " + std::string(kw);
    EXPECT_EQ(parse(dt, "2024-05-17", format.c_str()), -1) << kw;
    expect_diag(11104, "22007", kFormatString);
    EXPECT_EQ(value_of(dt), (DateTimeValue{0, 0, 0, 0, 0, 0, 0, 0, 0}));
  }
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  for (const char *format : {"FF3 FF5", "HH24 HH24", "YYYY-MM-DDT"}) {
    EXPECT_EQ(parse(dt, "2024-05-17", format), -1) << format;
    expect_diag(11104, "22007", kFormatString);
  }
  EXPECT_EQ(parse(dt, "2024-05-17 10 11", "YYYY-MM-DD HH HH24"), 0);
  EXPECT_EQ(dt->hour, 11);
}

TEST_F(QWZDateTimeFromTextTest, ChecksInOrder) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  QWZInterval *iv = new_interval(INTERVAL_KIND_DS);
  QWZText *text = M("2024-05-17"), *fmt = M("YYYY-MM-DD");
  struct Case {
    void *hndl;
    QWZText *text;
    size_t length;
    QWZText *fmt;
    QWZDateTime *dt;
    sword status;
    sb4 number;
    std::string state, message;
  } cases[] = {
      {nullptr, text, 10, fmt, dt, QWZ_INVALID_HANDLE, 800001, "", "Invalid handle."},
      {err_, nullptr, 10, nullptr, nullptr, QWZ_INVALID_HANDLE, 800001, "", "Invalid handle."},
      {env_, text, 10, fmt, nullptr, QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)},
      {env_, text, 10, fmt, reinterpret_cast<QWZDateTime *>(iv), QWZ_INVALID_HANDLE, 21560,
       "21560", null_param(3)},
      {env_, nullptr, 10, nullptr, nullptr, QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)},
      {env_, nullptr, 10, fmt, dt, -1, 21560, "21560", null_param(4)},
      {session_, nullptr, SIZE_MAX, nullptr, dt, -1, 21560, "21560", null_param(4)},
      {env_, text, 10, nullptr, dt, -1, 21560, "21560", null_param(4)},
      {env_, text, SIZE_MAX, nullptr, dt, -1, 21560, "21560", null_param(4)},
      {env_, text, SIZE_MAX, fmt, dt, -1, 800155, "", "string is too long for internal buffer."},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(QWZDateTimeFromText(c.hndl, err_, c.text, c.length, c.fmt, 10, nullptr, 0, c.dt),
              c.status);
    expect_diag(c.number, c.state, c.message);
  }
  EXPECT_EQ(value_of(dt), (DateTimeValue{0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(QWZDateTimeFromText(session_, err_, text, 10, fmt, 10, nullptr, 0, dt), 0);
  EXPECT_EQ(value_of(dt), (DateTimeValue{2024, 5, 17, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(QWZDateTimeFromText(env_, nullptr, text, 10, fmt, 10, nullptr, 0, dt),
            QWZ_INVALID_HANDLE);
  // No zero-length checks here: an empty text does not match, and the
  // partial record is judged by the check.
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, text, 0, fmt, 10, nullptr, 0, dt), -1);
  expect_diag(22007, "22007", kDateTimeInvalid);
}

}  // namespace
