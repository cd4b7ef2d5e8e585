#include "Measure.h"

int main(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    dax::bench::hierarchies.clear();
    dax::bench::validated.clear();
    return 0;
}
