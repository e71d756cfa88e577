// QWZNumberFromReal and QWZNumberToReal: exact round trips for float, double
// and long double lengths, their diagnostics, the frame and the trace.
#include "support/test_support.h"

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>

using namespace qwz_test;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kDenormMin = std::numeric_limits<double>::denorm_min();

constexpr const char kNumberNull[] = "the number could not be null.";
constexpr const char kRealNull[] = "the real number could not be null.";
constexpr const char kRealLength[] = "the real number length is not supported.";
constexpr const char kRealNotFinite[] = "the real number is not finite.";
constexpr const char kNumberInvalid[] = "the number is invalid.";
constexpr const char kNumberRange[] = "the number is out of the range of the real type.";

class NumberFixture : public HandleFixture {
 protected:
  QWZNumber from_double(double v) {
    QWZNumber n;
    std::memset(&n, 0xCC, sizeof n);
    EXPECT_EQ(QWZNumberFromReal(err_, &v, sizeof v, &n), QWZ_SUCCESS) << v;
    return n;
  }
  double to_double(const QWZNumber &n) {
    double v = -12345.0;
    EXPECT_EQ(QWZNumberToReal(err_, &n, sizeof v, &v), QWZ_SUCCESS);
    return v;
  }
  void dirty() { _QWZSetFrontEndErrorHandle(err_, "stale", 1); }
};

// The number's bytes as the canonical form describes them.
QWZNumber number_bytes(bool negative, const char *digits, sb2 exponent) {
  QWZNumber n{};
  n.qwz_number_part[0] = 0x4E;
  n.qwz_number_part[1] = negative ? 1 : 0;
  const int count = static_cast<int>(std::strlen(digits));
  n.qwz_number_part[2] = static_cast<ub1>(count);
  const auto e = static_cast<ub2>(exponent);
  n.qwz_number_part[3] = static_cast<ub1>(e & 0xFF);
  n.qwz_number_part[4] = static_cast<ub1>(e >> 8);
  for (int i = 0; i < count; ++i)
    n.qwz_number_part[5 + i / 2] |= static_cast<ub1>((digits[i] - '0') << (i % 2 == 0 ? 4 : 0));
  return n;
}

