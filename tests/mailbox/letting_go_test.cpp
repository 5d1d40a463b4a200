// Which objects of messages and parts stay in memory: those that somebody holds, those that differ from what would be
// read again, and of the others the last few that were made. What is let go and made again shows no difference.
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

constexpr int kMost = static_cast<int>(mailbox::RecentMessages::kMost);

constexpr char kPlain[] = "From a\nSubject: first\n\ntext of the first\n";
constexpr char kMultipart[] =
    "From a\nSubject: first\nContent-Type: multipart/mixed; boundary=bound\n\npreamble\n--bound\n"
    "Content-Type: text/plain\n\none\n--bound\n"
    "Content-Type: image/gif; name=a.gif\nContent-Transfer-Encoding: base64\n\nR0lG\n--bound--\n";

/// A message with twice as many attachments as parts stay in memory.
std::string many_attachments() {
  std::string parts;
  for (int i = 0; i < 2 * kMost; ++i) {
    const std::string name = std::to_string(i) + ".gif";
    parts += "Content-Type: image/gif; name=" + name + "\nContent-Transfer-Encoding: base64\n\nR0lG\n--bound\n";
  }
  return "From a\nContent-Type: multipart/mixed; boundary=bound\n\n--bound\n" + parts + "\n--bound--\n";
}

std::string followed_by_many(std::string content) {
  for (int i = 0; i < kMost; ++i) content += "From b\nSubject: other\n\nx\n";
  return content;
}

/// A first message, and behind it as many others as stay in memory.
class LettingGo : public testing::Test {
 protected:
  void lock(std::string_view first) {
    mailbox_ = std::make_unique<Mailbox>(followed_by_many(std::string(first)));
    mailbox_->control().Lock();
  }
  CVellobar& control() { return mailbox_->control(); }
  std::shared_ptr<CMessage> first() { return mailbox_->message(0); }
  void read_others() {
    for (std::int64_t i = 1; i < mailbox_->count(); ++i) mailbox_->message(i)->Subject();
  }
  /// Whether the object of the first message is let go when the others are read.
  bool goes_after(const std::function<void(CMessage&)>& act) {
    std::weak_ptr<CMessage> before;
    {
      const std::shared_ptr<CMessage> message = first();
      act(*message);
      before = message;
    }
    read_others();
    return before.expired();
  }
  std::string first_written() {
    control().Update();
    return mailbox_->content().substr(0, mailbox_->content().find("From b"));
  }

  std::unique_ptr<Mailbox> mailbox_;
};

void read_all(CMessage& message) {
  message.Subject();
  message.Text();
  message.MailInfo();
  message.PlainText();
  message.Body();
  message.Headers()->Count();
  for (std::int64_t i = 0; i < message.Parts()->Count(); ++i) message.Parts()->Item(i)->Text();
  message.Attachments()->Count();
}

// ---- What is let go

TEST_F(LettingGo, a_message_that_was_only_read_goes_when_as_many_others_were_read_as_stay) {
  lock(kPlain);
  EXPECT_TRUE(goes_after(read_all));
}

TEST_F(LettingGo, a_multipart_message_goes_with_its_parts_and_attachments) {
  lock(kMultipart);
  std::weak_ptr<CMessage> part = first()->Parts()->Item(1);
  std::weak_ptr<CAttachment> attachment = first()->Attachments()->Item(0);
  EXPECT_TRUE(goes_after(read_all));
  EXPECT_TRUE(part.expired());
  EXPECT_TRUE(attachment.expired());
}

TEST_F(LettingGo, the_messages_read_last_stay) {
  lock(kPlain);
  std::weak_ptr<CMessage> before = first();
  for (int i = 1; i < kMost; ++i) mailbox_->message(i)->Subject();
  EXPECT_FALSE(before.expired());
}

