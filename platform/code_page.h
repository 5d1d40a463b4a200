// Conversion between bytes and UTF-16. Every crossing in the component names its code page and goes through here;
// nothing converts on the side. Results are those of the Windows conversion functions with flags 0 and no default
// character; away from Windows the same tables are reached through the C library.
#pragma once

#include <string>
#include <string_view>

namespace vellobar::platform {

/// Windows code page numbers with a fixed meaning.
inline constexpr int kAnsiCodePage = 0;      ///< the system's ANSI code page; away from Windows 1252
inline constexpr int kThreadCodePage = 3;    ///< the thread's ANSI code page; away from Windows 1252
inline constexpr int kUtf7CodePage = 65000;  ///< RFC 2152
inline constexpr int kUtf8CodePage = 65001;  ///< RFC 3629

/// Bytes in the given code page as UTF-16. Counted: NUL bytes are kept. A code page the platform lacks gives no text.
std::u16string widen(int code_page, std::string_view bytes);

/// The same, appended to a text. Long bytes are taken piece by piece, so that there is no second text as long as they.
void append_widened(int code_page, std::string_view bytes, std::u16string& to);

/// UTF-16 as bytes in the given code page. Counted: NUL characters are kept. A character that the code page cannot hold
/// becomes the platform's best fit, else "?". A code page the platform lacks gives no text.
std::string narrow(int code_page, std::u16string_view text);

/// The code page that a client chose through the control's CharSet, shared by the whole process; 0 until set.
/// Any number is accepted.
int process_code_page() noexcept;
void set_process_code_page(int code_page) noexcept;

/// Client text as bytes, and bytes as client text, in the process code page.
std::string process_bytes(std::u16string_view text);
std::u16string process_text(std::string_view bytes);

/// True when text of ASCII characters alone has the same bytes in the code page (false for UTF-7, where "+" is
/// special).
bool keeps_ascii(int code_page) noexcept;

}  // namespace vellobar::platform
