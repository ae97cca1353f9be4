// An importer made of lambdas: each test says what a selector does. One lives at a time, because an entry
// point carries no context. Selectors without a handler are answered 3.
#pragma once

#include <cstdint>
#include <functional>
#include <map>

#include "host/records.h"
#include "host/std_parms.h"
#include "host/suites.h"
#include "simhost/plugin.h"

namespace simhost::test {

class FakePlugin {
 public:
    using Handler = std::function<std::int32_t(host::imStdParms* parms, void* param1, void* param2)>;

    FakePlugin();
    FakePlugin(const FakePlugin&) = delete;
    FakePlugin& operator=(const FakePlugin&) = delete;
    ~FakePlugin();

    std::map<std::int32_t, Handler> on;
    std::map<std::int32_t, std::function<std::int32_t(void* param)>> onAsync;
    Plugin plugin;
};

/// The async entry that hands calls to FakePlugin::onAsync.
host::AsyncImportEntryFn fakeAsyncEntry() noexcept;

/// The host's basic suite out of the standard parameters, by the documented way.
host::SPBasicSuite* basicSuiteOf(const host::imStdParms* parms);

/// Acquires a suite; null when refused.
template <class Table>
const Table* acquire(const host::SPBasicSuite* basic, const char* name, std::int32_t version) {
    const void* table = nullptr;
    (void)basic->AcquireSuite(name, version, &table);
    return static_cast<const Table*>(table);
}

/// Makes the fake an importer of a clip of 4 × 3 pixels, ten frames at 25 a second, BGRA and V210, with one
/// stereo stream of 48000 Hz. It takes and gives back suites as a real one does, and paints every byte of a
/// frame with 16 × index + 1; sample n of channel c is n + c / 2.
void makeWellBehaved(FakePlugin& fake);

}  // namespace simhost::test
