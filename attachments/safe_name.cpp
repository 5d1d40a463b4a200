#include "attachments/safe_name.h"

#include <algorithm>
#include <string>

#include "mime/ascii.h"
#include "platform/ascii.h"
#include "platform/code_page.h"

namespace vellobar::attachments {

namespace {

// Names that stand for a device on Windows, whatever follows their first dot. A "#" stands for a digit, superscript
// digits included.
constexpr std::u16string_view kDevices[] = {u"con", u"prn", u"aux", u"nul", u"com#", u"lpt#", u"conin$", u"conout$"};

bool is_unsafe(char byte) {
  constexpr std::string_view kUnsafe = "<>:\"/\\|?*\x7F";
  return static_cast<unsigned char>(byte) < 0x20 || kUnsafe.find(byte) != kUnsafe.npos;
}

bool is_unsafe(std::string_view bytes) {
  return std::any_of(bytes.begin(), bytes.end(), [](char byte) { return is_unsafe(byte); });
}

/// Judged by the bytes that would name the file: a code page may turn a look-alike into a separator.
bool is_unsafe_character(char16_t c, int code_page) {
  // UTF-7 has letters for control characters, which can make a separator with those beside them.
  const bool is_unsafe_itself = c <= 0x7F && is_unsafe(static_cast<char>(c));
  return is_unsafe_itself || is_unsafe(platform::narrow(code_page, std::u16string_view(&c, 1)));
}

bool is_beyond_ascii(char16_t c) { return c > 0x7F; }

bool is_digit(char16_t c) { return (c >= u'0' && c <= u'9') || c == 0xB9 || c == 0xB2 || c == 0xB3; }

bool names_device(std::u16string_view stem, std::u16string_view device) {
  return std::equal(stem.begin(), stem.end(), device.begin(), device.end(), [](char16_t given, char16_t wanted) {
    return wanted == u'#' ? is_digit(given) : platform::lower_ascii(given) == wanted;
  });
}

bool is_device(std::u16string_view name) {
  std::u16string_view stem = name.substr(0, name.find(u'.'));
  stem = stem.substr(0, stem.find_last_not_of(u' ') + 1);
  return std::any_of(std::begin(kDevices), std::end(kDevices),
                     [stem](std::u16string_view device) { return names_device(stem, device); });
}

bool has_drive_prefix(std::u16string_view name) {
  if (name.size() < 2 || name[1] != u':') return false;
  const char16_t drive = platform::lower_ascii(name[0]);
  return drive >= u'a' && drive <= u'z';
}

}  // namespace

std::u16string safe_file_name(std::u16string_view name, int code_page) {
  name.remove_prefix(name.find_last_of(u"/\\") + 1);
  if (has_drive_prefix(name)) name.remove_prefix(2);
  std::u16string safe(name);
  std::replace_if(
      safe.begin(), safe.end(), [code_page](char16_t c) { return is_unsafe_character(c, code_page); }, u'_');
  // Where characters share bytes (UTF-7), harmless ones can make a separator together.
  if (is_unsafe(platform::narrow(code_page, safe))) std::replace_if(safe.begin(), safe.end(), is_beyond_ascii, u'_');
  // As it will be opened: a code page may take full-width letters for the plain ones of a device.
  safe = platform::widen(code_page, platform::narrow(code_page, safe));
  for (std::size_t i = safe.find_last_not_of(u". ") + 1; i < safe.size(); ++i) safe[i] = u'_';
  if (is_device(safe)) safe.insert(safe.begin(), u'_');
  return safe;
}

}  // namespace vellobar::attachments
