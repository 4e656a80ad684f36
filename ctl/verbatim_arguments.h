// Arguments taken letter by letter. The parser reads a "[a,b]" as the two values a and b, "[]" as no
// value and "{}" as an empty list; here they are a file name or a search word like any other.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace morvane {

/// The arguments of the process without its name, last one first as CLI::App::parse() takes them, guarded
/// against the parser's own reading. parse() on an app that takeVerbatim() has prepared gives the options
/// the original texts.
std::vector<std::string> guardedArguments(int argc, char** argv);

/// Prepares every option of `app` and of its commands; call when all of them have been added.
void takeVerbatim(CLI::App& app);

/// Adds an option that takes any number of texts into `target`, which outlives the parser.
CLI::Option* addTexts(CLI::App& app, const std::string& name, std::vector<std::string>& target,
                      const std::string& help);

}  // namespace morvane
