// What a container says about itself through the ambient properties of its client site.
#pragma once

#include <ole2.h>

namespace vellobar::automation {

/// Whether the container says that its user runs it; false in design mode and where it says nothing.
bool is_run_time(IOleClientSite* client);

}  // namespace vellobar::automation
