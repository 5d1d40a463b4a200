// What the module writes into the registry about itself, and how it takes that back.
#pragma once

#include <windows.h>

namespace vellobar::automation {

/// Who can create the classes afterwards: everybody on the machine (HKEY_CLASSES_ROOT), or the user who registers
/// (HKEY_CURRENT_USER\Software\Classes), for which no administrator is needed.
enum class Audience { everybody, current_user };

/// Registers the type library and the nine classes. A class that was registered before is written afresh.
/// SELFREG_E_TYPELIB or SELFREG_E_CLASS when the registry refuses.
HRESULT register_server(Audience audience) noexcept;

/// Takes back what register_server wrote for the same audience; keys of ours that somebody else put something into keep
/// that, and the program identifiers of a class stay while the DLL of the other bitness is registered for it. Succeeds
/// also when there is nothing to take back.
HRESULT unregister_server(Audience audience) noexcept;

/// The same, told by the text behind `regsvr32 /i:`, in letters of any case: "user" is the current user, no text is
/// everybody. E_INVALIDARG, and nothing done, for any other text.
HRESULT install_server(bool install, const wchar_t* audience) noexcept;

}  // namespace vellobar::automation
