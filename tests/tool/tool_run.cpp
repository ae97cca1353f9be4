#include "tests/tool/tool_run.h"

#include <algorithm>
#include <filesystem>

#include "tests/support/child_process.h"
#include "tests/tool/stream_capture.h"

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;

namespace {

// Windows ends lines of text streams with two characters.
std::string withoutReturns(std::string text) {
    std::erase(text, '\r');
    return text;
}

}  // namespace

ToolRun runTool(const std::vector<std::string>& arguments) {
    const orvantis::test::TempFolder folder;
    ToolRun result;
    {
        const orvantis::test::StreamCapture out(1, folder / "out");
        const orvantis::test::StreamCapture err(2, folder / "err");
        result.code = orvantis::test::ChildProcess(ORVANTIS_BUILT_TOOL, arguments).wait();
    }
    result.out = withoutReturns(orvantis::test::readFile(folder / "out"));
    result.err = withoutReturns(orvantis::test::readFile(folder / "err"));
    return result;
}

std::string ToolTest::write(std::string_view name, const std::vector<std::uint8_t>& bytes) const {
    return write(name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

std::string ToolTest::write(std::u8string_view name, const std::vector<std::uint8_t>& bytes) const {
    std::filesystem::create_directories((folder / name).parent_path());
    orvantis::test::writeFile(folder / name,
                              std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    return in(name);
}

int ToolTest::run(const std::vector<std::string>& arguments) {
    return orvantis::test::ChildProcess(ORVANTIS_BUILT_TOOL, arguments).wait();
}

std::string ToolTest::write(std::string_view name, std::string_view text) const {
    std::filesystem::create_directories((folder / name).parent_path());
    orvantis::test::writeFile(folder / name, text);
    return in(name);
}

std::vector<std::string> ToolTest::namesIn(const std::filesystem::path& path) {
    std::vector<std::string> out;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        out.push_back(orvantis::test::utf8Path(entry.path().filename()));
    }
    std::sort(out.begin(), out.end());
    return out;
}

Bytes clipWithALostFrame() {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    for (std::uint32_t i = 0; i < 5; ++i) {
        avi.addChunk(0, clips::codedPicture(i));
    }
    Bytes bytes = avi.build();
    // The place of the third of the 16-byte entries of idx1.
    for (std::size_t i = 0; i < 3; ++i) {
        bytes[avi.idx1Offset() + 8 + 2 * 16 + 8 + i] = 0x7F;
    }
    return bytes;
}

orvantis::test::StreamPlan compressedSound() {
    auto plan = orvantis::test::pcmStream(2, 8000, 16);
    plan.format[0] = 0x00;
    plan.format[1] = 0x20;
    return plan;
}
