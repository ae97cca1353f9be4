// What the pieces are made of: the sample importer, and one call of the host that a piece answers in its own
// way. A piece defines answer() and nothing else.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/pixel_formats.h"
#include "host/records.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "host/std_parms.h"
#include "sample/clip.h"
#include "sample/sample_importer.h"

namespace piece {

struct Call {
    std::int32_t selector;
    host::imStdParms* parms;
    void* param1;
    void* param2;

    bool is(std::int32_t wanted) const { return selector == wanted; }
    /// What the sample answers.
    std::int32_t correct() const { return sample::importEntry(selector, parms, param1, param2); }
    /// The same of a sample that has no asynchronous importer, for what is wrong with the synchronous one
    /// alone.
    std::int32_t correctWithoutAsync() const {
        if (is(host::imCreateAsyncImporter)) {
            return host::imUnsupported;
        }
        const std::int32_t result = correct();
        if (is(host::imGetInfo8) && result == host::imNoErr) {
            record<host::imFileInfoRec8>()->vidInfo.supportsAsyncIO = 0;
        }
        return result;
    }
    /// The record of a selector that passes it as second parameter, null as it may be.
    template <class Record>
    Record* record() const {
        return static_cast<Record*>(param2);
    }
    const host::SPBasicSuite* basic() const { return sample::basicSuite(parms); }
    const host::MemoryFunctions* memory() const {
        const host::piSuites* const suites = parms->piSuites;
        return suites->memFuncs;
    }
    /// imGetSourceVideo: the file that is asked, and the frame that the sample has just delivered; null
    /// without.
    std::shared_ptr<sample::Clip> clip() const {
        const auto* const request = record<host::imSourceVideoRec>();
        return request != nullptr ? sample::findClip(request->inPrivateData) : nullptr;
    }
    host::PPixHand frame() const {
        const auto* const request = record<host::imSourceVideoRec>();
        return request != nullptr && request->outFrame != nullptr ? *request->outFrame : nullptr;
    }
    /// imGetSourceVideo: the first format in the list of the request; null for other calls, and without a
    /// list.
    const host::imFrameFormat* wanted() const {
        const auto* const request = record<host::imSourceVideoRec>();
        return is(host::imGetSourceVideo) && request != nullptr && request->inNumFrameFormats > 0
                   ? request->inFrameFormats
                   : nullptr;
    }
    /// imGetSourceVideo: delivers a frame of 4 x 4 pixels.
    std::int32_t deliverSmall() const {
        const host::prRect bounds{0, 0, 4, 4};
        return clip()->creator->CreatePPix(record<host::imSourceVideoRec>()->outFrame,
                                           host::kBufferAccessWriteOnly, host::PrPixelFormat_BGRA_4444_8u,
                                           &bounds);
    }
    /// imOpenFile8: the path; empty for other calls.
    std::u16string path() const {
        const auto* const file = record<host::imFileOpenRec8>();
        if (!is(host::imOpenFile8) || file == nullptr || file->fileinfo.filepath == nullptr) {
            return {};
        }
        return reinterpret_cast<const char16_t*>(file->fileinfo.filepath);
    }
    /// imOpenFile8: opens the last file that was there in the place of the one that is asked for.
    std::int32_t openLastGood() const;
    /// imGetSourceVideo: the first pixel of that frame, and the way from row to row.
    char* pixels(std::int32_t& rowBytes) const {
        char* first = nullptr;
        (void)clip()->ppix->GetRowBytes(frame(), &rowBytes);
        (void)clip()->ppix->GetPixels(frame(), host::kBufferAccessWriteOnly, &first);
        return first;
    }
};

/// What xImportEntry of the piece answers.
std::int32_t answer(const Call& call);

}  // namespace piece
