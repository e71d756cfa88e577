// The keyword table, keyword look-up, format translation into token lists,
// the validation rules and the small text routines.
#include "support/test_support.h"

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace qwz_test;

namespace {

struct Row {
  const char *keyword;
  const char *pattern;
  ub4 supported, width, required;
};

// The table as it must stand, row by row (the id is the index).
const Row kTable[61] = {
    {"AD", "", 0, 0, 0},      {"A.D.", "", 0, 0, 0},   {"AM", "%p", 0, 0, 0},
    {"A.M.", "", 0, 0, 0},    {"BC", "", 0, 0, 0},     {"B.C.", "", 0, 0, 0},
    {"CC", "", 0, 0, 0},      {"SCC", "", 0, 0, 0},    {"D", "", 0, 0, 0},
    {"DAY", "", 0, 0, 0},     {"DD", "%d", 1, 2, 1},   {"DDD", "%j", 0, 0, 0},
    {"DL", "", 0, 0, 0},      {"DS", "", 0, 0, 0},     {"DY", "", 0, 0, 0},
    {"E", "", 0, 0, 0},       {"EE", "", 0, 0, 0},     {"FF1", "%F1", 1, 1, 0},
    {"FF2", "%F2", 1, 2, 0},  {"FF3", "%F3", 1, 3, 0}, {"FF4", "%F4", 1, 4, 0},
    {"FF5", "%F5", 1, 5, 0},  {"FM", "", 0, 0, 0},     {"FX", "", 0, 0, 0},
    {"HH", "%I", 1, 2, 0},    {"HH12", "%I", 1, 2, 0}, {"HH24", "%H", 1, 2, 0},
    {"IW", "", 0, 0, 0},      {"IYY", "", 0, 0, 0},    {"IY", "", 0, 0, 0},
    {"I", "", 0, 0, 0},       {"IYYY", "", 0, 0, 0},   {"J", "", 0, 0, 0},
    {"MI", "%M", 1, 2, 0},    {"MM", "%m", 1, 2, 1},   {"MON", "", 0, 0, 0},
    {"MONTH", "", 0, 0, 0},   {"PM", "%p", 0, 0, 0},   {"P.M.", "", 0, 0, 0},
    {"Q", "", 0, 0, 0},       {"RM", "", 0, 0, 0},     {"RR", "", 0, 0, 0},
    {"RRRR", "", 0, 0, 0},    {"SS", "%S", 1, 2, 0},   {"SSSSS", "", 0, 0, 0},
    {"TS", "", 0, 0, 0},      {"TZD", "", 0, 0, 0},    {"TZH", "", 1, 3, 0},
    {"TZM", "", 1, 2, 0},     {"TZR", "", 0, 0, 0},    {"WW", "", 0, 0, 0},
    {"W", "", 0, 0, 0},       {"X", "%x", 0, 0, 0},    {"Y,YYY", "", 0, 0, 0},
    {"YEAR", "", 0, 0, 0},    {"SYEAR", "", 0, 0, 0},  {"YYYY", "%Y", 1, 4, 1},
    {"SYYYY", " %Y", 1, 5, 0}, {"YYY", "", 0, 0, 0},   {"YY", "%y", 0, 0, 0},
    {"Y", "", 0, 0, 0},
};

// A token list as (text, keyword or "" for a literal, case style) triples.
struct Tok {
  std::string text;
  std::string keyword;
  ub4 style;
  bool operator==(const Tok &o) const {
    return text == o.text && keyword == o.keyword && style == o.style;
  }
};
std::ostream &operator<<(std::ostream &os, const Tok &t) {
  return os << "{'" << t.text << "', " << (t.keyword.empty() ? "literal" : t.keyword) << ", "
            << t.style << "}";
}

std::vector<Tok> tokens_of(const qwz_token *head) {
  std::vector<Tok> out;
  for (const qwz_token *t = head; t; t = t->next)
    out.push_back({std::string(t->text, strnlen(t->text, 8)), t->keyword ? t->keyword->keyword : "",
                   t->case_style});
  return out;
}

std::vector<Tok> translate(const std::string &format) {
  qwz_token *head = qwz_translate_format(format.c_str());
  std::vector<Tok> out = tokens_of(head);
  qwz_free_token_list(head);
  return out;
}

Tok K(const char *text, const char *kw, ub4 style = 0) { return {text, kw, style}; }
Tok L(const char *text) { return {text, "", 0}; }

// Must stay the first test of this file: the flag is 0 until the first
// look-up of the process.
TEST(GKwInit, FlagStartsAtZeroAndTurnsToOneOnce) {
  EXPECT_EQ(g_qwz_initilized, 0);
  EXPECT_FALSE(qwz::keyword_table_initialised());
  qwz_gkwinit();
  EXPECT_EQ(g_qwz_initilized, 1);
  qwz_gkwinit();
  EXPECT_EQ(g_qwz_initilized, 1);
  EXPECT_TRUE(qwz::keyword_table_initialised());
}

TEST(GKwInit, LookupAndTranslationSetTheFlag) {
  // Whatever ran before, after a look-up the flag is 1 and the ids are the
  // row numbers.
  EXPECT_NE(qwz_gkwlook("DD"), nullptr);
  EXPECT_EQ(g_qwz_initilized, 1);
  for (int i = 0; i < 61; ++i) EXPECT_EQ(g_kws[i].id, static_cast<ub4>(i));
}

TEST(GKws, AllSixtyOneRowsAsTabled) {
  for (int i = 0; i < 61; ++i) {
    SCOPED_TRACE(i);
    const qwz_keyword &r = g_kws[i];
    EXPECT_EQ(r.lead, 0);
    EXPECT_EQ(r.spare, 0);
    EXPECT_STREQ(r.keyword, kTable[i].keyword);
    EXPECT_STREQ(r.pattern, kTable[i].pattern);
    EXPECT_EQ(r.supported, kTable[i].supported);
    EXPECT_EQ(r.id, static_cast<ub4>(i));
    EXPECT_EQ(r.width, kTable[i].width);
    EXPECT_EQ(r.required, kTable[i].required);
  }
  EXPECT_EQ(sizeof g_kws / sizeof g_kws[0], 61u);
  EXPECT_EQ(sizeof(qwz_token), 32u);
  EXPECT_EQ(sizeof(g_kws[0].keyword), 8u);
}

TEST(GKws, ExactlySixteenSupportedKeywords) {
  std::vector<std::string> supported;
  for (const qwz_keyword &r : g_kws)
    if (r.supported) supported.push_back(r.keyword);
  const std::vector<std::string> expected = {"DD",   "FF1", "FF2", "FF3", "FF4", "FF5",
                                             "HH",   "HH12", "HH24", "MI", "MM", "SS",
                                             "TZH",  "TZM", "YYYY", "SYYYY"};
  EXPECT_EQ(supported, expected);
  // Patterns carried by unsupported rows stay unsupported.
  for (const char *k : {"AM", "PM", "DDD", "X", "YY"}) {
    const qwz_keyword *r = qwz_gkwlook(k);
    ASSERT_NE(r, nullptr);
    EXPECT_NE(r->pattern[0], '\0') << k;
    EXPECT_EQ(r->supported, 0u) << k;
  }
}

TEST(QwzUpper, OnlyAsciiLowerCaseLettersChange) {
  for (int c = -128; c < 256; ++c) {
    const int expected = (c >= 'a' && c <= 'z') ? c - 32 : c;
    EXPECT_EQ(qwz_upper(c), expected) << c;
  }
}

TEST(QwzGKwLook, EveryKeywordInAnyCase) {
  for (int i = 0; i < 61; ++i) {
    std::string upper = kTable[i].keyword, lower = upper, mixed = upper;
    for (char &c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (std::size_t k = 1; k < mixed.size(); k += 2)
      mixed[k] = static_cast<char>(std::tolower(static_cast<unsigned char>(mixed[k])));
    for (const std::string &s : {upper, lower, mixed}) EXPECT_EQ(qwz_gkwlook(s.c_str()), &g_kws[i]) << s;
  }
}

TEST(QwzGKwLook, NonKeywordsFindNothing) {
  for (const char *s : {"", "Q1", "DDDD", "HH2", "HH24 ", " DD", "YYYYY", "FF", "FF6", "TZ",
                        "A.D", "Y,YY", "SSSS", "\xc4\x90"}) {
    EXPECT_EQ(qwz_gkwlook(s), nullptr) << s;
  }
  // A text longer than any look-up buffer is compared on its first 127 characters.
  const std::string long_text(300, 'D');
  EXPECT_EQ(qwz_gkwlook(long_text.c_str()), nullptr);
}

struct TranslateCase {
  const char *format;
  std::vector<Tok> tokens;
};

TEST(QwzTranslateFormat, ExampleFormats) {
  const TranslateCase cases[] = {
      {"yyyy-mm-dd", {K("yyyy", "YYYY"), L("-"), K("mm", "MM"), L("-"), K("dd", "DD")}},
      {"HH24:MI", {K("HH24", "HH24"), L(":"), K("MI", "MI")}},
      {"YYYYMMDD", {K("YYYY", "YYYY"), K("MM", "MM"), K("DD", "DD")}},
      {"Month", {K("Month", "MONTH", 3)}},
      {"MONTH", {K("MONTH", "MONTH", 2)}},
      {"month", {K("month", "MONTH", 1)}},
      {"Mon", {K("Mon", "MON", 3)}},
      {"MON", {K("MON", "MON", 2)}},
      {"mON", {K("mON", "MON", 1)}},
      {"MoN", {K("MoN", "MON", 3)}},
      {"Day", {K("Day", "DAY", 3)}},
      {"DAY", {K("DAY", "DAY", 2)}},
      {"day", {K("day", "DAY", 1)}},
      {"DaY", {K("DaY", "DAY", 3)}},
      {"DD/MM/YYYY T",
       {K("DD", "DD"), L("/"), K("MM", "MM"), L("/"), K("YYYY", "YYYY"), L(" "), K("T", "")}},
      {"SSSSS", {K("SSSSS", "SSSSS")}},
      {"SSSS", {K("SS", "SS"), K("SS", "SS")}},
      {"DDD", {K("DDD", "DDD")}},
      {"DDDD", {K("DDD", "DDD"), K("D", "D")}},
      {"YYYYY", {K("YYYY", "YYYY"), K("Y", "Y")}},
      {"SYYYY", {K("SYYYY", "SYYYY")}},
      {"YYY", {K("YYY", "YYY")}},
      {"HH12HH", {K("HH12", "HH12"), K("HH", "HH")}},
      {"HH2", {K("HH", "HH"), L("2")}},
      {"a.m.", {K("a.m.", "A.M.")}},
      {"y,yyy", {K("y,yyy", "Y,YYY")}},
      {"ff3.FF5", {K("ff3", "FF3"), L("."), K("FF5", "FF5")}},
      {"tzh:tzm", {K("tzh", "TZH"), L(":"), K("tzm", "TZM")}},
      {" DD ", {L(" "), K("DD", "DD"), L(" ")}},
      {"1", {L("1")}},
      {"\"x\"", {L("\""), K("x", "X"), L("\"")}},
  };
  for (const TranslateCase &c : cases) {
    std::vector<Tok> expected = c.tokens;
    // A literal letter is written as a literal token (K with no keyword).
    for (Tok &t : expected)
      if (t.keyword.empty()) t.style = 0;
    EXPECT_EQ(translate(c.format), expected) << c.format;
  }
}

TEST(QwzTranslateFormat, EveryKeywordAloneAfterAPrefixAndBeforeASuffix) {
  for (int i = 0; i < 61; ++i) {
    const std::string kw = kTable[i].keyword;
    EXPECT_EQ(translate(kw), std::vector<Tok>{K(kw.c_str(), kw.c_str(), i == 9 || i == 35 || i == 36 ? 2 : 0)})
        << kw;
    std::vector<Tok> got = translate("/" + kw);
    ASSERT_EQ(got.size(), 2u) << kw;
    EXPECT_EQ(got[0], L("/"));
    EXPECT_EQ(got[1].keyword, kw);
    got = translate(kw + "/");
    ASSERT_EQ(got.size(), 2u) << kw;
    EXPECT_EQ(got[0].keyword, kw);
    EXPECT_EQ(got[1], L("/"));
  }
}

TEST(QwzTranslateFormat, LengthLimitAndNothingToTranslate) {
  const std::string ok = "YYYY" + std::string(123, '-');
  const std::string too_long = ok + "-";
  ASSERT_EQ(ok.size(), 127u);
  const std::vector<Tok> got = translate(ok);
  ASSERT_EQ(got.size(), 124u);
  EXPECT_EQ(got[0], K("YYYY", "YYYY"));
  EXPECT_EQ(got[123], L("-"));
  EXPECT_EQ(qwz_translate_format(too_long.c_str()), nullptr);
  EXPECT_EQ(qwz_translate_format(std::string(4096, 'D').c_str()), nullptr);
  EXPECT_EQ(qwz_translate_format(nullptr), nullptr);
  EXPECT_EQ(qwz_translate_format(""), nullptr);
}

TEST(QwzAddTokenList, AppendsAtTheTailAndCopiesEightCharacters) {
  qwz_token *head = qwz_add_token_list(nullptr, &g_kws[10], "dd", 0);
  ASSERT_NE(head, nullptr);
  EXPECT_EQ(qwz_add_token_list(head, nullptr, "-", 0), head);
  EXPECT_EQ(qwz_add_token_list(head, &g_kws[36], "Month", 3), head);
  EXPECT_EQ(qwz_add_token_list(head, nullptr, "ABCDEFGHIJ", 1), head);
  const std::vector<Tok> got = tokens_of(head);
  const std::vector<Tok> expected = {K("dd", "DD"), L("-"), K("Month", "MONTH", 3),
                                     {"ABCDEFGH", "", 1}};
  EXPECT_EQ(got, expected);
  // The eighth character fills the field: no terminator inside it.
  EXPECT_EQ(std::memcmp(head->next->next->next->text, "ABCDEFGH", 8), 0);
  qwz_free_token_list(head);
  qwz_free_token_list(nullptr);
}

std::string validate(const std::string &format) {
  qwz_token *head = qwz_translate_format(format.c_str());
  if (!head) return "untranslated";
  const qwz::FormatFault f = qwz::validate_tokens(qwz::TokenList(head));
  qwz_free_token_list(head);
  switch (f) {
    case qwz::FormatFault::none: return "ok";
    case qwz::FormatFault::literal: return "literal";
    case qwz::FormatFault::unsupported: return "unsupported";
    case qwz::FormatFault::duplicate: return "duplicate";
  }
  return "?";
}

TEST(ValidateTokens, ThreeRulesInListOrder) {
  const std::pair<const char *, const char *> cases[] = {
      {"YYYY-MM-DD HH24:MI:SS.FF3", "ok"},
      {"SYYYY/MM/DD HH12.MI.SS,FF5 TZH:TZM", "ok"},
      {"DD/MM/YYYY T", "literal"},
      {"YYYY-MM-DD1", "literal"},
      {"DD-MON-YYYY", "unsupported"},
      {"Month", "unsupported"},
      {"FF3 FF5", "duplicate"},
      {"FF1FF1", "duplicate"},
      {"DD DD", "duplicate"},
      {"HH HH24", "ok"},
      {"HH HH12 HH24", "ok"},
      {"SS SSSSS", "unsupported"},
      // The first fault in list order decides.
      {"DD DD MON", "duplicate"},
      {"MON DD DD", "unsupported"},
      {"T DD DD", "literal"},
      {"DD DD T", "duplicate"},
      {"FF3 DY FF5", "duplicate"},  // FF3 already counts FF5 as its second
      {"DY FF3 FF5", "unsupported"},
  };
  for (const auto &[format, verdict] : cases) EXPECT_EQ(validate(format), verdict) << format;
}

TEST(ValidateTokens, EveryPunctuationCharacterIsAValidLiteral) {
  for (int c = 1; c < 256; ++c) {
    const std::string format = std::string("DD") + static_cast<char>(c) + "MM";
    const bool alnum = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    const std::string v = validate(format);
    if (alnum) {
      EXPECT_NE(v, "ok") << c;
    } else {
      EXPECT_EQ(v, "ok") << c;
    }
  }
}

TEST(QwzTrimString, BlanksOnlyAndNoTerminator) {
  struct Case {
    const char *source;
    const char *written;
  } cases[] = {
      {"  AB  ", "AB"}, {"    ", ""}, {"", ""}, {"AB", "AB"}, {" A B ", "A B"},
      {"\tAB\t", "\tAB\t"}, {" \t ", "\t"},
  };
  for (const Case &c : cases) {
    char dst[256];
    std::memset(dst, 'x', sizeof dst);
    qwz_trim_string(c.source, dst);
    const std::size_t n = std::strlen(c.written);
    EXPECT_EQ(std::string(dst, n), c.written) << c.source;
    EXPECT_EQ(dst[n], 'x') << c.source;  // no terminator
  }
  // Destinations are 256 bytes: at most 255 characters are copied.
  const std::string big(1000, 'Z');
  char dst[257];
  std::memset(dst, 0, sizeof dst);
  qwz_trim_string(big.c_str(), dst);
  EXPECT_EQ(std::strlen(dst), 255u);
}

TEST(QwzValidateExpr, LettersAndDigitsOnlyAreRefused) {
  EXPECT_EQ(qwz_validate_expr(""), 1);
  EXPECT_EQ(qwz_validate_expr(" -/:.,"), 1);
  EXPECT_EQ(qwz_validate_expr("-a"), 0);
  EXPECT_EQ(qwz_validate_expr("\xff\x80"), 1);
  for (int c = 1; c < 256; ++c) {
    const char s[2] = {static_cast<char>(c), 0};
    const bool alnum = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    EXPECT_EQ(qwz_validate_expr(s), alnum ? 0 : 1) << c;
  }
}

TEST(QwzTranslateFormat, ConcurrentCallersShareTheTable) {
  std::atomic<int> mismatches{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) {
        qwz_token *head = qwz_translate_format("yyyy-MM-dd hh24:mi:ss.ff3 TZH:TZM");
        int n = 0;
        for (qwz_token *p = head; p; p = p->next) ++n;
        if (n != 17 || head->keyword != &g_kws[56]) ++mismatches;
        qwz_free_token_list(head);
        if (qwz_gkwlook("syyyy") != &g_kws[57]) ++mismatches;
      }
    });
  for (std::thread &th : threads) th.join();
  EXPECT_EQ(mismatches.load(), 0);
  EXPECT_EQ(g_qwz_initilized, 1);
}

}  // namespace
