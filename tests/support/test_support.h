// Helpers shared by the test files: handles, diagnostics read back through
// QWZErrorGet, trace capture through the hook, and a pinned time zone.
#ifndef QWZ_TESTS_SUPPORT_H
#define QWZ_TESTS_SUPPORT_H

#include "date_datetime_interval/internal.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qwz_test {

// A diagnostic as a caller reads it back.
struct Diag {
  sword rc = 0;  // QWZErrorGet's own status
  sb4 number = 0;
  std::string state;
  std::string message;
};
Diag read_diag(QWZError *err);

// The POSIX zone strings the calendar tests run in.
inline constexpr const char kUtc[] = "UTC0";
// Central Europe: +1 in winter, +2 from the last Sunday of March 02:00 to the
// last Sunday of October 03:00.
inline constexpr const char kCet[] = "CET-1CEST,M3.5.0,M10.5.0/3";
// US Eastern: -5 in winter, -4 in summer.
inline constexpr const char kEst[] = "EST5EDT,M3.2.0,M11.1.0";

// Sets TZ for the test's lifetime and restores the previous value after.
class ZoneGuard {
 public:
  explicit ZoneGuard(const char *tz);
  ~ZoneGuard();
  ZoneGuard(const ZoneGuard &) = delete;
  ZoneGuard &operator=(const ZoneGuard &) = delete;

 private:
  bool had_ = false;
  std::string old_;
};

// One captured trace record.
struct TraceRecord {
  sword status;
  ub4 direction;
  ub4 api_id;
  std::string text;
  void *errhp;
};

// Installs a hook for its lifetime and turns tracing on; records every call.
// entry_result / exit_result are what the hook returns.
class TraceCapture {
 public:
  TraceCapture();
  ~TraceCapture();
  TraceCapture(const TraceCapture &) = delete;
  TraceCapture &operator=(const TraceCapture &) = delete;
  std::vector<TraceRecord> &records();
  void set_results(sword entry_result, sword exit_result);
};

// An environment with an error handle and a session handle.
class HandleFixture : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  Diag diag() { return read_diag(err_); }
  // Expects the handle to hold exactly this diagnostic.
  void expect_diag(sb4 number, const std::string &state, const std::string &message);
  // Expects the handle to hold no diagnostic.
  void expect_clear();
  QWZDateTime *new_datetime(ub4 type);
  QWZInterval *new_interval(ub4 type);

  QWZEnv *env_ = nullptr;
  QWZError *err_ = nullptr;
  QWZSession *session_ = nullptr;
};

// printf-style helper for expected trace records.
std::string hex12(const void *p);

}  // namespace qwz_test

#endif  // QWZ_TESTS_SUPPORT_H
