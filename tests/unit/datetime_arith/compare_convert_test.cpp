// QWZDateTimeCompare, the compare routine and QWZDateTimeConvert.
#include "arith_support.h"

#include <ctime>

using namespace qwz_test;

namespace {

class DateTimeCompare : public ArithFixture {
 protected:
  sword cmp(ub4 type, Fields a, Fields b, sword *out) {
    return QWZDateTimeCompare(env_, err_, dt(type, a), dt(type, b), out);
  }
};

struct CmpCase {
  const char *name;
  ub4 type;
  Fields a, b;
  sword expect;
};

TEST_F(DateTimeCompare, Table) {
  ZoneGuard z(kUtc);
  const CmpCase cases[] = {
      {"dates by year", 65, {2023, 12, 31, 0, 0, 0, 0, 0, 0}, {2024, 1, 1, 0, 0, 0, 0, 0, 0}, -1},
      {"negative years", 65, {-5, 1, 1, 0, 0, 0, 0, 0, 0}, {-6, 12, 31, 0, 0, 0, 0, 0, 0}, 1},
      {"dates by month", 65, {2024, 3, 1, 0, 0, 0, 0, 0, 0}, {2024, 2, 29, 0, 0, 0, 0, 0, 0}, 1},
      {"dates by day", 65, {2024, 3, 1, 0, 0, 0, 0, 0, 0}, {2024, 3, 2, 0, 0, 0, 0, 0, 0}, -1},
      {"dates ignore time and fraction", 65, {2024, 3, 1, 0, 0, 0, 0, 0, 0},
       {2024, 3, 1, 23, 59, 59, 999, 0, 0}, 0},
      {"times ignore the date", 66, {0, 0, 0, 10, 0, 0, 0, 0, 0}, {0, 0, 0, 9, 59, 59, 0, 0, 0}, 1},
      {"times by fraction", 66, {0, 0, 0, 10, 0, 0, 1, 0, 0}, {0, 0, 0, 10, 0, 0, 2, 0, 0}, -1},
      {"timestamps by date first", 68, {2024, 1, 2, 0, 0, 0, 0, 0, 0},
       {2024, 1, 1, 23, 0, 0, 0, 0, 0}, 1},
      {"timestamps by time", 68, {2024, 1, 1, 0, 0, 1, 0, 0, 0}, {2024, 1, 1, 0, 0, 0, 5, 0, 0}, 1},
      {"timestamps equal", 68, {2024, 1, 1, 1, 1, 1, 1, 0, 0}, {2024, 1, 1, 1, 1, 1, 1, 0, 0}, 0},
      {"local-zone timestamps always equal", 70, {2024, 1, 1, 0, 0, 0, 0, 0, 0},
       {1999, 9, 9, 9, 9, 9, 9, 0, 0}, 0},
      {"zoned: same instant", 69, {2024, 6, 1, 10, 0, 0, 0, 2, 0}, {2024, 6, 1, 9, 0, 0, 0, 1, 0}, 0},
      {"zoned: later instant", 69, {2024, 6, 1, 10, 0, 0, 0, 1, 0}, {2024, 6, 1, 10, 0, 0, 0, 2, 0},
       1},
      {"zoned: across midnight", 69, {2024, 6, 2, 0, 30, 0, 0, 2, 0},
       {2024, 6, 1, 23, 0, 0, 0, 0, 0}, -1},
      // Times with zones compare their UTC clock times alone.
      {"zoned times: clock in UTC", 67, {0, 0, 0, 1, 0, 0, 0, 2, 0}, {0, 0, 0, 22, 0, 0, 0, 0, 0},
       1},
  };
  for (const CmpCase &c : cases) {
    SCOPED_TRACE(c.name);
    sword r = 99;
    const long live = qwz_live_descriptor_count();
    EXPECT_EQ(cmp(c.type, c.a, c.b, &r), 0);
    EXPECT_EQ(r, c.expect);
    expect_clear();
    EXPECT_EQ(qwz_live_descriptor_count(), live + 2);  // only the two operands remain
  }
}

TEST_F(DateTimeCompare, TypesMustAgree) {
  ZoneGuard z(kUtc);
  sword r = 99;
  EXPECT_EQ(QWZDateTimeCompare(env_, err_, dt(68, {2024, 1, 1, 0, 0, 0, 0, 0, 0}),
                               dt(69, {2024, 1, 1, 0, 0, 0, 0, 0, 0}), &r),
            -1);
  expect_diag(11105, "22008", "ERROR: [QWZ-21405][QWZ Driver].type is diff\n");
  EXPECT_EQ(r, 99);
}

TEST_F(DateTimeCompare, ChecksInOrder) {
  ZoneGuard z(kUtc);
  QWZDateTime *good = dt(68, {2024, 1, 1, 0, 0, 0, 0, 0, 0});
  QWZDateTime *bad = dt(68, {2024, 2, 30, 0, 0, 0, 0, 0, 0});
  QWZDateTime *other = dt(69, {2024, 2, 30, 0, 0, 0, 0, 0, 0});
  QWZInterval *iv = new_interval(63);
  void *dead = freed(68);
  sword r = 99;
  const std::string null3 = "ERROR: [QWZ-21560][QWZ Driver].parameter 3 is NULL\n";
  const std::string null4 = "ERROR: [QWZ-21560][QWZ Driver].parameter 4 is NULL\n";
  const std::string null5 = "ERROR: [QWZ-21560][QWZ Driver].parameter 5 is NULL\n";
  struct Case {
    const char *name;
    void *hndl;
    const void *d1, *d2;
    sword *out;
    sword status;
    sb4 number;
    const char *state;
    std::string message;
  } cases[] = {
      {"NULL context", nullptr, good, good, &r, QWZ_INVALID_HANDLE, 800001, "", "Invalid handle."},
      {"NULL first", env_, nullptr, good, &r, QWZ_INVALID_HANDLE, 21560, "21560", null3},
      {"freed first", env_, dead, good, &r, QWZ_INVALID_HANDLE, 21560, "21560", null3},
      {"interval first", env_, iv, good, &r, QWZ_INVALID_HANDLE, 21560, "21560", null3},
      {"NULL second", env_, good, nullptr, &r, QWZ_INVALID_HANDLE, 21560, "21560", null4},
      {"NULL result", env_, good, good, nullptr, -1, 21560, "21560", null5},
      {"invalid first", env_, bad, good, &r, -1, 22007, "22007", kDateFormat22007},
      {"invalid second", env_, good, bad, &r, -1, 22007, "22007", kDateFormat22007},
      // Validity is checked before the types are compared.
      {"invalid second of another type", env_, good, other, &r, -1, 22007, "22007",
       kDateFormat22007},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(QWZDateTimeCompare(c.hndl, err_, static_cast<const QWZDateTime *>(c.d1),
                                 static_cast<const QWZDateTime *>(c.d2), c.out),
              c.status);
    expect_diag(c.number, c.state, c.message);
    EXPECT_EQ(r, 99);
  }
}

TEST_F(DateTimeCompare, RoutineRefusesNullAndReadsOnlyTheFirstType) {
  QWZDateTime *d = dt(65, {2024, 1, 1, 0, 0, 0, 0, 0, 0});
  QWZDateTime *t = dt(66, {0, 0, 0, 5, 0, 0, 0, 0, 0});
  sword r = 99;
  EXPECT_EQ(qwz_datetime_compare(nullptr, d, &r), -1);
  EXPECT_EQ(qwz_datetime_compare(d, nullptr, &r), -1);
  EXPECT_EQ(qwz_datetime_compare(d, d, nullptr), -1);
  EXPECT_EQ(r, 99);
  EXPECT_EQ(qwz_datetime_compare(d, t, &r), 0);
  EXPECT_EQ(r, 1);  // the date fields of the time are 0
  EXPECT_EQ(qwz_datetime_compare(t, d, &r), 0);
  EXPECT_EQ(r, 1);  // a time compares its clock only: 05:00 against 00:00
}

TEST_F(DateTimeCompare, TraceRecords) {
  ZoneGuard z(kUtc);
  QWZDateTime *a = dt(68, {2024, 1, 1, 0, 0, 0, 0, 0, 0});
  QWZDateTime *b = dt(68, {2024, 1, 2, 0, 0, 0, 0, 0, 0});
  sword r = 0;
  {
    TraceCapture cap;
    ASSERT_EQ(QWZDateTimeCompare(env_, err_, a, b, &r), 0);
    auto &rec = cap.records();
    ASSERT_EQ(rec.size(), 6u);
    const std::string row = "<QWZDateTimeCompare>\n\tvoid*     \t" + hex12(env_) +
                            "\n\tQWZError*     \t" + hex12(err_) +
                            "\n\tconst QWZDateTime*     \t" + hex12(a) +
                            "\n\tconst QWZDateTime*     \t" + hex12(b) + "\n\tsword*     \t" +
                            hex12(&r);
    EXPECT_EQ(rec[0].text, row);
    EXPECT_EQ(rec[1].api_id, 147u);
    EXPECT_EQ(rec[3].api_id, 147u);
    EXPECT_EQ(rec[5].api_id, 148u);
    EXPECT_EQ(rec[5].direction, 0u);
    EXPECT_EQ(rec[5].text, row);
  }
  {
    // A NULL result is traced as a pointer to the text "(null)" (its row
    // prints it as an address); the refused call has no exit record.
    TraceCapture cap;
    EXPECT_EQ(QWZDateTimeCompare(env_, err_, a, b, nullptr), -1);
    ASSERT_EQ(cap.records().size(), 1u);
    EXPECT_EQ(cap.records()[0].text,
              "<QWZDateTimeCompare>\n\tvoid*     \t" + hex12(env_) + "\n\tQWZError*     \t" +
                  hex12(err_) + "\n\tconst QWZDateTime*     \t" + hex12(a) +
                  "\n\tconst QWZDateTime*     \t" + hex12(b) + "\n\tsword*     \t" +
                  hex12(qwz::kNullText));
  }
  {
    // Zoned values: no exit record for the compare itself.
    QWZDateTime *za = dt(69, {2024, 1, 1, 0, 0, 0, 0, 1, 0});
    QWZDateTime *zb = dt(69, {2024, 1, 1, 0, 0, 0, 0, 2, 0});
    TraceCapture cap;
    ASSERT_EQ(QWZDateTimeCompare(env_, err_, za, zb, &r), 0);
    EXPECT_EQ(r, 1);
    int entries = 0, exits = 0;
    for (const TraceRecord &t : cap.records())
      if (t.api_id == 148) (t.direction ? entries : exits)++;
    EXPECT_EQ(entries, 1);
    EXPECT_EQ(exits, 0);
    EXPECT_EQ(cap.records().back().api_id, 147u);
  }
}

// ---- QWZDateTimeConvert -----------------------------------------------------

class DateTimeConvert : public ArithFixture {};

struct Today {
  sb2 year;
  ub2 month, day;
};
Today today() {
  tzset();
  time_t now = time(nullptr);
  struct tm t;
  localtime_r(&now, &t);
  return {static_cast<sb2>(t.tm_year + 1900), static_cast<ub2>(t.tm_mon + 1),
          static_cast<ub2>(t.tm_mday)};
}

// The expected result of every (source, target) pair, built from the rules:
// dates and times never meet, type 70 takes part in nothing.
bool pair_allowed(ub4 from, ub4 to) {
  auto shape = [](ub4 t) { return t == 65 ? 'd' : (t == 66 || t == 67) ? 't' : (t == 68 || t == 69) ? 's' : 'x'; };
  const char f = shape(from), g = shape(to);
  if (f == 'x' || g == 'x') return false;
  return !((f == 'd' && g == 't') || (f == 't' && g == 'd'));
}

TEST_F(DateTimeConvert, EveryPair) {
  for (const char *zone : {kUtc, kCet, kEst}) {
    ZoneGuard z(zone);
    SCOPED_TRACE(zone);
    const sb1 std_hour = zone == kUtc ? 0 : zone == kCet ? 1 : -5;
    const Fields src = {2021, 7, 14, 13, 45, 30, 123, 3, 30};
    for (ub4 from = 65; from <= 70; ++from) {
      for (ub4 to = 65; to <= 70; ++to) {
        SCOPED_TRACE(testing::Message() << from << " -> " << to);
        QWZDateTime *in = dt(from, src);
        QWZDateTime *out = dt(to, {1, 1, 1, 1, 1, 1, 1, 1, 1});
        const Today day = today();
        const sword rc = QWZDateTimeConvert(env_, err_, in, out);
        if (!pair_allowed(from, to)) {
          EXPECT_EQ(rc, -1);
          expect_diag(800160, "", "the intervals or datetimes are not mutually comparable");
          EXPECT_EQ(fields_of(out), (Fields{1, 1, 1, 1, 1, 1, 1, 1, 1}));
          continue;
        }
        ASSERT_EQ(rc, 0);
        expect_clear();
        EXPECT_EQ(out->hdr.type, to);
        Fields want{};
        const bool src_time = from == 66 || from == 67;
        if (to == 65 || to == 68 || to == 69) {
          if (src_time) {
            want.year = day.year;
            want.month = day.month;
            want.day = day.day;
          } else {
            want.year = src.year;
            want.month = src.month;
            want.day = src.day;
          }
        }
        if (to != 65 && from != 65) {
          want.hour = src.hour;
          want.minute = src.minute;
          want.second = src.second;
          want.fraction = src.fraction;
        }
        if (to == 67 || to == 69) {
          if (from == 67 || from == 69) {
            want.tz_hour = src.tz_hour;
            want.tz_minute = src.tz_minute;
          } else {
            want.tz_hour = std_hour;
          }
        }
        EXPECT_EQ(fields_of(out), want);
        EXPECT_EQ(fields_of(in), src);
      }
    }
  }
}

TEST_F(DateTimeConvert, ZoneIsDroppedOrAttachedWithoutMovingTheClock) {
  ZoneGuard z(kCet);
  // Summer: the attached offset is still the standard one.
  QWZDateTime *in = dt(69, {2024, 7, 1, 12, 0, 0, 5, 9, 0});
  QWZDateTime *out = new_datetime(68);
  ASSERT_EQ(QWZDateTimeConvert(env_, err_, in, out), 0);
  EXPECT_EQ(fields_of(out), (Fields{2024, 7, 1, 12, 0, 0, 5, 0, 0}));
  QWZDateTime *back = new_datetime(69);
  ASSERT_EQ(QWZDateTimeConvert(env_, err_, out, back), 0);
  EXPECT_EQ(fields_of(back), (Fields{2024, 7, 1, 12, 0, 0, 5, 1, 0}));
  // Half-hour zones keep the sign on the minutes.
  ZoneGuard z2("XXX3:30");
  ASSERT_EQ(QWZDateTimeConvert(env_, err_, out, back), 0);
  EXPECT_EQ(back->tz_hour, -3);
  EXPECT_EQ(back->tz_minute, -30);
}

TEST_F(DateTimeConvert, OntoItself) {
  ZoneGuard z(kUtc);
  QWZDateTime *d = dt(68, {2024, 7, 1, 12, 0, 0, 5, 9, 9});
  ASSERT_EQ(QWZDateTimeConvert(env_, err_, d, d), 0);
  EXPECT_EQ(fields_of(d), (Fields{2024, 7, 1, 12, 0, 0, 5, 0, 0}));
}

TEST_F(DateTimeConvert, HandlesAndTrace) {
  QWZDateTime *a = dt(68, {2024, 7, 1, 12, 0, 0, 5, 0, 0});
  void *dead = freed(68);
  QWZInterval *iv = new_interval(62);
  EXPECT_EQ(QWZDateTimeConvert(nullptr, err_, a, a), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZDateTimeConvert(env_, err_, nullptr, a), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZDateTimeConvert(env_, err_, a, static_cast<QWZDateTime *>(dead)), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZDateTimeConvert(env_, err_, reinterpret_cast<QWZDateTime *>(iv), a),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZDateTimeConvert(env_, nullptr, a, a), QWZ_INVALID_HANDLE);

  // A refused pair still writes its exit record, with status -1.
  QWZDateTime *t = new_datetime(66);
  QWZDateTime *d = new_datetime(65);
  TraceCapture cap;
  EXPECT_EQ(QWZDateTimeConvert(session_, err_, d, t), -1);
  ASSERT_EQ(cap.records().size(), 2u);
  const std::string row = "<QWZDateTimeConvert>\n\tvoid*     \t" + hex12(session_) +
                          "\n\tQWZError*     \t" + hex12(err_) + "\n\tQWZDateTime*     \t" +
                          hex12(d) + "\n\tQWZDateTime*     \t" + hex12(t);
  EXPECT_EQ(cap.records()[0].text, row);
  EXPECT_EQ(cap.records()[1].text, row);
  EXPECT_EQ(cap.records()[1].status, -1);
  EXPECT_EQ(cap.records()[1].direction, 0u);
}

}  // namespace
