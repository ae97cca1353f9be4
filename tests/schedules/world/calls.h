// The host's calls, as a scenario makes them from its threads.
#pragma once

#include <cstdint>

#include "host/entry_points.h"
#include "host/std_parms.h"

namespace schedules::world {

/// Result codes of the interface that scenarios expect.
inline constexpr std::int32_t kOk = 0;
inline constexpr std::int32_t kException = 99;  ///< also: the importer is not known

/// imInit, imShutdown.
void startPlugin();
void endPlugin();

/// What became of a request for a frame. The frame is the host's then; taking its number gives it back.
struct FrameAnswer {
    std::int32_t result = -1;
    int picture = -1;  ///< -1: no frame
};

/// One file that the host has opened and asked about.
class Clip {
 public:
    Clip();
    /// Closes it, unless it was closed.
    ~Clip();
    Clip(const Clip&) = delete;
    Clip& operator=(const Clip&) = delete;

    FrameAnswer frame(std::uint32_t index) const;
    /// Sample frames from `position`, or from where the last such read ended if it is negative.
    std::int32_t sound(std::int64_t position) const;
    std::int32_t quiet() const;
    /// Opens the quieted file once more and asks about it.
    std::int32_t reopen() const;
    std::int32_t close() const;
    /// No call of the host's is to come any more.
    void forget() noexcept { m_privateData = nullptr; }
    void* privateData() const noexcept { return m_privateData; }

 private:
    void* m_privateData = nullptr;
};

/// An asynchronous importer on a clip.
class AsyncClip {
 public:
    explicit AsyncClip(const Clip& clip);
    /// Closes it, unless it was closed.
    ~AsyncClip();
    AsyncClip(const AsyncClip&) = delete;
    AsyncClip& operator=(const AsyncClip&) = delete;

    std::int32_t initiate(std::uint32_t index) const;
    FrameAnswer get(std::uint32_t index) const;
    std::int32_t flush() const;
    std::int32_t close() const;
    void forget() noexcept { m_privateData = nullptr; }

 private:
    host::AsyncImportEntryFn m_entry = nullptr;
    void* m_privateData = nullptr;
};

}  // namespace schedules::world
