// QWZDateTimeFromArray, QWZDateTimeToArray and the decoder behind the first.
#include "datetime_test_util.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <random>

using namespace qwz_test;

namespace {

constexpr char kClassInvalid[] = "the datetime class is invalid.";

// The five layouts as this test writes them.
struct ClassLayout {
  ub1 klass;
  int date, time, fraction, zone;  // byte offsets, -1 when absent
  std::size_t length;
  ub2 natural_type;  // the descriptor type that holds exactly these fields
};
constexpr ClassLayout kClasses[] = {
    {184, 0, -1, -1, -1, 4, 65},  {185, -1, 0, 3, -1, 7, 66}, {186, -1, 0, 3, 7, 9, 67},
    {187, 0, 4, 7, -1, 11, 68},   {188, 0, 4, 7, 11, 13, 69},
};

// Bytes of a value in a layout, the hour and minute of the zoned layouts
// written as value minus zone (no carry) plus one. Empty when a byte would
// fall outside 0..255: such a value has no array that reads back to it.
std::optional<std::vector<ub1>> encode(const ClassLayout &l, const Value &v) {
  std::vector<ub1> b(l.length, 0);
  auto put = [&](int at, int value) {
    if (value < 0 || value > 255) return false;
    b[static_cast<std::size_t>(at)] = static_cast<ub1>(value);
    return true;
  };
  if (l.date >= 0) {
    if (!put(l.date, v.year / 100 + 100) || !put(l.date + 1, v.year % 100 + 100) ||
        !put(l.date + 2, v.month) || !put(l.date + 3, v.day))
      return std::nullopt;
  }
  if (l.time >= 0) {
    const int zh = l.zone >= 0 ? v.tz_hour : 0;
    const int zm = l.zone >= 0 ? v.tz_minute : 0;
    if (!put(l.time, v.hour - zh + 1) || !put(l.time + 1, v.minute - zm + 1) ||
        !put(l.time + 2, v.second + 1))
      return std::nullopt;
  }
  if (l.fraction >= 0) {
    for (int i = 0; i < 4; ++i)
      b[static_cast<std::size_t>(l.fraction + i)] = static_cast<ub1>(v.fraction >> (24 - 8 * i));
  }
  if (l.zone >= 0) {
    if (!put(l.zone, v.tz_hour + 20) || !put(l.zone + 1, v.tz_minute + 60)) return std::nullopt;
  }
  return b;
}

// The part of a value that a layout carries.
Value carried(const ClassLayout &l, const Value &v) {
  Value out;
  if (l.date >= 0) {
    out.year = v.year;
    out.month = v.month;
    out.day = v.day;
  }
  if (l.time >= 0) {
    out.hour = v.hour;
    out.minute = v.minute;
    out.second = v.second;
    out.fraction = v.fraction;
  }
  if (l.zone >= 0) {
    out.tz_hour = v.tz_hour;
    out.tz_minute = v.tz_minute;
  }
  return out;
}

// What a layout's bytes mean, worked out byte by byte (fraction at nine digits).
Value reference_decode(const ClassLayout &l, const ub1 *b) {
  Value v;
  if (l.date >= 0) {
    v.year = static_cast<sb2>(b[l.date] * 100 + b[l.date + 1] - 10100);
    v.month = b[l.date + 2];
    v.day = b[l.date + 3];
  }
  if (l.time >= 0) {
    int zh = 0, zm = 0;
    if (l.zone >= 0) {
      v.tz_hour = static_cast<sb1>(b[l.zone] - 20);
      v.tz_minute = static_cast<sb1>(b[l.zone + 1] - 60);
      zh = v.tz_hour;
      zm = v.tz_minute;
    }
    v.hour = static_cast<ub2>(b[l.time] + zh - 1);
    v.minute = static_cast<ub2>(b[l.time + 1] + zm - 1);
    v.second = static_cast<ub2>(b[l.time + 2] - 1);
    v.fraction = (static_cast<ub4>(b[l.fraction]) << 24) | (static_cast<ub4>(b[l.fraction + 1]) << 16) |
                 (static_cast<ub4>(b[l.fraction + 2]) << 8) | b[l.fraction + 3];
  }
  return v;
}

int month_length(int year, int month) {
  static const int days[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month != 2) return days[month];
  return (year % 4 == 0 && (year % 100 != 0 || year % 400 == 0)) ? 29 : 28;
}

bool valid_for(ub2 type, const Value &v) {
  const bool date = type == 65 || type == 68 || type == 69;
  const bool time = type >= 66 && type <= 69;
  const bool zone = type == 67 || type == 69;
  if (date) {
    if (v.year < -4712 || v.year > 9999 || v.year == 0) return false;
    if (v.month < 1 || v.month > 12) return false;
    if (v.day < 1 || v.day > month_length(v.year, v.month)) return false;
  }
  if (time && (v.hour > 23 || v.minute > 59 || v.second > 59)) return false;
  if (zone && (v.tz_hour > 14 || v.tz_hour < -12 || v.tz_minute > 59 || v.tz_minute < -59))
    return false;
  return true;
}

// Zone offsets: every whole hour from -12 to +14 with minutes of the same
// sign, and a few of mixed sign.
std::vector<std::pair<sb1, sb1>> zone_sweep() {
  std::vector<std::pair<sb1, sb1>> z;
  for (int h = -12; h <= 14; ++h)
    for (int m : {0, 15, 30, 45, 59}) {
      z.emplace_back(static_cast<sb1>(h), static_cast<sb1>(h < 0 ? -m : m));
      if (h == 0 && m != 0) z.emplace_back(0, static_cast<sb1>(-m));
    }
  z.emplace_back(-3, 30);
  z.emplace_back(5, -30);
  return z;
}

// An input array of exactly the bytes given, on the heap, so that a read
// past its end is caught by the address sanitizer.
std::unique_ptr<ub1[]> exact_copy(const std::vector<ub1> &bytes) {
  auto p = std::make_unique<ub1[]>(bytes.size());
  std::memcpy(p.get(), bytes.data(), bytes.size());
  return p;
}

class QWZDateTimeFromArrayTest : public DatetimeFixture {
 protected:
  void SetUp() override {
    DatetimeFixture::SetUp();
    reftz_ = new_interval(INTERVAL_KIND_DS);
    for (int i = 0; i < 6; ++i) dt_[i] = new_datetime(kAllDatetimeTypes[i]);
  }
  QWZDateTime *of_type(ub2 type) { return dt_[type - 65]; }

