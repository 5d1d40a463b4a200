// Updates that die or fail at every change they make to the disk.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <tuple>

#include "tests/support/faulty_file_system.h"
#include "tests/support/mailboxes.h"
#include "tests/support/update_cases.h"

namespace vellobar {
namespace {

using tests::Fault;
using tests::FaultyFileSystem;
using tests::kWays;
using tests::MailboxEdit;
using tests::MailboxShape;
using tests::MailboxToBreak;
using tests::Way;

#ifdef _WIN32
const std::error_code kQuota(1295, std::system_category());
#else
const std::error_code kQuota(EDQUOT, std::generic_category());
#endif

const std::error_code kFailures[] = {
    std::make_error_code(std::errc::io_error),          std::make_error_code(std::errc::no_space_on_device), kQuota,
    std::make_error_code(std::errc::permission_denied), std::make_error_code(std::errc::interrupted),
};

/// Everything that a call may do but what it was asked to.
const struct Misdeed {
  const char* name;
  Fault fault;
  std::error_code failure;
} kMisdeeds[] = {
    {"input_output_error", Fault::fails, kFailures[0]},
    {"no_room", Fault::fails, kFailures[1]},
    {"no_share_left", Fault::fails, kFailures[2]},
    {"permission_denied", Fault::fails, kFailures[3]},
    {"interrupted", Fault::fails, kFailures[4]},
    {"nothing_written", Fault::writes_nothing, {}},
    {"one_byte_written", Fault::writes_one_byte, {}},
    {"half_written", Fault::writes_half, {}},
    {"all_but_one_byte_written", Fault::writes_all_but_one_byte, {}},
};

/// Updates through this file system. False when it was refused, as it may be: with 30002.
bool update(CVellobar& control, FaultyFileSystem& faulty) {
  const platform::FixedFileSystem fixed(faulty);
  try {
    control.Update();
    return true;
  } catch (const Error& error) {
    EXPECT_EQ(static_cast<int>(error.number()), static_cast<int>(ErrorNumber::cannot_update_mailbox));
    return false;
  }
}

/// What an undisturbed update makes of a mailbox, and how many changes of the disk it takes, writes among them.
struct Undisturbed {
  std::string content;
  std::int64_t changes = 0;
  std::vector<std::int64_t> writes;
};

Undisturbed undisturbed(MailboxToBreak& box, const MailboxShape& shape, const MailboxEdit& edit) {
  box.reset(shape.content);
  CVellobar control;
  box.lock(control);
  edit.make(control);
  FaultyFileSystem faultless;
  EXPECT_TRUE(update(control, faultless));
  return {box.content(), faultless.changes(), faultless.writes()};
}

/// Runs an update that dies, as the process would: nothing of it is left but what is on the disk.
void update_and_die(MailboxToBreak& box, const MailboxShape& shape, const MailboxEdit& edit, Fault fault,
                    std::int64_t at) {
  box.reset(shape.content);
  FaultyFileSystem dying(fault, at);
  CVellobar control;
  box.lock(control);
  edit.make(control);
  update(control, dying);
}

/// Locks the mailbox as the next process does; tells how that left it.
std::string content_after_next_lock(MailboxToBreak& box) {
  FaultyFileSystem faultless;
  const platform::FixedFileSystem not_waiting_for_the_disk(faultless);
  CVellobar next;
  box.lock(next);
  EXPECT_EQ(box.leftovers(), std::vector<std::string>());
  return box.content();
}

/// The same by another name of the mailbox. Where it was whole, files beside the first name wait for that one.
std::string content_after_next_lock(MailboxToBreak& box, const std::string& name) {
  FaultyFileSystem faultless;
  const platform::FixedFileSystem not_waiting_for_the_disk(faultless);
  CVellobar next;
  box.lock(next, name);
  next.Unlock();
  const std::string content = box.content();
  EXPECT_TRUE(content_after_next_lock(box) == content);
  return content;
}

class UpdateThatDies : public testing::TestWithParam<Way> {};

TEST_P(UpdateThatDies, at_any_change_before_or_after_leaves_the_old_or_the_new_mailbox) {
  MailboxToBreak box(GetParam());
  std::int64_t deaths = 0, old = 0, updated = 0;
  for (const MailboxShape& shape : tests::swept_shapes()) {
    // Staged elsewhere the changes are the same as over the old one.
    if (GetParam() == Way::staged_elsewhere && shape.content.size() > 200) continue;
    for (const MailboxEdit& edit : tests::swept_edits()) {
      SCOPED_TRACE(testing::Message() << shape.name << ", " << edit.name);
      const Undisturbed expected = undisturbed(box, shape, edit);
      for (std::int64_t at = 0; at < expected.changes; ++at) {
        for (const Fault fault : {Fault::dies_before, Fault::dies_after}) {
          update_and_die(box, shape, edit, fault, at);
          const std::string content = content_after_next_lock(box);
          ++deaths;
          if (content == shape.content) {
            ++old;
          } else if (content == expected.content) {
            ++updated;
          } else {
            FAIL() << "neither old nor new after dying at change " << at << " of " << expected.changes;
          }
        }
      }
    }
  }
  EXPECT_GT(old, deaths / 20);
  EXPECT_GT(updated, deaths / 20);
  RecordProperty("deaths", static_cast<int>(deaths));
}

TEST_P(UpdateThatDies, keeps_mail_that_is_appended_before_the_next_lock) {
  constexpr std::string_view kLate = "From late\n\nlate\n";
  MailboxToBreak box(GetParam());
  for (const MailboxShape& shape : tests::swept_shapes()) {
    for (const MailboxEdit& edit : tests::mailbox_edits()) {
      if (edit.name != std::string_view("messages added") && edit.name != std::string_view("first message removed")) {
        continue;
      }
      SCOPED_TRACE(testing::Message() << shape.name << ", " << edit.name);
      const Undisturbed expected = undisturbed(box, shape, edit);
      for (std::int64_t at = 0; at < expected.changes; ++at) {
        update_and_die(box, shape, edit, Fault::dies_after, at);
        tests::append_to_file(box.path(), kLate);
        const std::string content = content_after_next_lock(box);
        EXPECT_TRUE(content == shape.content + std::string(kLate) || content == expected.content + std::string(kLate))
            << "change " << at << " of " << expected.changes;
      }
    }
  }
}

TEST_P(UpdateThatDies, is_completed_also_when_completing_it_dies) {
  MailboxToBreak box(GetParam());
  const MailboxShape& shape = tests::mailbox_shapes()[2];
  for (const MailboxEdit& edit : tests::swept_edits()) {
    SCOPED_TRACE(edit.name);
    const Undisturbed expected = undisturbed(box, shape, edit);
    for (std::int64_t at = 0; at < expected.changes; ++at) {
      for (std::int64_t next_at = 0;; ++next_at) {
        update_and_die(box, shape, edit, Fault::dies_before, at);
        FaultyFileSystem dying(Fault::dies_after, next_at);
        {
          const platform::FixedFileSystem fixed(dying);
          CVellobar next;
          try {
            box.lock(next);
          } catch (const Error&) {
            // It died.
          }
        }
        const std::string content = content_after_next_lock(box);
        EXPECT_TRUE(content == shape.content || content == expected.content) << at << ", then " << next_at;
        if (next_at >= dying.changes()) break;
      }
    }
  }
}

/// Mailboxes and edits enough to make every kind of change of the disk: the new mailbox is longer or shorter than the
/// old one, as long, or empty, and written at once or in several pieces.
constexpr struct {
  std::string_view shape, edit;
} kSomeCases[] = {{"two messages", "header added"},
                  {"two messages", "first message removed"},
                  {"two messages", "all messages removed"},
                  {"CR LF", "none"},
                  {"multipart between others", "last message removed"},
                  {"larger than a buffer", "messages added"},
                  {"larger than a buffer", "first message removed"}};

bool is_some_case(const MailboxShape& shape, const MailboxEdit& edit) {
  return std::any_of(std::begin(kSomeCases), std::end(kSomeCases),
                     [&](const auto& some) { return shape.name == some.shape && edit.name == some.edit; });
}

enum class Cases { some, all };

template <typename Check>
void for_cases(Cases which, MailboxToBreak& box, Check check) {
  for (const MailboxShape& shape : tests::mailbox_shapes()) {
    for (const MailboxEdit& edit : tests::mailbox_edits()) {
      if (which == Cases::some && !is_some_case(shape, edit)) continue;
      SCOPED_TRACE(testing::Message() << shape.name << ", " << edit.name);
      check(shape, edit, undisturbed(box, shape, edit));
    }
  }
}

class MisdeedOfACall : public testing::TestWithParam<std::tuple<Way, Misdeed>> {};

TEST_P(MisdeedOfACall, in_any_update_is_made_up_for_or_30002_with_the_old_mailbox_whole_and_the_next_update_succeeds) {
  const auto& [way, misdeed] = GetParam();
  const bool is_short = misdeed.fault != Fault::fails;
  MailboxToBreak box(way);
  std::int64_t calls = 0, refused = 0;
  const auto misbehave = [&](const MailboxShape& shape, const MailboxEdit& edit, const Undisturbed& expected,
                             std::int64_t at) {
    box.reset(shape.content);
    CVellobar control;
    box.lock(control);
    edit.make(control);
    const std::int64_t count = control.Messages()->Count();
    FaultyFileSystem faulty(misdeed.fault, at, misdeed.failure);
    ++calls;
    if (!update(control, faulty)) {
      ++refused;
      EXPECT_TRUE(box.content() == shape.content) << at;
      EXPECT_TRUE(control.Locked());
      EXPECT_EQ(control.Messages()->Count(), count);
      FaultyFileSystem faultless;
      EXPECT_TRUE(update(control, faultless)) << at;
    }
    EXPECT_GT(faulty.changes(), at);
    EXPECT_TRUE(content_after_next_lock(box) == expected.content) << at;
  };
  for_cases(tests::kTriesAll ? Cases::all : Cases::some, box,
            [&](const MailboxShape& shape, const MailboxEdit& edit, const Undisturbed& expected) {
              if (is_short) {
                for (const std::int64_t at : expected.writes) misbehave(shape, edit, expected, at);
              } else {
                for (std::int64_t at = 0; at < expected.changes; ++at) misbehave(shape, edit, expected, at);
              }
            });
  EXPECT_GT(calls, 0);
  if (is_short) {
    EXPECT_EQ(refused, 0) << "the rest is written, and where nothing was, all of it by another way";
  } else if (misdeed.failure != std::errc::interrupted) {
    EXPECT_GT(refused, 0);
  }
  RecordProperty("calls", static_cast<int>(calls));
  RecordProperty("refused", static_cast<int>(refused));
}

/// A mailbox with several names, of which the first one was opened for an update that died.
class MailboxWithOtherNames : public testing::Test {
 protected:
  enum class Notes { kept, not_kept };

