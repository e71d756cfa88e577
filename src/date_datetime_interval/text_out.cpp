// Date and datetime to text: the value goes into a field-text record, the
// format is translated and checked, and the formatter assembles the text
// piece by piece. Public QWZDateToText and QWZDateTimeToText.
//
// A value whose fields print at their usual widths skips the record: each
// cached format carries a template writer, built on first use by following
// the formatter token by token, that drops the digits into a fixed text.
//
// Field texts are written with bounded decimal conversions: a text longer
// than its slot keeps the slot's first characters, which are all the
// formatter ever reads from month to second and from the zone; a year text
// that fills its whole slot has no terminator, reads as too wide and fails
// both year keywords, as any year of six characters must.
#include "date_datetime_interval/calendar.h"
#include "date_datetime_interval/datetime_record.h"
#include "date_datetime_interval/diagnostics.h"
#include "date_datetime_interval/format_model.h"
#include "date_datetime_interval/frame.h"
#include "date_datetime_interval/nested.h"
#include "date_datetime_interval/text_out.h"
#include "handles/handles.h"

#include <qwz/qwz.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

using qwz::date_error;
using qwz::datetime_error;
using qwz::done;
using qwz::Outcome;
using qwz::refuse;

constexpr ub4 API_DATE_TO_TEXT = 138;
constexpr ub4 API_DATETIME_TO_TEXT = 149;

constexpr sb4 kDateInputPtr = 1;

// The record with eight bytes of zeros behind it, so a slot (or the
// formatter's piece) can always be moved as one 8-byte word.
struct PaddedFields {
  char bytes[sizeof(datetime_fields) + 8];
};
// Spare room behind the result for the same 8-byte moves.
constexpr std::size_t kResultRoom = qwz::kWorkBufferSize + 8;

// Length of the text at p (at least 8 readable bytes), at most `cap` (<= 8).
inline std::size_t bounded_length(const char *p, std::size_t cap) {
  std::uint64_t w;
  std::memcpy(&w, p, 8);
  constexpr std::uint64_t ones = ~std::uint64_t{0} / 255;
  const std::uint64_t zero = (w - ones) & ~w & (ones * 128);  // high bit of each NUL byte
  const std::size_t n = zero ? static_cast<std::size_t>(__builtin_ctzll(zero)) / 8 : 8;
  return n < cap ? n : cap;
}

// Appends a piece of at most 8 characters (with 8 readable bytes at src).
inline void append(char *out, std::size_t &len, const char *src, std::size_t n) {
  if (n > qwz::kWorkBufferSize - 1 - len) n = qwz::kWorkBufferSize - 1 - len;
  std::memcpy(out + len, src, 8);
  len += n;
}

template <class Tokens>
bool format_fields(char *out, std::size_t &out_len, const Tokens &tokens,
                   const datetime_fields &fields, bool stop_after_seconds) {
  PaddedFields padded{};
  std::memcpy(padded.bytes, &fields, sizeof fields);
  std::size_t len = 0;
  for (const auto &any : tokens) {
    const qwz::FormatToken &tok = qwz::format_token(any);
    const char *slot = padded.bytes + tok.offset;
    switch (tok.kind) {
      case qwz::FieldKind::literal: {
        if (!qwz::literal_is_valid(any)) return false;
        const char *text = nullptr;
        const std::size_t n = qwz::literal_text(any, text);
        for (std::size_t i = 0; i < n && len < qwz::kWorkBufferSize - 1; ++i) out[len++] = text[i];
        break;
      }
      case qwz::FieldKind::plain:
      case qwz::FieldKind::zone:
        // The slot's first `width` characters (hours always 24-hour).
        append(out, len, slot, bounded_length(slot, tok.width < tok.size ? tok.width : tok.size));
        break;
      case qwz::FieldKind::year: {
        // Only a year text of exactly the keyword's width.
        const std::size_t n = bounded_length(slot, tok.size);
        if (n != tok.width) return false;
        append(out, len, slot, n);
        break;
      }
      case qwz::FieldKind::fraction: {
        // From the nanosecond text written without leading zeros: its first
        // `width` characters, or its value zero-padded to `width` digits when
        // it is shorter.
        const std::size_t have = bounded_length(slot, tok.size);
        if (have < tok.width) {
          char piece[8] = {};
          std::size_t n =
              qwz::decimal_text(qwz::decimal_value(slot, have), tok.width, piece, sizeof piece);
          if (n > sizeof piece - 1) n = sizeof piece - 1;
          append(out, len, piece, n);
        } else {
          append(out, len, slot, tok.width);
        }
        break;
      }
      case qwz::FieldKind::ignored:
        break;
    }
    if (tok.seconds && stop_after_seconds) break;
  }
  out[len] = '\0';
  out_len = len;
  return len > 0;
}

