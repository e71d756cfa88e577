// The datetime getters, QWZDateTimeSysTimeStamp, and the clock and zone
// helpers qwz_setup_locate_date and qwz_setup_local_timezone.
#include "datetime_test_util.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <sys/time.h>

using namespace qwz_test;

namespace {

constexpr char kNotADate[] = "not a date.";
constexpr char kDateOutputNull[] = "the year or month or day could not be null.";
constexpr char kTimeOutputNull[] = "the hour or minute or second or fraction could not be null.";
constexpr char kFieldNotFound[] = "specified field not found in datetime or interval.";
constexpr char kNoTimeZone[] = "datetime does not contain a time zone.";
constexpr char kZoneOutputNull[] = "the hour or minute could not be null.";
constexpr char kBufferNull[] = "The buffer is null.";

// A zone whose summer time lasts all year: standard +1, clock +2.
constexpr char kAlwaysSummer[] = "XST-1XDT,J1/0,J365/25";

bool has_zone(ub2 t) { return t == 67 || t == 69; }

// ---- QWZDateTimeGetDate ----------------------------------------------------------

class QWZDateTimeGetDateTest : public DatetimeFixture {};

TEST_F(QWZDateTimeGetDateTest, EveryType) {
  const Value v{-4712, 2, 29, 23, 59, 59, 999, 5, 30};
  for (ub2 type : kAllDatetimeTypes) {
    QWZDateTime *d = new_datetime(type);
    write_value(d, v);
    sb2 year = 1;
    ub1 month = 1, day = 1;
    EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, &year, &month, &day), QWZ_SUCCESS) << type;
    const bool time_only = type == 66 || type == 67;
    EXPECT_EQ(year, time_only ? 0 : -4712);
    EXPECT_EQ(month, time_only ? 0 : 2);
    EXPECT_EQ(day, time_only ? 0 : 29);
    EXPECT_EQ(read_value(d), v);
    expect_clear();
  }
}

// Month and day come out as their low bytes; the date is not checked.
TEST_F(QWZDateTimeGetDateTest, LowBytesUnchecked) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, {0, 0x1234, 0x0100, 0, 0, 0, 0, 0, 0});
  sb2 year = 1;
  ub1 month = 1, day = 1;
  EXPECT_EQ(QWZDateTimeGetDate(session_, err_, d, &year, &month, &day), QWZ_SUCCESS);
  EXPECT_EQ(year, 0);
  EXPECT_EQ(month, 0x34);
  EXPECT_EQ(day, 0);
  write_value(d, {32767, 13, 40, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(QWZDateTimeGetDate(session_, err_, d, &year, &month, &day), QWZ_SUCCESS);
  EXPECT_EQ(year, 32767);
  EXPECT_EQ(month, 13);
  EXPECT_EQ(day, 40);
}

TEST_F(QWZDateTimeGetDateTest, AllZeroIsNotADate) {
  for (ub2 type : {65, 68, 69, 70}) {
    QWZDateTime *d = new_datetime(type);
    write_value(d, {0, 0, 0, 10, 20, 30, 1, 1, 1});
    sb2 year = 7;
    ub1 month = 7, day = 7;
    EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, &year, &month, &day), QWZ_ERROR) << type;
    expect_diag(800057, "", kNotADate);
    EXPECT_EQ(year, 7);
    EXPECT_EQ(month, 7);
    EXPECT_EQ(day, 7);
  }
  // One non-zero field is enough.
  QWZDateTime *d = new_datetime(68);
  write_value(d, {0, 0, 1, 0, 0, 0, 0, 0, 0});
  sb2 year = 7;
  ub1 month = 7, day = 7;
  EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, &year, &month, &day), QWZ_SUCCESS);
  EXPECT_EQ(day, 1);
  // A time descriptor reports zeros, not an error.
  QWZDateTime *t = new_datetime(66);
  EXPECT_EQ(QWZDateTimeGetDate(env_, err_, t, &year, &month, &day), QWZ_SUCCESS);
  EXPECT_EQ(year, 0);
}

TEST_F(QWZDateTimeGetDateTest, NullOutputs) {
  for (ub2 type : kAllDatetimeTypes) {
    QWZDateTime *d = new_datetime(type);
    sb2 year = 7;
    ub1 month = 7, day = 7;
    for (int which = 1; which < 8; ++which) {
      sb2 *y = (which & 1) ? nullptr : &year;
      ub1 *m = (which & 2) ? nullptr : &month;
      ub1 *dd = (which & 4) ? nullptr : &day;
      EXPECT_EQ(QWZDateTimeGetDate(env_, err_, d, y, m, dd), QWZ_ERROR);
      expect_diag(800058, "", kDateOutputNull);
    }
    EXPECT_EQ(year, 7);
    EXPECT_EQ(month, 7);
    EXPECT_EQ(day, 7);
  }
}

