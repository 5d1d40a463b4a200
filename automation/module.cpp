#include "automation/module.h"

#include <atomic>

#include "automation/class_factory.h"
#include "automation/registration.h"
#include "automation/type_library.h"

namespace vellobar::automation {

namespace {

HINSTANCE instance = nullptr;
std::atomic<long> alive{0};

}  // namespace

HINSTANCE module_instance() noexcept { return instance; }

ModuleReference::ModuleReference() noexcept { ++alive; }
ModuleReference::~ModuleReference() { --alive; }

void lock_server(bool lock) noexcept { alive += lock ? 1 : -1; }

long living_objects() noexcept { return alive; }

}  // namespace vellobar::automation

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_PROCESS_ATTACH) vellobar::automation::instance = module;
  // When the whole process ends, the system's own libraries may be gone already.
  if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) vellobar::automation::release_type_information();
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID class_id, REFIID interface_id, LPVOID* to) {
  return vellobar::automation::get_class_object(class_id, interface_id, to);
}

STDAPI DllCanUnloadNow() { return vellobar::automation::living_objects() == 0 ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() { return vellobar::automation::register_server(vellobar::automation::Audience::everybody); }

STDAPI DllUnregisterServer() {
  return vellobar::automation::unregister_server(vellobar::automation::Audience::everybody);
}

STDAPI DllInstall(BOOL install, LPCWSTR audience) {
  return vellobar::automation::install_server(install != FALSE, audience);
}
}