// Builds the writer of a compiled format for values at their usual widths,
// following format_fields token by token: a date's fields print as four
// digits (year) and two (the rest), a datetime's zone hour as a sign and two
// digits; a date's fraction is "0" and its zone fields are empty.
// Where each pair value's two characters sit in the writer's sources (see
// write_blocks): the low source holds month, day, hour and minute, then
// the year's hundreds, the year's rest, second and zone hour; the high one
// the zone minute, then the fraction's digits (up to five, as six). Indexed
// as WritePair::value.
constexpr ub1 kPairSource[qwz::kWritePairValues] = {8, 10, 0, 2, 4, 6, 12, 14, 16};
constexpr ub1 kFractionSource = 18;

// The plan's blocks (see WritePlan), for a text and NUL of 16 bytes or more.
void build_blocks(qwz::WritePlan &plan) {
  plan.blocks = 0;
  const std::size_t n = plan.length + 1u;
  if (n < 8 || n > sizeof plan.holes) return;
  const std::size_t size = n >= 16 ? 16 : 8;
  const std::size_t blocks = (n + size - 1) / size;
  std::memset(plan.from_low, 0x80, sizeof plan.from_low);
  std::memset(plan.from_high, 0x80, sizeof plan.from_high);
  std::memset(plan.holes, 0, sizeof plan.holes);
  std::memcpy(plan.holes, plan.text, n);
  const auto take = [&](std::size_t at, std::size_t from) {
    plan.holes[at] = 0;
    for (std::size_t k = 0; k < blocks; ++k) {
      const std::size_t start = k + 1 < blocks ? size * k : n - size;
      if (at < start || at >= start + size) continue;
      if (from < 16) plan.from_low[k][at - start] = static_cast<ub1>(from);
      else plan.from_high[k][at - start] = static_cast<ub1>(from - 16);
    }
  };
  for (std::size_t i = 0; i < plan.pairs; ++i) {
    const qwz::WritePair &p = plan.pair[i];
    take(p.pos, kPairSource[p.value]);
    take(p.pos + 1u, kPairSource[p.value] + 1u);
  }
  // One fraction and one zone sign are written with the blocks; more of
  // either leave all of them to the loop over `other`.
  std::size_t fractions = 0, signs = 0;
  const qwz::WriteField *fraction = nullptr, *sign = nullptr;
  for (std::size_t i = 0; i < plan.others; ++i) {
    const qwz::WriteField &f = plan.field[plan.other[i]];
    if (f.source == qwz::WriteSource::fraction) ++fractions, fraction = &f;
    else ++signs, sign = &f;
  }
  plan.block_fraction = 0;
  plan.block_sign = 0xFF;
  plan.block_others = fractions <= 1 && signs <= 1 && (!fraction || fraction->width <= 5);
  if (plan.block_others) {
    if (fraction) {
      for (std::size_t j = 0; j < fraction->width; ++j)
        take(fraction->pos + j, kFractionSource + j);
      plan.block_fraction = fraction->width;
    }
    if (sign) plan.block_sign = sign->pos;
  }
  plan.block_size = static_cast<ub1>(size);
  plan.blocks = static_cast<ub1>(blocks);
}