  sword from_array(const std::vector<ub1> &bytes, ub1 klass, QWZDateTime *d, ub1 fsprec = 9) {
    auto in = exact_copy(bytes);
    ub4 len = static_cast<ub4>(bytes.size());
    return QWZDateTimeFromArray(env_, err_, in.get(), &len, klass, d, reftz_, fsprec);
  }

  QWZInterval *reftz_ = nullptr;
  QWZDateTime *dt_[6] = {};
};

// Every day of several years, from -4712 to 9999, with generated times and
// the sweep of zones, through all five layouts.
TEST_F(QWZDateTimeFromArrayTest, RoundTripEveryDayOfSeveralYears) {
  std::mt19937 rng(4712);
  const auto zones = zone_sweep();
  const int years[] = {-4712, -4711, -1000, -101, -100, -4, -1, 1, 99, 100, 1582, 1900, 1970,
                       1999, 2000, 2023, 2024, 2100, 9998, 9999};
  long checked = 0, skipped = 0;
  std::size_t zi = 0;
  for (int year : years) {
    for (int month = 1; month <= 12; ++month) {
      for (int day = 1; day <= month_length(year, month); ++day) {
        std::vector<Value> values;
        values.push_back({static_cast<sb2>(year), static_cast<ub2>(month), static_cast<ub2>(day),
                          0, 0, 0, 0, 0, 0});
        values.push_back({static_cast<sb2>(year), static_cast<ub2>(month), static_cast<ub2>(day),
                          23, 59, 59, 999999999, 0, 0});
        for (int k = 0; k < 3; ++k)
          values.push_back({static_cast<sb2>(year), static_cast<ub2>(month), static_cast<ub2>(day),
                            static_cast<ub2>(rng() % 24), static_cast<ub2>(rng() % 60),
                            static_cast<ub2>(rng() % 60), static_cast<ub4>(rng() % 1000000000u), 0, 0});
        for (Value &v : values) {
          const auto zone = zones[zi++ % zones.size()];
          v.tz_hour = zone.first;
          v.tz_minute = zone.second;
          for (const ClassLayout &l : kClasses) {
            const auto bytes = encode(l, v);
            if (!bytes) {
              ++skipped;
              continue;
            }
            QWZDateTime *d = of_type(l.natural_type);
            write_value(d, {7, 7, 7, 7, 7, 7, 7, 7, 7});
            ASSERT_EQ(from_array(*bytes, l.klass, d), QWZ_SUCCESS) << int(l.klass);
            ASSERT_EQ(read_value(d), carried(l, v)) << int(l.klass);
            ASSERT_EQ(d->hdr.type, l.natural_type);
            ++checked;
          }
        }
      }
    }
  }
  expect_clear();
  EXPECT_GT(checked, 120000);
  // Only zoned layouts with the clock behind the zone can be unrepresentable.
  EXPECT_LT(skipped, checked / 3);
}

// Every zone of the sweep with the extreme dates, at every hour and at the
// minutes around the zone's own.
TEST_F(QWZDateTimeFromArrayTest, RoundTripZoneSweep) {
  const Value dates[] = {{-4712, 1, 1, 0, 0, 0, 0, 0, 0}, {9999, 12, 31, 0, 0, 0, 0, 0, 0},
                         {2024, 2, 29, 0, 0, 0, 0, 0, 0}};
  long checked = 0;
  for (const Value &date : dates) {
    for (const auto &zone : zone_sweep()) {
      for (int hour = 0; hour < 24; ++hour) {
        for (int minute : {0, 1, 14, 15, 16, 29, 30, 31, 44, 45, 46, 58, 59}) {
          Value v = date;
          v.hour = static_cast<ub2>(hour);
          v.minute = static_cast<ub2>(minute);
          v.second = 59;
          v.fraction = 123456789;
          v.tz_hour = zone.first;
          v.tz_minute = zone.second;
          for (const ClassLayout &l : kClasses) {
            if (l.zone < 0) continue;
            const auto bytes = encode(l, v);
            const bool representable = hour - v.tz_hour + 1 >= 0 && minute - v.tz_minute + 1 >= 0;
            ASSERT_EQ(bytes.has_value(), representable);
            if (!bytes) continue;
            QWZDateTime *d = of_type(l.natural_type);
            ASSERT_EQ(from_array(*bytes, l.klass, d), QWZ_SUCCESS);
            ASSERT_EQ(read_value(d), carried(l, v));
            ++checked;
          }
        }
      }
    }
  }
  EXPECT_GT(checked, 20000);
}

// Minutes from midnight to a (day shift, hour, minute) in UTC.
struct UtcClock {
  int day_shift, hour, minute;
};
UtcClock to_utc(int hour, int minute, int tz_hour, int tz_minute) {
  int total = hour * 60 + minute - (tz_hour * 60 + tz_minute);
  int shift = 0;
  while (total < 0) { total += 1440; --shift; }
  while (total >= 1440) { total -= 1440; ++shift; }
  return {shift, total / 60, total % 60};
}

// Arrays holding the true UTC clock time (carried into the neighbouring hour
// or day as needed): the reader adds the zone back without carry, so the
// value comes back exactly when no carry was needed, and is refused by the
// check otherwise.
TEST_F(QWZDateTimeFromArrayTest, TrueUtcClockReadsBackOnlyWithoutCarry) {
  long accepted = 0, refused = 0;
  QWZDateTime *d = of_type(69);
  for (const auto &zone : zone_sweep()) {
    for (int hour = 0; hour < 24; ++hour) {
      for (int minute : {0, 10, 29, 30, 31, 50, 59}) {
        const UtcClock u = to_utc(hour, minute, zone.first, zone.second);
        // 2024-06-15 shifted to the UTC day; June has room either side.
        const int day = 15 + u.day_shift;
        const std::vector<ub1> bytes = {120, 124, 6, static_cast<ub1>(day),
                                        static_cast<ub1>(u.hour + 1), static_cast<ub1>(u.minute + 1),
                                        1, 0, 0, 0, 0,
                                        static_cast<ub1>(zone.first + 20),
                                        static_cast<ub1>(zone.second + 60)};
        const bool no_carry = u.day_shift == 0 && u.hour == hour - zone.first &&
                              u.minute == minute - zone.second;
        const sword rc = from_array(bytes, 188, d);
        if (no_carry) {
          ASSERT_EQ(rc, QWZ_SUCCESS);
          EXPECT_EQ(read_value(d), (Value{2024, 6, 15, static_cast<ub2>(hour), static_cast<ub2>(minute),
                                          0, 0, zone.first, zone.second}));
          ++accepted;
        } else {
          ASSERT_EQ(rc, QWZ_ERROR) << hour << ":" << minute << " zone " << int(zone.first) << ":"
                                   << int(zone.second);
          expect_date_format_invalid();
          EXPECT_TRUE(d->hour > 23 || d->minute > 59);
          ++refused;
        }
      }
    }
  }
  EXPECT_GT(accepted, 0);
  EXPECT_GT(refused, 0);
}

// The edge cases named for the reader.
TEST_F(QWZDateTimeFromArrayTest, NamedEdges) {
  EXPECT_EQ(from_array({120, 124, 2, 29}, 184, of_type(65)), QWZ_SUCCESS);
  EXPECT_EQ(read_value(of_type(65)), (Value{2024, 2, 29, 0, 0, 0, 0, 0, 0}));
  expect_clear();

  EXPECT_EQ(from_array({120, 123, 2, 29}, 184, of_type(65)), QWZ_ERROR);
  expect_date_format_invalid();
  // The decoded value stays in the descriptor.
  EXPECT_EQ(read_value(of_type(65)), (Value{2023, 2, 29, 0, 0, 0, 0, 0, 0}));

  EXPECT_EQ(from_array({120, 124, 6, 1, 11, 1, 1, 0, 0, 0, 0, 22, 60}, 188, of_type(69)), QWZ_SUCCESS);
  EXPECT_EQ(read_value(of_type(69)), (Value{2024, 6, 1, 12, 0, 0, 0, 2, 0}));

  EXPECT_EQ(from_array({53, 88, 1, 1}, 184, of_type(65)), QWZ_SUCCESS);
  EXPECT_EQ(of_type(65)->year, -4712);
  EXPECT_EQ(from_array({199, 199, 12, 31}, 184, of_type(65)), QWZ_SUCCESS);
  EXPECT_EQ(of_type(65)->year, 9999);
  EXPECT_EQ(from_array({100, 99, 12, 31}, 184, of_type(65)), QWZ_SUCCESS);
  EXPECT_EQ(of_type(65)->year, -1);
}

// Fraction rounded to fsprec digits and kept in nanoseconds.
TEST_F(QWZDateTimeFromArrayTest, FractionRounding) {
  auto with_fraction = [](ub4 ns) {
    return std::vector<ub1>{1, 1, 1, static_cast<ub1>(ns >> 24), static_cast<ub1>(ns >> 16),
                            static_cast<ub1>(ns >> 8), static_cast<ub1>(ns)};
  };
  QWZDateTime *d = of_type(66);
  const struct {
    ub4 ns;
    ub1 fsprec;
    ub4 fraction;
  } rows[] = {
      {123456789, 3, 123000000}, {123456789, 9, 123456789}, {123456789, 0, 0},
      {600000000, 0, 1000000000}, {123456789, 1, 100000000}, {123456789, 4, 123500000},
      {999999999, 8, 1000000000}, {999999999, 9, 999999999}, {0, 0, 0},
      {0xFFFFFFFFu, 9, 0xFFFFFFFFu}, {0xFFFFFFFFu, 0, 4000000000u},
      // 4294967295 ns at one digit is 4300000000, kept modulo 2^32.
      {0xFFFFFFFFu, 1, static_cast<ub4>(4300000000ull)},
  };
  for (const auto &row : rows) {
    ASSERT_EQ(from_array(with_fraction(row.ns), 185, d, row.fsprec), QWZ_SUCCESS);
    EXPECT_EQ(d->fraction, row.fraction) << row.ns << " at " << int(row.fsprec);
  }
  // Generated values against integer rounding (half up), away from ties.
  std::mt19937 rng(9);
  for (int n = 0; n < 20000; ++n) {
    const ub4 ns = static_cast<ub4>(rng() % 1000000000u);
    const ub1 p = static_cast<ub1>(rng() % 10);
    std::uint64_t unit = 1;
    for (int i = 0; i < 9 - p; ++i) unit *= 10;
    const std::uint64_t rem = ns % unit;
    if (unit > 1 && (rem == unit / 2 || rem + 1 == unit / 2 || rem == unit / 2 + 1)) continue;
    const std::uint64_t want = (ns + unit / 2) / unit * unit;
    ASSERT_EQ(from_array(with_fraction(ns), 185, d, p), QWZ_SUCCESS);
    ASSERT_EQ(d->fraction, want) << ns << " at " << int(p);
  }
  // More digits than nanoseconds keep the value (to the last unit).
  for (int p = 10; p <= 255; ++p) {
    ASSERT_EQ(from_array(with_fraction(987654321), 185, d, static_cast<ub1>(p)), QWZ_SUCCESS);
    EXPECT_LE(std::abs(static_cast<long>(d->fraction) - 987654321L), 1L) << p;
  }
}

TEST_F(QWZDateTimeFromArrayTest, UnknownClassesRefused) {
  QWZDateTime *d = of_type(68);
  const Value before{2024, 1, 2, 3, 4, 5, 6, 7, 8};
  const std::vector<ub1> bytes(13, 120);
  for (int klass : {0, 183, 189, 255}) {
    write_value(d, before);
    EXPECT_EQ(from_array(bytes, static_cast<ub1>(klass), d), QWZ_ERROR) << klass;
    expect_diag(800156, "", kClassInvalid);
    EXPECT_EQ(read_value(d), before);
  }
  for (int klass = 0; klass <= 255; ++klass) {
    if (klass >= 184 && klass <= 188) continue;
    EXPECT_EQ(from_array(bytes, static_cast<ub1>(klass), d), QWZ_ERROR) << klass;
    expect_diag(800156, "", kClassInvalid);
  }
}

// The decoder alone: an unknown class zeroes the value and returns 0.
TEST_F(QWZDateTimeFromArrayTest, DecoderWithUnknownClassZeroes) {
  QWZDateTime *d = of_type(69);
  write_value(d, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  const ub1 bytes[1] = {0};
  EXPECT_EQ(qwz_datetime_from_array(bytes, 0, d, 9), 0);
  EXPECT_EQ(read_value(d), Value{});
  EXPECT_EQ(d->hdr.type, 69);
  for (const ClassLayout &l : kClasses) {
    write_value(d, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    std::vector<ub1> zeros(l.length, 0);
    auto in = exact_copy(zeros);
    EXPECT_EQ(qwz_datetime_from_array(in.get(), l.klass, d, 9), 0);
    EXPECT_EQ(read_value(d), reference_decode(l, in.get())) << int(l.klass);
  }
}

// The value is checked by the descriptor's own type, not by the class.
TEST_F(QWZDateTimeFromArrayTest, CheckedByTheDescriptorType) {
  const std::vector<ub1> date = {120, 124, 2, 29};
  const std::vector<ub1> time = {11, 21, 31, 0, 0, 0, 0};
  const std::vector<ub1> stamp_tz = {120, 124, 2, 29, 1, 21, 31, 0, 0, 0, 0, 35, 60};  // 15:20:30 +15:00
  const struct {
    const std::vector<ub1> *bytes;
    ub1 klass;
    ub2 type;
    sword rc;
  } rows[] = {
      {&date, 184, 65, 0},  {&date, 184, 66, 0},  {&date, 184, 67, 0},  {&date, 184, 68, 0},
      {&date, 184, 69, 0},  {&date, 184, 70, 0},  {&time, 185, 65, -1}, {&time, 185, 66, 0},
      {&time, 185, 68, -1}, {&time, 185, 70, 0},  {&stamp_tz, 188, 68, 0}, {&stamp_tz, 188, 69, -1},
      {&stamp_tz, 188, 67, -1}, {&stamp_tz, 188, 65, 0}, {&stamp_tz, 188, 70, 0},
  };
  for (const auto &row : rows) {
    QWZDateTime *d = of_type(row.type);
    EXPECT_EQ(from_array(*row.bytes, row.klass, d), row.rc) << int(row.klass) << " into " << row.type;
    if (row.rc == 0) expect_clear();
    else expect_date_format_invalid();
    EXPECT_EQ(d->hdr.type, row.type);
  }
}

// Every byte value in every position of every layout, the other bytes
// those of a valid value: the fields are exactly the bytes' meaning, the
// status follows the check, and nothing outside the layout is read.
TEST_F(QWZDateTimeFromArrayTest, EveryByteInEveryPosition) {
  const Value base{2024, 2, 29, 12, 30, 30, 500000000, 2, 30};
  for (const ClassLayout &l : kClasses) {
    const auto valid = encode(l, base);
    ASSERT_TRUE(valid.has_value());
    for (std::size_t pos = 0; pos < l.length; ++pos) {
      for (int byte = 0; byte <= 255; ++byte) {
        std::vector<ub1> bytes = *valid;
        bytes[pos] = static_cast<ub1>(byte);
        const Value want = reference_decode(l, bytes.data());
        for (ub2 type : kAllDatetimeTypes) {
          QWZDateTime *d = of_type(type);
          const sword rc = from_array(bytes, l.klass, d);
          ASSERT_EQ(read_value(d), want) << int(l.klass) << " pos " << pos << " byte " << byte;
          ASSERT_EQ(rc, valid_for(type, want) ? QWZ_SUCCESS : QWZ_ERROR)
              << int(l.klass) << " pos " << pos << " byte " << byte << " type " << type;
        }
      }
    }
  }
}

TEST_F(QWZDateTimeFromArrayTest, GeneratedArrays) {
  std::mt19937 rng(188);
  for (const ClassLayout &l : kClasses) {
    for (int n = 0; n < 5000; ++n) {
      std::vector<ub1> bytes(l.length);
      for (ub1 &b : bytes) b = static_cast<ub1>(rng());
      const Value want = reference_decode(l, bytes.data());
      const ub2 type = kAllDatetimeTypes[rng() % 6];
      QWZDateTime *d = of_type(type);
      const sword rc = from_array(bytes, l.klass, d);
      ASSERT_EQ(read_value(d), want);
      ASSERT_EQ(rc, valid_for(type, want) ? QWZ_SUCCESS : QWZ_ERROR);
    }
  }
}

// The length is neither checked nor read.
TEST_F(QWZDateTimeFromArrayTest, LengthIgnored) {
  const ub1 bytes[4] = {120, 124, 2, 29};
  ub4 len = 0;
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, const_cast<ub1 *>(bytes), &len, 184, of_type(65), reftz_, 0),
            QWZ_SUCCESS);
  EXPECT_EQ(len, 0u);
  EXPECT_EQ(QWZDateTimeFromArray(session_, err_, const_cast<ub1 *>(bytes), nullptr, 184, of_type(65),
                                 reftz_, 0),
            QWZ_SUCCESS);
  EXPECT_EQ(read_value(of_type(65)), (Value{2024, 2, 29, 0, 0, 0, 0, 0, 0}));
}

TEST_F(QWZDateTimeFromArrayTest, NullInputArray) {
  ub4 len = 4;
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, &len, 184, of_type(65), reftz_, 0), QWZ_ERROR);
  expect_null_param(4);
  // Before the class is looked at.
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, nullptr, 0, of_type(65), reftz_, 0), QWZ_ERROR);
  expect_null_param(4);
}

