// `vellobar new OUT`: a new message made of options.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "command/failure.h"
#include "command/terminal.h"
#include "command/verbs.h"
#include "compose/composition.h"
#include "errors/error.h"
#include "mailbox/message.h"
#include "mailbox/vellobar.h"
#include "platform/code_page.h"

namespace vellobar::command {

namespace {

struct NewOptions {
  std::string out, from, to, subject;
  std::optional<std::string> text, html;
  std::vector<std::string> attachments;
};

/// Arguments, file names among them, as the core takes them once the process code page is that of the locale.
std::u16string core_text(const std::string& argument) {
  return platform::widen(platform::process_code_page(), argument);
}

void attach(CMessage& message, const std::string& path) {
  const std::u16string name = core_text(std::filesystem::path(path).filename().string());
  try {
    compose::attach(message, name, core_text(path));
  } catch (const Error& error) {
    throw Failure("cannot attach " + path + ": " + error.what());
  }
}

void set_texts(CMessage& message, const NewOptions& options) {
  const std::u16string text = core_text(options.text.value_or(""));
  if (!options.html && options.attachments.empty()) {
    message.SetText(text);
    message.SetContentType(u"text/plain");
    return;
  }
  if (!options.html) message.make_multipart(u"mixed");
  if (options.text || !options.html) message.set_text_part(u"text/plain", text);
  if (options.html) message.set_text_part(u"text/html", core_text(*options.html));
}

void write_new(const NewOptions& options) {
#ifndef _WIN32
  CVellobar::SetCharSet(terminal_code_page());
#endif
  const std::shared_ptr<CMessage> message =
      compose::new_message(core_text(options.from), core_text(options.to), core_text(options.subject));
  set_texts(*message, options);
  compose::add_component_headers(*message);
  for (const std::string& path : options.attachments) attach(*message, path);
  try {
    message->Save(core_text(options.out));
  } catch (const Error& error) {
    if (error.number() != ErrorNumber::cannot_update_mailbox) throw;
    throw Failure("cannot write " + options.out);
  }
}

}  // namespace

void add_new(CLI::App& program) {
  const auto options = std::make_shared<NewOptions>();
  CLI::App* verb = program.add_subcommand("new", "Write a new message to a file");
  verb->add_option("OUT", options->out, "The file to write; it is created or replaced")->required();
  verb->add_option("--from", options->from, "The sender");
  verb->add_option("--to", options->to, "The recipients, divided by commas");
  verb->add_option("--subject", options->subject, "The subject");
  verb->add_option("--text", options->text, "The plain text");
  verb->add_option("--html", options->html, "The HTML text");
  verb->add_option("--attachment", options->attachments, "A file to attach; may be given several times")
      ->allow_extra_args(false);
  verb->callback([options] { write_new(*options); });
}

}  // namespace vellobar::command
