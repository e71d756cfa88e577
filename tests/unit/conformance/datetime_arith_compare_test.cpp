// QWZDateTimeConvert, QWZDateTimeCompare and QWZDateZoneToZone as a client
// sees them.
#include "datetime_arith_conf.h"

using namespace qwz_conf;

namespace {

constexpr ub4 TS = DATETIME_KIND_TIMESTAMP;
constexpr ub4 TZ = DATETIME_KIND_TIMESTAMP_TZ;

// ---- QWZDateTimeConvert -------------------------------------------------------

class DateTimeConvert : public ConfFixture {
 protected:
  // The value every source type is built with (a type-70 source stays zero).
  QWZDateTime *source(ub4 type) {
    QWZDateTime *d = new_datetime(type);
    const char *tz = type == DATETIME_KIND_TIME_TZ ? "+03:30" : "-04:30";
    if (type != DATETIME_KIND_TIMESTAMP_LTZ) construct(d, 2021, 4, 5, 11, 12, 13, 456, tz);
    return d;
  }
  // The value every target starts with.
  QWZDateTime *target(ub4 type) {
    QWZDateTime *d = new_datetime(type);
    if (type != DATETIME_KIND_TIMESTAMP_LTZ) construct(d, 1999, 12, 31, 22, 23, 24, 789, "+01:00");
    return d;
  }
};

bool is_time(ub4 t) { return t == DATETIME_KIND_TIME || t == DATETIME_KIND_TIME_TZ; }
bool is_stamp(ub4 t) { return t == TS || t == TZ; }
bool zoned(ub4 t) { return t == DATETIME_KIND_TIME_TZ || t == TZ; }

bool convertible(ub4 s, ub4 t) {
  if (s == DATETIME_KIND_DATE) return t == DATETIME_KIND_DATE || is_stamp(t);
  if (is_time(s)) return is_time(t) || is_stamp(t);
  if (is_stamp(s)) return t == DATETIME_KIND_DATE || is_time(t) || is_stamp(t);
  return false;
}

// What the getters show of a converted value: date fields copied, zero or
// today's; time fields and fraction copied or zero; zone copied from a zoned
// source, else the local standard offset.
Seen converted(ub4 s, ub4 t, int local_tz_hour) {
  Seen v;
  if (is_time(t)) {
    v.year = 0; v.month = 0; v.day = 0;
  } else if (is_time(s)) {
    int m = 0, d = 0;
    local_today(&v.year, &m, &d);
    v.month = m; v.day = d;
  } else {
    v.year = 2021; v.month = 4; v.day = 5;
  }
  if (t != DATETIME_KIND_DATE) {
    const bool copied = s != DATETIME_KIND_DATE;
    v.hour = copied ? 11 : 0;
    v.minute = copied ? 12 : 0;
    v.second = copied ? 13 : 0;
    v.fraction = is_time(t) ? 0 : (copied ? 456 : 0);  // the getter shows 0 for times
  }
  if (zoned(t)) {
    if (s == DATETIME_KIND_TIME_TZ) {
      v.tz_hour = 3; v.tz_minute = 30;
    } else if (s == TZ) {
      v.tz_hour = -4; v.tz_minute = -30;
    } else {
      v.tz_hour = local_tz_hour; v.tz_minute = 0;
    }
  }
  return v;
}

TEST_F(DateTimeConvert, EverySourceAndTarget) {
  ZoneGuard z(kEst);
  for (ub4 s = 65; s <= 70; ++s) {
    for (ub4 t = 65; t <= 70; ++t) {
      SCOPED_TRACE(std::to_string(s) + " -> " + std::to_string(t));
      QWZDateTime *in = source(s);
      QWZDateTime *out = target(t);
      const Seen in_before = seen(in), out_before = seen(out);
      PlannedTrace tr;
      const sword rc = QWZDateTimeConvert(env_, err_, in, out);
      // Accepted or not, the call reached its work: entry and exit records.
      const std::vector<std::pair<ub4, ub4>> want = {{177, 1}, {177, 0}};
      EXPECT_EQ(tr.sequence(), want);
      qwz_trace_flag = 0;
      if (convertible(s, t)) {
        EXPECT_EQ(rc, 0);
        expect_clear();
        EXPECT_EQ(seen(out), converted(s, t, -5));
        EXPECT_EQ(tr.records().back().status, 0);
      } else {
        EXPECT_EQ(rc, -1);
        expect_front_end(800160, kNotComparableNoDot);
        EXPECT_EQ(seen(out), out_before);
        EXPECT_EQ(tr.records().back().status, -1);
      }
      EXPECT_EQ(seen(in), in_before);
    }
  }
}

// A time target keeps the fraction (its getter shows 0): taking it on to a
// timestamp shows it again, and the zone travels with it.
TEST_F(DateTimeConvert, TimeTargetKeepsFractionAndZone) {
  ZoneGuard z(kUtc);
  QWZDateTime *stamp_in = source(TZ);
  QWZDateTime *time_tz = target(DATETIME_KIND_TIME_TZ);
  QWZDateTime *back = target(TZ);
  ASSERT_EQ(QWZDateTimeConvert(env_, err_, stamp_in, time_tz), 0);
  ASSERT_EQ(QWZDateTimeConvert(env_, err_, time_tz, back), 0);
  Seen want = converted(DATETIME_KIND_TIME_TZ, TZ, 0);
  want.fraction = 456;
  want.tz_hour = -4;  // the timestamp's zone, carried by the time
  want.tz_minute = -30;
  EXPECT_EQ(seen(back), want);
}

TEST_F(DateTimeConvert, ZoneAttachedAndDropped) {
  for (const char *zone : {kUtc, kCet, kEst}) {
    SCOPED_TRACE(zone);
    ZoneGuard z(zone);
    const int standard = zone == kUtc ? 0 : (zone == kCet ? 1 : -5);
    // Summer date on purpose: the standard offset is attached all the same.
    QWZDateTime *plain = make(TS, 2020, 7, 1, 10, 20, 30, 40);
    QWZDateTime *zoned_out = target(TZ);
    ASSERT_EQ(QWZDateTimeConvert(env_, err_, plain, zoned_out), 0);
    EXPECT_EQ(seen(zoned_out), stamp(2020, 7, 1, 10, 20, 30, 40, standard, 0));
    QWZDateTime *with_zone = make(TZ, 2020, 7, 1, 10, 20, 30, 40, "+09:00");
    QWZDateTime *plain_out = target(TS);
    ASSERT_EQ(QWZDateTimeConvert(env_, err_, with_zone, plain_out), 0);
    EXPECT_EQ(seen(plain_out), stamp(2020, 7, 1, 10, 20, 30, 40));
    QWZDateTime *date_in = make(DATETIME_KIND_DATE, 2020, 7, 1);
    QWZDateTime *date_to_zone = target(TZ);
    ASSERT_EQ(QWZDateTimeConvert(env_, err_, date_in, date_to_zone), 0);
    EXPECT_EQ(seen(date_to_zone), stamp(2020, 7, 1, 0, 0, 0, 0, standard, 0));
  }
}

// The input is not checked: an invalid value is converted as it stands.
TEST_F(DateTimeConvert, InputIsNotChecked) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = make(TZ, 2021, 1, 31, 1, 2, 3, 4, "+00:00");
  QWZDateTime *bad = make(TZ, 1990, 1, 1, 0, 0, 0, 0, "+02:00");
  QWZInterval *month = ym(0, 1);
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, month, bad), -1);  // 31 February
  QWZDateTime *out = target(TS);
  EXPECT_EQ(QWZDateTimeConvert(env_, err_, bad, out), 0);
  expect_clear();
  EXPECT_EQ(seen(out), stamp(2021, 2, 31, 1, 2, 3, 4));
  EXPECT_EQ(flags_of(out), DATE_INVALID_DAY);
}

