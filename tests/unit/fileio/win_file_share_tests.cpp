// Who else may open the file meanwhile. The host, other importers and the user's other programs depend on it.

#include <gtest/gtest.h>

#include <string>

#include "fileio/win_file.h"
#include "tests/support/temp_folder.h"

namespace {

using namespace fileio;
using namespace orvantis::test;

class WinFileShare : public testing::Test {
 protected:
    WinFileShare() { writeFile(m_folder / "a.avi", "0123456789"); }

    bool opens(WinFile& file, int mode) const {
        return file.open(utf8Path(m_folder / "a.avi").c_str(), mode);
    }

    TempFolder m_folder;
    WinFile m_first;
    WinFile m_second;
};

TEST_F(WinFileShare, TwoReadersShareWhenBothSaySo) {
    ASSERT_TRUE(opens(m_first, kOpenRead | kOpenShareRead));
    ASSERT_TRUE(opens(m_second, kOpenRead | kOpenShareRead));
    // Each has a position of its own.
    ASSERT_TRUE(m_first.seek(5));
    EXPECT_EQ(m_second.tell(), 0);
}

TEST_F(WinFileShare, WithoutSharingASecondReaderIsRefused) {
    ASSERT_TRUE(opens(m_first, kOpenRead));
    EXPECT_FALSE(opens(m_second, kOpenRead | kOpenShareRead));
    m_first.close();
    EXPECT_TRUE(opens(m_second, kOpenRead | kOpenShareRead));
}

TEST_F(WinFileShare, AReaderThatDoesNotShareIsRefusedBesideAnother) {
    ASSERT_TRUE(opens(m_first, kOpenRead | kOpenShareRead));
    EXPECT_FALSE(opens(m_second, kOpenRead));
}

TEST_F(WinFileShare, NobodyWritesBesideAReaderAndTheFileStaysWhole) {
    ASSERT_TRUE(opens(m_first, kOpenRead | kOpenShareRead));
    EXPECT_FALSE(opens(m_second, kOpenRead | kOpenWrite | kOpenShareRead));
    EXPECT_FALSE(opens(m_second, kOpenWrite | kOpenShareRead));
    EXPECT_EQ(m_first.size(), 10);
}

TEST_F(WinFileShare, NobodyReadsWithReadSharingBesideAWriter) {
    ASSERT_TRUE(opens(m_first, kOpenRead | kOpenWrite | kOpenShareRead));
    // The reader would have to share writing, which no mode does.
    EXPECT_FALSE(opens(m_second, kOpenRead | kOpenShareRead));
    EXPECT_FALSE(opens(m_second, kOpenWrite | kOpenShareRead));
}

TEST_F(WinFileShare, ClosingGivesTheFileBackAtOnce) {
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(opens(m_first, kOpenRead));
        m_first.close();
        ASSERT_TRUE(opens(m_second, kOpenRead));
        m_second.close();
    }
}

}  // namespace
