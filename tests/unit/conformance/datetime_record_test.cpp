// QWZDateTimeCheck and QWZDateTimeAssign, black box: flags by type, the
// checked copy, diagnostics in order and trace records.
#include "datetime_conf_util.h"

#include <random>

using namespace conf;

namespace {

constexpr ub2 kTypes[] = {65, 66, 67, 68, 69, 70};

bool examines_date(ub2 t) { return t == 65 || t == 68 || t == 69; }
bool examines_time(ub2 t) { return t >= 66 && t <= 69; }
bool examines_zone(ub2 t) { return t == 67 || t == 69; }

enum class Group { Date, Time, Zone, None };

struct FlagCase {
  const char *label;
  V value;
  ub4 flags;  // the flags when the group is examined
  Group group;
};

// A valid base value; each case changes what it tests.
V base() { return V{2024, 6, 15, 20, 30, 40, 0, 0, 0}; }
V with(V v, int V::*field, int x) {
  v.*field = x;
  return v;
}

const std::vector<FlagCase> &flag_cases() {
  static const std::vector<FlagCase> cases = {
      {"valid", base(), 0, Group::None},
      {"day 0", with(base(), &V::day, 0), DATE_INVALID_DAY, Group::Date},
      {"Feb 30", with(with(base(), &V::month, 2), &V::day, 30), DATE_INVALID_DAY, Group::Date},
      {"2023-02-29", V{2023, 2, 29, 20}, DATE_INVALID_DAY, Group::Date},
      {"1900-02-29", V{1900, 2, 29, 20}, DATE_INVALID_DAY, Group::Date},
      {"-100-02-29", V{-100, 2, 29, 20}, DATE_INVALID_DAY, Group::Date},
      {"2000-02-29", V{2000, 2, 29, 20}, 0, Group::Date},
      {"-4-02-29", V{-4, 2, 29, 20}, 0, Group::Date},
      {"-400-02-29", V{-400, 2, 29, 20}, 0, Group::Date},
      {"April 31", V{2024, 4, 31, 20}, DATE_INVALID_DAY, Group::Date},
      {"December 31", V{2024, 12, 31, 20}, 0, Group::Date},
      {"day 32", V{2024, 1, 32, 20}, DATE_INVALID_DAY, Group::Date},
      {"month 0", V{2024, 0, 15, 20}, DATE_INVALID_MONTH, Group::Date},
      {"month 0 day 0", V{2024, 0, 0, 20}, DATE_INVALID_MONTH, Group::Date},
      {"month 13 day 99", V{2024, 13, 99, 20}, DATE_INVALID_MONTH, Group::Date},
      {"month 255", V{2024, 255, 1, 20}, DATE_INVALID_MONTH, Group::Date},
      {"year -4712", V{-4712, 1, 1, 20}, 0, Group::Date},
      {"year -4713", V{-4713, 1, 1, 20}, DATE_INVALID_YEAR, Group::Date},
      {"year 9999", V{9999, 12, 31, 20}, 0, Group::Date},
      {"year 10000", V{10000, 1, 1, 20}, DATE_INVALID_YEAR, Group::Date},
      {"year 0", V{0, 1, 1, 20}, DATE_YEAR_ZERO, Group::Date},
      {"year 0 Feb 29", V{0, 2, 29, 20}, DATE_YEAR_ZERO, Group::Date},
      {"year 0 month 13", V{0, 13, 1, 20}, DATE_YEAR_ZERO | DATE_INVALID_MONTH, Group::Date},
      {"year 15000 month 0", V{15000, 0, 1, 20}, DATE_INVALID_YEAR | DATE_INVALID_MONTH, Group::Date},
      {"year -10000 day 0", V{-10000, 3, 0, 20}, DATE_INVALID_YEAR | DATE_INVALID_DAY, Group::Date},
      {"hour 23", with(base(), &V::hour, 23), 0, Group::Time},
      {"hour 24", with(base(), &V::hour, 24), DATE_INVALID_HOUR, Group::Time},
      {"hour 254", with(base(), &V::hour, 254), DATE_INVALID_HOUR, Group::Time},
      {"minute 59", with(base(), &V::minute, 59), 0, Group::Time},
      {"minute 60", with(base(), &V::minute, 60), DATE_INVALID_MINUTE, Group::Time},
      {"second 59", with(base(), &V::second, 59), 0, Group::Time},
      {"second 60", with(base(), &V::second, 60), DATE_INVALID_SECOND, Group::Time},
      {"24:60:60", V{2024, 6, 15, 24, 60, 60}, 0x540, Group::Time},
      {"tz_hour 14", V{2024, 6, 15, 20, 30, 0, 0, 14, 0}, 0, Group::Zone},
      {"tz_hour 15", V{2024, 6, 15, 20, 30, 0, 0, 15, 0}, kTzHourFlag, Group::Zone},
      {"tz_hour -12", V{2024, 6, 15, 20, 30, 0, 0, -12, 0}, 0, Group::Zone},
      {"tz_hour -13", V{2024, 6, 15, 20, 30, 0, 0, -13, 0}, kTzHourFlag, Group::Zone},
      {"tz -12:-59", V{2024, 6, 15, 20, 0, 0, 0, -12, -59}, 0, Group::Zone},
      {"tz 14:59", V{2024, 6, 15, 20, 59, 0, 0, 14, 59}, 0, Group::Zone},
      {"tz_minute 60", V{2024, 6, 15, 20, 59, 0, 0, 0, 60}, kTzMinuteFlag, Group::Zone},
      {"tz_minute -60", V{2024, 6, 15, 20, 0, 0, 0, 0, -60}, kTzMinuteFlag, Group::Zone},
      {"tz 24:60", V{2024, 6, 15, 23, 59, 0, 0, 24, 60}, kTzHourFlag | kTzMinuteFlag, Group::Zone},
      {"tz -20:-60", V{2024, 6, 15, 0, 0, 0, 0, -20, -60}, kTzHourFlag | kTzMinuteFlag, Group::Zone},
      // The fraction is never examined.
      {"fraction max", V{2024, 6, 15, 20, 30, 40, 4294967295u}, 0, Group::None},
  };
  return cases;
}

class DateTimeCheckConf : public Fixture {};

// Each flag is set only for the types that examine its field; type 70
// never sets anything.
TEST_F(DateTimeCheckConf, FlagsByType) {
  for (ub2 type : kTypes) {
    for (const FlagCase &c : flag_cases()) {
      QWZDateTime *d = new_datetime(type);
      put(d, c.value);
      bool examined = false;
      switch (c.group) {
        case Group::Date: examined = examines_date(type); break;
        case Group::Time: examined = examines_time(type); break;
        case Group::Zone: examined = examines_zone(type); break;
        case Group::None: examined = true; break;
      }
      ub4 flags = 0xDEADBEEF;
      ASSERT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), QWZ_SUCCESS) << c.label;
      EXPECT_EQ(flags, examined ? c.flags : 0u) << c.label << " type " << type;
      expect_clear();
      ASSERT_EQ(QWZDescriptorFree(d, type), QWZ_SUCCESS);
    }
  }
}

