#include "support/text_fold.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

#include <unicode/brkiter.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>
#include <unicode/utf8.h>

// Folding maps every code point alone (width, canonical decomposition, marks dropped, case) and
// composes once at the end. That is the same as folding the whole text, because every character
// with a combining class is dropped: nothing is left to reorder.

namespace morvane {

namespace {

constexpr UChar32 replacementCharacter = 0xFFFD;
constexpr std::string_view replacementText = "\xEF\xBF\xBD";

enum class Width { Keep, Fold };

void require(UErrorCode status) {
    if (U_FAILURE(status))
        throw std::runtime_error(u_errorName(status));
}

const icu::Normalizer2& decomposer() {
    static const icu::Normalizer2& instance = [&]() -> const icu::Normalizer2& {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Normalizer2* found = icu::Normalizer2::getNFDInstance(status);
        require(status);
        return *found;
    }();
    return instance;
}

const icu::Normalizer2& composer() {
    static const icu::Normalizer2& instance = [&]() -> const icu::Normalizer2& {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Normalizer2* found = icu::Normalizer2::getNFCInstance(status);
        require(status);
        return *found;
    }();
    return instance;
}

// The code point at `offset`, which moves behind it; -1 (and one byte further) for a byte that
// begins no well-formed sequence.
UChar32 nextCodePoint(std::string_view text, std::size_t& offset) {
    const std::size_t left = std::min<std::size_t>(text.size() - offset, U8_MAX_LENGTH);
    const char* const bytes = text.data() + offset;
    std::int32_t length = 0;
    UChar32 codePoint = 0;
    U8_NEXT(bytes, length, static_cast<std::int32_t>(left), codePoint);
    offset += codePoint < 0 ? 1 : static_cast<std::size_t>(length);
    return codePoint;
}

// U+4E00..U+9FFF as bytes: E4 B8 80 .. E9 BF BF, well-formed.
bool isHanAt(std::string_view text, std::size_t offset) {
    if (text.size() - offset < 3)
        return false;
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[offset + index]); };
    return byte(0) >= 0xE4 && byte(0) <= 0xE9 && (byte(0) > 0xE4 || byte(1) >= 0xB8) &&
           (byte(1) & 0xC0) == 0x80 && (byte(2) & 0xC0) == 0x80;
}

char asciiLowered(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

// The forms block U+FF00..U+FFEF through its <wide> and <narrow> mappings; 0 where there is none.
constexpr UChar32 firstForm = 0xFF00;
constexpr std::size_t formCount = 0xF0;

std::array<UChar32, formCount> makeWidthTable() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* compatibility = icu::Normalizer2::getNFKCInstance(status);
    require(status);
    std::array<UChar32, formCount> table{};
    for (std::size_t index = 0; index < formCount; ++index) {
        const UChar32 form = firstForm + static_cast<UChar32>(index);
        const int type = u_getIntPropertyValue(form, UCHAR_DECOMPOSITION_TYPE);
        icu::UnicodeString mapped;
        if ((type == U_DT_WIDE || type == U_DT_NARROW) && compatibility->getRawDecomposition(form, mapped))
            table[index] = mapped.char32At(0);
    }
    return table;
}

UChar32 widthFolded(UChar32 codePoint) {
    static const std::array<UChar32, formCount> table = makeWidthTable();
    constexpr UChar32 ideographicSpace = 0x3000;
    if (codePoint == ideographicSpace)
        return ' ';
    if (codePoint < firstForm || codePoint >= firstForm + static_cast<UChar32>(formCount))
        return codePoint;
    const UChar32 mapped = table[static_cast<std::size_t>(codePoint - firstForm)];
    return mapped != 0 ? mapped : codePoint;
}

// Accents, kana voicing, Hebrew and Arabic points, variation selectors; not the dependent vowels
// of Indic and Thai writing, which are letters of a word.
bool isDiacritic(UChar32 codePoint) {
    if (u_getCombiningClass(codePoint) != 0)
        return true;
    if ((U_GET_GC_MASK(codePoint) & (U_GC_MN_MASK | U_GC_ME_MASK)) == 0)
        return false;
    UErrorCode status = U_ZERO_ERROR;
    return uscript_getScript(codePoint, &status) == USCRIPT_INHERITED;
}

