// A container with a window of its own that hosts the registered control: it sets the control up by its status, saves
// and loads it, makes it active in its window at design time and at run time, draws it, hears what changes, and shows
// the about box. It needs a display, and ends with 1 at the first thing that is not as expected.
#include <ole2.h>
#include <olectl.h>

#include <atomic>
#include <string>
#include <thread>

#include "automation/com_ptr.h"
#include "tests/clients/container/check.h"
#include "tests/clients/container/site.h"
#include "vellobar_automation.h"

namespace vellobar::clients {

namespace {

using automation::ComPtr;
using automation::query;

constexpr RECT kPlace{20, 30, 84, 94};
constexpr COLORREF kPaper = RGB(0xFF, 0xF2, 0xC4), kInk = RGB(0x1F, 0x3A, 0x68), kGround = RGB(0xFF, 0xFF, 0xFF);

/// An automation string for one call.
class Text {
 public:
  Text() = default;
  explicit Text(const wchar_t* text) : string_(SysAllocString(text)) {}
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  ~Text() { SysFreeString(string_); }
  BSTR get() const { return string_; }
  BSTR* receive() { return &string_; }
  bool is(const wchar_t* expected) const { return string_ != nullptr && std::wstring(string_) == expected; }

 private:
  BSTR string_ = nullptr;
};

ComPtr<IStorage> new_storage() {
  ComPtr<IStorage> storage;
  succeed(StgCreateDocfile(nullptr, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_DELETEONRELEASE, 0,
                           storage.receive()),
          "make a storage");
  return storage;
}

void handle_messages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

ComPtr<IOleObject> new_control(Site& site) {
  CLSID class_id{};
  succeed(CLSIDFromProgID(L"Quorvane.Vellobar", &class_id), "find the class by its name");
  void* found = nullptr;
  succeed(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject, &found), "create the control");
  const auto object = ComPtr<IOleObject>::attach(static_cast<IOleObject*>(found));
  DWORD status = 0, registered = 0;
  succeed(object->GetMiscStatus(DVASPECT_CONTENT, &status), "ask for the status");
  succeed(OleRegGetMiscStatus(class_id, DVASPECT_CONTENT, &registered), "read the registered status");
  expect(status == registered && status == 132497, "the status is the one that is registered");
  expect((status & OLEMISC_SETCLIENTSITEFIRST) != 0, "the site comes first");
  succeed(object->SetClientSite(&site), "give the control its site");
  return object;
}

void expect_filename(IUnknown* object, const wchar_t* expected) {
  Text filename;
  succeed(query<IVellobar>(object)->get_Filename(filename.receive()), "read the file name");
  expect(filename.is(expected), "the file name is what was put or loaded");
}

/// The control's window: the only child of the container's.
HWND control_window(const FrameWindow& frame, IOleObject* object) {
  HWND window = nullptr;
  succeed(query<IOleWindow>(object)->GetWindow(&window), "ask for the control's window");
  expect(GetParent(window) == frame.handle(), "the control's window stands in the container's");
  return window;
}

RECT place_in_frame(HWND window) {
  RECT place{};
  GetWindowRect(window, &place);
  MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&place), 2);
  return place;
}

struct Colours {
  int paper = 0, ink = 0, ground = 0, all = 0;
};

Colours colours_of(HDC dc, int width, int height) {
  Colours found;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const COLORREF colour = GetPixel(dc, x, y);
      found.paper += colour == kPaper ? 1 : 0;
      found.ink += colour == kInk ? 1 : 0;
      found.ground += colour == kGround ? 1 : 0;
      ++found.all;
    }
  }
  return found;
}

void expect_face(const Colours& found, const char* what) {
  // The letter takes a good part of the face, the ground most of the rest; its lines and the name are thin.
  expect(found.paper > found.all / 6 && found.ground > found.all / 6, what);
  expect(found.ink > found.all / 50 && found.ink < found.all / 3, what);
}

/// The same picture in a memory bitmap, drawn for the container, and on the screen, drawn by the control's window.
void draw_into_memory(IOleObject* object) {
  const HDC screen = GetDC(nullptr);
  const HDC dc = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateCompatibleBitmap(screen, 64, 64);
  const HGDIOBJ before = SelectObject(dc, bitmap);
  const RECT bounds{0, 0, 64, 64};
  succeed(OleDraw(object, DVASPECT_CONTENT, dc, &bounds), "draw the control into a bitmap");
  expect_face(colours_of(dc, 64, 64), "the bitmap shows the letter and the name");
  SelectObject(dc, before);
  DeleteObject(bitmap);
  DeleteDC(dc);
  ReleaseDC(nullptr, screen);
}

