// Numbered errors that only unusual surroundings bring about, each with who reports it, and that the error information
// of one thread is no other thread's business.
#include <gtest/gtest.h>

#include <string>

#include "tests/automation/apartment.h"
#include "tests/automation/mailbox_client.h"
#include "tests/automation/no_temporary_folder.h"
#include "tests/automation/numbered_error.h"

namespace vellobar::tests {

namespace {

class ErrorReporters : public AutomationTest {};

constexpr const wchar_t* kControl = L"Quorvane.Vellobar.1";
constexpr const wchar_t* kMessage = L"Quorvane.Message.2";

ComPtr<IvAttachments> attachments_of(MailboxClient& client) {
  ComPtr<IvAttachments> attachments;
  EXPECT_EQ(client.message(0)->get_Attachments(attachments.receive()), S_OK);
  return attachments;
}

}  // namespace

TEST_F(ErrorReporters, update_of_a_mailbox_that_shrank_is_the_controls_30002) {
  MailboxClient client;
  ASSERT_EQ(client.control()->Lock(), S_OK);
  write_file(client.folder().path("client.mbox"), "From x\r\n");
  expect_error(client.control()->Update(), 30002, L"Cannot open mailbox file for updating", kControl, CLSID_Vellobar);
  EXPECT_EQ(client.content(), "From x\r\n");
}

TEST_F(ErrorReporters, body_put_without_a_temporary_folder_is_the_messages_30012) {
  MailboxClient client;
  const auto message = client.message(0);
  const NoTemporaryFolder missing;
  expect_error(message->put_Body(Text(L"A: b\r\n\r\nc").get()), 30012, L"Could not write to temporary file", kMessage,
               CLSID_Message);
}

TEST_F(ErrorReporters, decoded_text_without_a_temporary_folder_is_the_messages_30012) {
  MailboxClient client;
  const auto message = client.message(0);
  const NoTemporaryFolder missing;
  Text text;
  expect_error(message->get_DecodedText(encBASE64, text.receive()), 30012, L"Could not write to temporary file",
               kMessage, CLSID_Message);
  EXPECT_TRUE(text.is_null());
}

TEST_F(ErrorReporters, adding_an_attachment_without_a_temporary_folder_is_the_controls_30012) {
  MailboxClient client;
  const auto attachments = attachments_of(client);
  const std::wstring file = widened(client.folder().file("a.bin", "ABC"));
  const NoTemporaryFolder missing;
  ComPtr<IvMessage> added;
  expect_error(attachments->Add(Text(file).get(), Value::missing().get(), added.receive()), 30012,
               L"Could not write to temporary file", kControl, CLSID_Vellobar);
  EXPECT_FALSE(added);
}

TEST_F(ErrorReporters, body_and_attachments_of_an_unreadable_header_block_are_the_messages_30005) {
  MailboxClient client("From x\r\nX: " + std::string(17000, 'a') + "\r\n\r\nbody\r\n");
  const auto message = client.message(0);
  Text body;
  expect_error(message->get_Body(body.receive()), 30005, L"Could not load message text", kMessage, CLSID_Message);
  ComPtr<IvAttachments> attachments;
  expect_error(message->get_Attachments(attachments.receive()), 30005, L"Could not load message text", kMessage,
               CLSID_Message);
}

TEST_F(ErrorReporters, a_call_on_another_thread_neither_sees_nor_clears_the_information_of_this_one) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto message = make<IvMessage>(CLSID_Message);
  ASSERT_EQ(control->Update(), numbered(30010));
  bool seen_before = true, seen_own = false, seen_after = true;
  in_apartment(COINIT_MULTITHREADED, [&] {
    seen_before = take_error_information().present;
    EXPECT_EQ(message->Peek(Text(L"no such file").get()), numbered(30006));
    seen_own = take_error_information().source == kMessage;
    Text subject;
    EXPECT_EQ(message->get_Subject(subject.receive()), S_OK);
    seen_after = take_error_information().present;
  });
  EXPECT_FALSE(seen_before);
  EXPECT_TRUE(seen_own);
  EXPECT_FALSE(seen_after);
  const ErrorInformation own = take_error_information();
  ASSERT_TRUE(own.present);
  EXPECT_EQ(own.source, kControl);
  EXPECT_EQ(own.description, L"Mailbox not locked");
}

}  // namespace vellobar::tests
