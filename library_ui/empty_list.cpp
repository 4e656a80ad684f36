#include "library_ui/empty_list.h"

#include "app/theme/push_button.h"
#include "app/theme/symbol_view.h"
#include "app/theme/theme.h"

#include <QLabel>
#include <QVBoxLayout>

namespace morvane {

namespace {

constexpr int symbolSize = 58;
/// The block stands this much above the middle, twice over.
constexpr int lift = 40;
constexpr int adviceLine = 19;

QLabel* label(const QFont& font, const QColor& color) {
    auto* made = new QLabel;
    made->setFont(font);
    made->setAlignment(Qt::AlignCenter);
    QPalette palette = made->palette();
    palette.setColor(QPalette::WindowText, color);
    made->setPalette(palette);
    return made;
}

/// `text` with its lines `adviceLine` apart.
QString spacedLines(const QString& text) {
    return QStringLiteral("<div style='line-height:%1px'>%2</div>")
        .arg(adviceLine)
        .arg(text.toHtmlEscaped().replace(QLatin1Char('\n'), QStringLiteral("<br>")));
}

}  // namespace

EmptyState emptyStateFor(const ListFacts& facts) {
    if (facts.isLoading || facts.rows > 0)
        return EmptyState::None;
    if (facts.roots == 0)
        return EmptyState::FirstStart;
    if (facts.isScanning && facts.assets == 0)
        return EmptyState::None;
    return facts.searchText.trimmed().isEmpty() ? EmptyState::NoResultBare : EmptyState::NoResult;
}

EmptyList::EmptyList(QWidget* parent)
    : QWidget(parent),
      symbol_(new SymbolView({}, symbolSize, MRVTheme::accent())),
      heading_(label(MRVTheme::boldFont(15), MRVTheme::ink())),
      advice_(label(MRVTheme::font(12), MRVTheme::muted())),
      addFolder_(new PushButton(QStringLiteral("添加文件夹…"), QStringLiteral("folder.badge.plus"),
                                PushButton::Role::Primary)),
      clearSearch_(new PushButton(QStringLiteral("清除搜索"), QStringLiteral("xmark"))) {
    heading_->setFixedHeight(MRVTheme::lineHeight(15));
    advice_->setTextFormat(Qt::RichText);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, lift);
    column->setSpacing(0);
    column->addStretch(1);
    column->addWidget(symbol_, 0, Qt::AlignHCenter);
    column->addSpacing(16);
    column->addWidget(heading_);
    column->addSpacing(6);
    column->addWidget(advice_);
    column->addSpacing(18);
    column->addWidget(addFolder_, 0, Qt::AlignHCenter);
    column->addWidget(clearSearch_, 0, Qt::AlignHCenter);
    column->addStretch(1);
    connect(addFolder_, &QPushButton::clicked, this, &EmptyList::addFolderRequested);
    connect(clearSearch_, &QPushButton::clicked, this, &EmptyList::clearSearchRequested);
    setState(EmptyState::None);
}

void EmptyList::setState(EmptyState state) {
    state_ = state;
    const bool first = state == EmptyState::FirstStart;
    symbol_->setSymbol(first ? QStringLiteral("externaldrive") : QStringLiteral("magnifyingglass"));
    heading_->setText(first ? QStringLiteral("从一个素材文件夹开始") : QStringLiteral("未找到素材"));
    advice_->setText(spacedLines(
        first ? QStringLiteral("移动硬盘、素材盘或项目文件夹都可以。\n只建立索引，文件保持原位置。")
              : QStringLiteral("尝试缩短关键词、切换分类或添加文件夹")));
    addFolder_->setVisible(first);
    clearSearch_->setVisible(state == EmptyState::NoResult);
    setVisible(state != EmptyState::None);
}

}  // namespace morvane
