// A text in which any place can be changed, found by its marks or read without going over the rest: its pieces are the
// nodes of a balanced tree, each knows the size and the marks of what is below it. An edit and a search cost the
// logarithm of the text's size, a change of n characters n more. What marks mean is their owner's business.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vellobar::mime {

/// Bits that stand for what begins at a character.
using Marks = std::uint16_t;

class CharacterTree {
 public:
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  CharacterTree();

  std::size_t size() const { return nodes_[root_].size; }
  /// All marks that any character has.
  Marks marks() const { return nodes_[root_].marks_below; }
  /// The first character from `from` on that has one of these marks; npos when there is none.
  std::size_t find(Marks wanted, std::size_t from) const;
  /// Appends at most `count` characters from a position on.
  void copy(std::size_t position, std::size_t count, std::string& to) const;
  /// Puts characters, one mark set for each, in the place of `removed` ones.
  void replace(std::size_t position, std::size_t removed, std::string_view characters, const std::vector<Marks>& marks);

 private:
  using Index = std::uint32_t;
  /// The node that stands for nothing.
  static constexpr Index kNone = 0;
  /// Characters that a piece has room for. Of two pieces next to each other one is at least half full.
  static constexpr std::size_t kRoom = 512;

  struct Node {
    Index left = kNone;
    Index right = kNone;
    /// Drawn at random: a node stands above those of lower priority, so the tree stays flat whatever the edits.
    std::uint32_t priority = 0;
    std::size_t size = 0;
    Marks own_marks = 0;
    Marks marks_below = 0;
    std::uint16_t count = 0;
    std::array<char, kRoom> characters;
    std::array<Marks, kRoom> marks;
  };
  struct Halves {
    Index left;
    Index right;
  };
  /// A text on its way into the tree or out of it.
  struct Text {
    std::string characters;
    std::vector<Marks> marks;
  };
  enum class Side { left, right };

  std::size_t find_below(Index top, Marks wanted, std::size_t from) const;
  static std::size_t find_in(const Node& piece, Marks wanted, std::size_t from);
  void copy_below(Index top, std::size_t position, std::size_t& count, std::string& to) const;
  void append_below(Index top, Text& to) const;
  void update(Index index);
  Index new_node();
  Index built(const Text& text);
  Halves split(Index top, std::size_t position, Side side_of_the_piece);
  Index merged(Index left, Index right);
  std::uint32_t random();

  std::vector<Node> nodes_;
  /// The tops of trees that were cut out, whose nodes are used again.
  std::vector<Index> unused_;
  Index root_ = kNone;
  /// Of a generator that shifts bits: any number but zero will do.
  std::uint64_t random_ = 88172645463325252U;
};

}  // namespace vellobar::mime
