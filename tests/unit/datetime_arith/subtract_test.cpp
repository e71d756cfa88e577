// QWZDateTimeSubtract, the subtraction routine and the move to UTC.
#include "arith_support.h"

#include <climits>

using namespace qwz_test;

namespace {

class DateTimeSubtract : public ArithFixture {
 protected:
  // The interval's five slots.
  static std::vector<sb4> slots(const QWZInterval *i) { return {i->slot, i->slot + 5}; }
};

struct SubCase {
  const char *name;
  ub4 type;
  Fields a, b;
  ub4 kind;
  std::vector<sb4> expect;
};

TEST_F(DateTimeSubtract, Table) {
  ZoneGuard z(kUtc);
  const SubCase cases[] = {
      // One month counts as 31 days, and the day numbers differ by -27.
      {"across February", 68, {2020, 3, 1, 0, 0, 0, 0, 0, 0}, {2020, 2, 28, 0, 0, 0, 0, 0, 0}, 63,
       {4, 0, 0, 0, 0}},
      {"across February as months", 68, {2020, 3, 1, 0, 0, 0, 0, 0, 0},
       {2020, 2, 28, 0, 0, 0, 0, 0, 0}, 62, {0, 1, 0, 0, 0}},
      {"years and months", 65, {2024, 5, 1, 0, 0, 0, 0, 0, 0}, {2021, 8, 30, 0, 0, 0, 0, 0, 0}, 62,
       {2, 9, 0, 0, 0}},
      {"negative months", 65, {2021, 8, 30, 0, 0, 0, 0, 0, 0}, {2024, 5, 1, 0, 0, 0, 0, 0, 0}, 62,
       {-2, -9, 0, 0, 0}},
      {"same day, hours", 68, {2024, 5, 1, 13, 30, 15, 0, 0, 0}, {2024, 5, 1, 10, 0, 0, 0, 0, 0}, 63,
       {0, 3, 30, 15, 0}},
      {"fraction borrows from a positive difference", 68, {2024, 5, 1, 10, 0, 0, 0, 0, 0},
       {2024, 5, 1, 9, 0, 0, 50000, 0, 0}, 63, {0, 0, 59, 59, 50000}},
      {"fraction above a second carries", 66, {0, 0, 0, 10, 0, 0, 250000, 0, 0},
       {0, 0, 0, 10, 0, 0, 0, 0, 0}, 63, {0, 0, 0, 2, 50000}},
      {"negative difference with a positive fraction", 66, {0, 0, 0, 9, 0, 0, 50000, 0, 0},
       {0, 0, 0, 10, 0, 0, 0, 0, 0}, 63, {0, 0, -59, -59, -50000}},
      {"mixed signs are not refused", 68, {2020, 3, 1, 0, 0, 0, 0, 0, 0},
       {2020, 2, 28, 10, 0, 0, 0, 0, 0}, 63, {4, -10, 0, 0, 0}},
      {"equal", 69, {2024, 5, 1, 10, 0, 0, 7, 2, 0}, {2024, 5, 1, 9, 0, 0, 7, 1, 0}, 63,
       {0, 0, 0, 0, 0}},
      {"zones move both operands to UTC", 69, {2024, 5, 1, 10, 0, 0, 0, 5, 30},
       {2024, 5, 1, 10, 0, 0, 0, -3, -30}, 63, {0, -9, 0, 0, 0}},
      {"times with zones", 67, {0, 0, 0, 12, 0, 0, 0, 2, 0}, {0, 0, 0, 12, 0, 0, 0, 0, 0}, 63,
       {0, -2, 0, 0, 0}},
      {"a time-only year-month difference", 66, {0, 0, 0, 12, 0, 0, 0, 0, 0},
       {0, 0, 0, 1, 0, 0, 0, 0, 0}, 62, {0, 0, 0, 0, 0}},
  };
  for (const SubCase &c : cases) {
    SCOPED_TRACE(c.name);
    QWZDateTime *a = dt(c.type, c.a);
    QWZDateTime *b = dt(c.type, c.b);
    QWZInterval *out = new_interval(c.kind);
    const long live = qwz_live_descriptor_count();
    EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, out), 0);
    EXPECT_EQ(qwz_live_descriptor_count(), live);
    expect_clear();
    EXPECT_EQ(slots(out), c.expect);
    // The operands are never changed.
    EXPECT_EQ(fields_of(a), c.a);
    EXPECT_EQ(fields_of(b), c.b);
  }
}

