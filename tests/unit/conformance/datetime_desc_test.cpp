// QWZDateTimeConstruct, the getters of date, time and zone, the zone name
// and QWZDateTimeSysTimeStamp, black box.
#include "datetime_conf_util.h"

#include <cstring>
#include <ctime>
#include <tuple>

using namespace conf;

namespace {

using qwz_test::kCet;
using qwz_test::kEst;
using qwz_test::kUtc;
using qwz_test::TraceCapture;
using qwz_test::ZoneGuard;

struct Args {
  sb2 year;
  ub1 month, day, hour, min, sec;
  ub4 fsec;
};

class ConstructConf : public Fixture {
 protected:
  sword construct(QWZDateTime *d, const Args &a, const char *tz = nullptr, std::size_t tz_length = 0,
                  void *h = nullptr) {
    return QWZDateTimeConstruct(h ? h : env_, err_, d, a.year, a.month, a.day, a.hour, a.min,
                                a.sec, a.fsec, tz ? T(tz) : nullptr, tz_length);
  }
  std::array<ub1, 8> date_time_bytes(int y, int mo, int d, int h, int mi, int s) {
    return {static_cast<ub1>(y / 100 + 100), static_cast<ub1>(y % 100 + 100), static_cast<ub1>(mo),
            static_cast<ub1>(d), static_cast<ub1>(h + 1), static_cast<ub1>(mi + 1),
            static_cast<ub1>(s + 1), 0};
  }
};

// Each type fills the fields it defines and zeroes the others.
TEST_F(ConstructConf, EachTypeFillsItsFields) {
  ZoneGuard z(kCet);
  const Args a{2024, 2, 29, 10, 20, 30, 123456789};
  for (ub2 type : {65, 66, 67, 68, 69}) {
    QWZDateTime *d = new_datetime(type);
    put(d, V{1999, 1, 2, 3, 4, 5, 6, 0, 0});
    ASSERT_EQ(construct(d, a), QWZ_SUCCESS) << type;
    expect_clear();
    const Seen s = see(d);
    const bool date = type == 65 || type >= 68;
    const bool time = type != 65;
    EXPECT_EQ(s.bytes, date_time_bytes(date ? 2024 : 0, date ? 2 : 0, date ? 29 : 0, time ? 10 : 0,
                                       time ? 20 : 0, time ? 30 : 0))
        << type;
    EXPECT_EQ(s.date_rc, QWZ_SUCCESS);
    EXPECT_EQ(s.year, date ? 2024 : 0);
    EXPECT_EQ(s.month, date ? 2 : 0);
    EXPECT_EQ(s.day, date ? 29 : 0);
    if (time) {
      EXPECT_EQ(s.time_rc, QWZ_SUCCESS);
      EXPECT_EQ(s.hour, 10);
      EXPECT_EQ(s.minute, 20);
      EXPECT_EQ(s.second, 30);
      // Times report a fraction of 0 although one is stored.
      EXPECT_EQ(s.fraction, type >= 68 ? 123456789u : 0u);
    } else {
      EXPECT_EQ(s.time_rc, QWZ_ERROR);
    }
    if (type == 67 || type == 69) {
      EXPECT_EQ(s.tz_rc, QWZ_SUCCESS);
      EXPECT_EQ(s.tz_hour, 1);  // CET standard offset
      EXPECT_EQ(s.tz_minute, 0);
    } else {
      EXPECT_EQ(s.tz_rc, QWZ_ERROR);
    }
  }
}

TEST_F(ConstructConf, DateDropsTimeAndTimeDropsDate) {
  ZoneGuard z(kUtc);
  QWZDateTime *date = new_datetime(65);
  ASSERT_EQ(construct(date, {2024, 5, 17, 10, 0, 0, 0}), QWZ_SUCCESS);
  EXPECT_EQ(bytes_of(date)[4], 1);  // hour 0
  QWZDateTime *time = new_datetime(66);
  ASSERT_EQ(construct(time, {2020, 1, 1, 10, 0, 0, 0}), QWZ_SUCCESS);
  const auto b = bytes_of(time);
  EXPECT_EQ(b[0], 100);  // year 0
  EXPECT_EQ(b[1], 100);
  EXPECT_EQ(b[2], 0);
  EXPECT_EQ(b[3], 0);
  // The date of a time was never examined, so an impossible one passes.
  QWZDateTime *t2 = new_datetime(66);
  ASSERT_EQ(construct(t2, {-32768, 255, 255, 23, 59, 59, 4294967295u}), QWZ_SUCCESS);
}

// The zone text is read only for 67 and 69; the other types ignore it (and
// the date type ignores fsec).
TEST_F(ConstructConf, ZoneTextOnlyForZonedTypes) {
  ZoneGuard z(kUtc);
  for (ub2 type : {65, 66, 68})
    EXPECT_EQ(construct(new_datetime(type), {2024, 1, 1, 1, 1, 1, 1}, "ab:cd", 5), QWZ_SUCCESS)
        << type;
  for (ub2 type : {67, 69}) {
    QWZDateTime *d = new_datetime(type);
    ASSERT_EQ(construct(d, {2024, 1, 1, 1, 1, 1, 1}, "+05:30", 6), QWZ_SUCCESS) << type;
    sb1 h = 0, m = 0;
    ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &h, &m), QWZ_SUCCESS);
    EXPECT_EQ(h, 5);
    EXPECT_EQ(m, 30);
  }
}

