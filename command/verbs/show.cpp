// `vellobar show FILE MESSAGES...`: messages as a person wants them, with their headers, text, parts and attachments.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "command/mail/attachment_rows.h"
#include "command/mail/header_values.h"
#include "command/mail/mailbox_file.h"
#include "command/mail/part_places.h"
#include "command/output/failure.h"
#include "command/output/json.h"
#include "command/output/terminal.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/code_page.h"

namespace vellobar::command {

namespace {

struct ShowOptions {
  std::string file;
  Selection selection;
  bool headers_only = false;
  bool json = false;
};

/// A decoded value with each of its further lines indented: what mail encodes cannot pass for a header of its own, nor
/// for the end of the headers.
std::string shown_value(std::u16string_view value) {
  std::u16string lines;
  for (const char16_t c : value) {
    if (c == u'\r') continue;
    const bool begins_line = lines.ends_with(u'\n');
    if (begins_line && c != u' ' && c != u'\t') lines += u'\t';
    lines += c;
  }
  if (lines.ends_with(u'\n')) lines += u'\t';
  return shown_text(std::move(lines));
}

void show_headers(CMessage& message) {
  const std::shared_ptr<CHeaders> headers = message.Headers();
  for (std::size_t i = 0; i < static_cast<std::size_t>(headers->Count()); ++i) {
    std::printf("%s: %s\n", shown_line(headers->name(i)).c_str(), shown_value(decoded_value(*headers, i)).c_str());
  }
}

/// A part's text in the charset that the part itself names.
std::u16string text_of_part(CMessage& part, std::u16string (CMessage::*decoded_text)()) {
  if (!part.ContentTransferEncoding().empty()) return (part.*decoded_text)();
  // As few copies at a time as can be: a text may be most of the mailbox.
  const std::string bytes = platform::narrow(platform::process_code_page(), part.Text());
  std::u16string read = platform::widen(part.code_page(), bytes);
  if (read.empty()) return part.Text();
  return read;
}

std::u16string readable_text(CMessage& message) {
  if (const auto plain = message.find_part(u"text/plain")) return text_of_part(*plain, &CMessage::PlainText);
  if (const auto html = message.find_part(u"text/html")) return text_of_part(*html, &CMessage::HTMLText);
  return text_of_part(message, &CMessage::PlainText);
}

void show_text(CMessage& message) {
  const std::string text = shown_text(readable_text(message));
  std::printf("\n%s%s", text.c_str(), text.ends_with('\n') ? "" : "\n");
}

/// The content type of a part without its parameters.
std::u16string type_of(CMessage& part) {
  const std::u16string type = part.ContentType();
  return type.substr(0, type.find(u';'));
}

void show_tree(CMessage& message) {
  if (message.Parts()->Count() == 0) return;
  std::printf("\nParts:\n");
  const std::int64_t too_deep = for_each_listed_part(message, [](CMessage& part, const std::string& place) {
    const std::u16string type = type_of(part);
    std::printf("  %s %s, %lld bytes\n", place.c_str(), type.empty() ? "no type" : shown_line(type).c_str(),
                static_cast<long long>(part.Size()));
  });
  if (too_deep > 0) std::printf("  %lld more, deeper than %zu\n", static_cast<long long>(too_deep), kDeepestListed);
}

void show_attachments(CMessage& message) {
  const std::shared_ptr<CAttachments> attachments = message.Attachments();
  if (attachments->Count() == 0) return;
  std::printf("\nAttachments:\n");
  for (std::int64_t i = 0; i < attachments->Count(); ++i) {
    const std::shared_ptr<CAttachment> attachment = attachments->Item(i);
    std::printf("  %lld %s (%s, about %lld bytes)\n", static_cast<long long>(i),
                attachment->Name().empty() ? "without a name" : shown_line(attachment->Name()).c_str(),
                shown_line(attachment->Type()).c_str(), static_cast<long long>(attachment->Size()));
  }
}

void show_message(CMessage& message, const ShowOptions& options) {
  show_headers(message);
  if (options.headers_only) return;
  show_text(message);
  show_tree(message);
  show_attachments(message);
}

void add_parts(CMessage& message, Json& object) {
  Json parts = Json::array();
  const std::int64_t too_deep = for_each_listed_part(message, [&](CMessage& part, const std::string& place) {
    parts.push_back({{"part", place}, {"type", json_text(type_of(part))}, {"size", part.Size()}});
  });
  object["parts"] = std::move(parts);
  if (too_deep > 0) object["deeper_parts"] = too_deep;
}

void print_object(std::int64_t index, CMessage& message, const ShowOptions& options) {
  Json object{{"message", index},
              {"position", message.StartPosition()},
              {"size", message.Size()},
              {"separator", json_text(message.MailInfo())},
              {"headers", headers_array(*message.Headers())}};
  if (!options.headers_only) {
    object["text"] = json_text(readable_text(message));
    add_parts(message, object);
    object["attachments"] = attachments_array(message);
  }
  print_json(object);
}

void show(const ShowOptions& options) {
  if (options.selection.is_empty()) throw WrongUse("say which messages to show: a number such as 0, or 0- for all");
  const MailboxFile mailbox(options.file);
  bool is_first = true;
  for_each_selected(mailbox, options.selection, [&](std::int64_t index, CMessage& message) {
    if (options.json) return print_object(index, message, options);
    if (!is_first) std::printf("\n");
    is_first = false;
    show_message(message, options);
  });
}

}  // namespace

void add_show(CLI::App& program) {
  const auto options = std::make_shared<ShowOptions>();
  CLI::App* verb =
      program.add_subcommand("show", "Print messages: their headers, their text, their parts and their attachments");
  verb->add_option("FILE", options->file, "The mailbox; - is standard input")->required();
  verb->add_flag("--headers", options->headers_only, "Print the headers only");
  verb->add_flag("--json", options->json, "Print one JSON object a line");
  add_selection(*verb, options->selection);
  verb->callback([options] { show(*options); });
}

}  // namespace vellobar::command
