// The subcommands of qwzdt: reading values from the command line with the
// library's own text functions, one library call per operation, and printing
// the result the same way.
#include "qwzdt.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

namespace qwzdt {
namespace {

// The arguments after the command words, without a copy.
using ArgSpan = std::span<const std::string_view>;

// ---- small helpers --------------------------------------------------------

// A NUL-terminated copy of a command-line word (batch words are views into
// a line and carry no terminator). Texts longer than the buffer are cut; no
// value or model the library accepts comes near that length.
struct CText {
  char buf[512];
  std::size_t len;
  explicit CText(std::string_view s) {
    len = s.size() < sizeof buf - 1 ? s.size() : sizeof buf - 1;
    if (len > 0) std::memcpy(buf, s.data(), len);  // an empty view may have no data
    buf[len] = '\0';
  }
  QWZText *q() { return reinterpret_cast<QWZText *>(buf); }
};

bool to_long(std::string_view s, long lo, long hi, long &out) {
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
  return ec == std::errc() && p == s.data() + s.size() && out >= lo && out <= hi;
}

bool to_double(std::string_view s, double &out) {
  CText t(s);
  char *end = nullptr;
  out = std::strtod(t.buf, &end);
  return t.len > 0 && end == t.buf + t.len;
}

Outcome bad_argument(std::string_view what, std::string_view word, std::string &err_out) {
  err_out = "qwzdt: ";
  err_out += what;
  err_out += ": '";
  err_out += word;
  err_out += "'";
  return kUsage;
}

#define QWZDT_CALL(expr, name)                   \
  do {                                           \
    sword st_ = (expr);                          \
    if (st_ != QWZ_SUCCESS) {                    \
      ctx.diagnostic(st_, name, err_out);        \
      return kFailed;                            \
    }                                            \
  } while (0)

// The outcome of a step, returned when it is not kOk.
#define QWZDT_TRY(expr)               \
  do {                                \
    Outcome o_ = (expr);              \
    if (o_ != kOk) return o_;         \
  } while (0)

void append_line(std::string &out, std::string_view s) {
  out += s;
  out += '\n';
}

void append_number(std::string &out, long v) {
  char b[32];
  auto [p, ec] = std::to_chars(b, b + sizeof b, v);
  (void)ec;
  out.append(b, p);
  out += '\n';
}

// ---- models and type names ------------------------------------------------

constexpr const char *kDateModel = "YYYY-MM-DD HH24:MI:SS";

struct TypeName {
  const char *name;
  ub4 code;
};
constexpr TypeName kTypes[] = {
    {"date", DATETIME_KIND_DATE},
    {"time", DATETIME_KIND_TIME},
    {"time-tz", DATETIME_KIND_TIME_TZ},
    {"timestamp", DATETIME_KIND_TIMESTAMP},
    {"timestamp-tz", DATETIME_KIND_TIMESTAMP_TZ},
    {"timestamp-ltz", DATETIME_KIND_TIMESTAMP_LTZ},
};

bool type_code(std::string_view name, ub4 &code) {
  for (const TypeName &t : kTypes)
    if (name == t.name) {
      code = t.code;
      return true;
    }
  long n = 0;
  if (to_long(name, DATETIME_KIND_DATE, DATETIME_KIND_TIMESTAMP_LTZ, n)) {
    code = static_cast<ub4>(n);
    return true;
  }
  return false;
}

bool has_zone(ub4 type) {
  return type == DATETIME_KIND_TIME_TZ || type == DATETIME_KIND_TIMESTAMP_TZ;
}

bool mentions_zone(std::string_view model) {
  for (std::size_t i = 0; i + 1 < model.size(); ++i)
    if ((model[i] == 'T' || model[i] == 't') && (model[i + 1] == 'Z' || model[i + 1] == 'z'))
      return true;
  return false;
}

// ---- dates ----------------------------------------------------------------

Outcome read_date(Context &ctx, const Options &opt, std::string_view text, QWZDate &d,
                  std::string &err_out) {
  CText t(text);
  CText m(opt.format.empty() ? std::string_view(kDateModel) : std::string_view(opt.format));
  QWZDT_CALL(QWZDateFromText(ctx.err(), t.q(), static_cast<ub4>(t.len), m.q(),
                             static_cast<ub1>(m.len > 255 ? 255 : m.len), nullptr, 0, &d),
             "QWZDateFromText");
  return kOk;
}

Outcome print_date(Context &ctx, std::string_view model, const QWZDate &d, std::string &out,
                   std::string &err_out) {
  CText m(model);
  QWZtext buf[300];
  buf[0] = 0;
  ub4 size = sizeof buf - 1;  // the library may write one byte beyond the size
  QWZDT_CALL(QWZDateToText(ctx.err(), &d, m.q(), static_cast<ub1>(m.len > 255 ? 255 : m.len),
                           nullptr, 0, &size, buf),
             "QWZDateToText");
  append_line(out, reinterpret_cast<const char *>(buf));
  return kOk;
}

Outcome print_date(Context &ctx, const Options &opt, const QWZDate &d, std::string &out,
                   std::string &err_out) {
  return print_date(ctx, opt.format.empty() ? std::string_view(kDateModel) : opt.format, d,
                    out, err_out);
}

}  // namespace

Outcome date_to_text(Context &ctx, const Options &opt, std::string_view text,
                     std::string_view model, std::string &out, std::string &err_out) {
  QWZDate d{};
  QWZDT_TRY(read_date(ctx, opt, text, d, err_out));
  return print_date(ctx, model, d, out, err_out);
}

namespace {

// A model as CText passes it: cut to the buffer, its length to 255.
void keep_model(std::string_view model, char (&buf)[512], ub1 &len) {
  const CText c(model);
  std::memcpy(buf, c.buf, c.len + 1);
  len = static_cast<ub1>(c.len > 255 ? 255 : c.len);
}

}  // namespace

DateToTextBatch::DateToTextBatch(const Options &opt, std::string_view model) {
  keep_model(opt.format.empty() ? std::string_view(kDateModel) : std::string_view(opt.format),
             in_model_, in_len_);
  keep_model(model, out_model_, out_len_);
}

Outcome DateToTextBatch::convert(Context &ctx, const char *text, std::size_t len, char *buf,
                                 std::size_t &written, std::string &err_out) const {
  // A line longer than a command-line word may be is cut as CText cuts it.
  char cut[512];
  if (len > kMaxText) {
    std::memcpy(cut, text, kMaxText);
    cut[kMaxText] = '\0';
    text = cut;
    len = kMaxText;
  }
  QWZDate d{};
  QWZDT_CALL(QWZDateFromText(ctx.err(), reinterpret_cast<const QWZText *>(text),
                             static_cast<ub4>(len), reinterpret_cast<const QWZText *>(in_model_),
                             in_len_, nullptr, 0, &d),
             "QWZDateFromText");
  buf[0] = 0;
  ub4 size = kOutSize - 1;  // the library may write one byte beyond the size
  QWZDT_CALL(QWZDateToText(ctx.err(), &d, reinterpret_cast<const QWZText *>(out_model_),
                           out_len_, nullptr, 0, &size, reinterpret_cast<QWZtext *>(buf)),
             "QWZDateToText");
  // Byte by byte: the text was just stored in small pieces, which the wide
  // loads of strlen would have to wait for (volatile keeps the compiler
  // from turning the loop back into a strlen call).
  const volatile char *v = buf;
  std::size_t n = 0;
  while (v[n] != '\0') ++n;
  written = n;
  return kOk;
}

namespace {

// ---- datetimes ------------------------------------------------------------

struct Dt {
  QWZDateTime *d = nullptr;
  ub4 type = 0;
};

// A trailing "+HH:MM" / "-HH:MM" (or "+HH") word is a zone offset.
bool split_zone(std::string_view text, std::string_view &body, std::string_view &zone) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  std::size_t sp = text.rfind(' ');
  std::string_view last = sp == std::string_view::npos ? text : text.substr(sp + 1);
  if (last.size() < 2 || (last[0] != '+' && last[0] != '-')) return false;
  std::size_t digits = 0, colons = 0;
  for (std::size_t i = 1; i < last.size(); ++i) {
    if (last[i] >= '0' && last[i] <= '9')
      ++digits;
    else if (last[i] == ':')
      ++colons;
    else
      return false;
  }
  if (digits == 0 || colons > 1) return false;
  zone = last;
  body = sp == std::string_view::npos ? std::string_view() : text.substr(0, sp);
  return true;
}

Outcome convert_to(Context &ctx, Dt &v, ub4 target, int slot, std::string &err_out) {
  if (target == v.type) return kOk;
  QWZDateTime *out = ctx.datetime(target, slot);
  QWZDT_CALL(QWZDateTimeConvert(ctx.env(), ctx.err(), v.d, out), "QWZDateTimeConvert");
  v.d = out;
  v.type = target;
  return kOk;
}

// Reads a datetime value. With --format the text goes to QWZDateTimeFromText
// as it is (a zone then comes through the model's TZH and TZM). Without it the
// tool picks a model from the text's shape, and a trailing zone offset is read
// through QWZDateTimeConstruct's zone text, so "-05:00" keeps its sign.
Outcome read_datetime(Context &ctx, const Options &opt, std::string_view text, int slot, Dt &v,
                      std::string &err_out) {
  ub4 wanted = 0;
  if (!opt.type.empty() && !type_code(opt.type, wanted))
    return bad_argument("unknown datetime type", opt.type, err_out);
  if (!opt.format.empty()) {
    ub4 type = wanted != 0 ? wanted
               : mentions_zone(opt.format) ? DATETIME_KIND_TIMESTAMP_TZ
                                           : DATETIME_KIND_TIMESTAMP;
    v.d = ctx.datetime(type, slot);
    v.type = type;
    CText t(text), m(opt.format);
    QWZDT_CALL(QWZDateTimeFromText(ctx.env(), ctx.err(), t.q(), t.len, m.q(),
                                   static_cast<ub1>(m.len > 255 ? 255 : m.len), nullptr, 0, v.d),
               "QWZDateTimeFromText");
    return kOk;
  }
  std::string_view body = text, zone;
  bool zoned = split_zone(text, body, zone);
  // Time of day alone: no date separators before the first colon.
  std::size_t colon = body.find(':');
  bool time_only = colon != std::string_view::npos &&
                   body.substr(0, colon).find_first_of("-/. ") == std::string_view::npos;
  std::string model = time_only ? "HH24:MI:SS" : kDateModel;
  std::size_t dot = body.rfind('.');
  if (dot != std::string_view::npos && dot > body.rfind(':') && colon != std::string_view::npos) {
    std::size_t n = body.size() - dot - 1;
    if (n > 0) {
      model += ".FF";
      model += static_cast<char>('0' + (n > 5 ? 5 : n));
    }
  }
  v.d = ctx.datetime(DATETIME_KIND_TIMESTAMP, slot);
  v.type = DATETIME_KIND_TIMESTAMP;
  {
    CText t(body), m(model);
    QWZDT_CALL(QWZDateTimeFromText(ctx.env(), ctx.err(), t.q(), t.len, m.q(),
                                   static_cast<ub1>(m.len), nullptr, 0, v.d),
               "QWZDateTimeFromText");
  }
  if (zoned) {
    sb2 y = 0;
    ub1 mo = 0, dd = 0, hh = 0, mi = 0, ss = 0;
    ub4 fs = 0;
    QWZDT_CALL(QWZDateTimeGetDate(ctx.env(), ctx.err(), v.d, &y, &mo, &dd),
               "QWZDateTimeGetDate");
    QWZDT_CALL(QWZDateTimeGetTime(ctx.env(), ctx.err(), v.d, &hh, &mi, &ss, &fs),
               "QWZDateTimeGetTime");
    QWZDateTime *z = ctx.datetime(DATETIME_KIND_TIMESTAMP_TZ, slot);
    CText zt(zone);
    QWZDT_CALL(QWZDateTimeConstruct(ctx.env(), ctx.err(), z, y, mo, dd, hh, mi, ss, fs, zt.q(),
                                    zt.len),
               "QWZDateTimeConstruct");
    v.d = z;
    v.type = DATETIME_KIND_TIMESTAMP_TZ;
  }
  if (wanted == 0 && time_only)
    wanted = zoned ? DATETIME_KIND_TIME_TZ : DATETIME_KIND_TIME;
  if (wanted != 0) return convert_to(ctx, v, wanted, slot, err_out);
  return kOk;
}

Outcome print_datetime_with(Context &ctx, std::string_view model, const Dt &v, std::string &out,
                            std::string &err_out) {
  CText m(model);
  QWZtext buf[300];
  buf[0] = 0;
  ub4 size = sizeof buf - 1;
  QWZDT_CALL(QWZDateTimeToText(ctx.env(), ctx.err(), v.d, m.q(),
                               static_cast<ub1>(m.len > 255 ? 255 : m.len), 5, nullptr, 0, &size,
                               buf),
             "QWZDateTimeToText");
  append_line(out, reinterpret_cast<const char *>(buf));
  return kOk;
}

Outcome print_datetime(Context &ctx, const Options &opt, const Dt &v, std::string &out,
                       std::string &err_out) {
  if (!opt.format.empty()) return print_datetime_with(ctx, opt.format, v, out, err_out);
  std::string model;
  switch (v.type) {
    case DATETIME_KIND_DATE: model = "YYYY-MM-DD"; break;
    case DATETIME_KIND_TIME:
    case DATETIME_KIND_TIME_TZ: model = "HH24:MI:SS"; break;
    default: model = kDateModel; break;
  }
  if (v.type != DATETIME_KIND_DATE) {
    ub1 hh = 0, mi = 0, ss = 0;
    ub4 fs = 0;
    QWZDT_CALL(QWZDateTimeGetTime(ctx.env(), ctx.err(), v.d, &hh, &mi, &ss, &fs),
               "QWZDateTimeGetTime");
    if (fs != 0) model += ".FF5";
  }
  if (has_zone(v.type)) model += " TZH:TZM";
  return print_datetime_with(ctx, model, v, out, err_out);
}

// ---- intervals ------------------------------------------------------------

ub4 interval_kind(std::string_view text) {
  return text.find_first_of(": ") != std::string_view::npos ? INTERVAL_KIND_DS
                                                           : INTERVAL_KIND_YM;
}

Outcome read_interval(Context &ctx, std::string_view text, int slot, QWZInterval *&iv,
                      ub4 &kind, std::string &err_out) {
  kind = interval_kind(text);
  iv = ctx.interval(kind, slot);
  CText t(text);
  QWZDT_CALL(QWZIntervalFromText(ctx.env(), ctx.err(), t.q(), t.len, iv), "QWZIntervalFromText");
  return kOk;
}

Outcome print_interval(Context &ctx, const Options &opt, const QWZInterval *iv, std::string &out,
                       std::string &err_out) {
  QWZtext buf[128] = {};  // empty: the library measures what the buffer holds
  std::size_t len = 0;
  QWZDT_CALL(QWZIntervalToText(ctx.env(), ctx.err(), iv, static_cast<ub1>(opt.lfprec),
                               static_cast<ub1>(opt.fsprec), buf, sizeof buf, &len),
             "QWZIntervalToText");
  out.append(reinterpret_cast<const char *>(buf), len);
  out += '\n';
  return kOk;
}

Outcome read_number(Context &ctx, std::string_view text, QWZNumber &n, std::string &err_out) {
  double d = 0;
  if (!to_double(text, d)) return bad_argument("not a number", text, err_out);
  QWZDT_CALL(QWZNumberFromReal(ctx.err(), &d, sizeof d, &n), "QWZNumberFromReal");
  return kOk;
}

// ---- the date family ------------------------------------------------------

Outcome date_cmd(Context &ctx, const Options &opt, std::string_view verb, ArgSpan a,
                 std::string &out, std::string &err_out) {
  QWZDate d{}, e{}, r{};
  if (verb == "add-days" || verb == "add-months") {
    long n = 0;
    QWZDT_TRY(read_date(ctx, opt, a[0], d, err_out));
    if (!to_long(a[1], -2147483647L - 1, 2147483647L, n))
      return bad_argument("not a count", a[1], err_out);
    if (verb == "add-days")
      QWZDT_CALL(QWZDateAddDays(ctx.err(), &d, static_cast<sb4>(n), &r), "QWZDateAddDays");
    else
      QWZDT_CALL(QWZDateAddMonths(ctx.err(), &d, static_cast<sb4>(n), &r), "QWZDateAddMonths");
    return print_date(ctx, opt, r, out, err_out);
  }
  if (verb == "last-day") {
    QWZDT_TRY(read_date(ctx, opt, a[0], d, err_out));
    QWZDT_CALL(QWZDateLastDay(ctx.err(), &d, &r), "QWZDateLastDay");
    return print_date(ctx, opt, r, out, err_out);
  }
  if (verb == "next-day") {
    QWZDT_TRY(read_date(ctx, opt, a[0], d, err_out));
    CText name(a[1]);
    QWZDT_CALL(QWZDateNextDay(ctx.err(), &d, name.q(), static_cast<ub4>(name.len), &r),
               "QWZDateNextDay");
    return print_date(ctx, opt, r, out, err_out);
  }
  if (verb == "days-between" || verb == "compare") {
    QWZDT_TRY(read_date(ctx, opt, a[0], d, err_out));
    QWZDT_TRY(read_date(ctx, opt, a[1], e, err_out));
    if (verb == "compare") {
      sword c = 0;
      QWZDT_CALL(QWZDateCompare(ctx.err(), &d, &e, &c), "QWZDateCompare");
      append_number(out, c);
    } else {
      sb4 n = 0;
      QWZDT_CALL(QWZDateDaysBetween(ctx.err(), &d, &e, &n), "QWZDateDaysBetween");
      append_number(out, n);
    }
    return kOk;
  }
  if (verb == "check") {
    long f[6] = {0, 0, 0, 0, 0, 0};
    for (std::size_t i = 0; i < a.size(); ++i) {
      long lo = i == 0 ? -32768 : 0, hi = i == 0 ? 32767 : 65535;
      if (!to_long(a[i], lo, hi, f[i])) return bad_argument("not a field value", a[i], err_out);
    }
    d = QWZDate{static_cast<sb2>(f[0]), static_cast<ub2>(f[1]), static_cast<ub2>(f[2]),
                static_cast<ub2>(f[3]), static_cast<ub2>(f[4]), static_cast<ub2>(f[5])};
    uword valid = 0;
    QWZDT_CALL(QWZDateCheck(ctx.err(), &d, &valid), "QWZDateCheck");
    char head[32];
    std::snprintf(head, sizeof head, "0x%x", valid);
    out += head;
    if (valid == 0) out += " valid";
    static const struct { uword bit; const char *name; } names[] = {
        {DATE_INVALID_DAY, "day"},       {DATE_INVALID_MONTH, "month"},
        {DATE_INVALID_YEAR, "year"},     {DATE_INVALID_HOUR, "hour"},
        {DATE_INVALID_MINUTE, "minute"}, {DATE_INVALID_SECOND, "second"},
        {DATE_YEAR_ZERO, "year-zero"}};
    for (const auto &n : names)
      if (valid & n.bit) {
        out += ' ';
        out += n.name;
      }
    out += '\n';
    return kOk;
  }
  if (verb == "to-text") return date_to_text(ctx, opt, a[0], a[1], out, err_out);
  if (verb == "from-text") {
    Options o = opt;
    o.format = std::string(a[1]);
    QWZDT_TRY(read_date(ctx, o, a[0], d, err_out));
    return print_date(ctx, opt, d, out, err_out);
  }
  return kUsage;
}

// ---- the datetime family --------------------------------------------------

Outcome datetime_cmd(Context &ctx, const Options &opt, std::string_view verb, ArgSpan a,
                     std::string &out, std::string &err_out) {
  Dt v, w;
  if (verb == "construct") {
    ub4 type = 0;
    if (!type_code(a[0], type)) return bad_argument("unknown datetime type", a[0], err_out);
    long f[7] = {0, 0, 0, 0, 0, 0, 0};
    static const long lo[7] = {-32768, 0, 0, 0, 0, 0, 0};
    static const long hi[7] = {32767, 255, 255, 255, 255, 255, 4294967295L};
    for (std::size_t i = 1; i < a.size() && i <= 7; ++i)
      if (!to_long(a[i], lo[i - 1], hi[i - 1], f[i - 1]))
        return bad_argument("not a field value", a[i], err_out);
    v.d = ctx.datetime(type, 0);
    v.type = type;
    bool zone = a.size() > 8;
    CText z(zone ? a[8] : std::string_view());
    QWZDT_CALL(QWZDateTimeConstruct(ctx.env(), ctx.err(), v.d, static_cast<sb2>(f[0]),
                                    static_cast<ub1>(f[1]), static_cast<ub1>(f[2]),
                                    static_cast<ub1>(f[3]), static_cast<ub1>(f[4]),
                                    static_cast<ub1>(f[5]), static_cast<ub4>(f[6]),
                                    zone ? z.q() : nullptr, zone ? z.len : 0),
               "QWZDateTimeConstruct");
    return print_datetime(ctx, opt, v, out, err_out);
  }
  if (verb == "add" || verb == "sub") {
    QWZDT_TRY(read_datetime(ctx, opt, a[0], 0, v, err_out));
    QWZInterval *iv = nullptr;
    ub4 kind = 0;
    QWZDT_TRY(read_interval(ctx, a[1], 0, iv, kind, err_out));
    // The arithmetic writes the clock fields of the result only: a copy of
    // the value made first gives the result the value's zone fields.
    Dt r{ctx.datetime(v.type, 2), v.type};
    QWZDT_CALL(QWZDateTimeAssign(ctx.env(), ctx.err(), v.d, r.d), "QWZDateTimeAssign");
    if (verb == "add")
      QWZDT_CALL(QWZDateTimeIntervalAdd(ctx.env(), ctx.err(), v.d, iv, r.d),
                 "QWZDateTimeIntervalAdd");
    else
      QWZDT_CALL(QWZDateTimeIntervalSub(ctx.env(), ctx.err(), v.d, iv, r.d),
                 "QWZDateTimeIntervalSub");
    return print_datetime(ctx, opt, r, out, err_out);
  }
  if (verb == "diff") {
    ub4 kind = INTERVAL_KIND_DS;
    if (a.size() > 2) {
      if (a[2] == "ym")
        kind = INTERVAL_KIND_YM;
      else if (a[2] != "ds")
        return bad_argument("interval kind is ym or ds", a[2], err_out);
    }
    QWZDT_TRY(read_datetime(ctx, opt, a[0], 0, v, err_out));
    QWZDT_TRY(read_datetime(ctx, opt, a[1], 1, w, err_out));
    QWZInterval *iv = ctx.interval(kind, 2);
    QWZDT_CALL(QWZDateTimeSubtract(ctx.env(), ctx.err(), v.d, w.d, iv), "QWZDateTimeSubtract");
    return print_interval(ctx, opt, iv, out, err_out);
  }
  if (verb == "compare") {
    QWZDT_TRY(read_datetime(ctx, opt, a[0], 0, v, err_out));
    QWZDT_TRY(read_datetime(ctx, opt, a[1], 1, w, err_out));
    sword c = 0;
    QWZDT_CALL(QWZDateTimeCompare(ctx.env(), ctx.err(), v.d, w.d, &c), "QWZDateTimeCompare");
    append_number(out, c);
    return kOk;
  }
  if (verb == "convert") {
    ub4 type = 0;
    if (!type_code(a[1], type)) return bad_argument("unknown datetime type", a[1], err_out);
    QWZDT_TRY(read_datetime(ctx, opt, a[0], 0, v, err_out));
    Dt r{ctx.datetime(type, 2), type};
    QWZDT_CALL(QWZDateTimeConvert(ctx.env(), ctx.err(), v.d, r.d), "QWZDateTimeConvert");
    return print_datetime(ctx, opt, r, out, err_out);
  }
  if (verb == "to-text") {
    QWZDT_TRY(read_datetime(ctx, opt, a[0], 0, v, err_out));
    return print_datetime_with(ctx, a[1], v, out, err_out);
  }
  if (verb == "from-text") {
    Options o = opt;
    o.format = std::string(a[1]);
    QWZDT_TRY(read_datetime(ctx, o, a[0], 0, v, err_out));
    Options p = opt;
    p.format.clear();
    return print_datetime(ctx, p, v, out, err_out);
  }
  if (verb == "zone") {
    QWZDT_TRY(read_datetime(ctx, opt, a[0], 0, v, err_out));
    ub1 buf[16] = {};
    ub4 len = sizeof buf;
    QWZDT_CALL(QWZDateTimeGetTimeZoneName(ctx.env(), ctx.err(), v.d, buf, &len),
               "QWZDateTimeGetTimeZoneName");
    out.append(reinterpret_cast<const char *>(buf), len);
    out += '\n';
    return kOk;
  }
  if (verb == "fields") {
    QWZDT_TRY(read_datetime(ctx, opt, a[0], 0, v, err_out));
    char line[200];
    int n = std::snprintf(line, sizeof line, "type %u", v.type);
    if (v.type != DATETIME_KIND_TIME && v.type != DATETIME_KIND_TIME_TZ) {
      sb2 y = 0;
      ub1 mo = 0, dd = 0;
      QWZDT_CALL(QWZDateTimeGetDate(ctx.env(), ctx.err(), v.d, &y, &mo, &dd),
                 "QWZDateTimeGetDate");
      n += std::snprintf(line + n, sizeof line - n, " year %d month %u day %u", y, mo, dd);
    }
    if (v.type != DATETIME_KIND_DATE) {
      ub1 hh = 0, mi = 0, ss = 0;
      ub4 fs = 0;
      QWZDT_CALL(QWZDateTimeGetTime(ctx.env(), ctx.err(), v.d, &hh, &mi, &ss, &fs),
                 "QWZDateTimeGetTime");
      n += std::snprintf(line + n, sizeof line - n, " hour %u minute %u second %u fraction %u",
                         hh, mi, ss, fs);
    }
    if (has_zone(v.type)) {
      sb1 th = 0, tm = 0;
      QWZDT_CALL(QWZDateTimeGetTimeZoneOffset(ctx.env(), ctx.err(), v.d, &th, &tm),
                 "QWZDateTimeGetTimeZoneOffset");
      std::snprintf(line + n, sizeof line - n, " tz_hour %d tz_minute %d", th, tm);
    }
    append_line(out, line);
    return kOk;
  }
  return kUsage;
}

// ---- the interval family --------------------------------------------------

Outcome interval_cmd(Context &ctx, const Options &opt, std::string_view verb, ArgSpan a,
                     std::string &out, std::string &err_out) {
  QWZInterval *x = nullptr, *y = nullptr;
  ub4 kx = 0, ky = 0;
  if (verb == "add" || verb == "sub" || verb == "compare") {
    QWZDT_TRY(read_interval(ctx, a[0], 0, x, kx, err_out));
    QWZDT_TRY(read_interval(ctx, a[1], 1, y, ky, err_out));
    if (verb == "compare") {
      sword c = 0;
      QWZDT_CALL(QWZIntervalCompare(ctx.env(), ctx.err(), x, y, &c), "QWZIntervalCompare");
      append_number(out, c);
      return kOk;
    }
    QWZInterval *r = ctx.interval(kx, 2);
    if (verb == "add")
      QWZDT_CALL(QWZIntervalAdd(ctx.env(), ctx.err(), x, y, r), "QWZIntervalAdd");
    else
      QWZDT_CALL(QWZIntervalSubtract(ctx.env(), ctx.err(), x, y, r), "QWZIntervalSubtract");
    return print_interval(ctx, opt, r, out, err_out);
  }
  if (verb == "mul" || verb == "div") {
    QWZDT_TRY(read_interval(ctx, a[0], 0, x, kx, err_out));
    QWZNumber n;
    QWZDT_TRY(read_number(ctx, a[1], n, err_out));
    QWZInterval *r = ctx.interval(kx, 2);
    if (verb == "mul")
      QWZDT_CALL(QWZIntervalMultiply(ctx.env(), ctx.err(), x, &n, r), "QWZIntervalMultiply");
    else
      QWZDT_CALL(QWZIntervalDivide(ctx.env(), ctx.err(), x, &n, r), "QWZIntervalDivide");
    return print_interval(ctx, opt, r, out, err_out);
  }
  if (verb == "from-number") {
    ub4 kind = 0;
    if (a[0] == "ym")
      kind = INTERVAL_KIND_YM;
    else if (a[0] == "ds")
      kind = INTERVAL_KIND_DS;
    else
      return bad_argument("interval kind is ym or ds", a[0], err_out);
    QWZNumber n;
    QWZDT_TRY(read_number(ctx, a[1], n, err_out));
    QWZInterval *r = ctx.interval(kind, 2);
    QWZDT_CALL(QWZIntervalFromNumber(ctx.env(), ctx.err(), r, &n), "QWZIntervalFromNumber");
    return print_interval(ctx, opt, r, out, err_out);
  }
  if (verb == "to-number") {
    QWZDT_TRY(read_interval(ctx, a[0], 0, x, kx, err_out));
    QWZNumber n;
    QWZDT_CALL(QWZIntervalToNumber(ctx.env(), ctx.err(), x, &n), "QWZIntervalToNumber");
    double d = 0;
    QWZDT_CALL(QWZNumberToReal(ctx.err(), &n, sizeof d, &d), "QWZNumberToReal");
    char b[64];
    auto [p, ec] = std::to_chars(b, b + sizeof b, d);
    (void)ec;
    out.append(b, p);
    out += '\n';
    return kOk;
  }
  if (verb == "from-text") {
    QWZDT_TRY(read_interval(ctx, a[0], 0, x, kx, err_out));
    char line[160];
    if (kx == INTERVAL_KIND_YM) {
      sb4 yr = 0, mo = 0;
      QWZDT_CALL(QWZIntervalGetYearMonth(ctx.env(), ctx.err(), &yr, &mo, x),
                 "QWZIntervalGetYearMonth");
      std::snprintf(line, sizeof line, "year-month: year %d month %d", yr, mo);
    } else {
      sb4 dd = 0, hh = 0, mi = 0, ss = 0, fs = 0;
      QWZDT_CALL(QWZIntervalGetDaySecond(ctx.env(), ctx.err(), &dd, &hh, &mi, &ss, &fs, x),
                 "QWZIntervalGetDaySecond");
      std::snprintf(line, sizeof line,
                    "day-second: day %d hour %d minute %d second %d fraction %d", dd, hh, mi, ss,
                    fs);
    }
    append_line(out, line);
    return kOk;
  }
  if (verb == "to-text") {
    Options o = opt;
    long lf = 0, fs = 0;
    if (a.size() > 1) {
      if (!to_long(a[1], 0, 255, lf)) return bad_argument("not a precision", a[1], err_out);
      o.lfprec = static_cast<int>(lf);
    }
    if (a.size() > 2) {
      if (!to_long(a[2], 0, 255, fs)) return bad_argument("not a precision", a[2], err_out);
      o.fsprec = static_cast<int>(fs);
    }
    QWZDT_TRY(read_interval(ctx, a[0], 0, x, kx, err_out));
    return print_interval(ctx, o, x, out, err_out);
  }
  return kUsage;
}

// ---- the command table ----------------------------------------------------

// Names as views: a batch looks a command up for every line, and comparing
// views needs no strlen.
struct Command {
  std::string_view family;
  std::string_view verb;  // "" for a family that is its own command
  std::size_t min_args, max_args;
  const char *synopsis;
};

constexpr Command kCommands[] = {
    {"date", "add-days", 2, 2, "DATE DAYS"},
    {"date", "add-months", 2, 2, "DATE MONTHS"},
    {"date", "last-day", 1, 1, "DATE"},
    {"date", "next-day", 2, 2, "DATE WEEKDAY"},
    {"date", "days-between", 2, 2, "DATE1 DATE2"},
    {"date", "compare", 2, 2, "DATE1 DATE2"},
    {"date", "check", 3, 6, "YEAR MONTH DAY [HOUR [MINUTE [SECOND]]]"},
    {"date", "to-text", 2, 2, "DATE MODEL"},
    {"date", "from-text", 2, 2, "TEXT MODEL"},
    {"datetime", "construct", 7, 9,
     "TYPE YEAR MONTH DAY HOUR MINUTE SECOND [FRACTION [ZONE]]"},
    {"datetime", "add", 2, 2, "DATETIME INTERVAL"},
    {"datetime", "sub", 2, 2, "DATETIME INTERVAL"},
    {"datetime", "diff", 2, 3, "DATETIME1 DATETIME2 [ym|ds]"},
    {"datetime", "compare", 2, 2, "DATETIME1 DATETIME2"},
    {"datetime", "convert", 2, 2, "DATETIME TYPE"},
    {"datetime", "to-text", 2, 2, "DATETIME MODEL"},
    {"datetime", "from-text", 2, 2, "TEXT MODEL"},
    {"datetime", "zone", 1, 1, "DATETIME"},
    {"datetime", "fields", 1, 1, "DATETIME"},
    {"interval", "add", 2, 2, "INTERVAL1 INTERVAL2"},
    {"interval", "sub", 2, 2, "INTERVAL1 INTERVAL2"},
    {"interval", "mul", 2, 2, "INTERVAL NUMBER"},
    {"interval", "div", 2, 2, "INTERVAL NUMBER"},
    {"interval", "from-number", 2, 2, "ym|ds NUMBER"},
    {"interval", "to-number", 1, 1, "INTERVAL"},
    {"interval", "compare", 2, 2, "INTERVAL1 INTERVAL2"},
    {"interval", "from-text", 1, 1, "TEXT"},
    {"interval", "to-text", 1, 3, "INTERVAL [LFPREC [FSPREC]]"},
    {"sysdate", "", 0, 0, ""},
    {"systimestamp", "", 0, 0, ""},
    {"format", "explain", 1, 1, "MODEL"},
    {"batch", "", 0, 0, ""},
};

bool known_family(std::string_view f) {
  for (const Command &c : kCommands)
    if (f == c.family) return true;
  return false;
}

}  // namespace

