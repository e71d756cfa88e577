// QWZDateTimeSubtract as a client sees it: the interval between two
// datetimes in the form of the caller's interval kind.
#include "datetime_arith_conf.h"

using namespace qwz_conf;

namespace {

class DateTimeSubtract : public ConfFixture {};

constexpr ub4 TS = DATETIME_KIND_TIMESTAMP;
constexpr ub4 TZ = DATETIME_KIND_TIMESTAMP_TZ;

struct Stamp {
  sb2 y;
  ub1 mo, d, h, mi, s;
  ub4 f;
};

struct Case {
  const char *name;
  Stamp a, b;
  YmValue ym;
  DsValue ds;
};

// Months come from year and month alone (a month counts 31 days in the
// day-second form), seconds from the day of the month and the clock, the
// fraction in units of 1/100000 second.
TEST_F(DateTimeSubtract, UnzonedTimestamps) {
  ZoneGuard z(kUtc);
  const Case cases[] = {
      {"one month counted as 31 days", {2020, 3, 1, 0, 0, 0, 0}, {2020, 2, 28, 0, 0, 0, 0}, {0, 1},
       {4, 0, 0, 0, 0}},
      {"fourteen months", {2020, 3, 15, 10, 0, 0, 0}, {2019, 1, 20, 9, 0, 0, 0}, {1, 2},
       {430, -23, 0, 0, 0}},
      {"fourteen months back", {2019, 1, 20, 9, 0, 0, 0}, {2020, 3, 15, 10, 0, 0, 0}, {-1, -2},
       {-430, 23, 0, 0, 0}},
      {"clock only", {2020, 5, 5, 10, 0, 0, 0}, {2020, 5, 5, 9, 30, 15, 0}, {0, 0},
       {0, 0, 29, 45, 0}},
      {"mixed signs", {2020, 3, 1, 0, 0, 0, 0}, {2020, 2, 28, 12, 0, 0, 0}, {0, 1},
       {4, -12, 0, 0, 0}},
      {"day of the month later in an earlier month", {2020, 1, 31, 0, 0, 0, 0},
       {2020, 2, 1, 0, 0, 0, 0}, {0, -1}, {-1, 0, 0, 0, 0}},
      {"signed years", {-1, 6, 1, 0, 0, 0, 0}, {1, 6, 1, 0, 0, 0, 0}, {-2, 0}, {-744, 0, 0, 0, 0}},
      {"fraction above 99999 carries into the seconds", {2020, 5, 5, 10, 0, 0, 250000},
       {2020, 5, 5, 10, 0, 0, 0}, {0, 0}, {0, 0, 0, 2, 50000}},
      {"fraction below -99999 carries into the seconds", {2020, 5, 5, 10, 0, 0, 0},
       {2020, 5, 5, 10, 0, 0, 150000}, {0, 0}, {0, 0, 0, -1, -50000}},
      {"positive seconds, negative fraction", {2020, 5, 5, 10, 0, 1, 0},
       {2020, 5, 5, 10, 0, 0, 50000}, {0, 0}, {0, 0, 0, 0, 50000}},
      {"negative seconds, positive fraction", {2020, 5, 5, 10, 0, 0, 50000},
       {2020, 5, 5, 10, 0, 1, 0}, {0, 0}, {0, 0, 0, 0, -50000}},
      {"negative seconds, fraction 0 is left alone", {2020, 5, 5, 10, 0, 0, 0},
       {2020, 5, 5, 10, 0, 1, 0}, {0, 0}, {0, 0, 0, -1, 0}},
      {"fraction difference read as signed 32 bits", {2020, 5, 5, 10, 0, 0, 4294967295u},
       {2020, 5, 5, 10, 0, 0, 0}, {0, 0}, {0, 0, 0, 0, -1}},
      {"equal values", {2020, 5, 5, 10, 0, 0, 7}, {2020, 5, 5, 10, 0, 0, 7}, {0, 0},
       {0, 0, 0, 0, 0}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    QWZDateTime *a = make(TS, c.a.y, c.a.mo, c.a.d, c.a.h, c.a.mi, c.a.s, c.a.f);
    QWZDateTime *b = make(TS, c.b.y, c.b.mo, c.b.d, c.b.h, c.b.mi, c.b.s, c.b.f);
    QWZInterval *y = ym(99, 9);
    QWZInterval *d = ds(99, 9, 9, 9, 9);
    EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, y), 0);
    expect_clear();
    EXPECT_EQ(get_ym(y), c.ym);
    EXPECT_EQ(QWZDateTimeSubtract(session_, err_, a, b, d), 0);
    expect_clear();
    EXPECT_EQ(get_ds(d), c.ds);
  }
}

