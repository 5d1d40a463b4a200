// The registry as tests compare it: everything below a key, and what registering the DLL adds there.
#pragma once

#include <windows.h>

#include <map>
#include <string>

namespace vellobar::tests {

/// Names of keys are the same whatever the case of their letters.
struct ByName {
  bool operator()(const std::wstring& left, const std::wstring& right) const {
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
  }
};

/// Every value below a key by its path; a key itself stands with "\" behind its path.
using Snapshot = std::map<std::wstring, std::wstring, ByName>;

/// All classes of the machine, as everybody sees them.
Snapshot classes_root();
/// The classes of the current user alone.
Snapshot classes_of_user();

/// What registering put into the registry: all that stands in `after` and not, or otherwise, in `before`, less what the
/// system makes of it for the other bitness, and the flags of the library, which systems write differently.
Snapshot written(const Snapshot& after, const Snapshot& before);

/// What registering a DLL at this path adds for its nine classes, and for the type library with its interfaces.
Snapshot expected_classes(const std::wstring& module);
Snapshot expected_type_library(const std::wstring& module);

/// What registering adds for everybody besides, where the system's marshaler finds libraries of the neutral language
/// only (Wine).
Snapshot expected_for_marshaler(const std::wstring& module);

/// The identifier that the type library gives one of its types.
std::wstring guid_of(const wchar_t* type_name);

/// That two snapshots hold the same, except for keys above ours that the system makes with the first class, library or
/// interface and that stay.
void expect_same(const Snapshot& found, const Snapshot& expected);

}  // namespace vellobar::tests
