// `vellobar list FILE [MESSAGES...]`: one line a message.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string_view>

#include "command/mail/mailbox_file.h"
#include "command/mail/message_date.h"
#include "command/output/columns.h"
#include "command/output/json.h"
#include "command/output/terminal.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"
#include "mailbox/message.h"

namespace vellobar::command {

namespace {

struct ListOptions {
  std::string file;
  Selection selection;
  bool separator_lines = false;
  bool json = false;
};

std::string described(CMessage& message, const ListOptions& options) {
  if (options.separator_lines) return shown_line(message.MailInfo());
  std::string line = shown_line(message.decoded_header("From"));
  line += '\t';
  line += shown_line(message.decoded_header("Date"));
  line += '\t';
  return line += shown_line(message.subject());
}

void print_whole(std::int64_t index, CMessage& message, const ListOptions& options) {
  std::printf("%6lld %12lld %10lld %8lld  %s\n", static_cast<long long>(index),
              static_cast<long long>(message.StartPosition()), static_cast<long long>(message.Size()),
              static_cast<long long>(message.Lines()), described(message, options).c_str());
}

/// What is left of a terminal's line behind the columns of a fixed width.
std::size_t room_behind(std::size_t used) { return columns() > used ? columns() - used : 0; }

std::string fitted_line(std::u16string_view text, std::size_t width) {
  return terminal_bytes(fitted(without_controls(text), width));
}

std::string cut_line(std::u16string_view text, std::size_t width) {
  return terminal_bytes(cut_to(without_controls(text), width));
}

constexpr std::size_t kDateWidth = 16;
constexpr std::size_t kFixedWidth = 6 + 1 + 10 + 2 + kDateWidth + 2;

std::size_t sender_width() { return std::clamp<std::size_t>(room_behind(kFixedWidth) * 2 / 5, 8, 32); }

void print_fitted(std::int64_t index, CMessage& message, const ListOptions& options) {
  const auto number = static_cast<long long>(index);
  const auto size = static_cast<long long>(message.Size());
  if (options.separator_lines) {
    std::printf("%6lld %12lld %10lld  %s\n", number, static_cast<long long>(message.StartPosition()), size,
                cut_line(message.MailInfo(), room_behind(32)).c_str());
    return;
  }
  const std::optional<double> date = date_of(message);
  std::printf("%6lld %10lld  %-*s  %s  %s\n", number, size, static_cast<int>(kDateWidth),
              date ? local_minute(*date).c_str() : "",
              fitted_line(message.decoded_header("From"), sender_width()).c_str(),
              cut_line(message.subject(), room_behind(kFixedWidth + sender_width() + 2)).c_str());
}

void print_object(std::int64_t index, CMessage& message) {
  const std::optional<double> date = date_of(message);
  print_json({{"message", index},
              {"position", message.StartPosition()},
              {"size", message.Size()},
              {"lines", message.Lines()},
              {"separator", json_text(message.MailInfo())},
              {"from", json_text(message.decoded_header("From"))},
              {"to", json_text(message.decoded_header("To"))},
              {"date", json_text(message.decoded_header("Date"))},
              {"time", date ? Json(utc_timestamp(*date)) : Json()},
              {"subject", json_text(message.subject())},
              {"message_id", json_text(message.decoded_header("Message-ID"))}});
}

std::string heading(const ListOptions& options) {
  char line[120];
  if (columns() == 0) {
    std::snprintf(line, sizeof line, "%6s %12s %10s %8s  %s", "INDEX", "POSITION", "SIZE", "LINES",
                  options.separator_lines ? "SEPARATOR LINE" : "FROM\tDATE\tSUBJECT");
  } else if (options.separator_lines) {
    std::snprintf(line, sizeof line, "%6s %12s %10s  %s", "INDEX", "POSITION", "SIZE", "SEPARATOR LINE");
  } else {
    std::snprintf(line, sizeof line, "%6s %10s  %-*s  %-*s  %s", "INDEX", "SIZE", static_cast<int>(kDateWidth), "DATE",
                  static_cast<int>(sender_width()), "FROM", "SUBJECT");
  }
  return emphasised(Emphasis::heading, line);
}

void list(const ListOptions& options) {
  const MailboxFile mailbox(options.file);
  if (!options.json) std::printf("%s\n", heading(options).c_str());
  const auto print = columns() == 0 ? print_whole : print_fitted;
  for_each_selected(mailbox, options.selection, [&](std::int64_t index, CMessage& message) {
    if (options.json) return print_object(index, message);
    print(index, message, options);
  });
}

}  // namespace

void add_list(CLI::App& program) {
  const auto options = std::make_shared<ListOptions>();
  CLI::App* verb = program.add_subcommand("list", "List the messages of a mailbox, one line each");
  verb->add_option("FILE", options->file, "The mailbox; - is standard input")->required();
  verb->add_flag("--separator-lines", options->separator_lines,
                 "Show the line that introduces each message instead of its From, Date and Subject");
  verb->add_flag("--json", options->json, "Print one JSON object a line");
  add_selection(*verb, options->selection);
  verb->callback([options] { list(*options); });
}

}  // namespace vellobar::command
