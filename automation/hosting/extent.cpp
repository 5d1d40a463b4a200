#include "automation/hosting/extent.h"

namespace vellobar::automation {

namespace {

constexpr int kHimetricPerInch = 2540;
constexpr int kUsualPixelsPerInch = 96;
constexpr LONG kInitialPixels = 32;

}  // namespace

LONG himetric_of_pixels(LONG pixels, int pixels_per_inch) {
  return MulDiv(kHimetricPerInch, pixels, pixels_per_inch > 0 ? pixels_per_inch : kUsualPixelsPerInch);
}

SIZEL initial_extent() {
  const HDC screen = GetDC(nullptr);
  const int across = GetDeviceCaps(screen, LOGPIXELSX);
  const int down = GetDeviceCaps(screen, LOGPIXELSY);
  if (screen != nullptr) ReleaseDC(nullptr, screen);
  return {himetric_of_pixels(kInitialPixels, across), himetric_of_pixels(kInitialPixels, down)};
}

}  // namespace vellobar::automation
