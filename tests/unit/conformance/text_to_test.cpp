// QWZDateToText and QWZDateTimeToText, black box: the checks in order, each
// keyword's piece, the stop after the seconds for dates, fractions from the
// nanosecond count, year widths, zones, the buffer rule and the two setters.
#include "text_conf_util.h"

#include <string>
#include <vector>

using namespace text_conf;

namespace {

using qwz_test::kUtc;
using qwz_test::ZoneGuard;

class DateToTextConf : public TextFixture {};

struct OutCase {
  QWZDate date;
  const char *format;
  const char *want;  // NULL: fails with format_or_date
};

TEST_F(DateToTextConf, WritesFieldsUnderFormats) {
  const QWZDate d = make_date(2024, 5, 17, 10, 20, 30);
  const OutCase cases[] = {
      {d, "YYYY-MM-DD HH24:MI:SS", "2024-05-17 10:20:30"},
      {d, "DD.MM.YYYY", "17.05.2024"},
      {d, "yyyy/mm/dd hh:mi:ss", "2024/05/17 10:20:30"},
      {d, "HH12 HH", "10 10"},
      // Nothing after the seconds, literals included.
      {d, "HH24:MI:SS YYYY", "10:20:30"},
      {d, "SS.FF3", "30"},
      {d, "SS", "30"},
      // A date has no fraction: n zeros.
      {d, "FF1", "0"},
      {d, "MI.FF5", "20.00000"},
      // And no zone: the zone keywords give nothing.
      {d, "YYYY TZH:TZM", "2024 :"},
      {d, "TZH", nullptr},
      {d, "TZH:TZM", ":"},
      {d, "  YYYY  ", "2024"},
      {d, "-YYYY-", "-2024-"},
      {d, "YYYYMMDDHH24MISS", "20240517102030"},
      {make_date(999, 1, 2), "YYYY", "0999"},
      {make_date(1, 1, 2), "YYYY", "0001"},
      {make_date(-44, 3, 15), "YYYY-MM-DD", "-044-03-15"},
      {make_date(-999, 3, 15), "YYYY", "-999"},
      {make_date(-1000, 3, 15), "YYYY", nullptr},
      {make_date(-4712, 1, 1), "SYYYY-MM-DD", "-4712-01-01"},
      {make_date(-1000, 1, 1), "SYYYY", "-1000"},
      {make_date(-999, 1, 1), "SYYYY", nullptr},
      {make_date(2024, 1, 1), "SYYYY", nullptr},
      {make_date(9999, 12, 31, 23, 59, 59), "DD/MM/YYYY HH24.MI.SS", "31/12/9999 23.59.59"},
      // Literal letters and digits, repeats, empty and too long formats.
      {d, "YYYY-MM-DD T", nullptr},
      {d, "YYYY1", nullptr},
      {d, "DD DD", nullptr},
      {d, "FF3 FF5", nullptr},
      {d, "HH HH24", "10 10"},
      {d, "", nullptr},
      {d, "   ", nullptr},
  };
  for (const OutCase &c : cases) {
    SCOPED_TRACE(show(c.date) + " '" + c.format + "'");
    std::string out;
    const sword rc = date_to(c.date, c.format, out);
    if (c.want) {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_EQ(diag_seen(), none());
      EXPECT_EQ(out, c.want);
    } else {
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag_seen(), format_or_date());
      EXPECT_EQ(out, "");
    }
  }
}

TEST_F(DateToTextConf, UnsupportedKeywordsAreFormatStringErrors) {
  const QWZDate d = make_date(2024, 5, 17, 10, 20, 30);
  for (const char *fmt : {"DY", "MONTH", "Month", "DD-MON-YYYY", "YYYY-MM-DD AM", "YY",
                          "SSSSS", "MM TZR", "YYYY-MM-DD HH24:MI:SS X"}) {
    SCOPED_TRACE(fmt);
    std::string out;
    EXPECT_EQ(date_to(d, fmt, out), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), format_string());
    EXPECT_EQ(out, "");
  }
  // The first rule broken, in format order, decides.
  std::string out;
  EXPECT_EQ(date_to(d, "DD DD MON", out), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), format_or_date());
  EXPECT_EQ(date_to(d, "MON DD DD", out), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), format_string());
  EXPECT_EQ(date_to(d, "T MON", out), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), format_or_date());
  EXPECT_EQ(date_to(d, "MON T", out), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), format_string());
  // A repeat is judged at the keyword's first use: before a later flaw.
  EXPECT_EQ(date_to(d, "SS MON SS", out), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), format_or_date());
}

