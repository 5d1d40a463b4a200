// Parts that a client holds or changed although the messages above them were let go: they stay where they are in the
// tree, and the messages above take them up again when they are made again.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "mailbox/recent_messages.h"
#include "platform/file_system.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/mailboxes.h"

namespace vellobar::tests {
namespace {

constexpr char kNested[] =
    "From a\nContent-Type: multipart/mixed; boundary=outer\n\n--outer\n"
    "Content-Type: multipart/mixed; boundary=middle\n\n--middle\n"
    "Content-Type: multipart/mixed; boundary=inner\n\n--inner\n"
    "Content-Type: image/gif; name=a.gif\nContent-Transfer-Encoding: base64\n\nR0lG\n--inner\n"
    "Subject: second\n\nsecond text\n--inner--\n\n--middle--\n\n--outer--\n";

constexpr char kNestedWritten[] =
    "From a\r\nContent-Type: multipart/mixed; boundary=outer\r\n\r\n--outer\r\n"
    "Content-Type: multipart/mixed; boundary=middle\r\n\r\n--middle\r\n"
    "Content-Type: multipart/mixed; boundary=inner\r\n\r\n--inner\r\n"
    "Content-Type: image/gif; name=a.gif\r\nContent-Transfer-Encoding: base64\r\n\r\nR0lG\n--inner\r\n"
    "Subject: SECOND\r\n\r\nsecond text\n--inner--\r\n\r\n--middle--\r\n\r\n--outer--\r\n\r\n";

/// The deepest parts stand in two multiparts below the message, which go whenever others were read.
class DetachedParts : public testing::Test {
 protected:
  DetachedParts() { mailbox_.control().Lock(); }

  std::shared_ptr<CMessage> top() { return mailbox_.message(0); }
  std::shared_ptr<CMessage> outer() { return top()->Parts()->Item(0); }
  std::shared_ptr<CMessage> middle() { return outer()->Parts()->Item(0); }
  /// Read, so that a header that is put replaces the one that is there.
  std::shared_ptr<CMessage> deepest(std::int64_t index = 1) {
    std::shared_ptr<CMessage> part = middle()->Parts()->Item(index);
    part->Headers();
    return part;
  }

  /// Locks again, and from then on lets go of all but the last two.
  void keep_few() {
    mailbox_.control().Unlock();
    few_ = std::make_unique<mailbox::FewRecentMessages>(2);
    mailbox_.control().Lock();
  }
  void read_others() {
    for (std::int64_t i = 1; i < mailbox_.count(); ++i) mailbox_.message(i)->Subject();
  }
  /// Reads others, and makes sure that what is above the deepest parts went.
  void let_go_above() {
    const std::weak_ptr<CMessage> first = outer(), second = middle();
    read_others();
    ASSERT_TRUE(first.expired() && second.expired());
  }
  void change_deep_down() {
    deepest()->SetSubject(u"put");
    let_go_above();
  }
  void remove_deep_down() {
    middle()->Parts()->Remove(*deepest());
    let_go_above();
  }
  void expect_removed() {
    EXPECT_EQ(middle()->Parts()->Count(), 1);
    EXPECT_EQ(written().find("second text"), std::string::npos);
  }
  std::string written() {
    mailbox_.control().Update();
    return mailbox_.content().substr(0, mailbox_.content().find("From b"));
  }

  static constexpr int kOthers = static_cast<int>(mailbox::RecentMessages::kMost) + 1;
  static std::string content() {
    std::string content = kNested;
    for (int i = 0; i < kOthers; ++i) content += "From b\nSubject: other\n\nx\n";
    return content;
  }