TEST_F(DateTimeConvert, BadHandles) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = source(TS);
  QWZDateTime *out = target(TS);
  const Seen before = seen(out);
  QWZInterval *iv = ds(0, 0, 0, 0, 0);
  void *dead = freed(TS);
  struct Bad {
    const char *name;
    void *hndl;
    QWZDateTime *in, *out;
  };
  const Bad cases[] = {
      {"NULL context", nullptr, in, out},
      {"error handle as context", err_, in, out},
      {"NULL input", env_, nullptr, out},
      {"freed input", env_, static_cast<QWZDateTime *>(dead), out},
      {"interval as input", env_, reinterpret_cast<QWZDateTime *>(iv), out},
      {"NULL output", env_, in, nullptr},
      {"freed output", session_, in, static_cast<QWZDateTime *>(dead)},
      {"interval as output", env_, in, reinterpret_cast<QWZDateTime *>(iv)},
  };
  for (const Bad &c : cases) {
    SCOPED_TRACE(c.name);
    PlannedTrace t;
    EXPECT_EQ(QWZDateTimeConvert(c.hndl, err_, c.in, c.out), QWZ_INVALID_HANDLE);
    const std::vector<std::pair<ub4, ub4>> want = {{177, 1}};
    EXPECT_EQ(t.sequence(), want);
    qwz_trace_flag = 0;
    expect_invalid_handle();
  }
  EXPECT_EQ(QWZDateTimeConvert(env_, nullptr, in, out), QWZ_INVALID_HANDLE);
  EXPECT_EQ(seen(out), before);
}

