// When objects end: the module counts as unused after the last release, whatever the order, and not before.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <thread>
#include <vector>

#include "tests/automation/copy_elsewhere.h"
#include "tests/automation/mailbox_client.h"

namespace vellobar::tests {

namespace {

class ReleaseOrder : public AutomationTest {};
class WholeModule : public AutomationTest {};

constexpr std::string_view kWithParts =
    "From ann@example.org Mon Jan  1 10:00:00 2024\r\n"
    "Subject: First\r\n"
    "Content-Type: multipart/mixed; boundary=XyZ\r\n"
    "\r\n"
    "--XyZ\r\n"
    "Content-Type: application/x-test; name=a.bin\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "QUJD\r\n"
    "--XyZ--\r\n"
    "From bob@example.org Tue Jan  2 11:00:00 2024\r\n"
    "Subject: Second\r\n"
    "\r\n"
    "two\r\n";

using Held = std::vector<ComPtr<IUnknown>>;

/// One object of every kind that a mailbox leads to. The control comes first; the last two are an enumerator in the
/// middle of its walk and the item it gave.
Held hold_everything(MailboxClient& client) {
  Held held;
  const auto keep = [&](IUnknown* object) { held.emplace_back(object); };
  const auto messages = client.locked_messages();
  const auto message = client.message(0);
  ComPtr<IvHeaders> headers;
  ComPtr<IvHeader> header;
  ComPtr<IvMessages> parts;
  ComPtr<IvMessage> part;
  ComPtr<IvAttachments> attachments;
  ComPtr<IvAttachment> attachment;
  ComPtr<IUnknown> items;
  EXPECT_EQ(message->get_Headers(headers.receive()), S_OK);
  EXPECT_EQ(headers->get_Item(Value(L"Subject").get(), header.receive()), S_OK);
  EXPECT_EQ(message->get_Parts(parts.receive()), S_OK);
  EXPECT_EQ(parts->get_Item(0, part.receive()), S_OK);
  EXPECT_EQ(message->get_Attachments(attachments.receive()), S_OK);
  EXPECT_EQ(attachments->get_Item(0, attachment.receive()), S_OK);
  EXPECT_EQ(messages->get__NewEnum(items.receive()), S_OK);
  Value item;
  EXPECT_EQ(query<IEnumVARIANT>(items.get())->Next(1, item.receive(), nullptr), S_OK);
  keep(client.control());
  for (IUnknown* object : {static_cast<IUnknown*>(messages.get()), static_cast<IUnknown*>(message.get()),
                           static_cast<IUnknown*>(headers.get()), static_cast<IUnknown*>(header.get()),
                           static_cast<IUnknown*>(parts.get()), static_cast<IUnknown*>(part.get()),
                           static_cast<IUnknown*>(attachments.get()), static_cast<IUnknown*>(attachment.get()),
                           items.get(), static_cast<IUnknown*>(V_DISPATCH(&item.get()))}) {
    keep(object);
  }
  client.let_control_go();
  return held;
}

constexpr std::size_t kHeld = 11;

void release_in_order(const std::vector<std::size_t>& order, bool unlocks) {
  MailboxClient client(kWithParts);
  Held held = hold_everything(client);
  ASSERT_EQ(held.size(), kHeld);
  ASSERT_TRUE(!unlocks || query<IVellobar>(held.front().get())->Unlock() == S_OK);
  for (std::size_t which : order) {
    EXPECT_EQ(Module::under_test().can_unload_now(), S_FALSE);
    held[which] = ComPtr<IUnknown>();
  }
  EXPECT_EQ(Module::under_test().can_unload_now(), S_OK);
}

std::vector<std::size_t> in_order_of_making() {
  std::vector<std::size_t> order(kHeld);
  for (std::size_t i = 0; i < kHeld; ++i) order[i] = i;
  return order;
}

}  // namespace

TEST_F(ReleaseOrder, nothing_is_left_when_the_control_goes_first_or_last_or_anywhere_between) {
  const auto order = in_order_of_making();
  for (std::size_t turn = 0; turn < kHeld; ++turn) {
    auto turned = order;
    std::rotate(turned.begin(), turned.begin() + static_cast<std::ptrdiff_t>(turn), turned.end());
    SCOPED_TRACE(turn);
    for (bool unlocks : {false, true}) {
      release_in_order(turned, unlocks);
      release_in_order({turned.rbegin(), turned.rend()}, unlocks);
    }
  }
}

TEST_F(ReleaseOrder, nothing_is_left_after_two_hundred_orders_by_lot) {
  std::mt19937 lots(20240101);
  auto order = in_order_of_making();
  for (int i = 0; i < 200; ++i) {
    std::shuffle(order.begin(), order.end(), lots);
    SCOPED_TRACE(i);
    release_in_order(order, i % 2 == 0);
  }
}

TEST_F(ReleaseOrder, a_tag_that_leads_back_to_the_control_is_let_go_by_unlock) {
  MailboxClient client;
  auto message = client.message(0);
  Value control(static_cast<IDispatch*>(client.control()));
  ASSERT_EQ(message->put_Tag(control.get()), S_OK);
  message = ComPtr<IvMessage>();
  ASSERT_EQ(client.control()->Unlock(), S_OK);
}

// Scripts write message.Headers("Subject"): one call, in which the arguments are those of the collection's default member.
TEST_F(ReleaseOrder, nothing_is_left_of_a_collection_that_was_only_passed_through_to_its_default_member) {
  MailboxClient client(kWithParts);
  auto message = client.message(0);
  Value header, none;
  EXPECT_EQ(invoke(message.get(), 13, DISPATCH_PROPERTYGET, {Value(L"Subject").get()}, header.receive()), S_OK);
  EXPECT_EQ(header.type(), VT_DISPATCH);
  header = Value();
  EXPECT_TRUE(FAILED(invoke(message.get(), 13, DISPATCH_PROPERTYGET, {Value(L"No").get()}, none.receive())));
  Value attachment;
  EXPECT_EQ(invoke(message.get(), 16, DISPATCH_PROPERTYGET, {Value(short{0}).get()}, attachment.receive()), S_OK);
  attachment = Value();
  message = ComPtr<IvMessage>();
  client.let_control_go();
  EXPECT_EQ(Module::under_test().can_unload_now(), S_OK);
}

TEST_F(WholeModule, ends_and_can_be_loaded_again) {
  const CopyElsewhere copy;
  for (int i = 0; i < 3; ++i) {
    Module module(copy.path());
    void* found = nullptr;
    ASSERT_EQ(module.get_class_object(CLSID_Message, IID_IClassFactory, &found), S_OK);
    auto factory = ComPtr<IClassFactory>::attach(static_cast<IClassFactory*>(found));
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IvMessage, &found), S_OK);
    factory = ComPtr<IClassFactory>();
    auto message = ComPtr<IvMessage>::attach(static_cast<IvMessage*>(found));
    EXPECT_EQ(identifier_of(message.get(), L"Subject"), 21);
    EXPECT_EQ(module.can_unload_now(), S_FALSE);
    message = ComPtr<IvMessage>();
    EXPECT_EQ(module.can_unload_now(), S_OK);
  }
  EXPECT_EQ(GetModuleHandleW(copy.path().c_str()), nullptr);
}

TEST_F(WholeModule, counts_right_when_many_threads_create_and_release) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      CoInitializeEx(nullptr, COINIT_MULTITHREADED);
      for (int round = 0; round < 2000; ++round) {
        const auto message = make<IvMessage>(CLSID_Message);
        ComPtr<IvHeaders> headers;
        message->get_Headers(headers.receive());
      }
      CoUninitialize();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Module::under_test().can_unload_now(), S_OK);
}

}  // namespace vellobar::tests
