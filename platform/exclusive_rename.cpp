#include "platform/exclusive_rename.h"

#include <fcntl.h>
#include <linux/fs.h>

#include <cerrno>
#include <cstdio>

namespace morvane {

namespace {

int renameWithFlags(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    return ::renameat2(fromFolder, from, toFolder, to, flags) == 0 ? 0 : errno;
}

}  // namespace

int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to) {
    return renameWithFlags(fromFolder, from, toFolder, to, RENAME_NOREPLACE);
}

int renameExclusively(const std::string& from, const std::string& to) {
    return renameExclusively(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str());
}

int exchangeNames(int folder, const char* first, const char* second) {
    return renameWithFlags(folder, first, folder, second, RENAME_EXCHANGE);
}

}  // namespace morvane
