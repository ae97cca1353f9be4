// What the doctor says of crash dumps.
#include <gtest/gtest.h>

#include "tool/doctor/doctor_dumps.h"

namespace simhost::tool {
namespace {

TEST(DoctorDumps, OffIsNoFaultAndNamesTheSwitch) {
    const std::vector<HostDumps> hosts = {{"Adobe Premiere Pro.exe", {.folder = "C:\\d"}, {}},
                                          {"AfterFX.exe", {.folder = "C:\\d"}, {}}};
    const Check check = checkDumps(hosts);
    EXPECT_EQ(check.state, CheckState::kGood);
    EXPECT_EQ(check.found,
              "the system writes none when a host crashes; to switch them on, as an administrator: "
              "importer_host doctor --dumps on");
    EXPECT_EQ(check.advice, "");
}

TEST(DoctorDumps, OnNamesTheHostsAndTheFolder) {
    const std::vector<HostDumps> hosts = {{"Adobe Premiere Pro.exe", {.on = true, .folder = "C:\\d"}, {}},
                                          {"AfterFX.exe", {.folder = "C:\\other"}, {}},
                                          {"Adobe Media Encoder.exe", {.on = true, .folder = "C:\\d"}, {}}};
    const Check check = checkDumps(hosts);
    EXPECT_EQ(check.state, CheckState::kGood);
    EXPECT_EQ(
        check.found,
        "the system writes them for Adobe Premiere Pro.exe, Adobe Media Encoder.exe to C:\\d; none so far");
}

TEST(DoctorDumps, ADumpIsNamedAndToBeSent) {
    const std::vector<HostDumps> hosts = {
        {"a.exe", {.on = true, .folder = "C:\\d"}, {"C:\\d\\a.exe.2.dmp", "C:\\d\\a.exe.1.dmp"}}};
    const Check check = checkDumps(hosts);
    EXPECT_EQ(check.state, CheckState::kWarning);
    EXPECT_EQ(check.found, "the system writes them for a.exe to C:\\d; the newest is C:\\d\\a.exe.2.dmp");
    EXPECT_EQ(check.advice, "send it with a report of the crash; it holds parts of the host's memory");
}

}  // namespace
}  // namespace simhost::tool