  std::unique_ptr<mailbox::FewRecentMessages> few_;
  Mailbox mailbox_{content()};
};

std::string with_subject(std::string_view subject) {
  std::string written = kNestedWritten;
  return written.replace(written.find("SECOND"), 6, subject);
}

TEST_F(DetachedParts, a_held_part_does_not_keep_the_parts_above_it_and_is_found_below_them_again) {
  const std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  EXPECT_EQ(held->Index(), 1);
  EXPECT_EQ(held->Text(), u"second text\n");
  EXPECT_EQ(deepest(), held);
  EXPECT_EQ(deepest(0)->Text(), u"R0lG\n");
}

TEST_F(DetachedParts, a_part_that_was_changed_stays_changed_when_nobody_holds_anything) {
  deepest()->SetSubject(u"put");
  let_go_above();
  EXPECT_EQ(deepest()->Subject(), u"put");
}

TEST_F(DetachedParts, what_was_changed_below_messages_that_went_is_written) {
  deepest()->SetSubject(u"put");
  let_go_above();
  EXPECT_EQ(written(), with_subject("put"));
}

TEST_F(DetachedParts, what_a_held_part_is_changed_to_after_the_messages_above_went_is_written) {
  const std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  held->SetSubject(u"put");
  EXPECT_EQ(written(), with_subject("put"));
  EXPECT_EQ(held->Text(), u"second text\n");
}

TEST_F(DetachedParts, a_header_block_whose_part_nobody_holds_is_changed_and_written) {
  const std::shared_ptr<CHeaders> headers = deepest()->Headers();
  let_go_above();
  headers->Item(u"Subject")->SetValue(u"put");
  EXPECT_EQ(written(), with_subject("put"));
}

TEST_F(DetachedParts, parts_added_to_a_collection_deep_down_are_written_after_the_messages_above_went) {
  middle()->Parts()->Add()->SetText(u"added\r\n");
  EXPECT_EQ(deepest(2)->Text(), u"added\r\n");
  const std::weak_ptr<CMessage> first = outer();
  read_others();
  EXPECT_TRUE(first.expired());
  EXPECT_NE(written().find("second text\n--inner\r\n\r\nadded\r\n--inner--\r\n"), std::string::npos);
}

TEST_F(DetachedParts, a_removed_part_is_not_there_again) {
  middle()->Parts()->Remove(*deepest(1));
  read_others();
  EXPECT_EQ(middle()->Parts()->Count(), 1);
  EXPECT_EQ(written().find("second text"), std::string::npos);
}

TEST_F(DetachedParts, the_whole_text_of_a_message_says_what_was_changed_below) {
  deepest()->SetSubject(u"put");
  let_go_above();
  EXPECT_NE(top()->Body().find(u"Subject: put\r\n"), std::u16string::npos);
}

TEST_F(DetachedParts, a_message_is_saved_with_what_was_changed_below) {
  deepest()->SetSubject(u"put");
  let_go_above();
  top()->Save(wide(mailbox_.path() + ".saved"));
  const std::string saved = read_file(mailbox_.path() + ".saved");
  EXPECT_NE(saved.find("Subject: put\r\n"), std::string::npos);
}

TEST_F(DetachedParts, a_held_part_is_saved_as_a_part) {
  const std::shared_ptr<CMessage> held = deepest();
  held->SetMailInfo(u"From put");
  let_go_above();
  held->Save(wide(mailbox_.path() + ".saved"));
  EXPECT_EQ(read_file(mailbox_.path() + ".saved"), "Subject: second\r\n\r\nsecond text\n");
}

TEST_F(DetachedParts, unloading_a_message_forgets_what_was_changed_below) {
  deepest()->SetSubject(u"put");
  let_go_above();
  outer()->Unload();
  EXPECT_EQ(deepest()->Subject(), u"second");
}

TEST_F(DetachedParts, a_held_part_reads_on_when_a_message_above_it_is_unloaded) {
  const std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  outer()->Unload();
  EXPECT_EQ(held->Text(), u"second text\n");
  EXPECT_THROW(held->Index(), Error);
  EXPECT_NE(deepest(), held);
}

TEST_F(DetachedParts, a_message_goes_when_nothing_below_it_is_wanted_any_longer) {
  std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  const std::weak_ptr<CMessage> message = top(), part = held;
  held.reset();
  // Made again, they are the ones read last.
  deepest(0);
  read_others();
  read_others();
  EXPECT_TRUE(part.expired());
}

TEST_F(DetachedParts, a_held_part_keeps_its_message) {
  const std::shared_ptr<CMessage> held = deepest();
  const std::weak_ptr<CMessage> message = top();
  let_go_above();
  EXPECT_FALSE(message.expired());
}

TEST_F(DetachedParts, a_changed_part_keeps_its_message) {
  deepest()->SetSubject(u"put");
  const std::weak_ptr<CMessage> message = top();
  let_go_above();
  EXPECT_FALSE(message.expired());
}

TEST_F(DetachedParts, attachments_deep_down_know_their_part) {
  const std::shared_ptr<CAttachments> attachments = top()->Attachments();
  ASSERT_EQ(attachments->Count(), 1);
  const std::weak_ptr<CMessage> first = outer();
  read_others();
  EXPECT_TRUE(first.expired());
  EXPECT_EQ(attachments->Item(0)->Part(), deepest(0));
}

TEST_F(DetachedParts, a_message_cannot_become_a_part_of_what_is_below_it) {
  const std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  EXPECT_THROW(held->Parts()->Add(top()), Error);
}

TEST_F(DetachedParts, a_held_part_reads_as_empty_once_the_mailbox_is_unlocked) {
  const std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  mailbox_.control().Unlock();
  EXPECT_EQ(held->Text(), u"");
}

TEST_F(DetachedParts, a_held_part_reads_on_after_an_update) {
  const std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  mailbox_.control().Update();
  EXPECT_EQ(held->Text(), u"second text\n");
}

// ---- A collection that was edited, without an object in it

/// The first change of the disk by which an update writes mail.
std::int64_t first_write_of(std::string_view content) {
  Mailbox mailbox(content);
  mailbox.control().Lock();
  FaultyFileSystem faultless;
  const platform::FixedFileSystem fixed(faultless);
  mailbox.control().Update();
  return faultless.writes().front();
}

TEST_F(DetachedParts, a_removed_part_is_not_there_again_after_the_whole_text_was_read) {
  remove_deep_down();
  top()->Body();
  expect_removed();
}

TEST_F(DetachedParts, a_removed_part_is_not_there_again_after_its_message_was_saved) {
  keep_few();
  remove_deep_down();
  top()->Save(wide(mailbox_.path() + ".saved"));
  read_others();
  expect_removed();
}

TEST_F(DetachedParts, a_removed_part_is_not_there_again_after_an_update_failed) {
  remove_deep_down();
  {
    FaultyFileSystem disk(Fault::fails, first_write_of(content()));
    const platform::FixedFileSystem fixed(disk);
    expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { mailbox_.control().Update(); });
  }
  expect_removed();
}

TEST_F(DetachedParts, a_removed_part_is_not_written_by_an_update_that_has_no_room_where_it_writes_first) {
  remove_deep_down();
  FaultyFileSystem full(Fault::fails, first_write_of(content()), std::make_error_code(std::errc::no_space_on_device));
  const platform::FixedFileSystem fixed(full);
  EXPECT_EQ(written().find("second text"), std::string::npos);
}

TEST_F(DetachedParts, many_attachments_in_several_collections_keep_their_parts) {
  constexpr int kMany = static_cast<int>(mailbox::RecentMessages::kMost);
  const auto multipart = [](const std::string& bound, const std::string& parts) {
    return "Content-Type: multipart/mixed; boundary=" + bound + "\n\n" + parts + "--" + bound + "--\n\n";
  };
  const auto files = [](const std::string& bound, int count) {
    std::string parts;
    for (int i = 0; i < count; ++i) {
      parts += "--" + bound + "\nContent-Type: image/gif; name=a.gif\nContent-Transfer-Encoding: base64\n\nR0lG\n";
    }
    return parts;
  };
  Mailbox mailbox("From a\n" +
                  multipart("both", "--both\n" + multipart("many", files("many", kMany)) + "--both\n" +
                                        multipart("few", files("few", 3))) +
                  content());
  mailbox.control().Lock();
  const std::shared_ptr<CAttachments> attachments = mailbox.message(0)->Attachments();
  ASSERT_EQ(attachments->Count(), kMany + 3);
  for (std::int64_t i = 1; i < mailbox.count(); ++i) mailbox.message(i)->Subject();
  mailbox.message(0)->Body();
  const std::shared_ptr<CMessage> part = attachments->Item(kMany + 1)->Part();
  ASSERT_NE(part, nullptr);
  EXPECT_EQ(part, mailbox.message(0)->Parts()->Item(1)->Parts()->Item(1));
}

// ---- Objects of one place from before and after an Unload

TEST_F(DetachedParts, a_part_from_before_an_unload_does_not_take_what_was_changed_after_it) {
  const std::shared_ptr<CMessage> before = middle();
  outer()->Unload();
  deepest()->SetSubject(u"put");
  read_others();
  EXPECT_EQ(before->Parts()->Count(), 2);
  EXPECT_EQ(before->Parts()->Item(1)->Subject(), u"second");
  EXPECT_EQ(deepest()->Subject(), u"put");
  EXPECT_NE(written().find("Subject: put\r\n"), std::string::npos);
}

/// A part four deep, and its grandparent from before an Unload with the collection that it had then.
class PartsFromBefore : public testing::Test {
 protected:
  PartsFromBefore() {
    mailbox_.control().Lock();
    top_ = mailbox_.message(0);
    before_ = down(down(top_));
    before_->Parts();
    down(top_)->Unload();
  }

