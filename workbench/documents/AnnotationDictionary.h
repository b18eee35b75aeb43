// Annotation dictionaries of a PDF file made from plain properties: for annotations that are added
// to an open file, and for files that are made from nothing. Linux only. Not thread-safe: a file's
// objects belong to the holder of its lock.
#pragma once

#include "documents/AnnotationProperties.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

namespace Documents {

// [left bottom right top], in that order whatever the corners' order was.
QPDFObjectHandle MakeRectangle(const _PDRect& rect);

// The dictionary with everything that the properties give, and the entries that the standard
// demands of the subtype (line ends, quad points, strokes) laid into the rectangle. Without
// appearance.
QPDFObjectHandle MakeAnnotationDictionary(const AnnotationProperties& properties);

// Gives the dictionary a normal appearance, drawn after its subtype into its rectangle; `file` gets
// the new stream. Does nothing for subtypes that viewers draw by themselves (FreeText, Popup, Link,
// Widget) and without a rectangle.
void AddAppearance(QPDF& file, QPDFObjectHandle dictionary, const AnnotationProperties& properties);

}  // namespace Documents
