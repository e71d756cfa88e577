// The three family error setters called directly: every row of their tables
// with the exact message (param_no formatted where the text has "%d"), state
// and number, read back through QWZErrorGet.
#include "support/test_support.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using namespace qwz_test;

namespace {

using Setter = sword (*)(sb2, sb4, sb4, ub2, QWZError *, const char *);

// What a row leaves in a cleared handle: message_fmt is formatted with the
// parameter number (nullptr: no message written, the text stays empty);
// number 0: nothing written at all.
struct Expect {
  const char *message_fmt;
  const char *state;
  sb4 number;
};

std::string format(const char *fmt, ub2 param_no) {
  char buf[512];
  std::snprintf(buf, sizeof buf, fmt, static_cast<int>(param_no));
  return buf;
}

struct Row {
  sb4 kind;
  std::vector<sb4> details;  // the details this row is tried with
  Expect expect;
};

const char kNull[] = "ERROR: [QWZ-21560][QWZ Driver].parameter %d is NULL\n";
const char kBuf[] = "ERROR: [QWZ-11104][QWZ Driver]. buf is too small \n";
const char kDiff[] = "ERROR: [QWZ-21405][QWZ Driver].type is diff\n";

// Details a row of kind "any" is tried with.
const std::vector<sb4> kAnyDetail = {-1, 0, 1, 2, 3, 8, 10, 17, 18, 22, 23, 24, 99, -7};
const std::vector<ub2> kParams = {0, 1, 2, 3, 4, 5, 8, 65535};

class Setters : public HandleFixture {
 protected:
  void check(Setter setter, const Row &row) {
    for (sb4 detail : row.details)
      for (ub2 p : kParams) {
        clear_err_msg(err_);
        ASSERT_EQ(setter(2, row.kind, detail, p, err_, ""), 0);
        SCOPED_TRACE("kind " + std::to_string(row.kind) + " detail " + std::to_string(detail) +
                     " param " + std::to_string(p));
        const Diag d = diag();
        if (row.expect.number == 0) {  // nothing written at all
          EXPECT_EQ(d.rc, QWZ_NO_DATA);
          EXPECT_EQ(d.number, 0);
          EXPECT_EQ(d.state, "");
          EXPECT_EQ(d.message, "");
          continue;
        }
        EXPECT_EQ(d.rc, QWZ_SUCCESS);
        EXPECT_EQ(d.number, row.expect.number);
        EXPECT_EQ(d.state, row.expect.state);
        EXPECT_EQ(d.message, row.expect.message_fmt ? format(row.expect.message_fmt, p) : "");
      }
  }
};

}  // namespace

TEST_F(Setters, DateTable) {
  const Row rows[] = {
      {0, {1, 2, 3}, {kNull, "21560", 21560}},
      {0, {-1, 0, 4, 5, 8, 24, 65535}, {nullptr, "21560", 21560}},
      {0, {10}, {"ERROR: [QWZ-1846][QWZ Driver].week format is invalid\n", "1846", 1846}},
      {4, kAnyDetail, {"ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n", "22007", 11104}},
      {5, kAnyDetail, {"ERROR: [QWZ-11104][QWZ Driver].format string is invalid\n", "22007", 11104}},
      {6, kAnyDetail,
       {"ERROR: [QWZ-11104][QWZ Driver]. format or date string is invalid\n", "22007", 11104}},
      {9, kAnyDetail, {kBuf, "01877", 11104}},
      // Kinds the date table does not have write nothing.
      {1, kAnyDetail, {nullptr, "", 0}},
      {7, kAnyDetail, {nullptr, "", 0}},
      {19, kAnyDetail, {nullptr, "", 0}},
      {20, kAnyDetail, {nullptr, "", 0}},
      {21, kAnyDetail, {nullptr, "", 0}},
      {25, kAnyDetail, {nullptr, "", 0}},
      {-1, kAnyDetail, {nullptr, "", 0}},
  };
  for (const Row &r : rows) check(_QWZSetDateErrorMsg, r);
}

TEST_F(Setters, DateTimeTable) {
  const Row rows[] = {
      {0, {8, 2, 3}, {kNull, "21560", 21560}},
      {0, {-1, 0, 1, 4, 5, 10, 24}, {nullptr, "21560", 21560}},
      {7, {17}, {"ERROR: [QWZ-22007][QWZ Driver].parameter %d is INVALID\n", "22007", 22007}},
      {7, {18}, {"ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n", "22007", 22007}},
      {7, {-1, 0, 1, 2, 3, 10, 19, 99}, {nullptr, "22007", 22007}},
      {20, kAnyDetail, {kDiff, "22008", 11105}},
      {4, kAnyDetail, {nullptr, "", 0}},
      {5, kAnyDetail, {nullptr, "", 0}},
      {9, kAnyDetail, {nullptr, "", 0}},
      {19, kAnyDetail, {nullptr, "", 0}},
      {21, kAnyDetail, {nullptr, "", 0}},
      {25, kAnyDetail, {nullptr, "", 0}},
  };
  for (const Row &r : rows) check(_QWZSetDateTimeErrorMsg, r);
}

