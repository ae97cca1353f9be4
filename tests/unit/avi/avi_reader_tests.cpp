// The structure parser: which files it takes, what it keeps of them, and the text of each problem.
#include "avi/avi_reader.h"
#include "avi/avi_stream.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/failing_file.h"
#include "tests/unit/avi/avi_test_support.h"
#include "tests/unit/avi/plain_parser.h"

namespace orvantis {
namespace {

using test::AviBuilder;
using test::Bytes;
using test::Parsed;
using test::RiffBuilder;

constexpr const char* kNotAvi = "file doesn't look like AVI (first 12 bytes is not 'RIFF'....'AVI ')";

// A file with this inside the form: hdrl with `avih` and whatever else.
Bytes formWith(const Bytes& children) {
    return RiffBuilder().beginList("RIFF", "AVI ").bytes(children).end().take();
}

Bytes hdrlWith(const Bytes& children) {
    return RiffBuilder().beginList("LIST", "hdrl").begin("avih").fill(56).end().bytes(children).end().take();
}

Bytes strl(std::string_view type = "vids", const Bytes& format = Bytes(40)) {
    RiffBuilder list;
    list.beginList("LIST", "strl").chunk("strh", test::streamHeader(type)).chunk("strf", format).end();
    return list.take();
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

std::string textOf(const AviStream& stream) {
    char text[5] = {};
    std::memcpy(text, &stream.chunkId, 4);
    return text;
}

// What is no AVI.

TEST(AviReader, FileWithOtherFirstBytesIsRefused) {
    const Bytes good = test::smallClip().build();
    for (const std::string_view first :
         {"RIFX....AVI ", "RIFF....WAVE", "RIFF....AVIX", "LIST....AVI ", "riff....avi "}) {
        Bytes bytes = good;
        for (const std::size_t at : {0U, 1U, 2U, 3U, 8U, 9U, 10U, 11U}) {
            bytes[at] = static_cast<std::uint8_t>(first[at]);
        }
        const Parsed parsed(bytes);
        EXPECT_FALSE(parsed.usable) << first;
        EXPECT_EQ(parsed.reader.errorText(), kNotAvi) << first;
        EXPECT_TRUE(parsed.reader.streams.empty()) << first;
    }
}

TEST(AviReader, FileOfLessThanTwelveBytesIsRefused) {
    Bytes bytes = test::smallClip().build();
    for (std::size_t size = 0; size < 12; ++size) {
        const Parsed parsed(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_FALSE(parsed.usable) << size;
        EXPECT_EQ(parsed.reader.errorText(), kNotAvi) << size;
    }
}

TEST(AviReader, FileWhoseSizeCannotBeToldIsEmpty) {
    test::MemoryFile whole(test::smallClip().build());
    test::FailingFile file(whole);
    file.plan(test::FileFault::kFail, 1, test::FileOperation::kSize);
    AviReader reader;
    EXPECT_FALSE(reader.parse(file, false));
    EXPECT_EQ(reader.errorText(), "riff structure is empty\n");
}

// All bytes are there, but the length is not.
class NegativeSizeFile final : public fileio::File {
 public:
    explicit NegativeSizeFile(const Bytes& bytes) : m_file(bytes) {}

    bool open(const char* utf8Path, int mode) override { return m_file.open(utf8Path, mode); }
    void close() override { m_file.close(); }
    std::int64_t size() override { return -1; }
    std::int64_t tell() override { return m_file.tell(); }
    bool seek(std::int64_t offset) override { return m_file.seek(offset); }
    std::uint64_t read(void* buffer, std::uint64_t count) override { return m_file.read(buffer, count); }
    std::uint64_t write(const void* buffer, std::uint64_t count) override {
        return m_file.write(buffer, count);
    }

 private:
    test::MemoryFile m_file;
};

TEST(AviReader, NegativeSizeCountsAsNone) {
    NegativeSizeFile file(test::smallClip().build());
    AviReader reader;
    EXPECT_FALSE(reader.parse(file, false));
    EXPECT_EQ(reader.errorText(), "riff structure is empty\n");
}

TEST(AviReader, FormOfSizeZeroHasNoHdrl) {
    Bytes bytes = test::smallClip().build();
    for (std::size_t at = 4; at < 8; ++at) {
        bytes[at] = 0;
    }
    const Parsed parsed(bytes);
    EXPECT_FALSE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "hdrl missing\n");
}

// Some writers never go back to fill the size in, some streams cannot.
TEST(AviReader, FormOfUnknownSizeIsReadToTheEndOfTheFile) {
    Bytes bytes = test::smallClip().build();
    for (std::size_t at = 4; at < 8; ++at) {
        bytes[at] = 0xFF;
    }
    const Parsed parsed(bytes);
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "riff structure is corrupt or invalid\n");
    ASSERT_EQ(parsed.reader.streams.size(), 2U);
    EXPECT_EQ(parsed.stream(0).entries().size(), 3U);
}

TEST(AviReader, FormWithoutHdrlIsRefused) {
    const Parsed parsed(
        formWith(RiffBuilder().beginList("LIST", "movi").end().begin("hdrl").fill(8).end().take()));
    EXPECT_FALSE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "hdrl missing\n");
}

TEST(AviReader, HdrlWithoutAvihIsRefused) {
    const Parsed parsed(formWith(RiffBuilder().beginList("LIST", "hdrl").bytes(strl()).end().take()));
    EXPECT_FALSE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "avih missing\n");
    EXPECT_TRUE(parsed.reader.streams.empty());
}

