// Every single operation of a session on a file fails once. Injected in the native twin of the Windows file.
#include <string>
#include <utility>

#include "tests/faults/fault_session.h"
#include "tests/support/file_hooks.h"
#include "tests/support/thorough.h"

namespace {

using orvantis::test::FileHooks;
using orvantis::test::FileOperationHook;
using orvantis::test::InstalledFileHooks;

constexpr std::pair<const char*, FileOperationHook FileHooks::*> kKinds[] = {
    {"open", &FileHooks::opens}, {"read", &FileHooks::reads}, {"seek", &FileHooks::seeks},
    {"tell", &FileHooks::tells}, {"size", &FileHooks::sizes}, {"write", &FileHooks::writes}};

class FileOperationFaults : public SessionFaults {
 protected:
    std::uint64_t failEach(bool fromThenOn) {
        std::uint64_t total = 0;
        for (const auto& [name, kind] : kKinds) {
            FileOperationHook& hook = (*m_hooks).*kind;
            bool reached = true;
            std::uint64_t last = 0;
            for (std::uint64_t n = 1; reached; n = orvantis::test::nextSample(n, 16, 5)) {
                const std::string what = std::string(name) + ' ' + std::to_string(n);
                const bool good = survives(
                    what,
                    [&](simhost::Host&) {
                        hook.count = 0;
                        hook.failFromThere = fromThenOn;
                        hook.failAt = n;
                    },
                    [&](simhost::Host&) {
                        reached = hook.count >= n;
                        hook.failAt = 0;
                    });
                EXPECT_EQ(m_hooks->opened, m_hooks->closes) << what << " left a file open";
                if (!good || HasFailure() || n >= kMost) {
                    ADD_FAILURE() << "stopped at " << what;
                    return total;
                }
                last = reached ? n : last;
            }
            total += last;
        }
        return total;
    }

 private:
    InstalledFileHooks m_hooks;
};

TEST_F(FileOperationFaults, EachFailsOnce) {
    start();
    const std::uint64_t operations = failEach(false);
    EXPECT_GT(operations, 50U);
    RecordProperty("operations", std::to_string(operations));
}

TEST_F(FileOperationFaults, EachFailsAndSoDoAllOfItsKindBehindIt) {
    start(Log::kOff);
    EXPECT_GT(failEach(true), 50U);
}

}  // namespace
