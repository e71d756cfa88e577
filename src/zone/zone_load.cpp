// Reading zone settings: POSIX rule strings and zone files in the binary
// format (version 2 and later). Only forms whose reading by the C library is
// certain are accepted; the caller hands everything else over.
#include "zone/zone_model.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qwz::zone {

namespace {

bool is_alpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

// A zone abbreviation: three or more letters, or <...> holding three or more
// letters, digits and signs.
bool parse_name(const char *&p) {
  const char *q = p;
  while (is_alpha(*q)) ++q;
  if (q - p >= 3) {
    p = q;
    return true;
  }
  if (*p != '<') return false;
  q = p + 1;
  const char *start = q;
  while (is_alpha(*q) || is_digit(*q) || *q == '+' || *q == '-') ++q;
  if (*q != '>' || q - start < 3) return false;
  p = q + 1;
  return true;
}

// One to three digits.
bool parse_number(const char *&p, int *v) {
  if (!is_digit(*p)) return false;
  int n = 0, count = 0;
  while (is_digit(*p)) {
    if (++count > 3) return false;
    n = n * 10 + (*p++ - '0');
  }
  *v = n;
  return true;
}

// hh[:mm[:ss]], each part digits only.
bool parse_hms(const char *&p, int *hh, int *mm, int *ss) {
  *mm = *ss = 0;
  if (!parse_number(p, hh)) return false;
  if (*p != ':') return true;
  ++p;
  if (!parse_number(p, mm)) return false;
  if (*p != ':') return true;
  ++p;
  return parse_number(p, ss);
}

// [+|-]hh[:mm[:ss]] as seconds east of UTC (the text counts west), each
// part capped as the C library caps it.
bool parse_offset(const char *&p, long *off) {
  long sign = -1;
  if (*p == '+' || *p == '-') sign = *p++ == '-' ? 1 : -1;
  int hh, mm, ss;
  if (!parse_hms(p, &hh, &mm, &ss)) return false;
  *off = sign * (std::min(ss, 59) + std::min(mm, 59) * 60 + std::min(hh, 24) * 3600L);
  return true;
}

bool parse_change(const char *&p, ChangeRule *r) {
  if (*p == 'J') {
    ++p;
    int d;
    if (!parse_number(p, &d) || d < 1 || d > 365) return false;
    r->kind = 1;
    r->d = d;
  } else if (is_digit(*p)) {
    int d;
    if (!parse_number(p, &d) || d > 365) return false;
    r->kind = 0;
    r->d = d;
  } else if (*p == 'M') {
    ++p;
    int m, n, d;
    if (!parse_number(p, &m) || *p++ != '.' || !parse_number(p, &n) || *p++ != '.' ||
        !parse_number(p, &d))
      return false;
    if (m < 1 || m > 12 || n < 1 || n > 5 || d > 6) return false;
    r->kind = 2;
    r->m = m;
    r->n = n;
    r->d = d;
  } else {
    return false;
  }
  r->secs = 7200;
  if (*p == '/') {
    ++p;
    const bool negative = *p == '-';
    p += negative;
    int hh, mm, ss;
    if (!parse_hms(p, &hh, &mm, &ss)) return false;
    r->secs = (negative ? -1 : 1) * (hh * 3600 + mm * 60 + ss);
  }
  return *p == '\0' || *p == ',';
}

std::uint32_t be32(const unsigned char *p) {
  return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) |
         p[3];
}

std::int64_t be64(const unsigned char *p) {
  return static_cast<std::int64_t>((std::uint64_t{be32(p)} << 32) | be32(p + 4));
}

struct Counts {
  std::uint64_t isut, isstd, leap, time, type, chars;
};

bool read_header(const std::vector<unsigned char> &b, std::size_t at, Counts *c) {
  if (b.size() < at + 44 || std::memcmp(b.data() + at, "TZif", 4) != 0) return false;
  const unsigned char *h = b.data() + at + 20;
  *c = Counts{be32(h), be32(h + 4), be32(h + 8), be32(h + 12), be32(h + 16), be32(h + 20)};
  return c->isstd <= c->type && c->isut <= c->type;
}

}  // namespace

bool parse_posix(const char *text, PosixRule *out) {
  PosixRule r;
  const char *p = text;
  if (!parse_name(p)) return false;
  if (!(*p == '+' || *p == '-' || is_digit(*p))) return false;
  if (!parse_offset(p, &r.std_off)) return false;
  if (*p == '\0') {
    r.dst_off = r.std_off;
    *out = r;
    return true;
  }
  if (!parse_name(p)) return false;
  r.has_dst = true;
  if (*p == '+' || *p == '-' || is_digit(*p)) {
    if (!parse_offset(p, &r.dst_off)) return false;
  } else {
    r.dst_off = r.std_off + 3600;
  }
  // Without change rules the C library consults another zone file.
  if (*p != ',') return false;
  ++p;
  if (!parse_change(p, &r.start) || *p != ',') return false;
  ++p;
  if (!parse_change(p, &r.end) || *p != '\0') return false;
  *out = r;
  return true;
}

