#include "platform/file_replacement.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <system_error>

#include "platform/overwriting.h"
#include "platform/staging_files.h"
#include "platform/temporary_file.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/files.h"
#ifndef _WIN32
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#endif

namespace vellobar::platform {
namespace {

namespace fs = std::filesystem;
using tests::append_to_file;
using tests::Fault;
using tests::FaultyFileSystem;
using tests::read_file;
using tests::TemporaryFolder;
using tests::write_file;

/// A file with the content "old content" in a folder of its own, and an empty folder for temporary files.
class Replaced {
 public:
  Replaced() : fixed_(temporary_.path("")), path_(folder_.file("file", "old content")) {}

  const std::string& path() const { return path_; }
  std::string content() const { return read_file(path_); }
  StagingFiles beside() const { return staging_files_beside(followed_path(path_)); }
  StagingFiles elsewhere() const { return staging_files_elsewhere(followed_path(path_)); }
  std::size_t file_count() const { return folder_.names().size() + temporary_.names().size(); }
  std::string other_name(std::string_view name) const { return folder_.path(name); }
  void make_hard_link() const { fs::create_hard_link(path_, other_name("link")); }
  /// Takes the names that the files beside it would have.
  void leave_no_room_beside() const { fs::create_directory(beside().fresh); }

  void replace(std::string_view content) { replace_through(path_, content); }
  static void replace_through(const std::string& path, std::string_view content) {
    const std::shared_ptr<File> old_file = File::open(path);
    FileReplacement replacement(path);
    replacement.write(content);
    replacement.sync();
    replacement.commit(*old_file, old_file->size());
  }

