// What indexing a mailbox costs beside reading it, and beside other programs. Without arguments: makes a mailbox of 300
// MB in the temporary folder (kept for the next run), warms it, runs every row seven times in turn, prints the medians
// and says whether the targets are met.
//
//   lock_bench [--file MAILBOX] [--megabytes N] [--rounds N]
//   lock_bench --row NAME MAILBOX     one row, once: processor seconds, peak megabytes, messages
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "lock_rows.h"
#include "make_mailbox.h"

namespace {

using vellobar::bench::MailboxSize;
using vellobar::bench::make_mailbox;
using vellobar::bench::measure_here;
using vellobar::bench::Measured;
using vellobar::bench::Row;
using vellobar::bench::rows;

constexpr std::uint64_t kSeed = 20240101;

constexpr char kPythonProgram[] =
    "import mailbox, sys, time\n"
    "start = time.process_time()\n"
    "box = mailbox.mbox(sys.argv[1], create=False)\n"
    "count = len(box.keys())\n"
    "used = time.process_time() - start\n"
    "peak = [line for line in open(\"/proc/self/status\") if line.startswith(\"VmHWM\")][0].split()[1]\n"
    "print(used, int(peak) * 1024 / 1e6, count)\n";

/// One line of the table: a command that prints what it measured.
struct Line {
  std::string name;
  std::string title;
  std::string command;
  std::vector<Measured> runs;
};

struct Options {
  std::string mailbox;
  long megabytes = 300;
  long rounds = 7;
};

std::string quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char character : text) quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
  return quoted + "'";
}

std::optional<Measured> run(const std::string& command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(::popen(command.c_str(), "r"), ::pclose);
  Measured measured;
  long long messages = 0;
  if (!output || std::fscanf(output.get(), "%lf %lf %lld", &measured.processor_seconds, &measured.peak_megabytes,
                             &messages) != 3) {
    return std::nullopt;
  }
  measured.messages = messages;
  return measured;
}

double median(const Line& line, double Measured::*figure) {
  std::vector<double> figures;
  for (const Measured& run : line.runs) figures.push_back(run.*figure);
  std::sort(figures.begin(), figures.end());
  return figures[figures.size() / 2];
}

std::vector<Line> lines_of(const std::string& program, const std::string& mailbox) {
  std::vector<Line> lines;
  for (const Row& row : rows()) {
    lines.push_back({row.name, row.title, quoted(program) + " --row " + row.name + " " + quoted(mailbox), {}});
  }
  lines.push_back(
      {"python", "Python mailbox.mbox keys()", "python3 -c " + quoted(kPythonProgram) + " " + quoted(mailbox), {}});
  return lines;
}

/// Runs the lines in turn, so that what slows the machine down for a while slows all of them. Drops lines that cannot
/// run.
void measure(std::vector<Line>& lines, long rounds) {
  for (long round = 0; round < rounds; ++round) {
    for (Line& line : lines) {
      if (const auto measured = run(line.command)) line.runs.push_back(*measured);
    }
  }
  std::erase_if(lines, [](const Line& line) { return line.runs.empty(); });
}

void print(const std::vector<Line>& lines, double megabytes) {
  const double limit = median(lines.front(), &Measured::processor_seconds);
  std::printf("%-36s %8s %7s %11s %8s %9s\n", "", "CPU s", "GB/s", "x of read", "peak MB", "messages");
  for (const Line& line : lines) {
    const double seconds = median(line, &Measured::processor_seconds);
    std::printf("%-36s %8.4f %7.2f %11.2f %8.1f", line.title.c_str(), seconds, megabytes / 1000 / seconds,
                seconds / limit, median(line, &Measured::peak_megabytes));
    if (line.runs.front().messages >= 0) std::printf(" %9lld", static_cast<long long>(line.runs.front().messages));
    std::printf("\n");
  }
}

/// Says whether `measured` keeps to the target; true when it does.
bool judge(const char* target, double measured, double wanted, bool at_most) {
  const bool met = at_most ? measured <= wanted : measured >= wanted;
  std::printf("%-48s %s %5.1f  measured %6.2f  %s\n", target, at_most ? "<=" : ">=", wanted, measured,
              met ? "met" : "MISSED");
  return met;
}

bool judge_all(const std::vector<Line>& lines) {
  std::map<std::string, double> seconds;
  for (const Line& line : lines) seconds[line.name] = median(line, &Measured::processor_seconds);
  const double lock = seconds.at("lock");
  const auto lock_line = std::find_if(lines.begin(), lines.end(), [](const Line& line) { return line.name == "lock"; });
  bool met = judge("Lock / plain read of the same chunks", lock / seconds.at("read"), 1.3, true);
  met = judge("peak memory of Lock, MB", median(*lock_line, &Measured::peak_megabytes), 24, true) && met;
  if (seconds.contains("gmime")) met = judge("GMime / Lock", seconds["gmime"] / lock, 10, false) && met;
  if (seconds.contains("python")) met = judge("Python / Lock", seconds["python"] / lock, 30, false) && met;
  return met;
}

int run_one(const std::string& name, const std::string& mailbox) {
  for (const Row& row : rows()) {
    if (row.name != name) continue;
    const Measured measured = measure_here(row, mailbox);
    std::printf("%.6f %.3f %lld\n", measured.processor_seconds, measured.peak_megabytes,
                static_cast<long long>(measured.messages));
    return EXIT_SUCCESS;
  }
  throw std::runtime_error("no row " + name);
}

/// The mailbox to read: the one given, else one made before or now.
std::string prepare_mailbox(const Options& options) {
  if (!options.mailbox.empty()) return options.mailbox;
  const std::string path =
      (std::filesystem::temp_directory_path() / ("vellobar_bench_" + std::to_string(options.megabytes) + "_v1.mbox"))
          .string();
  if (std::filesystem::exists(path)) return path;
  const std::string unfinished = path + ".part";
  const MailboxSize made = make_mailbox(unfinished, options.megabytes * 1'000'000, kSeed);
  std::filesystem::rename(unfinished, path);
  std::printf("made %s: %lld messages\n", path.c_str(), static_cast<long long>(made.messages));
  return path;
}

Options parse(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t i = 0; i + 1 < arguments.size(); i += 2) {
    if (arguments[i] == "--file") {
      options.mailbox = arguments[i + 1];
    } else if (arguments[i] == "--megabytes") {
      options.megabytes = std::stol(arguments[i + 1]);
    } else if (arguments[i] == "--rounds") {
      options.rounds = std::stol(arguments[i + 1]);
    } else {
      throw std::runtime_error("unknown option " + arguments[i]);
    }
  }
  return options;
}

int run_all(const std::string& program, const Options& options) {
  const std::string mailbox = prepare_mailbox(options);
  const double megabytes = static_cast<double>(std::filesystem::file_size(mailbox)) / 1e6;
  std::vector<Line> lines = lines_of(program, mailbox);
  for (int warm = 0; warm < 3; ++warm) run(lines.front().command);
  measure(lines, options.rounds);
  std::printf("%.1f MB, medians of %ld rounds, processor time\n", megabytes, options.rounds);
  print(lines, megabytes);
  return judge_all(lines) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int count, char** values) {
  try {
    const std::vector<std::string> arguments(values + 1, values + count);
    if (arguments.size() == 3 && arguments[0] == "--row") return run_one(arguments[1], arguments[2]);
    return run_all(values[0], parse(arguments));
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "lock_bench: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
