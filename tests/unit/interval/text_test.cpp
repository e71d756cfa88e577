// QWZIntervalToText, QWZIntervalFromText and the routines under them:
// interval_to_text, interval_from_text, the two scanners and copydigit.
#include "interval_fixture.h"

#include <cstring>
#include <memory>
#include <vector>

using namespace qwz_test;

namespace {

const QWZText *as_text(const std::string &s) { return reinterpret_cast<const QWZText *>(s.c_str()); }

}  // namespace

class TextFixture : public IntervalFixture {
 protected:
  struct Written {
    sword rc;
    std::string text;
    size_t len;
  };
  Written to_text(const QWZInterval *iv, ub1 lf, ub1 fs) {
    QWZtext buf[64] = {};
    size_t len = 999;
    const sword rc = ::QWZIntervalToText(env_, err_, iv, lf, fs, buf, sizeof buf, &len);
    return {rc, reinterpret_cast<char *>(buf), len};
  }
  sword from_text(const std::string &s, QWZInterval *iv) {
    return ::QWZIntervalFromText(session_, err_, as_text(s), s.size(), iv);
  }
};

class QWZIntervalToText : public TextFixture {};
class QWZIntervalFromText : public TextFixture {};
class IntervalScanners : public TextFixture {};
class Copydigit : public ::testing::Test {};

// ---- writing ---------------------------------------------------------------

struct ToTextCase {
  ub4 kind;
  Slots v;
  ub1 lf, fs;
  const char *text;
};

constexpr ToTextCase kToTextCases[] = {
    // Year-month: '+' when both fields are >= 0; fs is not used.
    {INTERVAL_KIND_YM, {1, 2}, 2, 0, "+01-02"},
    {INTERVAL_KIND_YM, {-1, -2}, 2, 0, "-01-02"},
    {INTERVAL_KIND_YM, {0, 0}, 2, 0, "+00-00"},
    {INTERVAL_KIND_YM, {1, -2}, 2, 5, "-01-02"},
    {INTERVAL_KIND_YM, {-1, 2}, 2, 5, "-01-02"},
    {INTERVAL_KIND_YM, {0, -11}, 0, 0, "-0-11"},
    {INTERVAL_KIND_YM, {123, 4}, 0, 0, "+123-04"},
    {INTERVAL_KIND_YM, {123, 4}, 2, 0, "+123-04"},
    {INTERVAL_KIND_YM, {5, 11}, 9, 0, "+000000005-11"},
    {INTERVAL_KIND_YM, {5, 11}, 200, 0, "+000000005-11"},  // clamped to 9
    {INTERVAL_KIND_YM, {INT32_MAX, 11}, 9, 0, "+2147483647-11"},
    {INTERVAL_KIND_YM, {INT32_MIN, -11}, 9, 0, "-2147483648-11"},
    {INTERVAL_KIND_YM, {INT32_MIN, 0}, 0, 0, "-2147483648-00"},
    // Day-second without a fraction: '+' only when all five fields, the
    // unprinted fraction too, are above zero.
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 0}, 2, 0, "-01 02:03:04"},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 1}, 2, 0, "+01 02:03:04"},
    {INTERVAL_KIND_DS, {0, 2, 3, 4, 1}, 2, 0, "-00 02:03:04"},
    {INTERVAL_KIND_DS, {1, 0, 3, 4, 1}, 2, 0, "-01 00:03:04"},
    {INTERVAL_KIND_DS, {-1, -2, -3, -4, -5}, 2, 0, "-01 02:03:04"},
    {INTERVAL_KIND_DS, {1, -2, 3, -4, 5}, 0, 0, "-1 02:03:04"},
    {INTERVAL_KIND_DS, {0, 0, 0, 0, 0}, 0, 0, "-0 00:00:00"},
    {INTERVAL_KIND_DS, {12, 23, 59, 59, 99999}, 200, 0, "+000000012 23:59:59"},
    // With a fraction: '+' when all five fields are >= 0; the leading fs
    // digits of the fraction when it has that many, else its own value.
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 12345}, 1, 3, "+1 02:03:04.123"},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 5}, 1, 3, "+1 02:03:04.005"},
    {INTERVAL_KIND_DS, {0, 0, 0, 0, 50000}, 1, 2, "+0 00:00:00.50"},
    {INTERVAL_KIND_DS, {0, 0, 0, 0, 0}, 1, 5, "+0 00:00:00.00000"},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 0}, 2, 1, "+01 02:03:04.0"},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 99999}, 2, 5, "+01 02:03:04.99999"},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 99999}, 2, 1, "+01 02:03:04.9"},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 12}, 2, 2, "+01 02:03:04.12"},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 123}, 2, 2, "+01 02:03:04.12"},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 12345}, 2, 7, "+01 02:03:04.12345"},   // clamped to 5
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 12345}, 2, 255, "+01 02:03:04.12345"},  // clamped to 5
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 5}, 2, 5, "+01 02:03:04.00005"},
    {INTERVAL_KIND_DS, {-1, -2, -3, -4, -12345}, 2, 3, "-01 02:03:04.123"},
    {INTERVAL_KIND_DS, {-1, -2, -3, -4, -5}, 2, 3, "-01 02:03:04.005"},
    {INTERVAL_KIND_DS, {0, 0, 0, 0, -50000}, 0, 5, "-0 00:00:00.50000"},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, -5}, 0, 5, "-1 02:03:04.00005"},
    {INTERVAL_KIND_DS, {INT32_MAX, 23, 59, 59, 99999}, 9, 5, "+2147483647 23:59:59.99999"},
    {INTERVAL_KIND_DS, {INT32_MIN, -23, -59, -59, -99999}, 9, 5, "-2147483648 23:59:59.99999"},
};