TEST_F(QWZDateTimeGetDateTest, BadHandles) {
  sb2 year = 7;
  ub1 month = 7, day = 7;
  for (const BadHandle &h : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeGetDate(env_, err_, static_cast<QWZDateTime *>(h.ptr), &year, &month, &day),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_invalid_handle();
  }
  QWZDateTime *d = new_datetime(68);
  write_value(d, {2024, 1, 2, 0, 0, 0, 0, 0, 0});
  for (const BadHandle &h : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeGetDate(h.ptr, err_, d, &year, &month, &day), QWZ_INVALID_HANDLE) << h.label;
    expect_invalid_handle();
  }
  for (const BadHandle &h : bad_error_handles())
    EXPECT_EQ(QWZDateTimeGetDate(env_, static_cast<QWZError *>(h.ptr), d, &year, &month, &day),
              QWZ_INVALID_HANDLE)
        << h.label;
  EXPECT_EQ(year, 7);
  // Handles before outputs.
  EXPECT_EQ(QWZDateTimeGetDate(env_, err_, nullptr, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}

TEST_F(QWZDateTimeGetDateTest, Trace) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, {2024, 1, 2, 0, 0, 0, 0, 0, 0});
  sb2 year;
  ub1 month, day;
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeGetDate(env_, err_, d, &year, &month, &day), QWZ_SUCCESS);
    const std::string text = trace_record(
        "QWZDateTimeGetDate", {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                               {"const QWZDateTime*", hex12(d)}, {"sb2*", hex12(&year)},
                               {"ub1*", hex12(&month)}, {"ub1*", hex12(&day)}});
    ASSERT_EQ(trace.records().size(), 2u);
    EXPECT_EQ(trace.records()[0].text, text);
    EXPECT_EQ(trace.records()[1].text, text);
    EXPECT_EQ(trace.records()[0].api_id, 143u);
  }
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeGetDate(env_, err_, d, nullptr, &month, nullptr), QWZ_ERROR);
    ASSERT_EQ(trace.records().size(), 1u);
    EXPECT_EQ(trace.records()[0].text,
              trace_record("QWZDateTimeGetDate",
                           {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                            {"const QWZDateTime*", hex12(d)}, {"sb2*", hex12(qwz::kNullText)},
                            {"ub1*", hex12(&month)}, {"ub1*", hex12(qwz::kNullText)}}));
  }
}

// ---- QWZDateTimeGetTime ----------------------------------------------------------

class QWZDateTimeGetTimeTest : public DatetimeFixture {};

TEST_F(QWZDateTimeGetTimeTest, EveryType) {
  const Value v{2024, 2, 29, 23, 59, 58, 123456789, 5, 30};
  for (ub2 type : kAllDatetimeTypes) {
    QWZDateTime *d = new_datetime(type);
    write_value(d, v);
    ub1 hour = 7, min = 7, sec = 7;
    ub4 fsec = 7;
    const sword rc = QWZDateTimeGetTime(env_, err_, d, &hour, &min, &sec, &fsec);
    if (type == 65) {
      EXPECT_EQ(rc, QWZ_ERROR);
      expect_diag(800060, "", kFieldNotFound);
      EXPECT_EQ(hour, 7);
      EXPECT_EQ(fsec, 7u);
      continue;
    }
    EXPECT_EQ(rc, QWZ_SUCCESS) << type;
    EXPECT_EQ(hour, 23);
    EXPECT_EQ(min, 59);
    EXPECT_EQ(sec, 58);
    // Times report no fraction although they hold one.
    EXPECT_EQ(fsec, (type == 66 || type == 67) ? 0u : 123456789u) << type;
    expect_clear();
  }
}

TEST_F(QWZDateTimeGetTimeTest, LowBytesUnchecked) {
  QWZDateTime *d = new_datetime(69);
  write_value(d, {0, 0, 0, 65535, 256, 60, 0xFFFFFFFFu, 0, 0});
  ub1 hour, min, sec;
  ub4 fsec;
  EXPECT_EQ(QWZDateTimeGetTime(env_, err_, d, &hour, &min, &sec, &fsec), QWZ_SUCCESS);
  EXPECT_EQ(hour, 255);
  EXPECT_EQ(min, 0);
  EXPECT_EQ(sec, 60);
  EXPECT_EQ(fsec, 0xFFFFFFFFu);
}

