#include "Report.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

namespace Conformance {

namespace {

constexpr const char* kSetup = "setup";  // between the promises
const char* volatile g_promise = kSetup;

void TellCrash(int signal)
{
    std::printf("FAIL %s: crashed with signal %d, wanted a result\n", g_promise, signal);
    std::fflush(stdout);
    std::_Exit(1);
}

}  // namespace

void Finding::Fail(const std::string& text)
{
    if (failures_++ == 0) {
        first_ = text;
    }
}

std::string Finding::Text() const
{
    return failures_ < 2 ? first_ : first_ + " (and " + std::to_string(failures_ - 1) + " more)";
}

std::string Finding::Shown(std::string_view text)
{
    std::string shown(text);
    for (char& c : shown) {
        c = c < ' ' ? '?' : c;
    }
    return "\"" + shown + "\"";
}

Report::Report(std::string_view only) : only_(only)
{
    for (const int signal : {SIGSEGV, SIGILL, SIGFPE, SIGABRT}) {
        std::signal(signal, TellCrash);
    }
}

void Report::Prove(const std::string& promise, const Proof& proof)
{
    if (!promise.starts_with(only_)) {
        return;
    }
    g_promise = promise.c_str();
    Finding finding;
    try {
        proof(finding);
    } catch (const std::exception& failure) {
        finding.Fail(std::string("an exception ended the proof: ") + failure.what());
    }
    g_promise = kSetup;
    ++(finding.Failed() ? failed_ : kept_);
    if (finding.Failed()) {
        std::printf("FAIL %s: %s\n", promise.c_str(), finding.Text().c_str());
    } else {
        std::printf("ok   %s\n", promise.c_str());
    }
    std::fflush(stdout);
}

int Report::Finish() const
{
    std::printf("%u promises: %u kept, %u broken\n", kept_ + failed_, kept_, failed_);
    return failed_ == 0 && kept_ != 0 ? 0 : 1;
}

}  // namespace Conformance
