// The owner of one reference to a COM object.
#pragma once

#include <ole2.h>

#include <utility>

namespace vellobar::automation {

template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  /// Adds a reference of its own.
  explicit ComPtr(Interface* object) : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  /// Takes over a reference that the caller holds.
  static ComPtr attach(Interface* object) {
    ComPtr owner;
    owner.object_ = object;
    return owner;
  }

  ComPtr(const ComPtr& other) : ComPtr(other.object_) {}
  ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComPtr() {
    if (object_ != nullptr) object_->Release();
  }

  Interface* get() const { return object_; }
  Interface* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

  /// Gives the reference away.
  Interface* detach() { return std::exchange(object_, nullptr); }
  /// Where a function that hands out a reference may put it; lets go of the one held.
  Interface** receive() {
    *this = ComPtr();
    return &object_;
  }

 private:
  Interface* object_ = nullptr;
};

/// Another interface of the same object; empty when it has none.
template <class Wanted>
ComPtr<Wanted> query(IUnknown* object) {
  void* found = nullptr;
  if (object == nullptr || FAILED(object->QueryInterface(__uuidof(Wanted), &found))) return {};
  return ComPtr<Wanted>::attach(static_cast<Wanted*>(found));
}

}  // namespace vellobar::automation