TEST(AviReader, AvihShorterThan56BytesIsRefused) {
    RiffBuilder hdrl;
    hdrl.beginList("LIST", "hdrl").begin("avih").fill(55, 7).end().bytes(strl()).end();
    const Parsed parsed(formWith(hdrl.take()));
    EXPECT_FALSE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "avih data read error\n");
    EXPECT_EQ(parsed.reader.mainHeader.dwMicroSecPerFrame, 0U);
}

TEST(AviReader, AvihCutByTheEndOfTheFileIsRefused) {
    RiffBuilder hdrl;
    hdrl.beginList("LIST", "hdrl").begin("avih").fill(56, 7).end().end();
    Bytes bytes = formWith(hdrl.take());
    bytes.pop_back();
    const Parsed parsed(bytes);
    EXPECT_FALSE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "avih data read error\n");
    EXPECT_EQ(parsed.reader.mainHeader.dwMicroSecPerFrame, 0U);
}

TEST(AviReader, AvihLongerThan56BytesGivesItsFirst56) {
    RiffBuilder hdrl;
    hdrl.beginList("LIST", "hdrl")
        .begin("avih")
        .u32(40000)
        .fill(48, 1)
        .u32(0x12345678)
        .fill(50, 0xEE)
        .end()
        .end();
    const Parsed parsed(formWith(hdrl.take()));
    ASSERT_TRUE(parsed.usable) << parsed.reader.errorText();
    EXPECT_EQ(parsed.reader.mainHeader.dwMicroSecPerFrame, 40000U);
    EXPECT_EQ(parsed.reader.mainHeader.dwReserved[3], 0x12345678U);
}

// What is kept.

