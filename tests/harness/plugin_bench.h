// The shipped plug-in loaded into a simulated host of the test's own, with what
// every method test needs around it: the host kinds, one call of any of the
// fifteen methods, and what the slow models say it gives.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simhost/simulated_host.h"
#include "tests/support/method_models.h"
#include "tests/support/pictures.h"

namespace test_support {

// A kind of host with the storage of the pictures a program hands the plug-in.
struct HostCase {
    const char* name;
    simhost::HostKind kind;
    simhost::Storage storage;
};
inline constexpr HostCase kHostCases[] = {
    {"Desktop32", simhost::HostKind::Desktop, simhost::Storage::GWorld32},
    {"Desktop24", simhost::HostKind::Desktop, simhost::Storage::GWorld24},
    {"Desktop16", simhost::HostKind::Desktop, simhost::Storage::GWorld16},
    {"DesktopVector", simhost::HostKind::Desktop, simhost::Storage::VectorOnly},
    {"Console", simhost::HostKind::Console, simhost::Storage::HostBitmap},
    {"Web", simhost::HostKind::Web, simhost::Storage::HostBitmap},
};

// Names parameterised tests by their case's name.
struct CaseName {
    template <typename Info>
    std::string operator()(const Info& info) const {
        return info.param.name;
    }
};

struct PluginBench {
    explicit PluginBench(simhost::HostConfig config);
    explicit PluginBench(simhost::HostKind kind) : PluginBench(simhost::HostConfig{.kind = kind}) {}

    // A picture of the test's own, of pseudo-random pixels.
    REALpicture RandomPicture(simhost::Storage storage, int32_t width, int32_t height, uint32_t seed);
    // Nothing is held but the test's own pictures and the method's results, which
    // are then released. A nil result, or the receiver of an in-place method, is
    // skipped.
    void ExpectBalancedAndRelease(const std::vector<REALpicture>& results, REALpicture receiver = nullptr);

    // Calls a picture method (not the memory estimate): its new picture (one
    // reference, the caller's), the receiver when an in-place method answered
    // true, nil on failure.
    REALpicture Apply(const simhost::PictureMethod& method, REALpicture receiver,
                      const Arguments& arguments = {}) const;
    // What the slow models say Apply gives on this host.
    std::optional<Image> Expected(const simhost::PictureMethod& method, const Image& source,
                                  const Arguments& arguments = {}) const {
        return ModelMethod(method, source, arguments, host.config());
    }

    simhost::SimulatedHost host;
    simhost::PluginLibrary plugin;
};

}  // namespace test_support