std::string short_usage() {
  return "usage: qwzdt [OPTIONS] date|datetime|interval|format COMMAND ARGS...\n"
         "       qwzdt [OPTIONS] sysdate|systimestamp|batch\n"
         "       qwzdt [FAMILY [COMMAND]] --help | --version\n";
}

std::string usage_text(const Args &path) {
  std::string s;
  std::string_view family = path.empty() ? std::string_view() : path[0];
  std::string_view verb = path.size() > 1 ? path[1] : std::string_view();
  if (!known_family(family)) family = {};
  s += "usage:\n";
  for (const Command &c : kCommands) {
    if (!family.empty() && family != c.family) continue;
    if (!verb.empty() && !c.verb.empty() && verb != c.verb) {
      bool any = false;
      for (const Command &d : kCommands)
        if (family == d.family && verb == d.verb) any = true;
      if (any) continue;
    }
    s += "  qwzdt [OPTIONS] ";
    s += c.family;
    if (!c.verb.empty()) {
      s += ' ';
      s += c.verb;
    }
    if (*c.synopsis != '\0') {
      s += ' ';
      s += c.synopsis;
    }
    s += '\n';
  }
  if (family.empty()) {
    s += "  qwzdt --help | --version\n"
         "options: --format MODEL  --tz ZONE  --trace  --type TYPE  --lfprec N  --fsprec N\n"
         "types: date time time-tz timestamp timestamp-tz timestamp-ltz (or 65..70)\n"
         "values: DATE 'YYYY-MM-DD HH24:MI:SS' (default model), DATETIME the same with\n"
         "  optional '.FFn' digits and a zone such as '+02:00', INTERVAL '+01-06' or\n"
         "  '1 02:03:04.5'\n";
  }
  return s;
}

