#include <sys/mman.h>
#include <unistd.h>

#include <string_view>

#include "media/helper/refusal.h"
#include "media/helper/sandbox.h"
#include "media/helper/thumbnail.h"
#include "support/unique_fd.h"

namespace morvane {

namespace {

using namespace std::string_view_literals;

/// Only its beginning: enough for the library to look for its decoders.
constexpr std::string_view heicBeginning =
    "\0\0\0\x18"
    "ftypheic\0\0\0\0mif1heic\0\0\0\x08meta"sv;

/// Text in the families drawings name most, and an embedded picture.
constexpr std::string_view tinyDrawing =
    "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' width='40' "
    "height='40'>"
    "<text y='9' font-size='8' font-family='sans-serif'>Ag\xe7\xb4\xa0</text>"
    "<text y='19' font-size='8' font-family='serif' font-weight='bold'>Ag\xe6\x9d\x90</text>"
    "<text y='29' font-size='8' font-family='monospace' font-style='italic'>Ag\xe5\x8a\xa9</text>"
    "<image width='4' height='4' "
    "xlink:href='data:image/png;base64,iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAQAAAC1HAwC"
    "AAAAC0lEQVR42mP8/x8AAwMCAO+ip1sAAAAASUVORK5CYII='/>"
    "<image width='4' height='4' xlink:href='data:image/jpeg;base64,/9j/2Q=='/></svg>"sv;

void decodeOnce(std::string_view content) {
    const UniqueFd file(::memfd_create("warm-up", MFD_CLOEXEC));
    if (!file || ::write(file.get(), content.data(), content.size()) != static_cast<ssize_t>(content.size()))
        return;
    try {
        makeThumbnail(file.get(), 16);
    } catch (const Refusal&) {
        // The loaders are in memory now, which is all that is wanted.
    }
}

}  // namespace

void warmUpDecoders() {
    for (const std::string_view content : {heicBeginning, tinyDrawing})
        decodeOnce(content);
}

}  // namespace morvane
