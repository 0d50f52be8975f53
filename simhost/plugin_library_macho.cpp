// Loading the Mac library into this Linux process, as a Mac host's dyld would,
// so that the Mac libraries run the same tests as every other target. No Mac
// exists here; a Mac library is code for the same processor as a Linux one, and
// what it needs of the system is small enough to bind by hand.
//
// What the loader accepts: a 64-bit Mach-O dylib, or a fat file holding one for
// this process's processor, linked with the classic fix-up tables
// (LC_DYLD_INFO_ONLY). It
//   - maps each segment at its offset from one anonymous mapping (a fresh
//     instance at every load, its process-wide state as at load);
//   - slides every pointer the rebase table names;
//   - binds every import of the bind and lazy bind tables at load, so no lazy
//     stub ever reaches dyld_stub_binder (bound to a function that stops the
//     process if one does); entries of the weak bind table keep the library's own
//     definition, as dyld keeps the first image's in load order, and the host
//     here defines no Mach-O symbol before it;
//   - gives each segment its protections, runs the initialisers and finds
//     _REALPluginMain in the export trie.
// Every import is bound before any of the library's code runs: one that cannot
// be bound refuses the load with its name (macho_imports.cpp says what each
// binds to). A truncated, foreign, 32-bit or chained-fix-up file, or one with
// thread-local variables, is refused with what is wrong, never mapped in part.
//
// On arm64 the library follows Apple's calling convention and this process
// Linux's; where they differ for a function crossing between them, the library
// gets an adapter (apple_arm64_calls.cpp lists them), and so does the host's
// resolver it is handed. On x86-64 both systems share one convention.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "simhost/library_file.h"
#include "simhost/macho_loader.h"

