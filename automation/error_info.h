// The thread's automation error information: who reports, under which GUID, and the text a client reads.
#pragma once

#include "errors/error.h"

namespace vellobar::automation {

/// Fills the thread's error information for a numbered error. When that fails the number still reaches the client.
void set_error_information(ErrorNumber number, Reporter reporter) noexcept;

/// Leaves the thread without error information.
void clear_error_information() noexcept;

}  // namespace vellobar::automation
