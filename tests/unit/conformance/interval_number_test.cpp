// Interval numeric conversion, multiply and divide, and the numbers they take,
// exercised only through the public functions a client has: intervals are set
// and read with QWZIntervalSet*/Get*, numbers made with QWZNumberFromReal and
// read with QWZNumberToReal, diagnostics read with QWZErrorGet and trace
// records taken through the trace hook.
#include "support/test_support.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <vector>

using namespace qwz_test;

namespace {

constexpr ub4 YM = INTERVAL_KIND_YM;
constexpr ub4 DS = INTERVAL_KIND_DS;

constexpr const char kInvalidHandle[] = "Invalid handle.";
constexpr const char kNumberNull[] = "the number could not be null.";
constexpr const char kDivisorZero[] = "divisor is equal to zero.";
constexpr const char kKindMismatch[] = "inconsistent datatypes: expected %s got %s.";
constexpr const char kIntervalInvalid3[] =
    "ERROR: [QWZ-11104][QWZ Driver].interval is invalid 3 \n";

// Five fields as the public getters give them; a year-month interval uses the
// first two.
struct Fields {
  sb4 f[5];
  bool operator==(const Fields &o) const { return std::memcmp(f, o.f, sizeof f) == 0; }
};
std::ostream &operator<<(std::ostream &os, const Fields &v) {
  return os << v.f[0] << " " << v.f[1] << " " << v.f[2] << " " << v.f[3] << " " << v.f[4];
}

using ScaleFn = sword (*)(void *, QWZError *, QWZInterval *, QWZNumber *, QWZInterval *);
using ConvFn = sword (*)(void *, QWZError *, QWZInterval *, QWZNumber *);

std::string hdr(const char *name) { return std::string("<") + name + ">\n"; }
std::string line(const char *type, const std::string &value, bool last = false) {
  return std::string("\t") + type + "     \t" + value + (last ? "" : "\n");
}

std::string scale_record(const char *name, const void *h, const void *e, const void *a,
                         const void *n, const void *r) {
  return hdr(name) + line("void*", hex12(h)) + line("QWZError*", hex12(e)) +
         line("QWZInterval*", hex12(a)) + line("QWZNumber*", hex12(n)) +
         line("QWZInterval*", hex12(r), true);
}

std::string conv_record(const char *name, const void *h, const void *e, const void *iv,
                        const void *n) {
  return hdr(name) + line("void*", hex12(h)) + line("QWZError*", hex12(e)) +
         line("QWZInterval*", hex12(iv)) + line("QWZNumber*", hex12(n), true);
}

class IntervalNumberConformance : public HandleFixture {
 protected:
  QWZInterval *ym(sb4 y, sb4 m) {
    QWZInterval *iv = new_interval(YM);
    EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, y, m, iv), QWZ_SUCCESS);
    return iv;
  }
  QWZInterval *ds(sb4 d, sb4 h, sb4 mi, sb4 s, sb4 f) {
    QWZInterval *iv = new_interval(DS);
    EXPECT_EQ(QWZIntervalSetDaySecond(env_, err_, d, h, mi, s, f, iv), QWZ_SUCCESS);
    return iv;
  }
  QWZInterval *make(ub4 kind, const Fields &v) {
    return kind == YM ? ym(v.f[0], v.f[1]) : ds(v.f[0], v.f[1], v.f[2], v.f[3], v.f[4]);
  }
  // Reads the fields back through the public getters, on a scratch error
  // handle so that the diagnostic under test stays where it is.
  Fields get(const QWZInterval *iv, ub4 kind) {
    Fields out{{-77, -77, 0, 0, 0}};
    if (kind == YM) {
      EXPECT_EQ(QWZIntervalGetYearMonth(env_, scratch(), &out.f[0], &out.f[1], iv), QWZ_SUCCESS);
    } else {
      EXPECT_EQ(QWZIntervalGetDaySecond(env_, scratch(), &out.f[0], &out.f[1], &out.f[2],
                                        &out.f[3], &out.f[4], iv),
                QWZ_SUCCESS);
    }
    return out;
  }
  QWZNumber num(double v) {
    QWZNumber n{};
    EXPECT_EQ(QWZNumberFromReal(scratch(), &v, sizeof v, &n), QWZ_SUCCESS) << v;
    return n;
  }
  QWZNumber num_ld(long double v) {
    QWZNumber n{};
    EXPECT_EQ(QWZNumberFromReal(scratch(), &v, sizeof v, &n), QWZ_SUCCESS);
    return n;
  }
  double value(const QWZNumber &n) {
    double v = -12345.0;
    EXPECT_EQ(QWZNumberToReal(scratch(), &n, sizeof v, &v), QWZ_SUCCESS);
    return v;
  }
  QWZError *scratch() {
    if (!scratch_) {
      EXPECT_EQ(QWZHandleAlloc(env_, reinterpret_cast<void **>(&scratch_), QWZ_HTYPE_ERROR),
                QWZ_SUCCESS);
    }
    return scratch_;
  }
  // Leaves a diagnostic in err_ so that a later call visibly clears it (or not).
  void dirty() {
    ub4 *no_valid = nullptr;
    QWZInterval *iv = new_interval(YM);
    ASSERT_EQ(QWZIntervalCheck(env_, err_, iv, no_valid), QWZ_ERROR);
  }
  QWZInterval *freed(ub4 kind) {
    QWZInterval *iv = new_interval(kind);
    EXPECT_EQ(QWZDescriptorFree(iv, kind), QWZ_SUCCESS);
    return iv;
  }

  QWZError *scratch_ = nullptr;
};

}  // namespace

// ---- QWZIntervalFromNumber ------------------------------------------------------

struct FromCase {
  ub4 kind;
  double number;
  Fields out;
};

using QWZIntervalFromNumberConf = IntervalNumberConformance;

