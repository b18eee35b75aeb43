// Edits of open documents; their events reach the panel before each function returns. The edits do
// not check permissions, so that scripts can act as a host; callers that act for a user call a
// Require function first. All throw ActionRefused, without effect. [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"
#include "services/PanelElements.h"

#include <optional>
#include <string>
#include <vector>

namespace Workbench {

// --- Permissions ---

// Fails for a read-only document.
void RequireEditable(const OpenDocument& document);
// Fails when the document does not permit changes of its comments.
void RequireCommentsEditable(const OpenDocument& document);
// Fails as RequireCommentsEditable, and for a locked comment. A position without a comment passes.
void RequireCommentEditable(const OpenDocument& document, const CommentPosition& position);

// --- Comments ---

// Fails when there is none.
Documents::AnnotationRef CommentAt(const OpenDocument& document, const CommentPosition& position);

struct NewComment {
    std::uint32_t page = 0;
    std::string subtype;
    std::string contents;  // UTF-8
    std::optional<_PDRect> rect{};
    std::optional<Documents::Authorship> authorship{};
    std::vector<Documents::Quad> quads{};  // instead of a rectangle, for marks of text
};

// Returns the new comment's position.
CommentPosition AddComment(const OpenDocument& document, const NewComment& comment);

// The contents are UTF-8.
void EditComment(const OpenDocument& document, const CommentPosition& position,
                 const std::string& contents, const std::optional<_PDDateRec>& time = std::nullopt);

void RemoveComment(const OpenDocument& document, const CommentPosition& position);

// --- Pages ---

void InsertPage(const OpenDocument& document, std::uint32_t at);
void DeletePage(const OpenDocument& document, std::uint32_t page);
void MovePage(const OpenDocument& document, std::uint32_t from, std::uint32_t to);

// --- History ---

// Both return the changes made.
std::vector<Documents::Change> Undo(const OpenDocument& document);
std::vector<Documents::Change> Redo(const OpenDocument& document);

}  // namespace Workbench
