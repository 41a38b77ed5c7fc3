#pragma once

#include <benchmark/benchmark.h>

#include "AllocationCount.h"
#include "Frames.h"

namespace DhcpBench {

/// Makes the compiler assume that the object behind `pointer` is read and written here. Used instead of DoNotOptimize
/// of Google Benchmark 1.7.1, which g++ 12 miscompiles for values in such loops.
template <class T>
void hold(T*& pointer) {
    asm volatile("" : "+r"(pointer) : : "memory");
}

void reportAllocations(benchmark::State& state, const AllocationCount& before, std::size_t operations);

/// Registers a benchmark GROUP/CASE/CONTENDER of `operation`, which takes an Input and returns a result. Destroying the
/// result is part of what is measured. `measured` must live as long as the program.
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

/// Names of the contenders in the report.
inline constexpr char library[] = "DhcpLib", tins[] = "libtins", singlePass[] = "floor";

/// Each registers the benchmarks of one file. They return false, after printing the frame and the field, if the
/// contenders disagree on a result.
bool registerParsing();
bool registerRewriting();
bool registerSolicits();
void registerReading();
/// Benchmarks of the library alone, on packets of 64 KiB that a sender made to cost time.
void registerWorstCases();

}  // namespace DhcpBench