TEST_F(QWZDateTimeFromArrayTest, BadDatetimePrintsParameter3) {
  ub1 bytes[13] = {};
  for (const BadHandle &h : bad_datetimes()) {
    EXPECT_EQ(QWZDateTimeFromArray(env_, err_, bytes, nullptr, 184, static_cast<QWZDateTime *>(h.ptr),
                                   reftz_, 0),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_null_param(3);
  }
  // The descriptor comes before the interval and the array.
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, nullptr, 0, nullptr, nullptr, 0), QWZ_INVALID_HANDLE);
  expect_null_param(3);
}

// A live interval descriptor is required although it is never read.
TEST_F(QWZDateTimeFromArrayTest, BadReferenceZone) {
  ub1 bytes[13] = {120, 124, 2, 29};
  for (const BadHandle &h : bad_intervals()) {
    EXPECT_EQ(QWZDateTimeFromArray(env_, err_, bytes, nullptr, 184, of_type(65),
                                   static_cast<QWZInterval *>(h.ptr), 0),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_invalid_handle();
    EXPECT_EQ(read_value(of_type(65)), Value{});
  }
  // Before the array.
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, nullptr, 184, of_type(65), nullptr, 0),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  // Either kind of interval will do, whatever it holds.
  QWZInterval *ym = new_interval(INTERVAL_KIND_YM);
  ym->slot[0] = -99;
  EXPECT_EQ(QWZDateTimeFromArray(env_, err_, bytes, nullptr, 184, of_type(65), ym, 0), QWZ_SUCCESS);
}

