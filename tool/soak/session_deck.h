// One thread of the host in a random session: what it holds, what it asks, and what of the answers can be
// told to be wrong. One owner; one thread.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simhost/async_clip.h"
#include "simhost/clip.h"
#include "tool/soak/session_clips.h"
#include "tool/soak/session_plan.h"

namespace simhost::tool {

/// What the threads of a session keep together. Any thread.
class SessionLedger {
 public:
    void addWrong(std::string text);
    /// A frame of the file looks the same whoever asks for it, and however often.
    void checkPicture(std::int64_t index, const Frame& frame, const char* call);
    std::vector<std::string> wrong() const;

 private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_wrong;
    std::map<std::pair<std::int64_t, std::uint32_t>, std::uint64_t> m_pictures;  // by index and pixel format
};

struct DeckCounts {
    std::uint64_t calls = 0;
    std::uint64_t refused = 0;
    std::uint64_t frames = 0;
    std::uint64_t asyncFrames = 0;
    std::uint64_t sampleFrames = 0;
};

class SessionDeck {
 public:
    /// All must outlive the deck. `log`, unless null, gets a line for each action, with its result if that
    /// depends on the plan alone.
    SessionDeck(const Importer& importer, const SessionPlan& plan, std::string pathUtf8,
                SessionLedger& ledger, std::string* log);

    void run(const std::vector<SessionAction>& actions);
    /// From now on this deck uses the asynchronous importer of another one, which outlives it.
    void useAsyncOf(SessionDeck& other) noexcept { m_asyncOwner = &other; }
    /// Opens as its first actions say, so that others can use its asynchronous importer. Gives the actions
    /// done.
    std::size_t runToAsync(const std::vector<SessionAction>& actions);
    /// Closes what is open.
    void close();
    const DeckCounts& counts() const noexcept { return m_counts; }

 private:
    void act(const SessionAction& action);
    void perform(const SessionAction& action);
    void performOnClip(const SessionAction& action);
    void performAsync(const SessionAction& action);
    void open(std::int32_t stream);
    void info(std::int32_t stream);
    void noteDescription(const Answer<host::imFileInfoRec8>& answer);
    void sound(const SessionAction& action);
    void asyncCall(const SessionAction& action);
    void takeFrame(const SessionAction& action, const FrameAnswer& answer, const char* call, bool due);
    bool isDue(const SessionAction& action) const;
    host::PrTime timeOf(const SessionAction& action) const;
    AsyncClip* async() noexcept;

    void answered(std::int32_t result);
    void answeredAsync(std::int32_t result);
    void wrong(const SessionAction& action, const std::string& what);

    const Importer& m_importer;
    const SessionPlan& m_plan;
    const SessionClip& m_file;
    const std::string m_path;
    SessionLedger& m_ledger;
    std::string* m_log;
    std::optional<Clip> m_clip;
    std::optional<AsyncClip> m_async;
    SessionDeck* m_asyncOwner = nullptr;
    std::vector<std::uint32_t> m_offered;  // pixel formats of the file that is open
    std::int32_t m_stream = 0;             // that it was opened for
    bool m_described = false;              // its first stream is the one that was asked about last
    bool m_quiet = false;
    bool m_asyncDue = false;  // made of a file that was open and described
    std::uint32_t m_channels = 0;
    DeckCounts m_counts;
    std::string m_results;  // of the action under way
};

}  // namespace simhost::tool
