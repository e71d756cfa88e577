// Date and datetime to text: the formatter, the shared entry with its buffer
// rule, the three converters and QWZDateToText / QWZDateTimeToText.
#include "text_test_util.h"

#include <string>
#include <vector>

using namespace qwz_test;
using namespace text_test;

namespace {

// ---- QWZDateToText -----------------------------------------------------------

class QWZDateToTextTest : public HandleFixture {
 protected:
  // Formats into a 64-byte buffer stated as `capacity`; returns the status
  // and leaves the text (up to the first NUL or the capacity) in out_.
  sword format(const QWZDate &d, const char *fmt, ub4 capacity = 63) {
    std::memset(buf_, '#', sizeof buf_);
    size_ = capacity;
    const sword r = QWZDateToText(err_, &d, U(fmt), static_cast<ub1>(std::strlen(fmt)), U("en"),
                                  2, &size_, buf_);
    out_.assign(reinterpret_cast<char *>(buf_), strnlen(reinterpret_cast<char *>(buf_), capacity));
    return r;
  }
  bool untouched() const {
    for (QWZtext c : buf_)
      if (c != '#') return false;
    return true;
  }
  QWZtext buf_[64];
  ub4 size_ = 0;
  std::string out_;
};

const QWZDate kDate{2024, 5, 17, 10, 20, 30};

TEST_F(QWZDateToTextTest, Examples) {
  struct Case {
    QWZDate date;
    const char *format, *text;
  } cases[] = {
      {kDate, "YYYY-MM-DD HH24:MI:SS", "2024-05-17 10:20:30"},
      {kDate, "DD.MM.YYYY", "17.05.2024"},
      {kDate, "yyyy/mm/dd hh:mi:ss", "2024/05/17 10:20:30"},
      {kDate, "HH12", "10"},
      {kDate, "YYYYMMDDHH24MISS", "20240517102030"},
      {kDate, "  YYYY-MM-DD  ", "2024-05-17"},
      // Everything after the first SS is dropped, literals included.
      {kDate, "HH24:MI:SS YYYY", "10:20:30"},
      {kDate, "SS.FF3", "30"},
      {kDate, "SS, DD", "30"},
      // No fraction text on a date: n zeros.
      {kDate, "FF1", "0"},
      {kDate, "FF3", "000"},
      {kDate, "FF5", "00000"},
      {kDate, "YYYY-MM-DD FF2", "2024-05-17 00"},
      // No zone text on a date: TZH and TZM contribute nothing.
      {kDate, "TZH:TZM", ":"},
      {kDate, "YYYY TZH", "2024 "},
      // Year widths.
      {{999, 1, 2, 3, 4, 5}, "YYYY", "0999"},
      {{1, 1, 1, 0, 0, 0}, "YYYY-MM-DD", "0001-01-01"},
      {{-44, 3, 15, 0, 0, 0}, "YYYY-MM-DD", "-044-03-15"},
      {{-999, 3, 15, 0, 0, 0}, "YYYY", "-999"},
      {{-1000, 3, 15, 0, 0, 0}, "SYYYY", "-1000"},
      {{-4712, 1, 1, 0, 0, 0}, "SYYYY-MM-DD", "-4712-01-01"},
      {{9999, 12, 31, 23, 59, 59}, "YYYY-MM-DD HH24:MI:SS", "9999-12-31 23:59:59"},
      {{2024, 2, 29, 0, 0, 0}, "DD/MM", "29/02"},
      {kDate, "HH HH24", "10 10"},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(format(c.date, c.format), 0) << c.format;
    EXPECT_EQ(out_, c.text) << c.format;
    expect_clear();
  }
}

TEST_F(QWZDateToTextTest, BufferCapacityEqualToTheLengthIsAccepted) {
  // 19 characters into a capacity of 19: accepted, and the terminator is
  // written all the same, one byte past the stated capacity.
  ASSERT_EQ(format(kDate, "YYYY-MM-DD HH24:MI:SS", 19), 0);
  EXPECT_EQ(out_, "2024-05-17 10:20:30");
  EXPECT_EQ(buf_[19], '\0');
  EXPECT_EQ(buf_[20], '#');
  EXPECT_EQ(size_, 19u);  // not updated
  expect_clear();
  ASSERT_EQ(format(kDate, "YYYY-MM-DD HH24:MI:SS", 20), 0);
  EXPECT_EQ(buf_[19], '\0');
  EXPECT_EQ(buf_[20], '#');
  // 18: too small, buffer untouched.
  EXPECT_EQ(format(kDate, "YYYY-MM-DD HH24:MI:SS", 18), -1);
  expect_diag(11104, "01877", kBufTooSmall);
  EXPECT_TRUE(untouched());
  EXPECT_EQ(format(kDate, "YYYY-MM-DD HH24:MI:SS", 0), -1);
  expect_diag(11104, "01877", kBufTooSmall);
  EXPECT_TRUE(untouched());
}

TEST_F(QWZDateToTextTest, FailureRows) {
  struct Case {
    QWZDate date;
    const char *format;
    sb4 number;
    const char *state, *message;
  } cases[] = {
      {{2024, 2, 30, 0, 0, 0}, "YYYY-MM-DD", 11104, "22007", kDateFormat},
      {{0, 1, 1, 0, 0, 0}, "YYYY-MM-DD", 11104, "22007", kDateFormat},
      {{2024, 1, 1, 24, 0, 0}, "YYYY-MM-DD", 11104, "22007", kDateFormat},
      // Unsupported keyword: the format-string error.
      {kDate, "DD-MON-YYYY", 11104, "22007", kFormatString},
      {kDate, "DY", 11104, "22007", kFormatString},
      {kDate, "MONTH", 11104, "22007", kFormatString},
      // Any other fault: format or date string.
      {kDate, "YYYY-MM-DD T", 11104, "22007", kFormatOrDate},
      {kDate, "YYYY-MM-DD 1", 11104, "22007", kFormatOrDate},
      {kDate, "DD DD", 11104, "22007", kFormatOrDate},
      {kDate, "FF3 FF5", 11104, "22007", kFormatOrDate},
      {kDate, "SYYYY", 11104, "22007", kFormatOrDate},
      {{-1000, 1, 1, 0, 0, 0}, "YYYY", 11104, "22007", kFormatOrDate},
      {kDate, "", 11104, "22007", kFormatOrDate},
      {kDate, "    ", 11104, "22007", kFormatOrDate},
      {kDate, "TZH", 11104, "22007", kFormatOrDate},
      {kDate, "TZHTZM", 11104, "22007", kFormatOrDate},
      // The first fault in token order decides the code.
      {kDate, "MON DD DD", 11104, "22007", kFormatString},
      {kDate, "DD DD MON", 11104, "22007", kFormatOrDate},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(format(c.date, c.format), -1) << c.format;
    expect_diag(c.number, c.state, c.message);
    EXPECT_TRUE(untouched()) << c.format;
  }
}

TEST_F(QWZDateToTextTest, EveryRejectedKeyword) {
  for (const char *kw : kRejected) {
    for (const std::string &f : {std::string(kw), "YYYY-MM-DD " + std::string(kw),
                                 std::string(kw) + " YYYY-MM-DD"}) {
      EXPECT_EQ(format(kDate, f.c_str()), -1) << f;
      expect_diag(11104, "22007", kFormatString);
    }
  }
}

TEST_F(QWZDateToTextTest, NullChecksInOrder) {
  QWZDate d = kDate;
  ub4 size = 64;
  QWZtext buf[64];
  struct Case {
    const QWZDate *date;
    const QWZtext *fmt;
    ub4 *size;
    QWZtext *buf;
    int param;
  } cases[] = {
      {nullptr, U("YYYY"), &size, buf, 2}, {nullptr, nullptr, nullptr, nullptr, 2},
      {&d, nullptr, &size, buf, 3},        {&d, nullptr, nullptr, nullptr, 3},
      {&d, U("YYYY"), nullptr, buf, 7},    {&d, U("YYYY"), nullptr, nullptr, 7},
      {&d, U("YYYY"), &size, nullptr, 8},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(QWZDateToText(err_, c.date, c.fmt, 4, nullptr, 0, c.size, c.buf), -1);
    expect_diag(21560, "21560", null_param(c.param));
  }
  // An invalid date is reported after the NULL checks.
  QWZDate bad{2024, 13, 1, 0, 0, 0};
  EXPECT_EQ(QWZDateToText(err_, &bad, U("YYYY"), 4, nullptr, 0, &size, nullptr), -1);
  expect_diag(21560, "21560", null_param(8));
  EXPECT_EQ(QWZDateToText(nullptr, &d, U("YYYY"), 4, nullptr, 0, &size, buf), QWZ_INVALID_HANDLE);
}

TEST_F(QWZDateToTextTest, FormatLengthLoweredAndCut) {
  ub4 size = 63;
  std::memset(buf_, 0, sizeof buf_);
  ASSERT_EQ(QWZDateToText(err_, &kDate, U("YYYY-MM-DD"), 255, nullptr, 0, &size, buf_), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(buf_), "2024-05-17");
  std::memset(buf_, 0, sizeof buf_);
  ASSERT_EQ(QWZDateToText(err_, &kDate, U("YYYY-MM-DD"), 7, nullptr, 0, &size, buf_), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(buf_), "2024-05");
  // 127 characters are fine, 128 are not.
  const std::string f127 = "YYYY" + std::string(123, '-');
  const std::string f128 = f127 + "-";
  QWZtext big[200];
  ub4 cap = 199;
  ASSERT_EQ(QWZDateToText(err_, &kDate, U(f127.c_str()), 127, nullptr, 0, &cap, big), 0);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(big)), "2024" + std::string(123, '-'));
  EXPECT_EQ(QWZDateToText(err_, &kDate, U(f128.c_str()), 128, nullptr, 0, &cap, big), -1);
  expect_diag(11104, "22007", kFormatOrDate);
}

