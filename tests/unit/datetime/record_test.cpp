// QWZDateTimeCheck and QWZDateTimeAssign.
#include "datetime_test_util.h"

#include <random>

using namespace qwz_test;

namespace {

constexpr ub4 kTz = 0x10000u;
constexpr ub4 kTzMin = 0x40000u;

bool examines_date(ub2 t) { return t == 65 || t == 68 || t == 69; }
bool examines_time(ub2 t) { return t >= 66 && t <= 69; }
bool examines_zone(ub2 t) { return t == 67 || t == 69; }

int month_length(int year, int month) {
  static const int days[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month != 2) return days[month];
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return leap ? 29 : 28;
}

// The flags worked out field by field for a type.
ub4 expected_flags(ub2 type, const Value &v) {
  ub4 f = 0;
  if (examines_date(type)) {
    if (v.year < -4712 || v.year > 9999) f |= DATE_INVALID_YEAR;
    if (v.year == 0) f |= DATE_YEAR_ZERO;
    if (v.month < 1 || v.month > 12) f |= DATE_INVALID_MONTH;
    else if (v.day < 1 || v.day > month_length(v.year, v.month)) f |= DATE_INVALID_DAY;
  }
  if (examines_time(type)) {
    if (v.hour > 23) f |= DATE_INVALID_HOUR;
    if (v.minute > 59) f |= DATE_INVALID_MINUTE;
    if (v.second > 59) f |= DATE_INVALID_SECOND;
  }
  if (examines_zone(type)) {
    if (v.tz_hour > 14 || v.tz_hour < -12) f |= kTz;
    if (v.tz_minute > 59 || v.tz_minute < -59) f |= kTzMin;
  }
  return f;
}

// A valid value for every type: 2024-06-15 12:30:45.5 +05:30.
Value valid_value() { return {2024, 6, 15, 12, 30, 45, 500000000, 5, 30}; }

// One defect laid over the valid value, the flag it raises and the types
// that look at the field.
struct Defect {
  const char *name;
  std::function<void(Value &)> apply;
  ub4 flag;
  bool (*examined)(ub2);
};

bool never(ub2) { return false; }

const std::vector<Defect> &defects() {
  static const std::vector<Defect> d = {
      {"year -4713", [](Value &v) { v.year = -4713; }, DATE_INVALID_YEAR, examines_date},
      {"year 10000", [](Value &v) { v.year = 10000; }, DATE_INVALID_YEAR, examines_date},
      {"year -32768", [](Value &v) { v.year = -32768; }, DATE_INVALID_YEAR, examines_date},
      {"year 32767", [](Value &v) { v.year = 32767; }, DATE_INVALID_YEAR, examines_date},
      {"year -4712", [](Value &v) { v.year = -4712; }, 0, examines_date},
      {"year 9999", [](Value &v) { v.year = 9999; }, 0, examines_date},
      {"year -1", [](Value &v) { v.year = -1; }, 0, examines_date},
      {"year 0", [](Value &v) { v.year = 0; }, DATE_YEAR_ZERO, examines_date},
      {"month 0", [](Value &v) { v.month = 0; }, DATE_INVALID_MONTH, examines_date},
      {"month 13", [](Value &v) { v.month = 13; }, DATE_INVALID_MONTH, examines_date},
      {"month 65535", [](Value &v) { v.month = 65535; }, DATE_INVALID_MONTH, examines_date},
      {"month 13 day 0", [](Value &v) { v.month = 13; v.day = 0; }, DATE_INVALID_MONTH, examines_date},
      {"month 0 day 99", [](Value &v) { v.month = 0; v.day = 99; }, DATE_INVALID_MONTH, examines_date},
      {"day 0", [](Value &v) { v.day = 0; }, DATE_INVALID_DAY, examines_date},
      {"day 31 of June", [](Value &v) { v.day = 31; }, DATE_INVALID_DAY, examines_date},
      {"day 30 of June", [](Value &v) { v.day = 30; }, 0, examines_date},
      {"day 65535", [](Value &v) { v.day = 65535; }, DATE_INVALID_DAY, examines_date},
      {"February 30", [](Value &v) { v.month = 2; v.day = 30; }, DATE_INVALID_DAY, examines_date},
      {"2023-02-29", [](Value &v) { v.year = 2023; v.month = 2; v.day = 29; }, DATE_INVALID_DAY, examines_date},
      {"2024-02-29", [](Value &v) { v.year = 2024; v.month = 2; v.day = 29; }, 0, examines_date},
      {"1900-02-29", [](Value &v) { v.year = 1900; v.month = 2; v.day = 29; }, DATE_INVALID_DAY, examines_date},
      {"2000-02-29", [](Value &v) { v.year = 2000; v.month = 2; v.day = 29; }, 0, examines_date},
      {"-4-02-29", [](Value &v) { v.year = -4; v.month = 2; v.day = 29; }, 0, examines_date},
      {"-100-02-29", [](Value &v) { v.year = -100; v.month = 2; v.day = 29; }, DATE_INVALID_DAY, examines_date},
      {"-400-02-29", [](Value &v) { v.year = -400; v.month = 2; v.day = 29; }, 0, examines_date},
      {"year 0 and day 0", [](Value &v) { v.year = 0; v.day = 0; }, DATE_YEAR_ZERO | DATE_INVALID_DAY, examines_date},
      {"hour 24", [](Value &v) { v.hour = 24; }, DATE_INVALID_HOUR, examines_time},
      {"hour 23", [](Value &v) { v.hour = 23; }, 0, examines_time},
      {"hour 65535", [](Value &v) { v.hour = 65535; }, DATE_INVALID_HOUR, examines_time},
      {"minute 60", [](Value &v) { v.minute = 60; }, DATE_INVALID_MINUTE, examines_time},
      {"minute 59", [](Value &v) { v.minute = 59; }, 0, examines_time},
      {"second 60", [](Value &v) { v.second = 60; }, DATE_INVALID_SECOND, examines_time},
      {"second 59", [](Value &v) { v.second = 59; }, 0, examines_time},
      {"hour 24 minute 60 second 60", [](Value &v) { v.hour = 24; v.minute = 60; v.second = 60; }, 0x540, examines_time},
      {"tz hour 15", [](Value &v) { v.tz_hour = 15; }, kTz, examines_zone},
      {"tz hour 14", [](Value &v) { v.tz_hour = 14; }, 0, examines_zone},
      {"tz hour -12", [](Value &v) { v.tz_hour = -12; v.tz_minute = -59; }, 0, examines_zone},
      {"tz hour -13", [](Value &v) { v.tz_hour = -13; }, kTz, examines_zone},
      {"tz hour -128", [](Value &v) { v.tz_hour = -128; }, kTz, examines_zone},
      {"tz hour 127", [](Value &v) { v.tz_hour = 127; }, kTz, examines_zone},
      {"tz minute 60", [](Value &v) { v.tz_minute = 60; }, kTzMin, examines_zone},
      {"tz minute 59", [](Value &v) { v.tz_minute = 59; }, 0, examines_zone},
      {"tz minute -59", [](Value &v) { v.tz_minute = -59; }, 0, examines_zone},
      {"tz minute -60", [](Value &v) { v.tz_minute = -60; }, kTzMin, examines_zone},
      {"tz minute mixed sign", [](Value &v) { v.tz_hour = -3; v.tz_minute = 30; }, 0, examines_zone},
      {"tz both", [](Value &v) { v.tz_hour = 15; v.tz_minute = -60; }, kTz | kTzMin, examines_zone},
      {"fraction max", [](Value &v) { v.fraction = 0xFFFFFFFFu; }, 0, never},
      {"fraction 1e9", [](Value &v) { v.fraction = 1000000000u; }, 0, never},
  };
  return d;
}

class QWZDateTimeCheckTest : public DatetimeFixture {
 protected:
  sword check(const Value &v, ub2 type, ub4 *flags) {
    QWZDateTime *d = new_datetime(type);
    write_value(d, v);
    const sword rc = QWZDateTimeCheck(env_, err_, d, flags);
    EXPECT_EQ(read_value(d), v) << "the check writes nothing into the descriptor";
    return rc;
  }
};

TEST_F(QWZDateTimeCheckTest, ValidValueOfEveryType) {
  for (ub2 type : kAllDatetimeTypes) {
    ub4 flags = 0xDEADBEEF;
    EXPECT_EQ(check(valid_value(), type, &flags), QWZ_SUCCESS);
    EXPECT_EQ(flags, 0u) << type;
    expect_clear();
  }
}

TEST_F(QWZDateTimeCheckTest, EachDefectByType) {
  for (const Defect &defect : defects()) {
    for (ub2 type : kAllDatetimeTypes) {
      Value v = valid_value();
      defect.apply(v);
      ub4 flags = 0xDEADBEEF;
      EXPECT_EQ(check(v, type, &flags), QWZ_SUCCESS);
      const ub4 want = defect.examined(type) ? defect.flag : 0u;
      EXPECT_EQ(flags, want) << defect.name << " type " << type;
      expect_clear();
    }
  }
}

// Every defect of one descriptor at once: the bits are ORed.
TEST_F(QWZDateTimeCheckTest, FlagsAreOred) {
  const Value bad{10000, 2, 30, 24, 60, 60, 0xFFFFFFFFu, 15, -60};
  const struct {
    ub2 type;
    ub4 flags;
  } rows[] = {
      {65, DATE_INVALID_YEAR | DATE_INVALID_DAY},
      {66, 0x540},
      {67, 0x540 | kTz | kTzMin},
      {68, DATE_INVALID_YEAR | DATE_INVALID_DAY | 0x540},
      {69, DATE_INVALID_YEAR | DATE_INVALID_DAY | 0x540 | kTz | kTzMin},
      {70, 0},
  };
  for (const auto &row : rows) {
    ub4 flags = 0;
    EXPECT_EQ(check(bad, row.type, &flags), QWZ_SUCCESS);
    EXPECT_EQ(flags, row.flags) << row.type;
  }
  const Value zero_year{0, 13, 0, 0, 0, 0, 0, 0, 0};
  ub4 flags = 0;
  EXPECT_EQ(check(zero_year, 69, &flags), QWZ_SUCCESS);
  EXPECT_EQ(flags, DATE_YEAR_ZERO | DATE_INVALID_MONTH);
}

TEST_F(QWZDateTimeCheckTest, Type70IsNeverExamined) {
  const Value values[] = {
      {0, 0, 0, 0, 0, 0, 0, 0, 0},
      {-32768, 65535, 65535, 65535, 65535, 65535, 0xFFFFFFFFu, -128, -128},
      {32767, 13, 32, 24, 60, 60, 0, 127, 127},
  };
  for (const Value &v : values) {
    ub4 flags = 0xDEADBEEF;
    EXPECT_EQ(check(v, 70, &flags), QWZ_SUCCESS);
    EXPECT_EQ(flags, 0u);
  }
}

TEST_F(QWZDateTimeCheckTest, TimeTypesIgnoreTheirDate) {
  ub4 flags = 0;
  EXPECT_EQ(check({20000, 0, 0, 10, 0, 0, 0, 0, 0}, 66, &flags), QWZ_SUCCESS);
  EXPECT_EQ(flags, 0u);
}

// The edge values named for the check, spelled out.
TEST_F(QWZDateTimeCheckTest, NamedEdges) {
  const struct {
    ub2 type;
    Value v;
    ub4 flags;
  } rows[] = {
      {69, {2024, 1, 1, 0, 0, 0, 0, 15, 0}, kTz},
      {69, {2024, 1, 1, 0, 0, 0, 0, -12, -59}, 0},
      {65, {0, 1, 1, 0, 0, 0, 0, 0, 0}, DATE_YEAR_ZERO},
      {65, {-4713, 1, 1, 0, 0, 0, 0, 0, 0}, DATE_INVALID_YEAR},
      {65, {2023, 2, 30, 0, 0, 0, 0, 0, 0}, DATE_INVALID_DAY},
      {66, {20000, 0, 0, 0, 0, 0, 0, 0, 0}, 0},
      {70, {0, 99, 99, 99, 99, 99, 0, 99, 99}, 0},
  };
  for (const auto &row : rows) {
    ub4 flags = 0;
    EXPECT_EQ(check(row.v, row.type, &flags), QWZ_SUCCESS);
    EXPECT_EQ(flags, row.flags);
  }
}

// Generated values, edge-heavy, against the field-by-field flags.
TEST_F(QWZDateTimeCheckTest, GeneratedValues) {
  std::mt19937 rng(20240615);
  auto pick = [&](std::initializer_list<int> edges, int lo, int hi) {
    if (rng() % 2) return edges.begin()[rng() % edges.size()];
    return lo + static_cast<int>(rng() % static_cast<unsigned>(hi - lo + 1));
  };
  QWZDateTime *d[6];
  for (int i = 0; i < 6; ++i) d[i] = new_datetime(kAllDatetimeTypes[i]);
  for (int n = 0; n < 20000; ++n) {
    Value v;
    v.year = static_cast<sb2>(pick({-32768, -4713, -4712, -1, 0, 1, 1900, 2000, 9999, 10000, 32767}, -5000, 10500));
    v.month = static_cast<ub2>(pick({0, 1, 2, 12, 13, 255, 65535}, 0, 14));
    v.day = static_cast<ub2>(pick({0, 1, 28, 29, 30, 31, 32, 65535}, 0, 33));
    v.hour = static_cast<ub2>(pick({0, 23, 24, 65535}, 0, 25));
    v.minute = static_cast<ub2>(pick({0, 59, 60, 65535}, 0, 61));
    v.second = static_cast<ub2>(pick({0, 59, 60, 65535}, 0, 61));
    v.fraction = static_cast<ub4>(rng());
    v.tz_hour = static_cast<sb1>(pick({-128, -13, -12, 0, 14, 15, 127}, -14, 16));
    v.tz_minute = static_cast<sb1>(pick({-128, -60, -59, 0, 59, 60, 127}, -61, 61));
    for (int i = 0; i < 6; ++i) {
      write_value(d[i], v);
      ub4 flags = 0xDEADBEEF;
      ASSERT_EQ(QWZDateTimeCheck(session_, err_, d[i], &flags), QWZ_SUCCESS);
      ASSERT_EQ(flags, expected_flags(kAllDatetimeTypes[i], v)) << n << " type " << kAllDatetimeTypes[i];
    }
  }
  expect_clear();
}

// Every day of every month over the whole year range, as dates and stamps.
TEST_F(QWZDateTimeCheckTest, EveryDayOfTheRange) {
  QWZDateTime *date = new_datetime(65);
  QWZDateTime *stamp = new_datetime(69);
  for (int year = -4712; year <= 9999; ++year) {
    for (int month = 1; month <= 12; ++month) {
      for (int day : {0, 1, 27, 28, 29, 30, 31, 32}) {
        const Value v{static_cast<sb2>(year), static_cast<ub2>(month), static_cast<ub2>(day), 23, 59, 59, 0, 14, 0};
        write_value(date, v);
        write_value(stamp, v);
        ub4 f1 = 0, f2 = 0;
        QWZDateTimeCheck(env_, err_, date, &f1);
        QWZDateTimeCheck(env_, err_, stamp, &f2);
        const ub4 want = expected_flags(65, v);
        ASSERT_EQ(f1, want) << year << "-" << month << "-" << day;
        ASSERT_EQ(f2, want) << year << "-" << month << "-" << day;
      }
    }
  }
}

TEST_F(QWZDateTimeCheckTest, BothContextKinds) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, valid_value());
  for (const BadHandle &h : good_contexts()) {
    ub4 flags = 1;
    EXPECT_EQ(QWZDateTimeCheck(h.ptr, err_, d, &flags), QWZ_SUCCESS) << h.label;
    EXPECT_EQ(flags, 0u);
    expect_clear();
  }
}