TEST_F(Setters, IntervalTable) {
  const Row rows[] = {
      {0, {24, 2, 3}, {kNull, "21560", 21560}},
      {0, {-1, 0, 1, 4, 8, 22, 65535}, {nullptr, "21560", 21560}},
      {0, {10}, {"ERROR: [QWZ-1846][QWZ Driver].week format is invalid %d \n", "1846", 1846}},
      {25, kAnyDetail, {"ERROR: [QWZ-11104][QWZ Driver].interval is invalid %d \n", "22007", 11104}},
      {5, kAnyDetail,
       {"ERROR: [QWZ-11104][QWZ Driver].format string is invalid %d \n", "22007", 11104}},
      {19, kAnyDetail, {"ERROR: [QWZ-11105][QWZ Driver].type is invalid \n", "22008", 11105}},
      {20, kAnyDetail, {kDiff, "22008", 11105}},
      {21, {22}, {"ERROR: [QWZ-11107][QWZ Driver] get year-month fun err\n", "22009", 11106}},
      {21, {23}, {"ERROR: [QWZ-11108][QWZ Driver] get day-second fun err\n", "22010", 11107}},
      {21, {-1, 0, 1, 2, 3, 10, 24, 99}, {nullptr, "", 0}},  // nothing written
      {9, kAnyDetail, {kBuf, "01877", 11104}},
      {4, kAnyDetail, {nullptr, "", 0}},
      {6, kAnyDetail, {nullptr, "", 0}},
      {7, kAnyDetail, {nullptr, "", 0}},
  };
  for (const Row &r : rows) check(_QWZSetIntervalErrorMsg, r);
}

// A few rows written out in full, to see the bytes the tables above build.
TEST_F(Setters, ExactTexts) {
  _QWZSetDateErrorMsg(2, 0, 3, 4, err_, "");
  expect_diag(21560, "21560", "ERROR: [QWZ-21560][QWZ Driver].parameter 4 is NULL\n");
  _QWZSetDateErrorMsg(2, 4, -1, 65535, err_, "");
  expect_diag(11104, "22007", "ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n");
  _QWZSetDateErrorMsg(2, 0, 10, 3, err_, "");
  expect_diag(1846, "1846", "ERROR: [QWZ-1846][QWZ Driver].week format is invalid\n");
  _QWZSetIntervalErrorMsg(2, 0, 10, 7, err_, "");
  expect_diag(1846, "1846", "ERROR: [QWZ-1846][QWZ Driver].week format is invalid 7 \n");
  _QWZSetIntervalErrorMsg(2, 25, -1, 65535, err_, "");
  expect_diag(11104, "22007", "ERROR: [QWZ-11104][QWZ Driver].interval is invalid 65535 \n");
  _QWZSetIntervalErrorMsg(2, 21, 22, 1, err_, "");
  expect_diag(11106, "22009", "ERROR: [QWZ-11107][QWZ Driver] get year-month fun err\n");
  _QWZSetDateTimeErrorMsg(2, 7, 17, 5, err_, "");
  expect_diag(22007, "22007", "ERROR: [QWZ-22007][QWZ Driver].parameter 5 is INVALID\n");
  _QWZSetDateErrorMsg(2, 6, -1, 65535, err_, "");
  expect_diag(11104, "22007", "ERROR: [QWZ-11104][QWZ Driver]. format or date string is invalid\n");
  _QWZSetDateErrorMsg(2, 9, -1, 65535, err_, "");
  expect_diag(11104, "01877", "ERROR: [QWZ-11104][QWZ Driver]. buf is too small \n");
}

// The datetime setter's "date format is invalid" is copied, not formatted:
// the parameter number never shows.
TEST_F(Setters, DateTimeDateFormatIgnoresTheParameter) {
  for (ub2 p : {ub2{0}, ub2{3}, ub2{65535}}) {
    clear_err_msg(err_);
    _QWZSetDateTimeErrorMsg(2, 7, 18, p, err_, "");
    expect_diag(22007, "22007", "ERROR: [QWZ-22007][QWZ Driver].date format is invalid\n");
  }
}

// The datetime setter with kind 0 and detail 5 stores state and number and
// leaves the message text empty.
TEST_F(Setters, UnchangedRowLeavesTheMessageEmpty) {
  clear_err_msg(err_);
  _QWZSetDateTimeErrorMsg(2, 0, 5, 3, err_, "");
  expect_diag(21560, "21560", "");
}

