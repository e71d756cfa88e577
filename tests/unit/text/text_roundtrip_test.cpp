// Value to text to value, and back to text, over many generated dates and
// datetimes under several formats (fixed seed).
//
// What is generated keeps to what the two directions read alike: a negative
// year only where the year leads the format (after a literal the year's '-'
// would be taken as the literal), fractions whose nanosecond count has all
// nine digits or is zero (the count is written without leading zeros, so
// 0.05 s prints as "500" under FF3), and zones east of UTC (the literal
// before TZH takes a '-' as its character).
#include "text_test_util.h"

#include <atomic>
#include <random>
#include <thread>
#include <vector>
#include <string>

using namespace qwz_test;
using namespace text_test;

namespace {

constexpr unsigned kSeed = 20240517;
constexpr int kCount = 1500;

int month_length(int year, int month) {
  static const int days[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return month == 2 && leap ? 29 : days[month];
}

struct Gen {
  std::mt19937 rng{kSeed};
  int in(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }
  QWZDate date(int year_lo, int year_hi) {
    QWZDate d{};
    do d.year = static_cast<sb2>(in(year_lo, year_hi));
    while (d.year == 0);
    d.month = static_cast<ub2>(in(1, 12));
    d.day = static_cast<ub2>(in(1, month_length(d.year, d.month)));
    d.hour = static_cast<ub2>(in(0, 23));
    d.minute = static_cast<ub2>(in(0, 59));
    d.second = static_cast<ub2>(in(0, 59));
    return d;
  }
};

class TextRoundTrip : public HandleFixture {
 protected:
  ZoneGuard zone_{kUtc};
};

TEST_F(TextRoundTrip, Dates) {
  struct Shape {
    const char *format;
    int year_lo, year_hi;
  } shapes[] = {
      {"YYYY-MM-DD HH24:MI:SS", -999, 9999},
      {"YYYYMMDDHH24MISS", -999, 9999},
      {"DD.MM.YYYY HH24:MI:SS", 1, 9999},
      {"MM/DD/YYYY HH12:MI:SS", 1, 9999},
      {"yyyy-mm-dd hh:mi:ss", -999, 9999},
      {"SYYYY-MM-DD HH24:MI:SS", -4712, -1000},
      {"HH24:MI:SS", 1, 9999},  // the date comes back from the clock
  };
  Gen gen;
  for (const Shape &s : shapes) {
    const ub1 flen = static_cast<ub1>(std::strlen(s.format));
    for (int i = 0; i < kCount; ++i) {
      const QWZDate d = gen.date(s.year_lo, s.year_hi);
      QWZtext text[64];
      ub4 cap = 63;
      ASSERT_EQ(QWZDateToText(err_, &d, U(s.format), flen, nullptr, 0, &cap, text), 0)
          << s.format << " " << d;
      const ub4 len = static_cast<ub4>(std::strlen(reinterpret_cast<char *>(text)));
      QWZDate back{};
      ASSERT_EQ(QWZDateFromText(err_, text, len, U(s.format), flen, nullptr, 0, &back), 0)
          << s.format << " " << reinterpret_cast<char *>(text);
      if (s.format[0] == 'H') {
        EXPECT_EQ(back.hour, d.hour);
        EXPECT_EQ(back.minute, d.minute);
        EXPECT_EQ(back.second, d.second);
        continue;
      }
      ASSERT_EQ(back, d) << s.format << " " << reinterpret_cast<char *>(text);
      QWZtext again[64];
      ASSERT_EQ(QWZDateToText(err_, &back, U(s.format), flen, nullptr, 0, &cap, again), 0);
      ASSERT_STREQ(reinterpret_cast<char *>(again), reinterpret_cast<char *>(text));
    }
  }
}

TEST_F(TextRoundTrip, Datetimes) {
  struct Shape {
    ub4 type;
    const char *format;
    int digits;  // fraction digits kept by the format
    int year_lo, year_hi;
    bool zone;
  } shapes[] = {
      {DATETIME_KIND_TIMESTAMP, "YYYY-MM-DD HH24:MI:SS.FF3", 3, -999, 9999, false},
      {DATETIME_KIND_TIMESTAMP, "YYYY-MM-DD HH24:MI:SS", 0, 1, 9999, false},
      {DATETIME_KIND_TIMESTAMP_LTZ, "DD/MM/YYYY HH24.MI.SS,FF5", 5, 1, 9999, false},
      {DATETIME_KIND_TIMESTAMP_TZ, "YYYY-MM-DD HH24:MI:SS.FF1 TZH:TZM", 1, 1, 9999, true},
      {DATETIME_KIND_TIMESTAMP_TZ, "SYYYY-MM-DD HH24:MI:SS.FF4 TZH:TZM", 4, -4712, -1000, true},
      {DATETIME_KIND_DATE, "YYYY-MM-DD", 0, -999, 9999, false},
  };
  Gen gen;
  for (const Shape &s : shapes) {
    QWZDateTime *dt = new_datetime(s.type);
    QWZDateTime *back = new_datetime(s.type);
    const ub1 flen = static_cast<ub1>(std::strlen(s.format));
    for (int i = 0; i < kCount; ++i) {
      const QWZDate d = gen.date(s.year_lo, s.year_hi);
      qwz::set_datetime_date(dt, d);
      if (s.type == DATETIME_KIND_DATE) dt->hour = dt->minute = dt->second = 0;
      ub4 fraction = 0;
      if (s.digits > 0 && gen.in(0, 9) != 0) {
        int scale = 1;
        for (int k = s.digits; k < 9; ++k) scale *= 10;
        int lo = 1;
        for (int k = 1; k < s.digits; ++k) lo *= 10;
        fraction = static_cast<ub4>(gen.in(lo, lo * 10 - 1)) * static_cast<ub4>(scale);
      }
      dt->fraction = fraction;
      dt->tz_hour = static_cast<sb1>(s.zone ? gen.in(0, 14) : 0);
      dt->tz_minute = static_cast<sb1>(s.zone && dt->tz_hour < 14 ? gen.in(0, 59) : 0);
      QWZtext text[80];
      ub4 cap = 79;
      ASSERT_EQ(QWZDateTimeToText(env_, err_, dt, U(s.format), flen, 9, nullptr, 0, &cap, text), 0)
          << s.format << " " << d;
      const std::size_t len = std::strlen(reinterpret_cast<char *>(text));
      ASSERT_EQ(QWZDateTimeFromText(env_, err_, text, len, M(s.format), flen, nullptr, 0, back), 0)
          << s.format << " " << reinterpret_cast<char *>(text);
      const std::string where = std::string(s.format) + " " + reinterpret_cast<char *>(text);
      ASSERT_EQ(qwz::datetime_date(back), qwz::datetime_date(dt)) << where;
      ASSERT_EQ(back->fraction, dt->fraction) << where;
      ASSERT_EQ(back->tz_hour, dt->tz_hour) << where;
      ASSERT_EQ(back->tz_minute, dt->tz_minute) << where;
      QWZtext again[80];
      ASSERT_EQ(QWZDateTimeToText(env_, err_, back, U(s.format), flen, 0, nullptr, 0, &cap, again),
                0);
      ASSERT_STREQ(reinterpret_cast<char *>(again), reinterpret_cast<char *>(text));
    }
  }
}

TEST_F(TextRoundTrip, ConcurrentThreadsKeepTheirOwnFormats) {
  // Each thread has its own error handle and format; the compiled formats
  // and recorded parses are per thread, the keyword table shared.
  const char *formats[] = {"YYYY-MM-DD HH24:MI:SS", "DD.MM.YYYY HH24:MI", "YYYYMMDDHH24MISS",
                           "MM/DD/YYYY"};
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    QWZError *err = nullptr;
    ASSERT_EQ(QWZHandleAlloc(env_, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR), 0);
    threads.emplace_back([&, t, err] {
      Gen gen;
      gen.rng.seed(kSeed + static_cast<unsigned>(t));
      const char *format = formats[t];
      const char *other = formats[(t + 1) % 4];
      for (int i = 0; i < 800; ++i) {
        QWZDate d = gen.date(1, 9999);
        if (t == 1) d.second = 0;
        if (t == 3) d.hour = d.minute = d.second = 0;
        for (const char *f : {format, other}) {
          QWZtext text[64];
          ub4 cap = 63;
          const ub1 flen = static_cast<ub1>(std::strlen(f));
          QWZDate back{};
          if (QWZDateToText(err, &d, U(f), flen, nullptr, 0, &cap, text) != 0 ||
              QWZDateFromText(err, text, static_cast<ub4>(std::strlen(reinterpret_cast<char *>(text))),
                              U(f), flen, nullptr, 0, &back) != 0)
            ++failures;
          else if (f == format && !(back == d))
            ++failures;
        }
      }
    });
  }
  for (std::thread &th : threads) th.join();
  EXPECT_EQ(failures.load(), 0);
}

TEST_F(TextRoundTrip, LeadingZeroFractionsDoNotComeBack) {
  // 0.05 s: the nanosecond text "50000000" has no leading zero, so FF3
  // prints "500" and reads back as 0.5 s.
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  qwz::set_datetime_date(dt, QWZDate{2024, 5, 17, 10, 20, 30});
  dt->fraction = 50000000;
  QWZtext text[64];
  ub4 cap = 63;
  ASSERT_EQ(QWZDateTimeToText(env_, err_, dt, U("SS.FF3"), 6, 0, nullptr, 0, &cap, text), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(text), "30.500");
  QWZDateTime *back = new_datetime(DATETIME_KIND_TIMESTAMP);
  ASSERT_EQ(QWZDateTimeFromText(env_, err_, text, 6, M("SS.FF3"), 6, nullptr, 0, back), 0);
  EXPECT_EQ(back->fraction, 500000000u);
}

}  // namespace
