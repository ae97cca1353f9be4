// The built command-line tool, run as its users run it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_folder.h"

class ImporterHostTool : public ::testing::Test {
 protected:
    /// Gives the exit code.
    static int run(const std::vector<std::string>& arguments) {
        return orvantis::test::ChildProcess(ORVANTIS_BUILT_TOOL, arguments).wait();
    }
    /// A UTF-8 path in the test's own folder.
    std::string in(std::u8string_view name) const { return orvantis::test::utf8Path(folder / name); }
    /// Gives the path.
    std::string write(std::u8string_view name, const std::vector<std::uint8_t>& bytes) const {
        orvantis::test::writeFile(
            folder / name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
        return in(name);
    }
    std::string read(std::u8string_view name) const { return orvantis::test::readFile(folder / name); }

    orvantis::test::TempFolder folder;
};
