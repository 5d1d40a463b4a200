// An automation object that stands for an object of the core, and the register that keeps identity: as long as a client
// holds the automation object of a core object, that same one is handed out again. The register holds no references.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "automation/com_ptr.h"
#include "automation/object.h"

namespace vellobar::automation {

/// `Self` is the finished class, made from a std::shared_ptr<Core>.
template <class Self, class Interface, class Core>
class CoreObject : public Object<Interface> {
 public:
  /// The automation object of a core object: the living one, else a new one.
  static ComPtr<Interface> of(const std::shared_ptr<Core>& core) {
    // An object that cannot be entered into the register ends when the register is free again.
    ComPtr<Interface> made;
    Register& living = living_objects_of_class();
    const std::lock_guard lock(living.mutex);
    const auto found = living.by_core.find(core.get());
    if (found != living.by_core.end() && found->second->add_reference_while_alive()) {
      return ComPtr<Interface>::attach(found->second);
    }
    made = ComPtr<Interface>::attach(new Self(core));
    Self* self = static_cast<Self*>(made.get());
    living.interfaces.insert(self);
    living.by_core[core.get()] = self;
    return made;
  }

  /// The core object behind an interface pointer; null when the pointer is not one of ours.
  static std::shared_ptr<Core> core_of(IUnknown* object) {
    const auto candidate = query<Interface>(object);
    Register& living = living_objects_of_class();
    const std::lock_guard lock(living.mutex);
    // Somebody else's object may implement our interface too: only what the register knows is one of ours.
    if (!living.interfaces.contains(candidate.get())) return nullptr;
    return static_cast<Self*>(candidate.get())->core_;
  }

 protected:
  explicit CoreObject(std::shared_ptr<Core> core) : core_(std::move(core)) {}
  ~CoreObject() override {
    Register& living = living_objects_of_class();
    const std::lock_guard lock(living.mutex);
    living.interfaces.erase(this);
    const auto found = living.by_core.find(core_.get());
    if (found != living.by_core.end() && found->second == this) living.by_core.erase(found);
  }

  Core& core() const { return *core_; }

  /// A property get or a method with a result, named by the member of the core class that does it.
  template <class To, class Member>
  HRESULT get(To* to, Member member) noexcept {
    return answer(to, [&]() -> decltype(auto) { return std::invoke(member, *core_); });
  }
  /// A property put of a text.
  template <class Member>
  HRESULT put(BSTR text, Member member) noexcept {
    return guarded([&] { std::invoke(member, *core_, text_of(text)); });
  }
  /// A method without arguments and result.
  template <class Member>
  HRESULT call(Member member) noexcept {
    return guarded([&] { std::invoke(member, *core_); });
  }

 private:
  struct Register {
    std::mutex mutex;
    std::unordered_map<const Core*, CoreObject*> by_core;
    std::unordered_set<const Interface*> interfaces;
  };
  static Register& living_objects_of_class() {
    static Register living;
    return living;
  }

  std::shared_ptr<Core> core_;
};

}  // namespace vellobar::automation
