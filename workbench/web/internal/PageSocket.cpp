#include "web/internal/PageSocket.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include <utility>

namespace Workbench {

namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;

PageSocket::PageSocket(SocketNumber number, beast::tcp_stream stream,
                       const HttpServerOptions& options, Owner& owner)
    : number_(number), options_(options), owner_(owner), stream_(std::move(stream))
{
    // The WebSocket keeps time by itself: it pings a silent page, and gives up one that is gone.
    beast::get_lowest_layer(stream_).expires_never();
    websocket::stream_base::timeout times{};
    times.handshake_timeout = options.headerTime;
    times.idle_timeout = std::chrono::minutes(2);
    times.keep_alive_pings = true;
    stream_.set_option(times);
    // What goes beyond the bound is read as well, within reason: a page that is cut off in the
    // middle of sending would not be told why.
    constexpr std::size_t kPatience = 8;
    stream_.read_message_max(kPatience * options.mostMessageBytes);
}

void PageSocket::Accept(const beast::http::request<beast::http::string_body>& request)
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

void PageSocket::ReadNext()
{
    if (!open_ || reading_ || ended_) {
        return;
    }
    reading_ = true;
    ReadPiece();
}

void PageSocket::ReadPiece()
{
    const auto take = [self = shared_from_this()](beast::error_code error, std::size_t) {
        if (error || self->ended_) {
            self->reading_ = false;
            self->End();
            return;
        }
        const std::string piece = beast::buffers_to_string(self->buffer_.data());
        self->buffer_.clear();
        const std::size_t room = self->options_.mostMessageBytes - self->text_.size();
        self->text_.append(piece, 0, room);
        self->isWhole_ = self->isWhole_ && piece.size() <= room;
        if (!self->stream_.is_message_done()) {
            self->ReadPiece();
            return;
        }
        self->reading_ = false;
        self->owner_.OnMessage(*self, std::exchange(self->text_, {}),
                               std::exchange(self->isWhole_, true));
    };
    stream_.async_read_some(buffer_, 0, take);
}

void PageSocket::Send(std::shared_ptr<const std::string> text)
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

void PageSocket::WriteNext()
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

void PageSocket::Close()
{
    if (!open_) {
        Abort();
    } else if (!std::exchange(closing_, true) && unsent_.empty()) {
        SayGoodbye();
    }
}

void PageSocket::SayGoodbye()
{
    stream_.async_close(websocket::close_code::going_away,
                        [self = shared_from_this()](beast::error_code) { self->End(); });
}

void PageSocket::Abort()
{
    beast::get_lowest_layer(stream_).close();
    End();
}

void PageSocket::End()
{
    if (!std::exchange(ended_, true)) {
        beast::get_lowest_layer(stream_).close();
        owner_.OnClosed(*this);
    }
}

}  // namespace Workbench
