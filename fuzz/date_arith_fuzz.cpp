// Date arithmetic on arbitrary fields, counts and weekday texts. Every date
// a function accepted passes the date check; comparison and day counts are
// antisymmetric; in UTC moving by n days (up to the 24855 days that the
// 32-bit step allows) is undone by the day count.
#include "fuzz_common.h"

using namespace qwz_fuzz;

namespace {

QWZDate take_date(FuzzedDataProvider &in, bool plausible) {
  QWZDate d{};
  if (plausible) {
    d.year = static_cast<sb2>(in.ConsumeIntegralInRange<int>(-4713, 10000));
    d.month = in.ConsumeIntegralInRange<ub2>(0, 13);
    d.day = in.ConsumeIntegralInRange<ub2>(0, 32);
    d.hour = in.ConsumeIntegralInRange<ub2>(0, 24);
    d.minute = in.ConsumeIntegralInRange<ub2>(0, 60);
    d.second = in.ConsumeIntegralInRange<ub2>(0, 60);
  } else {
    d.year = in.ConsumeIntegral<sb2>();
    d.month = in.ConsumeIntegral<ub2>();
    d.day = in.ConsumeIntegral<ub2>();
    d.hour = in.ConsumeIntegral<ub2>();
    d.minute = in.ConsumeIntegral<ub2>();
    d.second = in.ConsumeIntegral<ub2>();
  }
  return d;
}

bool valid(QWZError *err, const QWZDate &d) {
  uword flags = 1;
  return QWZDateCheck(err, &d, &flags) == QWZ_SUCCESS && flags == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  QWZError *err = handles().err;
  const uint8_t flags = in.ConsumeIntegral<uint8_t>();
  Tracing tracing(flags & 1);
  const QWZDate a = take_date(in, flags & 2);
  const QWZDate b = take_date(in, flags & 4);
  const sb4 count =
      flags & 8 ? in.ConsumeIntegralInRange<sb4>(-5000000, 5000000) : in.ConsumeIntegral<sb4>();
  const std::string day = take_text(in, 300);
  QWZDate r{};

  if (QWZDateAddDays(err, &a, count, &r) == QWZ_SUCCESS) {
    FUZZ_CHECK(valid(err, a), "AddDays accepted %s", date_str(a).c_str());
    sb4 n = 0;
    // The step in seconds is a 32-bit product that wraps beyond 24855 days.
    if (zone_is_utc() && count >= -24855 && count <= 24855 && valid(err, r) &&
        QWZDateDaysBetween(err, &r, &a, &n) == QWZ_SUCCESS)
      FUZZ_CHECK(n == count, "%s + %d days = %s, %d days apart", date_str(a).c_str(), count,
                 date_str(r).c_str(), n);
  }
  if (QWZDateAddMonths(err, &a, count, &r) == QWZ_SUCCESS)
    FUZZ_CHECK(valid(err, a), "AddMonths accepted %s", date_str(a).c_str());
  if (QWZDateLastDay(err, &a, &r) == QWZ_SUCCESS)
    FUZZ_CHECK(valid(err, a), "LastDay accepted %s", date_str(a).c_str());
  if (QWZDateNextDay(err, &a, T(day), static_cast<ub4>(day.size()), &r) == QWZ_SUCCESS)
    FUZZ_CHECK(valid(err, a), "NextDay accepted %s", date_str(a).c_str());
  if (QWZDateAssign(err, &a, &r) == QWZ_SUCCESS)
    FUZZ_CHECK(valid(err, a) && std::memcmp(&a, &r, sizeof a) == 0, "Assign accepted %s",
               date_str(a).c_str());
  sword c1 = 9, c2 = 9;
  if (QWZDateCompare(err, &a, &b, &c1) == QWZ_SUCCESS) {
    FUZZ_CHECK(valid(err, a) && valid(err, b), "Compare accepted %s %s", date_str(a).c_str(),
               date_str(b).c_str());
    FUZZ_CHECK(QWZDateCompare(err, &b, &a, &c2) == QWZ_SUCCESS && c1 == -c2 && c1 >= -1 && c1 <= 1,
               "%s %s compare %d and %d", date_str(a).c_str(), date_str(b).c_str(), c1, c2);
  }
  sb4 n1 = 0, n2 = 0;
  if (QWZDateDaysBetween(err, &a, &b, &n1) == QWZ_SUCCESS) {
    FUZZ_CHECK(valid(err, a) && valid(err, b), "DaysBetween accepted %s %s", date_str(a).c_str(),
               date_str(b).c_str());
    FUZZ_CHECK(QWZDateDaysBetween(err, &b, &a, &n2) == QWZ_SUCCESS && n1 == -n2,
               "%s %s days %d and %d", date_str(a).c_str(), date_str(b).c_str(), n1, n2);
  }
  QWZDate z = a;
  std::string zone = day;
  QWZDateZoneToZone(err, &z, MT(zone), static_cast<ub4>(zone.size()), MT(zone),
                    static_cast<ub4>(zone.size()), &r);
  return 0;
}
