#pragma once

#include <benchmark/benchmark.h>

#include "AllocationCount.h"
#include "Frames.h"

namespace DhcpBench {

/// Makes the compiler believe that what `pointer` points to is read and written here. Google Benchmark 1.7.1's own
/// DoNotOptimize is miscompiled by g++ 12 for values in such loops.
template <class T>
void hold(T*& pointer) {
    asm volatile("" : "+r"(pointer) : : "memory");
}

void reportAllocations(benchmark::State& state, const AllocationCount& before, std::size_t operations);

/// Measures `operation` as GROUP/CASE/CONTENDER: it takes an Input and returns its outcome, whose destruction is
/// measured too. `measured` lives as long as the program.
template <class Operation>
void measure(const std::string& group, const Case& measured, const std::string& contender, Operation operation) {
    const auto loop = [&measured, operation](benchmark::State& state) {
        const auto run = [&operation](const Input* input) {
            hold(input);
            auto outcome = operation(*input);
            auto* kept = &outcome;
            hold(kept);
        };
        const Input *const first = measured.inputs.data(), *const last = first + measured.inputs.size();
        const Input* next = first;
        for ([[maybe_unused]] const auto iteration : state) {
            run(next);
            if (++next == last) next = first;
        }
        const AllocationCount before = allocationCount();
        for (const Input& input : measured.inputs) run(&input);
        reportAllocations(state, before, measured.inputs.size());
    };
    benchmark::RegisterBenchmark((group + '/' + measured.name + '/' + contender).c_str(), loop);
}

/// Names of the contenders, as the report knows them.
inline constexpr char library[] = "DhcpLib", tins[] = "libtins", singlePass[] = "floor";

/// Registers the measurements of one file. False, after saying which field of which frame, where contenders disagree.
bool registerParsing();
bool registerRewriting();
bool registerSolicits();
void registerReading();

}  // namespace DhcpBench
