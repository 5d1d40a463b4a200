// The face of the control as a container draws it or takes it along.
#include <gtest/gtest.h>

#include <set>

#include "tests/automation/hosting/container.h"

namespace vellobar::tests {

namespace {

constexpr COLORREF kPaper = RGB(0xFF, 0xF2, 0xC4), kInk = RGB(0x1F, 0x3A, 0x68), kGround = RGB(0xFF, 0xFF, 0xFF);
constexpr COLORREF kCanvas = RGB(0x00, 0x80, 0x00);

/// A picture in memory, all of one colour at first.
class Canvas {
 public:
  Canvas(int width, int height) : width_(width), height_(height), dc_(CreateCompatibleDC(nullptr)) {
    BITMAPINFO information{};
    information.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    bitmap_ = CreateDIBSection(dc_, &information, DIB_RGB_COLORS, &bits, nullptr, 0);
    before_ = SelectObject(dc_, bitmap_);
    const HBRUSH brush = CreateSolidBrush(kCanvas);
    const RECT all{0, 0, width, height};
    FillRect(dc_, &all, brush);
    DeleteObject(brush);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;
  ~Canvas() {
    SelectObject(dc_, before_);
    DeleteObject(bitmap_);
    DeleteDC(dc_);
  }

  HDC dc() const { return dc_; }
  COLORREF pixel(int x, int y) const { return GetPixel(dc_, x, y); }
  /// The colours inside this rectangle.
  std::set<COLORREF> colours(RECT in) const {
    std::set<COLORREF> found;
    for (int y = in.top; y < in.bottom; ++y) {
      for (int x = in.left; x < in.right; ++x) found.insert(pixel(x, y));
    }
    return found;
  }
  /// How many pixels outside this rectangle have another colour than at first.
  int touched_outside(RECT in) const {
    int touched = 0;
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) touched += PtInRect(&in, {x, y}) == FALSE && pixel(x, y) != kCanvas ? 1 : 0;
    }
    return touched;
  }

 private:
  int width_;
  int height_;
  HDC dc_;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ before_ = nullptr;
};

class View : public AutomationTest {
 protected:
  ComPtr<IViewObjectEx> view_ = query<IViewObjectEx>(make<IVellobar>(CLSID_Vellobar).get());
  ComPtr<IDataObject> data_ = query<IDataObject>(view_.get());

  HRESULT draw(HDC dc, RECTL bounds, DWORD aspect = DVASPECT_CONTENT, LONG index = -1) {
    return view_->Draw(aspect, index, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0);
  }
  void TearDown() override {
    data_ = ComPtr<IDataObject>();
    view_ = ComPtr<IViewObjectEx>();
    AutomationTest::TearDown();
  }
};

FORMATETC metafile_format() { return {CF_METAFILEPICT, nullptr, DVASPECT_CONTENT, -1, TYMED_MFPICT}; }

}  // namespace

TEST_F(View, draws_a_letter_and_a_name_inside_its_bounds_only) {
  for (const int size : {16, 32, 48, 200}) {
    Canvas canvas(size + 20, size + 20);
    ASSERT_EQ(draw(canvas.dc(), {10, 10, 10 + size, 10 + size}), S_OK);
    const RECT bounds{10, 10, 10 + size, 10 + size};
    EXPECT_EQ(canvas.touched_outside(bounds), 0) << size;
    const std::set<COLORREF> all = canvas.colours(bounds);
    EXPECT_EQ(all.count(kCanvas), 0u) << size;
    EXPECT_EQ(all.count(kPaper), 1u) << size;
    EXPECT_EQ(all.count(kInk), 1u) << size;
    // The letter stands in the upper part, so only the name darkens the lower one.
    const RECT name{10 + size / 8, 10 + size * 3 / 4, 10 + size - size / 8, 10 + size - size / 16 - 1};
    const std::set<COLORREF> below = canvas.colours(name);
    EXPECT_EQ(below.count(kInk) + below.count(kPaper), 0u) << size;
    // At 16 pixels there is no room for letters that can be read.
    EXPECT_GT(below.size(), size >= 32 ? 1u : 0u) << size;
  }
}