void look_at_window(HWND window) {
  UpdateWindow(window);
  handle_messages();
  const HDC dc = GetDC(window);
  expect_face(colours_of(dc, 64, 64), "the window shows the letter and the name");
  ReleaseDC(window, dc);
}

void design(const FrameWindow& frame_window) {
  Site site(frame_window.handle(), kPlace);
  {
    const auto object = new_control(site);
    succeed(query<IPersistStreamInit>(object.get())->InitNew(), "start as a new control");
    draw_into_memory(object.get());
    succeed(object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, frame_window.handle(), &kPlace), "activate");
    expect(site.in_place == 1 && site.with_tools == 0, "the site knows that the control is active");
    const HWND window = control_window(frame_window, object.get());
    expect(IsWindowVisible(window) != FALSE, "the control is seen at design time");
    const RECT place = place_in_frame(window);
    expect(EqualRect(&place, &kPlace) != FALSE, "the control stands in its place");
    look_at_window(window);

    SendMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    expect(site.with_tools == 1 && site.frame.active_name == L"Vellobar", "a click makes the control the active one");

    const RECT moved{100, 50, 164, 114}, clip{100, 50, 132, 114};
    const auto in_place = query<IOleInPlaceObject>(object.get());
    succeed(in_place->SetObjectRects(&moved, &clip), "move the control");
    const RECT place_after = place_in_frame(window);
    expect(EqualRect(&place_after, &moved) != FALSE, "the control stands in its new place");
    RECT seen{};
    const HRGN region = CreateRectRgn(0, 0, 0, 0);
    expect(GetWindowRgn(window, region) == SIMPLEREGION && GetRgnBox(region, &seen) == SIMPLEREGION, "it is cut off");
    expect(seen.right == 32 && seen.bottom == 64, "the control is cut off where the container says");
    DeleteObject(region);

    succeed(in_place->UIDeactivate(), "take the tools back");
    expect(site.with_tools == 0 && !site.frame.active, "the frame has its own tools again");
    succeed(object->DoVerb(OLEIVERB_SHOW, nullptr, &site, 0, frame_window.handle(), &kPlace), "show");
    expect(site.with_tools == 1 && site.shown == 1, "the control is shown with its tools");
    succeed(object->Close(OLECLOSE_NOSAVE), "close");
    expect(IsWindow(window) == FALSE, "the control's window is gone");
    expect(site.in_place == 0 && site.with_tools == 0, "the site knows that the control is not active any more");
    succeed(object->SetClientSite(nullptr), "take the site away");
  }
  expect(!site.is_held() && !site.frame.is_held(), "the control holds nothing of its container");
}

void run_time(const FrameWindow& frame_window) {
  Site site(frame_window.handle(), kPlace);
  site.at_run_time = true;
  auto object = new_control(site);
  succeed(object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, frame_window.handle(), &kPlace), "activate");
  const HWND window = control_window(frame_window, object.get());
  expect(IsWindowVisible(window) == FALSE, "the control is not seen at run time");
  // A container that just lets go leaves no window behind.
  object = ComPtr<IOleObject>();
  expect(IsWindow(window) == FALSE, "the control's window went with the control");
  expect(!site.is_held() && !site.frame.is_held(), "the control held nothing of its container");
}

/// The container's window goes first.
void frame_first() {
  Site site(nullptr, kPlace);
  ComPtr<IOleObject> object;
  {
    const FrameWindow frame_window;
    Site own(frame_window.handle(), kPlace);
    object = new_control(own);
    succeed(object->DoVerb(OLEIVERB_SHOW, nullptr, &own, 0, frame_window.handle(), &kPlace), "show");
    DestroyWindow(frame_window.handle());
    succeed(object->SetClientSite(&site), "give another site");
    succeed(query<IOleInPlaceObject>(object.get())->InPlaceDeactivate(), "deactivate without a window");
    expect(own.in_place == 0, "the old site knows that the control is not active any more");
    expect(!own.is_held() && !own.frame.is_held(), "nothing of the old container is held");
  }
  succeed(object->SetClientSite(nullptr), "take the site away");
}