TEST_F(QWZDateTimeCheckTest, NullFlagsPointer) {
  QWZDateTime *d = new_datetime(68);
  EXPECT_EQ(QWZDateTimeCheck(env_, err_, d, nullptr), QWZ_ERROR);
  expect_null_param(4);
}

TEST_F(QWZDateTimeCheckTest, BadDescriptorPrintsParameter3) {
  for (const BadHandle &h : bad_datetimes()) {
    ub4 flags = 77;
    EXPECT_EQ(QWZDateTimeCheck(env_, err_, static_cast<QWZDateTime *>(h.ptr), &flags),
              QWZ_INVALID_HANDLE)
        << h.label;
    EXPECT_EQ(flags, 77u);
    expect_null_param(3);
  }
}

// The descriptor is validated before the flags pointer.
TEST_F(QWZDateTimeCheckTest, DescriptorBeforeFlagsPointer) {
  EXPECT_EQ(QWZDateTimeCheck(env_, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_null_param(3);
}

TEST_F(QWZDateTimeCheckTest, BadContextHandle) {
  QWZDateTime *d = new_datetime(68);
  for (const BadHandle &h : bad_contexts()) {
    ub4 flags = 77;
    EXPECT_EQ(QWZDateTimeCheck(h.ptr, err_, d, &flags), QWZ_INVALID_HANDLE) << h.label;
    EXPECT_EQ(flags, 77u);
    expect_invalid_handle();
  }
  // The context is looked at before the descriptor and the flags pointer.
  EXPECT_EQ(QWZDateTimeCheck(nullptr, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}

TEST_F(QWZDateTimeCheckTest, BadErrorHandleWritesNothing) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, valid_value());
  QWZDateTimeCheck(env_, err_, d, nullptr);  // leaves a diagnostic in err_
  for (const BadHandle &h : bad_error_handles()) {
    ub4 flags = 77;
    EXPECT_EQ(QWZDateTimeCheck(env_, static_cast<QWZError *>(h.ptr), d, &flags),
              QWZ_INVALID_HANDLE)
        << h.label;
    EXPECT_EQ(flags, 77u);
    expect_null_param(4);
  }
}

TEST_F(QWZDateTimeCheckTest, ClearsThePreviousDiagnostic) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, valid_value());
  QWZDateTimeCheck(env_, err_, d, nullptr);
  ub4 flags = 0;
  EXPECT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), QWZ_SUCCESS);
  expect_clear();
}

