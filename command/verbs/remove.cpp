// `vellobar remove FILE MESSAGES...`: messages out of a mailbox; the others stay byte for byte.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <vector>

#include "command/mail/counted.h"
#include "command/mail/mailbox_file.h"
#include "command/mail/mailbox_rewrite.h"
#include "command/output/failure.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"

namespace vellobar::command {

namespace {

struct RemoveOptions {
  std::string file;
  Selection selection;
};

void remove_messages(const RemoveOptions& options) {
  if (options.selection.is_empty()) throw WrongUse("say which messages to remove: a number such as 0, or 0- for all");
  check_editable(options.file);
  const MailboxFile mailbox(options.file);
  const std::vector<std::int64_t> removed = selected(mailbox, options.selection);
  if (!removed.empty()) {
    rewrite_mailbox(mailbox, [&](platform::ByteSink& to) {
      auto next = removed.begin();
      for (std::int64_t index = 0; index < mailbox.count(); ++index) {
        if (next != removed.end() && *next == index) {
          ++next;
        } else {
          mailbox.copy(index, to);
        }
      }
    });
  }
  const auto count = static_cast<std::int64_t>(removed.size());
  std::printf("%s removed, %lld left\n", counted_messages(count).c_str(),
              static_cast<long long>(mailbox.count() - count));
}

}  // namespace

void add_remove(CLI::App& program) {
  const auto options = std::make_shared<RemoveOptions>();
  CLI::App* verb = program.add_subcommand("remove", "Remove messages from a mailbox; the others stay byte for byte");
  verb->add_option("FILE", options->file, "The mailbox")->required();
  add_selection(*verb, options->selection);
  verb->callback([options] { remove_messages(*options); });
}

}  // namespace vellobar::command