TEST_F(QWZDateTimeFromArrayTest, BadContextHandle) {
  ub1 bytes[13] = {120, 124, 2, 29};
  for (const BadHandle &h : bad_contexts()) {
    EXPECT_EQ(QWZDateTimeFromArray(h.ptr, err_, bytes, nullptr, 184, of_type(65), reftz_, 0),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_invalid_handle();
  }
  EXPECT_EQ(QWZDateTimeFromArray(nullptr, err_, nullptr, nullptr, 0, nullptr, nullptr, 0),
            QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}

TEST_F(QWZDateTimeFromArrayTest, BadErrorHandle) {
  ub1 bytes[13] = {120, 124, 2, 29};
  for (const BadHandle &h : bad_error_handles()) {
    EXPECT_EQ(QWZDateTimeFromArray(env_, static_cast<QWZError *>(h.ptr), bytes, nullptr, 184,
                                   of_type(65), reftz_, 0),
              QWZ_INVALID_HANDLE)
        << h.label;
    EXPECT_EQ(read_value(of_type(65)), Value{});
  }
}

TEST_F(QWZDateTimeFromArrayTest, TraceRecords) {
  ub1 bytes[4] = {120, 124, 2, 29};
  ub4 len = 4;
  QWZDateTime *d = of_type(65);
  const std::string text = trace_record(
      "QWZDateTimeFromArray",
      {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)}, {"ub1*", hex12(bytes)},
       {"ub4*", hex12(&len)}, {"ub1", "184"}, {"QWZDateTime*", hex12(d)},
       {"QWZInterval*", hex12(reftz_)}, {"ub1", "6"}});
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeFromArray(env_, err_, bytes, &len, 184, d, reftz_, 6), QWZ_SUCCESS);
    auto &r = trace.records();
    const std::vector<std::pair<ub4, ub4>> shape = {{180, 1}, {147, 1}, {147, 0}, {180, 0}};
    ASSERT_EQ(trace_shape(r), shape);
    EXPECT_EQ(r[0].text, text);
    EXPECT_EQ(r[3].text, text);
    EXPECT_EQ(r[3].status, 0);
    EXPECT_EQ(r[1].text.substr(0, 19), "<QWZDateTimeCheck>\n");
    EXPECT_NE(r[1].text.find(hex12(d)), std::string::npos);
  }
  {
    // NULL array and length are traced as the "(null)" text's address.
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeFromArray(env_, err_, nullptr, nullptr, 184, d, reftz_, 6), QWZ_ERROR);
    auto &r = trace.records();
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r[0].text, trace_record("QWZDateTimeFromArray",
                                      {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                                       {"ub1*", hex12(qwz::kNullText)}, {"ub4*", hex12(qwz::kNullText)},
                                       {"ub1", "184"}, {"QWZDateTime*", hex12(d)},
                                       {"QWZInterval*", hex12(reftz_)}, {"ub1", "6"}}));
  }
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeFromArray(env_, err_, bytes, &len, 189, d, reftz_, 6), QWZ_ERROR);
    EXPECT_EQ(trace.records().size(), 1u);
  }
  {
    // An invalid value: the nested check's pair, and no exit record.
    ub1 bad[4] = {120, 123, 2, 29};
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeFromArray(env_, err_, bad, &len, 184, d, reftz_, 6), QWZ_ERROR);
    const std::vector<std::pair<ub4, ub4>> shape = {{180, 1}, {147, 1}, {147, 0}};
    EXPECT_EQ(trace_shape(trace.records()), shape);
  }
}

