// QWZDateTimeFromArray and QWZDateTimeToArray, black box: the five packed
// layouts, the fraction rounding, refusals in order, and trace records.
#include "datetime_conf_util.h"

#include <cmath>
#include <cstring>
#include <random>

using namespace conf;

namespace {

using qwz_test::TraceCapture;

constexpr ub1 kClasses[] = {kClassDate, kClassTime, kClassTimeTz, kClassTimestamp, kClassTimestampTz};

ub4 class_length(ub1 klass) {
  switch (klass) {
    case kClassDate: return 4;
    case kClassTime: return 7;
    case kClassTimeTz: return 9;
    case kClassTimestamp: return 11;
    case kClassTimestampTz: return 13;
    default: return 0;
  }
}

// The descriptor type that carries exactly the fields of a class.
ub2 type_of_class(ub1 klass) { return static_cast<ub2>(klass - kClassDate + DATETIME_KIND_DATE); }

bool class_has_date(ub1 k) { return k == kClassDate || k == kClassTimestamp || k == kClassTimestampTz; }
bool class_has_time(ub1 k) { return k != kClassDate; }
bool class_has_zone(ub1 k) { return k == kClassTimeTz || k == kClassTimestampTz; }

// The stored fraction for `ns` nanoseconds kept to `p` digits:
// 10^(9-p) * round(10^p * ns * 1e-9), truncated.
ub4 rounded(ub4 ns, int p) {
  const double scaled = std::round(std::pow(10.0, p) * static_cast<double>(ns) * 1e-9);
  return static_cast<ub4>(std::pow(10.0, 9 - p) * scaled);
}

int month_length(int y, int m) {
  static const int days[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (m != 2) return days[m];
  return (y % 4 == 0 && (y % 100 != 0 || y % 400 == 0)) ? 29 : 28;
}

class FromArrayConf : public Fixture {
 protected:
  sword from(std::vector<ub1> b, ub1 klass, QWZDateTime *d, ub1 fsprec = 9) {
    b.resize(16, 0);  // the reader never needs more than 13
    ub4 len = 0;
    return QWZDateTimeFromArray(env_, err_, b.data(), &len, klass, d, reftz(), fsprec);
  }
};

TEST_F(FromArrayConf, NamedEdges) {
  QWZDateTime *d = new_datetime(65);
  ASSERT_EQ(from({120, 124, 2, 29}, kClassDate, d), QWZ_SUCCESS);
  expect_clear();
  Seen s = see(d);
  EXPECT_EQ(s.year, 2024);
  EXPECT_EQ(s.month, 2);
  EXPECT_EQ(s.day, 29);
  // 2023 has no 29 February; the decoded value stays.
  EXPECT_EQ(from({120, 123, 2, 29}, kClassDate, d), QWZ_ERROR);
  expect_date_format_invalid();
  s = see(d);
  EXPECT_EQ(s.year, 2023);
  EXPECT_EQ(s.day, 29);

  QWZDateTime *z = new_datetime(69);
  ASSERT_EQ(from({120, 124, 5, 17, 11, 1, 1, 0, 0, 0, 0, 22, 60}, kClassTimestampTz, z), QWZ_SUCCESS);
  s = see(z);
  EXPECT_EQ(s.hour, 12);
  EXPECT_EQ(s.minute, 0);
  EXPECT_EQ(s.second, 0);
  EXPECT_EQ(s.tz_hour, 2);
  EXPECT_EQ(s.tz_minute, 0);

  // -4712 is the bytes 53 and 88.
  ASSERT_EQ(from({53, 88, 1, 1}, kClassDate, d), QWZ_SUCCESS);
  EXPECT_EQ(see(d).year, -4712);
}

TEST_F(FromArrayConf, FractionRounding) {
  struct Case {
    ub4 ns;
    ub1 fsprec;
    ub4 want;
  } cases[] = {
      {123456789, 3, 123000000}, {123456789, 9, 123456789}, {123456789, 6, 123457000},
      {600000000, 0, 1000000000}, {499999999, 0, 0},         {500000000, 0, 1000000000},
      {150000000, 1, 200000000}, {250000000, 1, 300000000}, {999999999, 8, 1000000000},
      {0, 0, 0},                 {1, 9, 1},                 {999999999, 9, 999999999},
      {4294967295u, 9, 4294967295u},
  };
  for (const Case &c : cases) {
    QWZDateTime *d = new_datetime(68);
    std::vector<ub1> b = {120, 124, 1, 1, 1, 1, 1, static_cast<ub1>(c.ns >> 24),
                          static_cast<ub1>(c.ns >> 16), static_cast<ub1>(c.ns >> 8),
                          static_cast<ub1>(c.ns)};
    ASSERT_EQ(from(b, kClassTimestamp, d, c.fsprec), QWZ_SUCCESS);
    EXPECT_EQ(see(d).fraction, c.want) << c.ns << " p" << int(c.fsprec);
    EXPECT_EQ(rounded(c.ns, c.fsprec), c.want);
  }
}

// Generated fractions against the rounding rule, every precision 0..9, for
// each class that carries a fraction.
TEST_F(FromArrayConf, FractionRuleGenerated) {
  std::mt19937 rng(20240517);
  std::uniform_int_distribution<ub4> any_ns(0, 999999999);
  QWZDateTime *d = new_datetime(68);
  for (int i = 0; i < 300; ++i) {
    const ub4 ns = any_ns(rng);
    for (ub1 klass : {kClassTime, kClassTimeTz, kClassTimestamp, kClassTimestampTz}) {
      const ub1 p = static_cast<ub1>(i % 10);
      V v{2024, 5, 17, 12, 30, 15, ns, 0, 0};
      from(encode(klass, v), klass, d, p);
      ub1 h, m, s;
      ub4 f = 0;
      ASSERT_EQ(QWZDateTimeGetTime(env_, err_, d, &h, &m, &s, &f), QWZ_SUCCESS);
      EXPECT_EQ(f, rounded(ns, p)) << ns << " p" << int(p) << " class " << int(klass);
    }
  }
}

// Values built by the test in each layout read back to the same fields.
TEST_F(FromArrayConf, RoundTrips) {
  std::mt19937 rng(4712);
  auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  std::vector<V> values;
  // Extremes first.
  values.push_back(V{-4712, 1, 1, 0, 0, 0, 0, 0, 0});
  values.push_back(V{9999, 12, 31, 23, 59, 59, 999999999, 0, 0});
  values.push_back(V{-4712, 1, 1, 23, 59, 59, 0, -12, 0});
  values.push_back(V{9999, 12, 31, 23, 59, 59, 999999999, 14, 0});
  values.push_back(V{-1, 12, 31, 13, 0, 0, 1, 14, 0});
  values.push_back(V{1, 1, 1, 0, 0, 0, 0, -12, -59});
  values.push_back(V{-4, 2, 29, 22, 58, 0, 0, -12, 0});
  while (values.size() < 3000) {
    V v;
    do {
      v.year = pick(-4712, 9999);
    } while (v.year == 0);
    v.month = pick(1, 12);
    v.day = pick(1, month_length(v.year, v.month));
    v.hour = pick(0, 23);
    v.minute = pick(0, 59);
    v.second = pick(0, 59);
    v.fraction = static_cast<unsigned>(pick(0, 999999999));
    v.tz_hour = pick(-12, 14);
    v.tz_minute = pick(-59, 59);
    // Only values whose UTC hour and minute fit a byte can be laid out.
    if (!representable(kClassTimestampTz, v)) continue;
    values.push_back(v);
  }
  QWZDateTime *ds[5];
  for (int i = 0; i < 5; ++i) ds[i] = new_datetime(type_of_class(kClasses[i]));
  QWZDateTime *frac = new_datetime(68);  // fractions of the time classes
  for (const V &v : values) {
    for (int i = 0; i < 5; ++i) {
      const ub1 klass = kClasses[i];
      QWZDateTime *d = ds[i];
      ASSERT_EQ(from(encode(klass, v), klass, d), QWZ_SUCCESS) << int(klass) << " " << v.year;
      const Seen s = see(d);
      if (class_has_date(klass)) {
        EXPECT_EQ(s.year, v.year);
        EXPECT_EQ(s.month, v.month);
        EXPECT_EQ(s.day, v.day);
      } else {
        EXPECT_EQ(s.year, 0);
      }
      if (class_has_time(klass)) {
        EXPECT_EQ(s.hour, v.hour) << int(klass);
        EXPECT_EQ(s.minute, v.minute) << int(klass);
        EXPECT_EQ(s.second, v.second);
        if (klass == kClassTimestamp || klass == kClassTimestampTz) {
          EXPECT_EQ(s.fraction, v.fraction);
        }
      }
      if (class_has_zone(klass)) {
        EXPECT_EQ(s.tz_hour, v.tz_hour);
        EXPECT_EQ(s.tz_minute, v.tz_minute);
      }
      if (klass == kClassTime || klass == kClassTimeTz) {
        from(encode(klass, v), klass, frac);
        ub1 h, m, sec;
        ub4 f = 0;
        ASSERT_EQ(QWZDateTimeGetTime(env_, err_, frac, &h, &m, &sec, &f), QWZ_SUCCESS);
        EXPECT_EQ(f, v.fraction);
      }
      // The eight bytes written back: the first seven of the timestamp layout.
      if (klass == kClassTimestamp) {
        const std::vector<ub1> b = encode(klass, v);
        EXPECT_EQ(std::vector<ub1>(s.bytes.begin(), s.bytes.begin() + 7),
                  std::vector<ub1>(b.begin(), b.begin() + 7));
        EXPECT_EQ(s.bytes[7], 0);
        EXPECT_EQ(s.bytes_len, 7u);
      }
    }
  }
}

// Every field of the descriptor is zeroed before the layout is read, and the
// descriptor's type is not changed by the class.
TEST_F(FromArrayConf, FieldsZeroedTypeKept) {
  QWZDateTime *d = new_datetime(68);
  ASSERT_EQ(from(encode(kClassTimestamp, V{2024, 5, 17, 10, 20, 30, 5}), kClassTimestamp, d), QWZ_SUCCESS);
  // A time layout into a timestamp: no date any more, so the check fails.
  EXPECT_EQ(from(encode(kClassTime, V{0, 0, 0, 1, 2, 3, 4}), kClassTime, d), QWZ_ERROR);
  expect_date_format_invalid();
  sb2 y;
  ub1 m, dd;
  EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, &y, &m, &dd), QWZ_ERROR);
  expect_front(800057, "not a date.");
  // A date layout into a zoned timestamp: time, fraction and zone are 0.
  QWZDateTime *z = new_datetime(69);
  ASSERT_EQ(from(encode(kClassTimestampTz, V{2024, 5, 17, 20, 20, 30, 5, 3, 15}), kClassTimestampTz, z),
            QWZ_SUCCESS);
  ASSERT_EQ(from({120, 124, 5, 17}, kClassDate, z), QWZ_SUCCESS);
  const Seen s = see(z);
  EXPECT_EQ(s.hour, 0);
  EXPECT_EQ(s.minute, 0);
  EXPECT_EQ(s.second, 0);
  EXPECT_EQ(s.fraction, 0u);
  EXPECT_EQ(s.tz_hour, 0);
  EXPECT_EQ(s.tz_minute, 0);
  // A zoned timestamp layout into a date descriptor: still a date (the
  // check examines its date only, GetTime refuses it).
  QWZDateTime *date = new_datetime(65);
  ASSERT_EQ(from(encode(kClassTimestampTz, V{2024, 5, 17, 23, 59, 59, 1, 14, 59}), kClassTimestampTz,
                 date),
            QWZ_SUCCESS);
  ub1 h, mi, sec;
  ub4 f;
  EXPECT_EQ(QWZDateTimeGetTime(env_, err_, date, &h, &mi, &sec, &f), QWZ_ERROR);
  expect_front(800060, "specified field not found in datetime or interval.");
  sb1 th, tm;
  EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, date, &th, &tm), QWZ_ERROR);
  expect_front(800083, "datetime does not contain a time zone.");
  // A time layout into a date descriptor leaves month 0: invalid.
  EXPECT_EQ(from(encode(kClassTime, V{0, 0, 0, 1, 2, 3}), kClassTime, date), QWZ_ERROR);
  expect_date_format_invalid();
}