void build_write_plan(const qwz::CompiledFormat &format, bool date, qwz::WritePlan &plan) {
  plan.state = 2;
  std::size_t len = 0, fields = 0;
  auto room = [&](std::size_t n) { return len + n <= qwz::kWritePlanMaxText; };
  auto field = [&](qwz::WriteSource source, std::size_t width) {
    if (fields == qwz::kWritePlanMaxFields || !room(width)) return false;
    plan.field[fields++] = {source, static_cast<ub1>(len), static_cast<ub1>(width)};
    std::memset(plan.text + len, '0', width);
    len += width;
    return true;
  };
  for (const qwz::FormatToken &tok : format.span()) {
    switch (tok.kind) {
      case qwz::FieldKind::literal:
        if (!room(1)) return;
        plan.text[len++] = tok.ch;
        break;
      case qwz::FieldKind::plain:
      case qwz::FieldKind::zone: {
        qwz::WriteSource source;
        std::size_t have = 2;  // the field's text
        switch (tok.id) {
          case qwz::KW_DD: source = qwz::WriteSource::day; break;
          case qwz::KW_HH: case qwz::KW_HH12: case qwz::KW_HH24: source = qwz::WriteSource::hour; break;
          case qwz::KW_MI: source = qwz::WriteSource::minute; break;
          case qwz::KW_MM: source = qwz::WriteSource::month; break;
          case qwz::KW_SS: source = qwz::WriteSource::second; break;
          case qwz::KW_TZH: source = qwz::WriteSource::tz_hour; have = date ? 0 : 3; break;
          case qwz::KW_TZM: source = qwz::WriteSource::tz_minute; have = date ? 0 : 2; break;
          default: return;
        }
        const std::size_t n = have < tok.width ? have : tok.width;
        if (n == 0) break;
        // Only whole field texts: a zone hour cut to its sign and one
        // digit is left to the general path.
        if (n != have) return;
        if (!field(source, n)) return;
        break;
      }
      case qwz::FieldKind::year:
        // Four digits pass YYYY only.
        if (tok.width != 4 || !field(qwz::WriteSource::year, 4)) return;
        break;
      case qwz::FieldKind::fraction:
        if (!field(qwz::WriteSource::fraction, tok.width)) return;
        break;
      case qwz::FieldKind::ignored:
        return;
    }
    if (tok.seconds && date) break;
  }
  if (len == 0) return;
  plan.text[len] = '\0';
  plan.length = static_cast<ub1>(len);
  plan.fields = static_cast<ub1>(fields);
  // The same fields as two-digit pairs, for the writer's uniform loop.
  plan.pairs = 0;
  plan.others = 0;
  auto pair = [&](std::size_t pos, unsigned value) {
    plan.pair[plan.pairs++] = {static_cast<ub1>(pos), static_cast<ub1>(value)};
  };
  for (std::size_t i = 0; i < fields; ++i) {
    const qwz::WriteField &f = plan.field[i];
    switch (f.source) {
      case qwz::WriteSource::year: pair(f.pos, 0); pair(f.pos + 2u, 1); break;
      case qwz::WriteSource::month: pair(f.pos, 2); break;
      case qwz::WriteSource::day: pair(f.pos, 3); break;
      case qwz::WriteSource::hour: pair(f.pos, 4); break;
      case qwz::WriteSource::minute: pair(f.pos, 5); break;
      case qwz::WriteSource::second: pair(f.pos, 6); break;
      case qwz::WriteSource::tz_hour:
        pair(f.pos + 1u, 7);
        plan.other[plan.others++] = static_cast<ub1>(i);
        break;
      case qwz::WriteSource::tz_minute: pair(f.pos, 8); break;
      case qwz::WriteSource::fraction: plan.other[plan.others++] = static_cast<ub1>(i); break;
    }
  }
  build_blocks(plan);
  plan.state = 1;
}

// The values a writer drops into its template.
struct WriteValues {
  unsigned v[9];  // indexed by WriteSource; the zone hour without its sign
  bool tz_negative;
  ub4 fraction_ns;
};

// n / 10^k for a 32-bit n and k of 1 to 9, by one multiplication: with
// M = floor(2^64 / d) + 1 the high word of n * M is floor(n / d) exactly
// whenever n * d < 2^64. (A switch over the ten constant divisions is
// turned by the compiler into a table of divisors and a divide
// instruction, one of the slowest there are.)
constexpr std::uint64_t reciprocal(std::uint64_t d) { return ~std::uint64_t{0} / d + 1; }
constexpr std::uint64_t kReciprocal[10] = {
    0,                       reciprocal(10),        reciprocal(100),
    reciprocal(1000),        reciprocal(10000),     reciprocal(100000),
    reciprocal(1000000),     reciprocal(10000000),  reciprocal(100000000),
    reciprocal(1000000000)};
inline ub4 divide_by_power_of_ten(ub4 n, std::size_t k) {
  if (k == 0) return n;
  return static_cast<ub4>((static_cast<unsigned __int128>(n) * kReciprocal[k]) >> 64);
}
// n / 100 and n % 100 for n below 43,699 (a year, a pair of pairs).
inline unsigned hundreds(unsigned n) { return (n * 5243u) >> 19; }

