// Intervals as text and back through the public interface: the written
// shapes and their sign rules, the buffer test, the two scanners' accepted
// and refused texts, the range messages, the order of the checks, trace
// records, and text round trips over generated values.
#include "interval_conformance.h"

#include <climits>
#include <cstring>
#include <memory>
#include <random>

using namespace qwz_conf;

namespace {

const QWZText *txt(const char *s) { return reinterpret_cast<const QWZText *>(s); }

struct TextCase {
  ub4 kind;
  Fields v;  // year, month for kind 62
  ub1 lfprec, fsprec;
  const char *text;
};

const TextCase kToText[] = {
    {kYM, {1, 2}, 2, 0, "+01-02"},
    {kYM, {-1, -2}, 2, 0, "-01-02"},
    {kYM, {0, 0}, 2, 0, "+00-00"},
    {kYM, {1, -2}, 2, 0, "-01-02"},
    {kYM, {-1, 0}, 2, 0, "-01-00"},
    {kYM, {0, -3}, 0, 0, "-0-03"},
    {kYM, {0, 0}, 0, 0, "+0-00"},
    {kYM, {12, 3}, 0, 0, "+12-03"},
    {kYM, {123456, 11}, 2, 0, "+123456-11"},
    {kYM, {1, 2}, 2, 5, "+01-02"},  // no fraction in this shape
    {kYM, {5, 1}, 200, 0, "+000000005-01"},
    {kYM, {1, 2}, 10, 0, "+000000001-02"},
    {kYM, {9, 2}, 9, 0, "+000000009-02"},
    {kYM, {INT32_MAX, 11}, 0, 0, "+2147483647-11"},
    {kYM, {-INT32_MAX, -11}, 1, 0, "-2147483647-11"},
    // No fraction printed: '+' only when every field, fraction too, is > 0.
    {kDS, {1, 2, 3, 4, 0}, 2, 0, "-01 02:03:04"},
    {kDS, {1, 2, 3, 4, 1}, 2, 0, "+01 02:03:04"},
    {kDS, {1, 0, 3, 4, 1}, 2, 0, "-01 00:03:04"},
    {kDS, {1, 1, 1, 1, -1}, 2, 0, "-01 01:01:01"},
    {kDS, {0, 0, 0, 0, 0}, 2, 0, "-00 00:00:00"},
    {kDS, {-5, 0, 0, 0, 0}, 2, 0, "-05 00:00:00"},
    {kDS, {-1, -2, -3, -4, -5}, 0, 0, "-1 02:03:04"},
    {kDS, {1234, 1, 2, 3, 4}, 2, 0, "+1234 01:02:03"},
    {kDS, {5, 6, 7, 8, 9}, 200, 0, "+000000005 06:07:08"},
    // With a fraction: '+' when every field is >= 0.
    {kDS, {1, 2, 3, 4, 12345}, 1, 3, "+1 02:03:04.123"},
    {kDS, {0, 0, 0, 0, 5}, 1, 3, "+0 00:00:00.005"},
    {kDS, {0, 0, 0, 0, 50000}, 1, 2, "+0 00:00:00.50"},
    {kDS, {1, 2, 3, 4, 12345}, 2, 7, "+01 02:03:04.12345"},
    {kDS, {1, 2, 3, 4, 12345}, 2, 255, "+01 02:03:04.12345"},
    {kDS, {0, 0, 0, 0, 0}, 2, 2, "+00 00:00:00.00"},
    {kDS, {0, 0, 0, 0, 0}, 0, 1, "+0 00:00:00.0"},
    {kDS, {1, 2, 3, 4, 0}, 2, 1, "+01 02:03:04.0"},
    {kDS, {-1, -2, -3, -4, -12345}, 2, 5, "-01 02:03:04.12345"},
    {kDS, {-1, -2, -3, -4, -5}, 2, 3, "-01 02:03:04.005"},
    {kDS, {1, -2, 3, 4, 5}, 2, 1, "-01 02:03:04.5"},
    {kDS, {0, 0, 0, 0, -1}, 2, 1, "-00 00:00:00.1"},
    {kDS, {0, 0, 0, 0, 99999}, 0, 1, "+0 00:00:00.9"},
    {kDS, {0, 0, 0, 0, 10}, 0, 1, "+0 00:00:00.1"},
    {kDS, {0, 0, 0, 0, 12}, 0, 5, "+0 00:00:00.00012"},
    {kDS, {0, 0, 0, 0, 12}, 0, 2, "+0 00:00:00.12"},
    {kDS, {0, 0, 0, 0, 123}, 0, 2, "+0 00:00:00.12"},
    {kDS, {0, 0, 0, 0, -12345}, 0, 2, "-0 00:00:00.12"},
    {kDS, {0, 0, 0, 0, 10000}, 0, 5, "+0 00:00:00.10000"},
    {kDS, {0, 0, 0, 0, 10000}, 0, 1, "+0 00:00:00.1"},
    {kDS, {5, 23, 59, 59, 99999}, 200, 200, "+000000005 23:59:59.99999"},
    {kDS, {999999999, 23, 59, 59, 99999}, 9, 5, "+999999999 23:59:59.99999"},
    {kDS, {-999999999, -23, -59, -59, -99999}, 9, 5, "-999999999 23:59:59.99999"},
    {kDS, {INT32_MAX, 23, 59, 59, 99999}, 9, 5, "+2147483647 23:59:59.99999"},
    // The magnitude of the most negative leading field has ten digits.
    {kDS, {INT32_MIN, -23, -59, -59, -99999}, 9, 5, "-2147483648 23:59:59.99999"},
    {kYM, {INT32_MIN, 0}, 2, 0, "-2147483648-00"},
};

}  // namespace

