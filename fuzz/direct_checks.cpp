#include "fuzz/fuzz_case.h"

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "plugin/process_state.h"
#include "plugin/registration_forms.h"
#include "tests/unit/loop_comparisons.h"

namespace pixturn_fuzz {
namespace {

constexpr size_t kLongestDeclaration = 999;

// A class record of that many methods, setters and properties, declared alike.
struct Record {
    std::vector<REALmethodDefinition> methods;
    std::vector<REALproperty> properties;
    std::vector<REALproperty> sharedProperties;
    REALclassDefinition definition{};
};

Record RecordFor(const RecordCase& records) {
    Record record;
    const auto function = reinterpret_cast<REALproc>(&std::abort);
    for (int i = 0; i < records.methods; ++i) {
        const bool setter = records.setters >> i & 1;
        record.methods.push_back({function, setter ? function : nullptr, records.declaration.c_str(), kFlagNewStyle,
                                  0, nullptr});
    }
    REALproperty property{};
    property.name = "Property";
    property.flags = kFlagNewStyleHigh;
    record.properties.assign(size_t(records.properties), property);
    record.sharedProperties = record.properties;
    record.definition.version = 13;
    record.definition.name = records.className.c_str();
    record.definition.methods = record.methods.empty() ? nullptr : record.methods.data();
    record.definition.methodCount = records.methods;
    record.definition.properties = record.properties.empty() ? nullptr : record.properties.data();
    record.definition.propertyCount = records.properties;
    record.definition.sharedProperties = record.sharedProperties.empty() ? nullptr : record.sharedProperties.data();
    record.definition.sharedPropertyCount = records.properties;
    return record;
}

}  // namespace

std::string CompareLoopsWithDefinitions(const LoopCase& loops) {
    std::mt19937 random(loops.seed);
    MemoryPicture<PictureReader> source(loops.sourceFormat, loops.width, loops.height, random);
    const auto mapping = static_cast<PixelMapping>(loops.mapping);
    if (std::string difference = CompareMoves(source.editor, loops.destinationFormat, mapping, random);
        !difference.empty())
        return difference;
    const Pixel background{loops.background[0], loops.background[1], loops.background[2], loops.background[3]};
    for (const bool columns : {false, true}) {
        // Carried from line to line, as the rotation carries them.
        std::vector<double> skews{loops.firstSkew};
        while (static_cast<int32_t>(skews.size()) < (columns ? loops.width : loops.height))
            skews.push_back(skews.back() + loops.skewStep);
        if (std::string difference = CompareShears(source.editor, loops.destinationFormat, columns,
                                                   loops.extraLength, skews, background, random);
            !difference.empty())
            return difference;
    }
    return {};
}

std::string ReshapeRecords(const RecordCase& records) {
    for (char* rewritten : {AddClassParameter(records.declaration.c_str(), records.className.c_str()),
                            AssignmentDeclaration(records.declaration.c_str(), records.className.c_str())}) {
        const size_t length = rewritten != nullptr ? std::strlen(rewritten) : 0;
        std::free(rewritten);
        if (length > kLongestDeclaration) return "a rewritten declaration of " + std::to_string(length) + " characters";
    }

    Record module = RecordFor(records);
    TranslateDefinitionFlags(module.definition, 2013.04);
    FreeExtensionModule(BuildExtensionModule(module.definition, "Part", 13));

    Record older = RecordFor(records);
    if (ConvertToOlderLayout(older.definition)) FreeOlderLayoutTables(older.definition);
    return {};
}

}  // namespace pixturn_fuzz
