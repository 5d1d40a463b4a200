// The walk of an automation host: over the items that there were at its start, whatever becomes of the collection.
#include "mailbox/snapshot.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "mailbox/recent_messages.h"
#include "tests/support/mailboxes.h"

namespace vellobar::tests {
namespace {

using Messages = mailbox::Snapshot<CMessages, CMessage>;
using Headers = mailbox::Snapshot<CHeaders, CHeader>;
using Attachments = mailbox::Snapshot<CAttachments, CAttachment>;

std::string numbered_messages(std::size_t count) {
  std::string content;
  for (std::size_t i = 0; i < count; ++i) {
    content += "From a\nSubject: " + std::to_string(i) + "\n\nx\n";
  }
  return content;
}

std::u16string subjects(const Messages& messages) {
  std::u16string text;
  for (std::size_t i = 0; i < messages.size(); ++i) text += messages[i]->Subject() + u" ";
  return text;
}

TEST(MessageSnapshot, is_of_the_messages_there_were_whatever_changes) {
  const std::vector<std::function<void(CMessages&)>> changes{
      [](CMessages& messages) { messages.Add(); },
      [](CMessages& messages) { messages.Add(messages.Item(2)); },
      [](CMessages& messages) { messages.append_empty(); },
      [](CMessages& messages) { messages.Remove(*messages.Item(0)); },
      [](CMessages& messages) { messages.RemoveAll(); },
  };
  for (const auto& change : changes) {
    Mailbox box(numbered_messages(3));
    box.control().Lock();
    const auto before = box.control().Messages()->snapshot();
    const std::shared_ptr<CMessage> second = box.message(1);
    change(*box.control().Messages());
    const auto behind = box.control().Messages()->snapshot();
    EXPECT_EQ(subjects(*before), u"0 1 2 ");
    EXPECT_EQ((*before)[1], second) << "the very message";
    EXPECT_EQ(behind->size(), static_cast<std::size_t>(box.count()));
  }
}

TEST(MessageSnapshot, keeps_its_messages_readable_after_an_update_gave_the_mailbox_others) {
  Mailbox box(numbered_messages(3));
  box.control().Lock();
  const auto before = box.control().Messages()->snapshot();
  box.control().Update();
  EXPECT_EQ(subjects(*before), u"0 1 2 ");
  EXPECT_EQ((*before)[2]->Text(), u"x\n");
}

TEST(MessageSnapshot, is_of_the_parts_there_were_when_their_message_is_read_anew) {
  Mailbox box(
      "From a\nContent-Type: multipart/mixed; boundary=bound\n\n--bound\nSubject: one\n\n1\n--bound\n"
      "Subject: two\n\n2\n--bound--\n");
  box.control().Lock();
  const std::shared_ptr<CMessage> message = box.message(0);
  const auto before = message->Parts()->snapshot();
  message->Unload();
  EXPECT_EQ(message->Parts()->Count(), 2);
  EXPECT_EQ(subjects(*before), u"one two ");
}

TEST(MessageSnapshot, outlives_its_mailbox) {
  std::shared_ptr<Messages> snapshot;
  {
    Mailbox box(numbered_messages(3));
    box.control().Lock();
    box.message(1)->Subject();
    snapshot = box.control().Messages()->snapshot();
  }
  EXPECT_EQ(subjects(*snapshot), u" 1  ") << "with what was read before";
}

TEST(MessageSnapshot, holds_no_message_while_the_collection_stays_as_it_is) {
  Mailbox box(numbered_messages(2 * mailbox::RecentMessages::kMost));
  box.control().Lock();
  const auto snapshot = box.control().Messages()->snapshot();
  const std::weak_ptr<CMessage> first = (*snapshot)[0];
  subjects(*snapshot);
  EXPECT_TRUE(first.expired());
  EXPECT_EQ((*snapshot)[0]->Subject(), u"0") << "and is read again";
}

// ---- Headers

constexpr char kThreeHeaders[] = "From a\nSubject: x\nContent-Type: text/plain\nX: 1\n\nbody\n";

std::u16string lines(const Headers& headers) {
  std::u16string text;
  for (std::size_t i = 0; i < headers.size(); ++i) text += headers[i]->Name() + u"=" + headers[i]->Value() + u" ";
  return text;
}

TEST(HeaderSnapshot, is_of_the_headers_there_were_whatever_changes) {
  const std::vector<std::function<void(CMessage&)>> changes{
      [](CMessage& message) { message.Headers()->Add(u"Y", u"2"); },
      [](CMessage& message) { message.Headers()->FromString(u"Y: 2\r\nZ: 3\r\n"); },
      [](CMessage& message) { message.Headers()->FromString(u"Y: 2\r\r\n"); },
      [](CMessage& message) { message.Headers()->Remove(0); },
      [](CMessage& message) { message.Headers()->Remove(u"x"); },
      [](CMessage& message) { message.Headers()->Remove(*message.Headers()->Item(1)); },
      [](CMessage& message) { message.Headers()->RemoveAll(); },
      [](CMessage& message) { message.SetCC(u"c@example.org"); },
      [](CMessage& message) { message.SetSubject(u""); },
      [](CMessage& message) { message.Parts()->Add(); },
      [](CMessage& message) { message.Unload(); },
  };
  for (std::size_t i = 0; i < changes.size(); ++i) {
    Mailbox box(kThreeHeaders);
    box.control().Lock();
    const std::shared_ptr<CMessage> message = box.message(0);
    const auto before = message->Headers()->snapshot();
    const std::shared_ptr<CHeader> second = message->Headers()->Item(1);
    changes[i](*message);
    const auto behind = message->Headers()->snapshot();
    EXPECT_EQ(lines(*before), u"Subject=x Content-Type=text/plain X=1 ") << i;
    EXPECT_EQ((*before)[1], second) << i << ": the very header";
    EXPECT_EQ(behind->size(), static_cast<std::size_t>(message->Headers()->Count())) << i;
  }
}

TEST(HeaderSnapshot, shows_what_was_put_into_a_header_meanwhile) {
  Mailbox box(kThreeHeaders);
  box.control().Lock();
  const auto headers = box.message(0)->Headers();
  const auto snapshot = headers->snapshot();
  headers->Item(2)->SetValue(u"2");
  box.message(0)->SetSubject(u"y");
  headers->Remove(1);
  EXPECT_EQ(lines(*snapshot), u"Subject=y Content-Type=text/plain X=2 ");
}

TEST(HeaderSnapshot, outlives_its_mailbox) {
  std::shared_ptr<Headers> snapshot;
  {
    Mailbox box(kThreeHeaders);
    box.control().Lock();
    snapshot = box.message(0)->Headers()->snapshot();
  }
  EXPECT_EQ(lines(*snapshot), u"Subject=x Content-Type=text/plain X=1 ");
}

TEST(HeaderSnapshot, holds_no_header_while_the_collection_stays_as_it_is) {
  Mailbox box(kThreeHeaders);
  box.control().Lock();
  const auto snapshot = box.message(0)->Headers()->snapshot();
  const std::weak_ptr<CHeader> first = (*snapshot)[0];
  EXPECT_TRUE(first.expired());
  EXPECT_EQ((*snapshot)[0]->Value(), u"x") << "and is made again";
}

// ---- Attachments

constexpr std::size_t kFew = mailbox::RecentMessages::kMost;

std::string numbered_attachments(std::size_t count) {
  std::string parts;
  for (std::size_t i = 0; i < count; ++i) {
    parts +=
        "Content-Type: image/gif; name=" + std::to_string(i) + "\nContent-Transfer-Encoding: base64\n\nR0lG\n--b\n";
  }
  return "From a\nContent-Type: multipart/mixed; boundary=b\n\n--b\n" + parts + "\n--b--\n";
}

/// Of the first ones.
void expect_numbered(const Attachments& attachments, std::size_t count) {
  ASSERT_GE(attachments.size(), count);
  for (std::size_t i = 0; i < count; ++i) {
    ASSERT_EQ(attachments[i]->Name(), wide(std::to_string(i)));
    ASSERT_EQ(attachments[i]->Size(), 3);
  }
}

TEST(AttachmentSnapshot, is_of_those_that_were_found_also_when_their_message_lets_them_go) {
  for (const std::size_t count : {std::size_t{3}, 2 * kFew}) {
    Mailbox box(numbered_attachments(count));
    box.control().Lock();
    const std::shared_ptr<CMessage> message = box.message(0);
    const auto snapshot = message->Attachments()->snapshot();
    message->Unload();
    EXPECT_EQ(snapshot->size(), count);
    expect_numbered(*snapshot, count);
    EXPECT_EQ((*snapshot)[count - 1]->Part(), nullptr);
  }
}

TEST(AttachmentSnapshot, is_of_those_that_were_found_when_others_are_added) {
  Mailbox box(numbered_attachments(3));
  box.control().Lock();
  const auto snapshot = box.message(0)->Attachments()->snapshot();
  box.message(0)->Attachments()->Add(wide(box.path()));
  EXPECT_EQ(snapshot->size(), 3u);
  expect_numbered(*snapshot, 3);
}

TEST(AttachmentSnapshot, outlives_its_mailbox) {
  std::shared_ptr<Attachments> snapshot;
  {
    Mailbox box(numbered_attachments(3));
    box.control().Lock();
    snapshot = box.message(0)->Attachments()->snapshot();
  }
  expect_numbered(*snapshot, 3);
}

TEST(AttachmentSnapshot, of_a_collection_without_a_message_is_a_plain_failure) {
  const auto attachments = std::make_shared<CAttachments>();
  expect_status(Status::fail, [&] { attachments->snapshot(); });
}

TEST(AttachmentSnapshot, of_many_holds_few_objects_and_those_of_a_client) {
  Mailbox box(numbered_attachments(4 * kFew));
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  const auto snapshot = attachments->snapshot();
  const std::size_t asked_for = 2 * kFew;
  const std::shared_ptr<CAttachment> held = (*snapshot)[asked_for];
  const std::weak_ptr<CAttachment> let_go = (*snapshot)[asked_for + 1];
  const std::weak_ptr<CMessage> part = (*snapshot)[asked_for + 1]->Part();
  (*snapshot)[asked_for + 2]->SetName(u"put");
  expect_numbered(*snapshot, asked_for);
  for (std::size_t i = 0; i < snapshot->size(); ++i) (*snapshot)[i]->Part();
  EXPECT_EQ((*snapshot)[asked_for], held);
  EXPECT_TRUE(let_go.expired());
  EXPECT_TRUE(part.expired());
  EXPECT_EQ((*snapshot)[asked_for + 1]->Name(), wide(std::to_string(asked_for + 1))) << "and is made again";
  EXPECT_EQ((*snapshot)[asked_for + 1]->Part(), box.message(0)->Parts()->Item(static_cast<int>(asked_for) + 1));
  EXPECT_EQ((*snapshot)[asked_for + 2]->Name(), u"put");
}

TEST(AttachmentSnapshot, keeps_what_was_read_when_the_mailbox_is_unlocked) {
  Mailbox box(numbered_attachments(4 * kFew));
  box.control().Lock();
  const auto snapshot = box.message(0)->Attachments()->snapshot();
  expect_numbered(*snapshot, 3 * kFew);
  const std::size_t last_read = 3 * kFew - 1;
  box.control().Unlock();
  for (std::size_t i = 3 * kFew; i < 4 * kFew; ++i) (*snapshot)[i]->Name();
  EXPECT_EQ((*snapshot)[last_read]->Name(), wide(std::to_string(last_read)));
}

}  // namespace
}  // namespace vellobar::tests
