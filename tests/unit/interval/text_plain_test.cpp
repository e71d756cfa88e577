// Interval texts of the usual shapes ("-12 07:30:59.75", "+3-11") are read
// in one pass; every other text goes through the general readers. Both must
// give the same status and the same fields for every text. The general
// readers' groups are turned into a result here with the rules they follow:
// a group is its decimal value (too large past 32 bits or once it fills its
// buffer), the groups are range-tested in order (day, hour, minute, second,
// fraction; year, month), and all fields take the text's sign.
#include "date_datetime_interval/interval_text.h"
#include "handles/handles.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>

namespace {

std::int64_t group(const char *digits) {
  std::int64_t v = 0;
  std::size_t n = 0;
  for (; n < QWZ_INTERVAL_DIGITS_SIZE && digits[n] != '\0'; ++n) {
    v = v * 10 + (digits[n] - '0');
    if (v > INT32_MAX) return -1;
  }
  return n >= QWZ_INTERVAL_DIGITS_SIZE - 1 ? -1 : v;
}

struct Expected {
  sb4 status;
  sb4 slot[5];
};

Expected general(const std::string &text, bool ds, const sb4 (&before)[5]) {
  Expected e{0, {before[0], before[1], before[2], before[3], before[4]}};
  char g[5][QWZ_INTERVAL_DIGITS_SIZE];
  for (auto &d : g) d[0] = '\0';
  sword negative = 0;
  const sword r = ds ? parse_input_with_ds_format(text.c_str(), g[0], g[1], g[2], g[3], g[4],
                                                  &negative)
                     : parse_input_with_ym_format(text.c_str(), g[0], g[1], &negative);
  if (r != 0) {
    e.status = QWZ_IVTEXT_LITERAL_INVALID;
    return e;
  }
  const std::int64_t ds_max[5] = {999999999, 23, 59, 59, 999999};
  const sb4 ds_status[5] = {QWZ_IVTEXT_DAY_RANGE, QWZ_IVTEXT_HOUR_RANGE, QWZ_IVTEXT_MINUTE_RANGE,
                            QWZ_IVTEXT_SECOND_RANGE, QWZ_IVTEXT_FRACTION_RANGE};
  const std::int64_t ym_max[2] = {9999, 11};
  const sb4 ym_status[2] = {QWZ_IVTEXT_YEAR_RANGE, QWZ_IVTEXT_MONTH_RANGE};
  const int n = ds ? 5 : 2;
  std::int64_t v[5] = {};
  for (int i = 0; i < n; ++i) {
    v[i] = group(g[i]);
    if (v[i] < 0 || v[i] > (ds ? ds_max[i] : ym_max[i])) {
      e.status = ds ? ds_status[i] : ym_status[i];
      return e;
    }
  }
  for (int i = 0; i < n; ++i) e.slot[i] = static_cast<sb4>(negative ? -v[i] : v[i]);
  return e;
}

std::string digits(std::mt19937 &rng, int most) {
  std::string d(1 + rng() % most, '0');
  for (char &c : d) c = static_cast<char>('0' + rng() % 10);
  return d;
}

// Texts around the usual shapes: right ones, and ones a character off.
std::string text_for(std::mt19937 &rng, bool ds) {
  const char *signs[] = {"", "-", "+", " -", "--", "+-"};
  std::string t = signs[rng() % 6];
  if (ds) {
    t += digits(rng, 11) + (rng() % 8 == 0 ? "  " : " ") + digits(rng, rng() % 6 == 0 ? 3 : 2) +
         ":" + digits(rng, 2) + ":" + digits(rng, rng() % 6 == 0 ? 3 : 2);
    switch (rng() % 5) {
      case 0: break;
      case 1: t += "."; break;
      default: t += "." + digits(rng, 11); break;
    }
  } else {
    t += digits(rng, 11) + (rng() % 8 == 0 ? " -" : "-") + digits(rng, 11);
  }
  switch (rng() % 10) {
    case 0: t += " "; break;
    case 1: t[rng() % t.size()] = ":-. x"[rng() % 5]; break;
    case 2: t.erase(rng() % t.size(), 1); break;
    default: break;
  }
  return t;
}

TEST(IntervalTextPlain, SameStatusAndFieldsAsTheGeneralReader) {
  std::mt19937 rng(5);
  int plain = 0;
  for (const bool ds : {true, false}) {
    for (int i = 0; i < 20000; ++i) {
      const std::string text = text_for(rng, ds);
      QWZInterval iv;
      std::memset(&iv, 0, sizeof iv);
      iv.hdr.type = ds ? INTERVAL_KIND_DS : INTERVAL_KIND_YM;
      const sb4 before[5] = {7, -7, 70, -70, 700};
      std::memcpy(iv.slot, before, sizeof before);
      const Expected want = general(text, ds, before);
      const sb4 status =
          interval_from_text(reinterpret_cast<const QWZText *>(text.c_str()), text.size(), &iv);
      ASSERT_EQ(status, want.status) << "'" << text << "'";
      for (int k = 0; k < 5; ++k) ASSERT_EQ(iv.slot[k], want.slot[k]) << "'" << text << "' " << k;
      plain += status == 0;
    }
  }
  EXPECT_GT(plain, 1500);
}

struct Row {
  bool ds;
  const char *text;
  sb4 status;
  sb4 slot[5];
};

TEST(IntervalTextPlain, WorkedTexts) {
  const Row rows[] = {
      {true, "-12 07:30:59.75000", 0, {-12, -7, -30, -59, -75000}},
      {true, "+0 00:00:00", 0, {0, 0, 0, 0, 0}},
      {true, "999999999 23:59:59.999999", 0, {999999999, 23, 59, 59, 999999}},
      {true, "1 24:00:00", QWZ_IVTEXT_HOUR_RANGE, {1, 2, 3, 4, 5}},
      {true, "1 23:60:00", QWZ_IVTEXT_MINUTE_RANGE, {1, 2, 3, 4, 5}},
      {true, "1 23:59:60", QWZ_IVTEXT_SECOND_RANGE, {1, 2, 3, 4, 5}},
      {true, "1 23:59:59.1000000", QWZ_IVTEXT_FRACTION_RANGE, {1, 2, 3, 4, 5}},
      {true, "1 23:59:59.", QWZ_IVTEXT_LITERAL_INVALID, {1, 2, 3, 4, 5}},
      {true, "1 2:3:4", 0, {1, 2, 3, 4, 0}},  // short groups: the general reader
      {false, "-3-11", 0, {-3, -11, 3, 4, 5}},
      {false, "10000-0", QWZ_IVTEXT_YEAR_RANGE, {1, 2, 3, 4, 5}},
      {false, "1-12", QWZ_IVTEXT_MONTH_RANGE, {1, 2, 3, 4, 5}},
      {false, "1 - 2", 0, {1, 2, 3, 4, 5}},  // blanks: the general reader
  };
  for (const Row &r : rows) {
    QWZInterval iv;
    std::memset(&iv, 0, sizeof iv);
    iv.hdr.type = r.ds ? INTERVAL_KIND_DS : INTERVAL_KIND_YM;
    const sb4 before[5] = {1, 2, 3, 4, 5};
    std::memcpy(iv.slot, before, sizeof before);
    EXPECT_EQ(interval_from_text(reinterpret_cast<const QWZText *>(r.text), std::strlen(r.text),
                                 &iv),
              r.status)
        << r.text;
    for (int k = 0; k < 5; ++k) EXPECT_EQ(iv.slot[k], r.slot[k]) << r.text << " " << k;
  }
}

}  // namespace
