#include "DocumentEditSuite.h"

namespace DocumentsTest {

namespace {

struct MemoryKind {
    static std::shared_ptr<Document> Make(const std::vector<MemoryPage>& pages,
                                          const MemoryOptions& options)
    {
        return MemoryDocument::Make("suite", pages, options);
    }
    static std::shared_ptr<Document> Reopened(Document& document)
    {
        return document.shared_from_this();
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Memory, DocumentEdit, MemoryKind);

TEST(MemoryDocumentTest, CannotBeSaved)
{
    const auto document = MemoryDocument::Make("suite", {{}});
    document->InsertPage(0);
    EXPECT_EQ(document->Save("x.pdf").error,
              "x.pdf: a document in memory cannot be written to a file");
    EXPECT_TRUE(document->Modified());
}

TEST(MemoryDocumentTest, TakesItsPermissionsFromItsOptions)
{
    const auto document =
        MemoryDocument::Make("suite", {{}}, {.readOnly = true, .deletionPermitted = false});
    EXPECT_TRUE(document->ReadOnly());
    EXPECT_FALSE(document->AnnotationDeletionPermitted());
}

}  // namespace

}  // namespace DocumentsTest
