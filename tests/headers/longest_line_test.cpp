// A header line has at most 16,383 bytes, its line feed included; a block with a longer one cannot be read. Writing
// adds to a line: a CR, and a blank behind the colon. A message that could be read must be readable when it was
// written.
#include <gtest/gtest.h>

#include <string>

#include "headers/header.h"
#include "headers/headers.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::Mailbox;
using tests::plain;

constexpr std::size_t kLongest = 16383;

/// A line of so many bytes with its line end.
std::string line(std::string_view front, std::size_t size, std::string_view end) {
  return std::string(front) + std::string(size - front.size() - end.size(), 'v') + std::string(end);
}

/// What an update writes for a header block.
std::string updated(const std::string& block) {
  Mailbox box("From a\n" + block + "Last: x\n\nbody\n");
  box.control().Lock();
  const std::u16string before = box.message(0)->Headers()->ToString();
  box.control().Update();
  EXPECT_TRUE(box.message(0)->Headers()->ToString() == before) << "headers are read as they were before";
  EXPECT_EQ(box.message(0)->Text(), u"body\n\r\n");
  const std::string once = box.content();
  box.control().Update();
  box.message(0)->Headers();
  EXPECT_TRUE(box.content() == once + "\r\n" || box.content() == once) << "and written as they were";
  const std::string_view front = "From a\r\n", back = "Last: x\r\n\r\nbody\n\r\n";
  EXPECT_TRUE(once.starts_with(front) && once.ends_with(back));
  return once.substr(front.size(), once.size() - front.size() - back.size());
}

void expect_written(const std::string& block, const std::string& expected) {
  const std::string written = updated(block);
  EXPECT_TRUE(written == expected) << written.size() << " bytes instead of " << expected.size() << ", ending "
                                   << ::testing::PrintToString(written.substr(written.size() - 3));
}

TEST(LongestHeaderLine, that_is_short_enough_is_written_with_cr_and_blank) {
  expect_written(line("X: ", kLongest - 1, "\n"), line("X: ", kLongest, "\r\n"));
  expect_written(line("X:", kLongest - 2, "\n"), line("X: ", kLongest, "\r\n"));
  expect_written(line("X: ", kLongest, "\r\n"), line("X: ", kLongest, "\r\n"));
}

TEST(LongestHeaderLine, is_written_without_the_cr_that_would_make_it_unreadable) {
  expect_written(line("X: ", kLongest, "\n"), line("X: ", kLongest, "\n"));
  expect_written(line("X:", kLongest - 1, "\n"), line("X: ", kLongest, "\n"));
  expect_written(line("X:", kLongest, "\r\n"), line("X: ", kLongest, "\n"));
}

TEST(LongestHeaderLine, is_written_without_the_blank_that_would_make_it_unreadable) {
  expect_written(line("X:", kLongest, "\n"), line("X:", kLongest, "\n"));
  expect_written(line("X:\t", kLongest, "\n"), line("X:\t", kLongest, "\n"));
}

TEST(LongestHeaderLine, that_continues_a_value_keeps_within_the_limit) {
  const std::string folded = "X:\n" + line(" ", kLongest, "\n") + line("\t", kLongest - 1, "\n") + " end\n";
  expect_written(folded, "X: \r\n" + line(" ", kLongest, "\n") + line("\t", kLongest, "\r\n") + " end\r\n");
  expect_written(line("X:", kLongest, "\n") + line(" a: b", kLongest, "\n"),
                 line("X:", kLongest, "\n") + line(" a: b", kLongest, "\n"));
}

TEST(LongestHeaderLine, that_cannot_be_read_is_written_as_it_stands) {
  for (const std::size_t size : {kLongest + 1, kLongest + 2}) {
    const std::string mail = "From a\n" + line("X:", size, "\n") + "\nbody\n";
    Mailbox box(mail);
    box.control().Lock();
    box.control().Update();
    EXPECT_TRUE(box.content() == mail + "\r\n");
  }
}

