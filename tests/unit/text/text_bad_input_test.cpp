// Bad input to the text functions: every input gets its status and its
// diagnostic and nothing is read or written out of bounds. Texts and formats
// are read up to their NUL whatever length they are given with, so each
// lives in a heap block of exactly its characters and its NUL: the address
// sanitizer reports any byte read past them.
#include "text_test_util.h"

#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace qwz_test;
using namespace text_test;

namespace {

// A heap block holding exactly `s` and a NUL.
struct Block {
  explicit Block(const std::string &s) : size(s.size()), data(new QWZtext[s.size() + 1]) {
    std::memcpy(data.get(), s.data(), s.size());
    data[s.size()] = '\0';
  }
  std::size_t size;
  std::unique_ptr<QWZtext[]> data;
  QWZtext *p() const { return data.get(); }
};

const std::size_t kLengths[] = {0, 127, 128, 255, 256, 4096};

std::string digits_text(std::size_t n) { return std::string(n, '1'); }
std::string format_of(std::size_t n) {
  if (n < 10) return std::string("YYYY-MM-DD").substr(0, n);
  return "YYYY-MM-DD" + std::string(n - 10, '/');
}

class TextBadInput : public HandleFixture {
 protected:
  ZoneGuard zone_{kUtc};
};

TEST_F(TextBadInput, DateFromTextTextsOfEveryLength) {
  for (std::size_t n : kLengths) {
    const Block text(digits_text(n));
    const Block fmt(format_of(10));
    QWZDate d{};
    const sword r = QWZDateFromText(err_, text.p(), static_cast<ub4>(n), fmt.p(), 10, nullptr, 0, &d);
    if (n == 0) {
      EXPECT_EQ(r, -1);
      expect_diag(11104, "22007", kDateFormat);
    } else {
      // "1111", "11", "11": year 1111, November 11th; the rest is ignored.
      EXPECT_EQ(r, 0) << n;
      EXPECT_EQ(d, (QWZDate{1111, 11, 11, 0, 0, 0})) << n;
      expect_clear();
    }
  }
}

TEST_F(TextBadInput, DateFromTextFormatsOfEveryLength) {
  const Block text(std::string("2024-05-17"));
  for (std::size_t n : kLengths) {
    const Block fmt(format_of(n));
    // The length parameter is one byte wide: longer formats are given as 255.
    const ub1 given = static_cast<ub1>(n > 255 ? 255 : n);
    QWZDate d{7, 7, 7, 7, 7, 7};
    const sword r = QWZDateFromText(err_, text.p(), 10, fmt.p(), given, nullptr, 0, &d);
    if (n == 0) {
      EXPECT_EQ(r, -1);
      expect_diag(11104, "22007", kFormatString);
    } else if (n <= 127) {
      EXPECT_EQ(r, 0) << n;
      EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0}));
    } else {
      EXPECT_EQ(r, -1) << n;
      expect_clear();
      EXPECT_EQ(d, (QWZDate{7, 7, 7, 7, 7, 7}));
    }
  }
}

TEST_F(TextBadInput, DateTimeFromTextTextsAndFormatsOfEveryLength) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  for (std::size_t n : kLengths) {
    const Block text(digits_text(n));
    const Block fmt(format_of(10));
    const sword r = QWZDateTimeFromText(env_, err_, text.p(), n, fmt.p(), 10, nullptr, 0, dt);
    if (n == 0) {
      // An empty text does not match: the empty record fails the check.
      EXPECT_EQ(r, -1);
      expect_diag(22007, "22007", kDateTimeInvalid);
    } else {
      EXPECT_EQ(r, 0) << n;
      EXPECT_EQ(qwz::datetime_date(dt), (QWZDate{1111, 11, 11, 0, 0, 0}));
    }
  }
  const Block text(std::string("2024-05-17"));
  for (std::size_t n : kLengths) {
    const Block fmt(format_of(n));
    const ub1 given = static_cast<ub1>(n > 255 ? 255 : n);
    const sword r = QWZDateTimeFromText(env_, err_, text.p(), 10, fmt.p(), given, nullptr, 0, dt);
    if (n >= 10 && n <= 127) {
      EXPECT_EQ(r, 0) << n;
    } else {
      // Nothing to translate: an all-zero record, which the check refuses.
      EXPECT_EQ(r, -1) << n;
      expect_diag(22007, "22007", kDateTimeInvalid);
    }
  }
}

