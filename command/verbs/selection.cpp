#include "command/verbs/selection.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "command/mail/index_ranges.h"
#include "command/mail/letters.h"
#include "command/mail/mailbox_file.h"
#include "command/mail/message_date.h"
#include "command/output/failure.h"
#include "command/output/interruption.h"
#include "command/output/terminal.h"
#include "mailbox/message.h"
#include "platform/clock.h"

namespace vellobar::command {

namespace {

/// A text that must stand in a header, whatever the case of its letters.
class TextFilter {
 public:
  TextFilter(std::string_view header, const std::optional<std::string>& wanted) : header_(header) {
    if (wanted) wanted_ = lower_letters(core_text(*wanted));
  }

  bool passes(CMessage& message) const {
    return !wanted_ || contains_ignoring_case(message.decoded_header(header_), *wanted_);
  }

 private:
  std::string_view header_;
  std::optional<std::u16string> wanted_;
};

/// All filters of a selection. A message whose headers cannot be read passes none.
class Filters {
 public:
  explicit Filters(const Selection& selection)
      : texts_{{"From", selection.from}, {"To", selection.to}, {"Subject", selection.subject}} {
    if (selection.since) since_ = parse_day(*selection.since);
    if (selection.before) before_ = parse_day(*selection.before);
    asks_nothing_ =
        selection.is_empty() || (!selection.from && !selection.to && !selection.subject && !since_ && !before_);
  }

  bool pass(CMessage& message) const {
    if (asks_nothing_) return true;
    if (message.load_headers() == nullptr) return false;
    return std::all_of(std::begin(texts_), std::end(texts_), [&](const TextFilter& f) { return f.passes(message); }) &&
           passes_dates(message);
  }

 private:
  bool passes_dates(CMessage& message) const {
    if (!since_ && !before_) return true;
    const std::optional<double> date = date_of(message);
    return date && (!since_ || *date >= *since_) && (!before_ || *date < *before_);
  }

  TextFilter texts_[3];
  std::optional<double> since_, before_;
  bool asks_nothing_ = false;
};

std::vector<IndexRange> wanted_ranges(const MailboxFile& mailbox, const Selection& selection) {
  if (selection.indexes.empty()) return {{0, mailbox.count() - 1}};
  std::vector<IndexRange> all;
  for (const std::string& argument : selection.indexes) {
    for (const IndexRange& range : parse_index_ranges(argument)) all.push_back(range);
  }
  all = joined(std::move(all));
  for (IndexRange& range : all) {
    const bool is_open = range.last == IndexRange::kToTheLast;
    const std::int64_t missing = range.first >= mailbox.count() ? range.first : range.last;
    if (range.first >= mailbox.count() || (!is_open && range.last >= mailbox.count())) {
      throw Failure("there is no message " + std::to_string(missing) + ": " + mailbox.path() + " " +
                    mailbox.described_count());
    }
    range.last = std::min(range.last, mailbox.count() - 1);
  }
  return all;
}

}  // namespace

void add_selection(CLI::App& verb, Selection& selection, Numbers numbers) {
  const char* described = "Messages counted from 0: 3, 0-9, 5- (to the last one); all of them when left out";
  if (numbers == Numbers::as_arguments) {
    verb.add_option("MESSAGES", selection.indexes, described);
  } else {
    verb.add_option("--messages", selection.indexes, described)->allow_extra_args(false)->type_name("MESSAGES");
  }
  verb.add_option("--from", selection.from, "Only messages with this text in their From header")->type_name("TEXT");
  verb.add_option("--to", selection.to, "Only messages with this text in their To header")->type_name("TEXT");
  verb.add_option("--subject", selection.subject, "Only messages with this text in their Subject")->type_name("TEXT");
  verb.add_option("--since", selection.since, "Only messages dated on this day or later")->type_name("YYYY-MM-DD");
  verb.add_option("--before", selection.before, "Only messages dated before this day")->type_name("YYYY-MM-DD");
}

void for_each_selected(const MailboxFile& mailbox, const Selection& selection, const Visitor& visit) {
  const Filters filters(selection);
  for (const IndexRange& range : wanted_ranges(mailbox, selection)) {
    for (std::int64_t index = range.first; index <= range.last; ++index) {
      stop_if_interrupted();
      const std::shared_ptr<CMessage> message = mailbox.message(index);
      if (filters.pass(*message)) visit(index, *message);
    }
  }
}

std::vector<std::int64_t> selected(const MailboxFile& mailbox, const Selection& selection) {
  std::vector<std::int64_t> indexes;
  for_each_selected(mailbox, selection, [&](std::int64_t index, CMessage&) { indexes.push_back(index); });
  return indexes;
}

double parse_day(const std::string& text) {
  platform::BrokenDownTime day;
  int length = 0;
  double date = 0;
  const bool has_form =
      text.size() == 10 && std::sscanf(text.c_str(), "%4d-%2d-%2d%n", &day.year, &day.month, &day.day, &length) == 3;
  std::int64_t ticks = 0;
  if (!has_form || length != 10 || !platform::to_ticks(day, ticks) || !platform::to_automation_date(day, date)) {
    throw WrongUse("\"" + text + "\" is no date: write 2024-03-31");
  }
  return date;
}

}  // namespace vellobar::command
