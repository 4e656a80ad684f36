// One running window per store folder.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace morvane {

class SingleInstance {
public:
    /// Window can be asked to come forward; Command (a program without a window) cannot.
    enum class Role { Window, Command };

    /// Claims `storeFolder`, existing or not, under any of its names: an advisory lock beside a local
    /// socket in $XDG_RUNTIME_DIR, else in a private folder below /tmp. Where neither can be used
    /// there is no protection, and this process counts as the first.
    explicit SingleInstance(const std::string& storeFolder, Role role = Role::Window);
    ~SingleInstance();

    /// True when this process holds the claim.
    bool isFirst() const;
    /// Asks the first process to come forward. True when it was told; false after two seconds in
    /// which it could not be reached, as when it is a Command.
    bool raiseFirst();
    /// Runs `raise` on the main thread whenever another start asks this one forward; requests made
    /// before this call come then. Call on the main thread.
    void onRaise(std::function<void()> raise);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace morvane
