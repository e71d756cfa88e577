// QWZDateTimeIntervalAdd and QWZDateTimeIntervalSub as a client sees them:
// values built with the constructor and the interval setters, results read
// back through the getters.
#include "datetime_arith_conf.h"

#include <climits>

using namespace qwz_conf;

namespace {

constexpr ub4 TZ = DATETIME_KIND_TIMESTAMP_TZ;

class DateTimeIntervalAdd : public ConfFixture {};
using DateTimeIntervalSub = DateTimeIntervalAdd;

struct Stamp {
  sb2 y;
  ub1 mo, d, h, mi, s;
  ub4 f;
};

// ---- year-month intervals ----------------------------------------------------

struct YmCase {
  const char *name;
  Stamp from;
  sb4 years, months;
  bool subtract;
  sword status;
  Stamp stored;  // what the output holds afterwards, valid or not
};

TEST_F(DateTimeIntervalAdd, YearMonthFieldArithmetic) {
  ZoneGuard z(kUtc);
  const YmCase cases[] = {
      {"one month into the next year", {2019, 12, 15, 8, 9, 10, 7}, 0, 1, false, 0,
       {2020, 1, 15, 8, 9, 10, 7}},
      {"twelve months from December", {2019, 12, 15, 1, 2, 3, 0}, 0, 12, false, 0,
       {2020, 12, 15, 1, 2, 3, 0}},
      {"years and months", {2001, 5, 20, 0, 0, 0, 0}, 3, 4, false, 0, {2004, 9, 20, 0, 0, 0, 0}},
      {"25 months", {2001, 5, 20, 0, 0, 0, 0}, 0, 25, false, 0, {2003, 6, 20, 0, 0, 0, 0}},
      {"24 months from December reaches month 0", {2001, 12, 20, 0, 0, 0, 0}, 0, 24, false, -1,
       {2004, 0, 20, 0, 0, 0, 0}},
      {"negative months added", {2001, 6, 20, 0, 0, 0, 0}, 0, -2, false, 0,
       {2001, 4, 20, 0, 0, 0, 0}},
      {"negative months added past January are not borrowed", {2001, 1, 20, 0, 0, 0, 0}, 0, -2,
       false, -1, {2001, 0xFF, 20, 0, 0, 0, 0}},
      {"31 January plus a month is 31 February", {2021, 1, 31, 0, 0, 0, 0}, 0, 1, false, -1,
       {2021, 2, 31, 0, 0, 0, 0}},
      {"9999 plus a year", {9999, 6, 1, 0, 0, 0, 0}, 1, 0, false, -1, {10000, 6, 1, 0, 0, 0, 0}},
      {"year zero with a bad day is refused", {5, 1, 31, 0, 0, 0, 0}, -5, 1, false, -1,
       {0, 2, 31, 0, 0, 0, 0}},
      {"four months back from March", {2020, 3, 10, 1, 2, 3, 4}, 0, 4, true, 0,
       {2019, 11, 10, 1, 2, 3, 4}},
      {"three months back from March is month 0", {2020, 3, 10, 0, 0, 0, 0}, 0, 3, true, -1,
       {2020, 0, 10, 0, 0, 0, 0}},
      {"one year four months back from March", {2020, 3, 10, 0, 0, 0, 0}, 1, 4, true, 0,
       {2018, 11, 10, 0, 0, 0, 0}},
      {"one year two months back from March", {2020, 3, 10, 0, 0, 0, 0}, 1, 2, true, 0,
       {2019, 1, 10, 0, 0, 0, 0}},
      {"fifteen months back from March borrows one year only", {2020, 3, 10, 0, 0, 0, 0}, 0, 15,
       true, -1, {2019, 0, 10, 0, 0, 0, 0}},
      {"minus negative months", {2020, 3, 10, 0, 0, 0, 0}, 0, -2, true, 0,
       {2020, 5, 10, 0, 0, 0, 0}},
      {"minus thirteen negative months borrows by the magnitude", {2020, 1, 10, 0, 0, 0, 0}, 0,
       -13, true, -1, {2019, 26, 10, 0, 0, 0, 0}},
      {"year one minus a year is year zero, accepted", {1, 6, 1, 0, 0, 0, 0}, 1, 0, true, 0,
       {0, 6, 1, 0, 0, 0, 0}},
  };
  for (const YmCase &c : cases) {
    SCOPED_TRACE(c.name);
    QWZDateTime *in = make(TZ, c.from.y, c.from.mo, c.from.d, c.from.h, c.from.mi, c.from.s,
                           c.from.f, "+02:00");
    // The output's zone is its own and is never written.
    QWZDateTime *out = make(TZ, 1990, 7, 7, 7, 7, 7, 77, "+05:30");
    QWZInterval *iv = ym(c.years, c.months);
    const sword rc = c.subtract ? QWZDateTimeIntervalSub(env_, err_, in, iv, out)
                                : QWZDateTimeIntervalAdd(env_, err_, in, iv, out);
    EXPECT_EQ(rc, c.status);
    if (c.status == 0) expect_clear();
    else expect_diag(22007, "22007", kDateFormatInvalid);
    EXPECT_EQ(seen(out), stamp(c.stored.y, c.stored.mo, c.stored.d, c.stored.h, c.stored.mi,
                               c.stored.s, c.stored.f, 5, 30));
    EXPECT_EQ(seen(in), stamp(c.from.y, c.from.mo, c.from.d, c.from.h, c.from.mi, c.from.s,
                              c.from.f, 2, 0));
  }
}

// The output keeps its own type: a time output does not examine the date,
// so month 0 passes.
TEST_F(DateTimeIntervalSub, OutputTypeDecidesWhatIsChecked) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2020, 3, 10, 4, 5, 6, 0, "+02:00");
  QWZDateTime *time_out = make(DATETIME_KIND_TIME, 0, 0, 0, 1, 1, 1, 0, nullptr);
  EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, in, ym(0, 3), time_out), 0);
  expect_clear();
  Seen want;
  want.year = 0; want.month = 0; want.day = 0;
  want.hour = 4; want.minute = 5; want.second = 6; want.fraction = 0;
  EXPECT_EQ(seen(time_out), want);

  QWZDateTime *stamp_out = make(DATETIME_KIND_TIMESTAMP, 1990, 1, 1);
  EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ym(1, 1), stamp_out), 0);
  EXPECT_EQ(seen(stamp_out), stamp(2021, 4, 10, 4, 5, 6, 0));

  QWZDateTime *date_out = make(DATETIME_KIND_DATE, 1990, 1, 1);
  EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(0, 20, 0, 0, 0), date_out), 0);
  Seen d;
  d.year = 2020; d.month = 3; d.day = 11;
  EXPECT_EQ(seen(date_out), d);
}

