// What IvMessage shows of a message's content: its texts, its parts and its attachments, and that each of them is the
// same object for as long as a client holds it.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"
#include "tests/automation/numbered_error.h"

namespace vellobar::tests {

namespace {

constexpr std::string_view kThreeParts =
    "From x\r\n"
    "Content-Type: multipart/mixed; boundary=XyZ\r\n"
    "\r\n"
    "preamble\r\n"
    "--XyZ\r\n"
    "Content-Type: text/plain\r\n"
    "\r\n"
    "plain\r\n"
    "--XyZ\r\n"
    "Content-Type: text/html\r\n"
    "Content-Transfer-Encoding: quoted-printable\r\n"
    "\r\n"
    "<p>=3D</p>\n"
    "--XyZ\r\n"
    "Content-Type: application/octet-stream; name=a.bin\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "QUJDREVG\r\n"
    "--XyZ--\r\n";

class MessageContent : public AutomationTest {};

short count_of(IvMessages* messages) {
  short count = -1;
  EXPECT_EQ(messages->get_Count(&count), S_OK);
  return count;
}

ComPtr<IvMessages> parts_of(IvMessage* message) {
  ComPtr<IvMessages> parts;
  EXPECT_EQ(message->get_Parts(parts.receive()), S_OK);
  return parts;
}

ComPtr<IvAttachments> attachments_of(IvMessage* message) {
  ComPtr<IvAttachments> attachments;
  EXPECT_EQ(message->get_Attachments(attachments.receive()), S_OK);
  return attachments;
}

template <class Collection, class Item>
ComPtr<Item> item_of(Collection* collection, short index, HRESULT (STDMETHODCALLTYPE Collection::*get)(short, Item**)) {
  ComPtr<Item> item;
  EXPECT_EQ((collection->*get)(index, item.receive()), S_OK);
  return item;
}

ComPtr<IvMessage> part_of(IvMessages* parts, short index) { return item_of(parts, index, &IvMessages::get_Item); }

ComPtr<IvAttachment> attachment_of(IvAttachments* attachments, short index) {
  return item_of(attachments, index, &IvAttachments::get_Item);
}

/// What an enumerator walks through, each as the client's plain pointer; the items must be held elsewhere.
template <class Item, class Collection>
std::vector<Item*> walk(Collection* collection) {
  ComPtr<IUnknown> unknown;
  EXPECT_EQ(collection->get__NewEnum(unknown.receive()), S_OK);
  const auto items = query<IEnumVARIANT>(unknown.get());
  std::vector<Item*> walked;
  Value item;
  while (items->Next(1, item.receive(), nullptr) == S_OK) {
    EXPECT_EQ(item.type(), VT_DISPATCH);
    walked.push_back(query<Item>(V_DISPATCH(&item.get())).get());
  }
  return walked;
}

HRESULT late_bound_decoded_text(IvMessage* message, long encoding, Value& result) {
  Value argument = Value::of_type(VT_I4);
  V_I4(&argument.get()) = encoding;
  return invoke(message, 18, DISPATCH_PROPERTYGET, {argument.get()}, result.receive());
}

}  // namespace

TEST_F(MessageContent, the_boundary_is_empty_until_the_text_is_read_and_then_the_delimiter) {
  MailboxClient client(kThreeParts);
  const auto message = client.message(0);
  Text boundary, text;
  EXPECT_EQ(message->get_PartsBoundary(boundary.receive()), S_OK);
  EXPECT_TRUE(boundary.is_null());
  EXPECT_EQ(message->get_Text(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"preamble\r\n");
  EXPECT_EQ(message->get_PartsBoundary(boundary.receive()), S_OK);
  EXPECT_EQ(boundary.value(), L"--XyZ");
  Value late_bound;
  EXPECT_EQ(invoke(message.get(), 34, DISPATCH_PROPERTYGET, {}, late_bound.receive()), S_OK);
  EXPECT_EQ(late_bound.text(), L"--XyZ");
}

TEST_F(MessageContent, plain_text_and_html_text_come_each_from_their_own_part) {
  MailboxClient client(kThreeParts);
  const auto message = client.message(0);
  Text text;
  EXPECT_EQ(message->get_PlainText(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"plain\r\n");
  EXPECT_EQ(message->get_HTMLText(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"<p>=</p>");
  Value late_bound;
  EXPECT_EQ(invoke(message.get(), 36, DISPATCH_PROPERTYGET, {}, late_bound.receive()), S_OK);
  EXPECT_EQ(late_bound.text(), L"plain\r\n");
  EXPECT_EQ(invoke(message.get(), 37, DISPATCH_PROPERTYGET, {}, late_bound.receive()), S_OK);
  EXPECT_EQ(late_bound.text(), L"<p>=</p>");
}

TEST_F(MessageContent, without_an_html_part_html_text_fails_without_a_number) {
  MailboxClient client;
  const auto message = client.message(0);
  Text text;
  EXPECT_EQ(message->get_HTMLText(text.receive()), E_FAIL);
  EXPECT_TRUE(text.is_null());
  EXPECT_FALSE(take_error_information().present);
  EXPECT_EQ(message->get_PlainText(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"one\r\n");
}

TEST_F(MessageContent, decoded_text_decodes_with_the_encoding_that_is_named) {
  const struct {
    AttachmentEncodingsEnum encoding;
    const char* body;
  } kCoded[] = {
      {encBASE64, "QUJD\r\n"},
      {encBINHEX4, ":38*$:\r\n"},
      {encUUENCODE, "begin 644 x\r\n#04)#\r\nend\r\n"},
      {encQUOTEDPRINTABLE, "=41B=43"},
  };
  for (const auto& coded : kCoded) {
    SCOPED_TRACE(coded.encoding);
    MailboxClient client(std::string("From x\r\nSubject: s\r\n\r\n") + coded.body);
    const auto message = client.message(0);
    Text text;
    EXPECT_EQ(message->get_DecodedText(coded.encoding, text.receive()), S_OK);
    EXPECT_EQ(text.value(), L"ABC");
    Value late_bound;
    EXPECT_EQ(late_bound_decoded_text(message.get(), coded.encoding, late_bound), S_OK);
    EXPECT_EQ(late_bound.text(), L"ABC");
  }
}

TEST_F(MessageContent, decoded_text_refuses_7bit_unknown_and_foreign_encodings_as_unsupported) {
  MailboxClient client;
  const auto message = client.message(0);
  for (int encoding : {5, 0, 6, -1}) {
    SCOPED_TRACE(encoding);
    Text text;
    expect_error(message->get_DecodedText(static_cast<AttachmentEncodingsEnum>(encoding), text.receive()), 30013,
                 L"Unsupported encoding type", L"Quorvane.Message.2", CLSID_Message);
    EXPECT_TRUE(text.is_null());
  }
}

TEST_F(MessageContent, decoded_text_of_an_empty_text_succeeds_whatever_the_encoding) {
  MailboxClient client("From x\r\nSubject: s\r\n\r\n");
  Text text;
  EXPECT_EQ(client.message(0)->get_DecodedText(enc7BIT, text.receive()), S_OK);
  EXPECT_TRUE(text.is_null());
}

TEST_F(MessageContent, a_part_is_the_same_object_while_it_is_held) {
  MailboxClient client(kThreeParts);
  const auto message = client.message(0);
  const auto parts = parts_of(message.get());
  EXPECT_EQ(parts_of(message.get()).get(), parts.get());
  ASSERT_EQ(count_of(parts.get()), 3);
  const auto first = part_of(parts.get(), 0), second = part_of(parts.get(), 1), third = part_of(parts.get(), 2);
  EXPECT_NE(first.get(), second.get());
  EXPECT_NE(second.get(), third.get());
  EXPECT_EQ(part_of(parts.get(), 1).get(), second.get());
  EXPECT_EQ(walk<IvMessage>(parts.get()), (std::vector<IvMessage*>{first.get(), second.get(), third.get()}));
  Text type;
  EXPECT_EQ(second->get_ContentType(type.receive()), S_OK);
  EXPECT_EQ(type.value(), L"text/html");
}

TEST_F(MessageContent, an_attachment_is_the_same_object_while_it_is_held_and_knows_its_part) {
  MailboxClient client(kThreeParts);
  const auto message = client.message(0);
  const auto attachments = attachments_of(message.get());
  EXPECT_EQ(attachments_of(message.get()).get(), attachments.get());
  short count = -1;
  EXPECT_EQ(attachments->get_Count(&count), S_OK);
  ASSERT_EQ(count, 1);
  const auto attachment = attachment_of(attachments.get(), 0);
  EXPECT_EQ(attachment_of(attachments.get(), 0).get(), attachment.get());
  EXPECT_EQ(walk<IvAttachment>(attachments.get()), std::vector<IvAttachment*>{attachment.get()});
  const auto third = part_of(parts_of(message.get()).get(), 2);
  ComPtr<IvMessage> part;
  EXPECT_EQ(attachment->get_Part(part.receive()), S_OK);
  EXPECT_EQ(part.get(), third.get());
}

TEST_F(MessageContent, a_walk_over_attachments_goes_on_when_the_message_lets_them_go) {
  MailboxClient client(kThreeParts);
  const auto message = client.message(0);
  ComPtr<IUnknown> unknown;
  EXPECT_EQ(attachments_of(message.get())->get__NewEnum(unknown.receive()), S_OK);
  EXPECT_EQ(message->Unload(), S_OK);
  Value item;
  ASSERT_EQ(query<IEnumVARIANT>(unknown.get())->Next(1, item.receive(), nullptr), S_OK);
  Text name;
  EXPECT_EQ(query<IvAttachment>(V_DISPATCH(&item.get()))->get_Name(name.receive()), S_OK);
  EXPECT_EQ(name.value(), L"a.bin");
}

TEST_F(MessageContent, parts_attachments_and_headers_by_identifier_are_the_same_objects) {
  MailboxClient client(kThreeParts);
  const auto message = client.message(0);
  ComPtr<IvHeaders> headers;
  EXPECT_EQ(message->get_Headers(headers.receive()), S_OK);
  const auto parts = parts_of(message.get());
  const auto attachments = attachments_of(message.get());
  const struct {
    DISPID identifier;
    IDispatch* expected;
  } kObjects[] = {{13, headers.get()}, {15, parts.get()}, {16, attachments.get()}};
  for (const auto& object : kObjects) {
    SCOPED_TRACE(object.identifier);
    Value result;
    EXPECT_EQ(invoke(message.get(), object.identifier, DISPATCH_PROPERTYGET, {}, result.receive()), S_OK);
    ASSERT_EQ(result.type(), VT_DISPATCH);
    EXPECT_EQ(V_DISPATCH(&result.get()), object.expected);
  }
}

}  // namespace vellobar::tests
