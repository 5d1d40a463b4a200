// The attachments of a collection that are objects, by their position. One that can be made again ends when nobody
// holds it any more, unless a client changed it, so that a walk over a million attachments does not leave a million
// objects.
#pragma once

#include <cstddef>
#include <memory>
#include <unordered_map>

namespace vellobar {
class CAttachment;
}

namespace vellobar::attachments {

class MadeAttachments {
 public:
  /// Null when the attachment at this position is no object.
  std::shared_ptr<CAttachment> find(std::size_t position) const;

  /// Take the object of a position that has none: for good, or one that can be made again.
  void keep(std::size_t position, std::shared_ptr<CAttachment> object);
  void lend(std::size_t position, std::shared_ptr<CAttachment> object);

  void drop(std::size_t position) noexcept { by_position_.erase(position); }

  /// True when a client holds or changed one of them.
  bool has_held_or_changed() const noexcept;

 private:
  static constexpr std::size_t kFew = 4096;

  struct Made {
    std::shared_ptr<CAttachment> object;
    bool stays;
  };

  static bool is_held_or_changed(const Made& made) noexcept;
  void let_go();

  std::unordered_map<std::size_t, Made> by_position_;
  std::size_t most_ = kFew;  ///< or twice as many as were left when some were let go
};

}  // namespace vellobar::attachments