TEST_F(LettingGo, a_part_goes_when_many_other_parts_were_read) {
  std::string parts;
  for (int i = 0; i <= kMost; ++i) parts += "\nx\n--bound\n";
  lock("From a\nContent-Type: multipart/mixed; boundary=bound\n\n--bound\n" + parts + "\n--bound--\n");
  const std::shared_ptr<CMessages> all = first()->Parts();
  std::weak_ptr<CMessage> part = all->Item(0);
  for (int i = 1; i <= kMost; ++i) all->Item(i)->Text();
  EXPECT_TRUE(part.expired());
  EXPECT_EQ(all->Item(0)->Text(), u"x\n");
}

TEST_F(LettingGo, many_attachments_are_found_without_keeping_their_parts) {
  lock(many_attachments());
  const std::shared_ptr<CMessage> message = first();
  const int last = 2 * kMost - 1;
  const std::weak_ptr<CMessage> part = message->Parts()->Item(last);
  EXPECT_EQ(message->Attachments()->Count(), 2 * kMost);
  read_others();
  EXPECT_TRUE(part.expired());
  const std::shared_ptr<CAttachment> attachment = message->Attachments()->Item(last);
  EXPECT_EQ(attachment->Name(), wide(std::to_string(last) + ".gif"));
  EXPECT_EQ(attachment->Type(), u"image/gif");
  EXPECT_EQ(attachment->Size(), 3);
  EXPECT_EQ(attachment->Part(), message->Parts()->Item(last));
  EXPECT_EQ(message->Attachments()->Item(last), attachment);
}

TEST_F(LettingGo, an_attachment_among_many_keeps_its_place_when_a_part_in_front_of_it_is_removed) {
  lock(many_attachments());
  const std::shared_ptr<CMessage> message = first();
  const int last = 2 * kMost - 1;
  EXPECT_EQ(message->Attachments()->Count(), 2 * kMost);
  message->Parts()->Remove(*message->Parts()->Item(0));
  EXPECT_EQ(message->Attachments()->Item(last)->Part(), message->Parts()->Item(last - 1));
  const std::shared_ptr<CMessage> removed = message->Parts()->Item(last - 1);
  message->Parts()->Remove(*removed);
  EXPECT_EQ(message->Attachments()->Item(last)->Part(), removed);
}

TEST_F(LettingGo, in_a_mailbox_of_long_messages_all_stay) {
  lock(kPlain + std::string(static_cast<std::size_t>(kMost) * mailbox::RecentMessages::kBytesForEach * 2, 'x') + "\n");
  EXPECT_FALSE(goes_after(read_all));
}

// ---- What shows no difference

TEST_F(LettingGo, a_message_made_again_reads_the_same) {
  lock(kMultipart);
  const auto shown = [&] {
    const std::shared_ptr<CMessage> message = first();
    return message->MailInfo() + message->Subject() + message->Text() + message->Body() + message->PlainText() +
           message->PartsBoundary() + message->Parts()->Item(1)->Body() + message->Attachments()->Item(0)->Name();
  };
  const std::u16string before = shown();
  ASSERT_TRUE(goes_after(read_all));
  EXPECT_EQ(shown(), before);
  EXPECT_EQ(first()->Index(), 0);
  EXPECT_EQ(first()->Size(), static_cast<std::int64_t>(sizeof kMultipart - 1));
}

TEST_F(LettingGo, a_header_put_after_the_headers_were_read_still_replaces_the_one_that_is_there) {
  lock(kPlain);
  ASSERT_TRUE(goes_after([](CMessage& message) { message.Subject(); }));
  first()->SetSubject(u"second");
  EXPECT_EQ(first_written(), "From a\r\nSubject: second\r\n\r\ntext of the first\n");
}

TEST_F(LettingGo, a_header_put_into_a_part_after_a_search_read_it_still_replaces_the_one_that_is_there) {
  lock(kMultipart);
  ASSERT_TRUE(goes_after([](CMessage& message) { message.PlainText(); }));
  const std::shared_ptr<CMessage> part = first()->Parts()->Item(0);
  part->SetContentType(u"text/html");
  EXPECT_EQ(part->Headers()->ToString(), u"Content-Type: text/html\r\n");
}

