#include "codecs/kernels_avx2.h"

namespace vellobar::codecs {

#if defined(__x86_64__) || defined(__i386__)

const Kernels* avx2_kernels() noexcept {
  static const bool is_offered = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi");
  static const Kernels kernels = {
      .base64 = avx2::base64_kernels(),
      .uuencode = avx2::uuencode_kernels(),
      .binhex = avx2::binhex_kernels(),
      .decode_uu_lines = avx2::decode_uu_lines,
      .encode_quoted_printable = avx2::encode_quoted_printable,
      .decode_quoted_printable = avx2::decode_quoted_printable,
  };
  return is_offered ? &kernels : nullptr;
}

#else

const Kernels* avx2_kernels() noexcept { return nullptr; }

#endif

}  // namespace vellobar::codecs
