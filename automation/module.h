// The module as the system sees it: where it was loaded, and what keeps it loaded. Every object that a client can hold
// and every server lock counts as one; the module may be unloaded when none is left.
#pragma once

#include <windows.h>

namespace vellobar::automation {

HINSTANCE module_instance() noexcept;

/// Counts as one for as long as it lives.
class ModuleReference {
 public:
  ModuleReference() noexcept;
  ModuleReference(const ModuleReference&) noexcept : ModuleReference() {}
  ModuleReference& operator=(const ModuleReference&) noexcept { return *this; }
  ~ModuleReference();
};

/// A server lock, taken or given back by a client.
void lock_server(bool lock) noexcept;

/// How many objects and locks are alive.
long living_objects() noexcept;

}  // namespace vellobar::automation
