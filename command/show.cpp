// `vellobar show FILE INDEX`: one message.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "command/failure.h"
#include "command/path.h"
#include "command/terminal.h"
#include "command/verbs.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "mime/encoded_word.h"

namespace vellobar::command {

namespace {

struct ShowOptions {
  std::string file;
  std::int64_t index = 0;
  bool headers_only = false;
};

void show_headers(CMessage& message) {
  const std::shared_ptr<CHeaders> headers = message.Headers();
  for (std::size_t i = 0; i < static_cast<std::size_t>(headers->Count()); ++i) {
    const std::u16string value = mime::decode_header_value(headers->narrow_value(i));
    std::printf("%s: %s\n", shown_line(headers->name(i)).c_str(), shown_text(value).c_str());
  }
}

void show(const ShowOptions& options) {
  CVellobar control;
  lock_mailbox(control, options.file);
  const std::int64_t count = control.Messages()->Count();
  if (options.index < 0 || options.index >= count) {
    throw Failure("there is no message " + std::to_string(options.index) + ": " + options.file + " holds " +
                  std::to_string(count) + (count == 1 ? " message" : " messages") + ", counted from 0");
  }
  const std::shared_ptr<CMessage> message = control.Messages()->Item(options.index);
  show_headers(*message);
  if (options.headers_only) return;
  std::printf("\n%s", shown_text(message->Text()).c_str());
}

}  // namespace

void add_show(CLI::App& program) {
  const auto options = std::make_shared<ShowOptions>();
  CLI::App* verb = program.add_subcommand("show", "Print a message with its headers decoded");
  verb->add_option("FILE", options->file, "The mailbox")->required();
  verb->add_option("INDEX", options->index, "The message, counted from 0")->required();
  verb->add_flag("--headers", options->headers_only, "Print the headers only");
  verb->callback([options] { show(*options); });
}

}  // namespace vellobar::command
