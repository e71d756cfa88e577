// QWZDateTimeIntervalAdd, QWZDateTimeIntervalSub and the add routine.
#include "arith_support.h"

#include <climits>

using namespace qwz_test;

namespace {

class DateTimeIntervalAdd : public ArithFixture {};
using DateTimeIntervalSub = DateTimeIntervalAdd;

constexpr ub4 TZ = DATETIME_KIND_TIMESTAMP_TZ;

struct YmCase {
  const char *name;
  Fields from;
  sb4 years, months;
  bool subtract;
  sword status;
  Fields expect;  // when status is 0
};

TEST_F(DateTimeIntervalAdd, YearMonthTable) {
  ZoneGuard z(kUtc);
  const YmCase cases[] = {
      {"one month into the next year", {2019, 12, 15, 8, 9, 10, 7, 2, 0}, 0, 1, false, 0,
       {2020, 1, 15, 8, 9, 10, 7, 0, 0}},
      {"twelve months from December", {2019, 12, 15, 0, 0, 0, 0, 0, 0}, 0, 12, false, 0,
       {2020, 12, 15, 0, 0, 0, 0, 0, 0}},
      {"years and months", {2001, 5, 20, 0, 0, 0, 0, 0, 0}, 3, 4, false, 0,
       {2004, 9, 20, 0, 0, 0, 0, 0, 0}},
      {"25 months", {2001, 5, 20, 0, 0, 0, 0, 0, 0}, 0, 25, false, 0,
       {2003, 6, 20, 0, 0, 0, 0, 0, 0}},
      {"four months back from March", {2020, 3, 10, 1, 2, 3, 0, 0, 0}, 0, 4, true, 0,
       {2019, 11, 10, 1, 2, 3, 0, 0, 0}},
      {"one year back", {2020, 3, 10, 0, 0, 0, 0, 0, 0}, 1, 0, true, 0,
       {2019, 3, 10, 0, 0, 0, 0, 0, 0}},
      {"year one minus a year is year zero, accepted", {1, 6, 1, 0, 0, 0, 0, 0, 0}, 1, 0, true, 0,
       {0, 6, 1, 0, 0, 0, 0, 0, 0}},
      {"three months back from March", {2020, 3, 10, 0, 0, 0, 0, 0, 0}, 0, 3, true, -1, {}},
      {"one month on from 31 January", {2021, 1, 31, 0, 0, 0, 0, 0, 0}, 0, 1, false, -1, {}},
      {"24 months from December lands on month 0", {2021, 12, 1, 0, 0, 0, 0, 0, 0}, 0, 24, false, -1, {}},
  };
  for (const YmCase &c : cases) {
    SCOPED_TRACE(c.name);
    QWZDateTime *in = dt(TZ, c.from);
    QWZDateTime *out = new_datetime(TZ);
    QWZInterval *iv = ym(c.years, c.months);
    const sword rc = c.subtract ? QWZDateTimeIntervalSub(env_, err_, in, iv, out)
                                : QWZDateTimeIntervalAdd(env_, err_, in, iv, out);
    EXPECT_EQ(rc, c.status);
    if (c.status == 0) {
      Fields want = c.expect;
      EXPECT_EQ(fields_of(out), want);
      expect_clear();
    } else {
      expect_diag(22007, "22007", kDateFormat22007);
    }
  }
}

TEST_F(DateTimeIntervalAdd, DaySecondThroughLocalTimeLeapDay) {
  for (const char *zone : {kUtc, kCet, kEst}) {
    ZoneGuard z(zone);
    SCOPED_TRACE(zone);
    QWZDateTime *in = dt(TZ, {2024, 2, 28, 10, 0, 0, 0, 1, 0});
    QWZDateTime *out = new_datetime(TZ);
    ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(1, 0, 0, 0, 0), out), 0);
    EXPECT_EQ(fields_of(out), (Fields{2024, 2, 29, 10, 0, 0, 0, 0, 0}));
  }
}

TEST_F(DateTimeIntervalAdd, DaySecondCarriesAcrossFields) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = dt(TZ, {2023, 12, 31, 23, 59, 30, 0, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(0, 0, 0, 45, 0), out), 0);
  EXPECT_EQ(fields_of(out), (Fields{2024, 1, 1, 0, 0, 15, 0, 0, 0}));
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(-365, -23, -59, -30, 0), out), 0);
  EXPECT_EQ(fields_of(out), (Fields{2022, 12, 31, 0, 0, 0, 0, 0, 0}));
}

