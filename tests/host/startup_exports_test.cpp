// The shipped library as a host loads it: it shows exactly one symbol,
// REALPluginMain (anything else exported could clash with the host or with other
// plug-ins in its process), and loads whatever the temporary folder is like.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "simhost/built_plugin.h"
#include "simhost/simulated_host.h"

namespace {

// "<type> <name>" of every dynamic symbol the library defines.
std::vector<std::string> DefinedDynamicSymbols(const std::string& library) {
    const std::string command = "nm -D --defined-only '" + library + "'";
    std::unique_ptr<FILE, decltype(&pclose)> listing(popen(command.c_str(), "r"), &pclose);
    std::vector<std::string> symbols;
    if (!listing) return symbols;
    char line[1024];
    while (std::fgets(line, sizeof line, listing.get()) != nullptr) {
        std::istringstream fields(line);
        std::string address, type, name;
        if (fields >> address >> type >> name) symbols.push_back(type + " " + name);
    }
    return symbols;
}

TEST(Exports, OnlyTheEntryPoint) {
    EXPECT_EQ(DefinedDynamicSymbols(simhost::DefaultPluginPath()), std::vector<std::string>{"T REALPluginMain"});
}

// A fresh instance for each host is copied into memory, never into $TMPDIR,
// which may be missing, full, read-only or mounted noexec.
TEST(Loading, AFreshInstanceNeedsNoTemporaryFolder) {
    setenv("TMPDIR", "/nonexistent/pixturn-loading-test", 1);
    simhost::SimulatedHost host;
    simhost::PluginLibrary plugin(host, simhost::DefaultPluginPath());
    EXPECT_EQ(host.registration().methods.size(), 15u);
}

// Loads the plug-in with files limited to 4 KB; exits 3 when it is refused.
[[noreturn]] void LoadUnderAFileSizeLimit() {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &limit);
    simhost::SimulatedHost host;
    try {
        simhost::PluginLibrary plugin(host, simhost::DefaultPluginPath());
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        std::exit(3);
    }
    std::exit(0);
}

// A copy cut short is refused before it is loaded, where a truncated library
// would load and then fault in the middle of a call.
TEST(Loading, ACopyCutShortIsRefused) {
    EXPECT_EXIT(LoadUnderAFileSizeLimit(), ::testing::ExitedWithCode(3), "incomplete");
}

}  // namespace
