// What reading From, To, Subject and Date of every message of a mailbox costs beside GMime. Makes a mailbox of 300 MB
// in the temporary folder (kept for the next run), of which two subjects and senders of three hold encoded words, warms
// it, runs each row in turn and prints the medians and whether the target is met.
//
//   headers_bench [MAILBOX]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "headers_bench_rows.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "make_mailbox.h"

namespace vellobar::bench {

double processor_seconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

HeadersMeasured read_headers(const std::string& mailbox) {
  HeadersMeasured measured;
  const double start = processor_seconds();
  CVellobar control;
  control.SetFilename(std::u16string(mailbox.begin(), mailbox.end()));
  control.Lock();
  measured.messages = control.Messages()->Count();
  for (std::int64_t i = 0; i < measured.messages; ++i) control.Messages()->Item(i)->load_headers();
  const double parsed = processor_seconds();
  for (std::int64_t i = 0; i < measured.messages; ++i) {
    const auto message = control.Messages()->Item(i);
    measured.size +=
        static_cast<std::int64_t>(message->From().size() + message->To().size() + message->Subject().size());
    measured.size += message->Date() > 0 ? 1 : 0;
  }
  measured.getters_seconds = processor_seconds() - parsed;
  control.Unlock();
  measured.whole_seconds = processor_seconds() - start;
  return measured;
}

namespace {

constexpr std::int64_t kBytes = 300'000'000;
constexpr std::uint64_t kSeed = 20240101;
constexpr int kRounds = 7;
constexpr double kWantedTimesGmime = 3;

constexpr const char* kSubjects[] = {
    "Subject: an ordinary subject of some words",
    "Subject: =?utf-8?Q?Gr=C3=BC=C3=9Fe_aus_K=C3=B6ln?= =?utf-8?Q?_und_Umgebung?=",
    "Subject: =?UTF-8?B?0J/RgNC40LLQtdGCINC40Lcg0JzQvtGB0LrQstGL?=",
};
constexpr const char* kSenders[] = {
    "From: John Smith <john@example.org>",
    "From: =?utf-8?Q?J=C3=B6rg_M=C3=BCller?= <joerg@example.org>",
    "From: =?windows-1251?B?yOLg7Q==?= <ivan@example.org>",
};

/// A copy of a mailbox whose subjects and senders are those above in turn.
void copy_with_words(const std::string& from, const std::string& to) {
  std::ifstream source(from, std::ios::binary);
  std::ofstream target(to, std::ios::binary);
  std::size_t subjects = 0;
  std::size_t senders = 0;
  for (std::string line; std::getline(source, line);) {
    if (line.starts_with("Subject: ")) line = kSubjects[subjects++ % std::size(kSubjects)];
    if (line.starts_with("From: ")) line = kSenders[senders++ % std::size(kSenders)];
    target << line << '\n';
  }
  target.close();
  if (!target) throw std::runtime_error("cannot write " + to);
}

std::string prepare_mailbox() {
  const auto folder = std::filesystem::temp_directory_path();
  const std::string path = (folder / "vellobar_headers_bench_300_v1.mbox").string();
  if (std::filesystem::exists(path)) return path;
  const std::string plain = path + ".plain";
  const std::string unfinished = path + ".part";
  make_mailbox(plain, kBytes, kSeed);
  copy_with_words(plain, unfinished);
  std::filesystem::remove(plain);
  std::filesystem::rename(unfinished, path);
  return path;
}

double median(const std::vector<HeadersMeasured>& runs, double HeadersMeasured::*figure) {
  std::vector<double> figures;
  for (const HeadersMeasured& run : runs) figures.push_back(run.*figure);
  std::sort(figures.begin(), figures.end());
  return figures[figures.size() / 2];
}

void print(const char* title, const std::vector<HeadersMeasured>& runs) {
  const double getters = median(runs, &HeadersMeasured::getters_seconds);
  const auto messages = static_cast<double>(runs.front().messages);
  std::printf("%-10s %8.4f s whole, %8.4f s the four headers (%6.2f us a message), %lld messages, size %lld\n", title,
              median(runs, &HeadersMeasured::whole_seconds), getters, getters / messages * 1e6,
              static_cast<long long>(runs.front().messages), static_cast<long long>(runs.front().size));
}

int run_all(const std::string& mailbox) {
  std::vector<HeadersMeasured> ours;
  std::vector<HeadersMeasured> gmimes;
  read_headers(mailbox);
#ifdef VELLOBAR_BENCH_GMIME
  initialise_gmime();
#endif
  for (int round = 0; round < kRounds; ++round) {
    ours.push_back(read_headers(mailbox));
#ifdef VELLOBAR_BENCH_GMIME
    gmimes.push_back(read_headers_with_gmime(mailbox));
#endif
  }
  print("Vellobar", ours);
  if (gmimes.empty()) return EXIT_SUCCESS;
  print("GMime", gmimes);
  const double times = median(gmimes, &HeadersMeasured::whole_seconds) / median(ours, &HeadersMeasured::whole_seconds);
  std::printf("GMime / Vellobar, whole run >= %.1f  measured %.2f  %s\n", kWantedTimesGmime, times,
              times >= kWantedTimesGmime ? "met" : "MISSED");
  return times >= kWantedTimesGmime ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace vellobar::bench

int main(int count, char** values) {
  try {
    return vellobar::bench::run_all(count > 1 ? values[1] : vellobar::bench::prepare_mailbox());
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "headers_bench: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
