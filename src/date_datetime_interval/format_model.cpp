// The format keyword table and the translation of format texts into tokens.
#include "date_datetime_interval/format_model.h"

#include "date_datetime_interval/frame.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

// Rows: lead, keyword, pattern, spare, supported, id, width, required.
// Sixteen keywords are usable; the rest are recognised (so they are taken as
// one token rather than as literal letters) and then refused.
extern "C" constexpr qwz_keyword g_kws[QWZ_KEYWORD_COUNT] = {
    {0, "AD", "", 0, 0, 0, 0, 0},
    {0, "A.D.", "", 0, 0, 1, 0, 0},
    {0, "AM", "%p", 0, 0, 2, 0, 0},
    {0, "A.M.", "", 0, 0, 3, 0, 0},
    {0, "BC", "", 0, 0, 4, 0, 0},
    {0, "B.C.", "", 0, 0, 5, 0, 0},
    {0, "CC", "", 0, 0, 6, 0, 0},
    {0, "SCC", "", 0, 0, 7, 0, 0},
    {0, "D", "", 0, 0, 8, 0, 0},
    {0, "DAY", "", 0, 0, 9, 0, 0},
    {0, "DD", "%d", 0, 1, 10, 2, 1},
    {0, "DDD", "%j", 0, 0, 11, 0, 0},
    {0, "DL", "", 0, 0, 12, 0, 0},
    {0, "DS", "", 0, 0, 13, 0, 0},
    {0, "DY", "", 0, 0, 14, 0, 0},
    {0, "E", "", 0, 0, 15, 0, 0},
    {0, "EE", "", 0, 0, 16, 0, 0},
    {0, "FF1", "%F1", 0, 1, 17, 1, 0},
    {0, "FF2", "%F2", 0, 1, 18, 2, 0},
    {0, "FF3", "%F3", 0, 1, 19, 3, 0},
    {0, "FF4", "%F4", 0, 1, 20, 4, 0},
    {0, "FF5", "%F5", 0, 1, 21, 5, 0},
    {0, "FM", "", 0, 0, 22, 0, 0},
    {0, "FX", "", 0, 0, 23, 0, 0},
    {0, "HH", "%I", 0, 1, 24, 2, 0},
    {0, "HH12", "%I", 0, 1, 25, 2, 0},
    {0, "HH24", "%H", 0, 1, 26, 2, 0},
    {0, "IW", "", 0, 0, 27, 0, 0},
    {0, "IYY", "", 0, 0, 28, 0, 0},
    {0, "IY", "", 0, 0, 29, 0, 0},
    {0, "I", "", 0, 0, 30, 0, 0},
    {0, "IYYY", "", 0, 0, 31, 0, 0},
    {0, "J", "", 0, 0, 32, 0, 0},
    {0, "MI", "%M", 0, 1, 33, 2, 0},
    {0, "MM", "%m", 0, 1, 34, 2, 1},
    {0, "MON", "", 0, 0, 35, 0, 0},
    {0, "MONTH", "", 0, 0, 36, 0, 0},
    {0, "PM", "%p", 0, 0, 37, 0, 0},
    {0, "P.M.", "", 0, 0, 38, 0, 0},
    {0, "Q", "", 0, 0, 39, 0, 0},
    {0, "RM", "", 0, 0, 40, 0, 0},
    {0, "RR", "", 0, 0, 41, 0, 0},
    {0, "RRRR", "", 0, 0, 42, 0, 0},
    {0, "SS", "%S", 0, 1, 43, 2, 0},
    {0, "SSSSS", "", 0, 0, 44, 0, 0},
    {0, "TS", "", 0, 0, 45, 0, 0},
    {0, "TZD", "", 0, 0, 46, 0, 0},
    {0, "TZH", "", 0, 1, 47, 3, 0},
    {0, "TZM", "", 0, 1, 48, 2, 0},
    {0, "TZR", "", 0, 0, 49, 0, 0},
    {0, "WW", "", 0, 0, 50, 0, 0},
    {0, "W", "", 0, 0, 51, 0, 0},
    {0, "X", "%x", 0, 0, 52, 0, 0},
    {0, "Y,YYY", "", 0, 0, 53, 0, 0},
    {0, "YEAR", "", 0, 0, 54, 0, 0},
    {0, "SYEAR", "", 0, 0, 55, 0, 0},
    {0, "YYYY", "%Y", 0, 1, 56, 4, 1},
    {0, "SYYYY", " %Y", 0, 1, 57, 5, 0},
    {0, "YYY", "", 0, 0, 58, 0, 0},
    {0, "YY", "%y", 0, 0, 59, 0, 0},
    {0, "Y", "", 0, 0, 60, 0, 0},
};

