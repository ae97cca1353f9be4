#include "tool/soak/soak_samples.h"

#include <algorithm>
#include <cstdio>

namespace simhost::tool {
namespace {

constexpr double kMebibyte = 1024.0 * 1024.0;

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2.0;
}

double mebibytes(std::uint64_t bytes) {
    return static_cast<double>(bytes) / kMebibyte;
}

void appendGrowth(std::string& out, const char* what, const Growth& growth, double unit,
                  const char* unitName) {
    if (!growth.grows) {
        return;
    }
    char line[160];
    (void)std::snprintf(line, sizeof line, "%s grow: from %.1f to %.1f%s, %.1f%s more are allowed\n", what,
                        growth.before / unit, growth.after / unit, unitName, growth.limit / unit, unitName);
    out += line;
}

}  // namespace

Growth judgeGrowth(const std::vector<double>& values, double slack, double share) {
    Growth out;
    if (values.size() < kFewestSamples) {
        return out;
    }
    const auto warm = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 5);
    const std::ptrdiff_t third = (values.end() - warm) / 3;
    out.judged = true;
    out.before = median({warm, warm + third});
    out.after = median({values.end() - third, values.end()});
    out.limit = slack + share * out.before;
    out.grows = out.after - out.before > out.limit;
    return out;
}

SoakVerdict judgeSamples(const std::vector<SoakSample>& samples) {
    std::vector<double> handles;
    std::vector<double> bytes;
    SoakVerdict out;
    for (const SoakSample& sample : samples) {
        handles.push_back(static_cast<double>(sample.handles));
        bytes.push_back(static_cast<double>(sample.privateBytes));
        out.restBalanced = out.restBalanced && sample.hostObjects == 0 && sample.codecSessions == 0 &&
                           sample.hostSuites == samples.front().hostSuites;
    }
    out.handles = judgeGrowth(handles, 24.0, 0.02);
    out.memory = judgeGrowth(bytes, 2.0 * kMebibyte, 0.03);
    return out;
}

std::string verdictText(const SoakVerdict& verdict) {
    std::string out;
    appendGrowth(out, "handles", verdict.handles, 1.0, "");
    appendGrowth(out, "private bytes", verdict.memory, kMebibyte, " MiB");
    if (!verdict.restBalanced) {
        out += "with every clip closed the plug-in held frames, memory, suites or codec sessions\n";
    }
    return out;
}

std::string soakTableHead() {
    return "  time s  handles  (busy)  private MiB   (busy)  working MiB  host objects  suites  codec     "
           "opens"
           "     frames  sample frames\n";
}

std::string soakTableRow(const SoakSample& sample) {
    char line[200];
    (void)std::snprintf(
        line, sizeof line, "%8.1f %8llu %7llu %12.2f %8.2f %12.2f %13llu %7llu %6lld %9llu %10llu %14llu\n",
        sample.seconds, static_cast<unsigned long long>(sample.handles),
        static_cast<unsigned long long>(sample.busyHandles), mebibytes(sample.privateBytes),
        mebibytes(sample.busyBytes), mebibytes(sample.workingSet),
        static_cast<unsigned long long>(sample.hostObjects),
        static_cast<unsigned long long>(sample.hostSuites), static_cast<long long>(sample.codecSessions),
        static_cast<unsigned long long>(sample.opens), static_cast<unsigned long long>(sample.frames),
        static_cast<unsigned long long>(sample.sampleFrames));
    return line;
}

}  // namespace simhost::tool
