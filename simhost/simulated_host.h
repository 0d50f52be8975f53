// The simulated Xojo runtime: the test bench of the plug-in.
//
// It plays the host for the plug-in exactly as the real one would: a resolver that
// answers every entry-point name the plug-in uses, pictures in both storage kinds
// (QuickDraw offscreen worlds on desktop hosts, host bitmap records on console and
// web hosts), reference counts, description and pixel locks, masks, graphics
// objects and the DrawPicture method. It is strict: every call the real host would
// not allow, every reference or lock left behind, every unbalanced unlock is
// written down in the ledger, which a test asks at its end. And it injects faults:
// entry points missing or appearing only from their n-th look-up, pictures that
// cannot be made, description locks that fail, no graphics or no DrawPicture.
//
// One SimulatedHost is active at a time (the resolver is a plain C function).
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/macos/macos_system.h"
#include "platform/xojo/rb_plugin.h"
#include "simhost/picture_methods.h"

namespace simhost {

namespace internal {
class HostState;
}

// Which of the classes "Application", "ConsoleApplication", "WebApplication" the
// host answers for (none: the first picture's type decides).
enum class HostKind { Desktop, Console, Web, Undecided };

// The host makes no picture wider or taller than this.
inline constexpr int32_t kLargestPictureSide = 32767;

// How a picture is stored.
enum class Storage {
    GWorld32,    // desktop: QuickDraw world of depth 32, bytes A, R, G, B
    GWorld24,    // desktop: depth 24, bytes R, G, B
    GWorld16,    // desktop: depth 16, 1-5-5-5 little-endian words (alpha bit)
    HostBitmap,  // console/web: record of type 10, bytes B, G, R, X (7-bit alpha)
    VectorOnly,  // described only as type 8; the host can still draw it
};

struct HostConfig {
    std::optional<double> version = 2019.0;  // nullopt: no "REALGetRBVersion"
    HostKind kind = HostKind::Desktop;
    // Names the resolver never answers for.
    std::set<std::string> missingEntryPoints;
    // Names the resolver answers for only from their n-th look-up on (1-based).
    std::map<std::string, int> entryPointsFromLookup;
    // REALNewPicture returns nil from its n-th call on (0: never).
    int newPictureFailsFromCall = 0;
    // The host's memory runs out for the pictures it makes for the plug-in (new
    // pictures, new masks) whose pixels need more bytes than this: their
    // allocation throws std::bad_alloc, as operator new would.
    std::optional<size_t> largestPixelAllocation;
    // The three-argument description lock answers false for these requested types.
    std::set<int32_t> failingDescriptionTypes;
    bool graphicsUnavailable = false;      // pluginPictureGraphicsGetter answers nil
    bool drawPictureUnavailable = false;   // REALLoadObjectMethod answers null
    // What a new picture from REALNewPicture holds before anyone writes it
    // (0xAARRGGBB). Opaque white, as the desktop runtime makes them.
    uint32_t newPictureFill = 0xFFFFFFFF;
    // The storage of pictures the host makes for REALNewPicture; by default
    // GWorld32 on desktop hosts and HostBitmap elsewhere (NewPictureStorage).
    std::optional<Storage> newPictureStorage;
    // Extra bytes at the end of every world row (desktop), so stride errors show.
    int32_t rowPadding = 12;
    // Called only from the thread that made the host, so no call needs its lock
    // even in a process with other threads (the fuzz target: libFuzzer keeps one
    // watching memory). A call from any other thread stops the process.
    bool oneThread = false;
    macos_system::Configuration system;
};

Storage NewPictureStorage(const HostConfig& config);

// What the plug-in registered at start-up, deep-copied.
struct RegisteredMethod {
    REALproc function = nullptr;
    REALproc setter = nullptr;
    std::string declaration;  // empty for a null declaration
    uint32_t flags = 0;
    uint32_t attributeCount = 0;
};
struct Registration {
    enum class Form { Nothing, ClassExtension, Module } form = Form::Nothing;
    int32_t definitionVersion = 0;   // word 0 of what was registered
    bool olderLayout = false;        // class registered with 4-word method entries
    std::string name;                // class name, or module name
    uint32_t classFlags = 0;
    std::vector<RegisteredMethod> methods;
    int registrations = 0;           // how many registration calls were made
    std::optional<int32_t> announcedVersion;  // argument of "RegisterPluginVersion"

    // What the plug-in registered for the method, in whichever form it chose;
    // null when it registered none.
    const RegisteredMethod* Find(const PictureMethod& method) const;
};

// A picture's pixel as the host sees it (channels 0..255).
struct Rgba {
    uint8_t r, g, b, a;
    friend bool operator==(const Rgba&, const Rgba&) = default;
};

class SimulatedHost {
public:
    explicit SimulatedHost(HostConfig config = {});
    ~SimulatedHost();
    SimulatedHost(const SimulatedHost&) = delete;
    SimulatedHost& operator=(const SimulatedHost&) = delete;