// In the zoned layouts the zone moves hour and minute with no carry; what
// falls outside the clock is caught by the check and stays in the value.
TEST_F(FromArrayConf, ZoneMovesWithoutCarry) {
  QWZDateTime *d = new_datetime(69);
  // 23:59 UTC at +02:30 gives 25:89.
  EXPECT_EQ(from({120, 124, 5, 17, 24, 60, 1, 0, 0, 0, 0, 22, 90}, kClassTimestampTz, d), QWZ_ERROR);
  expect_date_format_invalid();
  ub4 flags = check(d);
  EXPECT_EQ(flags, DATE_INVALID_HOUR | DATE_INVALID_MINUTE);
  Seen s = see(d);
  EXPECT_EQ(s.hour, 25);
  EXPECT_EQ(s.minute, 89);
  EXPECT_EQ(s.day, 17);
  // 00:00 UTC at -05:00 gives hour -5 in a 16-bit field (65531, low byte
  // 251); the day does not move.
  EXPECT_EQ(from({120, 124, 5, 17, 1, 1, 1, 0, 0, 0, 0, 15, 60}, kClassTimestampTz, d), QWZ_ERROR);
  s = see(d);
  EXPECT_EQ(s.hour, 251);
  EXPECT_EQ(s.day, 17);
  EXPECT_EQ(s.tz_hour, -5);
  // Zone bytes 0 and 255: -20 and 195 (-61 as a signed byte).
  QWZDateTime *t = new_datetime(67);
  EXPECT_EQ(from({30, 70, 1, 0, 0, 0, 0, 0, 255}, kClassTimeTz, t), QWZ_ERROR);
  EXPECT_EQ(check(t), kTzHourFlag | kTzMinuteFlag);
  s = see(t);
  EXPECT_EQ(s.tz_hour, -20);
  EXPECT_EQ(s.tz_minute, -61);
  EXPECT_EQ(s.hour, 9);    // 30 - 20 - 1
  EXPECT_EQ(s.minute, 8);  // 70 - 61 - 1
}

