// The messages and parts of one mailbox whose objects were made last. Two thousand of them, in a large mailbox one for
// every 4 KB, stay in memory although nobody holds them, so that reading the same ones again costs nothing; that is all
// of them in most mailboxes. Of the older ones each is let go that would read the same if it were made again, so that
// mail of tiny messages and parts is read from end to end in little memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vellobar {

class CMessage;

namespace mailbox {

class RecentMessages {
 public:
  /// How many stay in a mailbox that is not large.
  static constexpr std::size_t kMost = 2048;
  static constexpr std::int64_t kBytesForEach = 4096;

  /// For a mailbox of this size, before any is made.
  void allow_for(std::int64_t bytes) noexcept;
  /// For one more, so that adding it cannot fail.
  void make_room();
  /// Notes an object that was just made, and looks at the oldest one in its place.
  void add(const std::shared_ptr<CMessage>& message) noexcept;

 private:
  std::vector<std::weak_ptr<CMessage>> messages_;  ///< in a ring, once there are most_
  std::size_t most_ = kMost;
  std::size_t oldest_ = 0;
  /// How many objects may be looked at to learn whether one can go. It grows with each that is made, so that however
  /// mail nests its parts, the looking never takes longer than the reading.
  std::size_t patience_ = 0;
};

/// In a mailbox that is locked while it lives no more than so many stay, at least one, however large it is. For tests.
class FewRecentMessages {
 public:
  explicit FewRecentMessages(std::size_t most);
  ~FewRecentMessages();
  FewRecentMessages(const FewRecentMessages&) = delete;
  FewRecentMessages& operator=(const FewRecentMessages&) = delete;
};

}  // namespace mailbox
}  // namespace vellobar
