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
                runTimes[run.run_name.str()].push_back(seconds);
            else if (run.aggregate_name == "median")
                medians[run.run_name.str()] = seconds;
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // CPU seconds per call of a benchmark; negative when it did not run.
    double Seconds(const std::string& name) const
    {
        if (const auto found = medians.find(name); found != medians.end())
            return found->second;
        const auto found = runTimes.find(name);
        if (found == runTimes.end() || found->second.empty())
            return -1;
        std::vector<double> values = found->second;
        std::sort(values.begin(), values.end());
        const size_t n = values.size();
        return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
    }
    double Microseconds(const std::string& name) const
    {
        const double seconds = Seconds(name);
        return seconds < 0 ? -1 : seconds * 1e6;
    }

private:
    std::map<std::string, std::vector<double>> runTimes;
    std::map<std::string, double> medians;
};

// One row of the summary table: what was measured, its value, and the bound
// it must stay within (value <= target). run-benchmarks.sh collects the rows
// of every benchmark program by their "SUMMARY|" start.
inline void SummaryRow(const std::string& what, double value, double target, const char* unit)
{
    if (value < 0)
        std::printf("SUMMARY|%s|not measured|%.2f|%s\n", what.c_str(), target, unit);
    else
        std::printf("SUMMARY|%s|%.2f|%.2f|%s\n", what.c_str(), value, target, unit);
}
