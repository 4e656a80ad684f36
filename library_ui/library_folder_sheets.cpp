#include "library_ui/library_folder_sheets.h"

#include "library_ui/asset_text.h"

#include "app/theme/sheet.h"
#include "app/theme/symbols.h"
#include "app/theme/text_field.h"
#include "catalog/asset.h"
#include "support/path_text.h"

#include <QAbstractFileIconProvider>
#include <QAbstractItemView>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QPointer>
#include <QPushButton>

#include <utility>

namespace morvane {

namespace {

constexpr int fieldWidth = 440;
constexpr int popUpWidth = 460;
constexpr int fieldHeight = 28;
constexpr int sheetPadding = 24;
constexpr QSize folderPanelSize(820, 560);

/// Folders and drives in our own drawings.
class SymbolIconProvider final : public QAbstractFileIconProvider {
public:
    QIcon icon(IconType type) const override {
        return symbolIcon(type == Folder ? QStringLiteral("folder") : QStringLiteral("externaldrive"));
    }
    QIcon icon(const QFileInfo& info) const override { return icon(info.isRoot() ? Drive : Folder); }
};

/// Words, symbols and selection of Qt's panel for choosing folders.
void dressFolderPanel(QFileDialog& dialog) {
    static SymbolIconProvider icons;
    dialog.setIconProvider(&icons);
    dialog.setLabelText(QFileDialog::LookIn, QStringLiteral("位置："));
    dialog.setLabelText(QFileDialog::FileName, QStringLiteral("文件夹："));
    dialog.setLabelText(QFileDialog::Accept, QStringLiteral("添加素材库"));
    dialog.setLabelText(QFileDialog::Reject, QStringLiteral("取消"));
    // Only folders are listed: there is no type to choose.
    for (const char* unused : {"fileTypeLabel", "fileTypeCombo"}) {
        if (auto* widget = dialog.findChild<QWidget*>(QLatin1String(unused)))
            widget->hide();
    }
    for (const char* view : {"listView", "treeView"}) {
        if (auto* list = dialog.findChild<QAbstractItemView*>(QLatin1String(view)))
            list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    }
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
        button->setMinimumWidth(104);
    dialog.resize(folderPanelSize);
}

}  // namespace

void presentAddRoot(QWidget& window, std::function<void(std::vector<std::string>)> chosen) {
    auto* dialog = new QFileDialog(&window, QStringLiteral("选择素材库文件夹"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setFileMode(QFileDialog::Directory);
    // The desktop's own panels cannot choose several folders at once through Qt; Qt's panel can.
    dialog->setOptions(QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
    dialog->setViewMode(QFileDialog::List);
    dialog->setDirectory(QDir::homePath());
    dressFolderPanel(*dialog);
    QObject::connect(dialog, &QFileDialog::filesSelected, &window,
                     [chosen = std::move(chosen)](const QStringList& folders) {
                         std::vector<std::string> paths;
                         for (const QString& folder : folders)
                             paths.push_back(standardizedPath(QFile::encodeName(folder).toStdString()));
                         if (!paths.empty())
                             chosen(std::move(paths));
                     });
    dialog->open();
}

void presentManageRoots(QWidget& window, const std::vector<std::string>& roots,
                        std::function<void(std::string)> remove) {
    auto* popUp = new QComboBox;
    popUp->setFixedSize(popUpWidth, fieldHeight);
    for (const std::string& root : roots)
        popUp->addItem(shownText(root), QByteArray::fromStdString(root));

    SheetContent content;
    content.symbol = QStringLiteral("externaldrive");
    content.message = QStringLiteral("管理素材库");
    content.informative = QStringLiteral("选择不再显示的素材库。移除索引不会删除文件。");
    content.accessory = popUp;
    content.buttons = {QStringLiteral("关闭"), QStringLiteral("移除所选素材库")};
    content.cancelButton = 0;
    content.width = popUpWidth + 2 * sheetPadding;
    content.firstFocus = popUp;
    const QPointer<QComboBox> list = popUp;
    Sheet::present(&window, content, [list, remove = std::move(remove)](int button) {
        if (button == 1 && list && list->currentIndex() >= 0)
            remove(list->currentData().toByteArray().toStdString());
    });
}

QString renameSheetText(const Asset& asset) {
    const QString extension = shownText(pathExtension(asset.path)).toLower();
    return QStringLiteral(
               "硬盘上的文件会同步改名，扩展名 .%1 保持。收藏会跟随新名称。\n"
               "已有剪辑工程可能需要重新链接此素材。")
        .arg(extension);
}

void presentRename(QWidget& window, const Asset& asset, std::function<void(std::string)> save) {
    auto* field = new TextField(TextField::Size::Small);
    field->setFixedSize(fieldWidth, fieldHeight);
    field->setAccessibleName(QStringLiteral("新文件名称"));
    field->setText(shownText(withoutExtension(lastPathComponent(asset.path))));

    SheetContent content;
    content.symbol = QStringLiteral("pencil");
    content.message = QStringLiteral("重命名原文件");
    content.informative = renameSheetText(asset);
    content.accessory = field;
    content.buttons = {QStringLiteral("保存名称"), QStringLiteral("取消")};
    content.cancelButton = 1;
    content.width = fieldWidth + 2 * sheetPadding;
    content.firstFocus = field;
    const QPointer<TextField> input = field;
    Sheet::present(&window, content, [input, save = std::move(save)](int button) {
        if (button == 0 && input)
            save(input->text().toStdString());
    });
}

void presentRenameFailed(QWidget& window, const QString& description) {
    SheetContent content;
    content.warning = true;
    content.message = QStringLiteral("未能重命名");
    content.informative = description;
    content.buttons = {QStringLiteral("好")};
    Sheet::present(&window, content, [](int) {});
}

void presentAbout(QWidget& window) {
    SheetContent content;
    content.useAppIcon = true;
    content.message = QStringLiteral("MORVANE 素材助手 1.2.0 测试版");
    content.informative = QStringLiteral(
        "本地素材管理与拍摄项目整理。\n\n"
        "管理素材：搜索、试听、预览、收藏与拖入剪辑软件。\n"
        "整理素材：目录模板、复制校验、分类预演与 FCPXML 交接。\n"
        "个人设置与收藏沿用旧版，索引迁移至本机数据库。");
    content.buttons = {QStringLiteral("好")};
    Sheet::present(&window, content, [](int) {});
}

}  // namespace morvane