TEST_F(QWZIntervalToText, WritesBothShapes) {
  for (const ToTextCase &c : kToTextCases) {
    SCOPED_TRACE(c.text);
    QWZInterval *iv = of_kind(c.kind, c.v);
    dirty();
    const Written w = to_text(iv, c.lf, c.fs);
    EXPECT_EQ(w.rc, 0);
    expect_clear();
    EXPECT_EQ(w.text, c.text);
    EXPECT_EQ(w.len, std::strlen(c.text));
    EXPECT_EQ(slots_of(iv), c.v);
  }
}

TEST_F(QWZIntervalToText, LongestTextsFitTheirExactBuffers) {
  struct Longest {
    ub4 kind;
    Slots v;
    size_t max;
  } cases[] = {
      {INTERVAL_KIND_YM, {INT32_MIN, -11}, QWZ_INTERVAL_YM_TEXT_MAX},
      {INTERVAL_KIND_YM, {INT32_MAX, 11}, QWZ_INTERVAL_YM_TEXT_MAX},
      {INTERVAL_KIND_DS, {INT32_MIN, -23, -59, -59, -99999}, QWZ_INTERVAL_DS_TEXT_MAX},
      {INTERVAL_KIND_DS, {INT32_MAX, 23, 59, 59, 99999}, QWZ_INTERVAL_DS_TEXT_MAX},
      {INTERVAL_KIND_DS, {INT32_MIN, 0, 0, 0, -5}, QWZ_INTERVAL_DS_TEXT_MAX},
  };
  for (const Longest &c : cases) {
    QWZInterval *iv = of_kind(c.kind, c.v);
    // A heap block of exactly the longest text and its NUL, so any byte
    // written past it is caught.
    auto buf = std::make_unique<QWZtext[]>(c.max + 1);
    size_t len = 0;
    EXPECT_EQ(::QWZIntervalToText(env_, err_, iv, 255, 255, buf.get(), c.max + 1, &len), 0);
    EXPECT_EQ(len, c.max);
    EXPECT_EQ(std::strlen(reinterpret_cast<char *>(buf.get())), c.max);
  }
}

TEST_F(QWZIntervalToText, BufferTestMeasuresWhatTheBufferHolds) {
  QWZInterval *iv = ym(1, 2);
  QWZtext buf[64];
  size_t len = 999;
  // Holding a string as long as buf_size fails, although the text would fit.
  std::memset(buf, 0, sizeof buf);
  std::memcpy(buf, "abcdefghij", 10);
  EXPECT_EQ(::QWZIntervalToText(env_, err_, iv, 2, 0, buf, 10, &len), QWZ_ERROR);
  expect_diag(11104, "01877", kBufTooSmallText);
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "abcdefghij");
  EXPECT_EQ(len, 999u);
  // Longer still: the same.
  EXPECT_EQ(::QWZIntervalToText(env_, err_, iv, 2, 0, buf, 3, &len), QWZ_ERROR);
  expect_diag(11104, "01877", kBufTooSmallText);
  // One shorter than buf_size passes and is overwritten.
  EXPECT_EQ(::QWZIntervalToText(env_, err_, iv, 2, 0, buf, 11, &len), 0);
  expect_clear();
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "+01-02");
  EXPECT_EQ(len, 6u);
  // buf_size 0 fails even for an empty buffer.
  buf[0] = 0;
  EXPECT_EQ(::QWZIntervalToText(env_, err_, iv, 2, 0, buf, 0, &len), QWZ_ERROR);
  expect_diag(11104, "01877", kBufTooSmallText);
}

TEST_F(QWZIntervalToText, TextIsWrittenWholeWhateverTheBufferSize) {
  // The buffer test passes for an empty buffer of any size; the text is then
  // written whole, so the caller's buffer must have room for it.
  QWZInterval *iv = ds(1, 2, 3, 4, 12345);
  QWZtext buf[QWZ_INTERVAL_DS_TEXT_MAX + 1] = {};
  size_t len = 999;
  EXPECT_EQ(::QWZIntervalToText(env_, err_, iv, 2, 5, buf, 5, &len), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "+01 02:03:04.12345");
  EXPECT_EQ(len, 18u);
  buf[0] = 0;
  EXPECT_EQ(::QWZIntervalToText(env_, err_, iv, 2, 5, buf, 1, &len), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "+01 02:03:04.12345");
  EXPECT_EQ(len, 18u);
}

