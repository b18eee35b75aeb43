// Why a command or an input of a page does nothing. [any-thread]
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace Workbench {

// The text is a line for the user that names the thing; the reason is one word for the page, or
// empty.
class CommandRefused : public std::runtime_error {
public:
    explicit CommandRefused(const std::string& text, std::string reason = {})
        : std::runtime_error(text), reason_(std::move(reason))
    {
    }
    const std::string& Reason() const noexcept { return reason_; }

private:
    std::string reason_;
};

}  // namespace Workbench