TEST_F(DateTimeSubtract, DatesTimesAndLocalTimestamps) {
  ZoneGuard z(kUtc);
  QWZInterval *d = ds(99, 9, 9, 9, 9);
  QWZDateTime *a = make(DATETIME_KIND_DATE, 2020, 3, 1);
  QWZDateTime *b = make(DATETIME_KIND_DATE, 2020, 2, 28);
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, d), 0);
  EXPECT_EQ(get_ds(d), (DsValue{4, 0, 0, 0, 0}));
  // A time keeps the fraction it was built with, though its getter shows 0.
  QWZDateTime *t1 = make(DATETIME_KIND_TIME, 0, 0, 0, 10, 0, 0, 0, nullptr);
  QWZDateTime *t2 = make(DATETIME_KIND_TIME, 0, 0, 0, 9, 0, 0, 50000, nullptr);
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, t1, t2, d), 0);
  EXPECT_EQ(get_ds(d), (DsValue{0, 0, 59, 59, 50000}));
  QWZInterval *y = ym(99, 9);
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, t1, t2, y), 0);
  EXPECT_EQ(get_ym(y), (YmValue{0, 0}));
  QWZDateTime *l1 = new_datetime(DATETIME_KIND_TIMESTAMP_LTZ);
  QWZDateTime *l2 = new_datetime(DATETIME_KIND_TIMESTAMP_LTZ);
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, l1, l2, d), 0);
  EXPECT_EQ(get_ds(d), (DsValue{0, 0, 0, 0, 0}));
  expect_clear();
}

// Zoned values are moved to UTC first (through local time) and then
// subtracted like the others.
struct ZonedCase {
  const char *name;
  const char *zone;
  ub4 type;
  Stamp a;
  const char *tza;
  Stamp b;
  const char *tzb;
  YmValue ym;
  DsValue ds;
};

