// What the log makes of names and threads: paths outside the code page, hostile characters, lines from
// several threads.
#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_clip_test.h"

namespace {

using testing::Contains;

using clips::kYuy2;

class LogTexts : public ClipTest {
 protected:
    /// Opens, describes and closes a clip of this name.
    void play(std::u8string_view name) {
        simhost::Clip clip(importer(), place(name, clips::builder().build()));
        EXPECT_EQ(clip.openResult(), host::imNoErr);
        EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
        EXPECT_TRUE(clip.getFrame(0, kYuy2).frame.has_value());
    }
};

TEST_F(LogTexts, PathsAreUtf8WhateverTheyHold) {
    logOn();
    startAndInit();
    // Latin, Cyrillic, Chinese, and a character outside the basic plane.
    for (const char8_t* name :
         {u8"Größe.avi", u8"Кино.avi", u8"影片.avi", u8"\U0001F3AC film \U0001F37F.avi"}) {
        static_cast<void>(log().news());
        play(name);
        const std::string utf8(reinterpret_cast<const char*>(name));
        EXPECT_THAT(log().newLines(), Contains("Open: '<folder>/" + utf8 + "', stream: 0"));
    }
}

TEST_F(LogTexts, PercentSignsInNamesAreNoFormats) {
    logOn();
    startAndInit();
    for (const char8_t* name : {u8"100% %s%n%n%x.avi", u8"%d%d%d%s.avi", u8"%%.avi", u8"%999999d%lc.avi"}) {
        static_cast<void>(log().news());
        play(name);
        const std::string utf8(reinterpret_cast<const char*>(name));
        EXPECT_THAT(log().newLines(), Contains("Open: '<folder>/" + utf8 + "', stream: 0"));
    }
}

TEST_F(LogTexts, PercentSignsFromFilesAreNoFormatsEither) {
    logOn();
    startAndInit();
    // A stream that is rejected with a text of the library, and codes in the log of the file's own bytes.
    simhost::Clip clip(importer(), place(u8"%s.avi", clips::builder({.tag = "%s%n"}).build()));
    EXPECT_EQ(clip.getInfo(0).result, host::imBadFile);
    EXPECT_EQ(importer().callWithNumber(host::imGetSubTypeNames, 0x25732573, nullptr), 99);
    EXPECT_THAT(log().newLines(), Contains("filetype: %s%s"));
}

TEST_F(LogTexts, LongPathsAreWrittenWhole) {
    logOn();
    startAndInit();
    const std::string path = orvantis::test::utf8Path(folder() / std::string(1500, 'x'));
    EXPECT_EQ(simhost::Clip(importer(), path).openResult(), host::imBadFile);
    EXPECT_THAT(log().newLines(), Contains("Open: '<folder>/" + std::string(1500, 'x') + "', stream: 0"));
}

TEST_F(LogTexts, CallsOnSeveralThreadsKeepTheirLinesWholeAndTheirOwnNumber) {
    logOn();
    startAndInit();
    const std::string path = placeClip();
    constexpr std::size_t kThreads = 4;
    constexpr std::uint32_t kFrames = 20;
    std::vector<simhost::Clip> clips;
    for (std::size_t i = 0; i < kThreads; ++i) {
        clips.emplace_back(importer(), path);
        ASSERT_EQ(clips.back().getInfo(0).result, host::imNoErr);
        ASSERT_TRUE(clips.back().getFrame(0, kYuy2).frame.has_value());
    }
    // What the calls say one after the other.
    static_cast<void>(log().news());
    std::vector<std::string> alone;
    for (std::uint32_t i = 0; i < 5; ++i) {
        ASSERT_TRUE(clips[0].getFrame(i, kYuy2).frame.has_value());
        alone.push_back(log().news().substr(1));
        ASSERT_NE(alone.back().find("\nframeIndex:  " + std::to_string(i) + " "), std::string::npos);
    }
    std::vector<std::thread> threads;
    threads.reserve(clips.size());
    for (simhost::Clip& clip : clips) {
        threads.emplace_back([&clip] {
            for (std::uint32_t i = 0; i < kFrames; ++i) {
                EXPECT_TRUE(clip.getFrame(i % 5, kYuy2).frame.has_value());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    std::string expected = "\n";
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        expected += alone[i % 5];
    }
    const std::vector<std::string> logs = log().newsByThread();
    ASSERT_EQ(logs.size(), kThreads);
    for (const std::string& one : logs) {
        EXPECT_EQ(one, expected);
    }
}

}  // namespace
