#include "app/theme/push_button.h"

#include "app/theme/theme.h"

#include <QStyle>
#include <QStyleOptionButton>

namespace morvane {

PushButton::PushButton(const QString& text, const QString& symbol, Role role, QWidget* parent)
    : QPushButton(text, parent), symbol_(symbol), role_(role) {
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setRole(role);
}

void PushButton::setSymbol(const QString& name) {
    if (symbol_ == name)
        return;
    symbol_ = name;
    updateGeometry();
    update();
}

void PushButton::setRole(Role role) {
    role_ = role;
    setButtonSize(size_);
}

void PushButton::setButtonSize(Size size) {
    size_ = size;
    const int px = size_ == Size::Large ? 13 : 12;
    setFont(role_ == Role::Primary ? MRVTheme::boldFont(px) : MRVTheme::font(px));
    updateGeometry();
    update();
}

void PushButton::setSymbolTone(SymbolTone tone) {
    tone_ = tone;
    update();
}

void PushButton::setPadding(int padding) {
    padding_ = padding;
    updateGeometry();
    update();
}

QSize PushButton::sizeHint() const {
    QStyleOptionButton option;
    initStyleOption(&option);
    const QSize text = option.fontMetrics.size(Qt::TextShowMnemonic, this->text());
    return style()->sizeFromContents(QStyle::CT_PushButton, &option, text, this);
}

void PushButton::initStyleOption(QStyleOptionButton* option) const {
    QPushButton::initStyleOption(option);
    // What is accent-filled is said by the role, never by which button Return happens to press.
    option->features &= ~(QStyleOptionButton::DefaultButton | QStyleOptionButton::AutoDefaultButton);
}

}  // namespace morvane
