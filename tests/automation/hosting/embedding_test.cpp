// The control as an object embedded in a container: identity, site, size, verbs, status, activation.
#include <gtest/gtest.h>
#include <olectl.h>

#include <atomic>
#include <string>
#include <thread>

#include "tests/automation/hosting/container.h"

namespace vellobar::tests {

namespace {

using Calls = std::vector<std::string>;

/// 32 pixels in hundredths of a millimetre where an inch has 96.
constexpr LONG kInitialExtent = 847;

class Embedding : public AutomationTest {
 protected:
  ComPtr<IVellobar> control_ = make<IVellobar>(CLSID_Vellobar);
  ComPtr<IOleObject> object_ = query<IOleObject>(control_.get());
  ComPtr<IOleInPlaceObject> in_place_ = query<IOleInPlaceObject>(control_.get());

  void let_control_go() {
    control_ = ComPtr<IVellobar>();
    object_ = ComPtr<IOleObject>();
    in_place_ = ComPtr<IOleInPlaceObject>();
  }
  HRESULT do_verb(LONG verb) { return object_->DoVerb(verb, nullptr, nullptr, 0, nullptr, nullptr); }
  void TearDown() override {
    let_control_go();
    AutomationTest::TearDown();
  }
};

/// Closes about boxes for as long as it lives, where there is a desktop that can show them.
class BoxCloser {
 public:
  BoxCloser() : thread_([this] { run(); }) {}
  ~BoxCloser() {
    done_ = true;
    thread_.join();
  }

 private:
  void run() const {
    for (; !done_; Sleep(20)) {
      if (const HWND box = FindWindowW(nullptr, L"About Vellobar")) PostMessageW(box, WM_COMMAND, IDOK, 0);
    }
  }

  std::atomic<bool> done_{false};
  std::thread thread_;
};

template <class Interface>
void expect_part(IUnknown* control) {
  const auto part = query<Interface>(control);
  ASSERT_TRUE(part);
  EXPECT_EQ(query<IUnknown>(part.get()).get(), query<IUnknown>(control).get());
  EXPECT_TRUE(query<IVellobar>(part.get()));
}

}  // namespace

TEST_F(Embedding, every_hosting_interface_leads_to_the_one_identity_and_back) {
  expect_part<IPersist>(control_.get());
  expect_part<IPersistStreamInit>(control_.get());
  expect_part<IPersistStorage>(control_.get());
  expect_part<IOleControl>(control_.get());
  expect_part<IOleObject>(control_.get());
  expect_part<IOleWindow>(control_.get());
  expect_part<IOleInPlaceObject>(control_.get());
  expect_part<IOleInPlaceActiveObject>(control_.get());
  expect_part<IOleInPlaceObjectWindowless>(control_.get());
  expect_part<IViewObject>(control_.get());
  expect_part<IViewObject2>(control_.get());
  expect_part<IViewObjectEx>(control_.get());
  expect_part<IDataObject>(control_.get());
  expect_part<IQuickActivate>(control_.get());
  expect_part<ISpecifyPropertyPages>(control_.get());
  expect_part<IConnectionPointContainer>(control_.get());
  EXPECT_FALSE(query<IOleCache>(control_.get()));
  EXPECT_FALSE(query<IOleObject>(make<IvMessage>(CLSID_Message).get()));
}

TEST_F(Embedding, asking_for_a_hosting_interface_leaves_the_error_information_of_the_last_call) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  EXPECT_LT(control->Update(), 0);
  EXPECT_TRUE(query<IOleObject>(control.get()));
  EXPECT_EQ(take_error_information().description, L"Mailbox not locked");
}

TEST_F(Embedding, a_part_keeps_the_control_alive) {
  in_place_ = ComPtr<IOleInPlaceObject>();
  control_ = ComPtr<IVellobar>();
  EXPECT_EQ(Module::under_test().can_unload_now(), S_FALSE);
  EXPECT_EQ(object_->IsUpToDate(), S_OK);
}

