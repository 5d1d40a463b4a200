// An enumerator over a list as it was when the enumerator was made. Copies share the list and have a position of their
// own. `give` overloads, found by the kind of item, make each item the caller's own.
#pragma once

#include <ocidl.h>
#include <ole2.h>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "automation/com_ptr.h"
#include "automation/guard.h"
#include "automation/unknown.h"

namespace vellobar::automation {

/// One listener of a connection point.
struct Connection {
  DWORD cookie;
  ComPtr<IUnknown> sink;
};

inline void give(const Connection& connection, CONNECTDATA& to) {
  to = {ComPtr<IUnknown>(connection.sink).detach(), connection.cookie};
}
inline void give(const ComPtr<IConnectionPoint>& point, IConnectionPoint*& to) {
  to = ComPtr<IConnectionPoint>(point).detach();
}
inline void give(const FORMATETC& format, FORMATETC& to) { to = format; }
/// The name becomes the caller's own. Throws std::bad_alloc.
void give(const OLEVERB& verb, OLEVERB& to);

template <class Interface, class Item, class Given>
class ListEnumerator final : public Unknown<Interface> {
 public:
  using List = std::shared_ptr<const std::vector<Item>>;

  explicit ListEnumerator(List list, std::size_t next = 0) : list_(std::move(list)), next_(next) {}

  STDMETHODIMP Next(ULONG wanted, Given* to, ULONG* fetched) override {
    if (fetched != nullptr) *fetched = 0;
    if (to == nullptr || (fetched == nullptr && wanted != 1)) return E_POINTER;
    ULONG given = 0;
    const HRESULT result = guarded([&] {
      for (; given < wanted && next_ < list_->size(); ++given, ++next_) give((*list_)[next_], to[given]);
    });
    if (fetched != nullptr) *fetched = given;
    if (FAILED(result)) return result;
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
  List list_;
  std::size_t next_;
};

/// Hands out an enumerator over these items.
template <class Interface, class Given, class Item>
HRESULT enumerate(std::vector<Item> items, Interface** to) noexcept {
  if (to == nullptr) return E_POINTER;
  *to = nullptr;
  return guarded([&] {
    *to = new ListEnumerator<Interface, Item, Given>(std::make_shared<const std::vector<Item>>(std::move(items)));
  });
}

}  // namespace vellobar::automation
