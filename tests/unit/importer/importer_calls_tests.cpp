// The registry of importers: whom it knows, who waits for whom, and when an importer goes. Whether an
// importer still lives is told by its last line in the log.
#include "importer/importer_calls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/captured_log.h"
#include "tests/support/latch.h"

namespace orvantis {
namespace {

constexpr auto kWrongCodeWouldBeDone = std::chrono::milliseconds(50);

/// What the construction of a call throws; empty when nothing.
std::string refusal(void* privateData, ImporterCall::Kind kind = ImporterCall::Kind::kShared) {
    try {
        const ImporterCall call(privateData, kind);
        return {};
    } catch (const std::logic_error& error) {
        return error.what();
    }
}

std::string refusedClose(void* privateData) {
    try {
        closeImporter(privateData);
        return {};
    } catch (const std::logic_error& error) {
        return error.what();
    }
}

class ImporterCallsTest : public testing::Test {
 protected:
    OrvantisImporter* open() { return publishImporter(std::make_unique<OrvantisImporter>(nullptr)); }
    std::ptrdiff_t destroyed() {
        const std::vector<std::string> lines = m_log.lines();
        return std::ranges::count(lines, "OrvantisImporter::~OrvantisImporter()");
    }

    test::CapturedLog m_log;
};

TEST_F(ImporterCallsTest, OnlyWhatTheHostHoldsIsAnImporter) {
    EXPECT_EQ(refusal(nullptr), "importer is NULL");
    int foreign = 0;
    EXPECT_EQ(refusal(&foreign), "importer is not open");
    EXPECT_EQ(refusal(reinterpret_cast<void*>(std::uintptr_t{1})), "importer is not open");
    EXPECT_EQ(refusedClose(&foreign), "importer is not open");
    EXPECT_THROW(quietImporter(&foreign), std::logic_error);

    OrvantisImporter* const importer = open();
    {
        const ImporterCall call(importer);
        EXPECT_EQ(&call.importer(), importer);
    }
    closeImporter(importer);
    EXPECT_EQ(destroyed(), 1);
    EXPECT_EQ(refusal(importer), "importer is not open");
    EXPECT_EQ(refusedClose(importer), "importer is not open") << "closed once";
}

TEST_F(ImporterCallsTest, ManyImportersAreKeptApart) {
    std::vector<OrvantisImporter*> importers(2000);
    for (OrvantisImporter*& importer : importers) {
        importer = open();
    }
    for (std::size_t i = 0; i < importers.size(); i += 2) {
        closeImporter(importers[i]);
    }
    for (std::size_t i = 0; i < importers.size(); ++i) {
        ASSERT_EQ(refusal(importers[i]), i % 2 == 0 ? "importer is not open" : "") << i;
    }
    for (std::size_t i = 1; i < importers.size(); i += 2) {
        closeImporter(importers[i]);
    }
    EXPECT_EQ(destroyed(), 2000);
}

TEST_F(ImporterCallsTest, WhatIsLeftToTheOuterCallNamesItsFileAtOnce) {
    const auto named = [this] {
        const std::vector<std::string> lines = m_log.lines();
        return std::ranges::count(lines, "m_streamIndex:  -1");
    };
    OrvantisImporter* const importer = open();
    {
        const ImporterCall call(importer);
        quietImporter(importer);
        EXPECT_EQ(named(), 1);
        closeImporter(importer);
        EXPECT_EQ(named(), 2);
    }
    EXPECT_EQ(destroyed(), 1);
}

TEST_F(ImporterCallsTest, CloseWaitsForTheCallsOfOtherThreads) {
    OrvantisImporter* const importer = open();
    test::Latch inside(2);
    test::Latch leave(1);
    std::vector<std::thread> callers;
    for (int i = 0; i < 2; ++i) {
        callers.emplace_back([&] {
            const ImporterCall call(importer);
            inside.countDown();
            leave.wait();
            call.importer().logFile();
        });
    }
    inside.wait();
    auto closed = std::async(std::launch::async, [&] { closeImporter(importer); });
    EXPECT_EQ(closed.wait_for(kWrongCodeWouldBeDone), std::future_status::timeout);
    EXPECT_EQ(destroyed(), 0);
    leave.countDown();
    closed.get();
    EXPECT_EQ(destroyed(), 1);
    for (std::thread& caller : callers) {
        caller.join();
    }
}

TEST_F(ImporterCallsTest, CallsOnOtherImportersAreNotWaitedFor) {
    OrvantisImporter* const busy = open();
    OrvantisImporter* const idle = open();
    const ImporterCall call(busy);
    std::thread([&] { closeImporter(idle); }).join();
    EXPECT_EQ(destroyed(), 1);
    std::thread([&] { EXPECT_EQ(refusal(busy), ""); }).join();
    closeImporter(busy);  // leaves it to the call
}

TEST_F(ImporterCallsTest, ACloseFromInsideACallIsCarriedOutByTheOutermostOne) {
    OrvantisImporter* const importer = open();
    {
        const ImporterCall outer(importer);
        {
            const ImporterCall inner(importer);
            closeImporter(importer);
            EXPECT_EQ(refusal(importer), "importer is not open") << "for the host it is closed";
            EXPECT_EQ(refusedClose(importer), "importer is not open");
        }
        EXPECT_EQ(destroyed(), 0) << "the outer call still works on it";
        outer.importer().logFile();
    }
    EXPECT_EQ(destroyed(), 1);
}

TEST_F(ImporterCallsTest, ACloseFromInsideACallWaitsForOtherThreadsToo) {
    OrvantisImporter* const importer = open();
    test::Latch inside(1);
    test::Latch leave(1);
    std::thread other([&] {
        const ImporterCall call(importer);
        inside.countDown();
        leave.wait();
        call.importer().logFile();
    });
    inside.wait();
    auto closed = std::async(std::launch::async, [&] {
        const ImporterCall call(importer);
        closeImporter(importer);
    });
    EXPECT_EQ(closed.wait_for(kWrongCodeWouldBeDone), std::future_status::timeout);
    EXPECT_EQ(destroyed(), 0);
    leave.countDown();
    closed.get();
    EXPECT_EQ(destroyed(), 1);
    other.join();
}

TEST_F(ImporterCallsTest, AQuietFromInsideACallLeavesTheImporter) {
    OrvantisImporter* const importer = open();
    importer->spareRequest().keep(std::make_unique<FrameRequest>());
    {
        const ImporterCall outer(importer);
        quietImporter(importer);
        std::unique_ptr<FrameRequest> kept = importer->spareRequest().take();
        EXPECT_NE(kept, nullptr) << "not before the call leaves";
        importer->spareRequest().keep(std::move(kept));
    }
    EXPECT_EQ(importer->spareRequest().take(), nullptr);
    EXPECT_EQ(refusal(importer), "");
    closeImporter(importer);
}

TEST_F(ImporterCallsTest, AQuietFromInsideACallWaitsForOtherThreads) {
    OrvantisImporter* const importer = open();
    test::Latch inside(1);
    test::Latch leave(1);
    std::thread other([&] {
        const ImporterCall call(importer);
        inside.countDown();
        leave.wait();
    });
    inside.wait();
    auto quieted = std::async(std::launch::async, [&] {
        const ImporterCall call(importer);
        quietImporter(importer);
    });
    EXPECT_EQ(quieted.wait_for(kWrongCodeWouldBeDone), std::future_status::timeout);
    leave.countDown();
    quieted.get();
    other.join();
    closeImporter(importer);
}

TEST_F(ImporterCallsTest, ACallThatComesAfterAQuietFromInsideACallFindsTheImporterQuieted) {
    OrvantisImporter* const importer = open();
    std::future<bool> later;
    {
        const ImporterCall outer(importer);
        importer->spareRequest().keep(std::make_unique<FrameRequest>());
        quietImporter(importer);
        later = std::async(std::launch::async, [importer] {
            const ImporterCall call(importer, ImporterCall::Kind::kExclusive);
            const bool quieted = importer->spareRequest().take() == nullptr;
            importer->spareRequest().keep(std::make_unique<FrameRequest>());
            return quieted;
        });
        EXPECT_EQ(later.wait_for(kWrongCodeWouldBeDone), std::future_status::timeout);
    }
    EXPECT_TRUE(later.get());
    EXPECT_NE(importer->spareRequest().take(), nullptr) << "the quiet came before that call, not after it";
    closeImporter(importer);
}

TEST_F(ImporterCallsTest, AQuietAndACloseFromInsideOneCallBothTakeEffect) {
    OrvantisImporter* const importer = open();
    {
        const ImporterCall outer(importer);
        quietImporter(importer);
        quietImporter(importer);
        closeImporter(importer);
        EXPECT_EQ(destroyed(), 0);
    }
    EXPECT_EQ(destroyed(), 1);
}

TEST_F(ImporterCallsTest, TwoThreadsThatQuietFromInsideTheirCallsDoNotWaitForEachOther) {
    OrvantisImporter* const importer = open();
    test::Latch inside(2);
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            const ImporterCall call(importer);
            inside.arriveAndWait();
            quietImporter(importer);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    closeImporter(importer);
    EXPECT_EQ(destroyed(), 1);
}

TEST_F(ImporterCallsTest, AQuietAndACloseFromInsideTwoThreadsCallsBothEnd) {
    OrvantisImporter* const importer = open();
    test::Latch inside(2);
    test::Latch quieted(1);
    std::thread quieting([&] {
        const ImporterCall call(importer);
        inside.arriveAndWait();
        quietImporter(importer);
        quieted.countDown();
    });
    std::thread closing([&] {
        const ImporterCall call(importer);
        inside.arriveAndWait();
        quieted.wait();
        closeImporter(importer);
    });
    quieting.join();
    closing.join();
    EXPECT_EQ(destroyed(), 1);
}

TEST_F(ImporterCallsTest, AnExclusiveCallFromInsideACallIsRefused) {
    OrvantisImporter* const importer = open();
    {
        const ImporterCall outer(importer);
        EXPECT_EQ(refusal(importer, ImporterCall::Kind::kExclusive),
                  "importer is in use by a call of the same thread");
        EXPECT_EQ(refusal(importer), "");
    }
    EXPECT_EQ(refusal(importer, ImporterCall::Kind::kExclusive), "");
    closeImporter(importer);
}

TEST_F(ImporterCallsTest, AnExclusiveCallIsAlone) {
    OrvantisImporter* const importer = open();
    test::Latch start(4);
    std::atomic<int> inside{0};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            start.arriveAndWait();
            for (int i = 0; i < 2000; ++i) {
                if (t == 0) {
                    const ImporterCall call(importer, ImporterCall::Kind::kExclusive);
                    if (++inside != 1) {
                        ++wrong;
                    }
                    --inside;
                } else {
                    const ImporterCall call(importer);
                    ++inside;
                    const ImporterCall inner(importer);
                    --inside;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    closeImporter(importer);
}

}  // namespace
}  // namespace orvantis
