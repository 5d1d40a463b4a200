// Calls in the middle of other things: after Unlock, after the control is gone, while a collection is enumerated, and
// from inside the component's own calls to a client.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/automation/mailbox_client.h"
#include "tests/automation/numbered_error.h"

namespace vellobar::tests {

namespace {

class OutOfPlace : public AutomationTest {};

ComPtr<IEnumVARIANT> enumerator_of(IvMessages* messages) {
  ComPtr<IUnknown> unknown;
  EXPECT_EQ(messages->get__NewEnum(unknown.receive()), S_OK);
  return query<IEnumVARIANT>(unknown.get());
}

std::wstring next_subject(IEnumVARIANT* items) {
  Value item;
  if (items->Next(1, item.receive(), nullptr) != S_OK) return L"(end)";
  Text subject;
  EXPECT_EQ(query<IvMessage>(V_DISPATCH(&item.get()))->get_Subject(subject.receive()), S_OK);
  return subject.value();
}

short count_of(IvMessages* messages) {
  short count = -1;
  EXPECT_EQ(messages->get_Count(&count), S_OK);
  return count;
}

/// A client's object that does something of its own when the component lets go of it.
class LastWords final : public IDispatch {
 public:
  explicit LastWords(std::function<void()> words) : words_(std::move(words)) {}
  virtual ~LastWords() = default;

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override {
    *to = interface_id == IID_IUnknown || interface_id == IID_IDispatch ? this : nullptr;
    if (*to == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 1 && words_) std::exchange(words_, nullptr)();
    return left;
  }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_FAIL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return DISP_E_MEMBERNOTFOUND;
  }

 private:
  std::function<void()> words_;
  ULONG references_ = 1;
};

}  // namespace

TEST_F(OutOfPlace, an_enumeration_keeps_its_items_when_messages_are_removed_added_or_unlocked_meanwhile) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  const auto removed = enumerator_of(messages.get()), added = enumerator_of(messages.get()),
             unlocked = enumerator_of(messages.get());
  EXPECT_EQ(next_subject(added.get()), L"First");
  ComPtr<IvMessage> third;
  ASSERT_EQ(messages->Add(Value::missing().get(), third.receive()), S_OK);
  EXPECT_EQ(next_subject(added.get()), L"Second");
  EXPECT_EQ(next_subject(added.get()), L"(end)");

  EXPECT_EQ(next_subject(removed.get()), L"First");
  ASSERT_EQ(messages->RemoveAll(), S_OK);
  EXPECT_EQ(next_subject(removed.get()), L"Second");

  EXPECT_EQ(next_subject(unlocked.get()), L"First");
  ASSERT_EQ(client.control()->Unlock(), S_OK);
  EXPECT_EQ(next_subject(unlocked.get()), L"Second");
  EXPECT_EQ(next_subject(unlocked.get()), L"(end)");
  EXPECT_EQ(unlocked->Reset(), S_OK);
  Value item;
  EXPECT_EQ(unlocked->Next(1, item.receive(), nullptr), S_OK);
}

TEST_F(OutOfPlace, an_update_in_the_middle_of_an_enumeration_writes_every_change_made_so_far) {
  MailboxClient client;
  const auto items = enumerator_of(client.locked_messages().get());
  Value item;
  ASSERT_EQ(items->Next(1, item.receive(), nullptr), S_OK);
  ComPtr<IvHeaders> headers;
  ComPtr<IvHeader> added;
  ASSERT_EQ(query<IvMessage>(V_DISPATCH(&item.get()))->get_Headers(headers.receive()), S_OK);
  ASSERT_EQ(headers->Add(Text(L"X-New").get(), Value(L"yes").get(), added.receive()), S_OK);
  ASSERT_EQ(client.control()->Update(), S_OK);
  EXPECT_NE(client.content().find("X-New: yes\r\n"), std::string::npos);
  EXPECT_NE(client.content().find("Subject: Second\r\n"), std::string::npos);
  EXPECT_EQ(items->Next(1, item.receive(), nullptr), S_OK);
  EXPECT_EQ(count_of(client.messages().get()), 2);
}

