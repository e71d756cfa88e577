// Text to date and datetime: the format-driven parser, the shared entry that
// trims, translates and checks before parsing, the converters, and the
// public QWZDateFromText and QWZDateTimeFromText.
//
// Reading: a text and a format are read up to their NUL, whatever length
// is given; the trimmed text is then cut at the given length (and at 255
// characters, what a work buffer holds). The given length never extends a
// text past its NUL, so the public functions' lowering of the lengths to
// the texts' own changes nothing and is not repeated here.
//
// Parses are recorded per format and text shape (see ParsePlan): a later
// text of the same shape is read by replaying the record, and, when every
// field is a plain run of digits, straight to the numbers the converters
// want, without the field-text record.
#include "date_datetime_interval/calendar.h"
#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/format_model.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/nested.h"
#include "date_datetime_interval/text_in.h"
#include "errors/errors.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

using qwz::date_error;
using qwz::datetime_error;
using qwz::done;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_DATE_FROM_TEXT = 134;
constexpr ub4 API_DATETIME_FROM_TEXT = 179;

constexpr sb4 kDateInputPtr = 1;     // detail of the date family's NULL checks

constexpr sb4 kDateFormatNotRecognized = 800153;
constexpr const char kDateFormatNotRecognizedText[] = "date format not recognized.";
constexpr sb4 kStringTooLong = 800155;
constexpr const char kStringTooLongText[] = "string is too long for internal buffer.";

constexpr bool is_digit(unsigned char c) { return c >= '0' && c <= '9'; }
constexpr bool is_letter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Stores the collector (its characters in the low bytes of a word, zero
// above) into a slot of 3 to 7 bytes, ending with a NUL: two overlapping
// moves of the register, no byte loop and no reload of bytes just stored.
inline void store_slot(char *slot, std::uint64_t col, std::size_t size) {
  col &= (std::uint64_t{1} << (8 * (size - 1))) - 1;  // keep size - 1 characters
  if (size >= 4) {
    const auto lo = static_cast<std::uint32_t>(col);
    const auto hi = static_cast<std::uint32_t>(col >> (8 * (size - 4)));
    std::memcpy(slot, &lo, 4);
    std::memcpy(slot + size - 4, &hi, 4);
  } else {
    const auto lo = static_cast<std::uint16_t>(col);
    const auto hi = static_cast<std::uint16_t>(col >> (8 * (size - 2)));
    std::memcpy(slot, &lo, 2);
    std::memcpy(slot + size - 2, &hi, 2);
  }
}

// A default for an empty slot (the text and its NUL fit the slot).
template <std::size_t N, std::size_t M>
void set_default(char (&slot)[N], const char (&text)[M]) {
  static_assert(M <= N);
  if (slot[0] == '\0') std::memcpy(slot, text, M);
}

// Whether t[0, n) holds an ASCII letter, eight bytes at a time: a byte is a
// letter when, with bit 0x20 set, it lies strictly between 0x60 and 0x7B
// (bytes of 0x80 and above never count).
bool has_letter(const unsigned char *t, std::size_t n) {
  constexpr std::uint64_t ones = ~std::uint64_t{0} / 255;  // 0x0101...01
  constexpr std::uint64_t low7 = ones * 127, high = ones * 128;
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    std::uint64_t w;
    std::memcpy(&w, t + i, 8);
    const std::uint64_t x = w | (ones * 0x20);
    const std::uint64_t in_range =
        (ones * (127 + 0x7B) - (x & low7)) & ~x & ((x & low7) + ones * (127 - 0x60)) & high;
    if (in_range) return true;
  }
  for (; i < n; ++i)
    if (is_letter(t[i])) return true;
  return false;
}

// The current local time, read only when the year or the month is missing.
bool local_time_now(struct tm *out) {
  tzset();
  const time_t now = time(nullptr);
  return localtime_r(&now, out) != nullptr;
}

// Parsing without recording.
struct NoRecord {
  static constexpr bool on = false;
  void field(const ub1 *, std::size_t, const qwz::FormatToken &) {}
};

// Records the stores of a parse into a plan (texts of at most kPlanMaxText
// characters, so positions fit a byte).
struct PlanRecorder {
  static constexpr bool on = true;
  qwz::ParsePlan plan{};
  bool complete = true;
  void field(const ub1 *pos, std::size_t count, const qwz::FormatToken &tok) {
    if (plan.stores == qwz::kPlanMaxStores) {
      complete = false;
      return;
    }
    qwz::PlanStore &s = plan.store[plan.stores++];
    s.offset = tok.offset;
    s.size = tok.size;
    s.kind = tok.kind;
    s.count = static_cast<ub1>(count);
    std::memcpy(s.pos, pos, count);
    s.run = 1;
    for (std::size_t k = 1; k < count; ++k)
      if (pos[k] != pos[0] + k) s.run = 0;
  }
};

