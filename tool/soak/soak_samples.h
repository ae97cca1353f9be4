// What an endurance run measures, and the rule that says whether something grows. Pure; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simhost::tool {

/// One moment at which the host holds nothing of the plug-in: every clip is closed.
struct SoakSample {
    double seconds = 0.0;            ///< since the start
    std::uint64_t handles = 0;       ///< of the process
    std::uint64_t privateBytes = 0;  ///<
    std::uint64_t workingSet = 0;    ///<
    std::uint64_t heapBytes = 0;     ///< allocated
    std::uint64_t busyHandles = 0;   ///< in the middle of the work before
    std::uint64_t busyBytes = 0;     ///< private bytes there
    std::uint64_t hostObjects = 0;   ///< frames and memory blocks of the host that the plug-in holds
    std::uint64_t hostSuites = 0;    ///< references to suites of the host that the plug-in holds
    std::int64_t codecSessions = 0;  ///< sessions and initialisations of the codec library that are open
    std::uint64_t opens = 0;         ///< clips opened so far
    std::uint64_t frames = 0;        ///< frames delivered so far, both ways
    std::uint64_t sampleFrames = 0;  ///< sample frames delivered so far
};

struct Growth {
    bool judged = false;  ///< there were enough samples
    double before = 0.0;  ///< behind the warm-up
    double after = 0.0;   ///< with the steps that count on top
    double limit = 0.0;   ///< how much `after` may be above `before`
    bool grows = false;
};

/// What leaks grows in small steps all the time; what warms up grows in jumps whenever more is in use at once
/// than ever before: the system's pool starts threads, heaps take mebibytes. So the first fifth of the values
/// does not count, and of the steps behind it neither the largest nor the smallest tenth, at least two of
/// each. The others must make more than `slack` plus `share` of the beginning, and go on in both halves.
/// Fewer than kFewestSamples values are not judged.
Growth judgeGrowth(const std::vector<double>& values, double slack, double share);

inline constexpr std::size_t kFewestSamples = 12;

/// Frames behind the warm-up by which a leak of 64 bytes a frame is seen; without them the heap is not
/// judged.
inline constexpr std::uint64_t kFewestFrames = 3000;

struct SoakVerdict {
    Growth handles;
    Growth heap;
    Growth memory;
    bool restBalanced =
        true;  ///< the plug-in held nothing but its suites in any sample, and those did not change
    bool good() const noexcept { return !handles.grows && !heap.grows && !memory.grows && restBalanced; }
    /// There was enough to say that nothing grows.
    bool judged() const noexcept { return handles.judged && heap.judged && memory.judged; }
};

/// Handles may grow by 24 plus 2 % (a few threads of the system's pool more or less), what is allocated by 96
/// KiB, private bytes by 2 MiB plus 3 %.
SoakVerdict judgeSamples(const std::vector<SoakSample>& samples);

/// One line for each thing that is wrong; empty when all is good.
std::string verdictText(const SoakVerdict& verdict);

/// Lines of a table for reading, and the line above them.
std::string soakTableHead();
std::string soakTableRow(const SoakSample& sample);

}  // namespace simhost::tool
