#include "mailbox/owner.h"

#include "mailbox/vellobar.h"

namespace vellobar {

void mark_changed(OwnerLink owner) {
  if (owner && owner->control != nullptr) owner->control->mark_changed();
}

}  // namespace vellobar