// The parser over any token sequence (the caller's list or a compiled
// format): the letter scan and the walk over the tokens, storing the fields.
template <class Tokens, class Recorder>
bool read_fields(const char *text, std::size_t n, const Tokens &tokens, datetime_fields &f,
                 Recorder &rec) {
  const auto *t = reinterpret_cast<const unsigned char *>(text);

  // Letters may only stand in trailing text after exactly two blanks; no
  // usable keyword reads letters.
  if (has_letter(t, n)) {
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < n; ++i) {
      blanks += t[i] == ' ';
      if (is_letter(t[i]) && blanks != 2) return false;
    }
  }

  std::size_t cur = 0;
  // One separator count for the whole text: the first non-digit a field
  // meets is taken (a '-' as the field's sign); later ones end fields.
  bool separated = false;
  for (const auto &any : tokens) {
    const qwz::FormatToken &tok = qwz::format_token(any);
    if (tok.kind == qwz::FieldKind::literal) {
      // Any one non-digit stands for any literal.
      while (cur < n && t[cur] == ' ') ++cur;
      if (cur < n && !is_digit(t[cur])) ++cur;
      continue;
    }
    // The collector holds at most the width (5 for a usable keyword), one
    // character per byte from the low end of a word.
    std::uint64_t col = 0;
    std::size_t len = 0;
    ub1 pos[8];
    const std::size_t full = tok.width < 7 ? tok.width : 7;
    auto collect = [&](std::size_t at) {
      if constexpr (Recorder::on) pos[len] = static_cast<ub1>(at);
      col |= std::uint64_t{t[at]} << (8 * len++);
    };
    while (cur < n) {
      const unsigned char c = t[cur];
      if (is_digit(c)) {
        if (len >= full) break;
        // A run of digits, up to the width.
        do collect(cur++);
        while (len < full && cur < n && is_digit(t[cur]));
        continue;
      }
      if (c == ' ' && len == 0) {
        ++cur;
        continue;
      }
      if (separated) {
        if (len > 0) break;
        return false;
      }
      if (c == '-') {
        if (len >= full) break;
        collect(cur);
      }
      separated = true;
      ++cur;
    }
    if (tok.required && len == 0) return false;
    if (tok.kind == qwz::FieldKind::ignored) continue;
    // Fractions need all their digits: FF3 with 123 stores "1230".
    if (tok.kind == qwz::FieldKind::fraction) {
      if (len < tok.width) return false;
      col |= std::uint64_t{'0'} << (8 * len);
    }
    rec.field(pos, len, tok);
    // A later token for the same slot overwrites the earlier one.
    store_slot(reinterpret_cast<char *>(&f) + tok.offset, col, tok.size);
    if (tok.kind == qwz::FieldKind::zone) f.tz_given = 1;
  }
  return true;
}

// Eight bytes of the text from position i as a word, zero past its end;
// never reads past the text.
inline std::uint64_t text_word(const unsigned char *t, std::size_t n, std::size_t i) {
  std::uint64_t x = 0;
  if (i + 8 <= n) {
    std::memcpy(&x, t + i, 8);
  } else {
    for (std::size_t k = 0; i + k < n; ++k) x |= std::uint64_t{t[i + k]} << (8 * k);
  }
  return x;
}

// A word with every digit byte turned into '0': the high bit of each byte
// strictly between '/' and ':' (bytes of 0x80 and above excluded) marks a
// digit, whose low nibble is then cleared.
inline std::uint64_t shape_word(std::uint64_t x) {
  constexpr std::uint64_t ones = ~std::uint64_t{0} / 255, low7 = ones * 127, high = ones * 128;
  const std::uint64_t digit =
      (ones * (127 + ':') - (x & low7)) & ~x & ((x & low7) + ones * (127 - '/')) & high;
  return x & ~((digit >> 7) * 0x0F);
}

// Word w of the text as the shape test reads it. A text of eight characters
// or more is read in whole words, the last one being the eight bytes that
// end the text (overlapping the word before when the length is not a
// multiple of eight): one load per word, never past the text. A shorter
// text is one word, zero past its end.
inline std::uint64_t shape_word_at(const unsigned char *t, std::size_t n, std::size_t w) {
  std::uint64_t x;
  if (n >= 8) {
    const std::size_t i = 8 * w + 8 <= n ? 8 * w : n - 8;
    std::memcpy(&x, t + i, 8);
    return x;
  }
  return text_word(t, n, 0);
}

// The plan's BlockPlan shape masks, for a text of 16 to 32 characters.
void build_block_shape(qwz::BlockPlan &b, const unsigned char *t, std::size_t n) {
  b = {};
  if (n < qwz::kBlockTextMin || n > qwz::kBlockTextMax) return;
  for (std::size_t k = 0; k < 2; ++k) {
    const unsigned char *block = t + (k == 0 ? 0 : n - 16);
    for (std::size_t j = 0; j < 16; ++j) {
      const unsigned char c = block[j];
      if (is_digit(c)) {
        b.mask[k][j] = 0xF0;
        b.value[k][j] = 0x30;
        b.carry[k][j] = 0x06;
        b.over[k][j] = 0x40;
      } else {
        b.mask[k][j] = 0xFF;
        b.value[k][j] = c;
      }
    }
  }
  b.shape = 1;
}

void build_shape(qwz::ParsePlan &plan, const unsigned char *t, std::size_t n) {
  build_block_shape(plan.blocks, t, n);
  std::memset(plan.shape, 0, sizeof plan.shape);
  for (std::size_t w = 0; w * 8 < n; ++w) {
    const std::uint64_t shape = shape_word(shape_word_at(t, n, w));
    qwz::ShapeWord &sw = plan.shape[w];
    for (std::size_t k = 0; k < 8; ++k) {
      const std::uint64_t b = (shape >> (8 * k)) & 0xFF;
      const std::size_t at = 8 * k;
      if (b == '0') {
        sw.mask |= std::uint64_t{0xF0} << at;
        sw.value |= std::uint64_t{0x30} << at;
        sw.carry |= std::uint64_t{0x06} << at;
        sw.over |= std::uint64_t{0x40} << at;
      } else if (b != 0) {  // 0 only past the end of a short text
        sw.mask |= std::uint64_t{0xFF} << at;
        sw.value |= b << at;
      }
    }
  }
}

// Whether t (of the plan's length) has the plan's shape.
inline bool has_shape(const qwz::ParsePlan &plan, const unsigned char *t, std::size_t n) {
  for (std::size_t w = 0; w * 8 < n; ++w) {
    const std::uint64_t x = shape_word_at(t, n, w);
    const qwz::ShapeWord &sw = plan.shape[w];
    if ((((x & sw.mask) ^ sw.value) | ((x + sw.carry) & sw.over)) != 0) return false;
  }
  return true;
}

