#include "platform/temporary_file.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "platform/clock.h"
#include "platform/file.h"
#include "tests/support/faulty_file_system.h"
#ifndef _WIN32
#include <sys/stat.h>

#include <cstdlib>
#endif

namespace vellobar::platform {
namespace {

TEST(TemporaryFile, a_new_empty_file_with_the_prefix_is_made_in_the_temporary_folder) {
  const std::string first = temporary_file_name();
  const std::string second = temporary_file_name();
  EXPECT_NE(first, second);
  for (const std::string& name : {first, second}) {
    EXPECT_EQ(name.find(temporary_folder() + "VLB"), 0u) << name;
    const auto file = File::open(name);
    ASSERT_NE(file, nullptr) << name;
    EXPECT_EQ(file->size(), 0);
    file->close();
    EXPECT_TRUE(remove_file(name));
  }
}

#ifndef _WIN32
TEST(TemporaryFile, a_new_file_is_readable_and_writable_by_the_user_only) {
  const std::string name = temporary_file_name();
  struct stat info {};
  ASSERT_EQ(::stat(name.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  EXPECT_TRUE(remove_file(name));
}
#endif

TEST(TemporaryFile, the_temporary_folder_ends_in_a_separator_and_exists) {
  const std::string folder = temporary_folder();
  ASSERT_FALSE(folder.empty());
  EXPECT_TRUE(folder.back() == '/' || folder.back() == '\\') << folder;
  const std::string name = temporary_file_name();
  EXPECT_NE(File::open(name), nullptr);
  remove_file(name);
}

TEST(TemporaryFile, without_a_temporary_folder_the_current_one_serves) {
  const FixedTemporaryFolder none("");
#ifdef _WIN32
  EXPECT_EQ(temporary_folder(), ".\\");
#else
  EXPECT_EQ(temporary_folder(), "./");
#endif
}

/// The low 16 bits of the thread identifier as they print: as a signed number, widened, without a sign.
std::string printed_thread() {
  const std::uint32_t low = thread_identifier() & 0xFFFF;
  return std::to_string(low < 0x8000 ? low : low + 0xFFFF0000u);
}

TEST(TemporaryFile, the_fallback_name_is_made_of_low_words_widened_with_their_sign) {
  const FixedTemporaryFolder folder("no-such-folder/");
  const std::string end = "_" + printed_thread() + ".tmp";
  const struct {
    std::uint32_t ticks, offset;
    const char* printed;
  } rows[] = {
      {0x1234FFFE, 0, "4294967294"}, {0x1234FFFE, 1, "4294967295"}, {0x1234FFFE, 2, "0"}, {0x00018000, 0, "4294934528"},
      {0x00007FFF, 0, "32767"},      {0x00007FFF, 1, "4294934528"}, {0xFFFFFFFF, 1, "0"}, {0xABCD0001, 0, "1"},
  };
  for (const auto& row : rows) {
    const FixedClock clock(ClockReading{}, row.ticks);
    const std::string name = temporary_file_name(row.offset);
    EXPECT_EQ(name, std::string("no-such-folder/VLB") + row.printed + end);
    EXPECT_EQ(File::open(name), nullptr) << "the file is not made";
  }
}

TEST(TemporaryFile, that_cannot_be_made_is_a_name_alone) {
  tests::FaultyFileSystem failing(tests::Fault::fails, 0);
  const FixedFileSystem fixed(failing);
  const FixedClock clock(ClockReading{}, 1);
  EXPECT_EQ(temporary_file_name(), temporary_folder() + "VLB1_" + printed_thread() + ".tmp");
}

TEST(TemporaryFile, threads_have_identifiers_of_their_own) {
  const std::uint32_t mine = thread_identifier();
  std::uint32_t theirs = mine;
  std::thread([&theirs] { theirs = thread_identifier(); }).join();
  EXPECT_NE(mine, theirs);
  EXPECT_EQ(mine, thread_identifier());
  EXPECT_NE(process_identifier(), 0u);
}

TEST(TemporaryFile, the_host_has_a_name) {
  EXPECT_FALSE(host_name().empty());
  EXPECT_LT(host_name().size(), 100u);
}

TEST(TemporaryFile, a_system_without_a_host_name_is_localhost) {
  {
    const FixedHostName host("");
    EXPECT_EQ(host_name(), "localhost");
  }
  const FixedHostName host("mail example");
  EXPECT_EQ(host_name(), "mail example");
}

}  // namespace
}  // namespace vellobar::platform
