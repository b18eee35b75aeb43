#include "PdfBuilder.h"

#include "documents/AnnotationDictionary.h"

#include <qpdf/Buffer.hh>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>

namespace DocumentsTest {

namespace fs = std::filesystem;

std::string MakePdf(const std::vector<Documents::MemoryPage>& pages,
                    const std::function<void(QPDFWriter&)>& configure)
{
    QPDF file;
    file.emptyPDF();
    std::map<const Documents::MemoryAnnotation*, QPDFObjectHandle> made;
    const std::function<QPDFObjectHandle(const Documents::MemoryEntry&)> make =
        [&](const Documents::MemoryEntry& entry) {
            if (entry == nullptr) {
                return QPDFObjectHandle::newNull();
            }
            if (const auto found = made.find(entry.get()); found != made.end()) {
                return found->second;
            }
            QPDFObjectHandle annotation =
                file.makeIndirectObject(Documents::MakeAnnotationDictionary(entry->properties));
            made.emplace(entry.get(), annotation);
            if (entry->popup != nullptr) {
                QPDFObjectHandle popup = make(entry->popup);
                annotation.replaceKey("/Popup", popup);
                popup.replaceKey("/Parent", annotation);
            }
            return annotation;
        };
    for (const Documents::MemoryPage& page : pages) {
        auto annotations = QPDFObjectHandle::newArray();
        for (const Documents::MemoryEntry& entry : page.annotations) {
            annotations.appendItem(make(entry));
        }
        auto object = QPDFObjectHandle::parse("<< /Type /Page /Resources << >> >>");
        object.replaceKey("/MediaBox", Documents::MakeRectangle(page.box));
        if (!page.annotations.empty()) {
            object.replaceKey("/Annots", annotations);
        }
        file.addPage(file.makeIndirectObject(object), false);
    }
    QPDFWriter writer{file};
    writer.setOutputMemory();
    writer.setStaticID(true);
    if (configure) {
        configure(writer);
    }
    writer.write();
    const auto buffer = writer.getBufferSharedPointer();
    return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
}

std::string RawPdf(const std::vector<std::string>& objects, const std::string& trailer)
{
    std::string bytes = "%PDF-1.7\n";
    std::string table = "0000000000 65535 f \n";
    for (std::size_t number = 1; number <= objects.size(); ++number) {
        std::array<char, 32> line{};
        std::snprintf(line.data(), line.size(), "%010zu 00000 n \n", bytes.size());
        table += line.data();
        bytes += std::to_string(number) + " 0 obj\n" + objects[number - 1] + "\nendobj\n";
    }
    const std::string size = std::to_string(objects.size() + 1);
    const std::string start = std::to_string(bytes.size());
    return bytes + "xref\n0 " + size + "\n" + table + "trailer\n<< /Size " + size +
           " /Root 1 0 R " + trailer + " >>\nstartxref\n" + start + "\n%%EOF\n";
}

std::string OnePagePdf(const std::string& pageEntries, const std::vector<std::string>& objects)
{
    std::vector<std::string> all{
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Resources << >> " + pageEntries +
            " >>",
    };
    all.insert(all.end(), objects.begin(), objects.end());
    return RawPdf(all);
}

std::string ReadBytes(const fs::path& path)
{
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

void WriteBytes(const fs::path& path, const std::string& bytes)
{
    std::ofstream{path, std::ios::binary} << bytes;
}

std::shared_ptr<Documents::QpdfDocument> OpenPdf(std::string bytes,
                                                 const Documents::OpenOptions& options)
{
    auto result = Documents::QpdfDocument::OpenBytes(std::move(bytes), "suite", options);
    EXPECT_EQ(result.message, "");
    return result.document;
}

TemporaryFolder::TemporaryFolder()
{
    std::string pattern = (fs::temp_directory_path() / "documents-test-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryFolder::Names() const
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator{path_}) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace DocumentsTest