TEST_F(QWZDateTimeCheckTest, TraceRecords) {
  QWZDateTime *d = new_datetime(69);
  write_value(d, valid_value());
  ub4 flags = 0;
  TraceCapture trace;
  ASSERT_EQ(QWZDateTimeCheck(session_, err_, d, &flags), QWZ_SUCCESS);
  auto &r = trace.records();
  ASSERT_EQ(r.size(), 2u);
  const std::string text = trace_record(
      "QWZDateTimeCheck", {{"void*", hex12(session_)},
                           {"QWZError*", hex12(err_)},
                           {"const QWZDateTime*", hex12(d)},
                           {"ub4*", hex12(&flags)}});
  EXPECT_EQ(r[0].api_id, 147u);
  EXPECT_EQ(r[0].direction, 1u);
  EXPECT_EQ(r[0].status, 0);
  EXPECT_EQ(r[0].text, text);
  EXPECT_EQ(r[0].errhp, err_);
  EXPECT_EQ(r[1].api_id, 147u);
  EXPECT_EQ(r[1].direction, 0u);
  EXPECT_EQ(r[1].status, 0);
  EXPECT_EQ(r[1].text, text);
}

// A NULL flags pointer is traced as it is, and the refused call has no exit.
TEST_F(QWZDateTimeCheckTest, TraceOfRefusedCall) {
  QWZDateTime *d = new_datetime(69);
  TraceCapture trace;
  ASSERT_EQ(QWZDateTimeCheck(env_, err_, d, nullptr), QWZ_ERROR);
  auto &r = trace.records();
  ASSERT_EQ(r.size(), 1u);
  EXPECT_EQ(r[0].text, trace_record("QWZDateTimeCheck", {{"void*", hex12(env_)},
                                                        {"QWZError*", hex12(err_)},
                                                        {"const QWZDateTime*", hex12(d)},
                                                        {"ub4*", "0x000000000000"}}));
}

