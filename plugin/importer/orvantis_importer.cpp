#include "importer/orvantis_importer.h"

#include <stdexcept>
#include <utility>

#include "diag/log.h"
#include "diag/text.h"
#include "host/record_values.h"
#include "host/result_codes.h"

namespace orvantis {

namespace {

/// The open mode for the host's access request. Reading and writing means a new file, in the host's contract
/// and here: one that is missing is created, one that exists is emptied. Anything else but reading asks for
/// no access at all, which the system rejects.
int openModeFor(std::int32_t readWrite) noexcept {
    switch (readWrite) {
        case host::kOpenForReading:
            return fileio::kOpenRead | fileio::kOpenShareRead;
        case host::kOpenForReadingAndWriting:
            return fileio::kOpenRead | fileio::kOpenWrite | fileio::kOpenShareRead;
        default:
            return fileio::kOpenShareRead;
    }
}

/// Lets go of what reading the indexes needs, whether they were read or not: a host keeps files that were
/// refused, and by the hundred.
struct EndOfParse {
    ~EndOfParse() { reader.dropIndexes(); }
    AviReader& reader;
};

}  // namespace

OrvantisImporter::OrvantisImporter(const host::imStdParms* stdParms) : m_suites(basicSuiteOf(stdParms)) {
    logMessage("OrvantisImporter::OrvantisImporter()");
}

OrvantisImporter::~OrvantisImporter() {
    logMessage("OrvantisImporter::~OrvantisImporter()");
}

bool OrvantisImporter::open(const char16_t* path, std::int32_t streamIndex, std::int32_t readWrite) {
    std::u16string filePath(path != nullptr ? path : u"");
    std::string filePathUtf8 = utf8FromUtf16(filePath);
    logMessage("Open: '%s', stream: %d", filePathUtf8.c_str(), streamIndex);
    if (path == nullptr || !m_file.open(path, openModeFor(readWrite))) {
        return false;
    }

    m_filePath = std::move(filePath);
    m_filePathUtf8 = std::move(filePathUtf8);
    m_streamIndex = streamIndex;
    m_openRequest = readWrite;
    return true;
}

host::ImporterResult OrvantisImporter::parse(std::int32_t streamIndex) {
    m_videoInfo.reset();
    m_audioInfo.reset();
    m_audioStreamCount = 0;
    m_file.seek(0);

    const EndOfParse end{m_aviReader};
    // The indexes wait until the video is known to be ours: every AVI of the machine comes through here, and
    // refusing a foreign one must not cost reading its index.
    if (!m_aviReader.parse(m_file, true)) {
        logMessage("Failed to parse avi: %s", m_aviReader.errorText().c_str());
        return host::ImporterResult::imBadFile;
    }
    const std::vector<std::size_t> audioStreams = m_aviReader.streamsOfType(kStreamTypeAudio);
    m_audioStreamCount = static_cast<std::int32_t>(audioStreams.size());

    if (streamIndex == 0) {
        const std::vector<std::size_t> videoStreams = m_aviReader.streamsOfType(kStreamTypeVideo);
        if (videoStreams.empty()) {
            logMessage("Avi has no video stream");
            return host::ImporterResult::imBadFile;
        }
        auto videoInfo = std::make_unique<VideoInfo>(m_suites);
        const host::ImporterResult result =
            videoInfo->analyseFormat(*m_aviReader.streams[videoStreams.front()]);
        if (result != host::ImporterResult::imNoErr) {
            return result;
        }
        m_aviReader.readIndexes();
        videoInfo->analyseTiming();
        m_videoInfo = std::move(videoInfo);
    } else {
        m_aviReader.readIndexes();
    }

    auto audioInfo = std::make_unique<AudioInfo>(audioOwner());
    if (audioStreams.empty()) {
        logMessage("Avi has no audio stream");
    } else if (streamIndex >= 0 && streamIndex < m_audioStreamCount) {
        const std::size_t position = audioStreams[static_cast<std::size_t>(streamIndex)];
        static_cast<void>(audioInfo->init(*m_aviReader.streams[position]));  // valid() keeps what it says
    } else {
        logMessage("Avi invalid audio stream index: %d", streamIndex);
    }
    // A single unusable stream is dropped; one among several stays as a silent placeholder, so that the
    // streams after it keep their places in the host.
    if (audioInfo->valid() || streamIndex != 0 || m_audioStreamCount > 1) {
        m_audioInfo = std::move(audioInfo);
    }

    // On purpose the last of several audio streams is answered with imBadStreamIndex although its info is
    // filled: the host takes the info and stops asking.
    if (m_audioStreamCount > static_cast<std::int64_t>(streamIndex) + 1) {
        return host::ImporterResult::imIterateStreams;
    }
    return streamIndex >= 1 ? host::ImporterResult::imBadStreamIndex : host::ImporterResult::imNoErr;
}

void OrvantisImporter::quiet() noexcept {
    m_file.close();
    m_spareRequest.drop();
    if (m_videoInfo) {
        m_videoInfo->decoder().dropSpareSession();
    }
    if (m_audioInfo) {
        m_audioInfo->releaseBuffers();
    }
}

const VideoInfo& OrvantisImporter::requireVideoInfo() const {
    if (!m_videoInfo) {
        throw std::logic_error("m_videoInfo is NULL");
    }
    return *m_videoInfo;
}

AudioInfo& OrvantisImporter::requireAudioInfo() {
    if (!m_audioInfo) {
        throw std::logic_error("m_audioInfo is NULL");
    }
    return *m_audioInfo;
}

std::string OrvantisImporter::describeStreams() {
    std::string text = "\nVideo stream:\n" + requireVideoInfo().description() + "\n";
    for (const std::size_t position : m_aviReader.streamsOfType(kStreamTypeAudio)) {
        AudioInfo audio(audioOwner());
        static_cast<void>(audio.init(*m_aviReader.streams[position]));  // described even when it is refused
        text += "Audio stream " + std::to_string(position) + ":\n" + audio.description() + "\n";
    }
    return text;
}

void OrvantisImporter::logFile() const {
    if (!logEnabled()) {
        return;
    }
    logMessage("m_filePathUtf8: '%s'", m_filePathUtf8.c_str());
    logMessage("m_streamIndex:  %d", m_streamIndex);
}

}  // namespace orvantis
