// Search folding and Unicode helpers over UTF-8 text (ICU).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Folds `utf8` for searching: case, diacritics and width are made equal, in the locale zh_CN.
/// Canonically equivalent spellings (NFC, NFD) give the same text; half-width and full-width
/// forms fold together; a Hangul syllable stays whole. Bytes that are no UTF-8 become U+FFFD.
/// ASCII and plain Han text take a fast path. Any thread.
std::string fold(std::string_view utf8);

/// Folds case and diacritics only, in the locale en_US_POSIX (width is kept): the key under which
/// two destination names collide. Any thread.
std::string foldCaseAndDiacritics(std::string_view utf8);

/// Splits at every Unicode white-space character and drops empty pieces.
std::vector<std::string> splitAtWhitespace(std::string_view utf8);

/// Removes white space and line breaks (Unicode White_Space, plus category Zs) from both ends.
std::string trimmed(std::string_view utf8);

/// Full Unicode lower-casing / upper-casing, root locale.
std::string lowerCased(std::string_view utf8);
std::string upperCased(std::string_view utf8);

/// True for well-formed UTF-8 (no surrogates, no overlong forms, at most U+10FFFF).
bool isValidUtf8(std::string_view bytes);
/// Replaces every byte that is not part of well-formed UTF-8 by `replacement`.
std::string withInvalidBytesReplaced(std::string_view bytes, std::string_view replacement);

/// Number of user-perceived characters (extended grapheme clusters). Invalid bytes count one each.
std::size_t characterCount(std::string_view utf8);
/// Byte offset after the first `characters` user-perceived characters; the size of the text when
/// it has fewer.
std::size_t characterOffset(std::string_view utf8, std::size_t characters);

}  // namespace morvane