TEST_F(FromArrayConf, InvalidClasses) {
  QWZDateTime *d = new_datetime(68);
  ASSERT_EQ(from(encode(kClassTimestamp, V{2024, 5, 17, 10, 20, 30, 5}), kClassTimestamp, d), QWZ_SUCCESS);
  const auto before = bytes_of(d);
  for (int klass = 0; klass < 256; ++klass) {
    if (klass >= kClassDate && klass <= kClassTimestampTz) continue;
    std::vector<ub1> b(16, 1);
    ub4 len = 16;
    EXPECT_EQ(QWZDateTimeFromArray(env_, err_, b.data(), &len, static_cast<ub1>(klass), d, reftz(), 9),
              QWZ_ERROR)
        << klass;
    expect_front(800156, "the datetime class is invalid.");
    EXPECT_EQ(len, 16u);
  }
  // The value was not touched.
  EXPECT_EQ(bytes_of(d), before);
}

// Every byte value in every position of every layout, for every descriptor
// type: status 0 exactly when the decoded value passes the check, -1 with
// the invalid-value diagnostic otherwise; never a crash.
TEST_F(FromArrayConf, EveryByteEveryPosition) {
  for (ub2 type : {65, 66, 67, 68, 69, 70}) {
    QWZDateTime *d = new_datetime(type);
    for (ub1 klass : kClasses) {
      const std::vector<ub1> good = encode(klass, V{2024, 5, 17, 12, 30, 30, 5, 0, 0});
      for (ub4 pos = 0; pos < class_length(klass); ++pos) {
        for (int byte = 0; byte < 256; ++byte) {
          std::vector<ub1> b = good;
          b[pos] = static_cast<ub1>(byte);
          const sword rc = from(b, klass, d, static_cast<ub1>(byte % 12));
          ub4 flags = 0xFFFFFFFF;
          if (rc == QWZ_SUCCESS) {
            ASSERT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), QWZ_SUCCESS);
            ASSERT_EQ(flags, 0u) << type << " " << int(klass) << " " << pos << " " << byte;
          } else {
            ASSERT_EQ(rc, QWZ_ERROR);
            expect_date_format_invalid();
            ASSERT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), QWZ_SUCCESS);
            ASSERT_NE(flags, 0u);
          }
        }
      }
    }
  }
}

