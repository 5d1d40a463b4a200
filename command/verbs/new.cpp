// `vellobar new OUT`: a new message made of options.
#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "command/output/failure.h"
#include "command/output/output.h"
#include "command/output/path.h"
#include "command/output/process_text.h"
#include "command/output/terminal.h"
#include "command/verbs/verbs.h"
#include "compose/composition.h"
#include "errors/error.h"
#include "mailbox/message.h"
#include "mime/encoded_word.h"

namespace vellobar::command {

namespace {

struct NewOptions {
  std::string out, from, to, subject;
  std::optional<std::string> text, html;
  std::vector<std::string> attachments;
};

/// What an attachment is called in the message, which holds ASCII only: another name becomes an encoded word.
std::u16string name_in_mail(const std::string& path) {
  const std::string name = from_library_path(library_path(path).filename());
  return mime::has_8_bit_bytes(name) ? mime::utf8_encoded_word(core_text(name)) : core_text(name);
}

void attach(CMessage& message, const std::string& path) {
  try {
    compose::attach(message, name_in_mail(path), core_path(path));
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

std::shared_ptr<CMessage> composed_message(const NewOptions& options) {
  const ProcessText in_locale;
  std::shared_ptr<CMessage> message =
      compose::new_message(core_text(options.from), core_text(options.to), core_text(options.subject));
  set_texts(*message, options);
  compose::add_component_headers(*message);
  return message;
}

void write_new(const NewOptions& options) {
  const std::shared_ptr<CMessage> message = composed_message(options);
  for (const std::string& path : options.attachments) attach(*message, path);
  Output output(options.out, Output::Existing::is_replaced);
  message->write(output, CMessage::Place::alone, true);
  output.finish();
}

}  // namespace

void add_new(CLI::App& program) {
  const auto options = std::make_shared<NewOptions>();
  CLI::App* verb = program.add_subcommand("new", "Write a new message to a file");
  verb->add_option("OUT", options->out, "The file to write, which is created or replaced; - is standard output")
      ->required();
  verb->add_option("--from", options->from, "The sender")->type_name("ADDRESS");
  verb->add_option("--to", options->to, "The recipients, divided by commas")->type_name("ADDRESSES");
  verb->add_option("--subject", options->subject, "The subject")->type_name("TEXT");
  verb->add_option("--text", options->text, "The plain text")->type_name("TEXT");
  verb->add_option("--html", options->html, "The HTML text")->type_name("HTML");
  verb->add_option("--attachment", options->attachments, "A file to attach; may be given several times")
      ->allow_extra_args(false)
      ->type_name("FILE");
  verb->callback([options] { write_new(*options); });
}

}  // namespace vellobar::command
