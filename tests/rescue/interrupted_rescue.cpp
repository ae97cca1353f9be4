// A rescue in a process of its own that is interrupted in the middle of its n-th operation on the disk, as by
// Ctrl-C:
//
//     interrupted_rescue check|out|in-place|undo CLIP N [NEW]
//
// What is done at the next step is tested with a patience that has no end; a change in place has to come to
// an end, or be taken back, even when there is none. Exits as the tool does.
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/rescue/interrupt_this.h"
#include "tool/rescue/rescue_run.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

class InterruptedDisk final : public Disk {
 public:
    InterruptedDisk(Disk& disk, unsigned operation) : m_disk(disk), m_operation(operation) {}

    unsigned operations() const noexcept { return m_done; }

    bool exists(const std::string& path) override { return m_disk.exists(path); }
    std::unique_ptr<Storage> openToRead(const std::string& path) override {
        return std::make_unique<File>(*this, m_disk.openToRead(path));
    }
    std::unique_ptr<Storage> openToChange(const std::string& path) override {
        return std::make_unique<File>(*this, m_disk.openToChange(path));
    }
    std::unique_ptr<Storage> create(const std::string& path) override {
        step();
        return std::make_unique<File>(*this, m_disk.create(path));
    }
    void publish(const std::string& from, const std::string& to) override {
        step();
        m_disk.publish(from, to);
    }
    void remove(const std::string& path) override {
        step();
        m_disk.remove(path);
    }

 private:
    class File final : public Storage {
     public:
        File(InterruptedDisk& disk, std::unique_ptr<Storage> file) : m_disk(disk), m_file(std::move(file)) {}

        std::uint64_t size() override { return m_file->size(); }
        std::size_t read(std::uint64_t at, std::span<std::uint8_t> bytes) override {
            m_disk.step();
            return m_file->read(at, bytes);
        }
        // Half of it before, half of it after.
        void write(std::uint64_t at, std::span<const std::uint8_t> bytes) override {
            m_file->write(at, bytes.first(bytes.size() / 2));
            m_disk.step();
            m_file->write(at + bytes.size() / 2, bytes.subspan(bytes.size() / 2));
        }
        void resize(std::uint64_t size) override {
            m_disk.step();
            m_file->resize(size);
        }
        void flush() override {
            m_disk.step();
            m_file->flush();
        }
        Extent dataFrom(std::uint64_t at) override { return m_file->dataFrom(at); }
        void allowHoles() override { m_file->allowHoles(); }

     private:
        InterruptedDisk& m_disk;
        std::unique_ptr<Storage> m_file;
    };

    void step() {
        if (++m_done != m_operation) {
            return;
        }
        interruptThisProcess();
        while (!interrupted()) {
            std::this_thread::yield();
        }
    }

    Disk& m_disk;
    unsigned m_operation;
    unsigned m_done = 0;
};

}  // namespace
}  // namespace simhost::tool

int main(int argc, char** argv) {
    using namespace simhost::tool;
    takeOwnConsole();
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() < 3) {
        return kUsage;
    }
    RescueOptions options;
    options.file = words[1];
    options.inPlace = words[0] == "in-place";
    options.undo = words[0] == "undo";
    options.output = words[0] == "out" ? words.at(3) : "";
    const bool changes = options.inPlace || options.undo;
    watchForInterruption(changes ? std::chrono::milliseconds(0) : std::chrono::minutes(1));
    InterruptedDisk disk(systemDisk(), static_cast<unsigned>(std::stoul(words[2])));
    try {
        const int code = runRescue(disk, options);
        (void)std::fprintf(stderr, "%u operations\n", disk.operations());
        return code;
    } catch (const ToolError& error) {
        (void)std::fprintf(stderr, "%s\n", error.what());
        return error.code();
    }
}