TEST(AviReader, KeepsHeadersAndFormatsAsTheyAreStored) {
    const Bytes extra = {1, 2, 3, 4, 5};
    AviBuilder avi;
    avi.addStream(test::videoStream("O8RA", 320, -240, 30000, 1001, 32, extra));
    avi.addStream(test::pcmStream(2, 44100, 16));
    avi.addFilledChunk(0, 10, 1).addFilledChunk(1, 8, 2);
    const Parsed parsed(avi.build());
    ASSERT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "");
    EXPECT_EQ(parsed.reader.mainHeader.dwMicroSecPerFrame, 40000U);
    EXPECT_EQ(parsed.reader.mainHeader.dwStreams, 2U);
    ASSERT_EQ(parsed.reader.streams.size(), 2U);

    const AviStream& video = parsed.stream(0);
    EXPECT_EQ(video.index, 0U);
    EXPECT_EQ(video.header.fccType, kStreamTypeVideo);
    EXPECT_EQ(video.header.fccHandler, riffCode("O8RA"));
    EXPECT_EQ(video.header.dwScale, 1001U);
    EXPECT_EQ(video.header.dwRate, 30000U);
    EXPECT_EQ(video.header.dwLength, 1U);
    EXPECT_EQ(video.header.dwQuality, 0xFFFFFFFFU);
    EXPECT_EQ(video.format.size(), 45U);
    EXPECT_EQ(video.formatHeader().biSize, 45U);
    EXPECT_EQ(video.formatHeader().biWidth, 320);
    EXPECT_EQ(video.formatHeader().biHeight, -240);
    EXPECT_EQ(video.formatHeader().biBitCount, 32);
    EXPECT_EQ(video.formatHeader().biCompression, riffCode("O8RA"));
    EXPECT_EQ(Bytes(video.extraData().begin(), video.extraData().end()), extra);

    const AviStream& audio = parsed.stream(1);
    EXPECT_EQ(audio.index, 1U);
    EXPECT_EQ(audio.header.fccType, kStreamTypeAudio);
    EXPECT_EQ(audio.header.dwSampleSize, 4U);
    EXPECT_EQ(audio.header.dwLength, 2U);
    EXPECT_EQ(audio.format.size(), 16U);
}

TEST(AviReader, ChunkIdHasTheOrdinalsDigitsAndNoSuffix) {
    RiffBuilder lists;
    for (int i = 0; i < 13; ++i) {
        lists.bytes(strl(i == 12 ? "auds" : "vids"));
    }
    const Parsed parsed(formWith(hdrlWith(lists.take())));
    ASSERT_EQ(parsed.reader.streams.size(), 13U);
    EXPECT_EQ(textOf(parsed.stream(0)), "00??");
    EXPECT_EQ(textOf(parsed.stream(7)), "07??");
    EXPECT_EQ(textOf(parsed.stream(12)), "12??");
}

TEST(AviReader, StreamsOfATypeAreFoundInOrder) {
    const Parsed parsed(
        formWith(hdrlWith(joined({strl("auds"), strl("vids"), strl("txts"), strl("auds"), strl("vids")}))));
    EXPECT_EQ(parsed.reader.streamsOfType(kStreamTypeVideo), (std::vector<std::size_t>{1, 4}));
    EXPECT_EQ(parsed.reader.streamsOfType(kStreamTypeAudio), (std::vector<std::size_t>{0, 3}));
    EXPECT_TRUE(parsed.reader.streamsOfType(riffCode("mids")).empty());
}

TEST(AviReader, StreamListWithoutStrfIsDroppedAndKeepsItsOrdinal) {
    const Bytes noStrf =
        RiffBuilder().beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).end().take();
    const Parsed parsed(formWith(hdrlWith(joined({noStrf, strl("auds")}))));
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "stream[0]: strf missing in strl\n");
    ASSERT_EQ(parsed.reader.streams.size(), 1U);
    EXPECT_EQ(parsed.stream(0).index, 1U);
    EXPECT_EQ(parsed.stream(0).header.fccType, kStreamTypeAudio);
    EXPECT_EQ(textOf(parsed.stream(0)), "01??");
}

TEST(AviReader, ProblemsOfStreamListsNameTheOrdinal) {
    const Bytes noStrh = RiffBuilder().beginList("LIST", "strl").chunk("strf", Bytes(40)).end().take();
    const Bytes noStrf =
        RiffBuilder().beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).end().take();
    const Bytes shortStrh = RiffBuilder()
                                .beginList("LIST", "strl")
                                .chunk("strh", Bytes(55))
                                .chunk("strf", Bytes(40))
                                .end()
                                .take();
    const Bytes hugeStrf = RiffBuilder()
                               .beginList("LIST", "strl")
                               .chunk("strh", test::streamHeader("vids"))
                               .begin("strf")
                               .fill(40)
                               .endWithSize(0x7FFFFFFF)
                               .end()
                               .take();
    const Parsed parsed(formWith(hdrlWith(joined({strl(), noStrh, noStrf, shortStrh, hugeStrf}))));
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.streams.size(), 1U);
    // The huge strf leads its list to the end of the file without damage; nothing follows it there.
    EXPECT_EQ(parsed.reader.errorText(),
              "stream[1]: strh missing in strl\n"
              "stream[2]: strf missing in strl\n"
              "stream[3]: strh data read error\n"
              "stream[4]: strf data read error\n");
}

