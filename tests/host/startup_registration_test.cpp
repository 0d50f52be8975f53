// Start-up as each host sees it: the shipped library loaded into simulated hosts
// at every boundary of the version bands, with what they were told and what they
// were handed checked word by word; and hosts lacking the optional entry points.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "simhost/built_plugin.h"
#include "simhost/simulated_host.h"

using simhost::Registration;
using Form = simhost::Registration::Form;

namespace {

const char kSixDigitRotate[] = "RotateQLM(angle as double, background as color = &cFFFFFF) as picture";

// A class-extension declaration as a global method taking the picture first.
std::string AsModuleMethod(const std::string& declaration) {
    const size_t split = declaration.find_first_of(" (");
    const bool parameters = declaration[split] == '(';
    return declaration.substr(0, split) + "(extends ref as Picture" + (parameters ? ", " : ")") +
           declaration.substr(split + (parameters ? 1 : 0));
}

// Where each registered function lies in the library, comparable between loads.
std::vector<uintptr_t> FunctionOffsets(const Registration& registration) {
    std::vector<uintptr_t> offsets;
    for (const simhost::RegisteredMethod& method : registration.methods) {
        Dl_info info{};
        const void* address = reinterpret_cast<const void*>(method.function);
        if (address == nullptr || dladdr(address, &info) == 0) return {};
        offsets.push_back(reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(info.dli_fbase));
    }
    return offsets;
}

// The functions of the table as registered unchanged, by a 2012.0 host.
std::vector<uintptr_t> TableFunctionOffsets() {
    simhost::SimulatedHost host({.version = 2012.0});
    simhost::PluginLibrary plugin(host, simhost::DefaultPluginPath());
    return FunctionOffsets(host.registration());
}

struct VersionCase {
    const char* name;
    std::optional<double> version;
    int32_t definitionVersion;
    Form form;
    bool sixDigitColour;
    uint32_t classFlags;
};

class StartupTest : public ::testing::TestWithParam<VersionCase> {};

TEST_P(StartupTest, RegistersTheFormThisHostUnderstands) {
    const VersionCase& c = GetParam();
    const std::vector<uintptr_t> tableFunctions = TableFunctionOffsets();
    simhost::SimulatedHost host({.version = c.version});
    simhost::PluginLibrary plugin(host, simhost::DefaultPluginPath());
    const Registration& registration = host.registration();

    ASSERT_EQ(registration.form, c.form);
    EXPECT_EQ(registration.registrations, 1);
    EXPECT_EQ(registration.definitionVersion, c.definitionVersion);
    EXPECT_EQ(registration.announcedVersion, c.definitionVersion);
    EXPECT_EQ(registration.olderLayout, c.definitionVersion == 9);

    std::vector<std::string> declarations;
    for (const simhost::PictureMethod* method : simhost::kPictureMethods) {
        const std::string declaration =
            method == &simhost::methods::kRotate && c.sixDigitColour ? kSixDigitRotate : method->declaration;
        declarations.push_back(c.form == Form::Module ? AsModuleMethod(declaration) : declaration);
    }
    const uint32_t methodFlags = c.form == Form::Module ? 0x14 : c.classFlags;
    if (c.form == Form::Module) {
        EXPECT_EQ(registration.name, "PicturePixTurnExtensionQLM");
    } else {
        EXPECT_EQ(registration.name, "Picture");
        EXPECT_EQ(registration.classFlags, c.classFlags);
    }
    ASSERT_EQ(registration.methods.size(), declarations.size());
    for (size_t i = 0; i < declarations.size(); ++i) {
        const simhost::RegisteredMethod& method = registration.methods[i];
        EXPECT_EQ(method.declaration, declarations[i]) << i;
        EXPECT_EQ(method.flags, methodFlags) << i;
        EXPECT_EQ(method.setter, nullptr) << i;
        EXPECT_EQ(method.attributeCount, 0u) << i;
    }
    EXPECT_EQ(FunctionOffsets(registration), tableFunctions) << "every form carries the table's functions in order";
}

INSTANTIATE_TEST_SUITE_P(
    VersionBands, StartupTest,
    ::testing::Values(VersionCase{"NoVersion", std::nullopt, 9, Form::ClassExtension, true, 0},
                      VersionCase{"V2010_028", 2010.028, 9, Form::ClassExtension, true, 0},
                      VersionCase{"V2010_029", 2010.029, 9, Form::ClassExtension, true, 0x4},
                      VersionCase{"V2011_03", 2011.03, 9, Form::ClassExtension, true, 0x4},
                      VersionCase{"V2011_04", 2011.04, 9, Form::ClassExtension, false, 0x4},
                      VersionCase{"V2011_99", 2011.99, 9, Form::ClassExtension, false, 0x4},
                      VersionCase{"V2012_0", 2012.0, 10, Form::ClassExtension, false, 0x4},
                      VersionCase{"V2012_99", 2012.99, 10, Form::ClassExtension, false, 0x4},
                      VersionCase{"V2013_0", 2013.0, 11, Form::Module, false, 0x4},
                      VersionCase{"V2013_03", 2013.03, 12, Form::Module, false, 0x4},
                      VersionCase{"V2013_04", 2013.04, 13, Form::Module, false, 0x4},
                      VersionCase{"V2999_99", 2999.99, 13, Form::Module, false, 0x4},
                      VersionCase{"V3000_0", 3000.0, 13, Form::ClassExtension, false, 0x4}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(StartupWithoutAnnouncement, StillRegisters) {
    for (std::optional<double> version : {std::optional<double>{}, std::optional<double>{2013.04}}) {
        simhost::SimulatedHost host({.version = version, .missingEntryPoints = {"RegisterPluginVersion"}});
        simhost::PluginLibrary plugin(host, simhost::DefaultPluginPath());
        EXPECT_FALSE(host.registration().announcedVersion.has_value());
        EXPECT_EQ(host.registration().form, version ? Form::Module : Form::ClassExtension);
        EXPECT_EQ(host.registration().olderLayout, !version);
        EXPECT_EQ(host.registration().methods.size(), 15u);
    }
}

struct MissingRegistrationCase {
    double version;
    const char* entryPoint;
};

class StartupWithoutRegistrationTest : public ::testing::TestWithParam<MissingRegistrationCase> {};

TEST_P(StartupWithoutRegistrationTest, RegistersNothingAndAsksOnce) {
    simhost::SimulatedHost host({.version = GetParam().version, .missingEntryPoints = {GetParam().entryPoint}});
    simhost::PluginLibrary plugin(host, simhost::DefaultPluginPath());
    EXPECT_EQ(host.registration().form, Form::Nothing);
    EXPECT_EQ(host.registration().registrations, 0);
    EXPECT_EQ(host.Lookups(GetParam().entryPoint), 1);
}

INSTANTIATE_TEST_SUITE_P(Forms, StartupWithoutRegistrationTest,
                         ::testing::Values(MissingRegistrationCase{2011.0, "PluginRegisterClassExtension"},
                                           MissingRegistrationCase{2012.0, "PluginRegisterClassExtension"},
                                           MissingRegistrationCase{2013.04, "PluginRegisterModule"}));

}  // namespace
