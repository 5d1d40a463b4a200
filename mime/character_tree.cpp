#include "mime/character_tree.h"

#include <algorithm>
#include <utility>

namespace vellobar::mime {
namespace {

Marks all_of(const Marks* marks, std::size_t count) {
  Marks all = 0;
  for (std::size_t i = 0; i < count; ++i) all = static_cast<Marks>(all | marks[i]);
  return all;
}

}  // namespace

CharacterTree::CharacterTree() : nodes_(1) {}

std::size_t CharacterTree::find(Marks wanted, std::size_t from) const { return find_below(root_, wanted, from); }

std::size_t CharacterTree::find_below(Index top, Marks wanted, std::size_t from) const {
  const Node& here = nodes_[top];
  if ((here.marks_below & wanted) == 0 || from >= here.size) return npos;
  const std::size_t begin = nodes_[here.left].size;
  const std::size_t end = begin + here.count;
  if (from < begin) {
    const std::size_t found = find_below(here.left, wanted, from);
    if (found != npos) return found;
  }
  if (from < end && (here.own_marks & wanted) != 0) {
    const std::size_t found = find_in(here, wanted, from - std::min(from, begin));
    if (found != npos) return begin + found;
  }
  const std::size_t found = find_below(here.right, wanted, from - std::min(from, end));
  return found == npos ? npos : end + found;
}

std::size_t CharacterTree::find_in(const Node& piece, Marks wanted, std::size_t from) {
  // Most characters have no mark that anybody wants: they are passed over by the block.
  constexpr std::size_t kBlock = 32;
  std::size_t at = from;
  while (at + kBlock <= piece.count && (all_of(piece.marks.data() + at, kBlock) & wanted) == 0) at += kBlock;
  for (; at < piece.count; ++at) {
    if ((piece.marks[at] & wanted) != 0) return at;
  }
  return npos;
}

void CharacterTree::copy(std::size_t position, std::size_t count, std::string& to) const {
  copy_below(root_, position, count, to);
}

/// Takes what it copied from `count`.
void CharacterTree::copy_below(Index top, std::size_t position, std::size_t& count, std::string& to) const {
  const Node& here = nodes_[top];
  if (count == 0 || position >= here.size) return;
  const std::size_t begin = nodes_[here.left].size;
  const std::size_t end = begin + here.count;
  if (position < begin) {
    copy_below(here.left, position, count, to);
    position = begin;
  }
  if (position < end) {
    const std::size_t copied = std::min(count, end - position);
    to.append(here.characters.data() + (position - begin), copied);
    count -= copied;
    position = end;
  }
  copy_below(here.right, position - end, count, to);
}

void CharacterTree::replace(std::size_t position, std::size_t removed, std::string_view characters,
                            const std::vector<Marks>& marks) {
  auto [left, rest] = split(root_, position, Side::right);
  const std::size_t kept_before = position - nodes_[left].size;
  auto [middle, right] = split(rest, kept_before + removed, Side::left);
  Text held;
  append_below(middle, held);
  if (middle != kNone) unused_.push_back(middle);

  Text text;
  const auto append = [&](std::size_t begin, std::size_t end) {
    text.characters.append(held.characters, begin, end - begin);
    text.marks.insert(text.marks.end(), held.marks.begin() + static_cast<std::ptrdiff_t>(begin),
                      held.marks.begin() + static_cast<std::ptrdiff_t>(end));
  };
  append(0, kept_before);
  text.characters += characters;
  text.marks.insert(text.marks.end(), marks.begin(), marks.end());
  append(kept_before + removed, held.characters.size());

  // Too small a piece takes in those beside it.
  while (text.characters.size() < kRoom / 2 && right != kNone) {
    const Halves halves = split(right, 1, Side::left);
    append_below(halves.left, text);
    unused_.push_back(halves.left);
    right = halves.right;
  }
  while (text.characters.size() < kRoom / 2 && left != kNone) {
    const Halves halves = split(left, nodes_[left].size - 1, Side::right);
    Text longer;
    append_below(halves.right, longer);
    unused_.push_back(halves.right);
    longer.characters += text.characters;
    longer.marks.insert(longer.marks.end(), text.marks.begin(), text.marks.end());
    text = std::move(longer);
    left = halves.left;
  }
  root_ = merged(merged(left, built(text)), right);
}

void CharacterTree::append_below(Index top, Text& to) const {
  if (top == kNone) return;
  const Node& here = nodes_[top];
  append_below(here.left, to);
  to.characters.append(here.characters.data(), here.count);
  to.marks.insert(to.marks.end(), here.marks.begin(), here.marks.begin() + here.count);
  append_below(here.right, to);
}

void CharacterTree::update(Index index) {
  Node& here = nodes_[index];
  const Node& left = nodes_[here.left];
  const Node& right = nodes_[here.right];
  here.size = left.size + here.count + right.size;
  here.marks_below = static_cast<Marks>(left.marks_below | here.own_marks | right.marks_below);
}

CharacterTree::Index CharacterTree::new_node() {
  if (unused_.empty()) {
    nodes_.emplace_back();
    return static_cast<Index>(nodes_.size() - 1);
  }
  const Index index = unused_.back();
  unused_.pop_back();
  Node& node = nodes_[index];
  if (node.left != kNone) unused_.push_back(node.left);
  if (node.right != kNone) unused_.push_back(node.right);
  node.left = node.right = kNone;
  return index;
}

/// A tree of a text, in pieces that are as full as can be and equally full.
CharacterTree::Index CharacterTree::built(const Text& text) {
  const std::size_t size = text.characters.size();
  const std::size_t pieces = (size + kRoom - 1) / kRoom;
  Index top = kNone;
  for (std::size_t piece = 0; piece < pieces; ++piece) {
    const std::size_t begin = size * piece / pieces;
    const std::size_t end = size * (piece + 1) / pieces;
    const Index index = new_node();
    Node& here = nodes_[index];
    here.priority = random();
    here.count = static_cast<std::uint16_t>(end - begin);
    std::copy_n(text.characters.data() + begin, here.count, here.characters.data());
    std::copy_n(text.marks.data() + begin, here.count, here.marks.data());
    here.own_marks = all_of(here.marks.data(), here.count);
    update(index);
    top = merged(top, index);
  }
  return top;
}

/// The pieces before a position and those behind it. The piece in which it lies goes, whole, to the given side.
CharacterTree::Halves CharacterTree::split(Index top, std::size_t position, Side side_of_the_piece) {
  if (top == kNone) return {kNone, kNone};
  Node& here = nodes_[top];
  const std::size_t begin = nodes_[here.left].size;
  const std::size_t end = begin + here.count;
  const bool goes_right = side_of_the_piece == Side::right ? position < end : position <= begin;
  if (goes_right) {
    const Halves halves = split(here.left, position, side_of_the_piece);
    here.left = halves.right;
    update(top);
    return {halves.left, top};
  }
  const Halves halves = split(here.right, position - std::min(position, end), side_of_the_piece);
  here.right = halves.left;
  update(top);
  return {top, halves.right};
}

/// Two trees as one, the nodes of higher priority above the others.
CharacterTree::Index CharacterTree::merged(Index left, Index right) {
  if (left == kNone) return right;
  if (right == kNone) return left;
  if (nodes_[left].priority > nodes_[right].priority) {
    nodes_[left].right = merged(nodes_[left].right, right);
    update(left);
    return left;
  }
  nodes_[right].left = merged(left, nodes_[right].left);
  update(right);
  return right;
}

std::uint32_t CharacterTree::random() {
  random_ ^= random_ << 13;
  random_ ^= random_ >> 7;
  random_ ^= random_ << 17;
  return static_cast<std::uint32_t>(random_ >> 32);
}

}  // namespace vellobar::mime
