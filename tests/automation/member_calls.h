// The members of an object as its type library describes them, and late-bound calls to them that must end with a status
// that clients can expect and leave no error information behind.
#pragma once

#include <gtest/gtest.h>

#include <ios>
#include <set>
#include <string>
#include <vector>

#include "tests/automation/client.h"
#include "tests/automation/documented_status.h"

namespace vellobar::tests {

/// One member as the type library describes it.
struct MemberShape {
  std::string name;
  MEMBERID identifier;
  WORD kind;
  std::vector<VARTYPE> parameters;
};

inline std::vector<MemberShape> members_of(IDispatch* object) {
  constexpr MEMBERID kFirstOfIUnknown = 0x60000000;
  std::vector<MemberShape> members;
  ComPtr<ITypeInfo> type;
  EXPECT_EQ(object->GetTypeInfo(0, 0, type.receive()), S_OK);
  FUNCDESC* function = nullptr;
  for (UINT i = 0; SUCCEEDED(type->GetFuncDesc(i, &function)); ++i) {
    Text name;
    EXPECT_EQ(type->GetDocumentation(function->memid, name.receive(), nullptr, nullptr, nullptr), S_OK);
    MemberShape member{{}, function->memid, static_cast<WORD>(function->invkind), {}};
    for (wchar_t character : name.value()) member.name += static_cast<char>(character);
    for (int p = 0; p < function->cParams; ++p) {
      const ELEMDESC& parameter = function->lprgelemdescParam[p];
      if ((parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) == 0) member.parameters.push_back(parameter.tdesc.vt);
    }
    if (function->memid < kFirstOfIUnknown) members.push_back(member);
    type->ReleaseFuncDesc(function);
  }
  return members;
}

/// What the system says of arguments that do not reach the member.
inline bool is_status_of_dispatch(HRESULT status) {
  static const std::set<HRESULT> kDispatch = {DISP_E_TYPEMISMATCH,     DISP_E_BADPARAMCOUNT,  DISP_E_BADVARTYPE,
                                              DISP_E_PARAMNOTOPTIONAL, DISP_E_PARAMNOTFOUND,  DISP_E_OVERFLOW,
                                              DISP_E_MEMBERNOTFOUND,   DISP_E_NOTACOLLECTION, E_NOINTERFACE};
  return kDispatch.contains(status);
}

inline void expect_status(HRESULT status, const EXCEPINFO& exception) {
  if (status == DISP_E_EXCEPTION) {
    EXPECT_TRUE(FAILED(exception.scode) && (is_bare_status(exception.scode) || is_numbered(exception.scode)))
        << std::hex << exception.scode;
    // A text belongs to a number, and to nothing else.
    EXPECT_EQ(exception.bstrDescription != nullptr, is_numbered(exception.scode)) << std::hex << exception.scode;
    return;
  }
  EXPECT_TRUE(is_bare_status(status) || is_status_of_dispatch(status)) << std::hex << status;
}

/// The result stays with the caller.
inline void call(IDispatch* object, const MemberShape& member, const std::vector<VARIANT>& arguments, Value& result) {
  EXCEPINFO exception{};
  const HRESULT status = invoke(object, member.identifier, member.kind, arguments, result.receive(), &exception);
  expect_status(status, exception);
  EXPECT_FALSE(take_error_information().present);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrHelpFile);
}

inline void call(IDispatch* object, const MemberShape& member, const std::vector<VARIANT>& arguments) {
  Value result;
  call(object, member, arguments, result);
}

}  // namespace vellobar::tests
