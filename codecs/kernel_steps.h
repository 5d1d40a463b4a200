// What the wide forms of the decoding loops share: the order of their steps. Compiled for the plain processor; the
// steps themselves are each form's own.
#pragma once

#include <cstddef>

#include "codecs/kernels.h"

namespace vellobar::codecs {

/// Length of the line end that stands here: CR LF, LF, or none. Reads two bytes.
inline std::size_t line_end_size(const unsigned char* at) {
  if (at[0] == '\n') return 1;
  return at[0] == '\r' && at[1] == '\n' ? 2 : 0;
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
template <void (*kDecodeLines)(const unsigned char*, std::size_t, unsigned char*, Progress&),
          bool (*kDecodeRun)(const unsigned char*, std::size_t, unsigned char*, Progress&),
          const SextetKernels Kernels::*kPlain>
Progress decode_lines_and_runs(const unsigned char* from, std::size_t size, unsigned char* to) {
  Progress done;
  for (;;) {
    kDecodeLines(from, size, to, done);
    if (!kDecodeRun(from, size, to, done)) break;
    const std::size_t line_end = line_end_size(from + done.read);
    if (line_end == 0) return done;
    done.read += line_end;
  }
  return go_on(done, (kScalarKernels.*kPlain).decode, from, size, to);
}

}  // namespace vellobar::codecs
