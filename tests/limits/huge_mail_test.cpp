// Mail made to hurt, read and written by a client with a stack of 256 KB: nothing crashes, and no step takes more than
// a few bytes of memory for each byte of the mailbox. With VELLOBAR_HUGE=full in the environment the mail has its full
// size (a million messages, headers, parts and attachments, a hundred thousand levels, lines of 200 MB). What each step
// took, in bytes of memory for each byte of mail and in seconds, is printed then, and with VELLOBAR_HUGE=print.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/temporary_file.h"
#include "tests/limits/counted_memory.h"
#include "tests/limits/huge_mail.h"
#include "tests/support/files.h"
#include "tests/support/small_stack.h"

namespace vellobar::tests {
namespace {

/// Work buffers, and what is made once in a process.
constexpr double kWorkingMemory = 3 << 20;

enum class Run { usual, usual_printed, full };

Run run() {
  const char* given = std::getenv("VELLOBAR_HUGE");
  const std::string_view huge = given != nullptr ? given : "";
  return huge == "full" ? Run::full : huge == "print" ? Run::usual_printed : Run::usual;
}

void print(const char* form, auto... values) {
  if (run() == Run::usual) return;
  std::printf(form, values...);
  std::fflush(stdout);
}

struct Measured {
  double memory;  ///< bytes beyond those held when the mailbox was locked
  double seconds;
};

Measured measure(const ClientStep& step, CVellobar& control, std::size_t held_before) {
  const auto start = std::chrono::steady_clock::now();
  const PeakMemory peak;
  const std::size_t already = allocated_bytes() - held_before;
  run_on_small_stack([&] { step.act(control); });
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  return {static_cast<double>(peak.bytes() + already), took.count()};
}

[[maybe_unused]] void PrintTo(const HugeMail& mail, std::ostream* to) { *to << mail.name; }

class Huge : public testing::TestWithParam<HugeMail> {};

TEST_P(Huge, mail_needs_little_stack_and_little_memory) {
  const HugeMail& mail = GetParam();
  TemporaryFolder folder;
  const platform::FixedTemporaryFolder temporary(folder.path(""));
  const std::string path = folder.path("mail");
  {
    std::ofstream file(path, std::ios::binary);
    mail.write(file, run() == Run::full ? mail.full_size : mail.usual_size);
  }
  const double size = static_cast<double>(std::filesystem::file_size(path));
  print("%-28s %11.0f bytes", std::string(mail.name).c_str(), size);
  std::vector<std::string> too_much;
  const std::size_t held_before = allocated_bytes();
  {
    CVellobar control;
    control.SetFilename(wide(path));
    for (const ClientStep& step : client_steps()) {
      if (mail.is_read_squared && step.name == "bodies") continue;
      const Measured measured = measure(step, control, held_before);
      if (measured.memory > mail.most_memory * size + kWorkingMemory) too_much.emplace_back(step.name);
      print("  %s %.1fx %.1fs", std::string(step.name).c_str(), measured.memory / size, measured.seconds);
    }
  }
  print("%s", "\n");
  EXPECT_EQ(too_much, std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(AllKinds, Huge, testing::ValuesIn(huge_mails().begin(), huge_mails().end()),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace vellobar::tests
