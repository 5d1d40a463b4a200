#include "platform/temporary_file.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/clock.h"
#include "platform/file.h"

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

TEST(TemporaryFile, the_fallback_name_is_made_of_signed_low_words) {
  const FixedTemporaryFolder folder("no-such-folder/");
  const FixedClock clock(ClockReading{}, 0x1234FFFE);
  const std::string name = temporary_file_name();
  EXPECT_EQ(name.find("no-such-folder/VLB4294967294_"), 0u) << name;
  EXPECT_EQ(temporary_file_name(1).find("no-such-folder/VLB4294967295_"), 0u);
  EXPECT_EQ(temporary_file_name(2).find("no-such-folder/VLB0_"), 0u);
  EXPECT_EQ(File::open(name), nullptr) << "the file is not made";
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
