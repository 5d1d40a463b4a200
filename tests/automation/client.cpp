#include "tests/automation/client.h"

#include <algorithm>
#include <stdexcept>

namespace vellobar::tests {

std::wstring Module::path_under_test() {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.find_last_of(L'\\') + 1) + L"vellobar.dll";
}

Module& Module::under_test() {
  static Module module(path_under_test());
  return module;
}

Module::Module(const std::wstring& path) : module_(LoadLibraryW(path.c_str())) {
  if (module_ == nullptr) throw std::runtime_error("the DLL cannot be loaded");
}

Module::~Module() { FreeLibrary(module_); }

template <class Function>
Function* Module::entry(const char* name) const {
  const auto address = GetProcAddress(module_, name);
  if (address == nullptr) throw std::runtime_error(std::string("no entry point ") + name);
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(address));
}

HRESULT Module::get_class_object(REFCLSID class_id, REFIID interface_id, void** to) const {
  return entry<HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**)>("DllGetClassObject")(class_id, interface_id, to);
}
HRESULT Module::can_unload_now() const { return entry<HRESULT STDAPICALLTYPE()>("DllCanUnloadNow")(); }
HRESULT Module::register_server() const { return entry<HRESULT STDAPICALLTYPE()>("DllRegisterServer")(); }
HRESULT Module::unregister_server() const { return entry<HRESULT STDAPICALLTYPE()>("DllUnregisterServer")(); }

HRESULT Module::install(bool install, const wchar_t* audience) const {
  return entry<HRESULT STDAPICALLTYPE(BOOL, const wchar_t*)>("DllInstall")(install ? TRUE : FALSE, audience);
}

Value::Value(const wchar_t* text) : Value() {
  V_VT(&value_) = VT_BSTR;
  V_BSTR(&value_) = SysAllocString(text);
}

Value::Value(short number) : Value() {
  V_VT(&value_) = VT_I2;
  V_I2(&value_) = number;
}

Value::Value(bool flag) : Value() {
  V_VT(&value_) = VT_BOOL;
  V_BOOL(&value_) = flag ? VARIANT_TRUE : VARIANT_FALSE;
}

Value::Value(IDispatch* object) : Value() {
  V_VT(&value_) = VT_DISPATCH;
  V_DISPATCH(&value_) = object;
  if (object != nullptr) object->AddRef();
}

Value Value::of_type(VARTYPE type) {
  Value value;
  value.value_ = VARIANT{};
  V_VT(&value.value_) = type;
  return value;
}

Value Value::missing() {
  Value value = of_type(VT_ERROR);
  V_ERROR(&value.value_) = DISP_E_PARAMNOTFOUND;
  return value;
}

Value Value::reference_to(VARIANT& value) {
  Value reference = of_type(VT_BYREF | VT_VARIANT);
  V_VARIANTREF(&reference.value_) = &value;
  return reference;
}

HRESULT invoke(IDispatch* object, DISPID identifier, WORD kind, std::vector<VARIANT> arguments, VARIANT* result,
               EXCEPINFO* exception) {
  std::reverse(arguments.begin(), arguments.end());
  DISPID put = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
  if (kind == DISPATCH_PROPERTYPUT) {
    parameters.rgdispidNamedArgs = &put;
    parameters.cNamedArgs = 1;
  }
  return object->Invoke(identifier, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, result, exception, nullptr);
}

DISPID identifier_of(IDispatch* object, const wchar_t* name) {
  std::wstring spelled = name;
  LPOLESTR names = spelled.data();
  DISPID identifier = DISPID_UNKNOWN;
  EXPECT_EQ(object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &identifier), S_OK);
  return identifier;
}

ErrorInformation take_error_information() {
  ComPtr<IErrorInfo> information;
  ErrorInformation taken;
  if (GetErrorInfo(0, information.receive()) != S_OK) return taken;
  Text description, source, help_file;
  information->GetDescription(description.receive());
  information->GetSource(source.receive());
  information->GetHelpFile(help_file.receive());
  information->GetHelpContext(&taken.help_context);
  information->GetGUID(&taken.guid);
  taken.present = true;
  taken.description = description.value();
  taken.source = source.value();
  taken.help_file = help_file.value();
  return taken;
}

void leave_foreign_error_information() {
  ComPtr<ICreateErrorInfo> information;
  ASSERT_EQ(CreateErrorInfo(information.receive()), S_OK);
  std::wstring description = L"somebody else's";
  information->SetDescription(description.data());
  ASSERT_EQ(SetErrorInfo(0, query<IErrorInfo>(information.get()).get()), S_OK);
}

ULONG references_to(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

DWORD run_program(std::wstring command_line) {
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command_line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process)) {
    throw std::runtime_error("a program cannot be started");
  }
  DWORD code = 0;
  WaitForSingleObject(process.hProcess, INFINITE);
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code;
}

std::wstring widened(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

}  // namespace vellobar::tests