class QWZIntervalToTextShape : public IntervalConformance {
 protected:
  QWZInterval *make(const TextCase &c) {
    return c.kind == kYM ? ym(c.v[0], c.v[1]) : ds(c.v);
  }
};

TEST_F(QWZIntervalToTextShape, Table) {
  for (const TextCase &c : kToText) {
    QWZInterval *iv = make(c);
    QWZtext buf[64] = {};
    size_t len = 999;
    leave_diag();
    ASSERT_EQ(QWZIntervalToText(env_, err_, iv, c.lfprec, c.fsprec, buf, sizeof buf, &len),
              QWZ_SUCCESS)
        << c.text;
    expect_clear();
    EXPECT_STREQ(reinterpret_cast<char *>(buf), c.text);
    EXPECT_EQ(len, std::strlen(c.text));
  }
}

TEST_F(QWZIntervalToTextShape, LongestTextsFitBuffersOfTheirOwnSize) {
  for (const TextCase &c : kToText) {
    const size_t n = std::strlen(c.text) + 1;
    auto buf = std::make_unique<QWZtext[]>(n);
    buf[0] = 0;
    size_t len = 0;
    ASSERT_EQ(QWZIntervalToText(env_, err_, make(c), c.lfprec, c.fsprec, buf.get(), n, &len),
              QWZ_SUCCESS);
    EXPECT_STREQ(reinterpret_cast<char *>(buf.get()), c.text);
    EXPECT_EQ(len, n - 1);
  }
}

class QWZIntervalToTextBuffer : public IntervalConformance {};

TEST_F(QWZIntervalToTextBuffer, MeasuresWhatTheBufferAlreadyHolds) {
  QWZInterval *iv = ym(1, 2);
  QWZtext buf[64] = {};
  std::memcpy(buf, "abcdefghij", 10);
  size_t len = 999;
  // As long as buf_size, or longer: refused even though the text would fit.
  EXPECT_EQ(QWZIntervalToText(env_, err_, iv, 2, 0, buf, 10, &len), QWZ_ERROR);
  expect_buf_too_small();
  EXPECT_EQ(QWZIntervalToText(env_, err_, iv, 2, 0, buf, 3, &len), QWZ_ERROR);
  expect_buf_too_small();
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "abcdefghij");
  EXPECT_EQ(len, 999u);
  // One shorter than buf_size passes and is overwritten.
  EXPECT_EQ(QWZIntervalToText(env_, err_, iv, 2, 0, buf, 11, &len), QWZ_SUCCESS);
  expect_clear();
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "+01-02");
  EXPECT_EQ(len, 6u);
  // buf_size 0 refuses even an empty buffer.
  buf[0] = 0;
  EXPECT_EQ(QWZIntervalToText(env_, err_, iv, 2, 0, buf, 0, &len), QWZ_ERROR);
  expect_buf_too_small();
}

