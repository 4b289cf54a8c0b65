#pragma once
// What every benchmark program shares: a console reporter that keeps each
// benchmark's CPU time (the median over repetitions when there are several),
// and the rows of the summary table that tools/run-benchmarks.sh gathers.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

class MedianReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
        {
            if (run.error_occurred)
                continue;
            const double seconds =
                run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            if (run.run_type == Run::RT_Iteration)
            {
                runTimes[run.run_name.str()].push_back(seconds);
                for (const auto& [counter, value] : run.counters)
                    runCounters[run.run_name.str() + "/" + counter].push_back(value.value);
            }
            else if (run.aggregate_name == "median")
            {
                // Only the aggregates reach the reporter when the runs are not shown.
                runTimes[run.run_name.str()] = {seconds};
                for (const auto& [counter, value] : run.counters)
                    runCounters[run.run_name.str() + "/" + counter] = {value.value};
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // CPU seconds per call of a benchmark, the median over its repetitions;
    // negative when it did not run.
    double Seconds(const std::string& name) const { return Median(runTimes, name); }
    // A counter the benchmark set, the median over its repetitions.
    double Counter(const std::string& name, const std::string& counter) const
    {
        return Median(runCounters, name + "/" + counter);
    }
    double Microseconds(const std::string& name) const
    {
        const double seconds = Seconds(name);
        return seconds < 0 ? -1 : seconds * 1e6;
    }

private:
    using Values = std::map<std::string, std::vector<double>>;
    static double Median(const Values& all, const std::string& name)
    {
        const auto found = all.find(name);
        if (found == all.end() || found->second.empty())
            return -1;
        std::vector<double> values = found->second;
        std::sort(values.begin(), values.end());
        const size_t n = values.size();
        return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
    }

    Values runTimes;
    Values runCounters;
};

// One row of the summary table: what was measured, its value, and the bound
// it must stay within (value <= target), or NoTarget for a row that is only
// reported. run-benchmarks.sh collects the rows of every benchmark program by
// their "SUMMARY|" start.
constexpr double NoTarget = -1;

inline void SummaryRow(const std::string& what, double value, double target, const char* unit)
{
    char bound[32] = "none";
    if (target >= 0)
        (void)std::snprintf(bound, sizeof bound, "%.2f", target);
    if (value < 0)
        std::printf("SUMMARY|%s|not measured|%s|%s\n", what.c_str(), bound, unit);
    else
        std::printf("SUMMARY|%s|%.2f|%s|%s\n", what.c_str(), value, bound, unit);
}
