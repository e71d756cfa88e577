#include "support/test_support.h"

using namespace qwz_test;

class Smoke : public HandleFixture {};

TEST_F(Smoke, AddMonths) {
  ZoneGuard z(kUtc);
  QWZDate d{2024, 1, 31, 0, 0, 0}, r{};
  ASSERT_EQ(QWZDateAddMonths(err_, &d, 1, &r), 0);
  EXPECT_EQ(r.day, 29);
  expect_clear();
}
