#include "app/theme/sheet.h"
#include "app/theme/theme.h"

#include <QPlainTextEdit>
#include <QTextBlock>

namespace morvane {

namespace {

constexpr int width = 540;
constexpr int height = 250;
constexpr int margin = 12;

/// Repaints its border with the focus; the toolkit repaints the text alone.
class ReportView : public QPlainTextEdit {
protected:
    void focusInEvent(QFocusEvent* event) override {
        QPlainTextEdit::focusInEvent(event);
        update();
    }
    void focusOutEvent(QFocusEvent* event) override {
        QPlainTextEdit::focusOutEvent(event);
        update();
    }
};

}  // namespace

QWidget* reportText(const QString& text) {
    auto* view = new ReportView;
    view->setObjectName(QStringLiteral("reportText"));
    view->setFixedSize(width, height);
    view->setReadOnly(true);
    view->setFont(MRVTheme::font(13));
    view->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    view->document()->setDocumentMargin(margin);
    view->setPlainText(text);
    return view;
}

}  // namespace morvane
