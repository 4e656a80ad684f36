#include "ctl/usage_text.h"

#include <CLI/CLI.hpp>

namespace morvane {
namespace {

std::string before(const std::string& text, const char* mark) {
    return text.substr(0, text.find(mark));
}

std::string after(const std::string& text, const std::string& mark) {
    const std::size_t at = text.find(mark);
    return at == std::string::npos ? text : text.substr(at + mark.size());
}

}  // namespace

// An error of the parser carries its kind and an English sentence; the names are taken from that.
std::string usageText(const CLI::ParseError& error) {
    std::string text = error.what();
    switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
        case CLI::ExitCodes::RequiredError:
            if (text.starts_with("A subcommand"))
                return "没有给出命令，或没有这个命令；用 --help 查看用法。";
            return "缺少 " + before(text, " is required") + "。";
        case CLI::ExitCodes::ExtrasError:
            return "多余或不认识的参数：" + after(text, ": ");
        case CLI::ExitCodes::ArgumentMismatch:
            return before(text, ":") +
                   (text.find("At Most") == std::string::npos ? " 后面缺少值。" : " 只能给出一次。");
        case CLI::ExitCodes::ConversionError:
            return "值无效：" + after(text, ": ");
        case CLI::ExitCodes::ValidationError:
            return before(text, ": ") + " " + after(text, ": ") + "。";
        default:
            return text;
    }
}

}  // namespace morvane