TEST_F(QWZIntervalFromNumberConf, WholeAndFractionalParts) {
  const FromCase cases[] = {
      {YM, 1.5, {{1, 6}}},
      {YM, 1.99, {{2, 0}}},   // round(11.88) = 12 carries into the year
      {YM, 1.96, {{2, 0}}},   // round(11.52) = 12
      {YM, -1.5, {{-1, -6}}},
      {YM, -1.04, {{-1, 0}}},  // round(-0.48) = 0
      {YM, 0.0, {{0, 0}}},
      {YM, -0.0, {{0, 0}}},
      {YM, 0.25, {{0, 3}}},
      {YM, 10.75, {{10, 9}}},
      {YM, 123456.5, {{123456, 6}}},  // the year is not range-checked
      {DS, 1.5, {{1, 12, 0, 0, 0}}},
      {DS, 0.25, {{0, 6, 0, 0, 0}}},
      {DS, -1.5, {{-1, -12, 0, 0, 0}}},
      {DS, 2.75, {{2, 18, 0, 0, 0}}},
      {DS, 0.1, {{0, 2, 24, 0, 0}}},
      {DS, 1.0 / 1024, {{0, 0, 1, 24, 37500}}},
      {DS, -3.0 / 1024, {{0, 0, -4, -13, -12500}}},
      {DS, 0.0, {{0, 0, 0, 0, 0}}},
      {DS, -0.0, {{0, 0, 0, 0, 0}}},
      {DS, DBL_TRUE_MIN, {{0, 0, 0, 0, 0}}},
      {YM, -DBL_TRUE_MIN, {{0, 0}}},
      {DS, 2147483647.5, {{INT32_MAX, 12, 0, 0, 0}}},
      {DS, -2147483648.25, {{INT32_MIN, -6, 0, 0, 0}}},
      {DS, 999999999.0, {{999999999, 0, 0, 0, 0}}},  // nor is the day
      {DS, -999999999.5, {{-999999999, -12, 0, 0, 0}}},
  };
  for (const FromCase &c : cases) {
    QWZInterval *iv = c.kind == YM ? ym(-5, -5) : ds(-5, -5, -5, -5, -5);
    QWZNumber n = num(c.number);
    dirty();
    EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), QWZ_SUCCESS) << c.number;
    EXPECT_EQ(get(iv, c.kind), c.out) << c.kind << " " << c.number;
    expect_clear();
  }
}

TEST_F(QWZIntervalFromNumberConf, RoundedFieldOutOfRangeFailsAndStays) {
  const FromCase cases[] = {
      {YM, -1.99, {{-1, -12}}},  // only the upward carry exists
      {YM, -0.96, {{0, -12}}},
      {DS, (43200 + 59.999999) / 86400, {{0, 12, 0, 59, 100000}}},
      {DS, 1 - 1e-12, {{0, 23, 59, 59, 100000}}},
      {DS, -(1 - 1e-12), {{0, -23, -59, -59, -100000}}},
  };
  for (const FromCase &c : cases) {
    QWZInterval *iv = c.kind == YM ? ym(-5, -5) : ds(-5, -5, -5, -5, -5);
    QWZNumber n = num(c.number);
    EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), QWZ_ERROR) << c.number;
    expect_diag(11104, "22007", kIntervalInvalid3);
    EXPECT_EQ(get(iv, c.kind), c.out) << c.number;
  }
}

TEST_F(QWZIntervalFromNumberConf, ChecksInOrder) {
  QWZInterval *iv = ds(1, 2, 3, 4, 5);
  QWZNumber n = num(2.5);
  // An invalid context handle comes first.
  EXPECT_EQ(QWZIntervalFromNumber(nullptr, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_diag(800001, "", kInvalidHandle);
  EXPECT_EQ(QWZIntervalFromNumber(err_, err_, iv, &n), QWZ_INVALID_HANDLE);
  expect_diag(800001, "", kInvalidHandle);
  // Then the interval, before the number.
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_diag(800001, "", kInvalidHandle);
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, freed(DS), &n), QWZ_INVALID_HANDLE);
  expect_diag(800001, "", kInvalidHandle);
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, reinterpret_cast<QWZInterval *>(dt), &n),
            QWZ_INVALID_HANDLE);
  expect_diag(800001, "", kInvalidHandle);
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, nullptr), QWZ_ERROR);
  expect_diag(800085, "", kNumberNull);
  EXPECT_EQ(get(iv, DS), (Fields{{1, 2, 3, 4, 5}}));
  // An invalid error handle: its validator's value and nothing written.
  EXPECT_EQ(QWZIntervalFromNumber(env_, nullptr, iv, &n), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZIntervalFromNumber(env_, reinterpret_cast<QWZError *>(env_), iv, &n),
            QWZ_INVALID_HANDLE);
  EXPECT_EQ(get(iv, DS), (Fields{{1, 2, 3, 4, 5}}));
  // A session is an accepted context handle too.
  EXPECT_EQ(QWZIntervalFromNumber(session_, err_, iv, &n), QWZ_SUCCESS);
  EXPECT_EQ(get(iv, DS), (Fields{{2, 12, 0, 0, 0}}));
  expect_clear();
}

TEST_F(QWZIntervalFromNumberConf, NumberNotConvertible) {
  QWZInterval *iv = ym(7, 7);
  // Bytes that are not a number: the bridge's failure, with no diagnostic.
  QWZNumber junk;
  std::memset(&junk, 0xFF, sizeof junk);
  dirty();
  const sword rc = QWZIntervalFromNumber(env_, err_, iv, &junk);
  EXPECT_NE(rc, QWZ_SUCCESS);
  EXPECT_NE(rc, QWZ_ERROR);
  expect_clear();
  EXPECT_EQ(get(iv, YM), (Fields{{7, 7}}));
  // A number beyond a double: the runtime's message and number, recorded.
  for (long double v : {1e400L, -1e400L, 1e-400L}) {
    QWZNumber big = num_ld(v);
    const sword r = QWZIntervalFromNumber(env_, err_, iv, &big);
    EXPECT_NE(r, QWZ_SUCCESS);
    EXPECT_NE(r, QWZ_ERROR);
    const Diag d = diag();
    EXPECT_EQ(d.number, r);
    EXPECT_EQ(d.state, "");
    EXPECT_FALSE(d.message.empty());
    EXPECT_EQ(get(iv, YM), (Fields{{7, 7}}));
  }
}

