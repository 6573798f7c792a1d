#pragma once

#include "Page.h"

namespace Gallery {

/// \name The chapters of the page, a source file each
/// @{
void ShowBlendModes(Page& page);
void ShowGradients(Page& page);
void ShowBitmaps(Page& page);
void ShowGroups(Page& page);
void ShowClips(Page& page);
void ShowFormats(Page& page);
void ShowColourTransforms(Page& page);
void ShowStrokes(Page& page);
void ShowOutlines(Page& page);
void ShowBrushes(Page& page);
void ShowTexts(Page& page);
void ShowSwitches(Page& page);
/// @}

} // namespace Gallery