// ---- QWZDateTimeToText -------------------------------------------------------

class QWZDateTimeToTextTest : public HandleFixture {
 protected:
  QWZDateTime *make(ub4 type, sb2 y, ub2 mo, ub2 d, ub2 h, ub2 mi, ub2 s, ub4 fraction,
                    sb1 tzh = 0, sb1 tzm = 0) {
    QWZDateTime *dt = new_datetime(type);
    dt->year = y;
    dt->month = mo;
    dt->day = d;
    dt->hour = h;
    dt->minute = mi;
    dt->second = s;
    dt->fraction = fraction;
    dt->tz_hour = tzh;
    dt->tz_minute = tzm;
    return dt;
  }
  sword format(const QWZDateTime *dt, const char *fmt, ub4 capacity = 63, ub1 precision = 0) {
    std::memset(buf_, '#', sizeof buf_);
    size_ = capacity;
    const sword r = QWZDateTimeToText(env_, err_, dt, U(fmt), static_cast<ub1>(std::strlen(fmt)),
                                      precision, nullptr, 0, &size_, buf_);
    out_.assign(reinterpret_cast<char *>(buf_), strnlen(reinterpret_cast<char *>(buf_), capacity));
    return r;
  }
  bool untouched() const {
    for (QWZtext c : buf_)
      if (c != '#') return false;
    return true;
  }
  QWZtext buf_[64];
  ub4 size_ = 0;
  std::string out_;
};