TEST_F(Embedding, holds_its_client_site_until_it_is_given_another_or_ends) {
  Site site, other;
  EXPECT_EQ(object_->SetClientSite(&site), S_OK);
  EXPECT_EQ(site.references, 2u);
  EXPECT_EQ(object_->SetClientSite(&other), S_OK);
  EXPECT_EQ(site.references, 1u);
  ComPtr<IOleClientSite> given;
  EXPECT_EQ(object_->GetClientSite(given.receive()), S_OK);
  EXPECT_EQ(given.get(), static_cast<IOleClientSite*>(&other));
  given = ComPtr<IOleClientSite>();
  let_control_go();
  EXPECT_EQ(other.references, 1u);
}

TEST_F(Embedding, what_the_control_lets_go_of_at_its_end_may_still_take_and_give_back_a_reference_to_it) {
  AdviseListener listener;
  Site site;
  auto object = query<IOleObject>(make<IVellobar>(CLSID_Vellobar).get());
  IOleObject* const borrowed = object.get();
  int released = 0;
  const auto take_and_give_back = [&] {
    // An object that ends twice would let go again and again.
    if (++released > 10) return;
    borrowed->AddRef();
    borrowed->Release();
  };
  EXPECT_EQ(object->SetClientSite(&site), S_OK);
  EXPECT_EQ(query<IViewObjectEx>(object.get())->SetAdvise(DVASPECT_CONTENT, 0, &listener), S_OK);
  site.when_released = take_and_give_back;
  listener.when_released = take_and_give_back;
  object = ComPtr<IOleObject>();
  EXPECT_EQ(released, 2);
  EXPECT_EQ(site.references, 1u);
  EXPECT_EQ(listener.references, 1u);
}

TEST_F(Embedding, is_32_by_32_pixels_at_first) {
  const HDC screen = GetDC(nullptr);
  ASSERT_EQ(GetDeviceCaps(screen, LOGPIXELSX), 96);
  ASSERT_EQ(GetDeviceCaps(screen, LOGPIXELSY), 96);
  ReleaseDC(nullptr, screen);
  SIZEL extent{};
  EXPECT_EQ(object_->GetExtent(DVASPECT_CONTENT, &extent), S_OK);
  EXPECT_EQ(extent.cx, kInitialExtent);
  EXPECT_EQ(extent.cy, kInitialExtent);
}

TEST_F(Embedding, takes_another_extent_and_tells_the_view) {
  AdviseListener listener;
  const auto view = query<IViewObjectEx>(control_.get());
  EXPECT_EQ(view->SetAdvise(DVASPECT_CONTENT, 0, &listener), S_OK);
  SIZEL extent{2000, 1000}, read{};
  EXPECT_EQ(object_->SetExtent(DVASPECT_CONTENT, &extent), S_OK);
  EXPECT_EQ(object_->SetExtent(DVASPECT_CONTENT, &extent), S_OK);
  EXPECT_EQ(listener.view_changes, 1);
  EXPECT_EQ(object_->GetExtent(DVASPECT_CONTENT, &read), S_OK);
  EXPECT_EQ(read.cx, 2000);
  EXPECT_EQ(read.cy, 1000);
  EXPECT_EQ(query<IQuickActivate>(control_.get())->GetContentExtent(&read), S_OK);
  EXPECT_EQ(read.cx, 2000);
  EXPECT_EQ(query<IPersistStreamInit>(control_.get())->IsDirty(), S_FALSE);
  EXPECT_EQ(view->SetAdvise(DVASPECT_CONTENT, 0, nullptr), S_OK);
  EXPECT_EQ(listener.references, 1u);
}

TEST_F(Embedding, refuses_extents_and_aspects_that_cannot_be) {
  SIZEL extent{-1, 5};
  EXPECT_EQ(object_->SetExtent(DVASPECT_CONTENT, &extent), E_INVALIDARG);
  EXPECT_EQ(object_->SetExtent(DVASPECT_CONTENT, nullptr), E_POINTER);
  EXPECT_EQ(object_->GetExtent(DVASPECT_CONTENT, nullptr), E_POINTER);
  EXPECT_EQ(object_->GetExtent(DVASPECT_ICON, &extent), DV_E_DVASPECT);
  EXPECT_EQ(object_->SetExtent(DVASPECT_ICON, &extent), DV_E_DVASPECT);
}

