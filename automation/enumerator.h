// The enumerator of a collection: a walk over the items that the collection had when the enumerator was made, however
// many they are. Each goes out as a VARIANT of type VT_DISPATCH. Copies share the items and have a position of their
// own.
#pragma once

#include <ole2.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "automation/com_ptr.h"
#include "automation/guard.h"
#include "automation/objects.h"
#include "automation/unknown.h"

namespace vellobar::automation {

template <class Core>
class Enumerator final : public Unknown<IEnumVARIANT> {
 public:
  using Items = std::shared_ptr<const std::vector<std::shared_ptr<Core>>>;

  explicit Enumerator(Items items, std::size_t next = 0) : items_(std::move(items)), next_(next) {}

  STDMETHODIMP Next(ULONG wanted, VARIANT* to, ULONG* fetched) override {
    if (fetched != nullptr) *fetched = 0;
    if (to == nullptr || (fetched == nullptr && wanted != 1)) return E_POINTER;
    for (ULONG i = 0; i < wanted; ++i) VariantInit(&to[i]);
    ULONG given = 0;
    const HRESULT result = guarded([&] {
      for (; given < wanted && next_ < items_->size(); ++given, ++next_) hand_out_item(to[given]);
    });
    if (FAILED(result)) {
      for (; given > 0; --given, --next_) VariantClear(&to[given - 1]);
      return result;
    }
    if (fetched != nullptr) *fetched = given;
    return given == wanted ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG count) override {
    const std::size_t left = items_->size() - next_;
    next_ += count < left ? count : left;
    return count <= left ? S_OK : S_FALSE;
  }
  STDMETHODIMP Reset() override {
    next_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(IEnumVARIANT** to) override {
    if (to == nullptr) return E_POINTER;
    *to = nullptr;
    return guarded([&] { *to = new Enumerator(items_, next_); });
  }

 private:
  void hand_out_item(VARIANT& to) {
    V_DISPATCH(&to) = wrap((*items_)[next_]).detach();
    V_VT(&to) = VT_DISPATCH;
  }

  Items items_;
  std::size_t next_;
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
    *to = new Enumerator<Core>(std::move(items));
  });
}

}  // namespace vellobar::automation
