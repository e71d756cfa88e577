// Interval descriptors through the public interface: setting and reading
// fields, the validity check, the checked copy, and the call frame they run
// in (handle checks, trace records, hook results).
#include "interval_conformance.h"

#include <climits>

using namespace qwz_conf;

namespace {

const YearMonth kYmValues[] = {
    {0, 0}, {0, 25}, {-5, 13}, {1, -11}, {123456, -11}, {INT32_MIN, INT32_MAX}, {INT32_MAX, INT32_MIN},
};

const Fields kDsValues[] = {
    {0, 0, 0, 0, 0},
    {1, 2, 3, 4, 5},
    {-1, -2, -3, -4, -5},
    {0, 24, 60, -60, 100000},
    {-999999999, 23, -59, 59, -99999},
    {INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN},
    {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX},
};

}  // namespace

class QWZIntervalSetGet : public IntervalConformance {};

TEST_F(QWZIntervalSetGet, YearMonthReadsBackAsSetWithoutRangeTests) {
  for (const YearMonth &v : kYmValues) {
    QWZInterval *iv = new_interval(kYM);
    leave_diag();
    ASSERT_EQ(QWZIntervalSetYearMonth(env_, err_, v.first, v.second, iv), QWZ_SUCCESS);
    expect_clear();
    sb4 y = 1, m = 1;
    leave_diag();
    ASSERT_EQ(QWZIntervalGetYearMonth(session_, err_, &y, &m, iv), QWZ_SUCCESS);
    expect_clear();
    EXPECT_EQ(y, v.first);
    EXPECT_EQ(m, v.second);
  }
}

TEST_F(QWZIntervalSetGet, DaySecondReadsBackAsSetWithoutRangeTests) {
  for (const Fields &v : kDsValues) {
    QWZInterval *iv = new_interval(kDS);
    leave_diag();
    ASSERT_EQ(QWZIntervalSetDaySecond(session_, err_, v[0], v[1], v[2], v[3], v[4], iv),
              QWZ_SUCCESS);
    expect_clear();
    leave_diag();
    EXPECT_EQ(get_ds(iv), v);
    expect_clear();
  }
}

TEST_F(QWZIntervalSetGet, SettingAgainReplacesEveryField) {
  QWZInterval *y = ym(5, 6);
  ASSERT_EQ(QWZIntervalSetYearMonth(env_, err_, -1, 0, y), QWZ_SUCCESS);
  EXPECT_EQ(get_ym(y), YearMonth(-1, 0));
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  ASSERT_EQ(QWZIntervalSetDaySecond(env_, err_, 0, 0, 0, 0, 0, d), QWZ_SUCCESS);
  EXPECT_EQ(get_ds(d), (Fields{0, 0, 0, 0, 0}));
}

TEST_F(QWZIntervalSetGet, KindMismatchIsAnInvalidHandle) {
  QWZInterval *y = ym(1, 2);
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, 9, 9, d), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(get_ds(d), (Fields{1, 2, 3, 4, 5}));
  EXPECT_EQ(QWZIntervalSetDaySecond(env_, err_, 9, 9, 9, 9, 9, y), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(get_ym(y), YearMonth(1, 2));
  sb4 a = 42, b = 43;
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, &a, &b, d), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(a, 42);
  EXPECT_EQ(b, 43);
  sb4 o[5] = {42, 42, 42, 42, 42};
  EXPECT_EQ(QWZIntervalGetDaySecond(env_, err_, &o[0], &o[1], &o[2], &o[3], &o[4], y),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  for (sb4 v : o) EXPECT_EQ(v, 42);
}

