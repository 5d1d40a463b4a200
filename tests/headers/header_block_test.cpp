#include "headers/header_block.h"

#include <gtest/gtest.h>

#include "platform/file.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::Mailbox;
using tests::plain;

std::vector<std::string> lines_of(std::string_view content) {
  tests::TemporaryFolder folder;
  const auto file = platform::File::open(folder.file("lines", content));
  headers::LineReader reader(*file, 0);
  std::vector<std::string> lines;
  for (;;) {
    const std::string_view line = reader.next();
    if (line.empty()) break;
    lines.emplace_back(line);
  }
  EXPECT_EQ(reader.position(), static_cast<std::int64_t>(content.size()));
  return lines;
}

TEST(LineReader, hands_out_lines_with_their_line_feeds_and_a_last_one_without) {
  EXPECT_EQ(lines_of("a\r\n\nb"), (std::vector<std::string>{"a\r\n", "\n", "b"}));
}

TEST(LineReader, a_line_around_the_longest_length_comes_whole_or_in_pieces) {
  const std::string longest(16383, 'x');
  EXPECT_EQ(lines_of(longest + "\nnext\n"), (std::vector<std::string>{longest + "\n", "next\n"}));
  EXPECT_EQ(lines_of(longest + "y\nnext\n"), (std::vector<std::string>{longest + "y", "\n", "next\n"}));
  EXPECT_EQ(lines_of(longest), (std::vector<std::string>{longest}));
}

TEST(LineReader, lines_across_every_edge_of_its_buffer_come_whole) {
  for (std::size_t before = 16370; before <= 16390; ++before) {
    const std::string first(before / 2, 'a'), second(before - before / 2, 'b'), third(100, 'c');
    EXPECT_EQ(lines_of(first + "\n" + second + "\n" + third + "\n"),
              (std::vector<std::string>{first + "\n", second + "\n", third + "\n"}))
        << before;
  }
}

TEST(HeaderBlock, a_folded_header_loads_as_one_and_reads_back_as_the_same_two_lines) {
  Mailbox box("From a\nSubject: a\r\n\tb\r\n\r\n");
  box.control().Lock();
  const auto headers = box.message(0)->Headers();
  ASSERT_EQ(headers->Count(), 1);
  EXPECT_EQ(headers->Item(0)->Name(), u"Subject");
  EXPECT_EQ(headers->Item(0)->Value(), u"a\r\n\tb");
  EXPECT_EQ(headers->ToString(), u"Subject: a\r\n\tb\r\n");
}

TEST(HeaderBlock, continuation_lines_follow_a_header_that_has_no_value) {
  Mailbox box("From a\nSubject:\n one\n\ttwo\nX: y\n\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Headers()->ToString(), u"Subject: \r\n one\r\n\ttwo\r\nX: y\r\n");
}

TEST(HeaderBlock, a_continuation_line_goes_to_the_last_header_also_behind_a_line_without_a_colon) {
  Mailbox box("From a\nX: 1\nno colon\n more\n\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Headers()->ToString(), u"X: 1\r\n more\r\n");
}

TEST(HeaderBlock, a_lone_cr_ends_the_line_and_what_follows_it_is_dropped) {
  Mailbox box("From a\rb\nX: 1\rrest\nY: 2\n\rbody\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->MailInfo(), u"From a");
  EXPECT_EQ(box.message(0)->Headers()->ToString(), u"X: 1\r\nY: 2\r\n");
  EXPECT_EQ(box.message(0)->Text(), u"") << "the line that begins with CR ends the block";
}

TEST(HeaderBlock, of_many_headers_has_each_in_its_place) {
  std::string mail = "From a\n";
  for (int i = 0; i < 10000; ++i) {
    mail += "X-" + std::to_string(i) + ":" + std::to_string(i) + "\n";
    if (i % 3 == 0) mail += "\tfolded\n";
    if (i % 5 == 0) mail += "no colon\n";
  }
  Mailbox box(mail + "\nbody\n");
  box.control().Lock();
  const auto headers = box.message(0)->Headers();
  ASSERT_EQ(headers->Count(), 10000);
  for (const int i : {0, 1, 4094, 4095, 4096, 4097, 9998, 9999}) {
    EXPECT_EQ(plain(headers->Item(i)->Name()), "X-" + std::to_string(i));
    EXPECT_EQ(plain(headers->Item(i)->Value()), std::to_string(i) + (i % 3 == 0 ? "\r\n\tfolded" : ""));
  }
  EXPECT_EQ(headers->Item(u"x-9999"), headers->Item(9999));
  headers->FromString(u"Behind: all\r\n");
  EXPECT_EQ(headers->Item(10000)->Value(), u"all");
  EXPECT_EQ(box.message(0)->Text(), u"body\n");
}

TEST(HeaderBlock, ends_at_the_end_of_the_file_when_no_empty_line_comes) {
  Mailbox box("From a\nX: 1\nY: 2");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Headers()->ToString(), u"X: 1\r\nY: 2\r\n");
  EXPECT_EQ(box.message(0)->Text(), u"");
}

TEST(HeaderBlock, a_message_whose_first_header_line_is_20000_bytes_long_has_no_header_collection) {
  Mailbox box("From a\nX: " + std::string(20000, 'v') + "\n\n");
  box.control().Lock();
  tests::expect_error(ErrorNumber::cannot_load_headers, Reporter::message, [&] { box.message(0)->Headers(); });
}

TEST(HeaderBlock, that_cannot_be_read_from_the_disk_is_30006_until_it_can) {
  Mailbox box("From a\nX: 1\nY: 2\n\nbody\n");
  box.control().Lock();
  for (const std::int64_t position : {0, 8, 14, 17}) {
    tests::FaultyFileSystem failing;
    failing.fail_reads_from(position);
    const platform::FixedFileSystem fixed(failing);
    tests::expect_error(ErrorNumber::cannot_load_headers, Reporter::message, [&] { box.message(0)->Headers(); });
    tests::expect_error(ErrorNumber::cannot_load_text, Reporter::message, [&] { box.message(0)->Text(); });
  }
  EXPECT_EQ(box.message(0)->Headers()->ToString(), u"X: 1\r\nY: 2\r\n");
  EXPECT_EQ(box.message(0)->Text(), u"body\n");
}

TEST(HeaderBlock, headers_returns_the_same_collection_every_time) {
  Mailbox box("From a\nX: 1\n\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Headers(), box.message(0)->Headers());
}

TEST(HeaderBlock, unload_loses_edits_that_were_not_written) {
  Mailbox box("Subject: x\n\nbody\n");
  box.control().Lock();
  box.message(0)->Headers()->Item(0)->SetValue(u"edited");
  box.message(0)->Unload();
  EXPECT_EQ(box.message(0)->Headers()->Item(0)->Value(), u"x");
}

TEST(HeaderBlock, bytes_beyond_ascii_are_widened_with_the_thread_code_page) {
  Mailbox box("From a\nX: caf\xE9\n\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Headers()->Item(0)->Value(), u"caf\u00E9");
}

}  // namespace
}  // namespace vellobar
