// The enumerator of a collection: a walk over the items that the collection had when the enumerator was made. Each goes
// out as a VARIANT of type VT_DISPATCH.
#pragma once

#include <ole2.h>

#include <memory>

#include "automation/list_enumerator.h"
#include "automation/objects.h"
#include "mailbox/snapshot.h"

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
    *to = new ListEnumerator<ObjectsOf<Core>, mailbox::Snapshot<Collection, Core>>(collection.snapshot());
  });
}

}  // namespace vellobar::automation