TEST_F(LettingGo, a_header_put_before_anything_was_read_still_is_a_second_one) {
  lock(kPlain);
  ASSERT_TRUE(goes_after([](CMessage&) {}));
  first()->SetSubject(u"second");
  EXPECT_EQ(first()->Headers()->Count(), 2);
}

TEST_F(LettingGo, the_boundary_is_known_after_the_text_was_read_and_not_before) {
  lock(kMultipart);
  ASSERT_TRUE(goes_after([](CMessage& message) { message.Subject(); }));
  EXPECT_EQ(first()->PartsBoundary(), u"");
  first()->Text();
  read_others();
  EXPECT_EQ(first()->PartsBoundary(), u"--bound");
}

TEST_F(LettingGo, whether_text_is_searched_for_attachments_stays_as_it_was_put) {
  lock(kPlain);
  ASSERT_TRUE(goes_after([](CMessage& message) { message.Attachments()->SetScanText(true); }));
  EXPECT_TRUE(first()->Attachments()->ScanText());
}

TEST_F(LettingGo, a_message_that_was_unloaded_still_comes_back_without_its_first_line) {
  lock(kPlain);
  ASSERT_TRUE(goes_after([](CMessage& message) { message.Unload(); }));
  EXPECT_EQ(first()->MailInfo(), u"");
  EXPECT_EQ(first()->Headers()->Count(), 1);
}

TEST_F(LettingGo, an_update_writes_messages_that_went_as_they_stood_in_the_file) {
  lock(kMultipart);
  ASSERT_TRUE(goes_after(read_all));
  EXPECT_EQ(first_written(),
            "From a\r\nSubject: first\r\nContent-Type: multipart/mixed; boundary=bound\r\n\r\npreamble\n--bound\r\n"
            "Content-Type: text/plain\r\n\r\none\n--bound\r\n"
            "Content-Type: image/gif; name=a.gif\r\nContent-Transfer-Encoding: base64\r\n\r\nR0lG\n--bound--\r\n\r\n");
}

TEST_F(LettingGo, messages_know_their_index_after_one_in_front_of_them_was_removed) {
  lock(kPlain);
  const std::shared_ptr<CMessage> held = mailbox_->message(5);
  read_others();
  control().Messages()->Remove(*first());
  read_others();
  EXPECT_EQ(held->Index(), 4);
  EXPECT_EQ(mailbox_->message(4), held);
}

// ---- What stays

TEST_F(LettingGo, a_message_that_is_held_stays_the_same_object) {
  lock(kPlain);
  const std::shared_ptr<CMessage> held = first();
  read_others();
  EXPECT_EQ(first(), held);
}

TEST_F(LettingGo, a_held_part_keeps_its_message) {
  lock(kMultipart);
  const std::shared_ptr<CMessage> held = first()->Parts()->Item(0);
  EXPECT_FALSE(goes_after(read_all));
  EXPECT_EQ(first()->Parts()->Item(0), held);
  EXPECT_EQ(held->Index(), 0);
}

TEST_F(LettingGo, a_held_collection_of_parts_keeps_its_message) {
  lock(kMultipart);
  const std::shared_ptr<CMessages> held = first()->Parts();
  EXPECT_FALSE(goes_after(read_all));
  EXPECT_EQ(first()->Parts(), held);
}

TEST_F(LettingGo, a_held_header_block_keeps_its_message) {
  lock(kPlain);
  const std::shared_ptr<CHeaders> held = first()->Headers();
  EXPECT_FALSE(goes_after(read_all));
  EXPECT_EQ(first()->Headers(), held);
}

TEST_F(LettingGo, a_held_collection_of_attachments_keeps_its_message) {
  lock(kMultipart);
  const std::shared_ptr<CAttachments> held = first()->Attachments();
  EXPECT_FALSE(goes_after(read_all));
  EXPECT_EQ(held->Count(), 1);
}

