// The way back from a record to the control. All records of one locked mailbox share one `Owner`; the control clears it
// once, when it lets go of them (unlock, or its own end), and from then on none of them can reach it. An owner
// that never had a control only lets go of parts; records that belong to no mailbox hold no owner at all.
#pragma once

#include <memory>

#include "mailbox/recent_messages.h"

namespace vellobar {

class CVellobar;

struct Owner {
  CVellobar* control = nullptr;
  mailbox::RecentMessages recent;
};

using OwnerLink = std::shared_ptr<Owner>;

/// Tells the control, if there is one, that a client changed something in its mailbox. With AutoUpdate on, the mailbox
/// is written before this returns.
void mark_changed(OwnerLink owner);

}  // namespace vellobar
