#include "tests/testbed/standin/standin_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace orvantis::standin::test {

const std::vector<TestType>& allTypes() {
    return formatlists::codedTypes();
}

const TestType& testType(const std::string& tag) {
    for (const TestType& type : allTypes()) {
        if (type.tag == tag) {
            return type;
        }
    }
    throw std::logic_error("no such type: " + tag);
}

std::vector<std::uint8_t> formatData(const std::string& tag, std::int32_t width, std::int32_t height,
                                     std::size_t extraBytes) {
    std::vector<std::uint8_t> bytes;
    const auto append = [&](std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    };
    append(static_cast<std::uint32_t>(40 + extraBytes), 4);  // biSize
    append(static_cast<std::uint32_t>(width), 4);            // biWidth
    append(static_cast<std::uint32_t>(height), 4);           // biHeight
    append(1, 2);                                            // biPlanes
    append(24, 2);                                           // biBitCount
    bytes.insert(bytes.end(), tag.begin(), tag.end());       // biCompression, in reading order
    append(0, 4);                                            // biSizeImage
    append(0, 4);                                            // biXPelsPerMeter
    append(0, 4);                                            // biYPelsPerMeter
    append(0, 4);                                            // biClrUsed
    append(0, 4);                                            // biClrImportant
    bytes.resize(bytes.size() + extraBytes, 0xEE);
    return bytes;
}

std::vector<std::uint8_t> randomPayload(const TestType& type, std::uint32_t width, std::uint32_t height,
                                        std::uint32_t seed, std::uint32_t margin) {
    std::mt19937 random(seed);
    const std::uint32_t values = (1U << type.bits) - 2 * margin;
    std::vector<std::uint8_t> bytes(type.payloadBytes(width, height));
    const std::size_t step = type.bits == 8 ? 1 : 2;
    for (std::size_t i = 0; i < bytes.size(); i += step) {
        const std::uint32_t sample = margin + random() % values;
        bytes[i] = static_cast<std::uint8_t>(sample);
        if (step == 2) {
            bytes[i + 1] = static_cast<std::uint8_t>(sample >> 8);
        }
    }
    return bytes;
}

OrvantisFrameFormat request(std::uint32_t type, std::uint32_t flags, std::uint32_t colorSpace,
                            std::uint32_t range) {
    return {0, 0, 254, 1, type, flags, colorSpace, range, 0};
}

OrvantisFrameFormat fittingRequest(std::uint32_t type, std::uint32_t flags) {
    return isYuvLayout(type) ? request(type, flags, 1, 1) : request(type, flags, 2, 2);
}

const std::vector<std::uint32_t>& deliverableLayouts() {
    static const std::vector<std::uint32_t> layouts = {1, 2, 4, 5, 11, 15, 16, 19, 31, 32, 49, 50};
    return layouts;
}

bool isYuvLayout(std::uint32_t type) {
    return type == 4 || type == 5 || type == 11 || type == 49 || type == 50;
}

OutputRows::OutputRows(std::size_t rowBytes, std::uint32_t height, std::int32_t pitch)
    : m_rowBytes(rowBytes), m_height(height), m_pitch(pitch) {
    constexpr std::size_t kGuard = 64;
    const std::int64_t span = (pitch < 0 ? -m_pitch : m_pitch) * height;
    m_memory.assign(static_cast<std::size_t>(span) + 2 * kGuard, kPattern);
    m_first = static_cast<std::int64_t>(kGuard) + (pitch < 0 ? -m_pitch * (height - 1) : 0);
    m_buffer = {m_memory.data() + m_first, static_cast<std::uint32_t>(pitch),
                static_cast<std::uint32_t>(m_pitch * height)};
}

const std::uint8_t* OutputRows::row(std::uint32_t index) const {
    return m_memory.data() + m_first + m_pitch * index;
}

std::size_t OutputRows::damagedBytes() const {
    std::vector<bool> inRow(m_memory.size(), false);
    for (std::uint32_t i = 0; i < m_height; ++i) {
        const auto start = row(i) - m_memory.data();
        std::fill_n(inRow.begin() + start, m_rowBytes, true);
    }
    std::size_t damaged = 0;
    for (std::size_t i = 0; i < m_memory.size(); ++i) {
        damaged += !inRow[i] && m_memory[i] != kPattern;
    }
    return damaged;
}

std::vector<std::uint8_t> OutputRows::packed() const {
    std::vector<std::uint8_t> bytes;
    for (std::uint32_t i = 0; i < m_height; ++i) {
        bytes.insert(bytes.end(), row(i), row(i) + m_rowBytes);
    }
    return bytes;
}

OpenLibrary::OpenLibrary() : library(environment.reader()) {
    EXPECT_EQ(library.libraryInit(), 0);
    EXPECT_EQ(library.open(&handle), 0);
}

OpenLibrary::~OpenLibrary() {
    environment = FakeEnvironment();
    library.close(handle);
    library.libraryClose();
}

std::string uniqueName() {
    static std::atomic<unsigned> count = 0;
#ifdef _WIN32
    const int process = _getpid();
#else
    const int process = getpid();
#endif
    return "standin_test_" + std::to_string(process) + "_" + std::to_string(++count);
}

// Not ASCII, since users' folders are not either.
TemporaryFile::TemporaryFile()
    : m_path(std::filesystem::temp_directory_path() /
             std::filesystem::path(u8"\u00FC_").concat(uniqueName())) {
    std::filesystem::remove(m_path);
}

TemporaryFile::~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
}

std::string TemporaryFile::utf8Path() const {
    const std::u8string text = m_path.u8string();
    return {text.begin(), text.end()};
}

std::vector<std::uint8_t> TemporaryFile::bytes() const {
    std::ifstream file(m_path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    const std::string text = content.str();
    return {text.begin(), text.end()};
}

std::vector<std::string> TemporaryFile::lines() const {
    const std::vector<std::uint8_t> content = bytes();
    std::istringstream text(std::string(content.begin(), content.end()));
    std::vector<std::string> result;
    for (std::string line; std::getline(text, line);) {
        result.push_back(line);
    }
    return result;
}

void TemporaryFile::write(const std::vector<std::uint8_t>& bytes) const {
    std::ofstream file(m_path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void setProcessEnvironment(const std::string& name, const std::string& value) {
#ifdef _WIN32
    const auto wide = [](const std::string& text) {
        return std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
    };
    ASSERT_EQ(_wputenv_s(wide(name).c_str(), wide(value).c_str()), 0);
#else
    ASSERT_EQ(value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1), 0);
#endif
}

}  // namespace orvantis::standin::test