TEST_F(LettingGo, a_held_attachment_keeps_its_part) {
  lock(kMultipart);
  const std::shared_ptr<CAttachment> held = first()->Attachments()->Item(0);
  EXPECT_FALSE(goes_after(read_all));
  EXPECT_EQ(held->Part(), first()->Parts()->Item(1));
}

TEST_F(LettingGo, an_attachment_that_a_client_renamed_stays_renamed) {
  lock(kMultipart);
  EXPECT_FALSE(goes_after([](CMessage& message) { message.Attachments()->Item(0)->SetName(u"mine"); }));
  EXPECT_EQ(first()->Attachments()->Item(0)->Name(), u"mine");
}

TEST_F(LettingGo, a_tag_stays) {
  lock(kPlain);
  EXPECT_FALSE(goes_after([](CMessage& message) { message.Tag() = 7; }));
  EXPECT_EQ(std::any_cast<int>(first()->Tag()), 7);
}

TEST_F(LettingGo, a_separator_line_that_was_put_stays) {
  lock(kPlain);
  EXPECT_FALSE(goes_after([](CMessage& message) { message.SetMailInfo(u"From me"); }));
  EXPECT_EQ(first()->MailInfo(), u"From me");
  EXPECT_TRUE(first()->Changed());
}

TEST_F(LettingGo, a_header_that_was_put_stays) {
  lock(kPlain);
  EXPECT_FALSE(goes_after([](CMessage& message) {
    message.Subject();
    message.SetSubject(u"second");
  }));
  EXPECT_EQ(first()->Subject(), u"second");
}

TEST_F(LettingGo, a_header_of_a_part_that_was_put_stays) {
  lock(kMultipart);
  EXPECT_FALSE(goes_after([](CMessage& message) { message.Parts()->Item(0)->SetSubject(u"of a part"); }));
  EXPECT_EQ(first()->Parts()->Item(0)->Subject(), u"of a part");
}

TEST_F(LettingGo, a_text_that_was_put_stays) {
  lock(kPlain);
  EXPECT_FALSE(goes_after([](CMessage& message) { message.SetText(u"another text\r\n"); }));
  EXPECT_EQ(first()->Text(), u"another text\r\n");
}

TEST_F(LettingGo, parts_that_were_added_or_removed_stay_so) {
  lock(kMultipart);
  EXPECT_FALSE(goes_after([](CMessage& message) { message.Parts()->Remove(*message.Parts()->Item(0)); }));
  EXPECT_EQ(first()->Parts()->Count(), 1);
  EXPECT_FALSE(goes_after([](CMessage& message) { message.Parts()->Add()->SetText(u"added"); }));
  EXPECT_EQ(first()->Parts()->Count(), 2);
}

TEST_F(LettingGo, what_was_read_of_messages_stays_when_the_file_is_closed) {
  lock(kPlain);
  const std::shared_ptr<CMessages> messages = control().Messages();
  messages->Item(0)->Text();
  control().Unlock();
  for (int i = 1; i <= kMost; ++i) messages->Item(i)->Subject();
  EXPECT_EQ(messages->Item(0)->Text(), u"text of the first\n");
}

TEST_F(LettingGo, the_parts_of_a_message_added_to_another_mailbox_stay_all_of_them) {
  std::string parts;
  for (int i = 0; i < 2 * kMost; ++i) parts += "\nx\n--bound\n";
  lock("From a\nContent-Type: multipart/mixed; boundary=bound\n\n--bound\n" + parts + "\n--bound--\n");
  Mailbox other("");
  other.control().Lock();
  other.control().Messages()->Add(first());
  control().Unlock();
  const std::shared_ptr<CMessages> added = other.message(0)->Parts();
  EXPECT_EQ(added->Item(0)->Text(), u"x\n");
  EXPECT_EQ(added->Item(2 * kMost - 1)->Text(), u"x\n");
}

}  // namespace
}  // namespace vellobar::tests
