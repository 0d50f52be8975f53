// Pictures as the host hands them to a plug-in: new pictures, description locks,
// the cached rendering, masks.
//
// New pictures are depth-32 worlds on desktop hosts and host bitmaps elsewhere,
// filled with the configured colour (opaque white unless told), stored as the
// storage keeps it. The host refuses sizes outside 1..32767 and any depth but
// 32, which this plug-in never asks for: such a request is also written down.
//
// A description lock that succeeds must be unlocked once. After a failed
// three-argument lock only hosts before 2012.0 expect the unlock all the same,
// and keep the description locked until they get it; an unlock of nothing is a
// fault anywhere else.
//
// A picture the host has no memory for is answered with nil, as a C interface
// must: an exception from the allocation may not unwind through the plug-in.
//
// A new mask is a picture of the same size and storage kind as new pictures,
// opaque black: a mask that hides nothing. The picture holds its mask.
#include <new>

#include "simhost/entry_points.h"
#include "simhost/host_state.h"

namespace simhost::internal::entry {

namespace {

constexpr double kFirstHostWithoutUnlockAfterFailure = 2012.0;

Rgba Colour(uint32_t argb) {
    return {uint8_t(argb >> 16), uint8_t(argb >> 8), uint8_t(argb), uint8_t(argb >> 24)};
}

// The pixels of a new picture, from the host's memory, which may run out: then
// the allocation throws, as operator new does.
std::unique_ptr<PictureStore> FilledPixels(const HostConfig& config, int32_t width, int32_t height, Rgba fill) {
    const size_t pixelBytes = static_cast<size_t>(width) * static_cast<size_t>(height) * 4;
    if (config.largestPixelAllocation && pixelBytes > *config.largestPixelAllocation) throw std::bad_alloc();
    return std::make_unique<PictureStore>(NewPictureStorage(config), width, height, config.rowPadding, fill);
}

bool LockDescription(HostState& host, REALpicture picture, REALpictureDescription* description,
                     int32_t requestedType, const char* entryPoint) {
    HostObject* object = host.Find(picture, entryPoint);
    if (object == nullptr || description == nullptr) return false;
    if (object->kind != ObjectKind::Picture) {
        host.Problem(std::string(entryPoint) + " called on a graphics object");
        return false;
    }
    const bool refused = requestedType != 0 && host.config.failingDescriptionTypes.contains(requestedType);
    const std::optional<REALpictureDescription> described = refused ? std::nullopt : object->store->Describe(requestedType);
    if (!described) {
        if (host.config.version.value_or(0.0) < kFirstHostWithoutUnlockAfterFailure) ++object->unlocksOwedForFailedLocks;
        return false;
    }
    *description = *described;
    ++object->descriptionLocks;
    return true;
}

}  // namespace

REALpicture newPicture(int32_t width, int32_t height, int32_t depth) {
    auto host = HostState::Enter("newPicture");
    if (!host) return nullptr;
    const int call = ++host->newPictureCalls;
    if (depth != 32 || width < 1 || height < 1 || width > kLargestPictureSide || height > kLargestPictureSide) {
        host->Problem("newPicture asked for " + std::to_string(width) + " x " + std::to_string(height) + " at depth " +
                      std::to_string(depth));
        return nullptr;
    }
    if (host->config.newPictureFailsFromCall > 0 && call >= host->config.newPictureFailsFromCall) return nullptr;
    // Made and filled with the host let go, as most of a new picture's cost is
    // there and other threads' calls need not wait for it.
    const HostConfig& config = host->config;
    try {
        std::unique_ptr<PictureStore> pixels =
            host.Unlocked([&] { return FilledPixels(config, width, height, Colour(config.newPictureFill)); });
        return HostState::PictureHandle(host->AddPicture(std::move(pixels)));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void lockPictureDescription(REALpicture picture, REALpictureDescription* description) {
    if (auto host = HostState::Enter("lockPictureDescription"))
        LockDescription(*host, picture, description, 0, "lockPictureDescription");
}

bool REALLockPictureDescription(REALpicture picture, REALpictureDescription* description, int32_t pictureType) {
    auto host = HostState::Enter("REALLockPictureDescription");
    if (!host) return false;
    if (pictureType == 0) {
        host->Problem("REALLockPictureDescription asked for picture type 0");
        return false;
    }
    return LockDescription(*host, picture, description, pictureType, "REALLockPictureDescription");
}

void unlockPictureDescription(REALpicture picture) {
    auto host = HostState::Enter("unlockPictureDescription");
    if (!host) return;
    HostObject* object = host->Find(picture, "unlockPictureDescription");
    if (object == nullptr) return;
    if (object->unlocksOwedForFailedLocks > 0)
        --object->unlocksOwedForFailedLocks;
    else if (object->descriptionLocks > 0)
        --object->descriptionLocks;
    else
        host->Problem("unlockPictureDescription called on a picture whose description is not locked");
}

void REALPictureClearCache(REALpicture picture) {
    auto host = HostState::Enter("REALPictureClearCache");
    if (!host) return;
    if (HostObject* object = host->Find(picture, "REALPictureClearCache")) ++object->cacheClears;
}

REALpicture REALGetPictureMask(REALpicture picture, uint8_t create) {
    auto host = HostState::Enter("REALGetPictureMask");
    if (!host) return nullptr;
    HostObject* object = host->Find(picture, "REALGetPictureMask");
    if (object == nullptr || object->kind != ObjectKind::Picture || object->isMask) return nullptr;
    if (object->mask == 0) {
        if (!create) return nullptr;
        // Its first reference is the picture's own. Made with the host held, so
        // that threads asking at once get the same mask.
        try {
            object->mask = host->AddPicture(
                FilledPixels(host->config, object->store->width(), object->store->height(), Rgba{0, 0, 0, 255}));
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
        HostObject* mask = host->Find(HostState::PictureHandle(object->mask), "REALGetPictureMask");
        mask->isMask = true;
        mask->hostReferences = 1;
    }
    host->AddReference(object->mask);
    return HostState::PictureHandle(object->mask);
}

}  // namespace simhost::internal::entry

simhost::Storage simhost::NewPictureStorage(const HostConfig& config) {
    if (config.newPictureStorage) return *config.newPictureStorage;
    return config.kind == HostKind::Desktop ? Storage::GWorld32 : Storage::HostBitmap;
}
