// Disks that are really full and folders that really cannot be written to.
#ifdef __linux__

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

namespace fs = std::filesystem;
using tests::expect_error;
using tests::wide;

constexpr char kSize[] = "size=256k";
constexpr std::size_t kRoom = 256 * 1024;

/// A disk of 256 KB, as far as this user may make one.
class SmallDisk {
 public:
  SmallDisk() : is_there_(::mount("tmpfs", folder().c_str(), "tmpfs", 0, kSize) == 0) {}
  ~SmallDisk() {
    if (is_there_) ::umount2(folder().c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool is_there() const { return is_there_; }
  std::string folder() const { return folder_.path(""); }
  std::string path(std::string_view name) const { return folder_.path(name); }

 private:
  tests::TemporaryFolder folder_;
  bool is_there_;
};

std::string mailbox_of(std::size_t size) {
  const std::string headers = "From a\r\nSubject: 1\r\n\r\n";
  return headers + std::string(size - headers.size() - 2, 'x') + "\r\n";
}

void set_subject(CVellobar& control) {
  const auto message = control.Messages()->Item(0);
  message->Load();
  message->SetSubject(u"2");
}

class FullDisk : public testing::Test {
 protected:
  void SetUp() override {
    if (!disk_.is_there()) GTEST_SKIP() << "this user may not make a file system";
    tests::write_file(path_, old_);
    control_.SetFilename(wide(path_));
    control_.Lock();
  }

  SmallDisk disk_;
  const std::string path_ = disk_.path("box");
  const std::string old_ = mailbox_of(kRoom - 20'000);
  CVellobar control_;
};

TEST_F(FullDisk, with_room_for_temporary_files_elsewhere_does_not_keep_a_mailbox_from_being_rewritten) {
  const tests::TemporaryFolder temporary;
  const platform::FixedTemporaryFolder fixed(temporary.path(""));
  set_subject(control_);
  control_.Update();
  std::string expected = old_ + "\r\n";
  expected.replace(expected.find("Subject: 1"), 10, "Subject: 2");
  EXPECT_TRUE(tests::read_file(path_) == expected);
  EXPECT_TRUE(temporary.names().empty());
}

TEST_F(FullDisk, is_30002_with_the_old_mailbox_whole_and_an_update_succeeds_when_there_is_room_again) {
  const platform::FixedTemporaryFolder fixed(disk_.folder());
  set_subject(control_);
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { control_.Update(); });
  EXPECT_TRUE(tests::read_file(path_) == old_);
  EXPECT_TRUE(control_.Locked());
  const std::string remount = std::string(kSize).replace(5, 3, "900");
  ASSERT_EQ(::mount("tmpfs", disk_.folder().c_str(), "tmpfs", MS_REMOUNT, remount.c_str()), 0);
  control_.Update();
  EXPECT_EQ(control_.Messages()->Item(0)->Subject(), u"2");
}

TEST_F(FullDisk, that_cannot_take_a_grown_mailbox_keeps_the_old_one) {
  const tests::TemporaryFolder temporary;
  const platform::FixedTemporaryFolder fixed(temporary.path(""));
  control_.Messages()->Add()->SetBody(u"\r\n" + std::u16string(40'000, u'y') + u"\r\n");
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { control_.Update(); });
  EXPECT_TRUE(tests::read_file(path_) == old_);
  control_.Messages()->Remove(*control_.Messages()->Item(0));
  control_.Update();
  EXPECT_EQ(control_.Messages()->Count(), 1);
}

/// Acts as a user without rights until the object dies.
class AsNobody {
 public:
  AsNobody() : became_(::geteuid() == 0 && ::seteuid(kNobody) == 0) {}
  ~AsNobody() {
    if (became_ && ::seteuid(0) != 0) std::abort();
  }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;

  static constexpr uid_t kNobody = 65534;

 private:
  bool became_;
};

TEST(ReadOnlyFolder, does_not_keep_a_mailbox_in_it_from_being_rewritten) {
  tests::Mailbox box("From a\nSubject: 1\n\none\n");
  const tests::TemporaryFolder temporary;
  const platform::FixedTemporaryFolder fixed(temporary.path(""));
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(box.path().c_str(), AsNobody::kNobody, AsNobody::kNobody), 0);
    ASSERT_EQ(::chown(temporary.path("").c_str(), AsNobody::kNobody, AsNobody::kNobody), 0);
  }
  const fs::path folder = fs::path(box.path()).parent_path();
  fs::permissions(folder, fs::perms(0555));
  {
    const AsNobody nobody;
    box.control().Lock();
    set_subject(box.control());
    box.control().Update();
  }
  fs::permissions(folder, fs::perms(0755));
  EXPECT_EQ(box.content(), "From a\r\nSubject: 2\r\n\r\none\n\r\n");
  EXPECT_EQ(box.folder().names(), std::vector<std::string>{"test.mbox"});
  EXPECT_TRUE(temporary.names().empty());
}

TEST(ReadOnlyFile, is_30002_before_anything_is_touched) {
  tests::Mailbox box("From a\nSubject: 1\n\none\n");
  fs::permissions(box.path(), fs::perms(0444));
  const AsNobody nobody;
  box.control().Lock();
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { box.control().Update(); });
  EXPECT_EQ(box.content(), "From a\nSubject: 1\n\none\n");
}

}  // namespace
}  // namespace vellobar

#endif
