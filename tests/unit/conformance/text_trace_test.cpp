// Trace records of the four text functions: their rows, "(null)" for NULL
// texts, exit records only for calls that reached their work, the nested
// check of the datetime functions, and trace results passed through.
#include "text_conf_util.h"

#include <string>

using namespace text_conf;

namespace {

using conf::PickyTrace;
using conf::rec;
using conf::Shape;
using conf::shape;
using qwz_test::hex12;
using qwz_test::kUtc;
using qwz_test::TraceCapture;
using qwz_test::ZoneGuard;

class TextTraceConf : public TextFixture {
 protected:
  std::string date_from_record(const void *text, ub4 tl, const void *fmt, ub1 fl,
                               const void *lang, ub4 ll, const void *date) {
    return rec("QWZDateFromText",
               {{"QWZError*", hex12(err_)},
                {"const QWZtext*", text ? static_cast<const char *>(text) : "(null)"},
                {"ub4", std::to_string(tl)},
                {"const QWZtext*", fmt ? static_cast<const char *>(fmt) : "(null)"},
                {"ub1", std::to_string(fl)},
                {"const QWZtext*", lang ? static_cast<const char *>(lang) : "(null)"},
                {"ub4", std::to_string(ll)},
                {"QWZDate*", hex12(date)}});
  }
  std::string date_to_record(const void *date, const void *fmt, ub1 fl, const void *lang,
                             ub4 ll, const void *size, const char *buf) {
    return rec("QWZDateToText", {{"QWZError*", hex12(err_)},
                                 {"const QWZDate*", hex12(date)},
                                 {"const QWZtext*", fmt ? static_cast<const char *>(fmt) : "(null)"},
                                 {"ub1", std::to_string(fl)},
                                 {"const QWZtext*", lang ? static_cast<const char *>(lang) : "(null)"},
                                 {"ub4", std::to_string(ll)},
                                 {"ub4*", hex12(size)},
                                 {"QWZtext*", buf ? buf : "(null)"}});
  }
  std::string datetime_from_record(const void *h, const void *text, unsigned tl, const void *fmt,
                                   ub1 fl, const void *lang, unsigned ll, const void *dt) {
    return rec("QWZDateTimeFromText",
               {{"void*", hex12(h)},
                {"QWZError*", hex12(err_)},
                {"QWZText*", text ? static_cast<const char *>(text) : "(null)"},
                {"size_t", std::to_string(tl)},
                {"QWZText*", fmt ? static_cast<const char *>(fmt) : "(null)"},
                {"ub1", std::to_string(fl)},
                {"QWZText*", lang ? static_cast<const char *>(lang) : "(null)"},
                {"size_t", std::to_string(ll)},
                {"QWZDateTime*", hex12(dt)}});
  }
  std::string datetime_to_record(const void *h, const void *dt, const void *fmt, ub1 fl, ub1 prec,
                                 const void *lang, std::size_t ll, const void *size,
                                 const char *buf) {
    return rec("QWZDateTimeToText",
               {{"void*", hex12(h)},
                {"QWZError*", hex12(err_)},
                {"const QWZDateTime*", hex12(dt)},
                {"const QWZtext*", fmt ? static_cast<const char *>(fmt) : "(null)"},
                {"ub1", std::to_string(fl)},
                {"ub1", std::to_string(prec)},
                {"const QWZtext*", lang ? static_cast<const char *>(lang) : "(null)"},
                {"size_t", std::to_string(ll)},
                {"ub4*", hex12(size)},
                {"QWZtext*", buf ? buf : "(null)"}});
  }
  std::string check_record(const void *h, const void *dt, const void *valid) {
    return rec("QWZDateTimeCheck", {{"void*", hex12(h)},
                                    {"QWZError*", hex12(err_)},
                                    {"const QWZDateTime*", hex12(dt)},
                                    {"ub4*", hex12(valid)}});
  }
};

TEST_F(TextTraceConf, DateFromText) {
  ZoneGuard z(kUtc);
  static const char kText[] = "2024-05-17";
  static const char kFmt[] = "YYYY-MM-DD";
  static const char kLang[] = "AMERICAN";
  const auto *t = reinterpret_cast<const QWZtext *>(kText);
  const auto *f = reinterpret_cast<const QWZtext *>(kFmt);
  const auto *l = reinterpret_cast<const QWZtext *>(kLang);
  QWZDate d{};
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateFromText(err_, t, 10, f, 10, nullptr, 0, &d), QWZ_SUCCESS);
    auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{134, 1}, {134, 0}}));
    EXPECT_EQ(r[0].text, date_from_record(kText, 10, kFmt, 10, nullptr, 0, &d));
    EXPECT_EQ(r[1].text, r[0].text);
    EXPECT_EQ(r[0].status, 0);
    EXPECT_EQ(r[1].status, 0);
    EXPECT_EQ(r[0].errhp, err_);
  }
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateFromText(err_, t, 10, f, 10, l, 8, &d), QWZ_SUCCESS);
    EXPECT_EQ(tc.records()[0].text, date_from_record(kText, 10, kFmt, 10, kLang, 8, &d));
  }
  {
    // Failed checks: an entry record only, "(null)" for NULL texts.
    TraceCapture tc;
    ASSERT_EQ(QWZDateFromText(err_, nullptr, 10, nullptr, 10, nullptr, 0, &d), QWZ_ERROR);
    ASSERT_EQ(shape(tc.records()), (Shape{{134, 1}}));
    EXPECT_EQ(tc.records()[0].text, date_from_record(nullptr, 10, nullptr, 10, nullptr, 0, &d));
    ASSERT_EQ(QWZDateFromText(err_, t, 10, f, 0, nullptr, 0, &d), QWZ_ERROR);
    ASSERT_EQ(QWZDateFromText(err_, t, 0, f, 10, nullptr, 0, &d), QWZ_ERROR);
    ASSERT_EQ(QWZDateFromText(err_, t, 10, f, 10, nullptr, 0, nullptr), QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{134, 1}, {134, 1}, {134, 1}, {134, 1}}));
  }
  {
    // The work was reached: an exit record with its status, for a text that
    // does not match, a format at fault and a date that fails its check.
    TraceCapture tc;
    ASSERT_EQ(QWZDateFromText(err_, t, 10, C(std::string("YYYY-MM-DD HH")), 13, nullptr, 0, &d),
              QWZ_SUCCESS);
    ASSERT_EQ(QWZDateFromText(err_, C(std::string("x")), 1, f, 10, nullptr, 0, &d), QWZ_ERROR);
    ASSERT_EQ(QWZDateFromText(err_, t, 10, C(std::string("MON")), 3, nullptr, 0, &d), QWZ_ERROR);
    ASSERT_EQ(QWZDateFromText(err_, C(std::string("2023-02-29")), 10, f, 10, nullptr, 0, &d),
              QWZ_ERROR);
    const auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{134, 1}, {134, 0}, {134, 1}, {134, 0}, {134, 1}, {134, 0},
                               {134, 1}, {134, 0}}));
    EXPECT_EQ(r[1].status, 0);
    EXPECT_EQ(r[3].status, -1);
    EXPECT_EQ(r[5].status, -1);
    EXPECT_EQ(r[7].status, -1);
  }
}

