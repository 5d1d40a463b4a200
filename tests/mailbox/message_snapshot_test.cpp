// The walk of an automation host: over the messages that there were at its start, whatever becomes of the collection.
#include "mailbox/message_snapshot.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "mailbox/recent_messages.h"
#include "tests/support/mailboxes.h"

namespace vellobar::tests {
namespace {

std::string numbered_messages(std::size_t count) {
  std::string content;
  for (std::size_t i = 0; i < count; ++i) {
    content += "From a\nSubject: " + std::to_string(i) + "\n\nx\n";
  }
  return content;
}

std::u16string subjects(const mailbox::MessageSnapshot& messages) {
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
  std::shared_ptr<mailbox::MessageSnapshot> snapshot;
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

}  // namespace
}  // namespace vellobar::tests
