// One clip, the stand-in codec held at its gate, and the calls that a host makes on a file from several
// threads. simhost::Clip keeps the host's own account of a file and is no thing for two threads at once where
// the file is quieted or closed: those calls are made here by hand.
#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <string>

#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/frame_request.h"
#include "tests/integration/async_codec_gate.h"
#include "tests/integration/async_fixture.h"

template <class Result>
bool isDone(std::future<Result>& future) {
    return future.wait_for(kWrongCodeWouldBeDone) == std::future_status::ready;
}

/// The host's calls by private data alone.
struct RawCalls {
    const simhost::Importer& importer;

    simhost::FrameAnswer frame(void* privateData, host::PrTime time,
                               std::uint32_t pixelFormat = kBgra) const {
        const std::vector<host::imFrameFormat> formats = anySize(pixelFormat);
        return simhost::requestFrame(
            importer, simhost::frameRequest(importer, privateData, time, formats), "imGetSourceVideo",
            [this](void* record) { return importer.call(host::imGetSourceVideo, nullptr, record); });
    }
    std::int32_t sound(void* privateData, std::int64_t position, std::vector<float>& left,
                       std::vector<float>& right) const {
        float* buffers[] = {left.data(), right.data()};
        host::imImportAudioRec7 record{};
        record.position = position;
        record.size = static_cast<std::uint32_t>(left.size());
        record.buffer = buffers;
        record.privateData = privateData;
        return importer.callWithRecord(host::imImportAudio7, nullptr, record).result;
    }
    simhost::Answer<host::imFileInfoRec8> info(void* privateData, std::int32_t stream = 0) const {
        host::imFileInfoRec8 record{};
        record.privatedata = privateData;
        record.streamIdx = stream;
        return importer.callWithRecord(host::imGetInfo8, nullptr, record);
    }
    simhost::Answer<host::imFileOpenRec8> open(const std::u16string& path, void* privateData) const {
        host::imFileOpenRec8 record{};
        record.fileinfo.filepath = path.c_str();
        record.privatedata = privateData;
        host::imFileRef fileRef = host::kInvalidFileRef;
        return importer.callWithRecord(host::imOpenFile8, &fileRef, record);
    }
    std::string text(void* privateData, std::int32_t* result = nullptr) const {
        std::string buffer(4096, '\0');
        host::imAnalysisRec record{};
        record.privatedata = privateData;
        record.buffer = buffer.data();
        record.buffersize = static_cast<std::int32_t>(buffer.size());
        const std::int32_t code = importer.callWithRecord(host::imAnalysis, nullptr, record).result;
        if (result != nullptr) {
            *result = code;
        }
        return buffer.c_str();
    }
    std::int32_t quiet(void* privateData) const {
        host::imFileRef fileRef = 77;
        return importer.call(host::imQuietFile, &fileRef, privateData);
    }
    std::int32_t close(void* privateData) const {
        host::imFileRef fileRef = 77;
        return importer.call(host::imCloseFile, &fileRef, privateData);
    }
};

class SyncCallsTest : public AsyncTest {
 protected:
    RawCalls raw() { return RawCalls{importer()}; }
    void* data() { return clip().privateData(); }
    /// The file has been closed by hand.
    void forgetClip() {
        clip().forget();
        dropClip();
    }
    std::string lastEvent() {
        const auto events = host().events();
        return events.empty() ? "" : events.back().description;
    }
    static void expectFrame(const simhost::FrameAnswer& answer, std::uint32_t index) {
        EXPECT_EQ(answer.result, host::imNoErr);
        ASSERT_TRUE(answer.frame);
        EXPECT_TRUE(showsFrame(*answer.frame, index)) << index;
    }
};
