// search
#include <iostream>
#include <memory>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "catalog/asset_filter.h"
#include "ctl/session.h"
#include "ctl/stop_signals.h"
#include "ctl/store_access.h"
#include "ctl/verbatim_arguments.h"
#include "support/format_text.h"

namespace morvane {
namespace {

struct SearchArguments {
    std::string kind{kindChoices[0]};
    std::string scope{scope::all};
    std::vector<std::string> words;
    bool json = false;
};

bool isNamedScope(const std::string& text) {
    return text == scope::all || text == scope::favorites || text == scope::recent;
}

CatalogQuery makeQuery(const SearchArguments& arguments, const Settings& settings) {
    const auto kind = kindFilterNamed(arguments.kind);
    if (!kind)
        throw UsageError("--kind 需要 全部、音频、视频、图片 或 其他。");
    if (arguments.scope.empty())
        throw UsageError("--scope 需要 all、favorites、recent 或文件夹路径。");
    CatalogQuery query;
    for (const std::string& text : arguments.words)
        for (std::string& word : searchWords(text))
            query.words.push_back(std::move(word));
    query.kind = *kind;
    // A folder is taken as it is written, so that it can name a library folder byte for byte.
    const bool isVerbatim = isNamedScope(arguments.scope) || arguments.scope.starts_with('/');
    query.scope = isVerbatim ? arguments.scope : absolutePath(arguments.scope);
    query.favorites = settings.favorites;
    query.recent = settings.recent;
    return query;
}

/// One array, written row by row: a result may hold a million records.
void printAssets(const AssetList& assets) {
    std::cout << "[";
    for (std::size_t row = 0; row < assets.size(); ++row) {
        throwIfStopped();
        std::cout
            << (row == 0 ? "\n  " : ",\n  ")
            << encodeAsset(assets.asset(row)).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }
    std::cout << (assets.empty() ? "]\n" : "\n]\n");
}

void printRows(const AssetList& assets) {
    for (std::size_t row = 0; row < assets.size(); ++row) {
        throwIfStopped();
        const AssetView asset = assets.at(row);
        printLine(std::string(asset.kind()) + "  " + formatBytes(asset.size) + "  " +
                  std::string(asset.path));
    }
    printLine(formatCount(static_cast<std::int64_t>(assets.size())) + " 项");
}

ExitStatus search(const Session& session, const SearchArguments& arguments) {
    StoreReader store(session);
    const SharedAssets found = store.catalog.query(makeQuery(arguments, store.settings));
    throwIfStopped();
    if (arguments.json)
        printAssets(*found);
    else
        printRows(*found);
    return ExitStatus::Done;
}

}  // namespace

void addSearchCommand(CLI::App& app, Session& session) {
    auto arguments = std::make_shared<SearchArguments>();
    CLI::App* command = app.add_subcommand("search", "搜索素材：所有关键词都要出现在名称、分类或素材库名中");
    command->add_option("--kind", arguments->kind, "类型：全部、音频、视频、图片 或 其他")->type_name("K");
    command->add_option("--scope", arguments->scope, "范围：all、favorites、recent 或文件夹路径")
        ->type_name("S");
    command->add_flag("--json", arguments->json, "在标准输出给出一份 JSON");
    addTexts(*command, "WORD", arguments->words, "关键词");
    command->callback([&session, arguments] {
        session.action = [&session, arguments] { return search(session, *arguments); };
    });
}

}  // namespace morvane
