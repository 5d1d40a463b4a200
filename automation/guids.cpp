// The GUIDs that the IDL declares get their storage here, once for the module.
#include <initguid.h>

#include "vellobar_automation.h"
