// One file that the host has open: what stands behind its private data.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "call_gate.h"
#include "held_suite.h"
#include "host/suites.h"
#include "plain_clip.h"

namespace sample {

struct Clip {
    explicit Clip(const host::SPBasicSuite* basic)
        : creator(basic, host::kPPixCreatorSuiteName, host::kPPixCreatorSuiteVersion),
          ppix(basic, host::kPPixSuiteName, host::kPPixSuiteVersion),
          time(basic, host::kTimeSuiteName, host::kTimeSuiteVersion),
          images(basic, host::kImageProcessingSuiteName, host::kImageProcessingSuiteVersion) {}
    bool hasSuites() const { return creator && ppix && time && images; }

    CallGate calls;  ///< shared by the calls that read, alone for those that open and close
    InputFile file;
    PlainHeader header;
    std::atomic<std::int64_t> nextSample{0};  ///< where a request for sound goes on that names no position
    const HeldSuite<host::PPixCreatorSuite> creator;
    const HeldSuite<host::PPixSuite> ppix;
    const HeldSuite<host::TimeSuite> time;
    const HeldSuite<host::ImageProcessingSuite> images;
};

// The host names an open file by an address. With a list of them, an address that is not or no longer one of
// ours, or a call that comes while another thread closes the file, gets an answer instead of a crash.

void addClip(const std::shared_ptr<Clip>& clip);
/// The open file of that private data, kept alive by the result; null for anything else.
std::shared_ptr<Clip> findClip(const void* privateData);
void removeClip(const void* privateData);
void removeAllClips();

}  // namespace sample
