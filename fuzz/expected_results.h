// What a call should have given, from the slow models of the tests, and the
// comparison of a call's outcome with it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "fuzz/fuzz_case.h"
#include "simhost/simulated_host.h"
#include "tests/support/pictures.h"

namespace pixturn_fuzz {

// A picture's pixels and its mask's, as the host sees them; nil gives nothing.
struct Snapshot {
    std::optional<test_support::Image> picture;
    std::optional<test_support::Image> mask;
    friend bool operator==(const Snapshot&, const Snapshot&) = default;
};
Snapshot TakeSnapshot(const simhost::SimulatedHost& host, REALpicture picture);

// What a call is made on: the recipe of the picture (its storage and any
// spoiled record; its own pixels are in the snapshot) and of its mask.
struct Subject {
    PictureRecipe picture;
    std::optional<PictureRecipe> mask;
};

bool IsInPlace(const simhost::PictureMethod* method);

// Empty when the call failed or gave exactly what the slow models give for the
// receiver as it was before the call; otherwise what differs.
std::string CompareWithModels(simhost::SimulatedHost& host, const simhost::HostConfig& config, const MethodCall& call,
                              const Subject& subject, const Snapshot& before, REALpicture receiver,
                              const simhost::MethodResult& outcome);

}  // namespace pixturn_fuzz
