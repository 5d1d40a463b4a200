#include "errors/error.h"

namespace vellobar {

namespace {

struct NumberedMessage {
  ErrorNumber number;
  const char* message;
};

constexpr NumberedMessage kMessages[] = {
    {ErrorNumber::scan_out_of_memory, "Not enough memory"},
    {ErrorNumber::mailbox_locked, "Mailbox locked! Call Unlock() method first"},
    {ErrorNumber::cannot_open_mailbox, "Cannot open mailbox file"},
    {ErrorNumber::cannot_update_mailbox, "Cannot open mailbox file for updating"},
    {ErrorNumber::cannot_reopen_temporary_file, "Could not re-open temporary file"},
    {ErrorNumber::cannot_load_text, "Could not load message text"},
    {ErrorNumber::cannot_load_headers, "Could not load headers for the message"},
    {ErrorNumber::filename_not_given, "Filename not specified"},
    {ErrorNumber::cannot_access_destination, "Could not access destination file"},
    {ErrorNumber::unknown_encoder, "Unknown encoder used"},
    {ErrorNumber::mailbox_not_locked, "Mailbox not locked"},
    {ErrorNumber::cannot_open_file, "Cannot open file"},
    {ErrorNumber::cannot_write_temporary_file, "Could not write to temporary file"},
    {ErrorNumber::unsupported_encoding, "Unsupported encoding type"},
    {ErrorNumber::out_of_memory, "Not enough memory"},
};

const char* word_for(Status status) noexcept {
  switch (status) {
    case Status::numbered:
      return "numbered error";
    case Status::fail:
      return "unspecified failure";
    case Status::invalid_argument:
      return "invalid argument";
    case Status::pointer:
      return "null pointer";
    case Status::out_of_memory:
      return "out of memory";
    case Status::overflow:
      return "value does not fit";
  }
  return "";
}

}  // namespace

Error::Error(ErrorNumber number, Reporter reporter) noexcept
    : status_(Status::numbered), number_(number), reporter_(reporter) {}

Error::Error(Status status) noexcept : status_(status) {}

const char* Error::what() const noexcept {
  return status_ == Status::numbered ? message_of(number_) : word_for(status_);
}

const char* message_of(ErrorNumber number) noexcept {
  for (const NumberedMessage& entry : kMessages) {
    if (entry.number == number) return entry.message;
  }
  return "";
}

}  // namespace vellobar
