// Reading by content rather than by name gives the clearer message for a file
// that is not what its name says ("not a PNG or JPEG file").
#include "tools/pixturn/image_files.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "tools/pixturn/failure.h"
#include "tools/pixturn/jpeg_file.h"
#include "tools/pixturn/png_file.h"

namespace pixturn {

namespace {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};

std::string LowerCaseExtension(const std::string& path) {
    const size_t dot = path.rfind('.');
    const size_t slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string extension = path.substr(dot);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

}  // namespace

Image ReadImageFile(const std::string& path) {
    std::unique_ptr<FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr) throw RunError(path + ": cannot open: " + std::strerror(errno));
    uint8_t signature[8] = {};
    const size_t count = std::fread(signature, 1, sizeof signature, file.get());
    if (std::ferror(file.get())) throw RunError(path + ": cannot read: " + std::strerror(errno));
    if (count == 0) throw RunError(path + ": empty file, not a PNG or JPEG image");
    std::rewind(file.get());
    if (HasPngSignature(signature, count)) return ReadPng(file.get(), path);
    if (HasJpegSignature(signature, count)) return ReadJpeg(file.get(), path);
    throw RunError(path + ": not a PNG or JPEG file");
}

FileFormat OutputFormatOf(const std::string& path) {
    const std::string extension = LowerCaseExtension(path);
    if (extension == ".png") return FileFormat::Png;
    if (extension == ".jpg" || extension == ".jpeg") return FileFormat::Jpeg;
    throw UsageError(path + ": unknown output format" + (extension.empty() ? "" : " '" + extension + "'") +
                     " (name it .png, .jpg or .jpeg)");
}

void EncodeImageFile(AtomicOutputFile& output, const Image& image, ImageRole role) {
    if (OutputFormatOf(output.path()) == FileFormat::Png) {
        WritePng(output.stream(), image, role, output.path());
    } else {
        WriteJpeg(output.stream(), image, role, output.path());
    }
}

}  // namespace pixturn
