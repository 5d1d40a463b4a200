// What an update of a mailbox of 64 MB keeps in memory at once. Linux tells how much a process ever had, and forgets it
// when it is asked to; sanitizers keep what was freed.
#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)

#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

constexpr std::size_t kMessages = 640;
constexpr std::size_t kMessageBytes = 100'000;
constexpr long kMostKilobytes = 32 * 1024;

long status(const std::string& name) {
  std::ifstream lines("/proc/self/status");
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(name + ":")) return std::stol(line.substr(name.size() + 1));
  }
  return -1;
}

/// From now on "VmHWM" is the most since now.
bool forget_peak() {
  std::ofstream file("/proc/self/clear_refs");
  file << "5" << std::flush;
  return file.good();
}

std::string large_mailbox() {
  const std::string line = std::string(75, 'x') + "\n";
  std::string mailbox;
  for (std::size_t i = 0; i < kMessages; ++i) {
    mailbox += "From a\nSubject: " + std::to_string(i) + "\n\n";
    for (std::size_t bytes = 0; bytes < kMessageBytes; bytes += line.size()) mailbox += line;
    mailbox += "\n";
  }
  return mailbox;
}

TEST(Update, of_a_mailbox_needs_a_fraction_of_its_size_in_memory) {
  tests::Mailbox box(large_mailbox());
  if (!forget_peak()) GTEST_SKIP() << "this system does not let a process forget its peak";
  const long before = status("VmRSS");
  box.control().Lock();
  box.message(kMessages / 2)->Load();
  box.message(kMessages / 2)->SetSubject(u"changed");
  box.control().Update();
  EXPECT_LT(status("VmHWM") - before, kMostKilobytes);
  EXPECT_EQ(box.message(kMessages / 2)->Subject(), u"changed");
}

}  // namespace
}  // namespace vellobar

#endif
