// Texts that tests compare with as files of tests/golden, which a command writes anew: `./test.sh golden`.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace orvantis::test {

/// Expects `text` (UTF-8, lines ending in "\n") to be that of tests/golden/`name`. With ORVANTIS_WRITE_GOLDEN
/// in the environment it writes the file instead and leaves the test skipped: nothing was compared.
inline void expectGolden(std::string_view name, const std::string& text) {
    const std::string path = ORVANTIS_GOLDEN_FOLDER "/" + std::string(name);
    if (getEnvironment("ORVANTIS_WRITE_GOLDEN")) {
        writeFile(path, text);
        GTEST_SKIP() << "written, not compared: " << path;
    }
    EXPECT_EQ(readFile(path), text) << "tests/golden/" << name
                                    << "; when the change is meant: ./test.sh golden";
}

}  // namespace orvantis::test