TEST_F(ConstructConf, ZoneTexts) {
  ZoneGuard z(kUtc);
  struct Case {
    const char *tz;
    sb1 h, m;
  } cases[] = {
      {"+05:30", 5, 30}, {"-05:30", -5, -30}, {"-03:30", -3, -30}, {"+00:00", 0, 0},
      {"-12:00", -12, 0}, {"+14:00", 14, 0}, {"-00:30", 0, -30}, {"+5:7", 5, 7},
  };
  for (const Case &c : cases) {
    QWZDateTime *d = new_datetime(69);
    ASSERT_EQ(construct(d, {2024, 5, 17, 12, 0, 0, 0}, c.tz, std::strlen(c.tz)), QWZ_SUCCESS) << c.tz;
    sb1 h = 99, m = 99;
    ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &h, &m), QWZ_SUCCESS);
    EXPECT_EQ(h, c.h) << c.tz;
    EXPECT_EQ(m, c.m) << c.tz;
  }
}

// No zone text: the process's standard offset, never the summer one; the
// minutes carry the sign of the offset.
TEST_F(ConstructConf, LocalStandardOffset) {
  struct Case {
    const char *zone;
    sb1 h, m;
  } cases[] = {
      {kUtc, 0, 0}, {kCet, 1, 0}, {kEst, -5, 0}, {"<+0530>-5:30", 5, 30}, {"<-0330>3:30", -3, -30},
      {"<+1345>-13:45", 13, 45},
  };
  for (const Case &c : cases) {
    ZoneGuard z(c.zone);
    for (ub2 type : {67, 69}) {
      QWZDateTime *d = new_datetime(type);
      // A summer date: the stored offset stays the standard one.
      ASSERT_EQ(construct(d, {2024, 7, 1, 12, 0, 0, 0}), QWZ_SUCCESS) << c.zone;
      sb1 h = 99, m = 99;
      ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &h, &m), QWZ_SUCCESS);
      EXPECT_EQ(h, c.h) << c.zone;
      EXPECT_EQ(m, c.m) << c.zone;
    }
  }
}

// A value that fails the check puts the previous value back.
TEST_F(ConstructConf, InvalidValueRestoresThePrevious) {
  ZoneGuard z(kUtc);
  struct Case {
    ub2 type;
    Args a;
    const char *tz;
  } cases[] = {
      {65, {2024, 13, 1, 0, 0, 0, 0}, nullptr},
      {65, {2023, 2, 29, 0, 0, 0, 0}, nullptr},
      {65, {0, 1, 1, 0, 0, 0, 0}, nullptr},
      {65, {-4713, 1, 1, 0, 0, 0, 0}, nullptr},
      {66, {0, 0, 0, 24, 0, 0, 0}, nullptr},
      {67, {0, 0, 0, 1, 60, 0, 0}, nullptr},
      {67, {0, 0, 0, 1, 0, 0, 0}, "+15:00"},
      {68, {2024, 1, 1, 0, 0, 60, 0}, nullptr},
      {68, {10000, 1, 1, 0, 0, 0, 0}, nullptr},
      {69, {2024, 1, 1, 0, 0, 0, 0}, "-13:00"},
      {69, {2024, 1, 1, 0, 0, 0, 0}, "+01:60"},
  };
  for (const Case &c : cases) {
    QWZDateTime *d = new_datetime(c.type);
    const V prev{1999, 12, 31, 23, 58, 57, 987654321, 2, 30};
    ASSERT_EQ(put(d, prev), QWZ_SUCCESS);
    const Seen before = see(d);
    ASSERT_EQ(construct(d, c.a, c.tz, c.tz ? std::strlen(c.tz) : 0), QWZ_ERROR) << c.type;
    expect_date_format_invalid();
    const Seen after = see(d);
    EXPECT_EQ(after.bytes, before.bytes) << c.type;
    EXPECT_EQ(after.year, before.year);
    EXPECT_EQ(after.fraction, before.fraction);
    EXPECT_EQ(after.tz_hour, before.tz_hour);
    EXPECT_EQ(after.tz_minute, before.tz_minute);
  }
}

// Without a sign the zone hour runs on over the separator: "05:45" reads
// zone hour "054", fails the check and puts the previous value back.
TEST_F(ConstructConf, UnsignedZoneTextRunsOn) {
  QWZDateTime *d = new_datetime(69);
  ASSERT_EQ(put(d, V{2000, 1, 1, 12, 0, 0, 0, 3, 0}), QWZ_SUCCESS);
  EXPECT_EQ(construct(d, {2024, 5, 17, 12, 0, 0, 0}, "05:45", 5), QWZ_ERROR);
  expect_date_format_invalid();
  const Seen s = see(d);
  EXPECT_EQ(s.year, 2000);
  EXPECT_EQ(s.tz_hour, 3);
  EXPECT_EQ(s.tz_minute, 0);
}

// A rejected zone text is returned as it is: the new fields stay written,
// nothing is put back, and no diagnostic is added by the constructor.
TEST_F(ConstructConf, RejectedZoneText) {
  ZoneGuard z(kUtc);
  for (ub2 type : {67, 69}) {
    QWZDateTime *d = new_datetime(type);
    ASSERT_EQ(put(d, V{1999, 12, 31, 23, 58, 57, 0, 2, 30}), QWZ_SUCCESS);
    PickyTrace pt(0, 0, 0);
    EXPECT_EQ(construct(d, {2024, 5, 17, 10, 20, 30, 0}, "ab:cd", 5), QWZ_ERROR) << type;
    // The value is not checked: no nested check record.
    ASSERT_FALSE(pt.got().empty());
    EXPECT_EQ(pt.got().front(), (std::pair<ub4, ub4>{142, 1}));
    for (const auto &r : pt.got()) EXPECT_NE(r.first, 147u) << type;
    qwz_trace_flag = 0;
    expect_clear();
    const Seen s = see(d);
    EXPECT_EQ(s.hour, 10);
    EXPECT_EQ(s.minute, 20);
    EXPECT_EQ(s.second, 30);
    EXPECT_EQ(s.tz_hour, 0);
    EXPECT_EQ(s.tz_minute, 0);
    if (type == 69) {
      EXPECT_EQ(s.year, 2024);
      EXPECT_EQ(s.month, 5);
      EXPECT_EQ(s.day, 17);
    } else {
      EXPECT_EQ(s.bytes[0], 100);
      EXPECT_EQ(s.bytes[2], 0);
    }
  }
}

