// Telling somebody how far a long piece of coding has come.
#pragma once

#include <cstdint>
#include <functional>

namespace vellobar::codecs {

/// Called now and then with the bytes of the source that were read so far, and how many there are.
using ProgressListener = std::function<void(std::int64_t done, std::int64_t total)>;

}  // namespace vellobar::codecs
