// Writing part trees back, exact bytes, and what Update keeps in memory of them.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::Mailbox;
using tests::plain;
using tests::wide;

constexpr std::string_view kNested =
    "From a\nContent-Type: multipart/mixed; boundary=outer\n\n"
    "pre\n"
    "--outer\nContent-Type: multipart/alternative; boundary=inner\n\n"
    "in pre\n--inner\nA: 1\n\none\n--inner\nB: 2\n\ntwo\n--inner--\nin epilogue\n"
    "--outer\nC: 3\n\nthree\n"
    "--outer--\nepilogue\n";

constexpr std::string_view kNestedWritten =
    "From a\r\nContent-Type: multipart/mixed; boundary=outer\r\n\r\n"
    "pre\n"
    "--outer\r\nContent-Type: multipart/alternative; boundary=inner\r\n\r\n"
    "in pre\n--inner\r\nA: 1\r\n\r\none\n--inner\r\nB: 2\r\n\r\ntwo\n--inner--\r\n\r\n"
    "--outer\r\nC: 3\r\n\r\nthree\n"
    "--outer--\r\n\r\n\r\n";

TEST(PartWriting, a_tree_is_written_between_delimiters_level_by_level) {
  Mailbox box(kNested);
  box.control().Lock();
  box.control().Update();
  EXPECT_EQ(box.content(), kNestedWritten);
  box.control().Update();
  EXPECT_EQ(box.content(), kNestedWritten) << "what was written reads and writes the same";
}

TEST(PartWriting, a_tree_that_was_read_is_written_the_same) {
  Mailbox box(kNested);
  box.control().Lock();
  const auto message = box.message(0);
  const auto inner = message->Parts()->Item(0);
  inner->Parts()->Item(1)->Text();
  box.control().Update();
  EXPECT_EQ(box.content(), kNestedWritten);
}

TEST(PartWriting, body_joins_the_tree_with_delimiters_and_no_final_line_end) {
  Mailbox box(kNested);
  box.control().Lock();
  constexpr std::string_view expected =
      "Content-Type: multipart/mixed; boundary=outer\r\n\r\npre\n"
      "--outer\r\nContent-Type: multipart/alternative; boundary=inner\r\n\r\n"
      "in pre\n--inner\r\nA: 1\r\n\r\none\n--inner\r\nB: 2\r\n\r\ntwo\n--inner--\r\n"
      "--outer\r\nC: 3\r\n\r\nthree\n--outer--\r\n";
  EXPECT_EQ(plain(box.message(0)->Body()), expected);
  EXPECT_EQ(plain(box.message(0)->Parts()->Item(1)->Body()), "C: 3\r\n\r\nthree\n");
}

TEST(PartWriting, an_edit_of_a_part_is_written_and_shows_in_the_body_of_its_message) {
  Mailbox box(kNested);
  box.control().Lock();
  box.message(0)->Parts()->Item(1)->Headers()->Add(u"X", u"y");
  EXPECT_NE(box.message(0)->Body().find(u"C: 3\r\nX: y\r\n\r\nthree"), std::u16string::npos);
  EXPECT_TRUE(box.control().Changed());
  box.control().Update();
  EXPECT_NE(box.content().find("C: 3\r\nX: y\r\n\r\nthree"), std::string::npos);
}

TEST(PartWriting, text_put_on_a_part_is_written_in_its_place) {
  Mailbox box(kNested);
  box.control().Lock();
  box.message(0)->Parts()->Item(0)->Parts()->Item(0)->SetText(u"new");
  box.control().Update();
  EXPECT_NE(box.content().find("--inner\r\nA: 1\r\n\r\nnew\r\n--inner\r\nB: 2"), std::string::npos);
}

TEST(PartWriting, text_put_on_a_multipart_message_replaces_the_preamble_and_keeps_the_parts) {
  Mailbox box(kNested);
  box.control().Lock();
  box.message(0)->SetText(u"new");
  EXPECT_EQ(box.message(0)->Parts()->Count(), 2);
  EXPECT_EQ(box.message(0)->Text(), u"new\r\n");
  box.control().Update();
  EXPECT_EQ(box.content(), std::string(kNestedWritten).replace(kNestedWritten.find("pre\n"), 4, "new\r\n"));
}