TEST_F(DateTimeSubtract, ZonedValuesInUtc) {
  const ZonedCase cases[] = {
      {"two hours east", kUtc, TZ, {2020, 1, 10, 10, 0, 0, 0}, "+02:00", {2020, 1, 10, 10, 0, 0, 0},
       "+00:00", {0, 0}, {0, -2, 0, 0, 0}},
      {"half hours", kUtc, TZ, {2020, 1, 10, 10, 0, 0, 0}, "+05:30", {2020, 1, 10, 10, 0, 0, 0},
       "+00:00", {0, 0}, {0, -5, -30, 0, 0}},
      {"west of UTC", kUtc, TZ, {2020, 1, 10, 10, 0, 0, 0}, "-03:30", {2020, 1, 10, 10, 0, 0, 0},
       "+00:00", {0, 0}, {0, 3, 30, 0, 0}},
      {"fractions survive the move", kUtc, TZ, {2020, 1, 10, 10, 0, 0, 300}, "+01:00",
       {2020, 1, 10, 9, 0, 0, 100}, "+00:00", {0, 0}, {0, 0, 0, 0, 200}},
      {"across a day", kUtc, TZ, {2020, 1, 2, 1, 0, 0, 0}, "+02:00", {2020, 1, 1, 22, 0, 0, 0},
       "+00:00", {0, 0}, {0, 1, 0, 0, 0}},
      {"across a month into the same month", kUtc, TZ, {2020, 3, 1, 1, 0, 0, 0}, "+02:00",
       {2020, 2, 29, 22, 0, 0, 0}, "+00:00", {0, 0}, {0, 1, 0, 0, 0}},
      {"across a month, counted as 31 days", kUtc, TZ, {2020, 3, 1, 0, 30, 0, 0}, "+00:00",
       {2020, 3, 1, 1, 0, 0, 0}, "+02:00", {0, 1}, {3, -22, -30, 0, 0}},
      {"equal instants", kUtc, TZ, {2020, 1, 10, 10, 0, 0, 0}, "+02:00", {2020, 1, 10, 9, 0, 0, 0},
       "+01:00", {0, 0}, {0, 0, 0, 0, 0}},
      {"times with zone", kUtc, DATETIME_KIND_TIME_TZ, {0, 0, 0, 10, 0, 0, 0}, "+02:00",
       {0, 0, 0, 9, 0, 0, 0}, "+00:00", {0, 0}, {0, -1, 0, 0, 0}},
      {"times with zone across midnight", kUtc, DATETIME_KIND_TIME_TZ, {0, 0, 0, 0, 30, 0, 0},
       "+01:00", {0, 0, 0, 1, 30, 0, 0}, "+00:00", {0, 0}, {0, -2, 0, 0, 0}},
      // Read as standard time, the later value lands in summer time and gains
      // an hour that the earlier one does not.
      {"summer-time asymmetry", kCet, TZ, {2020, 3, 29, 3, 30, 0, 0}, "+00:00",
       {2020, 3, 29, 1, 30, 0, 0}, "+00:00", {0, 0}, {0, 3, 0, 0, 0}},
      {"two summer values", kCet, TZ, {2020, 7, 1, 10, 0, 0, 0}, "+02:00",
       {2020, 7, 1, 8, 0, 0, 0}, "+00:00", {0, 0}, {0, 0, 0, 0, 0}},
  };
  for (const ZonedCase &c : cases) {
    SCOPED_TRACE(c.name);
    ZoneGuard z(c.zone);
    QWZDateTime *a = make(c.type, c.a.y, c.a.mo, c.a.d, c.a.h, c.a.mi, c.a.s, c.a.f, c.tza);
    QWZDateTime *b = make(c.type, c.b.y, c.b.mo, c.b.d, c.b.h, c.b.mi, c.b.s, c.b.f, c.tzb);
    const Seen sa = seen(a), sb = seen(b);
    QWZInterval *y = ym(99, 9);
    QWZInterval *d = ds(99, 9, 9, 9, 9);
    EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, y), 0);
    expect_clear();
    EXPECT_EQ(get_ym(y), c.ym);
    EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, d), 0);
    expect_clear();
    EXPECT_EQ(get_ds(d), c.ds);
    // The operands are not moved.
    EXPECT_EQ(seen(a), sa);
    EXPECT_EQ(seen(b), sb);
  }
}

TEST_F(DateTimeSubtract, TypesMustAgree) {
  ZoneGuard z(kUtc);
  const ub4 types[] = {65, 66, 67, 68, 69, 70};
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  for (ub4 ta : types) {
    for (ub4 tb : types) {
      if (ta == tb) continue;
      SCOPED_TRACE(std::to_string(ta) + " - " + std::to_string(tb));
      QWZDateTime *a = new_datetime(ta);
      QWZDateTime *b = new_datetime(tb);
      EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, d), -1);
      expect_front_end(800129, kNotComparableDot);
      EXPECT_EQ(get_ds(d), (DsValue{1, 2, 3, 4, 5}));
    }
  }
}

