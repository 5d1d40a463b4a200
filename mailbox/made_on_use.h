// A sequence that costs one pointer while it is empty: most messages have no parts, and mail can have a million of
// them. It grows block by block, so that a million messages are never copied to make room.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <utility>

namespace vellobar::mailbox {

template <typename Item>
class MadeOnUse {
 public:
  using Items = std::deque<Item>;

  std::size_t size() const noexcept { return items_ ? items_->size() : 0; }
  bool empty() const noexcept { return size() == 0; }
  Item& operator[](std::size_t index) { return (*items_)[index]; }
  const Item& operator[](std::size_t index) const { return (*items_)[index]; }
  Item& back() { return items_->back(); }

  auto begin() { return items_ ? items_->begin() : typename Items::iterator(); }
  auto end() { return items_ ? items_->end() : typename Items::iterator(); }
  auto begin() const { return items_ ? items_->cbegin() : typename Items::const_iterator(); }
  auto end() const { return items_ ? items_->cend() : typename Items::const_iterator(); }

  void push_back(Item item) {
    if (!items_) items_ = std::make_unique<Items>();
    items_->push_back(std::move(item));
  }
  void pop_back() noexcept { items_->pop_back(); }
  void pop_front() noexcept { items_->pop_front(); }
  /// Drops what stands behind the first ones, of which there are at least so many.
  void cut(std::size_t remaining) noexcept {
    if (items_) items_->erase(items_->begin() + static_cast<std::ptrdiff_t>(remaining), items_->end());
  }
  void erase(typename Items::iterator place) { items_->erase(place); }
  void clear() noexcept { items_.reset(); }

 private:
  std::unique_ptr<Items> items_;
};

}  // namespace vellobar::mailbox