// The nested check's status becomes the call's status, after the exit trace.
TEST_F(QWZDateTimeFromArrayTest, NestedCheckStatusIsReturned) {
  ub1 bytes[4] = {120, 124, 2, 29};
  {
    SelectiveTrace trace(147, 1, 7);
    EXPECT_EQ(QWZDateTimeFromArray(env_, err_, bytes, nullptr, 184, of_type(65), reftz_, 0), 7);
    const std::vector<std::pair<ub4, ub4>> shape = {{180, 1}, {147, 1}, {180, 0}};
    EXPECT_EQ(trace.shape(), shape);
    expect_clear();
  }
  {
    SelectiveTrace trace(147, 0, 8);
    EXPECT_EQ(QWZDateTimeFromArray(env_, err_, bytes, nullptr, 184, of_type(65), reftz_, 0), 8);
    const std::vector<std::pair<ub4, ub4>> shape = {{180, 1}, {147, 1}, {147, 0}, {180, 0}};
    EXPECT_EQ(trace.shape(), shape);
  }
  {
    // Flags still win over the status.
    ub1 bad[4] = {120, 123, 2, 29};
    SelectiveTrace trace(147, 0, 8);
    EXPECT_EQ(QWZDateTimeFromArray(env_, err_, bad, nullptr, 184, of_type(65), reftz_, 0), QWZ_ERROR);
    expect_date_format_invalid();
  }
}

