// The lock file beside a mailbox, which is made away from Windows only.
#ifndef _WIN32

#include "platform/lock_file.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "platform/overwriting.h"
#include "platform/temporary_file.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/files.h"

namespace vellobar::platform {
namespace {

namespace fs = std::filesystem;
using tests::Fault;
using tests::FaultyFileSystem;

/// A process that has ended.
pid_t ended_process() {
  const pid_t process = ::fork();
  if (process == 0) ::_exit(0);
  ::waitpid(process, nullptr, 0);
  return process;
}

class LockFiles : public testing::Test {
 protected:
  std::string lock_path() const { return path_ + ".lock"; }
  bool is_locked() const { return fs::exists(lock_path()); }

  /// A lock file that was written so many minutes ago.
  void make_other(const std::string& text, int minutes) const {
    tests::write_file(lock_path(), text);
    fs::last_write_time(lock_path(), fs::file_time_type::clock::now() - std::chrono::minutes(minutes));
  }

  const FixedHostName host_{"here"};
  const tests::TemporaryFolder folder_;
  const std::string path_ = folder_.file("box", "");
};

TEST_F(LockFiles, name_the_process_and_the_host_and_go_with_their_owner) {
  {
    LockFile lock(path_);
    EXPECT_TRUE(lock.try_make());
    EXPECT_TRUE(lock.try_make()) << "it has it";
    EXPECT_EQ(tests::read_file(lock_path()), std::to_string(::getpid()) + ":here\nvellobar\n");
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"box", "box.lock"}));
  }
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"box"});
}

TEST_F(LockFiles, belong_to_one_owner_at_a_time) {
  LockFile first(path_);
  LockFile second(path_);
  ASSERT_TRUE(first.try_make());
  EXPECT_FALSE(second.try_make());
  second.remove();
  EXPECT_TRUE(is_locked());
  LockFile::remove_left(path_);
  EXPECT_TRUE(is_locked());
  first.remove();
  EXPECT_TRUE(second.try_make());
}

TEST_F(LockFiles, of_a_died_process_are_taken_away_at_once) {
  make_other("1:here\nvellobar\n", 0);
  finish_interrupted_replacement(path_);
  EXPECT_FALSE(is_locked());
}

TEST_F(LockFiles, of_other_programs_are_taken_away_when_they_are_old_and_their_process_has_ended) {
  const std::string ended = std::to_string(ended_process());
  const std::string running = std::to_string(::getpid());
  const struct {
    std::string text;
    int minutes;
    bool is_left;
  } rows[] = {
      {"", 0, false},
      {"", 4, false},
      {"", 6, true},
      {"0", 6, true},
      {"0", 4, false},
      {"someone", 6, true},
      {ended, 0, false},
      {ended, 6, true},
      {running, 6, false},
      {ended + ":here", 6, true},
      {ended + ":here", 0, false},
      {running + ":here\n", 6, false},
      {ended + ":there", 600, false},
      {"1:there\nvellobar\n", 600, false},
  };
  for (const auto& row : rows) {
    make_other(row.text, row.minutes);
    LockFile lock(path_);
    EXPECT_EQ(lock.try_make(), row.is_left) << row.text << ", " << row.minutes;
    EXPECT_EQ(fs::remove(lock_path()), true);
  }
}

TEST_F(LockFiles, that_are_links_or_folders_are_left_alone) {
  fs::create_symlink(path_, lock_path());
  EXPECT_FALSE(LockFile(path_).try_make());
  EXPECT_TRUE(fs::is_symlink(lock_path()));
  fs::remove(lock_path());
  fs::create_directory(lock_path());
  EXPECT_FALSE(LockFile(path_).try_make());
  EXPECT_TRUE(fs::is_directory(lock_path()));
}

TEST_F(LockFiles, are_done_without_where_none_can_be_made) {
  for (const std::errc reason : {std::errc::permission_denied, std::errc::read_only_file_system,
                                 std::errc::operation_not_permitted, std::errc::no_space_on_device}) {
    // Making, writing, syncing, naming.
    for (std::int64_t at = 0; at < 4; ++at) {
      FaultyFileSystem refusing(Fault::fails, at, std::make_error_code(reason));
      const FixedFileSystem fixed(refusing);
      EXPECT_TRUE(LockFile(path_).try_make());
      EXPECT_FALSE(is_locked());
    }
  }
  FaultyFileSystem broken(Fault::fails, 0, std::make_error_code(std::errc::io_error));
  const FixedFileSystem fixed(broken);
  EXPECT_THROW(LockFile(path_).try_make(), std::system_error);
}

TEST_F(LockFiles, leave_nothing_that_outlives_a_death_at_any_call) {
  for (const Fault fault : {Fault::dies_before, Fault::dies_after}) {
    for (std::int64_t at = 0, calls = 1; at < calls; ++at) {
      {
        FaultyFileSystem dying(fault, at);
        const FixedFileSystem fixed(dying);
        try {
          LockFile lock(path_);
          lock.try_make();
        } catch (const std::system_error&) {
          // It died.
        }
        calls = dying.changes();
      }
      EXPECT_TRUE(LockFile(path_).try_make()) << at;
      EXPECT_EQ(folder_.names(), std::vector<std::string>{"box"}) << at;
    }
  }
}

}  // namespace
}  // namespace vellobar::platform

#endif
