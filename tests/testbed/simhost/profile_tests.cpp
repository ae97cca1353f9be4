#include "simhost/host_profile.h"

#include <gtest/gtest.h>

#include <set>

#include "fake_plugin.h"
#include "host/pixel_formats.h"
#include "host/selectors.h"
#include "simhost/clip.h"
#include "simhost/session.h"

namespace simhost {
namespace {

TEST(HostProfiles, NamesAreUniqueAndFound) {
    std::set<std::string> names;
    for (const HostProfile& profile : builtinProfiles()) {
        names.insert(profile.name);
        EXPECT_EQ(findProfile(profile.name), &profile);
        EXPECT_FALSE(profile.description.empty());
    }
    EXPECT_EQ(names.size(), builtinProfiles().size());
    EXPECT_EQ(builtinProfiles().front().name, "default");
    EXPECT_EQ(findProfile("nonesuch"), nullptr);
}

TEST(HostProfiles, OlderHostsHaveShorterRecords) {
    EXPECT_EQ(recordSizes(18).fileInfo, 5373u);
    EXPECT_EQ(recordSizes(18).sourceVideo, 56u);
    EXPECT_EQ(recordSizes(18).asyncRequest, 68u);
    EXPECT_EQ(recordSizes(23).fileInfo, 5376u);
    EXPECT_EQ(recordSizes(23).sourceVideo, 112u);
    EXPECT_EQ(recordSizes(23).asyncRequest, 124u);
}

TEST(HostProfiles, AWriteBehindTheShorterRecordIsAViolation) {
    Host sim(*findProfile("older"));
    test::FakePlugin fake;
    test::makeWellBehaved(fake);
    fake.on[host::imGetInfo8] = [](auto*, void*, void* record) {
        static_cast<unsigned char*>(record)[5373] = 0;  // mayHaveCaptions of later hosts
        return host::imNoErr;
    };
    const Importer importer(sim, fake.plugin);
    Clip clip(importer, "a.avi");
    EXPECT_EQ(clip.getInfo(0).result, 0);
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{
                  "records.bounds: imGetInfo8, imFileInfoRec8: offset 5373 of 5373 bytes was written"}));
}

TEST(HostProfiles, TheInterfaceVersionIsTold) {
    Host sim(*findProfile("older"));
    EXPECT_EQ(int{sim.stdParms().imInterfaceVer}, 18);
}

TEST(HostProfiles, OppositeOriginsTurnEveryAnswer) {
    Host sim(*findProfile("opposite-origins"));
    const auto* suite =
        test::acquire<host::ImageProcessingSuite>(sim.basicSuite(), host::kImageProcessingSuiteName, 2);
    std::int32_t answer = 0;
    EXPECT_EQ(suite->FormatIsOriginTopLeft(host::PrPixelFormat_BGRA_4444_8u, &answer), 0);
    EXPECT_EQ(answer, 1);
    EXPECT_EQ(suite->FormatIsOriginTopLeft(host::PrPixelFormat_YUYV_422_8u_601, &answer), 0);
    EXPECT_EQ(answer, 0);
}

TEST(HostProfiles, SessionsDeliverTheSamePicturesUnderEveryProfileThatCanPlay) {
    std::uint64_t pictures = 0;
    std::uint64_t sounds = 0;
    for (const HostProfile& profile : builtinProfiles()) {
        test::FakePlugin fake;
        test::makeWellBehaved(fake);
        Host sim(profile);
        SessionOptions options;
        options.pathUtf8 = "clip.avi";
        const SessionSummary summary = runSession(Importer(sim, fake.plugin), options);
        EXPECT_EQ(sim.report(), "") << profile.name;
        EXPECT_TRUE(summary.opened) << profile.name;
        EXPECT_NE(summary.audioHash, 0u);
        if (profile.name == "default") {
            pictures = summary.pictureHash;
            sounds = summary.audioHash;
            EXPECT_EQ(summary.frames, 12u) << "2 formats, 3 frames, before and after the re-opening";
        }
        EXPECT_EQ(summary.audioHash, sounds) << profile.name;
        const bool plays = profile.name != "ticks-1" && profile.name != "no-creator-suite" &&
                           profile.name != "no-ppix-suite" && profile.name != "no-time-suite";
        if (plays) {
            EXPECT_EQ(summary.pictureHash, pictures) << profile.name;
        } else {
            EXPECT_EQ(summary.frames, 0u) << profile.name;
        }
    }
}

}  // namespace
}  // namespace simhost
