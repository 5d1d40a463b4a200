// Walking a collection with a range-based for: the items at positions 0, 1, 2 and so on. A walk holds its collection,
// so that one which the mailbox lets go of meanwhile stays readable, and ends where the collection ends when it gets
// there: an item added behind is walked too, and removing the present one skips the next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>

namespace vellobar {

template <typename Collection, typename Item>
class ItemIterator {
 public:
  using value_type = std::shared_ptr<Item>;
  using difference_type = std::ptrdiff_t;

  ItemIterator() = default;
  explicit ItemIterator(std::shared_ptr<Collection> collection) : collection_(std::move(collection)) {}

  /// The item at the present position. Throws what Item throws.
  std::shared_ptr<Item> operator*() const { return collection_->Item(position_); }

  ItemIterator& operator++() {
    ++position_;
    return *this;
  }
  void operator++(int) { ++position_; }

  friend bool operator==(const ItemIterator& at, std::default_sentinel_t) {
    return at.position_ >= at.collection_->Count();
  }

 private:
  std::shared_ptr<Collection> collection_;
  std::int64_t position_ = 0;
};

}  // namespace vellobar
