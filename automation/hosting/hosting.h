// What makes the control one that containers can host: its parts, and the table of the interfaces that they answer. The
// whole is made when somebody first asks for one of these interfaces; most scripts never do.
#pragma once

#include "automation/hosting/advice.h"
#include "automation/hosting/embedding.h"
#include "automation/hosting/in_place.h"
#include "automation/hosting/persistence.h"
#include "automation/hosting/property_notifications.h"
#include "automation/hosting/view.h"

namespace vellobar::automation {

class Hosting {
 public:
  Hosting(IUnknown& control, CVellobar& core);
  Hosting(const Hosting&) = delete;
  Hosting& operator=(const Hosting&) = delete;
  /// From here on nobody is told anything any more.
  ~Hosting() { unwatch(notifications_); }

  /// Whether a control answers this interface with one of its parts.
  static bool answers(REFIID interface_id) { return row_of(interface_id) != nullptr; }
  /// The interface, borrowed; null when no part answers it.
  IUnknown* find(REFIID interface_id);

  /// Whether everybody who listens lets this property be put.
  bool may_put(DISPID identifier) { return notifications_.may_put(identifier); }

 private:
  struct Row {
    const IID& interface_id;
    IUnknown* (*of)(Hosting&);
  };
  template <auto Part, class Interface>
  static IUnknown* interface_of(Hosting& hosting) {
    return static_cast<Interface*>(&(hosting.*Part));
  }
  static const Row kRows[];
  static const Row* row_of(REFIID interface_id);

  Advice advice_;
  Persistence persistence_;
  InPlace in_place_;
  View view_;
  PropertyNotifications notifications_;
  Embedding embedding_;
};

}  // namespace vellobar::automation
