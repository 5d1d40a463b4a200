// The connection point for IPropertyNotifySink: its listeners are asked before a client puts a bindable property, and
// told after a bindable value changed.
#pragma once

#include <ocidl.h>

#include <vector>

#include "automation/com_ptr.h"
#include "automation/hosting/bindable_values.h"
#include "automation/hosting/control_part.h"
#include "automation/hosting/property_watch.h"

namespace vellobar::automation {

/// One listener of a connection point.
struct Connection {
  DWORD cookie;
  ComPtr<IUnknown> sink;
};

/// An object with an identity of its own, as connection points have, that lives as long as the control.
class PropertyConnectionPoint final : public IConnectionPoint {
 public:
  explicit PropertyConnectionPoint(IUnknown& control) : control_(control) {}
  PropertyConnectionPoint(const PropertyConnectionPoint&) = delete;
  PropertyConnectionPoint& operator=(const PropertyConnectionPoint&) = delete;

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override;
  STDMETHODIMP_(ULONG) AddRef() override { return control_.AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return control_.Release(); }

  STDMETHODIMP GetConnectionInterface(IID* interface_id) override;
  STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** to) override;
  STDMETHODIMP Advise(IUnknown* listener, DWORD* cookie) override;
  STDMETHODIMP Unadvise(DWORD cookie) override;
  STDMETHODIMP EnumConnections(IEnumConnections** to) override;

  bool has_listeners() const { return !connections_.empty(); }
  /// Calls `tell` with each listener until it answers false. One that stopped listening meanwhile is left out, one that
  /// began is not told any more.
  template <class Tell>
  void for_each_listener(Tell tell) {
    const DWORD newest = last_cookie_;
    for (DWORD told = 0; const Connection* next = connection_behind(told);) {
      told = next->cookie;
      if (told > newest) return;
      const ComPtr<IUnknown> sink = next->sink;
      if (!tell(*static_cast<IPropertyNotifySink*>(sink.get()))) return;
    }
  }

  /// Called when the first listener comes and when the last one goes.
  class Audience {
   public:
    virtual void first_listener_came() = 0;
    virtual void last_listener_went() noexcept = 0;

   protected:
    ~Audience() = default;
  };
  void set_audience(Audience& audience) { audience_ = &audience; }

 private:
  /// The oldest listener that is newer than this one; null when there is none.
  const Connection* connection_behind(DWORD cookie) const;

  IUnknown& control_;
  Audience* audience_ = nullptr;
  /// By cookie, the oldest first.
  std::vector<Connection> connections_;
  DWORD last_cookie_ = 0;
};

class PropertyNotifications final : public ControlPart<IConnectionPointContainer>,
                                    public WatchedControl,
                                    public PropertyConnectionPoint::Audience {
 public:
  PropertyNotifications(IUnknown& control, const CVellobar& core);
  ~PropertyNotifications();

  STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** to) override;
  STDMETHODIMP FindConnectionPoint(REFIID interface_id, IConnectionPoint** to) override;

  /// Whether every listener lets this property be put.
  bool may_put(DISPID identifier);
  /// While frozen nobody is told; what changed meanwhile is told at the end of the call that thaws.
  void freeze(bool frozen);

  HRESULT advise(IUnknown* listener, DWORD* cookie) { return point_.Advise(listener, cookie); }

  bool tell_changes() override;
  IUnknown& identity() const override { return control(); }
  void first_listener_came() override;
  void last_listener_went() noexcept override { unwatch(*this); }

 private:
  const CVellobar& core_;
  PropertyConnectionPoint point_;
  BindableValues told_;
  int frozen_ = 0;
};

}  // namespace vellobar::automation
