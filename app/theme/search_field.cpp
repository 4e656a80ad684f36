#include "app/theme/search_field.h"

#include "app/theme/symbols.h"
#include "app/theme/theme.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QPainter>

namespace morvane {

namespace {

constexpr int symbolSide = 16;
constexpr int symbolLeft = 10;
constexpr int symbolGap = 8;
constexpr int clearSide = 14;
constexpr int clearTarget = 24;
constexpr int clearInset = 5;   // from the trailing edge to the button's target
constexpr int styleInset = 12;  // where the style begins a line edit's text

class ClearButton : public QAbstractButton {
public:
    explicit ClearButton(QWidget* parent) : QAbstractButton(parent) {
        setFocusPolicy(Qt::NoFocus);  // Esc does the same
        setCursor(Qt::ArrowCursor);
        setAttribute(Qt::WA_Hover);
        setAccessibleName(QStringLiteral("清除搜索"));
        resize(clearTarget, clearTarget);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QRectF symbol(0, 0, clearSide, clearSide);
        symbol.moveCenter(QRectF(rect()).center());
        const QColor color = isDown()       ? MRVTheme::faint()
                             : underMouse() ? MRVTheme::ink()
                                            : MRVTheme::muted();
        paintSymbol(painter, symbol, QStringLiteral("xmark.circle.fill"), color);
    }
};

}  // namespace

SearchField::SearchField(QWidget* parent) : QLineEdit(parent) {
    setFont(MRVTheme::font(12));
    setFixedHeight(32);
    setMinimumWidth(300);
    setMaximumWidth(340);
    setTextMargins(symbolLeft + symbolSide + symbolGap - styleInset, 0, clearTarget + clearInset - styleInset,
                   0);
    auto* button = new ClearButton(this);
    button->hide();
    clearButton_ = button;
    connect(button, &QAbstractButton::clicked, this, &SearchField::clearByUser);
    connect(this, &QLineEdit::textChanged, button,
            [button](const QString& text) { button->setVisible(!text.isEmpty()); });
}

void SearchField::clearByUser() {
    if (text().isEmpty())
        return;
    clear();
    Q_EMIT textEdited(QString());
}

void SearchField::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    const QRectF symbol(symbolLeft, (height() - symbolSide) / 2.0, symbolSide, symbolSide);
    paintSymbol(painter, symbol, QStringLiteral("magnifyingglass"),
                isEnabled() ? MRVTheme::muted() : MRVTheme::disabledText());
}

void SearchField::resizeEvent(QResizeEvent* event) {
    QLineEdit::resizeEvent(event);
    clearButton_->move(width() - clearInset - clearTarget, (height() - clearTarget) / 2);
}

void SearchField::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && !text().isEmpty()) {
        clearByUser();
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

}  // namespace morvane