TEST_F(TextBadInput, ToTextFormatsOfEveryLength) {
  const QWZDate d{2024, 5, 17, 10, 20, 30};
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  qwz::set_datetime_date(dt, d);
  for (std::size_t n : kLengths) {
    const Block fmt(format_of(n));
    const ub1 given = static_cast<ub1>(n > 255 ? 255 : n);
    std::vector<QWZtext> out(200, '#');
    ub4 size = 200;
    const sword r = QWZDateToText(err_, &d, fmt.p(), given, nullptr, 0, &size, out.data());
    const sword r2 = QWZDateTimeToText(env_, err_, dt, fmt.p(), given, 0, nullptr, 0, &size, out.data());
    if (n >= 10 && n <= 127) {
      EXPECT_EQ(r, 0) << n;
      EXPECT_EQ(r2, 0) << n;
      EXPECT_EQ(std::string(reinterpret_cast<char *>(out.data()), n),
                "2024-05-17" + std::string(n - 10, '/'));
    } else {
      EXPECT_EQ(r, -1) << n;
      EXPECT_EQ(r2, -1) << n;
      expect_clear();  // the datetime function fails silently
    }
  }
}

TEST_F(TextBadInput, LengthsLargerShorterAndSizeMax) {
  QWZDate d{};
  // Larger than the (terminated) text: stops at the NUL.
  ASSERT_EQ(QWZDateFromText(err_, U("2024-05-17"), 0xFFFFFFFFu, U("YYYY-MM-DD"), 255, nullptr,
                            0xFFFFFFFFu, &d),
            0);
  EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0}));
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, M("2024-05-17"), SIZE_MAX, M("YYYY-MM-DD"), 10, nullptr,
                                0, dt),
            -1);
  expect_diag(800155, "", "string is too long for internal buffer.");
  ASSERT_EQ(QWZDateTimeFromText(env_, err_, M("2024-05-17"), SIZE_MAX - 1, M("YYYY-MM-DD"), 255,
                                M("x"), SIZE_MAX, dt),
            0);
  EXPECT_EQ(qwz::datetime_date(dt), (QWZDate{2024, 5, 17, 0, 0, 0}));
  // Shorter than the text: the text is cut at the given length.
  const Block text(std::string("2024-05-17"));
  ASSERT_EQ(QWZDateFromText(err_, text.p(), 7, U("YYYY-MM"), 7, nullptr, 0, &d), 0);
  EXPECT_EQ(d, (QWZDate{2024, 5, 1, 0, 0, 0}));
  // Leading blanks are trimmed before the cut, so they do not count.
  const Block padded(std::string("  2024-05-17"));
  ASSERT_EQ(QWZDateFromText(err_, padded.p(), 10, U("YYYY-MM-DD"), 10, nullptr, 0, &d), 0);
  EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0}));
  expect_clear();
}

TEST_F(TextBadInput, EmbeddedNulAndNonAsciiBytes) {
  QWZDate d{};
  const std::string with_nul("2024\0-05-17", 11);
  const Block a(with_nul);
  // The text ends at its NUL: "2024", and the required month is missing.
  EXPECT_EQ(QWZDateFromText(err_, a.p(), 11, U("YYYY-MM-DD"), 10, nullptr, 0, &d), -1);
  expect_clear();
  const Block f(std::string("YYYY\0-MM-DD", 11));
  ASSERT_EQ(QWZDateFromText(err_, U("2024-05-17"), 10, f.p(), 11, nullptr, 0, &d), 0);
  YearMonth now = local_year_month();
  EXPECT_EQ(d.year, 2024);
  EXPECT_EQ(d.month, now.month);
  // Bytes outside ASCII are neither digits nor letters.
  const Block b(std::string("2024\xc3\xa9" "05-17\xff\xfe"));
  ASSERT_EQ(QWZDateFromText(err_, b.p(), static_cast<ub4>(b.size), U("YYYY-MM-DD"), 10, nullptr, 0, &d), 0);
  EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0}));
  const Block fmt_hi(std::string("YYYY\xe2\x80\x93MM\xe2\x80\x93" "DD"));
  ASSERT_EQ(QWZDateFromText(err_, U("2024/05/17"), 10, fmt_hi.p(), static_cast<ub1>(fmt_hi.size),
                            nullptr, 0, &d),
            0);
  // Three literal tokens per dash; a literal never takes a digit, so the
  // extra ones pass over nothing.
  EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0}));
  QWZtext out[64];
  ub4 size = 63;
  const QWZDate v{2024, 5, 17, 0, 0, 0};
  ASSERT_EQ(QWZDateToText(err_, &v, fmt_hi.p(), static_cast<ub1>(fmt_hi.size), nullptr, 0, &size, out), 0);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(out)), "2024\xe2\x80\x93" "05\xe2\x80\x93" "17");
}