// Faults of several groups at once are ORed, each group by its types.
TEST_F(DateTimeCheckConf, FlagsAreOred) {
  const V bad{10000, 13, 40, 24, 60, 60, 0, 15, 60};
  // hour and minute bytes carry UTC: 24 - 15 + 1 and 60 - 60 + 1.
  for (ub2 type : kTypes) {
    QWZDateTime *d = new_datetime(type);
    put(d, bad);
    ub4 want = 0;
    if (examines_date(type)) want |= DATE_INVALID_YEAR | DATE_INVALID_MONTH;
    if (examines_time(type)) want |= DATE_INVALID_HOUR | DATE_INVALID_MINUTE | DATE_INVALID_SECOND;
    if (examines_zone(type)) want |= kTzHourFlag | kTzMinuteFlag;
    EXPECT_EQ(check(d), want) << type;
  }
  // Year zero with an out-of-range day of a valid month.
  QWZDateTime *d = new_datetime(65);
  put(d, V{0, 4, 31});
  EXPECT_EQ(check(d), DATE_YEAR_ZERO | DATE_INVALID_DAY);
}

// The hour field is 16 bits: a zeroed hour byte stores 65535, which is
// above 23 for every examined type.
TEST_F(DateTimeCheckConf, WrappedHourIsInvalid) {
  QWZDateTime *d = new_datetime(68);
  ub1 bytes[11] = {120, 124, 1, 1, 0, 1, 1, 0, 0, 0, 0};
  ASSERT_EQ(QWZDateTimeFromArray(env_, err_, bytes, nullptr, kClassTimestamp, d, reftz(), 9), QWZ_ERROR);
  EXPECT_EQ(check(d), DATE_INVALID_HOUR);
}

