// The host's side of the suites that the plug-in uses, as function tables of the test program: answers what a
// test tells it to, counts what it hands out, and fails the test when a suite or a frame does not come back.
// One object at a time, since the host's functions carry no context, and one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/std_parms.h"
#include "host/suites.h"

namespace orvantis::test {

class FakeHost {
 public:
    FakeHost();
    /// Fails the test when a suite is still acquired or a frame neither disposed of nor taken.
    ~FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    const host::SPBasicSuite* basicSuite() const { return &m_basicSuite; }
    const host::PPixSuite& ppixSuite() const { return m_ppixSuite; }
    const host::ImageProcessingSuite& imageProcessingSuite() const { return m_imageProcessingSuite; }

    // Suites.
    std::set<std::string> refusedSuites;  ///< names that are answered with failure
    std::vector<std::string>
        suiteCalls;  ///< "+ name version", "- name version", "! name version" when refused
    /// How often a suite was asked for, refusals included.
    std::ptrdiff_t requestsFor(std::string_view suite) const;

    // Image processing: one answer and result for each question, in the order of the table's functions.
    enum Question { kCompressed, kAlpha, kTopLeft };
    struct AskedFormat {
        Question question;
        std::uint32_t pixelFormat;
        std::int32_t answerOnEntry;  ///< what stood in the place for the answer
        friend bool operator==(const AskedFormat&, const AskedFormat&) = default;
    };
    /// Unless set: nothing compressed or with alpha, and top row first as the real host has it.
    std::function<bool(Question, std::uint32_t pixelFormat)> answer;
    std::int32_t questionResults[3] = {0, 0, 0};  ///< with any other result the answer is left unwritten
    std::vector<AskedFormat> asked;

    // Time.
    std::int64_t ticksPerSecond = 254016000000;
    std::int32_t ticksResult = 0;    ///< with any other result nothing is written...
    bool writesTicksAnyway = false;  ///< ...unless this is set

    // Audio. The converters give convertedSample() of what they are given.
    struct ConverterCall {
        unsigned bits;
        float** destination;
        std::uint32_t channels;
        std::uint32_t frames;
        const void* from;                  ///< the address that was handed in
        std::vector<std::uint8_t> source;  ///< frames * channels * bits / 8 bytes
    };
    std::vector<ConverterCall> converterCalls;
    bool keepsConverterCalls = true;  ///< off where a test counts allocations
    std::int32_t converterResult = 0;

    // Frames.
    std::int32_t createResult = 0;
    bool createsNull = false;
    std::int32_t pixelsResult = 0;
    bool pixelsNull = false;
    std::int32_t rowBytesResult = 0;
    bool negativeRowBytes = false;  ///< rows run upwards from the pixel address
    std::int32_t padding = 16;      ///< bytes behind each row

    struct Frame {
        host::PPixContents* contents = nullptr;  ///< its address is the handle
        bool live = false;
        std::int32_t access = 0;
        std::uint32_t pixelFormat = 0;
        host::prRect bounds{};
        std::int32_t rowBytes = 0;
        std::vector<unsigned char> memory;
        char* pixels = nullptr;

        host::PPixHand handle() { return &contents; }
    };
    /// Fill byte of a new frame's memory.
    static constexpr unsigned char kPoison = 0xCD;

    Frame& frameOf(host::PPixHand handle);
    /// The test takes the frame over as the host would, and gives it back at once.
    void take(host::PPixHand handle);
    int created = 0;
    int disposed = 0;
    int liveFrames() const;
    std::vector<std::int32_t> pixelAccesses;  ///< access values of GetPixels; its room is kept

 private:
    static host::SPErr acquireSuite(const char* name, std::int32_t version, const void** suite);
    static host::SPErr releaseSuite(const char* name, std::int32_t version);
    static host::prSuiteError ask(Question question, std::uint32_t pixelFormat, std::int32_t* place);
    static host::prSuiteError createPPix(host::PPixHand* frame, std::int32_t access,
                                         std::uint32_t pixelFormat, const host::prRect* bounds);
    static host::prSuiteError dispose(host::PPixHand frame);
    static host::prSuiteError getPixels(host::PPixHand frame, std::int32_t access, char** pixels);
    static host::prSuiteError getRowBytes(host::PPixHand frame, std::int32_t* rowBytes);
    template <unsigned bits>
    static host::prSuiteError convert(const void* source, float** destination, std::uint32_t channels,
                                      std::uint32_t frames);
    static host::prSuiteError getTicksPerSecond(host::PrTime* ticks);

    host::SPBasicSuite m_basicSuite{};
    host::PPixCreatorSuite m_ppixCreatorSuite{};
    host::PPixCacheSuite m_ppixCacheSuite{};
    host::PPixSuite m_ppixSuite{};
    host::TimeSuite m_timeSuite{};
    host::ImageProcessingSuite m_imageProcessingSuite{};
    host::AudioSuite m_audioSuite{};
    std::vector<std::string> m_acquired;
    std::vector<std::unique_ptr<Frame>> m_frames;  ///< a frame given back is handed out again
};

/// What the fake host makes of one signed sample of `bits` bits: v / 2^(bits - 1).
float convertedSample(const std::uint8_t* sample, unsigned bits);

}  // namespace orvantis::test