TEST_F(TextBadInput, EveryPunctuationCharacter) {
  for (int c = 33; c < 127; ++c) {
    const bool alnum = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (alnum) continue;
    const char s = static_cast<char>(c);
    // As the text's separator under the usual format.
    const Block text(std::string("2024") + s + "05" + s + "17");
    QWZDate d{};
    ASSERT_EQ(QWZDateFromText(err_, text.p(), 10, U("YYYY-MM-DD"), 10, nullptr, 0, &d), 0) << c;
    EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0})) << c;
    // As the format's literal, both ways.
    const Block fmt(std::string("YYYY") + s + "MM" + s + "DD");
    ASSERT_EQ(QWZDateFromText(err_, text.p(), 10, fmt.p(), 10, nullptr, 0, &d), 0) << c;
    EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0})) << c;
    // Capacity 10 for 10 characters: the terminator takes the 11th byte.
    std::vector<QWZtext> out(11, '#');
    ub4 size = 10;
    ASSERT_EQ(QWZDateToText(err_, &d, fmt.p(), 10, nullptr, 0, &size, out.data()), 0) << c;
    EXPECT_EQ(std::memcmp(out.data(), text.p(), 11), 0) << c;
    // A whole text of it.
    const Block junk(std::string(40, s));
    EXPECT_EQ(QWZDateFromText(err_, junk.p(), 40, U("YYYY-MM-DD"), 10, nullptr, 0, &d), -1) << c;
    expect_clear();
  }
}

TEST_F(TextBadInput, NullForEveryPointer) {
  QWZDate d{2024, 5, 17, 0, 0, 0};
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  qwz::set_datetime_date(dt, d);
  ub4 size = 63;
  QWZtext buf[64];
  const QWZtext *t = U("2024-05-17"), *f = U("YYYY-MM-DD");
  // Every combination of NULL pointers: never a crash; -1 with a diagnostic
  // or the validator's value.
  for (int mask = 0; mask < 16; ++mask) {
    const bool n0 = mask & 1, n1 = mask & 2, n2 = mask & 4, n3 = mask & 8;
    sword r = QWZDateFromText(err_, n0 ? nullptr : t, 10, n1 ? nullptr : f, 10, n2 ? nullptr : t, 2,
                              n3 ? nullptr : &d);
    EXPECT_EQ(r, (n0 || n1 || n3) ? -1 : 0) << mask;
    r = QWZDateToText(err_, n0 ? nullptr : &d, n1 ? nullptr : f, 10, n2 ? nullptr : t, 2,
                      n3 ? nullptr : &size, buf);
    EXPECT_EQ(r, (n0 || n1 || n3) ? -1 : 0) << mask;
    r = QWZDateTimeFromText(n0 ? nullptr : env_, err_, n1 ? nullptr : M("2024-05-17"), 10,
                            n2 ? nullptr : M("YYYY-MM-DD"), 10, nullptr, 0, n3 ? nullptr : dt);
    EXPECT_EQ(r, (n0 || n3) ? QWZ_INVALID_HANDLE : (n1 || n2) ? -1 : 0) << mask;
    r = QWZDateTimeToText(n0 ? nullptr : env_, err_, n1 ? nullptr : dt, n2 ? nullptr : f, 10, 0,
                          nullptr, 0, n3 ? nullptr : &size, n3 ? nullptr : buf);
    EXPECT_EQ(r, (n0 || n1) ? QWZ_INVALID_HANDLE : (n2 || n3) ? -1 : 0) << mask;
  }
  EXPECT_EQ(QWZDateFromText(nullptr, nullptr, 0, nullptr, 0, nullptr, 0, nullptr), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDateToText(nullptr, nullptr, nullptr, 0, nullptr, 0, nullptr, nullptr), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDateTimeFromText(nullptr, nullptr, nullptr, 0, nullptr, 0, nullptr, 0, nullptr),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDateTimeToText(nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr, 0, nullptr, nullptr),
            QWZ_INVALID_HANDLE);
  // The internal routines refuse NULL too.
  datetime_fields fields{};
  sb4 code = 0;
  EXPECT_EQ(qwz_char_to_datetime(nullptr, 10, f, 10, &fields, 0, &code), 0);
  EXPECT_EQ(qwz_char_to_datetime(t, 10, nullptr, 10, &fields, 0, &code), 0);
  EXPECT_EQ(qwz_char_to_datetime(t, 10, f, 10, nullptr, 0, nullptr), 1);
  EXPECT_EQ(char_to_datetime(nullptr, nullptr, &fields), 0);
  EXPECT_EQ(date_from_text(err_, nullptr, 10, f, 10, &d), -1);
  EXPECT_EQ(append_timezone_from_text(err_, nullptr, 6, U("TZH:TZM"), 7, dt), -1);
  EXPECT_EQ(append_timezone_from_text(err_, U("+01:00"), 6, U("TZH:TZM"), 7, nullptr), -1);
  EXPECT_EQ(date_from_text(err_, t, 10, f, 10, nullptr), -1);
  EXPECT_EQ(datetime_from_text(err_, t, 10, f, 10, nullptr), -1);
  EXPECT_EQ(qwz_datetime_to_char(&fields, f, 10, 0, buf, nullptr, &code, 1), 0);
  EXPECT_EQ(qwz_datetime_to_char(&fields, f, 10, 0, nullptr, &size, &code, 1), 0);
  EXPECT_EQ(qwz_datetime_to_char(nullptr, f, 10, 0, buf, &size, &code, 1), 0);
  EXPECT_EQ(date_to_text(nullptr, f, 10, 0, &size, buf, &code), -1);
  EXPECT_EQ(datetime_to_text(nullptr, f, 10, 0, &size, buf, &code), -1);
  EXPECT_EQ(datetime180_to_text(nullptr, f, 10, 0, &size, buf, &code), -1);
  EXPECT_EQ(datetime_to_char(nullptr, 0, nullptr, &fields, 0), 0);
}

