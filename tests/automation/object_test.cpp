// Class factories, interfaces, identity, lifetimes, and when the DLL may be unloaded.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"
#include "tests/automation/surface_table.h"

namespace vellobar::tests {

namespace {

class Factory : public AutomationTest {};
class Identity : public AutomationTest {};
class Lifetime : public AutomationTest {};
class Unloading : public AutomationTest {};

const CLSID* const kAllClasses[] = {&CLSID_Vellobar,    &CLSID_Message, &CLSID_Messages,
                                    &CLSID_Header,      &CLSID_Headers, &CLSID_Attachment,
                                    &CLSID_Attachments, &CLSID_Decoder, &CLSID_Encoder};

ComPtr<IClassFactory> factory(REFCLSID class_id) {
  void* found = nullptr;
  EXPECT_EQ(Module::under_test().get_class_object(class_id, IID_IClassFactory, &found), S_OK);
  return ComPtr<IClassFactory>::attach(static_cast<IClassFactory*>(found));
}

ComPtr<IUnknown> identity(IUnknown* object) { return query<IUnknown>(object); }

}  // namespace

TEST_F(Factory, makes_an_object_of_each_of_the_nine_classes) {
  for (const CLSID* class_id : kAllClasses) {
    const auto object = make<IDispatch>(*class_id);
    EXPECT_TRUE(query<ISupportErrorInfo>(object.get()));
  }
}

TEST_F(Factory, makes_a_new_object_each_time) {
  for (const CLSID* class_id : kAllClasses) {
    EXPECT_NE(identity(make<IDispatch>(*class_id).get()).get(), nullptr);
    const auto first = make<IDispatch>(*class_id), second = make<IDispatch>(*class_id);
    EXPECT_NE(identity(first.get()).get(), identity(second.get()).get());
  }
}

TEST_F(Factory, refuses_aggregation) {
  ClientObject outer;
  for (const CLSID* class_id : kAllClasses) {
    void* object = &outer;
    EXPECT_EQ(factory(*class_id)->CreateInstance(&outer, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
  }
}

TEST_F(Factory, refuses_an_interface_that_the_object_lacks) {
  void* object = this;
  EXPECT_EQ(factory(CLSID_Message)->CreateInstance(nullptr, IID_IvHeader, &object), E_NOINTERFACE);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(factory(CLSID_Message)->CreateInstance(nullptr, IID_IvMessage, nullptr), E_POINTER);
}

TEST_F(Factory, of_an_unknown_class_is_not_available) {
  void* found = this;
  EXPECT_EQ(Module::under_test().get_class_object(IID_IDispatch, IID_IClassFactory, &found), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(Module::under_test().get_class_object(CLSID_Message, IID_IDispatch, &found), E_NOINTERFACE);
  EXPECT_EQ(Module::under_test().get_class_object(CLSID_Message, IID_IClassFactory, nullptr), E_POINTER);
}

TEST_F(Identity, every_interface_of_an_object_leads_to_the_same_unknown) {
  const auto message = make<IvMessage>(CLSID_Message);
  const auto by_dispatch = query<IDispatch>(message.get());
  const auto by_support = query<ISupportErrorInfo>(message.get());
  EXPECT_EQ(identity(by_dispatch.get()).get(), identity(message.get()).get());
  EXPECT_EQ(identity(by_support.get()).get(), identity(message.get()).get());
  EXPECT_FALSE(query<IvHeader>(message.get()));
}

TEST_F(Identity, the_same_message_comes_out_as_the_same_object_while_it_is_held) {
  MailboxClient client;
  const auto first = client.message(1);
  const auto again = client.message(1);
  EXPECT_EQ(first.get(), again.get());
  EXPECT_NE(first.get(), client.message(0).get());
}

TEST_F(Identity, the_headers_of_a_message_and_their_items_are_the_same_objects_each_time) {
  MailboxClient client;
  const auto headers = client.headers(0);
  EXPECT_EQ(client.headers(0).get(), headers.get());
  ComPtr<IvHeader> by_position, by_name;
  ASSERT_EQ(headers->get_Item(Value(short{1}).get(), by_position.receive()), S_OK);
  ASSERT_EQ(headers->get_Item(Value(L"SUBJECT").get(), by_name.receive()), S_OK);
  EXPECT_EQ(by_position.get(), by_name.get());
}

TEST_F(Identity, the_messages_collection_is_the_same_object_until_unlock_makes_another) {
  MailboxClient client;
  const auto before = client.locked_messages();
  EXPECT_EQ(client.messages().get(), before.get());
  ASSERT_EQ(client.control()->Unlock(), S_OK);
  EXPECT_NE(client.messages().get(), before.get());
}

TEST_F(Identity, an_enumerated_message_is_the_object_that_item_gives) {
  MailboxClient client;
  const auto message = client.message(0);
  ComPtr<IUnknown> unknown;
  ASSERT_EQ(client.messages()->get__NewEnum(unknown.receive()), S_OK);
  Value first;
  ASSERT_EQ(query<IEnumVARIANT>(unknown.get())->Next(1, first.receive(), nullptr), S_OK);
  EXPECT_EQ(identity(V_DISPATCH(&first.get())).get(), identity(message.get()).get());
}

TEST_F(Lifetime, what_a_client_holds_outlives_the_control) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  const auto message = client.message(0);
  const auto headers = client.headers(0);
  client.let_control_go();
  short count = 0;
  EXPECT_EQ(messages->get_Count(&count), S_OK);
  EXPECT_EQ(count, 2);
  ComPtr<IvHeader> subject;
  ASSERT_EQ(headers->get_Item(Value(L"Subject").get(), subject.receive()), S_OK);
  Text value;
  EXPECT_EQ(subject->get_Value(value.receive()), S_OK);
  EXPECT_EQ(value.value(), L"First");
  long size = 0;
  EXPECT_EQ(message->get_Size(&size), S_OK);
  EXPECT_EQ(size, 99);
}

TEST_F(Lifetime, nothing_is_left_whatever_the_order_of_the_last_releases) {
  for (int order = 0; order < 6; ++order) {
    MailboxClient client;
    auto messages = client.locked_messages();
    auto message = client.message(0);
    auto headers = client.headers(1);
    const auto let_go = [&](int which) {
      if (which == 0) client.let_control_go();
      if (which == 1) messages = ComPtr<IvMessages>();
      if (which == 2) message = ComPtr<IvMessage>();
    };
    const int orders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    for (int which : orders[order]) let_go(which);
    headers = ComPtr<IvHeaders>();
    EXPECT_EQ(Module::under_test().can_unload_now(), S_OK);
  }
}

TEST_F(Lifetime, an_enumeration_goes_on_after_the_control_and_the_collection_are_gone) {
  MailboxClient client;
  ComPtr<IUnknown> unknown;
  ASSERT_EQ(client.locked_messages()->get__NewEnum(unknown.receive()), S_OK);
  const auto items = query<IEnumVARIANT>(unknown.get());
  Value first, second, third;
  ASSERT_EQ(items->Next(1, first.receive(), nullptr), S_OK);
  client.let_control_go();
  ASSERT_EQ(items->Next(1, second.receive(), nullptr), S_OK);
  EXPECT_EQ(second.type(), VT_DISPATCH);
  EXPECT_EQ(items->Next(1, third.receive(), nullptr), S_FALSE);
  EXPECT_EQ(third.type(), VT_EMPTY);
}

TEST_F(Lifetime, a_header_outlives_its_removal) {
  MailboxClient client;
  const auto headers = client.headers(0);
  ComPtr<IvHeader> subject;
  ASSERT_EQ(headers->get_Item(Value(L"Subject").get(), subject.receive()), S_OK);
  ASSERT_EQ(headers->Remove(Value(L"Subject").get()), S_OK);
  Text text;
  EXPECT_EQ(subject->ToString(text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"Subject: First");
}

TEST_F(Unloading, is_refused_while_an_object_of_any_class_is_alive) {
  for (const CLSID* class_id : kAllClasses) {
    const auto object = make<IDispatch>(*class_id);
    EXPECT_EQ(Module::under_test().can_unload_now(), S_FALSE);
  }
  EXPECT_EQ(Module::under_test().can_unload_now(), S_OK);
}

TEST_F(Unloading, is_refused_while_the_server_is_locked) {
  factory(CLSID_Message)->LockServer(TRUE);
  EXPECT_EQ(Module::under_test().can_unload_now(), S_FALSE);
  factory(CLSID_Message)->LockServer(FALSE);
  EXPECT_EQ(Module::under_test().can_unload_now(), S_OK);
}

TEST_F(Unloading, is_refused_while_an_enumerator_is_alive) {
  ComPtr<IUnknown> items;
  ASSERT_EQ(make<IvMessages>(CLSID_Messages)->get__NewEnum(items.receive()), S_OK);
  EXPECT_EQ(Module::under_test().can_unload_now(), S_FALSE);
}

}  // namespace vellobar::tests
