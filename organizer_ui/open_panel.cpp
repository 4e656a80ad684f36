#include "organizer_ui/open_panel.h"

#include <memory>
#include <utility>

#include "app/theme/push_button.h"
#include "app/theme/sheet.h"

namespace morvane {

namespace {

constexpr int panelWidth = 760;

}  // namespace

void presentOpenPanel(QWidget* view, const OpenPanelRequest& request, SerialQueue& queue,
                      std::function<void(const std::vector<FileUrl>&)> chosen) {
    auto* browser = new FolderBrowser(request.rules, queue);
    SheetContent content;
    content.symbol =
        request.rules.choosable == Choosable::files ? QStringLiteral("doc") : QStringLiteral("folder");
    content.message = QString::fromStdString(request.title.empty() ? request.message : request.title);
    if (!request.title.empty())
        content.informative = QString::fromStdString(request.message);
    content.accessory = browser;
    content.buttons = QStringList{QString::fromStdString(request.prompt), QStringLiteral("取消")};
    content.cancelButton = 1;
    content.width = panelWidth;
    content.firstFocus = browser->firstFocus();
    content.mayConfirm = [browser] { return browser->confirm(); };
    // The browser may be gone when the answer comes, so what it offers is kept beside it.
    auto offer = std::make_shared<std::vector<FileUrl>>();
    Sheet* sheet = Sheet::present(view, content, [offer, chosen = std::move(chosen)](int button) {
        if (button == 0 && !offer->empty())
            chosen(*offer);
    });
    PushButton* confirm = sheet->button(0);
    const auto refresh = [browser, offer, confirm] {
        *offer = browser->chosen();
        confirm->setEnabled(browser->canConfirm());
    };
    QObject::connect(browser, &FolderBrowser::choiceChanged, confirm, refresh);
    QObject::connect(browser, &FolderBrowser::confirmed, confirm, &QPushButton::click);
    browser->browse(request.startFolder.empty() ? "~" : request.startFolder);
    refresh();
}

}  // namespace morvane
