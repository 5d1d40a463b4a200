// A client of the DLL under test: it loads the DLL from the folder of the test program, makes objects through its class
// factories, calls them late-bound, and reads the thread's error information. Each test of an AutomationTest ends by
// asking that nothing of the DLL is left alive.
#pragma once

#include <gtest/gtest.h>
#include <ole2.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "automation/com_ptr.h"
#include "vellobar_automation.h"

namespace vellobar::tests {

using automation::ComPtr;
using automation::query;

/// The DLL under test, or a copy of it, as loaded into this process.
class Module {
 public:
  /// The one beside the test program.
  static Module& under_test();
  static std::wstring path_under_test();

  explicit Module(const std::wstring& path);
  ~Module();
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  HRESULT get_class_object(REFCLSID class_id, REFIID interface_id, void** to) const;
  HRESULT can_unload_now() const;
  HRESULT register_server() const;
  HRESULT unregister_server() const;
  HRESULT install(bool install, const wchar_t* audience) const;

 private:
  template <class Function>
  Function* entry(const char* name) const;

  HMODULE module_;
};

template <class Wanted>
ComPtr<Wanted> make(REFCLSID class_id) {
  void* factory = nullptr;
  EXPECT_EQ(Module::under_test().get_class_object(class_id, IID_IClassFactory, &factory), S_OK);
  const auto owner = ComPtr<IClassFactory>::attach(static_cast<IClassFactory*>(factory));
  void* object = nullptr;
  EXPECT_EQ(owner->CreateInstance(nullptr, __uuidof(Wanted), &object), S_OK);
  return ComPtr<Wanted>::attach(static_cast<Wanted*>(object));
}

/// An automation string for a call; null unless made from a text.
class Text {
 public:
  Text() = default;
  explicit Text(std::wstring_view text) : string_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  ~Text() { SysFreeString(string_); }

  BSTR get() const { return string_; }
  /// Where a call may put its result.
  BSTR* receive() {
    SysFreeString(std::exchange(string_, nullptr));
    return &string_;
  }
  bool is_null() const { return string_ == nullptr; }
  std::wstring value() const { return {string_ != nullptr ? string_ : L"", SysStringLen(string_)}; }

 private:
  BSTR string_ = nullptr;
};

/// A VARIANT for a call, cleared at the end.
class Value {
 public:
  Value() { VariantInit(&value_); }
  explicit Value(const wchar_t* text);
  explicit Value(short number);
  explicit Value(bool flag);
  explicit Value(IDispatch* object);
  Value(Value&& other) noexcept : value_(other.value_) { VariantInit(&other.value_); }
  Value& operator=(Value&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Value() { VariantClear(&value_); }

  /// A VARIANT of the given type whose content is all zeros.
  static Value of_type(VARTYPE type);
  /// What stands for an optional argument that is not given.
  static Value missing();
  /// A reference to another VARIANT, which must live longer.
  static Value reference_to(VARIANT& value);

  VARIANT& get() { return value_; }
  /// Where a call may put its result.
  VARIANT* receive() {
    VariantClear(&value_);
    return &value_;
  }
  VARTYPE type() const { return V_VT(&value_); }
  std::wstring text() const {
    return {V_BSTR(&value_) != nullptr ? V_BSTR(&value_) : L"", SysStringLen(V_BSTR(&value_))};
  }

 private:
  VARIANT value_;
};

/// A late-bound call by identifier; `arguments` in the order of the declaration. The exception is left with the caller.
HRESULT invoke(IDispatch* object, DISPID identifier, WORD kind, std::vector<VARIANT> arguments,
               VARIANT* result = nullptr, EXCEPINFO* exception = nullptr);
/// The identifier of a name; fails the test when there is none.
DISPID identifier_of(IDispatch* object, const wchar_t* name);

/// The thread's error information as a client reads it, which takes it away.
struct ErrorInformation {
  bool present = false;
  std::wstring description;
  std::wstring source;
  std::wstring help_file;
  DWORD help_context = 0;
  GUID guid{};
};
ErrorInformation take_error_information();
/// Puts somebody else's error information on the thread.
void leave_foreign_error_information();

class AutomationTest : public ::testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(Module::under_test().can_unload_now(), S_OK) << "something of the DLL is still alive";
    take_error_information();
  }
};

/// References that are held to an object.
ULONG references_to(IUnknown* object);

std::wstring widened(std::string_view ascii);

/// Runs a program to its end and returns its exit code.
DWORD run_program(std::wstring command_line);

/// An object of the client's own, to be handed to the component: it counts its references and knows no names.
class ClientObject final : public IDispatch {
 public:
  virtual ~ClientObject() = default;

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override {
    *to = interface_id == IID_IUnknown || interface_id == IID_IDispatch ? this : nullptr;
    if (*to == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
  STDMETHODIMP_(ULONG) Release() override { return --references; }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    ++calls;
    return DISP_E_MEMBERNOTFOUND;
  }

  ULONG references = 1;
  int calls = 0;
};

}  // namespace vellobar::tests