// ---- day-second intervals ----------------------------------------------------

struct DsCase {
  const char *name;
  const char *zone;
  Stamp from;
  DsValue by;
  bool subtract;
  sword status;
  Stamp stored;
};

TEST_F(DateTimeIntervalAdd, DaySecondThroughLocalTime) {
  const DsCase cases[] = {
      {"leap day, UTC", kUtc, {2024, 2, 28, 10, 0, 0, 0}, {1, 0, 0, 0, 0}, false, 0,
       {2024, 2, 29, 10, 0, 0, 0}},
      {"leap day, CET", kCet, {2024, 2, 28, 10, 0, 0, 0}, {1, 0, 0, 0, 0}, false, 0,
       {2024, 2, 29, 10, 0, 0, 0}},
      {"leap day, EST", kEst, {2024, 2, 28, 10, 0, 0, 0}, {1, 0, 0, 0, 0}, false, 0,
       {2024, 2, 29, 10, 0, 0, 0}},
      {"carry across the year", kUtc, {2023, 12, 31, 23, 59, 30, 0}, {0, 0, 0, 45, 0}, false, 0,
       {2024, 1, 1, 0, 0, 15, 0}},
      {"fields beyond their ranges are plain seconds", kUtc, {2020, 1, 1, 0, 0, 0, 0},
       {0, 25, 61, 61, 0}, false, 0, {2020, 1, 2, 2, 2, 1, 0}},
      {"negative day added", kUtc, {2024, 3, 1, 0, 0, 0, 0}, {-1, 0, 0, 0, 0}, false, 0,
       {2024, 2, 29, 0, 0, 0, 0}},
      {"one day back", kUtc, {2024, 3, 1, 6, 0, 0, 0}, {1, 0, 0, 0, 0}, true, 0,
       {2024, 2, 29, 6, 0, 0, 0}},
      {"year -1 to year zero is accepted", kUtc, {-1, 12, 31, 12, 0, 0, 0}, {1, 0, 0, 0, 0}, false,
       0, {0, 1, 1, 12, 0, 0, 0}},
      {"past 9999", kUtc, {9999, 12, 31, 23, 0, 0, 0}, {0, 1, 0, 0, 0}, false, -1,
       {10000, 1, 1, 0, 0, 0, 0}},
      // Fields are read as standard time and come back as the zone's clock.
      {"winter to winter is exact", kCet, {2020, 1, 10, 10, 0, 0, 0}, {1, 0, 0, 0, 0}, false, 0,
       {2020, 1, 11, 10, 0, 0, 0}},
      {"winter into summer gains an hour", kCet, {2020, 3, 28, 12, 0, 0, 0}, {1, 0, 0, 0, 0}, false,
       0, {2020, 3, 29, 13, 0, 0, 0}},
      {"summer source, summer result, nothing added", kCet, {2020, 7, 1, 10, 0, 0, 0},
       {0, 0, 0, 0, 0}, false, 0, {2020, 7, 1, 11, 0, 0, 0}},
      {"summer source into winter is exact", kCet, {2020, 10, 24, 12, 0, 0, 0}, {1, 0, 0, 0, 0},
       false, 0, {2020, 10, 25, 12, 0, 0, 0}},
      {"summer after 23:00 moves to the next day", kCet, {2020, 7, 1, 23, 30, 0, 0},
       {0, 0, 0, 0, 0}, false, 0, {2020, 7, 2, 0, 30, 0, 0}},
      {"eastern summer", kEst, {2020, 7, 1, 10, 0, 0, 0}, {0, 0, 0, 0, 0}, false, 0,
       {2020, 7, 1, 11, 0, 0, 0}},
  };
  for (const DsCase &c : cases) {
    SCOPED_TRACE(c.name);
    ZoneGuard z(c.zone);
    QWZDateTime *in = make(TZ, c.from.y, c.from.mo, c.from.d, c.from.h, c.from.mi, c.from.s,
                           c.from.f, "-03:00");
    QWZDateTime *out = make(TZ, 1990, 7, 7, 7, 7, 7, 77, "+01:00");
    QWZInterval *iv = ds(c.by.day, c.by.hour, c.by.minute, c.by.second, c.by.fraction);
    const sword rc = c.subtract ? QWZDateTimeIntervalSub(env_, err_, in, iv, out)
                                : QWZDateTimeIntervalAdd(env_, err_, in, iv, out);
    EXPECT_EQ(rc, c.status);
    if (c.status == 0) expect_clear();
    else expect_diag(22007, "22007", kDateFormatInvalid);
    EXPECT_EQ(seen(out), stamp(c.stored.y, c.stored.mo, c.stored.d, c.stored.h, c.stored.mi,
                               c.stored.s, c.stored.f, 1, 0));
  }
}

