// `vellobar export FILE OUT [MESSAGES...]`: messages into a new mailbox, byte for byte.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "command/mail/counted.h"
#include "command/mail/mailbox_file.h"
#include "command/output/failure.h"
#include "command/output/output.h"
#include "command/output/path.h"
#include "command/output/progress_bar.h"
#include "command/output/standard_streams.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"
#include "mailbox/message.h"
#include "platform/file.h"

namespace vellobar::command {

namespace {

struct ExportOptions {
  std::string file, out;
  Selection selection;
  bool replace = false;
};

void export_messages(const ExportOptions& options) {
  const MailboxFile mailbox(options.file);
  const bool is_shown = !is_standard_stream(options.out);
  if (is_shown && mailbox.file().is_same_file(system_path(options.out))) {
    throw Failure(options.file + " is both the mailbox and the output");
  }
  Output output(options.out, options.replace ? Output::Existing::is_replaced : Output::Existing::is_refused);
  std::int64_t count = 0;
  {
    ProgressBar bar("exporting");
    for_each_selected(mailbox, options.selection, [&](std::int64_t index, CMessage& message) {
      mailbox.copy(index, output);
      bar.show(message.EndPosition(), mailbox.size());
      ++count;
    });
  }
  output.finish();
  if (is_shown) std::printf("%s exported\n", counted_messages(count).c_str());
}

}  // namespace

void add_export(CLI::App& program) {
  const auto options = std::make_shared<ExportOptions>();
  CLI::App* verb = program.add_subcommand("export", "Copy messages into a new mailbox, byte for byte");
  verb->add_option("FILE", options->file, "The mailbox; - is standard input")->required();
  verb->add_option("OUT", options->out, "The new mailbox; - is standard output")->required();
  verb->add_flag("--replace", options->replace, "Replace OUT when it is there");
  add_selection(*verb, options->selection);
  verb->callback([options] { export_messages(*options); });
}

}  // namespace vellobar::command
