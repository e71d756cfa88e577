// Format models: the 61-keyword table, translation of a format text into
// tokens (keywords and one-character literals), the three rules every token
// sequence must pass, and the small text routines both text directions share.
//
// Two shapes of token sequence exist. The linked token list of
// qwz_translate_format is the routine other units call; the text conversions
// themselves translate into a TokenArray on the stack, which needs no heap
// and gives the same tokens in the same order.
#ifndef QWZ_DDI_FORMAT_MODEL_H
#define QWZ_DDI_FORMAT_MODEL_H

#include "handles/handles.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <span>
#include <string>

extern "C" {

// One row of g_kws.
struct qwz_keyword {
  sb4 lead;          // zero; read nowhere
  char keyword[8];   // upper case, compared exactly
  char pattern[4];   // carried along, read by no conversion
  sb4 spare;         // zero; read nowhere
  ub4 supported;     // 1: the text conversions accept it
  ub4 id;            // the row's own index
  ub4 width;         // digits collected / exact digits for fractions and years
  ub4 required;      // 1: parsing must find at least one character
};

// One token of a translated format (32 bytes).
struct qwz_token {
  char text[8];                   // the format text that made it, zero-padded
  const qwz_keyword *keyword;     // NULL for a literal
  qwz_token *next;                // list order = order in the format
  ub4 case_style;                 // 0; for DAY/MON/MONTH 1 lower, 2 upper, 3 capitalised
};

inline constexpr int QWZ_KEYWORD_COUNT = 61;

// Read-only; ids equal the row index and are part of the constant data.
QWZ_INTERNAL extern const qwz_keyword g_kws[QWZ_KEYWORD_COUNT];
// 0 at load, 1 once qwz_gkwinit has run. Written and read atomically
// (std::atomic_ref); see qwz_keyword_table_initialised().
QWZ_INTERNAL extern sb4 g_qwz_initilized;

// Marks the table initialised. Idempotent and safe from any thread; the ids
// need no writing because they are fixed when the library is built.
QWZ_INTERNAL void qwz_gkwinit(void);
// The row whose keyword equals `text` upper-cased (first 127 characters), or
// NULL. Runs qwz_gkwinit first.
QWZ_INTERNAL const qwz_keyword *qwz_gkwlook(const char *text);
// 'a'..'z' to upper case; any other value unchanged.
QWZ_INTERNAL int qwz_upper(int ch);
// Appends a token (text copied, at most 8 characters) and returns the head
// (a new one when `head` is NULL); NULL on allocation failure, after
// releasing the list.
QWZ_INTERNAL qwz_token *qwz_add_token_list(qwz_token *head, const qwz_keyword *keyword,
                                           const char *text, ub4 case_style);
QWZ_INTERNAL void qwz_free_token_list(qwz_token *head);
// A new token list for a NUL-terminated format, or NULL when the format is
// NULL, empty, 128 characters or longer, or memory runs out.
QWZ_INTERNAL qwz_token *qwz_translate_format(const char *format);
// Copies `source` without leading and trailing blanks (' ' only) into
// `destination`, writing no terminator (callers clear it). At most 255
// characters are copied: destinations are 256-byte buffers.
QWZ_INTERNAL void qwz_trim_string(const char *source, char *destination);
// 1 when `text` holds no ASCII digit and no ASCII letter, else 0.
QWZ_INTERNAL int qwz_validate_expr(const char *text);

}  // extern "C"