TEST_F(QWZDateTimeToTextTest, FractionRules) {
  struct Case {
    ub4 fraction;
    const char *format, *text;
  } cases[] = {
      {123456789, "SS.FF3", "30.123"},
      {123000000, "SS.FF3", "30.123"},
      {5000000, "SS.FF3", "30.500"},  // 5000000 ns is written "5000000"
      {0, "SS.FF3", "30.000"},
      {0, "FF1", "0"},
      {0, "FF5", "00000"},
      {123456789, "FF1", "1"},
      {123456789, "FF2", "12"},
      {123456789, "FF4", "1234"},
      {123456789, "FF5", "12345"},
      {12, "FF3", "012"},
      {12, "FF1", "1"},
      {999999999, "FF5", "99999"},
      {4294967295u, "FF5", "42949"},
      {500000000, "HH24:MI:SS.FF2", "10:20:30.50"},
  };
  for (const Case &c : cases) {
    QWZDateTime *dt = make(DATETIME_KIND_TIMESTAMP, 2024, 5, 17, 10, 20, 30, c.fraction);
    EXPECT_EQ(format(dt, c.format), 0) << c.fraction << " " << c.format;
    EXPECT_EQ(out_, c.text) << c.fraction << " " << c.format;
    expect_clear();
  }
}

