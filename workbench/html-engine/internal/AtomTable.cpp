#include "html-engine/internal/AtomTable.h"

#include <functional>
#include <stdexcept>

namespace HtmlEngine::Internal {

namespace {

constexpr std::size_t kFirstBucketCount = 256;

std::size_t HashOf(std::string_view text)
{
    return std::hash<std::string_view>{}(text);
}

}  // namespace

AtomTable::AtomTable() : entries_(1), buckets_(kFirstBucketCount, kNoAtom) {}

Atom AtomTable::Acquire(std::string_view text)
{
    const std::size_t hash = HashOf(text);
    for (Atom atom = buckets_[hash & (buckets_.size() - 1)]; atom != kNoAtom;
         atom = entries_[atom].next) {
        Entry& entry = entries_[atom];
        if (entry.hash == hash && entry.text == text) {
            ++entry.references;
            return atom;
        }
    }
    Atom atom = firstFree_;
    if (atom != kNoAtom) {
        entries_[atom].text = text;
        firstFree_ = entries_[atom].next;
    } else {
        if (entries_.size() > kMaxAtom) {
            throw std::length_error("HtmlEngine: too many distinct strings in one document");
        }
        atom = static_cast<Atom>(entries_.size());
        entries_.emplace_back().text = text;
    }
    if (++size_ > buckets_.size()) {
        Grow();
    }
    Entry& entry = entries_[atom];
    Atom& bucket = buckets_[hash & (buckets_.size() - 1)];
    entry.hash = hash;
    entry.references = 1;
    entry.next = bucket;
    bucket = atom;
    return atom;
}

void AtomTable::Release(Atom atom)
{
    Entry& entry = entries_[atom];
    if (--entry.references != 0) {
        return;
    }
    Atom* link = &buckets_[entry.hash & (buckets_.size() - 1)];
    while (*link != atom) {
        link = &entries_[*link].next;
    }
    *link = entry.next;
    entry.text = std::string();
    entry.next = firstFree_;
    firstFree_ = atom;
    --size_;
}

Atom AtomTable::Find(std::string_view text) const
{
    const std::size_t hash = HashOf(text);
    for (Atom atom = buckets_[hash & (buckets_.size() - 1)]; atom != kNoAtom;
         atom = entries_[atom].next) {
        if (entries_[atom].hash == hash && entries_[atom].text == text) {
            return atom;
        }
    }
    return kNoAtom;
}

void AtomTable::Grow()
{
    std::vector<Atom> buckets(buckets_.size() * 2, kNoAtom);
    for (Atom head : buckets_) {
        while (head != kNoAtom) {
            Entry& entry = entries_[head];
            const Atom next = entry.next;
            Atom& bucket = buckets[entry.hash & (buckets.size() - 1)];
            entry.next = bucket;
            bucket = head;
            head = next;
        }
    }
    buckets_ = std::move(buckets);
}

}  // namespace HtmlEngine::Internal
