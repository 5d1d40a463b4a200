#include <gtest/gtest.h>

#ifndef _WIN32
#include <pthread.h>
#endif

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "platform/file.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::expect_status;
using tests::Mailbox;
using tests::plain;
using tests::wide;

constexpr std::string_view kTwoAttachments =
    "From a\n"
    "Content-Type: multipart/mixed; boundary=\"X\"\n"
    "\n"
    "preamble\n"
    "--X\n"
    "Content-Type: text/plain\n"
    "\n"
    "the text\n"
    "--X\n"
    "Content-Type: Application/Zip; name=\"one.zip\"\n"
    "Content-Transfer-Encoding: base64\n"
    "\n"
    "QUJD\n"
    "--X\n"
    "Content-Type: multipart/alternative; boundary=Y\n"
    "\n"
    "--Y\n"
    "Content-Transfer-Encoding: quoted-printable\n"
    "Content-Disposition: attachment; filename=\"two.txt\"\n"
    "\n"
    "=41\n"
    "--Y--\n"
    "--X--\n";

std::vector<std::string> names_of(CMessage& message) {
  std::vector<std::string> names;
  const auto attachments = message.Attachments();
  for (std::int64_t i = 0; i < attachments->Count(); ++i) names.push_back(plain(attachments->Item(i)->Name()));
  return names;
}

std::string saved(CAttachment& attachment) {
  tests::TemporaryFolder folder;
  attachment.Save(wide(folder.path("out")));
  return tests::read_file(folder.path("out"));
}

TEST(Discovery, follows_nested_multiparts_in_their_order) {
  Mailbox box(kTwoAttachments);
  box.control().Lock();
  EXPECT_EQ(names_of(*box.message(0)), (std::vector<std::string>{"one.zip", "two.txt"}));
}

TEST(Discovery, gives_each_attachment_its_encoding_type_part_and_range) {
  Mailbox box(kTwoAttachments);
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  const auto one = attachments->Item(0);
  EXPECT_EQ(one->Encoding(), 1);
  EXPECT_EQ(one->Type(), u"Application/Zip");
  EXPECT_EQ(one->Part(), box.message(0)->Parts()->Item(1));
  EXPECT_EQ(one->range().start, static_cast<std::int64_t>(kTwoAttachments.find("QUJD")));
  EXPECT_EQ(one->range().end, static_cast<std::int64_t>(kTwoAttachments.find("QUJD") + 5));
  EXPECT_EQ(saved(*one), "ABC");
  const auto two = attachments->Item(1);
  EXPECT_EQ(two->Encoding(), 4);
  EXPECT_EQ(two->Type(), u"attachment");
  EXPECT_EQ(two->Part(), box.message(0)->Parts()->Item(2)->Parts()->Item(0));
  EXPECT_EQ(two->Size(), 4);
  EXPECT_EQ(saved(*two), "A\n");
}

TEST(Discovery, of_a_part_finds_what_lies_inside_that_part) {
  Mailbox box(kTwoAttachments);
  box.control().Lock();
  EXPECT_EQ(names_of(*box.message(0)->Parts()->Item(2)), std::vector<std::string>{"two.txt"});
}

TEST(Discovery, a_message_can_be_an_attachment_itself) {
  Mailbox box("From a\nContent-Transfer-Encoding: base64\nContent-Type: image/gif; name=a.gif\n\nQUJD\n");
  box.control().Lock();
  const auto attachment = box.message(0)->Attachments()->Item(0);
  EXPECT_EQ(attachment->Part(), box.message(0));
  EXPECT_EQ(saved(*attachment), "ABC");
}

TEST(Discovery, parts_come_before_a_multipart_that_is_an_attachment_itself) {
  Mailbox box(
      "From a\nContent-Transfer-Encoding: 7bit\nContent-Disposition: attachment; filename=\"outer\"\n"
      "Content-Type: multipart/mixed; boundary=X\n\n--X\nContent-Transfer-Encoding: 7bit\n"
      "Content-Disposition: attachment; filename=\"inner\"\n\nx\n--X--\n");
  box.control().Lock();
  EXPECT_EQ(names_of(*box.message(0)), (std::vector<std::string>{"inner", "outer"}));
}

