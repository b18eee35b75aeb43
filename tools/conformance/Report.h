// The lines that the tool prints: one per promise, "ok" or "FAIL" with what was seen and wanted.
#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

namespace Conformance {

// What one proof has found so far.
class Finding {
public:
    // The first failure is told in full, further ones are counted.
    void Fail(const std::string& text);

    void Want(bool kept, const std::string& otherwise)
    {
        if (!kept) {
            Fail(otherwise);
        }
    }

    template <class T>
    void Equal(const std::string& what, const T& seen, const std::type_identity_t<T>& wanted)
    {
        if (!(seen == wanted)) {
            Fail(what + " is " + Shown(seen) + ", wanted " + Shown(wanted));
        }
    }

    bool Failed() const noexcept { return failures_ != 0; }
    std::string Text() const;

private:
    static std::string Shown(std::string_view text);
    static std::string Shown(std::uint64_t number) { return std::to_string(number); }

    std::string first_;
    unsigned failures_ = 0;
};

class Report {
public:
    using Proof = std::function<void(Finding&)>;

    // Proves the promises whose names begin with `only`; makes a crash of the module a failure of
    // the promise that is being proven.
    explicit Report(std::string_view only);

    // Proves one promise and prints its line. An exception that leaves the proof fails it.
    void Prove(const std::string& promise, const Proof& proof);

    // Prints the counts; the exit status of the program.
    int Finish() const;

private:
    const std::string only_;
    unsigned kept_ = 0;
    unsigned failed_ = 0;
};

}  // namespace Conformance