// The buffer: a capacity equal to the text's length is enough; one less
// fails, leaves the buffer alone, and the capacity is never rewritten.
TEST_F(DateToTextConf, BufferCapacity) {
  const QWZDate d = make_date(2024, 5, 17, 10, 20, 30);
  const std::string fmt = "YYYY-MM-DD HH24:MI:SS";
  for (ub4 cap : {19u, 20u, 255u, 0xFFFFFFFFu}) {
    char buf[64];
    std::memset(buf, '#', sizeof buf);
    ub4 size = cap;
    EXPECT_EQ(QWZDateToText(err_, &d, C(fmt), static_cast<ub1>(fmt.size()), nullptr, 0, &size,
                            reinterpret_cast<QWZtext *>(buf)),
              QWZ_SUCCESS);
    EXPECT_EQ(std::string(buf, 19), "2024-05-17 10:20:30");
    EXPECT_EQ(size, cap);
    if (cap > 19) {
      EXPECT_EQ(buf[19], '\0');
    }
    EXPECT_EQ(buf[20], '#');
  }
  for (ub4 cap : {0u, 1u, 18u}) {
    char buf[64];
    std::memset(buf, '#', sizeof buf);
    ub4 size = cap;
    EXPECT_EQ(QWZDateToText(err_, &d, C(fmt), static_cast<ub1>(fmt.size()), nullptr, 0, &size,
                            reinterpret_cast<QWZtext *>(buf)),
              QWZ_ERROR);
    EXPECT_EQ(diag_seen(), buf_too_small());
    EXPECT_EQ(size, cap);
    EXPECT_EQ(std::string(buf, sizeof buf), std::string(sizeof buf, '#'));
  }
}

// Checks in order: date, format, capacity, buffer (NULL), then the date's
// validity; the language is never looked at.
TEST_F(DateToTextConf, ChecksInOrder) {
  const QWZDate good = make_date(2024, 5, 17);
  const QWZDate bad = make_date(2024, 2, 30);
  const std::string fmt = "YYYY";
  ub4 size = 10;
  char buf[16] = {};
  auto *b = reinterpret_cast<QWZtext *>(buf);
  struct Case {
    const QWZDate *date;
    const QWZtext *format;
    ub4 *size;
    QWZtext *buf;
    Seen want;
  };
  const Case cases[] = {
      {nullptr, nullptr, nullptr, nullptr, null_param(2)},
      {&good, nullptr, nullptr, nullptr, null_param(3)},
      {&good, C(fmt), nullptr, nullptr, null_param(7)},
      {&bad, C(fmt), nullptr, b, null_param(7)},
      {&good, C(fmt), &size, nullptr, null_param(8)},
      {&bad, C(fmt), &size, nullptr, null_param(8)},
      {&bad, C(fmt), &size, b, date_format()},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(QWZDateToText(err_, c.date, c.format, 4, nullptr, 0, c.size, c.buf), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), c.want);
    EXPECT_EQ(buf[0], '\0');
  }
  for (const QWZDate &inv : {make_date(0, 1, 1), make_date(2024, 13, 1), make_date(10000, 1, 1),
                             make_date(2024, 1, 1, 24, 0, 0), make_date(2024, 1, 1, 0, 60, 0),
                             make_date(2024, 1, 1, 0, 0, 60)}) {
    EXPECT_EQ(QWZDateToText(err_, &inv, C(fmt), 4, nullptr, 0, &size, b), QWZ_ERROR);
    EXPECT_EQ(diag_seen(), date_format());
  }
  EXPECT_EQ(QWZDateToText(err_, &good, C(fmt), 4, C(std::string("x")), 1000, &size, b),
            QWZ_SUCCESS);
  EXPECT_STREQ(buf, "2024");
  expect_clear();
  for (QWZError *e : {static_cast<QWZError *>(nullptr), reinterpret_cast<QWZError *>(env_)})
    EXPECT_EQ(QWZDateToText(e, &good, C(fmt), 4, nullptr, 0, &size, b), QWZ_INVALID_HANDLE);
}

