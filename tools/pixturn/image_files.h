// Image files by kind: an input's kind is told by its first bytes, whatever its
// name; an output's kind by its name's extension (.png, .jpg, .jpeg).
#pragma once

#include <string>

#include "tools/pixturn/atomic_output.h"
#include "tools/pixturn/image.h"

namespace pixturn {

enum class FileFormat { Png, Jpeg };

// Throws Failure naming the file: missing, unreadable, neither PNG nor JPEG,
// corrupt, or over the host's size limit.
Image ReadImageFile(const std::string& path);

// The format an output path asks for. Throws a usage Failure naming the path
// when the extension is not one of PNG's or JPEG's.
FileFormat OutputFormatOf(const std::string& path);

// Encodes the image into the pending output, in the format its path asks for.
void EncodeImageFile(AtomicOutputFile& output, const Image& image, ImageRole role);

}  // namespace pixturn
