// From a PDF file on disk to the list in the panel, beside a bare walk with QPDF that reads the
// same fields from the file's bytes in memory.
#include "PopulationArguments.h"
#include "PopulationFile.h"

#include "documents/QpdfDocument.h"
#include "services/Host.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string BytesOf(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void BM_Opening_ToList(benchmark::State& state)
{
    const auto path = PopulationFile(PopulationOf(state));
    for (auto _ : state) {
        state.PauseTiming();
        Workbench::Host host(Workbench::HostOptions{});
        host.StartPanel();
        host.HandOverDocuments();
        host.RunUntilIdle();
        state.ResumeTiming();
        host.OpenView(Documents::QpdfDocument::Open(path).document);
        if (!host.RunUntilIdle()) {
            state.SkipWithError("the list does not come");
        }
        state.PauseTiming();
        host.ShutDown();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Opening_ToList)->Apply(PopulationArguments);

void BM_Opening_BareWalk(benchmark::State& state)
{
    const std::string bytes = BytesOf(PopulationFile(PopulationOf(state)));
    for (auto _ : state) {
        QPDF file;
        file.processMemoryFile("benchmark", bytes.data(), bytes.size());
        std::size_t length = 0;
        for (auto& page : QPDFPageDocumentHelper(file).getAllPages()) {
            for (auto& annotation : page.getObjectHandle().getKey("/Annots").aitems()) {
                length += annotation.getKey("/Subtype").getName().size();
                for (const char* key : {"/Contents", "/T", "/Subj", "/CreationDate", "/M"}) {
                    length += annotation.getKey(key).getUTF8Value().size();
                }
                length += static_cast<std::size_t>(
                    annotation.getKey("/Rect").getArrayItem(0).getNumericValue());
            }
        }
        benchmark::DoNotOptimize(length);
    }
}
BENCHMARK(BM_Opening_BareWalk)->Apply(PopulationArguments);

}  // namespace
