#include "web/PanelInput.h"

#include "actions/Edits.h"
#include "services/KeyNames.h"
#include "ui-engine/HtmlElementTypes.h"
#include "web/BrowserSession.h"
#include "web/ClientMessage.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace Workbench {

namespace {

using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;

// A click or a key that waits to be carried out.
struct PanelInput {
    SocketNumber socket = 0;
    std::optional<std::uint64_t> id;       // of the reply; nullopt: no reply
    std::optional<std::uint64_t> item;     // the client's current item
    ElementHandle container = kNoElement;  // the visible one at arrival
    std::optional<std::uint64_t> element;  // its id; nullopt: the current item
    std::optional<std::uint32_t> key;      // nullopt: a click
    std::uint32_t modifiers = 0;
};

PanelInput ReadInput(BrowserSession& session, SocketNumber socket, const ClientMessage& message,
                     bool isKey)
{
    PanelInput input;
    input.socket = socket;
    input.id = message.OptionalNumber("id");
    input.item = message.OptionalNumber("item");
    input.container = FindVisibleContainer(*session.TheHost().Panel().Document());
    if (!isKey) {
        input.element = message.Number("element");
        return input;
    }
    const std::string name = message.Text("key");
    const auto key = KeyNamed(name);
    if (!key) {
        throw MessageError("there is no key \"" + name + "\"");
    }
    input.element = message.OptionalNumber("element");
    input.key = *key;
    input.modifiers =
        static_cast<std::uint32_t>(message.OptionalNumber("modifiers").value_or(0) & 0xFFFF);
    return input;
}

// Whether the panel handles it as a deletion.
bool Deletes(BrowserSession& session, const PanelInput& input)
{
    return input.key ? *input.key == kKeyDelete
                     : IsInDeleteButton(*session.TheHost().Panel().Document(),
                                        session.PanelTree().ElementWith(*input.element));
}

// A key without an element, or with a removed one, goes to the item that is current when it is
// carried out.
ElementHandle TargetOf(BrowserSession& session, const PanelInput& input)
{
    const ElementHandle target =
        input.element ? session.PanelTree().ElementWith(*input.element) : kNoElement;
    if (target != kNoElement) {
        return target;
    }
    if (!input.key) {
        throw ActionRefused("what was clicked is no longer there", RefusalReason::kGone);
    }
    return FindKeyTarget(session.TheHost().Panel(), input.container);
}

// Checks that the panel leaves out: it fails without a current comment, and reports no refused
// deletion.
void RequireActing(BrowserSession& session, const OpenDocument& document, const PanelInput& input)
{
    const bool deletes = Deletes(session, input);
    if (!deletes && input.key != kKeyEnter) {
        return;
    }
    if (deletes) {
        RequireEditable(document);
    }
    const CommentPosition position = session.RequireCurrent(document, input.item);
    if (deletes) {
        RequireCommentEditable(document, position);
    }
    // Items of a collapsed page item are not visible.
    if (deletes && input.key &&
        !session.TheHost().Panel().IsShown(session.Current(document).Item())) {
        throw ActionRefused("the current comment of " + document.name + " is folded away",
                            RefusalReason::kFolded);
    }
}

void Act(BrowserSession& session, const PanelInput& input)
{
    HtmlPanel& panel = session.TheHost().Panel();
    const ElementHandle target = TargetOf(session, input);
    OpenDocument* const document = session.Documents().FindAround(target);
    if (document != nullptr) {
        RequireActing(session, *document, input);
    }
    if (input.key) {
        panel.PressKey(target, *input.key, input.modifiers);
    } else {
        panel.Click(target);
    }
    // The next input may act on the comment that is current now.
    if (document != nullptr) {
        session.Current(*document).Update(document->view->View(), *panel.Document());
    }
}

// Carries out the input, and replies to the client; without a reply id, a refusal is sent as a
// notice.
void Carry(BrowserSession& session, const PanelInput& input, const std::function<void()>& act)
{
    if (input.id) {
        session.Answer({input.socket, *input.id, nullptr}, [&] {
            act();
            return CommandReply(nlohmann::ordered_json::object());
        });
        return;
    }
    try {
        act();
    } catch (const ActionRefused& refused) {
        session.Update();
        session.Clients().Notify(input.socket, refused.what(), refused.Reason());
    } catch (const std::exception& error) {
        session.Update();
        session.Clients().Notify(input.socket, error.what(), RefusalReason::kOther);
    }
}

}  // namespace

void TakePanelInput(BrowserSession& session, SocketNumber client, const ClientMessage& message,
                    bool isKey)
{
    const PanelInput input = ReadInput(session, client, message, isKey);
    const OpenDocument* const active = session.Documents().FindActive();
    DocumentJobs& jobs = session.Jobs();
    if (active == nullptr || !(jobs.HasWaiting(active->number) ||
                               (jobs.IsHeld(active->number) && Deletes(session, input)))) {
        Carry(session, input, [&] { Act(session, input); });
        return;
    }
    jobs.Append(active->number, [&session, input, name = active->name](OpenDocument* document) {
        Carry(session, input, [&] {
            if (document == nullptr) {
                throw ActionRefused(name + " was closed", RefusalReason::kGone);
            }
            Act(session, input);
        });
    });
}

}  // namespace Workbench
