// QWZIntervalCheck and QWZIntervalAssign.
#include "interval_fixture.h"

using namespace qwz_test;

class QWZIntervalCheck : public IntervalFixture {
 protected:
  ub4 flags_of(ub4 kind, const Slots &v) {
    QWZInterval *iv = of_kind(kind, v);
    ub4 flags = 0xDEADBEEFu;
    dirty();
    EXPECT_EQ(::QWZIntervalCheck(env_, err_, iv, &flags), 0);
    expect_clear();
    return flags;
  }
};
class QWZIntervalAssign : public IntervalFixture {};

struct FlagCase {
  ub4 kind;
  Slots v;
  ub4 flags;
};

constexpr FlagCase kFlagCases[] = {
    // Year-month: only the month is checked; slots 3..5 are not looked at.
    {INTERVAL_KIND_YM, {0, 0, 0, 0, 0}, 0},
    {INTERVAL_KIND_YM, {0, -11, 0, 0, 0}, 0},
    {INTERVAL_KIND_YM, {0, 11, 0, 0, 0}, 0},
    {INTERVAL_KIND_YM, {0, 12, 0, 0, 0}, 0x4},
    {INTERVAL_KIND_YM, {0, -12, 0, 0, 0}, 0x4},
    {INTERVAL_KIND_YM, {0, INT32_MIN, 0, 0, 0}, 0x4},
    {INTERVAL_KIND_YM, {0, INT32_MAX, 0, 0, 0}, 0x4},
    {INTERVAL_KIND_YM, {123456, 0, 0, 0, 0}, 0},
    {INTERVAL_KIND_YM, {INT32_MIN, -11, 99, 99, 999999}, 0},
    {INTERVAL_KIND_YM, {INT32_MAX, 11, 0, 0, 0}, 0},
    {INTERVAL_KIND_YM, {1, -11, 0, 0, 0}, 0},  // signs may differ
    // Day-second: each field at its limits, one past them, and the extremes.
    {INTERVAL_KIND_DS, {0, 23, 59, 59, 99999}, 0},
    {INTERVAL_KIND_DS, {0, -23, -59, -59, -99999}, 0},
    {INTERVAL_KIND_DS, {0, 24, 0, 0, 0}, 0x40},
    {INTERVAL_KIND_DS, {0, -24, 0, 0, 0}, 0x40},
    {INTERVAL_KIND_DS, {0, 0, 60, 0, 0}, 0x100},
    {INTERVAL_KIND_DS, {0, 0, -60, 0, 0}, 0x100},
    {INTERVAL_KIND_DS, {0, 0, 0, 60, 0}, 0x400},
    {INTERVAL_KIND_DS, {0, 0, 0, -60, 0}, 0x400},
    {INTERVAL_KIND_DS, {0, 0, 0, 0, 100000}, 0x1000},
    {INTERVAL_KIND_DS, {0, 0, 0, 0, -100000}, 0x1000},
    {INTERVAL_KIND_DS, {0, 24, 60, -60, 100000}, 0x1540},
    {INTERVAL_KIND_DS, {INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN}, 0x1540},
    {INTERVAL_KIND_DS, {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX}, 0x1540},
    {INTERVAL_KIND_DS, {-999999999, 0, 0, 0, 0}, 0},
    {INTERVAL_KIND_DS, {INT32_MIN, 1, -2, 3, -4}, 0},
    {INTERVAL_KIND_DS, {INT32_MAX, 0, 0, 0, 0}, 0},
};

TEST_F(QWZIntervalCheck, FlagsByKind) {
  for (const FlagCase &c : kFlagCases) {
    SCOPED_TRACE(::testing::PrintToString(c.v));
    EXPECT_EQ(flags_of(c.kind, c.v), c.flags);
  }
}

TEST_F(QWZIntervalCheck, SessionIsAContextHandleToo) {
  QWZInterval *iv = ym(0, 12);
  ub4 flags = 0;
  EXPECT_EQ(::QWZIntervalCheck(session_, err_, iv, &flags), 0);
  EXPECT_EQ(flags, 0x4u);
  expect_clear();
}

TEST_F(QWZIntervalCheck, OtherKindsHaveNoFlags) {
  // Only reachable below the public entry, whose validator refuses them.
  for (ub2 kind : {ub2{0}, ub2{61}, ub2{64}, ub2{DATETIME_KIND_DATE}}) {
    QWZInterval iv{};
    iv.hdr.type = kind;
    for (sb4 &s : iv.slot) s = INT32_MIN;
    EXPECT_EQ(qwz::interval_flags(&iv), 0u);
  }
}

TEST_F(QWZIntervalCheck, NullValidIsParameterFour) {
  QWZInterval *iv = ds(0, 99, 0, 0, 0);
  EXPECT_EQ(::QWZIntervalCheck(env_, err_, iv, nullptr), QWZ_ERROR);
  expect_null_param(4);
}

TEST_F(QWZIntervalCheck, BadDescriptorsAreInvalidHandles) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIME);
  const void *bad[] = {nullptr, freed_interval(INTERVAL_KIND_YM), freed_interval(INTERVAL_KIND_DS),
                       dt, err_};
  for (const void *d : bad) {
    ub4 flags = 77;
    EXPECT_EQ(::QWZIntervalCheck(env_, err_, static_cast<const QWZInterval *>(d), &flags),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(flags, 77u);
  }
}