TEST_F(QWZDateTimeCheckTest, TraceResults) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, {2024, 13, 1, 0, 0, 0, 0, 0, 0});
  QWZDateTimeCheck(env_, err_, d, nullptr);  // a diagnostic to keep
  {
    TraceCapture trace;
    trace.set_results(7, 0);
    ub4 flags = 77;
    EXPECT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), 7);
    EXPECT_EQ(flags, 77u);
    EXPECT_EQ(trace.records().size(), 1u);
    expect_null_param(4);  // not cleared: nothing ran after the entry trace
  }
  {
    TraceCapture trace;
    trace.set_results(0, 9);
    ub4 flags = 0;
    EXPECT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), 9);
    EXPECT_EQ(flags, DATE_INVALID_MONTH);
    EXPECT_EQ(trace.records().size(), 2u);
    expect_clear();
  }
}

TEST_F(QWZDateTimeCheckTest, NoTraceWhenOff) {
  QWZDateTime *d = new_datetime(68);
  TraceCapture trace;
  qwz_trace_flag = 0;
  ub4 flags = 0;
  EXPECT_EQ(QWZDateTimeCheck(env_, err_, d, &flags), QWZ_SUCCESS);
  EXPECT_TRUE(trace.records().empty());
}

// ---- QWZDateTimeAssign -------------------------------------------------------

