// The Mach-O and PE loaders' own cases, on copies of the built Mac or Windows
// arm64 library: for the Mac, the slice for this processor taken from a fat
// file; for both, every damaged or foreign file refused with what is wrong
// before any of the library's code has run.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "simhost/built_plugin.h"
#include "simhost/simulated_host.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Built() {
    std::ifstream file(simhost::DefaultPluginPath(), std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Every occurrence of `from` (names in the import tables and the symbol table)
// replaced by `to`, of the same length.
Bytes Renamed(Bytes bytes, const std::string& from, const std::string& to) {
    for (auto at = bytes.begin(); (at = std::search(at, bytes.end(), from.begin(), from.end())) != bytes.end();)
        at = std::copy(to.begin(), to.end(), at);
    return bytes;
}

Bytes Truncated(const Bytes& built) { return Bytes(built.begin(), built.begin() + built.size() / 2); }

struct LoaderCase {
    const char* name;
    std::function<Bytes(const Bytes&)> make;
    const char* refusal;  // null: it loads
};

#if defined(PIXTURN_LOADS_MAC_LIBRARY)

uint32_t Cpu(const Bytes& slice) {
    uint32_t cpu;
    std::memcpy(&cpu, slice.data() + 4, sizeof cpu);
    return cpu;
}

void PutBigEndian(Bytes& bytes, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<uint8_t>(value >> shift));
}

// A fat file of the given slices, each at a 16 KB boundary as lipo places them.
Bytes Fat(const std::vector<Bytes>& slices) {
    Bytes fat;
    PutBigEndian(fat, 0xcafebabe);
    PutBigEndian(fat, static_cast<uint32_t>(slices.size()));
    uint32_t offset = 0x4000;
    for (const Bytes& slice : slices) {
        PutBigEndian(fat, Cpu(slice));
        PutBigEndian(fat, 0);
        PutBigEndian(fat, offset);
        PutBigEndian(fat, static_cast<uint32_t>(slice.size()));
        PutBigEndian(fat, 14);
        offset += (static_cast<uint32_t>(slice.size()) + 0x3fff) & ~0x3fffu;
    }
    for (const Bytes& slice : slices) {
        fat.resize((fat.size() + 0x3fff) & ~size_t{0x3fff});
        fat.insert(fat.end(), slice.begin(), slice.end());
    }
    return fat;
}

// The library as another processor's: its header names the other Mac processor.
Bytes Foreign(Bytes slice) {
    const uint32_t other = Cpu(slice) == 0x0100000c ? 0x01000007 : 0x0100000c;
    std::memcpy(slice.data() + 4, &other, sizeof other);
    return slice;
}

// The classic fix-up tables' command relabelled as chained fix-ups.
Bytes Chained(Bytes bytes) {
    const uint32_t classic = 0x80000022, chained = 0x80000034;
    uint32_t commands;
    std::memcpy(&commands, bytes.data() + 16, sizeof commands);
    size_t at = 32;
    for (uint32_t i = 0; i < commands; ++i) {
        uint32_t kind, size;
        std::memcpy(&kind, bytes.data() + at, 4);
        std::memcpy(&size, bytes.data() + at + 4, 4);
        if (kind == classic) std::memcpy(bytes.data() + at, &chained, 4);
        at += size;
    }
    return bytes;
}

const LoaderCase kCases[] = {
    {"FatWithThisSlice",
     [](const Bytes& built) {
         return Fat({Foreign(built), built});
     },
     nullptr},
    {"FatWithoutThisSlice", [](const Bytes& built) { return Fat({Foreign(built)}); }, "a fat file without a slice for"},
    {"OtherProcessor", [](const Bytes& built) { return Foreign(built); }, "a Mac library for"},
    {"ImportNotBound", [](const Bytes& built) { return Renamed(built, "_strdup", "_strdu?"); },
     "import _strdu? from /usr/lib/libSystem.B.dylib cannot be bound here"},
    {"UnknownFramework",
     [](const Bytes& built) { return Renamed(built, "CoreServices.framework", "CoreServicez.framework"); },
     "import _FSFindFolder from /System/Library/Frameworks/CoreServicez.framework"},
    {"Truncated", Truncated, "truncated"},
    {"HeaderOnly", [](const Bytes& built) { return Bytes(built.begin(), built.begin() + 40); }, "truncated"},
    {"ChainedFixups", [](const Bytes& built) { return Chained(built); }, "chained fix-ups"},
};

#else

// The DLL as an x86-64 one: its PE header names that machine.
Bytes Amd64(Bytes bytes) {
    uint32_t header;
    std::memcpy(&header, bytes.data() + 0x3c, sizeof header);
    const uint16_t amd64 = 0x8664;
    std::memcpy(bytes.data() + header + 4, &amd64, sizeof amd64);
    return bytes;
}

const LoaderCase kCases[] = {
    {"AsBuilt", [](const Bytes& built) { return built; }, nullptr},
    {"OtherProcessor", Amd64, "a DLL for x86-64"},
    {"ImportNotBound", [](const Bytes& built) { return Renamed(built, "wcslen", "wcsle?"); },
     "import wcsle? from msvcrt.dll cannot be bound here"},
    {"UnknownDll", [](const Bytes& built) { return Renamed(built, "msvcrt.dll", "msvcrz.dll"); },
     "from msvcrz.dll cannot be bound here"},
    {"Truncated", Truncated, "truncated"},
    {"HeaderOnly", [](const Bytes& built) { return Bytes(built.begin(), built.begin() + 0x40); }, "truncated"},
};

#endif

class ForeignLoaderTest : public ::testing::TestWithParam<LoaderCase> {};

TEST_P(ForeignLoaderTest, LoadsTheSliceOrRefusesBeforeAnyCodeRuns) {
    const std::string path = ::testing::TempDir() + "pixturn-loader-" + GetParam().name;
    {
        const Bytes bytes = GetParam().make(Built());
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    simhost::SimulatedHost host;
    try {
        simhost::PluginLibrary plugin(host, path);
        EXPECT_EQ(GetParam().refusal, nullptr) << "loaded";
        EXPECT_EQ(host.registration().methods.size(), 15u);
    } catch (const std::runtime_error& error) {
        ASSERT_NE(GetParam().refusal, nullptr) << error.what();
        EXPECT_NE(std::string(error.what()).find(GetParam().refusal), std::string::npos) << error.what();
        EXPECT_EQ(host.Lookups("REALGetRBVersion"), 0) << "the library ran before it was refused";
    }
    std::remove(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(Files, ForeignLoaderTest, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