TEST_F(TextTraceConf, DateToText) {
  static const char kFmt[] = "YYYY-MM-DD";
  const auto *f = reinterpret_cast<const QWZtext *>(kFmt);
  const QWZDate date = make_date(2024, 5, 17);
  char buf[32] = {};
  auto *b = reinterpret_cast<QWZtext *>(buf);
  ub4 size = 32;
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateToText(err_, &date, f, 10, nullptr, 0, &size, b), QWZ_SUCCESS);
    auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{138, 1}, {138, 0}}));
    // The buffer as it is on entry, and with the text on exit.
    EXPECT_EQ(r[0].text, date_to_record(&date, kFmt, 10, nullptr, 0, &size, ""));
    EXPECT_EQ(r[1].text, date_to_record(&date, kFmt, 10, nullptr, 0, &size, "2024-05-17"));
    EXPECT_EQ(r[1].status, 0);
  }
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateToText(err_, &date, nullptr, 10, nullptr, 0, &size, nullptr), QWZ_ERROR);
    const QWZDate bad = make_date(2024, 2, 30);
    ASSERT_EQ(QWZDateToText(err_, &bad, f, 10, nullptr, 0, &size, b), QWZ_ERROR);
    auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{138, 1}, {138, 1}}));
    EXPECT_EQ(r[0].text, date_to_record(&date, nullptr, 10, nullptr, 0, &size, nullptr));
  }
  {
    // Conversion failures reached the work.
    TraceCapture tc;
    ub4 small = 3;
    ASSERT_EQ(QWZDateToText(err_, &date, f, 10, nullptr, 0, &small, b), QWZ_ERROR);
    ASSERT_EQ(QWZDateToText(err_, &date, C(std::string("DY")), 2, nullptr, 0, &size, b),
              QWZ_ERROR);
    ASSERT_EQ(shape(tc.records()), (Shape{{138, 1}, {138, 0}, {138, 1}, {138, 0}}));
    EXPECT_EQ(tc.records()[1].status, -1);
    EXPECT_EQ(tc.records()[3].status, -1);
  }
}