TEST_F(OutOfPlace, after_unlock_what_was_read_stays_and_what_was_not_reads_as_empty) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  const auto read = client.message(0), unread = client.message(1);
  Text text;
  ASSERT_EQ(read->get_Subject(text.receive()), S_OK);
  ASSERT_EQ(client.control()->Unlock(), S_OK);
  EXPECT_EQ(read->get_Subject(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"First");
  EXPECT_EQ(unread->get_Subject(text.receive()), S_OK);
  EXPECT_TRUE(text.is_null());
  EXPECT_EQ(unread->get_Text(text.receive()), S_OK);
  EXPECT_TRUE(text.is_null());
  EXPECT_EQ(count_of(messages.get()), 2);
  EXPECT_EQ(count_of(client.messages().get()), 0);
  expect_error(client.control()->Update(), 30010, L"Mailbox not locked", L"Quorvane.Vellobar.1", CLSID_Vellobar);
  EXPECT_EQ(client.content(), kTwoMessages);
}

TEST_F(OutOfPlace, edits_after_the_control_is_gone_succeed_and_change_no_file) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  const auto message = client.message(0);
  client.let_control_go();
  EXPECT_EQ(message->put_Subject(Text(L"new").get()), S_OK);
  Text subject;
  EXPECT_EQ(message->get_Subject(subject.receive()), S_OK);
  EXPECT_EQ(subject.value(), L"new");
  EXPECT_EQ(messages->Remove(message.get()), S_OK);
  EXPECT_EQ(messages->Remove(message.get()), E_INVALIDARG);
  short index = 0;
  EXPECT_EQ(message->get_Index(&index), E_FAIL);
  EXPECT_EQ(messages->RemoveAll(), S_OK);
  EXPECT_EQ(client.content(), kTwoMessages);
}

TEST_F(OutOfPlace, a_client_called_by_unlock_finds_a_control_that_can_be_used) {
  MailboxClient client;
  IVellobar* control = client.control();
  bool was_called = false;
  LastWords tag([&] {
    was_called = true;
    ComPtr<IvMessages> messages;
    EXPECT_EQ(control->get_Messages(messages.receive()), S_OK);
    EXPECT_EQ(control->Unlock(), S_OK);
    EXPECT_EQ(control->Lock(), S_OK);
    EXPECT_EQ(control->Unlock(), S_OK);
  });
  ASSERT_EQ(client.message(0)->put_Tag(Value(&tag).get()), S_OK);
  EXPECT_EQ(control->Unlock(), S_OK);
  EXPECT_TRUE(was_called);
  EXPECT_EQ(client.content(), kTwoMessages);
  EXPECT_EQ(count_of(client.locked_messages().get()), 2);
}

TEST_F(OutOfPlace, a_client_called_by_remove_all_may_add_and_walk) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  bool was_called = false;
  LastWords tag([&] {
    was_called = true;
    ComPtr<IvMessage> added;
    EXPECT_EQ(messages->Add(Value::missing().get(), added.receive()), S_OK);
    EXPECT_GE(count_of(messages.get()), 1);
  });
  ASSERT_EQ(client.message(0)->put_Tag(Value(&tag).get()), S_OK);
  EXPECT_EQ(messages->RemoveAll(), S_OK);
  EXPECT_TRUE(was_called);
  Text text;
  EXPECT_EQ(client.control()->Unlock(), S_OK);
}

TEST_F(OutOfPlace, a_client_called_by_the_end_of_the_control_may_still_read_what_it_holds) {
  MailboxClient client;
  const auto other = client.message(1);
  bool was_called = false;
  LastWords tag([&] {
    was_called = true;
    Text subject;
    EXPECT_EQ(other->get_Subject(subject.receive()), S_OK);
  });
  ASSERT_EQ(client.message(0)->put_Tag(Value(&tag).get()), S_OK);
  client.let_control_go();
  EXPECT_TRUE(was_called);
}

}  // namespace vellobar::tests