// ---- QWZDateTimeToArray --------------------------------------------------------

class QWZDateTimeToArrayTest : public DatetimeFixture {
 protected:
  // Writes into a 16-byte buffer filled with 0xAA; returns the buffer.
  std::vector<ub1> to_array(QWZDateTime *d, ub4 *len, sword *rc, ub1 fsprec = 0) {
    std::vector<ub1> out(16, 0xAA);
    *rc = QWZDateTimeToArray(env_, err_, d, nullptr, out.data(), len, fsprec);
    return out;
  }
};

TEST_F(QWZDateTimeToArrayTest, NamedEdge) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, {2024, 2, 29, 10, 20, 30, 999, 0, 0});
  ub4 len = 0;
  sword rc = 1;
  const auto out = to_array(d, &len, &rc);
  EXPECT_EQ(rc, QWZ_SUCCESS);
  const std::vector<ub1> want = {120, 124, 2, 29, 11, 21, 31, 0, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA};
  EXPECT_EQ(out, want);
  EXPECT_EQ(len, 7u);
  expect_clear();
}

// A zero byte ends the measured length early.
TEST_F(QWZDateTimeToArrayTest, LengthMeasuredAsAString) {
  const struct {
    ub2 type;
    Value v;
    std::vector<ub1> bytes;
    ub4 len;
  } rows[] = {
      {66, {0, 0, 0, 10, 20, 30, 0, 0, 0}, {100, 100, 0, 0, 11, 21, 31, 0}, 2},
      {67, {0, 0, 0, 10, 20, 30, 0, 5, 30}, {100, 100, 0, 0, 11, 21, 31, 0}, 2},
      {65, {-4712, 1, 1, 0, 0, 0, 0, 0, 0}, {53, 88, 1, 1, 1, 1, 1, 0}, 7},
      {69, {9999, 12, 31, 23, 59, 59, 999999999, 14, 0}, {199, 199, 12, 31, 24, 60, 60, 0}, 7},
      {68, {-1, 12, 31, 0, 0, 0, 0, 0, 0}, {100, 99, 12, 31, 1, 1, 1, 0}, 7},
      {70, {2024, 1, 0, 0, 0, 0, 0, 0, 0}, {120, 124, 1, 0, 1, 1, 1, 0}, 3},
      // Values cut to a byte: hour 65535 + 1 is 0.
      {68, {2024, 1, 1, 65535, 255, 0, 0, 0, 0}, {120, 124, 1, 1, 0, 0, 1, 0}, 4},
      {68, {-32768, 256, 1, 1, 1, 1, 0, 0, 0}, {29, 32, 0, 1, 2, 2, 2, 0}, 2},
      {68, {32767, 1, 1, 1, 1, 1, 0, 0, 0}, {171, 167, 1, 1, 2, 2, 2, 0}, 7},
      {68, {2000, 1, 1, 0, 0, 0, 0, 0, 0}, {120, 100, 1, 1, 1, 1, 1, 0}, 7},
  };
  for (const auto &row : rows) {
    QWZDateTime *d = new_datetime(row.type);
    write_value(d, row.v);
    ub4 len = 99;
    sword rc = 1;
    const auto out = to_array(d, &len, &rc);
    EXPECT_EQ(rc, QWZ_SUCCESS);
    EXPECT_EQ(std::vector<ub1>(out.begin(), out.begin() + 8), row.bytes);
    EXPECT_EQ(std::vector<ub1>(out.begin() + 8, out.end()), std::vector<ub1>(8, 0xAA));
    EXPECT_EQ(len, row.len);
    EXPECT_EQ(read_value(d), row.v);
  }
}

