// Annotations in PDF syntax, made from plain properties: the entries of their dictionaries, and the
// drawings that viewers show. For writers of files. Pure functions. [any-thread]
#pragma once

#include "documents/AnnotationProperties.h"

#include <string>
#include <string_view>
#include <vector>

namespace Documents {

// Names of the annotation subtypes that the workbench draws, writes or lists.
std::vector<std::string_view> KnownSubtypes();

// Whether the subtype is one of those that a page lists.
bool IsMarkupSubtype(std::string_view name) noexcept;

// Whether the subtype marks text, so that it may have quads.
bool IsTextMarkupSubtype(std::string_view name) noexcept;

// The smallest rectangle around quads, of which there is at least one.
_PDRect BoundsOf(const std::vector<Quad>& quads);

// "D:20240501100000+02'00'"; a zone of 0 hours is written as Z.
std::string EncodeDate(const _PDDateRec& date);

// "[left bottom right top]", in that order whatever the corners' order was.
std::string RectangleSyntax(const _PDRect& rect);

// The dictionary's entries, without the brackets around them: everything that the properties give,
// and what the standard demands of the subtype (line ends, quad points, strokes) laid into the
// rectangle. Without appearance.
std::string AnnotationEntries(const AnnotationProperties& properties);

// A form that shows the annotation.
struct Appearance {
    std::string entries;    // of the stream's dictionary, but for its length
    std::string operators;  // empty: viewers draw this one by themselves
};

// The normal appearance, drawn after the subtype into the rectangle. None for FreeText, Popup,
// Link, Widget and subtypes that the standard does not know, nor without a rectangle.
Appearance DrawAppearance(const AnnotationProperties& properties);

// Whether DrawAppearance draws anything.
bool IsDrawn(const AnnotationProperties& properties);

}  // namespace Documents
