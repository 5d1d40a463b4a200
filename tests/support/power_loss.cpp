#include "tests/support/power_loss.h"

#include <algorithm>

#include "tests/support/files.h"

namespace vellobar::tests {

using platform::OpenFile;
using platform::Opening;
using Kind = Change::Kind;

namespace {

constexpr std::size_t kSector = 512;

int roll(std::mt19937& random, int sides) { return static_cast<int>(random() % static_cast<unsigned>(sides)); }

void put(std::string& content, std::size_t position, std::string_view bytes) {
  content.resize(std::max(content.size(), position + bytes.size()), '\0');
  content.replace(position, bytes.size(), bytes);
}

void make_now(Disk::Stored& stored, const Change& change) {
  const std::size_t position = static_cast<std::size_t>(change.position);
  if (change.kind == Kind::truncate) stored.content.resize(position, '\0');
  if (change.kind == Kind::write) put(stored.content, position, change.bytes);
  if (change.kind == Kind::note) stored.note = change.bytes;
}

/// Writes some of the sectors of a write, each one wholly.
void make_torn(Disk::Stored& stored, const Change& change, std::mt19937& random) {
  const std::size_t begin = static_cast<std::size_t>(change.position);
  const std::size_t end = begin + change.bytes.size();
  for (std::size_t at = begin; at < end;) {
    const std::size_t next = std::min(end, (at / kSector + 1) * kSector);
    if (roll(random, 2) == 0) put(stored.content, at, std::string_view(change.bytes).substr(at - begin, next - at));
    at = next;
  }
}

void make_now(std::map<std::string, int>& entries, const Change& change) {
  if (change.kind == Kind::create) entries[change.name] = change.file;
  if (change.kind == Kind::rename || change.kind == Kind::link) entries[change.new_name] = change.file;
  if (change.kind == Kind::rename || change.kind == Kind::remove) entries.erase(change.name);
}

/// The next change in mind of those that were not synced: kept, dropped or torn.
template <typename State, typename Tear>
void make_perhaps(State& state, const std::vector<Change>& unsynced, std::mt19937& random, Tear tear) {
  // Most power losses keep most changes, or hardly any.
  const int kept_of_8 = roll(random, 9);
  for (const Change& change : unsynced) {
    const bool is_torn = change.kind == Kind::write && roll(random, 3) == 0;
    if (is_torn) {
      tear(state, change);
    } else if (roll(random, 8) < kept_of_8) {
      make_now(state, change);
    }
  }
}

}  // namespace

Disk::Disk(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    const auto link = std::find_if(synced_.begin(), synced_.end(),
                                   [&](const auto& entry) { return platform::same_file(entry.first, path); });
    const int file = link != synced_.end() ? link->second : static_cast<int>(files_.size());
    if (link == synced_.end()) files_[file].stored = {read_file(path), platform::note_on(path)};
    synced_[path] = file;
  }
  seen_ = synced_;
}

void Disk::make(const Change& change) {
  switch (change.kind) {
    case Kind::write:
    case Kind::truncate:
    case Kind::note:
      files_[change.file].unsynced.push_back(change);
      break;
    case Kind::sync:
      for (const Change& made : files_[change.file].unsynced) make_now(files_[change.file].stored, made);
      files_[change.file].unsynced.clear();
      break;
    case Kind::create:
    case Kind::rename:
    case Kind::link:
    case Kind::remove:
      unsynced_entries_.push_back(change);
      make_now(seen_, change);
      break;
    case Kind::sync_folder:
      synced_ = seen_;
      unsynced_entries_.clear();
      break;
  }
}

Disk::Image Disk::after_power_loss(std::mt19937& random) const {
  std::map<std::string, int> entries = synced_;
  make_perhaps(entries, unsynced_entries_, random, [](auto&, const Change&) {});
  std::map<int, Stored> contents;
  for (const auto& [number, file] : files_) {
    Stored& stored = contents[number] = file.stored;
    make_perhaps(stored, file.unsynced, random,
                 [&](Stored& torn, const Change& change) { make_torn(torn, change, random); });
  }
  Image image;
  for (const auto& [name, file] : entries) image[name] = contents[file];
  return image;
}

std::error_code RecordingFileSystem::open(const std::string& path, Opening how, OpenFile& file) noexcept {
  const std::error_code failure = ForwardingFileSystem::open(path, how, file);
  if (failure || how == Opening::read || how == Opening::claim) return failure;
  const auto known = entries_.find(path);
  int number = known != entries_.end() ? known->second : 1000 + static_cast<int>(changes_.size());
  if (known == entries_.end()) {
    entries_[path] = number;
    changes_.push_back({Kind::create, number, 0, {}, path, {}});
  } else if (how == Opening::create) {
    changes_.push_back({Kind::truncate, number, 0, {}, {}, {}});
  }
  written_[file] = {number, 0};
  return failure;
}

std::error_code RecordingFileSystem::write(OpenFile file, std::string_view bytes, std::size_t& put_count) noexcept {
  const std::error_code failure = ForwardingFileSystem::write(file, bytes, put_count);
  Written& at = written_[file];
  changes_.push_back({Kind::write, at.file, at.position, std::string(bytes.substr(0, put_count)), {}, {}});
  at.position += static_cast<std::int64_t>(put_count);
  return failure;
}

std::error_code RecordingFileSystem::resize(OpenFile file, std::int64_t expected, std::int64_t size) noexcept {
  const std::error_code failure = ForwardingFileSystem::resize(file, expected, size);
  if (!failure) changes_.push_back({Kind::truncate, written_[file].file, size, {}, {}, {}});
  return failure;
}

std::error_code RecordingFileSystem::sync(OpenFile file) noexcept {
  changes_.push_back({Kind::sync, written_[file].file, 0, {}, {}, {}});
  return {};
}

std::error_code RecordingFileSystem::close(OpenFile file) noexcept {
  written_.erase(file);
  return ForwardingFileSystem::close(file);
}

std::error_code RecordingFileSystem::rename(const std::string& from, const std::string& to) noexcept {
  const std::error_code failure = ForwardingFileSystem::rename(from, to);
  if (failure) return failure;
  changes_.push_back({Kind::rename, entries_[from], 0, {}, from, to});
  entries_[to] = entries_[from];
  entries_.erase(from);
  return failure;
}

std::error_code RecordingFileSystem::link(const std::string& from, const std::string& to) noexcept {
  const std::error_code failure = ForwardingFileSystem::link(from, to);
  if (failure) return failure;
  changes_.push_back({Kind::link, entries_[from], 0, {}, from, to});
  entries_[to] = entries_[from];
  return failure;
}

std::error_code RecordingFileSystem::sync_folder_of(const std::string&) noexcept {
  changes_.push_back({Kind::sync_folder, -1, 0, {}, {}, {}});
  return {};
}

std::error_code RecordingFileSystem::leave_note(const std::string& path, const std::string& text) noexcept {
  const std::error_code failure = ForwardingFileSystem::leave_note(path, text);
  if (!failure) changes_.push_back({Kind::note, entries_[path], 0, text, {}, {}});
  return failure;
}

std::error_code RecordingFileSystem::remove(const std::string& path) noexcept {
  const std::error_code failure = ForwardingFileSystem::remove(path);
  const auto known = entries_.find(path);
  if (failure || known == entries_.end()) return failure;
  changes_.push_back({Kind::remove, known->second, 0, {}, path, {}});
  entries_.erase(known);
  return failure;
}

}  // namespace vellobar::tests
