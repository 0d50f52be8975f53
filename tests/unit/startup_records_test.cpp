// The definition records in each host's dialect: flag words, the older 25-word
// layout with its shorter entries, and the module of global methods, built here
// from small records of the test's own so that every word can be told apart.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "plugin/process_state.h"
#include "plugin/registration_forms.h"

namespace {

struct FlagCase {
    uint32_t flags;
    double hostVersion;
    uint32_t expected;
};

class FlagTranslationTest : public ::testing::TestWithParam<FlagCase> {};

TEST_P(FlagTranslationTest, MovesTheNewStyleBitsDownOnlyForNewerHosts) {
    const FlagCase& c = GetParam();
    EXPECT_EQ(TranslateFlags(c.flags, c.hostVersion), c.expected);
    EXPECT_EQ(TranslateFlags(c.expected, c.hostVersion), c.expected) << "translating twice changes nothing";
}

INSTANTIATE_TEST_SUITE_P(Table, FlagTranslationTest,
                         ::testing::Values(FlagCase{0x40000, 2010.029, 0x4}, FlagCase{0x40000, 2010.028, 0},
                                           FlagCase{0x40000, 0.0, 0}, FlagCase{0x80000, 2010.029, 0x8},
                                           FlagCase{0x80000, 2010.028, 0}, FlagCase{0xC0000, 2013.04, 0xC},
                                           FlagCase{0x100000, 2013.04, 0}, FlagCase{0x40010, 2013.04, 0x14},
                                           FlagCase{0x4, 2000.0, 0x4}, FlagCase{0x8, 2013.04, 0x8},
                                           FlagCase{0x3, 2013.04, 0x3},
                                           FlagCase{0xFFFFFFFF, 2013.04, 0xFFE3FFFF},
                                           FlagCase{0xFFFFFFFF, 2010.0, 0xFFE3FFFF}));

REALproc Proc(uintptr_t n) { return reinterpret_cast<REALproc>(n); }
void* Pointer(uintptr_t n) { return reinterpret_cast<void*>(n); }

REALproperty Property(uintptr_t n) {
    return {"group", "name", "type", uint32_t(n), Proc(n + 1), Proc(n + 2), intptr_t(n + 3),
            Proc(n + 4), uint32_t(n + 5), Pointer(n + 6), Pointer(n + 7), uint32_t(n + 8)};
}

// The words an older property record keeps of the newer one. (The method
// records are checked as hosts before 2012.0 read them, by the start-up tests.)
template <typename Property>
auto PropertyWords(const Property& p) {
    return std::tie(p.group, p.name, p.type, p.flags, p.getter, p.setter, p.param, p.editor, p.enumCount,
                    p.enumEntries);
}

TEST(FixProperties, NoTableGivesNone) {
    REALproperty property = Property(0x100);
    EXPECT_EQ(FixProperties(nullptr, 3), nullptr);
    EXPECT_EQ(FixProperties(&property, 0), nullptr);
    EXPECT_EQ(FixProperties(&property, -1), nullptr);
}

// A class with every table the translation and the conversion look at.
struct SampleClass {
    REALproperty properties[2] = {Property(0x40100), Property(0x200)};
    REALproperty sharedProperties[1] = {Property(0x80300)};
    REALmethodDefinition methods[3] = {{Proc(0x11), Proc(0x12), "A as integer", 0x40000, 1, Pointer(0x13)},
                                       {Proc(0x21), nullptr, "B", 0x80000, 0, nullptr},
                                       {Proc(0x31), nullptr, "C(x as double)", 0x10, 0, nullptr}};
    REALmethodDefinition sharedMethods[1] = {{Proc(0x41), nullptr, "D", 0x40000, 0, nullptr}};
    REALclassDefinition definition{};