TEST_F(Embedding, has_the_status_that_is_registered) {
  DWORD status = 0;
  EXPECT_EQ(object_->GetMiscStatus(DVASPECT_CONTENT, &status), S_OK);
  EXPECT_EQ(status, 132497u);
  EXPECT_EQ(object_->GetMiscStatus(DVASPECT_ICON, &status), S_OK);
  EXPECT_EQ(status, 0u);
}

TEST_F(Embedding, names_its_class) {
  CLSID class_id{};
  EXPECT_EQ(object_->GetUserClassID(&class_id), S_OK);
  EXPECT_EQ(class_id, CLSID_Vellobar);
  const std::pair<DWORD, std::wstring> names[] = {{USERCLASSTYPE_FULL, L"Vellobar Class"},
                                                  {USERCLASSTYPE_SHORT, L"Vellobar"},
                                                  {USERCLASSTYPE_APPNAME, L"Vellobar"}};
  for (const auto& [form, expected] : names) {
    wchar_t* name = nullptr;
    ASSERT_EQ(object_->GetUserType(form, &name), S_OK);
    EXPECT_EQ(std::wstring(name), expected);
    CoTaskMemFree(name);
  }
  wchar_t* none = nullptr;
  EXPECT_EQ(object_->GetUserType(0, &none), E_INVALIDARG);
  EXPECT_EQ(object_->GetUserType(4, &none), E_INVALIDARG);
}

