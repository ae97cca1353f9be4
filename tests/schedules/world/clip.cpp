#include "tests/schedules/world/clip.h"

#include "tests/support/avi_builder/avi_builder.h"

namespace schedules::world {

const std::vector<std::uint8_t>& clipBytes() {
    static const std::vector<std::uint8_t> bytes = [] {
        using namespace orvantis::test;
        AviBuilder avi;
        avi.addStream(videoStream("O8RG", kWidth, kHeight, 25, 1)).addStream(pcmStream(2, 48000, 16));
        for (std::uint32_t i = 0; i < kFrames; ++i) {
            avi.addFilledChunk(0, kChunkBytes, static_cast<std::uint8_t>(i));
            avi.addFilledChunk(1, kSoundChunkBytes, kSample & 0xFF);
        }
        return avi.build();
    }();
    return bytes;
}

}  // namespace schedules::world
