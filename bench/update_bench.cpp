// What an update of a large mailbox costs beside copying the file. Without arguments: makes a mailbox of 2.2 GB in the
// temporary folder (kept for the next run), and in every round copies it with cp and sync, and updates the copy with
// one header changed. Prints what each took by the clock, the medians, and says whether the targets are met: three
// times the copying, and 48 MB above the largest message.
//
//   update_bench [--megabytes N] [--rounds N] [--folder F]
//   update_bench --row MAILBOX     one update, once: seconds, peak megabytes, bytes of the largest message
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "make_mailbox.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::uint64_t kSeed = 20240101;
constexpr double kMostTimesTheCopy = 3;
constexpr double kMostMegabytes = 48;

double seconds_since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

double peak_megabytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
}

int update_once(const std::string& path) {
  vellobar::CVellobar control;
  control.SetFilename(std::u16string(path.begin(), path.end()));
  control.Lock();
  long long largest = 0;
  const std::int64_t count = control.Messages()->Count();
  for (std::int64_t i = 0; i < count; ++i) {
    largest = std::max<long long>(largest, control.Messages()->Item(i)->Size());
  }
  control.Unlock();
  control.Lock();
  control.Messages()->Item(count / 2)->Load();
  control.Messages()->Item(count / 2)->SetSubject(u"changed");
  const Clock::time_point start = Clock::now();
  control.Update();
  std::printf("%.6f %.3f %lld\n", seconds_since(start), peak_megabytes(), largest);
  return EXIT_SUCCESS;
}

struct Round {
  double copy_seconds = 0;
  double update_seconds = 0;
  double peak_megabytes = 0;
  double largest_megabytes = 0;
};

std::string quoted(const std::string& text) { return "'" + text + "'"; }

Round run_round(const std::string& program, const std::string& mailbox, const std::string& copy) {
  Round round;
  const Clock::time_point start = Clock::now();
  const std::string copying = "cp " + quoted(mailbox) + " " + quoted(copy) + " && sync " + quoted(copy);
  if (std::system(copying.c_str()) != 0) throw std::runtime_error("cannot copy the mailbox");
  round.copy_seconds = seconds_since(start);
  const std::string updating = quoted(program) + " --row " + quoted(copy);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(::popen(updating.c_str(), "r"), ::pclose);
  long long largest = 0;
  if (!output ||
      std::fscanf(output.get(), "%lf %lf %lld", &round.update_seconds, &round.peak_megabytes, &largest) != 3) {
    throw std::runtime_error("the update failed");
  }
  round.largest_megabytes = static_cast<double>(largest) / 1e6;
  return round;
}

double median(std::vector<Round> rounds, double Round::*figure) {
  std::sort(rounds.begin(), rounds.end(),
            [&](const Round& left, const Round& right) { return left.*figure < right.*figure; });
  return rounds[rounds.size() / 2].*figure;
}

bool judge(const char* target, double measured, double wanted) {
  const bool met = measured <= wanted;
  std::printf("%-40s <= %6.1f  measured %7.2f  %s\n", target, wanted, measured, met ? "met" : "MISSED");
  return met;
}

struct Options {
  long megabytes = 2200;
  long rounds = 3;
  std::string folder = fs::temp_directory_path().string();
};

Options parse(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t i = 0; i + 1 < arguments.size(); i += 2) {
    if (arguments[i] == "--megabytes") {
      options.megabytes = std::stol(arguments[i + 1]);
    } else if (arguments[i] == "--rounds") {
      options.rounds = std::stol(arguments[i + 1]);
    } else if (arguments[i] == "--folder") {
      options.folder = arguments[i + 1];
    } else {
      throw std::runtime_error("unknown option " + arguments[i]);
    }
  }
  return options;
}

/// The mailbox to copy: one made before, or now.
std::string prepare_mailbox(const Options& options) {
  const std::string path =
      (fs::path(options.folder) / ("vellobar_bench_" + std::to_string(options.megabytes) + "_v1.mbox")).string();
  if (fs::exists(path)) return path;
  const std::string unfinished = path + ".part";
  vellobar::bench::make_mailbox(unfinished, options.megabytes * 1'000'000, kSeed);
  fs::rename(unfinished, path);
  return path;
}

int run_all(const std::string& program, const Options& options) {
  const std::string mailbox = prepare_mailbox(options);
  const std::string copy = mailbox + ".copy";
  std::vector<Round> rounds;
  std::printf("%.1f MB\n%10s %10s %8s %10s\n", static_cast<double>(fs::file_size(mailbox)) / 1e6, "copy s", "update s",
              "peak MB", "largest MB");
  for (long i = 0; i < options.rounds; ++i) {
    const Round round = run_round(program, mailbox, copy);
    std::printf("%10.2f %10.2f %8.1f %10.1f\n", round.copy_seconds, round.update_seconds, round.peak_megabytes,
                round.largest_megabytes);
    rounds.push_back(round);
  }
  fs::remove(copy);
  const double times = median(rounds, &Round::update_seconds) / median(rounds, &Round::copy_seconds);
  const double megabytes = median(rounds, &Round::peak_megabytes) - rounds.front().largest_megabytes;
  const bool is_fast = judge("Update / cp and sync", times, kMostTimesTheCopy);
  const bool is_small = judge("peak memory above largest message, MB", megabytes, kMostMegabytes);
  return is_fast && is_small ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int count, char** values) {
  try {
    const std::vector<std::string> arguments(values + 1, values + count);
    if (arguments.size() == 2 && arguments[0] == "--row") return update_once(arguments[1]);
    return run_all(values[0], parse(arguments));
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "update_bench: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