TEST(PartWriting, a_delimiter_of_five_characters_is_not_written) {
  Mailbox box("From a\nContent-Type: multipart/mixed; boundary=abc\n\npre\n--abc\nA: 1\n\none\n--abc--\n");
  box.control().Lock();
  EXPECT_EQ(plain(box.message(0)->Body()),
            "Content-Type: multipart/mixed; boundary=abc\r\n\r\npre\n--abc\r\nA: 1\r\n\r\none\n--abc--\r\n");
  box.control().Update();
  EXPECT_EQ(box.content(),
            "From a\r\nContent-Type: multipart/mixed; boundary=abc\r\n\r\npre\nA: 1\r\n\r\none\n\r\n\r\n");
}

TEST(PartWriting, mail_info_of_a_part_is_not_written) {
  Mailbox box(kNested);
  box.control().Lock();
  box.message(0)->Parts()->Item(1)->SetMailInfo(u"From nobody");
  box.control().Update();
  EXPECT_EQ(box.content(), kNestedWritten);
}

TEST(PartWriting, a_removed_part_is_not_written) {
  Mailbox box(kNested);
  box.control().Lock();
  box.message(0)->Parts()->Remove(*box.message(0)->Parts()->Item(0));
  EXPECT_TRUE(box.control().Changed());
  box.control().Update();
  EXPECT_EQ(box.content(),
            "From a\r\nContent-Type: multipart/mixed; boundary=outer\r\n\r\npre\n--outer\r\nC: 3\r\n\r\nthree\n"
            "--outer--\r\n\r\n\r\n");
}

TEST(PartWriting, save_of_a_part_writes_the_part_alone) {
  Mailbox box(kNested);
  box.control().Lock();
  const std::string path = box.folder().path("part.eml");
  box.message(0)->Parts()->Item(0)->Save(wide(path));
  EXPECT_EQ(tests::read_file(path),
            "Content-Type: multipart/alternative; boundary=inner\r\n\r\n"
            "in pre\n--inner\r\nA: 1\r\n\r\none\n--inner\r\nB: 2\r\n\r\ntwo\n--inner--\r\n\r\n");
}

TEST(PartWriting, save_onto_the_file_that_a_tree_is_read_from_keeps_the_tree) {
  tests::TemporaryFolder folder;
  const std::string path = folder.file("m.eml", kNested.substr(7));
  CMessage message;
  message.Peek(wide(path));
  message.Save(wide(path));
  EXPECT_EQ(tests::read_file(path), kNestedWritten.substr(8, kNestedWritten.size() - 10));
}

// ---- Unreadable parts

const std::string& unreadable_part() {
  static const std::string bytes = "X: " + std::string(20000, 'v') + "\n\nlost?\n";
  return bytes;
}

// The first chunk of the scan, 16,384 bytes, ends behind a line feed, so that no position runs ahead.
std::string with_unreadable_part() {
  return "From a\nContent-Type: multipart/mixed; boundary=outer\n\npre\n--outer\nA: 1\n\none\n--outer\n" +
         unreadable_part() + "--outer\nC: 3\n\nthree\n--outer--\n";
}

TEST(PartWriting, an_unreadable_part_is_written_as_its_own_bytes_from_behind_its_delimiter_line) {
  Mailbox box(with_unreadable_part());
  box.control().Lock();
  box.control().Update();
  EXPECT_TRUE(box.content() ==
              "From a\r\nContent-Type: multipart/mixed; boundary=outer\r\n\r\npre\n--outer\r\nA: 1\r\n\r\none\n"
              "--outer\r\n" +
                  unreadable_part() + "--outer\r\nC: 3\r\n\r\nthree\n--outer--\r\n\r\n\r\n");
}

TEST(PartWriting, an_unreadable_part_that_was_unloaded_is_written_without_a_second_delimiter_line) {
  Mailbox box(with_unreadable_part());
  box.control().Lock();
  box.message(0)->Parts()->Item(1)->Unload();
  box.control().Update();
  EXPECT_TRUE(box.content().find("--outer\r\n" + unreadable_part() + "--outer\r\n") != std::string::npos);
}

