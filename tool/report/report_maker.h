// Collects what a report tells of a file: from the file itself, and from the plug-in as its host would ask
// it. Main thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tool/report/report_page.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/run/hosted_run.h"

namespace simhost::tool {

/// What the file tells without the plug-in. Throws ToolError when it cannot be read.
Report reportOnFile(const std::string& pathUtf8);

/// Frames of a page on which the user wishes for no certain number.
inline constexpr std::uint32_t kUsualFrames = 24;
/// Samples of all channels and tracks that are read for one page: a quarter of an hour of stereo. Of more
/// sound stretches are read, evenly spread, so that hours of it take no longer.
inline constexpr std::uint64_t kMostReportSamples = 96'000'000;

/// How much work there is ahead, as Progress counts it: frames to show and blocks of sound to read.
std::uint64_t stepsOf(const Report& report, std::optional<std::uint32_t> frames);

/// What the plug-in tells of the pictures: description, and so many of them spread over the clip; without a
/// number kUsualFrames, but of large ones no more than framesWorthShowing(), whatever the file claims them to
/// be. Throws ToolError when it refuses the file; what was learned until then stays in `out`.
void addPictures(const HostedRun& hosted, std::optional<std::uint32_t> frames, Progress& progress,
                 Report& out);

/// The same for the sound, which is read up to the end of the file's data, whatever length its header tells,
/// and no more of it than kMostReportSamples.
void addSounds(const HostedRun& hosted, Progress& progress, Report& out);

/// For the log of a run: describes the tracks of `report` again and reads the beginning of each and what
/// could not be read, but not all of the sound, which would be a line for every chunk of the file.
void repeatSounds(const HostedRun& hosted, const Report& report);

/// The log of the run among `logs`: the one in which this thread asked about the report's file. Gives its
/// path, empty when there is none.
std::string addLog(const std::vector<std::string>& logs, Report& out);

}  // namespace simhost::tool
