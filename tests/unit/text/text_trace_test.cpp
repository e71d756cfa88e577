// Trace records of the four text functions: entry and exit rows, "(null)"
// for NULL texts, bounded copies of texts without a NUL, the nested
// QWZDateTimeCheck pair, and trace results passed through.
#include "text_test_util.h"

#include <string>
#include <utility>
#include <vector>

using namespace qwz_test;
using namespace text_test;

namespace {

using Lines = std::vector<std::pair<std::string, std::string>>;

std::string row(const std::string &name, const Lines &lines) {
  std::string s = "<" + name + ">";
  for (const auto &[type, value] : lines) s += "\n\t" + type + "     \t" + value;
  return s;
}

class TextTrace : public HandleFixture {
 protected:
  void expect_record(std::size_t i, ub4 api, ub4 direction, sword status, const std::string &text) {
    auto &r = trace_.records();
    ASSERT_GT(r.size(), i);
    EXPECT_EQ(r[i].api_id, api) << i;
    EXPECT_EQ(r[i].direction, direction) << i;
    EXPECT_EQ(r[i].status, status) << i;
    EXPECT_EQ(r[i].text, text) << i;
    EXPECT_EQ(r[i].errhp, static_cast<void *>(err_)) << i;
  }
  std::string date_from_text_row(const std::string &text, ub4 tlen, const std::string &fmt, ub1 flen,
                                 const std::string &lang, ub4 llen, const void *date) {
    return row("QWZDateFromText", {{"QWZError*", hex12(err_)},
                                   {"const QWZtext*", text},
                                   {"ub4", std::to_string(tlen)},
                                   {"const QWZtext*", fmt},
                                   {"ub1", std::to_string(flen)},
                                   {"const QWZtext*", lang},
                                   {"ub4", std::to_string(llen)},
                                   {"QWZDate*", hex12(date)}});
  }
  ZoneGuard zone_{kUtc};
  TraceCapture trace_;
};

TEST_F(TextTrace, DateFromTextEntryAndExit) {
  QWZDate d{};
  ASSERT_EQ(QWZDateFromText(err_, U("2024-05-17"), 10, U("YYYY-MM-DD"), 10, U("AMERICAN"), 8, &d), 0);
  ASSERT_EQ(trace_.records().size(), 2u);
  const std::string r = date_from_text_row("2024-05-17", 10, "YYYY-MM-DD", 10, "AMERICAN", 8, &d);
  expect_record(0, 134, 1, 0, r);
  expect_record(1, 134, 0, 0, r);
}

TEST_F(TextTrace, DateFromTextNullTextsAndRefusedChecks) {
  QWZDate d{};
  // A refused check writes no exit record; NULL texts print "(null)".
  EXPECT_EQ(QWZDateFromText(err_, nullptr, 10, nullptr, 10, nullptr, 8, &d), -1);
  ASSERT_EQ(trace_.records().size(), 1u);
  expect_record(0, 134, 1, 0, date_from_text_row("(null)", 10, "(null)", 10, "(null)", 8, &d));
  trace_.records().clear();
  // A failure after the work is done is traced on exit with its status.
  EXPECT_EQ(QWZDateFromText(err_, U("2024-02-30"), 10, U("YYYY-MM-DD"), 10, nullptr, 0, &d), -1);
  ASSERT_EQ(trace_.records().size(), 2u);
  expect_record(1, 134, 0, -1,
                date_from_text_row("2024-02-30", 10, "YYYY-MM-DD", 10, "(null)", 0, &d));
  trace_.records().clear();
  EXPECT_EQ(QWZDateFromText(err_, U("2024-05"), 7, U("YYYY-MM-DD"), 10, nullptr, 0, &d), -1);
  ASSERT_EQ(trace_.records().size(), 2u);
  EXPECT_EQ(trace_.records()[1].status, -1);
  expect_clear();
}

TEST_F(TextTrace, TextsAreCopiedUpToTheirGivenLengthOnly) {
  // Heap copies: the text and the format end with their NUL (the call reads
  // them up to it); the language, only traced, has none, so reading one
  // byte more would be caught by the address sanitizer.
  std::vector<QWZtext> text(U("2024-05-17"), U("2024-05-17") + 11);
  std::vector<QWZtext> fmt(U("YYYY-MM-DD"), U("YYYY-MM-DD") + 11);
  std::vector<QWZtext> lang(U("FRENCH"), U("FRENCH") + 6);
  QWZDate d{};
  ASSERT_EQ(QWZDateFromText(err_, text.data(), 10, fmt.data(), 10, lang.data(), 6, &d), 0);
  const std::string r = date_from_text_row("2024-05-17", 10, "YYYY-MM-DD", 10, "FRENCH", 6, &d);
  expect_record(0, 134, 1, 0, r);
  expect_record(1, 134, 0, 0, r);
  trace_.records().clear();
  // Shorter lengths show less; a length past the NUL stops at the NUL.
  ASSERT_EQ(QWZDateFromText(err_, text.data(), 7, U("YYYY-MM"), 200, lang.data(), 2, &d), 0);
  expect_record(0, 134, 1, 0, date_from_text_row("2024-05", 7, "YYYY-MM", 200, "FR", 2, &d));
}

TEST_F(TextTrace, TraceResultsArePassedThrough) {
  QWZDate d{1, 2, 3, 4, 5, 6};
  trace_.set_results(7, 0);
  EXPECT_EQ(QWZDateFromText(err_, U("2024-05-17"), 10, U("YYYY-MM-DD"), 10, nullptr, 0, &d), 7);
  EXPECT_EQ(d, (QWZDate{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(trace_.records().size(), 1u);
  // Not even the error handle is looked at.
  EXPECT_EQ(QWZDateFromText(nullptr, nullptr, 0, nullptr, 0, nullptr, 0, nullptr), 7);
  trace_.set_results(0, 9);
  trace_.records().clear();
  EXPECT_EQ(QWZDateFromText(err_, U("2024-05-17"), 10, U("YYYY-MM-DD"), 10, nullptr, 0, &d), 9);
  EXPECT_EQ(d, (QWZDate{2024, 5, 17, 0, 0, 0}));
  EXPECT_EQ(trace_.records().size(), 2u);
  ub4 size = 63;
  QWZtext buf[64] = {};
  EXPECT_EQ(QWZDateToText(err_, &d, U("YYYY"), 4, nullptr, 0, &size, buf), 9);
  EXPECT_STREQ(reinterpret_cast<char *>(buf), "2024");
}

std::string date_to_text_row(QWZError *err, const void *date, const std::string &fmt, ub1 flen,
                             const std::string &lang, ub4 llen, const void *size,
                             const std::string &buf) {
  return row("QWZDateToText", {{"QWZError*", hex12(err)},
                               {"const QWZDate*", hex12(date)},
                               {"const QWZtext*", fmt},
                               {"ub1", std::to_string(flen)},
                               {"const QWZtext*", lang},
                               {"ub4", std::to_string(llen)},
                               {"ub4*", hex12(size)},
                               {"QWZtext*", buf}});
}

TEST_F(TextTrace, DateToTextShowsTheBufferBeforeAndAfter) {
  const QWZDate d{2024, 5, 17, 10, 20, 30};
  ub4 size = 12;
  QWZtext buf[12];
  std::memset(buf, '#', sizeof buf);  // no NUL within the stated capacity
  ASSERT_EQ(QWZDateToText(err_, &d, U("DD.MM.YYYY"), 10, U("en"), 2, &size, buf), 0);
  ASSERT_EQ(trace_.records().size(), 2u);
  expect_record(0, 138, 1, 0,
                date_to_text_row(err_, &d, "DD.MM.YYYY", 10, "en", 2, &size, "############"));
  expect_record(1, 138, 0, 0,
                date_to_text_row(err_, &d, "DD.MM.YYYY", 10, "en", 2, &size, "17.05.2024"));
  trace_.records().clear();
  // NULL pointers: "(null)" for the texts and the buffer, the size pointer as is.
  EXPECT_EQ(QWZDateToText(err_, &d, U("YYYY"), 4, nullptr, 0, nullptr, nullptr), -1);
  ASSERT_EQ(trace_.records().size(), 1u);
  expect_record(0, 138, 1, 0,
                date_to_text_row(err_, &d, "YYYY", 4, "(null)", 0, nullptr, "(null)"));
  trace_.records().clear();
  // A failed conversion reached the work: exit record with -1.
  EXPECT_EQ(QWZDateToText(err_, &d, U("YYYY-MM-DD HH24:MI:SS"), 21, nullptr, 0, &size, buf), -1);
  ASSERT_EQ(trace_.records().size(), 2u);
  EXPECT_EQ(trace_.records()[1].status, -1);
  expect_diag(11104, "01877", kBufTooSmall);
  trace_.records().clear();
  // An invalid date is a refused check: entry only.
  const QWZDate bad{2024, 2, 30, 0, 0, 0};
  EXPECT_EQ(QWZDateToText(err_, &bad, U("YYYY"), 4, nullptr, 0, &size, buf), -1);
  EXPECT_EQ(trace_.records().size(), 1u);
}

std::string datetime_from_text_row(void *hndl, QWZError *err, const std::string &text,
                                   const std::string &tlen, const std::string &fmt, ub1 flen,
                                   const std::string &lang, const std::string &llen,
                                   const void *dt) {
  return row("QWZDateTimeFromText", {{"void*", hex12(hndl)},
                                     {"QWZError*", hex12(err)},
                                     {"QWZText*", text},
                                     {"size_t", tlen},
                                     {"QWZText*", fmt},
                                     {"ub1", std::to_string(flen)},
                                     {"QWZText*", lang},
                                     {"size_t", llen},
                                     {"QWZDateTime*", hex12(dt)}});
}

std::string check_row(void *hndl, QWZError *err, const void *dt, const void *valid) {
  return row("QWZDateTimeCheck", {{"void*", hex12(hndl)},
                                  {"QWZError*", hex12(err)},
                                  {"const QWZDateTime*", hex12(dt)},
                                  {"ub4*", hex12(valid)}});
}

TEST_F(TextTrace, DateTimeFromTextNestsTheCheck) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  ASSERT_EQ(QWZDateTimeFromText(env_, err_, M("2024-05-17"), 10, M("YYYY-MM-DD"), 10, M("GERMAN"),
                                6, dt),
            0);
  auto &r = trace_.records();
  ASSERT_EQ(r.size(), 4u);
  const std::string outer =
      datetime_from_text_row(env_, err_, "2024-05-17", "10", "YYYY-MM-DD", 10, "GERMAN", "6", dt);
  expect_record(0, 179, 1, 0, outer);
  EXPECT_EQ(r[1].api_id, 147u);
  EXPECT_EQ(r[1].direction, 1u);
  EXPECT_EQ(r[2].api_id, 147u);
  EXPECT_EQ(r[2].direction, 0u);
  EXPECT_EQ(r[1].text, r[2].text);
  // The check's flags live in the caller's frame; only their address varies.
  const std::string check = check_row(env_, err_, dt, nullptr);
  const std::string prefix = check.substr(0, check.size() - hex12(nullptr).size());
  EXPECT_EQ(r[1].text.size(), check.size());
  EXPECT_EQ(r[1].text.substr(0, prefix.size()), prefix);
  expect_record(3, 179, 0, 0, outer);
}

TEST_F(TextTrace, DateTimeFromTextRefusalsAndTheLengthAsUnsigned) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  // SIZE_MAX prints through "%u".
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, M("2024-05-17"), SIZE_MAX, M("YYYY-MM-DD"), 10,
                                nullptr, SIZE_MAX, dt),
            -1);
  ASSERT_EQ(trace_.records().size(), 1u);
  expect_record(0, 179, 1, 0,
                datetime_from_text_row(env_, err_, "2024-05-17", "4294967295", "YYYY-MM-DD", 10,
                                       "(null)", "4294967295", dt));
  trace_.records().clear();
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, nullptr, 10, nullptr, 10, nullptr, 0, dt), -1);
  ASSERT_EQ(trace_.records().size(), 1u);
  expect_record(0, 179, 1, 0,
                datetime_from_text_row(env_, err_, "(null)", "10", "(null)", 10, "(null)", "0", dt));
  trace_.records().clear();
  // A zone for a type without one: reached the work, no nested check.
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, M("+01:00"), 6, M("TZH:TZM"), 7, nullptr, 0, dt), -1);
  ASSERT_EQ(trace_.records().size(), 2u);
  EXPECT_EQ(trace_.records()[1].api_id, 179u);
  EXPECT_EQ(trace_.records()[1].status, -1);
  trace_.records().clear();
  // An invalid result: the nested pair, then the exit with -1.
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, M("2024-02-30"), 10, M("YYYY-MM-DD"), 10, nullptr, 0,
                                dt),
            -1);
  ASSERT_EQ(trace_.records().size(), 4u);
  EXPECT_EQ(trace_.records()[3].status, -1);
  expect_diag(22007, "22007", kDateTimeInvalid);
}

