#include "command/output/terminal.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

#include <charconv>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <optional>

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

constexpr std::size_t kUsualColumns = 80;

#ifdef _WIN32

bool is_terminal(std::FILE* stream) { return ::_isatty(::_fileno(stream)) != 0; }

std::size_t columns_of_terminal() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return kUsualColumns;
  return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

/// Consoles before Windows 10 show the codes instead of following them.
bool follows_codes(DWORD stream) {
  const HANDLE console = GetStdHandle(stream);
  DWORD mode = 0;
  return GetConsoleMode(console, &mode) && SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

#else

bool is_terminal(std::FILE* stream) { return ::isatty(::fileno(stream)) != 0; }

std::size_t columns_of_terminal() {
  winsize size{};
  const bool is_known = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return is_known ? size.ws_col : kUsualColumns;
}

#endif

std::optional<std::size_t> columns_of_environment() {
  const char* const columns = std::getenv("COLUMNS");
  if (columns == nullptr) return std::nullopt;
  const std::string_view text = columns;
  std::size_t value = 0;
  const auto [behind, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool is_number = problem == std::errc() && behind == text.data() + text.size() && value > 0;
  return is_number ? std::optional<std::size_t>(value) : std::nullopt;
}

bool is_set(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool has_colour(std::FILE* stream) {
  if (!is_terminal(stream) || is_set("NO_COLOR")) return false;
#ifdef _WIN32
  return follows_codes(stream == stdout ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
#else
  const char* const terminal = std::getenv("TERM");
  return terminal != nullptr && std::string_view(terminal) != "dumb";
#endif
}

std::string coloured(const char* code, const std::string& text) { return code + text + "\033[0m"; }

bool is_control(char16_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

}  // namespace

std::u16string core_text(std::string_view argument) { return platform::widen(terminal_code_page(), argument); }

std::string terminal_bytes(std::u16string_view text) { return platform::narrow(terminal_code_page(), text); }

std::size_t columns() {
  static const std::size_t known =
      is_terminal(stdout) ? columns_of_environment().value_or(columns_of_terminal()) : std::size_t{0};
  return known;
}

std::string emphasised(Emphasis how, const std::string& text) {
  static const bool has_colours = has_colour(stdout);
  if (!has_colours) return text;
  return coloured(how == Emphasis::heading ? "\033[1m" : "\033[33m", text);
}

std::string emphasised_error(const std::string& text) {
  static const bool has_colours = has_colour(stderr);
  return has_colours ? coloured("\033[31m", text) : text;
}

int terminal_code_page() {
  static const int code_page = find_terminal_code_page();
  return code_page;
}

#ifdef _WIN32

Utf8Console::Utf8Console() : before_(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }

Utf8Console::~Utf8Console() { SetConsoleOutputCP(before_); }

#endif

std::u16string without_controls(std::u16string_view text) {
  std::u16string line(text);
  for (char16_t& c : line) {
    if (is_control(c)) c = u' ';
  }
  return line;
}

std::string shown_line(std::u16string_view text) { return terminal_bytes(without_controls(text)); }

std::string shown_text(std::u16string text) {
  std::size_t size = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') continue;
    text[size++] = is_control(c) && c != u'\n' && c != u'\t' ? u'?' : c;
  }
  text.resize(size);
  return terminal_bytes(text);
}

}  // namespace vellobar::command
