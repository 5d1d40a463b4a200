// Numbered errors as a client reads them, and that nothing is left on the thread otherwise.
#include <gtest/gtest.h>

#include <thread>

#include "tests/automation/mailbox_client.h"
#include "tests/automation/numbered_error.h"

namespace vellobar::tests {

namespace {

class ErrorInformationTest : public AutomationTest {};

/// A mailbox whose one message has a header line that fills the reading area.
std::string unreadable_header_block() { return "From x\r\nX: " + std::string(17000, 'a') + "\r\n\r\nbody\r\n"; }

}  // namespace

TEST_F(ErrorInformationTest, a_numbered_error_is_0x800A0000_plus_its_number) {
  EXPECT_EQ(make<IVellobar>(CLSID_Vellobar)->Update(), static_cast<HRESULT>(0x800A753A));
}

TEST_F(ErrorInformationTest, the_control_reports_under_its_own_class) {
  MailboxClient client;
  ASSERT_EQ(client.control()->Lock(), S_OK);
  expect_error(client.control()->put_Filename(Text(L"other").get()), 30000,
               L"Mailbox locked! Call Unlock() method first", L"Quorvane.Vellobar.1", CLSID_Vellobar);
  ASSERT_EQ(client.control()->Unlock(), S_OK);
  expect_error(client.control()->Update(), 30010, L"Mailbox not locked", L"Quorvane.Vellobar.1", CLSID_Vellobar);
  ASSERT_EQ(client.control()->put_Filename(Text(L"no such file").get()), S_OK);
  expect_error(client.control()->Lock(), 30001, L"Cannot open mailbox file", L"Quorvane.Vellobar.1", CLSID_Vellobar);
}

TEST_F(ErrorInformationTest, a_message_reports_under_its_own_class) {
  MailboxClient client(unreadable_header_block());
  const auto message = client.message(0);
  ComPtr<IvHeaders> headers;
  Text text;
  expect_error(message->get_Headers(headers.receive()), 30006, L"Could not load headers for the message",
               L"Quorvane.Message.2", CLSID_Message);
  expect_error(message->get_Text(text.receive()), 30005, L"Could not load message text", L"Quorvane.Message.2",
               CLSID_Message);
  expect_error(message->Peek(Text(L"no such file").get()), 30006, L"Could not load headers for the message",
               L"Quorvane.Message.2", CLSID_Message);
  expect_error(message->Save(Text(L"no such folder\\file").get(), Value::missing().get()), 30002,
               L"Cannot open mailbox file for updating", L"Quorvane.Message.2", CLSID_Message);
}

TEST_F(ErrorInformationTest, a_messages_collection_reports_under_the_guid_of_the_attachment_class) {
  MailboxClient client;
  ComPtr<IvMessage> added;
  expect_error(client.messages()->Add(Value(L"no such file").get(), added.receive()), 30011, L"Cannot open file",
               L"Quorvane.Messages.2", CLSID_Attachment);
}

TEST_F(ErrorInformationTest, a_bare_status_has_no_error_information_not_even_somebody_elses) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  leave_foreign_error_information();
  ComPtr<IvMessage> message;
  EXPECT_EQ(messages->get_Item(-1, message.receive()), E_INVALIDARG);
  EXPECT_FALSE(take_error_information().present);
}

TEST_F(ErrorInformationTest, a_call_that_succeeds_leaves_none_behind) {
  MailboxClient client;
  EXPECT_EQ(client.control()->Update(), numbered(30010));
  VARIANT_BOOL changed = VARIANT_TRUE;
  EXPECT_EQ(client.control()->get_Changed(&changed), S_OK);
  EXPECT_FALSE(take_error_information().present);
}

TEST_F(ErrorInformationTest, an_update_that_fails_inside_a_successful_put_leaves_none_behind) {
  MailboxClient client;
  ComPtr<IvMessage> added;
  ASSERT_EQ(client.messages()->Add(Value::missing().get(), added.receive()), S_OK);
  EXPECT_EQ(client.control()->put_AutoUpdate(VARIANT_TRUE), S_OK);
  EXPECT_FALSE(take_error_information().present);
}

TEST_F(ErrorInformationTest, is_never_seen_from_another_thread) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  ASSERT_EQ(control->Update(), numbered(30010));
  bool seen = true;
  std::thread([&] { seen = take_error_information().present; }).join();
  EXPECT_FALSE(seen);
  EXPECT_TRUE(take_error_information().present);
}

TEST_F(ErrorInformationTest, reaches_a_late_bound_client_as_number_text_and_source) {
  const auto control = make<IDispatch>(CLSID_Vellobar);
  EXCEPINFO exception{};
  EXPECT_EQ(invoke(control.get(), identifier_of(control.get(), L"Update"), DISPATCH_METHOD, {}, nullptr, &exception),
            DISP_E_EXCEPTION);
  EXPECT_EQ(exception.scode, numbered(30010));
  EXPECT_EQ(std::wstring(exception.bstrDescription), L"Mailbox not locked");
  EXPECT_EQ(std::wstring(exception.bstrSource), L"Quorvane.Vellobar.1");
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrHelpFile);
}

TEST_F(ErrorInformationTest, a_late_bound_bare_status_carries_no_text_not_even_somebody_elses) {
  const auto messages = make<IDispatch>(CLSID_Messages);
  leave_foreign_error_information();
  EXCEPINFO exception{};
  Value result;
  EXPECT_EQ(
      invoke(messages.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {Value(short{0}).get()}, result.receive(), &exception),
      DISP_E_EXCEPTION);
  EXPECT_EQ(exception.scode, E_INVALIDARG);
  EXPECT_EQ(exception.bstrDescription, nullptr);
}

TEST_F(ErrorInformationTest, every_class_supports_it_for_its_own_interface_and_for_no_other) {
  const std::pair<CLSID, IID> kOwn[] = {
      {CLSID_Vellobar, IID_IVellobar},        {CLSID_Message, IID_IvMessage}, {CLSID_Messages, IID_IvMessages},
      {CLSID_Header, IID_IvHeader},           {CLSID_Headers, IID_IvHeaders}, {CLSID_Attachment, IID_IvAttachment},
      {CLSID_Attachments, IID_IvAttachments}, {CLSID_Decoder, IID_IvDecoder}, {CLSID_Encoder, IID_IvEncoder}};
  for (const auto& [class_id, own] : kOwn) {
    const auto object = make<ISupportErrorInfo>(class_id);
    for (const auto& [other_class, interface_id] : kOwn) {
      EXPECT_EQ(object->InterfaceSupportsErrorInfo(interface_id), own == interface_id ? S_OK : S_FALSE);
    }
    EXPECT_EQ(object->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);
  }
}

}  // namespace vellobar::tests
