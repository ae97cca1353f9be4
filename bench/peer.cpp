#include "bench/peer.h"

#include <memory>
#include <stdexcept>

extern "C" {
#include <libavformat/avformat.h>
}

#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

namespace {
struct Closer {
    void operator()(AVFormatContext* context) const noexcept { avformat_close_input(&context); }
};
}  // namespace

double timePeerOpening(const std::string& path, std::uint32_t frames) {
    av_log_set_level(AV_LOG_QUIET);
    const double start = simhost::tool::benchClock();
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0) {
        throw std::runtime_error("the peer cannot open " + path);
    }
    const std::unique_ptr<AVFormatContext, Closer> context(opened);
    const bool described = avformat_find_stream_info(opened, nullptr) >= 0;
    const double seconds = simhost::tool::benchClock() - start;
    // A peer that gave up on the index would be no measure.
    if (!described || opened->nb_streams < 2 ||
        avformat_index_get_entries_count(opened->streams[0]) != static_cast<int>(frames)) {
        throw std::runtime_error("the peer did not read the index of " + path);
    }
    return seconds;
}

std::string peerName() {
    const unsigned version = avformat_version();
    return "libavformat " + std::to_string(AV_VERSION_MAJOR(version)) + "." +
           std::to_string(AV_VERSION_MINOR(version)) + "." + std::to_string(AV_VERSION_MICRO(version));
}

}  // namespace orvantis::bench