TEST_F(DateTimeSubtract, TypesMustAgree) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = dt(68, {2024, 5, 1, 0, 0, 0, 0, 0, 0});
  QWZDateTime *b = dt(69, {2024, 5, 1, 0, 0, 0, 0, 0, 0});
  QWZInterval *out = ds(9, 9, 9, 9, 9);
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, out), -1);
  expect_diag(800129, "", "the intervals or datetimes are not mutually comparable.");
  EXPECT_EQ(slots(out), (std::vector<sb4>{9, 9, 9, 9, 9}));
}

TEST_F(DateTimeSubtract, HandleChecksInOrder) {
  QWZDateTime *a = dt(68, {2024, 5, 1, 0, 0, 0, 0, 0, 0});
  QWZInterval *iv = new_interval(63);
  void *dead = freed(68);
  void *dead_iv = freed(63);
  struct Case {
    const char *name;
    void *hndl, *d1, *d2, *iv;
  } cases[] = {
      {"NULL context", nullptr, a, a, iv},   {"NULL first", env_, nullptr, a, iv},
      {"freed first", env_, dead, a, iv},    {"interval first", env_, iv, a, iv},
      {"NULL second", env_, a, nullptr, iv}, {"freed second", env_, a, dead, iv},
      {"NULL interval", env_, a, a, nullptr}, {"freed interval", env_, a, a, dead_iv},
      {"datetime as interval", env_, a, a, a},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(QWZDateTimeSubtract(c.hndl, err_, static_cast<QWZDateTime *>(c.d1),
                                  static_cast<QWZDateTime *>(c.d2), static_cast<QWZInterval *>(c.iv)),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(QWZDateTimeSubtract(env_, nullptr, a, a, iv), QWZ_INVALID_HANDLE);
}

TEST_F(DateTimeSubtract, SubRoutineReportsAFailedCheck) {
  QWZDateTime *a = dt(68, {2024, 5, 1, 0, 0, 0, 0, 0, 0});
  QWZInterval *iv = new_interval(63);
  // A context handle the nested check refuses.
  EXPECT_EQ(qwz_datetime_sub(nullptr, err_, a, a, iv), -1);
  expect_diag(11104, "22007", "ERROR: [QWZ-11104][QWZ Driver].interval is invalid 3 \n");
  EXPECT_EQ(qwz_datetime_sub(env_, err_, nullptr, a, iv), -1);
  EXPECT_EQ(qwz_datetime_sub(env_, err_, a, nullptr, iv), -1);
  EXPECT_EQ(qwz_datetime_sub(env_, err_, a, a, nullptr), -1);
  EXPECT_EQ(qwz_datetime_sub(env_, nullptr, a, a, iv), -1);
}

TEST_F(DateTimeSubtract, ExtremeFieldsStayDefined) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = dt(68, {9999, 12, 31, 23, 59, 59, UINT32_MAX, 0, 0});
  QWZDateTime *b = dt(68, {-4712, 1, 1, 0, 0, 0, 0, 0, 0});
  QWZInterval *out = new_interval(63);
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, out), 0);
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, b, a, out), 0);
  QWZInterval *ymo = new_interval(62);
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, ymo), 0);
  EXPECT_EQ(ymo->slot[QWZ_IV_YEAR], 14711);
  EXPECT_EQ(ymo->slot[QWZ_IV_MONTH], 11);
}

