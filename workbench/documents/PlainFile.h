// A PDF file put together object by object, for documents that were not read from one: no
// compression, no encryption. One thread at a time.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Documents {

class PlainFile {
public:
    using Number = std::uint32_t;

    PlainFile();

    // Numbers of objects that are written later, in any order; the first one is the catalogue's.
    Number Reserve();

    // "N 0 R"
    static std::string Reference(Number object);

    // Each number once. `syntax` stands between "obj" and "endobj".
    void Write(Number object, std::string_view syntax);
    void WriteStream(Number object, std::string_view entries, std::string_view data);

    // The file's bytes, complete once everything reserved is written. Ends the object's use.
    std::string Finish();

private:
    std::string bytes_;
    std::vector<std::uint64_t> offsets_;  // by number less one
};

}  // namespace Documents