TEST_F(QWZIntervalToText, FailureRows) {
  QWZtext buf[64] = {};
  size_t len = 999;
  QWZInterval *good = ds(1, 2, 3, 4, 5);
  EXPECT_EQ(::QWZIntervalToText(env_, err_, good, 2, 2, nullptr, 64, &len), QWZ_ERROR);
  expect_null_param(6);
  EXPECT_EQ(::QWZIntervalToText(env_, err_, good, 2, 2, buf, 64, nullptr), QWZ_ERROR);
  expect_null_param(8);
  const Slots invalid[] = {{0, 24, 0, 0, 0}, {0, 0, 60, 0, 0}, {0, 0, 0, -60, 0},
                           {0, 0, 0, 0, 100000}, {0, 0, 0, 0, 999999},
                           {INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN}};
  for (const Slots &v : invalid) {
    EXPECT_EQ(::QWZIntervalToText(env_, err_, of_kind(INTERVAL_KIND_DS, v), 2, 2, buf, 64, &len),
              QWZ_ERROR);
    expect_interval_invalid(3);
  }
  EXPECT_EQ(::QWZIntervalToText(env_, err_, ym(0, 12), 2, 2, buf, 64, &len), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(::QWZIntervalToText(env_, err_, ym(0, INT32_MIN), 2, 2, buf, 64, &len), QWZ_ERROR);
  expect_interval_invalid(3);
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  const void *bad[] = {nullptr, freed_interval(INTERVAL_KIND_DS), dt, err_};
  for (const void *d : bad) {
    EXPECT_EQ(::QWZIntervalToText(env_, err_, static_cast<const QWZInterval *>(d), 2, 2, buf, 64,
                                  &len),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(buf[0], 0);
  EXPECT_EQ(len, 999u);
}

TEST_F(QWZIntervalToText, ChecksRunInOrder) {
  QWZtext full[8];
  std::memcpy(full, "1234567", 8);  // fails the buffer test for buf_size 7
  size_t len = 999;
  QWZInterval *bad = ds(0, 24, 0, 0, 0);
  dirty();
  EXPECT_EQ(::QWZIntervalToText(env_, nullptr, nullptr, 2, 2, nullptr, 7, nullptr),
            QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  EXPECT_EQ(::QWZIntervalToText(bad, err_, nullptr, 2, 2, nullptr, 7, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(::QWZIntervalToText(env_, err_, nullptr, 2, 2, nullptr, 7, nullptr),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  // buf before resultlen before the check before the buffer test.
  EXPECT_EQ(::QWZIntervalToText(env_, err_, bad, 2, 2, nullptr, 7, nullptr), QWZ_ERROR);
  expect_null_param(6);
  EXPECT_EQ(::QWZIntervalToText(env_, err_, bad, 2, 2, full, 7, nullptr), QWZ_ERROR);
  expect_null_param(8);
  EXPECT_EQ(::QWZIntervalToText(env_, err_, bad, 2, 2, full, 7, &len), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(::QWZIntervalToText(env_, err_, ds(0, 23, 0, 0, 0), 2, 2, full, 7, &len), QWZ_ERROR);
  expect_diag(11104, "01877", kBufTooSmallText);
  EXPECT_EQ(len, 999u);
}

TEST_F(QWZIntervalToText, IntervalToTextDirectly) {
  QWZtext buf[32] = {};
  size_t len = 999;
  sb4 code = 77;
  QWZInterval *iv = ym(1, 2);
  EXPECT_EQ(interval_to_text(nullptr, 2, 0, buf, 32, &len, &code), -1);
  EXPECT_EQ(interval_to_text(iv, 2, 0, nullptr, 32, &len, &code), -1);
  EXPECT_EQ(interval_to_text(iv, 2, 0, buf, 32, nullptr, &code), -1);
  EXPECT_EQ(interval_to_text(iv, 2, 0, buf, 32, &len, nullptr), -1);
  EXPECT_EQ(code, 77);
  EXPECT_EQ(interval_to_text(iv, 2, 0, buf, 0, &len, &code), -1);
  EXPECT_EQ(code, 9);
  // A kind with no text: 0 and nothing written.
  QWZInterval other{};
  other.hdr.type = 64;
  EXPECT_EQ(interval_to_text(&other, 2, 0, buf, 32, &len, &code), 0);
  EXPECT_EQ(buf[0], 0);
  EXPECT_EQ(len, 999u);
  // Unclamped precisions and unchecked fields below the public entry.
  QWZInterval wide{};
  wide.hdr.type = INTERVAL_KIND_DS;
  for (sb4 &s : wide.slot) s = INT32_MIN;
  QWZtext big[600] = {};
  EXPECT_EQ(interval_to_text(&wide, 12, 12, big, sizeof big, &len, &code), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(big),
               "-002147483648 2147483648:2147483648:2147483648.002147483648");
  EXPECT_EQ(interval_to_text(&wide, 255, 255, big, sizeof big, &len, &code), 0);
  EXPECT_EQ(len, 1u + 255 + 1 + 32 + 1 + 255);
}

// ---- reading ---------------------------------------------------------------

struct FromTextCase {
  const char *text;
  Slots v;  // year-month: first two
};

constexpr FromTextCase kYmAccepted[] = {
    {"1-2", {1, 2}},
    {"+0001-02", {1, 2}},
    {"- 12 - 3", {-12, -3}},
    {"  -5-11  ", {-5, -11}},
    {"-1-6", {-1, -6}},
    {"0-0", {0, 0}},
    {"-0-0", {0, 0}},
    {"9999-11", {9999, 11}},
    {"-9999-11", {-9999, -11}},
    {"000000000000000000009999-00000000000000000011", {9999, 11}},
    {"+ 7 -0", {7, 0}},
};

constexpr const char *kYmRefused[] = {
    "1",     "1-",    "-1",   "1-2-3", "+-1-2", "1-2x", "",     " ",     "-",    "+",
    "1 2-3", "1-2 3", "--1-2", "++1-2", "1-+2", "1--2", "1-2+", "a1-2", "1:2",  "1.2",
    "-+1-2", "1-2-",  "\t1-2", "1-2\n", "1 -",  "- -1", "1,2",  "1/2",  "1-02:03"};

struct RangeCase {
  const char *text;
  sb4 number;
  const char *message;
};

constexpr const char kLiteral[] = "the literal string is invalid.";
constexpr const char kDay[] = "the day is out of range(0 to 999999999).";
constexpr const char kHour[] = "the hour is out of range(0 to 23).";
constexpr const char kMinute[] = "the minute is out of range(0 to 59).";
constexpr const char kSecond[] = "the second is out of range(0 to 59).";
constexpr const char kFraction[] = "the fraction is out of range(0 to 999999).";
constexpr const char kYear[] = "the year is out of range(0 to 9999).";
constexpr const char kMonth[] = "the month is out of range (0 to 11).";

constexpr RangeCase kYmRange[] = {
    {"1-12", 800082, kMonth},
    {"-1-12", 800082, kMonth},
    {"0-99", 800082, kMonth},
    {"10000-0", 800081, kYear},
    {"-10000-0", 800081, kYear},
    {"10000-12", 800081, kYear},  // the year is tested first
    {"2147483647-0", 800081, kYear},
    {"2147483648-0", 800081, kYear},
    {"99999999999999999999-1", 800081, kYear},
    {"1-4294967296", 800082, kMonth},
    {"1-99999999999999999999", 800082, kMonth},
};

constexpr FromTextCase kDsAccepted[] = {
    {"1 02:03:04", {1, 2, 3, 4, 0}},
    {"-3 4:5:6.789", {-3, -4, -5, -6, -789}},
    {"  +0 00 : 00 : 01 . 5  ", {0, 0, 0, 1, 5}},
    {"0 0:0:0.50000", {0, 0, 0, 0, 50000}},
    {"0 0:0:0.5", {0, 0, 0, 0, 5}},
    {"0 0:0:0.05", {0, 0, 0, 0, 5}},
    {"1 2:3:4.0", {1, 2, 3, 4, 0}},
    {"0 0:0:0", {0, 0, 0, 0, 0}},
    {"- 1 2:3:4", {-1, -2, -3, -4, 0}},
    {"999999999 23:59:59.999999", {999999999, 23, 59, 59, 999999}},
    {"-999999999 23:59:59.999999", {-999999999, -23, -59, -59, -999999}},
    {"1    2:3:4", {1, 2, 3, 4, 0}},
    {"00000000000000000000001 00000000000000023:0059:059.000000000000000000123",
     {1, 23, 59, 59, 123}},
};

constexpr const char *kDsRefused[] = {
    "1:02:03:04",  "1 02:03",      "1 02:03:04.",   "02:03:04",    "1 2:3:4:5",
    "1 2 3:4:5",   "",             " ",             "1",           "1 ",
    "1 2",         "1 2:",         "1 2:3",         "1 2:3:",      "1 2:3:4 5",
    "1 2:3:4.5.6", "1 2:3:4.5 6",  "1,2:3:4",       "1/02:03:04",  "1 02:03:04x",
    "1 +02:03:04", "+-1 2:3:4",    "1 2:3:4-",      "1 2:3.4:5",   "\t1 2:3:4",
    "1 02:03:04\n", "1 2::3:4",    "1 :2:3:4",      ".5 1 2:3:4",  "1 2:3:.4",
    "1 2:3:4..5",  "- + 1 2:3:4",  "1 2:3:4;",      "1 2:3:4 .5x", "1-2:3:4",
    "1 2:3:4:",    "1 2 :3 4:5",   "1 2:3 4:5"};

constexpr RangeCase kDsRange[] = {
    {"1 24:00:00", 800075, kHour},
    {"-1 24:00:00", 800075, kHour},
    {"1 02:03:04.1234567", 800080, kFraction},
    {"1000000000 0:0:0", 800074, kDay},
    {"0 0:60:0", 800077, kMinute},
    {"0 0:0:60", 800078, kSecond},
    // The tests run day, hour, minute, second, fraction.
    {"1000000000 24:60:60.1234567", 800074, kDay},
    {"0 24:60:60.1234567", 800075, kHour},
    {"0 0:60:60.1234567", 800077, kMinute},
    {"0 0:0:60.1234567", 800078, kSecond},
    // Groups too large for 32 bits.
    {"99999999999 0:0:0", 800074, kDay},
    {"0 99999999999:0:0", 800075, kHour},
    {"0 0:4294967296:0", 800077, kMinute},
    {"0 0:0:2147483648", 800078, kSecond},
    {"0 0:0:0.99999999999999999999", 800080, kFraction},
    // A shape error wins over any range.
    {"1 24:00", 800072, kLiteral},
};

TEST_F(QWZIntervalFromText, YearMonthAccepted) {
  for (const FromTextCase &c : kYmAccepted) {
    SCOPED_TRACE(c.text);
    QWZInterval *iv = ym(7, 7);
    dirty();
    EXPECT_EQ(from_text(c.text, iv), 0);
    expect_clear();
    EXPECT_EQ(slots_of(iv), (Slots{c.v[0], c.v[1], 333, 444, 555}));
  }
}

TEST_F(QWZIntervalFromText, YearMonthRefused) {
  for (const char *t : kYmRefused) {
    SCOPED_TRACE(t);
    QWZInterval *iv = ym(7, 7);
    EXPECT_EQ(from_text(t, iv), QWZ_ERROR);
    expect_diag(800072, "", kLiteral);
    EXPECT_EQ(slots_of(iv), (Slots{7, 7, 333, 444, 555}));
  }
}

TEST_F(QWZIntervalFromText, YearMonthRanges) {
  for (const RangeCase &c : kYmRange) {
    SCOPED_TRACE(c.text);
    QWZInterval *iv = ym(7, 7);
    EXPECT_EQ(from_text(c.text, iv), QWZ_ERROR);
    expect_diag(c.number, "", c.message);
    EXPECT_EQ(slots_of(iv), (Slots{7, 7, 333, 444, 555}));
  }
}

TEST_F(QWZIntervalFromText, DaySecondAccepted) {
  for (const FromTextCase &c : kDsAccepted) {
    SCOPED_TRACE(c.text);
    QWZInterval *iv = ds(7, 7, 7, 7, 7);
    dirty();
    EXPECT_EQ(from_text(c.text, iv), 0);
    expect_clear();
    EXPECT_EQ(slots_of(iv), c.v);
  }
}

TEST_F(QWZIntervalFromText, DaySecondRefused) {
  for (const char *t : kDsRefused) {
    SCOPED_TRACE(t);
    QWZInterval *iv = ds(7, 7, 7, 7, 7);
    EXPECT_EQ(from_text(t, iv), QWZ_ERROR);
    expect_diag(800072, "", kLiteral);
    EXPECT_EQ(slots_of(iv), (Slots{7, 7, 7, 7, 7}));
  }
}

TEST_F(QWZIntervalFromText, DaySecondRanges) {
  for (const RangeCase &c : kDsRange) {
    SCOPED_TRACE(c.text);
    QWZInterval *iv = ds(7, 7, 7, 7, 7);
    EXPECT_EQ(from_text(c.text, iv), QWZ_ERROR);
    expect_diag(c.number, "", c.message);
    EXPECT_EQ(slots_of(iv), (Slots{7, 7, 7, 7, 7}));
  }
}

TEST_F(QWZIntervalFromText, TheDescriptorsKindChoosesTheShape) {
  QWZInterval *y = ym(7, 7), *d = ds(7, 7, 7, 7, 7);
  EXPECT_EQ(from_text("1 02:03:04", y), QWZ_ERROR);
  expect_diag(800072, "", kLiteral);
  EXPECT_EQ(from_text("1-2", d), QWZ_ERROR);
  expect_diag(800072, "", kLiteral);
}

TEST_F(QWZIntervalFromText, NullOrLongTextIsRefusedSilently) {
  QWZInterval *iv = ym(7, 7);
  dirty();
  EXPECT_EQ(::QWZIntervalFromText(env_, err_, nullptr, 3, iv), QWZ_ERROR);
  expect_clear();
  // 127 characters are read; 128 are not, whatever they say.
  std::string t127 = "1-2" + std::string(124, ' ');
  ASSERT_EQ(t127.size(), 127u);
  EXPECT_EQ(from_text(t127, iv), 0);
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 333, 444, 555}));
  std::string t128 = "3-4" + std::string(125, ' ');
  dirty();
  EXPECT_EQ(from_text(t128, iv), QWZ_ERROR);
  expect_clear();
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 333, 444, 555}));
  // The length decides, not the text: a short text with a length of 128.
  dirty();
  EXPECT_EQ(::QWZIntervalFromText(env_, err_, as_text("5-6"), 128, iv), QWZ_ERROR);
  expect_clear();
  EXPECT_EQ(::QWZIntervalFromText(env_, err_, as_text("5-6"), SIZE_MAX, iv), QWZ_ERROR);
  expect_clear();
  // A silent refusal comes before the descriptor's validation.
  EXPECT_EQ(::QWZIntervalFromText(env_, err_, nullptr, 3, nullptr), QWZ_ERROR);
  expect_clear();
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 333, 444, 555}));

  QWZInterval *d = ds(7, 7, 7, 7, 7);
  std::string d127 = "1 2:3:4.5" + std::string(118, ' ');
  ASSERT_EQ(d127.size(), 127u);
  EXPECT_EQ(from_text(d127, d), 0);
  EXPECT_EQ(slots_of(d), (Slots{1, 2, 3, 4, 5}));
  // 127 characters, all of them digits and separators.
  std::string digits127 = std::string(60, '0') + "1 " + std::string(50, '0') + "2:3:4.000005";
  ASSERT_EQ(digits127.size(), 124u);
  digits127 = "000" + digits127;
  ASSERT_EQ(digits127.size(), 127u);
  EXPECT_EQ(from_text(digits127, d), 0);
  EXPECT_EQ(slots_of(d), (Slots{1, 2, 3, 4, 5}));
}