    SampleClass() {
        definition.version = 13;
        definition.name = "Widget";
        definition.superName = "Control";
        definition.dataSize = 24;
        definition.forSystemUse = 5;
        definition.constructor = Proc(0x51);
        definition.destructor = Proc(0x52);
        definition.properties = properties;
        definition.propertyCount = 2;
        definition.methods = methods;
        definition.methodCount = 3;
        definition.eventCount = 6;
        definition.eventInstances = Pointer(0x53);
        definition.eventInstanceCount = 7;
        definition.interfaces = "Iface";
        definition.bindDescriptions = Pointer(0x54);
        definition.bindDescriptionCount = 8;
        definition.constantCount = 9;
        definition.mFlags = 0xC0000;
        definition.sharedProperties = sharedProperties;
        definition.sharedPropertyCount = 1;
        definition.sharedMethods = sharedMethods;
        definition.sharedMethodCount = 1;
        definition.delegateCount = 10;
    }
};

TEST(TranslateDefinitionFlags, ReachesTheClassAndEveryTable) {
    SampleClass sample;
    TranslateDefinitionFlags(sample.definition, 2013.04);
    const std::vector<uint32_t> flags = {sample.definition.mFlags,     sample.methods[0].mFlags,
                                         sample.methods[1].mFlags,     sample.methods[2].mFlags,
                                         sample.sharedMethods[0].mFlags, sample.properties[0].flags,
                                         sample.properties[1].flags,   sample.sharedProperties[0].flags};
    EXPECT_EQ(flags, (std::vector<uint32_t>{0xC, 0x4, 0x8, 0x10, 0x4, 0x104, 0x200, 0x308}));
}

TEST(ConvertToOlderLayout, RebuildsTheTablesWithShorterEntries) {
    SampleClass sample;
    const REALclassDefinition before = sample.definition;
    ASSERT_TRUE(ConvertToOlderLayout(sample.definition));
    REALclassDefinitionV9 older;
    std::memcpy(&older, &sample.definition, sizeof older);

    EXPECT_EQ(older.version, 9);
    const auto kept = [](const auto& d) {
        return std::tie(d.name, d.superName, d.dataSize, d.forSystemUse, d.constructor, d.destructor, d.propertyCount,
                        d.methodCount, d.eventCount, d.eventInstances, d.eventInstanceCount, d.interfaces,
                        d.constantCount, d.mFlags, d.sharedPropertyCount, d.sharedMethodCount);
    };
    EXPECT_TRUE(kept(older) == kept(before));
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(PropertyWords(older.properties[i]) == PropertyWords(sample.properties[i]));
    EXPECT_TRUE(PropertyWords(older.sharedProperties[0]) == PropertyWords(sample.sharedProperties[0]));
    // The tables this plug-in leaves empty are not carried over.
    EXPECT_TRUE(std::tie(older.events, older.bindDescriptions, older.bindDescriptionCount, older.constants,
                         older.sharedMethods) == std::make_tuple(nullptr, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(sample.definition.delegateCount, 10) << "words past the older layout are left alone";
    FreeOlderLayoutTables(sample.definition);
}

TEST(BuildExtensionModule, PutsEachSetterBeforeItsMethod) {
    SampleClass sample;
    sample.methods[1] = {nullptr, Proc(0x22), "Level as integer", 0x4, 0, nullptr};
    sample.methods[2] = {nullptr, nullptr, "Nothing", 0x4, 0, nullptr};
    REALmoduleDefinition* module = BuildExtensionModule(sample.definition, "Part", 12);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->version, 12);
    EXPECT_STREQ(module->name, "WidgetPartExtensionQLM");
    ASSERT_EQ(module->methodCount, 3);
    const REALmethodDefinition expected[] = {
        {Proc(0x12), nullptr, "A(extends ref as Widget, assigns value as integer)", 0x40010, 1, Pointer(0x13)},
        {Proc(0x11), nullptr, "A(extends ref as Widget) as integer", 0x40010, 1, Pointer(0x13)},
        {Proc(0x22), nullptr, "Level(extends ref as Widget, assigns value as integer)", 0x14, 0, nullptr}};
    for (int i = 0; i < 3; ++i) {
        const REALmethodDefinition& method = module->methods[i];
        EXPECT_EQ(method.function, expected[i].function) << i;
        EXPECT_EQ(method.setterFunction, nullptr) << i;
        EXPECT_STREQ(method.declaration, expected[i].declaration) << i;
        EXPECT_EQ(method.mFlags, expected[i].mFlags) << i;
        EXPECT_EQ(method.attributeCount, expected[i].attributeCount) << i;
        EXPECT_EQ(method.attributes, expected[i].attributes) << i;
    }
    EXPECT_EQ(module->otherWords[0], nullptr);
    FreeExtensionModule(module);
}

TEST(BuildExtensionModule, NothingToRegisterGivesNoModule) {
    SampleClass sample;
    for (REALmethodDefinition& method : sample.methods) method.function = method.setterFunction = nullptr;
    EXPECT_EQ(BuildExtensionModule(sample.definition, "Part", 13), nullptr);
    sample.definition.methodCount = 0;
    EXPECT_EQ(BuildExtensionModule(sample.definition, "Part", 13), nullptr);
}

TEST(BuildExtensionModule, TheNameFitsInNinetyNineCharacters) {
    SampleClass sample;
    const std::string className(60, 'C'), partName(60, 'P');
    sample.definition.name = className.c_str();
    REALmoduleDefinition* module = BuildExtensionModule(sample.definition, partName.c_str(), 13);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->name, (className + partName).substr(0, 99));
    FreeExtensionModule(module);
}

}  // namespace