TEST_F(QWZIntervalCheck, ChecksRunInOrder) {
  dirty();
  EXPECT_EQ(::QWZIntervalCheck(nullptr, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  // Context before descriptor before the flags pointer.
  EXPECT_EQ(::QWZIntervalCheck(nullptr, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(::QWZIntervalCheck(env_, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}

// ---- assign ----------------------------------------------------------------

TEST_F(QWZIntervalAssign, CopiesTheKindsSlots) {
  QWZInterval *from = ym(-3, -11);
  QWZInterval *to = ym(1, 1);
  to->slot[2] = 31;
  to->slot[3] = 41;
  to->slot[4] = 51;
  dirty();
  EXPECT_EQ(::QWZIntervalAssign(env_, err_, from, to), 0);
  expect_clear();
  EXPECT_EQ(slots_of(to), (Slots{-3, -11, 31, 41, 51}));

  QWZInterval *dfrom = ds(INT32_MIN, -23, -59, -59, -99999);
  QWZInterval *dto = ds(1, 2, 3, 4, 5);
  EXPECT_EQ(::QWZIntervalAssign(session_, err_, dfrom, dto), 0);
  expect_clear();
  EXPECT_EQ(slots_of(dto), slots_of(dfrom));
}

TEST_F(QWZIntervalAssign, OntoItself) {
  QWZInterval *iv = ds(1, 2, 3, 4, 5);
  EXPECT_EQ(::QWZIntervalAssign(env_, err_, iv, iv), 0);
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 3, 4, 5}));
}

TEST_F(QWZIntervalAssign, TheTargetIsNotChecked) {
  QWZInterval *from = ds(1, 2, 3, 4, 5);
  QWZInterval *to = ds(0, 99, 99, 99, 999999);
  EXPECT_EQ(::QWZIntervalAssign(env_, err_, from, to), 0);
  EXPECT_EQ(slots_of(to), (Slots{1, 2, 3, 4, 5}));
}

TEST_F(QWZIntervalAssign, YearMonthToDaySecondIsTypeDiff) {
  QWZInterval *from = ym(1, 2);
  QWZInterval *to = ds(9, 9, 9, 9, 9);
  EXPECT_EQ(::QWZIntervalAssign(env_, err_, from, to), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(slots_of(to), (Slots{9, 9, 9, 9, 9}));
  EXPECT_EQ(::QWZIntervalAssign(env_, err_, to, from), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(slots_of(from), (Slots{1, 2, 333, 444, 555}));
}

TEST_F(QWZIntervalAssign, InvalidSourceIsParameterThree) {
  const FlagCase bad[] = {
      {INTERVAL_KIND_YM, {0, 12, 0, 0, 0}, 0},
      {INTERVAL_KIND_YM, {0, INT32_MIN, 0, 0, 0}, 0},
      {INTERVAL_KIND_DS, {0, 24, 0, 0, 0}, 0},
      {INTERVAL_KIND_DS, {0, 0, 0, 0, 100000}, 0},
      {INTERVAL_KIND_DS, {INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN}, 0},
  };
  for (const FlagCase &c : bad) {
    QWZInterval *from = of_kind(c.kind, c.v);
    QWZInterval *to = of_kind(c.kind, {7, 7, 7, 7, 7});
    EXPECT_EQ(::QWZIntervalAssign(env_, err_, from, to), QWZ_ERROR);
    expect_interval_invalid(3);
    EXPECT_EQ(slots_of(to), (Slots{7, 7, 7, 7, 7}));
  }
}

TEST_F(QWZIntervalAssign, InvalidSourceWinsOverTypeDiff) {
  QWZInterval *from = ym(0, 12);
  QWZInterval *to = ds(7, 7, 7, 7, 7);
  EXPECT_EQ(::QWZIntervalAssign(env_, err_, from, to), QWZ_ERROR);
  expect_interval_invalid(3);
}

TEST_F(QWZIntervalAssign, BadDescriptorsAreInvalidHandles) {
  QWZInterval *good = ym(1, 2);
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  const void *bad[] = {nullptr, freed_interval(INTERVAL_KIND_YM), dt};
  for (const void *d : bad) {
    auto *iv = static_cast<QWZInterval *>(const_cast<void *>(d));
    EXPECT_EQ(::QWZIntervalAssign(env_, err_, iv, good), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(::QWZIntervalAssign(env_, err_, good, iv), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(slots_of(good), (Slots{1, 2, 333, 444, 555}));
}

TEST_F(QWZIntervalAssign, ChecksRunInOrder) {
  QWZInterval *invalid = ym(0, 12);
  QWZInterval *other = ds(1, 1, 1, 1, 1);
  dirty();
  EXPECT_EQ(::QWZIntervalAssign(env_, reinterpret_cast<QWZError *>(other), nullptr, nullptr),
            QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  // Context, then the source, then the target, then the check, then the kinds.
  EXPECT_EQ(::QWZIntervalAssign(other, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(::QWZIntervalAssign(env_, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(::QWZIntervalAssign(env_, err_, invalid, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(::QWZIntervalAssign(env_, err_, invalid, other), QWZ_ERROR);
  expect_interval_invalid(3);
}
