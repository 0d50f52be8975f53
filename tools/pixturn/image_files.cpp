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

// Standard input is read whole first: the decoders rewind to the start after
// looking at the signature, which a pipe cannot do.
std::string ReadStandardInput() {
    std::string bytes;
    char buffer[1 << 16];
    size_t count;
    while ((count = std::fread(buffer, 1, sizeof buffer, stdin)) > 0) bytes.append(buffer, count);
    if (std::ferror(stdin)) throw RunError(std::string("standard input: cannot read: ") + std::strerror(errno));
    return bytes;
}

}  // namespace

Image ReadImageFile(const std::string& path, const ReadSettings& settings) {
    const bool standardInput = path == kStandardStream;
    const std::string name = standardInput ? "standard input" : path;
    std::string bytes;
    std::unique_ptr<FILE, FileCloser> file;
    if (standardInput) {
        bytes = ReadStandardInput();
        if (!bytes.empty()) file.reset(fmemopen(bytes.data(), bytes.size(), "rb"));
    } else {
        file.reset(std::fopen(path.c_str(), "rb"));
    }
    if (file == nullptr && !(standardInput && bytes.empty())) {
        throw RunError(name + ": cannot open: " + std::strerror(errno));
    }
    uint8_t signature[8] = {};
    const size_t count = file ? std::fread(signature, 1, sizeof signature, file.get()) : 0;
    if (file && std::ferror(file.get())) throw RunError(name + ": cannot read: " + std::strerror(errno));
    if (count == 0) throw RunError(name + ": empty file, not a PNG or JPEG image");
    std::rewind(file.get());
    if (HasPngSignature(signature, count)) return ReadPng(file.get(), name, settings);
    if (HasJpegSignature(signature, count)) return ReadJpeg(file.get(), name, settings);
    throw RunError(name + ": not a PNG or JPEG file");
}

FileFormat OutputFormatOf(const std::string& path, const EncodeSettings& settings) {
    if (settings.format) return *settings.format;
    if (path == kStandardStream) throw UsageError("standard output needs --format png or --format jpeg");
    const std::string extension = LowerCaseExtension(path);
    if (extension == ".png") return FileFormat::Png;
    if (extension == ".jpg" || extension == ".jpeg") return FileFormat::Jpeg;
    throw UsageError(path + ": unknown output format" + (extension.empty() ? "" : " '" + extension + "'") +
                     " (name it .png, .jpg or .jpeg, or give --format)");
}

void EncodeImageFile(FILE* stream, const std::string& path, const Image& image, ImageRole role,
                     const EncodeSettings& settings) {
    if (OutputFormatOf(path, settings) == FileFormat::Png) {
        WritePng(stream, image, role, settings.pngLevel, path);
    } else {
        WriteJpeg(stream, image, role, settings.jpeg, path);
    }
}

}  // namespace pixturn