TEST_F(DateTimeConvert, TraceRecord) {
  ZoneGuard z(kUtc);
  QWZDateTime *in = source(TS);
  QWZDateTime *out = target(DATETIME_KIND_DATE);
  PlannedTrace t;
  ASSERT_EQ(QWZDateTimeConvert(session_, err_, in, out), 0);
  const std::string row = "<QWZDateTimeConvert>" + line("void*", hex12(session_)) +
                          line("QWZError*", hex12(err_)) + line("QWZDateTime*", hex12(in)) +
                          line("QWZDateTime*", hex12(out));
  ASSERT_EQ(t.records().size(), 2u);
  EXPECT_EQ(t.records()[0].text, row);
  EXPECT_EQ(t.records()[1].text, row);
}

// ---- QWZDateTimeCompare -------------------------------------------------------

class DateTimeCompare : public ConfFixture {
 protected:
  // An output left holding 31 February by a failed addition.
  QWZDateTime *invalid(ub4 type) {
    QWZDateTime *in = make(TZ, 2021, 1, 31, 0, 0, 0, 0, "+00:00");
    QWZDateTime *out = make(type, 1990, 1, 1, 0, 0, 0, 0, "+00:00");
    QWZInterval *month = ym(0, 1);
    EXPECT_EQ(QWZDateTimeIntervalAdd(env_, err_, in, month, out), -1);
    return out;
  }
  sword compare(QWZDateTime *a, QWZDateTime *b) {
    sword r = 99;
    EXPECT_EQ(QWZDateTimeCompare(env_, err_, a, b, &r), 0);
    expect_clear();
    return r;
  }
};

struct Stamp {
  sb2 y;
  ub1 mo, d, h, mi, s;
  ub4 f;
};

