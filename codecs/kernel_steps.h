// What the wide forms of the loops share. Compiled for the plain processor; the
// steps themselves are each form's own.
#pragma once

#include <cstddef>
#include <cstring>

#include "codecs/kernels.h"

namespace vellobar::codecs {

/// The two line ends, each for a loop of lines of its own: with its length known, no line waits for the one before.
struct LineFeed {
  static constexpr std::size_t kSize = 1;
  static bool is_at(const unsigned char* at) { return *at == '\n'; }
};
struct CrLf {
  static constexpr std::size_t kSize = 2;
  static bool is_at(const unsigned char* at) { return std::memcmp(at, "\r\n", kSize) == 0; }
};

/// Length of the line end that stands here, or 0. Reads two bytes.
inline std::size_t line_end_size(const unsigned char* at) {
  return LineFeed::is_at(at) ? LineFeed::kSize : CrLf::is_at(at) ? CrLf::kSize : 0;
}

/// Asks for the memory that an encoding loop is about to reach, also for the cache lines that it overwrites: a store to
/// one that is not near holds up all later ones. May ask for memory behind the buffers, which asking does not touch.
inline void fetch_ahead(const unsigned char* from, unsigned char* to) {
  constexpr std::size_t kAhead = 2048;
  __builtin_prefetch(from + kAhead);
  __builtin_prefetch(to + kAhead, 1);
}

/// Goes on with another form where `done` ends.
inline Progress go_on(Progress done, Progress (*loop)(const unsigned char*, std::size_t, unsigned char*),
                      const unsigned char* from, std::size_t size, unsigned char* to) {
  const Progress rest = loop(from + done.read, size - done.read, to + done.written);
  return {done.read + rest.read, done.written + rest.written};
}

/// Decodes full lines as long as they come, and what is no full line up to its end. `kDecodeLines` takes lines of
/// letters with their line ends. `kDecodeRun` takes whole groups of letters and returns false when too little is left
/// for it, so that the plain form goes on; when it returns true at least two bytes are left.
template <Progress (*kDecodeLines)(const unsigned char*, std::size_t, unsigned char*),
          bool (*kDecodeRun)(const unsigned char*, std::size_t, unsigned char*, Progress&),
          const SextetKernels Kernels::*kPlain>
Progress decode_lines_and_runs(const unsigned char* from, std::size_t size, unsigned char* to) {
  Progress done;
  for (;;) {
    done = go_on(done, kDecodeLines, from, size, to);
    if (!kDecodeRun(from, size, to, done)) break;
    const std::size_t line_end = line_end_size(from + done.read);
    if (line_end == 0) return done;
    done.read += line_end;
  }
  return go_on(done, (kScalarKernels.*kPlain).decode, from, size, to);
}

}  // namespace vellobar::codecs