// The recorded plan whose text had the shape of t, if any.
inline const qwz::ParsePlan *matching_plan(const qwz::CompiledFormat &format,
                                           const unsigned char *t, std::size_t n) {
  const qwz::ParsePlan &a = format.plan[0];
  if (a.valid && a.length == n && has_shape(a, t, n)) return &a;
  const qwz::ParsePlan &b = format.plan[1];
  if (b.valid && b.length == n && has_shape(b, t, n)) return &b;
  return nullptr;
}

// The stores of a recorded parse, on a text of the same classes.
void replay(const qwz::ParsePlan &plan, const unsigned char *t, std::size_t n,
            datetime_fields &f) {
  for (std::size_t i = 0; i < plan.stores; ++i) {
    const qwz::PlanStore &s = plan.store[i];
    std::uint64_t col = 0;
    if (s.run) {
      // Side by side: one word, cut to the characters collected.
      if (s.count > 0)
        col = text_word(t, n, s.pos[0]) & ((std::uint64_t{1} << (8 * s.count)) - 1);
    } else {
      for (std::size_t k = 0; k < s.count; ++k) col |= std::uint64_t{t[s.pos[k]]} << (8 * k);
    }
    if (s.kind == qwz::FieldKind::fraction) col |= std::uint64_t{'0'} << (8 * s.count);
    store_slot(reinterpret_cast<char *>(&f) + s.offset, col, s.size);
    if (s.kind == qwz::FieldKind::zone) f.tz_given = 1;
  }
}

// The value field a slot of the record feeds.
int value_field_of(std::size_t offset) {
  using F = datetime_fields;
  switch (offset) {
    case offsetof(F, year): return qwz::kValueYear;
    case offsetof(F, month): return qwz::kValueMonth;
    case offsetof(F, day): return qwz::kValueDay;
    case offsetof(F, hour): return qwz::kValueHour;
    case offsetof(F, minute): return qwz::kValueMinute;
    case offsetof(F, second): return qwz::kValueSecond;
    case offsetof(F, fraction): return qwz::kValueFraction;
    case offsetof(F, tz_hour): return qwz::kValueTzHour;
    case offsetof(F, tz_minute): return qwz::kValueTzMinute;
    default: return -1;
  }
}

// 10^0 .. 10^9: the scales of fraction texts to nanoseconds.
constexpr std::int64_t kPow10[10] = {1,      10,      100,      1000,      10000,
                                     100000, 1000000, 10000000, 100000000, 1000000000};

// Lane of each date field in DateLanes (the year's two lanes are 4 and 5).
constexpr std::size_t kDateLane[6] = {5, 0, 1, 2, 3, 6};

// The plan's DateLanes, when every date field qualifies (see DateLanes).
void record_lanes(qwz::ParsePlan &plan) {
  qwz::DateLanes &l = plan.lanes;
  l = {};
  int any_read = -1;
  for (int field = 0; field <= qwz::kValueSecond; ++field)
    if (plan.value[field].from_text) any_read = plan.value[field].pos;
  if (any_read < 0) return;
  for (ub1 &p : l.pos) p = static_cast<ub1>(any_read);
  const auto set = [&](std::size_t lane, bool read, std::uint64_t value) {
    const std::size_t word = lane / 4, shift = 16 * (lane % 4);
    if (read) {
      l.keep[word] |= std::uint64_t{0xFFFF} << shift;
      l.pos[lane] = static_cast<ub1>(value);
    } else {
      l.constant[word] |= value << shift;
    }
  };
  for (int field = 0; field <= qwz::kValueSecond; ++field) {
    const qwz::PlanValue &v = plan.value[field];
    const std::size_t lane = kDateLane[field];
    if (!v.from_text) {
      if (v.constant < 0 || v.constant > 0x7FFF) return;
      set(lane, false, static_cast<std::uint64_t>(v.constant));
    } else if (v.mult != 1) {
      return;
    } else if (v.count == 2) {
      set(lane, true, v.pos);
    } else if (field == qwz::kValueYear && v.count == 4) {
      set(4, true, v.pos);
      set(lane, true, v.pos + 2u);
    } else {
      return;
    }
  }
  l.usable = 1;
  // The same lanes out of the two blocks, when the plan has them.
  qwz::BlockPlan &b = plan.blocks;
  if (!b.shape) return;
  const std::size_t n = plan.length;
  std::memset(b.from, 0x80, sizeof b.from);
  for (std::size_t lane = 0; lane < 8; ++lane) {
    const std::size_t word = lane / 4, shift = 16 * (lane % 4);
    b.keep[lane] = static_cast<ub2>(l.keep[word] >> shift);
    b.constant[lane] = static_cast<ub2>(l.constant[word] >> shift);
    if (b.keep[lane] == 0) continue;
    for (std::size_t j = 0; j < 2; ++j) {
      const std::size_t at = l.pos[lane] + j;
      if (at < 16) b.from[0][2 * lane + j] = static_cast<ub1>(at);
      else b.from[1][2 * lane + j] = static_cast<ub1>(at - (n - 16));
    }
  }
  b.lanes = 1;
}

