#include "ctl/verbatim_arguments.h"

#include <CLI/CLI.hpp>

namespace morvane {
namespace {

constexpr char guard = '\0';  // no argument of a process can hold it

std::string withoutGuard(const std::string& text) {
    return text.starts_with(guard) ? text.substr(1) : text;
}

}  // namespace

std::vector<std::string> guardedArguments(int argc, char** argv) {
    std::vector<std::string> arguments;
    for (int index = argc - 1; index > 0; --index) {
        const std::string text = argv[index];
        const bool isGuarded = text.starts_with('[') && text.ends_with(']');
        arguments.push_back(isGuarded ? guard + text : text);
    }
    return arguments;
}

void takeVerbatim(CLI::App& app) {
    for (CLI::Option* option : app.get_options())
        option->transform(withoutGuard);
    for (CLI::App* command : app.get_subcommands({}))
        takeVerbatim(*command);
}

CLI::Option* addTexts(CLI::App& app, const std::string& name, std::vector<std::string>& target,
                      const std::string& help) {
    const auto take = [&target](const CLI::results_t& texts) {
        target = texts;
        return true;
    };
    return app.add_option(name, take, help)->expected(1, -1)->allow_extra_args()->type_name(" ");
}

}  // namespace morvane
