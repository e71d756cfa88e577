// append_timezone_from_text: the zone reader descriptor construction uses.
#include "support/test_support.h"

#include <cstring>

using namespace qwz_test;

namespace {

const QWZText *T(const char *s) { return reinterpret_cast<const QWZText *>(s); }
constexpr const char kZoneFormat[] = "TZH:TZM";

class AppendTimezoneFromText : public HandleFixture {};

struct ZoneCase {
  const char *text;
  sb1 hour;
  sb1 minute;
};

TEST_F(AppendTimezoneFromText, ReadsZoneAndGivesTheMinuteTheHoursSign) {
  const ZoneCase cases[] = {
      {"-05:30", -5, -30}, {"+05:30", 5, 30}, {"+00:00", 0, 0}, {"-12:00", -12, 0},
      {"+14:00", 14, 0},   {"-00:45", 0, -45}, {" +09:15 ", 9, 15}, {"+5:3", 5, 3},
      {"-3", -3, 0},       {"", 0, 0},         {"   ", 0, 0},
      // Without a sign the first non-digit is taken by the hour as the one
      // separator, so the hour runs on to three digits.
      {"05:30", 53, 0},
  };
  for (const ZoneCase &c : cases) {
    QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
    dt->year = 2024;
    dt->month = 5;
    dt->fraction = 77;
    ASSERT_EQ(append_timezone_from_text(err_, T(c.text), std::strlen(c.text), T(kZoneFormat), 7,
                                        dt),
              0)
        << c.text;
    EXPECT_EQ(dt->tz_hour, c.hour) << c.text;
    EXPECT_EQ(dt->tz_minute, c.minute) << c.text;
    // Nothing else is touched.
    EXPECT_EQ(dt->year, 2024);
    EXPECT_EQ(dt->month, 5);
    EXPECT_EQ(dt->day, 0);
    EXPECT_EQ(dt->fraction, 77u);
    expect_clear();
  }
}

TEST_F(AppendTimezoneFromText, TextThatDoesNotMatchFailsWithoutDiagnostic) {
  for (const char *text : {"ab:cd", "05x30", "+05:30 x", "-05:30  x y"}) {
    QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
    dt->tz_hour = 3;
    EXPECT_EQ(append_timezone_from_text(err_, T(text), std::strlen(text), T(kZoneFormat), 7, dt),
              -1)
        << text;
    EXPECT_EQ(dt->tz_hour, 3);
    expect_clear();
  }
}

TEST_F(AppendTimezoneFromText, FormatAtFaultIsReportedWithTheDateSetter) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  EXPECT_EQ(append_timezone_from_text(err_, T("+05:30"), 6, T("TZR"), 3, dt), -1);
  expect_diag(11104, "22007", "ERROR: [QWZ-11104][QWZ Driver].format string is invalid\n");
}

}  // namespace
