// Standard input and output as bytes, for the file name "-".
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace vellobar::platform {
class File;
}

namespace vellobar::command {

inline bool is_standard_stream(std::string_view path) { return path == "-"; }

/// Everything that standard input holds, as a file that goes away with its last user. Throws Failure when it cannot be
/// read or kept, Interrupted when the user had enough.
std::shared_ptr<platform::File> standard_input();

/// From now on standard output takes bytes as they are.
void make_standard_output_binary();

/// Writes to standard output. Throws Failure.
void write_standard_output(std::string_view bytes);

/// Hands over what standard output still holds. Throws Failure.
void flush_standard_output();

}  // namespace vellobar::command