TEST(AviReader, EmptyFormatIsTaken) {
    const Parsed parsed(formWith(hdrlWith(strl("vids", {}))));
    EXPECT_EQ(parsed.reader.errorText(), "");
    ASSERT_EQ(parsed.reader.streams.size(), 1U);
    EXPECT_TRUE(parsed.stream(0).format.empty());
}

TEST(AviReader, FormatLargerThanTheReadWindowIsReadWhole) {
    Bytes format(3 * FileWindow::kWindowBytes + 5);
    for (std::size_t i = 0; i < format.size(); ++i) {
        format[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    }
    const Parsed parsed(formWith(hdrlWith(joined({strl("vids", format), strl("auds", Bytes(18, 9))}))));
    EXPECT_EQ(parsed.reader.errorText(), "");
    ASSERT_EQ(parsed.reader.streams.size(), 2U);
    EXPECT_EQ(parsed.stream(0).format, format);
    EXPECT_EQ(parsed.stream(1).format, Bytes(18, 9));
}

TEST(AviReader, FirstOfSeveralChunksOfAKindCounts) {
    RiffBuilder list;
    list.beginList("LIST", "strl")
        .chunk("strh", test::streamHeader("vids", 1, 25))
        .chunk("strh", test::streamHeader("auds", 2, 50))
        .chunk("strf", Bytes(40, 1))
        .chunk("strf", Bytes(20, 2))
        .end();
    RiffBuilder form;
    form.bytes(hdrlWith(list.take()));
    form.beginList("LIST", "hdrl").end();
    form.begin("idx1").code("00dc").u32(0).u32(4).u32(10).end();
    form.begin("idx1").code("00dc").u32(0).u32(4).u32(20).end();
    const Parsed noMovi(formWith(form.data()));
    const std::uint64_t movi = 12 + form.position();
    form.beginList("LIST", "movi").fill(30).end().beginList("LIST", "movi").fill(30).end();
    const Parsed parsed(formWith(form.take()));
    ASSERT_EQ(parsed.reader.streams.size(), 1U);
    EXPECT_EQ(parsed.stream(0).header.dwRate, 25U);
    EXPECT_EQ(parsed.stream(0).format, Bytes(40, 1));
    ASSERT_EQ(parsed.stream(0).entries().size(), 1U);
    EXPECT_EQ(parsed.stream(0).entries()[0].size, 10U);
    EXPECT_EQ(parsed.stream(0).entries()[0].offset, movi + 16 + 4);

    // Without a movi list the offsets of idx1 count from nowhere.
    EXPECT_TRUE(noMovi.stream(0).entries().empty());
}

TEST(AviReader, ExtendedHeaderTakesWhatIsThereUpTo248Bytes) {
    const auto withDmlh = [](const Bytes& data) {
        return formWith(hdrlWith(RiffBuilder().beginList("LIST", "odml").chunk("dmlh", data).end().take()));
    };
    const Parsed shorter(withDmlh({0x78, 0x56, 0x34, 0x12, 0xAA}));
    EXPECT_EQ(shorter.reader.extHeader.dwGrandFrames, 0x12345678U);
    EXPECT_EQ(shorter.reader.extHeader.dwFuture[0], 0xAAU);
    EXPECT_EQ(shorter.reader.extHeader.dwFuture[1], 0U);
    EXPECT_EQ(shorter.reader.errorText(), "");

    const Parsed longer(withDmlh(Bytes(400, 0x11)));
    EXPECT_EQ(longer.reader.extHeader.dwGrandFrames, 0x11111111U);
    EXPECT_EQ(longer.reader.extHeader.dwFuture[60], 0x11111111U);
}

TEST(AviReader, AShorterSecondExtendedHeaderLeavesTheRestOfTheFirst) {
    RiffBuilder lists;
    lists.beginList("LIST", "odml").chunk("dmlh", Bytes(248, 0x11)).end();
    lists.beginList("LIST", "odml").chunk("dmlh", Bytes(4, 0x22)).end();
    const Parsed parsed(formWith(hdrlWith(lists.take())));
    EXPECT_EQ(parsed.reader.extHeader.dwGrandFrames, 0x22222222U);
    EXPECT_EQ(parsed.reader.extHeader.dwFuture[0], 0x11111111U);
    EXPECT_EQ(parsed.reader.extHeader.dwFuture[60], 0x11111111U);
}

TEST(AviReader, ExtendedHeaderThatCannotBeReadStaysZeroWithoutAWord) {
    const Parsed missing(formWith(hdrlWith(RiffBuilder().beginList("LIST", "odml").end().take())));
    EXPECT_TRUE(missing.usable);
    EXPECT_EQ(missing.reader.errorText(), "");

    Bytes bytes = formWith(
        hdrlWith(RiffBuilder().beginList("LIST", "odml").begin("dmlh").fill(248, 3).end().end().take()));
    bytes.resize(bytes.size() - 10);
    const Parsed cut(bytes);
    EXPECT_TRUE(cut.usable);
    EXPECT_EQ(cut.reader.extHeader.dwGrandFrames, 0U);
    EXPECT_EQ(cut.reader.errorText(), "");
}

// Which part of the file.

TEST(AviReader, FileCutInsideMoviKeepsHeadersAndSaysCorrupt) {
    AviBuilder avi = test::smallClip();
    Bytes bytes = avi.build();
    bytes.resize(avi.placements()[2].offset + 5);
    const Parsed parsed(bytes);
    // The size of movi leads behind the end, where the form still claims bytes.
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "riff structure is corrupt or invalid\n");
    ASSERT_EQ(parsed.reader.streams.size(), 2U);
    EXPECT_TRUE(parsed.stream(0).entries().empty());
}

