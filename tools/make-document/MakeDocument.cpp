// make-document --comments N --pages M [--seed S] [--appearances] [--tags] OUT.pdf
// make-document --sample OUT.pdf
#include "PageText.h"
#include "SampleDocument.h"

#include "documents/AnnotationDictionary.h"
#include "documents/FileReplacement.h"
#include "documents/Population.h"

#include <qpdf/QPDFWriter.hh>

#include <charconv>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

constexpr std::string_view kUsage =
    "usage: make-document --comments N --pages M [--seed S] [--appearances] [--tags] OUT.pdf\n"
    "       make-document --sample OUT.pdf\n"
    "\n"
    "Writes a PDF file with the standard population of comments, N of them spread over M pages,\n"
    "with --tags some texts that look like markup,\n"
    "or the sample document that shows every kind of comment. Equal arguments give equal files.\n";

struct Arguments {
    bool sample = false;
    bool appearances = false;
    bool tags = false;
    std::optional<std::uint32_t> comments;
    std::optional<std::uint32_t> pages;
    std::uint32_t seed = 1;
    std::string output;
};

class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::uint32_t ParseNumber(std::string_view option, std::string_view text)
{
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) {
        throw UsageError(std::string{option} + " needs a number, not \"" + std::string{text} + '"');
    }
    return number;
}

Arguments ParseArguments(const std::vector<std::string_view>& words)
{
    Arguments arguments;
    for (std::size_t at = 0; at < words.size(); ++at) {
        const std::string_view word = words[at];
        const auto number = [&] {
            if (at + 1 == words.size()) {
                throw UsageError(std::string{word} + " needs a number");
            }
            return ParseNumber(word, words[++at]);
        };
        if (word == "--sample") {
            arguments.sample = true;
        } else if (word == "--appearances") {
            arguments.appearances = true;
        } else if (word == "--tags") {
            arguments.tags = true;
        } else if (word == "--comments") {
            arguments.comments = number();
        } else if (word == "--pages") {
            arguments.pages = number();
        } else if (word == "--seed") {
            arguments.seed = number();
        } else if (word.starts_with("-") || !arguments.output.empty()) {
            throw UsageError("unexpected argument \"" + std::string{word} + '"');
        } else {
            arguments.output = word;
        }
    }
    const bool population = arguments.comments && arguments.pages;
    if (arguments.output.empty() || arguments.sample == population) {
        throw UsageError("give either --sample or both --comments and --pages, and a file");
    }
    if (population && *arguments.pages == 0) {
        throw UsageError("a document has at least one page");
    }
    return arguments;
}

void FillPopulation(QPDF& file, const Arguments& arguments)
{
    const QPDFObjectHandle font = MakeDocument::MakeFont(file);
    std::vector<QPDFObjectHandle> pages;
    for (std::uint32_t page = 0; page < *arguments.pages; ++page) {
        pages.push_back(MakeDocument::AppendPage(
            file, font, {{72, 720, 20, "Page " + std::to_string(page + 1)}}));
        pages.back().replaceKey("/Annots", QPDFObjectHandle::newArray());
    }
    Documents::GeneratePopulation(
        {*arguments.comments, *arguments.pages,
         arguments.tags ? Documents::PopulationTexts::kTagLike
                        : Documents::PopulationTexts::kPlain},
        arguments.seed, [&](std::uint32_t page, const Documents::AnnotationProperties& comment) {
            QPDFObjectHandle annotation =
                file.makeIndirectObject(Documents::MakeAnnotationDictionary(comment));
            if (arguments.appearances) {
                Documents::AddAppearance(file, annotation, comment);
            }
            annotation.replaceKey("/P", pages[page]);
            pages[page].getKey("/Annots").appendItem(annotation);
        });
}

void WriteDocument(const Arguments& arguments)
{
    QPDF file;
    file.emptyPDF();
    if (arguments.sample) {
        MakeDocument::FillSampleDocument(file);
    } else {
        FillPopulation(file, arguments);
    }
    QPDFWriter writer{file};
    writer.setMinimumPDFVersion("1.7");
    writer.setDeterministicID(true);
    Documents::ReplaceFile(arguments.output, writer);
}

}  // namespace

int main(int count, char** words)
{
    try {
        WriteDocument(ParseArguments({words + 1, words + count}));
        return 0;
    } catch (const UsageError& error) {
        std::cerr << "make-document: " << error.what() << '\n' << kUsage;
        return kExitUsage;
    } catch (const std::exception& error) {
        std::cerr << "make-document: " << error.what() << '\n';
        return kExitFailed;
    }
}
