#include "library_ui/preview_state.h"

#include "library_ui/asset_text.h"

#include "catalog/asset.h"

namespace morvane {

namespace {

const QString& warningSymbol() {
    static const QString symbol = QStringLiteral("exclamationmark.triangle");
    return symbol;
}

}  // namespace

PreviewMode previewModeOf(const Asset& asset) {
    switch (asset.mediaKind()) {
        case MediaKind::Image:
            return PreviewMode::Picture;
        case MediaKind::Audio:
            return PreviewMode::Audio;
        case MediaKind::Video:
            return PreviewMode::Video;
        case MediaKind::Other:
            break;
    }
    return PreviewMode::Other;
}

FileButtonStates fileButtonsFor(FileState file, Scanning scanning) {
    const bool present = file == FileState::Present;
    return {.favorite = true,
            .reveal = present,
            .copy = present,
            .open = present,
            .rename = present && scanning == Scanning::No};
}

namespace notices {

Notice nothingShown() {
    return {.text = QStringLiteral("从列表拖出文件，即可复制到其他文件夹或导入剪辑软件。")};
}

Notice fileMissing() {
    return {.text = QStringLiteral("文件暂不可用：请连接素材硬盘；若文件已移动，请刷新索引。"),
            .symbol = QStringLiteral("externaldrive.badge.xmark"),
            .tone = Notice::Tone::Warning};
}

Notice filePresent() {
    return {.text = QStringLiteral("拖出文件可复制或导入；⌘C 复制所选文件，随后在 Finder 中 ⌘V 粘贴。")};
}

Notice preparingPicture() {
    return {.text = QStringLiteral("正在准备图片预览…")};
}

Notice pictureShown() {
    return {.text = QStringLiteral("拖出原文件可复制或导入，图片预览不会修改原件。")};
}

Notice pictureUndecodable() {
    return {.text = QStringLiteral("此图片格式无法内置预览，可点击“外部打开”。"),
            .symbol = warningSymbol(),
            .tone = Notice::Tone::Warning};
}

Notice otherKind() {
    return {.text = QStringLiteral("此素材可直接拖出、复制，或点击“外部打开”交给对应软件。")};
}

Notice mediaUndecodable() {
    return {.text = QStringLiteral("系统无法解码此素材，点击“外部打开”用其他播放器播放。"),
            .symbol = warningSymbol(),
            .tone = Notice::Tone::Warning};
}

Notice manySelected(qint64 rows) {
    return {.text = selectionNotice(rows), .symbol = QStringLiteral("doc.on.doc")};
}

}  // namespace notices

Notice noticeFor(PreviewMode mode, FileState file, PictureCached cached) {
    if (file == FileState::Missing)
        return notices::fileMissing();
    switch (mode) {
        case PreviewMode::Picture:
            if (cached == PictureCached::No)
                return notices::preparingPicture();
            return cached == PictureCached::Unseen ? notices::pictureShown() : notices::filePresent();
        case PreviewMode::Audio:
        case PreviewMode::Video:
            return notices::filePresent();
        case PreviewMode::Other:
            break;
    }
    return notices::otherKind();
}

}  // namespace morvane
