// QWZDateTimeConstruct.
#include "datetime_test_util.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>

using namespace qwz_test;

namespace {

QWZText *T(const char *s) { return reinterpret_cast<QWZText *>(const_cast<char *>(s)); }

// The arguments of one construction.
struct Args {
  sb2 year;
  ub1 month, day, hour, min, sec;
  ub4 fsec;
};

int month_length(int year, int month) {
  static const int days[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month != 2) return days[month];
  return (year % 4 == 0 && (year % 100 != 0 || year % 400 == 0)) ? 29 : 28;
}

class QWZDateTimeConstructTest : public DatetimeFixture {
 protected:
  sword construct(QWZDateTime *d, const Args &a, const char *tz = nullptr, std::size_t tz_length = 0) {
    return QWZDateTimeConstruct(env_, err_, d, a.year, a.month, a.day, a.hour, a.min, a.sec, a.fsec,
                                tz ? T(tz) : nullptr, tz_length);
  }
  // What a successful construction of a type stores, the zone aside.
  static Value stored(ub2 type, const Args &a) {
    switch (type) {
      case 65: return {a.year, a.month, a.day, 0, 0, 0, 0, 0, 0};
      case 66:
      case 67: return {0, 0, 0, a.hour, a.min, a.sec, a.fsec, 0, 0};
      default: return {a.year, a.month, a.day, a.hour, a.min, a.sec, a.fsec, 0, 0};
    }
  }
};

// Each type fills its own fields and zeroes the others; the zoned types
// take the local standard offset when no zone text is given.
TEST_F(QWZDateTimeConstructTest, EachTypeFillsItsFields) {
  ZoneGuard zone(kCet);
  const Args a{2024, 2, 29, 10, 20, 30, 123456789};
  for (ub2 type : {65, 66, 67, 68, 69}) {
    QWZDateTime *d = new_datetime(type);
    write_value(d, {1, 1, 1, 1, 1, 1, 1, 1, 1});
    ASSERT_EQ(construct(d, a), QWZ_SUCCESS) << type;
    Value want = stored(type, a);
    if (type == 67 || type == 69) want.tz_hour = 1;
    EXPECT_EQ(read_value(d), want) << type;
    EXPECT_EQ(d->hdr.type, type);
    expect_clear();
  }
}

TEST_F(QWZDateTimeConstructTest, NamedEdges) {
  ZoneGuard zone(kUtc);
  // A date ignores the time it is given; a time ignores its date.
  QWZDateTime *date = new_datetime(65);
  ASSERT_EQ(construct(date, {2024, 5, 17, 10, 0, 0, 0}), QWZ_SUCCESS);
  EXPECT_EQ(date->hour, 0);
  QWZDateTime *time = new_datetime(66);
  ASSERT_EQ(construct(time, {2020, 1, 1, 10, 0, 0, 0}), QWZ_SUCCESS);
  EXPECT_EQ(time->year, 0);
  // A time with zone keeps the fraction, which GetTime reports as 0.
  QWZDateTime *ttz = new_datetime(67);
  ASSERT_EQ(construct(ttz, {0, 0, 0, 10, 0, 0, 500}), QWZ_SUCCESS);
  EXPECT_EQ(ttz->fraction, 500u);
  ub1 h, m, s;
  ub4 fsec = 99;
  ASSERT_EQ(QWZDateTimeGetTime(env_, err_, ttz, &h, &m, &s, &fsec), QWZ_SUCCESS);
  EXPECT_EQ(fsec, 0u);
}

// Type 70 is not written at all, and its (unexamined) value passes.
TEST_F(QWZDateTimeConstructTest, Type70WritesNothing) {
  QWZDateTime *d = new_datetime(70);
  const Value before{-5, 99, 99, 99, 99, 99, 99, 99, 99};
  write_value(d, before);
  for (const Args &a : {Args{2024, 1, 1, 0, 0, 0, 0}, Args{0, 13, 0, 24, 60, 60, 0}}) {
    EXPECT_EQ(construct(d, a, "+05:30", 6), QWZ_SUCCESS);
    EXPECT_EQ(read_value(d), before);
    expect_clear();
  }
}

TEST_F(QWZDateTimeConstructTest, InvalidValueRestoresThePrevious) {
  ZoneGuard zone(kEst);
  const Value previous{2000, 1, 31, 1, 2, 3, 4, 5, 6};
  const struct {
    ub2 type;
    Args a;
  } rows[] = {
      {65, {2024, 13, 1, 0, 0, 0, 0}}, {65, {2023, 2, 29, 0, 0, 0, 0}}, {65, {0, 1, 1, 0, 0, 0, 0}},
      {65, {-4713, 1, 1, 0, 0, 0, 0}}, {65, {10000, 1, 1, 0, 0, 0, 0}}, {65, {2024, 4, 31, 0, 0, 0, 0}},
      {65, {2024, 0, 1, 0, 0, 0, 0}},  {65, {2024, 1, 0, 0, 0, 0, 0}},  {66, {2024, 1, 1, 24, 0, 0, 0}},
      {66, {0, 0, 0, 0, 60, 0, 0}},    {67, {0, 0, 0, 0, 0, 60, 0}},    {68, {2024, 1, 1, 255, 0, 0, 0}},
      {68, {1900, 2, 29, 0, 0, 0, 0}}, {69, {2024, 13, 1, 0, 0, 0, 0}}, {69, {2024, 1, 1, 0, 0, 99, 0}},
  };
  for (const auto &row : rows) {
    QWZDateTime *d = new_datetime(row.type);
    write_value(d, previous);
    EXPECT_EQ(construct(d, row.a), QWZ_ERROR) << row.type;
    expect_date_format_invalid();
    EXPECT_EQ(read_value(d), previous);
    EXPECT_EQ(d->hdr.type, row.type);
  }
}

// Month to second are put back from their low bytes only.
TEST_F(QWZDateTimeConstructTest, RestoreKeepsLowBytes) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, {-32768, 0x0105, 0x0203, 300, 65535, 256, 0xFFFFFFFFu, -128, 127});
  EXPECT_EQ(construct(d, {2024, 13, 1, 0, 0, 0, 0}), QWZ_ERROR);
  expect_date_format_invalid();
  EXPECT_EQ(read_value(d), (Value{-32768, 5, 3, 44, 255, 0, 0xFFFFFFFFu, -128, 127}));
}