TEST_F(DateTimeCompare, TimestampsFieldByField) {
  ZoneGuard z(kUtc);
  struct Case {
    const char *name;
    Stamp a, b;
    sword want;
  };
  const Case cases[] = {
      {"year signed", {-1, 6, 1, 0, 0, 0, 0}, {1, 6, 1, 0, 0, 0, 0}, -1},
      {"year decides before month", {2021, 1, 1, 0, 0, 0, 0}, {2020, 12, 31, 0, 0, 0, 0}, 1},
      {"month", {2020, 5, 1, 0, 0, 0, 0}, {2020, 4, 30, 23, 59, 59, 9}, 1},
      {"day", {2020, 5, 1, 0, 0, 0, 0}, {2020, 5, 2, 0, 0, 0, 0}, -1},
      {"hour", {2020, 5, 1, 10, 0, 0, 0}, {2020, 5, 1, 9, 59, 59, 0}, 1},
      {"minute", {2020, 5, 1, 10, 1, 0, 0}, {2020, 5, 1, 10, 2, 0, 0}, -1},
      {"second", {2020, 5, 1, 10, 1, 5, 0}, {2020, 5, 1, 10, 1, 4, 99}, 1},
      {"fraction", {2020, 5, 1, 10, 1, 5, 4000000000u}, {2020, 5, 1, 10, 1, 5, 1}, 1},
      {"equal", {2020, 5, 1, 10, 1, 5, 7}, {2020, 5, 1, 10, 1, 5, 7}, 0},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    QWZDateTime *a = make(TS, c.a.y, c.a.mo, c.a.d, c.a.h, c.a.mi, c.a.s, c.a.f);
    QWZDateTime *b = make(TS, c.b.y, c.b.mo, c.b.d, c.b.h, c.b.mi, c.b.s, c.b.f);
    EXPECT_EQ(compare(a, b), c.want);
    EXPECT_EQ(compare(b, a), -c.want);
  }
}

TEST_F(DateTimeCompare, DatesTimesAndLocalTimestamps) {
  ZoneGuard z(kUtc);
  QWZDateTime *d1 = make(DATETIME_KIND_DATE, 2020, 5, 1);
  QWZDateTime *d2 = make(DATETIME_KIND_DATE, 2020, 5, 2);
  EXPECT_EQ(compare(d1, d2), -1);
  EXPECT_EQ(compare(d1, d1), 0);
  // A time's fraction takes part though its getter shows 0.
  QWZDateTime *t1 = make(DATETIME_KIND_TIME, 0, 0, 0, 10, 0, 0, 5, nullptr);
  QWZDateTime *t2 = make(DATETIME_KIND_TIME, 0, 0, 0, 10, 0, 0, 6, nullptr);
  QWZDateTime *t3 = make(DATETIME_KIND_TIME, 0, 0, 0, 9, 59, 59, 9, nullptr);
  EXPECT_EQ(compare(t1, t2), -1);
  EXPECT_EQ(compare(t1, t3), 1);

  // Outputs of an addition get clock fields and fractions whatever their
  // type; a date compares by its date alone and a local timestamp always
  // compares equal.
  QWZDateTime *src = make(TZ, 2020, 5, 1, 10, 0, 0, 0, "+00:00");
  QWZInterval *none = ds(0, 0, 0, 0, 0);
  QWZInterval *hour = ds(0, 1, 0, 0, 7);
  QWZInterval *days = ds(400, 0, 0, 0, 0);
  QWZDateTime *da = new_datetime(DATETIME_KIND_DATE);
  QWZDateTime *db = new_datetime(DATETIME_KIND_DATE);
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, src, none, da), 0);
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, src, hour, db), 0);
  EXPECT_EQ(compare(da, db), 0);
  QWZDateTime *la = new_datetime(DATETIME_KIND_TIMESTAMP_LTZ);
  QWZDateTime *lb = new_datetime(DATETIME_KIND_TIMESTAMP_LTZ);
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, src, none, la), 0);
  ASSERT_EQ(QWZDateTimeIntervalAdd(env_, err_, src, days, lb), 0);
  EXPECT_EQ(compare(la, lb), 0);
  EXPECT_EQ(compare(lb, la), 0);
}

struct ZonedCase {
  const char *name;
  const char *zone;
  ub4 type;
  Stamp a;
  const char *tza;
  Stamp b;
  const char *tzb;
  sword want;
};

