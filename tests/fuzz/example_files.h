// Small honest AVI files of the structures that the reader knows, for the tests of the mutator.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "tests/support/avi_builder/avi_builder.h"

namespace fuzz {

inline orvantis::test::AviBuilder exampleBuilder(orvantis::test::OpenDml kind) {
    orvantis::test::AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 8, 25, 1))
        .addStream(orvantis::test::pcmStream(2, 8000, 16));
    for (std::uint8_t i = 0; i < 5; ++i) {
        avi.addFilledChunk(0, 40U + i, static_cast<std::uint8_t>(10 + i)).addFilledChunk(1, 32, i);
    }
    return avi.openDml(kind);
}

inline std::vector<orvantis::test::Bytes> exampleFiles() {
    using orvantis::test::OpenDml;
    return {
        exampleBuilder(OpenDml::kNone).build(), exampleBuilder(OpenDml::kNone).chunksPerRecList(2).build(),
        exampleBuilder(OpenDml::kStandardIndex).build(),
        exampleBuilder(OpenDml::kSuperIndex).chunksPerForm(4).entriesPerStandardIndex(2).junk(40).build()};
}

}  // namespace fuzz
