#include "actions/Edits.h"

#include "actions/ActionRefused.h"
#include "service-common/UnicodeText.h"
#include "services/AnnotationPlace.h"

#include <utility>

namespace Workbench {

namespace {

RefusalReason ReasonOf(Documents::EditFailure failure)
{
    switch (failure) {
    case Documents::EditFailure::kGone:
        return RefusalReason::kGone;
    case Documents::EditFailure::kLastPage:
        return RefusalReason::kLastPage;
    default:
        return RefusalReason::kOther;
    }
}

std::vector<Documents::Change> Publish(const OpenDocument& document, Documents::EditResult edit)
{
    const RefusalReason reason = ReasonOf(edit.failure);
    std::vector<Documents::Change> changes = edit.changes;
    if (const std::string error = document.Object().Publish(std::move(edit)); !error.empty()) {
        throw ActionRefused(error, reason);
    }
    return changes;
}

}  // namespace

void RequireEditable(const OpenDocument& document)
{
    if (document.content->ReadOnly()) {
        throw ActionRefused(document.name + " is read-only", RefusalReason::kReadOnly);
    }
}

void RequireCommentsEditable(const OpenDocument& document)
{
    if (!document.content->AnnotationDeletionPermitted()) {
        throw ActionRefused(document.name + " does not permit changes of its comments",
                            RefusalReason::kNotPermitted);
    }
}

void RequireCommentEditable(const OpenDocument& document, const CommentPosition& position)
{
    RequireCommentsEditable(document);
    const Documents::AnnotationRef annotation =
        document.content->AnnotationAt(position.page, position.index);
    if (const std::string refusal = Documents::Document::DeletionRefusal(annotation.Get());
        !refusal.empty()) {
        throw ActionRefused(document.name + ": the comment is not changed, " + refusal,
                            RefusalReason::kLocked);
    }
}

Documents::AnnotationRef CommentAt(const OpenDocument& document, const CommentPosition& position)
{
    Documents::AnnotationRef annotation =
        document.content->AnnotationAt(position.page, position.index);
    if (!annotation) {
        throw ActionRefused("there is no annotation " + std::to_string(position.index) +
                                " on page " + std::to_string(position.page),
                            RefusalReason::kGone);
    }
    return annotation;
}

CommentPosition AddComment(const OpenDocument& document, const NewComment& comment)
{
    const auto changes =
        Publish(document, document.content->AddAnnotation(
                              comment.page, comment.subtype, UnicodeText::ToUtf16(comment.contents),
                              comment.rect, comment.authorship, comment.quads));
    const auto& added = std::get<Documents::AnnotationChange>(changes.front());
    return {comment.page,
            PositionOnPage(*document.content, comment.page, added.annotation.Get()).value_or(0)};
}

void EditComment(const OpenDocument& document, const CommentPosition& position,
                 const std::string& contents, const std::optional<_PDDateRec>& time)
{
    Publish(document, document.content->ChangeContents(position.page, position.index,
                                                       UnicodeText::ToUtf16(contents), time));
}

void RemoveComment(const OpenDocument& document, const CommentPosition& position)
{
    Publish(document, document.content->RemoveAnnotation(position.page, position.index));
}

void InsertPage(const OpenDocument& document, std::uint32_t at)
{
    Publish(document, document.content->InsertPage(at));
}

void DeletePage(const OpenDocument& document, std::uint32_t page)
{
    Publish(document, document.content->DeletePage(page));
}

void MovePage(const OpenDocument& document, std::uint32_t from, std::uint32_t to)
{
    Publish(document, document.content->MovePage(from, to));
}

std::vector<Documents::Change> Undo(const OpenDocument& document)
{
    return Publish(document, document.content->Undo());
}

std::vector<Documents::Change> Redo(const OpenDocument& document)
{
    return Publish(document, document.content->Redo());
}

}  // namespace Workbench
