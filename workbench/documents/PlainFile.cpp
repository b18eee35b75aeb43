#include "documents/PlainFile.h"

#include <algorithm>
#include <cstddef>

namespace Documents {

// The bytes of the second line tell programs that move files that this one is no text.
PlainFile::PlainFile() : bytes_{"%PDF-1.7\n%\xE2\xE3\xCF\xD3\n"} {}

PlainFile::Number PlainFile::Reserve()
{
    offsets_.push_back(0);
    return static_cast<Number>(offsets_.size());
}

std::string PlainFile::Reference(Number object)
{
    return std::to_string(object) + " 0 R";
}

void PlainFile::Write(Number object, std::string_view syntax)
{
    offsets_[object - 1] = bytes_.size();
    bytes_.append(std::to_string(object)).append(" 0 obj\n").append(syntax).append("\nendobj\n");
}

void PlainFile::WriteStream(Number object, std::string_view entries, std::string_view data)
{
    std::string syntax = "<< ";
    syntax.append(entries).append(" /Length ").append(std::to_string(data.size()));
    syntax.append(" >>\nstream\n").append(data).append("\nendstream");
    Write(object, syntax);
}

std::string PlainFile::Finish()
{
    constexpr std::size_t kDigits = 10;
    const std::uint64_t table = bytes_.size();
    const std::string size = std::to_string(offsets_.size() + 1);
    bytes_ += "xref\n0 " + size + "\n0000000000 65535 f \n";
    for (const std::uint64_t offset : offsets_) {
        const std::string digits = std::to_string(offset);
        bytes_.append(kDigits - std::min(kDigits, digits.size()), '0').append(digits);
        bytes_ += " 00000 n \n";
    }
    bytes_ += "trailer\n<< /Size " + size + " /Root 1 0 R >>\nstartxref\n" + std::to_string(table) +
              "\n%%EOF\n";
    return std::move(bytes_);
}

}  // namespace Documents
