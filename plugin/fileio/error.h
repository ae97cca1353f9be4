// The exceptions of failed reads and seeks. Callers catch them as fileio::Error, std::runtime_error or
// std::exception and log what().
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace fileio {

/// Base of the file errors; carries only its message.
class Error : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Fewer bytes arrived than asked for. "Read error: size: 65536, read: 1200"
class ReadError : public Error {
 public:
    ReadError(std::uint64_t requestedSize, std::uint64_t bytesRead)
        : Error("Read error: size: " + std::to_string(requestedSize) +
                ", read: " + std::to_string(bytesRead)),
          size(requestedSize),
          read(bytesRead) {}

    std::uint64_t size;  ///< bytes requested
    std::uint64_t read;  ///< bytes obtained
};

/// The position was refused. "Seek error: offset: -1"
class SeekError : public Error {
 public:
    explicit SeekError(std::int64_t requestedOffset)
        : Error("Seek error: offset: " + std::to_string(requestedOffset)), offset(requestedOffset) {}

    std::int64_t offset;  ///< the offset asked for
};

}  // namespace fileio
