// What a disk may hold after the power went away. A `RecordingFileSystem` notes every change while it is made; a `Disk`
// takes the changes one by one and knows which of them were synced. Of the others each one may have reached the disk or
// not, in any order: a write also in part, sector by sector, and an entry of a folder (a name made, moved or removed)
// as a whole.
#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/forwarding_file_system.h"

namespace vellobar::tests {

/// One change that was made. Files are numbered, since a name may stand for one file now and for another one later.
struct Change {
  enum class Kind { create, write, truncate, note, sync, rename, link, remove, sync_folder };
  Kind kind{};
  int file = -1;
  std::int64_t position = 0;  ///< where bytes were written, or the size at which the file was cut
  std::string bytes;          ///< of a write or a note
  std::string name, new_name;
};

class Disk {
 public:
  /// The files with their names and content, all of it synced.
  explicit Disk(const std::vector<std::string>& paths);

  /// The file of each name as it is seen by everybody while the power is there.
  const std::map<std::string, int>& entries() const { return seen_; }
  void make(const Change& change);

  /// What a file holds and the note that was left with it.
  struct Stored {
    std::string content, note;
    auto operator<=>(const Stored&) const = default;
  };
  using Image = std::map<std::string, Stored>;
  /// Names and what they stand for after a power loss now. Every call rolls the dice again.
  Image after_power_loss(std::mt19937& random) const;

 private:
  struct File {
    Stored stored;
    std::vector<Change> unsynced;
  };

  std::map<int, File> files_;
  std::map<std::string, int> synced_, seen_;
  std::vector<Change> unsynced_entries_;
};

class RecordingFileSystem final : public platform::ForwardingFileSystem {
 public:
  /// `paths` are the files that are there now.
  explicit RecordingFileSystem(const std::vector<std::string>& paths) : entries_(Disk(paths).entries()) {}

  const std::vector<Change>& changes() const { return changes_; }

  std::error_code open(const std::string& path, platform::Opening how, platform::OpenFile& file) noexcept override;
  std::error_code write(platform::OpenFile file, std::string_view bytes, std::size_t& put) noexcept override;
  std::error_code resize(platform::OpenFile file, std::int64_t expected, std::int64_t size) noexcept override;
  std::error_code sync(platform::OpenFile file) noexcept override;
  std::error_code close(platform::OpenFile file) noexcept override;
  std::error_code rename(const std::string& from, const std::string& to) noexcept override;
  std::error_code link(const std::string& from, const std::string& to) noexcept override;
  std::error_code sync_folder_of(const std::string& path) noexcept override;
  std::error_code leave_note(const std::string& path, const std::string& text) noexcept override;
  std::error_code remove(const std::string& path) noexcept override;

 private:
  struct Written {
    int file;
    std::int64_t position;
  };

  std::map<std::string, int> entries_;
  std::map<platform::OpenFile, Written> written_;
  std::vector<Change> changes_;
};

}  // namespace vellobar::tests
