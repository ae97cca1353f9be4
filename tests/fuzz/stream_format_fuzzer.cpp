// Analyses one stream whose header and format are the input: as video with the codec library, as sound with
// requests at places that the input names. No answer but the documented ones, no byte outside a buffer.
#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

#include "audio/audio_info.h"
#include "avi/avi_stream.h"
#include "avi/chunk_list_builder.h"
#include "diag/log.h"
#include "host/audio_codes.h"
#include "host/result_codes.h"
#include "simhost/host.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/memory_bound.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/support/environment.h"
#include "tests/support/memory_file.h"
#include "video/format_tables.h"
#include "video/video_info.h"

namespace {

using orvantis::AviStream;
using orvantis::LazyImporterSuites;

constexpr float kUntouched = -12345.0F;

struct World {
    World() {
        orvantis::test::setEnvironment("ORVANTIS_TEST_LOG_SWITCH", "1");
        orvantis::test::unsetEnvironment("ORVANTIS_TEST_PROFILE");
        orvantis::readLogSwitch();
        orvantis::buildFormatTables(host.basicSuite());
    }
    simhost::Host host{simhost::defaultProfile(), [] {
                           simhost::HostOptions options;
                           options.keepTrace = false;
                           return options;
                       }()};
};

void video(World& world, const AviStream& stream, std::int64_t time) {
    LazyImporterSuites suites(world.host.basicSuite());
    orvantis::VideoInfo info(suites);
    const host::ImporterResult result = info.analyseFormat(stream);
    FUZZ_CHECK(result == host::ImporterResult::imNoErr || result == host::ImporterResult::imBadFile ||
               result == host::ImporterResult::imOtherErr);
    if (result != host::ImporterResult::imNoErr) {
        return;
    }
    info.analyseTiming();
    FUZZ_CHECK(info.width() > 0 && info.height() > 0);
    FUZZ_CHECK(info.numFrames() == static_cast<std::int64_t>(stream.entries().size()));
    FUZZ_CHECK(!info.decodeFormats().empty());
    FUZZ_CHECK(!info.description().empty());
    static_cast<void>(info.hasAlpha());
    const std::uint32_t index = info.frameIndexAt(time);
    FUZZ_CHECK(index == orvantis::frameIndexOfTime(time, info.frameRate(), info.ticksPerSecond()));
}

// Channels of exactly the requested length, each in a block of its own.
void request(orvantis::AudioInfo& info, std::int64_t position, std::uint32_t size, bool missingOne) {
    const std::uint32_t channels = info.format().nChannels;
    std::vector<std::vector<float>> samples(channels);
    std::vector<float*> buffers;
    for (std::vector<float>& channel : samples) {
        channel.assign(size, kUntouched);
        channel.shrink_to_fit();
        buffers.push_back(channel.data());
    }
    if (missingOne && !buffers.empty()) {
        buffers.front() = nullptr;
    }
    host::imImportAudioRec7 record{};
    record.position = position;
    record.size = size;
    record.buffer = buffers.data();
    const host::ImporterResult result = info.importAudio(record);
    FUZZ_CHECK(result == host::ImporterResult::imNoErr ||
               result == host::ImporterResult::imDecompressionError);
    if (result != host::ImporterResult::imNoErr || !info.valid()) {
        return;
    }
    for (std::size_t c = missingOne ? 1 : 0; c < samples.size(); ++c) {
        FUZZ_CHECK(std::find(samples[c].begin(), samples[c].end(), kUntouched) == samples[c].end());
    }
}

void sound(World& world, const AviStream& stream, orvantis::test::MemoryFile& file, fuzz::Numbers& numbers) {
    LazyImporterSuites suites(world.host.basicSuite());
    std::mutex filePosition;
    orvantis::AudioInfo info(orvantis::AudioOwner{&file, &filePosition, &suites});
    const host::ImporterResult result = info.init(stream);
    FUZZ_CHECK(result == host::ImporterResult::imNoErr || result == host::ImporterResult::imBadFile);
    FUZZ_CHECK(info.valid() == (result == host::ImporterResult::imNoErr));
    FUZZ_CHECK(!info.description().empty());
    host::imFileInfoRec8 record;
    std::memset(&record, 0xA7, sizeof(record));
    info.fillFileInfo(record);
    FUZZ_CHECK(static_cast<std::uint8_t>(record.hasAudio) == 0xA7);
    host::imGetAudioChannelLayoutRec layout;
    std::memset(&layout, 0xA7, sizeof(layout));
    const host::ImporterResult labelled = info.getChannelLayout(layout);
    FUZZ_CHECK(labelled ==
               (info.valid() ? host::ImporterResult::imNoErr : host::ImporterResult::imUnsupported));
    if (!info.valid()) {
        return;
    }
    for (int i = 0; i < 3; ++i) {
        const auto position = numbers.take<std::int64_t>();
        // Up to where 65,535 bytes a sample frame come to more than 32 bits, as long as what is left is
        // small.
        const std::uint32_t size = numbers.take<std::uint32_t>() % 70'000;
        const std::uint32_t bytes = info.format().nBlockAlign * size;
        const std::uint64_t floats = std::uint64_t{info.format().nChannels} * size;
        if (bytes > 500'000 || floats > 140'000) {
            continue;
        }
        request(info, position, size, (size & 1) != 0);
        request(info, -1, std::min<std::uint32_t>(size, 10), false);
    }
}

// A chunk list over the file, some chunks empty, some beyond its end; the sums as the reader makes them.
void layOut(AviStream& stream, fuzz::Numbers& numbers, unsigned count) {
    orvantis::ChunkListBuilder list;
    for (unsigned i = 0; i < count; ++i) {
        const std::uint64_t offset = numbers.take<std::uint16_t>();
        const std::uint32_t bytes = numbers.take<std::uint16_t>();
        list.add(offset, 0, bytes, (i & 1) == 0);
    }
    stream.legacyEntries = list.finish();
}

}  // namespace

// The input: a byte with the number of chunks, 28 bytes of chunks, 64 of places to ask for, 56 of stream
// header, then the format.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static World world;
    static orvantis::test::MemoryFile file(std::vector<std::byte>(40'000, std::byte{0x5A}));
    fuzz::Numbers numbers(data, size);
    const unsigned chunks = numbers.take<std::uint8_t>() % 8U;
    const auto lengths = numbers.takeBytes(28);
    const auto places = numbers.takeBytes(64);
    const auto header = numbers.takeBytes(sizeof(orvantis::AviStreamHeader));
    const auto format = numbers.rest();

    AviStream stream(0);
    if (!header.empty()) {
        std::memcpy(&stream.header, header.data(), header.size());
    }
    stream.format.assign(format.begin(), format.end());
    fuzz::Numbers list(lengths.data(), lengths.size());
    layOut(stream, list, chunks);

    fuzz::Numbers asked(places.data(), places.size());
    orvantis::test::startCounting();
    video(world, stream, asked.take<std::int64_t>());
    sound(world, stream, file, asked);
    FUZZ_CHECK(orvantis::test::counted().peak <= fuzz::memoryBound(size));
    FUZZ_CHECK(world.host.isClean());
    return 0;
}
