// Sheets: layout, keys, the answer, the veil, and one after another.
#include "app/theme/push_button.h"
#include "app/theme/scrim.h"
#include "app/theme/sheet.h"
#include "app/theme/text_field.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QAccessible>
#include <QApplication>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTest>
#include <QWindow>

#include <vector>

namespace morvane {
namespace {

class Sheets : public ThemeTest {
protected:
    Sheets() { window().resize(1100, 650); }

    Sheet* present(SheetContent content) {
        activate();
        Sheet* sheet =
            Sheet::present(&window(), std::move(content), [this](int button) { answers_.push_back(button); });
        return sheet;
    }
    static SheetContent question() {
        SheetContent content;
        content.symbol = QStringLiteral("square.and.arrow.up");
        content.message = QStringLiteral("将项目交给 Final Cut Pro");
        content.informative = QStringLiteral("已生成分类交接文件。");
        content.buttons = {QStringLiteral("打开交接文件"), QStringLiteral("在 Finder 中显示"),
                           QStringLiteral("取消")};
        content.cancelButton = 2;
        content.width = 508;
        return content;
    }
    static SheetContent notice() {
        SheetContent content;
        content.warning = true;
        content.message = QStringLiteral("未能重命名");
        content.informative = QStringLiteral("同一文件夹内已存在该名称，请换一个名称；不会覆盖已有文件。");
        content.buttons = {QStringLiteral("好")};
        return content;
    }
    Scrim* scrim() { return window().findChild<Scrim*>(); }

