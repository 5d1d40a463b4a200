// Objects created, used and released over and over: memory and handles stay where they were. Light objects take a
// million rounds; those that open a mailbox take fewer, each of which still costs more than a thousand light ones.
#include <gtest/gtest.h>

#include <functional>

#include "tests/automation/mailbox_client.h"

// Needs the types of the headers above.
#include <psapi.h>

namespace vellobar::tests {

namespace {

class Rounds : public AutomationTest {};

SIZE_T memory_in_use() {
  PROCESS_MEMORY_COUNTERS counters{};
  counters.cb = sizeof counters;
  EXPECT_TRUE(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters));
  return counters.PagefileUsage;
}

/// The system gives a new handle the lowest free number, so a leak shows in the number; it may also tell their count.
struct Handles {
  DWORD count = 0;
  ULONG_PTR next = 0;
};

Handles handles_in_use() {
  Handles handles;
  GetProcessHandleCount(GetCurrentProcess(), &handles.count);
  const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  handles.next = reinterpret_cast<ULONG_PTR>(event);
  CloseHandle(event);
  return handles;
}

/// A first tenth of the rounds fills what is kept for the whole process. A leak of one byte a round would show in a
/// million rounds, one of a hundred in ten thousand.
void expect_flat(int rounds, const std::function<void()>& round) {
  constexpr SIZE_T kAllowed = 1'000'000;
  for (int i = 0; i < rounds / 10; ++i) round();
  const SIZE_T memory = memory_in_use();
  const Handles handles = handles_in_use();
  for (int i = 0; i < rounds; ++i) round();
  EXPECT_LT(memory_in_use(), memory + kAllowed);
  const Handles after = handles_in_use();
  EXPECT_LE(after.count, handles.count + 2);
  EXPECT_LE(after.next, handles.next + 8);
}

}  // namespace

TEST_F(Rounds, a_million_encoders_leave_nothing_behind) {
  const Text in(L"ABC");
  int wrong = 0;
  expect_flat(1'000'000, [&] {
    Text out;
    make<IvEncoder>(CLSID_Encoder)->Base64Text(in.get(), out.receive());
    wrong += out.value() == L"QUJD" ? 0 : 1;
  });
  EXPECT_EQ(wrong, 0);
}

TEST_F(Rounds, a_hundred_thousand_late_bound_failures_leave_nothing_behind) {
  const auto messages = make<IDispatch>(CLSID_Messages);
  Value argument(short{0});
  expect_flat(100'000, [&] {
    EXCEPINFO exception{};
    Value result;
    invoke(messages.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {argument.get()}, result.receive(), &exception);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
  });
}

TEST_F(Rounds, a_hundred_thousand_numbered_errors_leave_nothing_behind) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  expect_flat(100'000, [&] { control->Update(); });
  take_error_information();
}

TEST_F(Rounds, a_hundred_thousand_messages_with_headers_leave_nothing_behind) {
  const Text subject(L"of the round");
  Value name(L"Subject");
  int wrong = 0;
  expect_flat(100'000, [&] {
    const auto message = make<IvMessage>(CLSID_Message);
    message->put_Subject(subject.get());
    ComPtr<IvHeaders> headers;
    message->get_Headers(headers.receive());
    ComPtr<IvHeader> header;
    headers->get_Item(name.get(), header.receive());
    Text value;
    header->get_Value(value.receive());
    wrong += value.value() == L"of the round" ? 0 : 1;
  });
  EXPECT_EQ(wrong, 0);
}

TEST_F(Rounds, two_thousand_mailboxes_locked_and_walked_leave_nothing_behind) {
  const MailboxClient files;
  const Text path(widened(files.folder().path("client.mbox")));
  int wrong = 0;
  expect_flat(2'000, [&] {
    const auto control = make<IVellobar>(CLSID_Vellobar);
    control->put_Filename(path.get());
    control->Lock();
    ComPtr<IvMessages> messages;
    control->get_Messages(messages.receive());
    ComPtr<IUnknown> items;
    messages->get__NewEnum(items.receive());
    Value item;
    while (query<IEnumVARIANT>(items.get())->Next(1, item.receive(), nullptr) == S_OK) {
      Text text;
      query<IvMessage>(V_DISPATCH(&item.get()))->get_PlainText(text.receive());
      wrong += text.value().size() == 5 ? 0 : 1;
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace vellobar::tests
