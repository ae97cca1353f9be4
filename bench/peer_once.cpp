// peer_once CLIP FRAMES: the first opening of a clip by the peer in a new process. Prints seconds.
#include <cstdio>
#include <exception>
#include <string>

#include "bench/peer.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        (void)std::fprintf(stderr, "usage: peer_once CLIP FRAMES\n");
        return 2;
    }
    try {
        const auto frames = static_cast<std::uint32_t>(std::stoul(argv[2]));
        std::printf("%.9f\n", orvantis::bench::timePeerOpening(argv[1], frames));
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "peer_once: %s\n", error.what());
        return 1;
    }
    return 0;
}