TEST_F(QWZIntervalFromText, TheTextIsReadToItsNulWhateverTheLength) {
  QWZInterval *iv = ym(7, 7);
  EXPECT_EQ(::QWZIntervalFromText(env_, err_, as_text("12-3"), 1, iv), 0);
  EXPECT_EQ(slots_of(iv), (Slots{12, 3, 333, 444, 555}));
  EXPECT_EQ(::QWZIntervalFromText(env_, err_, as_text("12-3x"), 4, iv), QWZ_ERROR);
  expect_diag(800072, "", kLiteral);
  // Far longer than 127 characters behind a small length: still read to the
  // NUL, and no digit group overruns its buffer.
  const std::string many(5000, '9');
  const std::string zeros(5000, '0');
  const struct {
    ub4 kind;
    std::string text;
    sb4 number;
  } cases[] = {
      {INTERVAL_KIND_YM, many + "-1", 800081},
      {INTERVAL_KIND_YM, "1-" + many, 800082},
      // Even a value that fits: a group longer than its buffer is refused.
      {INTERVAL_KIND_YM, zeros + "1-1", 800081},
      {INTERVAL_KIND_YM, "1-" + zeros, 800082},
      {INTERVAL_KIND_YM, "1-2" + std::string(5000, ' '), 0},
      {INTERVAL_KIND_YM, "1-2" + std::string(5000, ' ') + "x", 800072},
      {INTERVAL_KIND_DS, many + " 0:0:0", 800074},
      {INTERVAL_KIND_DS, "0 " + many + ":0:0", 800075},
      {INTERVAL_KIND_DS, "0 0:" + many + ":0", 800077},
      {INTERVAL_KIND_DS, "0 0:0:" + many, 800078},
      {INTERVAL_KIND_DS, "0 0:0:0." + many, 800080},
      {INTERVAL_KIND_DS, "0 0:0:0." + zeros, 800080},
      {INTERVAL_KIND_DS, many + " " + many + ":" + many + ":" + many + "." + many, 800074},
      {INTERVAL_KIND_DS, "1 2:3:4.5" + std::string(5000, ' '), 0},
  };
  for (const auto &c : cases) {
    QWZInterval *d = of_kind(c.kind, {7, 7, 7, 7, 7});
    const sword rc = ::QWZIntervalFromText(env_, err_, as_text(c.text), 5, d);
    if (c.number == 0) {
      EXPECT_EQ(rc, 0);
      expect_clear();
    } else {
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag().number, c.number);
      EXPECT_EQ(slots_of(d), (Slots{7, 7, 7, 7, 7}));
    }
  }
  // A group of 126 digits still fits its buffer and reads as its value.
  const std::string z126 = std::string(125, '0') + "1-1";
  QWZInterval *y = ym(7, 7);
  EXPECT_EQ(::QWZIntervalFromText(env_, err_, as_text(z126), 3, y), 0);
  EXPECT_EQ(slots_of(y), (Slots{1, 1, 333, 444, 555}));
}

