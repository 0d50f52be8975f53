// The shipped library shows the host exactly one symbol, REALPluginMain: anything
// else exported could clash with the host or with other plug-ins in its process.
#include <gtest/gtest.h>

#include <cstdio>
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

}  // namespace
