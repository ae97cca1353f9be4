// The order in which a file's suites are acquired is the order of the members.
#include "suites/importer_suites.h"

namespace orvantis {

ImporterSuites::ImporterSuites(const host::SPBasicSuite* basicSuite)
    : ppixCreator(basicSuite, host::kPPixCreatorSuiteName, host::kPPixCreatorSuiteVersion),
      ppixCache(basicSuite, host::kPPixCacheSuiteName, host::kPPixCacheSuiteVersion),
      ppix(basicSuite, host::kPPixSuiteName, host::kPPixSuiteVersion),
      time(basicSuite, host::kTimeSuiteName, host::kTimeSuiteVersion),
      imageProcessing(basicSuite, host::kImageProcessingSuiteName, host::kImageProcessingSuiteVersion),
      audio(basicSuite, host::kAudioSuiteName, host::kAudioSuiteVersion) {
    ppixCreator.acquire();
    ppixCache.acquire();
    ppix.acquire();
    time.acquire();
    imageProcessing.acquire();
    audio.acquire();
}

}  // namespace orvantis
