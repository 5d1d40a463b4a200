// The enumerator of a collection: a walk over the items that the collection had when the enumerator was made. Each goes
// out as a VARIANT of type VT_DISPATCH.
#pragma once

#include <ole2.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "automation/list_enumerator.h"
#include "automation/objects.h"

namespace vellobar::automation {

template <class Core>
struct ObjectsOf {
  using Interface = IEnumVARIANT;
  using Item = std::shared_ptr<Core>;
  using Given = VARIANT;
  static void give(const Item& item, VARIANT& to) {
    V_DISPATCH(&to) = wrap(item).detach();
    V_VT(&to) = VT_DISPATCH;
  }
  static void take_back(VARIANT given) { VariantClear(&given); }
};

/// `_NewEnum` of a collection. Without a place for the result nothing is done, and that succeeds.
template <class Core, class Collection>
HRESULT new_enumerator(Collection& collection, IUnknown** to) noexcept {
  return guarded([&] {
    if (to == nullptr) return;
    *to = nullptr;
    auto items = std::make_shared<std::vector<std::shared_ptr<Core>>>();
    items->reserve(static_cast<std::size_t>(collection.Count()));
    for (std::int64_t i = 0; i < collection.Count(); ++i) items->push_back(collection.Item(i));
    *to = new ListEnumerator<ObjectsOf<Core>>(std::move(items));
  });
}

}  // namespace vellobar::automation