TEST_F(DateTimeCheckConf, BothContextKinds) {
  QWZDateTime *d = new_datetime(68);
  put(d, base());
  for (void *h : {static_cast<void *>(env_), static_cast<void *>(session_)}) {
    ub4 flags = 7;
    EXPECT_EQ(QWZDateTimeCheck(h, err_, d, &flags), QWZ_SUCCESS);
    EXPECT_EQ(flags, 0u);
    expect_clear();
  }
}

TEST_F(DateTimeCheckConf, Refusals) {
  QWZDateTime *d = new_datetime(68);
  for (auto &[label, h] : bad_contexts()) {
    ub4 flags = 7;
    EXPECT_EQ(QWZDateTimeCheck(h, err_, d, &flags), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
    EXPECT_EQ(flags, 7u);
  }
  for (auto &[label, bad] : bad_datetimes()) {
    ub4 flags = 7;
    EXPECT_EQ(QWZDateTimeCheck(env_, err_, bad, &flags), QWZ_INVALID_HANDLE) << label;
    expect_null_param(3);
    EXPECT_EQ(flags, 7u);
  }
  EXPECT_EQ(QWZDateTimeCheck(env_, err_, d, nullptr), QWZ_ERROR);
  expect_null_param(4);
  // Order: context, descriptor, flags pointer.
  EXPECT_EQ(QWZDateTimeCheck(nullptr, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(QWZDateTimeCheck(env_, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_null_param(3);
  // A bad error handle: the validator's value, nothing written.
  for (auto &[label, e] : bad_error_handles()) {
    ub4 flags = 7;
    EXPECT_EQ(QWZDateTimeCheck(env_, e, d, &flags), QWZ_INVALID_HANDLE) << label;
    EXPECT_EQ(flags, 7u);
  }
}

std::string check_record(void *h, QWZError *e, const void *d, const void *valid) {
  return rec("QWZDateTimeCheck", {{"void*", hex12(h)},
                                  {"QWZError*", hex12(e)},
                                  {"const QWZDateTime*", hex12(d)},
                                  {"ub4*", hex12(valid)}});
}

TEST_F(DateTimeCheckConf, Trace) {
  QWZDateTime *d = new_datetime(69);
  put(d, V{2024, 13, 1});
  ub4 flags = 0;
  {
    qwz_test::TraceCapture tc;
    ASSERT_EQ(QWZDateTimeCheck(session_, err_, d, &flags), QWZ_SUCCESS);
    auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{147, 1}, {147, 0}}));
    EXPECT_EQ(r[0].text, check_record(session_, err_, d, &flags));
    EXPECT_EQ(r[1].text, r[0].text);
    EXPECT_EQ(r[0].status, 0);
    EXPECT_EQ(r[1].status, 0);
    EXPECT_EQ(r[0].errhp, err_);
    EXPECT_EQ(flags, DATE_INVALID_MONTH);
  }
  {
    // The flags pointer is traced as it is: no "(null)" for it. A refused
    // call has no exit record.
    qwz_test::TraceCapture tc;
    ASSERT_EQ(QWZDateTimeCheck(env_, err_, d, nullptr), QWZ_ERROR);
    ASSERT_EQ(shape(tc.records()), (Shape{{147, 1}}));
    EXPECT_EQ(tc.records()[0].text, check_record(env_, err_, d, nullptr));
  }
  {
    // An entry result stops the call before anything is validated: the
    // previous diagnostic stays and the flags are not written.
    leave_diag();
    qwz_test::TraceCapture tc;
    tc.set_results(7, 0);
    flags = 99;
    EXPECT_EQ(QWZDateTimeCheck(nullptr, err_, nullptr, &flags), 7);
    EXPECT_EQ(flags, 99u);
    EXPECT_EQ(shape(tc.records()), (Shape{{147, 1}}));
  }
  expect_left_diag();
  {
    // An exit result replaces the status; the work is done.
    qwz_test::TraceCapture tc;
    tc.set_results(0, 5);
    flags = 99;
    EXPECT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), 5);
    EXPECT_EQ(flags, DATE_INVALID_MONTH);
  }
}

TEST_F(DateTimeCheckConf, NoTraceWhenOff) {
  PickyTrace pt(0, 0, 0);
  qwz_trace_flag = 0;
  QWZDateTime *d = new_datetime(65);
  ub4 flags = 0;
  EXPECT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), QWZ_SUCCESS);
  EXPECT_TRUE(pt.records().empty());
}

// ---------------------------------------------------------------------------

class DateTimeAssignConf : public Fixture {};