  /// True when that left neither the old nor the new mailbox.
  bool tears(const MailboxShape& shape, const MailboxEdit& edit, const Undisturbed& expected, Fault fault,
             std::int64_t at, Notes notes) {
    box_.reset(shape.content);
    FaultyFileSystem dying(fault, at);
    if (notes == Notes::not_kept) dying.keep_no_notes();
    {
      CVellobar control;
      box_.lock(control);
      edit.make(control);
      update(control, dying);
    }
    return box_.content() != shape.content && box_.content() != expected.content;
  }

  /// The next process opens the mailbox by this name after every death.
  void expect_whole_by(const std::string& name, Notes notes) {
    std::int64_t torn = 0;
    for_cases(Cases::some, box_, [&](const MailboxShape& shape, const MailboxEdit& edit, const Undisturbed& expected) {
      for (std::int64_t at = 0; at < expected.changes; ++at) {
        for (const Fault fault : {Fault::dies_before, Fault::dies_after}) {
          torn += tears(shape, edit, expected, fault, at, notes);
          const std::string content = content_after_next_lock(box_, name);
          EXPECT_TRUE(content == shape.content || content == expected.content) << at;
          EXPECT_EQ(platform::note_on(name), "") << at;
        }
      }
    });
    EXPECT_GT(torn, 20);
  }

