// Writes the inputs that the fuzzers start from: make_seeds FOLDER makes FOLDER/<target>/<name>. Small files
// of every structure that the reader knows, and each of its lies; nothing random.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/integration/plugin_clips.h"
#include "tests/support/avi_builder/avi_builder.h"

namespace {

namespace fs = std::filesystem;
using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using orvantis::test::OpenDml;
using orvantis::test::RiffBuilder;

fs::path g_folder;
int g_failures = 0;

void put(const char* target, const std::string& name, const Bytes& bytes) {
    fs::create_directories(g_folder / target);
    std::ofstream file(g_folder / target / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file) {
        std::fprintf(stderr, "cannot write %s/%s\n", target, name.c_str());
        ++g_failures;
    }
}

void putFile(const std::string& name, const Bytes& bytes) {
    put("parse_fuzzer", name, bytes);
    put("session_fuzzer", name, bytes);
    put("rescue_fuzzer", name, bytes);
}

AviBuilder clip(OpenDml kind = OpenDml::kNone, std::uint32_t audioStreams = 1) {
    clips::Shape shape;
    shape.frames = 3;
    shape.audioStreams = audioStreams;
    shape.openDml = kind;
    return clips::builder(shape);
}

void honestFiles() {
    putFile("plain", clip().build());
    putFile("standard-index", clip(OpenDml::kStandardIndex).build());
    putFile("super-index", clip(OpenDml::kSuperIndex).build());
    putFile("super-index-only", clip(OpenDml::kSuperIndex).idx1(false).build());
    putFile("forms", clip(OpenDml::kSuperIndex).chunksPerForm(2).entriesPerStandardIndex(1).build());
    putFile("rec-lists", clip().chunksPerRecList(2).build());
    putFile("absolute-offsets", clip().absoluteIdx1Offsets(true).build());
    putFile("no-index", clip().idx1(false).build());
    putFile("number-first", clip(OpenDml::kSuperIndex).indexNumberFirst(true).junk(40).build());
    putFile("three-sounds", clip(OpenDml::kSuperIndex, 3).build());
    AviBuilder empty = clip();
    for (int i = 0; i < 4; ++i) {
        empty.addChunk(0, {}).addChunk(1, {});
    }
    putFile("empty-chunks", empty.addChunk(0, clips::codedPicture(7)).build());
    AviBuilder none;
    none.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    putFile("no-frames", none.build());
    AviBuilder sound;
    sound.addStream(orvantis::test::extensibleStream(6, 48000, 24, 1, 0x3F));
    putFile("sound-only", sound.addFilledChunk(0, 180, 3).build());
    for (const char* tag :
         {"O8RA", "O8RG", "O8YA", "O8Y4", "O8Y0", "O8G0", "O0RG", "O0Y2", "O2RA", "O4RG", "XVID"}) {
        AviBuilder other;
        other.addStream(orvantis::test::videoStream(tag, 5, 3, 30000, 1001));
        putFile(std::string("tag-") + tag,
                other.addFilledChunk(0, 15 * 8, 100).addFilledChunk(0, 10, 9).build());
    }
    for (const std::uint16_t bits : {std::uint16_t{8}, std::uint16_t{24}, std::uint16_t{32}}) {
        AviBuilder wave = clip();
        wave.addStream(orvantis::test::pcmStream(1, 8000, bits)).addFilledChunk(2, 120, 0x85);
        putFile("pcm-" + std::to_string(bits), wave.build());
    }
    AviBuilder floats = clip();
    floats.addStream(orvantis::test::extensibleStream(2, 44100, 32, 3, 3)).addFilledChunk(2, 80, 0x3F);
    putFile("float", floats.build());
}

void patch(Bytes& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes.at(at + i) = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

void lyingFiles() {
    for (const std::uint32_t size : {0U, 1U, 0x7FFFFFF0U, 0xFFFFFFF7U, 0xFFFFFFFFU}) {
        const std::string suffix = "-" + std::to_string(size);
        AviBuilder avi = clip(OpenDml::kSuperIndex);
        const Bytes bytes = avi.build();
        const std::pair<const char*, std::uint64_t> places[] = {
            {"riff", 0},
            {"hdrl", 12},
            {"strl", avi.strlOffset(0)},
            {"movi", avi.moviOffset()},
            {"idx1", avi.idx1Offset()},
            {"indx", avi.indxOffset(0)},
            {"indx-count", avi.indxOffset(0) + 8}};  // wLongsPerEntry lies 8 behind, nEntriesInUse 12
        for (const auto& [name, at] : places) {
            Bytes lie = bytes;
            patch(lie, static_cast<std::size_t>(at) + 4, size);
            putFile(std::string("size-") + name + suffix, lie);
        }
        Bytes frame = bytes;
        patch(frame, static_cast<std::size_t>(avi.idx1Offset()) + 8 + 12, size);
        putFile("size-frame" + suffix, frame);
    }
}

RiffBuilder& openHeaders(RiffBuilder& riff) {
    return riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
}

RiffBuilder& openStream(RiffBuilder& riff) {
    return riff.beginList("LIST", "strl")
        .begin("strh")
        .code("vids")
        .fill(16)
        .u32(1)
        .u32(25)
        .fill(28)
        .end()
        .chunk("strf", orvantis::test::videoStream("O8Y2", 16, 4, 25, 1).format);
}

void oddStructures() {
    RiffBuilder nested;
    openHeaders(nested);
    for (int i = 0; i < 70; ++i) {
        nested.beginList("LIST", "strl");
    }
    putFile("nested-lists", nested.take());

    RiffBuilder overlapping;
    openHeaders(overlapping);
    for (int i = 0; i < 20; ++i) {
        overlapping.code("LIST").u32(0xFFFFFFFF).code("strl").u32(4).u32(0);
    }
    putFile("overlapping-lists", overlapping.take());

    // A super index that names itself, and one that names another eight deep.
    RiffBuilder itself;
    openStream(openHeaders(itself)).begin("indx");
    const std::uint64_t self = itself.position() - 8;
    itself.u16(4).u8(0).u8(0).u32(2).code("00dc").u64(0).u32(0);
    itself.u64(self).u32(64).u32(1).u64(self).u32(64).u32(1);
    putFile("index-of-itself", itself.take());

    RiffBuilder chain;
    openStream(openHeaders(chain));
    for (int i = 0; i < 10; ++i) {
        chain.begin("indx").u16(4).u8(0).u8(0).u32(1).code("00dc").u64(0).u32(0);
        chain.u64(chain.position() + 16).u32(48).u32(1).end();
    }
    chain.begin("ix00").u16(2).u8(0).u8(1).u32(1).code("00dc").u64(0).u32(0).u32(0).u32(16).end();
    putFile("index-chain", chain.take());

    for (const unsigned kind : {1U, 2U, 0x80U, 0xFFU}) {
        RiffBuilder odd;
        openStream(openHeaders(odd))
            .begin("indx")
            .u16(kind == 2 ? 0 : 3)
            .u8(1)
            .u8(static_cast<std::uint8_t>(kind))
            .u32(5);
        odd.code("00dc").u64(0).u32(0).fill(40).end();
        putFile("index-kind-" + std::to_string(kind), odd.take());
    }
}

// The layout that stream_format_fuzzer.cpp reads.
void streamFormats() {
    using orvantis::test::StreamPlan;
    const auto putFormat = [](const std::string& name, const StreamPlan& plan, std::uint32_t size) {
        RiffBuilder out;
        out.u8(3);
        for (int i = 0; i < 7; ++i) {
            out.u16(static_cast<std::uint16_t>(i * 200)).u16(i == 1 ? 0 : 200);
        }
        for (int i = 0; i < 5; ++i) {
            out.u64(static_cast<std::uint64_t>(i) * 25).u32(size);
        }
        out.u32(0);
        out.u32(plan.type)
            .u32(plan.handler)
            .fill(12)
            .u32(plan.scale)
            .u32(plan.rate)
            .u32(0)
            .u32(1000)
            .fill(20);
        out.bytes(plan.format);
        put("stream_format_fuzzer", name, out.take());
    };
    for (const char* tag : {"O8RA", "O8RG", "O8YA", "O8Y4", "O8Y2", "O8Y0", "O8G0", "O0RA", "O0RG", "O0Y4",
                            "O0Y2", "O0Y0", "O0G0", "O2RA", "O2RG", "O4RA", "O4RG", "XVID"}) {
        putFormat(tag, orvantis::test::videoStream(tag, 720, 577, 30000, 1001), 30);
    }
    constexpr std::uint16_t kBits[] = {0, 8, 12, 16, 24, 32, 64};
    constexpr std::uint16_t kChannels[] = {0, 1, 2, 6, 8};
    for (const std::uint16_t bits : kBits) {
        for (const std::uint16_t channels : kChannels) {
            const std::string name = std::to_string(bits) + "x" + std::to_string(channels);
            putFormat("pcm-" + name, orvantis::test::pcmStream(channels, 48000, bits), 50);
            putFormat("float-" + name, orvantis::test::extensibleStream(channels, 48000, bits, 3, 0x3F), 50);
            putFormat("ext-" + name, orvantis::test::extensibleStream(channels, 48000, bits, 1, 0xFFFFFFFF),
                      69'999);
        }
    }
}

void frameRates() {
    constexpr std::uint32_t kNumbers[] = {0,     1,     24,         25,         1000,      1001,
                                          24000, 30000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    int number = 0;
    for (const std::uint32_t rate : kNumbers) {
        for (const std::uint32_t scale : {0U, 1U, 1001U, 0x80000000U, 0xFFFFFFFFU}) {
            RiffBuilder out;
            out.u32(rate).u32(scale).u64(254016000000ULL * 7 / 25).u64(254016000000ULL).u64(rate * 3ULL);
            put("frame_rate_fuzzer", "rate-" + std::to_string(number++), out.take());
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: make_seeds FOLDER\n");
        return 2;
    }
    g_folder = arguments[1];
    honestFiles();
    lyingFiles();
    oddStructures();
    streamFormats();
    frameRates();
    return g_failures == 0 ? 0 : 1;
}
