#include "Measure.h"
#include "Peak.h"

int main(int count, char** arguments) {
    dax::bench::MeasurePeakIfAsked(count, arguments);
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    for (auto* databases : {&dax::bench::hierarchies, &dax::bench::validated, &dax::bench::locks}) databases->clear();
    return 0;
}