// Works out, from a recorded parse of text t, what each value field will
// hold on any text of the same shape: the defaults of empty fields as
// constants, the others as a sign and a run of digits read in place. A
// field whose digits do not stand side by side leaves the value part
// unusable (such texts then go through the record).
void record_values(qwz::ParsePlan &plan, const unsigned char *t, bool tz_given) {
  plan.values_valid = 0;
  plan.clock_needed = 0;
  plan.tz_given = tz_given ? 1 : 0;
  plan.tz_hour_negative = 0;
  // The last store into each slot is the one that stays.
  int last[qwz::kValueFields];
  for (int &l : last) l = -1;
  for (std::size_t i = 0; i < plan.stores; ++i) {
    const int field = value_field_of(plan.store[i].offset);
    if (field < 0) return;
    last[field] = static_cast<int>(i);
  }
  for (int field = 0; field < qwz::kValueFields; ++field) {
    qwz::PlanValue &v = plan.value[field];
    v = {};
    const qwz::PlanStore *s = last[field] >= 0 ? &plan.store[last[field]] : nullptr;
    if (!s || s->count == 0) {
      // An empty field takes its default; year and month come from the clock.
      if (field == qwz::kValueYear || field == qwz::kValueMonth) plan.clock_needed = 1;
      if (field == qwz::kValueDay) v.constant = 1;
      continue;
    }
    const bool fraction = s->kind == qwz::FieldKind::fraction;
    std::size_t k = 0;
    bool negative = false;
    if (t[s->pos[0]] == '-') {
      negative = true;
      k = 1;
    }
    if (field == qwz::kValueTzHour) plan.tz_hour_negative = negative ? 1 : 0;
    // The digits after the sign, up to the first other character.
    const std::size_t first = k;
    while (k < s->count && is_digit(t[s->pos[k]])) {
      if (s->pos[k] != s->pos[first] + (k - first)) return;
      ++k;
    }
    const std::size_t digits = k - first;
    // A fraction's text ends in the '0' the parser adds, which counts as a
    // digit only when every collected character before it was one.
    const std::size_t zeros = fraction && k == s->count ? 1 : 0;
    const std::size_t text_length = s->count + (fraction ? 1 : 0);
    if (digits == 0) continue;  // reads as 0 whatever the shape holds
    std::int64_t mult = kPow10[zeros];
    if (fraction) mult *= kPow10[9 - (text_length > 9 ? 9 : text_length)];
    v.from_text = 1;
    v.pos = s->pos[first];
    v.count = static_cast<ub1>(digits);
    v.mult = static_cast<std::int32_t>(negative ? -mult : mult);
  }
  // The packed form: each field's digits as pairs, in field order.
  plan.pairs = 0;
  plan.date_pairs = 0;
  for (int field = 0; field < qwz::kValueFields; ++field) {
    const qwz::PlanValue &v = plan.value[field];
    plan.constant[field] = static_cast<ub4>(v.constant);
    if (!v.from_text) continue;
    if (v.count > 9 || plan.pairs + (v.count + 1u) / 2 > qwz::kPlanMaxPairs) return;
    const auto mult = static_cast<ub4>(v.mult);
    for (std::size_t i = 0; i < v.count; i += 2) {
      const ub4 w0 = static_cast<ub4>(kPow10[v.count - 1 - i]) * mult;
      const ub4 w1 = i + 1 < v.count ? static_cast<ub4>(kPow10[v.count - 2 - i]) * mult : 0;
      plan.pair[plan.pairs++] = {static_cast<ub1>(field), static_cast<ub1>(v.pos + i), w0, w1};
    }
    if (field <= qwz::kValueSecond) plan.date_pairs = plan.pairs;
  }
  record_lanes(plan);
  plan.values_valid = 1;
}

// Each field of a recorded parse's value part, on a text of the same
// shape: the plan's constants, plus its digit pairs [from, to).
inline void add_pairs(const qwz::ParsePlan &plan, std::size_t from, std::size_t to,
                      const unsigned char *t, ub4 *field) {
  for (std::size_t k = from; k < to; ++k) {
    const qwz::PlanPair &p = plan.pair[k];
    std::uint16_t two;
    std::memcpy(&two, t + p.pos, 2);
    field[p.field] += ((two & 0xFFu) - '0') * p.w0 + ((two >> 8) - '0') * p.w1;
  }
}

// Four lanes of DateLanes: the two characters at each position, then
// their value. With each character's low nibble d0 (low byte) and d1,
// multiplying by 0x0A01 puts 10 * d0 + d1 in the lane's high byte; what
// reaches the next lane's low byte (at most 10 * 15 + 15, for the
// characters of an unread lane) carries no further, and is shifted out.
inline std::uint64_t lane_values(const unsigned char *t, const ub1 *pos) {
  std::uint64_t w = 0;
  for (std::size_t k = 0; k < 4; ++k) {
    std::uint16_t two;
    std::memcpy(&two, t + pos[k], 2);
    w |= std::uint64_t{two} << (16 * k);
  }
  return (((w & 0x0F0F0F0F0F0F0F0Full) * 0x0A01) >> 8) & 0x00FF00FF00FF00FFull;
}

// A date's fields as two words of 16-bit lanes: month, day, hour and
// minute (a date's layout from its month on); the year's hundreds, the
// year's rest and the second. Bit 63 of `high` is set when the words hold
// a date read (the lane under it is never one).
struct DateWords {
  std::uint64_t low, high;
};
constexpr std::uint64_t kDateWordsRead = std::uint64_t{1} << 63;

inline void date_from_words(const DateWords &w, QWZDate &date) {
  std::memcpy(reinterpret_cast<unsigned char *>(&date) + offsetof(QWZDate, month), &w.low, 8);
  date.year = static_cast<sb2>((w.high & 0xFFFF) * 100 + ((w.high >> 16) & 0xFFFF));
  date.second = static_cast<ub2>(w.high >> 32);
}

// A date from its lanes (see DateLanes).
inline void date_from_lanes(const qwz::DateLanes &l, const unsigned char *t, QWZDate &date) {
  static_assert(offsetof(QWZDate, day) == offsetof(QWZDate, month) + 2 &&
                offsetof(QWZDate, hour) == offsetof(QWZDate, month) + 4 &&
                offsetof(QWZDate, minute) == offsetof(QWZDate, month) + 6);
  date_from_words({(lane_values(t, l.pos) & l.keep[0]) + l.constant[0],
                   (lane_values(t, l.pos + 4) & l.keep[1]) + l.constant[1]},
                  date);
}

