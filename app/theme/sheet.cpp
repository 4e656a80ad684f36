#include "app/theme/sheet.h"

#include "app/theme/elided_label.h"
#include "app/theme/paint.h"
#include "app/theme/push_button.h"
#include "app/theme/scrim.h"
#include "app/theme/symbol_view.h"
#include "app/theme/theme.h"

#include <QEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPropertyAnimation>
#include <QVBoxLayout>
#include <algorithm>

namespace morvane {

namespace {

constexpr int padding = 24;
constexpr int tileSide = 40;
constexpr int tileRadius = 10;
constexpr int glyphSide = 22;
constexpr int appIconSide = 62;
constexpr int headGap = 14;
constexpr int textGap = 4;
constexpr int accessoryGap = 16;
constexpr int buttonsGap = 20;
constexpr int buttonGap = 8;
constexpr int buttonWidth = 88;
constexpr int buttonPadding = 16;
constexpr int radius = 14;
constexpr int topInWindow = 132;
constexpr int marginInWindow = 20;
constexpr int informativeLine = 19;
constexpr int mostLines = 16;
constexpr int fadeMilliseconds = 160;
constexpr int rise = 8;

/// A rounded tile with a symbol in its middle.
class Tile : public QWidget {
public:
    Tile(const SheetContent& content) : warning_(content.warning) {
        setFixedSize(tileSide, tileSide);
        const bool named = !content.symbol.isEmpty();
        const QString symbol = named             ? content.symbol
                               : content.warning ? QStringLiteral("exclamationmark.triangle")
                                                 : QStringLiteral("info.circle");
        auto* glyph =
            new SymbolView(symbol, glyphSide, warning_ ? MRVTheme::warning() : MRVTheme::accent(), this);
        glyph->move((tileSide - glyphSide) / 2, (tileSide - glyphSide) / 2);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        paintBox(painter, rect(),
                 {tileRadius, warning_ ? MRVTheme::warningSoft() : MRVTheme::accentSoft(), {}});
    }

private:
    const bool warning_;
};

QWidget* appIcon() {
    auto* label = new QLabel;
    label->setFixedSize(appIconSide, appIconSide);
    label->setPixmap(MRVTheme::icon().pixmap(QSize(appIconSide, appIconSide), label->devicePixelRatioF()));
    return label;
}

ElidedLabel* messageLabel(const QString& text) {
    auto* label = new ElidedLabel(15, MRVTheme::ink(), ElidedLabel::Weight::Bold);
    label->setMaximumLines(mostLines);
    label->setText(text);
    return label;
}

ElidedLabel* informativeLabel(const QString& text) {
    auto* label = new ElidedLabel(12, MRVTheme::muted());
    label->setLineHeight(informativeLine);
    label->setMaximumLines(mostLines);
    label->setText(text);
    return label;
}

bool compositorPlaces() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

}  // namespace

Sheet* Sheet::present(QWidget* window, SheetContent content, std::function<void(int)> answered) {
    QWidget* top = window->window();
    const QList<Sheet*> before = top->findChildren<Sheet*>(QString(), Qt::FindDirectChildrenOnly);
    auto* sheet = new Sheet(top, std::move(content), std::move(answered));
    const auto waiting =
        std::find_if(before.crbegin(), before.crend(), [](Sheet* other) { return !other->done_; });
    if (waiting == before.crend())
        sheet->open();
    else
        connect(*waiting, &QDialog::finished, sheet, &Sheet::open);
    return sheet;
}

Sheet::Sheet(QWidget* window, SheetContent content, std::function<void(int)> answered)
    : QDialog(window, Qt::Dialog | Qt::FramelessWindowHint),
      content_(std::move(content)),
      answered_(std::move(answered)) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_DeleteOnClose, false);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(content_.message);
    setAccessibleName(content_.message);
    setAccessibleDescription(content_.informative);
    build();
}

void Sheet::build() {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(padding, padding, padding, padding);
    column->setSpacing(0);
    column->addLayout(buildHead());
    if (content_.accessory != nullptr) {
        column->addSpacing(accessoryGap);
        column->addWidget(content_.accessory);
    }
    column->addSpacing(buttonsGap);
    column->addLayout(buildButtons());
    setFixedWidth(content_.width);
    setFixedHeight(column->heightForWidth(content_.width));
}

