// What happens in one random session: which host, which file with which damage, what fails, and what every
// thread of the host asks for. A plan depends on the seed and the session's number alone, never on an answer,
// so that any session can be played again by itself. Pure; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simhost/host.h"

namespace simhost::tool {

enum class SessionAct {
    kOpen,         ///< `number`: stream; on a clip that is open: opens it again
    kInfo,         ///< imGetInfo8 of stream `number`
    kWalk,         ///< imGetInfo8 of all streams
    kAnalysis,     ///< into `number` bytes; below 0: no buffer
    kRates,        ///< imDataRateAnalysis into `number` bytes; below 0: as many as it asks for
    kFormats,      ///< all pixel formats
    kFormat,       ///< pixel format `number`
    kFrame,        ///< imGetSourceVideo
    kSound,        ///< imImportAudio7 from sample frame `number`, `size` of them
    kLayout,       ///< imGetAudioChannelLayout
    kQuiet,        ///<
    kClose,        ///<
    kAsyncOpen,    ///< imCreateAsyncImporter
    kAsyncRead,    ///< aiInitiateAsyncRead
    kAsyncFrame,   ///< aiGetFrame
    kAsyncCancel,  ///<
    kAsyncFlush,   ///<
    kAsyncClose,   ///<
    kSelector,     ///< any importer selector without records
    kAsyncCall,    ///< any asynchronous selector without a record, or with what is no importer
    kIndFormat,    ///< file format `number`
    kSubTypes,     ///< imGetSubTypeNames for file type `number`
    kInit,         ///< imInit once more
};

struct SessionAction {
    SessionAct act = SessionAct::kInfo;
    std::int64_t number = 0;  ///< frames: index, or ticks if `exactTime`
    bool exactTime = false;
    std::uint32_t size = 0;
    std::vector<std::uint32_t> formats;  ///< pixel formats wanted
    std::int32_t width = 0;              ///< 0: any
    std::int32_t height = 0;

    std::string text() const;
};

struct BytePatch {
    std::size_t offset = 0;
    std::vector<std::uint8_t> bytes;
};

/// A file operation of the plug-in that fails.
struct ReadFault {
    enum class Kind { kRead, kSeek, kOpen };
    Kind kind = Kind::kRead;
    std::uint64_t nth = 1;  ///< counted from 1 in this session
    bool fromThenOn = false;
};

struct SessionPlan {
    std::uint64_t number = 0;
    std::size_t profile = 0;  ///< of builtinProfiles()
    std::uint8_t recordFill = 0;
    std::size_t clip = 0;  ///< of sessionClips()
    bool absent = false;   ///< there is no such file
    std::vector<BytePatch> patches;
    std::optional<std::size_t> cutAt;  ///< bytes that are left of the file
    std::vector<FaultPlan> hostFaults;
    std::vector<std::string> codecFaults;  ///< "decompress:3"
    std::optional<ReadFault> readFault;
    bool faultsAtStart = false;        ///< from before imInit on, else behind it
    bool closeBehindShutdown = false;  ///< what is open is closed when imShutdown is over
    bool shareAsync = false;           ///< all threads use the asynchronous importer of the first
    std::vector<std::vector<SessionAction>> threads;  ///< of the host; the first runs imInit and imShutdown

    bool damaged() const { return absent || !patches.empty() || cutAt.has_value(); }
    bool anyFault() const { return !hostFaults.empty() || !codecFaults.empty() || readFault.has_value(); }
    bool usesAsync() const;
    /// Nothing in it can fail but what the host asks by mistake.
    bool unharmed() const;
    /// Whether all answers depend on the plan alone, and not on which thread comes first.
    bool determined() const { return threads.size() == 1 && !(usesAsync() && anyFault()); }
    /// All but the actions, one line each.
    std::string text() const;
};

/// Sessions are numbered from 0.
SessionPlan planSession(std::uint64_t seed, std::uint64_t number);

/// Sessions are run in groups of so many, each in a process.
inline constexpr std::uint64_t kSessionGroup = 1000;

/// Whether the plug-in writes its log in the sessions of this number's group.
bool sessionWritesLog(std::uint64_t seed, std::uint64_t number);

}  // namespace simhost::tool
