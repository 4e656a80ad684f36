// How text is rendered on dark surfaces.
#pragma once

namespace morvane {

/// Makes small light text keep the weight its font was drawn with. The toolkit has FreeType embolden the
/// stems of the family's outlines, an amount made for dark text on white; on these surfaces Regular would
/// look like Bold. Works only before the first text of the process is measured or drawn; afterwards it
/// changes nothing.
void keepStemWeight();

}  // namespace morvane
