// RotateQLM(30) on 1000 x 750 pictures from several threads at once, each thread
// turning a picture of its own, as a program that turns a folder of photos on
// every core does. Nothing in the plug-in serialises the threads; what does is
// the host (the simulated host makes and releases pictures under one lock), and
// beyond that the memory every thread's passes stream through.
#include "bench/thread_scaling_jobs.h"

#include <benchmark/benchmark.h>

#include <vector>

#include "bench/plugin_session.h"
#include "bench/tasks.h"
#include "bench/test_card.h"

namespace bench {

namespace {

// The part of the test card a thread's picture shows.
REALpicture ThreadPicture(simhost::SimulatedHost& host, simhost::Storage storage) {
    REALpicture picture = host.MakePicture(storage, kScalingPictureWidth, kScalingPictureHeight);
    std::vector<simhost::Rgba> row(kScalingPictureWidth);
    for (int32_t y = 0; y < kScalingPictureHeight; ++y) {
        for (int32_t x = 0; x < kScalingPictureWidth; ++x) row[x] = test_card::PixelAt(x, y);
        host.SetRow(picture, y, row.data());
    }
    return picture;
}

// The session is entered once, before the threads start.
template <const HostUnderTest& kHost>
void EnterSession(const benchmark::State&) {
    PluginSession::Enter(kHost);
}

template <const HostUnderTest& kHost>
void RotateOwnPicture(benchmark::State& state) {
    PluginSession& session = PluginSession::Enter(kHost);
    const REALproc rotate = session.Method(simhost::methods::kRotate);
    REALpicture picture = ThreadPicture(session.host(), kHost.storage);
    const simhost::MethodArguments arguments{.angle = 30, .background = 0xFFFFFFFF};
    for (auto _ : state) {
        REALpicture turned = rotate != nullptr ? simhost::CallInForm(rotate, simhost::MethodForm::AngleAndBackground,
                                                                      picture, arguments).picture
                                               : nullptr;
        if (turned == nullptr) {
            state.SkipWithError("not done (method not built yet, or it failed)");
            break;
        }
        session.host().Release(turned);
    }
    state.SetItemsProcessed(state.iterations());  // pictures
    session.host().Release(picture);
}

template <const HostUnderTest& kHost>
void Register() {
    for (int threads : ScalingThreadCounts())
        benchmark::RegisterBenchmark((ScalingTask(threads) + "/" + kHost.label).c_str(), RotateOwnPicture<kHost>)
            ->Setup(EnterSession<kHost>)
            ->Threads(threads)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->MinTime(0.5)
            ->Repetitions(3)
            ->ReportAggregatesOnly(true);
}

}  // namespace

void RegisterThreadScalingJobs(const HostUnderTest& host) {
    if (host.kind == kDesktop.kind)
        Register<kDesktop>();
    else
        Register<kConsole>();
}

}  // namespace bench
