// Updates while somebody else delivers mail to the same file.
#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "platform/file_handle.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/mailboxes.h"
#include "tests/support/update_cases.h"

namespace vellobar {
namespace {

using platform::FileHandle;
using platform::Opening;
using tests::FaultyFileSystem;
using tests::MailboxEdit;
using tests::MailboxShape;
using tests::MailboxToBreak;
using tests::Way;

constexpr std::string_view kLate = "From late\n\nlate\n";

/// An agent as programs that deliver mail are: it opens the mailbox, locks it, makes sure that the file it has locked
/// is the mailbox still, and appends. Where it must wait it tries again later.
class DeliveringAgent {
 public:
  explicit DeliveringAgent(std::string path) : path_(std::move(path)) {}

  bool has_delivered() const { return has_delivered_; }

  void try_to_deliver() {
    if (has_delivered_) return;
    const platform::FixedFileSystem its_own(platform::real_file_system());
    if (!file_.valid()) file_ = FileHandle::open(path_, Opening::append);
    if (!file_.valid()) return;
    if (!file_.try_lock()) {
      // Whoever waits with the file open makes it irreplaceable there.
      if (!platform::kReplacesOpenFiles) file_ = FileHandle();
      return;
    }
    if (file_.is_file(path_)) {
      file_.write(kLate);
      has_delivered_ = true;
    }
    file_ = FileHandle();
  }

 private:
  std::string path_;
  FileHandle file_;
  bool has_delivered_ = false;
};

class Delivery : public testing::TestWithParam<Way> {};

TEST_P(Delivery, that_begins_at_any_change_of_an_update_is_never_lost) {
  MailboxToBreak box(GetParam());
  int deliveries = 0, waited = 0;
  for (const MailboxShape& shape : tests::swept_shapes()) {
    // No call on a file depends on what stands in a message.
    if (shape.content.size() > 60 && shape.content.size() < 20'000) continue;
    for (const MailboxEdit& edit : tests::swept_edits()) {
      SCOPED_TRACE(testing::Message() << shape.name << ", " << edit.name);
      std::string expected;
      for (std::int64_t at = -1, changes = 0; at < changes; ++at) {
        box.reset(shape.content);
        DeliveringAgent agent(box.path());
        {
          CVellobar control;
          box.lock(control);
          edit.make(control);
          FaultyFileSystem watched;
          watched.before_each_change([&](std::int64_t change) {
            if (at >= 0 && change >= at) agent.try_to_deliver();
          });
          const platform::FixedFileSystem fixed(watched);
          control.Update();
          changes = watched.changes();
        }
        if (at < 0) {
          expected = box.content();
          continue;
        }
        ++deliveries;
        waited += !agent.has_delivered();
        // The first try may find that the file it has waited for is the mailbox no longer.
        agent.try_to_deliver();
        agent.try_to_deliver();
        ASSERT_TRUE(agent.has_delivered());
        EXPECT_TRUE(box.content() == expected + std::string(kLate)) << "from change " << at;
      }
    }
  }
  EXPECT_GT(deliveries, tests::kTriesAll ? 667 : 15) << "all ways together make 2,000";
  EXPECT_LT(waited, deliveries);
}

TEST_P(Delivery, that_takes_no_lock_is_kept_until_the_mailbox_is_being_overwritten) {
  MailboxToBreak box(GetParam());
  for (const MailboxEdit& edit : tests::swept_edits()) {
    SCOPED_TRACE(edit.name);
    box.reset(tests::mailbox_shapes()[2].content);
    CVellobar control;
    box.lock(control);
    edit.make(control);
    FaultyFileSystem watched;
    // Staging file, its content, and what waits for the disk.
    watched.before_each_change([&](std::int64_t change) {
      if (change < 4) tests::append_to_file(box.path(), kLate);
    });
    const platform::FixedFileSystem fixed(watched);
    control.Update();
    const std::string content = box.content();
    std::string four;
    for (int i = 0; i < 4; ++i) four += kLate;
    EXPECT_TRUE(content.ends_with(four)) << content;
  }
}

#ifndef _WIN32
TEST(Update, carries_over_what_comes_to_the_old_file_without_a_lock_up_to_the_renaming) {
  MailboxToBreak box(Way::by_renaming);
  const MailboxShape& shape = tests::mailbox_shapes()[2];
  for (std::int64_t at = 0, changes = 1; at < changes; ++at) {
    box.reset(shape.content);
    CVellobar control;
    box.lock(control);
    control.Messages()->RemoveAll();
    FaultyFileSystem watched;
    watched.before_each_change([&](std::int64_t change) {
      if (change == at) tests::append_to_file(box.path(), kLate);
    });
    const platform::FixedFileSystem fixed(watched);
    control.Update();
    changes = watched.changes();
    EXPECT_EQ(box.content(), kLate) << "from change " << at;
    EXPECT_EQ(box.leftovers(), std::vector<std::string>());
  }
}
#endif

#ifdef _WIN32
// By renaming the lock must be given up a moment before, since no open file is replaced.
INSTANTIATE_TEST_SUITE_P(Update, Delivery, testing::Values(Way::over_the_old_one, Way::staged_elsewhere));
#else
INSTANTIATE_TEST_SUITE_P(Update, Delivery, testing::ValuesIn(tests::kWays));
#endif

TEST(Update, of_a_mailbox_that_somebody_keeps_locked_is_30002_and_leaves_it_alone) {
  MailboxToBreak box(Way::by_renaming);
  const MailboxShape& shape = tests::mailbox_shapes()[2];
  box.reset(shape.content);
  CVellobar control;
  box.lock(control);
  {
    FileHandle other = FileHandle::open(box.path(), Opening::append);
    ASSERT_TRUE(other.try_lock());
    tests::expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { control.Update(); });
    EXPECT_TRUE(control.Locked());
    EXPECT_EQ(box.content(), shape.content);
  }
  control.Update();
  EXPECT_NE(box.content(), shape.content);
}

}  // namespace
}  // namespace vellobar