// The zone text is read before the value is checked: a rejected text wins
// over an invalid date, which then stays written.
TEST_F(ConstructConf, ZoneTextBeforeCheck) {
  QWZDateTime *d = new_datetime(69);
  ASSERT_EQ(put(d, V{1999, 12, 31, 12, 0, 0, 0, 0, 0}), QWZ_SUCCESS);
  EXPECT_EQ(construct(d, {2024, 13, 1, 10, 0, 0, 0}, "ab:cd", 5), QWZ_ERROR);
  expect_clear();
  EXPECT_EQ(bytes_of(d)[2], 13);
}

// The zone text is cut at its given length.
TEST_F(ConstructConf, ZoneTextLength) {
  ZoneGuard z(kCet);
  struct Case {
    std::size_t len;
    sb1 h, m;
  } cases[] = {{0, 0, 0}, {3, 5, 0}, {4, 5, 0}, {6, 5, 30}, {100, 5, 30}};
  for (const Case &c : cases) {
    QWZDateTime *d = new_datetime(67);
    ASSERT_EQ(construct(d, {0, 0, 0, 10, 0, 0, 0}, "+05:30", c.len), QWZ_SUCCESS) << c.len;
    sb1 h = 99, m = 99;
    ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &h, &m), QWZ_SUCCESS);
    EXPECT_EQ(h, c.h) << c.len;
    EXPECT_EQ(m, c.m) << c.len;
  }
}

// A local-zone timestamp is not filled: nothing is written and the call
// succeeds, whatever the arguments.
TEST_F(ConstructConf, LocalZoneTimestampIsNotWritten) {
  QWZDateTime *d = new_datetime(70);
  ASSERT_EQ(put(d, V{1999, 12, 31, 23, 58, 57, 987654321}, kClassTimestamp), QWZ_SUCCESS);
  const Seen before = see(d);
  EXPECT_EQ(construct(d, {2024, 5, 17, 10, 20, 30, 1}), QWZ_SUCCESS);
  EXPECT_EQ(construct(d, {0, 13, 99, 99, 99, 99, 1}, "ab:cd", 5), QWZ_SUCCESS);
  expect_clear();
  const Seen after = see(d);
  EXPECT_EQ(after.bytes, before.bytes);
  EXPECT_EQ(after.year, before.year);
  EXPECT_EQ(after.fraction, 987654321u);
  // A fresh descriptor keeps whatever it held; its value is not examined.
  QWZDateTime *fresh = new_datetime(70);
  const auto fresh_before = bytes_of(fresh);
  EXPECT_EQ(construct(fresh, {2024, 5, 17, 10, 20, 30, 1}), QWZ_SUCCESS);
  EXPECT_EQ(bytes_of(fresh), fresh_before);
}

TEST_F(ConstructConf, Extremes) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = new_datetime(68);
  ASSERT_EQ(construct(d, {-4712, 1, 1, 0, 0, 0, 0}), QWZ_SUCCESS);
  EXPECT_EQ(see(d).year, -4712);
  ASSERT_EQ(construct(d, {9999, 12, 31, 23, 59, 59, 4294967295u}), QWZ_SUCCESS);
  const Seen s = see(d);
  EXPECT_EQ(s.year, 9999);
  EXPECT_EQ(s.fraction, 4294967295u);
  EXPECT_EQ(construct(d, {9999, 12, 32, 23, 59, 59, 0}), QWZ_ERROR);
  expect_date_format_invalid();
}

TEST_F(ConstructConf, Refusals) {
  QWZDateTime *d = new_datetime(68);
  ASSERT_EQ(construct(d, {2000, 1, 1, 0, 0, 0, 0}), QWZ_SUCCESS);
  const auto before = bytes_of(d);
  for (auto &[label, h] : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeConstruct(h, err_, d, 2024, 1, 1, 0, 0, 0, 0, nullptr, 0), QWZ_INVALID_HANDLE)
        << label;
    expect_invalid_handle();
  }
  EXPECT_EQ(QWZDateTimeConstruct(nullptr, err_, d, 2024, 1, 1, 0, 0, 0, 0, nullptr, 0),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(bytes_of(d), before);
  // A bad descriptor writes "Invalid handle." (not the setter's message).
  for (auto &[label, bad] : bad_datetimes()) {
    EXPECT_EQ(construct(bad, {2024, 1, 1, 0, 0, 0, 0}), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, e] : bad_error_handles())
    EXPECT_EQ(QWZDateTimeConstruct(env_, e, d, 2024, 1, 1, 0, 0, 0, 0, nullptr, 0), QWZ_INVALID_HANDLE)
        << label;
  EXPECT_EQ(bytes_of(d), before);
}

std::string construct_record(void *h, QWZError *e, const void *d, const Args &a,
                             const std::string &tz, std::size_t len) {
  return rec("QWZDateTimeConstruct",
             {{"void*", hex12(h)}, {"QWZError*", hex12(e)}, {"QWZDateTime*", hex12(d)},
              {"sb2", std::to_string(a.year)}, {"ub1", std::to_string(a.month)},
              {"ub1", std::to_string(a.day)}, {"ub1", std::to_string(a.hour)},
              {"ub1", std::to_string(a.min)}, {"ub1", std::to_string(a.sec)},
              {"ub4", std::to_string(a.fsec)}, {"QWZText*", tz}, {"size_t", std::to_string(len)}});
}

