#include "tests/support/mail_record.h"

#include <cstdio>

#include "tests/support/files.h"

namespace vellobar::tests {

namespace {

/// The 64-bit FNV-1a checksum of the low bytes of the given units, and of their high bytes where they have some.
template <typename Character>
std::string length_and_checksum(std::basic_string_view<Character> text) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const Character c : text) {
    for (std::size_t byte = 0; byte < sizeof(Character); ++byte) {
      sum ^= static_cast<std::uint64_t>(c) >> (8 * byte) & 0xFF;
      sum *= 0x100000001B3;
    }
  }
  char shown[40];
  std::snprintf(shown, sizeof shown, "%llu:%016llX", static_cast<unsigned long long>(text.size()),
                static_cast<unsigned long long>(sum));
  return shown;
}

/// Systems differ in how many replacement characters malformed UTF-8 becomes, so several in a row count as one.
std::string shown(std::u16string_view text) {
  constexpr char16_t kReplacement = 0xFFFD;
  std::u16string counted;
  for (const char16_t c : text) {
    if (c != kReplacement || !counted.ends_with(kReplacement)) counted += c;
  }
  return length_and_checksum(std::u16string_view(counted));
}

std::string shown(const ReadText& read) {
  return read.error != 0 ? "error " + std::to_string(read.error) : shown(std::u16string_view(read.text));
}

std::string place_of_part(const std::string& parent, std::int64_t index) {
  return parent + "." + std::to_string(index);
}

std::string lines_about(ReadMessage& message, const std::string& place) {
  std::string lines = place + " at " + std::to_string(message.start()) + " to " + std::to_string(message.end()) + '\n';
  // The parts are asked for first: most of the rest depends on their having been read.
  lines += place + " parts " + std::to_string(message.part_count()) + '\n';
  lines += place + " boundary " + shown(message.boundary()) + '\n';
  lines += place + " type " + shown(message.content_type()) + '\n';
  lines += place + " info " + shown(message.mail_info()) + '\n';
  lines += place + " text " + shown(message.text()) + '\n';
  lines += place + " plain " + shown(message.plain_text()) + '\n';
  lines += place + " html " + shown(message.html_text()) + '\n';
  return lines;
}

std::string lines_about_tree(ReadMessage& top, const std::string& place) {
  struct Visit {
    std::unique_ptr<ReadMessage> part;
    std::string place;
  };
  std::string lines = lines_about(top, place);
  std::vector<Visit> waiting;
  const auto add_parts_of = [&waiting](ReadMessage& message, const std::string& at) {
    for (std::int64_t i = message.part_count(); i-- > 0;) waiting.push_back({message.part(i), place_of_part(at, i)});
  };
  add_parts_of(top, place);
  while (!waiting.empty()) {
    const Visit visit = std::move(waiting.back());
    waiting.pop_back();
    lines += lines_about(*visit.part, visit.place);
    add_parts_of(*visit.part, visit.place);
  }
  return lines;
}

std::string lines_about_attachments(ReadMessage& message, const std::string& place) {
  std::string lines;
  for (const ReadAttachment& attachment : message.attachments()) {
    lines += place + " attachment " + shown(attachment.name) + ' ' + shown(attachment.type) + ' ' +
             std::to_string(attachment.encoding) + ' ' + std::to_string(attachment.size) + ' ' +
             length_and_checksum(std::string_view(attachment.saved)) + ' ' + std::to_string(attachment.error) + '\n';
  }
  return lines;
}

std::string lines_about(ReadMailbox& mailbox) {
  std::string lines;
  for (std::int64_t i = 0; i < mailbox.message_count(); ++i) {
    const std::string place = std::to_string(i);
    const std::unique_ptr<ReadMessage> message = mailbox.message(i);
    lines += lines_about_tree(*message, place);
    lines += place + " body " + shown(message->body()) + '\n';
    lines += lines_about_attachments(*message, place);
    message->unload();
  }
  return lines;
}

constexpr std::string_view kMailboxMark = "= ";

}  // namespace

MailRecord record_real_mail(const std::function<std::unique_ptr<ReadMailbox>(const std::string& path)>& open) {
  MailRecord record;
  for (const char* folder : {"mbox", "joined", "messages"}) {
    for (const std::string& path : corpus_files(folder)) record[corpus_name(path)] = lines_about(*open(path));
  }
  return record;
}

std::string to_text(const MailRecord& record) {
  std::string text;
  for (const auto& [name, lines] : record) text.append(kMailboxMark).append(name).append("\n").append(lines);
  return text;
}

MailRecord to_record(std::string_view text) {
  MailRecord record;
  std::string* lines = nullptr;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n') + 1);
    text.remove_prefix(line.empty() ? text.size() : line.size());
    if (line.starts_with(kMailboxMark)) {
      lines = &record[std::string(line.substr(kMailboxMark.size(), line.size() - kMailboxMark.size() - 1))];
    } else if (lines != nullptr) {
      lines->append(line);
    }
  }
  return record;
}

}  // namespace vellobar::tests
