// The routines of the codecs in their shape for memory, each with the second telling of its rule.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "codecs/base64.h"
#include "codecs/quoted_printable.h"
#include "codecs/sextet_decoder.h"
#include "codecs/sextet_encoder.h"
#include "codecs/uuencode.h"
#include "tests/codecs/reference_codecs.h"

namespace vellobar::codecs {

/// One routine in its shape for memory, the room it asks for, and its reference.
struct Routine {
  const char* name;
  std::size_t (*run)(unsigned char*, std::size_t, unsigned char*);
  std::size_t (*room)(std::string_view);
  std::string (*expected)(std::string_view);
};

inline constexpr Routine kEncoders[] = {
    {"Base64", [](auto* from, auto size, auto* to) { return encode_base64(from, size, to); },
     [](auto text) { return base64_encoded_size(text.size()); },
     [](auto text) { return reference::encode_base64(text); }},
    {"uuencode", [](auto* from, auto size, auto* to) { return encode_uu(from, size, to); },
     [](auto text) { return uu_encoded_room(text.size()); }, [](auto text) { return reference::encode_uu(text); }},
    {"quoted-printable", [](auto* from, auto size, auto* to) { return encode_quoted_printable(from, size, to); },
     [](auto text) { return quoted_printable_encoded_room(text.size()); },
     [](auto text) { return reference::encode_quoted_printable(text, 73); }},
    {"letters of BinHex",
     [](auto* from, auto size, auto* to) {
       return encode_sextets(kBinHexCode, kernels().binhex, kNoPadding, from, size, to);
     },
     [](auto text) { return whole_groups_encoded(text.size()); },
     [](auto text) {
       std::string lines = reference::encode_binhex_file(text);
       std::erase_if(lines, [](char c) { return c == '\r' || c == '\n'; });
       return lines;
     }},
};

inline constexpr Routine kDecoders[] = {
    {"Base64", [](auto* from, auto size, auto* to) { return decode_base64(from, size, to); },
     [](auto text) { return base64_decoded_room(text.size()); },
     [](auto text) { return reference::decode_base64(text); }},
    {"uuencode", [](auto* from, auto size, auto* to) { return decode_uu(from, size, to); },
     [](auto text) { return uu_decoded_size(text.size()); }, [](auto text) { return reference::decode_uu(text); }},
    {"quoted-printable", [](auto* from, auto size, auto* to) { return decode_quoted_printable(from, size, to); },
     [](auto text) { return quoted_printable_decoded_room(text); },
     [](auto text) { return reference::decode_quoted_printable(text, false); }},
    {"quoted-printable of words",
     [](auto* from, auto size, auto* to) { return decode_quoted_printable(from, size, to, true); },
     [](auto text) { return quoted_printable_decoded_room(text); },
     [](auto text) { return reference::decode_quoted_printable(text, true); }},
    {"letters of BinHex",
     [](auto* from, auto size, auto* to) {
       SextetDecoder decoder(kBinHexCode, kernels().binhex);
       const std::size_t written = decoder.decode(from, size, to);
       return written + decoder.finish(to + written);
     },
     [](auto text) { return started_groups_decoded(text.size()); },
     [](auto text) { return reference::decode_binhex_file(":" + std::string(text)); }},
};

}  // namespace vellobar::codecs
