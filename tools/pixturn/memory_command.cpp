// `pixturn memory`: RotateMemoryQLM on a picture of a file's size (read from its
// header), or of the asked size. The estimate reads the receiver's Width and
// Height only, so the host's picture holds no pixels: 32767 x 32767 is answered
// at once. The number goes first on its own so that scripts can read it.
#include <cinttypes>
#include <cstdio>

#include "simhost/simulated_host.h"
#include "tools/pixturn/command_support.h"
#include "tools/pixturn/commands.h"
#include "tools/pixturn/failure.h"
#include "tools/pixturn/image_files.h"
#include "tools/pixturn/method_call.h"

namespace pixturn {

int RunMemoryEstimate(const Command& command, const Invocation& invocation) {
    const bool fromFile = !invocation.operands.empty();
    if (fromFile == invocation.Has(kOptionSize)) {
        throw UsageError(std::string(command.name) + ": give either a FILE or --size WxH");
    }
    const PictureSize size = invocation.size;
    if (!fromFile && (size.width > simhost::kLargestPictureSide || size.height > simhost::kLargestPictureSide)) {
        throw UsageError("--size: " + SizeText(size.width, size.height) + " is over the host's limit of " +
                         std::to_string(simhost::kLargestPictureSide) + " pixels a side");
    }
    ReadSettings header = invocation.reading;
    header.sizeOnly = true;
    const Image input = fromFile ? ReadImageFile(invocation.operands.front(), header) : Image();

    PluginHost host(SettingsFrom(invocation));
    HostPicture receiver = fromFile ? host.MakeSizedPicture(input.width, input.height)
                                    : host.MakeSizedPicture(size.width, size.height);
    MethodArguments arguments;
    arguments.angle = invocation.angle;
    const MethodOutcome outcome = CallMethod(host, *command.method, receiver.get(), arguments);
    const std::string subject = fromFile ? invocation.operands.front() + " (" +
                                               SizeText(input.width, input.height) + ")"
                                         : "a " + SizeText(size.width, size.height) + " picture";
    std::printf("%" PRId64 " bytes (%s): %s on %s, %s\n", *outcome.bytes, MebibyteText(*outcome.bytes).c_str(),
                outcome.call.c_str(), subject.c_str(), HostText(invocation).c_str());
    return kExitSuccess;
}

}  // namespace pixturn
