// Trace records of the interval functions, as the hook receives them.
#include "interval_fixture.h"

#include <cstdio>
#include <utility>
#include <vector>

using namespace qwz_test;

namespace {

using Line = std::pair<const char *, std::string>;

// "<Name>" and one "\t<type>     \t<value>" line per traced argument.
std::string record(const char *name, const std::vector<Line> &lines) {
  std::string r = std::string("<") + name + ">";
  for (const Line &l : lines) r += std::string("\n\t") + l.first + "     \t" + l.second;
  return r;
}

std::string hexv(unsigned long v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "0x%012lX", v);
  return buf;
}

const std::string kNullHex = hex12(qwz::kNullText);

}  // namespace

class IntervalTrace : public IntervalFixture {
 protected:
  void expect_record(size_t i, ub4 api, ub4 direction, sword status, const std::string &text) {
    ASSERT_LT(i, cap_.records().size());
    const TraceRecord &r = cap_.records()[i];
    EXPECT_EQ(r.api_id, api);
    EXPECT_EQ(r.direction, direction);
    EXPECT_EQ(r.status, status);
    EXPECT_EQ(r.text, text);
    EXPECT_EQ(r.errhp, static_cast<void *>(err_));
  }
  std::vector<ub4> api_ids() {
    std::vector<ub4> ids;
    for (const TraceRecord &r : cap_.records()) ids.push_back(r.api_id * 10 + r.direction);
    return ids;
  }
  TraceCapture cap_;
};

TEST_F(IntervalTrace, SetYearMonth) {
  QWZInterval *iv = new_interval(INTERVAL_KIND_YM);
  cap_.records().clear();
  ASSERT_EQ(QWZIntervalSetYearMonth(env_, err_, -5, 13, iv), 0);
  const std::string text = record("QWZIntervalSetYearMonth", {{"void*", hex12(env_)},
                                                              {"QWZError*", hex12(err_)},
                                                              {"sb4", "-5"},
                                                              {"sb4", "13"},
                                                              {"QWZInterval*", hex12(iv)}});
  ASSERT_EQ(cap_.records().size(), 2u);
  expect_record(0, 150, 1, 0, text);
  expect_record(1, 150, 0, 0, text);
}

TEST_F(IntervalTrace, SetDaySecond) {
  QWZInterval *iv = new_interval(INTERVAL_KIND_DS);
  cap_.records().clear();
  ASSERT_EQ(QWZIntervalSetDaySecond(session_, err_, INT32_MIN, 2, -3, 4, 99999, iv), 0);
  const std::string text = record("QWZIntervalSetDaySecond", {{"void*", hex12(session_)},
                                                              {"QWZError*", hex12(err_)},
                                                              {"sb4", "-2147483648"},
                                                              {"sb4", "2"},
                                                              {"sb4", "-3"},
                                                              {"sb4", "4"},
                                                              {"sb4", "99999"},
                                                              {"QWZInterval*", hex12(iv)}});
  ASSERT_EQ(cap_.records().size(), 2u);
  expect_record(0, 151, 1, 0, text);
  expect_record(1, 151, 0, 0, text);
}

TEST_F(IntervalTrace, GetYearMonthLeavesTheIntervalOut) {
  QWZInterval *iv = ym(1, 2);
  sb4 y = 0, m = 0;
  cap_.records().clear();
  ASSERT_EQ(QWZIntervalGetYearMonth(env_, err_, &y, &m, iv), 0);
  // Four arguments are traced; the interval's line shows none.
  const std::string text = record("QWZIntervalGetYearMonth", {{"void*", hex12(env_)},
                                                              {"QWZError*", hex12(err_)},
                                                              {"sb4*", hex12(&y)},
                                                              {"sb4*", hex12(&m)},
                                                              {"const QWZInterval*", hexv(0)}});
  ASSERT_EQ(cap_.records().size(), 2u);
  expect_record(0, 152, 1, 0, text);
  expect_record(1, 152, 0, 0, text);
  EXPECT_EQ(text.find(hex12(iv)), std::string::npos);

  // NULL outputs print "(null)"'s address; the failure has no exit record.
  cap_.records().clear();
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, nullptr, &m, iv), QWZ_ERROR);
  ASSERT_EQ(cap_.records().size(), 1u);
  expect_record(0, 152, 1, 0,
                record("QWZIntervalGetYearMonth", {{"void*", hex12(env_)},
                                                   {"QWZError*", hex12(err_)},
                                                   {"sb4*", kNullHex},
                                                   {"sb4*", hex12(&m)},
                                                   {"const QWZInterval*", hexv(0)}}));
}

