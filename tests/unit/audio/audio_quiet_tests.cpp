// Results are the same while the log is off.

#include <gtest/gtest.h>

#include <vector>

#include "audio/audio_info.h"
#include "avi/avi_stream.h"
#include "diag/log.h"
#include "host_record.h"
#include "wave_bytes.h"

namespace orvantis {
namespace {

using namespace audio_test;

class QuietAudioInfo : public testing::Test {
 protected:
    void SetUp() override { ASSERT_FALSE(logEnabled()); }
    std::int32_t analyse(const WaveBytes& wave) {
        stream.format = waveBytes(wave);
        stream.header.dwLength = 300;
        return numberOf(info.init(stream));
    }

    LazyImporterSuites suites{nullptr};
    AviStream stream{1};
    AudioInfo info{AudioOwner{nullptr, nullptr, &suites}};
};

TEST_F(QuietAudioInfo, ARejectionIsKeptForTheDescription) {
    EXPECT_EQ(analyse({.bits = 12}), 2);
    EXPECT_EQ(info.description(), "    Not usable: Avi unsupported audio bits per sample: 12");
}

TEST_F(QuietAudioInfo, TheRecordIsFilled) {
    ASSERT_EQ(analyse({.channels = 6, .rate = 96000, .bits = 24}), 0);
    HostRecord<host::imFileInfoRec8> record;
    info.fillFileInfo(*record);
    std::vector<std::uint8_t> expected(sizeof(host::imFileInfoRec8), kPattern);
    put(expected, 174, std::int32_t{6});
    put(expected, 178, 96000.0f);
    put(expected, 182, std::uint32_t{4});
    put(expected, 186, std::int64_t{300});
    EXPECT_EQ(record.bytes(), expected);
}

TEST_F(QuietAudioInfo, TheLabelsAreWritten) {
    ASSERT_EQ(analyse({.tag = kTagExtensible, .channels = 3, .mask = 0x60F}), 0);
    HostRecord<host::imGetAudioChannelLayoutRec> record;
    EXPECT_EQ(numberOf(info.getChannelLayout(*record)), 0);
    std::vector<std::uint8_t> expected(sizeof(host::imGetAudioChannelLayoutRec), kPattern);
    put(expected, 8, std::uint32_t{100});
    put(expected, 12, std::uint32_t{101});
    put(expected, 16, std::uint32_t{102});
    EXPECT_EQ(record.bytes(), expected);
}

}  // namespace
}  // namespace orvantis