// The first `width` digits of the nanosecond count's own text, or the
// count itself when that text is shorter (as format_fields reads it).
[[gnu::always_inline]] inline unsigned fraction_digits(ub4 ns, std::size_t width) {
  static constexpr ub4 kPow10[10] = {1,      10,      100,      1000,      10000,
                                     100000, 1000000, 10000000, 100000000, 1000000000};
  // Decimal digits of ns: from its bit width (1233 / 4096 is just above
  // log10 2), less one when ns is below the power that estimate reaches.
  const unsigned estimate = (static_cast<unsigned>(std::bit_width(ns)) * 1233u) >> 12;
  const std::size_t digits = ns == 0 ? 1 : estimate + (ns >= kPow10[estimate] ? 1u : 0u);
  if (digits < width) return ns;
  return divide_by_power_of_ten(ns, digits - width);
}

// Writes through the plan into out (which has room for plan.length + 1):
// the template, every two-digit pair, then the zone hour's sign and the
// fraction when the plan has them.
// n bytes (1 to 72) from src to out, in a few overlapping moves of eight
// or sixteen bytes instead of a call: no byte outside out[0, n) is written.
inline void copy_template(char *out, const char *src, std::size_t n) {
  const auto move = [&](std::size_t at, std::size_t size) {
    std::memcpy(out + at, src + at, size);
  };
  if (n >= 16) {
    for (std::size_t at = 0; at + 16 < n; at += 16) move(at, 16);
    move(n - 16, 16);
  } else if (n >= 8) {
    move(0, 8);
    move(n - 8, 8);
  } else {
    for (std::size_t at = 0; at < n; ++at) out[at] = src[at];
  }
}

// Four values of 0 to 99 in 16-bit lanes as their two characters each,
// tens first: (v * 103) >> 10 is v / 10 for every such v, and no lane's
// product reaches the next.
inline std::uint64_t lane_characters(std::uint64_t v) {
  const std::uint64_t tens = ((v * 103) >> 10) & 0x000F000F000F000Full;
  return (tens | ((v - tens * 10) << 8)) + 0x3030303030303030ull;
}

#if defined(__x86_64__)
// The template and every pair, a block (of 16 or 8 bytes) at a time: each block
// is its holes plus the pair characters its two shuffles pick.
[[gnu::target("ssse3")]] void write_blocks(const qwz::WritePlan &plan, std::uint64_t low0,
                                           std::uint64_t low1, std::uint64_t high, char *out) {
  const __m128i low = _mm_set_epi64x(static_cast<long long>(low1), static_cast<long long>(low0));
  const __m128i high_source = _mm_cvtsi64_si128(static_cast<long long>(high));
  const std::size_t n = plan.length + 1u;
  const std::size_t size = plan.block_size;
  for (std::size_t k = 0; k < plan.blocks; ++k) {
    const std::size_t at = k + 1u < plan.blocks ? size * k : n - size;
    const auto mask = [](const ub1 *m) {
      return _mm_load_si128(reinterpret_cast<const __m128i *>(m));
    };
    const __m128i digits = _mm_or_si128(_mm_shuffle_epi8(low, mask(plan.from_low[k])),
                                        _mm_shuffle_epi8(high_source, mask(plan.from_high[k])));
    auto *to = reinterpret_cast<__m128i *>(out + at);
    const auto *from = reinterpret_cast<const __m128i *>(plan.holes + at);
    if (size == 16) _mm_storeu_si128(to, _mm_or_si128(digits, _mm_loadu_si128(from)));
    else _mm_storel_epi64(to, _mm_or_si128(digits, _mm_loadl_epi64(from)));
  }
}
#endif

