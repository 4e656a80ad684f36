// categories
#include <memory>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "catalog/category.h"
#include "ctl/session.h"
#include "ctl/store_access.h"
#include "support/format_text.h"

namespace morvane {
namespace {

nlohmann::ordered_json encode(const CategoryList& categories) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const auto& category : categories)
        list.push_back({{"title", category->title},
                        {"key", category->key},
                        {"count", category->count},
                        {"children", encode(category->children)}});
    return list;
}

void print(const CategoryList& categories, const std::string& indent) {
    for (const auto& category : categories) {
        printLine(indent + category->title + "  " + formatCount(category->count));
        print(category->children, indent + "  ");
    }
}

ExitStatus categories(const Session& session, bool json) {
    StoreReader store(session);
    CategoryRequest request;
    request.assets = store.catalog.query({});
    request.favorites = store.settings.favorites;
    request.recentCount = store.settings.recent.size();
    request.roots = store.settings.roots;
    const CategoryList tree = buildCategories(request);
    if (json)
        printJson(encode(tree));
    else
        print(tree, "");
    return ExitStatus::Done;
}

}  // namespace

void addCategoriesCommand(CLI::App& app, Session& session) {
    auto json = std::make_shared<bool>(false);
    CLI::App* command = app.add_subcommand("categories", "显示分类与素材数量");
    command->add_flag("--json", *json, "在标准输出给出一份 JSON");
    command->callback(
        [&session, json] { session.action = [&session, json] { return categories(session, *json); }; });
}

}  // namespace morvane
