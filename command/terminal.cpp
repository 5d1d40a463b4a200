#include "command/terminal.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <langinfo.h>
#endif

#include <clocale>

#include "platform/code_page.h"

namespace vellobar::command {

namespace {

struct NamedCodePage {
  std::string_view name;
  int code_page;
};

// What the C library calls the character sets of its locales. The plain "C" locale claims ASCII only, which says more
// about the shell that was started than about the terminal: there, as for names not listed, UTF-8 serves best.
[[maybe_unused]] constexpr NamedCodePage kLocaleCodePages[] = {
    {"ISO-8859-1", 28591},  {"ISO-8859-2", 28592}, {"ISO-8859-5", 28595}, {"ISO-8859-7", 28597}, {"ISO-8859-9", 28599},
    {"ISO-8859-15", 28605}, {"KOI8-R", 20866},     {"KOI8-U", 21866},     {"CP1251", 1251},      {"CP1252", 1252},
    {"GBK", 936},           {"GB2312", 936},       {"BIG5", 950},         {"EUC-KR", 949},
};

int find_terminal_code_page() {
#ifndef _WIN32
  std::setlocale(LC_CTYPE, "");
  const std::string_view name = nl_langinfo(CODESET);
  for (const NamedCodePage& entry : kLocaleCodePages) {
    if (entry.name == name) return entry.code_page;
  }
#endif
  return platform::kUtf8CodePage;
}

std::string encode(std::u16string_view text) { return platform::narrow(terminal_code_page(), text); }

bool is_control(char16_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

}  // namespace

int terminal_code_page() {
  static const int code_page = find_terminal_code_page();
  return code_page;
}

#ifdef _WIN32

Utf8Console::Utf8Console() : before_(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }

Utf8Console::~Utf8Console() { SetConsoleOutputCP(before_); }

#endif

std::string shown_line(std::u16string_view text) {
  std::u16string line(text);
  for (char16_t& c : line) {
    if (is_control(c)) c = u' ';
  }
  return encode(line);
}

std::string shown_text(std::u16string_view text) {
  std::u16string shown;
  shown.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') continue;
    shown += is_control(c) && c != u'\n' && c != u'\t' ? u'?' : c;
  }
  return encode(shown);
}

}  // namespace vellobar::command
