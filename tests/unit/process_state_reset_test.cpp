// The reset the fuzz target runs between inputs: after any start-up and calls on
// any host, it leaves the plug-in as loaded, so that start-up registers what it
// registers in a fresh process, entry points are looked up anew, and the host
// kind is decided again.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "plugin/process_state.h"
#include "simhost/simulated_host.h"

extern "C" void REALPluginMain(REALResolver resolver);

namespace {

using simhost::HostKind;

// Everything a host learns at start-up, as text to compare.
std::string Registered(const simhost::Registration& registration) {
    std::ostringstream text;
    text << int(registration.form) << ' ' << registration.definitionVersion << ' ' << registration.olderLayout << ' '
         << registration.name << ' ' << registration.classFlags << ' ' << registration.registrations << ' '
         << registration.announcedVersion.value_or(-1) << '\n';
    for (const simhost::RegisteredMethod& method : registration.methods)
        text << reinterpret_cast<const void*>(method.function) << ' ' << method.declaration << ' ' << method.flags
             << '\n';
    return text.str();
}

// Starts the plug-in in a host of that version and kind and turns a picture of
// the host's own storage; the registration, and whether the turn succeeded.
std::pair<std::string, bool> StartAndTurn(std::optional<double> version, HostKind kind) {
    simhost::HostConfig config;
    config.version = version;
    config.kind = kind;
    simhost::SimulatedHost host(config);
    REALPluginMain(simhost::SimulatedHost::Resolver());
    REALpicture picture = host.MakePicture(simhost::NewPictureStorage(config), 3, 2);
    const simhost::PictureMethod& quarterTurn = simhost::methods::kRotate90;
    const simhost::RegisteredMethod* turn = host.registration().Find(quarterTurn);
    REALpicture turned =
        turn != nullptr ? simhost::CallInForm(turn->function, quarterTurn.form, picture, {}).picture : nullptr;
    if (turned != nullptr) host.Release(turned);
    host.Release(picture);
    EXPECT_EQ(host.Lookups("newPicture"), turned != nullptr ? 1 : 0) << "looked up anew after the reset";
    return {Registered(host.registration()), turned != nullptr};
}

class ProcessStateResetTest : public ::testing::TestWithParam<double> {};

TEST_P(ProcessStateResetTest, StartUpAfterTheResetIsStartUpAtLoad) {
    const auto [atLoad, turnedAtLoad] = StartAndTurn(GetParam(), HostKind::Console);
    ASSERT_TRUE(turnedAtLoad);
    // Every form of registration, and desktop hosts whose kind would stay decided.
    for (std::optional<double> other : {std::optional<double>{}, std::optional<double>{2011.0},
                                        std::optional<double>{2012.0}, std::optional<double>{2013.04}}) {
        ResetProcessState();
        EXPECT_TRUE(StartAndTurn(other, HostKind::Desktop).second);
    }
    ResetProcessState();
    const auto [again, turnedAgain] = StartAndTurn(GetParam(), HostKind::Console);
    EXPECT_TRUE(turnedAgain);
    EXPECT_EQ(again, atLoad);
    ResetProcessState();
}

INSTANTIATE_TEST_SUITE_P(VersionBands, ProcessStateResetTest, ::testing::Values(2010.0, 2012.5, 2013.04, 3000.0));

}  // namespace
