#include "attachments/encoded_part.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "attachments/copied_range.h"
#include "codecs/attachment_encoding.h"
#include "codecs/base64.h"
#include "codecs/binhex.h"
#include "codecs/file_blocks.h"
#include "codecs/quoted_printable.h"
#include "codecs/uuencode.h"
#include "platform/file.h"

namespace vellobar::attachments {

namespace {

using codecs::AttachmentEncoding;

void copy_file(platform::File& from, platform::ByteSink& to) { copy_range(from, 0, codecs::kToEndOfFile, to); }

struct PartForm {
  AttachmentEncoding encoding;
  std::string_view before;  ///< with "%s" for the name
  void (*encode)(platform::File&, platform::ByteSink&);
  std::string_view after;
};

constexpr PartForm kForms[] = {
    {AttachmentEncoding::base64,
     "Content-Type: application/octet-stream;\r\n\t name=\"%s\"\r\n"
     "Content-Transfer-Encoding: base64\r\n"
     "Content-Disposition: attachment; filename=\"%s\"\r\n\r\n",
     codecs::encode_base64_stream, ""},
    // Deliberate: the disposition stands in the body, behind the opening colon, and no header names the encoding, see
    // a_binhex_part_has_its_disposition_behind_the_opening_colon.
    {AttachmentEncoding::binhex4,
     "Content-Type: application/mac-binhex40\r\n\r\n"
     "(This file must be converted with BinHex 4.0)\r\n:"
     "Content-Disposition: attachment; filename=\"%s\"\r\n",
     codecs::encode_binhex_stream, ":\r\n"},
    {AttachmentEncoding::uuencode,
     "Content-Type: application/octet-stream;\r\n\t name=\"%s\"\r\n"
     "Content-Transfer-Encoding: x-uuencode\r\n"
     "Content-Disposition: attachment;\r\n\t filename=\"%s\"\r\n\r\n"
     "begin 644 %s\r\n",
     codecs::encode_uu_stream, "\r\nend\r\n"},
    {AttachmentEncoding::quoted_printable,
     "Content-Type: application/octet-stream;\r\n\t name=\"%s\"\r\n"
     "Content-Transfer-Encoding: quoted-printable\r\n"
     "Content-Disposition: attachment; filename=\"%s\"\r\n\r\n",
     codecs::encode_quoted_printable_stream, ""},
    {AttachmentEncoding::seven_bit,
     "Content-Type: text/plain;\r\n\t name=\"%s\"\r\n"
     "Content-Transfer-Encoding: 7bit\r\n\r\n",
     copy_file, ""},
};

std::string filled(std::string_view form, std::string_view name) {
  constexpr std::string_view kPlace = "%s";
  std::string text;
  for (std::size_t place = form.find(kPlace); place != form.npos; place = form.find(kPlace)) {
    text.append(form.substr(0, place)).append(name);
    form.remove_prefix(place + kPlace.size());
  }
  return text.append(form);
}

}  // namespace

bool write_encoded_part(int encoding, std::string_view name, platform::File& file, platform::ByteSink& to) {
  const auto form = std::find_if(std::begin(kForms), std::end(kForms), [encoding](const PartForm& candidate) {
    return static_cast<int>(candidate.encoding) == encoding;
  });
  if (form == std::end(kForms)) return false;
  to.write(filled(form->before, name));
  form->encode(file, to);
  to.write(form->after);
  return true;
}

}  // namespace vellobar::attachments
