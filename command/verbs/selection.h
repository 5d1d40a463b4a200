// The common way to choose messages: by number and by what their headers say. What is chosen comes in the order of the
// mailbox, each message once; a message must pass all that was asked for.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vellobar {
class CMessage;
}

namespace vellobar::command {

class MailboxFile;

/// What the command line says.
struct Selection {
  std::vector<std::string> indexes;
  std::optional<std::string> from, to, subject, since, before;

  /// True when nothing was asked for, which chooses every message.
  bool is_empty() const { return indexes.empty() && !from && !to && !subject && !since && !before; }
};

/// Adds the options that fill a selection, which must outlive the parse: the filters, and the numbers as arguments or,
/// where other arguments may follow each other without end, as an option.
enum class Numbers { as_arguments, as_option };
void add_selection(CLI::App& verb, Selection& selection, Numbers numbers = Numbers::as_arguments);

using Visitor = std::function<void(std::int64_t index, CMessage& message)>;

/// Calls the visitor for each chosen message. Throws WrongUse for what cannot be read as a number or a date, Failure
/// for a message that is not there, Interrupted when the user had enough.
void for_each_selected(const MailboxFile& mailbox, const Selection& selection, const Visitor& visit);

/// The chosen messages of a mailbox.
std::vector<std::int64_t> selected(const MailboxFile& mailbox, const Selection& selection);

/// A date of the form 2024-03-31 as an automation date, its first moment in local time. Throws WrongUse.
double parse_day(const std::string& text);

}  // namespace vellobar::command
