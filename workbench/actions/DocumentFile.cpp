#include "actions/DocumentFile.h"

#include "actions/ActionRefused.h"
#include "documents/Population.h"

#if defined(WORKBENCH_READS_PDF)
#include "documents/QpdfDocument.h"
#endif

#include <charconv>
#include <string_view>
#include <system_error>
#include <vector>

namespace Workbench {

namespace fs = std::filesystem;

namespace {

#if defined(WORKBENCH_READS_PDF)
std::shared_ptr<Documents::Document> Opened(Documents::OpenResult&& result)
{
    switch (result.failure) {
    case Documents::OpenFailure::kNone:
        return std::move(result.document);
    case Documents::OpenFailure::kPassword:
        throw ActionRefused(result.message, RefusalReason::kPassword);
    case Documents::OpenFailure::kDamaged:
        throw ActionRefused(result.message, RefusalReason::kDamaged);
    case Documents::OpenFailure::kUnreadable:
        break;
    }
    throw ActionRefused(result.message);
}
#else
[[noreturn]] void RefusePdf(const std::string& name)
{
    throw ActionRefused(name + ": this build of the workbench reads no PDF files");
}
#endif

// Numbers between colons; empty when there is anything else.
std::vector<std::uint32_t> NumbersIn(std::string_view text)
{
    std::vector<std::uint32_t> numbers;
    const char* position = text.data();
    const char* const end = text.data() + text.size();
    for (;;) {
        std::uint32_t number = 0;
        const auto [rest, error] = std::from_chars(position, end, number);
        if (error != std::errc()) {
            return {};
        }
        numbers.push_back(number);
        if (rest == end) {
            return numbers;
        }
        if (*rest != ':') {
            return {};
        }
        position = rest + 1;
    }
}

}  // namespace

std::optional<FileStamp> StampOf(const fs::path& path)
{
    std::error_code error;
    FileStamp stamp;
    stamp.time = fs::last_write_time(path, error);
    if (!error) {
        stamp.size = fs::file_size(path, error);
    }
    return error ? std::nullopt : std::optional(stamp);
}

#if defined(WORKBENCH_READS_PDF)
// The stamp is taken first: what is written meanwhile must not count as read.
DocumentFile ReadDocument(const fs::path& path, const ReadingOptions& options)
{
    DocumentFile file{path.filename().string(), nullptr, fs::absolute(path).lexically_normal(),
                      StampOf(path), options.password};
    file.content = Opened(Documents::QpdfDocument::Open(
        path, {options.password, options.listAll, options.forListing}));
    return file;
}

DocumentFile ReadDocumentBytes(std::string bytes, const std::string& name,
                               const ReadingOptions& options)
{
    return {name,
            Opened(Documents::QpdfDocument::OpenBytes(
                std::move(bytes), name, {options.password, options.listAll, options.forListing}))};
}
#else
DocumentFile ReadDocument(const fs::path& path, const ReadingOptions&)
{
    RefusePdf(path.string());
}

DocumentFile ReadDocumentBytes(std::string, const std::string& name, const ReadingOptions&)
{
    RefusePdf(name);
}
#endif

DocumentFile MakeMemoryDocument(const std::string& description, bool listAll)
{
    const std::vector<std::uint32_t> numbers = NumbersIn(description);
    if (numbers.size() < 2 || numbers.size() > 3 || numbers[1] == 0) {
        throw ActionRefused("\"" + description +
                            "\" is no document in memory: COMMENTS:PAGES or COMMENTS:PAGES:SEED");
    }
    Documents::MemoryOptions options;
    options.listAll = listAll;
    return {"memory:" + description,
            Documents::MakePopulationDocument({numbers[0], numbers[1]},
                                              numbers.size() == 3 ? numbers[2] : 1, options)};
}

std::optional<FileStamp> WriteDocument(const fs::path& path, Replaceable replaceable,
                                       const std::optional<FileStamp>& known,
                                       const std::function<Documents::SaveResult()>& write)
{
    const std::optional<FileStamp> present = StampOf(path);
    if (present && replaceable == Replaceable::kNothing) {
        throw ActionRefused(path.string() + " is there already", RefusalReason::kExists);
    }
    if (present && replaceable == Replaceable::kOwnFile && known && *present != *known) {
        throw ActionRefused(path.string() + " has been changed by another program",
                            RefusalReason::kChangedOnDisk);
    }
    if (const Documents::SaveResult result = write(); !result.Succeeded()) {
        throw ActionRefused(result.error, RefusalReason::kWrite);
    }
    return StampOf(path);
}

}  // namespace Workbench