// Every valid date and time: the eight bytes read back through the
// class-187 layout (the first seven bytes, fraction added by the test).
TEST_F(QWZDateTimeToArrayTest, RoundTripThroughTheTimestampLayout) {
  QWZDateTime *d = new_datetime(68);
  QWZDateTime *back = new_datetime(68);
  QWZInterval *reftz = new_interval(INTERVAL_KIND_DS);
  std::mt19937 rng(68);
  for (int year = -4712; year <= 9999; ++year) {
    if (year == 0) continue;
    const int month = static_cast<int>(rng() % 12) + 1;
    const Value v{static_cast<sb2>(year), static_cast<ub2>(month),
                  static_cast<ub2>(rng() % static_cast<unsigned>(month_length(year, month)) + 1),
                  static_cast<ub2>(rng() % 24), static_cast<ub2>(rng() % 60), static_cast<ub2>(rng() % 60),
                  0, 0, 0};
    write_value(d, v);
    auto out = std::make_unique<ub1[]>(8);
    ub4 len = 0;
    ASSERT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, out.get(), &len, 9), QWZ_SUCCESS);
    ASSERT_EQ(len, 7u);
    std::vector<ub1> eleven(out.get(), out.get() + 7);
    eleven.resize(11, 0);
    auto in = exact_copy(eleven);
    ASSERT_EQ(QWZDateTimeFromArray(env_, err_, in.get(), nullptr, 187, back, reftz, 9), QWZ_SUCCESS);
    ASSERT_EQ(read_value(back), v);
  }
}

// Exactly eight bytes are written; the length is measured on them alone.
TEST_F(QWZDateTimeToArrayTest, WritesExactlyEightBytes) {
  QWZDateTime *d = new_datetime(68);
  write_value(d, {2024, 2, 29, 10, 20, 30, 0, 0, 0});
  auto out = std::make_unique<ub1[]>(8);  // no terminator of ours beyond
  ub4 len = 0;
  EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, out.get(), &len, 0), QWZ_SUCCESS);
  EXPECT_EQ(len, 7u);
  EXPECT_EQ(out[7], 0);
}

