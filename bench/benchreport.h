#pragma once

#include <QVector>

#include <algorithm>
#include <cstdio>

// The benchmark programs print one "name value" line per figure, the median of its runs;
// bench/run gathers the lines into one table.
namespace bench {

inline double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

// A figure with no runs is left out.
inline void report(const char *name, const QVector<double> &values)
{
    if (values.isEmpty())
        return;
    std::printf("%s %.3f\n", name, median(values));
    std::fflush(stdout);
}

// The figure below which `percent` per cent of the runs lie (the slowest run at 100).
inline void reportPercentile(const char *name, QVector<double> values, int percent)
{
    if (values.isEmpty())
        return;
    std::sort(values.begin(), values.end());
    const int index = qMin(values.size() - 1, values.size() * percent / 100);
    std::printf("%s %.3f\n", name, values.at(index));
    std::fflush(stdout);
}

} // namespace bench
