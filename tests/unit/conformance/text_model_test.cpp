// The public text conversions against a plain model of the format rules, the
// parser and the formatter, over generated formats and texts (fixed seeds).
// Texts come in families of one shape (the same characters, other digits)
// and formats rotate through more than a handful, so repeated formats and
// repeated shapes are met again and again, in one thread and in several.
#include "text_conf_util.h"

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>
#include <vector>

using namespace text_conf;
namespace tm_ = text_model;

namespace {

using qwz_test::kCet;
using qwz_test::kUtc;
using qwz_test::ZoneGuard;

const char *const kFieldKeywords[] = {"YYYY", "SYYYY", "MM",  "DD",  "HH",  "HH12", "HH24",
                                      "MI",   "SS",    "FF1", "FF2", "FF3", "FF4",  "FF5",
                                      "TZH",  "TZM"};
const char *const kSeparators[] = {"-", "/", ".", ":", " ", ",", "+", "_", "  ", "-:", "*"};
const char *const kOddities[] = {"MON", "DY", "T", "1", "AM", "DDD", "SSSSS", "YY", "FF", "X"};

class Generator {
 public:
  explicit Generator(unsigned seed) : rng_(seed) {}

  int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }
  bool chance(int percent) { return pick(100) < percent; }

  std::string random_case(const std::string &k) {
    std::string out = k;
    for (char &c : out)
      if (c >= 'A' && c <= 'Z' && chance(30)) c = static_cast<char>(c + 32);
    return out;
  }

  // A format of a few field keywords (each at most once, at most one
  // fraction), separators between, and now and then a flaw.
  std::string format() {
    std::vector<int> order;
    for (int i = 0; i < 16; ++i) order.push_back(i);
    std::shuffle(order.begin(), order.end(), rng_);
    const int fields = 1 + pick(7);
    std::string f;
    if (chance(10)) f += std::string(1 + pick(2), ' ');
    bool fraction = false;
    int used = 0;
    for (int i : order) {
      if (used == fields) break;
      const std::string k = kFieldKeywords[i];
      if (k.rfind("FF", 0) == 0) {
        if (fraction) continue;
        fraction = true;
      }
      if (used > 0) {
        const int seps = pick(3);
        for (int s = 0; s < seps; ++s) f += kSeparators[pick(11)];
      }
      f += random_case(k);
      ++used;
    }
    if (chance(12)) f += kOddities[pick(10)];
    if (chance(6)) f += random_case(kFieldKeywords[pick(16)]);  // perhaps a duplicate
    if (chance(10)) f += std::string(1 + pick(2), ' ');
    return f;
  }

  // A text that roughly follows a format: digit groups of about the right
  // width, the format's separators or others, signs, blanks and letters.
  std::string text_for(const std::string &format) {
    std::string t;
    if (chance(10)) t += std::string(1 + pick(2), ' ');
    for (std::size_t i = 0; i < format.size();) {
      const char c = tm_::upper(format[i]);
      if (c >= 'A' && c <= 'Z') {
        std::size_t j = i;
        while (j < format.size() && (tm_::is_letter(format[j]) || tm_::is_digit(format[j]))) ++j;
        const std::size_t width = j - i >= 4 ? 4 : 2;
        if (chance(12)) t += '-';
        if (chance(4)) t += '+';
        int digits = static_cast<int>(width);
        if (chance(30)) digits += pick(5) - 2;
        for (int d = 0; d < digits; ++d) t += static_cast<char>('0' + pick(10));
        i = j;
      } else {
        const int what = pick(10);
        if (what < 6) t += format[i];
        else if (what < 8) t += kSeparators[pick(11)];
        else if (what < 9) t += ' ';
        ++i;
      }
    }
    if (chance(15)) t += chance(50) ? "  x" : " 12:30 ab";
    if (chance(4)) t.insert(static_cast<std::size_t>(pick(static_cast<int>(t.size()) + 1)), "z");
    if (chance(8)) t += std::string(1 + pick(2), ' ');
    if (t.find_first_not_of(' ') == std::string::npos) t = "7" + t;
    return t;
  }

