// Files for the targets, in a folder of this process. A full disk is no finding: what cannot be written ends the
// process with std::runtime_error.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "tests/support/files.h"

namespace vellobar::fuzz {

const tests::TemporaryFolder& scratch_folder();
/// Path of a file in it.
std::string in_scratch(std::string_view name);

/// Makes a folder in it, or takes out all that one holds.
void make_empty_scratch_folder(std::string_view name);

/// The bytes as an open file. One at a time: the next call writes over it.
std::shared_ptr<platform::File> file_of(std::string_view bytes);

/// Some lines longer than what is read at once decide about many rules: sometimes the text with a long run of one
/// letter in it, which stands where the choices say.
class Choices;
std::string maybe_stretched(Choices& choices);

}  // namespace vellobar::fuzz
