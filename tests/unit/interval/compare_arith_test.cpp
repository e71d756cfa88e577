// QWZIntervalCompare, QWZIntervalAdd, QWZIntervalSubtract and qwz_interval_add.
#include "interval_fixture.h"

using namespace qwz_test;

class QWZIntervalCompare : public IntervalFixture {};
class QWZIntervalAdd : public IntervalFixture {};
class QWZIntervalSubtract : public IntervalFixture {};
class QwzIntervalAdd : public IntervalFixture {};

namespace {

using SumFn = sword (*)(void *, QWZError *, QWZInterval *, QWZInterval *, QWZInterval *);

struct SumCase {
  const char *name;
  ub4 kind;
  Slots a, b;
  Slots expected;  // value slots of the result (year-month: slots 3..5 untouched)
};

// a + b.
constexpr SumCase kAddCases[] = {
    {"1-11 + 0-1", INTERVAL_KIND_YM, {1, 11}, {0, 1}, {2, 0}},
    {"-0-11 + -0-2", INTERVAL_KIND_YM, {0, -11}, {0, -2}, {-1, -1}},
    {"1-0 + -0-6", INTERVAL_KIND_YM, {1, 0}, {0, -6}, {0, 6}},
    {"0-0 + 0-0", INTERVAL_KIND_YM, {0, 0}, {0, 0}, {0, 0}},
    {"9999-11 + 9999-11", INTERVAL_KIND_YM, {9999, 11}, {9999, 11}, {19999, 10}},
    // Two valid intervals may carry the year past 32 bits; it is narrowed.
    {"max + max", INTERVAL_KIND_YM, {INT32_MAX, 11}, {INT32_MAX, 11}, {-1, 10}},
    {"min + min", INTERVAL_KIND_YM, {INT32_MIN, 0}, {INT32_MIN, 0}, {0, 0}},
    {"min + -0-11", INTERVAL_KIND_YM, {INT32_MIN, 0}, {0, -11}, {INT32_MIN, -11}},
    {"fraction 150000 carries", INTERVAL_KIND_DS, {0, 0, 0, 0, 75000}, {0, 0, 0, 0, 75000},
     {0, 0, 0, 1, 50000}},
    {"fraction 99999 is kept", INTERVAL_KIND_DS, {0, 0, 0, 0, 50000}, {0, 0, 0, 0, 49999},
     {0, 0, 0, 0, 99999}},
    {"fraction 100000 carries", INTERVAL_KIND_DS, {0, 0, 0, 0, 50000}, {0, 0, 0, 0, 50000},
     {0, 0, 0, 1, 0}},
    {"fraction -150000 carries", INTERVAL_KIND_DS, {0, 0, 0, 0, -75000}, {0, 0, 0, 0, -75000},
     {0, 0, 0, -1, -50000}},
    {"seconds into days", INTERVAL_KIND_DS, {0, 23, 59, 59, 99999}, {0, 0, 0, 0, 1},
     {1, 0, 0, 0, 0}},
    {"23:59:59 + 00:00:01", INTERVAL_KIND_DS, {0, 23, 59, 59, 0}, {0, 0, 0, 1, 0},
     {1, 0, 0, 0, 0}},
    {"positive total borrows", INTERVAL_KIND_DS, {1, 0, 0, 0, 0}, {0, 0, 0, 0, -10000},
     {0, 23, 59, 59, 90000}},
    {"negative total lends", INTERVAL_KIND_DS, {-1, 0, 0, 0, 0}, {0, 0, 0, 0, 10000},
     {0, -23, -59, -59, -90000}},
    {"zero total keeps a negative fraction", INTERVAL_KIND_DS, {0, 0, 0, 1, -50000},
     {0, 0, 0, -1, 0}, {0, 0, 0, 0, -50000}},
    {"mixed signs normalised", INTERVAL_KIND_DS, {1, -2, 3, -4, 5}, {0, 0, 0, 0, 0},
     {0, 22, 2, 56, 5}},
    // -2^32 - 1 days narrow to -1.
    {"day min + day min", INTERVAL_KIND_DS, {INT32_MIN, -23, -59, -59, -99999},
     {INT32_MIN, -23, -59, -59, -99999}, {-1, -23, -59, -59, -99998}},
    {"day max + day max", INTERVAL_KIND_DS, {INT32_MAX, 0, 0, 0, 0}, {INT32_MAX, 0, 0, 0, 0},
     {-2, 0, 0, 0, 0}},
};

// a - b.
constexpr SumCase kSubtractCases[] = {
    {"0-6 - 1-0", INTERVAL_KIND_YM, {0, 6}, {1, 0}, {0, -6}},
    {"1-0 - 0-1", INTERVAL_KIND_YM, {1, 0}, {0, 1}, {0, 11}},
    {"2-3 - 2-3", INTERVAL_KIND_YM, {2, 3}, {2, 3}, {0, 0}},
    {"-1-1 - 1-1", INTERVAL_KIND_YM, {-1, -1}, {1, 1}, {-2, -2}},
    // The most negative year negates to itself: min - min = min + min.
    {"min - min", INTERVAL_KIND_YM, {INT32_MIN, 0}, {INT32_MIN, 0}, {0, 0}},
    // -(min, -11) is (min, 11): min * 12 + 11 months, truncated toward zero.
    {"0-0 - min", INTERVAL_KIND_YM, {0, 0}, {INT32_MIN, -11}, {INT32_MIN + 1, -1}},
    {"1 00:00:00.0 - 0 00:00:00.1", INTERVAL_KIND_DS, {1, 0, 0, 0, 0}, {0, 0, 0, 0, 10000},
     {0, 23, 59, 59, 90000}},
    // The worked example: total 1, fraction -50000, then total 0, fraction 50000.
    {"0 00:00:01.00000 - 0 00:00:00.50000", INTERVAL_KIND_DS, {0, 0, 0, 1, 0},
     {0, 0, 0, 0, 50000}, {0, 0, 0, 0, 50000}},
    {"0 - 0 00:00:00.50000", INTERVAL_KIND_DS, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 50000},
     {0, 0, 0, 0, -50000}},
    {"0 - 1 02:03:04.5", INTERVAL_KIND_DS, {0, 0, 0, 0, 0}, {1, 2, 3, 4, 5},
     {-1, -2, -3, -4, -5}},
    {"0 - min", INTERVAL_KIND_DS, {0, 0, 0, 0, 0}, {INT32_MIN, 0, 0, 0, 0},
     {INT32_MIN, 0, 0, 0, 0}},
};

}  // namespace