TEST_F(QWZIntervalToTextBuffer, TextIsWrittenWholeOnceTheTestPasses) {
  // The test looks at the buffer's present string only; the text written
  // after it is not bounded by buf_size.
  QWZInterval *iv = ds(1, 2, 3, 4, 12345);
  QWZtext buf[64] = {};
  size_t len = 0;
  EXPECT_EQ(QWZIntervalToText(env_, err_, iv, 2, 5, buf, 1, &len), QWZ_SUCCESS);
  expect_clear();
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "+01 02:03:04.12345");
  EXPECT_EQ(len, 18u);
  std::memcpy(buf, "abc", 4);
  EXPECT_EQ(QWZIntervalToText(env_, err_, ym(-3, -4), 4, 0, buf, 4, &len), QWZ_SUCCESS);
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "-0003-04");
  EXPECT_EQ(len, 8u);
}

TEST_F(QWZIntervalToTextBuffer, CheckOrder) {
  QWZtext buf[64] = {};
  std::memcpy(buf, "xyz", 4);
  size_t len = 999;
  QWZInterval *good = ds(1, 2, 3, 4, 5);
  QWZInterval *bad_value = ds(0, 24, 0, 0, 0);
  EXPECT_EQ(QWZIntervalToText(env_, err_, good, 2, 2, nullptr, 64, &len), QWZ_ERROR);
  expect_null_param(6);
  EXPECT_EQ(QWZIntervalToText(env_, err_, good, 2, 2, buf, 64, nullptr), QWZ_ERROR);
  expect_null_param(8);
  EXPECT_EQ(QWZIntervalToText(env_, err_, bad_value, 2, 2, nullptr, 64, nullptr), QWZ_ERROR);
  expect_null_param(6);
  EXPECT_EQ(QWZIntervalToText(env_, err_, bad_value, 2, 2, buf, 0, nullptr), QWZ_ERROR);
  expect_null_param(8);
  // The value's check comes before the buffer test.
  const Fields invalid[] = {{0, 24, 0, 0, 0},      {0, 0, 60, 0, 0},      {0, 0, 0, -60, 0},
                            {0, 0, 0, 0, 100000},  {0, 0, 0, 0, 999999},  {0, -24, 0, 0, 0},
                            {INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN}};
  for (const Fields &v : invalid) {
    EXPECT_EQ(QWZIntervalToText(env_, err_, ds(v), 2, 2, buf, 1, &len), QWZ_ERROR);
    expect_interval_invalid(3);
  }
  EXPECT_EQ(QWZIntervalToText(env_, err_, ym(0, 12), 2, 2, buf, 1, &len), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(QWZIntervalToText(env_, err_, ym(0, INT32_MIN), 2, 2, buf, 64, &len), QWZ_ERROR);
  expect_interval_invalid(3);
  for (const QWZInterval *bad : bad_descriptors()) {
    EXPECT_EQ(QWZIntervalToText(env_, err_, bad, 2, 2, nullptr, 0, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  for (void *h : bad_contexts()) {
    EXPECT_EQ(QWZIntervalToText(h, err_, nullptr, 2, 2, nullptr, 0, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "xyz");
  EXPECT_EQ(len, 999u);
}

TEST_F(QWZIntervalToTextBuffer, TextReadWithASixDigitFractionCannotBeWrittenBack) {
  QWZInterval *iv = new_interval(kDS);
  ASSERT_EQ(QWZIntervalFromText(env_, err_, txt("1 2:3:4.123456"), 14, iv), QWZ_SUCCESS);
  EXPECT_EQ(get_ds(iv), (Fields{1, 2, 3, 4, 123456}));
  QWZtext buf[64] = {};
  size_t len = 0;
  EXPECT_EQ(QWZIntervalToText(env_, err_, iv, 9, 5, buf, sizeof buf, &len), QWZ_ERROR);
  expect_interval_invalid(3);
}

class QWZIntervalFromTextParse : public IntervalConformance {
 protected:
  // Parses into a fresh descriptor of the kind holding a marker value; the
  // status and the fields read back.
  sword parse(ub4 kind, const char *s, Fields *out) {
    QWZInterval *iv = kind == kYM ? ym(4321, 5) : ds(4321, 5, 6, 7, 8);
    const sword st = QWZIntervalFromText(env_, err_, txt(s), std::strlen(s), iv);
    last_ = diag();  // before the getters clear it
    if (kind == kYM) {
      const YearMonth v = get_ym(iv);
      *out = {v.first, v.second, 0, 0, 0};
    } else {
      *out = get_ds(iv);
    }
    return st;
  }
  // The diagnostic parse() left, as QWZErrorGet read it.
  void expect_last(sb4 number, const char *message) {
    EXPECT_EQ(last_.rc, QWZ_SUCCESS);
    EXPECT_EQ(last_.number, number);
    EXPECT_EQ(last_.message, message);
  }
  void expect_parsed(ub4 kind, const char *s, const Fields &want) {
    Fields got{};
    leave_diag();
    EXPECT_EQ(parse(kind, s, &got), QWZ_SUCCESS) << '"' << s << '"';
    EXPECT_EQ(last_.rc, QWZ_NO_DATA);
    EXPECT_EQ(got, want) << '"' << s << '"';
  }
  void expect_refused(ub4 kind, const char *s, sb4 number, const char *message) {
    Fields got{};
    EXPECT_EQ(parse(kind, s, &got), QWZ_ERROR) << '"' << s << '"';
    expect_last(number, message);
    const Fields marker = kind == kYM ? Fields{4321, 5, 0, 0, 0} : Fields{4321, 5, 6, 7, 8};
    EXPECT_EQ(got, marker) << '"' << s << '"';
  }
  Diag last_;
};

namespace {
constexpr const char kLiteral[] = "the literal string is invalid.";
constexpr const char kDayRange[] = "the day is out of range(0 to 999999999).";
constexpr const char kHourRange[] = "the hour is out of range(0 to 23).";
constexpr const char kMinuteRange[] = "the minute is out of range(0 to 59).";
constexpr const char kSecondRange[] = "the second is out of range(0 to 59).";
constexpr const char kFractionRange[] = "the fraction is out of range(0 to 999999).";
constexpr const char kYearRange[] = "the year is out of range(0 to 9999).";
constexpr const char kMonthRange[] = "the month is out of range (0 to 11).";
}  // namespace

TEST_F(QWZIntervalFromTextParse, YearMonthAccepted) {
  const struct {
    const char *s;
    sb4 y, m;
  } cases[] = {
      {"1-2", 1, 2},         {"+0001-02", 1, 2},   {"- 12 - 3", -12, -3}, {"  -5-11  ", -5, -11},
      {"-1-6", -1, -6},      {"0-0", 0, 0},        {"-0-0", 0, 0},        {"9999-11", 9999, 11},
      {"-9999-11", -9999, -11}, {"+ 1 - 0", 1, 0}, {"1 -2", 1, 2},        {"00000-00011", 0, 11},
  };
  for (const auto &c : cases) expect_parsed(kYM, c.s, {c.y, c.m, 0, 0, 0});
}

TEST_F(QWZIntervalFromTextParse, YearMonthRefused) {
  const char *refused[] = {"1",     "1-",    "-1",    "1-2-3", "+-1-2", "1-2x", "1 2-3",
                           "1-2 3", "",      "   ",   "-",     "--1-2", "1--2", "1-+2",
                           "+1+-2", "a1-2",  "1-2.",  "1\t-2", "1:2",   "-+1-2", "++1-2",
                           "1-2-",  "+",     "1 - - 2"};
  for (const char *s : refused) expect_refused(kYM, s, 800072, kLiteral);
}

TEST_F(QWZIntervalFromTextParse, YearMonthRanges) {
  expect_refused(kYM, "1-12", 800082, kMonthRange);
  expect_refused(kYM, "-1-12", 800082, kMonthRange);
  expect_refused(kYM, "10000-0", 800081, kYearRange);
  expect_refused(kYM, "-10000-0", 800081, kYearRange);
  // The year is tested first.
  expect_refused(kYM, "10000-12", 800081, kYearRange);
  // Groups too long for 32 bits still get a range error.
  expect_refused(kYM, "99999999999-0", 800081, kYearRange);
  expect_refused(kYM, "4294967297-0", 800081, kYearRange);
  expect_refused(kYM, "1-99999999999", 800082, kMonthRange);
  expect_refused(kYM, "1-4294967296", 800082, kMonthRange);
  expect_refused(kYM, "99999999999999999999999999999999-99999999999999999999", 800081,
                 kYearRange);
}

TEST_F(QWZIntervalFromTextParse, DaySecondAccepted) {
  const struct {
    const char *s;
    Fields f;
  } cases[] = {
      {"1 02:03:04", {1, 2, 3, 4, 0}},
      {"-3 4:5:6.789", {-3, -4, -5, -6, -789}},
      {"  +0 00 : 00 : 01 . 5  ", {0, 0, 0, 1, 5}},
      {"0 0:0:0.5", {0, 0, 0, 0, 5}},
      {"0 0:0:0.50000", {0, 0, 0, 0, 50000}},
      {"1 2:3:4.123456", {1, 2, 3, 4, 123456}},
      {"1 2:3:4.0000001", {1, 2, 3, 4, 1}},
      {"999999999 23:59:59.999999", {999999999, 23, 59, 59, 999999}},
      {"-999999999 23:59:59.999999", {-999999999, -23, -59, -59, -999999}},
      {"- 1 2:3:4", {-1, -2, -3, -4, 0}},
      {"1    2:3:4", {1, 2, 3, 4, 0}},
      {"1 2 :3 :4 ", {1, 2, 3, 4, 0}},
      {"0 0:0:0", {0, 0, 0, 0, 0}},
      {"1 2:3:4 .5", {1, 2, 3, 4, 5}},
  };
  for (const auto &c : cases) expect_parsed(kDS, c.s, c.f);
}

TEST_F(QWZIntervalFromTextParse, DaySecondRefused) {
  const char *refused[] = {
      "1:02:03:04", "1 02:03",      "1 02:03:04.",  "02:03:04",   "1 2:3:4:5",  "1 2 3:4:5",
      "1 2:3:4.5.6", "1 2:3:4 5",   "1,2:3:4",      "1 2:3:4/",   "1\t2:3:4",   "1 2:3:4a",
      "1- 2:3:4",   "--1 2:3:4",    "+-1 2:3:4",    "1 2:3:.4",   "1 2::3:4",   "1 2:3",
      "",           " ",            "1",            "1 2",        "1 2:3:4.5 6", "1 2:3:4 .",
      "1 +2:3:4",   "1 2:-3:4",     ". 1 2:3:4",    "1 2:3:4;",   "1 2.3:4:5",  "1 2:3.4:5",
      "1 2:3:4:",   "12:3:4",       "1 :2:3:4",     "1 2:3:4 . ",
  };
  for (const char *s : refused) expect_refused(kDS, s, 800072, kLiteral);
}

TEST_F(QWZIntervalFromTextParse, DaySecondRangesInOrder) {
  expect_refused(kDS, "1 24:00:00", 800075, kHourRange);
  expect_refused(kDS, "1 02:03:04.1234567", 800080, kFractionRange);
  expect_refused(kDS, "1000000000 0:0:0", 800074, kDayRange);
  expect_refused(kDS, "-1000000000 0:0:0", 800074, kDayRange);
  expect_refused(kDS, "1 0:60:0", 800077, kMinuteRange);
  expect_refused(kDS, "1 0:0:60", 800078, kSecondRange);
  expect_refused(kDS, "-1 0:0:60", 800078, kSecondRange);
  expect_refused(kDS, "1000000000 24:60:60.1234567", 800074, kDayRange);
  expect_refused(kDS, "1 24:60:60.1234567", 800075, kHourRange);
  expect_refused(kDS, "1 0:60:60.1234567", 800077, kMinuteRange);
  expect_refused(kDS, "1 0:0:60.1234567", 800078, kSecondRange);
  // Groups too long for 32 bits.
  expect_refused(kDS, "4294967296 0:0:0", 800074, kDayRange);
  expect_refused(kDS, "1 4294967296:0:0", 800075, kHourRange);
  expect_refused(kDS, "1 0:99999999999:0", 800077, kMinuteRange);
  expect_refused(kDS, "1 0:0:4294967355", 800078, kSecondRange);
  expect_refused(kDS, "1 0:0:0.4294967296", 800080, kFractionRange);
}

TEST_F(QWZIntervalFromTextParse, EveryCharacterBeforeAndAfter) {
  for (int c = 1; c < 256; ++c) {
    const char ch = static_cast<char>(c);
    const bool digit = c >= '0' && c <= '9';
    {
      const std::string s = std::string(1, ch) + "1-2";
      Fields got{};
      const sword st = parse(kYM, s.c_str(), &got);
      if (c == ' ' || c == '+') {
        EXPECT_EQ(st, 0) << c;
        EXPECT_EQ(got, (Fields{1, 2, 0, 0, 0})) << c;
      } else if (c == '-') {
        EXPECT_EQ(st, 0);
        EXPECT_EQ(got, (Fields{-1, -2, 0, 0, 0}));
      } else if (digit) {
        EXPECT_EQ(st, 0) << c;
        EXPECT_EQ(got, (Fields{(c - '0') * 10 + 1, 2, 0, 0, 0})) << c;
      } else {
        EXPECT_EQ(st, QWZ_ERROR) << c;
        expect_last(800072, kLiteral);
      }
    }
    {
      const std::string s = std::string(1, ch) + "1 2:3:4";
      Fields got{};
      const sword st = parse(kDS, s.c_str(), &got);
      if (c == ' ' || c == '+') {
        EXPECT_EQ(st, 0) << c;
        EXPECT_EQ(got, (Fields{1, 2, 3, 4, 0})) << c;
      } else if (c == '-') {
        EXPECT_EQ(st, 0);
        EXPECT_EQ(got, (Fields{-1, -2, -3, -4, 0}));
      } else if (digit) {
        EXPECT_EQ(st, 0) << c;
        EXPECT_EQ(got, (Fields{(c - '0') * 10 + 1, 2, 3, 4, 0})) << c;
      } else {
        EXPECT_EQ(st, QWZ_ERROR) << c;
        expect_last(800072, kLiteral);
      }
    }
    {
      const std::string s = "1 2:3:4" + std::string(1, ch);
      Fields got{};
      const sword st = parse(kDS, s.c_str(), &got);
      if (c == ' ') {
        EXPECT_EQ(st, 0);
        EXPECT_EQ(got, (Fields{1, 2, 3, 4, 0}));
      } else if (digit) {
        EXPECT_EQ(st, 0) << c;
        EXPECT_EQ(got, (Fields{1, 2, 3, 40 + (c - '0'), 0})) << c;
      } else {
        EXPECT_EQ(st, QWZ_ERROR) << c;
        expect_last(800072, kLiteral);
      }
    }
    {
      const std::string s = "1-" + std::string(1, ch) + "2";
      Fields got{};
      const sword st = parse(kYM, s.c_str(), &got);
      if (c == ' ' || c == '0') {
        EXPECT_EQ(st, 0) << c;
        EXPECT_EQ(got, (Fields{1, 2, 0, 0, 0})) << c;
      } else if (digit) {
        EXPECT_EQ(st, QWZ_ERROR) << c;
        expect_last(800082, kMonthRange);
      } else {
        EXPECT_EQ(st, QWZ_ERROR) << c;
        expect_last(800072, kLiteral);
      }
    }
  }
}

TEST_F(QWZIntervalFromTextParse, LengthLimit) {
  // 127 characters are read; 128 are refused silently.
  const std::string ym127 = "1-2" + std::string(124, ' ');
  const std::string ds127 = std::string(120, '0') + "1 2:3:4";
  const std::string ym_digits127 = std::string(123, '0') + "1-02";
  ASSERT_EQ(ym127.size(), 127u);
  ASSERT_EQ(ds127.size(), 127u);
  ASSERT_EQ(ym_digits127.size(), 127u);
  expect_parsed(kYM, ym127.c_str(), {1, 2, 0, 0, 0});
  expect_parsed(kDS, ds127.c_str(), {1, 2, 3, 4, 0});
  expect_parsed(kYM, ym_digits127.c_str(), {1, 2, 0, 0, 0});
  const std::string ym128 = ym127 + " ";
  QWZInterval *y = ym(7, 7);
  leave_diag();
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt(ym128.c_str()), 128, y), QWZ_ERROR);
  expect_clear();
  EXPECT_EQ(get_ym(y), YearMonth(7, 7));
  // It is str_len that is tested, and the text is read to its NUL.
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("1-2"), 128, y), QWZ_ERROR);
  expect_clear();
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("1-2"), SIZE_MAX, y), QWZ_ERROR);
  expect_clear();
  EXPECT_EQ(get_ym(y), YearMonth(7, 7));
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("-3-4"), 1, y), QWZ_SUCCESS);
  EXPECT_EQ(get_ym(y), YearMonth(-3, -4));
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt(ym128.c_str()), 127, y), QWZ_SUCCESS);
  EXPECT_EQ(get_ym(y), YearMonth(1, 2));
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("1-2"), 0, y), QWZ_SUCCESS);
  // A text far longer than str_len says: no group overruns, a range error.
  const std::string long_year = std::string(300, '1') + "-2";
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt(long_year.c_str()), 5, y), QWZ_ERROR);
  expect_front(800081, kYearRange);
  const std::string long_zeros = std::string(300, '0') + "1 2:3:" + std::string(300, '9');
  QWZInterval *d = ds(7, 7, 7, 7, 7);
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt(long_zeros.c_str()), 5, d), QWZ_ERROR);
  EXPECT_EQ(diag().rc, QWZ_SUCCESS);
  EXPECT_EQ(get_ds(d), (Fields{7, 7, 7, 7, 7}));
}

