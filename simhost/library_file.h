// What the loaders of foreign libraries (Mach-O in plugin_library_macho.cpp, PE
// in plugin_library_pe.cpp) share: the file read whole, bounds-checked reads of
// its bytes, and the error that refuses a load with the file's name.
#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace simhost::internal {

class LoadFailure : public std::runtime_error {
   public:
    LoadFailure(const std::string& path, const std::string& why)
        : std::runtime_error("cannot load " + path + ": " + why) {}
};

inline std::vector<uint8_t> ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw LoadFailure(path, "cannot open it");
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Bounds-checked reads of the file's bytes: every offset the file gives is
// checked against its length before it is followed.
class Bytes {
   public:
    Bytes(const std::string& path, const uint8_t* data, size_t size) : path_(path), data_(data), size_(size) {}

    const uint8_t* At(uint64_t offset, uint64_t length, const char* what) const {
        if (offset > size_ || length > size_ - offset)
            throw LoadFailure(path_, std::string("truncated: ") + what + " lies past its end");
        return data_ + offset;
    }
    template <typename Value>
    Value Read(uint64_t offset, const char* what) const {
        Value value;
        std::memcpy(&value, At(offset, sizeof value, what), sizeof value);
        return value;
    }
    uint32_t ReadBigEndian32(uint64_t offset, const char* what) const {
        return __builtin_bswap32(Read<uint32_t>(offset, what));
    }
    const std::string& path() const { return path_; }

   private:
    const std::string& path_;
    const uint8_t* data_;
    size_t size_;
};

}  // namespace simhost::internal