TEST_F(QWZIntervalSetGet, BadDescriptorsAreInvalidHandles) {
  for (const QWZInterval *bad : bad_descriptors()) {
    QWZInterval *w = const_cast<QWZInterval *>(bad);
    EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, 1, 2, w), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(QWZIntervalSetDaySecond(env_, err_, 1, 2, 3, 4, 5, w), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    sb4 o[5] = {};
    EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, &o[0], &o[1], bad), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(QWZIntervalGetDaySecond(env_, err_, &o[0], &o[1], &o[2], &o[3], &o[4], bad),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
}

TEST_F(QWZIntervalSetGet, BadContextHandlesAreInvalidHandles) {
  QWZInterval *y = ym(1, 2);
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  for (void *h : bad_contexts()) {
    EXPECT_EQ(QWZIntervalSetYearMonth(h, err_, 3, 4, y), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(QWZIntervalSetDaySecond(h, err_, 3, 4, 5, 6, 7, d), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    sb4 o[5] = {};
    // The context handle is checked before the descriptor and the outputs.
    EXPECT_EQ(QWZIntervalGetYearMonth(h, err_, nullptr, nullptr, d), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(QWZIntervalGetDaySecond(h, err_, &o[0], &o[1], &o[2], &o[3], &o[4], y),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(get_ym(y), YearMonth(1, 2));
  EXPECT_EQ(get_ds(d), (Fields{1, 2, 3, 4, 5}));
}

TEST_F(QWZIntervalSetGet, NullOutputsOfGetYearMonth) {
  QWZInterval *y = ym(1, 2);
  sb4 v = 42;
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, nullptr, &v, y), QWZ_ERROR);
  expect_value_address();
  EXPECT_EQ(v, 42);
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, &v, nullptr, y), QWZ_ERROR);
  expect_value_address();
  EXPECT_EQ(v, 42);
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, nullptr, nullptr, y), QWZ_ERROR);
  expect_value_address();
  // The kind check comes first.
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, nullptr, nullptr, ds(1, 2, 3, 4, 5)),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}

