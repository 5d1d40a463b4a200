// What an object tells of its class: the description in the type library, and that it has no events.
#include <gtest/gtest.h>
#include <ocidl.h>

#include "tests/automation/client.h"
#include "tests/automation/surface_table.h"

namespace vellobar::tests {

namespace {

class ClassInformation : public AutomationTest {};

struct Created {
  const wchar_t* name;
  const CLSID& class_id;
};

const Created kCreated[] = {
    {L"Vellobar", CLSID_Vellobar},       {L"Message", CLSID_Message}, {L"Messages", CLSID_Messages},
    {L"Header", CLSID_Header},           {L"Headers", CLSID_Headers}, {L"Attachment", CLSID_Attachment},
    {L"Attachments", CLSID_Attachments}, {L"Decoder", CLSID_Decoder}, {L"Encoder", CLSID_Encoder},
};

ComPtr<ITypeInfo> class_description(IUnknown* object) {
  ComPtr<ITypeInfo> type;
  EXPECT_EQ(query<IProvideClassInfo>(object)->GetClassInfo(type.receive()), S_OK);
  return type;
}

}  // namespace

TEST_F(ClassInformation, every_object_gives_the_description_of_its_own_class) {
  for (const auto& [name, class_id] : kCreated) {
    const auto type = class_description(make<IUnknown>(class_id).get());
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(type->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
    EXPECT_EQ(attributes->guid, class_id);
    type->ReleaseTypeAttr(attributes);
    Text found;
    ASSERT_EQ(type->GetDocumentation(MEMBERID_NIL, found.receive(), nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(found.value(), name);
  }
}

TEST_F(ClassInformation, objects_reached_through_others_give_it_too) {
  ComPtr<IvMessages> messages;
  ASSERT_EQ(make<IVellobar>(CLSID_Vellobar)->get_Messages(messages.receive()), S_OK);
  Text found;
  ASSERT_EQ(
      class_description(messages.get())->GetDocumentation(MEMBERID_NIL, found.receive(), nullptr, nullptr, nullptr),
      S_OK);
  EXPECT_EQ(found.value(), L"Messages");
}

TEST_F(ClassInformation, the_older_and_the_newer_interface_are_those_of_the_same_object) {
  for (const auto& [name, class_id] : kCreated) {
    const auto object = make<IUnknown>(class_id);
    const auto older = query<IProvideClassInfo>(object.get());
    const auto newer = query<IProvideClassInfo2>(object.get());
    ASSERT_TRUE(older && newer);
    EXPECT_EQ(query<IUnknown>(older.get()).get(), object.get());
    EXPECT_EQ(query<IUnknown>(newer.get()).get(), object.get());
  }
}

TEST_F(ClassInformation, no_class_has_a_default_interface_of_events) {
  for (const auto& [name, class_id] : kCreated) {
    const auto information = make<IProvideClassInfo2>(class_id);
    GUID guid = class_id;
    EXPECT_EQ(information->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &guid), E_FAIL);
    EXPECT_EQ(guid, GUID_NULL);
    EXPECT_EQ(information->GetGUID(0, &guid), E_INVALIDARG);
    EXPECT_EQ(information->GetGUID(2, &guid), E_INVALIDARG);
  }
}

TEST_F(ClassInformation, without_a_place_for_the_result_it_is_refused) {
  const auto information = make<IProvideClassInfo2>(CLSID_Message);
  EXPECT_EQ(information->GetClassInfo(nullptr), E_POINTER);
  EXPECT_EQ(information->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr), E_POINTER);
}

}  // namespace vellobar::tests