TEST_F(DateTimeSubtract, BadHandlesInEveryPosition) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = make(TS, 2020, 1, 2);
  QWZDateTime *b = make(TS, 2020, 1, 1);
  QWZDateTime *zoned = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZInterval *iv = ds(1, 2, 3, 4, 5);
  void *dead_dt = freed(TS);
  void *dead_iv = freed(INTERVAL_KIND_DS);
  auto *iv_as_dt = reinterpret_cast<QWZDateTime *>(iv);
  auto *dt_as_iv = reinterpret_cast<QWZInterval *>(a);
  struct Bad {
    const char *name;
    void *hndl;
    QWZDateTime *a, *b;
    QWZInterval *iv;
  };
  const Bad cases[] = {
      {"NULL context", nullptr, a, b, iv},
      {"error handle as context", err_, a, b, iv},
      {"NULL first", env_, nullptr, b, iv},
      {"freed first", env_, static_cast<QWZDateTime *>(dead_dt), b, iv},
      {"interval as first", env_, iv_as_dt, b, iv},
      {"NULL second", env_, a, nullptr, iv},
      {"freed second", env_, a, static_cast<QWZDateTime *>(dead_dt), iv},
      {"interval as second", env_, a, iv_as_dt, iv},
      {"NULL interval", env_, a, b, nullptr},
      {"freed interval", env_, a, b, static_cast<QWZInterval *>(dead_iv)},
      {"datetime as interval", env_, a, b, dt_as_iv},
      // Descriptors are validated before the types are compared.
      {"types differ and NULL interval", env_, a, zoned, nullptr},
  };
  for (const Bad &c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(QWZDateTimeSubtract(c.hndl, err_, c.a, c.b, c.iv), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(get_ds(iv), (DsValue{1, 2, 3, 4, 5}));
  EXPECT_EQ(QWZDateTimeSubtract(env_, nullptr, a, b, iv), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDateTimeSubtract(env_, reinterpret_cast<QWZError *>(session_), a, b, iv),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(get_ds(iv), (DsValue{1, 2, 3, 4, 5}));
}

// A zoned operand whose move to UTC fails leaves the subtraction without a
// copy: -1, the interval unwritten. The second move, made after the first,
// runs its own nested calls, which clear whatever the first one wrote.
TEST_F(DateTimeSubtract, FailedMoveToUtc) {
  ZoneGuard z(kUtc);
  // 9999-12-31 23:00 at -05:00 is year 10000 in UTC.
  QWZDateTime *late = make(TZ, 9999, 12, 31, 23, 0, 0, 0, "-05:00");
  QWZDateTime *fine = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZInterval *d = ds(1, 2, 3, 4, 5);
  {
    PlannedTrace t;
    EXPECT_EQ(QWZDateTimeSubtract(env_, err_, fine, late, d), -1);
    ASSERT_FALSE(t.records().empty());
    EXPECT_EQ(t.records().back().api_id, 141u);
    EXPECT_EQ(t.records().back().direction, 0u);
    EXPECT_EQ(t.records().back().status, -1);
  }
  expect_diag(22007, "22007", kDateFormatInvalid);
  EXPECT_EQ(get_ds(d), (DsValue{1, 2, 3, 4, 5}));
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, late, fine, d), -1);
  expect_clear();
  EXPECT_EQ(get_ds(d), (DsValue{1, 2, 3, 4, 5}));
}

// The nested interval check: its failure becomes "interval is invalid".
TEST_F(DateTimeSubtract, NestedIntervalCheckFailure) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = make(TS, 2020, 1, 2);
  QWZDateTime *b = make(TS, 2020, 1, 1);
  QWZInterval *d = ds(0, 0, 0, 0, 0);
  PlannedTrace t({154, 0, 5, 0});
  EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, b, d), -1);
  const std::vector<std::pair<ub4, ub4>> want = {{141, 1}, {154, 1}, {154, 0}, {141, 0}};
  EXPECT_EQ(t.sequence(), want);
  EXPECT_EQ(t.records().back().status, -1);
  qwz_trace_flag = 0;
  expect_diag(11104, "22007", "ERROR: [QWZ-11104][QWZ Driver].interval is invalid 3 \n");
  // The interval was written before the check.
  EXPECT_EQ(get_ds(d), (DsValue{1, 0, 0, 0, 0}));
}

