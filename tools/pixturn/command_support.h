// Pieces every command uses: the host the command line asks for, how pictures
// and hosts are named in messages, and writing a set of outputs all or none.
#pragma once

#include <string>
#include <vector>

#include "tools/pixturn/image.h"
#include "tools/pixturn/image_files.h"
#include "tools/pixturn/invocation.h"
#include "tools/pixturn/plugin_host.h"

namespace pixturn {

HostSettings SettingsFrom(const Invocation& invocation);

std::string SizeText(int32_t width, int32_t height);  // "100 x 50"
std::string HostText(const Invocation& invocation);   // "desktop host, version 2019"
std::string MebibyteText(int64_t bytes);              // "45.8 MiB"

struct OutputImage {
    std::string path;  // "-": standard output
    const Image* image;
    ImageRole role;
};

// Encodes every image into a temporary file first (standard output's into
// memory) and renames them only when all are written and every target can take
// its file, so that a failure leaves none of them behind.
void WriteOutputs(const std::vector<OutputImage>& outputs, const EncodeSettings& settings);

// Refuses, as a usage error, two outputs that name one file: the second would
// replace the first.
void CheckDistinctOutputs(const std::string& first, const std::string& second);

// Makes the directory and its parents if they are missing.
void MakeDirectory(const std::string& directory);

// The line that tells a user what was done; to stderr when the picture itself
// goes to standard output.
FILE* ReportStream(const std::string& output);

}  // namespace pixturn
