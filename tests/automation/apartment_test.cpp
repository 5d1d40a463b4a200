// Objects created in either kind of apartment, and objects that pass from one apartment to another.
#include <gtest/gtest.h>

#include <string>

#include "tests/automation/apartment.h"
#include "tests/automation/bytes.h"
#include "tests/automation/mailbox_client.h"
#include "tests/automation/numbered_error.h"

namespace vellobar::tests {

namespace {

/// Registered, because the system creates objects, and carries calls between apartments, by the registry.
class Apartments : public AutomationTest {
 protected:
  Apartments() { EXPECT_EQ(Module::under_test().register_server(), S_OK); }
  ~Apartments() override { EXPECT_EQ(Module::under_test().unregister_server(), S_OK); }
};

struct Created {
  const CLSID& class_id;
  const IID& interface_id;
};

const Created kThreadedBoth[] = {
    {CLSID_Message, IID_IvMessage}, {CLSID_Messages, IID_IvMessages},     {CLSID_Header, IID_IvHeader},
    {CLSID_Headers, IID_IvHeaders}, {CLSID_Attachment, IID_IvAttachment}, {CLSID_Attachments, IID_IvAttachments},
    {CLSID_Decoder, IID_IvDecoder}, {CLSID_Encoder, IID_IvEncoder},
};
const Created kControl = {CLSID_Vellobar, IID_IVellobar};

constexpr DWORD kBothKinds[] = {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED};

template <class Interface>
ComPtr<Interface> create(REFCLSID class_id) {
  void* object = nullptr;
  EXPECT_EQ(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface), &object), S_OK);
  return ComPtr<Interface>::attach(static_cast<Interface*>(object));
}

constexpr std::string_view kWithAttachment =
    "From ann@example.org Mon Jan  1 10:00:00 2024\r\n"
    "Date: Mon, 01 Jan 2024 10:00:00 +0000\r\n"
    "Subject: First\r\n"
    "Content-Type: multipart/mixed; boundary=XyZ\r\n"
    "\r\n"
    "--XyZ\r\n"
    "Content-Type: application/x-test; name=a.bin\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "QUJD\r\n"
    "--XyZ--\r\n";

/// Walks a locked mailbox down to an attachment, with an argument or a result of every type on the way.
void expect_usable(IVellobar* control) {
  VARIANT_BOOL changed = VARIANT_TRUE;
  EXPECT_EQ(control->get_Changed(&changed), S_OK);
  EXPECT_EQ(changed, VARIANT_FALSE);
  Charsets charset = UTF8;
  EXPECT_EQ(control->get_CharSet(&charset), S_OK);
  EXPECT_EQ(charset, ActiveCP);

  ComPtr<IvMessages> messages;
  ASSERT_EQ(control->get_Messages(messages.receive()), S_OK);
  ComPtr<IvMessage> message;
  ASSERT_EQ(messages->get_Item(0, message.receive()), S_OK);
  Text subject;
  ASSERT_EQ(message->get_Subject(subject.receive()), S_OK);
  EXPECT_EQ(subject.value(), L"First");
  DATE date = 0;
  ASSERT_EQ(message->get_Date(&date), S_OK);
  EXPECT_NEAR(date, 45292.4, 0.7);
  ASSERT_EQ(message->put_Tag(Value(L"marked").get()), S_OK);
  Value tag;
  ASSERT_EQ(message->get_Tag(tag.receive()), S_OK);
  EXPECT_EQ(tag.text(), L"marked");

  ComPtr<IvHeaders> headers;
  ASSERT_EQ(message->get_Headers(headers.receive()), S_OK);
  VARIANT_BOOL exists = VARIANT_FALSE;
  ASSERT_EQ(headers->Exists(Value(L"subject").get(), &exists), S_OK);
  EXPECT_EQ(exists, VARIANT_TRUE);

  ComPtr<IvAttachments> attachments;
  ASSERT_EQ(message->get_Attachments(attachments.receive()), S_OK);
  ComPtr<IUnknown> unknown;
  ASSERT_EQ(attachments->get__NewEnum(unknown.receive()), S_OK);
  Value item;
  ULONG fetched = 0;
  ASSERT_EQ(query<IEnumVARIANT>(unknown.get())->Next(1, item.receive(), &fetched), S_OK);
  Value name;
  ASSERT_EQ(invoke(V_DISPATCH(&item.get()), 1, DISPATCH_PROPERTYGET, {}, name.receive()), S_OK);
  EXPECT_EQ(name.text(), L"a.bin");
}

}  // namespace

