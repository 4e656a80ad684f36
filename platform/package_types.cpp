#include "platform/package_types.h"

#include <algorithm>
#include <array>
#include <string>

#include "support/path_text.h"

namespace morvane {

namespace {

// Lower case, sorted: programs and their parts, libraries and projects of the media programs, disk
// images and documents that are folders.
constexpr std::array<std::string_view, 54> packageExtensions{"aplibrary",
                                                             "app",
                                                             "appex",
                                                             "backupbundle",
                                                             "band",
                                                             "bundle",
                                                             "cmproj",
                                                             "cocatalog",
                                                             "component",
                                                             "docset",
                                                             "dsym",
                                                             "dvdmedia",
                                                             "dvdproj",
                                                             "fcarch",
                                                             "fcpbundle",
                                                             "framework",
                                                             "imovielibrary",
                                                             "imovieproject",
                                                             "kext",
                                                             "key",
                                                             "logicx",
                                                             "lrdata",
                                                             "mdimporter",
                                                             "migratedaplibrary",
                                                             "migratedphotolibrary",
                                                             "mpkg",
                                                             "musiclibrary",
                                                             "nib",
                                                             "numbers",
                                                             "osax",
                                                             "pages",
                                                             "photolibrary",
                                                             "photoslibrary",
                                                             "pkg",
                                                             "playground",
                                                             "plugin",
                                                             "prefpane",
                                                             "qlgenerator",
                                                             "rcproject",
                                                             "rtfd",
                                                             "saver",
                                                             "scptd",
                                                             "screenflow",
                                                             "sparsebundle",
                                                             "theater",
                                                             "tvlibrary",
                                                             "utm",
                                                             "vmwarevm",
                                                             "vst",
                                                             "vst3",
                                                             "wdgt",
                                                             "xcodeproj",
                                                             "xcworkspace",
                                                             "xpc"};
static_assert(std::is_sorted(packageExtensions.begin(), packageExtensions.end()));

}  // namespace

bool hasPackageExtension(std::string_view name) {
    std::string extension(pathExtension(name));
    for (char& byte : extension) {
        if (byte >= 'A' && byte <= 'Z')
            byte = static_cast<char>(byte + ('a' - 'A'));
    }
    return std::binary_search(packageExtensions.begin(), packageExtensions.end(), extension);
}

}  // namespace morvane