TEST_F(DateTimeAssignConf, CopiesEveryValueField) {
  // Values built for each type by the constructor, so each type holds only
  // its own fields, then copied into a descriptor that held something else.
  struct Case {
    ub2 type;
    const char *tz;
  };
  qwz_test::ZoneGuard z(qwz_test::kUtc);
  for (Case c : {Case{65, nullptr}, Case{66, nullptr}, Case{67, "-05:30"}, Case{68, nullptr},
                 Case{69, "+14:00"}, Case{70, nullptr}}) {
    QWZDateTime *from = new_datetime(c.type);
    QWZDateTime *to = new_datetime(c.type);
    // A type-70 descriptor is not filled by the constructor: use the
    // array reader for it (the check examines nothing of type 70).
    if (c.type == 70) {
      ASSERT_EQ(put(from, V{2024, 2, 29, 23, 59, 58, 123456789, 0, 0}, kClassTimestamp), QWZ_SUCCESS);
    } else {
      ASSERT_EQ(QWZDateTimeConstruct(env_, err_, from, 2024, 2, 29, 23, 59, 58, 123456789,
                                     c.tz ? T(c.tz) : nullptr, c.tz ? 6 : 0),
                QWZ_SUCCESS);
    }
    put(to, V{1999, 1, 2, 3, 4, 5, 6, 0, 0}, kClassTimestamp);
    ASSERT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_SUCCESS) << c.type;
    expect_clear();
    const Seen a = see(from);
    const Seen b = see(to);
    EXPECT_EQ(a.bytes, b.bytes) << c.type;
    EXPECT_EQ(a.date_rc, b.date_rc);
    EXPECT_EQ(a.year, b.year);
    EXPECT_EQ(a.month, b.month);
    EXPECT_EQ(a.day, b.day);
    EXPECT_EQ(a.time_rc, b.time_rc);
    EXPECT_EQ(a.hour, b.hour);
    EXPECT_EQ(a.minute, b.minute);
    EXPECT_EQ(a.second, b.second);
    EXPECT_EQ(a.fraction, b.fraction);
    EXPECT_EQ(a.tz_rc, b.tz_rc);
    EXPECT_EQ(a.tz_hour, b.tz_hour);
    EXPECT_EQ(a.tz_minute, b.tz_minute);
  }
}

// Type 68: every field including the fraction shows through the getters.
TEST_F(DateTimeAssignConf, TimestampFieldsExactly) {
  QWZDateTime *from = new_datetime(68);
  QWZDateTime *to = new_datetime(68);
  ASSERT_EQ(put(from, V{-4712, 1, 1, 0, 0, 0, 999999999}, kClassTimestamp), QWZ_SUCCESS);
  ASSERT_EQ(put(to, V{9999, 12, 31, 23, 59, 59, 1}, kClassTimestamp), QWZ_SUCCESS);
  ASSERT_EQ(QWZDateTimeAssign(session_, err_, from, to), QWZ_SUCCESS);
  const Seen s = see(to);
  EXPECT_EQ(s.year, -4712);
  EXPECT_EQ(s.month, 1);
  EXPECT_EQ(s.day, 1);
  EXPECT_EQ(s.hour, 0);
  EXPECT_EQ(s.minute, 0);
  EXPECT_EQ(s.second, 0);
  EXPECT_EQ(s.fraction, 999999999u);
}

// Type 69: the zone goes with the value.
TEST_F(DateTimeAssignConf, ZoneIsCopied) {
  QWZDateTime *from = new_datetime(69);
  QWZDateTime *to = new_datetime(69);
  ASSERT_EQ(put(from, V{2024, 5, 17, 10, 0, 0, 0, -12, -59}), QWZ_SUCCESS);
  ASSERT_EQ(put(to, V{2024, 5, 17, 20, 0, 0, 0, 14, 0}), QWZ_SUCCESS);
  ASSERT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_SUCCESS);
  sb1 h = 0, m = 0;
  ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, to, &h, &m), QWZ_SUCCESS);
  EXPECT_EQ(h, -12);
  EXPECT_EQ(m, -59);
}

// A type-70 value is never examined, so whatever it holds is copied.
TEST_F(DateTimeAssignConf, LocalZoneValueIsNotExamined) {
  QWZDateTime *from = new_datetime(70);
  QWZDateTime *to = new_datetime(70);
  put(from, V{15000, 13, 40, 24, 60, 60}, kClassTimestamp);
  ASSERT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_SUCCESS);
  EXPECT_EQ(bytes_of(to), bytes_of(from));
}

