// Random identifiers in their canonical 36-character upper-case text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace morvane {

/// A new random (version 4) identifier, for example "3F2504E0-4F89-41D3-9A0C-0305E82C3301". Any thread.
std::string newUuid();
/// The canonical upper-case form of 8-4-4-4-12 hexadecimal text in either case; nothing otherwise.
std::optional<std::string> parseUuid(std::string_view text);

}  // namespace morvane