TEST_F(QWZIntervalFromNumberConf, TraceNestsTheCheck) {
  QWZInterval *iv = ds(0, 0, 0, 0, 0);
  QWZNumber n = num(1.5);
  TraceCapture t;
  ASSERT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), QWZ_SUCCESS);
  auto &r = t.records();
  ASSERT_EQ(r.size(), 4u);
  EXPECT_EQ(r[0].api_id, 183u);
  EXPECT_EQ(r[0].direction, 1u);
  EXPECT_EQ(r[0].status, 0);
  EXPECT_EQ(r[0].text, conv_record("QWZIntervalFromNumber", env_, err_, iv, &n));
  EXPECT_EQ(r[1].api_id, 154u);
  EXPECT_EQ(r[1].direction, 1u);
  EXPECT_EQ(r[2].api_id, 154u);
  EXPECT_EQ(r[2].direction, 0u);
  EXPECT_EQ(r[3].api_id, 183u);
  EXPECT_EQ(r[3].direction, 0u);
  EXPECT_EQ(r[3].status, 0);
  EXPECT_EQ(r[3].text, r[0].text);
}

TEST_F(QWZIntervalFromNumberConf, FailedCheckHasNoExitRecord) {
  QWZInterval *iv = ym(0, 0);
  QWZNumber n = num(-1.99);
  TraceCapture t;
  ASSERT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), QWZ_ERROR);
  auto &r = t.records();
  ASSERT_EQ(r.size(), 3u);
  EXPECT_EQ(r[0].api_id, 183u);
  EXPECT_EQ(r[1].api_id, 154u);
  EXPECT_EQ(r[2].api_id, 154u);
  EXPECT_EQ(r[2].direction, 0u);
}

TEST_F(QWZIntervalFromNumberConf, NullNumberTracedAsZeroAndNoExit) {
  QWZInterval *iv = ym(0, 0);
  TraceCapture t;
  ASSERT_EQ(QWZIntervalFromNumber(env_, err_, iv, nullptr), QWZ_ERROR);
  ASSERT_EQ(t.records().size(), 1u);
  EXPECT_EQ(t.records()[0].text,
            conv_record("QWZIntervalFromNumber", env_, err_, iv, nullptr));
  expect_diag(800085, "", kNumberNull);
}

TEST_F(QWZIntervalFromNumberConf, NestedCheckRefusedByTraceIsInvalid) {
  // The hook refuses every exit: the nested check returns 7, which the
  // conversion treats as a failed check; the fields stay written.
  QWZInterval *iv = ds(0, 0, 0, 0, 0);
  QWZNumber n = num(1.5);
  TraceCapture t;
  t.set_results(0, 7);
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), QWZ_ERROR);
  qwz_trace_flag = 0;
  expect_diag(11104, "22007", kIntervalInvalid3);
  EXPECT_EQ(get(iv, DS), (Fields{{1, 12, 0, 0, 0}}));
}

TEST_F(QWZIntervalFromNumberConf, EntryTraceRefusalTouchesNothing) {
  QWZInterval *iv = ym(3, 3);
  QWZNumber n = num(1.5);
  dirty();
  TraceCapture t;
  t.set_results(7, 0);
  EXPECT_EQ(QWZIntervalFromNumber(env_, err_, iv, &n), 7);
  EXPECT_EQ(t.records().size(), 1u);
  qwz_trace_flag = 0;
  EXPECT_EQ(get(iv, YM), (Fields{{3, 3}}));
  EXPECT_EQ(diag().number, 21560);  // the earlier diagnostic is still there
}

// ---- QWZIntervalToNumber --------------------------------------------------------

struct ToCase {
  ub4 kind;
  Fields in;
  double expected;
};

using QWZIntervalToNumberConf = IntervalNumberConformance;

TEST_F(QWZIntervalToNumberConf, YearsAndDays) {
  const ToCase cases[] = {
      {YM, {{1, 6}}, 1.5},
      {YM, {{-1, -6}}, -1.5},
      {YM, {{0, 0}}, 0.0},
      {YM, {{1, -6}}, 0.5},               // mixed signs are plain numbers
      {YM, {{0, 13}}, 0 + 13 / 12.0},     // not checked first
      {YM, {{INT32_MAX, 0}}, 2147483647.0},
      {YM, {{INT32_MIN, INT32_MIN}}, -2147483648.0 + INT32_MIN / 12.0},
      {DS, {{0, 12, 0, 0, 0}}, 0.5},
      {DS, {{0, 0, 0, 0, 50000}}, ((0.5 + 0) / 60.0 + 0) / 60.0 / 24.0},
      {DS, {{1, 6, 0, 0, 0}}, 1.25},
      {DS, {{-2, -18, 0, 0, 0}}, -2.75},
      {DS, {{0, 0, 1, 24, 37500}}, 1.0 / 1024},
      {DS, {{1, 25, 61, 61, 100001}}, 1 + (((100001 / 100000.0 + 61) / 60.0 + 61) / 60.0 + 25) / 24.0},
      {DS, {{INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN}},
       INT32_MIN + (((INT32_MIN / 100000.0 + INT32_MIN) / 60.0 + INT32_MIN) / 60.0 + INT32_MIN) / 24.0},
      {DS, {{INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX}},
       INT32_MAX + (((INT32_MAX / 100000.0 + INT32_MAX) / 60.0 + INT32_MAX) / 60.0 + INT32_MAX) / 24.0},
  };
  for (const ToCase &c : cases) {
    QWZInterval *iv = make(c.kind, c.in);
    QWZNumber n = num(-99.0);
    dirty();
    ASSERT_EQ(QWZIntervalToNumber(env_, err_, iv, &n), QWZ_SUCCESS) << c.in;
    expect_clear();
    EXPECT_EQ(value(n), c.expected) << c.in;
    EXPECT_EQ(get(iv, c.kind), c.in);
  }
  // Half a second is half of one 86400th of a day.
  QWZInterval *half = ds(0, 0, 0, 0, 50000);
  QWZNumber n = num(0);
  ASSERT_EQ(QWZIntervalToNumber(env_, err_, half, &n), QWZ_SUCCESS);
  EXPECT_DOUBLE_EQ(value(n), 0.5 / 86400);
}