// ---- the fraction ------------------------------------------------------------

struct FractionCase {
  const char *name;
  Stamp from;
  sb4 second, fraction;  // of the day-second interval
  bool subtract;
  sword status;
  Stamp stored;
};

TEST_F(DateTimeIntervalAdd, FractionCarriedAtOneBillionAndNeverIntoSeconds) {
  ZoneGuard z(kUtc);
  const FractionCase cases[] = {
      {"999999999 plus 1", {2020, 1, 1, 10, 0, 5, 999999999}, 0, 1, false, 0,
       {2020, 1, 1, 10, 0, 5, 1000000000}},
      {"a negative sum on addition wraps, no borrow", {2020, 1, 1, 10, 0, 5, 5}, 0, -10, false, 0,
       {2020, 1, 1, 10, 0, 5, 4294967291u}},
      {"largest fraction plus largest interval fraction", {2020, 1, 1, 10, 0, 5, 4294967295u}, 0,
       INT_MAX, false, 0, {2020, 1, 1, 10, 0, 5, 2147483646u}},
      {"subtraction borrows a second at one billion", {2020, 1, 1, 10, 0, 5, 0}, 0, 1, true, 0,
       {2020, 1, 1, 10, 0, 4, 999999999}},
      {"subtraction with seconds and fraction", {2020, 1, 1, 10, 0, 0, 500}, 1, 1, true, 0,
       {2020, 1, 1, 9, 59, 59, 499}},
      {"subtraction without borrow", {2020, 1, 1, 10, 0, 5, 500}, 0, 200, true, 0,
       {2020, 1, 1, 10, 0, 5, 300}},
      {"borrow from second 0 wraps and fails", {2020, 1, 1, 10, 0, 0, 0}, 0, 1, true, -1,
       {2020, 1, 1, 10, 0, 0xFF, 999999999}},
  };
  for (const FractionCase &c : cases) {
    SCOPED_TRACE(c.name);
    QWZDateTime *in = make(TZ, c.from.y, c.from.mo, c.from.d, c.from.h, c.from.mi, c.from.s,
                           c.from.f, "+00:00");
    QWZDateTime *out = make(TZ, 1990, 7, 7, 7, 7, 7, 77, "+00:00");
    QWZInterval *iv = ds(0, 0, 0, c.second, c.fraction);
    const sword rc = c.subtract ? QWZDateTimeIntervalSub(env_, err_, in, iv, out)
                                : QWZDateTimeIntervalAdd(env_, err_, in, iv, out);
    EXPECT_EQ(rc, c.status);
    if (c.status == 0) expect_clear();
    else expect_diag(22007, "22007", kDateFormatInvalid);
    EXPECT_EQ(seen(out), stamp(c.stored.y, c.stored.mo, c.stored.d, c.stored.h, c.stored.mi,
                               c.stored.s, c.stored.f, 0, 0));
  }
}

