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
#include "mailbox/message_snapshot.h"
#include "mailbox/messages.h"

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

template <class Core, class Collection>
auto items_of(Collection& collection) {
  auto items = std::make_shared<std::vector<std::shared_ptr<Core>>>();
  items->reserve(static_cast<std::size_t>(collection.Count()));
  for (std::int64_t i = 0; i < collection.Count(); ++i) items->push_back(collection.Item(i));
  return std::shared_ptr<const std::vector<std::shared_ptr<Core>>>(std::move(items));
}

/// Of messages there may be a million, each with all that was read of it.
template <class Core>
auto items_of(CMessages& messages) {
  return std::shared_ptr<const mailbox::MessageSnapshot>(messages.snapshot());
}

/// `_NewEnum` of a collection. Without a place for the result nothing is done, and that succeeds.
template <class Core, class Collection>
HRESULT new_enumerator(Collection& collection, IUnknown** to) noexcept {
  return guarded([&] {
    if (to == nullptr) return;
    *to = nullptr;
    auto items = items_of<Core>(collection);
    using Items = typename decltype(items)::element_type;
    *to = new ListEnumerator<ObjectsOf<Core>, Items>(std::move(items));
  });
}

}  // namespace vellobar::automation
