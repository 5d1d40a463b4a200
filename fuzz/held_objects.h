// The objects of one kind that a client holds, the last few of them.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/choices.h"

namespace vellobar::fuzz {

template <typename Object>
class HeldObjects {
 public:
  void hold(std::shared_ptr<Object> object) {
    constexpr std::size_t kMost = 6;
    if (objects_.size() < kMost) {
      objects_.push_back(std::move(object));
    } else {
      objects_[oldest_++ % kMost] = std::move(object);
    }
  }
  void let_go(Choices& choices) {
    if (!objects_.empty())
      objects_.erase(objects_.begin() + static_cast<std::ptrdiff_t>(choices.below(objects_.size())));
  }
  template <typename Predicate>
  void let_go_if(Predicate is_meant) {
    std::erase_if(objects_, [&](const std::shared_ptr<Object>& object) { return is_meant(*object); });
  }
  void clear() { objects_.clear(); }

  /// Null when there is none.
  std::shared_ptr<Object> any(Choices& choices) const {
    return objects_.empty() ? nullptr : objects_[choices.below(objects_.size())];
  }
  const std::vector<std::shared_ptr<Object>>& all() const { return objects_; }

  /// Which of them that object is, for the record.
  std::string place_of(const std::shared_ptr<Object>& object) const {
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      if (objects_[i] == object) return "held " + std::to_string(i) + ' ';
    }
    return object ? "not held " : "none ";
  }

 private:
  std::vector<std::shared_ptr<Object>> objects_;
  std::size_t oldest_ = 0;
};

}  // namespace vellobar::fuzz
