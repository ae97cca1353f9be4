#include "tool/soak/session_deck.h"

#include <algorithm>
#include <array>
#include <exception>

#include "host/four_char_codes.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/session.h"

namespace simhost::tool {
namespace {

constexpr std::int32_t kMostChannels = 64;
constexpr std::size_t kMostWrong = 20;

// What this importer answers to what a host may ask; 99 is the answer to mistakes.
constexpr std::array kAnswers = {host::imNoErr,
                                 host::imBadFile,
                                 host::imUnsupported,
                                 host::imOtherErr,
                                 host::imBadCompression,
                                 host::imIterateStreams,
                                 host::imBadStreamIndex,
                                 host::imFrameNotFound,
                                 host::imFileReadFailed,
                                 host::imDecompressionError,
                                 host::malSupports8,
                                 host::imBadFormatIndex,
                                 host::kUnhandledException};

std::string numberAndName(std::int32_t result, const char* name) {
    return std::to_string(result) + " (" + name + ")";
}

}  // namespace

void SessionLedger::addWrong(std::string text) {
    const std::lock_guard lock(m_mutex);
    if (m_wrong.size() < kMostWrong) {
        m_wrong.push_back(std::move(text));
    }
}

void SessionLedger::checkPicture(std::int64_t index, const Frame& frame, const char* call) {
    const std::vector<std::uint8_t> picture = frame.picture();
    const std::uint64_t hash = hashBytes(picture.data(), picture.size());
    const std::lock_guard lock(m_mutex);
    const auto [found, isNew] = m_pictures.try_emplace({index, frame.pixelFormat()}, hash);
    if (!isNew && found->second != hash && m_wrong.size() < kMostWrong) {
        m_wrong.push_back(std::string(call) + ": frame " + std::to_string(index) +
                          " shows another picture than before");
    }
}

std::vector<std::string> SessionLedger::wrong() const {
    const std::lock_guard lock(m_mutex);
    return m_wrong;
}

SessionDeck::SessionDeck(const Importer& importer, const SessionPlan& plan, std::string pathUtf8,
                         SessionLedger& ledger, std::string* log)
    : m_importer(importer),
      m_plan(plan),
      m_file(sessionClips()[plan.clip]),
      m_path(std::move(pathUtf8)),
      m_ledger(ledger),
      m_log(log) {}

void SessionDeck::run(const std::vector<SessionAction>& actions) {
    for (const SessionAction& action : actions) {
        act(action);
    }
}

std::size_t SessionDeck::runToAsync(const std::vector<SessionAction>& actions) {
    std::size_t done = 0;
    while (done < actions.size() && !m_async) {
        act(actions[done++]);
    }
    return done;
}

void SessionDeck::act(const SessionAction& action) {
    m_results.clear();
    try {
        perform(action);
    } catch (const std::exception& error) {
        wrong(action, std::string("an exception came out: ") + error.what());
    }
    if (m_log != nullptr) {
        *m_log += "  " + action.text() + (m_plan.determined() ? ":" + m_results : "") + "\n";
    }
}

void SessionDeck::wrong(const SessionAction& action, const std::string& what) {
    m_ledger.addWrong(action.text() + ": " + what);
}

void SessionDeck::answered(std::int32_t result) {
    ++m_counts.calls;
    m_counts.refused += result != host::imNoErr ? 1u : 0u;
    if (m_log != nullptr) {
        m_results += " " + numberAndName(result, host::errorName(static_cast<std::uint32_t>(result)));
    }
    if (std::find(kAnswers.begin(), kAnswers.end(), result) == kAnswers.end()) {
        m_ledger.addWrong("a selector was answered " + std::to_string(result));
    }
}

void SessionDeck::answeredAsync(std::int32_t result) {
    ++m_counts.calls;
    m_counts.refused += result != host::aiNoError ? 1u : 0u;
    if (m_log != nullptr) {
        m_results += " " + std::to_string(result);
    }
    if ((result < host::aiNoError || result > host::aiUnknownError) && result != host::kUnhandledException) {
        m_ledger.addWrong("an asynchronous selector was answered " + std::to_string(result));
    }
}

void SessionDeck::perform(const SessionAction& action) {
    switch (action.act) {
        case SessionAct::kOpen:
            return open(static_cast<std::int32_t>(action.number));
        case SessionAct::kSelector:
            return answered(m_importer.call(static_cast<std::int32_t>(action.number), nullptr, nullptr));
        case SessionAct::kIndFormat:
            return answered(m_importer.getIndFormat(static_cast<std::uint32_t>(action.number)).result);
        case SessionAct::kSubTypes:
            return answered(m_importer.getSubTypeNames(static_cast<std::uint32_t>(action.number)).result);
        case SessionAct::kInit:
            return answered(m_importer.init().result);
        case SessionAct::kAsyncOpen:
        case SessionAct::kAsyncRead:
        case SessionAct::kAsyncFrame:
        case SessionAct::kAsyncCancel:
        case SessionAct::kAsyncFlush:
        case SessionAct::kAsyncClose:
        case SessionAct::kAsyncCall:
            return performAsync(action);
        default:
            // Without a file there is nothing that the host could ask about.
            if (m_clip && m_clip->isOpen()) {
                performOnClip(action);
            }
    }
}

void SessionDeck::performOnClip(const SessionAction& action) {
    Clip& clip = *m_clip;
    switch (action.act) {
        case SessionAct::kInfo:
            info(static_cast<std::int32_t>(action.number));
            break;
        case SessionAct::kWalk:
            for (const StreamInfo& stream : clip.walkStreams()) {
                noteDescription(stream.answer);
            }
            m_described = false;
            break;
        case SessionAct::kAnalysis:
            answered(clip.analysis(static_cast<std::int32_t>(action.number), action.number >= 0).result);
            break;
        case SessionAct::kRates:
            if (action.number >= 0) {
                answered(clip.dataRates(static_cast<std::int32_t>(action.number)).result);
            } else {
                const DataRates rates = clip.dataRates();
                answered(rates.sizingResult);
                answered(rates.result);
            }
            break;
        case SessionAct::kFormats: {
            const PixelFormats formats = clip.pixelFormats();
            answered(formats.lastResult);
            m_offered = formats.formats;
            break;
        }
        case SessionAct::kFormat:
            answered(clip.pixelFormat(static_cast<std::uint32_t>(action.number)).result);
            break;
        case SessionAct::kFrame: {
            const bool due = m_described && !m_quiet && isDue(action);
            std::vector<host::imFrameFormat> wanted;
            for (const std::uint32_t format : action.formats) {
                wanted.push_back({action.width, action.height, format});
            }
            const FrameAnswer answer = clip.getSourceVideo(timeOf(action), wanted);
            answered(answer.result);
            takeFrame(action, answer, "imGetSourceVideo", due);
            break;
        }
        case SessionAct::kSound:
            sound(action);
            break;
        case SessionAct::kLayout:
            answered(clip.channelLayout().result);
            break;
        case SessionAct::kQuiet:
            answered(clip.quiet());
            m_quiet = true;
            break;
        case SessionAct::kClose:
            answered(clip.close());
            break;
        default:
            break;
    }
}

void SessionDeck::open(std::int32_t stream) {
    if (m_clip && m_clip->isOpen()) {
        answered(m_clip->reopen().result);
        m_described = m_described && m_quiet;
        m_quiet = false;
        return;
    }
    OpenOptions options;
    options.streamIndex = stream;
    m_clip.reset();
    m_clip.emplace(m_importer, m_path, options);
    m_stream = stream;
    m_described = m_quiet = false;
    m_offered.clear();
    answered(m_clip->openResult());
    if (m_plan.unharmed() && !m_clip->isOpen()) {
        m_ledger.addWrong("imOpenFile8: a whole file was refused");
    }
}

void SessionDeck::info(std::int32_t stream) {
    const auto answer = m_clip->getInfo(stream);
    noteDescription(answer);
    m_described = m_stream == 0 && stream == 0 &&
                  (answer.result == host::imNoErr || answer.result == host::imIterateStreams);
    if (m_plan.unharmed() && m_stream == 0 && stream == 0 && !m_quiet && !m_described) {
        m_ledger.addWrong("imGetInfo8: a whole file was refused");
    }
}

void SessionDeck::noteDescription(const Answer<host::imFileInfoRec8>& answer) {
    answered(answer.result);
    const std::int32_t channels = answer.record.audInfo.numChannels;
    const bool described = answer.result == host::imNoErr || answer.result == host::imIterateStreams ||
                           answer.result == host::imBadStreamIndex;
    if (!described || answer.record.hasAudio != 1) {
        return;
    }
    if (channels < 0 || channels > kMostChannels) {
        m_importer.host().addViolation({Rule::kSoundChannels, "imGetInfo8", std::to_string(channels),
                                        "imFileInfoRec8", "audInfo.numChannels"});
        return;
    }
    m_channels = std::max(m_channels, static_cast<std::uint32_t>(channels));
}

void SessionDeck::sound(const SessionAction& action) {
    // As many buffers as were ever announced.
    const AudioAnswer answer = m_clip->importAudio(action.number, action.size, std::max(m_channels, 1u));
    answered(answer.result);
    m_counts.sampleFrames += answer.result == host::imNoErr ? action.size : 0u;
}

AsyncClip* SessionDeck::async() noexcept {
    std::optional<AsyncClip>& used = m_asyncOwner != nullptr ? m_asyncOwner->m_async : m_async;
    return used && used->isOpen() ? &*used : nullptr;
}

void SessionDeck::performAsync(const SessionAction& action) {
    if (action.act == SessionAct::kAsyncCall) {
        return asyncCall(action);
    }
    if (action.act == SessionAct::kAsyncOpen) {
        if (m_asyncOwner == nullptr && m_clip && m_clip->isOpen() && async() == nullptr) {
            m_async.reset();
            m_async.emplace(*m_clip);
            m_asyncDue = m_described && !m_quiet;
            answered(m_async->creation().result);
        }
        return;
    }
    AsyncClip* const importer = async();
    if (importer == nullptr) {
        return;
    }
    std::vector<host::imFrameFormat> wanted;
    for (const std::uint32_t format : action.formats) {
        wanted.push_back({action.width, action.height, format});
    }
    switch (action.act) {
        case SessionAct::kAsyncRead:
            // The frame that is asked for later may be the answer to this.
            m_asyncDue = m_asyncDue && isDue(action);
            return answeredAsync(importer->initiate(timeOf(action), wanted));
        case SessionAct::kAsyncFrame: {
            const bool due = m_asyncOwner == nullptr && m_asyncDue && isDue(action);
            const FrameAnswer answer = importer->getFrame(timeOf(action), wanted);
            answeredAsync(answer.result);
            takeFrame(action, answer, "aiGetFrame", due && m_plan.threads.size() == 1);
            m_counts.asyncFrames += answer.frame ? 1u : 0u;
            return;
        }
        case SessionAct::kAsyncCancel:
            return answeredAsync(importer->cancel(timeOf(action), wanted));
        case SessionAct::kAsyncFlush:
            return answeredAsync(importer->flush());
        default:
            return answeredAsync(importer->close());
    }
}

// What no host asks: without a record, or of an importer that there is not.
void SessionDeck::asyncCall(const SessionAction& action) {
    AsyncClip* const importer = async();
    if (importer == nullptr) {
        return;
    }
    GuardedBytes nothing(sizeof(host::aiAsyncRequest) + sizeof(host::imSourceVideoRec));
    answeredAsync(importer->call(static_cast<std::int32_t>(action.number),
                                 action.size != 0 ? nothing.data() : nullptr));
    if (!nothing.damage().empty()) {
        wrong(action, nothing.damage());
    }
}

host::PrTime SessionDeck::timeOf(const SessionAction& action) const {
    return action.exactTime ? action.number
                            : firstTickOfFrame(static_cast<std::uint32_t>(action.number), m_file.rate,
                                               m_file.scale, m_importer.host().ticksPerSecond());
}

bool SessionDeck::isDue(const SessionAction& action) const {
    return m_plan.unharmed() && !action.exactTime && action.number < m_file.frames && action.width == 0 &&
           action.height == 0 && action.formats.size() == 1 &&
           std::find(m_offered.begin(), m_offered.end(), action.formats.front()) != m_offered.end();
}

void SessionDeck::takeFrame(const SessionAction& action, const FrameAnswer& answer, const char* call,
                            bool due) {
    if (due && !answer.frame) {
        wrong(action, "a frame that is there was answered " + std::to_string(answer.result));
    }
    if (answer.frame) {
        ++m_counts.frames;
        if (!action.exactTime) {
            m_ledger.checkPicture(action.number, *answer.frame, call);
        }
    }
}

void SessionDeck::close() {
    m_results.clear();
    m_async.reset();
    m_clip.reset();
}

}  // namespace simhost::tool
