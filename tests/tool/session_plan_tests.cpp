// Plans of random sessions: the same for a number on every system, and nothing that they could hold is left
// out.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "simhost/host_profile.h"
#include "simhost/session.h"
#include "tool/soak/session_clips.h"
#include "tool/soak/session_plan.h"

namespace simhost::tool {
namespace {

std::string wholeText(const SessionPlan& plan) {
    std::string out = plan.text();
    for (const auto& actions : plan.threads) {
        out += "thread\n";
        for (const SessionAction& action : actions) {
            out += action.text() + "\n";
        }
    }
    return out;
}

TEST(SessionPlans, ANumberIsTheSameSessionOnEverySystem) {
    std::string text;
    for (std::uint64_t number = 0; number < 500; ++number) {
        text += wholeText(planSession(1, number));
    }
    for (const SessionClip& clip : sessionClips()) {
        text += std::to_string(hashBytes(clip.bytes.data(), clip.bytes.size())) + "\n";
    }
    // A number that was written down long ago names another session once this changes.
    EXPECT_EQ(hashBytes(text.data(), text.size()), 9161236701994019859u);
}

TEST(SessionPlans, SeedAndNumberBothCount) {
    EXPECT_NE(wholeText(planSession(1, 7)), wholeText(planSession(1, 8)));
    EXPECT_NE(planSession(1, 7).threads.front().size() * 1000 + planSession(1, 7).clip,
              planSession(3, 7).threads.front().size() * 1000 + planSession(3, 7).clip);
    EXPECT_EQ(wholeText(planSession(9, 1234567)), wholeText(planSession(9, 1234567)));
}

TEST(SessionPlans, EverythingThatAHostDoesComesUp) {
    std::set<SessionAct> acts;
    std::set<std::size_t> profiles, clips, threads;
    std::set<Service> services;
    std::set<std::string> codec;
    std::set<ReadFault::Kind> files;
    std::size_t absent = 0, cut = 0, patched = 0, shared = 0, late = 0, unharmed = 0, logs = 0;
    for (std::uint64_t number = 0; number < 3000; ++number) {
        const SessionPlan plan = planSession(5, number);
        profiles.insert(plan.profile);
        clips.insert(plan.clip);
        threads.insert(plan.threads.size());
        for (const auto& actions : plan.threads) {
            for (const SessionAction& action : actions) {
                acts.insert(action.act);
            }
        }
        for (const FaultPlan& fault : plan.hostFaults) {
            services.insert(*fault.service);
        }
        for (const std::string& fault : plan.codecFaults) {
            codec.insert(fault.substr(0, fault.find(':')));
        }
        if (plan.readFault) {
            files.insert(plan.readFault->kind);
        }
        absent += plan.absent ? 1U : 0U;
        cut += plan.cutAt ? 1U : 0U;
        patched += plan.patches.empty() ? 0U : 1U;
        shared += plan.shareAsync ? 1U : 0U;
        late += plan.closeBehindShutdown ? 1U : 0U;
        unharmed += plan.unharmed() ? 1U : 0U;
        logs += sessionWritesLog(5, number * kSessionGroup) ? 1U : 0U;
    }
    EXPECT_EQ(acts.size(), static_cast<std::size_t>(SessionAct::kInit) + 1);
    EXPECT_EQ(profiles.size(), builtinProfiles().size());
    EXPECT_EQ(clips.size(), sessionClips().size());
    EXPECT_EQ(threads, (std::set<std::size_t>{1, 2, 3}));
    EXPECT_EQ(services.size(), 16u);
    EXPECT_EQ(codec.size(), 8u);
    EXPECT_EQ(files.size(), 3u);
    for (const std::size_t count : {absent, cut, patched, shared, late, unharmed, logs}) {
        EXPECT_GT(count, 20u);
    }
}

TEST(SessionPlans, DamageStaysInsideTheFile) {
    for (std::uint64_t number = 0; number < 2000; ++number) {
        const SessionPlan plan = planSession(2, number);
        const std::size_t size = sessionClips()[plan.clip].bytes.size();
        for (const BytePatch& patch : plan.patches) {
            ASSERT_LE(patch.offset + patch.bytes.size(), size) << number;
        }
        if (plan.cutAt) {
            ASSERT_LT(*plan.cutAt, size) << number;
        }
    }
}

}  // namespace
}  // namespace simhost::tool
