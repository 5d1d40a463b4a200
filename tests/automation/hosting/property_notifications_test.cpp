// The connection point for IPropertyNotifySink, and calls that come back from its listeners.
#include <gtest/gtest.h>
#include <olectl.h>

#include <thread>

#include "tests/automation/hosting/client_side.h"
#include "tests/automation/mailbox_client.h"

namespace vellobar::tests {

namespace {

constexpr DISPID kFilename = 0, kAutoUpdate = 1, kChanged = 7, kLanguage = 13, kCharSet = 14;
constexpr HRESULT kMailboxLocked = static_cast<HRESULT>(0x800A7530);

using Identifiers = std::vector<DISPID>;

ComPtr<IConnectionPoint> point_of(IUnknown* control) {
  ComPtr<IConnectionPoint> point;
  const auto container = query<IConnectionPointContainer>(control);
  EXPECT_EQ(container->FindConnectionPoint(IID_IPropertyNotifySink, point.receive()), S_OK);
  return point;
}

DWORD listen(IUnknown* control, PropertyListener& listener) {
  DWORD cookie = 0;
  EXPECT_EQ(point_of(control)->Advise(&listener, &cookie), S_OK);
  EXPECT_NE(cookie, 0u);
  return cookie;
}

void stop_listening(IUnknown* control, DWORD cookie) { EXPECT_EQ(point_of(control)->Unadvise(cookie), S_OK); }

ComPtr<IvHeader> add_header(MailboxClient& client) {
  ComPtr<IvHeader> header;
  EXPECT_EQ(client.headers(0)->Add(Text(L"X-New").get(), Value(L"yes").get(), header.receive()), S_OK);
  return header;
}

class PropertyNotifications : public AutomationTest {
 protected:
  void TearDown() override {
    make<IVellobar>(CLSID_Vellobar)->put_Language(language_);
    make<IVellobar>(CLSID_Vellobar)->put_CharSet(ActiveCP);
    AutomationTest::TearDown();
  }

 private:
  LanguageEnum language_ = static_cast<LanguageEnum>(GetUserDefaultLCID());
};

}  // namespace

TEST_F(PropertyNotifications, come_when_a_client_puts_another_value) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  listen(control.get(), listener);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(control->put_AutoUpdate(VARIANT_TRUE), S_OK);
  EXPECT_EQ(control->put_Language(lngCroatian), S_OK);
  EXPECT_EQ(control->put_CharSet(UTF8), S_OK);
  EXPECT_EQ(listener.requested, (Identifiers{kFilename, kAutoUpdate, kLanguage, kCharSet}));
  EXPECT_EQ(listener.changed, (Identifiers{kFilename, kAutoUpdate, kLanguage, kCharSet}));
}

TEST_F(PropertyNotifications, come_by_late_bound_puts_too) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  listen(control.get(), listener);
  EXPECT_EQ(invoke(control.get(), kFilename, DISPATCH_PROPERTYPUT, {Value(L"a").get()}), S_OK);
  EXPECT_EQ(listener.changed, Identifiers{kFilename});
}

TEST_F(PropertyNotifications, do_not_come_when_the_value_stays) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  listen(control.get(), listener);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(control->put_AutoUpdate(VARIANT_FALSE), S_OK);
  EXPECT_EQ(listener.requested, Identifiers{});
  EXPECT_EQ(listener.changed, Identifiers{});
}

TEST_F(PropertyNotifications, tell_of_changed_when_a_header_is_edited_and_when_the_mailbox_is_updated) {
  PropertyListener listener;
  MailboxClient client;
  client.locked_messages();
  listen(client.control(), listener);
  add_header(client);
  EXPECT_EQ(listener.changed, Identifiers{kChanged});
  EXPECT_EQ(client.control()->Update(), S_OK);
  EXPECT_EQ(listener.changed, (Identifiers{kChanged, kChanged}));
  EXPECT_EQ(listener.requested, Identifiers{});
}