extern "C" {
sb4 g_qwz_initilized = 0;
}

namespace {

constexpr std::size_t keyword_length(const char *k) {
  std::size_t n = 0;
  while (n < 8 && k[n] != '\0') ++n;
  return n;
}

// The table's shape, checked when the library is built: ids equal the row
// index, keywords are distinct, start with a letter and fit their column.
constexpr bool table_is_well_formed() {
  for (int i = 0; i < QWZ_KEYWORD_COUNT; ++i) {
    const qwz_keyword &r = g_kws[i];
    if (r.id != static_cast<ub4>(i) || r.lead != 0 || r.spare != 0) return false;
    const std::size_t n = keyword_length(r.keyword);
    if (n == 0 || n > 7 || r.keyword[0] < 'A' || r.keyword[0] > 'Z') return false;
    for (int j = 0; j < i; ++j) {
      bool same = true;
      for (int k = 0; k < 8; ++k)
        if (g_kws[j].keyword[k] != r.keyword[k]) same = false;
      if (same) return false;
    }
  }
  return true;
}
static_assert(table_is_well_formed());

constexpr int count_supported() {
  int n = 0;
  for (const qwz_keyword &r : g_kws) n += r.supported == 1 ? 1 : 0;
  return n;
}
static_assert(count_supported() == 16);

// Rows by the first letter of their keyword, longest keyword first, so the
// longest keyword at a position is the first candidate that matches.
struct FirstLetterIndex {
  ub1 rows[26][QWZ_KEYWORD_COUNT] = {};
  ub1 count[26] = {};
};

constexpr FirstLetterIndex build_index() {
  FirstLetterIndex ix;
  for (int i = 0; i < QWZ_KEYWORD_COUNT; ++i) {
    const int letter = g_kws[i].keyword[0] - 'A';
    const std::size_t len = keyword_length(g_kws[i].keyword);
    int at = ix.count[letter];
    while (at > 0 && keyword_length(g_kws[ix.rows[letter][at - 1]].keyword) < len) {
      ix.rows[letter][at] = ix.rows[letter][at - 1];
      --at;
    }
    ix.rows[letter][at] = static_cast<ub1>(i);
    ++ix.count[letter];
  }
  return ix;
}
constexpr FirstLetterIndex kIndex = build_index();

// The longest keyword that starts at text[0, n) read case-blind, or NULL.
const qwz_keyword *longest_keyword_at(const char *text, std::size_t n) {
  const int first = qwz_upper(static_cast<unsigned char>(text[0]));
  if (first < 'A' || first > 'Z') return nullptr;
  const int letter = first - 'A';
  for (int c = 0; c < kIndex.count[letter]; ++c) {
    const qwz_keyword &row = g_kws[kIndex.rows[letter][c]];
    std::size_t k = 1;
    for (; k < 8 && row.keyword[k] != '\0'; ++k)
      if (k >= n || qwz_upper(static_cast<unsigned char>(text[k])) != row.keyword[k]) break;
    if (k == 8 || row.keyword[k] == '\0') return &row;
  }
  return nullptr;
}

// Case style from the first two characters as the caller wrote them.
ub4 case_style(const qwz_keyword &row, const char *text, std::size_t n) {
  const char c0 = text[0];
  const char c1 = n > 1 ? text[1] : '\0';
  switch (row.id) {
    case 9:  // DAY
      return c0 == 'd' ? 1 : (c1 == 'A' ? 2 : 3);
    case 35:  // MON
    case 36:  // MONTH
      return c0 == 'm' ? 1 : (c1 == 'O' ? 2 : 3);
    default:
      return 0;
  }
}

void fill_token(qwz_token &t, const qwz_keyword *row, const char *text, std::size_t n,
                ub4 style) {
  std::memset(&t, 0, sizeof t);
  std::memcpy(t.text, text, n < sizeof t.text ? n : sizeof t.text);
  t.keyword = row;
  t.case_style = style;
}

}  // namespace

