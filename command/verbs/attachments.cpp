// `vellobar attachments FILE [MESSAGES...]`, which lists what is attached, and `vellobar extract FILE FOLDER
// [MESSAGES...]`, which saves it.
#include "attachments/attachments.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "attachments/attachment.h"
#include "command/mail/attachment_rows.h"
#include "command/mail/extraction.h"
#include "command/mail/mailbox_file.h"
#include "command/output/columns.h"
#include "command/output/failure.h"
#include "command/output/path.h"
#include "command/output/terminal.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"
#include "mailbox/message.h"

namespace vellobar::command {

namespace {

struct AttachmentsOptions {
  std::string file;
  Selection selection;
  Extraction::Options extraction;
};

constexpr std::size_t kTypeWidth = 24;

void print_line(std::int64_t message, std::int64_t number, const CAttachment& attachment) {
  std::printf("%7lld %6lld %10lld  %-16s  ", static_cast<long long>(message), static_cast<long long>(number),
              static_cast<long long>(attachment.Size()), encoding_name(attachment.Encoding()));
  if (columns() == 0) {
    std::printf("%s\t%s\n", shown_line(attachment.Type()).c_str(), shown_line(attachment.Name()).c_str());
    return;
  }
  constexpr std::size_t kUsed = 7 + 1 + 6 + 1 + 10 + 2 + 16 + 2 + kTypeWidth + 2;
  const std::size_t room = columns() > kUsed + 8 ? columns() - kUsed : 8;
  std::printf("%s  %s\n", terminal_bytes(fitted(without_controls(attachment.Type()), kTypeWidth)).c_str(),
              terminal_bytes(cut_to(without_controls(attachment.Name()), room)).c_str());
}

void print_heading() {
  char line[120];
  const char* names = columns() == 0 ? "TYPE\tNAME" : "TYPE                      NAME";
  std::snprintf(line, sizeof line, "%7s %6s %10s  %-16s  %s", "MESSAGE", "NUMBER", "SIZE", "ENCODING", names);
  std::printf("%s\n", emphasised(Emphasis::heading, line).c_str());
}

void print_attachments(std::int64_t index, CMessage& message, const Extraction::Options& options) {
  if (message.load_headers() == nullptr) return;
  const std::shared_ptr<CAttachments> attachments = message.Attachments();
  attachments->SetScanText(options.scan_text);
  for (std::int64_t number = 0; number < attachments->Count(); ++number) {
    const CAttachment& attachment = *attachments->Item(number);
    if (!options.json) {
      print_line(index, number, attachment);
      continue;
    }
    Json object{{"message", index}};
    object.update(attachment_object(number, attachment));
    print_json(object);
  }
}

void list(const AttachmentsOptions& options) {
  const MailboxFile mailbox(options.file);
  if (!options.extraction.json) print_heading();
  for_each_selected(mailbox, options.selection, [&](std::int64_t index, CMessage& message) {
    print_attachments(index, message, options.extraction);
  });
}

void extract(const AttachmentsOptions& options) {
  const MailboxFile mailbox(options.file);
  Extraction extraction(mailbox, options.extraction);
  for_each_selected(mailbox, options.selection,
                    [&](std::int64_t index, CMessage& message) { extraction.take(index, message); });
  extraction.end();
}

void make_folder(const std::string& folder) {
  std::error_code problem;
  std::filesystem::create_directory(library_path(folder), problem);
  if (problem && !std::filesystem::exists(library_path(folder), problem)) {
    throw Failure("cannot make the folder " + folder);
  }
}

void add_common_options(CLI::App& verb, AttachmentsOptions& options) {
  verb.add_flag("--scan-text", options.extraction.scan_text, "Look for UU blocks in the text as well");
  verb.add_flag("--json", options.extraction.json, "Print one JSON object a line");
  add_selection(verb, options.selection);
}

}  // namespace

void add_attachments(CLI::App& program) {
  const auto options = std::make_shared<AttachmentsOptions>();
  CLI::App* verb = program.add_subcommand("attachments", "List the attachments of messages");
  verb->add_option("FILE", options->file, "The mailbox; - is standard input")->required();
  CLI::Option* save =
      verb->add_option("--save", options->extraction.folder, "Save them into this folder, as extract does")
          ->type_name("FOLDER");
  add_common_options(*verb, *options);
  verb->callback([options, save] { save->count() > 0 ? extract(*options) : list(*options); });
}

void add_extract(CLI::App& program) {
  const auto options = std::make_shared<AttachmentsOptions>();
  CLI::App* verb = program.add_subcommand(
      "extract", "Save the attachments of messages into a folder; existing files stay, new ones are numbered");
  verb->add_option("FILE", options->file, "The mailbox; - is standard input")->required();
  verb->add_option("FOLDER", options->extraction.folder, "The folder, which is made when it is missing")->required();
  add_common_options(*verb, *options);
  verb->callback([options] {
    make_folder(options->extraction.folder);
    extract(*options);
  });
}

}  // namespace vellobar::command