TEST_F(QWZDateTimeGetTimeTest, NullOutputs) {
  for (ub2 type : kAllDatetimeTypes) {
    QWZDateTime *d = new_datetime(type);
    ub1 hour = 7, min = 7, sec = 7;
    ub4 fsec = 7;
    for (int mask = 1; mask < 16; ++mask) {
      EXPECT_EQ(QWZDateTimeGetTime(env_, err_, d, (mask & 1) ? nullptr : &hour,
                                   (mask & 2) ? nullptr : &min, (mask & 4) ? nullptr : &sec,
                                   (mask & 8) ? nullptr : &fsec),
                QWZ_ERROR);
      // Before the type-65 refusal.
      expect_diag(800059, "", kTimeOutputNull);
    }
    EXPECT_EQ(hour, 7);
    EXPECT_EQ(min, 7);
    EXPECT_EQ(sec, 7);
    EXPECT_EQ(fsec, 7u);
  }
}

TEST_F(QWZDateTimeGetTimeTest, BadHandles) {
  ub1 hour = 7, min = 7, sec = 7;
  ub4 fsec = 7;
  for (const BadHandle &h : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeGetTime(env_, err_, static_cast<QWZDateTime *>(h.ptr), &hour, &min, &sec, &fsec),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_invalid_handle();
  }
  QWZDateTime *d = new_datetime(68);
  for (const BadHandle &h : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeGetTime(h.ptr, err_, d, &hour, &min, &sec, &fsec), QWZ_INVALID_HANDLE) << h.label;
    expect_invalid_handle();
  }
  for (const BadHandle &h : bad_error_handles())
    EXPECT_EQ(QWZDateTimeGetTime(env_, static_cast<QWZError *>(h.ptr), d, &hour, &min, &sec, &fsec),
              QWZ_INVALID_HANDLE);
  EXPECT_EQ(hour, 7);
}

TEST_F(QWZDateTimeGetTimeTest, Trace) {
  QWZDateTime *d = new_datetime(68);
  ub1 hour, min, sec;
  ub4 fsec;
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeGetTime(session_, err_, d, &hour, &min, &sec, &fsec), QWZ_SUCCESS);
    const std::string text = trace_record(
        "QWZDateTimeGetTime", {{"void*", hex12(session_)}, {"QWZError*", hex12(err_)},
                               {"QWZDateTime*", hex12(d)}, {"ub1*", hex12(&hour)},
                               {"ub1*", hex12(&min)}, {"ub1*", hex12(&sec)}, {"ub4*", hex12(&fsec)}});
    ASSERT_EQ(trace.records().size(), 2u);
    EXPECT_EQ(trace.records()[0].text, text);
    EXPECT_EQ(trace.records()[1].text, text);
    EXPECT_EQ(trace.records()[1].api_id, 144u);
  }
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeGetTime(session_, err_, d, &hour, nullptr, &sec, nullptr), QWZ_ERROR);
    ASSERT_EQ(trace.records().size(), 1u);
    EXPECT_EQ(trace.records()[0].text,
              trace_record("QWZDateTimeGetTime",
                           {{"void*", hex12(session_)}, {"QWZError*", hex12(err_)},
                            {"QWZDateTime*", hex12(d)}, {"ub1*", hex12(&hour)},
                            {"ub1*", hex12(qwz::kNullText)}, {"ub1*", hex12(&sec)},
                            {"ub4*", hex12(qwz::kNullText)}}));
  }
}

// ---- QWZDateTimeGetTimeZoneOffset ------------------------------------------------

class QWZDateTimeGetTimeZoneOffsetTest : public DatetimeFixture {};

TEST_F(QWZDateTimeGetTimeZoneOffsetTest, EveryType) {
  for (ub2 type : kAllDatetimeTypes) {
    QWZDateTime *d = new_datetime(type);
    write_value(d, {2024, 1, 1, 0, 0, 0, 0, -3, -30});
    sb1 hour = 7, min = 7;
    const sword rc = QWZDateTimeGetTimeZoneOffset(env_, err_, d, &hour, &min);
    if (has_zone(type)) {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_EQ(hour, -3);
      EXPECT_EQ(min, -30);
      expect_clear();
    } else {
      EXPECT_EQ(rc, QWZ_ERROR) << type;
      expect_diag(800083, "", kNoTimeZone);
      EXPECT_EQ(hour, 7);
      EXPECT_EQ(min, 7);
    }
  }
}

