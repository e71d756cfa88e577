// The clock is read only when a conversion needs it: a missing year or month
// when reading text. The C library's time() and localtime_r() are counted by
// wrapping them in this test program.
#include "text_test_util.h"

#include <dlfcn.h>

#include <atomic>

using namespace qwz_test;
using namespace text_test;

namespace {
std::atomic<int> g_time_calls{0};
std::atomic<int> g_localtime_calls{0};
}  // namespace

extern "C" time_t time(time_t *t) {
  ++g_time_calls;
  struct timespec ts;
  clock_gettime(CLOCK_REALTIME, &ts);
  if (t) *t = ts.tv_sec;
  return ts.tv_sec;
}

extern "C" struct tm *localtime_r(const time_t *t, struct tm *out) {
  using Fn = struct tm *(*)(const time_t *, struct tm *);
  static const Fn real = reinterpret_cast<Fn>(dlsym(RTLD_NEXT, "localtime_r"));
  ++g_localtime_calls;
  return real(t, out);
}

namespace {

class ClockReads : public HandleFixture {
 protected:
  void reset() { g_time_calls = g_localtime_calls = 0; }
  int reads() const { return g_time_calls + g_localtime_calls; }
  ZoneGuard zone_{kUtc};
};

TEST_F(ClockReads, OnlyAMissingYearOrMonthReadsTheClock) {
  QWZDate d{};
  reset();
  ASSERT_EQ(QWZDateFromText(err_, U("2024-05-17 10:20:30"), 19, U("YYYY-MM-DD HH24:MI:SS"), 21,
                            nullptr, 0, &d),
            0);
  ASSERT_EQ(QWZDateFromText(err_, U("2024-05"), 7, U("YYYY-MM"), 7, nullptr, 0, &d), 0);
  EXPECT_EQ(reads(), 0);
  ASSERT_EQ(QWZDateFromText(err_, U("05-17"), 5, U("MM-DD"), 5, nullptr, 0, &d), 0);
  EXPECT_EQ(g_time_calls, 1);
  EXPECT_EQ(g_localtime_calls, 1);
  reset();
  ASSERT_EQ(QWZDateFromText(err_, U("2024"), 4, U("YYYY"), 4, nullptr, 0, &d), 0);
  EXPECT_EQ(g_time_calls, 1);
}

TEST_F(ClockReads, WritingTextAndZoneReadingNeverReadTheClock) {
  const QWZDate d{2024, 5, 17, 10, 20, 30};
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  qwz::set_datetime_date(dt, d);
  QWZtext buf[64];
  ub4 size = 63;
  reset();
  ASSERT_EQ(QWZDateToText(err_, &d, U("YYYY-MM-DD HH24:MI:SS"), 21, nullptr, 0, &size, buf), 0);
  ASSERT_EQ(QWZDateTimeToText(env_, err_, dt, U("YYYY-MM-DD HH24:MI:SS.FF3 TZH:TZM"), 33, 0,
                              nullptr, 0, &size, buf),
            0);
  ASSERT_EQ(QWZDateTimeFromText(env_, err_, M("2024-05-17 10:20:30.123 +01:00"), 30,
                                M("YYYY-MM-DD HH24:MI:SS.FF3 TZH:TZM"), 33, nullptr, 0, dt),
            0);
  // The zone reader of descriptor construction reads no year or month.
  ASSERT_EQ(append_timezone_from_text(err_, U("+05:30"), 6, U("TZH:TZM"), 7, dt), 0);
  EXPECT_EQ(reads(), 0);
  // The shared entry itself fills in the missing year and month.
  datetime_fields f{};
  sb4 code = 0;
  ASSERT_EQ(qwz_char_to_datetime(U("+05:30"), 6, U("TZH:TZM"), 7, &f, 0, &code), 1);
  EXPECT_EQ(g_time_calls, 1);
}

}  // namespace
