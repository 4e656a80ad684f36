#include "support/json_read.h"

#include <limits>
#include <string_view>

namespace morvane {

namespace {

using nlohmann::json;

// Null when the key is missing.
const json* member(const json& object, const char* key) {
    const json& record = requiredObject(object);
    const auto found = record.find(key);
    return found == record.end() ? nullptr : &*found;
}

const json& requiredMember(const json& object, const char* key) {
    const json* found = member(object, key);
    if (found == nullptr)
        throw JsonError(key);
    return *found;
}

std::string text(const json& value, const char* key) {
    if (!value.is_string())
        throw JsonError(key);
    return value.get<std::string>();
}

bool flag(const json& value, const char* key) {
    if (!value.is_boolean())
        throw JsonError(key);
    return value.get<bool>();
}

}  // namespace

JsonError::JsonError() : std::runtime_error("内容不完整或已损坏。") {}

JsonError::JsonError(const std::string& key) : std::runtime_error("内容不完整或已损坏（" + key + "）。") {}

json parseJson(std::string_view text) {
    try {
        return json::parse(text);
    } catch (const json::exception&) {
        throw JsonError();
    }
}

const json& requiredObject(const json& value) {
    if (!value.is_object())
        throw JsonError();
    return value;
}

std::string requiredText(const json& object, const char* key) {
    return text(requiredMember(object, key), key);
}

bool requiredFlag(const json& object, const char* key) {
    return flag(requiredMember(object, key), key);
}

std::int64_t requiredInteger(const json& object, const char* key) {
    const json& value = requiredMember(object, key);
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            throw JsonError(key);
        return static_cast<std::int64_t>(number);
    }
    if (value.is_number_integer())
        return value.get<std::int64_t>();
    if (!value.is_number_float())
        throw JsonError(key);
    const auto number = value.get<double>();
    // 2^63 as a double; its negative is the smallest integer itself.
    constexpr double limit = 9223372036854775808.0;
    if (!(number >= -limit && number < limit))
        throw JsonError(key);
    const auto whole = static_cast<std::int64_t>(number);
    if (static_cast<double>(whole) != number)
        throw JsonError(key);
    return whole;
}

double requiredNumber(const json& object, const char* key) {
    const json& value = requiredMember(object, key);
    if (!value.is_number())
        throw JsonError(key);
    return value.get<double>();
}

const json& requiredArray(const json& object, const char* key) {
    const json& value = requiredMember(object, key);
    if (!value.is_array())
        throw JsonError(key);
    return value;
}

std::vector<std::string> requiredTexts(const json& object, const char* key) {
    const json& array = requiredArray(object, key);
    std::vector<std::string> texts;
    texts.reserve(array.size());
    for (const json& entry : array)
        texts.push_back(text(entry, key));
    return texts;
}

std::optional<std::string> optionalText(const json& object, const char* key) {
    const json* value = member(object, key);
    if (value == nullptr || value->is_null())
        return std::nullopt;
    return text(*value, key);
}

std::optional<bool> optionalFlag(const json& object, const char* key) {
    const json* value = member(object, key);
    if (value == nullptr || value->is_null())
        return std::nullopt;
    return flag(*value, key);
}

}  // namespace morvane