void save_and_load(const FrameWindow& frame_window) {
  Site site(frame_window.handle(), kPlace);
  site.storage = new_storage();
  {
    const auto object = new_control(site);
    site.to_save = query<IPersistStorage>(object.get());
    succeed(site.to_save->InitNew(site.storage.get()), "start with a storage");
    succeed(object->Close(OLECLOSE_SAVEIFDIRTY), "close unchanged");
    expect(site.saved == 0, "what is unchanged is not saved");
    succeed(query<IVellobar>(object.get())->put_Filename(Text(L"C:\\mail\\inbox.mbox").get()), "name a mailbox");
    succeed(object->Close(OLECLOSE_SAVEIFDIRTY), "close changed");
    expect(site.saved == 1, "the container is asked to save what changed");
    expect(site.to_save->IsDirty() == S_FALSE, "what is saved is clean");
    site.to_save = ComPtr<IPersistStorage>();
    succeed(object->SetClientSite(nullptr), "take the site away");
  }
  void* found = nullptr;
  succeed(OleLoad(site.storage.get(), IID_IOleObject, &site, &found), "load the control from its storage");
  const auto loaded = ComPtr<IOleObject>::attach(static_cast<IOleObject*>(found));
  expect_filename(loaded.get(), L"C:\\mail\\inbox.mbox");

  ComPtr<IStream> stream;
  succeed(CreateStreamOnHGlobal(nullptr, TRUE, stream.receive()), "make a stream");
  succeed(
      OleSaveToStream(reinterpret_cast<IPersistStream*>(query<IPersistStreamInit>(loaded.get()).get()), stream.get()),
      "save the control with its class to a stream");
  succeed(stream->Seek({}, STREAM_SEEK_SET, nullptr), "go to the start of the stream");
  CLSID class_id{};
  succeed(ReadClassStm(stream.get(), &class_id), "read the class from the stream");
  expect(class_id == CLSID_Vellobar, "the stream names the control's class");
  const auto again = new_control(site);
  succeed(query<IPersistStreamInit>(again.get())->Load(stream.get()), "load the control from the stream");
  expect_filename(again.get(), L"C:\\mail\\inbox.mbox");
  succeed(again->SetClientSite(nullptr), "take the site away");
  succeed(loaded->SetClientSite(nullptr), "take the site away");
}

void hear_changes(const FrameWindow& frame_window) {
  PropertyEar ear;
  {
    Site site(frame_window.handle(), kPlace);
    const auto object = new_control(site);
    const auto control = query<IVellobar>(object.get());
    const auto points = query<IConnectionPointContainer>(object.get());
    ComPtr<IConnectionPoint> point;
    succeed(points->FindConnectionPoint(IID_IPropertyNotifySink, point.receive()), "find the connection point");
    DWORD cookie = 0;
    succeed(point->Advise(&ear, &cookie), "listen");
    succeed(control->put_Filename(Text(L"a").get()), "name a mailbox");
    expect(ear.changed == std::vector<DISPID>{0}, "the container hears of the new name");
    ear.refused = 0;
    expect(control->put_Filename(Text(L"b").get()) == CTL_E_SETNOTPERMITTED, "the container refuses a name");
    expect_filename(object.get(), L"a");
    succeed(point->Unadvise(cookie), "stop listening");
    succeed(object->SetClientSite(nullptr), "take the site away");
  }
  expect(!ear.is_held(), "nobody holds the container's ear");
}

/// What the about box shows, all its texts together; empty while there is none. Closes it.
std::wstring read_about_box() {
  const HWND box = FindWindowW(nullptr, L"About Vellobar");
  if (box == nullptr) return {};
  std::wstring all;
  for (HWND child = nullptr; (child = FindWindowExW(box, child, L"Static", nullptr)) != nullptr;) {
    wchar_t text[500] = L"";
    SendMessageW(child, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
    all += text;
  }
  PostMessageW(box, WM_COMMAND, IDOK, 0);
  return all;
}

void show_about_box(const FrameWindow& frame_window) {
  Site site(frame_window.handle(), kPlace);
  const auto object = new_control(site);
  std::wstring shown;
  std::atomic<bool> closed{false};
  std::thread reader([&] {
    for (; !closed; Sleep(20)) {
      const std::wstring text = read_about_box();
      if (!text.empty()) shown = text;
    }
  });
  succeed(query<IVellobar>(object.get())->About(), "show the about box");
  closed = true;
  reader.join();
  expect(shown.find(L"Vellobar 2.2.6.119") != std::wstring::npos, "the box names the component and its version");
  expect(shown.find(L"MIT licence") != std::wstring::npos, "the box names the licence");
  succeed(object->SetClientSite(nullptr), "take the site away");
}

void run() {
  const FrameWindow frame_window;
  handle_messages();
  design(frame_window);
  run_time(frame_window);
  frame_first();
  save_and_load(frame_window);
  hear_changes(frame_window);
  show_about_box(frame_window);
}

}  // namespace

}  // namespace vellobar::clients

int main() {
  OleInitialize(nullptr);
  vellobar::clients::run();
  OleUninitialize();
  std::printf("all as expected\n");
  return 0;
}
