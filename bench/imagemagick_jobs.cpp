// ImageMagick 6 (MagickCore, 16-bit quanta as Debian builds it). Its RotateImage
// turns by a quarter where needed and then by three shears, like RotateQLM; its
// right angles are integral rotations. It has no in-place flips, and its clones
// share pixels until written, so it has no row for those tasks. Angles are
// clockwise in ImageMagick, anticlockwise in the plug-in.
#include <cstdlib>

#include <magick/MagickCore.h>

#include "bench/job.h"
#include "bench/peer_jobs.h"
#include "bench/tasks.h"
#include "bench/test_card.h"

namespace bench {

namespace {

struct Magick {
    ExceptionInfo* exception = nullptr;
    Image* card = nullptr;
};

// Started on first use, before any timing; kept until the process ends.
Magick& Started() {
    static Magick magick = [] {
        // The policy beside the benchmark's sources lifts Debian's 256 MiB cap on
        // the pixel cache; it must be in place before the library starts.
        setenv("MAGICK_CONFIGURE_PATH", PIXTURN_BENCH_MAGICK_POLICY_DIR, 1);
        setenv("MAGICK_THREAD_LIMIT", "1", 1);
        MagickCoreGenesis("pixturn_bench", MagickFalse);
        SetMagickResourceLimit(ThreadResource, 1);
        Magick started;
        started.exception = AcquireExceptionInfo();
        const std::vector<uint8_t> bytes = test_card::RgbaBytes();
        started.card = ConstituteImage(test_card::kWidth, test_card::kHeight, "RGBA", CharPixel, bytes.data(),
                                       started.exception);
        if (started.card != nullptr) {
            started.card->background_color.red = QuantumRange;
            started.card->background_color.green = QuantumRange;
            started.card->background_color.blue = QuantumRange;
            started.card->background_color.opacity = OpaqueOpacity;
        }
        return started;
    }();
    return magick;
}

bool Discard(Image* image) {
    if (image == nullptr) return false;
    DestroyImage(image);
    return true;
}

template <typename Transform>
void RegisterTask(const std::string& task, Transform transform) {
    Register({task, kImageMagick, [] { Started(); },
              [transform] {
                  Magick& magick = Started();
                  return magick.card != nullptr && Discard(transform(magick.card, magick.exception));
              },
              {}});
}

}  // namespace

void RegisterImageMagickJobs() {
    for (double angle : kRotationAngles)
        RegisterTask(RotateTask(angle), [angle](Image* card, ExceptionInfo* e) { return RotateImage(card, -angle, e); });
    RegisterTask(kRotate90, [](Image* card, ExceptionInfo* e) { return RotateImage(card, -90, e); });
    RegisterTask(kRotate180, [](Image* card, ExceptionInfo* e) { return RotateImage(card, 180, e); });
    RegisterTask(kRotate270, [](Image* card, ExceptionInfo* e) { return RotateImage(card, 90, e); });
    // Mirroring both ways is the half turn.
    RegisterTask(kMirror, [](Image* card, ExceptionInfo* e) { return RotateImage(card, 180, e); });
    RegisterTask(kHMirror, [](Image* card, ExceptionInfo* e) { return FlopImage(card, e); });
    RegisterTask(kVMirror, [](Image* card, ExceptionInfo* e) { return FlipImage(card, e); });
}

}  // namespace bench
