// Every family from 8 threads at once, each thread on its own error handle
// and its own descriptors (all owned by one environment): each thread's
// results, statuses and diagnostics must equal the single-threaded ones.
// Run under ThreadSanitizer by tools/run-tests.sh --threads.
#include "support/test_support.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace qwz_test;

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 25;

const QWZText *U(const char *s) { return reinterpret_cast<const QWZText *>(s); }
QWZText *MU(const char *s) { return reinterpret_cast<QWZText *>(const_cast<char *>(s)); }

// Everything one thread produces in one round, as text.
class Log {
 public:
  explicit Log(QWZError *err) : err_(err) {}
  void status(const char *what, sword rc) {
    Diag d = read_diag(err_);
    add(std::string(what) + " rc=" + std::to_string(rc) + " diag=" + std::to_string(d.number) +
        "/" + d.state + "/" + d.message);
  }
  void add(const std::string &s) { lines_.push_back(s); }
  void date(const char *what, sword rc, const QWZDate &d) {
    char b[96];
    std::snprintf(b, sizeof b, " %d-%u-%u %u:%u:%u", d.year, d.month, d.day, d.hour, d.minute,
                  d.second);
    status(what, rc);
    lines_.back() += b;
  }
  const std::vector<std::string> &lines() const { return lines_; }

 private:
  QWZError *err_;
  std::vector<std::string> lines_;
};

struct Worker {
  QWZEnv *env;
  QWZError *err = nullptr;
  QWZDateTime *ts = nullptr, *ts2 = nullptr, *out = nullptr, *date = nullptr, *plain = nullptr;
  QWZInterval *ym = nullptr, *ds = nullptr, *ds2 = nullptr, *res = nullptr;

  explicit Worker(QWZEnv *e) : env(e) {
    QWZHandleAlloc(env, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR);
    alloc(ts, DATETIME_KIND_TIMESTAMP_TZ);
    alloc(ts2, DATETIME_KIND_TIMESTAMP_TZ);
    alloc(out, DATETIME_KIND_TIMESTAMP_TZ);
    alloc(date, DATETIME_KIND_DATE);
    alloc(plain, DATETIME_KIND_TIMESTAMP);
    alloc(ym, INTERVAL_KIND_YM);
    alloc(ds, INTERVAL_KIND_DS);
    alloc(ds2, INTERVAL_KIND_DS);
    alloc(res, INTERVAL_KIND_DS);
  }
  ~Worker() {
    QWZDescriptorFree(ts, DATETIME_KIND_TIMESTAMP_TZ);
    QWZDescriptorFree(ts2, DATETIME_KIND_TIMESTAMP_TZ);
    QWZDescriptorFree(out, DATETIME_KIND_TIMESTAMP_TZ);
    QWZDescriptorFree(date, DATETIME_KIND_DATE);
    QWZDescriptorFree(plain, DATETIME_KIND_TIMESTAMP);
    QWZDescriptorFree(ym, INTERVAL_KIND_YM);
    QWZDescriptorFree(ds, INTERVAL_KIND_DS);
    QWZDescriptorFree(ds2, INTERVAL_KIND_DS);
    QWZDescriptorFree(res, INTERVAL_KIND_DS);
    QWZHandleFree(err, QWZ_HTYPE_ERROR);
  }
  template <class T>
  void alloc(T *&d, ub4 type) {
    void *p = nullptr;
    QWZDescriptorAlloc(env, &p, type);
    d = static_cast<T *>(p);
  }

  std::vector<std::string> run() {
    Log log(err);
    dates(log);
    text(log);
    datetimes(log);
    datetime_arith(log);
    intervals(log);
    interval_numbers(log);
    arrays(log);
    return log.lines();
  }

  void dates(Log &log) {
    const QWZDate ds_[] = {{2024, 1, 31, 10, 30, 0}, {2024, 3, 31, 1, 30, 0},
                           {2023, 10, 29, 2, 30, 0}, {-4712, 1, 1, 0, 0, 0},
                           {9999, 12, 31, 23, 59, 59}, {2024, 2, 30, 0, 0, 0}};
    for (const QWZDate &d : ds_) {
      QWZDate r{};
      log.date("AddDays", QWZDateAddDays(err, &d, 400, &r), r);
      log.date("AddMonths", QWZDateAddMonths(err, &d, -13, &r), r);
      log.date("LastDay", QWZDateLastDay(err, &d, &r), r);
      log.date("NextDay", QWZDateNextDay(err, &d, U("friday"), 6, &r), r);
      sb4 n = 0;
      sword c = 0;
      log.status("DaysBetween", QWZDateDaysBetween(err, &d, &ds_[0], &n));
      log.add(std::to_string(n));
      log.status("Compare", QWZDateCompare(err, &d, &ds_[1], &c));
      log.add(std::to_string(c));
      uword valid = 0;
      log.status("Check", QWZDateCheck(err, &d, &valid));
      log.add(std::to_string(valid));
    }
  }

