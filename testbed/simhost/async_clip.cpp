#include "simhost/async_clip.h"

#include <utility>

#include "host/selectors.h"
#include "simhost/frame_request.h"

namespace simhost {

AsyncClip::AsyncClip(const Clip& clip) : m_importer(&clip.importer()) {
    auto record = filledRecord<host::imAsyncImporterCreationRec>(m_importer->recordFill());
    record.inPrivateData = clip.privateData();
    record.outAsyncEntry = nullptr;
    record.outAsyncPrivateData = nullptr;
    GuardedRecord guarded(record);
    const std::int32_t result = m_importer->call(host::imCreateAsyncImporter, guarded.address(), nullptr);
    m_importer->checkBounds(guarded, "imCreateAsyncImporter");
    m_creation = {result, record, guarded.value()};
    if (result != host::imNoErr) {
        return;
    }
    m_entry = m_creation.record.outAsyncEntry;
    m_privateData = m_creation.record.outAsyncPrivateData;
    if (m_entry == nullptr || m_privateData == nullptr) {
        m_importer->host().addViolation({Rule::kAsyncImporter, "imCreateAsyncImporter", "null with result 0",
                                         "imAsyncImporterCreationRec",
                                         m_entry == nullptr ? "outAsyncEntry" : "outAsyncPrivateData"});
        m_entry = nullptr;
    }
}

AsyncClip::~AsyncClip() {
    if (isOpen()) {
        (void)flush();
        (void)close();
    }
}

std::int32_t AsyncClip::call(std::int32_t selector, void* param) const {
    return m_entry(selector, param);
}

std::int32_t AsyncClip::request(std::int32_t selector, host::PrTime time,
                                std::span<const host::imFrameFormat> formats) const {
    auto record = filledRecord<host::aiAsyncRequest>(m_importer->recordFill());
    record.inPrivateData = m_privateData;
    record.unused1 = 0;
    record.inSourceRec = frameRequest(*m_importer, m_privateData, time, formats);
    GuardedRecord guarded(record, recordSizes(m_importer->host().profile().interfaceVersion).asyncRequest);
    const std::int32_t result = call(selector, guarded.address());
    m_importer->checkBounds(guarded, host::asyncSelectorName(static_cast<std::uint32_t>(selector)));
    return result;
}

std::int32_t AsyncClip::initiate(host::PrTime time, std::span<const host::imFrameFormat> formats) const {
    return request(host::aiInitiateAsyncRead, time, formats);
}

std::int32_t AsyncClip::cancel(host::PrTime time, std::span<const host::imFrameFormat> formats) const {
    return request(host::aiCancelAsyncRead, time, formats);
}

FrameAnswer AsyncClip::getFrame(host::PrTime time, std::span<const host::imFrameFormat> formats) const {
    const auto record = frameRequest(*m_importer, m_privateData, time, formats);
    return requestFrame(*m_importer, record, "aiGetFrame",
                        [this](void* address) { return call(host::aiGetFrame, address); });
}

std::int32_t AsyncClip::flush() const {
    return call(host::aiFlush, m_privateData);
}

std::int32_t AsyncClip::close() {
    if (!isOpen()) {
        return host::aiNoError;
    }
    const std::int32_t result = call(host::aiClose, std::exchange(m_privateData, nullptr));
    m_entry = nullptr;
    return result;
}

}  // namespace simhost
