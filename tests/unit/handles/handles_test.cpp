// Environments, handles and descriptors: allocation and freeing, ownership,
// the validators, QWZErrorGet, and concurrent callers each with their own
// handles.
#include "support/calendar_reference.h"
#include "support/test_support.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

using namespace qwz_test;

namespace {

const ub4 kDescriptorTypes[] = {62, 63, 65, 66, 67, 68, 69, 70};

QWZDate D(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return QWZDate{static_cast<sb2>(y), static_cast<ub2>(mo), static_cast<ub2>(d),
                 static_cast<ub2>(h), static_cast<ub2>(mi), static_cast<ub2>(s)};
}

}  // namespace

// ---- environments and handles ---------------------------------------------------

TEST(Env, CreateAndFree) {
  QWZEnv *env = nullptr;
  ASSERT_EQ(QWZEnvCreate(&env, 0), QWZ_SUCCESS);
  ASSERT_NE(env, nullptr);
  EXPECT_EQ(qwz_validate_handle(env, QWZ_HTYPE_ENV), 0);
  EXPECT_EQ(qwz_validate_handle(env, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_handle_env(env), env);
  EXPECT_EQ(QWZHandleFree(env, QWZ_HTYPE_ENV), QWZ_SUCCESS);
  EXPECT_EQ(qwz_validate_handle(env, QWZ_HTYPE_ENV), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZHandleFree(env, QWZ_HTYPE_ENV), QWZ_INVALID_HANDLE);  // freed twice
}

TEST(Env, CreateRefusals) {
  EXPECT_EQ(QWZEnvCreate(nullptr, 0), QWZ_ERROR);
  QWZEnv *env = nullptr;
  EXPECT_EQ(QWZEnvCreate(&env, 1), QWZ_ERROR);
  EXPECT_EQ(env, nullptr);
}

class Handles : public HandleFixture {};

TEST_F(Handles, AllocAndFree) {
  void *err = nullptr, *ses = nullptr;
  ASSERT_EQ(QWZHandleAlloc(env_, &err, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  ASSERT_EQ(QWZHandleAlloc(env_, &ses, QWZ_HTYPE_SESSION), QWZ_SUCCESS);
  EXPECT_NE(err, ses);
  EXPECT_EQ(qwz_validate_handle(err, QWZ_HTYPE_ERROR), 0);
  EXPECT_EQ(qwz_validate_handle(ses, QWZ_HTYPE_SESSION), 0);
  EXPECT_EQ(qwz_handle_env(err), env_);
  EXPECT_EQ(qwz_handle_env(ses), env_);
  // A new error handle holds no diagnostic.
  EXPECT_EQ(read_diag(static_cast<QWZError *>(err)).rc, QWZ_NO_DATA);
  // Freeing checks the type.
  EXPECT_EQ(QWZHandleFree(err, QWZ_HTYPE_SESSION), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZHandleFree(err, 62), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZHandleFree(err, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  EXPECT_EQ(qwz_validate_handle(err, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZHandleFree(err, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZHandleFree(ses, QWZ_HTYPE_SESSION), QWZ_SUCCESS);
  EXPECT_EQ(qwz_validate_handle(ses, QWZ_HTYPE_SESSION), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_handle_env(ses), nullptr);
  EXPECT_EQ(QWZHandleFree(nullptr, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
}

TEST_F(Handles, AllocRefusals) {
  void *h = reinterpret_cast<void *>(0x1);
  EXPECT_EQ(QWZHandleAlloc(nullptr, &h, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZHandleAlloc(err_, &h, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);     // not an env
  EXPECT_EQ(QWZHandleAlloc(session_, &h, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZHandleAlloc(env_, nullptr, QWZ_HTYPE_ERROR), QWZ_ERROR);
  for (ub4 type : {0u, 1u, 3u, 8u, 10u, 62u, 65u})
    EXPECT_EQ(QWZHandleAlloc(env_, &h, type), QWZ_ERROR) << type;
  EXPECT_EQ(h, reinterpret_cast<void *>(0x1));
}

// ---- descriptors -------------------------------------------------------------

TEST_F(Handles, DescriptorsOfEveryType) {
  const long before = qwz_live_descriptor_count();
  for (ub4 type : kDescriptorTypes)
    for (const void *parent : {static_cast<const void *>(env_), static_cast<const void *>(session_)}) {
      void *d = nullptr;
      ASSERT_EQ(QWZDescriptorAlloc(parent, &d, type), QWZ_SUCCESS) << type;
      EXPECT_EQ(qwz_validate_handle(d, type), 0);
      EXPECT_EQ(qwz_handle_env(d), env_);  // a session's descriptors belong to its environment
      EXPECT_EQ(qwz_live_descriptor_count(), before + 1);
      const bool is_datetime = type >= 65;
      EXPECT_EQ(qwz_validate_datetime_handle(d), is_datetime ? 0 : QWZ_INVALID_HANDLE);
      EXPECT_EQ(qwz_validate_interval_handle(d), is_datetime ? QWZ_INVALID_HANDLE : 0);
      if (is_datetime) {
        const auto *dt = static_cast<const QWZDateTime *>(d);
        EXPECT_EQ(dt->hdr.type, type);
        EXPECT_EQ(dt->year, 0);
        EXPECT_EQ(dt->month, 0);
        EXPECT_EQ(dt->day, 0);
        EXPECT_EQ(dt->hour, 0);
        EXPECT_EQ(dt->minute, 0);
        EXPECT_EQ(dt->second, 0);
        EXPECT_EQ(dt->fraction, 0u);
        EXPECT_EQ(dt->tz_hour, 0);
        EXPECT_EQ(dt->tz_minute, 0);
      } else {
        const auto *iv = static_cast<const QWZInterval *>(d);
        EXPECT_EQ(iv->hdr.type, type);
        for (sb4 v : iv->slot) EXPECT_EQ(v, 0);
      }
      // Freed only under its own type.
      const ub4 other = type == 70 ? 65 : type + 1;
      EXPECT_EQ(QWZDescriptorFree(d, other), QWZ_INVALID_HANDLE);
      EXPECT_EQ(QWZDescriptorFree(d, type), QWZ_SUCCESS);
      EXPECT_EQ(qwz_validate_handle(d, type), QWZ_INVALID_HANDLE);
      EXPECT_EQ(qwz_validate_datetime_handle(d), QWZ_INVALID_HANDLE);
      EXPECT_EQ(qwz_validate_interval_handle(d), QWZ_INVALID_HANDLE);
      EXPECT_EQ(QWZDescriptorFree(d, type), QWZ_INVALID_HANDLE);
      EXPECT_EQ(qwz_live_descriptor_count(), before);
    }
}

TEST_F(Handles, ValuesAreZeroEvenInReusedSlots) {
  void *d = nullptr;
  ASSERT_EQ(QWZDescriptorAlloc(env_, &d, 68), QWZ_SUCCESS);
  auto *dt = static_cast<QWZDateTime *>(d);
  dt->year = 2024;
  dt->fraction = 999;
  dt->tz_hour = 5;
  ASSERT_EQ(QWZDescriptorFree(d, 68), QWZ_SUCCESS);
  for (int i = 0; i < 4; ++i) {
    void *n = nullptr;
    ASSERT_EQ(QWZDescriptorAlloc(env_, &n, 69), QWZ_SUCCESS);
    const auto *x = static_cast<const QWZDateTime *>(n);
    EXPECT_EQ(x->year, 0);
    EXPECT_EQ(x->fraction, 0u);
    EXPECT_EQ(x->tz_hour, 0);
  }
}

TEST_F(Handles, DescriptorRefusals) {
  void *d = reinterpret_cast<void *>(0x1);
  EXPECT_EQ(QWZDescriptorAlloc(nullptr, &d, 65), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDescriptorAlloc(err_, &d, 65), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDescriptorAlloc(env_, nullptr, 65), QWZ_ERROR);
  for (ub4 type : {0u, 1u, 2u, 9u, 61u, 64u, 71u, 1000u})
    EXPECT_EQ(QWZDescriptorAlloc(env_, &d, type), QWZ_ERROR) << type;
  EXPECT_EQ(d, reinterpret_cast<void *>(0x1));
  EXPECT_EQ(QWZDescriptorFree(nullptr, 65), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDescriptorFree(err_, 2), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDescriptorFree(env_, 65), QWZ_INVALID_HANDLE);
}

TEST_F(Handles, InternalDescriptorAllocators) {
  const long before = qwz_live_descriptor_count();
  QWZDateTime *dt = qwz_datetime_descriptor_alloc(env_, 69);
  ASSERT_NE(dt, nullptr);
  EXPECT_EQ(dt->hdr.type, 69);
  EXPECT_EQ(dt->year, 0);
  EXPECT_EQ(qwz_validate_datetime_handle(dt), 0);
  QWZInterval *iv = _QWZIntervalDescriptorAlloc(env_, 62);
  ASSERT_NE(iv, nullptr);
  EXPECT_EQ(qwz_validate_interval_handle(iv), 0);
  EXPECT_EQ(qwz_live_descriptor_count(), before + 2);
  EXPECT_EQ(qwz_datetime_descriptor_alloc(env_, 62), nullptr);
  EXPECT_EQ(qwz_datetime_descriptor_alloc(reinterpret_cast<QWZEnv *>(err_), 65), nullptr);
  EXPECT_EQ(qwz_datetime_descriptor_alloc(nullptr, 65), nullptr);
  EXPECT_EQ(_QWZIntervalDescriptorAlloc(env_, 65), nullptr);
  EXPECT_EQ(_QWZIntervalDescriptorAlloc(nullptr, 63), nullptr);
  EXPECT_EQ(_QWZDateTimeDescriptorFree(reinterpret_cast<QWZDateTime *>(iv)), QWZ_INVALID_HANDLE);
  EXPECT_EQ(_QWZIntervalDescriptorFree(reinterpret_cast<QWZInterval *>(dt)), QWZ_INVALID_HANDLE);
  EXPECT_EQ(_QWZDateTimeDescriptorFree(dt), QWZ_SUCCESS);
  EXPECT_EQ(_QWZIntervalDescriptorFree(iv), QWZ_SUCCESS);
  EXPECT_EQ(_QWZDateTimeDescriptorFree(dt), QWZ_INVALID_HANDLE);
  EXPECT_EQ(_QWZIntervalDescriptorFree(iv), QWZ_INVALID_HANDLE);
  EXPECT_EQ(_QWZDateTimeDescriptorFree(nullptr), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_live_descriptor_count(), before);
}

// ---- validators -----------------------------------------------------------------

TEST_F(Handles, ValidatorsOnBadPointers) {
  alignas(64) unsigned char garbage[256];
  std::memset(garbage, 0, sizeof garbage);
  const void *bad[] = {nullptr, garbage, garbage + 4, garbage + 1};
  for (const void *p : bad) {
    for (ub4 type : {1u, 2u, 9u, 62u, 63u, 65u, 70u})
      EXPECT_EQ(qwz_validate_handle(p, type), QWZ_INVALID_HANDLE);
    EXPECT_EQ(qwz_validate_datetime_handle(p), QWZ_INVALID_HANDLE);
    EXPECT_EQ(qwz_validate_interval_handle(p), QWZ_INVALID_HANDLE);
  }
  // Wrong types.
  EXPECT_EQ(qwz_validate_handle(err_, QWZ_HTYPE_ENV), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_validate_handle(session_, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_validate_handle(env_, QWZ_HTYPE_SESSION), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_validate_datetime_handle(err_), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_validate_interval_handle(env_), QWZ_INVALID_HANDLE);
  QWZDateTime *dt = new_datetime(65);
  QWZInterval *iv = new_interval(63);
  EXPECT_EQ(qwz_validate_handle(dt, 66), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_validate_handle(iv, 62), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_validate_handle(dt, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_validate_interval_handle(dt), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_validate_datetime_handle(iv), QWZ_INVALID_HANDLE);
}

// ---- ownership -------------------------------------------------------------------

TEST(Ownership, FreeingAnEnvironmentFreesEverythingItOwns) {
  const long before = qwz_live_descriptor_count();
  QWZEnv *env = nullptr;
  ASSERT_EQ(QWZEnvCreate(&env, 0), QWZ_SUCCESS);
  void *err = nullptr, *ses = nullptr;
  ASSERT_EQ(QWZHandleAlloc(env, &err, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  ASSERT_EQ(QWZHandleAlloc(env, &ses, QWZ_HTYPE_SESSION), QWZ_SUCCESS);
  std::vector<std::pair<void *, ub4>> descs;
  for (ub4 type : kDescriptorTypes)
    for (const void *parent : {static_cast<const void *>(env), static_cast<const void *>(ses)}) {
      void *d = nullptr;
      ASSERT_EQ(QWZDescriptorAlloc(parent, &d, type), QWZ_SUCCESS);
      descs.push_back({d, type});
    }
  QWZDateTime *tmp = qwz_datetime_descriptor_alloc(env, 68);
  ASSERT_NE(tmp, nullptr);
  EXPECT_EQ(qwz_live_descriptor_count(), before + 17);
  // Freeing one in the middle keeps the others owned.
  ASSERT_EQ(QWZDescriptorFree(descs[3].first, descs[3].second), QWZ_SUCCESS);
  EXPECT_EQ(qwz_live_descriptor_count(), before + 16);

  // A second environment is not affected.
  QWZEnv *other = nullptr;
  ASSERT_EQ(QWZEnvCreate(&other, 0), QWZ_SUCCESS);
  void *other_err = nullptr, *other_desc = nullptr;
  ASSERT_EQ(QWZHandleAlloc(other, &other_err, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  ASSERT_EQ(QWZDescriptorAlloc(other, &other_desc, 63), QWZ_SUCCESS);

  ASSERT_EQ(QWZHandleFree(env, QWZ_HTYPE_ENV), QWZ_SUCCESS);
  EXPECT_EQ(qwz_live_descriptor_count(), before + 1);
  EXPECT_EQ(qwz_validate_handle(err, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
  EXPECT_EQ(qwz_validate_handle(ses, QWZ_HTYPE_SESSION), QWZ_INVALID_HANDLE);
  // (descs[3] was freed before; its slot may since hold the other environment's descriptor.)
  for (std::size_t i = 0; i < descs.size(); ++i)
    if (i != 3) {
      EXPECT_EQ(qwz_validate_handle(descs[i].first, descs[i].second), QWZ_INVALID_HANDLE) << i;
    }
  EXPECT_EQ(qwz_validate_datetime_handle(tmp), QWZ_INVALID_HANDLE);
  // Their frees are refused now, and a freed error handle is refused by the frame.
  EXPECT_EQ(QWZHandleFree(err, QWZ_HTYPE_ERROR), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZDescriptorFree(descs[0].first, descs[0].second), QWZ_INVALID_HANDLE);
  const QWZDate d = D(2024, 1, 1);
  QWZDate r{};
  EXPECT_EQ(QWZDateAssign(static_cast<QWZError *>(err), &d, &r), QWZ_INVALID_HANDLE);

  EXPECT_EQ(qwz_validate_handle(other_err, QWZ_HTYPE_ERROR), 0);
  EXPECT_EQ(qwz_validate_interval_handle(other_desc), 0);
  ASSERT_EQ(QWZHandleFree(other, QWZ_HTYPE_ENV), QWZ_SUCCESS);
  EXPECT_EQ(qwz_live_descriptor_count(), before);
}

// ---- month lengths of a datetime ---------------------------------------------

TEST_F(Handles, LastDayOfMonth) {
  QWZDateTime *dt = new_datetime(65);
  const ub2 common[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int y : {2023, 2024, 1900, 2000, -4, -100, -400, 0}) {
    dt->year = static_cast<sb2>(y);
    for (ub2 m = 1; m <= 12; ++m) {
      dt->month = m;
      const QWZDate as_date = D(y, m, 1);
      EXPECT_EQ(qwz_get_last_day_of_month(dt), month_of_day(&as_date)) << y << '-' << m;
      EXPECT_EQ(qwz_get_last_day_of_month(dt),
                m == 2 ? (qwz_ref::is_leap(y) ? 29 : 28) : common[m]);
    }
  }
  for (ub2 m : {ub2{0}, ub2{13}, ub2{65535}}) {
    dt->month = m;
    EXPECT_EQ(qwz_get_last_day_of_month(dt), 0);
  }
}

// ---- QWZErrorGet ---------------------------------------------------------------

TEST_F(Handles, ErrorGetNoDataWhenEmpty) {
  QWZText state[8];
  QWZText msg[16];
  std::memset(state, 'X', sizeof state);
  std::memset(msg, 'X', sizeof msg);
  sb4 number = 5;
  EXPECT_EQ(QWZErrorGet(err_, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR), QWZ_NO_DATA);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(state[0], '\0');
  EXPECT_EQ(msg[0], '\0');
  // After a success too.
  const QWZDate d = D(2024, 1, 1);
  QWZDate r{};
  ASSERT_EQ(QWZDateAddDays(err_, &d, 1, nullptr), QWZ_ERROR);
  EXPECT_EQ(QWZErrorGet(err_, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  ASSERT_EQ(QWZDateAddDays(err_, &d, 1, &r), QWZ_SUCCESS);
  EXPECT_EQ(QWZErrorGet(err_, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR), QWZ_NO_DATA);
}

TEST_F(Handles, ErrorGetCutsTheMessage) {
  const QWZDate d = D(2024, 1, 1);
  ASSERT_EQ(QWZDateAddDays(err_, &d, 1, nullptr), QWZ_ERROR);
  const std::string full = "ERROR: [QWZ-21560][QWZ Driver].parameter 4 is NULL\n";
  for (ub4 bufsiz : {1u, 2u, 10u, 52u, 53u, 54u, 200u}) {
    QWZText msg[256];
    std::memset(msg, 'X', sizeof msg);
    QWZText state[6];
    sb4 number = 0;
    EXPECT_EQ(QWZErrorGet(err_, 1, state, &number, msg, bufsiz, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
    const std::size_t n = std::min<std::size_t>(bufsiz - 1, full.size());
    EXPECT_EQ(std::string(reinterpret_cast<char *>(msg)), full.substr(0, n)) << bufsiz;
    EXPECT_EQ(msg[n], '\0');
    EXPECT_EQ(msg[n + 1], 'X');  // nothing written past the NUL
    EXPECT_EQ(number, 21560);
    EXPECT_EQ(0, std::memcmp(state, "21560", 6));
  }
  // bufsiz 0 writes no message at all; NULL outputs are skipped.
  QWZText msg[4] = {'X', 'X', 'X', 'X'};
  EXPECT_EQ(QWZErrorGet(err_, 1, nullptr, nullptr, msg, 0, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  EXPECT_EQ(msg[0], 'X');
  EXPECT_EQ(QWZErrorGet(err_, 1, nullptr, nullptr, nullptr, 100, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
}

TEST_F(Handles, ErrorGetWeekFormatState) {
  const QWZDate d = D(2024, 1, 1);
  QWZDate r{};
  ASSERT_EQ(QWZDateNextDay(err_, &d, reinterpret_cast<const QWZtext *>("mon"), 3, &r), QWZ_ERROR);
  QWZText state[8];
  std::memset(state, 'X', sizeof state);
  sb4 number = 0;
  QWZText msg[128];
  EXPECT_EQ(QWZErrorGet(err_, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR), QWZ_SUCCESS);
  EXPECT_EQ(0, std::memcmp(state, "1846", 5));
  EXPECT_EQ(number, 1846);
  EXPECT_STREQ(reinterpret_cast<char *>(msg),
               "ERROR: [QWZ-1846][QWZ Driver].week format is invalid\n");
}

TEST_F(Handles, ErrorGetRefusals) {
  ASSERT_EQ(QWZDateAddDays(err_, nullptr, 1, nullptr), QWZ_ERROR);
  QWZText state[8] = {'X'};
  QWZText msg[64] = {'X'};
  sb4 number = 5;
  for (ub4 recordno : {0u, 2u, 100u}) {
    const sword rc = QWZErrorGet(err_, recordno, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR);
    EXPECT_NE(rc, QWZ_SUCCESS) << recordno;
    EXPECT_NE(rc, QWZ_NO_DATA) << recordno;
  }
  EXPECT_EQ(QWZErrorGet(err_, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ENV),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZErrorGet(env_, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZErrorGet(session_, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZErrorGet(nullptr, 1, state, &number, msg, sizeof msg, QWZ_HTYPE_ERROR),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(number, 5);
  EXPECT_EQ(msg[0], 'X');
  EXPECT_EQ(state[0], 'X');
}

// ---- concurrency -------------------------------------------------------------------

namespace {

// Everything one round of calls produces, for comparing runs.
struct Outcome {
  sword rc[9];
  QWZDate dates[5];
  uword flags;
  sword cmp;
  sb4 days;
  sb4 number;
  std::string message;
  bool operator==(const Outcome &o) const {
    for (int i = 0; i < 9; ++i)
      if (rc[i] != o.rc[i]) return false;
    for (int i = 0; i < 5; ++i)
      if (!(dates[i] == o.dates[i])) return false;
    return flags == o.flags && cmp == o.cmp && days == o.days && number == o.number &&
           message == o.message;
  }
};

Outcome round(QWZError *err, unsigned seed) {
  std::mt19937 rng(seed);
  auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  const int y = pick(1971, 2199), m = pick(1, 12);
  const QWZDate a = D(y, m, pick(1, qwz_ref::month_length(y, m)), pick(0, 23), pick(0, 59),
                      pick(0, 59));
  const QWZDate b = D(pick(1971, 2199), pick(1, 12), pick(1, 28), pick(0, 23), 0, 0);
  static const char *const kNames[7] = {"SUNDAY", "Monday", "tuesda", "WEDNES",
                                        "thursday", "Friday", "saturd"};
  const char *name = kNames[pick(0, 6)];
  Outcome o{};
  o.rc[0] = QWZDateAddDays(err, &a, pick(-30000, 30000), &o.dates[0]);
  o.rc[1] = QWZDateAddMonths(err, &a, pick(-500, 500), &o.dates[1]);
  o.rc[2] = QWZDateLastDay(err, &a, &o.dates[2]);
  o.rc[3] = QWZDateNextDay(err, &a, reinterpret_cast<const QWZtext *>(name),
                           static_cast<ub4>(std::strlen(name)), &o.dates[3]);
  o.rc[4] = QWZDateAssign(err, &b, &o.dates[4]);
  o.rc[5] = QWZDateCheck(err, &a, &o.flags);
  o.rc[6] = QWZDateCompare(err, &a, &b, &o.cmp);
  o.rc[7] = QWZDateDaysBetween(err, &a, &b, &o.days);
  // A failure: its diagnostic lands in this thread's own handle.
  const ub4 len = static_cast<ub4>(pick(0, 5));
  o.rc[8] = QWZDateNextDay(err, &a, reinterpret_cast<const QWZtext *>(name), len,
                           pick(0, 1) ? nullptr : &o.dates[3]);
  const Diag d = read_diag(err);
  o.number = d.number;
  o.message = d.state + "|" + d.message;
  return o;
}

}  // namespace

TEST(Concurrency, ThreadsWithTheirOwnHandlesGetTheSerialResults) {
  for (const char *tz : {kUtc, kCet, kEst}) {
    ZoneGuard z(tz);
    constexpr int kThreads = 4, kRounds = 300;
    // Serial results first.
    QWZEnv *env = nullptr;
    QWZError *err = nullptr;
    ASSERT_EQ(QWZEnvCreate(&env, 0), QWZ_SUCCESS);
    ASSERT_EQ(QWZHandleAlloc(env, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR), 0);
    std::vector<std::vector<Outcome>> expected(kThreads);
    for (int t = 0; t < kThreads; ++t)
      for (int i = 0; i < kRounds; ++i) expected[t].push_back(round(err, t * 100000u + i));
    ASSERT_EQ(QWZHandleFree(env, QWZ_HTYPE_ENV), QWZ_SUCCESS);

    const long before = qwz_live_descriptor_count();
    std::atomic<int> mismatches{0}, failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back([&, t] {
        QWZEnv *e = nullptr;
        QWZError *er = nullptr;
        if (QWZEnvCreate(&e, 0) != 0 ||
            QWZHandleAlloc(e, reinterpret_cast<void **>(&er), QWZ_HTYPE_ERROR) != 0) {
          ++failures;
          return;
        }
        std::vector<void *> held;
        for (int i = 0; i < kRounds; ++i) {
          if (!(round(er, t * 100000u + i) == expected[t][i])) ++mismatches;
          // Descriptors come and go meanwhile, some left for the env to free.
          void *d = nullptr;
          const ub4 type = kDescriptorTypes[i % 8];
          if (QWZDescriptorAlloc(e, &d, type) != 0) ++failures;
          else if (i % 3 == 0) held.push_back(d);
          else if (QWZDescriptorFree(d, type) != 0) ++failures;
        }
        for (std::size_t k = 0; k < held.size() / 2; ++k)
          if (qwz_validate_handle(held[k], kDescriptorTypes[(3 * k) % 8]) != 0) ++failures;
        if (QWZHandleFree(e, QWZ_HTYPE_ENV) != 0) ++failures;
      });
    for (std::thread &th : threads) th.join();
    EXPECT_EQ(mismatches.load(), 0) << tz;
    EXPECT_EQ(failures.load(), 0) << tz;
    EXPECT_EQ(qwz_live_descriptor_count(), before) << tz;
  }
}
