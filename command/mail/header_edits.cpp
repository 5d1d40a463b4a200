#include "command/mail/header_edits.h"

#include <algorithm>

#include "command/output/failure.h"
#include "command/output/process_text.h"
#include "command/output/terminal.h"
#include "headers/address.h"
#include "headers/header_block.h"
#include "mime/encoded_word.h"
#include "platform/ascii.h"
#include "platform/code_page.h"

namespace vellobar::command {

namespace {

bool is_same_name(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return platform::lower_ascii(a) == platform::lower_ascii(b); });
}

/// A header with its continuation lines, or a line that is none.
struct Field {
  std::string_view name;  ///< empty for a line that is no header
  std::string bytes;
};

std::string_view next_line(std::string_view& rest) {
  const std::string_view line = rest.substr(0, std::min(rest.find('\n'), rest.size() - 1) + 1);
  rest.remove_prefix(line.size());
  return line;
}

bool is_continuation(std::string_view line) { return line.starts_with(' ') || line.starts_with('\t'); }

std::vector<Field> fields_of(std::string_view block) {
  std::vector<Field> fields;
  while (!block.empty()) {
    const std::string_view line = next_line(block);
    if (is_continuation(line) && !fields.empty()) {
      fields.back().bytes += line;
    } else {
      const std::size_t colon = line.find(':');
      fields.push_back({colon == line.npos ? std::string_view() : line.substr(0, colon), std::string(line)});
    }
  }
  return fields;
}

std::string_view line_end_of(std::string_view block, std::string_view otherwise) {
  const std::size_t feed = block.find('\n');
  if (feed == block.npos) return otherwise;
  return feed > 0 && block[feed - 1] == '\r' ? "\r\n" : "\n";
}

class Editor {
 public:
  Editor(std::string_view block, std::string_view line_end)
      : fields_(fields_of(block)), line_end_(line_end_of(block, line_end)) {
    // A last line that is not ended would run into what is added.
    if (!fields_.empty() && !fields_.back().bytes.ends_with('\n')) fields_.back().bytes += line_end_;
  }

  void remove(std::string_view name) { remove_from(fields_.begin(), name); }

  void set(const HeaderEdits::Header& header) {
    const auto first = std::find_if(fields_.begin(), fields_.end(),
                                    [&](const Field& field) { return is_same_name(field.name, header.name); });
    if (first == fields_.end()) return add(header);
    *first = made(header);
    remove_from(first + 1, header.name);
  }

  void add(const HeaderEdits::Header& header) { fields_.push_back(made(header)); }

  std::string block() const {
    std::string bytes;
    for (const Field& field : fields_) bytes += field.bytes;
    return bytes;
  }

 private:
  Field made(const HeaderEdits::Header& header) const {
    return {header.name, header.name + ": " + header.value + std::string(line_end_)};
  }

  void remove_from(std::vector<Field>::iterator first, std::string_view name) {
    const auto is_named = [&](const Field& field) { return is_same_name(field.name, name); };
    fields_.erase(std::remove_if(first, fields_.end(), is_named), fields_.end());
  }

  std::vector<Field> fields_;
  std::string_view line_end_;
};

bool holds_addresses(std::string_view name) {
  constexpr std::string_view kNames[] = {"From", "To", "Cc", "Bcc", "Sender", "Reply-To"};
  return std::any_of(std::begin(kNames), std::end(kNames), [&](std::string_view n) { return is_same_name(n, name); });
}

std::string value_as_ascii(std::string_view name, const std::string& value) {
  if (!mime::has_8_bit_bytes(value)) return value;
  const ProcessText in_locale;
  const std::u16string text = core_text(value);
  const std::u16string coded = holds_addresses(name) ? headers::address_list_text(text) : mime::utf8_encoded_word(text);
  return platform::narrow_ascii(coded);
}

}  // namespace

void check_header_name(std::string_view name) {
  const auto is_usable = [](char c) { return c > ' ' && c < 0x7F && c != ':'; };
  if (!name.empty() && std::all_of(name.begin(), name.end(), is_usable)) return;
  throw WrongUse("\"" + std::string(name) + "\" is no name of a header");
}

HeaderEdits::Header parse_header(const std::string& argument) {
  const std::size_t colon = argument.find(':');
  if (colon == argument.npos) throw WrongUse("\"" + argument + "\" is no header: write \"Name: value\"");
  HeaderEdits::Header header{argument.substr(0, colon), argument.substr(colon + 1)};
  check_header_name(header.name);
  header.value.erase(0, std::min(header.value.find_first_not_of(' '), header.value.size()));
  if (header.value.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos) {
    throw WrongUse("the value of " + header.name + " has several lines, and a header has one");
  }
  header.value = value_as_ascii(header.name, header.value);
  if (header.name.size() + header.value.size() + 4 >= headers::kLongestLine) {
    throw WrongUse("the value of " + header.name + " is too long for a line of mail");
  }
  return header;
}

std::optional<std::string> edited_headers(std::string_view block, const HeaderEdits& edits, std::string_view line_end) {
  if (is_continuation(block)) return std::nullopt;
  Editor editor(block, line_end);
  for (const std::string& name : edits.removed) editor.remove(name);
  for (const HeaderEdits::Header& header : edits.set) editor.set(header);
  for (const HeaderEdits::Header& header : edits.added) editor.add(header);
  return editor.block();
}

}  // namespace vellobar::command