TEST(PartWriting, body_gives_only_the_delimiter_line_of_an_unreadable_part_loaded_or_not) {
  Mailbox box(with_unreadable_part());
  box.control().Lock();
  constexpr std::string_view expected =
      "Content-Type: multipart/mixed; boundary=outer\r\n\r\npre\n--outer\r\nA: 1\r\n\r\none\n"
      "--outer\r\n--outer\r\nC: 3\r\n\r\nthree\n--outer--\r\n";
  EXPECT_EQ(plain(box.message(0)->Body()), expected);
  box.message(0)->Parts()->Item(1)->Load();
  EXPECT_EQ(plain(box.message(0)->Body()), expected);
}

TEST(PartWriting, a_part_added_to_an_unreadable_message_is_refused_rather_than_lost) {
  Mailbox box("From a\nX: " + std::string(20000, 'v') + "\n\nbody\n");
  box.control().Lock();
  box.message(0)->Parts()->Add();
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { box.control().Update(); });
}

TEST(PartWriting, a_part_added_to_an_unreadable_part_is_refused_also_after_its_message_gave_its_body) {
  Mailbox box(with_unreadable_part());
  box.control().Lock();
  box.message(0)->Parts()->Item(1)->Parts()->Add();
  box.message(0)->Body();
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { box.control().Update(); });
}

TEST(PartWriting, a_delimiter_line_that_goes_on_is_written_as_the_delimiter_alone) {
  Mailbox box(
      "From a\nContent-Type: multipart/mixed; boundary=outer\n\n--outer\n\none\n--outer-extra\n\ntwo\n--outer--\n");
  box.control().Lock();
  box.control().Update();
  EXPECT_TRUE(box.content().find("one\n--outer\r\n\r\ntwo\n--outer--\r\n") != std::string::npos) << box.content();
}

// ---- Positions that ran ahead

/// The second chunk of the scan, from 16,384 to 49,152 bytes behind the opening delimiter, holds no line feed.
std::string ran_ahead_tree() {
  return "Content-Type: multipart/mixed; boundary=outer\n\npre\n--outer\nA: 1\n\n" + std::string(50000, 'x') +
         "\none\n--outer\nC: 3\n\nthree\n--outer--\n" + std::string(60000, '\n');
}

TEST(PartWriting, a_message_whose_part_positions_ran_ahead_is_written_as_its_own_bytes) {
  const std::string message = "From a\n" + ran_ahead_tree();
  Mailbox box(message);
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Parts()->Count(), 2);
  EXPECT_NE(box.message(0)->Parts()->Item(1)->Text(), u"three\n") << "the positions did run ahead";
  box.control().Update();
  EXPECT_TRUE(box.content() == message + "\r\n");
}

TEST(PartWriting, a_part_whose_part_positions_ran_ahead_is_written_as_its_own_bytes) {
  const std::string part = "Content-Type: multipart/mixed; boundary=inner\n\n--inner\n" + std::string(20000, 'x') +
                           "\n\none\n--inner--\n" + std::string(30000, '\n');
  // The chunks of the outer scan all hold a line feed: it begins a good way in front of the long line.
  const std::string before = "A: 1\n\n" + std::string(1000, '\n');
  Mailbox box("From a\nContent-Type: multipart/mixed; boundary=outer\n\n--outer\n" + before + "--outer\n" + part +
              "--outer--\n");
  box.control().Lock();
  box.control().Update();
  EXPECT_TRUE(box.content() ==
              "From a\r\nContent-Type: multipart/mixed; boundary=outer\r\n\r\n--outer\r\nA: 1\r\n\r\n" +
                  std::string(1000, '\n') + "--outer\r\n" + part + "--outer--\r\n\r\n\r\n");
}

