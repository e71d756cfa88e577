#include "support/test_support.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace qwz_test {

Diag read_diag(QWZError *err) {
  Diag d;
  QWZText state[16] = {};
  QWZText msg[4096] = {};
  d.rc = QWZErrorGet(err, 1, state, &d.number, msg, sizeof msg, QWZ_HTYPE_ERROR);
  d.state = reinterpret_cast<char *>(state);
  d.message = reinterpret_cast<char *>(msg);
  return d;
}

ZoneGuard::ZoneGuard(const char *tz) {
  if (const char *old = std::getenv("TZ")) {
    had_ = true;
    old_ = old;
  }
  setenv("TZ", tz, 1);
  tzset();
}

ZoneGuard::~ZoneGuard() {
  if (had_) setenv("TZ", old_.c_str(), 1);
  else unsetenv("TZ");
  tzset();
}

namespace {
std::vector<TraceRecord> g_records;
sword g_entry_result = 0;
sword g_exit_result = 0;

sword capture_hook(void *errhp, sword status, ub4 direction, ub4 api_id, const char *record) {
  g_records.push_back({status, direction, api_id, record, errhp});
  return direction ? g_entry_result : g_exit_result;
}
}  // namespace

TraceCapture::TraceCapture() {
  g_records.clear();
  g_entry_result = g_exit_result = 0;
  QWZTraceSetHook(capture_hook);
  qwz_trace_flag = 1;
}

TraceCapture::~TraceCapture() {
  qwz_trace_flag = 0;
  QWZTraceSetHook(nullptr);
  g_records.clear();
}

std::vector<TraceRecord> &TraceCapture::records() { return g_records; }

void TraceCapture::set_results(sword entry_result, sword exit_result) {
  g_entry_result = entry_result;
  g_exit_result = exit_result;
}

void HandleFixture::SetUp() {
  ASSERT_EQ(QWZEnvCreate(&env_, 0), QWZ_SUCCESS);
  ASSERT_EQ(QWZHandleAlloc(env_, reinterpret_cast<void **>(&err_), QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  ASSERT_EQ(QWZHandleAlloc(env_, reinterpret_cast<void **>(&session_), QWZ_HTYPE_SESSION),
            QWZ_SUCCESS);
}

void HandleFixture::TearDown() {
  if (env_) QWZHandleFree(env_, QWZ_HTYPE_ENV);
}

void HandleFixture::expect_diag(sb4 number, const std::string &state, const std::string &message) {
  Diag d = diag();
  EXPECT_EQ(d.rc, QWZ_SUCCESS);
  EXPECT_EQ(d.number, number);
  EXPECT_EQ(d.state, state);
  EXPECT_EQ(d.message, message);
}

void HandleFixture::expect_clear() {
  Diag d = diag();
  EXPECT_EQ(d.rc, QWZ_NO_DATA);
  EXPECT_EQ(d.number, 0);
  EXPECT_EQ(d.state, "");
  EXPECT_EQ(d.message, "");
}

QWZDateTime *HandleFixture::new_datetime(ub4 type) {
  void *d = nullptr;
  EXPECT_EQ(QWZDescriptorAlloc(env_, &d, type), QWZ_SUCCESS);
  return static_cast<QWZDateTime *>(d);
}

QWZInterval *HandleFixture::new_interval(ub4 type) {
  void *d = nullptr;
  EXPECT_EQ(QWZDescriptorAlloc(env_, &d, type), QWZ_SUCCESS);
  return static_cast<QWZInterval *>(d);
}

std::string hex12(const void *p) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "0x%012lX", reinterpret_cast<unsigned long>(p));
  return buf;
}

}  // namespace qwz_test
