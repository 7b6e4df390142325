// SPDX-License-Identifier: MIT
//
// Runs the benchmarks and ends with one table: libzel beside its peers. The figures are medians over the repetitions of
// the CPU time of the thread, so that they bear other programs on the machine.

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <map>
#include <vector>

#include "bench.h"

namespace bench {
namespace {

struct figure {
    double ns = 0;
    std::map<std::string, double> counters;
};
using figures_by_column = std::map<std::string, figure>;

struct section {
    std::string name;
    std::vector<std::string> lines;
    std::vector<std::string> columns;
    std::map<std::string, figures_by_column> figures;  // by line
};

std::vector<section> sections;

section& section_of(const std::string& name)
{
    const auto named = [&](const section& s) { return s.name == name; };
    const auto it = std::find_if(sections.begin(), sections.end(), named);
    return it != sections.end() ? *it : sections.emplace_back(section{name, {}, {}, {}});
}

void add_once(std::vector<std::string>& list, const std::string& value)
{
    if (std::find(list.begin(), list.end(), value) == list.end())
        list.push_back(value);
}

// --- collecting ------------------------------------------------------------------------------------------------------

// Keeps the medians, or the runs themselves if there is one of each. Prints nothing on the way: benchmarks that take
// turns end all at once.
class collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override
    {
        PrintBasicContext(&std::cerr, context);
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            failed_ = failed_ || run.error_occurred;
            if (run.error_occurred)
                std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
            else if (run.aggregate_name == "median" || (run.run_type == Run::RT_Iteration && run.repetitions <= 1))
                keep(run);
        }
    }

    bool failed() const { return failed_; }

private:
    static void keep(const Run& run)
    {
        const std::string& name = run.run_name.function_name;
        const std::size_t first = name.find('/');
        const std::size_t last = name.rfind('/');
        section& s = section_of(name.substr(0, first));
        figure& f = s.figures[name.substr(first + 1, last - first - 1)][name.substr(last + 1)];
        const bool own_clock = run.run_name.time_type == "manual_time";
        f.ns = own_clock ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
        for (const auto& [counter, value] : run.counters)
            f.counters[counter] = value;
    }

    bool failed_ = false;
};

// --- printing --------------------------------------------------------------------------------------------------------

std::string time_text(double ns)
{
    const char* const units[] = {"ns", "us", "ms"};
    std::size_t unit = 0;
    for (; ns >= 9999.5 && unit < 2; ++unit)
        ns /= 1000;
    char text[32];
    std::snprintf(text, sizeof(text), "%.*f %s", ns < 99.95 ? 1 : 0, ns, units[unit]);
    return text;
}

std::string cell_text(const figures_by_column& line, const std::string& column)
{
    const auto own = line.find("libzel");
    const auto it = line.find(column);
    if (it == line.end())
        return "-";
    char ratio[32] = "       ";
    if (own != line.end() && it != own)
        std::snprintf(ratio, sizeof(ratio), " %6.2f", own->second.ns / it->second.ns);
    return time_text(it->second.ns) + ratio;
}

// Only the tracker's lines have counters: steps of size, each of which is also compared with the one before.
void print_counters(const figure& f, double ns_above)
{
    for (const auto& [counter, value] : f.counters)
        std::printf("  %.3g %s", value, counter.c_str());
    if (ns_above > 0)
        std::printf(", %.1f x the line above", f.ns / ns_above);
}

void print_section(const section& s)
{
    std::printf("\n%-46s", s.name.c_str());
    for (const std::string& column : s.columns)
        std::printf("%-22s", column.c_str());
    std::printf("\n");
    double above = 0;
    for (const std::string& line : s.lines) {
        const auto it = s.figures.find(line);
        if (it == s.figures.end())
            continue;
        std::printf("  %-40s", line.c_str());
        for (const std::string& column : s.columns)
            std::printf("%22s", cell_text(it->second, column).c_str());
        const auto own = it->second.find("libzel");
        if (own != it->second.end() && !own->second.counters.empty()) {
            print_counters(own->second, above);
            above = own->second.ns;
        }
        std::printf("\n");
    }
}

void print_table()
{
    std::printf("CPU time of the thread, medians. Behind a peer's time: libzel's time divided by it.\n");
    for (const section& s : sections)
        if (!s.figures.empty())
            print_section(s);
}

}  // namespace

std::string cell(const std::string& section, const std::string& line, const std::string& column)
{
    add_once(section_of(section).lines, line);
    add_once(section_of(section).columns, column);
    return section + '/' + line + '/' + column;
}

}  // namespace bench

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    bench::add_cycles();
    bench::add_calls();
    bench::add_matrices();
    bench::add_frames();
#ifdef ZEL_BENCH_OPENCV
    bench::add_opencv();
#endif
    bench::collector results;
    benchmark::RunSpecifiedBenchmarks(&results);
    bench::print_table();
    return results.failed() ? 1 : 0;
}