namespace qwz {

std::size_t translate_format(const char *format, std::size_t n, TokenArray &out) {
  out.count = 0;
  if (n > kMaxFormatLength) n = kMaxFormatLength;
  if (n > 0) qwz_gkwinit();
  std::size_t i = 0;
  while (i < n) {
    qwz_token &t = out.tok[out.count++];
    if (const qwz_keyword *row = longest_keyword_at(format + i, n - i)) {
      const std::size_t len = keyword_length(row->keyword);
      fill_token(t, row, format + i, len, case_style(*row, format + i, len));
      i += len;
    } else {
      fill_token(t, nullptr, format + i, 1, 0);
      i += 1;
    }
  }
  return out.count;
}

bool literal_is_valid(const qwz_token &t) {
  char text[sizeof t.text + 1] = {};
  std::memcpy(text, t.text, sizeof t.text);
  return qwz_validate_expr(text) == 1;
}

namespace {

// The field each keyword id reads and writes.
struct FieldRule {
  FieldKind kind;
  ub1 offset;
  ub1 size;
};

constexpr FieldRule field_rule(ub4 id) {
  using F = datetime_fields;
  switch (id) {
    case KW_DD: return {FieldKind::plain, offsetof(F, day), sizeof F::day};
    case KW_HH:
    case KW_HH12:
    case KW_HH24: return {FieldKind::plain, offsetof(F, hour), sizeof F::hour};  // all 24-hour
    case KW_MI: return {FieldKind::plain, offsetof(F, minute), sizeof F::minute};
    case KW_MM: return {FieldKind::plain, offsetof(F, month), sizeof F::month};
    case KW_SS: return {FieldKind::plain, offsetof(F, second), sizeof F::second};
    case KW_TZH: return {FieldKind::zone, offsetof(F, tz_hour), sizeof F::tz_hour};
    case KW_TZM: return {FieldKind::zone, offsetof(F, tz_minute), sizeof F::tz_minute};
    case KW_YYYY:
    case KW_SYYYY: return {FieldKind::year, offsetof(F, year), sizeof F::year};
    default:
      if (is_fraction_keyword(id))
        return {FieldKind::fraction, offsetof(F, fraction), sizeof F::fraction};
      return {FieldKind::ignored, 0, 0};
  }
}

struct FieldRules {
  FieldRule rule[QWZ_KEYWORD_COUNT];
};
constexpr FieldRules build_field_rules() {
  FieldRules r{};
  for (int i = 0; i < QWZ_KEYWORD_COUNT; ++i) r.rule[i] = field_rule(static_cast<ub4>(i));
  return r;
}
constexpr FieldRules kFieldRules = build_field_rules();

// Every usable keyword has a field, which holds its width (a fraction its
// digits and the trailing '0'), and keeps no more than its width.
constexpr bool rules_fit() {
  for (int i = 0; i < QWZ_KEYWORD_COUNT; ++i) {
    const FieldRule &r = kFieldRules.rule[i];
    if ((g_kws[i].supported == 1) != (r.kind != FieldKind::ignored)) return false;
    const ub4 need = g_kws[i].width + (r.kind == FieldKind::fraction ? 2u : 1u);
    if (r.kind != FieldKind::ignored && need > r.size) return false;
  }
  return true;
}
static_assert(rules_fit());

}  // namespace

FormatToken make_format_token(const qwz_keyword *row, char ch) {
  if (!row) return {FieldKind::literal, ch, 0, 0, 0, 0, 0, 0};
  const FieldRule &r = kFieldRules.rule[row->id < QWZ_KEYWORD_COUNT ? row->id : 0];
  return {r.kind,
          '\0',
          static_cast<ub1>(row->id),
          static_cast<ub1>(row->width),
          static_cast<ub1>(row->required == 1 ? 1 : 0),
          r.offset,
          r.size,
          static_cast<ub1>(row->id == KW_SS ? 1 : 0)};
}


namespace {

constexpr std::size_t kCacheEntries = 4;
struct CacheEntry {
  std::size_t length;
  bool used;
  char format[kMaxFormatLength];
  CompiledFormat compiled;
};
struct FormatCache {
  CacheEntry entry[kCacheEntries];
  std::size_t next;
  std::size_t last;
};

// Whether a[0, n) equals b[0, n): eight bytes at a time, the last word
// overlapping the one before, so no byte loop and no library call for the
// lengths formats have.
inline bool same_bytes(const char *a, const char *b, std::size_t n) {
  if (n < 8) return std::memcmp(a, b, n) == 0;
  return same_long_bytes(a, b, n);
}
// Per thread and trivially constructible, so reaching it costs no guard.
thread_local FormatCache t_cache;

}  // namespace

namespace {

// Translates and checks a format into a cache entry. Apart from the lookup
// so that the lookup itself needs no room for a token array: a large stack
// frame is probed page by page on every call, hit or miss.
[[gnu::noinline]] const CompiledFormat *compile_into(CacheEntry &e, const char *format,
                                                     std::size_t n) {
  TokenArray tokens;
  translate_format(format, n, tokens);
  CompiledFormat &c = e.compiled;
  c.count = tokens.count;
  c.fault = validate_tokens(tokens.span());
  for (std::size_t i = 0; i < tokens.count; ++i) c.tok[i] = format_token(tokens.tok[i]);
  for (ParsePlan &p : c.plan) p.valid = 0;
  for (WritePlan &w : c.write) w.state = 0;
  c.next_plan = 0;
  std::memcpy(e.format, format, n);
  e.length = n;
  e.used = true;
  return &c;
}

}  // namespace

constinit thread_local LastFormat t_last_format[2] = {{0, nullptr, nullptr}, {0, nullptr, nullptr}};

#if defined(__x86_64__)
const bool kByteShuffles = (__builtin_cpu_init(), __builtin_cpu_supports("ssse3"));
#else
const bool kByteShuffles = false;
#endif

namespace {

// Remembers the entry that answered first, for compile_format_fast, and the
// one remembered first before it second (unless it is the same). An entry
// refilled later is remembered again, with its new length, by the call that
// refills it, so no slot keeps an entry's old length.
const CompiledFormat *answer(const CacheEntry &e) {
  LastFormat *last = t_last_format;
  if (last[0].compiled != &e.compiled) last[1] = last[0];
  last[0] = {e.length, e.format, &e.compiled};
  return &e.compiled;
}

}  // namespace

const CompiledFormat *compile_format(const char *format, std::size_t n) {
  if (n == 0 || n > kMaxFormatLength) return nullptr;
  FormatCache &cache = t_cache;
  // The entry that answered last is asked first: a run of conversions
  // usually repeats one format.
  {
    CacheEntry &e = cache.entry[cache.last];
    if (e.used && e.length == n && same_bytes(e.format, format, n)) return answer(e);
  }
  for (std::size_t i = 0; i < kCacheEntries; ++i) {
    CacheEntry &e = cache.entry[i];
    if (e.used && e.length == n && same_bytes(e.format, format, n)) {
      cache.last = i;
      return answer(e);
    }
  }
  cache.last = cache.next;
  CacheEntry &e = cache.entry[cache.next];
  cache.next = (cache.next + 1) % kCacheEntries;
  const CompiledFormat *compiled = compile_into(e, format, n);
  if (compiled) answer(e);
  return compiled;
}

bool keyword_table_initialised() {
  return std::atomic_ref<sb4>(g_qwz_initilized).load(std::memory_order_acquire) == 1;
}

namespace {

// A NUL-terminated copy of at most `bound` characters of text, in a small
// per-thread ring ("(null)" for NULL).
unsigned long traced_copy(const void *text, std::size_t bound) {
  if (!text) return reinterpret_cast<unsigned long>(kNullText);
  const char *s = static_cast<const char *>(text);
  // A record has at most four text arguments and is formatted before the
  // next one is started, so eight copies per thread are never overwritten
  // while still in use.
  thread_local std::string ring[8];
  thread_local unsigned next = 0;
  std::string &copy = ring[next++ % 8];
  copy.assign(s, strnlen(s, bound));
  return reinterpret_cast<unsigned long>(copy.c_str());
}

}  // namespace

TracedText::operator unsigned long() const { return traced_copy(text_, bound_); }
TracedTextAt::operator unsigned long() const {
  return traced_copy(text_, text_ ? (bound_ ? *bound_ : 0) : 0);
}

std::size_t decimal_text(long v, int width, char *dst, std::size_t cap) {
  char digits[24];
  std::size_t nd = 0;
  // Magnitude as unsigned so the most negative long needs no negation.
  unsigned long m = v < 0 ? 0ul - static_cast<unsigned long>(v) : static_cast<unsigned long>(v);
  do {
    digits[nd++] = static_cast<char>('0' + m % 10);
    m /= 10;
  } while (m != 0);
  const bool negative = v < 0;
  std::size_t total = nd + (negative ? 1 : 0);
  const std::size_t want = width > 0 ? static_cast<std::size_t>(width) : 0;
  const std::size_t zeros = want > total ? want - total : 0;
  total += zeros;
  std::size_t w = 0;
  auto put = [&](char c) {
    if (w < cap) dst[w] = c;
    ++w;
  };
  if (negative) put('-');
  for (std::size_t z = 0; z < zeros; ++z) put('0');
  while (nd > 0) put(digits[--nd]);
  if (w < cap) dst[w] = '\0';
  return total;
}

}  // namespace qwz

