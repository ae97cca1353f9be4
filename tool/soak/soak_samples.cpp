#include "tool/soak/soak_samples.h"

#include <algorithm>
#include <cstdio>

namespace simhost::tool {
namespace {

constexpr double kMebibyte = 1024.0 * 1024.0;

double mebibytes(std::uint64_t bytes) {
    return static_cast<double>(bytes) / kMebibyte;
}

void appendGrowth(std::string& out, const char* what, const Growth& growth, double unit,
                  const char* unitName) {
    if (!growth.grows) {
        return;
    }
    const int digits = growth.limit < unit ? 2 : 1;
    char line[160];
    (void)std::snprintf(line, sizeof line, "%s grow: from %.*f to %.*f%s, %.*f%s more are allowed\n", what,
                        digits, growth.before / unit, digits, growth.after / unit, unitName, digits,
                        growth.limit / unit, unitName);
    out += line;
}

}  // namespace

Growth judgeGrowth(const std::vector<double>& values, double slack, double share) {
    Growth out;
    if (values.size() < kFewestSamples) {
        return out;
    }
    struct Step {
        std::size_t at;
        double size;
    };
    std::vector<Step> steps;
    for (std::size_t i = values.size() / 5 + 1; i < values.size(); ++i) {
        steps.push_back({i, values[i] - values[i - 1]});
    }
    const std::size_t middle = steps[steps.size() / 2].at;
    const auto leftOut = static_cast<std::ptrdiff_t>(std::max<std::size_t>(2, steps.size() / 10));
    std::sort(steps.begin(), steps.end(), [](const Step& a, const Step& b) { return a.size < b.size; });
    double early = 0;
    double late = 0;
    for (auto step = steps.begin() + leftOut; step < steps.end() - leftOut; ++step) {
        (step->at < middle ? early : late) += step->size;
    }
    out.judged = true;
    out.before = values[values.size() / 5];
    out.after = out.before + early + late;
    out.limit = slack + share * out.before;
    out.grows = early + late > out.limit && std::min(early, late) > out.limit / 4;
    return out;
}

SoakVerdict judgeSamples(const std::vector<SoakSample>& samples) {
    std::vector<double> handles;
    std::vector<double> bytes;
    std::vector<double> heap;
    SoakVerdict out;
    for (const SoakSample& sample : samples) {
        handles.push_back(static_cast<double>(sample.handles));
        bytes.push_back(static_cast<double>(sample.privateBytes));
        heap.push_back(static_cast<double>(sample.heapBytes));
        out.restBalanced = out.restBalanced && sample.hostObjects == 0 && sample.codecSessions == 0 &&
                           sample.hostSuites == samples.front().hostSuites;
    }
    out.handles = judgeGrowth(handles, 24.0, 0.02);
    out.heap = judgeGrowth(heap, 96.0 * 1024.0, 0.0);
    out.memory = judgeGrowth(bytes, 2.0 * kMebibyte, 0.03);
    const std::uint64_t frames =
        samples.empty() ? 0 : samples.back().frames - samples[samples.size() / 5].frames;
    out.heap.judged = out.heap.grows || (out.heap.judged && frames >= kFewestFrames);
    return out;
}

std::string verdictText(const SoakVerdict& verdict) {
    std::string out;
    appendGrowth(out, "handles", verdict.handles, 1.0, "");
    appendGrowth(out, "allocated bytes", verdict.heap, kMebibyte, " MiB");
    appendGrowth(out, "private bytes", verdict.memory, kMebibyte, " MiB");
    if (!verdict.restBalanced) {
        out += "with every clip closed the plug-in held frames, memory, suites or codec sessions\n";
    }
    return out;
}

std::string soakTableHead() {
    return "  time s  handles  (busy)  private MiB   (busy)  working MiB   heap MiB  host objects  suites  "
           "codec     "
           "opens"
           "     frames  sample frames\n";
}

std::string soakTableRow(const SoakSample& sample) {
    char line[200];
    (void)std::snprintf(
        line, sizeof line,
        "%8.1f %8llu %7llu %12.2f %8.2f %12.2f %10.3f %13llu %7llu %6lld %9llu %10llu %14llu\n",
        sample.seconds, static_cast<unsigned long long>(sample.handles),
        static_cast<unsigned long long>(sample.busyHandles), mebibytes(sample.privateBytes),
        mebibytes(sample.busyBytes), mebibytes(sample.workingSet), mebibytes(sample.heapBytes),
        static_cast<unsigned long long>(sample.hostObjects),
        static_cast<unsigned long long>(sample.hostSuites), static_cast<long long>(sample.codecSessions),
        static_cast<unsigned long long>(sample.opens), static_cast<unsigned long long>(sample.frames),
        static_cast<unsigned long long>(sample.sampleFrames));
    return line;
}

}  // namespace simhost::tool
