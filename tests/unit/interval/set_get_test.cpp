// QWZIntervalSetYearMonth, QWZIntervalSetDaySecond, QWZIntervalGetYearMonth,
// QWZIntervalGetDaySecond and the normaliser qwz_month_or_second_to_internal.
#include "interval_fixture.h"

#include <cstdint>

using namespace qwz_test;

class QWZIntervalSetYearMonth : public IntervalFixture {};
class QWZIntervalSetDaySecond : public IntervalFixture {};
class QWZIntervalGetYearMonth : public IntervalFixture {};
class QWZIntervalGetDaySecond : public IntervalFixture {};
class QwzMonthOrSecondToInternal : public IntervalFixture {};

// ---- set then get ----------------------------------------------------------

struct YmCase {
  sb4 y, m;
};
constexpr YmCase kYmCases[] = {
    {0, 0},        {1, 2},           {-1, -2},          {0, 25},  // out of range, stored as given
    {0, 13},       {123456, -40},    {INT32_MAX, INT32_MIN}, {INT32_MIN, INT32_MAX},
    {INT32_MIN, INT32_MIN},
};

TEST_F(QWZIntervalSetYearMonth, StoresAsGivenAndGetReadsBack) {
  for (void *hndl : {static_cast<void *>(env_), static_cast<void *>(session_)}) {
    for (const YmCase &c : kYmCases) {
      SCOPED_TRACE(std::to_string(c.y) + "," + std::to_string(c.m));
      QWZInterval *iv = ym(7, 7);
      dirty();
      ASSERT_EQ(::QWZIntervalSetYearMonth(hndl, err_, c.y, c.m, iv), 0);
      expect_clear();
      // Slots 3..5 are not the year-month kind's and stay as they were.
      EXPECT_EQ(slots_of(iv), (Slots{c.y, c.m, 333, 444, 555}));
      sb4 y = 1, m = 1;
      dirty();
      ASSERT_EQ(::QWZIntervalGetYearMonth(hndl, err_, &y, &m, iv), 0);
      expect_clear();
      EXPECT_EQ(y, c.y);
      EXPECT_EQ(m, c.m);
    }
  }
}

TEST_F(QWZIntervalSetDaySecond, StoresAsGivenAndGetReadsBack) {
  const Slots cases[] = {
      {0, 0, 0, 0, 0},
      {1, 2, 3, 4, 5},
      {-1, -2, -3, -4, -5},
      {-999999999, 24, 60, -60, 100000},  // out of range, stored as given
      {1, -2, 3, -4, 5},                  // mixed signs
      {INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN},
      {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX},
  };
  for (const Slots &c : cases) {
    QWZInterval *iv = ds(9, 9, 9, 9, 9);
    dirty();
    ASSERT_EQ(::QWZIntervalSetDaySecond(session_, err_, c[0], c[1], c[2], c[3], c[4], iv), 0);
    expect_clear();
    EXPECT_EQ(slots_of(iv), c);
    Slots out{7, 7, 7, 7, 7};
    dirty();
    ASSERT_EQ(::QWZIntervalGetDaySecond(env_, err_, &out[0], &out[1], &out[2], &out[3], &out[4],
                                        iv),
              0);
    expect_clear();
    EXPECT_EQ(out, c);
  }
}

// ---- the four kind mismatches ----------------------------------------------

TEST_F(QWZIntervalSetYearMonth, DaySecondDescriptorIsAnInvalidHandle) {
  QWZInterval *iv = ds(1, 2, 3, 4, 5);
  EXPECT_EQ(::QWZIntervalSetYearMonth(env_, err_, 1, 2, iv), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 3, 4, 5}));
}

TEST_F(QWZIntervalSetDaySecond, YearMonthDescriptorIsAnInvalidHandle) {
  QWZInterval *iv = ym(1, 2);
  EXPECT_EQ(::QWZIntervalSetDaySecond(env_, err_, 9, 9, 9, 9, 9, iv), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 333, 444, 555}));
}

