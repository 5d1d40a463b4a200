// Parts that a client holds or changed although the messages above them were let go: they stay where they are in the
// tree, and the messages above take them up again when they are made again.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "mailbox/recent_messages.h"
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

  void read_others() {
    for (std::int64_t i = 1; i < mailbox_.count(); ++i) mailbox_.message(i)->Subject();
  }
  /// Reads others, and makes sure that what is above the deepest parts went.
  void let_go_above() {
    const std::weak_ptr<CMessage> first = outer(), second = middle();
    read_others();
    ASSERT_TRUE(first.expired() && second.expired());
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

}  // namespace
}  // namespace vellobar::tests
