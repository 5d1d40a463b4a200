// A file system that fails, or stops as if the process had died, at one call of those that change a disk: opening to
// write, writing, cutting, syncing, closing what was written, giving attributes, names and notes, syncing a folder,
// removing. Reading goes on whatever happens, unless it is told to fail. It does not wait for the disk, since nothing
// here takes the power away.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/forwarding_file_system.h"

namespace vellobar::tests {

enum class Fault {
  none,
  fails,       ///< the one call does nothing and returns the failure
  fails_from,  ///< so do all calls behind it
  // The one call, when it is a write, writes less than it was given and says so; any other is as always.
  writes_nothing,
  writes_one_byte,
  writes_half,
  writes_all_but_one_byte,
  dies_before,  ///< the call and all behind it do nothing
  dies_after,   ///< the call is made, and all behind it do nothing
};

class FaultyFileSystem final : public platform::ForwardingFileSystem {
 public:
  /// The fault comes at the change of this number, counted from 0.
  explicit FaultyFileSystem(Fault fault = Fault::none, std::int64_t at = -1,
                            std::error_code failure = std::make_error_code(std::errc::io_error));

  /// From now on nothing at or behind this position can be read.
  void fail_reads_from(std::int64_t position) { unreadable_from_ = position; }

  /// From now on no file has room for a note.
  void keep_no_notes() { keeps_notes_ = false; }

  /// Calls this before each change, with its number.
  void before_each_change(std::function<void(std::int64_t)> action) { before_change_ = std::move(action); }

  /// Changes so far, whether they were made or not.
  std::int64_t changes() const { return changes_; }
  /// The numbers of those that were writes.
  const std::vector<std::int64_t>& writes() const { return writes_; }

  std::error_code open(const std::string& path, platform::Opening how, platform::OpenFile& file) noexcept override;
  std::error_code read(platform::OpenFile file, std::int64_t position, void* to, std::size_t count,
                       std::size_t& got) noexcept override;
  std::error_code write(platform::OpenFile file, std::string_view bytes, std::size_t& put) noexcept override;
  std::error_code resize(platform::OpenFile file, std::int64_t expected, std::int64_t size) noexcept override;
  std::error_code sync(platform::OpenFile file) noexcept override;
  std::error_code close(platform::OpenFile file) noexcept override;
  std::error_code copy_attributes(platform::Attributes which, const std::string& from,
                                  const std::string& to) noexcept override;
  std::error_code rename(const std::string& from, const std::string& to) noexcept override;
  std::error_code link(const std::string& from, const std::string& to) noexcept override;
  std::error_code make_unique(const std::string& folder, const std::string& prefix,
                              std::string& path) noexcept override;
  std::error_code sync_folder_of(const std::string& path) noexcept override;
  std::error_code leave_note(const std::string& path, const std::string& text) noexcept override;
  std::error_code remove(const std::string& path) noexcept override;

 private:
  template <typename Call>
  std::error_code change(Call call) noexcept;

  Fault fault_;
  std::int64_t at_;
  std::error_code failure_;
  std::int64_t unreadable_from_ = std::numeric_limits<std::int64_t>::max();
  std::function<void(std::int64_t)> before_change_;
  std::int64_t changes_ = 0;
  std::vector<std::int64_t> writes_;
  bool is_dead_ = false;
  bool keeps_notes_ = true;
  std::set<platform::OpenFile> written_;
};

}  // namespace vellobar::tests
