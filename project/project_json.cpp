#include "project/project_json.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <functional>

#include "support/json_read.h"
#include "support/text_fold.h"
#include "support/uuid.h"

namespace morvane {

namespace {

constexpr std::size_t digestCharacters = 64;
constexpr std::size_t revisionWidth = 19;  // digits of the largest 64-bit signed number

bool isEscaped(char character) {
    return character == '"' || character == '\\' || character == '/' ||
           static_cast<unsigned char>(character) < 0x20;
}

void appendEscaped(std::string& out, char character) {
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::string_view named = "\"\\/\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\/bfnrt";
    const auto byte = static_cast<unsigned char>(character);
    if (const auto at = named.find(character); at != std::string_view::npos)
        out.append({'\\', letters[at]});
    else
        out.append("\\u00").append({digits[byte >> 4], digits[byte & 15]});
}

void appendText(std::string& out, std::string_view text) {
    out.push_back('"');
    while (!text.empty()) {
        const auto* const escaped = std::find_if(text.begin(), text.end(), isEscaped);
        out.append(text.begin(), escaped);
        text.remove_prefix(static_cast<std::size_t>(escaped - text.begin()));
        if (!text.empty()) {
            appendEscaped(out, text.front());
            text.remove_prefix(1);
        }
    }
    out.push_back('"');
}

void appendValid(std::string& out, std::string_view text) {
    if (isValidUtf8(text))
        appendText(out, text);
    else
        appendText(out, withInvalidBytesReplaced(text, "_"));
}

/// Writes one JSON object, a member a line; the caller names the keys in ascending order.
class ObjectWriter {
public:
    ObjectWriter(std::string& out, std::size_t indent) : out_(out), indent_(indent) { out_.push_back('{'); }

