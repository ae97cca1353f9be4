// An asynchronous importer as the host holds it: its entry and its private data. initiate and getFrame may be
// called from several threads at once; flush and close obey the host's rules (flush before close, nothing
// after close). The destructor flushes and closes.
#pragma once

#include <cstdint>
#include <span>

#include "host/records.h"
#include "simhost/clip.h"

namespace simhost {

class AsyncClip {
 public:
    explicit AsyncClip(const Clip& clip);
    AsyncClip(const AsyncClip&) = delete;
    AsyncClip& operator=(const AsyncClip&) = delete;
    ~AsyncClip();

    /// What imCreateAsyncImporter answered.
    const Answer<host::imAsyncImporterCreationRec>& creation() const noexcept { return m_creation; }
    bool isOpen() const noexcept { return m_entry != nullptr; }

    /// aiInitiateAsyncRead.
    std::int32_t initiate(host::PrTime time, std::span<const host::imFrameFormat> formats) const;
    /// aiGetFrame; waits as long as the plug-in does.
    FrameAnswer getFrame(host::PrTime time, std::span<const host::imFrameFormat> formats) const;
    /// aiCancelAsyncRead.
    std::int32_t cancel(host::PrTime time, std::span<const host::imFrameFormat> formats) const;
    std::int32_t flush() const;
    /// aiClose. Does nothing when not open.
    std::int32_t close();
    /// Any selector with any parameter.
    std::int32_t call(std::int32_t selector, void* param) const;
    void* privateData() const noexcept { return m_privateData; }

 private:
    std::int32_t request(std::int32_t selector, host::PrTime time,
                         std::span<const host::imFrameFormat> formats) const;

    const Importer* m_importer;
    Answer<host::imAsyncImporterCreationRec> m_creation;
    host::AsyncImportEntryFn m_entry = nullptr;
    void* m_privateData = nullptr;
};

}  // namespace simhost