// Fields a type does not examine are not checked: they are zeroed anyway.
TEST_F(QWZDateTimeConstructTest, OnlyTheTypesFieldsAreChecked) {
  ZoneGuard zone(kUtc);
  const Args bad_time{2024, 1, 1, 24, 60, 60, 0xFFFFFFFFu};
  const Args bad_date{0, 13, 40, 23, 59, 59, 0xFFFFFFFFu};
  QWZDateTime *date = new_datetime(65);
  EXPECT_EQ(construct(date, bad_time), QWZ_SUCCESS);
  EXPECT_EQ(read_value(date), (Value{2024, 1, 1, 0, 0, 0, 0, 0, 0}));
  for (ub2 type : {66, 67}) {
    QWZDateTime *time = new_datetime(type);
    EXPECT_EQ(construct(time, bad_date), QWZ_SUCCESS);
    EXPECT_EQ(read_value(time), (Value{0, 0, 0, 23, 59, 59, 0xFFFFFFFFu, 0, 0}));
  }
}

// Every day of several years, with generated times, read back through the
// getters.
TEST_F(QWZDateTimeConstructTest, EveryDayReadsBack) {
  ZoneGuard zone(kUtc);
  std::mt19937 rng(142);
  QWZDateTime *d = new_datetime(68);
  for (int year : {-4712, -1, 1, 1900, 2000, 2023, 2024, 9999}) {
    for (int month = 1; month <= 12; ++month) {
      for (int day = 0; day <= 32; ++day) {
        const Args a{static_cast<sb2>(year), static_cast<ub1>(month), static_cast<ub1>(day),
                     static_cast<ub1>(rng() % 24), static_cast<ub1>(rng() % 60),
                     static_cast<ub1>(rng() % 60), static_cast<ub4>(rng())};
        write_value(d, {});
        const bool valid = day >= 1 && day <= month_length(year, month);
        ASSERT_EQ(construct(d, a), valid ? QWZ_SUCCESS : QWZ_ERROR) << year << "-" << month << "-" << day;
        if (!valid) {
          EXPECT_EQ(read_value(d), Value{});
          continue;
        }
        sb2 y;
        ub1 mo, dd, h, mi, s;
        ub4 f;
        ASSERT_EQ(QWZDateTimeGetDate(env_, err_, d, &y, &mo, &dd), QWZ_SUCCESS);
        ASSERT_EQ(QWZDateTimeGetTime(env_, err_, d, &h, &mi, &s, &f), QWZ_SUCCESS);
        EXPECT_EQ(y, a.year);
        EXPECT_EQ(mo, a.month);
        EXPECT_EQ(dd, a.day);
        EXPECT_EQ(h, a.hour);
        EXPECT_EQ(mi, a.min);
        EXPECT_EQ(s, a.sec);
        EXPECT_EQ(f, a.fsec);
      }
    }
  }
}

