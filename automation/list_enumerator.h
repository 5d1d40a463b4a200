// The walk behind every enumerator of the component: over a list as it was when the enumerator was made, however long.
// `Items` has a size and gives the item at an index.
// Copies share the list and have a position of their own. A `Kind` says what is walked over:
//
//   Interface                the enumerator's own interface
//   Item, Given              what the list holds, and what a caller receives for it
//   give(item, to)           makes an item the caller's own; may throw
//   take_back(given)         ends what `give` made
#pragma once

#include <ole2.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "automation/guard.h"
#include "automation/unknown.h"

namespace vellobar::automation {

template <class Kind, class Items = const std::vector<typename Kind::Item>>
class ListEnumerator final : public Unknown<typename Kind::Interface> {
 public:
  using Interface = typename Kind::Interface;
  using Given = typename Kind::Given;
  using List = std::shared_ptr<Items>;

  explicit ListEnumerator(List list, std::size_t next = 0) : list_(std::move(list)), next_(next) {}

  STDMETHODIMP Next(ULONG wanted, Given* to, ULONG* fetched) override {
    if (fetched != nullptr) *fetched = 0;
    if (to == nullptr || (fetched == nullptr && wanted != 1)) return E_POINTER;
    std::fill_n(to, wanted, Given{});
    ULONG given = 0;
    const HRESULT result = guarded([&] {
      for (; given < wanted && next_ + given < list_->size(); ++given) Kind::give((*list_)[next_ + given], to[given]);
      next_ += given;
    });
    if (FAILED(result)) {
      take_back(to, given);
      return result;
    }
    if (fetched != nullptr) *fetched = given;
    return given == wanted ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG count) override {
    const std::size_t left = list_->size() - next_;
    next_ += count < left ? count : left;
    return count <= left ? S_OK : S_FALSE;
  }
  STDMETHODIMP Reset() override {
    next_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(Interface** to) override {
    if (to == nullptr) return E_POINTER;
    *to = nullptr;
    return guarded([&] { *to = new ListEnumerator(list_, next_); });
  }

 private:
  static void take_back(Given* from, ULONG count) {
    for (ULONG i = 0; i < count; ++i) Kind::take_back(std::exchange(from[i], Given{}));
  }

  List list_;
  std::size_t next_;
};

/// Hands out an enumerator over what `make_items` gives, which may throw.
template <class Kind, class MakeItems>
HRESULT enumerate(typename Kind::Interface** to, MakeItems&& make_items) noexcept {
  if (to == nullptr) return E_POINTER;
  *to = nullptr;
  return guarded(
      [&] { *to = new ListEnumerator<Kind>(std::make_shared<const std::vector<typename Kind::Item>>(make_items())); });
}

}  // namespace vellobar::automation