TEST_F(TextTraceConf, DateTimeFromTextNestsTheCheck) {
  ZoneGuard z(kUtc);
  static char kText[] = "2024-05-17";
  static char kFmt[] = "YYYY-MM-DD";
  auto *t = reinterpret_cast<QWZText *>(kText);
  auto *f = reinterpret_cast<QWZText *>(kFmt);
  QWZDateTime *d = new_datetime(68);
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeFromText(session_, err_, t, 10, f, 10, nullptr, 0, d), QWZ_SUCCESS);
    auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{179, 1}, {147, 1}, {147, 0}, {179, 0}}));
    EXPECT_EQ(r[0].text, datetime_from_record(session_, kText, 10, kFmt, 10, nullptr, 0, d));
    EXPECT_EQ(r[3].text, r[0].text);
    EXPECT_EQ(r[1].text.rfind(check_record(session_, d, nullptr).substr(0, 90), 0), 0u);
    EXPECT_EQ(r[3].status, 0);
  }
  {
    // Failed checks: no exit record. The largest length prints as "%u".
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeFromText(env_, err_, t, SIZE_MAX, f, 10, nullptr, 0, d), QWZ_ERROR);
    ASSERT_EQ(QWZDateTimeFromText(env_, err_, nullptr, 10, nullptr, 10, nullptr, 0, d), QWZ_ERROR);
    ASSERT_EQ(QWZDateTimeFromText(err_, err_, t, 10, f, 10, nullptr, 0, d), QWZ_INVALID_HANDLE);
    auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{179, 1}, {179, 1}, {179, 1}}));
    EXPECT_EQ(r[0].text,
              datetime_from_record(env_, kText, 4294967295u, kFmt, 10, nullptr, 0, d));
    EXPECT_EQ(r[1].text, datetime_from_record(env_, nullptr, 10, nullptr, 10, nullptr, 0, d));
  }
  {
    // Failures of the conversion itself: an exit record, no check.
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeFromText(env_, err_, t, 10, W(std::string("MON")), 3, nullptr, 0, d),
              QWZ_ERROR);
    ASSERT_EQ(
        QWZDateTimeFromText(env_, err_, t, 10, W(std::string("YYYY-MM-DD TZH")), 14, nullptr, 0, d),
        QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{179, 1}, {179, 0}, {179, 1}, {179, 0}}));
    EXPECT_EQ(tc.records()[1].status, -1);
    EXPECT_EQ(tc.records()[3].status, -1);
  }
  {
    // An invalid value: the check's pair, then the exit record with -1.
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeFromText(env_, err_, W(std::string("2023-02-29")), 10, f, 10, nullptr, 0,
                                  d),
              QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{179, 1}, {147, 1}, {147, 0}, {179, 0}}));
    EXPECT_EQ(tc.records()[3].status, -1);
  }
}

TEST_F(TextTraceConf, DateTimeToTextNestsTheCheck) {
  ZoneGuard z(kUtc);
  static const char kFmt[] = "YYYY-MM-DD";
  const auto *f = reinterpret_cast<const QWZtext *>(kFmt);
  QWZDateTime *d = datetime_of(68, 2024, 5, 17, 0, 0, 0, 0);
  char buf[32] = {};
  auto *b = reinterpret_cast<QWZtext *>(buf);
  ub4 size = 32;
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeToText(env_, err_, d, f, 10, 3, nullptr, 0, &size, b), QWZ_SUCCESS);
    auto &r = tc.records();
    ASSERT_EQ(shape(r), (Shape{{149, 1}, {147, 1}, {147, 0}, {149, 0}}));
    EXPECT_EQ(r[0].text, datetime_to_record(env_, d, kFmt, 10, 3, nullptr, 0, &size, ""));
    EXPECT_EQ(r[3].text, datetime_to_record(env_, d, kFmt, 10, 3, nullptr, 0, &size, "2024-05-17"));
  }
  {
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeToText(env_, err_, d, f, 10, 3, nullptr, 0, &size, nullptr), QWZ_ERROR);
    ASSERT_EQ(shape(tc.records()), (Shape{{149, 1}}));
    EXPECT_EQ(tc.records()[0].text,
              datetime_to_record(env_, d, kFmt, 10, 3, nullptr, 0, &size, nullptr));
  }
  {
    // An invalid value: the check's pair and no exit record.
    QWZDateTime *inv = new_datetime(68);
    ASSERT_EQ(datetime_from("2024-02-30", "YYYY-MM-DD", inv), QWZ_ERROR);
    TraceCapture tc;
    ASSERT_EQ(QWZDateTimeToText(env_, err_, inv, f, 10, 3, nullptr, 0, &size, b), QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{149, 1}, {147, 1}, {147, 0}}));
  }
  {
    // Conversion failures, reported or silent: an exit record with -1.
    TraceCapture tc;
    ub4 small = 2;
    ASSERT_EQ(QWZDateTimeToText(env_, err_, d, f, 10, 3, nullptr, 0, &small, b), QWZ_ERROR);
    ASSERT_EQ(QWZDateTimeToText(env_, err_, d, C(std::string("T")), 1, 3, nullptr, 0, &size, b),
              QWZ_ERROR);
    EXPECT_EQ(shape(tc.records()), (Shape{{149, 1}, {147, 1}, {147, 0}, {149, 0}, {149, 1},
                                          {147, 1}, {147, 0}, {149, 0}}));
    EXPECT_EQ(tc.records()[3].status, -1);
    EXPECT_EQ(tc.records()[7].status, -1);
  }
}

