// The picture that containers show in their tool boxes.
#include <gtest/gtest.h>

#include <string>

#include "tests/automation/client.h"

namespace vellobar::tests {

namespace {

/// One row of a picture, a letter for each of its three colours.
std::string row_of(HDC dc, int y) {
  std::string row;
  for (int x = 0; x < 16; ++x) {
    const COLORREF colour = GetPixel(dc, x, y);
    row += colour == RGB(0xC0, 0xC0, 0xC0) ? '.' : colour == RGB(0x1F, 0x3A, 0x68) ? '#' : 'p';
    EXPECT_TRUE(row.back() != 'p' || colour == RGB(0xFF, 0xF2, 0xC4)) << colour;
  }
  return row;
}

}  // namespace

TEST(Toolbox, its_picture_is_a_bitmap_of_16_by_16_pixels_on_transparent_ground) {
  const HMODULE module = LoadLibraryExW(Module::path_under_test().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  ASSERT_NE(module, nullptr);
  const HANDLE picture = LoadImageW(module, MAKEINTRESOURCEW(101), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION);
  ASSERT_NE(picture, nullptr);
  BITMAP bitmap{};
  ASSERT_NE(GetObjectW(picture, sizeof bitmap, &bitmap), 0);
  EXPECT_EQ(bitmap.bmWidth, 16);
  EXPECT_EQ(bitmap.bmHeight, 16);
  const HDC dc = CreateCompatibleDC(nullptr);
  const HGDIOBJ before = SelectObject(dc, picture);
  // The lower left pixel says which colour is transparent.
  EXPECT_EQ(row_of(dc, 15), "................");
  EXPECT_EQ(row_of(dc, 2), "................");
  EXPECT_EQ(row_of(dc, 3), ".##############.");
  EXPECT_EQ(row_of(dc, 7), ".#ppp#pppp#ppp#.");
  EXPECT_EQ(row_of(dc, 12), ".##############.");
  SelectObject(dc, before);
  DeleteDC(dc);
  DeleteObject(picture);
  FreeLibrary(module);
}

}  // namespace vellobar::tests
