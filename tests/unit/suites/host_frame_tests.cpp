// Who owns a host frame, and that it is given back once.
#include "suites/host_frame.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace orvantis {
namespace {

std::vector<host::PPixHand> disposed;

host::prSuiteError recordDispose(host::PPixHand frame) {
    disposed.push_back(frame);
    return 0;
}

class FrameOwnership : public testing::Test {
 protected:
    FrameOwnership() {
        suite.Dispose = recordDispose;
        disposed.clear();
    }

    host::PPixSuite suite{};
    host::PPixContents* contents[2]{};
    host::PPixHand first = &contents[0];
    host::PPixHand second = &contents[1];
};

TEST_F(FrameOwnership, DroppedFrameIsDisposedOfOnce) {
    { const HostFrame frame(suite, first); }
    EXPECT_EQ(disposed, std::vector{first});
}

TEST_F(FrameOwnership, ReleasedFrameIsTheHosts) {
    {
        HostFrame frame(suite, first);
        EXPECT_EQ(frame.release(), first);
        EXPECT_FALSE(frame);
        EXPECT_EQ(frame.get(), nullptr);
    }
    EXPECT_TRUE(disposed.empty());
}

TEST_F(FrameOwnership, EmptyFrameDisposesOfNothing) {
    {
        HostFrame frame;
        EXPECT_FALSE(frame);
        frame.reset();
        EXPECT_EQ(frame.release(), nullptr);
    }
    EXPECT_TRUE(disposed.empty());
}

TEST_F(FrameOwnership, MovedFrameHasOneOwner) {
    {
        HostFrame frame(suite, first);
        HostFrame other(std::move(frame));
        EXPECT_EQ(other.get(), first);
        HostFrame third;
        third = std::move(other);
        EXPECT_EQ(third.get(), first);
        EXPECT_TRUE(disposed.empty());
    }
    EXPECT_EQ(disposed, std::vector{first});
}

TEST_F(FrameOwnership, ReplacedFrameIsDisposedOf) {
    HostFrame frame(suite, first);
    frame = HostFrame(suite, second);
    EXPECT_EQ(disposed, std::vector{first});
    EXPECT_EQ(frame.get(), second);
}

}  // namespace
}  // namespace orvantis