TEST_F(ConstructConf, Trace) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = new_datetime(69);
  const Args a{-4712, 1, 1, 0, 0, 0, 4294967295u};
  {
    TraceCapture tc;
    ASSERT_EQ(construct(d, a), QWZ_SUCCESS);
    auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{142, 1}, {147, 1}, {147, 0}, {142, 0}}));
    EXPECT_EQ(r[0].text, construct_record(env_, err_, d, a, "(null)", 0));
    EXPECT_EQ(r[3].text, r[0].text);
    EXPECT_EQ(r[3].status, 0);
    EXPECT_EQ(r[1].text.rfind("<QWZDateTimeCheck>\n\tvoid*     \t" + hex12(env_) +
                                  "\n\tQWZError*     \t" + hex12(err_) +
                                  "\n\tconst QWZDateTime*     \t" + hex12(d) + "\n\tub4*     \t",
                              0),
              0u);
  }
  {
    TraceCapture tc;
    ASSERT_EQ(construct(d, {2024, 12, 31, 23, 59, 59, 7}, "-05:30", 6, session_), QWZ_SUCCESS);
    ASSERT_EQ(tc.records().size(), 4u);
    EXPECT_EQ(tc.records()[0].text,
              construct_record(session_, err_, d, {2024, 12, 31, 23, 59, 59, 7}, "-05:30", 6));
  }
  {
    // A value failing the check: the check's pair and no exit record.
    TraceCapture tc;
    ASSERT_EQ(construct(d, {2024, 13, 1, 0, 0, 0, 0}), QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{142, 1}, {147, 1}, {147, 0}}));
  }
  {
    // A type-70 descriptor still goes through the nested check.
    QWZDateTime *l = new_datetime(70);
    TraceCapture tc;
    ASSERT_EQ(construct(l, a), QWZ_SUCCESS);
    EXPECT_EQ(shape(tc.records()), (Shape{{142, 1}, {147, 1}, {147, 0}, {142, 0}}));
  }
  {
    // Entry result: returned at once, nothing written.
    const auto before = bytes_of(d);
    TraceCapture tc;
    tc.set_results(7, 0);
    EXPECT_EQ(construct(d, {2000, 1, 1, 0, 0, 0, 0}), 7);
    EXPECT_EQ(shape(tc.records()), (Shape{{142, 1}}));
    qwz_trace_flag = 0;
    EXPECT_EQ(bytes_of(d), before);
  }
  {
    // Exit result: replaces the status; the value is written.
    TraceCapture tc;
    tc.set_results(0, 4);
    EXPECT_EQ(construct(d, {2001, 2, 3, 4, 5, 6, 7}), 4);
    qwz_trace_flag = 0;
    EXPECT_EQ(see(d).year, 2001);
  }
}

// A non-zero status of the nested check is returned as it is and nothing is
// put back.
TEST_F(ConstructConf, NestedCheckStatusIsReturned) {
  QWZDateTime *d = new_datetime(68);
  ASSERT_EQ(construct(d, {2000, 1, 1, 0, 0, 0, 0}), QWZ_SUCCESS);
  {
    PickyTrace pt(147, 1, 7);
    EXPECT_EQ(construct(d, {2024, 13, 1, 2, 3, 4, 5}), 7);
    ASSERT_GE(pt.got().size(), 2u);
    EXPECT_EQ(pt.got()[1], (std::pair<ub4, ub4>{147, 1}));
  }
  const Seen s = see(d);
  EXPECT_EQ(s.year, 2024);
  EXPECT_EQ(s.bytes[2], 13);
}

// ---------------------------------------------------------------------------

class GetDateConf : public Fixture {};

TEST_F(GetDateConf, NullOutputs) {
  QWZDateTime *d = new_datetime(66);
  sb2 y = 7;
  ub1 m = 7, dd = 7;
  const std::tuple<sb2 *, ub1 *, ub1 *> cases[] = {
      {nullptr, &m, &dd}, {&y, nullptr, &dd}, {&y, &m, nullptr}, {nullptr, nullptr, nullptr}};
  for (auto [py, pm, pd] : cases) {
    EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, py, pm, pd), QWZ_ERROR);
    expect_front(800058, "the year or month or day could not be null.");
    EXPECT_EQ(y, 7);
    EXPECT_EQ(m, 7);
    EXPECT_EQ(dd, 7);
  }
}

TEST_F(GetDateConf, ByType) {
  for (ub2 type : {66, 67}) {
    // Date fields present in the descriptor are still reported as zero.
    QWZDateTime *d = new_datetime(type);
    put(d, V{2024, 5, 17, 10, 20, 30}, kClassTimestamp);
    sb2 y = 7;
    ub1 m = 7, dd = 7;
    ASSERT_EQ(QWZDateTimeGetDate(env_, err_, d, &y, &m, &dd), QWZ_SUCCESS) << type;
    EXPECT_EQ(y, 0);
    EXPECT_EQ(m, 0);
    EXPECT_EQ(dd, 0);
    expect_clear();
  }
  for (ub2 type : {65, 68, 69, 70}) {
    QWZDateTime *d = new_datetime(type);
    put(d, V{-4712, 12, 31, 10, 20, 30}, kClassTimestamp);
    sb2 y = 7;
    ub1 m = 7, dd = 7;
    ASSERT_EQ(QWZDateTimeGetDate(env_, err_, d, &y, &m, &dd), QWZ_SUCCESS) << type;
    EXPECT_EQ(y, -4712);
    EXPECT_EQ(m, 12);
    EXPECT_EQ(dd, 31);
    // All three date fields zero: not a date.
    put(d, V{0, 0, 0, 10, 20, 30}, kClassTimestamp);
    y = 7;
    m = dd = 7;
    EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, &y, &m, &dd), QWZ_ERROR) << type;
    expect_front(800057, "not a date.");
    EXPECT_EQ(y, 7);
    EXPECT_EQ(m, 7);
    EXPECT_EQ(dd, 7);
    // Any one non-zero field is enough.
    for (V v : {V{0, 0, 1}, V{0, 1, 0}, V{1, 0, 0}}) {
      put(d, v, kClassDate);
      EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, &y, &m, &dd), QWZ_SUCCESS) << type;
      EXPECT_EQ(y, v.year);
      EXPECT_EQ(m, v.month);
      EXPECT_EQ(dd, v.day);
    }
  }
  // A type-68 value read from a time-only array has no date.
  QWZDateTime *d = new_datetime(68);
  put(d, V{0, 0, 0, 1, 2, 3}, kClassTime);
  sb2 y;
  ub1 m, dd;
  EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, &y, &m, &dd), QWZ_ERROR);
  expect_front(800057, "not a date.");
}

