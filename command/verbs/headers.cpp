// `vellobar headers FILE [MESSAGES...]`: one line a header.
#include "headers/headers.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "command/mail/header_values.h"
#include "command/mail/letters.h"
#include "command/mail/mailbox_file.h"
#include "command/output/columns.h"
#include "command/output/json.h"
#include "command/output/terminal.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"
#include "mailbox/message.h"

namespace vellobar::command {

namespace {

struct HeadersOptions {
  std::string file;
  Selection selection;
  std::vector<std::string> names;
  bool json = false;
};

bool is_wanted(std::u16string_view name, const std::vector<std::u16string>& lower_names) {
  return lower_names.empty() ||
         std::find(lower_names.begin(), lower_names.end(), lower_letters(name)) != lower_names.end();
}

void print_line(std::int64_t index, std::u16string_view name, std::u16string_view value) {
  const auto number = static_cast<long long>(index);
  if (columns() == 0) {
    std::printf("%7lld  %s\t%s\n", number, shown_line(name).c_str(), shown_line(value).c_str());
    return;
  }
  constexpr std::size_t kNameWidth = 24;
  constexpr std::size_t kUsed = 7 + 2 + kNameWidth + 1;
  const std::size_t room = columns() > kUsed ? columns() - kUsed : 0;
  std::printf("%7lld  %s %s\n", number, terminal_bytes(fitted(without_controls(name), kNameWidth)).c_str(),
              terminal_bytes(cut_to(without_controls(value), room)).c_str());
}

void print_headers(std::int64_t index, const CHeaders& headers, const std::vector<std::u16string>& lower_names,
                   bool json) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(headers.Count()); ++i) {
    const std::u16string name = headers.name(i);
    if (!is_wanted(name, lower_names)) continue;
    const std::u16string value = decoded_value(headers, i);
    if (json) {
      print_json({{"message", index},
                  {"header", static_cast<std::int64_t>(i)},
                  {"name", json_text(name)},
                  {"value", json_text(value)}});
    } else {
      print_line(index, name, value);
    }
  }
}

void print_all(const HeadersOptions& options) {
  const MailboxFile mailbox(options.file);
  std::vector<std::u16string> lower_names;
  for (const std::string& name : options.names) lower_names.push_back(lower_letters(core_text(name)));
  if (!options.json) {
    const char* title = columns() == 0 ? "MESSAGE  NAME\tVALUE" : "MESSAGE  NAME                     VALUE";
    std::printf("%s\n", emphasised(Emphasis::heading, title).c_str());
  }
  for_each_selected(mailbox, options.selection, [&](std::int64_t index, CMessage& message) {
    if (const CHeaders* headers = message.load_headers()) print_headers(index, *headers, lower_names, options.json);
  });
}

}  // namespace

void add_headers(CLI::App& program) {
  const auto options = std::make_shared<HeadersOptions>();
  CLI::App* verb = program.add_subcommand("headers", "Print the headers of messages, decoded, one line each");
  verb->add_option("FILE", options->file, "The mailbox; - is standard input")->required();
  verb->add_option("--name", options->names, "Only headers of this name; may be given several times")
      ->allow_extra_args(false)
      ->type_name("NAME");
  verb->add_flag("--json", options->json, "Print one JSON object a line");
  add_selection(*verb, options->selection);
  verb->callback([options] { print_all(*options); });
}

}  // namespace vellobar::command
