#include <gtest/gtest.h>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::Mailbox;
using tests::wide;

constexpr std::string_view kHead = "From a\nContent-Type: multipart/mixed; boundary=\"XyZ\"\n\n";

/// A locked mailbox of one multipart message with this body.
class OneMultipart : public Mailbox {
 public:
  explicit OneMultipart(std::string_view body, std::string_view head = kHead)
      : Mailbox(std::string(head) + std::string(body)) {
    control().Lock();
  }

  CMessage& top() { return *message(0); }
  std::int64_t parts() { return top().Parts()->Count(); }
  CMessage& part(std::int64_t index) { return *top().Parts()->Item(index); }
};

constexpr std::string_view kTwoParts =
    "preamble\n"
    "--XyZ\n"
    "A: 1\n\none\n"
    "--XyZ\n"
    "B: 2\n\ntwo\n"
    "--XyZ--\n"
    "epilogue\n";

TEST(PartTree, type_and_parameter_in_any_letter_case_give_the_boundary_and_delimiters_are_compared_case_sensitively) {
  OneMultipart box("--xyz\n\nno\n--XyZ\n\none\n--xyz\nstill one\n--XyZ--\n",
                   "From a\nContent-Type: MultiPart/Mixed; BOUNDARY=\"XyZ\"\n\n");
  EXPECT_EQ(box.parts(), 1);
  EXPECT_EQ(box.top().PartsBoundary(), u"--XyZ");
  EXPECT_EQ(box.top().Text(), u"--xyz\n\nno\n");
  EXPECT_EQ(box.part(0).Text(), u"one\n--xyz\nstill one\n");
}

TEST(PartTree, an_unquoted_boundary_followed_by_a_semicolon_or_a_space_is_cut_there) {
  for (const std::string_view rest : {"; charset=x", " charset=x"}) {
    OneMultipart box("--abc\n\none\n--abc--\n",
                     "From a\nContent-Type: multipart/mixed; boundary=abc" + std::string(rest) + "\n\n");
    EXPECT_EQ(box.parts(), 1);
    EXPECT_EQ(box.top().PartsBoundary(), u"--abc");
  }
}

TEST(PartTree, a_boundary_line_with_a_trailing_blank_is_not_the_opening_delimiter_and_the_whole_body_is_text) {
  OneMultipart box("--XyZ \n\none\n--XyZ--\n");
  EXPECT_EQ(box.parts(), 0);
  EXPECT_EQ(box.top().Text(), u"--XyZ \n\none\n--XyZ--\n");
  EXPECT_EQ(box.top().PartsBoundary(), u"--XyZ");
}

TEST(PartTree, two_parts_and_a_closing_delimiter_give_two_parts) {
  OneMultipart box(kTwoParts);
  ASSERT_EQ(box.parts(), 2);
  EXPECT_EQ(box.part(0).Text(), u"one\n");
  EXPECT_EQ(box.part(1).Text(), u"two\n");
  EXPECT_EQ(box.top().Text(), u"preamble\n");
}

TEST(PartTree, without_its_closing_delimiter_a_message_loses_its_last_part) {
  OneMultipart box("--XyZ\nA: 1\n\none\n--XyZ\nB: 2\n\ntwo\n");
  ASSERT_EQ(box.parts(), 1);
  EXPECT_EQ(box.part(0).Text(), u"one\n");
}

TEST(PartTree, a_line_that_goes_on_behind_the_boundary_starts_a_new_part_inside_the_parts) {
  OneMultipart box("--XyZ\n\none\n--XyZ-extra\n\ntwo\n--XyZ--\n");
  ASSERT_EQ(box.parts(), 2);
  EXPECT_EQ(box.part(1).MailInfo(), u"--XyZ-extra");
  EXPECT_EQ(box.part(1).Text(), u"two\n");
}

TEST(PartTree, the_boundary_is_empty_before_the_text_is_read_and_the_delimiter_afterwards) {
  OneMultipart box(kTwoParts);
  box.top().Headers();
  EXPECT_EQ(box.top().PartsBoundary(), u"");
  box.top().Parts();
  EXPECT_EQ(box.top().PartsBoundary(), u"--XyZ");
}

TEST(PartTree, a_multipart_part_has_its_own_parts_and_is_listed_once) {
  OneMultipart box(
      "--XyZ\nContent-Type: multipart/alternative; boundary=in\n\nin preamble\n"
      "--in\n\none\n--in\n\ntwo\n--in--\nin epilogue\n--XyZ--\n");
  ASSERT_EQ(box.parts(), 1);
  ASSERT_EQ(box.part(0).Parts()->Count(), 2);
  EXPECT_EQ(box.part(0).Text(), u"in preamble\n");
  EXPECT_EQ(box.part(0).Parts()->Item(1)->Text(), u"two\n");
}