TEST_F(DateTimeSubtract, TraceOfTheZonedPath) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = dt(69, {2024, 5, 1, 10, 0, 0, 0, 2, 0});
  QWZDateTime *b = dt(69, {2024, 5, 1, 9, 0, 0, 0, 1, 0});
  QWZInterval *out = new_interval(63);
  TraceCapture cap;
  ASSERT_EQ(QWZDateTimeSubtract(env_, err_, a, b, out), 0);
  std::vector<std::pair<ub4, ub4>> seen;
  for (const TraceRecord &r : cap.records()) seen.emplace_back(r.api_id, r.direction);
  // Each move to UTC nests an assignment (with its check), the setting of the
  // offset interval and the check of the moved copy; the difference nests the
  // interval check.
  const std::vector<std::pair<ub4, ub4>> utc = {{146, 1}, {147, 1}, {147, 0}, {146, 0},
                                                {151, 1}, {151, 0}, {147, 1}, {147, 0}};
  std::vector<std::pair<ub4, ub4>> want = {{141, 1}};
  want.insert(want.end(), utc.begin(), utc.end());
  want.insert(want.end(), utc.begin(), utc.end());
  want.insert(want.end(), {{154, 1}, {154, 0}, {141, 0}});
  EXPECT_EQ(seen, want);
  EXPECT_EQ(cap.records().back().text,
            "<QWZDateTimeSubtract>\n\tvoid*     \t" + hex12(env_) + "\n\tQWZError*     \t" +
                hex12(err_) + "\n\tQWZDateTime*     \t" + hex12(a) + "\n\tQWZDateTime*     \t" +
                hex12(b) + "\n\tQWZInterval*     \t" + hex12(out));
}

class DateTimeToUtc : public ArithFixture {};

TEST_F(DateTimeToUtc, MovesByMinusTheOffsetIntoANewDescriptor) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = dt(69, {2024, 1, 1, 1, 15, 0, 42, 5, 30});
  const long live = qwz_live_descriptor_count();
  QWZDateTime *u = qwz_datetime_2_utc(err_, a);
  ASSERT_NE(u, nullptr);
  EXPECT_NE(u, a);
  EXPECT_EQ(u->hdr.type, 69);
  EXPECT_EQ(fields_of(u), (Fields{2023, 12, 31, 19, 45, 0, 42, 0, 0}));
  EXPECT_EQ(qwz_live_descriptor_count(), live + 1);
  EXPECT_EQ(_QWZDateTimeDescriptorFree(u), 0);
  EXPECT_EQ(qwz_live_descriptor_count(), live);
  EXPECT_EQ(fields_of(a), (Fields{2024, 1, 1, 1, 15, 0, 42, 5, 30}));
}

TEST_F(DateTimeToUtc, FailuresFreeEverything) {
  ZoneGuard z(kUtc);
  const long live = qwz_live_descriptor_count();
  EXPECT_EQ(qwz_datetime_2_utc(nullptr, nullptr), nullptr);
  QWZDateTime *a = dt(69, {2024, 1, 1, 1, 15, 0, 42, 5, 30});
  EXPECT_EQ(qwz_datetime_2_utc(nullptr, a), nullptr);
  // An invalid value fails the copy's assignment.
  QWZDateTime *bad = dt(69, {2024, 2, 30, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(qwz_datetime_2_utc(err_, bad), nullptr);
  expect_diag(22007, "22007", kDateFormat22007);
  EXPECT_EQ(qwz_live_descriptor_count(), live + 2);  // just a and bad
}

}  // namespace

namespace {

class DateTimeSubtractLeaks : public ArithFixture {};

// An operand whose move to UTC fails: the copy made of the other is still
// freed, the difference routine refuses the missing copy, and the diagnostic
// left is the one of the refused copy.
TEST_F(DateTimeSubtractLeaks, FailedMoveToUtcFreesTheCopies) {
  ZoneGuard z(kUtc);
  QWZDateTime *good = dt(69, {2024, 5, 1, 10, 0, 0, 0, 2, 0});
  QWZDateTime *bad = dt(69, {2024, 2, 30, 10, 0, 0, 0, 2, 0});
  QWZInterval *out = ds(7, 7, 7, 7, 7);
  const long live = qwz_live_descriptor_count();
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, good, bad, out), -1);
  expect_diag(22007, "22007", kDateFormat22007);
  EXPECT_EQ(qwz_live_descriptor_count(), live);
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, bad, good, out), -1);
  EXPECT_EQ(qwz_live_descriptor_count(), live);
  EXPECT_EQ(out->slot[0], 7);
}

}  // namespace