TEST_F(View, draws_the_same_wherever_its_bounds_are) {
  Canvas first(32, 32), second(72, 72);
  ASSERT_EQ(draw(first.dc(), {0, 0, 32, 32}), S_OK);
  ASSERT_EQ(draw(second.dc(), {40, 40, 72, 72}), S_OK);
  int different = 0;
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < 32; ++x) different += first.pixel(x, y) != second.pixel(40 + x, 40 + y) ? 1 : 0;
  }
  EXPECT_EQ(different, 0);
}

TEST_F(View, leaves_the_device_context_as_it_was) {
  Canvas canvas(32, 32);
  SetTextAlign(canvas.dc(), TA_RIGHT);
  SetTextColor(canvas.dc(), RGB(1, 2, 3));
  const HGDIOBJ pen = GetCurrentObject(canvas.dc(), OBJ_PEN), font = GetCurrentObject(canvas.dc(), OBJ_FONT);
  ASSERT_EQ(draw(canvas.dc(), {0, 0, 32, 32}), S_OK);
  EXPECT_EQ(GetTextAlign(canvas.dc()), static_cast<UINT>(TA_RIGHT));
  EXPECT_EQ(GetTextColor(canvas.dc()), RGB(1, 2, 3));
  EXPECT_EQ(GetCurrentObject(canvas.dc(), OBJ_PEN), pen);
  EXPECT_EQ(GetCurrentObject(canvas.dc(), OBJ_FONT), font);
}

TEST_F(View, drawing_many_times_keeps_no_drawing_objects) {
  Canvas canvas(32, 32);
  ASSERT_EQ(draw(canvas.dc(), {0, 0, 32, 32}), S_OK);
  const DWORD before = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
  for (int i = 0; i < 200; ++i) ASSERT_EQ(draw(canvas.dc(), {0, 0, 32, 32}), S_OK);
  EXPECT_EQ(GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS), before);
}

TEST_F(View, draws_nothing_outside_bounds_without_room) {
  Canvas canvas(32, 32);
  EXPECT_EQ(draw(canvas.dc(), {5, 5, 5, 5}), S_OK);
  EXPECT_EQ(draw(canvas.dc(), {20, 20, 10, 10}), S_OK);
  EXPECT_EQ(canvas.touched_outside({0, 0, 0, 0}), 0);
  EXPECT_EQ(draw(canvas.dc(), {5, 5, 6, 6}), S_OK);
  EXPECT_EQ(canvas.touched_outside({5, 5, 6, 6}), 0);
  EXPECT_EQ(draw(canvas.dc(), {10, 20, 20, 22}), S_OK);
  EXPECT_EQ(canvas.touched_outside({5, 5, 20, 22}), 0);
}

TEST_F(View, draws_the_whole_content_only) {
  Canvas canvas(32, 32);
  EXPECT_EQ(draw(canvas.dc(), {0, 0, 32, 32}, DVASPECT_ICON), DV_E_DVASPECT);
  EXPECT_EQ(draw(canvas.dc(), {0, 0, 32, 32}, DVASPECT_CONTENT, 3), DV_E_LINDEX);
  EXPECT_EQ(draw(nullptr, {0, 0, 32, 32}), E_INVALIDARG);
  EXPECT_EQ(view_->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, canvas.dc(), nullptr, nullptr, nullptr, 0),
            E_INVALIDARG);
  EXPECT_EQ(canvas.touched_outside({0, 0, 0, 0}), 0);
}

TEST_F(View, active_without_a_window_it_is_drawn_where_it_was_placed_when_no_bounds_are_given) {
  Site site;
  const auto object = query<IOleObject>(view_.get());
  object->SetClientSite(&site);
  ASSERT_EQ(object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, nullptr, 0, nullptr, nullptr), S_OK);
  const auto draw_in_place = [&](const Canvas& canvas) {
    return view_->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, canvas.dc(), nullptr, nullptr, nullptr, 0);
  };
  const auto expect_only_in = [&](const RECT& place) {
    const Canvas canvas(80, 80);
    EXPECT_EQ(draw_in_place(canvas), S_OK);
    EXPECT_EQ(canvas.touched_outside(place), 0);
    EXPECT_EQ(canvas.colours(place).count(kCanvas), 0u);
  };
  expect_only_in({10, 10, 42, 42});
  const RECT moved{30, 20, 70, 60};
  EXPECT_EQ(query<IOleInPlaceObject>(view_.get())->SetObjectRects(&moved, &moved), S_OK);
  expect_only_in(moved);
  EXPECT_EQ(query<IOleInPlaceObject>(view_.get())->InPlaceDeactivate(), S_OK);
  EXPECT_EQ(draw_in_place(Canvas(80, 80)), E_INVALIDARG);
  object->SetClientSite(nullptr);
}

