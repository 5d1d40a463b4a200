#include "command/mail/findings.h"

namespace vellobar::command {

const FindingTexts& texts_of(FindingKind kind) {
  static constexpr FindingTexts kTexts[] = {
      {"no-line-feeds",
       "The file has no line feeds: its lines end with lone carriage returns, and it reads as one line.",
       "Turn them into line feeds (tr '\\r' '\\n')."},
      {"text-before-first-message", "The file does not begin with a separator line.",
       "If it is a message, put a line \"From sender date\" before it; if it is a rest of something else, remove it."},
      {"doubtful-separator-line",
       "The line that begins this message does not look like \"From sender date\" with headers behind it; it may be "
       "text "
       "of the message before.",
       "If it is text, insert a \">\" at this position; then both messages are one again."},
      {"long-header-line",
       "A header line of 16,384 bytes or more: the headers and the text of this message cannot be read, and it is kept "
       "as "
       "it is.",
       "Shorten or fold the line, or leave it."},
      {"headers-begin-with-blank", "The header block begins with a blank, so that everything counts as text.",
       "Remove the blank at this position."},
      {"headers-without-end",
       "No empty line ends the headers of this message: those of the next message are read as well.",
       "Insert an empty line at this position."},
      {"boundary-without-parts", "The headers name a boundary that no line shows: the message has no parts.",
       "Nothing is lost; the text is all there."},
      {"short-boundary", "The boundary has three characters or less: its lines are not written by an update.",
       "Choose a longer boundary before the message is changed by a script."},
      {"missing-closing-delimiter",
       "No closing line ends the parts: the mail was cut short, or its sender left the line out. The last part is not "
       "shown, and an update by a script drops it.",
       "Insert the line at this position."},
      {"long-line",
       "A line longer than a read of the component: its positions run ahead from here on, and it refuses to update the "
       "mailbox.",
       "This program is not affected; for scripts, break the line or export the message."},
  };
  return kTexts[static_cast<std::size_t>(kind)];
}

}  // namespace vellobar::command