TEST_F(QWZDateTimeToArrayTest, EveryTypeAndFsprecAndReftz) {
  void *freed = nullptr;
  ASSERT_EQ(QWZDescriptorAlloc(env_, &freed, INTERVAL_KIND_DS), QWZ_SUCCESS);
  ASSERT_EQ(QWZDescriptorFree(freed, INTERVAL_KIND_DS), QWZ_SUCCESS);
  QWZDateTime *ds[6];
  for (int i = 0; i < 6; ++i) ds[i] = new_datetime(kAllDatetimeTypes[i]);
  // Allocations above may reuse the freed slot; only use it if still dead.
  void *reftzs[] = {nullptr, zeros_, err_,
                    qwz_validate_interval_handle(freed) != 0 ? freed : nullptr};
  for (QWZDateTime *d : ds) {
    write_value(d, {2024, 2, 29, 10, 20, 30, 0, 0, 0});
    for (void *r : reftzs) {
      for (int p : {0, 9, 255}) {
        ub1 out[8];
        ub4 len = 0;
        EXPECT_EQ(QWZDateTimeToArray(session_, err_, d, static_cast<QWZInterval *>(r), out, &len,
                                     static_cast<ub1>(p)),
                  QWZ_SUCCESS);
        EXPECT_EQ(len, 7u);
        expect_clear();
      }
    }
  }
}

TEST_F(QWZDateTimeToArrayTest, NullOutputs) {
  QWZDateTime *d = new_datetime(68);
  ub1 out[8];
  ub4 len = 5;
  EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, nullptr, &len, 0), QWZ_ERROR);
  expect_null_param(5);
  EXPECT_EQ(len, 5u);
  std::memset(out, 0xAA, sizeof out);
  EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, out, nullptr, 0), QWZ_ERROR);
  expect_null_param(9);
  for (ub1 b : out) EXPECT_EQ(b, 0xAA);
  EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, nullptr, nullptr, 0), QWZ_ERROR);
  expect_null_param(5);
}

TEST_F(QWZDateTimeToArrayTest, BadDatetimePrintsParameter3) {
  for (const BadHandle &h : bad_datetimes()) {
    ub1 out[8] = {};
    ub4 len = 5;
    EXPECT_EQ(QWZDateTimeToArray(env_, err_, static_cast<QWZDateTime *>(h.ptr), nullptr, out, &len, 0),
              QWZ_INVALID_HANDLE)
        << h.label;
    expect_null_param(3);
    EXPECT_EQ(len, 5u);
  }
  EXPECT_EQ(QWZDateTimeToArray(env_, err_, nullptr, nullptr, nullptr, nullptr, 0), QWZ_INVALID_HANDLE);
  expect_null_param(3);
}

TEST_F(QWZDateTimeToArrayTest, BadContextAndErrorHandles) {
  QWZDateTime *d = new_datetime(68);
  for (const BadHandle &h : bad_contexts()) {
    ub1 out[8] = {};
    ub4 len = 5;
    EXPECT_EQ(QWZDateTimeToArray(h.ptr, err_, d, nullptr, out, &len, 0), QWZ_INVALID_HANDLE) << h.label;
    expect_invalid_handle();
    EXPECT_EQ(len, 5u);
  }
  for (const BadHandle &h : bad_error_handles()) {
    ub1 out[8] = {};
    ub4 len = 5;
    EXPECT_EQ(QWZDateTimeToArray(env_, static_cast<QWZError *>(h.ptr), d, nullptr, out, &len, 0),
              QWZ_INVALID_HANDLE)
        << h.label;
    EXPECT_EQ(len, 5u);
  }
}

TEST_F(QWZDateTimeToArrayTest, TraceRecords) {
  QWZDateTime *d = new_datetime(68);
  QWZInterval *reftz = new_interval(INTERVAL_KIND_DS);
  ub1 out[8];
  ub4 len = 0;
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeToArray(env_, err_, d, reftz, out, &len, 3), QWZ_SUCCESS);
    auto &r = trace.records();
    ASSERT_EQ(r.size(), 2u);
    const std::string text = trace_record(
        "QWZDateTimeToArray", {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                               {"QWZDateTime*", hex12(d)}, {"QWZInterval*", hex12(reftz)},
                               {"ub1*", hex12(out)}, {"ub4*", hex12(&len)}, {"ub1", "3"}});
    EXPECT_EQ(r[0].text, text);
    EXPECT_EQ(r[1].text, text);
    EXPECT_EQ(r[0].api_id, 178u);
    EXPECT_EQ(r[1].direction, 0u);
  }
  {
    TraceCapture trace;
    ASSERT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, nullptr, nullptr, 255), QWZ_ERROR);
    auto &r = trace.records();
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r[0].text, trace_record("QWZDateTimeToArray",
                                      {{"void*", hex12(env_)}, {"QWZError*", hex12(err_)},
                                       {"QWZDateTime*", hex12(d)}, {"QWZInterval*", hex12(nullptr)},
                                       {"ub1*", hex12(qwz::kNullText)}, {"ub4*", hex12(qwz::kNullText)},
                                       {"ub1", "255"}}));
  }
  {
    TraceCapture trace;
    trace.set_results(3, 0);
    len = 42;
    EXPECT_EQ(QWZDateTimeToArray(env_, err_, d, nullptr, out, &len, 0), 3);
    EXPECT_EQ(len, 42u);
  }
}

}  // namespace