TEST_F(IntervalTrace, GetDaySecond) {
  QWZInterval *iv = ds(1, 2, 3, 4, 5);
  sb4 o[5] = {};
  cap_.records().clear();
  ASSERT_EQ(QWZIntervalGetDaySecond(env_, err_, &o[0], &o[1], &o[2], &o[3], &o[4], iv), 0);
  const std::string text = record("QWZIntervalGetDaySecond", {{"dvoid*", hex12(env_)},
                                                              {"QWZError*", hex12(err_)},
                                                              {"sb4*", hex12(&o[0])},
                                                              {"sb4*", hex12(&o[1])},
                                                              {"sb4*", hex12(&o[2])},
                                                              {"sb4*", hex12(&o[3])},
                                                              {"sb4*", hex12(&o[4])},
                                                              {"CONST QWZInterval*", hex12(iv)}});
  ASSERT_EQ(cap_.records().size(), 2u);
  expect_record(0, 153, 1, 0, text);
  expect_record(1, 153, 0, 0, text);

  cap_.records().clear();
  EXPECT_EQ(QWZIntervalGetDaySecond(env_, err_, &o[0], nullptr, &o[2], nullptr, &o[4], iv),
            QWZ_ERROR);
  ASSERT_EQ(cap_.records().size(), 1u);
  expect_record(0, 153, 1, 0,
                record("QWZIntervalGetDaySecond", {{"dvoid*", hex12(env_)},
                                                   {"QWZError*", hex12(err_)},
                                                   {"sb4*", hex12(&o[0])},
                                                   {"sb4*", kNullHex},
                                                   {"sb4*", hex12(&o[2])},
                                                   {"sb4*", kNullHex},
                                                   {"sb4*", hex12(&o[4])},
                                                   {"CONST QWZInterval*", hex12(iv)}}));
}

TEST_F(IntervalTrace, CheckSubstitutesANullFlagsPointer) {
  QWZInterval *iv = ds(0, 24, 0, 0, 0);
  ub4 flags = 0;
  cap_.records().clear();
  ASSERT_EQ(QWZIntervalCheck(env_, err_, iv, &flags), 0);
  const std::string text = record("QWZIntervalCheck", {{"void*", hex12(env_)},
                                                       {"QWZError*", hex12(err_)},
                                                       {"const QWZInterval*", hex12(iv)},
                                                       {"ub4*", hex12(&flags)}});
  ASSERT_EQ(cap_.records().size(), 2u);
  expect_record(0, 154, 1, 0, text);
  expect_record(1, 154, 0, 0, text);

  cap_.records().clear();
  EXPECT_EQ(QWZIntervalCheck(env_, err_, iv, nullptr), QWZ_ERROR);
  ASSERT_EQ(cap_.records().size(), 1u);
  expect_record(0, 154, 1, 0,
                record("QWZIntervalCheck", {{"void*", hex12(env_)},
                                            {"QWZError*", hex12(err_)},
                                            {"const QWZInterval*", hex12(iv)},
                                            {"ub4*", kNullHex}}));
}

TEST_F(IntervalTrace, AssignNestsTheCheck) {
  QWZInterval *a = ym(1, 2), *b = ym(0, 0);
  cap_.records().clear();
  ASSERT_EQ(QWZIntervalAssign(env_, err_, a, b), 0);
  EXPECT_EQ(api_ids(), (std::vector<ub4>{1551, 1541, 1540, 1550}));
  const std::string text = record("QWZIntervalAssign", {{"void*", hex12(env_)},
                                                        {"QWZError*", hex12(err_)},
                                                        {"const QWZInterval*", hex12(a)},
                                                        {"QWZInterval*", hex12(b)}});
  expect_record(0, 155, 1, 0, text);
  expect_record(3, 155, 0, 0, text);
  // A failure after the nested check: no exit record of its own.
  QWZInterval *d = ds(0, 0, 0, 0, 0);
  cap_.records().clear();
  EXPECT_EQ(QWZIntervalAssign(env_, err_, a, d), QWZ_ERROR);
  EXPECT_EQ(api_ids(), (std::vector<ub4>{1551, 1541, 1540}));
}

