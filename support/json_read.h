// Strict reading of JSON records: a missing key or a value of another type fails the whole read.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace morvane {

/// Thrown by every reader below. what() is the end of a sentence for the user: "内容不完整或已损坏。", or
/// with the key that failed "内容不完整或已损坏（files）。"
class JsonError : public std::runtime_error {
public:
    /// The text is no document, or a value of its own is of another type.
    JsonError();
    explicit JsonError(const std::string& key);
};

/// Parses UTF-8 text; throws JsonError for anything that is no JSON document.
nlohmann::json parseJson(std::string_view text);

const nlohmann::json& requiredObject(const nlohmann::json& value);
std::string requiredText(const nlohmann::json& object, const char* key);
bool requiredFlag(const nlohmann::json& object, const char* key);
/// A JSON number without fraction that fits 64 bits signed (1.0 counts, 1.5 does not).
std::int64_t requiredInteger(const nlohmann::json& object, const char* key);
/// Any JSON number.
double requiredNumber(const nlohmann::json& object, const char* key);
const nlohmann::json& requiredArray(const nlohmann::json& object, const char* key);
std::vector<std::string> requiredTexts(const nlohmann::json& object, const char* key);
/// Absent when the key is missing or null.
std::optional<std::string> optionalText(const nlohmann::json& object, const char* key);
std::optional<bool> optionalFlag(const nlohmann::json& object, const char* key);

}  // namespace morvane