    std::string& key(std::string_view name) {
        out_.append(first_ ? "\n" : ",\n").append(indent_ + 2, ' ');
        first_ = false;
        return out_.append("\"").append(name).append("\" : ");
    }
    void text(std::string_view name, std::string_view value) { appendValid(key(name), value); }
    void optional(std::string_view name, const std::optional<std::string>& value) {
        if (value)
            text(name, std::string_view(*value));
    }
    void integer(std::string_view name, std::int64_t value) { key(name).append(std::to_string(value)); }
    void flag(std::string_view name, bool value) { key(name).append(value ? "true" : "false"); }
    void location(std::string_view name, const FileUrl& value) { text(name, absoluteText(value)); }
    void number(std::string_view name, double value) {
        char digits[400];
        const auto end = std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed);
        key(name).append(digits, end.ptr);
    }
    void list(std::string_view name, std::size_t count, const std::function<void(std::size_t)>& element) {
        key(name).push_back('[');
        for (std::size_t index = 0; index < count; ++index) {
            out_.append(index == 0 ? "\n" : ",\n").append(indent_ + 4, ' ');
            element(index);
        }
        if (count > 0)
            out_.append("\n").append(indent_ + 2, ' ');
        out_.push_back(']');
    }
    void end() { out_.append("\n").append(indent_, ' ').push_back('}'); }

private:
    std::string& out_;
    std::size_t indent_;
    bool first_ = true;
};

void appendRequest(std::string& out, std::size_t indent, const ProjectRequest& request) {
    ObjectWriter object(out, indent);
    object.flag("createFCP", request.createFCP);
    object.integer("frameRate", request.frameRate);
    object.integer("height", request.height);
    object.text("name", request.name);
    object.location("parentURL", request.parentURL);
    object.list("sources", request.sources.size(),
                [&](std::size_t index) { appendValid(out, absoluteText(request.sources[index])); });
    object.integer("width", request.width);
    object.end();
}

void appendItem(std::string& out, std::size_t indent, const ProjectPlanItem& item) {
    ObjectWriter object(out, indent);
    object.text("category", item.category);
    object.optional("duplicateOf", item.duplicateOf);
    object.text("id", item.id);
    object.flag("isCameraCard", item.isCameraCard);
    object.number("modified", item.modified);
    object.text("relativeDestination", item.relativeDestination);
    object.integer("size", item.size);
    object.optional("sourceHash", item.sourceHash);
    object.location("sourceURL", item.sourceURL);
    object.end();
}

void appendPlan(std::string& out, std::size_t indent, const ProjectPlan& plan) {
    ObjectWriter object(out, indent);
    object.text("id", plan.id);
    object.list("items", plan.items.size(),
                [&](std::size_t index) { appendItem(out, indent + 4, plan.items[index]); });
    appendRequest(object.key("request"), indent + 2, plan.request);
    object.location("rootURL", plan.rootURL);
    object.list("warnings", plan.warnings.size(),
                [&](std::size_t index) { appendValid(out, plan.warnings[index]); });
    object.end();
}

void appendRecord(std::string& out, std::size_t indent, const ProjectFileRecord& record) {
    ObjectWriter object(out, indent);
    object.optional("error", record.error);
    object.text("itemID", record.itemID);
    object.optional("sha256", record.sha256);
    object.text("state", rawText(record.state));
    object.end();
}

/// Record `index` of `count` as it stands in the list.
std::string recordField(const ProjectFileRecord& record, std::size_t index, std::size_t count) {
    std::string field;
    appendRecord(field, 4, record);
    if (index + 1 < count)
        field.push_back(',');
    return field;
}

/// Room for what the record is now, and for its verified form.
std::size_t fieldWidth(const ProjectFileRecord& record, std::size_t widthNow) {
    std::string verified;
    appendRecord(
        verified, 4,
        {record.itemID, ProjectFileState::verified, std::string(digestCharacters, '0'), std::nullopt});
    return std::max(verified.size() + 1, widthNow);
}

/// "revision" to "updatedAt", always of the same length.
std::string headField(std::int64_t revisionNumber, std::int64_t schemaVersion, std::int64_t updatedAt) {
    const std::string revision = std::to_string(revisionNumber);
    std::string field = "  \"revision\" : " + revision + ",";
    field.append(revisionWidth - std::min(revision.size(), revisionWidth), ' ');
    field.append("\n  \"schemaVersion\" : ").append(std::to_string(schemaVersion));
    field.append(",\n  \"updatedAt\" : \"").append(dateText(updatedAt)).append("\",");
    return field;
}

std::int64_t dateOf(const std::string& text) {
    const auto number = [&text](std::size_t at, std::size_t count) {
        int value = 0;
        for (std::size_t index = at; index < at + count; ++index) {
            if (index >= text.size() || text[index] < '0' || text[index] > '9')
                throw JsonError("updatedAt");
            value = value * 10 + (text[index] - '0');
        }
        return value;
    };
    constexpr std::string_view form = "0000-00-00T00:00:00";
    for (const std::size_t at : {4U, 7U, 10U, 13U, 16U})
        if (at >= text.size() || text[at] != form[at])
            throw JsonError("updatedAt");
    std::tm parts{};
    parts.tm_year = number(0, 4) - 1900;
    parts.tm_mon = number(5, 2) - 1;
    parts.tm_mday = number(8, 2);
    parts.tm_hour = number(11, 2);
    parts.tm_min = number(14, 2);
    parts.tm_sec = number(17, 2);
    std::tm given = parts;
    const std::int64_t seconds = ::timegm(&parts);
    if (parts.tm_mon != given.tm_mon || parts.tm_mday != given.tm_mday || parts.tm_hour != given.tm_hour ||
        parts.tm_min != given.tm_min || parts.tm_sec != given.tm_sec)
        throw JsonError("updatedAt");
    const std::string_view zone = std::string_view(text).substr(form.size());
    if (zone == "Z")
        return seconds;
    if (zone.size() != 6 || (zone[0] != '+' && zone[0] != '-') || zone[3] != ':')
        throw JsonError("updatedAt");
    const std::int64_t shift = number(form.size() + 1, 2) * 3600 + number(form.size() + 4, 2) * 60;
    return zone[0] == '+' ? seconds - shift : seconds + shift;
}

std::string requiredUuid(const nlohmann::json& object, const char* key) {
    const auto uuid = parseUuid(requiredText(object, key));
    if (!uuid)
        throw JsonError(key);
    return *uuid;
}

FileUrl locationOf(const std::string& text, const char* key) {
    auto url = parseUrl(text);
    if (!url)
        throw JsonError(key);
    return *std::move(url);
}

ProjectRequest decodeRequest(const nlohmann::json& object) {
    requiredObject(object);
    ProjectRequest request;
    request.createFCP = requiredFlag(object, "createFCP");
    request.frameRate = requiredInteger(object, "frameRate");
    request.height = requiredInteger(object, "height");
    request.name = requiredText(object, "name");
    request.parentURL = locationOf(requiredText(object, "parentURL"), "parentURL");
    for (const auto& text : requiredTexts(object, "sources"))
        request.sources.push_back(locationOf(text, "sources"));
    request.width = requiredInteger(object, "width");
    return request;
}

ProjectPlanItem decodeItem(const nlohmann::json& object) {
    requiredObject(object);
    ProjectPlanItem item;
    item.category = requiredText(object, "category");
    item.duplicateOf = optionalText(object, "duplicateOf");
    item.id = requiredUuid(object, "id");
    item.isCameraCard = requiredFlag(object, "isCameraCard");
    item.modified = requiredNumber(object, "modified");
    item.relativeDestination = requiredText(object, "relativeDestination");
    item.size = requiredInteger(object, "size");
    item.sourceHash = optionalText(object, "sourceHash");
    item.sourceURL = locationOf(requiredText(object, "sourceURL"), "sourceURL");
    return item;
}

const nlohmann::json& member(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end())
        throw JsonError(key);
    return *found;
}

