// The headers of a block that are objects, by their place: those that a client holds, and those that keep themselves
// because they were added or changed. Others end with their last holder, and are made again when somebody asks for one,
// so that a walk over a million headers does not leave a million objects.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <unordered_map>

#include "headers/header.h"

namespace vellobar::headers {

class MadeHeaders {
 public:
  MadeHeaders() = default;
  ~MadeHeaders();
  MadeHeaders(const MadeHeaders&) = delete;
  MadeHeaders& operator=(const MadeHeaders&) = delete;

  /// Null when the header at this place is no object.
  std::shared_ptr<CHeader> find(std::size_t place) const;
  std::optional<std::size_t> place_of(const CHeader& header) const;
  /// True when the object at a place may have another name and value than the line there.
  bool is_changed(std::size_t place) const;
  /// The first such place, at or behind `from`, of a name that matches; nothing when there is none.
  template <typename Matches>
  std::optional<std::size_t> find_changed(std::size_t from, Matches matches) const {
    std::optional<std::size_t> first;
    for (const auto& [place, made] : by_place_) {
      if (place < from || place > first.value_or(place)) continue;
      const std::shared_ptr<CHeader> header = made.lock();
      if (header && header->is_kept() && matches(header->Name())) first = place;
    }
    return first;
  }

  /// Takes the object of a place that has none.
  void add(std::size_t place, const std::shared_ptr<CHeader>& header);
  void erase(std::size_t place);

 private:
  static constexpr std::size_t kFew = 16;

  void forget_ended();

  std::unordered_map<std::size_t, std::weak_ptr<CHeader>> by_place_;
  std::size_t most_ = kFew;  ///< twice as many as there were when those that ended were forgotten
};

}  // namespace vellobar::headers