TEST_F(QWZIntervalFromTextParse, CheckOrder) {
  QWZInterval *y = ym(7, 7);
  // A NULL text: -1 with nothing recorded, before the result is looked at.
  leave_diag();
  EXPECT_EQ(QWZIntervalFromText(env_, err_, nullptr, 3, y), QWZ_ERROR);
  expect_clear();
  for (const QWZInterval *bad : bad_descriptors()) {
    QWZInterval *w = const_cast<QWZInterval *>(bad);
    EXPECT_EQ(QWZIntervalFromText(env_, err_, nullptr, 3, w), QWZ_ERROR);
    expect_clear();
    EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("1-2"), 128, w), QWZ_ERROR);
    expect_clear();
    EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("1-2"), 3, w), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("x"), 1, w), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  for (void *h : bad_contexts()) {
    EXPECT_EQ(QWZIntervalFromText(h, err_, nullptr, 999, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(get_ym(y), YearMonth(7, 7));
  // The descriptor's own kind picks the shape.
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("1 2:3:4"), 7, y), QWZ_ERROR);
  expect_front(800072, kLiteral);
  QWZInterval *d = ds(7, 7, 7, 7, 7);
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("1-2"), 3, d), QWZ_ERROR);
  expect_front(800072, kLiteral);
}

