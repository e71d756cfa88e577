// `qwzdt format explain MODEL`: shows the tokens a format model becomes, the
// keyword rows they hit and the first rule that refuses the model, then asks
// the library itself (QWZDateToText and QWZDateTimeToText on sample values)
// so that the explanation can be checked against the real verdict.
//
// The token rules are the ones the library documents for its format models:
// blanks around the model are dropped; at each position the longest keyword
// (compared without regard to case) is taken, else one literal character;
// a literal letter or digit, an unsupported keyword and a repeated keyword
// (any two fraction keywords count as repeated) each refuse the model.
#include "qwzdt.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace qwzdt {
namespace {

struct Row {
  const char *keyword;
  bool supported;
  int width;
  bool required;
};

// The 61 keyword rows, in the library's order (the row number is the id).
constexpr Row kRows[61] = {
    {"AD", false, 0, false},    {"A.D.", false, 0, false},  {"AM", false, 0, false},
    {"A.M.", false, 0, false},  {"BC", false, 0, false},    {"B.C.", false, 0, false},
    {"CC", false, 0, false},    {"SCC", false, 0, false},   {"D", false, 0, false},
    {"DAY", false, 0, false},   {"DD", true, 2, true},      {"DDD", false, 0, false},
    {"DL", false, 0, false},    {"DS", false, 0, false},    {"DY", false, 0, false},
    {"E", false, 0, false},     {"EE", false, 0, false},    {"FF1", true, 1, false},
    {"FF2", true, 2, false},    {"FF3", true, 3, false},    {"FF4", true, 4, false},
    {"FF5", true, 5, false},    {"FM", false, 0, false},    {"FX", false, 0, false},
    {"HH", true, 2, false},     {"HH12", true, 2, false},   {"HH24", true, 2, false},
    {"IW", false, 0, false},    {"IYY", false, 0, false},   {"IY", false, 0, false},
    {"I", false, 0, false},     {"IYYY", false, 0, false},  {"J", false, 0, false},
    {"MI", true, 2, false},     {"MM", true, 2, true},      {"MON", false, 0, false},
    {"MONTH", false, 0, false}, {"PM", false, 0, false},    {"P.M.", false, 0, false},
    {"Q", false, 0, false},     {"RM", false, 0, false},    {"RR", false, 0, false},
    {"RRRR", false, 0, false},  {"SS", true, 2, false},     {"SSSSS", false, 0, false},
    {"TS", false, 0, false},    {"TZD", false, 0, false},   {"TZH", true, 3, false},
    {"TZM", true, 2, false},    {"TZR", false, 0, false},   {"WW", false, 0, false},
    {"W", false, 0, false},     {"X", false, 0, false},     {"Y,YYY", false, 0, false},
    {"YEAR", false, 0, false},  {"SYEAR", false, 0, false}, {"YYYY", true, 4, true},
    {"SYYYY", true, 5, false},  {"YYY", false, 0, false},   {"YY", false, 0, false},
    {"Y", false, 0, false},
};

bool is_fraction(int id) { return id >= 17 && id <= 21; }

int lookup(std::string_view s) {
  for (int id = 0; id < 61; ++id) {
    const char *k = kRows[id].keyword;
    if (std::strlen(k) != s.size()) continue;
    bool same = true;
    for (std::size_t i = 0; i < s.size() && same; ++i) {
      char c = s[i];
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
      same = c == k[i];
    }
    if (same) return id;
  }
  return -1;
}

struct Token {
  std::string text;
  int id;  // -1 for a literal
};

bool is_alnum(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

void sample_call(Context &ctx, bool datetime, std::string_view model, std::string &out,
                 std::string &diag) {
  QWZtext buf[300] = {};
  ub4 size = sizeof buf - 1;
  std::string m(model);
  sword st;
  if (!datetime) {
    QWZDate d{2024, 5, 17, 10, 20, 30};
    st = QWZDateToText(ctx.err(), &d, reinterpret_cast<const QWZtext *>(m.c_str()),
                       static_cast<ub1>(m.size() > 255 ? 255 : m.size()), nullptr, 0, &size,
                       buf);
  } else {
    QWZDateTime *v = ctx.datetime(DATETIME_KIND_TIMESTAMP_TZ, 3);
    QWZText zone[] = "+02:00";
    st = QWZDateTimeConstruct(ctx.env(), ctx.err(), v, 2024, 5, 17, 10, 20, 30, 123456789, zone,
                              6);
    if (st == QWZ_SUCCESS)
      st = QWZDateTimeToText(ctx.env(), ctx.err(), v,
                             reinterpret_cast<const QWZtext *>(m.c_str()),
                             static_cast<ub1>(m.size() > 255 ? 255 : m.size()), 5, nullptr, 0,
                             &size, buf);
  }
  out += datetime ? "QWZDateTimeToText (2024-05-17 10:20:30.123456789 +02:00): "
                  : "QWZDateToText (2024-05-17 10:20:30): ";
  if (st == QWZ_SUCCESS) {
    out += '"';
    out += reinterpret_cast<const char *>(buf);
    out += "\"\n";
  } else {
    std::string d;
    ctx.diagnostic(st, datetime ? "QWZDateTimeToText" : "QWZDateToText", d);
    out += "refused: ";
    out += d;
    out += '\n';
    if (diag.empty()) diag = d;
  }
}

}  // namespace

Outcome explain_format(Context &ctx, std::string_view model, std::string &out,
                       std::string &err_out) {
  out += "model \"";
  out += model;
  out += "\"\n";
  std::string refusal;
  std::vector<Token> tokens;
  std::string_view trimmed = model;
  while (!trimmed.empty() && trimmed.front() == ' ') trimmed.remove_prefix(1);
  while (!trimmed.empty() && trimmed.back() == ' ') trimmed.remove_suffix(1);
  if (model.size() > 127) {
    refusal = "the model is longer than 127 characters";
  } else if (trimmed.empty()) {
    refusal = "the model is empty (or blanks only)";
  } else {
    for (std::size_t i = 0; i < trimmed.size();) {
      int found = -1;
      std::size_t len = trimmed.size() - i;
      for (; len > 0; --len)
        if ((found = lookup(trimmed.substr(i, len))) >= 0) break;
      if (found >= 0) {
        tokens.push_back({std::string(trimmed.substr(i, len)), found});
        i += len;
      } else {
        tokens.push_back({std::string(1, trimmed[i]), -1});
        ++i;
      }
    }
  }
  char line[200];
  for (std::size_t n = 0; n < tokens.size(); ++n) {
    const Token &t = tokens[n];
    if (t.id < 0) {
      std::snprintf(line, sizeof line, "%3zu  literal  '%s'\n", n + 1, t.text.c_str());
    } else {
      const Row &r = kRows[t.id];
      std::snprintf(line, sizeof line, "%3zu  keyword  %-7s row %2d %-6s %s", n + 1,
                    t.text.c_str(), t.id, r.keyword, r.supported ? "supported" : "unsupported");
      out += line;
      if (r.supported) {
        std::snprintf(line, sizeof line, ", width %d%s", r.width,
                      r.required ? ", required when reading" : "");
        out += line;
      }
      std::snprintf(line, sizeof line, "\n");
    }
    out += line;
  }
  for (std::size_t n = 0; n < tokens.size() && refusal.empty(); ++n) {
    const Token &t = tokens[n];
    if (t.id < 0) {
      if (is_alnum(t.text[0]))
        refusal = "rule 1 (no letter or digit as a literal) refuses token " + std::to_string(n + 1) +
                  " '" + t.text + "'";
      continue;
    }
    if (!kRows[t.id].supported) {
      refusal = "rule 2 (supported keywords only) refuses token " + std::to_string(n + 1) + " " +
                t.text;
      continue;
    }
    int count = 0;
    for (const Token &u : tokens)
      if (u.id >= 0 && (u.id == t.id || (is_fraction(t.id) && is_fraction(u.id)))) ++count;
    if (count > 1)
      refusal = "rule 3 (each keyword once, one fraction keyword) refuses token " +
                std::to_string(n + 1) + " " + t.text;
  }
  out += refusal.empty() ? "rules: accepted\n" : "rules: " + refusal + "\n";
  std::string diag;
  sample_call(ctx, false, model, out, diag);
  sample_call(ctx, true, model, out, diag);
  if (!diag.empty()) {
    err_out = diag;
    return kFailed;
  }
  return kOk;
}

}  // namespace qwzdt
