#include "app/theme/brand.h"

#include "app/theme/elided_label.h"
#include "app/theme/theme.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>
#include <QVBoxLayout>
#include <cmath>

static void initialiseBrand() {
    Q_INIT_RESOURCE(theme);
}

namespace morvane {

namespace {

constexpr int iconSide = 62;
constexpr int iconGap = 14;
constexpr int wordmarkWidth = 132;
constexpr int stackSpacing = 5;
constexpr int productLine = 26;
constexpr int detailLine = 14;

/// An image scaled to a width, in its own proportion, centred vertically.
class BrandImage : public QWidget {
public:
    explicit BrandImage(QImage image) : image_(std::move(image)) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const qreal height = width() * qreal(image_.height()) / image_.width();
        const QRectF target(0, (this->height() - height) / 2, width(), height);
        const QSize pixels = (target.size() * devicePixelRatioF()).toSize();
        if (scaled_.size() != pixels)  // smooth scaling is too dear for every repaint
            scaled_ = image_.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        painter.drawImage(target, scaled_);
    }

private:
    const QImage image_;
    QImage scaled_;
};

}  // namespace

QIcon brandIcon(const QString& path) {
    QImageReader reader(path);
    const QImage image = reader.read();
    return image.isNull() ? QApplication::windowIcon() : QIcon(QPixmap::fromImage(image));
}

QImage brandWordmark(const QString& path) {
    QSvgRenderer renderer(path);
    QImage image(renderer.isValid() ? renderer.defaultSize() : QSize(131, 28),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    if (renderer.isValid()) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
    }
    return image;
}

const QIcon& MRVTheme::icon() {
    static const QIcon icon = [] {
        initialiseBrand();
        return brandIcon(QStringLiteral(":/brand/MRVAppIcon.png"));
    }();
    return icon;
}

const QImage& MRVTheme::wordmark() {
    static const QImage image = [] {
        initialiseBrand();
        return brandWordmark(QStringLiteral(":/brand/MRVWordmark.svg"));
    }();
    return image;
}

QWidget* MRVTheme::wordmarkView(int width) {
    auto* view = new BrandImage(wordmark());
    view->setObjectName(QStringLiteral("wordmark"));
    view->setFixedSize(width, static_cast<int>(std::lround(width * 282.0 / 1309.0)));
    view->setAccessibleName(QStringLiteral("MORVANE"));
    return view;
}

QWidget* MRVTheme::nativeHeader(const QString& product, const QString& detail) {
    auto* header = new QWidget;
    auto* image = new BrandImage(icon().pixmap(QSize(256, 256)).toImage());
    image->setObjectName(QStringLiteral("icon"));
    image->setFixedSize(iconSide, iconSide);

    auto* productLabel = new ElidedLabel(21, ink());
    productLabel->setObjectName(QStringLiteral("product"));
    productLabel->setLineHeight(productLine);
    productLabel->setText(product);
    productLabel->setMinimumWidth(productLabel->sizeHint().width());
    auto* detailLabel = new ElidedLabel(11, muted());
    detailLabel->setObjectName(QStringLiteral("detail"));
    detailLabel->setLineHeight(detailLine);
    detailLabel->setText(detail);

    auto* stack = new QVBoxLayout;
    stack->setSpacing(stackSpacing);
    stack->addWidget(wordmarkView(wordmarkWidth), 0, Qt::AlignLeft);
    stack->addWidget(productLabel);
    stack->addWidget(detailLabel);

    auto* row = new QHBoxLayout(header);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(iconGap);
    row->addWidget(image, 0, Qt::AlignVCenter);
    row->addLayout(stack, 1);
    row->setAlignment(stack, Qt::AlignVCenter);
    return header;
}

}  // namespace morvane