class IntervalTextTrace : public TracedConformance {};

TEST_F(IntervalTextTrace, ToTextShowsClampedPrecisionsOnExit) {
  QWZInterval *iv = ds(1, 2, 3, 4, 12345);
  QWZtext buf[64] = {};
  size_t len = 0;
  recs().clear();
  ASSERT_EQ(QWZIntervalToText(env_, err_, iv, 200, 7, buf, 64, &len), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "+000000001 02:03:04.12345");
  auto text = [&](unsigned long lf, unsigned long fs) {
    return record("QWZIntervalToText", {{"void*", hex12(env_)},
                                        {"QWZError*", hex12(err_)},
                                        {"CONST QWZInterval*", hex12(iv)},
                                        {"ub1", hexv(lf)},
                                        {"ub1", hexv(fs)},
                                        {"QWZtext*", hex12(buf)},
                                        {"size_t", "64"},
                                        {"size_t*", hex12(&len)}});
  };
  EXPECT_EQ(ids(), (std::vector<ub4>{1571, 1541, 1540, 1570}));
  expect_rec(0, 157, 1, 0, text(200, 7));
  expect_rec(3, 157, 0, 0, text(9, 5));
  EXPECT_EQ(line_value(recs()[1].text, 2), hex12(iv));
  // Precisions within the limits are shown as given.
  recs().clear();
  ASSERT_EQ(QWZIntervalToText(env_, err_, iv, 3, 2, buf, 64, &len), 0);
  expect_rec(0, 157, 1, 0, text(3, 2));
  expect_rec(3, 157, 0, 0, text(3, 2));
  // Refused for the buffer: no exit record of its own.
  recs().clear();
  EXPECT_EQ(QWZIntervalToText(env_, err_, iv, 200, 7, buf, 1, &len), QWZ_ERROR);
  EXPECT_EQ(ids(), (std::vector<ub4>{1571, 1541, 1540}));
  // NULL outputs are traced as they are.
  recs().clear();
  EXPECT_EQ(QWZIntervalToText(env_, err_, iv, 1, 1, nullptr, 0, nullptr), QWZ_ERROR);
  ASSERT_EQ(recs().size(), 1u);
  EXPECT_EQ(line_value(recs()[0].text, 5), hexv(0));
  EXPECT_EQ(line_value(recs()[0].text, 6), "0");
  EXPECT_EQ(line_value(recs()[0].text, 7), hexv(0));
}

