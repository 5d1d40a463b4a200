#include "tests/clients/late_bound.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace vellobar::tests {

namespace {

std::wstring taken(BSTR string) {
  std::wstring text(string != nullptr ? string : L"", SysStringLen(string));
  SysFreeString(string);
  return text;
}

void succeed(HRESULT status) {
  if (FAILED(status)) throw CallFailed{status, {}, {}};
}

}  // namespace

Value::Value(std::wstring_view text) : Value() {
  V_VT(&value_) = VT_BSTR;
  V_BSTR(&value_) = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

Value::Value(long number) : Value() {
  V_VT(&value_) = VT_I4;
  V_I4(&value_) = number;
}

Value::Value(IDispatch* object) : Value() {
  V_VT(&value_) = VT_DISPATCH;
  V_DISPATCH(&value_) = object;
  if (object != nullptr) object->AddRef();
}

Value Value::bytes(std::string_view content) {
  Value value;
  SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(content.size()));
  if (array == nullptr) throw std::bad_alloc();
  V_VT(&value.value_) = VT_ARRAY | VT_UI1;
  V_ARRAY(&value.value_) = array;
  std::memcpy(array->pvData, content.data(), content.size());
  return value;
}

VARIANT Value::converted(VARTYPE type) const {
  VARIANT converted;
  VariantInit(&converted);
  const HRESULT status = VariantChangeType(&converted, const_cast<VARIANT*>(&value_), 0, type);
  if (FAILED(status)) throw std::runtime_error("a result of an unexpected type");
  return converted;
}

std::wstring Value::text() const {
  const VARIANT converted = this->converted(VT_BSTR);
  return taken(V_BSTR(&converted));
}

long Value::number() const {
  const VARIANT converted = this->converted(VT_I4);
  return V_I4(&converted);
}

bool Value::flag() const {
  const VARIANT converted = this->converted(VT_BOOL);
  return V_BOOL(&converted) != VARIANT_FALSE;
}

std::string Value::content() const {
  if (type() != (VT_ARRAY | VT_UI1)) throw std::runtime_error("a result that is no array of bytes");
  const SAFEARRAY* const array = V_ARRAY(&value_);
  if (array == nullptr) return {};
  return {static_cast<const char*>(array->pvData), array->rgsabound[0].cElements};
}

Object Object::create(const wchar_t* program_id) {
  CLSID class_id;
  succeed(CLSIDFromProgID(program_id, &class_id));
  void* created = nullptr;
  succeed(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &created));
  return Object(automation::ComPtr<IDispatch>::attach(static_cast<IDispatch*>(created)));
}

Object::Object(const Value& value) {
  if (value.type() != VT_DISPATCH || V_DISPATCH(&value.get()) == nullptr) throw std::runtime_error("not an object");
  dispatch_ = automation::ComPtr<IDispatch>(V_DISPATCH(&value.get()));
}

std::vector<DISPID> Object::identifiers_of(const wchar_t* name, const std::vector<Named>& arguments) const {
  std::vector<LPOLESTR> names = {const_cast<LPOLESTR>(name)};
  for (const Named& argument : arguments) names.push_back(const_cast<LPOLESTR>(argument.name));
  std::vector<DISPID> identifiers(names.size());
  const auto count = static_cast<UINT>(names.size());
  succeed(dispatch_->GetIDsOfNames(IID_NULL, names.data(), count, LOCALE_USER_DEFAULT, identifiers.data()));
  return identifiers;
}

Value Object::invoke(DISPID member, WORD kind, DISPPARAMS& parameters) const {
  Value result;
  EXCEPINFO exception{};
  const HRESULT status = dispatch_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                                           kind == DISPATCH_PROPERTYPUT ? nullptr : &result.get(), &exception, nullptr);
  if (SUCCEEDED(status)) return result;
  if (status != DISP_E_EXCEPTION) throw CallFailed{status, {}, {}};
  SysFreeString(exception.bstrHelpFile);
  throw CallFailed{exception.scode, taken(exception.bstrDescription), taken(exception.bstrSource)};
}

Value Object::invoke(DISPID member, WORD kind, std::vector<Value> arguments) const {
  // The last argument comes first in an automation call.
  std::vector<VARIANT> reversed;
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
    reversed.push_back(argument->get());
  DISPID put = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  if (kind == DISPATCH_PROPERTYPUT) {
    parameters.rgdispidNamedArgs = &put;
    parameters.cNamedArgs = 1;
  }
  return invoke(member, kind, parameters);
}

Value Object::get(const wchar_t* name, std::vector<Value> arguments) const {
  return invoke(identifiers_of(name, {})[0], DISPATCH_PROPERTYGET, std::move(arguments));
}

void Object::put(const wchar_t* name, const Value& value) const {
  invoke(identifiers_of(name, {})[0], DISPATCH_PROPERTYPUT, {value});
}

Value Object::call(const wchar_t* name, std::vector<Value> arguments) const {
  return invoke(identifiers_of(name, {})[0], DISPATCH_METHOD, std::move(arguments));
}

Value Object::call_named(const wchar_t* name, std::vector<Named> arguments) const {
  std::vector<DISPID> identifiers = identifiers_of(name, arguments);
  std::vector<VARIANT> values;
  for (Named& argument : arguments) values.push_back(argument.value.get());
  const auto count = static_cast<UINT>(values.size());
  DISPPARAMS parameters{values.data(), identifiers.data() + 1, count, count};
  return invoke(identifiers[0], DISPATCH_METHOD, parameters);
}

void Object::call_by_reference(const wchar_t* name, std::vector<Value*> arguments) const {
  std::vector<VARIANT> references;
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument) {
    VARIANT& variable = (*argument)->get();
    VARIANT reference;
    V_VT(&reference) = static_cast<VARTYPE>(V_VT(&variable) | VT_BYREF);
    V_BYREF(&reference) = &V_BYREF(&variable);
    references.push_back(reference);
  }
  DISPPARAMS parameters{references.data(), nullptr, static_cast<UINT>(references.size()), 0};
  invoke(identifiers_of(name, {})[0], DISPATCH_METHOD, parameters);
}

Value Object::value(std::vector<Value> arguments) const {
  return invoke(DISPID_VALUE, DISPATCH_METHOD | DISPATCH_PROPERTYGET, std::move(arguments));
}

std::vector<Value> Object::items() const {
  const Value enumerator = invoke(DISPID_NEWENUM, DISPATCH_METHOD | DISPATCH_PROPERTYGET, std::vector<Value>());
  const auto walk = automation::query<IEnumVARIANT>(V_UNKNOWN(&enumerator.get()));
  if (!walk) throw std::runtime_error("not a collection");
  std::vector<Value> items;
  for (;;) {
    Value item;
    const HRESULT status = walk->Next(1, &item.get(), nullptr);
    succeed(status);
    if (status != S_OK) return items;
    items.push_back(item);
  }
}

}  // namespace vellobar::tests
