// The text properties of IvMessage that stand for one header each, and the date: every member reaches its own header,
// through the table of methods and by identifier.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"

namespace vellobar::tests {

namespace {

using GetText = HRESULT (STDMETHODCALLTYPE IvMessage::*)(BSTR*);
using PutText = HRESULT (STDMETHODCALLTYPE IvMessage::*)(BSTR);

/// One property: `text` is what a client puts, `stored` what the header then holds and the property reads.
struct NamedProperty {
  const wchar_t* name;
  DISPID identifier;
  const wchar_t* header;
  GetText get;
  PutText put;
  const wchar_t* text;
  const wchar_t* stored;
};

// The four address properties rewrite what they are given: a bare address is its own display name.
const NamedProperty kNamedProperties[] = {
    {L"From", 20, L"From", &IvMessage::get_From, &IvMessage::put_From, L"f@x", L"\"f@x\" <f@x>"},
    {L"Subject", 21, L"Subject", &IvMessage::get_Subject, &IvMessage::put_Subject, L"a subject", L"a subject"},
    {L"CC", 22, L"CC", &IvMessage::get_CC, &IvMessage::put_CC, L"c@x", L"\"c@x\" <c@x>"},
    {L"BCC", 23, L"BCC", &IvMessage::get_BCC, &IvMessage::put_BCC, L"b@x", L"\"b@x\" <b@x>"},
    {L"ContentDescription", 24, L"Content-Description", &IvMessage::get_ContentDescription,
     &IvMessage::put_ContentDescription, L"a description", L"a description"},
    {L"ContentDisposition", 25, L"Content-Disposition", &IvMessage::get_ContentDisposition,
     &IvMessage::put_ContentDisposition, L"inline", L"inline"},
    {L"ContentID", 26, L"Content-ID", &IvMessage::get_ContentID, &IvMessage::put_ContentID, L"<cid@x>", L"<cid@x>"},
    {L"ContentTransferEncoding", 29, L"Content-Transfer-Encoding", &IvMessage::get_ContentTransferEncoding,
     &IvMessage::put_ContentTransferEncoding, L"8bit", L"8bit"},
    {L"ContentType", 30, L"Content-Type", &IvMessage::get_ContentType, &IvMessage::put_ContentType, L"text/enriched",
     L"text/enriched"},
    {L"MessageID", 32, L"Message-ID", &IvMessage::get_MessageID, &IvMessage::put_MessageID, L"<mid@x>", L"<mid@x>"},
    {L"MIMEVersion", 33, L"MIME-Version", &IvMessage::get_MIMEVersion, &IvMessage::put_MIMEVersion, L"2", L"2"},
    {L"To", 35, L"To", &IvMessage::get_To, &IvMessage::put_To, L"t@x", L"\"t@x\" <t@x>"},
};

/// What the header block holds when every property was put in the order of the table.
constexpr std::wstring_view kAllPut =
    L"X-First: 1\r\n"
    L"From: \"f@x\" <f@x>\r\n"
    L"Subject: a subject\r\n"
    L"CC: \"c@x\" <c@x>\r\n"
    L"BCC: \"b@x\" <b@x>\r\n"
    L"Content-Description: a description\r\n"
    L"Content-Disposition: inline\r\n"
    L"Content-ID: <cid@x>\r\n"
    L"Content-Transfer-Encoding: 8bit\r\n"
    L"Content-Type: text/enriched\r\n"
    L"Message-ID: <mid@x>\r\n"
    L"MIME-Version: 2\r\n"
    L"To: \"t@x\" <t@x>\r\n";

constexpr std::string_view kOneHeader = "From x\r\nX-First: 1\r\n\r\nbody\r\n";

std::wstring header_block(IvMessage* message) {
  ComPtr<IvHeaders> headers;
  EXPECT_EQ(message->get_Headers(headers.receive()), S_OK);
  Text text;
  EXPECT_EQ(headers->ToString(text.receive()), S_OK);
  return text.value();
}

std::wstring header_value(IvMessage* message, const wchar_t* name) {
  ComPtr<IvHeaders> headers;
  EXPECT_EQ(message->get_Headers(headers.receive()), S_OK);
  ComPtr<IvHeader> header;
  EXPECT_EQ(headers->get_Item(Value(name).get(), header.receive()), S_OK);
  Text value;
  if (!header) return L"(no such header)";
  EXPECT_EQ(header->get_Value(value.receive()), S_OK);
  return value.value();
}

std::wstring late_bound_text(IvMessage* message, DISPID identifier) {
  Value result;
  EXPECT_EQ(invoke(message, identifier, DISPATCH_PROPERTYGET, {}, result.receive()), S_OK);
  EXPECT_EQ(result.type(), VT_BSTR);
  return result.type() == VT_BSTR ? result.text() : L"";
}

/// Minutes that the machine's clock is ahead of UTC now.
double minutes_east_of_utc() {
  SYSTEMTIME local, utc;
  DOUBLE local_days = 0, utc_days = 0;
  GetLocalTime(&local);
  GetSystemTime(&utc);
  SystemTimeToVariantTime(&local, &local_days);
  SystemTimeToVariantTime(&utc, &utc_days);
  const double minutes = (local_days - utc_days) * 24 * 60;
  return static_cast<double>(static_cast<long>(minutes + (minutes < 0 ? -0.5 : 0.5)));
}

class NamedProperties : public AutomationTest {};

// 7 January 2024, 17:05:09, in days since 30 December 1899.
constexpr double kDate = 45298 + (17 * 3600 + 5 * 60 + 9) / 86400.0;
constexpr double kHalfASecond = 0.5 / 86400;

}  // namespace

TEST_F(NamedProperties, each_reaches_its_own_header_through_the_table_of_methods) {
  MailboxClient client(kOneHeader);
  const auto message = client.message(0);
  ASSERT_EQ(header_block(message.get()), L"X-First: 1\r\n");
  for (const NamedProperty& property : kNamedProperties) {
    SCOPED_TRACE(testing::Message() << property.name);
    EXPECT_EQ((message.get()->*property.put)(Text(property.text).get()), S_OK);
    EXPECT_EQ(header_value(message.get(), property.header), property.stored);
  }
  EXPECT_EQ(header_block(message.get()), kAllPut);
  for (const NamedProperty& property : kNamedProperties) {
    SCOPED_TRACE(testing::Message() << property.name);
    Text read;
    EXPECT_EQ((message.get()->*property.get)(read.receive()), S_OK);
    EXPECT_EQ(read.value(), property.stored);
  }
}

TEST_F(NamedProperties, each_reaches_its_own_header_by_identifier) {
  MailboxClient client(kOneHeader);
  const auto message = client.message(0);
  ASSERT_EQ(header_block(message.get()), L"X-First: 1\r\n");
  for (const NamedProperty& property : kNamedProperties) {
    SCOPED_TRACE(testing::Message() << property.name);
    EXPECT_EQ(identifier_of(message.get(), property.name), property.identifier);
    Value text(property.text);
    EXPECT_EQ(invoke(message.get(), property.identifier, DISPATCH_PROPERTYPUT, {text.get()}), S_OK);
    EXPECT_EQ(header_value(message.get(), property.header), property.stored);
  }
  EXPECT_EQ(header_block(message.get()), kAllPut);
  for (const NamedProperty& property : kNamedProperties) {
    SCOPED_TRACE(testing::Message() << property.name);
    EXPECT_EQ(late_bound_text(message.get(), property.identifier), property.stored);
  }
}

TEST_F(NamedProperties, putting_an_empty_text_removes_each_ones_own_header) {
  MailboxClient client(kOneHeader);
  const auto message = client.message(0);
  ASSERT_EQ(header_block(message.get()), L"X-First: 1\r\n");
  for (const NamedProperty& property : kNamedProperties) {
    SCOPED_TRACE(testing::Message() << property.name);
    EXPECT_EQ((message.get()->*property.put)(Text(property.text).get()), S_OK);
    EXPECT_EQ(header_block(message.get()),
              std::wstring(L"X-First: 1\r\n") + property.header + L": " + property.stored + L"\r\n");
    EXPECT_EQ((message.get()->*property.put)(nullptr), S_OK);
    EXPECT_EQ(header_block(message.get()), L"X-First: 1\r\n");
  }
}

TEST_F(NamedProperties, putting_one_does_not_mark_the_mailbox_or_the_message_as_changed) {
  MailboxClient client(kOneHeader);
  const auto message = client.message(0);
  for (const NamedProperty& property : kNamedProperties) {
    EXPECT_EQ((message.get()->*property.put)(Text(property.text).get()), S_OK);
  }
  VARIANT_BOOL changed = VARIANT_TRUE;
  EXPECT_EQ(message->get_Changed(&changed), S_OK);
  EXPECT_EQ(changed, VARIANT_FALSE);
  changed = VARIANT_TRUE;
  EXPECT_EQ(client.control()->get_Changed(&changed), S_OK);
  EXPECT_EQ(changed, VARIANT_FALSE);
}

TEST_F(NamedProperties, a_date_is_written_as_it_stands_before_the_zone) {
  MailboxClient client(kOneHeader);
  const auto message = client.message(0);
  EXPECT_EQ(message->put_Date(kDate), S_OK);
  const std::wstring written = header_value(message.get(), L"Date");
  EXPECT_TRUE(written.starts_with(L"Sun, 7 Jan 2024 17:05:09 ")) << std::string(written.begin(), written.end());
  Value later = Value::of_type(VT_DATE);
  V_DATE(&later.get()) = kDate + 1;
  EXPECT_EQ(invoke(message.get(), 31, DISPATCH_PROPERTYPUT, {later.get()}), S_OK);
  EXPECT_TRUE(header_value(message.get(), L"Date").starts_with(L"Mon, 8 Jan 2024 17:05:09 "));
}

TEST_F(NamedProperties, a_date_is_read_in_the_time_of_the_machine) {
  MailboxClient client("From x\r\nDate: Sun, 7 Jan 2024 19:05:09 +0200\r\n\r\n");
  const auto message = client.message(0);
  const double expected = kDate + minutes_east_of_utc() / (24 * 60);
  DATE read = 0;
  EXPECT_EQ(message->get_Date(&read), S_OK);
  EXPECT_NEAR(read, expected, kHalfASecond);
  Value late_bound;
  EXPECT_EQ(
      invoke(message.get(), identifier_of(message.get(), L"Date"), DISPATCH_PROPERTYGET, {}, late_bound.receive()),
      S_OK);
  ASSERT_EQ(late_bound.type(), VT_DATE);
  EXPECT_NEAR(V_DATE(&late_bound.get()), expected, kHalfASecond);
}

TEST_F(NamedProperties, names_addresses_and_charset_are_read_from_their_own_headers) {
  MailboxClient client(
      "From x\r\n"
      "From: Ann Lee <ann@example.org>\r\n"
      "To: Bob <bob@example.org>, \"Eve\" <eve@example.org>\r\n"
      "Content-Type: text/plain; charset=windows-1250\r\n"
      "\r\n"
      "body\r\n");
  const struct {
    const wchar_t* name;
    DISPID identifier;
    GetText get;
    const wchar_t* expected;
  } kReadOnly[] = {
      {L"FromName", 38, &IvMessage::get_FromName, L"Ann Lee"},
      {L"FromEmail", 39, &IvMessage::get_FromEmail, L"ann@example.org"},
      {L"ToName", 40, &IvMessage::get_ToName, L"Bob, Eve"},
      {L"ToEmail", 41, &IvMessage::get_ToEmail, L"bob@example.org, eve@example.org"},
      {L"CharSet", 42, &IvMessage::get_CharSet, L"windows-1250"},
  };
  const auto message = client.message(0);
  for (const auto& property : kReadOnly) {
    SCOPED_TRACE(testing::Message() << property.name);
    Text read;
    EXPECT_EQ((message.get()->*property.get)(read.receive()), S_OK);
    EXPECT_EQ(read.value(), property.expected);
    EXPECT_EQ(identifier_of(message.get(), property.name), property.identifier);
    EXPECT_EQ(late_bound_text(message.get(), property.identifier), property.expected);
  }
}

TEST_F(NamedProperties, putting_a_charset_changes_nothing) {
  MailboxClient client("From x\r\nContent-Type: text/plain; charset=windows-1250\r\n\r\nbody\r\n");
  const auto message = client.message(0);
  EXPECT_EQ(message->put_CharSet(Text(L"koi8-r").get()), S_OK);
  Value charset(L"koi8-u");
  EXPECT_EQ(invoke(message.get(), 42, DISPATCH_PROPERTYPUT, {charset.get()}), S_OK);
  Text read;
  EXPECT_EQ(message->get_CharSet(read.receive()), S_OK);
  EXPECT_EQ(read.value(), L"windows-1250");
  EXPECT_EQ(header_block(message.get()), L"Content-Type: text/plain; charset=windows-1250\r\n");
  VARIANT_BOOL changed = VARIANT_TRUE;
  EXPECT_EQ(client.control()->get_Changed(&changed), S_OK);
  EXPECT_EQ(changed, VARIANT_FALSE);
}

}  // namespace vellobar::tests
