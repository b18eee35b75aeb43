#include "html-engine/internal/Utf8.h"

#include <cstring>

namespace HtmlEngine::Internal {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Length of the well-formed character at the front, or 0; `bad` is then how many bytes one
/// replacement stands for.
std::size_t CharacterLength(std::string_view text, std::size_t& bad)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(0);
    bad = 1;
    if (lead < 0x80) {
        return lead == 0 ? 0 : 1;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return 0;
    }
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    for (; bad < length; ++bad) {
        if (bad >= text.size() || byte(bad) < low || byte(bad) > high) {
            return 0;
        }
        low = 0x80;
        high = 0xBF;
    }
    return length;
}

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

std::size_t CharacterLength(std::string_view text)
{
    std::size_t bad = 0;
    return CharacterLength(text, bad);
}

void AppendUtf8(std::uint32_t codePoint, std::string& out)
{
    const auto put = [&](std::uint32_t value) {
        out += static_cast<char>(static_cast<unsigned char>(value));
    };
    if (codePoint == 0 || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
        out += kReplacement;
    } else if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0 | (codePoint >> 6));
        put(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        put(0xE0 | (codePoint >> 12));
        put(0x80 | ((codePoint >> 6) & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    } else {
        put(0xF0 | (codePoint >> 18));
        put(0x80 | ((codePoint >> 12) & 0x3F));
        put(0x80 | ((codePoint >> 6) & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    }
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
        std::size_t bad = 0;
        const std::size_t length = CharacterLength(text.substr(at), bad);
        if (length > 0) {
            at += length;
            continue;
        }
        if (!repaired) {
            storage.clear();
            storage.reserve(text.size() + kReplacement.size());
            repaired = true;
        }
        storage.append(text.substr(copied, at - copied));
        storage.append(kReplacement);
        at += bad;
        copied = at;
    }
    if (!repaired) {
        return text;
    }
    storage.append(text.substr(copied));
    return storage;
}

}  // namespace HtmlEngine::Internal
