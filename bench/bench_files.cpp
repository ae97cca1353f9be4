#include "bench/bench_files.h"

namespace orvantis::bench {

namespace {

const SparseAudio kStereo16{2, 16, false};
const SparseAudio kFloat8{8, 32, true};

SparseAviPlan indexed(std::uint32_t frames, IndexForm index) {
    SparseAviPlan plan;
    plan.frames = frames;
    plan.audio = {kStereo16};
    plan.index = index;
    return plan;
}

SparseAviPlan sound(const SparseAudio& audio) {
    SparseAviPlan plan;
    plan.framesPerSecond = 25;
    plan.frames = 25 * 30;
    plan.audio = {audio};
    return plan;
}

SparseAviPlan pictures(std::uint32_t frames, std::uint32_t frameBytes) {
    SparseAviPlan plan;
    plan.frames = frames;
    plan.frameBytes = frameBytes;
    return plan;
}

}  // namespace

std::string scalingFile(std::uint32_t frames) {
    return "opendml-" + std::to_string(frames) + ".avi";
}

std::vector<BenchFile> benchFiles() {
    constexpr std::uint32_t kMillion = 1'000'000;
    std::vector<BenchFile> files = {
        {"calls.avi", pictures(2000, 2048)},
        {"chunks-2m.avi", pictures(48, 2 * 1024 * 1024)},
        {"ahead.avi", pictures(40, 12 * 1024 * 1024)},
        {"sound-16x2.avi", sound(kStereo16)},
        {"sound-float-8.avi", sound(kFloat8)},
        {"idx1-1000000.avi", indexed(kMillion, IndexForm::kIdx1)},
        {"foreign-1000000.avi", indexed(kMillion, IndexForm::kIdx1)},
        {scalingFile(1), indexed(1, IndexForm::kOpenDml)},
        {"idx1-1.avi", indexed(1, IndexForm::kIdx1)},
        {"opendml-20000.avi", indexed(20'000, IndexForm::kOpenDml)},
    };
    files[6].plan.codec = "MJPG";
    for (const std::uint32_t frames : kScalingFrames) {
        files.push_back({scalingFile(frames), indexed(frames, IndexForm::kOpenDml)});
    }
    return files;
}

}  // namespace orvantis::bench