TEST_F(Apartments, every_class_but_the_control_is_created_directly_in_either_kind) {
  for (DWORD kind : kBothKinds) {
    in_apartment(kind, [] {
      for (const Created& entry : kThreadedBoth) EXPECT_FALSE(is_proxy(create<IDispatch>(entry.class_id).get()));
    });
  }
}

TEST_F(Apartments, the_control_is_created_directly_in_a_single_threaded_one) {
  in_apartment(COINIT_APARTMENTTHREADED, [] { EXPECT_FALSE(is_proxy(create<IVellobar>(CLSID_Vellobar).get())); });
}

TEST_F(Apartments, a_mailbox_passes_from_a_single_threaded_one_to_either_kind) {
  for (DWORD kind : kBothKinds) {
    MailboxClient client(kWithAttachment);
    ASSERT_EQ(client.control()->Lock(), S_OK);
    auto stream = into_stream(IID_IVellobar, client.control());
    in_apartment(kind, [&] {
      const auto control = from_stream<IVellobar>(stream);
      ASSERT_TRUE(control);
      EXPECT_TRUE(is_proxy(control.get()));
      expect_usable(control.get());
    });
  }
}

TEST_F(Apartments, an_object_of_every_class_passes_to_the_other_kind_and_keeps_its_own_interface) {
  const auto expect_passes = [](const Created& entry, DWORD kind, DWORD other) {
    LivingApartment home(kind);
    ComPtr<IDispatch> object;
    ComPtr<IStream> stream;
    home.run([&] {
      object = create<IDispatch>(entry.class_id);
      stream = into_stream(entry.interface_id, object.get());
    });
    in_apartment(other, [&] {
      void* found = nullptr;
      ASSERT_EQ(CoGetInterfaceAndReleaseStream(stream.detach(), entry.interface_id, &found), S_OK);
      const auto passed = ComPtr<IUnknown>::attach(static_cast<IUnknown*>(found));
      EXPECT_TRUE(is_proxy(passed.get()));
      const auto dispatch = query<IDispatch>(passed.get());
      UINT count = 0;
      EXPECT_EQ(dispatch->GetTypeInfoCount(&count), S_OK);
      EXPECT_EQ(count, 1u);
    });
    home.run([&] { object = ComPtr<IDispatch>(); });
  };
  for (const Created& entry : kThreadedBoth) {
    expect_passes(entry, COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED);
    expect_passes(entry, COINIT_MULTITHREADED, COINIT_APARTMENTTHREADED);
  }
  expect_passes(kControl, COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED);
}

TEST_F(Apartments, late_bound_calls_pass_with_their_arguments_and_results) {
  MailboxClient client;
  const auto headers = client.headers(0);
  auto stream = into_stream(IID_IDispatch, headers.get());
  in_apartment(COINIT_MULTITHREADED, [&] {
    const auto passed = from_stream<IDispatch>(stream);
    ASSERT_TRUE(passed);
    Value header, value;
    ASSERT_EQ(invoke(passed.get(), identifier_of(passed.get(), L"Add"), DISPATCH_METHOD,
                     {Value(L"X-New").get(), Value(L"yes").get()}, header.receive()),
              S_OK);
    ASSERT_EQ(header.type(), VT_DISPATCH);
    ASSERT_EQ(invoke(V_DISPATCH(&header.get()), 2, DISPATCH_PROPERTYGET, {}, value.receive()), S_OK);
    EXPECT_EQ(value.text(), L"yes");
  });
  VARIANT_BOOL exists = VARIANT_FALSE;
  EXPECT_EQ(headers->Exists(Value(L"X-New").get(), &exists), S_OK);
  EXPECT_EQ(exists, VARIANT_TRUE);
}