TEST_F(IntervalTextTrace, FromTextRecords) {
  QWZInterval *y = new_interval(kYM);
  auto text = [&](const std::string &s, const std::string &n) {
    return record("QWZIntervalFromText", {{"void*", hex12(env_)},
                                          {"QWZError*", hex12(err_)},
                                          {"const QWZText*", s},
                                          {"size_t", n},
                                          {"QWZInterval*", hex12(y)}});
  };
  recs().clear();
  ASSERT_EQ(QWZIntervalFromText(env_, err_, txt("1-2"), 3, y), 0);
  ASSERT_EQ(recs().size(), 2u);
  expect_rec(0, 160, 1, 0, text("1-2", "3"));
  expect_rec(1, 160, 0, 0, text("1-2", "3"));
  // A parse or range error is traced on exit with its status.
  recs().clear();
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("1-12"), 4, y), QWZ_ERROR);
  ASSERT_EQ(recs().size(), 2u);
  expect_rec(1, 160, 0, QWZ_ERROR, text("1-12", "4"));
  // The silent refusals have no exit record; a NULL text prints "(null)".
  recs().clear();
  EXPECT_EQ(QWZIntervalFromText(env_, err_, nullptr, 4, y), QWZ_ERROR);
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("1-2"), 128, y), QWZ_ERROR);
  ASSERT_EQ(recs().size(), 2u);
  expect_rec(0, 160, 1, 0, text("(null)", "4"));
  expect_rec(1, 160, 1, 0, text("1-2", "128"));
  // The exit hook's result replaces the status, after an error too.
  cap_.set_results(0, 5);
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("x"), 1, y), 5);
  expect_front(800072, kLiteral);
  EXPECT_EQ(QWZIntervalFromText(env_, err_, txt("3-4"), 3, y), 5);
  cap_.set_results(0, 0);
  EXPECT_EQ(get_ym(y), YearMonth(3, 4));
}

