// "importer_host doctor": every fault that can be made without changing the system, found by the built
// program. The loader's places are the PATH of the child, the host's folders are given.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/integration/plugin_clips.h"
#include "tests/integration/plugin_path.h"
#include "tests/support/environment.h"
#include "tests/tool/small_pe.h"
#include "tests/tool/tool_run.h"
#include "tool/shared/base/tool_error.h"

namespace {

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using simhost::tool::kFailed;
using simhost::tool::kSuccess;
using simhost::tool::kUsage;
using simhost::tool::PeFile;
using simhost::tool::smallPe;
using testing::HasSubstr;
using testing::Not;

class ImporterHostDoctor : public ToolTest {
 protected:
    ImporterHostDoctor() {
        std::filesystem::create_directories(folder / "plug-ins" / "Orvantis");
        std::filesystem::create_directories(folder / "codec");
    }

    void installPlugin(std::u8string_view name = u8"plug-ins/Orvantis/ImporterOrvantis.prm") const {
        std::filesystem::create_directories((folder / name).parent_path());
        std::filesystem::copy_file(pluginPath(), folder / name);
    }
    void installCodec() const {
        std::filesystem::copy_file(codecFolder() + "/orvantis_common64.dll",
                                   folder / "codec" / "orvantis_common64.dll");
    }
    void installBoth() const {
        installPlugin();
        installCodec();
    }

