#include "web/internal/ClientSocket.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include <utility>

namespace Workbench {

namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;

ClientSocket::ClientSocket(SocketNumber number, beast::tcp_stream stream,
                           const HttpServerOptions& options, Owner& owner)
    : number_(number), options_(options), owner_(owner), stream_(std::move(stream))
{
    // The WebSocket has its own timers: it pings a silent client and closes a dead connection.
    beast::get_lowest_layer(stream_).expires_never();
    websocket::stream_base::timeout times{};
    times.handshake_timeout = options.headerTime;
    times.idle_timeout = std::chrono::minutes(2);
    times.keep_alive_pings = true;
    stream_.set_option(times);
    // A longer message closes the connection with code 1009.
    stream_.read_message_max(options.mostMessageBytes);
}

void ClientSocket::Accept(const beast::http::request<beast::http::string_body>& request)
{
    stream_.async_accept(request, [self = shared_from_this()](beast::error_code error) {
        if (error || self->ended_) {
            self->End();
            return;
        }
        self->open_ = true;
        self->stream_.text(true);
        self->owner_.OnOpened(*self);
        self->ReadNext();
    });
}

void ClientSocket::ReadNext()
{
    if (!open_ || reading_ || ended_) {
        return;
    }
    reading_ = true;
    stream_.async_read(buffer_, [self = shared_from_this()](beast::error_code error, std::size_t) {
        self->reading_ = false;
        if (error || self->ended_) {
            self->End();
            return;
        }
        std::string text = beast::buffers_to_string(self->buffer_.data());
        self->buffer_.clear();
        self->owner_.OnMessage(*self, std::move(text));
    });
}

void ClientSocket::Send(std::shared_ptr<const std::string> text)
{
    if (!open_ || closing_ || ended_) {
        return;
    }
    unsentBytes_ += text->size();
    if (unsentBytes_ > options_.mostUnsentBytes) {
        Abort();
        return;
    }
    unsent_.push_back(std::move(text));
    if (unsent_.size() == 1) {
        WriteNext();
    }
}

void ClientSocket::WriteNext()
{
    stream_.async_write(boost::asio::buffer(*unsent_.front()),
                        [self = shared_from_this()](beast::error_code error, std::size_t) {
                            if (error || self->ended_) {
                                self->End();
                                return;
                            }
                            self->unsentBytes_ -= self->unsent_.front()->size();
                            self->unsent_.pop_front();
                            if (!self->unsent_.empty()) {
                                self->WriteNext();
                            } else if (self->closing_) {
                                self->SayGoodbye();
                            }
                        });
}

void ClientSocket::Close()
{
    if (!open_) {
        Abort();
    } else if (!std::exchange(closing_, true) && unsent_.empty()) {
        SayGoodbye();
    }
}

void ClientSocket::SayGoodbye()
{
    stream_.async_close(websocket::close_code::going_away,
                        [self = shared_from_this()](beast::error_code) { self->End(); });
}

void ClientSocket::Abort()
{
    beast::get_lowest_layer(stream_).close();
    End();
}

void ClientSocket::End()
{
    if (!std::exchange(ended_, true)) {
        beast::get_lowest_layer(stream_).close();
        owner_.OnClosed(*this);
    }
}

}  // namespace Workbench
