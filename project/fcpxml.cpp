#include "project/fcpxml.h"

#include <array>
#include <set>
#include <system_error>
#include <utility>

#include "project/dtd_validation.h"
#include "project/folder_sync.h"
#include "project/project_errors.h"
#include "project/project_template.h"
#include "project/safe_paths.h"
#include "project/temporary_file.h"
#include "project/verified_copy.h"
#include "support/path_text.h"
#include "support/system_error.h"
#include "support/uuid.h"

namespace morvane {

namespace {

struct EventPair {
    std::string_view category;
    std::string_view event;
};

constexpr std::array<EventPair, 5> eventPairs{{{"拍摄素材", "01_拍摄素材"},
                                               {"同期声", "02_同期声"},
                                               {"音乐", "03_音乐"},
                                               {"音效", "04_音效"},
                                               {"图形", "05_图形"}}};

constexpr std::string_view smartCollections =
    R"(<smart-collection name="视频" match="any"><match-media rule="is" type="videoOnly"/>)"
    R"(<match-media rule="is" type="videoWithAudio"/></smart-collection>)"
    R"(<smart-collection name="音频" match="all"><match-media rule="is" type="audioOnly"/></smart-collection>)";

constexpr std::string_view editEvent =
    R"(<event name="06_剪辑工程"><project name="主剪辑"><sequence format="projectFormat" duration="0s" )"
    R"(tcStart="0s" tcFormat="NDF" audioLayout="stereo" audioRate="48k"><spine/></sequence></project></event>)";

std::string_view audioRole(std::string_view category) {
    if (category == "音乐")
        return "music";
    return category == "音效" ? "effects" : "dialogue";
}

/// Text that XML can hold at all: valid UTF-8 without the characters XML 1.0 forbids.
std::string xmlText(std::string_view name) {
    std::string text = shownName(name);
    for (char& byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x20 && byte != '\t' && byte != '\n' && byte != '\r')
            byte = '_';
    }
    // U+FFFE and U+FFFF.
    for (std::size_t at = text.find("\xef\xbf"); at != std::string::npos;
         at = text.find("\xef\xbf", at + 1)) {
        const auto last = static_cast<unsigned char>(text[at + 2]);
        if (last == 0xbe || last == 0xbf)
            text.replace(at, 3, "_");
    }
    return text;
}

std::string timeText(const MediaTime& time) {
    return std::to_string(time.value) + "/" + std::to_string(time.timescale) + "s";
}

std::string copyName(const Media& media) {
    return xmlText(lastPathComponent(media.item.relativeDestination));
}

FileUrl copyLocation(const FileUrl& root, const ProjectPlanItem& item) {
    return fileLocation(joinPath(root.path, item.relativeDestination));
}

/// Collects elements; attributes are escaped as they are written.
class XmlText {
public:
    using Attributes = std::vector<std::pair<std::string_view, std::string>>;

    XmlText& raw(std::string_view text) {
        text_ += text;
        return *this;
    }
    XmlText& open(std::string_view name, const Attributes& attributes = {}) {
        return begin(name, attributes).raw(">");
    }
    XmlText& empty(std::string_view name, const Attributes& attributes) {
        return begin(name, attributes).raw("/>");
    }
    XmlText& close(std::string_view name) { return raw("</").raw(name).raw(">"); }
    XmlText& lineBreak() { return raw("\n"); }
    std::string take() { return std::move(text_); }

private:
    XmlText& begin(std::string_view name, const Attributes& attributes) {
        raw("<").raw(name);
        for (const auto& [key, value] : attributes)
            raw(" ").raw(key).raw("=\"").raw(escaped(value)).raw("\"");
        return *this;
    }

