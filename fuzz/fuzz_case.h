// One fuzz input decoded into what it asks for: a simulated host (version, kind,
// missing or late entry points, failing calls, what of ApplicationServices
// exists), a receiver picture with an optional mask (either may have a malformed
// host bitmap record), and one to three calls of the fifteen methods with their
// arguments, each on the receiver (as an earlier in-place mirror left it) or on
// the picture the call before it returned; and the parts of the plug-in checked
// directly. decode_fuzz_case.cpp defines the byte layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simhost/simulated_host.h"
#include "tests/support/method_models.h"

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
    test_support::Arguments arguments;  // every field from the input
};

// The specialised loops against their plain per-pixel definitions, on pictures
// of the editor's own over memory: a mirror or quarter turn, and shears of rows
// and of columns by skews from firstSkew on, each line's skewStep further.
struct LoopCase {
    int32_t sourceFormat = 0;
    int32_t destinationFormat = 0;
    int mapping = 0;                    // a PixelMapping
    int32_t width = 0;                  // 1 to 24 each, or no case at all
    int32_t height = 0;
    int32_t extraLength = 0;            // how much longer a sheared line is
    uint32_t seed = 0;
    double firstSkew = 0.0;
    double skewStep = 0.0;
    uint8_t background[4] = {};
};

// Start-up's reshaping of class records that this plug-in's own never exercise:
// methods with setters, properties, and declarations near and past the host's
// 1000-byte buffers.
struct RecordCase {
    std::string declaration;
    std::string className;
    int methods = 0;     // each with a setter when its bit in setters is set
    uint32_t setters = 0;
    int properties = 0;  // in each of the two property tables
};

// Parts of the plug-in called directly rather than through a method, because no
// host of this plug-in reaches them (direct_checks.cpp). Each returns what went
// wrong, or nothing: the specialised loops give the bytes their plain
// definitions give; rewritten declarations stay within the host's buffers, and
// records with setters and properties convert without a fault (the sanitizers
// watch).
std::string CompareLoopsWithDefinitions(const LoopCase& loops);
std::string ReshapeRecords(const RecordCase& records);

struct FuzzCase {
    simhost::HostConfig host;
    std::optional<PictureRecipe> receiver;  // nullopt: the receiver is nil
    std::optional<PictureRecipe> mask;
    std::vector<MethodCall> calls;          // one to three
    std::optional<LoopCase> loops;
    std::optional<RecordCase> records;
};

FuzzCase DecodeFuzzCase(const uint8_t* data, size_t size);

// The host lacks nothing and fails nothing: a method that succeeds there must
// give exactly what the slow models give.
bool HasFullEntryPoints(const simhost::HostConfig& host);

}  // namespace pixturn_fuzz
