#include "organizer_ui/report_sheet.h"

#include <QDesktopServices>
#include <QUrl>
#include <utility>

#include "app/theme/sheet.h"
#include "platform/reveal_files.h"

namespace morvane {

namespace {

constexpr int textSheetWidth = 588;  // 540 and 24 at each side
constexpr int handOffWidth = 508;

std::string counts(const ProjectResult& result) {
    return "已复制并校验 " + std::to_string(result.copiedCount) + " 个文件 · 失败 " +
           std::to_string(result.failedCount) + " 个";
}

}  // namespace

ReportTexts reportTexts(const ProjectResult& result) {
    ReportTexts texts;
    texts.message = result.cancelled         ? "整理任务已停止"
                    : result.failedCount < 1 ? "拍摄项目整理完成"
                                             : "整理结果与待重试文件";
    texts.informative = counts(result);
    texts.body = result.fcpxmlURL ? "FCP 交接文件\n" + result.fcpxmlURL->path + "\n尚未自动导入 FCP。\n\n"
                                  : "本次没有生成 FCP 交接文件。\n\n";
    texts.body += result.warnings.empty() ? "没有额外提醒。" : joinedByBlankLines(result.warnings);
    texts.body += "\n\n完整的逐文件结果已保存在项目清单中。";
    return texts;
}

std::string warningsMessage(std::size_t count) {
    return "检查完成，有 " + std::to_string(count) + " 条整理提醒";
}

std::string joinedByBlankLines(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts)
        joined += joined.empty() ? text : "\n\n" + text;
    return joined;
}

void presentPlanWarnings(QWidget* view, const std::vector<std::string>& warnings,
                         std::function<void()> confirmed) {
    SheetContent content;
    content.warning = true;
    content.message = QString::fromStdString(warningsMessage(warnings.size()));
    content.informative = QStringLiteral("请确认来源与分类。开始后将复制到新项目，原文件保留。");
    content.accessory = reportText(QString::fromStdString(joinedByBlankLines(warnings)));
    content.buttons = QStringList{QStringLiteral("按计划复制"), QStringLiteral("返回检查")};
    content.cancelButton = 1;
    content.width = textSheetWidth;
    Sheet::present(view, content, [confirmed = std::move(confirmed)](int button) {
        if (button == 0)
            confirmed();
    });
}

void presentReport(QWidget* view, const ProjectResult& result) {
    const ReportTexts texts = reportTexts(result);
    SheetContent content;
    content.symbol = QStringLiteral("list.bullet.rectangle");
    content.message = QString::fromStdString(texts.message);
    content.informative = QString::fromStdString(texts.informative);
    content.accessory = reportText(QString::fromStdString(texts.body));
    content.buttons = QStringList{QStringLiteral("完成"), QStringLiteral("显示完整清单")};
    content.cancelButton = 0;
    content.width = textSheetWidth;
    Sheet::present(view, content, [manifest = result.manifestURL.path](int button) {
        if (button == 1)
            revealFiles({manifest});
    });
}

void presentHandOff(QWidget* view, const ProjectResult& result) {
    SheetContent content;
    content.symbol = QStringLiteral("square.and.arrow.up");
    content.message = QStringLiteral("将项目交给 Final Cut Pro");
    content.informative = QStringLiteral(
        "已生成分类交接文件。点击“打开交接文件”后，由 Final Cut Pro 确认导入；也可以先在 Finder 中查看。");
    content.buttons = QStringList{QStringLiteral("打开交接文件"), QStringLiteral("在 Finder 中显示"),
                                  QStringLiteral("取消")};
    content.cancelButton = 2;
    content.width = handOffWidth;
    Sheet::present(view, content, [file = *result.fcpxmlURL](int button) {
        if (button == 0)
            QDesktopServices::openUrl(QUrl::fromEncoded(QByteArray::fromStdString(absoluteText(file))));
        else if (button == 1)
            revealFiles({file.path});
    });
}

}  // namespace morvane
