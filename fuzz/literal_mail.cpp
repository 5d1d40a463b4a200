#include "fuzz/literal_mail.h"

#include <algorithm>

namespace vellobar::fuzz {

namespace {

constexpr std::size_t kLongestLine = 16384;

/// The line that begins here with its line feed, or a piece of the longest line.
std::string_view line_at(std::string_view file, std::size_t from) {
  const std::string_view rest = file.substr(std::min(from, file.size()));
  return rest.substr(0, std::min(rest.find('\n') == rest.npos ? rest.size() : rest.find('\n') + 1, kLongestLine));
}

std::string_view cut(std::string_view line) { return line.substr(0, line.find_first_of("\r\n")); }

/// A line feed ends a line, and a carriage return is only looked for in front of it.
std::string_view cut_at_line_end(std::string_view line) {
  if (line.ends_with('\n')) line.remove_suffix(1);
  return cut(line);
}

/// A line as it is written: with CR LF, or in the first shorter way that keeps it readable.
std::string written_line(const std::string& line, std::size_t blank_to_drop) {
  std::vector<std::string> ways{line + "\r\n", line + "\n"};
  if (blank_to_drop != 0) ways.push_back(std::string(line).erase(blank_to_drop, 1) + "\n");
  for (const std::string& way : ways) {
    if (way.size() < kLongestLine) return way;
  }
  return ways.front();
}

std::string written_header(const std::string& name, const std::string& value) {
  std::string header;
  const std::string whole = name + ": " + value + "\r\n";
  for (std::size_t at = 0; at < whole.size();) {
    const std::size_t end = whole.find("\r\n", at);
    const bool has_blank_to_drop = at == 0 && !value.starts_with(' ');
    header += written_line(whole.substr(at, end - at), has_blank_to_drop ? name.size() + 1 : 0);
    at = end + 2;
  }
  return header;
}

}  // namespace

LiteralBlock read_block(std::string_view file, std::size_t from) {
  LiteralBlock block;
  block.body_offset = from;
  for (std::size_t position = from;;) {
    const std::string_view line = line_at(file, position);
    if (line.size() == kLongestLine) {
      block.is_readable = false;
      return block;
    }
    position += line.size();
    const std::string_view text = cut_at_line_end(line);
    if (text.empty()) {
      block.body_offset = position;
      return block;
    }
    if (text[0] == ' ' || text[0] == '\t') {
      // A continuation of nothing: all of the block is body.
      if (block.headers.empty()) return block;
      block.headers.back().second += "\r\n" + std::string(text);
      continue;
    }
    const std::size_t colon = text.find(':');
    if (colon == text.npos) continue;
    std::string_view value = text.substr(colon + 1);
    if (value.starts_with(' ')) value.remove_prefix(1);
    block.headers.emplace_back(text.substr(0, colon), value);
  }
}

std::string written(const std::vector<std::pair<std::string, std::string>>& headers) {
  std::string text;
  for (const auto& [name, value] : headers) text += written_header(name, value);
  return text;
}

std::vector<LiteralMessage> read_mailbox(std::string_view file) {
  std::vector<LiteralMessage> messages;
  for (std::size_t position = 0; position < file.size();) {
    const std::string_view line = line_at(file, position);
    const bool is_separator = line.starts_with("From ");
    if (is_separator || messages.empty()) {
      messages.push_back({.start = position, .has_separator = is_separator});
      if (is_separator) messages.back().separator_line = cut_at_line_end(line);
    }
    position += line.size();
    messages.back().end = position;
  }
  for (LiteralMessage& message : messages) {
    const std::size_t first_line = message.has_separator ? line_at(file, message.start).size() : 0;
    message.block = read_block(file, message.start + first_line);
    const std::size_t from = message.block.body_offset;
    if (from < message.end) message.body = file.substr(from, message.end - from);
  }
  return messages;
}

std::string rewritten(const std::vector<LiteralMessage>& messages) {
  std::string file;
  for (const LiteralMessage& message : messages) {
    // What stood before without a line end would swallow the separator line.
    if (!file.empty() && !file.ends_with('\n')) file += "\r\n";
    if (message.has_separator) file += message.separator_line + "\r\n";
    file += written(message.block.headers) + "\r\n" + message.body;
  }
  return messages.empty() ? file : file + "\r\n";
}

}  // namespace vellobar::fuzz