TEST_F(View, answers_what_it_looks_like) {
  LOGPALETTE* colors = reinterpret_cast<LOGPALETTE*>(this);
  EXPECT_EQ(view_->GetColorSet(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, &colors), S_FALSE);
  EXPECT_EQ(colors, nullptr);
  DWORD status = 0;
  EXPECT_EQ(view_->GetViewStatus(&status), S_OK);
  EXPECT_EQ(status, static_cast<DWORD>(VIEWSTATUS_OPAQUE));
  RECTL rectangle{};
  EXPECT_EQ(view_->GetRect(DVASPECT_CONTENT, &rectangle), S_OK);
  EXPECT_EQ(rectangle.right, 847);
  EXPECT_EQ(rectangle.bottom, 847);
  EXPECT_EQ(view_->GetRect(DVASPECT_ICON, &rectangle), DV_E_DVASPECT);
  SIZEL extent{};
  EXPECT_EQ(view_->GetExtent(DVASPECT_CONTENT, -1, nullptr, &extent), S_OK);
  EXPECT_EQ(extent.cx, 847);
  EXPECT_EQ(extent.cy, 847);
}

TEST_F(View, a_proposed_size_suits_and_the_natural_one_is_the_first) {
  DVEXTENTINFO wanted{sizeof(DVEXTENTINFO), DVEXTENT_INTEGRAL, {500, 600}};
  SIZEL extent{};
  EXPECT_EQ(view_->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr, &wanted, &extent), S_OK);
  EXPECT_EQ(extent.cx, 500);
  EXPECT_EQ(extent.cy, 600);
  wanted.dwExtentMode = DVEXTENT_CONTENT;
  EXPECT_EQ(view_->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr, &wanted, &extent), S_OK);
  EXPECT_EQ(extent.cx, 847);
}

TEST_F(View, is_hit_inside_its_bounds) {
  const RECT bounds{10, 10, 42, 42}, over{40, 40, 50, 50}, beside{50, 50, 60, 60};
  DWORD hit = 99;
  EXPECT_EQ(view_->QueryHitPoint(DVASPECT_CONTENT, &bounds, {11, 41}, 0, &hit), S_OK);
  EXPECT_EQ(hit, static_cast<DWORD>(HITRESULT_HIT));
  EXPECT_EQ(view_->QueryHitPoint(DVASPECT_CONTENT, &bounds, {42, 41}, 0, &hit), S_OK);
  EXPECT_EQ(hit, static_cast<DWORD>(HITRESULT_OUTSIDE));
  EXPECT_EQ(view_->QueryHitRect(DVASPECT_CONTENT, &bounds, &over, 0, &hit), S_OK);
  EXPECT_EQ(hit, static_cast<DWORD>(HITRESULT_HIT));
  EXPECT_EQ(view_->QueryHitRect(DVASPECT_CONTENT, &bounds, &beside, 0, &hit), S_OK);
  EXPECT_EQ(hit, static_cast<DWORD>(HITRESULT_OUTSIDE));
}

TEST_F(View, is_thawed_once_for_each_time_it_was_frozen) {
  DWORD first = 0, second = 0;
  EXPECT_EQ(view_->Freeze(DVASPECT_CONTENT, -1, nullptr, &first), S_OK);
  EXPECT_EQ(view_->Freeze(DVASPECT_CONTENT, -1, nullptr, &second), S_OK);
  EXPECT_NE(first, second);
  EXPECT_EQ(view_->Unfreeze(first), S_OK);
  EXPECT_EQ(view_->Unfreeze(first), OLE_E_NOCONNECTION);
  EXPECT_EQ(view_->Unfreeze(second), S_OK);
}

