// Header blocks as they are read, found by name, edited and written, against the rule told literally and a plain list.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/choices.h"
#include "fuzz/literal_mail.h"
#include "fuzz/scratch.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "platform/ascii.h"
#include "platform/code_page.h"

namespace vellobar::fuzz {

namespace {

using List = std::vector<std::pair<std::string, std::string>>;

std::string bytes(std::u16string_view text) { return platform::narrow(platform::kThreadCodePage, text); }
std::u16string text(std::string_view bytes) { return platform::widen(platform::kThreadCodePage, bytes); }

void require_list(const CHeaders& headers, const List& expected, const char* law) {
  require(headers.Count() == static_cast<std::int64_t>(expected.size()), law);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    require_same(bytes(headers.name(i)), expected[i].first, law);
    require_same(bytes(headers.value(i)), expected[i].second, law);
  }
  require_same(headers.to_bytes(), written(expected), "headers are written as names and values say");
}

bool is_ascii_name(std::string_view name) { return platform::is_printable_ascii(name); }

bool equal_names(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, {}, platform::lower_ascii<char>, platform::lower_ascii<char>);
}

void require_first_of_each_name(const CHeaders& headers, const List& list) {
  if (!std::ranges::all_of(list, [](const auto& each) { return is_ascii_name(each.first); })) return;
  for (const auto& wanted : list) {
    const std::size_t found = headers.find(text(wanted.first));
    const auto expected =
        std::ranges::find_if(list, [&](const auto& each) { return equal_names(each.first, wanted.first); });
    require(static_cast<std::ptrdiff_t>(found) == expected - list.begin(), "a name finds its first header in any case");
  }
}

/// One edit of both, as the choices say.
void edit(CHeaders& headers, List& list, Choices& choices) {
  static constexpr std::string_view kNames[] = {"Subject", "X", "from", "", "\xC4-\xFF", "Content-Type"};
  static constexpr std::string_view kValues[] = {"", "1", " two", "a\r\n\tb", "\x80 \xE9", "x: y"};
  const std::string name(choices.among(kNames));
  const std::string value(choices.among(kValues));
  const std::size_t place = choices.below(8);
  const bool is_there = place < list.size();
  switch (choices.below(6)) {
    case 0:
      headers.Add(text(name), text(value));
      list.emplace_back(name, value);
      return;
    case 1:
      require(succeeds([&] { headers.Remove(static_cast<std::int64_t>(place)); }) == is_there,
              "only what is there can be removed");
      if (is_there) list.erase(list.begin() + static_cast<std::ptrdiff_t>(place));
      return;
    case 2:
      if (!is_there) return;
      headers.Item(static_cast<std::int64_t>(place))->SetValue(text(value));
      list[place].second = value;
      return;
    case 3:
      if (!is_there) return;
      headers.Item(static_cast<std::int64_t>(place))->SetName(text(name));
      list[place].first = name;
      return;
    case 4:
      if (!is_there) return;
      headers.Remove(*headers.Item(static_cast<std::int64_t>(place)));
      list.erase(list.begin() + static_cast<std::ptrdiff_t>(place));
      return;
    default:
      if (choices.below(8) != 7) return;
      headers.RemoveAll();
      list.clear();
  }
}

/// What was written is read again as it was, also where a line had nearly the longest length. Deliberately not where a
/// last line of that length had no line end and so has no room for one.
void require_reread(const CHeaders& headers, const List& list) {
  if (!read_block(written(list) + "\r\n", 0).is_readable) return;
  const std::string once = headers.to_bytes() + "\r\n";
  const auto file = file_of(once);
  CMessage message(nullptr, nullptr, file, {0, file->size(), 0, false});
  require(message.load_headers() != nullptr, "what was written can be read");
  require_list(*message.load_headers(), list, "what was written reads as it was");
  require(message.body_offset() == file->size(), "the block ends at its empty line");
}

}  // namespace

void fuzz_header_block(std::string_view input) {
  Choices choices(input);
  const std::string_view edits = choices.take(choices.below(64));
  const bool has_separator = choices.flip();
  const std::string mail = maybe_stretched(choices);
  const auto file = file_of(mail);
  CMessage message(nullptr, nullptr, file, {0, file->size(), 0, has_separator});
  const std::size_t first_line =
      has_separator ? std::min<std::size_t>({mail.find('\n'), mail.size() - 1, 16383}) + 1 : 0;
  LiteralBlock expected = read_block(mail, mail.empty() ? 0 : first_line);
  CHeaders* const headers = message.load_headers();
  require((headers != nullptr) == expected.is_readable, "a block is unreadable by its line of 16,384 bytes alone");
  if (headers == nullptr) return;
  require(message.body_offset() == static_cast<std::int64_t>(expected.body_offset), "the body begins behind the block");
  require_list(*headers, expected.headers, "headers are read as the rule says");
  require_first_of_each_name(*headers, expected.headers);
  require_reread(*headers, expected.headers);
  for (Choices left(edits); left.has_more();) {
    edit(*headers, expected.headers, left);
    require_list(*headers, expected.headers, "headers are edited as a list is");
  }
  require_first_of_each_name(*headers, expected.headers);
}

}  // namespace vellobar::fuzz