ProjectPlan decodePlan(const nlohmann::json& object) {
    requiredObject(object);
    ProjectPlan plan;
    plan.id = requiredUuid(object, "id");
    for (const auto& item : requiredArray(object, "items"))
        plan.items.push_back(decodeItem(item));
    plan.request = decodeRequest(member(object, "request"));
    plan.rootURL = locationOf(requiredText(object, "rootURL"), "rootURL");
    plan.warnings = requiredTexts(object, "warnings");
    return plan;
}

ProjectFileRecord decodeRecord(const nlohmann::json& object) {
    requiredObject(object);
    ProjectFileRecord record;
    record.error = optionalText(object, "error");
    record.itemID = requiredUuid(object, "itemID");
    record.sha256 = optionalText(object, "sha256");
    const auto state = fileState(requiredText(object, "state"));
    if (!state)
        throw JsonError("state");
    record.state = *state;
    return record;
}

}  // namespace

std::string dateText(std::int64_t seconds) {
    const std::time_t time = seconds;
    std::tm parts{};
    ::gmtime_r(&time, &parts);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

std::string encodePlan(const ProjectPlan& plan) {
    std::string out;
    appendPlan(out, 0, plan);
    return out.append("\n");
}

std::string encodeManifest(const ProjectManifest& manifest) {
    return ManifestText(manifest).text();
}

std::size_t expectedManifestSize(const ProjectPlan& plan) {
    constexpr std::size_t perItem = 10;  // indentation, separator and line end of a list element
    std::string text;
    ProjectFileRecord record{plan.id, ProjectFileState::verified, std::string(digestCharacters, '0'), {}};
    appendRecord(text, 4, record);
    std::size_t size = (text.size() + perItem) * plan.items.size();
    for (const auto& item : plan.items) {
        text.clear();
        appendItem(text, 6, item);
        size += text.size() + perItem;
    }
    return size;
}

ProjectManifest decodeManifest(std::string_view text) {
    const nlohmann::json object = parseJson(text);
    requiredObject(object);
    ProjectManifest manifest;
    manifest.fcpxmlFilename = optionalText(object, "fcpxmlFilename");
    for (const auto& record : requiredArray(object, "files"))
        manifest.files.push_back(decodeRecord(record));
    manifest.plan = decodePlan(member(object, "plan"));
    manifest.revision = requiredInteger(object, "revision");
    manifest.schemaVersion = requiredInteger(object, "schemaVersion");
    manifest.updatedAt = dateOf(requiredText(object, "updatedAt"));
    manifest.warnings = requiredTexts(object, "warnings");
    return manifest;
}

ManifestText::ManifestText(const ProjectManifest& manifest) : schemaVersion_(manifest.schemaVersion) {
    records_.reserve(manifest.files.size());
    text_ = "{\n";
    if (manifest.fcpxmlFilename) {
        text_.append("  \"fcpxmlFilename\" : ");
        appendValid(text_, *manifest.fcpxmlFilename);
        text_.append(",\n");
    }
    text_.append("  \"files\" : [");
    for (std::size_t index = 0; index < manifest.files.size(); ++index) {
        text_.append("\n    ");
        const ProjectFileRecord& record = manifest.files[index];
        const std::string field = recordField(record, index, manifest.files.size());
        records_.push_back({text_.size(), fieldWidth(record, field.size())});
        text_.append(field).resize(records_.back().offset + records_.back().count, ' ');
    }
    text_.append(manifest.files.empty() ? "],\n  \"plan\" : " : "\n  ],\n  \"plan\" : ");
    appendPlan(text_, 2, manifest.plan);
    text_.append(",\n");
    const std::string head = headField(manifest.revision, schemaVersion_, manifest.updatedAt);
    head_ = {text_.size(), head.size()};
    text_.append(head).append("\n  \"warnings\" : [");
    for (std::size_t index = 0; index < manifest.warnings.size(); ++index) {
        text_.append(index == 0 ? "\n    " : ",\n    ");
        appendValid(text_, manifest.warnings[index]);
    }
    text_.append(manifest.warnings.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

bool ManifestText::setRecord(std::size_t index, const ProjectFileRecord& record) {
    std::string field = recordField(record, index, records_.size());
    const Range range = records_[index];
    if (field.size() > range.count)
        return false;
    field.resize(range.count, ' ');
    text_.replace(range.offset, range.count, field);
    return true;
}

void ManifestText::setHead(std::int64_t revision, std::int64_t updatedAt) {
    text_.replace(head_.offset, head_.count, headField(revision, schemaVersion_, updatedAt));
}

}  // namespace morvane