class SumTest : public IntervalFixture {
 protected:
  void run(SumFn fn, const SumCase &c) {
    SCOPED_TRACE(c.name);
    QWZInterval *a = of_kind(c.kind, c.a);
    QWZInterval *b = of_kind(c.kind, c.b);
    QWZInterval *r = of_kind(c.kind, {7, 7, 7, 7, 7});
    const Slots a0 = slots_of(a), b0 = slots_of(b);
    dirty();
    ASSERT_EQ(fn(env_, err_, a, b, r), 0);
    expect_clear();
    Slots expected = c.expected;
    if (c.kind == INTERVAL_KIND_YM) expected = {c.expected[0], c.expected[1], 7, 7, 7};
    EXPECT_EQ(slots_of(r), expected);
    EXPECT_EQ(slots_of(a), a0);
    EXPECT_EQ(slots_of(b), b0);
    // The result may be either operand; a year-month sum keeps the other
    // slots of the descriptor it lands in.
    auto landed = [&](const Slots &own) {
      return c.kind == INTERVAL_KIND_DS ? expected
                                        : Slots{expected[0], expected[1], own[2], own[3], own[4]};
    };
    QWZInterval *a2 = of_kind(c.kind, c.a);
    QWZInterval *b2 = of_kind(c.kind, c.b);
    ASSERT_EQ(fn(session_, err_, a2, b2, a2), 0);
    EXPECT_EQ(slots_of(a2), landed(c.a));
    EXPECT_EQ(slots_of(b2), b0);
    QWZInterval *a3 = of_kind(c.kind, c.a);
    QWZInterval *b3 = of_kind(c.kind, c.b);
    ASSERT_EQ(fn(env_, err_, a3, b3, b3), 0);
    EXPECT_EQ(slots_of(b3), landed(c.b));
    EXPECT_EQ(slots_of(a3), a0);
  }
};