TEST_F(PropertyNotifications, do_not_come_for_a_change_that_the_same_call_wrote) {
  PropertyListener listener;
  MailboxClient client;
  client.locked_messages();
  EXPECT_EQ(client.control()->put_AutoUpdate(VARIANT_TRUE), S_OK);
  listen(client.control(), listener);
  add_header(client);
  EXPECT_EQ(listener.changed, Identifiers{});
  EXPECT_NE(client.content().find("X-New: yes"), std::string::npos);
}

TEST_F(PropertyNotifications, tell_every_control_of_the_thread_of_a_value_of_the_process) {
  PropertyListener listener;
  const auto first = make<IVellobar>(CLSID_Vellobar), second = make<IVellobar>(CLSID_Vellobar);
  listen(second.get(), listener);
  EXPECT_EQ(first->put_CharSet(CP1250), S_OK);
  EXPECT_EQ(listener.changed, Identifiers{kCharSet});
}

TEST_F(PropertyNotifications, come_on_the_listeners_own_thread_only) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  listen(control.get(), listener);
  std::thread([] { EXPECT_EQ(make<IVellobar>(CLSID_Vellobar)->put_CharSet(CP1250), S_OK); }).join();
  EXPECT_EQ(listener.changed, Identifiers{});
  VARIANT_BOOL changed = VARIANT_FALSE;
  EXPECT_EQ(control->get_Changed(&changed), S_OK);
  EXPECT_EQ(listener.changed, Identifiers{kCharSet});
}

TEST_F(PropertyNotifications, a_listener_that_refuses_keeps_the_old_value) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  listener.when_requested = [](DISPID) { return S_FALSE; };
  listen(control.get(), listener);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), CTL_E_SETNOTPERMITTED);
  EXPECT_EQ(control->put_AutoUpdate(VARIANT_TRUE), CTL_E_SETNOTPERMITTED);
  Text filename;
  EXPECT_EQ(control->get_Filename(filename.receive()), S_OK);
  EXPECT_TRUE(filename.is_null());
  EXPECT_EQ(listener.changed, Identifiers{});
  EXPECT_FALSE(take_error_information().present);
}

TEST_F(PropertyNotifications, a_listener_without_an_opinion_does_not_refuse) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  listener.when_requested = [](DISPID) { return E_NOTIMPL; };
  listen(control.get(), listener);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
}

TEST_F(PropertyNotifications, nobody_is_asked_about_a_file_name_that_a_locked_control_refuses) {
  PropertyListener listener;
  MailboxClient client;
  client.locked_messages();
  listen(client.control(), listener);
  EXPECT_EQ(client.control()->put_Filename(Text(L"other").get()), kMailboxLocked);
  EXPECT_EQ(listener.requested, Identifiers{});
  EXPECT_EQ(take_error_information().description, L"Mailbox locked! Call Unlock() method first");
}

TEST_F(PropertyNotifications, a_listener_may_stop_listening_while_it_is_told) {
  PropertyListener first, second;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  DWORD first_cookie = 0, second_cookie = 0;
  first.when_changed = [&](DISPID) {
    stop_listening(control.get(), first_cookie);
    stop_listening(control.get(), second_cookie);
  };
  first_cookie = listen(control.get(), first);
  second_cookie = listen(control.get(), second);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(control->put_Filename(Text(L"b").get()), S_OK);
  EXPECT_EQ(first.changed, Identifiers{kFilename});
  EXPECT_EQ(second.changed, Identifiers{});
  EXPECT_EQ(first.references, 1u);
  EXPECT_EQ(second.references, 1u);
}

