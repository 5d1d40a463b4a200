// Late-bound calls: names, identifiers, type information, and that they reach the same code as the table of methods.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"
#include "tests/automation/surface_table.h"

namespace vellobar::tests {

namespace {

class Dispatch : public AutomationTest {};

ComPtr<IDispatch> object_of(const Interface& entry) {
  for (const Class& candidate : classes()) {
    if (std::wstring(candidate.default_interface) != entry.name) continue;
    for (const CLSID* class_id : {&CLSID_Vellobar, &CLSID_Message, &CLSID_Messages, &CLSID_Header, &CLSID_Headers,
                                  &CLSID_Attachment, &CLSID_Attachments, &CLSID_Decoder, &CLSID_Encoder}) {
      auto object = make<IDispatch>(*class_id);
      ComPtr<ITypeInfo> type;
      Text name;
      object->GetTypeInfo(0, 0, type.receive());
      type->GetDocumentation(MEMBERID_NIL, name.receive(), nullptr, nullptr, nullptr);
      if (name.value() == entry.name) return object;
    }
  }
  ADD_FAILURE() << "no class has this interface";
  return {};
}

}  // namespace

TEST_F(Dispatch, finds_every_name_of_every_interface_by_its_identifier) {
  for (const Interface& entry : interfaces()) {
    const auto object = object_of(entry);
    for (const Member& member : entry.members) EXPECT_EQ(identifier_of(object.get(), member.name), member.identifier);
  }
}

TEST_F(Dispatch, finds_names_whatever_the_case_of_their_letters) {
  const auto control = make<IDispatch>(CLSID_Vellobar);
  EXPECT_EQ(identifier_of(control.get(), L"AUTOUPDATE"), 1);
  EXPECT_EQ(identifier_of(control.get(), L"autoupdate"), 1);
  EXPECT_EQ(identifier_of(make<IDispatch>(CLSID_Header).get(), L"value"), 2);
}

TEST_F(Dispatch, finds_the_names_of_arguments) {
  const auto headers = make<IDispatch>(CLSID_Headers);
  std::wstring method = L"Add", first = L"Name", second = L"Value";
  LPOLESTR names[] = {method.data(), first.data(), second.data()};
  DISPID identifiers[3];
  ASSERT_EQ(headers->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, identifiers), S_OK);
  EXPECT_EQ(identifiers[0], 1);
  EXPECT_EQ(identifiers[1], 0);
  EXPECT_EQ(identifiers[2], 1);
}

TEST_F(Dispatch, answers_unknown_names_identifiers_and_languages_with_their_statuses) {
  const auto control = make<IDispatch>(CLSID_Vellobar);
  std::wstring unknown = L"NoSuchMember";
  LPOLESTR name = unknown.data();
  DISPID identifier = 0;
  EXPECT_EQ(control->GetIDsOfNames(IID_NULL, &name, 1, 0, &identifier), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(control->GetIDsOfNames(IID_IDispatch, &name, 1, 0, &identifier), DISP_E_UNKNOWNINTERFACE);
  EXPECT_EQ(control->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &identifier), E_INVALIDARG);
  EXPECT_EQ(invoke(control.get(), 4711, DISPATCH_METHOD, {}), DISP_E_MEMBERNOTFOUND);
  DISPPARAMS none{};
  EXPECT_EQ(control->Invoke(8, IID_IDispatch, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
            DISP_E_UNKNOWNINTERFACE);
}

TEST_F(Dispatch, has_one_type_description_and_no_second_one) {
  const auto control = make<IDispatch>(CLSID_Vellobar);
  UINT count = 0;
  EXPECT_EQ(control->GetTypeInfoCount(&count), S_OK);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(control->GetTypeInfoCount(nullptr), E_POINTER);
  ComPtr<ITypeInfo> type;
  EXPECT_EQ(control->GetTypeInfo(1, 0, type.receive()), DISP_E_BADINDEX);
  EXPECT_FALSE(type);
  EXPECT_EQ(control->GetTypeInfo(0, 0, nullptr), E_POINTER);
}

TEST_F(Dispatch, a_late_bound_call_and_one_through_the_table_of_methods_reach_the_same_property) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  EXPECT_EQ(invoke(control.get(), DISPID_VALUE, DISPATCH_PROPERTYPUT, {Value(L"late.mbox").get()}), S_OK);
  Text early;
  EXPECT_EQ(control->get_Filename(early.receive()), S_OK);
  EXPECT_EQ(early.value(), L"late.mbox");
  EXPECT_EQ(control->put_Filename(Text(L"early.mbox").get()), S_OK);
  Value late;
  EXPECT_EQ(invoke(control.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {}, late.receive()), S_OK);
  EXPECT_EQ(late.text(), L"early.mbox");
}