FileResult load_file(const std::string &path, Zone *out) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    const int e = errno;
    return (e == ENOENT || e == ENOTDIR || e == ENAMETOOLONG || e == ELOOP || e == EACCES)
               ? FileResult::Missing
               : FileResult::Refused;
  }
  std::vector<unsigned char> b;
  struct stat st;
  bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size < (1 << 24);
  if (ok) {
    b.resize(static_cast<std::size_t>(st.st_size));
    std::size_t got = 0;
    while (got < b.size()) {
      const ssize_t n = ::read(fd, b.data() + got, b.size() - got);
      if (n <= 0) break;
      got += static_cast<std::size_t>(n);
    }
    ok = got == b.size();
  }
  ::close(fd);
  if (!ok) return FileResult::Refused;

  Counts c1, c;
  if (!read_header(b, 0, &c1) || b[4] == 0) return FileResult::Refused;
  const std::uint64_t skip =
      c1.time * 5 + c1.type * 6 + c1.chars + c1.leap * 8 + c1.isstd + c1.isut;
  const std::size_t at = 44 + static_cast<std::size_t>(skip);
  if (skip > b.size() || !read_header(b, at, &c)) return FileResult::Refused;
  if (c.leap != 0 || c.type == 0 || c.type > 256) return FileResult::Refused;
  const std::uint64_t body = c.time * 9 + c.type * 6 + c.chars + c.isstd + c.isut;
  std::size_t pos = at + 44;
  if (body > b.size() || b.size() - pos < body + 2) return FileResult::Refused;

  Zone z;
  const unsigned char *tp = b.data() + pos;
  const unsigned char *ip = tp + c.time * 8;
  const unsigned char *yp = ip + c.time;
  std::vector<LocalType> types(static_cast<std::size_t>(c.type));
  for (std::size_t i = 0; i < types.size(); ++i) {
    const unsigned char *e = yp + i * 6;
    if (e[4] > 1 || e[5] > c.chars) return FileResult::Refused;
    types[i] = LocalType{static_cast<std::int32_t>(be32(e)), e[4] == 1};
  }
  for (std::size_t i = 0; i < c.time; ++i) {
    const std::int64_t t = be64(tp + i * 8);
    if (!z.trans.empty() && t <= z.trans.back()) return FileResult::Refused;
    if (ip[i] >= c.type) return FileResult::Refused;
    z.trans.push_back(t);
    z.trans_type.push_back(types[ip[i]]);
  }
  // Before the first transition: the first standard type, else the first.
  z.before = types[0];
  for (const LocalType &t : types)
    if (!t.dst) {
      z.before = t;
      break;
    }
  // The standard offset reported: the latest transition to a standard type,
  // the first type without transitions.
  long stdoff = types[0].off;
  if (!z.trans.empty()) {
    stdoff = 0;
    for (std::size_t i = z.trans.size(); i-- > 0;)
      if (!z.trans_type[i].dst) {
        stdoff = z.trans_type[i].off;
        break;
      }
  }
  z.std_off = stdoff;

  pos += static_cast<std::size_t>(body);
  const std::size_t rem = b.size() - pos;
  if (b[pos] == '\n') {
    const std::string rule_text(reinterpret_cast<const char *>(b.data() + pos + 1), rem - 2);
    if (rule_text.find('\0') != std::string::npos || rule_text.find('\n') != std::string::npos)
      return FileResult::Refused;
    if (!rule_text.empty()) {
      if (!parse_posix(rule_text.c_str(), &z.rule)) return FileResult::Refused;
      z.has_footer = true;
    }
  }
  // Once past the last transition the C library reports the footer's
  // standard offset instead; which one shows depends on its history.
  if (z.has_footer && !z.trans.empty() && z.rule.std_off != stdoff) z.std_ambiguous = true;
  for (const LocalType &t : types) z.offsets.push_back(t.off);
  *out = std::move(z);
  return FileResult::Ok;
}

void finish_zone(Zone *z) {
  if (z->rule_everywhere || z->has_footer) {
    z->offsets.push_back(z->rule.std_off);
    z->offsets.push_back(z->rule.dst_off);
  }
  if (z->rule_everywhere) z->std_off = z->rule.std_off;
  z->offsets.push_back(z->before.off);
  std::sort(z->offsets.begin(), z->offsets.end());
  z->offsets.erase(std::unique(z->offsets.begin(), z->offsets.end()), z->offsets.end());
  z->max_abs_off = 0;
  for (const std::int64_t o : z->offsets) z->max_abs_off = std::max(z->max_abs_off, o < 0 ? -o : o);
  fill_rule_years(z);
}

}  // namespace qwz::zone
