// Cut, changed and badly read files: the answer is the plain rules' answer for what is left, and nothing ever
// escapes.
#include <gtest/gtest.h>

#include <random>

#include "avi/avi_stream.h"
#include "tests/support/failing_file.h"
#include "tests/support/thorough.h"
#include "tests/unit/avi/avi_test_support.h"
#include "tests/unit/avi/plain_parser.h"

namespace orvantis {
namespace {

using test::AviBuilder;
using test::Bytes;
using test::OpenDml;
using test::Parsed;

// Clips with everything that the reader looks at.
std::vector<AviBuilder> allKinds() {
    std::vector<AviBuilder> kinds;
    for (const OpenDml kind : {OpenDml::kNone, OpenDml::kStandardIndex, OpenDml::kSuperIndex}) {
        AviBuilder avi = test::smallClip(9);
        avi.addFilledChunk(0, 0, 0).addFilledChunk(0, 33, 5).openDml(kind);
        if (kind == OpenDml::kSuperIndex) {
            avi.chunksPerForm(8).entriesPerStandardIndex(3);
        }
        kinds.push_back(avi);
    }
    return kinds;
}

void expectPlainAnswer(const Bytes& bytes, const std::string& what) {
    const Parsed parsed(bytes);
    ASSERT_EQ(test::firstDifference(test::parsePlainly(bytes), test::asPlain(parsed.reader, parsed.usable)),
              "none")
        << what;
}

TEST(DamagedFile, UndamagedFilesGiveThePlainAnswer) {
    for (AviBuilder& avi : allKinds()) {
        const Bytes bytes = avi.build();
        expectPlainAnswer(bytes, "whole");
        const Parsed parsed(bytes);
        EXPECT_EQ(parsed.reader.errorText(), "");
        EXPECT_EQ(parsed.stream(0).entries().size(), 11U);
    }
}

TEST(DamagedFile, CutAtEveryByte) {
    for (AviBuilder& avi : allKinds()) {
        const Bytes bytes = avi.build();
        for (std::size_t size = 0; size < bytes.size(); size += test::sampleStep(5)) {
            expectPlainAnswer(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)),
                              "cut at " + std::to_string(size));
        }
    }
}

TEST(DamagedFile, CutFileReadInTwoHalvesGivesTheSame) {
    for (AviBuilder& avi : allKinds()) {
        const Bytes bytes = avi.build();
        for (std::size_t size = 0; size < bytes.size(); size += 3 * test::sampleStep(5)) {
            const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            Parsed halves(cut, true);
            halves.reader.readIndexes();
            ASSERT_EQ(
                test::firstDifference(test::parsePlainly(cut), test::asPlain(halves.reader, halves.usable)),
                "none")
                << size;
        }
    }
}

TEST(DamagedFile, EachByteOfTheHeadersSetToEachOfSomeValues) {
    for (AviBuilder& avi : allKinds()) {
        const Bytes bytes = avi.build();
        const auto end = static_cast<std::size_t>(avi.moviOffset()) + 12;
        for (std::size_t at = 0; at < end; at += test::sampleStep(5)) {
            for (const unsigned value : {0x00U, 0x01U, 0x7FU, 0x80U, 0xF7U, 0xFFU}) {
                Bytes changed = bytes;
                changed[at] = static_cast<std::uint8_t>(value);
                expectPlainAnswer(changed, "byte " + std::to_string(at) + " = " + std::to_string(value));
            }
        }
    }
}

TEST(DamagedFile, EachByteOfTheIndexesSetToEachOfSomeValues) {
    for (AviBuilder& avi : allKinds()) {
        const Bytes bytes = avi.build();
        const auto from = static_cast<std::size_t>(avi.idx1Offset());
        for (std::size_t at = from; at < bytes.size(); at += test::sampleStep(5)) {
            for (const unsigned value : {0x00U, 0x30U, 0x80U, 0xFFU}) {
                Bytes changed = bytes;
                changed[at] = static_cast<std::uint8_t>(value);
                expectPlainAnswer(changed, "byte " + std::to_string(at) + " = " + std::to_string(value));
            }
        }
    }
}

TEST(DamagedFile, RandomChanges) {
    constexpr unsigned kSeed = 20240607;
    std::mt19937 random(kSeed);
    const int rounds = test::howManyOfSample(1000, 6000);
    for (int round = 0; round < rounds; ++round) {
        std::vector<AviBuilder> kinds = allKinds();
        AviBuilder& avi = kinds[random() % kinds.size()];
        Bytes bytes = avi.build();
        const auto headers = static_cast<std::size_t>(avi.moviOffset()) + 12;
        for (unsigned changes = 1 + random() % 6; changes != 0; --changes) {
            const std::size_t at = random() % 4 == 0 ? random() % bytes.size() : random() % headers;
            switch (random() % 4) {
                case 0:
                    bytes[at] = static_cast<std::uint8_t>(random());
                    break;
                case 1:
                    bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ (1U << random() % 8));
                    break;
                case 2:
                    bytes.erase(bytes.begin() + static_cast<std::ptrdiff_t>(at));
                    break;
                default:
                    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), 1 + random() % 8, 0);
                    break;
            }
        }
        expectPlainAnswer(bytes, "round " + std::to_string(round) + ", seed " + std::to_string(kSeed));
        if (HasFatalFailure()) {
            return;
        }
    }
}

