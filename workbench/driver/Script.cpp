#include "driver/Script.h"

#include "actions/ActionRefused.h"
#include "driver/MemoryReserve.h"

#include <cerrno>
#include <istream>
#include <ostream>
#include <system_error>

namespace Workbench {

namespace {

constexpr std::string_view kBlanks = " \t\r";

bool IsBlank(char c)
{
    return kBlanks.find(c) != kBlanks.npos;
}

// Takes the words off a line, one after another.
class WordReader {
public:
    explicit WordReader(std::string_view line) : line_(line) {}

    // Whether there is one more word; the reader stands at its beginning then.
    bool FindNext()
    {
        at_ = std::min(line_.find_first_not_of(kBlanks, at_), line_.size());
        const bool isComment = at_ < line_.size() && line_[at_] == '#' &&
                               (!anyRead_ || at_ + 1 == line_.size() || IsBlank(line_[at_ + 1]));
        anyRead_ = true;
        return at_ < line_.size() && !isComment;
    }

    std::string Read()
    {
        std::string word;
        while (at_ < line_.size() && !IsBlank(line_[at_])) {
            switch (const char c = line_[at_++]) {
            case '\'':
            case '"':
                ReadQuoted(word, c);
                break;
            case '\\':
                word += Escaped();
                break;
            default:
                word += c;
            }
        }
        return word;
    }

private:
    char Escaped()
    {
        if (at_ == line_.size()) {
            throw StepError("nothing follows the \\ at the end");
        }
        return line_[at_++];
    }

    // Between double quotes a backslash quotes only what would have a meaning there.
    void ReadQuoted(std::string& word, char quote)
    {
        constexpr std::string_view kSpecial = "\"\\$`";
        for (; at_ < line_.size() && line_[at_] != quote; ++at_) {
            const bool escapes = quote == '"' && line_[at_] == '\\' && at_ + 1 < line_.size() &&
                                 kSpecial.find(line_[at_ + 1]) != kSpecial.npos;
            at_ += escapes ? 1 : 0;
            word += line_[at_];
        }
        if (at_ == line_.size()) {
            throw StepError(std::string("the quote ") + quote + " is not closed");
        }
        ++at_;
    }

    const std::string_view line_;
    std::size_t at_ = 0;
    bool anyRead_ = false;
};

// As std::getline, with an end for a file that has none.
bool ReadLine(std::istream& steps, std::string& line)
{
    constexpr std::size_t kMostBytes = std::size_t{128} << 20;
    line.clear();
    for (char c = 0; steps.get(c); line += c) {
        if (c == '\n') {
            return true;
        }
        if (line.size() == kMostBytes) {
            throw std::runtime_error("a line of the steps is longer than 128 MiB");
        }
    }
    return !line.empty();
}

}  // namespace

std::vector<std::string> SplitWords(std::string_view line)
{
    std::vector<std::string> words;
    for (WordReader reader(line); reader.FindNext();) {
        words.push_back(reader.Read());
    }
    return words;
}

std::string OneLine(std::string text)
{
    for (char& c : text) {
        c = c == '\n' || c == '\r' ? ' ' : c;
    }
    return text;
}

void Flush(std::ostream& output)
{
    errno = 0;
    if (!output.flush()) {
        throw std::runtime_error("the output cannot be written" +
                                 (errno == 0 ? "" : ": " + std::generic_category().message(errno)));
    }
}

void RunScript(Session& session, std::istream& steps, std::ostream& output, std::ostream& errors)
{
    std::size_t number = 0;
    for (std::string line; ReadLine(steps, line);) {
        const std::string place = "line " + std::to_string(++number) + ": ";
        try {
            const std::vector<std::string> words = SplitWords(line);
            if (words.empty()) {
                continue;
            }
            RunStep(session, output, words);
        } catch (const StepError& error) {
            throw StepError(place + error.what());
        } catch (const ActionRefused& error) {
            throw StepError(place + error.what());
        }
        session.AwaitIdle();
        RequireMemory();
        Flush(output);
        for (const std::string& failure : session.TakeFailures()) {
            errors << "warning: " << place << OneLine(failure) << "\n";
        }
        for (const std::string& warning : session.Documents().TakeWarnings()) {
            errors << "warning: " << OneLine(warning) << "\n";
        }
        errors << std::flush;
    }
    if (steps.bad()) {
        throw std::runtime_error("the steps cannot be read");
    }
}

}  // namespace Workbench
