#include "mime/working_text.h"

#include <algorithm>
#include <utility>

#include "mime/ascii.h"
#include "mime/encoded_word_syntax.h"

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
/// An edit can make or break patterns that begin up to this many bytes before it.
constexpr std::size_t kReach = kUnicodeUtf7Prefix.size() - 1;

}  // namespace

WorkingText::WorkingText(std::string_view text) : right_(text) {
  left_.reserve(text.size());
  note_places(text.size());
}

char WorkingText::at(std::size_t position) const {
  return position < left_.size() ? left_[position] : right_[right_at_ + position - left_.size()];
}

bool WorkingText::holds(Pattern pattern) const {
  return !places(pattern).left.empty() || !places(pattern).right.empty();
}

std::size_t WorkingText::first(Pattern pattern) const {
  const Places& where = places(pattern);
  if (!where.left.empty()) return where.left.front();
  return where.right.empty() ? npos : size() - where.right.back();
}

int WorkingText::first_windows_number() {
  const std::size_t position = first(Pattern::windows);
  const std::size_t place = size() - position;
  if (place == number_place_) return number_;
  std::string digits;
  for (std::size_t i = position + kWindowsPrefix.size(); i < size() && is_ascii_digit(at(i)); ++i) digits += at(i);
  number_place_ = place;
  number_ = leading_number(digits);
  return number_;
}

std::string_view WorkingText::from(std::size_t position) {
  move_gap(position);
  return right();
}

void WorkingText::replace(std::size_t position, std::size_t removed, std::string_view inserted) {
  const std::size_t begin = position - std::min(position, kReach);
  const std::size_t reached = position - begin;
  move_gap(begin);
  const std::size_t behind = right_size() - reached - removed;
  for (Places& where : places_) {
    while (!where.right.empty() && where.right.back() > behind) where.right.pop_back();
  }
  if (number_place_ != npos && number_place_ > behind) number_place_ = npos;
  std::array<char, kReach> kept{};
  std::copy_n(right().begin(), reached, kept.begin());
  right_at_ += reached + removed;
  prepend(inserted);
  prepend(std::string_view(kept.data(), reached));
  note_places(reached + inserted.size());
}

std::string WorkingText::take() {
  left_ += right();
  return std::move(left_);
}

void WorkingText::move_gap(std::size_t position) {
  const std::size_t total = size();
  if (position < left_.size()) {
    prepend(std::string_view(left_).substr(position));
    left_.resize(position);
  } else {
    const std::size_t count = position - left_.size();
    left_.append(right_, right_at_, count);
    right_at_ += count;
  }
  for (Places& where : places_) {
    for (; !where.left.empty() && where.left.back() >= position; where.left.pop_back()) {
      where.right.push_back(total - where.left.back());
    }
    for (; !where.right.empty() && total - where.right.back() < position; where.right.pop_back()) {
      where.left.push_back(total - where.right.back());
    }
  }
}

void WorkingText::prepend(std::string_view bytes) {
  if (bytes.size() > right_at_) {
    const std::size_t room = bytes.size() + right_size() / 2;
    right_.replace(0, right_at_, room, '\0');
    right_at_ = room;
  }
  right_at_ -= bytes.size();
  std::copy(bytes.begin(), bytes.end(), right_.begin() + static_cast<std::ptrdiff_t>(right_at_));
}

void WorkingText::note_places(std::size_t count) {
  const std::string_view text = right();
  for (std::size_t i = count; i-- > 0;) {
    const std::size_t place = text.size() - i;
    switch (text[i]) {
      case '+':
        places(Pattern::plus).right.push_back(place);
        break;
      case '\r':
        if (text.substr(i).starts_with(kTabFold)) places(Pattern::tab_fold).right.push_back(place);
        break;
      case '=':
        note_prefixes(text.substr(i), place);
        break;
      default:
        break;
    }
  }
}

void WorkingText::note_prefixes(std::string_view word, std::size_t place) {
  if (!word.starts_with(kWordStart)) return;
  places(Pattern::word).right.push_back(place);
  for (const Prefix& prefix : kPrefixes) {
    if (starts_with_ignoring_case(word, prefix.text)) places(prefix.pattern).right.push_back(place);
  }
}

}  // namespace vellobar::mime