// Files that fail.

constexpr test::FileFault kFaults[] = {test::FileFault::kFail, test::FileFault::kShortRead,
                                       test::FileFault::kThrowRuntime, test::FileFault::kThrowBadAlloc};

// Long enough that the indexes are read on their own, beside the headers' window.
AviBuilder longClip() {
    AviBuilder avi = test::smallClip(0);
    for (int i = 0; i < 5000; ++i) {
        avi.addFilledChunk(0, 30, 1).addFilledChunk(1, 4, 2);
    }
    avi.openDml(OpenDml::kSuperIndex).chunksPerForm(4000).entriesPerStandardIndex(900);
    return avi;
}

TEST(FailingFile, EachOperationFailingInEachWay) {
    AviBuilder avi = longClip();
    const Bytes bytes = avi.build();
    const test::PlainAvi sound = test::parsePlainly(bytes);
    ASSERT_EQ(sound.errors, "");
    for (const test::FileFault fault : kFaults) {
        for (const bool fromThere : {false, true}) {
            for (std::uint64_t failAt = 1;; failAt = test::nextSample(failAt, 8, 5)) {
                ASSERT_LT(failAt, 200U);
                test::MemoryFile whole(bytes);
                test::FailingFile file(whole);
                file.plan(fault, failAt, test::FileOperation::kAny, fromThere);
                AviReader reader;
                bool usable = true;
                ASSERT_NO_THROW(usable = reader.parse(file, false)) << failAt;
                const test::PlainAvi found = test::asPlain(reader, usable);
                const std::string what = "fault " + std::to_string(static_cast<int>(fault)) + " at " +
                                         std::to_string(failAt) + (fromThere ? " and later" : "");
                // Whatever is listed is listed right: a list is whole, or not there.
                for (std::size_t i = 0; i < found.streams.size(); ++i) {
                    const test::PlainStream& stream = found.streams[i];
                    const test::PlainStream& expected = sound.streams.at(stream.ordinal);
                    EXPECT_EQ(stream.header, expected.header) << what;
                    EXPECT_EQ(stream.format, expected.format) << what;
                    if (stream.hasOpenDmlIndex) {
                        EXPECT_EQ(stream.openDmlEntries, expected.openDmlEntries) << what;
                    }
                    if (!stream.legacyEntries.empty() && found.streams.size() == sound.streams.size()) {
                        EXPECT_EQ(stream.legacyEntries, expected.legacyEntries) << what;
                    }
                }
                if (!usable) {
                    EXPECT_NE(found.errors, "") << what;
                }
                if (file.faults() == 0) {
                    // The fault was never reached: all other operations are done.
                    EXPECT_EQ(found, sound) << what;
                    break;
                }
            }
        }
    }
}

TEST(FailingFile, IndexThatCannotBeReadIsAReadFailureAndFallsBackToIdx1) {
    AviBuilder avi = longClip();
    const Bytes bytes = avi.build();
    // Find the reads of the standard indexes: the first fault that costs a stream its OpenDML index.
    bool seen = false;
    for (std::uint64_t failAt = 1; failAt < 100 && !seen; ++failAt) {
        test::MemoryFile whole(bytes);
        test::FailingFile file(whole);
        file.plan(test::FileFault::kShortRead, failAt, test::FileOperation::kRead);
        AviReader reader;
        if (!reader.parse(file, false) || reader.streams.size() != 2 || reader.streams[0]->hasOpenDmlIndex) {
            continue;
        }
        seen = true;
        const AviStream& stream = *reader.streams[0];
        const AviSuperIndexEntry entry = stream.superIndex.at(0);
        EXPECT_EQ(reader.errorText(), "readIndex: stream[0], pos: " + std::to_string(entry.qwOffset + 8) +
                                          ", size: " + std::to_string(entry.dwSize - 8) +
                                          ": failed to read index data\n");
        EXPECT_EQ(stream.standardIndexes.size(), stream.superIndex.size() - 1);
        EXPECT_EQ(&stream.entries(), &stream.legacyEntries);
        EXPECT_EQ(stream.entries().size(), 2000U);
    }
    EXPECT_TRUE(seen);
}

TEST(FailingFile, Idx1ThatCannotBeReadLeavesNoEntries) {
    AviBuilder avi = longClip();
    const Bytes bytes = avi.openDml(OpenDml::kNone).chunksPerForm(0).build();
    bool seen = false;
    for (std::uint64_t failAt = 1; failAt < 100 && !seen; ++failAt) {
        test::MemoryFile whole(bytes);
        test::FailingFile file(whole);
        file.plan(test::FileFault::kShortRead, failAt, test::FileOperation::kRead);
        AviReader reader;
        if (!reader.parse(file, false) || reader.streams.size() != 2 ||
            !reader.streams[0]->entries().empty()) {
            continue;
        }
        if (!reader.errorText().empty()) {
            continue;  // the walk did not reach idx1
        }
        seen = true;
        EXPECT_TRUE(reader.streams[0]->entries().empty());
        EXPECT_TRUE(reader.streams[1]->entries().empty());
    }
    EXPECT_TRUE(seen);
}

}  // namespace
}  // namespace orvantis