class QWZDateTimeAssignTest : public DatetimeFixture {};

TEST_F(QWZDateTimeAssignTest, CopiesEveryValueFieldForEachType) {
  for (ub2 type : kAllDatetimeTypes) {
    QWZDateTime *from = new_datetime(type);
    QWZDateTime *to = new_datetime(type);
    // Fields a type does not examine are copied as they are.
    const Value v{2024, 2, 29, 23, 59, 59, 0xFFFFFFFFu, -12, -59};
    write_value(from, v);
    write_value(to, {1, 1, 1, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_SUCCESS) << type;
    EXPECT_EQ(read_value(to), v);
    EXPECT_EQ(read_value(from), v);
    EXPECT_EQ(to->hdr.type, type);
    expect_clear();
  }
}

TEST_F(QWZDateTimeAssignTest, Type70CopiesAnything) {
  QWZDateTime *from = new_datetime(70);
  QWZDateTime *to = new_datetime(70);
  const Value v{0, 99, 99, 99, 99, 99, 7, 99, -99};
  write_value(from, v);
  EXPECT_EQ(QWZDateTimeAssign(session_, err_, from, to), QWZ_SUCCESS);
  EXPECT_EQ(read_value(to), v);
}

TEST_F(QWZDateTimeAssignTest, SameDescriptor) {
  QWZDateTime *d = new_datetime(69);
  write_value(d, valid_value());
  EXPECT_EQ(QWZDateTimeAssign(env_, err_, d, d), QWZ_SUCCESS);
  EXPECT_EQ(read_value(d), valid_value());
}

TEST_F(QWZDateTimeAssignTest, TypesDiffer) {
  for (ub2 ft : kAllDatetimeTypes) {
    for (ub2 tt : kAllDatetimeTypes) {
      if (ft == tt) continue;
      QWZDateTime *from = new_datetime(ft);
      QWZDateTime *to = new_datetime(tt);
      write_value(from, valid_value());
      const Value before{3, 3, 3, 3, 3, 3, 3, 3, 3};
      write_value(to, before);
      EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_ERROR) << ft << "->" << tt;
      EXPECT_EQ(read_value(to), before);
      expect_diag(11105, "22008", kTypeDiff);
    }
  }
}

