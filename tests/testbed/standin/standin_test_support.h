// What the tests of the stand-in share: its own list of coded types, format data, payloads, output buffers,
// an environment and a trace file. Nothing here is taken from the tables under test.

#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "standin/environment.h"
#include "standin/library.h"
#include "tests/support/format_lists.h"
#include "video/orvantis_common64.h"

namespace orvantis::standin::test {

using formatlists::Model;
using TestType = formatlists::CodedType;

// Names parameterised tests by their type.
struct TagOfParam {
    template <class Info>
    std::string operator()(const Info& row) const {
        return row.param.tag;
    }
};

// All coded types, in the order in which a file announces them.
const std::vector<TestType>& allTypes();
const TestType& testType(const std::string& tag);

// A BITMAPINFOHEADER with `extraBytes` behind it.
std::vector<std::uint8_t> formatData(const std::string& tag, std::int32_t width, std::int32_t height,
                                     std::size_t extraBytes = 0);

// Samples of the type's depth, all values equally likely, the same for the same seed. `margin` keeps them
// that far from both ends.
std::vector<std::uint8_t> randomPayload(const TestType& type, std::uint32_t width, std::uint32_t height,
                                        std::uint32_t seed, std::uint32_t margin = 0);

// A request as the importer makes it.
OrvantisFrameFormat request(std::uint32_t type, std::uint32_t flags = 0, std::uint32_t colorSpace = 2,
                            std::uint32_t range = 2);

// The same with the range and colour space that fit the layout: limited for YUV, full for RGB.
OrvantisFrameFormat fittingRequest(std::uint32_t type, std::uint32_t flags = 0);

// All layouts that frames can be delivered in.
const std::vector<std::uint32_t>& deliverableLayouts();
bool isYuvLayout(std::uint32_t type);

// Rows with padding between and guards round them, all filled with one pattern before.
class OutputRows {
 public:
    static constexpr std::uint8_t kPattern = 0xA5;

    // A negative pitch puts the first row last in memory.
    OutputRows(std::size_t rowBytes, std::uint32_t height, std::int32_t pitch);

    const OrvantisOutputBuffer& buffer() const { return m_buffer; }
    // Row `index` in the order of writing.
    const std::uint8_t* row(std::uint32_t index) const;
    // How many bytes outside the rows have changed.
    std::size_t damagedBytes() const;
    // All rows behind one another.
    std::vector<std::uint8_t> packed() const;

 private:
    std::vector<std::uint8_t> m_memory;
    std::size_t m_rowBytes;
    std::uint32_t m_height;
    std::int64_t m_pitch;
    std::int64_t m_first;
    OrvantisOutputBuffer m_buffer;
};

// An environment that tests write to.
class FakeEnvironment {
 public:
    std::string& operator[](const std::string& name) { return m_values[name]; }
    EnvironmentReader reader() {
        return [this](const char* name) { return m_values[name]; };
    }

 private:
    std::map<std::string, std::string> m_values;
};

// A library object with one open session, initialised once; both are undone at the end.
class OpenLibrary {
 public:
    OpenLibrary();
    ~OpenLibrary();
    OpenLibrary(const OpenLibrary&) = delete;
    OpenLibrary& operator=(const OpenLibrary&) = delete;

    FakeEnvironment environment;  // before the library that reads it
    Library library;
    std::uint32_t handle = 0;
};

// A file name in the temporary folder that no other test uses; the file is removed at both ends of the
// object's life.
class TemporaryFile {
 public:
    TemporaryFile();
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string utf8Path() const;
    std::vector<std::uint8_t> bytes() const;
    std::vector<std::string> lines() const;
    void write(const std::vector<std::uint8_t>& bytes) const;

 private:
    std::filesystem::path m_path;
};

// Unlike a name that is merely random, this one is not shared with a test process that runs at the same time.
std::string uniqueName();

// Sets (or with an empty value removes) a variable of this process, as a test program that loads the DLL
// does.
void setProcessEnvironment(const std::string& name, const std::string& value);

}  // namespace orvantis::standin::test