TEST_F(FromArrayConf, Refusals) {
  QWZDateTime *d = new_datetime(65);
  ASSERT_EQ(from({120, 124, 1, 1}, kClassDate, d), QWZ_SUCCESS);
  const auto before = bytes_of(d);
  ub1 b[16] = {120, 124, 2, 29};
  ub4 len = 0;
  for (auto &[label, h] : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeFromArray(h, err_, b, &len, kClassDate, d, reftz(), 9), QWZ_INVALID_HANDLE)
        << label;
    expect_invalid_handle();
  }
  // A bad descriptor: the NULL-parameter message for parameter 3.
  for (auto &[label, bad] : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeFromArray(env_, err_, b, &len, kClassDate, bad, reftz(), 9),
              QWZ_INVALID_HANDLE)
        << label;
    expect_null_param(3);
  }
  // reftz must be a live interval descriptor of either kind, even for a
  // class without zone.
  QWZDateTime *not_interval = new_datetime(68);
  for (QWZInterval *bad : {static_cast<QWZInterval *>(nullptr),
                           reinterpret_cast<QWZInterval *>(not_interval),
                           reinterpret_cast<QWZInterval *>(err_)}) {
    EXPECT_EQ(QWZDateTimeFromArray(env_, err_, b, &len, kClassDate, d, bad, 9), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
  }
  EXPECT_EQ(bytes_of(d), before);
  QWZInterval *ym = new_interval(INTERVAL_KIND_YM);
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, b, nullptr, kClassDate, d, ym, 9), QWZ_SUCCESS);
  EXPECT_EQ(see(d).day, 29);
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, &len, kClassDate, d, ym, 9), QWZ_ERROR);
  expect_null_param(4);
  for (auto &[label, e] : bad_error_handles())
    EXPECT_EQ(QWZDateTimeFromArray(env_, e, b, &len, kClassDate, d, ym, 9), QWZ_INVALID_HANDLE) << label;
  EXPECT_EQ(see(d).day, 29);
}