TEST_F(QWZDateTimeToTextTest, FractionTextOfEveryDigitCount) {
  // The nanosecond count as written without leading zeros: FFn takes its
  // first n characters, or its value padded to n digits when it is shorter.
  for (ub4 v : {0u, 1u, 9u, 10u, 99u, 100u, 999u, 1000u, 9999u, 10000u, 99999u, 100000u, 999999u,
                1000000u, 9999999u, 10000000u, 99999999u, 100000000u, 999999999u, 1000000000u,
                4294967295u}) {
    QWZDateTime *dt = make(DATETIME_KIND_TIMESTAMP, 2024, 5, 17, 10, 20, 30, v);
    const std::string text = std::to_string(v);
    for (int n = 1; n <= 5; ++n) {
      const std::string f = "FF" + std::to_string(n);
      const std::string expected = static_cast<int>(text.size()) < n
                                       ? std::string(n - text.size(), '0') + text
                                       : text.substr(0, n);
      ASSERT_EQ(format(dt, f.c_str()), 0);
      EXPECT_EQ(out_, expected) << v << " " << f;
    }
  }
}

TEST_F(QWZDateTimeToTextTest, ZonesAndNoStopAfterSeconds) {
  struct Case {
    ub4 type;
    sb1 tzh, tzm;
    const char *format, *text;
  } cases[] = {
      {DATETIME_KIND_TIMESTAMP_TZ, -5, -30, "TZH:TZM", "-05:30"},
      {DATETIME_KIND_TIMESTAMP_TZ, 0, 0, "TZH:TZM", "+00:00"},
      {DATETIME_KIND_TIMESTAMP_TZ, 14, 0, "TZH:TZM", "+14:00"},
      {DATETIME_KIND_TIMESTAMP_TZ, -12, 0, "TZHTZM", "-1200"},
      {DATETIME_KIND_TIMESTAMP_TZ, 0, -30, "TZH:TZM", "+00:30"},
      {DATETIME_KIND_TIMESTAMP_TZ, 5, 30, "YYYY-MM-DD HH24:MI:SS.FF3 TZH:TZM",
       "2024-05-17 10:20:30.123 +05:30"},
      {DATETIME_KIND_TIME_TZ, -3, -15, "HH24:MI TZH:TZM", "10:20 -03:15"},
      // Types without a zone still print their (zero) zone fields.
      {DATETIME_KIND_TIMESTAMP, 0, 0, "TZH:TZM", "+00:00"},
      {DATETIME_KIND_DATE, 0, 0, "YYYY-MM-DD TZH", "2024-05-17 +00"},
      // Datetimes do not stop after the seconds.
      {DATETIME_KIND_TIMESTAMP, 0, 0, "HH24:MI:SS YYYY", "10:20:30 2024"},
  };
  for (const Case &c : cases) {
    QWZDateTime *dt = make(c.type, 2024, 5, 17, 10, 20, 30, 123456789, c.tzh, c.tzm);
    if (c.type == DATETIME_KIND_TIME_TZ) dt->year = 0, dt->month = 0, dt->day = 0;
    EXPECT_EQ(format(dt, c.format), 0) << c.format;
    EXPECT_EQ(out_, c.text) << c.format;
    expect_clear();
  }
}