TEST_F(DateTimeCompare, ZonedValuesInUtc) {
  const ZonedCase cases[] = {
      {"same instant", kUtc, TZ, {2020, 1, 10, 10, 0, 0, 0}, "+02:00", {2020, 1, 10, 9, 0, 0, 0},
       "+01:00", 0},
      {"earlier across the day", kUtc, TZ, {2020, 1, 2, 1, 0, 0, 0}, "+02:00",
       {2020, 1, 1, 23, 30, 0, 0}, "+00:00", -1},
      {"later across the day", kUtc, TZ, {2020, 1, 1, 23, 0, 0, 0}, "+00:00",
       {2020, 1, 2, 1, 0, 0, 0}, "+03:00", 1},
      {"fraction decides", kUtc, TZ, {2020, 1, 1, 8, 0, 0, 2}, "+00:00", {2020, 1, 1, 9, 0, 0, 1},
       "+01:00", 1},
      {"times by clock", kUtc, DATETIME_KIND_TIME_TZ, {0, 0, 0, 10, 0, 0, 0}, "+02:00",
       {0, 0, 0, 9, 0, 0, 0}, "+00:00", -1},
      // 23:30 of the previous day against 00:15: the clock alone decides.
      {"times across midnight", kUtc, DATETIME_KIND_TIME_TZ, {0, 0, 0, 0, 30, 0, 0}, "+01:00",
       {0, 0, 0, 0, 15, 0, 0}, "+00:00", 1},
      {"summer values", kCet, TZ, {2020, 7, 1, 10, 0, 0, 0}, "+02:00", {2020, 7, 1, 8, 0, 0, 0},
       "+00:00", 0},
  };
  for (const ZonedCase &c : cases) {
    SCOPED_TRACE(c.name);
    ZoneGuard z(c.zone);
    QWZDateTime *a = make(c.type, c.a.y, c.a.mo, c.a.d, c.a.h, c.a.mi, c.a.s, c.a.f, c.tza);
    QWZDateTime *b = make(c.type, c.b.y, c.b.mo, c.b.d, c.b.h, c.b.mi, c.b.s, c.b.f, c.tzb);
    const Seen sa = seen(a), sb = seen(b);
    EXPECT_EQ(compare(a, b), c.want);
    EXPECT_EQ(compare(b, a), -c.want);
    EXPECT_EQ(seen(a), sa);
    EXPECT_EQ(seen(b), sb);
  }
}

