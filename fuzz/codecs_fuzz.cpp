// Gives the same bytes to every form of the codec loops and tolerates no difference. The first byte chooses the
// routine.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "codecs/base64.h"
#include "codecs/kernels.h"
#include "codecs/quoted_printable.h"
#include "codecs/sextet_decoder.h"
#include "codecs/sextet_encoder.h"
#include "codecs/uuencode.h"

namespace {

using namespace vellobar::codecs;

/// A routine over memory of exactly the promised size.
struct Routine {
  std::size_t (*room)(std::string_view text);
  std::size_t (*run)(unsigned char* from, std::size_t size, unsigned char* to);
};

constexpr Routine kRoutines[] = {
    {[](std::string_view text) { return base64_encoded_size(text.size()); },
     [](unsigned char* from, std::size_t size, unsigned char* to) { return encode_base64(from, size, to); }},
    {[](std::string_view text) { return base64_decoded_room(text.size()); },
     [](unsigned char* from, std::size_t size, unsigned char* to) { return decode_base64(from, size, to); }},
    {[](std::string_view text) { return uu_encoded_room(text.size()); },
     [](unsigned char* from, std::size_t size, unsigned char* to) { return encode_uu(from, size, to); }},
    {[](std::string_view text) { return uu_decoded_size(text.size()); },
     [](unsigned char* from, std::size_t size, unsigned char* to) { return decode_uu(from, size, to); }},
    {[](std::string_view text) { return quoted_printable_encoded_room(text.size()); },
     [](unsigned char* from, std::size_t size, unsigned char* to) { return encode_quoted_printable(from, size, to); }},
    {[](std::string_view text) { return quoted_printable_decoded_room(text); },
     [](unsigned char* from, std::size_t size, unsigned char* to) { return decode_quoted_printable(from, size, to); }},
    {[](std::string_view text) { return whole_groups_encoded(text.size()); },
     [](unsigned char* from, std::size_t size, unsigned char* to) {
       return encode_sextets(kBinHexCode, kernels().binhex, kNoPadding, from, size, to);
     }},
    {[](std::string_view text) { return started_groups_decoded(text.size()); },
     [](unsigned char* from, std::size_t size, unsigned char* to) {
       SextetDecoder decoder(kBinHexCode, kernels().binhex);
       const std::size_t written = decoder.decode(from, size, to);
       return written + decoder.finish(to + written);
     }},
};

/// The result, and the source as the routine left it.
std::string run(const Routine& routine, const Kernels& form, std::string_view text) {
  const ForcedKernels forced(form);
  const std::unique_ptr<unsigned char[]> from(new unsigned char[text.size()]);
  const std::unique_ptr<unsigned char[]> to(new unsigned char[routine.room(text)]);
  text.copy(reinterpret_cast<char*>(from.get()), text.size());
  const std::size_t size = routine.run(from.get(), text.size(), to.get());
  return std::string(to.get(), to.get() + size) + "|" + std::string(from.get(), from.get() + text.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Routine& routine = kRoutines[data[0] % std::size(kRoutines)];
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string plain = run(routine, kScalarKernels, text);
  for (const Kernels* form : {avx2_kernels(), avx512_kernels()}) {
    if (form != nullptr && run(routine, *form, text) != plain) std::abort();
  }
  return 0;
}
