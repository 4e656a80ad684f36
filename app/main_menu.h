// The main menu as one table, and the building of a menu bar from it.
#pragma once

#include <array>
#include <functional>

class QMenuBar;

namespace morvane {

/// What an item does. The items from Quit to SelectAll have no fixed receiver: sendToFocus() hands
/// the editing ones to whatever has the keyboard focus.
enum class MenuCommand {
    Separator,
    About,
    Quit,
    Cut,
    CopySmart,
    Paste,
    SelectAll,
    FocusSearch,
    AddRoot,
    Refresh,
    ManageRoots,
    RenameFile
};

struct MenuEntry {
    const char* menu;   ///< title of the menu it stands in
    const char* title;  ///< "" for a separator
    MenuCommand command;
    char key;  ///< letter pressed with the command key; 0 for none
};

inline constexpr std::array<MenuEntry, 12> mainMenuEntries{{
    {"MORVANE", "关于MORVANE 素材助手", MenuCommand::About, 0},
    {"MORVANE", "", MenuCommand::Separator, 0},
    {"MORVANE", "退出MORVANE 素材助手", MenuCommand::Quit, 'Q'},
    {"编辑", "剪切", MenuCommand::Cut, 'X'},
    {"编辑", "复制", MenuCommand::CopySmart, 'C'},
    {"编辑", "粘贴", MenuCommand::Paste, 'V'},
    {"编辑", "全选", MenuCommand::SelectAll, 'A'},
    {"编辑", "搜索素材", MenuCommand::FocusSearch, 'F'},
    {"素材库", "添加素材文件夹…", MenuCommand::AddRoot, 'O'},
    {"素材库", "刷新索引", MenuCommand::Refresh, 'R'},
    {"素材库", "管理素材库…", MenuCommand::ManageRoots, 0},
    {"素材库", "重命名所选文件…", MenuCommand::RenameFile, 0},
}};

/// Fills `bar` from the table, in its order; `chosen` runs for every item the user picks or calls
/// by its key, and lives as long as the bar.
void buildMainMenu(QMenuBar& bar, std::function<void(MenuCommand)> chosen);

/// Hands Cut, Paste or SelectAll to the widget with the keyboard focus; nothing happens when there
/// is none or it knows no such action.
void sendToFocus(MenuCommand command);

/// When a text has the keyboard focus (an input, a text view, a selectable label), copies its selected
/// part and returns true; otherwise returns false, having done nothing.
bool copyFromFocusedText();

}  // namespace morvane
