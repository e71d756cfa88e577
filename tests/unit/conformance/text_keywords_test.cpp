// The keyword table and format translation as the text functions show
// them: the 16 usable keywords in both directions, the 45 refused ones in
// every text function and in any case, longest keyword first, literals.
#include "text_conf_util.h"

#include <string>

using namespace text_conf;

namespace {

using qwz_test::kUtc;
using qwz_test::ZoneGuard;

const char *const kRefused[45] = {
    "AD",  "A.D.", "AM",  "A.M.", "BC",  "B.C.", "CC",    "SCC",  "D",   "DAY",  "DDD",  "DL",
    "DS",  "DY",   "E",   "EE",   "FM",  "FX",   "IW",    "IYY",  "IY",  "I",    "IYYY", "J",
    "MON", "MONTH", "PM", "P.M.", "Q",   "RM",   "RR",    "RRRR", "SSSSS", "TS", "TZD",  "TZR",
    "WW",  "W",    "X",   "Y,YYY", "YEAR", "SYEAR", "YYY", "YY",   "Y"};

std::string lower(std::string s) {
  for (char &c : s)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return s;
}

class KeywordConf : public TextFixture {};

// Every refused keyword, alone or inside a usable format, in upper and lower
// case: the format-string error from all four text functions.
TEST_F(KeywordConf, RefusedKeywordsInEveryFunction) {
  ZoneGuard z(kUtc);
  const QWZDate date = make_date(2024, 5, 17, 10, 20, 30);
  QWZDateTime *dt = datetime_of(69, 2024, 5, 17, 10, 20, 30, 0, "+01:00");
  for (const char *k : kRefused) {
    for (const std::string &fmt :
         {std::string(k), lower(k), "YYYY-MM-DD " + std::string(k), std::string(k) + " HH24"}) {
      SCOPED_TRACE(fmt);
      QWZDate d = make_date(1, 1, 1);
      EXPECT_EQ(date_from("2024-05-17 10", fmt, &d), QWZ_ERROR);
      EXPECT_EQ(diag_seen(), format_string());
      std::string out;
      EXPECT_EQ(date_to(date, fmt, out), QWZ_ERROR);
      EXPECT_EQ(diag_seen(), format_string());
      EXPECT_EQ(datetime_from("2024-05-17 10", fmt, dt), QWZ_ERROR);
      EXPECT_EQ(diag_seen(), format_string());
      EXPECT_EQ(datetime_to(dt, fmt, out), QWZ_ERROR);
      EXPECT_EQ(diag_seen(), format_string());
    }
  }
}

// Each usable keyword alone, both directions, in upper and lower case.
TEST_F(KeywordConf, UsableKeywordsBothWays) {
  ZoneGuard z(kUtc);
  const Clock clock = clock_now();
  struct Case {
    const char *keyword;
    const char *text;       // what is read
    QWZDate date_read;      // the date it gives (year 0, month 0: the clock's)
    const char *date_text;  // 2024-05-17 10:20:30 written (NULL: fails, format_or_date)
    const char *dt_text;    // the same, 123456789 ns, zone -05:30, written
  };
  const Case cases[] = {
      {"DD", "17", make_date(0, 0, 17), "17", "17"},
      {"MM", "05", make_date(0, 5, 1), "05", "05"},
      {"YYYY", "2024", make_date(2024, 0, 1), "2024", "2024"},
      {"SYYYY", "-2024", make_date(-2024, 0, 1), nullptr, nullptr},
      {"HH", "13", make_date(0, 0, 1, 13), "10", "10"},
      {"HH12", "13", make_date(0, 0, 1, 13), "10", "10"},
      {"HH24", "13", make_date(0, 0, 1, 13), "10", "10"},
      {"MI", "45", make_date(0, 0, 1, 0, 45), "20", "20"},
      {"SS", "59", make_date(0, 0, 1, 0, 0, 59), "30", "30"},
      {"FF1", "1", make_date(0, 0, 1), "0", "1"},
      {"FF2", "12", make_date(0, 0, 1), "00", "12"},
      {"FF3", "123", make_date(0, 0, 1), "000", "123"},
      {"FF4", "1234", make_date(0, 0, 1), "0000", "1234"},
      {"FF5", "12345", make_date(0, 0, 1), "00000", "12345"},
      {"TZH", "-05", make_date(0, 0, 1), nullptr, "-05"},
      {"TZM", "30", make_date(0, 0, 1), nullptr, "30"},
  };
  const QWZDate date = make_date(2024, 5, 17, 10, 20, 30);
  QWZDateTime *dt = datetime_of(69, 2024, 5, 17, 10, 20, 30, 123456789, "-05:30");
  for (const Case &c : cases) {
    for (const std::string &k : {std::string(c.keyword), lower(c.keyword)}) {
      SCOPED_TRACE(k);
      QWZDate want = c.date_read;
      if (want.year == 0) want.year = static_cast<sb2>(clock.year);
      if (want.month == 0) want.month = static_cast<ub2>(clock.month);
      QWZDate d = make_date(1, 1, 1);
      EXPECT_EQ(date_from(c.text, k, &d), QWZ_SUCCESS);
      EXPECT_TRUE(same(d, want)) << show(d);
      std::string out;
      if (c.date_text) {
        EXPECT_EQ(date_to(date, k, out), QWZ_SUCCESS);
        EXPECT_EQ(out, c.date_text);
      } else {
        EXPECT_EQ(date_to(date, k, out), QWZ_ERROR);
        EXPECT_EQ(diag_seen(), format_or_date());
      }
      if (c.dt_text) {
        EXPECT_EQ(datetime_to(dt, k, out), QWZ_SUCCESS);
        EXPECT_EQ(out, c.dt_text);
      } else {
        EXPECT_EQ(datetime_to(dt, k, out), QWZ_ERROR);
        EXPECT_EQ(diag_seen(), none());
      }
    }
  }
}

// At each position the longest keyword that starts there is taken; what
// is not a keyword is a literal of one character.
TEST_F(KeywordConf, LongestKeywordFirst) {
  ZoneGuard z(kUtc);
  const QWZDate date = make_date(2024, 5, 17, 10, 20, 30);
  struct Case {
    const char *format;
    const char *written;  // NULL: refused
    Seen refused;         // the date writer's diagnostic when refused
  };
  const Case cases[] = {
      {"HH24:MI", "10:20", none()},              // not HH and the digits 2 and 4
      {"HH12:MI", "10:20", none()},
      {"YYYYMMDD", "20240517", none()},
      {"MIMMDDHHSS", "2005171030", none()},
      {"SSSSS", nullptr, format_string()},       // not SS SS and a letter
      {"DDD", nullptr, format_string()},         // not DD and D
      {"YYYYY", nullptr, format_string()},       // YYYY then the keyword Y
      {"SYYYYY", nullptr, format_string()},
      {"MONTH", nullptr, format_string()},
      {"Y,YYY", nullptr, format_string()},
      {"HH24:MI A.M.", nullptr, format_string()},
      {"FF12", nullptr, format_or_date()},       // FF1 then the digit 2
      {"TZHH", nullptr, format_or_date()},       // TZH then the letter H
      {"YYYY-MM-DDT", nullptr, format_or_date()},
      {"DD/MM/YYYY T", nullptr, format_or_date()},
      {"FF", nullptr, format_or_date()},         // two letters
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.format);
    std::string out;
    const sword rc = date_to(date, c.format, out);
    if (c.written) {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_EQ(out, c.written);
    } else {
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag_seen(), c.refused);
      // Reading reports every flaw of a format alike.
      QWZDate d = make_date(1, 1, 1);
      EXPECT_EQ(date_from("2024", c.format, &d), QWZ_ERROR);
      EXPECT_EQ(diag_seen(), format_string());
    }
  }
}

