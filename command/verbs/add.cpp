// `vellobar add FILE FROM...`: messages of other mailboxes, and message files, to the end of a mailbox.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "command/mail/appending.h"
#include "command/mail/counted.h"
#include "command/mail/mailbox_file.h"
#include "command/mail/mailbox_rewrite.h"
#include "command/output/failure.h"
#include "command/output/output.h"
#include "command/output/path.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"
#include "mailbox/separator_line.h"

namespace vellobar::command {

namespace {

struct AddOptions {
  std::string file;
  std::vector<std::string> sources;
  Selection selection;
};

/// Where messages come from: a mailbox, of which some are chosen, or a file that is one message.
struct Source {
  std::shared_ptr<platform::File> file;
  std::optional<MailboxFile> mailbox;
  std::vector<std::int64_t> chosen;

  std::int64_t count() const { return mailbox ? static_cast<std::int64_t>(chosen.size()) : 1; }

  void append_to(Appender& appender) const {
    if (!mailbox) return appender.add(*file);
    for (const std::int64_t index : chosen) appender.add(*mailbox, index);
  }
};

bool begins_with_separator(platform::File& file) {
  std::string line(mailbox::kSeparator.size(), '\0');
  return file.read(0, line.data(), line.size()) == line.size() && line == mailbox::kSeparator;
}

Source source_at(const std::string& path, const Selection& selection) {
  Source source{open_mail(path), std::nullopt, {}};
  if (source.file->size() == 0) throw Failure("cannot add " + path + ": it is empty");
  if (begins_with_separator(*source.file)) {
    source.mailbox.emplace(path, source.file);
    source.chosen = selected(*source.mailbox, selection);
  } else if (!selection.is_empty()) {
    throw WrongUse(path + " is one message, of which nothing can be chosen");
  }
  return source;
}

/// How lines of a mailbox end, told by its first one.
std::string_view line_end_of(platform::File& file) {
  std::string front(4096, '\0');
  front.resize(file.read(0, front.data(), front.size()));
  const std::size_t feed = front.find('\n');
  return feed != front.npos && feed > 0 && front[feed - 1] == '\r' ? "\r\n" : "\n";
}

void append(const std::vector<Source>& sources, Appender& appender) {
  for (const Source& source : sources) source.append_to(appender);
}

void add_messages(const AddOptions& options) {
  check_editable(options.file);
  std::vector<Source> sources;
  std::int64_t count = 0;
  for (const std::string& path : options.sources) {
    sources.push_back(source_at(path, options.selection));
    count += sources.back().count();
  }
  std::error_code ignored;
  if (!std::filesystem::exists(library_path(options.file), ignored)) {
    Output output(options.file, Output::Existing::is_refused);
    Appender appender(output, line_end_of(*sources.front().file));
    append(sources, appender);
    output.finish();
  } else if (count > 0) {
    const MailboxFile mailbox(options.file);
    rewrite_mailbox(mailbox, [&](platform::ByteSink& to) {
      Appender appender(to, line_end_of(mailbox.file()));
      mailbox.copy_range(0, mailbox.size(), appender);
      append(sources, appender);
    });
  }
  std::printf("%s added\n", counted_messages(count).c_str());
}

}  // namespace

void add_add(CLI::App& program) {
  const auto options = std::make_shared<AddOptions>();
  CLI::App* verb = program.add_subcommand("add", "Append messages to a mailbox, which is made when it is missing");
  verb->add_option("FILE", options->file, "The mailbox")->required();
  verb->add_option("FROM", options->sources, "Mailboxes, and files that hold one message (.eml); - is standard input")
      ->required();
  add_selection(*verb, options->selection, Numbers::as_option);
  verb->callback([options] { add_messages(*options); });
}

}  // namespace vellobar::command