// Whatever the descriptor holds is reported, in or out of range.
TEST_F(QWZDateTimeGetTimeZoneOffsetTest, AnyOffset) {
  QWZDateTime *d = new_datetime(69);
  for (int h = -128; h <= 127; h += 5) {
    for (int m : {-128, -59, -1, 0, 1, 59, 127}) {
      d->tz_hour = static_cast<sb1>(h);
      d->tz_minute = static_cast<sb1>(m);
      sb1 hour = 0, min = 0;
      ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &hour, &min), QWZ_SUCCESS);
      EXPECT_EQ(hour, h);
      EXPECT_EQ(min, m);
    }
  }
}

TEST_F(QWZDateTimeGetTimeZoneOffsetTest, NullOutputs) {
  for (ub2 type : kAllDatetimeTypes) {
    QWZDateTime *d = new_datetime(type);
    sb1 v = 7;
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, nullptr, &v), QWZ_ERROR);
    expect_diag(800084, "", kZoneOutputNull);
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &v, nullptr), QWZ_ERROR);
    expect_diag(800084, "", kZoneOutputNull);
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, nullptr, nullptr), QWZ_ERROR);
    expect_diag(800084, "", kZoneOutputNull);
    EXPECT_EQ(v, 7);
  }
}

TEST_F(QWZDateTimeGetTimeZoneOffsetTest, BadHandles) {
  sb1 hour = 7, min = 7;
  for (const BadHandle &h : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, static_cast<QWZDateTime *>(h.ptr), &hour, &min),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_invalid_handle();
  }
  QWZDateTime *d = new_datetime(69);
  for (const BadHandle &h : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(h.ptr, err_, d, &hour, &min), QWZ_INVALID_HANDLE) << h.label;
    expect_invalid_handle();
  }
  for (const BadHandle &h : bad_error_handles())
    EXPECT_EQ(QWZDateTimeGetTimeZoneOffset(env_, static_cast<QWZError *>(h.ptr), d, &hour, &min),
              QWZ_INVALID_HANDLE);
  EXPECT_EQ(hour, 7);
}

TEST_F(QWZDateTimeGetTimeZoneOffsetTest, Trace) {
  QWZDateTime *d = new_datetime(67);
  sb1 hour, min;
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, &hour, &min), QWZ_SUCCESS);
    const std::string text = trace_record(
        "QWZDateTimeGetTimeZoneOffset", {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                                         {"const QWZDateTime*", hex12(d)}, {"sb1*", hex12(&hour)},
                                         {"sb1*", hex12(&min)}});
    ASSERT_EQ(trace.records().size(), 2u);
    EXPECT_EQ(trace.records()[0].text, text);
    EXPECT_EQ(trace.records()[1].text, text);
    EXPECT_EQ(trace.records()[0].api_id, 145u);
  }
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeGetTimeZoneOffset(env_, err_, d, nullptr, &min), QWZ_ERROR);
    ASSERT_EQ(trace.records().size(), 1u);
    EXPECT_EQ(trace.records()[0].text,
              trace_record("QWZDateTimeGetTimeZoneOffset",
                           {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                            {"const QWZDateTime*", hex12(d)}, {"sb1*", hex12(qwz::kNullText)},
                            {"sb1*", hex12(&min)}}));
  }
}

// ---- QWZDateTimeGetTimeZoneName --------------------------------------------------

class QWZDateTimeGetTimeZoneNameTest : public DatetimeFixture {
 protected:
  // Runs the call with an output buffer of exactly `size` bytes.
  sword name(QWZDateTime *d, ub4 size, std::string *text, ub4 *len_out) {
    auto buf = std::make_unique<ub1[]>(size == 0 ? 1 : size);
    std::memset(buf.get(), 0xAA, size == 0 ? 1 : size);
    ub4 len = size;
    const sword rc = QWZDateTimeGetTimeZoneName(env_, err_, d, buf.get(), &len);
    if (rc == 0) text->assign(reinterpret_cast<const char *>(buf.get()));
    else *text = std::string(reinterpret_cast<const char *>(buf.get()), size == 0 ? 1 : size);
    *len_out = len;
    return rc;
  }
};

