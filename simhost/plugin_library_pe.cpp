// Loading the Windows arm64 library into this Linux arm64 process, as Windows'
// loader would, so that it runs the same tests as every other target. No
// Windows on ARM exists here and Debian has no Wine for arm64; the DLL is code
// for the same processor as a Linux arm64 library, and what it needs of the
// system is small enough to bind by hand (pe_imports.cpp).
//
// What the loader accepts: a PE32+ DLL for arm64 (machine 0xAA64), its imports
// by name from KERNEL32.dll and msvcrt.dll. It
//   - maps the headers and each section at its address from one anonymous
//     mapping (a fresh instance at every load, its process-wide state as at
//     load);
//   - applies the base relocations (64-bit ones; the padding entries skipped);
//   - binds every import before any of the library's code runs: one that
//     cannot be bound refuses the load with its name, as does an import by
//     ordinal, from another DLL, or a delay-load table;
//   - gives each section its protections;
//   - writes 0 as the library's thread-local storage index and runs its TLS
//     callbacks, then its entry point, with DLL_PROCESS_ATTACH, as Windows does
//     before LoadLibrary returns; an entry point that answers FALSE refuses the
//     load;
//   - finds REALPluginMain in the export table (a forwarded export is refused).
// A truncated or foreign file is refused with what is wrong, never mapped in
// part.
//
// Windows' arm64 calling convention is Linux's (AAPCS64) but in three places:
//   1. x18 holds the thread's block (TEB) on Windows and is an ordinary
//      register on Linux. The library's own code never reads it (no
//      thread-local variables, no structured exceptions), which
//      scripts/check-dll.sh checks in its disassembly; the MinGW C runtime
//      reads it once, when its entry point starts, for the TEB's StackBase as
//      the owner of its start-up lock. So the TLS callbacks and the entry point
//      run with x18 pointing at a block of this loader's, whose StackBase is
//      its own address; everything else runs with whatever Linux code leaves
//      in x18, which no Windows code then reads.
//   2. Variadic arguments travel in the general registers, floating ones
//      included, and a va_list is a pointer to 8-byte slots: the library
//      imports no variadic function (it formats with MinGW's own snprintf,
//      built into it), and the one taking a va_list has an adapter.
//   3. long is 32 bits and wchar_t 16: the imports that meet these have
//      stand-ins (pe_imports.cpp), and the host's entry points use neither.
// Arguments and results otherwise travel as on Linux: the host's resolver is
// handed over as it is.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <vector>

#include "simhost/library_file.h"
#include "simhost/pe_loader.h"

