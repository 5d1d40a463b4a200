// What the walk of an automation host over many items costs: a few objects at a time, however many there are.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "command/mail/mailbox_file.h"
#include "tests/limits/counted_memory.h"
#include "tests/support/files.h"
#include "tests/support/mailboxes.h"

namespace vellobar::tests {
namespace {

/// A few thousand objects, and what is made once in a process.
constexpr std::size_t kMemoryOfAFew = 1'000'000;

/// What the walk takes beyond what the collection held when it began.
template <typename Collection, typename See>
std::size_t memory_of_walk(Collection& collection, See see) {
  const PeakMemory peak;
  const auto snapshot = collection.snapshot();
  for (std::size_t i = 0; i < snapshot->size(); ++i) see(*(*snapshot)[i]);
  return peak.bytes();
}

TEST(WalkMemory, over_a_million_headers_is_that_of_a_few) {
  constexpr std::size_t kHeaders = 1'000'000;
  const auto headers = std::make_shared<CHeaders>();
  for (std::size_t i = 0; i < kHeaders; ++i) headers->add_line("a:b");
  std::size_t seen = 0;
  const std::size_t bytes = memory_of_walk(*headers, [&](CHeader& header) { seen += header.Value().size(); });
  EXPECT_EQ(seen, kHeaders);
  EXPECT_LT(bytes, kMemoryOfAFew);
}

std::size_t memory_of_walk_over_attachments(std::size_t count) {
  std::string mail = "From a\nContent-Type: multipart/mixed; boundary=b\n\n--b\n";
  for (std::size_t i = 0; i < count; ++i) {
    mail += "Content-Type: image/gif; name=a.gif\nContent-Transfer-Encoding: base64\n\nR0lG\n--b\n";
  }
  Mailbox box(mail + "\n--b--\n");
  box.control().Lock();
  const auto attachments = box.message(0)->Attachments();
  EXPECT_EQ(static_cast<std::size_t>(attachments->Count()), count);
  return memory_of_walk(*attachments, [](CAttachment& attachment) { attachment.Part(); });
}

TEST(WalkMemory, over_a_hundred_thousand_attachments_is_that_of_a_few) {
  EXPECT_LT(memory_of_walk_over_attachments(100'000), kMemoryOfAFew);
}

std::string message_of_parts(std::size_t count) {
  std::string mail = "From a\nContent-Type: multipart/mixed; boundary=XyZ\n\n";
  for (std::size_t i = 0; i < count; ++i) mail += "--XyZ\n\nx\n";
  return mail + "--XyZ--\n\n";
}

std::size_t walked_parts(const std::shared_ptr<CMessage>& message) {
  std::size_t seen = 0;
  for (const auto& part : message->Parts()) seen += part->Text().empty() ? 0 : 1;
  return seen;
}

TEST(WalkMemory, of_the_command_line_over_many_parts_is_that_of_a_few_and_their_table) {
  constexpr std::size_t kParts = 20'000;
  constexpr std::size_t kTableOfEach = 40;
  const TemporaryFolder folder;
  const command::MailboxFile mailbox(folder.file("mail", message_of_parts(kParts)));
  const PeakMemory peak;
  EXPECT_EQ(walked_parts(mailbox.message(0)), kParts);
  EXPECT_LT(peak.bytes(), 2 * kMemoryOfAFew + kTableOfEach * kParts);
}

TEST(WalkMemory, of_the_command_line_leaves_nothing_of_a_message_behind) {
  const TemporaryFolder folder;
  const std::string message = message_of_parts(100);
  const command::MailboxFile mailbox(folder.file("mail", message + message + message));
  EXPECT_EQ(walked_parts(mailbox.message(0)), 100u);
  const std::size_t before = allocated_bytes();
  for (const std::int64_t index : {1, 2}) EXPECT_EQ(walked_parts(mailbox.message(index)), 100u);
  EXPECT_EQ(allocated_bytes(), before);
}

}  // namespace
}  // namespace vellobar::tests