TEST_F(QWZIntervalFromText, EveryCharacter) {
  // c at the front and at the end of a valid text of each kind. Only a
  // blank, a digit, or (at the front) a sign keeps the text valid.
  for (int ch = 1; ch < 256; ++ch) {
    const char c = static_cast<char>(ch);
    SCOPED_TRACE(ch);
    const bool digit = ch >= '0' && ch <= '9';
    const bool blank = ch == ' ';
    const bool sign = ch == '+' || ch == '-';
    const struct {
      ub4 kind;
      std::string text;
      bool ok;
    } cases[] = {
        {INTERVAL_KIND_YM, std::string(1, c) + "1-2", blank || digit || sign},
        {INTERVAL_KIND_YM, std::string("1-0") + c, blank || digit},
        {INTERVAL_KIND_YM, std::string("1") + c + "-2", blank || digit},
        {INTERVAL_KIND_DS, std::string(1, c) + "1 2:3:4", blank || digit || sign},
        {INTERVAL_KIND_DS, std::string("1 2:3:4") + c, blank || digit},
        {INTERVAL_KIND_DS, std::string("1 2:3:4.5") + c, blank || digit},
        {INTERVAL_KIND_DS, std::string("1 0") + c + ":3:4", blank || digit},
    };
    for (const auto &k : cases) {
      QWZInterval *iv = of_kind(k.kind, {7, 7, 7, 7, 7});
      const sword rc = from_text(k.text, iv);
      EXPECT_EQ(rc, k.ok ? 0 : QWZ_ERROR) << k.text;
      if (!k.ok) expect_diag(800072, "", kLiteral);
    }
    // Every character in every position of a longer text: anything may be
    // refused, nothing may be read or written out of bounds.
    const std::string base = "+12 03:04:05.678";
    for (size_t pos = 0; pos <= base.size(); ++pos) {
      std::string t = base;
      t.insert(pos, 1, c);
      QWZInterval *d = ds(7, 7, 7, 7, 7);
      QWZInterval *y = ym(7, 7);
      const sword r1 = from_text(t, d);
      const sword r2 = from_text(t, y);
      EXPECT_TRUE(r1 == 0 || r1 == QWZ_ERROR);
      EXPECT_TRUE(r2 == 0 || r2 == QWZ_ERROR);
      QWZDescriptorFree(d, INTERVAL_KIND_DS);
      QWZDescriptorFree(y, INTERVAL_KIND_YM);
    }
  }
}

