#include "html-engine/internal/Utf8.h"

#include <cstdint>
#include <cstring>

#include "service-common/UnicodeText.h"

namespace HtmlEngine::Internal {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Whether eight bytes are ASCII without NUL.
bool AreEightPlain(const char* bytes)
{
    constexpr std::uint64_t kHighBits = 0x8080808080808080ULL;
    constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    // Subtracting one from each byte borrows into the high bit only of bytes that were 0 when no
    // byte has its high bit set.
    return ((word | (word - kOnes)) & kHighBits) == 0;
}

/// Length of the part at the front that is certainly well formed: ASCII without NUL, and the common
/// characters of two and three bytes.
std::size_t CommonLength(std::string_view text)
{
    const char* at = text.data();
    const char* const end = at + text.size();
    const auto byte = [&](std::ptrdiff_t offset) { return static_cast<unsigned char>(at[offset]); };
    const auto continues = [&](std::ptrdiff_t offset) { return (byte(offset) & 0xC0) == 0x80; };
    while (end - at >= 8) {
        if (AreEightPlain(at)) {
            at += 8;
        } else if (byte(0) > 0 && byte(0) < 0x80) {
            ++at;
        } else if (byte(0) >= 0xC2 && byte(0) < 0xE0 && continues(1)) {
            at += 2;
        } else if (byte(0) > 0xE0 && byte(0) < 0xED && continues(1) && continues(2)) {
            at += 3;
        } else {
            break;
        }
    }
    return static_cast<std::size_t>(at - text.data());
}

}  // namespace

void AppendUtf8(std::uint32_t number, std::string& out)
{
    const bool isCharacter =
        number != 0 && number <= UnicodeText::kLastCodePoint && !UnicodeText::IsSurrogate(number);
    UnicodeText::Append(out, isCharacter ? number : UnicodeText::kReplacement);
}

std::string_view RepairUtf8(std::string_view text, std::string& storage)
{
    std::size_t copied = 0;
    bool repaired = false;
    for (std::size_t at = 0; at < text.size();) {
        at += CommonLength(text.substr(at));
        if (at >= text.size()) {
            break;
        }
        const UnicodeText::Character character = UnicodeText::FirstCharacter(text.substr(at));
        if (character.isWellFormed && character.codePoint != 0) {
            at += character.length;
            continue;
        }
        if (!repaired) {
            storage.clear();
            storage.reserve(text.size() + kReplacement.size());
            repaired = true;
        }
        storage.append(text.substr(copied, at - copied));
        storage.append(kReplacement);
        at += character.length;
        copied = at;
    }
    if (!repaired) {
        return text;
    }
    storage.append(text.substr(copied));
    return storage;
}

}  // namespace HtmlEngine::Internal
