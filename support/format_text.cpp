#include "support/format_text.h"

#include <array>
#include <stdexcept>

#include <unicode/locid.h>
#include <unicode/numberformatter.h>

#include "support/user_locale.h"

namespace morvane {

namespace {

struct Unit {
    const char* name;
    std::uint64_t bytes;
    unsigned fractionDigits;
};

constexpr std::array<Unit, 6> units{{{"KB", 1'000, 0},
                                     {"MB", 1'000'000, 1},
                                     {"GB", 1'000'000'000, 2},
                                     {"TB", 1'000'000'000'000, 2},
                                     {"PB", 1'000'000'000'000'000, 2},
                                     {"EB", 1'000'000'000'000'000'000, 2}}};

}  // namespace

std::string formatBytes(std::int64_t bytes) {
    if (bytes <= 0)
        return "0 KB";
    const auto count = static_cast<std::uint64_t>(bytes);
    if (count < units.front().bytes)
        return std::to_string(count) + " 字节";
    for (const Unit& unit : units) {
        std::uint64_t scale = 1;
        for (unsigned digit = 0; digit < unit.fractionDigits; ++digit)
            scale *= 10;
        // Rounded half up, in steps of the last digit shown; 1000 of a unit is one of the next.
        const std::uint64_t step = unit.bytes / scale;
        const std::uint64_t steps = count / step + (count % step >= step - count % step ? 1 : 0);
        if (steps >= 1000 * scale && &unit != &units.back())
            continue;
        std::string text = std::to_string(steps / scale);
        std::string fraction = std::to_string(scale + steps % scale).substr(1);
        while (!fraction.empty() && fraction.back() == '0')
            fraction.pop_back();
        if (!fraction.empty())
            text += "." + fraction;
        return text + " " + unit.name;
    }
    throw std::logic_error("the last unit takes every count");
}

std::string formatCount(std::int64_t count) {
    static const icu::number::LocalizedNumberFormatter formatter =
        icu::number::NumberFormatter::withLocale(icu::Locale(userLocale("LC_NUMERIC").c_str()));
    UErrorCode status = U_ZERO_ERROR;
    std::string text;
    formatter.formatInt(count, status).toString(status).toUTF8String(text);
    return U_SUCCESS(status) ? text : std::to_string(count);
}

}  // namespace morvane
