#include "automation/hosting/face.h"

#include <algorithm>
#include <array>

namespace vellobar::automation {

namespace {

constexpr wchar_t kName[] = L"Vellobar";
constexpr int kNameLength = 8;

constexpr COLORREF kGround = RGB(0xFF, 0xFF, 0xFF);
constexpr COLORREF kFrame = RGB(0x80, 0x80, 0x80);
constexpr COLORREF kPaper = RGB(0xFF, 0xF2, 0xC4);
constexpr COLORREF kInk = RGB(0x1F, 0x3A, 0x68);
constexpr COLORREF kText = RGB(0x00, 0x00, 0x00);

/// A drawing object, selected for as long as this lives.
class Selected {
 public:
  Selected(HDC dc, HGDIOBJ object) : dc_(dc), object_(object), before_(SelectObject(dc, object)) {}
  Selected(const Selected&) = delete;
  Selected& operator=(const Selected&) = delete;
  ~Selected() {
    if (before_ != nullptr) SelectObject(dc_, before_);
    DeleteObject(object_);
  }

 private:
  HDC dc_;
  HGDIOBJ object_;
  HGDIOBJ before_;
};

void fill(HDC dc, const RECT& box, COLORREF colour) {
  const HBRUSH brush = CreateSolidBrush(colour);
  FillRect(dc, &box, brush);
  DeleteObject(brush);
}

void draw_box(HDC dc, const RECT& box, COLORREF border, COLORREF inside, int width) {
  fill(dc, box, border);
  fill(dc, {box.left + width, box.top + width, box.right - width, box.bottom - width}, inside);
}

/// A closed envelope seen from behind: its flap is two lines that meet below the middle.
void draw_letter(HDC dc, const RECT& box) {
  const int width = box.right - box.left, height = box.bottom - box.top;
  const int line = std::max(1, height / 16);
  draw_box(dc, box, kInk, kPaper, line);
  const Selected pen(dc, CreatePen(PS_SOLID, line, kInk));
  // The ends of the lines stay inside the border.
  const int inset = line / 2;
  const std::array<POINT, 3> flap{{{box.left + inset, box.top + inset},
                                   {box.left + width / 2, box.top + height * 3 / 5},
                                   {box.right - 1 - inset, box.top + inset}}};
  Polyline(dc, flap.data(), static_cast<int>(flap.size()));
}

/// A metafile cannot be asked how wide a text is, so the height is chosen for the width that letters have at most.
void draw_name(HDC dc, const RECT& box) {
  const int height = std::min<int>(box.bottom - box.top, (box.right - box.left) * 5 / (kNameLength * 3));
  LOGFONTW look{};
  look.lfHeight = -std::max(1, height);
  look.lfWeight = FW_NORMAL;
  look.lfCharSet = DEFAULT_CHARSET;
  look.lfPitchAndFamily = VARIABLE_PITCH | FF_SWISS;
  lstrcpyW(look.lfFaceName, L"Tahoma");
  const Selected font(dc, CreateFontIndirectW(&look));
  SetTextColor(dc, kText);
  SetBkMode(dc, TRANSPARENT);
  SetTextAlign(dc, TA_CENTER | TA_TOP | TA_NOUPDATECP);
  ExtTextOutW(dc, (box.left + box.right) / 2, box.top, ETO_CLIPPED, &box, kName, kNameLength, nullptr);
}

/// The same shape where a size has more than the 16 bits that a metafile has for it.
SIZE metafile_units(SIZE himetric) {
  constexpr LONG kMost = 0x7FFF;
  const LONG longest = std::max(himetric.cx, himetric.cy);
  if (longest <= kMost) return himetric;
  return {MulDiv(himetric.cx, kMost, longest), MulDiv(himetric.cy, kMost, longest)};
}

}  // namespace

void draw_face(HDC dc, const RECT& bounds) {
  if (IsRectEmpty(&bounds) != FALSE) return;
  const int saved = SaveDC(dc);
  IntersectClipRect(dc, bounds.left, bounds.top, bounds.right, bounds.bottom);
  const int width = bounds.right - bounds.left, height = bounds.bottom - bounds.top;
  draw_box(dc, bounds, kFrame, kGround, std::max(1, std::min(width, height) / 32));
  // The letter takes the upper part, three wide by two high; the name has the rest.
  const int letter_height = std::max(2, std::min(height * 9 / 16, width / 2));
  const int letter_width = letter_height * 3 / 2;
  const int left = bounds.left + (width - letter_width) / 2;
  const int top = bounds.top + height / 8;
  draw_letter(dc, {left, top, left + letter_width, top + letter_height});
  const int margin = std::max(1, width / 32);
  draw_name(dc, {bounds.left + margin, top + letter_height + margin, bounds.right - margin, bounds.bottom - margin});
  RestoreDC(dc, saved);
}

HMETAFILE face_metafile(SIZE himetric) {
  const HDC dc = CreateMetaFileW(nullptr);
  if (dc == nullptr) return nullptr;
  SetMapMode(dc, MM_ANISOTROPIC);
  SetWindowOrgEx(dc, 0, 0, nullptr);
  const SIZE units = metafile_units(himetric);
  SetWindowExtEx(dc, units.cx, units.cy, nullptr);
  draw_face(dc, {0, 0, units.cx, units.cy});
  return CloseMetaFile(dc);
}

}  // namespace vellobar::automation