namespace simhost::internal {

namespace {

constexpr uint32_t kMachO64Magic = 0xfeedfacf;
constexpr uint32_t kMachO32Magic = 0xfeedface;
constexpr uint32_t kFatMagic = 0xcafebabe;  // read big-endian
constexpr uint32_t kFat64Magic = 0xcafebabf;
constexpr uint32_t kCpuX86_64 = 0x01000007;
constexpr uint32_t kCpuArm64 = 0x0100000c;
constexpr uint32_t kDylibFileType = 6;

constexpr uint32_t kSegment64 = 0x19;
constexpr uint32_t kDyldInfo = 0x22;
constexpr uint32_t kDyldInfoOnly = 0x80000022;
constexpr uint32_t kDyldChainedFixups = 0x80000034;
constexpr uint32_t kLoadDylib = 0xc;
constexpr uint32_t kLoadWeakDylib = 0x80000018;
constexpr uint32_t kReexportDylib = 0x8000001f;
constexpr uint32_t kLazyLoadDylib = 0x20;
constexpr uint32_t kLoadUpwardDylib = 0x80000023;

constexpr uint32_t kSectionTypeMask = 0xff;
constexpr uint32_t kModInitFuncPointers = 0x9;
constexpr uint32_t kThreadLocalVariables = 0x13;
constexpr uint32_t kInitFuncOffsets = 0x16;

#if defined(__x86_64__)
constexpr uint32_t kThisCpu = kCpuX86_64;
constexpr const char* kThisCpuName = "x86-64";
#elif defined(__aarch64__)
constexpr uint32_t kThisCpu = kCpuArm64;
constexpr const char* kThisCpuName = "arm64";
#else
#error "Mac libraries run in 64-bit x86 and arm64 processes only"
#endif

const char* CpuName(uint32_t cpu) {
    switch (cpu) {
        case kCpuX86_64: return "x86-64";
        case kCpuArm64: return "arm64";
        default: return "an unknown processor";
    }
}

// The slice for this process's processor: the whole file, or one of a fat file.
Bytes ThisProcessorsSlice(const Bytes& file) {
    const uint32_t magic = file.Read<uint32_t>(0, "the header");
    if (magic == kMachO64Magic) return file;
    if (magic == kMachO32Magic) throw LoadFailure(file.path(), "a 32-bit Mach-O file; Mac plug-ins are 64-bit");
    const uint32_t fatMagic = file.ReadBigEndian32(0, "the header");
    if (fatMagic == kFat64Magic)
        throw LoadFailure(file.path(), "a fat file with 64-bit offsets, which no plug-in needs");
    if (fatMagic != kFatMagic) throw LoadFailure(file.path(), "not a Mach-O file");
    const uint32_t slices = file.ReadBigEndian32(4, "the fat header");
    std::string held;
    for (uint32_t index = 0; index < slices; ++index) {
        const uint64_t entry = 8 + 20 * uint64_t{index};
        const uint32_t cpu = file.ReadBigEndian32(entry, "the fat header");
        held += std::string(held.empty() ? "" : ", ") + CpuName(cpu);
        if (cpu != kThisCpu) continue;
        const uint32_t offset = file.ReadBigEndian32(entry + 8, "the fat header");
        const uint32_t size = file.ReadBigEndian32(entry + 12, "the fat header");
        return Bytes(file.path(), file.At(offset, size, "the slice"), size);
    }
    throw LoadFailure(file.path(), std::string("a fat file without a slice for ") + kThisCpuName + " (it holds " +
                                       (held.empty() ? "none" : held) + ")");
}

struct Segment {
    uint64_t address, memorySize, fileOffset, fileSize;
    uint32_t protection;
};

struct Section {
    size_t segment;
    uint64_t address, size;
    uint32_t type;
};

struct FixupTable {
    uint32_t offset = 0, size = 0;
};

// What the load commands say, checked against the slice.
struct Image {
    std::vector<Segment> segments;
    std::vector<Section> sections;
    std::vector<std::string> libraries;  // install names by ordinal - 1
    FixupTable rebase, bind, weakBind, lazyBind, exports;
    bool classicFixups = false;
    uint64_t headerAddress = 0;  // the Mach header's, from which exports and initialiser offsets count
};

std::string LibraryName(const Bytes& slice, uint64_t command, uint32_t commandSize) {
    const uint32_t nameOffset = slice.Read<uint32_t>(command + 8, "a library's name");
    if (nameOffset >= commandSize) throw LoadFailure(slice.path(), "a library's name lies outside its command");
    const char* name =
        reinterpret_cast<const char*>(slice.At(command + nameOffset, commandSize - nameOffset, "a library's name"));
    return std::string(name, strnlen(name, commandSize - nameOffset));
}

Image ReadLoadCommands(const Bytes& slice) {
    const std::string& path = slice.path();
    const uint32_t cpu = slice.Read<uint32_t>(4, "the header");
    if (cpu != kThisCpu)
        throw LoadFailure(path,
                          std::string("a Mac library for ") + CpuName(cpu) + "; this process runs " + kThisCpuName);
    if (slice.Read<uint32_t>(12, "the header") != kDylibFileType)
        throw LoadFailure(path, "a Mach-O file but not a dylib");
    const uint32_t commands = slice.Read<uint32_t>(16, "the header");
    Image image;
    uint64_t command = 32;
    for (uint32_t index = 0; index < commands; ++index) {
        const uint32_t kind = slice.Read<uint32_t>(command, "a load command");
        const uint32_t size = slice.Read<uint32_t>(command + 4, "a load command");
        if (size < 8) throw LoadFailure(path, "a load command of less than 8 bytes");
        slice.At(command, size, "a load command");
        switch (kind) {
            case kSegment64: {
                Segment segment{
                    slice.Read<uint64_t>(command + 24, "a segment"), slice.Read<uint64_t>(command + 32, "a segment"),
                    slice.Read<uint64_t>(command + 40, "a segment"), slice.Read<uint64_t>(command + 48, "a segment"),
                    slice.Read<uint32_t>(command + 60, "a segment")};
                slice.At(segment.fileOffset, segment.fileSize, "a segment's contents");
                if (segment.fileSize > segment.memorySize)
                    throw LoadFailure(path, "a segment larger in the file than in memory");
                const uint32_t sections = slice.Read<uint32_t>(command + 64, "a segment");
                for (uint32_t s = 0; s < sections; ++s) {
                    const uint64_t header = command + 72 + 80 * uint64_t{s};
                    const Section section{image.segments.size(), slice.Read<uint64_t>(header + 32, "a section"),
                                          slice.Read<uint64_t>(header + 40, "a section"),
                                          slice.Read<uint32_t>(header + 64, "a section") & kSectionTypeMask};
                    if (section.address < segment.address || section.size > segment.memorySize ||
                        section.address - segment.address > segment.memorySize - section.size)
                        throw LoadFailure(path, "a section outside its segment");
                    if (section.type == kThreadLocalVariables)
                        throw LoadFailure(path, "thread-local variables, which this loader does not set up");
                    image.sections.push_back(section);
                }
                image.segments.push_back(segment);
                break;
            }
            case kDyldInfo:
            case kDyldInfoOnly: {
                FixupTable* tables[] = {&image.rebase, &image.bind, &image.weakBind, &image.lazyBind, &image.exports};
                for (size_t t = 0; t < std::size(tables); ++t) {
                    tables[t]->offset = slice.Read<uint32_t>(command + 8 + 8 * t, "the fix-up tables");
                    tables[t]->size = slice.Read<uint32_t>(command + 12 + 8 * t, "the fix-up tables");
                    slice.At(tables[t]->offset, tables[t]->size, "a fix-up table");
                }
                image.classicFixups = true;
                break;
            }
            case kDyldChainedFixups:
                throw LoadFailure(
                    path, "chained fix-ups (linked for macOS 12 or later); this loader reads the classic tables");
            case kLoadDylib:
            case kLoadWeakDylib:
            case kReexportDylib:
            case kLazyLoadDylib:
            case kLoadUpwardDylib: image.libraries.push_back(LibraryName(slice, command, size)); break;
            default: break;
        }
        command += size;
    }
    if (!image.classicFixups) throw LoadFailure(path, "no fix-up tables (LC_DYLD_INFO_ONLY)");
    const auto header = std::find_if(image.segments.begin(), image.segments.end(), [](const Segment& segment) {
        return segment.fileOffset == 0 && segment.fileSize > 0;
    });
    if (header == image.segments.end()) throw LoadFailure(path, "no segment holds its header");
    image.headerAddress = header->address;
    return image;
}

// A stream of the fix-up tables' opcodes and numbers.
class OpcodeReader {
   public:
    OpcodeReader(const Bytes& slice, FixupTable table)
        : slice_(slice), next_(slice.At(table.offset, table.size, "a fix-up table")), end_(next_ + table.size) {}
    bool AtEnd() const { return next_ == end_; }
    uint8_t Byte() {
        Need(1);
        return *next_++;
    }
    uint64_t Uleb() {
        uint64_t value = 0;
        for (unsigned shift = 0;; shift += 7) {
            const uint8_t byte = Byte();
            if (shift < 64) value |= uint64_t{byte & 0x7fu} << shift;
            if ((byte & 0x80) == 0) return value;
        }
    }
    int64_t Sleb() {
        int64_t value = 0;
        unsigned shift = 0;
        uint8_t byte;
        do {
            byte = Byte();
            if (shift < 64) value |= int64_t{byte & 0x7f} << shift;
            shift += 7;
        } while (byte & 0x80);
        if (shift < 64 && (byte & 0x40)) value |= -(int64_t{1} << shift);
        return value;
    }
    std::string CString() {
        const uint8_t* start = next_;
        while (next_ != end_ && *next_ != 0) ++next_;
        Need(1);
        return std::string(reinterpret_cast<const char*>(start), reinterpret_cast<const char*>(next_++));
    }

