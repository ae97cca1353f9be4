// Frames with pixels of the test's choice, without a plug-in.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>

#include "host/suites.h"
#include "simhost/frame.h"
#include "simhost/host.h"

namespace simhost::test {

/// A frame of the living host in which `paint` has written each row, counted from the top of the picture.
inline Frame madeFrame(Host& sim, std::uint32_t format, std::int32_t width, std::int32_t height,
                       const std::function<void(std::int32_t y, std::uint8_t* row)>& paint) {
    const void* table = nullptr;
    (void)sim.basicSuite()->AcquireSuite(host::kPPixCreatorSuiteName, host::kPPixCreatorSuiteVersion, &table);
    host::PPixHand handle = nullptr;
    const host::prRect bounds{0, 0, width, height};
    (void)static_cast<const host::PPixCreatorSuite*>(table)->CreatePPix(&handle, host::kBufferAccessWriteOnly,
                                                                        format, &bounds);
    (void)sim.basicSuite()->ReleaseSuite(host::kPPixCreatorSuiteName, host::kPPixCreatorSuiteVersion);
    auto buffer = sim.takeDelivered(handle);
    const bool topLeft = buffer->layout().topLeft;
    for (std::int32_t y = 0; y < height; ++y) {
        const std::int32_t line = topLeft ? y : height - 1 - y;
        paint(y, buffer->pixels() + std::ptrdiff_t{line} * buffer->rowBytes());
    }
    return Frame(sim, std::move(buffer), topLeft);
}

}  // namespace simhost::test
