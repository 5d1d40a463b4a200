// The about box: name, version and licence.
#pragma once

namespace vellobar::automation {

/// Shows the box and waits until it is closed; returns at once where nobody could see it.
void show_about_box();

}  // namespace vellobar::automation
