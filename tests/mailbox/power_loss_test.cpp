// Updates that are cut off by a power loss, with everything that the disk may then hold. The calls are the same on
// Windows, where paths have several spellings and a renaming waits for the disk.
#ifndef _WIN32

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <set>

#include "platform/file_handle.h"
#include "platform/staging_files.h"
#include "tests/support/mailboxes.h"
#include "tests/support/power_loss.h"
#include "tests/support/update_cases.h"

namespace vellobar {
namespace {

using tests::Change;
using tests::Disk;
using tests::MailboxEdit;
using tests::MailboxShape;
using tests::MailboxToBreak;
using tests::RecordingFileSystem;
using tests::Way;

constexpr int kImagesOfEachMoment = 20;

/// Puts the files of an image on the real disk, and locks the mailbox by this name as whoever comes next does.
std::string content_after_next_lock(MailboxToBreak& box, const Disk::Image& image, const std::string& name) {
  box.reset({});
  for (const auto& [path, stored] : image) {
    tests::write_file(path, stored.content);
    if (!stored.note.empty()) platform::leave_note(path, stored.note);
  }
  RecordingFileSystem not_waiting_for_the_disk(box.paths());
  const platform::FixedFileSystem fixed(not_waiting_for_the_disk);
  CVellobar next;
  box.lock(next, name);
  next.Unlock();
  const std::string content = box.content();
  // What waits beside the first name changes nothing.
  if (name != box.path()) box.lock(next);
  EXPECT_TRUE(box.content() == content);
  EXPECT_EQ(box.leftovers(), std::vector<std::string>());
  return content;
}

/// The names that a mailbox can be opened by. Where its file system keeps no notes the one in another folder is left
/// out.
std::vector<std::string> names_to_open_by(const MailboxToBreak& box) {
  std::vector<std::string> names = {box.path()};
  if (box.near_link().empty()) return names;
  names.push_back(box.near_link());
  if (box.keeps_notes()) names.push_back(box.far_link());
  return names;
}

class PowerLoss : public testing::TestWithParam<Way> {
 protected:
  /// Notes every change of an update, and what it makes of the mailbox.
  void record(MailboxToBreak& box, const MailboxShape& shape, const MailboxEdit& edit) {
    box.reset(shape.content);
    CVellobar control;
    box.lock(control);
    edit.make(control);
    const std::vector<std::string> paths = box.paths();
    disk_.emplace(paths);
    RecordingFileSystem recording(paths);
    const platform::FixedFileSystem fixed(recording);
    control.Update();
    changes_ = recording.changes();
    updated_ = box.content();
  }

  std::optional<Disk> disk_;
  std::vector<Change> changes_;
  std::string updated_;
};

TEST_P(PowerLoss, at_any_moment_of_an_update_leaves_the_old_or_the_new_mailbox) {
  MailboxToBreak box(GetParam());
  std::mt19937 random(20240229);
  const std::vector<std::string> names = names_to_open_by(box);
  int images = 0, old = 0;
  for (const MailboxShape& shape : tests::swept_shapes()) {
    for (const MailboxEdit& edit : tests::swept_edits()) {
      SCOPED_TRACE(testing::Message() << shape.name << ", " << edit.name);
      record(box, shape, edit);
      std::set<Disk::Image> seen;
      for (std::size_t made = 0; made <= changes_.size(); ++made) {
        if (made > 0) disk_->make(changes_[made - 1]);
        for (int i = 0; i < kImagesOfEachMoment; ++i) {
          Disk::Image image = disk_->after_power_loss(random);
          ASSERT_TRUE(image.count(box.path())) << "no mailbox after " << made << " changes";
          if (seen.count(image)) continue;
          ++images;
          const std::string& name = names[static_cast<std::size_t>(images) % names.size()];
          const std::string content = content_after_next_lock(box, image, name);
          ASSERT_TRUE(content == shape.content || content == updated_) << "after " << made << " changes";
          old += content == shape.content;
          seen.insert(std::move(image));
        }
      }
    }
  }
  // All ways together make 20,000, no two of one update alike. By renaming there is less that may go wrong.
  const int wanted = GetParam() == Way::by_renaming ? 4'700 : 7'650;
  EXPECT_GT(images, tests::kTriesAll ? wanted : 100);
  EXPECT_GT(old, 0);
  RecordProperty("images", images);
}

INSTANTIATE_TEST_SUITE_P(Update, PowerLoss, testing::ValuesIn(tests::kWays));

}  // namespace
}  // namespace vellobar

#endif
