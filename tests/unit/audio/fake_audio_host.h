// A host that has the audio suite only, or not even that. Its converters keep what they are given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/std_parms.h"
#include "host/suites.h"

namespace orvantis::audio_test {

struct ConverterCall {
    unsigned bits;
    float** destination;
    std::uint32_t channels;
    std::uint32_t frames;
    std::vector<std::uint8_t> source;  ///< frames * channels * bits / 8 bytes
};

/// One at a time: the host's functions carry no context.
class FakeAudioHost {
 public:
    FakeAudioHost();
    ~FakeAudioHost();
    FakeAudioHost(const FakeAudioHost&) = delete;
    FakeAudioHost& operator=(const FakeAudioHost&) = delete;

    const host::SPBasicSuite* basicSuite() const { return &m_basicSuite; }

    bool refuseAudioSuite = false;
    bool keepCalls = true;  ///< off where a test counts allocations
    host::prSuiteError result = 0;
    std::vector<ConverterCall> calls;
    int audioSuiteRequests = 0;

 private:
    host::SPBasicSuite m_basicSuite{};
};

/// What the fake host makes of one signed sample of `bits` bits: v / 2^(bits - 1).
float convertedSample(const std::uint8_t* sample, unsigned bits);

}  // namespace orvantis::audio_test