TEST_F(QWZDateTimeGetTimeZoneNameTest, NamedEdges) {
  QWZDateTime *d = new_datetime(69);
  const struct {
    sb1 h, m;
    const char *text;
  } rows[] = {
      {-3, -30, "-03:30"}, {5, 30, "+05:30"}, {0, 0, "+00:00"}, {0, -30, "+00:30"},
      {-12, 0, "-12:00"},  {14, 0, "+14:00"}, {-3, 30, "-03:30"}, {9, -45, "+09:45"},
  };
  for (const auto &row : rows) {
    d->tz_hour = row.h;
    d->tz_minute = row.m;
    std::string text;
    ub4 len = 0;
    EXPECT_EQ(name(d, 7, &text, &len), QWZ_SUCCESS);
    EXPECT_EQ(text, row.text);
    EXPECT_EQ(len, 6u);
    expect_clear();
  }
}

// Every offset in range, in a buffer of exactly seven bytes.
TEST_F(QWZDateTimeGetTimeZoneNameTest, EveryOffsetInRange) {
  for (ub2 type : {67, 69}) {
    QWZDateTime *d = new_datetime(type);
    for (int h = -12; h <= 14; ++h) {
      for (int m = -59; m <= 59; ++m) {
        d->tz_hour = static_cast<sb1>(h);
        d->tz_minute = static_cast<sb1>(m);
        char want[16];
        std::snprintf(want, sizeof want, "%c%02d:%02d", h < 0 ? '-' : '+', std::abs(h), std::abs(m));
        std::string text;
        ub4 len = 0;
        ASSERT_EQ(name(d, 7, &text, &len), QWZ_SUCCESS);
        ASSERT_EQ(text, want);
        ASSERT_EQ(len, 6u);
      }
    }
  }
}

TEST_F(QWZDateTimeGetTimeZoneNameTest, BufferLength) {
  QWZDateTime *d = new_datetime(69);
  d->tz_hour = 5;
  d->tz_minute = 30;
  for (ub4 size = 0; size < 7; ++size) {
    std::string text;
    ub4 len = 0;
    EXPECT_EQ(name(d, size, &text, &len), QWZ_ERROR) << size;
    expect_diag(800027, "", kBufferNull);
    EXPECT_EQ(len, size);
    EXPECT_EQ(static_cast<ub1>(text[0]), 0xAA);
  }
  for (ub4 size : {7u, 8u, 100u}) {
    std::string text;
    ub4 len = 0;
    EXPECT_EQ(name(d, size, &text, &len), QWZ_SUCCESS) << size;
    EXPECT_EQ(text, "+05:30");
    EXPECT_EQ(len, 6u);
  }
}

// An offset out of range prints longer than six characters: it is written
// only when it fits the caller's length, NUL included.
TEST_F(QWZDateTimeGetTimeZoneNameTest, LongTextNeverOverflows) {
  QWZDateTime *d = new_datetime(69);
  const struct {
    sb1 h, m;
    const char *text;
  } rows[] = {{-128, -128, "-128:128"}, {100, 5, "+100:05"}, {5, 100, "+05:100"}, {127, 127, "+127:127"}};
  for (const auto &row : rows) {
    d->tz_hour = row.h;
    d->tz_minute = row.m;
    const ub4 n = static_cast<ub4>(std::strlen(row.text));
    for (ub4 size = 7; size <= n; ++size) {
      std::string text;
      ub4 len = 0;
      EXPECT_EQ(name(d, size, &text, &len), QWZ_ERROR) << row.text << " in " << size;
      expect_diag(800027, "", kBufferNull);
      EXPECT_EQ(len, size);
    }
    std::string text;
    ub4 len = 0;
    EXPECT_EQ(name(d, n + 1, &text, &len), QWZ_SUCCESS);
    EXPECT_EQ(text, row.text);
    EXPECT_EQ(len, n);
  }
}

TEST_F(QWZDateTimeGetTimeZoneNameTest, NoZone) {
  for (ub2 type : {65, 66, 68, 70}) {
    QWZDateTime *d = new_datetime(type);
    std::string text;
    ub4 len = 0;
    EXPECT_EQ(name(d, 7, &text, &len), QWZ_ERROR) << type;
    expect_diag(800083, "", kNoTimeZone);
    EXPECT_EQ(len, 7u);
    // The buffer length is looked at first.
    EXPECT_EQ(name(d, 6, &text, &len), QWZ_ERROR);
    expect_diag(800027, "", kBufferNull);
  }
}