TEST_F(DateTimeCompare, Refusals) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = make(TS, 2020, 1, 1);
  QWZDateTime *zoned = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  QWZDateTime *bad = invalid(TS);
  QWZDateTime *bad_zoned = invalid(TZ);
  QWZInterval *iv = ds(0, 0, 0, 0, 0);
  auto *iv_as_dt = reinterpret_cast<QWZDateTime *>(iv);
  auto *dead = static_cast<QWZDateTime *>(freed(TS));
  struct Case {
    const char *name;
    void *hndl;
    const QWZDateTime *a, *b;
    bool result;
    sword status;
    sb4 number;
    const char *state;
    std::string message;
  };
  const std::string type_diff = kTypeIsDiff;
  const Case cases[] = {
      {"NULL context", nullptr, a, a, true, QWZ_INVALID_HANDLE, 800001, "", "Invalid handle."},
      {"error handle as context", err_, a, a, true, QWZ_INVALID_HANDLE, 800001, "",
       "Invalid handle."},
      {"NULL first", env_, nullptr, a, true, QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)},
      {"freed first", env_, dead, a, true, QWZ_INVALID_HANDLE, 21560, "21560", null_param(3)},
      {"interval as first", env_, iv_as_dt, a, true, QWZ_INVALID_HANDLE, 21560, "21560",
       null_param(3)},
      {"NULL second", env_, a, nullptr, true, QWZ_INVALID_HANDLE, 21560, "21560", null_param(4)},
      {"freed second", session_, a, dead, true, QWZ_INVALID_HANDLE, 21560, "21560", null_param(4)},
      {"interval as second", env_, a, iv_as_dt, true, QWZ_INVALID_HANDLE, 21560, "21560",
       null_param(4)},
      {"NULL result", env_, a, a, false, -1, 21560, "21560", null_param(5)},
      {"first descriptor before the result", env_, nullptr, a, false, QWZ_INVALID_HANDLE, 21560,
       "21560", null_param(3)},
      {"second descriptor before the result", env_, a, dead, false, QWZ_INVALID_HANDLE, 21560,
       "21560", null_param(4)},
      {"result before the values", env_, bad, a, false, -1, 21560, "21560", null_param(5)},
      {"invalid first value", env_, bad, a, true, -1, 22007, "22007", kDateFormatInvalid},
      {"invalid second value", env_, a, bad, true, -1, 22007, "22007", kDateFormatInvalid},
      {"invalid zoned value", env_, zoned, bad_zoned, true, -1, 22007, "22007",
       kDateFormatInvalid},
      {"values before the types", env_, bad, zoned, true, -1, 22007, "22007",
       kDateFormatInvalid},
      {"types differ", env_, a, zoned, true, -1, 11105, "22008", type_diff},
      {"types differ the other way", env_, zoned, a, true, -1, 11105, "22008", type_diff},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    sword r = 99;
    PlannedTrace t;
    EXPECT_EQ(QWZDateTimeCompare(c.hndl, err_, c.a, c.b, c.result ? &r : nullptr), c.status);
    // No exit record for a refused call.
    for (const HookRecord &h : t.records()) {
      if (h.api_id == 148) {
        EXPECT_EQ(h.direction, 1u);
      }
    }
    qwz_trace_flag = 0;
    expect_diag(c.number, c.state, c.message);
    EXPECT_EQ(r, 99);
  }
  sword r = 99;
  EXPECT_EQ(QWZDateTimeCompare(env_, nullptr, a, a, &r), QWZ_INVALID_HANDLE);
  EXPECT_EQ(r, 99);
}

// A zoned value whose move to UTC fails: -1 and the result unwritten; the
// second move runs its own nested calls after the first.
TEST_F(DateTimeCompare, FailedMoveToUtc) {
  ZoneGuard z(kUtc);
  QWZDateTime *late = make(TZ, 9999, 12, 31, 23, 0, 0, 0, "-05:00");
  QWZDateTime *fine = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  sword r = 99;
  {
    PlannedTrace t;
    EXPECT_EQ(QWZDateTimeCompare(env_, err_, fine, late, &r), -1);
    for (const HookRecord &h : t.records()) {
      if (h.api_id == 148) {
        EXPECT_EQ(h.direction, 1u);
      }
    }
  }
  expect_diag(22007, "22007", kDateFormatInvalid);
  EXPECT_EQ(r, 99);
  EXPECT_EQ(QWZDateTimeCompare(env_, err_, late, fine, &r), -1);
  expect_clear();
  EXPECT_EQ(r, 99);
}

