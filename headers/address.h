// Names and addresses in the text of "From", "To", "CC" and "BCC". The grammar is that of the mail clients which wrote
// such headers by hand rather than RFC 5322's: a display name, an address in angle brackets, quotes and apostrophes
// around either. Text is bytes in the process code page; everything here is a function of its arguments, but for
// `address_list_text`, which asks for the process code page.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vellobar::headers {

/// The display name of one address text: what stands before "<", less the quotes, apostrophes and spaces around it. A
/// bare address is its own display name. Empty when there is none.
std::string display_name_of(std::string_view text);

/// The address of one address text: the run of non-spaces around the first "@", between the angle brackets when there
/// are any. Empty when there is no "@".
std::string address_of(std::string_view text);

/// The entries of an address list, divided by "," or ";" or a control or 8-bit byte outside quotes, apostrophes and
/// angle brackets. Entries of spaces are left out; when none is left the whole text is the one entry.
std::vector<std::string_view> split_address_list(std::string_view text);

/// What `extract` (display_name_of or address_of) takes from each entry of a list, joined by ", "; empty results are
/// left out.
std::string from_each_address(std::string_view list, std::string (*extract)(std::string_view));

/// The value of an address header made from what a client wrote: each entry, divided by "," or a line feed even inside
/// quotes, as "name" <address>, joined by ", ". Names and addresses with 8-bit bytes in the process code page become
/// UTF-8 encoded words (RFC 2047). Empty when nothing is left.
std::u16string address_list_text(std::u16string_view client_text);

}  // namespace vellobar::headers