// NULL outputs are refused before the type is looked at.
TEST_F(GetDateConf, NullBeforeNotADate) {
  QWZDateTime *d = new_datetime(68);
  put(d, V{0, 0, 0}, kClassDate);
  EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, nullptr, nullptr, nullptr), QWZ_ERROR);
  expect_front(800058, "the year or month or day could not be null.");
}

TEST_F(GetDateConf, Refusals) {
  sb2 y = 7;
  ub1 m = 7, dd = 7;
  QWZDateTime *d = new_datetime(65);
  for (auto &[label, h] : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeGetDate(h, err_, d, &y, &m, &dd), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, bad] : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeGetDate(env_, err_, bad, &y, &m, &dd), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  // The descriptor is validated before the outputs.
  EXPECT_EQ(QWZDateTimeGetDate(env_, err_, nullptr, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  for (auto &[label, e] : bad_error_handles())
    EXPECT_EQ(QWZDateTimeGetDate(env_, e, d, &y, &m, &dd), QWZ_INVALID_HANDLE) << label;
  EXPECT_EQ(y, 7);
}

// ---------------------------------------------------------------------------

class GetTimeConf : public Fixture {};

TEST_F(GetTimeConf, NullOutputs) {
  QWZDateTime *d = new_datetime(65);  // the NULL check comes before the type
  ub1 h = 7, m = 7, s = 7;
  ub4 f = 7;
  const std::tuple<ub1 *, ub1 *, ub1 *, ub4 *> cases[] = {{nullptr, &m, &s, &f},
                                                          {&h, nullptr, &s, &f},
                                                          {&h, &m, nullptr, &f},
                                                          {&h, &m, &s, nullptr},
                                                          {nullptr, nullptr, nullptr, nullptr}};
  for (auto [ph, pm, ps, pf] : cases) {
    EXPECT_EQ(QWZDateTimeGetTime(env_, err_, d, ph, pm, ps, pf), QWZ_ERROR);
    expect_front(800059, "the hour or minute or second or fraction could not be null.");
    EXPECT_EQ(h, 7);
    EXPECT_EQ(m, 7);
    EXPECT_EQ(s, 7);
    EXPECT_EQ(f, 7u);
  }
}

TEST_F(GetTimeConf, ByType) {
  QWZDateTime *date = new_datetime(65);
  put(date, V{2024, 1, 1, 10, 20, 30, 500}, kClassTimestamp);
  ub1 h = 7, m = 7, s = 7;
  ub4 f = 7;
  EXPECT_EQ(QWZDateTimeGetTime(env_, err_, date, &h, &m, &s, &f), QWZ_ERROR);
  expect_front(800060, "specified field not found in datetime or interval.");
  EXPECT_EQ(h, 7);
  EXPECT_EQ(f, 7u);
  for (ub2 type : {66, 67, 68, 69, 70}) {
    QWZDateTime *d = new_datetime(type);
    put(d, V{2024, 1, 1, 23, 59, 58, 999999999});
    ASSERT_EQ(QWZDateTimeGetTime(env_, err_, d, &h, &m, &s, &f), QWZ_SUCCESS) << type;
    expect_clear();
    EXPECT_EQ(h, 23);
    EXPECT_EQ(m, 59);
    EXPECT_EQ(s, 58);
    EXPECT_EQ(f, (type == 66 || type == 67) ? 0u : 999999999u) << type;
  }
  // The fraction a time with zone was constructed with is reported as 0.
  QWZDateTime *t = new_datetime(67);
  ASSERT_EQ(QWZDateTimeConstruct(env_, err_, t, 0, 0, 0, 1, 2, 3, 500, T("+01:00"), 6), QWZ_SUCCESS);
  f = 99;
  ASSERT_EQ(QWZDateTimeGetTime(env_, err_, t, &h, &m, &s, &f), QWZ_SUCCESS);
  EXPECT_EQ(f, 0u);
}

// The 16-bit time fields come out as their low bytes.
TEST_F(GetTimeConf, LowBytes) {
  QWZDateTime *d = new_datetime(69);
  // Zone +127 moves hour byte 255 to 381 and minute byte 200 to 326.
  ub1 b[13] = {120, 124, 1, 1, 255, 200, 1, 0, 0, 0, 0, 147, 187};
  ASSERT_EQ(QWZDateTimeFromArray(env_, err_, b, nullptr, kClassTimestampTz, d, reftz(), 9), QWZ_ERROR);
  ub1 h = 0, m = 0, s = 0;
  ub4 f = 0;
  ASSERT_EQ(QWZDateTimeGetTime(env_, err_, d, &h, &m, &s, &f), QWZ_SUCCESS);
  EXPECT_EQ(h, 381 & 0xFF);
  EXPECT_EQ(m, 326 & 0xFF);
  // A zeroed hour byte of a zoneless class stores 65535.
  QWZDateTime *e = new_datetime(68);
  ub1 c[11] = {120, 124, 1, 1, 0, 0, 0, 0, 0, 0, 0};
  ASSERT_EQ(QWZDateTimeFromArray(env_, err_, c, nullptr, kClassTimestamp, e, reftz(), 9), QWZ_ERROR);
  ASSERT_EQ(QWZDateTimeGetTime(env_, err_, e, &h, &m, &s, &f), QWZ_SUCCESS);
  EXPECT_EQ(h, 255);
  EXPECT_EQ(m, 255);
  EXPECT_EQ(s, 255);
}

TEST_F(GetTimeConf, Refusals) {
  ub1 h = 7, m = 7, s = 7;
  ub4 f = 7;
  QWZDateTime *d = new_datetime(68);
  for (auto &[label, hh] : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeGetTime(hh, err_, d, &h, &m, &s, &f), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, bad] : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeGetTime(env_, err_, bad, &h, &m, &s, &f), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, e] : bad_error_handles())
    EXPECT_EQ(QWZDateTimeGetTime(env_, e, d, &h, &m, &s, &f), QWZ_INVALID_HANDLE) << label;
  EXPECT_EQ(h, 7);
}

