// What assistive tools are told about the widgets of this folder.
#pragma once

namespace morvane {

/// Registers the interfaces: a segmented control as a group of radio buttons, a progress edge as a progress
/// bar, a brand image or artwork as a picture, an elided label as its whole text. Main thread; calling again
/// does nothing.
void installAccessibility();

}  // namespace morvane