TEST_F(QWZDateTimeToTextTest, YearWidths) {
  struct Case {
    ub4 type;
    sb2 year;
    const char *format, *text;  // nullptr: refused silently
  } cases[] = {
      {DATETIME_KIND_TIMESTAMP, 999, "YYYY", "0999"},
      {DATETIME_KIND_TIMESTAMP, -44, "YYYY", "-044"},
      {DATETIME_KIND_TIMESTAMP, 2024, "SYYYY", nullptr},
      {DATETIME_KIND_TIMESTAMP, -4712, "SYYYY", "-4712"},
      {DATETIME_KIND_TIMESTAMP, -4712, "YYYY", nullptr},
      // Times do not check their date: any year reaches the formatter.
      {DATETIME_KIND_TIME, 20000, "SYYYY", "20000"},
      {DATETIME_KIND_TIME, 20000, "YYYY", nullptr},
      {DATETIME_KIND_TIME, -32768, "SYYYY", nullptr},
      {DATETIME_KIND_TIME, -32768, "YYYY", nullptr},
      {DATETIME_KIND_TIME, -10000, "SYYYY", nullptr},
      {DATETIME_KIND_TIME, 32767, "SYYYY", "32767"},
  };
  for (const Case &c : cases) {
    QWZDateTime *dt = make(c.type, c.year, 5, 17, 10, 20, 30, 0);
    const sword r = format(dt, c.format);
    if (c.text) {
      EXPECT_EQ(r, 0) << c.year << " " << c.format;
      EXPECT_EQ(out_, c.text) << c.year << " " << c.format;
    } else {
      EXPECT_EQ(r, -1) << c.year << " " << c.format;
      EXPECT_TRUE(untouched());
    }
    expect_clear();
  }
}

TEST_F(QWZDateTimeToTextTest, FieldsBeyondTheirSlotsKeepTheirLeadingCharacters) {
  // A local-time timestamp is never examined, so any field value arrives.
  QWZDateTime *dt = make(DATETIME_KIND_TIMESTAMP_LTZ, 2024, 300, 65535, 255, 100, 999, 0, -128, -128);
  ASSERT_EQ(format(dt, "MM DD HH24 MI SS TZH TZM"), 0);
  EXPECT_EQ(out_, "30 65 25 10 99 -12 12");
}

TEST_F(QWZDateTimeToTextTest, FailureRows) {
  QWZDateTime *ok = make(DATETIME_KIND_TIMESTAMP, 2024, 5, 17, 10, 20, 30, 0);
  struct Case {
    const QWZDateTime *dt;
    const char *format;
    ub4 capacity;
    sb4 number;  // 0: no diagnostic
    const char *state, *message;
  } cases[] = {
      {make(DATETIME_KIND_TIMESTAMP, 2024, 2, 30, 0, 0, 0, 0), "YYYY", 63, 22007, "22007",
       kDateTimeInvalid},
      {make(DATETIME_KIND_TIMESTAMP_TZ, 2024, 2, 3, 0, 0, 0, 0, 15), "YYYY", 63, 22007, "22007",
       kDateTimeInvalid},
      {ok, "YYYY-MM-DD HH24:MI:SS", 18, 11104, "01877", kBufTooSmall},
      {ok, "DD-MON-YYYY", 63, 11104, "22007", kFormatString},
      {ok, "MONTH", 63, 11104, "22007", kFormatString},
      {ok, "YYYY-MM-DD T", 63, 0, "", ""},
      {ok, "DD DD", 63, 0, "", ""},
      {ok, "FF3 FF5", 63, 0, "", ""},
      {ok, "SYYYY", 63, 0, "", ""},
      {ok, "", 63, 0, "", ""},
      {ok, "   ", 63, 0, "", ""},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(format(c.dt, c.format, c.capacity), -1) << c.format;
    if (c.number)
      expect_diag(c.number, c.state, c.message);
    else
      expect_clear();
    EXPECT_TRUE(untouched()) << c.format;
  }
  ASSERT_EQ(format(ok, "YYYY-MM-DD HH24:MI:SS", 19), 0);
  EXPECT_EQ(out_, "2024-05-17 10:20:30");
  EXPECT_EQ(buf_[19], '\0');  // the terminator, past the capacity
  EXPECT_EQ(buf_[20], '#');
  for (const char *kw : kRejected) {
    const std::string f = "YYYY-MM-DD " + std::string(kw);
    EXPECT_EQ(format(ok, f.c_str()), -1) << kw;
    expect_diag(11104, "22007", kFormatString);
  }
  const std::string f128 = "YYYY" + std::string(124, '-');
  EXPECT_EQ(format(ok, f128.c_str()), -1);
  expect_clear();
}