TEST_F(Dispatch, converts_arguments_to_the_types_of_the_parameters) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  Value message;
  EXPECT_EQ(invoke(messages.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {Value(L"1").get()}, message.receive()), S_OK);
  EXPECT_EQ(message.type(), VT_DISPATCH);
  Value subject;
  EXPECT_EQ(invoke(V_DISPATCH(&message.get()), 21, DISPATCH_PROPERTYGET, {}, subject.receive()), S_OK);
  EXPECT_EQ(subject.text(), L"Second");
}

TEST_F(Dispatch, an_optional_argument_may_be_left_out) {
  const auto messages = make<IDispatch>(CLSID_Messages);
  Value added;
  EXPECT_EQ(invoke(messages.get(), 2, DISPATCH_METHOD, {}, added.receive()), S_OK);
  EXPECT_EQ(added.type(), VT_DISPATCH);
}

// Wine does not count surplus arguments, so only a lack of them can be tested here.
TEST_F(Dispatch, too_few_arguments_are_refused) {
  const auto headers = make<IDispatch>(CLSID_Headers);
  EXPECT_EQ(invoke(headers.get(), 2, DISPATCH_METHOD, {}), DISP_E_BADPARAMCOUNT);
}

TEST_F(Dispatch, arguments_for_the_part_of_an_attachment_that_has_none_are_refused) {
  const auto attachment = make<IDispatch>(CLSID_Attachment);
  Value part;
  EXPECT_EQ(invoke(attachment.get(), 5, DISPATCH_PROPERTYGET, {Value(short{0}).get()}, part.receive()),
            DISP_E_BADPARAMCOUNT);
}

TEST_F(Dispatch, arguments_that_lead_nowhere_are_refused) {
  const auto headers = make<IDispatch>(CLSID_Headers);
  EXPECT_EQ(headers->Invoke(3, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
  DISPPARAMS no_array{nullptr, nullptr, 1, 0};
  EXPECT_EQ(headers->Invoke(2, IID_NULL, 0, DISPATCH_METHOD, &no_array, nullptr, nullptr, nullptr), E_INVALIDARG);
  for (VARTYPE type : {VT_I2, VT_I4, VT_BSTR, VT_DISPATCH, VT_VARIANT, VT_DECIMAL}) {
    const Value reference = Value::of_type(static_cast<VARTYPE>(VT_BYREF | type));
    EXPECT_EQ(invoke(headers.get(), 2, DISPATCH_METHOD, {const_cast<Value&>(reference).get()}), E_INVALIDARG);
  }
}

TEST_F(Dispatch, about_returns_at_once_where_nobody_can_see_a_box) {
  const HWINSTA visible = GetProcessWindowStation();
  const HWINSTA hidden = CreateWindowStationW(L"vellobar_hidden", 0, WINSTA_ALL_ACCESS, nullptr);
  ASSERT_NE(hidden, nullptr);
  ASSERT_TRUE(SetProcessWindowStation(hidden));
  EXPECT_EQ(invoke(make<IDispatch>(CLSID_Vellobar).get(), -552, DISPATCH_METHOD, {}), S_OK);
  SetProcessWindowStation(visible);
  CloseWindowStation(hidden);
}

}  // namespace vellobar::tests