  // Another text of the same shape: every digit replaced by a random one.
  std::string same_shape(const std::string &t) {
    std::string out = t;
    for (char &c : out)
      if (tm_::is_digit(c)) c = static_cast<char>('0' + pick(10));
    return out;
  }

  std::mt19937 &rng() { return rng_; }

 private:
  std::mt19937 rng_;
};

class TextModel : public TextFixture {
 protected:
  // One text under one format through QWZDateFromText and through
  // QWZDateTimeFromText into a type-68 and a type-69 descriptor, each
  // against the model. Returns false (and records why) on a mismatch.
  void check_from(const std::string &text, const std::string &fmt, const Clock &clock) {
    SCOPED_TRACE("text '" + text + "' format '" + fmt + "'");
    const tm_::EntryResult r =
        tm_::entry(text, text.size(), fmt, fmt.size(), clock.year, clock.month);

    // QWZDateFromText.
    const QWZDate sentinel = make_date(1111, 11, 11, 11, 11, 11);
    QWZDate d = sentinel;
    const sword rc = date_from(text, fmt, &d);
    if (r.code == 5) {
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag_seen(), format_string());
      EXPECT_TRUE(same(d, sentinel));
    } else if (!r.ok) {
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag_seen(), none());
      EXPECT_TRUE(same(d, sentinel)) << show(d);
    } else {
      const tm_::DateValue v = tm_::date_value(r.fields);
      EXPECT_EQ(d.year, v.year);
      EXPECT_EQ(d.month, v.month);
      EXPECT_EQ(d.day, v.day);
      EXPECT_EQ(d.hour, v.hour);
      EXPECT_EQ(d.minute, v.minute);
      EXPECT_EQ(d.second, v.second);
      if (tm_::date_flags(v) != 0) {
        EXPECT_EQ(rc, QWZ_ERROR);
        EXPECT_EQ(diag_seen(), date_format());
      } else {
        EXPECT_EQ(rc, QWZ_SUCCESS);
        EXPECT_EQ(diag_seen(), none());
      }
    }

    // QWZDateTimeFromText.
    for (int type : {68, 69}) {
      SCOPED_TRACE("type " + std::to_string(type));
      QWZDateTime *x = type == 68 ? dt68_ : dt69_;
      const Read before = read(x);
      const sword xrc = datetime_from(text, fmt, x);
      if (r.code == 5) {
        EXPECT_EQ(xrc, QWZ_ERROR);
        EXPECT_EQ(diag_seen(), format_string());
        EXPECT_EQ(read(x), before);
        continue;
      }
      // A text that did not match goes on with what was read.
      const tm_::Fields f = r.ran ? r.fields : tm_::Fields{};
      if (f.tz_given && type != 69) {
        EXPECT_EQ(xrc, QWZ_ERROR);
        expect_front(800153, kNotRecognized);
        EXPECT_EQ(read(x), before);
        continue;
      }
      const tm_::DateValue v = tm_::date_value(f);
      const int tzh = std::atoi(f.tz_hour.c_str());
      const int tzm = std::atoi(f.tz_minute.c_str());
      EXPECT_EQ(read(x), expected_read(type, v, tm_::fraction_value(f), static_cast<sb1>(tzh),
                                       static_cast<sb1>(tzm)));
      if (tm_::datetime_flags(type, v, static_cast<sb1>(tzh), static_cast<sb1>(tzm)) != 0) {
        EXPECT_EQ(xrc, QWZ_ERROR);
        EXPECT_EQ(diag_seen(), datetime_date_format());
      } else {
        EXPECT_EQ(xrc, QWZ_SUCCESS);
        EXPECT_EQ(diag_seen(), none());
      }
    }
  }

  void SetUp() override {
    TextFixture::SetUp();
    dt68_ = new_datetime(68);
    dt69_ = new_datetime(69);
  }

  QWZDateTime *dt68_ = nullptr;
  QWZDateTime *dt69_ = nullptr;
};