namespace qwz {

// Keyword id groups the conversions treat alike.
inline constexpr ub4 KW_DD = 10;
inline constexpr ub4 KW_FF1 = 17;
inline constexpr ub4 KW_FF5 = 21;
inline constexpr ub4 KW_HH = 24;
inline constexpr ub4 KW_HH12 = 25;
inline constexpr ub4 KW_HH24 = 26;
inline constexpr ub4 KW_MI = 33;
inline constexpr ub4 KW_MM = 34;
inline constexpr ub4 KW_SS = 43;
inline constexpr ub4 KW_TZH = 47;
inline constexpr ub4 KW_TZM = 48;
inline constexpr ub4 KW_YYYY = 56;
inline constexpr ub4 KW_SYYYY = 57;
constexpr bool is_fraction_keyword(ub4 id) { return id >= KW_FF1 && id <= KW_FF5; }

// Error codes the conversions hand back to their public functions.
inline constexpr sb4 kFormatFaultCode = 5;   // the format itself is at fault
inline constexpr sb4 kBufferTooSmallCode = 9; // the result does not fit the caller's buffer

// Formats of 128 characters or more are refused; so a translation has at
// most 127 tokens.
inline constexpr std::size_t kMaxFormatLength = 127;
// Both work buffers of a conversion (text and format) are this big.
inline constexpr std::size_t kWorkBufferSize = 256;

struct TokenArray {
  qwz_token tok[kMaxFormatLength];
  std::size_t count = 0;
  std::span<const qwz_token> span() const { return {tok, count}; }
};

// Translates the first `n` characters of `format` (n <= 127, no NUL among
// them) into `out`, longest keyword first at each position, case-blind.
// Returns the number of tokens (0 for an empty format).
std::size_t translate_format(const char *format, std::size_t n, TokenArray &out);

// A token list read as a range.
class TokenList {
 public:
  explicit TokenList(const qwz_token *head) : head_(head) {}
  struct iterator {
    using iterator_category = std::forward_iterator_tag;
    using value_type = qwz_token;
    using difference_type = std::ptrdiff_t;
    using pointer = const qwz_token *;
    using reference = const qwz_token &;
    const qwz_token *p;
    reference operator*() const { return *p; }
    iterator &operator++() { p = p->next; return *this; }
    bool operator==(const iterator &o) const { return p == o.p; }
  };
  iterator begin() const { return {head_}; }
  iterator end() const { return {nullptr}; }

 private:
  const qwz_token *head_;
};

// The first rule a token sequence breaks, in sequence order.
enum class FormatFault {
  none,
  literal,      // a literal holds a letter or a digit
  unsupported,  // a keyword the conversions do not accept
  duplicate,    // a keyword given twice, or a second fraction keyword
};

// qwz_validate_expr of a literal token's text (its 8 bytes need no NUL).
bool literal_is_valid(const qwz_token &t);

template <class Tokens>
FormatFault validate_tokens(const Tokens &tokens) {
  // Per-row use counts first, so each keyword's count is one look-up.
  ub1 uses[QWZ_KEYWORD_COUNT] = {};
  unsigned fractions = 0;
  for (const qwz_token &t : tokens) {
    if (!t.keyword) continue;
    if (uses[t.keyword->id] < 2) ++uses[t.keyword->id];
    if (is_fraction_keyword(t.keyword->id) && fractions < 2) ++fractions;
  }
  for (const qwz_token &t : tokens) {
    if (!t.keyword) {
      if (!literal_is_valid(t)) return FormatFault::literal;
      continue;
    }
    if (t.keyword->supported != 1) return FormatFault::unsupported;
    const unsigned n = is_fraction_keyword(t.keyword->id) ? fractions : uses[t.keyword->id];
    if (n > 1) return FormatFault::duplicate;
  }
  return FormatFault::none;
}

// ---- fields and compiled formats: what the text conversions walk ----------

}  // namespace qwz

extern "C" {

// The field-text record shared by the parser and the formatter: each field
// as zero-terminated decimal text in a fixed slot (36 bytes).
struct datetime_fields {
  char year[6];       // digits, optionally after a '-'
  char month[3];
  char day[3];
  char hour[3];       // 24-hour
  char minute[3];
  char second[3];
  char fraction[7];
  char tz_hour[4];    // with its sign, such as "+00"
  char tz_minute[3];
  char tz_given;      // 1 when the format held TZH or TZM
};

}  // extern "C"