// The type is compared before the value is checked.
TEST_F(QWZDateTimeAssignTest, TypeBeforeValue) {
  QWZDateTime *from = new_datetime(68);
  QWZDateTime *to = new_datetime(69);
  write_value(from, {0, 13, 0, 99, 99, 99, 0, 0, 0});
  EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_ERROR);
  expect_diag(11105, "22008", kTypeDiff);
}

TEST_F(QWZDateTimeAssignTest, InvalidSourceValue) {
  for (const Defect &defect : defects()) {
    for (ub2 type : kAllDatetimeTypes) {
      Value v = valid_value();
      defect.apply(v);
      const bool invalid = defect.examined(type) && defect.flag != 0;
      QWZDateTime *from = new_datetime(type);
      QWZDateTime *to = new_datetime(type);
      write_value(from, v);
      const Value before{3, 3, 3, 3, 3, 3, 3, 3, 3};
      write_value(to, before);
      const sword rc = QWZDateTimeAssign(env_, err_, from, to);
      if (invalid) {
        EXPECT_EQ(rc, QWZ_ERROR) << defect.name << " type " << type;
        EXPECT_EQ(read_value(to), before);
        expect_date_format_invalid();
      } else {
        EXPECT_EQ(rc, QWZ_SUCCESS) << defect.name << " type " << type;
        EXPECT_EQ(read_value(to), v);
        expect_clear();
      }
    }
  }
}

