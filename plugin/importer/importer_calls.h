// Which importers the host holds, and which of its calls are on each. The host calls from any thread, several
// at once on one file, and closes a file while another thread still asks for its frames; it also calls back
// from inside a call. So every call is counted from its start to its end, and private data is looked up
// before anything behind it is touched.
#pragma once

#include <memory>

#include "importer/call_turns.h"
#include "importer/orvantis_importer.h"

namespace orvantis {

struct LiveImporter;

/// Gives the importer to the host, which knows it by the returned address until it is closed. Throws
/// std::bad_alloc. Any thread.
OrvantisImporter* publishImporter(std::unique_ptr<OrvantisImporter> importer);

/// One host call on an importer, for as long as it runs. Any thread.
class ImporterCall {
 public:
    enum class Kind {
        kShared,     ///< side by side with other calls
        kExclusive,  ///< changes the file or the analyses, so it waits until all other calls have left
    };

    /// Throws std::logic_error when `privateData` is null or no importer that the host holds, and for an
    /// exclusive call that this thread makes from inside another one on the same importer.
    explicit ImporterCall(void* privateData, Kind kind = Kind::kShared);
    /// Carries out what quietImporter and closeImporter have left to this call.
    ~ImporterCall();
    ImporterCall(const ImporterCall&) = delete;
    ImporterCall& operator=(const ImporterCall&) = delete;

    OrvantisImporter& importer() const noexcept;

 private:
    LiveImporter* m_live;
    CallTurn m_turn;
    CallTurn m_quietTurn;
};

/// Closes the importer's file and gives up its buffers as soon as the calls of other threads have left; from
/// inside a call on it of this thread: returns at once, and that call does it when it leaves. Throws
/// std::logic_error as a call does.
void quietImporter(void* privateData);

/// The same, and destroys the importer. Calls that come after this one find none; those that wait already are
/// still served.
void closeImporter(void* privateData);

}  // namespace orvantis
