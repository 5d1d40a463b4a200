// The lines of a header block as they stood, one behind the other. A header begins at its place and goes up to the
// first line feed that is not part of CR LF: CR LF joins a continuation line to it. Where its name ends and its value
// begins is seen by looking at the line again. Nothing moves and nothing is taken out, so that a place stays good.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vellobar::headers {

/// A header line, continuation lines included: the name is all before the first colon, the value all behind it less
/// one leading space.
struct Line {
  std::string_view name, value;
};

/// Splits at the colon.
Line split(std::string_view line, std::size_t colon);

class HeaderText {
 public:
  std::size_t size() const { return text_.size(); }

  /// True for what `add` can keep. The line has no line feed.
  static bool can_keep(std::string_view line) { return !line.ends_with('\r'); }
  /// Appends a line, the colon of which is at `colon`. Returns its place.
  std::size_t add(std::string_view line, std::size_t colon);
  /// A place for a header that has no line.
  std::size_t add_gap();
  /// Joins a continuation line to the last header, which must have come by `add`.
  void lengthen_last(std::string_view line);
  void clear();
  void shrink_to_fit();

  /// The header at the place of a line, and what it is made of.
  std::string_view whole_at(std::size_t place) const;
  Line line_at(std::size_t place) const;
  /// Where the next header begins.
  std::size_t place_behind(std::size_t place) const { return place + whole_at(place).size() + 1; }
  std::string_view name_at(std::size_t place) const;
  std::string_view value_at(std::size_t place) const { return line_at(place).value; }

  /// True when all names are of printable ASCII.
  bool has_plain_names() const { return has_plain_names_; }
  /// Whether the name at a place is this one, without regard to case. Both are of printable ASCII; the name that is
  /// asked for has no colon.
  bool has_name(std::size_t place, std::string_view name) const {
    const std::size_t end = place + name.size();
    return end < text_.size() && text_[end] == ':' && begins_with(place, name);
  }

 private:
  bool begins_with(std::size_t place, std::string_view name) const;

  std::string text_;
  bool has_plain_names_ = true;
};

}  // namespace vellobar::headers