// Format lengths: lowered to the format's own length, the 127-character
// limit, and a length shorter than the format cuts it.
TEST_F(DateToTextConf, FormatLengths) {
  const QWZDate d = make_date(2024, 5, 17, 10, 20, 30);
  const std::string f127 = "YYYY" + std::string(123, '-');
  const std::string f128 = "YYYY" + std::string(124, '-');
  std::string out;
  EXPECT_EQ(date_to(d, f127, out, 255), QWZ_SUCCESS);
  EXPECT_EQ(out, "2024" + std::string(123, '-'));
  EXPECT_EQ(date_to(d, f128, out, 255), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), format_or_date());
  static const char kFmt[] = "YYYY-MM-DD HH24:MI:SS";
  for (ub1 len : {4, 10, 21, 22, 200, 255}) {
    char buf[64] = {};
    ub4 size = 64;
    ASSERT_EQ(QWZDateToText(err_, &d, reinterpret_cast<const QWZtext *>(kFmt), len, nullptr, 0,
                            &size, reinterpret_cast<QWZtext *>(buf)),
              QWZ_SUCCESS);
    EXPECT_EQ(std::string(buf), std::string("2024-05-17 10:20:30").substr(0, len < 21 ? len : 21));
  }
  // Formats in buffers of exactly their characters and their NUL.
  for (std::size_t n : {1u, 4u, 127u, 128u, 255u}) {
    std::vector<char> f(n + 1, '-');
    f[n] = '\0';
    std::memcpy(f.data(), "YYYY", std::min<std::size_t>(n, 4));
    char buf[300] = {};
    ub4 size = 300;
    const sword rc = QWZDateToText(err_, &d, reinterpret_cast<const QWZtext *>(f.data()),
                                   static_cast<ub1>(n), nullptr, 0, &size,
                                   reinterpret_cast<QWZtext *>(buf));
    if (n >= 4 && n <= 127) {
      EXPECT_EQ(rc, QWZ_SUCCESS) << n;
      EXPECT_EQ(std::string(buf), "2024" + std::string(n - 4, '-'));
    } else {
      // "Y" is a keyword of its own, and refused; the others are too long.
      EXPECT_EQ(rc, QWZ_ERROR) << n;
      EXPECT_EQ(diag_seen(), n < 4 ? format_string() : format_or_date());
    }
  }
}

// ---- QWZDateTimeToText -----------------------------------------------------

class DateTimeToTextConf : public TextFixture {};

