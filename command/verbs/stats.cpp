// `vellobar stats FILE`: what a mailbox holds, in numbers, from the headers alone unless more is asked for.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "command/mail/letters.h"
#include "command/mail/mailbox_file.h"
#include "command/mail/message_date.h"
#include "command/output/json.h"
#include "command/output/progress_bar.h"
#include "command/output/terminal.h"
#include "command/verbs/selection.h"
#include "command/verbs/verbs.h"
#include "mailbox/message.h"
#include "platform/code_page.h"

namespace vellobar::command {

namespace {

struct StatsOptions {
  std::string file;
  Selection selection;
  bool attachments = false;
  bool json = false;
};

using Counts = std::unordered_map<std::string, std::int64_t>;

constexpr std::int64_t kSizeSteps[] = {1'000, 10'000, 100'000, 1'000'000, 10'000'000};
constexpr std::size_t kMostShown = 10;

struct Named {
  std::string name;
  std::int64_t count;
};

/// Those with the highest counts; of equal ones the first by name.
std::vector<Named> highest(const Counts& counts, std::size_t most) {
  std::vector<Named> all;
  for (const auto& [name, count] : counts) all.push_back({name, count});
  std::sort(all.begin(), all.end(), [](const Named& left, const Named& right) {
    return left.count != right.count ? left.count > right.count : left.name < right.name;
  });
  if (all.size() > most) all.resize(most);
  return all;
}

std::string utf8(std::u16string_view text) { return json_text(lower_letters(text)); }

class Statistics {
 public:
  void take(CMessage& message) {
    sizes_.push_back(message.Size());
    bytes_ += message.Size();
    lines_ += message.Lines();
    if (message.load_headers() == nullptr) {
      ++unreadable_;
      return;
    }
    take_date(message);
    ++senders_[utf8(message.FromEmail())];
    const std::u16string type = message.ContentType();
    ++types_[type.empty() ? "none" : utf8(type.substr(0, type.find(u';')))];
    const std::u16string charset = message.CharSet();
    ++charsets_[charset.empty() ? "none" : utf8(charset.substr(0, charset.find(u';')))];
  }

  void take_attachments(CMessage& message) {
    if (message.load_headers() == nullptr) return;
    const auto attachments = message.Attachments();
    const std::int64_t count = attachments->Count();
    attachments_ += count;
    if (count > 0) ++messages_with_attachments_;
    for (std::int64_t i = 0; i < count; ++i) attachment_bytes_ += attachments->Item(i)->Size();
  }

  Json object(bool with_attachments) {
    std::sort(sizes_.begin(), sizes_.end());
    Json object{{"messages", sizes_.size()},
                {"bytes", bytes_},
                {"lines", lines_},
                {"smallest", sizes_.empty() ? 0 : sizes_.front()},
                {"median", sizes_.empty() ? 0 : sizes_[sizes_.size() / 2]},
                {"largest", sizes_.empty() ? 0 : sizes_.back()},
                {"sizes", size_steps()},
                {"unreadable", unreadable_},
                {"first", first_ ? Json(utc_timestamp(*first_)) : Json()},
                {"last", last_ ? Json(utc_timestamp(*last_)) : Json()},
                {"undated", undated_},
                {"years", years()},
                {"senders", senders_.size()},
                {"top_senders", named(senders_, "address")},
                {"content_types", named(types_, "type")},
                {"charsets", named(charsets_, "charset")}};
    if (with_attachments) {
      object["attachments"] = attachments_;
      object["attachment_bytes"] = attachment_bytes_;
      object["messages_with_attachments"] = messages_with_attachments_;
    }
    return object;
  }

 private:
  void take_date(CMessage& message) {
    const std::optional<double> date = date_of(message);
    if (!date) {
      ++undated_;
      return;
    }
    first_ = std::min(first_.value_or(*date), *date);
    last_ = std::max(last_.value_or(*date), *date);
    ++years_[in_utc(*date).year];
  }

  Json size_steps() const {
    Json steps = Json::array();
    auto from = sizes_.begin();
    for (const std::int64_t step : kSizeSteps) {
      const auto to = std::upper_bound(from, sizes_.end(), step);
      steps.push_back({{"up_to", step}, {"messages", to - from}});
      from = to;
    }
    steps.push_back({{"up_to", Json()}, {"messages", sizes_.end() - from}});
    return steps;
  }

  Json years() const {
    Json all = Json::array();
    for (const auto& [year, count] : years_) all.push_back({{"year", year}, {"messages", count}});
    return all;
  }

  static Json named(const Counts& counts, const char* member) {
    Json all = Json::array();
    for (const Named& entry : highest(counts, kMostShown)) {
      all.push_back({{member, entry.name}, {"messages", entry.count}});
    }
    return all;
  }

  std::vector<std::int64_t> sizes_;
  std::int64_t bytes_ = 0, lines_ = 0, unreadable_ = 0, undated_ = 0;
  std::optional<double> first_, last_;
  std::map<int, std::int64_t> years_;
  Counts senders_, types_, charsets_;
  std::int64_t attachments_ = 0, attachment_bytes_ = 0, messages_with_attachments_ = 0;
};

/// A value as a person reads it: an array as its entries, each with its count.
std::string readable(const Json& value) {
  if (value.is_null()) return "-";
  if (value.is_string()) return value.get<std::string>();
  if (!value.is_array()) return value.dump();
  std::string line;
  for (const Json& entry : value) {
    if (!line.empty()) line += ", ";
    const auto label = entry.begin();
    line += label.key() == "up_to" ? (label->is_null() ? "more" : "up to " + label->dump()) : readable(*label);
    line += ": " + entry["messages"].dump();
  }
  return line.empty() ? "-" : line;
}

void print_for_people(const Json& object) {
  for (const auto& [name, value] : object.items()) {
    std::string title = name;
    std::replace(title.begin(), title.end(), '_', ' ');
    const std::u16string text = platform::widen(platform::kUtf8CodePage, readable(value));
    std::printf("%-26s %s\n", title.c_str(), shown_line(text).c_str());
  }
}

void print_statistics(const StatsOptions& options) {
  const MailboxFile mailbox(options.file);
  Statistics statistics;
  {
    ProgressBar bar("counting");
    for_each_selected(mailbox, options.selection, [&](std::int64_t, CMessage& message) {
      statistics.take(message);
      if (options.attachments) statistics.take_attachments(message);
      bar.show(message.EndPosition(), mailbox.size());
    });
  }
  const Json object = statistics.object(options.attachments);
  options.json ? print_json(object) : print_for_people(object);
}

}  // namespace

void add_stats(CLI::App& program) {
  const auto options = std::make_shared<StatsOptions>();
  CLI::App* verb = program.add_subcommand("stats", "Tell what a mailbox holds in numbers: sizes, dates, senders");
  verb->add_option("FILE", options->file, "The mailbox; - is standard input")->required();
  verb->add_flag("--attachments", options->attachments, "Count attachments as well, which reads every message whole");
  verb->add_flag("--json", options->json, "Print one JSON object");
  add_selection(*verb, options->selection);
  verb->callback([options] { print_statistics(*options); });
}

}  // namespace vellobar::command