TEST_F(QWZDateTimeToTextTest, ChecksInOrder) {
  QWZDateTime *dt = make(DATETIME_KIND_TIMESTAMP, 2024, 5, 17, 10, 20, 30, 0);
  QWZInterval *iv = new_interval(INTERVAL_KIND_YM);
  ub4 size = 63;
  QWZtext buf[64];
  const QWZtext *fmt = U("YYYY");
  struct Case {
    void *hndl;
    const QWZDateTime *dt;
    const QWZtext *fmt;
    ub4 *size;
    QWZtext *buf;
    sword status;
    sb4 number;
    std::string state, message;
  } cases[] = {
      {nullptr, dt, fmt, &size, buf, QWZ_INVALID_HANDLE, 800001, "", "Invalid handle."},
      {err_, nullptr, nullptr, nullptr, nullptr, QWZ_INVALID_HANDLE, 800001, "", "Invalid handle."},
      {env_, nullptr, fmt, &size, buf, QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)},
      {env_, reinterpret_cast<QWZDateTime *>(iv), nullptr, nullptr, nullptr, QWZ_INVALID_HANDLE,
       21560, "21560", null_param(3)},
      {env_, dt, nullptr, &size, buf, -1, 21560, "21560", null_param(4)},
      {env_, dt, nullptr, nullptr, nullptr, -1, 21560, "21560", null_param(4)},
      {session_, dt, fmt, nullptr, buf, -1, 21560, "21560", null_param(9)},
      {session_, dt, fmt, nullptr, nullptr, -1, 21560, "21560", null_param(9)},
      {env_, dt, fmt, &size, nullptr, -1, 21560, "21560", null_param(10)},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(QWZDateTimeToText(c.hndl, err_, c.dt, c.fmt, 4, 0, nullptr, 0, c.size, c.buf),
              c.status);
    expect_diag(c.number, c.state, c.message);
  }
  EXPECT_EQ(QWZDateTimeToText(env_, nullptr, dt, fmt, 4, 0, nullptr, 0, &size, buf),
            QWZ_INVALID_HANDLE);
}

TEST_F(QWZDateTimeToTextTest, PrecisionIsIgnoredAndTheFormatLengthIsABound) {
  QWZDateTime *dt = make(DATETIME_KIND_TIMESTAMP, 2024, 5, 17, 10, 20, 30, 123456789);
  for (ub1 p : {0, 1, 3, 9, 255}) {
    ASSERT_EQ(format(dt, "SS.FF2", 63, p), 0);
    EXPECT_EQ(out_, "30.12");
  }
  ub4 size = 63;
  std::memset(buf_, 0, sizeof buf_);
  ASSERT_EQ(QWZDateTimeToText(env_, err_, dt, U("YYYY-MM-DD"), 255, 0, nullptr, 0, &size, buf_), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(buf_), "2024-05-17");
  std::memset(buf_, 0, sizeof buf_);
  // Trimmed first, then cut: the leading blanks do not count.
  ASSERT_EQ(QWZDateTimeToText(env_, err_, dt, U("  YYYY-MM-DD"), 7, 0, nullptr, 0, &size, buf_), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(buf_), "2024-05");
  // A length of zero leaves no format at all.
  EXPECT_EQ(QWZDateTimeToText(env_, err_, dt, U("YYYY"), 0, 0, nullptr, 0, &size, buf_), -1);
  expect_clear();
}

