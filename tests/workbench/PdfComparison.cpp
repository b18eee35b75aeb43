#include "PdfComparison.h"

#include <qpdf/Buffer.hh>

#include <algorithm>
#include <map>
#include <vector>

namespace SavedFilesTest {

namespace {

using Object = QPDFObjectHandle;

bool AreOne(Object left, Object right)
{
    return left.isIndirect() && right.isIndirect() && left.getObjGen() == right.getObjGen();
}

bool BelongsTo(Object popup, Object annotation)
{
    return popup.isDictionary() && annotation.isDictionary() &&
           (AreOne(annotation.getKey("/Popup"), popup) ||
            AreOne(popup.getKey("/Parent"), annotation));
}

std::vector<Object> AnnotationsOf(Object page)
{
    Object array = page.getKey("/Annots");
    return array.isArray() ? array.getArrayAsVector() : std::vector<Object>();
}

class Comparison {
public:
    Comparison(QPDF& before, const Places& gone, QPDF& after) : before_(before), after_(after)
    {
        const auto& pages = before.getAllPages();
        after.getAllPages();
        for (std::size_t i = 0; i < pages.size(); ++i) {
            const std::vector<Object> annotations = AnnotationsOf(pages[i]);
            std::vector<Object>& kept = keptAnnotations_[pages[i].getObjGen()];
            for (int position = 0; position < static_cast<int>(annotations.size()); ++position) {
                const Object& annotation = annotations[static_cast<std::size_t>(position)];
                if (!gone.contains({i, position})) {
                    kept.push_back(annotation);
                } else if (annotation.isIndirect()) {
                    gone_.insert(annotation.getObjGen());
                }
            }
        }
    }

    std::string Run()
    {
        const std::set<std::string> own = {"/ID", "/Size",  "/Prev",   "/XRefStm", "/Type",
                                           "/W",  "/Index", "/Length", "/Filter",  "/DecodeParms"};
        CompareKeys(before_.getTrailer(), after_.getTrailer(), own, "trailer");
        while (difference_.empty() && !waiting_.empty()) {
            Pair pair = std::move(waiting_.back());
            waiting_.pop_back();
            Compare(pair);
        }
        return difference_;
    }

private:
    struct Pair {
        Object before;
        Object after;
        std::string place;
    };

    void Differ(const Pair& pair, const std::string& reason)
    {
        const auto text = [](Object object) { return object.unparseResolved().substr(0, 300); };
        difference_ =
            pair.place + ": " + reason + ": " + text(pair.before) + " and " + text(pair.after);
    }

    // Whether the two are met for the first time, or are not objects of their own.
    bool IsNew(const Pair& pair)
    {
        if (!pair.before.isIndirect()) {
            return true;
        }
        const auto [known, isNew] =
            partners_.emplace(pair.before.getObjGen(), pair.after.getObjGen());
        if (!isNew && known->second != pair.after.getObjGen()) {
            Differ(pair, "one object became two");
        }
        return isNew;
    }

    void Compare(Pair& pair)
    {
        if ((pair.before.isIndirect() && gone_.contains(pair.before.getObjGen())) ||
            (pair.before.isNull() && pair.after.isNull()) || !IsNew(pair)) {
            return;
        }
        if (pair.before.getTypeCode() != pair.after.getTypeCode()) {
            Differ(pair, "another type");
        } else if (pair.before.isArray()) {
            CompareItems(pair, pair.before.getArrayAsVector(), pair.after.getArrayAsVector());
        } else if (pair.before.isDictionary()) {
            CompareDictionaries(pair);
        } else if (pair.before.isStream()) {
            CompareStreams(pair);
        } else if (pair.before.unparseResolved() != pair.after.unparseResolved()) {
            Differ(pair, "another value");
        }
    }

    void CompareItems(const Pair& pair, const std::vector<Object>& before,
                      const std::vector<Object>& after)
    {
        if (before.size() != after.size()) {
            Differ(pair,
                   std::to_string(before.size()) + " items became " + std::to_string(after.size()));
            return;
        }
        for (std::size_t i = 0; i < before.size(); ++i) {
            waiting_.push_back({before[i], after[i], pair.place + "[" + std::to_string(i) + "]"});
        }
    }

    void CompareDictionaries(const Pair& pair)
    {
        const auto kept = keptAnnotations_.find(pair.before.getObjGen());
        if (!pair.before.isIndirect() || kept == keptAnnotations_.end()) {
            CompareKeys(pair.before, pair.after, {}, pair.place);
            return;
        }
        CompareKeys(pair.before, pair.after, {"/Annots"}, pair.place);
        const Pair arrays{pair.before, pair.after, pair.place + "/Annots"};
        CompareItems(arrays, kept->second, AnnotationsOf(pair.after));
    }

    void CompareStreams(Pair& pair)
    {
        CompareKeys(pair.before.getDict(), pair.after.getDict(), {"/Length"}, pair.place);
        const auto before = pair.before.getRawStreamData();
        const auto after = pair.after.getRawStreamData();
        if (before->getSize() != after->getSize() ||
            !std::equal(before->getBuffer(), before->getBuffer() + before->getSize(),
                        after->getBuffer())) {
            Differ(pair, "other data");
        }
    }

    void CompareKeys(Object before, Object after, const std::set<std::string>& leftOut,
                     const std::string& place)
    {
        std::map<std::string, std::pair<Object, Object>> values;
        for (const auto& [key, value] : before.getDictAsMap()) {
            values[key].first = value;
        }
        for (const auto& [key, value] : after.getDictAsMap()) {
            values[key].second = value;
        }
        for (auto& [key, value] : values) {
            for (Object* const side : {&value.first, &value.second}) {
                *side = side->isInitialized() ? *side : Object::newNull();
            }
            if (!leftOut.contains(key)) {
                waiting_.push_back({value.first, value.second, place + key});
            }
        }
    }

    QPDF& before_;
    QPDF& after_;
    std::map<QPDFObjGen, std::vector<Object>> keptAnnotations_;  // by page
    std::set<QPDFObjGen> gone_;
    std::map<QPDFObjGen, QPDFObjGen> partners_;
    std::vector<Pair> waiting_;
    std::string difference_;
};

}  // namespace

Places WithTheirPopups(QPDF& file, const Places& places)
{
    Places all = places;
    const auto& pages = file.getAllPages();
    for (const auto& [page, position] : places) {
        const std::vector<Object> annotations = AnnotationsOf(pages.at(page));
        const Object& annotation = annotations.at(static_cast<std::size_t>(position));
        for (std::size_t i = 0; i < annotations.size(); ++i) {
            if (AreOne(annotations[i], annotation) || BelongsTo(annotations[i], annotation)) {
                all.insert({page, static_cast<int>(i)});
            }
        }
    }
    return all;
}

std::string DescribeDifference(QPDF& before, const Places& gone, QPDF& after)
{
    return Comparison(before, gone, after).Run();
}

}  // namespace SavedFilesTest
