// The type library, read back through the system and compared cell by cell with the table of the surface.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/automation/client.h"
#include "tests/automation/surface_table.h"

namespace vellobar::tests {

namespace {

ComPtr<ITypeLib> library() {
  ComPtr<ITypeLib> loaded;
  EXPECT_EQ(LoadTypeLibEx(Module::path_under_test().c_str(), REGKIND_NONE, loaded.receive()), S_OK);
  return loaded;
}

struct Documentation {
  std::wstring name, help, file;
};

template <class Describes>
Documentation documentation_of(Describes* object, long index) {
  Text name, help, file;
  DWORD context = 0;
  EXPECT_EQ(object->GetDocumentation(index, name.receive(), help.receive(), &context, file.receive()), S_OK);
  return {name.value(), help.value(), file.value()};
}

ComPtr<ITypeInfo> type_named(const wchar_t* name) {
  const auto all = library();
  for (UINT i = 0; i < all->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> type;
    all->GetTypeInfo(i, type.receive());
    if (documentation_of(type.get(), MEMBERID_NIL).name == name) return type;
  }
  ADD_FAILURE() << "no type " << std::string(name, name + wcslen(name));
  return {};
}

TYPEATTR attributes_of(ITypeInfo* type) {
  TYPEATTR* attributes = nullptr;
  EXPECT_EQ(type->GetTypeAttr(&attributes), S_OK);
  const TYPEATTR copy = *attributes;
  type->ReleaseTypeAttr(attributes);
  return copy;
}

/// The description of a dual interface's table of methods.
ComPtr<ITypeInfo> table_of_methods(const wchar_t* name) {
  const auto type = type_named(name);
  HREFTYPE reference = 0;
  ComPtr<ITypeInfo> table;
  EXPECT_EQ(type->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
  EXPECT_EQ(type->GetRefTypeInfo(reference, table.receive()), S_OK);
  return table;
}

std::wstring spelled_type(ITypeInfo* type, const TYPEDESC& description) {
  static const std::map<VARTYPE, std::wstring> kNames = {
      {VT_BSTR, L"BSTR"}, {VT_I2, L"short"},          {VT_I4, L"long"},           {VT_VARIANT, L"VARIANT"},
      {VT_DATE, L"DATE"}, {VT_BOOL, L"VARIANT_BOOL"}, {VT_UI1, L"unsigned char"}, {VT_UNKNOWN, L"IUnknown*"}};
  if (description.vt == VT_PTR) return spelled_type(type, *description.lptdesc) + L"*";
  if (description.vt == VT_SAFEARRAY) return L"SAFEARRAY(" + spelled_type(type, *description.lptdesc) + L")";
  if (description.vt == VT_USERDEFINED) {
    ComPtr<ITypeInfo> named;
    EXPECT_EQ(type->GetRefTypeInfo(description.hreftype, named.receive()), S_OK);
    return documentation_of(named.get(), MEMBERID_NIL).name;
  }
  const auto found = kNames.find(description.vt);
  return found != kNames.end() ? found->second : L"type " + std::to_wstring(description.vt);
}

std::wstring spelled_flags(USHORT flags) {
  static const std::pair<USHORT, const wchar_t*> kFlags[] = {
      {PARAMFLAG_FIN, L"in"}, {PARAMFLAG_FOUT, L"out"}, {PARAMFLAG_FOPT, L"optional"}, {PARAMFLAG_FRETVAL, L"retval"}};
  std::wstring spelled;
  for (const auto& [flag, name] : kFlags) {
    if ((flags & flag) != 0) spelled += (spelled.empty() ? L"[" : L", ") + std::wstring(name);
    flags = static_cast<USHORT>(flags & ~flag);
  }
  if (flags != 0) spelled += L" and flags " + std::to_wstring(flags);
  return spelled.empty() ? L"" : spelled + L"] ";
}

/// Parameters as an IDL spells them. The system tells no name for the parameter of a put that shares its identifier
/// with a get; `put_parameter` stands for it.
std::wstring spelled_parameters(ITypeInfo* type, const FUNCDESC& function, const wchar_t* put_parameter) {
  BSTR names[16] = {};
  UINT count = 0;
  EXPECT_EQ(type->GetNames(function.memid, names, 16, &count), S_OK);
  std::wstring spelled;
  for (int i = 0; i < function.cParams; ++i) {
    const ELEMDESC& parameter = function.lprgelemdescParam[i];
    const bool is_put = function.invkind == INVOKE_PROPERTYPUT;
    const std::wstring name = is_put ? put_parameter : names[i + 1] != nullptr ? names[i + 1] : L"(none)";
    spelled += (i > 0 ? L", " : L"") + spelled_flags(parameter.paramdesc.wParamFlags) +
               spelled_type(type, parameter.tdesc) + L" " + name;
  }
  for (BSTR name : names) SysFreeString(name);
  return spelled;
}

INVOKEKIND invoke_kind(Kind kind) {
  return kind == Kind::get ? INVOKE_PROPERTYGET : kind == Kind::put ? INVOKE_PROPERTYPUT : INVOKE_FUNC;
}

void expect_member(ITypeInfo* table, UINT index, const Member& member) {
  FUNCDESC* function = nullptr;
  ASSERT_EQ(table->GetFuncDesc(index, &function), S_OK);
  EXPECT_EQ(function->oVft, member.slot * static_cast<int>(sizeof(void*)));
  EXPECT_EQ(function->memid, member.identifier);
  EXPECT_EQ(function->invkind, invoke_kind(member.kind));
  EXPECT_EQ(function->callconv, CC_STDCALL);
  EXPECT_EQ(function->elemdescFunc.tdesc.vt, VT_HRESULT);
  EXPECT_EQ(spelled_parameters(table, *function, L"value"), member.parameters);
  const bool is_enumerator = std::wstring(member.name) == L"_NewEnum";
  EXPECT_EQ(function->wFuncFlags, is_enumerator ? FUNCFLAG_FRESTRICTED : 0);
  const Documentation documentation = documentation_of(table, function->memid);
  EXPECT_EQ(documentation.name, member.name);
  EXPECT_EQ(documentation.help, member.help);
  table->ReleaseFuncDesc(function);
}

}  // namespace

TEST(TypeLibrary, has_its_name_version_locale_help_string_and_help_file) {
  const auto loaded = library();
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(loaded->GetLibAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->wMajorVerNum, 1);
  EXPECT_EQ(attributes->wMinorVerNum, 0);
  EXPECT_EQ(attributes->lcid, 1033u);
  EXPECT_EQ(attributes->guid, LIBID_VELLOBARLib);
  EXPECT_EQ(attributes->syskind, sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32);
  loaded->ReleaseTLibAttr(attributes);

  const Documentation documentation = documentation_of(loaded.get(), MEMBERID_NIL);
  EXPECT_EQ(documentation.name, L"VELLOBARLib");
  EXPECT_EQ(documentation.help, L"Quorvane! COM Mailbox ActiveX Control");
  EXPECT_TRUE(documentation.file.ends_with(L"Vellobar.chm"));
}

TEST(TypeLibrary, holds_nine_interfaces_three_enumerations_nine_classes_and_nothing_else) {
  std::multiset<std::pair<TYPEKIND, std::wstring>> expected, found;
  for (const Interface& entry : interfaces()) expected.emplace(TKIND_DISPATCH, entry.name);
  for (const Enumeration& entry : enumerations()) expected.emplace(TKIND_ENUM, entry.name);
  for (const Class& entry : classes()) expected.emplace(TKIND_COCLASS, entry.name);
  const auto all = library();
  for (UINT i = 0; i < all->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> type;
    all->GetTypeInfo(i, type.receive());
    found.emplace(attributes_of(type.get()).typekind, documentation_of(type.get(), MEMBERID_NIL).name);
  }
  EXPECT_EQ(found, expected);
  EXPECT_EQ(expected.size(), 21u);
}

TEST(TypeLibrary, describes_every_member_of_every_interface_cell_by_cell) {
  for (const Interface& entry : interfaces()) {
    const auto table = table_of_methods(entry.name);
    ASSERT_EQ(attributes_of(table.get()).cFuncs, entry.members.size());
    for (UINT i = 0; i < entry.members.size(); ++i) {
      SCOPED_TRACE(std::string(entry.name, entry.name + wcslen(entry.name)) + ", member " + std::to_string(i));
      expect_member(table.get(), i, entry.members[i]);
    }
  }
}

TEST(TypeLibrary, marks_every_interface_dual_automation_and_dispatchable) {
  for (const Interface& entry : interfaces()) {
    const TYPEATTR attributes = attributes_of(table_of_methods(entry.name).get());
    EXPECT_EQ(attributes.wTypeFlags, TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION | TYPEFLAG_FDISPATCHABLE);
    EXPECT_EQ(attributes.cImplTypes, 1);
  }
}

TEST(TypeLibrary, derives_every_interface_directly_from_IDispatch) {
  for (const Interface& entry : interfaces()) {
    const auto table = table_of_methods(entry.name);
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> base;
    ASSERT_EQ(table->GetRefTypeOfImplType(0, &reference), S_OK);
    ASSERT_EQ(table->GetRefTypeInfo(reference, base.receive()), S_OK);
    EXPECT_EQ(documentation_of(base.get(), MEMBERID_NIL).name, L"IDispatch");
  }
}

TEST(TypeLibrary, gives_every_enumeration_member_its_value_and_help_string) {
  for (const Enumeration& entry : enumerations()) {
    const auto type = type_named(entry.name);
    ASSERT_EQ(attributes_of(type.get()).cVars, entry.members.size());
    for (UINT i = 0; i < entry.members.size(); ++i) {
      VARDESC* variable = nullptr;
      ASSERT_EQ(type->GetVarDesc(i, &variable), S_OK);
      const Documentation documentation = documentation_of(type.get(), variable->memid);
      EXPECT_EQ(variable->varkind, VAR_CONST);
      EXPECT_EQ(V_VT(variable->lpvarValue), VT_I4);
      EXPECT_EQ(V_I4(variable->lpvarValue), entry.members[i].value);
      EXPECT_EQ(documentation.name, entry.members[i].name);
      EXPECT_EQ(documentation.help, entry.members[i].help);
      type->ReleaseVarDesc(variable);
    }
  }
}

TEST(TypeLibrary, gives_every_class_its_text_and_its_one_default_interface) {
  for (const Class& entry : classes()) {
    const auto type = type_named(entry.name);
    EXPECT_EQ(documentation_of(type.get(), MEMBERID_NIL).help, entry.help);
    EXPECT_EQ(attributes_of(type.get()).wTypeFlags, TYPEFLAG_FCANCREATE);
    ASSERT_EQ(attributes_of(type.get()).cImplTypes, 1);
    INT flags = 0;
    ASSERT_EQ(type->GetImplTypeFlags(0, &flags), S_OK);
    EXPECT_EQ(flags, IMPLTYPEFLAG_FDEFAULT);
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> implemented;
    ASSERT_EQ(type->GetRefTypeOfImplType(0, &reference), S_OK);
    ASSERT_EQ(type->GetRefTypeInfo(reference, implemented.receive()), S_OK);
    EXPECT_EQ(documentation_of(implemented.get(), MEMBERID_NIL).name, entry.default_interface);
  }
}

TEST(TypeLibrary, gives_the_library_the_interfaces_and_the_classes_identifiers_that_never_change) {
  const auto expect_guid = [](const wchar_t* type, const wchar_t* guid) {
    wchar_t text[39];
    StringFromGUID2(attributes_of(type_named(type).get()).guid, text, 39);
    EXPECT_EQ(std::wstring(text), guid);
  };
  expect_guid(L"IvAttachment", L"{F626646A-A775-4C9E-9D2B-67698CBBE72D}");
  expect_guid(L"IvMessage", L"{78FD7C63-926A-4DCD-ABEC-8D4BE29C0D70}");
  expect_guid(L"IvHeaders", L"{0FDF057C-F272-4411-9943-6E4B44B6C31A}");
  expect_guid(L"IvHeader", L"{4734DAAC-E527-4759-A946-F48CAF29F0BD}");
  expect_guid(L"IvMessages", L"{959FC5D1-4E8E-42FB-8E25-4234860E5925}");
  expect_guid(L"IvAttachments", L"{E9259E63-96F4-4CC9-BABD-B1FF3B9D233D}");
  expect_guid(L"IvDecoder", L"{0999D0F8-BA34-432A-9740-2237A72472C8}");
  expect_guid(L"IvEncoder", L"{91C6CC03-0F09-42E1-B413-F756CBF90D90}");
  expect_guid(L"IVellobar", L"{69D5EE90-E615-4965-B58A-75D9325F69DC}");
  expect_guid(L"Vellobar", L"{07F6DB71-FEE9-4B81-9958-841BEB98986B}");
  expect_guid(L"Message", L"{FCC21C72-0DC7-4D41-A733-75932F0AFC26}");
  expect_guid(L"Messages", L"{43A062D6-6FA6-413E-BB87-3B746ADEB2C7}");
  expect_guid(L"Header", L"{638F628C-C474-4EBC-A175-B9EFF8EA1F0B}");
  expect_guid(L"Headers", L"{4C667EF9-AA7C-4EF4-86AF-B75A16421624}");
  expect_guid(L"Attachment", L"{8F38590B-D06A-4F90-ACBB-FFD2709EA62B}");
  expect_guid(L"Attachments", L"{95BDAFB7-7BD5-4FF2-8993-9ACB7F51087C}");
  expect_guid(L"Decoder", L"{9017367E-F6D4-4D92-AF95-4304B41628E6}");
  expect_guid(L"Encoder", L"{7D0FB4E7-4AB1-41A8-AC1E-CF0F8FE0F1DA}");
}

}  // namespace vellobar::tests