#if defined(__x86_64__)
// For a text of 16 to 32 characters on a processor that shuffles bytes:
// the date fields of the plan value_plan would give (the first whose shape
// the text has, usable for a date), when they come through BlockPlan's
// lanes, with that plan in *found. Words without kDateWordsRead leave the
// text to the other paths, which then find the same plan or none. The
// words come back in registers, not through memory just stored.
[[gnu::target("ssse3")]] DateWords date_through_blocks(const qwz::CompiledFormat &format,
                                                       const unsigned char *t, std::size_t n,
                                                       const qwz::ParsePlan *&found) {
  const auto load = [](const void *p) { return _mm_loadu_si128(static_cast<const __m128i *>(p)); };
  const auto at = [](const ub1 *p) {
    return _mm_load_si128(reinterpret_cast<const __m128i *>(p));
  };
  const __m128i block[2] = {load(t), load(t + n - 16)};
  for (std::size_t i = 0; i < 2; ++i) {
    const qwz::ParsePlan &plan = format.plan[i];
    if (!plan.valid || plan.length != n) continue;
    const qwz::BlockPlan &b = plan.blocks;
    __m128i bad = _mm_setzero_si128();
    for (std::size_t k = 0; k < 2; ++k) {
      const __m128i x = block[k];
      bad = _mm_or_si128(bad, _mm_xor_si128(_mm_and_si128(x, at(b.mask[k])), at(b.value[k])));
      bad = _mm_or_si128(bad, _mm_and_si128(_mm_add_epi8(x, at(b.carry[k])), at(b.over[k])));
    }
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(bad, _mm_setzero_si128())) != 0xFFFF) continue;
    if (!plan.values_valid || plan.clock_needed || !b.lanes) return {};
    // Each lane's two characters, their digits, then 10 * first + second.
    const __m128i chars = _mm_or_si128(_mm_shuffle_epi8(block[0], at(b.from[0])),
                                       _mm_shuffle_epi8(block[1], at(b.from[1])));
    const __m128i digits = _mm_and_si128(chars, _mm_set1_epi8(0x0F));
    __m128i v = _mm_maddubs_epi16(digits, _mm_set1_epi16(0x010A));
    v = _mm_add_epi16(_mm_and_si128(v, at(reinterpret_cast<const ub1 *>(b.keep))),
                      at(reinterpret_cast<const ub1 *>(b.constant)));
    found = &plan;
    return {static_cast<std::uint64_t>(_mm_cvtsi128_si64(v)),
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(v, v))) |
                kDateWordsRead};
  }
  return {};
}
#endif

// The numbers of a recorded parse, on a text of the same shape.
void replay_values(const qwz::ParsePlan &plan, const unsigned char *t, qwz::FieldValues &out) {
  ub4 v[qwz::kValueFields];
  std::memcpy(v, plan.constant, sizeof v);
  // Fields other than the fraction are exact in 32 bits, sign included.
  const auto exact = [&](int field) {
    return static_cast<long>(static_cast<std::int32_t>(v[field]));
  };
  if (std::endian::native == std::endian::little && plan.lanes.usable) {
    QWZDate d;
    date_from_lanes(plan.lanes, t, d);
    add_pairs(plan, plan.date_pairs, plan.pairs, t, v);
    out.year = d.year;
    out.month = d.month;
    out.day = d.day;
    out.hour = d.hour;
    out.minute = d.minute;
    out.second = d.second;
  } else {
    add_pairs(plan, 0, plan.pairs, t, v);
    out.year = exact(qwz::kValueYear);
    out.month = exact(qwz::kValueMonth);
    out.day = exact(qwz::kValueDay);
    out.hour = exact(qwz::kValueHour);
    out.minute = exact(qwz::kValueMinute);
    out.second = exact(qwz::kValueSecond);
  }
  out.fraction_ns = v[qwz::kValueFraction];
  out.tz_hour = exact(qwz::kValueTzHour);
  out.tz_minute = exact(qwz::kValueTzMinute);
  out.tz_given = plan.tz_given != 0;
  out.tz_hour_negative = plan.tz_hour_negative != 0;
}

// A date's fields straight from a text of a recorded shape, each cut to the
// field's 16 bits as a conversion of the number would.
inline void replay_date(const qwz::ParsePlan &plan, const unsigned char *t, QWZDate &date) {
  if constexpr (std::endian::native == std::endian::little) {
    if (plan.lanes.usable) {
      date_from_lanes(plan.lanes, t, date);
      return;
    }
  }
  ub4 v[qwz::kValueSecond + 1];
  std::memcpy(v, plan.constant, sizeof v);
  add_pairs(plan, 0, plan.date_pairs, t, v);
  date.year = static_cast<sb2>(v[qwz::kValueYear]);
  date.month = static_cast<ub2>(v[qwz::kValueMonth]);
  date.day = static_cast<ub2>(v[qwz::kValueDay]);
  date.hour = static_cast<ub2>(v[qwz::kValueHour]);
  date.minute = static_cast<ub2>(v[qwz::kValueMinute]);
  date.second = static_cast<ub2>(v[qwz::kValueSecond]);
}

// Fills what the text left empty: year and month from the local clock
// (only when one of them is missing), the rest with fixed texts.
bool apply_defaults(datetime_fields &f, bool calendar_defaults) {
  if (f.year[0] == '\0' || f.month[0] == '\0') {
    if (calendar_defaults) {
      struct tm now;
      if (!local_time_now(&now)) return false;
      if (f.year[0] == '\0') qwz::decimal_text(now.tm_year + 1900L, 0, f.year, sizeof f.year);
      if (f.month[0] == '\0') qwz::decimal_text(now.tm_mon + 1L, 0, f.month, sizeof f.month);
    }
  }
  set_default(f.day, "01");
  set_default(f.hour, "00");
  set_default(f.minute, "00");
  set_default(f.second, "00");
  set_default(f.fraction, "000000");
  set_default(f.tz_hour, "+00");
  set_default(f.tz_minute, "00");
  return true;
}

template <class Tokens>
bool parse_fields(const char *text, std::size_t n, const Tokens &tokens, datetime_fields &f,
                  bool calendar_defaults) {
  NoRecord none;
  return read_fields(text, n, tokens, f, none) && apply_defaults(f, calendar_defaults);
}

