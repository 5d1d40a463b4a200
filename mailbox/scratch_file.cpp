#include "mailbox/scratch_file.h"

#include <memory>
#include <system_error>

#include "errors/error.h"

namespace vellobar::mailbox {

void ScratchFile::write(std::string_view bytes) const {
  try {
    const std::unique_ptr<platform::OutputFile> output = platform::OutputFile::create(path_);
    if (!output) throw Error(ErrorNumber::cannot_write_temporary_file, Reporter::message);
    output->write(bytes);
    output->close();
  } catch (const std::system_error&) {
    throw Error(ErrorNumber::cannot_write_temporary_file, Reporter::message);
  }
}

}  // namespace vellobar::mailbox