// Generated formats and texts, each text followed by others of its shape,
// formats drawn from a pool larger than any small cache.
TEST_F(TextModel, FromTextAgreesWithTheModel) {
  ZoneGuard z(kCet);
  Generator g(20240517);
  std::vector<std::string> formats;
  for (int i = 0; i < 40; ++i) formats.push_back(g.format());
  for (int round = 0; round < 4; ++round) {
    const Clock clock = clock_now();
    for (int i = 0; i < 600; ++i) {
      const std::string &fmt = formats[static_cast<std::size_t>(g.pick(static_cast<int>(
          i % 3 == 0 ? formats.size() : 6)))];
      const std::string text = g.text_for(fmt);
      check_from(text, fmt, clock);
      for (int k = 0; k < 3; ++k) check_from(g.same_shape(text), fmt, clock);
      if (HasFailure()) return;
    }
    if (!(clock_now() == clock)) --round;  // the month turned meanwhile
  }
}

// Texts that differ only in their digits, under one format: a text that
// succeeded must not decide the result of the next one. Hand-picked shapes
// where the digits change what the values are but not where they go.
TEST_F(TextModel, SameShapeTextsUnderOneFormat) {
  ZoneGuard z(kUtc);
  const Clock clock = clock_now();
  const char *const cases[][2] = {
      {"YYYY-MM-DD HH24:MI:SS.FF3", "2024-05-17 10:20:30.123"},
      {"YYYY-MM-DD HH24:MI:SS.FF3", "0000-00-00 00:00:00.000"},
      {"YYYY-MM-DD HH24:MI:SS.FF3", "9999-99-99 99:99:99.999"},
      {"SYYYY-MM-DD", "-0044-03-15"},
      {"SYYYY-MM-DD", "-9999-12-31"},
      {"MM", "05"},
      {"YYYY", "2024"},
      {"TZH:TZM", "-05:30"},
      {"TZH:TZM", "+05:30"},
      {"DD.MM.YYYY HH:MI", "17.05.2024 13:45"},
      {"YYYYMMDD", "20240517"},
      {"YYYY-MM-DD", "2024-05-17  x"},
      {"HH24 MI SS", "1 2 3"},
      {"DD/MM/YYYY", "-1/-2/2024"},
  };
  std::mt19937 rng(7);
  for (const auto &c : cases) {
    const std::string fmt = c[0];
    std::string text = c[1];
    for (int k = 0; k < 30; ++k) {
      check_from(text, fmt, clock);
      for (char &ch : text) {
        if (tm_::is_digit(ch)) ch = static_cast<char>('0' + rng() % 10);
      }
    }
  }
}

// The same texts under formats that are equal but for case or blanks
// around them, and different formats over one text.
TEST_F(TextModel, OneTextUnderManyFormats) {
  ZoneGuard z(kUtc);
  const Clock clock = clock_now();
  const char *const texts[] = {"2024-05-17 10:20:30.123", "17.05.2024", "-05:30", "2024",
                               "05", "2024-05-17 10:00 x"};
  const char *const formats[] = {"YYYY-MM-DD HH24:MI:SS.FF3", "yyyy-mm-dd hh24:mi:ss.ff3",
                                 "  YYYY-MM-DD HH24:MI:SS.FF3 ", "YYYY-MM-DD", "DD.MM.YYYY",
                                 "TZH:TZM", "YYYY", "MM", "HH:MI", "SYYYY-MM-DD", "FF5",
                                 "DD-MON-YYYY", "YYYY-MM-DDT", "YYYY-MM-DD HH HH24"};
  for (int pass = 0; pass < 3; ++pass)
    for (const char *t : texts)
      for (const char *f : formats) check_from(t, f, clock);
}

