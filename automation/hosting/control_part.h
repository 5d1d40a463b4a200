// A part of the control that answers some of its hosting interfaces. A part lives as a member of the control and shares
// its identity: a reference to a part is a reference to the control, and every interface of the control is found from
// it.
#pragma once

#include <ole2.h>

namespace vellobar::automation {

template <class... Interfaces>
class ControlPart : public Interfaces... {
 public:
  explicit ControlPart(IUnknown& control) : control_(control) {}
  ControlPart(const ControlPart&) = delete;
  ControlPart& operator=(const ControlPart&) = delete;

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override {
    return control_.QueryInterface(interface_id, to);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return control_.AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return control_.Release(); }

 protected:
  ~ControlPart() = default;

  IUnknown& control() const { return control_; }

 private:
  IUnknown& control_;
};

}  // namespace vellobar::automation