TEST_F(DateTimeCompare, TraceRecordsAndNestedCalls) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = make(TS, 2020, 1, 1);
  QWZDateTime *b = make(TS, 2020, 1, 2);
  QWZDateTime *za = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+01:00");
  QWZDateTime *zb = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  sword r = 99;
  {
    PlannedTrace t;
    ASSERT_EQ(QWZDateTimeCompare(env_, err_, a, b, &r), 0);
    EXPECT_EQ(r, -1);
    const std::vector<std::pair<ub4, ub4>> want = {{148, 1}, {147, 1}, {147, 0},
                                                   {147, 1}, {147, 0}, {148, 0}};
    EXPECT_EQ(t.sequence(), want);
    const std::string row = "<QWZDateTimeCompare>" + line("void*", hex12(env_)) +
                            line("QWZError*", hex12(err_)) +
                            line("const QWZDateTime*", hex12(a)) +
                            line("const QWZDateTime*", hex12(b)) + line("sword*", hex12(&r));
    EXPECT_EQ(t.records().front().text, row);
    EXPECT_EQ(t.records().back().text, row);
    EXPECT_EQ(t.records().back().status, 0);
    EXPECT_NE(t.records()[1].text.find(line("const QWZDateTime*", hex12(a))), std::string::npos);
    EXPECT_NE(t.records()[3].text.find(line("const QWZDateTime*", hex12(b))), std::string::npos);
  }
  {
    // Zoned: both checks, the two moves to UTC, and no exit record.
    PlannedTrace t;
    ASSERT_EQ(QWZDateTimeCompare(env_, err_, za, zb, &r), 0);
    EXPECT_EQ(r, -1);
    const std::vector<std::pair<ub4, ub4>> move = {{146, 1}, {147, 1}, {147, 0}, {146, 0},
                                                   {151, 1}, {151, 0}, {147, 1}, {147, 0}};
    std::vector<std::pair<ub4, ub4>> want = {{148, 1}, {147, 1}, {147, 0}, {147, 1}, {147, 0}};
    want.insert(want.end(), move.begin(), move.end());
    want.insert(want.end(), move.begin(), move.end());
    EXPECT_EQ(t.sequence(), want);
  }
  {
    // The exit answer replaces the status of an unzoned comparison only.
    PlannedTrace t({148, 0, 9, 0});
    EXPECT_EQ(QWZDateTimeCompare(env_, err_, a, b, &r), 9);
    EXPECT_EQ(QWZDateTimeCompare(env_, err_, za, zb, &r), 0);
  }
  {
    // A NULL result pointer is traced as the "(null)" text, not as 0.
    PlannedTrace t;
    EXPECT_EQ(QWZDateTimeCompare(env_, err_, a, b, nullptr), -1);
    ASSERT_EQ(t.records().size(), 1u);
    const std::string &text = t.records()[0].text;
    const std::string tail = line("sword*", "");
    const std::size_t at = text.rfind(tail);
    ASSERT_NE(at, std::string::npos);
    EXPECT_NE(text.substr(at + tail.size()), hex12(nullptr));
  }
  {
    // The entry answer comes back at once.
    PlannedTrace t({148, 1, 7, 0});
    r = 99;
    EXPECT_EQ(QWZDateTimeCompare(env_, nullptr, a, b, &r), 7);
    EXPECT_EQ(r, 99);
  }
}

// The operands are checked with the caller's context handle; the moves to
// UTC run in the environment that owns them.
TEST_F(DateTimeCompare, NestedCallsAndTheirContextHandles) {
  ZoneGuard z(kUtc);
  QWZDateTime *za = make(DATETIME_KIND_TIME_TZ, 0, 0, 0, 10, 0, 0, 0, "+01:00");
  QWZDateTime *zb = make(DATETIME_KIND_TIME_TZ, 0, 0, 0, 9, 0, 0, 0, "+00:00");
  sword r = 99;
  PlannedTrace t;
  ASSERT_EQ(QWZDateTimeCompare(session_, err_, za, zb, &r), 0);
  EXPECT_EQ(r, 0);
  const std::string in_session = "\n\tvoid*     \t" + hex12(session_) + "\n";
  const std::string in_env = "\n\tvoid*     \t" + hex12(env_) + "\n";
  ASSERT_EQ(t.records().size(), 21u);
  for (std::size_t i = 0; i < t.records().size(); ++i) {
    SCOPED_TRACE(t.records()[i].text);
    EXPECT_NE(t.records()[i].text.find(i < 5 ? in_session : in_env), std::string::npos);
  }
}