// Every hour, minute and second argument value, for the time types.
TEST_F(QWZDateTimeConstructTest, EveryTimeArgument) {
  QWZDateTime *d = new_datetime(66);
  for (int v = 0; v <= 255; ++v) {
    const ub1 b = static_cast<ub1>(v);
    EXPECT_EQ(construct(d, {0, 0, 0, b, 0, 0, 0}), v <= 23 ? QWZ_SUCCESS : QWZ_ERROR) << v;
    EXPECT_EQ(construct(d, {0, 0, 0, 0, b, 0, 0}), v <= 59 ? QWZ_SUCCESS : QWZ_ERROR) << v;
    EXPECT_EQ(construct(d, {0, 0, 0, 0, 0, b, 0}), v <= 59 ? QWZ_SUCCESS : QWZ_ERROR) << v;
  }
}

// ---- the zone ----------------------------------------------------------------

TEST_F(QWZDateTimeConstructTest, LocalStandardOffsetWithoutZoneText) {
  const struct {
    const char *tz;
    sb1 h, m;
  } rows[] = {{kUtc, 0, 0}, {kCet, 1, 0}, {kEst, -5, 0}, {"NST3:30", -3, -30}, {"XST-1XDT,J1/0,J365/25", 1, 0}};
  for (const auto &row : rows) {
    ZoneGuard zone(row.tz);
    for (ub2 type : {67, 69}) {
      QWZDateTime *d = new_datetime(type);
      ASSERT_EQ(construct(d, {2024, 7, 1, 12, 0, 0, 0}), QWZ_SUCCESS);
      EXPECT_EQ(d->tz_hour, row.h) << row.tz;
      EXPECT_EQ(d->tz_minute, row.m) << row.tz;
    }
  }
}

TEST_F(QWZDateTimeConstructTest, ZoneText) {
  ZoneGuard zone(kCet);  // never used when a text is given
  const struct {
    const char *text;
    std::size_t length;
    sb1 h, m;
  } rows[] = {
      {"+05:30", 6, 5, 30},    {"-05:30", 6, -5, -30}, {"-03:30", 6, -3, -30}, {"+14:00", 6, 14, 0},
      {"-12:00", 6, -12, 0},   {"+00:00", 6, 0, 0},    {"-00:45", 6, 0, -45},  {" +09:15 ", 8, 9, 15},
      {"-12:59", 6, -12, -59},
      // The length bounds the text: "+05" alone.
      {"+05:30", 3, 5, 0},
      // An empty text is zone 0, not the local zone.
      {"+05:30", 0, 0, 0},     {"", 0, 0, 0},
      // A length beyond the text stops at its end.
      {"+05:30", 100, 5, 30},  {"+05:30", SIZE_MAX, 5, 30},
  };
  for (const auto &row : rows) {
    for (ub2 type : {67, 69}) {
      QWZDateTime *d = new_datetime(type);
      ASSERT_EQ(construct(d, {2024, 5, 17, 8, 9, 10, 11}, row.text, row.length), QWZ_SUCCESS)
          << row.text << " " << row.length;
      Value want = stored(type, {2024, 5, 17, 8, 9, 10, 11});
      want.tz_hour = row.h;
      want.tz_minute = row.m;
      EXPECT_EQ(read_value(d), want) << row.text << " " << row.length;
      expect_clear();
    }
  }
}

// A zone text in a block of exactly its characters and its NUL: read up to
// the NUL, and traced within its length.
TEST_F(QWZDateTimeConstructTest, ZoneTextInAnExactBlock) {
  auto text = std::make_unique<QWZText[]>(7);
  std::memcpy(text.get(), "+05:30", 7);
  QWZDateTime *d = new_datetime(69);
  ASSERT_EQ(QWZDateTimeConstruct(env_, err_, d, 2024, 1, 1, 0, 0, 0, 0, text.get(), 6), QWZ_SUCCESS);
  EXPECT_EQ(d->tz_hour, 5);
  EXPECT_EQ(d->tz_minute, 30);
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeConstruct(env_, err_, d, 2024, 1, 1, 0, 0, 0, 0, text.get(), 6), QWZ_SUCCESS);
    ASSERT_FALSE(trace.records().empty());
    EXPECT_NE(trace.records()[0].text.find("\tQWZText*     \t+05:30\n\tsize_t     \t6"), std::string::npos);
  }
}