// The parser, recording a plan for the text's shape when it succeeds.
[[gnu::noinline]] bool parse_and_record(const char *text, std::size_t n,
                                        const qwz::CompiledFormat &format, datetime_fields &f,
                                        bool calendar_defaults) {
  const auto *t = reinterpret_cast<const unsigned char *>(text);
  PlanRecorder rec;
  if (!read_fields(text, n, format.span(), f, rec)) return false;
  if (rec.complete) {
    qwz::ParsePlan &slot = format.plan[format.next_plan];
    format.next_plan = static_cast<ub1>((format.next_plan + 1) % 2);
    slot = rec.plan;
    slot.length = static_cast<ub1>(n);
    build_shape(slot, t, n);
    record_values(slot, t, f.tz_given == 1);
    slot.valid = 1;
  }
  return apply_defaults(f, calendar_defaults);
}

// Parses under a compiled format, through one of its plans when the text
// has the shape of one, else the parser (recording a plan when it succeeds).
bool parse_compiled(const char *text, std::size_t n, const qwz::CompiledFormat &format,
                    datetime_fields &f, bool calendar_defaults) {
  if (n > qwz::kPlanMaxText) return parse_fields(text, n, format.span(), f, calendar_defaults);
  const auto *t = reinterpret_cast<const unsigned char *>(text);
  if (const qwz::ParsePlan *plan = matching_plan(format, t, n)) {
    replay(*plan, t, n, f);
    return apply_defaults(f, calendar_defaults);
  }
  return parse_and_record(text, n, format, f, calendar_defaults);
}

// The plan whose numbers can be read straight from the text: one of the
// text's shape whose value part applies (and that needs no clock when the
// caller takes a missing year or month from it). NULL leaves the text to
// the record.
inline const qwz::ParsePlan *value_plan(const char *text, std::size_t n,
                                        const qwz::CompiledFormat &format,
                                        bool calendar_defaults) {
  if (n > qwz::kPlanMaxText) return nullptr;
  const qwz::ParsePlan *plan =
      matching_plan(format, reinterpret_cast<const unsigned char *>(text), n);
  if (!plan || !plan->values_valid || (plan->clock_needed && calendar_defaults)) return nullptr;
  return plan;
}

template <std::size_t N>
long slot_value(const char (&slot)[N]) {
  const auto digit = [&](std::size_t i) { return is_digit(static_cast<unsigned char>(slot[i])); };
  // Two digits and the end (four for a year) are by far the most common.
  if (digit(0) && digit(1)) {
    if (slot[2] == '\0') return (slot[0] - '0') * 10 + (slot[1] - '0');
    if constexpr (N >= 5)
      if (digit(2) && digit(3) && slot[4] == '\0')
        return ((slot[0] - '0') * 10 + (slot[1] - '0')) * 100 + (slot[2] - '0') * 10 +
               (slot[3] - '0');
  }
  return qwz::decimal_value(slot, N);
}

void values_to_date(const qwz::FieldValues &v, QWZDate *date) {
  date->year = static_cast<sb2>(v.year);
  date->month = static_cast<ub2>(v.month);
  date->day = static_cast<ub2>(v.day);
  date->hour = static_cast<ub2>(v.hour);
  date->minute = static_cast<ub2>(v.minute);
  date->second = static_cast<ub2>(v.second);
}

// Nanoseconds from the fraction text: value times 10^(9 - characters). The
// parser's trailing '0' cancels out ("1230" is 123000000). Exact in 64-bit
// integers for every text the slot can hold; wraps to 32 bits like the
// field does.
ub4 fraction_nanoseconds(const datetime_fields &f) {
  const std::size_t n = strnlen(f.fraction, sizeof f.fraction);
  const std::int64_t v = slot_value(f.fraction);
  return static_cast<ub4>(v * kPow10[9 - (n > 9 ? 9 : n)]);
}

void report_format_fault(QWZError *errhp) {
  // The date family's setter, for datetimes too.
  _QWZSetDateErrorMsg(ERRSRC_DRIVER, KIND_FORMAT_STRING, DETAIL_NONE, PARAM_NONE, errhp, "");
}

}  // namespace

