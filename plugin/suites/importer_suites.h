// The six host suites of one open file, acquired in a fixed order and released in the reverse one.
#pragma once

#include <memory>

#include "host/suites.h"
#include "suites/suite_ref.h"

namespace orvantis {

/// Declared in the order in which they are acquired; destruction releases the audio suite first, the creator
/// last.
struct ImporterSuites {
    explicit ImporterSuites(const host::SPBasicSuite* basicSuite);

    TypedSuiteRef<host::PPixCreatorSuite> ppixCreator;
    /// Held and not called: a host that cannot give it is to be told on opening, and frames are handed over,
    /// not put into the cache.
    TypedSuiteRef<host::PPixCacheSuite> ppixCache;
    TypedSuiteRef<host::PPixSuite> ppix;
    TypedSuiteRef<host::TimeSuite> time;
    TypedSuiteRef<host::ImageProcessingSuite> imageProcessing;
    TypedSuiteRef<host::AudioSuite> audio;
};

/// Creates the suites of one importer on first use. Handed to the analyses so that they need not know the
/// importer. First use happens while the file is described, when no other call is on the importer.
class LazyImporterSuites {
 public:
    explicit LazyImporterSuites(const host::SPBasicSuite* basicSuite) noexcept : m_basicSuite(basicSuite) {}

    ImporterSuites& get() {
        if (!m_suites) {
            m_suites = std::make_unique<ImporterSuites>(m_basicSuite);
        }
        return *m_suites;
    }

 private:
    const host::SPBasicSuite* m_basicSuite;
    std::unique_ptr<ImporterSuites> m_suites;
};

}  // namespace orvantis