// A NULL result is traced as the pointer it is (no "(null)" in its place).
TEST_F(IntervalTrace, CompareWithANullResultHasNoExitRecord) {
  QWZInterval *a = ym(1, 2), *b = ym(1, 3);
  sword r = 0;
  cap_.records().clear();
  ASSERT_EQ(QWZIntervalCompare(env_, err_, a, b, &r), 0);
  EXPECT_EQ(api_ids(), (std::vector<ub4>{1561, 1541, 1540, 1541, 1540, 1560}));
  const std::string text = record("QWZIntervalCompare", {{"void*", hex12(env_)},
                                                         {"QWZError*", hex12(err_)},
                                                         {"const QWZInterval*", hex12(a)},
                                                         {"const QWZInterval*", hex12(b)},
                                                         {"sword*", hex12(&r)}});
  expect_record(0, 156, 1, 0, text);
  expect_record(5, 156, 0, 0, text);

  cap_.records().clear();
  EXPECT_EQ(QWZIntervalCompare(env_, err_, a, b, nullptr), 0);
  ASSERT_EQ(cap_.records().size(), 1u);
  expect_record(0, 156, 1, 0,
                record("QWZIntervalCompare", {{"void*", hex12(env_)},
                                              {"QWZError*", hex12(err_)},
                                              {"const QWZInterval*", hex12(a)},
                                              {"const QWZInterval*", hex12(b)},
                                              {"sword*", hexv(0)}}));
}

TEST_F(IntervalTrace, AddAndSubtract) {
  QWZInterval *a = ds(1, 0, 0, 0, 0), *b = ds(0, 0, 0, 0, 1), *r = ds(0, 0, 0, 0, 0);
  const struct {
    ub4 api;
    const char *name;
    sword (*fn)(void *, QWZError *, QWZInterval *, QWZInterval *, QWZInterval *);
  } apis[] = {{159, "QWZIntervalAdd", QWZIntervalAdd}, {158, "QWZIntervalSubtract", QWZIntervalSubtract}};
  for (const auto &api : apis) {
    cap_.records().clear();
    ASSERT_EQ(api.fn(env_, err_, a, b, r), 0);
    EXPECT_EQ(api_ids(), (std::vector<ub4>{api.api * 10 + 1, 1541, 1540, 1541, 1540, api.api * 10}));
    const std::string text = record(api.name, {{"void*", hex12(env_)},
                                               {"QWZError*", hex12(err_)},
                                               {"QWZInterval*", hex12(a)},
                                               {"QWZInterval*", hex12(b)},
                                               {"QWZInterval*", hex12(r)}});
    expect_record(0, api.api, 1, 0, text);
    expect_record(5, api.api, 0, 0, text);
    // Refused after the checks: no exit record.
    QWZInterval *y = ym(0, 0);
    cap_.records().clear();
    EXPECT_EQ(api.fn(env_, err_, a, b, y), QWZ_ERROR);
    EXPECT_EQ(api_ids(), (std::vector<ub4>{api.api * 10 + 1, 1541, 1540, 1541, 1540}));
  }
}

TEST_F(IntervalTrace, ToTextShowsClampedPrecisionsOnExit) {
  QWZInterval *iv = ds(1, 2, 3, 4, 12345);
  QWZtext buf[64] = {};
  size_t len = 0;
  cap_.records().clear();
  ASSERT_EQ(QWZIntervalToText(env_, err_, iv, 200, 7, buf, sizeof buf, &len), 0);
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "+000000001 02:03:04.12345");
  EXPECT_EQ(api_ids(), (std::vector<ub4>{1571, 1541, 1540, 1570}));
  auto text = [&](unsigned long lf, unsigned long fs) {
    return record("QWZIntervalToText", {{"void*", hex12(env_)},
                                        {"QWZError*", hex12(err_)},
                                        {"CONST QWZInterval*", hex12(iv)},
                                        {"ub1", hexv(lf)},
                                        {"ub1", hexv(fs)},
                                        {"QWZtext*", hex12(buf)},
                                        {"size_t", "64"},
                                        {"size_t*", hex12(&len)}});
  };
  expect_record(0, 157, 1, 0, text(200, 7));
  expect_record(3, 157, 0, 0, text(9, 5));

  // Precisions within range are traced as given both times.
  cap_.records().clear();
  buf[0] = 0;
  ASSERT_EQ(QWZIntervalToText(env_, err_, iv, 2, 3, buf, sizeof buf, &len), 0);
  expect_record(0, 157, 1, 0, text(2, 3));
  expect_record(3, 157, 0, 0, text(2, 3));

  // A buffer too small: no exit record.
  cap_.records().clear();
  EXPECT_EQ(QWZIntervalToText(env_, err_, iv, 200, 7, buf, 3, &len), QWZ_ERROR);
  EXPECT_EQ(api_ids(), (std::vector<ub4>{1571, 1541, 1540}));
}