// Two faults at once: the first in the order context, descriptor, reftz,
// inarray, class wins.
TEST_F(FromArrayConf, CheckOrder) {
  QWZDateTime *d = new_datetime(65);
  ub1 b[16] = {};
  EXPECT_EQ(QWZDateTimeFromArray(nullptr, err_, nullptr, nullptr, 0, nullptr, nullptr, 9),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, nullptr, 0, nullptr, nullptr, 9),
            QWZ_INVALID_HANDLE);
  expect_null_param(3);
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, nullptr, 0, d, nullptr, 9), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, nullptr, 0, d, reftz(), 9), QWZ_ERROR);
  expect_null_param(4);
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, b, nullptr, 0, d, reftz(), 9), QWZ_ERROR);
  expect_front(800156, "the datetime class is invalid.");
}

std::string from_record(void *h, QWZError *e, const void *in, const std::string &len, ub1 type,
                        const void *d, const void *reftz, ub1 fsprec) {
  return rec("QWZDateTimeFromArray",
             {{"void*", hex12(h)}, {"QWZError*", hex12(e)}, {"ub1*", hex12(in)}, {"ub4*", len},
              {"ub1", std::to_string(type)}, {"QWZDateTime*", hex12(d)},
              {"QWZInterval*", hex12(reftz)}, {"ub1", std::to_string(fsprec)}});
}

