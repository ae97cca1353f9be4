// One open file: the OS file, the parsed container, the analyses and the host suites. The host keeps the
// pointer as the file's private data from imOpenFile8 to imCloseFile and hands it back with every selector
// between, on any thread and several at once. ImporterCall (importer/importer_calls.h) keeps what changes the
// file or the analyses (open, parse, quiet) apart from everything else; all other functions may run side by
// side.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "audio/audio_info.h"
#include "avi/avi_reader.h"
#include "diag/mutex.h"
#include "diag/spare.h"
#include "fileio/win_file.h"
#include "host/result_codes.h"
#include "host/std_parms.h"
#include "suites/importer_suites.h"
#include "video/frame_request.h"
#include "video/video_info.h"

namespace orvantis {

class OrvantisImporter {
 public:
    /// Takes the host's basic suite from the standard parameters; no file is open yet.
    explicit OrvantisImporter(const host::imStdParms* stdParms);
    virtual ~OrvantisImporter();
    OrvantisImporter(const OrvantisImporter&) = delete;
    OrvantisImporter& operator=(const OrvantisImporter&) = delete;

    /// Opens the file (NUL-terminated UTF-16 path; `readWrite` is the host's access request) and remembers
    /// path, stream and request. False when the system refuses; then nothing is changed.
    bool open(const char16_t* path, std::int32_t streamIndex, std::int32_t readWrite);
    /// Parses the container and replaces both analyses for stream `streamIndex`. imNoErr, imIterateStreams,
    /// imBadStreamIndex, or the reason for the refusal. Throws what the construction of VideoInfo throws.
    host::ImporterResult parse(std::int32_t streamIndex);
    /// Closes the OS file and gives up the buffers that calls keep for the next ones; the analyses stay.
    void quiet() noexcept;

    /// The file's host suites, acquired on first use.
    ImporterSuites& suites() { return m_suites.get(); }

    /// Throw std::logic_error "m_videoInfo is NULL" / "m_audioInfo is NULL" when there is no such analysis.
    const VideoInfo& requireVideoInfo() const;
    AudioInfo& requireAudioInfo();
    const VideoInfo* videoInfo() const noexcept { return m_videoInfo.get(); }
    const AudioInfo* audioInfo() const noexcept { return m_audioInfo.get(); }

    /// The host's Properties text for all streams of the file.
    std::string describeStreams();
    /// The two lines that open every file selector in the log.
    void logFile() const;

    /// The host's number of this importer, told with imGetInfo8. Kept for calls into the host that want it;
    /// none of today's does.
    void setImporterId(std::int32_t id) noexcept { m_importerId = id; }
    fileio::WinFile& file() noexcept { return m_file; }
    /// The file has one position: held from a seek to the end of the read that relies on it.
    Mutex& filePosition() noexcept { return m_filePosition; }
    const std::u16string& filePath() const noexcept { return m_filePath; }
    std::int32_t streamIndex() const noexcept { return m_streamIndex; }
    std::int32_t openRequest() const noexcept { return m_openRequest; }
    /// The storage of a frame request that has ended. The next one takes it, so that steady playback does not
    /// allocate.
    Spare<FrameRequest>& spareRequest() noexcept { return m_spareRequest; }

 private:
    AudioOwner audioOwner() noexcept { return {&m_file, &m_filePosition, &m_suites}; }

    // Declared in the order in which they must live: destruction goes backwards and releases the suites last.
    std::int32_t m_importerId = 0;
    LazyImporterSuites m_suites;
    fileio::WinFile m_file;
    Mutex m_filePosition;
    AviReader m_aviReader;
    std::unique_ptr<VideoInfo> m_videoInfo;
    std::unique_ptr<AudioInfo> m_audioInfo;
    std::int32_t m_audioStreamCount = 0;
    std::u16string m_filePath;
    std::string m_filePathUtf8;
    std::int32_t m_streamIndex = -1;
    std::int32_t m_openRequest = 0;
    Spare<FrameRequest> m_spareRequest;
};

}  // namespace orvantis