TEST_F(PropertyNotifications, a_listener_may_let_the_control_go_while_it_is_told) {
  PropertyListener listener;
  auto control = make<IVellobar>(CLSID_Vellobar);
  IVellobar* const borrowed = control.get();
  listener.when_changed = [&](DISPID) { control = ComPtr<IVellobar>(); };
  listen(borrowed, listener);
  EXPECT_EQ(borrowed->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(listener.changed, Identifiers{kFilename});
  EXPECT_EQ(listener.references, 1u);
  EXPECT_EQ(Module::under_test().can_unload_now(), S_OK);
}

TEST_F(PropertyNotifications, a_listener_may_let_the_control_go_while_it_is_asked) {
  PropertyListener listener;
  auto control = make<IVellobar>(CLSID_Vellobar);
  IVellobar* const borrowed = control.get();
  listener.when_requested = [&](DISPID) { return control = ComPtr<IVellobar>(), S_OK; };
  listen(borrowed, listener);
  EXPECT_EQ(borrowed->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(listener.references, 1u);
}

TEST_F(PropertyNotifications, a_listener_may_let_the_control_go_while_a_message_is_edited) {
  PropertyListener listener;
  MailboxClient client;
  const auto headers = client.headers(0);
  listener.when_changed = [&](DISPID) { client.let_control_go(); };
  listen(client.control(), listener);
  ComPtr<IvHeader> header;
  EXPECT_EQ(headers->Add(Text(L"X-New").get(), Value(L"yes").get(), header.receive()), S_OK);
  EXPECT_EQ(listener.changed, Identifiers{kChanged});
  short count = 0;
  EXPECT_EQ(headers->get_Count(&count), S_OK);
  EXPECT_EQ(count, 3);
}

TEST_F(PropertyNotifications, a_listener_may_update_the_mailbox_when_it_changed) {
  PropertyListener listener;
  MailboxClient client;
  client.locked_messages();
  HRESULT updated = E_FAIL;
  listener.when_changed = [&](DISPID) {
    VARIANT_BOOL changed = VARIANT_FALSE;
    EXPECT_EQ(client.control()->get_Changed(&changed), S_OK);
    if (changed != VARIANT_FALSE) updated = client.control()->Update();
  };
  listen(client.control(), listener);
  add_header(client);
  EXPECT_EQ(updated, S_OK);
  EXPECT_NE(client.content().find("X-New: yes\r\n"), std::string::npos);
  // Once that it is changed, once that it is not any more.
  EXPECT_EQ(listener.changed, (Identifiers{kChanged, kChanged}));
}

TEST_F(PropertyNotifications, a_listener_that_undoes_every_change_comes_to_an_end) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  listener.when_changed = [&](DISPID) {
    VARIANT_BOOL on = VARIANT_FALSE;
    EXPECT_EQ(control->get_AutoUpdate(&on), S_OK);
    EXPECT_EQ(control->put_AutoUpdate(on == VARIANT_FALSE ? VARIANT_TRUE : VARIANT_FALSE), S_OK);
  };
  listen(control.get(), listener);
  EXPECT_EQ(control->put_AutoUpdate(VARIANT_TRUE), S_OK);
  EXPECT_EQ(listener.changed.size(), 16u);
}

TEST_F(PropertyNotifications, leave_the_error_information_of_the_call_alone) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  listener.when_changed = [&](DISPID) { EXPECT_LT(control->Update(), 0); };
  listen(control.get(), listener);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_FALSE(take_error_information().present);
}

TEST_F(PropertyNotifications, wait_while_the_container_freezes_events) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto hosted = query<IOleControl>(control.get());
  listen(control.get(), listener);
  EXPECT_EQ(hosted->FreezeEvents(TRUE), S_OK);
  EXPECT_EQ(hosted->FreezeEvents(TRUE), S_OK);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(hosted->FreezeEvents(FALSE), S_OK);
  EXPECT_EQ(listener.changed, Identifiers{});
  EXPECT_EQ(hosted->FreezeEvents(FALSE), S_OK);
  EXPECT_EQ(listener.changed, Identifiers{kFilename});
}

