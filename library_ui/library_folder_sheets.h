// The sheets of the library workspace: adding and removing library folders, renaming a file, about.
// Each opens over `window`, returns at once and answers on the main thread; nothing answers when the
// user cancels. The sheets change nothing themselves.
#pragma once

#include <QString>

#include <functional>
#include <string>
#include <vector>

class QWidget;

namespace morvane {

struct Asset;

/// Lets the user choose one or more folders ("选择素材库文件夹"). `chosen` gets their standardised absolute
/// paths.
void presentAddRoot(QWidget& window, std::function<void(std::vector<std::string> folders)> chosen);
/// Lets the user take one of `roots` out of the library; `remove` gets its path.
void presentManageRoots(QWidget& window, const std::vector<std::string>& roots,
                        std::function<void(std::string root)> remove);
/// Asks for a new base name of `asset`'s file; `save` gets the field's text as typed.
void presentRename(QWidget& window, const Asset& asset, std::function<void(std::string baseName)> save);
/// "未能重命名", with the error's description.
void presentRenameFailed(QWidget& window, const QString& description);
void presentAbout(QWidget& window);

/// The informative text of the rename sheet.
QString renameSheetText(const Asset& asset);

}  // namespace morvane
