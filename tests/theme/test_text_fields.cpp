// Text inputs: sizes, borders by state, the search field's keys and clear button.
#include "app/theme/search_field.h"
#include "app/theme/text_field.h"
#include "app/theme/theme.h"
#include "tests/theme/theme_fixture.h"

#include <QAbstractButton>
#include <QSignalSpy>
#include <QTest>

namespace morvane {
namespace {

class TextFields : public ThemeTest {
protected:
    static QColor border(QWidget* field, int depth = 0) {
        return colourAt(drawn(*field), QPointF(depth, field->height() / 2.0));
    }
    static QAbstractButton* clearButton(SearchField* search) { return search->findChild<QAbstractButton*>(); }
};

TEST_F(TextFields, MeasureAsDesigned) {
    EXPECT_EQ(TextField(TextField::Size::Large).height(), 36);
    EXPECT_EQ(TextField(TextField::Size::Large).font().pixelSize(), 14);
    EXPECT_EQ(TextField(TextField::Size::Small).height(), 28);
    EXPECT_EQ(TextField(TextField::Size::Small).font().pixelSize(), 13);
    const SearchField search;
    EXPECT_EQ(search.height(), 32);
    EXPECT_EQ(search.minimumWidth(), 300);
    EXPECT_EQ(search.maximumWidth(), 340);
}

TEST_F(TextFields, BordersFollowTheState) {
    auto* field = place(new TextField(TextField::Size::Large));
    activate();
    EXPECT_TRUE(isColour(border(field), MRVTheme::edge()));
    EXPECT_TRUE(isColour(border(field, 1), MRVTheme::field()));
    pointAt(field, {20, 10});
    EXPECT_TRUE(isColour(border(field), MRVTheme::edgeHover()));
    field->setFocus(Qt::MouseFocusReason);  // always for text, also after a click
    EXPECT_TRUE(isColour(border(field), MRVTheme::accent()));
    EXPECT_TRUE(isColour(border(field, 1), MRVTheme::accent()));
    EXPECT_TRUE(isColour(border(field, 2), MRVTheme::field()));
    field->setEnabled(false);
    EXPECT_TRUE(isColour(border(field), MRVTheme::line()));
}

TEST_F(TextFields, TextBeginsTwelveInside) {
    auto* field = place(new TextField(TextField::Size::Small));
    field->setText(QStringLiteral("▌▌▌"));
    const QImage image = drawn(*field);
    EXPECT_FALSE(holdsColour(image, QRect(3, 6, 9, 16), MRVTheme::ink(), 90));
    EXPECT_TRUE(holdsColour(image, QRect(12, 6, 6, 16), MRVTheme::ink(), 90));
}

TEST_F(TextFields, SelectedTextStandsOnTheSelectionColour) {
    auto* field = place(new TextField(TextField::Size::Small));
    field->setText(QStringLiteral("Take 2_溪流近景"));
    activate();
    field->setFocus(Qt::OtherFocusReason);
    field->selectAll();
    EXPECT_TRUE(holdsColour(drawn(*field), QRect(12, 5, 60, 18), MRVTheme::textSelection()));
}

TEST_F(TextFields, SearchShowsItsSymbolAndTextClearOfIt) {
    auto* search = place(new SearchField);
    EXPECT_TRUE(holdsColour(drawn(*search), QRect(10, 8, 16, 16), MRVTheme::muted(), 40));
    search->setText(QStringLiteral("▌▌▌"));
    EXPECT_FALSE(holdsColour(drawn(*search), QRect(27, 8, 7, 16), MRVTheme::ink(), 90));
    EXPECT_TRUE(holdsColour(drawn(*search), QRect(34, 8, 8, 16), MRVTheme::ink(), 90));
}

TEST_F(TextFields, SearchIsClearedByEscape) {
    auto* search = place(new SearchField);
    activate();
    search->setFocus(Qt::OtherFocusReason);
    QTest::keyClicks(search, QStringLiteral("take 2"));
    EXPECT_EQ(search->text(), QStringLiteral("take 2"));  // the space is typed
    QSignalSpy edited(search, &QLineEdit::textEdited);
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_TRUE(search->text().isEmpty());
    ASSERT_EQ(edited.count(), 1);
    EXPECT_TRUE(edited.first().first().toString().isEmpty());
}

class KeyWatcher : public QWidget {
public:
    int escapes = 0;

protected:
    void keyPressEvent(QKeyEvent* event) override { escapes += event->key() == Qt::Key_Escape ? 1 : 0; }
};

TEST_F(TextFields, EscapeInAnEmptySearchIsLeftToTheWindow) {
    auto* outer = new KeyWatcher;
    place(outer, {0, 0});
    outer->resize(400, 100);
    auto* search = new SearchField(outer);
    search->show();
    activate();
    search->setFocus(Qt::OtherFocusReason);
    search->setText(QStringLiteral("a"));
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_EQ(outer->escapes, 0);
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_EQ(outer->escapes, 1);
}

TEST_F(TextFields, TheClearButtonShowsWithTextAndClears) {
    auto* search = place(new SearchField);
    activate();
    QAbstractButton* button = clearButton(search);
    ASSERT_NE(button, nullptr);
    EXPECT_FALSE(button->isVisible());
    search->setText(QStringLiteral("雨"));
    EXPECT_TRUE(button->isVisible());
    EXPECT_GE(button->width(), 24);
    EXPECT_GE(button->height(), 24);
    EXPECT_TRUE(search->rect().contains(button->geometry()));
    EXPECT_EQ(button->focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(button->accessibleName(), QStringLiteral("清除搜索"));
    EXPECT_TRUE(holdsColour(drawn(*search), button->geometry(), MRVTheme::muted(), 10));
    search->setFocus(Qt::OtherFocusReason);
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_TRUE(search->text().isEmpty());
    EXPECT_FALSE(button->isVisible());
    EXPECT_TRUE(search->hasFocus());
}

}  // namespace
}  // namespace morvane
