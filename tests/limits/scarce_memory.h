// Something that a client does, tried again and again: every time another one of its allocations is refused, alone or
// with all that follow it, until it does not come to the refused one any more. Each time the failure has to be a lack
// of memory and nothing else, and nothing may be left behind, in memory or on the disk.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "platform/temporary_file.h"
#include "tests/support/files.h"

namespace vellobar::tests {

/// A mailbox of its own that is not locked yet, and what a test keeps of it.
struct Bench {
  Bench(const TemporaryFolder& files, const TemporaryFolder& temporary_files, std::string_view mail);

  std::shared_ptr<CMessage> message(std::int64_t index = 0) { return control->Messages()->Item(index); }
  /// What an update would write.
  std::string written();

  const TemporaryFolder& folder;     ///< of the mailbox
  const TemporaryFolder& temporary;  ///< of temporary files, of which none may be left at the end
  std::string path = folder.path("mail");
  std::unique_ptr<CVellobar> control = std::make_unique<CVellobar>();
  std::string seen;  ///< what the client read
};

using Step = std::function<void(Bench&)>;
/// What is true afterwards; the flag tells that the act did not fail.
using Check = std::function<void(Bench&, bool is_done)>;

struct Scenario {
  std::string_view mail;
  Step prepare;  ///< with all memory
  Step act;      ///< with some of it refused
  Check check;   ///< with all memory again
};

/// Runs it as often as it allocates. Where everything takes longer (sanitizers, Windows) with every few of the
/// allocations.
void refuse_each_allocation(const Scenario& scenario);

}  // namespace vellobar::tests