// Every byte value at every position of texts of two and three words.
TEST_F(TextModel, EveryByteAtEveryPosition) {
  ZoneGuard z(kUtc);
  const Clock clock = clock_now();
  const char *const bases[][2] = {{"2024-05-17 10:20", "YYYY-MM-DD HH24:MI"},
                                  {"2024-05-17 10:20:30.123  x", "YYYY-MM-DD HH24:MI:SS.FF3"}};
  for (const auto &b : bases) {
    const std::string base = b[0];
    for (std::size_t pos = 0; pos < base.size(); ++pos) {
      for (int v = 1; v < 256; ++v) {
        std::string text = base;
        text[pos] = static_cast<char>(v);
        check_from(text, b[1], clock);
        if (HasFailure()) return;
      }
    }
  }
}

// Several threads, each with its own formats and shapes, interleaved.
TEST(TextModelThreads, ConcurrentParsesAgreeWithTheModel) {
  ZoneGuard z(kUtc);
  const Clock clock = clock_now();
  std::atomic<int> mismatches{0};
  auto worker = [&](unsigned seed) {
    QWZEnv *env = nullptr;
    QWZError *err = nullptr;
    if (QWZEnvCreate(&env, 0) != QWZ_SUCCESS ||
        QWZHandleAlloc(env, reinterpret_cast<void **>(&err), QWZ_HTYPE_ERROR) != QWZ_SUCCESS) {
      ++mismatches;
      return;
    }
    Generator g(seed);
    std::vector<std::string> formats;
    for (int i = 0; i < 8; ++i) formats.push_back(g.format());
    for (int i = 0; i < 3000; ++i) {
      const std::string &fmt = formats[static_cast<std::size_t>(g.pick(8))];
      const std::string text = i % 2 ? g.text_for(fmt) : g.same_shape(g.text_for(fmt));
      const tm_::EntryResult r =
          tm_::entry(text, text.size(), fmt, fmt.size(), clock.year, clock.month);
      QWZDate d = make_date(1111, 11, 11, 11, 11, 11);
      const sword rc = QWZDateFromText(err, C(text), static_cast<ub4>(text.size()), C(fmt),
                                       static_cast<ub1>(fmt.size()), nullptr, 0, &d);
      bool good;
      if (!r.ok) {
        good = rc == QWZ_ERROR;
      } else {
        const tm_::DateValue v = tm_::date_value(r.fields);
        const tm_::DateValue got{d.year, d.month, d.day, d.hour, d.minute, d.second};
        good = got == v && (rc == QWZ_SUCCESS) == (tm_::date_flags(v) == 0);
      }
      if (!good) ++mismatches;
    }
    QWZHandleFree(env, QWZ_HTYPE_ENV);
  };
  std::vector<std::thread> threads;
  for (unsigned s = 0; s < 4; ++s) threads.emplace_back(worker, 100 + s);
  for (std::thread &t : threads) t.join();
  EXPECT_EQ(mismatches.load(), 0);
}

// ---- value to text ---------------------------------------------------------

QWZDate random_date(Generator &g) {
  // Years across the valid range, with the short and negative ones often.
  int year;
  switch (g.pick(4)) {
    case 0: year = -4712 + g.pick(4712); break;
    case 1: year = -999 + g.pick(1999); break;
    case 2: year = 1 + g.pick(9999); break;
    default: year = 1900 + g.pick(200); break;
  }
  if (year == 0) year = 1;
  const int month = 1 + g.pick(12);
  const int day = 1 + g.pick(tm_::month_length(static_cast<int16_t>(year), month));
  return make_date(year, month, day, g.pick(24), g.pick(60), g.pick(60));
}

