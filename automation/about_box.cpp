#include "automation/about_box.h"

#include <windows.h>

#include <string>

#include "mailbox/vellobar.h"

namespace vellobar::automation {

namespace {

/// A service's window station is not visible: a box there would wait for ever.
bool has_visible_desktop() {
  USEROBJECTFLAGS flags{};
  const HWINSTA station = GetProcessWindowStation();
  return station != nullptr && GetUserObjectInformationW(station, UOI_FLAGS, &flags, sizeof flags, nullptr) != FALSE &&
         (flags.dwFlags & WSF_VISIBLE) != 0;
}

}  // namespace

void show_about_box() {
  if (!has_visible_desktop()) return;
  const std::u16string_view version = CVellobar::Version();
  const std::wstring text = L"Vellobar " + std::wstring(version.begin(), version.end()) +
                            L"\nReads, edits and writes Unix mailbox files.\n\nMIT licence.";
  MessageBoxW(GetActiveWindow(), text.c_str(), L"About Vellobar", MB_OK | MB_ICONINFORMATION);
}

}  // namespace vellobar::automation