[[gnu::always_inline]] inline void write_through_plan(const qwz::WritePlan &plan,
                                                      const WriteValues &w, char *out) {
#if defined(__x86_64__)
  if (plan.blocks != 0 && qwz::kByteShuffles) {
    const auto lanes = [](std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint64_t d) {
      return lane_characters(a | b << 16 | c << 32 | d << 48);
    };
    std::uint64_t fraction = 0;
    if (plan.block_fraction != 0) {
      // The fraction's digits as the first of six: three more pairs.
      static constexpr ub4 kToSix[6] = {0, 100000, 10000, 1000, 100, 10};
      const ub4 six = fraction_digits(w.fraction_ns, plan.block_fraction) *
                      kToSix[plan.block_fraction];
      const unsigned four = divide_by_power_of_ten(six, 2), two = hundreds(four);
      fraction = std::uint64_t{two} << 16 | std::uint64_t{four - 100 * two} << 32 |
                 std::uint64_t{six - 100 * four} << 48;
    }
    const unsigned century = hundreds(w.v[0]);
    write_blocks(plan, lanes(w.v[1], w.v[2], w.v[3], w.v[4]),
                 lanes(century, w.v[0] - 100 * century, w.v[5], w.v[6]),
                 lane_characters(w.v[7] | fraction), out);
    if (plan.block_others) {
      if (plan.block_sign != 0xFF) out[plan.block_sign] = w.tz_negative ? '-' : '+';
      return;
    }
  } else
#endif
  {
    const unsigned pair_value[qwz::kWritePairValues] = {w.v[0] / 100, w.v[0] % 100, w.v[1], w.v[2],
                                                        w.v[3],       w.v[4],       w.v[5], w.v[6],
                                                        w.v[7]};
    copy_template(out, plan.text, plan.length + 1u);
    for (std::size_t i = 0; i < plan.pairs; ++i) {
      const qwz::WritePair &p = plan.pair[i];
      std::memcpy(out + p.pos, qwz::kDigitPairs.text + 2 * pair_value[p.value], 2);
    }
  }
  for (std::size_t i = 0; i < plan.others; ++i) {
    const qwz::WriteField &f = plan.field[plan.other[i]];
    char *at = out + f.pos;
    if (f.source == qwz::WriteSource::tz_hour) {
      at[0] = w.tz_negative ? '-' : '+';
    } else if (f.source == qwz::WriteSource::fraction) {
      // At most five digits: pairs from the back, then a single one.
      unsigned d = fraction_digits(w.fraction_ns, f.width);
      std::size_t k = f.width;
      for (; k >= 2; k -= 2, d /= 100)
        std::memcpy(at + k - 2, qwz::kDigitPairs.text + 2 * (d % 100), 2);
      if (k == 1) at[0] = static_cast<char>('0' + d % 10);
    }
  }
}

// Writes a value whose fields are at their usual widths straight into the
// caller's buffer, when the format has a writer. Returns false to leave the
// call to the general path, which gives the same text.
template <bool kDateTime>
[[gnu::always_inline]] inline bool write_fast(const QWZDate &d, const QWZDateTime *dt,
                                              const QWZtext *format, std::size_t format_length,
                                              QWZtext *buffer, const ub4 *buffer_size,
                                              sb4 &error_code, sword &status) {
  if (!format || !buffer || !buffer_size) return false;
  if (d.year < 0 || d.year > 9999 || d.month > 99 || d.day > 99 || d.hour > 99 || d.minute > 99 ||
      d.second > 99)
    return false;
  WriteValues w{{static_cast<unsigned>(d.year), d.month, d.day, d.hour, d.minute, d.second, 0, 0,
                 0},
                false,
                0};
  if constexpr (kDateTime) {
    if (dt->tz_hour < -99 || dt->tz_hour > 99 || dt->tz_minute < -99 || dt->tz_minute > 99)
      return false;
    w.tz_negative = dt->tz_hour < 0;
    w.v[6] = static_cast<unsigned>(dt->tz_hour < 0 ? -dt->tz_hour : dt->tz_hour);
    w.v[7] = static_cast<unsigned>(dt->tz_minute < 0 ? -dt->tz_minute : dt->tz_minute);
    w.fraction_ns = dt->fraction;
  }
  const char *fmt = reinterpret_cast<const char *>(format);
  const std::size_t full = std::strlen(fmt);
  if (full > qwz::kMaxFormatLength) return false;
  const qwz::TrimmedText f = qwz::trim_and_cut(fmt, full, format_length);
  const qwz::CompiledFormat *tokens = qwz::compile_format_fast(f.begin, f.length);
  if (!tokens || tokens->fault != qwz::FormatFault::none) return false;
  qwz::WritePlan &plan = tokens->write[kDateTime ? 0 : 1];
  if (plan.state == 0) build_write_plan(*tokens, !kDateTime, plan);
  if (plan.state != 1) return false;
  // Same rule as the general path: the text and its NUL are copied once
  // the capacity reaches the text's length.
  if (*buffer_size < plan.length) {
    error_code = qwz::kBufferTooSmallCode;
    status = -1;
    return true;
  }
  write_through_plan(plan, w, reinterpret_cast<char *>(buffer));
  status = 0;
  return true;
}