bool isHangulSyllable(UChar32 codePoint) {
    return codePoint >= 0xAC00 && codePoint <= 0xD7A3;
}

void appendFolded(UChar32 codePoint, Width width, std::string& out) {
    if (width == Width::Fold)
        codePoint = widthFolded(codePoint);
    icu::UnicodeString pieces;
    if (isHangulSyllable(codePoint) || !decomposer().getDecomposition(codePoint, pieces))
        pieces.setTo(codePoint);
    icu::UnicodeString kept;
    for (std::int32_t index = 0; index < pieces.length(); index = pieces.moveIndex32(index, 1)) {
        const UChar32 piece = pieces.char32At(index);
        if (!isDiacritic(piece))
            kept.append(piece);
    }
    kept.foldCase(U_FOLD_CASE_DEFAULT).toUTF8String(out);
}

std::string composed(std::string text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        throw std::length_error("text too long to compose");
    UErrorCode status = U_ZERO_ERROR;
    const icu::StringPiece source(text.data(), static_cast<std::int32_t>(text.size()));
    if (composer().isNormalizedUTF8(source, status))
        return text;
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    composer().normalizeUTF8(0, source, sink, nullptr, status);
    require(status);
    return result;
}

std::string folded(std::string_view utf8, Width width) {
    // Names of ASCII and plain Han, almost all there are, are lowered in place and are done.
    std::string out(utf8);
    std::size_t offset = 0;
    while (offset < utf8.size()) {
        if (static_cast<unsigned char>(utf8[offset]) < 0x80) {
            out[offset] = asciiLowered(utf8[offset]);
            ++offset;
        } else if (isHanAt(utf8, offset)) {
            offset += 3;
        } else {
            break;
        }
    }
    if (offset == utf8.size())
        return out;
    out.resize(offset);
    while (offset < utf8.size()) {
        if (static_cast<unsigned char>(utf8[offset]) < 0x80) {
            out += asciiLowered(utf8[offset++]);
        } else if (isHanAt(utf8, offset)) {
            out.append(utf8, offset, 3);
            offset += 3;
        } else {
            const UChar32 codePoint = nextCodePoint(utf8, offset);
            appendFolded(codePoint < 0 ? replacementCharacter : codePoint, width, out);
        }
    }
    return composed(std::move(out));
}

bool isSpace(UChar32 codePoint) {
    return codePoint >= 0 && u_isUWhiteSpace(codePoint) != 0;
}

bool isWhitespace(UChar32 codePoint) {
    return isSpace(codePoint) || (codePoint >= 0 && u_charType(codePoint) == U_SPACE_SEPARATOR);
}

using CaseMapping = void (*)(const char*, std::uint32_t, icu::StringPiece, icu::ByteSink&, icu::Edits*,
                             UErrorCode&);

std::string caseMapped(std::string_view utf8, CaseMapping mapping) {
    const std::string valid = withInvalidBytesReplaced(utf8, replacementText);
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    UErrorCode status = U_ZERO_ERROR;
    mapping("", 0, icu::StringPiece(valid.data(), static_cast<std::int32_t>(valid.size())), sink, nullptr,
            status);
    require(status);
    return result;
}

