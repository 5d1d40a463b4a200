#include "api/paths.h"

#include "api/utf8.h"
#include "compose/composition.h"
#include "mime/encoded_word.h"
#include "platform/code_page.h"

namespace vellobar {

namespace {

/// What a file is called in a message, which holds ASCII only: another name becomes an encoded word.
std::u16string name_in_mail(std::u16string_view name) {
  return mime::has_8_bit_bytes(to_utf8(name)) ? mime::utf8_encoded_word(name) : std::u16string(name);
}

}  // namespace

#ifdef _WIN32

std::u16string filename(const std::filesystem::path& path) { return path.u16string(); }

void attach(CMessage& message, const std::filesystem::path& file) {
  compose::attach(message, name_in_mail(file.filename().u16string()), filename(file));
}

#else

std::u16string filename(const std::filesystem::path& path) { return platform::process_text(path.native()); }

void attach(CMessage& message, const std::filesystem::path& file) {
  compose::attach(message, name_in_mail(from_utf8(file.filename().native())), filename(file));
}

#endif

}  // namespace vellobar
