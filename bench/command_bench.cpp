// What the command line costs beside the core. `list` of a mailbox of 300 MB, its output thrown away, is measured in
// processor time against `Lock` and the headers of every message read through the core; `extract` of 10,000
// attachments in peak memory. Makes its mailboxes in the temporary folder (the large one is kept for the next run).
//
//   command_bench PROGRAM
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "make_mailbox.h"

namespace vellobar::bench {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kBytes = 300'000'000;
constexpr std::uint64_t kSeed = 20240101;
constexpr int kRounds = 7;
constexpr double kMostTimes = 1.5;
constexpr int kAttachments = 10'000;
constexpr long kMostKilobytes = 64 * 1024;

struct Used {
  double seconds = 0;
  long kilobytes = 0;
};

/// Runs the program with its output thrown away.
Used run(const std::vector<std::string>& command) {
  const pid_t child = ::fork();
  if (child == 0) {
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDOUT_FILENO);
    std::vector<char*> arguments;
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    ::execv(arguments[0], arguments.data());
    std::_Exit(127);
  }
  int status = 0;
  rusage used{};
  if (::wait4(child, &status, 0, &used) != child || status != 0) throw std::runtime_error("cannot run " + command[0]);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return {seconds(used.ru_utime) + seconds(used.ru_stime), used.ru_maxrss};
}

double processor_seconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Lock, and the three headers that `list` shows.
double read_through_core(const std::string& mailbox) {
  const double start = processor_seconds();
  CVellobar control;
  control.SetFilename(std::u16string(mailbox.begin(), mailbox.end()));
  control.Lock();
  std::size_t size = 0;
  const auto messages = control.Messages();
  for (std::int64_t i = 0; i < messages->Count(); ++i) {
    const auto message = messages->for_walking(i);
    size += message->From().size() + message->decoded_header("Date").size() + message->Subject().size();
  }
  control.Unlock();
  if (size == 0) throw std::runtime_error("no headers were read");
  return processor_seconds() - start;
}

double median(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  return figures[figures.size() / 2];
}

bool measure_list(const std::string& program) {
  const std::string mailbox = (fs::temp_directory_path() / "vellobar_command_bench_300_v1.mbox").string();
  if (!fs::exists(mailbox)) {
    make_mailbox(mailbox + ".part", kBytes, kSeed);
    fs::rename(mailbox + ".part", mailbox);
  }
  std::vector<double> core, command;
  read_through_core(mailbox);
  for (int round = 0; round < kRounds; ++round) {
    core.push_back(read_through_core(mailbox));
    command.push_back(run({program, "list", mailbox}).seconds);
  }
  const double times = median(command) / median(core);
  std::printf("list %.4f s, Lock and headers %.4f s, <= %.1f times  measured %.2f  %s\n", median(command), median(core),
              kMostTimes, times, times <= kMostTimes ? "met" : "MISSED");
  return times <= kMostTimes;
}

void make_attachments(const fs::path& mailbox) {
  std::ofstream file(mailbox, std::ios::binary);
  std::string line(76, 'Q');
  line += '\n';
  for (int i = 0; i < kAttachments; ++i) {
    file << "From a@example.org Mon Jan  5 10:00:00 2026\nSubject: " << i
         << "\nContent-Type: application/x; name=\"same.bin\"\nContent-Transfer-Encoding: base64\n\n";
    for (int lines = 0; lines < 200; ++lines) file << line;
    file << "\n";
  }
}

bool measure_extract(const std::string& program) {
  const fs::path folder = fs::temp_directory_path() / ("vellobar_command_bench_" + std::to_string(::getpid()));
  fs::create_directory(folder);
  make_attachments(folder / "box");
  const Used used = run({program, "extract", (folder / "box").string(), (folder / "out").string()});
  const auto files = std::distance(fs::directory_iterator(folder / "out"), fs::directory_iterator());
  fs::remove_all(folder);
  const bool is_met = files == kAttachments && used.kilobytes <= kMostKilobytes;
  std::printf("extract of %d attachments: %.2f s, %ld KB at most, <= %ld KB  %s\n", static_cast<int>(files),
              used.seconds, used.kilobytes, kMostKilobytes, is_met ? "met" : "MISSED");
  return is_met;
}

int run_all(const std::string& program) {
  const bool list_is_met = measure_list(program);
  return measure_extract(program) && list_is_met ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace vellobar::bench

int main(int count, char** values) {
  try {
    if (count != 2) throw std::runtime_error("usage: command_bench PROGRAM");
    return vellobar::bench::run_all(values[1]);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "command_bench: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