TEST_F(TextModel, DateToTextAgreesWithTheModel) {
  Generator g(31337);
  std::vector<std::string> formats;
  for (int i = 0; i < 30; ++i) formats.push_back(g.format());
  for (int i = 0; i < 4000; ++i) {
    const std::string &fmt = formats[static_cast<std::size_t>(g.pick(30))];
    const QWZDate d = random_date(g);
    const tm_::DateValue v{d.year, d.month, d.day, d.hour, d.minute, d.second};
    const tm_::OutResult full = tm_::to_text(tm_::fields_of_date(v), fmt, fmt.size(), 255, true);
    ub4 cap = 200;
    if (full.ok && g.chance(40)) cap = static_cast<ub4>(full.text.size()) - 1 + g.pick(3);
    const tm_::OutResult r = tm_::to_text(tm_::fields_of_date(v), fmt, fmt.size(), cap, true);
    SCOPED_TRACE("date " + show(d) + " format '" + fmt + "' cap " + std::to_string(cap));
    char buf[300];
    std::memset(buf, '#', sizeof buf);
    buf[299] = '\0';
    ub4 size = cap;
    const sword rc = QWZDateToText(err_, &d, C(fmt), static_cast<ub1>(fmt.size()), nullptr, 0,
                                   &size, reinterpret_cast<QWZtext *>(buf));
    EXPECT_EQ(size, cap);
    if (r.ok) {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_EQ(diag_seen(), none());
      EXPECT_EQ(std::string(buf, r.text.size()), r.text);
      if (r.text.size() < cap) {
        EXPECT_EQ(buf[r.text.size()], '\0');
      }
    } else {
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag_seen(), r.code == 9   ? buf_too_small()
                             : r.code == 5 ? format_string()
                                           : format_or_date());
      EXPECT_EQ(std::string(buf, 8), "########");
    }
    if (HasFailure()) return;
  }
}

TEST_F(TextModel, DateTimeToTextAgreesWithTheModel) {
  ZoneGuard z(kUtc);
  Generator g(4242);
  std::vector<std::string> formats;
  for (int i = 0; i < 30; ++i) formats.push_back(g.format());
  QWZDateTime *x68 = new_datetime(68);
  QWZDateTime *x69 = new_datetime(69);
  const ub4 fractions[] = {0, 5, 50, 5000000, 123000000, 123456789, 999999999, 100000000, 7};
  for (int i = 0; i < 3000; ++i) {
    const std::string &fmt = formats[static_cast<std::size_t>(g.pick(30))];
    const QWZDate d = random_date(g);
    const bool zoned = g.chance(50);
    QWZDateTime *x = zoned ? x69 : x68;
    const int tzh = -12 + g.pick(27);
    const int tzm = g.pick(60);
    const std::string tz = std::string(tzh < 0 ? "-" : "+") + std::to_string(std::abs(tzh)) +
                           ":" + std::to_string(tzm);
    const ub4 ns = fractions[g.pick(9)];
    ASSERT_EQ(QWZDateTimeConstruct(env_, err_, x, d.year, static_cast<ub1>(d.month),
                                   static_cast<ub1>(d.day), static_cast<ub1>(d.hour),
                                   static_cast<ub1>(d.minute), static_cast<ub1>(d.second), ns,
                                   W(tz), tz.size()),
              QWZ_SUCCESS);
    const Read rd = read(x);
    const tm_::DateValue v{rd.year, rd.month, rd.day, rd.hour, rd.minute, rd.second};
    const tm_::Fields f = tm_::fields_of_datetime(v, rd.fraction, zoned ? rd.tz_hour : 0,
                                                  zoned ? rd.tz_minute : 0);
    const tm_::OutResult full = tm_::to_text(f, fmt, fmt.size(), 255, false);
    ub4 cap = 200;
    if (full.ok && g.chance(40)) cap = static_cast<ub4>(full.text.size()) - 1 + g.pick(3);
    const tm_::OutResult r = tm_::to_text(f, fmt, fmt.size(), cap, false);
    SCOPED_TRACE("datetime " + show(d) + " ns " + std::to_string(rd.fraction) + " tz " + tz +
                 " format '" + fmt + "' cap " + std::to_string(cap));
    char buf[300];
    std::memset(buf, '#', sizeof buf);
    buf[299] = '\0';
    ub4 size = cap;
    const sword rc = QWZDateTimeToText(env_, err_, x, C(fmt), static_cast<ub1>(fmt.size()), 9,
                                       nullptr, 0, &size, reinterpret_cast<QWZtext *>(buf));
    EXPECT_EQ(size, cap);
    if (r.ok) {
      EXPECT_EQ(rc, QWZ_SUCCESS);
      EXPECT_EQ(diag_seen(), none());
      EXPECT_EQ(std::string(buf, r.text.size()), r.text);
    } else {
      EXPECT_EQ(rc, QWZ_ERROR);
      EXPECT_EQ(diag_seen(), r.code == 9   ? buf_too_small()
                             : r.code == 5 ? format_string()
                                           : none());
      EXPECT_EQ(std::string(buf, 8), "########");
    }
    if (HasFailure()) return;
  }
}