TEST(AviReader, Idx1BeforeTheCutIsUsed) {
    // idx1 ahead of movi, as no muxer writes it, but nothing forbids.
    RiffBuilder form;
    form.bytes(hdrlWith(strl()));
    form.begin("idx1").code("00dc").u32(0x10).u32(4).u32(100).end();
    form.beginList("LIST", "movi").begin("00dc").fill(100).end().end().begin("JUNK").fill(8).end();
    Bytes bytes = formWith(form.take());
    bytes.resize(bytes.size() - 60);
    const Parsed parsed(bytes);
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "riff structure is corrupt or invalid\n");
    ASSERT_EQ(parsed.reader.streams.size(), 1U);
    EXPECT_EQ(parsed.stream(0).entries().size(), 1U);
}

TEST(AviReader, SecondFormIsIgnored) {
    Bytes bytes = test::smallClip().build();
    RiffBuilder second;
    second.beginList("RIFF", "AVIX").bytes(hdrlWith(strl())).beginList("LIST", "movi").end();
    second.begin("idx1").code("00dc").u32(0).u32(4).u32(1).end();
    const Bytes more = second.take();
    const test::PlainAvi alone = test::parsePlainly(bytes);
    bytes.insert(bytes.end(), more.begin(), more.end());
    const Parsed parsed(bytes);
    EXPECT_EQ(parsed.reader.chunks.size(), 1U);
    EXPECT_EQ(test::firstDifference(alone, test::asPlain(parsed.reader, parsed.usable)), "none");
}

TEST(AviReader, StartsAtTheFilesCurrentPosition) {
    const Bytes clip = test::smallClip().build();
    Bytes bytes(100, 0x55);
    bytes.insert(bytes.end(), clip.begin(), clip.end());
    test::MemoryFile file(bytes);
    file.seek(100);
    AviReader reader;
    ASSERT_TRUE(reader.parse(file, false));
    EXPECT_EQ(reader.chunks.at(0).offset, 100U);
    const Parsed plain(clip);
    ASSERT_EQ(reader.streams.at(0)->entries().size(), 3U);
    EXPECT_EQ(reader.streams[0]->entries()[1].offset, plain.stream(0).entries()[1].offset + 100);
}

// The two halves of a parse.