namespace qwz {

// What a token does with the record.
enum class FieldKind : ub1 {
  literal,   // one literal character
  ignored,   // a keyword with no field (only in unchecked token lists)
  plain,     // day, month, hour, minute, second: its slot's first `width` characters
  zone,      // TZH, TZM: as plain, and marks the zone as given
  year,      // YYYY, SYYYY: exactly `width` characters when written
  fraction,  // FF1..FF5: exactly `width` digits
};

// A token with everything the conversions need at hand (8 bytes).
struct FormatToken {
  FieldKind kind;
  char ch;       // a literal's character
  ub1 id;        // a keyword's row
  ub1 width;     // the row's width
  ub1 required;  // the row's required flag
  ub1 offset;    // the slot in datetime_fields
  ub1 size;      // the slot's size
  ub1 seconds;   // 1 for SS: a date's text ends after it
};

// The token for a keyword row (NULL: a literal with character `ch`).
FormatToken make_format_token(const qwz_keyword *row, char ch);
inline const FormatToken &format_token(const FormatToken &t) { return t; }
inline FormatToken format_token(const qwz_token &t) {
  return make_format_token(t.keyword, t.text[0]);
}

// A recorded parse. The parser's every decision depends only on the class
// of each character (digit, blank, '-', letter, other) and on the text's
// length, never on which digit it is; so once a text has been parsed under a
// format, any text of the same length and the same classes takes exactly the
// same path: the same characters go into the same slots and it succeeds the
// same way. A plan keeps that path (only for successful parses of short
// texts) so such texts are read by copying characters. A text is known to
// have the plan's classes when it equals the plan's text with every digit
// read as '0' (its "shape"); that is compared eight bytes at a time.
inline constexpr std::size_t kPlanMaxText = 64;
inline constexpr std::size_t kPlanMaxStores = 16;
struct PlanStore {
  ub1 offset;      // the slot
  ub1 size;
  FieldKind kind;  // plain, zone or fraction (a fraction gets its '0')
  ub1 count;       // characters collected
  ub1 run;         // 1 when they stand side by side from pos[0]
  ub1 pos[7];      // their positions in the text
};
// What a recorded parse leaves in one of the value's fields, so a replay
// can produce the number without writing and re-reading the field's text:
// either a constant, or the digits standing side by side at `pos` read as
// a decimal number and multiplied by `mult` (which carries the sign, the
// fraction's trailing '0' and its scale to nanoseconds).
struct PlanValue {
  ub1 from_text;   // 0: `constant`
  ub1 pos;
  ub1 count;       // digits read, 1 to 6
  std::int32_t mult;
  std::int32_t constant;
};
// The value fields a parse produces, in this order.
enum PlanValueField : ub1 {
  kValueYear, kValueMonth, kValueDay, kValueHour, kValueMinute, kValueSecond,
  kValueFraction, kValueTzHour, kValueTzMinute, kValueFields
};
// The value part's digits as pairs of adjacent characters, each adding
// (first - '0') * w0 + (second - '0') * w1 to its field in 32-bit wrapping
// arithmetic: every field keeps at most its low 32 bits, and a field other
// than the fraction never exceeds nine digits, so its value is exact. A run
// of odd length ends in an entry with w1 = 0, whose second character is the
// one after the run (at most the NUL that ends the text). Listed in field
// order, so the date's fields come first.
inline constexpr std::size_t kPlanMaxPairs = 3 * kValueFields;
struct PlanPair {
  ub1 field;  // a PlanValueField
  ub1 pos;
  ub4 w0, w1;
};
// The shape test for one eight-byte word of a text, as masks: the text's
// word x has the plan's shape when ((x & mask) ^ value) | ((x + carry) & over)
// is 0. `mask` keeps the whole of a literal byte and the high nibble of a
// digit byte, `value` holds the literal or 0x30; once those agree, a digit
// byte (0x30 to 0x3F) reaches 0x40 after adding 6 exactly when it is above
// '9'. Bytes past the text's end are masked out.
struct ShapeWord {
  std::uint64_t mask, value, carry, over;
};
// The date's fields read all at once, when each is a constant or an
// unsigned run of two digits (four or two for the year): eight lanes of 16
// bits, each holding the two characters at its position and then their
// value. The first word's lanes are month, day, hour and minute (a date's
// layout); the second's the year's hundreds, the year's rest and the
// second. A lane whose field is read keeps 0xFFFF in `keep`; the others
// hold their constant (and read, harmlessly, where a read lane does).
struct DateLanes {
  ub1 usable;
  ub1 pos[8];
  std::uint64_t keep[2];
  std::uint64_t constant[2];
};
// The shape test and DateLanes for a text of 16 to 32 characters, as byte
// operations on two 16-byte blocks: the text's first 16 bytes and the 16
// that end it. The masks are ShapeWord's, per byte; `from` picks each
// lane's two characters out of the blocks (0x80: none).
inline constexpr std::size_t kBlockTextMin = 16, kBlockTextMax = 32;
struct BlockPlan {
  ub1 shape;  // the shape masks are built
  ub1 lanes;  // and so are the lanes (DateLanes usable)
  alignas(16) ub1 mask[2][16];
  alignas(16) ub1 value[2][16];
  alignas(16) ub1 carry[2][16];
  alignas(16) ub1 over[2][16];
  alignas(16) ub1 from[2][16];
  alignas(16) ub2 keep[8];
  alignas(16) ub2 constant[8];
};
struct ParsePlan {
  ub1 valid;
  ub1 length;
  ub1 stores;
  // The value part: usable when every field's text reads as a constant or
  // as a sign and a run of adjacent digits.
  ub1 values_valid;
  ub1 clock_needed;       // the year or the month was left empty
  ub1 tz_given;
  ub1 tz_hour_negative;   // the zone hour's text starts with '-'
  ub1 pairs;              // entries of `pair`
  ub1 date_pairs;         // of them, those for year to second
  ub4 constant[kValueFields];  // each field before its pairs are added
  ShapeWord shape[kPlanMaxText / 8];
  PlanStore store[kPlanMaxStores];
  PlanValue value[kValueFields];
  PlanPair pair[kPlanMaxPairs];
  DateLanes lanes;
  BlockPlan blocks;
};

// A compiled writer for values whose fields all print at their usual
// widths (year 0 to 9999; month to second, zone hour and minute within
// 99): the text is a fixed template with digits dropped into it.
inline constexpr std::size_t kWritePlanMaxText = 64;
inline constexpr std::size_t kWritePlanMaxFields = 24;
enum class WriteSource : ub1 { year, month, day, hour, minute, second, tz_hour, tz_minute, fraction };
struct WriteField {
  WriteSource source;
  ub1 pos;
  ub1 width;  // a fraction's digits
};
// Two digits of one of the writer's pair values at a position of the
// template: the year's hundreds and its rest, month, day, hour, minute,
// second, the zone hour without its sign and the zone minute.
inline constexpr std::size_t kWritePairValues = 9;
struct WritePair {
  ub1 pos;
  ub1 value;  // index into the pair values
};
// The pairs can also be written as byte shuffles of blocks of the output:
// of 16 bytes for a template of 15 characters or more, else of 8 bytes for
// one of 7 or more. Block k covers [size * k, size * (k + 1)) of the text
// and its NUL, the last one the `size` bytes that end it. Each block takes
// its digits from the pair values' characters (see write_blocks) and the
// rest from `holes`, the template with 0 where the digits go.
inline constexpr std::size_t kWriteBlocks = (kWritePlanMaxText + 1 + 15) / 16;
struct WritePlan {
  ub1 state;  // 0: not built yet, 1: usable, 2: this format has none
  ub1 length;
  ub1 fields;
  ub1 pairs;
  ub1 others;  // fields written other than as pairs: a zone hour's sign, a fraction
  ub1 blocks;  // 0: the pairs are written one by one
  ub1 block_size;  // 16 or 8
  // With blocks: 1 when they also write every field of `other` (at most one
  // fraction and one zone sign), else `other` is written after them; the
  // width of that fraction (0: none) and where that sign goes (0xFF: none).
  ub1 block_others;
  ub1 block_fraction;
  ub1 block_sign;
  char text[kWritePlanMaxText + 8];  // the template, NUL-terminated
  WriteField field[kWritePlanMaxFields];
  WritePair pair[2 * kWritePlanMaxFields];
  ub1 other[kWritePlanMaxFields];  // those fields' indices in `field`
  alignas(16) ub1 from_low[kWriteBlocks][16];   // source byte, or 0x80 for none
  alignas(16) ub1 from_high[kWriteBlocks][16];
  alignas(16) char holes[kWriteBlocks * 16];
};

struct CompiledFormat {
  std::size_t count = 0;
  FormatFault fault = FormatFault::none;  // the first rule the tokens break
  FormatToken tok[kMaxFormatLength];
  std::span<const FormatToken> span() const { return {tok, count}; }
  // Parses recorded under this format (per thread, like the format itself).
  mutable ParsePlan plan[2];
  mutable ub1 next_plan;
  // Writers built on first use: [0] for datetimes, [1] for dates (which
  // stop after the seconds and have neither fraction nor zone).
  mutable WritePlan write[2];
};

// The tokens and the verdict of the rules for format[0, n) (n <= 127, no NUL
// among them), or NULL when there is nothing to translate (n == 0).
// Translations are kept in a small per-thread cache keyed by the format's
// bytes, so a repeated format is neither translated nor checked again; the
// result stays valid until the calling thread's next call.
const CompiledFormat *compile_format(const char *format, std::size_t n);

// The two formats the calling thread's cache answered last (the latest
// first), asked before the cache itself: a reader and a writer taking turns
// both stay here. A few words per thread in the initial-exec TLS model, so
// the question costs no call into the dynamic loader when the library is a
// shared object.
struct LastFormat {
  std::size_t length;  // 0: none yet
  const char *bytes;
  const CompiledFormat *compiled;
};
[[gnu::tls_model("initial-exec")]] extern constinit thread_local LastFormat t_last_format[2];

// Whether the processor shuffles bytes (x86-64 with SSSE3), asked once at
// load: the text paths' block forms need it.
extern const bool kByteShuffles;

// Whether a[0, n) equals b[0, n) for n >= 8: eight bytes at a time, the
// last word overlapping the one before.
[[gnu::always_inline]] inline bool same_long_bytes(const char *a, const char *b,
                                                   std::size_t n) {
  const auto word_at = [](const char *p, std::size_t at) {
    std::uint64_t x;
    std::memcpy(&x, p + at, 8);
    return x;
  };
  const auto differ = [&](std::size_t at) { return word_at(a, at) ^ word_at(b, at); };
  // Formats are mostly 8 to 32 characters: two or four overlapping words,
  // with no loop.
  if (n <= 16) return (differ(0) | differ(n - 8)) == 0;
  if (n <= 32) return (differ(0) | differ(8) | differ(n - 16) | differ(n - 8)) == 0;
  std::uint64_t diff = 0;
  for (std::size_t i = 0; i + 8 < n; i += 8) diff |= differ(i);
  return (diff | differ(n - 8)) == 0;
}

// compile_format, answering a repeat of one of the last two formats inline.
[[gnu::always_inline]] inline const CompiledFormat *compile_format_fast(const char *format,
                                                                       std::size_t n) {
  const LastFormat *last = t_last_format;
  if (n >= 8) {
    if (last[0].length == n && same_long_bytes(last[0].bytes, format, n)) return last[0].compiled;
    if (last[1].length == n && same_long_bytes(last[1].bytes, format, n)) return last[1].compiled;
  }
  return compile_format(format, n);
}

// A literal's text: up to 8 characters for a list token, one for a compiled one.
inline std::size_t literal_text(const qwz_token &t, const char *&text) {
  text = t.text;
  return strnlen(t.text, sizeof t.text);
}
inline std::size_t literal_text(const FormatToken &t, const char *&text) {
  text = &t.ch;
  return 1;
}
inline bool literal_is_valid(const FormatToken &t) {
  const unsigned char c = static_cast<unsigned char>(t.ch);
  const unsigned lower = c | 0x20u;
  return !((c >= '0' && c <= '9') || (lower >= 'a' && lower <= 'z'));
}

// A caller's text or format as the text conversions read it: up to its
// NUL (`full` is that length, measured by the caller), without its leading
// and trailing blanks, then cut at `length` characters and at what a
// 256-byte work buffer holds (255). Blanks only: tabs are kept. The window
// stays where the text is; nothing is copied.
struct TrimmedText {
  const char *begin;
  std::size_t length;
};
inline TrimmedText trim_and_cut(const char *text, std::size_t full, std::size_t length) {
  std::size_t b = 0, e = full;
  while (b < e && text[b] == ' ') ++b;
  while (e > b && text[e - 1] == ' ') --e;
  std::size_t n = e - b;
  if (n > kWorkBufferSize - 1) n = kWorkBufferSize - 1;
  if (n > length) n = length;
  return {text + b, n};
}

// Whether qwz_gkwinit has run (an atomic read of g_qwz_initilized).
bool keyword_table_initialised();

// A traced text argument. qwz_trace prints "%s" arguments up to their NUL,
// and callers' texts need not have one within their given length, so the
// trace gets a NUL-terminated copy of at most the given length ("(null)" for
// NULL). The copy is made only when a trace record is written, and again for
// each record, so an output buffer traced on exit shows what was written.
// Copies live in a small per-thread ring that outlasts the formatting of
// one record. Both kinds are two plain words: an untraced call hands them
// to the frame by value, and only the cold trace path turns them into text.
class TracedText {
 public:
  TracedText(const void *text, std::size_t bound) : text_(text), bound_(bound) {}
  // What run_frame takes as the traced argument (a copy).
  TracedText arg() const { return *this; }
  explicit operator unsigned long() const;

