// The selectors that concern the plug-in as a whole, through the loaded module.
#include <gmock/gmock.h>

#include <cstring>

#include "host/four_char_codes.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_test.h"

namespace {

class PluginSelectors : public PluginTest {};

TEST_F(PluginSelectors, InitSetsPriorityAndAudioConformAndNothingElse) {
    start();
    importer().setRecordFill(0xA7);
    const auto answer = importer().init();
    setInitialised(true);
    EXPECT_EQ(answer.result, host::imNoErr);
    host::imImportInfoRec expected = answer.before;
    expected.priority = 200;
    expected.avoidAudioConform = 1;
    EXPECT_EQ(0, std::memcmp(&expected, &answer.record, sizeof expected));
}

TEST_F(PluginSelectors, SupportsEightIsTheHostsMagicAnswer) {
    start();
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
}

TEST_F(PluginSelectors, UnknownSelectorsAreUnsupported) {
    start();
    for (const std::int32_t selector : {2, 3, 28, 29, 30, 63, 65, 66, 1000, -1, -2147483647}) {
        EXPECT_EQ(importer().call(selector, nullptr, nullptr), host::imUnsupported) << selector;
    }
}

}  // namespace