TEST_F(DateTimeSubtract, TraceRecords) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = make(TS, 2020, 1, 2);
  QWZDateTime *b = make(TS, 2020, 1, 1);
  QWZDateTime *za = make(TZ, 2020, 1, 2, 0, 0, 0, 0, "+01:00");
  QWZDateTime *zb = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZDateTime *other = make(DATETIME_KIND_DATE, 2020, 1, 1);
  QWZInterval *d = ds(0, 0, 0, 0, 0);
  {
    PlannedTrace t;
    ASSERT_EQ(QWZDateTimeSubtract(env_, err_, a, b, d), 0);
    const std::vector<std::pair<ub4, ub4>> want = {{141, 1}, {154, 1}, {154, 0}, {141, 0}};
    EXPECT_EQ(t.sequence(), want);
    const std::string row = "<QWZDateTimeSubtract>" + line("void*", hex12(env_)) +
                            line("QWZError*", hex12(err_)) + line("QWZDateTime*", hex12(a)) +
                            line("QWZDateTime*", hex12(b)) + line("QWZInterval*", hex12(d));
    EXPECT_EQ(t.records().front().text, row);
    EXPECT_EQ(t.records().back().text, row);
  }
  {
    // Each move to UTC: a checked copy, the offset interval, the add's check.
    PlannedTrace t;
    ASSERT_EQ(QWZDateTimeSubtract(env_, err_, za, zb, d), 0);
    const std::vector<std::pair<ub4, ub4>> move = {{146, 1}, {147, 1}, {147, 0}, {146, 0},
                                                   {151, 1}, {151, 0}, {147, 1}, {147, 0}};
    std::vector<std::pair<ub4, ub4>> want = {{141, 1}};
    want.insert(want.end(), move.begin(), move.end());
    want.insert(want.end(), move.begin(), move.end());
    want.insert(want.end(), {{154, 1}, {154, 0}, {141, 0}});
    EXPECT_EQ(t.sequence(), want);
    // The offset interval holds minus the zone.
    ASSERT_GT(t.records().size(), 5u);
    const std::string set = t.records()[5].text;
    EXPECT_NE(set.find(line("sb4", "0") + line("sb4", "-1") + line("sb4", "0") + line("sb4", "0") +
                       line("sb4", "0")),
              std::string::npos)
        << set;
    EXPECT_EQ(get_ds(d), (DsValue{0, 23, 0, 0, 0}));
  }
  {
    // Types that differ: entry record only.
    PlannedTrace t;
    EXPECT_EQ(QWZDateTimeSubtract(env_, err_, a, other, d), -1);
    const std::vector<std::pair<ub4, ub4>> want = {{141, 1}};
    EXPECT_EQ(t.sequence(), want);
  }
}

// The moves to UTC run in the environment that owns the operands; the
// caller's context handle goes to the interval check.
TEST_F(DateTimeSubtract, NestedCallsAndTheirContextHandles) {
  ZoneGuard z(kUtc);
  QWZDateTime *za = make(TZ, 2020, 1, 2, 0, 0, 0, 0, "+01:00");
  QWZDateTime *zb = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZInterval *d = ds(0, 0, 0, 0, 0);
  PlannedTrace t;
  ASSERT_EQ(QWZDateTimeSubtract(session_, err_, za, zb, d), 0);
  const std::string in_session = "\n\tvoid*     \t" + hex12(session_) + "\n";
  const std::string in_env = "\n\tvoid*     \t" + hex12(env_) + "\n";
  for (const HookRecord &r : t.records()) {
    SCOPED_TRACE(r.text);
    const bool caller = r.api_id == 141 || r.api_id == 154;
    EXPECT_NE(r.text.find(caller ? in_session : in_env), std::string::npos);
  }
  EXPECT_EQ(t.records().size(), 20u);
}

}  // namespace
