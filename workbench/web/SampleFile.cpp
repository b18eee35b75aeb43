#include "web/SampleFile.h"

#include "SampleDocument.h"
#include "documents/QpdfDocument.h"

#include <stdexcept>

namespace Workbench {

std::shared_ptr<Documents::Document> OpenSample(bool listAll)
{
    const Documents::OpenResult opened = Documents::QpdfDocument::OpenBytes(
        MakeDocument::SampleDocumentBytes(), kSampleName, {{}, listAll});
    if (opened.document == nullptr) {
        throw std::runtime_error(opened.message);
    }
    return opened.document;
}

}  // namespace Workbench