TEST_F(DateTimeIntervalAdd, YearMonthIntervalKeepsTheFraction) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2020, 1, 1, 0, 0, 0, 123456789, "+00:00");
  QWZDateTime *out = new_datetime(TZ);
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ym(0, 1), out), 0);
  EXPECT_EQ(seen(out), stamp(2020, 2, 1, 0, 0, 0, 123456789, 0, 0));
  ASSERT_EQ(QWZDateTimeIntervalSub(env_, err_, in, ym(0, -1), out), 0);
  EXPECT_EQ(seen(out), stamp(2020, 2, 1, 0, 0, 0, 123456789, 0, 0));
}

// ---- the caller's interval ---------------------------------------------------

TEST_F(DateTimeIntervalSub, LeavesTheIntervalNegated) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2020, 6, 15, 12, 0, 0, 0, "+00:00");
  QWZDateTime *out = new_datetime(TZ);
  QWZInterval *y = ym(1, 2);
  ASSERT_EQ(QWZDateTimeIntervalSub(env_, err_, in, y, out), 0);
  EXPECT_EQ(get_ym(y), (YmValue{-1, -2}));
  EXPECT_EQ(seen(out), stamp(2019, 4, 15, 12, 0, 0, 0, 0, 0));
  // A second subtraction with the negated interval adds.
  ASSERT_EQ(QWZDateTimeIntervalSub(env_, err_, in, y, out), 0);
  EXPECT_EQ(get_ym(y), (YmValue{1, 2}));
  EXPECT_EQ(seen(out), stamp(2021, 8, 15, 12, 0, 0, 0, 0, 0));

  QWZInterval *d = ds(1, 2, 3, 4, 5);
  ASSERT_EQ(QWZDateTimeIntervalSub(env_, err_, in, d, out), 0);
  EXPECT_EQ(get_ds(d), (DsValue{-1, -2, -3, -4, -5}));
  EXPECT_EQ(seen(out), stamp(2020, 6, 14, 9, 56, 55, 999999995u, 0, 0));

  // Negated even when the result then fails its check.
  QWZInterval *bad = ym(0, 3);
  QWZDateTime *march = make(TZ, 2020, 3, 1, 0, 0, 0, 0, "+00:00");
  EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, march, bad, out), -1);
  expect_diag(22007, "22007", kDateFormatInvalid);
  EXPECT_EQ(get_ym(bad), (YmValue{0, -3}));
}