TEST_F(FromArrayConf, Trace) {
  QWZDateTime *d = new_datetime(65);
  QWZInterval *r = reftz();
  ub1 b[16] = {120, 124, 2, 29};
  ub4 len = 4;
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeFromArray(session_, err_, b, &len, kClassDate, d, r, 3), QWZ_SUCCESS);
    auto &t = tc.records();
    ASSERT_EQ(shape(t), (Shape{{180, 1}, {147, 1}, {147, 0}, {180, 0}}));
    const std::string text = from_record(session_, err_, b, hex12(&len), kClassDate, d, r, 3);
    EXPECT_EQ(t[0].text, text);
    EXPECT_EQ(t[3].text, text);
    EXPECT_EQ(t[3].status, 0);
    EXPECT_EQ(t[1].text.rfind("<QWZDateTimeCheck>\n\tvoid*     \t" + hex12(session_), 0), 0u);
  }
  {
    // NULL len is shown as "(null)": a non-zero address.
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeFromArray(env_, err_, b, nullptr, kClassDate, d, r, 0), QWZ_SUCCESS);
    const std::string &t = tc.records()[0].text;
    EXPECT_EQ(t.find(hex12(nullptr)), std::string::npos) << t;
  }
  {
    // NULL inarray: shown as "(null)", refused, no exit record.
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, &len, kClassDate, d, r, 0), QWZ_ERROR);
    ASSERT_EQ(shape(tc.records()), (Shape{{180, 1}}));
    EXPECT_EQ(tc.records()[0].text.find(hex12(nullptr)), std::string::npos);
  }
  {
    // Invalid decoded value: the check's pair, no exit record.
    ub1 bad[16] = {120, 123, 2, 29};
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeFromArray(env_, err_, bad, &len, kClassDate, d, r, 0), QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{180, 1}, {147, 1}, {147, 0}}));
  }
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeFromArray(env_, err_, b, &len, 189, d, r, 0), QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{180, 1}}));
  }
}

// The check's status is what the call returns, through its exit record.
TEST_F(FromArrayConf, NestedCheckStatusIsReturned) {
  QWZDateTime *d = new_datetime(65);
  ub1 b[16] = {120, 124, 2, 29};
  PickyTrace pt(147, 1, 7);
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, b, nullptr, kClassDate, d, reftz(), 0), 7);
  EXPECT_EQ(pt.got(), (Shape{{180, 1}, {147, 1}, {180, 0}}));
  EXPECT_EQ(pt.records().back().status, 7);
}

// ---------------------------------------------------------------------------

class ToArrayConf : public Fixture {};

