#include "automation/hosting/property_watch.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

#include "automation/com_ptr.h"

namespace vellobar::automation {

namespace {

struct Watch {
  WatchedControl* control;
  DWORD thread;
};

struct Watches {
  std::mutex mutex;
  std::vector<Watch> controls;
  /// Threads that are telling right now: what their listeners change is told when those have returned.
  std::vector<DWORD> telling;
};

Watches& watches() {
  static Watches all;
  return all;
}

/// Listeners that answer each change with another would never come to an end; the rest then waits for the
/// next call.
constexpr int kRounds = 16;

class Telling {
 public:
  explicit Telling(DWORD thread) : thread_(thread) {
    Watches& all = watches();
    const std::lock_guard lock(all.mutex);
    if (std::find(all.telling.begin(), all.telling.end(), thread) != all.telling.end()) return;
    all.telling.push_back(thread);
    begun_ = true;
  }
  Telling(const Telling&) = delete;
  Telling& operator=(const Telling&) = delete;
  ~Telling() {
    if (!begun_) return;
    Watches& all = watches();
    const std::lock_guard lock(all.mutex);
    std::erase(all.telling, thread_);
  }
  bool begun() const { return begun_; }

 private:
  DWORD thread_;
  bool begun_ = false;
};

/// Keeps the thread's error information over what listeners do.
class KeptErrorInformation {
 public:
  KeptErrorInformation() { GetErrorInfo(0, kept_.receive()); }
  KeptErrorInformation(const KeptErrorInformation&) = delete;
  KeptErrorInformation& operator=(const KeptErrorInformation&) = delete;
  ~KeptErrorInformation() { SetErrorInfo(0, kept_.get()); }

 private:
  ComPtr<IErrorInfo> kept_;
};

bool tell_once(DWORD thread) {
  std::vector<std::pair<ComPtr<IUnknown>, WatchedControl*>> watched;
  {
    Watches& all = watches();
    const std::lock_guard lock(all.mutex);
    watched.reserve(all.controls.size());
    for (const Watch& watch : all.controls) {
      if (watch.thread == thread) watched.emplace_back(ComPtr<IUnknown>(&watch.control->identity()), watch.control);
    }
  }
  bool told = false;
  for (const auto& [kept, control] : watched) told = control->tell_changes() || told;
  return told;
}

}  // namespace

void watch(WatchedControl& control) {
  Watches& all = watches();
  const std::lock_guard lock(all.mutex);
  all.controls.push_back({&control, GetCurrentThreadId()});
  ++watched_controls;
}

void unwatch(WatchedControl& control) noexcept {
  Watches& all = watches();
  const std::lock_guard lock(all.mutex);
  watched_controls -=
      static_cast<int>(std::erase_if(all.controls, [&](const Watch& watch) { return watch.control == &control; }));
}

void tell_listeners() noexcept {
  try {
    const DWORD thread = GetCurrentThreadId();
    const Telling telling(thread);
    if (!telling.begun()) return;
    const KeptErrorInformation kept;
    for (int round = 0; round < kRounds && tell_once(thread); ++round) {
    }
  } catch (const std::exception&) {
    // The call itself is done; without memory its listeners hear of the change with the next one.
  }
}

}  // namespace vellobar::automation
