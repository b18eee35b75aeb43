// Any bytes as an HTTP request, read, admitted and routed as the server does, without sockets: what
// is answered is one of the files that are served, or a refusal.

#include "FuzzTarget.h"
#include "services/FailureLog.h"
#include "web/AccessGuard.h"
#include "web/BrowserSession.h"
#include "web/RequestRouter.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <fstream>
#include <iterator>
#include <optional>
#include <set>

namespace {

using namespace Workbench;
namespace http = boost::beast::http;

class Answer final : public PendingAnswer {
public:
    explicit Answer(std::optional<HttpAnswer>& given) : given_(given) {}
    void Give(HttpAnswer answer) override { given_ = std::move(answer); }

private:
    std::optional<HttpAnswer>& given_;
};

// The contents of the files in a folder and below.
std::set<std::string> ContentsIn(const std::filesystem::path& folder)
{
    std::set<std::string> contents;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            std::ifstream file(entry.path(), std::ios::binary);
            contents.emplace(std::istreambuf_iterator<char>(file),
                             std::istreambuf_iterator<char>());
        }
    }
    return contents;
}

std::vector<std::string_view> ValuesOf(const http::request<http::string_body>& request,
                                       http::field name)
{
    std::vector<std::string_view> values;
    const auto [first, last] = request.equal_range(name);
    for (auto field = first; field != last; ++field) {
        values.emplace_back(field->value().data(), field->value().size());
    }
    return values;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::filesystem::path client = SERVED_FOLDER;
    static const std::set<std::string> served = ContentsIn(client);
    static const AccessGuard guard(80, "token");
    static FailureLog failures;
    static UiThreadLoop loop(failures);
    static RequestRouter router(loop, {client, {}, {}, {}});

    const std::string_view input = TextOf(data, size);
    http::request_parser<http::string_body> parser;
    parser.eager(true);
    parser.body_limit(std::uint64_t{1} << 20);
    boost::beast::error_code error;
    parser.put(boost::asio::buffer(input.data(), input.size()), error);
    if (error || !parser.is_header_done()) {
        return 0;
    }
    const auto& request = parser.get();
    const bool isPost = request.method() == http::verb::post;
    const auto below = guard.Admit(
        {std::string_view(request.target().data(), request.target().size()),
         ValuesOf(request, http::field::host), ValuesOf(request, http::field::origin), isPost});
    auto url = below ? ParseUrl(below->empty() ? "/" : *below) : std::nullopt;
    if (!url) {
        return 0;
    }
    const std::vector<std::string> path = url->path;
    std::optional<HttpAnswer> answer;
    router.OnRequest({isPost, std::move(*url), request.body()}, std::make_shared<Answer>(answer));
    loop.RunWaiting();
    if (!answer || answer->status == 404 || path[0] == "locales") {
        return 0;
    }
    // Style sheets of the panel are adapted to the browser.
    if (answer->status != 200 || answer->body == nullptr ||
        (path[0] != "panel" && !served.contains(*answer->body))) {
        EndWithFault("What is answered is no file that is served.", input);
    }
    return 0;
}