TEST_F(QWZDateTimeGetTimeZoneNameTest, NullBufferOrLength) {
  for (ub2 type : kAllDatetimeTypes) {
    QWZDateTime *d = new_datetime(type);
    ub1 buf[8] = {};
    ub4 len = 8;
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, nullptr, &len), QWZ_ERROR);
    expect_diag(800027, "", kBufferNull);
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, nullptr), QWZ_ERROR);
    expect_diag(800027, "", kBufferNull);
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, nullptr, nullptr), QWZ_ERROR);
    expect_diag(800027, "", kBufferNull);
    EXPECT_EQ(len, 8u);
  }
}

TEST_F(QWZDateTimeGetTimeZoneNameTest, BadHandles) {
  ub1 buf[8] = {};
  ub4 len = 8;
  for (const BadHandle &h : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, static_cast<QWZDateTime *>(h.ptr), buf, &len),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_invalid_handle();
  }
  QWZDateTime *d = new_datetime(69);
  for (const BadHandle &h : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(h.ptr, err_, d, buf, &len), QWZ_INVALID_HANDLE) << h.label;
    expect_invalid_handle();
  }
  for (const BadHandle &h : bad_error_handles())
    EXPECT_EQ(QWZDateTimeGetTimeZoneName(env_, static_cast<QWZError *>(h.ptr), d, buf, &len),
              QWZ_INVALID_HANDLE);
  EXPECT_EQ(len, 8u);
  EXPECT_EQ(buf[0], 0);
}

TEST_F(QWZDateTimeGetTimeZoneNameTest, Trace) {
  QWZDateTime *d = new_datetime(69);
  ub1 buf[8];
  ub4 len = 8;
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, buf, &len), QWZ_SUCCESS);
    const std::string text = trace_record(
        "QWZDateTimeGetTimeZoneName", {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                                       {"QWZDateTime*", hex12(d)}, {"ub1*", hex12(buf)},
                                       {"ub4*", hex12(&len)}});
    ASSERT_EQ(trace.records().size(), 2u);
    EXPECT_EQ(trace.records()[0].text, text);
    EXPECT_EQ(trace.records()[1].text, text);
    EXPECT_EQ(trace.records()[0].api_id, 176u);
  }
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeGetTimeZoneName(env_, err_, d, nullptr, nullptr), QWZ_ERROR);
    ASSERT_EQ(trace.records().size(), 1u);
    EXPECT_EQ(trace.records()[0].text,
              trace_record("QWZDateTimeGetTimeZoneName",
                           {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                            {"QWZDateTime*", hex12(d)}, {"ub1*", hex12(qwz::kNullText)},
                            {"ub4*", hex12(qwz::kNullText)}}));
  }
}

// ---- qwz_setup_local_timezone and qwz_setup_locate_date --------------------------

struct ZoneOffset {
  const char *tz;
  sb1 hour, minute;
};

// The standard offset, never the summer one; minutes carry the sign.
constexpr ZoneOffset kZoneOffsets[] = {
    {kUtc, 0, 0},          {kCet, 1, 0},          {kEst, -5, 0},     {"IST-5:30", 5, 30},
    {"NST3:30", -3, -30},  {"<+0545>-5:45", 5, 45}, {"<-12>12", -12, 0}, {"<+14>-14", 14, 0},
    {kAlwaysSummer, 1, 0}, {"XST3:30XDT,J1/0,J365/25", -3, -30},
};

TEST(QwzSetupLocalTimezone, StandardOffsetOfTheZone) {
  for (const ZoneOffset &z : kZoneOffsets) {
    ZoneGuard guard(z.tz);
    QWZDateTime d{};
    write_value(&d, {2024, 7, 1, 12, 0, 0, 5, 99, 99});
    qwz_setup_local_timezone(&d);
    EXPECT_EQ(d.tz_hour, z.hour) << z.tz;
    EXPECT_EQ(d.tz_minute, z.minute) << z.tz;
    EXPECT_EQ(read_value(&d), (Value{2024, 7, 1, 12, 0, 0, 5, z.hour, z.minute}));
  }
  qwz_setup_local_timezone(nullptr);
}

// The zone is read afresh on every call.
TEST(QwzSetupLocalTimezone, FollowsAZoneChange) {
  QWZDateTime d{};
  {
    ZoneGuard guard(kCet);
    qwz_setup_local_timezone(&d);
    EXPECT_EQ(d.tz_hour, 1);
  }
  {
    ZoneGuard guard(kEst);
    qwz_setup_local_timezone(&d);
    EXPECT_EQ(d.tz_hour, -5);
  }
}

