// IvAttachment and IvAttachments: every property, saving, adding in every encoding, and the errors of both.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"
#include "tests/automation/numbered_error.h"

namespace vellobar::tests {

namespace {

constexpr std::string_view kOneAttachment =
    "From x\r\n"
    "Content-Type: multipart/mixed; boundary=XyZ\r\n"
    "\r\n"
    "--XyZ\r\n"
    "Content-Type: application/x-test; name=a.bin\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "QUJDREVG\r\n"
    "--XyZ--\r\n";

/// Works in a folder of its own, since an attachment without a folder in its name is saved to the current one.
class AttachmentMembers : public AutomationTest {
 protected:
  AttachmentMembers() {
    GetCurrentDirectoryW(MAX_PATH, before_);
    SetCurrentDirectoryW(widened(folder_.path("")).c_str());
  }
  ~AttachmentMembers() override { SetCurrentDirectoryW(before_); }

  const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
  wchar_t before_[MAX_PATH];
};

ComPtr<IvAttachments> attachments_of(MailboxClient& client) {
  ComPtr<IvAttachments> attachments;
  EXPECT_EQ(client.message(0)->get_Attachments(attachments.receive()), S_OK);
  return attachments;
}

ComPtr<IvAttachment> attachment_of(MailboxClient& client) {
  ComPtr<IvAttachment> attachment;
  EXPECT_EQ(attachments_of(client)->get_Item(0, attachment.receive()), S_OK);
  return attachment;
}

std::wstring name_of(IvAttachment* attachment) {
  Text name;
  EXPECT_EQ(attachment->get_Name(name.receive()), S_OK);
  return name.value();
}

std::wstring type_of(IvAttachment* attachment) {
  Text type;
  EXPECT_EQ(attachment->get_Type(type.receive()), S_OK);
  return type.value();
}

AttachmentEncodingsEnum encoding_of(IvAttachment* attachment) {
  AttachmentEncodingsEnum encoding{};
  EXPECT_EQ(attachment->get_Encoding(&encoding), S_OK);
  return encoding;
}

Value number(long value) {
  Value variant = Value::of_type(VT_I4);
  V_I4(&variant.get()) = value;
  return variant;
}

/// A file whose name the component takes from behind a backslash.
std::wstring file_to_attach(const TemporaryFolder& folder) {
  std::wstring path = widened(folder.file("a.bin", "ABC"));
  for (wchar_t& character : path) character = character == L'/' ? L'\\' : character;
  return path;
}

std::wstring body_of(IvMessage* message) {
  Text body;
  EXPECT_EQ(message->get_Body(body.receive()), S_OK);
  return body.value();
}

void expect_added(const VARIANT& encoding, const wchar_t* part) {
  MailboxClient client;
  const auto attachments = attachments_of(client);
  const std::wstring file = file_to_attach(client.folder());
  ComPtr<IvMessage> added;
  EXPECT_EQ(attachments->Add(Text(file).get(), encoding, added.receive()), S_OK);
  ASSERT_TRUE(added);
  EXPECT_EQ(body_of(added.get()), part);
  Value name(file.c_str()), given = Value::of_type(VT_EMPTY), result;
  VariantCopy(&given.get(), const_cast<VARIANT*>(&encoding));
  EXPECT_EQ(invoke(attachments.get(), 2, DISPATCH_METHOD, {name.get(), given.get()}, result.receive()), S_OK);
  ASSERT_EQ(result.type(), VT_DISPATCH);
  EXPECT_EQ(body_of(query<IvMessage>(V_DISPATCH(&result.get())).get()), part);
}

constexpr const wchar_t* kBase64Part =
    L"Content-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
    L"Content-Transfer-Encoding: base64\r\n"
    L"Content-Disposition: attachment; filename=\"a.bin\"\r\n\r\n"
    L"QUJD\r\n";

}  // namespace

TEST_F(AttachmentMembers, each_property_reads_its_own_value) {
  MailboxClient client(kOneAttachment);
  const auto attachment = attachment_of(client);
  EXPECT_EQ(name_of(attachment.get()), L"a.bin");
  EXPECT_EQ(type_of(attachment.get()), L"application/x-test");
  EXPECT_EQ(encoding_of(attachment.get()), encBASE64);
  // Ten coded bytes, the line end among them: two groups of four, three bytes each.
  long size = 0;
  EXPECT_EQ(attachment->get_Size(&size), S_OK);
  EXPECT_EQ(size, 6);
  ComPtr<IvMessage> part;
  EXPECT_EQ(attachment->get_Part(part.receive()), S_OK);
  Text text;
  EXPECT_EQ(part->get_Text(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"QUJDREVG\r\n");
}

TEST_F(AttachmentMembers, each_property_reads_its_own_value_by_identifier) {
  MailboxClient client(kOneAttachment);
  const auto attachment = attachment_of(client);
  Value result;
  EXPECT_EQ(invoke(attachment.get(), 1, DISPATCH_PROPERTYGET, {}, result.receive()), S_OK);
  EXPECT_EQ(result.text(), L"a.bin");
  EXPECT_EQ(invoke(attachment.get(), 2, DISPATCH_PROPERTYGET, {}, result.receive()), S_OK);
  EXPECT_EQ(result.text(), L"application/x-test");
  EXPECT_EQ(invoke(attachment.get(), 3, DISPATCH_PROPERTYGET, {}, result.receive()), S_OK);
  EXPECT_EQ(V_I4(&result.get()), 1);
  EXPECT_EQ(invoke(attachment.get(), 6, DISPATCH_PROPERTYGET, {}, result.receive()), S_OK);
  EXPECT_EQ(V_I4(&result.get()), 6);
  ComPtr<IvMessage> part;
  EXPECT_EQ(attachment->get_Part(part.receive()), S_OK);
  EXPECT_EQ(invoke(attachment.get(), 5, DISPATCH_PROPERTYGET, {}, result.receive()), S_OK);
  ASSERT_EQ(result.type(), VT_DISPATCH);
  EXPECT_EQ(V_DISPATCH(&result.get()), part.get());
}

TEST_F(AttachmentMembers, name_type_and_encoding_keep_what_is_put) {
  const auto attachment = make<IvAttachment>(CLSID_Attachment);
  EXPECT_EQ(attachment->put_Name(Text(L"n").get()), S_OK);
  EXPECT_EQ(attachment->put_Type(Text(L"t").get()), S_OK);
  EXPECT_EQ(attachment->put_Encoding(encUUENCODE), S_OK);
  EXPECT_EQ(name_of(attachment.get()), L"n");
  EXPECT_EQ(type_of(attachment.get()), L"t");
  EXPECT_EQ(encoding_of(attachment.get()), encUUENCODE);
  Value name(L"late name"), type(L"late type");
  EXPECT_EQ(invoke(attachment.get(), 1, DISPATCH_PROPERTYPUT, {name.get()}), S_OK);
  EXPECT_EQ(invoke(attachment.get(), 2, DISPATCH_PROPERTYPUT, {type.get()}), S_OK);
  EXPECT_EQ(invoke(attachment.get(), 3, DISPATCH_PROPERTYPUT, {number(99).get()}), S_OK);
  EXPECT_EQ(name_of(attachment.get()), L"late name");
  EXPECT_EQ(type_of(attachment.get()), L"late type");
  EXPECT_EQ(static_cast<int>(encoding_of(attachment.get())), 99);
}

TEST_F(AttachmentMembers, save_writes_the_decoded_file_under_the_given_name_or_its_own) {
  MailboxClient client(kOneAttachment);
  const auto attachment = attachment_of(client);
  EXPECT_EQ(attachment->Save(Value(L"early").get()), S_OK);
  EXPECT_EQ(read_file(folder().path("early")), "ABCDEF");
  Value late(L"late");
  EXPECT_EQ(invoke(attachment.get(), 4, DISPATCH_METHOD, {Value::reference_to(late.get()).get()}), S_OK);
  EXPECT_EQ(read_file(folder().path("late")), "ABCDEF");
  EXPECT_EQ(attachment->Save(Value::missing().get()), S_OK);
  EXPECT_EQ(read_file(folder().path("a.bin")), "ABCDEF");
  EXPECT_EQ(attachment->put_Name(Text(L"mine").get()), S_OK);
  EXPECT_EQ(invoke(attachment.get(), 4, DISPATCH_METHOD, {}), S_OK);
  EXPECT_EQ(read_file(folder().path("mine")), "ABCDEF");
  EXPECT_EQ(folder().names(), (std::vector<std::string>{"a.bin", "early", "late", "mine"}));
}

TEST_F(AttachmentMembers, saving_reports_its_errors_under_the_attachment_class) {
  MailboxClient client(kOneAttachment);
  const auto attachment = attachment_of(client);
  expect_error(attachment->Save(Value(L"missing\\file").get()), 30008, L"Could not access destination file",
               L"Quorvane.Attachment.2", CLSID_Attachment);
  expect_error(attachment->Save(Value(L"").get()), 30007, L"Filename not specified", L"Quorvane.Attachment.2",
               CLSID_Attachment);
  for (int encoding : {0, 6, -1}) {
    EXPECT_EQ(attachment->put_Encoding(static_cast<AttachmentEncodingsEnum>(encoding)), S_OK);
    expect_error(attachment->Save(Value(L"unknown").get()), 30009, L"Unknown encoder used", L"Quorvane.Attachment.2",
                 CLSID_Attachment);
  }
  EXPECT_EQ(attachment->put_Name(nullptr), S_OK);
  expect_error(attachment->Save(Value::missing().get()), 30007, L"Filename not specified", L"Quorvane.Attachment.2",
               CLSID_Attachment);
  EXPECT_TRUE(folder().names().empty());
}

TEST_F(AttachmentMembers, adding_writes_a_part_in_each_encoding) {
  expect_added(number(1).get(), kBase64Part);
  expect_added(number(2).get(),
               L"Content-Type: application/mac-binhex40\r\n\r\n"
               L"(This file must be converted with BinHex 4.0)\r\n"
               L":Content-Disposition: attachment; filename=\"a.bin\"\r\n"
               L"38*$:\r\n");
  expect_added(number(3).get(),
               L"Content-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
               L"Content-Transfer-Encoding: x-uuencode\r\n"
               L"Content-Disposition: attachment;\r\n\t filename=\"a.bin\"\r\n\r\n"
               L"begin 644 a.bin\r\n`04)#\r\nend\r\n");
  expect_added(number(4).get(),
               L"Content-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
               L"Content-Transfer-Encoding: quoted-printable\r\n"
               L"Content-Disposition: attachment; filename=\"a.bin\"\r\n\r\n"
               L"ABC");
  expect_added(number(5).get(),
               L"Content-Type: text/plain;\r\n\t name=\"a.bin\"\r\n"
               L"Content-Transfer-Encoding: 7bit\r\n\r\n"
               L"ABC");
}

TEST_F(AttachmentMembers, adding_without_an_encoding_or_with_one_that_is_no_number_is_base64) {
  expect_added(Value::missing().get(), kBase64Part);
  expect_added(Value(L"base64").get(), kBase64Part);
}

TEST_F(AttachmentMembers, adding_reports_its_errors_under_the_control) {
  MailboxClient client;
  const auto attachments = attachments_of(client);
  const std::wstring file = file_to_attach(client.folder());
  ComPtr<IvMessage> added;
  for (long encoding : {0L, 6L, -1L}) {
    expect_error(attachments->Add(Text(file).get(), number(encoding).get(), added.receive()), 30013,
                 L"Unsupported encoding type", L"Quorvane.Vellobar.1", CLSID_Vellobar);
  }
  expect_error(attachments->Add(Text(file).get(), Value().get(), added.receive()), 30013, L"Unsupported encoding type",
               L"Quorvane.Vellobar.1", CLSID_Vellobar);
  expect_error(attachments->Add(nullptr, Value::missing().get(), added.receive()), 30007, L"Filename not specified",
               L"Quorvane.Vellobar.1", CLSID_Vellobar);
  expect_error(attachments->Add(Text(L"no such file").get(), Value::missing().get(), added.receive()), 30011,
               L"Cannot open file", L"Quorvane.Vellobar.1", CLSID_Vellobar);
  EXPECT_FALSE(added);
}

TEST_F(AttachmentMembers, adding_to_a_message_without_an_owner_fails_without_a_number) {
  ComPtr<IvAttachments> attachments;
  ASSERT_EQ(make<IvMessage>(CLSID_Message)->get_Attachments(attachments.receive()), S_OK);
  ComPtr<IvMessage> added;
  EXPECT_EQ(attachments->Add(Text(L"no such file").get(), Value::missing().get(), added.receive()), E_FAIL);
  EXPECT_FALSE(take_error_information().present);
}

TEST_F(AttachmentMembers, scan_text_keeps_what_is_put_and_finds_a_coded_block) {
  MailboxClient client("From x\r\nSubject: s\r\n\r\nbegin 644 f.txt\r\n#04)#\r\nend\r\n");
  const auto attachments = attachments_of(client);
  VARIANT_BOOL scans = VARIANT_TRUE;
  EXPECT_EQ(attachments->get_ScanText(&scans), S_OK);
  EXPECT_EQ(scans, VARIANT_FALSE);
  EXPECT_EQ(attachments->put_ScanText(VARIANT_TRUE), S_OK);
  EXPECT_EQ(attachments->get_ScanText(&scans), S_OK);
  EXPECT_EQ(scans, VARIANT_TRUE);
  const auto attachment = attachment_of(client);
  EXPECT_EQ(name_of(attachment.get()), L"f.txt");
  EXPECT_EQ(encoding_of(attachment.get()), encUUENCODE);
  EXPECT_EQ(attachment->Save(Value::missing().get()), S_OK);
  EXPECT_EQ(read_file(folder().path("f.txt")), "ABC");
}

}  // namespace vellobar::tests