namespace simhost::internal {

namespace {

constexpr uint16_t kMachineArm64 = 0xaa64;
constexpr uint16_t kMachineAmd64 = 0x8664;
constexpr uint16_t kMachineI386 = 0x14c;
constexpr uint16_t kDllCharacteristic = 0x2000;
constexpr uint16_t kPe32PlusMagic = 0x20b;

constexpr uint32_t kExportDirectory = 0;
constexpr uint32_t kImportDirectory = 1;
constexpr uint32_t kRelocationDirectory = 5;
constexpr uint32_t kTlsDirectory = 9;
constexpr uint32_t kDelayImportDirectory = 13;
constexpr uint32_t kClrDirectory = 14;

constexpr uint16_t kRelocationPadding = 0;
constexpr uint16_t kRelocationDir64 = 10;

constexpr uint32_t kSectionExecutes = 0x20000000;
constexpr uint32_t kSectionReads = 0x40000000;
constexpr uint32_t kSectionWrites = 0x80000000;

constexpr uint32_t kDllProcessAttach = 1;

// The headers' fields the loader follows, checked against the file.
struct Directory {
    uint32_t address = 0, size = 0;
};

struct Section {
    uint32_t address, memorySize, fileOffset, fileSize, characteristics;
};

struct Image {
    uint64_t preferredBase = 0;
    uint32_t imageSize = 0, headersSize = 0, entryPoint = 0;
    Directory directories[16];
    std::vector<Section> sections;
};

const char* MachineName(uint16_t machine) {
    switch (machine) {
        case kMachineAmd64: return "x86-64";
        case kMachineI386: return "32-bit x86";
        default: return "an unknown machine";
    }
}

Image ReadHeaders(const Bytes& file) {
    const std::string& path = file.path();
    if (file.Read<uint16_t>(0, "the MZ header") != 0x5a4d) throw LoadFailure(path, "not a PE file");
    const uint32_t pe = file.Read<uint32_t>(0x3c, "the MZ header");
    if (file.Read<uint32_t>(pe, "the PE header") != 0x00004550) throw LoadFailure(path, "not a PE file");
    const uint16_t machine = file.Read<uint16_t>(pe + 4, "the PE header");
    if (machine != kMachineArm64)
        throw LoadFailure(path, std::string("a DLL for ") + MachineName(machine) + "; this process runs arm64");
    if ((file.Read<uint16_t>(pe + 22, "the PE header") & kDllCharacteristic) == 0)
        throw LoadFailure(path, "a PE file but not a DLL");
    const uint16_t sections = file.Read<uint16_t>(pe + 6, "the PE header");
    const uint16_t optionalSize = file.Read<uint16_t>(pe + 20, "the PE header");
    const uint64_t optional = pe + 24;
    if (file.Read<uint16_t>(optional, "the optional header") != kPe32PlusMagic)
        throw LoadFailure(path, "not a 64-bit (PE32+) DLL");

    Image image;
    image.entryPoint = file.Read<uint32_t>(optional + 16, "the optional header");
    image.preferredBase = file.Read<uint64_t>(optional + 24, "the optional header");
    image.imageSize = file.Read<uint32_t>(optional + 56, "the optional header");
    image.headersSize = file.Read<uint32_t>(optional + 60, "the optional header");
    file.At(0, image.headersSize, "the headers");
    if (image.headersSize > image.imageSize) throw LoadFailure(path, "headers larger than the image");
    const uint32_t directories =
        std::min<uint32_t>(16, file.Read<uint32_t>(optional + 108, "the optional header"));
    for (uint32_t index = 0; index < directories; ++index) {
        const uint64_t entry = optional + 112 + 8 * uint64_t{index};
        if (entry + 8 > optional + optionalSize) throw LoadFailure(path, "a data directory outside its header");
        image.directories[index] = {file.Read<uint32_t>(entry, "a data directory"),
                                    file.Read<uint32_t>(entry + 4, "a data directory")};
        if (uint64_t{image.directories[index].address} + image.directories[index].size > image.imageSize)
            throw LoadFailure(path, "a data directory outside the image");
    }
    if (image.directories[kDelayImportDirectory].size != 0)
        throw LoadFailure(path, "delay-loaded imports, which this loader does not bind");
    if (image.directories[kClrDirectory].size != 0) throw LoadFailure(path, "a .NET assembly");

    const uint64_t table = optional + optionalSize;
    for (uint16_t index = 0; index < sections; ++index) {
        const uint64_t header = table + 40 * uint64_t{index};
        Section section{file.Read<uint32_t>(header + 12, "a section header"),
                        file.Read<uint32_t>(header + 8, "a section header"),
                        file.Read<uint32_t>(header + 20, "a section header"),
                        file.Read<uint32_t>(header + 16, "a section header"),
                        file.Read<uint32_t>(header + 36, "a section header")};
        if (section.memorySize == 0) section.memorySize = section.fileSize;
        section.fileSize = std::min(section.fileSize, section.memorySize);
        file.At(section.fileOffset, section.fileSize, "a section's contents");
        if (section.address < image.headersSize || uint64_t{section.address} + section.memorySize > image.imageSize)
            throw LoadFailure(path, "a section outside the image");
        image.sections.push_back(section);
    }
    return image;
}

// The mapped image, at its relative addresses from one anonymous mapping.
class Mapping {
   public:
    Mapping(const Bytes& file, const Image& image) : file_(file), image_(image) {
        const uint64_t page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
        length_ = (uint64_t{image.imageSize} + page - 1) / page * page;
        if (length_ == 0) throw LoadFailure(file.path(), "an image of no size");
        void* base = mmap(nullptr, length_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (base == MAP_FAILED) throw LoadFailure(file.path(), "no memory for its image");
        base_ = static_cast<uint8_t*>(base);
        std::memcpy(base_, file.At(0, image.headersSize, "the headers"), image.headersSize);
        for (const Section& section : image.sections)
            std::memcpy(base_ + section.address, file.At(section.fileOffset, section.fileSize, "a section"),
                        section.fileSize);
    }
    // A library that failed to load gives its memory back; a loaded one keeps it
    // to the end of the process, as a host never unloads a plug-in.
    ~Mapping() {
        if (!kept_) munmap(base_, length_);
    }
    void Keep() { kept_ = true; }

    uint8_t* Base() const { return base_; }
    // `length` bytes at a relative address, all inside the image.
    uint8_t* At(uint64_t address, uint64_t length, const char* what) const {
        if (address > image_.imageSize || length > image_.imageSize - address)
            throw LoadFailure(file_.path(), std::string(what) + " lies outside the image");
        return base_ + address;
    }
    template <typename Value>
    Value Read(uint64_t address, const char* what) const {
        Value value;
        std::memcpy(&value, At(address, sizeof value, what), sizeof value);
        return value;
    }
    template <typename Value>
    void Write(uint64_t address, Value value, const char* what) const {
        std::memcpy(At(address, sizeof value, what), &value, sizeof value);
    }
    // A NUL-terminated name at a relative address, ending inside the image.
    std::string Name(uint64_t address, const char* what) const {
        const char* start = reinterpret_cast<const char*>(At(address, 1, what));
        const size_t room = image_.imageSize - address;
        const size_t length = strnlen(start, room);
        if (length == room) throw LoadFailure(file_.path(), std::string(what) + " runs past the image");
        return std::string(start, length);
    }
    // The relative address of a virtual address the relocated image holds.
    uint64_t Relative(uint64_t address, const char* what) const {
        const uint64_t base = reinterpret_cast<uint64_t>(base_);
        if (address < base || address - base >= image_.imageSize)
            throw LoadFailure(file_.path(), std::string(what) + " points outside the image");
        return address - base;
    }

    void Protect() const {
        const uint64_t page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
        if (mprotect(base_, std::min<uint64_t>(length_, (image_.headersSize + page - 1) / page * page), PROT_READ) != 0)
            throw LoadFailure(file_.path(), "its headers could not be made read-only");
        for (const Section& section : image_.sections) {
            if (section.address % page != 0)
                throw LoadFailure(file_.path(), "a section that does not start on a page");
            const uint64_t end =
                std::min(length_, (uint64_t{section.address} + section.memorySize + page - 1) / page * page);
            if (end <= section.address) continue;
            const int protection = ((section.characteristics & kSectionReads) ? PROT_READ : 0) |
                                   ((section.characteristics & kSectionWrites) ? PROT_WRITE : 0) |
                                   ((section.characteristics & kSectionExecutes) ? PROT_EXEC : 0);
            if (mprotect(base_ + section.address, end - section.address, protection) != 0)
                throw LoadFailure(file_.path(), "its sections' protections could not be set");
        }
    }

   private:
    const Bytes& file_;
    const Image& image_;
    uint64_t length_ = 0;
    uint8_t* base_ = nullptr;
    bool kept_ = false;
};

void Relocate(const Bytes& file, const Image& image, const Mapping& mapping) {
    const Directory table = image.directories[kRelocationDirectory];
    const uint64_t delta = reinterpret_cast<uint64_t>(mapping.Base()) - image.preferredBase;
    for (uint64_t block = table.address; block + 8 <= uint64_t{table.address} + table.size;) {
        const uint32_t page = mapping.Read<uint32_t>(block, "a relocation block");
        const uint32_t blockSize = mapping.Read<uint32_t>(block + 4, "a relocation block");
        if (blockSize < 8 || blockSize % 2 != 0 || block + blockSize > uint64_t{table.address} + table.size)
            throw LoadFailure(file.path(), "a relocation block of a size that does not fit");
        for (uint64_t entry = block + 8; entry < block + blockSize; entry += 2) {
            const uint16_t value = mapping.Read<uint16_t>(entry, "a relocation");
            const uint64_t address = uint64_t{page} + (value & 0xfff);
            switch (value >> 12) {
                case kRelocationPadding: break;
                case kRelocationDir64:
                    mapping.Write(address, mapping.Read<uint64_t>(address, "a relocated pointer") + delta,
                                  "a relocated pointer");
                    break;
                default:
                    throw LoadFailure(file.path(), "a relocation of type " + std::to_string(value >> 12) +
                                                       ", where a DLL has 64-bit ones only");
            }
        }
        block += blockSize;
    }
}

void BindImports(const Bytes& file, const Image& image, const Mapping& mapping) {
    const Directory table = image.directories[kImportDirectory];
    if (table.size == 0) return;
    for (uint64_t descriptor = table.address;; descriptor += 20) {
        const uint32_t names = mapping.Read<uint32_t>(descriptor, "an import descriptor");
        const uint32_t nameAddress = mapping.Read<uint32_t>(descriptor + 12, "an import descriptor");
        const uint32_t slots = mapping.Read<uint32_t>(descriptor + 16, "an import descriptor");
        if (nameAddress == 0 && slots == 0) return;
        const std::string library = mapping.Name(nameAddress, "an imported DLL's name");
        for (uint64_t index = 0;; ++index) {
            const uint64_t lookup = mapping.Read<uint64_t>((names != 0 ? names : slots) + 8 * index, "an import");
            if (lookup == 0) break;
            if (lookup >> 63)
                throw LoadFailure(file.path(), "an import by ordinal (" + std::to_string(lookup & 0xffff) +
                                                   ") from " + library + ", which this loader binds by name only");
            const std::string symbol = mapping.Name(lookup + 2, "an import's name");
            void* address = WindowsImport(library, symbol);
            if (address == nullptr)
                throw LoadFailure(file.path(), "import " + symbol + " from " + library + " cannot be bound here");
            mapping.Write(slots + 8 * index, reinterpret_cast<uint64_t>(address), "an import's slot");
        }
    }
}

uint32_t ExportedAddress(const Bytes& file, const Image& image, const Mapping& mapping, const std::string& wanted) {
    const Directory table = image.directories[kExportDirectory];
    if (table.size == 0) throw LoadFailure(file.path(), "exports nothing");
    const uint32_t functions = mapping.Read<uint32_t>(table.address + 20, "the export directory");
    const uint32_t names = mapping.Read<uint32_t>(table.address + 24, "the export directory");
    const uint32_t functionTable = mapping.Read<uint32_t>(table.address + 28, "the export directory");
    const uint32_t nameTable = mapping.Read<uint32_t>(table.address + 32, "the export directory");
    const uint32_t ordinalTable = mapping.Read<uint32_t>(table.address + 36, "the export directory");
    for (uint32_t index = 0; index < names; ++index) {
        const uint32_t name = mapping.Read<uint32_t>(nameTable + 4 * uint64_t{index}, "an export's name");
        if (mapping.Name(name, "an export's name") != wanted) continue;
        const uint16_t ordinal = mapping.Read<uint16_t>(ordinalTable + 2 * uint64_t{index}, "an export's ordinal");
        if (ordinal >= functions) throw LoadFailure(file.path(), wanted + " has an ordinal past the exports");
        const uint32_t address = mapping.Read<uint32_t>(functionTable + 4 * uint64_t{ordinal}, "an export");
        if (address >= table.address && address - table.address < table.size)
            throw LoadFailure(file.path(), wanted + " is forwarded to another DLL");
        mapping.At(address, 4, "an export");
        return address;
    }
    throw LoadFailure(file.path(), "exports no " + wanted);
}

// What the C runtime's start-up reads of a thread's block: its StackBase,
// 8 bytes in, as the owner of a lock. Sized as a Windows TEB's first part.
struct ThreadBlock {
    void* exceptionList;
    void* stackBase;
    uint8_t rest[0x100];
};

// Calls a DLL's entry point or TLS callback, (module, reason, reserved), with
// x18 at `block` for the length of the call.
extern "C" int32_t PixturnCallWithThreadBlock(void* function, void* module, uint32_t reason, void* reserved,
                                              ThreadBlock* block);
asm(".text\n"
    ".p2align 2\n"
    ".type PixturnCallWithThreadBlock, %function\n"
    "PixturnCallWithThreadBlock:\n"
    "    stp x29, x30, [sp, #-32]!\n"
    "    mov x29, sp\n"
    "    str x18, [sp, #16]\n"
    "    mov x18, x4\n"
    "    mov x16, x0\n"
    "    mov x0, x1\n"
    "    mov w1, w2\n"
    "    mov x2, x3\n"
    "    blr x16\n"
    "    ldr x18, [sp, #16]\n"
    "    ldp x29, x30, [sp], #32\n"
    "    ret\n"
    ".size PixturnCallWithThreadBlock, .-PixturnCallWithThreadBlock\n");

void Attach(const Bytes& file, const Image& image, const Mapping& mapping) {
    ThreadBlock block{};
    block.stackBase = &block;
    const Directory tls = image.directories[kTlsDirectory];
    if (tls.size != 0) {
        const uint64_t index = mapping.Relative(mapping.Read<uint64_t>(tls.address + 16, "the TLS directory"),
                                                "the TLS index");
        mapping.Write<uint32_t>(index, 0, "the TLS index");
        const uint64_t callbacks = mapping.Read<uint64_t>(tls.address + 24, "the TLS directory");
        if (callbacks != 0) {
            const uint64_t list = mapping.Relative(callbacks, "the TLS callbacks");
            for (uint64_t at = list;; at += 8) {
                const uint64_t callback = mapping.Read<uint64_t>(at, "a TLS callback");
                if (callback == 0) break;
                void* function = mapping.At(mapping.Relative(callback, "a TLS callback"), 4, "a TLS callback");
                PixturnCallWithThreadBlock(function, mapping.Base(), kDllProcessAttach, nullptr, &block);
            }
        }
    }
    if (image.entryPoint != 0 &&
        PixturnCallWithThreadBlock(mapping.At(image.entryPoint, 4, "the entry point"), mapping.Base(),
                                   kDllProcessAttach, nullptr, &block) == 0)
        throw LoadFailure(file.path(), "its entry point refused DLL_PROCESS_ATTACH");
}

}  // namespace

bool IsPeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    char magic[2] = {};
    return file.read(magic, sizeof magic) && magic[0] == 'M' && magic[1] == 'Z';
}

PluginMain LoadWindowsArm64Plugin(const std::string& path) {
    const std::vector<uint8_t> bytes = ReadWholeFile(path);
    const Bytes file(path, bytes.data(), bytes.size());
    const Image image = ReadHeaders(file);
    Mapping mapping(file, image);
    Relocate(file, image, mapping);
    BindImports(file, image, mapping);
    const uint32_t entry = ExportedAddress(file, image, mapping, "REALPluginMain");
    mapping.Protect();
    mapping.Keep();
    Attach(file, image, mapping);
    return reinterpret_cast<PluginMain>(mapping.Base() + entry);
}

}  // namespace simhost::internal