TEST_F(DateTimeIntervalSub, RefusedCallsLeaveTheIntervalAlone) {
  ZoneGuard z(kUtc);
  QWZDateTime *plain = make(DATETIME_KIND_TIMESTAMP, 2020, 6, 15);
  QWZDateTime *zoned = make(TZ, 2020, 6, 15, 0, 0, 0, 0, "+00:00");
  QWZDateTime *out = new_datetime(TZ);
  QWZInterval *y = ym(1, 2);
  EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, plain, y, out), -1);
  expect_front_end(800130, kInconsistent);
  EXPECT_EQ(get_ym(y), (YmValue{1, 2}));
  EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, zoned, y, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(get_ym(y), (YmValue{1, 2}));
  EXPECT_EQ(QWZDateTimeIntervalSub(err_, err_, zoned, y, out), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(get_ym(y), (YmValue{1, 2}));
}

TEST_F(DateTimeIntervalSub, ExtremeSlotsNegateWithoutFault) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2020, 6, 15, 12, 0, 0, 0, "+00:00");
  QWZDateTime *out = new_datetime(TZ);
  // Whatever the wrapped fields come to, a status of 0 means the output
  // passes the check (or is year zero alone) and -1 carries the check's
  // diagnostic.
  auto consistent = [&](sword rc) {
    if (rc == 0) {
      const ub4 f = flags_of(out);
      EXPECT_TRUE(f == 0 || f == DATE_YEAR_ZERO) << f;
      expect_clear();
    } else {
      EXPECT_EQ(rc, -1);
      expect_diag(22007, "22007", kDateFormatInvalid);
    }
  };
  QWZInterval *d = ds(INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX);
  consistent(QWZDateTimeIntervalSub(env_, err_, in, d, out));
  EXPECT_EQ(get_ds(d), (DsValue{-INT_MAX, -INT_MAX, -INT_MAX, -INT_MAX, -INT_MAX}));
  QWZInterval *y = ym(INT_MAX, INT_MAX);
  consistent(QWZDateTimeIntervalSub(env_, err_, in, y, out));
  EXPECT_EQ(get_ym(y), (YmValue{-INT_MAX, -INT_MAX}));
  for (sb4 v : {INT_MIN, INT_MAX}) {
    for (int slot = 0; slot < 5; ++slot) {
      SCOPED_TRACE(slot);
      sb4 s[5] = {0, 0, 0, 0, 0};
      s[slot] = v;
      QWZInterval *iv = ds(s[0], s[1], s[2], s[3], s[4]);
      consistent(QWZDateTimeIntervalAdd(env_, err_, in, iv, out));
      consistent(QWZDateTimeIntervalSub(env_, err_, in, iv, out));
    }
    for (int slot = 0; slot < 2; ++slot) {
      QWZInterval *iv = ym(slot == 0 ? v : 0, slot == 1 ? v : 0);
      consistent(QWZDateTimeIntervalAdd(env_, err_, in, iv, out));
      consistent(QWZDateTimeIntervalSub(env_, err_, in, iv, out));
    }
  }
}