TEST(AviReader, HeaderOnlyParseReadsNoIndex) {
    for (const auto kind :
         {test::OpenDml::kNone, test::OpenDml::kStandardIndex, test::OpenDml::kSuperIndex}) {
        const Parsed parsed(test::smallClip().openDml(kind).build(), true);
        ASSERT_TRUE(parsed.usable);
        EXPECT_EQ(parsed.reader.streams.size(), 2U);
        for (const auto& stream : parsed.reader.streams) {
            EXPECT_FALSE(stream->hasOpenDmlIndex);
            EXPECT_TRUE(stream->entries().empty());
            EXPECT_TRUE(stream->superIndex.empty());
            EXPECT_TRUE(stream->standardIndexes.empty());
        }
    }
}

TEST(AviReader, HeadersThenIndexesEqualAFullParse) {
    for (const auto kind :
         {test::OpenDml::kNone, test::OpenDml::kStandardIndex, test::OpenDml::kSuperIndex}) {
        const Bytes bytes = test::smallClip(20).openDml(kind).chunksPerForm(16).build();
        const Parsed full(bytes);
        Parsed halves(bytes, true);
        halves.reader.readIndexes();
        EXPECT_EQ(test::firstDifference(test::asPlain(full.reader, full.usable),
                                        test::asPlain(halves.reader, halves.usable)),
                  "none");
        EXPECT_EQ(test::firstDifference(test::parsePlainly(bytes), test::asPlain(full.reader, full.usable)),
                  "none");
    }
}

// Behind movi lies a chunk whose header the file cuts off.
Bytes damagedBehindMovi(const Bytes& headers) {
    Bytes form(headers);
    const Bytes data = RiffBuilder().beginList("LIST", "movi").fill(8).end().u32(0).take();
    form.insert(form.end(), data.begin(), data.end());
    return formWith(form);
}

TEST(AviReader, DamageBehindMoviIsFoundWithTheIndexes) {
    const Bytes bytes = damagedBehindMovi(hdrlWith(joined({strl("vids"), strl("auds")})));
    const Parsed full(bytes);
    Parsed halves(bytes, true);
    EXPECT_TRUE(full.usable);
    EXPECT_TRUE(halves.usable);
    EXPECT_EQ(halves.reader.errorText(), "");
    halves.reader.readIndexes();
    EXPECT_EQ(halves.reader.errorText(), "riff structure is corrupt or invalid\n");
    EXPECT_EQ(full.reader.errorText(), "riff structure is corrupt or invalid\n");
}

TEST(AviReader, DamageBehindMoviIsToldAheadOfWhatTheHeadersLack) {
    // The problems of the streams are known first and told last.
    const Bytes noFormat = RiffBuilder().beginList("LIST", "strl").begin("strh").fill(56).end().end().take();
    const Bytes bytes = damagedBehindMovi(hdrlWith(joined({noFormat, strl("vids")})));
    Parsed halves(bytes, true);
    EXPECT_EQ(halves.reader.errorText(), "stream[0]: strf missing in strl\n");
    halves.reader.readIndexes();
    EXPECT_EQ(halves.reader.errorText(),
              "riff structure is corrupt or invalid\nstream[0]: strf missing in strl\n");
    EXPECT_EQ(Parsed(bytes).reader.errorText(), halves.reader.errorText());
}

TEST(AviReader, DamageBehindMoviIsToldWhenTheHeadersAreRefused) {
    const Bytes bytes = damagedBehindMovi(RiffBuilder().beginList("LIST", "hdrl").bytes(strl()).end().take());
    const Parsed parsed(bytes, true);
    EXPECT_FALSE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "riff structure is corrupt or invalid\navih missing\n");
}

TEST(AviReader, HeadersBehindTheDataAreFoundWithoutTheIndexes) {
    RiffBuilder form;
    form.beginList("LIST", "movi").fill(8).end().bytes(hdrlWith(strl("vids")));
    const Parsed parsed(formWith(form.take()), true);
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.streams.size(), 1U);
    EXPECT_EQ(parsed.reader.errorText(), "");
}