// ---------------------------------------------------------------------------

class GetTimeZoneOffsetConf : public Fixture {};

TEST_F(GetTimeZoneOffsetConf, NullOutputs) {
  QWZDateTime *d = new_datetime(65);  // NULL is checked before the type
  sb1 h = 7, m = 7;
  for (auto [ph, pm] : {std::pair<sb1 *, sb1 *>{nullptr, &m}, {&h, nullptr}, {nullptr, nullptr}}) {
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, ph, pm), QWZ_ERROR);
    expect_front(800084, "the hour or minute could not be null.");
  }
  EXPECT_EQ(h, 7);
  EXPECT_EQ(m, 7);
}

TEST_F(GetTimeZoneOffsetConf, ByType) {
  for (ub2 type : {65, 66, 68, 70}) {
    QWZDateTime *d = new_datetime(type);
    put(d, V{2024, 1, 1, 20, 30, 0, 0, 5, 30});
    sb1 h = 7, m = 7;
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &h, &m), QWZ_ERROR) << type;
    expect_front(800083, "datetime does not contain a time zone.");
    EXPECT_EQ(h, 7);
    EXPECT_EQ(m, 7);
  }
  for (ub2 type : {67, 69}) {
    QWZDateTime *d = new_datetime(type);
    ASSERT_EQ(put(d, V{2024, 1, 1, 20, 30, 0, 0, -12, -59}), QWZ_SUCCESS);
    sb1 h = 7, m = 7;
    ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &h, &m), QWZ_SUCCESS) << type;
    expect_clear();
    EXPECT_EQ(h, -12);
    EXPECT_EQ(m, -59);
    // An out-of-range zone is reported as it is.
    put(d, V{2024, 1, 1, 23, 59, 0, 0, 24, 60});
    ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &h, &m), QWZ_SUCCESS);
    EXPECT_EQ(h, 24);
    EXPECT_EQ(m, 60);
  }
}

TEST_F(GetTimeZoneOffsetConf, Refusals) {
  sb1 h = 7, m = 7;
  QWZDateTime *d = new_datetime(69);
  for (auto &[label, hh] : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(hh, err_, d, &h, &m), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, bad] : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, bad, &h, &m), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, e] : bad_error_handles())
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, e, d, &h, &m), QWZ_INVALID_HANDLE) << label;
  EXPECT_EQ(h, 7);
}

// ---------------------------------------------------------------------------

class GetTimeZoneNameConf : public Fixture {
 protected:
  QWZDateTime *zoned(ub2 type, int h, int m) {
    QWZDateTime *d = new_datetime(type);
    // Hour and minute chosen so that the UTC bytes stay within 0..255.
    put(d, V{2024, 1, 1, h > 0 ? 23 : 0, m > 0 ? 59 : 0, 0, 0, h, m});
    return d;
  }
};

TEST_F(GetTimeZoneNameConf, Texts) {
  struct Case {
    int h, m;
    const char *text;
  } cases[] = {
      {-3, -30, "-03:30"}, {5, 30, "+05:30"},  {0, 0, "+00:00"},  {0, -30, "+00:30"},
      {14, 0, "+14:00"},   {-12, -59, "-12:59"}, {-1, 0, "-01:00"}, {1, -15, "+01:15"},
      {-5, 30, "-05:30"},  {10, 5, "+10:05"},
  };
  for (ub2 type : {67, 69}) {
    for (const Case &c : cases) {
      QWZDateTime *d = zoned(type, c.h, c.m);
      ub1 buf[16];
      std::memset(buf, 0xAA, sizeof buf);
      ub4 len = 7;
      ASSERT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, &len), QWZ_SUCCESS) << c.text;
      expect_clear();
      EXPECT_EQ(len, 6u);
      EXPECT_EQ(std::string(reinterpret_cast<char *>(buf)), c.text);
      EXPECT_EQ(buf[6], 0);
      EXPECT_EQ(buf[7], 0xAA);  // nothing past the NUL
    }
  }
}

TEST_F(GetTimeZoneNameConf, BufferChecks) {
  QWZDateTime *d = zoned(69, 5, 30);
  ub1 buf[16] = {};
  ub4 len = 16;
  EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, nullptr, &len), QWZ_ERROR);
  expect_front(800027, "The buffer is null.");
  EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, nullptr), QWZ_ERROR);
  expect_front(800027, "The buffer is null.");
  for (ub4 small : {0u, 1u, 6u}) {
    len = small;
    std::memset(buf, 0xAA, sizeof buf);
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, &len), QWZ_ERROR) << small;
    expect_front(800027, "The buffer is null.");
    EXPECT_EQ(len, small);
    EXPECT_EQ(buf[0], 0xAA);
  }
  len = 4096;
  ASSERT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, &len), QWZ_SUCCESS);
  EXPECT_EQ(len, 6u);
}

