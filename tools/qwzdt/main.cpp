// qwzdt: dates, datetimes and intervals from the shell, through libqwz.
//   qwzdt [OPTIONS] FAMILY COMMAND ARGS...
//   qwzdt [OPTIONS] batch [FAMILY COMMAND ARGS with '-' for the line]
// Exit status: 0 success, 1 a library call failed (diagnostic on stderr),
// 2 a usage error.
#include "qwzdt.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

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
        // A run of plain characters at once.
        std::size_t run = i + 1;
        while (run < line.size() && line[run] != ' ' && line[run] != '\t' && line[run] != '\'' &&
               line[run] != '"')
          ++run;
        arena.append(line.data() + i, run - i);
        i = run;
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

// Standard input through read(2) in blocks, handed out one line at a time
// (without its line end, and without a carriage return before it); a line
// may span two blocks. Each line gets a NUL in place of its line end, so
// that it can be passed on as a NUL-terminated text without a copy. The
// line after the one handed out is found and terminated at once: by the
// time the caller reads up to that NUL, the one-byte store is long done,
// and the wide loads of a string scan do not wait for it.
class LineReader {
 public:
  LineReader() { std::memset(buf_.get() + size_, 0, kSpare); }

  bool next(char *&line, std::size_t &len) {
    if (!ready_ && !fill()) return false;
    line = buf_.get() + ready_start_;
    len = ready_len_;
    ready_ = find();
    return true;
  }

 private:
  // Spare bytes behind the block: room for the terminator of a last line
  // without a line end.
  static constexpr std::size_t kSpare = 64;

  // Terminates the line at pos_ when its end is in the block.
  bool find() {
    char *b = buf_.get();
    void *nl = std::memchr(b + pos_, '\n', end_ - pos_);
    if (!nl) return false;
    take(static_cast<std::size_t>(static_cast<char *>(nl) - b));
    return true;
  }

  // Moves the unfinished line to the front and reads behind it until a
  // line ends or the input does; the line handed out before is done with.
  bool fill() {
    if (eof_) return false;
    std::memmove(buf_.get(), buf_.get() + pos_, end_ - pos_);
    end_ -= pos_;
    pos_ = 0;
    std::size_t scanned = end_;  // the kept bytes hold no line end
    for (;;) {
      if (end_ == size_) grow();
      ssize_t got;
      do {
        got = ::read(STDIN_FILENO, buf_.get() + end_, size_ - end_);
      } while (got < 0 && errno == EINTR);
      if (got <= 0) {
        eof_ = true;
        if (pos_ == end_) return false;
        take(end_);
        return true;
      }
      end_ += static_cast<std::size_t>(got);
      char *b = buf_.get();
      if (void *nl = std::memchr(b + scanned, '\n', end_ - scanned)) {
        take(static_cast<std::size_t>(static_cast<char *>(nl) - b));
        return true;
      }
      scanned = end_;
    }
  }

  // The line from pos_ up to the line end at `at` becomes the ready line.
  void take(std::size_t at) {
    char *b = buf_.get();
    std::size_t len = at - pos_;
    if (len > 0 && b[at - 1] == '\r') --len;
    b[pos_ + len] = '\0';
    ready_start_ = pos_;
    ready_len_ = len;
    pos_ = at + 1 < end_ ? at + 1 : end_;
  }

  void grow() {
    std::unique_ptr<char[]> bigger(new char[size_ * 2 + kSpare]);
    std::memcpy(bigger.get(), buf_.get(), end_);
    std::memset(bigger.get() + size_ * 2, 0, kSpare);
    buf_ = std::move(bigger);
    size_ *= 2;
  }

  // 64 KiB: a block's lines are still in the cache when they are converted,
  // and the buffer costs few page faults to set up. A longer line grows it.
  std::size_t size_ = 1 << 16;
  std::unique_ptr<char[]> buf_{new char[size_ + kSpare]};
  std::size_t pos_ = 0, end_ = 0;  // the unread rest of the block
  std::size_t ready_start_ = 0, ready_len_ = 0;
  bool ready_ = false;
  bool eof_ = false;
};