TEST(AviReader, ReadingIndexesAgainChangesNothing) {
    Parsed parsed(test::smallClip().openDml(test::OpenDml::kSuperIndex).build());
    const test::PlainAvi first = test::asPlain(parsed.reader, true);
    parsed.file->bytes().assign(parsed.file->bytes().size(), std::byte{0});
    parsed.reader.readIndexes();
    EXPECT_EQ(test::asPlain(parsed.reader, true), first);
}

TEST(AviReader, ReadingIndexesAfterAFailedParseDoesNothing) {
    Parsed parsed(Bytes(100));
    ASSERT_FALSE(parsed.usable);
    parsed.reader.readIndexes();
    EXPECT_EQ(parsed.reader.errorText(), kNotAvi);
    AviReader untouched;
    untouched.readIndexes();
    EXPECT_EQ(untouched.errorText(), "");
}

TEST(AviReader, EachParseStartsFromAnEmptyState) {
    Parsed parsed(test::smallClip().openDml(test::OpenDml::kSuperIndex).build());
    ASSERT_TRUE(parsed.usable);

    test::MemoryFile foreign(Bytes(50, 'x'));
    EXPECT_FALSE(parsed.reader.parse(foreign, false));
    EXPECT_EQ(parsed.reader.file, &foreign);
    EXPECT_EQ(parsed.reader.errorText(), kNotAvi);
    EXPECT_TRUE(parsed.reader.chunks.empty());
    EXPECT_TRUE(parsed.reader.streams.empty());
    EXPECT_EQ(parsed.reader.mainHeader.dwMicroSecPerFrame, 0U);
    EXPECT_EQ(parsed.reader.extHeader.dwGrandFrames, 0U);

    const Bytes other = test::smallClip(5).build();
    test::MemoryFile again(other);
    EXPECT_TRUE(parsed.reader.parse(again, false));
    EXPECT_EQ(test::firstDifference(test::parsePlainly(other), test::asPlain(parsed.reader, true)), "none");
}

// What lies in the windows on the file is the other file's as long as its indexes are not read.
TEST(AviReader, HeadersOfAFileBeforeWithIndexesUnreadAreForgotten) {
    Parsed parsed(test::smallClip(9).openDml(test::OpenDml::kSuperIndex).build(), true);
    ASSERT_TRUE(parsed.usable);
    const Bytes other = test::smallClip(5).build();
    test::MemoryFile next(other);
    const bool usable = parsed.reader.parse(next, false);
    EXPECT_EQ(test::firstDifference(test::parsePlainly(other), test::asPlain(parsed.reader, usable)), "none");
}

TEST(AviReader, DroppedIndexesAreNotReadLater) {
    Parsed parsed(test::smallClip(9).build(), true);
    ASSERT_TRUE(parsed.usable);
    parsed.reader.dropIndexes();
    parsed.reader.readIndexes();
    ASSERT_FALSE(parsed.reader.streams.empty());
    EXPECT_TRUE(parsed.stream(0).entries().empty());
    EXPECT_EQ(parsed.reader.errorText(), "");
}

TEST(AviReader, SameFileParsedTwiceGivesTheSame) {
    Parsed parsed(test::smallClip(7).openDml(test::OpenDml::kSuperIndex).build());
    const test::PlainAvi first = test::asPlain(parsed.reader, parsed.usable);
    parsed.file->seek(0);
    const bool usable = parsed.reader.parse(*parsed.file, false);
    EXPECT_EQ(test::asPlain(parsed.reader, usable), first);
}

TEST(AviReader, ChunkDataShorterThanAskedIsNotRead) {
    Parsed parsed(formWith(hdrlWith(strl())), true);
    const RiffChunk* hdrl = findList(parsed.reader.chunks.at(0).children, riffCode("hdrl"));
    ASSERT_NE(hdrl, nullptr);
    const RiffChunk* avih = findChunk(hdrl->children, riffCode("avih"));
    ASSERT_NE(avih, nullptr);
    std::uint8_t bytes[60] = {};
    EXPECT_FALSE(parsed.reader.readChunkData(*avih, bytes, 57));
    EXPECT_TRUE(parsed.reader.readChunkData(*avih, bytes, 56));
    EXPECT_TRUE(parsed.reader.readChunkData(*avih, bytes, 1));
}

}  // namespace
}  // namespace orvantis
