#include "simhost/frame_request.h"

#include "host/selectors.h"

namespace simhost {

host::imSourceVideoRec frameRequest(const Importer& importer, void* privateData, host::PrTime time,
                                    std::span<const host::imFrameFormat> formats) {
    auto record = filledRecord<host::imSourceVideoRec>(importer.recordFill());
    record.inPrivateData = privateData;
    record.currentStreamIdx = 0;
    record.inFrameTime = time;
    record.inFrameFormats = formats.empty() ? nullptr : formats.data();
    record.inNumFrameFormats = static_cast<std::int32_t>(formats.size());
    record.removePulldown = 0;
    record.outFrame = nullptr;
    return record;
}

FrameAnswer requestFrame(const Importer& importer, host::imSourceVideoRec record, const char* name,
                         const std::function<std::int32_t(void* record)>& call) {
    Host& host = importer.host();
    host::PPixHand received = nullptr;
    record.outFrame = &received;
    GuardedRecord guarded(record, recordSizes(host.profile().interfaceVersion).sourceVideo);
    FrameAnswer out;
    out.result = call(guarded.address());
    importer.checkBounds(guarded, name);
    out.answer = {out.result, record, guarded.value()};
    if (out.result != host::imNoErr) {
        if (received != nullptr) {
            host.addViolation({Rule::kFramesNoneOnFailure, name,
                               "a frame with result " + std::to_string(out.result), "imSourceVideoRec",
                               "outFrame"});
            (void)host.takeDelivered(received, name);
        }
        return out;
    }
    if (received == nullptr) {
        host.addViolation(
            {Rule::kFramesOnSuccess, name, "null with result 0", "imSourceVideoRec", "outFrame"});
        return out;
    }
    if (auto buffer = host.takeDelivered(received, name)) {
        const bool topLeft = buffer->layout().topLeft != host.oppositeOrigins();
        out.frame.emplace(host, std::move(buffer), topLeft);
    }
    return out;
}

}  // namespace simhost
