#include <benchmark/benchmark.h>

#include <cstdio>

namespace {

/// One line a subject: what it takes, its counters, and what they are to be held against.
class Table final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override
    {
        std::printf("%d cores\n", context.cpu_info.num_cpus);
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const auto& run : runs) {
            const auto subject
                = run.run_name.function_name + (run.run_name.args.empty() ? "" : " of ") + run.run_name.args;
            std::printf("%-33s %7.1f %s", subject.c_str(), run.GetAdjustedRealTime(),
                benchmark::GetTimeUnitString(run.time_unit));
            for (const auto& [name, counter] : run.counters)
                std::printf("  %.*f %s", counter.value < 100 ? 2 : 0, counter.value, name.c_str());
            std::printf("   (%s)\n", run.error_occurred ? run.error_message.c_str() : run.report_label.c_str());
        }
    }
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    Table table;
    benchmark::RunSpecifiedBenchmarks(&table);
}
