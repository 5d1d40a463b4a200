#include "command/mail/header_edits.h"

#include <gtest/gtest.h>

#include "command/output/failure.h"

namespace vellobar::command {
namespace {

constexpr std::string_view kBlock = "A: 1\nSubject: old\n folded\nno header\nX-Tag: a\nsubject: again\n";

std::string edited(std::string_view block, const HeaderEdits& edits) {
  return edited_headers(block, edits, "\n").value_or("(refused)");
}

TEST(HeaderEdits, setting_takes_the_place_of_the_first_header_of_the_name_and_removes_the_others) {
  EXPECT_EQ(edited(kBlock, {.removed = {}, .set = {{"Subject", "new"}}, .added = {}}),
            "A: 1\nSubject: new\nno header\nX-Tag: a\n");
}

TEST(HeaderEdits, setting_a_header_that_is_not_there_adds_it) {
  EXPECT_EQ(edited("A: 1\n", {.removed = {}, .set = {{"B", "2"}}, .added = {}}), "A: 1\nB: 2\n");
}

TEST(HeaderEdits, adding_keeps_what_is_there) {
  EXPECT_EQ(edited("A: 1\n", {.removed = {}, .set = {}, .added = {{"A", "2"}}}), "A: 1\nA: 2\n");
}

TEST(HeaderEdits, removing_takes_every_header_of_the_name_with_its_folds) {
  EXPECT_EQ(edited(kBlock, {.removed = {"SUBJECT"}, .set = {}, .added = {}}), "A: 1\nno header\nX-Tag: a\n");
}

TEST(HeaderEdits, removing_comes_first_and_adding_last) {
  EXPECT_EQ(edited("A: 1\n", {.removed = {"A"}, .set = {{"A", "2"}}, .added = {{"A", "3"}}}), "A: 2\nA: 3\n");
}

TEST(HeaderEdits, new_lines_end_like_the_first_one) {
  EXPECT_EQ(edited("A: 1\r\nB: 2\n", {.removed = {}, .set = {}, .added = {{"C", "3"}}}), "A: 1\r\nB: 2\nC: 3\r\n");
  EXPECT_EQ(edited_headers("", {.removed = {}, .set = {}, .added = {{"C", "3"}}}, "\r\n"), "C: 3\r\n");
}

TEST(HeaderEdits, a_last_line_without_a_line_end_gets_one) {
  EXPECT_EQ(edited("A: 1", {.removed = {}, .set = {}, .added = {{"B", "2"}}}), "A: 1\nB: 2\n");
}

TEST(HeaderEdits, a_block_that_begins_with_a_continuation_line_is_refused) {
  EXPECT_EQ(edited_headers(" x\nA: 1\n", {.removed = {"A"}, .set = {}, .added = {}}, "\n"), std::nullopt);
}

TEST(HeaderEdits, a_header_is_a_name_a_colon_and_a_value) {
  const HeaderEdits::Header header = parse_header("X-Tag:  a b");
  EXPECT_EQ(header.name, "X-Tag");
  EXPECT_EQ(header.value, "a b");
  EXPECT_EQ(parse_header("A:").value, "");
}

TEST(HeaderEdits, what_is_no_header_is_wrong_use) {
  for (const char* wrong : {"", "A", ": b", "A B: c", "A: b\nC: d", "A: b\r", "\xC3\xBC: b"}) {
    EXPECT_THROW(parse_header(wrong), WrongUse) << wrong;
  }
  EXPECT_THROW(parse_header("A: " + std::string(16384, 'x')), WrongUse);
}

TEST(HeaderEdits, text_beyond_ascii_becomes_an_encoded_word) {
  EXPECT_EQ(parse_header("Subject: gr\xC3\xBC\xC3\x9F").value, "=?UTF-8?B?Z3LDvMOf?=");
}

}  // namespace
}  // namespace vellobar::command