Outcome run_command(Context &ctx, const Options &opt, const Args &args, std::string &out,
                    std::string &err_out) {
  if (args.empty()) {
    err_out = "qwzdt: no command given\n" + short_usage();
    return kUsage;
  }
  std::string_view family = args[0];
  if (!known_family(family) || family == "batch") {
    err_out = "qwzdt: unknown command '" + std::string(family) + "'\n" + short_usage();
    return kUsage;
  }
  const Command *cmd = nullptr;
  for (const Command &c : kCommands)
    if (family == c.family && (c.verb.empty() || (args.size() > 1 && args[1] == c.verb))) {
      cmd = &c;
      break;
    }
  if (cmd == nullptr) {
    err_out = args.size() > 1 ? "qwzdt: unknown " + std::string(family) + " command '" +
                                    std::string(args[1]) + "'\n"
                              : "qwzdt: " + std::string(family) + " needs a command\n";
    err_out += usage_text({family});
    return kUsage;
  }
  std::size_t skip = cmd->verb.empty() ? 1 : 2;
  ArgSpan rest(args.data() + skip, args.size() - skip);
  if (rest.size() < cmd->min_args || rest.size() > cmd->max_args) {
    err_out = "qwzdt: wrong number of arguments\n" + usage_text(Args(args.begin(), args.begin() + static_cast<std::ptrdiff_t>(skip)));
    return kUsage;
  }
  std::string_view verb = cmd->verb;
  Outcome o = kUsage;
  if (family == "date") {
    o = date_cmd(ctx, opt, verb, rest, out, err_out);
  } else if (family == "datetime") {
    o = datetime_cmd(ctx, opt, verb, rest, out, err_out);
  } else if (family == "interval") {
    o = interval_cmd(ctx, opt, verb, rest, out, err_out);
  } else if (family == "sysdate") {
    QWZDate d{};
    QWZDT_CALL(QWZDateSysDate(ctx.err(), &d), "QWZDateSysDate");
    o = print_date(ctx, opt, d, out, err_out);
  } else if (family == "systimestamp") {
    Dt v{ctx.datetime(DATETIME_KIND_TIMESTAMP_TZ, 0), DATETIME_KIND_TIMESTAMP_TZ};
    QWZDT_CALL(QWZDateTimeSysTimeStamp(ctx.env(), ctx.err(), v.d), "QWZDateTimeSysTimeStamp");
    o = print_datetime(ctx, opt, v, out, err_out);
  } else if (family == "format") {
    o = explain_format(ctx, rest[0], out, err_out);
  }
  if (o == kUsage && !err_out.empty() && err_out.back() != '\n') {
    err_out += '\n';
    err_out += usage_text(Args(args.begin(), args.begin() + static_cast<std::ptrdiff_t>(skip)));
  }
  return o;
}

}  // namespace qwzdt