TEST_F(QWZIntervalToNumberConf, RoundTripWithFromNumber) {
  const double values[] = {1.5, -1.5, 0.25, 10.75, 2.0, -7.0};
  for (ub4 kind : {YM, DS}) {
    for (double v : values) {
      QWZInterval *iv = kind == YM ? ym(0, 0) : ds(0, 0, 0, 0, 0);
      QWZNumber in = num(v), out = num(0);
      ASSERT_EQ(QWZIntervalFromNumber(env_, err_, iv, &in), QWZ_SUCCESS);
      ASSERT_EQ(QWZIntervalToNumber(env_, err_, iv, &out), QWZ_SUCCESS);
      EXPECT_EQ(value(out), v);
      EXPECT_EQ(std::memcmp(&in, &out, sizeof in), 0) << v;
    }
  }
}

TEST_F(QWZIntervalToNumberConf, ChecksInOrder) {
  QWZInterval *iv = ym(1, 6);
  const QWZNumber before = num(42.0);
  QWZNumber n = before;
  EXPECT_EQ(QWZIntervalToNumber(nullptr, err_, iv, &n), QWZ_INVALID_HANDLE);
  expect_diag(800001, "", kInvalidHandle);
  EXPECT_EQ(QWZIntervalToNumber(env_, err_, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_diag(800001, "", kInvalidHandle);
  EXPECT_EQ(QWZIntervalToNumber(env_, err_, freed(YM), &n), QWZ_INVALID_HANDLE);
  expect_diag(800001, "", kInvalidHandle);
  EXPECT_EQ(QWZIntervalToNumber(env_, err_, iv, nullptr), QWZ_ERROR);
  expect_diag(800085, "", kNumberNull);
  EXPECT_EQ(QWZIntervalToNumber(env_, nullptr, iv, &n), QWZ_INVALID_HANDLE);
  EXPECT_EQ(std::memcmp(&n, &before, sizeof n), 0);
  EXPECT_EQ(QWZIntervalToNumber(session_, err_, iv, &n), QWZ_SUCCESS);
  EXPECT_EQ(value(n), 1.5);
}

TEST_F(QWZIntervalToNumberConf, Trace) {
  QWZInterval *iv = ds(0, 12, 0, 0, 0);
  QWZNumber n = num(0);
  {
    TraceCapture t;
    ASSERT_EQ(QWZIntervalToNumber(env_, err_, iv, &n), QWZ_SUCCESS);
    auto &r = t.records();
    ASSERT_EQ(r.size(), 2u);
    const std::string text = conv_record("QWZIntervalToNumber", env_, err_, iv, &n);
    EXPECT_EQ(r[0].api_id, 184u);
    EXPECT_EQ(r[0].direction, 1u);
    EXPECT_EQ(r[0].text, text);
    EXPECT_EQ(r[1].api_id, 184u);
    EXPECT_EQ(r[1].direction, 0u);
    EXPECT_EQ(r[1].status, 0);
    EXPECT_EQ(r[1].text, text);
  }
  {
    TraceCapture t;
    t.set_results(0, 9);
    EXPECT_EQ(QWZIntervalToNumber(env_, err_, iv, &n), 9);
  }
  EXPECT_EQ(value(n), 0.5);
}

// ---- QWZIntervalMultiply and QWZIntervalDivide ---------------------------------

struct ScaleCase {
  ub4 kind;
  Fields in;
  double factor;
  Fields out;
};

class ScaleConf : public IntervalNumberConformance {
 protected:
  void expect_ok(ScaleFn fn, const ScaleCase &c) {
    QWZInterval *in = make(c.kind, c.in);
    QWZInterval *out = c.kind == YM ? ym(-5, -5) : ds(-5, -5, -5, -5, -5);
    QWZNumber n = num(c.factor);
    dirty();
    ASSERT_EQ(fn(env_, err_, in, &n, out), QWZ_SUCCESS) << c.in << " by " << c.factor;
    expect_clear();
    EXPECT_EQ(get(out, c.kind), c.out) << c.in << " by " << c.factor;
    EXPECT_EQ(get(in, c.kind), c.in);
  }
  // A runtime failure: its own number (neither 0 nor -1), no diagnostic, the
  // result untouched.
  sword expect_runtime_failure(ScaleFn fn, ub4 kind, const Fields &in_fields, double factor) {
    QWZInterval *in = make(kind, in_fields);
    QWZInterval *out = kind == YM ? ym(-5, -5) : ds(-5, -5, -5, -5, -5);
    const Fields before = get(out, kind);
    QWZNumber n = num(factor);
    dirty();
    const sword rc = fn(env_, err_, in, &n, out);
    EXPECT_NE(rc, QWZ_SUCCESS) << in_fields << " by " << factor;
    EXPECT_NE(rc, QWZ_ERROR) << in_fields << " by " << factor;
    expect_clear();
    EXPECT_EQ(get(out, kind), before);
    return rc;
  }
};

using QWZIntervalMultiplyConf = ScaleConf;
using QWZIntervalDivideConf = ScaleConf;

TEST_F(QWZIntervalMultiplyConf, Products) {
  const ScaleCase cases[] = {
      {YM, {{1, 6}}, 2.0, {{3, 0}}},
      {YM, {{1, 0}}, 1.5, {{1, 6}}},
      {YM, {{-1, -6}}, 2.0, {{-3, 0}}},
      {YM, {{1, 6}}, -2.0, {{-3, 0}}},
      {YM, {{-1, -6}}, -2.0, {{3, 0}}},
      {YM, {{0, 1}}, 0.5, {{0, 1}}},   // half a month away from zero
      {YM, {{0, -1}}, 0.5, {{0, -1}}},
      {YM, {{0, 3}}, 0.5, {{0, 2}}},
      {YM, {{0, 1}}, 0.25, {{0, 0}}},
      {YM, {{1, -3}}, 1.0, {{-1, -3}}},  // any negative slot makes it negative
      {YM, {{-1, 3}}, 1.0, {{-1, -3}}},
      {YM, {{9999, 11}}, 1.0, {{9999, 11}}},
      {YM, {{9999, 11}}, -1.0, {{-9999, -11}}},
      {YM, {{9999, 11}}, 0.0, {{0, 0}}},
      {YM, {{9999, 11}}, -0.0, {{0, 0}}},
      {YM, {{9999, 11}}, DBL_TRUE_MIN, {{0, 0}}},
      {YM, {{0, 0}}, 1e308, {{0, 0}}},
      {DS, {{1, 0, 0, 0, 0}}, 1.5, {{1, 12, 0, 0, 0}}},
      {DS, {{0, 0, 0, 1, 0}}, 1.5, {{0, 0, 0, 1, 50000}}},
      {DS, {{0, 0, 0, 0, 1}}, 0.5, {{0, 0, 0, 0, 1}}},
      {DS, {{0, 0, 0, 0, -1}}, 0.5, {{0, 0, 0, 0, -1}}},
      {DS, {{0, 0, 0, 0, 3}}, 0.5, {{0, 0, 0, 0, 2}}},
      {DS, {{0, 0, 0, 0, -3}}, 0.5, {{0, 0, 0, 0, -2}}},
      {DS, {{1, 2, 3, 4, 5}}, -1.0, {{-1, -2, -3, -4, -5}}},
      {DS, {{1, -2, 0, 0, 0}}, 1.0, {{-1, -2, 0, 0, 0}}},
      {DS, {{0, 12, 0, 0, 0}}, 3.0, {{1, 12, 0, 0, 0}}},
      {DS, {{99, 23, 59, 59, 99999}}, 1.0, {{99, 23, 59, 59, 99999}}},
      {DS, {{-99, -23, -59, -59, -99999}}, 1.0, {{-99, -23, -59, -59, -99999}}},
      {DS, {{0, 0, 0, 1, 0}}, 1.0 / 3, {{0, 0, 0, 0, 33333}}},
      {DS, {{99, 0, 0, 0, 0}}, 0.0, {{0, 0, 0, 0, 0}}},
  };
  for (const ScaleCase &c : cases) expect_ok(QWZIntervalMultiply, c);
}

TEST_F(QWZIntervalDivideConf, Quotients) {
  const ScaleCase cases[] = {
      {YM, {{3, 0}}, 2.0, {{1, 6}}},
      {YM, {{0, 3}}, 2.0, {{0, 2}}},    // 1.5 months rounds away from zero
      {YM, {{0, -3}}, 2.0, {{0, -2}}},
      {YM, {{0, 1}}, 3.0, {{0, 0}}},
      {YM, {{1, 0}}, -4.0, {{0, -3}}},
      {YM, {{0, 6}}, 0.5, {{1, 0}}},
      {DS, {{1, 0, 0, 0, 0}}, 3.0, {{0, 8, 0, 0, 0}}},
      {DS, {{1, 0, 0, 0, 0}}, 7.0, {{0, 3, 25, 42, 85714}}},
      {DS, {{-1, 0, 0, 0, 0}}, -2.0, {{0, 12, 0, 0, 0}}},
      {DS, {{0, 0, 0, 0, 1}}, 2.0, {{0, 0, 0, 0, 1}}},
      {DS, {{0, 0, 0, 0, 1}}, 3.0, {{0, 0, 0, 0, 0}}},
      {DS, {{0, 0, 0, 0, -1}}, 2.0, {{0, 0, 0, 0, -1}}},
      {DS, {{99, 23, 59, 59, 99999}}, 1e308, {{0, 0, 0, 0, 0}}},
      {DS, {{0, 12, 0, 0, 0}}, 0.25, {{2, 0, 0, 0, 0}}},
  };
  for (const ScaleCase &c : cases) expect_ok(QWZIntervalDivide, c);
}

TEST_F(QWZIntervalMultiplyConf, LeadingFieldTooWideIsTheRuntimesOverflow) {
  // The overflow the product gives ...
  const sword overflow = expect_runtime_failure(QWZIntervalMultiply, DS, {{99, 0, 0, 0, 0}}, 2.0);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalMultiply, YM, {{9999, 11}}, 1.0001), overflow);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalMultiply, DS, {{1, 0, 0, 0, 0}}, 1e308), overflow);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalMultiply, YM, {{0, 1}}, -1e308), overflow);
  // ... is also what an operand with a three-digit day or five-digit year gives.
  EXPECT_EQ(expect_runtime_failure(QWZIntervalMultiply, DS, {{150, 0, 0, 0, 0}}, 1.0), overflow);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalMultiply, DS, {{100, 0, 0, 0, 0}}, 0.5), overflow);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalMultiply, DS, {{-150, 0, 0, 0, 0}}, 0.0), overflow);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalMultiply, YM, {{10000, 0}}, 1.0), overflow);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalMultiply, DS,
                                   {{INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN}}, 1.0),
            overflow);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalMultiply, YM, {{INT32_MAX, INT32_MAX}}, 1.0),
            overflow);
}

