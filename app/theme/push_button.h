// The push button of the design. The style draws it; this class adds role, symbol and size.
#pragma once

#include <QPushButton>
#include <QString>

namespace morvane {

/// 32 high (Large: 36 high, at least 176 wide, for the footer's main action), symbol 16 before the text.
/// Takes the focus from the keyboard only, so a click never steals it from a list or a field.
class PushButton : public QPushButton {
    Q_OBJECT

public:
    enum class Role { Secondary, Primary, Quiet };
    enum class Size { Regular, Large };
    enum class SymbolTone { Standard, Accent };

    explicit PushButton(const QString& text, const QString& symbol = {}, Role role = Role::Secondary,
                        QWidget* parent = nullptr);

    const QString& symbol() const { return symbol_; }
    Role role() const { return role_; }
    Size buttonSize() const { return size_; }
    SymbolTone symbolTone() const { return tone_; }
    int padding() const { return padding_; }

    void setSymbol(const QString& name);
    void setRole(Role role);
    void setButtonSize(Size size);
    /// Accent draws the symbol of a secondary button in the accent (a favourite's star).
    void setSymbolTone(SymbolTone tone);
    /// Room left and right of the content, in logical pixels; 12 unless told.
    void setPadding(int padding);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void initStyleOption(QStyleOptionButton* option) const override;

private:
    QString symbol_;
    Role role_;
    Size size_ = Size::Regular;
    SymbolTone tone_ = SymbolTone::Standard;
    int padding_ = 12;
};

}  // namespace morvane
