// Our symbols: SVG drawings on a 24 grid, named as the symbol, tinted when drawn.
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QRectF>
#include <QString>

class QPainter;

namespace morvane {

/// Whether a drawing of that name exists.
bool hasSymbol(const QString& name);

/// The symbol `name`, `size` logical pixels square, in `color`, drawn for `ratio` device pixels a logical
/// one. Cached. Below 16 px the strokes are thickened to 1.25 px. A null pixmap for an unknown name. Main
/// thread.
QPixmap symbolPixmap(const QString& name, int size, const QColor& color, qreal ratio);

/// Paints the symbol in the largest square centred in `rect`, snapped to the device pixel grid. An unknown
/// name paints nothing.
void paintSymbol(QPainter& painter, const QRectF& rect, const QString& name, const QColor& color);

enum class SymbolTurn { None, Mirrored, UpsideDown };

/// The symbol as an icon for menus, tool buttons and item views: muted, ink while active or selected,
/// disabledText when disabled.
QIcon symbolIcon(const QString& name, SymbolTurn turn = SymbolTurn::None);

}  // namespace morvane