TEST_F(IntervalTrace, FromText) {
  QWZInterval *iv = ym(0, 0);
  const QWZText *t = reinterpret_cast<const QWZText *>("-1-6");
  cap_.records().clear();
  ASSERT_EQ(QWZIntervalFromText(env_, err_, t, 4, iv), 0);
  auto text = [&](const std::string &s, const std::string &n) {
    return record("QWZIntervalFromText", {{"void*", hex12(env_)},
                                          {"QWZError*", hex12(err_)},
                                          {"const QWZText*", s},
                                          {"size_t", n},
                                          {"QWZInterval*", hex12(iv)}});
  };
  ASSERT_EQ(cap_.records().size(), 2u);
  expect_record(0, 160, 1, 0, text("-1-6", "4"));
  expect_record(1, 160, 0, 0, text("-1-6", "4"));

  // A range error is traced on exit with its status.
  const QWZText *bad = reinterpret_cast<const QWZText *>("1-12");
  cap_.records().clear();
  EXPECT_EQ(QWZIntervalFromText(env_, err_, bad, 4, iv), QWZ_ERROR);
  ASSERT_EQ(cap_.records().size(), 2u);
  expect_record(1, 160, 0, QWZ_ERROR, text("1-12", "4"));

  // The silent refusals have no exit record; a NULL text prints "(null)".
  cap_.records().clear();
  EXPECT_EQ(QWZIntervalFromText(env_, err_, nullptr, 4, iv), QWZ_ERROR);
  ASSERT_EQ(cap_.records().size(), 1u);
  expect_record(0, 160, 1, 0, text("(null)", "4"));
  cap_.records().clear();
  EXPECT_EQ(QWZIntervalFromText(env_, err_, t, 128, iv), QWZ_ERROR);
  ASSERT_EQ(cap_.records().size(), 1u);
  expect_record(0, 160, 1, 0, text("-1-6", "128"));
}

TEST_F(IntervalTrace, EntryRefusalStopsEverything) {
  QWZInterval *iv = ym(1, 2);
  sb4 y = 77, m = 78;
  cap_.set_results(7, 0);
  cap_.records().clear();
  // Nothing is validated: not even the error handle.
  EXPECT_EQ(QWZIntervalGetYearMonth(env_, nullptr, &y, &m, iv), 7);
  EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, 5, 6, iv), 7);
  EXPECT_EQ(QWZIntervalFromText(env_, err_, reinterpret_cast<const QWZText *>("5-6"), 3, iv), 7);
  EXPECT_EQ(y, 77);
  EXPECT_EQ(m, 78);
  EXPECT_EQ(slots_of(iv), (Slots{1, 2, 333, 444, 555}));
  EXPECT_EQ(api_ids(), (std::vector<ub4>{1521, 1501, 1601}));
}

TEST_F(IntervalTrace, ExitResultReplacesTheStatus) {
  QWZInterval *a = ym(1, 2), *b = ym(0, 0);
  cap_.set_results(0, 9);
  cap_.records().clear();
  // The nested check's exit answer fails the check, so Assign refuses.
  EXPECT_EQ(QWZIntervalAssign(env_, err_, a, b), QWZ_ERROR);
  expect_interval_invalid(3);
  EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, 5, 6, b), 9);
  EXPECT_EQ(slots_of(b), (Slots{5, 6, 333, 444, 555}));
}

TEST_F(IntervalTrace, NothingIsTracedWhenTracingIsOff) {
  QWZInterval *a = ds(1, 2, 3, 4, 5);
  qwz_trace_flag = 0;
  cap_.records().clear();
  QWZtext buf[64] = {};
  size_t len = 0;
  EXPECT_EQ(QWZIntervalAdd(env_, err_, a, a, a), 0);
  EXPECT_EQ(QWZIntervalToText(env_, err_, a, 2, 2, buf, sizeof buf, &len), 0);
  EXPECT_TRUE(cap_.records().empty());
}
