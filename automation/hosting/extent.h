// The size of the control's face in HIMETRIC (hundredths of a millimetre): at first 32 by 32 pixels of the screen.
#pragma once

#include <ole2.h>

namespace vellobar::automation {

/// Pixels as HIMETRIC, rounded to the nearest, where an inch has `pixels_per_inch`.
LONG himetric_of_pixels(LONG pixels, int pixels_per_inch);

/// 32 by 32 pixels by the screen's logical pixels per inch on each axis.
SIZEL initial_extent();

}  // namespace vellobar::automation
