// A symbol standing alone: a status glyph, the picture of an empty state, the glyph of a tile.
#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

namespace morvane {

/// Shows one symbol, `size` logical pixels square, in a widget of that size. An empty name shows nothing and
/// keeps the room. Decorative: assistive tools pass over it unless it is given an accessible name.
class SymbolView : public QWidget {
    Q_OBJECT

public:
    SymbolView(QString name, int size, QColor color, QWidget* parent = nullptr);

    const QString& symbol() const { return symbol_; }
    const QColor& color() const { return color_; }
    void setSymbol(const QString& name);
    void setColor(const QColor& color);

    QSize sizeHint() const override { return {size_, size_}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const int size_;
    QString symbol_;
    QColor color_;
};

}  // namespace morvane
