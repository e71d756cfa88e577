// qwzdt: dates, datetimes and intervals from the shell, through libqwz.
//   qwzdt [OPTIONS] FAMILY COMMAND ARGS...
//   qwzdt [OPTIONS] batch [FAMILY COMMAND ARGS with '-' for the line]
// Exit status: 0 success, 1 a library call failed (diagnostic on stderr),
// 2 a usage error.
#include "qwzdt.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#ifndef QWZDT_VERSION
#define QWZDT_VERSION "unknown"
#endif

namespace {

using qwzdt::Args;
using qwzdt::Options;
using qwzdt::Outcome;

// Splits a batch line into words: blanks and tabs separate; '...' and "..."
// group (quotes are removed, nothing is escaped). Words live in `arena`,
// whose capacity is reserved up front so the views stay valid.
void split_words(std::string_view line, std::string &arena, Args &words) {
  words.clear();
  arena.clear();
  if (arena.capacity() < line.size() * 2 + 2) arena.reserve(line.size() * 2 + 64);
  std::size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
    if (i >= line.size()) break;
    std::size_t start = arena.size();
    while (i < line.size() && line[i] != ' ' && line[i] != '\t') {
      char q = line[i];
      if (q == '\'' || q == '"') {
        std::size_t end = line.find(q, i + 1);
        if (end == std::string_view::npos) end = line.size();
        arena.append(line.substr(i + 1, end - i - 1));
        i = end < line.size() ? end + 1 : end;
      } else {
        arena += q;
        ++i;
      }
    }
    words.emplace_back(arena.data() + start, arena.size() - start);
  }
}

bool has_option(const Args &words) {
  for (std::string_view w : words)
    if (w.size() > 2 && w[0] == '-' && w[1] == '-') return true;
  return false;
}

std::string_view first_line(const std::string &s) {
  std::string_view v(s);
  return v.substr(0, v.find('\n'));
}

// Standard input in large blocks, handed out one line at a time (without
// its line end); a line may span two blocks.
class LineReader {
 public:
  bool next(std::string_view &line) {
    for (;;) {
      if (const void *nl = std::memchr(buf_.data() + pos_, '\n', end_ - pos_)) {
        std::size_t at = static_cast<const char *>(nl) - buf_.data();
        line = std::string_view(buf_.data() + pos_, at - pos_);
        pos_ = at + 1;
        return true;
      }
      if (eof_) {
        if (pos_ == end_) return false;
        line = std::string_view(buf_.data() + pos_, end_ - pos_);
        pos_ = end_;
        return true;
      }
      // Keep the unfinished line, then read more behind it.
      std::memmove(buf_.data(), buf_.data() + pos_, end_ - pos_);
      end_ -= pos_;
      pos_ = 0;
      if (end_ == buf_.size()) buf_.resize(buf_.size() * 2);
      std::size_t got = std::fread(buf_.data() + end_, 1, buf_.size() - end_, stdin);
      if (got == 0) eof_ = true;
      end_ += got;
    }
  }

 private:
  std::string buf_ = std::string(1 << 16, '\0');
  std::size_t pos_ = 0, end_ = 0;
  bool eof_ = false;
};

// Reads stdin line by line and runs one operation per line. With a template
// (`words` not empty), each '-' word of the template is replaced by the line.
int run_batch(qwzdt::Context &ctx, const Options &opt, const Args &templ) {
  static char outbuf[1 << 16];
  std::setvbuf(stdout, outbuf, _IOFBF, sizeof outbuf);
  LineReader reader;
  std::string out, err, arena, raw;
  out.reserve(1 << 17);
  Args words, positional;
  words.reserve(16);
  positional.reserve(16);
  bool failed = false;
  // The template `date to-text - MODEL` (the common conversion of a column
  // of dates) goes straight to the command's routine, skipping the word
  // list and the command table; a line that is an option goes the long way.
  const bool date_to_text = templ.size() == 4 && templ[0] == "date" && templ[1] == "to-text" &&
                            templ[2] == "-" && templ[3] != "-" && !has_option(templ);
  // A failed line's output is replaced by its diagnostic line; output goes
  // out in large blocks.
  auto finish_line = [&](Outcome o, std::size_t mark) {
    if (o != qwzdt::kOk) {
      failed = true;
      out.resize(mark);
      out += first_line(err);
      out += '\n';
    }
    if (out.size() > (1 << 16)) {
      std::fwrite(out.data(), 1, out.size(), stdout);
      out.clear();
    }
  };
  std::string_view l;
  while (reader.next(l)) {
    if (!l.empty() && l.back() == '\r') l.remove_suffix(1);
    if (date_to_text && !(l.size() > 2 && l[0] == '-' && l[1] == '-')) {
      err.clear();
      const std::size_t mark = out.size();
      finish_line(qwzdt::date_to_text(ctx, opt, l, templ[3], out, err), mark);
      continue;
    }
    if (templ.empty()) {
      split_words(l, arena, words);
    } else {
      words.assign(templ.begin(), templ.end());
      for (std::string_view &w : words)
        if (w == "-") w = l;
    }
    err.clear();
    std::size_t mark = out.size();
    Outcome o;
    if (words.empty()) {
      out += '\n';
      continue;
    }
    if (has_option(words)) {
      Options line_opt = opt;
      positional.clear();
      if (!qwzdt::take_options(words, line_opt, positional, err)) {
        o = qwzdt::kUsage;
      } else {
        qwzdt::apply_environment(line_opt);
        o = qwzdt::run_command(ctx, line_opt, positional, out, err);
        qwzdt::apply_environment(opt);
      }
    } else {
      o = qwzdt::run_command(ctx, opt, words, out, err);
    }
    finish_line(o, mark);
  }
  std::fwrite(out.data(), 1, out.size(), stdout);
  std::fflush(stdout);
  return failed ? 1 : 0;
}

}  // namespace

int main(int argc, char **argv) {
  Args words;
  for (int i = 1; i < argc; ++i) words.emplace_back(argv[i]);
  Options opt;
  Args positional;
  std::string err;
  if (!qwzdt::take_options(words, opt, positional, err)) {
    std::fprintf(stderr, "%s\n%s", err.c_str(), qwzdt::short_usage().c_str());
    return 2;
  }
  if (opt.version) {
    std::printf("qwzdt %s\n", QWZDT_VERSION);
    return 0;
  }
  if (opt.help) {
    std::fputs(qwzdt::usage_text(positional).c_str(), stdout);
    return 0;
  }
  qwzdt::apply_environment(opt);
  qwzdt::Context ctx;
  if (!positional.empty() && positional[0] == "batch")
    return run_batch(ctx, opt, Args(positional.begin() + 1, positional.end()));
  std::string out;
  Outcome o = qwzdt::run_command(ctx, opt, positional, out, err);
  std::fwrite(out.data(), 1, out.size(), stdout);
  if (o != qwzdt::kOk) {
    std::fputs(err.c_str(), stderr);
    if (!err.empty() && err.back() != '\n') std::fputc('\n', stderr);
  }
  return o;
}
