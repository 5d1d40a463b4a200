// Makes the mailbox that benchmarks read: ordinary mail in mbox layout, the same bytes for the same size and seed on
// every machine. Two thirds of the bytes are Base64 attachments, the rest plain, quoted-printable and HTML text.
#pragma once

#include <cstdint>
#include <string>

namespace vellobar::bench {

struct MailboxSize {
  std::int64_t bytes = 0;
  std::int64_t messages = 0;
};

/// Writes whole messages to `path` until at least `bytes` are written. Lines end with a line feed. Throws
/// std::runtime_error when the file cannot be made, std::system_error when writing fails.
MailboxSize make_mailbox(const std::string& path, std::int64_t bytes, std::uint64_t seed);

}  // namespace vellobar::bench