   private:
    void Need(size_t bytes) const {
        if (static_cast<size_t>(end_ - next_) < bytes)
            throw LoadFailure(slice_.path(), "a fix-up table ends in the middle of an entry");
    }
    const Bytes& slice_;
    const uint8_t* next_;
    const uint8_t* end_;
};

// The mapped image: segments at their offsets from the lowest one.
class Mapping {
   public:
    Mapping(const Bytes& slice, const Image& image) : slice_(slice), image_(image) {
        low_ = image.segments.front().address;
        uint64_t high = 0;
        for (const Segment& segment : image.segments) {
            low_ = std::min(low_, segment.address);
            if (segment.address + segment.memorySize < segment.address)
                throw LoadFailure(slice.path(), "a segment wraps around");
            high = std::max(high, segment.address + segment.memorySize);
        }
        const uint64_t page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
        length_ = (high - low_ + page - 1) / page * page;
        if (length_ == 0 || length_ > (uint64_t{1} << 32))
            throw LoadFailure(slice.path(), "segments spanning no memory or over 4 GB");
        void* base = mmap(nullptr, length_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (base == MAP_FAILED) throw LoadFailure(slice.path(), "no memory for its segments");
        base_ = static_cast<uint8_t*>(base);
        for (const Segment& segment : image.segments)
            std::memcpy(base_ + (segment.address - low_), slice.At(segment.fileOffset, segment.fileSize, "a segment"),
                        segment.fileSize);
    }
    // A library that failed to load gives its memory back; a loaded one keeps it
    // to the end of the process, as a host never unloads a plug-in.
    ~Mapping() {
        if (!kept_) munmap(base_, length_);
    }
    void Keep() { kept_ = true; }

    uint8_t* Base() const { return base_; }
    uint64_t Slide() const { return reinterpret_cast<uint64_t>(base_) - low_; }

    // The address of a pointer-sized slot at `offset` in segment `index`.
    uint8_t* Slot(uint64_t index, uint64_t offset) const {
        if (index >= image_.segments.size())
            throw LoadFailure(slice_.path(), "a fix-up names a segment that does not exist");
        const Segment& segment = image_.segments[index];
        if (offset > segment.memorySize || segment.memorySize - offset < 8)
            throw LoadFailure(slice_.path(), "a fix-up lies outside its segment");
        return base_ + (segment.address - low_) + offset;
    }
    uint8_t* AtAddress(uint64_t address, uint64_t length) const {
        if (address < low_ || address - low_ > length_ || length > length_ - (address - low_))
            throw LoadFailure(slice_.path(), "an address outside its segments");
        return base_ + (address - low_);
    }

    void Protect() const {
        const uint64_t page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
        for (const Segment& segment : image_.segments) {
            const uint64_t start = (segment.address - low_) / page * page;
            const uint64_t end =
                std::min(length_, (segment.address - low_ + segment.memorySize + page - 1) / page * page);
            if (end <= start) continue;
            const int protection = ((segment.protection & 1) ? PROT_READ : 0) |
                                   ((segment.protection & 2) ? PROT_WRITE : 0) |
                                   ((segment.protection & 4) ? PROT_EXEC : 0);
            if (mprotect(base_ + start, end - start, protection) != 0)
                throw LoadFailure(slice_.path(), "its segments' protections could not be set");
        }
    }

   private:
    const Bytes& slice_;
    const Image& image_;
    uint64_t low_ = 0;
    uint64_t length_ = 0;
    uint8_t* base_ = nullptr;
    bool kept_ = false;
};

void WritePointer(uint8_t* slot, uint64_t value) { std::memcpy(slot, &value, sizeof value); }
uint64_t ReadPointer(const uint8_t* slot) {
    uint64_t value;
    std::memcpy(&value, slot, sizeof value);
    return value;
}

void Rebase(const Bytes& slice, const Image& image, const Mapping& mapping) {
    OpcodeReader table(slice, image.rebase);
    uint64_t segment = 0, offset = 0;
    auto rebaseAt = [&](uint64_t times, uint64_t step) {
        for (uint64_t i = 0; i < times; ++i) {
            uint8_t* slot = mapping.Slot(segment, offset);
            WritePointer(slot, ReadPointer(slot) + mapping.Slide());
            offset += step;
        }
    };
    while (!table.AtEnd()) {
        const uint8_t byte = table.Byte();
        const uint8_t immediate = byte & 0x0f;
        switch (byte & 0xf0) {
            case 0x00: return;
            case 0x10:
                if (immediate != 1) throw LoadFailure(slice.path(), "a rebase of a kind other than a pointer");
                break;
            case 0x20: segment = immediate, offset = table.Uleb(); break;
            case 0x30: offset += table.Uleb(); break;
            case 0x40: offset += immediate * 8u; break;
            case 0x50: rebaseAt(immediate, 8); break;
            case 0x60: rebaseAt(table.Uleb(), 8); break;
            case 0x70: rebaseAt(1, table.Uleb() + 8); break;
            case 0x80: {
                const uint64_t times = table.Uleb();
                rebaseAt(times, table.Uleb() + 8);
                break;
            }
            default: throw LoadFailure(slice.path(), "an unknown rebase opcode");
        }
    }
}

// One bind table. `lazy` tables separate their entries with the opcode that ends
// the others.
template <typename BindOne>
void ReadBinds(const Bytes& slice, FixupTable where, bool lazy, BindOne bindOne) {
    OpcodeReader table(slice, where);
    int64_t ordinal = 0, addend = 0;
    uint64_t segment = 0, offset = 0;
    std::string symbol;
    bool weakImport = false;
    auto bindAt = [&](uint64_t times, uint64_t step) {
        for (uint64_t i = 0; i < times; ++i) {
            bindOne(segment, offset, ordinal, symbol, weakImport, addend);
            offset += step;
        }
    };
    while (!table.AtEnd()) {
        const uint8_t byte = table.Byte();
        const uint8_t immediate = byte & 0x0f;
        switch (byte & 0xf0) {
            case 0x00:
                if (!lazy) return;
                break;
            case 0x10: ordinal = immediate; break;
            case 0x20: ordinal = static_cast<int64_t>(table.Uleb()); break;
            case 0x30: ordinal = immediate == 0 ? 0 : static_cast<int8_t>(0xf0 | immediate); break;
            case 0x40: symbol = table.CString(), weakImport = (immediate & 1) != 0; break;
            case 0x50:
                if (immediate != 1) throw LoadFailure(slice.path(), "a bind of a kind other than a pointer");
                break;
            case 0x60: addend = table.Sleb(); break;
            case 0x70: segment = immediate, offset = table.Uleb(); break;
            case 0x80: offset += table.Uleb(); break;
            case 0x90: bindAt(1, 8); break;
            case 0xa0: bindAt(1, table.Uleb() + 8); break;
            case 0xb0: bindAt(1, immediate * 8u + 8); break;
            case 0xc0: {
                const uint64_t times = table.Uleb();
                bindAt(times, table.Uleb() + 8);
                break;
            }
            case 0xd0:
                throw LoadFailure(slice.path(), "threaded binds (chained fix-ups), which this loader does not read");
            default: throw LoadFailure(slice.path(), "an unknown bind opcode");
        }
    }
}

void BindImports(const Bytes& slice, const Image& image, const Mapping& mapping, HostKind kind) {
    auto bindOne = [&](uint64_t segment, uint64_t offset, int64_t ordinal, const std::string& symbol, bool weakImport,
                       int64_t addend) {
        if (ordinal < 1 || static_cast<uint64_t>(ordinal) > image.libraries.size())
            throw LoadFailure(slice.path(), "import " + symbol + " from no library it names (ordinal " +
                                                std::to_string(ordinal) + ")");
        const std::string& library = image.libraries[static_cast<size_t>(ordinal - 1)];
        void* address = MacImport(library, symbol, kind);
        if (address == nullptr && !weakImport)
            throw LoadFailure(slice.path(), "import " + symbol + " from " + library + " cannot be bound here");
        WritePointer(mapping.Slot(segment, offset),
                     reinterpret_cast<uint64_t>(address) + static_cast<uint64_t>(addend));
    };
    ReadBinds(slice, image.bind, false, bindOne);
    ReadBinds(slice, image.lazyBind, true, bindOne);
    // Checked for their form and place only: the library's own definitions stand.
    ReadBinds(slice, image.weakBind, false,
              [&](uint64_t segment, uint64_t offset, int64_t, const std::string&, bool, int64_t) {
                  mapping.Slot(segment, offset);
              });
}

// The address of `wanted` in the export trie, from the Mach header's.
uint64_t ExportedAddress(const Bytes& slice, const Image& image, const std::string& wanted) {
    const uint64_t size = image.exports.size;
    uint64_t node = 0;
    size_t matched = 0;
    for (int depth = 0; depth < 512; ++depth) {
        OpcodeReader reader(
            slice, FixupTable{static_cast<uint32_t>(image.exports.offset + node), static_cast<uint32_t>(size - node)});
        const uint64_t terminalSize = reader.Uleb();
        if (matched == wanted.size()) {
            if (terminalSize == 0) break;
            const uint64_t flags = reader.Uleb();
            if ((flags & 0x18) != 0)
                throw LoadFailure(slice.path(),
                                  wanted + " is a re-export or a resolver, which this loader does not follow");
            return reader.Uleb();
        }
        for (uint64_t skip = 0; skip < terminalSize; ++skip) reader.Byte();
        const uint8_t children = reader.Byte();
        uint64_t next = 0;
        for (uint8_t child = 0; child < children && next == 0; ++child) {
            const std::string edge = reader.CString();
            const uint64_t childNode = reader.Uleb();
            if (wanted.compare(matched, edge.size(), edge) == 0 && !edge.empty()) {
                matched += edge.size();
                next = childNode;
            }
        }
        if (next == 0 || next >= size) break;
        node = next;
    }
    throw LoadFailure(slice.path(), "exports no " + wanted);
}

void RunInitialisers(const Image& image, const Mapping& mapping) {
    for (const Section& section : image.sections) {
        if (section.type == kModInitFuncPointers) {
            const uint8_t* pointers = mapping.AtAddress(section.address, section.size);
            for (uint64_t at = 0; at + 8 <= section.size; at += 8)
                reinterpret_cast<void (*)()>(ReadPointer(pointers + at))();
        } else if (section.type == kInitFuncOffsets) {
            const uint8_t* offsets = mapping.AtAddress(section.address, section.size);
            for (uint64_t at = 0; at + 4 <= section.size; at += 4) {
                uint32_t offset;
                std::memcpy(&offset, offsets + at, sizeof offset);
                reinterpret_cast<void (*)()>(mapping.AtAddress(image.headerAddress + offset, 1))();
            }
        }
    }
}

}  // namespace

bool IsMachOFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    uint8_t magic[4] = {};
    if (!file.read(reinterpret_cast<char*>(magic), sizeof magic)) return false;
    const uint32_t little = magic[0] | magic[1] << 8 | magic[2] << 16 | uint32_t{magic[3]} << 24;
    const uint32_t big = __builtin_bswap32(little);
    return little == kMachO64Magic || little == kMachO32Magic || big == kFatMagic || big == kFat64Magic;
}

LoadedMacPlugin LoadMacPlugin(const std::string& path, HostKind kind) {
    const std::vector<uint8_t> bytes = ReadWholeFile(path);
    const Bytes file(path, bytes.data(), bytes.size());
    const Bytes slice = ThisProcessorsSlice(file);
    const Image image = ReadLoadCommands(slice);
    Mapping mapping(slice, image);
    Rebase(slice, image, mapping);
    BindImports(slice, image, mapping, kind);
    const uint64_t entry = ExportedAddress(slice, image, "_REALPluginMain");
    auto pluginMain = reinterpret_cast<void (*)(REALResolver)>(mapping.AtAddress(image.headerAddress + entry, 1));
    mapping.Protect();
    mapping.Keep();
    RunInitialisers(image, mapping);
#if defined(__aarch64__)
    const REALResolver resolver = AppleArm64Resolver();
#else
    const REALResolver resolver = SimulatedHost::Resolver();
#endif
    return {pluginMain, resolver};
}

}  // namespace simhost::internal