namespace qwz {

namespace {

// What both entries do before parsing: the text read to its NUL, trimmed
// and cut; the format likewise, refused at 128 characters as given (before
// trimming and cutting), then translated and checked. Returns the compiled
// format, or NULL when the call ends here (error_code is set to 5 when the
// format itself is at fault).
[[gnu::always_inline]] inline const CompiledFormat *prepare(const QWZText *text,
                                                            std::size_t text_length,
                                                            const QWZText *format,
                                                            std::size_t format_length,
                                                            TrimmedText &t, sb4 &error_code) {
  if (!text || !format) return nullptr;
  const char *txt = reinterpret_cast<const char *>(text);
  const char *fmt = reinterpret_cast<const char *>(format);
  const std::size_t fmt_full = std::strlen(fmt);
  if (fmt_full > kMaxFormatLength) return nullptr;
  t = trim_and_cut(txt, std::strlen(txt), text_length);
  const TrimmedText f = trim_and_cut(fmt, fmt_full, format_length);
  const CompiledFormat *tokens = compile_format_fast(f.begin, f.length);
  if (tokens && tokens->fault != FormatFault::none) {
    error_code = kFormatFaultCode;
    return nullptr;
  }
  return tokens;
}

// The numbers of a text that has no usable plan: through the record.
[[gnu::noinline]] bool values_through_record(const TrimmedText &t, const CompiledFormat &tokens,
                                             FieldValues &values, bool calendar_defaults) {
  datetime_fields fields;
  std::memset(&fields, 0, sizeof fields);
  const bool ok = parse_compiled(t.begin, t.length, tokens, fields, calendar_defaults);
  values_from_fields(fields, values);
  return ok;
}

}  // namespace

bool text_to_fields(const QWZText *text, std::size_t text_length, const QWZText *format,
                    std::size_t format_length, datetime_fields &fields, sb4 &error_code,
                    bool calendar_defaults) {
  TrimmedText t{};
  const CompiledFormat *tokens =
      prepare(text, text_length, format, format_length, t, error_code);
  if (!tokens) return false;
  // The record is cleared and filled in place: it holds what was read
  // whether or not the text matched.
  std::memset(&fields, 0, sizeof fields);
  return parse_compiled(t.begin, t.length, *tokens, fields, calendar_defaults);
}

void values_from_fields(const datetime_fields &f, FieldValues &v) {
  v.year = slot_value(f.year);
  v.month = slot_value(f.month);
  v.day = slot_value(f.day);
  v.hour = slot_value(f.hour);
  v.minute = slot_value(f.minute);
  v.second = slot_value(f.second);
  v.fraction_ns = fraction_nanoseconds(f);
  v.tz_hour = slot_value(f.tz_hour);
  v.tz_minute = slot_value(f.tz_minute);
  v.tz_given = f.tz_given == 1;
  v.tz_hour_negative = f.tz_hour[0] == '-';
}

bool text_to_values(const QWZText *text, std::size_t text_length, const QWZText *format,
                    std::size_t format_length, FieldValues &values, sb4 &error_code,
                    bool calendar_defaults) {
  TrimmedText t{};
  const CompiledFormat *tokens =
      prepare(text, text_length, format, format_length, t, error_code);
  if (!tokens) return false;
  if (const ParsePlan *plan = value_plan(t.begin, t.length, *tokens, calendar_defaults)) {
    replay_values(*plan, reinterpret_cast<const unsigned char *>(t.begin), values);
    return true;
  }
  return values_through_record(t, *tokens, values, calendar_defaults);
}

namespace {

// text_to_date's work, inline where the public call reads a date.
[[gnu::always_inline]] inline bool read_date(const QWZText *text, std::size_t text_length,
                                             const QWZText *format, std::size_t format_length,
                                             QWZDate &date, sb4 &error_code) {
  TrimmedText t{};
  const CompiledFormat *tokens =
      prepare(text, text_length, format, format_length, t, error_code);
  if (!tokens) return false;
#if defined(__x86_64__)
  if (kByteShuffles && t.length >= kBlockTextMin && t.length <= kBlockTextMax) {
    const ParsePlan *found = nullptr;
    const DateWords w = date_through_blocks(
        *tokens, reinterpret_cast<const unsigned char *>(t.begin), t.length, found);
    if (w.high & kDateWordsRead) {
      date_from_words(w, date);
      return true;
    }
  }
#endif
  if (const ParsePlan *plan = value_plan(t.begin, t.length, *tokens, true)) {
    replay_date(*plan, reinterpret_cast<const unsigned char *>(t.begin), date);
    return true;
  }
  FieldValues v;
  if (!values_through_record(t, *tokens, v, true)) return false;
  values_to_date(v, &date);
  return true;
}

}  // namespace

bool text_to_date(const QWZText *text, std::size_t text_length, const QWZText *format,
                  std::size_t format_length, QWZDate &date, sb4 &error_code) {
  return read_date(text, text_length, format, format_length, date, error_code);
}

// date_from_text's work, inline in the public call.
[[gnu::always_inline]] inline sword date_in(QWZError *errhp, const QWZText *text,
                                            std::size_t text_length, const QWZText *format,
                                            std::size_t format_length, QWZDate *date) {
  if (!date) return -1;
  sb4 code = 0;
  if (!read_date(text, text_length, format, format_length, *date, code)) {
    if (code == kFormatFaultCode) report_format_fault(errhp);
    return -1;
  }
  return 1;
}

int datetime_through_plan(const QWZText *text, std::size_t text_length, const QWZText *format,
                          std::size_t format_length, QWZDateTime &datetime) {
  TrimmedText t{};
  sb4 code = 0;
  const CompiledFormat *tokens = prepare(text, text_length, format, format_length, t, code);
  if (!tokens) return 0;
  const auto *u = reinterpret_cast<const unsigned char *>(t.begin);
  QWZDate d;
  const ParsePlan *plan = nullptr;
  bool date_read = false;
#if defined(__x86_64__)
  if (kByteShuffles && t.length >= kBlockTextMin && t.length <= kBlockTextMax) {
    const DateWords w = date_through_blocks(*tokens, u, t.length, plan);
    date_read = (w.high & kDateWordsRead) != 0;
    if (date_read) date_from_words(w, d);
    else plan = nullptr;
  }
#endif
  if (!plan) plan = value_plan(t.begin, t.length, *tokens, true);
  if (!plan) return 0;
  if (plan->tz_given && !datetime_has_zone(datetime.hdr.type)) return -1;
  if (!date_read) replay_date(*plan, u, d);
  // The fraction and the zone: the pairs after the date's.
  ub4 v[kValueFields];
  std::memcpy(v, plan->constant, sizeof v);
  add_pairs(*plan, plan->date_pairs, plan->pairs, u, v);
  set_datetime_date(&datetime, d);
  datetime.fraction = v[kValueFraction];
  datetime.tz_hour = static_cast<sb1>(v[kValueTzHour]);
  datetime.tz_minute = static_cast<sb1>(v[kValueTzMinute]);
  return 1;
}

}  // namespace qwz