std::string datetime_to_text_row(void *hndl, QWZError *err, const void *dt, const std::string &fmt,
                                 ub1 flen, ub1 prec, const std::string &lang, std::size_t llen,
                                 const void *size, const std::string &buf) {
  return row("QWZDateTimeToText", {{"void*", hex12(hndl)},
                                   {"QWZError*", hex12(err)},
                                   {"const QWZDateTime*", hex12(dt)},
                                   {"const QWZtext*", fmt},
                                   {"ub1", std::to_string(flen)},
                                   {"ub1", std::to_string(prec)},
                                   {"const QWZtext*", lang},
                                   {"size_t", std::to_string(llen)},
                                   {"ub4*", hex12(size)},
                                   {"QWZtext*", buf}});
}

TEST_F(TextTrace, DateTimeToTextNestsTheCheck) {
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP_TZ);
  qwz::set_datetime_date(dt, QWZDate{2024, 5, 17, 10, 20, 30});
  dt->tz_hour = -5;
  dt->tz_minute = -30;
  ub4 size = 6;
  QWZtext buf[8];
  std::memset(buf, '*', sizeof buf);
  ASSERT_EQ(QWZDateTimeToText(session_, err_, dt, U("TZH:TZM"), 7, 3, U("de"), 2, &size, buf), 0);
  auto &r = trace_.records();
  ASSERT_EQ(r.size(), 4u);
  expect_record(0, 149, 1, 0,
                datetime_to_text_row(session_, err_, dt, "TZH:TZM", 7, 3, "de", 2, &size, "******"));
  EXPECT_EQ(r[1].api_id, 147u);
  EXPECT_EQ(r[2].api_id, 147u);
  // Capacity 6 for "-05:30": accepted, the terminator one byte past it.
  expect_record(3, 149, 0, 0,
                datetime_to_text_row(session_, err_, dt, "TZH:TZM", 7, 3, "de", 2, &size, "-05:30"));
  EXPECT_EQ(buf[6], '\0');
  EXPECT_EQ(buf[7], '*');
  trace_.records().clear();
  // A literal letter fails silently, through the exit record.
  EXPECT_EQ(QWZDateTimeToText(session_, err_, dt, U("T"), 1, 0, nullptr, 0, &size, buf), -1);
  ASSERT_EQ(r.size(), 4u);
  EXPECT_EQ(r[3].status, -1);
  expect_clear();
  trace_.records().clear();
  // An invalid value is a refused check: no exit record of its own.
  dt->tz_hour = 15;
  EXPECT_EQ(QWZDateTimeToText(session_, err_, dt, U("TZH"), 3, 0, nullptr, 0, &size, buf), -1);
  ASSERT_EQ(r.size(), 3u);
  EXPECT_EQ(r[2].api_id, 147u);
  expect_diag(22007, "22007", kDateTimeInvalid);
}

