#include "app/theme/symbol_view.h"

#include "app/theme/symbols.h"

#include <QPainter>

namespace morvane {

SymbolView::SymbolView(QString name, int size, QColor color, QWidget* parent)
    : QWidget(parent), size_(size), symbol_(std::move(name)), color_(color) {
    setFixedSize(size, size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SymbolView::setSymbol(const QString& name) {
    if (symbol_ == name)
        return;
    symbol_ = name;
    update();
}

void SymbolView::setColor(const QColor& color) {
    if (color_ == color)
        return;
    color_ = color;
    update();
}

void SymbolView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintSymbol(painter, rect(), symbol_, color_);
}

}  // namespace morvane
