// Updates while somebody else delivers mail to the same file.
#include <gtest/gtest.h>

#include <filesystem>
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

/// From one pair of changes to the next one that is tried.
constexpr std::int64_t kStep = tests::kTriesAll ? 1 : 4;

/// An agent as programs that deliver mail are: it opens the mailbox, locks it, makes sure that the file it has locked
/// is the mailbox still, and appends; or it looks at no lock, and opens and appends at once. Where it must wait it
/// tries again later.
class DeliveringAgent {
 public:
  explicit DeliveringAgent(std::string path, bool locks = true) : path_(std::move(path)), locks_(locks) {}

  bool has_delivered() const { return has_delivered_; }

  void try_to_deliver() {
    if (has_delivered_) return;
    const platform::FixedFileSystem its_own(platform::real_file_system());
    if (locks_ && std::filesystem::exists(path_ + ".lock")) return;
    if (!file_.valid()) file_ = FileHandle::open(path_, Opening::append);
    if (!file_.valid()) return;
    if (locks_ && !file_.try_lock()) {
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
  bool locks_;
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

/// Updates the mailbox while agents that look at no lock begin to deliver, each at its change. Returns how many changes
/// there were.
std::int64_t update_while_appending(MailboxToBreak& box, const MailboxShape& shape, const MailboxEdit& edit,
                                    const std::vector<std::int64_t>& at) {
  box.reset(shape.content);
  std::vector<DeliveringAgent> agents;
  for (std::size_t i = 0; i < at.size(); ++i) agents.emplace_back(box.path(), false);
  std::int64_t changes = 0;
  {
    CVellobar control;
    box.lock(control);
    edit.make(control);
    FaultyFileSystem watched;
    watched.before_each_change([&](std::int64_t change) {
      for (std::size_t i = 0; i < at.size(); ++i) {
        if (change >= at[i]) agents[i].try_to_deliver();
      }
    });
    const platform::FixedFileSystem fixed(watched);
    control.Update();
    changes = watched.changes();
  }
  for (DeliveringAgent& agent : agents) agent.try_to_deliver();
  return changes;
}

TEST_P(Delivery, that_takes_no_lock_is_never_lost_either) {
  MailboxToBreak box(GetParam());
  int deliveries = 0;
  for (const MailboxShape& shape : tests::swept_shapes()) {
    if (shape.content.size() > 60 && shape.content.size() < 20'000) continue;
    for (const MailboxEdit& edit : tests::swept_edits()) {
      SCOPED_TRACE(testing::Message() << shape.name << ", " << edit.name);
      const std::int64_t changes = update_while_appending(box, shape, edit, {});
      const std::string expected = box.content();
      for (std::int64_t at = 0; at < changes; ++at, ++deliveries) {
        update_while_appending(box, shape, edit, {at});
        EXPECT_TRUE(box.content() == expected + std::string(kLate)) << "at change " << at;
        EXPECT_EQ(box.leftovers(), std::vector<std::string>());
      }
    }
  }
  EXPECT_GT(deliveries, tests::kTriesAll ? 667 : 15);
}

TEST_P(Delivery, that_takes_no_lock_twice_is_never_lost_either) {
  MailboxToBreak box(GetParam());
  const MailboxShape& shape = tests::mailbox_shapes()[2];
  for (const MailboxEdit& edit : tests::swept_edits()) {
    SCOPED_TRACE(edit.name);
    const std::int64_t changes = update_while_appending(box, shape, edit, {});
    const std::string expected = box.content();
    for (std::int64_t first = 0; first < changes; first += kStep) {
      for (std::int64_t second = first; second < changes; second += kStep) {
        update_while_appending(box, shape, edit, {first, second});
        EXPECT_TRUE(box.content() == expected + std::string(kLate) + std::string(kLate)) << first << ", " << second;
      }
    }
  }
}

class DeliveryToOverwritten : public testing::TestWithParam<Way> {};

TEST_P(DeliveryToOverwritten, that_takes_no_lock_survives_a_death_later_in_the_update) {
  MailboxToBreak box(GetParam());
  const MailboxShape& shape = tests::mailbox_shapes()[2];
  for (const MailboxEdit& edit : tests::swept_edits()) {
    SCOPED_TRACE(edit.name);
    const std::int64_t changes = update_while_appending(box, shape, edit, {});
    const std::string updated = box.content();
    for (std::int64_t at = 0; at < changes; at += kStep) {
      for (std::int64_t death = at; death < changes + 12; death += kStep) {
        box.reset(shape.content);
        {
          CVellobar control;
          box.lock(control);
          edit.make(control);
          FaultyFileSystem dying(tests::Fault::dies_before, death);
          DeliveringAgent agent(box.path(), false);
          dying.before_each_change([&](std::int64_t change) {
            if (change >= at) agent.try_to_deliver();
          });
          const platform::FixedFileSystem fixed(dying);
          try {
            control.Update();
          } catch (const Error&) {
            // It died.
          }
          if (!agent.has_delivered()) continue;
        }
        CVellobar next;
        box.lock(next);
        const std::string content = box.content();
        EXPECT_TRUE(content == shape.content + std::string(kLate) || content == updated + std::string(kLate))
            << "at " << at << ", death before " << death << ":\n"
            << content;
        EXPECT_EQ(box.leftovers(), std::vector<std::string>());
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Update, Delivery, testing::ValuesIn(tests::kWays));
INSTANTIATE_TEST_SUITE_P(Update, DeliveryToOverwritten, testing::Values(Way::over_the_old_one, Way::staged_elsewhere));

#ifndef _WIN32
TEST(Update, of_a_mailbox_whose_lock_file_somebody_keeps_is_30002_and_leaves_it_alone) {
  MailboxToBreak box(Way::by_renaming);
  const MailboxShape& shape = tests::mailbox_shapes()[2];
  box.reset(shape.content);
  CVellobar control;
  box.lock(control);
  tests::write_file(box.path() + ".lock", "1");
  tests::expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { control.Update(); });
  EXPECT_TRUE(control.Locked());
  EXPECT_EQ(box.content(), shape.content);
  EXPECT_EQ(box.leftovers(), std::vector<std::string>{box.path() + ".lock"});
  std::filesystem::remove(box.path() + ".lock");
  control.Update();
  EXPECT_NE(box.content(), shape.content);
}
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
