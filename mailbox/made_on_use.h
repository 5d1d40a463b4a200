// A sequence that costs one pointer while it is empty and little more than its items while it is short: most messages
// have no parts or a few, and mail can have a million of them. A long one grows block by block, so that a million
// messages are never copied to make room.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace vellobar::mailbox {

template <typename Item>
class MadeOnUse {
 public:
  /// The place of an item, for the algorithms of the standard library.
  template <typename Sequence, typename Value>
  class Place {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = Item;
    using difference_type = std::ptrdiff_t;
    using pointer = Value*;
    using reference = Value&;

    Place(Sequence& sequence, std::size_t index) : sequence_(&sequence), index_(index) {}
    Value& operator*() const { return (*sequence_)[index_]; }
    Value* operator->() const { return &**this; }
    Place& operator++() { return *this += 1; }
    Place& operator--() { return *this += -1; }
    Place& operator+=(std::ptrdiff_t distance) {
      index_ += static_cast<std::size_t>(distance);
      return *this;
    }
    friend Place operator+(Place place, std::ptrdiff_t distance) { return place += distance; }
    friend std::ptrdiff_t operator-(const Place& to, const Place& from) {
      return static_cast<std::ptrdiff_t>(to.index_ - from.index_);
    }
    friend bool operator==(const Place& a, const Place& b) { return a.index_ == b.index_; }

   private:
    Sequence* sequence_;
    std::size_t index_;
  };

  std::size_t size() const noexcept { return items_ ? items_->size : 0; }
  bool empty() const noexcept { return size() == 0; }
  Item& operator[](std::size_t index) { return items_->blocks[index / kBlock][index % kBlock]; }
  const Item& operator[](std::size_t index) const { return items_->blocks[index / kBlock][index % kBlock]; }
  Item& back() { return (*this)[size() - 1]; }

  auto begin() { return Place<MadeOnUse, Item>(*this, 0); }
  auto end() { return Place<MadeOnUse, Item>(*this, size()); }
  auto begin() const { return Place<const MadeOnUse, const Item>(*this, 0); }
  auto end() const { return Place<const MadeOnUse, const Item>(*this, size()); }

  void push_back(Item item) {
    if (!items_) items_ = std::make_unique<Items>();
    if (items_->size == items_->room) make_room();
    (*this)[items_->size++] = std::move(item);
  }
  void pop_back() noexcept {
    back() = Item();
    --items_->size;
    if (items_->size % kBlock != 0 || items_->size == 0) return;
    items_->blocks.pop_back();
    items_->room = items_->size;
  }
  /// Drops what stands behind the first ones, of which there are at least so many.
  void cut(std::size_t remaining) noexcept {
    while (size() > remaining) pop_back();
  }
  void erase(std::size_t index) noexcept {
    for (; index + 1 < size(); ++index) (*this)[index] = std::move((*this)[index + 1]);
    pop_back();
  }
  void clear() noexcept { items_.reset(); }
  /// Gives all items away, front to back. Each block goes behind its last item.
  template <typename Take>
  void hand_over(Take take) {
    const std::unique_ptr<Items> items = std::move(items_);
    for (std::size_t i = 0; items && i < items->size; ++i) {
      take(std::move(items->blocks[i / kBlock][i % kBlock]));
      if (i % kBlock == kBlock - 1) items->blocks[i / kBlock].reset();
    }
  }

 private:
  static constexpr std::size_t kBlock = 256;
  struct Items {
    std::vector<std::unique_ptr<Item[]>> blocks;  ///< all of them whole, but a single one may be shorter
    std::size_t size = 0;
    std::size_t room = 0;
  };

  void make_room() {
    Items& items = *items_;
    if (items.room == 0 || items.room >= kBlock) {
      const std::size_t size = items.room == 0 ? 1 : kBlock;
      auto block = std::make_unique<Item[]>(size);
      items.blocks.push_back(std::move(block));
      items.room += size;
      return;
    }
    auto longer = std::make_unique<Item[]>(2 * items.room);
    std::move(items.blocks[0].get(), items.blocks[0].get() + items.size, longer.get());
    items.blocks[0] = std::move(longer);
    items.room *= 2;
  }

  std::unique_ptr<Items> items_;
};

}  // namespace vellobar::mailbox
