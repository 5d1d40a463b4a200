// The whole part tree of a message, found in one pass over the file. Split level by level, as the rule says it, a
// message nested d deep would be scanned d times; this scans it once and gives the very same extents. The rule stays
// with `CMessages::split` and `read_body_text`; mail that one pass cannot answer for (lines so long that positions of
// the scan may run ahead) is left to them. An outline is made by the outermost message that is split and shared by what
// is below it; it never changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string_view>

#include "mailbox/extent.h"
#include "mailbox/made_on_use.h"

namespace vellobar::platform {
class File;
}

namespace vellobar::mime {

class PartOutline {
 public:
  /// A multipart below the message that the outline belongs to.
  struct Multipart {
    std::int64_t body_start = 0;  ///< behind its header block
    std::int64_t opening = 0;     ///< its opening delimiter line
    std::size_t node = 0;
  };

  /// Scans from behind an opening delimiter line up to the end of its message. Null when the plain form has to answer.
  static std::shared_ptr<PartOutline> read(platform::File& file, std::int64_t from, std::int64_t limit,
                                           std::string_view separator);

  /// Hands out the parts of the message itself. Without multiparts below it, of which somebody may ask later, the
  /// outline lets go of each, so that no part is ever in two tables.
  void take_parts(mailbox::ExtentSink& sink);
  /// The parts of a multipart below it.
  void parts(const Multipart& multipart, mailbox::ExtentSink& sink) const {
    children(multipart.node + 1, nodes_[multipart.node].subtree_end, sink);
  }
  /// What is known of the part that lies there; null when nothing is. Whether its boundary still is the one of its
  /// opening delimiter line is for the caller to see.
  const Multipart* find(std::int64_t start, std::int64_t body_start) const;

  bool has_multiparts() const { return !multiparts_.empty(); }
  /// Just behind the last line, and whether that is all up to the limit.
  std::int64_t end() const { return end_; }
  bool is_whole() const { return is_whole_; }

 private:
  friend class OutlineReader;

  using Position = std::uint32_t;
  struct Node {
    mailbox::PackedExtent extent;
    Position subtree_end = 0;        ///< position of the node behind its last descendant
    Position multiparts_before = 0;  ///< how many multiparts lie in front of it
  };
  static constexpr std::size_t kMostNodes = std::numeric_limits<Position>::max();

  void children(std::size_t begin, std::size_t end, mailbox::ExtentSink& sink) const;

  mailbox::MadeOnUse<Node> nodes_;  ///< each part in front of its own parts, in the order of the file
  mailbox::MadeOnUse<Multipart> multiparts_;
  std::int64_t end_ = 0;
  bool is_whole_ = false;
};

/// While it lives every level is split by the plain form. For tests.
class PlainSplitting {
 public:
  PlainSplitting();
  ~PlainSplitting();
  PlainSplitting(const PlainSplitting&) = delete;
  PlainSplitting& operator=(const PlainSplitting&) = delete;
};

}  // namespace vellobar::mime