TEST_F(View, tells_one_listener_as_often_as_it_wants) {
  AdviseListener listener;
  EXPECT_EQ(view_->SetAdvise(DVASPECT_CONTENT, ADVF_PRIMEFIRST | ADVF_ONLYONCE, &listener), S_OK);
  EXPECT_EQ(listener.view_changes, 1);
  EXPECT_EQ(listener.references, 1u);
  EXPECT_EQ(view_->SetAdvise(DVASPECT_ICON, 0, &listener), DV_E_DVASPECT);
  EXPECT_EQ(view_->SetAdvise(DVASPECT_CONTENT, ADVF_ONLYONCE, &listener), S_OK);
  DWORD aspects = 0, flags = 0;
  ComPtr<IAdviseSink> given;
  EXPECT_EQ(view_->GetAdvise(&aspects, &flags, given.receive()), S_OK);
  EXPECT_EQ(aspects, static_cast<DWORD>(DVASPECT_CONTENT));
  EXPECT_EQ(flags, static_cast<DWORD>(ADVF_ONLYONCE));
  EXPECT_EQ(given.get(), static_cast<IAdviseSink*>(&listener));
  given = ComPtr<IAdviseSink>();
  SIZEL extent{1000, 1000};
  EXPECT_EQ(query<IOleObject>(view_.get())->SetExtent(DVASPECT_CONTENT, &extent), S_OK);
  EXPECT_EQ(listener.view_changes, 2);
  EXPECT_EQ(listener.references, 1u);
}

TEST_F(View, hands_out_a_metafile_of_its_size) {
  FORMATETC format = metafile_format();
  STGMEDIUM medium{};
  ASSERT_EQ(data_->QueryGetData(&format), S_OK);
  ASSERT_EQ(data_->GetData(&format, &medium), S_OK);
  EXPECT_EQ(medium.tymed, static_cast<DWORD>(TYMED_MFPICT));
  const auto* picture = static_cast<METAFILEPICT*>(GlobalLock(medium.hMetaFilePict));
  EXPECT_EQ(picture->mm, MM_ANISOTROPIC);
  EXPECT_EQ(picture->xExt, 847);
  EXPECT_EQ(picture->yExt, 847);
  Canvas canvas(64, 64);
  SetMapMode(canvas.dc(), MM_ANISOTROPIC);
  SetViewportExtEx(canvas.dc(), 64, 64, nullptr);
  EXPECT_NE(PlayMetaFile(canvas.dc(), picture->hMF), FALSE);
  SetMapMode(canvas.dc(), MM_TEXT);
  const std::set<COLORREF> colours = canvas.colours({0, 0, 64, 64});
  EXPECT_EQ(colours.count(kPaper) + colours.count(kInk) + colours.count(kGround), 3u);
  GlobalUnlock(medium.hMetaFilePict);
  ReleaseStgMedium(&medium);
}

TEST_F(View, the_metafile_of_a_control_of_any_size_shows_all_of_it) {
  for (SIZEL extent : {SIZEL{32767, 32767}, SIZEL{40000, 40000}, SIZEL{65536, 65536}, SIZEL{MAXLONG, MAXLONG}}) {
    SCOPED_TRACE(testing::Message() << extent.cx << " by " << extent.cy);
    ASSERT_EQ(query<IOleObject>(view_.get())->SetExtent(DVASPECT_CONTENT, &extent), S_OK);
    FORMATETC format = metafile_format();
    STGMEDIUM medium{};
    ASSERT_EQ(data_->GetData(&format, &medium), S_OK);
    const auto* picture = static_cast<METAFILEPICT*>(GlobalLock(medium.hMetaFilePict));
    EXPECT_EQ(picture->xExt, extent.cx);
    EXPECT_EQ(picture->yExt, extent.cy);
    Canvas canvas(64, 64);
    SetMapMode(canvas.dc(), MM_ANISOTROPIC);
    SetViewportExtEx(canvas.dc(), 64, 64, nullptr);
    EXPECT_NE(PlayMetaFile(canvas.dc(), picture->hMF), FALSE);
    SetMapMode(canvas.dc(), MM_TEXT);
    EXPECT_EQ(canvas.colours({0, 0, 64, 64}).count(kCanvas), 0u);
    // The letter stands in the upper part.
    EXPECT_EQ(canvas.colours({0, 0, 64, 32}).count(kPaper), 1u);
    EXPECT_EQ(canvas.colours({0, 48, 64, 64}).count(kPaper), 0u);
    GlobalUnlock(medium.hMetaFilePict);
    ReleaseStgMedium(&medium);
  }
}

