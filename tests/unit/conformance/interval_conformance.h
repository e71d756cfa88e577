// Shared pieces of the interval conformance tests. Everything here goes
// through the public interface only: values are set with the public setters
// and read back with the public getters, diagnostics with QWZErrorGet and
// trace records through the hook.
#ifndef QWZ_TESTS_CONFORMANCE_INTERVAL_H
#define QWZ_TESTS_CONFORMANCE_INTERVAL_H

#include "support/test_support.h"

#include <array>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace qwz_conf {

using qwz_test::Diag;
using qwz_test::hex12;
using Fields = std::array<sb4, 5>;  // day, hour, minute, second, fraction
using YearMonth = std::pair<sb4, sb4>;

inline constexpr ub4 kYM = INTERVAL_KIND_YM;
inline constexpr ub4 kDS = INTERVAL_KIND_DS;

inline std::string null_param(int n) {
  return "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n) + " is NULL\n";
}
inline std::string interval_invalid(int n) {
  return "ERROR: [QWZ-11104][QWZ Driver].interval is invalid " + std::to_string(n) + " \n";
}
inline const std::string kTypeDiff = "ERROR: [QWZ-21405][QWZ Driver].type is diff\n";
inline const std::string kTypeInvalid = "ERROR: [QWZ-11105][QWZ Driver].type is invalid \n";
inline const std::string kBufTooSmall = "ERROR: [QWZ-11104][QWZ Driver]. buf is too small \n";

// A trace record as the hook receives it: "<Name>" then one
// "\n\t<type>     \t<value>" line per argument of the row.
using Line = std::pair<std::string, std::string>;
inline std::string record(const std::string &name, const std::vector<Line> &lines) {
  std::string r = "<" + name + ">";
  for (const Line &l : lines) r += "\n\t" + l.first + "     \t" + l.second;
  return r;
}
inline std::string hexv(unsigned long v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "0x%012lX", v);
  return buf;
}
// The value printed on one line (0-based after the name) of a record.
inline std::string line_value(const std::string &text, size_t line) {
  size_t pos = text.find('\n');
  for (size_t i = 0; i < line && pos != std::string::npos; ++i) pos = text.find('\n', pos + 1);
  if (pos == std::string::npos) return "";
  const size_t tab = text.find('\t', pos + 2);
  const size_t end = text.find('\n', pos + 1);
  return text.substr(tab + 1, end == std::string::npos ? std::string::npos : end - tab - 1);
}

class IntervalConformance : public qwz_test::HandleFixture {
 protected:
  QWZInterval *ym(sb4 y, sb4 m) {
    QWZInterval *iv = new_interval(kYM);
    EXPECT_EQ(QWZIntervalSetYearMonth(env_, err_, y, m, iv), QWZ_SUCCESS);
    return iv;
  }
  QWZInterval *ds(sb4 d, sb4 h, sb4 mi, sb4 s, sb4 f) {
    QWZInterval *iv = new_interval(kDS);
    EXPECT_EQ(QWZIntervalSetDaySecond(env_, err_, d, h, mi, s, f, iv), QWZ_SUCCESS);
    return iv;
  }
  QWZInterval *ds(const Fields &f) { return ds(f[0], f[1], f[2], f[3], f[4]); }
  YearMonth get_ym(const QWZInterval *iv) {
    sb4 y = 7777, m = 7777;
    EXPECT_EQ(QWZIntervalGetYearMonth(env_, err_, &y, &m, iv), QWZ_SUCCESS);
    return {y, m};
  }
  Fields get_ds(const QWZInterval *iv) {
    Fields f = {7777, 7777, 7777, 7777, 7777};
    EXPECT_EQ(QWZIntervalGetDaySecond(env_, err_, &f[0], &f[1], &f[2], &f[3], &f[4], iv),
              QWZ_SUCCESS);
    return f;
  }
  ub4 flags(const QWZInterval *iv) {
    ub4 v = 0xDEADu;
    EXPECT_EQ(QWZIntervalCheck(env_, err_, iv, &v), QWZ_SUCCESS);
    return v;
  }
  // A descriptor that has been freed.
  QWZInterval *freed(ub4 kind) {
    QWZInterval *iv = new_interval(kind);
    EXPECT_EQ(QWZDescriptorFree(iv, kind), QWZ_SUCCESS);
    return iv;
  }
  // Descriptors no interval function accepts.
  std::vector<const QWZInterval *> bad_descriptors() {
    return {nullptr, freed(kYM), freed(kDS),
            reinterpret_cast<const QWZInterval *>(new_datetime(DATETIME_KIND_TIMESTAMP)),
            reinterpret_cast<const QWZInterval *>(err_),
            reinterpret_cast<const QWZInterval *>(env_)};
  }
  // Context handles no interval function accepts.
  std::vector<void *> bad_contexts() {
    return {nullptr, err_, new_interval(kYM), new_datetime(DATETIME_KIND_DATE)};
  }
  // Leaves a known diagnostic in err_ through a failing public call.
  void leave_diag() {
    QWZInterval *iv = new_interval(kDS);
    ASSERT_EQ(QWZIntervalCheck(env_, err_, iv, nullptr), QWZ_ERROR);
  }
  void expect_left_diag() { expect_diag(21560, "21560", null_param(4)); }

  // Diagnostics written through the front-end writer: number and message.
  void expect_front(sb4 number, const std::string &message) {
    const Diag d = diag();
    EXPECT_EQ(d.rc, QWZ_SUCCESS);
    EXPECT_EQ(d.number, number);
    EXPECT_EQ(d.message, message);
  }
  void expect_invalid_handle() { expect_front(800001, "Invalid handle."); }
  void expect_value_address() { expect_front(800036, "the value address could not be null."); }
  void expect_null_param(int n) { expect_diag(21560, "21560", null_param(n)); }
  void expect_interval_invalid(int n) { expect_diag(11104, "22007", interval_invalid(n)); }
  void expect_type_diff() { expect_diag(11105, "22008", kTypeDiff); }
  void expect_type_invalid() { expect_diag(11105, "22008", kTypeInvalid); }
  void expect_buf_too_small() { expect_diag(11104, "01877", kBufTooSmall); }
};

// Records the trace; ids() gives api_id * 10 + direction per record.
class TracedConformance : public IntervalConformance {
 protected:
  std::vector<qwz_test::TraceRecord> &recs() { return cap_.records(); }
  std::vector<ub4> ids() {
    std::vector<ub4> v;
    for (const auto &r : cap_.records()) v.push_back(r.api_id * 10 + r.direction);
    return v;
  }
  void expect_rec(size_t i, ub4 api, ub4 direction, sword status, const std::string &text) {
    ASSERT_LT(i, cap_.records().size());
    const auto &r = cap_.records()[i];
    EXPECT_EQ(r.api_id, api);
    EXPECT_EQ(r.direction, direction);
    EXPECT_EQ(r.status, status);
    EXPECT_EQ(r.text, text);
    EXPECT_EQ(r.errhp, static_cast<void *>(err_));
  }
  qwz_test::TraceCapture cap_;
};

}  // namespace qwz_conf

#endif  // QWZ_TESTS_CONFORMANCE_INTERVAL_H
