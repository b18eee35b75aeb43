// PDF files for tests, in memory and on disk.
#pragma once

#include "documents/MemoryDocument.h"
#include "documents/QpdfDocument.h"

#include <qpdf/QPDFWriter.hh>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace DocumentsTest {

// The same document as the pages give in memory, as a file's bytes. `configure` may set up
// encryption and the like.
std::string MakePdf(const std::vector<Documents::MemoryPage>& pages,
                    const std::function<void(QPDFWriter&)>& configure = {});

// A file of objects written by hand, numbered from 1: each text stands between "N 0 obj" and
// "endobj". Object 1 is the catalogue. `trailer` is added to the trailer's entries.
std::string RawPdf(const std::vector<std::string>& objects, const std::string& trailer = "");

// A file of one page whose dictionary has `pageEntries` ("/Annots [4 0 R]"); further objects are
// numbered from 4.
std::string OnePagePdf(const std::string& pageEntries,
                       const std::vector<std::string>& objects = {});

std::string ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, const std::string& bytes);

// Opens what must open.
std::shared_ptr<Documents::QpdfDocument> OpenPdf(std::string bytes,
                                                 const Documents::OpenOptions& options = {});

// A folder of its own, removed at the end.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

    // Names of what is in it, sorted.
    std::vector<std::string> Names() const;

private:
    std::filesystem::path path_;
};

}  // namespace DocumentsTest