// Fields go in as standard time and come out as the zone's clock time.
TEST_F(DateTimeIntervalAdd, SummerTimeAsymmetry) {
  QWZDateTime *in = dt(TZ, {2024, 6, 10, 10, 0, 0, 0, 2, 0});
  QWZDateTime *out = new_datetime(TZ);
  {
    ZoneGuard z(kUtc);
    ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(1, 0, 0, 0, 0), out), 0);
    EXPECT_EQ(out->hour, 10);
    EXPECT_EQ(out->day, 11);
  }
  {
    ZoneGuard z(kCet);
    ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(1, 0, 0, 0, 0), out), 0);
    EXPECT_EQ(out->hour, 11);
    EXPECT_EQ(out->day, 11);
  }
  {
    // A winter result in the same zone is exact.
    ZoneGuard z(kCet);
    QWZDateTime *w = dt(TZ, {2024, 1, 10, 23, 30, 0, 0, 1, 0});
    ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, w, ds(1, 0, 0, 0, 0), out), 0);
    EXPECT_EQ(fields_of(out), (Fields{2024, 1, 11, 23, 30, 0, 0, 0, 0}));
    // 23:30 read as standard time in summer shows 00:30 of the next day.
    QWZDateTime *s = dt(TZ, {2024, 7, 10, 23, 30, 0, 0, 1, 0});
    ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, s, ds(0, 0, 0, 0, 0), out), 0);
    EXPECT_EQ(fields_of(out), (Fields{2024, 7, 11, 0, 30, 0, 0, 0, 0}));
  }
}

TEST_F(DateTimeIntervalAdd, FractionNeverCarriesIntoSeconds) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = dt(TZ, {2024, 5, 5, 5, 5, 5, 999999999, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(0, 0, 0, 0, 1), out), 0);
  EXPECT_EQ(fields_of(out), (Fields{2024, 5, 5, 5, 5, 5, 1000000000u, 0, 0}));
  // Year-month intervals add their fraction slot too.
  QWZInterval *iv = ym(0, 1);
  iv->slot[QWZ_IV_FRACTION] = 5;
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, iv, out), 0);
  EXPECT_EQ(fields_of(out), (Fields{2024, 6, 5, 5, 5, 5, 1000000004u, 0, 0}));
}

TEST_F(DateTimeIntervalSub, FractionBorrowsAtOneBillion) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = dt(TZ, {2024, 5, 5, 5, 5, 5, 100, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  ASSERT_EQ(QWZDateTimeIntervalSub(env_, err_, in, ds(0, 0, 0, 0, 200), out), 0);
  EXPECT_EQ(fields_of(out), (Fields{2024, 5, 5, 5, 5, 4, 999999900u, 0, 0}));
}

TEST_F(DateTimeIntervalSub, BorrowFromSecondZeroWrapsAndFails) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = dt(TZ, {2024, 5, 5, 5, 5, 0, 100, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, in, ds(0, 0, 0, 0, 200), out), -1);
  expect_diag(22007, "22007", kDateFormat22007);
  // The invalid value is left in the result.
  EXPECT_EQ(out->second, 65535);
  EXPECT_EQ(out->fraction, 999999900u);
}

TEST_F(DateTimeIntervalSub, LeavesTheCallersIntervalNegated) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = dt(TZ, {2024, 5, 5, 5, 5, 5, 0, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  ASSERT_EQ(QWZDateTimeIntervalSub(env_, err_, in, d, out), 0);
  EXPECT_EQ(d->slot[0], -1);
  EXPECT_EQ(d->slot[1], -2);
  EXPECT_EQ(d->slot[2], -3);
  EXPECT_EQ(d->slot[3], -4);
  EXPECT_EQ(d->slot[4], -5);
  EXPECT_EQ(fields_of(out), (Fields{2024, 5, 4, 3, 2, 0, 999999995u, 0, 0}));
  QWZInterval *y = ym(1, 2);
  y->slot[2] = 7;
  ASSERT_EQ(QWZDateTimeIntervalSub(env_, err_, in, y, out), 0);
  EXPECT_EQ(y->slot[0], -1);
  EXPECT_EQ(y->slot[1], -2);
  EXPECT_EQ(y->slot[2], 7);  // a year-month interval negates its two fields only
  EXPECT_EQ(fields_of(out), (Fields{2023, 3, 5, 5, 5, 5, 0, 0, 0}));
}

TEST_F(DateTimeIntervalAdd, OnlyTimestampsWithZone) {
  ZoneGuard z(kUtc);
  for (ub4 type : {65u, 66u, 67u, 68u, 70u}) {
    SCOPED_TRACE(type);
    QWZDateTime *in = dt(type, {2024, 5, 5, 5, 5, 5, 0, 0, 0});
    QWZDateTime *out = new_datetime(TZ);
    QWZDateTime before = *out;
    EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(1, 0, 0, 0, 0), out), -1);
    expect_diag(800130, "", "inconsistent datatypes: expected %s got %s.");
    EXPECT_EQ(fields_of(out), fields_of(&before));
    EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, in, ds(1, 0, 0, 0, 0), out), -1);
    expect_diag(800130, "", "inconsistent datatypes: expected %s got %s.");
  }
}