// ---- every usable keyword, both value kinds --------------------------------

TEST_F(QWZDateTimeToTextTest, EveryUsableKeywordAloneAfterAPrefixAndBeforeASuffix) {
  struct Case {
    const char *keyword, *date_text, *datetime_text;
  } cases[] = {
      {"DD", "17", "17"},       {"FF1", "0", "1"},       {"FF2", "00", "12"},
      {"FF3", "000", "123"},    {"FF4", "0000", "1234"}, {"FF5", "00000", "12345"},
      {"HH", "10", "10"},       {"HH12", "10", "10"},    {"HH24", "10", "10"},
      {"MI", "20", "20"},       {"MM", "05", "05"},      {"SS", "30", "30"},
      {"TZH", "", "-05"},       {"TZM", "", "30"},       {"YYYY", "2024", "2024"},
      {"SYYYY", "", "-4712"},
  };
  QWZDateTime *dt = make(DATETIME_KIND_TIMESTAMP_TZ, 2024, 5, 17, 10, 20, 30, 123456789, -5, -30);
  QWZDateTime *old = make(DATETIME_KIND_TIMESTAMP_TZ, -4712, 5, 17, 10, 20, 30, 123456789, -5, -30);
  for (const Case &c : cases) {
    const std::string kw = c.keyword;
    const QWZDateTime *value = kw == "SYYYY" ? old : dt;
    const QWZDate date = kw == "SYYYY" ? QWZDate{-4712, 5, 17, 10, 20, 30} : kDate;
    const std::string date_text = kw == "SYYYY" ? "-4712" : c.date_text;
    for (int shape = 0; shape < 3; ++shape) {
      const std::string f = shape == 0 ? kw : shape == 1 ? "/" + kw : kw + "/";
      auto shaped = [&](const std::string &t) {
        return shape == 0 ? t : shape == 1 ? "/" + t : t + "/";
      };
      EXPECT_EQ(format(value, f.c_str()), 0) << f;
      EXPECT_EQ(out_, shaped(c.datetime_text)) << f;
      // Dates: a zone keyword alone leaves an empty text (a failure); after
      // SS a date stops, so its suffix is dropped.
      std::memset(buf_, '#', sizeof buf_);
      size_ = 63;
      const sword r = QWZDateToText(err_, &date, U(f.c_str()), static_cast<ub1>(f.size()), nullptr,
                                    0, &size_, buf_);
      std::string expected = shaped(date_text);
      if (kw == "SS" && shape == 2) expected = "30";
      if (expected.empty()) {
        EXPECT_EQ(r, -1) << f;
        expect_diag(11104, "22007", kFormatOrDate);
      } else {
        EXPECT_EQ(r, 0) << f;
        EXPECT_EQ(std::string(reinterpret_cast<char *>(buf_), strnlen(reinterpret_cast<char *>(buf_), 63)),
                  expected)
            << f;
      }
    }
  }
}

// ---- the internal routines ---------------------------------------------------

TEST(QwzDatetimeToChar, ErrorCodesAndTheBufferRule) {
  datetime_fields f;
  qwz::date_to_fields(kDate, f);
  struct Case {
    const char *format;
    ub4 capacity;
    int result;
    sb4 code;
    const char *text;
  } cases[] = {
      {"YYYY-MM-DD", 10, 1, 77, "2024-05-17"},
      {"YYYY-MM-DD", 9, 0, 9, nullptr},
      {"DD-MON-YYYY", 63, 0, 5, nullptr},
      {"DD/MM T", 63, 0, 77, nullptr},
      {"DD DD", 63, 0, 77, nullptr},
      {"", 63, 0, 77, nullptr},
  };
  for (const Case &c : cases) {
    char buf[64];
    std::memset(buf, '#', sizeof buf);
    sb4 code = 77;
    const ub4 cap = c.capacity;
    EXPECT_EQ(qwz_datetime_to_char(&f, U(c.format), std::strlen(c.format), 6,
                                   reinterpret_cast<QWZtext *>(buf), &cap, &code, 1),
              c.result)
        << c.format;
    EXPECT_EQ(code, c.code) << c.format;
    if (c.text)
      EXPECT_EQ(std::string(buf, std::strlen(c.text)), c.text);
    else
      EXPECT_EQ(buf[0], '#');
  }
}

