// Shared pieces of the interval tests: descriptors filled directly, their
// slots read back, and the diagnostics the interval family writes.
#ifndef QWZ_TESTS_INTERVAL_FIXTURE_H
#define QWZ_TESTS_INTERVAL_FIXTURE_H

#include "support/test_support.h"

#include <array>
#include <climits>
#include <string>

namespace qwz_test {

using Slots = std::array<sb4, 5>;

inline Slots slots_of(const QWZInterval *iv) {
  return {iv->slot[0], iv->slot[1], iv->slot[2], iv->slot[3], iv->slot[4]};
}

inline std::string null_param_text(int n) {
  return "ERROR: [QWZ-21560][QWZ Driver].parameter " + std::to_string(n) + " is NULL\n";
}
inline std::string interval_invalid_text(int n) {
  return "ERROR: [QWZ-11104][QWZ Driver].interval is invalid " + std::to_string(n) + " \n";
}
inline constexpr const char kTypeDiffText[] = "ERROR: [QWZ-21405][QWZ Driver].type is diff\n";
inline constexpr const char kTypeInvalidText[] = "ERROR: [QWZ-11105][QWZ Driver].type is invalid \n";
inline constexpr const char kBufTooSmallText[] = "ERROR: [QWZ-11104][QWZ Driver]. buf is too small \n";
inline constexpr const char kInvalidHandleText[] = "Invalid handle.";
inline constexpr const char kValueAddressText[] = "the value address could not be null.";

class IntervalFixture : public HandleFixture {
 protected:
  // A year-month descriptor holding (y, m); slots 3..5 hold markers that a
  // year-month operation must leave alone.
  QWZInterval *ym(sb4 y, sb4 m) {
    QWZInterval *iv = new_interval(INTERVAL_KIND_YM);
    iv->slot[0] = y;
    iv->slot[1] = m;
    iv->slot[2] = 333;
    iv->slot[3] = 444;
    iv->slot[4] = 555;
    return iv;
  }
  QWZInterval *ds(sb4 d, sb4 h, sb4 mi, sb4 s, sb4 f) {
    QWZInterval *iv = new_interval(INTERVAL_KIND_DS);
    iv->slot[0] = d;
    iv->slot[1] = h;
    iv->slot[2] = mi;
    iv->slot[3] = s;
    iv->slot[4] = f;
    return iv;
  }
  QWZInterval *of_kind(ub4 kind, const Slots &v) {
    QWZInterval *iv = new_interval(kind);
    for (int i = 0; i < 5; ++i) iv->slot[i] = v[i];
    return iv;
  }
  // A descriptor that has been freed (its memory stays ours).
  QWZInterval *freed_interval(ub4 kind) {
    QWZInterval *iv = new_interval(kind);
    EXPECT_EQ(QWZDescriptorFree(iv, kind), QWZ_SUCCESS);
    return iv;
  }
  void expect_invalid_handle() { expect_diag(800001, "", kInvalidHandleText); }
  void expect_null_param(int n) { expect_diag(21560, "21560", null_param_text(n)); }
  void expect_interval_invalid(int n) { expect_diag(11104, "22007", interval_invalid_text(n)); }
  void expect_type_diff() { expect_diag(11105, "22008", kTypeDiffText); }
  void expect_type_invalid() { expect_diag(11105, "22008", kTypeInvalidText); }
  void expect_value_address() { expect_diag(800036, "", kValueAddressText); }
  // Puts a diagnostic in the error handle, to see that a call clears it.
  void dirty() { _QWZSetFrontEndErrorHandle(err_, "stale", 1); }
};

}  // namespace qwz_test

#endif  // QWZ_TESTS_INTERVAL_FIXTURE_H