// The buffer length is checked before the type.
TEST_F(GetTimeZoneNameConf, NoZone) {
  for (ub2 type : {65, 66, 68, 70}) {
    QWZDateTime *d = zoned(type, 5, 30);
    ub1 buf[16];
    std::memset(buf, 0xAA, sizeof buf);
    ub4 len = 6;
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, &len), QWZ_ERROR) << type;
    expect_front(800027, "The buffer is null.");
    len = 7;
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, &len), QWZ_ERROR) << type;
    expect_front(800083, "datetime does not contain a time zone.");
    EXPECT_EQ(len, 7u);
    EXPECT_EQ(buf[0], 0xAA);
  }
}

// Offsets outside the valid range (left by a failed array read) print
// with the same conversion.
TEST_F(GetTimeZoneNameConf, OutOfRangeOffsets) {
  QWZDateTime *d = new_datetime(67);
  ub1 b[9] = {1, 1, 1, 0, 0, 0, 0, 147, 60};  // zone hour 127, minute 0
  ASSERT_EQ(QWZDateTimeFromArray(env_, err_, b, nullptr, kClassTimeTz, d, reftz(), 9), QWZ_ERROR);
  ub1 buf[32] = {};
  ub4 len = sizeof buf;
  ASSERT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, &len), QWZ_SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(buf)), "+127:00");
  EXPECT_EQ(len, 7u);
  ub1 c[9] = {30, 1, 1, 0, 0, 0, 0, 0, 255};  // zone -20, 195 (-61 as a signed byte)
  ASSERT_EQ(QWZDateTimeFromArray(env_, err_, c, nullptr, kClassTimeTz, d, reftz(), 9), QWZ_ERROR);
  len = sizeof buf;
  ASSERT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, &len), QWZ_SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(buf)), "-20:61");
  EXPECT_EQ(len, 6u);
}

TEST_F(GetTimeZoneNameConf, Refusals) {
  ub1 buf[16] = {};
  ub4 len = 16;
  QWZDateTime *d = zoned(69, 1, 0);
  for (auto &[label, h] : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(h, err_, d, buf, &len), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, bad] : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, bad, buf, &len), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, e] : bad_error_handles())
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, e, d, buf, &len), QWZ_INVALID_HANDLE) << label;
  EXPECT_EQ(len, 16u);
  EXPECT_EQ(buf[0], 0);
}

// ---------------------------------------------------------------------------

class SysTimeStampConf : public Fixture {};

// The current local wall-clock time, the fraction in units of ten
// microseconds, the zone's standard offset, and type 69 whatever it was.
TEST_F(SysTimeStampConf, FillsFromTheClock) {
  struct Case {
    const char *zone;
    sb1 h, m;
  } cases[] = {{kUtc, 0, 0}, {kCet, 1, 0}, {kEst, -5, 0}, {"<-0330>3:30", -3, -30}};
  for (const Case &c : cases) {
    ZoneGuard z(c.zone);
    for (ub2 type : {65, 66, 67, 68, 69, 70}) {
      QWZDateTime *d = new_datetime(type);
      const time_t t0 = time(nullptr);
      ASSERT_EQ(QWZDateTimeSysTimeStamp(env_, err_, d), QWZ_SUCCESS) << type;
      const time_t t1 = time(nullptr);
      expect_clear();
      const Seen s = see(d);
      // Now a timestamp with zone: every getter answers.
      ASSERT_EQ(s.date_rc, QWZ_SUCCESS);
      ASSERT_EQ(s.time_rc, QWZ_SUCCESS);
      ASSERT_EQ(s.tz_rc, QWZ_SUCCESS);
      EXPECT_EQ(s.tz_hour, c.h) << c.zone;
      EXPECT_EQ(s.tz_minute, c.m) << c.zone;
      EXPECT_LT(s.fraction, 100000u);
      bool matched = false;
      for (time_t t = t0; t <= t1; ++t) {
        struct tm tm;
        localtime_r(&t, &tm);
        matched = matched || (s.year == tm.tm_year + 1900 && s.month == tm.tm_mon + 1 &&
                              s.day == tm.tm_mday && s.hour == tm.tm_hour &&
                              s.minute == tm.tm_min && s.second == tm.tm_sec);
      }
      EXPECT_TRUE(matched) << c.zone << " " << s.year << "-" << int(s.month) << "-" << int(s.day)
                           << " " << int(s.hour) << ":" << int(s.minute) << ":" << int(s.second);
      ub4 flags = 1;
      ASSERT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), QWZ_SUCCESS);
      EXPECT_EQ(flags, 0u);
    }
  }
}

TEST_F(SysTimeStampConf, Refusals) {
  QWZDateTime *d = new_datetime(65);
  for (auto &[label, h] : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeSysTimeStamp(h, err_, d), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, bad] : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeSysTimeStamp(env_, err_, bad), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, e] : bad_error_handles())
    EXPECT_EQ(QWZDateTimeSysTimeStamp(env_, e, d), QWZ_INVALID_HANDLE) << label;
  // Still a date: the type was not changed by the refused calls.
  ub1 h, m, s;
  ub4 f;
  EXPECT_EQ(QWZDateTimeGetTime(env_, err_, d, &h, &m, &s, &f), QWZ_ERROR);
  expect_front(800060, "specified field not found in datetime or interval.");
}

