#include "codecs/sextet_decoder.h"

#include <algorithm>

namespace vellobar::codecs {

std::size_t SextetDecoder::decode(const unsigned char* from, std::size_t size, unsigned char* to) {
  Progress done;
  while (done.read < size && !has_ended_) {
    if (held_ == 0) {
      const Progress whole = decode_whole_(from + done.read, size - done.read, to + done.written);
      done.read += whole.read;
      done.written += whole.written;
      if (done.read == size) break;
    }
    const unsigned char value = code_.values[from[done.read++]];
    if (value == kSkipped) continue;
    group_[held_++] = value;
    if (held_ == 4) done.written += close_group(to + done.written);
  }
  return done.written;
}

std::size_t SextetDecoder::finish(unsigned char* to) { return held_ == 0 ? 0 : close_group(to); }

std::size_t SextetDecoder::close_group(unsigned char* to) {
  const unsigned char* group = group_.data();
  const unsigned char* end = group + held_;
  const unsigned char* stranger = std::find(group, end, kStranger);
  const auto bytes = join(group, held_);
  held_ = 0;
  // A group of letters alone gives three bytes even when it is short.
  if (stranger == end) {
    std::copy(bytes.begin(), bytes.end(), to);
    return 3;
  }
  has_ended_ = true;
  const std::size_t letters = static_cast<std::size_t>(stranger - group);
  if (letters < 2) return 0;
  std::copy_n(bytes.begin(), letters - 1, to);
  return letters - 1;
}

}  // namespace vellobar::codecs
