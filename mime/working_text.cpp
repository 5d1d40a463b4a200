#include "mime/working_text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "mime/ascii.h"
#include "mime/encoded_word_syntax.h"
#include "mime/quoted_text.h"

namespace vellobar::mime {
namespace {

struct Prefix {
  Pattern pattern;
  std::string_view text;
};

constexpr std::array<Prefix, 4> kPrefixes = {{{Pattern::unicode_utf7, kUnicodeUtf7Prefix},
                                              {Pattern::utf7, kUtf7Prefix},
                                              {Pattern::utf8, kUtf8Prefix},
                                              {Pattern::windows, kWindowsPrefix}}};
/// An edit can make or break patterns that begin up to this many characters before it.
constexpr std::size_t kReachBack = kUnicodeUtf7Prefix.size() - 1;
/// And what is restless up to this many characters behind it.
constexpr std::size_t kReachAhead = kRestlessLooksBack;

constexpr Marks operator|(Marks marks, Pattern pattern) {
  return static_cast<Marks>(marks | static_cast<Marks>(pattern));
}

/// What begins with an equals sign, apart from escapes.
Marks marks_of_equals_sign(std::string_view here) {
  if (!here.starts_with(kWordStart)) return 0;
  Marks marks = Marks{} | Pattern::word;
  for (const Prefix& prefix : kPrefixes) {
    if (starts_with_ignoring_case(here, prefix.text)) marks = marks | prefix.pattern;
  }
  return marks;
}

Marks marks_of_question_mark(std::string_view here) {
  Marks marks = 0;
  if (here.starts_with(kWordEnd)) marks = marks | Pattern::word_end;
  if (word_encoding_at(here)) marks = marks | Pattern::encoding;
  return marks;
}

/// What begins at a position of a text that holds enough of what stands before and behind it.
Marks marks_at(std::string_view text, std::size_t position) {
  const Marks ordinary = Marks{} | Pattern::not_zero;
  const auto with_restless = [&](Marks marks) {
    return is_restless(text, position) ? marks | Pattern::restless : marks;
  };
  switch (text[position]) {
    case '0':
      return 0;
    case '\r':
      return text.substr(position).starts_with(kTabFold) ? ordinary | Pattern::tab_fold : ordinary;
    case '+':
      return ordinary | Pattern::plus;
    case '?':
      return static_cast<Marks>(ordinary | marks_of_question_mark(text.substr(position)));
    case '=':
      return with_restless(static_cast<Marks>(ordinary | marks_of_equals_sign(text.substr(position))));
    case '_':
    case '\0':
      return with_restless(ordinary);
    default:
      return ordinary;
  }
}

std::vector<Marks> marks_of(std::string_view text, std::size_t begin, std::size_t count) {
  std::vector<Marks> marks(count);
  for (std::size_t i = 0; i < count; ++i) marks[i] = marks_at(text, begin + i);
  return marks;
}

}  // namespace

WorkingText::WorkingText(std::string_view text) { tree_.replace(0, 0, text, marks_of(text, 0, text.size())); }

int WorkingText::first_windows_number() const {
  const std::size_t digits = first(Pattern::windows) + kWindowsPrefix.size();
  const std::size_t significant = std::min(first(Pattern::not_zero, digits), size());
  // One digit more than the largest number has is enough to know that a number is too large.
  return leading_number(copy(significant, std::numeric_limits<int>::digits10 + 2));
}

std::string WorkingText::copy(std::size_t position, std::size_t count) const {
  std::string text;
  tree_.copy(position, count, text);
  return text;
}

void WorkingText::replace(std::size_t position, std::size_t removed, std::string_view inserted) {
  const std::size_t begin = position - std::min(position, kReachBack);
  const std::size_t behind = position + removed;
  const std::size_t ahead = std::min(kReachAhead, size() - behind);
  const std::size_t before = std::min(begin, kRestlessLooksBack);
  std::string text;
  tree_.copy(begin - before, before + (position - begin), text);
  text += inserted;
  const std::size_t changed = text.size() - before + ahead;
  tree_.copy(behind, ahead + kReachBack, text);
  tree_.replace(begin, behind - begin + ahead, std::string_view(text).substr(before, changed),
                marks_of(text, before, changed));
}

}  // namespace vellobar::mime
