// Text that is safe to show in a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace morvane {

/// Control characters (C0, DEL, C1) replaced by "?" and bytes that are no UTF-8 by U+FFFD.
std::string withoutControls(std::string_view text);
/// `text` up to `columns` terminal columns, East Asian wide characters counting two; a cut text
/// ends in "…". Expects what withoutControls gives.
std::string cutToWidth(std::string_view text, std::size_t columns);

}  // namespace morvane
