#include "Measure.h"

int main(int argc, char** argv) {
    using namespace DhcpBench;
    if (!registerParsing() || !registerRewriting() || !registerSolicits()) return 1;
    registerReading();
    registerWorstCases();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