TEST(LongestHeaderLine, of_a_value_that_was_put_is_read_again_as_long_as_name_and_value_leave_room) {
  for (std::size_t size = 16377; size <= 16380; ++size) {
    Mailbox box("From a\nX: 1\n\nbody\n");
    box.control().Lock();
    const std::u16string value(size, u'v');
    box.message(0)->Headers()->Item(0)->SetValue(value);
    box.control().Update();
    EXPECT_TRUE(box.content() == "From a\r\n" + plain(size < 16380 ? u"X: " : u"X:") + plain(value) +
                                     (size < 16379 ? "\r\n" : "\n") + "\r\nbody\n\r\n")
        << size;
    EXPECT_TRUE(box.message(0)->Headers()->Item(0)->Value() == value) << size;
  }
}

TEST(LongestHeaderLine, keeps_the_blank_that_is_the_first_of_its_value) {
  const std::string value = " " + std::string(kLongest, 'v');
  CHeaders headers;
  headers.Add(u"X", std::u16string(value.begin(), value.end()));
  EXPECT_TRUE(headers.to_bytes() == "X: " + value + "\r\n");
  const std::string shorter = value.substr(0, kLongest - 3);
  headers.Item(0)->SetValue(std::u16string(shorter.begin(), shorter.end()));
  EXPECT_TRUE(headers.to_bytes() == "X: " + shorter + "\r\n");
}

// Deliberate: a value is written on one line however long it is, and a line without room for it is unreadable.
TEST(LongestHeaderLine, of_a_value_that_was_put_is_written_however_long_it_is) {
  for (const std::size_t size : {16381, 20000}) {
    Mailbox box("From a\nX: 1\n\nbody\n");
    box.control().Lock();
    const std::string value(size, 'v');
    box.message(0)->Headers()->Item(0)->SetValue(std::u16string(value.begin(), value.end()));
    box.control().Update();
    const std::string written = "From a\r\nX: " + value + "\r\n\r\nbody\n\r\n";
    EXPECT_TRUE(box.content() == written);
    tests::expect_error(ErrorNumber::cannot_load_headers, Reporter::message, [&] { box.message(0)->Headers(); });
    box.control().Update();
    EXPECT_TRUE(box.content().starts_with(written)) << "nothing of it is lost";
  }
}

// Deliberate: there is no shorter way to write it.
TEST(LongestHeaderLine, that_ends_with_the_file_has_no_room_for_a_line_end) {
  const std::string last = line("X:", kLongest, "");
  Mailbox box("From a\n" + last);
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Headers()->Count(), 1);
  box.control().Update();
  EXPECT_TRUE(box.content().starts_with("From a\r\nX: " + last.substr(2) + "\r\n")) << "nothing of it is lost";
  tests::expect_error(ErrorNumber::cannot_load_headers, Reporter::message, [&] { box.message(0)->Headers(); });
}

TEST(LongestSeparatorLine, is_written_without_the_cr_that_would_divide_it) {
  for (const std::size_t size : {kLongest, kLongest + 1}) {
    const std::string separator = line("From ", size, "\n");
    Mailbox box(separator + "X: 1\n\nbody\n");
    box.control().Lock();
    ASSERT_EQ(box.message(0)->Headers()->Count(), 1);
    box.message(0)->SetSubject(u"new");
    box.control().Update();
    const std::string written = size == kLongest ? line("From ", size + 1, "\r\n") : separator;
    EXPECT_TRUE(box.content() == written + "X: 1\r\nSubject: new\r\n\r\nbody\n\r\n") << size;
    EXPECT_EQ(box.message(0)->Headers()->Count(), 2) << size;
    EXPECT_EQ(box.message(0)->Subject(), u"new") << size;
  }
}

TEST(LongestHeaderLine, is_the_same_text_for_a_client) {
  CHeaders headers;
  const std::u16string value(kLongest - 3, u'v');
  headers.FromString(u"X:" + value + u"\r\n");
  EXPECT_TRUE(headers.ToString() == u"X: " + value + u"\r\n");
}

}  // namespace
}  // namespace vellobar
