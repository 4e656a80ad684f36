// What a call that the argument parser refuses is told.
#pragma once

#include <string>

namespace CLI {
class ParseError;
}

namespace morvane {

/// The parser's refusal in the language of the product; the parser's own sentence for one that no
/// command here can meet.
std::string usageText(const CLI::ParseError& error);

}  // namespace morvane
