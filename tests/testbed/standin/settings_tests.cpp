// Fault plans, settings, trace and gate.

#include "standin/settings.h"

#include <gtest/gtest.h>

#include <thread>

#include "standin/error_codes.h"
#include "standin/trace.h"
#include "tests/testbed/standin/standin_test_support.h"

namespace orvantis::standin::test {
namespace {

// The codes that the first calls of a function get; 0 = none.
std::vector<std::int32_t> firstCalls(const char* text, Function function, int count = 4) {
    FaultPlan plan(text);
    std::vector<std::int32_t> codes;
    codes.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        codes.push_back(plan.next(function).value_or(0));
    }
    return codes;
}

using Codes = std::vector<std::int32_t>;

TEST(FaultPlan, TheNthCallOfThatFunctionFailsOnce) {
    EXPECT_EQ(firstCalls("decompress:3", Function::kDecompress), (Codes{0, 0, 1900, 0}));
    EXPECT_EQ(firstCalls("decompress:3", Function::kDecompressBegin), (Codes{0, 0, 0, 0}));
}

TEST(FaultPlan, ACodeCanBeGiven) {
    EXPECT_EQ(firstCalls("open:1=1234", Function::kOpen), (Codes{1234, 0, 0, 0}));
    EXPECT_EQ(firstCalls("open:1=-5", Function::kOpen), (Codes{-5, 0, 0, 0}));
    EXPECT_EQ(firstCalls("open:1=2147483647", Function::kOpen), (Codes{2147483647, 0, 0, 0}));
}

TEST(FaultPlan, EveryCallOrAllFromOneOnCanFail) {
    EXPECT_EQ(firstCalls("close:*", Function::kClose), (Codes{1900, 1900, 1900, 1900}));
    EXPECT_EQ(firstCalls("close:3+=7", Function::kClose), (Codes{0, 0, 7, 7}));
}

TEST(FaultPlan, TheFirstEntryThatFitsCounts) {
    EXPECT_EQ(firstCalls("open:2=5,open:2+=6", Function::kOpen), (Codes{0, 5, 6, 6}));
}

TEST(FaultPlan, BlanksEmptyEntriesAndRemarksAreIgnored) {
    EXPECT_EQ(firstCalls(" , open:2=5 ,,\t# second run: open:1,", Function::kOpen), (Codes{0, 5, 0, 0}));
    EXPECT_EQ(firstCalls("", Function::kOpen), (Codes{0, 0, 0, 0}));
}

TEST(FaultPlan, EveryFunctionCanBeNamed) {
    for (std::size_t i = 0; i < kFunctionCount; ++i) {
        const auto function = static_cast<Function>(i);
        const std::string text = std::string(functionName(function)) + ":1=9";
        EXPECT_EQ(firstCalls(text.c_str(), function), (Codes{9, 0, 0, 0})) << text;
    }
}

TEST(FaultPlan, WhatCannotBeUnderstoodIsRefusedByName) {
    for (const char* text :
         {"open", "open:", "open:0", "open:-1", "open:1=", "open:1=0", "open:1=x", "open:1=2147483648",
          "open:1x", "open:+", "open:**", "orvantis_open:1", "Open:1", ":1", "open:1 =5", "open:1;close:1"}) {
        try {
            const FaultPlan plan(std::string("close:1, ") + text);
            ADD_FAILURE() << text;
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()),
                      "ORVANTIS_STANDIN_FAIL: '" + std::string(text) + "' cannot be understood");
        }
    }
}

TEST(SettingsReader, NothingSetIsTheDefault) {
    FakeEnvironment environment;
    const auto first = defaultSettings();
    EXPECT_EQ(readSettings(environment.reader(), first), first);
    EXPECT_EQ(first->gate, nullptr);
    EXPECT_FALSE(first->nullDecode);
    EXPECT_EQ(first->delay.count(), 0);
    EXPECT_TRUE(first->texts.log.empty());
}

TEST(SettingsReader, CountingRestartsOnlyWhenThePlansTextChanges) {
    FakeEnvironment environment;
    environment["ORVANTIS_STANDIN_FAIL"] = "open:2=5";
    const auto first = readSettings(environment.reader(), defaultSettings());
    EXPECT_EQ(first->faults->next(Function::kOpen), std::nullopt);
    EXPECT_EQ(readSettings(environment.reader(), first), first);
    environment["ORVANTIS_STANDIN_DECODE"] = "null";
    const auto second = readSettings(environment.reader(), first);
    EXPECT_TRUE(second->nullDecode);
    EXPECT_EQ(second->faults->next(Function::kOpen), 5);
    environment["ORVANTIS_STANDIN_FAIL"] = "open:2=5,#again";
    const auto third = readSettings(environment.reader(), second);
    EXPECT_EQ(third->faults->next(Function::kOpen), std::nullopt);
    EXPECT_EQ(third->faults->next(Function::kOpen), 5);
}

