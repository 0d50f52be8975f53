// The Mach-O loader's own cases, on copies of the built Mac library: the slice
// for this processor taken from a fat file, and every damaged or foreign file
// refused with what is wrong before any of the library's code has run.
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

// Every occurrence of `from` (names in the bind tables and the symbol table)
// replaced by `to`, of the same length.
Bytes Renamed(Bytes bytes, const std::string& from, const std::string& to) {
    for (auto at = bytes.begin(); (at = std::search(at, bytes.end(), from.begin(), from.end())) != bytes.end();)
        at = std::copy(to.begin(), to.end(), at);
    return bytes;
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

struct LoaderCase {
    const char* name;
    std::function<Bytes(const Bytes&)> make;
    const char* refusal;  // null: it loads
};

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
    {"Truncated", [](const Bytes& built) { return Bytes(built.begin(), built.begin() + built.size() / 2); },
     "truncated"},
    {"HeaderOnly", [](const Bytes& built) { return Bytes(built.begin(), built.begin() + 40); }, "truncated"},
    {"ChainedFixups", [](const Bytes& built) { return Chained(built); }, "chained fix-ups"},
};

class MachOLoaderTest : public ::testing::TestWithParam<LoaderCase> {};

TEST_P(MachOLoaderTest, LoadsTheSliceOrRefusesBeforeAnyCodeRuns) {
    const std::string path = ::testing::TempDir() + "pixturn-loader-" + GetParam().name + ".dylib";
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

INSTANTIATE_TEST_SUITE_P(Files, MachOLoaderTest, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
