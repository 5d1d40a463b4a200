// `vellobar attachments FILE [INDEX] [--save DIR]`: the attachments of one message or of all, listed or extracted.
#include "attachments/attachments.h"

#include <CLI/CLI.hpp>
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

/// File names are bytes in the locale's code page; on Windows in the system's.
int file_name_code_page() {
#ifdef _WIN32
  return platform::kAnsiCodePage;
#else
  return terminal_code_page();
#endif
}

std::string file_name_for(const CAttachment& attachment) {
  const std::string name =
      platform::narrow(file_name_code_page(), attachments::safe_file_name(attachment.Name(), file_name_code_page()));
  return name.empty() ? "attachment" : name;
}

/// A file that did not exist before, with the name it got.
struct NewFile {
  fs::path path;
  platform::FileHandle handle;
};

/// Makes "name.ext", or "name (1).ext" and so on where that exists: nothing is ever overwritten.
NewFile make_new_file(const fs::path& folder, const std::string& name) {
  const fs::path wanted(name);
  for (int number = 0;; ++number) {
    fs::path path = folder / wanted;
    if (number > 0) {
      path = folder / (wanted.stem().string() + " (" + std::to_string(number) + ")" + wanted.extension().string());
    }
    platform::FileHandle handle = platform::FileHandle::open(path.string(), platform::Opening::create_new);
    if (handle.valid()) return {std::move(path), std::move(handle)};
    std::error_code ignored;
    if (!fs::exists(fs::symlink_status(path, ignored))) throw Failure("cannot write " + path.string());
  }
}

void save_attachment(const CAttachment& attachment, const std::string& folder) {
  NewFile file = make_new_file(folder, file_name_for(attachment));
  const std::string shown = shown_line(platform::widen(file_name_code_page(), file.path.string()));
  try {
    ProgressBar bar(shown);
    platform::OutputFile output(std::move(file.handle));
    ShownSink sink(output, bar, attachment.range());
    attachment.decode_to(sink);
    output.close();
  } catch (const std::system_error&) {
    throw Failure("cannot write " + shown);
  }
  std::printf("%s\n", shown.c_str());
}

void handle_message(CMessage& message, std::int64_t index, const AttachmentsOptions& options) {
  const std::shared_ptr<CAttachments> attachments = message.Attachments();
  attachments->SetScanText(options.scan_text);
  for (std::int64_t number = 0; number < attachments->Count(); ++number) {
    const CAttachment& attachment = *attachments->Item(number);
    if (options.folder) {
      save_attachment(attachment, *options.folder);
    } else {
      list_attachment(index, number, attachment);
    }
  }
}

void check_folder(const std::string& folder) {
  std::error_code ignored;
  if (!fs::exists(folder, ignored)) throw Failure("cannot save into " + folder + ": there is no such folder");
  if (!fs::is_directory(folder, ignored)) throw Failure("cannot save into " + folder + ": it is not a folder");
}

void run(const AttachmentsOptions& options) {
  CVellobar control;
  lock_mailbox(control, options.file);
  if (options.folder) {
    check_folder(*options.folder);
  } else {
    std::printf("%7s %6s %10s  %-16s  %s\n", "MESSAGE", "NUMBER", "SIZE", "ENCODING", "TYPE\tNAME");
  }
  if (options.index) {
    handle_message(*message_at(control, *options.index, options.file), *options.index, options);
    return;
  }
  for (std::int64_t index = 0; index < control.Messages()->Count(); ++index) {
    const std::shared_ptr<CMessage> message = control.Messages()->Item(index);
    if (message->load_headers() == nullptr) continue;
    handle_message(*message, index, options);
    message->Unload();  // a mailbox of any size is gone through in little memory
  }
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