TEST_F(SumTest, QWZIntervalAddTable) {
  for (const SumCase &c : kAddCases) run(::QWZIntervalAdd, c);
}

TEST_F(SumTest, QWZIntervalSubtractTable) {
  for (const SumCase &c : kSubtractCases) run(::QWZIntervalSubtract, c);
}

TEST_F(QWZIntervalAdd, OneDescriptorAsAllThree) {
  QWZInterval *iv = ds(0, 12, 0, 0, 60000);
  EXPECT_EQ(::QWZIntervalAdd(env_, err_, iv, iv, iv), 0);
  EXPECT_EQ(slots_of(iv), (Slots{1, 0, 0, 1, 20000}));
  QWZInterval *y = ym(1, 7);
  EXPECT_EQ(::QWZIntervalAdd(env_, err_, y, y, y), 0);
  EXPECT_EQ(slots_of(y), (Slots{3, 2, 333, 444, 555}));
}

TEST_F(QWZIntervalSubtract, OneDescriptorAsAllThree) {
  QWZInterval *iv = ds(-5, -4, -3, -2, -1);
  EXPECT_EQ(::QWZIntervalSubtract(env_, err_, iv, iv, iv), 0);
  EXPECT_EQ(slots_of(iv), (Slots{0, 0, 0, 0, 0}));
}

// ---- failures of Add and Subtract, which share their checks ---------------

struct SumApi {
  const char *name;
  SumFn fn;
};
void PrintTo(const SumApi &api, std::ostream *os) { *os << api.name; }

class SumFailure : public IntervalFixture, public ::testing::WithParamInterface<SumApi> {};

TEST_P(SumFailure, ResultOfTheOtherKindIsTypeInvalid) {
  const SumFn fn = GetParam().fn;
  QWZInterval *a = ym(1, 2), *b = ym(3, 4), *r = ds(7, 7, 7, 7, 7);
  EXPECT_EQ(fn(env_, err_, a, b, r), QWZ_ERROR);
  expect_type_invalid();
  EXPECT_EQ(slots_of(r), (Slots{7, 7, 7, 7, 7}));
  QWZInterval *c = ds(1, 2, 3, 4, 5), *d = ds(1, 2, 3, 4, 5), *s = ym(7, 7);
  EXPECT_EQ(fn(env_, err_, c, d, s), QWZ_ERROR);
  expect_type_invalid();
  EXPECT_EQ(slots_of(s), (Slots{7, 7, 333, 444, 555}));
}

