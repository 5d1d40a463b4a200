// `vellobar list FILE`: one line a message.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "command/path.h"
#include "command/terminal.h"
#include "command/verbs.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"

namespace vellobar::command {

namespace {

struct ListOptions {
  std::string file;
  bool separator_lines = false;
};

std::string described(CMessage& message, const ListOptions& options) {
  if (options.separator_lines) return shown_line(message.MailInfo());
  return shown_line(message.From()) + "\t" + shown_line(message.decoded_header("Date")) + "\t" +
         shown_line(message.Subject());
}

void list(const ListOptions& options) {
  CVellobar control;
  lock_mailbox(control, options.file);
  const std::shared_ptr<CMessages> messages = control.Messages();
  std::printf("%6s %12s %10s %8s  %s\n", "INDEX", "POSITION", "SIZE", "LINES",
              options.separator_lines ? "SEPARATOR LINE" : "FROM\tDATE\tSUBJECT");
  for (std::int64_t index = 0; index < messages->Count(); ++index) {
    const std::shared_ptr<CMessage> message =
        messages->for_walking(index);  // not kept: any mailbox takes little memory
    std::printf("%6lld %12lld %10lld %8lld  %s\n", static_cast<long long>(index),
                static_cast<long long>(message->StartPosition()), static_cast<long long>(message->Size()),
                static_cast<long long>(message->Lines()), described(*message, options).c_str());
  }
}

}  // namespace

void add_list(CLI::App& program) {
  const auto options = std::make_shared<ListOptions>();
  CLI::App* verb = program.add_subcommand("list", "List the messages of a mailbox, one line each");
  verb->add_option("FILE", options->file, "The mailbox")->required();
  verb->add_flag("--separator-lines", options->separator_lines,
                 "Show the line that introduces each message instead of its From, Date and Subject");
  verb->callback([options] { list(*options); });
}

}  // namespace vellobar::command