TEST_F(DateTimeCompare, SuccessClearsTheErrorHandle) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = make(TZ, 2020, 1, 1, 0, 0, 0, 0, "+00:00");
  sword r = 99;
  EXPECT_EQ(QWZDateTimeCompare(env_, err_, a, nullptr, &r), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDateTimeCompare(env_, err_, a, a, &r), 0);
  expect_clear();
  EXPECT_EQ(r, 0);
}

// ---- QWZDateZoneToZone --------------------------------------------------------

class DateZoneToZone : public ConfFixture {};

TEST_F(DateZoneToZone, OnlyValidatesItsArguments) {
  QWZDate d1{2024, 5, 17, 1, 2, 3};
  QWZDate d2{1111, 11, 11, 11, 11, 11};
  QWZText z1[] = "+02:00", z2[] = "-05:00";
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, z1, 6, z2, 6, &d2), 0);
  expect_clear();
  EXPECT_EQ(d2.year, 1111);
  EXPECT_EQ(d2.month, 11);
  EXPECT_EQ(d2.second, 11);
  EXPECT_EQ(d1.year, 2024);
  struct Case {
    const char *name;
    QWZDate *a;
    QWZText *za;
    QWZText *zb;
    QWZDate *b;
    int param;
  };
  const Case cases[] = {
      {"NULL first date", nullptr, z1, z2, &d2, 8},
      {"NULL second date", &d1, z1, z2, nullptr, 8},
      {"NULL first zone", &d1, nullptr, z2, &d2, 2},
      {"NULL second zone", &d1, z1, nullptr, &d2, 2},
      {"dates before zones", nullptr, nullptr, nullptr, &d2, 8},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    PlannedTrace t;
    EXPECT_EQ(QWZDateZoneToZone(err_, c.a, c.za, 6, c.zb, 6, c.b), -1);
    const std::vector<std::pair<ub4, ub4>> want = {{185, 1}};
    EXPECT_EQ(t.sequence(), want);
    qwz_trace_flag = 0;
    expect_diag(21560, "21560", null_param(c.param));
  }
  EXPECT_EQ(QWZDateZoneToZone(nullptr, &d1, z1, 6, z2, 6, &d2), QWZ_INVALID_HANDLE);
  EXPECT_EQ(d2.year, 1111);
}

TEST_F(DateZoneToZone, TraceRecords) {
  QWZDate d1{2024, 5, 17, 1, 2, 3}, d2{};
  QWZText z1[] = "+02:00", z2[] = "UTC";
  PlannedTrace t;
  ASSERT_EQ(QWZDateZoneToZone(err_, &d1, z1, 6, z2, 3, &d2), 0);
  const std::string row = "<QWZDateZoneToZone>" + line("QWZError*", hex12(err_)) +
                          line("QWZDate*", hex12(&d1)) + line("QWZText*", "+02:00") +
                          line("ub4", "6") + line("QWZText*", "UTC") + line("ub4", "3") +
                          line("QWZDate*", hex12(&d2));
  const std::vector<std::pair<ub4, ub4>> want = {{185, 1}, {185, 0}};
  EXPECT_EQ(t.sequence(), want);
  ASSERT_EQ(t.records().size(), 2u);
  EXPECT_EQ(t.records()[0].text, row);
  EXPECT_EQ(t.records()[1].text, row);
  t.records().clear();
  EXPECT_EQ(QWZDateZoneToZone(err_, &d1, nullptr, 0, z2, 3, &d2), -1);
  ASSERT_EQ(t.records().size(), 1u);
  EXPECT_EQ(t.records()[0].text, "<QWZDateZoneToZone>" + line("QWZError*", hex12(err_)) +
                                     line("QWZDate*", hex12(&d1)) + line("QWZText*", "(null)") +
                                     line("ub4", "0") + line("QWZText*", "UTC") +
                                     line("ub4", "3") + line("QWZDate*", hex12(&d2)));
}

}  // namespace
