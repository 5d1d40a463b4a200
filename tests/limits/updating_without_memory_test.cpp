// Update, with every allocation refused in turn: the mailbox file is the old one or the new one, byte for byte, nothing
// stands beside it, and the next update succeeds.
#include <gtest/gtest.h>

#include <filesystem>

#include "headers/headers.h"
#include "tests/limits/scarce_memory.h"

namespace vellobar::tests {
namespace {

constexpr std::string_view kMail =
    "From ann@example.org Tue Nov 15 08:12:31 1994\n"
    "Content-Type: multipart/mixed; boundary=\"a boundary of some length\"\n"
    "\n"
    "--a boundary of some length\n"
    "Subject: a part of some length\n"
    "\n"
    "the text of the part\n"
    "--a boundary of some length--\n"
    "From bob@example.org Tue Nov 15 09:00:00 1994\n"
    "Subject: a subject of some length\n"
    "\n"
    "a body of more than fifteen bytes\n";

const std::string kWrittenFirst =
    "From ann@example.org Tue Nov 15 08:12:31 1994\r\n"
    "Content-Type: multipart/mixed; boundary=\"a boundary of some length\"\r\n"
    "\r\n"
    "--a boundary of some length\r\n"
    "Subject: a part of some length\r\n"
    "\r\n"
    "the text of the part\n"
    "--a boundary of some length--\r\n"
    "\r\n";
const std::string kWritten = kWrittenFirst +
                             "From bob@example.org Tue Nov 15 09:00:00 1994\r\n"
                             "Subject: a subject of some length\r\n"
                             "X-Added-To-It: the value of it\r\n"
                             "\r\n"
                             "a body of more than fifteen bytes\n"
                             "\r\n";

void lock_and_change(Bench& bench) {
  bench.control->Lock();
  bench.message(1)->Headers()->Add(u"X-Added-To-It", u"the value of it");
}

void update(Bench& bench) { bench.control->Update(); }

/// Nothing but the mailbox, old or new, and the control can go on from there.
void expect_old_or_new(Bench& bench, bool is_done) {
  const std::string content = read_file(bench.path);
  const std::string again = kWritten + "\r\n";
  EXPECT_TRUE(content == kWritten || (!is_done && content == kMail)) << content;
  EXPECT_EQ(bench.folder.names(), std::vector<std::string>{"mail"});
  // The new mailbox may be there and not be locked again.
  if (!bench.control->Locked()) bench.control->Lock();
  EXPECT_EQ(bench.control->Changed(), content == kMail);
  bench.control->Update();
  EXPECT_EQ(read_file(bench.path), content == kMail ? kWritten : again);
  EXPECT_EQ(bench.control->Messages()->Count(), 2);
}

TEST(UpdatingWithoutMemory, the_mailbox_is_the_old_one_or_the_new_one) {
  refuse_each_allocation({kMail, lock_and_change, update, expect_old_or_new});
}

/// Such a file is overwritten; what that leaves undone without memory is completed or put back by the next Lock.
TEST(UpdatingWithoutMemory, a_mailbox_with_a_second_hard_link_is_the_old_one_or_the_new_one_once_it_is_locked_again) {
  const Step link = [](Bench& bench) {
    const std::string second = bench.folder.path("link");
    if (!std::filesystem::exists(second)) std::filesystem::create_hard_link(bench.path, second);
    lock_and_change(bench);
  };
  const Check check = [](Bench& bench, bool is_done) {
    bench.control->Unlock();
    bench.control->Lock();
    const std::string content = read_file(bench.path);
    EXPECT_TRUE(content == kWritten || (!is_done && content == kMail)) << content;
    EXPECT_EQ(read_file(bench.folder.path("link")), content);
    EXPECT_EQ(bench.folder.names(), (std::vector<std::string>{"link", "mail"}));
  };
  refuse_each_allocation({kMail, link, update, check});
}

TEST(UpdatingWithoutMemory, messages_and_parts_that_a_client_holds_stay_readable) {
  std::shared_ptr<CMessage> part;
  const Step hold = [&](Bench& bench) {
    lock_and_change(bench);
    part = bench.message()->Parts()->Item(0);
  };
  const Check check = [&](Bench& bench, bool is_done) {
    EXPECT_EQ(part->Subject(), u"a part of some length");
    EXPECT_EQ(part->Text(), u"the text of the part\n");
    part.reset();
    expect_old_or_new(bench, is_done);
  };
  refuse_each_allocation({kMail, hold, update, check});
}

TEST(UpdatingWithoutMemory, with_auto_update_a_change_succeeds_and_the_mailbox_is_the_old_one_or_the_new_one) {
  const Step lock = [](Bench& bench) {
    bench.control->SetAutoUpdate(true);
    bench.control->Lock();
  };
  const Step change = [](Bench& bench) { bench.message(1)->Headers()->Add(u"X-Added-To-It", u"the value of it"); };
  const Check check = [](Bench& bench, bool) {
    const std::string content = read_file(bench.path);
    EXPECT_TRUE(content == kWritten || content == kMail) << content;
    EXPECT_EQ(bench.folder.names(), std::vector<std::string>{"mail"});
  };
  refuse_each_allocation({kMail, lock, change, check});
}

}  // namespace
}  // namespace vellobar::tests
