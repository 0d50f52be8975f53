// Image files by kind: an input's kind is told by its first bytes, whatever its
// name; an output's kind by its name's extension (.png, .jpg, .jpeg).
#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "tools/pixturn/image.h"
#include "tools/pixturn/jpeg_file.h"

namespace pixturn {

enum class FileFormat { Png, Jpeg };

// "-" names standard input or standard output, as in most image tools.
constexpr const char* kStandardStream = "-";

struct EncodeSettings {
    std::optional<FileFormat> format;  // none: by the output's extension
    std::optional<int> pngLevel;  // none: fast (PNG writing explains)
    JpegSettings jpeg;
};

// Throws Failure naming the file: missing, unreadable, neither PNG nor JPEG,
// corrupt, or over the host's size limit.
Image ReadImageFile(const std::string& path, const ReadSettings& settings = {});

// The format an output path asks for: the one given, else its extension's.
// Throws a usage Failure naming the path when neither says PNG or JPEG.
FileFormat OutputFormatOf(const std::string& path, const EncodeSettings& settings);

// Encodes the image into the stream in the format path asks for.
void EncodeImageFile(FILE* stream, const std::string& path, const Image& image, ImageRole role,
                     const EncodeSettings& settings);

}  // namespace pixturn
