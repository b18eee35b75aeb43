#include "platform-libraries/AtomLibraryHost.h"
#include "service-common/Atom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::testing::ElementsAre;

TEST(AtomLibrary, AnswersWhatIsNoNameAndNoAtom)
{
    Atom atom = 77;
    EXPECT_EQ(VxGetAtomFromString(nullptr, &atom), kResultNullArgument);
    EXPECT_EQ(atom, kAtomNone);
    atom = 77;
    EXPECT_EQ(VxGetAtomFromString("", &atom), kResultNotFound);
    EXPECT_EQ(atom, kAtomNone);
    EXPECT_EQ(VxGetAtomFromString("Name", nullptr), kResultNullArgument);

    for (const Atom unknown : {kAtomNone, kAtomUnresolved, Atom{1}, Atom{0x7FFFFFFF}}) {
        const char* name = "kept from before";
        EXPECT_EQ(VxGetStringFromAtom(unknown, &name), kResultNotFound) << unknown;
        EXPECT_EQ(name, nullptr) << unknown;
    }
}

TEST(AtomLibrary, CountsHowOftenANameWasAskedFor)
{
    EXPECT_EQ(VxHostCountAtomRequests("CountedName"), 0u);
    Atom first = kAtomNone;
    Atom second = kAtomNone;
    VxGetAtomFromString("CountedName", &first);
    VxGetAtomFromString(std::string("Counted").append("Name").c_str(), &second);
    EXPECT_EQ(first, second);
    EXPECT_EQ(VxHostCountAtomRequests("CountedName"), 2u);
    EXPECT_EQ(VxHostCountAtomRequests("CountedNam"), 0u);
}

// More names than the table has buckets, from several threads that all ask for the same ones.
TEST(AtomLibrary, GivesEveryThreadTheSameAtomForAName)
{
    constexpr std::size_t kNames = 10'000;
    constexpr std::size_t kThreads = 4;
    std::vector<std::vector<Atom>> atoms(kThreads, std::vector<Atom>(kNames));
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&atoms, t] {
            for (std::size_t i = 0; i < kNames; ++i) {
                const std::size_t name = t % 2 == 0 ? i : kNames - 1 - i;
                VxGetAtomFromString(("Shared" + std::to_string(name)).c_str(), &atoms[t][name]);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::set<Atom> distinct(atoms[0].begin(), atoms[0].end());
    EXPECT_EQ(distinct.size(), kNames);
    for (std::size_t i = 0; i < kNames; ++i) {
        for (std::size_t t = 1; t < kThreads; ++t) {
            ASSERT_EQ(atoms[t][i], atoms[0][i]) << i;
        }
        const char* name = nullptr;
        ASSERT_EQ(VxGetStringFromAtom(atoms[0][i], &name), kResultOk);
        ASSERT_EQ(name, "Shared" + std::to_string(i));
    }
}

TEST(AtomLibrary, HashesSequencesApart)
{
    std::set<std::uint32_t> hashes;
    const std::vector<std::string> sequences = {
        "",      std::string(1, '\0'), std::string(2, '\0'), "a", "b", "ab", "ba", "UIWnd",
        "UIWne", "UIHandler"};
    for (const std::string& sequence : sequences) {
        const std::uint32_t hash = CalculateSequenceHash(sequence.data(), sequence.size());
        EXPECT_NE(hash, 0u);
        EXPECT_EQ(hash, CalculateSequenceHash(std::string(sequence).data(), sequence.size()));
        hashes.insert(hash);
    }
    EXPECT_EQ(hashes.size(), sequences.size());
    EXPECT_EQ(CalculateSequenceHash(nullptr, 0), CalculateSequenceHash("x", 0));
}

// Ends the storage that a test filled, and starts it anew for the next one.
class SingletonStorage : public ::testing::Test {
protected:
    SingletonStorage() { VxHostRestartSingletonStorage(); }
    ~SingletonStorage() override { VxHostRestartSingletonStorage(); }
};

TEST_F(SingletonStorage, GivesOneSlotToEverybodyWhoNamesIt)
{
    void* first = nullptr;
    void* second = nullptr;
    void* found = nullptr;
    ASSERT_EQ(CreateSingletonStaticData("slot", 5, 16, nullptr, &first), kResultOk);
    EXPECT_EQ(std::string(static_cast<const char*>(first), 16), std::string(16, '\0'));
    ASSERT_EQ(CreateSingletonStaticData("slot", 5, 16, nullptr, &second), kResultOk);
    ASSERT_EQ(GetSingletonStaticData("slot", 5, &found), kResultOk);
    EXPECT_EQ(first, second);
    EXPECT_EQ(first, found);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % alignof(std::max_align_t), 0u);
}

TEST_F(SingletonStorage, RefusesAnotherIdentifierAndUnknownSlots)
{
    void* data = &data;
    ASSERT_EQ(CreateSingletonStaticData("slot", 5, 8, nullptr, &data), kResultOk);
    EXPECT_EQ(CreateSingletonStaticData("slot", 6, 8, nullptr, &data), kResultStaticDataIdMismatch);
    EXPECT_EQ(data, nullptr);
    // A slot made too small for what is asked for now must not be handed out.
    EXPECT_EQ(CreateSingletonStaticData("slot", 5, 64, nullptr, &data),
              kResultStaticDataIdMismatch);
    EXPECT_EQ(GetSingletonStaticData("slot", 6, &data), kResultStaticDataIdMismatch);
    EXPECT_EQ(GetSingletonStaticData("other", 5, &data), kResultNotFound);
    EXPECT_EQ(GetSingletonStaticData(nullptr, 5, &data), kResultNullArgument);
    EXPECT_EQ(CreateSingletonStaticData("slot", 5, 8, nullptr, nullptr), kResultNullArgument);
}

std::vector<int>* destroyedSlots = nullptr;

void NoteDestroyed(void* data)
{
    destroyedSlots->push_back(*static_cast<int*>(data));
    // What a slot holds may look for the storage while it goes.
    void* other = nullptr;
    EXPECT_EQ(GetSingletonStaticData("1", 1, &other), kResultStorageDestroyed);
    EXPECT_FALSE(IsSingletonStaticDataStorageAvailable());
}

TEST_F(SingletonStorage, DestroysTheYoungestSlotFirstAndEachOnce)
{
    std::vector<int> destroyed;
    destroyedSlots = &destroyed;
    for (int i = 1; i <= 3; ++i) {
        void* data = nullptr;
        ASSERT_EQ(CreateSingletonStaticData(std::to_string(i).c_str(), 1, sizeof(int),
                                            &NoteDestroyed, &data),
                  kResultOk);
        *static_cast<int*>(data) = i;
    }
    EXPECT_TRUE(IsSingletonStaticDataStorageAvailable());
    VxHostTearDownSingletonStorage();
    VxHostTearDownSingletonStorage();
    EXPECT_THAT(destroyed, ElementsAre(3, 2, 1));
    void* data = nullptr;
    EXPECT_EQ(CreateSingletonStaticData("new", 1, 8, nullptr, &data), kResultStorageDestroyed);
    VxHostRestartSingletonStorage();
    EXPECT_EQ(GetSingletonStaticData("1", 1, &data), kResultNotFound);
}

}  // namespace