// The shared entry on a stack token array.
bool fields_to_text(const datetime_fields &fields, const QWZtext *format,
                    std::size_t format_length, QWZtext *buffer, const ub4 *buffer_size,
                    sb4 &error_code, bool stop_after_seconds) {
  if (!format || !buffer || !buffer_size) return false;
  const char *fmt = reinterpret_cast<const char *>(format);
  // The format is read up to its NUL: the 127-character limit holds for it
  // as given; then it is trimmed and cut at format_length.
  const std::size_t full = std::strlen(fmt);
  if (full > qwz::kMaxFormatLength) return false;
  const qwz::TrimmedText f = qwz::trim_and_cut(fmt, full, format_length);
  const qwz::CompiledFormat *tokens = qwz::compile_format_fast(f.begin, f.length);
  if (!tokens) return false;
  switch (tokens->fault) {
    case qwz::FormatFault::none: break;
    case qwz::FormatFault::unsupported: error_code = qwz::kFormatFaultCode; return false;
    default: return false;
  }
  char result[kResultRoom];
  std::size_t len = 0;
  if (!format_fields(result, len, tokens->span(), fields, stop_after_seconds)) return false;
  // A capacity equal to the text's length is accepted, and the text is
  // copied with its NUL all the same: the buffer then receives one byte
  // more than *buffer_size.
  if (*buffer_size < len) {
    error_code = qwz::kBufferTooSmallCode;
    return false;
  }
  std::memcpy(buffer, result, len + 1);
  return true;
}

sword convert(const datetime_fields &f, const QWZtext *format, std::size_t format_length,
              const ub4 *buffer_size, QWZtext *buffer, sb4 *error_code, bool stop) {
  sb4 code = error_code ? *error_code : 0;
  const bool ok = fields_to_text(f, format, format_length, buffer, buffer_size, code, stop);
  if (error_code) *error_code = code;
  return ok ? 0 : -1;
}

}  // namespace