TEST_F(SysTimeStampConf, Trace) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = new_datetime(68);
  const std::string text = rec("QWZDateTimeSysTimeStamp", {{"void*", hex12(session_)},
                                                           {"QWZError*", hex12(err_)},
                                                           {"QWZDateTime*", hex12(d)}});
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeSysTimeStamp(session_, err_, d), QWZ_SUCCESS);
    ASSERT_EQ(shape(tc.records()), (Shape{{175, 1}, {175, 0}}));
    EXPECT_EQ(tc.records()[0].text, text);
    EXPECT_EQ(tc.records()[1].text, text);
  }
  {
    // Entry result: the type is not changed.
    QWZDateTime *date = new_datetime(65);
    TraceCapture tc;
    tc.set_results(7, 0);
    EXPECT_EQ(QWZDateTimeSysTimeStamp(env_, err_, date), 7);
    qwz_trace_flag = 0;
    sb1 h, m;
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, date, &h, &m), QWZ_ERROR);
  }
}

// ---------------------------------------------------------------------------
// Trace records of the getters: NULL output pointers are shown as "(null)",
// i.e. as the address of that literal rather than as zero.

class GetterTraceConf : public Fixture {};

TEST_F(GetterTraceConf, GetDate) {
  QWZDateTime *d = new_datetime(65);
  put(d, V{2024, 1, 1}, kClassDate);
  sb2 y;
  ub1 m, dd;
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeGetDate(env_, err_, d, &y, &m, &dd), QWZ_SUCCESS);
    const std::string text =
        rec("QWZDateTimeGetDate", {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                                   {"const QWZDateTime*", hex12(d)}, {"sb2*", hex12(&y)},
                                   {"ub1*", hex12(&m)}, {"ub1*", hex12(&dd)}});
    ASSERT_EQ(shape(tc.records()), (Shape{{143, 1}, {143, 0}}));
    EXPECT_EQ(tc.records()[0].text, text);
    EXPECT_EQ(tc.records()[1].text, text);
  }
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeGetDate(env_, err_, d, nullptr, &m, nullptr), QWZ_ERROR);
    ASSERT_EQ(shape(tc.records()), (Shape{{143, 1}}));
    const std::string &t = tc.records()[0].text;
    // "(null)" stands in: a non-zero address, the same for both.
    const std::string prefix = "<QWZDateTimeGetDate>\n\tvoid*     \t" + hex12(env_) +
                               "\n\tQWZError*     \t" + hex12(err_) +
                               "\n\tconst QWZDateTime*     \t" + hex12(d) + "\n\tsb2*     \t";
    ASSERT_EQ(t.rfind(prefix, 0), 0u) << t;
    const std::string ynull = t.substr(prefix.size(), 14);
    EXPECT_NE(ynull, hex12(nullptr));
    EXPECT_EQ(t.substr(prefix.size()), ynull + "\n\tub1*     \t" + hex12(&m) + "\n\tub1*     \t" + ynull);
  }
}

TEST_F(GetterTraceConf, GetTime) {
  QWZDateTime *d = new_datetime(68);
  put(d, V{2024, 1, 1, 1, 2, 3});
  ub1 h, m, s;
  ub4 f;
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeGetTime(env_, err_, d, &h, &m, &s, &f), QWZ_SUCCESS);
    const std::string text = rec(
        "QWZDateTimeGetTime", {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                               {"QWZDateTime*", hex12(d)}, {"ub1*", hex12(&h)}, {"ub1*", hex12(&m)},
                               {"ub1*", hex12(&s)}, {"ub4*", hex12(&f)}});
    ASSERT_EQ(shape(tc.records()), (Shape{{144, 1}, {144, 0}}));
    EXPECT_EQ(tc.records()[0].text, text);
    EXPECT_EQ(tc.records()[1].text, text);
  }
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeGetTime(env_, err_, d, &h, &m, &s, nullptr), QWZ_ERROR);
    ASSERT_EQ(shape(tc.records()), (Shape{{144, 1}}));
    const std::string &t = tc.records()[0].text;
    const std::string tail = t.substr(t.rfind('\t') + 1);
    EXPECT_NE(tail, hex12(nullptr));
    EXPECT_EQ(tail.size(), 14u);
  }
}

TEST_F(GetterTraceConf, GetTimeZoneOffsetAndName) {
  QWZDateTime *d = new_datetime(69);
  put(d, V{2024, 1, 1, 12, 0, 0, 0, 1, 0});
  sb1 h, m;
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(session_, err_, d, &h, &m), QWZ_SUCCESS);
    const std::string text = rec("QWZDateTimeGetTimeZoneOffset",
                                 {{"void*", hex12(session_)}, {"QWZError*", hex12(err_)},
                                  {"const QWZDateTime*", hex12(d)}, {"sb1*", hex12(&h)},
                                  {"sb1*", hex12(&m)}});
    ASSERT_EQ(shape(tc.records()), (Shape{{145, 1}, {145, 0}}));
    EXPECT_EQ(tc.records()[0].text, text);
    EXPECT_EQ(tc.records()[1].text, text);
  }
  ub1 buf[8];
  ub4 len = sizeof buf;
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, &len), QWZ_SUCCESS);
    const std::string text = rec("QWZDateTimeGetTimeZoneName",
                                 {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                                  {"QWZDateTime*", hex12(d)}, {"ub1*", hex12(buf)},
                                  {"ub4*", hex12(&len)}});
    ASSERT_EQ(shape(tc.records()), (Shape{{176, 1}, {176, 0}}));
    EXPECT_EQ(tc.records()[0].text, text);
    EXPECT_EQ(tc.records()[1].text, text);
  }
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, nullptr, nullptr), QWZ_ERROR);
    ASSERT_EQ(shape(tc.records()), (Shape{{176, 1}}));
    const std::string &t = tc.records()[0].text;
    EXPECT_EQ(t.find(hex12(nullptr)), std::string::npos) << t;
  }
}

}  // namespace