QBoxLayout* Sheet::buildHead() {
    auto* text = new QVBoxLayout;
    text->setSpacing(textGap);
    text->addWidget(messageLabel(content_.message));
    if (!content_.informative.isEmpty())
        text->addWidget(informativeLabel(content_.informative));
    text->addStretch();
    auto* head = new QHBoxLayout;
    head->setSpacing(headGap);
    QWidget* picture = content_.useAppIcon ? appIcon() : new Tile(content_);
    head->addWidget(picture, 0, Qt::AlignTop);
    head->addLayout(text, 1);
    return head;
}

QBoxLayout* Sheet::buildButtons() {
    auto* row = new QHBoxLayout;
    row->setSpacing(buttonGap);
    row->addStretch();
    for (int index = 0; index < content_.buttons.size(); ++index) {
        const auto role = index == 0 ? PushButton::Role::Primary : PushButton::Role::Secondary;
        auto* made = new PushButton(content_.buttons[index], {}, role);
        made->setPadding(buttonPadding);
        made->setMinimumWidth(buttonWidth);
        made->setAutoDefault(false);
        made->setDefault(index == 0);
        connect(made, &QPushButton::clicked, this, [this, index] { press(index); });
        row->insertWidget(1, made);
        buttons_.push_back(made);
    }
    return row;
}

void Sheet::open() {
    scrim_ = new Scrim(parentWidget(), this);
    parentWidget()->installEventFilter(this);
    place();
    QDialog::open();
    activateWindow();  // not every window manager gives a new dialog the keyboard
}

void Sheet::place() {
    const QWidget* window = parentWidget();
    const int lowest = std::max(0, window->height() - height() - marginInWindow);
    const int top = compositorPlaces() ? (window->height() - height()) / 2 : std::min(topInWindow, lowest);
    const QPoint inWindow((window->width() - width()) / 2, top);
    move(window->mapToGlobal(inWindow));
    if (auto* scrim = qobject_cast<Scrim*>(scrim_.data()))
        scrim->cover(QRect(inWindow, size()));
}

void Sheet::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    QWidget* focus = content_.firstFocus != nullptr ? content_.firstFocus : buttons_.front();
    focus->setFocus(Qt::OtherFocusReason);
    if (auto* input = qobject_cast<QLineEdit*>(focus))
        input->selectAll();
    if (MRVTheme::reducedMotion() || compositorPlaces())
        return;
    auto* fade = new QVariantAnimation(this);
    fade->setStartValue(0.0);
    fade->setEndValue(1.0);
    fade->setDuration(fadeMilliseconds);
    fade->setEasingCurve(QEasingCurve::OutCubic);
    const QPoint target = pos();
    connect(fade, &QVariantAnimation::valueChanged, this, [this, target](const QVariant& value) {
        setWindowOpacity(value.toDouble());
        move(target + QPoint(0, qRound(rise * (1 - value.toDouble()))));
    });
    fade->start(QAbstractAnimation::DeleteWhenStopped);
}

void Sheet::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintBox(painter, rect(), {radius, MRVTheme::sheet(), MRVTheme::sheetLine()});
}

int Sheet::escapeButton() const {
    return content_.buttons.size() == 1 ? 0 : content_.cancelButton;
}

void Sheet::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        buttons_.front()->click();
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        if (escapeButton() >= 0)
            buttons_[static_cast<std::size_t>(escapeButton())]->click();
        return;
    }
    QDialog::keyPressEvent(event);
}

void Sheet::closeEvent(QCloseEvent* event) {
    // A window manager's close, or the application's end, is the same wish as Esc.
    event->setAccepted(done_ || escapeButton() >= 0);
    if (event->isAccepted())
        answer(escapeButton());
}

bool Sheet::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && isVisible()) {
        if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
            place();
        else if (event->type() == QEvent::WindowActivate)  // by a click beside the sheet
            QMetaObject::invokeMethod(
                this, [this] { activateWindow(); }, Qt::QueuedConnection);
    }
    return QDialog::eventFilter(watched, event);
}

void Sheet::press(int button) {
    if (button != 0 || !content_.mayConfirm || content_.mayConfirm())
        answer(button);
}

void Sheet::answer(int button) {
    if (done_)
        return;
    done_ = true;
    if (scrim_ != nullptr)
        scrim_->deleteLater();
    parentWidget()->removeEventFilter(this);
    deleteLater();
    const auto answered = std::move(answered_);
    hide();
    done(button);  // lets the next sheet in
    if (answered)
        answered(button);
}

}  // namespace morvane
