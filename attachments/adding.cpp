// How a file becomes a new part of a message.
#include <system_error>
#include <utility>

#include "attachments/attachments.h"
#include "attachments/encoded_part.h"
#include "codecs/attachment_encoding.h"
#include "errors/error.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/scratch_file.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

std::shared_ptr<platform::File> open_to_attach(std::u16string_view filename) {
  const std::string path = platform::process_bytes(filename);
  if (path.empty()) throw Error(ErrorNumber::filename_not_given, Reporter::vellobar);
  std::shared_ptr<platform::File> file = platform::File::open(path);
  if (!file) throw Error(ErrorNumber::cannot_open_file, Reporter::vellobar);
  return file;
}

/// Writes the part to a temporary file.
void write_part(platform::File& file, std::string_view name, int encoding, mailbox::ScratchFile& scratch) {
  try {
    const std::unique_ptr<platform::OutputFile> output = platform::OutputFile::create(scratch.path());
    if (!output) throw Error(ErrorNumber::cannot_write_temporary_file, Reporter::vellobar);
    if (!attachments::write_encoded_part(encoding, name, file, *output)) {
      // Deliberate: the file stays, see another_encoding_reports_30013_and_leaves_the_temporary_file_behind.
      scratch.keep();
      throw Error(ErrorNumber::unsupported_encoding, Reporter::vellobar);
    }
    output->close();
  } catch (const std::system_error&) {
    throw Error(ErrorNumber::cannot_write_temporary_file, Reporter::vellobar);
  }
}

}  // namespace

std::u16string_view CAttachments::name_for(std::u16string_view filename) {
  const std::size_t backslash = filename.rfind(u'\\');
  // A slash is no separator here, deliberately: see add_takes_the_name_behind_the_last_backslash_and_else_unknown.
  return backslash == filename.npos ? u"unknown" : filename.substr(backslash + 1);
}

std::shared_ptr<CMessage> CAttachments::Add(std::u16string_view filename, std::optional<int> encoding) {
  constexpr int kDefault = static_cast<int>(codecs::AttachmentEncoding::base64);
  try {
    return add_as(name_for(filename), filename, encoding.value_or(kDefault));
  } catch (const Error& error) {
    if (has_control() || error.status() != Status::numbered) throw;
    throw Error(Status::fail);
  }
}

std::shared_ptr<CMessage> CAttachments::add_as(std::u16string_view name, std::u16string_view filename, int encoding) {
  if (message_ == nullptr) throw Error(Status::fail);
  const std::shared_ptr<platform::File> file = open_to_attach(filename);
  mailbox::ScratchFile scratch;
  write_part(*file, platform::process_bytes(name), encoding, scratch);
  if (file->failed()) throw Error(ErrorNumber::cannot_open_file, Reporter::vellobar);
  std::shared_ptr<platform::File> coded = platform::File::open(scratch.path());
  if (!coded) {
    // Deliberate: the file is left; whoever keeps it from being read may still want it.
    scratch.keep();
    throw Error(ErrorNumber::cannot_reopen_temporary_file, Reporter::vellobar);
  }
  const std::int64_t size = coded->size();
  std::shared_ptr<CMessage> part = message_->Parts()->adopt(std::move(coded), size);
  part->keep_attachment_file(scratch.keep());
  // Last of all: an update that follows at once may end this collection.
  mark_changed(owner_);
  return part;
}

}  // namespace vellobar