TEST_F(Embedding, is_activated_without_a_window_where_the_container_can_do_that) {
  Site site;
  object_->SetClientSite(&site);
  EXPECT_EQ(do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  EXPECT_EQ(site.take_calls(), (Calls{"OnInPlaceActivateEx windowless", "InvalidateRect"}));
  EXPECT_EQ(do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  EXPECT_EQ(site.take_calls(), Calls{});
  HWND window = reinterpret_cast<HWND>(this);
  EXPECT_EQ(in_place_->GetWindow(&window), E_FAIL);
  EXPECT_EQ(window, nullptr);
  EXPECT_EQ(in_place_->InPlaceDeactivate(), S_OK);
  EXPECT_EQ(site.take_calls(), Calls{"OnInPlaceDeactivateEx"});
  EXPECT_EQ(in_place_->GetWindow(&window), E_UNEXPECTED);
  object_->SetClientSite(nullptr);
  EXPECT_EQ(site.references, 1u);
  EXPECT_EQ(site.frame.references, 1u);
}

TEST_F(Embedding, takes_the_tools_of_the_container_when_shown_and_gives_them_back) {
  Site site;
  object_->SetClientSite(&site);
  EXPECT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
  EXPECT_EQ(site.take_calls(),
            (Calls{"OnInPlaceActivateEx windowless", "InvalidateRect", "OnUIActivate", "ShowObject"}));
  EXPECT_EQ(query<IUnknown>(site.frame.active.get()).get(), query<IUnknown>(control_.get()).get());
  EXPECT_EQ(in_place_->UIDeactivate(), S_OK);
  EXPECT_EQ(site.take_calls(), Calls{"OnUIDeactivate"});
  EXPECT_FALSE(site.frame.active);
  EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
  EXPECT_EQ(do_verb(OLEIVERB_HIDE), S_OK);
  EXPECT_EQ(site.take_calls(), (Calls{"OnUIActivate", "OnUIDeactivate", "OnInPlaceDeactivateEx"}));
  object_->SetClientSite(nullptr);
}

TEST_F(Embedding, is_not_activated_without_a_container_that_lets_it_be) {
  EXPECT_EQ(do_verb(OLEIVERB_SHOW), OLE_E_NOT_INPLACEACTIVE);
  Site site;
  site.can_activate = false;
  object_->SetClientSite(&site);
  EXPECT_EQ(do_verb(OLEIVERB_UIACTIVATE), OLE_E_NOT_INPLACEACTIVE);
  EXPECT_EQ(site.take_calls(), Calls{});
  object_->SetClientSite(nullptr);
}

TEST_F(Embedding, an_activation_that_fails_half_way_is_taken_back) {
  Site site;
  site.context_result = E_OUTOFMEMORY;
  object_->SetClientSite(&site);
  EXPECT_EQ(do_verb(OLEIVERB_SHOW), E_OUTOFMEMORY);
  EXPECT_EQ(site.take_calls(), (Calls{"OnInPlaceActivateEx windowless", "OnInPlaceDeactivateEx"}));
  HWND window = nullptr;
  EXPECT_EQ(in_place_->GetWindow(&window), E_UNEXPECTED);
  object_->SetClientSite(nullptr);
  EXPECT_EQ(site.frame.references, 1u);
}

TEST_F(Embedding, a_container_may_deactivate_the_control_while_it_becomes_active) {
  for (const std::string moment :
       {"OnInPlaceActivateEx windowless", "GetWindowContext", "InvalidateRect", "OnUIActivate"}) {
    Site site;
    site.when_called = [&](const std::string& call) {
      if (call == moment) in_place_->InPlaceDeactivate();
    };
    object_->SetClientSite(&site);
    EXPECT_EQ(do_verb(OLEIVERB_SHOW), OLE_E_NOT_INPLACEACTIVE) << moment;
    object_->SetClientSite(nullptr);
    EXPECT_EQ(site.references, 1u);
    EXPECT_EQ(site.frame.references, 1u);
  }
}

TEST_F(Embedding, a_container_may_let_the_control_go_in_any_call_of_an_activation) {
  for (const std::string moment :
       {"OnInPlaceActivateEx windowless", "GetWindowContext", "InvalidateRect", "OnUIActivate", "ShowObject"}) {
    Site site;
    auto object = query<IOleObject>(make<IVellobar>(CLSID_Vellobar).get());
    IOleObject* const borrowed = object.get();
    site.when_called = [&](const std::string& call) {
      if (call == moment) object = ComPtr<IOleObject>();
    };
    borrowed->SetClientSite(&site);
    borrowed->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, 0, nullptr, nullptr);
    site.frame.active = ComPtr<IOleInPlaceActiveObject>();
    EXPECT_EQ(site.references, 1u) << moment;
    EXPECT_EQ(site.frame.references, 1u) << moment;
  }
}

TEST_F(Embedding, verbs_that_are_not_known_answer_as_their_sign_says) {
  Site site;
  object_->SetClientSite(&site);
  EXPECT_EQ(do_verb(-20), E_NOTIMPL);
  EXPECT_EQ(do_verb(20), OLEOBJ_S_INVALIDVERB);
  EXPECT_EQ(do_verb(OLEIVERB_DISCARDUNDOSTATE), S_OK);
  EXPECT_EQ(do_verb(OLEIVERB_PROPERTIES), OLEOBJ_S_CANNOT_DOVERB_NOW);
  EXPECT_EQ(object_->DoVerb(OLEIVERB_SHOW, nullptr, nullptr, 7, nullptr, nullptr), DV_E_LINDEX);
  object_->SetClientSite(nullptr);
}

TEST_F(Embedding, lists_the_about_box_as_its_verb) {
  ComPtr<IEnumOLEVERB> verbs;
  ASSERT_EQ(object_->EnumVerbs(verbs.receive()), S_OK);
  OLEVERB verb{};
  ASSERT_EQ(verbs->Next(1, &verb, nullptr), S_OK);
  EXPECT_EQ(verb.lVerb, 1);
  EXPECT_EQ(std::wstring(verb.lpszVerbName), L"&About...");
  CoTaskMemFree(verb.lpszVerbName);
  EXPECT_EQ(verbs->Next(1, &verb, nullptr), S_FALSE);
}

TEST_F(Embedding, the_about_box_returns_at_once_where_there_is_no_desktop_and_when_it_is_closed) {
  const BoxCloser closer;
  EXPECT_EQ(control_->About(), S_OK);
  EXPECT_EQ(do_verb(1), S_OK);
}

TEST_F(Embedding, closing_saves_what_is_dirty_and_tells) {
  Site site;
  AdviseListener listener;
  DWORD cookie = 0;
  object_->SetClientSite(&site);
  ASSERT_EQ(object_->Advise(&listener, &cookie), S_OK);
  EXPECT_EQ(object_->Close(OLECLOSE_SAVEIFDIRTY), S_OK);
  EXPECT_EQ(site.take_calls(), Calls{});
  EXPECT_EQ(listener.closes, 1);
  EXPECT_EQ(control_->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  site.take_calls();
  EXPECT_EQ(object_->Close(OLECLOSE_SAVEIFDIRTY), S_OK);
  EXPECT_EQ(site.take_calls(), (Calls{"SaveObject", "OnInPlaceDeactivateEx"}));
  EXPECT_EQ(object_->Close(OLECLOSE_NOSAVE), S_OK);
  EXPECT_EQ(site.take_calls(), Calls{});
  EXPECT_EQ(listener.closes, 3);
  EXPECT_EQ(object_->Close(9), E_INVALIDARG);
  EXPECT_EQ(object_->Unadvise(cookie), S_OK);
  EXPECT_EQ(object_->Unadvise(cookie), OLE_E_NOCONNECTION);
  EXPECT_EQ(listener.references, 1u);
  object_->SetClientSite(nullptr);
}

TEST_F(Embedding, lists_those_who_listen) {
  AdviseListener listener;
  DWORD cookie = 0;
  EXPECT_EQ(object_->Unadvise(1), OLE_E_NOCONNECTION);
  ASSERT_EQ(object_->Advise(&listener, &cookie), S_OK);
  ComPtr<IEnumSTATDATA> listeners;
  ASSERT_EQ(object_->EnumAdvise(listeners.receive()), S_OK);
  STATDATA found{};
  ASSERT_EQ(listeners->Next(1, &found, nullptr), S_OK);
  EXPECT_EQ(found.dwConnection, cookie);
  ComPtr<IAdviseSink>::attach(found.pAdvSink);
  EXPECT_EQ(object_->Unadvise(cookie), S_OK);
}

TEST_F(Embedding, its_moniker_is_the_containers) {
  ComPtr<IMoniker> moniker;
  EXPECT_EQ(object_->GetMoniker(OLEGETMONIKER_ONLYIFTHERE, OLEWHICHMK_OBJREL, moniker.receive()), E_FAIL);
  Site site;
  object_->SetClientSite(&site);
  EXPECT_EQ(object_->GetMoniker(OLEGETMONIKER_ONLYIFTHERE, OLEWHICHMK_OBJREL, moniker.receive()), S_OK);
  EXPECT_TRUE(moniker);
  object_->SetClientSite(nullptr);
}

TEST_F(Embedding, quick_activation_sets_up_everything_at_once) {
  Site site;
  AdviseListener view;
  PropertyListener properties;
  QACONTAINER container{};
  container.cbSize = sizeof container;
  container.pClientSite = &site;
  container.pAdviseSink = reinterpret_cast<decltype(container.pAdviseSink)>(&view);
  container.pPropertyNotifySink = &properties;
  QACONTROL control{};
  control.cbSize = sizeof control;
  const auto quick = query<IQuickActivate>(control_.get());
  ASSERT_EQ(quick->QuickActivate(&container, &control), S_OK);
  EXPECT_EQ(control.cbSize, sizeof control);
  EXPECT_EQ(control.dwMiscStatus, 132497u);
  EXPECT_EQ(control.dwViewStatus, static_cast<DWORD>(VIEWSTATUS_OPAQUE));
  EXPECT_EQ(control.dwEventCookie, 0u);
  EXPECT_EQ(control.dwPointerActivationPolicy, 0u);
  EXPECT_EQ(control_->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(properties.changed, std::vector<DISPID>{0});
  SIZEL extent{100, 100};
  EXPECT_EQ(quick->SetContentExtent(&extent), S_OK);
  EXPECT_EQ(view.view_changes, 1);
  EXPECT_EQ(query<IViewObjectEx>(control_.get())->SetAdvise(DVASPECT_CONTENT, 0, nullptr), S_OK);

  ComPtr<IConnectionPoint> point;
  const auto points = query<IConnectionPointContainer>(control_.get());
  ASSERT_EQ(points->FindConnectionPoint(IID_IPropertyNotifySink, point.receive()), S_OK);
  EXPECT_EQ(point->Unadvise(control.dwPropNotifyCookie), S_OK);
  control.cbSize = 4;
  EXPECT_EQ(quick->QuickActivate(&container, &control), E_INVALIDARG);
  EXPECT_EQ(quick->QuickActivate(nullptr, &control), E_POINTER);
  object_->SetClientSite(nullptr);
}

TEST_F(Embedding, takes_note_of_nothing_that_it_does_not_need) {
  EXPECT_EQ(object_->SetHostNames(L"Container", L"Form"), S_OK);
  EXPECT_EQ(object_->SetMoniker(OLEWHICHMK_CONTAINER, nullptr), S_OK);
  EXPECT_EQ(object_->SetColorScheme(nullptr), S_OK);
  EXPECT_EQ(object_->Update(), S_OK);
  EXPECT_EQ(object_->InitFromData(nullptr, FALSE, 0), S_FALSE);
  const auto hosted = query<IOleControl>(control_.get());
  MSG message{};
  EXPECT_EQ(hosted->OnMnemonic(&message), S_OK);
  EXPECT_EQ(hosted->OnAmbientPropertyChange(DISPID_AMBIENT_USERMODE), S_OK);
  const auto active = query<IOleInPlaceActiveObject>(control_.get());
  EXPECT_EQ(active->OnFrameWindowActivate(TRUE), S_OK);
  EXPECT_EQ(active->OnDocWindowActivate(TRUE), S_OK);
  EXPECT_EQ(active->EnableModeless(FALSE), S_OK);
  EXPECT_EQ(active->ResizeBorder(nullptr, nullptr, TRUE), S_OK);
  EXPECT_EQ(in_place_->ContextSensitiveHelp(TRUE), S_OK);
}

TEST_F(Embedding, the_copy_for_the_clipboard_is_the_control_itself) {
  ComPtr<IDataObject> copy;
  EXPECT_EQ(object_->GetClipboardData(0, copy.receive()), S_OK);
  EXPECT_EQ(query<IUnknown>(copy.get()).get(), query<IUnknown>(control_.get()).get());
  EXPECT_EQ(object_->GetClipboardData(0, nullptr), E_POINTER);
}

TEST_F(Embedding, has_no_property_pages_no_accelerators_and_nothing_to_undo_or_drop) {
  CAUUID pages{7, nullptr};
  EXPECT_EQ(query<ISpecifyPropertyPages>(control_.get())->GetPages(&pages), S_OK);
  EXPECT_EQ(pages.cElems, 0u);
  CONTROLINFO information{};
  EXPECT_EQ(query<IOleControl>(control_.get())->GetControlInfo(&information), S_OK);
  EXPECT_EQ(information.cb, sizeof information);
  EXPECT_EQ(information.cAccel, 0u);
  const auto windowless = query<IOleInPlaceObjectWindowless>(control_.get());
  LRESULT result = 0;
  IDropTarget* target = reinterpret_cast<IDropTarget*>(this);
  EXPECT_EQ(windowless->GetDropTarget(&target), E_NOTIMPL);
  EXPECT_EQ(target, nullptr);
  EXPECT_EQ(windowless->ReactivateAndUndo(), INPLACE_E_NOTUNDOABLE);
  EXPECT_EQ(windowless->OnWindowMessage(WM_CHAR, 'a', 0, &result), S_FALSE);
  const RECT rectangle{0, 0, 10, 10};
  EXPECT_EQ(windowless->SetObjectRects(&rectangle, &rectangle), E_UNEXPECTED);
  MSG message{};
  EXPECT_EQ(query<IOleInPlaceActiveObject>(control_.get())->TranslateAccelerator(&message), S_FALSE);
}

}  // namespace vellobar::tests