TEST(Discovery, two_multipart_type_headers_find_the_parts_twice) {
  Mailbox box(
      "From a\nContent-Type: multipart/mixed; boundary=X\nContent-Type: multipart/mixed; boundary=X\n\n"
      "--X\nContent-Transfer-Encoding: 7bit\nContent-Disposition: attachment; filename=\"inner\"\n\nx\n--X--\n");
  box.control().Lock();
  EXPECT_EQ(names_of(*box.message(0)), (std::vector<std::string>{"inner", "inner"}));
}

TEST(Discovery, parts_listed_twice_are_objects_of_their_own_that_say_the_same) {
  Mailbox box(
      "From a\nContent-Type: multipart/mixed; boundary=X\nContent-Type: multipart/mixed; boundary=X\n\n"
      "--X\nContent-Type: image/gif; name=g\nContent-Transfer-Encoding: base64\n\nQUJD\n--X--\n");
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  ASSERT_EQ(attachments->Count(), 2);
  const auto first = attachments->Item(0);
  const auto second = attachments->Item(1);
  EXPECT_NE(first, second);
  EXPECT_EQ(second->Name(), u"g");
  EXPECT_EQ(second->Type(), u"image/gif");
  EXPECT_EQ(second->Encoding(), 1);
  EXPECT_EQ(second->Part(), first->Part());
  EXPECT_EQ(saved(*second), "ABC");
}

/// Multiparts one in the other, each named by two headers, around this part.
std::string nested_twice_named(int levels, std::string_view innermost) {
  std::string mail = "From a\n";
  for (int i = 0; i < levels; ++i) {
    const std::string boundary = "b" + std::to_string(i) + "e";
    for (int times = 0; times < 2; ++times) mail += "Content-Type: multipart/mixed; boundary=" + boundary + "\n";
    mail += "\n--" + boundary + "\n";
  }
  mail += innermost;
  for (int i = levels; i-- > 0;) mail += "--b" + std::to_string(i) + "e--\n";
  return mail;
}

TEST(Discovery, nested_multiparts_that_are_each_named_twice_are_visited_once) {
  Mailbox empty(nested_twice_named(200, "Subject: x\n\nno attachment\n"));
  empty.control().Lock();
  EXPECT_EQ(empty.message(0)->Attachments()->Count(), 0);
}

TEST(Discovery, nested_multiparts_that_are_each_named_twice_double_a_list_that_is_not_yet_long) {
  constexpr std::string_view kPart =
      "Content-Transfer-Encoding: 7bit\nContent-Disposition: attachment; filename=\"f\"\n\nx\n";
  const auto count = [&](int levels) {
    Mailbox box(nested_twice_named(levels, kPart));
    box.control().Lock();
    return box.message(0)->Attachments()->Count();
  };
  EXPECT_EQ(count(3), 8);
  EXPECT_EQ(count(16), 65536);
  EXPECT_EQ(count(17), 65536);
  EXPECT_EQ(count(200), 65536);
}

