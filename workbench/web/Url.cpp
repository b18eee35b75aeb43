#include "web/Url.h"

#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

#include <algorithm>

namespace Workbench {

namespace {

bool IsPlainStep(const std::string& step)
{
    return !step.empty() && step.front() != '.' &&
           std::none_of(step.begin(), step.end(), [](char c) {
               return static_cast<unsigned char>(c) < 0x20 || c == '/' || c == '\\' || c == ':' ||
                      c == 0x7F;
           });
}

}  // namespace

std::optional<Url> ParseUrl(std::string_view target)
{
    const auto parsed = boost::urls::parse_origin_form({target.data(), target.size()});
    if (!parsed) {
        return std::nullopt;
    }
    Url url;
    const auto steps = parsed->segments();
    url.path.assign(steps.begin(), steps.end());
    if (url.path.empty()) {
        url.path.emplace_back();
    }
    if (!std::all_of(url.path.begin(), url.path.end() - 1, IsPlainStep) ||
        !(url.path.back().empty() || IsPlainStep(url.path.back()))) {
        return std::nullopt;
    }
    for (const auto& parameter : parsed->params()) {
        url.query[parameter.key] = parameter.value;
    }
    return url;
}

}  // namespace Workbench