namespace qwz {

namespace {

// "%04d" and "%02d" into a slot, the common values without the general path.
template <std::size_t N>
void year_text(long v, char (&slot)[N]) {
  if (v >= 0 && v <= 9999) four_digits(static_cast<unsigned>(v), slot);
  else decimal_text(v, 4, slot, N);
}
template <std::size_t N>
void two_digit_text(long v, char (&slot)[N]) {
  if (v >= 0 && v <= 99) two_digits(static_cast<unsigned>(v), slot);
  else decimal_text(v, 2, slot, N);
}

}  // namespace

void date_to_fields(const QWZDate &d, datetime_fields &f) {
  std::memset(&f, 0, sizeof f);
  year_text(d.year, f.year);
  two_digit_text(d.month, f.month);
  two_digit_text(d.day, f.day);
  two_digit_text(d.hour, f.hour);
  two_digit_text(d.minute, f.minute);
  two_digit_text(d.second, f.second);
}

// "%ld" of a count that is never negative, two digits at a time, into a
// slot: the text's first N - 1 characters and a NUL, or its first N
// characters without one when it is longer (only the leading digits of a
// nanosecond count are ever read, and a bounded length shows it ran on).
template <std::size_t N>
void count_text(ub4 v, char (&slot)[N]) {
  char text[10];
  std::size_t n = 1;
  for (std::uint64_t p = 10; n < 10 && v >= p; p *= 10) ++n;
  std::size_t at = n;
  while (at >= 2) {
    at -= 2;
    std::memcpy(text + at, kDigitPairs.text + 2 * (v % 100), 2);
    v /= 100;
  }
  if (at == 1) text[0] = static_cast<char>('0' + v);
  const std::size_t k = n < N ? n : N;
  std::memcpy(slot, text, k);
  if (k < N) slot[k] = '\0';
}

void datetime_to_fields(const QWZDateTime &dt, datetime_fields &f) {
  date_to_fields(datetime_date(&dt), f);
  count_text(dt.fraction, f.fraction);
  f.tz_hour[0] = dt.tz_hour < 0 ? '-' : '+';
  const int tz_hour = dt.tz_hour < 0 ? -dt.tz_hour : dt.tz_hour;
  if (tz_hour <= 99) two_digits(static_cast<unsigned>(tz_hour), f.tz_hour + 1);
  else decimal_text(tz_hour, 2, f.tz_hour + 1, sizeof f.tz_hour - 1);
  two_digit_text(dt.tz_minute < 0 ? -dt.tz_minute : dt.tz_minute, f.tz_minute);
}

void packed_to_fields(const ub1 *p, datetime_fields &f) {
  std::memset(&f, 0, sizeof f);
  const long year = p[0] * 100L - 10000 + p[1] - 100;
  auto less_one = [](ub1 b) { return b == 0 ? 0L : b - 1L; };
  decimal_text(year, 4, f.year, sizeof f.year);
  decimal_text(p[2], 2, f.month, sizeof f.month);
  decimal_text(p[3], 2, f.day, sizeof f.day);
  decimal_text(less_one(p[4]), 2, f.hour, sizeof f.hour);
  decimal_text(less_one(p[5]), 2, f.minute, sizeof f.minute);
  decimal_text(less_one(p[6]), 2, f.second, sizeof f.second);
  const ub4 ns = (static_cast<ub4>(p[7]) << 24) | (static_cast<ub4>(p[8]) << 16) |
                 (static_cast<ub4>(p[9]) << 8) | p[10];
  count_text(ns / 10000u, f.fraction);
}

// The general writer, for what the template writer leaves: a date's text
// stops after its seconds, a datetime's does not.
inline void value_to_fields(const QWZDate &date, datetime_fields &f) { date_to_fields(date, f); }
inline void value_to_fields(const QWZDateTime &dt, datetime_fields &f) { datetime_to_fields(dt, f); }
template <class Value>
[[gnu::noinline]] sword text_general(const Value &value, const QWZtext *format,
                                     std::size_t format_length, const ub4 *buffer_size,
                                     QWZtext *buffer, sb4 *error_code) {
  datetime_fields f;
  value_to_fields(value, f);
  return convert(f, format, format_length, buffer_size, buffer, error_code,
                 std::is_same_v<Value, QWZDate>);
}

// date_to_text and datetime_to_text, inline in the public calls.
[[gnu::always_inline]] inline sword date_text(const QWZDate *date, const QWZtext *format,
                                              std::size_t format_length, const ub4 *buffer_size,
                                              QWZtext *buffer, sb4 *error_code) {
  if (!date) return -1;
  sword status = -1;
  sb4 code = error_code ? *error_code : 0;
  if (write_fast<false>(*date, nullptr, format, format_length, buffer, buffer_size, code, status)) {
    if (error_code) *error_code = code;
    return status;
  }
  return text_general(*date, format, format_length, buffer_size, buffer, error_code);
}
[[gnu::always_inline]] inline sword datetime_text(const QWZDateTime *datetime,
                                                  const QWZtext *format, std::size_t format_length,
                                                  const ub4 *buffer_size, QWZtext *buffer,
                                                  sb4 *error_code) {
  if (!datetime) return -1;
  sword status = -1;
  sb4 code = error_code ? *error_code : 0;
  if (write_fast<true>(datetime_date(datetime), datetime, format, format_length, buffer,
                       buffer_size, code, status)) {
    if (error_code) *error_code = code;
    return status;
  }
  return text_general(*datetime, format, format_length, buffer_size, buffer, error_code);
}

}  // namespace qwz

