#include "project/project_json.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "project/project_errors.h"
#include "support/json_read.h"

namespace morvane::test {
namespace {

ProjectManifest sample() {
    ProjectManifest manifest;
    manifest.revision = 7;
    manifest.updatedAt = 1'794'709'800;  // 2026-11-15T02:30:00Z
    ProjectPlan& plan = manifest.plan;
    plan.id = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";
    plan.request.name = "旅拍/\"a\"";
    plan.request.parentURL = folderLocation("/Volumes/项目");
    plan.request.sources = {folderLocation("/Volumes/CARD"), *parseUrl("https://example.com/a")};
    plan.rootURL = folderLocation("/Volumes/项目/旅拍");
    plan.warnings = {"一", "二\n\x01"};
    ProjectPlanItem first;
    first.id = "00000000-0000-4000-8000-000000000001";
    first.sourceURL = fileLocation("/Volumes/CARD/DCIM/A b\xFF.MOV");
    first.relativeDestination = "02_原始素材/A b_.MOV";
    first.category = "拍摄素材";
    first.size = 9'223'372'036'854'775'807;
    first.modified = 1'700'000'000.5;
    ProjectPlanItem second = first;
    second.id = "00000000-0000-4000-8000-000000000002";
    second.relativeDestination = "02_原始素材/B.MOV";
    second.size = 0;
    second.modified = 0;
    second.isCameraCard = true;
    second.duplicateOf = "/Volumes/CARD/DCIM/A b_.MOV";
    second.sourceHash = std::string(64, 'a');
    plan.items = {first, second};
    manifest.files = {{first.id, ProjectFileState::verified, std::string(64, 'b'), {}},
                      {second.id, ProjectFileState::cancelled, {}, std::string(project_text::itemStopped)}};
    manifest.warnings = {"一", "二\n\x01", "三"};
    return manifest;
}

/// The keys of every object in the order in which they stand in the text.
std::vector<std::string> keysInOrder(const nlohmann::ordered_json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items())
        keys.push_back(key);
    return keys;
}

using Keys = std::vector<std::string>;

TEST(ManifestJson, KeysStandSortedAndOptionalOnesAreAbsent) {
    ProjectManifest manifest = sample();
    auto document = nlohmann::ordered_json::parse(encodeManifest(manifest));
    EXPECT_EQ(keysInOrder(document),
              (Keys{"files", "plan", "revision", "schemaVersion", "updatedAt", "warnings"}));
    EXPECT_EQ(keysInOrder(document["plan"]), (Keys{"id", "items", "request", "rootURL", "warnings"}));
    EXPECT_EQ(keysInOrder(document["plan"]["request"]),
              (Keys{"createFCP", "frameRate", "height", "name", "parentURL", "sources", "width"}));
    EXPECT_EQ(keysInOrder(document["plan"]["items"][0]), (Keys{"category", "id", "isCameraCard", "modified",
                                                               "relativeDestination", "size", "sourceURL"}));
    EXPECT_EQ(keysInOrder(document["plan"]["items"][1]),
              (Keys{"category", "duplicateOf", "id", "isCameraCard", "modified", "relativeDestination",
                    "size", "sourceHash", "sourceURL"}));
    EXPECT_EQ(keysInOrder(document["files"][0]), (Keys{"itemID", "sha256", "state"}));
    EXPECT_EQ(keysInOrder(document["files"][1]), (Keys{"error", "itemID", "state"}));
    manifest.fcpxmlFilename = "MORVANE整理导入-X.fcpxml";
    document = nlohmann::ordered_json::parse(encodeManifest(manifest));
    EXPECT_EQ(keysInOrder(document).front(), "fcpxmlFilename");
}

TEST(ManifestJson, ValuesInTheirTextForms) {
    const std::string text = encodeManifest(sample());
    for (const char* part :
         {"\"updatedAt\" : \"2026-11-15T02:30:00Z\"", "\"schemaVersion\" : 1,", "\"revision\" : 7,",
          "\"file:\\/\\/\\/Volumes\\/CARD\\/DCIM\\/A%20b%FF.MOV\"", "\"file:\\/\\/\\/Volumes\\/CARD\\/\"",
          "\"https:\\/\\/example.com\\/a\"", "\"size\" : 9223372036854775807", "\"modified\" : 1700000000.5",
          "\"modified\" : 0,", "\"旅拍\\/\\\"a\\\"\"", "\"二\\n\\u0001\"", "\"isCameraCard\" : true",
          "\"02_原始素材\\/B.MOV\""})
        EXPECT_NE(text.find(part), std::string::npos) << part;
    EXPECT_EQ(text.find("/Vol"), text.find("\\/Vol") + 1) << "every slash is escaped";
}

TEST(ManifestJson, RoundTrip) {
    ProjectManifest manifest = sample();
    EXPECT_EQ(decodeManifest(encodeManifest(manifest)), manifest);
    manifest.fcpxmlFilename = "a.fcpxml";
    manifest.files.clear();
    manifest.plan.items.clear();
    manifest.plan.warnings.clear();
    manifest.warnings.clear();
    manifest.plan.request.sources.clear();
    EXPECT_EQ(decodeManifest(encodeManifest(manifest)), manifest);
}

TEST(ManifestJson, AnyIndentationIsAccepted) {
    const auto document = nlohmann::json::parse(encodeManifest(sample()));
    EXPECT_EQ(decodeManifest(document.dump()), sample());
}

TEST(ManifestJson, BytesThatAreNoTextNeverReachTheFile) {
    ProjectManifest manifest = sample();
    manifest.files[1].error = "bad \xFF text";
    EXPECT_EQ(decodeManifest(encodeManifest(manifest)).files[1].error, "bad _ text");
}

using Change = std::function<void(nlohmann::json&)>;

void expectRefused(const std::string& what, const Change& change) {
    auto document = nlohmann::json::parse(encodeManifest(sample()));
    change(document);
    EXPECT_THROW(decodeManifest(document.dump()), JsonError) << what;
}

TEST(ManifestJson, MissingKeysAndOtherTypesAreRefused) {
    const auto whole = nlohmann::json::parse(encodeManifest(sample()));
    for (const auto& [key, value] : whole.items())
        expectRefused(key, [&key = key](nlohmann::json& document) { document.erase(key); });
    for (const auto& [key, value] : whole["plan"].items())
        expectRefused(key, [&key = key](nlohmann::json& document) { document["plan"].erase(key); });
    for (const auto& [key, value] : whole["plan"]["request"].items())
        expectRefused(key,
                      [&key = key](nlohmann::json& document) { document["plan"]["request"].erase(key); });
    for (const auto& [key, value] : whole["plan"]["items"][0].items())
        expectRefused(key,
                      [&key = key](nlohmann::json& document) { document["plan"]["items"][0].erase(key); });
    for (const char* key : {"itemID", "state"})
        expectRefused(key, [key](nlohmann::json& document) { document["files"][0].erase(key); });
    for (const auto& [key, value] : whole["plan"]["items"][1].items())
        expectRefused(key, [&key = key](nlohmann::json& document) {
            document["plan"]["items"][1][key] = nlohmann::json::array();
        });
    expectRefused("size", [](nlohmann::json& document) { document["plan"]["items"][0]["size"] = 1.5; });
    expectRefused("size", [](nlohmann::json& document) { document["plan"]["items"][0]["size"] = "1"; });
    expectRefused("flag", [](nlohmann::json& document) { document["plan"]["items"][0]["isCameraCard"] = 1; });
    expectRefused("id", [](nlohmann::json& document) { document["plan"]["id"] = "no-uuid"; });
    expectRefused("url", [](nlohmann::json& document) { document["plan"]["rootURL"] = "relative/path"; });
    expectRefused("error", [](nlohmann::json& document) { document["files"][0]["error"] = 1; });
    EXPECT_THROW(decodeManifest("[]"), JsonError);
    EXPECT_THROW(decodeManifest("{"), JsonError);
    EXPECT_THROW(decodeManifest(""), JsonError);
}

TEST(ManifestJson, StateTextsAreExact) {
    for (const char* state : {"Verified", "done", "", "PENDING", "canceled"})
        expectRefused(state, [state](nlohmann::json& document) { document["files"][0]["state"] = state; });
    for (const auto state : {ProjectFileState::pending, ProjectFileState::copying, ProjectFileState::verified,
                             ProjectFileState::failed, ProjectFileState::cancelled}) {
        ProjectManifest manifest = sample();
        manifest.files[0].state = state;
        EXPECT_EQ(decodeManifest(encodeManifest(manifest)).files[0].state, state);
    }
}

TEST(ManifestJson, DatesAreStrict) {
    for (const char* date : {"2026-11-15T02:30:00.5Z", "2026-11-15T02:30:00", "2026-11-15 02:30:00Z",
                             "2026-13-15T02:30:00Z", "2026-02-30T02:30:00Z", "2026-11-15T25:30:00Z",
                             "2026-11-15", "", "2026-11-15T02:30:00+0800", "2026-11-15T02:30:00Zx"})
        expectRefused(date, [date](nlohmann::json& document) { document["updatedAt"] = date; });
    expectRefused("number", [](nlohmann::json& document) { document["updatedAt"] = 1; });
    auto document = nlohmann::json::parse(encodeManifest(sample()));
    document["updatedAt"] = "2026-11-15T10:30:00+08:00";
    EXPECT_EQ(decodeManifest(document.dump()).updatedAt, sample().updatedAt);
}

TEST(ManifestText, RecordsChangeInPlace) {
    ProjectManifest manifest = sample();
    manifest.files[1] = {manifest.plan.items[1].id, ProjectFileState::pending, {}, {}};
    ManifestText text(manifest);
    const std::size_t size = text.text().size();
    for (const auto state :
         {ProjectFileState::copying, ProjectFileState::verified, ProjectFileState::pending}) {
        manifest.files[1].state = state;
        manifest.files[1].sha256.reset();
        if (state == ProjectFileState::verified)
            manifest.files[1].sha256 = std::string(64, 'c');
        ++manifest.revision;
        manifest.updatedAt += 61;
        ASSERT_TRUE(text.setRecord(1, manifest.files[1]));
        text.setHead(manifest.revision, manifest.updatedAt);
        EXPECT_EQ(text.text().size(), size);
        EXPECT_EQ(decodeManifest(text.text()), manifest);
    }
    manifest.revision = 9'223'372'036'854'775'807;
    text.setHead(manifest.revision, manifest.updatedAt);
    EXPECT_EQ(decodeManifest(text.text()), manifest);
    manifest.files[0].error = std::string(1000, 'x');
    const std::string before = text.text();
    EXPECT_FALSE(text.setRecord(0, manifest.files[0]));
    EXPECT_EQ(text.text(), before);
}

TEST(ManifestText, TheExpectedSizeIsTheVerifiedOne) {
    ProjectManifest manifest = sample();
    for (auto& record : manifest.files)
        record = {record.itemID, ProjectFileState::verified, std::string(64, 'd'), {}};
    const std::size_t real = encodeManifest(manifest).size();
    const std::size_t expected = expectedManifestSize(manifest.plan);
    EXPECT_LE(expected, real + 64);
    EXPECT_GE(expected + 1024, real) << "only the few bytes around the lists may be missing";
}

TEST(PlanJson, IsOneObject) {
    const ProjectPlan plan = sample().plan;
    const auto document = nlohmann::json::parse(encodePlan(plan));
    EXPECT_EQ(document, nlohmann::json::parse(encodeManifest(sample()))["plan"]);
}

}  // namespace
}  // namespace morvane::test
