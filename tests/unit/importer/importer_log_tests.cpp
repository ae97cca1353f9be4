// The lines of the log that tell which importer a call is for.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "importer/orvantis_importer.h"
#include "tests/support/captured_log.h"
#include "tests/support/temp_folder.h"

namespace orvantis {
namespace {

using Lines = std::vector<std::string>;

TEST(ImporterLog, AnImporterWithoutAFileSaysSo) {
    const OrvantisImporter importer(nullptr);
    test::CapturedLog log;
    importer.logFile();
    EXPECT_EQ(log.lines(), (Lines{"m_filePathUtf8: ''", "m_streamIndex:  -1"}));
}

TEST(ImporterLog, TheFileIsToldInUtf8WhateverItsName) {
    const test::TempFolder folder;
    // Latin, Cyrillic, Chinese, a character outside the basic plane, and what printf would take for a format.
    for (const char8_t* name :
         {u8"Größe.avi", u8"Кино.avi", u8"影片.avi", u8"\U0001F3AC.avi", u8"100% %s%n.avi"}) {
        const std::filesystem::path path = folder / name;
        test::writeFile(path, "");
        OrvantisImporter importer(nullptr);
        test::CapturedLog log;
        ASSERT_TRUE(importer.open(test::utf16Path(path).c_str(), 2, 0));
        importer.logFile();
        const std::string utf8 = test::utf8Path(path);
        EXPECT_EQ(log.lines(), (Lines{"Open: '" + utf8 + "', stream: 2", "m_filePathUtf8: '" + utf8 + "'",
                                      "m_streamIndex:  2"}));
    }
}

TEST(ImporterLog, AFileThatCannotBeOpenedIsNotTheImportersFile) {
    const test::TempFolder folder;
    const std::filesystem::path missing = folder / u8"missing.avi";
    OrvantisImporter importer(nullptr);
    test::CapturedLog log;
    EXPECT_FALSE(importer.open(test::utf16Path(missing).c_str(), 0, 0));
    importer.logFile();
    EXPECT_EQ(log.lines(), (Lines{"Open: '" + test::utf8Path(missing) + "', stream: 0", "m_filePathUtf8: ''",
                                  "m_streamIndex:  -1"}));
}

}  // namespace
}  // namespace orvantis