TEST(PartTree, the_first_part_has_no_mail_info_and_the_second_has_its_delimiter_line) {
  OneMultipart box(kTwoParts);
  EXPECT_EQ(box.part(0).MailInfo(), u"");
  EXPECT_EQ(box.part(1).MailInfo(), u"--XyZ");
}

TEST(PartTree, positions_bytes_and_lines_of_parts_are_those_of_the_scan) {
  OneMultipart box(kTwoParts);
  const std::int64_t first = static_cast<std::int64_t>(kHead.size()) + 15;  // behind preamble and opening delimiter
  EXPECT_EQ(box.part(0).StartPosition(), first);
  EXPECT_EQ(box.part(0).EndPosition(), first + 10);
  EXPECT_EQ(box.part(0).Bytes(), 10);
  EXPECT_EQ(box.part(0).Lines(), 3);
  EXPECT_EQ(box.part(1).StartPosition(), first + 10);
  EXPECT_EQ(box.part(1).Size(), 16);
  EXPECT_EQ(box.part(1).Lines(), 4);
}

TEST(PartTree, the_same_part_is_the_same_object) {
  OneMultipart box(kTwoParts);
  EXPECT_EQ(box.top().Parts(), box.top().Parts());
  EXPECT_EQ(box.top().Parts()->Item(1), box.top().Parts()->Item(1));
  EXPECT_EQ(box.top().Parts()->Item(1)->Index(), 1);
}

TEST(PartTree, every_level_has_the_owner_of_its_message) {
  OneMultipart box(kTwoParts);
  EXPECT_EQ(box.part(0).owner(), box.top().owner());
  EXPECT_EQ(box.part(0).Parts()->owner(), box.top().owner());
  box.part(0).Headers()->Add(u"X", u"y");
  EXPECT_TRUE(box.control().Changed());
}

TEST(PartTree, lines_end_with_cr_lf_or_lf_alone_and_text_keeps_them) {
  OneMultipart box("pre\r\namble\n--XyZ\r\n\r\none\r\n--XyZ--\r\n");
  EXPECT_EQ(box.top().Text(), u"pre\r\namble\n");
  ASSERT_EQ(box.parts(), 1);
  EXPECT_EQ(box.part(0).Text(), u"one\r\n");
}

TEST(PartTree, an_opening_delimiter_as_the_last_line_without_line_end_opens_no_part) {
  OneMultipart box("pre\n--XyZ");
  EXPECT_EQ(box.parts(), 0);
  EXPECT_EQ(box.top().Text(), u"pre\n");
}

TEST(PartTree, a_carriage_return_without_line_feed_belongs_to_the_last_line) {
  OneMultipart box("pre\n--XyZ\r");
  EXPECT_EQ(box.top().Text(), u"pre\n--XyZ\r");
}

TEST(PartTree, an_unquoted_empty_boundary_splits_at_two_hyphens) {
  OneMultipart box("pre\n--\n\none\n--x\n\ntwo\n--\n", "From a\nContent-Type: multipart/mixed; boundary=\n\n");
  EXPECT_EQ(box.parts(), 2);
  EXPECT_EQ(box.top().PartsBoundary(), u"--");
}

TEST(PartTree, a_boundary_above_1021_characters_makes_no_parts_and_no_boundary) {
  const std::string boundary(1022, 'b');
  OneMultipart box("--" + boundary + "\n\none\n--" + boundary + "--\n",
                   "From a\nContent-Type: multipart/mixed; boundary=" + boundary + "\n\n");
  EXPECT_EQ(box.parts(), 0);
  EXPECT_EQ(box.top().PartsBoundary(), u"");
  EXPECT_EQ(box.top().Size(), box.top().EndPosition());
  EXPECT_TRUE(box.top().Text().ends_with(u"--\n"));
}

TEST(PartTree, a_boundary_of_1021_characters_splits) {
  const std::string boundary(1021, 'b');
  OneMultipart box("--" + boundary + "\n\none\n--" + boundary + "--\n",
                   "From a\nContent-Type: multipart/mixed; boundary=" + boundary + "\n\n");
  EXPECT_EQ(box.parts(), 1);
}