// The declaration of the arrays gives them no direction, so an early-bound call need not carry a result back.
TEST_F(Apartments, byte_arrays_pass_late_bound_and_texts_early_bound) {
  const auto encoder = make<IvEncoder>(CLSID_Encoder);
  auto stream = into_stream(IID_IvEncoder, encoder.get());
  in_apartment(COINIT_MULTITHREADED, [&] {
    const auto passed = from_stream<IvEncoder>(stream);
    ASSERT_TRUE(passed);
    Text text;
    ASSERT_EQ(passed->Base64Text(Text(L"ABC").get(), text.receive()), S_OK);
    EXPECT_EQ(text.value(), L"QUJD");

    Bytes in("ABC"), out;
    VARIANT arguments[2];
    for (auto& [bytes, argument] : {std::pair<Bytes&, VARIANT&>(in, arguments[0]), {out, arguments[1]}}) {
      V_VT(&argument) = VT_BYREF | VT_ARRAY | VT_UI1;
      V_ARRAYREF(&argument) = bytes.place();
    }
    ASSERT_EQ(invoke(passed.get(), 5, DISPATCH_METHOD, {arguments[0], arguments[1]}), S_OK);
    EXPECT_EQ(in.content(), "ABC");
    EXPECT_EQ(out.content(), "QUJD");
  });
}

TEST_F(Apartments, a_numbered_error_passes_with_its_number) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  auto stream = into_stream(IID_IVellobar, control.get());
  in_apartment(COINIT_MULTITHREADED, [&] {
    const auto passed = from_stream<IVellobar>(stream);
    ASSERT_TRUE(passed);
    EXPECT_EQ(passed->Update(), numbered(30010));
  });
}

TEST_F(Apartments, an_object_that_comes_home_is_the_object_that_left) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  auto there = into_stream(IID_IVellobar, control.get());
  ComPtr<IStream> back;
  LivingApartment other(COINIT_MULTITHREADED);
  other.run([&] {
    const auto passed = from_stream<IVellobar>(there);
    ASSERT_TRUE(passed);
    back = into_stream(IID_IVellobar, passed.get());
  });
  EXPECT_EQ(from_stream<IVellobar>(back).get(), control.get());
}

TEST_F(Apartments, the_global_interface_table_gives_an_object_to_every_apartment) {
  void* found = nullptr;
  ASSERT_EQ(
      CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER, IID_IGlobalInterfaceTable, &found),
      S_OK);
  const auto table = ComPtr<IGlobalInterfaceTable>::attach(static_cast<IGlobalInterfaceTable*>(found));
  MailboxClient client(kWithAttachment);
  ASSERT_EQ(client.control()->Lock(), S_OK);
  DWORD cookie = 0;
  ASSERT_EQ(table->RegisterInterfaceInGlobal(client.control(), IID_IVellobar, &cookie), S_OK);
  for (DWORD kind : kBothKinds) {
    in_apartment(kind, [&] {
      void* control = nullptr;
      ASSERT_EQ(table->GetInterfaceFromGlobal(cookie, IID_IVellobar, &control), S_OK);
      expect_usable(ComPtr<IVellobar>::attach(static_cast<IVellobar*>(control)).get());
    });
  }
  EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), S_OK);
}

TEST_F(Apartments, a_stream_and_a_stand_in_keep_an_object_that_its_maker_let_go) {
  ComPtr<IStream> stream;
  LivingApartment home(COINIT_APARTMENTTHREADED);
  home.run([&] { stream = into_stream(IID_IVellobar, create<IVellobar>(CLSID_Vellobar).get()); });
  const auto control = from_stream<IVellobar>(stream);
  ASSERT_TRUE(control);
  VARIANT_BOOL changed = VARIANT_TRUE;
  EXPECT_EQ(control->get_Changed(&changed), S_OK);
  EXPECT_EQ(changed, VARIANT_FALSE);
}

TEST_F(Apartments, a_call_to_an_object_whose_apartment_has_ended_fails_and_does_not_crash) {
  ComPtr<IVellobar> control;
  {
    LivingApartment home(COINIT_APARTMENTTHREADED);
    ComPtr<IStream> stream;
    home.run([&] { stream = into_stream(IID_IVellobar, create<IVellobar>(CLSID_Vellobar).get()); });
    control = from_stream<IVellobar>(stream);
  }
  VARIANT_BOOL changed = VARIANT_TRUE;
  EXPECT_TRUE(FAILED(control->get_Changed(&changed)));
}

}  // namespace vellobar::tests
