// A file in memory that records what is asked of it and fails on demand.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

#include "fileio/file.h"

namespace orvantis::audio_test {

struct ReadCall {
    std::int64_t offset;
    std::uint64_t count;
    std::byte* target;
};

class RecordingFile final : public fileio::File {
 public:
    std::vector<std::byte> content;
    std::vector<std::int64_t> seeks;
    std::vector<ReadCall> reads;
    int tells = 0;
    std::size_t refuseSeekNumber = std::numeric_limits<std::size_t>::max();  ///< counted from 0
    std::size_t shortReadNumber = std::numeric_limits<std::size_t>::max();   ///< counted from 0
    std::uint64_t shortReadBytes = 0;                                        ///< what that read delivers
    std::function<void(const ReadCall&)> beforeRead;

    void forgetCalls() {
        seeks.clear();
        reads.clear();
        tells = 0;
    }

    bool open(const char*, int) override { return false; }
    void close() override {}
    std::int64_t size() override { return static_cast<std::int64_t>(content.size()); }
    std::int64_t tell() override {
        ++tells;
        return m_position;
    }
    bool seek(std::int64_t offset) override {
        seeks.push_back(offset);
        if (offset < 0 || seeks.size() - 1 == refuseSeekNumber) {
            return false;
        }
        m_position = offset;
        return true;
    }
    std::uint64_t read(void* buffer, std::uint64_t count) override {
        reads.push_back({m_position, count, static_cast<std::byte*>(buffer)});
        if (beforeRead) {
            beforeRead(reads.back());
        }
        const auto position = std::min(static_cast<std::size_t>(m_position), content.size());
        std::uint64_t available = std::min<std::uint64_t>(count, content.size() - position);
        if (reads.size() - 1 == shortReadNumber) {
            available = std::min(available, shortReadBytes);
        }
        if (available != 0) {
            std::memcpy(buffer, content.data() + position, available);
        }
        m_position += static_cast<std::int64_t>(available);
        return available;
    }
    std::uint64_t write(const void*, std::uint64_t) override { return 0; }

 private:
    std::int64_t m_position = 0;
};

}  // namespace orvantis::audio_test