TEST(SettingsReader, WhatCannotBeUsedIsRefusedByName) {
    const std::pair<const char*, const char*> cases[] = {
        {"ORVANTIS_STANDIN_FAIL", "open"},         {"ORVANTIS_STANDIN_DECODE", "nul"},
        {"ORVANTIS_STANDIN_DELAY_US", "-1"},       {"ORVANTIS_STANDIN_DELAY_US", "10000001"},
        {"ORVANTIS_STANDIN_DELAY_US", "5 ms"},     {"ORVANTIS_STANDIN_GATE", "a/b"},
        {"ORVANTIS_STANDIN_GATE", "with a blank"}, {"ORVANTIS_STANDIN_LOG", "/no/such/folder/trace.txt"},
    };
    for (const auto& [name, text] : cases) {
        FakeEnvironment environment;
        environment[name] = text;
        try {
            readSettings(environment.reader(), defaultSettings());
            ADD_FAILURE() << name << "=" << text;
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()).rfind(std::string(name) + ": '" + text + "' cannot be ", 0),
                      0U)
                << error.what();
        }
    }
}

TEST(SettingsReader, DelayIsInMicroseconds) {
    FakeEnvironment environment;
    environment["ORVANTIS_STANDIN_DELAY_US"] = "10000000";
    EXPECT_EQ(readSettings(environment.reader(), defaultSettings())->delay, std::chrono::seconds(10));
}

TEST(TraceFile, LinesAndThreadsAreNumberedAndAppended) {
    const TemporaryFile file;
    file.write({'o', 'l', 'd', '\n'});
    ASSERT_TRUE(Trace::canAppend(file.utf8Path()));
    Trace trace;
    trace.append(file.utf8Path(), "one");
    std::thread([&] { trace.append(file.utf8Path(), "two"); }).join();
    trace.append(file.utf8Path(), "three");
    EXPECT_EQ(file.lines(), (std::vector<std::string>{"old", "#1 T1 one", "#2 T2 two", "#3 T1 three"}));
}

TEST(TraceFile, ArgumentsAreShownWithoutAddresses) {
    const OrvantisFrameFormat format{1, 2, 254, 1, 5, 6, 7, 8, 4294967295U};
    EXPECT_EQ(traceText(&format), "{1,2,254,1,5,6,7,8,4294967295}");
    EXPECT_EQ(traceText(static_cast<const OrvantisFrameFormat*>(nullptr)), "null");
    char pixel = 0;
    const OrvantisOutputBuffer up{&pixel, 0xFFFFFF80U, 4294967168U};
    EXPECT_EQ(traceText(&up), "{pixels,pitch -128,total 4294967168}");
    const OrvantisOutputBuffer none{nullptr, 128, 256};
    EXPECT_EQ(traceText(&none), "{null,pitch 128,total 256}");
    EXPECT_EQ(traceText(static_cast<const OrvantisOutputBuffer*>(nullptr)), "null");
    EXPECT_EQ(traceBytes(&pixel, 1), "{1 bytes}");
    EXPECT_EQ(traceBytes(nullptr, 40), "{null,40 bytes}");
    EXPECT_EQ(traceHandle(0xABCD1234U), "0xabcd1234");
}

TEST(GateTest, ACallWaitsUntilItIsLetThrough) {
    const std::string name = uniqueName();
    Gate::remove(name);
    Gate test(name);
    bool passed = false;
    std::thread caller([&] { passed = Gate(name).passThrough(); });
    EXPECT_TRUE(test.waitForArrival());
    test.release();
    caller.join();
    EXPECT_TRUE(passed);
    Gate::remove(name);
}

TEST(GateTest, PermitsGivenAheadAreKept) {
    const std::string name = uniqueName();
    Gate::remove(name);
    Gate gate(name);
    gate.release(2);
    EXPECT_TRUE(gate.passThrough());
    EXPECT_TRUE(gate.passThrough());
    EXPECT_TRUE(gate.waitForArrival(std::chrono::milliseconds(0)));
    EXPECT_TRUE(gate.waitForArrival(std::chrono::milliseconds(0)));
    EXPECT_FALSE(gate.waitForArrival(std::chrono::milliseconds(0)));
    EXPECT_FALSE(gate.passThrough(std::chrono::milliseconds(1)));
    Gate::remove(name);
}

}  // namespace
}  // namespace orvantis::standin::test