extern "C" {

void qwz_gkwinit(void) {
  std::atomic_ref<sb4> flag(g_qwz_initilized);
  if (flag.load(std::memory_order_relaxed) != 1) flag.store(1, std::memory_order_release);
}

int qwz_upper(int ch) { return (ch >= 'a' && ch <= 'z') ? ch - 32 : ch; }

const qwz_keyword *qwz_gkwlook(const char *text) {
  qwz_gkwinit();
  char buf[128] = {};
  const std::size_t n = strnlen(text, sizeof buf - 1);
  for (std::size_t i = 0; i < n; ++i)
    buf[i] = static_cast<char>(qwz_upper(static_cast<unsigned char>(text[i])));
  for (const qwz_keyword &row : g_kws)
    if (std::strncmp(buf, row.keyword, sizeof buf) == 0) return &row;
  return nullptr;
}

qwz_token *qwz_add_token_list(qwz_token *head, const qwz_keyword *keyword, const char *text,
                              ub4 case_style) {
  auto *node = static_cast<qwz_token *>(std::calloc(1, sizeof(qwz_token)));
  if (!node) {
    qwz_free_token_list(head);
    return nullptr;
  }
  node->keyword = keyword;
  // A bounded copy: at most 8 characters, zero-padded (the node is cleared).
  if (text) std::memcpy(node->text, text, strnlen(text, sizeof node->text));
  node->case_style = case_style;
  if (!head) return node;
  qwz_token *tail = head;
  while (tail->next) tail = tail->next;
  tail->next = node;
  return head;
}

void qwz_free_token_list(qwz_token *head) {
  while (head) {
    qwz_token *next = head->next;
    std::free(head);
    head = next;
  }
}

qwz_token *qwz_translate_format(const char *format) {
  if (!format) return nullptr;
  const std::size_t n = strnlen(format, qwz::kMaxFormatLength + 1);
  if (n > qwz::kMaxFormatLength) return nullptr;
  qwz::TokenArray tokens;
  qwz::translate_format(format, n, tokens);
  qwz_token *head = nullptr;
  for (const qwz_token &t : tokens.span()) {
    char text[9] = {};
    std::memcpy(text, t.text, sizeof t.text);
    head = qwz_add_token_list(head, t.keyword, text, t.case_style);
    if (!head) return nullptr;
  }
  return head;
}

void qwz_trim_string(const char *source, char *destination) {
  const std::size_t n = std::strlen(source);
  if (n == 0) return;
  std::size_t b = 0, e = n;
  while (b < e && source[b] == ' ') ++b;
  while (e > b && source[e - 1] == ' ') --e;
  std::size_t len = e - b;
  if (len > qwz::kWorkBufferSize - 1) len = qwz::kWorkBufferSize - 1;
  if (len > 0) std::memcpy(destination, source + b, len);
}

int qwz_validate_expr(const char *text) {
  for (const unsigned char *p = reinterpret_cast<const unsigned char *>(text); *p; ++p)
    if ((*p >= '0' && *p <= '9') || (*p >= 'A' && *p <= 'Z') || (*p >= 'a' && *p <= 'z'))
      return 0;
  return 1;
}

}  // extern "C"