  MailboxToBreak box_{Way::over_the_old_one};
};

TEST_F(MailboxWithOtherNames, that_is_torn_is_completed_when_it_is_opened_by_one_in_the_same_folder) {
  if (!box_.keeps_notes()) GTEST_SKIP() << "this file system keeps no notes";
  expect_whole_by(box_.near_link(), Notes::kept);
}

TEST_F(MailboxWithOtherNames, that_is_torn_is_completed_by_one_in_the_same_folder_also_without_notes) {
  expect_whole_by(box_.near_link(), Notes::not_kept);
}

TEST_F(MailboxWithOtherNames, that_is_torn_is_completed_when_it_is_opened_by_one_in_another_folder) {
  if (!box_.keeps_notes()) GTEST_SKIP() << "this file system keeps no notes";
  expect_whole_by(box_.far_link(), Notes::kept);
}

TEST_F(MailboxWithOtherNames, that_is_torn_is_refused_while_its_first_name_is_gone) {
  if (!box_.keeps_notes()) GTEST_SKIP() << "this file system keeps no notes";
  const std::string away = box_.path() + "-away";
  std::int64_t torn = 0;
  for_cases(Cases::some, box_, [&](const MailboxShape& shape, const MailboxEdit& edit, const Undisturbed& expected) {
    for (std::int64_t at = 0; at < expected.changes; ++at) {
      if (!tears(shape, edit, expected, Fault::dies_before, at, Notes::kept)) continue;
      ++torn;
      const std::string content = box_.content();
      std::filesystem::rename(box_.path(), away);
      for (const std::string& name : {away, box_.near_link(), box_.far_link()}) {
        CVellobar next;
        tests::expect_error(ErrorNumber::cannot_open_mailbox, Reporter::vellobar, [&] { box_.lock(next, name); });
      }
      std::filesystem::rename(away, box_.path());
      EXPECT_TRUE(box_.content() == content) << at;
      const std::string then = content_after_next_lock(box_, box_.far_link());
      EXPECT_TRUE(then == shape.content || then == expected.content) << at;
    }
  });
  EXPECT_GT(torn, 10);
}

class UpdateThatFails : public testing::TestWithParam<Way> {};

TEST_P(UpdateThatFails, at_every_change_from_one_on_leaves_what_the_next_lock_makes_whole) {
  MailboxToBreak box(GetParam());
  for_cases(Cases::some, box, [&](const MailboxShape& shape, const MailboxEdit& edit, const Undisturbed& expected) {
    for (const std::error_code& failure : kFailures) {
      if (!tests::kTriesAll && failure != kFailures[0]) continue;
      for (std::int64_t at = 0; at < expected.changes; ++at) {
        box.reset(shape.content);
        {
          CVellobar control;
          box.lock(control);
          edit.make(control);
          FaultyFileSystem faulty(Fault::fails_from, at, failure);
          update(control, faulty);
        }
        const std::string content = content_after_next_lock(box);
        EXPECT_TRUE(content == shape.content || content == expected.content) << failure.message() << " from " << at;
      }
    }
  });
}

TEST(Update, that_cannot_read_a_message_is_30002_leaves_the_mailbox_alone_and_succeeds_when_it_can) {
  MailboxToBreak box(Way::by_renaming);
  for (const MailboxShape& shape : tests::swept_shapes()) {
    SCOPED_TRACE(shape.name);
    const std::string expected = undisturbed(box, shape, tests::mailbox_edits()[0]).content;
    const std::int64_t size = static_cast<std::int64_t>(shape.content.size());
    for (const std::int64_t position : {std::int64_t{0}, size / 3, size / 2, size - 1}) {
      if (size == 0) continue;
      box.reset(shape.content);
      CVellobar control;
      box.lock(control);
      FaultyFileSystem failing;
      failing.fail_reads_from(position);
      EXPECT_FALSE(update(control, failing)) << position;
      EXPECT_TRUE(box.content() == shape.content);
      EXPECT_TRUE(control.Locked());
      EXPECT_EQ(box.leftovers(), std::vector<std::string>());
      FaultyFileSystem faultless;
      EXPECT_TRUE(update(control, faultless));
      EXPECT_TRUE(box.content() == expected) << position;
    }
  }
}

TEST(Update, succeeds_with_messages_that_a_client_holds_and_could_not_read_before) {
  MailboxToBreak box(Way::by_renaming);
  for (const MailboxShape& shape : tests::swept_shapes()) {
    if (shape.content.empty()) continue;
    SCOPED_TRACE(shape.name);
    const std::string expected = undisturbed(box, shape, tests::mailbox_edits()[0]).content;
    const std::int64_t size = static_cast<std::int64_t>(shape.content.size());
    for (const std::int64_t position : {size / 3, size / 2, size - 1}) {
      box.reset(shape.content);
      CVellobar control;
      box.lock(control);
      std::vector<std::shared_ptr<CMessage>> held;
      for (std::int64_t i = 0; i < control.Messages()->Count(); ++i) held.push_back(control.Messages()->Item(i));
      FaultyFileSystem failing;
      failing.fail_reads_from(position);
      {
        const platform::FixedFileSystem fixed(failing);
        for (const auto& message : held) message->Load();
      }
      EXPECT_FALSE(update(control, failing));
      FaultyFileSystem faultless;
      EXPECT_TRUE(update(control, faultless));
      EXPECT_TRUE(box.content() == expected) << position;
    }
  }
}

TEST(Update, is_whole_when_a_temporary_file_failed_before_at_any_change) {
  MailboxToBreak box(Way::by_renaming);
  const MailboxShape& shape = tests::mailbox_shapes()[2];
  const std::string old = undisturbed(box, shape, tests::mailbox_edits()[0]).content;
  const MailboxEdit& put_body = tests::mailbox_edits()[4];
  const std::string edited = undisturbed(box, shape, put_body).content;
  for (const std::error_code& failure : kFailures) {
    for (std::int64_t at = 0, changes = 1; at < changes; ++at) {
      box.reset(shape.content);
      CVellobar control;
      box.lock(control);
      bool is_edited = true;
      {
        FaultyFileSystem faulty(Fault::fails, at, failure);
        const platform::FixedFileSystem fixed(faulty);
        try {
          put_body.make(control);
        } catch (const Error&) {
          is_edited = false;
        }
        changes = faulty.changes();
      }
      FaultyFileSystem faultless;
      EXPECT_TRUE(update(control, faultless));
      EXPECT_EQ(box.content(), is_edited ? edited : old) << failure.message() << " at " << at;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Update, UpdateThatDies, testing::ValuesIn(kWays));
INSTANTIATE_TEST_SUITE_P(Update, UpdateThatFails, testing::ValuesIn(kWays));
INSTANTIATE_TEST_SUITE_P(Update, MisdeedOfACall,
                         testing::Combine(testing::ValuesIn(kWays), testing::ValuesIn(kMisdeeds)),
                         [](const auto& instance) {
                           return std::string(name_of(std::get<Way>(instance.param))) + "_" +
                                  std::get<Misdeed>(instance.param).name;
                         });

}  // namespace
}  // namespace vellobar