std::unique_ptr<icu::BreakIterator> makeCharacterBreaks() {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> made(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    require(status);
    return made;
}

// An iterator keeps a position, so every thread has a clone of its own, which shares the rules.
icu::BreakIterator& characterBreaks() {
    static const std::unique_ptr<icu::BreakIterator> prototype = makeCharacterBreaks();
    thread_local const std::unique_ptr<icu::BreakIterator> mine(prototype->clone());
    // The analyzer ends thread_local objects with the function.
    return *mine;  // NOLINT(clang-analyzer-cplusplus.NewDelete)
}

struct CharacterWalk {
    std::size_t characters = 0;
    std::size_t offset = 0;
};

// Between two of these there is always a break: ASCII without CR (which joins a following LF), Han.
std::size_t plainLengthAt(std::string_view text, std::size_t offset) {
    if (static_cast<unsigned char>(text[offset]) < 0x80 && text[offset] != '\r')
        return 1;
    return isHanAt(text, offset) ? 3 : 0;
}

// Passes at most `limit` characters of `text` with the break rules, bytes kept in step with UTF-16.
CharacterWalk walkByRules(std::string_view text, std::size_t limit) {
    std::size_t scanned = 0;
    icu::UnicodeString wide;
    while (scanned < text.size()) {
        const UChar32 codePoint = nextCodePoint(text, scanned);
        wide.append(codePoint < 0 ? replacementCharacter : codePoint);
    }
    icu::BreakIterator& breaks = characterBreaks();
    breaks.setText(wide);
    CharacterWalk walk;
    std::int32_t position = 0;
    while (walk.characters < limit) {
        const std::int32_t next = breaks.next();
        if (next == icu::BreakIterator::DONE)
            break;
        while (position < next)
            position += U16_LENGTH(std::max(nextCodePoint(text, walk.offset), UChar32{0}));
        ++walk.characters;
    }
    return walk;
}

CharacterWalk walkCharacters(std::string_view text, std::size_t limit) {
    CharacterWalk walk;
    std::size_t last = 0;  // length of the plain character before `offset`
    while (walk.offset < text.size()) {
        const std::size_t length = plainLengthAt(text, walk.offset);
        if (length == 0)
            break;
        if (walk.characters == limit)
            return walk;
        walk.offset += length;
        ++walk.characters;
        last = length;
    }
    if (walk.offset == text.size())
        return walk;
    // What follows may belong to the last plain character (a combining mark): go back to before it.
    if (last != 0) {
        walk.offset -= last;
        --walk.characters;
    }
    const CharacterWalk rest = walkByRules(text.substr(walk.offset), limit - walk.characters);
    return {walk.characters + rest.characters, walk.offset + rest.offset};
}

}  // namespace

std::string fold(std::string_view utf8) {
    return folded(utf8, Width::Fold);
}

std::string foldCaseAndDiacritics(std::string_view utf8) {
    return folded(utf8, Width::Keep);
}

std::vector<std::string> splitAtWhitespace(std::string_view utf8) {
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    std::size_t offset = 0;
    while (offset < utf8.size()) {
        const std::size_t here = offset;
        if (!isSpace(nextCodePoint(utf8, offset)))
            continue;
        if (here > begin)
            pieces.emplace_back(utf8.substr(begin, here - begin));
        begin = offset;
    }
    if (begin < utf8.size())
        pieces.emplace_back(utf8.substr(begin));
    return pieces;
}

std::string trimmed(std::string_view utf8) {
    std::size_t begin = utf8.size();
    std::size_t end = utf8.size();
    bool inside = false;
    std::size_t offset = 0;
    while (offset < utf8.size()) {
        const std::size_t here = offset;
        if (isWhitespace(nextCodePoint(utf8, offset)))
            continue;
        if (!inside)
            begin = here;
        inside = true;
        end = offset;
    }
    return std::string(utf8.substr(begin, end - begin));
}

std::string lowerCased(std::string_view utf8) {
    return caseMapped(utf8, &icu::CaseMap::utf8ToLower);
}

std::string upperCased(std::string_view utf8) {
    return caseMapped(utf8, &icu::CaseMap::utf8ToUpper);
}

bool isValidUtf8(std::string_view bytes) {
    std::size_t offset = 0;
    while (offset < bytes.size()) {
        if (static_cast<unsigned char>(bytes[offset]) < 0x80)
            ++offset;
        else if (nextCodePoint(bytes, offset) < 0)
            return false;
    }
    return true;
}

std::string withInvalidBytesReplaced(std::string_view bytes, std::string_view replacement) {
    std::string result;
    result.reserve(bytes.size());
    std::size_t offset = 0;
    while (offset < bytes.size()) {
        const std::size_t here = offset;
        if (nextCodePoint(bytes, offset) < 0)
            result += replacement;
        else
            result.append(bytes, here, offset - here);
    }
    return result;
}

std::size_t characterCount(std::string_view utf8) {
    return walkCharacters(utf8, std::numeric_limits<std::size_t>::max()).characters;
}

std::size_t characterOffset(std::string_view utf8, std::size_t characters) {
    return walkCharacters(utf8, characters).offset;
}

}  // namespace morvane
