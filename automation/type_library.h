// The type library that the module carries as its resource 1, and the description of each interface in it. Descriptions
// are read once and kept until the module is unloaded.
#pragma once

#include <ole2.h>

#include <string>

#include "automation/com_ptr.h"

namespace vellobar::automation {

/// The module's file name with its path. Throws std::bad_alloc, std::system_error.
std::wstring module_path();

/// The library itself, read from the module.
HRESULT load_type_library(ComPtr<ITypeLib>& library);

/// The description of an interface of ours; borrowed, valid as long as the module is loaded.
HRESULT type_information(REFIID interface_id, ITypeInfo*& information) noexcept;

/// The description of the class whose default interface this is, with a reference for the caller.
HRESULT class_information(REFIID interface_id, ITypeInfo** information) noexcept;

/// Gives back what was read. For the module's end.
void release_type_information() noexcept;

}  // namespace vellobar::automation
