// IVellobar through its table of methods.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"

namespace vellobar::tests {

namespace {

class Control : public AutomationTest {};

}  // namespace

TEST_F(Control, a_file_name_that_was_never_put_or_put_empty_is_a_null_string) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  Text filename;
  EXPECT_EQ(control->get_Filename(filename.receive()), S_OK);
  EXPECT_TRUE(filename.is_null());
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(control->put_Filename(nullptr), S_OK);
  EXPECT_EQ(control->get_Filename(filename.receive()), S_OK);
  EXPECT_TRUE(filename.is_null());
}

TEST_F(Control, a_getter_without_a_place_for_its_result_does_nothing_and_succeeds) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  EXPECT_EQ(control->get_Filename(nullptr), S_OK);
  EXPECT_EQ(control->get_Messages(nullptr), S_OK);
  EXPECT_EQ(control->get_AutoUpdate(nullptr), S_OK);
  EXPECT_EQ(control->get_Version(nullptr), S_OK);
  EXPECT_EQ(control->get_Changed(nullptr), S_OK);
  EXPECT_EQ(control->get_Language(nullptr), S_OK);
  EXPECT_EQ(control->get_CharSet(nullptr), S_OK);
}

TEST_F(Control, tells_its_version) {
  Text version;
  EXPECT_EQ(make<IVellobar>(CLSID_Vellobar)->get_Version(version.receive()), S_OK);
  EXPECT_EQ(version.value(), L"2.2.6.119");
}

TEST_F(Control, any_flag_that_is_not_zero_reads_back_as_true) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  VARIANT_BOOL flag = 7;
  EXPECT_EQ(control->get_AutoUpdate(&flag), S_OK);
  EXPECT_EQ(flag, VARIANT_FALSE);
  EXPECT_EQ(control->put_AutoUpdate(1), S_OK);
  EXPECT_EQ(control->get_AutoUpdate(&flag), S_OK);
  EXPECT_EQ(flag, VARIANT_TRUE);
}

TEST_F(Control, locks_lists_changes_and_updates_a_mailbox) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  short count = 0;
  EXPECT_EQ(messages->get_Count(&count), S_OK);
  EXPECT_EQ(count, 2);
  ComPtr<IvHeader> added;
  ASSERT_EQ(client.headers(1)->Add(Text(L"X-New").get(), Value(L"yes").get(), added.receive()), S_OK);
  VARIANT_BOOL changed = VARIANT_FALSE;
  EXPECT_EQ(client.control()->get_Changed(&changed), S_OK);
  EXPECT_EQ(changed, VARIANT_TRUE);
  ASSERT_EQ(client.control()->Update(), S_OK);
  EXPECT_NE(client.content().find("Subject: Second\r\nX-New: yes\r\n\r\ntwo\r\n"), std::string::npos);
  EXPECT_EQ(client.control()->get_Changed(&changed), S_OK);
  EXPECT_EQ(changed, VARIANT_FALSE);
}

TEST_F(Control, language_starts_as_the_locale_of_the_user_and_keeps_any_number) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  LanguageEnum language{};
  EXPECT_EQ(control->get_Language(&language), S_OK);
  EXPECT_EQ(static_cast<LCID>(language), GetUserDefaultLCID());
  const LanguageEnum before = language;
  Value number = Value::of_type(VT_I4);
  V_I4(&number.get()) = -5;
  EXPECT_EQ(invoke(control.get(), 13, DISPATCH_PROPERTYPUT, {number.get()}), S_OK);
  EXPECT_EQ(make<IVellobar>(CLSID_Vellobar)->get_Language(&language), S_OK);
  EXPECT_EQ(static_cast<int>(language), -5);
  EXPECT_EQ(control->put_Language(before), S_OK);
}

TEST_F(Control, the_character_set_is_one_for_all_controls) {
  const auto first = make<IVellobar>(CLSID_Vellobar), second = make<IVellobar>(CLSID_Vellobar);
  Charsets charset{};
  EXPECT_EQ(second->get_CharSet(&charset), S_OK);
  EXPECT_EQ(charset, ActiveCP);
  EXPECT_EQ(first->put_CharSet(KOI8R), S_OK);
  EXPECT_EQ(second->get_CharSet(&charset), S_OK);
  EXPECT_EQ(charset, KOI8R);
  EXPECT_EQ(first->put_CharSet(ActiveCP), S_OK);
}

}  // namespace vellobar::tests
