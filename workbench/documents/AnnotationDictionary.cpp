#include "documents/AnnotationDictionary.h"

#include "documents/AnnotationSyntax.h"

namespace Documents {

QPDFObjectHandle MakeRectangle(const _PDRect& rect)
{
    return QPDFObjectHandle::parse(RectangleSyntax(rect));
}

QPDFObjectHandle MakeAnnotationDictionary(const AnnotationProperties& properties)
{
    return QPDFObjectHandle::parse("<< " + AnnotationEntries(properties) + " >>");
}

void AddAppearance(QPDF& file, QPDFObjectHandle dictionary, const AnnotationProperties& properties)
{
    const Appearance appearance = DrawAppearance(properties);
    if (appearance.operators.empty()) {
        return;
    }
    auto stream = QPDFObjectHandle::newStream(&file, appearance.operators);
    stream.replaceDict(QPDFObjectHandle::parse("<< " + appearance.entries + " >>"));
    auto appearances = QPDFObjectHandle::newDictionary();
    appearances.replaceKey("/N", stream);
    dictionary.replaceKey("/AP", appearances);
}

}  // namespace Documents