TEST(Discovery, thousands_of_headers_name_thousands_of_parts_which_are_visited_once) {
  std::string mail = "From a\n";
  for (int i = 0; i < 2000; ++i) mail += "Content-Type: multipart/mixed; boundary=X\n";
  mail += "\n";
  for (int i = 0; i < 2000; ++i) mail += "--X\n\nx\n";
  Mailbox box(mail + "--X--\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Attachments()->Count(), 0);
}

TEST(Discovery, a_message_part_without_an_encoding_header_is_saved_as_it_stands) {
  Mailbox box(
      "From a\nContent-Type: multipart/mixed; boundary=X\n\n--X\nContent-Type: message/rfc822\n\n"
      "Subject: inside\n\nbody =41\n--X--\n");
  box.control().Lock();
  const auto attachment = box.message(0)->Attachments()->Item(0);
  EXPECT_EQ(attachment->Encoding(), 5);
  EXPECT_EQ(attachment->Name(), u"");
  EXPECT_EQ(saved(*attachment), "Subject: inside\n\nbody =41\n");
}

TEST(Discovery, of_a_message_without_attachments_counts_none) {
  Mailbox box("From a\nSubject: x\n\nbegin 644 f\nend\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Attachments()->Count(), 0);
}

TEST(Attachments, an_index_outside_is_an_invalid_argument) {
  Mailbox box(kTwoAttachments);
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  expect_status(Status::invalid_argument, [&] { attachments->Item(-1); });
  expect_status(Status::invalid_argument, [&] { attachments->Item(2); });
  EXPECT_EQ(attachments->Item(1), attachments->Item(1));
}

TEST(Attachments, an_index_below_zero_searches_first_like_any_other) {
  Mailbox box("From a\n\nbegin 644 f.txt\n#04)#\nend\n");
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  expect_status(Status::invalid_argument, [&] { attachments->Item(-1); });
  attachments->SetScanText(true);
  EXPECT_EQ(attachments->Count(), 0);
  expect_status(Status::fail, [] { CAttachments().Item(-1); });
}

TEST(Attachments, are_the_same_collection_until_the_message_is_unloaded) {
  Mailbox box(kTwoAttachments);
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  EXPECT_EQ(box.message(0)->Attachments(), attachments);
  EXPECT_EQ(attachments->Count(), 2);
  box.message(0)->Unload();
  expect_status(Status::fail, [&] { attachments->Count(); });
  expect_status(Status::fail, [&] { attachments->Add(u"x"); });
}

TEST(Attachments, of_a_message_that_is_gone_fail) {
  std::shared_ptr<CAttachments> attachments;
  {
    const auto message = std::make_shared<CMessage>();
    attachments = message->Attachments();
    EXPECT_EQ(attachments->Count(), 0);
  }
  expect_status(Status::fail, [&] { attachments->Count(); });
}

TEST(Attachments, of_an_unreadable_header_block_report_30005) {
  Mailbox box("From a\nSubject: " + std::string(20000, 'x') + "\n\nbody\n");
  box.control().Lock();
  expect_error(ErrorNumber::cannot_load_text, Reporter::message, [&] { box.message(0)->Attachments(); });
}

TEST(Attachments, of_an_unreadable_header_block_are_none_once_the_message_was_loaded) {
  Mailbox box("From a\nSubject: " + std::string(20000, 'x') + "\n\nbegin 644 f\nend\n");
  box.control().Lock();
  box.message(0)->Load();
  const auto attachments = box.message(0)->Attachments();
  attachments->SetScanText(true);
  EXPECT_EQ(attachments->Count(), 0);
}

TEST(Attachments, held_over_unlock_are_still_listed) {
  Mailbox box(kTwoAttachments);
  box.control().Lock();
  const auto message = box.message(0);
  const auto attachments = message->Attachments();
  EXPECT_EQ(attachments->Count(), 2);
  box.control().Unlock();
  EXPECT_EQ(attachments->Count(), 2);
  EXPECT_EQ(saved(*attachments->Item(0)), "");
}

TEST(Attachments, decode_from_the_parts_own_file_once_the_text_was_replaced) {
  Mailbox box("From a\nContent-Transfer-Encoding: base64\nContent-Type: image/gif; name=a.gif\n\nQUJD\n");
  box.control().Lock();
  box.message(0)->SetText(u"REVG");
  EXPECT_EQ(saved(*box.message(0)->Attachments()->Item(0)), "DEF");
}

// ---- UU blocks in text ----

constexpr std::string_view kUuText = "From a\nSubject: x\n\nhello\nbegin 644 f.txt\n#04)#\n`\nend\nbye\n";

TEST(ScanText, a_block_in_the_body_is_one_uu_attachment_whose_source_holds_exactly_its_lines) {
  tests::TemporaryFolder folder;
  const platform::FixedTemporaryFolder temporary(folder.path(""));
  Mailbox box(kUuText);
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  attachments->SetScanText(true);
  ASSERT_EQ(attachments->Count(), 1);
  const auto attachment = attachments->Item(0);
  EXPECT_EQ(attachment->Name(), u"f.txt");
  EXPECT_EQ(attachment->Type(), u"");
  EXPECT_EQ(attachment->Encoding(), 3);
  EXPECT_EQ(attachment->Part(), box.message(0));
  EXPECT_EQ(attachment->range().start, 0);
  EXPECT_EQ(attachment->range().end, 32);
  EXPECT_EQ(attachment->Size(), 24);
  ASSERT_EQ(folder.names().size(), 1u);
  EXPECT_EQ(tests::read_file(folder.path(folder.names()[0])), "begin 644 f.txt\r\n#04)#\r\n`\r\nend\r\n");
  EXPECT_EQ(saved(*attachment), "ABC");
}

TEST(ScanText, is_off_at_first_and_counts_only_before_the_first_count) {
  Mailbox box(kUuText);
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  EXPECT_FALSE(attachments->ScanText());
  EXPECT_EQ(attachments->Count(), 0);
  attachments->SetScanText(true);
  EXPECT_TRUE(attachments->ScanText());
  EXPECT_EQ(attachments->Count(), 0);
}

TEST(ScanText, blocks_come_behind_the_mime_attachments) {
  std::string mail(kTwoAttachments);
  mail.replace(mail.find("the text\n"), 9, "begin 644 uu\n#04)#\nend\n");
  // Were there an alternative part, the plain text would be searched in that part alone.
  mail.replace(mail.find("alternative"), 11, "related");
  Mailbox box(mail);
  box.control().Lock();
  box.message(0)->Attachments()->SetScanText(true);
  EXPECT_EQ(names_of(*box.message(0)), (std::vector<std::string>{"one.zip", "two.txt", "uu"}));
}

TEST(ScanText, hundreds_of_blocks_are_each_an_attachment_with_a_file_of_its_own) {
  tests::TemporaryFolder folder;
  const platform::FixedTemporaryFolder temporary(folder.path(""));
  std::string mail = "From a\n\n";
  for (int i = 0; i < 300; ++i) mail += "begin 644 f" + std::to_string(i) + "\n#04)#\nend\n\n";
  Mailbox box(mail);
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  attachments->SetScanText(true);
  ASSERT_EQ(attachments->Count(), 300);
  EXPECT_EQ(attachments->Item(299)->Name(), u"f299");
  EXPECT_EQ(saved(*attachments->Item(299)), "ABC");
  EXPECT_EQ(folder.names().size(), 300u);
}

TEST(ScanText, the_temporary_file_is_left_on_the_disk) {
  tests::TemporaryFolder folder;
  const platform::FixedTemporaryFolder temporary(folder.path(""));
  {
    Mailbox box(kUuText);
    box.control().Lock();
    box.message(0)->Attachments()->SetScanText(true);
    EXPECT_EQ(box.message(0)->Attachments()->Count(), 1);
  }
  EXPECT_EQ(folder.names().size(), 1u);
}

TEST(ScanText, a_block_can_be_saved_after_unlock_since_it_has_a_file_of_its_own) {
  Mailbox box(kUuText);
  box.control().Lock();
  box.message(0)->Attachments()->SetScanText(true);
  const auto attachment = box.message(0)->Attachments()->Item(0);
  box.control().Unlock();
  EXPECT_EQ(saved(*attachment), "ABC");
}

TEST(ScanText, without_a_temporary_folder_the_search_ends_quietly) {
  tests::TemporaryFolder folder;
  const platform::FixedTemporaryFolder temporary(folder.path("missing/"));
  Mailbox box(kUuText);
  box.control().Lock();
  box.message(0)->Attachments()->SetScanText(true);
  EXPECT_EQ(box.message(0)->Attachments()->Count(), 0);
}

// ---- Hostile nesting ----

std::string nested(int levels) {
  std::string mail = "From a\n";
  for (int i = 0; i < levels; ++i) {
    const std::string boundary = "b" + std::to_string(i) + "e";
    mail += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
  }
  mail += "Content-Transfer-Encoding: base64\nContent-Disposition: attachment; filename=\"deep\"\n\nQUJD\n";
  for (int i = levels; i-- > 0;) mail += "--b" + std::to_string(i) + "e--\n";
  return mail;
}

#ifndef _WIN32

/// Runs work on a thread with a stack of this size.
template <typename Work>
void run_on_stack(std::size_t size, Work work) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
  pthread_t thread;
  const auto call = [](void* argument) -> void* {
    (*static_cast<Work*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, call, &work), 0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);
}

TEST(Discovery, ten_thousand_levels_are_searched_and_let_go_within_a_stack_of_256_kilobytes) {
  Mailbox box(nested(10'000));
  box.control().Lock();
  run_on_stack(256 * 1024, [&box] {
    EXPECT_EQ(box.message(0)->Attachments()->Count(), 1);
    EXPECT_EQ(saved(*box.message(0)->Attachments()->Item(0)), "ABC");
    box.control().Unlock();
  });
}

#endif

TEST(Discovery, an_attachment_below_fifty_levels_is_found) {
  Mailbox box(nested(50));
  box.control().Lock();
  ASSERT_EQ(box.message(0)->Attachments()->Count(), 1);
  EXPECT_EQ(saved(*box.message(0)->Attachments()->Item(0)), "ABC");
}

}  // namespace
}  // namespace vellobar
