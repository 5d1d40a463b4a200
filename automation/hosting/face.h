// The control's face at design time: a letter in a frame, and the control's name below it. Drawn from lines and
// polygons, so that it is sharp at every size, on screens, printers and into metafiles.
#pragma once

#include <windows.h>

namespace vellobar::automation {

/// Fills the rectangle, in the logical units of `dc`. Nothing of `dc` is changed.
void draw_face(HDC dc, const RECT& bounds);

/// The face as a metafile for the clipboard, this large in HIMETRIC; null where the system has no room for it. The
/// caller deletes it.
HMETAFILE face_metafile(SIZE himetric);

}  // namespace vellobar::automation