    /// The exit code; the text is in `text`.
    int doctor(std::vector<std::string> more = {}) {
        const orvantis::test::ScopedEnvironment path("PATH", in(u8"codec"));
        std::vector<std::string> arguments = {"doctor", "--plugin-folder", in(u8"plug-ins"), "--out",
                                              in(u8"doctor.txt")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const int result = run(arguments);
        text = read(u8"doctor.txt");
        return result;
    }

    std::string text;
};

TEST_F(ImporterHostDoctor, FindsNothingWrongWithASoundInstallationAndClip) {
    installBoth();
    const std::string clip = write(u8"cl\u00EFp.avi", clips::builder({.frames = 50}).build());
    EXPECT_EQ(doctor({clip}), kSuccess) << text;
    constexpr const char* kVersionText = "ImporterOrvantis.prm: version " ORVANTIS_PROJECT_VERSION;
    for (const char* line :
         {"ok    plug-in folder: ", "ok    plug-in file: ", kVersionText,
          "ok    codec library: ", "with all 11 functions", "ok    loading: ", "ok    start: ",
          "ok    pictures: 16 x 4, O8Y2, 25.000 frames a second, 50 frames\n",
          "ok    decoding: frame 0 as PrPixelFormat_YUYV_422_8u_601\n", "ok    decoding: frame 25 as ",
          "ok    sound: track 1: 2 channels at 8000 Hz, its beginning was read\n", "Nothing is wrong."}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
    EXPECT_THAT(text, Not(HasSubstr("FAIL")));
    EXPECT_THAT(text, Not(HasSubstr("\x1b"))) << "colours are for terminals";
}

TEST_F(ImporterHostDoctor, NoPluginIsAFault) {
    installCodec();
    EXPECT_EQ(doctor(), kFailed);
    EXPECT_THAT(text, HasSubstr("FAIL  installed: no ImporterOrvantis.prm in the plug-in folders"));
    EXPECT_THAT(text, HasSubstr("copy ImporterOrvantis.prm into "));
    EXPECT_THAT(text, HasSubstr("\n1 to repair.\n")) << "the plug-in beside the tool is tried all the same";
}

TEST_F(ImporterHostDoctor, NoPluginFolderIsAFault) {
    installCodec();
    std::filesystem::remove_all(folder / "plug-ins");
    EXPECT_EQ(doctor(), kFailed);
    EXPECT_THAT(text, HasSubstr("warn  plug-in folder: "));
    EXPECT_THAT(text, HasSubstr("FAIL  plug-in folder: none was found"));
}

TEST_F(ImporterHostDoctor, AMissingCodecIsAFault) {
    installPlugin();
    EXPECT_EQ(doctor(), kFailed);
    EXPECT_THAT(text, HasSubstr("FAIL  codec library: orvantis_common64.dll is in none of the "));
    EXPECT_THAT(text, HasSubstr("FAIL  loading: cannot load '"));
    EXPECT_THAT(text, HasSubstr("install the Orvantis codec, whose library the plug-in needs"));
    EXPECT_EQ(doctor({"--codec-folder", codecFolder()}), kSuccess) << "the folder of the host's program";
}

TEST_F(ImporterHostDoctor, ACodecBesideThePluginIsOfNoUse) {
    installPlugin();
    std::filesystem::copy_file(codecFolder() + "/orvantis_common64.dll",
                               folder / "plug-ins" / "Orvantis" / "orvantis_common64.dll");
    EXPECT_EQ(doctor(), kFailed);
    EXPECT_THAT(text, HasSubstr("FAIL  codec library: "));
    EXPECT_THAT(text, HasSubstr("warn  codec beside the plug-in: "));
}

TEST_F(ImporterHostDoctor, A32BitCodecIsAFault) {
    installPlugin();
    write(u8"codec/orvantis_common64.dll", smallPe({.machine = PeFile::kMachineX86}));
    EXPECT_EQ(doctor(), kFailed);
    EXPECT_THAT(text,
                HasSubstr("orvantis_common64.dll: 32-bit library; the host needs a 64-bit x64 library"));
    EXPECT_THAT(text, HasSubstr("FAIL  loading: cannot load '"));
}

TEST_F(ImporterHostDoctor, ACodecWithoutAFunctionIsAFault) {
    installPlugin();
    write(u8"codec/orvantis_common64.dll", smallPe({.exports = {"orvantis_open"}}));
    EXPECT_EQ(doctor(), kFailed);
    EXPECT_THAT(text, HasSubstr("lacks orvantis_library_init, "));
    EXPECT_THAT(text, HasSubstr("update the Orvantis codec"));
}

TEST_F(ImporterHostDoctor, CopiesOfDifferentVersionsAreAFault) {
    installBoth();
    installPlugin(u8"plug-ins/older/ImporterOrvantis.prm");
    std::string bytes = read(u8"plug-ins/older/ImporterOrvantis.prm");
    // The fixed part of the version resource: mark, version of the structure, version of the file.
    const std::size_t at = bytes.find("\xBD\x04\xEF\xFE");
    ASSERT_NE(at, std::string::npos);
    bytes[at + 8] = 77;
    orvantis::test::writeFile(folder / "plug-ins" / "older" / "ImporterOrvantis.prm", bytes);
    EXPECT_EQ(doctor(), kFailed);
    EXPECT_THAT(text, HasSubstr("FAIL  installed: 2 copies with different versions"));
    EXPECT_THAT(text, HasSubstr("ImporterOrvantis.prm: version " ORVANTIS_PROJECT_VERSION));
    EXPECT_THAT(text, HasSubstr(".77."));
    EXPECT_THAT(text, HasSubstr("\n1 to repair.\n"));
}

TEST_F(ImporterHostDoctor, CopiesOfOneVersionAreAWarning) {
    installBoth();
    installPlugin(u8"plug-ins/again/IMPORTERORVANTIS.PRM");
    EXPECT_EQ(doctor(), kSuccess) << text;
    EXPECT_THAT(text, HasSubstr("warn  installed: 2 copies"));
}

TEST_F(ImporterHostDoctor, APluginThatTheHostCannotTakeIsAFault) {
    installCodec();
    const std::u8string_view place = u8"plug-ins/ImporterOrvantis.prm";
    write(place, smallPe({.machine = PeFile::kMachineX86}));
    EXPECT_EQ(doctor(), kFailed);
    EXPECT_THAT(text, HasSubstr("FAIL  plug-in file: "));
    EXPECT_THAT(text, HasSubstr("32-bit library; the host needs a 64-bit x64 library"));
    EXPECT_THAT(text, HasSubstr("FAIL  loading: "));
    write(place, Bytes(3000, 'x'));
    EXPECT_EQ(doctor(), kFailed);
    EXPECT_THAT(text, HasSubstr("no Windows library"));
}

TEST_F(ImporterHostDoctor, AClipThatIsNoAviIsAFault) {
    installBoth();
    EXPECT_EQ(doctor({write(u8"text.avi", Bytes(100, 'x'))}), kFailed);
    EXPECT_THAT(text, HasSubstr("FAIL  clip: '"));
    EXPECT_THAT(text, HasSubstr("is no AVI file that can be used"));
    EXPECT_EQ(doctor({in(u8"missing.avi")}), kFailed);
    EXPECT_THAT(text, HasSubstr("missing.avi' cannot be read"));
}

TEST_F(ImporterHostDoctor, AClipOfAnotherCodecIsAFaultThatNamesIt) {
    installBoth();
    EXPECT_EQ(doctor({write(u8"a.avi", clips::builder({.tag = "XYZ1"}).build())}), kFailed);
    EXPECT_THAT(text, HasSubstr("its pictures are coded as 'XYZ1'"));
}

TEST_F(ImporterHostDoctor, APictureThatCannotBeReadIsAFault) {
    installBoth();
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    for (std::uint32_t i = 0; i < 3; ++i) {
        avi.addChunk(0, clips::codedPicture(i));
    }
    Bytes bytes = avi.build();
    // The place of the middle one of the 16-byte entries of idx1.
    for (std::size_t i = 0; i < 3; ++i) {
        bytes[avi.idx1Offset() + 8 + 16 + 8 + i] = 0x7F;
    }
    EXPECT_EQ(doctor({write(u8"a.avi", bytes)}), kFailed);
    EXPECT_THAT(text, HasSubstr("ok    decoding: frame 0 as "));
    EXPECT_THAT(text, HasSubstr("FAIL  decoding: frame 1: "));
    EXPECT_THAT(text, HasSubstr("warn  clip: Stream 0 (pictures): 1 of 3 chunks lie behind the end"));
    EXPECT_THAT(text, HasSubstr("ok    sound: the clip has none\n"));
}

TEST_F(ImporterHostDoctor, SoundThatCannotBePlayedIsAWarningWithItsReason) {
    installBoth();
    AviBuilder avi;
    auto sound = orvantis::test::pcmStream(2, clips::kSampleRate, 16);
    sound.format[0] = 0x55;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1)).addStream(sound);
    avi.addChunk(0, clips::codedPicture(0)).addFilledChunk(1, 100, 7);
    EXPECT_EQ(doctor({write(u8"a.avi", avi.build())}), kSuccess) << text;
    EXPECT_THAT(text, HasSubstr("warn  sound: stream 1 of the file stays silent. "));
    EXPECT_THAT(text, HasSubstr("-> convert it to uncompressed PCM"));
}

TEST_F(ImporterHostDoctor, JsonHoldsTheSameAndColoursCanBeHad) {
    installBoth();
    EXPECT_EQ(doctor({"--json"}), kSuccess);
    const auto json = nlohmann::json::parse(text);
    EXPECT_EQ(json["bad"], 0);
    EXPECT_GT(json["good"], 4);
    EXPECT_EQ(doctor({"--color"}), kSuccess);
    EXPECT_THAT(text, HasSubstr("\x1b[32mok  \x1b[0m  loading: "));
    EXPECT_EQ(run({"doctor", "--nonesuch"}), kUsage);
}

}  // namespace
