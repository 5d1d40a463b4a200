// `vellobar man-page`: prints the man page, for whoever packages the program.
#include "command/man_page.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string_view>

#include "command/option_table.h"
#include "command/program.h"
#include "command/verbs/verbs.h"

namespace vellobar::command {

namespace {

constexpr char kFront[] = R"(.TH VELLOBAR 1 "" "vellobar )" VELLOBAR_VERSION R"(" "User Commands"
.SH NAME
vellobar \- read, edit and write Unix mbox mailboxes
.SH SYNOPSIS
.B vellobar
.I VERB
.RI [ OPTIONS ]
.I FILE
.RI [ MESSAGES ]
.SH DESCRIPTION
A mailbox is one text file of many messages, each behind a line that begins with "From ". Messages count from 0.
Where a verb reads a file, \- is standard input; where it writes one, \- is standard output.
.PP
What is written is whole or not at all: a new file takes its name, or the place of the old one, when everything is on the
disk, also when the program is interrupted or the disk is full. Messages that a verb does not edit stay byte for byte.
.SH VERBS
)";

constexpr char kBack[] = R"(.SH CHOOSING MESSAGES
.I MESSAGES
are numbers and ranges: 3, 0\-9, 5\- (to the last one), also several divided by blanks or commas. They come in the order of
the mailbox, each once. The options \-\-from, \-\-to and \-\-subject keep those with a text in that header, in either case;
\-\-since and \-\-before those with a date, by the day in local time. A message must pass all of them.
.SH OUTPUT
On a terminal, columns fit its width. Elsewhere, lines hold everything, the last columns divided by tabs. With \-\-json
each line is one object in UTF\-8, always valid, whatever bytes the mail holds.
.SH EXIT STATUS
.TP
0
Done.
.TP
1
It could not be done; one line on standard error says why.
.TP
2
Wrong use; one line says what would have been right.
.TP
3
.B check
found something.
.PP
An interrupted program ends by the signal.
.SH ENVIRONMENT
.TP
COLUMNS
How wide the terminal is.
.TP
NO_COLOR
When it is set to anything, nothing is coloured.
.TP
LC_ALL, LC_CTYPE, LANG
The character set of the terminal, of arguments and of file names.
.SH EXAMPLES
.nf
vellobar list inbox.mbox \-\-from ann@example.org
vellobar show inbox.mbox 0
vellobar extract inbox.mbox saved 10\-
vellobar export inbox.mbox year.mbox \-\-since 2024\-01\-01 \-\-before 2025\-01\-01
vellobar add archive.mbox *.eml
vellobar set inbox.mbox 0 \-\-set 'Subject: Minutes'
vellobar list inbox.mbox \-\-json | jq \-r .subject
.fi
)";

/// Text as roff takes it.
std::string escaped(std::string_view text) {
  std::string roff;
  for (const char c : text) {
    if (c == '-') {
      roff += "\\-";
    } else if (c == '\\') {
      roff += "\\e";
    } else {
      roff += c;
    }
  }
  return roff;
}

std::string synopsis(const CLI::App& verb) {
  std::string line = "vellobar " + verb.get_name() + " [OPTIONS]";
  for (const OptionRow& row : rows_of(verb)) {
    if (!row.is_argument) continue;
    const std::string name = row.name + (row.may_repeat ? "..." : "");
    line += row.is_required ? " " + name : " [" + name + "]";
  }
  return line;
}

std::string described(const OptionRow& row) {
  const std::string value = row.value.empty() ? "" : " \\fI" + escaped(row.value) + "\\fR";
  return ".TP\n\\fB" + escaped(row.name) + "\\fR" + value + "\n" + escaped(row.description) + ".\n";
}

}  // namespace

std::string man_page(const CLI::App& program) {
  std::string page = kFront;
  for (const CLI::App* verb : verbs_of(program)) {
    page += ".SS " + escaped(synopsis(*verb)) + "\n" + escaped(verb->get_description()) + ".\n";
    for (const OptionRow& row : rows_of(*verb)) {
      if (row.name != "--help") page += described(row);
    }
  }
  page += ".SH OPTIONS\n";
  for (const OptionRow& row : rows_of(program)) page += described(row);
  return page + kBack;
}

void add_man_page(CLI::App& program) {
  CLI::App* verb = program.add_subcommand("man-page", "Print the man page");
  verb->group("");
  verb->callback([] {
    int ignored = kDone;
    std::fputs(man_page(*make_program(ignored)).c_str(), stdout);
  });
}

}  // namespace vellobar::command