TEST_P(SumFailure, OperandsOfDifferentKindsAreTypeDiff) {
  const SumFn fn = GetParam().fn;
  QWZInterval *y = ym(1, 2), *d = ds(1, 2, 3, 4, 5), *r = ym(7, 7);
  EXPECT_EQ(fn(env_, err_, y, d, r), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(fn(env_, err_, d, y, r), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(slots_of(r), (Slots{7, 7, 333, 444, 555}));
}

TEST_P(SumFailure, InvalidOperandIsParameterThreeOrFour) {
  const SumFn fn = GetParam().fn;
  QWZInterval *bad = ds(0, 24, 0, 0, 0), *good = ds(1, 2, 3, 4, 5), *r = ds(7, 7, 7, 7, 7);
  EXPECT_EQ(fn(env_, err_, bad, good, r), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(fn(env_, err_, good, bad, r), QWZ_ERROR);
  expect_interval_invalid(4);
  // Both invalid: the first is reported.
  EXPECT_EQ(fn(env_, err_, bad, bad, r), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(slots_of(r), (Slots{7, 7, 7, 7, 7}));
  // INT32_MIN in the checked fields is invalid too.
  QWZInterval *mins = ds(INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN);
  EXPECT_EQ(fn(env_, err_, good, mins, r), QWZ_ERROR);
  expect_interval_invalid(4);
  QWZInterval *ymin = ym(0, INT32_MIN), *ygood = ym(1, 1), *yr = ym(7, 7);
  EXPECT_EQ(fn(env_, err_, ymin, ygood, yr), QWZ_ERROR);
  expect_interval_invalid(3);
}

TEST_P(SumFailure, ChecksRunInOrder) {
  const SumFn fn = GetParam().fn;
  QWZInterval *bad_ym = ym(0, 12), *bad_ds = ds(0, 24, 0, 0, 0), *good_ds = ds(0, 1, 0, 0, 0);
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  auto *not_iv = reinterpret_cast<QWZInterval *>(dt);
  QWZInterval *freed = freed_interval(INTERVAL_KIND_DS);
  dirty();
  EXPECT_EQ(fn(env_, nullptr, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  EXPECT_EQ(fn(dt, err_, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  // Descriptors in argument order: any bad one is an invalid handle, before
  // any value is examined.
  EXPECT_EQ(fn(env_, err_, not_iv, bad_ds, bad_ds), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(fn(env_, err_, bad_ds, freed, bad_ds), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  EXPECT_EQ(fn(env_, err_, bad_ds, bad_ds, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
  // The first operand's check before the second's, before the kinds.
  EXPECT_EQ(fn(env_, err_, bad_ym, bad_ds, good_ds), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(fn(env_, err_, good_ds, bad_ym, good_ds), QWZ_ERROR);
  expect_interval_invalid(4);
  // Operand kinds before the result's kind.
  QWZInterval *y = ym(1, 1);
  EXPECT_EQ(fn(env_, err_, good_ds, y, y), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(slots_of(y), (Slots{1, 1, 333, 444, 555}));
  EXPECT_EQ(slots_of(good_ds), (Slots{0, 1, 0, 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(QWZIntervalAddAndSubtract, SumFailure,
                         ::testing::Values(SumApi{"Add", ::QWZIntervalAdd},
                                           SumApi{"Subtract", ::QWZIntervalSubtract}),
                         [](const auto &info) { return std::string(info.param.name); });

// ---- qwz_interval_add directly -------------------------------------------

TEST_F(QwzIntervalAdd, NullPointersAreMinusOneWithoutDiagnostic) {
  QWZInterval *a = ym(1, 1);
  dirty();
  EXPECT_EQ(qwz_interval_add(nullptr, a, a, err_), -1);
  EXPECT_EQ(qwz_interval_add(a, nullptr, a, err_), -1);
  EXPECT_EQ(qwz_interval_add(a, a, nullptr, err_), -1);
  EXPECT_EQ(qwz_interval_add(a, a, a, nullptr), -1);
  expect_diag(1, "", "stale");
  EXPECT_EQ(slots_of(a), (Slots{1, 1, 333, 444, 555}));
}

TEST_F(QwzIntervalAdd, OtherKindsWriteNothing) {
  QWZInterval a{}, r{};
  a.hdr.type = 64;
  r.hdr.type = INTERVAL_KIND_DS;
  for (sb4 &s : r.slot) s = 7;
  EXPECT_EQ(qwz_interval_add(&a, &a, &r, err_), 0);
  EXPECT_EQ(slots_of(&r), (Slots{7, 7, 7, 7, 7}));
}

TEST_F(QwzIntervalAdd, UncheckedExtremesStayDefined) {
  // Below the public entry nothing is checked: fraction sums wrap at 32 bits
  // and every total stays within 64 bits.
  QWZInterval *a = ds(INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN);
  QWZInterval *r = ds(0, 0, 0, 0, 0);
  EXPECT_EQ(qwz_interval_add(a, a, r, err_), 0);
  // total = 2 * INT32_MIN * (86400 + 3600 + 60 + 1) seconds, fraction wraps to 0.
  const std::int64_t total = 2 * std::int64_t{INT32_MIN} * 90061;
  Slots expected{static_cast<sb4>(total / 86400), static_cast<sb4>(total % 86400 / 3600),
                 static_cast<sb4>(total % 86400 % 3600 / 60),
                 static_cast<sb4>(total % 86400 % 3600 % 60), 0};
  EXPECT_EQ(slots_of(r), expected);

  QWZInterval *f = ds(0, 0, 0, 0, INT32_MAX), *g = ds(0, 0, 0, 0, 1);
  EXPECT_EQ(qwz_interval_add(f, g, r, err_), 0);
  // INT32_MAX + 1 wraps to INT32_MIN: -21474 s carried, -83648 left.
  EXPECT_EQ(slots_of(r), (Slots{0, -5, -57, -54, -83648}));

  QWZInterval *y = ym(INT32_MIN, INT32_MIN), *yr = ym(0, 0);
  EXPECT_EQ(qwz_interval_add(y, y, yr, err_), 0);
  const std::int64_t months = 2 * (std::int64_t{INT32_MIN} * 12 + INT32_MIN);
  EXPECT_EQ(yr->slot[0], static_cast<sb4>(months / 12));
  EXPECT_EQ(yr->slot[1], static_cast<sb4>(months % 12));
}

// ---- compare ---------------------------------------------------------------

struct CompareCase {
  ub4 kind;
  Slots a, b;
  sword expected;
};

constexpr CompareCase kCompareCases[] = {
    {INTERVAL_KIND_YM, {1, 2}, {1, 2}, 0},
    {INTERVAL_KIND_YM, {1, 2}, {1, 3}, -1},
    {INTERVAL_KIND_YM, {2, 0}, {1, 11}, 1},
    {INTERVAL_KIND_YM, {-1, 0}, {0, -11}, -1},
    // No normalisation: 1 year -11 months is above 0 years 1 month.
    {INTERVAL_KIND_YM, {1, -11}, {0, 1}, 1},
    {INTERVAL_KIND_YM, {INT32_MIN, 0}, {INT32_MAX, 0}, -1},
    // Slots 3..5 are not the year-month kind's: ignored.
    {INTERVAL_KIND_YM, {1, 1, 5, 5, 5}, {1, 1, 6, 6, 6}, 0},
    {INTERVAL_KIND_DS, {1, 2, 3, 4, 5}, {1, 2, 3, 4, 5}, 0},
    {INTERVAL_KIND_DS, {0, 0, 0, 0, 1}, {0, 0, 0, 0, 0}, 1},
    {INTERVAL_KIND_DS, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 1}, -1},
    {INTERVAL_KIND_DS, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 99999}, 1},
    {INTERVAL_KIND_DS, {0, 0, 1, 0, 0}, {0, 0, 0, 59, 0}, 1},
    {INTERVAL_KIND_DS, {0, 1, 0, 0, 0}, {0, 0, 59, 0, 0}, 1},
    {INTERVAL_KIND_DS, {1, 0, 0, 0, 0}, {0, 23, 0, 0, 0}, 1},
    {INTERVAL_KIND_DS, {-1, 0, 0, 0, 0}, {0, -23, 0, 0, 0}, -1},
    {INTERVAL_KIND_DS, {0, -1, 0, 0, 0}, {0, 0, -59, -59, -99999}, -1},
    {INTERVAL_KIND_DS, {INT32_MIN, 0, 0, 0, 0}, {INT32_MIN, 0, 0, 0, 0}, 0},
    {INTERVAL_KIND_DS, {INT32_MAX, 0, 0, 0, 0}, {INT32_MIN, 0, 0, 0, 0}, 1},
};

TEST_F(QWZIntervalCompare, FieldByFieldInSlotOrder) {
  for (const CompareCase &c : kCompareCases) {
    SCOPED_TRACE(::testing::PrintToString(c.a) + " vs " + ::testing::PrintToString(c.b));
    QWZInterval *a = of_kind(c.kind, c.a), *b = of_kind(c.kind, c.b);
    sword r = 42;
    dirty();
    EXPECT_EQ(::QWZIntervalCompare(env_, err_, a, b, &r), 0);
    expect_clear();
    EXPECT_EQ(r, c.expected);
    r = 42;
    EXPECT_EQ(::QWZIntervalCompare(session_, err_, b, a, &r), 0);
    EXPECT_EQ(r, -c.expected);
  }
}

TEST_F(QWZIntervalCompare, NullResultAnswersZeroWithTheErrorRecorded) {
  QWZInterval *a = ym(1, 1), *b = ym(1, 1);
  EXPECT_EQ(::QWZIntervalCompare(env_, err_, a, b, nullptr), 0);
  expect_null_param(5);
  // It comes before the checks of the values and kinds.
  QWZInterval *bad = ds(0, 24, 0, 0, 0);
  EXPECT_EQ(::QWZIntervalCompare(env_, err_, bad, a, nullptr), 0);
  expect_null_param(5);
}

TEST_F(QWZIntervalCompare, InvalidOperandIsParameterThreeForBoth) {
  QWZInterval *bad = ym(0, 12), *good = ym(0, 11);
  sword r = 42;
  EXPECT_EQ(::QWZIntervalCompare(env_, err_, bad, good, &r), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(::QWZIntervalCompare(env_, err_, good, bad, &r), QWZ_ERROR);
  expect_interval_invalid(3);
  QWZInterval *dbad = ds(0, 0, 0, 0, -100000), *dgood = ds(0, 0, 0, 0, -99999);
  EXPECT_EQ(::QWZIntervalCompare(env_, err_, dgood, dbad, &r), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(r, 42);
}

TEST_F(QWZIntervalCompare, DifferentKindsAreTypeDiff) {
  QWZInterval *y = ym(1, 1), *d = ds(1, 1, 1, 1, 1);
  sword r = 42;
  EXPECT_EQ(::QWZIntervalCompare(env_, err_, y, d, &r), QWZ_ERROR);
  expect_type_diff();
  EXPECT_EQ(r, 42);
  // An invalid operand wins over different kinds.
  QWZInterval *bad = ds(0, 0, 60, 0, 0);
  EXPECT_EQ(::QWZIntervalCompare(env_, err_, y, bad, &r), QWZ_ERROR);
  expect_interval_invalid(3);
}

TEST_F(QWZIntervalCompare, BadDescriptorsAreInvalidHandles) {
  QWZInterval *good = ym(1, 1);
  QWZDateTime *dt = new_datetime(DATETIME_KIND_DATE);
  const void *bad[] = {nullptr, freed_interval(INTERVAL_KIND_YM), dt, env_};
  for (const void *d : bad) {
    sword r = 42;
    const auto *iv = static_cast<const QWZInterval *>(d);
    EXPECT_EQ(::QWZIntervalCompare(env_, err_, iv, good, &r), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(::QWZIntervalCompare(env_, err_, good, iv, &r), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    // A bad descriptor wins over a NULL result.
    EXPECT_EQ(::QWZIntervalCompare(env_, err_, good, iv, nullptr), QWZ_INVALID_HANDLE);
    expect_invalid_handle();
    EXPECT_EQ(r, 42);
  }
  dirty();
  EXPECT_EQ(::QWZIntervalCompare(env_, reinterpret_cast<QWZError *>(good), good, good, nullptr),
            QWZ_INVALID_HANDLE);
  expect_diag(1, "", "stale");
  EXPECT_EQ(::QWZIntervalCompare(good, err_, nullptr, nullptr, nullptr), QWZ_INVALID_HANDLE);
  expect_invalid_handle();
}