    std::string text_;
};

void writeImportOptions(XmlText& xml, const FileUrl& root, const ProjectRequest& request) {
    const FileUrl library =
        root.appending(templateFolders[0], true).appending(safeComponent(request.name) + ".fcpbundle", false);
    xml.open("import-options");
    xml.empty("option", {{"key", "library location"}, {"value", absoluteText(library)}});
    xml.empty("option", {{"key", "copy assets"}, {"value", "0"}});
    xml.empty("option", {{"key", "suppress warnings"}, {"value", "0"}});
    xml.close("import-options").lineBreak();
}

void writeFormats(XmlText& xml, const ProjectRequest& request, const std::vector<Media>& media) {
    xml.empty("format", {{"id", "projectFormat"},
                         {"frameDuration", "1/" + std::to_string(request.frameRate) + "s"},
                         {"width", std::to_string(request.width)},
                         {"height", std::to_string(request.height)},
                         {"colorSpace", "1-1-1 (Rec. 709)"}});
    xml.lineBreak();
    for (std::size_t i = 0; i < media.size(); ++i) {
        if (!media[i].video)
            continue;
        xml.empty("format", {{"id", "format" + std::to_string(i)},
                             {"frameDuration", timeText(media[i].frameDuration)},
                             {"width", std::to_string(media[i].width)},
                             {"height", std::to_string(media[i].height)}});
        xml.lineBreak();
    }
}

void writeAsset(XmlText& xml, const FileUrl& root, const Media& media, const std::string& number) {
    XmlText::Attributes attributes{{"id", "asset" + number},
                                   {"name", copyName(media)},
                                   {"start", "0s"},
                                   {"duration", timeText(media.duration)},
                                   {"hasVideo", media.video ? "1" : "0"},
                                   {"hasAudio", media.audio ? "1" : "0"}};
    if (media.video)
        attributes.emplace_back("format", "format" + number);
    if (media.audio) {
        attributes.emplace_back("audioSources", "1");
        attributes.emplace_back("audioChannels", std::to_string(media.channels));
        attributes.emplace_back("audioRate", std::to_string(media.rate));
    }
    xml.open("asset", attributes);
    xml.empty("media-rep",
              {{"kind", "original-media"}, {"src", absoluteText(copyLocation(root, media.item))}});
    xml.close("asset").lineBreak();
}

using Keywords = std::set<std::string>;

Keywords keywordsOf(const Media& media) {
    Keywords keywords{media.item.category, xmlText(lastPathComponent(parentPath(media.item.sourceURL.path)))};
    keywords.erase("");
    return keywords;
}

void writeClip(XmlText& xml, const Media& media, const std::string& number, const Keywords& keywords) {
    const std::string duration = timeText(media.duration);
    XmlText::Attributes attributes{
        {"name", copyName(media)}, {"ref", "asset" + number}, {"duration", duration}};
    if (media.video) {
        attributes.emplace_back("format", "format" + number);
        attributes.emplace_back("videoRole", "video");
    }
    if (media.audio)
        attributes.emplace_back("audioRole", audioRole(media.item.category));
    xml.open("asset-clip", attributes);
    for (const std::string& keyword : keywords)
        xml.empty("keyword", {{"start", "0s"}, {"duration", duration}, {"value", keyword}});
    xml.close("asset-clip").lineBreak();
}

void writeEvent(XmlText& xml, const EventPair& pair, const std::vector<Media>& media) {
    xml.open("event", {{"name", std::string(pair.event)}}).lineBreak();
    Keywords used;
    for (std::size_t i = 0; i < media.size(); ++i) {
        if (media[i].item.category != pair.category)
            continue;
        const Keywords keywords = keywordsOf(media[i]);
        used.insert(keywords.begin(), keywords.end());
        writeClip(xml, media[i], std::to_string(i), keywords);
    }
    xml.open("collection-folder", {{"name", "来源与用途"}});
    for (const std::string& keyword : used)
        xml.empty("keyword-collection", {{"name", keyword}});
    xml.close("collection-folder").raw(smartCollections).close("event").lineBreak();
}

std::vector<Media> probedMedia(const JobContext& context, const FileUrl& root, ProjectManifest& manifest) {
    MediaClient client;
    std::vector<Media> media;
    std::size_t verified = 0;
    for (std::size_t i = 0; i < manifest.files.size(); ++i) {
        if (manifest.files[i].state != ProjectFileState::verified)
            continue;
        ++verified;
        const ProjectPlanItem& item = manifest.plan.items[i];
        if (auto found = probe(context, client, copyLocation(root, item), item))
            media.push_back(std::move(*found));
    }
    if (media.size() < verified)
        manifest.warnings.push_back(std::string(project_text::leftOutPrefix) +
                                    std::to_string(verified - media.size()) +
                                    std::string(project_text::leftOutSuffix));
    return media;
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char byte : text) {
        switch (byte) {
            case '&':
                result += "&amp;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '\n':
                result += "&#10;";
                break;
            case '\r':
                result += "&#13;";
                break;
            default:
                result += byte;
        }
    }
    return result;
}

std::string fcpxmlDocument(const FileUrl& root, const ProjectRequest& request,
                           const std::vector<Media>& media) {
    XmlText xml;
    xml.raw(R"(<?xml version="1.0" encoding="UTF-8"?>)").lineBreak();
    xml.open("fcpxml", {{"version", "1.10"}}).lineBreak();
    writeImportOptions(xml, root, request);
    xml.open("resources");
    writeFormats(xml, request, media);
    for (std::size_t i = 0; i < media.size(); ++i)
        writeAsset(xml, root, media[i], std::to_string(i));
    xml.close("resources").open("library").lineBreak();
    for (const EventPair& pair : eventPairs)
        writeEvent(xml, pair, media);
    xml.raw(editEvent).close("library").close("fcpxml").lineBreak();
    return xml.take();
}

FileUrl makeXML(JobContext& context, const FileUrl& root, ProjectManifest& manifest) {
    const std::vector<Media> media = probedMedia(context, root, manifest);
    const FileUrl folder = root.appending(templateFolders[0], true);
    const UniqueFd opened = ensureDirectory(folder, root);
    FileUrl location = folder.appending("MORVANE整理导入-" + newUuid() + ".fcpxml", false);
    try {
        // Under a temporary name until it is valid: also a run that is killed leaves no other behind.
        TemporaryFile file(opened.get(), 0644);
        if (!file)
            throwErrno();
        const std::string document = fcpxmlDocument(root, manifest.plan.request, media);
        writeAll(file.writer(), document.data(), document.size());
        file.flushAndClose();
        const auto dtd = findDtd(context);
        if (!dtd)
            failWith(project_text::dtdMissing);
        validateAgainstDtd(context, *dtd, folder.appending(file.name(), false).path);
        if (const int error = file.publish(location.lastComponent()); error != 0)
            throwError(error);
        syncFolder(opened.get());
    } catch (const std::system_error& error) {
        failWith(project_text::cannotWriteHandOffPrefix, error.what());
    }
    return location;
}

}  // namespace morvane
