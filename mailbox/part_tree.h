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
  explicit PartTree(std::shared_ptr<const mime::PartOutline> outline) : outline_(std::move(outline)) {}

  const mime::PartOutline& outline() const { return *outline_; }

  // Collections that stand by themselves, each with the position at which its message begins.

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
  std::map<std::int64_t, std::shared_ptr<CMessages>> detached_;
};

}  // namespace mailbox
}  // namespace vellobar