TEST(PartWriting, a_message_whose_positions_ran_ahead_in_its_epilogue_is_written_as_its_own_bytes) {
  const std::string message = "From a\nContent-Type: multipart/mixed; boundary=outer\n\n--outer\nA: 1\n\none\n" +
                              std::string(16384, '\n') + "--outer--\n" + std::string(110000, 'x') + "\nend\n";
  Mailbox box(message);
  box.control().Lock();
  ASSERT_EQ(box.message(0)->Parts()->Count(), 1);
  box.control().Update();
  EXPECT_TRUE(box.content() == message + "\r\n");
}

TEST(PartWriting, a_changed_message_whose_part_positions_ran_ahead_is_30002_and_nothing_is_touched) {
  const std::string message = "From a\n" + ran_ahead_tree();
  const std::function<void(CMessage&)> changes[] = {
      [](CMessage& m) { m.Headers()->Add(u"X", u"y"); },
      [](CMessage& m) { m.SetSubject(u"new"); },
      [](CMessage& m) { m.Parts()->Item(0)->Headers()->Add(u"X", u"y"); },
      [](CMessage& m) { m.Parts()->Item(0)->SetBody(u"A: b\r\n\r\nc\r\n"); },
      [](CMessage& m) { m.Parts()->Remove(*m.Parts()->Item(0)); },
      [](CMessage& m) { m.Parts()->Add(); },
      [](CMessage& m) { m.Parts()->Add(std::make_shared<CMessage>()); },
  };
  for (const auto& change : changes) {
    Mailbox box(message);
    box.control().Lock();
    change(*box.message(0));
    expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { box.control().Update(); });
    EXPECT_TRUE(box.content() == message) << &change - changes;
  }
}

TEST(PartWriting, text_put_on_a_message_whose_part_positions_ran_ahead_is_30002) {
  Mailbox box("From a\n" + ran_ahead_tree());
  box.control().Lock();
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message, [&] { box.message(0)->SetText(u"new"); });
}

TEST(PartWriting, a_mail_info_that_was_put_is_written_before_the_own_bytes_of_a_message) {
  Mailbox box("From a\n" + ran_ahead_tree());
  box.control().Lock();
  box.message(0)->SetMailInfo(u"From me");
  box.control().Update();
  EXPECT_TRUE(box.content() == "From me\r\n" + ran_ahead_tree() + "\r\n");
}

// ---- What Update keeps

TEST(PartWriting, update_keeps_a_message_readable_whose_part_a_client_holds) {
  Mailbox box(kNested);
  box.control().Lock();
  const auto part = box.message(0)->Parts()->Item(0)->Parts()->Item(1);
  box.control().Update();
  EXPECT_EQ(part->Text(), u"two\n");
  EXPECT_EQ(part->Headers()->Item(0)->Name(), u"B");
}

TEST(PartWriting, update_keeps_the_whole_tree_of_a_message_that_a_client_holds) {
  Mailbox box(kNested);
  box.control().Lock();
  const auto message = box.message(0);
  box.control().Update();
  EXPECT_EQ(message->Parts()->Item(0)->Parts()->Item(1)->Text(), u"two\n");
  EXPECT_EQ(message->Parts()->Item(1)->Text(), u"three\n");
}

TEST(PartWriting, update_keeps_the_parts_of_a_collection_that_a_client_holds) {
  Mailbox box(kNested);
  box.control().Lock();
  const auto parts = box.message(0)->Parts()->Item(0)->Parts();
  box.control().Update();
  ASSERT_EQ(parts->Count(), 2);
  EXPECT_EQ(parts->Item(0)->Text(), u"one\n");
}

TEST(PartWriting, update_that_fails_leaves_a_tree_that_nobody_held_as_it_was) {
  Mailbox box(std::string(kNested) + "From b\n\nlast\n");
  box.control().Lock();
  const std::string whole = box.content();
  box.message(0)->Parts()->Item(0)->Headers();
  std::string moved(whole);
  moved.replace(moved.find("From b"), 6, "Form b");
  tests::write_file(box.path(), moved);
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { box.control().Update(); });
  tests::write_file(box.path(), whole);
  EXPECT_EQ(box.message(0)->Parts()->Count(), 2);
  EXPECT_EQ(box.message(0)->Parts()->Item(0)->Parts()->Count(), 2);
}

}  // namespace
}  // namespace vellobar
