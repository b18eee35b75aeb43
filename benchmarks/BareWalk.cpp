// The reference of the listing benchmark: a program that opens a PDF file with QPDF and reads of
// each annotation what a list of comments shows, and nothing else.
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>

#include <cstdio>
#include <exception>

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: bare-walk FILE.pdf\n");
        return 1;
    }
    try {
        QPDF file;
        file.processFile(arguments[1]);
        std::size_t count = 0;
        std::size_t length = 0;
        for (auto& page : QPDFPageDocumentHelper(file).getAllPages()) {
            for (auto& annotation : page.getObjectHandle().getKey("/Annots").aitems()) {
                ++count;
                length += annotation.getKey("/Subtype").getName().size();
                for (const char* key : {"/Contents", "/T", "/Subj", "/CreationDate", "/M"}) {
                    length += annotation.getKey(key).getUTF8Value().size();
                }
                length += static_cast<std::size_t>(
                    annotation.getKey("/Rect").getArrayItem(0).getNumericValue());
            }
        }
        std::printf("%zu annotations, %zu\n", count, length);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bare-walk: %s\n", error.what());
        return 1;
    }
}