    std::vector<int> answers_;
};

TEST_F(Sheets, AreFramelessWindowModalAndShownAtOnce) {
    const Sheet* sheet = present(question());
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    EXPECT_TRUE(sheet->windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(sheet->width(), 508);
    EXPECT_EQ(sheet->accessibleName(), QStringLiteral("将项目交给 Final Cut Pro"));
    EXPECT_EQ(sheet->accessibleDescription(), QStringLiteral("已生成分类交接文件。"));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(const_cast<Sheet*>(sheet))->role(), QAccessible::Dialog);
}

TEST_F(Sheets, StandCentredAHundredAndThirtyTwoDown) {
    const Sheet* sheet = present(question());
    const QPoint inWindow = window().mapFromGlobal(sheet->pos());
    EXPECT_EQ(inWindow, QPoint((1100 - 508) / 2, 132));
    window().resize(1300, 700);
    waitUntil([&] { return window().mapFromGlobal(sheet->pos()).x() == (1300 - 508) / 2; },
              "the sheet to follow");
    EXPECT_EQ(scrim()->geometry(), window().rect());
}

TEST_F(Sheets, PutTheDefaultRightmostAndTheOthersToItsLeftInOrder) {
    const Sheet* sheet = present(question());
    const PushButton* first = sheet->button(0);
    EXPECT_EQ(first->role(), PushButton::Role::Primary);
    EXPECT_EQ(sheet->button(1)->role(), PushButton::Role::Secondary);
    EXPECT_EQ(first->geometry().right(), 508 - 24 - 1);
    EXPECT_EQ(sheet->button(1)->geometry().right(), first->x() - 8 - 1);
    EXPECT_EQ(sheet->button(2)->geometry().right(), sheet->button(1)->x() - 8 - 1);
    EXPECT_EQ(sheet->height() - first->geometry().bottom() - 1, 24);
    for (int index = 0; index < 3; ++index) {
        EXPECT_GE(sheet->button(index)->width(), 88);
        EXPECT_EQ(sheet->button(index)->height(), 32);
    }
}

TEST_F(Sheets, WrapTheirTextsInsteadOfCuttingThem) {
    SheetContent content = question();
    const int oneLine = present(content)->height();
    content.informative = QString(QStringLiteral("一段会换行的说明文字。")).repeated(8);
    answers_.clear();
    QTest::keyClick(window().findChild<Sheet*>(), Qt::Key_Escape);
    const Sheet* sheet = present(content);
    EXPECT_EQ((sheet->height() - oneLine) % 19, 0);
    EXPECT_GT(sheet->height(), oneLine);
}

TEST_F(Sheets, ReturnPressesTheDefaultWhereverTheFocusIs) {
    SheetContent content = question();
    auto* field = new TextField(TextField::Size::Small);
    content.accessory = field;
    content.firstFocus = field;
    present(content);
    waitUntil([&] { return field->hasFocus(); }, "the field to have the focus");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(answers_, std::vector<int>{0});

    Sheet* again = present(question());
    again->button(2)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(again->button(2), Qt::Key_Enter);
    EXPECT_EQ(answers_, (std::vector<int>{0, 0}));
}

TEST_F(Sheets, SpacePressesTheFocusedButton) {
    Sheet* sheet = present(question());
    sheet->button(1)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(sheet->button(1), Qt::Key_Space);
    EXPECT_EQ(answers_, std::vector<int>{1});
}

TEST_F(Sheets, EscapePressesTheCancellingOrTheOnlyButton) {
    QTest::keyClick(present(question()), Qt::Key_Escape);
    EXPECT_EQ(answers_, std::vector<int>{2});
    QTest::keyClick(present(notice()), Qt::Key_Escape);
    EXPECT_EQ(answers_, (std::vector<int>{2, 0}));
}

TEST_F(Sheets, EscapeIsIgnoredWhereNothingCancels) {
    SheetContent content = question();
    content.cancelButton = -1;
    Sheet* sheet = present(content);
    QTest::keyClick(sheet, Qt::Key_Escape);
    EXPECT_FALSE(sheet->close());
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_TRUE(answers_.empty());
}

TEST_F(Sheets, ClosingIsCancelling) {
    Sheet* sheet = present(question());
    EXPECT_TRUE(sheet->close());
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(answers_, std::vector<int>{2});
}

TEST_F(Sheets, AnswerOnceAndAreGoneByThen) {
    activate();
    const QPointer<Sheet> sheet = Sheet::present(&window(), question(), [&](int button) {
        EXPECT_FALSE(window().findChild<Sheet*>()->isVisible());
        answers_.push_back(button);
    });
    PushButton* first = sheet->button(0);
    QTest::mouseClick(first, Qt::LeftButton);
    first->click();
    EXPECT_EQ(answers_, std::vector<int>{0});
    waitUntil([&] { return sheet.isNull() && scrim() == nullptr; }, "the sheet to delete itself");
}

TEST_F(Sheets, StayWhileTheConfirmingButtonIsRefused) {
    bool allowed = false;
    SheetContent content = question();
    content.mayConfirm = [&allowed] { return allowed; };
    Sheet* sheet = present(content);
    sheet->button(0)->click();
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_TRUE(answers_.empty());
    allowed = true;
    sheet->button(0)->click();
    EXPECT_EQ(answers_, std::vector<int>{0});

    allowed = false;
    present(content)->button(1)->click();
    EXPECT_EQ(answers_, (std::vector<int>{0, 1})) << "only the confirming button is asked about";
}

TEST_F(Sheets, AnAnswerMayPresentTheNextSheet) {
    activate();
    Sheet* next = nullptr;
    Sheet* sheet = Sheet::present(&window(), question(), [&](int) {
        next = Sheet::present(&window(), notice(), [this](int button) { answers_.push_back(button + 100); });
    });
    sheet->button(0)->click();
    ASSERT_NE(next, nullptr);
    EXPECT_TRUE(next->isVisible());
    next->button(0)->click();
    EXPECT_EQ(answers_, std::vector<int>{100});
}

TEST_F(Sheets, SeveralForOneWindowComeOneAfterAnother) {
    Sheet* first = present(question());
    Sheet* second = present(notice());
    Sheet* third = present(question());
    EXPECT_TRUE(first->isVisible());
    EXPECT_FALSE(second->isVisible());
    EXPECT_FALSE(third->isVisible());
    first->button(1)->click();
    EXPECT_TRUE(second->isVisible());
    EXPECT_FALSE(third->isVisible());
    second->button(0)->click();
    EXPECT_TRUE(third->isVisible());
    third->button(2)->click();
    EXPECT_EQ(answers_, (std::vector<int>{1, 0, 2}));
}

TEST_F(Sheets, TheWindowMayGoFirst) {
    auto other = std::make_unique<QWidget>();
    other->resize(1100, 650);
    other->show();
    const QPointer<Sheet> sheet =
        Sheet::present(other.get(), question(), [this](int button) { answers_.push_back(button); });
    other.reset();
    EXPECT_TRUE(sheet.isNull());
    EXPECT_TRUE(answers_.empty());
}

TEST_F(Sheets, VeilTheWindow) {
    auto* button = place(new PushButton(QStringLiteral("刷新索引")), {500, 600});
    const QColor before = colourAt(drawn(window()), {506, 616});
    present(question());
    ASSERT_NE(scrim(), nullptr);
    EXPECT_EQ(scrim()->geometry(), window().rect());
    EXPECT_LT(colourAt(drawn(window()), {506, 616}).lightness(), before.lightness());
    // The shadow darkens the veil further, most below the sheet.
    QTest::mouseClick(window().childAt(button->geometry().center()), Qt::LeftButton);
    EXPECT_EQ(window().childAt(button->geometry().center()), scrim());
}

TEST_F(Sheets, CastAShadowBelow) {
    QPalette palette = window().palette();
    palette.setColor(QPalette::Window, Qt::white);
    window().setPalette(palette);
    const Sheet* sheet = present(question());
    const QImage image = drawn(window());
    const QPointF below(550, 132 + sheet->height() + 8);
    const QPointF far(550, 640);
    const QPointF above(550, 132 - 8);
    EXPECT_LT(colourAt(image, below).lightness(), colourAt(image, above).lightness());
    EXPECT_LT(colourAt(image, above).lightness(), colourAt(image, far).lightness());
}

TEST_F(Sheets, TakeTheKeyboardBackFromTheirWindow) {
    Sheet* sheet = present(question());
    waitUntil([&] { return sheet->isActiveWindow(); }, "the sheet to be active");
    int lost = 0;
    QObject::connect(qApp, &QGuiApplication::focusWindowChanged, sheet,
                     [&](QWindow* active) { lost += active == window().windowHandle() ? 1 : 0; });
    window().activateWindow();
    waitUntil([&] { return lost > 0; }, "the window to be active");
    waitUntil([&] { return sheet->isActiveWindow(); }, "the sheet to be active again");
}

TEST_F(Sheets, DrawTileAndTextInTheirColours) {
    Sheet* sheet = present(notice());
    const QImage image = drawn(*sheet);
    EXPECT_TRUE(isColour(colourAt(image, {24 + 20, 24 + 3}), MRVTheme::warningSoft()));
    EXPECT_TRUE(holdsColour(image, QRect(24, 24, 40, 40), MRVTheme::warning(), 12));
    EXPECT_TRUE(isColour(colourAt(image, {10, 60}), MRVTheme::sheet()));
    EXPECT_TRUE(isColour(colourAt(image, {0, 60}), MRVTheme::sheetLine()));
    EXPECT_TRUE(holdsColour(image, QRect(24 + 40 + 14, 24, 200, 22), MRVTheme::ink(), 20));
    EXPECT_TRUE(holdsColour(image, QRect(24 + 40 + 14, 50, 300, 19), MRVTheme::muted(), 30));
}

TEST_F(Sheets, TheApplicationIconMayStandInForTheTile) {
    SheetContent content = notice();
    content.warning = false;
    content.useAppIcon = true;
    Sheet* sheet = present(content);
    EXPECT_TRUE(holdsColour(drawn(*sheet), QRect(24, 24, 62, 62), QColor(0xc8b8f2), 24));
    EXPECT_FALSE(holdsColour(drawn(*sheet), QRect(24, 24, 62, 62), MRVTheme::warningSoft(), 1));
}

TEST_F(Sheets, TheFirstFocusHasItsTextSelected) {
    SheetContent content = question();
    auto* field = new TextField(TextField::Size::Small);
    field->setText(QStringLiteral("Take 2"));
    field->setAccessibleName(QStringLiteral("新文件名称"));
    content.accessory = field;
    content.firstFocus = field;
    const Sheet* sheet = present(content);
    EXPECT_EQ(field->window(), sheet);
    waitUntil([&] { return field->hasFocus(); }, "the field to have the focus");
    EXPECT_EQ(field->selectedText(), QStringLiteral("Take 2"));
}

TEST_F(Sheets, ReportTextsAreReadOnlySelectableAndWhole) {
    SheetContent content = question();
    content.width = 588;
    const QString report = QString(QStringLiteral("跳过符号链接：最新素材\n\n")).repeated(60);
    QWidget* view = reportText(report);
    content.accessory = view;
    Sheet* sheet = present(content);
    EXPECT_EQ(view->size(), QSize(540, 250));
    EXPECT_EQ(view->x(), 24);
    auto* text = qobject_cast<QPlainTextEdit*>(view);
    ASSERT_NE(text, nullptr);
    EXPECT_TRUE(text->isReadOnly());
    EXPECT_EQ(text->toPlainText(), report);
    EXPECT_TRUE(text->textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard));
    const QPointF border(1, 125);
    EXPECT_TRUE(isColour(colourAt(drawn(*view), {0, 125}), MRVTheme::line()));
    waitUntil([&] { return sheet->isActiveWindow(); }, "the sheet to be active");
    tabTo(text);
    EXPECT_TRUE(isColour(colourAt(drawn(*view), border), MRVTheme::accent()));
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(answers_, std::vector<int>{0});
    EXPECT_FALSE(sheet->isVisible());
}

}  // namespace
}  // namespace morvane
