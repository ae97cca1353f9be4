// Files that another program holds, with the share modes of Windows.
#include <gtest/gtest.h>

#include <share.h>
#include <stdio.h>

#include <filesystem>
#include <memory>

#include "host/result_codes.h"
#include "tests/integration/plugin_clip_test.h"

namespace {

class FileSharing : public ClipTest {};

struct CloseFile {
    void operator()(FILE* file) const { static_cast<void>(fclose(file)); }
};
using HeldFile = std::unique_ptr<FILE, CloseFile>;

TEST_F(FileSharing, AFileThatAnotherProgramHoldsForItselfIsABadFile) {
    startAndInit();
    const std::string path = placeClip();
    HeldFile held(_wfsopen((folder() / "clip.avi").c_str(), L"rb", _SH_DENYRW));
    ASSERT_NE(held, nullptr);
    EXPECT_EQ(simhost::Clip(importer(), path).openResult(), host::imBadFile);
    held.reset();
    simhost::Clip clip(importer(), path);
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
}

TEST_F(FileSharing, AFileThatAnotherProgramIsStillWritingIsABadFile) {
    startAndInit();
    const std::string path = placeClip();
    const HeldFile held(_wfsopen((folder() / "clip.avi").c_str(), L"r+b", _SH_DENYNO));
    ASSERT_NE(held, nullptr);
    EXPECT_EQ(simhost::Clip(importer(), path).openResult(), host::imBadFile);
}

TEST_F(FileSharing, AnOpenClipLetsOthersReadButNotWriteOrRemove) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.openResult(), host::imNoErr);
    const auto file = folder() / "clip.avi";
    EXPECT_NE(HeldFile(_wfsopen(file.c_str(), L"rb", _SH_DENYNO)), nullptr);
    EXPECT_EQ(HeldFile(_wfsopen(file.c_str(), L"r+b", _SH_DENYNO)), nullptr);
    std::error_code error;
    EXPECT_FALSE(std::filesystem::remove(file, error));
    ASSERT_EQ(clip.close(), host::imNoErr);
    EXPECT_NE(HeldFile(_wfsopen(file.c_str(), L"r+b", _SH_DENYRW)), nullptr);
    EXPECT_TRUE(std::filesystem::remove(file, error)) << error.message();
}

}  // namespace
