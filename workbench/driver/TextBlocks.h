// A long text that grows in blocks: nothing that was appended is ever copied. [any-thread]
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace Workbench {

class TextBlocks {
public:
    // The end of the text, to be appended to. Valid until the next call.
    std::string& End()
    {
        if (blocks_.empty() || blocks_.back().size() >= kBlockBytes) {
            std::string block;
            block.reserve(kBlockBytes + kSlackBytes);
            blocks_.push_back(std::move(block));
        }
        return blocks_.back();
    }

    friend std::ostream& operator<<(std::ostream& output, const TextBlocks& text)
    {
        for (const std::string& block : text.blocks_) {
            output << block;
        }
        return output;
    }

private:
    static constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
    static constexpr std::size_t kSlackBytes = std::size_t{1}
                                               << 14;  // for most of what is appended

    std::vector<std::string> blocks_;
};

}  // namespace Workbench
