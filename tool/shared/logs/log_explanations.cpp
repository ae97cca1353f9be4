#include "tool/shared/logs/log_explanations.h"

#include <algorithm>

#include "host/result_codes.h"
#include "host/selectors.h"

namespace simhost::tool {
namespace {

constexpr Severity kRoutine = Severity::kRoutine;
constexpr Severity kTable = Severity::kTable;
constexpr Severity kNote = Severity::kNote;
constexpr Severity kFailure = Severity::kFailure;

constexpr const char* kPixelFormatRow = "one pixel format that the host knows";
constexpr LineExplanation kLines[] = {
    // The log itself.
    {"Log opened", kRoutine, "the plug-in began this log"},
    {"Application: *", kRoutine, "the program that loaded the plug-in"},
    {"Module init", kRoutine, "the plug-in was loaded"},
    {"Module destroy", kRoutine, "the plug-in is being unloaded"},
    {"Log closed", kRoutine, "the log ended as it should"},
    // What nothing handled.
    {"FATAL: Unhandled exception during *m_videoInfo is NULL", kFailure,
     "the host asked for pictures of a file that the plug-in had not described before, or had refused"},
    {"FATAL: Unhandled exception during *m_audioInfo is NULL", kFailure,
     "the host asked for sound of a file that has no sound it can use"},
    {"FATAL: Unhandled exception during *Could not acquire suite: *", kFailure,
     "the host lacks a service that the plug-in needs: the host's version is too old, or it is shutting "
     "down"},
    {"FATAL: Unhandled exception during *Orvantis error (*", kFailure,
     "the codec library failed where it never should: reinstall or update the Orvantis codec"},
    {"FATAL: Unhandled exception during *GetFormatInfo_by_pixelFormat(): *", kFailure,
     "the host asked for a pixel format that was never offered to it"},
    {"FATAL: Unhandled exception during *bad_alloc", kFailure, "the computer ran out of memory"},
    {"FATAL: Unhandled exception during *", kFailure,
     "the plug-in failed in a way that it did not expect; the call was answered with 99. Please report it "
     "with this log"},
    {"xAsyncImportEntry: FATAL: Unhandled exception during *", kFailure,
     "the plug-in failed in a way that it did not expect while working in the background. Please report it "
     "with this log"},
    // Services of the host.
    {"Acquiring suite: r: 0, *, ptr: 0000000000000000", kFailure,
     "the host says that it has a service, but does not hand it out"},
    {"Acquiring suite: r: 0, *, ptr: (nil)", kFailure,
     "the host says that it has a service, but does not hand it out"},
    {"Acquiring suite: r: 0, *", kRoutine, "the plug-in uses a service of the host"},
    {"Acquiring suite: r: *", kFailure,
     "the host refused a service that the plug-in asked for: the host's version is too old"},
    {"Releasing suite: r: 0, *", kRoutine, "the plug-in gives a service back to the host"},
    {"Releasing suite: r: *", kNote, "the host did not take a service back"},
    // Start-up tables.
    {"Format dump stopped: *", kNote,
     "the tables of formats could not be written to the log; the plug-in itself goes on"},
    {"----", kRoutine, "a table begins"},
    {"Pixel formats ([fcc] *", kRoutine, "the host's pixel formats: compressed, with alpha, top row first"},
    {"[*] : * (err: * * *) - *", kTable, kPixelFormatRow},
    {"Orvantis types (can_flip *", kRoutine, "the picture layouts that the codec library can deliver"},
    {"YES * : *", kTable, "one layout of the codec library"},
    {" NO * : *", kTable, "one layout of the codec library"},
    {"SubTypeInfos: *", kRoutine, "the coded types that the plug-in can open"},
    {"[*] : (*) * : '*'", kTable, "one coded type"},
    {"FormatInfos: *", kRoutine, "the pixel formats that the plug-in can deliver to the host"},
    {"[*] * : (*) * : (*) * : * : *", kTable, "one deliverable pixel format"},
    // What the plug-in announces.
    {"index *: imBadFormatIndex", kRoutine, "the host asked for a second file format; there is only one"},
    {"index *: *", kRoutine, "the file format that the plug-in announces"},
    {"filetype: *", kRoutine, "the host asks for the codecs of this file type"},
    {"Adding subtype: *", kRoutine, "one codec that the host can show by name"},
    // The life of a file.
    {"OrvantisImporter::OrvantisImporter()", kRoutine, "the plug-in takes up a file"},
    {"OrvantisImporter::~OrvantisImporter()", kRoutine, "the plug-in is done with a file"},
    {"OrvantisAsyncImporter::OrvantisAsyncImporter()", kRoutine,
     "the host wants frames of this file decoded in the background"},
    {"OrvantisAsyncImporter::~OrvantisAsyncImporter()", kRoutine, "background decoding of this file ends"},
    {"VideoInfo::VideoInfo()", kRoutine, "the pictures are being analysed"},
    {"VideoInfo::~VideoInfo()", kRoutine, "the analysis of the pictures is given up"},
    {"AudioInfo::AudioInfo()", kRoutine, "the sound is being analysed"},
    {"AudioInfo::~AudioInfo()", kRoutine, "the analysis of the sound is given up"},
    {"m_filePathUtf8: '*'", kRoutine, "the file that the call is about"},
    {"m_streamIndex: *", kRoutine, "the audio stream that the call is about"},
    {"Open: '*', stream: *", kRoutine, "the file is being opened"},
    {"fileInfoRec8P->streamIdx: *", kRoutine, "the host asks about this audio stream"},
    {"buffersize: *", kRoutine, "the room that the host gives for the answer, in bytes"},
    {"Adding pixel format: *", kRoutine, "a pixel format that the host may ask frames in"},
    // What is wrong with a file as a whole.
    {"Failed to parse avi: file doesn't look like AVI*", kFailure,
     "the file is not an AVI file, whatever its name says"},
    {"Failed to parse avi: *hdrl missing*", kFailure,
     "the AVI file has no header: its recording was never finished, or its beginning is damaged"},
    {"Failed to parse avi: *avih missing*", kFailure, "the AVI file's header is incomplete"},
    {"Failed to parse avi: *data read error*", kFailure,
     "the AVI file's header cannot be read: the file is cut off or its disk fails"},
    {"Failed to parse avi: *", kFailure, "the structure of the AVI file is damaged"},
    {"Avi has no video stream", kFailure, "the file holds sound only; the plug-in opens files with pictures"},
    {"Avi has no audio stream", kNote, "the file has no sound"},
    {"Avi invalid audio stream index: *", kNote,
     "the host asked for an audio stream that the file does not have"},
    // Pictures: analysis.
    {"Compressed format size is invalid", kFailure, "the video stream does not say how it is coded"},
    {"Compressed format info: *", kRoutine, "size, coded type, colour space and range of the pictures"},
    {"Decompress query failed: *", kFailure,
     "the codec library cannot decode these pictures. That is as it should be for a clip of another codec; "
     "for an Orvantis clip the installed codec is too old or the clip's header is damaged"},
    {"Unknown compressed type: *", kFailure,
     "the codec library knows this coded type, the plug-in does not: update the plug-in"},
    {"Decode formats:", kRoutine, "the pixel formats in which the host can have the frames follow"},
    {"    PrPixelFormat_* [*]", kRoutine, "one of them"},
    {"No formats to decode into: decodeFormats is empty", kFailure,
     "the codec library can deliver none of the host's pixel formats: reinstall or update the Orvantis "
     "codec"},
    {"NumFrames: 0", kFailure,
     "the file has no usable index, so it has no frames: the recording was cut off before its end"},
    {"NumFrames: *", kRoutine, "the number of frames in the file's index"},
    {"AVI FPS: *", kRoutine, "the frame rate as the file tells it"},
    {"Adjusted FPS: 0 / *", kFailure,
     "the frame rate is too low to be expressed (less than one frame in about 200 seconds): no frame can be "
     "shown"},
    {"Adjusted FPS: *", kRoutine, "the frame rate that the host is told, rounded to a common one"},
    {"Invalid FPS: *", kNote, "the file tells no usable frame rate; a default is used instead"},
    {"Video duration overflow detected, adjusting FPS", kNote,
     "the clip would be too long for the host at its own frame rate, so a coarser rate is told"},
    {"ERROR: GetTicksPerSecond() failed: *", kFailure,
     "the host did not tell its time base: no frame can be found"},
    // Pictures: one frame.
    {"outFrame: *", kRoutine, "where the host wants the frame"},
    {"inFrameTime: *", kRoutine, "the time of the frame that the host asks for, in its ticks"},
    {"frameIndex out of bounds", kFailure, "the host asked for a frame behind the end of the clip"},
    {"frameIndex: *", kRoutine, "the number of that frame, from 0"},
    {"inNumFrameFormats: *", kRoutine, "how many forms of the frame the host would take"},
    {"inFrameFormats[*]: *", kRoutine, "one of these forms: size, 0 for any, and pixel format"},
    {"ERROR: frameFormats is empty", kFailure, "the host asked for a frame without saying in which format"},
    {"ERROR: frame size mismatch *", kFailure,
     "the host asked for a size that is not the clip's; the plug-in does not scale"},
    {"Starting decompression: *", kRoutine, "decoding begins: from this coded type to that pixel format"},
    {"Pixel format changed, ending decompression", kRoutine, "the host changed the pixel format it wants"},
    {"Internal error: decompressEnd() failed: *", kFailure,
     "the codec library did not end a run of decoding"},
    {"Decompress begin failed: *", kFailure, "the codec library refuses to decode into this pixel format"},
    {"Decompress failed: *", kFailure,
     "the codec library could not decode this frame: its data is damaged, or the codec is too old for it"},
    {"Empty frame: *", kNote,
     "this frame holds no data, as recorders write for a picture that did not change; the nearest frame with "
     "data is shown instead"},
    {"Failed to read frame from AVI: *", kFailure,
     "the frame's data could not be read: the file is cut off, its disk fails or the network drive is gone"},
    {"ERROR: CreatePPix() failed: *", kFailure, "the host gave no memory for the frame"},
    {"ERROR: GetPixels() failed: *", kFailure, "the host did not give access to the frame's memory"},
    {"ERROR: GetRowBytes() failed: *", kFailure, "the host did not tell the layout of the frame's memory"},
    // Pictures in the background.
    {"REQUEST: Adding: *", kRoutine, "the host orders a frame for later"},
    {"REQUEST: Requesting: *", kRoutine, "the host comes for a frame"},
    {"REQUEST: ERROR: Frame not found: *", kNote,
     "the host comes for a frame that it had not ordered, so it has to wait; playback may stutter"},
    {"Decoded *: *", kRoutine, "the frame is handed over in this pixel format"},
    // Sound.
    {"Avi audio stream format size is too small: *", kFailure,
     "no sound: the audio stream's header is incomplete"},
    {"Avi unsupported audio stream format: *", kFailure,
     "no sound: the sound is compressed (MP3, AC-3, AAC, ...). Only uncompressed PCM and float are "
     "supported"},
    {"Avi too many audio channels: *", kFailure,
     "no sound: the audio stream has more channels than the host takes"},
    {"Avi unsupported audio bits per sample: *", kFailure,
     "no sound: samples must have 8, 16, 24 or 32 bits"},
    {"Avi audio stream format error: *", kFailure, "no sound: the audio stream's header contradicts itself"},
    {"Audio is INVALID! Dummy:", kNote,
     "the host is told of a silent stream in the place of one that cannot be used"},
    {"Audio info:", kRoutine, "the form of the sound follows"},
    {"    wFormatTag: *", kRoutine, "kind of samples: 1 PCM, 3 float, 65534 told by the next line"},
    {"    format guid: *", kRoutine, "kind of samples, at full length"},
    {"    nChannels: *", kRoutine, "number of channels"},
    {"    nSamplesPerSec: *", kRoutine, "sample rate"},
    {"    wBitsPerSample: *", kRoutine, "bits a sample"},
    {"    dwChannelMask: *", kRoutine, "loudspeakers of the channels"},
    {"    numSampleFrames: 0", kNote, "the audio stream says that it is empty"},
    {"    numSampleFrames: *", kRoutine, "length of the sound in sample frames"},
    {"Audio channel layout (*", kRoutine, "the loudspeaker of each channel follows"},
    {"    *: kPrAudioChannelLabel_*", kRoutine, "a channel and its loudspeaker"},
    {"    *: Unknown_Channel_Label", kNote, "a channel for no known loudspeaker"},
    {"importAudioRec7P->position: *", kRoutine,
     "the host wants sound from this sample frame on; below 0: go on"},
    {"m_audioPosition *", kRoutine, "where the last request ended"},
    {"startPos *", kRoutine, "where this one starts"},
    {"startPosBytes *", kRoutine, "where this one starts, in bytes"},
    {"importAudioRec7P->size *", kRoutine, "how many sample frames the host wants"},
    {"endPos *", kRoutine, "where it ends"},
    {"m_numAudioSampleFrames *", kRoutine, "length of the sound"},
    {"sizeBytes *", kRoutine, "how much that is in bytes"},
    {"reading : *", kRoutine, "a piece is read: position in the stream, position in the file, bytes"},
    {"importAudio: seek error: *", kFailure, "a piece of the sound cannot be reached: silence is delivered"},
    {"importAudio: read error: *", kFailure,
     "a piece of the sound cannot be read, so silence is delivered: the file is cut off or its disk fails"},
    {"fill    : 0", kRoutine, "nothing was missing"},
    {"fill    : *", kRoutine, "so many bytes behind the end were filled with silence"},
};

struct ResultExplanation {
    std::string_view selector;  // "*": any
    std::int32_t result;
    const char* text;
};

constexpr ResultExplanation kResults[] = {
    {"imOpenFile8", host::imBadFile,
     "Windows could not open the file: it is gone, in exclusive use by another program, or may not be read"},
    {"imGetInfo8", host::imBadFile,
     "the plug-in refuses the file and the host tries its other importers; right for files of other codecs"},
    {"*", host::imBadFile, "the file cannot be used"},
    {"imGetInfo8", host::imOtherErr, "the coded type of the clip is unknown to the plug-in"},
    {"imGetSourceVideo", host::imOtherErr, "the frame could not be delivered; the lines above tell why"},
    {"*", host::imOtherErr, "the plug-in could not do it"},
    {"*", host::imBadCompression, "decoding failed"},
    {"*", host::imFrameNotFound, "there is no such frame"},
    {"*", host::imFileReadFailed, "the file could not be read"},
    {"*", host::imIterateStreams, "there is at least one further audio stream"},
    {"*", host::imBadStreamIndex, "this was the last audio stream"},
    {"*", host::imBadFormatIndex, "the end of the list"},
    {"*", host::malSupports8, "the plug-in speaks this version of the interface"},
    {"imGetAudioChannelLayout", host::imUnsupported,
     "this track has no layout of loudspeakers to tell; nothing is wrong"},
    {"*", host::imUnsupported, "a feature of the host that the plug-in does not have; nothing is wrong"},
    {"*", host::kUnhandledException, "the plug-in failed in a way that it did not expect"},
};

/// To refuse one of these is a failure. Not so the layout of a track without one, which the host then takes
/// as mono.
bool isAnswered(std::string_view selector) noexcept {
    return std::ranges::any_of(host::kSelectors, [&](const host::Selector& row) {
        return row.answered && row.code != host::imGetAudioChannelLayout && selector == row.name;
    });
}

}  // namespace

std::span<const LineExplanation> lineExplanations() noexcept {
    return kLines;
}

bool fitsPattern(std::string_view text, std::string_view pattern) noexcept {
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t star = std::string_view::npos;  // the last star passed, and where its text ends so far
    std::size_t starEnd = 0;
    while (at < text.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            starEnd = at;
        } else if (in < pattern.size() && pattern[in] == text[at]) {
            ++in;
            ++at;
        } else if (star != std::string_view::npos) {
            in = star + 1;
            at = ++starEnd;
        } else {
            return false;
        }
    }
    while (in < pattern.size() && pattern[in] == '*') {
        ++in;
    }
    return in == pattern.size();
}

const LineExplanation* explainLine(std::string_view text) noexcept {
    for (const LineExplanation& row : kLines) {
        if (fitsPattern(text, row.pattern)) {
            return &row;
        }
    }
    return nullptr;
}

Severity resultSeverity(std::string_view selector, std::int32_t result) noexcept {
    switch (result) {
        case host::imNoErr:
        case host::malSupports8:
        case host::imIterateStreams:
        case host::imBadStreamIndex:
        case host::imBadFormatIndex:
            return Severity::kRoutine;
        case host::imUnsupported:
            return isAnswered(selector) ? Severity::kFailure : Severity::kRoutine;
        default:
            return Severity::kFailure;
    }
}

const char* explainResult(std::string_view selector, std::int32_t result) noexcept {
    for (const ResultExplanation& row : kResults) {
        if (row.result == result && (row.selector == "*" || row.selector == selector)) {
            return row.text;
        }
    }
    return "";
}

}  // namespace simhost::tool
