// Collections in a range-based for.
#include <gtest/gtest.h>

#include <ranges>
#include <string>
#include <vector>

#include "api/vellobar.h"
#include "tests/support/files.h"

namespace vellobar::tests {

namespace {

constexpr std::string_view kThreeMessages =
    "From a\nSubject: one\n\n1\n\nFrom b\nSubject: two\n\n2\n\nFrom c\nSubject: three\n\n3\n";

class Walking : public testing::Test {
 protected:
  void open(std::string_view content) {
    box_.SetFilename(wide(folder_.file("box.mbox", content)));
    box_.Lock();
  }

  TemporaryFolder folder_;
  CVellobar box_;
};

}  // namespace

TEST_F(Walking, gives_the_messages_in_their_order) {
  open(kThreeMessages);
  std::vector<std::u16string> subjects;
  for (const auto& message : box_.Messages()) subjects.push_back(message->Subject());
  EXPECT_EQ(subjects, (std::vector<std::u16string>{u"one", u"two", u"three"}));
}

TEST_F(Walking, gives_nothing_of_an_empty_collection) {
  open("");
  for (const auto& message : box_.Messages()) FAIL() << plain(message->Subject());
}

TEST_F(Walking, gives_headers_and_attachments) {
  open(
      "From a\nTo: x\nContent-Type: multipart/mixed; boundary=\"b\"\n\n--b\n\ntext\n"
      "--b\nContent-Disposition: attachment; filename=\"f.txt\"\nContent-Transfer-Encoding: 7bit\n\nfile\n--b--\n");
  std::u16string names;
  for (const auto& header : box_.Messages()->Item(0)->Headers()) names += header->Name() + u" ";
  for (const auto& attachment : box_.Messages()->Item(0)->Attachments()) names += attachment->Name() + u" ";
  EXPECT_EQ(names, u"To Content-Type f.txt ");
}

TEST_F(Walking, goes_on_over_the_collection_it_began_with_when_the_mailbox_has_another) {
  open(kThreeMessages);
  int count = 0;
  for (const auto& message : box_.Messages()) {
    if (++count == 1) box_.Update();
    EXPECT_EQ(message->Size() > 0, true);
  }
  EXPECT_EQ(count, 3);
}

TEST_F(Walking, reaches_what_was_added_and_skips_behind_what_was_removed) {
  open(kThreeMessages);
  std::vector<std::u16string> subjects;
  for (const auto& message : box_.Messages()) {
    subjects.push_back(message->Subject());
    if (subjects.size() == 1) {
      box_.Messages()->Add()->SetSubject(u"four");
      box_.Messages()->Remove(*message);
    }
  }
  EXPECT_EQ(subjects, (std::vector<std::u16string>{u"one", u"three", u"four"}));
}

TEST_F(Walking, is_what_the_range_library_asks_for) {
  static_assert(std::ranges::input_range<std::shared_ptr<CMessages>>);
  open(kThreeMessages);
  const auto messages = box_.Messages();
  EXPECT_EQ(std::ranges::distance(messages | std::views::filter([](const auto& m) { return m->Index() != 1; })), 2);
}

}  // namespace vellobar::tests
