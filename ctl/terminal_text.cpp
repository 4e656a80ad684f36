#include "ctl/terminal_text.h"

#include <QString>

#include "support/text_fold.h"

namespace morvane {
namespace {

/// Columns of one code point: wide for the blocks terminals draw over two cells.
std::size_t columnsOf(char32_t point) {
    const auto within = [point](char32_t first, char32_t last) { return point >= first && point <= last; };
    if (within(0x0300, 0x036f) || within(0x200b, 0x200f) || within(0xfe00, 0xfe0f))
        return 0;
    const bool wide = within(0x1100, 0x115f) || within(0x2e80, 0xa4cf) || within(0xac00, 0xd7a3) ||
                      within(0xf900, 0xfaff) || within(0xfe30, 0xfe6f) || within(0xff00, 0xff60) ||
                      within(0xffe0, 0xffe6) || within(0x1f300, 0x1f64f) || within(0x1f900, 0x1f9ff) ||
                      within(0x20000, 0x3fffd);
    return wide ? 2 : 1;
}

}  // namespace

std::string withoutControls(std::string_view text) {
    const auto points =
        QString::fromStdString(withInvalidBytesReplaced(text, "\xef\xbf\xbd")).toStdU32String();
    std::u32string safe;
    for (const char32_t point : points)
        safe += point < 0x20 || (point >= 0x7f && point < 0xa0) ? U'?' : point;
    return QString::fromStdU32String(safe).toStdString();
}

std::string cutToWidth(std::string_view text, std::size_t columns) {
    const auto points = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toStdU32String();
    std::size_t used = 0;
    std::size_t fitting = 0;  // points that leave a column for the ellipsis
    for (std::size_t index = 0; index < points.size(); ++index) {
        used += columnsOf(points[index]);
        if (used + 1 <= columns)
            fitting = index + 1;
        if (used > columns)
            return QString::fromStdU32String(points.substr(0, fitting) + U"…").toStdString();
    }
    return std::string(text);
}

}  // namespace morvane