TEST_F(DateTimeIntervalAdd, ResultTypeDecidesTheCheck) {
  ZoneGuard z(kUtc);
  // A date result ignores the time fields; the zone of the result is kept.
  QWZDateTime *in = dt(TZ, {2024, 5, 5, 5, 5, 5, 0, 3, 0});
  QWZDateTime *out = dt(DATETIME_KIND_DATE, {0, 0, 0, 0, 0, 0, 0, 7, 7});
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(0, 1, 0, 0, 0), out), 0);
  EXPECT_EQ(fields_of(out), (Fields{2024, 5, 5, 6, 5, 5, 0, 7, 7}));
  EXPECT_EQ(out->hdr.type, DATETIME_KIND_DATE);
}

TEST_F(DateTimeIntervalAdd, ResultMayBeTheSource) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = dt(TZ, {2020, 3, 31, 1, 0, 0, 10, 0, 0});
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(1, 0, 0, 0, 5), in), 0);
  EXPECT_EQ(fields_of(in), (Fields{2020, 4, 1, 1, 0, 0, 15, 0, 0}));
  ASSERT_EQ(QWZDateTimeIntervalSub(env_, err_, in, ym(1, 0), in), 0);
  EXPECT_EQ(fields_of(in), (Fields{2019, 4, 1, 1, 0, 0, 15, 0, 0}));
  // The borrow test reads the source's month after the result is written:
  // in place, April minus 5 months stores month -1 first and never borrows.
  EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, in, ym(0, 5), in), -1);
  expect_diag(22007, "22007", kDateFormat22007);
  EXPECT_EQ(in->month, 65535);
  QWZDateTime *other = dt(TZ, {2019, 4, 1, 1, 0, 0, 15, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  ASSERT_EQ(QWZDateTimeIntervalSub(env_, err_, other, ym(0, 5), out), 0);
  EXPECT_EQ(fields_of(out), (Fields{2018, 11, 1, 1, 0, 0, 15, 0, 0}));
}

TEST_F(DateTimeIntervalAdd, HandleChecksInOrder) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = dt(TZ, {2024, 5, 5, 5, 5, 5, 0, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  QWZInterval *iv = ds(1, 0, 0, 0, 0);
  void *dead_dt = freed(TZ);
  void *dead_iv = freed(INTERVAL_KIND_DS);
  struct Case {
    const char *name;
    void *hndl;
    void *datetime;
    void *inter;
    void *out;
  } cases[] = {
      {"NULL context", nullptr, in, iv, out},
      {"error handle as context", err_, in, iv, out},
      {"NULL datetime", env_, nullptr, iv, out},
      {"freed datetime", env_, dead_dt, iv, out},
      {"interval as datetime", env_, iv, iv, out},
      {"NULL interval", env_, in, nullptr, out},
      {"freed interval", env_, in, dead_iv, out},
      {"datetime as interval", env_, in, in, out},
      {"NULL result", env_, in, iv, nullptr},
      {"freed result", env_, in, iv, dead_dt},
      {"everything bad: the context wins", nullptr, nullptr, nullptr, nullptr},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    for (bool sub : {false, true}) {
      auto *d = static_cast<QWZDateTime *>(c.datetime);
      auto *i = static_cast<QWZInterval *>(c.inter);
      auto *o = static_cast<QWZDateTime *>(c.out);
      const sword rc = sub ? QWZDateTimeIntervalSub(c.hndl, err_, d, i, o)
                           : QWZDateTimeIntervalAdd(c.hndl, err_, d, i, o);
      EXPECT_EQ(rc, QWZ_INVALID_HANDLE);
      expect_invalid_handle();
    }
  }
  EXPECT_EQ(iv->slot[0], 1);  // never negated by a refused call
  // A session is an accepted context handle.
  EXPECT_EQ(QWZDateTimeIntervalAdd(session_, err_, in, iv, out), 0);
  expect_clear();
  // An invalid error handle: its validator's value, nothing written.
  QWZDateTime before = *out;
  EXPECT_EQ(QWZDateTimeIntervalAdd(env_, nullptr, in, iv, out), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDateTimeIntervalAdd(env_, reinterpret_cast<QWZError *>(env_), in, iv, out),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(fields_of(out), fields_of(&before));
}

// Extreme slots: 64-bit totals, no signed overflow; results fail their check.
TEST_F(DateTimeIntervalAdd, ExtremeIntervalSlots) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = dt(TZ, {2024, 5, 5, 5, 5, 5, 0, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  for (sb4 v : {INT32_MIN, INT32_MAX, INT32_MIN + 1}) {
    for (int slot = 0; slot < 5; ++slot) {
      SCOPED_TRACE(testing::Message() << "slot " << slot << " value " << v);
      for (ub4 kind : {62u, 63u}) {
        QWZInterval *iv = new_interval(kind);
        iv->slot[slot] = v;
        for (bool sub : {false, true}) {
          const sword rc = sub ? QWZDateTimeIntervalSub(env_, err_, in, iv, out)
                               : QWZDateTimeIntervalAdd(env_, err_, in, iv, out);
          EXPECT_TRUE(rc == 0 || rc == -1);
          if (rc == -1) expect_diag(22007, "22007", kDateFormat22007);
        }
      }
    }
  }
}

TEST_F(DateTimeIntervalAdd, AddRoutineRefusesNullArguments) {
  QWZDateTime *in = dt(TZ, {2024, 5, 5, 5, 5, 5, 0, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  QWZInterval *iv = ds(1, 0, 0, 0, 0);
  EXPECT_EQ(qwz_datetime_add_interval(env_, err_, nullptr, iv, out, 1), -1);
  EXPECT_EQ(qwz_datetime_add_interval(env_, err_, in, nullptr, out, 1), -1);
  EXPECT_EQ(qwz_datetime_add_interval(env_, err_, in, iv, nullptr, 1), -1);
  EXPECT_EQ(qwz_datetime_add_interval(env_, nullptr, in, iv, out, 1), -1);
  expect_clear();
}

TEST_F(DateTimeIntervalAdd, TraceNestsTheResultCheck) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = dt(TZ, {2024, 5, 5, 5, 5, 5, 0, 0, 0});
  QWZDateTime *out = new_datetime(TZ);
  QWZInterval *iv = ds(1, 0, 0, 0, 0);
  TraceCapture cap;
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, iv, out), 0);
  auto &r = cap.records();
  ASSERT_EQ(r.size(), 4u);
  const std::string row = "<QWZDateTimeIntervalAdd>\n\tvoid*     \t" + hex12(env_) +
                          "\n\tQWZError*     \t" + hex12(err_) + "\n\tQWZDateTime*     \t" +
                          hex12(in) + "\n\tQWZInterval*     \t" + hex12(iv) +
                          "\n\tQWZDateTime*     \t" + hex12(out);
  EXPECT_EQ(r[0].api_id, 139u);
  EXPECT_EQ(r[0].direction, 1u);
  EXPECT_EQ(r[0].text, row);
  EXPECT_EQ(r[1].api_id, 147u);
  EXPECT_EQ(r[1].direction, 1u);
  EXPECT_EQ(r[1].text.rfind("<QWZDateTimeCheck>\n\tvoid*     \t" + hex12(env_), 0), 0u);
  EXPECT_EQ(r[2].api_id, 147u);
  EXPECT_EQ(r[2].direction, 0u);
  EXPECT_EQ(r[3].api_id, 139u);
  EXPECT_EQ(r[3].direction, 0u);
  EXPECT_EQ(r[3].status, 0);
  EXPECT_EQ(r[3].text, row);

  // A refused call has no exit record.
  cap.records().clear();
  EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, in, nullptr, out), QWZ_INVALID_HANDLE);
  ASSERT_EQ(r.size(), 1u);
  EXPECT_EQ(r[0].api_id, 140u);
  EXPECT_EQ(r[0].direction, 1u);
}

}  // namespace