// An unchanged row keeps whatever text the handle held before.
TEST_F(Setters, UnchangedRowKeepsAnEarlierMessage) {
  struct Case {
    Setter setter;
    sb4 kind, detail;
    const char *state;
    sb4 number;
  } cases[] = {
      {_QWZSetDateErrorMsg, 0, 5, "21560", 21560},
      {_QWZSetDateTimeErrorMsg, 0, 1, "21560", 21560},
      {_QWZSetDateTimeErrorMsg, 7, 3, "22007", 22007},
      {_QWZSetIntervalErrorMsg, 0, 8, "21560", 21560},
  };
  for (const Case &c : cases) {
    clear_err_msg(err_);
    _QWZSetFrontEndErrorHandle(err_, "earlier text", 800001);
    EXPECT_EQ(c.setter(2, c.kind, c.detail, 2, err_, ""), 0);
    expect_diag(c.number, c.state, "earlier text");
  }
}

// Kind 0 with detail 10: the "any other detail" row stores 21560 first, then
// the week-format row overwrites message, state and number.
TEST_F(Setters, WeekFormatOverwritesTheNullRow) {
  _QWZSetFrontEndErrorHandle(err_, "earlier text", 800001);
  _QWZSetDateErrorMsg(2, 0, 10, 3, err_, "");
  expect_diag(1846, "1846", "ERROR: [QWZ-1846][QWZ Driver].week format is invalid\n");
  // The four-character state comes back with its NUL in the fifth byte.
  QWZText state[8];
  std::memset(state, 'X', sizeof state);
  sb4 number = 0;
  ASSERT_EQ(QWZErrorGet(err_, 1, state, &number, nullptr, 0, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  EXPECT_EQ(0, std::memcmp(state, "1846\0", 5));
  _QWZSetIntervalErrorMsg(2, 0, 10, 3, err_, "");
  expect_diag(1846, "1846", "ERROR: [QWZ-1846][QWZ Driver].week format is invalid 3 \n");
}

// Kind 21 with a detail other than 22 and 23 leaves an earlier diagnostic whole.
TEST_F(Setters, IntervalKind21OtherDetailWritesNothing) {
  _QWZSetDateErrorMsg(2, 4, -1, 65535, err_, "");
  for (sb4 detail : {-1, 0, 21, 24, 65535}) {
    EXPECT_EQ(_QWZSetIntervalErrorMsg(2, 21, detail, 1, err_, ""), 0);
    expect_diag(11104, "22007", "ERROR: [QWZ-11104][QWZ Driver].date format is invalid\n");
  }
}

TEST_F(Setters, OtherSourcesDoNothing) {
  const Setter setters[] = {_QWZSetDateErrorMsg, _QWZSetDateTimeErrorMsg, _QWZSetIntervalErrorMsg};
  for (Setter s : setters)
    for (sb2 source : {sb2{0}, sb2{1}, sb2{3}, sb2{-2}, sb2{32767}}) {
      clear_err_msg(err_);
      EXPECT_EQ(s(source, 0, 3, 4, err_, ""), 0);
      EXPECT_EQ(s(source, 20, -1, 4, err_, ""), 0);
      expect_clear();
      _QWZSetFrontEndErrorHandle(err_, "kept", 800001);
      EXPECT_EQ(s(source, 9, -1, 4, err_, ""), 0);
      const Diag d = diag();
      EXPECT_EQ(d.message, "kept");
      EXPECT_EQ(d.number, 800001);
      EXPECT_EQ(d.state, "");
    }
}

TEST_F(Setters, SixthArgumentIsNotRead) {
  EXPECT_EQ(_QWZSetDateErrorMsg(2, 0, 1, 2, err_, nullptr), 0);
  expect_diag(21560, "21560", "ERROR: [QWZ-21560][QWZ Driver].parameter 2 is NULL\n");
  EXPECT_EQ(_QWZSetIntervalErrorMsg(2, 19, -1, 2, err_, "ignored text"), 0);
  expect_diag(11105, "22008", "ERROR: [QWZ-11105][QWZ Driver].type is invalid \n");
}

// The general writer stores the message as given ("%s" unexpanded) and the
// number; clear_err_msg empties everything.
TEST_F(Setters, FrontEndWriterAndClear) {
  _QWZSetFrontEndErrorHandle(err_, "inconsistent datatypes: expected %s got %s.", 800130);
  const Diag d = diag();
  EXPECT_EQ(d.rc, QWZ_SUCCESS);
  EXPECT_EQ(d.number, 800130);
  EXPECT_EQ(d.message, "inconsistent datatypes: expected %s got %s.");
  clear_err_msg(err_);
  expect_clear();
  _QWZSetFrontEndErrorHandle(err_, "Invalid handle.", 800001);
  EXPECT_EQ(diag().message, "Invalid handle.");
  EXPECT_EQ(diag().number, 800001);
}