TEST_F(ToArrayConf, Layout) {
  struct Case {
    ub2 type;
    V v;
    ub1 klass;
    std::array<ub1, 8> want;
    ub4 len;
  } cases[] = {
      {68, V{2024, 2, 29, 10, 20, 30, 123}, kClassTimestamp, {120, 124, 2, 29, 11, 21, 31, 0}, 7},
      {65, V{2024, 2, 29}, kClassDate, {120, 124, 2, 29, 1, 1, 1, 0}, 7},
      {66, V{0, 0, 0, 10, 20, 30}, kClassTime, {100, 100, 0, 0, 11, 21, 31, 0}, 2},
      {67, V{0, 0, 0, 10, 20, 30, 0, -5, -30}, kClassTimeTz, {100, 100, 0, 0, 11, 21, 31, 0}, 2},
      {68, V{-4712, 1, 1, 23, 59, 59}, kClassTimestamp, {53, 88, 1, 1, 24, 60, 60, 0}, 7},
      {69, V{9999, 12, 31, 23, 59, 59, 5, -12, -59}, kClassTimestampTz, {199, 199, 12, 31, 24, 60, 60, 0}, 7},
      {68, V{-1, 1, 1}, kClassTimestamp, {100, 99, 1, 1, 1, 1, 1, 0}, 7},
      {68, V{-10000, 1, 1}, kClassTimestamp, {0, 100, 1, 1, 1, 1, 1, 0}, 0},
      {65, V{2024, 0, 1}, kClassDate, {120, 124, 0, 1, 1, 1, 1, 0}, 2},
  };
  for (const Case &c : cases) {
    QWZDateTime *d = new_datetime(c.type);
    put(d, c.v, c.klass);
    ub1 out[16];
    std::memset(out, 0xAA, sizeof out);
    ub4 len = 12345;
    ASSERT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, out, &len, 6), QWZ_SUCCESS) << c.v.year;
    expect_clear();
    EXPECT_EQ(std::vector<ub1>(out, out + 8), std::vector<ub1>(c.want.begin(), c.want.end()))
        << c.v.year;
    EXPECT_EQ(len, c.len) << c.v.year;
    for (int i = 8; i < 16; ++i) EXPECT_EQ(out[i], 0xAA);  // exactly eight bytes
  }
}

// Each value is cut to a byte: a 16-bit hour of 65535 plus one is 0 and ends
// the length early.
TEST_F(ToArrayConf, BytesAreTruncated) {
  QWZDateTime *d = new_datetime(68);
  ub1 b[16] = {120, 124, 1, 1, 0, 5, 5, 0, 0, 0, 0};
  ASSERT_EQ(QWZDateTimeFromArray(env_, err_, b, nullptr, kClassTimestamp, d, reftz(), 9), QWZ_ERROR);
  ub1 out[8];
  ub4 len = 0;
  ASSERT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, out, &len, 0), QWZ_SUCCESS);
  EXPECT_EQ(out[4], 0);
  EXPECT_EQ(out[5], 5);
  EXPECT_EQ(len, 4u);
  // A 16-bit hour of 381 plus one is 382, byte 126.
  QWZDateTime *z = new_datetime(69);
  ub1 c[16] = {120, 124, 1, 1, 255, 1, 1, 0, 0, 0, 0, 147, 60};
  ASSERT_EQ(QWZDateTimeFromArray(env_, err_, c, nullptr, kClassTimestampTz, z, reftz(), 9), QWZ_ERROR);
  ASSERT_EQ(QWZDateTimeToArray(env_, err_, z, nullptr, out, &len, 0), QWZ_SUCCESS);
  EXPECT_EQ(out[4], 382 & 0xFF);
}

// reftz is neither validated nor read; fsprec does not matter.
TEST_F(ToArrayConf, ReftzAndFsprecIgnored) {
  QWZDateTime *d = new_datetime(68);
  put(d, V{2024, 2, 29, 10, 20, 30, 999999999}, kClassTimestamp);
  unsigned char junk[64] = {};
  for (QWZInterval *r : {static_cast<QWZInterval *>(nullptr), reinterpret_cast<QWZInterval *>(junk),
                         reinterpret_cast<QWZInterval *>(d), new_interval(INTERVAL_KIND_YM)}) {
    for (ub1 p : {0, 9, 255}) {
      ub1 out[8] = {};
      ub4 len = 0;
      ASSERT_EQ(QWZDateTimeToArray(env_, err_, d, r, out, &len, p), QWZ_SUCCESS);
      EXPECT_EQ(std::vector<ub1>(out, out + 8), (std::vector<ub1>{120, 124, 2, 29, 11, 21, 31, 0}));
      EXPECT_EQ(len, 7u);
    }
  }
}

