// How hosts ask a collection for its enumerator: as a property, as a method, or as either.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"

namespace vellobar::tests {

namespace {

class EnumeratorRequest : public AutomationTest {};

constexpr std::string_view kTwoOfEach =
    "From x\r\n"
    "X-Second: 2\r\n"
    "Content-Type: multipart/mixed; boundary=XyZ\r\n"
    "\r\n"
    "--XyZ\r\n"
    "Content-Type: application/x-test; name=a.bin\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "QUJD\r\n"
    "--XyZ\r\n"
    "Content-Type: application/x-test; name=b.bin\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "QUJD\r\n"
    "--XyZ--\r\n";

/// The default member and the enumerator must give the same two objects.
void expect_two_items(IDispatch* collection, WORD kind) {
  Value result;
  ASSERT_EQ(invoke(collection, DISPID_NEWENUM, kind, {}, result.receive()), S_OK);
  ASSERT_EQ(result.type(), VT_UNKNOWN);
  const auto items = query<IEnumVARIANT>(V_UNKNOWN(&result.get()));
  ASSERT_TRUE(items);
  for (short index = 0; index < 2; ++index) {
    Value position(index), item, walked;
    ASSERT_EQ(invoke(collection, DISPID_VALUE, DISPATCH_PROPERTYGET, {position.get()}, item.receive()), S_OK);
    ASSERT_EQ(items->Next(1, walked.receive(), nullptr), S_OK);
    ASSERT_EQ(walked.type(), VT_DISPATCH);
    EXPECT_EQ(V_DISPATCH(&walked.get()), V_DISPATCH(&item.get()));
  }
  Value none;
  EXPECT_EQ(items->Next(1, none.receive(), nullptr), S_FALSE);
}

void expect_two_items_however_asked(IDispatch* collection) {
  for (int kind : {DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_METHOD | DISPATCH_PROPERTYGET}) {
    SCOPED_TRACE(kind);
    expect_two_items(collection, static_cast<WORD>(kind));
  }
}

}  // namespace

TEST_F(EnumeratorRequest, messages_give_it_as_a_property_as_a_method_and_as_either) {
  MailboxClient client;
  expect_two_items_however_asked(client.locked_messages().get());
}

TEST_F(EnumeratorRequest, headers_give_it_as_a_property_as_a_method_and_as_either) {
  MailboxClient client(kTwoOfEach);
  expect_two_items_however_asked(client.headers(0).get());
}

TEST_F(EnumeratorRequest, parts_give_it_as_a_property_as_a_method_and_as_either) {
  MailboxClient client(kTwoOfEach);
  ComPtr<IvMessages> parts;
  ASSERT_EQ(client.message(0)->get_Parts(parts.receive()), S_OK);
  expect_two_items_however_asked(parts.get());
}

TEST_F(EnumeratorRequest, attachments_give_it_as_a_property_as_a_method_and_as_either) {
  MailboxClient client(kTwoOfEach);
  ComPtr<IvAttachments> attachments;
  ASSERT_EQ(client.message(0)->get_Attachments(attachments.receive()), S_OK);
  expect_two_items_however_asked(attachments.get());
}

TEST_F(EnumeratorRequest, only_the_enumerator_may_be_asked_for_as_a_method) {
  const auto messages = make<IvMessages>(CLSID_Messages);
  Value result;
  EXPECT_EQ(invoke(messages.get(), identifier_of(messages.get(), L"Count"), DISPATCH_METHOD, {}, result.receive()),
            DISP_E_MEMBERNOTFOUND);
}

}  // namespace vellobar::tests
