#include "documents/Population.h"

#include <array>
#include <string_view>

namespace Documents {

namespace {

constexpr std::array<const char*, 16> kSubtypes{"Highlight", "Text",     "Underline", "StrikeOut",
                                                "Highlight", "Square",   "Circle",    "Ink",
                                                "FreeText",  "Squiggly", "Line",      "Caret",
                                                "Polygon",   "Stamp",    "Text",      "Highlight"};

constexpr std::array<std::u16string_view, 40> kWords{
    u"check",    u"this",    u"paragraph", u"again",   u"before",     u"the",        u"deadline",
    u"please",   u"figure",  u"table",     u"source?", u"agreed",     u"rewrite",    u"see",
    u"page",     u"12",      u"(twice)",   u"\"so\"",  u"50%",        u"überprüfen", u"Größe",
    u"façade",   u"naïve",   u"żółw",      u"проверь", u"ещё",        u"раз",        u"страницу",
    u"ελληνικά", u"κείμενο", u"注释",      u"请检查",  u"この段落",   u"確認",       u"한국어",
    u"مراجعة",   u"النص",    u"הערה",      u"ไทย",     u"\U0001F4DD",
};

constexpr std::array<std::u16string_view, 8> kPeople{
    u"A. Reviewer", u"Jörg Müller", u"Анна Иванова", u"李雷",
    u"山田 花子",   u"محمد علي",    u"Zoë O'Neill",  u"דנה לוי"};

constexpr std::array<std::u16string_view, 6> kSubjects{u"Wording", u"Figures", u"Rückfrage",
                                                       u"Вопрос",  u"校对",    u"Layout & print"};

constexpr std::array<std::u16string_view, 4> kAddresses{
    u"Jane Roe <jane@example.org>", u"<j.mueller@example.org>", u"李雷 <li@example.cn>",
    u"A. Reviewer <a.reviewer@example.com>"};

constexpr std::array<std::u16string_view, 5> kTagLike{u"List<String> names; #include <stdio.h>",
                                                      u"if a<b and c>d then stop", u"x<y, y <<z",
                                                      u"<b>not ended", u"see <ul><li>this list"};

// A small generator of equal sequences on every system; the standard distributions are not.
class Random {
public:
    Random(std::uint32_t seed, std::uint32_t index)
        : state_{(std::uint64_t{seed} << 32 | index) * 0x9E3779B97F4A7C15u + 0xD1B54A32D192ED03u}
    {
    }

    std::uint32_t Below(std::size_t bound)
    {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EBu;
        return static_cast<std::uint32_t>((mixed ^ mixed >> 31) % bound);
    }

    template <class Table>
    const auto& Pick(const Table& table)
    {
        return table[Below(table.size())];
    }

private:
    std::uint64_t state_;
};

// Words until the length is reached; cut to it, though never inside a surrogate pair.
std::u16string MakeContents(Random& random)
{
    const std::size_t length = 20 + random.Below(181);
    std::u16string text;
    while (text.size() < length) {
        if (!text.empty()) {
            const bool lineEnds = random.Below(12) == 0;
            text += lineEnds ? random.Below(2) == 0 ? u"\r" : u"\r\n" : u" ";
        }
        text += random.Pick(kWords);
    }
    text.resize(length);
    if ((text.back() & 0xFC00) == 0xD800 || text.back() == u'\r') {
        text.back() = u'.';
    }
    return text;
}

_PDDateRec MakeDate(Random& random)
{
    return {
        static_cast<std::uint16_t>(2015 + random.Below(10)),
        static_cast<std::uint16_t>(1 + random.Below(12)),
        static_cast<std::uint16_t>(1 + random.Below(28)),
        static_cast<std::uint16_t>(random.Below(24)),
        static_cast<std::uint16_t>(random.Below(60)),
        static_cast<std::uint16_t>(random.Below(60)),
        static_cast<std::int16_t>(static_cast<int>(random.Below(25)) - 12),
    };
}

_PDRect MakeRect(Random& random)
{
    const double left = 36 + random.Below(400);
    const double bottom = 36 + random.Below(680);
    return {left, bottom, left + 20 + random.Below(120), bottom + 12 + random.Below(24)};
}

}  // namespace

AnnotationProperties MakePopulationComment(std::uint32_t index, std::uint32_t seed,
                                           PopulationTexts texts)
{
    Random random{seed, index};
    AnnotationProperties comment;
    comment.subtype = random.Pick(kSubtypes);
    comment.contents = MakeContents(random);
    comment.title = random.Pick(kPeople);
    comment.subject = random.Pick(kSubjects);
    comment.created = MakeDate(random);
    comment.modified = MakeDate(random);
    comment.rect = MakeRect(random);
    comment.flags = kFlagPrint;
    if (texts == PopulationTexts::kTagLike) {
        if (random.Below(8) == 0) {
            comment.title = random.Pick(kAddresses);
        }
        if (random.Below(20) == 0) {
            comment.contents += u' ';
            comment.contents += random.Pick(kTagLike);
        }
    }
    return comment;
}

std::shared_ptr<MemoryDocument> MakePopulationDocument(PopulationSize size, std::uint32_t seed,
                                                       const MemoryOptions& options)
{
    std::vector<MemoryPage> pages(size.pages);
    GeneratePopulation(size, seed, [&](std::uint32_t page, AnnotationProperties comment) {
        pages[page].annotations.push_back(MakeEntry(std::move(comment)));
    });
    return MemoryDocument::Make("population", pages, options);
}

}  // namespace Documents
