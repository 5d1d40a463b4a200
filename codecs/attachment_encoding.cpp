#include "codecs/attachment_encoding.h"

#include "codecs/base64.h"
#include "codecs/binhex.h"
#include "codecs/quoted_printable.h"
#include "codecs/uuencode.h"

namespace vellobar::codecs {

namespace {

using StreamDecoder = void (*)(platform::File&, std::int64_t, std::int64_t, platform::ByteSink&);

struct KnownDecoder {
  AttachmentEncoding encoding;
  StreamDecoder decode;
};

constexpr KnownDecoder kDecoders[] = {
    {AttachmentEncoding::base64, decode_base64_stream},
    {AttachmentEncoding::binhex4, decode_binhex_stream},
    {AttachmentEncoding::uuencode, decode_uu_stream},
    {AttachmentEncoding::quoted_printable, decode_quoted_printable_stream},
};

}  // namespace

bool decode_stream(AttachmentEncoding encoding, platform::File& from, std::int64_t start, std::int64_t end,
                   platform::ByteSink& to) {
  for (const KnownDecoder& known : kDecoders) {
    if (known.encoding != encoding) continue;
    known.decode(from, start, end, to);
    return true;
  }
  return false;
}

}  // namespace vellobar::codecs