  void text(Log &log) {
    const char *fmts[] = {"YYYY-MM-DD HH24:MI:SS", "DD.MM.YYYY", "SYYYY-MM-DD", "YYYY-MON"};
    const QWZDate d{2024, 5, 17, 13, 45, 10};
    for (const char *f : fmts) {
      QWZtext buf[300] = {};
      ub4 cap = 256;
      const ub1 flen = static_cast<ub1>(std::strlen(f));
      log.status("DateToText", QWZDateToText(err, &d, U(f), flen, nullptr, 0, &cap, buf));
      log.add(reinterpret_cast<char *>(buf));
      QWZDate back{};
      log.date("DateFromText",
               QWZDateFromText(err, buf, static_cast<ub4>(std::strlen(reinterpret_cast<char *>(buf))),
                               U(f), flen, nullptr, 0, &back),
               back);
    }
    const char *tf = "YYYY-MM-DD HH24:MI:SS.FF3 TZH:TZM";
    log.status("DateTimeFromText",
               QWZDateTimeFromText(env, err, MU("2024-05-17 13:45:10.123 +05:30"), 30, MU(tf),
                                   static_cast<ub1>(std::strlen(tf)), nullptr, 0, ts));
    QWZtext buf[300] = {};
    ub4 cap = 256;
    log.status("DateTimeToText", QWZDateTimeToText(env, err, ts, U(tf),
                                                   static_cast<ub1>(std::strlen(tf)), 3, nullptr,
                                                   0, &cap, buf));
    log.add(reinterpret_cast<char *>(buf));
  }

  void datetimes(Log &log) {
    log.status("Construct", QWZDateTimeConstruct(env, err, ts, 2024, 3, 15, 10, 30, 5, 123456789,
                                                 MU("-03:30"), 6));
    sb2 y = 0;
    ub1 mo = 0, d = 0, h = 0, mi = 0, s = 0;
    ub4 fs = 0;
    sb1 th = 0, tm = 0;
    log.status("GetDate", QWZDateTimeGetDate(env, err, ts, &y, &mo, &d));
    log.status("GetTime", QWZDateTimeGetTime(env, err, ts, &h, &mi, &s, &fs));
    log.status("GetTimeZoneOffset", QWZDateTimeGetTimeZoneOffset(env, err, ts, &th, &tm));
    ub1 name[16] = {};
    ub4 nlen = sizeof name;
    log.status("GetTimeZoneName", QWZDateTimeGetTimeZoneName(env, err, ts, name, &nlen));
    log.add(std::to_string(y) + " " + std::to_string(mo) + " " + std::to_string(d) + " " +
            std::to_string(h) + ":" + std::to_string(mi) + ":" + std::to_string(s) + "." +
            std::to_string(fs) + " " + std::to_string(th) + ":" + std::to_string(tm) + " " +
            reinterpret_cast<char *>(name) + " " + std::to_string(nlen));
    log.status("Convert", QWZDateTimeConvert(env, err, ts, date));
    log.status("GetDate", QWZDateTimeGetDate(env, err, date, &y, &mo, &d));
    log.add(std::to_string(y) + "-" + std::to_string(mo) + "-" + std::to_string(d));
    ub4 valid = 0;
    log.status("Check", QWZDateTimeCheck(env, err, ts, &valid));
    log.status("Assign", QWZDateTimeAssign(env, err, ts, ts2));
    log.status("Construct invalid",
               QWZDateTimeConstruct(env, err, plain, 2023, 2, 29, 0, 0, 0, 0, nullptr, 0));
  }

  void datetime_arith(Log &log) {
    QWZDateTimeConstruct(env, err, ts, 2024, 3, 30, 23, 0, 0, 0, MU("+01:00"), 6);
    QWZDateTimeConstruct(env, err, ts2, 2024, 1, 1, 0, 0, 0, 0, MU("-05:00"), 6);
    QWZIntervalSetDaySecond(env, err, 1, 2, 3, 4, 5, ds);
    QWZIntervalSetYearMonth(env, err, 1, 11, ym);
    sb2 y = 0;
    ub1 mo = 0, d = 0, h = 0, mi = 0, s = 0;
    ub4 fs = 0;
    log.status("IntervalAdd ds", QWZDateTimeIntervalAdd(env, err, ts, ds, out));
    QWZDateTimeGetDate(env, err, out, &y, &mo, &d);
    QWZDateTimeGetTime(env, err, out, &h, &mi, &s, &fs);
    log.add(std::to_string(y) + "-" + std::to_string(mo) + "-" + std::to_string(d) + " " +
            std::to_string(h) + ":" + std::to_string(mi) + ":" + std::to_string(s) + "." +
            std::to_string(fs));
    log.status("IntervalAdd ym", QWZDateTimeIntervalAdd(env, err, ts, ym, out));
    log.status("IntervalSub ym", QWZDateTimeIntervalSub(env, err, ts, ym, out));
    log.status("IntervalAdd wrong type", QWZDateTimeIntervalAdd(env, err, plain, ds, out));
    log.status("Subtract", QWZDateTimeSubtract(env, err, ts, ts2, ds2));
    sb4 dd = 0, hh = 0, mm = 0, ss = 0, ff = 0;
    QWZIntervalGetDaySecond(env, err, &dd, &hh, &mm, &ss, &ff, ds2);
    log.add(std::to_string(dd) + " " + std::to_string(hh) + ":" + std::to_string(mm) + ":" +
            std::to_string(ss) + "." + std::to_string(ff));
    sword c = 9;
    log.status("Compare", QWZDateTimeCompare(env, err, ts, ts2, &c));
    log.add(std::to_string(c));
  }

