// Pieces every command uses: the host the command line asks for, how pictures
// and hosts are named in messages, and writing a set of outputs all or none.
#pragma once

#include <string>
#include <vector>

#include "tools/pixturn/image.h"
#include "tools/pixturn/invocation.h"
#include "tools/pixturn/plugin_host.h"

namespace pixturn {

HostSettings SettingsFrom(const Invocation& invocation);

std::string SizeText(int32_t width, int32_t height);  // "100 x 50"
std::string HostText(const Invocation& invocation);   // "desktop host, version 2019"

struct OutputImage {
    std::string path;
    const Image* image;
    ImageRole role;
};

// Encodes every image into a temporary file first and renames them only when
// all are written, so that a failure leaves none of them behind.
void WriteOutputs(const std::vector<OutputImage>& outputs);

}  // namespace pixturn
