// qwzdt: the shell face of libqwz. Everything here is built on the public
// header alone; the tool links the shared library like any other client.
#ifndef QWZDT_QWZDT_H
#define QWZDT_QWZDT_H

#include <qwz/qwz.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qwzdt {

using Args = std::vector<std::string_view>;

// Exit statuses of one command.
enum Outcome { kOk = 0, kFailed = 1, kUsage = 2 };

// Options that may stand anywhere on a command line (always "--name").
struct Options {
  std::string format;      // --format: model for reading and printing values
  std::string tz;          // --tz: process zone for the call
  std::string type;        // --type: datetime type name for a value
  int lfprec = 2;          // --lfprec: leading-field digits of interval text
  int fsprec = 5;          // --fsprec: fraction digits of interval text
  bool trace = false;      // --trace
  bool help = false;       // --help
  bool version = false;    // --version
};

// One environment and error handle for the whole process, plus descriptors
// kept for reuse so that a batch of a million lines allocates nothing per line.
class Context {
 public:
  Context();
  ~Context();
  Context(const Context &) = delete;
  Context &operator=(const Context &) = delete;

  QWZEnv *env() const { return env_; }
  QWZError *err() const { return err_; }
  // Descriptor number `slot` (0..3) of a datetime type 65..70.
  QWZDateTime *datetime(ub4 type, int slot);
  // Descriptor number `slot` (0..3) of an interval kind 62 or 63.
  QWZInterval *interval(ub4 kind, int slot);

  // Appends "qwzdt: <number> <state>: <message>" for a failed call to `out`
  // (no line end). `what` names the call, for failures without a diagnostic.
  void diagnostic(sword status, const char *what, std::string &out) const;

 private:
  QWZEnv *env_ = nullptr;
  QWZError *err_ = nullptr;
  QWZDateTime *dt_[6][4] = {};
  QWZInterval *iv_[2][4] = {};
};

// Runs one command (family, verb, arguments; options already taken out).
// Results go to `out`, one line each with their line ends; a failure puts the
// diagnostic line into `err_out` (without line end) and returns kFailed; a
// usage error puts a short usage text into `err_out` and returns kUsage.
Outcome run_command(Context &ctx, const Options &opt, const Args &args, std::string &out,
                    std::string &err_out);

// `date to-text TEXT MODEL`: TEXT read under the --format model (or the
// default one) and printed under MODEL, as run_command runs that command.
// Batch mode calls it directly for the template `date to-text - MODEL`.
Outcome date_to_text(Context &ctx, const Options &opt, std::string_view text,
                     std::string_view model, std::string &out, std::string &err_out);

// `date to-text - MODEL` over many lines: both models are prepared once, and
// each line is read and printed exactly as date_to_text does it, without a
// copy of the line and straight into the caller's output buffer.
class DateToTextBatch {
 public:
  // Longest text passed on; longer ones are cut, as for any command word.
  static constexpr std::size_t kMaxText = 511;
  // Room `convert` needs at `buf`.
  static constexpr std::size_t kOutSize = 300;

  DateToTextBatch(const Options &opt, std::string_view model);
  // `text` has `len` bytes and a NUL at text[len] (unless len > kMaxText).
  // On success the result (without line end, NUL-terminated) is at `buf`
  // and `written` is its length; on failure the diagnostic line goes to
  // `err_out` as date_to_text puts it there.
  Outcome convert(Context &ctx, const char *text, std::size_t len, char *buf,
                  std::size_t &written, std::string &err_out) const;

 private:
  char in_model_[512];
  char out_model_[512];
  ub1 in_len_ = 0;
  ub1 out_len_ = 0;
};

// Splits argv-like words into options and positional arguments. Returns false
// (with a message in `err_out`) for an unknown option or a missing value.
bool take_options(const Args &words, Options &opt, Args &positional, std::string &err_out);

// Applies --tz and --trace for the duration of a command.
void apply_environment(const Options &opt);

// Usage texts: the commands under `path` (all of them for an empty path),
// and the three-line summary given with a usage error at the top level.
std::string usage_text(const Args &path);
std::string short_usage();

// `qwzdt format explain MODEL`.
Outcome explain_format(Context &ctx, std::string_view model, std::string &out,
                       std::string &err_out);

}  // namespace qwzdt

#endif  // QWZDT_QWZDT_H
