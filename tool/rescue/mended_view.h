// A damaged file as it will be once it is mended, before a byte of it is changed. Read only.
#pragma once

#include "tool/rescue/mending.h"
#include "tool/rescue/storage.h"

namespace simhost::tool {

/// `clip` and `mending` outlive it.
class MendedView : public Storage {
 public:
    MendedView(Storage& clip, const Mending& mending) : m_clip(clip), m_mending(mending) {}

    std::uint64_t size() override { return m_mending.newSize; }
    std::size_t read(std::uint64_t at, std::span<std::uint8_t> bytes) override;
    Extent dataFrom(std::uint64_t at) override;

    // Not to be called.
    void write(std::uint64_t at, std::span<const std::uint8_t> bytes) override;
    void resize(std::uint64_t size) override;
    void flush() override;
    void allowHoles() override;

 private:
    Storage& m_clip;
    const Mending& m_mending;
};

}  // namespace simhost::tool