// Trace results: an entry refusal is returned at once; an exit result
// replaces the status; a refusal of the nested check ends the call with it.
TEST_F(TextTraceConf, TraceResults) {
  ZoneGuard z(kUtc);
  static char kText[] = "2024-05-17";
  static char kFmt[] = "YYYY-MM-DD";
  auto *t = reinterpret_cast<QWZText *>(kText);
  auto *f = reinterpret_cast<QWZText *>(kFmt);
  QWZDateTime *d = datetime_of(68, 2000, 1, 2, 3, 4, 5, 6);
  const QWZDate date = make_date(2024, 5, 17);
  char buf[32] = {};
  ub4 size = 32;
  leave_diag();
  {
    TraceCapture tc;
    tc.set_results(7, 0);
    QWZDate out = make_date(1, 1, 1);
    EXPECT_EQ(QWZDateFromText(err_, t, 10, f, 10, nullptr, 0, &out), 7);
    EXPECT_TRUE(same(out, make_date(1, 1, 1)));
    EXPECT_EQ(QWZDateToText(err_, &date, f, 10, nullptr, 0, &size,
                            reinterpret_cast<QWZtext *>(buf)),
              7);
    EXPECT_EQ(buf[0], '\0');
    EXPECT_EQ(QWZDateTimeFromText(env_, err_, t, 10, f, 10, nullptr, 0, d), 7);
    EXPECT_EQ(QWZDateTimeToText(env_, err_, d, f, 10, 0, nullptr, 0, &size,
                                reinterpret_cast<QWZtext *>(buf)),
              7);
    EXPECT_EQ(buf[0], '\0');
    EXPECT_EQ(tc.records().size(), 4u);
  }
  expect_left_diag();
  EXPECT_EQ(read(d), (expected_read(68, {2000, 1, 2, 3, 4, 5}, 6, 0, 0)));
  {
    TraceCapture tc;
    tc.set_results(0, 9);
    QWZDate out{};
    EXPECT_EQ(QWZDateFromText(err_, t, 10, f, 10, nullptr, 0, &out), 9);
    EXPECT_TRUE(same(out, make_date(2024, 5, 17)));
    EXPECT_EQ(QWZDateToText(err_, &date, f, 10, nullptr, 0, &size,
                            reinterpret_cast<QWZtext *>(buf)),
              9);
    EXPECT_STREQ(buf, "2024-05-17");
  }
  {
    // The nested check refused on entry: its status ends the call, through
    // the exit record.
    PickyTrace pt(147, 1, 5);
    EXPECT_EQ(QWZDateTimeFromText(env_, err_, W(std::string("1999-12-31")), 10, f, 10, nullptr, 0,
                                  d),
              5);
    EXPECT_EQ(pt.got(), (Shape{{179, 1}, {147, 1}, {179, 0}}));
    EXPECT_EQ(pt.records()[2].status, 5);
    EXPECT_EQ(read(d), (expected_read(68, {1999, 12, 31, 0, 0, 0}, 0, 0, 0)));
  }
  {
    PickyTrace pt(147, 1, 5);
    std::memset(buf, 0, sizeof buf);
    EXPECT_EQ(QWZDateTimeToText(env_, err_, d, f, 10, 0, nullptr, 0, &size,
                                reinterpret_cast<QWZtext *>(buf)),
              5);
    EXPECT_EQ(pt.got(), (Shape{{149, 1}, {147, 1}, {149, 0}}));
    EXPECT_EQ(pt.records()[2].status, 5);
    EXPECT_EQ(buf[0], '\0');
  }
}

}  // namespace