// Either descriptor failing validation prints parameter 4.
TEST_F(QWZDateTimeAssignTest, BadDescriptorsPrintParameter4) {
  QWZDateTime *good = new_datetime(68);
  write_value(good, valid_value());
  for (const BadHandle &h : bad_datetimes()) {
    auto *bad = static_cast<QWZDateTime *>(h.ptr);
    EXPECT_EQ(QWZDateTimeAssign(env_, err_, bad, good), QWZ_INVALID_HANDLE) << "from " << h.label;
    expect_null_param(4);
    EXPECT_EQ(QWZDateTimeAssign(env_, err_, good, bad), QWZ_INVALID_HANDLE) << "to " << h.label;
    expect_null_param(4);
    EXPECT_EQ(read_value(good), valid_value());
  }
}

TEST_F(QWZDateTimeAssignTest, BadContextHandle) {
  QWZDateTime *from = new_datetime(68);
  QWZDateTime *to = new_datetime(68);
  write_value(from, valid_value());
  for (const BadHandle &h : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeAssign(h.ptr, err_, from, to), QWZ_INVALID_HANDLE) << h.label;
    expect_invalid_handle();
    EXPECT_EQ(read_value(to), Value{});
  }
}

TEST_F(QWZDateTimeAssignTest, BadErrorHandle) {
  QWZDateTime *from = new_datetime(68);
  QWZDateTime *to = new_datetime(68);
  write_value(from, valid_value());
  for (const BadHandle &h : bad_error_handles()) {
    EXPECT_EQ(QWZDateTimeAssign(env_, static_cast<QWZError *>(h.ptr), from, to), QWZ_INVALID_HANDLE)
        << h.label;
    EXPECT_EQ(read_value(to), Value{});
  }
  expect_clear();
}