 private:
  const void *text_;
  std::size_t bound_;
};
// The same, with the bound read through `bound` when the record is written
// (NULL: 0), so an exit record shows a length the call changed.
class TracedTextAt {
 public:
  TracedTextAt(const void *text, const ub4 *bound) : text_(text), bound_(bound) {}
  TracedTextAt arg() const { return *this; }
  explicit operator unsigned long() const;

 private:
  const void *text_;
  const ub4 *bound_;
};

// Writes "%0*ld"-style decimal text of v (at least `width` characters, a
// minus sign counted among them) into dst[0, cap) and NUL-terminates it when
// it fits; a longer text keeps its first cap characters and no terminator
// (so a bounded length read shows it did not fit). Returns the full length.
std::size_t decimal_text(long v, int width, char *dst, std::size_t cap);

// "00" to "99".
struct DigitPairs {
  char text[200];
};
constexpr DigitPairs make_digit_pairs() {
  DigitPairs p{};
  for (int i = 0; i < 100; ++i) {
    p.text[2 * i] = static_cast<char>('0' + i / 10);
    p.text[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return p;
}
inline constexpr DigitPairs kDigitPairs = make_digit_pairs();

// "%02d" of 0..99 and "%04d" of 0..9999 into dst, NUL-terminated.
inline void two_digits(unsigned v, char *dst) {
  std::memcpy(dst, kDigitPairs.text + 2 * v, 2);
  dst[2] = '\0';
}
inline void four_digits(unsigned v, char *dst) {
  std::memcpy(dst, kDigitPairs.text + 2 * (v / 100), 2);
  two_digits(v % 100, dst + 2);
}

// The value of a decimal text: optional sign, digits up to the first other
// character; reads at most `cap` bytes.
inline long decimal_value(const char *text, std::size_t cap) {
  std::size_t i = 0;
  bool negative = false;
  if (i < cap && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  long v = 0;
  for (std::size_t digits = 0; i < cap && text[i] >= '0' && text[i] <= '9'; ++i, ++digits)
    if (digits < 18) v = v * 10 + (text[i] - '0');
  return negative ? -v : v;
}

}  // namespace qwz

#endif  // QWZ_DDI_FORMAT_MODEL_H