void local_date_now(int *y, int *m, int *d) {
  tzset();
  const time_t now = time(nullptr);
  struct tm t;
  localtime_r(&now, &t);
  *y = t.tm_year + 1900;
  *m = t.tm_mon + 1;
  *d = t.tm_mday;
}

TEST(QwzSetupLocateDate, TodaysLocalDate) {
  for (const char *tz : {kUtc, kCet, kEst, "<+14>-14", "<-12>12", kAlwaysSummer}) {
    ZoneGuard guard(tz);
    for (int attempt = 0; attempt < 3; ++attempt) {
      int y0, m0, d0, y1, m1, d1;
      QWZDateTime d{};
      write_value(&d, {1, 1, 1, 10, 20, 30, 40, 5, 6});
      local_date_now(&y0, &m0, &d0);
      qwz_setup_locate_date(&d);
      local_date_now(&y1, &m1, &d1);
      if (y0 != y1 || m0 != m1 || d0 != d1) continue;  // midnight passed: again
      EXPECT_EQ(read_value(&d), (Value{static_cast<sb2>(y0), static_cast<ub2>(m0), static_cast<ub2>(d0),
                                       10, 20, 30, 40, 5, 6}))
          << tz;
      break;
    }
  }
  qwz_setup_locate_date(nullptr);
}

// ---- QWZDateTimeSysTimeStamp -----------------------------------------------------

class QWZDateTimeSysTimeStampTest : public DatetimeFixture {
 protected:
  // Microseconds since the epoch now.
  static long long now_us() {
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    return static_cast<long long>(tv.tv_sec) * 1000000 + tv.tv_usec;
  }
  // The local clock fields at a whole second.
  static Value local_fields(long long us) {
    const time_t s = static_cast<time_t>(us / 1000000);
    struct tm t;
    localtime_r(&s, &t);
    return {static_cast<sb2>(t.tm_year + 1900), static_cast<ub2>(t.tm_mon + 1), static_cast<ub2>(t.tm_mday),
            static_cast<ub2>(t.tm_hour), static_cast<ub2>(t.tm_min), static_cast<ub2>(t.tm_sec), 0, 0, 0};
  }
};

// The wall clock of the zone (summer time applied) with its standard offset,
// the fraction in units of ten microseconds, the type turned into 69.
TEST_F(QWZDateTimeSysTimeStampTest, AgainstTheClock) {
  for (const ZoneOffset &z : kZoneOffsets) {
    ZoneGuard guard(z.tz);
    for (ub2 type : kAllDatetimeTypes) {
      QWZDateTime *d = new_datetime(type);
      write_value(d, {1, 1, 1, 1, 1, 1, 1, 1, 1});
      const long long before = now_us();
      ASSERT_EQ(QWZDateTimeSysTimeStamp(env_, err_, d), QWZ_SUCCESS);
      const long long after = now_us();
      expect_clear();
      EXPECT_EQ(d->hdr.type, 69);
      EXPECT_LT(d->fraction, 100000u);
      EXPECT_EQ(d->tz_hour, z.hour) << z.tz;
      EXPECT_EQ(d->tz_minute, z.minute) << z.tz;
      Value got = read_value(d);
      const ub4 fraction = got.fraction;
      got.fraction = 0;
      got.tz_hour = got.tz_minute = 0;
      // The stamp's second is that of `before` or of `after`.
      const bool second_of_before = got == local_fields(before);
      const bool second_of_after = got == local_fields(after);
      ASSERT_TRUE(second_of_before || second_of_after) << z.tz;
      const long long second_us = (second_of_before ? before : after) / 1000000 * 1000000;
      const long long stamp_us = second_us + static_cast<long long>(fraction) * 10;
      EXPECT_GE(stamp_us, before / 10 * 10);
      EXPECT_LE(stamp_us, after);
    }
  }
}