 private:
  TemporaryFolder folder_, temporary_;
  FixedTemporaryFolder fixed_;
  std::string path_;
};

class StagedContent : public testing::TestWithParam<int> {
 protected:
  const std::string fresh_ = std::string(static_cast<std::size_t>(GetParam()), 'n');
};

TEST_P(StagedContent, takes_the_place_of_the_old_one_and_leaves_nothing_else) {
  Replaced file;
  file.replace(fresh_);
  EXPECT_TRUE(file.content() == fresh_);
  EXPECT_EQ(file.file_count(), 1u);
}

TEST_P(StagedContent, is_written_over_a_file_with_several_names) {
  Replaced file;
  file.make_hard_link();
  file.replace(fresh_);
  EXPECT_TRUE(file.content() == fresh_);
  EXPECT_TRUE(read_file(file.other_name("link")) == fresh_);
  EXPECT_TRUE(same_file(file.path(), file.other_name("link")));
  EXPECT_EQ(file.file_count(), 2u);
}

TEST_P(StagedContent, is_kept_in_the_folder_for_temporary_files_where_none_can_be_made_beside) {
  Replaced file;
  file.leave_no_room_beside();
  {
    FileReplacement replacement(file.path());
    EXPECT_TRUE(fs::exists(file.elsewhere().fresh));
  }
  file.replace(fresh_);
  EXPECT_TRUE(file.content() == fresh_);
  EXPECT_EQ(file.file_count(), 2u) << "the file, and the folder that was in the way";
}

INSTANTIATE_TEST_SUITE_P(FileReplacement, StagedContent, testing::Values(0, 3, 11, 25, 600'000));

TEST(FileReplacement, without_a_commit_changes_nothing) {
  Replaced file;
  {
    FileReplacement replacement(file.path());
    replacement.write("new content");
    replacement.sync();
    EXPECT_EQ(file.file_count(), 2u);
  }
  EXPECT_EQ(file.content(), "old content");
  EXPECT_EQ(file.file_count(), 1u);
}

TEST(FileReplacement, of_a_folder_or_of_nothing_is_refused) {
  Replaced file;
  fs::create_directory(file.other_name("folder"));
  for (const char* name : {"folder", "missing", "missing/file", ""}) {
    EXPECT_THROW(FileReplacement(file.other_name(name)), std::system_error) << name;
  }
  EXPECT_THROW(FileReplacement(""), std::system_error);
}

TEST(FileReplacement, of_a_file_that_is_being_replaced_is_refused) {
  Replaced file;
  FileReplacement first(file.path());
  EXPECT_TRUE(fs::exists(file.beside().fresh));
  EXPECT_THROW(FileReplacement second(file.path()), std::system_error);
  EXPECT_THROW(FileReplacement third(file.path(), FileReplacement::Staging::elsewhere), std::system_error);
  EXPECT_FALSE(fs::exists(file.elsewhere().fresh));
}

TEST(FileReplacement, gives_the_old_file_to_read_again_when_it_cannot_be_replaced) {
  Replaced file;
  const std::shared_ptr<File> old_file = File::open(file.path());
  FileReplacement replacement(file.path());
  replacement.write("new content");
  replacement.sync();
  {
    FaultyFileSystem failing(Fault::fails_from, 0);
    const FixedFileSystem fixed(failing);
    EXPECT_THROW(replacement.commit(*old_file, old_file->size()), std::system_error);
  }
  char bytes[20];
  EXPECT_EQ(std::string_view(bytes, old_file->read(0, bytes, sizeof bytes)), "old content");
  EXPECT_EQ(file.content(), "old content");
}

// The changes of replacing "old content" where the file has several names, from the commit on; what is put back is
// counted behind the failing one. The shorter content is cut last, the longer one extended first.

class PutBack : public testing::TestWithParam<std::string> {};

TEST_P(PutBack, the_old_content_is_whenever_overwriting_fails) {
  const std::error_code failures[] = {std::make_error_code(std::errc::no_space_on_device),
                                      std::make_error_code(std::errc::io_error)};
  for (const std::error_code& failure : failures) {
    std::int64_t refused = 0;
    for (std::int64_t at = 0;; ++at) {
      Replaced file;
      file.make_hard_link();
      const std::shared_ptr<File> old_file = File::open(file.path());
      FileReplacement replacement(file.path());
      replacement.write(GetParam());
      replacement.sync();
      FaultyFileSystem failing(Fault::fails, at, failure);
      const FixedFileSystem fixed(failing);
      bool succeeded = true;
      try {
        replacement.commit(*old_file, old_file->size());
      } catch (const std::system_error&) {
        succeeded = false;
        ++refused;
      }
      EXPECT_TRUE(file.content() == (succeeded ? GetParam() : "old content")) << at;
      EXPECT_TRUE(read_file(file.other_name("link")) == file.content());
      if (at >= failing.changes()) break;
    }
    EXPECT_GT(refused, 8) << "copying the old content and overwriting it";
  }
}

TEST_P(PutBack, fails_as_well_leaves_both_contents_to_recover_from) {
  int recovered = 0;
  for (std::int64_t at = 0;; ++at) {
    Replaced file;
    file.make_hard_link();
    std::int64_t changes = 0;
    {
      const std::shared_ptr<File> old_file = File::open(file.path());
      FileReplacement replacement(file.path());
      replacement.write(GetParam());
      replacement.sync();
      FaultyFileSystem failing(Fault::fails_from, at);
      const FixedFileSystem fixed(failing);
      try {
        replacement.commit(*old_file, old_file->size());
      } catch (const std::system_error&) {
        recovered += fs::exists(file.beside().old);
      }
      changes = failing.changes();
    }
    finish_interrupted_replacement(file.path());
    EXPECT_TRUE(file.content() == "old content" || file.content() == GetParam()) << at;
    EXPECT_EQ(file.file_count(), 2u) << at;
    if (at >= changes) break;
  }
  EXPECT_GT(recovered, 1);
}

INSTANTIATE_TEST_SUITE_P(FileReplacement, PutBack,
                         testing::Values("", "new", "NEW CONTENT", "new content of more bytes"));

TEST(InterruptedReplacement, that_did_not_begin_to_overwrite_is_removed) {
  Replaced file;
  for (const StagingFiles& files : {file.beside(), file.elsewhere()}) {
    write_file(files.fresh, "new content, not all of it");
    write_file(files.copy, "old con");
  }
  finish_interrupted_replacement(file.path());
  EXPECT_EQ(file.content(), "old content");
  EXPECT_EQ(file.file_count(), 1u);
}

TEST(InterruptedReplacement, whose_file_is_half_overwritten_is_completed_with_the_longer_content) {
  const struct {
    std::string_view old, fresh, now, then;
  } rows[] = {
      {"old content", "new", "old content", "old content"},
      {"old content", "new", "ned content", "old content"},
      {"old content", "new", "new content", "old content"},
      {"old content", "new", "new", "new"},
      {"old", "new content", "old", "old"},
      {"old", "new content", std::string_view("old\0\0\0\0\0\0\0\0", 11), "new content"},
      {"old", "new content", std::string_view("new\0con\0\0\0\0", 11), "new content"},
      {"old", "new content", "new content", "new content"},
      {"one", "two", "twe", "two"},
      {"one", "two", "one", "one"},
  };
  for (const auto& row : rows) {
    for (const std::string_view appended : {"", "more"}) {
      Replaced file;
      write_file(file.path(), std::string(row.now) + std::string(appended));
      write_file(file.beside().fresh, row.fresh);
      write_file(file.beside().old, row.old);
      finish_interrupted_replacement(file.path());
      EXPECT_EQ(file.content(), std::string(row.then) + std::string(appended)) << row.now;
      EXPECT_EQ(file.file_count(), 1u);
    }
  }
}

TEST(InterruptedReplacement, whose_file_somebody_changed_since_keeps_the_old_content_under_another_name) {
  Replaced file;
  write_file(file.path(), "something else altogether");
  write_file(file.beside().fresh, "new content");
  write_file(file.beside().old, "old content");
  finish_interrupted_replacement(file.path());
  EXPECT_EQ(file.content(), "something else altogether");
  EXPECT_EQ(read_file(file.beside().old + "-kept"), "old content");
  EXPECT_EQ(file.file_count(), 2u);
}

TEST(InterruptedReplacement, of_a_living_process_is_left_alone) {
  Replaced file;
  {
    FileReplacement living(file.path());
    finish_interrupted_replacement(file.path());
    EXPECT_TRUE(fs::exists(file.beside().fresh));
  }
  EXPECT_EQ(file.file_count(), 1u);
}

TEST(InterruptedReplacement, of_a_living_process_is_left_alone_by_another_name_too) {
  Replaced file;
  file.make_hard_link();
  {
    FileReplacement living(file.path());
    finish_interrupted_replacement(file.other_name("link"));
    EXPECT_TRUE(fs::exists(file.beside().fresh));
  }
  EXPECT_EQ(file.file_count(), 2u);
}

TEST(InterruptedReplacement, that_cannot_be_completed_is_reported_and_left_as_it_is) {
  Replaced file;
  write_file(file.path(), "ned content");
  write_file(file.beside().fresh, "new");
  write_file(file.beside().old, "old content");
  {
    FaultyFileSystem failing(Fault::fails_from, 0);
    const FixedFileSystem fixed(failing);
    EXPECT_THROW(finish_interrupted_replacement(file.path()), std::system_error);
  }
  EXPECT_EQ(file.content(), "ned content");
  EXPECT_EQ(file.file_count(), 3u);
}

TEST(InterruptedReplacement, of_a_file_that_is_gone_leaves_nothing) {
  Replaced file;
  fs::remove(file.path());
  write_file(file.beside().fresh, "new");
  finish_interrupted_replacement(file.path());
  EXPECT_EQ(file.file_count(), 0u);
}

TEST(StagingFiles, stand_beside_the_file_or_go_by_its_whole_path) {
  const FixedTemporaryFolder fixed("/temporary/");
  EXPECT_EQ(staging_files_beside("/a/b/c").fresh, "/a/b/.c.vellobar-new");
  EXPECT_EQ(staging_files_beside("c").old, ".c.vellobar-old");
  // FNV-1a of "a", as its authors give it.
  EXPECT_EQ(staging_files_elsewhere("a").copy, "/temporary/.af63dc4c8601ec8c.vellobar-copy");
  EXPECT_NE(staging_files_elsewhere("/a/c").old, staging_files_elsewhere("/b/c").old);
}

#ifndef _WIN32

TEST(FileReplacement, keeps_the_mode_and_a_symbolic_link) {
  Replaced file;
  ASSERT_EQ(::chmod(file.path().c_str(), 0640), 0);
  const std::string link = file.other_name("link");
  fs::create_symlink(file.path(), link);
  Replaced::replace_through(link, "new");
  EXPECT_EQ(file.content(), "new");
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(fs::status(file.path()).permissions(), fs::perms(0640));
  EXPECT_EQ(file.file_count(), 2u);
}

TEST(FileReplacement, keeps_the_owner_where_it_may_be_given) {
  Replaced file;
  if (::chown(file.path().c_str(), 1234, 4321) != 0) GTEST_SKIP() << "this user may not give files away";
  file.replace("new");
  struct stat info {};
  ASSERT_EQ(::stat(file.path().c_str(), &info), 0);
  EXPECT_EQ(info.st_uid, 1234u);
  EXPECT_EQ(info.st_gid, 4321u);
  EXPECT_EQ(file.content(), "new");
}

TEST(FileReplacement, keeps_extended_attributes) {
  Replaced file;
  if (::setxattr(file.path().c_str(), "user.vellobar", "kept", 4, 0) != 0) GTEST_SKIP() << "no such attributes here";
  file.replace("new");
  char value[8];
  ASSERT_EQ(::getxattr(file.path().c_str(), "user.vellobar", value, sizeof value), 4);
  EXPECT_EQ(std::string_view(value, 4), "kept");
}

TEST(FileReplacement, rewrites_in_place_what_attributes_cannot_be_given_to) {
  for (std::int64_t at = 0; at < 3; ++at) {
    Replaced file;
    struct stat before {};
    struct stat after {};
    ASSERT_EQ(::stat(file.path().c_str(), &before), 0);
    const std::shared_ptr<File> old_file = File::open(file.path());
    FileReplacement replacement(file.path());
    replacement.write("new");
    replacement.sync();
    FaultyFileSystem failing(Fault::fails, at, std::make_error_code(std::errc::operation_not_permitted));
    const FixedFileSystem fixed(failing);
    replacement.commit(*old_file, old_file->size());
    ASSERT_EQ(::stat(file.path().c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(file.content(), "new");
  }
}

// A note comes from whoever may write to the file.

class Noted : public testing::Test {
 protected:
  void SetUp() override {
    if (!leave_note(file_.path(), "a note")) GTEST_SKIP() << "this file system keeps no notes";
    write_file(file_.path(), "ned content");
  }

  static void leave_interrupted(const std::string& path) {
    write_file(staging_files_beside(path).fresh, "new");
    write_file(staging_files_beside(path).old, "old content");
  }

  Replaced file_;
  const std::string other_ = followed_path(file_.path()) + "-other";
};

TEST_F(Noted, by_anything_but_a_whole_path_is_opened_as_it_is_and_the_note_goes) {
  for (const std::string& note :
       {std::string("file"), std::string("../file"), std::string(1, '\0'), std::string("/x\0y", 4),
        std::string(3000, 'x'), std::string("/no/such/folder/file")}) {
    leave_interrupted(other_);
    ASSERT_TRUE(leave_note(file_.path(), note));
    finish_interrupted_replacement(file_.path());
    EXPECT_EQ(file_.content(), "ned content");
    EXPECT_EQ(note_on(file_.path()), "");
  }
}

TEST_F(Noted, by_the_path_of_another_file_touches_nothing_of_that_and_is_refused_while_that_is_interrupted) {
  write_file(other_, "ned content");
  leave_interrupted(other_);
  ASSERT_TRUE(leave_note(file_.path(), other_));
  EXPECT_THROW(finish_interrupted_replacement(file_.path()), std::system_error);
  EXPECT_EQ(file_.content(), "ned content");
  EXPECT_EQ(read_file(other_), "ned content");
  EXPECT_EQ(read_file(staging_files_beside(other_).old), "old content");
  finish_interrupted_replacement(other_);
  EXPECT_EQ(read_file(other_), "old content");
  finish_interrupted_replacement(file_.path());
  EXPECT_EQ(note_on(file_.path()), "");
}

TEST_F(Noted, by_a_path_that_leads_to_the_file_through_a_link_touches_nothing_beside_that) {
  fs::create_symlink(file_.path(), other_);
  leave_interrupted(other_);
  ASSERT_TRUE(leave_note(file_.path(), other_));
  EXPECT_THROW(finish_interrupted_replacement(file_.path()), std::system_error);
  EXPECT_EQ(file_.content(), "ned content");
  EXPECT_EQ(read_file(staging_files_beside(other_).old), "old content");
}

TEST_F(Noted, by_another_of_its_names_is_completed_from_beside_that) {
  fs::create_hard_link(file_.path(), other_);
  leave_interrupted(other_);
  ASSERT_TRUE(leave_note(file_.path(), other_));
  finish_interrupted_replacement(file_.path());
  EXPECT_EQ(file_.content(), "old content");
  EXPECT_EQ(note_on(file_.path()), "");
  EXPECT_EQ(file_.file_count(), 2u);
}

TEST_F(Noted, is_not_what_takes_its_place) {
  ASSERT_TRUE(leave_note(file_.path(), other_));
  file_.replace("new");
  EXPECT_EQ(note_on(file_.path()), "");
}

TEST(InterruptedReplacement, of_another_user_or_behind_a_link_is_left_alone) {
  Replaced file;
  write_file(file.other_name("victim"), "precious");
  fs::create_symlink(file.other_name("victim"), file.beside().fresh);
  write_file(file.elsewhere().fresh, "planted");
  const bool is_foreign = ::chown(file.elsewhere().fresh.c_str(), 1234, 4321) == 0;
  finish_interrupted_replacement(file.path());
  EXPECT_TRUE(fs::is_symlink(file.beside().fresh));
  EXPECT_EQ(read_file(file.other_name("victim")), "precious");
  EXPECT_EQ(fs::exists(file.elsewhere().fresh), is_foreign);
}

#endif

}  // namespace
}  // namespace vellobar::platform
