// The delimiters of the multiparts that a line lies in, outermost first, searched all at once: however many there are,
// one sorted search finds those that the line begins with. Delimiters are added and taken back in the order of a stack.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vellobar::mime {

class DelimiterSet {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  void push(std::string_view delimiter);
  void pop();

  /// Position of the first delimiter pushed, of those that the line begins with; kNone when there is none.
  std::size_t outermost_match(std::string_view line) const;

 private:
  /// To each delimiter the outermost one that it begins with: itself, or a shorter one outside of it.
  using Sorted = std::map<std::string, std::size_t, std::less<>>;

  Sorted sorted_;
  std::vector<Sorted::iterator> pushed_;  ///< end() for a delimiter that an outer one had added
};

}  // namespace vellobar::mime
