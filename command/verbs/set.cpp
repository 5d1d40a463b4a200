// `vellobar set FILE MESSAGES... --set "Name: value"`: edits headers; everything else stays byte for byte.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "command/mail/counted.h"
#include "command/mail/header_edits.h"
#include "command/mail/mailbox_file.h"
#include "command/mail/mailbox_rewrite.h"
#include "command/output/failure.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"
#include "headers/header_block.h"
#include "platform/file.h"

namespace vellobar::command {

namespace {

struct SetOptions {
  std::string file;
  Selection selection;
  std::vector<std::string> set, added, removed;
};

HeaderEdits edits_of(const SetOptions& options) {
  HeaderEdits edits;
  for (const std::string& name : options.removed) check_header_name(name);
  edits.removed = options.removed;
  for (const std::string& header : options.set) edits.set.push_back(parse_header(header));
  for (const std::string& header : options.added) edits.added.push_back(parse_header(header));
  if (edits.is_empty())
    throw WrongUse("say what to edit: --set \"Name: value\", --add \"Name: value\" or --remove Name");
  if (options.selection.is_empty()) throw WrongUse("say which messages to edit: a number such as 0, or 0- for all");
  return edits;
}

/// Where the header block of a message lies, without its empty line, and how the line before it ends.
struct Block {
  std::int64_t start = 0;
  std::int64_t end = 0;
  std::string_view line_end = "\n";
};

/// Throws Failure for a block that cannot be read.
Block block_of(const MailboxFile& mailbox, std::int64_t index) {
  const mailbox::Extent& extent = mailbox.extent(index);
  headers::LineReader reader(mailbox.file(), extent.start);
  Block block;
  if (extent.has_separator) {
    std::string_view line;
    do line = reader.next();
    while (line.size() == headers::kLongestLine && !line.ends_with('\n'));
    if (line.ends_with("\r\n")) block.line_end = "\r\n";
  }
  block.start = block.end = std::min(reader.position(), extent.end);
  while (block.end < extent.end) {
    const std::string_view line = reader.next();
    if (line.size() >= headers::kLongestLine || reader.failed()) {
      throw Failure("message " + std::to_string(index) + " has a header line of " +
                    std::to_string(headers::kLongestLine) + " bytes or more: its headers cannot be edited");
    }
    if (headers::cut_line(line).empty()) break;
    block.end = std::min(reader.position(), extent.end);
  }
  return block;
}

std::string edited(const MailboxFile& mailbox, std::int64_t index, const Block& block, const HeaderEdits& edits) {
  std::string bytes(static_cast<std::size_t>(block.end - block.start), '\0');
  bytes.resize(mailbox.file().read(block.start, bytes.data(), bytes.size()));
  const std::optional<std::string> done = edited_headers(bytes, edits, block.line_end);
  if (!done) {
    throw Failure("the headers of message " + std::to_string(index) +
                  " begin with a blank: remove it first, at position " + std::to_string(block.start));
  }
  return *done;
}

void write_edited(const MailboxFile& mailbox, std::int64_t index, const HeaderEdits& edits, platform::ByteSink& to) {
  const Block block = block_of(mailbox, index);
  mailbox.copy_range(mailbox.extent(index).start, block.start, to);
  to.write(edited(mailbox, index, block, edits));
  mailbox.copy_range(block.end, mailbox.extent(index).end, to);
}

void set_headers(const SetOptions& options) {
  const HeaderEdits edits = edits_of(options);
  check_editable(options.file);
  const MailboxFile mailbox(options.file);
  const std::vector<std::int64_t> chosen = selected(mailbox, options.selection);
  if (!chosen.empty()) {
    rewrite_mailbox(mailbox, [&](platform::ByteSink& to) {
      auto next = chosen.begin();
      for (std::int64_t index = 0; index < mailbox.count(); ++index) {
        if (next != chosen.end() && *next == index) {
          ++next;
          write_edited(mailbox, index, edits, to);
        } else {
          mailbox.copy(index, to);
        }
      }
    });
  }
  std::printf("%s edited\n", counted_messages(static_cast<std::int64_t>(chosen.size())).c_str());
}

CLI::Option* add_edit(CLI::App& verb, const char* name, std::vector<std::string>& to, const char* description) {
  return verb.add_option(name, to, description)->allow_extra_args(false);
}

}  // namespace

void add_set(CLI::App& program) {
  const auto options = std::make_shared<SetOptions>();
  CLI::App* verb = program.add_subcommand("set", "Edit headers of messages; everything else stays byte for byte");
  verb->add_option("FILE", options->file, "The mailbox")->required();
  add_edit(*verb, "--remove", options->removed, "Remove every header of this name")->type_name("NAME");
  add_edit(*verb, "--set", options->set, "Set a header, in the place of those of its name")->type_name("'NAME: VALUE'");
  add_edit(*verb, "--add", options->added, "Add a header behind the others")->type_name("'NAME: VALUE'");
  add_selection(*verb, options->selection);
  verb->callback([options] { set_headers(*options); });
}

}  // namespace vellobar::command