bool same_bytes(const QWZNumber &a, const QWZNumber &b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

using QWZNumberFromReal_ = NumberFixture;
using QWZNumberToReal_ = NumberFixture;

TEST_F(QWZNumberFromReal_, CanonicalBytes) {
  const struct {
    double v;
    QWZNumber n;
  } cases[] = {
      {0.0, number_bytes(false, "", 0)},
      {-0.0, number_bytes(true, "", 0)},
      {1.5, number_bytes(false, "15", 1)},
      {-1.5, number_bytes(true, "15", 1)},
      {0.1, number_bytes(false, "1", 0)},
      {100.0, number_bytes(false, "1", 3)},
      {DBL_MAX, number_bytes(false, "17976931348623157", 309)},
      {-kDenormMin, number_bytes(true, "5", -323)},
      {0.5 / 86400.0, number_bytes(false, "5787037037037037", -5)},
  };
  for (const auto &c : cases) {
    dirty();
    const QWZNumber n = from_double(c.v);
    EXPECT_TRUE(same_bytes(n, c.n)) << c.v;
    expect_clear();
  }
}

TEST_F(QWZNumberFromReal_, DoubleRoundTripIsExact) {
  std::mt19937_64 rng(31337);
  auto check = [&](double x) {
    const QWZNumber n = from_double(x);
    const double back = to_double(n);
    ASSERT_EQ(std::bit_cast<uint64_t>(back), std::bit_cast<uint64_t>(x)) << x;
  };
  for (int i = 0; i < 50000;) {
    const double x = std::bit_cast<double>(rng());
    if (!std::isfinite(x)) continue;
    check(x);
    ++i;
  }
  for (double x : {0.0, -0.0, 1e308, -1e308, DBL_MAX, -DBL_MAX, DBL_MIN, kDenormMin, -kDenormMin,
                   std::nextafter(DBL_MIN, 0.0), 0.1, 1.0 / 3.0, 9007199254740993.0})
    check(x);
  expect_clear();
}

TEST_F(QWZNumberFromReal_, FloatAndLongDoubleLengths) {
  // A float becomes its own shortest form: 0.1f is the number 0.1.
  const float f = 0.1f;
  QWZNumber n{};
  ASSERT_EQ(QWZNumberFromReal(err_, &f, sizeof f, &n), QWZ_SUCCESS);
  EXPECT_TRUE(same_bytes(n, number_bytes(false, "1", 0)));
  EXPECT_EQ(to_double(n), 0.1);
  float fb = 0;
  ASSERT_EQ(QWZNumberToReal(err_, &n, sizeof fb, &fb), QWZ_SUCCESS);
  EXPECT_EQ(fb, 0.1f);

  const long double third = 1.0L / 3.0L;
  ASSERT_EQ(QWZNumberFromReal(err_, &third, sizeof third, &n), QWZ_SUCCESS);
  EXPECT_TRUE(same_bytes(n, number_bytes(false, "33333333333333333334", 0)));
  long double lb = 0;
  ASSERT_EQ(QWZNumberToReal(err_, &n, sizeof lb, &lb), QWZ_SUCCESS);
  EXPECT_EQ(lb, third);
  EXPECT_EQ(to_double(n), 1.0 / 3.0);

  std::mt19937 rng(99);
  for (int i = 0; i < 20000;) {
    const float x = std::bit_cast<float>(static_cast<uint32_t>(rng()));
    if (!std::isfinite(x)) continue;
    ++i;
    ASSERT_EQ(QWZNumberFromReal(err_, &x, sizeof x, &n), QWZ_SUCCESS);
    float back = 0;
    ASSERT_EQ(QWZNumberToReal(err_, &n, sizeof back, &back), QWZ_SUCCESS);
    ASSERT_EQ(std::bit_cast<uint32_t>(back), std::bit_cast<uint32_t>(x));
  }
  for (long double x : {LDBL_MAX, -LDBL_MAX, LDBL_MIN, std::numeric_limits<long double>::denorm_min(),
                        -0.0L, 1e4000L, 1e-4000L}) {
    ASSERT_EQ(QWZNumberFromReal(err_, &x, sizeof x, &n), QWZ_SUCCESS);
    long double back = 1;
    ASSERT_EQ(QWZNumberToReal(err_, &n, sizeof back, &back), QWZ_SUCCESS);
    EXPECT_EQ(back, x);
    EXPECT_EQ(std::signbit(back), std::signbit(x));
  }
  expect_clear();
}

TEST_F(QWZNumberToReal_, OutOfTheRealTypesRange) {
  const struct {
    long double v;
    uword length;
  } cases[] = {
      {1e4000L, sizeof(double)},  {-1e4000L, sizeof(double)}, {1e-4000L, sizeof(double)},
      {1e39L, sizeof(float)},     {-1e-50L, sizeof(float)},   {DBL_MAX * 2.0L, sizeof(double)},
  };
  for (const auto &c : cases) {
    QWZNumber n{};
    ASSERT_EQ(QWZNumberFromReal(err_, &c.v, sizeof c.v, &n), QWZ_SUCCESS);
    unsigned char out[16];
    std::memset(out, 0x5A, sizeof out);
    EXPECT_EQ(QWZNumberToReal(err_, &n, c.length, out), QWZ_ERROR) << static_cast<double>(c.v);
    expect_diag(800205, "", kNumberRange);
    for (unsigned char b : out) EXPECT_EQ(b, 0x5A);
  }
  // A double's denormals read fine as doubles but not as floats.
  QWZNumber n = from_double(kDenormMin);
  EXPECT_EQ(to_double(n), kDenormMin);
  float f = 3;
  EXPECT_EQ(QWZNumberToReal(err_, &n, sizeof f, &f), QWZ_ERROR);
  expect_diag(800205, "", kNumberRange);
  EXPECT_EQ(f, 3.0f);
}

TEST_F(QWZNumberFromReal_, RefusesNonFiniteValues) {
  QWZNumber n = number_bytes(false, "7", 1);
  const QWZNumber before = n;
  for (double v : {kNaN, -kNaN, kInf, -kInf}) {
    EXPECT_EQ(QWZNumberFromReal(err_, &v, sizeof v, &n), QWZ_ERROR);
    expect_diag(800203, "", kRealNotFinite);
    EXPECT_TRUE(same_bytes(n, before));
  }
  const float fn = std::numeric_limits<float>::infinity();
  EXPECT_EQ(QWZNumberFromReal(err_, &fn, sizeof fn, &n), QWZ_ERROR);
  expect_diag(800203, "", kRealNotFinite);
  const long double ln = std::numeric_limits<long double>::quiet_NaN();
  EXPECT_EQ(QWZNumberFromReal(err_, &ln, sizeof ln, &n), QWZ_ERROR);
  expect_diag(800203, "", kRealNotFinite);
  EXPECT_TRUE(same_bytes(n, before));
}

TEST_F(QWZNumberFromReal_, NullPointersAndLengthsInOrder) {
  double v = 1.5;
  QWZNumber n{};
  EXPECT_EQ(QWZNumberFromReal(err_, nullptr, sizeof v, &n), QWZ_ERROR);
  expect_diag(800201, "", kRealNull);
  EXPECT_EQ(QWZNumberFromReal(err_, nullptr, 3, nullptr), QWZ_ERROR);
  expect_diag(800201, "", kRealNull);
  EXPECT_EQ(QWZNumberFromReal(err_, &v, sizeof v, nullptr), QWZ_ERROR);
  expect_diag(800085, "", kNumberNull);
  EXPECT_EQ(QWZNumberFromReal(err_, &v, 3, nullptr), QWZ_ERROR);
  expect_diag(800085, "", kNumberNull);
  for (uword len : {0u, 1u, 2u, 3u, 5u, 12u, 17u, 0xFFFFFFFFu}) {
    EXPECT_EQ(QWZNumberFromReal(err_, &v, len, &n), QWZ_ERROR) << len;
    expect_diag(800202, "", kRealLength);
  }
  const double nan = kNaN;
  EXPECT_EQ(QWZNumberFromReal(err_, &nan, 3, &n), QWZ_ERROR);  // the length is looked at first
  expect_diag(800202, "", kRealLength);
}

TEST_F(QWZNumberToReal_, NullPointersAndLengthsInOrder) {
  const QWZNumber n = from_double(2.0);
  double v = 7;
  EXPECT_EQ(QWZNumberToReal(err_, nullptr, sizeof v, &v), QWZ_ERROR);
  expect_diag(800085, "", kNumberNull);
  EXPECT_EQ(QWZNumberToReal(err_, nullptr, 3, nullptr), QWZ_ERROR);
  expect_diag(800085, "", kNumberNull);
  EXPECT_EQ(QWZNumberToReal(err_, &n, sizeof v, nullptr), QWZ_ERROR);
  expect_diag(800201, "", kRealNull);
  for (uword len : {0u, 1u, 7u, 9u, 0xFFFFFFFFu}) {
    EXPECT_EQ(QWZNumberToReal(err_, &n, len, &v), QWZ_ERROR) << len;
    expect_diag(800202, "", kRealLength);
  }
  const QWZNumber garbage{};
  EXPECT_EQ(QWZNumberToReal(err_, &garbage, 3, &v), QWZ_ERROR);
  expect_diag(800202, "", kRealLength);
  EXPECT_EQ(v, 7.0);
}

TEST_F(QWZNumberToReal_, RefusesMalformedNumbers) {
  std::vector<QWZNumber> bad;
  bad.push_back(QWZNumber{});  // all zero: no tag
  QWZNumber n = number_bytes(false, "15", 1);
  n.qwz_number_part[0] = 0x4F;  // tag
  bad.push_back(n);
  n = number_bytes(false, "15", 1);
  n.qwz_number_part[1] = 2;  // unknown flag
  bad.push_back(n);
  n = number_bytes(false, "15", 1);
  n.qwz_number_part[2] = 35;  // too many digits
  bad.push_back(n);
  n = number_bytes(false, "15", 1);
  n.qwz_number_part[5] = 0x1A;  // a nibble above 9
  bad.push_back(n);
  bad.push_back(number_bytes(false, "015", 1));  // leading zero digit
  bad.push_back(number_bytes(false, "150", 1));  // trailing zero digit
  bad.push_back(number_bytes(false, "", 3));     // zero with an exponent
  n = number_bytes(false, "15", 1);
  n.qwz_number_part[21] = 0x01;  // a digit past the count
  bad.push_back(n);
  QWZNumber ff;
  std::memset(&ff, 0xFF, sizeof ff);
  bad.push_back(ff);
  for (const QWZNumber &b : bad) {
    for (uword len : {sizeof(float), sizeof(double), sizeof(long double)}) {
      unsigned char out[16];
      std::memset(out, 0x5A, sizeof out);
      EXPECT_EQ(QWZNumberToReal(err_, &b, len, out), QWZ_ERROR);
      expect_diag(800204, "", kNumberInvalid);
      for (unsigned char c : out) EXPECT_EQ(c, 0x5A);
    }
  }
  // The full 34 digits are a valid number.
  const QWZNumber full = number_bytes(false, "1234567890123456789012345678901234", 1);
  double v = 0;
  ASSERT_EQ(QWZNumberToReal(err_, &full, sizeof v, &v), QWZ_SUCCESS);
  EXPECT_EQ(v, 1.234567890123456789);
}

TEST_F(QWZNumberToReal_, UnalignedRealBuffers) {
  alignas(16) unsigned char buf[40] = {};
  const double v = -2.75;
  std::memcpy(buf + 1, &v, sizeof v);
  QWZNumber n{};
  ASSERT_EQ(QWZNumberFromReal(err_, buf + 1, sizeof v, &n), QWZ_SUCCESS);
  ASSERT_EQ(QWZNumberToReal(err_, &n, sizeof(long double), buf + 3), QWZ_SUCCESS);
  long double back;
  std::memcpy(&back, buf + 3, sizeof back);
  EXPECT_EQ(back, -2.75L);
}

TEST_F(QWZNumberFromReal_, InvalidErrorHandles) {
  double v = 1.0;
  QWZNumber n = number_bytes(false, "7", 1);
  const QWZNumber before = n;
  QWZError *freed = nullptr;
  ASSERT_EQ(QWZHandleAlloc(env_, reinterpret_cast<void **>(&freed), QWZ_HTYPE_ERROR), 0);
  ASSERT_EQ(QWZHandleFree(freed, QWZ_HTYPE_ERROR), 0);
  for (QWZError *e : {static_cast<QWZError *>(nullptr), freed,
                      reinterpret_cast<QWZError *>(session_), reinterpret_cast<QWZError *>(env_)}) {
    EXPECT_EQ(QWZNumberFromReal(e, &v, sizeof v, &n), QWZ_INVALID_HANDLE);
    EXPECT_EQ(QWZNumberToReal(e, &n, sizeof v, &v), QWZ_INVALID_HANDLE);
    EXPECT_EQ(QWZNumberFromReal(e, nullptr, 0, nullptr), QWZ_INVALID_HANDLE);
    EXPECT_EQ(QWZNumberToReal(e, nullptr, 0, nullptr), QWZ_INVALID_HANDLE);
  }
  EXPECT_TRUE(same_bytes(n, before));
  EXPECT_EQ(v, 1.0);
}

namespace {

std::string from_real_record(const void *err, const void *rnum, uword len, const void *num) {
  return "<QWZNumberFromReal>\n\tQWZError*     \t" + hex12(err) + "\n\tconst void*     \t" +
         hex12(rnum) + "\n\tuword     \t" + std::to_string(len) + "\n\tQWZNumber*     \t" +
         hex12(num);
}
std::string to_real_record(const void *err, const void *num, uword len, const void *rsl) {
  return "<QWZNumberToReal>\n\tQWZError*     \t" + hex12(err) + "\n\tconst QWZNumber*     \t" +
         hex12(num) + "\n\tuword     \t" + std::to_string(len) + "\n\tvoid*     \t" + hex12(rsl);
}

}  // namespace

TEST_F(QWZNumberFromReal_, TraceRecords) {
  TraceCapture trace;
  double v = 0.25;
  QWZNumber n{};
  ASSERT_EQ(QWZNumberFromReal(err_, &v, sizeof v, &n), QWZ_SUCCESS);
  ASSERT_EQ(trace.records().size(), 2u);
  EXPECT_EQ(trace.records()[0].api_id, 109u);
  EXPECT_EQ(trace.records()[0].direction, 1u);
  EXPECT_EQ(trace.records()[0].status, 0);
  EXPECT_EQ(trace.records()[0].errhp, err_);
  EXPECT_EQ(trace.records()[0].text, from_real_record(err_, &v, 8, &n));
  EXPECT_EQ(trace.records()[1].direction, 0u);
  EXPECT_EQ(trace.records()[1].text, from_real_record(err_, &v, 8, &n));

  double back = 0;
  trace.records().clear();
  ASSERT_EQ(QWZNumberToReal(err_, &n, sizeof back, &back), QWZ_SUCCESS);
  EXPECT_EQ(back, 0.25);
  ASSERT_EQ(trace.records().size(), 2u);
  EXPECT_EQ(trace.records()[0].api_id, 108u);
  EXPECT_EQ(trace.records()[0].text, to_real_record(err_, &n, 8, &back));
  EXPECT_EQ(trace.records()[1].text, to_real_record(err_, &n, 8, &back));

  // A refused call has no exit record.
  trace.records().clear();
  EXPECT_EQ(QWZNumberFromReal(err_, nullptr, 4, &n), QWZ_ERROR);
  ASSERT_EQ(trace.records().size(), 1u);
  EXPECT_EQ(trace.records()[0].text, from_real_record(err_, nullptr, 4, &n));
  trace.records().clear();
  EXPECT_EQ(QWZNumberToReal(err_, &n, 3, &back), QWZ_ERROR);
  ASSERT_EQ(trace.records().size(), 1u);

  // The entry hook's refusal is returned before anything else happens.
  trace.records().clear();
  trace.set_results(7, 0);
  dirty();
  v = 9.0;
  const QWZNumber before = n;
  EXPECT_EQ(QWZNumberFromReal(err_, &v, sizeof v, &n), 7);
  EXPECT_TRUE(same_bytes(n, before));
  EXPECT_EQ(QWZNumberToReal(err_, &n, sizeof back, &back), 7);
  EXPECT_EQ(back, 0.25);
  EXPECT_EQ(diag().message, "stale");
  // The exit hook's refusal replaces the status.
  trace.set_results(0, 5);
  EXPECT_EQ(QWZNumberFromReal(err_, &v, sizeof v, &n), 5);
  trace.set_results(0, 0);
  EXPECT_EQ(to_double(n), 9.0);
}

TEST(QWZNumberTraceOff, HookNeverCalled) {
  int calls = 0;
  static int *counter = nullptr;
  counter = &calls;
  QWZTraceSetHook([](void *, sword, ub4, ub4, const char *) -> sword {
    ++*counter;
    return 0;
  });
  qwz_trace_flag = 0;
  QWZEnv *env = nullptr;
  QWZError *err = nullptr;
  ASSERT_EQ(QWZEnvCreate(&env, 0), 0);
  ASSERT_EQ(QWZHandleAlloc(env, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR), 0);
  double v = 1;
  QWZNumber n{};
  EXPECT_EQ(QWZNumberFromReal(err, &v, sizeof v, &n), 0);
  EXPECT_EQ(QWZNumberToReal(err, &n, sizeof v, &v), 0);
  EXPECT_EQ(calls, 0);
  QWZTraceSetHook(nullptr);
  QWZHandleFree(env, QWZ_HTYPE_ENV);
}
