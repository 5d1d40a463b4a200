// Header values with encoded words: every way of decoding gives what the rule gives pass by pass, and what was encoded
// decodes to itself.
#include <string>

#include "fuzz/choices.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mime/decoding_passes.h"
#include "mime/encoded_word.h"
#include "platform/code_page.h"
#include "tests/mime/literal_decoding.h"

namespace vellobar::fuzz {

namespace {

constexpr std::size_t kLongest = 3000;

std::string shown(const mime::DecodedValue& decoded) { return std::to_string(decoded.code_page) + ' ' + decoded.bytes; }

void require_equal_decoding(std::string_view value) {
  const tests::LiteralResult literal = tests::decode_literally(value);
  if (!literal.is_whole) return;
  const std::string expected = shown({literal.bytes, literal.code_page});
  require_same(shown(mime::decode_encoded_words(value)), expected, "a value decodes as the rule does pass by pass");
  require_same(shown(mime::decode_pass_by_pass(value)), expected, "decoding pass by pass gives the same");
}

bool is_left_alone(std::string_view bytes) {
  return bytes.find("=?") == bytes.npos && bytes.find("\r\n\t") == bytes.npos && bytes.find('\0') == bytes.npos;
}

/// A subject of any text that the code page holds, put and read, also through the text of its header.
void require_round_trip(std::string_view bytes) {
  const std::u16string subject = platform::widen(platform::kAnsiCodePage, bytes);
  CMessage message;
  message.SetSubject(subject);
  require(message.Subject() == subject, "a subject reads as it was put");
  if (subject.empty() || bytes.find_first_of("\r\n") != bytes.npos) return;
  const auto header = message.load_headers();
  require(header->Count() == 1, "a subject is one header");
  CHeader again;
  require(again.parse_line(header->Item(std::int64_t{0})->ToString()), "the text of a header is a header");
  require(again.Value() == header->value(0), "a value reads as it was written");
}

}  // namespace

void fuzz_encoded_words(std::string_view input) {
  Choices choices(input);
  static constexpr int kCodePages[] = {0, 0, 1252, 65001, 1251, 65000};
  const int code_page = choices.among(kCodePages);
  const std::string_view value = choices.text().substr(0, kLongest);
  struct Restored {
    int before = platform::process_code_page();
    ~Restored() { platform::set_process_code_page(before); }
  } const restored;
  platform::set_process_code_page(code_page);
  require_equal_decoding(value);
  platform::set_process_code_page(0);
  if (!is_left_alone(value)) return;
  require_round_trip(value);
  const std::u16string text = platform::widen(platform::kUtf8CodePage, value);
  require(mime::decode_header_value(platform::narrow(0, mime::utf8_encoded_word(text))) == text,
          "an encoded text decodes to itself");
}

}  // namespace vellobar::fuzz