extern "C" {

int datetime_to_char(char *result, sword, const qwz_token *tokens, const datetime_fields *fields,
                     int stop_after_seconds) {
  if (!result || !fields) return 0;
  char out[kResultRoom];
  std::size_t len = 0;
  if (!format_fields(out, len, qwz::TokenList(tokens), *fields, stop_after_seconds != 0)) return 0;
  std::memcpy(result, out, len + 1);
  return 1;
}

int qwz_datetime_to_char(const datetime_fields *fields, const QWZtext *format,
                         std::size_t format_length, ub1, QWZtext *buffer, const ub4 *buffer_size,
                         sb4 *error_code, int stop_after_seconds) {
  if (!fields) return 0;
  return convert(*fields, format, format_length, buffer_size, buffer, error_code,
                 stop_after_seconds != 0) == 0
             ? 1
             : 0;
}

sword date_to_text(const QWZDate *date, const QWZtext *format, std::size_t format_length, ub1,
                   const ub4 *buffer_size, QWZtext *buffer, sb4 *error_code) {
  return qwz::date_text(date, format, format_length, buffer_size, buffer, error_code);
}

sword datetime_to_text(const QWZDateTime *datetime, const QWZtext *format,
                       std::size_t format_length, ub1, const ub4 *buffer_size, QWZtext *buffer,
                       sb4 *error_code) {
  return qwz::datetime_text(datetime, format, format_length, buffer_size, buffer, error_code);
}

sword datetime180_to_text(const ub1 *packed, const QWZtext *format, std::size_t format_length,
                          ub1, const ub4 *buffer_size, QWZtext *buffer, sb4 *error_code) {
  if (!packed) return -1;
  datetime_fields f;
  qwz::packed_to_fields(packed, f);
  return convert(f, format, format_length, buffer_size, buffer, error_code, false);
}

QWZ_API sword QWZDateToText(QWZError *errhp, const QWZDate *date, const QWZtext *fmt,
                            ub1 fmt_length, const QWZtext *lang_name, ub4 lang_length,
                            ub4 *buf_size, QWZtext *buf) {
  const qwz::TracedText fmt_arg(fmt, fmt_length);
  const qwz::TracedText lang_arg(lang_name, lang_length);
  const qwz::TracedTextAt buf_arg(buf, buf_size);
  return qwz::run_frame(
      API_DATE_TO_TEXT, errhp,
      [&]() -> Outcome {
        if (!date) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 2);
        if (!fmt) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 3);
        if (!buf_size) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 7);
        if (!buf) return date_error(errhp, KIND_NULL_PARAM, kDateInputPtr, 8);
        // Lowering fmt_length to the format's own length would change
        // nothing: the format is read up to its NUL and cut at fmt_length.
        if (qwz::date_flags(*date) != 0)
          return date_error(errhp, KIND_DATE_FORMAT, DETAIL_NONE, PARAM_NONE);
        sb4 code = 0;
        if (qwz::date_text(date, fmt, fmt_length, buf_size, buf, &code) != 0) {
          const sb4 kind = code == qwz::kBufferTooSmallCode ? KIND_BUF_TOO_SMALL
                           : code == qwz::kFormatFaultCode  ? KIND_FORMAT_STRING
                                                            : KIND_FORMAT_OR_DATE;
          return done(date_error(errhp, kind, DETAIL_NONE, PARAM_NONE).status);
        }
        return done(0);
      },
      errhp, date, fmt_arg.arg(), fmt_length, lang_arg.arg(), lang_length, buf_size,
      buf_arg.arg());
}

QWZ_API sword QWZDateTimeToText(void *hndl, QWZError *errhp, const QWZDateTime *date,
                                const QWZtext *fmt, ub1 fmt_length, ub1 fsprec,
                                const QWZtext *lang_name, size_t lang_length, ub4 *buf_size,
                                QWZtext *buf) {
  const qwz::TracedText fmt_arg(fmt, fmt_length);
  const qwz::TracedText lang_arg(lang_name, lang_length);
  const qwz::TracedTextAt buf_arg(buf, buf_size);
  return qwz::run_frame(
      API_DATETIME_TO_TEXT, errhp,
      [&]() -> Outcome {
        if (const sword r = qwz::check_context(errhp, hndl)) return refuse(r);
        if (const sword r = qwz::check_datetime_param(errhp, date, 3)) return refuse(r);
        if (!fmt) return datetime_error(errhp, KIND_NULL_PARAM, qwz::kDatetimeParamDetail, 4);
        if (!buf_size) return datetime_error(errhp, KIND_NULL_PARAM, qwz::kDatetimeParamDetail, 9);
        if (!buf) return datetime_error(errhp, KIND_NULL_PARAM, qwz::kDatetimeParamDetail, 10);
        ub4 valid = 0;
        // A failing check call (its own trace refusing it) ends the call
        // with its status, through the exit trace.
        if (const sword r = qwz::nested_datetime_check_checked(hndl, errhp, date, &valid))
          return done(r);
        if (valid != 0) return datetime_error(errhp, KIND_INVALID_VALUE, DETAIL_DATE_FORMAT, 3);
        // The format length is not lowered here: the shared entry cuts the
        // trimmed format at it.
        sb4 code = 0;
        const sword status = qwz::datetime_text(date, fmt, fmt_length, buf_size, buf, &code);
        // The date family's setter, deliberately; other failures record nothing.
        if (status != 0 && code == qwz::kBufferTooSmallCode)
          _QWZSetDateErrorMsg(ERRSRC_DRIVER, KIND_BUF_TOO_SMALL, DETAIL_NONE, PARAM_NONE, errhp, "");
        else if (status != 0 && code == qwz::kFormatFaultCode)
          _QWZSetDateErrorMsg(ERRSRC_DRIVER, KIND_FORMAT_STRING, DETAIL_NONE, PARAM_NONE, errhp, "");
        return done(status);
      },
      hndl, errhp, date, fmt_arg.arg(), fmt_length, fsprec, lang_arg.arg(), lang_length,
      buf_size, buf_arg.arg());
}

}  // extern "C"
