#include "fake_audio_host.h"

#include <cmath>
#include <cstring>
#include <string_view>

namespace orvantis::audio_test {

namespace {

FakeAudioHost* current = nullptr;

template <unsigned bits>
host::prSuiteError convert(const void* source, float** destination, std::uint32_t channels,
                           std::uint32_t frames) {
    constexpr std::size_t kSampleBytes = bits / 8;
    const auto* const bytes = static_cast<const std::uint8_t*>(source);
    for (std::uint32_t f = 0; f < frames; ++f) {
        for (std::uint32_t c = 0; c < channels; ++c) {
            const std::size_t sample = std::size_t{f} * channels + c;
            destination[c][f] = convertedSample(bytes + sample * kSampleBytes, bits);
        }
    }
    if (current->keepCalls) {
        const std::size_t count = std::size_t{frames} * channels * kSampleBytes;
        current->calls.push_back({bits, destination, channels, frames, {bytes, bytes + count}});
    }
    return current->result;
}

constexpr host::AudioSuite kAudioSuite = {
    nullptr, nullptr, nullptr, nullptr, convert<8>, convert<16>, convert<24>, convert<32>,
};

host::SPErr acquireSuite(const char* name, std::int32_t version, const void** suite) {
    if (std::string_view(name) != "Premiere Audio Suite") return 1;
    ++current->audioSuiteRequests;
    if (version != 1 || current->refuseAudioSuite) return 1;
    *suite = &kAudioSuite;
    return 0;
}

host::SPErr releaseSuite(const char*, std::int32_t) {
    return 0;
}

}  // namespace

FakeAudioHost::FakeAudioHost() {
    m_basicSuite.AcquireSuite = acquireSuite;
    m_basicSuite.ReleaseSuite = releaseSuite;
    current = this;
}

FakeAudioHost::~FakeAudioHost() {
    current = nullptr;
}

float convertedSample(const std::uint8_t* sample, unsigned bits) {
    // The sample's bytes become the highest ones of a signed word.
    const std::size_t sampleBytes = bits / 8;
    std::int32_t value = 0;
    std::memcpy(reinterpret_cast<std::uint8_t*>(&value) + (4 - sampleBytes), sample, sampleBytes);
    return static_cast<float>(std::ldexp(static_cast<double>(value), -31));
}

}  // namespace orvantis::audio_test