// A zone text the reader rejects: its status comes back, the new fields
// stay written, no diagnostic is added.
TEST_F(QWZDateTimeConstructTest, RejectedZoneText) {
  for (const char *text : {"ab:cd", "05x30", "+05:30 x", "\xff\xfe", "+05:30 x y z"}) {
    for (ub2 type : {67, 69}) {
      QWZDateTime *d = new_datetime(type);
      write_value(d, {1999, 1, 1, 1, 1, 1, 1, 1, 1});
      EXPECT_EQ(construct(d, {2024, 5, 17, 8, 9, 10, 11}, text, std::strlen(text)), QWZ_ERROR) << text;
      expect_clear();
      EXPECT_EQ(read_value(d), stored(type, {2024, 5, 17, 8, 9, 10, 11})) << text;
    }
  }
}

// A zone out of range fails the check: the previous value comes back.
TEST_F(QWZDateTimeConstructTest, ZoneOutOfRange) {
  const Value previous{2000, 1, 2, 3, 4, 5, 6, 7, 8};
  for (const char *text : {"+15:00", "-13:00", "+05:60", "-05:60", "+99:99"}) {
    for (ub2 type : {67, 69}) {
      QWZDateTime *d = new_datetime(type);
      write_value(d, previous);
      EXPECT_EQ(construct(d, {2024, 5, 17, 8, 9, 10, 11}, text, std::strlen(text)), QWZ_ERROR) << text;
      expect_date_format_invalid();
      EXPECT_EQ(read_value(d), previous);
    }
  }
}

// Types without a zone never look at the text, whatever it holds.
TEST_F(QWZDateTimeConstructTest, ZoneTextIgnoredWithoutZone) {
  const char junk[] = "ab:cd";
  for (ub2 type : {65, 66, 68}) {
    QWZDateTime *d = new_datetime(type);
    EXPECT_EQ(construct(d, {2024, 5, 17, 8, 9, 10, 11}, junk, SIZE_MAX), QWZ_SUCCESS) << type;
    EXPECT_EQ(read_value(d), stored(type, {2024, 5, 17, 8, 9, 10, 11}));
  }
}

// ---- handles ------------------------------------------------------------------

TEST_F(QWZDateTimeConstructTest, BadHandles) {
  for (const BadHandle &h : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeConstruct(env_, err_, static_cast<QWZDateTime *>(h.ptr), 2024, 1, 1, 0, 0, 0, 0,
                                   nullptr, 0),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_invalid_handle();
  }
  QWZDateTime *d = new_datetime(69);
  for (const BadHandle &h : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeConstruct(h.ptr, err_, d, 2024, 1, 1, 0, 0, 0, 0, T("+01:00"), 6),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_invalid_handle();
  }
  for (const BadHandle &h : bad_error_handles())
    EXPECT_EQ(QWZDateTimeConstruct(env_, static_cast<QWZError *>(h.ptr), d, 2024, 1, 1, 0, 0, 0, 0,
                                   nullptr, 0),
              QWZ_INVALID_HANDLE);
  EXPECT_EQ(read_value(d), Value{});
}

TEST_F(QWZDateTimeConstructTest, BothContextKinds) {
  QWZDateTime *d = new_datetime(68);
  for (const BadHandle &h : good_contexts()) {
    EXPECT_EQ(QWZDateTimeConstruct(h.ptr, err_, d, 2024, 1, 1, 0, 0, 0, 0, nullptr, 0), QWZ_SUCCESS);
    expect_clear();
  }
}

// ---- trace ---------------------------------------------------------------------

std::string construct_record(void *hndl, QWZError *err, QWZDateTime *d, const Args &a,
                             const std::string &tz, std::size_t tz_length) {
  return trace_record("QWZDateTimeConstruct",
                      {{"void*", hex12(hndl)}, {"QWZError*", hex12(err)}, {"QWZDateTime*", hex12(d)},
                       {"sb2", dec(a.year)}, {"ub1", dec(a.month)}, {"ub1", dec(a.day)},
                       {"ub1", dec(a.hour)}, {"ub1", dec(a.min)}, {"ub1", dec(a.sec)},
                       {"ub4", std::to_string(a.fsec)}, {"QWZText*", tz},
                       {"size_t", std::to_string(tz_length)}});
}