extern "C" {

int char_to_datetime(const char *text, const qwz_token *tokens, datetime_fields *fields) {
  if (!text || !fields) return 0;
  return parse_fields(text, std::strlen(text), qwz::TokenList(tokens), *fields, true) ? 1 : 0;
}

int qwz_char_to_datetime(const QWZText *text, std::size_t text_length, const QWZText *format,
                         std::size_t format_length, datetime_fields *fields, sword,
                         sb4 *error_code) {
  // The record is written whenever parsing ran, matched or not.
  datetime_fields scratch;
  sb4 code = error_code ? *error_code : 0;
  const bool ok = qwz::text_to_fields(text, text_length, format, format_length,
                                      fields ? *fields : scratch, code, true);
  if (error_code) *error_code = code;
  return ok ? 1 : 0;
}

sword date_from_text(QWZError *errhp, const QWZText *text, std::size_t text_length,
                     const QWZText *format, std::size_t format_length, QWZDate *date) {
  return qwz::date_in(errhp, text, text_length, format, format_length, date);
}

sword datetime_from_text(QWZError *errhp, const QWZText *text, std::size_t text_length,
                         const QWZText *format, std::size_t format_length,
                         QWZDateTime *datetime) {
  if (!datetime) return -1;
  switch (qwz::datetime_through_plan(text, text_length, format, format_length, *datetime)) {
    case 1: return 1;
    case -1:
      _QWZSetFrontEndErrorHandle(errhp, kDateFormatNotRecognizedText, kDateFormatNotRecognized);
      return -1;
    default: break;
  }
  qwz::FieldValues v;
  sb4 code = 0;
  const bool ok = qwz::text_to_values(text, text_length, format, format_length, v, code, true);
  if (!ok && code == qwz::kFormatFaultCode) {
    report_format_fault(errhp);
    return -1;
  }
  // A text that did not match still goes on, with the fields as read; the
  // caller's validity check then judges the value.
  if (v.tz_given && !qwz::datetime_has_zone(datetime->hdr.type)) {
    _QWZSetFrontEndErrorHandle(errhp, kDateFormatNotRecognizedText, kDateFormatNotRecognized);
    return -1;
  }
  QWZDate d;
  values_to_date(v, &d);
  qwz::set_datetime_date(datetime, d);
  datetime->fraction = v.fraction_ns;
  // The minute keeps its own sign here, even under a negative zone hour.
  datetime->tz_hour = static_cast<sb1>(v.tz_hour);
  datetime->tz_minute = static_cast<sb1>(v.tz_minute);
  return ok ? 1 : 0;
}

sword append_timezone_from_text(QWZError *errhp, const QWZText *text, std::size_t text_length,
                                const QWZText *format, std::size_t format_length,
                                QWZDateTime *datetime) {
  if (!datetime) return -1;
  qwz::FieldValues v;
  sb4 code = 0;
  // Only the zone is read, so a missing year or month needs no clock.
  if (!qwz::text_to_values(text, text_length, format, format_length, v, code, false)) {
    if (code == qwz::kFormatFaultCode) report_format_fault(errhp);
    return -1;
  }
  datetime->tz_hour = static_cast<sb1>(v.tz_hour);
  // The minute takes the zone hour's sign.
  datetime->tz_minute = static_cast<sb1>(v.tz_hour_negative ? -v.tz_minute : v.tz_minute);
  return 0;
}

QWZ_API sword QWZDateFromText(QWZError *errhp, const QWZtext *date_str, ub4 d_str_length,
                              const QWZtext *fmt, ub1 fmt_length, const QWZtext *lang_name,
                              ub4 lang_length, QWZDate *date) {
  const qwz::TracedText text_arg(date_str, d_str_length);
  const qwz::TracedText fmt_arg(fmt, fmt_length);
  const qwz::TracedText lang_arg(lang_name, lang_length);
  return qwz::run_frame(
      API_DATE_FROM_TEXT, errhp,
      [&]() -> Outcome {
        if (!date_str) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 2);
        if (!date) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 8);
        if (!fmt) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 4);
        if (fmt_length == 0) return date_error(errhp, KIND_FORMAT_STRING, DETAIL_NONE, PARAM_NONE);
        if (d_str_length == 0) return date_error(errhp, KIND_DATE_FORMAT, DETAIL_NONE, PARAM_NONE);
        if (qwz::date_in(errhp, date_str, d_str_length, fmt, fmt_length, date) == -1)
          return done(QWZ_ERROR);
        if (qwz::date_flags(*date) != 0)
          return done(date_error(errhp, KIND_DATE_FORMAT, DETAIL_NONE, PARAM_NONE).status);
        return done(0);
      },
      errhp, text_arg.arg(), d_str_length, fmt_arg.arg(), fmt_length, lang_arg.arg(), lang_length,
      date);
}

QWZ_API sword QWZDateTimeFromText(void *hndl, QWZError *errhp, QWZText *date_str,
                                  size_t dstr_length, QWZText *fmt, ub1 fmt_length,
                                  QWZText *lang_name, size_t lang_length,
                                  QWZDateTime *datetime) {
  const qwz::TracedText text_arg(date_str, dstr_length);
  const qwz::TracedText fmt_arg(fmt, fmt_length);
  const qwz::TracedText lang_arg(lang_name, lang_length);
  return qwz::run_frame(
      API_DATETIME_FROM_TEXT, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_datetime_param(errhp, datetime, 3)) return refuse(r);
        if (!date_str) return datetime_error(errhp, KIND_NULL_PARAM, qwz::kDatetimeParamDetail, 4);
        // The format's NULL message prints 4 as well.
        if (!fmt) return datetime_error(errhp, KIND_NULL_PARAM, qwz::kDatetimeParamDetail, 4);
        if (dstr_length == SIZE_MAX)
          return qwz::front_end_error(errhp, kStringTooLongText, kStringTooLong);
        if (datetime_from_text(errhp, date_str, dstr_length, fmt, fmt_length, datetime) == -1)
          return done(QWZ_ERROR);
        ub4 valid = 0;
        const sword status = qwz::nested_datetime_check_checked(hndl, errhp, datetime, &valid);
        if (valid != 0)
          return done(
              datetime_error(errhp, KIND_INVALID_VALUE, DETAIL_DATE_FORMAT, 3).status);
        return done(status);
      },
      hndl, errhp, text_arg.arg(), dstr_length, fmt_arg.arg(), fmt_length, lang_arg.arg(),
      lang_length, datetime);
}

}  // extern "C"
