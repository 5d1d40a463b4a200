// What the walk of an automation host over many items costs: a few objects at a time, however many there are.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "tests/limits/counted_memory.h"
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

}  // namespace
}  // namespace vellobar::tests
