// A disk in memory whose writes reach the platter only when they are flushed, in any order, and which can be
// ended at each of its operations. One thread at a time.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "tests/rescue/memory_storage.h"

namespace simhost::tool {

struct CrashedFile {
    struct Change {
        bool isResize = false;
        std::uint64_t at = 0;  // or the new size
        TestBytes bytes;
    };

    TestBytes durable;
    std::vector<Change> pending;

    static void apply(TestBytes& to, const Change& change) {
        if (change.isResize) {
            to.resize(static_cast<std::size_t>(change.at));
            return;
        }
        MemoryStorage(to).write(change.at, change.bytes);
    }
    TestBytes now() const {
        TestBytes out = durable;
        for (const Change& change : pending) {
            apply(out, change);
        }
        return out;
    }
};

/// Thrown in the place of the power supply.
struct PowerCut {};

class CrashDisk final : public Disk {
 public:
    enum class Survive { kNothing, kEverything, kEveryOther, kLast };

    explicit CrashDisk(TestBytes clip) { m_files["clip"].durable = std::move(clip); }

    /// The n-th operation from now on, from 1, does not come back. 0: all do.
    void cutAt(std::uint64_t operation) { m_left = operation; }
    /// From the n-th operation on writes fail as on a full disk, `count` of them.
    void failFrom(std::uint64_t operation, std::uint64_t count) {
        m_failIn = operation;
        m_failures = count;
    }
    /// What the platter holds after the cut.
    void restart(Survive what) {
        m_left = m_failIn = 0;
        for (auto& [name, file] : m_files) {
            TestBytes out = file.durable;
            for (std::size_t i = 0; i < file.pending.size(); ++i) {
                const bool kept = what == Survive::kEverything ||
                                  (what == Survive::kEveryOther && i % 2 == 0) ||
                                  (what == Survive::kLast && i + 1 == file.pending.size());
                if (kept) {
                    CrashedFile::apply(out, file.pending[i]);
                }
            }
            file.durable = out;
            file.pending.clear();
        }
    }
    TestBytes bytes(const std::string& name) const { return m_files.at(name).now(); }
    void setBytes(const std::string& name, TestBytes bytes) { m_files[name] = {std::move(bytes), {}}; }

    bool exists(const std::string& path) override { return m_files.contains(path); }
    std::unique_ptr<Storage> openToRead(const std::string& path) override {
        return std::make_unique<File>(*this, path);
    }
    std::unique_ptr<Storage> openToChange(const std::string& path) override {
        return std::make_unique<File>(*this, path);
    }
    std::unique_ptr<Storage> create(const std::string& path) override {
        step();
        m_files[path] = {};
        return std::make_unique<File>(*this, path);
    }
    void publish(const std::string& from, const std::string& to) override {
        if (m_files.contains(to)) {
            throw ToolError(kNoOutput, "taken");
        }
        if (!m_files.at(from).pending.empty()) {
            throw std::logic_error("published before it was flushed");
        }
        step();
        m_files[to] = m_files.at(from);
        m_files.erase(from);
    }
    void remove(const std::string& path) override {
        step();
        m_files.erase(path);
    }

 private:
    class File final : public Storage {
     public:
        File(CrashDisk& disk, std::string path) : m_disk(disk), m_path(std::move(path)) {}

        std::uint64_t size() override { return file().now().size(); }
        std::size_t read(std::uint64_t at, std::span<std::uint8_t> bytes) override {
            TestBytes now = file().now();
            return MemoryStorage(now).read(at, bytes);
        }
        void write(std::uint64_t at, std::span<const std::uint8_t> bytes) override {
            const CrashedFile::Change half{
                false, at, {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2)}};
            file().pending.push_back(half);
            m_disk.step();
            file().pending.back().bytes.assign(bytes.begin(), bytes.end());
        }
        void resize(std::uint64_t size) override {
            m_disk.step();
            file().pending.push_back({true, size, {}});
        }
        void flush() override {
            m_disk.step();
            file().durable = file().now();
            file().pending.clear();
        }
        Extent dataFrom(std::uint64_t at) override { return {std::min(at, size()), size()}; }
        void allowHoles() override {}

     private:
        CrashedFile& file() { return m_disk.m_files.at(m_path); }

        CrashDisk& m_disk;
        std::string m_path;
    };

    void step() {
        if (m_left != 0 && --m_left == 0) {
            throw PowerCut();
        }
        if (m_failIn == 0) {
            return;
        }
        if (m_failIn > 1) {
            --m_failIn;
        } else if (m_failures > 0) {
            --m_failures;
            throw ToolError(kNoOutput, "disk full");
        }
    }

    std::map<std::string, CrashedFile> m_files;
    std::uint64_t m_left = 0;
    std::uint64_t m_failIn = 0;
    std::uint64_t m_failures = 0;
};

}  // namespace simhost::tool
