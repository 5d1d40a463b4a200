#include "compose/message_identifier.h"

#include <gtest/gtest.h>

namespace vellobar::compose {
namespace {

// The digits were worked out by another program from the generator's rule: state * 214013 + 2531011, bits 16 to 19.
TEST(MessageIdentifier, is_32_digits_from_the_tick_and_the_host_name) {
  EXPECT_EQ(message_identifier(0, "host"), "676575DD24D469911D5803729B10D6EE@host");
  EXPECT_EQ(message_identifier(1, "host"), "93E41C6E20911B9B36BC7CE94EDC677E@host");
  EXPECT_EQ(message_identifier(1000, "a.b"), "8D165F0280B32FCCA5461D2788550FF6@a.b");
  EXPECT_EQ(message_identifier(0xFFFFFFFF, "host"), "3BE5CE5D2818B797F4E38A0CF845455D@host");
}

TEST(MessageIdentifier, blanks_and_angle_brackets_of_the_host_name_become_underscores) {
  EXPECT_EQ(message_identifier(0, "my <own> host"), "676575DD24D469911D5803729B10D6EE@my__own__host");
}

}  // namespace
}  // namespace vellobar::compose
