// What the messages of one part tree share: where every part lies, and the collections that stand by themselves. A
// part deep down may be held by a client, or changed, while nobody wants the messages above it any longer. Those are
// let go, the collection that the part is in stands by itself, and its message takes it up again when it is made again.
// So mail that nests its parts a hundred thousand deep costs the objects that are wanted, not all those above them.
//
// The tree belongs to the outermost collection, and ends with it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "mime/part_outline.h"

namespace vellobar {

class CMessages;

namespace mailbox {

class PartTree {
 public:
  PartTree(std::shared_ptr<const mime::PartOutline> outline, bool may_detach)
      : outline_(std::move(outline)), may_detach_(may_detach) {}

  const mime::PartOutline& outline() const { return *outline_; }

  // Collections that stand by themselves, each with the position at which its message begins.

  /// Only below a message that stands in a mailbox: one that clients alone hold may go at any time, and its tree with
  /// it, while they go on holding something below.
  bool may_detach() const { return may_detach_; }
  void detach(std::int64_t message, std::shared_ptr<CMessages> parts) { detached_[message] = std::move(parts); }
  /// Null when there is none.
  std::shared_ptr<CMessages> detached_at(std::int64_t message) const;
  std::shared_ptr<CMessages> take(std::int64_t message) noexcept;
  std::shared_ptr<CMessages> take_any() noexcept;
  /// Whether there are some whose messages begin from `start` to just before `end`.
  bool has_detached(std::int64_t start, std::int64_t end) const;
  /// Good until something is detached or taken.
  using List = std::vector<const std::shared_ptr<CMessages>*>;
  void append_detached(std::int64_t start, std::int64_t end, List& to) const;
  void append_detached(List& to) const;

 private:
  std::shared_ptr<const mime::PartOutline> outline_;
  const bool may_detach_;
  std::map<std::int64_t, std::shared_ptr<CMessages>> detached_;
};

}  // namespace mailbox
}  // namespace vellobar
