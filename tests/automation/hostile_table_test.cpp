// Hostile arguments through the table of methods, where nothing of the system stands between a client and the
// component.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/automation/documented_status.h"
#include "tests/automation/hostile_values.h"
#include "tests/automation/mailbox_client.h"

namespace vellobar::tests {

namespace {

/// Runs in a folder of its own, since a text is a file name for some members.
class HostileTable : public AutomationTest {
 protected:
  HostileTable() {
    GetCurrentDirectoryW(MAX_PATH, before_);
    SetCurrentDirectoryW(widened(folder_.path("")).c_str());
  }
  ~HostileTable() override { SetCurrentDirectoryW(before_); }

 private:
  TemporaryFolder folder_;
  wchar_t before_[MAX_PATH];
};

void expect_documented(const std::function<HRESULT(const VARIANT&)>& call, IDispatch* called) {
  for (const HostileShape& shape : hostile_shapes()) {
    SCOPED_TRACE(shape.name);
    HostileValue made;
    shape.make(made, called);
    const HRESULT status = call(made.value);
    EXPECT_TRUE(is_bare_status(status) || is_numbered(status)) << std::hex << status;
    // A text belongs to a number, and to nothing else.
    EXPECT_EQ(take_error_information().present, is_numbered(status)) << std::hex << status;
  }
}

}  // namespace

TEST_F(HostileTable, headers_answer_every_variant_with_a_documented_status) {
  MailboxClient client;
  const auto headers = client.headers(0);
  const Text name(L"X-New");
  const auto expect = [&](const auto& call) { expect_documented(call, headers.get()); };
  expect([&](const VARIANT& value) {
    ComPtr<IvHeader> header;
    return headers->get_Item(value, header.receive());
  });
  expect([&](const VARIANT& value) {
    VARIANT_BOOL exists = VARIANT_FALSE;
    return headers->Exists(value, &exists);
  });
  expect([&](const VARIANT& value) { return headers->Add(name.get(), value, nullptr); });
  expect([&](const VARIANT& value) { return headers->Remove(value); });
}

TEST_F(HostileTable, messages_and_attachments_answer_every_variant_with_a_documented_status) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  expect_documented([&](const VARIANT& value) { return messages->Add(value, nullptr); }, messages.get());
  ComPtr<IvAttachments> attachments;
  ASSERT_EQ(client.message(0)->get_Attachments(attachments.receive()), S_OK);
  const Text file(L"no such file");
  expect_documented([&](const VARIANT& value) { return attachments->Add(file.get(), value, nullptr); },
                    attachments.get());
}

TEST_F(HostileTable, a_message_and_an_attachment_answer_every_variant_with_a_documented_status) {
  MailboxClient client;
  const auto message = client.message(0);
  const Text file(L"no such folder\\file");
  expect_documented([&](const VARIANT& value) { return message->Save(file.get(), value); }, message.get());
  // A tag keeps what it is given; were it the message itself, that would never end.
  expect_documented(
      [&](const VARIANT& value) {
        const HRESULT status = message->put_Tag(value);
        Value tag;
        EXPECT_EQ(message->get_Tag(tag.receive()), S_OK);
        return status;
      },
      nullptr);
  const auto attachment = make<IvAttachment>(CLSID_Attachment);
  expect_documented([&](const VARIANT& value) { return attachment->Save(value); }, attachment.get());
}

TEST_F(HostileTable, every_property_without_a_place_for_its_value_succeeds_and_does_nothing) {
  using Getter = HRESULT(STDMETHODCALLTYPE*)(void* object, void* place);
  for (const CLSID* class_id : {&CLSID_Vellobar, &CLSID_Message, &CLSID_Messages, &CLSID_Header, &CLSID_Headers,
                                &CLSID_Attachment, &CLSID_Attachments}) {
    const auto object = make<IDispatch>(*class_id);
    ComPtr<ITypeInfo> dispatch, table;
    HREFTYPE reference = 0;
    ASSERT_EQ(object->GetTypeInfo(0, 0, dispatch.receive()), S_OK);
    ASSERT_EQ(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
    ASSERT_EQ(dispatch->GetRefTypeInfo(reference, table.receive()), S_OK);
    int called = 0;
    FUNCDESC* function = nullptr;
    for (UINT i = 0; SUCCEEDED(table->GetFuncDesc(i, &function)); ++i) {
      const std::size_t slot = static_cast<std::size_t>(function->oVft) / sizeof(void*);
      if (function->invkind == INVOKE_PROPERTYGET && function->cParams == 1 && slot >= 7) {
        const auto getter = reinterpret_cast<Getter>((*reinterpret_cast<void***>(object.get()))[slot]);
        EXPECT_EQ(getter(object.get(), nullptr), S_OK) << "slot " << slot;
        EXPECT_FALSE(take_error_information().present);
        ++called;
      }
      table->ReleaseFuncDesc(function);
    }
    EXPECT_GT(called, 0);
  }
}

}  // namespace vellobar::tests