TEST(PartTree, boundaries_of_1_to_1021_characters_split_and_longer_ones_up_to_2000_do_not) {
  std::string mail;
  std::vector<std::string> bodies{""};
  for (std::size_t length = 1; length <= 2000; ++length) {
    const std::string boundary(length, 'b');
    bodies.push_back("pre\n--" + boundary + "\n\none\n--" + boundary + "\n\ntwo\n--" + boundary + "--\n");
    mail += "From a\nContent-Type: multipart/mixed; boundary=\"" + boundary + "\"\n\n" + bodies.back();
  }
  Mailbox box(mail);
  box.control().Lock();
  ASSERT_EQ(box.count(), 2000);
  for (std::size_t length = 1; length <= 2000; ++length) {
    CMessage& message = *box.message(static_cast<std::int64_t>(length) - 1);
    const bool splits = length <= 1021;
    ASSERT_EQ(message.Parts()->Count(), splits ? 2 : 0) << length;
    ASSERT_EQ(message.PartsBoundary().size(), splits ? length + 2 : 0);
    ASSERT_TRUE(message.Text() == wide(splits ? "pre\n" : bodies[length])) << length;
    if (splits) {
      ASSERT_EQ(message.Parts()->Item(1)->Text(), u"two\n");
    }
    message.Unload();
  }
}

TEST(PartTree, the_boundary_stays_after_unload_until_the_next_load) {
  OneMultipart box(kTwoParts);
  box.top().Parts();
  box.top().Unload();
  EXPECT_EQ(box.top().PartsBoundary(), u"--XyZ");
  box.top().SetContentType(u"text/plain");
  box.top().Load();
  EXPECT_EQ(box.top().PartsBoundary(), u"--XyZ") << "a setter on a message never read appends a second header";
  box.top().Headers()->Remove(u"Content-Type");
  box.top().Headers()->Remove(u"Content-Type");
  CMessage& top = box.top();
  const std::string path = box.folder().file("plain", "A: b\n\nbody\n");
  top.Peek(wide(path));
  EXPECT_EQ(top.PartsBoundary(), u"--XyZ");
  top.Load();
  EXPECT_EQ(top.PartsBoundary(), u"");
}

TEST(PartTree, unload_gives_a_new_collection_that_is_split_again) {
  OneMultipart box(kTwoParts);
  const auto before = box.top().Parts();
  box.top().Unload();
  EXPECT_NE(box.top().Parts(), before);
  EXPECT_EQ(box.top().Parts()->Count(), 2);
  EXPECT_EQ(before->Count(), 2) << "what a client holds stays";
  EXPECT_EQ(before->Item(0)->Text(), u"one\n");
}

TEST(PartTree, of_an_unreadable_message_is_empty_and_no_error) {
  OneMultipart box("body\n", "From a\nX: " + std::string(20000, 'v') + "\n\n");
  EXPECT_EQ(box.parts(), 0);
  expect_error(ErrorNumber::cannot_load_text, Reporter::message, [&] { box.top().Text(); });
}

TEST(PartTree, a_part_whose_header_block_runs_on_behind_its_end_has_an_empty_text) {
  OneMultipart box("--XyZ\nA: 1\n--XyZ\nB: 2\n\ntwo\n--XyZ--\n");
  ASSERT_EQ(box.parts(), 2);
  EXPECT_EQ(box.part(0).Headers()->Count(), 2);
  EXPECT_EQ(box.part(0).Text(), u"");
  EXPECT_EQ(box.part(1).Text(), u"two\n");
}

TEST(PartTree, a_header_block_that_begins_with_a_blank_is_the_text_of_its_part) {
  OneMultipart box("--XyZ\n one\n--XyZ\n\ttwo\n--XyZ--\n");
  EXPECT_EQ(box.part(0).Text(), u" one\n");
  EXPECT_EQ(box.part(1).Text(), u"\ttwo\n");
}

TEST(PartTree, a_nul_byte_in_preamble_delimiter_and_part_is_an_ordinary_byte) {
  using namespace std::string_literals;
  OneMultipart box("p\0p\n--XyZ\0\n--XyZ\n\no\0e\n--XyZ\0x\n\ntwo\n--XyZ--\n"s);
  EXPECT_EQ(box.top().Text(), u"p\0p\n--XyZ\0\n"s);
  ASSERT_EQ(box.parts(), 2);
  EXPECT_EQ(box.part(0).Text(), u"o\0e\n"s);
}

TEST(PartTree, a_preamble_line_longer_than_every_read_block_is_kept_once) {
  const std::string line(700000, 'x');
  OneMultipart box(line + "\n--XyZ\n\none\n--XyZ--\n");
  EXPECT_EQ(box.parts(), 1);
  EXPECT_TRUE(tests::plain(box.top().Text()) == line + "\n");
}

TEST(PartTree, parts_of_a_message_whose_file_was_closed_are_empty) {
  OneMultipart box(kTwoParts);
  const auto message = box.message(0), read = box.message(0);
  const auto part = message->Parts()->Item(1);
  box.control().Unlock();
  EXPECT_EQ(part->Headers()->Count(), 0);
  EXPECT_EQ(part->Text(), u"");
  EXPECT_EQ(part->Parts()->Count(), 0);
}

}  // namespace
}  // namespace vellobar