TEST_F(QWZDateTimeAssignTest, TraceNestsTheCheck) {
  QWZDateTime *from = new_datetime(69);
  QWZDateTime *to = new_datetime(69);
  write_value(from, valid_value());
  TraceCapture trace;
  ASSERT_EQ(QWZDateTimeAssign(session_, err_, from, to), QWZ_SUCCESS);
  auto &r = trace.records();
  ASSERT_EQ(r.size(), 4u);
  const std::vector<std::pair<ub4, ub4>> shape = {{146, 1}, {147, 1}, {147, 0}, {146, 0}};
  EXPECT_EQ(trace_shape(r), shape);
  const std::string outer = trace_record("QWZDateTimeAssign", {{"void*", hex12(session_)},
                                                               {"QWZError*", hex12(err_)},
                                                               {"const QWZDateTime*", hex12(from)},
                                                               {"QWZDateTime*", hex12(to)}});
  EXPECT_EQ(r[0].text, outer);
  EXPECT_EQ(r[3].text, outer);
  // The nested check is traced with its own arguments: the source and a
  // flags word of the caller's.
  const std::string prefix = "<QWZDateTimeCheck>\n\tvoid*     \t" + hex12(session_) +
                             "\n\tQWZError*     \t" + hex12(err_) +
                             "\n\tconst QWZDateTime*     \t" + hex12(from) + "\n\tub4*     \t0x";
  EXPECT_EQ(r[1].text.substr(0, prefix.size()), prefix);
  EXPECT_EQ(r[1].text, r[2].text);
  EXPECT_NE(r[1].text, prefix + "000000000000");
  EXPECT_EQ(r[2].status, 0);
  EXPECT_EQ(r[3].status, 0);
}

TEST_F(QWZDateTimeAssignTest, TraceOfFailures) {
  QWZDateTime *from = new_datetime(69);
  QWZDateTime *to = new_datetime(69);
  QWZDateTime *other = new_datetime(68);
  write_value(from, {2024, 13, 1, 0, 0, 0, 0, 0, 0});
  {
    TraceCapture trace;
    EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), QWZ_ERROR);
    const std::vector<std::pair<ub4, ub4>> shape = {{146, 1}, {147, 1}, {147, 0}};
    EXPECT_EQ(trace_shape(trace.records()), shape);
  }
  {
    TraceCapture trace;
    EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, other), QWZ_ERROR);
    const std::vector<std::pair<ub4, ub4>> shape = {{146, 1}};
    EXPECT_EQ(trace_shape(trace.records()), shape);
  }
}

// The nested check's non-zero status is returned as it is, with no exit
// record of the assignment and `to` unwritten.
TEST_F(QWZDateTimeAssignTest, NestedCheckStatusIsReturned) {
  QWZDateTime *from = new_datetime(69);
  QWZDateTime *to = new_datetime(69);
  write_value(from, valid_value());
  for (ub4 direction : {1u, 0u}) {
    SelectiveTrace trace(147, direction, 7);
    EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), 7);
    EXPECT_EQ(read_value(to), Value{});
    std::vector<std::pair<ub4, ub4>> shape = {{146, 1}, {147, 1}};
    if (direction == 0) shape.push_back({147, 0});
    EXPECT_EQ(trace.shape(), shape);
    expect_clear();
  }
}

TEST_F(QWZDateTimeAssignTest, ExitTraceResult) {
  QWZDateTime *from = new_datetime(69);
  QWZDateTime *to = new_datetime(69);
  write_value(from, valid_value());
  SelectiveTrace trace(146, 0, 5);
  EXPECT_EQ(QWZDateTimeAssign(env_, err_, from, to), 5);
  EXPECT_EQ(read_value(to), valid_value());
}

}  // namespace
