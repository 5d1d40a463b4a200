// The loops of the codecs that decide their speed, and the one place that chooses between their forms. A loop takes the
// regular stretches of its input only; whatever is odd (strangers, NUL bytes, groups across line ends, the last bytes)
// it leaves to the caller, whose plain code alone knows those rules. So every form may stop wherever it likes, as long
// as what it took is coded right. All forms are held equal by the tests.
#pragma once

#include <cstddef>

namespace vellobar::codecs {

/// How far a loop came.
struct Progress {
  std::size_t read = 0;
  std::size_t written = 0;
};

struct SextetKernels {
  /// Encodes `groups` groups of three bytes to four letters each.
  void (*encode)(const unsigned char* from, std::size_t groups, unsigned char* to);
  /// Encodes `lines` full lines of the code, their line ends included.
  void (*encode_lines)(const unsigned char* from, std::size_t lines, unsigned char* to);
  /// Decodes whole groups of letters from the front, passing over line ends between groups where the code has them.
  /// Stops before any other byte. `to` has room for three bytes for each started group of `size`, and all of it may be
  /// written to.
  Progress (*decode)(const unsigned char* from, std::size_t size, unsigned char* to);
};

struct Kernels {
  SextetKernels base64;
  SextetKernels uuencode;
  SextetKernels binhex;

  /// Decodes full lines of uuencode ("M", 60 characters, a line end) from the front. Room as for SextetKernels::decode.
  Progress (*decode_uu_lines)(const unsigned char* from, std::size_t size, unsigned char* to);

  /// Encodes bytes by the one-byte rule of quoted-printable, up to the first CR, and only while fewer than `room`
  /// characters are written. `to` has room for three characters for each byte of `size`.
  Progress (*encode_quoted_printable)(const unsigned char* from, std::size_t size, std::size_t room, unsigned char* to);
  /// Decodes plain characters, escapes of two upper-case hex digits, and soft line breaks; stops before any other "=".
  /// `to` has room for `size` bytes, and all of it may be written to.
  Progress (*decode_quoted_printable)(const unsigned char* from, std::size_t size, unsigned char* to);
};

/// The loops in force.
const Kernels& kernels() noexcept;

/// Puts loops in force until the object dies. For tests and measurements; not for two threads at once.
class ForcedKernels {
 public:
  explicit ForcedKernels(const Kernels& forced) noexcept;
  ~ForcedKernels();
  ForcedKernels(const ForcedKernels&) = delete;
  ForcedKernels& operator=(const ForcedKernels&) = delete;

 private:
  const Kernels& previous_;
};

/// The forms. One that this build, or this machine, does not have is null.
extern const Kernels kScalarKernels;
const Kernels* avx2_kernels() noexcept;
const Kernels* avx512_kernels() noexcept;

/// Layout of the lines of the stream encoders.
inline constexpr std::size_t kBase64LineBytes = 57;
inline constexpr std::size_t kUuLineBytes = 45;
inline constexpr std::size_t kBinHexLineBytes = 48;
inline constexpr unsigned char kFullUuLine = 'M';  ///< length character of 45 bytes

}  // namespace vellobar::codecs