// Standard output collected in one large buffer and handed to stdio (with a
// 64 KiB buffer of its own) in one call once more than 64 KiB are pending
// after a line: a run with --trace interleaves its records on standard
// error with the results at the same points as it always has.
class Output {
 public:
  static constexpr std::size_t kFlushAt = 1 << 16;

  Output() { std::setvbuf(stdout, stdio_buf_, _IOFBF, sizeof stdio_buf_); }
  ~Output() {
    flush();
    std::fflush(stdout);
  }

  // Room for `n` more bytes at the end; commit what was used.
  char *room(std::size_t n) {
    if (len_ + n > size_) {
      std::size_t size = size_ * 2 > len_ + n ? size_ * 2 : len_ + n;
      std::unique_ptr<char[]> bigger(new char[size]);
      std::memcpy(bigger.get(), buf_.get(), len_);
      buf_ = std::move(bigger);
      size_ = size;
    }
    return buf_.get() + len_;
  }
  void commit(std::size_t n) { len_ += n; }
  void append(std::string_view s) {
    std::memcpy(room(s.size()), s.data(), s.size());
    len_ += s.size();
  }
  void put(char c) {
    *room(1) = c;
    ++len_;
  }
  void end_line() {
    if (len_ > kFlushAt) flush();
  }
  void flush() {
    std::fwrite(buf_.get(), 1, len_, stdout);
    len_ = 0;
  }

 private:
  static char stdio_buf_[kFlushAt];
  std::size_t size_ = 2 * kFlushAt + 4096;
  std::unique_ptr<char[]> buf_{new char[size_]};
  std::size_t len_ = 0;
};

char Output::stdio_buf_[Output::kFlushAt];

bool looks_like_option(std::string_view l) { return l.size() > 2 && l[0] == '-' && l[1] == '-'; }

// Reads stdin line by line and runs one operation per line. With a template
// (`words` not empty), each '-' word of the template is replaced by the line.
int run_batch(qwzdt::Context &ctx, const Options &opt, const Args &templ) {
  LineReader reader;
  Output out;
  std::string line_out, err, arena;
  line_out.reserve(1 << 12);
  err.reserve(1 << 12);
  Args words, positional;
  words.reserve(16);
  positional.reserve(16);
  bool failed = false;
  // The template `date to-text - MODEL` (the common conversion of a column
  // of dates) has its models prepared once and converts each line in place
  // into the output buffer, skipping the word list and the command table; a
  // line that is an option goes the long way.
  const bool date_to_text = templ.size() == 4 && templ[0] == "date" && templ[1] == "to-text" &&
                            templ[2] == "-" && templ[3] != "-" && !has_option(templ);
  const qwzdt::DateToTextBatch convert(opt, date_to_text ? templ[3] : std::string_view());
  // A failed line's output is its diagnostic line.
  auto fail_line = [&]() {
    failed = true;
    out.append(first_line(err));
    out.put('\n');
    err.clear();
  };
  char *text;
  std::size_t len;
  while (reader.next(text, len)) {
    std::string_view l(text, len);
    if (date_to_text && !looks_like_option(l)) {
      char *to = out.room(qwzdt::DateToTextBatch::kOutSize + 1);
      std::size_t written = 0;
      if (convert.convert(ctx, text, len, to, written, err) == qwzdt::kOk) {
        to[written] = '\n';
        out.commit(written + 1);
      } else {
        fail_line();
      }
      out.end_line();
      continue;
    }
    if (templ.empty()) {
      split_words(l, arena, words);
    } else {
      words.assign(templ.begin(), templ.end());
      for (std::string_view &w : words)
        if (w == "-") w = l;
    }
    if (words.empty()) {
      out.put('\n');
      continue;
    }
    err.clear();
    line_out.clear();
    Outcome o;
    if (has_option(words)) {
      Options line_opt = opt;
      positional.clear();
      if (!qwzdt::take_options(words, line_opt, positional, err)) {
        o = qwzdt::kUsage;
      } else {
        qwzdt::apply_environment(line_opt);
        o = qwzdt::run_command(ctx, line_opt, positional, line_out, err);
        qwzdt::apply_environment(opt);
      }
    } else {
      o = qwzdt::run_command(ctx, opt, words, line_out, err);
    }
    if (o != qwzdt::kOk)
      fail_line();
    else
      out.append(line_out);
    out.end_line();
  }
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
