// A document read from a PDF file through QPDF: listed, edited and saved. Linux only.
#pragma once

#include "documents/Document.h"

namespace Documents {

struct OpenOptions {
    std::string password{};  // tried as owner and as user password; empty: none
    bool listAll = false;    // list every annotation, whatever its subtype and flags
    // The document is listed and nothing else: edits and saving are refused, and what has been read
    // of an annotation takes no memory beyond its record.
    bool forListing = false;
};

enum class OpenFailure : std::uint8_t {
    kNone,
    kUnreadable,  // missing, a folder, not readable
    kDamaged,     // no PDF, or beyond repair
    kPassword,    // needs a password, or the one given is wrong
};

struct OpenResult;

class QpdfDocument : public Document {
public:
    // Reads the whole file into memory, then its structure; annotations are read page by page when
    // a page is first acquired. Never throws: a failure comes as its kind and one line that names
    // the file. A damaged file that can be repaired opens, with warnings. Writes nothing to the
    // standard streams.
    static OpenResult Open(const std::filesystem::path& path, const OpenOptions& options = {});

    // The same for bytes in memory; `name` stands for the file in messages.
    static OpenResult OpenBytes(std::string bytes, std::string name,
                                const OpenOptions& options = {});

protected:
    using Document::Document;
};

struct OpenResult {
    std::shared_ptr<QpdfDocument> document;  // empty exactly when `failure` is not kNone
    OpenFailure failure = OpenFailure::kNone;
    std::string message;  // empty when opened
};

}  // namespace Documents