// ---- refusals ----------------------------------------------------------------

TEST_F(DateTimeIntervalAdd, OnlyTimestampsWithZone) {
  ZoneGuard z(kUtc);
  QWZDateTime *out = make(TZ, 1990, 7, 7, 7, 7, 7, 77, "+05:30");
  const Seen before = seen(out);
  for (ub4 type : {DATETIME_KIND_DATE, DATETIME_KIND_TIME, DATETIME_KIND_TIME_TZ,
                   DATETIME_KIND_TIMESTAMP, DATETIME_KIND_TIMESTAMP_LTZ}) {
    SCOPED_TRACE(type);
    QWZDateTime *in = new_datetime(type);
    if (type != DATETIME_KIND_TIMESTAMP_LTZ) construct(in, 2020, 1, 1, 1, 1, 1, 0, "+01:00");
    EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(1, 0, 0, 0, 0), out), -1);
    expect_front_end(800130, kInconsistent);
    EXPECT_EQ(QWZDateTimeIntervalSub(session_, err_, in, ym(1, 0), out), -1);
    expect_front_end(800130, kInconsistent);
    EXPECT_EQ(seen(out), before);
  }
}

TEST_F(DateTimeIntervalAdd, BadHandlesInEveryPosition) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZDateTime *plain = make(DATETIME_KIND_TIMESTAMP, 2020, 1, 1);
  QWZDateTime *out = make(TZ, 1990, 7, 7, 7, 7, 7, 77, "+05:30");
  const Seen before = seen(out);
  QWZInterval *iv = ds(1, 0, 0, 0, 0);
  void *dead_dt = freed(TZ);
  void *dead_iv = freed(INTERVAL_KIND_DS);
  auto *iv_as_dt = reinterpret_cast<QWZDateTime *>(iv);
  auto *dt_as_iv = reinterpret_cast<QWZInterval *>(in);
  struct Case {
    const char *name;
    void *hndl;
    QWZDateTime *dt;
    QWZInterval *iv;
    QWZDateTime *out;
  };
  const Case cases[] = {
      {"NULL context", nullptr, in, iv, out},
      {"error handle as context", err_, in, iv, out},
      {"datetime as context", in, in, iv, out},
      {"NULL datetime", env_, nullptr, iv, out},
      {"freed datetime", env_, static_cast<QWZDateTime *>(dead_dt), iv, out},
      {"interval as datetime", env_, iv_as_dt, iv, out},
      {"NULL interval", env_, in, nullptr, out},
      {"freed interval", env_, in, static_cast<QWZInterval *>(dead_iv), out},
      {"datetime as interval", env_, in, dt_as_iv, out},
      {"NULL output", env_, in, iv, nullptr},
      {"freed output", env_, in, iv, static_cast<QWZDateTime *>(dead_dt)},
      {"interval as output", env_, in, iv, iv_as_dt},
      // Descriptors are validated before the datetime's type is looked at.
      {"unzoned datetime and NULL interval", env_, plain, nullptr, out},
      {"unzoned datetime and freed output", env_, plain, iv, static_cast<QWZDateTime *>(dead_dt)},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(QWZDateTimeIntervalAdd(c.hndl, err_, c.dt, c.iv, c.out), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(QWZDateTimeIntervalSub(c.hndl, err_, c.dt, c.iv, c.out), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(seen(out), before);
  EXPECT_EQ(get_ds(iv), (DsValue{1, 0, 0, 0, 0}));
  // An error handle that is not valid: the validator's value, nothing written.
  EXPECT_EQ(QWZDateTimeIntervalAdd(env_, nullptr, in, iv, out), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDateTimeIntervalSub(env_, reinterpret_cast<QWZError *>(env_), in, iv, out),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(seen(out), before);
  EXPECT_EQ(get_ds(iv), (DsValue{1, 0, 0, 0, 0}));
}

TEST_F(DateTimeIntervalAdd, SessionIsAcceptedAndSuccessClears) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZDateTime *out = new_datetime(TZ);
  EXPECT_EQ(QWZDateTimeIntervalAdd(nullptr, err_, in, ds(1, 0, 0, 0, 0), out), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZDateTimeIntervalAdd(session_, err_, in, ds(1, 0, 0, 0, 0), out), 0);
  expect_clear();
  EXPECT_EQ(seen(out), stamp(2020, 1, 2, 0, 0, 0, 0, 0, 0));
}

// The output is left holding the invalid value; it is not restored.
TEST_F(DateTimeIntervalAdd, FailedResultIsNotRestored) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2021, 1, 31, 1, 2, 3, 4, "+00:00");
  QWZDateTime *out = make(TZ, 1990, 7, 7, 7, 7, 7, 77, "+00:00");
  EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ym(0, 1), out), -1);
  expect_diag(22007, "22007", kDateFormatInvalid);
  EXPECT_EQ(seen(out), stamp(2021, 2, 31, 1, 2, 3, 4, 0, 0));
  EXPECT_EQ(flags_of(out), DATE_INVALID_DAY);
}