// Literals: blanks and punctuation pass, letters and digits do not; a
// literal stands for any one non-digit when reading.
TEST_F(KeywordConf, Literals) {
  ZoneGuard z(kUtc);
  const QWZDate date = make_date(2024, 5, 17, 10, 20, 30);
  const std::string punct = "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~ ";
  for (char p : punct) {
    const std::string fmt = std::string("YYYY") + p + "MM";
    SCOPED_TRACE(fmt);
    std::string out;
    EXPECT_EQ(date_to(date, fmt, out), QWZ_SUCCESS);
    EXPECT_EQ(out, std::string("2024") + p + "05");
    QWZDate d = make_date(1, 1, 1);
    EXPECT_EQ(date_from(std::string("2024") + p + "05", fmt, &d), QWZ_SUCCESS);
    EXPECT_TRUE(same(d, make_date(2024, 5, 1))) << show(d);
  }
  // Bytes beyond ASCII are neither letters nor digits.
  std::string out;
  EXPECT_EQ(date_to(date, "YYYY\xC3\xA9MM", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "2024\xC3\xA9" "05");
  for (const char *bad : {"YYYY0MM", "YYYYgMM", "YYYYGMM", "ZYYYY"}) {
    EXPECT_EQ(date_to(date, bad, out), QWZ_ERROR) << bad;
    EXPECT_EQ(diag_seen(), format_or_date()) << bad;
  }
}

// A letter alone is a keyword (refused) when one of D, E, I, J, Q, W, X
// and Y; any other is a literal letter. Writing a date tells them apart.
TEST_F(KeywordConf, SingleLetters) {
  const QWZDate date = make_date(2024, 5, 17, 10, 20, 30);
  const std::string keywords = "DEIJQWXY";
  for (char c = 'A'; c <= 'Z'; ++c) {
    for (const char l : {c, static_cast<char>(c + 32)}) {
      const std::string fmt = std::string("YYYY ") + l;
      SCOPED_TRACE(fmt);
      std::string out;
      EXPECT_EQ(date_to(date, fmt, out), QWZ_ERROR);
      EXPECT_EQ(diag_seen(),
                keywords.find(c) != std::string::npos ? format_string() : format_or_date());
    }
  }
}

// Repeats: each keyword once, and one fraction keyword at most; HH, HH12
// and HH24 are different keywords.
TEST_F(KeywordConf, Repeats) {
  ZoneGuard z(kUtc);
  QWZDateTime *dt = datetime_of(68, 2024, 5, 17, 10, 20, 30, 123456789);
  const QWZDate date = make_date(2024, 5, 17, 10, 20, 30);
  for (const char *fmt : {"FF3 FF5", "DD DD", "FF1FF1", "YYYY-MM-DD yyyy", "MI:mi", "TZH TZH",
                          "SYYYY SYYYY", "FF2.FF4"}) {
    SCOPED_TRACE(fmt);
    std::string out;
    EXPECT_EQ(date_to(date, fmt, out), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), format_or_date());
    EXPECT_EQ(datetime_to(dt, fmt, out), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), none());
    QWZDate d = make_date(1, 1, 1);
    EXPECT_EQ(date_from("10 20", fmt, &d), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), format_string());
  }
  std::string out;
  EXPECT_EQ(datetime_to(dt, "HH HH12 HH24 YYYY SYYYY", out), QWZ_ERROR);  // 2024 is not 5 wide
  EXPECT_EQ(datetime_to(dt, "HH HH12 HH24.FF2", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "10 10 10.12");
  QWZDate d = make_date(1, 1, 1);
  EXPECT_EQ(date_from("2024-05-17 01 02 03", "YYYY-MM-DD HH HH12 HH24", &d), QWZ_SUCCESS);
  EXPECT_TRUE(same(d, make_date(2024, 5, 17, 3, 0, 0))) << show(d);
  EXPECT_EQ(date_from("2024-05-17 03 02", "YYYY-MM-DD HH24 HH", &d), QWZ_SUCCESS);
  EXPECT_TRUE(same(d, make_date(2024, 5, 17, 2, 0, 0))) << show(d);
  // A later hour keyword that finds nothing still empties the hour.
  EXPECT_EQ(date_from("2024-05-17 03", "YYYY-MM-DD HH24 HH", &d), QWZ_SUCCESS);
  EXPECT_TRUE(same(d, make_date(2024, 5, 17, 0, 0, 0))) << show(d);
  // YYYY and SYYYY are different keywords too; the later wins (and its
  // sign went to the literal blank).
  EXPECT_EQ(date_from("2024 -0044-03-15", "YYYY SYYYY-MM-DD", &d), QWZ_SUCCESS);
  EXPECT_TRUE(same(d, make_date(44, 3, 15))) << show(d);
}

}  // namespace