TEST_F(DateTimeToTextConf, WritesFieldsUnderFormats) {
  ZoneGuard z(kUtc);
  struct Case {
    ub4 ns;
    const char *tz;
    const char *format;
    const char *want;
  };
  const Case cases[] = {
      {123456789, "+00:00", "YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 10:20:30.123"},
      {123456789, "+00:00", "SS.FF1 SS", nullptr},
      {123456789, "+00:00", "FF1|FF2", nullptr},
      {123456789, "+00:00", "SS.FF5", "30.12345"},
      {123000000, "+00:00", "SS.FF3", "30.123"},
      {5000000, "+00:00", "SS.FF3", "30.500"},
      {5000000, "+00:00", "SS.FF1", "30.5"},
      {0, "+00:00", "SS.FF3", "30.000"},
      {5, "+00:00", "SS.FF3", "30.005"},
      {50, "+00:00", "FF1 SS", "5 30"},
      {50, "+00:00", "FF3", "050"},
      {4294967295u, "+00:00", "FF5", "42949"},
      // No stop after the seconds for datetimes.
      {0, "+00:00", "SS YYYY", "30 2024"},
      {0, "-05:30", "TZH:TZM", "-05:30"},
      {0, "+00:00", "TZH:TZM", "+00:00"},
      {0, "+14:00", "TZHTZM", "+1400"},
      {0, "-12:00", "YYYY TZH", "2024 -12"},
      {0, "+05:45", "HH24:MI TZH:TZM", "10:20 +05:45"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(std::string(c.format) + " " + std::to_string(c.ns) + " " + c.tz);
    QWZDateTime *d = datetime_of(69, 2024, 5, 17, 10, 20, 30, c.ns, c.tz);
    std::string out;
    const sword rc = datetime_to(d, c.format, out);
    if (c.want) {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_EQ(diag_seen(), none());
      EXPECT_EQ(out, c.want);
    } else {
      // Repeats fail with nothing recorded.
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag_seen(), none());
      EXPECT_EQ(out, "");
    }
  }
}

TEST_F(DateTimeToTextConf, TypesAndYears) {
  ZoneGuard z(kUtc);
  std::string out;
  // A timestamp without a zone prints the zone fields it holds: zero.
  QWZDateTime *ts = datetime_of(68, 999, 1, 2, 3, 4, 5, 0);
  EXPECT_EQ(datetime_to(ts, "YYYY-MM-DD TZH:TZM", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "0999-01-02 +00:00");
  // A time has a zero date.
  QWZDateTime *t = datetime_of(66, 2024, 5, 17, 10, 20, 30, 0);
  EXPECT_EQ(datetime_to(t, "YYYY-MM-DD HH24:MI:SS", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "0000-00-00 10:20:30");
  // A date a zero time.
  QWZDateTime *d = datetime_of(65, 2024, 5, 17, 10, 20, 30, 0);
  EXPECT_EQ(datetime_to(d, "DD.MM.YYYY HH24:MI:SS.FF2", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "17.05.2024 00:00:00.00");
  // Year widths: silent failures for a datetime.
  QWZDateTime *neg = datetime_of(68, -4712, 1, 1, 0, 0, 0, 0);
  EXPECT_EQ(datetime_to(neg, "SYYYY-MM-DD", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "-4712-01-01");
  EXPECT_EQ(datetime_to(neg, "YYYY-MM-DD", out), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), none());
  QWZDateTime *n44 = datetime_of(68, -44, 3, 15, 0, 0, 0, 0);
  EXPECT_EQ(datetime_to(n44, "YYYY-MM-DD", out), QWZ_SUCCESS);
  EXPECT_EQ(out, "-044-03-15");
  EXPECT_EQ(datetime_to(n44, "SYYYY", out), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), none());
}

TEST_F(DateTimeToTextConf, FormatErrorsAndBuffer) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = datetime_of(68, 2024, 5, 17, 10, 20, 30, 0);
  std::string out;
  // Unsupported keywords: the date setter's format-string error.
  for (const char *fmt : {"DY", "MONTH", "YYYY-MON-DD", "TS"}) {
    EXPECT_EQ(datetime_to(d, fmt, out), QWZ_ERROR) << fmt;
    EXPECT_EQ(diag_seen(), format_string()) << fmt;
  }
  // Other format flaws: -1 and nothing recorded.
  for (const std::string &fmt : {std::string("YYYY-MM-DD T"), std::string("DD DD"),
                                 std::string(""), std::string("   "), std::string(128, '-'),
                                 std::string("TZH") + "", std::string("FF2 FF3")}) {
    EXPECT_EQ(datetime_to(d, fmt, out), fmt == "TZH" ? QWZ_SUCCESS : QWZ_ERROR) << fmt;
    EXPECT_EQ(diag_seen(), none()) << fmt;
  }
  // The buffer: the date setter's buffer error.
  const std::string fmt = "YYYY-MM-DD HH24:MI:SS";
  for (ub4 cap : {0u, 18u, 19u, 20u}) {
    char buf[32];
    std::memset(buf, '#', sizeof buf);
    ub4 size = cap;
    const sword rc = QWZDateTimeToText(env_, err_, d, C(fmt), static_cast<ub1>(fmt.size()), 0,
                                       nullptr, 0, &size, reinterpret_cast<QWZtext *>(buf));
    EXPECT_EQ(size, cap);
    if (cap >= 19) {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_EQ(std::string(buf, 19), "2024-05-17 10:20:30");
      expect_clear();
    } else {
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag_seen(), buf_too_small());
      EXPECT_EQ(std::string(buf, sizeof buf), std::string(sizeof buf, '#'));
    }
  }
  // The format length is not lowered, but the format is read no further
  // than its NUL; a shorter length cuts it; the precision changes nothing.
  static const char kFmt[] = "YYYY-MM-DD HH24:MI:SS.FF3";
  for (ub1 len : {4, 10, 25, 26, 255}) {
    for (ub1 prec : {0, 3, 9, 255}) {
      char buf[64] = {};
      ub4 size = 64;
      ASSERT_EQ(QWZDateTimeToText(env_, err_, d, reinterpret_cast<const QWZtext *>(kFmt), len,
                                  prec, nullptr, 0, &size, reinterpret_cast<QWZtext *>(buf)),
                QWZ_SUCCESS);
      EXPECT_EQ(std::string(buf),
                std::string("2024-05-17 10:20:30.000").substr(0, len < 25 ? len : 23));
    }
  }
}

