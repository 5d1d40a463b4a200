// The one exception type of the component, and the table of its numbered errors. A failure is either numbered (number,
// English message, the class that reports it) or a bare status without text. The automation layer is the only place
// that turns these into HRESULTs; nothing else catches them to change their meaning.
#pragma once

#include <exception>

namespace vellobar {

/// The component's error numbers. 30003 and numbers above 30014 are not used.
enum class ErrorNumber : int {
  scan_out_of_memory = 8,
  mailbox_locked = 30000,
  cannot_open_mailbox = 30001,
  cannot_update_mailbox = 30002,
  cannot_reopen_temporary_file = 30004,
  cannot_load_text = 30005,
  cannot_load_headers = 30006,
  filename_not_given = 30007,
  cannot_access_destination = 30008,
  unknown_encoder = 30009,
  mailbox_not_locked = 30010,
  cannot_open_file = 30011,
  cannot_write_temporary_file = 30012,
  unsupported_encoding = 30013,
  out_of_memory = 30014,
};

/// The class on whose behalf an error is reported; it decides the source that a client reads.
enum class Reporter { none, vellobar, message, messages, attachment };

/// A failure without number and text.
enum class Status { numbered, fail, invalid_argument, pointer, out_of_memory, overflow };

class Error : public std::exception {
 public:
  /// A numbered error with its message from the table.
  Error(ErrorNumber number, Reporter reporter) noexcept;
  /// A bare status.
  explicit Error(Status status) noexcept;

  Status status() const noexcept { return status_; }
  /// Meaningful only when status() is Status::numbered.
  ErrorNumber number() const noexcept { return number_; }
  Reporter reporter() const noexcept { return reporter_; }
  /// The English message of the number, or a short word for a bare status.
  const char* what() const noexcept override;

 private:
  Status status_;
  ErrorNumber number_{};
  Reporter reporter_ = Reporter::none;
};

/// The English message that belongs to a number.
const char* message_of(ErrorNumber number) noexcept;

}  // namespace vellobar
