// The messages and parts of one mailbox whose objects were made last. So many of them stay in memory although nobody
// holds them, so that reading the same ones again costs nothing; of the older ones each is let go that would read the
// same if it were made again. A mailbox can be read from end to end in the memory of these few.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace vellobar {

class CMessage;

namespace mailbox {

class RecentMessages {
 public:
  static constexpr std::size_t kMost = 2048;

  /// For one more, so that adding it cannot fail.
  void make_room();
  /// Notes an object that was just made, and looks at the oldest one in its place.
  void add(const std::shared_ptr<CMessage>& message) noexcept;

 private:
  std::vector<std::weak_ptr<CMessage>> messages_;  ///< in a ring, once there are kMost
  std::size_t oldest_ = 0;
  /// How many objects may be looked at to learn whether one can go. It grows with each that is made, so that however
  /// mail nests its parts, the looking never takes longer than the reading.
  std::size_t patience_ = 0;
};

}  // namespace mailbox
}  // namespace vellobar