// Text to value to text under several formats, over generated values.
TEST_F(TextModel, RoundTrips) {
  ZoneGuard z(kCet);
  Generator g(99);
  const char *const date_formats[] = {"YYYY-MM-DD HH24:MI:SS", "DD.MM.YYYY HH:MI:SS",
                                      "YYYYMMDDHH24MISS", "MM/DD/YYYY HH12.MI.SS"};
  for (int i = 0; i < 2000; ++i) {
    QWZDate d = random_date(g);
    if (d.year < 1) d.year = static_cast<sb2>(1 + g.pick(9999));
    const std::string fmt = date_formats[i % 4];
    std::string text;
    ASSERT_EQ(date_to(d, fmt, text), QWZ_SUCCESS) << show(d) << " " << fmt;
    QWZDate back = make_date(1, 1, 1);
    ASSERT_EQ(date_from(text, fmt, &back), QWZ_SUCCESS) << text << " " << fmt;
    EXPECT_TRUE(same(back, d)) << text << " " << show(back);
  }
  // Negative years need the signed keyword, and a sign the parser keeps:
  // the year must come first in the text.
  for (int i = 0; i < 500; ++i) {
    QWZDate d = random_date(g);
    d.year = static_cast<sb2>(-1000 - g.pick(3713));
    std::string text;
    ASSERT_EQ(date_to(d, "SYYYY-MM-DD HH24:MI:SS", text), QWZ_SUCCESS) << show(d);
    QWZDate back = make_date(1, 1, 1);
    ASSERT_EQ(date_from(text, "SYYYY-MM-DD HH24:MI:SS", &back), QWZ_SUCCESS) << text;
    EXPECT_TRUE(same(back, d)) << text << " " << show(back);
  }
  QWZDateTime *x = new_datetime(69);
  QWZDateTime *y = new_datetime(69);
  for (int i = 0; i < 1000; ++i) {
    QWZDate d = random_date(g);
    if (d.year < 1) d.year = static_cast<sb2>(1 + g.pick(9999));
    // Nine-digit counts (or 0): a shorter count prints without its leading
    // zeros and so does not come back.
    const ub4 ns = g.chance(10) ? 0u : static_cast<ub4>(100 + g.pick(900)) * 1000000u;
    const int tzh = -12 + g.pick(27);
    const std::string tz = std::string(tzh < 0 ? "-" : "+") + std::to_string(std::abs(tzh)) +
                           ":00";
    ASSERT_EQ(QWZDateTimeConstruct(env_, err_, x, d.year, static_cast<ub1>(d.month),
                                   static_cast<ub1>(d.day), static_cast<ub1>(d.hour),
                                   static_cast<ub1>(d.minute), static_cast<ub1>(d.second), ns,
                                   W(tz), tz.size()),
              QWZ_SUCCESS);
    // The zone hour's sign must reach the parser: the zone comes first.
    const std::string fmt = "TZH:TZM YYYY-MM-DD HH24:MI:SS.FF3";
    std::string text;
    ASSERT_EQ(datetime_to(x, fmt, text), QWZ_SUCCESS);
    ASSERT_EQ(datetime_from(text, fmt, y), QWZ_SUCCESS) << text;
    EXPECT_EQ(read(y), read(x)) << text;
  }
}

}  // namespace