TEST_F(View, hands_out_nothing_else_and_takes_nothing) {
  FORMATETC format = metafile_format();
  STGMEDIUM medium{};
  EXPECT_EQ(data_->GetDataHere(&format, &medium), DV_E_FORMATETC);
  EXPECT_EQ(data_->SetData(&format, &medium, FALSE), DV_E_FORMATETC);
  format.cfFormat = CF_TEXT;
  EXPECT_EQ(data_->QueryGetData(&format), DV_E_FORMATETC);
  EXPECT_EQ(data_->GetData(&format, &medium), DV_E_FORMATETC);
  format = metafile_format();
  format.tymed = TYMED_HGLOBAL;
  EXPECT_EQ(data_->GetData(&format, &medium), DV_E_TYMED);
  format = metafile_format();
  format.dwAspect = DVASPECT_ICON;
  EXPECT_EQ(data_->GetData(&format, &medium), DV_E_DVASPECT);
  format = metafile_format();
  format.lindex = 0;
  EXPECT_EQ(data_->GetData(&format, &medium), DV_E_LINDEX);
  EXPECT_EQ(data_->GetData(nullptr, &medium), E_INVALIDARG);
}

TEST_F(View, lists_its_one_format) {
  ComPtr<IEnumFORMATETC> formats;
  ASSERT_EQ(data_->EnumFormatEtc(DATADIR_GET, formats.receive()), S_OK);
  FORMATETC found[2];
  ULONG fetched = 0;
  EXPECT_EQ(formats->Next(2, found, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 1u);
  EXPECT_EQ(found[0].cfFormat, CF_METAFILEPICT);
  EXPECT_EQ(data_->QueryGetData(&found[0]), S_OK);
  ASSERT_EQ(data_->EnumFormatEtc(DATADIR_SET, formats.receive()), S_OK);
  EXPECT_EQ(formats->Next(1, found, nullptr), S_FALSE);
}

TEST_F(View, its_data_is_the_same_for_every_device) {
  DVTARGETDEVICE device{};
  FORMATETC format = metafile_format(), same{};
  format.ptd = &device;
  EXPECT_EQ(data_->GetCanonicalFormatEtc(&format, &same), DATA_S_SAMEFORMATETC);
  EXPECT_EQ(same.cfFormat, CF_METAFILEPICT);
  EXPECT_EQ(same.ptd, nullptr);
  EXPECT_EQ(data_->GetCanonicalFormatEtc(&format, nullptr), E_INVALIDARG);
}

TEST_F(View, lists_those_who_hold_its_data) {
  FORMATETC format = metafile_format();
  AdviseListener listener;
  DWORD cookie = 0;
  ASSERT_EQ(data_->DAdvise(&format, ADVF_NODATA, &listener, &cookie), S_OK);
  ComPtr<IEnumSTATDATA> listeners;
  ASSERT_EQ(data_->EnumDAdvise(listeners.receive()), S_OK);
  STATDATA found{};
  ASSERT_EQ(listeners->Next(1, &found, nullptr), S_OK);
  EXPECT_EQ(found.dwConnection, cookie);
  EXPECT_EQ(found.formatetc.cfFormat, CF_METAFILEPICT);
  ComPtr<IAdviseSink>::attach(found.pAdvSink);
  EXPECT_EQ(data_->DUnadvise(cookie), S_OK);
  EXPECT_EQ(data_->EnumDAdvise(nullptr), E_POINTER);
}

TEST_F(View, tells_those_who_hold_its_data_when_the_size_changes) {
  FORMATETC format = metafile_format();
  AdviseListener listener;
  DWORD cookie = 0;
  EXPECT_EQ(data_->DUnadvise(1), OLE_E_NOCONNECTION);
  ASSERT_EQ(data_->DAdvise(&format, ADVF_NODATA, &listener, &cookie), S_OK);
  SIZEL extent{1000, 1000};
  EXPECT_EQ(query<IOleObject>(view_.get())->SetExtent(DVASPECT_CONTENT, &extent), S_OK);
  EXPECT_EQ(listener.data_changes, 1);
  EXPECT_EQ(data_->DUnadvise(cookie), S_OK);
  EXPECT_EQ(listener.references, 1u);
}

}  // namespace vellobar::tests