TEST_F(ToArrayConf, Refusals) {
  QWZDateTime *d = new_datetime(68);
  put(d, V{2024, 2, 29, 10, 20, 30}, kClassTimestamp);
  ub1 out[8];
  std::memset(out, 0xAA, sizeof out);
  ub4 len = 99;
  for (auto &[label, h] : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeToArray(h, err_, d, nullptr, out, &len, 0), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, bad] : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeToArray(env_, err_, bad, nullptr, out, &len, 0), QWZ_INVALID_HANDLE) << label;
    expect_null_param(3);
  }
  EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, nullptr, &len, 0), QWZ_ERROR);
  expect_null_param(5);
  EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, out, nullptr, 0), QWZ_ERROR);
  expect_null_param(9);
  EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, nullptr, nullptr, 0), QWZ_ERROR);
  expect_null_param(5);
  EXPECT_EQ(QWZDateTimeToArray(env_, err_, nullptr, nullptr, nullptr, nullptr, 0), QWZ_INVALID_HANDLE);
  expect_null_param(3);
  for (auto &[label, e] : bad_error_handles())
    EXPECT_EQ(QWZDateTimeToArray(env_, e, d, nullptr, out, &len, 0), QWZ_INVALID_HANDLE) << label;
  EXPECT_EQ(len, 99u);
  EXPECT_EQ(out[0], 0xAA);
}

TEST_F(ToArrayConf, Trace) {
  QWZDateTime *d = new_datetime(68);
  put(d, V{2024, 2, 29, 10, 20, 30}, kClassTimestamp);
  QWZInterval *r = new_interval(INTERVAL_KIND_DS);
  ub1 out[8];
  ub4 len = 0;
  auto record = [&](void *h, const std::string &o, const std::string &l, QWZInterval *ref, ub1 p) {
    return rec("QWZDateTimeToArray", {{"void*", hex12(h)}, {"QWZError*", hex12(err_)},
                                      {"QWZDateTime*", hex12(d)}, {"QWZInterval*", hex12(ref)},
                                      {"ub1*", o}, {"ub4*", l}, {"ub1", std::to_string(p)}});
  };
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeToArray(session_, err_, d, r, out, &len, 6), QWZ_SUCCESS);
    ASSERT_EQ(shape(tc.records()), (Shape{{178, 1}, {178, 0}}));
    const std::string text = record(session_, hex12(out), hex12(&len), r, 6);
    EXPECT_EQ(tc.records()[0].text, text);
    EXPECT_EQ(tc.records()[1].text, text);
  }
  {
    // NULL reftz is traced as it is; NULL outputs as "(null)".
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, nullptr, nullptr, 255), QWZ_ERROR);
    ASSERT_EQ(shape(tc.records()), (Shape{{178, 1}}));
    const std::string &t = tc.records()[0].text;
    const std::string prefix = "<QWZDateTimeToArray>\n\tvoid*     \t" + hex12(env_) +
                               "\n\tQWZError*     \t" + hex12(err_) + "\n\tQWZDateTime*     \t" +
                               hex12(d) + "\n\tQWZInterval*     \t" + hex12(nullptr) +
                               "\n\tub1*     \t";
    ASSERT_EQ(t.rfind(prefix, 0), 0u) << t;
    const std::string null_addr = t.substr(prefix.size(), 14);
    EXPECT_NE(null_addr, hex12(nullptr));
    EXPECT_EQ(t, record(env_, null_addr, null_addr, nullptr, 255));
  }
  {
    TraceCapture tc;
    tc.set_results(7, 0);
    len = 0;
    EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, out, &len, 0), 7);
    EXPECT_EQ(len, 0u);
  }
}

}  // namespace