// A hook that refuses only the nested check's entry.
sword g_refuse_check = 0;
std::vector<std::pair<ub4, sword>> g_seen;
sword refuse_check_hook(void *, sword status, ub4 direction, ub4 api_id, const char *) {
  g_seen.emplace_back(api_id * 10 + direction, status);
  return (api_id == 147 && direction == 1) ? g_refuse_check : 0;
}

TEST_F(TextTrace, ARefusedNestedCheckEndsTheCallThroughItsExit) {
  QWZTraceSetHook(refuse_check_hook);
  g_refuse_check = 5;
  g_seen.clear();
  QWZDateTime *dt = new_datetime(DATETIME_KIND_TIMESTAMP);
  qwz::set_datetime_date(dt, QWZDate{2024, 5, 17, 10, 20, 30});
  ub4 size = 63;
  QWZtext buf[64] = {};
  EXPECT_EQ(QWZDateTimeToText(env_, err_, dt, U("YYYY"), 4, 0, nullptr, 0, &size, buf), 5);
  EXPECT_EQ(buf[0], 0);
  EXPECT_EQ(g_seen, (std::vector<std::pair<ub4, sword>>{{1491, 0}, {1471, 0}, {1490, 5}}));
  g_seen.clear();
  EXPECT_EQ(QWZDateTimeFromText(env_, err_, M("2023-01-02"), 10, M("YYYY-MM-DD"), 10, nullptr, 0,
                                dt),
            5);
  EXPECT_EQ(dt->year, 2023);
  EXPECT_EQ(g_seen, (std::vector<std::pair<ub4, sword>>{{1791, 0}, {1471, 0}, {1790, 5}}));
  g_refuse_check = 0;
}

TEST_F(TextTrace, TracingOffCallsNoHook) {
  qwz_trace_flag = 0;
  QWZDate d{};
  ASSERT_EQ(QWZDateFromText(err_, U("2024-05-17"), 10, U("YYYY-MM-DD"), 10, nullptr, 0, &d), 0);
  EXPECT_TRUE(trace_.records().empty());
}

}  // namespace