TEST(DatetimeToChar, WalksAGivenTokenList) {
  datetime_fields f;
  qwz::date_to_fields(kDate, f);
  qwz_token *tokens = qwz_translate_format("HH24:MI:SS YYYY");
  char result[256];
  ASSERT_EQ(datetime_to_char(result, 0, tokens, &f, 0), 1);
  EXPECT_STREQ(result, "10:20:30 2024");
  ASSERT_EQ(datetime_to_char(result, 0, tokens, &f, 1), 1);
  EXPECT_STREQ(result, "10:20:30");
  qwz_free_token_list(tokens);
  qwz_token *zone = qwz_translate_format("TZHTZM");
  EXPECT_EQ(datetime_to_char(result, 0, zone, &f, 1), 0);
  qwz_free_token_list(zone);
  EXPECT_EQ(datetime_to_char(result, 0, nullptr, &f, 1), 0);
}

TEST(Datetime180ToText, PackedTimestamp) {
  struct Case {
    std::vector<ub1> bytes;
    const char *format, *text;  // nullptr: refused
  } cases[] = {
      {{120, 124, 5, 17, 11, 21, 31, 0x07, 0x5B, 0xCD, 0x15}, "YYYY-MM-DD HH24:MI:SS.FF3",
       "2024-05-17 10:20:30.123"},
      {{120, 124, 5, 17, 11, 21, 31, 0x07, 0x5B, 0xCD, 0x15}, "FF5", "12345"},
      // 5000000 ns / 10000 = 500.
      {{120, 124, 5, 17, 11, 21, 31, 0x00, 0x4C, 0x4B, 0x40}, "FF3", "500"},
      {{120, 124, 5, 17, 11, 21, 31, 0x00, 0x4C, 0x4B, 0x40}, "FF5", "00500"},
      {{120, 124, 5, 17, 0, 0, 0, 0, 0, 0, 0}, "HH24:MI:SS.FF2", "00:00:00.00"},
      {{53, 88, 1, 1, 1, 1, 1, 0, 0, 0, 0}, "SYYYY-MM-DD", "-4712-01-01"},
      {{100, 100, 1, 1, 1, 1, 1, 0, 0, 0, 0}, "YYYY", "0000"},
      {{255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255}, "SYYYY", "15655"},
      {{255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255}, "MM DD HH24 MI SS FF5",
       "25 25 25 25 25 42949"},
      {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, "SYYYY", nullptr},  // -10100: six characters
      {{120, 124, 5, 17, 11, 21, 31, 0, 0, 0, 0}, "TZH", nullptr},
      {{120, 124, 5, 17, 11, 21, 31, 0, 0, 0, 0}, "HH24:MI:SS YYYY", "10:20:30 2024"},
  };
  for (const Case &c : cases) {
    char buf[64];
    std::memset(buf, '#', sizeof buf);
    const ub4 cap = 63;
    sb4 code = 0;
    const sword r = datetime180_to_text(c.bytes.data(), U(c.format), std::strlen(c.format), 0, &cap,
                                        reinterpret_cast<QWZtext *>(buf), &code);
    if (c.text) {
      EXPECT_EQ(r, 0) << c.format;
      EXPECT_STREQ(buf, c.text) << c.format;
    } else {
      EXPECT_EQ(r, -1) << c.format;
      EXPECT_EQ(buf[0], '#');
    }
    EXPECT_EQ(code, 0);
  }
}

}  // namespace
