// Updates while another process delivers mail to the same mailbox. Which mailbox, which edit, how much mail and at
// which change of the update the process is let go is drawn from a fixed seed; from there on the two run as they
// please.
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "tests/support/delivery_agent.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/mailboxes.h"
#include "tests/support/update_cases.h"

namespace vellobar {
namespace {

using tests::DeliveryAgent;
using tests::FaultyFileSystem;
using tests::MailboxEdit;
using tests::MailboxShape;
using tests::MailboxToBreak;
using tests::Way;

/// All ways together make 2,000, and more that take no lock.
constexpr int kRounds = tests::kTriesAll ? 667 : 25;

class DeliveringProcess : public testing::TestWithParam<Way> {
 protected:
  /// One update of a mailbox, with what it makes of it when nobody disturbs it.
  struct Case {
    const MailboxShape* shape;
    const MailboxEdit* edit;
    std::string expected;
    std::int64_t changes;
  };

  std::int64_t roll(std::int64_t sides) { return static_cast<std::int64_t>(random_()) % sides; }

  const Case& draw_case() {
    const auto& shapes = tests::mailbox_shapes();
    const auto& edits = tests::mailbox_edits();
    const std::size_t shape = static_cast<std::size_t>(roll(static_cast<std::int64_t>(shapes.size())));
    const std::size_t edit = static_cast<std::size_t>(roll(static_cast<std::int64_t>(edits.size())));
    const auto [drawn, is_new] = cases_.try_emplace({shape, edit}, Case{&shapes[shape], &edits[edit], {}, 0});
    if (is_new) {
      drawn->second.changes = update(drawn->second, [](std::int64_t) {});
      drawn->second.expected = box_.content();
    }
    return drawn->second;
  }

  /// Updates the mailbox, again when whoever delivered had it locked for too long; returns how many changes it took.
  template <typename Action>
  std::int64_t update(const Case& wanted, Action before_change) {
    box_.reset(wanted.shape->content);
    CVellobar control;
    box_.lock(control);
    wanted.edit->make(control);
    FaultyFileSystem watched;
    watched.before_each_change(before_change);
    const platform::FixedFileSystem fixed(watched);
    for (int attempt = 0;; ++attempt) {
      try {
        control.Update();
        return watched.changes();
      } catch (const Error&) {
        if (attempt == 10) throw;
        ++refused_;
      }
    }
  }

  MailboxToBreak box_{GetParam()};
  DeliveryAgent agent_;
  std::mt19937 random_{20240229};
  std::map<std::pair<std::size_t, std::size_t>, Case> cases_;
  int refused_ = 0;
};

TEST_P(DeliveringProcess, that_locks_the_mailbox_loses_nothing_whenever_it_begins) {
  int later = 0;
  for (int round = 0; round < kRounds; ++round) {
    const Case& drawn = draw_case();
    // Once for certain before the update takes a lock; a busy machine may let all others begin behind it.
    const bool comes_first = round == 0;
    const std::int64_t at = comes_first ? 0 : roll(drawn.changes);
    const int count = static_cast<int>(1 + roll(3));
    const char* const locks = roll(2) == 0 ? "both" : "file";
    bool is_released = false;
    update(drawn, [&](std::int64_t change) {
      if (change < at || std::exchange(is_released, true)) return;
      agent_.begin_to_deliver(box_.path(), count, locks);
      if (comes_first) agent_.wait();
    });
    const bool comes_later = box_.content() == drawn.expected;
    agent_.wait();
    later += comes_later;
    const std::string delivered = agent_.take_delivered();
    ASSERT_TRUE(box_.content() == drawn.expected + delivered)
        << drawn.shape->name << ", " << drawn.edit->name << ", " << locks << " from change " << at << ":\n"
        << box_.content().substr(0, 2000);
  }
  EXPECT_LT(refused_, kRounds / 10);
  EXPECT_LT(later, kRounds) << "some of it while the update goes on";
  RecordProperty("later", later);
  RecordProperty("refused", refused_);
}

TEST_P(DeliveringProcess, that_takes_no_lock_loses_nothing_where_the_mailbox_keeps_its_file) {
  // By renaming, what is opened before and written later goes to a file that is no mailbox any longer.
  const bool may_hold_it_open = GetParam() != Way::by_renaming;
  for (int round = 0; round < kRounds; ++round) {
    const Case& drawn = draw_case();
    const std::int64_t open_at = roll(drawn.changes);
    const std::int64_t append_at = may_hold_it_open ? open_at + roll(drawn.changes - open_at) : open_at;
    const int count = static_cast<int>(1 + roll(3));
    update(drawn, [&](std::int64_t change) {
      if (change == open_at) agent_.open(box_.path());
      if (change == append_at) agent_.append(count);
      // Where no file is replaced while it is open, the process may have to wait for the renaming in turn.
      if (platform::kReplacesOpenFiles || may_hold_it_open) agent_.wait();
    });
    agent_.wait();
    const std::string delivered = agent_.take_delivered();
    ASSERT_TRUE(box_.content() == drawn.expected + delivered)
        << drawn.shape->name << ", " << drawn.edit->name << " opened at " << open_at << ", written at " << append_at
        << ":\n"
        << box_.content().substr(0, 2000);
  }
}

INSTANTIATE_TEST_SUITE_P(Update, DeliveringProcess, testing::ValuesIn(tests::kWays));

}  // namespace
}  // namespace vellobar
