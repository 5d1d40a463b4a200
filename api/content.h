// What an attachment holds, for programs that want it in memory; CAttachment::Save writes it to a file.
#pragma once

#include <string>

namespace vellobar {

class CAttachment;

/// The decoded bytes; none once the mailbox that it is read from was unlocked. Error 30009 when the encoding is
/// unknown, 30005 when the mailbox cannot be read.
std::string decoded_bytes(const CAttachment& attachment);

}  // namespace vellobar