TEST_F(QWZIntervalFromText, FailureRowsAndOrder) {
  QWZInterval *iv = ym(7, 7);
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  const void *bad[] = {nullptr, freed_interval(INTERVAL_KIND_YM), dt};
  for (const void *d : bad) {
    EXPECT_EQ(::QWZIntervalFromText(env_, err_, as_text("x"), 1,
                                    static_cast<QWZInterval *>(const_cast<void *>(d))),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  dirty();
  EXPECT_EQ(::QWZIntervalFromText(env_, nullptr, nullptr, 999, nullptr), QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  // The context handle comes before the silent refusal.
  EXPECT_EQ(::QWZIntervalFromText(iv, err_, nullptr, 999, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(slots_of(iv), (Slots{7, 7, 333, 444, 555}));
}

TEST_F(QWZIntervalFromText, IntervalFromTextDirectly) {
  QWZInterval *iv = ym(7, 7);
  EXPECT_EQ(interval_from_text(nullptr, 3, iv), -1);
  EXPECT_EQ(interval_from_text(as_text("1-2"), 3, nullptr), -1);
  // The length is not used.
  EXPECT_EQ(interval_from_text(as_text("1-2"), 0, iv), 0);
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 333, 444, 555}));
  EXPECT_EQ(interval_from_text(as_text("1-12"), 99, iv), 800082);
  QWZInterval other{};
  other.hdr.type = 61;
  for (sb4 &s : other.slot) s = 7;
  EXPECT_EQ(interval_from_text(as_text("garbage"), 7, &other), 0);
  EXPECT_EQ(slots_of(&other), (Slots{7, 7, 7, 7, 7}));
}

TEST_F(QWZIntervalFromText, OneMessagePerStatus) {
  const RangeCase all[] = {{"", 800072, kLiteral},  {"", 800074, kDay},    {"", 800075, kHour},
                           {"", 800077, kMinute},   {"", 800078, kSecond}, {"", 800080, kFraction},
                           {"", 800081, kYear},     {"", 800082, kMonth}};
  for (const RangeCase &c : all) EXPECT_STREQ(qwz::interval_text_message(c.number), c.message);
  for (sb4 other : {0, -1, 800073, 800076, 800079, 800083, 800001})
    EXPECT_EQ(qwz::interval_text_message(other), nullptr);
}

// ---- the scanners and copydigit --------------------------------------------

TEST_F(IntervalScanners, YearMonthGroupsAndSign) {
  char y[QWZ_INTERVAL_DIGITS_SIZE] = {}, m[QWZ_INTERVAL_DIGITS_SIZE] = {};
  sword neg = 7;
  EXPECT_EQ(parse_input_with_ym_format(" - 0012 - 07 ", y, m, &neg), 0);
  EXPECT_STREQ(y, "0012");
  EXPECT_STREQ(m, "07");
  EXPECT_EQ(neg, 1);
  char y2[QWZ_INTERVAL_DIGITS_SIZE] = {}, m2[QWZ_INTERVAL_DIGITS_SIZE] = {};
  EXPECT_EQ(parse_input_with_ym_format("+3-4", y2, m2, &neg), 0);
  EXPECT_EQ(neg, 0);
  EXPECT_EQ(parse_input_with_ym_format("1-2-3", y2, m2, &neg), 1);
  EXPECT_EQ(parse_input_with_ym_format(nullptr, y, m, &neg), 1);
  EXPECT_EQ(parse_input_with_ym_format("1-2", nullptr, m, &neg), 1);
  EXPECT_EQ(parse_input_with_ym_format("1-2", y, nullptr, &neg), 1);
  EXPECT_EQ(parse_input_with_ym_format("1-2", y, m, nullptr), 1);
}

TEST_F(IntervalScanners, DaySecondGroupsAndSign) {
  char g[5][QWZ_INTERVAL_DIGITS_SIZE] = {};
  sword neg = 7;
  EXPECT_EQ(parse_input_with_ds_format(" -3 04 : 5:06 .0789 ", g[0], g[1], g[2], g[3], g[4], &neg),
            0);
  EXPECT_STREQ(g[0], "3");
  EXPECT_STREQ(g[1], "04");
  EXPECT_STREQ(g[2], "5");
  EXPECT_STREQ(g[3], "06");
  EXPECT_STREQ(g[4], "0789");
  EXPECT_EQ(neg, 1);
  char h[5][QWZ_INTERVAL_DIGITS_SIZE] = {};
  EXPECT_EQ(parse_input_with_ds_format("1 2:3:4", h[0], h[1], h[2], h[3], h[4], &neg), 0);
  EXPECT_EQ(neg, 0);
  EXPECT_STREQ(h[4], "");
  for (int missing = 0; missing < 7; ++missing) {
    char b[5][QWZ_INTERVAL_DIGITS_SIZE] = {};
    char *p[5] = {b[0], b[1], b[2], b[3], b[4]};
    const char *text = "1 2:3:4";
    sword *n = &neg;
    if (missing == 0) text = nullptr;
    else if (missing == 6) n = nullptr;
    else p[missing - 1] = nullptr;
    EXPECT_EQ(parse_input_with_ds_format(text, p[0], p[1], p[2], p[3], p[4], n), 1);
  }
}

TEST_F(Copydigit, CopiesOneRunWithoutATerminator) {
  char dst[8];
  std::memset(dst, 'z', sizeof dst);
  const char *src = "123a45";
  const char *s = src;
  char *d = dst;
  EXPECT_EQ(copydigit(&s, &d, dst + sizeof dst), 0);
  EXPECT_EQ(s, src + 3);
  EXPECT_EQ(d, dst + 3);
  EXPECT_EQ(std::string(dst, 4), "123z");
  // Nothing to copy: no movement.
  EXPECT_EQ(copydigit(&s, &d, dst + sizeof dst), 0);
  EXPECT_EQ(s, src + 3);
  EXPECT_EQ(d, dst + 3);
}

TEST_F(Copydigit, NeverWritesTheLastByte) {
  char dst[4] = {0, 0, 0, 0};
  const char *s = "9876543210-";
  char *d = dst;
  EXPECT_EQ(copydigit(&s, &d, dst + sizeof dst), 0);
  EXPECT_STREQ(s, "-");  // the whole run is passed over
  EXPECT_EQ(d, dst + 3);
  EXPECT_EQ(std::string(dst, 4), std::string("987\0", 4));
}

TEST_F(Copydigit, NullCursorsAreOne) {
  char dst[4] = {};
  const char *s = "1";
  char *d = dst;
  const char *ns = nullptr;
  char *nd = nullptr;
  EXPECT_EQ(copydigit(nullptr, &d, dst + 4), 1);
  EXPECT_EQ(copydigit(&s, nullptr, dst + 4), 1);
  EXPECT_EQ(copydigit(&ns, &d, dst + 4), 1);
  EXPECT_EQ(copydigit(&s, &nd, dst + 4), 1);
  EXPECT_EQ(copydigit(&s, &d, nullptr), 1);
  EXPECT_EQ(dst[0], 0);
}
