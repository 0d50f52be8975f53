// Messages name the host with its version because the plug-in's behaviour (the
// registration form, RotateQLM's default background) depends on both.
#include "tools/pixturn/command_support.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <utility>

#include "tools/pixturn/atomic_output.h"
#include "tools/pixturn/failure.h"
#include "tools/pixturn/image_files.h"
#include "tools/pixturn/method_call.h"

namespace pixturn {

HostSettings SettingsFrom(const Invocation& invocation) {
    HostSettings settings;
    settings.choice = &HostChoiceNamed(invocation.host);
    settings.version = invocation.hostVersion;
    settings.pluginPath = invocation.plugin;
    return settings;
}

std::string SizeText(int32_t width, int32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

std::string HostText(const Invocation& invocation) {
    return invocation.host + " host, " +
           (invocation.hostVersion ? "version " + NumberText(*invocation.hostVersion) : "no version");
}

namespace {

struct MemoryStream {
    char* data = nullptr;
    size_t size = 0;
    FILE* stream = nullptr;
    ~MemoryStream() {
        if (stream != nullptr) std::fclose(stream);
        std::free(data);
    }
};

}  // namespace

std::string MebibyteText(int64_t bytes) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f MiB", static_cast<double>(bytes) / (1024 * 1024));
    return text;
}

void WriteOutputs(const std::vector<OutputImage>& outputs, const EncodeSettings& settings) {
    std::vector<std::unique_ptr<AtomicOutputFile>> pending;
    MemoryStream standardOutput;
    for (const OutputImage& output : outputs) {
        if (output.path == kStandardStream) {
            standardOutput.stream = open_memstream(&standardOutput.data, &standardOutput.size);
            if (standardOutput.stream == nullptr) throw std::bad_alloc();
            EncodeImageFile(standardOutput.stream, output.path, *output.image, output.role, settings);
            continue;
        }
        pending.push_back(std::make_unique<AtomicOutputFile>(output.path));
        EncodeImageFile(pending.back()->stream(), output.path, *output.image, output.role, settings);
        pending.back()->Finish();
    }
    for (const auto& file : pending) file->CheckTarget();
    for (const auto& file : pending) file->Commit();
    if (standardOutput.stream == nullptr) return;
    std::fclose(std::exchange(standardOutput.stream, nullptr));
    if (std::fwrite(standardOutput.data, 1, standardOutput.size, stdout) != standardOutput.size ||
        std::fflush(stdout) != 0) {
        throw RunError(std::string("standard output: cannot write: ") + std::strerror(errno));
    }
}

void CheckDistinctOutputs(const std::string& first, const std::string& second) {
    std::error_code error;
    const auto a = std::filesystem::weakly_canonical(first, error);
    const auto b = std::filesystem::weakly_canonical(second, error);
    if (first == second || (!error && a == b)) {
        throw UsageError(first + ": named for both the picture and the mask; give each its own file");
    }
}

void MakeDirectory(const std::string& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error) throw RunError(directory + ": cannot create the directory: " + error.message());
}

FILE* ReportStream(const std::string& output) { return output == kStandardStream ? stderr : stdout; }

}  // namespace pixturn
