// Mail that is made to hurt, in any size, and what a client does with a mailbox from its locking to its end. The tests
// hold it to a small stack and to little memory; `growth` in bench/ counts that the work grows with the size alone.
#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "mailbox/vellobar.h"

namespace vellobar::tests {

struct HugeMail {
  /// Unique, without spaces.
  std::string_view name;
  /// Writes a mailbox of about this many bytes.
  void (*write)(std::ostream& to, std::size_t size);
  /// Bytes of the mailbox, in the ordinary run and in the full one.
  std::size_t usual_size, full_size;
  /// The most memory a step may take, in bytes for each byte of the mailbox; more than 4 only where the mail is nothing
  /// but tiny pieces of which a client asks for every one.
  double most_memory = 4;
  /// Its header blocks all run on to its end, so that its text as a client reads it, and what is written, is as large
  /// as the square of it.
  bool is_read_squared = false;
};

std::span<const HugeMail> huge_mails();

struct ClientStep {
  std::string_view name;
  /// Does it with a mailbox in which the steps before were done. Returns something of what it saw.
  std::size_t (*act)(CVellobar& control);
};

/// Lock, headers, texts, parts, attachments, writing, Update, Unlock, in this order.
std::span<const ClientStep> client_steps();

}  // namespace vellobar::tests
