#include "command/output/json.h"

#include <gtest/gtest.h>

namespace vellobar::command {
namespace {

using namespace std::string_literals;

TEST(JsonLine, members_come_as_they_were_put_on_one_line) {
  EXPECT_EQ(json_line({{"z", 1}, {"a", "two"}, {"n", Json()}}), R"({"z":1,"a":"two","n":null})");
}

TEST(JsonLine, text_is_utf_8_and_control_characters_are_escaped) {
  EXPECT_EQ(json_line({{"t", json_text(u"gr\u00FC\u00DFe\t\"\n\u65E5\U0001F600")}}),
            "{\"t\":\"gr\xC3\xBC\xC3\x9F"
            "e\\t\\\"\\n\xE6\x97\xA5\xF0\x9F\x98\x80\"}");
}

TEST(JsonLine, a_nul_is_kept_as_an_escape) {
  EXPECT_EQ(json_line({{"t", json_text(u"a\0b"s)}}), R"({"t":"a\u0000b"})");
}

TEST(JsonLine, half_a_surrogate_pair_becomes_the_replacement_character) {
  EXPECT_EQ(json_text(u"a\xD83D"), "a\xEF\xBF\xBD");
}

TEST(JsonLine, bytes_that_are_no_utf_8_become_the_replacement_character) {
  EXPECT_EQ(json_line({{"path", "a\xFF\xC3"}}), "{\"path\":\"a\xEF\xBF\xBD\xEF\xBF\xBD\"}");
}

}  // namespace
}  // namespace vellobar::command
