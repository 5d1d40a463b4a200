// The items that a collection has now, for a walk that goes on whatever becomes of the collection. They are those of
// the collection as long as that does not change, so that a walk over a million items does not hold a million objects;
// before it changes they are all made and held.
#pragma once

#include <cstddef>
#include <forward_list>
#include <memory>
#include <utility>
#include <vector>

namespace vellobar::mailbox {

template <typename Collection, typename Item>
class Snapshot {
 public:
  /// Throws what counting the items throws.
  explicit Snapshot(std::shared_ptr<Collection> collection)
      : collection_(std::move(collection)), size_(static_cast<std::size_t>(collection_->Count())) {}
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;

  std::size_t size() const { return size_; }
  std::shared_ptr<Item> operator[](std::size_t index) const {
    return collection_ ? collection_->object_at(index) : items_[index];
  }

  /// Makes and holds all items. Without memory for them nothing is done.
  void hold_items() {
    std::vector<std::shared_ptr<Item>> items;
    items.reserve(size_);
    for (std::size_t i = 0; i < size_; ++i) items.push_back((*this)[i]);
    items_ = std::move(items);
    collection_.reset();
  }

 private:
  std::shared_ptr<Collection> collection_;  ///< null once the items are held
  std::size_t size_;
  std::vector<std::shared_ptr<Item>> items_;
};

/// The snapshots that were taken of a collection since it changed last.
template <typename Collection, typename Item>
class Snapshots {
 public:
  std::shared_ptr<Snapshot<Collection, Item>> take(std::shared_ptr<Collection> collection) {
    auto snapshot = std::make_shared<Snapshot<Collection, Item>>(std::move(collection));
    taken_.remove_if([](const auto& other) { return other.expired(); });
    taken_.push_front(snapshot);
    return snapshot;
  }

  /// For the collection, before it changes. Without memory the collection must stay as it is.
  void hold_items() {
    for (const auto& weak : taken_) {
      if (const auto snapshot = weak.lock()) snapshot->hold_items();
    }
    taken_.clear();
  }

 private:
  std::forward_list<std::weak_ptr<Snapshot<Collection, Item>>> taken_;
};

}  // namespace vellobar::mailbox
