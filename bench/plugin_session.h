// The shipped plug-in loaded into a simulated host of one kind, with the test card
// as a host picture: what every timing of the plug-in's methods runs in. The
// simulated host allows one active host at a time, so entering the session of
// another kind ends the current one first.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "bench/rotation_geometry.h"
#include "simhost/simulated_host.h"

namespace bench {

struct HostUnderTest {
    const char* label;  // "desktop" or "console"
    simhost::HostKind kind;
    simhost::Storage storage;
};

// Desktop hosts with 32-bit offscreen worlds and console hosts with host bitmaps.
inline constexpr HostUnderTest kDesktop{"desktop", simhost::HostKind::Desktop, simhost::Storage::GWorld32};
inline constexpr HostUnderTest kConsole{"console", simhost::HostKind::Console, simhost::Storage::HostBitmap};

class PluginSession {
public:
    static PluginSession& Enter(const HostUnderTest& kind);
    // Ends the session kept since the last Enter, while the stand-in system it
    // uses still exists (not at exit, where the order of destruction is not ours).
    static void EndActive();
    ~PluginSession();
    PluginSession(const PluginSession&) = delete;
    PluginSession& operator=(const PluginSession&) = delete;

    simhost::SimulatedHost& host() { return host_; }
    // The test card, no mask.
    REALpicture card() const { return card_; }
    // The test card carrying a mask of its own size, made on first use.
    REALpicture maskedCard();

    // The registered function of the method; null when the plug-in registered none.
    REALproc Method(const simhost::PictureMethod& method) const;

    // The host's own copy of the card, as the host makes one for a program: a new
    // picture with the card drawn into it by the graphics object's DrawPicture.
    // Returns the new picture (one reference, the caller's), or nil.
    REALpicture HostCopyOfCard();

    // The heap a new host picture of this size takes: its pixels and whatever the
    // host keeps beside them (row tables, records). Measured once per size.
    int64_t HostPictureBytes(PictureSize size);

private:
    explicit PluginSession(const HostUnderTest& kind);

    HostUnderTest kind_;
    simhost::SimulatedHost host_;
    simhost::PluginLibrary plugin_;
    REALpicture card_ = nullptr;
    REALpicture maskedCard_ = nullptr;
    std::map<std::pair<int32_t, int32_t>, int64_t> pictureBytes_;
};

}  // namespace bench
