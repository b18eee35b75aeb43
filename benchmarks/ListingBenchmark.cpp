// The headless workbench as a whole process, from its start to its end, beside a program that does
// nothing but walk over the same file with QPDF. Each round runs the one behind the other, so that
// both see the same machine. This program itself stays small: what it holds in memory when it
// starts another one counts as that one's.
#include "PopulationArguments.h"
#include "PopulationFile.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>

namespace {

struct Cost {
    double seconds = 0;
    double megabytes = 0;  // the most that was resident
};

// Runs a program with one option, which may be empty, and a file; what it prints goes nowhere.
Cost CostOf(std::string program, std::string option, std::string file)
{
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    char* const arguments[] = {program.data(), option.empty() ? file.data() : option.data(),
                               option.empty() ? nullptr : file.data(), nullptr};
    const auto begin = std::chrono::steady_clock::now();
    pid_t process = 0;
    const int error =
        ::posix_spawn(&process, program.c_str(), &actions, nullptr, arguments, environ);
    ::posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    struct rusage usage {};
    if (error != 0 || ::wait4(process, &status, 0, &usage) != process || status != 0) {
        throw std::runtime_error(program + " failed");
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    return {time.count(), static_cast<double>(usage.ru_maxrss) / 1024};
}

// Counters: the most memory in MiB, and time and memory as multiples of the bare walk's. The times
// are the best ones of all rounds.
void MeasureListing(benchmark::State& state, const char* option)
{
    const std::string file = PopulationFile(PopulationOf(state)).string();
    Cost best{1e9, 0};
    Cost bestWalk = best;
    for (auto _ : state) {
        try {
            const Cost walk = CostOf(BARE_WALK, "", file);
            const Cost listing = CostOf(WORKBENCH, option, file);
            state.SetIterationTime(listing.seconds);
            best = {std::min(best.seconds, listing.seconds), listing.megabytes};
            bestWalk = {std::min(bestWalk.seconds, walk.seconds), walk.megabytes};
        } catch (const std::exception& error) {
            state.SkipWithError(error.what());
            return;
        }
    }
    state.counters["walk_ms"] = bestWalk.seconds * 1000;
    state.counters["time_ratio"] = best.seconds / bestWalk.seconds;
    state.counters["MiB"] = best.megabytes;
    state.counters["memory_ratio"] = best.megabytes / bestWalk.megabytes;
}

void Arguments(benchmark::internal::Benchmark* benchmark)
{
    PopulationArguments(benchmark);
    benchmark->UseManualTime()->Iterations(3);
}

void BM_Listing_Json(benchmark::State& state)
{
    MeasureListing(state, "--json");
}
BENCHMARK(BM_Listing_Json)->Apply(Arguments);

void BM_Listing_Text(benchmark::State& state)
{
    MeasureListing(state, "--text");
}
BENCHMARK(BM_Listing_Text)->Apply(Arguments);

}  // namespace
