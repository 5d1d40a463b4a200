// `vellobar attachments FILE [INDEX] [--save DIR]`: the attachments of one message or of all, listed or extracted.
#include "attachments/attachments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "attachments/attachment.h"
#include "attachments/safe_name.h"
#include "codecs/attachment_encoding.h"
#include "command/failure.h"
#include "command/path.h"
#include "command/progress_bar.h"
#include "command/terminal.h"
#include "command/verbs.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar::command {

namespace {

namespace fs = std::filesystem;

struct AttachmentsOptions {
  std::string file;
  std::optional<std::int64_t> index;
  std::optional<std::string> folder;
  bool scan_text = false;
};

const char* encoding_name(int encoding) {
  constexpr const char* kNames[] = {"unknown", "base64", "binhex", "uuencode", "quoted-printable", "7bit"};
  return kNames[encoding];
}

void list_attachment(std::int64_t message, std::int64_t number, const CAttachment& attachment) {
  std::printf("%7lld %6lld %10lld  %-16s  %s\t%s\n", static_cast<long long>(message), static_cast<long long>(number),
              static_cast<long long>(attachment.Size()), encoding_name(attachment.Encoding()),
              shown_line(attachment.Type()).c_str(), shown_line(attachment.Name()).c_str());
}

/// Passes everything on, and shows how far the attachment was read.
class ShownSink final : public platform::ByteSink {
 public:
  ShownSink(platform::ByteSink& to, ProgressBar& bar, const CodedRange& range) : to_(to), bar_(bar), range_(range) {}

  void write(std::string_view bytes) override {
    to_.write(bytes);
    bar_.show(range_.file->read_up_to() - range_.start, range_.end - range_.start);
  }

 private:
  platform::ByteSink& to_;
  ProgressBar& bar_;
  const CodedRange& range_;
};

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

/// Makes "name.ext", or "name (1).ext" and so on where that exists: nothing is ever overwritten.
NewFile make_new_file(const fs::path& folder, const std::string& name) {
  const fs::path wanted = library_path(name);
  for (int number = 0;; ++number) {
    fs::path path = folder / wanted;
    if (number > 0) {
      path = folder / wanted.stem();
      path += " (" + std::to_string(number) + ")";
      path += wanted.extension();
    }
    const std::string system_name = system_path(from_library_path(path));
    platform::FileHandle handle = platform::FileHandle::open(system_name, platform::Opening::create_new);
    if (handle.valid()) return {std::move(path), std::move(handle)};
    std::error_code ignored;
    if (!fs::exists(fs::symlink_status(path, ignored))) throw Failure("cannot write " + shown(path));
  }
}

void write_decoded(const CAttachment& attachment, NewFile& file) {
  ProgressBar bar(shown(file.path));
  platform::OutputFile output(std::move(file.handle));
  ShownSink sink(output, bar, attachment.range());
  attachment.decode_to(sink);
  output.close();
}

void save_attachment(const CAttachment& attachment, const std::string& folder) {
  NewFile file = make_new_file(library_path(folder), file_name_for(attachment));
  try {
    write_decoded(attachment, file);
  } catch (const std::system_error&) {
    platform::remove_file(system_path(from_library_path(file.path)));
    throw Failure("cannot write " + shown(file.path));
  }
  std::printf("%s\n", shown(file.path).c_str());
}

/// Goes through attachments, listing or extracting them. One that cannot be written does not keep the others.
class AttachmentsRun {
 public:
  explicit AttachmentsRun(const AttachmentsOptions& options) : options_(options) {}

  void take(CMessage& message, std::int64_t index) {
    const std::shared_ptr<CAttachments> attachments = message.Attachments();
    attachments->SetScanText(options_.scan_text);
    for (std::int64_t number = 0; number < attachments->Count(); ++number) {
      const CAttachment& attachment = *attachments->Item(number);
      if (options_.folder) {
        save(attachment);
      } else {
        list_attachment(index, number, attachment);
      }
    }
  }

  /// Throws a Failure when something could not be written.
  void end() const {
    if (not_written_ == 0) return;
    throw Failure(std::to_string(not_written_) +
                  (not_written_ == 1 ? " attachment was not extracted" : " attachments were not extracted"));
  }

 private:
  void save(const CAttachment& attachment) {
    try {
      save_attachment(attachment, *options_.folder);
    } catch (const Failure& failure) {
      std::fprintf(stderr, "vellobar: %s\n", failure.what());
      ++not_written_;
    }
  }

  const AttachmentsOptions& options_;
  std::int64_t not_written_ = 0;
};

void check_folder(const std::string& folder) {
  std::error_code ignored;
  const fs::file_status status = fs::status(library_path(folder), ignored);
  if (!fs::exists(status)) throw Failure("cannot save into " + folder + ": there is no such folder");
  if (!fs::is_directory(status)) throw Failure("cannot save into " + folder + ": it is not a folder");
}

void run(const AttachmentsOptions& options) {
  CVellobar control;
  lock_mailbox(control, options.file);
  if (options.folder) {
    check_folder(*options.folder);
  } else {
    std::printf("%7s %6s %10s  %-16s  %s\n", "MESSAGE", "NUMBER", "SIZE", "ENCODING", "TYPE\tNAME");
  }
  AttachmentsRun attachments(options);
  if (options.index) {
    attachments.take(*message_at(control, *options.index, options.file), *options.index);
    return attachments.end();
  }
  for (std::int64_t index = 0; index < control.Messages()->Count(); ++index) {
    const std::shared_ptr<CMessage> message = control.Messages()->Item(index);
    if (message->load_headers() == nullptr) continue;
    attachments.take(*message, index);
    message->Unload();  // a mailbox of any size is gone through in little memory
  }
  attachments.end();
}

}  // namespace

void add_attachments(CLI::App& program) {
  const auto options = std::make_shared<AttachmentsOptions>();
  CLI::App* verb = program.add_subcommand("attachments", "List or extract the attachments of a mailbox or a message");
  verb->add_option("FILE", options->file, "The mailbox")->required();
  verb->add_option("INDEX", options->index, "The message, counted from 0; all of them when it is left out");
  verb->add_option("--save", options->folder, "Extract into this folder; existing files stay, new ones are numbered");
  verb->add_flag("--scan-text", options->scan_text, "Look for UU blocks in the text as well");
  verb->callback([options] { run(*options); });
}

}  // namespace vellobar::command