    const HostConfig& config() const;
    static REALResolver Resolver();
    // Every name the resolver can answer for, whatever the configuration.
    static std::vector<std::string> EntryPointNames();
    static SimulatedHost& Current();

    const Registration& registration() const;
    int Lookups(const std::string& name) const;   // how often the resolver was asked
    int Calls(const std::string& name) const;     // how often an entry point ran

    // Pictures the test makes: pixels of all-zero bytes, one reference, owned by
    // the test.
    REALpicture MakePicture(Storage storage, int32_t width, int32_t height);
    void Release(REALobject object);   // drops one reference, like REALUnlockObject
    void SetPixel(REALpicture picture, int32_t x, int32_t y, Rgba pixel);
    Rgba GetPixel(REALpicture picture, int32_t x, int32_t y) const;
    // Row y of the picture, Width pixels, as SetPixel and GetPixel would write and
    // read them one at a time (one look-up per row: what a program moving whole
    // images needs).
    void SetRow(REALpicture picture, int32_t y, const Rgba* pixels);
    void GetRow(REALpicture picture, int32_t y, Rgba* pixels) const;
    // The stored bytes of one pixel (3 for GWorld24, 2 for GWorld16, else 4);
    // SetRawPixel writes them as they are (for bits SetPixel cannot set, such as
    // the top bit of a host bitmap's alpha byte). Not for VectorOnly pictures.
    std::vector<uint8_t> RawPixel(REALpicture picture, int32_t x, int32_t y) const;
    void SetRawPixel(REALpicture picture, int32_t x, int32_t y, const std::vector<uint8_t>& bytes);
    // RawPixel of every pixel, row by row (VectorOnly pictures: what they show),
    // to tell whether a picture changed: the bytes themselves (empty for nil),
    // or a hash of them (0 for nil) where many results must be kept.
    std::vector<uint8_t> StoredBytes(REALpicture picture) const;
    size_t StoredBytesHash(REALpicture picture) const;
    Storage StorageOf(REALpicture picture) const;
    int32_t Width(REALpicture picture) const;
    int32_t Height(REALpicture picture) const;
    int References(REALobject object) const;
    bool IsAlive(REALobject object) const;
    // The picture's mask, or nil; no reference is added. SetMask gives the mask to
    // the picture (the picture takes its own reference).
    REALpicture MaskOf(REALpicture picture) const;
    void SetMask(REALpicture picture, REALpicture mask);
    // Number of REALPictureClearCache calls made on a picture.
    int CacheClears(REALpicture picture) const;
    // Spoils one word of a host bitmap record, as a damaged or foreign record
    // would look to a plug-in.
    enum class RecordDefect { FirstWordNotZero, ValidityWordZero, NoRowTable };
    void MalformRecord(REALpicture picture, RecordDefect defect);

    // Everything taken during the test has been given back: every object the
    // plug-in made is gone, except each of `returned`, which holds exactly one
    // reference (the caller's) plus any its mask needs; test-made objects hold
    // the references the test gave them; no description or pixel lock is held;
    // no call was made that the host forbids (on a dead or nil object, an
    // unlock of a description not locked, a picture of another depth or of a
    // size the host refuses, a scaled draw); the simulated system saw no
    // leaked URL, no unbalanced pixel unlock, no call on a dead world.
    // Returns the problems found, empty when balanced.
    std::vector<std::string> LedgerProblems(const std::vector<REALpicture>& returned = {}) const;

private:
    std::unique_ptr<internal::HostState> state_;
};

// Loads the plug-in library as the host does: REALPluginMain called with the
// simulated host's resolver, and the method table taken from what it registered.
// Like a host, it never unloads a plug-in: the records handed over at start-up
// must stay valid to the end of the process. Throws std::runtime_error when the
// library cannot be loaded.
class PluginLibrary {
public:
    enum class Instance {
        Fresh,    // a new instance of the library, its process-wide state as at load
        InPlace,  // the file itself, for a program that runs one host per process
    };
    PluginLibrary(SimulatedHost& host, const std::string& libraryPath, Instance instance = Instance::Fresh);
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    // Registration::Find of what the plug-in registered.
    const RegisteredMethod* Find(const PictureMethod& method) const;

    // Calls a registered method in its form (CallInForm). A method the plug-in
    // did not register throws std::out_of_range.
    MethodResult Call(const PictureMethod& method, REALpicture receiver, const MethodArguments& arguments = {}) const;

private:
    SimulatedHost& host_;
};

// The declaration a plug-in looks the host's DrawPicture up by, on a picture's
// graphics object; no other text finds it.
extern const char kDrawPictureDeclaration[];

}  // namespace simhost
