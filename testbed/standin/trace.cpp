#include "standin/trace.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace orvantis::standin {
namespace {

std::ofstream openForAppending(const std::string& path) {
    return std::ofstream(std::filesystem::path(std::u8string(path.begin(), path.end())),
                         std::ios::binary | std::ios::app);
}

}  // namespace

bool Trace::canAppend(const std::string& path) {
    return openForAppending(path).is_open();
}

void Trace::append(const std::string& path, const std::string& text) {
    const std::lock_guard lock(m_mutex);
    std::ofstream file = openForAppending(path);
    ++m_lines;
    file << '#' << m_lines << " T" << threadNumber() << ' ' << text << '\n';
}

std::size_t Trace::threadNumber() {
    const std::thread::id self = std::this_thread::get_id();
    const auto known = std::ranges::find(m_threads, self);
    const auto number = static_cast<std::size_t>(known - m_threads.begin()) + 1;
    if (known == m_threads.end()) {
        m_threads.push_back(self);
    }
    return number;
}

std::string traceText(const OrvantisFrameFormat* format) {
    if (format == nullptr) {
        return "null";
    }
    const std::uint32_t words[] = {format->width,      format->height, format->word3,
                                   format->word4,      format->type,   format->flags,
                                   format->colorSpace, format->range,  format->word9};
    std::string text = "{";
    for (const std::uint32_t word : words) {
        text += (text.size() == 1 ? "" : ",") + std::to_string(word);
    }
    return text + "}";
}

std::string traceText(const OrvantisOutputBuffer* out) {
    if (out == nullptr) {
        return "null";
    }
    return std::string(out->pixels == nullptr ? "{null" : "{pixels") + ",pitch " +
           std::to_string(static_cast<std::int32_t>(out->rowPitch)) + ",total " +
           std::to_string(out->totalBytes) + "}";
}

std::string traceBytes(const void* bytes, std::uint64_t count) {
    return (bytes == nullptr ? "{null," : "{") + std::to_string(count) + " bytes}";
}

std::string traceHandle(std::uint32_t handle) {
    char digits[8];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), handle, 16).ptr;
    return "0x" + std::string(digits, end);
}

}  // namespace orvantis::standin
