// Every member of every class, called late-bound with arguments of every type: a status that clients can expect, never
// a crash, and never error information after a success.
#include <gtest/gtest.h>

#include <set>

#include "tests/automation/client.h"
#include "tests/automation/surface_table.h"
#include "tests/support/files.h"

namespace vellobar::tests {

namespace {

/// Runs in a folder of its own, since arguments that convert to text are file names for some members, and puts back
/// what belongs to the whole process.
class HostileArguments : public AutomationTest {
 protected:
  HostileArguments() {
    GetCurrentDirectoryW(MAX_PATH, before_);
    SetCurrentDirectoryW(widened(folder_.path("")).c_str());
    const auto control = make<IVellobar>(CLSID_Vellobar);
    control->get_Language(&language_);
    control->get_CharSet(&charset_);
  }
  ~HostileArguments() override {
    SetCurrentDirectoryW(before_);
    const auto control = make<IVellobar>(CLSID_Vellobar);
    control->put_Language(language_);
    control->put_CharSet(charset_);
  }

 private:
  TemporaryFolder folder_;
  wchar_t before_[MAX_PATH];
  LanguageEnum language_{};
  Charsets charset_{};
};

constexpr long kAbout = -552;

const VARTYPE kTypes[] = {VT_EMPTY, VT_NULL,     VT_I2,    VT_I4,   VT_R4,      VT_R8,      VT_CY,    VT_DATE,
                          VT_BSTR,  VT_DISPATCH, VT_ERROR, VT_BOOL, VT_UNKNOWN, VT_DECIMAL, VT_I1,    VT_UI1,
                          VT_UI2,   VT_UI4,      VT_I8,    VT_UI8,  VT_INT,     VT_UINT,    VT_RECORD};

bool is_expected(HRESULT status) {
  static const std::set<HRESULT> kExpected = {S_OK,      S_FALSE,   E_INVALIDARG,  E_FAIL,
                                              E_POINTER, E_NOTIMPL, E_OUTOFMEMORY, TYPE_E_TYPEMISMATCH};
  const auto facility = static_cast<unsigned long>(status) >> 16;
  return kExpected.contains(status) || facility == 0x8002 || facility == 0x800A;
}

WORD kind_of(const Member& member) {
  return member.kind == Kind::get   ? DISPATCH_PROPERTYGET
         : member.kind == Kind::put ? DISPATCH_PROPERTYPUT
                                    : DISPATCH_METHOD;
}

void expect_a_status(IDispatch* object, const Member& member, const VARIANT& argument, std::size_t count) {
  EXCEPINFO exception{};
  Value result;
  take_error_information();
  const HRESULT status = invoke(object, member.identifier, kind_of(member), std::vector<VARIANT>(count, argument),
                                result.receive(), &exception);
  EXPECT_TRUE(is_expected(status == DISP_E_EXCEPTION ? exception.scode : status))
      << std::hex << status << " " << exception.scode;
  const bool left_behind = take_error_information().present;
  EXPECT_FALSE(SUCCEEDED(status) && left_behind);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrHelpFile);
}

void expect_statuses(IDispatch* object, const Member& member) {
  for (std::size_t count = 0; count <= 3; ++count) {
    for (VARTYPE type : kTypes) {
      SCOPED_TRACE("type " + std::to_string(type) + ", " + std::to_string(count) + " arguments");
      expect_a_status(object, member, Value::of_type(type).get(), count);
      expect_a_status(object, member, Value::of_type(static_cast<VARTYPE>(VT_ARRAY | type)).get(), count);
      expect_a_status(object, member, Value::of_type(static_cast<VARTYPE>(VT_BYREF | type)).get(), count);
    }
    Value lone_surrogate(L"\xD800");
    expect_a_status(object, member, lone_surrogate.get(), count);
    expect_a_status(object, member, Value::missing().get(), count);
    expect_a_status(object, member, Value::reference_to(lone_surrogate.get()).get(), count);
  }
}

}  // namespace

TEST_F(HostileArguments, every_member_answers_every_type_of_argument_with_a_status) {
  for (const CLSID* class_id : {&CLSID_Vellobar, &CLSID_Message, &CLSID_Messages, &CLSID_Header, &CLSID_Headers,
                                &CLSID_Attachment, &CLSID_Attachments, &CLSID_Decoder, &CLSID_Encoder}) {
    const auto object = make<IDispatch>(*class_id);
    ComPtr<ITypeInfo> type;
    Text name;
    ASSERT_EQ(object->GetTypeInfo(0, 0, type.receive()), S_OK);
    ASSERT_EQ(type->GetDocumentation(MEMBERID_NIL, name.receive(), nullptr, nullptr, nullptr), S_OK);
    for (const Interface& entry : interfaces()) {
      if (name.value() != entry.name) continue;
      for (const Member& member : entry.members) {
        SCOPED_TRACE(std::string(member.name, member.name + wcslen(member.name)));
        if (member.identifier != kAbout) expect_statuses(object.get(), member);
      }
    }
  }
}

}  // namespace vellobar::tests
