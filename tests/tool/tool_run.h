// Runs the built tool and keeps what it says. The clips are those of the integration tests.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tests/integration/plugin_clips.h"
#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/temp_folder.h"
#include "tool/shared/base/tool_error.h"

struct ToolRun {
    int code = -1;
    std::string out;
    std::string err;

    nlohmann::json json() const { return nlohmann::json::parse(out); }
};

/// UTF-8 arguments.
ToolRun runTool(const std::vector<std::string>& arguments);

class ToolTest : public ::testing::Test {
 protected:
    /// A UTF-8 path in the test's own folder.
    std::string in(std::u8string_view name) const { return orvantis::test::utf8Path(folder / name); }
    std::string in(std::string_view name) const { return orvantis::test::utf8Path(folder / name); }
    /// Gives the path.
    std::string write(std::string_view name, const std::vector<std::uint8_t>& bytes) const;
    std::string write(std::u8string_view name, const std::vector<std::uint8_t>& bytes) const;
    std::string write(std::string_view name, std::string_view text) const;
    std::string read(std::string_view name) const { return orvantis::test::readFile(folder / name); }
    std::string read(std::u8string_view name) const { return orvantis::test::readFile(folder / name); }
    /// Gives the exit code; what the tool says is left to the test's own streams.
    static int run(const std::vector<std::string>& arguments);
    /// A clip that plays, with pictures and sound.
    std::string soundClip(std::string_view name = "clip.avi") const {
        return write(name, clips::builder().build());
    }
    /// The names in a folder, sorted.
    static std::vector<std::string> namesIn(const std::filesystem::path& path);

    orvantis::test::TempFolder folder;
};

/// A clip of five frames whose third one lies behind the end of the file.
orvantis::test::Bytes clipWithALostFrame();
/// Sound that the plug-in cannot use: the format's code is that of AC-3.
orvantis::test::StreamPlan compressedSound();