TEST_F(QWZDateTimeConstructTest, TraceNestsTheCheck) {
  ZoneGuard zone(kUtc);
  QWZDateTime *d = new_datetime(69);
  const Args a{-4712, 1, 1, 0, 0, 0, 4294967295u};
  {
    TraceCapture trace;
    ASSERT_EQ(construct(d, a), QWZ_SUCCESS);
    auto &r = trace.records();
    const std::vector<std::pair<ub4, ub4>> shape = {{142, 1}, {147, 1}, {147, 0}, {142, 0}};
    ASSERT_EQ(trace_shape(r), shape);
    const std::string text = construct_record(env_, err_, d, a, "(null)", 0);
    EXPECT_EQ(r[0].text, text);
    EXPECT_EQ(r[3].text, text);
    EXPECT_EQ(r[3].status, 0);
    EXPECT_EQ(r[1].text.substr(0, 19), "<QWZDateTimeCheck>\n");
    EXPECT_NE(r[1].text.find("\tconst QWZDateTime*     \t" + hex12(d)), std::string::npos);
  }
  {
    // The text is traced up to its given length.
    TraceCapture trace;
    ASSERT_EQ(construct(d, a, "+05:30", 3), QWZ_SUCCESS);
    EXPECT_EQ(trace.records()[0].text, construct_record(env_, err_, d, a, "+05", 3));
  }
}

TEST_F(QWZDateTimeConstructTest, TraceOfFailures) {
  QWZDateTime *d = new_datetime(69);
  {
    // Invalid value: the check's pair, no exit record.
    TraceCapture trace;
    ASSERT_EQ(construct(d, {2024, 13, 1, 0, 0, 0, 0}), QWZ_ERROR);
    const std::vector<std::pair<ub4, ub4>> shape = {{142, 1}, {147, 1}, {147, 0}};
    EXPECT_EQ(trace_shape(trace.records()), shape);
  }
  {
    // Rejected zone text: no check, no exit record.
    TraceCapture trace;
    ASSERT_EQ(construct(d, {2024, 1, 1, 0, 0, 0, 0}, "ab:cd", 5), QWZ_ERROR);
    const std::vector<std::pair<ub4, ub4>> shape = {{142, 1}};
    EXPECT_EQ(trace_shape(trace.records()), shape);
    EXPECT_EQ(trace.records()[0].text, construct_record(env_, err_, d, {2024, 1, 1, 0, 0, 0, 0}, "ab:cd", 5));
  }
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeConstruct(nullptr, err_, d, 2024, 1, 1, 0, 0, 0, 0, nullptr, 0), QWZ_INVALID_HANDLE);
    EXPECT_EQ(trace.records().size(), 1u);
  }
}

// A non-zero status of the nested check is returned as it is: nothing is
// put back and there is no exit record.
TEST_F(QWZDateTimeConstructTest, NestedCheckStatusIsReturned) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, {2000, 1, 1, 0, 0, 0, 0, 0, 0});
  for (ub4 direction : {1u, 0u}) {
    SelectiveTrace trace(147, direction, 7);
    EXPECT_EQ(construct(d, {2024, 13, 1, 2, 3, 4, 5}), 7);
    EXPECT_EQ(read_value(d), (Value{2024, 13, 1, 2, 3, 4, 5, 0, 0}));
    std::vector<std::pair<ub4, ub4>> shape = {{142, 1}, {147, 1}};
    if (direction == 0) shape.push_back({147, 0});
    EXPECT_EQ(trace.shape(), shape);
    expect_clear();
  }
}

TEST_F(QWZDateTimeConstructTest, TraceResults) {
  QWZDateTime *d = new_datetime(68);
  {
    TraceCapture trace;
    trace.set_results(3, 0);
    EXPECT_EQ(construct(d, {2024, 1, 1, 0, 0, 0, 0}), 3);
    EXPECT_EQ(read_value(d), Value{});
  }
  {
    SelectiveTrace trace(142, 0, 4);
    EXPECT_EQ(construct(d, {2024, 1, 1, 0, 0, 0, 0}), 4);
    EXPECT_EQ(d->year, 2024);
  }
}

}  // namespace