TEST_F(QWZIntervalSetGet, NullOutputsOfGetDaySecondWriteNothing) {
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  for (int missing = 0; missing < 5; ++missing) {
    sb4 o[5] = {42, 42, 42, 42, 42};
    sb4 *p[5] = {&o[0], &o[1], &o[2], &o[3], &o[4]};
    p[missing] = nullptr;
    EXPECT_EQ(QWZIntervalGetDaySecond(env_, err_, p[0], p[1], p[2], p[3], p[4], d), QWZ_ERROR);
    expect_value_address();
    for (sb4 v : o) EXPECT_EQ(v, 42);
  }
  EXPECT_EQ(QWZIntervalGetDaySecond(env_, err_, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    ym(1, 2)),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}

class QWZIntervalCheckFlags : public IntervalConformance {};

TEST_F(QWZIntervalCheckFlags, YearMonthFlags) {
  const struct {
    sb4 year, month;
    ub4 flags;
  } cases[] = {
      {0, 0, 0},          {0, 11, 0},          {0, -11, 0},
      {0, 12, 0x4},       {0, -12, 0x4},       {0, 25, 0x4},
      {123456, 0, 0},     {-123456, 5, 0},     {INT32_MIN, -11, 0},
      {INT32_MAX, 11, 0}, {0, INT32_MIN, 0x4}, {0, INT32_MAX, 0x4},
      {1, -1, 0},
  };
  for (const auto &c : cases) {
    QWZInterval *iv = ym(c.year, c.month);
    leave_diag();
    EXPECT_EQ(flags(iv), c.flags) << c.year << "-" << c.month;
    expect_clear();
  }
}

TEST_F(QWZIntervalCheckFlags, DaySecondFlags) {
  const struct {
    Fields f;
    ub4 flags;
  } cases[] = {
      {{0, 0, 0, 0, 0}, 0},
      {{-999999999, 0, 0, 0, 0}, 0},
      {{INT32_MIN, 0, 0, 0, 0}, 0},
      {{INT32_MAX, 0, 0, 0, 0}, 0},
      {{0, 23, 59, 59, 99999}, 0},
      {{0, -23, -59, -59, -99999}, 0},
      {{1, -23, 59, -59, 99999}, 0},  // mixed signs are not flagged
      {{0, 24, 0, 0, 0}, 0x40},
      {{0, -24, 0, 0, 0}, 0x40},
      {{0, 0, 60, 0, 0}, 0x100},
      {{0, 0, -60, 0, 0}, 0x100},
      {{0, 0, 0, 60, 0}, 0x400},
      {{0, 0, 0, -60, 0}, 0x400},
      {{0, 0, 0, 0, 100000}, 0x1000},
      {{0, 0, 0, 0, -100000}, 0x1000},
      {{0, 24, 60, -60, 100000}, 0x1540},
      {{INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN}, 0x1540},
      {{INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX}, 0x1540},
      {{0, 24, 0, 60, 0}, 0x440},
  };
  for (const auto &c : cases) {
    QWZInterval *iv = ds(c.f);
    leave_diag();
    EXPECT_EQ(flags(iv), c.flags) << c.f[0] << " " << c.f[1] << ":" << c.f[2] << ":" << c.f[3]
                                  << "." << c.f[4];
    expect_clear();
  }
}

TEST_F(QWZIntervalCheckFlags, NullValid) {
  EXPECT_EQ(QWZIntervalCheck(env_, err_, ym(1, 2), nullptr), QWZ_ERROR);
  expect_null_param(4);
  EXPECT_EQ(QWZIntervalCheck(session_, err_, ds(0, 24, 0, 0, 0), nullptr), QWZ_ERROR);
  expect_null_param(4);
}

TEST_F(QWZIntervalCheckFlags, HandleChecksComeFirst) {
  ub4 v = 0xABCu;
  for (const QWZInterval *bad : bad_descriptors()) {
    EXPECT_EQ(QWZIntervalCheck(env_, err_, bad, &v), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(QWZIntervalCheck(env_, err_, bad, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  for (void *h : bad_contexts()) {
    EXPECT_EQ(QWZIntervalCheck(h, err_, ym(1, 2), nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(v, 0xABCu);
}

class QWZIntervalAssignCopy : public IntervalConformance {};

TEST_F(QWZIntervalAssignCopy, CopiesEachKind) {
  QWZInterval *out = ym(9, 9);
  leave_diag();
  ASSERT_EQ(QWZIntervalAssign(env_, err_, ym(-7, -11), out), QWZ_SUCCESS);
  expect_clear();
  EXPECT_EQ(get_ym(out), YearMonth(-7, -11));
  QWZInterval *dout = ds(9, 9, 9, 9, 9);
  ASSERT_EQ(QWZIntervalAssign(session_, err_, ds(INT32_MIN, 23, -59, 0, 99999), dout),
            QWZ_SUCCESS);
  EXPECT_EQ(get_ds(dout), (Fields{INT32_MIN, 23, -59, 0, 99999}));
  // The output's own value is not checked.
  QWZInterval *bad_out = ds(0, 24, 60, 60, 100000);
  ASSERT_EQ(QWZIntervalAssign(env_, err_, ds(1, 2, 3, 4, 5), bad_out), QWZ_SUCCESS);
  EXPECT_EQ(get_ds(bad_out), (Fields{1, 2, 3, 4, 5}));
  // Onto itself.
  QWZInterval *self = ds(1, 2, 3, 4, 5);
  ASSERT_EQ(QWZIntervalAssign(env_, err_, self, self), QWZ_SUCCESS);
  EXPECT_EQ(get_ds(self), (Fields{1, 2, 3, 4, 5}));
}

TEST_F(QWZIntervalAssignCopy, KindsDiffer) {
  QWZInterval *dout = ds(1, 2, 3, 4, 5);
  EXPECT_EQ(QWZIntervalAssign(env_, err_, ym(1, 2), dout), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(get_ds(dout), (Fields{1, 2, 3, 4, 5}));
  QWZInterval *yout = ym(3, 4);
  EXPECT_EQ(QWZIntervalAssign(env_, err_, ds(0, 0, 0, 0, 0), yout), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(get_ym(yout), YearMonth(3, 4));
}

TEST_F(QWZIntervalAssignCopy, InvalidInputWinsOverKinds) {
  QWZInterval *yout = ym(3, 4);
  EXPECT_EQ(QWZIntervalAssign(env_, err_, ym(0, 12), yout), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(get_ym(yout), YearMonth(3, 4));
  // Invalid input and different kinds: the input's check comes first.
  QWZInterval *dout = ds(1, 2, 3, 4, 5);
  EXPECT_EQ(QWZIntervalAssign(env_, err_, ym(0, -12), dout), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(QWZIntervalAssign(env_, err_, ds(0, 0, 0, 0, 100000), yout), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(get_ds(dout), (Fields{1, 2, 3, 4, 5}));
  EXPECT_EQ(get_ym(yout), YearMonth(3, 4));
}

TEST_F(QWZIntervalAssignCopy, HandleOrder) {
  QWZInterval *good = ym(1, 2);
  QWZInterval *invalid = ym(0, 12);
  for (const QWZInterval *bad : bad_descriptors()) {
    QWZInterval *w = const_cast<QWZInterval *>(bad);
    EXPECT_EQ(QWZIntervalAssign(env_, err_, bad, good), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    // The output's handle is checked before the input's value.
    EXPECT_EQ(QWZIntervalAssign(env_, err_, invalid, w), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  for (void *h : bad_contexts()) {
    EXPECT_EQ(QWZIntervalAssign(h, err_, invalid, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(get_ym(good), YearMonth(1, 2));
}

class IntervalFrame : public TracedConformance {};

TEST_F(IntervalFrame, InvalidErrorHandleReturnsTheValidatorsValueAndWritesNothing) {
  QWZInterval *y = ym(1, 2);
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  leave_diag();
  recs().clear();
  QWZError *bad[] = {nullptr, reinterpret_cast<QWZError *>(env_),
                     reinterpret_cast<QWZError *>(session_)};
  for (QWZError *e : bad) {
    sb4 o[5] = {42, 42, 42, 42, 42};
    ub4 v = 42;
    EXPECT_EQ(QWZIntervalSetYearMonth(env_, e, 5, 5, y), QWZ_INVALID_HANDLE);
    EXPECT_EQ(QWZIntervalSetDaySecond(env_, e, 5, 5, 5, 5, 5, d), QWZ_INVALID_HANDLE);
    EXPECT_EQ(QWZIntervalGetYearMonth(env_, e, &o[0], &o[1], y), QWZ_INVALID_HANDLE);
    EXPECT_EQ(QWZIntervalGetDaySecond(env_, e, &o[0], &o[1], &o[2], &o[3], &o[4], d),
              QWZ_INVALID_HANDLE);
    EXPECT_EQ(QWZIntervalCheck(env_, e, y, &v), QWZ_INVALID_HANDLE);
    EXPECT_EQ(QWZIntervalAssign(env_, e, y, y), QWZ_INVALID_HANDLE);
    for (sb4 x : o) EXPECT_EQ(x, 42);
    EXPECT_EQ(v, 42u);
  }
  // Only entry records; err_ keeps the diagnostic it had.
  for (const auto &r : recs()) EXPECT_EQ(r.direction, 1u);
  EXPECT_EQ(recs().size(), 18u);
  expect_left_diag();
  EXPECT_EQ(get_ym(y), YearMonth(1, 2));
  EXPECT_EQ(get_ds(d), (Fields{1, 2, 3, 4, 5}));
}

TEST_F(IntervalFrame, EntryHookResultStopsTheCall) {
  QWZInterval *y = ym(1, 2);
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  leave_diag();
  cap_.set_results(7, 0);
  recs().clear();
  sb4 o[5] = {42, 42, 42, 42, 42};
  ub4 v = 42;
  EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, 5, 5, y), 7);
  EXPECT_EQ(QWZIntervalSetDaySecond(env_, err_, 5, 5, 5, 5, 5, d), 7);
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, &o[0], &o[1], y), 7);
  EXPECT_EQ(QWZIntervalGetDaySecond(env_, err_, &o[0], &o[1], &o[2], &o[3], &o[4], d), 7);
  EXPECT_EQ(QWZIntervalCheck(env_, err_, y, &v), 7);
  EXPECT_EQ(QWZIntervalAssign(env_, err_, y, y), 7);
  // Nothing is validated either.
  EXPECT_EQ(QWZIntervalCheck(nullptr, nullptr, nullptr, nullptr), 7);
  EXPECT_EQ(recs().size(), 7u);
  for (sb4 x : o) EXPECT_EQ(x, 42);
  EXPECT_EQ(v, 42u);
  cap_.set_results(0, 0);
  expect_left_diag();
  EXPECT_EQ(get_ym(y), YearMonth(1, 2));
  EXPECT_EQ(get_ds(d), (Fields{1, 2, 3, 4, 5}));
}

TEST_F(IntervalFrame, ExitHookResultReplacesTheStatusAfterTheWork) {
  QWZInterval *y = new_interval(kYM);
  QWZInterval *out = ym(8, 8);
  cap_.set_results(0, 5);
  EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, 3, 4, y), 5);
  sb4 a = 0, b = 0;
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, &a, &b, y), 5);
  EXPECT_EQ(a, 3);
  EXPECT_EQ(b, 4);
  // A failed check has no exit record, so its status stands.
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, nullptr, &b, y), QWZ_ERROR);
  expect_value_address();
  ub4 v = 99;
  EXPECT_EQ(QWZIntervalCheck(env_, err_, y, &v), 5);
  EXPECT_EQ(v, 0u);
  // The nested check's exit result makes Assign see a failed check.
  cap_.set_results(0, 0);
  EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, 3, 4, y), 0);
  cap_.set_results(0, 5);
  recs().clear();
  EXPECT_EQ(QWZIntervalAssign(env_, err_, y, out), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(ids(), (std::vector<ub4>{1551, 1541, 1540}));
  cap_.set_results(0, 0);
  EXPECT_EQ(get_ym(out), YearMonth(8, 8));
}

TEST_F(IntervalFrame, SetRecords) {
  QWZInterval *y = new_interval(kYM);
  QWZInterval *d = new_interval(kDS);
  recs().clear();
  ASSERT_EQ(QWZIntervalSetYearMonth(env_, err_, -5, 13, y), 0);
  const std::string ymt = record("QWZIntervalSetYearMonth", {{"void*", hex12(env_)},
                                                             {"QWZError*", hex12(err_)},
                                                             {"sb4", "-5"},
                                                             {"sb4", "13"},
                                                             {"QWZInterval*", hex12(y)}});
  ASSERT_EQ(recs().size(), 2u);
  expect_rec(0, 150, 1, 0, ymt);
  expect_rec(1, 150, 0, 0, ymt);
  recs().clear();
  ASSERT_EQ(QWZIntervalSetDaySecond(session_, err_, INT32_MIN, 2, -3, 4, 99999, d), 0);
  const std::string dst = record("QWZIntervalSetDaySecond", {{"void*", hex12(session_)},
                                                             {"QWZError*", hex12(err_)},
                                                             {"sb4", "-2147483648"},
                                                             {"sb4", "2"},
                                                             {"sb4", "-3"},
                                                             {"sb4", "4"},
                                                             {"sb4", "99999"},
                                                             {"QWZInterval*", hex12(d)}});
  ASSERT_EQ(recs().size(), 2u);
  expect_rec(0, 151, 1, 0, dst);
  expect_rec(1, 151, 0, 0, dst);
  // A refused call has its entry record only.
  recs().clear();
  EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, 1, 1, d), QWZ_INVALID_HANDLE);
  ASSERT_EQ(recs().size(), 1u);
  EXPECT_EQ(recs()[0].direction, 1u);
}

TEST_F(IntervalFrame, GetYearMonthLeavesTheIntervalOutOfItsRecords) {
  QWZInterval *y = ym(1, 2);
  sb4 a = 0, b = 0;
  recs().clear();
  ASSERT_EQ(QWZIntervalGetYearMonth(env_, err_, &a, &b, y), 0);
  ASSERT_EQ(recs().size(), 2u);
  for (size_t i = 0; i < 2; ++i) {
    const std::string &t = recs()[i].text;
    EXPECT_EQ(recs()[i].api_id, 152u);
    EXPECT_EQ(recs()[i].status, 0);
    EXPECT_EQ(t.rfind("<QWZIntervalGetYearMonth>\n\tvoid*     \t" + hex12(env_) +
                          "\n\tQWZError*     \t" + hex12(err_) + "\n\tsb4*     \t" + hex12(&a) +
                          "\n\tsb4*     \t" + hex12(&b) + "\n\tconst QWZInterval*     \t0x",
                      0),
              0u)
        << t;
    EXPECT_EQ(t.find(hex12(y)), std::string::npos);
  }
  // A NULL output is traced as "(null)", not as a zero pointer.
  recs().clear();
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, nullptr, &b, y), QWZ_ERROR);
  ASSERT_EQ(recs().size(), 1u);
  EXPECT_NE(line_value(recs()[0].text, 2), hexv(0));
  EXPECT_EQ(line_value(recs()[0].text, 3), hex12(&b));
}

TEST_F(IntervalFrame, GetDaySecondRecords) {
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  sb4 o[5] = {};
  recs().clear();
  ASSERT_EQ(QWZIntervalGetDaySecond(env_, err_, &o[0], &o[1], &o[2], &o[3], &o[4], d), 0);
  const std::string t = record("QWZIntervalGetDaySecond", {{"dvoid*", hex12(env_)},
                                                           {"QWZError*", hex12(err_)},
                                                           {"sb4*", hex12(&o[0])},
                                                           {"sb4*", hex12(&o[1])},
                                                           {"sb4*", hex12(&o[2])},
                                                           {"sb4*", hex12(&o[3])},
                                                           {"sb4*", hex12(&o[4])},
                                                           {"CONST QWZInterval*", hex12(d)}});
  ASSERT_EQ(recs().size(), 2u);
  expect_rec(0, 153, 1, 0, t);
  expect_rec(1, 153, 0, 0, t);
  recs().clear();
  EXPECT_EQ(QWZIntervalGetDaySecond(env_, err_, &o[0], &o[1], &o[2], nullptr, &o[4], d),
            QWZ_ERROR);
  ASSERT_EQ(recs().size(), 1u);
  EXPECT_EQ(line_value(recs()[0].text, 4), hex12(&o[2]));
  EXPECT_NE(line_value(recs()[0].text, 5), hexv(0));
  EXPECT_EQ(line_value(recs()[0].text, 7), hex12(d));
}

TEST_F(IntervalFrame, CheckAndAssignRecords) {
  QWZInterval *y = ym(1, 2);
  QWZInterval *out = ym(0, 0);
  ub4 v = 0;
  recs().clear();
  ASSERT_EQ(QWZIntervalCheck(env_, err_, y, &v), 0);
  const std::string ct = record("QWZIntervalCheck", {{"void*", hex12(env_)},
                                                     {"QWZError*", hex12(err_)},
                                                     {"const QWZInterval*", hex12(y)},
                                                     {"ub4*", hex12(&v)}});
  ASSERT_EQ(recs().size(), 2u);
  expect_rec(0, 154, 1, 0, ct);
  expect_rec(1, 154, 0, 0, ct);
  recs().clear();
  EXPECT_EQ(QWZIntervalCheck(env_, err_, y, nullptr), QWZ_ERROR);
  ASSERT_EQ(recs().size(), 1u);
  EXPECT_NE(line_value(recs()[0].text, 3), hexv(0));

  // Assign nests a traced check of its input.
  recs().clear();
  ASSERT_EQ(QWZIntervalAssign(session_, err_, y, out), 0);
  EXPECT_EQ(ids(), (std::vector<ub4>{1551, 1541, 1540, 1550}));
  const std::string at = record("QWZIntervalAssign", {{"void*", hex12(session_)},
                                                      {"QWZError*", hex12(err_)},
                                                      {"const QWZInterval*", hex12(y)},
                                                      {"QWZInterval*", hex12(out)}});
  expect_rec(0, 155, 1, 0, at);
  expect_rec(3, 155, 0, 0, at);
  EXPECT_EQ(line_value(recs()[1].text, 0), hex12(session_));
  EXPECT_EQ(line_value(recs()[1].text, 2), hex12(y));
  // A refused assignment: no exit record of its own.
  recs().clear();
  EXPECT_EQ(QWZIntervalAssign(env_, err_, y, ds(1, 2, 3, 4, 5)), QWZ_ERROR);
  EXPECT_EQ(ids(), (std::vector<ub4>{1511, 1510, 1551, 1541, 1540}));
}
