// What a document knows of one annotation, as plain values. Used to build documents in memory, and
// filled by the file reader. No dependencies beyond the PDF library's types.
#pragma once

#include "pdf-library/PDTypes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Documents {

// Bits of AnnotationProperties::flags (ISO 32000-1, table 165).
inline constexpr std::uint32_t kFlagInvisible = 1u << 0;
inline constexpr std::uint32_t kFlagHidden = 1u << 1;
inline constexpr std::uint32_t kFlagPrint = 1u << 2;
inline constexpr std::uint32_t kFlagNoView = 1u << 5;
inline constexpr std::uint32_t kFlagReadOnly = 1u << 6;
inline constexpr std::uint32_t kFlagLocked = 1u << 7;

struct Point {
    double x;
    double y;
};

// A piece of a line of text that a markup covers, by its corners in default user space. Top and
// bottom are those of the text, whichever way it runs.
struct Quad {
    Point topLeft;
    Point topRight;
    Point bottomLeft;
    Point bottomRight;
};

struct AnnotationProperties {
    std::string subtype{};      // "Highlight"; empty when the annotation has none
    std::u16string contents{};  // handed out as it stands, unpaired surrogates included
    std::u16string title{};
    std::u16string subject{};
    std::string name{};    // of an annotation that was added (/NM), in ASCII; not read from files
    _PDDateRec created{};  // year 0: none; not range-checked
    _PDDateRec modified{};
    std::optional<_PDRect> rect{};
    std::vector<Quad> quads{};  // of an added text markup that follows text; not read from files
    std::uint32_t flags = 0;
    bool hasAppearance = false;  // an appearance stream, when it was read or added
};

}  // namespace Documents
