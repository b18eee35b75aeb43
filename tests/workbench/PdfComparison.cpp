#include "PdfComparison.h"

#include <qpdf/Buffer.hh>
#include <qpdf/QPDFWriter.hh>

#include <algorithm>
#include <memory>
#include <vector>

namespace SavedFilesTest {

namespace {

using Object = QPDFObjectHandle;

bool AreOne(Object left, Object right)
{
    return left.isIndirect() && right.isIndirect() && left.getObjGen() == right.getObjGen();
}

bool BelongsTo(Object popup, Object annotation)
{
    return popup.isDictionary() && annotation.isDictionary() &&
           (AreOne(annotation.getKey("/Popup"), popup) ||
            AreOne(popup.getKey("/Parent"), annotation));
}

std::vector<Object> AnnotationsOf(Object page)
{
    Object array = page.getKey("/Annots");
    return array.isArray() ? array.getArrayAsVector() : std::vector<Object>();
}

// What two files with the same objects have in common, in whatever order and form these stand.
std::string Rewritten(QPDF& file)
{
    file.getTrailer().removeKey("/ID");
    for (Object page : file.getAllPages()) {
        // Direct, as pages may share one array until a comment of one of them goes.
        page.replaceKey("/Annots", Object::newArray(AnnotationsOf(page)));
    }
    QPDFWriter writer(file);
    writer.setOutputMemory();
    writer.setStaticID(true);
    writer.setPreserveEncryption(false);
    writer.setStreamDataMode(qpdf_s_preserve);
    writer.setObjectStreamMode(qpdf_o_disable);
    writer.forcePDFVersion("1.7");
    writer.write();
    const std::unique_ptr<Buffer> buffer(writer.getBuffer());
    return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
}

}  // namespace

Places WithTheirPopups(QPDF& file, const Places& places)
{
    Places all = places;
    const auto& pages = file.getAllPages();
    for (const auto& [page, position] : places) {
        const std::vector<Object> annotations = AnnotationsOf(pages.at(page));
        const Object& annotation = annotations.at(static_cast<std::size_t>(position));
        for (std::size_t i = 0; i < annotations.size(); ++i) {
            if (AreOne(annotations[i], annotation) || BelongsTo(annotations[i], annotation)) {
                all.insert({page, static_cast<int>(i)});
            }
        }
    }
    return all;
}

std::string DescribeDifference(QPDF& before, const Places& gone, QPDF& after)
{
    for (auto place = gone.rbegin(); place != gone.rend(); ++place) {
        Object page = before.getAllPages().at(place->first);
        std::vector<Object> annotations = AnnotationsOf(page);
        annotations.erase(annotations.begin() + place->second);
        page.replaceKey("/Annots", Object::newArray(annotations));
    }
    const std::string expected = Rewritten(before);
    const std::string actual = Rewritten(after);
    const auto [left, right] =
        std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
    if (left == expected.end() && right == actual.end()) {
        return "";
    }
    const auto from = [&](const std::string& text, auto at) {
        const auto offset = static_cast<std::size_t>(at - text.begin());
        return text.substr(offset < 100 ? 0 : offset - 100, 300);
    };
    return from(expected, left) + "\n--- became ---\n" + from(actual, right);
}

}  // namespace SavedFilesTest
