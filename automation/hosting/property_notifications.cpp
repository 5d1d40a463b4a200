#include "automation/hosting/property_notifications.h"

#include <olectl.h>

#include <algorithm>
#include <utility>

#include "automation/guard.h"
#include "automation/list_enumerator.h"

namespace vellobar::automation {

namespace {

struct Connections {
  using Interface = IEnumConnections;
  using Item = Connection;
  using Given = CONNECTDATA;
  static void give(const Connection& connection, CONNECTDATA& to) {
    to = {ComPtr<IUnknown>(connection.sink).detach(), connection.cookie};
  }
  static void take_back(const CONNECTDATA& given) { given.pUnk->Release(); }
};

struct ConnectionPoints {
  using Interface = IEnumConnectionPoints;
  using Item = ComPtr<IConnectionPoint>;
  using Given = IConnectionPoint*;
  static void give(const Item& point, IConnectionPoint*& to) { to = Item(point).detach(); }
  static void take_back(IConnectionPoint* given) { given->Release(); }
};

}  // namespace

STDMETHODIMP PropertyConnectionPoint::QueryInterface(REFIID interface_id, void** to) {
  if (to == nullptr) return E_POINTER;
  const bool known = interface_id == IID_IUnknown || interface_id == IID_IConnectionPoint;
  *to = known ? static_cast<IConnectionPoint*>(this) : nullptr;
  if (!known) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

STDMETHODIMP PropertyConnectionPoint::GetConnectionInterface(IID* interface_id) {
  if (interface_id == nullptr) return E_POINTER;
  *interface_id = IID_IPropertyNotifySink;
  return S_OK;
}

STDMETHODIMP PropertyConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** to) {
  if (to == nullptr) return E_POINTER;
  return control_.QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(to));
}

STDMETHODIMP PropertyConnectionPoint::Advise(IUnknown* listener, DWORD* cookie) {
  if (cookie != nullptr) *cookie = 0;
  if (listener == nullptr || cookie == nullptr) return E_POINTER;
  const auto sink = query<IPropertyNotifySink>(listener);
  if (!sink) return CONNECT_E_CANNOTCONNECT;
  return guarded([&] {
    connections_.reserve(connections_.size() + 1);
    if (connections_.empty()) audience_->first_listener_came();
    connections_.push_back({++last_cookie_, ComPtr<IUnknown>(sink.get())});
    *cookie = last_cookie_;
  });
}

STDMETHODIMP PropertyConnectionPoint::Unadvise(DWORD cookie) {
  const auto found = std::find_if(connections_.begin(), connections_.end(),
                                  [&](const Connection& connection) { return connection.cookie == cookie; });
  if (found == connections_.end()) return CONNECT_E_NOCONNECTION;
  // A listener may let the control go with its last reference.
  const ComPtr<IUnknown> kept(&control_);
  const Connection gone = std::move(*found);
  connections_.erase(found);
  if (connections_.empty()) audience_->last_listener_went();
  return S_OK;
}

STDMETHODIMP PropertyConnectionPoint::EnumConnections(IEnumConnections** to) {
  return enumerate<Connections>(to, [&] { return connections_; });
}

const Connection* PropertyConnectionPoint::connection_behind(DWORD cookie) const {
  const auto found = std::find_if(connections_.begin(), connections_.end(),
                                  [&](const Connection& connection) { return connection.cookie > cookie; });
  return found != connections_.end() ? &*found : nullptr;
}

PropertyNotifications::PropertyNotifications(IUnknown& control, const CVellobar& core)
    : ControlPart(control), core_(core), point_(control) {
  point_.set_audience(*this);
}

PropertyNotifications::~PropertyNotifications() { unwatch(*this); }

STDMETHODIMP PropertyNotifications::EnumConnectionPoints(IEnumConnectionPoints** to) {
  return enumerate<ConnectionPoints>(
      to, [&] { return std::vector<ComPtr<IConnectionPoint>>{ComPtr<IConnectionPoint>(&point_)}; });
}

STDMETHODIMP PropertyNotifications::FindConnectionPoint(REFIID interface_id, IConnectionPoint** to) {
  if (to == nullptr) return E_POINTER;
  *to = nullptr;
  if (interface_id != IID_IPropertyNotifySink) return CONNECT_E_NOCONNECTION;
  *to = ComPtr<IConnectionPoint>(&point_).detach();
  return S_OK;
}

bool PropertyNotifications::may_put(DISPID identifier) {
  bool allowed = true;
  point_.for_each_listener([&](IPropertyNotifySink& listener) {
    allowed = listener.OnRequestEdit(identifier) != S_FALSE;
    return allowed;
  });
  return allowed;
}

void PropertyNotifications::freeze(bool frozen) {
  if (frozen) ++frozen_;
  if (!frozen && frozen_ > 0) --frozen_;
}

bool PropertyNotifications::tell_changes() {
  if (frozen_ > 0) return false;
  BindableValues now = bindable_values(core_);
  const std::vector<DISPID> changed = differences(told_, now);
  told_ = std::move(now);
  for (const DISPID identifier : changed) {
    point_.for_each_listener([&](IPropertyNotifySink& listener) {
      listener.OnChanged(identifier);
      return true;
    });
  }
  return !changed.empty();
}

void PropertyNotifications::first_listener_came() {
  told_ = bindable_values(core_);
  watch(*this);
}

}  // namespace vellobar::automation