  static std::shared_ptr<CMessage> down(const std::shared_ptr<CMessage>& message) { return message->Parts()->Item(0); }
  static std::shared_ptr<CMessage> deepest_of(const std::shared_ptr<CMessage>& grandparent) {
    std::shared_ptr<CMessage> part = down(down(grandparent));
    part->Headers();
    return part;
  }
  void read_others() {
    for (std::int64_t i = 1; i < mailbox_.count(); ++i) mailbox_.message(i)->Subject();
  }

  static std::string content() {
    std::string content = "Subject: deepest\n\ntext\n";
    for (const std::string bound : {"fourth", "third", "second", "first"}) {
      content.insert(0, "Content-Type: multipart/mixed; boundary=" + bound + "\n\n--" + bound + "\n");
      content += "--" + bound + "--\n\n";
    }
    content.insert(0, "From a\n");
    for (int i = 0; i < 10; ++i) content += "From b\nSubject: other\n\nx\n";
    return content;
  }

  const mailbox::FewRecentMessages few_{8};
  Mailbox mailbox_{content()};
  std::shared_ptr<CMessage> top_, before_;
};

TEST_F(PartsFromBefore, what_is_changed_below_them_is_not_in_the_mailbox) {
  deepest_of(before_)->SetSubject(u"put");
  read_others();
  EXPECT_EQ(deepest_of(down(down(top_)))->Subject(), u"deepest");
  EXPECT_EQ(deepest_of(before_)->Subject(), u"put");
  mailbox_.control().Update();
  EXPECT_EQ(mailbox_.content().find("put"), std::string::npos);
}

TEST_F(PartsFromBefore, what_is_changed_below_them_stays_when_the_parts_of_now_are_unloaded) {
  deepest_of(before_)->SetSubject(u"put");
  read_others();
  down(top_)->Unload();
  EXPECT_EQ(deepest_of(before_)->Subject(), u"put");
}

TEST_F(PartsFromBefore, what_is_changed_below_them_stays_when_the_client_drops_what_is_above) {
  std::shared_ptr<CMessage> dropped = down(top_);
  top_->Unload();
  dropped->Unload();
  const std::shared_ptr<CMessage> held = down(dropped);
  deepest_of(held)->SetSubject(u"put");
  read_others();
  dropped.reset();
  EXPECT_EQ(deepest_of(held)->Subject(), u"put");
}

TEST_F(PartsFromBefore, the_message_of_now_can_be_added_below_them) {
  const std::shared_ptr<CMessage> held = deepest_of(before_);
  read_others();
  held->Parts()->Add(down(top_));
  EXPECT_EQ(held->Parts()->Count(), 1);
}

TEST_F(DetachedParts, an_attachment_from_before_an_unload_knows_its_part) {
  const std::shared_ptr<CMessages> parts = middle()->Parts();
  const std::shared_ptr<CAttachment> attachment = middle()->Attachments()->Item(0);
  outer()->Unload();
  read_others();
  read_others();
  EXPECT_EQ(attachment->Part(), parts->Item(0));
}

// ---- What lives longer than the message

TEST_F(DetachedParts, a_held_part_keeps_what_was_changed_below_it_when_its_message_is_unloaded) {
  change_deep_down();
  const std::shared_ptr<CMessage> held = middle();
  top()->Unload();
  EXPECT_EQ(held->Parts()->Item(1)->Subject(), u"put");
  EXPECT_EQ(deepest()->Subject(), u"second");
}

TEST_F(DetachedParts, a_held_part_keeps_what_was_changed_below_it_when_its_message_gets_another_text) {
  change_deep_down();
  const std::shared_ptr<CMessage> held = middle();
  top()->SetBody(u"Subject: other\r\n\r\nx\r\n");
  EXPECT_EQ(held->Parts()->Item(1)->Subject(), u"put");
}

TEST_F(DetachedParts, a_held_part_keeps_what_was_changed_below_it_when_the_mailbox_is_unlocked) {
  change_deep_down();
  const std::shared_ptr<CMessage> held = middle();
  mailbox_.control().Unlock();
  EXPECT_EQ(held->Parts()->Item(1)->Subject(), u"put");
}

TEST_F(DetachedParts, a_part_of_a_removed_message_is_added_with_what_was_changed_below_it) {
  change_deep_down();
  const std::shared_ptr<CMessage> held = middle();
  mailbox_.control().Messages()->Remove(*top());
  mailbox_.control().Messages()->Add(held);
  mailbox_.control().Update();
  EXPECT_NE(mailbox_.content().find("Subject: put\r\n"), std::string::npos);
}

TEST_F(DetachedParts, a_held_collection_keeps_what_was_changed_below_it_when_its_message_is_removed) {
  change_deep_down();
  const std::shared_ptr<CMessages> parts = outer()->Parts();
  mailbox_.control().Messages()->Remove(*top());
  EXPECT_EQ(parts->Item(0)->Parts()->Item(1)->Subject(), u"put");
}

TEST_F(DetachedParts, a_removed_part_keeps_what_was_changed_below_it_over_an_update) {
  change_deep_down();
  const std::shared_ptr<CMessage> removed = outer();
  top()->Parts()->Remove(*removed);
  mailbox_.control().Update();
  EXPECT_EQ(removed->Parts()->Item(0)->Parts()->Item(1)->Subject(), u"put");
}

TEST_F(DetachedParts, a_part_in_another_mailbox_is_written_with_what_was_changed_below_it_after_an_unload) {
  Mailbox other("From o\n\nx\n");
  other.control().Lock();
  {
    const std::shared_ptr<CMessage> added = outer();
    other.control().Messages()->Add(added);
    added->Unload();
    const std::shared_ptr<CMessage> part = added->Parts()->Item(0)->Parts()->Item(1);
    part->Headers();
    part->SetSubject(u"put");
  }
  read_others();
  mailbox_.control().Messages()->Remove(*top());
  other.control().Update();
  EXPECT_NE(other.content().find("Subject: put\r\n"), std::string::npos);
}

// ---- Held parts whose messages are removed

TEST_F(DetachedParts, a_held_part_has_no_place_when_a_message_above_it_is_removed) {
  const std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  outer()->Parts()->Remove(*middle());
  EXPECT_THROW(held->Index(), Error);
}

TEST_F(DetachedParts, a_held_part_has_no_place_when_all_messages_above_it_are_removed) {
  const std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  outer()->Parts()->RemoveAll();
  EXPECT_THROW(held->Index(), Error);
}

TEST_F(DetachedParts, a_held_part_is_saved_with_its_separator_line_when_a_message_above_it_is_removed) {
  const std::shared_ptr<CMessage> held = deepest();
  held->SetMailInfo(u"From put");
  let_go_above();
  outer()->Parts()->Remove(*middle());
  held->Save(wide(mailbox_.path() + ".saved"));
  EXPECT_EQ(read_file(mailbox_.path() + ".saved"), "From put\r\nSubject: second\r\n\r\nsecond text\n");
}

TEST_F(DetachedParts, a_message_can_become_a_part_of_what_was_removed_from_it) {
  const std::shared_ptr<CMessage> held = deepest();
  let_go_above();
  outer()->Parts()->Remove(*middle());
  held->Parts()->Add(top());
  EXPECT_EQ(held->Parts()->Count(), 1);
}

TEST_F(DetachedParts, a_message_cannot_become_a_part_of_what_is_below_it_in_another_mailbox) {
  Mailbox other("From o\n\nx\n");
  other.control().Lock();
  const std::shared_ptr<CMessage> added = outer();
  other.message(0)->Parts()->Add(added);
  added->Unload();
  const std::shared_ptr<CMessage> held = added->Parts()->Item(0)->Parts()->Item(1);
  read_others();
  expect_status(Status::invalid_argument, [&] { held->Parts()->Add(other.message(0)); });
}

// ---- What was put or read before

TEST_F(DetachedParts, an_unloaded_part_stays_without_its_first_line) {
  deepest()->Unload();
  read_others();
  read_others();
  EXPECT_EQ(deepest()->MailInfo(), u"");
}

TEST_F(DetachedParts, a_part_whose_text_is_scanned_for_attachments_stays_so) {
  deepest()->Attachments()->SetScanText(true);
  read_others();
  read_others();
  EXPECT_TRUE(deepest()->Attachments()->ScanText());
}

TEST_F(DetachedParts, a_text_that_is_put_stands_in_front_of_what_was_changed_below) {
  change_deep_down();
  top()->Body();
  middle()->SetText(u"new\r\n");
  const std::string text = written();
  EXPECT_NE(text.find("boundary=inner\r\n\r\nnew\r\n--inner\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("Subject: put\r\n"), std::string::npos) << text;
}

TEST_F(DetachedParts, a_header_is_appended_to_a_part_that_was_never_read_beside_a_held_one) {
  const std::shared_ptr<CMessage> held = middle()->Parts()->Item(1);
  let_go_above();
  middle()->Parts()->Item(0)->SetContentType(u"x/y");
  EXPECT_EQ(middle()->Parts()->Item(0)->Headers()->Count(), 3);
}

TEST_F(DetachedParts, what_was_changed_below_a_message_that_could_not_be_read_for_a_while_is_written) {
  change_deep_down();
  const std::shared_ptr<CMessage> held = middle();
  FaultyFileSystem disk;
  const platform::FixedFileSystem fixed(disk);
  disk.fail_reads_from(0);
  held->Load();
  disk.fail_reads_from(std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(written(), with_subject("put"));
}

TEST_F(DetachedParts, what_was_changed_deep_below_a_message_that_could_not_be_read_for_a_while_goes_with_it) {
  change_deep_down();
  const std::shared_ptr<CMessage> held = outer();
  FaultyFileSystem disk;
  const platform::FixedFileSystem fixed(disk);
  disk.fail_reads_from(0);
  held->Load();
  disk.fail_reads_from(std::numeric_limits<std::int64_t>::max());
  mailbox_.control().Messages()->Remove(*top());
  mailbox_.control().Messages()->Add(held);
  mailbox_.control().Update();
  EXPECT_NE(mailbox_.content().find("Subject: put\r\n"), std::string::npos);
}

}  // namespace
}  // namespace vellobar::tests