// The text and its terminator are written once the stated capacity holds
// the text's length, so a buffer one byte larger than the capacity takes
// them: nothing lands past it.
TEST_F(TextBadInput, OutputBufferOfOneByteMoreThanTheStatedCapacity) {
  const QWZDate d{2024, 5, 17, 10, 20, 30};
  for (ub4 cap = 0; cap <= 21; ++cap) {
    std::unique_ptr<QWZtext[]> out(new QWZtext[cap + 1]);
    ub4 size = cap;
    const sword r = QWZDateToText(err_, &d, U("YYYY-MM-DD HH24:MI:SS"), 21, nullptr, 0, &size,
                                  out.get());
    EXPECT_EQ(r, cap >= 19 ? 0 : -1) << cap;
    if (cap >= 19) {
      EXPECT_EQ(std::memcmp(out.get(), "2024-05-17 10:20:30", 20), 0);
    }
  }
}

TEST_F(TextBadInput, RandomTextsAndFormatsNeverFault) {
  std::mt19937 rng(424242);
  const char *formats[] = {"YYYY-MM-DD", "YYYY-MM-DD HH24:MI:SS.FF3", "SYYYY/MM/DD TZH:TZM",
                           "DD.MM.YYYY HH12:MI", "FF5", "TZH:TZM"};
  const char alphabet[] = "0123456789-+/:. ,xYT\xff\x01";
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  for (int i = 0; i < 3000; ++i) {
    const std::size_t n = std::uniform_int_distribution<std::size_t>(0, 300)(rng);
    std::string s(n, ' ');
    for (char &c : s) c = alphabet[std::uniform_int_distribution<int>(0, sizeof alphabet - 2)(rng)];
    const Block text(s);
    const char *fmt = formats[i % 6];
    QWZDate d{};
    sword r = QWZDateFromText(err_, text.p(), static_cast<ub4>(n), U(fmt),
                              static_cast<ub1>(std::strlen(fmt)), nullptr, 0, &d);
    ASSERT_TRUE(r == 0 || r == -1);
    if (r == 0) {
      uword flags = 1;
      date_check(err_, &d, &flags);
      ASSERT_EQ(flags, 0u);
    }
    r = QWZDateTimeFromText(env_, err_, text.p(), n, M(fmt), static_cast<ub1>(std::strlen(fmt)),
                            nullptr, 0, dt);
    ASSERT_TRUE(r == 0 || r == -1);
    // Random formats too.
    std::string f(std::uniform_int_distribution<std::size_t>(0, 140)(rng), ' ');
    const char fmt_alphabet[] = "YMDHSFTZI0123456789-:. ";
    for (char &c : f)
      c = fmt_alphabet[std::uniform_int_distribution<int>(0, sizeof fmt_alphabet - 2)(rng)];
    const Block fb(f);
    r = QWZDateFromText(err_, text.p(), static_cast<ub4>(n), fb.p(), static_cast<ub1>(f.size()),
                        nullptr, 0, &d);
    ASSERT_TRUE(r == 0 || r == -1);
    std::vector<QWZtext> out(40);
    ub4 size = 40;
    const QWZDate v{2024, 5, 17, 10, 20, 30};
    r = QWZDateToText(err_, &v, fb.p(), static_cast<ub1>(f.size()), nullptr, 0, &size, out.data());
    ASSERT_TRUE(r == 0 || r == -1);
  }
}

}  // namespace
