// What the module writes into the registry about itself, and how it takes that back.
#pragma once

#include <windows.h>

namespace vellobar::automation {

/// Registers the type library and the nine classes under HKEY_CLASSES_ROOT. A class that was registered before is
/// written afresh. SELFREG_E_TYPELIB or SELFREG_E_CLASS when the registry refuses.
HRESULT register_server() noexcept;

/// Takes back what register_server wrote; keys of ours that somebody else put something into keep that. Succeeds also
/// when there is nothing to take back.
HRESULT unregister_server() noexcept;

}  // namespace vellobar::automation