// ---- tracing -----------------------------------------------------------------

TEST_F(DateTimeIntervalAdd, TraceRecordsAndTheNestedCheck) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZDateTime *out = new_datetime(TZ);
  QWZInterval *iv = ds(1, 0, 0, 0, 0);
  for (ub4 api : {139u, 140u}) {
    SCOPED_TRACE(api);
    PlannedTrace t;
    const sword rc = api == 139 ? QWZDateTimeIntervalAdd(env_, err_, in, iv, out)
                                : QWZDateTimeIntervalSub(env_, err_, in, iv, out);
    ASSERT_EQ(rc, 0);
    const std::vector<std::pair<ub4, ub4>> want = {{api, 1}, {147, 1}, {147, 0}, {api, 0}};
    EXPECT_EQ(t.sequence(), want);
    const std::string row =
        std::string(api == 139 ? "<QWZDateTimeIntervalAdd>" : "<QWZDateTimeIntervalSub>") +
        line("void*", hex12(env_)) + line("QWZError*", hex12(err_)) +
        line("QWZDateTime*", hex12(in)) + line("QWZInterval*", hex12(iv)) +
        line("QWZDateTime*", hex12(out));
    ASSERT_EQ(t.records().size(), 4u);
    EXPECT_EQ(t.records()[0].text, row);
    EXPECT_EQ(t.records()[3].text, row);
    EXPECT_EQ(t.records()[0].status, 0);
    EXPECT_EQ(t.records()[3].status, 0);
    const std::string check = "<QWZDateTimeCheck>" + line("void*", hex12(env_)) +
                              line("QWZError*", hex12(err_)) +
                              line("const QWZDateTime*", hex12(out));
    EXPECT_EQ(t.records()[1].text.substr(0, check.size()), check);
  }
}

