// IvMessage and IvHeader through their tables of methods.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"

namespace vellobar::tests {

namespace {

class Message : public AutomationTest {};
class Header : public AutomationTest {};

}  // namespace

TEST_F(Message, tells_positions_sizes_and_lines) {
  MailboxClient client;
  const auto message = client.message(1);
  long start = 0, end = 0, size = 0, bytes = 0, lines = 0;
  short index = 0;
  EXPECT_EQ(message->get_StartPosition(&start), S_OK);
  EXPECT_EQ(message->get_EndPosition(&end), S_OK);
  EXPECT_EQ(message->get_Size(&size), S_OK);
  EXPECT_EQ(message->get_Bytes(&bytes), S_OK);
  EXPECT_EQ(message->get_Lines(&lines), S_OK);
  EXPECT_EQ(message->get_Index(&index), S_OK);
  EXPECT_EQ(start, 99);
  EXPECT_EQ(end, 170);
  EXPECT_EQ(size, 71);
  EXPECT_EQ(bytes, 71);
  EXPECT_EQ(lines, 4);
  EXPECT_EQ(index, 1);
}

TEST_F(Message, reads_texts_and_named_headers) {
  MailboxClient client;
  const auto message = client.message(0);
  Text text;
  EXPECT_EQ(message->get_Text(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"one\r\n");
  EXPECT_EQ(message->get_MailInfo(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"From ann@example.org Mon Jan  1 10:00:00 2024");
  EXPECT_EQ(message->get_Subject(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"First");
  EXPECT_EQ(message->get_FromName(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"Ann");
  EXPECT_EQ(message->get_FromEmail(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"ann@example.org");
}

TEST_F(Message, a_header_that_is_not_there_is_a_null_string) {
  MailboxClient client;
  const auto message = client.message(0);
  Text text;
  for (const auto get : {&IvMessage::get_CC, &IvMessage::get_BCC, &IvMessage::get_To, &IvMessage::get_ContentID,
                         &IvMessage::get_ContentType, &IvMessage::get_MessageID, &IvMessage::get_CharSet}) {
    EXPECT_EQ((message.get()->*get)(text.receive()), S_OK);
    EXPECT_TRUE(text.is_null());
  }
}

TEST_F(Message, a_stand_alone_one_is_all_zero_and_has_no_index) {
  const auto message = make<IvMessage>(CLSID_Message);
  long number = 5;
  for (const auto get : {&IvMessage::get_StartPosition, &IvMessage::get_EndPosition, &IvMessage::get_Size,
                         &IvMessage::get_Bytes, &IvMessage::get_Lines}) {
    EXPECT_EQ((message.get()->*get)(&number), S_OK);
    EXPECT_EQ(number, 0);
  }
  short index = 0;
  EXPECT_EQ(message->get_Index(&index), E_FAIL);
  Text text;
  EXPECT_EQ(message->get_MailInfo(text.receive()), S_OK);
  EXPECT_TRUE(text.is_null());
}

TEST_F(Message, text_with_a_nul_inside_crosses_whole_in_both_directions) {
  const auto message = make<IvMessage>(CLSID_Message);
  const std::wstring with_nul(L"From a\0b", 8);
  EXPECT_EQ(message->put_MailInfo(Text(with_nul).get()), S_OK);
  Text read;
  EXPECT_EQ(message->get_MailInfo(read.receive()), S_OK);
  EXPECT_EQ(read.value(), with_nul);
}

TEST_F(Message, save_replaces_the_file_whatever_append_says) {
  MailboxClient client;
  const std::string saved = client.folder().file("saved", "old content");
  const auto message = client.message(1);
  EXPECT_EQ(message->Save(Text(widened(saved)).get(), Value(true).get()), S_OK);
  EXPECT_EQ(read_file(saved), "From bob@example.org Tue Jan  2 11:00:00 2024\r\nSubject: Second\r\n\r\ntwo\r\n");
}

TEST_F(Message, a_tag_keeps_a_copy_of_what_was_put) {
  const auto message = make<IvMessage>(CLSID_Message);
  Value tag;
  EXPECT_EQ(message->get_Tag(tag.receive()), S_OK);
  EXPECT_EQ(tag.type(), VT_EMPTY);
  EXPECT_EQ(message->put_Tag(Value(L"mine").get()), S_OK);
  EXPECT_EQ(message->get_Tag(tag.receive()), S_OK);
  EXPECT_EQ(tag.text(), L"mine");
}

TEST_F(Message, a_tag_put_by_reference_holds_the_value_not_the_reference) {
  const auto message = make<IvMessage>(CLSID_Message);
  Value tag;
  {
    Value original(L"short-lived");
    EXPECT_EQ(message->put_Tag(Value::reference_to(original.get()).get()), S_OK);
  }
  EXPECT_EQ(message->get_Tag(tag.receive()), S_OK);
  EXPECT_EQ(tag.text(), L"short-lived");
  EXPECT_EQ(message->put_Tag(Value::of_type(VT_BYREF | VT_BSTR).get()), E_INVALIDARG);
}

TEST_F(Message, putting_a_tag_does_not_release_the_previous_one) {
  ClientObject first, second;
  {
    const auto message = make<IvMessage>(CLSID_Message);
    EXPECT_EQ(message->put_Tag(Value(&first).get()), S_OK);
    EXPECT_EQ(first.references, 2u);
    EXPECT_EQ(message->put_Tag(Value(&second).get()), S_OK);
    EXPECT_EQ(first.references, 2u);
    EXPECT_EQ(second.references, 2u);
  }
  EXPECT_EQ(first.references, 2u);
  EXPECT_EQ(second.references, 1u);
}

TEST_F(Message, a_tag_stays_with_the_message_when_no_client_holds_the_message) {
  MailboxClient client;
  EXPECT_EQ(client.message(0)->put_Tag(Value(L"kept").get()), S_OK);
  Value tag;
  EXPECT_EQ(client.message(0)->get_Tag(tag.receive()), S_OK);
  EXPECT_EQ(tag.text(), L"kept");
}

TEST_F(Message, a_date_that_cannot_be_read_is_an_invalid_argument) {
  MailboxClient client("From x\r\nDate: 1 Foo 2024 10:00:00\r\n\r\n");
  DATE date = 1;
  EXPECT_EQ(client.message(0)->get_Date(&date), E_INVALIDARG);
}

TEST_F(Header, keeps_name_and_value_and_null_strings_stay_null) {
  const auto header = make<IvHeader>(CLSID_Header);
  Text text;
  EXPECT_EQ(header->get_Name(text.receive()), S_OK);
  EXPECT_TRUE(text.is_null());
  EXPECT_EQ(header->put_Value(Text(L"v").get()), S_OK);
  EXPECT_EQ(header->ToString(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L": v");
  EXPECT_EQ(header->put_Name(Text(L"N").get()), S_OK);
  EXPECT_EQ(header->put_Value(nullptr), S_OK);
  EXPECT_EQ(header->get_Value(text.receive()), S_OK);
  EXPECT_TRUE(text.is_null());
  EXPECT_EQ(header->ToString(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"N: ");
  EXPECT_EQ(header->ToString(nullptr), S_OK);
}

}  // namespace vellobar::tests
