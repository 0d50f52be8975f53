// One fuzz input decoded into what it asks for: a simulated host (version, kind,
// missing or late entry points, failing calls, what of ApplicationServices
// exists), a receiver picture with an optional mask (either may have a malformed
// host bitmap record), and one to three calls of the fifteen methods with their
// arguments, each on the receiver (as an earlier in-place mirror left it) or on
// the picture the call before it returned. decode_fuzz_case.cpp defines the byte
// layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "simhost/simulated_host.h"

namespace pixturn_fuzz {

struct PictureRecipe {
    simhost::Storage storage = simhost::Storage::GWorld32;
    int32_t width = 0;
    int32_t height = 0;
    // Pixels R, G, B, A row by row; empty when they come from FillRandom.
    std::vector<simhost::Rgba> pixels;
    uint32_t seed = 0;
    // A spoiled word of a host bitmap's record (other storages have none).
    std::optional<simhost::SimulatedHost::RecordDefect> defect;
};

struct MethodCall {
    const simhost::PictureMethod* method = &simhost::methods::kRotate;
    // Called on the picture the previous call returned, when it returned one.
    bool onPreviousResult = false;
    double angle = 0.0;
    uint32_t background = 0;
    signed char cut = 0;
    int32_t width = 0;   // arguments of "CloneQLM(width, height)"
    int32_t height = 0;
};

struct FuzzCase {
    simhost::HostConfig host;
    std::optional<PictureRecipe> receiver;  // nullopt: the receiver is nil
    std::optional<PictureRecipe> mask;
    std::vector<MethodCall> calls;          // one to three
};

FuzzCase DecodeFuzzCase(const uint8_t* data, size_t size);

// The host lacks nothing and fails nothing: a method that succeeds there must
// give exactly what the slow models give.
bool HasFullEntryPoints(const simhost::HostConfig& host);

}  // namespace pixturn_fuzz