TEST_F(QWZIntervalMultiplyConf, FieldOutOfRangeIsARuntimeFailure) {
  // The operand is not checked first; the runtime refuses what it cannot read.
  expect_runtime_failure(QWZIntervalMultiply, YM, {{0, 12}}, 1.0);
  expect_runtime_failure(QWZIntervalMultiply, DS, {{0, 24, 0, 0, 0}}, 1.0);
  expect_runtime_failure(QWZIntervalMultiply, DS, {{0, 0, 60, 0, 0}}, 1.0);
  expect_runtime_failure(QWZIntervalMultiply, DS, {{0, 0, 0, 60, 0}}, 1.0);
  expect_runtime_failure(QWZIntervalDivide, DS, {{0, 0, 0, -60, 0}}, 1.0);
}

TEST_F(QWZIntervalDivideConf, ByZeroRefusedBeforeTheRuntime) {
  for (double zero : {0.0, -0.0}) {
    QWZInterval *in = ds(1, 0, 0, 0, 0);
    QWZInterval *out = ds(-5, -5, -5, -5, -5);
    QWZNumber n = num(zero);
    TraceCapture t;
    EXPECT_EQ(QWZIntervalDivide(env_, err_, in, &n, out), QWZ_ERROR);
    EXPECT_EQ(t.records().size(), 1u);  // no exit record
    qwz_trace_flag = 0;
    expect_diag(800157, "", kDivisorZero);
    EXPECT_EQ(get(out, DS), (Fields{{-5, -5, -5, -5, -5}}));
  }
  // The interval is converted first: an unreadable one fails before the zero
  // divisor is looked at.
  const sword overflow = expect_runtime_failure(QWZIntervalMultiply, DS, {{150, 0, 0, 0, 0}}, 1.0);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalDivide, DS, {{150, 0, 0, 0, 0}}, 0.0), overflow);
}