TEST_F(PropertyNotifications, the_connection_point_is_an_object_of_its_own_that_leads_back_to_the_control) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto point = point_of(control.get());
  IID interface_id{};
  EXPECT_EQ(point->GetConnectionInterface(&interface_id), S_OK);
  EXPECT_EQ(interface_id, IID_IPropertyNotifySink);
  ComPtr<IConnectionPointContainer> container;
  EXPECT_EQ(point->GetConnectionPointContainer(container.receive()), S_OK);
  EXPECT_EQ(query<IUnknown>(container.get()).get(), query<IUnknown>(control.get()).get());
  EXPECT_NE(query<IUnknown>(point.get()).get(), query<IUnknown>(control.get()).get());
  EXPECT_FALSE(query<IVellobar>(point.get()));
}

TEST_F(PropertyNotifications, the_connection_point_keeps_the_control_alive) {
  PropertyListener listener;
  auto control = make<IVellobar>(CLSID_Vellobar);
  const auto point = point_of(control.get());
  control = ComPtr<IVellobar>();
  EXPECT_EQ(Module::under_test().can_unload_now(), S_FALSE);
  DWORD cookie = 0;
  EXPECT_EQ(point->Advise(&listener, &cookie), S_OK);
  EXPECT_EQ(listener.references, 2u);
  EXPECT_EQ(point->Unadvise(cookie), S_OK);
}

TEST_F(PropertyNotifications, there_is_one_connection_point) {
  const auto container = query<IConnectionPointContainer>(make<IVellobar>(CLSID_Vellobar).get());
  ComPtr<IEnumConnectionPoints> points;
  ASSERT_EQ(container->EnumConnectionPoints(points.receive()), S_OK);
  IConnectionPoint* found[2] = {};
  ULONG fetched = 0;
  EXPECT_EQ(points->Next(2, found, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 1u);
  const auto first = ComPtr<IConnectionPoint>::attach(found[0]);
  ComPtr<IConnectionPoint> by_name;
  EXPECT_EQ(container->FindConnectionPoint(IID_IPropertyNotifySink, by_name.receive()), S_OK);
  EXPECT_EQ(first.get(), by_name.get());
  EXPECT_EQ(container->FindConnectionPoint(IID_IAdviseSink, by_name.receive()), CONNECT_E_NOCONNECTION);
  EXPECT_FALSE(by_name);
  EXPECT_EQ(container->FindConnectionPoint(IID_IPropertyNotifySink, nullptr), E_POINTER);
  EXPECT_EQ(container->EnumConnectionPoints(nullptr), E_POINTER);
}

TEST_F(PropertyNotifications, connections_are_listed_with_their_cookies) {
  PropertyListener first, second;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const DWORD first_cookie = listen(control.get(), first), second_cookie = listen(control.get(), second);
  EXPECT_NE(first_cookie, second_cookie);
  ComPtr<IEnumConnections> connections, copy;
  ASSERT_EQ(point_of(control.get())->EnumConnections(connections.receive()), S_OK);
  EXPECT_EQ(connections->Skip(1), S_OK);
  ASSERT_EQ(connections->Clone(copy.receive()), S_OK);
  CONNECTDATA found{};
  EXPECT_EQ(copy->Next(1, &found, nullptr), S_OK);
  EXPECT_EQ(found.dwCookie, second_cookie);
  EXPECT_EQ(found.pUnk, static_cast<IUnknown*>(&second));
  found.pUnk->Release();
  EXPECT_EQ(copy->Next(1, &found, nullptr), S_FALSE);
  EXPECT_EQ(copy->Reset(), S_OK);
  EXPECT_EQ(copy->Skip(3), S_FALSE);
}

TEST_F(PropertyNotifications, what_cannot_listen_is_not_taken) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto point = point_of(control.get());
  ClientObject other;
  DWORD cookie = 5;
  EXPECT_EQ(point->Advise(&other, &cookie), CONNECT_E_CANNOTCONNECT);
  EXPECT_EQ(cookie, 0u);
  EXPECT_EQ(point->Advise(nullptr, &cookie), E_POINTER);
  EXPECT_EQ(point->Advise(&listener, nullptr), E_POINTER);
  EXPECT_EQ(point->Unadvise(1), CONNECT_E_NOCONNECTION);
  EXPECT_EQ(listener.references, 1u);
}

}  // namespace vellobar::tests
