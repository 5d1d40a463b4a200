// UU blocks in text by the thousand: each has a temporary file of its own, and few of these are open at a time.
#include <gtest/gtest.h>

#ifdef __linux__
#include <sys/resource.h>
#endif

#include <filesystem>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "attachments/block_source.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::Mailbox;
using tests::wide;

std::string mail_of_blocks(int count) {
  std::string mail = "From a\n\n";
  for (int i = 0; i < count; ++i) mail += "begin 644 f" + std::to_string(i) + "\n#04)#\nend\n\n";
  return mail;
}

/// A locked mailbox of one message whose text holds so many blocks, with a temporary folder of its own.
class ManyBlocks {
 public:
  explicit ManyBlocks(int count) : box_(mail_of_blocks(count)) {
    box_.control().Lock();
    box_.message(0)->Attachments()->SetScanText(true);
  }

  CAttachments& attachments() { return *box_.message(0)->Attachments(); }
  CAttachment& attachment(std::int64_t index) { return *attachments().Item(index); }
  std::string saved(std::int64_t index) {
    attachment(index).Save(wide(saved_.path("out")));
    return tests::read_file(saved_.path("out"));
  }
  const tests::TemporaryFolder& temporary() const { return temporary_; }
  const tests::TemporaryFolder& saved_files() const { return saved_; }
  Mailbox& box() { return box_; }

 private:
  tests::TemporaryFolder saved_;
  tests::TemporaryFolder temporary_;
  platform::FixedTemporaryFolder fixed_{temporary_.path("")};
  Mailbox box_;
};

TEST(BlockSource, three_thousand_blocks_are_found_and_saved_each_from_a_file_of_its_own) {
  ManyBlocks mail(3000);
  ASSERT_EQ(mail.attachments().Count(), 3000);
  EXPECT_EQ(mail.temporary().names().size(), 3000u);
  EXPECT_EQ(mail.attachment(2999).Name(), u"f2999");
  for (const std::int64_t i : {0, 63, 64, 65, 1500, 2999}) EXPECT_EQ(mail.saved(i), "ABC") << i;
}

TEST(BlockSource, blocks_that_are_not_kept_open_say_the_same_as_those_that_are) {
  ManyBlocks mail(attachments::kBlockFilesKeptOpen + 1);
  ASSERT_EQ(mail.attachments().Count(), attachments::kBlockFilesKeptOpen + 1);
  std::error_code ignored;
  for (const std::string& name : mail.temporary().names()) {
    std::filesystem::remove(mail.temporary().path(name), ignored);
  }
  for (const int i : {10, attachments::kBlockFilesKeptOpen}) {
    const auto attachment = mail.attachments().Item(i);
    EXPECT_EQ(attachment->Name(), u"f" + wide(std::to_string(i)));
    EXPECT_EQ(attachment->Type(), u"");
    EXPECT_EQ(attachment->Encoding(), 3);
    EXPECT_EQ(attachment->Size(), 18) << "of 27 bytes";
    EXPECT_EQ(attachment->Part(), mail.box().message(0));
    EXPECT_EQ(mail.attachments().Item(i), attachment);
  }
}

TEST(BlockSource, blocks_that_nobody_holds_are_let_go_unless_they_were_changed) {
  ManyBlocks mail(4200);
  const std::shared_ptr<CAttachment> held = mail.attachments().Item(100);
  const std::weak_ptr<CAttachment> let_go = mail.attachments().Item(101);
  mail.attachment(102).SetName(u"put");
  mail.attachment(103).SetEncoding(5);
  for (std::int64_t i = 0; i < 4200; ++i) mail.attachment(i);
  EXPECT_EQ(mail.attachments().Item(100), held);
  EXPECT_TRUE(let_go.expired());
  EXPECT_EQ(mail.attachment(101).Name(), u"f101");
  EXPECT_EQ(mail.saved(101), "ABC");
  EXPECT_EQ(mail.attachment(102).Name(), u"put");
  EXPECT_EQ(mail.attachment(103).Encoding(), 5);
}

#ifdef __linux__

std::int64_t open_files() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

/// No more files than this can be open until the object dies.
class OpenFileLimit {
 public:
  explicit OpenFileLimit(rlim_t files) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit limit = {files, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~OpenFileLimit() { setrlimit(RLIMIT_NOFILE, &before_); }
  OpenFileLimit(const OpenFileLimit&) = delete;
  OpenFileLimit& operator=(const OpenFileLimit&) = delete;

 private:
  rlimit before_{};
};

TEST(BlockSource, thousands_of_blocks_in_two_messages_need_few_open_files) {
  const std::int64_t before = open_files();
  const OpenFileLimit limit(static_cast<rlim_t>(before + attachments::kBlockFilesKeptOpen + 16));
  {
    ManyBlocks one(1000);
    ManyBlocks two(1000);
    EXPECT_EQ(one.attachments().Count(), 1000);
    EXPECT_EQ(two.attachments().Count(), 1000);
    EXPECT_LE(open_files(), before + attachments::kBlockFilesKeptOpen + 3);
    EXPECT_EQ(one.saved(999), "ABC");
    EXPECT_EQ(two.saved(999), "ABC");
    EXPECT_EQ(two.saved(999), "ABC");
  }
  EXPECT_EQ(open_files(), before);
}

TEST(BlockSource, files_that_are_let_go_make_room_for_others_to_stay_open) {
  const std::int64_t before = open_files();
  for (int times = 0; times < 3; ++times) {
    ManyBlocks mail(10);
    EXPECT_EQ(mail.attachments().Count(), 10);
    EXPECT_EQ(open_files(), before + 1 + 10);
  }
}

#endif

TEST(BlockSource, a_file_that_somebody_deleted_reports_30008_before_the_destination_is_touched) {
  ManyBlocks mail(attachments::kBlockFilesKeptOpen + 1);
  const std::int64_t last = attachments::kBlockFilesKeptOpen;
  ASSERT_EQ(mail.attachments().Count(), last + 1);
  std::error_code ignored;
  for (const std::string& name : mail.temporary().names()) {
    std::filesystem::remove(mail.temporary().path(name), ignored);
  }
  const std::string target = mail.saved_files().file("mine", "mine");
  expect_error(ErrorNumber::cannot_access_destination, Reporter::attachment,
               [&] { mail.attachment(last).Save(wide(target)); });
  EXPECT_EQ(tests::read_file(target), "mine");
}

TEST(BlockSource, a_block_that_is_not_kept_open_is_saved_after_unlock_too) {
  ManyBlocks mail(attachments::kBlockFilesKeptOpen + 1);
  const auto last = mail.attachments().Item(attachments::kBlockFilesKeptOpen);
  mail.box().control().Unlock();
  last->Save(wide(mail.saved_files().path("out")));
  EXPECT_EQ(tests::read_file(mail.saved_files().path("out")), "ABC");
}

TEST(BlockSource, saving_onto_the_file_of_the_block_itself_reports_30008_and_leaves_it_whole) {
  ManyBlocks mail(attachments::kBlockFilesKeptOpen + 1);
  const std::int64_t last = attachments::kBlockFilesKeptOpen;
  const std::string path = mail.attachment(last).range().reopened_from;
  expect_error(ErrorNumber::cannot_access_destination, Reporter::attachment,
               [&] { mail.attachment(last).Save(wide(path)); });
  EXPECT_EQ(tests::read_file(path), "begin 644 f" + std::to_string(last) + "\r\n#04)#\r\nend\r\n");
}

}  // namespace
}  // namespace vellobar
