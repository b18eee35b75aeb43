#include "web/StopSignals.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>

namespace Workbench {

namespace {

constexpr int kEndedBySignal = 128;

}  // namespace

class StopSignals::Waiting {
public:
    explicit Waiting(std::function<bool(int)> take) : take_(std::move(take))
    {
        std::signal(SIGPIPE, SIG_IGN);
        Await();
        thread_ = std::thread([this] { io_.run(); });
    }
    ~Waiting()
    {
        io_.stop();
        thread_.join();
    }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

private:
    void Await()
    {
        signals_.async_wait([this](const boost::system::error_code& error, int signal) {
            if (error) {
                return;
            }
            if (!take_(signal)) {
                std::_Exit(kEndedBySignal + signal);
            }
            Await();
        });
    }

    const std::function<bool(int)> take_;
    boost::asio::io_context io_{1};
    boost::asio::signal_set signals_{io_, SIGINT, SIGTERM, SIGHUP};
    std::thread thread_;
};

StopSignals::StopSignals(std::function<bool(int signal)> take)
    : waiting_(std::make_unique<Waiting>(std::move(take)))
{
}

StopSignals::~StopSignals() = default;

}  // namespace Workbench