class IntervalTextProperty : public IntervalConformance {
 protected:
  std::mt19937 rng_{987654321u};
  sb4 pick(sb4 lo, sb4 hi) { return std::uniform_int_distribution<sb4>(lo, hi)(rng_); }
};

TEST_F(IntervalTextProperty, FullPrecisionTextReadsBackToTheSameFields) {
  QWZtext buf[64];
  size_t len = 0;
  for (int i = 0; i < 500; ++i) {
    const sb4 s = pick(0, 1) ? 1 : -1;
    const Fields f = {s * pick(0, 999999999), s * pick(0, 23), s * pick(0, 59), s * pick(0, 59),
                      s * pick(0, 99999)};
    QWZInterval *iv = ds(f);
    buf[0] = 0;
    ASSERT_EQ(QWZIntervalToText(env_, err_, iv, 9, 5, buf, sizeof buf, &len), 0);
    QWZInterval *back = new_interval(kDS);
    ASSERT_EQ(QWZIntervalFromText(env_, err_, buf, len, back), 0)
        << reinterpret_cast<char *>(buf);
    EXPECT_EQ(get_ds(back), f) << reinterpret_cast<char *>(buf);
    QWZDescriptorFree(iv, kDS);
    QWZDescriptorFree(back, kDS);
  }
  for (int i = 0; i < 500; ++i) {
    const sb4 s = pick(0, 1) ? 1 : -1;
    const YearMonth v{s * pick(0, 9999), s * pick(0, 11)};
    QWZInterval *iv = ym(v.first, v.second);
    buf[0] = 0;
    ASSERT_EQ(QWZIntervalToText(env_, err_, iv, 9, 5, buf, sizeof buf, &len), 0);
    QWZInterval *back = new_interval(kYM);
    ASSERT_EQ(QWZIntervalFromText(env_, err_, buf, len, back), 0)
        << reinterpret_cast<char *>(buf);
    EXPECT_EQ(get_ym(back), v) << reinterpret_cast<char *>(buf);
    QWZDescriptorFree(iv, kYM);
    QWZDescriptorFree(back, kYM);
  }
}
