// The targets, one file each.
#pragma once

#include <string_view>

namespace vellobar::fuzz {

void fuzz_addresses(std::string_view input);
void fuzz_attachments(std::string_view input);
void fuzz_base64(std::string_view input);
void fuzz_binhex(std::string_view input);
void fuzz_charsets(std::string_view input);
void fuzz_codec_forms(std::string_view input);
void fuzz_dates(std::string_view input);
void fuzz_encoded_words(std::string_view input);
void fuzz_header_block(std::string_view input);
void fuzz_letting_go(std::string_view input);
void fuzz_line_search(std::string_view input);
void fuzz_mailbox(std::string_view input);
void fuzz_parts(std::string_view input);
void fuzz_quoted_printable(std::string_view input);
void fuzz_scan(std::string_view input);
void fuzz_uuencode(std::string_view input);

}  // namespace vellobar::fuzz
