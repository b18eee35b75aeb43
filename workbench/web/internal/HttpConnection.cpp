#include "web/internal/HttpConnection.h"

#include "web/AccessGuard.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/field.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include <utility>

namespace Workbench {

namespace {

namespace beast = boost::beast;
namespace http = boost::beast::http;

constexpr std::string_view kPagePolicy =
    "default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; style-src 'self'; "
    "style-src-attr 'unsafe-inline'; img-src 'self' blob: data:; font-src 'self' blob: data:; "
    "connect-src 'self'; worker-src 'self' blob:; frame-src 'self'; base-uri 'none'; "
    "form-action 'none'; frame-ancestors 'self'";
constexpr std::string_view kPanelFramePolicy =
    "default-src 'none'; style-src 'self'; style-src-attr 'unsafe-inline'; img-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'self'";

constexpr std::string_view kUploadFolder = "documents";
constexpr std::string_view kSocketName = "socket";

// Number of bytes accepted from a refused peer before the connection is closed.
constexpr std::size_t kMostDrainedBytes = std::size_t{1} << 20;

std::vector<std::string_view> ValuesOf(const HttpConnection::Request& request, http::field name)
{
    std::vector<std::string_view> values;
    const auto [first, last] = request.equal_range(name);
    for (auto field = first; field != last; ++field) {
        values.emplace_back(field->value().data(), field->value().size());
    }
    return values;
}

}  // namespace

HttpConnection::HttpConnection(boost::asio::ip::tcp::socket socket, Owner& owner)
    : owner_(owner), stream_(std::move(socket))
{
}

void HttpConnection::ReadHeader()
{
    const HttpServerOptions& options = owner_.Options();
    parser_.emplace();
    parser_->header_limit(static_cast<std::uint32_t>(options.mostHeaderBytes));
    parser_->body_limit(options.mostBodyBytes);
    waitsSince_ = std::chrono::steady_clock::now();
    stream_.expires_after(options.headerTime);
    http::async_read_header(
        stream_, buffer_, *parser_,
        [self = shared_from_this()](Error error, std::size_t) { self->OnHeader(error); });
}

void HttpConnection::OnHeader(Error error)
{
    if (ended_) {
        return;
    }
    waitsSince_.reset();
    if (error) {
        OnHeaderFailed(error);
        return;
    }
    const Request& request = parser_->get();
    const bool isPost = request.method() == http::verb::post;
    const bool wantsSocket = beast::websocket::is_upgrade(request);
    const auto below =
        owner_.Guard().Admit({std::string_view(request.target().data(), request.target().size()),
                              ValuesOf(request, http::field::host),
                              ValuesOf(request, http::field::origin), isPost || wantsSocket});
    if (!below) {
        Refuse(403);
        return;
    }
    if (!isPost && request.method() != http::verb::get) {
        Refuse(405);
        return;
    }
    auto url = ParseUrl(below->empty() ? "/" : *below);
    if (!url) {
        Refuse(404);
        return;
    }
    const bool isForSocket = url->path.size() == 1 && url->path[0] == kSocketName;
    if (isForSocket || wantsSocket) {
        if (!isForSocket || !wantsSocket || !parser_->is_done()) {
            Refuse(400);
            return;
        }
        owner_.OnSocketWanted(std::move(stream_), request);
        ended_ = true;
        owner_.OnEnded(*this);
    } else if (isPost) {
        ReadBody(std::move(*url));
    } else if (parser_->is_done()) {
        HandOn(false, std::move(*url));
    } else {
        Refuse(400);
    }
}

void HttpConnection::OnHeaderFailed(Error error)
{
    if (error == http::error::header_limit || error == http::error::buffer_overflow) {
        Refuse(431);
    } else if (error == http::error::body_limit) {
        Refuse(413);
    } else if (error.category() == http::make_error_code(http::error::bad_method).category() &&
               error != http::error::end_of_stream && error != http::error::partial_message) {
        Refuse(400);
    } else {
        Abort();
    }
}

void HttpConnection::ReadBody(Url url)
{
    if (url.path.size() != 1 || url.path[0] != kUploadFolder) {
        Refuse(404);
        return;
    }
    stream_.expires_after(owner_.Options().bodyTime);
    http::async_read(
        stream_, buffer_, *parser_,
        [self = shared_from_this(), url = std::move(url)](Error error, std::size_t) mutable {
            if (self->ended_) {
                return;
            }
            if (error) {
                self->OnHeaderFailed(error);
            } else {
                self->HandOn(true, std::move(url));
            }
        });
}

void HttpConnection::HandOn(bool isPost, Url url)
{
    stream_.expires_never();
    closes_ = !parser_->keep_alive();
    owner_.OnRequest(*this, {isPost, std::move(url), std::move(parser_->get().body())});
}

void HttpConnection::Refuse(unsigned status)
{
    closes_ = true;
    Write({status});
}

void HttpConnection::Give(HttpAnswer answer)
{
    if (!ended_ && !IsWriting()) {
        Write(std::move(answer));
    }
}

void HttpConnection::Write(HttpAnswer answer)
{
    answer_ = std::move(answer);
    response_.emplace(static_cast<http::status>(answer_.status), 11);
    auto& response = *response_;
    response.set("Content-Security-Policy",
                 answer_.policy == ContentPolicy::kPage ? kPagePolicy : kPanelFramePolicy);
    response.set("X-Content-Type-Options", "nosniff");
    response.set("Referrer-Policy", "no-referrer");
    response.set("Cross-Origin-Resource-Policy", "same-origin");
    response.set(http::field::cache_control,
                 answer_.mayBeKept ? "private, max-age=86400" : "no-store");
    if (!answer_.contentType.empty()) {
        response.set(http::field::content_type, answer_.contentType);
    }
    for (const auto& [name, value] : answer_.headers) {
        response.set(name, value);
    }
    if (answer_.body != nullptr) {
        response.body() = {answer_.body->data(), answer_.body->size()};
    }
    response.keep_alive(!closes_);
    response.prepare_payload();
    stream_.expires_after(owner_.Options().bodyTime);
    http::async_write(stream_, response, [self = shared_from_this()](Error error, std::size_t) {
        self->OnWritten(error);
    });
}

void HttpConnection::OnWritten(Error error)
{
    response_.reset();
    answer_ = {};
    if (ended_) {
        return;
    }
    if (error) {
        Abort();
    } else if (!closes_) {
        ReadHeader();
    } else {
        // The rest of the peer's data must be read, or the peer may never receive the answer.
        Error ignored;
        stream_.socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
        waitsSince_ = std::chrono::steady_clock::now();
        stream_.expires_after(owner_.Options().closingTime);
        Drain();
    }
}

void HttpConnection::Drain()
{
    stream_.async_read_some(
        boost::asio::buffer(drained_), [self = shared_from_this()](Error error, std::size_t count) {
            self->drainedBytes_ += count;
            if (error || self->ended_ || self->drainedBytes_ > kMostDrainedBytes) {
                self->Abort();
            } else {
                self->Drain();
            }
        });
}

void HttpConnection::Abort()
{
    stream_.close();
    End();
}

void HttpConnection::End()
{
    if (!std::exchange(ended_, true)) {
        owner_.OnEnded(*this);
    }
}

}  // namespace Workbench