TEST_F(QWZIntervalDivideConf, OverflowingQuotient) {
  const sword overflow = expect_runtime_failure(QWZIntervalMultiply, DS, {{99, 0, 0, 0, 0}}, 2.0);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalDivide, DS, {{1, 0, 0, 0, 0}}, DBL_TRUE_MIN),
            overflow);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalDivide, YM, {{5000, 0}}, 0.5), overflow);
  EXPECT_EQ(expect_runtime_failure(QWZIntervalDivide, DS, {{150, 0, 0, 0, 0}}, 2.0), overflow);
}

TEST_F(QWZIntervalMultiplyConf, ChecksInOrder) {
  for (ScaleFn fn : {QWZIntervalMultiply, QWZIntervalDivide}) {
    QWZInterval *a = ym(1, 0), *r = ym(7, 7), *d = ds(1, 0, 0, 0, 0);
    QWZNumber n = num(2.0);
    EXPECT_EQ(fn(nullptr, err_, a, &n, r), QWZ_INVALID_HANDLE);
    expect_diag(800001, "", kInvalidHandle);
    EXPECT_EQ(fn(err_, err_, a, &n, r), QWZ_INVALID_HANDLE);
    expect_diag(800001, "", kInvalidHandle);
    // The operand before the number.
    EXPECT_EQ(fn(env_, err_, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
    expect_diag(800001, "", kInvalidHandle);
    EXPECT_EQ(fn(env_, err_, freed(YM), nullptr, r), QWZ_INVALID_HANDLE);
    expect_diag(800001, "", kInvalidHandle);
    // The number before the result.
    EXPECT_EQ(fn(env_, err_, a, nullptr, nullptr), QWZ_ERROR);
    expect_diag(800085, "", kNumberNull);
    EXPECT_EQ(fn(env_, err_, a, &n, nullptr), QWZ_INVALID_HANDLE);
    expect_diag(800001, "", kInvalidHandle);
    EXPECT_EQ(fn(env_, err_, a, &n, freed(YM)), QWZ_INVALID_HANDLE);
    expect_diag(800001, "", kInvalidHandle);
    EXPECT_EQ(fn(env_, err_, a, &n, reinterpret_cast<QWZInterval *>(new_datetime(68))),
              QWZ_INVALID_HANDLE);
    expect_diag(800001, "", kInvalidHandle);
    // The kinds, with the conversions left unfilled.
    EXPECT_EQ(fn(env_, err_, a, &n, d), QWZ_ERROR);
    expect_diag(800158, "", kKindMismatch);
    EXPECT_EQ(get(d, DS), (Fields{{1, 0, 0, 0, 0}}));
    EXPECT_EQ(fn(env_, err_, d, &n, r), QWZ_ERROR);
    expect_diag(800158, "", kKindMismatch);
    EXPECT_EQ(get(r, YM), (Fields{{7, 7}}));
    // The kind test comes before the number is read: a zero divisor with
    // mismatched kinds is still a kind mismatch.
    QWZNumber zero = num(0.0);
    EXPECT_EQ(fn(env_, err_, a, &zero, d), QWZ_ERROR);
    expect_diag(800158, "", kKindMismatch);
    // An invalid error handle.
    EXPECT_EQ(fn(env_, nullptr, a, &n, r), QWZ_INVALID_HANDLE);
    EXPECT_EQ(get(r, YM), (Fields{{7, 7}}));
    // A session as the context handle, and the result may be the operand.
    EXPECT_EQ(fn(session_, err_, a, &n, a), QWZ_SUCCESS);
    expect_clear();
    EXPECT_EQ(get(a, YM), fn == QWZIntervalMultiply ? (Fields{{2, 0}}) : (Fields{{0, 6}}));
  }
}

TEST_F(QWZIntervalMultiplyConf, FactorNotConvertible) {
  for (ScaleFn fn : {QWZIntervalMultiply, QWZIntervalDivide}) {
    QWZInterval *a = ds(1, 0, 0, 0, 0), *r = ds(-5, -5, -5, -5, -5);
    QWZNumber junk;
    std::memset(&junk, 0xFF, sizeof junk);
    dirty();
    const sword rc = fn(env_, err_, a, &junk, r);
    EXPECT_NE(rc, QWZ_SUCCESS);
    EXPECT_NE(rc, QWZ_ERROR);
    expect_clear();
    for (long double v : {1e400L, -1e400L, 1e-400L}) {
      QWZNumber big = num_ld(v);
      const sword s = fn(env_, err_, a, &big, r);
      EXPECT_NE(s, QWZ_SUCCESS);
      EXPECT_NE(s, QWZ_ERROR);
      const Diag d = diag();
      EXPECT_EQ(d.number, s);  // the runtime's number and its message
      EXPECT_EQ(d.state, "");
      EXPECT_FALSE(d.message.empty());
      EXPECT_EQ(d.message.find('\0'), std::string::npos);
    }
    EXPECT_EQ(get(r, DS), (Fields{{-5, -5, -5, -5, -5}}));
  }
}

TEST_F(QWZIntervalMultiplyConf, Trace) {
  for (auto [fn, id, name] : {std::tuple{ScaleFn{QWZIntervalMultiply}, 182u, "QWZIntervalMultiply"},
                              std::tuple{ScaleFn{QWZIntervalDivide}, 181u, "QWZIntervalDivide"}}) {
    QWZInterval *a = ym(1, 0), *r = ym(0, 0), *big = ds(150, 0, 0, 0, 0), *rd = ds(0, 0, 0, 0, 0);
    QWZNumber n = num(2.0);
    {
      TraceCapture t;
      ASSERT_EQ(fn(env_, err_, a, &n, r), QWZ_SUCCESS);
      auto &rec = t.records();
      ASSERT_EQ(rec.size(), 2u);
      const std::string text = scale_record(name, env_, err_, a, &n, r);
      EXPECT_EQ(rec[0].api_id, id);
      EXPECT_EQ(rec[0].direction, 1u);
      EXPECT_EQ(rec[0].status, 0);
      EXPECT_EQ(rec[0].text, text);
      EXPECT_EQ(rec[1].api_id, id);
      EXPECT_EQ(rec[1].direction, 0u);
      EXPECT_EQ(rec[1].status, 0);
      EXPECT_EQ(rec[1].text, text);
    }
    {
      // A runtime failure and a NULL number: entry records only, the NULL
      // number traced as it is.
      TraceCapture t;
      EXPECT_NE(fn(env_, err_, big, &n, rd), QWZ_SUCCESS);
      EXPECT_EQ(fn(env_, err_, a, nullptr, r), QWZ_ERROR);
      auto &rec = t.records();
      ASSERT_EQ(rec.size(), 2u);
      EXPECT_EQ(rec[0].direction, 1u);
      EXPECT_EQ(rec[1].direction, 1u);
      EXPECT_EQ(rec[1].text, scale_record(name, env_, err_, a, nullptr, r));
    }
    {
      TraceCapture t;
      t.set_results(7, 0);
      EXPECT_EQ(fn(env_, err_, a, &n, r), 7);
      t.set_results(0, 8);
      EXPECT_EQ(fn(env_, err_, a, &n, r), 8);
    }
    // Only the second call did its work.
    EXPECT_EQ(get(r, YM), fn == QWZIntervalMultiply ? (Fields{{2, 0}}) : (Fields{{0, 6}}));
  }
}

TEST_F(QWZIntervalMultiplyConf, MultiplyThenDivideReturnsTheInterval) {
  std::mt19937_64 gen(20240611);
  std::uniform_int_distribution<sb4> day(0, 40), hour(0, 23), min(0, 59), frac(0, 99999);
  std::uniform_int_distribution<sb4> year(0, 3000), month(0, 11);
  std::uniform_real_distribution<double> factor(1.0, 2.4);
  for (int i = 0; i < 400; ++i) {
    const bool ymk = i % 2 == 0;
    const double k = (i % 3 == 0 ? -1 : 1) * factor(gen);
    const sb4 sign = i % 5 < 2 ? -1 : 1;
    Fields in{};
    if (ymk) {
      in.f[0] = sign * year(gen);
      in.f[1] = sign * month(gen);
    } else {
      in.f[0] = sign * day(gen);
      in.f[1] = sign * hour(gen);
      in.f[2] = sign * min(gen);
      in.f[3] = sign * min(gen);
      in.f[4] = sign * frac(gen);
    }
    const ub4 kind = ymk ? YM : DS;
    QWZInterval *a = make(kind, in);
    QWZInterval *p = make(kind, {});
    QWZInterval *q = make(kind, {});
    QWZNumber n = num(k);
    ASSERT_EQ(QWZIntervalMultiply(env_, err_, a, &n, p), QWZ_SUCCESS) << in << " by " << k;
    ASSERT_EQ(QWZIntervalDivide(env_, err_, p, &n, q), QWZ_SUCCESS);
    // Compare as counts of the smallest unit.
    const Fields x = get(q, kind);
    const long long c0 = ymk ? in.f[0] * 12LL + in.f[1]
                             : (((in.f[0] * 24LL + in.f[1]) * 60 + in.f[2]) * 60 + in.f[3]) *
                                       100000LL + in.f[4];
    const long long c1 = ymk ? x.f[0] * 12LL + x.f[1]
                             : (((x.f[0] * 24LL + x.f[1]) * 60 + x.f[2]) * 60 + x.f[3]) * 100000LL +
                                   x.f[4];
    EXPECT_LE(std::llabs(c1 - c0), 1) << in << " by " << k << " gave " << x;
  }
}

// ---- QWZNumberFromReal and QWZNumberToReal ------------------------------------

using QWZNumberConf = IntervalNumberConformance;

TEST_F(QWZNumberConf, EveryFiniteDoubleRoundTrips) {
  std::mt19937_64 gen(77);
  std::vector<double> values = {0.0,     -0.0,   1.0,          -1.0,   0.1,
                                1e308,   -1e308, DBL_MAX,      -DBL_MAX, DBL_MIN,
                                DBL_TRUE_MIN, -DBL_TRUE_MIN, 1.0 / 3, 123456789.125, 5e-324};
  for (int i = 0; i < 2000; ++i) {
    double d;
    do {
      const std::uint64_t bits = gen();
      std::memcpy(&d, &bits, sizeof d);
    } while (!std::isfinite(d));
    values.push_back(d);
  }
  for (double v : values) {
    QWZNumber n{};
    ASSERT_EQ(QWZNumberFromReal(err_, &v, sizeof v, &n), QWZ_SUCCESS) << v;
    double back = 12345;
    ASSERT_EQ(QWZNumberToReal(err_, &n, sizeof back, &back), QWZ_SUCCESS);
    EXPECT_EQ(std::memcmp(&back, &v, sizeof v), 0) << v;
  }
  for (float f : {0.1f, -0.0f, FLT_MAX, FLT_TRUE_MIN, 3.0f}) {
    QWZNumber n{};
    ASSERT_EQ(QWZNumberFromReal(err_, &f, sizeof f, &n), QWZ_SUCCESS);
    float back = 1;
    ASSERT_EQ(QWZNumberToReal(err_, &n, sizeof back, &back), QWZ_SUCCESS);
    EXPECT_EQ(std::memcmp(&back, &f, sizeof f), 0) << f;
  }
}

TEST_F(QWZNumberConf, RefusalsHaveTheirOwnDiagnostics) {
  const double one = 1.0;
  QWZNumber n = num(5.0);
  const QWZNumber before = n;
  dirty();
  EXPECT_EQ(QWZNumberFromReal(err_, nullptr, sizeof(double), &n), QWZ_ERROR);
  const Diag a = diag();
  EXPECT_EQ(QWZNumberFromReal(err_, &one, sizeof one, nullptr), QWZ_ERROR);
  const Diag b = diag();
  EXPECT_EQ(QWZNumberFromReal(err_, &one, 3, &n), QWZ_ERROR);
  const Diag c = diag();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(QWZNumberFromReal(err_, &nan, sizeof nan, &n), QWZ_ERROR);
  const Diag e = diag();
  EXPECT_EQ(QWZNumberFromReal(err_, &inf, sizeof inf, &n), QWZ_ERROR);
  EXPECT_EQ(diag().number, e.number);
  const double minf = -inf;
  EXPECT_EQ(QWZNumberFromReal(err_, &minf, sizeof minf, &n), QWZ_ERROR);
  EXPECT_EQ(diag().number, e.number);
  EXPECT_EQ(std::memcmp(&n, &before, sizeof n), 0);
  EXPECT_EQ(b.number, 800085);
  EXPECT_EQ(b.message, kNumberNull);
  for (const Diag *d : {&a, &c, &e}) {
    EXPECT_EQ(d->rc, QWZ_SUCCESS);
    EXPECT_NE(d->number, 0);
    EXPECT_FALSE(d->message.empty());
  }
  EXPECT_NE(a.number, c.number);
  EXPECT_NE(a.number, e.number);
  EXPECT_NE(c.number, e.number);

  double out = 42;
  EXPECT_EQ(QWZNumberToReal(err_, nullptr, sizeof out, &out), QWZ_ERROR);
  EXPECT_EQ(diag().number, 800085);
  EXPECT_EQ(QWZNumberToReal(err_, &n, sizeof out, nullptr), QWZ_ERROR);
  EXPECT_EQ(diag().number, a.number);
  EXPECT_EQ(QWZNumberToReal(err_, &n, 5, &out), QWZ_ERROR);
  EXPECT_EQ(diag().number, c.number);
  EXPECT_EQ(out, 42);
  EXPECT_EQ(QWZNumberFromReal(nullptr, &one, sizeof one, &n), QWZ_INVALID_HANDLE);
  EXPECT_EQ(QWZNumberToReal(nullptr, &n, sizeof out, &out), QWZ_INVALID_HANDLE);
  EXPECT_EQ(out, 42);
  EXPECT_EQ(QWZNumberToReal(err_, &n, sizeof out, &out), QWZ_SUCCESS);
  expect_clear();
  EXPECT_EQ(out, 5.0);
}

TEST_F(QWZNumberConf, Trace) {
  const double v = 2.5;
  QWZNumber n{};
  double out = 0;
  TraceCapture t;
  ASSERT_EQ(QWZNumberFromReal(err_, &v, sizeof v, &n), QWZ_SUCCESS);
  ASSERT_EQ(QWZNumberToReal(err_, &n, sizeof out, &out), QWZ_SUCCESS);
  auto &r = t.records();
  ASSERT_EQ(r.size(), 4u);
  const std::string from = hdr("QWZNumberFromReal") + line("QWZError*", hex12(err_)) +
                           line("const void*", hex12(&v)) + line("uword", "8") +
                           line("QWZNumber*", hex12(&n), true);
  const std::string to = hdr("QWZNumberToReal") + line("QWZError*", hex12(err_)) +
                         line("const QWZNumber*", hex12(&n)) + line("uword", "8") +
                         line("void*", hex12(&out), true);
  EXPECT_EQ(r[0].api_id, 109u);
  EXPECT_EQ(r[0].text, from);
  EXPECT_EQ(r[1].api_id, 109u);
  EXPECT_EQ(r[1].direction, 0u);
  EXPECT_EQ(r[1].text, from);
  EXPECT_EQ(r[2].api_id, 108u);
  EXPECT_EQ(r[2].text, to);
  EXPECT_EQ(r[3].api_id, 108u);
  EXPECT_EQ(r[3].direction, 0u);
  EXPECT_EQ(out, 2.5);
}