TEST_F(QWZIntervalGetYearMonth, DaySecondDescriptorIsAnInvalidHandle) {
  QWZInterval *iv = ds(1, 2, 3, 4, 5);
  sb4 y = 77, m = 78;
  EXPECT_EQ(::QWZIntervalGetYearMonth(env_, err_, &y, &m, iv), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(y, 77);
  EXPECT_EQ(m, 78);
}

TEST_F(QWZIntervalGetDaySecond, YearMonthDescriptorIsAnInvalidHandle) {
  QWZInterval *iv = ym(1, 2);
  Slots out{7, 7, 7, 7, 7};
  EXPECT_EQ(
      ::QWZIntervalGetDaySecond(env_, err_, &out[0], &out[1], &out[2], &out[3], &out[4], iv),
      QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(out, (Slots{7, 7, 7, 7, 7}));
}

// ---- bad descriptors: NULL, freed, a datetime, the error handle ------------

TEST_F(QWZIntervalSetYearMonth, BadDescriptorsAreInvalidHandles) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  const void *bad[] = {nullptr, freed_interval(INTERVAL_KIND_YM), dt, err_, env_};
  for (const void *d : bad) {
    EXPECT_EQ(::QWZIntervalSetYearMonth(env_, err_, 1, 2,
                                        static_cast<QWZInterval *>(const_cast<void *>(d))),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
}

TEST_F(QWZIntervalSetDaySecond, BadDescriptorsAreInvalidHandles) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  const void *bad[] = {nullptr, freed_interval(INTERVAL_KIND_DS), dt, session_};
  for (const void *d : bad) {
    EXPECT_EQ(::QWZIntervalSetDaySecond(env_, err_, 1, 2, 3, 4, 5,
                                        static_cast<QWZInterval *>(const_cast<void *>(d))),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
}

TEST_F(QWZIntervalGetYearMonth, BadDescriptorsAreInvalidHandles) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  const void *bad[] = {nullptr, freed_interval(INTERVAL_KIND_YM), dt};
  for (const void *d : bad) {
    sb4 y = 5, m = 6;
    EXPECT_EQ(
        ::QWZIntervalGetYearMonth(env_, err_, &y, &m, static_cast<const QWZInterval *>(d)),
        QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(y, 5);
    EXPECT_EQ(m, 6);
  }
}

TEST_F(QWZIntervalGetDaySecond, BadDescriptorsAreInvalidHandles) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  const void *bad[] = {nullptr, freed_interval(INTERVAL_KIND_DS), dt};
  for (const void *d : bad) {
    Slots out{7, 7, 7, 7, 7};
    EXPECT_EQ(::QWZIntervalGetDaySecond(env_, err_, &out[0], &out[1], &out[2], &out[3], &out[4],
                                        static_cast<const QWZInterval *>(d)),
              QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(out, (Slots{7, 7, 7, 7, 7}));
  }
}

// ---- NULL outputs of the getters -------------------------------------------

TEST_F(QWZIntervalGetYearMonth, NullOutputsWriteNothing) {
  QWZInterval *iv = ym(3, 4);
  sb4 y = 5, m = 6;
  EXPECT_EQ(::QWZIntervalGetYearMonth(env_, err_, nullptr, &m, iv), QWZ_ERROR);
  expect_value_address();
  EXPECT_EQ(::QWZIntervalGetYearMonth(env_, err_, &y, nullptr, iv), QWZ_ERROR);
  expect_value_address();
  EXPECT_EQ(::QWZIntervalGetYearMonth(env_, err_, nullptr, nullptr, iv), QWZ_ERROR);
  expect_value_address();
  EXPECT_EQ(y, 5);
  EXPECT_EQ(m, 6);
}

TEST_F(QWZIntervalGetDaySecond, AnyNullOutputWritesNothing) {
  QWZInterval *iv = ds(1, 2, 3, 4, 5);
  for (int missing = 0; missing < 5; ++missing) {
    Slots out{7, 7, 7, 7, 7};
    sb4 *p[5] = {&out[0], &out[1], &out[2], &out[3], &out[4]};
    p[missing] = nullptr;
    EXPECT_EQ(::QWZIntervalGetDaySecond(env_, err_, p[0], p[1], p[2], p[3], p[4], iv), QWZ_ERROR);
    expect_value_address();
    EXPECT_EQ(out, (Slots{7, 7, 7, 7, 7}));
  }
}

// ---- order of the checks ---------------------------------------------------

// Error handle first (no diagnostic anywhere), then the context handle, then
// the descriptor, then the output pointers.
TEST_F(QWZIntervalGetYearMonth, ChecksRunInOrder) {
  QWZInterval *wrong = ds(1, 2, 3, 4, 5);
  // A bad error handle wins over everything and writes nothing.
  dirty();
  EXPECT_EQ(::QWZIntervalGetYearMonth(nullptr, reinterpret_cast<QWZError *>(session_), nullptr,
                                      nullptr, wrong),
            QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  // The context handle wins over the descriptor and the pointers.
  EXPECT_EQ(::QWZIntervalGetYearMonth(err_, err_, nullptr, nullptr, wrong), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(::QWZIntervalGetYearMonth(nullptr, err_, nullptr, nullptr, wrong), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  // The descriptor wins over the pointers.
  EXPECT_EQ(::QWZIntervalGetYearMonth(env_, err_, nullptr, nullptr, wrong), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}

TEST_F(QWZIntervalGetDaySecond, ChecksRunInOrder) {
  QWZInterval *wrong = ym(1, 2);
  dirty();
  EXPECT_EQ(::QWZIntervalGetDaySecond(env_, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      wrong),
            QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  EXPECT_EQ(::QWZIntervalGetDaySecond(wrong, err_, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      wrong),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(::QWZIntervalGetDaySecond(session_, err_, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      wrong),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}

TEST_F(QWZIntervalSetYearMonth, ChecksRunInOrder) {
  QWZInterval *iv = ym(1, 2);
  dirty();
  EXPECT_EQ(::QWZIntervalSetYearMonth(env_, reinterpret_cast<QWZError *>(env_), 5, 6, iv),
            QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  EXPECT_EQ(::QWZIntervalSetYearMonth(iv, err_, 5, 6, iv), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 333, 444, 555}));
}

TEST_F(QWZIntervalSetDaySecond, ChecksRunInOrder) {
  QWZInterval *iv = ds(1, 2, 3, 4, 5);
  dirty();
  EXPECT_EQ(::QWZIntervalSetDaySecond(env_, nullptr, 5, 6, 7, 8, 9, iv), QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  EXPECT_EQ(::QWZIntervalSetDaySecond(nullptr, err_, 5, 6, 7, 8, 9, iv), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 3, 4, 5}));
}

// ---- the normaliser --------------------------------------------------------

struct NormalCase {
  ub4 kind;
  std::int64_t months, seconds;
  sb4 fraction;
  Slots expected;  // from slots that all started as 9
};

constexpr NormalCase kNormalCases[] = {
    {INTERVAL_KIND_DS, 0, -1, 0, {0, 0, 0, -1, 0}},
    {INTERVAL_KIND_DS, 0, 90061, 0, {1, 1, 1, 1, 0}},
    {INTERVAL_KIND_DS, 0, -90061, -5, {-1, -1, -1, -1, -5}},
    {INTERVAL_KIND_DS, 0, 86399, 99999, {0, 23, 59, 59, 99999}},
    {INTERVAL_KIND_DS, 0, 0, INT32_MIN, {0, 0, 0, 0, INT32_MIN}},
    // The months are not the day-second kind's: ignored.
    {INTERVAL_KIND_DS, 12345, 60, 0, {0, 0, 1, 0, 0}},
    {INTERVAL_KIND_YM, -14, 0, 0, {-1, -2, 9, 9, 9}},
    {INTERVAL_KIND_YM, 14, 99999, 77, {1, 2, 9, 9, 9}},
    {INTERVAL_KIND_YM, -11, 0, 0, {0, -11, 9, 9, 9}},
    {INTERVAL_KIND_YM, 24, 0, 0, {2, 0, 9, 9, 9}},
    // Narrowed to 32 bits with no range test: 2^32 years keep their low
    // 32 bits (0), 2^31 years wrap to the most negative value.
    {INTERVAL_KIND_YM, (std::int64_t{1} << 32) * 12 + 5, 0, 0, {0, 5, 9, 9, 9}},
    {INTERVAL_KIND_YM, (std::int64_t{1} << 31) * 12, 0, 0, {INT32_MIN, 0, 9, 9, 9}},
    {INTERVAL_KIND_DS, 0, (std::int64_t{1} << 32) * 86400 + 3661, 1, {0, 1, 1, 1, 1}},
    {INTERVAL_KIND_DS, 0, -((std::int64_t{1} << 31) + 1) * 86400, 0, {INT32_MAX, 0, 0, 0, 0}},
};

TEST_F(QwzMonthOrSecondToInternal, TotalsBackIntoFields) {
  for (const NormalCase &c : kNormalCases) {
    SCOPED_TRACE(std::to_string(c.months) + " months " + std::to_string(c.seconds) + " s");
    QWZInterval *iv = of_kind(c.kind, {9, 9, 9, 9, 9});
    EXPECT_EQ(qwz_month_or_second_to_internal(c.months, c.seconds, c.fraction, iv), 0);
    EXPECT_EQ(slots_of(iv), c.expected);
  }
}

TEST_F(QwzMonthOrSecondToInternal, NullDestinationIsMinusOne) {
  EXPECT_EQ(qwz_month_or_second_to_internal(1, 1, 1, nullptr), -1);
}

TEST_F(QwzMonthOrSecondToInternal, OtherKindsAreLeftAlone) {
  for (ub2 kind : {ub2{0}, ub2{61}, ub2{64}, ub2{DATETIME_KIND_DATE}}) {
    QWZInterval iv{};
    iv.hdr.type = kind;
    for (sb4 &s : iv.slot) s = 9;
    EXPECT_EQ(qwz_month_or_second_to_internal(14, 90061, 5, &iv), 0);
    EXPECT_EQ(slots_of(&iv), (Slots{9, 9, 9, 9, 9}));
  }
}