// In UTC the fields are plain UTC: compare through timegm as well.
TEST_F(QWZDateTimeSysTimeStampTest, UtcWithinTolerance) {
  ZoneGuard guard(kUtc);
  QWZDateTime *d = new_datetime(65);
  const long long before = now_us();
  ASSERT_EQ(QWZDateTimeSysTimeStamp(session_, err_, d), QWZ_SUCCESS);
  const long long after = now_us();
  struct tm t {};
  t.tm_year = d->year - 1900;
  t.tm_mon = d->month - 1;
  t.tm_mday = d->day;
  t.tm_hour = d->hour;
  t.tm_min = d->minute;
  t.tm_sec = d->second;
  const long long stamp_us = static_cast<long long>(timegm(&t)) * 1000000 + d->fraction * 10LL;
  EXPECT_GE(stamp_us, before - 10);
  EXPECT_LE(stamp_us, after);
  EXPECT_LT(after - before, 2000000);
}

// A zone in summer time all year: the fields show the summer clock while
// the stored offset stays the standard one.
TEST_F(QWZDateTimeSysTimeStampTest, SummerClockStandardOffset) {
  ZoneGuard guard(kAlwaysSummer);
  QWZDateTime *d = new_datetime(69);
  const long long before = now_us();
  ASSERT_EQ(QWZDateTimeSysTimeStamp(env_, err_, d), QWZ_SUCCESS);
  const long long after = now_us();
  Value got = read_value(d);
  EXPECT_EQ(got.tz_hour, 1);
  EXPECT_EQ(got.tz_minute, 0);
  got.fraction = 0;
  got.tz_hour = 0;
  // Two hours ahead of UTC on the clock.
  const time_t b = static_cast<time_t>(before / 1000000) + 7200;
  const time_t a = static_cast<time_t>(after / 1000000) + 7200;
  struct tm tb, ta;
  gmtime_r(&b, &tb);
  gmtime_r(&a, &ta);
  auto fields = [](const struct tm &t) {
    return Value{static_cast<sb2>(t.tm_year + 1900), static_cast<ub2>(t.tm_mon + 1), static_cast<ub2>(t.tm_mday),
                 static_cast<ub2>(t.tm_hour), static_cast<ub2>(t.tm_min), static_cast<ub2>(t.tm_sec), 0, 0, 0};
  };
  EXPECT_TRUE(got == fields(tb) || got == fields(ta));
}

TEST_F(QWZDateTimeSysTimeStampTest, BadHandles) {
  for (const BadHandle &h : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeSysTimeStamp(env_, err_, static_cast<QWZDateTime *>(h.ptr)), QWZ_INVALID_HANDLE)
        << h.label;
    expect_invalid_handle();
  }
  QWZDateTime *d = new_datetime(65);
  for (const BadHandle &h : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeSysTimeStamp(h.ptr, err_, d), QWZ_INVALID_HANDLE) << h.label;
    expect_invalid_handle();
  }
  for (const BadHandle &h : bad_error_handles())
    EXPECT_EQ(QWZDateTimeSysTimeStamp(env_, static_cast<QWZError *>(h.ptr), d), QWZ_INVALID_HANDLE);
  // A refused call changes neither the type nor the value.
  EXPECT_EQ(d->hdr.type, 65);
  EXPECT_EQ(read_value(d), Value{});
}

TEST_F(QWZDateTimeSysTimeStampTest, Trace) {
  QWZDateTime *d = new_datetime(68);
  TraceCapture trace;
  ASSERT_EQ(QWZDateTimeSysTimeStamp(session_, err_, d), QWZ_SUCCESS);
  const std::string text = trace_record(
      "QWZDateTimeSysTimeStamp",
      {{"void*", hex12(session_)}, {"QWZError*", hex12(err_)}, {"QWZDateTime*", hex12(d)}});
  ASSERT_EQ(trace.records().size(), 2u);
  EXPECT_EQ(trace.records()[0].text, text);
  EXPECT_EQ(trace.records()[1].text, text);
  EXPECT_EQ(trace.records()[0].api_id, 175u);
  EXPECT_EQ(trace.records()[1].direction, 0u);
}

TEST_F(QWZDateTimeSysTimeStampTest, TraceResults) {
  QWZDateTime *d = new_datetime(68);
  {
    TraceCapture trace;
    trace.set_results(4, 0);
    EXPECT_EQ(QWZDateTimeSysTimeStamp(env_, err_, d), 4);
    EXPECT_EQ(d->hdr.type, 68);
    EXPECT_EQ(read_value(d), Value{});
  }
  {
    TraceCapture trace;
    trace.set_results(0, 6);
    EXPECT_EQ(QWZDateTimeSysTimeStamp(env_, err_, d), 6);
    EXPECT_EQ(d->hdr.type, 69);
    EXPECT_NE(d->year, 0);
  }
}

}  // namespace