TEST_F(DateTimeAssignConf, TypesDiffer) {
  QWZDateTime *from = new_datetime(68);
  QWZDateTime *to = new_datetime(69);
  put(from, V{2024, 5, 17, 10});
  put(to, V{2000, 1, 1, 1});
  const auto before = bytes_of(to);
  EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_ERROR);
  expect_diag(11105, "22008", kTypeDiff);
  EXPECT_EQ(bytes_of(to), before);
  // Types are compared before the source is checked.
  put(from, V{2024, 13, 1, 10});
  EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_ERROR);
  expect_diag(11105, "22008", kTypeDiff);
}

TEST_F(DateTimeAssignConf, InvalidSource) {
  QWZDateTime *from = new_datetime(65);
  QWZDateTime *to = new_datetime(65);
  put(to, V{2000, 1, 1});
  const auto before = bytes_of(to);
  put(from, V{2023, 2, 29});
  EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_ERROR);
  expect_date_format_invalid();
  EXPECT_EQ(bytes_of(to), before);
  // An invalid destination value does not matter: it is overwritten.
  QWZDateTime *good = new_datetime(65);
  put(good, V{2024, 2, 29});
  put(to, V{0, 0, 0});
  EXPECT_EQ(QWZDateTimeAssign(env_, err_, good, to), QWZ_SUCCESS);
  EXPECT_EQ(check(to), 0u);
}

// Either descriptor failing validation prints parameter 4, and the call
// returns the validator's value.
TEST_F(DateTimeAssignConf, BadDescriptors) {
  QWZDateTime *good = new_datetime(68);
  put(good, V{2024, 1, 1});
  for (auto &[label, bad] : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeAssign(env_, err_, bad, good), QWZ_INVALID_HANDLE) << label;
    expect_null_param(4);
    EXPECT_EQ(QWZDateTimeAssign(env_, err_, good, bad), QWZ_INVALID_HANDLE) << label;
    expect_null_param(4);
  }
  for (auto &[label, h] : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeAssign(h, err_, nullptr, nullptr), QWZ_INVALID_HANDLE) << label;
    expect_invalid_handle();
  }
  for (auto &[label, e] : bad_error_handles())
    EXPECT_EQ(QWZDateTimeAssign(env_, e, good, good), QWZ_INVALID_HANDLE) << label;
}

std::string assign_record(void *h, QWZError *e, const void *from, const void *to) {
  return rec("QWZDateTimeAssign", {{"void*", hex12(h)},
                                   {"QWZError*", hex12(e)},
                                   {"const QWZDateTime*", hex12(from)},
                                   {"QWZDateTime*", hex12(to)}});
}

TEST_F(DateTimeAssignConf, TraceNestsTheCheck) {
  QWZDateTime *from = new_datetime(66);
  QWZDateTime *to = new_datetime(66);
  put(from, V{0, 0, 0, 10, 20, 30}, kClassTime);
  {
    qwz_test::TraceCapture tc;
    ASSERT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_SUCCESS);
    auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{146, 1}, {147, 1}, {147, 0}, {146, 0}}));
    EXPECT_EQ(r[0].text, assign_record(env_, err_, from, to));
    EXPECT_EQ(r[3].text, r[0].text);
    EXPECT_EQ(r[1].text.rfind("<QWZDateTimeCheck>\n\tvoid*     \t" + hex12(env_) +
                                  "\n\tQWZError*     \t" + hex12(err_) +
                                  "\n\tconst QWZDateTime*     \t" + hex12(from) + "\n\tub4*     \t",
                              0),
              0u);
  }
  {
    // Invalid source: the check's pair, no exit record of the assign.
    put(from, V{0, 0, 0, 24, 0, 0}, kClassTime);
    qwz_test::TraceCapture tc;
    ASSERT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{146, 1}, {147, 1}, {147, 0}}));
  }
  {
    // Types differ: no nested check.
    QWZDateTime *other = new_datetime(67);
    qwz_test::TraceCapture tc;
    ASSERT_EQ(QWZDateTimeAssign(env_, err_, from, other), QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{146, 1}}));
  }
}

// A non-zero status from the nested check is returned as it is and nothing
// is copied.
TEST_F(DateTimeAssignConf, NestedCheckStatusPassesThrough) {
  QWZDateTime *from = new_datetime(68);
  QWZDateTime *to = new_datetime(68);
  put(from, V{2024, 1, 1, 1});
  put(to, V{2000, 2, 2, 2});
  const auto before = bytes_of(to);
  PickyTrace pt(147, 1, 9);
  EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), 9);
  EXPECT_EQ(bytes_of(to), before);
}

}  // namespace
