// What DllGetClassObject answers: a class factory for each of the nine classes.
#pragma once

#include <ole2.h>

namespace vellobar::automation {

/// A factory for one of our classes; CLASS_E_CLASSNOTAVAILABLE for any other.
HRESULT get_class_object(REFCLSID class_id, REFIID interface_id, void** to) noexcept;

}  // namespace vellobar::automation
