#include "command/mail/extraction.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "attachments/safe_name.h"
#include "command/mail/attachment_rows.h"
#include "command/mail/mailbox_file.h"
#include "command/output/failure.h"
#include "command/output/interruption.h"
#include "command/output/path.h"
#include "command/output/terminal.h"
#include "mailbox/message.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar::command {

namespace {

namespace fs = std::filesystem;

/// What a file name can hold: the characters of the locale, on Windows those of the system's code page.
int file_name_code_page() {
#ifdef _WIN32
  return platform::kAnsiCodePage;
#else
  return terminal_code_page();
#endif
}

// How long a name may be, with room for a number: file systems take 255 bytes, Windows 259 for the whole path.
#ifdef _WIN32
constexpr std::size_t kLongest = 150;
#else
constexpr std::size_t kLongest = 240;
#endif

/// The name with the end of its stem cut off where it is too long.
std::u16string shortened(std::u16string name) {
  constexpr std::size_t kLongestExtension = 20;
  const std::size_t point = name.rfind(u'.');
  const bool has_extension = point != name.npos && name.size() - point <= kLongestExtension;
  const std::u16string extension = has_extension ? name.substr(point) : std::u16string();
  const auto is_too_long = [&] { return platform::narrow(file_name_code_page(), name + extension).size() > kLongest; };
  name.resize(std::min(name.size() - extension.size(), kLongest));
  while (!name.empty() && is_too_long()) name.pop_back();
  // Not the first half of a pair.
  if (!name.empty() && name.back() >= 0xD800 && name.back() < 0xDC00) name.pop_back();
  return name + extension;
}

std::string file_name_for(const CAttachment& attachment) {
  const std::u16string name = shortened(attachments::safe_file_name(attachment.Name(), file_name_code_page()));
  return name.empty() ? "attachment" : platform::narrow(terminal_code_page(), name);
}

/// A path that ends with a name from the mail.
std::string shown(const fs::path& path) {
  return shown_line(platform::widen(terminal_code_page(), from_library_path(path)));
}

/// A file that did not exist before, with the name it got.
struct NewFile {
  fs::path path;
  platform::FileHandle handle;
};

/// "name.ext", or "name (1).ext" and so on.
fs::path numbered(const fs::path& name, int number) {
  if (number == 0) return name;
  fs::path path = name.stem();
  path += " (" + std::to_string(number) + ")";
  path += name.extension();
  return path;
}

/// Makes a file under the first free name from this number on: nothing is ever overwritten.
NewFile make_new_file(const fs::path& folder, const std::string& name, int& number) {
  const fs::path wanted = library_path(name);
  for (;; ++number) {
    fs::path path = folder / numbered(wanted, number);
    const std::string system_name = system_path(from_library_path(path));
    platform::FileHandle handle = platform::FileHandle::open(system_name, platform::Opening::create_new);
    if (handle.valid()) return {std::move(path), std::move(handle)};
    std::error_code ignored;
    if (!fs::exists(fs::symlink_status(path, ignored))) throw Failure("cannot write " + shown(path));
  }
}

/// Passes everything on, counts it, and shows how far the mailbox was gone through.
class ShownSink final : public platform::ByteSink {
 public:
  ShownSink(platform::ByteSink& to, ProgressBar& bar, const CodedRange& range, std::int64_t total)
      : to_(to), bar_(bar), range_(range), total_(total) {}

  void write(std::string_view bytes) override {
    to_.write(bytes);
    written_ += static_cast<std::int64_t>(bytes.size());
    if (range_.reopened_from.empty() && range_.file) bar_.show(range_.file->read_up_to(), total_);
  }

  std::int64_t written() const { return written_; }

 private:
  platform::ByteSink& to_;
  ProgressBar& bar_;
  const CodedRange& range_;
  std::int64_t total_;
  std::int64_t written_ = 0;
};

void check_folder(const std::string& folder) {
  std::error_code ignored;
  const fs::file_status status = fs::status(library_path(folder), ignored);
  if (!fs::exists(status)) throw Failure("cannot save into " + folder + ": there is no such folder");
  if (!fs::is_directory(status)) throw Failure("cannot save into " + folder + ": it is not a folder");
}

}  // namespace

Extraction::Extraction(const MailboxFile& mailbox, const Options& options)
    : mailbox_(mailbox), options_(options), bar_("extracting") {
  check_folder(options.folder);
}

void Extraction::take(std::int64_t index, CMessage& message) {
  if (message.load_headers() == nullptr) return;
  const std::shared_ptr<CAttachments> attachments = message.Attachments();
  attachments->SetScanText(options_.scan_text);
  for (std::int64_t number = 0; number < attachments->Count(); ++number) {
    save(index, number, *attachments->Item(number));
  }
  bar_.show(message.EndPosition(), mailbox_.size());
}

void Extraction::save(std::int64_t index, std::int64_t number, const CAttachment& attachment) {
  std::string path;
  try {
    const std::int64_t bytes = save_or_throw(attachment, path);
    if (columns() > 0) bar_.clear();
    if (!options_.json) {
      std::printf("%s\n", path.c_str());
      return;
    }
    Json object{{"message", index}};
    object.update(attachment_object(number, attachment));
    object["bytes"] = bytes;
    object["path"] = path;
    print_json(object);
  } catch (const Failure& failure) {
    bar_.clear();
    std::fprintf(stderr, "vellobar: %s\n", failure.what());
    ++not_written_;
  }
}

std::int64_t Extraction::save_or_throw(const CAttachment& attachment, std::string& path) {
  const UnfinishedWork until_it_is_whole;
  const std::string name = file_name_for(attachment);
  NewFile file = make_new_file(library_path(options_.folder), name, numbers_[name]);
  path = shown(file.path);
  try {
    platform::OutputFile output(std::move(file.handle));
    ShownSink sink(output, bar_, attachment.range(), mailbox_.size());
    attachment.decode_to(sink);
    output.close();
    return sink.written();
  } catch (const std::system_error& error) {
    platform::remove_file(system_path(from_library_path(file.path)));
    stop_if_interrupted();
    throw Failure("cannot write " + path + (platform::is_out_of_room(error.code()) ? ": the disk is full" : ""));
  }
}

void Extraction::end() const {
  if (not_written_ == 0) return;
  throw Failure(std::to_string(not_written_) +
                (not_written_ == 1 ? " attachment was not extracted" : " attachments were not extracted"));
}

}  // namespace vellobar::command
