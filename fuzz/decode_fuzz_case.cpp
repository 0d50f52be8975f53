// Turns the fuzzer's bytes into a FuzzCase. Bytes are read front to back and an
// exhausted input reads as zeros, so every input decodes, short seeds stay
// meaningful, and a mutation changes one choice rather than all that follow.
// Most choices pick from tables of values that are known to be hard (limits,
// non-finite and huge angles, angles a hair off a quarter or an eighth turn);
// one choice in each table takes raw bits instead.
#include "fuzz/fuzz_case.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace pixturn_fuzz {
namespace {

class ByteReader {
public:
    ByteReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    uint8_t Byte() { return position_ < size_ ? data_[position_++] : 0; }
    uint16_t U16() { return static_cast<uint16_t>(Byte() | Byte() << 8); }
    uint32_t U32() { return U16() | static_cast<uint32_t>(U16()) << 16; }
    uint64_t U64() { return U32() | static_cast<uint64_t>(U32()) << 32; }
    double Double() { return std::bit_cast<double>(U64()); }
    template <typename Table>
    const auto& Pick(const Table& table) { return table[Byte() % std::size(table)]; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t position_ = 0;
};

// The bounds of the host-version rules at start-up, each with its neighbour below.
constexpr std::array<double, 13> kVersions = {
    2019.0, 2010.028, 2010.029, 2011.03, 2011.04, 2011.99, 2012.0,
    2012.99, 2013.0, 2013.03, 2013.04, 2999.99, 3000.0,
};

constexpr std::array<simhost::Storage, 5> kStorages = {
    simhost::Storage::GWorld32, simhost::Storage::GWorld24, simhost::Storage::GWorld16,
    simhost::Storage::HostBitmap, simhost::Storage::VectorOnly,
};

// Receivers stay small (the slow models are slow), but a side may sit at the
// 32767-pixel limit or just past it.
constexpr int32_t kSmallSide = 64;
constexpr std::array<int32_t, 6> kLongSides = {32766, 32767, 32768, 32769, 40000, 65536};
// Pictures the host is asked for are bounded in area so that a long side costs
// no more than a 128 x 128 picture: one row or column at the limit, which is
// all the limit's checks need, and little time for the slow models.
constexpr int64_t kMaxArea = 128 * 128;

simhost::HostConfig DecodeHost(ByteReader& in) {
    simhost::HostConfig host;
    const uint8_t version = in.Byte() % (kVersions.size() + 2);
    if (version == kVersions.size()) host.version = std::nullopt;
    else if (version == kVersions.size() + 1) host.version = in.Double();
    else host.version = kVersions[version];
    host.kind = static_cast<simhost::HostKind>(in.Byte() % 4);

    static const std::vector<std::string> entryPoints = simhost::SimulatedHost::EntryPointNames();
    for (int faults = in.Byte() % 4; faults > 0; --faults) {
        const std::string& name = in.Pick(entryPoints);
        const uint8_t from = in.Byte() % 4;
        if (from == 0) host.missingEntryPoints.insert(name);
        else host.entryPointsFromLookup[name] = from + 1;
    }
    host.newPictureFailsFromCall = in.Byte() % 6;

    const uint8_t failures = in.Byte();
    for (int bit = 0; bit < 3; ++bit)
        if (failures >> bit & 1) host.failingDescriptionTypes.insert(std::array{4, 8, 10}[bit]);
    host.graphicsUnavailable = failures & 0x08;
    host.drawPictureUnavailable = failures & 0x10;
    host.system.frameworksFolderFound = !(failures & 0x20);
    host.system.applicationServicesInstalled = !(failures & 0x40);
    host.system.executableLoads = !(failures & 0x80);

    static const std::vector<std::string> quickDraw = macos_system::QuickDrawFunctionNames();
    const uint8_t missingQuickDraw = in.Byte();
    for (size_t i = 0; i < quickDraw.size(); ++i)
        if (missingQuickDraw >> i & 1) host.system.missingFunctions.insert(quickDraw[i]);

    const uint8_t storage = in.Byte() % (kStorages.size() + 1);
    if (storage > 0) host.newPictureStorage = kStorages[storage - 1];
    host.rowPadding = in.Byte() % 16;
    host.newPictureFill = in.U32();
    return host;
}

void CapArea(int32_t& width, int32_t& height) {
    if (width <= 0 || height <= 0 || int64_t{width} * height <= kMaxArea) return;
    if (width >= height) height = static_cast<int32_t>(std::max<int64_t>(1, kMaxArea / width));
    else width = static_cast<int32_t>(std::max<int64_t>(1, kMaxArea / height));
}

int32_t DecodeSide(ByteReader& in) {
    const uint8_t side = in.Byte();
    if (side >= 256 - kLongSides.size()) return kLongSides[side - (256 - kLongSides.size())];
    return side % (kSmallSide + 1);
}

PictureRecipe DecodePicture(ByteReader& in, simhost::Storage storage, int32_t width, int32_t height) {
    PictureRecipe picture{storage, width, height, {}, 0, std::nullopt};
    // Pixels from the input only where they fit in it; larger pictures are seeded.
    const bool givenPixels = in.Byte() & 1;
    if (givenPixels && int64_t{width} * height <= kSmallSide * kSmallSide) {
        picture.pixels.resize(static_cast<size_t>(width) * height);
        for (simhost::Rgba& pixel : picture.pixels) pixel = {in.Byte(), in.Byte(), in.Byte(), in.Byte()};
    } else {
        picture.seed = in.U32();
    }
    return picture;
}

// A turn by a multiple of 90 degrees moved by at most about 1e-12: the angles
// where rounding decides between the quarter-turn functions and the shears.
double NearQuarter(ByteReader& in, double quarters) {
    constexpr std::array<double, 6> kNudges = {
        0.0, 1e-12, 1e-14, 1e-18, 1e-300, std::numeric_limits<double>::denorm_min() * 128,
    };
    const double nudge = static_cast<int8_t>(in.Byte()) / 128.0 * in.Pick(kNudges);
    double angle = quarters * 90.0 + nudge;
    // A few steps of one unit in the last place, either way.
    const uint8_t steps = in.Byte();
    for (int i = 0; i < (steps & 3); ++i)
        angle = std::nextafter(angle, (steps & 4) ? -INFINITY : INFINITY);
    return angle;
}

double DecodeAngle(ByteReader& in, bool keepPassesThin) {
    constexpr std::array<double, 9> kHuge = {
        std::numeric_limits<double>::max(), 1e300, 1e100, 1e18, 9007199254740992.0,
        9007199254740993.0, 4503599627370495.5, 1e16, 1e12 + 0.5,
    };
    const uint8_t kind = in.Byte() % 12;
    const int8_t quarter = static_cast<int8_t>(in.Byte());
    switch (kind) {
    case 1: return std::numeric_limits<double>::quiet_NaN();
    case 2: return INFINITY;
    case 3: return -INFINITY;
    case 4: return -0.0;
    case 5: {  // subnormal, either sign
        const uint64_t fraction = in.U64() & ((uint64_t{1} << 52) - 1);
        return std::bit_cast<double>((fraction | 1) | (quarter < 0 ? uint64_t{1} << 63 : 0));
    }
    }
    // A wide receiver turned by much more than a hair would need pass pictures
    // of gigabytes; keep its turns next to a quarter.
    if (keepPassesThin) return NearQuarter(in, quarter % 9);
    switch (kind) {
    case 0: return in.Double();
    case 6: return (quarter < 0 ? -1 : 1) * in.Pick(kHuge);
    case 7: return NearQuarter(in, quarter % 17);
    case 8: return NearQuarter(in, (quarter % 17) + 0.5);  // odd multiples of 45
    case 9: return static_cast<int16_t>(in.U16()) / 64.0;
    case 10: return static_cast<int16_t>(in.U16());
    default: return quarter * 90.0;
    }
}

std::optional<simhost::SimulatedHost::RecordDefect> DecodeDefect(uint8_t choice) {
    using Defect = simhost::SimulatedHost::RecordDefect;
    constexpr std::array<std::optional<Defect>, 4> kDefects = {std::nullopt, Defect::FirstWordNotZero,
                                                               Defect::ValidityWordZero, Defect::NoRowTable};
    return kDefects[choice % 4];
}

int32_t DecodeSizeArgument(ByteReader& in) {
    constexpr std::array<int32_t, 7> kLimits = {
        0, 1, -1, 32767, 32768, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(),
    };
    const uint8_t kind = in.Byte() % 10;
    if (kind < kLimits.size()) return kLimits[kind];
    if (kind == 7) return -static_cast<int32_t>(in.U16());
    return in.Byte() % (kSmallSide + 16);
}

// The arguments of one call. A wide picture turned by much more than a hair
// would need pass pictures of gigabytes: its turns stay next to a quarter.
MethodCall DecodeCall(ByteReader& in, const simhost::PictureMethod& method, bool wide) {
    MethodCall call;
    call.method = &method;
    const bool turnsByShears =
        method.form == simhost::MethodForm::AngleAndBackground || method.form == simhost::MethodForm::AngleAndCut;
    test_support::Arguments& arguments = call.arguments;
    arguments.angle = DecodeAngle(in, turnsByShears && wide);
    arguments.background = in.U32();
    arguments.cut = static_cast<signed char>(in.Byte());
    arguments.width = DecodeSizeArgument(in);
    arguments.height = DecodeSizeArgument(in);
    CapArea(arguments.width, arguments.height);
    return call;
}

// One of the fifteen, by its place in the plug-in's table.
const simhost::PictureMethod& DecodeMethod(ByteReader& in) {
    return *simhost::kPictureMethods[in.Byte() % std::size(simhost::kPictureMethods)];
}

}  // namespace

FuzzCase DecodeFuzzCase(const uint8_t* data, size_t size) {
    ByteReader in(data, size);
    FuzzCase fuzzCase;
    fuzzCase.host = DecodeHost(in);

    const uint8_t receiver = in.Byte() % (kStorages.size() + 1);
    int32_t width = DecodeSide(in);
    int32_t height = DecodeSide(in);
    CapArea(width, height);
    if (receiver < kStorages.size()) fuzzCase.receiver = DecodePicture(in, kStorages[receiver], width, height);

    // None, one the receiver's size, or one of its own size.
    if (const uint8_t mask = in.Byte(); mask % 3 != 0) {
        const int32_t maskWidth = mask % 3 == 2 ? in.Byte() % (kSmallSide + 1) : width;
        const int32_t maskHeight = mask % 3 == 2 ? in.Byte() % (kSmallSide + 1) : height;
        fuzzCase.mask = DecodePicture(in, kStorages[(mask / 3) % kStorages.size()], maskWidth, maskHeight);
    }

    bool wide = std::max(width, height) > kSmallSide ||
                (fuzzCase.mask && std::max(fuzzCase.mask->width, fuzzCase.mask->height) > kSmallSide);
    fuzzCase.calls.push_back(DecodeCall(in, DecodeMethod(in), wide));

    // What follows came later to the layout, each part after the last, so that
    // older inputs keep their meaning (an exhausted input reads as zeros).
    const uint8_t defects = in.Byte();
    if (fuzzCase.receiver) fuzzCase.receiver->defect = DecodeDefect(defects);
    if (fuzzCase.mask) fuzzCase.mask->defect = DecodeDefect(defects >> 2);

    // Programs chain calls: a method on the result of another, a rotation after
    // an in-place mirror.
    for (int more = in.Byte() % 3; more > 0; --more) {
        const MethodCall& previous = fuzzCase.calls.back();
        wide = wide || (previous.method->form == simhost::MethodForm::Size &&
                        std::max(previous.arguments.width, previous.arguments.height) > kSmallSide);
        const bool onPreviousResult = in.Byte() & 1;
        MethodCall call = DecodeCall(in, DecodeMethod(in), wide);
        call.onPreviousResult = onPreviousResult;
        fuzzCase.calls.push_back(call);
    }

    // The host's memory for pixels: 2^(2k + 4) bytes, as little as one
    // 4 x 4 picture; 0 leaves it unbounded.
    if (const uint8_t memory = in.Byte() % 12) fuzzCase.host.largestPixelAllocation = size_t{1} << (2 * memory + 4);

    // Small pictures: the loops' own tests take them past a tile.
    constexpr int32_t kLoopSide = 24;
    LoopCase loops;
    loops.width = in.Byte() % (kLoopSide + 1);
    loops.height = in.Byte() % (kLoopSide + 1);
    if (loops.width > 0 && loops.height > 0) {
        constexpr std::array<int32_t, 3> kFormats = {13, 12, 8};
        loops.sourceFormat = in.Pick(kFormats);
        loops.destinationFormat = in.Pick(kFormats);
        loops.mapping = in.Byte() % 5;
        loops.extraLength = in.Byte() % 40;
        loops.seed = in.U32();
        // Skews as the rotation makes them: within a few times the line's length,
        // in steps below one pixel.
        loops.firstSkew = static_cast<int16_t>(in.U16()) / 256.0;
        loops.skewStep = static_cast<int16_t>(in.U16()) / 32768.0;
        for (uint8_t& channel : loops.background) channel = in.Byte();
        fuzzCase.loops = loops;
    }

    if (const uint8_t records = in.Byte(); records != 0) {
        RecordCase record;
        record.methods = records % 8;
        record.properties = (records >> 3) % 4;
        record.setters = in.Byte();
        record.className = std::string(in.Byte() % 32, 'C');
        // A short declaration from the input's characters, or one of up to about
        // 1100 characters to reach the cuts.
        const uint16_t length = in.U16() % 1200;
        for (uint16_t i = 0; i < length; ++i) {
            const char c = static_cast<char>(in.Byte());
            record.declaration += c != '\0' ? c : 'x';
        }
        fuzzCase.records = record;
    }
    return fuzzCase;
}

bool HasFullEntryPoints(const simhost::HostConfig& host) {
    return host.missingEntryPoints.empty() && host.entryPointsFromLookup.empty() &&
           host.newPictureFailsFromCall == 0 && !host.largestPixelAllocation && host.failingDescriptionTypes.empty() &&
           !host.graphicsUnavailable && !host.drawPictureUnavailable &&
           host.system.frameworksFolderFound && host.system.applicationServicesInstalled &&
           host.system.executableLoads && host.system.missingFunctions.empty();
}

}  // namespace pixturn_fuzz