TEST_F(DateTimeIntervalAdd, TraceOnFailuresAndAnswers) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2021, 1, 31, 0, 0, 0, 0, "+00:00");
  QWZDateTime *good = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZDateTime *plain = make(DATETIME_KIND_TIMESTAMP, 2021, 1, 31);
  QWZDateTime *out = make(TZ, 1990, 7, 7, 7, 7, 7, 77, "+00:00");
  QWZInterval *month = ym(0, 1);
  QWZInterval *day = ds(1, 0, 0, 0, 0);
  const Seen before = seen(out);
  {
    // A result that fails its check reached the work: exit record with -1.
    PlannedTrace t;
    EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, month, out), -1);
    const std::vector<std::pair<ub4, ub4>> want = {{139, 1}, {147, 1}, {147, 0}, {139, 0}};
    EXPECT_EQ(t.sequence(), want);
    ASSERT_EQ(t.records().size(), 4u);
    EXPECT_EQ(t.records()[3].status, -1);
  }
  construct(out, 1990, 7, 7, 7, 7, 7, 77, "+00:00");
  {
    // Refusals write the entry record only.
    PlannedTrace t;
    EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, plain, month, out), -1);
    EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, in, nullptr, out), QWZ_INVALID_HANDLE);
    EXPECT_EQ(QWZDateTimeIntervalSub(env_, nullptr, in, month, out), QWZ_INVALID_HANDLE);
    const std::vector<std::pair<ub4, ub4>> want = {{139, 1}, {140, 1}, {140, 1}};
    EXPECT_EQ(t.sequence(), want);
  }
  {
    // The entry answer is returned at once; nothing validated or written.
    PlannedTrace t({140, 1, 7, 0});
    EXPECT_EQ(QWZDateTimeIntervalSub(env_, nullptr, in, month, out), 7);
    EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, good, month, out), 7);
    EXPECT_EQ(t.records().size(), 2u);
    qwz_trace_flag = 0;
    EXPECT_EQ(get_ym(month), (YmValue{0, 1}));
    EXPECT_EQ(seen(out), before);
  }
  {
    // The exit answer replaces the status; the work is done.
    PlannedTrace t({139, 0, 9, 0});
    EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, good, day, out), 9);
    qwz_trace_flag = 0;
    EXPECT_EQ(seen(out), stamp(2020, 1, 2, 0, 0, 0, 0, 0, 0));
  }
  {
    // A non-zero status of the nested check is returned as it is, the
    // output already holds the new value and no diagnostic is written.
    QWZInterval *two = ds(2, 0, 0, 0, 0);
    PlannedTrace t({147, 0, 5, 0});
    EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, good, two, out), 5);
    const std::vector<std::pair<ub4, ub4>> want = {{139, 1}, {147, 1}, {147, 0}, {139, 0}};
    EXPECT_EQ(t.sequence(), want);
    ASSERT_EQ(t.records().size(), 4u);
    EXPECT_EQ(t.records()[3].status, 5);
    qwz_trace_flag = 0;
    expect_clear();
    EXPECT_EQ(seen(out), stamp(2020, 1, 3, 0, 0, 0, 0, 0, 0));
  }
}

TEST_F(DateTimeIntervalAdd, NoTraceWhenTracingIsOff) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZDateTime *out = new_datetime(TZ);
  PlannedTrace t;
  qwz_trace_flag = 0;
  EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, ds(1, 0, 0, 0, 0), out), 0);
  EXPECT_EQ(QWZDateTimeIntervalSub(env_, err_, in, ds(1, 0, 0, 0, 0), out), 0);
  EXPECT_TRUE(t.records().empty());
}

// The result may be the source descriptor itself.
TEST_F(DateTimeIntervalAdd, ResultOnTheSourceDaySecond) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = make(TZ, 2020, 1, 31, 23, 0, 0, 10, "+03:00");
  EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, d, ds(0, 2, 0, 0, 5), d), 0);
  EXPECT_EQ(seen(d), stamp(2020, 2, 1, 1, 0, 0, 15, 3, 0));
  EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, d, ym(1, 1), d), 0);
  EXPECT_EQ(seen(d), stamp(2021, 3, 1, 1, 0, 0, 15, 3, 0));
}

}  // namespace
