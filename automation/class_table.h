// The nine classes a client can create: one row each, from which the class factories, the registration and the source
// of error information are answered.
#pragma once

#include <ole2.h>

#include <cstddef>
#include <span>

#include "automation/com_ptr.h"

namespace vellobar::automation {

struct ClassEntry {
  const CLSID& class_id;
  const IID& interface_id;
  const wchar_t* description;
  const wchar_t* versioned_prog_id;
  const wchar_t* prog_id;
  const wchar_t* threading_model;
  /// Only a control writes the keys that containers look for.
  bool is_control;
  /// A new object that stands alone. May throw.
  ComPtr<IUnknown> (*create)();
};

inline constexpr std::size_t kClassCount = 9;

/// The miscellaneous status of a control's content: no face at run time, active when visible, inside out, no links to
/// its inside, composed anew when resized, and the container's site comes first. Its other aspects have none.
inline constexpr unsigned long kControlStatus = 132497;

std::span<const ClassEntry, kClassCount> class_table();

/// The row of a class; null when it is none of ours.
const ClassEntry* class_entry(REFCLSID class_id);

/// The row whose default interface this is; kClassCount when it is none of ours.
std::size_t class_row_of_interface(REFIID interface_id);

}  // namespace vellobar::automation