TEST_F(DateTimeToTextConf, ChecksInOrder) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = datetime_of(68, 2024, 5, 17, 10, 20, 30, 0);
  const std::string fmt = "YYYY";
  ub4 size = 16;
  char buf[16] = {};
  auto *b = reinterpret_cast<QWZtext *>(buf);
  for (auto &[name, h] : bad_contexts()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(QWZDateTimeToText(h, err_, nullptr, nullptr, 0, 0, nullptr, 0, nullptr, nullptr),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  for (auto &[name, bad] : bad_datetimes()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(QWZDateTimeToText(env_, err_, bad, nullptr, 0, 0, nullptr, 0, nullptr, nullptr),
              QWZ_INVALID_HANDLE);
    expect_null_param(3);
  }
  EXPECT_EQ(QWZDateTimeToText(session_, err_, d, nullptr, 4, 0, nullptr, 0, nullptr, nullptr),
            QWZ_ERROR);
  expect_null_param(4);
  EXPECT_EQ(QWZDateTimeToText(env_, err_, d, C(fmt), 4, 0, nullptr, 0, nullptr, nullptr),
            QWZ_ERROR);
  expect_null_param(9);
  EXPECT_EQ(QWZDateTimeToText(env_, err_, d, C(fmt), 4, 0, nullptr, 0, &size, nullptr),
            QWZ_ERROR);
  expect_null_param(10);
  // An invalid value (left in a descriptor by a failed conversion).
  QWZDateTime *inv = new_datetime(68);
  ASSERT_EQ(datetime_from("2024-02-30", "YYYY-MM-DD", inv), QWZ_ERROR);
  EXPECT_EQ(QWZDateTimeToText(env_, err_, inv, C(fmt), 4, 0, nullptr, 0, &size, b), QWZ_ERROR);
  EXPECT_EQ(diag_seen(), datetime_date_format());
  EXPECT_EQ(buf[0], '\0');
  // Invalid value and a NULL buffer: the NULL is reported.
  EXPECT_EQ(QWZDateTimeToText(env_, err_, inv, C(fmt), 4, 0, nullptr, 0, &size, nullptr),
            QWZ_ERROR);
  expect_null_param(10);
  for (auto &[name, bad] : bad_error_handles()) {
    SCOPED_TRACE(name);
    EXPECT_EQ(QWZDateTimeToText(env_, bad, d, C(fmt), 4, 0, nullptr, 0, &size, b),
              QWZ_INVALID_HANDLE);
  }
  EXPECT_EQ(buf[0], '\0');
}

}  // namespace
