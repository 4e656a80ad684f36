// The texts of the sheets, and the sheets themselves on a window.
#include "organizer_ui/report_sheet.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWidget>

#include <gtest/gtest.h>

#include "app/theme/push_button.h"
#include "app/theme/sheet.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

ProjectResult resultOf(std::int64_t copied, std::int64_t failed, bool cancelled) {
    ProjectResult result;
    result.rootURL = folderLocation("/p/秋");
    result.manifestURL = fileLocation("/p/秋/MORVANE项目清单.json");
    result.copiedCount = copied;
    result.failedCount = failed;
    result.cancelled = cancelled;
    return result;
}

TEST(ReportTexts, TitleTellsHowTheRunEnded) {
    EXPECT_EQ(reportTexts(resultOf(3, 0, false)).message, "拍摄项目整理完成");
    EXPECT_EQ(reportTexts(resultOf(3, 2, false)).message, "整理结果与待重试文件");
    EXPECT_EQ(reportTexts(resultOf(3, 0, true)).message, "整理任务已停止");
    EXPECT_EQ(reportTexts(resultOf(3, 2, true)).message, "整理任务已停止");
    EXPECT_EQ(reportTexts(resultOf(3, 2, true)).informative, "已复制并校验 3 个文件 · 失败 2 个");
}

TEST(ReportTexts, BodyWithoutHandOffAndWarnings) {
    EXPECT_EQ(reportTexts(resultOf(1, 0, false)).body,
              "本次没有生成 FCP 交接文件。\n\n没有额外提醒。\n\n完整的逐文件结果已保存在项目清单中。");
}

TEST(ReportTexts, BodyWithHandOffAndWarnings) {
    ProjectResult result = resultOf(1, 0, false);
    result.fcpxmlURL = fileLocation("/p/秋/01_项目工程/x.fcpxml");
    result.warnings = {"一", "二"};
    EXPECT_EQ(reportTexts(result).body,
              "FCP 交接文件\n/p/秋/01_项目工程/x.fcpxml\n尚未自动导入 "
              "FCP。\n\n一\n\n二\n\n完整的逐文件结果已保存在项目清单中。");
}

class SheetOnWindow : public testing::Test {
protected:
    SheetOnWindow() {
        window_.resize(1100, 700);
        window_.show();
    }
    Sheet* sheet() { return window_.findChild<Sheet*>(); }
    QStringList texts() {
        QStringList all;
        for (const QTextEdit* view : sheet()->findChildren<QTextEdit*>())
            all << view->toPlainText();
        for (const QPlainTextEdit* view : sheet()->findChildren<QPlainTextEdit*>())
            all << view->toPlainText();
        return all;
    }

    QWidget window_;
};

TEST_F(SheetOnWindow, WarningsAskBeforeCopying) {
    int confirmed = 0;
    presentPlanWarnings(&window_, {"一", "二"}, [&confirmed] { ++confirmed; });
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(sheet()->content().message, QStringLiteral("检查完成，有 2 条整理提醒"));
    EXPECT_EQ(sheet()->content().informative,
              QStringLiteral("请确认来源与分类。开始后将复制到新项目，原文件保留。"));
    EXPECT_EQ(sheet()->content().buttons,
              (QStringList{QStringLiteral("按计划复制"), QStringLiteral("返回检查")}));
    EXPECT_EQ(texts(), QStringList{QStringLiteral("一\n\n二")});
    EXPECT_EQ(confirmed, 0);
    sheet()->button(0)->click();
    EXPECT_EQ(confirmed, 1);
    ASSERT_TRUE(test::waitUntil([this] { return sheet() == nullptr; }));

    presentPlanWarnings(&window_, {"一"}, [&confirmed] { ++confirmed; });
    sheet()->button(1)->click();
    EXPECT_EQ(confirmed, 1);
}

TEST_F(SheetOnWindow, ReportIsReadOnlyAndHasTwoButtons) {
    presentReport(&window_, resultOf(5, 1, false));
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(sheet()->content().message, QStringLiteral("整理结果与待重试文件"));
    EXPECT_EQ(sheet()->content().buttons,
              (QStringList{QStringLiteral("完成"), QStringLiteral("显示完整清单")}));
    ASSERT_NE(sheet()->content().accessory, nullptr);
    EXPECT_EQ(sheet()->content().accessory->size(), QSize(540, 250));
    EXPECT_EQ(texts().size(), 1);
    sheet()->button(0)->click();
}

TEST_F(SheetOnWindow, HandOffOffersThreeWays) {
    ProjectResult result = resultOf(5, 0, false);
    result.fcpxmlURL = fileLocation("/p/秋/01_项目工程/x.fcpxml");
    presentHandOff(&window_, result);
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(sheet()->content().message, QStringLiteral("将项目交给 Final Cut Pro"));
    EXPECT_EQ(sheet()->content().informative,
              QStringLiteral("已生成分类交接文件。点击“打开交接文件”后，由 Final Cut Pro "
                             "确认导入；也可以先在 Finder 中查看。"));
    EXPECT_EQ(sheet()->content().buttons,
              (QStringList{QStringLiteral("打开交接文件"), QStringLiteral("在 Finder 中显示"),
                           QStringLiteral("取消")}));
    sheet()->button(2)->click();
    ASSERT_TRUE(test::waitUntil([this] { return sheet() == nullptr; }));
}

}  // namespace
}  // namespace morvane