  void intervals(Log &log) {
    log.status("FromText ds", QWZIntervalFromText(env, err, U("-3 04:05:06.789"), 15, ds));
    log.status("FromText ym", QWZIntervalFromText(env, err, U("1-12"), 4, ym));
    log.status("SetDaySecond", QWZIntervalSetDaySecond(env, err, 1, 23, 59, 59, 99999, ds2));
    log.status("Add", QWZIntervalAdd(env, err, ds, ds2, res));
    log.status("Subtract", QWZIntervalSubtract(env, err, ds, ds2, res));
    sword c = 9;
    log.status("Compare", QWZIntervalCompare(env, err, ds, ds2, &c));
    log.add(std::to_string(c));
    QWZtext buf[64] = {};
    size_t len = 0;
    log.status("ToText", QWZIntervalToText(env, err, res, 9, 5, buf, sizeof buf, &len));
    log.add(reinterpret_cast<char *>(buf));
    log.status("Assign wrong kind", QWZIntervalAssign(env, err, ds, ym));
    ub4 valid = 0;
    log.status("Check", QWZIntervalCheck(env, err, ds, &valid));
    log.add(std::to_string(valid));
  }

  void interval_numbers(Log &log) {
    QWZNumber n;
    const double v = 1.75;
    log.status("FromReal", QWZNumberFromReal(err, &v, sizeof v, &n));
    log.status("FromNumber", QWZIntervalFromNumber(env, err, ds, &n));
    log.status("Multiply", QWZIntervalMultiply(env, err, ds, &n, res));
    log.status("Divide", QWZIntervalDivide(env, err, ds, &n, res));
    QWZNumber out;
    log.status("ToNumber", QWZIntervalToNumber(env, err, res, &out));
    double back = 0;
    log.status("ToReal", QWZNumberToReal(err, &out, sizeof back, &back));
    char b[64];
    std::snprintf(b, sizeof b, "%.17g", back);
    log.add(b);
    const double zero = 0;
    QWZNumberFromReal(err, &zero, sizeof zero, &n);
    log.status("Divide by zero", QWZIntervalDivide(env, err, ds, &n, res));
  }

  void arrays(Log &log) {
    ub1 in[13] = {120, 124, 3, 31, 11, 1, 1, 7, 91, 205, 21, 22, 60};
    ub4 len = sizeof in;
    log.status("FromArray", QWZDateTimeFromArray(env, err, in, &len, DATETIME_CLASS_TIMESTAMP_TZ,
                                                 ts, ds, 3));
    ub1 outa[8] = {};
    ub4 olen = 0;
    log.status("ToArray", QWZDateTimeToArray(env, err, ts, ds, outa, &olen, 3));
    std::string s;
    for (ub1 b : outa) s += std::to_string(b) + ",";
    log.add(s + " " + std::to_string(olen));
    log.status("FromArray bad class",
               QWZDateTimeFromArray(env, err, in, &len, 189, ts, ds, 3));
  }
};

class AllFamiliesThreads : public HandleFixture {};

TEST_F(AllFamiliesThreads, EightThreadsMatchOneThread) {
  for (const char *zone : {kUtc, kCet}) {
    SCOPED_TRACE(zone);
    ZoneGuard guard(zone);
    std::vector<std::string> expected;
    {
      Worker w(env_);
      expected = w.run();
    }
    ASSERT_GT(expected.size(), 100u);
    std::vector<std::vector<std::string>> got(kThreads);
    std::vector<int> mismatches(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        Worker w(env_);
        for (int r = 0; r < kRounds; ++r) {
          std::vector<std::string> lines = w.run();
          if (lines != expected) {
            ++mismatches[t];
            got[t] = std::move(lines);
          }
        }
      });
    }
    for (std::thread &th : threads) th.join();
    for (int t = 0; t < kThreads; ++t) {
      EXPECT_EQ(mismatches[t], 0) << "thread " << t;
      if (mismatches[t] != 0) {
        EXPECT_EQ(got[t], expected);
      }
    }
  }
}

}  // namespace
