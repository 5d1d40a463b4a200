// `vellobar check FILE`: what is doubtful or damaged in a mailbox, where it is, and what to do.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "command/mail/findings.h"
#include "command/mail/long_lines.h"
#include "command/mail/mailbox_file.h"
#include "command/mail/message_check.h"
#include "command/output/json.h"
#include "command/output/progress_bar.h"
#include "command/output/terminal.h"
#include "command/program.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"
#include "mailbox/message.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar::command {

namespace {

struct CheckOptions {
  std::string file;
  Selection selection;
  bool json = false;
};

std::u16string text_of(const std::string& bytes) { return platform::widen(platform::kAnsiCodePage, bytes); }

void print_object(const Finding& finding, const FindingTexts& texts) {
  print_json({{"finding", texts.name},
              {"message", finding.message},
              {"position", finding.position},
              {"detail", json_text(text_of(finding.detail))},
              {"meaning", texts.meaning},
              {"advice", texts.advice}});
}

void print_line(const Finding& finding, const FindingTexts& texts) {
  const std::string detail = shown_line(text_of(finding.detail));
  if (columns() == 0) {
    std::printf("%7lld %12lld  %s\t%s\t%s\t%s\n", static_cast<long long>(finding.message),
                static_cast<long long>(finding.position), texts.name, detail.c_str(), texts.meaning, texts.advice);
    return;
  }
  std::printf("%s: message %lld, byte %lld%s%s\n    %s\n    %s\n", emphasised(Emphasis::warning, texts.name).c_str(),
              static_cast<long long>(finding.message), static_cast<long long>(finding.position),
              detail.empty() ? "" : ": ", detail.c_str(), texts.meaning, texts.advice);
}

/// Prints what is found, and counts it.
class Report {
 public:
  explicit Report(bool json) : json_(json) {
    if (!json && columns() == 0) {
      std::printf("%7s %12s  %s\n", "MESSAGE", "POSITION", "FINDING\tDETAIL\tMEANING\tADVICE");
    }
  }

  void take(const Finding& finding) {
    ++count_;
    const FindingTexts& texts = texts_of(finding.kind);
    json_ ? print_object(finding, texts) : print_line(finding, texts);
  }

  std::int64_t count() const { return count_; }

 private:
  bool json_;
  std::int64_t count_ = 0;
};

bool has_only_carriage_returns(platform::File& file) {
  std::string block(std::size_t{64} * 1024, '\0');
  bool has_carriage_returns = false;
  for (std::int64_t at = 0; at < file.size();) {
    const std::size_t got = file.read(at, block.data(), block.size());
    if (got == 0) break;
    if (std::memchr(block.data(), '\n', got) != nullptr) return false;
    has_carriage_returns = has_carriage_returns || std::memchr(block.data(), '\r', got) != nullptr;
    at += static_cast<std::int64_t>(got);
  }
  return has_carriage_returns;
}

/// The positions of long lines, each with the message that it belongs to.
void take_long_lines(const MailboxFile& mailbox, std::vector<Finding>& to) {
  const std::vector<std::int64_t> positions = lines_counted_twice(mailbox.file());
  std::int64_t index = 0;
  for (const std::int64_t position : positions) {
    while (mailbox.extent(index).end <= position) ++index;
    to.push_back({FindingKind::long_line, index, position, {}});
  }
}

int check(const CheckOptions& options) {
  const MailboxFile mailbox(options.file);
  Report report(options.json);
  if (has_only_carriage_returns(mailbox.file())) report.take({FindingKind::no_line_feeds, 0, 0, {}});
  std::vector<Finding> long_lines;
  take_long_lines(mailbox, long_lines);
  ProgressBar bar("checking");
  for_each_selected(mailbox, options.selection, [&](std::int64_t index, CMessage& message) {
    std::vector<Finding> findings;
    check_message(mailbox, index, [&](const Finding& finding) { findings.push_back(finding); });
    std::copy_if(long_lines.begin(), long_lines.end(), std::back_inserter(findings),
                 [&](const Finding& finding) { return finding.message == index; });
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& left, const Finding& right) { return left.position < right.position; });
    if (!findings.empty() && columns() > 0) bar.clear();
    for (const Finding& finding : findings) report.take(finding);
    bar.show(message.EndPosition(), mailbox.size());
  });
  return report.count() == 0 ? kDone : kFound;
}

}  // namespace

void add_check(CLI::App& program, int& exit_code) {
  const auto options = std::make_shared<CheckOptions>();
  CLI::App* verb = program.add_subcommand("check",
                                          "Tell what is doubtful or damaged in a mailbox (exit code 3 when "
                                          "something is)");
  verb->add_option("FILE", options->file, "The mailbox; - is standard input")->required();
  verb->add_flag("--json", options->json, "Print one JSON object a line");
  add_selection(*verb, options->selection);
  verb->callback([options, &exit_code] { exit_code = check(*options); });
}

}  // namespace vellobar::command
