// Controls whose bindable values somebody listens to. A change is told at the end of the client's call that made it,
// when no code of the component is at work any more: a listener may then call anything, also `Update`, let the control
// go, or stop listening. What changed and changed back within one call is not told.
#pragma once

#include <ole2.h>

#include <atomic>

namespace vellobar::automation {

class WatchedControl {
 public:
  /// Tells the listeners what changed since they were told last; false when nothing did.
  virtual bool tell_changes() = 0;
  /// What keeps the control alive meanwhile.
  virtual IUnknown& identity() const = 0;

 protected:
  ~WatchedControl() = default;
};

/// Starts watching, on the calling thread: the listeners belong to its apartment, and only its calls tell them.
void watch(WatchedControl& control);
void unwatch(WatchedControl& control) noexcept;

/// For the end of a call; the thread's error information stays that of the call.
void tell_listeners() noexcept;

/// Counts the watched controls, so that a call costs nothing more where nobody listens.
inline std::atomic<int> watched_controls{0};

}  // namespace vellobar::automation
