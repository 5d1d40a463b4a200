#include "attachments/block_source.h"

#include <atomic>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "errors/error.h"
#include "mailbox/scratch_file.h"
#include "platform/file.h"

namespace vellobar::attachments {

namespace {

std::atomic<int> kept_open = 0;

bool take_place_among_open_files() {
  if (kept_open.fetch_add(1) < kBlockFilesKeptOpen) return true;
  kept_open.fetch_sub(1);
  return false;
}

/// The file, and with its end the place it held among those that are kept open.
std::shared_ptr<platform::File> with_place(std::shared_ptr<platform::File> file) {
  platform::File* const plain = file.get();
  return {plain, [file = std::move(file)](platform::File*) mutable {
            file.reset();
            kept_open.fetch_sub(1);
          }};
}

/// False when the file cannot be written.
bool write_lines(const std::string& path, std::string_view lines) {
  try {
    const std::unique_ptr<platform::OutputFile> output = platform::OutputFile::create(path);
    if (!output) return false;
    output->write(lines);
    output->close();
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

}  // namespace

bool make_block_source(std::string_view lines, const std::function<void(const CodedRange&)>& take) {
  mailbox::ScratchFile scratch;
  if (!write_lines(scratch.path(), lines)) return false;
  std::shared_ptr<platform::File> file = platform::File::open(scratch.path());
  if (!file) {
    // Deliberate: the file is left; whoever keeps it from being read may still want it.
    scratch.keep();
    throw Error(ErrorNumber::cannot_write_temporary_file, Reporter::vellobar);
  }
  CodedRange range{.file = nullptr, .start = 0, .end = static_cast<std::int64_t>(lines.size())};
  if (take_place_among_open_files()) {
    range.file = with_place(std::move(file));
  } else {
    file.reset();
    range.reopened_from = scratch.path();
  }
  take(range);
  scratch.keep();
  return true;
}

}  // namespace vellobar::attachments
